// Between the pixels of an MCU and its blocks, over vectors.
//
// Pixels are read and written 16 at a time; on the way they are planes of bytes, one for each
// channel, in the order of the blocks. So the arithmetic has neither rows nor formats to mind, and
// layouts only where chroma is summed and spread.
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

// ---- Sixteen pixels, of which eight begin at one image, and the others at another

struct Pixels {
  __m128i channel[4];
};

// Two ways to bring the channels of pixels apart. By shuffles, where there are any; or four times,
// the two halves of all bytes are laid into each other like cards: that leaves every third byte, or
// every fourth, in a vector of its own.

#if defined(__SSSE3__)

// Four pixels of three bytes each, the first at byte kFirst: four of each channel, and zeros.
template <int kFirst>
inline __m128i byChannels(__m128i a) {
  constexpr int i = kFirst;
  return _mm_shuffle_epi8(a, _mm_setr_epi8(i, i + 3, i + 6, i + 9, i + 1, i + 4, i + 7, i + 10,
                                           i + 2, i + 5, i + 8, i + 11, -1, -1, -1, -1));
}

inline Pixels readTriples(const Orb8u* one, const Orb8u* other) {
  const __m128i p = byChannels<0>(load16(one)), q = byChannels<4>(load16(one + 8));
  const __m128i r = byChannels<0>(load16(other)), s = byChannels<4>(load16(other + 8));
  const __m128i abOne = _mm_unpacklo_epi32(p, q), cOne = _mm_unpackhi_epi32(p, q);
  const __m128i abOther = _mm_unpacklo_epi32(r, s), cOther = _mm_unpackhi_epi32(r, s);
  return {{_mm_unpacklo_epi64(abOne, abOther), _mm_unpackhi_epi64(abOne, abOther),
           _mm_unpacklo_epi64(cOne, cOther)}};
}

#else

inline Pixels readTriples(const Orb8u* one, const Orb8u* other) {
  __m128i a = load16(one);
  __m128i b = _mm_unpacklo_epi64(load8(one + 16), load8(other));
  __m128i c = load16(other + 8);
  for (int round = 0; round < 4; ++round) {
    const __m128i x = _mm_unpacklo_epi8(a, highHalf(b));
    const __m128i y = _mm_unpacklo_epi8(highHalf(a), c);
    const __m128i z = _mm_unpacklo_epi8(b, highHalf(c));
    a = x;
    b = y;
    c = z;
  }
  return {{a, b, c}};
}

#endif

template <class Byte, Order kOrder>
inline Pixels readPixels(const InterleavedImage<Byte, kOrder, 3>& one,
                         const InterleavedImage<Byte, kOrder, 3>& other) {
  const Pixels p = readTriples(one.first, other.first);
  if constexpr (kOrder == Order::rgb) return p;
  return {{p.channel[2], p.channel[1], p.channel[0]}};
}

template <class Byte>
inline Pixels readPixels(const CmykImage<Byte>& one, const CmykImage<Byte>& other) {
  __m128i a = load16(one.inks.first), b = load16(one.inks.first + 16);
  __m128i c = load16(other.inks.first), d = load16(other.inks.first + 16);
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
inline Pixels readPixels(const PackedImage<Word, Order::bgr, kGreenBits>& one,
                         const PackedImage<Word, Order::bgr, kGreenBits>& other) {
  constexpr int kGreenMask = PackedImage<Word, Order::bgr, kGreenBits>::kGreenMask;
  const __m128i a = load16(one.first), b = load16(other.first);
  const auto bytes = [=](auto fieldOf) { return _mm_packus_epi16(fieldOf(a), fieldOf(b)); };
  return {{bytes([](__m128i w) { return field(_mm_srli_epi16(w, kGreenBits + 2), 0xF8); }),
           bytes([](__m128i w) { return field(_mm_srli_epi16(w, kGreenBits - 3), kGreenMask); }),
           bytes([](__m128i w) { return field(_mm_slli_epi16(w, 3), 0xF8); })}};
}

template <class Byte>
inline Pixels readPixels(const SharedPairsImage<Byte>& one, const SharedPairsImage<Byte>& other) {
  const __m128i a = load16(one.first), b = load16(other.first);
  const __m128i shared = _mm_packus_epi16(highBytes(a), highBytes(b));
  const __m128i cb = lowBytes(shared), cr = highBytes(shared);
  return {{_mm_packus_epi16(lowBytes(a), lowBytes(b)), _mm_or_si128(cb, _mm_slli_epi16(cb, 8)),
           _mm_or_si128(cr, _mm_slli_epi16(cr, 8))}};
}

// Eight pixels of three bytes from words of four.
inline void store24(Orb8u* p, __m128i first, __m128i second) {
  const __m128i rest = withoutFourth(second);
  store16(p, _mm_or_si128(withoutFourth(first), _mm_slli_si128(rest, 12)));
  store8(p + 16, _mm_srli_si128(rest, 4));
}

template <Order kOrder>
inline void writePixels(const Pixels& p, const InterleavedImage<Orb8u, kOrder, 3>& one,
                        const InterleavedImage<Orb8u, kOrder, 3>& other) {
  const __m128i a = p.channel[kOrder == Order::rgb ? 0 : 2];
  const __m128i b = p.channel[1];
  const __m128i c = p.channel[kOrder == Order::rgb ? 2 : 0];
  const __m128i none = _mm_setzero_si128();
  const __m128i abLow = _mm_unpacklo_epi8(a, b), cLow = _mm_unpacklo_epi8(c, none);
  const __m128i abHigh = _mm_unpackhi_epi8(a, b), cHigh = _mm_unpackhi_epi8(c, none);
  store24(one.first, _mm_unpacklo_epi16(abLow, cLow), _mm_unpackhi_epi16(abLow, cLow));
  store24(other.first, _mm_unpacklo_epi16(abHigh, cHigh), _mm_unpackhi_epi16(abHigh, cHigh));
}

inline void writePixels(const Pixels& p, const CmykImage<Orb8u>& one,
                        const CmykImage<Orb8u>& other) {
  const __m128i all = _mm_set1_epi8(-1);
  const __m128i a = _mm_xor_si128(p.channel[0], all), b = _mm_xor_si128(p.channel[1], all);
  const __m128i c = _mm_xor_si128(p.channel[2], all), d = p.channel[3];
  const __m128i abLow = _mm_unpacklo_epi8(a, b), cdLow = _mm_unpacklo_epi8(c, d);
  const __m128i abHigh = _mm_unpackhi_epi8(a, b), cdHigh = _mm_unpackhi_epi8(c, d);
  store16(one.inks.first, _mm_unpacklo_epi16(abLow, cdLow));
  store16(one.inks.first + 16, _mm_unpackhi_epi16(abLow, cdLow));
  store16(other.inks.first, _mm_unpacklo_epi16(abHigh, cdHigh));
  store16(other.inks.first + 16, _mm_unpackhi_epi16(abHigh, cdHigh));
}

template <int kGreenBits>
inline void writePixels(const Pixels& p, const PackedImage<Orb16u, Order::bgr, kGreenBits>& one,
                        const PackedImage<Orb16u, Order::bgr, kGreenBits>& other) {
  constexpr int kGreenMask = PackedImage<Orb16u, Order::bgr, kGreenBits>::kGreenMask;
  const auto pack = [](__m128i r, __m128i g, __m128i b) {
    return _mm_or_si128(_mm_srli_epi16(b, 3),
                        _mm_or_si128(_mm_slli_epi16(field(g, kGreenMask), kGreenBits - 3),
                                     _mm_slli_epi16(field(r, 0xF8), kGreenBits + 2)));
  };
  const __m128i none = _mm_setzero_si128();
  const auto low = [=](__m128i a) { return _mm_unpacklo_epi8(a, none); };
  const auto high = [=](__m128i a) { return _mm_unpackhi_epi8(a, none); };
  const auto& [r, g, b, unused] = p.channel;
  store16(one.first, pack(low(r), low(g), low(b)));
  store16(other.first, pack(high(r), high(g), high(b)));
}

inline void writePixels(const Pixels& p, const SharedPairsImage<Orb8u>& one,
                        const SharedPairsImage<Orb8u>& other) {
  const __m128i shared =
      _mm_or_si128(lowBytes(p.channel[1]), _mm_slli_epi16(highBytes(p.channel[2]), 8));
  store16(one.first, _mm_unpacklo_epi8(p.channel[0], shared));
  store16(other.first, _mm_unpackhi_epi8(p.channel[0], shared));
}

// ---- Planes

// A byte for each pixel and channel, in the order of the first component's blocks.
struct Planes {
  alignas(32) Orb8u channel[4][Mcu411::kPixels];
};

template <class Layout, class Source>
[[gnu::noinline]] void readPlanes(const Source& src, Planes& planes) {
  Orb32s i = 0;
  for (Orb32s top = 0; top < Layout::kHeight; top += 8) {
    for (Orb32s x = 0; x < Layout::kWidth; x += 8) {
      for (Orb32s y = top; y < top + 8; y += 2, i += 16) {
        const Pixels p = readPixels(src.at(x, y), src.at(x, y + 1));
        for (int c = 0; c < kComponents<Source>; ++c) store16(planes.channel[c] + i, p.channel[c]);
      }
    }
  }
}

// From the first pixel to the last, as rows may overlap.
template <class Layout, class Destination>
[[gnu::noinline]] void writePlanes(const Planes& planes, const Destination& dst) {
  constexpr bool kIsRow = Layout::kWidth == 16;
  for (Orb32s y = 0; y < Layout::kHeight; y += kIsRow ? 1 : 2) {
    const ptrdiff_t first = Layout::whole(0, y);
    const ptrdiff_t second = kIsRow ? Layout::whole(8, y) : Layout::whole(0, y + 1);
    Pixels p = {};
    for (int c = 0; c < kComponents<Destination>; ++c) {
      const Orb8u* const plane = planes.channel[c];
      p.channel[c] = _mm_unpacklo_epi64(load8(plane + first), load8(plane + second));
    }
    writePixels(p, dst.at(0, y), kIsRow ? dst.at(8, y) : dst.at(0, y + 1));
  }
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

// What the pixels of a block, from place `i` of it on, take from the block of shared values.
template <class Layout>
inline I16 sharedValues(const Orb16s* shared, Orb32s block, Orb32s i) {
  if constexpr (Layout::kGroupColumns == 1) {
    return loadI16(shared + i);
  } else {
    const I16 values = Layout::kGroupRows == 1 ? loadI16(shared + i)
                                               : loadRowI16(shared + block / 2 * 32 + i / 16 * 8);
    return block % 2 == 0 ? doubleLeft(values) : doubleRight(values);
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

// For each channel, the values that groups share, and the sample less 128 from them and luma. The
// room is for values that are in no block.

struct ShiftedInverse {
  template <int kChannel>
  static const Orb16s* shared(const Orb16s* cb, const Orb16s* cr, Orb16s* room) {
    for (Orb32s i = 0; i < 64; i += kI16Lanes) {
      storeI16(room + i, offset<kChannel>(loadI16(cb + i), loadI16(cr + i)));
    }
    return room;
  }
  template <int kChannel>
  static I16 sample(I16 luma, I16 shared) {
    return addSaturated(luma, shared);
  }

 private:
  template <int kChannel>
  static I16 offset(I16 cb, I16 cr) {
    if constexpr (kChannel == 0) {
      return cr + mulHigh(cr, splatI16(91881 - 65536));
    } else if constexpr (kChannel == 1) {
      return narrow(sumsOfProducts(cb, -22554, cr, 65536 - 46802), 16) - cr;
    } else {
      return cb + cb + mulHigh(cb, splatI16(116130 - 2 * 65536));
    }
  }
};

struct ShiftUp {
  template <int kChannel>
  static const Orb16s* shared(const Orb16s* second, const Orb16s* third, Orb16s*) {
    return kChannel == 1 ? second : third;
  }
  template <int kChannel>
  static I16 sample(I16 first, I16 shared) {
    return kChannel == 0 ? first : shared;
  }
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

template <class Layout, class Conversion, int kChannel>
[[gnu::noinline]] void mcuToPlane(const Orb16s* const* mcu, Orb8u* plane) {
  alignas(32) Orb16s room[64];
  const Orb16s* const shared = Conversion::template shared<kChannel>(mcu[1], mcu[2], room);
  for (Orb32s block = 0; block < Layout::kPixels / 64; ++block) {
    const auto sample = [=](Orb32s i) {
      const I16 luma = loadI16(mcu[0] + block * 64 + i);
      const I16 value =
          Conversion::template sample<kChannel>(luma, sharedValues<Layout>(shared, block, i));
      return addSaturated(value, splatI16(128));
    };
    for (Orb32s i = 0; i < 64; i += 2 * kI16Lanes) {
      storeLimited8u(plane + block * 64 + i, sample(i), sample(i + kI16Lanes));
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
  mcuToPlane<Layout, Conversion, 0>(mcu, planes.channel[0]);
  mcuToPlane<Layout, Conversion, 1>(mcu, planes.channel[1]);
  mcuToPlane<Layout, Conversion, 2>(mcu, planes.channel[2]);
  if constexpr (kComponents<Destination> == 4) {
    const auto black = [=](Orb32s i) {
      return shiftRightUnsigned((loadI16(mcu[3] + i) - splatI16(128)) << 8, 8);
    };
    for (Orb32s i = 0; i < Layout::kPixels; i += 2 * kI16Lanes) {
      storeLimited8u(planes.channel[3] + i, black(i), black(i + kI16Lanes));
    }
  }
  writePlanes<Layout>(planes, dst);
}

}  // namespace orb::ORB_BUILD::simd

#endif
