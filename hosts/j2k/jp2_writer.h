// The JP2 file format (ITU-T T.800 annex I).
#ifndef ORB_HOSTS_J2K_JP2_WRITER_H
#define ORB_HOSTS_J2K_JP2_WRITER_H

#include "hosts/bytes.h"
#include "hosts/j2k/parameters.h"

namespace orbhost::j2k {

// What stands in front of a codestream of so many bytes: the boxes that say that this is a JP2 file
// of a grey picture or one in sRGB, and the head of the codestream's own box.
Bytes jp2Header(const PictureSize& size, size_t codestreamLength);

}  // namespace orbhost::j2k

#endif
