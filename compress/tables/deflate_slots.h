// The rule behind deflate's symbols with extra bits (RFC 1951, 3.2.5), for tables that are made of
// them when they are compiled.
#ifndef ORB_COMPRESS_TABLES_DEFLATE_SLOTS_H
#define ORB_COMPRESS_TABLES_DEFLATE_SLOTS_H

#include "compress/tables/deflate.h"

namespace orb {

// Slots follow one another without a gap: `perExtra` symbols for each number of extra bits, and
// twice as many for none.
template <uint32_t kSlots>
constexpr OrbTable<OrbDeflateSlot, kSlots> orbDeflateSlots(uint32_t first, uint32_t perExtra) {
  OrbTable<OrbDeflateSlot, kSlots> table = {};
  uint32_t base = first;
  for (uint32_t i = 0; i < kSlots; ++i) {
    const uint32_t extraBits = i < 2 * perExtra ? 0 : i / perExtra - 1;
    table[i] = {static_cast<uint16_t>(base), static_cast<uint16_t>(extraBits)};
    base += 1u << extraBits;
  }
  return table;
}

constexpr OrbTable<OrbDeflateSlot, 29> orbDeflateLengthSlots() {
  OrbTable<OrbDeflateSlot, 29> table = orbDeflateSlots<29>(3, 4);
  table[28] = {258, 0};
  return table;
}

constexpr OrbTable<OrbDeflateSlot, 30> orbDeflateDistanceSlots() {
  return orbDeflateSlots<30>(1, 2);
}

static_assert(orbDeflateLengthSlots()[27].base == 227 && orbDeflateLengthSlots()[27].extraBits == 5,
              "symbol 284");
static_assert(orbDeflateDistanceSlots()[29].base == 24577 &&
                  orbDeflateDistanceSlots()[29].extraBits == 13,
              "the last distance");

}  // namespace orb

#endif
