// Pictures as PNG files, by libpng. Where there is none, both functions throw an Error that says
// so.
#ifndef ORB_HOSTS_PNG_FILE_H
#define ORB_HOSTS_PNG_FILE_H

#include "hosts/bytes.h"
#include "hosts/image.h"

namespace orbhost {

// Palettes are looked up, samples of less than 8 bits scaled to 8, and transparency is dropped.
// Where the file says that fewer bits are significant (sBIT), and no sample holds more, the
// picture's maximum has as many bits.
Image parsePng(ByteView file);

// A grey or RGB picture, with 8 or 16 bits to a sample. If its maximum has another number of bits,
// the file says so.
Bytes formatPng(const Image& image);

}  // namespace orbhost

#endif
