// Pictures as PNG files, by libpng. Where there is none, both functions throw an Error that says
// so.
#ifndef ORB_HOSTS_PNG_FILE_H
#define ORB_HOSTS_PNG_FILE_H

#include "hosts/bytes.h"
#include "hosts/image.h"

namespace orbhost {

// Samples of another depth are scaled to 8 bits, palettes looked up, and transparency is dropped.
Image parsePng(ByteView file);

Bytes formatPng(const Image& image);

}  // namespace orbhost

#endif
