// Fixed filters, plain: sums along a source row are made once, and kept until the rows below are
// there too.
#ifndef ORB_IMAGE_PX_FILTER_H
#define ORB_IMAGE_PX_FILTER_H

#include "frame/arith.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD {

// What a filter works on. A row is so many samples, and the next pixel's is `channels` further on.
struct FilterRegion {
  const Orb8u* src;
  Orb32s srcStep;
  Orb8u* dst;
  Orb32s dstStep;
  Orb32s samples;
  Orb32s channels;
  Orb32s height;

  const Orb8u* srcRow(ptrdiff_t y) const { return rowAt(src, srcStep, y); }
  Orb8u* dstRow(ptrdiff_t y) const { return rowAt(dst, dstStep, y); }
};

// Rows of sums, of which the last few are kept: a row takes the place of the one `depth` above it.
// Rows are counted from -2, the first that any filter reads.
template <class T>
class RowRing {
 public:
  RowRing(T* rows, Orb32s depth, Orb32s samples) : rows_(rows), depth_(depth), samples_(samples) {}

  T* row(ptrdiff_t y) const { return rows_ + (y + 2) % depth_ * samples_; }
  T* end() const { return rows_ + static_cast<ptrdiff_t>(depth_) * samples_; }

 private:
  T* rows_;
  Orb32s depth_;
  Orb32s samples_;
};

namespace plain {

// ---- What becomes of a sum S; s is the sample in the middle.

struct GaussOf3x3 {
  static constexpr Orb32s kMiddle = 2;  // of the weights 1, kMiddle, 1
  static Orb8u result(Orb32s S, Orb32s) { return wrap8u((S + ((S >> 4) & 1) + 7) >> 4); }
};
struct HipassOf3x3 {
  static constexpr Orb32s kMiddle = 1;
  static Orb8u result(Orb32s S, Orb32s s) { return saturate8u(9 * s - S); }
};
struct LowpassOf3x3 {
  static constexpr Orb32s kMiddle = 1;
  static Orb8u result(Orb32s S, Orb32s) { return wrap8u(((S + 5) * 455) >> 12); }
};

struct HipassOf5x5 {
  static Orb8u result(Orb32s S, Orb32s s) { return saturate8u(25 * s - S); }
};
struct LowpassOf5x5 {
  static Orb8u result(Orb32s S, Orb32s) { return wrap8u(((S + 13) * 10485) >> 18); }
};

// Weights of the outer two rows, of the next two and of the one in the middle: those of the columns
// two beside the middle, one beside it, and of the middle.
struct GaussOf5x5 {
  static constexpr Orb16s kOuter[] = {2, 7, 12}, kNext[] = {7, 31, 52}, kCentre[] = {12, 52, 127};
  static Orb8u result(Orb32s S) {
    return wrap8u(static_cast<Orb32s>((static_cast<Orb32u>(S + 286) * 29382) >> 24));
  }
};
struct LaplaceOf5x5 {
  static constexpr Orb16s kOuter[] = {-1, -3, -4}, kNext[] = {-3, 0, 6}, kCentre[] = {-4, 6, 20};
  static Orb8u result(Orb32s S) { return saturate8u(S); }
};

// ---- The three ways to come to the sums

template <class Rule>
inline void orbFilter3x3(const FilterRegion& region, Orb32s* scratch) {
  const Orb32s samples = region.samples, channels = region.channels;
  const RowRing<Orb32s> sums(scratch, 3, samples);
  const auto sumRow = [&](ptrdiff_t y) {
    const Orb8u* src = region.srcRow(y);
    Orb32s* row = sums.row(y);
    for (Orb32s i = 0; i < samples; ++i) {
      row[i] = src[i - channels] + Rule::kMiddle * src[i] + src[i + channels];
    }
  };
  sumRow(-1);
  sumRow(0);
  for (ptrdiff_t y = 0; y < region.height; ++y) {
    sumRow(y + 1);
    const Orb32s *above = sums.row(y - 1), *middle = sums.row(y), *below = sums.row(y + 1);
    const Orb8u* src = region.srcRow(y);
    Orb8u* dst = region.dstRow(y);
    for (Orb32s i = 0; i < samples; ++i) {
      dst[i] = Rule::result(above[i] + Rule::kMiddle * middle[i] + below[i], src[i]);
    }
  }
}

// Sliding sums of 5 along the row and, over them, of 5 rows.
template <class Rule>
inline void orbFilterBox5x5(const FilterRegion& region, Orb32s* scratch) {
  const Orb32s samples = region.samples, channels = region.channels;
  const RowRing<Orb32s> sums(scratch, 5, samples);
  Orb32s* const totals = sums.end();
  const auto addRow = [&](ptrdiff_t y) {
    const Orb8u* src = region.srcRow(y);
    Orb32s* leaving = sums.row(y);
    for (Orb32s channel = 0; channel < channels; ++channel) {
      Orb32s sum = 0;
      for (Orb32s tap = -2; tap < 2; ++tap) sum += src[channel + tap * channels];
      for (Orb32s i = channel; i < samples; i += channels) {
        sum += src[i + 2 * channels];
        totals[i] += sum - leaving[i];
        leaving[i] = sum;
        sum -= src[i - 2 * channels];
      }
    }
  };
  for (Orb32s* word = scratch; word < totals + samples; ++word) *word = 0;
  for (ptrdiff_t y = -2; y < 2; ++y) addRow(y);
  for (ptrdiff_t y = 0; y < region.height; ++y) {
    addRow(y + 2);
    const Orb8u* src = region.srcRow(y);
    Orb8u* dst = region.dstRow(y);
    for (Orb32s i = 0; i < samples; ++i) dst[i] = Rule::result(totals[i], src[i]);
  }
}

template <class Rule>
inline void orbFilter5x5(const FilterRegion& region, Orb32s* scratch) {
  const Orb32s samples = region.samples, channels = region.channels;
  const RowRing<Orb32s> outer(scratch, 5, samples);
  const RowRing<Orb32s> next(outer.end(), 4, samples);
  const RowRing<Orb32s> centre(next.end(), 3, samples);
  const auto sweepRow = [&](ptrdiff_t y) {
    const Orb8u* src = region.srcRow(y);
    Orb32s *outerRow = outer.row(y), *nextRow = next.row(y), *centreRow = centre.row(y);
    for (Orb32s i = 0; i < samples; ++i) {
      const Orb32s far = src[i - 2 * channels] + src[i + 2 * channels];
      const Orb32s near = src[i - channels] + src[i + channels];
      const auto weighted = [&](const Orb16s(&w)[3]) {
        return w[0] * far + w[1] * near + w[2] * src[i];
      };
      outerRow[i] = weighted(Rule::kOuter);
      nextRow[i] = weighted(Rule::kNext);
      centreRow[i] = weighted(Rule::kCentre);
    }
  };
  for (ptrdiff_t y = -2; y < 2; ++y) sweepRow(y);
  for (ptrdiff_t y = 0; y < region.height; ++y) {
    sweepRow(y + 2);
    const Orb32s *top = outer.row(y - 2), *above = next.row(y - 1), *middle = centre.row(y);
    const Orb32s *below = next.row(y + 1), *bottom = outer.row(y + 2);
    Orb8u* dst = region.dstRow(y);
    for (Orb32s i = 0; i < samples; ++i) {
      dst[i] = Rule::result(top[i] + above[i] + middle[i] + below[i] + bottom[i]);
    }
  }
}

// ---- The filters, each with the rows of words of 32 bits that it wants as scratch

constexpr Orb32s kRows3x3 = 3, kRowsBox5x5 = 6, kRows5x5 = 12;

inline void orbGauss3x3(const FilterRegion& region, Orb32s* scratch) {
  orbFilter3x3<GaussOf3x3>(region, scratch);
}
inline void orbGauss5x5(const FilterRegion& region, Orb32s* scratch) {
  orbFilter5x5<GaussOf5x5>(region, scratch);
}
inline void orbHipass3x3(const FilterRegion& region, Orb32s* scratch) {
  orbFilter3x3<HipassOf3x3>(region, scratch);
}
inline void orbHipass5x5(const FilterRegion& region, Orb32s* scratch) {
  orbFilterBox5x5<HipassOf5x5>(region, scratch);
}
inline void orbLaplace5x5(const FilterRegion& region, Orb32s* scratch) {
  orbFilter5x5<LaplaceOf5x5>(region, scratch);
}
inline void orbLowpass3x3(const FilterRegion& region, Orb32s* scratch) {
  orbFilter3x3<LowpassOf3x3>(region, scratch);
}
inline void orbLowpass5x5(const FilterRegion& region, Orb32s* scratch) {
  orbFilterBox5x5<LowpassOf5x5>(region, scratch);
}

}  // namespace plain
}  // namespace orb::ORB_BUILD

#endif
