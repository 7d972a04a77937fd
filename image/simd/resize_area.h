// Rows of a resize by the mean of areas, over vectors.
#ifndef ORB_IMAGE_SIMD_RESIZE_AREA_H
#define ORB_IMAGE_SIMD_RESIZE_AREA_H

#include "frame/vec.h"
#include "frame/vec_float.h"
#include "image/px/resize_area.h"

namespace orb::ORB_BUILD::simd {

inline void orbSumRow(const Orb8u* row, Orb32f weight, bool isFirst, Orb32f* sums,
                      ptrdiff_t samples) {
  const F32 weights = splatF32(weight);
  ptrdiff_t i = 0;
  if (isFirst) {
    for (; i + kF32Lanes <= samples; i += kF32Lanes) {
      storeF32(sums + i, weights * loadF32(row + i));
    }
  } else {
    for (; i + kF32Lanes <= samples; i += kF32Lanes) {
      storeF32(sums + i, loadF32(sums + i) + weights * loadF32(row + i));
    }
  }
  plain::orbSumRow(row + i, weight, isFirst, sums + i, samples - i);
}

// Rows are whole but for those that stand for rows outside of the image.
inline void orbSumRow(const Orb8u* row, Orb32s weight, bool isFirst, Orb32s* sums,
                      ptrdiff_t samples) {
  if (weight != 1) return plain::orbSumRow(row, weight, isFirst, sums, samples);
  ptrdiff_t i = 0;
  for (; i + 16 <= samples; i += 16) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(row + i));
    const __m128i low = _mm_unpacklo_epi8(bytes, zero);
    const __m128i high = _mm_unpackhi_epi8(bytes, zero);
    const __m128i four[4] = {_mm_unpacklo_epi16(low, zero), _mm_unpackhi_epi16(low, zero),
                             _mm_unpacklo_epi16(high, zero), _mm_unpackhi_epi16(high, zero)};
    __m128i* const place = reinterpret_cast<__m128i*>(sums + i);
    for (int k = 0; k < 4; ++k) {
      const __m128i before = isFirst ? zero : _mm_loadu_si128(place + k);
      _mm_storeu_si128(place + k, _mm_add_epi32(before, four[k]));
    }
  }
  plain::orbSumRow(row + i, weight, isFirst, sums + i, samples - i);
}

// The sums of neighbours, as words.
inline I16 pairSums(const Orb8u* row) {
  const I16 pairs = loadI16(reinterpret_cast<const Orb16s*>(row));
  return (pairs & splatI16(255)) + shiftRightUnsigned(pairs, 8);
}

// Two means of four pixels with four channels each, as words.
inline __m128i meansOfPixels(const Orb8u* upper, const Orb8u* lower) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i above = _mm_loadu_si128(reinterpret_cast<const __m128i*>(upper));
  const __m128i below = _mm_loadu_si128(reinterpret_cast<const __m128i*>(lower));
  const __m128i left =
      _mm_add_epi16(_mm_unpacklo_epi8(above, zero), _mm_unpacklo_epi8(below, zero));
  const __m128i right =
      _mm_add_epi16(_mm_unpackhi_epi8(above, zero), _mm_unpackhi_epi8(below, zero));
  const __m128i sums =
      _mm_add_epi16(_mm_unpacklo_epi64(left, right), _mm_unpackhi_epi64(left, right));
  return _mm_srli_epi16(_mm_add_epi16(sums, _mm_set1_epi16(2)), 2);
}

template <int kChannels>
inline void orbHalveRow(const Orb8u* upper, const Orb8u* lower, Orb8u* dst, ptrdiff_t width) {
  ptrdiff_t x = 0;
  if constexpr (kChannels == 1) {
    const auto means = [&](ptrdiff_t at) {
      const I16 sums = pairSums(upper + 2 * at) + pairSums(lower + 2 * at);
      return shiftRightUnsigned(sums + splatI16(2), 2);
    };
    for (; x + 2 * kI16Lanes <= width; x += 2 * kI16Lanes) {
      storeLimited8u(dst + x, means(x), means(x + kI16Lanes));
    }
  } else if constexpr (kChannels == 4) {
    for (; x + 4 <= width; x += 4) {
      const __m128i first = meansOfPixels(upper + 8 * x, lower + 8 * x);
      const __m128i second = meansOfPixels(upper + 8 * x + 16, lower + 8 * x + 16);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 4 * x), _mm_packus_epi16(first, second));
    }
  }
  plain::orbHalveRow<kChannels>(upper + 2 * x * kChannels, lower + 2 * x * kChannels,
                                dst + x * kChannels, width - x);
}

}  // namespace orb::ORB_BUILD::simd

#endif
