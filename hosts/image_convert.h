// Pictures turned into others of the same size.
#ifndef ORB_HOSTS_IMAGE_CONVERT_H
#define ORB_HOSTS_IMAGE_CONVERT_H

#include "hosts/image.h"

namespace orbhost {

// RGB in place of CMYK: the light that the inks leave. Any other picture stays as it is.
Image withoutInks(Image image);

}  // namespace orbhost

#endif
