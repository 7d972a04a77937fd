// The DCT of a block in single precision, with quantisation, for samples of 12 bits.
//
// The passes are those of the transform in integers (dct.h), without its rounding points.
#ifndef ORB_JPEG_PX_DCT_FLOAT_H
#define ORB_JPEG_PX_DCT_FLOAT_H

#include "frame/arith.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD::plain {

// The cosine and the sine of i pi / 16.
constexpr Orb32f kC1f = 0.9807852804f;
constexpr Orb32f kS1f = 0.1950903220f;
constexpr Orb32f kC3f = 0.8314696123f;
constexpr Orb32f kS3f = 0.5555702330f;
constexpr Orb32f kSqrt2f = 1.4142135624f;
constexpr Orb32f kSqrt2C2f = 1.3065629649f;
constexpr Orb32f kSqrt2S2f = 0.5411961001f;

// One row or column of the forward transform, times the square root of 8.
inline void orbFdct8f(const Orb32f* x, Orb32f* o, int stride) {
  const Orb32f s07 = x[0 * stride] + x[7 * stride], d07 = x[0 * stride] - x[7 * stride];
  const Orb32f s16 = x[1 * stride] + x[6 * stride], d16 = x[1 * stride] - x[6 * stride];
  const Orb32f s25 = x[2 * stride] + x[5 * stride], d25 = x[2 * stride] - x[5 * stride];
  const Orb32f s34 = x[3 * stride] + x[4 * stride], d34 = x[3 * stride] - x[4 * stride];

  const Orb32f a = s07 + s34;
  const Orb32f b = s07 - s34;
  const Orb32f c = s16 + s25;
  const Orb32f d = s16 - s25;
  o[0 * stride] = a + c;
  o[4 * stride] = a - c;
  o[2 * stride] = b * kSqrt2C2f + d * kSqrt2S2f;
  o[6 * stride] = b * kSqrt2S2f - d * kSqrt2C2f;

  const Orb32f p = d34 * kSqrt2f;
  const Orb32f q = d07 * kSqrt2f;
  const Orb32f r = d16 - d25;
  const Orb32f u = d16 + d25;
  const Orb32f e = p + r;
  const Orb32f f = p - r;
  const Orb32f g = q + u;
  const Orb32f h = q - u;
  o[1 * stride] = g * kC1f + e * kS1f;
  o[7 * stride] = g * kS1f - e * kC1f;
  o[3 * stride] = h * kC3f - f * kS3f;
  o[5 * stride] = h * kS3f + f * kC3f;
}

// One column of the inverse transform, into a row, times the square root of 8.
inline void orbIdct8f(const Orb32f* x, Orb32f* o) {
  const Orb32f a = x[24] * kC3f + x[40] * kS3f;
  const Orb32f b = x[40] * kC3f - x[24] * kS3f;
  const Orb32f c = x[8] * kC1f + x[56] * kS1f;
  const Orb32f d = x[8] * kS1f - x[56] * kC1f;
  const Orb32f e = d - b;
  const Orb32f f = c - a;
  const Orb32f g = f + e;
  const Orb32f h = f - e;
  const Orb32f outer = (a + c) * kSqrt2f;
  const Orb32f inner = (b + d) * kSqrt2f;

  const Orb32f p = x[0] + x[32];
  const Orb32f q = x[0] - x[32];
  const Orb32f i = x[16] * kSqrt2C2f + x[48] * kSqrt2S2f;
  const Orb32f j = x[16] * kSqrt2S2f - x[48] * kSqrt2C2f;
  const Orb32f e0 = p + i;
  const Orb32f e3 = p - i;
  const Orb32f e1 = q + j;
  const Orb32f e2 = q - j;
  o[0] = e0 + outer;
  o[7] = e0 - outer;
  o[1] = e1 + g;
  o[6] = e1 - g;
  o[2] = e2 + h;
  o[5] = e2 - h;
  o[3] = e3 + inner;
  o[4] = e3 - inner;
}

// Eight times the transforms of ITU-T T.81 A.3.3.
inline void orbFdct8x8f(const Orb32f* src, Orb32f* dst) {
  alignas(32) Orb32f rows[64];
  for (int y = 0; y < 8; ++y) orbFdct8f(src + 8 * y, rows + 8 * y, 1);
  for (int x = 0; x < 8; ++x) orbFdct8f(rows + x, dst + x, 8);
}
inline void orbIdct8x8f(const Orb32f* src, Orb32f* dst) {
  alignas(32) Orb32f turned[64];
  for (int x = 0; x < 8; ++x) orbIdct8f(src + x, turned + 8 * x);
  for (int y = 0; y < 8; ++y) orbIdct8f(turned + y, dst + 8 * y);
}

inline void orbDctQuantFwd8x8Ls(const Orb16u* src, Orb32s srcStep, Orb16s* dst,
                                const Orb32f* table) {
  alignas(32) Orb32f block[64];
  for (int y = 0; y < 8; ++y) {
    const Orb16u* row = rowAt(src, srcStep, y);
    for (int x = 0; x < 8; ++x) block[8 * y + x] = static_cast<Orb32f>(load(row + x) - 2048);
  }
  orbFdct8x8f(block, block);
  for (int i = 0; i < 64; ++i) {
    const Orb32f value = block[i] * 0.125f * load(table + i);
    store(dst + i, static_cast<Orb16s>(roundToEven(limit(value, -32768.0f, 32767.0f))));
  }
}

inline void orbDctQuantInv8x8Ls(const Orb16s* src, Orb16u* dst, Orb32s dstStep,
                                const Orb32f* table) {
  alignas(32) Orb32f block[64];
  for (int i = 0; i < 64; ++i) {
    block[i] = static_cast<Orb32f>(load(src + i)) * load(table + i) * 0.125f;
  }
  orbIdct8x8f(block, block);
  for (int y = 0; y < 8; ++y) {
    Orb16u* row = rowAt(dst, dstStep, y);
    for (int x = 0; x < 8; ++x) {
      const Orb32f value = limit(block[8 * y + x] + 2048.0f, 0.0f, 4095.0f);
      store(row + x, static_cast<Orb16u>(roundToEven(value)));
    }
  }
}

}  // namespace orb::ORB_BUILD::plain

#endif
