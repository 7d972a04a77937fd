// Channels of samples over vectors of 16 bytes.
#ifndef ORB_SIDE_SIMD_SAMPLES_H
#define ORB_SIDE_SIMD_SAMPLES_H

#include <immintrin.h>

#include "side/px/samples.h"

namespace orb::ORB_BUILD::simd {

template <class T>
inline __m128i loadSamples(const T* at) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
}
template <class T>
inline void storeSamples(T* at, __m128i samples) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(at), samples);
}

// ---- Two channels as they are

inline __m128i unpackLow(__m128i a, __m128i b, Orb16s) {
  return _mm_unpacklo_epi16(a, b);
}
inline __m128i unpackHigh(__m128i a, __m128i b, Orb16s) {
  return _mm_unpackhi_epi16(a, b);
}
inline __m128i unpackLow(__m128i a, __m128i b, Orb32u) {
  return _mm_unpacklo_epi32(a, b);
}
inline __m128i unpackHigh(__m128i a, __m128i b, Orb32u) {
  return _mm_unpackhi_epi32(a, b);
}

template <class T>
inline void interleavePair(const T* left, const T* right, ptrdiff_t len, T* dst) {
  constexpr ptrdiff_t kLanes = 16 / sizeof(T);
  ptrdiff_t i = 0;
  for (; len - i >= kLanes; i += kLanes) {
    const __m128i a = loadSamples(left + i);
    const __m128i b = loadSamples(right + i);
    storeSamples(dst + 2 * i, unpackLow(a, b, T()));
    storeSamples(dst + 2 * i + kLanes, unpackHigh(a, b, T()));
  }
  plain::interleavePair(left + i, right + i, len - i, dst + 2 * i);
}

inline void deinterleavePair(const Orb16s* src, ptrdiff_t len, Orb16s* left, Orb16s* right) {
  constexpr ptrdiff_t kLanes = 8;
  ptrdiff_t i = 0;
  for (; len - i >= kLanes; i += kLanes) {
    const __m128i a = loadSamples(src + 2 * i);
    const __m128i b = loadSamples(src + 2 * i + kLanes);
    const auto lower = [](__m128i pairs) { return _mm_srai_epi32(_mm_slli_epi32(pairs, 16), 16); };
    const auto upper = [](__m128i pairs) { return _mm_srai_epi32(pairs, 16); };
    storeSamples(left + i, _mm_packs_epi32(lower(a), lower(b)));
    storeSamples(right + i, _mm_packs_epi32(upper(a), upper(b)));
  }
  plain::deinterleavePair(src + 2 * i, len - i, left + i, right + i);
}

template <class T>
inline void orbInterleave(T* const* src, Orb32s channels, ptrdiff_t len, T* dst) {
  if (channels == 2) {
    interleavePair(load(src), load(src + 1), len, dst);
  } else {
    plain::orbInterleave(src, channels, len, dst);
  }
}

inline void orbDeinterleave(const Orb16s* src, Orb32s channels, ptrdiff_t len, Orb16s* const* dst) {
  if (channels == 2) {
    deinterleavePair(src, len, load(dst), load(dst + 1));
  } else {
    plain::orbDeinterleave(src, channels, len, dst);
  }
}

// ---- Scaled: four at a time, in two vectors of doubles

// Of two samples, in the lower half.
template <class Code>
inline __m128i codesOfTwo(__m128 samples) {
  const __m128d scaled = _mm_mul_pd(_mm_cvtps_pd(samples), _mm_set1_pd(Code::kScale));
  return _mm_cvtpd_epi32(_mm_sub_pd(scaled, _mm_set1_pd(0.5)));
}

template <class Code>
inline __m128i codesOf(__m128 samples) {
  const __m128 numbers = _mm_and_ps(samples, _mm_cmpord_ps(samples, samples));
  const __m128 limited = _mm_min_ps(_mm_max_ps(numbers, _mm_set1_ps(-1)), _mm_set1_ps(1));
  return _mm_unpacklo_epi64(codesOfTwo<Code>(limited),
                            codesOfTwo<Code>(_mm_movehl_ps(limited, limited)));
}

inline __m128 samplesOfTwo(__m128d codes, Orb64f step, Orb64f halfStep) {
  return _mm_cvtpd_ps(_mm_add_pd(_mm_mul_pd(codes, _mm_set1_pd(step)), _mm_set1_pd(halfStep)));
}

template <class Code>
inline __m128 samplesOf(__m128i codes) {
  const __m128i last = _mm_unpackhi_epi64(codes, codes);
  return _mm_movelh_ps(samplesOfTwo(_mm_cvtepi32_pd(codes), Code::kStep, Code::kHalfStep),
                       samplesOfTwo(_mm_cvtepi32_pd(last), Code::kStep, Code::kHalfStep));
}

template <class Code>
inline void orbJoinScaled(const Orb32f* src, ptrdiff_t len, Orb8u* dst, ptrdiff_t step) {
  ptrdiff_t i = 0;
  for (; len - i >= 4; i += 4) {
    Orb32s codes[4];
    storeSamples(codes, codesOf<Code>(_mm_castsi128_ps(loadSamples(src + i))));
    for (int k = 0; k < 4; ++k) Code::write(dst + (i + k) * step, codes[k]);
  }
  plain::orbJoinScaled<Code>(src + i, len - i, dst + i * step, step);
}

template <class Code>
inline void orbSplitScaled(const Orb8u* src, ptrdiff_t step, ptrdiff_t len, Orb32f* dst) {
  ptrdiff_t i = 0;
  for (; len - i >= 4; i += 4) {
    const Orb8u* const at = src + i * step;
    const __m128i codes = _mm_setr_epi32(Code::read(at), Code::read(at + step),
                                         Code::read(at + 2 * step), Code::read(at + 3 * step));
    storeSamples(dst + i, _mm_castps_si128(samplesOf<Code>(codes)));
  }
  plain::orbSplitScaled<Code>(src + i * step, step, len - i, dst + i);
}

}  // namespace orb::ORB_BUILD::simd

#endif
