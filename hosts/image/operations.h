// The library's image operations on whole pictures: what a host adds is the room around them, the
// destination and the choice of the function by the number of channels.
#ifndef ORB_HOSTS_IMAGE_OPERATIONS_H
#define ORB_HOSTS_IMAGE_OPERATIONS_H

#include "hosts/image.h"
#include "hosts/image/homography.h"
#include "orb90legacy.h"

namespace orbhost::image {

// Throws an Error if the library did not do its work.
void check(OrbStatus status);

enum class FilterKind { kGauss, kHipass, kLaplace, kLowpass };

// The pixels at the edge are repeated around the picture.
Image filter(const Image& image, FilterKind kind, OrbiMaskSize mask);
Image dilate(const Image& image);
Image erode(const Image& image);

// The size of the result: that of the picture, or what all of the drawn picture needs.
enum class Canvas { kSame, kFit };

// Counter-clockwise about the middle. What is not drawn is 0: black, and transparent.
Image rotate(const Image& image, double degrees, Canvas canvas, int interpolation);

// The corners of the picture go to these points, from the left top on as the clock goes.
Image warp(const Image& image, const Corners& corners, Canvas canvas, int interpolation);

}  // namespace orbhost::image

#endif
