// Chroma sampling: halving and doubling of planes and rows.
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "tests/support/builds.h"
#include "tests/support/guarded.h"
#include "tests/support/plane.h"

namespace {

using orbtest::Guard;
using orbtest::GuardedBytes;
using orbtest::Placement;
using orbtest::Plane;
using orbtest::Random;

// Sizes that leave every number of samples behind the vectors of every width.
constexpr int kWidths[] = {1,  2,  3,  4,  5,  7,  8,  9,  15, 16,  17,  31, 32,
                           33, 34, 47, 48, 63, 64, 65, 66, 71, 127, 128, 129};

int floorOf(double value) {
  return static_cast<int>(std::floor(value));
}

// ---- What a sample of each function is, over any source that answers for a column and a row.

template <class Source>
int halvedH2V1(const Source& s, int x, int y) {
  return floorOf((s(2 * x, y) + s(2 * x + 1, y)) / 2.0 + 0.5);
}

template <class Source>
int halvedH2V2(const Source& s, int x, int y) {
  double sum = 0;
  for (int row = 2 * y; row < 2 * y + 2; ++row) {
    for (int column = 2 * x; column < 2 * x + 2; ++column) sum += s(column, row);
  }
  return floorOf(sum / 4 + 0.75);
}

template <class Source>
int doubledH2V1(const Source& s, int x, int y) {
  const int near = floorOf(x / 2.0);
  const int beside = x % 2 == 0 ? near - 1 : near + 1;
  return floorOf(0.75 * s(near, y) + 0.25 * s(beside, y) + (x % 2 == 0 ? 0.25 : 0.5));
}

template <class Source>
int doubledH2V2(const Source& s, int x, int y) {
  const int column = floorOf(x / 2.0), row = floorOf(y / 2.0);
  const int beside = x % 2 == 0 ? column - 1 : column + 1;
  const int other = y % 2 == 0 ? row - 1 : row + 1;
  const double mix = 9.0 / 16 * s(column, row) + 3.0 / 16 * s(column, other) +
                     3.0 / 16 * s(beside, row) + 1.0 / 16 * s(beside, other);
  return floorOf(mix + (x % 2 == 0 ? 8.0 / 16 : 7.0 / 16));
}

// ---- The plane forms

using PlaneFunction = decltype(legacy90orbiSampleDownH2V1_JPEG_8u_C1R);

// A source region in the middle of a plane that goes on around it by two columns and two rows.
class Source {
 public:
  static constexpr int kAround = 2;

  Source(int width, int height, Placement at = {})
      : plane_(width + 2 * kAround, height + 2 * kAround, at) {}

  Plane<Orb8u>& plane() { return plane_; }
  Orb32s step() const { return plane_.step(); }
  const Orb8u* data() const { return plane_.data() + kAround * plane_.step() + kAround; }
  void set(int x, int y, int value) {
    plane_.set(x + kAround, y + kAround, static_cast<Orb8u>(value));
  }
  int operator()(int x, int y) const { return plane_.at(x + kAround, y + kAround); }

 private:
  Plane<Orb8u> plane_;
};

void expectPlaneChecks(PlaneFunction* function) {
  Source src(8, 8);
  Plane<Orb8u> dst(4, 4);
  const OrbiSize good = {4, 4};
  const OrbiSize noWidth = {0, 4};
  const OrbiSize noHeight = {4, 0};
  const OrbiSize negative = {-4, -4};
  // Each line has one fault fewer than the line above it, in the order of the checks.
  EXPECT_EQ(function(nullptr, 0, noWidth, nullptr, 0, noWidth), orbStsNullPtrErr);
  EXPECT_EQ(function(src.data(), 0, noWidth, nullptr, 0, noWidth), orbStsStepErr);
  EXPECT_EQ(function(src.data(), -1, noWidth, nullptr, 0, noWidth), orbStsStepErr);
  EXPECT_EQ(function(src.data(), src.step(), noWidth, nullptr, 0, noWidth), orbStsSizeErr);
  EXPECT_EQ(function(src.data(), src.step(), noHeight, nullptr, 0, noWidth), orbStsSizeErr);
  EXPECT_EQ(function(src.data(), src.step(), negative, nullptr, 0, noWidth), orbStsSizeErr);
  EXPECT_EQ(function(src.data(), src.step(), good, nullptr, 0, noWidth), orbStsNullPtrErr);
  EXPECT_EQ(function(src.data(), src.step(), good, dst.data(), 0, noWidth), orbStsStepErr);
  EXPECT_EQ(function(src.data(), src.step(), good, dst.data(), -4, noWidth), orbStsStepErr);
  EXPECT_EQ(function(src.data(), src.step(), good, dst.data(), dst.step(), noWidth), orbStsSizeErr);
  EXPECT_EQ(function(src.data(), src.step(), good, dst.data(), dst.step(), noHeight),
            orbStsSizeErr);
  EXPECT_EQ(function(src.data(), src.step(), good, dst.data(), dst.step(), negative),
            orbStsSizeErr);
  dst.expectUntouched();
  EXPECT_EQ(function(src.data(), src.step(), good, dst.data(), dst.step(), good), orbStsNoErr);
}
ORB_MEANING(orbiSampleDownH2V1_JPEG_8u_C1R, ChecksInOrder) {
  expectPlaneChecks(ORB(orbiSampleDownH2V1_JPEG_8u_C1R));
}
ORB_MEANING(orbiSampleDownH2V2_JPEG_8u_C1R, ChecksInOrder) {
  expectPlaneChecks(ORB(orbiSampleDownH2V2_JPEG_8u_C1R));
}
ORB_MEANING(orbiSampleUpH2V1_JPEG_8u_C1R, ChecksInOrder) {
  expectPlaneChecks(ORB(orbiSampleUpH2V1_JPEG_8u_C1R));
}
ORB_MEANING(orbiSampleUpH2V2_JPEG_8u_C1R, ChecksInOrder) {
  expectPlaneChecks(ORB(orbiSampleUpH2V2_JPEG_8u_C1R));
}

// Every destination size from the list of widths and a few heights, with random samples in and
// around the source. The size of the source is not what decides: it is a lie here.
template <class Expected>
void expectPlanes(const char* name, PlaneFunction* function, bool down, Expected expected) {
  Random random(name);
  for (const int width : kWidths) {
    for (int height = 1; height < 6; ++height) {
      Source src(down ? 2 * width : (width + 1) / 2, down ? 2 * height : (height + 1) / 2,
                 Placement::any(random));
      Plane<Orb8u> dst(width, height, Placement::any(random));
      if (height % 2 == 0) {
        src.plane().fillExtreme(random);
      } else {
        src.plane().fillAny(random);
      }
      const OrbiSize anySize = {random.between(1, 300), random.between(1, 300)};
      ASSERT_EQ(function(src.data(), src.step(), anySize, dst.data(), dst.step(), dst.size()),
                orbStsNoErr);
      for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
          ASSERT_EQ(dst.at(x, y), expected(src, x, y))
              << x << ", " << y << " of " << width << " x " << height;
        }
      }
      dst.expectOutsideUntouched();
      src.plane().expectUntouched();
    }
  }
}
ORB_MEANING(orbiSampleDownH2V1_JPEG_8u_C1R, EverySize) {
  expectPlanes("down h2v1", ORB(orbiSampleDownH2V1_JPEG_8u_C1R), true, halvedH2V1<Source>);
}
ORB_MEANING(orbiSampleDownH2V2_JPEG_8u_C1R, EverySize) {
  expectPlanes("down h2v2", ORB(orbiSampleDownH2V2_JPEG_8u_C1R), true, halvedH2V2<Source>);
}
ORB_MEANING(orbiSampleUpH2V1_JPEG_8u_C1R, EverySize) {
  expectPlanes("up h2v1", ORB(orbiSampleUpH2V1_JPEG_8u_C1R), false, doubledH2V1<Source>);
}
ORB_MEANING(orbiSampleUpH2V2_JPEG_8u_C1R, EverySize) {
  expectPlanes("up h2v2", ORB(orbiSampleUpH2V2_JPEG_8u_C1R), false, doubledH2V2<Source>);
}

ORB_MEANING(orbiSampleDownH2V1_JPEG_8u_C1R, AHalfGoesUpForEveryPair) {
  Plane<Orb8u> src(512, 256), dst(256, 256);
  for (int y = 0; y < 256; ++y) {
    for (int x = 0; x < 256; ++x) {
      src.set(2 * x, y, static_cast<Orb8u>(x));
      src.set(2 * x + 1, y, static_cast<Orb8u>(y));
    }
  }
  ASSERT_EQ(ORB(orbiSampleDownH2V1_JPEG_8u_C1R)(src.data(), src.step(), src.size(), dst.data(),
                                                dst.step(), dst.size()),
            orbStsNoErr);
  for (int y = 0; y < 256; ++y) {
    for (int x = 0; x < 256; ++x) ASSERT_EQ(dst.at(x, y), (x + y) / 2 + (x + y) % 2);
  }
}

// A quarter is enough to go up, wherever it stands and whether the column is even or odd.
ORB_MEANING(orbiSampleDownH2V2_JPEG_8u_C1R, AnyFractionGoesUp) {
  for (int sum = 0; sum < 4; ++sum) {
    for (int first = 0; first < 4; ++first) {
      Plane<Orb8u> src(64, 2), dst(32, 1);
      for (int x = 0; x < 64; ++x) {
        for (int y = 0; y < 2; ++y) src.set(x, y, (first + 2 * y + x % 2) % 4 < sum ? 1 : 0);
      }
      ASSERT_EQ(ORB(orbiSampleDownH2V2_JPEG_8u_C1R)(src.data(), src.step(), src.size(), dst.data(),
                                                    dst.step(), dst.size()),
                orbStsNoErr);
      for (int x = 0; x < 32; ++x) ASSERT_EQ(dst.at(x), sum == 0 ? 0 : 1);
    }
  }
}

// Column -1 counts a quarter in the first sample of a row, column `width` in the last; in H2V2 so
// do row -1 and row `height` in the first and last row.
ORB_MEANING(orbiSampleUpH2V1_JPEG_8u_C1R, ReadsTheColumnsBeside) {
  Source src(4, 1);
  src.plane().fill([] { return Orb8u{0}; });
  src.set(-1, 0, 100);
  src.set(4, 0, 200);
  Plane<Orb8u> dst(8, 1);
  ASSERT_EQ(ORB(orbiSampleUpH2V1_JPEG_8u_C1R)(src.data(), src.step(), {4, 1}, dst.data(),
                                              dst.step(), dst.size()),
            orbStsNoErr);
  EXPECT_EQ(dst.samples(), (std::vector<Orb8u>{25, 0, 0, 0, 0, 0, 0, 50}));
}
ORB_MEANING(orbiSampleUpH2V2_JPEG_8u_C1R, ReadsTheRowsAndColumnsBeside) {
  Source src(2, 1);
  src.plane().fill([] { return Orb8u{0}; });
  src.set(0, -1, 160);  // 3/16 of the first row
  src.set(-1, 0, 80);   // 3/16 of the first column
  src.set(-1, -1, 32);  // 1/16 of the first sample
  src.set(2, 1, 240);   // 1/16 of the last sample
  Plane<Orb8u> dst(4, 2);
  ASSERT_EQ(ORB(orbiSampleUpH2V2_JPEG_8u_C1R)(src.data(), src.step(), {2, 1}, dst.data(),
                                              dst.step(), dst.size()),
            orbStsNoErr);
  // The first sample: (3 * 160 + 3 * 80 + 32 + 8) / 16.
  EXPECT_EQ(dst.samples(), (std::vector<Orb8u>{47, 30, 10, 0, 15, 0, 0, 15}));
}

// Where rounding turns: a neighbour alone, with nothing in the sample itself.
ORB_MEANING(orbiSampleUpH2V1_JPEG_8u_C1R, RoundsEvenSamplesDownAndOddUp) {
  for (int b = 0; b < 4; ++b) {
    Source src(3, 1);
    src.plane().fill([] { return Orb8u{0}; });
    src.set(0, 0, b);
    src.set(2, 0, b);
    Plane<Orb8u> dst(6, 1);
    ORB(orbiSampleUpH2V1_JPEG_8u_C1R)
    (src.data(), src.step(), {3, 1}, dst.data(), dst.step(), dst.size());
    EXPECT_EQ(dst.at(2), b == 3 ? 1 : 0) << b;  // quarters from the left
    EXPECT_EQ(dst.at(3), b >= 2 ? 1 : 0) << b;  // quarters from the right
  }
}
ORB_MEANING(orbiSampleUpH2V2_JPEG_8u_C1R, RoundsAHalfUpAtEvenSamplesOnly) {
  for (int d = 0; d < 16; ++d) {
    Source src(1, 1);
    src.plane().fill([] { return Orb8u{0}; });
    src.set(-1, -1, d);
    src.set(1, -1, d);
    Plane<Orb8u> dst(2, 1);
    ORB(orbiSampleUpH2V2_JPEG_8u_C1R)
    (src.data(), src.step(), {1, 1}, dst.data(), dst.step(), dst.size());
    EXPECT_EQ(dst.at(0), d >= 8 ? 1 : 0) << d;
    EXPECT_EQ(dst.at(1), d >= 9 ? 1 : 0) << d;
  }
}

// Rows may overlap, and a step need not be a width.
template <class Expected>
void expectAStepOfOne(PlaneFunction* function, Expected expected) {
  Plane<Orb8u> bytes(80, 1);
  Random random("a step of one");
  bytes.fillAny(random);
  const int origin = 20;
  Plane<Orb8u> dst(17, 6);
  ASSERT_EQ(function(bytes.data() + origin, 1, {1, 1}, dst.data(), dst.step(), dst.size()),
            orbStsNoErr);
  const auto source = [&](int x, int y) { return bytes.at(origin + x + y); };
  for (int y = 0; y < 6; ++y) {
    for (int x = 0; x < 17; ++x) ASSERT_EQ(dst.at(x, y), expected(source, x, y));
  }
}
ORB_MEANING(orbiSampleDownH2V1_JPEG_8u_C1R, AStepOfOne) {
  expectAStepOfOne(ORB(orbiSampleDownH2V1_JPEG_8u_C1R),
                   [](const auto& s, int x, int y) { return halvedH2V1(s, x, y); });
}
ORB_MEANING(orbiSampleDownH2V2_JPEG_8u_C1R, AStepOfOne) {
  expectAStepOfOne(ORB(orbiSampleDownH2V2_JPEG_8u_C1R),
                   [](const auto& s, int x, int y) { return halvedH2V2(s, x, y); });
}
ORB_MEANING(orbiSampleUpH2V1_JPEG_8u_C1R, AStepOfOne) {
  expectAStepOfOne(ORB(orbiSampleUpH2V1_JPEG_8u_C1R),
                   [](const auto& s, int x, int y) { return doubledH2V1(s, x, y); });
}
ORB_MEANING(orbiSampleUpH2V2_JPEG_8u_C1R, AStepOfOne) {
  expectAStepOfOne(ORB(orbiSampleUpH2V2_JPEG_8u_C1R),
                   [](const auto& s, int x, int y) { return doubledH2V2(s, x, y); });
}

// Sources of which nothing exists but what may be read: from column `left` and row `top` on, for so
// many columns and rows.
struct Reach {
  int left, top, columns, rows;
};
template <class ReachOf>
void expectPlaneReads(PlaneFunction* function, ReachOf reachOf) {
  for (const int width : kWidths) {
    for (int height = 1; height < 5; ++height) {
      const Reach reach = reachOf(width, height);
      for (const Guard guard : {Guard::kBefore, Guard::kBehind}) {
        GuardedBytes src(static_cast<size_t>(reach.columns) * reach.rows, guard);
        Plane<Orb8u> dst(width, height);
        const Orb8u* first = src.data() - reach.top * reach.columns - reach.left;
        ASSERT_EQ(function(first, reach.columns, {1, 1}, dst.data(), dst.step(), dst.size()),
                  orbStsNoErr);
      }
    }
  }
}
ORB_MEANING(orbiSampleDownH2V1_JPEG_8u_C1R, ReadsNothingElse) {
  expectPlaneReads(ORB(orbiSampleDownH2V1_JPEG_8u_C1R), [](int width, int height) {
    return Reach{0, 0, 2 * width, height};
  });
}
ORB_MEANING(orbiSampleDownH2V2_JPEG_8u_C1R, ReadsNothingElse) {
  expectPlaneReads(ORB(orbiSampleDownH2V2_JPEG_8u_C1R), [](int width, int height) {
    return Reach{0, 0, 2 * width, 2 * height};
  });
}
// An odd width or height ends at a sample that leans to the left or a row that leans up.
ORB_MEANING(orbiSampleUpH2V1_JPEG_8u_C1R, ReadsNothingElse) {
  expectPlaneReads(ORB(orbiSampleUpH2V1_JPEG_8u_C1R), [](int width, int height) {
    return Reach{-1, 0, width / 2 + 2, height};
  });
}
ORB_MEANING(orbiSampleUpH2V2_JPEG_8u_C1R, ReadsNothingElse) {
  expectPlaneReads(ORB(orbiSampleUpH2V2_JPEG_8u_C1R), [](int width, int height) {
    return Reach{-1, -1, width / 2 + 2, height / 2 + 2};
  });
}

void expectPlanesAgree(PlaneFunction* px, PlaneFunction* build, bool down, Random& random) {
  for (int round = 0; round < 300; ++round) {
    const int width = random.between(1, 150), height = random.between(1, 6);
    Source src(down ? 2 * width : (width + 1) / 2, down ? 2 * height : (height + 1) / 2,
               Placement::any(random));
    const Placement place = Placement::any(random);
    Plane<Orb8u> expected(width, height, place), actual(width, height, place);
    if (random.oneIn(2)) {
      src.plane().fillAny(random);
    } else {
      src.plane().fillExtreme(random);
    }
    const OrbStatus status =
        px(src.data(), src.step(), {1, 1}, expected.data(), expected.step(), expected.size());
    EXPECT_EQ(build(src.data(), src.step(), {1, 1}, actual.data(), actual.step(), actual.size()),
              status);
    ASSERT_TRUE(actual.sameBytes(expected)) << width << " x " << height;
  }
}
ORB_AGREEMENT(orbiSampleDownH2V1_JPEG_8u_C1R) {
  expectPlanesAgree(PX(orbiSampleDownH2V1_JPEG_8u_C1R), ORB(orbiSampleDownH2V1_JPEG_8u_C1R), true,
                    random);
}
ORB_AGREEMENT(orbiSampleDownH2V2_JPEG_8u_C1R) {
  expectPlanesAgree(PX(orbiSampleDownH2V2_JPEG_8u_C1R), ORB(orbiSampleDownH2V2_JPEG_8u_C1R), true,
                    random);
}
ORB_AGREEMENT(orbiSampleUpH2V1_JPEG_8u_C1R) {
  expectPlanesAgree(PX(orbiSampleUpH2V1_JPEG_8u_C1R), ORB(orbiSampleUpH2V1_JPEG_8u_C1R), false,
                    random);
}
ORB_AGREEMENT(orbiSampleUpH2V2_JPEG_8u_C1R) {
  expectPlanesAgree(PX(orbiSampleUpH2V2_JPEG_8u_C1R), ORB(orbiSampleUpH2V2_JPEG_8u_C1R), false,
                    random);
}

// ---- The row forms

// The functions of one row and of two are called alike: the second row of the former is ignored.
using RowFunction = decltype(legacy90orbiSampleDownRowH2V1_Box_JPEG_8u_C1);
using RowsFunction = decltype(legacy90orbiSampleDownRowH2V2_Box_JPEG_8u_C1);
OrbStatus call(RowFunction* function, const Orb8u* a, const Orb8u*, int width, Orb8u* dst) {
  return function(a, width, dst);
}
OrbStatus call(RowsFunction* function, const Orb8u* a, const Orb8u* b, int width, Orb8u* dst) {
  return function(a, b, width, dst);
}

// What an output of each function is, over a source with the two rows 0 and 1.
struct BoxH2V1 {
  static int outputs(int width) { return width / 2; }
  static Reach reach(int width) { return {0, 0, width / 2 * 2, 1}; }
  template <class Rows>
  static int expected(const Rows& s, int, int i) {
    return floorOf((s(2 * i, 0) + s(2 * i + 1, 0)) / 2.0 + (i % 2 == 0 ? 0 : 0.5));
  }
};
struct BoxH2V2 {
  static int outputs(int width) { return (width + 1) / 2; }
  static Reach reach(int width) { return {0, 0, (width + 1) / 2 * 2, 2}; }
  template <class Rows>
  static int expected(const Rows& s, int, int i) {
    const double sum = s(2 * i, 0) + s(2 * i + 1, 0) + s(2 * i, 1) + s(2 * i + 1, 1);
    return floorOf(sum / 4 + (i % 2 == 0 ? 0.25 : 0.5));
  }
};
struct TriangleH2V1 {
  static int outputs(int width) { return 2 * width; }
  static Reach reach(int width) { return width == 1 ? Reach{-1, 0, 3, 1} : Reach{0, 0, width, 1}; }
  template <class Rows>
  static int expected(const Rows& s, int width, int x) {
    if (x == 2 * width - 1) return s(width - 1, 0);
    if (x == 0 && width > 1) return s(0, 0);
    return doubledH2V1(s, x, 0);
  }
};
struct TriangleH2V2 {
  static int outputs(int width) { return 2 * width; }
  static Reach reach(int width) { return width == 1 ? Reach{-1, 0, 3, 2} : Reach{0, 0, width, 2}; }
  template <class Rows>
  static int expected(const Rows& s, int width, int x) {
    // An odd row of the plane has the next one as its neighbour.
    const int end = x == 2 * width - 1 ? width - 1 : 0;
    const double atEnd = 0.75 * s(end, 0) + 0.25 * s(end, 1);
    if (x == 2 * width - 1) return floorOf(atEnd + 7.0 / 16);
    if (x == 0 && width > 1) return floorOf(atEnd + 8.0 / 16);
    return doubledH2V2(s, x, 1);
  }
};

void expectRowChecks(RowFunction* function, int tooShort) {
  Plane<Orb8u> src(8, 1), dst(16, 1);
  EXPECT_EQ(function(nullptr, 0, dst.data()), orbStsNullPtrErr);
  EXPECT_EQ(function(src.data(), 0, nullptr), orbStsNullPtrErr);
  for (const int width : {tooShort, 0, -1, -2, std::numeric_limits<int>::min()}) {
    EXPECT_EQ(function(src.data(), width, dst.data()), orbStsSizeErr) << width;
  }
  dst.expectUntouched();
}
ORB_MEANING(orbiSampleDownRowH2V1_Box_JPEG_8u_C1, ChecksInOrder) {
  expectRowChecks(ORB(orbiSampleDownRowH2V1_Box_JPEG_8u_C1), 1);
}
ORB_MEANING(orbiSampleUpRowH2V1_Triangle_JPEG_8u_C1, ChecksInOrder) {
  expectRowChecks(ORB(orbiSampleUpRowH2V1_Triangle_JPEG_8u_C1), 0);
}

void expectRowsChecks(RowsFunction* function) {
  Plane<Orb8u> a(8, 1), b(8, 1), dst(16, 1);
  EXPECT_EQ(function(nullptr, b.data(), 0, dst.data()), orbStsNullPtrErr);
  EXPECT_EQ(function(a.data(), nullptr, 0, dst.data()), orbStsNullPtrErr);
  EXPECT_EQ(function(a.data(), b.data(), 0, nullptr), orbStsNullPtrErr);
  for (const int width : {0, -1, -2, std::numeric_limits<int>::min()}) {
    EXPECT_EQ(function(a.data(), b.data(), width, dst.data()), orbStsSizeErr) << width;
  }
  dst.expectUntouched();
}
ORB_MEANING(orbiSampleDownRowH2V2_Box_JPEG_8u_C1, ChecksInOrder) {
  expectRowsChecks(ORB(orbiSampleDownRowH2V2_Box_JPEG_8u_C1));
}
ORB_MEANING(orbiSampleUpRowH2V2_Triangle_JPEG_8u_C1, ChecksInOrder) {
  expectRowsChecks(ORB(orbiSampleUpRowH2V2_Triangle_JPEG_8u_C1));
}

// Only the downward function of one row warns, and gives no output at all for a width of 1.
template <class Form, class Function>
void expectRows(const char* name, Function* function, int firstWidth, OrbStatus oddStatus) {
  Random random(name);
  for (int width = firstWidth; width < 140; ++width) {
    Source a(width, 1, Placement::any(random)), b(width, 1, Placement::any(random));
    Plane<Orb8u> dst(Form::outputs(width), 1, Placement::any(random));
    for (Source* row : {&a, &b}) {
      if (random.oneIn(2)) {
        row->plane().fillExtreme(random);
      } else {
        row->plane().fillAny(random);
      }
    }
    ASSERT_EQ(call(function, a.data(), b.data(), width, dst.data()),
              width % 2 == 1 ? oddStatus : orbStsNoErr);
    const auto rows = [&](int x, int y) { return y == 1 ? b(x, 0) : a(x, 0); };
    for (int x = 0; x < dst.width(); ++x) {
      ASSERT_EQ(dst.at(x), Form::expected(rows, width, x)) << x << " of " << width;
    }
    dst.expectOutsideUntouched();
  }
}
ORB_MEANING(orbiSampleDownRowH2V1_Box_JPEG_8u_C1, EveryWidth) {
  expectRows<BoxH2V1>("box h2v1", ORB(orbiSampleDownRowH2V1_Box_JPEG_8u_C1), 2, orbStsOddRowWidth);
}
ORB_MEANING(orbiSampleDownRowH2V2_Box_JPEG_8u_C1, EveryWidth) {
  expectRows<BoxH2V2>("box h2v2", ORB(orbiSampleDownRowH2V2_Box_JPEG_8u_C1), 1, orbStsNoErr);
}
ORB_MEANING(orbiSampleUpRowH2V1_Triangle_JPEG_8u_C1, EveryWidth) {
  expectRows<TriangleH2V1>("triangle h2v1", ORB(orbiSampleUpRowH2V1_Triangle_JPEG_8u_C1), 1,
                           orbStsNoErr);
}
ORB_MEANING(orbiSampleUpRowH2V2_Triangle_JPEG_8u_C1, EveryWidth) {
  expectRows<TriangleH2V2>("triangle h2v2", ORB(orbiSampleUpRowH2V2_Triangle_JPEG_8u_C1), 1,
                           orbStsNoErr);
}

ORB_MEANING(orbiSampleDownRowH2V1_Box_JPEG_8u_C1, RoundingAlternates) {
  const Orb8u src[] = {1, 2, 1, 2, 1, 2, 1};
  Plane<Orb8u> dst(3, 1);
  EXPECT_EQ(ORB(orbiSampleDownRowH2V1_Box_JPEG_8u_C1)(src, 6, dst.data()), orbStsNoErr);
  EXPECT_EQ(dst.samples(), (std::vector<Orb8u>{1, 2, 1}));
  dst.expectOutsideUntouched();
}
ORB_MEANING(orbiSampleDownRowH2V1_Box_JPEG_8u_C1, AnOddWidthIsAWarning) {
  const Orb8u src[] = {10, 20, 30};
  Plane<Orb8u> dst(3, 1);
  EXPECT_EQ(ORB(orbiSampleDownRowH2V1_Box_JPEG_8u_C1)(src, 3, dst.data()), orbStsOddRowWidth);
  EXPECT_EQ(dst.at(0), 15);
  dst.expectOutsideUntouched(1, 1);
}
ORB_MEANING(orbiSampleDownRowH2V2_Box_JPEG_8u_C1, RoundingAlternates) {
  // Sums of 2 and 3 quarters: an even output takes 3 up, an odd one takes 2 up too.
  const Orb8u a[] = {1, 1, 1, 1, 1, 1};
  const Orb8u b[] = {0, 0, 0, 0, 0, 1};
  Plane<Orb8u> dst(3, 1);
  EXPECT_EQ(ORB(orbiSampleDownRowH2V2_Box_JPEG_8u_C1)(a, b, 6, dst.data()), orbStsNoErr);
  EXPECT_EQ(dst.samples(), (std::vector<Orb8u>{0, 1, 1}));
}
ORB_MEANING(orbiSampleDownRowH2V2_Box_JPEG_8u_C1, AnOddWidthReadsOneSampleMore) {
  const Orb8u a[] = {0, 0, 0, 200};
  const Orb8u b[] = {0, 0, 0, 100};
  Plane<Orb8u> dst(2, 1);
  EXPECT_EQ(ORB(orbiSampleDownRowH2V2_Box_JPEG_8u_C1)(a, b, 3, dst.data()), orbStsNoErr);
  EXPECT_EQ(dst.samples(), (std::vector<Orb8u>{0, 75}));
}
ORB_MEANING(orbiSampleUpRowH2V1_Triangle_JPEG_8u_C1, TheEndsKeepTheirSamples) {
  const Orb8u src[] = {0, 100};
  Plane<Orb8u> dst(4, 1);
  EXPECT_EQ(ORB(orbiSampleUpRowH2V1_Triangle_JPEG_8u_C1)(src, 2, dst.data()), orbStsNoErr);
  EXPECT_EQ(dst.samples(), (std::vector<Orb8u>{0, 25, 75, 100}));
}
ORB_MEANING(orbiSampleUpRowH2V1_Triangle_JPEG_8u_C1, AWidthOfOneLeansToTheLeft) {
  const Orb8u src[] = {200, 100, 40};
  Plane<Orb8u> dst(2, 1);
  EXPECT_EQ(ORB(orbiSampleUpRowH2V1_Triangle_JPEG_8u_C1)(src + 1, 1, dst.data()), orbStsNoErr);
  EXPECT_EQ(dst.samples(), (std::vector<Orb8u>{125, 100}));
  dst.expectOutsideUntouched();
}
ORB_MEANING(orbiSampleUpRowH2V2_Triangle_JPEG_8u_C1, TheEndsMixTheirColumns) {
  const Orb8u near[] = {0, 100};
  const Orb8u far[] = {2, 2};
  Plane<Orb8u> dst(4, 1);
  EXPECT_EQ(ORB(orbiSampleUpRowH2V2_Triangle_JPEG_8u_C1)(near, far, 2, dst.data()), orbStsNoErr);
  // c = 2, 302: 16/16, (6 + 302 + 7)/16, (906 + 2 + 8)/16, (1208 + 7)/16.
  EXPECT_EQ(dst.samples(), (std::vector<Orb8u>{1, 19, 57, 75}));
}
ORB_MEANING(orbiSampleUpRowH2V2_Triangle_JPEG_8u_C1, AWidthOfOneLeansToTheLeft) {
  const Orb8u near[] = {200, 100, 40};
  const Orb8u far[] = {40, 60, 80};
  Plane<Orb8u> dst(2, 1);
  EXPECT_EQ(ORB(orbiSampleUpRowH2V2_Triangle_JPEG_8u_C1)(near + 1, far + 1, 1, dst.data()),
            orbStsNoErr);
  // c = 640, 360, 200: (1080 + 640 + 8)/16, (1440 + 7)/16.
  EXPECT_EQ(dst.samples(), (std::vector<Orb8u>{108, 90}));
  dst.expectOutsideUntouched();
}

template <class Form, class Function>
void expectRowReads(Function* function, int firstWidth) {
  for (int width = firstWidth; width < 140; ++width) {
    const Reach reach = Form::reach(width);
    for (const Guard guard : {Guard::kBefore, Guard::kBehind}) {
      GuardedBytes a(static_cast<size_t>(reach.columns), guard);
      GuardedBytes b(static_cast<size_t>(reach.columns), guard);
      GuardedBytes dst(static_cast<size_t>(Form::outputs(width)), guard);
      const OrbStatus status =
          call(function, a.data() - reach.left, b.data() - reach.left, width, dst.data());
      ASSERT_GE(status, orbStsNoErr);
    }
  }
}
ORB_MEANING(orbiSampleDownRowH2V1_Box_JPEG_8u_C1, ReadsNothingElse) {
  expectRowReads<BoxH2V1>(ORB(orbiSampleDownRowH2V1_Box_JPEG_8u_C1), 2);
}
ORB_MEANING(orbiSampleDownRowH2V2_Box_JPEG_8u_C1, ReadsNothingElse) {
  expectRowReads<BoxH2V2>(ORB(orbiSampleDownRowH2V2_Box_JPEG_8u_C1), 1);
}
ORB_MEANING(orbiSampleUpRowH2V1_Triangle_JPEG_8u_C1, ReadsNothingElse) {
  expectRowReads<TriangleH2V1>(ORB(orbiSampleUpRowH2V1_Triangle_JPEG_8u_C1), 1);
}
ORB_MEANING(orbiSampleUpRowH2V2_Triangle_JPEG_8u_C1, ReadsNothingElse) {
  expectRowReads<TriangleH2V2>(ORB(orbiSampleUpRowH2V2_Triangle_JPEG_8u_C1), 1);
}

template <class Form, class Function>
void expectRowsAgree(Function* px, Function* build, Random& random) {
  for (int round = 0; round < 300; ++round) {
    const int width = random.between(1, 200);
    Source a(width, 1, Placement::any(random)), b(width, 1, Placement::any(random));
    const Placement place = Placement::any(random);
    Plane<Orb8u> expected(Form::outputs(width), 1, place), actual(Form::outputs(width), 1, place);
    for (Source* row : {&a, &b}) {
      if (random.oneIn(2)) {
        row->plane().fillExtreme(random);
      } else {
        row->plane().fillAny(random);
      }
    }
    const OrbStatus status = call(px, a.data(), b.data(), width, expected.data());
    EXPECT_EQ(call(build, a.data(), b.data(), width, actual.data()), status);
    ASSERT_TRUE(actual.sameBytes(expected)) << width;
  }
}
ORB_AGREEMENT(orbiSampleDownRowH2V1_Box_JPEG_8u_C1) {
  expectRowsAgree<BoxH2V1>(PX(orbiSampleDownRowH2V1_Box_JPEG_8u_C1),
                           ORB(orbiSampleDownRowH2V1_Box_JPEG_8u_C1), random);
}
ORB_AGREEMENT(orbiSampleDownRowH2V2_Box_JPEG_8u_C1) {
  expectRowsAgree<BoxH2V2>(PX(orbiSampleDownRowH2V2_Box_JPEG_8u_C1),
                           ORB(orbiSampleDownRowH2V2_Box_JPEG_8u_C1), random);
}
ORB_AGREEMENT(orbiSampleUpRowH2V1_Triangle_JPEG_8u_C1) {
  expectRowsAgree<TriangleH2V1>(PX(orbiSampleUpRowH2V1_Triangle_JPEG_8u_C1),
                                ORB(orbiSampleUpRowH2V1_Triangle_JPEG_8u_C1), random);
}
ORB_AGREEMENT(orbiSampleUpRowH2V2_Triangle_JPEG_8u_C1) {
  expectRowsAgree<TriangleH2V2>(PX(orbiSampleUpRowH2V2_Triangle_JPEG_8u_C1),
                                ORB(orbiSampleUpRowH2V2_Triangle_JPEG_8u_C1), random);
}

// ---- All of them: what is flat stays flat.

void expectFlatPlane(PlaneFunction* function) {
  for (int value = 0; value < 256; ++value) {
    Source src(80, 4);
    src.plane().fill([&] { return static_cast<Orb8u>(value); });
    Plane<Orb8u> dst(40, 2);
    ASSERT_EQ(function(src.data(), src.step(), {80, 4}, dst.data(), dst.step(), dst.size()),
              orbStsNoErr);
    ASSERT_EQ(dst.samples(), std::vector<Orb8u>(80, static_cast<Orb8u>(value)));
  }
}
ORB_MEANING(orbiSampleDownH2V1_JPEG_8u_C1R, FlatStaysFlat) {
  expectFlatPlane(ORB(orbiSampleDownH2V1_JPEG_8u_C1R));
}
ORB_MEANING(orbiSampleDownH2V2_JPEG_8u_C1R, FlatStaysFlat) {
  expectFlatPlane(ORB(orbiSampleDownH2V2_JPEG_8u_C1R));
}
ORB_MEANING(orbiSampleUpH2V1_JPEG_8u_C1R, FlatStaysFlat) {
  expectFlatPlane(ORB(orbiSampleUpH2V1_JPEG_8u_C1R));
}
ORB_MEANING(orbiSampleUpH2V2_JPEG_8u_C1R, FlatStaysFlat) {
  expectFlatPlane(ORB(orbiSampleUpH2V2_JPEG_8u_C1R));
}

template <class Form, class Function>
void expectFlatRow(Function* function) {
  for (int value = 0; value < 256; ++value) {
    const std::vector<Orb8u> row(40, static_cast<Orb8u>(value));
    std::vector<Orb8u> dst(static_cast<size_t>(Form::outputs(40)));
    ASSERT_EQ(call(function, row.data(), row.data(), 40, dst.data()), orbStsNoErr);
    ASSERT_EQ(dst, std::vector<Orb8u>(dst.size(), static_cast<Orb8u>(value)));
  }
}
ORB_MEANING(orbiSampleDownRowH2V1_Box_JPEG_8u_C1, FlatStaysFlat) {
  expectFlatRow<BoxH2V1>(ORB(orbiSampleDownRowH2V1_Box_JPEG_8u_C1));
}
ORB_MEANING(orbiSampleDownRowH2V2_Box_JPEG_8u_C1, FlatStaysFlat) {
  expectFlatRow<BoxH2V2>(ORB(orbiSampleDownRowH2V2_Box_JPEG_8u_C1));
}
ORB_MEANING(orbiSampleUpRowH2V1_Triangle_JPEG_8u_C1, FlatStaysFlat) {
  expectFlatRow<TriangleH2V1>(ORB(orbiSampleUpRowH2V1_Triangle_JPEG_8u_C1));
}
ORB_MEANING(orbiSampleUpRowH2V2_Triangle_JPEG_8u_C1, FlatStaysFlat) {
  expectFlatRow<TriangleH2V2>(ORB(orbiSampleUpRowH2V2_Triangle_JPEG_8u_C1));
}

}  // namespace
