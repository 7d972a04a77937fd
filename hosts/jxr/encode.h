// From pixels to a JPEG XR file in memory.
#ifndef ORB_HOSTS_JXR_ENCODE_H
#define ORB_HOSTS_JXR_ENCODE_H

#include <optional>

#include "hosts/bytes.h"
#include "hosts/image.h"

namespace orbhost::jxr {

enum class Subsampling { k444, k422, k420 };

struct EncodeOptions {
  int quality = 90;              // 1 to 100; 100 keeps all
  std::optional<int> quantiser;  // an index from 0 to 255 in place of the quality; 0 keeps all
  Subsampling subsampling = Subsampling::k444;  // of RGB
  int overlap = 1;                              // stages of overlap filters, 0 to 2
  bool frequencyOrder = false;  // band by band, in place of macroblock by macroblock
  int trim = 0;                 // lowest flexbits that are dropped, 0 to 15
  // Pixels of a tile across and down, multiples of 16; 0 is all of them.
  int tileWidth = 0;
  int tileHeight = 0;
  bool hardTiles = false;  // overlap filters stop at the borders of tiles
};

// A file of a grey, RGB or CMYK picture, with samples of 8 bits if its maximum is up to 255, else
// of
// 16. Grey and CMYK are not subsampled. Throws an Error if the options do not go together.
Bytes encodeJxr(const Image& image, const EncodeOptions& options);

}  // namespace orbhost::jxr

#endif
