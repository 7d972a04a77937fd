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

// Takes a set of coefficients from raster to zigzag order, bit by bit: entry 16 * n + m is the set
// of the zigzag numbers of those of the raster positions 4 * n to 4 * n + 3 whose bits are set in
// m.
extern const OrbTable<uint64_t, 256> orbZigzagMask;

}  // namespace orb

#endif
