// Pictures as PNG files, by libpng. Where there is none, both functions throw an Error that says
// so.
#ifndef ORB_HOSTS_PNG_FILE_H
#define ORB_HOSTS_PNG_FILE_H

#include "hosts/bytes.h"
#include "hosts/image.h"

namespace orbhost {

enum class Transparency { kDropped, kKept };

// Palettes are looked up, samples of less than 8 bits scaled to 8. Transparency is dropped, or it
// makes any picture that has it one of four channels, RGBA. Where the file says that fewer bits are
// significant (sBIT), and no sample holds more, the picture's maximum has as many bits.
Image parsePng(ByteView file, Transparency transparency = Transparency::kDropped);

// A grey, RGB or RGBA picture, with 8 or 16 bits to a sample. If its maximum has another number of
// bits, the file says so.
Bytes formatPng(const Image& image);

}  // namespace orbhost

#endif
