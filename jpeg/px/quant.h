// Level shift and quantisation: what the functions mean.
#ifndef ORB_JPEG_PX_QUANT_H
#define ORB_JPEG_PX_QUANT_H

#include "frame/arith.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD::plain {

inline void orbAdd128Row(const Orb16s* src, Orb8u* dst, Orb32s width) {
  for (Orb32s x = 0; x < width; ++x) dst[x] = saturate8u(load(src + x) + 128);
}

inline void orbSub128Row(const Orb8u* src, Orb16s* dst, Orb32s width) {
  for (Orb32s x = 0; x < width; ++x) store(dst + x, wrap16s(src[x] - 128));
}

// The product of a coefficient and a reciprocal in 1.15, to nearest with ties to even.
inline Orb16s orbQuantFwd(Orb32s value, Orb32s reciprocal) {
  const Orb32s x = reciprocal * value;
  const Orb32s h = x >> 1;
  const Orb32s oddAndHalf = (x & 1) + 16384 + ((h >> 14) & 1) - 1;
  return saturate16s((h + (oddAndHalf >> 1)) >> 14);
}

// Source and destination may be the same block.
inline void orbQuantFwd8x8(const Orb16s* src, Orb16s* dst, const Orb16u* table) {
  for (int i = 0; i < 64; ++i) store(dst + i, orbQuantFwd(load(src + i), load(table + i)));
}

// The table's entries count as signed. Source and destination may be the same block.
inline void orbDequant(const Orb16s* src, Orb16s* dst, const Orb16u* table) {
  for (int i = 0; i < 64; ++i) {
    const Orb32s divisor = wrap16s(load(table + i));
    store(dst + i, saturate16s(divisor * load(src + i)));
  }
}

}  // namespace orb::ORB_BUILD::plain

#endif
