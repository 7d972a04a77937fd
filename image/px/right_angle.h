// Turns by right angles: pixels are copied.
#ifndef ORB_IMAGE_PX_RIGHT_ANGLE_H
#define ORB_IMAGE_PX_RIGHT_ANGLE_H

#include "frame/memory_access.h"

namespace orb::ORB_BUILD::plain {

// Copies `width` x `height` pixels to rows in order. From one to the next along a row the source
// goes on by `along` bytes, from one row to the next by `down`. In stripes that go down: where a
// row of the destination is a column of the source, the next column is in the cache.
template <Orb32s kChannels>
inline void copyTurned(const Orb8u* src, ptrdiff_t along, ptrdiff_t down, Orb8u* dst,
                       Orb32s dstStep, Orb32s width, Orb32s height) {
  constexpr Orb32s kStripe = 64;
  for (Orb32s start = 0; start < width; start += kStripe) {
    const Orb32s end = width - start < kStripe ? width : start + kStripe;
    for (ptrdiff_t y = 0; y < height; ++y) {
      const Orb8u* from = src + y * down + start * along;
      Orb8u* to = rowAt(dst, dstStep, y) + static_cast<ptrdiff_t>(start) * kChannels;
      for (Orb32s x = start; x < end; ++x, from += along, to += kChannels) {
        for (Orb32s k = 0; k < kChannels; ++k) to[k] = from[k];
      }
    }
  }
}

}  // namespace orb::ORB_BUILD::plain

#endif
