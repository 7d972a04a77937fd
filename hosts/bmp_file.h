// Pictures as BMP files.
#ifndef ORB_HOSTS_BMP_FILE_H
#define ORB_HOSTS_BMP_FILE_H

#include "hosts/bytes.h"
#include "hosts/image.h"
#include "hosts/packed_image.h"

namespace orbhost {

// A grey or RGB picture, with 24 bits to a pixel.
Bytes formatBmp(const Image& image);

// With 16 bits to a pixel.
Bytes formatBmp(const PackedImage& image);

// Reads a file of 16 bits to a pixel, of 5 + 5 + 5 or 5 + 6 + 5 bits. An Error says what another
// is.
PackedImage parsePackedBmp(ByteView file);

}  // namespace orbhost

#endif
