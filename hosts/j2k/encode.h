// From pixels to a JPEG 2000 file in memory.
#ifndef ORB_HOSTS_J2K_ENCODE_H
#define ORB_HOSTS_J2K_ENCODE_H

#include <cstdint>
#include <vector>

#include "hosts/bytes.h"
#include "hosts/image.h"
#include "hosts/j2k/parameters.h"

namespace orbhost::j2k {

struct EncodeOptions {
  bool isLossless = true;  // 5/3, and every sample comes back; else 9/7
  bool isRaw = false;      // a codestream alone, without the boxes of a JP2 file
  int levels = 5;          // 0 to 32
  uint32_t tileWidth = 0;  // 0: one tile
  uint32_t tileHeight = 0;
  int blockWidth = 64;  // powers of 2 from 4 to 1024, of no more than 4096 samples
  int blockHeight = 64;
  int blockStyle = 0;  // a sum of BlockStyle
  // Exponents, for the highest resolution first; the last one also counts for all that follow.
  std::vector<PrecinctSize> precincts;
  Progression progression = Progression::kLrcp;
  bool hasSop = false;
  bool hasEph = false;

  // What the layers hold, from the first one: bits per pixel of the whole file up to there, or what
  // the picture is like with them in dB; no more than one of the two. A lossless file has one more
  // layer with all the rest, and a lossy one without any goal has all there is.
  std::vector<double> rates;
  std::vector<double> psnrs;
  // If there are to be more layers than goals, they lie below the first goal: each has half the
  // bytes of the one behind it, if there are few, or 3 dB less.
  int layers = 0;
};

// A file of a grey or RGB picture of 1 to 16 bits. Throws an Error if the options do not go
// together or are beyond what the format can hold.
Bytes encodeJ2k(const Image& image, const EncodeOptions& options);

}  // namespace orbhost::j2k

#endif
