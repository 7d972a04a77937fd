// From the amplitudes that a segment codes to the coefficients of a DCT.
#ifndef ORB_HOSTS_DV_QUANTISATION_H
#define ORB_HOSTS_DV_QUANTISATION_H

#include <cstdint>
#include <vector>

#include "hosts/dv/format.h"

namespace orbhost::dv {

// The scans of 8-8 and of 2-4-8 blocks, one behind the other: by scan position the place of a
// coefficient in its block. Rows 0 to 3 of 2-4-8 are of the sums of lines, rows 4 to 7 of their
// differences.
const uint32_t* scanTables();

// What the library says of a decoded block (pBlockInfo).
struct BlockInfo {
  explicit BlockInfo(uint32_t word)
      : hasEnded((word & 1) != 0),
        mode(word >> 6 & 1),
        blockClass(static_cast<int>(word >> 4 & 3)),
        lastPosition(static_cast<int>(word >> 8 & 255)),
        quantisation(static_cast<int>(word >> 16 & 15)) {}

  bool hasEnded;
  unsigned mode;
  int blockClass;
  int lastPosition;
  int quantisation;
};

// Dequantises and weights a block of 25 or 50 Mbit/s in place.
void dequantise(int16_t* block, BlockInfo info);

// The same for DV100, with the weights of luma or chroma.
const int16_t* dv100Weights(const Format& format, bool isChroma);
int dv100Step(BlockInfo info);

}  // namespace orbhost::dv

#endif
