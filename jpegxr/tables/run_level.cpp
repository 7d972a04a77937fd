#include "jpegxr/tables/run_level.h"

namespace orb {

constexpr OrbTable<OrbTable<OrbVlcRange, kVlcRow>, 3> orbRunRanges = {{
    {{{1, 0}, {2, 0}, {3, 1}, {5, 1}, {7, 3}}},
    {{{1, 0}, {2, 0}, {3, 1}, {5, 1}, {7, 2}}},
    {{{1, 0}, {2, 0}, {3, 0}, {4, 0}, {5, 1}}},
}};

constexpr OrbTable<uint8_t, 16> orbRunRows = {{2, 2, 2, 2, 2, 2, 2, 1, 1, 1, 1, 0, 0, 0, 0, 0}};

constexpr OrbTable<OrbVlcRange, kLevelEscape> orbLevelRanges = {
    {{2, 0}, {3, 0}, {4, 1}, {6, 2}, {10, 2}, {14, 2}}};

namespace {

// The last of so many symbols whose base is not above the value.
constexpr uint8_t symbolOf(const OrbVlcRange* ranges, uint32_t count, uint32_t value) {
  uint8_t symbol = 0;
  while (symbol + 1u < count && ranges[symbol + 1].base <= value) ++symbol;
  return symbol;
}

constexpr OrbTable<uint8_t, kLeastEscapedLevel> makeLevelSymbols() {
  OrbTable<uint8_t, kLeastEscapedLevel> symbols = {};
  for (uint32_t level = 2; level < kLeastEscapedLevel; ++level) {
    symbols[level] = symbolOf(orbLevelRanges.entry, kLevelEscape, level);
  }
  return symbols;
}

constexpr OrbTable<OrbTable<uint8_t, 15>, 3> makeRunSymbols() {
  OrbTable<OrbTable<uint8_t, 15>, 3> symbols = {};
  for (uint32_t row = 0; row < 3; ++row) {
    for (uint32_t run = 1; run < 15; ++run)
      symbols[row][run] = symbolOf(orbRunRanges[row].entry, 5, run);
  }
  return symbols;
}

}  // namespace

constexpr OrbTable<uint8_t, kLeastEscapedLevel> orbLevelSymbols = makeLevelSymbols();
constexpr OrbTable<OrbTable<uint8_t, 15>, 3> orbRunSymbols = makeRunSymbols();

constexpr OrbTable<OrbVlcCode, 4> orbLateIndexCodes = {
    {{0b0, 1}, {0b110, 3}, {0b10, 2}, {0b111, 3}}};
constexpr OrbTable<uint8_t, 8> orbLateIndexLookup = {{0, 0, 0, 0, 2, 2, 1, 3}};

}  // namespace orb
