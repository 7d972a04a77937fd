// What the sequential and the progressive coders share: the coefficients of a block as sets, to be
// gone through in zigzag order, and the symbols that both know.
#ifndef ORB_JPEG_PX_HUFFMAN_BLOCKS_H
#define ORB_JPEG_PX_HUFFMAN_BLOCKS_H

#include "jpeg/px/huffman_bits.h"
#include "jpeg/tables/zigzag.h"

namespace orb::ORB_BUILD::plain {

constexpr Orb32s kZeroRunOf16 = 0xF0;
constexpr Orb32s kEndOfBlock = 0;

// Bits `first` to `last`, of 0 to 63.
inline uint64_t bandSet(Orb32s first, Orb32s last) {
  return ~uint64_t{0} >> (63 - last) & ~uint64_t{0} << first;
}

// Bit i is set if test(value at raster position i).
template <class Test>
[[gnu::always_inline]] inline uint64_t rasterSet(const Orb16s* block, Test test) {
  alignas(8) Orb8u isIn[64];
  for (int i = 0; i < 64; ++i) isIn[i] = test(load(block + i));
  uint64_t set = 0;
  for (int y = 0; y < 8; ++y) {
    // The multiplication moves byte x to bit x of the top byte.
    const uint64_t row = load(reinterpret_cast<const uint64_t*>(isIn + y * 8));
    set |= ((row * 0x0102040810204080u) >> 56) << (y * 8);
  }
  return set;
}

// Bit k is set if test(value at position k of the zigzag order), k from `first` to `last`.
template <class Test>
[[gnu::always_inline]] inline uint64_t zigzagSet(const Orb16s* block, Orb32s first, Orb32s last,
                                                 Test test) {
  uint64_t set = 0;
  // A narrow band takes less time value by value.
  if (last - first < 10) {
    for (Orb32s k = first; k <= last; ++k) {
      set |= static_cast<uint64_t>(test(load(block + orbZigzagNatural[k]))) << k;
    }
    return set;
  }
  uint64_t raster = rasterSet(block, test);
  for (int n = 0; n < 256; n += 16, raster >>= 4) set |= orbZigzagMask[n + (raster & 15)];
  return set & bandSet(first, last);
}

// The number of the lowest bit that is set. On 32 bits the compiler's own is a call into its
// runtime.
inline Orb32s lowestBit(uint64_t mask) {
  if constexpr (sizeof(uintptr_t) == 8) return __builtin_ctzll(mask);
  const Orb32u low = static_cast<Orb32u>(mask);
  return low != 0 ? __builtin_ctz(low) : 32 + __builtin_ctz(static_cast<Orb32u>(mask >> 32));
}

// The DC difference, with the predictor moved.
[[gnu::always_inline]] inline Magnitude nextDifference(Orb16s dc, Orb16s* lastDC) {
  const Orb32s difference = dc - load(lastDC);
  store(lastDC, dc);
  return magnitudeOf(difference);
}

}  // namespace orb::ORB_BUILD::plain

#endif
