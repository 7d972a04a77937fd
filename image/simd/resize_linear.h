// Rows of a resize by two samples in each direction, over vectors of words.
#ifndef ORB_IMAGE_SIMD_RESIZE_LINEAR_H
#define ORB_IMAGE_SIMD_RESIZE_LINEAR_H

#include "frame/vec.h"
#include "frame/vec_float.h"
#include "image/px/resize_linear.h"

namespace orb::ORB_BUILD::simd {

// Sums of here * sample + next * sample behind it, from pairs of words, with 6 fraction bits left.
inline __m128i linearSums(__m128i pairs, __m128i weights) {
  return _mm_srai_epi32(_mm_add_epi32(_mm_madd_epi16(pairs, weights), _mm_set1_epi32(128)), 8);
}

// Eight pixels of one channel.
inline void linearAcross8(const Orb8u* src, const Orb32s* whole, const LinearWeights* weights,
                          Orb16s* dst) {
  const auto pair = [=](int i) { return load(reinterpret_cast<const Orb16s*>(src + whole[i])); };
  const __m128i zero = _mm_setzero_si128();
  const __m128i bytes =
      _mm_setr_epi16(pair(0), pair(1), pair(2), pair(3), pair(4), pair(5), pair(6), pair(7));
  const __m128i* const factors = reinterpret_cast<const __m128i*>(weights);
  const __m128i left = linearSums(_mm_unpacklo_epi8(bytes, zero), _mm_loadu_si128(factors));
  const __m128i right = linearSums(_mm_unpackhi_epi8(bytes, zero), _mm_loadu_si128(factors + 1));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), _mm_packs_epi32(left, right));
}

// One pixel of three or four channels, as four words.
template <int kChannels>
inline void linearAcrossPixel(const Orb8u* pixel, LinearWeights weights, Orb16s* dst) {
  const __m128i bytes = _mm_unpacklo_epi8(fourBytes(pixel), fourBytes(pixel + kChannels));
  const __m128i pairs = _mm_unpacklo_epi8(bytes, _mm_setzero_si128());
  const __m128i sums =
      linearSums(pairs, _mm_set1_epi32(load(reinterpret_cast<const Orb32s*>(&weights))));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(dst), _mm_packs_epi32(sums, sums));
}

template <int kChannels>
inline void orbLinearAcross(const Orb8u* src, const Orb32s* whole, const LinearWeights* weights,
                            Orb16s* dst, Orb32s width, Orb32s size) {
  ptrdiff_t x = 0;
  if constexpr (kChannels == 1) {
    for (; x + 8 <= width; x += 8) linearAcross8(src, whole + x, weights + x, dst + x);
  } else {
    // The last sample of a row of three channels has no byte behind it, and the last pixel's words
    // no room.
    Orb32s inner = width;
    if (kChannels == 3) {
      while (inner > 0 && (inner == width || whole[inner - 1] + 1 >= size - 1)) --inner;
    }
    for (; x < inner; ++x) {
      linearAcrossPixel<kChannels>(src + static_cast<ptrdiff_t>(whole[x]) * kChannels, weights[x],
                                   dst + x * kChannels);
    }
  }
  plain::orbLinearAcross<kChannels>(src, whole + x, weights + x, dst + x * kChannels,
                                    width - static_cast<Orb32s>(x), size);
}

inline void orbLinearDown(const Orb16s* upper, const Orb16s* lower, LinearWeights weights,
                          Orb8u* dst, Orb32s samples) {
  Orb32s i = 0;
  const auto words = [&](Orb32s at) {
    const I32Sums sums =
        sumsOfProducts(loadI16(upper + at), weights.here, loadI16(lower + at), weights.next);
    return narrow(sums + 0x80000, 20);
  };
  for (; i + 2 * kI16Lanes <= samples; i += 2 * kI16Lanes) {
    storeLimited8u(dst + i, words(i), words(i + kI16Lanes));
  }
  plain::orbLinearDown(upper + i, lower + i, weights, dst + i, samples - i);
}

}  // namespace orb::ORB_BUILD::simd

#endif
