// The block operations between decoding and samples: what the functions mean.
//
// All sums and products are of 32 bits and wrap; what a stage of a transform writes keeps the low
// 16 bits. A stage takes all of a row or column before it writes there, so it works in place.
#ifndef ORB_DV_PX_TRANSFORM_H
#define ORB_DV_PX_TRANSFORM_H

#include "dv/tables/dct248.h"
#include "frame/arith.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD::plain {

// ---- Forward 2-4-8

// Times tan(pi / 8).
inline Orb32s timesTangent248(Orb32s x) {
  return (x * 27146 + 32768) >> 16;
}

// The four-point transform of a, b, c, d to rows 0, 1, 2 and 3 of the column.
inline void orbFdct4Points(Orb32s a, Orb32s b, Orb32s c, Orb32s d, Orb16s* column) {
  store(column, wrap16s(a + d + b + c));
  store(column + 8, wrap16s(timesTangent248(b - c) + (a - d)));
  store(column + 16, wrap16s((a + d) - (b + c)));
  store(column + 24, wrap16s(timesTangent248(a - d) + (c - b)));
}

// The sums of each two lines go to the upper rows, their differences to the lower ones.
inline void orbFdctColumn248(Orb16s* column) {
  Orb32s r[8];
  for (int k = 0; k < 8; ++k) r[k] = load(column + 8 * k);
  orbFdct4Points(r[0] + r[1], r[2] + r[3], r[4] + r[5], r[6] + r[7], column);
  orbFdct4Points(r[0] - r[1], r[2] - r[3], r[4] - r[5], r[6] - r[7], column + 32);
}

inline void orbFdctRow248(Orb16s* row, const DVRowFactors& f) {
  Orb32s sum[4], difference[4];
  for (int k = 0; k < 4; ++k) {
    const Orb32s left = load(row + k), right = load(row + 7 - k);
    sum[k] = left + right;
    difference[k] = left - right;
  }
  const Orb32s outer = sum[0] + sum[3], inner = sum[1] + sum[2];
  const Orb32s outerSlope = sum[0] - sum[3], innerSlope = sum[1] - sum[2];
  const Orb32s* const m = f.m;
  const Orb32s* const d = difference;
  const Orb32s output[8] = {
      f.a * (outer + inner),
      m[0] * d[0] + m[1] * d[1] + m[2] * d[2] + m[3] * d[3],
      f.c * outerSlope + f.d * innerSlope,
      m[1] * d[0] - m[3] * d[1] - m[0] * d[2] - m[2] * d[3],
      f.a * (outer - inner),
      m[2] * d[0] - m[0] * d[1] + m[3] * d[2] + m[1] * d[3],
      f.d * outerSlope - f.c * innerSlope,
      m[3] * d[0] - m[2] * d[1] + m[1] * d[2] - m[0] * d[3],
  };
  for (int k = 0; k < 8; ++k) store(row + k, wrap16s((output[k] + 32768) >> 16));
}

inline void orbFdct248(Orb16s* block) {
  for (int x = 0; x < 8; ++x) orbFdctColumn248(block + x);
  for (int y = 0; y < 8; ++y) orbFdctRow248(block + 8 * y, kDVRowFactors[y % 2]);
}

// ---- Inverse 2-4-8

// Brings a rotated sum back by 11 bits and times cos(pi / 4) to the scale of the others.
inline Orb32s timesCosine248(Orb32s x) {
  return (((x + 1024) >> 11) * 11585) >> 3;
}

inline void orbIdctRow248(Orb16s* row) {
  Orb32s x[8];
  for (int k = 0; k < 8; ++k) x[k] = load(row + k);

  const Orb32s e0 = 22725 * x[1] + 4520 * x[7];
  const Orb32s e1 = 4520 * x[1] - 22725 * x[7];
  const Orb32s e2 = 19265 * x[3] + 12872 * x[5];
  const Orb32s e3 = 19265 * x[5] - 12872 * x[3];
  const Orb32s odd[4] = {e0 + e2, timesCosine248(e0 + e1 - e2 - e3),
                         timesCosine248(e0 - e1 - e2 + e3), e1 + e3};

  const Orb32s f0 = 21406 * x[2] + 8866 * x[6];
  const Orb32s f1 = 8866 * x[2] - 21406 * x[6];
  const Orb32s g0 = 16384 * (x[0] + x[4]);
  const Orb32s g1 = 16384 * (x[0] - x[4]);
  const Orb32s even[4] = {g0 + f0, g1 + f1, g1 - f1, g0 - f0};

  for (int k = 0; k < 4; ++k) {
    store(row + k, wrap16s((even[k] + odd[k] + 8192) >> 14));
    store(row + 7 - k, wrap16s((even[k] - odd[k] + 8192) >> 14));
  }
}

// The four-point transform of rows 0 to 3 of the column.
inline void orbIdct4Points(const Orb16s* column, Orb32s* output) {
  const Orb32s r0 = load(column), r1 = load(column + 8);
  const Orb32s r2 = load(column + 16), r3 = load(column + 24);
  const Orb32s e0 = 16384 * (r0 + r2);
  const Orb32s e1 = 16384 * (r0 - r2);
  const Orb32s o0 = 21406 * r1 + 8866 * r3;
  const Orb32s o1 = 8866 * r1 - 21406 * r3;
  output[0] = (e0 + o0 + 65536) >> 17;
  output[1] = (e1 + o1 + 65536) >> 17;
  output[2] = (e1 - o1 + 65536) >> 17;
  output[3] = (e0 - o0 + 65536) >> 17;
}

inline void orbIdctColumn248(Orb16s* column) {
  Orb32s sum[4], difference[4];
  orbIdct4Points(column, sum);
  orbIdct4Points(column + 32, difference);
  for (int k = 0; k < 4; ++k) {
    store(column + 16 * k, wrap16s(sum[k] + difference[k]));
    store(column + 16 * k + 8, wrap16s(sum[k] - difference[k]));
  }
}

inline void orbIdct248(Orb16s* block) {
  for (int y = 0; y < 8; ++y) orbIdctRow248(block + 8 * y);
  for (int x = 0; x < 8; ++x) orbIdctColumn248(block + x);
}

// ---- Zeros and weights

inline Orb32s orbCountZeros8x8(const Orb16s* block) {
  Orb32s zeros = 0;
  for (int i = 0; i < 64; ++i) zeros += load(block + i) == 0;
  return zeros;
}

inline void orbWeightDV100(Orb16s* block, const Orb16s* weights, Orb32s qp) {
  const Orb16s dc = wrap16s(load(block) >> 5);
  for (int i = 0; i < 64; ++i) {
    store(block + i, wrap16s(((load(block + i) >> 6) * qp * load(weights + i)) >> 5));
  }
  store(block, dc);
}

}  // namespace orb::ORB_BUILD::plain

#endif
