// Pictures as portable any-maps: PGM and PPM in binary and in ASCII, and PAM.
#ifndef ORB_HOSTS_PNM_FILE_H
#define ORB_HOSTS_PNM_FILE_H

#include <string>

#include "hosts/bytes.h"
#include "hosts/image.h"

namespace orbhost {

// Whether a file begins as one of them.
bool isPnm(ByteView file);

// The picture's maximum is the file's. A PAM is grey, RGB or CMYK, and its transparency is dropped.
Image parsePnm(ByteView file);

// A grey or RGB picture as binary PGM or PPM. A grey one as PPM has its channel three times.
Bytes formatPnm(const Image& image, int channels);

// Any picture.
Bytes formatPam(const Image& image);

// Channels of any number, which are what a tuple type says; an empty one is left out.
Bytes formatPam(const Image& image, const std::string& tupleType);

}  // namespace orbhost

#endif
