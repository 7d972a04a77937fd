// JPEG colour conversion: what the functions mean.
//
// A function is one row loop over three things: an image to read, an image to write, and the
// arithmetic between them. An image is its first sample and its step; at(x, y) is the same image
// begun at another pixel, and read(x) and write(x) take a pixel of its first row. That a chroma
// sample serves two or four pixels, or is made of them, is a way to read or write too.
#ifndef ORB_JPEG_PX_COLOR_H
#define ORB_JPEG_PX_COLOR_H

#include "frame/arith.h"
#include "frame/memory_access.h"
#include "jpeg/tables/color.h"

namespace orb::ORB_BUILD {

struct Rgb {
  Orb32s r, g, b;
};
struct YCbCr {
  Orb32s y, cb, cr;
};

constexpr Rgb operator+(Rgb p, Rgb q) {
  return {p.r + q.r, p.g + q.g, p.b + q.b};
}

// ---- Images

enum class Order { rgb, bgr };

// Three bytes of each pixel's kChannels. The fourth is left alone here.
template <class Byte, Order kOrder, int kChannels>
struct InterleavedImage {
  static constexpr int kRed = kOrder == Order::rgb ? 0 : 2;
  static constexpr int kBlue = 2 - kRed;

  Byte* first;
  Orb32s step;

  InterleavedImage at(ptrdiff_t x, Orb32s y) const {
    return {rowAt(first, step, y) + x * kChannels, step};
  }
  Rgb read(ptrdiff_t x) const {
    const Byte* pixel = first + x * kChannels;
    return {pixel[kRed], pixel[1], pixel[kBlue]};
  }
  void write(ptrdiff_t x, Rgb value) const {
    Byte* pixel = first + x * kChannels;
    pixel[kRed] = wrap8u(value.r);
    pixel[1] = wrap8u(value.g);
    pixel[kBlue] = wrap8u(value.b);
  }
  Byte& fourth(ptrdiff_t x) const { return first[x * kChannels + 3]; }

  bool anyNull() const { return !first; }
};

// Four bytes for each pixel, the fourth always the same. Written only.
template <Order kOrder>
struct AlphaImage {
  Orb8u* first;
  Orb32s step;
  Orb8u alpha;

  AlphaImage at(ptrdiff_t x, Orb32s y) const {
    return {rowAt(first, step, y) + x * 4, step, alpha};
  }
  void write(ptrdiff_t x, Rgb value) const {
    const Orb32s low = kOrder == Order::rgb ? value.r : value.b;
    const Orb32s high = kOrder == Order::rgb ? value.b : value.r;
    const Orb32u word = static_cast<Orb32u>(low | value.g << 8 | high << 16 | alpha << 24);
    store(reinterpret_cast<Orb32u*>(first + x * 4), word);
  }

  bool anyNull() const { return !first; }
};

// Words of 5 + 5 + 5 or 5 + 6 + 5 bits, red or blue lowest. A field holds the top bits of a sample.
template <class Word, Order kOrder, int kGreenBits>
struct PackedImage {
  static constexpr Orb32s kGreenMask = 0x100 - (1 << (8 - kGreenBits));

  Word* first;
  Orb32s step;

  PackedImage at(ptrdiff_t x, Orb32s y) const { return {rowAt(first, step, y) + x, step}; }
  Rgb read(ptrdiff_t x) const {
    const Orb32s word = load(first + x);
    const Orb32s low = (word << 3) & 0xF8;
    const Orb32s green = (word >> 5 << (8 - kGreenBits)) & kGreenMask;
    const Orb32s high = (word >> (5 + kGreenBits) << 3) & 0xF8;
    return kOrder == Order::rgb ? Rgb{low, green, high} : Rgb{high, green, low};
  }
  void write(ptrdiff_t x, Rgb value) const {
    const Orb32s low = kOrder == Order::rgb ? value.r : value.b;
    const Orb32s high = kOrder == Order::rgb ? value.b : value.r;
    const Orb32s word = (low >> 3) | ((value.g & kGreenMask) << (kGreenBits - 3)) |
                        ((high & 0xF8) << (kGreenBits + 2));
    store(first + x, static_cast<Orb16u>(word));
  }

  bool anyNull() const { return !first; }
};

// One plane for each component; a fourth, of four, holds black.
template <class Pixel, class Byte, int kPlanes>
struct PlanarImage {
  Byte* plane[kPlanes];
  Orb32s step[kPlanes];

  PlanarImage at(ptrdiff_t x, Orb32s y) const {
    PlanarImage moved = *this;
    for (int i = 0; i < kPlanes; ++i) moved.plane[i] = rowAt(plane[i], step[i], y) + x;
    return moved;
  }
  Pixel read(ptrdiff_t x) const { return {plane[0][x], plane[1][x], plane[2][x]}; }
  void write(ptrdiff_t x, Pixel value) const {
    const auto [a, b, c] = value;
    plane[0][x] = wrap8u(a);
    plane[1][x] = wrap8u(b);
    plane[2][x] = wrap8u(c);
  }
  Byte& fourth(ptrdiff_t x) const { return plane[3][x]; }

  bool anyNull() const {
    for (int i = 0; i < kPlanes; ++i) {
      if (!plane[i]) return true;
    }
    return false;
  }
};

using YccPlanes = PlanarImage<YCbCr, Orb8u, 3>;
using ConstYccPlanes = PlanarImage<YCbCr, const Orb8u, 3>;

// Planes whose chroma sample serves two pixels of a row, and kRows rows. Begun at even columns.
template <Orb32s kRows>
struct SharedChromaImage {
  ConstYccPlanes planes;

  SharedChromaImage at(ptrdiff_t x, Orb32s y) const {
    const auto& [plane, step] = planes;
    return {{{rowAt(plane[0], step[0], y) + x, rowAt(plane[1], step[1], y / kRows) + x / 2,
              rowAt(plane[2], step[2], y / kRows) + x / 2},
             {step[0], step[1], step[2]}}};
  }
  YCbCr read(ptrdiff_t x) const {
    return {planes.plane[0][x], planes.plane[1][x >> 1], planes.plane[2][x >> 1]};
  }
};

// The same of one row, in four bytes for two pixels: Y, Cb, Y, Cr. Begun at even columns.
struct YccPairsImage {
  const Orb8u* first;
  Orb32s step;

  YccPairsImage at(ptrdiff_t x, Orb32s y) const { return {rowAt(first, step, y) + x * 2, step}; }
  YCbCr read(ptrdiff_t x) const {
    const Orb8u* pair = first + (x >> 1) * 4;
    return {first[x * 2], pair[1], pair[3]};
  }

  bool anyNull() const { return !first; }
};

// The first plane alone. Written only.
struct LumaImage {
  Orb8u* first;
  Orb32s step;

  LumaImage at(ptrdiff_t x, Orb32s y) const { return {rowAt(first, step, y) + x, step}; }
  void write(ptrdiff_t x, YCbCr value) const { first[x] = wrap8u(value.y); }

  bool anyNull() const { return !first; }
};

// The other two. Written only.
struct ChromaImage {
  YccPlanes planes;

  ChromaImage at(ptrdiff_t x, Orb32s y) const { return {planes.at(x, y)}; }
  void write(ptrdiff_t x, YCbCr value) const {
    planes.plane[1][x] = wrap8u(value.cb);
    planes.plane[2][x] = wrap8u(value.cr);
  }
};

// Sums over groups of pixels.
template <class Image, Orb32s kColumns, Orb32s kRows>
struct GroupSumsImage {
  Image pixels;

  GroupSumsImage at(ptrdiff_t x, Orb32s y) const { return {pixels.at(x * kColumns, y * kRows)}; }
  Rgb read(ptrdiff_t x) const {
    Rgb sum = {0, 0, 0};
    for (Orb32s row = 0; row < kRows; ++row) {
      const Image group = pixels.at(x * kColumns, row);
      for (Orb32s column = 0; column < kColumns; ++column) sum = sum + group.read(column);
    }
    return sum;
  }
};

// ---- Arithmetic
//
// There are two in each direction, A and B, whose results differ by one here and there. Their
// equations stand in the public header. Those of A are sums of products from tables here.

namespace plain {

struct ForwardA {
  static YCbCr convert(Rgb p) {
    const auto& t = orbRgbToYccTables;
    return {(t[orbRedToY][p.r] + t[orbGreenToY][p.g] + t[orbBlueToY][p.b]) >> 16,
            (t[orbRedToCb][p.r] + t[orbGreenToCb][p.g] + t[orbBlueToCb][p.b]) >> 16,
            (t[orbRedToCr][p.r] + t[orbGreenToCr][p.g] + t[orbBlueToCr][p.b]) >> 16};
  }
};

struct InverseA {
  static Rgb convert(YCbCr p) {
    return {saturate8u(p.y + orbCrToR[p.cr]),
            saturate8u(p.y + ((orbCbToG[p.cb] + orbCrToG[p.cr]) >> 16)),
            saturate8u(p.y + orbCbToB[p.cb])};
  }
};

}  // namespace plain

// The sums of all forward conversions, of pixels or of sums of pixels, in 16.16.
constexpr Orb32s lumaSum(Rgb p) {
  return 19595 * p.r + 38470 * p.g + 7471 * p.b;
}
constexpr Orb32s cbSum(Rgb p) {
  return 32768 * p.b - 21709 * p.g - 11059 * p.r;
}
constexpr Orb32s crSum(Rgb p) {
  return 32768 * p.r - 27439 * p.g - 5329 * p.b;
}

struct LumaForward {
  static YCbCr convert(Rgb p) { return {(lumaSum(p) + 32768) >> 16, 0, 0}; }
};

// Of the mean of one, two or four pixels, from their sum: kShift is 16, 17 or 18.
template <int kShift, Orb32s kRounding>
struct ChromaForward {
  static YCbCr convert(Rgb sum) {
    constexpr Orb32s kZero = (128 << kShift) + kRounding;
    return {0, (cbSum(sum) + kZero) >> kShift, (crSum(sum) + kZero) >> kShift};
  }
};
using ChromaForwardOfPair = ChromaForward<17, 1 << 14>;
using ChromaForwardOfGroup = ChromaForward<18, 1 << 15>;

template <Orb32s kChromaRounding>
struct ForwardOf {
  static YCbCr convert(Rgb p) {
    const YCbCr chroma = ChromaForward<16, kChromaRounding>::convert(p);
    return {LumaForward::convert(p).y, chroma.cb, chroma.cr};
  }
};
using ForwardB = ForwardOf<1 << 14>;

// From coefficients in 16.16 and rounding terms. Cr in red and Cb in blue count once and by the
// rest of their coefficients, so that all factors fit in words.
template <int kCrToRed, int kCbToGreen, int kCrToGreen, int kCbToBlue, int kRoundRed,
          int kRoundGreen, int kRoundBlue>
struct InverseOf {
  static Rgb convert(YCbCr p) {
    constexpr Orb32s kRed = kRoundRed - 128 * kCrToRed;
    constexpr Orb32s kGreen = kRoundGreen + 128 * (kCbToGreen + kCrToGreen);
    constexpr Orb32s kBlue = kRoundBlue - 128 * kCbToBlue;
    return {saturate8u((65536 * (p.y + p.cr) + (kCrToRed - 65536) * p.cr + kRed) >> 16),
            saturate8u((65536 * p.y - kCbToGreen * p.cb - kCrToGreen * p.cr + kGreen) >> 16),
            saturate8u((65536 * (p.y + p.cb) + (kCbToBlue - 65536) * p.cb + kBlue) >> 16)};
  }
};
using InverseB = InverseOf<91880, 22553, 46801, 116128, 32760, 32816, 32766>;

// The first three of CMYK are the complements of red, green and blue.
template <class Forward>
struct ComplementForward {
  static YCbCr convert(Rgb cmy) {
    return Forward::convert({255 - cmy.r, 255 - cmy.g, 255 - cmy.b});
  }
};
template <class Inverse>
struct ComplementInverse {
  static Rgb convert(YCbCr p) {
    const Rgb rgb = Inverse::convert(p);
    return {255 - rgb.r, 255 - rgb.g, 255 - rgb.b};
  }
};

// ---- Rows

namespace plain {

template <class Conversion, class Source, class Destination>
inline void orbConvertRow(Source src, Destination dst, Orb32s width) {
  for (ptrdiff_t x = 0; x < width; ++x) dst.write(x, Conversion::convert(src.read(x)));
}

}  // namespace plain

template <class Source, class Destination>
inline void orbCopyFourth(Source src, Destination dst, Orb32s width) {
  for (ptrdiff_t x = 0; x < width; ++x) dst.fourth(x) = src.fourth(x);
}

}  // namespace orb::ORB_BUILD

#endif
