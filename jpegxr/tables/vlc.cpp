#include "jpegxr/tables/vlc.h"

namespace orb {
namespace {

// Codes as they are sent, by symbol: a run's (5 symbols), a later index (6), a level (7) and a
// first index (12).
constexpr int kTableCount = 13;
constexpr OrbTable<const char*, kVlcMostSymbols> kCodeTexts[kTableCount] = {
    // 5 symbols.
    {{"1", "01", "001", "0000", "0001"}},
    {{"1", "000", "001", "010", "011"}},
    // 6 symbols.
    {{"1", "00000", "001", "00001", "01", "0001"}},
    {{"01", "0000", "10", "0001", "11", "001"}},
    {{"0000", "0001", "01", "10", "11", "001"}},
    {{"00000", "00001", "01", "1", "0001", "001"}},
    // 7 symbols.
    {{"01", "10", "11", "001", "0001", "00000", "00001"}},
    {{"1", "01", "001", "0001", "00001", "000000", "000001"}},
    // 12 symbols.
    {{"00001", "000001", "0000000", "0000001", "00100", "010", "00101", "1", "00110", "0001",
      "00111", "011"}},
    {{"0010", "00010", "000000", "000001", "0011", "010", "00011", "11", "011", "100", "00001",
      "101"}},
    {{"11", "001", "0000000", "0000001", "00001", "010", "0000010", "011", "100", "101", "0000011",
      "0001"}},
    {{"001", "11", "0000000", "00001", "00010", "010", "0000001", "011", "00011", "100", "000001",
      "101"}},
    {{"010", "1", "0000001", "0001", "0000010", "011", "00000000", "0010", "0000011", "0011",
      "00000001", "00001"}},
};

constexpr OrbVlcCode parse(const char* text) {
  OrbVlcCode code = {};
  for (; text && text[code.length]; ++code.length) {
    code.bits = static_cast<uint8_t>(code.bits * 2 + (text[code.length] - '0'));
  }
  return code;
}

constexpr OrbTable<OrbTable<OrbVlcCode, kVlcRow>, kVlcLinkMask + 1> makeCodes() {
  OrbTable<OrbTable<OrbVlcCode, kVlcRow>, kVlcLinkMask + 1> codes = {};
  for (int table = 0; table < kTableCount; ++table) {
    for (int symbol = 0; symbol < kVlcMostSymbols; ++symbol) {
      codes[table][symbol] = parse(kCodeTexts[table][symbol]);
    }
  }
  return codes;
}

using Lookup = OrbTable<int16_t, kVlcLookupSize>;

constexpr void addShort(Lookup& lookup, OrbVlcCode code, int symbol) {
  const int unused = kVlcLookupBits - code.length;
  for (int i = 0; i < 1 << unused; ++i) {
    lookup[(code.bits << unused) + i] = static_cast<int16_t>(symbol * 8 + code.length);
  }
}

constexpr void addLong(Lookup& lookup, OrbVlcCode code, int symbol, int& pairs) {
  int at = code.bits >> (code.length - kVlcLookupBits);
  for (int left = code.length - kVlcLookupBits; left > 0; --left) {
    if (lookup[at] == 0) lookup[at] = static_cast<int16_t>(-++pairs);
    at = (1 << kVlcLookupBits) + 2 * (-lookup[at] - 1) + ((code.bits >> (left - 1)) & 1);
  }
  lookup[at] = static_cast<int16_t>(symbol * 8);
}

constexpr Lookup makeLookup(const OrbTable<OrbVlcCode, kVlcRow>& codes) {
  Lookup lookup = {};
  int pairs = 0;
  for (int symbol = 0; symbol < kVlcMostSymbols; ++symbol) {
    const OrbVlcCode code = codes[symbol];
    if (code.length > kVlcLookupBits) {
      addLong(lookup, code, symbol, pairs);
    } else if (code.length > 0) {
      addShort(lookup, code, symbol);
    }
  }
  return lookup;
}

constexpr OrbTable<Lookup, kVlcLinkMask + 1> makeLookups() {
  const auto codes = makeCodes();
  OrbTable<Lookup, kVlcLinkMask + 1> lookups = {};
  for (int table = 0; table < kTableCount; ++table) lookups[table] = makeLookup(codes[table]);
  return lookups;
}

}  // namespace

constexpr OrbTable<OrbTable<OrbVlcCode, kVlcRow>, kVlcLinkMask + 1> orbVlcCodes = makeCodes();
constexpr OrbTable<Lookup, kVlcLinkMask + 1> orbVlcLookups = makeLookups();

// Coding a run changes nothing, so that the run coder stays with its first table.
constexpr OrbTable<OrbVlcFamily, 16> orbVlcFamilies = {{
    {},
    {},
    {},
    {},
    {},
    {0, 2, 0, false, 0, 1},
    {2, 4, 1, true, 2, 3},
    {6, 2, 0, false, 1, 1},
    {},
    {},
    {},
    {},
    {8, 5, 1, true, 5, 4},
    {},
    {},
    {},
}};

constexpr OrbTable<uint8_t, 21> orbVlcSymbols = {
    {5, 4, 8, 7, 7, 12, 6, 6, 12, 6, 6, 7, 7, 12, 6, 6, 12, 6, 6, 7, 7}};

constexpr OrbTable<OrbTable<int8_t, kVlcRow>, kVlcLinkMask + 1> orbVlcChanges = {{
    {},
    // 7 symbols.
    {{1, 0, -1, -1, -1, -1, -1}},
    // 6 symbols.
    {{-1, 1, 1, 1, 0, 1}},
    {{-2, 0, 0, 2, 0, 0}},
    {{-1, -1, 0, 1, -2, 0}},
    // 12 symbols.
    {{1, 1, 1, 1, 1, 0, 0, -1, 2, 1, 0, 0}},
    {{2, 2, -1, -1, -1, 0, -2, -1, 0, 0, -2, -1}},
    {{-1, 1, 0, 2, 0, 0, 0, 0, -2, 0, 1, 1}},
    {{0, 1, 0, 1, -2, 0, -1, -1, -2, -1, -2, -2}},
}};

}  // namespace orb
