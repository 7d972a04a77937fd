// From the answers of CPUID and XGETBV to the feature word, and from the word to the build.
#include "frame/cpu.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "tests/support/fake_cpu.h"
#include "tests/support/random.h"

namespace {

using orb::CpuidAnswer;
using orbtest::bit;
using orbtest::FakeCpu;
using orbtest::kExtended0;
using orbtest::kExtended1;
using orbtest::kFamilyBLeaf;
using orbtest::kLeaf0;
using orbtest::kLeaf1;
using orbtest::kLeaf7;
using orbtest::Leaf;
using orbtest::Random;

uint32_t wordOf(FakeCpu cpu) {
  return orb::featureWord(cpu);
}

// ---- The feature word, bit by bit

enum Register { kEax, kEbx, kEcx, kEdx };

uint32_t& registerOf(CpuidAnswer& answer, Register reg) {
  uint32_t* const all[] = {&answer.eax, &answer.ebx, &answer.ecx, &answer.edx};
  return *all[reg];
}

// The bits of the word that one bit of one register decides by itself.
struct Row {
  Leaf leaf;
  Register reg;
  int position;
  int feature;
};
const Row kRows[] = {
    {kLeaf1, kEdx, 23, 0},      // MMX
    {kLeaf1, kEdx, 25, 1},      // SSE
    {kLeaf1, kEdx, 26, 2},      // SSE2
    {kLeaf1, kEcx, 0, 3},       // SSE3
    {kLeaf1, kEcx, 9, 4},       // SSSE3
    {kLeaf1, kEcx, 22, 5},      // MOVBE
    {kLeaf1, kEcx, 19, 6},      // SSE4.1
    {kLeaf1, kEcx, 20, 7},      // SSE4.2
    {kLeaf1, kEcx, 28, 8},      // AVX, offered
    {kLeaf1, kEcx, 25, 10},     // AES
    {kLeaf1, kEcx, 1, 11},      // PCLMULQDQ
    {kLeaf1, kEcx, 30, 13},     // RDRAND
    {kLeaf1, kEcx, 29, 14},     // F16C
    {kLeaf7, kEbx, 19, 16},     // ADX
    {kLeaf7, kEbx, 18, 17},     // RDSEED
    {kExtended1, kEcx, 8, 18},  // PREFETCHW
    {kLeaf7, kEbx, 29, 19},     // SHA
};

TEST(FeatureWord, NothingFromNothing) {
  EXPECT_EQ(wordOf(FakeCpu()), 0u);
}

// Each bit of each answer alone: it gives its own feature, or none.
TEST(FeatureWord, EachBitAlone) {
  for (const Leaf& leaf : {kLeaf1, kLeaf7, kExtended1}) {
    for (const Register reg : {kEax, kEbx, kEcx, kEdx}) {
      for (int position = 0; position < 32; ++position) {
        uint32_t expected = 0;
        for (const Row& row : kRows) {
          if (row.leaf == leaf && row.reg == reg && row.position == position) {
            expected |= bit(row.feature);
          }
        }
        FakeCpu cpu;
        registerOf(cpu.leaves[leaf], reg) = bit(position);
        EXPECT_EQ(wordOf(cpu), expected)
            << "leaf " << leaf.first << " register " << reg << " bit " << position;
      }
    }
  }
}

// And each bit alone missing: everything else stays.
TEST(FeatureWord, EachBitMissing) {
  FakeCpu full;
  full.leaves[kLeaf1] = {0xB10, ~0u, ~0u, ~0u};
  full.leaves[kLeaf7] = {~0u, ~0u, ~0u, ~0u};
  full.leaves[kExtended1] = {~0u, ~0u, ~0u, ~0u};
  full.leaves[kFamilyBLeaf] = {~0u, ~0u, ~0u, ~0u};
  full.control = ~0u;
  EXPECT_EQ(wordOf(full), 0x800FFFFFu);
  for (const Row& row : kRows) {
    FakeCpu cpu = full;
    registerOf(cpu.leaves[row.leaf], row.reg) &= ~bit(row.position);
    // AVX that is not offered takes with it what the operating system says of its state.
    const uint32_t lost = row.feature == 8 ? bit(8) | bit(9) : bit(row.feature);
    EXPECT_EQ(wordOf(cpu), 0x800FFFFFu & ~lost) << "feature " << row.feature;
  }
}

TEST(FeatureWord, BitsTwentyToThirtyAreNeverSet) {
  Random random("feature word");
  for (int round = 0; round < 20000; ++round) {
    FakeCpu cpu;
    for (auto& [leaf, answer] : cpu.leaves) {
      for (const Register reg : {kEax, kEbx, kEcx, kEdx}) {
        registerOf(answer, reg) = random.extreme<uint32_t>();
      }
    }
    cpu.control = random.extreme<uint32_t>();
    ASSERT_EQ(wordOf(cpu) & 0x7FF00000u, 0u);
  }
}

// ---- Leaves that are not offered are not asked for

TEST(FeatureWord, AsksForEachLeafOnce) {
  FakeCpu cpu;
  orb::featureWord(cpu);
  for (const Leaf& leaf : {kLeaf0, kLeaf1, kLeaf7, kExtended0, kExtended1}) {
    EXPECT_EQ(cpu.timesAsked(leaf), 1) << leaf.first;
  }
  EXPECT_EQ(cpu.asked.size(), 5u);
}

TEST(FeatureWord, LeafSevenOnlyWhereItIsOffered) {
  for (const uint32_t highest : {0u, 1u, 2u, 6u, 7u, 8u, 0x16u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    FakeCpu cpu;
    cpu.leaves[kLeaf0].eax = highest;
    cpu.leaves[kLeaf1].ecx = bit(12);  // FMA: all that the AVX2 class wants of leaf 1
    cpu.leaves[kLeaf7] = {~0u, ~0u, ~0u, ~0u};
    const uint32_t word = orb::featureWord(cpu);
    if (highest >= 7) {
      EXPECT_EQ(cpu.timesAsked(kLeaf7), 1) << highest;
      EXPECT_EQ(word, bit(15) | bit(16) | bit(17) | bit(19)) << highest;
    } else {
      EXPECT_EQ(cpu.timesAsked(kLeaf7), 0) << highest;
      EXPECT_EQ(word, 0u) << highest;
    }
  }
}

// A processor without extended leaves may answer anything there, its highest standard leaf for one.
TEST(FeatureWord, ExtendedLeavesOnlyWhereTheyAreOffered) {
  for (const uint32_t highest :
       {0u, 7u, 0x16u, 0x7FFFFFFFu, 0x80000000u, 0x80000001u, 0x80000008u, 0xFFFFFFFFu}) {
    FakeCpu cpu;
    cpu.leaves[kExtended0].eax = highest;
    cpu.leaves[kExtended1] = {~0u, ~0u, ~0u, ~0u};
    const uint32_t word = orb::featureWord(cpu);
    const bool offered = highest >= 0x80000001;
    EXPECT_EQ(cpu.timesAsked(kExtended1), offered ? 1 : 0) << highest;
    EXPECT_EQ(word, offered ? bit(18) : 0u) << highest;
  }
}

// ---- The state of AVX

// XGETBV faults without OSXSAVE; it runs only where AVX is offered too.
TEST(FeatureWord, AvxStateWantsProcessorAndOperatingSystem) {
  for (const bool osxsave : {false, true}) {
    for (const bool avx : {false, true}) {
      for (uint32_t control = 0; control < 16; ++control) {
        FakeCpu cpu;
        cpu.leaves[kLeaf1].ecx = (osxsave ? bit(27) : 0) | (avx ? bit(28) : 0);
        cpu.control = control;
        const uint32_t word = orb::featureWord(cpu);
        EXPECT_EQ(cpu.xgetbvRuns, osxsave && avx ? 1 : 0);
        const bool saved = (control & 6) == 6;
        EXPECT_EQ(word, (avx ? bit(8) : 0u) | (osxsave && avx && saved ? bit(9) : 0u))
            << osxsave << avx << " " << control;
      }
    }
  }
}

TEST(FeatureWord, AvxStateWantsNeitherX87NorLaterState) {
  FakeCpu cpu;
  cpu.leaves[kLeaf1].ecx = bit(27) | bit(28);
  cpu.control = ~uint32_t{6};
  EXPECT_EQ(wordOf(cpu), bit(8));
  cpu.control = 6;
  EXPECT_EQ(wordOf(cpu), bit(8) | bit(9));
}

// ---- The AVX2 class

TEST(FeatureWord, Avx2ClassWantsAllFour) {
  for (int which = 0; which < 16; ++which) {
    FakeCpu cpu;
    if (which & 1) cpu.leaves[kLeaf1].ecx |= bit(12);  // FMA
    if (which & 2) cpu.leaves[kLeaf7].ebx |= bit(5);   // AVX2
    if (which & 4) cpu.leaves[kLeaf7].ebx |= bit(3);   // BMI1
    if (which & 8) cpu.leaves[kLeaf7].ebx |= bit(8);   // BMI2
    EXPECT_EQ(wordOf(cpu), which == 15 ? bit(15) : 0u) << which;
  }
}

// ---- Family 0xB

TEST(FeatureWord, FamilyBHasALeafOfItsOwn) {
  for (uint32_t field = 0; field < 256; ++field) {
    for (const uint32_t rest : {0u, 0xFFFFF00Fu}) {
      for (const uint32_t edx : {0u, 2u, ~uint32_t{2}, ~0u}) {
        FakeCpu cpu;
        cpu.leaves[kLeaf1].eax = field << 4 | rest;
        cpu.leaves[kFamilyBLeaf] = {~0u, ~0u, ~0u, edx};
        const uint32_t word = orb::featureWord(cpu);
        const bool family = field >> 4 == 0xB;
        ASSERT_EQ(cpu.timesAsked(kFamilyBLeaf), family ? 1 : 0) << field;
        ASSERT_EQ(word, (family && (edx & 2) ? bit(12) : 0u) | (field == 0xB1 ? bit(31) : 0u))
            << field;
      }
    }
  }
}

// ---- The processor that the tests run on, judged by the compiler's own library

TEST(HostCpu, AgreesWithTheCompilersLibrary) {
  orb::HostCpu cpu;
  ASSERT_TRUE(cpu.hasCpuid());
  const uint32_t word = orb::featureWord(cpu);
  const auto has = [word](uint32_t mask) { return (word & mask) == mask; };
  EXPECT_EQ(has(orb::kMmx), __builtin_cpu_supports("mmx") != 0);
  EXPECT_EQ(has(orb::kSse), __builtin_cpu_supports("sse") != 0);
  EXPECT_EQ(has(orb::kSse2), __builtin_cpu_supports("sse2") != 0);
  EXPECT_EQ(has(orb::kSse3), __builtin_cpu_supports("sse3") != 0);
  EXPECT_EQ(has(orb::kSsse3), __builtin_cpu_supports("ssse3") != 0);
  EXPECT_EQ(has(orb::kSse41), __builtin_cpu_supports("sse4.1") != 0);
  EXPECT_EQ(has(orb::kSse42), __builtin_cpu_supports("sse4.2") != 0);
  EXPECT_EQ(has(orb::kAes), __builtin_cpu_supports("aes") != 0);
  EXPECT_EQ(has(orb::kPclmulqdq), __builtin_cpu_supports("pclmul") != 0);
  // That library's answer counts the operating system in.
  EXPECT_EQ(has(orb::kAvx | orb::kAvxState), __builtin_cpu_supports("avx") != 0);
  EXPECT_EQ(has(orb::kAvx | orb::kAvxState | orb::kAvx2Class),
            __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
                __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2"));
}

// ---- The choice of build

struct Choice {
  orb::Build build;
  uint32_t mask;
};

// Which bits of the word a build keeps.
uint32_t bits(std::vector<std::pair<int, int>> ranges) {
  uint32_t mask = 0;
  for (const auto& [first, last] : ranges) {
    for (int n = first; n <= last; ++n) mask |= bit(n);
  }
  return mask;
}
const Choice kChoices[] = {
    {orb::kPx, bits({{0, 1}})},
    {orb::kW7, bits({{0, 2}})},
    {orb::kV8, bits({{0, 4}})},
    {orb::kS8, bits({{0, 5}})},
    {orb::kP8, bits({{0, 4}, {6, 7}, {10, 11}, {19, 19}})},
    {orb::kG9, bits({{0, 4}, {6, 11}, {13, 14}, {19, 19}})},
    {orb::kH9, bits({{0, 11}, {13, 19}})},
};

TEST(ChooseBuild, NumbersOfTheBuilds) {
  EXPECT_EQ(orb::kPx, 0);
  EXPECT_EQ(orb::kW7, 1);
  EXPECT_EQ(orb::kV8, 2);
  EXPECT_EQ(orb::kS8, 3);
  EXPECT_EQ(orb::kP8, 4);
  EXPECT_EQ(orb::kG9, 5);
  EXPECT_EQ(orb::kH9, 6);
  EXPECT_EQ(orb::kBuildCount, 7);
}

TEST(ChooseBuild, Masks) {
  const uint32_t masks[] = {0x3, 0x7, 0x1F, 0x3F, 0x80CDF, 0x86FDF, 0xFEFFF};
  for (int i = 0; i < 7; ++i) EXPECT_EQ(kChoices[i].mask, masks[i]) << i;
}

void expectChoice(uint32_t word, bool avxAdmitted, orb::Build build) {
  const orb::BuildChoice choice = orb::chooseBuild(word, avxAdmitted);
  EXPECT_EQ(choice.build, build) << std::hex << word;
  EXPECT_EQ(choice.featureMask, kChoices[build].mask) << std::hex << word;
}

TEST(ChooseBuild, EachClass) {
  expectChoice(0, true, orb::kPx);
  expectChoice(0x3, true, orb::kPx);
  expectChoice(0x7, true, orb::kW7);
  expectChoice(0xF, true, orb::kW7);  // SSE3 earns no build
  expectChoice(0x1F, true, orb::kV8);
  expectChoice(0x3F, true, orb::kS8);
  expectChoice(0x5F, true, orb::kP8);
  expectChoice(0xDF, true, orb::kP8);
  expectChoice(0x3DF, true, orb::kG9);
  expectChoice(0x83DF, true, orb::kH9);
}

TEST(ChooseBuild, TheOrderOfTheTests) {
  expectChoice(bit(2) | bit(5), true, orb::kW7);  // MOVBE without SSSE3
  expectChoice(bit(5), true, orb::kPx);           // MOVBE alone
  expectChoice(0x7F, true, orb::kP8);             // SSE4.1 with MOVBE
  expectChoice(0x1DF, true, orb::kP8);            // AVX, but not its state
  expectChoice(0x13F, true, orb::kS8);            // the same on lower classes
  expectChoice(0x11F, true, orb::kV8);
  expectChoice(0x107, true, orb::kW7);
  expectChoice(0x103, true, orb::kPx);
  expectChoice(0x2DF, true, orb::kP8);            // the state, but not AVX
  expectChoice(0x81DF, true, orb::kP8);           // AVX2 class without the state
  expectChoice(0x8000, true, orb::kPx);           // AVX2 class alone
  expectChoice(bit(8) | bit(9), true, orb::kG9);  // no lower class is asked for
  expectChoice(bit(8) | bit(9) | bit(15), true, orb::kH9);
  expectChoice(bit(6), true, orb::kP8);
  expectChoice(bit(4), true, orb::kV8);
  expectChoice(bit(4) | bit(5), true, orb::kS8);
  expectChoice(bit(2), true, orb::kW7);
}

TEST(ChooseBuild, WithoutAdmissionAsIfThereWereNoAvx) {
  expectChoice(0x3DF, false, orb::kP8);
  expectChoice(0x83DF, false, orb::kP8);
  expectChoice(0x833F, false, orb::kS8);
  expectChoice(0x831F, false, orb::kV8);
  expectChoice(0x8307, false, orb::kW7);
  expectChoice(0x8300, false, orb::kPx);
}

// All combinations of the seven bits that count, with all others clear and with all others set: a
// build stands for the list of what it wants, and the last one that has it is taken.
TEST(ChooseBuild, EveryCombination) {
  struct Wants {
    orb::Build build;
    uint32_t wanted;
  };
  const Wants list[] = {{orb::kPx, 0},
                        {orb::kW7, bit(2)},
                        {orb::kV8, bit(4)},
                        {orb::kS8, bit(4) | bit(5)},
                        {orb::kP8, bit(6)},
                        {orb::kG9, bit(8) | bit(9)},
                        {orb::kH9, bit(8) | bit(9) | bit(15)}};
  const int deciding[] = {2, 4, 5, 6, 8, 9, 15};
  uint32_t others = ~0u;
  for (const int n : deciding) others &= ~bit(n);
  for (int combination = 0; combination < 128; ++combination) {
    uint32_t word = 0;
    for (int i = 0; i < 7; ++i) {
      if (combination & 1 << i) word |= bit(deciding[i]);
    }
    orb::Build expected = orb::kPx, withoutAvx = orb::kPx;
    for (const Wants& each : list) {
      if ((word & each.wanted) != each.wanted) continue;
      expected = each.build;
      if (each.build <= orb::kP8) withoutAvx = each.build;
    }
    for (const uint32_t rest : {0u, others}) {
      expectChoice(word | rest, true, expected);
      expectChoice(word | rest, false, withoutAvx);
    }
  }
}

}  // namespace
