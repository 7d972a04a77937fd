// Video colour (ITU-R BT.601): what the functions mean, a row or a group of rows at a time.
//
// The fields of a packed pixel count as samples of 8 bits whose lowest bits are 0.
#ifndef ORB_SIDE_PX_VIDEO_H
#define ORB_SIDE_PX_VIDEO_H

#include "frame/arith.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD {

struct VideoBgr {
  Orb32s b, g, r;
};

constexpr VideoBgr operator+(VideoBgr p, VideoBgr q) {
  return {p.b + q.b, p.g + q.g, p.r + q.r};
}

// Where the planes of a row, or of the rows that share chroma, begin.
struct VideoPlanes {
  Orb8u* y;
  Orb32s yStep;
  Orb8u* cb;
  Orb8u* cr;
};
struct ConstVideoPlanes {
  const Orb8u* y;
  const Orb8u* cb;
  const Orb8u* cr;
};

namespace plain {

template <int kGreenBits>
constexpr VideoBgr unpackVideo(Orb16u word) {
  const Orb32s greenMask = 0x100 - (1 << (8 - kGreenBits));
  return {word << 3 & 0xF8, word >> 5 << (8 - kGreenBits) & greenMask,
          word >> (5 + kGreenBits) << 3 & 0xF8};
}

template <int kGreenBits>
constexpr Orb16u packVideo(VideoBgr p) {
  return static_cast<Orb16u>(p.b >> 3 | p.g >> (8 - kGreenBits) << 5 |
                             p.r >> 3 << (5 + kGreenBits));
}

// ---- To YCbCr

constexpr Orb8u videoLuma(VideoBgr p) {
  return wrap8u((p.b * 6423 + p.g * 33030 + p.r * 16843 + 0x108000) >> 16);
}

// Of the sum of so many pixels. The zero of chroma is 128, which the low 8 bits have from below.
template <int kPixels>
struct VideoChroma {
  static constexpr Orb32s kShift = kPixels == 1 ? 16 : kPixels == 2 ? 17 : 18;
  static constexpr Orb32s kZero = 0x7FE000 * kPixels;

  static constexpr Orb8u cb(VideoBgr sum) {
    return wrap8u((sum.b * 28770 - sum.g * 19071 - sum.r * 9699 - kZero) >> kShift);
  }
  static constexpr Orb8u cr(VideoBgr sum) {
    return wrap8u((sum.r * 28770 - sum.b * 4653 - sum.g * 24117 - kZero) >> kShift);
  }
};

template <int kGreenBits>
inline void orbVideoLumaRow(const Orb16u* src, Orb8u* y, ptrdiff_t width) {
  for (ptrdiff_t x = 0; x < width; ++x) y[x] = videoLuma(unpackVideo<kGreenBits>(load(src + x)));
}

// kRows rows that share chroma.
template <int kGreenBits, int kRows>
inline void orbVideoToPlanes(const Orb16u* src, Orb32s srcStep, const VideoPlanes& dst,
                             ptrdiff_t width) {
  using Chroma = VideoChroma<2 * kRows>;
  for (ptrdiff_t pair = 0; pair < width / 2; ++pair) {
    VideoBgr sum = {};
    for (int row = 0; row < kRows; ++row) {
      const Orb16u* const pixels = rowAt(src, srcStep, row) + 2 * pair;
      Orb8u* const y = rowAt(dst.y, dst.yStep, row) + 2 * pair;
      const VideoBgr left = unpackVideo<kGreenBits>(load(pixels));
      const VideoBgr right = unpackVideo<kGreenBits>(load(pixels + 1));
      y[0] = videoLuma(left);
      y[1] = videoLuma(right);
      sum = sum + left + right;
    }
    dst.cb[pair] = Chroma::cb(sum);
    dst.cr[pair] = Chroma::cr(sum);
  }
  if (width % 2 == 0) return;
  for (int row = 0; row < kRows; ++row) {
    orbVideoLumaRow<kGreenBits>(rowAt(src, srcStep, row) + width - 1,
                                rowAt(dst.y, dst.yStep, row) + width - 1, 1);
  }
}

template <int kGreenBits>
inline void orbVideoToPairs(const Orb16u* src, Orb8u* dst, ptrdiff_t width) {
  for (; width >= 2; width -= 2, src += 2, dst += 4) {
    const VideoBgr left = unpackVideo<kGreenBits>(load(src));
    const VideoBgr right = unpackVideo<kGreenBits>(load(src + 1));
    dst[0] = videoLuma(left);
    dst[1] = VideoChroma<2>::cb(left + right);
    dst[2] = videoLuma(right);
    dst[3] = VideoChroma<2>::cr(left + right);
  }
  if (width == 0) return;
  const VideoBgr last = unpackVideo<kGreenBits>(load(src));
  dst[0] = videoLuma(last);
  dst[1] = VideoChroma<1>::cb(last);
}

// ---- From YCbCr

constexpr VideoBgr limitVideo(VideoBgr p) {
  return {saturate8u(p.b), saturate8u(p.g), saturate8u(p.r)};
}

// Planes: in 4 fraction bits, with products of 16-bit words of which the upper half counts.
constexpr VideoBgr videoOfPlanes(Orb32s y, Orb32s cb, Orb32s cr) {
  const Orb32s luma = (y * 1220480 - 19527680) >> 16;
  const Orb32s u = cb * 128 - 16384;
  const Orb32s v = cr * 128 - 16384;
  return limitVideo({(luma + (u * 16523 >> 16)) >> 4,
                     (luma - (u * 3211 >> 16) - (v * 6660 >> 16)) >> 4,
                     (luma + (v * 13074 >> 16)) >> 4});
}

// Interleaved pairs: in 16 fraction bits.
constexpr VideoBgr videoOfPairs(Orb32s y, Orb32s cb, Orb32s cr) {
  return limitVideo({(y * 76284 + cb * 132186 - 18140365) >> 16,
                     (y * 76284 - cb * 25690 - cr * 53281 + 8887730) >> 16,
                     (y * 76284 + cr * 104595 - 14608761) >> 16});
}

template <int kGreenBits>
inline void orbVideoOfPlanes(const ConstVideoPlanes& src, Orb16u* dst, ptrdiff_t width) {
  for (ptrdiff_t x = 0; x < width; ++x) {
    const VideoBgr pixel = videoOfPlanes(src.y[x], src.cb[x >> 1], src.cr[x >> 1]);
    store(dst + x, packVideo<kGreenBits>(pixel));
  }
}

// An odd last pixel takes the Cr of the pair in front of it, so there is one.
template <int kGreenBits>
inline void orbVideoOfPairs(const Orb8u* src, Orb16u* dst, ptrdiff_t width) {
  for (; width >= 2; width -= 2, src += 4, dst += 2) {
    store(dst, packVideo<kGreenBits>(videoOfPairs(src[0], src[1], src[3])));
    store(dst + 1, packVideo<kGreenBits>(videoOfPairs(src[2], src[1], src[3])));
  }
  if (width == 1) store(dst, packVideo<kGreenBits>(videoOfPairs(src[0], src[1], src[-1])));
}

// A row of one pixel: three bytes, one sample for both chromas, red first.
inline void orbVideoOfSingle(const Orb8u* src, Orb8u* dst) {
  const VideoBgr pixel = videoOfPairs(src[0], src[1], src[1]);
  dst[0] = wrap8u(pixel.r);
  dst[1] = wrap8u(pixel.g);
  dst[2] = wrap8u(pixel.b);
}

// ---- Words and bytes

inline void orbVideoWordsToBytes(const Orb16u* src, Orb8u* dst, ptrdiff_t width) {
  for (ptrdiff_t x = 0; x < width; ++x) {
    const VideoBgr pixel = unpackVideo<6>(load(src + x));
    dst[3 * x] = wrap8u(pixel.b);
    dst[3 * x + 1] = wrap8u(pixel.g);
    dst[3 * x + 2] = wrap8u(pixel.r);
  }
}

inline void orbVideoBytesToWords(const Orb8u* src, Orb16u* dst, ptrdiff_t width) {
  for (ptrdiff_t x = 0; x < width; ++x) {
    store(dst + x, packVideo<6>({src[3 * x], src[3 * x + 1], src[3 * x + 2]}));
  }
}

}  // namespace plain
}  // namespace orb::ORB_BUILD

#endif
