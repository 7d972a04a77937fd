// jxrlib as a peer, in memory. Its header has macros of common names and is kept out of sight.
#ifndef ORB_BENCH_JPEGXR_JXRLIB_PEER_H
#define ORB_BENCH_JPEGXR_JXRLIB_PEER_H

#include "hosts/bytes.h"
#include "hosts/image.h"

namespace orbbench {

// An RGB picture of 8 bits in spatial order with one overlap filter, and one quantiser for all; 0
// keeps all. An exception if the library fails.
orbhost::Bytes jxrlibEncode(const orbhost::Image& image, int quantiser, bool halvedChroma);
orbhost::Image jxrlibDecode(const orbhost::Bytes& file);

}  // namespace orbbench

#endif
