// Chroma sampling: what the functions mean.
//
// Rounding terms are no plain halves, and several alternate between the even and the odd output, so
// that a flat error does not build up along a row.
#ifndef ORB_JPEG_PX_SAMPLING_H
#define ORB_JPEG_PX_SAMPLING_H

#include <stddef.h>

#include "frame/arith.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD::plain {

// The mean of two samples, and of two in each of two rows, with a rounding term.
inline Orb8u orbMeanH2V1(const Orb8u* src, Orb32s round) {
  return wrap8u((src[0] + src[1] + round) >> 1);
}
inline Orb8u orbMeanH2V2(const Orb8u* src0, const Orb8u* src1, Orb32s round) {
  return wrap8u((src0[0] + src0[1] + src1[0] + src1[1] + round) >> 2);
}

inline void orbSampleDownH2V1Row(const Orb8u* src, Orb8u* dst, ptrdiff_t dstWidth) {
  for (ptrdiff_t i = 0; i < dstWidth; ++i) dst[i] = orbMeanH2V1(src + 2 * i, 1);
}

inline void orbSampleDownH2V2Row(const Orb8u* src0, const Orb8u* src1, Orb8u* dst,
                                 ptrdiff_t dstWidth) {
  for (ptrdiff_t i = 0; i < dstWidth; ++i) dst[i] = orbMeanH2V2(src0 + 2 * i, src1 + 2 * i, 3);
}

inline void orbSampleDownRowH2V1Box(const Orb8u* src, Orb8u* dst, ptrdiff_t dstWidth) {
  ptrdiff_t i = 0;
  for (; i + 1 < dstWidth; i += 2) {
    dst[i] = orbMeanH2V1(src + 2 * i, 0);
    dst[i + 1] = orbMeanH2V1(src + 2 * i + 2, 1);
  }
  if (i < dstWidth) dst[i] = orbMeanH2V1(src + 2 * i, 0);
}

inline void orbSampleDownRowH2V2Box(const Orb8u* src0, const Orb8u* src1, Orb8u* dst,
                                    ptrdiff_t dstWidth) {
  ptrdiff_t i = 0;
  for (; i + 1 < dstWidth; i += 2) {
    dst[i] = orbMeanH2V2(src0 + 2 * i, src1 + 2 * i, 1);
    dst[i + 1] = orbMeanH2V2(src0 + 2 * i + 2, src1 + 2 * i + 2, 2);
  }
  if (i < dstWidth) dst[i] = orbMeanH2V2(src0 + 2 * i, src1 + 2 * i, 1);
}

// The two outputs of a source sample lean on its left and on its right neighbour.
inline Orb8u orbUpH2V1Even(const Orb8u* src) {
  return wrap8u((3 * src[0] + src[-1] + 1) >> 2);
}
inline Orb8u orbUpH2V1Odd(const Orb8u* src) {
  return wrap8u((3 * src[0] + src[1] + 2) >> 2);
}

// Reads one sample on either side of the `count` samples.
inline void orbUpH2V1Pairs(const Orb8u* src, Orb8u* dst, ptrdiff_t count) {
  for (ptrdiff_t i = 0; i < count; ++i) {
    dst[2 * i] = orbUpH2V1Even(src + i);
    dst[2 * i + 1] = orbUpH2V1Odd(src + i);
  }
}

inline void orbSampleUpH2V1Row(const Orb8u* src, Orb8u* dst, ptrdiff_t dstWidth) {
  const ptrdiff_t pairs = dstWidth / 2;
  orbUpH2V1Pairs(src, dst, pairs);
  if (dstWidth & 1) dst[2 * pairs] = orbUpH2V1Even(src + pairs);
}

inline void orbSampleUpRowH2V1Triangle(const Orb8u* src, Orb8u* dst, ptrdiff_t srcWidth) {
  const ptrdiff_t last = srcWidth - 1;
  dst[0] = src[0];
  dst[1] = orbUpH2V1Odd(src);
  orbUpH2V1Pairs(src + 1, dst + 2, last - 1);
  dst[2 * last] = orbUpH2V1Even(src + last);
  dst[2 * last + 1] = src[last];
}

// A column of the near and the far row, in quarters.
inline Orb32s orbUpH2V2Column(const Orb8u* near, const Orb8u* far) {
  return 3 * near[0] + far[0];
}
inline Orb8u orbUpH2V2Even(const Orb8u* near, const Orb8u* far) {
  return wrap8u((3 * orbUpH2V2Column(near, far) + orbUpH2V2Column(near - 1, far - 1) + 8) >> 4);
}
inline Orb8u orbUpH2V2Odd(const Orb8u* near, const Orb8u* far) {
  return wrap8u((3 * orbUpH2V2Column(near, far) + orbUpH2V2Column(near + 1, far + 1) + 7) >> 4);
}

// Reads one sample on either side of the `count` samples of both rows.
inline void orbUpH2V2Pairs(const Orb8u* near, const Orb8u* far, Orb8u* dst, ptrdiff_t count) {
  for (ptrdiff_t i = 0; i < count; ++i) {
    dst[2 * i] = orbUpH2V2Even(near + i, far + i);
    dst[2 * i + 1] = orbUpH2V2Odd(near + i, far + i);
  }
}

inline void orbSampleUpH2V2Row(const Orb8u* near, const Orb8u* far, Orb8u* dst,
                               ptrdiff_t dstWidth) {
  const ptrdiff_t pairs = dstWidth / 2;
  orbUpH2V2Pairs(near, far, dst, pairs);
  if (dstWidth & 1) dst[2 * pairs] = orbUpH2V2Even(near + pairs, far + pairs);
}

inline void orbSampleUpRowH2V2Triangle(const Orb8u* near, const Orb8u* far, Orb8u* dst,
                                       ptrdiff_t srcWidth) {
  const ptrdiff_t last = srcWidth - 1;
  dst[0] = wrap8u((4 * orbUpH2V2Column(near, far) + 8) >> 4);
  dst[1] = orbUpH2V2Odd(near, far);
  orbUpH2V2Pairs(near + 1, far + 1, dst + 2, last - 1);
  dst[2 * last] = orbUpH2V2Even(near + last, far + last);
  dst[2 * last + 1] = wrap8u((4 * orbUpH2V2Column(near + last, far + last) + 7) >> 4);
}

}  // namespace orb::ORB_BUILD::plain

#endif
