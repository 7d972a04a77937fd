// How runs and levels are made up of a symbol and extra bits, and the codes that do not adapt
// (ITU-T T.832).
#ifndef ORB_JPEGXR_TABLES_RUN_LEVEL_H
#define ORB_JPEGXR_TABLES_RUN_LEVEL_H

#include <stdint.h>

#include "jpegxr/tables/vlc.h"

namespace orb {

// What a symbol stands for: a value, to which as many extra bits are added.
struct OrbVlcRange {
  uint8_t base;
  uint8_t extraBits;
};

// Runs, by row and symbol; the row is that of the room that is left, up to 15. There are 5 symbols,
// and more for records that are damaged.
extern const OrbTable<OrbTable<OrbVlcRange, kVlcRow>, 3> orbRunRanges;
extern const OrbTable<uint8_t, 16> orbRunRows;
constexpr int32_t kLeastRunRoom = 5;  // shorter runs have fixed codes

// Levels of 2 and more, by symbol; the last symbol is the escape.
constexpr uint32_t kLevelEscape = 6;
extern const OrbTable<OrbVlcRange, kLevelEscape> orbLevelRanges;

// The symbols of levels in front of the escape, by level.
constexpr uint32_t kLeastEscapedLevel = 18;
extern const OrbTable<uint8_t, kLeastEscapedLevel> orbLevelSymbols;

// The symbols of runs by row and run, up to the longest of 14.
extern const OrbTable<OrbTable<uint8_t, 15>, 3> orbRunSymbols;

// The code of an index at the last position but one, where no run can follow; by index, and the
// index by the next three bits.
extern const OrbTable<OrbVlcCode, 4> orbLateIndexCodes;
extern const OrbTable<uint8_t, 8> orbLateIndexLookup;

}  // namespace orb

#endif
