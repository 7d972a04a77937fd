// Quadrangles of real corners: whether they are convex, what of them lies in a rectangle of pixels,
// and which pixels those are.
#ifndef ORB_IMAGE_PX_QUADRANGLE_H
#define ORB_IMAGE_PX_QUADRANGLE_H

#include "frame/arith.h"
#include "frame/memory.h"

namespace orb::ORB_BUILD {

struct Point {
  Orb64f x, y;
};

inline Point operator-(Point a, Point b) {
  return {a.x - b.x, a.y - b.y};
}
// Above 0 if b turns from a towards positive y as y does from x.
inline Orb64f cross(Point a, Point b) {
  return a.x * b.y - a.y * b.x;
}

// Pixels from (left, top) to (right, bottom), all included.
struct Box {
  Orb32s left, top, right, bottom;
};

// Where so many pixels end. Loops can count past it.
inline Orb32s lastOf(Orb32s first, Orb32s length) {
  const int64_t last = int64_t{first} + length - 1;
  return last < INT32_MAX ? static_cast<Orb32s>(last) : INT32_MAX - 1;
}
inline Box boxOf(const OrbiRect& rect) {
  return {rect.x, rect.y, lastOf(rect.x, rect.width), lastOf(rect.y, rect.height)};
}

// The nearest whole numbers in low..high that are not below, or not above, a value. What is no
// number is low.
inline Orb32s ceilWithin(Orb64f value, Orb32s low, Orb32s high) {
  if (!(value > low)) return low;
  return value > high ? high : static_cast<Orb32s>(-__builtin_floor(-value));
}
inline Orb32s floorWithin(Orb64f value, Orb32s low, Orb32s high) {
  if (!(value > low)) return low;
  return value > high ? high : static_cast<Orb32s>(value);
}

namespace plain {

// Corners in their order around, the y axis pointing down.
struct Quadrangle {
  Point corner[4];

  // Whether all four turns go the same way, and none straight on.
  bool isConvex() const {
    Orb32s turnsLeft = 0, turnsRight = 0;
    for (Orb32s i = 0; i < 4; ++i) {
      const Point in = corner[(i + 1) & 3] - corner[i];
      const Point out = corner[(i + 2) & 3] - corner[(i + 1) & 3];
      const Orb64f turn = cross(in, out);
      turnsRight += turn > 0;
      turnsLeft += turn < 0;
    }
    return turnsRight == 4 || turnsLeft == 4;
  }
  // Whether they go around as those of an upright rectangle do.
  bool isUpright() const { return cross(corner[1] - corner[0], corner[3] - corner[0]) > 0; }
};

// A convex polygon. Each side of a rectangle adds one corner to a quadrangle at most; rounding
// could seem to add more, and those are dropped.
struct Polygon {
  static constexpr Orb32s kMost = 8;
  Point corner[kMost];
  Orb32s count;

  void add(Point point) {
    if (count < kMost) corner[count++] = point;
  }
};

// One side of the clipping by Sutherland and Hodgman: what lies at x >= limit, at x <= limit, or
// the same in y.
template <Orb64f Point::*Along, Orb64f Point::*Across, bool kAbove>
inline Polygon clipSide(const Polygon& polygon, Orb64f limit) {
  const auto isInside = [&](Point p) { return kAbove ? p.*Along >= limit : p.*Along <= limit; };
  Polygon clipped;
  clipped.count = 0;
  for (Orb32s i = 0; i < polygon.count; ++i) {
    const Point from = polygon.corner[i > 0 ? i - 1 : polygon.count - 1];
    const Point to = polygon.corner[i];
    if (isInside(from) != isInside(to)) {
      const Orb64f part = (limit - from.*Along) / (to.*Along - from.*Along);
      Point crossing;
      crossing.*Along = limit;
      crossing.*Across = from.*Across + (to.*Across - from.*Across) * part;
      clipped.add(crossing);
    }
    if (isInside(to)) clipped.add(to);
  }
  return clipped;
}

inline Polygon clip(const Quadrangle& quadrangle, const Box& box) {
  Polygon polygon;
  polygon.count = 0;
  for (const Point& corner : quadrangle.corner) polygon.add(corner);
  polygon = clipSide<&Point::x, &Point::y, true>(polygon, box.left);
  polygon = clipSide<&Point::x, &Point::y, false>(polygon, box.right);
  polygon = clipSide<&Point::y, &Point::x, true>(polygon, box.top);
  return clipSide<&Point::y, &Point::x, false>(polygon, box.bottom);
}

// Columns of a row, the first and the last.
struct Span {
  Orb32s first, last;
};

// The pixels of a polygon, row by row: those whose centres it holds, its edge included, and those
// less than 1e-13 beside it in their row. Made for one call, and then freed.
class Spans {
 public:
  // The polygon lies in the box.
  Spans(const Polygon& polygon, const Box& box) {
    if (polygon.count == 0) return;
    Point low = polygon.corner[0], high = low;
    for (Orb32s i = 1; i < polygon.count; ++i) {
      const Point& p = polygon.corner[i];
      if (p.x < low.x) low.x = p.x;
      if (p.y < low.y) low.y = p.y;
      if (p.x > high.x) high.x = p.x;
      if (p.y > high.y) high.y = p.y;
    }
    top_ = ceilWithin(low.y, box.top, box.bottom);
    const Orb32s bottom = floorWithin(high.y, box.top, box.bottom);
    const Orb32s left = ceilWithin(low.x, box.left, box.right);
    const Orb32s right = floorWithin(high.x, box.left, box.right);
    if (top_ > bottom || left > right) return;
    const int64_t bytes = (int64_t{bottom} - top_ + 1) * static_cast<int64_t>(sizeof(Span));
    if (bytes > INT32_MAX) return;
    rows_ = static_cast<Span*>(orbMalloc(static_cast<Orb32s>(bytes)));
    if (!rows_) return;
    count_ = bottom - top_ + 1;
    for (Orb32s i = 0; i < count_; ++i) rows_[i] = {INT32_MAX, INT32_MIN};
    for (Orb32s i = 0; i < polygon.count; ++i) {
      addEdge(polygon.corner[i], polygon.corner[i + 1 < polygon.count ? i + 1 : 0], box);
    }
  }
  ~Spans() { orbFree(rows_); }
  Spans(const Spans&) = delete;
  Spans& operator=(const Spans&) = delete;

  // None, if the polygon holds no pixel or there is no memory.
  bool areEmpty() const { return count_ == 0; }
  Orb32s top() const { return top_; }
  Orb32s bottom() const { return top_ + count_ - 1; }
  Span row(Orb32s y) const { return rows_[y - top_]; }

 private:
  // Widens the rows that an edge crosses to where it does. The two outermost crossings of a row are
  // those of the polygon.
  void addEdge(Point a, Point b, const Box& box) {
    const Point upper = a.y < b.y ? a : b, lower = a.y < b.y ? b : a;
    Orb64f y = -__builtin_floor(-upper.y);
    if (y < top_) y = top_;
    for (; y <= lower.y && y <= bottom(); ++y) {
      if (y == upper.y) widen(y, upper.x, box);
      if (y == lower.y) widen(y, lower.x, box);
      if (y == upper.y || y == lower.y) continue;
      const Orb64f part = (y - upper.y) / (lower.y - upper.y);
      widen(y, upper.x + (lower.x - upper.x) * part, box);
    }
  }
  void widen(Orb64f y, Orb64f x, const Box& box) {
    constexpr Orb64f kHair = 1e-13;
    Span& span = rows_[static_cast<Orb32s>(y) - top_];
    const Orb64f above = -__builtin_floor(-x), below = __builtin_floor(x);
    const Orb64f first = x + 1 - above < kHair ? above - 1 : above;
    const Orb64f last = below + 1 - x < kHair ? below + 1 : below;
    const Orb32s left = ceilWithin(first, box.left, box.right);
    const Orb32s right = floorWithin(last, box.left, box.right);
    if (left < span.first) span.first = left;
    if (right > span.last) span.last = right;
  }

  Span* rows_ = nullptr;
  Orb32s top_ = 0;
  Orb32s count_ = 0;
};

}  // namespace plain
}  // namespace orb::ORB_BUILD

#endif
