// From a JPEG file in memory to pixels.
#ifndef ORB_HOSTS_JPEG_DECODE_H
#define ORB_HOSTS_JPEG_DECODE_H

#include "hosts/bytes.h"
#include "hosts/image.h"

namespace orbhost::jpeg {

struct DecodeOptions {
  int scale = 1;    // the picture's size is divided by 1, 2, 4 or 8
  int scansTo = 0;  // the picture after that many scans; 0 is all of them
};

// Throws an Error if there is no such scale, or no such scan.
void checkOptions(const DecodeOptions& options);

// Huffman-coded files: baseline, extended sequential and progressive ones of 8-bit samples, with
// sampling factors of 1 and 2, and lossless ones of 2 to 16 bits; grey, YCbCr, RGB, CMYK and YCCK.
// The picture is grey, RGB or CMYK. Throws an Error that names the place in the file if it is
// damaged, cut off or of another kind.
Image decodeJpeg(ByteView file, const DecodeOptions& options);

}  // namespace orbhost::jpeg

#endif
