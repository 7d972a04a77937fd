#include "compress/tables/deflate.h"

namespace orb {
namespace {

// Slots follow one another without a gap: `perExtra` symbols for each number of extra bits, and
// twice as many for none.
template <uint32_t kSlots>
constexpr OrbTable<OrbDeflateSlot, kSlots> slots(uint32_t first, uint32_t perExtra) {
  OrbTable<OrbDeflateSlot, kSlots> table = {};
  uint32_t base = first;
  for (uint32_t i = 0; i < kSlots; ++i) {
    const uint32_t extraBits = i < 2 * perExtra ? 0 : i / perExtra - 1;
    table[i] = {static_cast<uint16_t>(base), static_cast<uint16_t>(extraBits)};
    base += 1u << extraBits;
  }
  return table;
}

constexpr OrbTable<OrbDeflateSlot, 29> lengths() {
  OrbTable<OrbDeflateSlot, 29> table = slots<29>(3, 4);
  table[28] = {258, 0};
  return table;
}

static_assert(lengths()[27].base == 227 && lengths()[27].extraBits == 5, "symbol 284");
static_assert(slots<30>(1, 2)[29].base == 24577 && slots<30>(1, 2)[29].extraBits == 13,
              "the last distance");

// The repeats and the zero first, then the lengths from the middle outwards.
constexpr OrbTable<uint8_t, 19> codeLengthOrder() {
  OrbTable<uint8_t, 19> order = {{16, 17, 18, 0, 8}};
  for (uint32_t i = 1; i < 8; ++i) {
    order[3 + 2 * i] = static_cast<uint8_t>(8 - i);
    order[4 + 2 * i] = static_cast<uint8_t>(8 + i);
  }
  return order;
}

}  // namespace

constexpr OrbTable<OrbDeflateSlot, 29> orbDeflateLength = lengths();
constexpr OrbTable<OrbDeflateSlot, 30> orbDeflateDistance = slots<30>(1, 2);
constexpr OrbTable<uint8_t, 19> orbDeflateCodeLengthOrder = codeLengthOrder();

}  // namespace orb
