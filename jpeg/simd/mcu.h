// Between the pixels of an MCU and its blocks, over vectors.
//
// Pixels are read and written 16 at a time, two rows of 8 within one block; on the way they are
// planes of bytes, one for each channel, in the order of the blocks. So the arithmetic has neither
// rows nor formats to mind, and layouts only where chroma is summed and spread.
#ifndef ORB_JPEG_SIMD_MCU_H
#define ORB_JPEG_SIMD_MCU_H

#include "frame/vec.h"
#include "jpeg/px/mcu.h"

namespace orb::ORB_BUILD::simd {

// ---- Vectors of bytes

inline __m128i load16(const void* p) {
  return _mm_loadu_si128(static_cast<const __m128i*>(p));
}
inline __m128i load8(const void* p) {
  return _mm_loadl_epi64(static_cast<const __m128i*>(p));
}
inline void store16(void* p, __m128i a) {
  _mm_storeu_si128(static_cast<__m128i*>(p), a);
}
inline void store8(void* p, __m128i a) {
  _mm_storel_epi64(static_cast<__m128i*>(p), a);
}
inline __m128i highHalf(__m128i a) {
  return _mm_unpackhi_epi64(a, a);
}
// Of each word.
inline __m128i lowBytes(__m128i a) {
  return _mm_and_si128(a, _mm_set1_epi16(0xFF));
}
inline __m128i highBytes(__m128i a) {
  return _mm_srli_epi16(a, 8);
}
inline __m128i field(__m128i words, int mask) {
  return _mm_and_si128(words, _mm_set1_epi16(static_cast<Orb16s>(mask)));
}

// Four pixels of three bytes each, from four bytes each of which the last is 0.
inline __m128i withoutFourth(__m128i a) {
#if defined(__SSSE3__)
  return _mm_shuffle_epi8(a, _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
#else
  const __m128i first = _mm_set1_epi64x(0xFFFFFF);
  const __m128i pairs =
      _mm_or_si128(_mm_and_si128(a, first), _mm_srli_epi64(_mm_andnot_si128(first, a), 8));
  return _mm_or_si128(_mm_move_epi64(pairs), _mm_slli_si128(_mm_srli_si128(pairs, 8), 6));
#endif
}

// ---- Sixteen pixels, of which the first eight begin at one image and the others at another

struct Pixels {
  __m128i channel[4];
};

// Four times, the two halves of all bytes are shuffled into each other like cards: that leaves
// every third byte, or every fourth, in a vector of its own.

template <class Byte, Order kOrder>
inline Pixels readPixels(const InterleavedImage<Byte, kOrder, 3>& upper,
                         const InterleavedImage<Byte, kOrder, 3>& lower) {
  __m128i a = load16(upper.first);
  __m128i b = _mm_unpacklo_epi64(load8(upper.first + 16), load8(lower.first));
  __m128i c = load16(lower.first + 8);
  for (int round = 0; round < 4; ++round) {
    const __m128i x = _mm_unpacklo_epi8(a, highHalf(b));
    const __m128i y = _mm_unpacklo_epi8(highHalf(a), c);
    const __m128i z = _mm_unpacklo_epi8(b, highHalf(c));
    a = x;
    b = y;
    c = z;
  }
  return kOrder == Order::rgb ? Pixels{{a, b, c}} : Pixels{{c, b, a}};
}

template <class Byte>
inline Pixels readPixels(const CmykImage<Byte>& upper, const CmykImage<Byte>& lower) {
  __m128i a = load16(upper.inks.first), b = load16(upper.inks.first + 16);
  __m128i c = load16(lower.inks.first), d = load16(lower.inks.first + 16);
  for (int round = 0; round < 4; ++round) {
    const __m128i w = _mm_unpacklo_epi8(a, c), x = _mm_unpackhi_epi8(a, c);
    const __m128i y = _mm_unpacklo_epi8(b, d), z = _mm_unpackhi_epi8(b, d);
    a = w;
    b = x;
    c = y;
    d = z;
  }
  const __m128i all = _mm_set1_epi8(-1);
  return {{_mm_xor_si128(a, all), _mm_xor_si128(b, all), _mm_xor_si128(c, all), d}};
}

template <class Word, int kGreenBits>
inline Pixels readPixels(const PackedImage<Word, Order::bgr, kGreenBits>& upper,
                         const PackedImage<Word, Order::bgr, kGreenBits>& lower) {
  constexpr int kGreenMask = 0x100 - (1 << (8 - kGreenBits));
  const __m128i a = load16(upper.first), b = load16(lower.first);
  const auto bytes = [=](auto fieldOf) { return _mm_packus_epi16(fieldOf(a), fieldOf(b)); };
  return {{bytes([](__m128i w) { return field(_mm_srli_epi16(w, kGreenBits + 2), 0xF8); }),
           bytes([](__m128i w) { return field(_mm_srli_epi16(w, kGreenBits - 3), kGreenMask); }),
           bytes([](__m128i w) { return field(_mm_slli_epi16(w, 3), 0xF8); })}};
}

template <class Byte>
inline Pixels readPixels(const SharedPairsImage<Byte>& upper, const SharedPairsImage<Byte>& lower) {
  const __m128i a = load16(upper.first), b = load16(lower.first);
  const __m128i shared = _mm_packus_epi16(highBytes(a), highBytes(b));
  const __m128i second = lowBytes(shared), third = highBytes(shared);
  return {{_mm_packus_epi16(lowBytes(a), lowBytes(b)),
           _mm_or_si128(second, _mm_slli_epi16(second, 8)),
           _mm_or_si128(third, _mm_slli_epi16(third, 8))}};
}

// Eight pixels of three bytes from words of four.
inline void store24(Orb8u* p, __m128i first, __m128i second) {
  const __m128i rest = withoutFourth(second);
  store16(p, _mm_or_si128(withoutFourth(first), _mm_slli_si128(rest, 12)));
  store8(p + 16, _mm_srli_si128(rest, 4));
}

template <Order kOrder>
inline void writePixels(const Pixels& p, const InterleavedImage<Orb8u, kOrder, 3>& upper,
                        const InterleavedImage<Orb8u, kOrder, 3>& lower) {
  const __m128i a = p.channel[kOrder == Order::rgb ? 0 : 2];
  const __m128i b = p.channel[1];
  const __m128i c = p.channel[kOrder == Order::rgb ? 2 : 0];
  const __m128i none = _mm_setzero_si128();
  const __m128i abLow = _mm_unpacklo_epi8(a, b), cLow = _mm_unpacklo_epi8(c, none);
  const __m128i abHigh = _mm_unpackhi_epi8(a, b), cHigh = _mm_unpackhi_epi8(c, none);
  store24(upper.first, _mm_unpacklo_epi16(abLow, cLow), _mm_unpackhi_epi16(abLow, cLow));
  store24(lower.first, _mm_unpacklo_epi16(abHigh, cHigh), _mm_unpackhi_epi16(abHigh, cHigh));
}

inline void writePixels(const Pixels& p, const CmykImage<Orb8u>& upper,
                        const CmykImage<Orb8u>& lower) {
  const __m128i all = _mm_set1_epi8(-1);
  const __m128i a = _mm_xor_si128(p.channel[0], all), b = _mm_xor_si128(p.channel[1], all);
  const __m128i c = _mm_xor_si128(p.channel[2], all), d = p.channel[3];
  const __m128i abLow = _mm_unpacklo_epi8(a, b), cdLow = _mm_unpacklo_epi8(c, d);
  const __m128i abHigh = _mm_unpackhi_epi8(a, b), cdHigh = _mm_unpackhi_epi8(c, d);
  store16(upper.inks.first, _mm_unpacklo_epi16(abLow, cdLow));
  store16(upper.inks.first + 16, _mm_unpackhi_epi16(abLow, cdLow));
  store16(lower.inks.first, _mm_unpacklo_epi16(abHigh, cdHigh));
  store16(lower.inks.first + 16, _mm_unpackhi_epi16(abHigh, cdHigh));
}

template <int kGreenBits>
inline void writePixels(const Pixels& p, const PackedImage<Orb16u, Order::bgr, kGreenBits>& upper,
                        const PackedImage<Orb16u, Order::bgr, kGreenBits>& lower) {
  constexpr int kGreenMask = 0x100 - (1 << (8 - kGreenBits));
  const auto pack = [](__m128i r, __m128i g, __m128i b) {
    return _mm_or_si128(_mm_srli_epi16(b, 3),
                        _mm_or_si128(_mm_slli_epi16(field(g, kGreenMask), kGreenBits - 3),
                                     _mm_slli_epi16(field(r, 0xF8), kGreenBits + 2)));
  };
  const __m128i none = _mm_setzero_si128();
  const auto low = [=](__m128i a) { return _mm_unpacklo_epi8(a, none); };
  const auto high = [=](__m128i a) { return _mm_unpackhi_epi8(a, none); };
  const auto& [r, g, b, unused] = p.channel;
  store16(upper.first, pack(low(r), low(g), low(b)));
  store16(lower.first, pack(high(r), high(g), high(b)));
}

inline void writePixels(const Pixels& p, const SharedPairsImage<Orb8u>& upper,
                        const SharedPairsImage<Orb8u>& lower) {
  const __m128i shared =
      _mm_or_si128(lowBytes(p.channel[1]), _mm_slli_epi16(highBytes(p.channel[2]), 8));
  store16(upper.first, _mm_unpacklo_epi8(p.channel[0], shared));
  store16(lower.first, _mm_unpackhi_epi8(p.channel[0], shared));
}

// ---- Planes

// A byte for each pixel and channel, in the order of the first component's blocks.
struct Planes {
  alignas(16) Orb8u channel[4][Mcu411::kPixels];
};

// Calls visit(i, x, y) for each place of 16 pixels in the planes, and of the first of them.
template <class Layout, class Visit>
inline void forEachTwoRows(Visit visit) {
  Orb32s i = 0;
  for (Orb32s top = 0; top < Layout::kHeight; top += 8) {
    for (Orb32s x = 0; x < Layout::kWidth; x += 8) {
      for (Orb32s y = top; y < top + 8; y += 2, i += 16) visit(i, x, y);
    }
  }
}

template <class Layout, class Source>
[[gnu::noinline]] void readPlanes(const Source& src, Planes& planes) {
  forEachTwoRows<Layout>([&](Orb32s i, Orb32s x, Orb32s y) {
    const Pixels pixels = readPixels(src.at(x, y), src.at(x, y + 1));
    for (int c = 0; c < kComponents<Source>; ++c) store16(planes.channel[c] + i, pixels.channel[c]);
  });
}

template <class Layout, class Destination>
[[gnu::noinline]] void writePlanes(const Planes& planes, const Destination& dst) {
  forEachTwoRows<Layout>([&](Orb32s i, Orb32s x, Orb32s y) {
    Pixels pixels = {};
    for (int c = 0; c < kComponents<Destination>; ++c) {
      pixels.channel[c] = load16(planes.channel[c] + i);
    }
    writePixels(pixels, dst.at(x, y), dst.at(x, y + 1));
  });
}

// ---- Chroma, from a plane to what groups share and back

// The sums of groups from place `i` of the chroma block on.
template <class Layout>
inline I16 sumsOfGroups(const Orb8u* plane, Orb32s i) {
  if constexpr (Layout::kGroupColumns == 1) {
    return loadWide8u(plane + i);
  } else if constexpr (Layout::kGroupRows == 1) {
    return sumsOfPairs(loadWide8u(plane + i), loadWide8u(plane + 64 + i));
  } else {
    const Orb8u* const left = plane + (i / 32) * 128 + (i % 32) * 2;
    const auto pairs = [](const Orb8u* p) {
      return sumsOfPairs(loadWide8u(p), loadWide8u(p + 64));
    };
    return sumsOfRows(pairs(left), pairs(left + kI16Lanes));
  }
}

// What the pixels from place `i` of the planes on take from a block of shared values.
template <class Layout>
inline I16 sharedValues(const Orb16s* block, Orb32s i) {
  const bool isLeft = i / 64 % 2 == 0;
  if constexpr (Layout::kGroupColumns == 1) {
    return loadI16(block + i);
  } else if constexpr (Layout::kGroupRows == 1) {
    const I16 values = loadI16(block + i % 64);
    return isLeft ? doubleLeft(values) : doubleRight(values);
  } else {
    const Orb32s row = i / 128 * 4 + i % 64 / 16;
    const I16 values = loadRowI16(block + row * 8);
    return isLeft ? doubleLeft(values) : doubleRight(values);
  }
}

// ---- Arithmetic
//
// Factors that do not fit in words are taken apart: 38470 and 32768 are two halves, of which each
// is a product; and as sums wrap at 32 bits, multiples of 65536 count in the high words alone.

struct ShiftedForward {
  static I16 luma(I16 r, I16 g, I16 b) {
    return narrow(sumsOfProducts(r, 19595, g, 19235) + sumsOfProducts(b, 7471, g, 19235), 16) -
           splatI16(128);
  }
  template <Orb32s kPixels>
  static I16 cb(I16 r, I16 g, I16 b) {
    return narrow(sumsOfProducts(b, 16384, b, 16384) + sumsOfProducts(r, -11059, g, -21709),
                  16 + kPixels / 2);
  }
  template <Orb32s kPixels>
  static I16 cr(I16 r, I16 g, I16 b) {
    return narrow(sumsOfProducts(r, 16384, r, 16384) + sumsOfProducts(g, -27439, b, -5329),
                  16 + kPixels / 2);
  }
};

struct ShiftDown {
  static I16 luma(I16 a, I16, I16) { return a - splatI16(128); }
  template <Orb32s kPixels>
  static I16 cb(I16, I16 b, I16) {
    return (b - splatI16(128 * kPixels)) >> (kPixels / 2);
  }
  template <Orb32s kPixels>
  static I16 cr(I16, I16, I16 c) {
    return (c - splatI16(128 * kPixels)) >> (kPixels / 2);
  }
};

// For each channel, what a group shares, and the sample less 128 from that and luma.

struct ShiftedInverse {
  static I16 shared(int channel, I16 cb, I16 cr) {
    switch (channel) {
      case 0:
        return cr + mulHigh(cr, splatI16(91881 - 65536));
      case 1:
        return narrow(sumsOfProducts(cb, -22554, cr, 65536 - 46802), 16) - cr;
      default:
        return cb + cb + mulHigh(cb, splatI16(116130 - 2 * 65536));
    }
  }
  static I16 sample(int, I16 luma, I16 shared) { return addSaturated(luma, shared); }
};

struct ShiftUp {
  static I16 shared(int channel, I16 b, I16 c) { return channel == 1 ? b : c; }
  static I16 sample(int channel, I16 a, I16 shared) { return channel == 0 ? a : shared; }
};

// ---- Whole MCUs

template <class Layout, class Conversion>
[[gnu::noinline]] void planesToMcu(const Planes& planes, Orb16s* const* mcu) {
  constexpr Orb32s kGroup = Layout::kGroupColumns * Layout::kGroupRows;
  const auto& [a, b, c, d] = planes.channel;
  for (Orb32s i = 0; i < Layout::kPixels; i += kI16Lanes) {
    storeI16(mcu[0] + i, Conversion::luma(loadWide8u(a + i), loadWide8u(b + i), loadWide8u(c + i)));
  }
  for (Orb32s i = 0; i < 64; i += kI16Lanes) {
    const I16 x = sumsOfGroups<Layout>(a, i);
    const I16 y = sumsOfGroups<Layout>(b, i);
    const I16 z = sumsOfGroups<Layout>(c, i);
    storeI16(mcu[1] + i, Conversion::template cb<kGroup>(x, y, z));
    storeI16(mcu[2] + i, Conversion::template cr<kGroup>(x, y, z));
  }
}

template <class Layout, class Conversion>
[[gnu::noinline]] void mcuToPlanes(const Orb16s* const* mcu, Planes& planes) {
  for (int channel = 0; channel < 3; ++channel) {
    Orb16s shared[64];
    for (Orb32s i = 0; i < 64; i += kI16Lanes) {
      storeI16(shared + i, Conversion::shared(channel, loadI16(mcu[1] + i), loadI16(mcu[2] + i)));
    }
    for (Orb32s i = 0; i < Layout::kPixels; i += kI16Lanes) {
      const I16 sample =
          Conversion::sample(channel, loadI16(mcu[0] + i), sharedValues<Layout>(shared, i));
      storeLimited8u(planes.channel[channel] + i, addSaturated(sample, splatI16(128)));
    }
  }
}

template <class Layout, class Conversion, class Source>
inline void orbConvertToMcu(const Source& src, Orb16s* const* mcu) {
  Planes planes;
  readPlanes<Layout>(src, planes);
  planesToMcu<Layout, Conversion>(planes, mcu);
  if constexpr (kComponents<Source> == 4) {
    for (Orb32s i = 0; i < Layout::kPixels; i += kI16Lanes) {
      storeI16(mcu[3] + i, loadWide8u(planes.channel[3] + i) - splatI16(128));
    }
  }
}

template <class Layout, class Conversion, class Destination>
inline void orbConvertFromMcu(const Orb16s* const* mcu, const Destination& dst) {
  Planes planes;
  mcuToPlanes<Layout, Conversion>(mcu, planes);
  if constexpr (kComponents<Destination> == 4) {
    for (Orb32s i = 0; i < Layout::kPixels; i += kI16Lanes) {
      const I16 black = loadI16(mcu[3] + i) - splatI16(128);
      storeLimited8u(planes.channel[3] + i, shiftRightUnsigned(black << 8, 8));
    }
  }
  writePlanes<Layout>(planes, dst);
}

}  // namespace orb::ORB_BUILD::simd

#endif
