// Fixed filters over vectors of words: what a row of sums holds fits 16 bits, and so does all but
// the sum of the Gaussian of 5 x 5. The sums of the row that comes last go into the result while
// they are made, and are kept for the rows below.
#ifndef ORB_IMAGE_SIMD_FILTER_H
#define ORB_IMAGE_SIMD_FILTER_H

#include "frame/vec.h"
#include "image/px/filter.h"

namespace orb::ORB_BUILD::simd {

// Calls `body` with the start of each vector of a row. The last one ends with the row, and may redo
// what the one before it did. The row is as long as a vector at least.
template <class Body>
inline void forEachVector(Orb32s samples, Body body) {
  for (Orb32s i = 0; i <= samples - kI16Lanes; i += kI16Lanes) body(i);
  if (samples % kI16Lanes != 0) body(samples - kI16Lanes);
}

// ---- What becomes of sums; s are the samples in the middle.

struct GaussOf3x3 {
  static I16 alongAxis(I16 before, I16 middle, I16 behind) {
    return before + (middle << 1) + behind;
  }
  static I16 result(I16 S, I16) {
    return shiftRightUnsigned(S + (shiftRightUnsigned(S, 4) & splatI16(1)) + splatI16(7), 4);
  }
};
struct BoxOf3x3 {
  static I16 alongAxis(I16 before, I16 middle, I16 behind) { return before + middle + behind; }
};
struct HipassOf3x3 : BoxOf3x3 {
  static I16 result(I16 S, I16 s) { return (s << 3) + s - S; }
};
struct LowpassOf3x3 : BoxOf3x3 {
  // By 455 / 2^12, as 8 * 910 / 2^16.
  static I16 result(I16 S, I16) { return mulHigh((S + splatI16(5)) << 3, splatI16(910)); }
};

struct HipassOf5x5 {
  static I16 result(I16 S, I16 s) { return s * splatI16(25) - S; }
};
struct LowpassOf5x5 {
  static I16 result(I16 S, I16) {
    return shiftRightUnsigned(mulHigh(S + splatI16(13), splatI16(10485)), 2);
  }
};

struct GaussOf5x5 : plain::GaussOf5x5 {
  // The middle row's sums go up to 65025: they are kept less 32768.
  static constexpr Orb32s kBias = 32768;
  static I16 kept(I16 centre) { return centre + splatI16(-kBias); }
  static I16 result(I16 outer, I16 above, I16 centre, I16 below) {
    const I32Sums S = sumsOfProducts(above, 1, below, 1) + sumsOfProducts(outer, 1, centre, 1);
    // By 29382 / 2^24; the product with half of it fits 31 bits.
    return narrow((S + (kBias + 286)) * (29382 / 2), 23);
  }
};
struct LaplaceOf5x5 : plain::LaplaceOf5x5 {
  static I16 kept(I16 centre) { return centre; }
  static I16 result(I16 outer, I16 above, I16 centre, I16 below) {
    return outer + above + centre + below;
  }
};

// ---- The three ways to come to the sums. A row that is shorter than a vector goes the plain way.

template <class Rule, class PlainRule>
inline void orbFilter3x3(const FilterRegion& region, Orb32s* scratch) {
  const Orb32s samples = region.samples, channels = region.channels;
  if (samples < kI16Lanes) return plain::orbFilter3x3<PlainRule>(region, scratch);
  const RowRing<Orb16s> sums(reinterpret_cast<Orb16s*>(scratch), 3, samples);
  const auto sumAt = [=](const Orb8u* src) {
    return Rule::alongAxis(loadWide8u(src - channels), loadWide8u(src), loadWide8u(src + channels));
  };
  for (ptrdiff_t y = -1; y < 1; ++y) {
    const Orb8u* src = region.srcRow(y);
    Orb16s* row = sums.row(y);
    forEachVector(samples, [=](Orb32s i) { storeI16(row + i, sumAt(src + i)); });
  }
  for (ptrdiff_t y = 0; y < region.height; ++y) {
    const Orb8u *src = region.srcRow(y), *next = region.srcRow(y + 1);
    const Orb16s *above = sums.row(y - 1), *middle = sums.row(y);
    Orb16s* below = sums.row(y + 1);
    Orb8u* dst = region.dstRow(y);
    forEachVector(samples, [=](Orb32s i) {
      const I16 sum = sumAt(next + i);
      storeI16(below + i, sum);
      const I16 S = Rule::alongAxis(loadI16(above + i), loadI16(middle + i), sum);
      storeLimited8u(dst + i, Rule::result(S, loadWide8u(src + i)));
    });
  }
}

template <class Rule, class PlainRule>
inline void orbFilterBox5x5(const FilterRegion& region, Orb32s* scratch) {
  const Orb32s samples = region.samples, channels = region.channels;
  if (samples < kI16Lanes) return plain::orbFilterBox5x5<PlainRule>(region, scratch);
  const RowRing<Orb16s> sums(reinterpret_cast<Orb16s*>(scratch), 5, samples);
  const auto sumAt = [=](const Orb8u* src) {
    return (loadWide8u(src - 2 * channels) + loadWide8u(src + 2 * channels)) +
           (loadWide8u(src - channels) + loadWide8u(src + channels)) + loadWide8u(src);
  };
  for (ptrdiff_t y = -2; y < 2; ++y) {
    const Orb8u* src = region.srcRow(y);
    Orb16s* row = sums.row(y);
    forEachVector(samples, [=](Orb32s i) { storeI16(row + i, sumAt(src + i)); });
  }
  for (ptrdiff_t y = 0; y < region.height; ++y) {
    const Orb8u *src = region.srcRow(y), *next = region.srcRow(y + 2);
    const Orb16s *a = sums.row(y - 2), *b = sums.row(y - 1), *c = sums.row(y), *d = sums.row(y + 1);
    Orb16s* below = sums.row(y + 2);
    Orb8u* dst = region.dstRow(y);
    forEachVector(samples, [=](Orb32s i) {
      const I16 sum = sumAt(next + i);
      storeI16(below + i, sum);
      const I16 S = (loadI16(a + i) + loadI16(b + i)) + (loadI16(c + i) + loadI16(d + i)) + sum;
      storeLimited8u(dst + i, Rule::result(S, loadWide8u(src + i)));
    });
  }
}

template <class Rule, class PlainRule>
inline void orbFilter5x5(const FilterRegion& region, Orb32s* scratch) {
  const Orb32s samples = region.samples, channels = region.channels;
  if (samples < kI16Lanes) return plain::orbFilter5x5<PlainRule>(region, scratch);
  const RowRing<Orb16s> outer(reinterpret_cast<Orb16s*>(scratch), 5, samples);
  const RowRing<Orb16s> next(outer.end(), 4, samples);
  const RowRing<Orb16s> centre(next.end(), 3, samples);
  // Keeps the three sums of a vector of row y, and returns the outer ones.
  struct Sweep {
    const Orb8u* src;
    Orb16s *outer, *next, *centre;
    Orb32s channels;

    I16 at(Orb32s i) const {
      const Orb8u* here = src + i;
      const I16 far = loadWide8u(here - 2 * channels) + loadWide8u(here + 2 * channels);
      const I16 near = loadWide8u(here - channels) + loadWide8u(here + channels);
      const I16 middle = loadWide8u(here);
      const auto weighted = [&](const Orb16s(&w)[3]) {
        return far * splatI16(w[0]) + near * splatI16(w[1]) + middle * splatI16(w[2]);
      };
      const I16 sum = weighted(Rule::kOuter);
      storeI16(outer + i, sum);
      storeI16(next + i, weighted(Rule::kNext));
      storeI16(centre + i, Rule::kept(weighted(Rule::kCentre)));
      return sum;
    }
  };
  const auto sweepOf = [&](ptrdiff_t y) {
    return Sweep{region.srcRow(y), outer.row(y), next.row(y), centre.row(y), channels};
  };
  for (ptrdiff_t y = -2; y < 2; ++y) {
    const Sweep sweep = sweepOf(y);
    forEachVector(samples, [=](Orb32s i) { sweep.at(i); });
  }
  for (ptrdiff_t y = 0; y < region.height; ++y) {
    const Sweep sweep = sweepOf(y + 2);
    const Orb16s *top = outer.row(y - 2), *above = next.row(y - 1);
    const Orb16s *middle = centre.row(y), *below = next.row(y + 1);
    Orb8u* dst = region.dstRow(y);
    forEachVector(samples, [=](Orb32s i) {
      const I16 outerSum = loadI16(top + i) + sweep.at(i);
      storeLimited8u(dst + i, Rule::result(outerSum, loadI16(above + i), loadI16(middle + i),
                                           loadI16(below + i)));
    });
  }
}

inline void orbGauss3x3(const FilterRegion& region, Orb32s* scratch) {
  orbFilter3x3<GaussOf3x3, plain::GaussOf3x3>(region, scratch);
}
inline void orbGauss5x5(const FilterRegion& region, Orb32s* scratch) {
  orbFilter5x5<GaussOf5x5, plain::GaussOf5x5>(region, scratch);
}
inline void orbHipass3x3(const FilterRegion& region, Orb32s* scratch) {
  orbFilter3x3<HipassOf3x3, plain::HipassOf3x3>(region, scratch);
}
inline void orbHipass5x5(const FilterRegion& region, Orb32s* scratch) {
  orbFilterBox5x5<HipassOf5x5, plain::HipassOf5x5>(region, scratch);
}
inline void orbLaplace5x5(const FilterRegion& region, Orb32s* scratch) {
  orbFilter5x5<LaplaceOf5x5, plain::LaplaceOf5x5>(region, scratch);
}
inline void orbLowpass3x3(const FilterRegion& region, Orb32s* scratch) {
  orbFilter3x3<LowpassOf3x3, plain::LowpassOf3x3>(region, scratch);
}
inline void orbLowpass5x5(const FilterRegion& region, Orb32s* scratch) {
  orbFilterBox5x5<LowpassOf5x5, plain::LowpassOf5x5>(region, scratch);
}

}  // namespace orb::ORB_BUILD::simd

#endif
