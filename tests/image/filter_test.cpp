// Fixed filters: every kernel by its full matrix, over regions inside larger images.
#include <cmath>
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

using Filter = decltype(legacy90orbiFilterGauss_8u_C1R);

// ---- A filter as its matrix and what becomes of the weighted sum.

struct Model {
  int size;
  std::vector<double> weights;
  int (*result)(double sum);

  int reach() const { return size / 2; }
  // The sample at x, y of the source, which answers for any position.
  template <class Source>
  int at(const Source& source, int x, int y, int channels) const {
    double sum = 0;
    for (int row = 0; row < size; ++row) {
      for (int column = 0; column < size; ++column) {
        sum += weights[static_cast<size_t>(row * size + column)] *
               source(x + (column - reach()) * channels, y + row - reach());
      }
    }
    return result(sum);
  }
};

int limited(double sum) {
  return static_cast<int>(std::fmin(std::fmax(sum, 0), 255));
}
int scaled(double sum, double bias, double factor, int shift) {
  return static_cast<int>(std::floor((sum + bias) * factor / std::exp2(shift)));
}

const Model kGauss3x3 = {3, {1, 2, 1, 2, 4, 2, 1, 2, 1}, [](double sum) {
                           return static_cast<int>(std::nearbyint(sum / 16));  // ties to even
                         }};
const Model kGauss5x5 = {5,
                         {2,  7,  12,  7,  2,   //
                          7,  31, 52,  31, 7,   //
                          12, 52, 127, 52, 12,  //
                          7,  31, 52,  31, 7,   //
                          2,  7,  12,  7,  2},
                         [](double sum) { return scaled(sum, 286, 29382, 24); }};
const Model kHipass3x3 = {3, {-1, -1, -1, -1, 8, -1, -1, -1, -1}, limited};
const Model kHipass5x5 = {5,
                          {-1, -1, -1, -1, -1,  //
                           -1, -1, -1, -1, -1,  //
                           -1, -1, 24, -1, -1,  //
                           -1, -1, -1, -1, -1,  //
                           -1, -1, -1, -1, -1},
                          limited};
const Model kLaplace5x5 = {5,
                           {-1, -3, -4, -3, -1,  //
                            -3, 0,  6,  0,  -3,  //
                            -4, 6,  20, 6,  -4,  //
                            -3, 0,  6,  0,  -3,  //
                            -1, -3, -4, -3, -1},
                           limited};
const Model kLowpass3x3 = {3, std::vector<double>(9, 1),
                           [](double sum) { return scaled(sum, 5, 455, 12); }};
const Model kLowpass5x5 = {5, std::vector<double>(25, 1),
                           [](double sum) { return scaled(sum, 13, 10485, 18); }};

struct Family {
  const Model &of3x3, &of5x5;
  const Model& of(OrbiMaskSize mask) const { return mask == orbMask3x3 ? of3x3 : of5x5; }
};
const Family kGauss = {kGauss3x3, kGauss5x5};
const Family kHipass = {kHipass3x3, kHipass5x5};
const Family kLaplace = {kHipass3x3, kLaplace5x5};
const Family kLowpass = {kLowpass3x3, kLowpass5x5};

// A region in the middle of an image that goes on around it by two pixels, or by more.
class Source {
 public:
  Source(OrbiSize roi, int channels, int around, Placement at = {})
      : plane_((roi.width + 2 * around) * channels, roi.height + 2 * around, at),
        left_(around * channels),
        top_(around) {}

  Plane<Orb8u>& plane() { return plane_; }
  const Orb8u* data() const { return plane_.data() + top_ * plane_.step() + left_; }
  Orb32s step() const { return plane_.step(); }
  int operator()(int x, int y) const { return plane_.at(x + left_, y + top_); }

 private:
  Plane<Orb8u> plane_;
  int left_, top_;
};

void fill(Plane<Orb8u>& plane, Random& random) {
  switch (random.between(0, 3)) {
    case 0:
      return plane.fillAny(random);
    case 1:
      return plane.fillExtreme(random);
    case 2:  // nearly flat: sums around where results turn
      return plane.fill([&] { return static_cast<Orb8u>(random.between(100, 102)); });
    default:
      return plane.fill([&] { return random.oneIn(2) ? Orb8u{255} : Orb8u{0}; });
  }
}

void expectEverySize(Filter* filter, const Family& family, int channels) {
  Random random("every size");
  for (const OrbiMaskSize mask : {orbMask3x3, orbMask5x5}) {
    for (int width = 1; width <= 70; ++width) {
      const OrbiSize roi = {width, width < 20 ? 1 + width % 7 : random.between(1, 12)};
      Source source(roi, channels, random.between(2, 5), Placement::any(random));
      fill(source.plane(), random);
      Plane<Orb8u> dst(width * channels, roi.height, Placement::any(random));
      ASSERT_EQ(filter(source.data(), source.step(), dst.data(), dst.step(), roi, mask),
                orbStsNoErr);
      for (int y = 0; y < roi.height; ++y) {
        for (int x = 0; x < dst.width(); ++x) {
          ASSERT_EQ(dst.at(x, y), family.of(mask).at(source, x, y, channels))
              << x << ", " << y << " of " << width << " x " << roi.height << " by " << mask;
        }
      }
      dst.expectOutsideUntouched();
      source.plane().expectUntouched();
    }
  }
}

// Many rows: the rings of rows go around more than once.
void expectTall(Filter* filter, const Family& family, int channels) {
  Random random("tall");
  for (const OrbiMaskSize mask : {orbMask3x3, orbMask5x5}) {
    const OrbiSize roi = {33, 70};
    Source source(roi, channels, 2);
    fill(source.plane(), random);
    Plane<Orb8u> dst(roi.width * channels, roi.height);
    ASSERT_EQ(filter(source.data(), source.step(), dst.data(), dst.step(), roi, mask), orbStsNoErr);
    for (int y = 0; y < roi.height; ++y) {
      for (int x = 0; x < dst.width(); ++x) {
        ASSERT_EQ(dst.at(x, y), family.of(mask).at(source, x, y, channels)) << x << ", " << y;
      }
    }
  }
}

// Images that end where memory ends, at the pixels around the region.
void expectReadsNothingElse(Filter* filter, int channels) {
  for (const OrbiMaskSize mask : {orbMask3x3, orbMask5x5}) {
    const int reach = mask == orbMask3x3 ? 1 : 2;
    for (int width = 1; width <= 70; ++width) {
      const OrbiSize roi = {width, 1 + width % 3};
      const int step = (width + 2 * reach) * channels;
      for (const Guard guard : {Guard::kBefore, Guard::kBehind}) {
        GuardedBytes source(static_cast<size_t>(step) * (roi.height + 2 * reach), guard);
        GuardedBytes dst(static_cast<size_t>(width) * channels * roi.height, guard);
        ASSERT_EQ(filter(source.data() + reach * (step + channels), step, dst.data(),
                         width * channels, roi, mask),
                  orbStsNoErr);
      }
    }
  }
}

struct Call {
  const Orb8u* pSrc;
  Orb32s srcStep;
  Orb8u* pDst;
  Orb32s dstStep;
  OrbiSize roi;
  OrbiMaskSize mask;
};

void expectChecksInOrder(Filter* filter, int channels) {
  Source source({4, 4}, channels, 2);
  Plane<Orb8u> dst(4 * channels, 4);
  const Call good = {source.data(), source.step(), dst.data(), dst.step(), {4, 4}, orbMask5x5};
  const auto run = [&](const Call& c) {
    return filter(c.pSrc, c.srcStep, c.pDst, c.dstStep, c.roi, c.mask);
  };
  const Orb32s least = std::numeric_limits<Orb32s>::min();
  orbtest::expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.pSrc = nullptr; }},
                               {orbStsNullPtrErr, [](Call& c) { c.pDst = nullptr; }},
                               {orbStsSizeErr, [](Call& c) { c.roi.width = 0; }},
                               {orbStsSizeErr, [&](Call& c) { c.roi.width = least; }},
                               {orbStsSizeErr, [](Call& c) { c.roi.height = 0; }},
                               {orbStsSizeErr, [](Call& c) { c.roi.height = -1; }},
                               {orbStsStepErr, [](Call& c) { c.srcStep = 0; }},
                               {orbStsStepErr, [&](Call& c) { c.srcStep = least; }},
                               {orbStsStepErr, [](Call& c) { c.dstStep = 0; }},
                               {orbStsStepErr, [](Call& c) { c.dstStep = -8; }},
                               {orbStsMaskSizeErr, [](Call& c) { c.mask = 35; }},
                               {orbStsMaskSizeErr, [](Call& c) { c.mask = 53; }},
                               {orbStsMaskSizeErr, [](Call& c) { c.mask = 0; }},
                               {orbStsMaskSizeErr, [](Call& c) { c.mask = -33; }},
                               // No heap has room for sums of rows of these widths; the bytes of
                               // some of them would wrap to a small number.
                               {orbStsMemAllocErr, [](Call& c) { c.roi.width = 0x7FFFFFFF; }},
                               {orbStsMemAllocErr, [](Call& c) { c.roi.width = 0x40000001; }},
                               {orbStsMemAllocErr, [](Call& c) { c.roi.width = 0x20000001; }},
                               {orbStsMemAllocErr, [](Call& c) { c.roi.width = 0x15555556; }}},
                              good, run);
  dst.expectUntouched();
  EXPECT_EQ(run(good), orbStsNoErr);
}

void expectWithoutMemory(Filter* filter, int channels) {
  orbtest::expectWithoutMemory([&] {
    static Orb8u source[36 * 36 * 4], dst[32 * 32 * 4];
    const OrbiSize roi = {32, 32};
    const OrbStatus status = filter(source + 2 * 36 * channels + 2 * channels, 36 * channels, dst,
                                    32 * channels, roi, orbMask5x5);
    return status == orbStsMemAllocErr;
  });
}

// What is flat stays flat, or has no edges.
void expectFlat(Filter* filter, const Family& family, int channels) {
  for (const OrbiMaskSize mask : {orbMask3x3, orbMask5x5}) {
    for (const int value : {0, 1, 127, 128, 254, 255}) {
      Source source({40, 3}, channels, 2);
      source.plane().fill([&] { return static_cast<Orb8u>(value); });
      Plane<Orb8u> dst(40 * channels, 3);
      ASSERT_EQ(filter(source.data(), source.step(), dst.data(), dst.step(), {40, 3}, mask),
                orbStsNoErr);
      const bool keeps = &family == &kGauss || &family == &kLowpass;
      const Orb8u flat = static_cast<Orb8u>(keeps ? value : 0);
      EXPECT_EQ(dst.samples(), std::vector<Orb8u>(dst.samples().size(), flat)) << mask;
    }
  }
}

void expectAgreement(Filter* px, Filter* build, int channels, Random& random) {
  for (int round = 0; round < 200; ++round) {
    const OrbiSize roi = {random.between(1, 150), random.between(1, 9)};
    const OrbiMaskSize mask = random.oneIn(2) ? orbMask3x3 : orbMask5x5;
    Source source(roi, channels, 2, Placement::any(random));
    fill(source.plane(), random);
    const Placement place = Placement::any(random);
    Plane<Orb8u> expected(roi.width * channels, roi.height, place);
    Plane<Orb8u> actual(roi.width * channels, roi.height, place);
    EXPECT_EQ(px(source.data(), source.step(), expected.data(), expected.step(), roi, mask),
              orbStsNoErr);
    EXPECT_EQ(build(source.data(), source.step(), actual.data(), actual.step(), roi, mask),
              orbStsNoErr);
    ASSERT_TRUE(actual.sameBytes(expected)) << roi.width << " x " << roi.height << " by " << mask;
  }
}

#define FILTER_TESTS(name, family, channels)                \
  ORB_MEANING(name, ChecksInOrder) {                        \
    expectChecksInOrder(ORB(name), channels);               \
  }                                                         \
  ORB_MEANING(name, WithoutMemory) {                        \
    expectWithoutMemory(ORB(name), channels);               \
  }                                                         \
  ORB_MEANING(name, EverySize) {                            \
    expectEverySize(ORB(name), family, channels);           \
  }                                                         \
  ORB_MEANING(name, Tall) {                                 \
    expectTall(ORB(name), family, channels);                \
  }                                                         \
  ORB_MEANING(name, ReadsNothingElse) {                     \
    expectReadsNothingElse(ORB(name), channels);            \
  }                                                         \
  ORB_MEANING(name, FlatStaysFlat) {                        \
    expectFlat(ORB(name), family, channels);                \
  }                                                         \
  ORB_AGREEMENT(name) {                                     \
    expectAgreement(PX(name), ORB(name), channels, random); \
  }

FILTER_TESTS(orbiFilterGauss_8u_C1R, kGauss, 1)
FILTER_TESTS(orbiFilterGauss_8u_C3R, kGauss, 3)
FILTER_TESTS(orbiFilterGauss_8u_C4R, kGauss, 4)
FILTER_TESTS(orbiFilterHipass_8u_C1R, kHipass, 1)
FILTER_TESTS(orbiFilterHipass_8u_C3R, kHipass, 3)
FILTER_TESTS(orbiFilterHipass_8u_C4R, kHipass, 4)
FILTER_TESTS(orbiFilterLaplace_8u_C1R, kLaplace, 1)
FILTER_TESTS(orbiFilterLaplace_8u_C3R, kLaplace, 3)
FILTER_TESTS(orbiFilterLaplace_8u_C4R, kLaplace, 4)
FILTER_TESTS(orbiFilterLowpass_8u_C1R, kLowpass, 1)
FILTER_TESTS(orbiFilterLowpass_8u_C3R, kLowpass, 3)

// The result for a pixel of which the neighbours to the right and left have these values.
int ofThree(Filter* filter, OrbiMaskSize mask, int left, int middle, int right) {
  Source source({1, 1}, 1, 2);
  source.plane().fill([] { return Orb8u{0}; });
  source.plane().set(1, 2, static_cast<Orb8u>(left));
  source.plane().set(2, 2, static_cast<Orb8u>(middle));
  source.plane().set(3, 2, static_cast<Orb8u>(right));
  Orb8u dst = 0;
  EXPECT_EQ(filter(source.data(), source.step(), &dst, 1, {1, 1}, mask), orbStsNoErr);
  return dst;
}

// Weights of 2, 4 and 2: sums of 8, 24 and 40 lie in the middle between two results.
ORB_MEANING(orbiFilterGauss_8u_C1R, TiesGoToTheEvenResult) {
  Filter* filter = ORB(orbiFilterGauss_8u_C1R);
  EXPECT_EQ(ofThree(filter, orbMask3x3, 0, 2, 0), 0);
  EXPECT_EQ(ofThree(filter, orbMask3x3, 1, 2, 0), 1);
  EXPECT_EQ(ofThree(filter, orbMask3x3, 0, 6, 0), 2);
  EXPECT_EQ(ofThree(filter, orbMask3x3, 0, 10, 0), 2);
  EXPECT_EQ(ofThree(filter, orbMask3x3, 0, 14, 0), 4);
}

// 10485 / 2^18 is a little less than 1/25: 5 * 25 - 13 is where division would give 5 already.
ORB_MEANING(orbiFilterLowpass_8u_C1R, TheReciprocalsAreNotQuotients) {
  Filter* filter = ORB(orbiFilterLowpass_8u_C1R);
  EXPECT_EQ(ofThree(filter, orbMask5x5, 0, 112, 0), 4);  // 125 * 10485 < 5 * 2^18
  EXPECT_EQ(ofThree(filter, orbMask5x5, 0, 113, 0), 5);
  EXPECT_EQ(ofThree(filter, orbMask3x3, 0, 4, 0), 0);  // 9 * 455 < 2^12
  EXPECT_EQ(ofThree(filter, orbMask3x3, 0, 5, 0), 1);
}

// Rows may overlap: a step is no width.
ORB_MEANING(orbiFilterLowpass_8u_C1R, AStepOfOne) {
  Random random("a step of one");
  Plane<Orb8u> bytes(60, 1), dst(20, 6);
  bytes.fillAny(random);
  const auto source = [&](int x, int y) { return int{bytes.at(20 + x + y)}; };
  for (const OrbiMaskSize mask : {orbMask3x3, orbMask5x5}) {
    ASSERT_EQ(
        ORB(orbiFilterLowpass_8u_C1R)(bytes.data() + 20, 1, dst.data(), dst.step(), {20, 6}, mask),
        orbStsNoErr);
    for (int y = 0; y < 6; ++y) {
      for (int x = 0; x < 20; ++x) ASSERT_EQ(dst.at(x, y), kLowpass.of(mask).at(source, x, y, 1));
    }
  }
}

}  // namespace
