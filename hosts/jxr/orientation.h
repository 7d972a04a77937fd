// A picture as it is to be shown (ITU-T T.832).
#ifndef ORB_HOSTS_JXR_ORIENTATION_H
#define ORB_HOSTS_JXR_ORIENTATION_H

#include "hosts/image.h"

namespace orbhost::jxr {

// By the header's number: 4 turns clockwise by a quarter, then 2 flips left and right, and 1 flips
// top and bottom.
Image turned(Image image, int orientation);

}  // namespace orbhost::jxr

#endif
