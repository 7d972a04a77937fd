// What is kept of each macroblock of a plane.
#ifndef ORB_HOSTS_JXR_MACROBLOCK_H
#define ORB_HOSTS_JXR_MACROBLOCK_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "hosts/jxr/format.h"
#include "hosts/jxr/headers.h"

namespace orbhost::jxr {

struct Macroblock {
  // Quantised coefficients of the second stage's transform by their numbers. Number 0 is the DC
  // level. Halved chroma has 4 or 8 of them, other channels 16: 4 times the vertical frequency and
  // the horizontal one.
  int32_t levels[kMostChannels][16];
  uint16_t pattern[kMostChannels];  // of blocks with high-pass coefficients
  uint8_t lowPassNumber;            // of its quantisers
  uint8_t highPassNumber;
};

// Those that a tile has beside a macroblock, or null.
struct Neighbours {
  const Macroblock* left;
  const Macroblock* top;
  const Macroblock* topLeft;
};

class Macroblocks {
 public:
  Macroblocks(int wide, int high)
      : wide_(wide), all_(static_cast<size_t>(wide) * static_cast<size_t>(high)) {}

  Macroblock& at(int x, int y) { return all_[static_cast<size_t>(y) * wide_ + x]; }

  // Of the macroblock at a place within a tile.
  Neighbours around(const Tile& tile, int x, int y) const {
    const Macroblock* const self = &all_[static_cast<size_t>(tile.top + y) * wide_ + tile.left + x];
    return {x > 0 ? self - 1 : nullptr, y > 0 ? self - wide_ : nullptr,
            x > 0 && y > 0 ? self - wide_ - 1 : nullptr};
  }

 private:
  int wide_;
  std::vector<Macroblock> all_;
};

}  // namespace orbhost::jxr

#endif
