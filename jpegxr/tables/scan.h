// The orders in which the coefficients of a block are coded (ITU-T T.832).
#ifndef ORB_JPEGXR_TABLES_SCAN_H
#define ORB_JPEGXR_TABLES_SCAN_H

#include <stdint.h>

#include "frame/table.h"

namespace orb {

struct OrbScanPlace {
  uint8_t x;
  uint8_t y;
};

// Where a natural frequency index stands in a block as the core transform leaves it.
extern const OrbTable<OrbScanPlace, 16> orbScanPlaces;

// The natural indexes in the order that each scan starts with.
extern const OrbTable<OrbTable<uint8_t, 16>, 3> orbScanStart;

// The natural indexes of the 15 positions behind the DC, in the fixed order of flexbits.
extern const OrbTable<uint8_t, 15> orbFlexOrder;

}  // namespace orb

#endif
