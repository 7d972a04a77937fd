#include "hosts/image/homography.h"

#include <cmath>

#include "hosts/error.h"

namespace orbhost::image {

// First of the unit square: with g and h the last row, the four corners are
//
//   (0, 0): p0    (1, 0): (a + p0.x) / (g + 1) = p1.x    (0, 1): (b + p0.x) / (h + 1) = p3.x
//   (1, 1): (a + b + p0.x) / (g + h + 1) = p2.x
//
// and the same in y; without a and b, two equations are left for g and h.
Homography homographyTo(const Corners& p, int width, int height) {
  const Point u = {p[1].x - p[2].x, p[1].y - p[2].y};
  const Point v = {p[3].x - p[2].x, p[3].y - p[2].y};
  const Point sum = {p[0].x - p[1].x + p[2].x - p[3].x, p[0].y - p[1].y + p[2].y - p[3].y};
  const double area = u.x * v.y - v.x * u.y;
  if (!(std::fabs(area) > 1e-9)) throw Error("three of the four corners lie in a line");
  const double g = (sum.x * v.y - v.x * sum.y) / area;
  const double h = (u.x * sum.y - sum.x * u.y) / area;
  const double w = width - 1, t = height - 1;
  return {{{(p[1].x - p[0].x + g * p[1].x) / w, (p[3].x - p[0].x + h * p[3].x) / t, p[0].x},
           {(p[1].y - p[0].y + g * p[1].y) / w, (p[3].y - p[0].y + h * p[3].y) / t, p[0].y},
           {g / w, h / t, 1}}};
}

}  // namespace orbhost::image
