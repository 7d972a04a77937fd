// The code table of DV, as InitAlloc makes it and the segment decoder reads it.
#ifndef ORB_DV_SEGMENT_RECORDS_H
#define ORB_DV_SEGMENT_RECORDS_H

#include "orb90legacy/dv.h"

namespace orb {

// One place of a table: the code that its bits begin with.
struct DVHuffEntry {
  Orb8u len;     // in bits, the prefix of the second table with them; kNoDVCode if there is none
  Orb8u run;     // positions passed over
  Orb16s level;  // times 64
};
static_assert(sizeof(DVHuffEntry) == 4, "32 bits a place");

constexpr Orb8u kNoDVCode = 255;

// A decoder reads the first table by 9 bits, and the second from here on by 9 bits as well.
constexpr Orb32s kSecondDVTable = 512;
constexpr Orb32s kDVPlacesRead = kSecondDVTable + 512;

}  // namespace orb

// As many places as the descriptions ask for, and no fewer than the decoder may read.
struct OrbDVHuffTable {
  orb::DVHuffEntry entry[orb::kDVPlacesRead];
};

#endif
