// The perspective transform that takes a picture's corners to four points.
#ifndef ORB_HOSTS_IMAGE_HOMOGRAPHY_H
#define ORB_HOSTS_IMAGE_HOMOGRAPHY_H

#include <array>

namespace orbhost::image {

struct Point {
  double x, y;
};
// Left top, right top, right bottom, left bottom.
using Corners = std::array<Point, 4>;

struct Homography {
  double coeffs[3][3];
};

// For a picture of so many pixels, 2 x 2 at least, whose corners are the centres of the outermost
// ones. Throws an Error if three of the points lie in a line.
Homography homographyTo(const Corners& corners, int width, int height);

}  // namespace orbhost::image

#endif
