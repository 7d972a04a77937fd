// DCT with quantisation (ITU-T T.81 A.3.1, A.3.3, A.3.4).
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
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

template <class T>
using Block = std::array<T, 64>;

// ---- The transforms of A.3.3 in double precision

double basis(int frequency, int position) {
  const double scale = frequency == 0 ? std::sqrt(0.125) : 0.5;
  return scale * std::cos((2 * position + 1) * frequency * M_PI / 16);
}

// Row n holds the basis function of frequency n.
const Block<double>& basisMatrix() {
  static const Block<double> matrix = [] {
    Block<double> made;
    for (int i = 0; i < 64; ++i) made[i] = basis(i / 8, i % 8);
    return made;
  }();
  return matrix;
}

Block<double> transposed(const Block<double>& m) {
  Block<double> result;
  for (int i = 0; i < 64; ++i) result[i] = m[i % 8 * 8 + i / 8];
  return result;
}

Block<double> product(const Block<double>& a, const Block<double>& b) {
  Block<double> result = {};
  for (int y = 0; y < 8; ++y) {
    for (int k = 0; k < 8; ++k) {
      for (int x = 0; x < 8; ++x) result[8 * y + x] += a[8 * y + k] * b[8 * k + x];
    }
  }
  return result;
}

Block<double> exactForward(const Block<double>& samples) {
  const Block<double>& c = basisMatrix();
  return product(product(c, samples), transposed(c));
}

Block<double> exactInverse(const Block<double>& coefficients) {
  const Block<double>& c = basisMatrix();
  return product(product(transposed(c), coefficients), c);
}

// ---- The transforms in integers, worked with sums of 64 bits that are cut where a register of 32
// bits would cut them, and rotations instead of the three products that share one

int64_t cut32(int64_t value) {
  return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(value)));
}
int64_t cut16(int64_t value) {
  return static_cast<int16_t>(static_cast<uint16_t>(static_cast<uint64_t>(value)));
}
// A sum in 32 bits to nearest after `dropped` bits, halves up.
int64_t rounded(int64_t sum, int dropped) {
  const int64_t value = cut32(sum + (int64_t{1} << (dropped - 1)));
  const int64_t unit = int64_t{1} << dropped;
  return value >= 0 ? value / unit : -((unit - 1 - value) / unit);
}

enum class Pass { kFirst, kSecond };
int dropped(Pass pass) {
  return pass == Pass::kFirst ? 12 : 21;
}

using Line = std::array<int64_t, 8>;
using Transform = Line(const Line& x, Pass pass);

Line forwardLine(const Line& x, Pass pass) {
  const int n = dropped(pass);
  const int64_t dc = x[0] + x[1] + x[2] + x[3] + x[4] + x[5] + x[6] + x[7];
  const int64_t fourth = x[0] - x[1] - x[2] + x[3] + x[4] - x[5] - x[6] + x[7];
  const int64_t b = x[0] - x[3] - x[4] + x[7];
  const int64_t d = x[1] - x[2] - x[5] + x[6];
  const int64_t p = rounded(cut32((x[3] - x[4]) * 46341), 12);
  const int64_t q = rounded(cut32((x[0] - x[7]) * 46341), 12);
  const int64_t r = 8 * x[1] - 8 * x[2] + 8 * x[5] - 8 * x[6];
  const int64_t u = 8 * x[1] + 8 * x[2] - 8 * x[5] - 8 * x[6];
  Line o;
  o[0] = pass == Pass::kFirst ? 8 * dc : rounded(dc, 6);
  o[4] = pass == Pass::kFirst ? 8 * fourth : rounded(fourth, 6);
  o[2] = rounded(b * 42814 + d * 17734, n);
  o[6] = rounded(b * 17734 - d * 42813, n);
  o[1] = rounded((q + u) * 4017 + (p + r) * 799, n);
  o[7] = rounded((q + u) * 799 - (p + r) * 4017, n);
  o[3] = rounded((q - u) * 3406 - (p - r) * 2275, n);
  o[5] = rounded((q - u) * 2276 + (p - r) * 3406, n);
  return o;
}

Line inverseLine(const Line& x, Pass pass) {
  const int n = dropped(pass);
  const int64_t a = x[3] * 27246 + x[5] * 18205;
  const int64_t b = x[5] * 27246 - x[3] * 18205;
  const int64_t c = x[1] * 32139 + x[7] * 6393;
  const int64_t d = x[1] * 6393 - x[7] * 32138;
  const int64_t even0 = x[0] * 32768 + x[4] * 32768 + x[2] * 42814 + x[6] * 17734;
  const int64_t even1 = x[0] * 32768 - x[4] * 32768 + x[2] * 17734 - x[6] * 42813;
  const int64_t even2 = x[0] * 32768 - x[4] * 32768 - x[2] * 17734 + x[6] * 42813;
  const int64_t even3 = x[0] * 32768 + x[4] * 32768 - x[2] * 42814 - x[6] * 17734;
  const int64_t odd0 = rounded(a + c, 12) * 5793;
  const int64_t odd1 = c - a + d - b;
  const int64_t odd2 = c - a - d + b;
  const int64_t odd3 = rounded(b + d, 12) * 5793;
  return {rounded(even0 + odd0, n), rounded(even1 + odd1, n), rounded(even2 + odd2, n),
          rounded(even3 + odd3, n), rounded(even3 - odd3, n), rounded(even2 - odd2, n),
          rounded(even1 - odd1, n), rounded(even0 - odd0, n)};
}

Line inverseLineFrom2(const Line& x, Pass pass) {
  const int64_t a = x[0] * 32768;
  const int64_t odd[4] = {rounded(x[1] * 32138, 12) * 5793, x[1] * 38531, x[1] * 25745,
                          rounded(x[1] * 6393, 12) * 5793};
  Line o;
  for (int i = 0; i < 4; ++i) {
    o[i] = rounded(a + odd[i], dropped(pass));
    o[7 - i] = rounded(a - odd[i], dropped(pass));
  }
  return o;
}

Line inverseLineFrom4(const Line& x, Pass pass) {
  const int64_t even[4] = {x[0] * 32768 + x[2] * 42813, x[0] * 32768 + x[2] * 17734,
                           x[0] * 32768 - x[2] * 17734, x[0] * 32768 - x[2] * 42813};
  const int64_t odd[4] = {rounded(x[1] * 32138 + x[3] * 27246, 12) * 5793,
                          x[1] * 38531 - x[3] * 9041, x[1] * 25745 - x[3] * 45451,
                          rounded(x[1] * 6393 - x[3] * 18205, 12) * 5793};
  Line o;
  for (int i = 0; i < 4; ++i) {
    o[i] = rounded(even[i] + odd[i], dropped(pass));
    o[7 - i] = rounded(even[i] - odd[i], dropped(pass));
  }
  return o;
}

Line inverseLineTo2(const Line& x, Pass pass) {
  const int64_t odd = x[1] * 59384 - x[3] * 20853 + x[5] * 13932 - x[7] * 11812;
  return {rounded(x[0] * 65536 + odd, dropped(pass) + 1),
          rounded(x[0] * 65536 - odd, dropped(pass) + 1)};
}

Line inverseLineTo4(const Line& x, Pass pass) {
  const int64_t even = x[2] * 30274 - x[6] * 12540;
  const int64_t outer = x[1] * 41991 + x[3] * 14745 - x[5] * 9852 - x[7] * 8352;
  const int64_t inner = x[1] * 17393 - x[3] * 35598 + x[5] * 23786 - x[7] * 3460;
  const int64_t dc = x[0] * 32768;
  const int n = dropped(pass);
  return {rounded(dc + even + outer, n), rounded(dc - even + inner, n),
          rounded(dc - even - inner, n), rounded(dc + even - outer, n)};
}

// One pass over the rows or the columns of a block; every result is cut to 16 bits.
Block<int> pass(const Block<int>& in, Transform* transform, Pass which, bool columns) {
  const int along = columns ? 8 : 1, across = columns ? 1 : 8;
  Block<int> out = {};
  for (int line = 0; line < 8; ++line) {
    Line x;
    for (int k = 0; k < 8; ++k) x[k] = in[line * across + k * along];
    const Line o = transform(x, which);
    for (int k = 0; k < 8; ++k) out[line * across + k * along] = static_cast<int>(cut16(o[k]));
  }
  return out;
}

Block<int> modelForward(const Block<int>& samples) {
  const Block<int> rows = pass(samples, forwardLine, Pass::kFirst, false);
  return pass(rows, forwardLine, Pass::kSecond, true);
}

Block<int> modelInverse(const Block<int>& coefficients, Transform* transform) {
  const Block<int> columns = pass(coefficients, transform, Pass::kFirst, true);
  return pass(columns, transform, Pass::kSecond, false);
}

// value * entry / 32768 to nearest, ties to even, limited.
int quantised(int value, int entry) {
  const double exact = static_cast<double>(value) * entry / 32768.0;  // without error
  return static_cast<int>(std::clamp(std::nearbyint(exact), -32768.0, 32767.0));
}
int dequantised(int value, int entry) {
  return std::clamp(value * static_cast<int16_t>(entry), -32768, 32767);
}

Block<int> modelDequantised(const Plane<Orb16s>& block, const Plane<Orb16u>& table) {
  Block<int> result;
  for (int i = 0; i < 64; ++i) result[i] = dequantised(block.at(i), table.at(i));
  return result;
}

int sample(int value) {
  return std::clamp(value + 128, 0, 255);
}

// ---- Test data

template <class T, class Value>
Plane<T> blockOf(Value value, Placement at = {}) {
  Plane<T> block(64, 1, at);
  for (int i = 0; i < 64; ++i) block.set(i, 0, static_cast<T>(value(i)));
  return block;
}
template <class T>
Plane<T> flat(T value) {
  return blockOf<T>([=](int) { return value; });
}

// Sets the samples of a region, or the values of a block, to one of several kinds of data: the
// whole range, its ends, or what a picture could hold.
template <class T>
void fillAnyKind(Plane<T>& plane, Random& random, int ordinaryLow, int ordinaryHigh) {
  switch (random.between(0, 2)) {
    case 0:
      return plane.fillAny(random);
    case 1:
      return plane.fillExtreme(random);
    default:
      return plane.fill([&] { return static_cast<T>(random.between(ordinaryLow, ordinaryHigh)); });
  }
}

// The coefficients that samples of a picture could have had: of random samples in low..high.
Block<int> ordinaryCoefficients(Random& random, int low, int high) {
  Block<double> samples;
  for (double& s : samples) s = random.between(low, high);
  const Block<double> exact = exactForward(samples);
  Block<int> result;
  for (int i = 0; i < 64; ++i) result[i] = static_cast<int>(std::lround(exact[i]));
  return result;
}

constexpr Orb16u kNoQuantisation = 32768;  // the reciprocal of 1

// ---- Argument checks, in their order

template <class Function, class Src, class Dst, class Entry>
void expectBlockChecks(Function* function, Src, Dst, Entry) {
  Plane<Src> src = flat(Src{1});
  Plane<Dst> dst(64, 1);
  Plane<Entry> table = flat(Entry{1});
  EXPECT_EQ(function(nullptr, nullptr, nullptr), orbStsNullPtrErr);
  EXPECT_EQ(function(nullptr, dst.data(), table.data()), orbStsNullPtrErr);
  EXPECT_EQ(function(src.data(), nullptr, table.data()), orbStsNullPtrErr);
  EXPECT_EQ(function(src.data(), dst.data(), nullptr), orbStsNullPtrErr);
  dst.expectUntouched();
  EXPECT_EQ(function(src.data(), dst.data(), table.data()), orbStsNoErr);
  src.expectUntouched();
  table.expectUntouched();
}
ORB_MEANING(orbiDCTQuantFwd8x8_JPEG_16s_C1, Checks) {
  expectBlockChecks(ORB(orbiDCTQuantFwd8x8_JPEG_16s_C1), Orb16s{}, Orb16s{}, Orb16u{});
}
ORB_MEANING(orbiDCTQuantInv8x8_JPEG_16s_C1, Checks) {
  expectBlockChecks(ORB(orbiDCTQuantInv8x8_JPEG_16s_C1), Orb16s{}, Orb16s{}, Orb16u{});
}

template <class Function>
void expectInPlaceChecks(Function* function) {
  Plane<Orb16s> block(64, 1);
  Plane<Orb16u> table = flat(Orb16u{1});
  EXPECT_EQ(function(nullptr, nullptr), orbStsNullPtrErr);
  EXPECT_EQ(function(nullptr, table.data()), orbStsNullPtrErr);
  EXPECT_EQ(function(block.data(), nullptr), orbStsNullPtrErr);
  block.expectUntouched();
  EXPECT_EQ(function(block.data(), table.data()), orbStsNoErr);
  table.expectUntouched();
}
ORB_MEANING(orbiDCTQuantFwd8x8_JPEG_16s_C1I, Checks) {
  expectInPlaceChecks(ORB(orbiDCTQuantFwd8x8_JPEG_16s_C1I));
}
ORB_MEANING(orbiDCTQuantInv8x8_JPEG_16s_C1I, Checks) {
  expectInPlaceChecks(ORB(orbiDCTQuantInv8x8_JPEG_16s_C1I));
}

template <class Function, class Sample, class Entry>
void expectForwardChecks(Function* function, Sample, Entry) {
  Plane<Sample> src(8, 8);
  Plane<Orb16s> dst(64, 1);
  Plane<Entry> table = flat(Entry{1});
  EXPECT_EQ(function(nullptr, 0, dst.data(), nullptr), orbStsNullPtrErr);
  EXPECT_EQ(function(src.data(), 0, nullptr, nullptr), orbStsNullPtrErr);
  EXPECT_EQ(function(src.data(), 0, dst.data(), nullptr), orbStsStepErr);
  EXPECT_EQ(function(src.data(), -16, dst.data(), nullptr), orbStsStepErr);
  EXPECT_EQ(function(src.data(), std::numeric_limits<Orb32s>::min(), dst.data(), table.data()),
            orbStsStepErr);
  EXPECT_EQ(function(src.data(), src.step(), dst.data(), nullptr), orbStsNullPtrErr);
  dst.expectUntouched();
  EXPECT_EQ(function(src.data(), src.step(), dst.data(), table.data()), orbStsNoErr);
  EXPECT_EQ(function(src.data(), 1, dst.data(), table.data()), orbStsNoErr);
  src.expectUntouched();
  table.expectUntouched();
}
ORB_MEANING(orbiDCTQuantFwd8x8LS_JPEG_8u16s_C1R, ChecksInOrder) {
  expectForwardChecks(ORB(orbiDCTQuantFwd8x8LS_JPEG_8u16s_C1R), Orb8u{}, Orb16u{});
}
ORB_MEANING(orbiDCTQuantFwd8x8LS_JPEG_16u16s_C1R, ChecksInOrder) {
  expectForwardChecks(ORB(orbiDCTQuantFwd8x8LS_JPEG_16u16s_C1R), Orb16u{}, Orb32f{});
}

template <class Function, class Sample, class Entry>
void expectInverseChecks(Function* function, Sample, Entry) {
  Plane<Orb16s> src = flat(Orb16s{1});
  Plane<Sample> dst(8, 8);
  Plane<Entry> table = flat(Entry{1});
  EXPECT_EQ(function(nullptr, dst.data(), 0, nullptr), orbStsNullPtrErr);
  EXPECT_EQ(function(src.data(), nullptr, 0, nullptr), orbStsNullPtrErr);
  EXPECT_EQ(function(src.data(), dst.data(), 0, nullptr), orbStsStepErr);
  EXPECT_EQ(function(src.data(), dst.data(), -16, nullptr), orbStsStepErr);
  EXPECT_EQ(function(src.data(), dst.data(), std::numeric_limits<Orb32s>::min(), table.data()),
            orbStsStepErr);
  EXPECT_EQ(function(src.data(), dst.data(), dst.step(), nullptr), orbStsNullPtrErr);
  dst.expectUntouched();
  EXPECT_EQ(function(src.data(), dst.data(), dst.step(), table.data()), orbStsNoErr);
  EXPECT_EQ(function(src.data(), dst.data(), 1, table.data()), orbStsNoErr);
  src.expectUntouched();
  table.expectUntouched();
}
ORB_MEANING(orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R, ChecksInOrder) {
  expectInverseChecks(ORB(orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R), Orb8u{}, Orb16u{});
}
ORB_MEANING(orbiDCTQuantInv8x8LS_JPEG_16s16u_C1R, ChecksInOrder) {
  expectInverseChecks(ORB(orbiDCTQuantInv8x8LS_JPEG_16s16u_C1R), Orb16u{}, Orb32f{});
}
ORB_MEANING(orbiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R, ChecksInOrder) {
  expectInverseChecks(ORB(orbiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R), Orb8u{}, Orb16u{});
}
ORB_MEANING(orbiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R, ChecksInOrder) {
  expectInverseChecks(ORB(orbiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R), Orb8u{}, Orb16u{});
}
ORB_MEANING(orbiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R, ChecksInOrder) {
  expectInverseChecks(ORB(orbiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R), Orb8u{}, Orb16u{});
}
ORB_MEANING(orbiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R, ChecksInOrder) {
  expectInverseChecks(ORB(orbiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R), Orb8u{}, Orb16u{});
}
ORB_MEANING(orbiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R, ChecksInOrder) {
  expectInverseChecks(ORB(orbiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R), Orb8u{}, Orb16u{});
}

// ---- The integer functions against the model, over everything that words can hold

constexpr int kRounds = 600;

template <class Expected>
void expectForwardBlocks(const char* seed, Expected expectOne) {
  Random random(seed);
  for (int round = 0; round < kRounds; ++round) {
    Plane<Orb16s> src(64, 1, Placement::any(random));
    Plane<Orb16u> table(64, 1, Placement::any(random));
    fillAnyKind(src, random, -256, 255);
    fillAnyKind(table, random, 128, 32768);
    Block<int> samples;
    for (int i = 0; i < 64; ++i) samples[i] = src.at(i);
    Block<int> expected = modelForward(samples);
    for (int i = 0; i < 64; ++i) expected[i] = quantised(expected[i], table.at(i));
    expectOne(random, src, table, expected);
    table.expectUntouched();
    if (testing::Test::HasFailure()) return;
  }
}

ORB_MEANING(orbiDCTQuantFwd8x8_JPEG_16s_C1, FollowsTheModel) {
  expectForwardBlocks("forward", [&](Random& random, Plane<Orb16s>& src, Plane<Orb16u>& table,
                                     const Block<int>& expected) {
    Plane<Orb16s> dst(64, 1, Placement::any(random));
    ASSERT_EQ(ORB(orbiDCTQuantFwd8x8_JPEG_16s_C1)(src.data(), dst.data(), table.data()),
              orbStsNoErr);
    for (int i = 0; i < 64; ++i) ASSERT_EQ(dst.at(i), expected[i]) << i;
    dst.expectOutsideUntouched();
    src.expectUntouched();
    // One block for both is a call in place.
    ASSERT_EQ(ORB(orbiDCTQuantFwd8x8_JPEG_16s_C1)(src.data(), src.data(), table.data()),
              orbStsNoErr);
    for (int i = 0; i < 64; ++i) ASSERT_EQ(src.at(i), expected[i]) << i;
  });
}
ORB_MEANING(orbiDCTQuantFwd8x8_JPEG_16s_C1I, FollowsTheModel) {
  expectForwardBlocks("forward in place", [&](Random&, Plane<Orb16s>& block, Plane<Orb16u>& table,
                                              const Block<int>& expected) {
    ASSERT_EQ(ORB(orbiDCTQuantFwd8x8_JPEG_16s_C1I)(block.data(), table.data()), orbStsNoErr);
    for (int i = 0; i < 64; ++i) ASSERT_EQ(block.at(i), expected[i]) << i;
    block.expectOutsideUntouched();
  });
}

ORB_MEANING(orbiDCTQuantFwd8x8LS_JPEG_8u16s_C1R, FollowsTheModel) {
  Random random("forward from samples");
  for (int round = 0; round < kRounds; ++round) {
    Plane<Orb8u> src(8, 8, Placement::any(random));
    Plane<Orb16u> table(64, 1, Placement::any(random));
    Plane<Orb16s> dst(64, 1, Placement::any(random));
    fillAnyKind(src, random, 100, 150);
    fillAnyKind(table, random, 128, 32768);
    Block<int> samples;
    for (int i = 0; i < 64; ++i) samples[i] = src.at(i % 8, i / 8) - 128;
    const Block<int> expected = modelForward(samples);
    ASSERT_EQ(
        ORB(orbiDCTQuantFwd8x8LS_JPEG_8u16s_C1R)(src.data(), src.step(), dst.data(), table.data()),
        orbStsNoErr);
    for (int i = 0; i < 64; ++i) ASSERT_EQ(dst.at(i), quantised(expected[i], table.at(i))) << i;
    dst.expectOutsideUntouched();
    src.expectUntouched();
    table.expectUntouched();
  }
}

template <class Expected>
void expectInverseBlocks(const char* seed, Expected expectOne) {
  Random random(seed);
  for (int round = 0; round < kRounds; ++round) {
    Plane<Orb16s> src(64, 1, Placement::any(random));
    Plane<Orb16u> table(64, 1, Placement::any(random));
    fillAnyKind(src, random, -20, 20);
    fillAnyKind(table, random, 1, 100);
    expectOne(random, src, table);
    table.expectUntouched();
    if (testing::Test::HasFailure()) return;
  }
}

ORB_MEANING(orbiDCTQuantInv8x8_JPEG_16s_C1, FollowsTheModel) {
  expectInverseBlocks("inverse", [&](Random& random, Plane<Orb16s>& src, Plane<Orb16u>& table) {
    const Block<int> expected = modelInverse(modelDequantised(src, table), inverseLine);
    Plane<Orb16s> dst(64, 1, Placement::any(random));
    ASSERT_EQ(ORB(orbiDCTQuantInv8x8_JPEG_16s_C1)(src.data(), dst.data(), table.data()),
              orbStsNoErr);
    for (int i = 0; i < 64; ++i) ASSERT_EQ(dst.at(i), expected[i]) << i;
    dst.expectOutsideUntouched();
    src.expectUntouched();
    ASSERT_EQ(ORB(orbiDCTQuantInv8x8_JPEG_16s_C1)(src.data(), src.data(), table.data()),
              orbStsNoErr);
    for (int i = 0; i < 64; ++i) ASSERT_EQ(src.at(i), expected[i]) << i;
  });
}
ORB_MEANING(orbiDCTQuantInv8x8_JPEG_16s_C1I, FollowsTheModel) {
  expectInverseBlocks("inverse in place", [&](Random&, Plane<Orb16s>& block, Plane<Orb16u>& table) {
    const Block<int> expected = modelInverse(modelDequantised(block, table), inverseLine);
    ASSERT_EQ(ORB(orbiDCTQuantInv8x8_JPEG_16s_C1I)(block.data(), table.data()), orbStsNoErr);
    for (int i = 0; i < 64; ++i) ASSERT_EQ(block.at(i), expected[i]) << i;
    block.expectOutsideUntouched();
  });
}

using InverseToSamples = decltype(legacy90orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R);

// `inverse` makes the block of differences from 128; the destination takes its top left corner.
template <class Inverse>
void expectSamples(const char* seed, InverseToSamples* function, int size, Inverse inverse) {
  expectInverseBlocks(seed, [&](Random& random, Plane<Orb16s>& src, Plane<Orb16u>& table) {
    const Block<int> expected = inverse(src, table);
    Plane<Orb8u> dst(size, size, Placement::any(random));
    ASSERT_EQ(function(src.data(), dst.data(), dst.step(), table.data()), orbStsNoErr);
    for (int i = 0; i < size * size; ++i) {
      const int x = i % size, y = i / size;
      ASSERT_EQ(dst.at(x, y), sample(expected[8 * y + x])) << x << ", " << y;
    }
    dst.expectOutsideUntouched();
    src.expectUntouched();
  });
}

// The model sees only the coefficients of the first `size` rows and columns.
Block<int> modelCorner(const Plane<Orb16s>& src, const Plane<Orb16u>& table, int size,
                       Transform* transform) {
  Block<int> coefficients = modelDequantised(src, table);
  for (int i = 0; i < 64; ++i) {
    if (i / 8 >= size || i % 8 >= size) coefficients[i] = 0;
  }
  return modelInverse(coefficients, transform);
}

ORB_MEANING(orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R, FollowsTheModel) {
  expectSamples("inverse to samples", ORB(orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R), 8,
                [](auto& src, auto& table) {
                  return modelInverse(modelDequantised(src, table), inverseLine);
                });
}
ORB_MEANING(orbiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R, FollowsTheModel) {
  expectSamples(
      "inverse 1x1", ORB(orbiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R), 8, [](auto& src, auto& table) {
        Block<int> block;
        block.fill(static_cast<int>(std::floor(static_cast<double>(src.at(0)) * table.at(0) / 8)));
        return block;
      });
}
ORB_MEANING(orbiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R, FollowsTheModel) {
  expectSamples(
      "inverse 2x2", ORB(orbiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R), 8,
      [](auto& src, auto& table) { return modelCorner(src, table, 2, inverseLineFrom2); });
}
ORB_MEANING(orbiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R, FollowsTheModel) {
  expectSamples(
      "inverse 4x4", ORB(orbiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R), 8,
      [](auto& src, auto& table) { return modelCorner(src, table, 4, inverseLineFrom4); });
}
ORB_MEANING(orbiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R, FollowsTheModel) {
  expectSamples("inverse to 2x2", ORB(orbiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R), 2,
                [](auto& src, auto& table) {
                  return modelInverse(modelDequantised(src, table), inverseLineTo2);
                });
}
ORB_MEANING(orbiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R, FollowsTheModel) {
  expectSamples("inverse to 4x4", ORB(orbiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R), 4,
                [](auto& src, auto& table) {
                  return modelInverse(modelDequantised(src, table), inverseLineTo4);
                });
}

// ---- The integer functions against the transforms in double precision

ORB_MEANING(orbiDCTQuantFwd8x8LS_JPEG_8u16s_C1R, IsTheDctOfSamples) {
  Random random("forward precision");
  Plane<Orb16u> table = flat(kNoQuantisation);
  for (int round = 0; round < 2000; ++round) {
    Plane<Orb8u> src(8, 8);
    fillAnyKind(src, random, 0, 255);
    if (round % 3 == 0) src.fill([&] { return random.oneIn(2) ? Orb8u{255} : Orb8u{0}; });
    Plane<Orb16s> dst(64, 1);
    Block<double> samples;
    for (int i = 0; i < 64; ++i) samples[i] = src.at(i % 8, i / 8) - 128;
    const Block<double> exact = exactForward(samples);
    ORB(orbiDCTQuantFwd8x8LS_JPEG_8u16s_C1R)
    (src.data(), src.step(), dst.data(), table.data());
    for (int i = 0; i < 64; ++i) ASSERT_NEAR(dst.at(i), exact[i], 1.0) << i;
    // The sum of the samples divided by 8, halves up.
    double sum = 0;
    for (const double s : samples) sum += s;
    ASSERT_EQ(dst.at(0), std::floor(sum / 8 + 0.5));
  }
}

// The procedure of IEEE Std 1180-1990: coefficients of random samples, and the errors of the
// samples that come back. Its bounds hold for each range of samples and for both signs.
ORB_MEANING(orbiDCTQuantInv8x8_JPEG_16s_C1, MeetsIeee1180) {
  constexpr int kBlocks = 10000;
  const struct { int low, high; } ranges[] = {{-256, 255}, {-5, 5}, {-300, 300}};
  Plane<Orb16u> table = flat(Orb16u{1});
  for (const auto& range : ranges) {
    Random random("ieee 1180");
    Block<double> sum = {}, squares = {};
    for (int round = 0; round < kBlocks; ++round) {
      const Block<int> coefficients = ordinaryCoefficients(random, range.low, range.high);
      Block<double> limited;
      for (int i = 0; i < 64; ++i) limited[i] = std::clamp(coefficients[i], -2048, 2047);
      const Block<double> exact = exactInverse(limited);
      Plane<Orb16s> src = blockOf<Orb16s>([&](int i) { return limited[i]; });
      Plane<Orb16s> dst(64, 1);
      ORB(orbiDCTQuantInv8x8_JPEG_16s_C1)(src.data(), dst.data(), table.data());
      for (int i = 0; i < 64; ++i) {
        const double reference = std::clamp(std::floor(exact[i] + 0.5), -256.0, 255.0);
        const double error = std::clamp<double>(dst.at(i), -256, 255) - reference;
        ASSERT_LE(std::abs(error), 1) << exact[i];
        sum[i] += error;
        squares[i] += error * error;
      }
    }
    double allSum = 0, allSquares = 0;
    for (int i = 0; i < 64; ++i) {
      EXPECT_LE(squares[i] / kBlocks, 0.06) << i;
      EXPECT_LE(std::abs(sum[i]) / kBlocks, 0.015) << i;
      allSum += sum[i];
      allSquares += squares[i];
    }
    EXPECT_LE(allSquares / (64 * kBlocks), 0.02);
    EXPECT_LE(std::abs(allSum) / (64 * kBlocks), 0.0015);
  }
}

// A table that holds 1, blocks of a picture, and the samples that the exact inverse would give.
template <class Expected>
void expectNearExact(InverseToSamples* function, int kept, int size, Expected expected) {
  Random random("inverse precision");
  Plane<Orb16u> table = flat(Orb16u{1});
  for (int round = 0; round < 1000; ++round) {
    const Block<int> coefficients = ordinaryCoefficients(random, -128, 127);
    Plane<Orb16s> src = blockOf<Orb16s>([&](int i) { return coefficients[i]; });
    Block<double> used = {};
    for (int i = 0; i < 64; ++i) used[i] = i / 8 < kept && i % 8 < kept ? coefficients[i] : 0;
    const Block<double> exact = exactInverse(used);
    Plane<Orb8u> dst(size, size);
    function(src.data(), dst.data(), dst.step(), table.data());
    for (int y = 0; y < size; ++y) {
      for (int x = 0; x < size; ++x) {
        const double value = expected(exact, x, y);
        ASSERT_NEAR(dst.at(x, y), std::clamp(value + 128, 0.0, 255.0), 1.0) << x << ", " << y;
      }
    }
  }
}

double exactSample(const Block<double>& exact, int x, int y) {
  return exact[8 * y + x];
}
template <int kSide>
double exactMean(const Block<double>& exact, int x, int y) {
  double sum = 0;
  for (int i = 0; i < kSide * kSide; ++i) {
    sum += exact[8 * (y * kSide + i / kSide) + x * kSide + i % kSide];
  }
  return sum / (kSide * kSide);
}

ORB_MEANING(orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R, IsTheInverseDct) {
  expectNearExact(ORB(orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R), 8, 8, exactSample);
}
ORB_MEANING(orbiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R, IsTheInverseDctOfOneCoefficient) {
  expectNearExact(ORB(orbiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R), 1, 8, exactSample);
}
ORB_MEANING(orbiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R, IsTheInverseDctOfFourCoefficients) {
  expectNearExact(ORB(orbiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R), 2, 8, exactSample);
}
ORB_MEANING(orbiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R, IsTheInverseDctOfSixteenCoefficients) {
  expectNearExact(ORB(orbiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R), 4, 8, exactSample);
}
ORB_MEANING(orbiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R, IsTheMeanOfFourByFour) {
  expectNearExact(ORB(orbiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R), 8, 2, exactMean<4>);
}
ORB_MEANING(orbiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R, IsTheMeanOfTwoByTwo) {
  expectNearExact(ORB(orbiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R), 8, 4, exactMean<2>);
}

// On a block with nothing else, the full inverse and the one of few coefficients differ by 1 at
// most.
ORB_MEANING(orbiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R, AgreesWithTheFullInverse) {
  Random random("4x4 and full");
  Plane<Orb16u> table = flat(Orb16u{1});
  for (int round = 0; round < 1000; ++round) {
    const Block<int> coefficients = ordinaryCoefficients(random, -128, 127);
    Plane<Orb16s> src =
        blockOf<Orb16s>([&](int i) { return i / 8 < 4 && i % 8 < 4 ? coefficients[i] : 0; });
    Plane<Orb8u> few(8, 8), full(8, 8);
    ORB(orbiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R)
    (src.data(), few.data(), few.step(), table.data());
    ORB(orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R)
    (src.data(), full.data(), full.step(), table.data());
    for (int i = 0; i < 64; ++i) {
      ASSERT_NEAR(few.at(i % 8, i / 8), full.at(i % 8, i / 8), 1);
    }
  }
}

// ---- Values worked by hand

// A row whose sum is 4096 leaves 32768 behind the first pass, which a word holds as -32768.
ORB_MEANING(orbiDCTQuantFwd8x8_JPEG_16s_C1, RunsRowsFirstAndWraps) {
  Plane<Orb16s> src = blockOf<Orb16s>([](int i) { return i < 8 ? 512 : 0; });
  Plane<Orb16u> table = flat(kNoQuantisation);
  Plane<Orb16s> dst(64, 1);
  ORB(orbiDCTQuantFwd8x8_JPEG_16s_C1)(src.data(), dst.data(), table.data());
  EXPECT_EQ(dst.at(0), -512);
  // The same sum in a column does not leave the range.
  Plane<Orb16s> column = blockOf<Orb16s>([](int i) { return i % 8 == 0 ? 512 : 0; });
  ORB(orbiDCTQuantFwd8x8_JPEG_16s_C1)(column.data(), dst.data(), table.data());
  EXPECT_EQ(dst.at(0), 512);
}

// Columns first: 8 * 4096 becomes -32768 in each sum, so the row sees two equal values and its
// outer results are -65536 / 64 rounded. Rows first would double before the cut and leave nothing.
ORB_MEANING(orbiDCTQuantInv8x8_JPEG_16s_C1, RunsColumnsFirstAndWraps) {
  Plane<Orb16s> src = blockOf<Orb16s>([](int i) { return i == 0 || i == 4 ? 4096 : 0; });
  Plane<Orb16u> table = flat(Orb16u{1});
  Plane<Orb16s> dst(64, 1);
  ORB(orbiDCTQuantInv8x8_JPEG_16s_C1)(src.data(), dst.data(), table.data());
  for (int i = 0; i < 64; ++i) {
    const int x = i % 8;
    ASSERT_EQ(dst.at(i), x == 0 || x == 3 || x == 4 || x == 7 ? -1024 : 0) << i;
  }
}

ORB_MEANING(orbiDCTQuantInv8x8_JPEG_16s_C1, LimitsAfterDequantisation) {
  Plane<Orb16s> src = blockOf<Orb16s>([](int i) { return i == 0 ? 30000 : 0; });
  Plane<Orb16u> table = flat(Orb16u{2});
  Plane<Orb16s> dst(64, 1);
  ORB(orbiDCTQuantInv8x8_JPEG_16s_C1)(src.data(), dst.data(), table.data());
  // 32767 * 8 keeps -8 in a word, and (-8 + 32) / 64 rounds down to 0.
  for (int i = 0; i < 64; ++i) ASSERT_EQ(dst.at(i), 0);
}

ORB_MEANING(orbiDCTQuantFwd8x8LS_JPEG_8u16s_C1R, FlatBlocks) {
  Plane<Orb16u> table = flat(kNoQuantisation);
  for (int value = 0; value < 256; ++value) {
    Plane<Orb8u> src(8, 8);
    src.fill([=] { return static_cast<Orb8u>(value); });
    Plane<Orb16s> dst(64, 1);
    ORB(orbiDCTQuantFwd8x8LS_JPEG_8u16s_C1R)
    (src.data(), src.step(), dst.data(), table.data());
    ASSERT_EQ(dst.at(0), (value - 128) * 8);  // 1016 for 255
    for (int i = 1; i < 64; ++i) ASSERT_EQ(dst.at(i), 0);
  }
}

ORB_MEANING(orbiDCTQuantFwd8x8LS_JPEG_8u16s_C1R, AStepOfOneReadsOverlappingRows) {
  Plane<Orb8u> overlapping(15, 1), apart(8, 8);
  overlapping.fill([next = 7]() mutable { return static_cast<Orb8u>(next += 61); });
  for (int i = 0; i < 64; ++i) apart.set(i % 8, i / 8, overlapping.at(i % 8 + i / 8));
  Plane<Orb16u> table = flat(kNoQuantisation);
  Plane<Orb16s> expected(64, 1), actual(64, 1);
  const auto function = ORB(orbiDCTQuantFwd8x8LS_JPEG_8u16s_C1R);
  function(apart.data(), apart.step(), expected.data(), table.data());
  function(overlapping.data(), 1, actual.data(), table.data());
  EXPECT_TRUE(actual.sameBytes(expected));
}

// Rows are written from the first to the last, so of overlapping rows the last stays.
ORB_MEANING(orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R, AStepOfOneWritesRowsInOrder) {
  Plane<Orb16s> src = blockOf<Orb16s>([](int i) { return i < 20 ? 90 - 17 * i : 0; });
  Plane<Orb16u> table = flat(Orb16u{1});
  Plane<Orb8u> apart(8, 8), overlapping(15, 1);
  const auto function = ORB(orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R);
  function(src.data(), apart.data(), apart.step(), table.data());
  function(src.data(), overlapping.data(), 1, table.data());
  for (int i = 0; i < 15; ++i) {
    EXPECT_EQ(overlapping.at(i), i < 7 ? apart.at(0, i) : apart.at(i - 7, 7)) << i;
  }
  overlapping.expectOutsideUntouched();
}

void expectGrey(InverseToSamples* function, int size) {
  Plane<Orb16s> src = flat(Orb16s{0});
  Plane<Orb16u> table = flat(Orb16u{65535});
  Plane<Orb8u> dst(size, size, {3, 1});
  ASSERT_EQ(function(src.data(), dst.data(), dst.step(), table.data()), orbStsNoErr);
  for (const Orb8u value : dst.samples()) EXPECT_EQ(value, 128);
  dst.expectOutsideUntouched();
}
ORB_MEANING(orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R, ZerosAreGrey) {
  expectGrey(ORB(orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R), 8);
}
ORB_MEANING(orbiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R, ZerosAreGrey) {
  expectGrey(ORB(orbiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R), 8);
}
ORB_MEANING(orbiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R, ZerosAreGrey) {
  expectGrey(ORB(orbiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R), 8);
}
ORB_MEANING(orbiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R, ZerosAreGrey) {
  expectGrey(ORB(orbiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R), 8);
}
ORB_MEANING(orbiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R, ZerosAreGrey) {
  expectGrey(ORB(orbiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R), 2);
}
ORB_MEANING(orbiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R, ZerosAreGrey) {
  expectGrey(ORB(orbiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R), 4);
}

ORB_MEANING(orbiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R, ReadsItsTableAsUnsignedAndRoundsDown) {
  const struct {
    int dc, entry, sample;
  } cases[] = {{8, 1, 129},     {7, 1, 128},     {-1, 1, 127},       {-8, 1, 127},
               {-9, 1, 126},    {1, 65535, 255}, {-1, 65535, 0},     {1, 32768, 255},
               {-1, 32768, 0},  {1, 1016, 255},  {-32768, 65535, 0}, {32767, 65535, 255},
               {32767, 0, 128}, {-1024, 1, 0}};
  for (const auto& c : cases) {
    Plane<Orb16s> src = flat(Orb16s{-999});
    src.set(0, 0, static_cast<Orb16s>(c.dc));
    Plane<Orb16u> table = flat(Orb16u{65535});
    table.set(0, 0, static_cast<Orb16u>(c.entry));
    Plane<Orb8u> dst(8, 8, {1, 3});
    ORB(orbiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R)
    (src.data(), dst.data(), dst.step(), table.data());
    for (const Orb8u value : dst.samples()) ASSERT_EQ(value, c.sample) << c.dc << " " << c.entry;
  }
}

// Down a column of -1250 and 1596 the third value is (-1250 * 32768 + 1596 * k + 2048) / 4096: 31
// for k = 25745, 32 for 25746, and 64 is what makes one more in a sample.
ORB_MEANING(orbiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R, DiffersFromTheFullInverseInOneFactor) {
  Plane<Orb16s> src = blockOf<Orb16s>([](int i) { return i == 0 ? -1250 : i == 8 ? 1596 : 0; });
  Plane<Orb16u> table = flat(Orb16u{1});
  Plane<Orb8u> few(8, 8), four(8, 8), full(8, 8);
  ORB(orbiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R)(src.data(), few.data(), few.step(), table.data());
  ORB(orbiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R)(src.data(), four.data(), four.step(), table.data());
  ORB(orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R)(src.data(), full.data(), full.step(), table.data());
  EXPECT_EQ(few.at(0, 2), 128);
  EXPECT_EQ(four.at(0, 2), 128);
  EXPECT_EQ(full.at(0, 2), 129);
}

// ---- Which coefficients take part

template <class TakesPart>
void expectParticipation(InverseToSamples* function, int size, TakesPart takesPart) {
  Plane<Orb16u> table = flat(Orb16u{1});
  Plane<Orb8u> without(size, size);
  Plane<Orb16s> empty = flat(Orb16s{0});
  function(empty.data(), without.data(), without.step(), table.data());
  for (int i = 0; i < 64; ++i) {
    for (const int value : {-1000, 1000}) {
      Plane<Orb16s> src = blockOf<Orb16s>([=](int k) { return k == i ? value : 0; });
      Plane<Orb8u> with(size, size);
      function(src.data(), with.data(), with.step(), table.data());
      EXPECT_EQ(with.samples() != without.samples(), takesPart(i % 8, i / 8)) << i;
    }
  }
}
ORB_MEANING(orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R, AllCoefficientsTakePart) {
  expectParticipation(ORB(orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R), 8, [](int, int) { return true; });
}
ORB_MEANING(orbiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R, OneCoefficientTakesPart) {
  expectParticipation(ORB(orbiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R), 8,
                      [](int x, int y) { return x == 0 && y == 0; });
}
ORB_MEANING(orbiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R, FourCoefficientsTakePart) {
  expectParticipation(ORB(orbiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R), 8,
                      [](int x, int y) { return x < 2 && y < 2; });
}
ORB_MEANING(orbiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R, SixteenCoefficientsTakePart) {
  expectParticipation(ORB(orbiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R), 8,
                      [](int x, int y) { return x < 4 && y < 4; });
}
ORB_MEANING(orbiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R, RowsAndColumns2And4And6TakeNoPart) {
  const auto used = [](int k) { return k == 0 || k % 2 == 1; };
  expectParticipation(ORB(orbiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R), 2,
                      [=](int x, int y) { return used(x) && used(y); });
}
ORB_MEANING(orbiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R, RowAndColumn4TakeNoPart) {
  expectParticipation(ORB(orbiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R), 4,
                      [](int x, int y) { return x != 4 && y != 4; });
}

// ---- Samples of 12 bits

// What single precision may be off by, in units of the result, for values of about 2 to the 15.
constexpr double kSingle = 0.01;

Plane<Orb32f> reciprocals(Random& random, int mostDivisor, Placement at = {}) {
  return blockOf<Orb32f>([&](int) { return 1.0f / random.between(1, mostDivisor); }, at);
}
Plane<Orb32f> divisors(Random& random, int most, Placement at = {}) {
  return blockOf<Orb32f>([&](int) { return random.between(1, most); }, at);
}

ORB_MEANING(orbiDCTQuantFwd8x8LS_JPEG_16u16s_C1R, IsTheDctOfSamples) {
  Random random("forward 12 bits");
  for (int round = 0; round < 2000; ++round) {
    Plane<Orb16u> src(8, 8, Placement::any(random));
    src.fill([&] { return static_cast<Orb16u>(random.between(0, 4095)); });
    if (round % 3 == 0) src.fill([&] { return random.oneIn(2) ? Orb16u{4095} : Orb16u{0}; });
    Plane<Orb32f> table = reciprocals(random, round % 2 == 0 ? 1 : 255, Placement::any(random));
    Plane<Orb16s> dst(64, 1, Placement::any(random));
    ASSERT_EQ(
        ORB(orbiDCTQuantFwd8x8LS_JPEG_16u16s_C1R)(src.data(), src.step(), dst.data(), table.data()),
        orbStsNoErr);
    Block<double> samples;
    for (int i = 0; i < 64; ++i) samples[i] = src.at(i % 8, i / 8) - 2048;
    const Block<double> exact = exactForward(samples);
    for (int i = 0; i < 64; ++i) {
      ASSERT_NEAR(dst.at(i), exact[i] * table.at(i), 0.5 + kSingle) << i;
    }
    dst.expectOutsideUntouched();
    src.expectUntouched();
    table.expectUntouched();
  }
}

ORB_MEANING(orbiDCTQuantInv8x8LS_JPEG_16s16u_C1R, IsTheInverseDct) {
  Random random("inverse 12 bits");
  for (int round = 0; round < 2000; ++round) {
    const Block<int> coefficients = ordinaryCoefficients(random, -2300, 2300);
    Plane<Orb32f> table = divisors(random, round % 2 == 0 ? 1 : 255, Placement::any(random));
    Plane<Orb16s> src = blockOf<Orb16s>(
        [&](int i) { return std::lround(coefficients[i] / table.at(i)); }, Placement::any(random));
    Plane<Orb16u> dst(8, 8, Placement::any(random));
    ASSERT_EQ(
        ORB(orbiDCTQuantInv8x8LS_JPEG_16s16u_C1R)(src.data(), dst.data(), dst.step(), table.data()),
        orbStsNoErr);
    Block<double> used;
    for (int i = 0; i < 64; ++i) used[i] = src.at(i) * table.at(i);
    const Block<double> exact = exactInverse(used);
    for (int i = 0; i < 64; ++i) {
      const double expected = std::clamp(exact[i] + 2048, 0.0, 4095.0);
      ASSERT_NEAR(dst.at(i % 8, i / 8), expected, 0.5 + kSingle) << i;
    }
    dst.expectOutsideUntouched();
    src.expectUntouched();
    table.expectUntouched();
  }
}

// A flat block has nothing but a DC coefficient, without error: 8 times its distance from 2048.
ORB_MEANING(orbiDCTQuantFwd8x8LS_JPEG_16u16s_C1R, RoundsToEvenAndLimits) {
  const struct {
    int sample;
    float entry;
    int dc;
  } cases[] = {{2048, 1.0f, 0},         {4095, 1.0f, 16376},   {0, 1.0f, -16384},
               {2049, 0.0625f, 0},      {2051, 0.0625f, 2},    {2053, 0.0625f, 2},
               {2047, 0.0625f, 0},      {2045, 0.0625f, -2},   {2043, 0.0625f, -2},
               {2049, 0.06255f, 1},     {2047, 0.06255f, -1},  {65535, 1.0f, 32767},
               {65535, 0.0625f, 31744}, {65535, 1e30f, 32767}, {0, 1e30f, -32768},
               {65535, -1.0f, -32768},  {4095, 0.0f, 0},       {6144, 1.0f, 32767},
               {0, 2.0f, -32768},       {0, 2.00012f, -32768}, {6143, 1.0f, 32760}};
  for (const auto& c : cases) {
    Plane<Orb16u> src(8, 8, {1, 1});
    src.fill([&] { return static_cast<Orb16u>(c.sample); });
    Plane<Orb32f> table = flat(c.entry);
    Plane<Orb16s> dst(64, 1);
    ORB(orbiDCTQuantFwd8x8LS_JPEG_16u16s_C1R)
    (src.data(), src.step(), dst.data(), table.data());
    ASSERT_EQ(dst.at(0), c.dc) << c.sample << " * " << c.entry;
    for (int i = 1; i < 64; ++i) ASSERT_EQ(dst.at(i), 0) << i;
  }
}

// A DC coefficient alone gives a flat block, without error: an eighth of it from 2048.
ORB_MEANING(orbiDCTQuantInv8x8LS_JPEG_16s16u_C1R, RoundsToEvenAndLimits) {
  const struct {
    int dc;
    float entry;
    int sample;
  } cases[] = {
      {0, 1.0f, 2048},      {8, 1.0f, 2049},       {4, 1.0f, 2048},     {12, 1.0f, 2050},
      {-4, 1.0f, 2048},     {-12, 1.0f, 2046},     {5, 1.0f, 2049},     {-5, 1.0f, 2047},
      {16376, 1.0f, 4095},  {16380, 1.0f, 4095},   {16384, 1.0f, 4095}, {32767, 1.0f, 4095},
      {32767, 1e30f, 4095}, {-16384, 1.0f, 0},     {-16385, 1.0f, 0},   {-32768, 1.0f, 0},
      {-32768, 1e30f, 0},   {-32768, -1.0f, 4095}, {1, 16376.0f, 4095}, {-1, 16380.0f, 0},
      {100, 0.0f, 2048},    {16371, 1.0f, 4094},   {16372, 1.0f, 4094}};
  for (const auto& c : cases) {
    Plane<Orb16s> src = blockOf<Orb16s>([&](int i) { return i == 0 ? c.dc : 0; });
    Plane<Orb32f> table = flat(c.entry);
    Plane<Orb16u> dst(8, 8, {1, 1});
    ORB(orbiDCTQuantInv8x8LS_JPEG_16s16u_C1R)
    (src.data(), dst.data(), dst.step(), table.data());
    for (const Orb16u value : dst.samples()) ASSERT_EQ(value, c.sample) << c.dc << " " << c.entry;
    dst.expectOutsideUntouched();
  }
}

ORB_MEANING(orbiDCTQuantInv8x8LS_JPEG_16s16u_C1R, NeverLeavesTwelveBits) {
  Random random("12 bits at most");
  for (int round = 0; round < 500; ++round) {
    Plane<Orb16s> src(64, 1);
    src.fillExtreme(random);
    Plane<Orb32f> table = blockOf<Orb32f>([&](int) { return random.between(-70000, 70000); });
    Plane<Orb16u> dst(8, 8, Placement::any(random));
    ORB(orbiDCTQuantInv8x8LS_JPEG_16s16u_C1R)
    (src.data(), dst.data(), dst.step(), table.data());
    for (const Orb16u value : dst.samples()) ASSERT_LE(value, 4095);
    dst.expectOutsideUntouched();
  }
}

// ---- Nothing beyond a region, a block or a table is read or written

template <class Function, class Sample, class Entry>
void expectForwardGuarded(Function* function, Sample, Entry) {
  for (const Guard guard : {Guard::kBefore, Guard::kBehind}) {
    for (const int step : {1, 8, 19, 64}) {
      GuardedBytes src(static_cast<size_t>(7 * step) + 8 * sizeof(Sample), guard);
      GuardedBytes table(64 * sizeof(Entry), guard), dst(64 * sizeof(Orb16s), guard);
      EXPECT_EQ(
          function(reinterpret_cast<Sample*>(src.data()), step,
                   reinterpret_cast<Orb16s*>(dst.data()), reinterpret_cast<Entry*>(table.data())),
          orbStsNoErr);
    }
  }
}
ORB_MEANING(orbiDCTQuantFwd8x8LS_JPEG_8u16s_C1R, StaysInside) {
  expectForwardGuarded(ORB(orbiDCTQuantFwd8x8LS_JPEG_8u16s_C1R), Orb8u{}, Orb16u{});
}
ORB_MEANING(orbiDCTQuantFwd8x8LS_JPEG_16u16s_C1R, StaysInside) {
  expectForwardGuarded(ORB(orbiDCTQuantFwd8x8LS_JPEG_16u16s_C1R), Orb16u{}, Orb32f{});
}

template <class Function, class Sample, class Entry>
void expectInverseGuarded(Function* function, int size, Sample, Entry) {
  for (const Guard guard : {Guard::kBefore, Guard::kBehind}) {
    for (const int step : {1, 8, 19, 64}) {
      GuardedBytes dst(static_cast<size_t>((size - 1) * step) + size * sizeof(Sample), guard);
      GuardedBytes table(64 * sizeof(Entry), guard), src(64 * sizeof(Orb16s), guard);
      EXPECT_EQ(
          function(reinterpret_cast<Orb16s*>(src.data()), reinterpret_cast<Sample*>(dst.data()),
                   step, reinterpret_cast<Entry*>(table.data())),
          orbStsNoErr);
    }
  }
}
ORB_MEANING(orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R, StaysInside) {
  expectInverseGuarded(ORB(orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R), 8, Orb8u{}, Orb16u{});
}
ORB_MEANING(orbiDCTQuantInv8x8LS_JPEG_16s16u_C1R, StaysInside) {
  expectInverseGuarded(ORB(orbiDCTQuantInv8x8LS_JPEG_16s16u_C1R), 8, Orb16u{}, Orb32f{});
}
ORB_MEANING(orbiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R, StaysInside) {
  expectInverseGuarded(ORB(orbiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R), 8, Orb8u{}, Orb16u{});
}
ORB_MEANING(orbiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R, StaysInside) {
  expectInverseGuarded(ORB(orbiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R), 8, Orb8u{}, Orb16u{});
}
ORB_MEANING(orbiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R, StaysInside) {
  expectInverseGuarded(ORB(orbiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R), 8, Orb8u{}, Orb16u{});
}
ORB_MEANING(orbiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R, StaysInside) {
  expectInverseGuarded(ORB(orbiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R), 2, Orb8u{}, Orb16u{});
}
ORB_MEANING(orbiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R, StaysInside) {
  expectInverseGuarded(ORB(orbiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R), 4, Orb8u{}, Orb16u{});
}

template <class Function>
void expectBlocksGuarded(Function* function) {
  for (const Guard guard : {Guard::kBefore, Guard::kBehind}) {
    GuardedBytes src(128, guard), dst(128, guard), table(128, guard);
    EXPECT_EQ(function(reinterpret_cast<Orb16s*>(src.data()), reinterpret_cast<Orb16s*>(dst.data()),
                       reinterpret_cast<Orb16u*>(table.data())),
              orbStsNoErr);
  }
}
ORB_MEANING(orbiDCTQuantFwd8x8_JPEG_16s_C1, StaysInside) {
  expectBlocksGuarded(ORB(orbiDCTQuantFwd8x8_JPEG_16s_C1));
}
ORB_MEANING(orbiDCTQuantInv8x8_JPEG_16s_C1, StaysInside) {
  expectBlocksGuarded(ORB(orbiDCTQuantInv8x8_JPEG_16s_C1));
}

template <class Function>
void expectInPlaceGuarded(Function* function) {
  for (const Guard guard : {Guard::kBefore, Guard::kBehind}) {
    GuardedBytes block(128, guard), table(128, guard);
    EXPECT_EQ(
        function(reinterpret_cast<Orb16s*>(block.data()), reinterpret_cast<Orb16u*>(table.data())),
        orbStsNoErr);
  }
}
ORB_MEANING(orbiDCTQuantFwd8x8_JPEG_16s_C1I, StaysInside) {
  expectInPlaceGuarded(ORB(orbiDCTQuantFwd8x8_JPEG_16s_C1I));
}
ORB_MEANING(orbiDCTQuantInv8x8_JPEG_16s_C1I, StaysInside) {
  expectInPlaceGuarded(ORB(orbiDCTQuantInv8x8_JPEG_16s_C1I));
}

// ---- Agreement of the builds: to the bit, but for what the x87 unit of a 32-bit px may round
// another way in the functions of 12 bits

constexpr int kMayDiffer = sizeof(void*) == 4 ? 1 : 0;

// Coefficients stay within 16 bits, where single precision holds a tenth of a sample.
Plane<Orb32f> divisorsWithin16Bits(Random& random, const Plane<Orb16s>& block) {
  return blockOf<Orb32f>(
      [&](int i) {
        return random.between(1, std::clamp(32768 / (1 + std::abs(block.at(i))), 1, 255));
      },
      Placement::any(random));
}

// What no host should make. Without x87 the builds agree in what comes of it.
bool mayBeAbsurd(Random& random) {
  return kMayDiffer == 0 && random.oneIn(4);
}
Plane<Orb32f> absurdTable(Random& random) {
  using Limits = std::numeric_limits<Orb32f>;
  const Orb32f values[] = {0,   Limits::min(), Limits::max(),       Limits::infinity(), 1e-30f,
                           1e9, -1e20f,        Limits::quiet_NaN(), -Limits::infinity()};
  return blockOf<Orb32f>([&](int) { return values[random.between(0, 8)]; });
}

ORB_AGREEMENT(orbiDCTQuantFwd8x8_JPEG_16s_C1) {
  for (int round = 0; round < kRounds; ++round) {
    Plane<Orb16s> src(64, 1, Placement::any(random));
    Plane<Orb16u> table(64, 1, Placement::any(random));
    fillAnyKind(src, random, -128, 127);
    fillAnyKind(table, random, 128, 32768);
    const Placement place = Placement::any(random);
    Plane<Orb16s> expected(64, 1, place), actual(64, 1, place);
    PX(orbiDCTQuantFwd8x8_JPEG_16s_C1)(src.data(), expected.data(), table.data());
    ORB(orbiDCTQuantFwd8x8_JPEG_16s_C1)(src.data(), actual.data(), table.data());
    ASSERT_TRUE(actual.sameBytes(expected));
  }
}
ORB_AGREEMENT(orbiDCTQuantInv8x8_JPEG_16s_C1) {
  for (int round = 0; round < kRounds; ++round) {
    Plane<Orb16s> src(64, 1, Placement::any(random));
    Plane<Orb16u> table(64, 1, Placement::any(random));
    fillAnyKind(src, random, -20, 20);
    fillAnyKind(table, random, 1, 100);
    const Placement place = Placement::any(random);
    Plane<Orb16s> expected(64, 1, place), actual(64, 1, place);
    PX(orbiDCTQuantInv8x8_JPEG_16s_C1)(src.data(), expected.data(), table.data());
    ORB(orbiDCTQuantInv8x8_JPEG_16s_C1)(src.data(), actual.data(), table.data());
    ASSERT_TRUE(actual.sameBytes(expected));
  }
}

template <class Function>
void expectInPlaceAgrees(Function* px, Function* build, Random& random, int low, int high) {
  for (int round = 0; round < kRounds; ++round) {
    const Placement place = Placement::any(random);
    Plane<Orb16s> expected(64, 1, place), actual(64, 1, place);
    Plane<Orb16u> table(64, 1, Placement::any(random));
    fillAnyKind(expected, random, -128, 127);
    fillAnyKind(table, random, low, high);
    actual.copySamples(expected);
    px(expected.data(), table.data());
    build(actual.data(), table.data());
    ASSERT_TRUE(actual.sameBytes(expected));
  }
}
ORB_AGREEMENT(orbiDCTQuantFwd8x8_JPEG_16s_C1I) {
  expectInPlaceAgrees(PX(orbiDCTQuantFwd8x8_JPEG_16s_C1I), ORB(orbiDCTQuantFwd8x8_JPEG_16s_C1I),
                      random, 128, 32768);
}
ORB_AGREEMENT(orbiDCTQuantInv8x8_JPEG_16s_C1I) {
  expectInPlaceAgrees(PX(orbiDCTQuantInv8x8_JPEG_16s_C1I), ORB(orbiDCTQuantInv8x8_JPEG_16s_C1I),
                      random, 1, 20);
}

ORB_AGREEMENT(orbiDCTQuantFwd8x8LS_JPEG_8u16s_C1R) {
  for (int round = 0; round < kRounds; ++round) {
    Plane<Orb8u> src(8, 8, Placement::any(random));
    Plane<Orb16u> table(64, 1, Placement::any(random));
    fillAnyKind(src, random, 100, 150);
    fillAnyKind(table, random, 128, 32768);
    const Placement place = Placement::any(random);
    Plane<Orb16s> expected(64, 1, place), actual(64, 1, place);
    PX(orbiDCTQuantFwd8x8LS_JPEG_8u16s_C1R)
    (src.data(), src.step(), expected.data(), table.data());
    ORB(orbiDCTQuantFwd8x8LS_JPEG_8u16s_C1R)
    (src.data(), src.step(), actual.data(), table.data());
    ASSERT_TRUE(actual.sameBytes(expected));
  }
}

void expectSamplesAgree(InverseToSamples* px, InverseToSamples* build, Random& random, int size) {
  for (int round = 0; round < kRounds; ++round) {
    Plane<Orb16s> src(64, 1, Placement::any(random));
    Plane<Orb16u> table(64, 1, Placement::any(random));
    fillAnyKind(src, random, -20, 20);
    fillAnyKind(table, random, 1, 100);
    const Placement place = Placement::any(random);
    Plane<Orb8u> expected(size, size, place), actual(size, size, place);
    px(src.data(), expected.data(), expected.step(), table.data());
    build(src.data(), actual.data(), actual.step(), table.data());
    ASSERT_TRUE(actual.sameBytes(expected));
  }
}
ORB_AGREEMENT(orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R) {
  expectSamplesAgree(PX(orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R),
                     ORB(orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R), random, 8);
}
ORB_AGREEMENT(orbiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R) {
  expectSamplesAgree(PX(orbiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R),
                     ORB(orbiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R), random, 8);
}
ORB_AGREEMENT(orbiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R) {
  expectSamplesAgree(PX(orbiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R),
                     ORB(orbiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R), random, 8);
}
ORB_AGREEMENT(orbiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R) {
  expectSamplesAgree(PX(orbiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R),
                     ORB(orbiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R), random, 8);
}
ORB_AGREEMENT(orbiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R) {
  expectSamplesAgree(PX(orbiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R),
                     ORB(orbiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R), random, 2);
}
ORB_AGREEMENT(orbiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R) {
  expectSamplesAgree(PX(orbiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R),
                     ORB(orbiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R), random, 4);
}

ORB_AGREEMENT(orbiDCTQuantFwd8x8LS_JPEG_16u16s_C1R) {
  for (int round = 0; round < kRounds; ++round) {
    Plane<Orb16u> src(8, 8, Placement::any(random));
    fillAnyKind(src, random, 0, 4095);
    Plane<Orb32f> table = mayBeAbsurd(random) ? absurdTable(random)
                                              : reciprocals(random, 255, Placement::any(random));
    const Placement place = Placement::any(random);
    Plane<Orb16s> expected(64, 1, place), actual(64, 1, place);
    PX(orbiDCTQuantFwd8x8LS_JPEG_16u16s_C1R)
    (src.data(), src.step(), expected.data(), table.data());
    ORB(orbiDCTQuantFwd8x8LS_JPEG_16u16s_C1R)
    (src.data(), src.step(), actual.data(), table.data());
    for (int i = 0; i < 64; ++i) ASSERT_NEAR(actual.at(i), expected.at(i), kMayDiffer);
    actual.expectOutsideUntouched();
  }
}
ORB_AGREEMENT(orbiDCTQuantInv8x8LS_JPEG_16s16u_C1R) {
  for (int round = 0; round < kRounds; ++round) {
    Plane<Orb16s> src(64, 1, Placement::any(random));
    fillAnyKind(src, random, -100, 100);
    Plane<Orb32f> table =
        mayBeAbsurd(random) ? absurdTable(random) : divisorsWithin16Bits(random, src);
    const Placement place = Placement::any(random);
    Plane<Orb16u> expected(8, 8, place), actual(8, 8, place);
    PX(orbiDCTQuantInv8x8LS_JPEG_16s16u_C1R)
    (src.data(), expected.data(), expected.step(), table.data());
    ORB(orbiDCTQuantInv8x8LS_JPEG_16s16u_C1R)
    (src.data(), actual.data(), actual.step(), table.data());
    for (int i = 0; i < 64; ++i) {
      ASSERT_NEAR(actual.at(i % 8, i / 8), expected.at(i % 8, i / 8), kMayDiffer);
    }
    actual.expectOutsideUntouched();
  }
}

}  // namespace
