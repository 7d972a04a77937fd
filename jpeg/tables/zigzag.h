// The zigzag order of a block (ITU-T T.81, figure A.6), in both directions.
#ifndef ORB_JPEG_TABLES_ZIGZAG_H
#define ORB_JPEG_TABLES_ZIGZAG_H

#include <stdint.h>

#include "frame/table.h"

namespace orb {

// The zigzag number of each raster position.
extern const OrbTable<uint32_t, 64> orbZigzagOrder;

// The raster position of each zigzag number, and eight entries of 63 behind them: a run that steps
// over the end of the block lands on the last coefficient.
extern const OrbTable<uint32_t, 72> orbZigzagNatural;

}  // namespace orb

#endif
