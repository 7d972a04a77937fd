// Morphology in place: the extremum of nine, and what is read and written of the border.
#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "tests/support/builds.h"
#include "tests/support/faults.h"
#include "tests/support/guarded.h"
#include "tests/support/no_memory.h"
#include "tests/support/plane.h"

namespace {

using orbtest::Guard;
using orbtest::GuardedBytes;
using orbtest::Placement;
using orbtest::Plane;
using orbtest::Random;

using Morphology = decltype(legacy90orbiDilate3x3_8u_C1IR);

// The pixels around one, sorted: the first is the smallest, the last the largest.
std::vector<int> around(const Plane<Orb8u>& image, int x, int y) {
  std::vector<int> pixels;
  for (int row = y - 1; row <= y + 1; ++row) {
    for (int column = x - 1; column <= x + 1; ++column) pixels.push_back(image.at(column, row));
  }
  std::sort(pixels.begin(), pixels.end());
  return pixels;
}

void fill(Plane<Orb8u>& plane, Random& random) {
  switch (random.between(0, 2)) {
    case 0:
      return plane.fillAny(random);
    case 1:
      return plane.fillExtreme(random);
    default:  // single dots
      return plane.fill([&] { return random.oneIn(20) ? Orb8u{255} : Orb8u{7}; });
  }
}

// The region is the plane but for a border of one pixel.
Orb8u* regionOf(Plane<Orb8u>& plane) {
  return plane.data() + plane.step() + 1;
}

void expectEverySize(Morphology* function, bool largest) {
  Random random("every size");
  for (int width = 1; width <= 130; ++width) {
    const int height = 1 + width % 6;
    const Placement place = Placement::any(random);
    Plane<Orb8u> before(width + 2, height + 2, place), image(width + 2, height + 2, place);
    fill(before, random);
    image.copySamples(before);
    ASSERT_EQ(function(regionOf(image), image.step(), {width, height}), orbStsNoErr);
    for (int y = 1; y <= height; ++y) {
      for (int x = 1; x <= width; ++x) {
        const std::vector<int> pixels = around(before, x, y);
        ASSERT_EQ(image.at(x, y), largest ? pixels.back() : pixels.front())
            << x - 1 << ", " << y - 1 << " of " << width << " x " << height;
        image.set(x, y, before.at(x, y));
      }
    }
    ASSERT_TRUE(image.sameBytes(before)) << "written outside of " << width << " x " << height;
  }
}

struct Call {
  Orb8u* pSrcDst;
  Orb32s step;
  OrbiSize roi;
};

void expectChecksInOrder(Morphology* function) {
  Plane<Orb8u> image(12, 6);
  image.fill([] { return Orb8u{9}; });
  const Call good = {regionOf(image), 12, {10, 4}};
  const auto run = [&](const Call& c) { return function(c.pSrcDst, c.step, c.roi); };
  const Orb32s most = std::numeric_limits<Orb32s>::max();
  const auto ofWidthAndStep = [](Orb32s width, Orb32s step) {
    return [=](Call& c) {
      c.roi.width = width;
      c.step = step;
    };
  };
  orbtest::expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.pSrcDst = nullptr; }},
                               {orbStsStepErr, [](Call& c) { c.step = 0; }},
                               {orbStsStepErr, [](Call& c) { c.step = -12; }},
                               {orbStsSizeErr, [](Call& c) { c.roi.width = 0; }},
                               {orbStsSizeErr, [](Call& c) { c.roi.height = 0; }},
                               {orbStsSizeErr, [&](Call& c) { c.roi.height = -most; }},
                               {orbStsStrideErr, ofWidthAndStep(10, 11)},
                               {orbStsStrideErr, ofWidthAndStep(11, 12)},
                               {orbStsStrideErr, ofWidthAndStep(most, most)},
                               // The rows of the scratch are no 32-bit number of bytes.
                               {orbStsMemAllocErr, ofWidthAndStep(most - 2, most)}},
                              good, run);
  image.expectUntouched();
  EXPECT_EQ(run(good), orbStsNoErr);
}

void expectWithoutMemory(Morphology* function) {
  orbtest::expectWithoutMemory([&] {
    static Orb8u image[34 * 34];
    return function(image + 35, 34, {32, 32}) == orbStsMemAllocErr;
  });
}

void expectReadsNothingElse(Morphology* function) {
  for (int width = 1; width <= 130; ++width) {
    for (const Guard guard : {Guard::kBefore, Guard::kBehind}) {
      const int height = 1 + width % 3;
      GuardedBytes image(static_cast<size_t>(width + 2) * (height + 2), guard);
      ASSERT_EQ(function(image.data() + width + 3, width + 2, {width, height}), orbStsNoErr);
    }
  }
}

void expectAgreement(Morphology* px, Morphology* build, Random& random) {
  for (int round = 0; round < 300; ++round) {
    const OrbiSize roi = {random.between(1, 200), random.between(1, 12)};
    const Placement place = Placement::any(random);
    Plane<Orb8u> expected(roi.width + 2, roi.height + 2, place);
    Plane<Orb8u> actual(roi.width + 2, roi.height + 2, place);
    fill(expected, random);
    actual.copySamples(expected);
    EXPECT_EQ(px(regionOf(expected), expected.step(), roi), orbStsNoErr);
    EXPECT_EQ(build(regionOf(actual), actual.step(), roi), orbStsNoErr);
    ASSERT_TRUE(actual.sameBytes(expected)) << roi.width << " x " << roi.height;
  }
}

#define MORPHOLOGY_TESTS(name, largest)           \
  ORB_MEANING(name, ChecksInOrder) {              \
    expectChecksInOrder(ORB(name));               \
  }                                               \
  ORB_MEANING(name, WithoutMemory) {              \
    expectWithoutMemory(ORB(name));               \
  }                                               \
  ORB_MEANING(name, EverySize) {                  \
    expectEverySize(ORB(name), largest);          \
  }                                               \
  ORB_MEANING(name, ReadsNothingElse) {           \
    expectReadsNothingElse(ORB(name));            \
  }                                               \
  ORB_AGREEMENT(name) {                           \
    expectAgreement(PX(name), ORB(name), random); \
  }

MORPHOLOGY_TESTS(orbiDilate3x3_8u_C1IR, true)
MORPHOLOGY_TESTS(orbiErode3x3_8u_C1IR, false)

ORB_MEANING(orbiDilate3x3_8u_C1IR, ADotBecomesASquare) {
  Plane<Orb8u> image(9, 9);
  image.fill([] { return Orb8u{0}; });
  image.set(4, 4, 255);
  image.set(0, 8, 100);  // in the border: never written, but it counts
  ASSERT_EQ(ORB(orbiDilate3x3_8u_C1IR)(regionOf(image), image.step(), {7, 7}), orbStsNoErr);
  for (int y = 0; y < 9; ++y) {
    for (int x = 0; x < 9; ++x) {
      const bool inSquare = x >= 3 && x <= 5 && y >= 3 && y <= 5;
      const bool byBorder = (x == 0 && y == 8) || (x == 1 && y == 7);
      ASSERT_EQ(image.at(x, y), inSquare ? 255 : byBorder ? 100 : 0) << x << ", " << y;
    }
  }
}

}  // namespace
