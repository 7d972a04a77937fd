// Between a picture's pixels and the channels that are coded (ITU-T T.832).
#ifndef ORB_HOSTS_JXR_COLOUR_H
#define ORB_HOSTS_JXR_COLOUR_H

#include <vector>

#include "hosts/image.h"
#include "hosts/jxr/headers.h"
#include "hosts/jxr/samples.h"

namespace orbhost::jxr {

// Planes of whole macroblocks from a picture of the header's size; what lies outside of it repeats
// its last column and row.
std::vector<Plane> planesFrom(const Image& image, const ImageHeader& header,
                              const PlaneHeader& plane);

// The picture within the planes, not yet turned as the header says.
Image imageFrom(const std::vector<Plane>& planes, const ImageHeader& header,
                const PlaneHeader& plane);

}  // namespace orbhost::jxr

#endif
