// Baseline TIFF files (TIFF 6.0) of one grey or RGB picture, in strips of PackBits rows.
#ifndef ORB_HOSTS_TIFF_TIFF_FILE_H
#define ORB_HOSTS_TIFF_TIFF_FILE_H

#include <cstdint>
#include <vector>

#include "hosts/bytes.h"
#include "hosts/image.h"

namespace orbhost::tiff {

// What a file's directory says of its picture.
struct Directory {
  bool bigEndian = false;
  uint32_t width = 0;
  uint32_t height = 0;
  std::vector<uint32_t> bits = {1};  // of the samples of a pixel
  uint32_t compression = 1;
  uint32_t photometric = 0;
  uint32_t samplesPerPixel = 1;
  uint32_t rowsPerStrip = UINT32_MAX;
  uint32_t planarConfiguration = 1;
  uint32_t fillOrder = 1;
  uint32_t sampleFormat = 1;
  std::vector<uint32_t> stripOffsets;
  std::vector<uint32_t> stripSizes;
};

// Of the first picture; an Error if the file is no TIFF or cut.
Directory readDirectory(ByteView file);

// A picture of 8 or 16 bits to a sample, grey or RGB, packed or not. White may be the lowest grey.
Image parseTiff(ByteView file);

// Samples above 8 bits are stored in 16, as shares of 65535. The Error says what TIFF can't hold.
Bytes formatTiff(const Image& image);

}  // namespace orbhost::tiff

#endif
