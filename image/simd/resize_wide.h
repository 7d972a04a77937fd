// Rows of a resize by kernels of any width, over vectors of floats.
#ifndef ORB_IMAGE_SIMD_RESIZE_WIDE_H
#define ORB_IMAGE_SIMD_RESIZE_WIDE_H

#include "frame/vec_float.h"
#include "image/px/resize_wide.h"

namespace orb::ORB_BUILD::simd {

// Of eight floats those in front of a place: loaded so many before the middle.
alignas(32) constexpr Orb32s kFront[16] = {-1, -1, -1, -1, -1, -1, -1, -1, 0, 0, 0, 0, 0, 0, 0, 0};

// Eight sums as four: those that lie four apart, added up.
#if defined(__AVX__)
inline __m128 sumsOfEight(const Orb8u* src, const Orb32f* weights, Orb32s taps) {
  F32 sums = splatF32(0);
  for (Orb32s k = 0; k < taps; k += 8) {
    F32 weight = loadF32(weights + k);
    if (taps - k < 8) {
      const Orb32f* const front = reinterpret_cast<const Orb32f*>(kFront + 8 - (taps - k));
      weight.v = _mm256_and_ps(weight.v, _mm256_loadu_ps(front));
    }
    sums = sums + weight * loadF32(src + k);
  }
  return _mm_add_ps(_mm256_castps256_ps128(sums.v), _mm256_extractf128_ps(sums.v, 1));
}
#else
inline __m128 sumsOfEight(const Orb8u* src, const Orb32f* weights, Orb32s taps) {
  F32 sums[2] = {splatF32(0), splatF32(0)};
  for (Orb32s k = 0; k < taps; k += 8) {
    for (int half = 0; half < 2; ++half) {
      const Orb32s at = k + 4 * half;
      F32 weight = loadF32(weights + at);
      if (taps - k < 8) {
        const Orb32f* const front =
            reinterpret_cast<const Orb32f*>(kFront + 8 - (taps - k) + 4 * half);
        weight.v = _mm_and_ps(weight.v, _mm_loadu_ps(front));
      }
      sums[half] = sums[half] + weight * loadF32(src + at);
    }
  }
  return (sums[0] + sums[1]).v;
}
#endif

// One channel, four pixels at a time: vectors are of samples side by side. Those that lie behind
// the last one must be there, and weigh nothing.
inline ptrdiff_t wideAcrossLanes(const Orb8u* src, const WideTaps& taps, Orb32f* dst, Orb32s width,
                                 Orb32s size) {
  const Orb32s reach = (taps.stride + 7) & ~7;
  while (width > 0 && taps.first[width - 1] > size - reach) --width;
  ptrdiff_t x = 0;
  for (; x + 4 <= width; x += 4) {
    __m128 sums[4];
    for (int i = 0; i < 4; ++i) {
      sums[i] = sumsOfEight(src + taps.first[x + i], taps.weights + (x + i) * taps.stride,
                            taps.count[x + i]);
    }
    _MM_TRANSPOSE4_PS(sums[0], sums[1], sums[2], sums[3]);
    _mm_storeu_ps(dst + x, _mm_add_ps(_mm_add_ps(sums[0], sums[2]), _mm_add_ps(sums[1], sums[3])));
  }
  return x;
}

// More channels: even and odd samples have sums of their own.
template <int kChannels>
inline void wideAcrossPixel(const Orb8u* src, const Orb32f* weights, Orb32s taps, Orb32f* dst) {
#if defined(__AVX__)
  F32 sums = splatF32(0);
  Orb32s k = 0;
  for (; k + 2 <= taps; k += 2) {
    const Orb8u* const pixel = src + k * kChannels;
    sums = sums + splatPixels(weights + k) * loadPixels(pixel, pixel + kChannels);
  }
  if (k < taps) {
    const Orb32f last[2] = {weights[k], 0};
    const Orb8u* const pixel = src + k * kChannels;
    sums = sums + splatPixels(last) * loadPixels(pixel, pixel);
  }
  _mm_storeu_ps(dst, _mm_add_ps(_mm256_castps256_ps128(sums.v), _mm256_extractf128_ps(sums.v, 1)));
#else
  F32 sums[2] = {splatF32(0), splatF32(0)};
  for (Orb32s k = 0; k < taps; ++k) {
    sums[k & 1] = sums[k & 1] + splatF32(weights[k]) * loadF32(src + k * kChannels);
  }
  storeF32(dst, sums[0] + sums[1]);
#endif
}

template <int kChannels>
inline void orbWideAcross(const Orb8u* src, const WideTaps& taps, Orb32f* dst, Orb32s width,
                          Orb32s size) {
  ptrdiff_t x = 0;
  if constexpr (kChannels == 1) {
    x = wideAcrossLanes(src, taps, dst, width, size);
  } else {
    // The last sample of a row of three channels has no byte behind it.
    const Orb32s end = kChannels == 3 ? size - 1 : size;
    for (; x < width && taps.first[x] + taps.count[x] <= end; ++x) {
      wideAcrossPixel<kChannels>(src + static_cast<ptrdiff_t>(taps.first[x]) * kChannels,
                                 taps.weights + x * taps.stride, taps.count[x],
                                 dst + x * kChannels);
    }
  }
  const WideTaps rest = {taps.first + x, taps.count + x, taps.weights + x * taps.stride,
                         taps.stride};
  plain::orbWideAcross<kChannels>(src, rest, dst + x * kChannels, width - static_cast<Orb32s>(x),
                                  size);
}

inline void orbWideDown(const RowRing& ring, Orb32s first, Orb32s count, const Orb32f* weights,
                        bool isFirst, Orb32f* sums, ptrdiff_t samples) {
  const Orb32f* const firstRow = ring.row(first);
  const Orb32f* const end = ring.rows + ring.places * ring.rowFloats;
  constexpr ptrdiff_t kBlock = 2 * kF32Lanes;
  ptrdiff_t i = 0;
  for (; i + kBlock <= samples; i += kBlock) {
    F32 left = isFirst ? splatF32(0) : loadF32(sums + i);
    F32 right = isFirst ? splatF32(0) : loadF32(sums + i + kF32Lanes);
    const Orb32f* row = firstRow;
    for (Orb32s k = 0; k < count; ++k) {
      const F32 weight = splatF32(weights[k]);
      left = left + weight * loadF32(row + i);
      right = right + weight * loadF32(row + i + kF32Lanes);
      row += ring.rowFloats;
      if (row == end) row = ring.rows;
    }
    storeF32(sums + i, left);
    storeF32(sums + i + kF32Lanes, right);
  }
  plain::orbWideDown({ring.rows + i, ring.rowFloats, ring.places}, first, count, weights, isFirst,
                     sums + i, samples - i);
}

inline void orbWideBytes(const Orb32f* sums, Orb8u* dst, ptrdiff_t samples) {
  const F32 half = splatF32(0.5000001f);
  ptrdiff_t i = 0;
  for (; i + kF32Lanes <= samples; i += kF32Lanes) {
    storeLimited8u(dst + i, loadF32(sums + i) + half);
  }
  plain::orbWideBytes(sums + i, dst + i, samples - i);
}

}  // namespace orb::ORB_BUILD::simd

#endif
