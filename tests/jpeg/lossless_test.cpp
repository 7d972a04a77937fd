// Lossless prediction (ITU-T T.81 H.1.2.1).
#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "tests/support/builds.h"
#include "tests/support/faults.h"
#include "tests/support/guarded.h"
#include "tests/support/plane.h"

namespace {

using orbtest::expectChecks;
using orbtest::Guard;
using orbtest::GuardedBytes;
using orbtest::makeRow;
using orbtest::Placement;
using orbtest::Plane;
using orbtest::Random;

using Row = std::vector<Orb16s>;
using FirstRowFunction = decltype(legacy90orbiDiffPredFirstRow_JPEG_16s_C1);
using RowFunction = decltype(legacy90orbiDiffPredRow_JPEG_16s_C1);

constexpr int kLeast = std::numeric_limits<Orb32s>::min();
constexpr int kMost = std::numeric_limits<Orb32s>::max();

// ---- The equations

// Modulo 65536, as a signed value.
Orb16s wrapped(int64_t value) {
  const int64_t low = ((value % 65536) + 65536) % 65536;
  return static_cast<Orb16s>(low < 32768 ? low : low - 65536);
}
// Half of it, down to a whole number.
int64_t half(int64_t value) {
  return (value - (value % 2 != 0 ? 1 : 0)) / 2;
}

// T.81 table H.1, in its own names.
int64_t predictionH1(int selection, int64_t ra, int64_t rb, int64_t rc) {
  const int64_t all[] = {
      0, ra, rb, rc, ra + rb - rc, ra + half(rb - rc), rb + half(ra - rc), half(ra + rb)};
  return all[selection];
}

// What sample `i` is predicted to be, by samples in front of it and those of the row above.
int64_t prediction(const Row& row, const Row& above, size_t i, int selection) {
  return i == 0 ? above[0] : predictionH1(selection, row[i - 1], above[i], above[i - 1]);
}

Row differences(const Row& samples, const Row& above, int selection) {
  Row result;
  for (size_t i = 0; i < samples.size(); ++i) {
    result.push_back(wrapped(samples[i] - prediction(samples, above, i, selection)));
  }
  return result;
}

// A first row is like a row by predictor 1 with the middle of the range above its first sample.
Row aboveFirstRow(size_t width, int P, int Pt) {
  // The shift's count modulo 32, and the shift as doublings.
  const int64_t count = ((int64_t{P} - Pt - 1) % 32 + 32) % 32;
  int64_t middle = 1;
  for (int64_t i = 0; i < count; ++i) middle *= 2;
  Row row(width);
  row[0] = wrapped(middle);
  return row;
}
Row firstDifferences(const Row& samples, int P, int Pt) {
  return differences(samples, aboveFirstRow(samples.size(), P, Pt), 1);
}

// ---- Rows

Row randomRow(Random& random, int width) {
  const bool extreme = random.oneIn(3);
  const int bits = random.between(1, 16);
  Row row(static_cast<size_t>(width));
  for (Orb16s& value : row) {
    const int sample = extreme ? random.extreme<Orb16s>() : random.any<Orb16s>();
    value = static_cast<Orb16s>(extreme ? sample : sample >> (16 - bits));
  }
  return row;
}

Plane<Orb16s> placed(const Row& row, Placement at) {
  Plane<Orb16s> plane = makeRow<Orb16s>(static_cast<int>(row.size()), at);
  for (size_t i = 0; i < row.size(); ++i) plane.set(static_cast<int>(i), 0, row[i]);
  return plane;
}

// All around vectors of any width.
const std::vector<int>& widths() {
  static const std::vector<int> all = [] {
    std::vector<int> some = {63, 64, 65, 100, 127, 128, 129, 1000};
    for (int width = 1; width <= 50; ++width) some.push_back(width);
    return some;
  }();
  return all;
}

void expectFirstRow(FirstRowFunction* function, const Row& from, const Row& to, int P, int Pt,
                    Random& random) {
  Plane<Orb16s> src = placed(from, Placement::any(random));
  Plane<Orb16s> dst = makeRow<Orb16s>(src.width(), Placement::any(random));
  ASSERT_EQ(function(src.data(), dst.data(), src.width(), P, Pt), orbStsNoErr);
  ASSERT_EQ(dst.samples(), to) << "width " << src.width() << ", P " << P << ", Pt " << Pt;
  dst.expectOutsideUntouched();
  src.expectUntouched();
}

void expectRow(RowFunction* function, const Row& from, const Row& above, const Row& to,
               int predictor, Random& random) {
  Plane<Orb16s> src = placed(from, Placement::any(random));
  Plane<Orb16s> prev = placed(above, Placement::any(random));
  Plane<Orb16s> dst = makeRow<Orb16s>(src.width(), Placement::any(random));
  ASSERT_EQ(function(src.data(), prev.data(), dst.data(), src.width(), predictor), orbStsNoErr);
  ASSERT_EQ(dst.samples(), to) << "width " << src.width() << ", predictor " << predictor;
  dst.expectOutsideUntouched();
  src.expectUntouched();
  prev.expectUntouched();
}

// ---- Checks

void expectFirstRowChecks(FirstRowFunction* function) {
  struct Call {
    const Orb16s* src;
    Orb16s* dst;
    Orb32s width = 4, P = 8, Pt = 0;
  };
  Plane<Orb16s> src = makeRow<Orb16s>(4), dst = makeRow<Orb16s>(4);
  expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.src = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.dst = nullptr; }},
                      {orbStsSizeErr, [](Call& c) { c.width = 0; }},
                      {orbStsSizeErr, [](Call& c) { c.width = -1; }},
                      {orbStsSizeErr, [](Call& c) { c.width = kLeast; }},
                      {orbStsBadArgErr, [](Call& c) { c.P = 1; }},
                      {orbStsBadArgErr, [](Call& c) { c.P = 17; }},
                      {orbStsBadArgErr, [](Call& c) { c.P = kLeast; }},
                      {orbStsBadArgErr, [](Call& c) { c.P = kMost; }},
                      {orbStsBadArgErr, [](Call& c) { c.Pt = -1; }},
                      {orbStsBadArgErr, [](Call& c) { c.Pt = kLeast; }}},
                     {src.data(), dst.data()},
                     [&](const Call& c) { return function(c.src, c.dst, c.width, c.P, c.Pt); });
  dst.expectUntouched();
  EXPECT_EQ(function(src.data(), dst.data(), 4, 2, 0), orbStsNoErr);
  EXPECT_EQ(function(src.data(), dst.data(), 4, 16, kMost), orbStsNoErr);
}

void expectRowChecks(RowFunction* function) {
  struct Call {
    const Orb16s *src, *prev;
    Orb16s* dst;
    Orb32s width = 4, predictor = 1;
  };
  Plane<Orb16s> src = makeRow<Orb16s>(4), prev = makeRow<Orb16s>(4), dst = makeRow<Orb16s>(4);
  expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.src = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.prev = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.dst = nullptr; }},
                      {orbStsSizeErr, [](Call& c) { c.width = 0; }},
                      {orbStsSizeErr, [](Call& c) { c.width = kLeast; }},
                      {orbStsBadArgErr, [](Call& c) { c.predictor = 0; }},
                      {orbStsBadArgErr, [](Call& c) { c.predictor = 8; }},
                      {orbStsBadArgErr, [](Call& c) { c.predictor = kLeast; }},
                      {orbStsBadArgErr, [](Call& c) { c.predictor = kMost; }}},
                     {src.data(), prev.data(), dst.data()}, [&](const Call& c) {
                       return function(c.src, c.prev, c.dst, c.width, c.predictor);
                     });
  dst.expectUntouched();
}

// Nothing is read or written in front of the first sample or behind the last.
template <class Run>
void onGuardedRows(Run run) {
  for (const Guard guard : {Guard::kBefore, Guard::kBehind}) {
    for (int width = 1; width <= 70; ++width) {
      const size_t size = static_cast<size_t>(width) * sizeof(Orb16s);
      GuardedBytes src(size, guard), prev(size, guard), dst(size, guard);
      const auto row = [](GuardedBytes& bytes) { return reinterpret_cast<Orb16s*>(bytes.data()); };
      ASSERT_EQ(run(row(src), row(prev), row(dst), width), orbStsNoErr);
    }
  }
}

// ---- orbiDiffPredFirstRow_JPEG_16s_C1

ORB_MEANING(orbiDiffPredFirstRow_JPEG_16s_C1, ChecksInOrder) {
  expectFirstRowChecks(ORB(orbiDiffPredFirstRow_JPEG_16s_C1));
}

ORB_MEANING(orbiDiffPredFirstRow_JPEG_16s_C1, KnownValues) {
  const auto first = [&](Orb16s sample, int P, int Pt) {
    Orb16s difference = 0;
    EXPECT_EQ(ORB(orbiDiffPredFirstRow_JPEG_16s_C1)(&sample, &difference, 1, P, Pt), orbStsNoErr);
    return difference;
  };
  EXPECT_EQ(first(200, 8, 0), 72);
  EXPECT_EQ(first(0, 8, 0), -128);
  EXPECT_EQ(first(5, 8, 3), -11);
  EXPECT_EQ(first(0, 2, 0), -2);
  // 32768 both ways is the same.
  EXPECT_EQ(first(0, 16, 0), -32768);
  EXPECT_EQ(first(-1, 16, 0), 32767);
  // Counts of 0, -1 and -2: 1, and what 16 bits do not hold.
  EXPECT_EQ(first(7, 8, 7), 6);
  EXPECT_EQ(first(7, 8, 8), 7);
  EXPECT_EQ(first(7, 8, 9), 7);
  // A count of -20 is one of 12.
  EXPECT_EQ(first(0, 2, 21), -4096);
  Random random("known row");
  expectFirstRow(ORB(orbiDiffPredFirstRow_JPEG_16s_C1), {130, 128, 255, -32768, 32767},
                 {2, -2, 127, 32513, -1}, 8, 0, random);
}

ORB_MEANING(orbiDiffPredFirstRow_JPEG_16s_C1, EveryPrecisionAndPointTransform) {
  Random random("precisions");
  for (int P = 2; P <= 16; ++P) {
    for (int Pt : {0, 1, 2, 7, 15, 16, 17, 20, 31, 32, 33, 47, 48, 49, 63, 64, kMost - 1, kMost}) {
      const Row samples = randomRow(random, 3);
      expectFirstRow(ORB(orbiDiffPredFirstRow_JPEG_16s_C1), samples,
                     firstDifferences(samples, P, Pt), P, Pt, random);
    }
  }
}

ORB_MEANING(orbiDiffPredFirstRow_JPEG_16s_C1, AnyRow) {
  Random random("first rows");
  for (const int width : widths()) {
    for (int round = 0; round < 5; ++round) {
      const Row samples = randomRow(random, width);
      expectFirstRow(ORB(orbiDiffPredFirstRow_JPEG_16s_C1), samples,
                     firstDifferences(samples, 12, 2), 12, 2, random);
    }
  }
}

ORB_MEANING(orbiDiffPredFirstRow_JPEG_16s_C1, StaysWithinItsRows) {
  onGuardedRows([&](Orb16s* src, Orb16s*, Orb16s* dst, int width) {
    return ORB(orbiDiffPredFirstRow_JPEG_16s_C1)(src, dst, width, 8, 0);
  });
}

// ---- orbiDiffPredRow_JPEG_16s_C1

ORB_MEANING(orbiDiffPredRow_JPEG_16s_C1, ChecksInOrder) {
  expectRowChecks(ORB(orbiDiffPredRow_JPEG_16s_C1));
}

ORB_MEANING(orbiDiffPredRow_JPEG_16s_C1, KnownValues) {
  Random random("known row");
  const Row above = {10, 17}, samples = {12, 20};
  const Row expected[] = {{}, {2, 8}, {2, 3}, {2, 10}, {2, 1}, {2, 5}, {2, 2}, {2, 6}};
  for (int predictor = 1; predictor <= 7; ++predictor) {
    expectRow(ORB(orbiDiffPredRow_JPEG_16s_C1), samples, above, expected[predictor], predictor,
              random);
  }
  // Halves are rounded down, and nothing is cut to 16 bits before it is halved.
  const auto second = [&](Orb16s left, Orb16s above0, Orb16s above1, int predictor) {
    const Orb16s src[2] = {left, 0}, prev[2] = {above0, above1};
    Orb16s dst[2] = {};
    EXPECT_EQ(ORB(orbiDiffPredRow_JPEG_16s_C1)(src, prev, dst, 2, predictor), orbStsNoErr);
    return dst[1];
  };
  EXPECT_EQ(second(0, 3, 0, 5), 2);
  EXPECT_EQ(second(0, 3, 0, 6), 2);
  EXPECT_EQ(second(-3, 0, 0, 7), 2);
  EXPECT_EQ(second(0, -32768, 32767, 5), -32767);
  EXPECT_EQ(second(0, 32767, -32768, 5), -32768);
  EXPECT_EQ(second(32767, -32768, 0, 6), -32767);
  EXPECT_EQ(second(32767, 0, 32767, 7), -32767);
  EXPECT_EQ(second(-32768, 0, -32768, 7), -32768);
}

ORB_MEANING(orbiDiffPredRow_JPEG_16s_C1, AnyRowByEveryPredictor) {
  Random random("rows");
  for (int predictor = 1; predictor <= 7; ++predictor) {
    for (const int width : widths()) {
      for (int round = 0; round < 3; ++round) {
        const Row samples = randomRow(random, width), above = randomRow(random, width);
        expectRow(ORB(orbiDiffPredRow_JPEG_16s_C1), samples, above,
                  differences(samples, above, predictor), predictor, random);
      }
    }
  }
}

ORB_MEANING(orbiDiffPredRow_JPEG_16s_C1, StaysWithinItsRows) {
  for (int predictor = 1; predictor <= 7; ++predictor) {
    onGuardedRows([&](Orb16s* src, Orb16s* prev, Orb16s* dst, int width) {
      return ORB(orbiDiffPredRow_JPEG_16s_C1)(src, prev, dst, width, predictor);
    });
  }
}

// ---- orbiReconstructPredFirstRow_JPEG_16s_C1

ORB_MEANING(orbiReconstructPredFirstRow_JPEG_16s_C1, ChecksInOrder) {
  expectFirstRowChecks(ORB(orbiReconstructPredFirstRow_JPEG_16s_C1));
}

ORB_MEANING(orbiReconstructPredFirstRow_JPEG_16s_C1, KnownValues) {
  Random random("known row");
  expectFirstRow(ORB(orbiReconstructPredFirstRow_JPEG_16s_C1), {2, -2, 127, 32513, -1},
                 {130, 128, 255, -32768, 32767}, 8, 0, random);
}

// From what the equations say that the differences are.
ORB_MEANING(orbiReconstructPredFirstRow_JPEG_16s_C1, EveryPrecisionAndPointTransform) {
  Random random("precisions back");
  for (int P = 2; P <= 16; ++P) {
    for (int Pt : {0, 1, 2, 7, 15, 16, 17, 20, 31, 32, 33, 47, 48, 49, 63, 64, kMost - 1, kMost}) {
      const Row samples = randomRow(random, 3);
      expectFirstRow(ORB(orbiReconstructPredFirstRow_JPEG_16s_C1), firstDifferences(samples, P, Pt),
                     samples, P, Pt, random);
    }
  }
}

ORB_MEANING(orbiReconstructPredFirstRow_JPEG_16s_C1, AnyRow) {
  Random random("first rows back");
  for (const int width : widths()) {
    for (int round = 0; round < 5; ++round) {
      const Row samples = randomRow(random, width);
      expectFirstRow(ORB(orbiReconstructPredFirstRow_JPEG_16s_C1), firstDifferences(samples, 12, 2),
                     samples, 12, 2, random);
    }
  }
}

ORB_MEANING(orbiReconstructPredFirstRow_JPEG_16s_C1, InPlace) {
  Random random("first rows in place");
  for (const int width : widths()) {
    const Row samples = randomRow(random, width);
    Plane<Orb16s> row = placed(firstDifferences(samples, 8, 0), Placement::any(random));
    ASSERT_EQ(
        ORB(orbiReconstructPredFirstRow_JPEG_16s_C1)(row.data(), row.data(), row.width(), 8, 0),
        orbStsNoErr);
    ASSERT_EQ(row.samples(), samples);
    row.expectOutsideUntouched();
  }
}

ORB_MEANING(orbiReconstructPredFirstRow_JPEG_16s_C1, StaysWithinItsRows) {
  onGuardedRows([&](Orb16s* src, Orb16s*, Orb16s* dst, int width) {
    return ORB(orbiReconstructPredFirstRow_JPEG_16s_C1)(src, dst, width, 8, 0);
  });
}

// ---- orbiReconstructPredRow_JPEG_16s_C1

ORB_MEANING(orbiReconstructPredRow_JPEG_16s_C1, ChecksInOrder) {
  expectRowChecks(ORB(orbiReconstructPredRow_JPEG_16s_C1));
}

ORB_MEANING(orbiReconstructPredRow_JPEG_16s_C1, KnownValues) {
  Random random("known row");
  const Row above = {10, 17}, samples = {12, 20};
  const Row from[] = {{}, {2, 8}, {2, 3}, {2, 10}, {2, 1}, {2, 5}, {2, 2}, {2, 6}};
  for (int predictor = 1; predictor <= 7; ++predictor) {
    expectRow(ORB(orbiReconstructPredRow_JPEG_16s_C1), from[predictor], above, samples, predictor,
              random);
  }
}

ORB_MEANING(orbiReconstructPredRow_JPEG_16s_C1, AnyRowByEveryPredictor) {
  Random random("rows back");
  for (int predictor = 1; predictor <= 7; ++predictor) {
    for (const int width : widths()) {
      for (int round = 0; round < 3; ++round) {
        const Row samples = randomRow(random, width), above = randomRow(random, width);
        expectRow(ORB(orbiReconstructPredRow_JPEG_16s_C1), differences(samples, above, predictor),
                  above, samples, predictor, random);
      }
    }
  }
}

ORB_MEANING(orbiReconstructPredRow_JPEG_16s_C1, InPlace) {
  Random random("rows in place");
  for (int predictor = 1; predictor <= 7; ++predictor) {
    for (const int width : widths()) {
      const Row samples = randomRow(random, width), above = randomRow(random, width);
      Plane<Orb16s> prev = placed(above, Placement::any(random));
      Plane<Orb16s> row = placed(differences(samples, above, predictor), Placement::any(random));
      ASSERT_EQ(ORB(orbiReconstructPredRow_JPEG_16s_C1)(row.data(), prev.data(), row.data(),
                                                        row.width(), predictor),
                orbStsNoErr);
      ASSERT_EQ(row.samples(), samples) << "predictor " << predictor;
      row.expectOutsideUntouched();
    }
  }
}

ORB_MEANING(orbiReconstructPredRow_JPEG_16s_C1, StaysWithinItsRows) {
  for (int predictor = 1; predictor <= 7; ++predictor) {
    onGuardedRows([&](Orb16s* src, Orb16s* prev, Orb16s* dst, int width) {
      return ORB(orbiReconstructPredRow_JPEG_16s_C1)(src, prev, dst, width, predictor);
    });
  }
}

// ---- Agreement

void expectFirstRowAgreement(FirstRowFunction* px, FirstRowFunction* build, Random& random) {
  for (int round = 0; round < 300; ++round) {
    const int width = random.between(1, 150), P = random.between(2, 16), Pt = random.between(0, 70);
    Plane<Orb16s> src = placed(randomRow(random, width), Placement::any(random));
    const Placement at = Placement::any(random);
    Plane<Orb16s> expected = makeRow<Orb16s>(width, at), actual = makeRow<Orb16s>(width, at);
    ASSERT_EQ(px(src.data(), expected.data(), width, P, Pt), orbStsNoErr);
    ASSERT_EQ(build(src.data(), actual.data(), width, P, Pt), orbStsNoErr);
    ASSERT_TRUE(actual.sameBytes(expected)) << "width " << width;
  }
}

void expectRowAgreement(RowFunction* px, RowFunction* build, Random& random) {
  for (int round = 0; round < 1000; ++round) {
    const int width = random.between(1, 150), predictor = random.between(1, 7);
    Plane<Orb16s> src = placed(randomRow(random, width), Placement::any(random));
    Plane<Orb16s> prev = placed(randomRow(random, width), Placement::any(random));
    const Placement at = Placement::any(random);
    Plane<Orb16s> expected = makeRow<Orb16s>(width, at), actual = makeRow<Orb16s>(width, at);
    ASSERT_EQ(px(src.data(), prev.data(), expected.data(), width, predictor), orbStsNoErr);
    ASSERT_EQ(build(src.data(), prev.data(), actual.data(), width, predictor), orbStsNoErr);
    ASSERT_TRUE(actual.sameBytes(expected)) << "width " << width << ", predictor " << predictor;
  }
}

ORB_AGREEMENT(orbiDiffPredFirstRow_JPEG_16s_C1) {
  expectFirstRowAgreement(PX(orbiDiffPredFirstRow_JPEG_16s_C1),
                          ORB(orbiDiffPredFirstRow_JPEG_16s_C1), random);
}
ORB_AGREEMENT(orbiDiffPredRow_JPEG_16s_C1) {
  expectRowAgreement(PX(orbiDiffPredRow_JPEG_16s_C1), ORB(orbiDiffPredRow_JPEG_16s_C1), random);
}
ORB_AGREEMENT(orbiReconstructPredFirstRow_JPEG_16s_C1) {
  expectFirstRowAgreement(PX(orbiReconstructPredFirstRow_JPEG_16s_C1),
                          ORB(orbiReconstructPredFirstRow_JPEG_16s_C1), random);
}
ORB_AGREEMENT(orbiReconstructPredRow_JPEG_16s_C1) {
  expectRowAgreement(PX(orbiReconstructPredRow_JPEG_16s_C1),
                     ORB(orbiReconstructPredRow_JPEG_16s_C1), random);
}

}  // namespace
