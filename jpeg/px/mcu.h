// Between the pixels of a minimum coded unit (MCU) and its blocks: what the functions mean.
//
// A function is one loop over an image of pixels, the blocks in one of three layouts, and the
// arithmetic between them. Images are those of colour conversion.
#ifndef ORB_JPEG_PX_MCU_H
#define ORB_JPEG_PX_MCU_H

#include "jpeg/px/color.h"

namespace orb::ORB_BUILD {

// ---- Layouts

// The pixels of an MCU, and where their values are in a component's blocks.
template <Orb32s kPixelsAcross, Orb32s kPixelsDown>
struct McuLayout {
  static constexpr Orb32s kWidth = kPixelsAcross;
  static constexpr Orb32s kHeight = kPixelsDown;
  static constexpr Orb32s kPixels = kWidth * kHeight;
  // The pixels that share a chroma value.
  static constexpr Orb32s kGroupColumns = kWidth / 8;
  static constexpr Orb32s kGroupRows = kHeight / 8;

  // In a component with a value for each pixel.
  static constexpr ptrdiff_t whole(Orb32s x, Orb32s y) {
    const Orb32s block = (y / 8) * (kWidth / 8) + x / 8;
    return block * 64 + (y % 8) * 8 + x % 8;
  }
  // In a component with a value for each group.
  static constexpr ptrdiff_t shared(Orb32s x, Orb32s y) {
    return (y / kGroupRows) * 8 + x / kGroupColumns;
  }
};
using Mcu444 = McuLayout<8, 8>;
using Mcu422 = McuLayout<16, 8>;
using Mcu411 = McuLayout<16, 16>;

// ---- Images that only MCUs know

// C, M, Y and K: the first three as the complements of red, green and blue.
template <class Byte>
struct CmykImage {
  InterleavedImage<Byte, Order::rgb, 4> inks;

  CmykImage at(ptrdiff_t x, Orb32s y) const { return {inks.at(x, y)}; }
  Rgb read(ptrdiff_t x) const { return complement(inks.read(x)); }
  void write(ptrdiff_t x, Rgb value) const { inks.write(x, complement(value)); }
  Byte& black(ptrdiff_t x) const { return inks.fourth(x); }

 private:
  static constexpr Rgb complement(Rgb p) { return {255 - p.r, 255 - p.g, 255 - p.b}; }
};

// Three channels in four bytes for two pixels, which share the second and third: Y, Cb, Y, Cr.
template <class Byte>
struct SharedPairsImage {
  Byte* first;
  Orb32s step;

  SharedPairsImage at(ptrdiff_t x, Orb32s y) const { return {rowAt(first, step, y) + x * 2, step}; }
  Rgb read(ptrdiff_t x) const { return {first[x * 2], shared(x)[1], shared(x)[3]}; }
  void write(ptrdiff_t x, Rgb value) const {
    first[x * 2] = wrap8u(value.r);
    shared(x)[1] = wrap8u(value.g);
    shared(x)[3] = wrap8u(value.b);
  }

 private:
  Byte* shared(ptrdiff_t x) const { return first + (x >> 1) * 4; }
};

// The components of an MCU that holds such pixels.
template <class Image>
constexpr int kComponents = 3;
template <class Byte>
constexpr int kComponents<CmykImage<Byte>> = 4;

// ---- Arithmetic, with the level shift
//
// Chroma is that of the mean of 1, 2 or 4 pixels, from their sum: kPixels.

namespace plain {

struct ShiftedForward {
  static Orb32s luma(Rgb p) { return (lumaSum(p) >> 16) - 128; }
  template <Orb32s kPixels>
  static YCbCr chroma(Rgb sum) {
    constexpr int kShift = 16 + kPixels / 2;
    return {0, cbSum(sum) >> kShift, crSum(sum) >> kShift};
  }
};

struct ShiftedInverse {
  static Rgb convert(YCbCr p) {
    return {saturate8u(p.y + ((91881 * p.cr) >> 16) + 128),
            saturate8u(p.y + ((-22554 * p.cb - 46802 * p.cr) >> 16) + 128),
            saturate8u(p.y + ((116130 * p.cb) >> 16) + 128)};
  }
};

// The level shift alone: three channels stay what they are.
struct ShiftDown {
  static Orb32s luma(Rgb p) { return p.r - 128; }
  template <Orb32s kPixels>
  static YCbCr chroma(Rgb sum) {
    constexpr int kShift = kPixels / 2;
    return {0, (sum.g - 128 * kPixels) >> kShift, (sum.b - 128 * kPixels) >> kShift};
  }
};

struct ShiftUp {
  static Rgb convert(YCbCr p) {
    return {saturate8u(p.y + 128), saturate8u(p.cb + 128), saturate8u(p.cr + 128)};
  }
};

// ---- Whole MCUs

// Black is never subsampled, and not limited.

template <class Layout, class Conversion, class Source>
inline void orbConvertToMcu(const Source& src, Orb16s* const* mcu) {
  constexpr Orb32s kColumns = Layout::kGroupColumns, kRows = Layout::kGroupRows;
  for (Orb32s y = 0; y < Layout::kHeight; ++y) {
    const Source row = src.at(0, y);
    for (Orb32s x = 0; x < Layout::kWidth; ++x) {
      const ptrdiff_t i = Layout::whole(x, y);
      store(mcu[0] + i, wrap16s(Conversion::luma(row.read(x))));
      if constexpr (kComponents<Source> == 4) store(mcu[3] + i, wrap16s(row.black(x) - 128));
    }
  }
  for (Orb32s y = 0; y < 8; ++y) {
    const auto row = GroupSumsImage<Source, kColumns, kRows>{src}.at(0, y);
    for (Orb32s x = 0; x < 8; ++x) {
      const YCbCr chroma = Conversion::template chroma<kColumns * kRows>(row.read(x));
      store(mcu[1] + y * 8 + x, wrap16s(chroma.cb));
      store(mcu[2] + y * 8 + x, wrap16s(chroma.cr));
    }
  }
}

template <class Layout, class Conversion, class Destination>
inline void orbConvertFromMcu(const Orb16s* const* mcu, const Destination& dst) {
  for (Orb32s y = 0; y < Layout::kHeight; ++y) {
    const Destination row = dst.at(0, y);
    for (Orb32s x = 0; x < Layout::kWidth; ++x) {
      const ptrdiff_t i = Layout::whole(x, y);
      const ptrdiff_t shared = Layout::shared(x, y);
      row.write(
          x, Conversion::convert({load(mcu[0] + i), load(mcu[1] + shared), load(mcu[2] + shared)}));
      if constexpr (kComponents<Destination> == 4) row.black(x) = wrap8u(load(mcu[3] + i) - 128);
    }
  }
}

}  // namespace plain

}  // namespace orb::ORB_BUILD

#endif
