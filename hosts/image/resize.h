// Resizing of whole pictures and of raw 4:2:2 frames.
#ifndef ORB_HOSTS_IMAGE_RESIZE_H
#define ORB_HOSTS_IMAGE_RESIZE_H

#include "hosts/bytes.h"
#include "hosts/image.h"
#include "orb90legacy.h"

namespace orbhost::image {

// A part of a picture, scaled and then moved, in a result of this size.
struct Placement {
  OrbiRect region;
  double xFactor, yFactor;
  double xShift, yShift;
  OrbiSize size;
};

// The whole picture as a picture of this size, or scaled; a pixel that is covered in part is one.
Placement placedInto(const Image& image, OrbiSize size);
Placement placedBy(const Image& image, double factor);

// What is not drawn is 0: black, and transparent.
Image resize(const Image& image, const Placement& placement, int interpolation);

// Frames of bytes Y0, Cb, Y1, Cr, one behind the other.
Bytes resizeYuv(ByteView frames, OrbiSize from, OrbiSize to, int method);

}  // namespace orbhost::image

#endif
