// One level of the two-dimensional wavelet transforms of JPEG 2000 (ITU-T T.800 F.3.2, F.4.2):
// columns and rows of a tile, with its borders and its place.
#ifndef ORB_JPEG2K_PX_WAVELET_IMAGE_H
#define ORB_JPEG2K_PX_WAVELET_IMAGE_H

#include "jpeg2k/px/wavelet_lifting.h"

namespace orb::ORB_BUILD::plain {

// ---- What a wavelet computes with, and how it treats short lines

// (factor * x + 8192) >> 14 in 32 bits.
inline Orb32s scaled14(Orb32s factor, Orb32s x) {
  return (factor * x + 8192) >> 14;
}

// The 9/7 on samples of 16 bits: factors of 14 fraction bits, and each result cut to 16 bits.
struct Wrapping14 {
  using Work = Orb16s;
  static constexpr bool kHasRowEnds = false;
  static Orb16s in(Orb16s sample) { return sample; }
  static Orb16s out(Orb16s value) { return value; }

  static constexpr Orb32s kAlpha14 = -25987;
  static constexpr Orb32s kBeta14 = -868;
  static constexpr Orb32s kGamma14 = 14466;
  static constexpr Orb32s kDelta14 = 7266;
  static constexpr Orb32s kLowGain14 = 13318;
  static constexpr Orb32s kHighGain14 = 20155;

  static Orb16s alpha(Orb32s high, Orb32s low0, Orb32s low1) {
    return wrap16s(high + scaled14(kAlpha14, low0 + low1));
  }
  static Orb16s beta(Orb32s low, Orb32s high0, Orb32s high1) {
    return wrap16s(low + scaled14(kBeta14, high0 + high1));
  }
  static Orb16s gamma(Orb32s high, Orb32s low0, Orb32s low1) {
    return wrap16s(high + scaled14(kGamma14, low0 + low1));
  }
  static Orb16s low(Orb32s low, Orb32s high0, Orb32s high1) {
    return wrap16s(scaled14(kLowGain14, wrap16s(low + scaled14(kDelta14, high0 + high1))));
  }
  static Orb16s high(Orb32s high) { return wrap16s(scaled14(kHighGain14, high)); }

  static Orb16s undoLow(Orb32s low, Orb32s high0, Orb32s high1) {
    const Orb32s side = scaled14(kLowGain14, high0) + scaled14(kLowGain14, high1);
    return wrap16s(scaled14(kHighGain14, low) - scaled14(kDelta14, side));
  }
  static Orb16s undoGamma(Orb32s high, Orb32s low0, Orb32s low1) {
    return wrap16s(scaled14(kLowGain14, high) - scaled14(kGamma14, low0 + low1));
  }
  static Orb16s undoBeta(Orb32s low, Orb32s high0, Orb32s high1) {
    return wrap16s(low - scaled14(kBeta14, high0 + high1));
  }
  static Orb16s undoAlpha(Orb32s high, Orb32s low0, Orb32s low1) {
    return wrap16s(high - scaled14(kAlpha14, low0 + low1));
  }
};

// The 9/7 on samples of 32 bits: floating point from end to end of a line.
struct FloatingLine : Floating<Orb64f> {
  static Orb64f in(Orb32s sample) { return sample; }
  // Towards zero, limited to 32 bits.
  static Orb32s out(Orb64f value) {
    if (value >= 2147483648.0) return 0x7fffffff;
    if (value < -2147483648.0) return -0x7fffffff - 1;
    return static_cast<Orb32s>(value);
  }
};

template <class T>
struct Wavelet53 {
  using Sample = T;
  using Forward = Forward53<Reversible<T>>;
  using Inverse = Inverse53<Reversible<T>>;
  static constexpr bool kHasPairs = true;  // lines of 2 samples are computed their own way
};

template <class T, class A>
struct Wavelet97 {
  using Sample = T;
  using Forward = Forward97<A>;
  using Inverse = Inverse97<A>;
  static constexpr bool kHasPairs = false;
};
using Wavelet97Of16 = Wavelet97<Orb16s, Wrapping14>;
using Wavelet97Of32 = Wavelet97<Orb32s, FloatingLine>;

// ---- Lines

// How many of `length` samples are of low parity.
constexpr ptrdiff_t lowCount(ptrdiff_t length, ptrdiff_t p) {
  return (length + 1 - p) / 2;
}

// Where the sub-bands of an alternating line stand in its place: the low one first.
template <class T>
inline LinePair<T> bandsInPlace(T* first, ptrdiff_t step, ptrdiff_t length, ptrdiff_t p) {
  const Line<T> line = {first, step};
  return {line, {line.at(lowCount(length, p)), step}};
}

template <class W, class From, class T>
[[gnu::noinline, gnu::noclone]] void orbForwardLine(LinePair<From> from, LinePair<T> to,
                                                    ptrdiff_t length, ptrdiff_t lanes,
                                                    ptrdiff_t p) {
  if (length == 1) {
    for (ptrdiff_t i = 0; i < lanes; ++i) {
      if (p == 0) {
        store(to.low.first + i, load(from.low.first + i));
      } else {
        store(to.high.first + i, static_cast<T>(load(from.high.first + i) * 2));
      }
    }
  } else if (W::kHasPairs && length == 2) {
    for (ptrdiff_t i = 0; i < lanes; ++i) {
      const Orb32s low = load(from.low.first + i);
      const T difference = static_cast<T>(load(from.high.first + i) - low);
      store(to.high.first + i, difference);
      store(to.low.first + i, static_cast<T>(low + ((difference + 1) >> 1)));
    }
  } else {
    const ptrdiff_t lows = lowCount(length, p);
    orbLiftLine<typename W::Forward>(ReflectedSource<From>{from, length, p}, to, lows,
                                     length - lows, lanes, p);
  }
}

template <class W, class From, class T>
[[gnu::noinline, gnu::noclone]] void orbInverseLine(LinePair<From> from, LinePair<T> to,
                                                    ptrdiff_t length, ptrdiff_t lanes,
                                                    ptrdiff_t p) {
  if (length == 1) {
    for (ptrdiff_t i = 0; i < lanes; ++i) {
      if (p == 0) {
        store(to.low.first + i, load(from.low.first + i));
      } else {
        store(to.high.first + i, static_cast<T>(load(from.high.first + i) / 2));
      }
    }
  } else if (W::kHasPairs && length == 2) {
    for (ptrdiff_t i = 0; i < lanes; ++i) {
      const Orb32s difference = load(from.high.first + i);
      const T low = static_cast<T>(load(from.low.first + i) - ((difference + 1) >> 1));
      store(to.low.first + i, low);
      store(to.high.first + i, static_cast<T>(difference + low));
    }
  } else {
    const ptrdiff_t lows = lowCount(length, p);
    orbLiftLine<typename W::Inverse>(ReflectedSource<From>{from, length, p}, to, lows,
                                     length - lows, lanes, p);
  }
}

// ---- Tiles

// A line that is transformed in its place is copied first: to the stack, or to what the caller gave
// if it is too long for that.
template <class T>
class LineCopy {
 public:
  explicit LineCopy(void* buffer) : buffer_(static_cast<T*>(buffer)) {}

  // How many columns of this length may be taken at once.
  static ptrdiff_t lanesOf(ptrdiff_t length) {
    return limit<ptrdiff_t>(kRoom / length, 1, kMostLanes);
  }

  T* of(ptrdiff_t length) { return length <= kRoom ? room_ : buffer_; }

 private:
  static constexpr ptrdiff_t kRoom = 65536 / sizeof(T);

  T* buffer_;
  alignas(32) T room_[kRoom];
};

// A tile and the parities of its first column and row.
struct Tile {
  ptrdiff_t width;
  ptrdiff_t height;
  ptrdiff_t px;
  ptrdiff_t py;
};

template <class T>
inline void copyColumns(const T* from, ptrdiff_t fromStep, T* to, ptrdiff_t lanes, ptrdiff_t rows) {
  for (ptrdiff_t y = 0; y < rows; ++y) {
    __builtin_memcpy(to + y * lanes, Line<const T>{from, fromStep}.at(y), lanes * sizeof(T));
  }
}

template <class W, class T>
inline void orbForwardTileInPlace(T* image, ptrdiff_t step, Tile tile, void* buffer) {
  LineCopy<T> copy(buffer);
  const ptrdiff_t most = copy.lanesOf(tile.height);
  for (ptrdiff_t x = 0; x < tile.width; x += most) {
    const ptrdiff_t lanes = limit<ptrdiff_t>(tile.width - x, 0, most);
    T* const columns = copy.of(tile.height);
    copyColumns<T>(image + x, step, columns, lanes, tile.height);
    orbForwardLine<W>(alternating<const T>(columns, lanes * sizeof(T), tile.py),
                      bandsInPlace(image + x, step, tile.height, tile.py), tile.height, lanes,
                      tile.py);
  }
  for (ptrdiff_t y = 0; y < tile.height; ++y) {
    T* const row = Line<T>{image, step}.at(y);
    T* const copied = copy.of(tile.width);
    __builtin_memcpy(copied, row, tile.width * sizeof(T));
    orbForwardLine<W>(alternating<const T>(copied, sizeof(T), tile.px),
                      bandsInPlace(row, sizeof(T), tile.width, tile.px), tile.width, 1, tile.px);
  }
}

template <class W, class T>
inline void orbInverseTileInPlace(T* image, ptrdiff_t step, Tile tile, void* buffer) {
  LineCopy<T> copy(buffer);
  for (ptrdiff_t y = 0; y < tile.height; ++y) {
    T* const row = Line<T>{image, step}.at(y);
    T* const copied = copy.of(tile.width);
    __builtin_memcpy(copied, row, tile.width * sizeof(T));
    orbInverseLine<W>(bandsInPlace<const T>(copied, sizeof(T), tile.width, tile.px),
                      alternating(row, sizeof(T), tile.px), tile.width, 1, tile.px);
  }
  const ptrdiff_t most = copy.lanesOf(tile.height);
  for (ptrdiff_t x = 0; x < tile.width; x += most) {
    const ptrdiff_t lanes = limit<ptrdiff_t>(tile.width - x, 0, most);
    T* const columns = copy.of(tile.height);
    copyColumns<T>(image + x, step, columns, lanes, tile.height);
    orbInverseLine<W>(bandsInPlace<const T>(columns, lanes * sizeof(T), tile.height, tile.py),
                      alternating(image + x, step, tile.py), tile.height, lanes, tile.py);
  }
}

// The four sub-bands in planes of their own. Where they are cut from the transformed image depends
// on its size alone, not on its place.
template <class T>
struct BandPlanes {
  T* const* first;
  const Orb32s* step;

  // The low and the high part of a row of the transformed image.
  LinePair<T> row(ptrdiff_t y, ptrdiff_t height) const {
    const ptrdiff_t lowRows = (height + 1) >> 1;
    const int low = y < lowRows ? 0 : 1;
    const ptrdiff_t inBand = y < lowRows ? y : y - lowRows;
    return {{rowAt(first[low], step[low], inBand), sizeof(T)},
            {rowAt(first[low + 2], step[low + 2], inBand), sizeof(T)}};
  }
};

// Both work on an image of their own at the start of the buffer, and the lines' copy lies behind
// it.
template <class W, class T>
inline void orbForwardTile(const T* src, ptrdiff_t srcStep, BandPlanes<T> bands, Tile tile,
                           Orb8u* buffer, ptrdiff_t bufferStep) {
  T* const image = reinterpret_cast<T*>(buffer);
  for (ptrdiff_t x = 0; x < tile.width; x += kMostLanes) {
    orbForwardLine<W>(alternating(src + x, srcStep, tile.py),
                      bandsInPlace(image + x, bufferStep, tile.height, tile.py), tile.height,
                      limit<ptrdiff_t>(tile.width - x, 0, kMostLanes), tile.py);
  }
  LineCopy<T> copy(buffer + bufferStep * tile.height);
  T* const row = copy.of(tile.width);
  const ptrdiff_t lows = (tile.width + 1) >> 1;
  for (ptrdiff_t y = 0; y < tile.height; ++y) {
    orbForwardLine<W>(alternating<const T>(Line<T>{image, bufferStep}.at(y), sizeof(T), tile.px),
                      bandsInPlace(row, sizeof(T), tile.width, tile.px), tile.width, 1, tile.px);
    const LinePair<T> to = bands.row(y, tile.height);
    __builtin_memcpy(to.low.first, row, lows * sizeof(T));
    __builtin_memcpy(to.high.first, row + lows, (tile.width - lows) * sizeof(T));
  }
}

template <class W, class T>
inline void orbInverseTile(BandPlanes<const T> bands, T* dst, ptrdiff_t dstStep, Tile tile,
                           Orb8u* buffer, ptrdiff_t bufferStep) {
  T* const image = reinterpret_cast<T*>(buffer);
  LineCopy<T> copy(buffer + bufferStep * tile.height);
  T* const row = copy.of(tile.width);
  const ptrdiff_t lows = (tile.width + 1) >> 1;
  for (ptrdiff_t y = 0; y < tile.height; ++y) {
    const LinePair<const T> from = bands.row(y, tile.height);
    __builtin_memcpy(row, from.low.first, lows * sizeof(T));
    __builtin_memcpy(row + lows, from.high.first, (tile.width - lows) * sizeof(T));
    orbInverseLine<W>(bandsInPlace<const T>(row, sizeof(T), tile.width, tile.px),
                      alternating(Line<T>{image, bufferStep}.at(y), sizeof(T), tile.px), tile.width,
                      1, tile.px);
  }
  for (ptrdiff_t x = 0; x < tile.width; x += kMostLanes) {
    orbInverseLine<W>(bandsInPlace<const T>(image + x, bufferStep, tile.height, tile.py),
                      alternating(dst + x, dstStep, tile.py), tile.height,
                      limit<ptrdiff_t>(tile.width - x, 0, kMostLanes), tile.py);
  }
}

}  // namespace orb::ORB_BUILD::plain

#endif
