// Resizing by the nearest sample.
#ifndef ORB_IMAGE_RESIZE_NEAREST_H
#define ORB_IMAGE_RESIZE_NEAREST_H

#include "image/resize_axis.h"

namespace orb::ORB_BUILD {

inline Orb32s nearestOf(const Axis& axis, Orb32s i) {
  return static_cast<Orb32s>(within(middleOf(axis, i) - 1e-10, 0, axis.size - 1));
}

[[gnu::noinline]] inline void findNearest(const Axis& axis, Orb32s* nearest) {
  const DoublePrecision precision;
  for (Orb32s i = 0; i < axis.count; ++i) nearest[i] = nearestOf(axis, i);
}

template <int kChannels>
inline void takeNearest(const Orb8u* src, const Orb32s* nearest, Orb8u* dst, Orb32s width) {
  for (ptrdiff_t x = 0; x < width; ++x) {
    const Orb8u* const pixel = src + static_cast<ptrdiff_t>(nearest[x]) * kChannels;
    for (int c = 0; c < kChannels; ++c) dst[x * kChannels + c] = pixel[c];
  }
}

template <int kChannels>
inline void resizeNearest(const Source& source, const Target& target, const Axis& x, const Axis& y,
                          Scratch scratch) {
  Orb32s* const columns = scratch.take<Orb32s>(x.count);
  Orb32s* const rows = scratch.take<Orb32s>(y.count);
  findNearest(x, columns);
  findNearest(y, rows);
  for (Orb32s i = 0; i < y.count; ++i) {
    if (i > 0 && rows[i] == rows[i - 1]) {
      __builtin_memmove(target.row(i), target.row(i - 1), static_cast<size_t>(x.count) * kChannels);
    } else {
      takeNearest<kChannels>(source.row(rows[i]), columns, target.row(i), x.count);
    }
  }
}

}  // namespace orb::ORB_BUILD

#endif
