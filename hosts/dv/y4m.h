// Frames as a YUV4MPEG2 stream.
#ifndef ORB_HOSTS_DV_Y4M_H
#define ORB_HOSTS_DV_Y4M_H

#include "hosts/bytes.h"
#include "hosts/dv/format.h"

namespace orbhost::dv {

// What stands in front of all frames.
Bytes y4mHeader(const Format& format);

// What stands in front of each, behind which its planes follow.
Bytes y4mFrameHeader();

}  // namespace orbhost::dv

#endif
