// From a JPEG XR file in memory to pixels.
#ifndef ORB_HOSTS_JXR_DECODE_H
#define ORB_HOSTS_JXR_DECODE_H

#include "hosts/bytes.h"
#include "hosts/image.h"

namespace orbhost::jxr {

// Pictures of 8 or 16 bits to a sample: grey, RGB (whose chroma may be halved) and CMYK, in any
// tiles and order, with any of their bands. A plane of transparency is dropped. Throws an Error if
// the file is damaged, cut off or of another kind.
Image decodeJxr(ByteView file);

}  // namespace orbhost::jxr

#endif
