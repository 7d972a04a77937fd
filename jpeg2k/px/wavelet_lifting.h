// The two wavelets of JPEG 2000 (ITU-T T.800 annex F) on lines whose neighbours the caller has laid
// out around them.
#ifndef ORB_JPEG2K_PX_WAVELET_LIFTING_H
#define ORB_JPEG2K_PX_WAVELET_LIFTING_H

#include "jpeg2k/px/lifting.h"

namespace orb::ORB_BUILD::plain {

// ---- The reversible 5/3

// Sums of 16-bit samples have 32 bits, and what is kept of them 16. All of 32 bits wraps.
template <class T>
struct Reversible {
  using Work = T;
  static T in(T sample) { return sample; }
  static T out(T value) { return value; }

  static T predict(Orb32s high, Orb32s low0, Orb32s low1) {
    return static_cast<T>(high - ((low0 + low1) >> 1));
  }
  static T update(Orb32s low, Orb32s high0, Orb32s high1) {
    return static_cast<T>(low + ((high0 + high1 + 2) >> 2));
  }
  static T undoUpdate(Orb32s low, Orb32s high0, Orb32s high1) {
    return static_cast<T>(low - ((high0 + high1 + 2) >> 2));
  }
  static T undoPredict(Orb32s high, Orb32s low0, Orb32s low1) {
    return static_cast<T>(high + ((low0 + low1) >> 1));
  }
};

template <class A>
struct Forward53 {
  using Arithmetic = A;
  using Values = Stretch<typename A::Work>;

  static Range lowReach(const Values& s) { return {-1, s.count + 1}; }
  static Range highReach(const Values& s) { return {s.p - 1, s.count + s.p}; }
  static void lift(Values& s) {
    s.liftHigh({s.p - 1, s.count + s.p}, A::predict);
    s.liftLow({0, s.count}, A::update);
  }
};

template <class A>
struct Inverse53 {
  using Arithmetic = A;
  using Values = Stretch<typename A::Work>;

  static Range lowReach(const Values& s) { return {-s.p, s.count + 1 - s.p}; }
  static Range highReach(const Values& s) { return {-1, s.count + 1}; }
  static void lift(Values& s) {
    s.liftLow({-s.p, s.count + 1 - s.p}, A::undoUpdate);
    s.liftHigh({0, s.count}, A::undoPredict);
  }
};

// ---- The irreversible 9/7
//
// Alpha, beta, gamma and delta are the factors of the four lifting steps of T.800 table F.4. The
// gains make a low band of unit gain; the last step of the low band and its gain go together.

template <class A>
struct Forward97 {
  using Arithmetic = A;
  using Work = typename A::Work;
  using Values = Stretch<Work>;

  static Range lowReach(const Values& s) { return {-2, s.count + 2}; }
  static Range highReach(const Values& s) { return {s.p - 2, s.count + 1 + s.p}; }
  static void lift(Values& s) {
    s.liftHigh({s.p - 2, s.count + 1 + s.p}, A::alpha);
    s.liftLow({-1, s.count + 1}, A::beta);
    if constexpr (A::kHasRowEnds) {
      liftRow(s);
    } else {
      s.liftHigh({s.p - 1, s.count + s.p}, A::gamma);
      s.liftLow({0, s.count}, A::low);
    }
    Work* const high = s.high(0);
    for (ptrdiff_t i = 0; i < s.count * s.lanes; ++i) high[i] = A::high(high[i]);
  }

 private:
  // The first high sample and the last one or two low samples of a row are computed their own way.
  static void liftRow(Values& s) {
    const ptrdiff_t first = s.p - 1;
    const Work firstHigh = A::firstGamma(*s.high(first), *s.low(-1), *s.low(0));
    s.liftHigh({first, s.count + s.p}, A::gamma);
    if (s.before == 0) *s.high(first) = firstHigh;

    const ptrdiff_t special = limit<ptrdiff_t>(s.count + s.behind - 1 - s.p, 0, s.count);
    s.liftLow({0, special}, A::low);
    s.liftLow({special, s.count}, A::lastLow);
  }
};

template <class A>
struct Inverse97 {
  using Arithmetic = A;
  using Work = typename A::Work;
  using Values = Stretch<Work>;

  static Range lowReach(const Values& s) { return {-1 - s.p, s.count + 2 - s.p}; }
  static Range highReach(const Values& s) { return {-2, s.count + 2}; }
  static void lift(Values& s) {
    s.liftLow({-1 - s.p, s.count + 2 - s.p}, A::undoLow);
    if constexpr (A::kHasRowEnds) {
      liftRow(s);
    } else {
      s.liftHigh({-1, s.count + 1}, A::undoGamma);
      s.liftLow({-s.p, s.count + 1 - s.p}, A::undoBeta);
      s.liftHigh({0, s.count}, A::undoAlpha);
    }
  }

 private:
  // The last high samples of a row are computed their own way.
  static void liftRow(Values& s) {
    const ptrdiff_t isLast = s.behind == 0;
    s.liftHigh({-1, s.count + 1 - isLast}, A::undoGamma);
    s.liftHigh({s.count + 1 - isLast, s.count + 1}, A::lastUndoGamma);
    s.liftLow({-s.p, s.count + 1 - s.p}, A::undoBeta);
    s.liftHigh({0, s.count - isLast}, A::undoAlpha);
    s.liftHigh({s.count - isLast, s.count}, A::lastUndoAlpha);
  }
};

// Factors in 16 fraction bits.
constexpr Orb32s kAlpha = -103949;
constexpr Orb32s kBeta = -3472;
constexpr Orb32s kGamma = 57862;
constexpr Orb32s kDelta = 29066;
constexpr Orb32s kLowGain = 53274;
constexpr Orb32s kHighGain = 80621;
constexpr Orb32s kDeltaLowGain = 23627;  // delta times the gain of the low band

// In single precision.
constexpr Orb32f kAlphaF = -1.5861343f;
constexpr Orb32f kBetaF = -0.052980117f;
constexpr Orb32f kGammaF = 0.8829111f;
constexpr Orb32f kDeltaF = 0.44350687f;
constexpr Orb32f kLowGainF = 0.8128931f;
constexpr Orb32f kHighGainF = 1.2301741f;
constexpr Orb32f kDeltaLowGainF = 0.36052364f;

// (kFactor * x + 32768) >> 16 for the sum x of two 16-bit samples: exact, though in 32 bits, since
// the whole part of the factor is multiplied by itself.
constexpr Orb32s wholePart(Orb32s factor) {
  return (factor + 32768) >> 16;
}
constexpr Orb32s fraction(Orb32s factor) {
  return factor - wholePart(factor) * 65536;
}
template <Orb32s kFactor>
inline Orb32s scaled(Orb32s x) {
  return wholePart(kFactor) * x + ((fraction(kFactor) * x + 32768) >> 16);
}
// (kFactor * x + kOther * y + 32768) >> 16 likewise. The fractions of those that are used leave the
// sum within 32 bits if x is one sample and y is two.
template <Orb32s kFactor, Orb32s kOther>
inline Orb32s scaled(Orb32s x, Orb32s y) {
  return wholePart(kFactor) * x + wholePart(kOther) * y +
         ((fraction(kFactor) * x + fraction(kOther) * y + 32768) >> 16);
}

// ---- A band of one sample
//
// It is not lifted, but filtered: the sample at the centre and pairs of samples around it, each
// pair with one tap. What the taps are for stands beside them.

struct DirectFilter {
  int count;
  Orb32s taps[5];  // in 16 fraction bits
  Orb32f tapsF[5];
};

// The samples at the distances 0 to 4, or 0 to 3, of the alternating line.
constexpr DirectFilter kDirectLow = {
    5,
    {39515, 17489, -5126, -1105, 1753},
    {0.602949f, 0.26686412f, -0.078223266f, -0.01686412f, 0.026748758f}};
constexpr DirectFilter kDirectHigh = {
    4, {73078, -38749, -3771, 5982}, {1.115087f, -0.59127176f, -0.057543527f, 0.091271766f}};
// The low sample and the pair around it, then the two pairs of high samples.
constexpr DirectFilter kDirectUndoLow = {
    4, {73078, -3771, -17489, 1105}, {1.115087f, -0.057543527f, -0.26686412f, 0.01686412f}};
// The high sample and the two pairs around it, then the two pairs of low samples.
constexpr DirectFilter kDirectUndoHigh = {
    5,
    {39515, -5126, 1753, 38750, -5981},
    {0.602949f, -0.078223266f, 0.026748758f, 0.59127176f, -0.091271766f}};

// ---- What a step computes

// Samples of 16 bits, each step's result limited to them.
struct Saturating {
  using Sum = Orb32s;  // of a pair of samples
  using Work = Orb16s;
  static constexpr bool kHasRowEnds = false;
  static Orb16s in(Orb16s sample) { return sample; }
  static Orb16s out(Orb16s value) { return value; }

  static Orb16s alpha(Orb32s high, Orb32s low0, Orb32s low1) {
    return saturate16s(high + scaled<kAlpha>(low0 + low1));
  }
  static Orb16s beta(Orb32s low, Orb32s high0, Orb32s high1) {
    return saturate16s(low + scaled<kBeta>(high0 + high1));
  }
  static Orb16s gamma(Orb32s high, Orb32s low0, Orb32s low1) {
    return saturate16s(high + scaled<kGamma>(low0 + low1));
  }
  static Orb16s low(Orb32s low, Orb32s high0, Orb32s high1) {
    return saturate16s(scaled<kLowGain, kDeltaLowGain>(low, high0 + high1));
  }
  static Orb16s high(Orb32s high) { return saturate16s(scaled<kHighGain>(high)); }

  static Orb16s undoLow(Orb32s low, Orb32s high0, Orb32s high1) {
    return saturate16s(scaled<kHighGain, -kDeltaLowGain>(low, high0 + high1));
  }
  static Orb16s undoGamma(Orb32s high, Orb32s low0, Orb32s low1) {
    return saturate16s(scaled<kLowGain, -kGamma>(high, low0 + low1));
  }
  static Orb16s undoBeta(Orb32s low, Orb32s high0, Orb32s high1) {
    return saturate16s(low - scaled<kBeta>(high0 + high1));
  }
  static Orb16s undoAlpha(Orb32s high, Orb32s low0, Orb32s low1) {
    return saturate16s(high - scaled<kAlpha>(low0 + low1));
  }

  static Orb16s direct(const DirectFilter& filter, const Orb32s* pairs) {
    int64_t sum = 32768;
    for (int i = 0; i < filter.count; ++i) sum += int64_t{filter.taps[i]} * pairs[i];
    return saturate16s(static_cast<Orb32s>(sum >> 16));
  }
  // The low sample has a sum of 32 bits, and is cut.
  static Orb16s directLow(const Orb32s* pairs) {
    Orb32s sum = 32768;
    for (int i = 0; i < kDirectLow.count; ++i) sum += kDirectLow.taps[i] * pairs[i];
    return wrap16s(sum >> 16);
  }
};

// At the ends of a row some products have 32 bits and wrap, and the last low samples are rounded
// before their gain as well as behind it.
struct SaturatingRow : Saturating {
  static constexpr bool kHasRowEnds = true;

  static Orb16s firstGamma(Orb32s high, Orb32s low0, Orb32s low1) {
    return saturate16s(high + ((kGamma * (low0 + low1) + 32768) >> 16));
  }
  static Orb16s lastLow(Orb32s low, Orb32s high0, Orb32s high1) {
    return saturate16s(scaled<kLowGain>(saturate16s(low + scaled<kDelta>(high0 + high1))));
  }
  static Orb16s lastUndoGamma(Orb32s high, Orb32s low0, Orb32s low1) {
    return saturate16s((kLowGain * high - kGamma * (low0 + low1) + 32768) >> 16);
  }
  static Orb16s lastUndoAlpha(Orb32s high, Orb32s low0, Orb32s low1) {
    return saturate16s(high - ((kAlpha * (low0 + low1) + 32768) >> 16));
  }
};

// Samples of 32 bits: sums wrap, products have 64 bits, and results are cut.
struct Wrapping {
  using Sum = Orb32s;
  using Work = Orb32s;
  static constexpr bool kHasRowEnds = false;
  static Orb32s in(Orb32s sample) { return sample; }
  static Orb32s out(Orb32s value) { return value; }

  static Orb32s scale(Orb32s factor, Orb32s x) {
    return static_cast<Orb32s>((int64_t{factor} * x + 32768) >> 16);
  }
  static Orb32s scale(Orb32s factor, Orb32s x, Orb32s other, Orb32s y) {
    return static_cast<Orb32s>((int64_t{factor} * x + int64_t{other} * y + 32768) >> 16);
  }

  static Orb32s alpha(Orb32s high, Orb32s low0, Orb32s low1) {
    return high + scale(kAlpha, low0 + low1);
  }
  static Orb32s beta(Orb32s low, Orb32s high0, Orb32s high1) {
    return low + scale(kBeta, high0 + high1);
  }
  static Orb32s gamma(Orb32s high, Orb32s low0, Orb32s low1) {
    return high + scale(kGamma, low0 + low1);
  }
  static Orb32s low(Orb32s low, Orb32s high0, Orb32s high1) {
    return scale(kLowGain, low, kDeltaLowGain, high0 + high1);
  }
  static Orb32s high(Orb32s high) { return scale(kHighGain, high); }

  static Orb32s undoLow(Orb32s low, Orb32s high0, Orb32s high1) {
    return scale(kHighGain, low, -kDeltaLowGain, high0 + high1);
  }
  static Orb32s undoGamma(Orb32s high, Orb32s low0, Orb32s low1) {
    return scale(kLowGain, high, -kGamma, low0 + low1);
  }
  static Orb32s undoBeta(Orb32s low, Orb32s high0, Orb32s high1) {
    return low - scale(kBeta, high0 + high1);
  }
  static Orb32s undoAlpha(Orb32s high, Orb32s low0, Orb32s low1) {
    return high - scale(kAlpha, low0 + low1);
  }

  static Orb32s direct(const DirectFilter& filter, const Orb32s* pairs) {
    Orb32s sum = 0;
    for (int i = 0; i < filter.count; ++i) sum += scale(filter.taps[i], pairs[i]);
    return sum;
  }
  static Orb32s directLow(const Orb32s* pairs) { return direct(kDirectLow, pairs); }
};

struct WrappingRow : Wrapping {
  static constexpr bool kHasRowEnds = true;

  static Orb32s firstGamma(Orb32s high, Orb32s low0, Orb32s low1) {
    return gamma(high, low0, low1);
  }
  static Orb32s lastLow(Orb32s low, Orb32s high0, Orb32s high1) {
    return scale(kLowGain, low + scale(kDelta, high0 + high1));
  }
  static Orb32s lastUndoGamma(Orb32s high, Orb32s low0, Orb32s low1) {
    return undoGamma(high, low0, low1);
  }
  static Orb32s lastUndoAlpha(Orb32s high, Orb32s low0, Orb32s low1) {
    return undoAlpha(high, low0, low1);
  }
};

// Floats: a step is computed in doubles, and what it stores is a `Kept`.
template <class Kept>
struct Floating {
  using Sum = Orb64f;
  using Work = Kept;
  static constexpr bool kHasRowEnds = false;
  static Kept in(Orb32f sample) { return sample; }
  static Orb32f out(Kept value) { return value; }

  static Kept add(Orb64f centre, Orb32f factor, Orb64f side0, Orb64f side1) {
    return static_cast<Kept>((side0 + side1) * factor + centre);
  }
  static Kept alpha(Kept high, Kept low0, Kept low1) { return add(high, kAlphaF, low0, low1); }
  static Kept beta(Kept low, Kept high0, Kept high1) { return add(low, kBetaF, high0, high1); }
  static Kept gamma(Kept high, Kept low0, Kept low1) { return add(high, kGammaF, low0, low1); }
  static Kept low(Kept low, Kept high0, Kept high1) {
    const Kept sum = add(low, kDeltaF, high0, high1);
    return static_cast<Kept>(Orb64f{sum} * kLowGainF);
  }
  static Kept high(Kept high) { return static_cast<Kept>(Orb64f{high} * kHighGainF); }

  static Kept undoLow(Orb64f low, Orb64f high0, Orb64f high1) {
    return static_cast<Kept>(low * kHighGainF - (high0 + high1) * kDeltaLowGainF);
  }
  static Kept undoGamma(Orb64f high, Orb64f low0, Orb64f low1) {
    return static_cast<Kept>(high * kLowGainF - (low0 + low1) * kGammaF);
  }
  static Kept undoBeta(Kept low, Kept high0, Kept high1) { return add(low, -kBetaF, high0, high1); }
  static Kept undoAlpha(Kept high, Kept low0, Kept low1) { return add(high, -kAlphaF, low0, low1); }

  static Kept direct(const DirectFilter& filter, const Orb64f* pairs) {
    Orb64f sum = 0;
    for (int i = 0; i < filter.count; ++i) sum += filter.tapsF[i] * pairs[i];
    return static_cast<Kept>(sum);
  }
  static Kept directLow(const Orb64f* pairs) { return direct(kDirectLow, pairs); }
};

// ---- Rows and columns

// Columns are taken side by side, for as long as there are many.
constexpr ptrdiff_t kMostLanes = 64;

template <class Wavelet, class From, class T>
inline void orbTransformRow(LinePair<From> from, LinePair<T> to, ptrdiff_t width, ptrdiff_t p) {
  orbLiftLine<Wavelet>(OpenSource<From>{from}, to, width, width, 1, p);
}

template <class Wavelet, class From, class T>
inline void orbTransformColumns(LinePair<From> from, LinePair<T> to, OrbiSize size, ptrdiff_t p) {
  for (ptrdiff_t x = 0; x < size.width; x += kMostLanes) {
    orbLiftLine<Wavelet>(OpenSource<From>{from.movedBy(x)}, to.movedBy(x), size.height, size.height,
                         limit<ptrdiff_t>(size.width - x, 0, kMostLanes), p);
  }
}

// The sum of two samples at the same distance from the centre of a filter.
template <class A, class T>
inline typename A::Sum pairOf(Line<T> line, ptrdiff_t k0, ptrdiff_t k1) {
  using Sum = typename A::Sum;
  return static_cast<Sum>(load(line.at(k0))) + static_cast<Sum>(load(line.at(k1)));
}

// Bands of one sample.
template <class A, class From, class T>
inline void orbFilterForward(LinePair<From> from, LinePair<T> to, ptrdiff_t p) {
  using Sum = typename A::Sum;
  const auto [low, high] = from;
  const Sum lowPairs[5] = {static_cast<Sum>(load(low.at(0))), pairOf<A>(high, p - 1, p),
                           pairOf<A>(low, -1, 1), pairOf<A>(high, p - 2, p + 1),
                           pairOf<A>(low, -2, 2)};
  const Sum highPairs[4] = {static_cast<Sum>(load(high.at(0))), pairOf<A>(low, -p, 1 - p),
                            pairOf<A>(high, -1, 1), pairOf<A>(low, -1 - p, 2 - p)};
  store(to.low.first, A::directLow(lowPairs));
  store(to.high.first, A::direct(kDirectHigh, highPairs));
}

template <class A, class From, class T>
inline void orbFilterInverse(LinePair<From> from, LinePair<T> to, ptrdiff_t p) {
  using Sum = typename A::Sum;
  const auto [low, high] = from;
  const Sum lowPairs[4] = {static_cast<Sum>(load(low.at(0))), pairOf<A>(low, -1, 1),
                           pairOf<A>(high, p - 1, p), pairOf<A>(high, p - 2, p + 1)};
  const Sum highPairs[5] = {static_cast<Sum>(load(high.at(0))), pairOf<A>(high, -1, 1),
                            pairOf<A>(high, -2, 2), pairOf<A>(low, -p, 1 - p),
                            pairOf<A>(low, -1 - p, 2 - p)};
  store(to.low.first, A::direct(kDirectUndoLow, lowPairs));
  store(to.high.first, A::direct(kDirectUndoHigh, highPairs));
}

// ---- One stage of columns, on rows that the caller hands over

// Each sample of `to` gets `step` of the samples of three rows, any of which it may be.
template <class A, class T, class Step>
inline void stepRow(T* to, const T* centre, const T* side0, const T* side1, ptrdiff_t width,
                    Step step) {
  for (ptrdiff_t x = 0; x < width; ++x) {
    const auto read = [x](const T* row) { return A::in(load(row + x)); };
    store(to + x, A::out(step(read(centre), read(side0), read(side1))));
  }
}

template <class T>
inline void orbForwardLift53(const T* src0, const T* src1, const T* src2, T* dstLow,
                             const T* srcHigh, T* dstHigh, ptrdiff_t width) {
  using A = Reversible<T>;
  stepRow<A>(dstHigh, src1, src0, src2, width, A::predict);
  stepRow<A>(dstLow, src0, srcHigh, dstHigh, width, A::update);
}

template <class T>
inline void orbInverseLift53(const T* srcLow, const T* srcHigh0, const T* srcHigh1,
                             const T* srcEven, T* dstOdd, T* dstEven, ptrdiff_t width) {
  using A = Reversible<T>;
  stepRow<A>(dstEven, srcLow, srcHigh0, srcHigh1, width, A::undoUpdate);
  stepRow<A>(dstOdd, srcHigh0, srcEven, dstEven, width, A::undoPredict);
}

template <class A, class T>
inline void orbForwardLift97(const T* src0, const T* src1, const T* src2, T* lift3, T* lift2New,
                             T* lift4, T* lift1, T* lift1New, ptrdiff_t width) {
  stepRow<A>(lift1New, src1, src0, src2, width, A::alpha);
  stepRow<A>(lift2New, src0, lift1, lift1New, width, A::beta);
  stepRow<A>(lift1, lift1, lift3, lift2New, width, A::gamma);
  stepRow<A>(lift3, lift3, lift4, lift1, width, A::low);
  for (ptrdiff_t x = 0; x < width; ++x) {
    store(lift4 + x, A::out(A::high(A::in(load(lift4 + x)))));
  }
}

template <class A, class T>
inline void orbInverseLift97(const T* srcLow, const T* srcHigh0, const T* srcHigh1, const T* lift0,
                             T* lift1, T* lift2, T* lift3New, T* lift4New, ptrdiff_t width) {
  stepRow<A>(lift4New, srcLow, srcHigh0, srcHigh1, width, A::undoLow);
  stepRow<A>(lift3New, srcHigh0, lift2, lift4New, width, A::undoGamma);
  stepRow<A>(lift2, lift2, lift1, lift3New, width, A::undoBeta);
  stepRow<A>(lift1, lift1, lift0, lift2, width, A::undoAlpha);
}

}  // namespace orb::ORB_BUILD::plain

#endif
