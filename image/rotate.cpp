// Rotation: argument checks, then right angles by copying and others by the inverse map.
#include "image/px/right_angle.h"
#include "image/transform.h"

namespace orb::ORB_BUILD {

static bool isFinite(Orb64f value) {
  return __builtin_isfinite(value);
}
static Orb64f truncated(Orb64f value) {
  return value < 0 ? -__builtin_floor(-value) : __builtin_floor(value);
}

// Apart, so that the compiler does not make one call of it and the sine: of a function that is not
// C's.
[[gnu::noinline]] static Orb64f cosineOf(Orb64f radians) {
  return __builtin_cos(radians);
}

// A turn: the angle in 0..360, and exact sines and cosines where the angle is right.
struct Turn {
  Orb64f angle, sine, cosine;

  explicit Turn(Orb64f any) : angle(any - truncated(any / 360) * 360) {
    if (angle < 0) angle += 360;
    if (angle == 90) {
      sine = 1, cosine = 0;
    } else if (angle == 180) {
      sine = 0, cosine = -1;
    } else if (angle == 270) {
      sine = -1, cosine = 0;
    } else {
      const Orb64f radians = angle / 180 * 3.14159265358979323846;
      sine = __builtin_sin(radians);
      cosine = cosineOf(radians);
    }
  }
  bool isRight() const { return angle == 90 || angle == 180 || angle == 270; }
};

// The shift that brings the centre back to where it was. With a right angle's exact sine and cosine
// no product is rounded.
static Point shiftAbout(Point centre, const Turn& turn) {
  if (turn.angle == 0) return {0, 0};
  return {centre.x - centre.x * turn.cosine - centre.y * turn.sine,
          centre.y - turn.cosine * centre.y + centre.x * turn.sine};
}

// A whole number of pixels; beyond 2^40 no image is reached, and the sums below stay exact.
static int64_t wholeShift(Orb64f shift) {
  constexpr Orb64f kFar = 1099511627776.0;
  return static_cast<int64_t>(limit(shift, -kFar, kFar));
}

struct Range {
  int64_t first, last;

  Range within(const Range& other) const {
    return {first > other.first ? first : other.first, last < other.last ? last : other.last};
  }
  bool isEmpty() const { return first > last; }
  int64_t length() const { return last - first + 1; }
};

template <Orb32s kChannels>
static OrbStatus rotateRight(const Transform& transform, const Turn& turn, Point shift) {
  if (!transform.pSrc || !transform.pDst) return orbStsNullPtrErr;
  if (!transform.hasSizes()) return orbStsSizeErr;
  if (!transform.beginsInSource()) return orbStsRoiOutside;

  // A destination coordinate is a source coordinate plus or minus: x' = sine * y + cosine * x +
  // shift, y' = cosine * y - sine * x + shift, in which one of the two factors is 0.
  const Box source = transform.sourceBox();
  const int64_t sine = static_cast<int64_t>(turn.sine);
  const int64_t cosine = static_cast<int64_t>(turn.cosine);
  const int64_t xShift = wholeShift(shift.x), yShift = wholeShift(shift.y);
  const auto turnedX = [&](int64_t x, int64_t y) { return cosine * x + sine * y + xShift; };
  const auto turnedY = [&](int64_t x, int64_t y) { return cosine * y - sine * x + yShift; };
  const auto between = [](int64_t a, int64_t b) { return a < b ? Range{a, b} : Range{b, a}; };
  const Box box = boxOf(transform.dstRoi);
  const Range columns =
      between(turnedX(source.left, source.top), turnedX(source.right, source.bottom))
          .within({box.left, box.right});
  const Range rows = between(turnedY(source.left, source.top), turnedY(source.right, source.bottom))
                         .within({box.top, box.bottom});
  if (columns.isEmpty() || rows.isEmpty()) return orbStsRoiOutside;

  // Turned back, to where the first pixel comes from.
  const int64_t dx = columns.first - xShift, dy = rows.first - yShift;
  const ptrdiff_t x = static_cast<ptrdiff_t>(cosine * dx - sine * dy);
  const ptrdiff_t y = static_cast<ptrdiff_t>(sine * dx + cosine * dy);
  const ptrdiff_t column = kChannels, row = transform.srcStep;
  const ptrdiff_t cosineStep = static_cast<ptrdiff_t>(cosine),
                  sineStep = static_cast<ptrdiff_t>(sine);
  plain::copyTurned<kChannels>(
      rowAt(transform.pSrc, transform.srcStep, y) + x * kChannels,
      cosineStep * column + sineStep * row, cosineStep * row - sineStep * column,
      rowAt(transform.pDst, transform.dstStep, static_cast<ptrdiff_t>(rows.first)) +
          static_cast<ptrdiff_t>(columns.first) * kChannels,
      transform.dstStep, static_cast<Orb32s>(columns.length()), static_cast<Orb32s>(rows.length()));
  return orbStsNoErr;
}

template <Orb32s kChannels>
static OrbStatus rotateAny(const Transform& transform, const Turn& turn, Point shift) {
  if (!transform.pSrc || !transform.pDst) return orbStsNullPtrErr;
  if (!transform.hasSizes()) return orbStsSizeErr;
  if (!transform.hasMethod()) return orbStsInterpolationErr;
  if (!transform.beginsInSource()) return orbStsRoiOutside;
  const Box box = transform.sourceBox();
  if (isSmall(box)) return orbStsRoiSmallErr;
  const plain::Quadrangle turned = mapCorners(box, [&](Orb64f x, Orb64f y) {
    return Point{turn.cosine * x + turn.sine * y + shift.x,
                 turn.cosine * y - turn.sine * x + shift.y};
  });
  if (!turned.isConvex()) return orbStsCoeffErr;

  // Back: the quadrangle's first corner goes to the box's, and along its edges by its sides.
  const Point right = turned.corner[1] - turned.corner[0];
  const Point down = turned.corner[3] - turned.corner[0];
  const Orb64f area = cross(right, down);
  const Orb64f width = box.right - box.left, height = box.bottom - box.top;
  const Orb64f xOfX = width * down.y / area, xOfY = -width * down.x / area;
  const Orb64f yOfX = -height * right.y / area, yOfY = height * right.x / area;
  const Point first = turned.corner[0];
  const Orb64f xStart = box.left - xOfX * first.x - xOfY * first.y;
  const Orb64f yStart = box.top - yOfX * first.x - yOfY * first.y;

  const Orb32s method = transform.method() == orbInterLagrange && transform.isSmallSource()
                            ? orbInterLinear
                            : transform.method();
  return drawQuadrangle<kChannels>(
      transform, method, turned, [&](Orb32s x, Orb32s y, Orb32s count, Places& places) {
        const Orb64f xOfRow = xOfY * y + xStart, yOfRow = yOfY * y + yStart;
        for (Orb32s i = 0; i < count; ++i) {
          places.x[i] = xOfX * (x + i) + xOfRow;
          places.y[i] = yOfX * (x + i) + yOfRow;
        }
      });
}

template <Orb32s kChannels>
static OrbStatus rotate(const Transform& transform, const Turn& turn, Point shift) {
  const bool isWhole = truncated(shift.x) == shift.x && truncated(shift.y) == shift.y;
  return turn.isRight() && isWhole ? rotateRight<kChannels>(transform, turn, shift)
                                   : rotateAny<kChannels>(transform, turn, shift);
}

template <Orb32s kChannels>
[[gnu::noinline]] static OrbStatus rotateShifted(const Transform& transform, Orb64f angle,
                                                 Point shift) {
  if (!isFinite(angle)) return orbStsAngleErr;
  return rotate<kChannels>(transform, Turn(angle), shift);
}

template <Orb32s kChannels>
[[gnu::noinline]] static OrbStatus rotateCentred(const Transform& transform, Orb64f angle,
                                                 Point centre) {
  if (!isFinite(angle)) return orbStsAngleErr;
  const Turn turn(angle);
  return rotate<kChannels>(transform, turn, shiftAbout(centre, turn));
}

OrbStatus ORB_CALL orbiRotate_8u_C1R(const Orb8u* pSrc, OrbiSize srcSize, Orb32s srcStep,
                                     OrbiRect srcRoi, Orb8u* pDst, Orb32s dstStep, OrbiRect dstRoi,
                                     Orb64f angle, Orb64f xShift, Orb64f yShift,
                                     Orb32s interpolation) {
  const DoublePrecision doubles;
  return rotateShifted<1>({pSrc, srcSize, srcStep, srcRoi, pDst, dstStep, dstRoi, interpolation},
                          angle, {xShift, yShift});
}
OrbStatus ORB_CALL orbiRotate_8u_C3R(const Orb8u* pSrc, OrbiSize srcSize, Orb32s srcStep,
                                     OrbiRect srcRoi, Orb8u* pDst, Orb32s dstStep, OrbiRect dstRoi,
                                     Orb64f angle, Orb64f xShift, Orb64f yShift,
                                     Orb32s interpolation) {
  const DoublePrecision doubles;
  return rotateShifted<3>({pSrc, srcSize, srcStep, srcRoi, pDst, dstStep, dstRoi, interpolation},
                          angle, {xShift, yShift});
}
OrbStatus ORB_CALL orbiRotate_8u_C4R(const Orb8u* pSrc, OrbiSize srcSize, Orb32s srcStep,
                                     OrbiRect srcRoi, Orb8u* pDst, Orb32s dstStep, OrbiRect dstRoi,
                                     Orb64f angle, Orb64f xShift, Orb64f yShift,
                                     Orb32s interpolation) {
  const DoublePrecision doubles;
  return rotateShifted<4>({pSrc, srcSize, srcStep, srcRoi, pDst, dstStep, dstRoi, interpolation},
                          angle, {xShift, yShift});
}
OrbStatus ORB_CALL orbiRotateCenter_8u_C1R(const Orb8u* pSrc, OrbiSize srcSize, Orb32s srcStep,
                                           OrbiRect srcRoi, Orb8u* pDst, Orb32s dstStep,
                                           OrbiRect dstRoi, Orb64f angle, Orb64f xCenter,
                                           Orb64f yCenter, Orb32s interpolation) {
  const DoublePrecision doubles;
  return rotateCentred<1>({pSrc, srcSize, srcStep, srcRoi, pDst, dstStep, dstRoi, interpolation},
                          angle, {xCenter, yCenter});
}
OrbStatus ORB_CALL orbiRotateCenter_8u_C3R(const Orb8u* pSrc, OrbiSize srcSize, Orb32s srcStep,
                                           OrbiRect srcRoi, Orb8u* pDst, Orb32s dstStep,
                                           OrbiRect dstRoi, Orb64f angle, Orb64f xCenter,
                                           Orb64f yCenter, Orb32s interpolation) {
  const DoublePrecision doubles;
  return rotateCentred<3>({pSrc, srcSize, srcStep, srcRoi, pDst, dstStep, dstRoi, interpolation},
                          angle, {xCenter, yCenter});
}
OrbStatus ORB_CALL orbiRotateCenter_8u_C4R(const Orb8u* pSrc, OrbiSize srcSize, Orb32s srcStep,
                                           OrbiRect srcRoi, Orb8u* pDst, Orb32s dstStep,
                                           OrbiRect dstRoi, Orb64f angle, Orb64f xCenter,
                                           Orb64f yCenter, Orb32s interpolation) {
  const DoublePrecision doubles;
  return rotateCentred<4>({pSrc, srcSize, srcStep, srcRoi, pDst, dstStep, dstRoi, interpolation},
                          angle, {xCenter, yCenter});
}

}  // namespace orb::ORB_BUILD
