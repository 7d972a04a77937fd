// Level shift and quantisation over vectors of words.
//
// On even addresses the block functions take a short road that stays within words. Forward it
// truncates where the plain rule rounds, so a result may be off by one, and values of magnitude
// 4096 and above wrap; inverse it keeps the low word of the product where the plain rule limits.
#ifndef ORB_JPEG_SIMD_QUANT_H
#define ORB_JPEG_SIMD_QUANT_H

#include "frame/memory_access.h"
#include "frame/vec.h"
#include "jpeg/px/quant.h"

namespace orb::ORB_BUILD::simd {

inline void orbAdd128Row(const Orb16s* src, Orb8u* dst, Orb32s width) {
  const I16 shift = splatI16(128);
  Orb32s x = 0;
  for (; x + kI16Lanes <= width; x += kI16Lanes) {
    storeLimited8u(dst + x, addSaturated(loadI16(src + x), shift));
  }
  plain::orbAdd128Row(src + x, dst + x, width - x);
}

inline void orbSub128Row(const Orb8u* src, Orb16s* dst, Orb32s width) {
  const I16 shift = splatI16(128);
  Orb32s x = 0;
  for (; x + kI16Lanes <= width; x += kI16Lanes) {
    storeI16(dst + x, loadWide8u(src + x) - shift);
  }
  plain::orbSub128Row(src + x, dst + x, width - x);
}

inline bool allEven(const void* a, const void* b, const void* c) {
  return ((reinterpret_cast<uintptr_t>(a) | reinterpret_cast<uintptr_t>(b) |
           reinterpret_cast<uintptr_t>(c)) &
          1) == 0;
}

inline void orbQuantFwd8x8(const Orb16s* src, Orb16s* dst, const Orb16u* table) {
  if (!allEven(src, dst, table)) return plain::orbQuantFwd8x8(src, dst, table);
  const Orb16s* reciprocals = reinterpret_cast<const Orb16s*>(table);
  for (int i = 0; i < 64; i += kI16Lanes) {
    const I16 a = loadI16(src + i) << 3;
    const I16 b = shiftRightUnsigned(loadI16(reciprocals + i), 1);
    storeI16(dst + i, (mulHigh(a, b) + splatI16(1)) >> 1);
  }
}

inline void orbDequant(const Orb16s* src, Orb16s* dst, const Orb16u* table) {
  if (!allEven(src, dst, table)) return plain::orbDequant(src, dst, table);
  const Orb16s* divisors = reinterpret_cast<const Orb16s*>(table);
  for (int i = 0; i < 64; i += kI16Lanes) {
    storeI16(dst + i, loadI16(src + i) * loadI16(divisors + i));
  }
}

}  // namespace orb::ORB_BUILD::simd

#endif
