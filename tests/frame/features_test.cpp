// The frame state: detection that runs once, the feature query, the enabled word, and the selection
// of a group's build.
#include "frame/features.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

#include "tests/support/fake_cpu.h"

namespace {

using orb::FrameState;
using orbtest::bit;
using orbtest::FakeCpu;
using orbtest::kExtended1;
using orbtest::kLeaf0;
using orbtest::kLeaf1;
using orbtest::kLeaf7;

constexpr uint64_t kUnwritten = 0x5555AAAA5555AAAA;

// A processor with SSE4.1, SSE4.2, PCLMULQDQ and MOVBE, and AVX that the operating system leaves
// off.
FakeCpu p8Cpu() {
  FakeCpu cpu;
  cpu.leaves[kLeaf1].edx = bit(23) | bit(25) | bit(26);
  cpu.leaves[kLeaf1].ecx = bit(0) | bit(9) | bit(22) | bit(19) | bit(20) | bit(28) | bit(1);
  return cpu;
}
constexpr uint32_t kP8Word = 0x9FF;

FakeCpu h9Cpu() {
  FakeCpu cpu = p8Cpu();
  cpu.leaves[kLeaf1].ecx |= bit(27) | bit(12);
  cpu.leaves[kLeaf7].ebx = bit(5) | bit(3) | bit(8);
  cpu.control = 7;
  return cpu;
}
constexpr uint32_t kH9Word = 0x8BFF;

TEST(FrameState, AtLoad) {
  const FrameState state;
  for (const int32_t index : state.buildIndex) EXPECT_EQ(index, -1);
  EXPECT_EQ(state.detectedFlag, 0u);
  EXPECT_EQ(state.detectedFeatures, 0u);
  EXPECT_EQ(state.enabledLow, 3u);
  EXPECT_EQ(state.enabledHigh, 0u);
}

// ---- orbDetectFeatures

TEST(DetectFeatures, RunsOnce) {
  FrameState state;
  FakeCpu cpu = p8Cpu();
  uint64_t features = kUnwritten;
  EXPECT_EQ(orbDetectFeatures(state, cpu, &features), 1);
  EXPECT_EQ(features, kP8Word);
  EXPECT_EQ(state.detectedFlag, 1u);
  EXPECT_EQ(state.detectedFeatures, kP8Word);
  const size_t questions = cpu.asked.size();
  EXPECT_EQ(questions, 5u);

  // Even if the processor were another one by now, or lost its CPUID.
  cpu.leaves[kLeaf1] = {};
  cpu.present = false;
  features = kUnwritten;
  EXPECT_EQ(orbDetectFeatures(state, cpu, &features), 1);
  EXPECT_EQ(features, kP8Word);
  EXPECT_EQ(cpu.asked.size(), questions);
}

TEST(DetectFeatures, AnEmptyWordIsDetectedToo) {
  FrameState state;
  FakeCpu cpu;
  uint64_t features = kUnwritten;
  EXPECT_EQ(orbDetectFeatures(state, cpu, &features), 1);
  EXPECT_EQ(features, 0u);
  const size_t questions = cpu.asked.size();
  EXPECT_EQ(orbDetectFeatures(state, cpu, &features), 1);
  EXPECT_EQ(cpu.asked.size(), questions);
}

TEST(DetectFeatures, WithoutCpuidStaysUndone) {
  FrameState state;
  FakeCpu cpu = p8Cpu();
  cpu.present = false;
  uint64_t features = kUnwritten;
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(orbDetectFeatures(state, cpu, &features), 0);
    EXPECT_EQ(features, kUnwritten);
    EXPECT_EQ(state.detectedFlag, 0u);
  }
  EXPECT_TRUE(cpu.asked.empty());
  EXPECT_EQ(cpu.xgetbvRuns, 0);

  cpu.present = true;
  EXPECT_EQ(orbDetectFeatures(state, cpu, &features), 1);
  EXPECT_EQ(features, kP8Word);
}

TEST(DetectFeatures, TheHighHalfIsZero) {
  FrameState state;
  FakeCpu cpu;
  cpu.leaves[kLeaf1].eax = 0xB10;
  cpu.leaves[orbtest::kFamilyBLeaf] = {};
  uint64_t features = kUnwritten;
  EXPECT_EQ(orbDetectFeatures(state, cpu, &features), 1);
  EXPECT_EQ(features, uint64_t{0x80000000});
}

// ---- orbGetCpuFeatures

uint64_t wordOfText(const char (&text)[9]) {
  uint64_t word;
  std::memcpy(&word, text, 8);
  return word;
}

TEST(GetCpuFeatures, TheRequestCodeSpellsGetinfoa) {
  EXPECT_EQ(orb::kGetInfoRequest, wordOfText("getinfoa"));
  EXPECT_EQ(static_cast<uint32_t>(orb::kGetInfoRequest), 0x69746567u);
  EXPECT_EQ(static_cast<uint32_t>(orb::kGetInfoRequest >> 32), 0x616F666Eu);
}

TEST(GetCpuFeatures, ChecksInOrder) {
  FrameState state;
  FakeCpu cpu = p8Cpu();
  uint64_t features = kUnwritten;
  uint32_t regs[4] = {1, 2, 3, 4};
  cpu.present = false;
  EXPECT_EQ(orbGetCpuFeatures(state, cpu, nullptr, nullptr), orbStsNoCpuid);
  EXPECT_EQ(orbGetCpuFeatures(state, cpu, &features, regs), orbStsNoCpuid);
  EXPECT_EQ(features, kUnwritten);
  cpu.present = true;
  EXPECT_EQ(orbGetCpuFeatures(state, cpu, nullptr, regs), orbStsNullPtrErr);
  EXPECT_EQ(orbGetCpuFeatures(state, cpu, nullptr, nullptr), orbStsNullPtrErr);
  for (uint32_t i = 0; i < 4; ++i) EXPECT_EQ(regs[i], i + 1);
  EXPECT_EQ(state.detectedFlag, 1u);  // which went before the pointer's turn
}

TEST(GetCpuFeatures, WithoutRegistersAsksForNothingMore) {
  for (const uint64_t request : {kUnwritten, uint64_t{0}, wordOfText("getinfoa")}) {
    FrameState state;
    FakeCpu cpu = p8Cpu();
    uint64_t features = request;
    EXPECT_EQ(orbGetCpuFeatures(state, cpu, &features, nullptr), orbStsNoErr);
    EXPECT_EQ(features, kP8Word);
    EXPECT_EQ(cpu.asked.size(), 5u);
  }
}

TEST(GetCpuFeatures, TheCodeChoosesTheLeaf) {
  FrameState state;
  FakeCpu cpu = p8Cpu();
  cpu.leaves[{0xD, 1}] = {0x10, 0x20, 0x30, 0x40};
  uint64_t features = wordOfText("getinfoa");
  uint32_t regs[4] = {0xD, 0x77, 1, 0x99};
  EXPECT_EQ(orbGetCpuFeatures(state, cpu, &features, regs), orbStsNoErr);
  EXPECT_EQ(features, kP8Word);
  EXPECT_EQ(regs[0], 0x10u);
  EXPECT_EQ(regs[1], 0x20u);
  EXPECT_EQ(regs[2], 0x30u);
  EXPECT_EQ(regs[3], 0x40u);
  EXPECT_EQ(cpu.timesAsked({0xD, 1}), 1);
}

// A word that differs from the code in any bit asks for leaf 1, whatever stands in the array.
TEST(GetCpuFeatures, AnyOtherWordMeansLeafOne) {
  for (int n = 0; n < 65; ++n) {
    FrameState state;
    FakeCpu cpu = p8Cpu();
    cpu.leaves[kLeaf1].eax = 0x11;
    cpu.leaves[kLeaf1].ebx = 0x22;
    uint64_t features = n == 64 ? 0 : wordOfText("getinfoa") ^ uint64_t { 1 } << n;
    uint32_t regs[4] = {0xD, 0x77, 1, 0x99};
    EXPECT_EQ(orbGetCpuFeatures(state, cpu, &features, regs), orbStsNoErr);
    EXPECT_EQ(features, kP8Word);
    EXPECT_EQ(regs[0], 0x11u);
    EXPECT_EQ(regs[1], 0x22u);
    EXPECT_EQ(regs[2], cpu.leaves[kLeaf1].ecx);
    EXPECT_EQ(regs[3], cpu.leaves[kLeaf1].edx);
    EXPECT_EQ(cpu.timesAsked(kLeaf1), 2);  // for detection, and now
    EXPECT_EQ(cpu.timesAsked({0xD, 1}), 0);
  }
}

// ---- The enabled word

TEST(EnabledFeatures, EveryBitOfTheMaskHasToBeThere) {
  FrameState state;
  EXPECT_EQ(orbSetEnabledFeatures(state, 0xF0, 0x80000001), orbStsNoErr);
  EXPECT_EQ(state.enabledLow, 0xF0u);
  EXPECT_EQ(state.enabledHigh, 0x80000001u);
  EXPECT_EQ(orbIsFeatureEnabled(state, 0, 0), 1);
  EXPECT_EQ(orbIsFeatureEnabled(state, 0x10, 0), 1);
  EXPECT_EQ(orbIsFeatureEnabled(state, 0xF0, 0), 1);
  EXPECT_EQ(orbIsFeatureEnabled(state, 0xF8, 0), 0);
  EXPECT_EQ(orbIsFeatureEnabled(state, 0x8, 0), 0);
  EXPECT_EQ(orbIsFeatureEnabled(state, 0, 1), 1);
  EXPECT_EQ(orbIsFeatureEnabled(state, 0, 0x80000001), 1);
  EXPECT_EQ(orbIsFeatureEnabled(state, 0, 2), 0);
  EXPECT_EQ(orbIsFeatureEnabled(state, 0x10, 2), 0);
  EXPECT_EQ(orbIsFeatureEnabled(state, 0x8, 1), 0);
  EXPECT_EQ(orbIsFeatureEnabled(state, 0xF0, 0x80000001), 1);
}

TEST(EnabledFeatures, AtLoadMmxAndSse) {
  const FrameState state;
  EXPECT_EQ(orbIsFeatureEnabled(state, orb::kMmx | orb::kSse, 0), 1);
  for (int n = 2; n < 32; ++n) EXPECT_EQ(orbIsFeatureEnabled(state, bit(n), 0), 0) << n;
  EXPECT_EQ(orbIsFeatureEnabled(state, 0, 0), 1);
}

TEST(EnabledFeatures, AnythingMayBeSet) {
  FrameState state;
  EXPECT_EQ(orbSetEnabledFeatures(state, ~0u, ~0u), orbStsNoErr);
  EXPECT_EQ(orbIsFeatureEnabled(state, ~0u, ~0u), 1);
  EXPECT_EQ(orbSetEnabledFeatures(state, 0, 0), orbStsNoErr);
  EXPECT_EQ(orbIsFeatureEnabled(state, 1, 0), 0);
  EXPECT_EQ(orbIsFeatureEnabled(state, 0, 0), 1);
}

TEST(AdmitBuild, EveryBuildIsAdmitted) {
  for (const int32_t build : {70, 0, 1, -1, std::numeric_limits<int32_t>::max()}) {
    EXPECT_EQ(orb::orbAdmitBuild(build), 1);
  }
  EXPECT_EQ(orb::kAvxAdmission, 70);
}

// ---- Selection

TEST(InitGroup, EachGroupHasAnIndexOfItsOwn) {
  for (int32_t group = 1; group <= 8; ++group) {
    FrameState state;
    FakeCpu cpu = p8Cpu();
    initGroup(state, cpu, group);
    for (int32_t other = 1; other <= 8; ++other) {
      EXPECT_EQ(state.buildIndex[other - 1], other == group ? 4 : -1);
    }
  }
}

TEST(InitGroup, AllGroupsGetTheSameBuild) {
  FrameState state;
  FakeCpu cpu = h9Cpu();
  for (int32_t group = 8; group >= 1; --group) initGroup(state, cpu, group);
  for (const int32_t index : state.buildIndex) EXPECT_EQ(index, 6);
  EXPECT_EQ(cpu.timesAsked(kLeaf7), 1);  // one detection for all of them
  EXPECT_EQ(cpu.xgetbvRuns, 1);
}

// One processor of each class, with MOVBE where another build than s8 is to be shown to drop it.
TEST(InitGroup, BuildAndEnabledWord) {
  struct Case {
    uint32_t edx, ecx, ebx7, control;
    int32_t build;
    uint32_t enabled;
  };
  const uint32_t mmx = bit(23), sse = bit(25), sse2 = bit(26);
  const uint32_t ssse3 = bit(0) | bit(9), movbe = bit(22);
  const uint32_t sse41 = ssse3 | bit(19), sse42 = sse41 | bit(20);
  const uint32_t clmulAes = bit(1) | bit(25), f16cRdrand = bit(29) | bit(30);
  const uint32_t avx = bit(27) | bit(28), fma = bit(12);
  const uint32_t avx2 = bit(5) | bit(3) | bit(8);
  const uint32_t adxRdseedSha = bit(19) | bit(18) | bit(29);
  const Case cases[] = {
      {0, 0, 0, 0, 0, 0},
      {mmx, 0, 0, 0, 0, 0x1},
      {mmx | sse, movbe, 0, 0, 0, 0x3},
      {mmx | sse | sse2, bit(0) | movbe | clmulAes, 0, 0, 1, 0x7},
      {mmx | sse | sse2, ssse3 | clmulAes, 0, 0, 2, 0x1F},
      {mmx | sse | sse2, ssse3 | movbe | clmulAes, 0, 0, 3, 0x3F},
      {mmx | sse | sse2, sse41, 0, 0, 4, 0x5F},
      {mmx | sse | sse2, sse42 | movbe | clmulAes | f16cRdrand, adxRdseedSha, 0, 4, 0x80CDF},
      {mmx | sse | sse2, sse42 | avx | fma, avx2, 3, 4, 0xDF},
      {mmx | sse | sse2, sse42 | movbe | clmulAes | f16cRdrand | avx, adxRdseedSha, 7, 5, 0x86FDF},
      {mmx | sse | sse2, sse42 | movbe | clmulAes | f16cRdrand | avx | fma, avx2 | adxRdseedSha, 7,
       6, 0xBEFFF},
  };
  for (const Case& c : cases) {
    FrameState state;
    FakeCpu cpu;
    cpu.leaves[kLeaf1].edx = c.edx;
    cpu.leaves[kLeaf1].ecx = c.ecx;
    cpu.leaves[kLeaf7].ebx = c.ebx7;
    cpu.control = c.control;
    orbSetEnabledFeatures(state, 0, ~0u);
    initGroup(state, cpu, 5);
    EXPECT_EQ(state.buildIndex[4], c.build) << std::hex << c.ecx;
    EXPECT_EQ(state.enabledLow, c.enabled) << std::hex << c.ecx;
    EXPECT_EQ(state.enabledHigh, 0u);
  }
}

TEST(InitGroup, Avx2KeepsPrefetchwAndDropsFamilyB) {
  FrameState state;
  FakeCpu cpu = h9Cpu();
  cpu.leaves[kExtended1].ecx = bit(8);
  cpu.leaves[kLeaf1].eax = 0xB10;
  cpu.leaves[orbtest::kFamilyBLeaf] = {0, 0, 0, 2};
  initGroup(state, cpu, 3);
  EXPECT_EQ(state.detectedFeatures, kH9Word | bit(18) | bit(12) | bit(31));
  EXPECT_EQ(state.buildIndex[2], 6);
  EXPECT_EQ(state.enabledLow, kH9Word | bit(18));
}

// The vendor decides the status, and nothing else.
TEST(InitGroup, AForeignVendorIsAWarning) {
  const std::string reference = orb::kReferenceVendor;
  ASSERT_EQ(reference.size(), 12u);
  FrameState state;
  FakeCpu cpu = h9Cpu();
  cpu.setVendor(reference.c_str());
  EXPECT_EQ(initGroup(state, cpu, 5), orbStsNoErr);
  for (size_t i = 0; i < 12; ++i) {
    std::string other = reference;
    other[i] = static_cast<char>(other[i] ^ 1);
    FrameState foreign;
    FakeCpu foreignCpu = h9Cpu();
    foreignCpu.setVendor(other.c_str());
    EXPECT_EQ(initGroup(foreign, foreignCpu, 5), orbStsForeignCpu) << other;
    EXPECT_EQ(foreign.buildIndex[4], 6);
    EXPECT_EQ(foreign.enabledLow, state.enabledLow);
  }
}

TEST(InitGroup, WithoutCpuidThePlainBuild) {
  FrameState state;
  FakeCpu cpu = h9Cpu();
  cpu.setVendor(orb::kReferenceVendor);
  cpu.present = false;
  for (int i = 0; i < 2; ++i) {
    orbSetEnabledFeatures(state, ~0u, ~0u);
    EXPECT_EQ(initGroup(state, cpu, 5), orbStsForeignCpu);
    EXPECT_EQ(state.buildIndex[4], 0);
    EXPECT_EQ(state.enabledLow, 3u);
    EXPECT_EQ(state.enabledHigh, 0u);
    EXPECT_EQ(state.detectedFlag, 0u);
  }
  EXPECT_TRUE(cpu.asked.empty());

  // Detection was left undone: it is tried again.
  cpu.present = true;
  EXPECT_EQ(initGroup(state, cpu, 5), orbStsNoErr);
  EXPECT_EQ(state.buildIndex[4], 6);
  EXPECT_EQ(state.enabledLow, kH9Word);
}

// Again and again the same; only the vendor and the registers of the query are asked for anew.
TEST(InitGroup, RunsAgainWithTheSameResult) {
  FrameState state;
  FakeCpu cpu = h9Cpu();
  const OrbStatus first = initGroup(state, cpu, 3);
  const FrameState after = state;
  for (int i = 0; i < 3; ++i) EXPECT_EQ(initGroup(state, cpu, 3), first);
  EXPECT_EQ(std::memcmp(&after, &state, sizeof state), 0);
  EXPECT_EQ(cpu.timesAsked(kLeaf7), 1);
  EXPECT_EQ(cpu.timesAsked(kExtended1), 1);
  EXPECT_EQ(cpu.timesAsked(orbtest::kExtended0), 1);
  EXPECT_EQ(cpu.timesAsked(kLeaf1), 1 + 4);
  EXPECT_EQ(cpu.timesAsked(kLeaf0), 1 + 4);
  EXPECT_EQ(cpu.xgetbvRuns, 1);
}

}  // namespace
