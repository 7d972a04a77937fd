// The DCT of a block in integers, with quantisation: what the functions mean.
//
// A transform is two passes of a one-dimensional butterfly. The first pass leaves three bits of
// fraction in the words between the passes, and the second takes them away again. Its rounding
// points are part of the result: sums of 32 bits wrap, and the words between the passes keep the
// low 16 bits. Neither can happen to a block that comes from samples of 8 bits.
#ifndef ORB_JPEG_PX_DCT_H
#define ORB_JPEG_PX_DCT_H

#include "frame/arith.h"
#include "frame/memory_access.h"
#include "jpeg/px/quant.h"

namespace orb::ORB_BUILD::plain {

// The bits that a pass drops from its sums, which have 15 bits of fraction more than its inputs.
// The first leaves three of them; the second drops all, and three more for the scale of both
// passes.
constexpr int kFirstPass = 12;
constexpr int kSecondPass = 21;

template <int kDropped>
inline Orb32s rounded(Orb32s value) {
  return (value + (1 << (kDropped - 1))) >> kDropped;
}

// Factors with 15 bits of fraction. Ci and Si are the cosine and the sine of i pi / 16.
constexpr Orb32s kSqrt2 = 46341;
constexpr Orb32s kC1 = 32138;
constexpr Orb32s kS1 = 6393;
constexpr Orb32s kC3 = 27246;
constexpr Orb32s kS3 = 18205;
constexpr Orb32s kC1PlusS1 = 38531;
constexpr Orb32s kC1MinusS1 = 25746;  // rounded on its own: kC1 - kS1 is one less
constexpr Orb32s kC3PlusS3 = 45451;
constexpr Orb32s kC3MinusS3 = 9041;
constexpr Orb32s kSqrt2C2 = 42813;
constexpr Orb32s kSqrt2S2 = 17734;
constexpr Orb32s kSqrt2C2PlusS2 = 60547;
constexpr Orb32s kSqrt2C2MinusS2 = 25080;  // rounded on its own as well

// Factors with 12 bits of fraction.
constexpr Orb32s kSqrt2In12 = 5793;
constexpr Orb32s kS1In12 = 799;
constexpr Orb32s kC1PlusS1In12 = 4816;
constexpr Orb32s kC1MinusS1In12 = 3218;
constexpr Orb32s kC3In12 = 3406;
constexpr Orb32s kC3PlusS3In12 = 5681;
constexpr Orb32s kC3MinusS3In12 = 1130;

// One row or column of the forward transform, times the square root of 8.
template <int kDropped>
inline void orbFdct8(const Orb16s* x, Orb16s* o, int stride) {
  const Orb32s x0 = x[0 * stride], x1 = x[1 * stride], x2 = x[2 * stride], x3 = x[3 * stride];
  const Orb32s x4 = x[4 * stride], x5 = x[5 * stride], x6 = x[6 * stride], x7 = x[7 * stride];

  const Orb32s a = x0 + x7 + x3 + x4;
  const Orb32s b = x0 + x7 - x3 - x4;
  const Orb32s c = x1 + x6 + x2 + x5;
  const Orb32s d = x1 + x6 - x2 - x5;
  if (kDropped == kFirstPass) {
    o[0 * stride] = wrap16s((a + c) * 8);
    o[4 * stride] = wrap16s((a - c) * 8);
  } else {
    o[0 * stride] = wrap16s(rounded<6>(a + c));
    o[4 * stride] = wrap16s(rounded<6>(a - c));
  }
  const Orb32s t = (b + d) * kSqrt2S2;
  o[2 * stride] = wrap16s(rounded<kDropped>(b * kSqrt2C2MinusS2 + t));
  o[6 * stride] = wrap16s(rounded<kDropped>(t - d * kSqrt2C2PlusS2));

  const Orb32s p = rounded<12>((x3 - x4) * kSqrt2);
  const Orb32s q = rounded<12>((x0 - x7) * kSqrt2);
  const Orb32s r = (x1 - x6 - x2 + x5) * 8;
  const Orb32s u = (x1 - x6 + x2 - x5) * 8;
  const Orb32s e = r + p;
  const Orb32s f = p - r;
  const Orb32s g = u + q;
  const Orb32s h = q - u;
  const Orb32s w = (g + e) * kS1In12;
  const Orb32s z = (h + f) * kC3In12;
  o[1 * stride] = wrap16s(rounded<kDropped>(w + g * kC1MinusS1In12));
  o[7 * stride] = wrap16s(rounded<kDropped>(w - e * kC1PlusS1In12));
  o[3 * stride] = wrap16s(rounded<kDropped>(z - f * kC3PlusS3In12));
  o[5 * stride] = wrap16s(rounded<kDropped>(z - h * kC3MinusS3In12));
}

// The forward transform with the scaling of ITU-T T.81 A.3.3, rows first.
inline void orbFdct8x8(const Orb16s* src, Orb16s* dst) {
  alignas(32) Orb16s rows[64];
  for (int y = 0; y < 8; ++y) orbFdct8<kFirstPass>(src + 8 * y, rows + 8 * y, 1);
  for (int x = 0; x < 8; ++x) orbFdct8<kSecondPass>(rows + x, dst + x, 8);
}

// The passes of the inverse read a column, x[8 * k], and write a row, so two of them leave the
// block the right way round: the first goes over the columns, the second over the rows. The
// compiler makes vectors over the eight of each.

// One column of the inverse transform, times the square root of 8.
template <int kDropped>
inline void orbIdct8(const Orb16s* x, Orb16s* o) {
  const Orb32s x0 = x[0], x1 = x[8], x2 = x[16], x3 = x[24];
  const Orb32s x4 = x[32], x5 = x[40], x6 = x[48], x7 = x[56];

  const Orb32s m = (x5 + x3) * kC3;
  const Orb32s a = m - x5 * kC3MinusS3;
  const Orb32s b = m - x3 * kC3PlusS3;
  const Orb32s n = (x1 + x7) * kS1;
  const Orb32s c = n + x1 * kC1MinusS1;
  const Orb32s d = n - x7 * kC1PlusS1;
  const Orb32s e = d - b;
  const Orb32s f = c - a;
  const Orb32s g = f + e;
  const Orb32s h = f - e;
  const Orb32s outer = rounded<12>(a + c) * kSqrt2In12;
  const Orb32s inner = rounded<12>(b + d) * kSqrt2In12;

  const Orb32s p = (x0 + x4) * 32768;
  const Orb32s q = (x0 - x4) * 32768;
  const Orb32s k = (x2 + x6) * kSqrt2S2;
  const Orb32s i = k + x2 * kSqrt2C2MinusS2;
  const Orb32s j = k - x6 * kSqrt2C2PlusS2;
  o[0] = wrap16s(rounded<kDropped>(p + i + outer));
  o[7] = wrap16s(rounded<kDropped>(p + i - outer));
  o[1] = wrap16s(rounded<kDropped>(q + j + g));
  o[6] = wrap16s(rounded<kDropped>(q + j - g));
  o[2] = wrap16s(rounded<kDropped>(q - j + h));
  o[5] = wrap16s(rounded<kDropped>(q - j - h));
  o[3] = wrap16s(rounded<kDropped>(p - i + inner));
  o[4] = wrap16s(rounded<kDropped>(p - i - inner));
}

// The inverse transform with the scaling of ITU-T T.81 A.3.3, columns first.
inline void orbIdct8x8(const Orb16s* src, Orb16s* dst) {
  alignas(32) Orb16s turned[64];
  for (int x = 0; x < 8; ++x) orbIdct8<kFirstPass>(src + x, turned + 8 * x);
  for (int y = 0; y < 8; ++y) orbIdct8<kSecondPass>(turned + y, dst + 8 * y);
}

// orbIdct8 where only the first two of the column may differ from 0.
template <int kDropped>
inline void orbIdct8From2(const Orb16s* x, Orb16s* o) {
  const Orb32s x1 = x[8];
  const Orb32s a = x[0] * 32768;
  const Orb32s k1 = rounded<12>(x1 * kC1) * kSqrt2In12;
  const Orb32s k7 = rounded<12>(x1 * kS1) * kSqrt2In12;
  const Orb32s sum = x1 * kC1PlusS1;
  const Orb32s difference = x1 * (kC1 - kS1);
  o[0] = wrap16s(rounded<kDropped>(a + k1));
  o[7] = wrap16s(rounded<kDropped>(a - k1));
  o[1] = wrap16s(rounded<kDropped>(a + sum));
  o[6] = wrap16s(rounded<kDropped>(a - sum));
  o[2] = wrap16s(rounded<kDropped>(a + difference));
  o[5] = wrap16s(rounded<kDropped>(a - difference));
  o[3] = wrap16s(rounded<kDropped>(a + k7));
  o[4] = wrap16s(rounded<kDropped>(a - k7));
}

// orbIdct8 where only the first four of the column may differ from 0.
template <int kDropped>
inline void orbIdct8From4(const Orb16s* x, Orb16s* o) {
  const Orb32s x1 = x[8], x2 = x[16], x3 = x[24];
  const Orb32s a = x1 * kC1 - x3 * kC3;
  const Orb32s b = x1 * kS1 + x3 * kS3;
  const Orb32s c = rounded<12>(x1 * kS1 - x3 * kS3) * kSqrt2In12;
  const Orb32s d = rounded<12>(x1 * kC1 + x3 * kC3) * kSqrt2In12;
  const Orb32s e = a + b;
  const Orb32s f = a - b;
  const Orb32s h = x[0] * 32768;
  const Orb32s p = x2 * kSqrt2C2;
  const Orb32s q = x2 * kSqrt2S2;
  o[0] = wrap16s(rounded<kDropped>(h + p + d));
  o[7] = wrap16s(rounded<kDropped>(h + p - d));
  o[1] = wrap16s(rounded<kDropped>(h + q + e));
  o[6] = wrap16s(rounded<kDropped>(h + q - e));
  o[2] = wrap16s(rounded<kDropped>(h - q + f));
  o[5] = wrap16s(rounded<kDropped>(h - q - f));
  o[3] = wrap16s(rounded<kDropped>(h - p + c));
  o[4] = wrap16s(rounded<kDropped>(h - p - c));
}

// The mean of each half of orbIdct8's row. The even inputs but the first cancel out in it. The
// factors have 16 bits of fraction; that of the sixth is one below the nearest.
template <int kDropped>
inline void orbIdct8To2(const Orb16s* x, Orb16s* o) {
  const Orb32s s = x[0] * 65536;
  const Orb32s t = x[8] * 59384 - x[24] * 20853 + x[40] * 13932 - x[56] * 11812;
  o[0] = wrap16s(rounded<kDropped + 1>(s + t));
  o[1] = wrap16s(rounded<kDropped + 1>(s - t));
}

// The mean of each pair of orbIdct8's row. The fifth input cancels out in it.
template <int kDropped>
inline void orbIdct8To4(const Orb16s* x, Orb16s* o) {
  const Orb32s x1 = x[8], x3 = x[24], x5 = x[40], x7 = x[56];
  const Orb32s e = x1 * 41991 + x3 * 14745 - x5 * 9852 - x7 * 8352;
  const Orb32s f = x1 * 17393 - x3 * 35598 + x5 * 23786 - x7 * 3460;
  const Orb32s g = x[16] * 30274 - x[48] * 12540;
  const Orb32s h = x[0] * 32768;
  o[0] = wrap16s(rounded<kDropped>(h + g + e));
  o[3] = wrap16s(rounded<kDropped>(h + g - e));
  o[1] = wrap16s(rounded<kDropped>(h - g + f));
  o[2] = wrap16s(rounded<kDropped>(h - g - f));
}

// Source and destination may be the same block.
inline void orbDctQuantFwd8x8(const Orb16s* src, Orb16s* dst, const Orb16u* table) {
  alignas(32) Orb16s block[64];
  __builtin_memcpy(block, static_cast<const void*>(src), sizeof block);
  orbFdct8x8(block, block);
  orbQuantFwd8x8(block, dst, table);
}

inline void orbDctQuantFwd8x8Ls(const Orb8u* src, Orb32s srcStep, Orb16s* dst,
                                const Orb16u* table) {
  alignas(32) Orb16s block[64];
  for (int y = 0; y < 8; ++y) orbSub128Row(rowAt(src, srcStep, y), block + 8 * y, 8);
  orbFdct8x8(block, block);
  orbQuantFwd8x8(block, dst, table);
}

// Source and destination may be the same block.
inline void orbDctQuantInv8x8(const Orb16s* src, Orb16s* dst, const Orb16u* table) {
  alignas(32) Orb16s block[64];
  orbDequant(src, block, table);
  orbIdct8x8(block, block);
  __builtin_memcpy(static_cast<void*>(dst), block, sizeof block);
}

// Stores a block of kSide rows of kSide values as samples.
template <int kSide>
inline void storeSamples(const Orb16s* block, Orb8u* dst, Orb32s dstStep) {
  Orb8u samples[kSide * kSide];
  orbAdd128Row(block, samples, kSide * kSide);
  for (int y = 0; y < kSide; ++y) {
    __builtin_memcpy(rowAt(dst, dstStep, y), samples + kSide * y, kSide);
  }
}

inline void orbDctQuantInv8x8Ls(const Orb16s* src, Orb8u* dst, Orb32s dstStep,
                                const Orb16u* table) {
  alignas(32) Orb16s block[64];
  orbDequant(src, block, table);
  orbIdct8x8(block, block);
  storeSamples<8>(block, dst, dstStep);
}

// The table's entry counts as unsigned here, and the product is not limited.
inline void orbDctQuantInv8x8Ls1x1(const Orb16s* src, Orb8u* dst, Orb32s dstStep,
                                   const Orb16u* table) {
  const Orb8u sample = saturate8u((load(src) * load(table) >> 3) + 128);
  for (int y = 0; y < 8; ++y) __builtin_memset(rowAt(dst, dstStep, y), sample, 8);
}

inline void orbDctQuantInv8x8Ls2x2(const Orb16s* src, Orb8u* dst, Orb32s dstStep,
                                   const Orb16u* table) {
  alignas(32) Orb16s block[64];
  alignas(32) Orb16s turned[2 * 8];
  orbDequant(src, block, table);
  for (int x = 0; x < 2; ++x) orbIdct8From2<kFirstPass>(block + x, turned + 8 * x);
  for (int y = 0; y < 8; ++y) orbIdct8From2<kSecondPass>(turned + y, block + 8 * y);
  storeSamples<8>(block, dst, dstStep);
}

inline void orbDctQuantInv8x8Ls4x4(const Orb16s* src, Orb8u* dst, Orb32s dstStep,
                                   const Orb16u* table) {
  alignas(32) Orb16s block[64];
  alignas(32) Orb16s turned[64];
  orbDequant(src, block, table);
  // The last four columns are not used, but make whole vectors.
  for (int x = 0; x < 8; ++x) orbIdct8From4<kFirstPass>(block + x, turned + 8 * x);
  for (int y = 0; y < 8; ++y) orbIdct8From4<kSecondPass>(turned + y, block + 8 * y);
  storeSamples<8>(block, dst, dstStep);
}

inline void orbDctQuantInv8x8To2x2Ls(const Orb16s* src, Orb8u* dst, Orb32s dstStep,
                                     const Orb16u* table) {
  alignas(32) Orb16s block[64];
  alignas(32) Orb16s turned[64];
  orbDequant(src, block, table);
  for (int x = 0; x < 8; ++x) orbIdct8To2<kFirstPass>(block + x, turned + 8 * x);
  for (int y = 0; y < 2; ++y) orbIdct8To2<kSecondPass>(turned + y, block + 2 * y);
  storeSamples<2>(block, dst, dstStep);
}

inline void orbDctQuantInv8x8To4x4Ls(const Orb16s* src, Orb8u* dst, Orb32s dstStep,
                                     const Orb16u* table) {
  alignas(32) Orb16s block[64];
  alignas(32) Orb16s turned[64];
  orbDequant(src, block, table);
  for (int x = 0; x < 8; ++x) orbIdct8To4<kFirstPass>(block + x, turned + 8 * x);
    // Vectors of four words would cost more than they save.
#pragma GCC unroll 4
  for (int y = 0; y < 4; ++y) orbIdct8To4<kSecondPass>(turned + y, block + 4 * y);
  storeSamples<4>(block, dst, dstStep);
}

}  // namespace orb::ORB_BUILD::plain

#endif
