// Wavelet lifting of rows and columns, and its stages on rows that the host hands over.
#include <array>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/jpeg2k/floats.h"
#include "tests/jpeg2k/wavelet_model.h"
#include "tests/support/builds.h"
#include "tests/support/faults.h"
#include "tests/support/guarded.h"
#include "tests/support/plane.h"

namespace {

using namespace orbtest;

// Bands of the filtered direction, with every remainder behind the vectors of every width, and one
// that is longer than what is lifted at once.
constexpr int kBands[] = {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 33, 65};
constexpr int kLongBand = 2400;
constexpr Orb32u kPhases[] = {0, 1, 2};  // any other than 0 is odd

// ---- Samples

template <class T>
T anySample(Random& random) {
  if constexpr (std::is_floating_point_v<T>) {
    return anyFloat(random);
  } else {
    switch (random.between(0, 3)) {
      case 0:
        return random.extreme<T>();
      case 1:
        return random.any<T>();
      default:
        return static_cast<T>(random.between(-5000, 5000));
    }
  }
}

// A float's steps may each differ in their last bit; the largest samples have 16 bits.
template <class T>
testing::AssertionResult isSample(T actual, double expected) {
  if constexpr (std::is_floating_point_v<T>) {
    return near(actual, expected, 4, 65536);
  } else if (actual == static_cast<int64_t>(expected)) {
    return testing::AssertionSuccess();
  } else {
    return testing::AssertionFailure() << actual << " and not " << static_cast<int64_t>(expected);
  }
}

// A rectangle in the middle of a plane that goes on around it, across and down.
template <class T>
class Region {
 public:
  Region(int width, int height, int across, int down, Placement at)
      : across_(across), down_(down), plane_(width + 2 * across, height + 2 * down, at) {}

  Plane<T>& plane() { return plane_; }
  const Plane<T>& plane() const { return plane_; }
  Orb32s step() const { return plane_.step(); }
  T* data() {
    uint8_t* const first = reinterpret_cast<uint8_t*>(plane_.data());
    return reinterpret_cast<T*>(first + down_ * plane_.step() + across_ * sizeof(T));
  }
  T at(int x, int y) const { return plane_.at(x + across_, y + down_); }
  void fill(Random& random) {
    plane_.fill([&] { return anySample<T>(random); });
  }

 private:
  int across_;
  int down_;
  Plane<T> plane_;
};

// Which way a function filters. Along columns, x and y change places.
enum class Along { kRows, kColumns };

// `a` along the filtered direction, `b` across it.
template <Along kAlong>
struct Shape {
  static constexpr bool kRows = kAlong == Along::kRows;
  static OrbiSize size(int a, int b) { return kRows ? OrbiSize{a, b} : OrbiSize{b, a}; }
  template <class R>
  static auto at(const R& region, int a, int b) {
    return kRows ? region.at(a, b) : region.at(b, a);
  }
  template <class T>
  static Region<T> region(int a, int b, int around, Placement place) {
    return kRows ? Region<T>(a, b, around, 0, place) : Region<T>(b, a, 0, around, place);
  }
};

constexpr int kAround = 5;  // one more than the widest reach

// ---- Direct filters: the taps by distance from the centre

struct Taps {
  std::array<int, 5> scaled;
  std::array<float, 5> single;
};
constexpr Taps kLowTaps = {{39515, 17489, -5126, -1105, 1753},
                           {0.602949f, 0.26686412f, -0.078223266f, -0.01686412f, 0.026748758f}};
constexpr Taps kHighTaps = {{73078, -38749, -3771, 5982, 0},
                            {1.115087f, -0.59127176f, -0.057543527f, 0.091271766f, 0}};
constexpr Taps kUndoLowTaps = {{73078, -17489, -3771, 1105, 0},
                               {1.115087f, -0.26686412f, -0.057543527f, 0.01686412f, 0}};
constexpr Taps kUndoHighTaps = {
    {39515, 38750, -5126, -5981, 1753},
    {0.602949f, 0.59127176f, -0.078223266f, -0.091271766f, 0.026748758f}};

enum class Sum { kLimited, kCut };

// The filter around position n. Beyond distance `reach` there is nothing to be read.
template <class T, class Line>
double filtered(const Taps& taps, int reach, const Line& s, int n, Sum kind) {
  if constexpr (std::is_floating_point_v<T>) {
    double sum = static_cast<double>(s(n)) * taps.single[0];
    for (int d = 1; d <= reach; ++d) {
      sum += (static_cast<double>(s(n - d)) + s(n + d)) * taps.single[d];
    }
    return static_cast<float>(sum);
  } else if constexpr (sizeof(T) == 4) {
    int64_t sum = floorDiv(int64_t{taps.scaled[0]} * s(n) + 32768, 65536);
    for (int d = 1; d <= reach; ++d) {
      const int64_t pair = cut32(int64_t{s(n - d)} + s(n + d));
      sum += floorDiv(taps.scaled[d] * pair + 32768, 65536);
    }
    return static_cast<double>(cut32(sum));
  } else {
    int64_t sum = int64_t{taps.scaled[0]} * s(n) + 32768;
    for (int d = 1; d <= reach; ++d) sum += taps.scaled[d] * (int64_t{s(n - d)} + s(n + d));
    if (kind == Sum::kCut) return static_cast<double>(cut16(floorDiv(cut32(sum), 65536)));
    return static_cast<double>(std::clamp<int64_t>(floorDiv(sum, 65536), -32768, 32767));
  }
}

// ---- Wavelets by their names

template <class T>
struct B53 {
  using A = Integers53<sizeof(T) == 2 ? 16 : 32>;
  using Forward = Forward53Model<A>;
  using Inverse = Inverse53Model<A>;
  static constexpr bool kFilters = false;
  template <class Line>
  static Forward forward(Line s, int p, int) {
    return Forward([=](int n) { return s(n); }, p);
  }
  template <class Line>
  static Inverse inverse(Line band, int p, int) {
    return Inverse([=](int n) { return band(n); }, p);
  }
};

template <class T, Along kAlong>
struct D97 {
  using A = std::conditional_t<std::is_floating_point_v<T>, Floating97<float>,
                               std::conditional_t<sizeof(T) == 2, Saturating97, Wrapping97>>;
  static constexpr bool kRow = kAlong == Along::kRows;
  using Forward = Forward97Model<A, kRow>;
  using Inverse = Inverse97Model<A, kRow>;
  static constexpr bool kFilters = true;  // a band of one sample
  template <class Line>
  static Forward forward(Line s, int p, int w) {
    return Forward([=](int n) { return s(n); }, p, w);
  }
  template <class Line>
  static Inverse inverse(Line band, int p, int w) {
    return Inverse([=](int n) { return band(n); }, p, w);
  }
};

// ---- Rectangles

template <class Wavelet, class T, Along kAlong, class Function>
void expectForward(const char* name, Function* function, int w, int across, Random& random) {
  using S = Shape<kAlong>;
  for (const Orb32u phase : kPhases) {
    const int p = phase != 0;
    SCOPED_TRACE(testing::Message() << name << ": band " << w << ", phase " << phase);
    auto src = S::template region<T>(2 * w, across, kAround, Placement::any(random));
    src.fill(random);
    auto low = S::template region<T>(w, across, 0, Placement::any(random));
    auto high = S::template region<T>(w, across, 0, Placement::any(random));
    ASSERT_EQ(function(src.data(), src.step(), low.data(), low.step(), high.data(), high.step(),
                       S::size(w, across), phase),
              orbStsNoErr);
    for (int b = 0; b < across; ++b) {
      const auto s = [&src, b](int n) { return S::at(src, n, b); };
      auto model = Wavelet::forward(s, p, w);
      for (int k = 0; k < w; ++k) {
        const int l = 2 * k + p, h = 2 * k + 1 - p;
        if (Wavelet::kFilters && w == 1) {
          ASSERT_TRUE(isSample(S::at(low, k, b), filtered<T>(kLowTaps, 4, s, l, Sum::kCut)));
          ASSERT_TRUE(isSample(S::at(high, k, b), filtered<T>(kHighTaps, 3, s, h, Sum::kLimited)));
        } else {
          ASSERT_TRUE(isSample(S::at(low, k, b), static_cast<double>(model.low(l)))) << "low " << k;
          ASSERT_TRUE(isSample(S::at(high, k, b), static_cast<double>(model.high(h))))
              << "high " << k;
        }
      }
    }
    low.plane().expectOutsideUntouched();
    high.plane().expectOutsideUntouched();
    src.plane().expectUntouched();
  }
}

template <class Wavelet, class T, Along kAlong, class Function>
void expectInverse(const char* name, Function* function, int w, int across, Random& random) {
  using S = Shape<kAlong>;
  for (const Orb32u phase : kPhases) {
    const int p = phase != 0;
    SCOPED_TRACE(testing::Message() << name << ": band " << w << ", phase " << phase);
    auto low = S::template region<T>(w, across, kAround, Placement::any(random));
    auto high = S::template region<T>(w, across, kAround, Placement::any(random));
    low.fill(random);
    high.fill(random);
    auto dst = S::template region<T>(2 * w, across, 0, Placement::any(random));
    ASSERT_EQ(function(low.data(), low.step(), high.data(), high.step(), S::size(w, across),
                       dst.data(), dst.step(), phase),
              orbStsNoErr);
    for (int b = 0; b < across; ++b) {
      const auto band = [&low, &high, b, p](int n) {
        return (n - p) % 2 == 0 ? S::at(low, (n - p) / 2, b) : S::at(high, (n - 1 + p) / 2, b);
      };
      auto model = Wavelet::inverse(band, p, w);
      for (int n = 0; n < 2 * w; ++n) {
        if (Wavelet::kFilters && w == 1) {
          const double expected = n == p ? filtered<T>(kUndoLowTaps, 3, band, n, Sum::kLimited)
                                         : filtered<T>(kUndoHighTaps, 4, band, n, Sum::kLimited);
          ASSERT_TRUE(isSample(S::at(dst, n, b), expected)) << "at " << n;
        } else {
          ASSERT_TRUE(isSample(S::at(dst, n, b), static_cast<double>(model.at(n)))) << "at " << n;
        }
      }
    }
    dst.plane().expectOutsideUntouched();
    low.plane().expectUntouched();
    high.plane().expectUntouched();
  }
}

template <class Wavelet, class T, Along kAlong, class Function>
void expectForward(const char* name, Function* function) {
  Random random(name);
  for (const int w : kBands) expectForward<Wavelet, T, kAlong>(name, function, w, 3, random);
  expectForward<Wavelet, T, kAlong>(name, function, kAlong == Along::kRows ? kLongBand : 40,
                                    kAlong == Along::kRows ? 1 : 67, random);
}
template <class Wavelet, class T, Along kAlong, class Function>
void expectInverse(const char* name, Function* function) {
  Random random(name);
  for (const int w : kBands) expectInverse<Wavelet, T, kAlong>(name, function, w, 3, random);
  expectInverse<Wavelet, T, kAlong>(name, function, kAlong == Along::kRows ? kLongBand : 40,
                                    kAlong == Along::kRows ? 1 : 67, random);
}

// ---- What is read: memory ends where the reach does, on either side

template <class T>
struct Reached {
  GuardedBytes memory;
  T* first;

  // Samples `from` to `to` of the filtered direction, each of `columns` values.
  Reached(int from, int to, int columns, Guard guard)
      : memory(static_cast<size_t>(to - from + 1) * columns * sizeof(T), guard),
        first(reinterpret_cast<T*>(memory.data()) - from * columns) {
    std::memset(memory.data(), 0, memory.size());
  }
};

template <class T, Along kAlong, class Function>
void expectForwardReach(Function* function, bool is97) {
  constexpr int kColumns = kAlong == Along::kRows ? 1 : 5;
  constexpr Orb32s kStep = kColumns * sizeof(T);
  for (const Guard guard : {Guard::kBefore, Guard::kBehind}) {
    for (const int w : {1, 2, 3, 20, 70}) {
      for (const int p : {0, 1}) {
        const int from = is97 ? -4 + p : -2 + p;
        const int to = 2 * w + (is97 ? 2 + p : p);
        Reached<T> src(from, to, kColumns, guard);
        Reached<T> low(0, w - 1, kColumns, guard), high(0, w - 1, kColumns, guard);
        const OrbiSize size = kAlong == Along::kRows ? OrbiSize{w, 1} : OrbiSize{kColumns, w};
        EXPECT_EQ(function(src.first, kStep, low.first, kStep, high.first, kStep, size, p),
                  orbStsNoErr);
      }
    }
  }
}

template <class T, Along kAlong, class Function>
void expectInverseReach(Function* function, bool is97) {
  constexpr int kColumns = kAlong == Along::kRows ? 1 : 5;
  constexpr Orb32s kStep = kColumns * sizeof(T);
  for (const Guard guard : {Guard::kBefore, Guard::kBehind}) {
    for (const int w : {1, 2, 3, 20, 70}) {
      for (const int p : {0, 1}) {
        Reached<T> low(is97 ? -1 - p : -p, is97 ? w + 1 - p : w - p, kColumns, guard);
        Reached<T> high(is97 ? -2 : -1, is97 ? w + 1 : w, kColumns, guard);
        Reached<T> dst(0, 2 * w - 1, kColumns, guard);
        const OrbiSize size = kAlong == Along::kRows ? OrbiSize{w, 1} : OrbiSize{kColumns, w};
        EXPECT_EQ(function(low.first, kStep, high.first, kStep, size, dst.first, kStep, p),
                  orbStsNoErr);
      }
    }
  }
}

// ---- Checks

template <class T>
struct Call {
  T* planes[3];
  Orb32s steps[3];
  OrbiSize size;
};

template <class T, class Run>
void expectRectangleChecks(Run run) {
  // Room for the reach in front of the first sample and behind the last.
  Region<T> planes[3] = {{16, 16, 8, 8, {}}, {16, 16, 8, 8, {}}, {16, 16, 8, 8, {}}};
  for (Region<T>& region : planes) region.plane().fill([] { return T{1}; });
  const Call<T> good = {{planes[0].data(), planes[1].data(), planes[2].data()},
                        {planes[0].step(), planes[1].step(), planes[2].step()},
                        {4, 4}};
  std::vector<Fault<Call<T>>> faults;
  for (int i = 0; i < 3; ++i) {
    faults.push_back({orbStsNullPtrErr, [=](Call<T>& c) { c.planes[i] = nullptr; }});
  }
  for (int i = 0; i < 3; ++i) {
    faults.push_back({orbStsStepErr, [=](Call<T>& c) { c.steps[i] = i == 1 ? -8 : 0; }});
  }
  faults.push_back({orbStsSizeErr, [](Call<T>& c) { c.size.height = 0; }});
  faults.push_back({orbStsSizeErr, [](Call<T>& c) { c.size.width = -3; }});
  orbtest::expectChecks<Call<T>>(faults, good, run);
  for (Region<T>& region : planes) region.plane().expectUntouched();
  EXPECT_EQ(run(good), orbStsNoErr);
}

template <class T, class Function>
void expectForwardChecks(Function* f) {
  expectRectangleChecks<T>([=](const Call<T>& c) {
    return f(c.planes[0], c.steps[0], c.planes[1], c.steps[1], c.planes[2], c.steps[2], c.size, 0);
  });
}
template <class T, class Function>
void expectInverseChecks(Function* f) {
  expectRectangleChecks<T>([=](const Call<T>& c) {
    return f(c.planes[0], c.steps[0], c.planes[1], c.steps[1], c.size, c.planes[2], c.steps[2], 0);
  });
}

// ---- Agreement

template <class T>
void expectSame(const Region<T>& mine, const Region<T>& px) {
  if (mine.plane().sameBytes(px.plane())) return;
  if constexpr (std::is_floating_point_v<T>) {
    for (int y = 0; y < mine.plane().height(); ++y) {
      for (int x = 0; x < mine.plane().width(); ++x) {
        ASSERT_TRUE(near(mine.plane().at(x, y), px.plane().at(x, y), 4, 65536));
      }
    }
  } else {
    ASSERT_TRUE(mine.plane().sameBytes(px.plane()));
  }
}

template <class T, class Function>
void agreeForward(Function* mine, Function* px, Random& random) {
  for (int round = 0; round < 60; ++round) {
    const int width = random.between(1, 70), height = random.between(1, 9);
    Region<T> src(2 * width, 2 * height, kAround, kAround, Placement::any(random));
    src.fill(random);
    const Placement place = Placement::any(random);
    Region<T> low[2] = {{width, height, 0, 0, place}, {width, height, 0, 0, place}};
    Region<T> high[2] = {{width, height, 0, 0, place}, {width, height, 0, 0, place}};
    const Orb32u phase = random.between(0u, 1u);
    for (int i = 0; i < 2; ++i) {
      (i == 0 ? mine : px)(src.data(), src.step(), low[i].data(), low[i].step(), high[i].data(),
                           high[i].step(), {width, height}, phase);
    }
    expectSame(low[0], low[1]);
    expectSame(high[0], high[1]);
  }
}

template <class T, class Function>
void agreeInverse(Function* mine, Function* px, Random& random) {
  for (int round = 0; round < 60; ++round) {
    const int width = random.between(1, 70), height = random.between(1, 9);
    Region<T> low(width, height, kAround, kAround, Placement::any(random));
    Region<T> high(width, height, kAround, kAround, Placement::any(random));
    low.fill(random);
    high.fill(random);
    const Placement place = Placement::any(random);
    // Rows and columns both fit.
    Region<T> dst[2] = {{2 * width, 2 * height, 0, 0, place}, {2 * width, 2 * height, 0, 0, place}};
    const Orb32u phase = random.between(0u, 1u);
    for (int i = 0; i < 2; ++i) {
      (i == 0 ? mine : px)(low.data(), low.step(), high.data(), high.step(), {width, height},
                           dst[i].data(), dst[i].step(), phase);
    }
    expectSame(dst[0], dst[1]);
  }
}

}  // namespace

#define ORB_FORWARD_TESTS(name, T, Wavelet, kAlong, is97) \
  ORB_MEANING(name, ChecksInOrder) {                      \
    expectForwardChecks<T>(ORB(name));                    \
  }                                                       \
  ORB_MEANING(name, IsTheWavelet) {                       \
    expectForward<Wavelet, T, kAlong>(#name, ORB(name));  \
  }                                                       \
  ORB_MEANING(name, ReadsNoFartherThanItsReach) {         \
    expectForwardReach<T, kAlong>(ORB(name), is97);       \
  }                                                       \
  ORB_AGREEMENT(name) {                                   \
    agreeForward<T>(ORB(name), PX(name), random);         \
  }

#define ORB_INVERSE_TESTS(name, T, Wavelet, kAlong, is97) \
  ORB_MEANING(name, ChecksInOrder) {                      \
    expectInverseChecks<T>(ORB(name));                    \
  }                                                       \
  ORB_MEANING(name, IsTheWavelet) {                       \
    expectInverse<Wavelet, T, kAlong>(#name, ORB(name));  \
  }                                                       \
  ORB_MEANING(name, ReadsNoFartherThanItsReach) {         \
    expectInverseReach<T, kAlong>(ORB(name), is97);       \
  }                                                       \
  ORB_AGREEMENT(name) {                                   \
    agreeInverse<T>(ORB(name), PX(name), random);         \
  }

namespace {
constexpr Along kRows = Along::kRows;
constexpr Along kColumns = Along::kColumns;
template <class T>
using D97Row = D97<T, kRows>;
template <class T>
using D97Column = D97<T, kColumns>;
}  // namespace

ORB_FORWARD_TESTS(orbiWTFwdRow_B53_JPEG2K_16s_C1R, Orb16s, B53<Orb16s>, kRows, false)
ORB_FORWARD_TESTS(orbiWTFwdRow_B53_JPEG2K_32s_C1R, Orb32s, B53<Orb32s>, kRows, false)
ORB_FORWARD_TESTS(orbiWTFwdCol_B53_JPEG2K_16s_C1R, Orb16s, B53<Orb16s>, kColumns, false)
ORB_FORWARD_TESTS(orbiWTFwdCol_B53_JPEG2K_32s_C1R, Orb32s, B53<Orb32s>, kColumns, false)
ORB_FORWARD_TESTS(orbiWTFwdRow_D97_JPEG2K_16s_C1R, Orb16s, D97Row<Orb16s>, kRows, true)
ORB_FORWARD_TESTS(orbiWTFwdRow_D97_JPEG2K_32s_C1R, Orb32s, D97Row<Orb32s>, kRows, true)
ORB_FORWARD_TESTS(orbiWTFwdRow_D97_JPEG2K_32f_C1R, Orb32f, D97Row<Orb32f>, kRows, true)
ORB_FORWARD_TESTS(orbiWTFwdCol_D97_JPEG2K_32f_C1R, Orb32f, D97Column<Orb32f>, kColumns, true)
ORB_INVERSE_TESTS(orbiWTInvRow_B53_JPEG2K_16s_C1R, Orb16s, B53<Orb16s>, kRows, false)
ORB_INVERSE_TESTS(orbiWTInvRow_B53_JPEG2K_32s_C1R, Orb32s, B53<Orb32s>, kRows, false)
ORB_INVERSE_TESTS(orbiWTInvCol_B53_JPEG2K_16s_C1R, Orb16s, B53<Orb16s>, kColumns, false)
ORB_INVERSE_TESTS(orbiWTInvCol_B53_JPEG2K_32s_C1R, Orb32s, B53<Orb32s>, kColumns, false)
ORB_INVERSE_TESTS(orbiWTInvRow_D97_JPEG2K_16s_C1R, Orb16s, D97Row<Orb16s>, kRows, true)
ORB_INVERSE_TESTS(orbiWTInvRow_D97_JPEG2K_32s_C1R, Orb32s, D97Row<Orb32s>, kRows, true)
ORB_INVERSE_TESTS(orbiWTInvRow_D97_JPEG2K_32f_C1R, Orb32f, D97Row<Orb32f>, kRows, true)
ORB_INVERSE_TESTS(orbiWTInvCol_D97_JPEG2K_32f_C1R, Orb32f, D97Column<Orb32f>, kColumns, true)

// ---- Stages of columns

namespace {

// The rows of a call, in the order of its arguments.
template <class T, int kRowsOfCall>
struct Rows {
  std::vector<Plane<T>> rows;

  Rows(int width, Random& random) {
    for (int i = 0; i < kRowsOfCall; ++i) {
      rows.push_back(makeRow<T>(width, Placement::any(random)));
      rows.back().fill([&] { return anySample<T>(random); });
    }
  }
  Rows copy() const {
    Random unused("copy");
    Rows other(rows[0].width(), unused);
    for (int i = 0; i < kRowsOfCall; ++i) other.rows[i].copySamples(rows[i]);
    return other;
  }
  T* operator[](int i) { return rows[i].data(); }
  int64_t integer(int i, int x) const { return static_cast<int64_t>(rows[i].at(x)); }
  template <class V>
  V value(int i, int x) const {
    return static_cast<V>(rows[i].at(x));
  }
};

template <int kRowsOfCall, class Function, class R, size_t... i>
OrbStatus callWith(Function* f, R& rows, int width, std::index_sequence<i...>) {
  return f(rows[static_cast<int>(i)]..., width);
}
template <int kRowsOfCall, class Function, class R>
OrbStatus callWith(Function* f, R& rows, int width) {
  return callWith<kRowsOfCall>(f, rows, width, std::make_index_sequence<kRowsOfCall>());
}

// Row pointers, one of which may be null.
template <class T, int kRowsOfCall>
struct StageCall {
  std::array<T*, kRowsOfCall> rows;
  Orb32s width;
  T* operator[](int i) const { return rows[i]; }
};

template <class T, int kRowsOfCall, class Function>
void expectStageChecks(Function* f) {
  Random random("checks");
  Rows<T, kRowsOfCall> rows(4, random);
  StageCall<T, kRowsOfCall> good = {{}, 4};
  for (int i = 0; i < kRowsOfCall; ++i) good.rows[i] = rows[i];
  std::vector<Fault<StageCall<T, kRowsOfCall>>> faults;
  for (int i = 0; i < kRowsOfCall; ++i) {
    faults.push_back({orbStsNullPtrErr, [=](auto& c) { c.rows[i] = nullptr; }});
  }
  faults.push_back({orbStsSizeErr, [](auto& c) { c.width = 0; }});
  faults.push_back({orbStsSizeErr, [](auto& c) { c.width = -1; }});
  const auto run = [=](const StageCall<T, kRowsOfCall>& c) {
    return callWith<kRowsOfCall>(f, c, c.width);
  };
  orbtest::expectChecks<StageCall<T, kRowsOfCall>>(faults, good, run);
  for (const Plane<T>& row : rows.rows) row.expectUntouched();
  EXPECT_EQ(run(good), orbStsNoErr);
}

// `expected` gives, for a column, what is written: pairs of a row and its value.
template <class T, int kRowsOfCall, class Function, class Expected>
void expectStage(const char* name, Function* f, Expected expected) {
  Random random(name);
  for (const int width : {1, 2, 3, 5, 8, 15, 16, 17, 33, 67}) {
    Rows<T, kRowsOfCall> rows(width, random);
    const Rows<T, kRowsOfCall> before = rows.copy();
    ASSERT_EQ(callWith<kRowsOfCall>(f, rows, width), orbStsNoErr);
    std::array<bool, kRowsOfCall> written{};
    for (int x = 0; x < width; ++x) {
      for (const auto& [row, value] : expected(before, x)) {
        ASSERT_TRUE(isSample(rows.rows[row].at(x), static_cast<double>(value)))
            << "row " << row << ", column " << x << " of " << width;
        written[row] = true;
      }
    }
    for (int i = 0; i < kRowsOfCall; ++i) {
      if (written[i]) {
        rows.rows[i].expectOutsideUntouched();
      } else {
        rows.rows[i].expectUntouched();
      }
    }
  }
}

template <class T, int kRowsOfCall, class Function>
void agreeStage(Function* mine, Function* px, Random& random) {
  for (int round = 0; round < 60; ++round) {
    const int width = random.between(1, 90);
    Rows<T, kRowsOfCall> a(width, random);
    Rows<T, kRowsOfCall> b = a.copy();
    callWith<kRowsOfCall>(mine, a, width);
    callWith<kRowsOfCall>(px, b, width);
    for (int i = 0; i < kRowsOfCall; ++i) {
      for (int x = 0; x < width; ++x) {
        ASSERT_TRUE(isSample(a.rows[i].at(x), static_cast<double>(b.rows[i].at(x))));
      }
    }
  }
}

template <class V>
using Written = std::vector<std::pair<int, V>>;

// src0, src1, src2, dstLow, srcHigh, dstHigh
template <class T>
Written<int64_t> forwardStage53(const Rows<T, 6>& r, int x) {
  using A = typename B53<T>::A;
  const int64_t high =
      A::cut(r.integer(1, x) - floorDiv(A::sum(r.integer(0, x), r.integer(2, x)), 2));
  const int64_t low = A::cut(r.integer(0, x) + floorDiv(A::sum(r.integer(4, x), high, 2), 4));
  return {{3, low}, {5, high}};
}
// srcLow, srcHigh0, srcHigh1, srcEven, dstOdd, dstEven
template <class T>
Written<int64_t> inverseStage53(const Rows<T, 6>& r, int x) {
  using A = typename B53<T>::A;
  const int64_t even =
      A::cut(r.integer(0, x) - floorDiv(A::sum(r.integer(1, x), r.integer(2, x), 2), 4));
  const int64_t odd = A::cut(r.integer(1, x) + floorDiv(A::sum(r.integer(3, x), even), 2));
  return {{4, odd}, {5, even}};
}
// src0, src1, src2, lift3, lift2New, lift4, lift1, lift1New
template <class T>
auto forwardStage97(const Rows<T, 8>& r, int x) {
  using A = typename D97Column<T>::A;
  using V = typename A::V;
  const auto at = [&](int i) { return r.template value<V>(i, x); };
  const V newA = A::alpha(at(1), at(0), at(2));
  const V newB = A::beta(at(0), at(6), newA);
  const V g = A::gamma(at(6), at(3), newB);
  return Written<V>{
      {7, newA}, {4, newB}, {6, g}, {3, A::low(at(3), at(5), g)}, {5, A::high(at(5))}};
}
// srcLow, srcHigh0, srcHigh1, lift0, lift1, lift2, lift3New, lift4New
template <class T>
auto inverseStage97(const Rows<T, 8>& r, int x) {
  using A = typename D97Column<T>::A;
  using V = typename A::V;
  const auto at = [&](int i) { return r.template value<V>(i, x); };
  const V even = A::even(at(0), at(1), at(2));
  const V odd = A::odd(at(1), at(5), even);
  const V even2 = A::even2(at(5), at(4), odd);
  return Written<V>{{7, even}, {6, odd}, {5, even2}, {4, A::odd2(at(4), at(3), even2)}};
}

}  // namespace

#define ORB_STAGE_TESTS(name, T, rows, expected)         \
  ORB_MEANING(name, ChecksInOrder) {                     \
    expectStageChecks<T, rows>(ORB(name));               \
  }                                                      \
  ORB_MEANING(name, IsOneStage) {                        \
    expectStage<T, rows>(#name, ORB(name), expected<T>); \
  }                                                      \
  ORB_AGREEMENT(name) {                                  \
    agreeStage<T, rows>(ORB(name), PX(name), random);    \
  }

ORB_STAGE_TESTS(orbiWTFwdColLift_B53_JPEG2K_16s_C1, Orb16s, 6, forwardStage53)
ORB_STAGE_TESTS(orbiWTFwdColLift_B53_JPEG2K_32s_C1, Orb32s, 6, forwardStage53)
ORB_STAGE_TESTS(orbiWTInvColLift_B53_JPEG2K_16s_C1, Orb16s, 6, inverseStage53)
ORB_STAGE_TESTS(orbiWTInvColLift_B53_JPEG2K_32s_C1, Orb32s, 6, inverseStage53)
ORB_STAGE_TESTS(orbiWTFwdColLift_D97_JPEG2K_16s_C1, Orb16s, 8, forwardStage97)
ORB_STAGE_TESTS(orbiWTFwdColLift_D97_JPEG2K_32s_C1, Orb32s, 8, forwardStage97)
ORB_STAGE_TESTS(orbiWTFwdColLift_D97_JPEG2K_32f_C1, Orb32f, 8, forwardStage97)
ORB_STAGE_TESTS(orbiWTInvColLift_D97_JPEG2K_16s_C1, Orb16s, 8, inverseStage97)
ORB_STAGE_TESTS(orbiWTInvColLift_D97_JPEG2K_32s_C1, Orb32s, 8, inverseStage97)
ORB_STAGE_TESTS(orbiWTInvColLift_D97_JPEG2K_32f_C1, Orb32f, 8, inverseStage97)
