// The record of adaptive coefficient coding (ITU-T T.832): which codes are in use, how well they
// fit, and the scan orders. The host sees its size alone, and may place it at any address.
//
// Links are numbers of constant tables. What stands in a damaged record is masked where it is used,
// so that it leads to wrong codes at worst.
#ifndef ORB_JPEGXR_VLC_RECORDS_H
#define ORB_JPEGXR_VLC_RECORDS_H

#include "orb90legacy/jpegxr.h"

namespace orb {

// The adaptive coders. Behind the coder of a block's first index stand the two of later indexes,
// and behind the first level coder the second, by context. Coders 1 to 4 never adapt.
enum : Orb32u {
  kRunCoder = 0,
  kLowPassIndexCoders = 5,
  kLowPassLevelCoders = 11,
  kHighPassIndexCoders = 13,
  kHighPassLevelCoders = 19,
  kCoderCount = 21,
};
// From the index coders of colour class 0 to those of class 1.
constexpr Orb32u kCodersOfClass = 3;

// A position of a scan. The order of the records is the present order of the scan.
struct [[gnu::packed]] OrbScanRecord {
  Orb32u weight;
  Orb32u index;  // natural frequency index
  Orb32u x;      // place in a block as the core transform leaves it
  Orb32u y;
};

// How a coder adapts.
struct [[gnu::packed]] OrbCoderRecord {
  Orb32u symbols;
  Orb32s table;  // within the tables of the alphabet
  Orb32s hasStarted;
  Orb32s upperBound;
  Orb32s lowerBound;
};

constexpr Orb32s kScanCount = 3;
constexpr Orb32s kLowPassScan = 2;

}  // namespace orb

struct [[gnu::packed]] OrbiVLCState_JPEGXR {
  Orb32u scan;  // the number of the current scan
  // By coder, links to what is in use: a table of orbVlcCodes, rows of orbVlcChanges, a table of
  // orbVlcLookups.
  Orb32u codes[orb::kCoderCount];
  Orb32u firstChanges[orb::kCoderCount];
  Orb32u secondChanges[orb::kCoderCount];
  Orb32u lookups[orb::kCoderCount];
  Orb32u unused[orb::kCoderCount];
  orb::OrbCoderRecord coders[orb::kCoderCount];
  Orb32s firstDiscriminant[orb::kCoderCount];
  Orb32s secondDiscriminant[orb::kCoderCount];
  orb::OrbScanRecord scans[orb::kScanCount][16];  // the last scan first
};
static_assert(sizeof(OrbiVLCState_JPEGXR) == 1780, "the size that hosts allocate");

#endif
