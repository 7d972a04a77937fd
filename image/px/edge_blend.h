// Smooth edges: the pixels just outside of a polygon get what the edge leaves of them.
#ifndef ORB_IMAGE_PX_EDGE_BLEND_H
#define ORB_IMAGE_PX_EDGE_BLEND_H

#include "frame/memory_access.h"
#include "image/px/quadrangle.h"

namespace orb::ORB_BUILD::plain {

// The destination, whose own pixels are mixed. The polygon goes around upright or not, and lies in
// the box, which holds every pixel that is touched.
template <Orb32s kChannels>
inline void blendEdges(const Polygon& polygon, bool upright, const Box& box, Orb8u* dst,
                       Orb32s dstStep) {
  if (polygon.count < 3) return;
  for (Orb32s i = 0; i < polygon.count; ++i) {
    const Point a = polygon.corner[i];
    const Point b = polygon.corner[i + 1 < polygon.count ? i + 1 : 0];
    const Point edge = b - a;
    if (edge.x == 0 || edge.y == 0) continue;

    // Along the edge's longer axis there is one crossing at each pixel, between two across. An
    // upright polygon lies below an edge that goes to the right, and to the left of one that goes
    // down.
    const bool byColumns = __builtin_fabs(edge.x) >= __builtin_fabs(edge.y);
    const bool insideIsHigher = byColumns ? (edge.x > 0) == upright : (edge.y < 0) == upright;
    const Orb64f fromAlong = byColumns ? a.x : a.y, toAlong = byColumns ? b.x : b.y;
    const Orb64f fromAcross = byColumns ? a.y : a.x, toAcross = byColumns ? b.y : b.x;
    const Orb64f slope = (toAcross - fromAcross) / (toAlong - fromAlong);
    const bool forward = fromAlong < toAlong;
    const Orb32s low = byColumns ? box.left : box.top, high = byColumns ? box.right : box.bottom;
    const Orb32s acrossLow = byColumns ? box.top : box.left;
    const Orb32s acrossHigh = byColumns ? box.bottom : box.right;
    const Orb32s end = floorWithin(forward ? toAlong : fromAlong, low, high);
    for (Orb32s along = ceilWithin(forward ? fromAlong : toAlong, low, high); along <= end;
         ++along) {
      const Orb64f crossing = fromAcross + (along - fromAlong) * slope;
      const Orb32s below = floorWithin(crossing, acrossLow, acrossHigh);
      const Orb32s above = ceilWithin(crossing, acrossLow, acrossHigh);
      if (below == above) continue;
      const Orb32s inner = insideIsHigher ? above : below, outer = insideIsHigher ? below : above;
      const Orb64f innerWeight = __builtin_fabs(crossing - inner);
      const Orb64f outerWeight = __builtin_fabs(crossing - outer);
      const auto pixel = [&](Orb32s across) {
        const ptrdiff_t column = byColumns ? along : across;
        return rowAt(dst, dstStep, byColumns ? across : along) + column * kChannels;
      };
      const Orb8u* from = pixel(inner);
      Orb8u* to = pixel(outer);
      for (Orb32s k = 0; k < kChannels; ++k) {
        const Orb64f mixed = from[k] * innerWeight + to[k] * outerWeight + 0.5;
        to[k] = static_cast<Orb8u>(static_cast<Orb32s>(mixed));
      }
    }
  }
}

}  // namespace orb::ORB_BUILD::plain

#endif
