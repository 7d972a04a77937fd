// Checksums over vectors: Adler-32 in all builds, CRC-32 by carry-less multiplication where the
// processor has it.
#ifndef ORB_COMPRESS_SIMD_CHECKSUM_H
#define ORB_COMPRESS_SIMD_CHECKSUM_H

#include <immintrin.h>

#include "compress/px/checksum.h"
#include "frame/cpu.h"

namespace orb::ORB_BUILD::simd {

// ---- Adler-32

#if defined(__AVX2__)

using ByteVector = __m256i;

inline ByteVector loadVector(const Orb8u* data) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(data));
}
// Their sum is that of the bytes.
inline ByteVector sumsOfBytes(ByteVector bytes) {
  return _mm256_sad_epu8(bytes, _mm256_setzero_si256());
}
// Their sum is that of the bytes, the first taken 32 times, the last once.
inline ByteVector weightedSums(ByteVector bytes) {
  const __m256i weights =
      _mm256_setr_epi8(32, 31, 30, 29, 28, 27, 26, 25, 24, 23, 22, 21, 20, 19, 18, 17, 16, 15, 14,
                       13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1);
  return _mm256_madd_epi16(_mm256_maddubs_epi16(bytes, weights), _mm256_set1_epi16(1));
}
inline ByteVector addSums(ByteVector a, ByteVector b) {
  return _mm256_add_epi32(a, b);
}
inline Orb32u total(ByteVector sums) {
  const __m128i four =
      _mm_add_epi32(_mm256_castsi256_si128(sums), _mm256_extracti128_si256(sums, 1));
  const __m128i two = _mm_add_epi32(four, _mm_unpackhi_epi64(four, four));
  return static_cast<Orb32u>(_mm_cvtsi128_si32(_mm_add_epi32(two, _mm_srli_epi64(two, 32))));
}

#else

using ByteVector = __m128i;

inline ByteVector loadVector(const Orb8u* data) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(data));
}
inline ByteVector sumsOfBytes(ByteVector bytes) {
  return _mm_sad_epu8(bytes, _mm_setzero_si128());
}
// The first is taken 16 times.
inline ByteVector weightedSums(ByteVector bytes) {
#if defined(__SSSE3__)
  const __m128i weights = _mm_setr_epi8(16, 15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1);
  return _mm_madd_epi16(_mm_maddubs_epi16(bytes, weights), _mm_set1_epi16(1));
#else
  const __m128i zero = _mm_setzero_si128();
  return _mm_add_epi32(
      _mm_madd_epi16(_mm_unpacklo_epi8(bytes, zero), _mm_setr_epi16(16, 15, 14, 13, 12, 11, 10, 9)),
      _mm_madd_epi16(_mm_unpackhi_epi8(bytes, zero), _mm_setr_epi16(8, 7, 6, 5, 4, 3, 2, 1)));
#endif
}
inline ByteVector addSums(ByteVector a, ByteVector b) {
  return _mm_add_epi32(a, b);
}
inline Orb32u total(ByteVector sums) {
  const __m128i two = _mm_add_epi32(sums, _mm_unpackhi_epi64(sums, sums));
  return static_cast<Orb32u>(_mm_cvtsi128_si32(_mm_add_epi32(two, _mm_srli_epi64(two, 32))));
}

#endif

inline Orb32u orbAdler32(Orb32u adler, const Orb8u* data, Orb32s length) {
  constexpr Orb32s kVector = sizeof(ByteVector);
  constexpr Orb32s kBlock = plain::kAdlerBlock / kVector * kVector;
  Orb32u sum = adler & 0xFFFF;
  Orb32u sumOfSums = adler >> 16;
  while (length >= kVector) {
    const Orb32s block = length < kBlock ? length / kVector * kVector : kBlock;
    ByteVector sums = {};
    ByteVector sumsBefore = {};  // in front of each vector
    ByteVector weighted = {};
    for (Orb32s i = 0; i < block; i += kVector) {
      const ByteVector bytes = loadVector(data + i);
      sumsBefore = addSums(sumsBefore, sums);
      sums = addSums(sums, sumsOfBytes(bytes));
      weighted = addSums(weighted, weightedSums(bytes));
    }
    sumOfSums += sum * static_cast<Orb32u>(block) + total(sumsBefore) * kVector + total(weighted);
    sum += total(sums);
    sum %= plain::kAdlerModulus;
    sumOfSums %= plain::kAdlerModulus;
    data += block;
    length -= block;
  }
  return plain::orbAdler32(sumOfSums << 16 | sum, data, length);
}

// ---- CRC-32

#if defined(__SSE4_1__)

// x to the power of n, divided by the polynomial, as a factor for bits in reflected order: the
// product of two such numbers is one place too low.
constexpr long long powerOfX(Orb32s n) {
  Orb32u rest = 0x80000000;
  for (Orb32s i = 0; i < n; ++i) rest = rest >> 1 ^ (rest & 1 ? kCrc32Polynomial : 0);
  return static_cast<long long>(uint64_t{rest} << 1);
}

// Moves 16 bytes forward by the distance, in bits, that the factors are made for.
[[gnu::target("pclmul")]] inline __m128i fold(__m128i bytes, __m128i factors) {
  return _mm_xor_si128(_mm_clmulepi64_si128(bytes, factors, 0x00),
                       _mm_clmulepi64_si128(bytes, factors, 0x11));
}

// At least 64 bytes.
[[gnu::target("pclmul")]] inline Orb32u crcRestByFolding(Orb32u rest, const Orb8u* data,
                                                         Orb32s length) {
  constexpr long long kBy64Bytes[] = {powerOfX(512 + 32), powerOfX(512 - 32)};
  constexpr long long kBy16Bytes[] = {powerOfX(128 + 32), powerOfX(128 - 32)};
  const __m128i by64Bytes = _mm_set_epi64x(kBy64Bytes[1], kBy64Bytes[0]);
  const __m128i by16Bytes = _mm_set_epi64x(kBy16Bytes[1], kBy16Bytes[0]);
  const auto next = [&] {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(data));
    data += 16;
    length -= 16;
    return bytes;
  };
  __m128i a = _mm_xor_si128(next(), _mm_cvtsi32_si128(static_cast<int>(rest)));
  __m128i b = next();
  __m128i c = next();
  __m128i d = next();
  while (length >= 64) {
    a = _mm_xor_si128(fold(a, by64Bytes), next());
    b = _mm_xor_si128(fold(b, by64Bytes), next());
    c = _mm_xor_si128(fold(c, by64Bytes), next());
    d = _mm_xor_si128(fold(d, by64Bytes), next());
  }
  a = _mm_xor_si128(fold(a, by16Bytes), b);
  a = _mm_xor_si128(fold(a, by16Bytes), c);
  a = _mm_xor_si128(fold(a, by16Bytes), d);
  while (length >= 16) a = _mm_xor_si128(fold(a, by16Bytes), next());
  // All that came before has the same rest as these 16 bytes.
  Orb8u bytes[16];
  _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), a);
  return plain::crcRest(plain::crcRest(0, bytes, 16), data, length);
}

inline Orb32u orbCrc32Of(Orb32u crc, const Orb8u* data, Orb32s length) {
  if (length < 64 || !orbIsFeatureEnabled(kPclmulqdq, 0)) {
    return plain::orbCrc32Of(crc, data, length);
  }
  return ~crcRestByFolding(~crc, data, length);
}

#endif

}  // namespace orb::ORB_BUILD::simd

#endif
