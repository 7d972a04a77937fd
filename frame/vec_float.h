// Vectors of floats, as wide as the build has them: 8 in g9 and h9, 4 below. A vector is also one
// pixel of four floats, or two of them.
#ifndef ORB_FRAME_VEC_FLOAT_H
#define ORB_FRAME_VEC_FLOAT_H

#include <immintrin.h>

#include "frame/memory_access.h"

namespace orb::ORB_BUILD {

// The bytes at an address as the low bytes of a vector.
inline __m128i fourBytes(const Orb8u* p) {
  return _mm_cvtsi32_si128(load(reinterpret_cast<const Orb32s*>(p)));
}
// Four bytes as four numbers.
inline __m128i widened(__m128i bytes) {
#if defined(__SSE4_1__)
  return _mm_cvtepu8_epi32(bytes);
#else
  const __m128i zero = _mm_setzero_si128();
  return _mm_unpacklo_epi16(_mm_unpacklo_epi8(bytes, zero), zero);
#endif
}

#if defined(__AVX__)

struct F32 {
  __m256 v;
};
constexpr Orb32s kF32Lanes = 8;

inline F32 loadF32(const Orb32f* p) {
  return {_mm256_loadu_ps(p)};
}
inline void storeF32(Orb32f* p, F32 a) {
  _mm256_storeu_ps(p, a.v);
}
inline F32 splatF32(Orb32f value) {
  return {_mm256_set1_ps(value)};
}
inline F32 operator+(F32 a, F32 b) {
  return {_mm256_add_ps(a.v, b.v)};
}
inline F32 operator-(F32 a, F32 b) {
  return {_mm256_sub_ps(a.v, b.v)};
}
inline F32 operator*(F32 a, F32 b) {
  return {_mm256_mul_ps(a.v, b.v)};
}

// As many bytes as there are lanes.
inline F32 loadF32(const Orb8u* p) {
#if defined(__AVX2__)
  const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
  return {_mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(bytes))};
#else
  return {_mm256_cvtepi32_ps(_mm256_insertf128_si256(_mm256_castsi128_si256(widened(fourBytes(p))),
                                                     widened(fourBytes(p + 4)), 1))};
#endif
}
// Truncated and limited to 0..255.
inline void storeLimited8u(Orb8u* p, F32 a) {
  const __m256i whole = _mm256_cvttps_epi32(a.v);
  const __m128i words =
      _mm_packs_epi32(_mm256_castsi256_si128(whole), _mm256_extractf128_si256(whole, 1));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(words, words));
}

// ---- Four bytes for each lane, from as many addresses

struct Quads {
  __m256i v;
};
inline Quads gatherQuads(const Orb8u* base, const Orb32s* offsets) {
#if defined(__AVX2__)
  const __m256i places = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(offsets));
  return {_mm256_i32gather_epi32(reinterpret_cast<const int*>(base), places, 1)};
#else
  const auto quad = [=](int i) { return load(reinterpret_cast<const Orb32s*>(base + offsets[i])); };
  return {
      _mm256_setr_epi32(quad(0), quad(1), quad(2), quad(3), quad(4), quad(5), quad(6), quad(7))};
#endif
}
template <int kByte>
inline F32 byteOfQuads(Quads a) {
#if defined(__AVX2__)
  const __m256i shifted = _mm256_srli_epi32(a.v, 8 * kByte);
  return {
      _mm256_cvtepi32_ps(kByte == 3 ? shifted : _mm256_and_si256(shifted, _mm256_set1_epi32(255)))};
#else
  const auto byte = [](__m128i quads) {
    return _mm_and_si128(_mm_srli_epi32(quads, 8 * kByte), _mm_set1_epi32(255));
  };
  return {_mm256_cvtepi32_ps(
      _mm256_insertf128_si256(_mm256_castsi128_si256(byte(_mm256_castsi256_si128(a.v))),
                              byte(_mm256_extractf128_si256(a.v, 1)), 1))};
#endif
}

// ---- Pixels of four floats

constexpr Orb32s kF32Pixels = 2;

inline F32 loadPixels(const Orb8u* first, const Orb8u* second) {
#if defined(__AVX2__)
  const __m128i bytes = _mm_unpacklo_epi32(fourBytes(first), fourBytes(second));
  return {_mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(bytes))};
#else
  return {_mm256_cvtepi32_ps(_mm256_insertf128_si256(
      _mm256_castsi128_si256(widened(fourBytes(first))), widened(fourBytes(second)), 1))};
#endif
}
// A number for each pixel, in all of its lanes.
inline F32 splatPixels(const Orb32f* p) {
  return {_mm256_insertf128_ps(_mm256_castps128_ps256(_mm_set1_ps(p[0])), _mm_set1_ps(p[1]), 1)};
}
inline void storePixels(Orb32f* first, Orb32f* second, F32 a) {
  _mm_storeu_ps(first, _mm256_castps256_ps128(a.v));
  _mm_storeu_ps(second, _mm256_extractf128_ps(a.v, 1));
}

#else

struct F32 {
  __m128 v;
};
constexpr Orb32s kF32Lanes = 4;

inline F32 loadF32(const Orb32f* p) {
  return {_mm_loadu_ps(p)};
}
inline void storeF32(Orb32f* p, F32 a) {
  _mm_storeu_ps(p, a.v);
}
inline F32 splatF32(Orb32f value) {
  return {_mm_set1_ps(value)};
}
inline F32 operator+(F32 a, F32 b) {
  return {_mm_add_ps(a.v, b.v)};
}
inline F32 operator-(F32 a, F32 b) {
  return {_mm_sub_ps(a.v, b.v)};
}
inline F32 operator*(F32 a, F32 b) {
  return {_mm_mul_ps(a.v, b.v)};
}

// As many bytes as there are lanes.
inline F32 loadF32(const Orb8u* p) {
  return {_mm_cvtepi32_ps(widened(fourBytes(p)))};
}
// Truncated and limited to 0..255.
inline void storeLimited8u(Orb8u* p, F32 a) {
  const __m128i whole = _mm_cvttps_epi32(a.v);
  const __m128i words = _mm_packs_epi32(whole, whole);
  store(reinterpret_cast<Orb32s*>(p), _mm_cvtsi128_si32(_mm_packus_epi16(words, words)));
}

// ---- Four bytes for each lane, from as many addresses

struct Quads {
  __m128i v;
};
inline Quads gatherQuads(const Orb8u* base, const Orb32s* offsets) {
  const auto quad = [=](int i) { return fourBytes(base + offsets[i]); };
  return {_mm_unpacklo_epi64(_mm_unpacklo_epi32(quad(0), quad(1)),
                             _mm_unpacklo_epi32(quad(2), quad(3)))};
}
template <int kByte>
inline F32 byteOfQuads(Quads a) {
  return {_mm_cvtepi32_ps(_mm_and_si128(_mm_srli_epi32(a.v, 8 * kByte), _mm_set1_epi32(255)))};
}

// ---- Pixels of four floats

constexpr Orb32s kF32Pixels = 1;

inline F32 loadPixels(const Orb8u* first, const Orb8u*) {
  return loadF32(first);
}
// A number for each pixel, in all of its lanes.
inline F32 splatPixels(const Orb32f* p) {
  return splatF32(*p);
}
inline void storePixels(Orb32f* first, Orb32f*, F32 a) {
  storeF32(first, a);
}

#endif

}  // namespace orb::ORB_BUILD

#endif
