// Rows of TIFF files over vectors: 16-bit samples as two rows of bytes.
#ifndef ORB_SIDE_SIMD_TIFF_H
#define ORB_SIDE_SIMD_TIFF_H

#include "frame/vec.h"
#include "side/px/tiff.h"

namespace orb::ORB_BUILD::simd {

inline void orbSplitBytes(const Orb16u* src, Orb8u* high, Orb8u* low, Orb32s len) {
  constexpr Orb32s kStep = 2 * kI16Lanes;
  Orb32s i = 0;
  for (; len - i >= kStep; i += kStep) {
    const I16 a = loadI16(reinterpret_cast<const Orb16s*>(src + i));
    const I16 b = loadI16(reinterpret_cast<const Orb16s*>(src + i + kI16Lanes));
    storeLimited8u(high + i, shiftRightUnsigned(a, 8), shiftRightUnsigned(b, 8));
    storeLimited8u(low + i, shiftRightUnsigned(a << 8, 8), shiftRightUnsigned(b << 8, 8));
  }
  plain::orbSplitBytes(src + i, high + i, low + i, len - i);
}

inline void orbJoinBytes(const Orb8u* high, const Orb8u* low, Orb16u* dst, Orb32s len) {
  Orb32s i = 0;
  for (; len - i >= kI16Lanes; i += kI16Lanes) {
    storeI16(reinterpret_cast<Orb16s*>(dst + i), (loadWide8u(high + i) << 8) + loadWide8u(low + i));
  }
  plain::orbJoinBytes(high + i, low + i, dst + i, len - i);
}

}  // namespace orb::ORB_BUILD::simd

#endif
