// Rows of a resize by four or six samples in each direction, over vectors of floats.
#ifndef ORB_IMAGE_SIMD_RESIZE_TAPS_H
#define ORB_IMAGE_SIMD_RESIZE_TAPS_H

#include "frame/vec_float.h"
#include "image/px/resize_taps.h"

namespace orb::ORB_BUILD::simd {

// One channel: a lane is a pixel, whose samples lie side by side.
template <class Method>
inline ptrdiff_t orbTapsAcrossLanes(const Orb8u* src, const Orb32s* whole,
                                    const Orb32f* const* weights, Orb32f* dst, Orb32s width) {
  constexpr int kTaps = Method::kTaps;
  const Orb8u* const first = src - (kTaps / 2 - 1);
  ptrdiff_t x = 0;
  for (; x + kF32Lanes <= width; x += kF32Lanes) {
    const Quads quads = gatherQuads(first, whole + x);
    F32 sample[kTaps] = {byteOfQuads<0>(quads), byteOfQuads<1>(quads), byteOfQuads<2>(quads),
                         byteOfQuads<3>(quads)};
    if constexpr (kTaps == 6) {
      const Quads behind = gatherQuads(first + 2, whole + x);
      sample[4] = byteOfQuads<2>(behind);
      sample[5] = byteOfQuads<3>(behind);
    }
    F32 weight[kTaps];
    for (int k = 0; k < kTaps; ++k) weight[k] = loadF32(weights[k] + x);
    storeF32(dst + x, Method::of(sample, weight));
  }
  return x;
}

// More channels: four lanes are a pixel, of which the fourth is not looked at if there are three.
template <class Method, int kChannels>
inline ptrdiff_t orbTapsAcrossPixels(const Orb8u* src, const Orb32s* whole,
                                     const Orb32f* const* weights, Orb32f* dst, Orb32s width,
                                     Orb32s size) {
  constexpr int kTaps = Method::kTaps;
  // The last sample of a row has no byte behind it.
  if (kChannels == 3) {
    while (width > 0 && whole[width - 1] + kTaps / 2 >= size - 1) --width;
  }
  ptrdiff_t x = 0;
  for (; x + kF32Pixels <= width; x += kF32Pixels) {
    const auto at = [&](ptrdiff_t pixel) {
      return src + (static_cast<ptrdiff_t>(whole[pixel]) - (kTaps / 2 - 1)) * kChannels;
    };
    const Orb8u* const first = at(x);
    const Orb8u* const second = at(x + kF32Pixels - 1);
    F32 sample[kTaps], weight[kTaps];
    for (int k = 0; k < kTaps; ++k) {
      sample[k] = loadPixels(first + k * kChannels, second + k * kChannels);
      weight[k] = splatPixels(weights[k] + x);
    }
    storePixels(dst + x * kChannels, dst + (x + 1) * kChannels, Method::of(sample, weight));
  }
  return x;
}

template <class Method, int kChannels>
inline void orbTapsAcross(const Orb8u* src, const Orb32s* whole, const Orb32f* const* weights,
                          Orb32f* dst, Orb32s width, Orb32s size) {
  constexpr int kTaps = Method::kTaps;
  ptrdiff_t x = 0;
  if constexpr (kChannels == 1) {
    x = orbTapsAcrossLanes<Method>(src, whole, weights, dst, width);
  } else {
    x = orbTapsAcrossPixels<Method, kChannels>(src, whole, weights, dst, width, size);
  }
  const Orb32f* rest[kTaps];
  for (int k = 0; k < kTaps; ++k) rest[k] = weights[k] + x;
  plain::orbTapsAcross<Method, kChannels>(src, whole + x, rest, dst + x * kChannels,
                                          width - static_cast<Orb32s>(x), size);
}

template <class Method>
inline void orbTapsDown(const Orb32f* const* rows, const Orb32f* weights, Orb8u* dst,
                        ptrdiff_t samples) {
  constexpr int kTaps = Method::kTaps;
  const F32 half = splatF32(0.5000001f);
  F32 weight[kTaps];
  for (int k = 0; k < kTaps; ++k) weight[k] = splatF32(weights[k]);
  ptrdiff_t i = 0;
  for (; i + kF32Lanes <= samples; i += kF32Lanes) {
    F32 sample[kTaps];
    for (int k = 0; k < kTaps; ++k) sample[k] = loadF32(rows[k] + i);
    storeLimited8u(dst + i, Method::of(sample, weight) + half);
  }
  const Orb32f* rest[kTaps];
  for (int k = 0; k < kTaps; ++k) rest[k] = rows[k] + i;
  plain::orbTapsDown<Method>(rest, weights, dst + i, samples - i);
}

}  // namespace orb::ORB_BUILD::simd

#endif
