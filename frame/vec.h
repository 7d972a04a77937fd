// Vectors of 16-bit words and of bytes, as wide as the build has them for integers: 16 words in h9,
// 8 below, and twice as many bytes.
//
// Kernels are written over I16 and kI16Lanes, U8 and kU8Lanes, and fit every build. The operations
// are named by what they compute, and keep the order of the lanes in all widths.
#ifndef ORB_FRAME_VEC_H
#define ORB_FRAME_VEC_H

#include <immintrin.h>

#include "frame/build.h"

namespace orb::ORB_BUILD {

#if defined(__AVX2__)

struct I16 {
  __m256i v;
};
constexpr Orb32s kI16Lanes = 16;

inline I16 loadI16(const Orb16s* p) {
  return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p))};
}
inline void storeI16(Orb16s* p, I16 a) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), a.v);
}
inline I16 splatI16(Orb16s value) {
  return {_mm256_set1_epi16(value)};
}
// Bytes to words, unsigned.
inline I16 loadWide8u(const Orb8u* p) {
  return {_mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)))};
}
// Words to bytes, limited to 0..255.
inline void storeLimited8u(Orb8u* p, I16 a) {
  const __m128i low = _mm256_castsi256_si128(a.v);
  const __m128i high = _mm256_extracti128_si256(a.v, 1);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(low, high));
}
inline void storeLimited8u(Orb8u* p, I16 a, I16 b) {
  const __m256i halves = _mm256_packus_epi16(a.v, b.v);
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p),
                      _mm256_permute4x64_epi64(halves, _MM_SHUFFLE(3, 1, 2, 0)));
}
inline I16 operator+(I16 a, I16 b) {
  return {_mm256_add_epi16(a.v, b.v)};
}
inline I16 operator-(I16 a, I16 b) {
  return {_mm256_sub_epi16(a.v, b.v)};
}
// The low and the high word of each signed product.
inline I16 operator*(I16 a, I16 b) {
  return {_mm256_mullo_epi16(a.v, b.v)};
}
inline I16 mulHigh(I16 a, I16 b) {
  return {_mm256_mulhi_epi16(a.v, b.v)};
}
inline I16 addSaturated(I16 a, I16 b) {
  return {_mm256_adds_epi16(a.v, b.v)};
}
inline I16 operator<<(I16 a, int n) {
  return {_mm256_slli_epi16(a.v, n)};
}
inline I16 operator>>(I16 a, int n) {
  return {_mm256_srai_epi16(a.v, n)};
}
inline I16 shiftRightUnsigned(I16 a, int n) {
  return {_mm256_srli_epi16(a.v, n)};
}
inline I16 operator&(I16 a, I16 b) {
  return {_mm256_and_si256(a.v, b.v)};
}

struct U8 {
  __m256i v;
};
constexpr Orb32s kU8Lanes = 32;

inline U8 loadU8(const Orb8u* p) {
  return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p))};
}
inline void storeU8(Orb8u* p, U8 a) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), a.v);
}
inline U8 largest(U8 a, U8 b) {
  return {_mm256_max_epu8(a.v, b.v)};
}
inline U8 smallest(U8 a, U8 b) {
  return {_mm256_min_epu8(a.v, b.v)};
}

// Sums of products, a * x + b * y, in 32 bits; two and two of them may be added.
struct I32Sums {
  __m256i low, high;
};
inline I32Sums sumsOfProducts(I16 a, Orb16s x, I16 b, Orb16s y) {
  const __m256i factors = _mm256_set1_epi32((y << 16) | (x & 0xFFFF));
  return {_mm256_madd_epi16(_mm256_unpacklo_epi16(a.v, b.v), factors),
          _mm256_madd_epi16(_mm256_unpackhi_epi16(a.v, b.v), factors)};
}
inline I32Sums operator+(I32Sums a, I32Sums b) {
  return {_mm256_add_epi32(a.low, b.low), _mm256_add_epi32(a.high, b.high)};
}
inline I32Sums operator+(I32Sums a, Orb32s b) {
  return a + I32Sums{_mm256_set1_epi32(b), _mm256_set1_epi32(b)};
}
inline I32Sums operator*(I32Sums a, Orb32s b) {
  const __m256i factors = _mm256_set1_epi32(b);
  return {_mm256_mullo_epi32(a.low, factors), _mm256_mullo_epi32(a.high, factors)};
}
// Shifted right and limited to words.
inline I16 narrow(I32Sums a, int n) {
  return {_mm256_packs_epi32(_mm256_srai_epi32(a.low, n), _mm256_srai_epi32(a.high, n))};
}

// A vector as rows of 8 words, of which there are two. The first four of each row, or the last
// four, twice each.
inline I16 doubleLeft(I16 a) {
  return {_mm256_unpacklo_epi16(a.v, a.v)};
}
inline I16 doubleRight(I16 a) {
  return {_mm256_unpackhi_epi16(a.v, a.v)};
}
// The sums of two neighbours in rows of 16, given in halves. They must fit in words.
inline I16 sumsOfPairs(I16 left, I16 right) {
  const __m256i ones = _mm256_set1_epi16(1);
  return {_mm256_packs_epi32(_mm256_madd_epi16(left.v, ones), _mm256_madd_epi16(right.v, ones))};
}
// The sums of two rows each, of twice as many rows.
inline I16 sumsOfRows(I16 upper, I16 lower) {
  return {_mm256_add_epi16(_mm256_permute2x128_si256(upper.v, lower.v, 0x20),
                           _mm256_permute2x128_si256(upper.v, lower.v, 0x31))};
}
// The same row in all rows.
inline I16 loadRowI16(const Orb16s* p) {
  return {_mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)))};
}

// Limited to 0..255.
inline I16 limit8u(I16 a) {
  return {_mm256_min_epi16(_mm256_max_epi16(a.v, _mm256_setzero_si256()), _mm256_set1_epi16(255))};
}

// Words as pairs of neighbours: the first of each pair twice, or the second.
inline I16 firstOfPairs(I16 a) {
  return {_mm256_shufflehi_epi16(_mm256_shufflelo_epi16(a.v, 0xA0), 0xA0)};
}
inline I16 secondOfPairs(I16 a) {
  return {_mm256_shufflehi_epi16(_mm256_shufflelo_epi16(a.v, 0xF5), 0xF5)};
}
// Half as many bytes as there are words, to pairs of equal words.
inline I16 loadPairs8u(const Orb8u* p) {
  const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
  return {_mm256_cvtepu8_epi16(_mm_unpacklo_epi8(bytes, bytes))};
}

// Half as many numbers of 32 bits, one for each pair of words.
struct I32 {
  __m256i v;
};
inline I32 splatI32(Orb32s value) {
  return {_mm256_set1_epi32(value)};
}
inline I32 operator+(I32 a, I32 b) {
  return {_mm256_add_epi32(a.v, b.v)};
}
inline I32 operator>>(I32 a, int n) {
  return {_mm256_srai_epi32(a.v, n)};
}
// The sum of each pair, times a factor.
inline I32 pairsTimes(I16 a, Orb16s factor) {
  return {_mm256_madd_epi16(a.v, _mm256_set1_epi16(factor))};
}
// Pairs of words, from two numbers of 0..65535 each.
inline I16 makePairs(I32 first, I32 second) {
  return {_mm256_or_si256(first.v, _mm256_slli_epi32(second.v, 16))};
}
// Limited to words.
inline I16 narrow(I32 a, I32 b) {
  return {_mm256_permute4x64_epi64(_mm256_packs_epi32(a.v, b.v), _MM_SHUFFLE(3, 1, 2, 0))};
}

#else

struct I16 {
  __m128i v;
};
constexpr Orb32s kI16Lanes = 8;

inline I16 loadI16(const Orb16s* p) {
  return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))};
}
inline void storeI16(Orb16s* p, I16 a) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), a.v);
}
inline I16 splatI16(Orb16s value) {
  return {_mm_set1_epi16(value)};
}
// Bytes to words, unsigned.
inline I16 loadWide8u(const Orb8u* p) {
  const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
  return {_mm_unpacklo_epi8(bytes, _mm_setzero_si128())};
}
// Words to bytes, limited to 0..255.
inline void storeLimited8u(Orb8u* p, I16 a) {
  _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(a.v, a.v));
}
inline void storeLimited8u(Orb8u* p, I16 a, I16 b) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(a.v, b.v));
}
inline I16 operator+(I16 a, I16 b) {
  return {_mm_add_epi16(a.v, b.v)};
}
inline I16 operator-(I16 a, I16 b) {
  return {_mm_sub_epi16(a.v, b.v)};
}
// The low and the high word of each signed product.
inline I16 operator*(I16 a, I16 b) {
  return {_mm_mullo_epi16(a.v, b.v)};
}
inline I16 mulHigh(I16 a, I16 b) {
  return {_mm_mulhi_epi16(a.v, b.v)};
}
inline I16 addSaturated(I16 a, I16 b) {
  return {_mm_adds_epi16(a.v, b.v)};
}
inline I16 operator<<(I16 a, int n) {
  return {_mm_slli_epi16(a.v, n)};
}
inline I16 operator>>(I16 a, int n) {
  return {_mm_srai_epi16(a.v, n)};
}
inline I16 shiftRightUnsigned(I16 a, int n) {
  return {_mm_srli_epi16(a.v, n)};
}
inline I16 operator&(I16 a, I16 b) {
  return {_mm_and_si128(a.v, b.v)};
}

struct U8 {
  __m128i v;
};
constexpr Orb32s kU8Lanes = 16;

inline U8 loadU8(const Orb8u* p) {
  return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))};
}
inline void storeU8(Orb8u* p, U8 a) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), a.v);
}
inline U8 largest(U8 a, U8 b) {
  return {_mm_max_epu8(a.v, b.v)};
}
inline U8 smallest(U8 a, U8 b) {
  return {_mm_min_epu8(a.v, b.v)};
}

// Sums of products, a * x + b * y, in 32 bits; two and two of them may be added.
struct I32Sums {
  __m128i low, high;
};
inline I32Sums sumsOfProducts(I16 a, Orb16s x, I16 b, Orb16s y) {
  const __m128i factors = _mm_set1_epi32((y << 16) | (x & 0xFFFF));
  return {_mm_madd_epi16(_mm_unpacklo_epi16(a.v, b.v), factors),
          _mm_madd_epi16(_mm_unpackhi_epi16(a.v, b.v), factors)};
}
inline I32Sums operator+(I32Sums a, I32Sums b) {
  return {_mm_add_epi32(a.low, b.low), _mm_add_epi32(a.high, b.high)};
}
inline I32Sums operator+(I32Sums a, Orb32s b) {
  return a + I32Sums{_mm_set1_epi32(b), _mm_set1_epi32(b)};
}
inline __m128i mulLow32(__m128i a, __m128i b) {
#if defined(__SSE4_1__)
  return _mm_mullo_epi32(a, b);
#else
  const __m128i even = _mm_mul_epu32(a, b);
  const __m128i odd = _mm_mul_epu32(_mm_srli_epi64(a, 32), _mm_srli_epi64(b, 32));
  return _mm_unpacklo_epi32(_mm_shuffle_epi32(even, _MM_SHUFFLE(0, 0, 2, 0)),
                            _mm_shuffle_epi32(odd, _MM_SHUFFLE(0, 0, 2, 0)));
#endif
}
inline I32Sums operator*(I32Sums a, Orb32s b) {
  const __m128i factors = _mm_set1_epi32(b);
  return {mulLow32(a.low, factors), mulLow32(a.high, factors)};
}
// Shifted right and limited to words.
inline I16 narrow(I32Sums a, int n) {
  return {_mm_packs_epi32(_mm_srai_epi32(a.low, n), _mm_srai_epi32(a.high, n))};
}

// A vector as rows of 8 words, of which there is one. The first four of each row, or the last four,
// twice each.
inline I16 doubleLeft(I16 a) {
  return {_mm_unpacklo_epi16(a.v, a.v)};
}
inline I16 doubleRight(I16 a) {
  return {_mm_unpackhi_epi16(a.v, a.v)};
}
// The sums of two neighbours in rows of 16, given in halves. They must fit in words.
inline I16 sumsOfPairs(I16 left, I16 right) {
  const __m128i ones = _mm_set1_epi16(1);
  return {_mm_packs_epi32(_mm_madd_epi16(left.v, ones), _mm_madd_epi16(right.v, ones))};
}
// The sums of two rows each, of twice as many rows.
inline I16 sumsOfRows(I16 upper, I16 lower) {
  return {_mm_add_epi16(upper.v, lower.v)};
}
// The same row in all rows.
inline I16 loadRowI16(const Orb16s* p) {
  return loadI16(p);
}

// Limited to 0..255.
inline I16 limit8u(I16 a) {
  return {_mm_min_epi16(_mm_max_epi16(a.v, _mm_setzero_si128()), _mm_set1_epi16(255))};
}

// Words as pairs of neighbours: the first of each pair twice, or the second.
inline I16 firstOfPairs(I16 a) {
  return {_mm_shufflehi_epi16(_mm_shufflelo_epi16(a.v, 0xA0), 0xA0)};
}
inline I16 secondOfPairs(I16 a) {
  return {_mm_shufflehi_epi16(_mm_shufflelo_epi16(a.v, 0xF5), 0xF5)};
}
// Half as many bytes as there are words, to pairs of equal words.
inline I16 loadPairs8u(const Orb8u* p) {
  int four;
  __builtin_memcpy(&four, p, sizeof four);
  const __m128i bytes = _mm_cvtsi32_si128(four);
  return {_mm_unpacklo_epi8(_mm_unpacklo_epi8(bytes, bytes), _mm_setzero_si128())};
}

// Half as many numbers of 32 bits, one for each pair of words.
struct I32 {
  __m128i v;
};
inline I32 splatI32(Orb32s value) {
  return {_mm_set1_epi32(value)};
}
inline I32 operator+(I32 a, I32 b) {
  return {_mm_add_epi32(a.v, b.v)};
}
inline I32 operator>>(I32 a, int n) {
  return {_mm_srai_epi32(a.v, n)};
}
// The sum of each pair, times a factor.
inline I32 pairsTimes(I16 a, Orb16s factor) {
  return {_mm_madd_epi16(a.v, _mm_set1_epi16(factor))};
}
// Pairs of words, from two numbers of 0..65535 each.
inline I16 makePairs(I32 first, I32 second) {
  return {_mm_or_si128(first.v, _mm_slli_epi32(second.v, 16))};
}
// Limited to words.
inline I16 narrow(I32 a, I32 b) {
  return {_mm_packs_epi32(a.v, b.v)};
}

#endif

// Four doubles, in two vectors where one has no room for them.
#if defined(__AVX__)

struct F64 {
  __m256d v;
};

inline F64 splatF64(Orb64f value) {
  return {_mm256_set1_pd(value)};
}
inline F64 loadF64(const Orb64f* p) {
  return {_mm256_loadu_pd(p)};
}
// Of four bytes, the lowest first.
inline F64 widen8u(Orb32u bytes) {
  const __m128i words = _mm_cvtepu8_epi32(_mm_cvtsi32_si128(static_cast<int>(bytes)));
  return {_mm256_cvtepi32_pd(words)};
}
inline F64 operator+(F64 a, F64 b) {
  return {_mm256_add_pd(a.v, b.v)};
}
inline F64 operator-(F64 a, F64 b) {
  return {_mm256_sub_pd(a.v, b.v)};
}
inline F64 operator*(F64 a, F64 b) {
  return {_mm256_mul_pd(a.v, b.v)};
}
inline F64 limited(F64 a, F64 low, F64 high) {
  return {_mm256_min_pd(_mm256_max_pd(a.v, low.v), high.v)};
}
// (a0 + a2) + (a1 + a3)
inline Orb64f sumOfLanes(F64 a) {
  const __m128d pairs = _mm_add_pd(_mm256_castpd256_pd128(a.v), _mm256_extractf128_pd(a.v, 1));
  return _mm_cvtsd_f64(_mm_add_sd(pairs, _mm_unpackhi_pd(pairs, pairs)));
}
// Truncated to four bytes, the first lane the lowest; they must be within 0..255.
inline Orb32u truncate8u(F64 a) {
  const __m128i words = _mm256_cvttpd_epi32(a.v);
  const __m128i halves = _mm_packs_epi32(words, words);
  return static_cast<Orb32u>(_mm_cvtsi128_si32(_mm_packus_epi16(halves, halves)));
}

#else

struct F64 {
  __m128d low, high;
};

inline F64 splatF64(Orb64f value) {
  return {_mm_set1_pd(value), _mm_set1_pd(value)};
}
inline F64 loadF64(const Orb64f* p) {
  return {_mm_loadu_pd(p), _mm_loadu_pd(p + 2)};
}
// Of four bytes, the lowest first.
inline F64 widen8u(Orb32u bytes) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i halves = _mm_unpacklo_epi8(_mm_cvtsi32_si128(static_cast<int>(bytes)), zero);
  const __m128i words = _mm_unpacklo_epi16(halves, zero);
  return {_mm_cvtepi32_pd(words), _mm_cvtepi32_pd(_mm_unpackhi_epi64(words, words))};
}
inline F64 operator+(F64 a, F64 b) {
  return {_mm_add_pd(a.low, b.low), _mm_add_pd(a.high, b.high)};
}
inline F64 operator-(F64 a, F64 b) {
  return {_mm_sub_pd(a.low, b.low), _mm_sub_pd(a.high, b.high)};
}
inline F64 operator*(F64 a, F64 b) {
  return {_mm_mul_pd(a.low, b.low), _mm_mul_pd(a.high, b.high)};
}
inline F64 limited(F64 a, F64 low, F64 high) {
  return {_mm_min_pd(_mm_max_pd(a.low, low.low), high.low),
          _mm_min_pd(_mm_max_pd(a.high, low.high), high.high)};
}
// (a0 + a2) + (a1 + a3)
inline Orb64f sumOfLanes(F64 a) {
  const __m128d pairs = _mm_add_pd(a.low, a.high);
  return _mm_cvtsd_f64(_mm_add_sd(pairs, _mm_unpackhi_pd(pairs, pairs)));
}
// Truncated to four bytes, the first lane the lowest; they must be within 0..255.
inline Orb32u truncate8u(F64 a) {
  const __m128i words = _mm_unpacklo_epi64(_mm_cvttpd_epi32(a.low), _mm_cvttpd_epi32(a.high));
  const __m128i halves = _mm_packs_epi32(words, words);
  return static_cast<Orb32u>(_mm_cvtsi128_si32(_mm_packus_epi16(halves, halves)));
}

#endif

}  // namespace orb::ORB_BUILD

#endif
