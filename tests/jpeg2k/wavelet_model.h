// The wavelets of JPEG 2000 (ITU-T T.800 annex F) by positions of the alternating line, slowly: the
// judge of the library's transforms. A model asks a line for the sample at any position, and each
// value for its neighbours.
#ifndef ORB_TESTS_JPEG2K_WAVELET_MODEL_H
#define ORB_TESTS_JPEG2K_WAVELET_MODEL_H

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>

#include "orb90legacy/types.h"

namespace orbtest {

inline int64_t floorDiv(int64_t value, int64_t divisor) {
  const int64_t quotient = value / divisor;
  return quotient * divisor > value ? quotient - 1 : quotient;
}
inline int64_t cut32(int64_t value) {
  return static_cast<int32_t>(static_cast<uint32_t>(value & 0xffffffff));
}
inline int64_t cut16(int64_t value) {
  return static_cast<int16_t>(static_cast<uint16_t>(value & 0xffff));
}

// A value that depends on those at other positions is worked once.
template <class V>
class Memo {
 public:
  explicit Memo(std::function<V(int)> work) : work_(std::move(work)) {}
  V operator()(int n) {
    const auto known = values_.find(n);
    if (known != values_.end()) return known->second;
    const V value = work_(n);
    values_[n] = value;
    return value;
  }

 private:
  std::function<V(int)> work_;
  std::map<int, V> values_;
};

// ---- 5/3

// `kBits` is how much of a result is kept.
template <int kBits>
struct Integers53 {
  using V = int64_t;
  static V cut(V value) { return kBits == 16 ? cut16(value) : cut32(value); }
  static V sum(V a, V b, V c = 0) { return cut32(a + b + c); }
};

template <class A>
struct Forward53Model {
  using V = typename A::V;

  Forward53Model(std::function<V(int)> line, int) : s(std::move(line)) {}

  V high(int n) const { return A::cut(s(n) - floorDiv(A::sum(s(n - 1), s(n + 1)), 2)); }
  V low(int n) const { return A::cut(s(n) + floorDiv(A::sum(high(n - 1), high(n + 1), 2), 4)); }

 private:
  std::function<V(int)> s;
};

// `band` is the low sample at a position of low parity and the high sample at one of high parity.
template <class A>
struct Inverse53Model {
  using V = typename A::V;

  Inverse53Model(std::function<V(int)> line, int phase) : band(std::move(line)), p(phase) {}

  V even(int n) const { return A::cut(band(n) - floorDiv(A::sum(band(n - 1), band(n + 1), 2), 4)); }
  V at(int n) const {
    if ((n - p) % 2 == 0) return even(n);
    return A::cut(band(n) + floorDiv(A::sum(even(n - 1), even(n + 1)), 2));
  }

 private:
  std::function<V(int)> band;
  int p;
};

// ---- 9/7: how the values of each step are worked

// 16 fraction bits, each result limited to 16 bits.
struct Saturating97 {
  using V = int64_t;
  static V sat(V value) { return std::clamp<V>(value, -32768, 32767); }
  static V r(V factor, V x) { return floorDiv(factor * x + 32768, 65536); }

  static V alpha(V c, V a, V b) { return sat(c + r(-103949, a + b)); }
  static V beta(V c, V a, V b) { return sat(c + r(-3472, a + b)); }
  static V gamma(V c, V a, V b) { return sat(c + r(57862, a + b)); }
  static V low(V c, V a, V b) { return sat(floorDiv(53274 * c + 23627 * (a + b) + 32768, 65536)); }
  static V high(V c) { return sat(r(80621, c)); }
  static V even(V l, V a, V b) { return sat(floorDiv(80621 * l - 23627 * (a + b) + 32768, 65536)); }
  static V odd(V h, V a, V b) { return sat(floorDiv(53274 * h - 57862 * (a + b) + 32768, 65536)); }
  static V even2(V c, V a, V b) { return sat(c - r(-3472, a + b)); }
  static V odd2(V c, V a, V b) { return sat(c - r(-103949, a + b)); }

  // At the ends of a row.
  static V firstGamma(V c, V a, V b) {
    return sat(c + floorDiv(cut32(57862 * (a + b) + 32768), 65536));
  }
  static V lastLow(V c, V a, V b) { return r(53274, sat(c + r(29066, a + b))); }
  static V lastOdd(V h, V a, V b) {
    return sat(floorDiv(cut32(53274 * h - 57862 * (a + b) + 32768), 65536));
  }
  static V lastOdd2(V c, V a, V b) {
    return sat(c - floorDiv(cut32(-103949 * (a + b) + 32768), 65536));
  }
};

// The same in 32 bits that wrap.
struct Wrapping97 {
  using V = int64_t;
  static V r(V factor, V x) { return cut32(floorDiv(factor * x + 32768, 65536)); }
  static V r(V factor, V x, V other, V y) {
    return cut32(floorDiv(factor * x + other * y + 32768, 65536));
  }

  static V alpha(V c, V a, V b) { return cut32(c + r(-103949, cut32(a + b))); }
  static V beta(V c, V a, V b) { return cut32(c + r(-3472, cut32(a + b))); }
  static V gamma(V c, V a, V b) { return cut32(c + r(57862, cut32(a + b))); }
  static V low(V c, V a, V b) { return r(53274, c, 23627, cut32(a + b)); }
  static V high(V c) { return r(80621, c); }
  static V even(V l, V a, V b) { return r(80621, l, -23627, cut32(a + b)); }
  static V odd(V h, V a, V b) { return r(53274, h, -57862, cut32(a + b)); }
  static V even2(V c, V a, V b) { return cut32(c - r(-3472, cut32(a + b))); }
  static V odd2(V c, V a, V b) { return cut32(c - r(-103949, cut32(a + b))); }

  static V firstGamma(V c, V a, V b) { return gamma(c, a, b); }
  static V lastLow(V c, V a, V b) { return r(53274, cut32(c + r(29066, cut32(a + b)))); }
  static V lastOdd(V h, V a, V b) { return odd(h, a, b); }
  static V lastOdd2(V c, V a, V b) { return odd2(c, a, b); }
};

// 14 fraction bits, each result cut to 16 bits.
struct Cutting97 {
  using V = int64_t;
  static V r(V factor, V x) { return floorDiv(factor * x + 8192, 16384); }

  static V alpha(V c, V a, V b) { return cut16(c + r(-25987, a + b)); }
  static V beta(V c, V a, V b) { return cut16(c + r(-868, a + b)); }
  static V gamma(V c, V a, V b) { return cut16(c + r(14466, a + b)); }
  static V low(V c, V a, V b) { return cut16(r(13318, cut16(c + r(7266, a + b)))); }
  static V high(V c) { return cut16(r(20155, c)); }
  static V even(V l, V a, V b) { return cut16(r(20155, l) - r(7266, r(13318, a) + r(13318, b))); }
  static V odd(V h, V a, V b) { return cut16(r(13318, h) - r(14466, a + b)); }
  static V even2(V c, V a, V b) { return cut16(c - r(-868, a + b)); }
  static V odd2(V c, V a, V b) { return cut16(c - r(-25987, a + b)); }
};

// Floating point, with what a step gives kept as a `Kept`.
template <class Kept>
struct Floating97 {
  using V = double;
  static V keep(double value) { return static_cast<Kept>(value); }
  static V step(double c, float factor, double a, double b) { return keep((a + b) * factor + c); }

  static V alpha(V c, V a, V b) { return step(c, -1.5861343f, a, b); }
  static V beta(V c, V a, V b) { return step(c, -0.052980117f, a, b); }
  static V gamma(V c, V a, V b) { return step(c, 0.8829111f, a, b); }
  static V low(V c, V a, V b) { return keep(step(c, 0.44350687f, a, b) * 0.8128931f); }
  static V high(V c) { return keep(c * 1.2301741f); }
  static V even(V l, V a, V b) { return keep(l * 1.2301741f - (a + b) * 0.36052364f); }
  static V odd(V h, V a, V b) { return keep(h * 0.8128931f - (a + b) * 0.8829111f); }
  static V even2(V c, V a, V b) { return step(c, 0.052980117f, a, b); }
  static V odd2(V c, V a, V b) { return step(c, 1.5861343f, a, b); }

  static V firstGamma(V c, V a, V b) { return gamma(c, a, b); }
  static V lastLow(V c, V a, V b) { return low(c, a, b); }
  static V lastOdd(V h, V a, V b) { return odd(h, a, b); }
  static V lastOdd2(V c, V a, V b) { return odd2(c, a, b); }
};

// ---- 9/7: lines

// A row whose bands have `w` samples has rules of its own at its ends; any other line has none.
template <class A, bool kRow = false>
struct Forward97Model {
  using V = typename A::V;

  Forward97Model(std::function<V(int)> line, int phase, int bandWidth = 0)
      : s(std::move(line)), p(phase), w(bandWidth) {}
  Forward97Model(const Forward97Model&) = delete;

  V low(int n) {
    if constexpr (kRow) {
      if ((n - p) / 2 >= w - 1 - p) return A::lastLow(b(n), g(n - 1), g(n + 1));
    }
    return A::low(b(n), g(n - 1), g(n + 1));
  }
  V high(int n) { return A::high(g(n)); }

 private:
  std::function<V(int)> s;
  int p;
  int w;
  Memo<V> a{[this](int n) { return A::alpha(s(n), s(n - 1), s(n + 1)); }};
  Memo<V> b{[this](int n) { return A::beta(s(n), a(n - 1), a(n + 1)); }};
  Memo<V> g{[this](int n) {
    if constexpr (kRow) {
      if (n == p - 1) return A::firstGamma(a(n), b(n - 1), b(n + 1));
    }
    return A::gamma(a(n), b(n - 1), b(n + 1));
  }};
};

template <class A, bool kRow = false>
struct Inverse97Model {
  using V = typename A::V;

  Inverse97Model(std::function<V(int)> line, int phase, int bandWidth = 0)
      : band(std::move(line)), p(phase), w(bandWidth) {}
  Inverse97Model(const Inverse97Model&) = delete;

  V at(int n) {
    if ((n - p) % 2 == 0) return e2(n);
    if constexpr (kRow) {
      if (n == 2 * w - 1 - p) return A::lastOdd2(o(n), e2(n - 1), e2(n + 1));
    }
    return A::odd2(o(n), e2(n - 1), e2(n + 1));
  }

 private:
  std::function<V(int)> band;
  int p;
  int w;
  Memo<V> e{[this](int n) { return A::even(band(n), band(n - 1), band(n + 1)); }};
  Memo<V> o{[this](int n) {
    if constexpr (kRow) {
      if (n == 2 * w + 1 - p) return A::lastOdd(band(n), e(n - 1), e(n + 1));
    }
    return A::odd(band(n), e(n - 1), e(n + 1));
  }};
  Memo<V> e2{[this](int n) { return A::even2(e(n), o(n - 1), o(n + 1)); }};
};

}  // namespace orbtest

#endif
