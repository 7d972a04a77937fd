// Perspective warp: every pixel by its place in the source, which two linear equations give.
#include <cmath>
#include <cstdint>
#include <cstring>
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
using orbtest::transform::Picture;
using orbtest::transform::Place;

using Warp = decltype(legacy90orbiWarpPerspective_8u_C1R);

constexpr int kMethods[] = {orbInterNearest, orbInterLinear, orbInterLagrange, orbInterCatmullRom};

struct Call {
  const Orb8u* pSrc;
  OrbiSize srcSize;
  Orb32s srcStep;
  OrbiRect srcRoi;
  Orb8u* pDst;
  Orb32s dstStep;
  OrbiRect dstRoi;
  double c[3][3];
  bool hasCoeffs;
  Orb32s interpolation;

  OrbStatus run(Warp* warp) const {
    return warp(pSrc, srcSize, srcStep, srcRoi, pDst, dstStep, dstRoi, hasCoeffs ? c : nullptr,
                interpolation);
  }
  void set(const double (&to)[9]) { std::memcpy(c, to, sizeof c); }
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
          {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
          true,
          orbInterLinear};
}

Drawing drawingOf(const Call& call, const Picture& src, int method) {
  const auto& c = call.c;
  std::vector<long double> m;
  for (int i = 0; i < 9; ++i) m.push_back(c[i / 3][i % 3]);
  const auto forward = [m](Place p) {
    const long double w = m[6] * p.x + m[7] * p.y + m[8];
    return Place{(m[0] * p.x + m[1] * p.y + m[2]) / w, (m[3] * p.x + m[4] * p.y + m[5]) / w};
  };
  // (c0 - X c6) x + (c1 - X c7) y = X c8 - c2, and the same with Y.
  const auto back = [m](Place p) {
    const long double a = m[0] - p.x * m[6], b = m[1] - p.x * m[7], e = p.x * m[8] - m[2];
    const long double c2 = m[3] - p.y * m[6], d = m[4] - p.y * m[7], f = p.y * m[8] - m[5];
    const long double determinant = a * d - b * c2;
    return Place{(e * d - b * f) / determinant, (a * f - e * c2) / determinant};
  };
  return {src, call.srcRoi, call.dstRoi, method, forward, back};
}

int methodFor(int method, OrbiSize size) {
  return method >= orbInterLagrange && std::min(size.width, size.height) < 4 ? orbInterLinear
                                                                             : method;
}

// Turned, sheared and in perspective; then moved so that the middle of the source comes to that of
// the destination, or near it; then all of it times a number, which changes nothing.
void placeAnywhere(Call& call, OrbiSize dst, Random& random) {
  const auto real = [&](double low, double high) {
    return low + (high - low) * random.between(0, 10000) / 10000;
  };
  const double turn = real(0, 7), size = real(0.5, 1.8), lean = real(-0.4, 0.4);
  double m[9] = {size * std::cos(turn),  size * std::sin(turn + lean), 0,
                 -size * std::sin(turn), size * std::cos(turn + lean), 0,
                 real(-0.003, 0.003),    real(-0.003, 0.003),          1};
  if (random.oneIn(5)) m[6] = m[7] = 0;
  const double x = call.srcRoi.x + call.srcRoi.width / 2.0;
  const double y = call.srcRoi.y + call.srcRoi.height / 2.0;
  const double w = m[6] * x + m[7] * y + m[8];
  const double toX = dst.width / 2.0 + real(-15, 15) - (m[0] * x + m[1] * y) / w;
  const double toY = dst.height / 2.0 + real(-15, 15) - (m[3] * x + m[4] * y) / w;
  for (int i = 0; i < 3; ++i) {
    m[i] += toX * m[6 + i];
    m[3 + i] += toY * m[6 + i];
  }
  const double scale = random.oneIn(2) ? 1 : real(-3, -0.5);
  for (double& entry : m) entry *= scale;
  call.set(m);
}

OrbiRect anyRect(Random& random, OrbiSize size) {
  if (random.oneIn(2)) return wholeOf(size);
  OrbiRect rect;
  rect.x = random.between(0, size.width - 1);
  rect.y = random.between(0, size.height - 1);
  rect.width = random.between(1, size.width - rect.x);
  rect.height = random.between(1, size.height - rect.y);
  return rect;
}

void expectEverySize(Warp* warp, int channels) {
  Random random("every size");
  int drawn = 0;
  for (int round = 0; round < 120; ++round) {
    const int least = random.oneIn(4) ? 1 : 30;
    const OrbiSize srcSize = {random.oneIn(4) ? random.between(1, 5) : random.between(1, 70),
                              random.oneIn(4) ? random.between(1, 5) : random.between(1, 70)};
    Picture src(srcSize, channels, Placement::any(random));
    Picture dst({random.between(least, 70), random.between(least, 70)}, channels,
                Placement::any(random));
    src.plane.fillAny(random);
    dst.plane.fillAny(random);
    const Picture before = dst.copy();
    Call call = callOn(src, dst);
    call.srcRoi = anyRect(random, srcSize);
    call.dstRoi = anyRect(random, dst.size);
    placeAnywhere(call, dst.size, random);
    if (random.oneIn(4)) call.srcRoi.width += 100;  // beyond the image
    call.interpolation = kMethods[round % 4];
    const OrbStatus status = call.run(warp);
    if (status == orbStsRoiSmallErr) {
      EXPECT_TRUE(std::min(call.srcRoi.width, srcSize.width - call.srcRoi.x) < 2 ||
                  call.srcRoi.height < 2);
      dst.plane.expectUntouched();
      continue;
    }
    const int count =
        expectDrawn(drawingOf(call, src, methodFor(call.interpolation, srcSize)), before, dst);
    ASSERT_FALSE(testing::Test::HasFailure()) << "round " << round;
    if (count > 0) {
      EXPECT_EQ(status, orbStsNoErr);
    } else {
      EXPECT_GE(status, orbStsNoErr);
    }
    if (status != orbStsNoErr) dst.plane.expectUntouched();
    dst.plane.expectOutsideUntouched();
    drawn += count;
  }
  EXPECT_GT(drawn, 5000);
}

void expectSmoothEdges(Warp* warp, int channels) {
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
    placeAnywhere(call, plain.size, random);
    ASSERT_EQ(call.run(warp), orbStsNoErr);
    const Drawing drawing = drawingOf(call, src, call.interpolation);
    call.pDst = smooth.plane.data();
    call.interpolation |= orbInterEdgeBlend;
    ASSERT_EQ(call.run(warp), orbStsNoErr);
    passed += expectSmoothed(drawing, plain, smooth);
    ASSERT_FALSE(testing::Test::HasFailure()) << "round " << round;
    smooth.plane.expectOutsideUntouched();
  }
  EXPECT_GT(passed, 300);
}

// Images that end where memory ends, and any matrix at all, with horizons in the picture and
// entries that are no numbers: nothing else is read or written.
void expectStaysInside(Warp* warp, int channels) {
  Random random("stays inside");
  const double odd[] = {
      0,    1e-210, 1e-11, 1e150, -1e300, std::numeric_limits<double>::infinity(),
      -1e3, 1e-3,   -1,    2,     0.5,    std::numeric_limits<double>::quiet_NaN()};
  int drawn = 0;
  for (int round = 0; round < 3000; ++round) {
    const OrbiSize size = {random.between(2, 12), random.between(2, 12)};
    const Guard guard = round % 2 == 0 ? Guard::kBefore : Guard::kBehind;
    const size_t bytes = static_cast<size_t>(size.width) * size.height * channels;
    static GuardedBytes srcBefore(12 * 12 * 4, Guard::kBefore),
        dstBefore(12 * 12 * 4, Guard::kBefore);
    static GuardedBytes srcBehind(12 * 12 * 4), dstBehind(12 * 12 * 4);
    const bool before = guard == Guard::kBefore;
    Call call = {before ? srcBefore.data() : srcBehind.data() + srcBehind.size() - bytes,
                 size,
                 size.width * channels,
                 wholeOf(size),
                 before ? dstBefore.data() : dstBehind.data() + dstBehind.size() - bytes,
                 size.width * channels,
                 wholeOf(size),
                 {},
                 true,
                 kMethods[round / 2 % 4] | orbInterEdgeBlend};
    placeAnywhere(call, size, random);
    if (random.oneIn(2)) call.c[2][random.between(0, 1)] = random.between(-100, 100) / 130.0;
    if (random.oneIn(2))
      call.c[random.between(0, 2)][random.between(0, 2)] = odd[random.between(0, 11)];
    if (call.run(warp) == orbStsNoErr) ++drawn;
  }
  EXPECT_GT(drawn, 500);
}

void expectChecksInOrder(Warp* warp, int channels) {
  Picture src({10, 10}, channels), dst({40, 40}, channels);
  const Call good = callOn(src, dst);
  const auto matrix = [](double c0, double c1, double c2, double c3, double c4, double c5,
                         double c6, double c7, double c8) {
    return [=](Call& c) { c.set({c0, c1, c2, c3, c4, c5, c6, c7, c8}); };
  };
  const std::vector<orbtest::Fault<Call>> faults = {
      {orbStsNullPtrErr, [](Call& c) { c.pSrc = nullptr; }},
      {orbStsNullPtrErr, [](Call& c) { c.pDst = nullptr; }},
      {orbStsNullPtrErr, [](Call& c) { c.hasCoeffs = false; }},
      {orbStsSizeErr, [](Call& c) { c.srcSize.width = 0; }},
      {orbStsSizeErr, [](Call& c) { c.srcSize.height = -1; }},
      {orbStsSizeErr, [](Call& c) { c.srcRoi.x = -1; }},
      {orbStsSizeErr, [](Call& c) { c.srcRoi.y = -1; }},
      {orbStsSizeErr, [](Call& c) { c.srcRoi.width = 0; }},
      {orbStsSizeErr, [](Call& c) { c.srcRoi.height = 0; }},
      {orbStsSizeErr, [](Call& c) { c.dstRoi.x = -1; }},
      {orbStsSizeErr, [](Call& c) { c.dstRoi.y = -5; }},
      {orbStsSizeErr, [](Call& c) { c.dstRoi.width = 0; }},
      {orbStsSizeErr, [](Call& c) { c.dstRoi.height = -3; }},
      {orbStsStepErr, [](Call& c) { c.srcStep = 0; }},
      {orbStsStepErr, [](Call& c) { c.srcStep = -40; }},
      {orbStsStepErr, [](Call& c) { c.dstStep = 0; }},
      {orbStsInterpolationErr, [](Call& c) { c.interpolation = 0; }},
      {orbStsInterpolationErr, [](Call& c) { c.interpolation = orbInterCubicB05C03; }},
      {orbStsInterpolationErr, [](Call& c) { c.interpolation |= orbInterAntialias; }},
      // Degenerate: both columns alike; with no c0 or c4; only a row of zeroes.
      {orbStsCoeffErr, matrix(1, 2, 0, 2, 4, 0, 0, 0, 1)},
      {orbStsCoeffErr, matrix(1, 1, 0, 1, 1 + 1e-11, 0, 0, 0, 1)},
      {orbStsCoeffErr, matrix(0, 0, 0, 1, 0, 0, 0, 0, 1)},
      {orbStsCoeffErr, matrix(0, 0, 0, 0, 0, 0, 0, 0, 1)},
      // The last term may be far below 0: it has no absolute value.
      {orbStsCoeffErr, matrix(1, 2, 5, 2, 4, 1, 1, 1, 1)},
      // The first entry of the last row that would be enough.
      {orbStsCoeffErr, matrix(1, 0, 0, 0, 1, 0, 1, 1, 0)},
      {orbStsCoeffErr, matrix(1, 0, 0, 0, 1, 0, 1, 1, -1e-201)},
      {orbStsRoiOutside, [](Call& c) { c.srcRoi.x = 10; }},
      {orbStsRoiOutside, [](Call& c) { c.srcRoi.y = 0x7FFFFFFF; }},
      {orbStsRoiSmallErr, [](Call& c) { c.srcRoi.width = 1; }},
      {orbStsRoiSmallErr, [](Call& c) { c.srcRoi.y = 9; }},
      {orbStsRoiSmallErr, [](Call& c) { c.srcSize.width = 1; }},
      // The horizon goes through the source: the quadrangle is crossed.
      {orbStsCoeffErr, matrix(1, 0, 0, 0, 1, 0, 0.3, 0, -1)},
      {orbStsCoeffErr, matrix(std::numeric_limits<double>::quiet_NaN(), 0, 0, 0, 1, 0, 0, 0, 1)},
      {orbStsQuadOutside, [](Call& c) { c.dstRoi.x = 10000; }},
      {orbStsQuadOutside, [](Call& c) { c.dstRoi.y = 10000; }}};
  const auto run = [&](const Call& c) { return c.run(warp); };
  orbtest::expectChecks<Call>(faults, good, run);
  dst.plane.expectUntouched();
  EXPECT_EQ(run(good), orbStsNoErr);
}

void expectWithoutMemory(Warp* warp, int channels) {
  orbtest::expectWithoutMemory([=] {
    static Orb8u src[20 * 20 * 4], dst[20 * 20 * 4];
    const OrbiSize size = {20, 20};
    const Call call = {src,  size,          20 * channels, wholeOf(size),
                       dst,  20 * channels, wholeOf(size), {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
                       true, orbInterLinear};
    return call.run(warp) == orbStsQuadOutside;
  });
}

// The same place inside of the destination, by every method, and rectangles as large as they get.
void expectIdentityCopies(Warp* warp, int channels) {
  Random random("identity");
  Picture src({20, 12}, channels);
  src.plane.fillAny(random);
  for (const int method : kMethods) {
    Picture dst({30, 30}, channels);
    const Picture before = dst.copy();
    Call call = callOn(src, dst);
    call.srcRoi = {3, 2, 0x7FFFFFFF, 0x7FFFFFFF};
    call.dstRoi = {5, 1, 0x7FFFFFFF, 0x7FFFFFFF};
    call.interpolation = method | orbInterEdgeBlend;
    ASSERT_EQ(call.run(warp), orbStsNoErr);
    for (int y = 0; y < 30; ++y) {
      for (int x = 0; x < 30; ++x) {
        const bool isCopied = x >= 5 && x < 20 && y >= 2 && y < 12;
        for (int k = 0; k < channels; ++k) {
          ASSERT_EQ(dst.at(x, y, k), isCopied ? src.at(x, y, k) : before.at(x, y, k));
        }
      }
    }
  }
}

void expectAgreement(Warp* px, Warp* build, int channels, Random& random) {
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
    placeAnywhere(call, size, random);
    call.interpolation = kMethods[round % 4] | (random.oneIn(2) ? orbInterEdgeBlend : 0);
    const OrbStatus status = call.run(px);
    call.pDst = actual.plane.data();
    EXPECT_EQ(call.run(build), status);
    ASSERT_TRUE(actual.plane.sameBytes(expected.plane)) << "round " << round;
  }
}

#define WARP_TESTS(name, channels)                          \
  ORB_MEANING(name, ChecksInOrder) {                        \
    expectChecksInOrder(ORB(name), channels);               \
  }                                                         \
  ORB_MEANING(name, WithoutMemory) {                        \
    expectWithoutMemory(ORB(name), channels);               \
  }                                                         \
  ORB_MEANING(name, EverySize) {                            \
    expectEverySize(ORB(name), channels);                   \
  }                                                         \
  ORB_MEANING(name, SmoothEdges) {                          \
    expectSmoothEdges(ORB(name), channels);                 \
  }                                                         \
  ORB_MEANING(name, StaysInside) {                          \
    expectStaysInside(ORB(name), channels);                 \
  }                                                         \
  ORB_MEANING(name, IdentityCopies) {                       \
    expectIdentityCopies(ORB(name), channels);              \
  }                                                         \
  ORB_AGREEMENT(name) {                                     \
    expectAgreement(PX(name), ORB(name), channels, random); \
  }

WARP_TESTS(orbiWarpPerspective_8u_C1R, 1)
WARP_TESTS(orbiWarpPerspective_8u_C3R, 3)
WARP_TESTS(orbiWarpPerspective_8u_C4R, 4)

// Of 3 columns both cubics are linear; the rotation keeps Catmull-Rom there.
ORB_MEANING(orbiWarpPerspective_8u_C1R, CubicsOfThreeColumns) {
  Picture src({3, 20}, 1), dst({3, 20}, 1);
  for (int y = 0; y < 20; ++y) {
    src.plane.set(0, y, 0);
    src.plane.set(1, y, 160);
    src.plane.set(2, y, 160);
  }
  Call call = callOn(src, dst);
  call.c[0][2] = 0.5;
  for (const int method : {orbInterLinear, orbInterLagrange, orbInterCatmullRom}) {
    call.interpolation = method;
    ASSERT_EQ(call.run(ORB(orbiWarpPerspective_8u_C1R)), orbStsNoErr);
    EXPECT_EQ(dst.at(1, 5, 0), 80);
    EXPECT_EQ(dst.at(2, 5, 0), 160);
  }
}

// A degenerate upper left is forgiven if the last row makes up for it.
ORB_MEANING(orbiWarpPerspective_8u_C1R, TheLastRowCounts) {
  Picture src({10, 10}, 1), dst({40, 40}, 1);
  Call call = callOn(src, dst);
  call.set({0, 0, 10, 1, 0, 1, 0.1, 1, 1});
  // (c1 c5 - c4 c2) c6 - (c5 c0 - c2 c3) c7 = 10: above 0, and the quadrangle decides.
  EXPECT_EQ(call.run(ORB(orbiWarpPerspective_8u_C1R)), orbStsNoErr);
}

}  // namespace
