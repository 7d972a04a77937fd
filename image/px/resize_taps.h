// Rows of a resize by four or six samples in each direction: across into floats, then down.
#ifndef ORB_IMAGE_PX_RESIZE_TAPS_H
#define ORB_IMAGE_PX_RESIZE_TAPS_H

#include "frame/arith.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD {

// How the samples around a place make its value: of floats or of vectors of them.

template <int kCount>
struct WeightedSum {
  static constexpr int kTaps = kCount;

  template <class V>
  static V of(const V* sample, const V* weight) {
    const V outer = sample[0] * weight[0] + sample[1] * weight[1];
    const V sum = outer + (sample[2] * weight[2] + sample[3] * weight[3]);
    if constexpr (kCount == 4) {
      return sum;
    } else {
      return sum + (sample[4] * weight[4] + sample[5] * weight[5]);
    }
  }
};

// The cubic through four samples, by Newton's differences.
struct NewtonCubic {
  static constexpr int kTaps = 4;

  template <class V>
  static V of(const V* sample, const V* factor) {
    const V first = sample[1] - sample[0];
    const V next = sample[2] - sample[1];
    const V second = next - first;
    const V third = ((sample[3] - sample[2]) - next) - second;
    return ((sample[0] + first * factor[0]) + second * factor[1]) + third * factor[2];
  }
};

namespace plain {

inline Orb8u byteOf(Orb32f value) {
  return saturate8u(static_cast<Orb32s>(value + 0.5000001f));
}

// The samples from kTaps / 2 - 1 in front of `whole` on, in a source of `size` pixels. There is an
// array for each tap's weights.
template <class Method, int kChannels>
inline void orbTapsAcross(const Orb8u* src, const Orb32s* whole, const Orb32f* const* weights,
                          Orb32f* dst, Orb32s width, Orb32s) {
  constexpr int kTaps = Method::kTaps;
  for (ptrdiff_t x = 0; x < width; ++x) {
    const Orb8u* const first =
        src + (static_cast<ptrdiff_t>(whole[x]) - (kTaps / 2 - 1)) * kChannels;
    Orb32f weight[kTaps];
    for (int k = 0; k < kTaps; ++k) weight[k] = weights[k][x];
    for (int c = 0; c < kChannels; ++c) {
      Orb32f sample[kTaps];
      for (int k = 0; k < kTaps; ++k) sample[k] = first[k * kChannels + c];
      dst[x * kChannels + c] = Method::of(sample, weight);
    }
  }
}

template <class Method>
inline void orbTapsDown(const Orb32f* const* rows, const Orb32f* weight, Orb8u* dst,
                        ptrdiff_t samples) {
  constexpr int kTaps = Method::kTaps;
  for (ptrdiff_t i = 0; i < samples; ++i) {
    Orb32f sample[kTaps];
    for (int k = 0; k < kTaps; ++k) sample[k] = rows[k][i];
    dst[i] = byteOf(Method::of(sample, weight));
  }
}

}  // namespace plain
}  // namespace orb::ORB_BUILD

#endif
