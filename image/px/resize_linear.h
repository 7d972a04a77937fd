// Rows of a resize by two samples in each direction: across into words with 6 fraction bits, then
// down. Weights have 14 fraction bits.
#ifndef ORB_IMAGE_PX_RESIZE_LINEAR_H
#define ORB_IMAGE_PX_RESIZE_LINEAR_H

#include "frame/memory_access.h"

namespace orb::ORB_BUILD {

// What a sample and the next weigh, of 16384.
struct LinearWeights {
  Orb16s here;
  Orb16s next;
};

namespace plain {

// Between sample `whole` and the next, in a source of `size` pixels.
template <int kChannels>
inline void orbLinearAcross(const Orb8u* src, const Orb32s* whole, const LinearWeights* weights,
                            Orb16s* dst, Orb32s width, Orb32s) {
  for (ptrdiff_t x = 0; x < width; ++x) {
    const Orb8u* const pixel = src + static_cast<ptrdiff_t>(whole[x]) * kChannels;
    for (int c = 0; c < kChannels; ++c) {
      const Orb32s sum = weights[x].here * pixel[c] + weights[x].next * pixel[kChannels + c];
      dst[x * kChannels + c] = static_cast<Orb16s>((sum + 128) >> 8);
    }
  }
}

inline void orbLinearDown(const Orb16s* upper, const Orb16s* lower, LinearWeights weights,
                          Orb8u* dst, Orb32s samples) {
  for (ptrdiff_t i = 0; i < samples; ++i) {
    dst[i] =
        static_cast<Orb8u>((weights.next * lower[i] + weights.here * upper[i] + 0x80000) >> 20);
  }
}

}  // namespace plain
}  // namespace orb::ORB_BUILD

#endif
