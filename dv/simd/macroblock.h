// From the blocks of macroblocks to a frame, over vectors: the work on one row of sixteen pixels.
#ifndef ORB_DV_SIMD_MACROBLOCK_H
#define ORB_DV_SIMD_MACROBLOCK_H

#include <immintrin.h>

#include "dv/px/macroblock.h"

namespace orb::ORB_BUILD::simd {

struct DVRows {
  using Row = __m128i;
  struct TwoRows {
    __m128i left, right;
  };

  static Row read(const Orb16s* samples) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(samples));
  }

  // Halved towards zero, without a sum that might not fit.
  static Row mean(Row a, Row b) {
    const Row differing = _mm_xor_si128(a, b);
    const Row floor = _mm_add_epi16(_mm_and_si128(a, b), _mm_srai_epi16(differing, 1));
    const Row isNegative = _mm_srli_epi16(floor, 15);
    return _mm_add_epi16(floor, _mm_and_si128(differing, isNegative));
  }

  template <int kGroup>
  static TwoRows spread(Row columns) {
    const Row last = _mm_setr_epi16(0, 0, 0, kGroup == 4 ? -1 : 0, 0, 0, 0, -1);
    const Row others = kGroup == 4 ? _mm_srli_epi64(columns, 16) : _mm_srli_si128(columns, 2);
    const Row next = _mm_or_si128(others, _mm_and_si128(columns, last));
    const Row means = mean(columns, next);
    return {_mm_unpacklo_epi16(columns, means), _mm_unpackhi_epi16(columns, means)};
  }

  // Two rows as bytes.
  static Row bytes(Row a, Row b) {
    const Row shift = _mm_set1_epi16(128);
    return _mm_packus_epi16(_mm_adds_epi16(a, shift), _mm_adds_epi16(b, shift));
  }

  static void write(Orb8u* dst, TwoRows luma, Row cb, Row cr) {
    const Row y = bytes(luma.left, luma.right);
    const Row halves = bytes(cb, cr);
    const Row chroma = _mm_unpacklo_epi8(halves, _mm_srli_si128(halves, 8));
    __m128i* const pixels = reinterpret_cast<__m128i*>(dst);
    _mm_storeu_si128(pixels, _mm_unpacklo_epi8(y, chroma));
    _mm_storeu_si128(pixels + 1, _mm_unpackhi_epi8(y, chroma));
  }
};

}  // namespace orb::ORB_BUILD::simd

#endif
