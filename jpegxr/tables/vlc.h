// The variable-length codes of adaptive coefficient coding, and how coded symbols move the
// discriminants that choose among them (ITU-T T.832).
#ifndef ORB_JPEGXR_TABLES_VLC_H
#define ORB_JPEGXR_TABLES_VLC_H

#include <stdint.h>

#include "frame/table.h"

namespace orb {

constexpr int32_t kVlcMostSymbols = 12;

// Rows are as long as powers of two, so that a link is but shifted.
constexpr int32_t kVlcRow = 16;

// Links are masked with this; tables behind the last one are empty.
constexpr uint32_t kVlcLinkMask = 15;

// An alphabet: its code tables stand one after the other, from the one that is reached downwards.
// Both rows of changes are those of its first table, and go up with the tables as far as they
// may.
struct OrbVlcFamily {
  uint8_t firstTable;
  uint8_t tableCount;  // 0 for an alphabet that no coder adapts
  uint8_t startTable;
  bool hasSecond;  // discriminant
  uint8_t changes;
  uint8_t changesCount;
};

// By number of symbols, of which there are fewer than 16.
extern const OrbTable<OrbVlcFamily, 16> orbVlcFamilies;

// The numbers of symbols of the 21 coders.
extern const OrbTable<uint8_t, 21> orbVlcSymbols;

struct OrbVlcCode {
  uint8_t bits;
  uint8_t length;
};
extern const OrbTable<OrbTable<OrbVlcCode, kVlcRow>, kVlcLinkMask + 1> orbVlcCodes;

// By the next five bits: eight times the symbol, and the length of its code. For a longer code a
// negative entry, -n: pair n behind the lookup, to be chosen from by the next bit, and so on.
// Entries there have no length.
constexpr int32_t kVlcLookupBits = 5;
constexpr int32_t kVlcLookupSize = 64;
extern const OrbTable<OrbTable<int16_t, kVlcLookupSize>, kVlcLinkMask + 1> orbVlcLookups;

// What a symbol adds to a discriminant. Row 0 changes nothing.
extern const OrbTable<OrbTable<int8_t, kVlcRow>, kVlcLinkMask + 1> orbVlcChanges;

}  // namespace orb

#endif
