// From the scans of a lossless JPEG file (ITU-T T.81 annex H) to pixels.
#ifndef ORB_HOSTS_JPEG_LOSSLESS_DECODE_H
#define ORB_HOSTS_JPEG_LOSSLESS_DECODE_H

#include "hosts/bytes.h"
#include "hosts/image.h"
#include "hosts/jpeg/marker_reader.h"

namespace orbhost::jpeg {

// The picture after `scansTo` scans, or all of them if that is 0: grey, RGB or CMYK, with a maximum
// of as many bits as the file's samples have. The reader has found the first scan. Throws an Error
// if the file is damaged, or ends before its scans do.
Image decodeLossless(ByteView file, MarkerReader& markers, int scansTo);

}  // namespace orbhost::jpeg

#endif
