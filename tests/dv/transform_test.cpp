// The 2-4-8 transforms, zeros, and the weights of DV100.
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <vector>

#include "tests/support/builds.h"
#include "tests/support/plane.h"

namespace {

using orbtest::Placement;
using orbtest::Plane;
using orbtest::Random;

using Block = std::array<Orb16s, 64>;

// ---- What the transforms are

int32_t cut32(int64_t value) {
  return static_cast<int32_t>(static_cast<uint32_t>(value));
}
int64_t floorShift(int64_t value, int bits) {
  const int64_t divisor = int64_t{1} << bits;
  return value >= 0 ? value / divisor : -((-value + divisor - 1) / divisor);
}
Orb16s cut16(int64_t value) {
  return static_cast<Orb16s>(static_cast<uint16_t>(value));
}
// Sums of 32 bits that are rounded and shifted.
int64_t rounded(int64_t sum, int bits) {
  return floorShift(cut32(cut32(sum) + (int64_t{1} << (bits - 1))), bits);
}

// Each output of the columns as factors of the eight samples: `plain` ones, and those of the terms
// that are multiplied by 27146 / 65536.
struct ColumnOutput {
  int plain[8];
  int tangent[8];
};
constexpr ColumnOutput kColumnOutputs[8] = {
    {{1, 1, 1, 1, 1, 1, 1, 1}, {}},     {{1, 1, 0, 0, 0, 0, -1, -1}, {0, 0, 1, 1, -1, -1, 0, 0}},
    {{1, 1, -1, -1, -1, -1, 1, 1}, {}}, {{0, 0, -1, -1, 1, 1, 0, 0}, {1, 1, 0, 0, 0, 0, -1, -1}},
    {{1, -1, 1, -1, 1, -1, 1, -1}, {}}, {{1, -1, 0, 0, 0, 0, -1, 1}, {0, 0, 1, -1, -1, 1, 0, 0}},
    {{1, -1, -1, 1, -1, 1, 1, -1}, {}}, {{0, 0, -1, 1, 1, -1, 0, 0}, {1, -1, 0, 0, 0, 0, -1, 1}},
};

// By how many sixteenths of a turn each sample's cosine is from output k's, as factors of the rows:
// the indexes of A, C, D, M0 to M3 in the sets, negative for a minus; 1 stands for A.
constexpr int kA = 1, kC = 2, kD = 3, kM0 = 4, kM1 = 5, kM2 = 6, kM3 = 7;
constexpr int kRowOutputs[8][4] = {
    {kA, kA, kA, kA},   {kM0, kM1, kM2, kM3},  {kC, kD, -kD, -kC}, {kM1, -kM3, -kM0, -kM2},
    {kA, -kA, -kA, kA}, {kM2, -kM0, kM3, kM1}, {kD, -kC, kC, -kD}, {kM3, -kM2, kM1, -kM0}};
constexpr int kFactors[2][8] = {{0, 8192, 10703, 4433, 11363, 9633, 6436, 2260},
                                {0, 10703, 13985, 5793, 14846, 12586, 8410, 2953}};

Block modelForward(const Block& samples) {
  Block columns;
  for (int x = 0; x < 8; ++x) {
    for (int k = 0; k < 8; ++k) {
      int64_t plain = 0, tangent = 0;
      for (int y = 0; y < 8; ++y) {
        plain += kColumnOutputs[k].plain[y] * samples[8 * y + x];
        tangent += kColumnOutputs[k].tangent[y] * samples[8 * y + x];
      }
      columns[8 * k + x] = cut16(plain + rounded(cut32(tangent * 27146), 16));
    }
  }
  Block result;
  for (int y = 0; y < 8; ++y) {
    for (int k = 0; k < 8; ++k) {
      int64_t sum = 0;
      for (int x = 0; x < 8; ++x) {
        const int which = kRowOutputs[k][x < 4 ? x : 7 - x];
        const int factor = which < 0 ? -kFactors[y % 2][-which] : kFactors[y % 2][which];
        sum += int64_t{x > 3 && k % 2 == 1 ? -factor : factor} * columns[8 * y + x];
      }
      result[8 * y + k] = cut16(rounded(sum, 16));
    }
  }
  return result;
}

Block modelInverse(const Block& coefficients) {
  Block rows;
  for (int y = 0; y < 8; ++y) {
    const auto x = [&](int k) { return int64_t{coefficients[8 * y + k]}; };
    // o1 and o2 are halved by a shift of 11, a factor of 11585 and a shift of 3.
    const auto turned = [](int64_t sum) {
      return floorShift(cut32(floorShift(cut32(cut32(sum) + int64_t{1024}), 11) * 11585), 3);
    };
    const int64_t e0 = 22725 * x(1) + 4520 * x(7), e1 = 4520 * x(1) - 22725 * x(7);
    const int64_t e2 = 19265 * x(3) + 12872 * x(5), e3 = 19265 * x(5) - 12872 * x(3);
    const int64_t odd[4] = {e0 + e2, turned(e0 + e1 - e2 - e3), turned(e0 - e1 - e2 + e3), e1 + e3};
    for (int k = 0; k < 4; ++k) {
      const int64_t signs[4][2] = {{1, 1}, {-1, 1}, {-1, -1}, {1, -1}};
      const int64_t outer = 16384 * (x(0) + signs[k][0] * x(4));
      const int64_t inner =
          k == 0 || k == 3 ? 21406 * x(2) + 8866 * x(6) : 8866 * x(2) - 21406 * x(6);
      const int64_t even = outer + signs[k][1] * inner;
      rows[8 * y + k] = cut16(rounded(even + odd[k], 14));
      rows[8 * y + 7 - k] = cut16(rounded(even - odd[k], 14));
    }
  }
  Block result;
  for (int x = 0; x < 8; ++x) {
    for (int k = 0; k < 4; ++k) {
      int64_t halves[2];
      for (int half = 0; half < 2; ++half) {
        const auto r = [&](int i) { return int64_t{rows[8 * (4 * half + i) + x]}; };
        const int64_t cosines[4][4] = {{16384, 21406, 16384, 8866},
                                       {16384, 8866, -16384, -21406},
                                       {16384, -8866, -16384, 21406},
                                       {16384, -21406, 16384, -8866}};
        int64_t sum = 0;
        for (int i = 0; i < 4; ++i) sum += cosines[k][i] * r(i);
        halves[half] = rounded(sum, 17);
      }
      result[16 * k + x] = cut16(halves[0] + halves[1]);
      result[16 * k + 8 + x] = cut16(halves[0] - halves[1]);
    }
  }
  return result;
}

// ---- Blocks at any address

using InPlace = OrbStatus(ORB_CALL*)(Orb16s*);

Block apply(InPlace function, const Block& block, Random& random) {
  Plane<Orb16s> memory = orbtest::makeRow<Orb16s>(64, Placement::any(random));
  for (int i = 0; i < 64; ++i) memory.set(i, 0, block[i]);
  EXPECT_EQ(function(memory.data()), orbStsNoErr);
  memory.expectOutsideUntouched();
  Block result;
  for (int i = 0; i < 64; ++i) result[i] = memory.at(i);
  return result;
}

// Samples, anything, or the ends of the range.
Block anyBlock(Random& random) {
  Block block;
  const int kind = random.between(0, 3);
  for (Orb16s& value : block) {
    value = kind == 0         ? random.between<Orb16s>(-128, 127)
            : kind == 1       ? random.any<Orb16s>()
            : kind == 2       ? random.extreme<Orb16s>()
            : random.oneIn(6) ? random.between<Orb16s>(-2000, 2000)
                              : Orb16s{0};
  }
  return block;
}

void expectModel(InPlace function, Block (*model)(const Block&)) {
  Random random("model");
  for (int round = 0; round < 2000; ++round) {
    const Block block = anyBlock(random);
    ASSERT_EQ(apply(function, block, random), model(block)) << "round " << round;
  }
  // One value alone, so that every factor shows.
  for (int i = 0; i < 64; ++i) {
    for (const int value : {1, -1, 1000, -32768, 32767}) {
      Block block = {};
      block[i] = static_cast<Orb16s>(value);
      ASSERT_EQ(apply(function, block, random), model(block)) << value << " at " << i;
    }
  }
}

void expectAgreement(InPlace function, InPlace reference, Random& random) {
  for (int round = 0; round < 2000; ++round) {
    const Block block = anyBlock(random);
    ASSERT_EQ(apply(function, block, random), apply(reference, block, random));
  }
}

// The transform of IEC 61834-2: the sums and differences of lines 2 k and 2 k + 1, each by a DCT of
// four lines and eight columns, with a factor that makes it orthonormal.
double cosine(int size, int frequency, int at) {
  const double scale = std::sqrt((frequency == 0 ? 1.0 : 2.0) / size);
  return scale * std::cos((2 * at + 1) * frequency * std::acos(-1.0) / (2 * size));
}
// Of coefficient row v and column h, the share of line y and column x.
double basis(int v, int h, int y, int x) {
  const double sign = v < 4 || y % 2 == 0 ? 1 : -1;
  return sign * std::sqrt(0.5) * cosine(4, v % 4, y / 2) * cosine(8, h, x);
}

ORB_MEANING(orbiDCT2x4x8Frw_16s_C1I, TheStandardsTransform) {
  Random random("standard");
  for (int round = 0; round < 20; ++round) {
    Block samples;
    for (Orb16s& value : samples) value = random.between<Orb16s>(-128, 127);
    const Block result = apply(ORB(orbiDCT2x4x8Frw_16s_C1I), samples, random);
    for (int i = 0; i < 64; ++i) {
      double sum = 0;
      for (int k = 0; k < 64; ++k) sum += samples[k] * basis(i / 8, i % 8, k / 8, k % 8);
      ASSERT_NEAR(result[i], sum, 1.1) << "at " << i;
    }
  }
}
ORB_MEANING(orbiDCT2x4x8Inv_16s_C1I, TheStandardsTransform) {
  Random random("standard");
  for (int round = 0; round < 20; ++round) {
    Block coefficients;
    for (Orb16s& value : coefficients) value = random.between<Orb16s>(-100, 100);
    const Block result = apply(ORB(orbiDCT2x4x8Inv_16s_C1I), coefficients, random);
    for (int k = 0; k < 64; ++k) {
      double sum = 0;
      for (int i = 0; i < 64; ++i) sum += coefficients[i] * basis(i / 8, i % 8, k / 8, k % 8);
      ASSERT_NEAR(result[k], sum, 1.6) << "at " << k;
    }
  }
}

ORB_MEANING(orbiDCT2x4x8Frw_16s_C1I, ToTheBit) {
  expectModel(ORB(orbiDCT2x4x8Frw_16s_C1I), modelForward);
}
ORB_MEANING(orbiDCT2x4x8Inv_16s_C1I, ToTheBit) {
  expectModel(ORB(orbiDCT2x4x8Inv_16s_C1I), modelInverse);
}

ORB_MEANING(orbiDCT2x4x8Frw_16s_C1I, FlatBlocks) {
  Random random("flat");
  for (const int value : {0, 1, -1, 127, -128, 4095, -4096}) {
    Block flat;
    flat.fill(static_cast<Orb16s>(value));
    Block expected = {};
    expected[0] = static_cast<Orb16s>(8 * value);
    EXPECT_EQ(apply(ORB(orbiDCT2x4x8Frw_16s_C1I), flat, random), expected) << value;
    if (std::abs(value) <= 128) {
      EXPECT_EQ(apply(ORB(orbiDCT2x4x8Inv_16s_C1I), expected, random), flat) << value;
    }
  }
}

ORB_MEANING(orbiDCT2x4x8Inv_16s_C1I, BringsSamplesBackToWithin2) {
  Random random("back");
  for (int round = 0; round < 500; ++round) {
    Block samples;
    for (Orb16s& value : samples) value = random.between<Orb16s>(-128, 127);
    const Block back = apply(ORB(orbiDCT2x4x8Inv_16s_C1I),
                             apply(ORB(orbiDCT2x4x8Frw_16s_C1I), samples, random), random);
    for (int i = 0; i < 64; ++i) ASSERT_LE(std::abs(back[i] - samples[i]), 2);
  }
}

ORB_MEANING(orbiDCT2x4x8Frw_16s_C1I, Checks) {
  EXPECT_EQ(ORB(orbiDCT2x4x8Frw_16s_C1I)(nullptr), orbStsNullPtrErr);
}
ORB_MEANING(orbiDCT2x4x8Inv_16s_C1I, Checks) {
  EXPECT_EQ(ORB(orbiDCT2x4x8Inv_16s_C1I)(nullptr), orbStsNullPtrErr);
}

ORB_AGREEMENT(orbiDCT2x4x8Frw_16s_C1I) {
  expectAgreement(ORB(orbiDCT2x4x8Frw_16s_C1I), PX(orbiDCT2x4x8Frw_16s_C1I), random);
}
ORB_AGREEMENT(orbiDCT2x4x8Inv_16s_C1I) {
  expectAgreement(ORB(orbiDCT2x4x8Inv_16s_C1I), PX(orbiDCT2x4x8Inv_16s_C1I), random);
}

// ---- Zeros

Plane<Orb16s> sparseBlock(Random& random, int* zeros) {
  Plane<Orb16s> block = orbtest::makeRow<Orb16s>(64, Placement::any(random));
  const int share = random.between(1, 8);
  *zeros = 0;
  block.fill([&] {
    Orb16s value = 0;
    if (random.oneIn(share)) value = random.oneIn(2) ? Orb16s{256} : random.extreme<Orb16s>();
    *zeros += value == 0;
    return value;
  });
  return block;
}

ORB_MEANING(orbiCountZeros8x8_16s_C1, Counts) {
  Random random("zeros");
  for (int round = 0; round < 300; ++round) {
    int expected = 0;
    Plane<Orb16s> block = sparseBlock(random, &expected);
    Plane<Orb32s> zeros = orbtest::makeRow<Orb32s>(1, Placement::any(random));
    ASSERT_EQ(ORB(orbiCountZeros8x8_16s_C1)(block.data(), zeros.data()), orbStsNoErr);
    ASSERT_EQ(zeros.at(0), expected);
    block.expectUntouched();
    zeros.expectOutsideUntouched();
  }
  for (const int value : {0, 1}) {
    Block block;
    block.fill(static_cast<Orb16s>(value));
    Orb32s zeros = -1;
    EXPECT_EQ(ORB(orbiCountZeros8x8_16s_C1)(block.data(), &zeros), orbStsNoErr);
    EXPECT_EQ(zeros, value == 0 ? 64 : 0);
    EXPECT_EQ(ORB(orbiCountZeros8x8_16s_C1)(block.data(), nullptr), orbStsNullPtrErr);
    EXPECT_EQ(ORB(orbiCountZeros8x8_16s_C1)(nullptr, &zeros), orbStsNullPtrErr);
    EXPECT_EQ(zeros, value == 0 ? 64 : 0);
  }
}
ORB_AGREEMENT(orbiCountZeros8x8_16s_C1) {
  for (int round = 0; round < 300; ++round) {
    int unused = 0;
    const Plane<Orb16s> block = sparseBlock(random, &unused);
    Orb32s ours = -1, reference = -1;
    ASSERT_EQ(ORB(orbiCountZeros8x8_16s_C1)(block.data(), &ours), orbStsNoErr);
    ASSERT_EQ(PX(orbiCountZeros8x8_16s_C1)(block.data(), &reference), orbStsNoErr);
    ASSERT_EQ(ours, reference);
  }
}

// ---- Weights of DV100

using Weight = OrbStatus(ORB_CALL*)(Orb16s*, const Orb16s*, Orb32s);

// What a decoder hands over, or anything; steps too.
struct WeightCase {
  Plane<Orb16s> block;
  Plane<Orb16s> weights;
  Orb32s qp;

  explicit WeightCase(Random& random)
      : block(orbtest::makeRow<Orb16s>(64, Placement::any(random))),
        weights(orbtest::makeRow<Orb16s>(64, Placement::any(random))) {
    const int kind = random.between(0, 2);
    block.fill([&] {
      return kind == 0   ? static_cast<Orb16s>(random.between(-255, 255) * 64)
             : kind == 1 ? random.any<Orb16s>()
                         : random.extreme<Orb16s>();
    });
    weights.fill(
        [&] { return kind == 0 ? random.between<Orb16s>(16, 492) : random.extreme<Orb16s>(); });
    qp = kind == 0 ? random.between(0, 416) : random.extreme<Orb32s>();
  }
};

ORB_MEANING(orbiQuantWeightBlockInv_DV100_16s_C1I, Weights) {
  Random random("weights");
  for (int round = 0; round < 500; ++round) {
    WeightCase c(random);
    const std::vector<Orb16s> before = c.block.samples();
    ASSERT_EQ(ORB(orbiQuantWeightBlockInv_DV100_16s_C1I)(c.block.data(), c.weights.data(), c.qp),
              orbStsNoErr);
    ASSERT_EQ(c.block.at(0), floorShift(before[0], 5));
    for (int i = 1; i < 64; ++i) {
      const int64_t product =
          cut32(cut32(floorShift(before[i], 6) * c.qp) * int64_t{c.weights.at(i)});
      ASSERT_EQ(c.block.at(i), cut16(floorShift(product, 5))) << i;
    }
    c.block.expectOutsideUntouched();
    c.weights.expectUntouched();
  }
}
ORB_MEANING(orbiQuantWeightBlockInv_DV100_16s_C1I, AStepOfZero) {
  Block block, weights;
  block.fill(-33);
  weights.fill(100);
  ASSERT_EQ(ORB(orbiQuantWeightBlockInv_DV100_16s_C1I)(block.data(), weights.data(), 0),
            orbStsNoErr);
  Block expected = {};
  expected[0] = -2;
  EXPECT_EQ(block, expected);
}
ORB_MEANING(orbiQuantWeightBlockInv_DV100_16s_C1I, Checks) {
  Block block, weights = {};
  block.fill(3);
  const Block before = block;
  EXPECT_EQ(ORB(orbiQuantWeightBlockInv_DV100_16s_C1I)(nullptr, weights.data(), 1),
            orbStsNullPtrErr);
  EXPECT_EQ(ORB(orbiQuantWeightBlockInv_DV100_16s_C1I)(block.data(), nullptr, 1), orbStsNullPtrErr);
  EXPECT_EQ(block, before);
}
ORB_AGREEMENT(orbiQuantWeightBlockInv_DV100_16s_C1I) {
  for (int round = 0; round < 500; ++round) {
    WeightCase c(random);
    Plane<Orb16s> reference = orbtest::makeRow<Orb16s>(64);
    reference.copySamples(c.block);
    ASSERT_EQ(ORB(orbiQuantWeightBlockInv_DV100_16s_C1I)(c.block.data(), c.weights.data(), c.qp),
              orbStsNoErr);
    ASSERT_EQ(PX(orbiQuantWeightBlockInv_DV100_16s_C1I)(reference.data(), c.weights.data(), c.qp),
              orbStsNoErr);
    ASSERT_EQ(c.block.samples(), reference.samples());
  }
}

}  // namespace
