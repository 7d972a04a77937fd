// Which blocks of a macroblock have high-pass coefficients (ITU-T T.832).
#ifndef ORB_HOSTS_JXR_PATTERN_H
#define ORB_HOSTS_JXR_PATTERN_H

#include "hosts/jxr/bits.h"
#include "hosts/jxr/macroblock.h"
#include "hosts/jxr/models.h"

namespace orbhost::jxr {

// Into and from the macroblock's patterns. A bit is a block, in order of quarters.
void readPatterns(ColourFormat format, int channels, const Neighbours& neighbours, Models& models,
                  BitReader& from, Macroblock& block);
void writePatterns(ColourFormat format, int channels, const Neighbours& neighbours, Models& models,
                   const Macroblock& block, BitWriter& to);

// Where the block of a pattern's bit stands, counted in blocks.
struct BlockPlace {
  int x;
  int y;
};
inline BlockPlace placeOf(ColourFormat format, int channel, int block) {
  if (isHalvedAcross(format, channel)) return {block % 2, block / 2};
  return {(block & 1) | (block >> 1 & 2), (block >> 1 & 1) | (block >> 2 & 2)};
}

}  // namespace orbhost::jxr

#endif
