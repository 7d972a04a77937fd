// Pictures turned into others of the same size.
#ifndef ORB_HOSTS_IMAGE_CONVERT_H
#define ORB_HOSTS_IMAGE_CONVERT_H

#include <cstdint>

#include "hosts/image.h"

namespace orbhost {

// A sample of one range in another, to nearest.
inline int rescale(int sample, int from, int to) {
  return static_cast<int>((static_cast<uint32_t>(sample) * static_cast<uint32_t>(to) +
                           static_cast<uint32_t>(from) / 2) /
                          static_cast<uint32_t>(from));
}

// The picture with another maximum, and its samples rescaled.
Image withMaximum(const Image& image, int maximum);

// RGB in place of CMYK: the light that the inks leave.
Image withoutInks(const Image& image);

}  // namespace orbhost

#endif
