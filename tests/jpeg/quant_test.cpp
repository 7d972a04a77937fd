// Level shift and quantisation (ITU-T T.81 A.3.1, A.3.4).
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "tests/support/builds.h"
#include "tests/support/plane.h"

namespace {

using orbtest::Placement;
using orbtest::Plane;
using orbtest::Random;

// The zigzag order as figure A.6 of T.81 prints it.
constexpr int kFigureA6[64] = {0,  1,  5,  6,  14, 15, 27, 28, 2,  4,  7,  13, 16, 26, 29, 42,
                               3,  8,  12, 17, 25, 30, 41, 43, 9,  11, 18, 24, 31, 40, 44, 53,
                               10, 19, 23, 32, 39, 45, 52, 54, 20, 22, 33, 38, 46, 51, 55, 60,
                               21, 34, 37, 47, 50, 56, 59, 61, 35, 36, 48, 49, 57, 58, 62, 63};

// Sizes that leave every number of samples behind the vectors of every width.
constexpr int kWidths[] = {1, 2, 3, 7, 8, 9, 15, 16, 17, 31, 32, 33, 64, 71};

// ---- orbiAdd128_JPEG_16s8u_C1R, orbiSub128_JPEG_8u16s_C1R

template <class Function, class Src, class Dst>
void expectPlaneChecks(Function* function, Src, Dst) {
  Plane<Src> src(8, 2);
  Plane<Dst> dst(8, 2);
  const OrbiSize good = {8, 2};
  const OrbiSize noWidth = {0, 2};
  const OrbiSize noHeight = {8, 0};
  const OrbiSize negative = {-8, -2};
  // Each line has one fault fewer than the line above it, in the order of the checks.
  EXPECT_EQ(function(nullptr, 0, nullptr, 0, noWidth), orbStsNullPtrErr);
  EXPECT_EQ(function(src.data(), 0, nullptr, 0, noWidth), orbStsStepErr);
  EXPECT_EQ(function(src.data(), -1, nullptr, 0, noWidth), orbStsStepErr);
  EXPECT_EQ(function(src.data(), src.step(), nullptr, 0, noWidth), orbStsNullPtrErr);
  EXPECT_EQ(function(src.data(), src.step(), dst.data(), 0, noWidth), orbStsStepErr);
  EXPECT_EQ(function(src.data(), src.step(), dst.data(), dst.step(), noWidth), orbStsSizeErr);
  EXPECT_EQ(function(src.data(), src.step(), dst.data(), dst.step(), noHeight), orbStsSizeErr);
  EXPECT_EQ(function(src.data(), src.step(), dst.data(), dst.step(), negative), orbStsSizeErr);
  dst.expectUntouched();
  EXPECT_EQ(function(src.data(), src.step(), dst.data(), dst.step(), good), orbStsNoErr);
}

ORB_MEANING(orbiAdd128_JPEG_16s8u_C1R, ChecksInOrder) {
  expectPlaneChecks(ORB(orbiAdd128_JPEG_16s8u_C1R), Orb16s{}, Orb8u{});
}
ORB_MEANING(orbiSub128_JPEG_8u16s_C1R, ChecksInOrder) {
  expectPlaneChecks(ORB(orbiSub128_JPEG_8u16s_C1R), Orb8u{}, Orb16s{});
}

ORB_MEANING(orbiAdd128_JPEG_16s8u_C1R, AddsAndLimitsEveryValue) {
  Plane<Orb16s> src(256, 256);
  Plane<Orb8u> dst(256, 256);
  int next = -32768;
  src.fill([&] { return static_cast<Orb16s>(next++); });
  ASSERT_EQ(
      ORB(orbiAdd128_JPEG_16s8u_C1R)(src.data(), src.step(), dst.data(), dst.step(), src.size()),
      orbStsNoErr);
  for (int i = 0; i < 65536; ++i) {
    const int expected = std::clamp(i - 32768 + 128, 0, 255);
    ASSERT_EQ(dst.at(i % 256, i / 256), expected) << i - 32768;
  }
  dst.expectOutsideUntouched();
}

ORB_MEANING(orbiAdd128_JPEG_16s8u_C1R, LimitsStartAtTheEnds) {
  Plane<Orb16s> src(4, 1);
  Plane<Orb8u> dst(4, 1);
  const Orb16s values[] = {-129, -128, 127, 128};
  for (int i = 0; i < 4; ++i) src.set(i, 0, values[i]);
  ORB(orbiAdd128_JPEG_16s8u_C1R)(src.data(), src.step(), dst.data(), dst.step(), src.size());
  EXPECT_EQ(dst.samples(), (std::vector<Orb8u>{0, 0, 255, 255}));
}

ORB_MEANING(orbiSub128_JPEG_8u16s_C1R, SubtractsFromEveryValue) {
  for (const int width : kWidths) {
    Plane<Orb8u> src(width, 5, {3, 1});
    Plane<Orb16s> dst(width, 5, {5, 1});
    int next = 0;
    src.fill([&] { return static_cast<Orb8u>(next++ * 37); });
    ASSERT_EQ(
        ORB(orbiSub128_JPEG_8u16s_C1R)(src.data(), src.step(), dst.data(), dst.step(), src.size()),
        orbStsNoErr);
    for (int y = 0; y < 5; ++y) {
      for (int x = 0; x < width; ++x) ASSERT_EQ(dst.at(x, y), src.at(x, y) - 128);
    }
    dst.expectOutsideUntouched();
  }
}

ORB_MEANING(orbiSub128_JPEG_8u16s_C1R, AStepOfOneReadsOverlappingRows) {
  Plane<Orb8u> src(20, 1);
  Plane<Orb16s> dst(16, 4);
  int next = 0;
  src.fill([&] { return static_cast<Orb8u>(next++); });
  ASSERT_EQ(ORB(orbiSub128_JPEG_8u16s_C1R)(src.data(), 1, dst.data(), dst.step(), dst.size()),
            orbStsNoErr);
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 16; ++x) ASSERT_EQ(dst.at(x, y), x + y - 128);
  }
}

template <class Src, class Dst, class Function>
void expectPlanesAgree(Function* px, Function* build, Random& random) {
  for (int round = 0; round < 300; ++round) {
    const int width = round < 14 ? kWidths[round] : random.between(1, 80);
    const int height = random.between(1, 6);
    Plane<Src> src(width, height, Placement::any(random));
    const Placement place = Placement::any(random);
    Plane<Dst> expected(width, height, place), actual(width, height, place);
    if (random.oneIn(2)) {
      src.fillAny(random);
    } else {
      src.fillExtreme(random);
    }
    const OrbStatus status =
        px(src.data(), src.step(), expected.data(), expected.step(), src.size());
    EXPECT_EQ(build(src.data(), src.step(), actual.data(), actual.step(), src.size()), status);
    ASSERT_TRUE(actual.sameBytes(expected)) << width << " x " << height;
  }
}

ORB_AGREEMENT(orbiAdd128_JPEG_16s8u_C1R) {
  expectPlanesAgree<Orb16s, Orb8u>(PX(orbiAdd128_JPEG_16s8u_C1R), ORB(orbiAdd128_JPEG_16s8u_C1R),
                                   random);
}
ORB_AGREEMENT(orbiSub128_JPEG_8u16s_C1R) {
  expectPlanesAgree<Orb8u, Orb16s>(PX(orbiSub128_JPEG_8u16s_C1R), ORB(orbiSub128_JPEG_8u16s_C1R),
                                   random);
}

// ---- orbiQuantFwdRawTableInit_JPEG_8u

ORB_MEANING(orbiQuantFwdRawTableInit_JPEG_8u, ChecksInOrder) {
  Plane<Orb8u> table(64, 1);
  EXPECT_EQ(ORB(orbiQuantFwdRawTableInit_JPEG_8u)(nullptr, 0), orbStsNullPtrErr);
  EXPECT_EQ(ORB(orbiQuantFwdRawTableInit_JPEG_8u)(table.data(), 0), orbStsBadArgErr);
  EXPECT_EQ(ORB(orbiQuantFwdRawTableInit_JPEG_8u)(table.data(), -50), orbStsBadArgErr);
  table.expectUntouched();
}

ORB_MEANING(orbiQuantFwdRawTableInit_JPEG_8u, ScalesByQuality) {
  struct Case {
    int quality;
    double scale;  // per cent
  };
  const Case cases[] = {{1, 5000}, {2, 2500}, {3, 1666}, {49, 102}, {50, 100},  {51, 98},
                        {75, 50},  {99, 2},   {100, 0},  {101, -2}, {200, -200}};
  for (const Case& c : cases) {
    for (int first = 0; first < 256; first += 64) {
      Plane<Orb8u> table(64, 1, {0, 1});
      for (int i = 0; i < 64; ++i) table.set(i, 0, static_cast<Orb8u>(first + i));
      ASSERT_EQ(ORB(orbiQuantFwdRawTableInit_JPEG_8u)(table.data(), c.quality), orbStsNoErr);
      for (int i = 0; i < 64; ++i) {
        const double scaled = std::trunc(((first + i) * c.scale + 50) / 100);
        ASSERT_EQ(table.at(i), std::clamp(scaled, 1.0, 255.0)) << c.quality;
      }
      table.expectOutsideUntouched();
    }
  }
}

// The scale of 200 - 2 * quality wraps to 202 for the largest quality that there is.
ORB_MEANING(orbiQuantFwdRawTableInit_JPEG_8u, TheLargestQualityWraps) {
  Plane<Orb8u> table(64, 1);
  for (int i = 0; i < 64; ++i) table.set(i, 0, static_cast<Orb8u>(i + 1));
  ASSERT_EQ(ORB(orbiQuantFwdRawTableInit_JPEG_8u)(table.data(), 0x7FFFFFFF), orbStsNoErr);
  for (int i = 0; i < 64; ++i) ASSERT_EQ(table.at(i), ((i + 1) * 202 + 50) / 100);
}

ORB_AGREEMENT(orbiQuantFwdRawTableInit_JPEG_8u) {
  for (int round = 0; round < 500; ++round) {
    const Placement place = Placement::any(random);
    Plane<Orb8u> expected(64, 1, place), actual(64, 1, place);
    expected.fillAny(random);
    actual.copySamples(expected);
    const int quality = round < 200 ? round : random.extreme<Orb32s>();
    const OrbStatus status = PX(orbiQuantFwdRawTableInit_JPEG_8u)(expected.data(), quality);
    EXPECT_EQ(ORB(orbiQuantFwdRawTableInit_JPEG_8u)(actual.data(), quality), status);
    ASSERT_TRUE(actual.sameBytes(expected)) << quality;
  }
}

// ---- orbiQuantFwdTableInit_JPEG_8u16u, orbiQuantInvTableInit_JPEG_8u16u

template <class Function>
void expectTableChecks(Function* function) {
  Plane<Orb8u> raw(64, 1);
  Plane<Orb16u> table(64, 1);
  EXPECT_EQ(function(nullptr, table.data()), orbStsNullPtrErr);
  EXPECT_EQ(function(raw.data(), nullptr), orbStsNullPtrErr);
  table.expectUntouched();
}
ORB_MEANING(orbiQuantFwdTableInit_JPEG_8u16u, ChecksInOrder) {
  expectTableChecks(ORB(orbiQuantFwdTableInit_JPEG_8u16u));
}
ORB_MEANING(orbiQuantInvTableInit_JPEG_8u16u, ChecksInOrder) {
  expectTableChecks(ORB(orbiQuantInvTableInit_JPEG_8u16u));
}

// 32768 / q to nearest, where an even integer part is kept up to a fraction below 32769 / 65536 and
// an odd one up to a fraction below 32767 / 65536.
int reciprocal(int q) {
  const int64_t quotient = int64_t{0x80000000} / q;
  const int64_t whole = quotient / 65536;
  const int64_t fraction = quotient % 65536;
  return static_cast<int>(whole + (fraction >= (whole % 2 == 0 ? 32769 : 32767) ? 1 : 0));
}

ORB_MEANING(orbiQuantFwdTableInit_JPEG_8u16u, HoldsReciprocalsInRasterOrder) {
  for (int first = 1; first < 256; first += 48) {
    Plane<Orb8u> raw(64, 1, {0, 3});
    Plane<Orb16u> table(64, 1, {0, 1});
    for (int k = 0; k < 64; ++k) raw.set(k, 0, static_cast<Orb8u>((first + k - 1) % 255 + 1));
    ASSERT_EQ(ORB(orbiQuantFwdTableInit_JPEG_8u16u)(raw.data(), table.data()), orbStsNoErr);
    for (int i = 0; i < 64; ++i) {
      ASSERT_EQ(table.at(i), reciprocal(raw.at(kFigureA6[i]))) << +raw.at(kFigureA6[i]);
    }
    table.expectOutsideUntouched();
  }
}

ORB_MEANING(orbiQuantFwdTableInit_JPEG_8u16u, KnownReciprocals) {
  Plane<Orb8u> raw(64, 1);
  Plane<Orb16u> table(64, 1);
  raw.fill([] { return Orb8u{1}; });
  raw.set(1, 0, 2);
  raw.set(2, 0, 3);
  raw.set(63, 0, 255);
  ASSERT_EQ(ORB(orbiQuantFwdTableInit_JPEG_8u16u)(raw.data(), table.data()), orbStsNoErr);
  EXPECT_EQ(table.at(0), 32768);
  EXPECT_EQ(table.at(1), 16384);
  EXPECT_EQ(table.at(8), 10923);  // zigzag number 2 is below the first coefficient
  EXPECT_EQ(table.at(63), 129);
}

ORB_MEANING(orbiQuantFwdTableInit_JPEG_8u16u, AZeroDivisorIsAWarning) {
  for (int zero = 0; zero < 64; ++zero) {
    Plane<Orb8u> raw(64, 1);
    Plane<Orb16u> table(64, 1);
    raw.fill([] { return Orb8u{2}; });
    raw.set(zero, 0, 0);
    ASSERT_EQ(ORB(orbiQuantFwdTableInit_JPEG_8u16u)(raw.data(), table.data()), orbStsDivByZero);
    for (int i = 0; i < 64; ++i) {
      ASSERT_EQ(table.at(i), kFigureA6[i] == zero ? 65535 : 16384);
    }
  }
}

ORB_MEANING(orbiQuantInvTableInit_JPEG_8u16u, HoldsDivisorsInRasterOrder) {
  Plane<Orb8u> raw(64, 1, {0, 1});
  Plane<Orb16u> table(64, 1, {0, 1});
  for (int k = 0; k < 64; ++k) raw.set(k, 0, static_cast<Orb8u>(k * 4));
  ASSERT_EQ(ORB(orbiQuantInvTableInit_JPEG_8u16u)(raw.data(), table.data()), orbStsNoErr);
  for (int i = 0; i < 64; ++i) ASSERT_EQ(table.at(i), kFigureA6[i] * 4);
  table.expectOutsideUntouched();
}

template <class Function>
void expectTablesAgree(Function* px, Function* build, Random& random) {
  for (int round = 0; round < 200; ++round) {
    Plane<Orb8u> raw(64, 1, Placement::any(random));
    const Placement place = Placement::any(random);
    Plane<Orb16u> expected(64, 1, place), actual(64, 1, place);
    if (random.oneIn(2)) {
      raw.fillAny(random);
    } else {
      raw.fillExtreme(random);
    }
    EXPECT_EQ(build(raw.data(), actual.data()), px(raw.data(), expected.data()));
    ASSERT_TRUE(actual.sameBytes(expected));
  }
}
ORB_AGREEMENT(orbiQuantFwdTableInit_JPEG_8u16u) {
  expectTablesAgree(PX(orbiQuantFwdTableInit_JPEG_8u16u), ORB(orbiQuantFwdTableInit_JPEG_8u16u),
                    random);
}
ORB_AGREEMENT(orbiQuantInvTableInit_JPEG_8u16u) {
  expectTablesAgree(PX(orbiQuantInvTableInit_JPEG_8u16u), ORB(orbiQuantInvTableInit_JPEG_8u16u),
                    random);
}

// ---- orbiQuantFwd8x8_JPEG_16s_C1I, orbiQuantInv8x8_JPEG_16s_C1I

template <class Function>
void expectBlockChecks(Function* function) {
  Plane<Orb16s> block(64, 1);
  Plane<Orb16u> table(64, 1);
  EXPECT_EQ(function(nullptr, table.data()), orbStsNullPtrErr);
  EXPECT_EQ(function(block.data(), nullptr), orbStsNullPtrErr);
  block.expectUntouched();
}
ORB_MEANING(orbiQuantFwd8x8_JPEG_16s_C1I, ChecksInOrder) {
  expectBlockChecks(ORB(orbiQuantFwd8x8_JPEG_16s_C1I));
}
ORB_MEANING(orbiQuantInv8x8_JPEG_16s_C1I, ChecksInOrder) {
  expectBlockChecks(ORB(orbiQuantInv8x8_JPEG_16s_C1I));
}

// value * entry / 32768 to nearest, ties to even, limited.
int quantised(int value, int entry) {
  const double exact = static_cast<double>(value) * entry / 32768.0;  // without error
  return static_cast<int>(std::clamp(std::nearbyint(exact), -32768.0, 32767.0));
}

// The short road of the builds with SIMD: words only.
int quantisedShort(int value, int entry) {
  const int a = static_cast<int16_t>(static_cast<uint16_t>(value << 3));
  const int b = entry >> 1;
  const int high = static_cast<int>(std::floor(a * b / 65536.0));
  return static_cast<int>(std::floor((high + 1) / 2.0));
}
int dequantised(int value, int entry) {
  return std::clamp(value * static_cast<int16_t>(entry), -32768, 32767);
}
int dequantisedShort(int value, int entry) {
  return static_cast<int16_t>(static_cast<uint16_t>(value * static_cast<int16_t>(entry)));
}

// Runs the function over blocks and tables that `next` makes, at even and odd addresses. The plain
// rule holds in px, and in every build where an address is odd.
template <class Function, class Plain, class Short, class Next>
void expectBlocks(const orbtest::TestBuild& build, Function* function, Plain plain, Short shortForm,
                  int rounds, Next next) {
  for (int round = 0; round < rounds; ++round) {
    const int blockAt = round % 4 == 1 || round % 4 == 3 ? 1 : 0;
    const int tableAt = round % 4 == 2 || round % 4 == 3 ? 5 : 2;
    const bool odd = (blockAt | tableAt) & 1;
    Plane<Orb16s> block(64, 1, {0, blockAt});
    Plane<Orb16u> table(64, 1, {0, tableAt});
    for (int i = 0; i < 64; ++i) {
      const auto [value, entry] = next();
      block.set(i, 0, value);
      table.set(i, 0, entry);
    }
    const std::vector<Orb16s> before = block.samples();
    ASSERT_EQ(function(block.data(), table.data()), orbStsNoErr);
    for (int i = 0; i < 64; ++i) {
      const int expected = build.index == orb::kPx || odd ? plain(before[i], table.at(i))
                                                          : shortForm(before[i], table.at(i));
      ASSERT_EQ(block.at(i), expected) << before[i] << " with " << table.at(i);
    }
    block.expectOutsideUntouched();
    table.expectUntouched();
  }
}

ORB_MEANING(orbiQuantFwd8x8_JPEG_16s_C1I, RoundsOrTakesTheShortRoad) {
  Random random("quantise");
  expectBlocks(build, ORB(orbiQuantFwd8x8_JPEG_16s_C1I), quantised, quantisedShort, 2000, [&] {
    return std::pair(random.oneIn(3) ? random.extreme<Orb16s>() : random.any<Orb16s>(),
                     random.oneIn(3) ? random.extreme<Orb16u>() : random.any<Orb16u>());
  });
}
ORB_MEANING(orbiQuantInv8x8_JPEG_16s_C1I, LimitsOrTakesTheShortRoad) {
  Random random("dequantise");
  expectBlocks(build, ORB(orbiQuantInv8x8_JPEG_16s_C1I), dequantised, dequantisedShort, 2000, [&] {
    return std::pair(random.oneIn(3) ? random.extreme<Orb16s>() : random.any<Orb16s>(),
                     random.oneIn(3) ? random.extreme<Orb16u>() : random.any<Orb16u>());
  });
}

// At an odd address every build gives the plain result.
Orb16s quantiseOne(decltype(legacy90orbiQuantFwd8x8_JPEG_16s_C1I)* function, int value, int entry) {
  Plane<Orb16s> block(64, 1, {0, 1});
  Plane<Orb16u> table(64, 1);
  block.fill([&] { return static_cast<Orb16s>(value); });
  table.fill([&] { return static_cast<Orb16u>(entry); });
  function(block.data(), table.data());
  return block.at(63);
}
ORB_MEANING(orbiQuantFwd8x8_JPEG_16s_C1I, TiesGoToEven) {
  const auto function = ORB(orbiQuantFwd8x8_JPEG_16s_C1I);
  EXPECT_EQ(quantiseOne(function, 1, 16384), 0);
  EXPECT_EQ(quantiseOne(function, 3, 16384), 2);
  EXPECT_EQ(quantiseOne(function, -1, 16384), 0);
  EXPECT_EQ(quantiseOne(function, -3, 16384), -2);
  for (const int value : {-32768, -1, 0, 1, 32767}) {
    EXPECT_EQ(quantiseOne(function, value, 32768), value);
  }
}

// What the builds may differ by: one, for every value below 4096 and every table that there can be.
ORB_AGREEMENT(orbiQuantFwd8x8_JPEG_16s_C1I) {
  for (int divisor = 1; divisor < 256; ++divisor) {
    Plane<Orb16u> table(64, 1);
    table.fill([&] { return static_cast<Orb16u>(reciprocal(divisor)); });
    for (int first = -4095; first < 4096; first += 64) {
      Plane<Orb16s> expected(64, 1), actual(64, 1);
      for (int i = 0; i < 64; ++i) {
        expected.set(i, 0, static_cast<Orb16s>(std::min(first + i, 4095)));
      }
      actual.copySamples(expected);
      EXPECT_EQ(PX(orbiQuantFwd8x8_JPEG_16s_C1I)(expected.data(), table.data()), orbStsNoErr);
      EXPECT_EQ(ORB(orbiQuantFwd8x8_JPEG_16s_C1I)(actual.data(), table.data()), orbStsNoErr);
      for (int i = 0; i < 64; ++i) {
        ASSERT_LE(std::abs(actual.at(i) - expected.at(i)), 1)
            << std::min(first + i, 4095) << " / " << divisor;
      }
      actual.expectOutsideUntouched();
    }
  }
}

// The builds differ only where px limits.
ORB_AGREEMENT(orbiQuantInv8x8_JPEG_16s_C1I) {
  for (int round = 0; round < 2000; ++round) {
    const Placement place = Placement::any(random);
    Plane<Orb16u> table(64, 1, Placement::any(random));
    Plane<Orb16s> expected(64, 1, place), actual(64, 1, place);
    for (int i = 0; i < 64; ++i) {
      const int divisor = random.between(0, 255);
      const int most = divisor == 0 ? 32767 : 32767 / divisor;
      table.set(i, 0, static_cast<Orb16u>(divisor));
      expected.set(i, 0, static_cast<Orb16s>(random.between(-most, most)));
    }
    actual.copySamples(expected);
    EXPECT_EQ(PX(orbiQuantInv8x8_JPEG_16s_C1I)(expected.data(), table.data()), orbStsNoErr);
    EXPECT_EQ(ORB(orbiQuantInv8x8_JPEG_16s_C1I)(actual.data(), table.data()), orbStsNoErr);
    ASSERT_TRUE(actual.sameBytes(expected));
  }
}

}  // namespace
