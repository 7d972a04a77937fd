#include "compress/tables/deflate.h"

#include "compress/tables/deflate_slots.h"

namespace orb {
namespace {

// With a last slot that begins behind all distances, for none.
constexpr OrbTable<OrbDeflateSlot, 31> distances() {
  OrbTable<OrbDeflateSlot, 31> table = orbDeflateSlots<31>(1, 2);
  table[30] = {32769, 0};
  return table;
}

// The last slot that begins at or below the value.
template <size_t kSlots>
constexpr uint32_t slotOf(const OrbTable<OrbDeflateSlot, kSlots>& table, uint32_t value) {
  uint32_t slot = 0;
  while (slot + 1 < kSlots && table[slot + 1].base <= value) ++slot;
  return slot;
}

constexpr OrbTable<uint16_t, 512> symbols() {
  OrbTable<uint16_t, 512> table = {};
  for (uint32_t i = 0; i < 256; ++i) {
    table[i] = static_cast<uint16_t>(i);
    table[256 + i] = static_cast<uint16_t>(257 + slotOf(orbDeflateLengthSlots(), i + 3));
  }
  return table;
}

constexpr OrbTable<uint8_t, 513> distanceSymbols() {
  OrbTable<uint8_t, 513> table = {};
  for (uint32_t i = 0; i < 256; ++i) {
    table[i] = static_cast<uint8_t>(slotOf(distances(), i + 1));
    table[256 + i] = static_cast<uint8_t>(slotOf(distances(), i * 128 + 1));
  }
  table[kNoDistance] = 30;
  return table;
}

// The repeats and the zero first, then the lengths from the middle outwards.
constexpr OrbTable<uint8_t, 19> codeLengthOrder() {
  OrbTable<uint8_t, 19> order = {{16, 17, 18, 0, 8}};
  for (uint32_t i = 1; i < 8; ++i) {
    order[3 + 2 * i] = static_cast<uint8_t>(8 - i);
    order[4 + 2 * i] = static_cast<uint8_t>(8 + i);
  }
  return order;
}

// A code of `length` bits, whose highest bit is written first.
constexpr OrbLZ77Code code(uint32_t value, uint32_t length) {
  uint32_t bits = 0;
  for (uint32_t i = 0; i < length; ++i) bits |= (value >> i & 1) << (length - 1 - i);
  return {bits, length};
}

constexpr OrbLZ77Code fixedLiteral(uint32_t symbol) {
  if (symbol < 144) return code(0x30 + symbol, 8);
  if (symbol < 256) return code(0x190 + symbol - 144, 9);
  if (symbol < 280) return code(symbol - 256, 7);
  return code(0xC0 + symbol - 280, 8);
}

constexpr OrbLZ77Code withExtra(OrbLZ77Code symbol, OrbDeflateSlot slot, uint32_t value) {
  return {symbol.bits | (value - slot.base) << symbol.length, symbol.length + slot.extraBits};
}

constexpr OrbLZ77Codes fixedCodes() {
  OrbLZ77Codes codes = {};
  for (uint32_t symbol = 0; symbol < 286; ++symbol) codes.literal[symbol] = fixedLiteral(symbol);
  for (uint32_t symbol = 0; symbol < 30; ++symbol) codes.slot[symbol] = code(symbol, 5);
  for (uint32_t i = 0; i < 256; ++i) {
    codes.joined[i] = codes.literal[i];
    const uint32_t length = slotOf(orbDeflateLengthSlots(), i + 3);
    codes.joined[256 + i] =
        withExtra(codes.literal[257 + length], orbDeflateLengthSlots()[length], i + 3);
  }
  return codes;
}

}  // namespace

constexpr OrbTable<OrbDeflateSlot, 29> orbDeflateLength = orbDeflateLengthSlots();
constexpr OrbTable<OrbDeflateSlot, 31> orbDeflateDistance = distances();
constexpr OrbTable<uint16_t, 512> orbDeflateSymbol = symbols();
constexpr OrbTable<uint8_t, 513> orbDeflateDistanceSymbol = distanceSymbols();
constexpr OrbTable<uint8_t, 19> orbDeflateCodeLengthOrder = codeLengthOrder();
constexpr OrbLZ77Codes orbDeflateFixedCodes = fixedCodes();

}  // namespace orb
