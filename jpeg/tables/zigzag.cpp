#include "jpeg/tables/zigzag.h"

namespace orb {
namespace {

// Walks the block's diagonals, up to the right on even ones and down to the left on odd ones.
constexpr OrbTable<uint32_t, 72> walk() {
  OrbTable<uint32_t, 72> natural = {};
  uint32_t number = 0;
  for (uint32_t diagonal = 0; diagonal < 15; ++diagonal) {
    const uint32_t first = diagonal < 8 ? 0 : diagonal - 7;
    const uint32_t last = diagonal < 8 ? diagonal : 7;
    for (uint32_t i = first; i <= last; ++i) {
      const uint32_t column = diagonal % 2 == 0 ? i : diagonal - i;
      const uint32_t row = diagonal - column;
      natural[number++] = row * 8 + column;
    }
  }
  for (uint32_t beyond = 64; beyond < 72; ++beyond) natural[beyond] = 63;
  return natural;
}

constexpr OrbTable<uint32_t, 64> invert(const OrbTable<uint32_t, 72>& natural) {
  OrbTable<uint32_t, 64> order = {};
  for (uint32_t number = 0; number < 64; ++number) order[natural[number]] = number;
  return order;
}

constexpr OrbTable<uint64_t, 256> scatter(const OrbTable<uint32_t, 64>& order) {
  OrbTable<uint64_t, 256> mask = {};
  for (uint32_t half = 0; half < 16; ++half) {
    for (uint32_t bits = 0; bits < 16; ++bits) {
      for (uint32_t x = 0; x < 4; ++x) {
        if (bits >> x & 1) mask[half * 16 + bits] |= uint64_t{1} << order[half * 4 + x];
      }
    }
  }
  return mask;
}

}  // namespace

constexpr OrbTable<uint32_t, 72> orbZigzagNatural = walk();
constexpr OrbTable<uint32_t, 64> orbZigzagOrder = invert(walk());
constexpr OrbTable<uint64_t, 256> orbZigzagMask = scatter(invert(walk()));

}  // namespace orb
