// Resizing by kernels that are widened where the image is reduced: antialiasing.
#ifndef ORB_IMAGE_RESIZE_WIDE_H
#define ORB_IMAGE_RESIZE_WIDE_H

#include "image/px/resize_wide.h"
#include "image/px/sample_weights.h"
#include "image/resize_axis.h"
#include "image/resize_taps.h"
#if ORB_SIMD
#include "image/simd/resize_wide.h"
#endif

namespace orb::ORB_BUILD {

// A kernel is widened to so many samples for each of its own and no more.
constexpr Orb64f kWidest = 1 << 20;

// A kernel may read so many weights behind the last.
constexpr Orb32s kWeightMargin = 8;

struct WideKernel {
  Orb32s method;
  Orb64f reach;
  Orb64f narrow;  // distances are multiplied by it, and weights
};

[[gnu::noinline]] inline WideKernel wideKernelOf(Orb32s method, Orb64f scale) {
  const DoublePrecision precision;
  const Orb32s reach = plain::kernelReach(method);
  if (!(scale >= 1)) return {method, static_cast<Orb64f>(reach), 1};
  const Orb64f widened = within(scale, 1, kWidest);
  return {method, reach * widened, 1 / widened};
}

// The samples under a kernel that stands at `middle`, from `from` to `to`. Those outside of the
// image are its border's, so that their weights are added to those of `first` and `last`.
struct KernelSpan {
  Orb64f middle;
  int64_t from;
  int64_t to;
  Orb32s first;
  Orb32s last;
};

inline int64_t awayFromZero(Orb64f value) {
  return static_cast<int64_t>(value < 0 ? __builtin_floor(value) : -__builtin_floor(-value));
}

inline KernelSpan spanOf(const Axis& axis, const WideKernel& kernel, Orb32s i) {
  const Orb64f outside = kernel.reach + 1;
  const Orb64f middle = within(middleOf(axis, i), -outside, axis.size + outside);
  const int64_t from = awayFromZero(middle - kernel.reach);
  const int64_t to = static_cast<int64_t>(middle + kernel.reach);
  const int64_t first = limit<int64_t>(from, 0, axis.size - 1);
  return {middle, from, to, static_cast<Orb32s>(first),
          static_cast<Orb32s>(limit<int64_t>(to, first, axis.size - 1))};
}

inline Orb64f weightAt(const WideKernel& kernel, const KernelSpan& span, int64_t sample) {
  const Orb64f distance = __builtin_fabs(span.middle - static_cast<Orb64f>(sample));
  const Orb64f weight = plain::kernelWeight(kernel.method, distance * kernel.narrow);
  return static_cast<Orb32f>(weight * kernel.narrow);
}

inline Orb64f weightOf(const WideKernel& kernel, const KernelSpan& span, Orb32s sample) {
  Orb64f weight = weightAt(kernel, span, sample);
  if (sample == span.first) {
    for (int64_t i = span.from; i < sample; ++i) weight += weightAt(kernel, span, i);
  }
  if (sample == span.last) {
    for (int64_t i = sample + 1; i <= span.to; ++i) weight += weightAt(kernel, span, i);
  }
  return weight;
}

// The weights of a span, divided by their sum.
inline void weightsOf(const WideKernel& kernel, const KernelSpan& span, Orb32f* weights) {
  const ptrdiff_t count = span.last - span.first + 1;
  Orb64f sum = 0;
  for (ptrdiff_t k = 0; k < count; ++k) {
    const Orb64f weight = weightOf(kernel, span, span.first + static_cast<Orb32s>(k));
    weights[k] = static_cast<Orb32f>(weight);
    sum += weight;
  }
  for (ptrdiff_t k = 0; k < count; ++k) weights[k] = static_cast<Orb32f>(weights[k] / sum);
}

// The most samples of the image that a span has.
inline Orb32s longestSpan(const Axis& axis, const WideKernel& kernel) {
  const Orb64f longest = 2 * -__builtin_floor(-kernel.reach) + 1;
  return static_cast<Orb32s>(within(longest, 1, axis.size));
}

[[gnu::noinline]] inline void findTaps(const Axis& axis, const WideKernel& kernel, Orb32s from,
                                       Orb32s count, const WideTaps& taps) {
  const DoublePrecision precision;
  for (Orb32s i = 0; i < count; ++i) {
    const KernelSpan span = spanOf(axis, kernel, from + i);
    taps.first[i] = span.first;
    taps.count[i] = span.last - span.first + 1;
    weightsOf(kernel, span, taps.weights + static_cast<ptrdiff_t>(i) * taps.stride);
  }
}

template <int kChannels>
[[gnu::noinline]] void wideAcross(const Orb8u* src, const WideTaps& taps, Orb32f* dst,
                                  const Axis& x) {
  const SinglePrecision precision;
  kernel::orbWideAcross<kChannels>(src, taps, dst, x.count, x.size);
}

[[gnu::noinline]] inline void wideDown(const RowRing& ring, Orb32s first, Orb32s count,
                                       const Orb32f* weights, bool isFirst, Orb32f* sums,
                                       ptrdiff_t samples) {
  const SinglePrecision precision;
  kernel::orbWideDown(ring, first, count, weights, isFirst, sums, samples);
}

[[gnu::noinline]] inline void wideBytes(const Orb32f* sums, Orb8u* dst, ptrdiff_t samples) {
  const SinglePrecision precision;
  kernel::orbWideBytes(sums, dst, samples);
}

// ---- Kernels whose weights the scratch does not hold: an image much larger than its reduced part

// So many weights are held at once, in each direction.
constexpr Orb32s kFewWeights = 256;

struct WeighedSpan {
  WideKernel kernel;
  KernelSpan span;
  Orb64f sum;

  Orb32s hold(Orb32s first, Orb64f* weights) const {
    const Orb32s count = limit(span.last - first + 1, 0, kFewWeights);
    for (Orb32s k = 0; k < count; ++k) weights[k] = weightOf(kernel, span, first + k) / sum;
    return count;
  }
};

inline WeighedSpan weighedSpanOf(const Axis& axis, const WideKernel& kernel, Orb32s i) {
  WeighedSpan weighed = {kernel, spanOf(axis, kernel, i), 0};
  for (Orb32s sample = weighed.span.first; sample <= weighed.span.last; ++sample) {
    weighed.sum += weightOf(kernel, weighed.span, sample);
  }
  return weighed;
}

template <int kChannels>
inline void widePixel(const Source& source, const WeighedSpan& x, const WeighedSpan& y,
                      Orb8u* dst) {
  Orb64f across[kFewWeights];
  Orb64f down[kFewWeights];
  Orb64f sums[kChannels] = {};
  for (Orb32s row = y.span.first, rows = 0; row <= y.span.last; row += rows) {
    rows = y.hold(row, down);
    for (Orb32s column = x.span.first, columns = 0; column <= x.span.last; column += columns) {
      columns = x.hold(column, across);
      for (Orb32s j = 0; j < rows; ++j) {
        const Orb8u* const src = source.row(row + j) + static_cast<ptrdiff_t>(column) * kChannels;
        for (ptrdiff_t i = 0; i < columns; ++i) {
          for (int c = 0; c < kChannels; ++c) {
            sums[c] += down[j] * (across[i] * src[i * kChannels + c]);
          }
        }
      }
    }
  }
  for (int c = 0; c < kChannels; ++c) dst[c] = plain::byteOf(static_cast<Orb32f>(sums[c]));
}

template <int kChannels>
[[gnu::noinline]] void resizePixelByPixel(const Source& source, const Target& target, const Axis& x,
                                          const WideKernel& xKernel, const Axis& y,
                                          const WideKernel& yKernel) {
  const DoublePrecision precision;
  for (Orb32s j = 0; j < x.count; ++j) {
    const WeighedSpan column = weighedSpanOf(x, xKernel, j);
    for (Orb32s i = 0; i < y.count; ++i) {
      widePixel<kChannels>(source, column, weighedSpanOf(y, yKernel, i),
                           target.row(i) + static_cast<ptrdiff_t>(j) * kChannels);
    }
  }
}

// ----

template <int kChannels>
inline void resizeByWideKernel(Orb32s method, const Source& source, const Target& target,
                               const Axis& x, const Axis& y, Scratch scratch) {
  const WideKernel xKernel = wideKernelOf(method, x.scale);
  const WideKernel yKernel = wideKernelOf(method, y.scale);
  const int64_t samples = static_cast<int64_t>(x.count) * kChannels;
  const int64_t rowFloats = (samples + kRowMargin + 3) & ~static_cast<int64_t>(3);
  const Orb32s columnTaps = longestSpan(x, xKernel);
  const Orb32s rowTaps = longestSpan(y, yKernel);

  // The weights of all columns and of one row, the sums of a row, and as many filtered rows as
  // there is room for.
  const int64_t columnWeights = static_cast<int64_t>(columnTaps) * x.count + kWeightMargin;
  const int64_t rounding = 4 * 6;
  const int64_t room = scratch.left() - 2 * static_cast<int64_t>(x.count) - columnWeights -
                       rowTaps - rowFloats - rounding;
  if (room < rowFloats) {
    resizePixelByPixel<kChannels>(source, target, x, xKernel, y, yKernel);
    return;
  }
  const WideTaps columns = {scratch.take<Orb32s>(x.count), scratch.take<Orb32s>(x.count),
                            scratch.take<Orb32f>(columnWeights), columnTaps};
  Orb32f* const weights = scratch.take<Orb32f>(rowTaps);
  Orb32f* const sums = scratch.take<Orb32f>(rowFloats);
  const Orb32s places = static_cast<Orb32s>(limit<int64_t>(room / rowFloats, 1, rowTaps));
  const RowRing ring = {scratch.take<Orb32f>(rowFloats * places), static_cast<ptrdiff_t>(rowFloats),
                        places};
  findTaps(x, xKernel, 0, x.count, columns);

  Orb32s held = 0;  // the first row that the ring holds, and the one behind the last
  Orb32s end = 0;
  for (Orb32s i = 0; i < y.count; ++i) {
    Orb32s first = 0;
    Orb32s count = 0;
    findTaps(y, yKernel, i, 1, {&first, &count, weights, rowTaps});
    for (Orb32s k = 0, some = 0; k < count; k += some) {
      some = limit(count - k, 1, places);
      const Orb32s from = first + k;
      if (from < held || from > end) held = end = from;
      for (; end < from + some; ++end) {
        wideAcross<kChannels>(source.row(end), columns, ring.row(end), x);
      }
      if (held < end - places) held = end - places;
      wideDown(ring, from, some, weights + k, k == 0, sums, static_cast<ptrdiff_t>(samples));
    }
    wideBytes(sums, target.row(i), static_cast<ptrdiff_t>(samples));
  }
}

}  // namespace orb::ORB_BUILD

#endif
