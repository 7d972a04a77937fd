// Video colour over vectors of words.
//
// The equations are those of the plain kernels, so arranged that factors and constants fit words:
// a factor's multiples of 65536 come out of the shift by 16 as they went in.
#ifndef ORB_SIDE_SIMD_VIDEO_H
#define ORB_SIDE_SIMD_VIDEO_H

#include "frame/vec.h"
#include "side/px/video.h"

namespace orb::ORB_BUILD::simd {

struct BgrVectors {
  I16 b, g, r;
};

// `bits` bits of each word, at the top of a byte.
inline I16 videoField(I16 words, int shift, int bits) {
  return shiftRightUnsigned(shiftRightUnsigned(words, shift) << (16 - bits), 8);
}

template <int kGreenBits>
inline BgrVectors loadVideo(const Orb16u* src) {
  const I16 words = loadI16(reinterpret_cast<const Orb16s*>(src));
  return {videoField(words, 0, 5), videoField(words, 5, kGreenBits),
          videoField(words, 5 + kGreenBits, 5)};
}

template <int kGreenBits>
inline void storeVideo(Orb16u* dst, BgrVectors p) {
  const I16 b = shiftRightUnsigned(limit8u(p.b), 3);
  const I16 g = shiftRightUnsigned(limit8u(p.g), 8 - kGreenBits) << 5;
  const I16 r = shiftRightUnsigned(limit8u(p.r), 3) << (5 + kGreenBits);
  storeI16(reinterpret_cast<Orb16s*>(dst), b + g + r);
}

// ---- To YCbCr

inline I16 videoLuma(BgrVectors p) {
  const I32Sums sums = sumsOfProducts(p.b, 6423, p.r, 16843) +
                       sumsOfProducts(p.g, 33030 - 65536, splatI16(2), 16384);
  return narrow(sums, 16) + p.g + splatI16(16);
}

struct ChromaVectors {
  I32 cb, cr;
};

// Of pairs in the sum of kRows rows.
template <int kRows>
inline ChromaVectors videoChroma(BgrVectors sum) {
  constexpr int kShift = kRows == 1 ? 17 : 18;
  const I32 zero = splatI32((128 << kShift) + (0x2000 << (kShift - 16)));
  return {
      (pairsTimes(sum.b, 28770) + pairsTimes(sum.g, -19071) + pairsTimes(sum.r, -9699) + zero) >>
          kShift,
      (pairsTimes(sum.r, 28770) + pairsTimes(sum.b, -4653) + pairsTimes(sum.g, -24117) + zero) >>
          kShift};
}

template <int kGreenBits>
inline void orbVideoLumaRow(const Orb16u* src, Orb8u* y, ptrdiff_t width) {
  constexpr ptrdiff_t kStep = 2 * kI16Lanes;
  for (; width >= kStep; width -= kStep, src += kStep, y += kStep) {
    storeLimited8u(y, videoLuma(loadVideo<kGreenBits>(src)),
                   videoLuma(loadVideo<kGreenBits>(src + kI16Lanes)));
  }
  plain::orbVideoLumaRow<kGreenBits>(src, y, width);
}

template <int kGreenBits, int kRows>
inline void orbVideoToPlanes(const Orb16u* src, Orb32s srcStep, const VideoPlanes& dst,
                             ptrdiff_t width) {
  constexpr ptrdiff_t kStep = 2 * kI16Lanes;
  VideoPlanes at = dst;
  for (; width >= kStep; width -= kStep) {
    ChromaVectors chroma[2];
    I16 luma[kRows][2];
    for (int half = 0; half < 2; ++half) {
      BgrVectors sum = {splatI16(0), splatI16(0), splatI16(0)};
      for (int row = 0; row < kRows; ++row) {
        const BgrVectors p =
            loadVideo<kGreenBits>(rowAt(src, srcStep, row) + half * ptrdiff_t{kI16Lanes});
        luma[row][half] = videoLuma(p);
        sum = {sum.b + p.b, sum.g + p.g, sum.r + p.r};
      }
      chroma[half] = videoChroma<kRows>(sum);
    }
    for (int row = 0; row < kRows; ++row) {
      storeLimited8u(rowAt(at.y, at.yStep, row), luma[row][0], luma[row][1]);
    }
    storeLimited8u(at.cb, narrow(chroma[0].cb, chroma[1].cb));
    storeLimited8u(at.cr, narrow(chroma[0].cr, chroma[1].cr));
    src += kStep;
    at.y += kStep;
    at.cb += kI16Lanes;
    at.cr += kI16Lanes;
  }
  plain::orbVideoToPlanes<kGreenBits, kRows>(src, srcStep, at, width);
}

template <int kGreenBits>
inline void orbVideoToPairs(const Orb16u* src, Orb8u* dst, ptrdiff_t width) {
  for (; width >= kI16Lanes; width -= kI16Lanes, src += kI16Lanes, dst += 2 * kI16Lanes) {
    const BgrVectors p = loadVideo<kGreenBits>(src);
    const ChromaVectors chroma = videoChroma<1>(p);
    storeI16(reinterpret_cast<Orb16s*>(dst), videoLuma(p) + (makePairs(chroma.cb, chroma.cr) << 8));
  }
  plain::orbVideoToPairs<kGreenBits>(src, dst, width);
}

// ---- From YCbCr

inline BgrVectors videoOfPlanes(I16 y, I16 cb, I16 cr) {
  // 1220480 is 128 times 9535, and 19527680 the same times 16.
  const I16 luma = mulHigh((y - splatI16(16)) << 7, splatI16(9535));
  const I16 u = (cb - splatI16(128)) << 7;
  const I16 v = (cr - splatI16(128)) << 7;
  return {(luma + mulHigh(u, splatI16(16523))) >> 4,
          (luma - mulHigh(u, splatI16(3211)) - mulHigh(v, splatI16(6660))) >> 4,
          (luma + mulHigh(v, splatI16(13074))) >> 4};
}

inline BgrVectors videoOfPairs(I16 y, I16 cb, I16 cr) {
  constexpr Orb16s kY = 76284 - 65536;
  const I16 one = splatI16(1);
  const I32Sums b =
      sumsOfProducts(y, kY, cb, 132186 - 2 * 65536) + sumsOfProducts(one, 13107, one, 0);
  const I32Sums g =
      sumsOfProducts(y, kY, cb, -25690) + sumsOfProducts(cr, 65536 - 53281, one, -25166);
  const I32Sums r =
      sumsOfProducts(y, kY, cr, 104595 - 2 * 65536) + sumsOfProducts(one, 5767, one, 0);
  static_assert(-277 * 65536 + 13107 == -18140365 && 136 * 65536 - 25166 == 8887730 &&
                -223 * 65536 + 5767 == -14608761);
  return {narrow(b, 16) + y + cb + cb - splatI16(277), narrow(g, 16) + y - cr + splatI16(136),
          narrow(r, 16) + y + cr + cr - splatI16(223)};
}

template <int kGreenBits>
inline void orbVideoOfPlanes(const ConstVideoPlanes& src, Orb16u* dst, ptrdiff_t width) {
  ConstVideoPlanes at = src;
  for (; width >= kI16Lanes; width -= kI16Lanes) {
    storeVideo<kGreenBits>(dst,
                           videoOfPlanes(loadWide8u(at.y), loadPairs8u(at.cb), loadPairs8u(at.cr)));
    at.y += kI16Lanes;
    at.cb += kI16Lanes / 2;
    at.cr += kI16Lanes / 2;
    dst += kI16Lanes;
  }
  plain::orbVideoOfPlanes<kGreenBits>(at, dst, width);
}

template <int kGreenBits>
inline void orbVideoOfPairs(const Orb8u* src, Orb16u* dst, ptrdiff_t width) {
  for (; width >= kI16Lanes; width -= kI16Lanes, src += 2 * kI16Lanes, dst += kI16Lanes) {
    const I16 words = loadI16(reinterpret_cast<const Orb16s*>(src));
    const I16 chroma = shiftRightUnsigned(words, 8);
    storeVideo<kGreenBits>(dst, videoOfPairs(shiftRightUnsigned(words << 8, 8),
                                             firstOfPairs(chroma), secondOfPairs(chroma)));
  }
  plain::orbVideoOfPairs<kGreenBits>(src, dst, width);
}

// ---- Words and bytes: 8 pixels at a time, as two vectors of 4 pixels of 32 bits

#if defined(__SSSE3__)

inline void orbVideoWordsToBytes(const Orb16u* src, Orb8u* dst, ptrdiff_t width) {
  const __m128i threeOfFour = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
  for (; width >= 8; width -= 8, src += 8, dst += 24) {
    const __m128i words = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src));
    const __m128i b = _mm_srli_epi16(_mm_slli_epi16(words, 11), 8);
    const __m128i g = _mm_slli_epi16(_mm_srli_epi16(words, 5), 10);  // in the upper byte
    const __m128i r = _mm_slli_epi16(_mm_srli_epi16(words, 11), 3);
    const __m128i bg = _mm_or_si128(b, _mm_andnot_si128(_mm_set1_epi16(255), g));
    const __m128i left = _mm_shuffle_epi8(_mm_unpacklo_epi16(bg, r), threeOfFour);
    const __m128i right = _mm_shuffle_epi8(_mm_unpackhi_epi16(bg, r), threeOfFour);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst),
                     _mm_or_si128(left, _mm_slli_si128(right, 12)));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(dst + 16), _mm_srli_si128(right, 4));
  }
  plain::orbVideoWordsToBytes(src, dst, width);
}

// Words in the lower halves of 4 pixels.
inline __m128i videoWords(__m128i pixels) {
  const __m128i b = _mm_and_si128(_mm_srli_epi32(pixels, 3), _mm_set1_epi32(0x001F));
  const __m128i g = _mm_and_si128(_mm_srli_epi32(pixels, 5), _mm_set1_epi32(0x07E0));
  const __m128i r = _mm_and_si128(_mm_srli_epi32(pixels, 8), _mm_set1_epi32(0xF800));
  return _mm_or_si128(b, _mm_or_si128(g, r));
}

inline void orbVideoBytesToWords(const Orb8u* src, Orb16u* dst, ptrdiff_t width) {
  const __m128i firstTwelve = _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
  const __m128i lastTwelve =
      _mm_setr_epi8(4, 5, 6, -1, 7, 8, 9, -1, 10, 11, 12, -1, 13, 14, 15, -1);
  const __m128i lowerHalves =
      _mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, -1, -1, -1, -1, -1, -1, -1, -1);
  for (; width >= 8; width -= 8, src += 24, dst += 8) {
    const __m128i left = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src));
    const __m128i right = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 8));
    const __m128i words = _mm_unpacklo_epi64(
        _mm_shuffle_epi8(videoWords(_mm_shuffle_epi8(left, firstTwelve)), lowerHalves),
        _mm_shuffle_epi8(videoWords(_mm_shuffle_epi8(right, lastTwelve)), lowerHalves));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), words);
  }
  plain::orbVideoBytesToWords(src, dst, width);
}

#endif

}  // namespace orb::ORB_BUILD::simd

#endif
