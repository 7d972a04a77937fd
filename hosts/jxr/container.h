// The file around a codestream: tags as in TIFF (ITU-T T.832).
#ifndef ORB_HOSTS_JXR_CONTAINER_H
#define ORB_HOSTS_JXR_CONTAINER_H

#include "hosts/bytes.h"

namespace orbhost::jxr {

// The codestream within a file; an Error if there is none.
ByteView findCodestream(ByteView file);

// A file of a grey picture (1 channel), RGB (3) or CMYK (4) with samples of 8 or 16 bits.
Bytes makeFile(int width, int height, int channels, int bits, ByteView codestream);

}  // namespace orbhost::jxr

#endif
