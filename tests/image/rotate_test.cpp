// Rotation: copies at right angles, and elsewhere every pixel by its place in the source.
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "tests/image/transform_model.h"
#include "tests/support/builds.h"
#include "tests/support/faults.h"
#include "tests/support/guarded.h"
#include "tests/support/no_memory.h"

namespace {

using orbtest::Guard;
using orbtest::GuardedBytes;
using orbtest::Placement;
using orbtest::Plane;
using orbtest::Random;
using orbtest::transform::Drawing;
using orbtest::transform::expectDrawn;
using orbtest::transform::expectSmoothed;
using orbtest::transform::Map;
using orbtest::transform::Picture;
using orbtest::transform::Place;

using Rotate = decltype(legacy90orbiRotate_8u_C1R);

constexpr int kMethods[] = {orbInterNearest, orbInterLinear, orbInterLagrange, orbInterCatmullRom};
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();

struct Call {
  const Orb8u* pSrc;
  OrbiSize srcSize;
  Orb32s srcStep;
  OrbiRect srcRoi;
  Orb8u* pDst;
  Orb32s dstStep;
  OrbiRect dstRoi;
  double angle, x, y;
  Orb32s interpolation;

  OrbStatus run(Rotate* rotate) const {
    return rotate(pSrc, srcSize, srcStep, srcRoi, pDst, dstStep, dstRoi, angle, x, y,
                  interpolation);
  }
};

OrbiRect wholeOf(OrbiSize size) {
  return {0, 0, size.width, size.height};
}
Call callOn(const Picture& src, Picture& dst) {
  return {src.plane.data(),
          src.size,
          src.plane.step(),
          wholeOf(src.size),
          dst.plane.data(),
          dst.plane.step(),
          wholeOf(dst.size),
          0,
          0,
          0,
          orbInterLinear};
}

// The rotation of a call, and its inverse. Right angles are exact.
Drawing drawingOf(const Call& call, const Picture& src, int method, bool centred) {
  const int quarter = static_cast<int>(std::fmod(call.angle, 360) / 90);
  const bool isRight = std::fmod(call.angle, 90) == 0;
  const long double radians = static_cast<long double>(call.angle) / 180 * std::acos(-1.0L);
  const long double exact[] = {0, 1, 0, -1};
  const long double s = isRight ? exact[(quarter + 4) % 4] : std::sin(radians);
  const long double c = isRight ? exact[(quarter + 5) % 4] : std::cos(radians);
  const Place centre = {call.x, call.y};
  const Place shift = centred ? Place{centre.x - c * centre.x - s * centre.y,
                                      centre.y - c * centre.y + s * centre.x}
                              : centre;
  const Map forward = [=](Place p) {
    return Place{c * p.x + s * p.y + shift.x, c * p.y - s * p.x + shift.y};
  };
  const Map back = [=](Place p) {
    const long double x = p.x - shift.x, y = p.y - shift.y;
    return Place{c * x - s * y, s * x + c * y};
  };
  return {src, call.srcRoi, call.dstRoi, method, forward, back};
}

int methodFor(int method, OrbiSize size) {
  return method == orbInterLagrange && std::min(size.width, size.height) < 4 ? orbInterLinear
                                                                             : method;
}

OrbiRect anyRect(Random& random, OrbiSize size) {
  OrbiRect rect;
  rect.x = random.between(0, size.width - 1);
  rect.y = random.between(0, size.height - 1);
  if (random.oneIn(3)) rect.x = rect.y = 0;
  rect.width = random.between(1, size.width - rect.x);
  rect.height = random.between(1, size.height - rect.y);
  return random.oneIn(3) ? wholeOf(size) : rect;
}
// What may lie in front of or behind the middle of the destination, so that something is seen.
void placeAnywhere(Call& call, OrbiSize dst, bool centred, Random& random) {
  call.angle = random.oneIn(5) ? 90 * random.between(-8, 8) : random.between(-72000, 72000) / 97.0;
  const auto offset = [&] {
    return random.oneIn(2) ? random.between(-40, 40) : random.between(-4000, 4000) / 93.0;
  };
  call.x = offset();
  call.y = offset();
  if (centred) {
    call.x += 20;
    call.y += 20;
    return;
  }
  // The rotated middle of the source goes somewhere near the middle of the destination.
  const double radians = call.angle / 180 * std::acos(-1.0);
  const double x = call.srcRoi.x + call.srcRoi.width / 2.0;
  const double y = call.srcRoi.y + call.srcRoi.height / 2.0;
  call.x = dst.width / 2.0 - (std::cos(radians) * x + std::sin(radians) * y) + call.x / 3;
  call.y = dst.height / 2.0 - (std::cos(radians) * y - std::sin(radians) * x) + call.y / 3;
  if (random.oneIn(3)) call.x = std::floor(call.x), call.y = std::floor(call.y);
}

void expectEverySize(Rotate* rotate, int channels, bool centred) {
  Random random("every size");
  int drawn = 0;
  for (int round = 0; round < 120; ++round) {
    const OrbiSize srcSize = {random.oneIn(4) ? random.between(1, 5) : random.between(1, 70),
                              random.oneIn(4) ? random.between(1, 5) : random.between(1, 70)};
    Picture src(srcSize, channels, Placement::any(random));
    const int least = random.oneIn(4) ? 1 : 30;
    Picture dst({random.between(least, 70), random.between(least, 70)}, channels,
                Placement::any(random));
    src.plane.fillAny(random);
    dst.plane.fillAny(random);
    const Picture before = dst.copy();
    Call call = callOn(src, dst);
    call.srcRoi = anyRect(random, srcSize);
    if (random.oneIn(4)) call.srcRoi.width += 100;  // beyond the image
    call.dstRoi = anyRect(random, dst.size);
    placeAnywhere(call, dst.size, centred, random);
    call.interpolation = kMethods[round % 4];
    const OrbStatus status = call.run(rotate);
    const Drawing drawing = drawingOf(call, src, methodFor(call.interpolation, srcSize), centred);
    if (status == orbStsRoiSmallErr) {
      EXPECT_TRUE(std::min(call.srcRoi.width, srcSize.width - call.srcRoi.x) < 2 ||
                  std::min(call.srcRoi.height, srcSize.height - call.srcRoi.y) < 2);
      dst.plane.expectUntouched();
      continue;
    }
    const int count = expectDrawn(drawing, before, dst);
    if (testing::Test::HasFailure()) {
      ADD_FAILURE() << "round " << round << ", by " << call.angle << " and " << call.x << ", "
                    << call.y;
      return;
    }
    if (count > 0) {
      EXPECT_EQ(status, orbStsNoErr);
    } else {
      EXPECT_GE(status, orbStsNoErr);
    }
    if (status != orbStsNoErr) dst.plane.expectUntouched();
    dst.plane.expectOutsideUntouched();
    drawn += count;
  }
  EXPECT_GT(drawn, 2000);
}

void expectSmoothEdges(Rotate* rotate, int channels, bool centred) {
  Random random("smooth edges");
  int passed = 0;
  for (int round = 0; round < 12; ++round) {
    Picture src({40, 40}, channels), plain({60, 60}, channels);
    src.plane.fillAny(random);
    plain.plane.fillAny(random);
    Picture smooth = plain.copy();
    Call call = callOn(src, plain);
    call.dstRoi = round % 3 == 0 ? OrbiRect{10, 5, 40, 45} : wholeOf(plain.size);
    call.interpolation = kMethods[round % 4];
    call.angle = 7 + 33.7 * round;
    placeAnywhere(call, plain.size, false, random);
    if (centred) call.x = 19 + round / 3.0, call.y = 25;
    ASSERT_EQ(call.run(rotate), orbStsNoErr);
    const Drawing drawing = drawingOf(call, src, call.interpolation, centred);
    call.pDst = smooth.plane.data();
    call.interpolation |= orbInterEdgeBlend;
    ASSERT_EQ(call.run(rotate), orbStsNoErr);
    passed += expectSmoothed(drawing, plain, smooth);
    if (testing::Test::HasFailure()) {
      ADD_FAILURE() << "round " << round << ", by " << call.angle << " and " << call.x << ", "
                    << call.y;
      return;
    }
    smooth.plane.expectOutsideUntouched();
  }
  EXPECT_GT(passed, 500);
}

// Images that end where memory ends, drawn upon all over.
void expectStaysInside(Rotate* rotate, int channels) {
  Random random("stays inside");
  for (int round = 0; round < 60; ++round) {
    const OrbiSize size = {random.between(2, 40), random.between(2, 40)};
    const Guard guard = round % 2 == 0 ? Guard::kBefore : Guard::kBehind;
    const size_t bytes = static_cast<size_t>(size.width) * size.height * channels;
    GuardedBytes src(bytes, guard), dst(bytes, guard);
    Call call = {src.data(),
                 size,
                 size.width * channels,
                 wholeOf(size),
                 dst.data(),
                 size.width * channels,
                 wholeOf(size),
                 0,
                 0,
                 0,
                 kMethods[round / 2 % 4] | orbInterEdgeBlend};
    placeAnywhere(call, size, false, random);
    ASSERT_GE(call.run(rotate), orbStsNoErr);
  }
}

// Rows that go up: the first row is the last one in memory.
void expectNegativeSteps(Rotate* rotate, int channels) {
  Random random("negative steps");
  for (const double angle : {90.0, 30.0}) {
    Picture src({20, 15}, channels), down({30, 30}, channels), up({30, 30}, channels);
    src.plane.fillAny(random);
    Call call = callOn(src, down);
    call.angle = angle;
    call.x = 8;
    call.y = 20;
    ASSERT_EQ(call.run(rotate), orbStsNoErr);
    Picture turned({20, 15}, channels);
    for (int y = 0; y < 15; ++y) {
      for (int x = 0; x < 20 * channels; ++x) turned.plane.set(x, 14 - y, src.plane.at(x, y));
    }
    call.pSrc = turned.plane.data() + 14 * turned.plane.step();
    call.srcStep = -turned.plane.step();
    call.pDst = up.plane.data() + 29 * up.plane.step();
    call.dstStep = -up.plane.step();
    ASSERT_EQ(call.run(rotate), orbStsNoErr);
    int changed = 0;
    for (int y = 0; y < 30; ++y) {
      for (int x = 0; x < 30 * channels; ++x) {
        const bool isNew = down.plane.at(x, y) != Plane<Orb8u>(30 * channels, 30).at(x, y);
        if (!isNew) continue;
        ASSERT_EQ(up.plane.at(x, 29 - y), down.plane.at(x, y)) << x << ", " << y;
        ++changed;
      }
    }
    EXPECT_GT(changed, 100 * channels);
    up.plane.expectOutsideUntouched();
  }
}

using Faults = std::vector<orbtest::Fault<Call>>;
Faults sizeFaults() {
  return {{orbStsNullPtrErr, [](Call& c) { c.pSrc = nullptr; }},
          {orbStsNullPtrErr, [](Call& c) { c.pDst = nullptr; }},
          {orbStsSizeErr, [](Call& c) { c.srcSize.width = 0; }},
          {orbStsSizeErr, [](Call& c) { c.srcSize.height = -1; }},
          {orbStsSizeErr, [](Call& c) { c.srcRoi.x = -1; }},
          {orbStsSizeErr, [](Call& c) { c.srcRoi.y = -1; }},
          {orbStsSizeErr, [](Call& c) { c.srcRoi.width = 0; }},
          {orbStsSizeErr, [](Call& c) { c.srcRoi.height = 0; }},
          {orbStsSizeErr, [](Call& c) { c.dstRoi.x = -1; }},
          {orbStsSizeErr, [](Call& c) { c.dstRoi.y = -5; }},
          {orbStsSizeErr, [](Call& c) { c.dstRoi.width = 0; }},
          {orbStsSizeErr, [](Call& c) { c.dstRoi.height = -3; }}};
}
void append(Faults& faults, const Faults& more) {
  faults.insert(faults.end(), more.begin(), more.end());
}

// With a centre at infinity the shift is no number.
void expectChecksInOrder(Rotate* rotate, int channels) {
  Picture src({10, 10}, channels), dst({40, 40}, channels);
  Call good = callOn(src, dst);
  good.angle = 30;
  good.x = good.y = 20;
  Faults faults = {{orbStsAngleErr, [](Call& c) { c.angle = kInfinity; }},
                   {orbStsAngleErr, [](Call& c) { c.angle = kNoNumber; }}};
  append(faults, sizeFaults());
  append(faults, {{orbStsInterpolationErr, [](Call& c) { c.interpolation = 0; }},
                  {orbStsInterpolationErr, [](Call& c) { c.interpolation = 3; }},
                  {orbStsInterpolationErr, [](Call& c) { c.interpolation = orbInterBSpline; }},
                  {orbStsInterpolationErr, [](Call& c) { c.interpolation = orbInterSuper; }},
                  {orbStsInterpolationErr, [](Call& c) { c.interpolation |= orbInterEdgeFade; }},
                  {orbStsInterpolationErr, [](Call& c) { c.interpolation |= orbInterAntialias; }},
                  {orbStsRoiOutside, [](Call& c) { c.srcRoi.x = 10; }},
                  {orbStsRoiOutside, [](Call& c) { c.srcRoi.y = 10; }},
                  {orbStsRoiOutside, [](Call& c) { c.srcRoi.y = 0x7FFFFFFF; }},
                  {orbStsRoiSmallErr, [](Call& c) { c.srcRoi.width = 1; }},
                  {orbStsRoiSmallErr, [](Call& c) { c.srcRoi.height = 1; }},
                  {orbStsRoiSmallErr, [](Call& c) { c.srcRoi.x = 9; }},
                  {orbStsRoiSmallErr, [](Call& c) { c.srcSize.height = 1; }},
                  {orbStsCoeffErr, [](Call& c) { c.x = kNoNumber; }},
                  {orbStsCoeffErr, [](Call& c) { c.y = kInfinity; }},
                  {orbStsQuadOutside, [](Call& c) { c.dstRoi.x = 10000; }},
                  {orbStsQuadOutside, [](Call& c) { c.dstRoi.y = 10000; }}});
  const auto run = [&](const Call& c) { return c.run(rotate); };
  orbtest::expectChecks<Call>(faults, good, run);
  dst.plane.expectUntouched();
  EXPECT_EQ(run(good), orbStsNoErr);
}

void expectChecksOfRightAngles(Rotate* rotate, int channels) {
  Picture src({10, 10}, channels), dst({40, 40}, channels);
  Call good = callOn(src, dst);
  good.angle = -180;
  good.x = good.y = 20;
  good.interpolation = 12345;  // not looked at
  Faults faults = sizeFaults();
  append(faults, {{orbStsRoiOutside, [](Call& c) { c.srcRoi.x = 10; }},
                  {orbStsRoiOutside, [](Call& c) { c.srcRoi.y = 0x7FFFFFFF; }},
                  {orbStsRoiOutside, [](Call& c) { c.x = 1000; }},
                  {orbStsRoiOutside, [](Call& c) { c.y = -1000; }},
                  {orbStsRoiOutside, [](Call& c) { c.x = 1e300; }},
                  {orbStsRoiOutside, [](Call& c) { c.dstRoi.x = 100; }}});
  const auto run = [&](const Call& c) { return c.run(rotate); };
  orbtest::expectChecks<Call>(faults, good, run);
  dst.plane.expectUntouched();
  EXPECT_EQ(run(good), orbStsNoErr);
}

// Rectangles as large as numbers go are clipped as others are.
void expectAbsurdRectangles(Rotate* rotate, int channels, bool centred) {
  for (const double angle : {45.0, 90.0}) {
    Picture src({10, 10}, channels), dst({40, 40}, channels);
    Call call = callOn(src, dst);
    call.angle = angle;
    call.x = centred ? 8 : 10;
    call.y = centred ? 8 : 20;
    call.srcRoi = {2, 3, 0x7FFFFFFF, 0x7FFFFFFF};
    call.dstRoi = {5, 5, 0x7FFFFFFF, 0x7FFFFFFF};
    EXPECT_EQ(call.run(rotate), orbStsNoErr);
    dst.plane.expectOutsideUntouched();
  }
}

void expectWithoutMemory(Rotate* rotate, int channels) {
  orbtest::expectWithoutMemory([=] {
    static Orb8u src[20 * 20 * 4], dst[20 * 20 * 4];
    const OrbiSize size = {20, 20};
    const Call call = {
        src, size, 20 * channels, wholeOf(size), dst, 20 * channels, wholeOf(size), 1,
        0,   0,    orbInterLinear};
    return call.run(rotate) == orbStsQuadOutside;
  });
}

void expectAgreement(Rotate* px, Rotate* build, int channels, bool centred, Random& random) {
  for (int round = 0; round < 150; ++round) {
    Picture src({random.between(2, 60), random.between(2, 60)}, channels, Placement::any(random));
    const OrbiSize size = {random.between(1, 300), random.between(1, 40)};
    const Placement place = Placement::any(random);
    Picture expected(size, channels, place), actual(size, channels, place);
    if (random.oneIn(2)) {
      src.plane.fillExtreme(random);
    } else {
      src.plane.fillAny(random);
    }
    Call call = callOn(src, expected);
    call.srcRoi = anyRect(random, src.size);
    call.dstRoi = anyRect(random, size);
    placeAnywhere(call, size, centred, random);
    call.interpolation = kMethods[round % 4] | (random.oneIn(2) ? orbInterEdgeBlend : 0);
    const OrbStatus status = call.run(px);
    call.pDst = actual.plane.data();
    EXPECT_EQ(call.run(build), status);
    ASSERT_TRUE(actual.plane.sameBytes(expected.plane)) << "by " << call.angle;
  }
}

#define ROTATE_TESTS(name, channels, centred)                        \
  ORB_MEANING(name, ChecksInOrder) {                                 \
    expectChecksInOrder(ORB(name), channels);                        \
  }                                                                  \
  ORB_MEANING(name, ChecksOfRightAngles) {                           \
    expectChecksOfRightAngles(ORB(name), channels);                  \
  }                                                                  \
  ORB_MEANING(name, AbsurdRectangles) {                              \
    expectAbsurdRectangles(ORB(name), channels, centred);            \
  }                                                                  \
  ORB_MEANING(name, WithoutMemory) {                                 \
    expectWithoutMemory(ORB(name), channels);                        \
  }                                                                  \
  ORB_MEANING(name, EverySize) {                                     \
    expectEverySize(ORB(name), channels, centred);                   \
  }                                                                  \
  ORB_MEANING(name, SmoothEdges) {                                   \
    expectSmoothEdges(ORB(name), channels, centred);                 \
  }                                                                  \
  ORB_MEANING(name, StaysInside) {                                   \
    expectStaysInside(ORB(name), channels);                          \
  }                                                                  \
  ORB_AGREEMENT(name) {                                              \
    expectAgreement(PX(name), ORB(name), channels, centred, random); \
  }

ROTATE_TESTS(orbiRotate_8u_C1R, 1, false)
ROTATE_TESTS(orbiRotate_8u_C3R, 3, false)
ROTATE_TESTS(orbiRotate_8u_C4R, 4, false)
ROTATE_TESTS(orbiRotateCenter_8u_C1R, 1, true)
ROTATE_TESTS(orbiRotateCenter_8u_C3R, 3, true)
ROTATE_TESTS(orbiRotateCenter_8u_C4R, 4, true)

ORB_MEANING(orbiRotate_8u_C1R, NegativeSteps) {
  expectNegativeSteps(ORB(orbiRotate_8u_C1R), 1);
}
ORB_MEANING(orbiRotate_8u_C3R, NegativeSteps) {
  expectNegativeSteps(ORB(orbiRotate_8u_C3R), 3);
}

// ---- By hand

// Six pixels in two rows: 1 2 3 over 4 5 6.
struct Six {
  Six() : src({3, 2}, 1), dst({9, 9}, 1) {
    for (int i = 0; i < 6; ++i) src.plane.set(i % 3, i / 3, static_cast<Orb8u>(i + 1));
    dst.plane.fill([] { return Orb8u{0}; });
  }
  OrbStatus turn(Rotate* rotate, double angle, double x, double y, int interpolation = 0) {
    Call call = callOn(src, dst);
    call.angle = angle;
    call.x = x;
    call.y = y;
    call.interpolation = interpolation;
    return call.run(rotate);
  }
  // The pixels of a rectangle, row by row, when all others are 0.
  std::vector<int> in(int x, int y, int width, int height) {
    std::vector<int> pixels;
    for (int row = 0; row < 9; ++row) {
      for (int column = 0; column < 9; ++column) {
        if (column >= x && column < x + width && row >= y && row < y + height) {
          pixels.push_back(dst.at(column, row, 0));
        } else {
          EXPECT_EQ(dst.at(column, row, 0), 0) << column << ", " << row;
        }
      }
    }
    return pixels;
  }
  Picture src, dst;
};

// Counter-clockwise, as a picture is seen.
ORB_MEANING(orbiRotate_8u_C1R, QuarterTurns) {
  Rotate* rotate = ORB(orbiRotate_8u_C1R);
  for (const double turns : {90.0, 450.0, -270.0}) {
    Six six;
    ASSERT_EQ(six.turn(rotate, turns, 1, 5), orbStsNoErr);
    EXPECT_EQ(six.in(1, 3, 2, 3), (std::vector<int>{3, 6, 2, 5, 1, 4}));
  }
  for (const double turns : {180.0, -180.0, 540.0}) {
    Six six;
    ASSERT_EQ(six.turn(rotate, turns, 6, 4), orbStsNoErr);
    EXPECT_EQ(six.in(4, 3, 3, 2), (std::vector<int>{6, 5, 4, 3, 2, 1}));
  }
  for (const double turns : {270.0, -90.0, 990.0}) {
    Six six;
    ASSERT_EQ(six.turn(rotate, turns, 3, 2), orbStsNoErr);
    EXPECT_EQ(six.in(2, 2, 2, 3), (std::vector<int>{4, 1, 5, 2, 6, 3}));
  }
}
ORB_MEANING(orbiRotateCenter_8u_C1R, TheCentreStays) {
  for (int quarter = 0; quarter < 4; ++quarter) {
    Six six;
    // At no angle the general road is taken, and the method counts.
    ASSERT_EQ(six.turn(ORB(orbiRotateCenter_8u_C1R), 90 * quarter, 1, 1, orbInterNearest),
              orbStsNoErr);
    EXPECT_EQ(six.dst.at(1, 1, 0), 5);
  }
}
// Angles of 0 and 360 take the general road: pixels stay as they are, up to the last.
ORB_MEANING(orbiRotate_8u_C1R, NoTurnCopiesByEveryMethod) {
  for (const double angle : {0.0, 360.0, -720.0}) {
    for (const int method : kMethods) {
      for (const int edges : {0, int{orbInterEdgeBlend}}) {
        Six six;
        ASSERT_EQ(six.turn(ORB(orbiRotate_8u_C1R), angle, 2, 4, method | edges), orbStsNoErr);
        EXPECT_EQ(six.in(2, 4, 3, 2), (std::vector<int>{1, 2, 3, 4, 5, 6}));
      }
    }
    Six six;
    EXPECT_EQ(six.turn(ORB(orbiRotate_8u_C1R), angle, 2, 4, 0), orbStsInterpolationErr);
  }
}
// A right angle with a fraction of a pixel is interpolated: halves go up.
ORB_MEANING(orbiRotate_8u_C1R, ARightAngleWithAFraction) {
  Rotate* rotate = ORB(orbiRotate_8u_C1R);
  Six six;
  EXPECT_EQ(six.turn(rotate, 90, 0.5, 4, 0), orbStsInterpolationErr);
  EXPECT_EQ(six.turn(rotate, 90, 1, 4, 0), orbStsNoErr);
  Six half;
  ASSERT_EQ(half.turn(rotate, 90, 0.5, 4, orbInterLinear), orbStsNoErr);
  // Rows 1.5 from the top do not exist: only the column between 1..3 and 4..6.
  EXPECT_EQ(half.in(1, 2, 1, 3), (std::vector<int>{5, 4, 3}));
}
ORB_MEANING(orbiRotate_8u_C1R, AMissIsAWarningOfItsOwnKind) {
  Six six;
  EXPECT_EQ(six.turn(ORB(orbiRotate_8u_C1R), 90, 100, 0), orbStsRoiOutside);
  EXPECT_EQ(six.turn(ORB(orbiRotate_8u_C1R), 89, 100, 0, orbInterLinear), orbStsQuadOutside);
  six.dst.plane.expectUntouched();
}
ORB_MEANING(orbiRotate_8u_C1R, OneColumnTurnsByRightAnglesOnly) {
  Picture src({1, 5}, 1), dst({9, 9}, 1);
  Call call = callOn(src, dst);
  call.x = call.y = 4;
  call.angle = 30;
  EXPECT_EQ(call.run(ORB(orbiRotate_8u_C1R)), orbStsRoiSmallErr);
  call.angle = 270;
  EXPECT_EQ(call.run(ORB(orbiRotate_8u_C1R)), orbStsNoErr);
}

// In 3 columns the cubic through four has not enough, and is linear; Catmull-Rom repeats the
// border.
ORB_MEANING(orbiRotate_8u_C1R, CubicsOfThreeColumns) {
  Picture src({3, 20}, 1), dst({3, 20}, 1);
  for (int y = 0; y < 20; ++y) {
    src.plane.set(0, y, 0);
    src.plane.set(1, y, 160);
    src.plane.set(2, y, 160);
  }
  Call call = callOn(src, dst);
  call.x = 0.5;
  for (const int method : {orbInterLinear, orbInterLagrange, orbInterCatmullRom}) {
    call.interpolation = method;
    ASSERT_EQ(call.run(ORB(orbiRotate_8u_C1R)), orbStsNoErr);
    // (9 * 160 - 160) / 16 = 80; and (-0 + 9 * 320 - 160) / 16 = 170.
    EXPECT_EQ(dst.at(1, 5, 0), 80);
    EXPECT_EQ(dst.at(2, 5, 0), method == orbInterCatmullRom ? 170 : 160);
  }
}
// Beside the border the cubic of the last four goes on, and may go over.
ORB_MEANING(orbiRotate_8u_C1R, LagrangeAtTheBorder) {
  Picture src({4, 4}, 1), dst({4, 4}, 1);
  const int columns[] = {0, 255, 0, 255};
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 4; ++x) src.plane.set(x, y, static_cast<Orb8u>(columns[x]));
  }
  Call call = callOn(src, dst);
  call.interpolation = orbInterLagrange;
  call.x = 0.5;
  ASSERT_EQ(call.run(ORB(orbiRotate_8u_C1R)), orbStsNoErr);
  // Weights at a half beside the end: (5, 15, -5, 1) / 16 and back.
  EXPECT_EQ(dst.at(1, 1, 0), 255);  // (15 + 1) * 255 / 16
  EXPECT_EQ(dst.at(2, 1, 0), 128);  // (9 - 1) * 255 / 16 = 127.5
  EXPECT_EQ(dst.at(3, 1, 0), 0);    // (-5 + 5) * 255 / 16
}
// A crossing a hair in front of a pixel is that pixel's.
ORB_MEANING(orbiRotate_8u_C1R, AHairBesideAPixelIsOnIt) {
  for (const double hair : {0.0, 5e-14, -5e-14}) {
    Six six;
    ASSERT_EQ(six.turn(ORB(orbiRotate_8u_C1R), 0, 1 + hair, 0, orbInterNearest), orbStsNoErr);
    EXPECT_EQ(six.in(1, 0, 3, 2), (std::vector<int>{1, 2, 3, 4, 5, 6})) << hair;
  }
  Six off;
  ASSERT_EQ(off.turn(ORB(orbiRotate_8u_C1R), 0, 1 + 1e-12, 0, orbInterNearest), orbStsNoErr);
  EXPECT_EQ(off.in(2, 0, 2, 2), (std::vector<int>{2, 3, 5, 6}));
}
// A single row, or column, of the destination is drawn as it is in the whole.
ORB_MEANING(orbiRotate_8u_C1R, RowByRowIsTheSame) {
  Random random("row by row");
  Picture src({30, 30}, 1), whole({40, 40}, 1), rows({40, 40}, 1), columns({40, 40}, 1);
  src.plane.fillAny(random);
  for (const double angle : {0.0, 33.0}) {
    Call call = callOn(src, whole);
    call.angle = angle;
    call.x = 4.5;
    call.y = 12;
    ASSERT_EQ(call.run(ORB(orbiRotate_8u_C1R)), orbStsNoErr);
    for (int i = 0; i < 40; ++i) {
      call.pDst = rows.plane.data();
      call.dstRoi = {0, i, 40, 1};
      ASSERT_GE(call.run(ORB(orbiRotate_8u_C1R)), orbStsNoErr);
      call.pDst = columns.plane.data();
      call.dstRoi = {i, 0, 1, 40};
      ASSERT_GE(call.run(ORB(orbiRotate_8u_C1R)), orbStsNoErr);
    }
    EXPECT_TRUE(rows.plane.sameBytes(whole.plane));
    EXPECT_TRUE(columns.plane.sameBytes(whole.plane));
  }
}

}  // namespace
