// What the components of a picture are.
#ifndef ORB_HOSTS_JPEG_COLOUR_H
#define ORB_HOSTS_JPEG_COLOUR_H

#include "hosts/jpeg/marker_reader.h"

namespace orbhost::jpeg {

enum class ColourSpace { kGrey, kYCbCr, kRgb, kCmyk, kYcck };

// What the components of a file are is not in its frame: JFIF means YCbCr, an Adobe segment tells,
// and some files name their components R, G and B. Where nothing tells, three components are YCbCr;
// but RGB in a lossless file, unless they are subsampled.
ColourSpace colourSpaceOf(const MarkerReader& markers);

// Files with an Adobe segment store inks as the light that they leave.
inline bool storesLight(const MarkerReader& markers) {
  return markers.adobeTransform().has_value();
}

}  // namespace orbhost::jpeg

#endif
