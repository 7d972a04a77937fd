#include "compress/tables/inflate.h"

#include "compress/tables/deflate_slots.h"

namespace orb {
namespace {

constexpr uint32_t baseEntry(const OrbDeflateSlot& slot) {
  return static_cast<uint32_t>(slot.base) << 16 | slot.extraBits;
}

constexpr OrbTable<uint32_t, kInflateLiteralSymbols> literals() {
  OrbTable<uint32_t, kInflateLiteralSymbols> entries = {};
  for (uint32_t i = 0; i < 256; ++i) entries[i] = kInflateLiteral | i << 16;
  entries[256] = kInflateEnd;
  for (uint32_t i = 0; i < 29; ++i) entries[257 + i] = baseEntry(orbDeflateLengthSlots()[i]);
  for (uint32_t i = 286; i < 288; ++i) entries[i] = kInflateSpecial;
  return entries;
}

constexpr OrbTable<uint32_t, kInflateDistanceSymbols> distances() {
  OrbTable<uint32_t, kInflateDistanceSymbols> entries = {};
  for (uint32_t i = 0; i < 30; ++i) entries[i] = baseEntry(orbDeflateDistanceSlots()[i]);
  for (uint32_t i = 30; i < 32; ++i) entries[i] = kInflateSpecial;
  return entries;
}

constexpr OrbTable<uint32_t, kInflateLengthSymbols> lengths() {
  OrbTable<uint32_t, kInflateLengthSymbols> entries = {};
  for (uint32_t i = 0; i < kInflateLengthSymbols; ++i) entries[i] = i << 16;
  return entries;
}

// The first bit of a code is its highest, and the lowest of an index.
constexpr uint32_t reversed(uint32_t code, uint32_t length) {
  uint32_t index = 0;
  for (uint32_t i = 0; i < length; ++i) index |= (code >> i & 1) << (length - 1 - i);
  return index;
}

constexpr OrbTable<OrbInflateEntry, kInflateFixedEntries> fixed() {
  OrbTable<OrbInflateEntry, kInflateFixedEntries> entries = {};
  // Made once: compilers count the steps that a constant takes.
  const OrbTable<uint32_t, kInflateDistanceSymbols> distance = distances();
  const OrbTable<uint32_t, kInflateLiteralSymbols> literal = literals();
  for (uint32_t i = 0; i < 1u << kInflateDistanceRoot; ++i) {
    entries[i].word = distance[reversed(i & 31, 5)] + 5 * kInflateCodeBit;
  }
  for (uint32_t symbol = 0; symbol < kInflateLiteralSymbols; ++symbol) {
    // The table of RFC 1951, 3.2.6.
    const uint32_t length = symbol < 144 ? 8 : symbol < 256 ? 9 : symbol < 280 ? 7 : 8;
    const uint32_t code = symbol < 144   ? 0x30 + symbol
                          : symbol < 256 ? 0x190 + symbol - 144
                          : symbol < 280 ? symbol - 256
                                         : 0xC0 + symbol - 280;
    for (uint32_t i = reversed(code, length); i < 1u << kInflateLiteralRoot; i += 1u << length) {
      entries[kInflateDistanceEntries + i].word = literal[symbol] + length * kInflateCodeBit;
    }
  }
  return entries;
}

constexpr OrbTable<OrbInflateRepetition, 8> repetitions() {
  OrbTable<OrbInflateRepetition, 8> table = {};
  for (uint32_t bytes = 1; bytes < 8; ++bytes) {
    for (uint32_t i = 0; i < 8; i += bytes) table[bytes].factor |= uint64_t{1} << i * 8;
    table[bytes].step = 8 - 8 % bytes;
  }
  return table;
}

}  // namespace

constexpr OrbTable<uint32_t, kInflateLiteralSymbols> orbInflateLiterals = literals();
constexpr OrbTable<uint32_t, kInflateDistanceSymbols> orbInflateDistances = distances();
constexpr OrbTable<uint32_t, kInflateLengthSymbols> orbInflateLengths = lengths();
constexpr OrbTable<OrbInflateEntry, kInflateFixedEntries> orbInflateFixed = fixed();
constexpr OrbTable<OrbInflateRepetition, 8> orbInflateRepetitions = repetitions();

}  // namespace orb
