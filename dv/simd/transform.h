// The 2-4-8 transforms over vectors, to the bit those of px: where those add words and multiply the
// sum, these multiply the words and add the products, which is the same in 32 bits that wrap.
#ifndef ORB_DV_SIMD_TRANSFORM_H
#define ORB_DV_SIMD_TRANSFORM_H

#include <immintrin.h>

#include "dv/px/transform.h"

namespace orb::ORB_BUILD::simd {

// ---- Rows of eight words, and their sums of products

inline __m128i loadDVRow(const Orb16s* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}
inline void storeDVRow(Orb16s* p, __m128i row) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), row);
}

// Two rows, word by word beside each other.
struct DVRowPair {
  __m128i low, high;

  DVRowPair(__m128i a, __m128i b) : low(_mm_unpacklo_epi16(a, b)), high(_mm_unpackhi_epi16(a, b)) {}
};

// Eight sums.
struct DVRowSums {
  __m128i low, high;
};
// a * x + b * y.
inline DVRowSums products(DVRowPair p, Orb16s x, Orb16s y) {
  const __m128i factors = _mm_set1_epi32((y << 16) | (x & 0xFFFF));
  return {_mm_madd_epi16(p.low, factors), _mm_madd_epi16(p.high, factors)};
}
inline DVRowSums operator+(DVRowSums a, DVRowSums b) {
  return {_mm_add_epi32(a.low, b.low), _mm_add_epi32(a.high, b.high)};
}
inline DVRowSums operator-(DVRowSums a, DVRowSums b) {
  return {_mm_sub_epi32(a.low, b.low), _mm_sub_epi32(a.high, b.high)};
}
// What is left of 32 bits fits a word.
template <int kDropped>
inline __m128i rounded(DVRowSums a) {
  static_assert(kDropped >= 16);
  const __m128i half = _mm_set1_epi32(1 << (kDropped - 1));
  return _mm_packs_epi32(_mm_srai_epi32(_mm_add_epi32(a.low, half), kDropped),
                         _mm_srai_epi32(_mm_add_epi32(a.high, half), kDropped));
}

// ---- Forward

// tan(pi / 8) times a + b - c - d.
inline __m128i timesTangent248(DVRowPair ab, DVRowPair cd) {
  return rounded<16>(products(ab, 27146, 27146) + products(cd, -27146, -27146));
}
inline __m128i timesTangentOfDifferences(DVRowPair ab, DVRowPair cd) {
  return rounded<16>(products(ab, 27146, -27146) + products(cd, -27146, 27146));
}

inline void orbFdct248(Orb16s* block) {
  __m128i r[8];
  for (int k = 0; k < 8; ++k) r[k] = loadDVRow(block + 8 * k);
  const DVRowPair p01(r[0], r[1]), p23(r[2], r[3]), p45(r[4], r[5]), p67(r[6], r[7]);

  // The four-point transform of a, b, c, d, but for its two products.
  const auto fourPoints = [](__m128i a, __m128i b, __m128i c, __m128i d, __m128i tangentOfBC,
                             __m128i tangentOfAD, __m128i* v) {
    const __m128i outer = _mm_add_epi16(a, d), inner = _mm_add_epi16(b, c);
    v[0] = _mm_add_epi16(outer, inner);
    v[1] = _mm_add_epi16(tangentOfBC, _mm_sub_epi16(a, d));
    v[2] = _mm_sub_epi16(outer, inner);
    v[3] = _mm_add_epi16(tangentOfAD, _mm_sub_epi16(c, b));
  };
  __m128i v[8];
  fourPoints(_mm_add_epi16(r[0], r[1]), _mm_add_epi16(r[2], r[3]), _mm_add_epi16(r[4], r[5]),
             _mm_add_epi16(r[6], r[7]), timesTangent248(p23, p45), timesTangent248(p01, p67), v);
  fourPoints(_mm_sub_epi16(r[0], r[1]), _mm_sub_epi16(r[2], r[3]), _mm_sub_epi16(r[4], r[5]),
             _mm_sub_epi16(r[6], r[7]), timesTangentOfDifferences(p23, p45),
             timesTangentOfDifferences(p01, p67), v + 4);

  // Each row times the matrix, two of its words at a time.
  const auto transformRow = [&](int y) {
    const Orb16s* const matrix = orbDVRowMatrix[static_cast<size_t>(y % 2)].entry;
    const __m128i words[4] = {_mm_shuffle_epi32(v[y], 0x00), _mm_shuffle_epi32(v[y], 0x55),
                              _mm_shuffle_epi32(v[y], 0xAA), _mm_shuffle_epi32(v[y], 0xFF)};
    DVRowSums sums = {_mm_setzero_si128(), _mm_setzero_si128()};
    for (int i = 0; i < 4; ++i) {
      sums = sums + DVRowSums{_mm_madd_epi16(words[i], loadDVRow(matrix + 16 * i)),
                              _mm_madd_epi16(words[i], loadDVRow(matrix + 16 * i + 8))};
    }
    storeDVRow(block + 8 * y, rounded<16>(sums));
  };
  for (int y = 0; y < 8; ++y) transformRow(y);
}

// ---- Inverse

// Times 11585 in the two middle lanes, after and before the shifts of timesCosine248; the outer
// lanes stay as they are.
inline __m128i timesCosine4InMiddle(__m128i a) {
  const __m128i scaled = _mm_srai_epi32(_mm_add_epi32(a, _mm_set1_epi32(1024)), 11);
  const __m128i evenLanes = _mm_shuffle_epi32(scaled, _MM_SHUFFLE(2, 2, 1, 1));
  const __m128i product = _mm_mul_epu32(evenLanes, _mm_set1_epi32(11585));
  const __m128i middle = _mm_srai_epi32(_mm_shuffle_epi32(product, _MM_SHUFFLE(0, 2, 0, 0)), 3);
  const __m128i inMiddle = _mm_setr_epi32(0, -1, -1, 0);
  return _mm_or_si128(_mm_and_si128(inMiddle, middle), _mm_andnot_si128(inMiddle, a));
}

inline __m128i orbIdctRow248(__m128i row) {
  // x0 x2, x1 x3, x4 x6, x5 x7; each of them is wanted in all four sums.
  constexpr int kOrder = _MM_SHUFFLE(3, 1, 2, 0);
  const __m128i order = _mm_shufflehi_epi16(_mm_shufflelo_epi16(row, kOrder), kOrder);
  const __m128i x02 = _mm_shuffle_epi32(order, 0x00), x13 = _mm_shuffle_epi32(order, 0x55);
  const __m128i x46 = _mm_shuffle_epi32(order, 0xAA), x57 = _mm_shuffle_epi32(order, 0xFF);

  const __m128i even = _mm_add_epi32(
      _mm_madd_epi16(x02, _mm_setr_epi16(16384, 21406, 16384, 8866, 16384, -8866, 16384, -21406)),
      _mm_madd_epi16(x46,
                     _mm_setr_epi16(16384, 8866, -16384, -21406, -16384, 21406, 16384, -8866)));
  // e0 + e2, e0 + e1 - e2 - e3, e0 - e1 - e2 + e3, e1 + e3.
  const __m128i sums = _mm_add_epi32(
      _mm_madd_epi16(x13, _mm_setr_epi16(22725, 19265, 22725 + 4520, 12872 - 19265, 22725 - 4520,
                                         -19265 - 12872, 4520, -12872)),
      _mm_madd_epi16(x57, _mm_setr_epi16(12872, 4520, -12872 - 19265, 4520 - 22725, 19265 - 12872,
                                         4520 + 22725, 19265, -22725)));
  const __m128i odd = timesCosine4InMiddle(sums);
  // Without the low 14 of 32 bits, and of that the low 16 bits.
  const auto wrapped = [](__m128i a) { return _mm_srai_epi32(_mm_slli_epi32(a, 2), 16); };
  const __m128i half = _mm_add_epi32(even, _mm_set1_epi32(8192));
  const __m128i left = wrapped(_mm_add_epi32(half, odd));
  const __m128i right = wrapped(_mm_sub_epi32(half, odd));
  return _mm_packs_epi32(left, _mm_shuffle_epi32(right, _MM_SHUFFLE(0, 1, 2, 3)));
}

inline void orbIdct248(Orb16s* block) {
  __m128i r[8];
  for (int y = 0; y < 8; ++y) r[y] = orbIdctRow248(loadDVRow(block + 8 * y));

  const auto fourPoints = [](const __m128i* rows, __m128i* output) {
    const DVRowPair p02(rows[0], rows[2]), p13(rows[1], rows[3]);
    const DVRowSums e0 = products(p02, 16384, 16384), e1 = products(p02, 16384, -16384);
    const DVRowSums o0 = products(p13, 21406, 8866), o1 = products(p13, 8866, -21406);
    output[0] = rounded<17>(e0 + o0);
    output[1] = rounded<17>(e1 + o1);
    output[2] = rounded<17>(e1 - o1);
    output[3] = rounded<17>(e0 - o0);
  };
  __m128i sum[4], difference[4];
  fourPoints(r, sum);
  fourPoints(r + 4, difference);
  for (int k = 0; k < 4; ++k) {
    storeDVRow(block + 16 * k, _mm_add_epi16(sum[k], difference[k]));
    storeDVRow(block + 16 * k + 8, _mm_sub_epi16(sum[k], difference[k]));
  }
}

// ---- Zeros

inline Orb32s orbCountZeros8x8(const Orb16s* block) {
  const __m128i zero = _mm_setzero_si128();
  __m128i counts = zero;
  for (int y = 0; y < 8; ++y) {
    counts = _mm_sub_epi16(counts, _mm_cmpeq_epi16(loadDVRow(block + 8 * y), zero));
  }
  const __m128i halves = _mm_sad_epu8(counts, zero);
  return _mm_cvtsi128_si32(_mm_add_epi32(halves, _mm_srli_si128(halves, 8)));
}

}  // namespace orb::ORB_BUILD::simd

#endif
