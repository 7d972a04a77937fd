// Resizing by two samples in each direction, with weights in 14 fraction bits.
#ifndef ORB_IMAGE_RESIZE_LINEAR_H
#define ORB_IMAGE_RESIZE_LINEAR_H

#include "image/px/resize_linear.h"
#include "image/resize_axis.h"
#if ORB_SIMD
#include "image/simd/resize_linear.h"
#endif

namespace orb::ORB_BUILD {

constexpr Orb32s kLinearOne = 1 << 14;

inline LinearWeights linearWeightsOf(Orb64f part) {
  const Orb32s next = static_cast<Orb32s>(part * kLinearOne + 1e-7);
  return {static_cast<Orb16s>(kLinearOne - next), static_cast<Orb16s>(next)};
}

struct LinearAxis {
  Orb32s* whole;
  LinearWeights* weights;
  Inner inner;
};

[[gnu::noinline]] inline LinearAxis linearAxisOf(const Axis& axis, Scratch& scratch) {
  const DoublePrecision precision;
  LinearAxis linear = {
      scratch.take<Orb32s>(axis.count), scratch.take<LinearWeights>(axis.count), {}};
  for (Orb32s i = 0; i < axis.count; ++i) {
    const Place place = placeOf(axis, i);
    linear.whole[i] = place.whole;
    linear.weights[i] = linearWeightsOf(place.part);
  }
  linear.inner = innerOf(linear.whole, axis, 0, 1);
  return linear;
}

// ---- One direction, where the other is constant

inline Orb8u linearBetween(Orb8u here, Orb8u next, LinearWeights weights) {
  return static_cast<Orb8u>((weights.here * here + weights.next * next + 8192) >> 14);
}

// `count` pixels that are all the same.
template <int kChannels>
inline void fillPixels(const Orb8u* pixel, Orb8u* dst, ptrdiff_t count) {
  for (ptrdiff_t i = 0; i < count; ++i) {
    for (int c = 0; c < kChannels; ++c) dst[i * kChannels + c] = pixel[c];
  }
}

// A row above the first or below the last of the source, which it is made of.
template <int kChannels>
inline void linearBorderRow(const Orb8u* src, const Axis& x, const LinearAxis& columns,
                            Orb8u* dst) {
  const Inner inner = columns.inner;
  fillPixels<kChannels>(src, dst, inner.from);
  for (ptrdiff_t i = inner.from; i < inner.to; ++i) {
    const Orb8u* const pixel = src + static_cast<ptrdiff_t>(columns.whole[i]) * kChannels;
    for (int c = 0; c < kChannels; ++c) {
      dst[i * kChannels + c] = linearBetween(pixel[c], pixel[kChannels + c], columns.weights[i]);
    }
  }
  fillPixels<kChannels>(src + static_cast<ptrdiff_t>(x.size - 1) * kChannels,
                        dst + static_cast<ptrdiff_t>(inner.to) * kChannels, x.count - inner.to);
}

// `count` pixels beside the first or the last column of the source, which they are made of.
template <int kChannels>
inline void linearBorderColumns(const Orb8u* upper, const Orb8u* lower, LinearWeights weights,
                                Orb8u* dst, ptrdiff_t count) {
  Orb8u pixel[kChannels];
  for (int c = 0; c < kChannels; ++c) pixel[c] = linearBetween(upper[c], lower[c], weights);
  fillPixels<kChannels>(pixel, dst, count);
}

template <int kChannels>
inline void resizeLinear(const Source& source, const Target& target, const Axis& x, const Axis& y,
                         Scratch scratch) {
  const LinearAxis columns = linearAxisOf(x, scratch);
  const LinearAxis rows = linearAxisOf(y, scratch);
  const Inner inner = columns.inner;
  const Orb32s width = inner.to - inner.from;
  const ptrdiff_t last = static_cast<ptrdiff_t>(x.size - 1) * kChannels;

  // Two rows of the source, filtered across: the upper one first.
  Orb16s* filtered[2] = {scratch.take<Orb16s>(static_cast<int64_t>(x.count) * kChannels),
                         scratch.take<Orb16s>(static_cast<int64_t>(x.count) * kChannels)};
  Orb32s held[2] = {-1, -1};
  const auto filter = [&](int which, Orb32s row) {
    if (held[which] == row) return;
    held[which] = row;
    kernel::orbLinearAcross<kChannels>(source.row(row), columns.whole + inner.from,
                                       columns.weights + inner.from, filtered[which], width,
                                       x.size);
  };

  for (Orb32s i = 0; i < y.count; ++i) {
    Orb8u* const dst = target.row(i);
    if (i < rows.inner.from || i >= rows.inner.to) {
      linearBorderRow<kChannels>(source.row(i < rows.inner.from ? 0 : y.size - 1), x, columns, dst);
      continue;
    }
    const Orb32s row = rows.whole[i];
    const LinearWeights weights = rows.weights[i];
    const Orb8u* const upper = source.row(row);
    const Orb8u* const lower = source.row(row + 1);
    linearBorderColumns<kChannels>(upper, lower, weights, dst, inner.from);
    if (held[1] == row) {
      Orb16s* const moved = filtered[0];
      filtered[0] = filtered[1];
      filtered[1] = moved;
      held[1] = held[0];
      held[0] = row;
    }
    filter(0, row);
    filter(1, row + 1);
    kernel::orbLinearDown(filtered[0], filtered[1], weights,
                          dst + static_cast<ptrdiff_t>(inner.from) * kChannels, width * kChannels);
    linearBorderColumns<kChannels>(upper + last, lower + last, weights,
                                   dst + static_cast<ptrdiff_t>(inner.to) * kChannels,
                                   x.count - inner.to);
  }
}

}  // namespace orb::ORB_BUILD

#endif
