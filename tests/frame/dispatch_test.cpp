// Stubs, lazy entries and rows, within the program of the tests: here the frame state can be read,
// and put back to what it is at load.
#include "frame/dispatch.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "tests/support/frame_state.h"
#include "tests/support/plane.h"

namespace {

using orbtest::Plane;
using orbtest::SavedFrameState;

constexpr int kGroup3 = 2;  // places among the indexes
constexpr int kGroup5 = 4;

int32_t earnedBuild() {
  orb::HostCpu cpu;
  return cpu.hasCpuid() ? orb::chooseBuild(orb::featureWord(cpu), true).build : orb::kPx;
}

TEST(Dispatch, TheFirstCallSelectsItsGroup) {
  const SavedFrameState saved;
  SavedFrameState::reload();
  const OrbLibraryVersion* const dc = legacy90orbdcGetLibVersion();
  for (int group = 1; group <= orb::kGroupCount; ++group) {
    EXPECT_EQ(orbFrameState.buildIndex[group - 1], group == 3 ? earnedBuild() : -1) << group;
  }
  const OrbLibraryVersion* const j = legacy90orbjGetLibVersion();
  for (int group = 1; group <= orb::kGroupCount; ++group) {
    const bool selected = group == 3 || group == 5;
    EXPECT_EQ(orbFrameState.buildIndex[group - 1], selected ? earnedBuild() : -1) << group;
  }
  EXPECT_EQ(std::memcmp(dc->targetCpu, j->targetCpu, 4), 0);
}

TEST(Dispatch, TheEnabledWordIsThatOfTheBuild) {
  const SavedFrameState saved;
  SavedFrameState::reload();
  legacy90orbjGetLibVersion();
  orb::HostCpu cpu;
  const uint32_t word = orb::featureWord(cpu);
  EXPECT_EQ(orbFrameState.detectedFlag, 1u);
  EXPECT_EQ(orbFrameState.detectedFeatures, word);
  EXPECT_EQ(orbFrameState.enabledLow, word & orb::chooseBuild(word, true).featureMask);
  EXPECT_EQ(orbFrameState.enabledHigh, 0u);
}

// The stub goes where the index says, with no look at anything else.
TEST(Dispatch, TheIndexDecides) {
  const SavedFrameState saved;
  for (int32_t build = 0; build < orb::kBuildCount; ++build) {
    orbFrameState.buildIndex[kGroup3] = build;
    orbFrameState.buildIndex[kGroup5] = orb::kBuildCount - 1 - build;
    EXPECT_EQ(legacy90orbdcGetLibVersion(), orbRow_orbdcGetLibVersion.body[build]());
    EXPECT_EQ(legacy90orbjGetLibVersion(),
              orbRow_orbjGetLibVersion.body[orb::kBuildCount - 1 - build]());
    EXPECT_EQ(orbFrameState.buildIndex[kGroup3], build);
  }
}

TEST(Dispatch, ALazyEntryMayBeReachedAgain) {
  const SavedFrameState saved;
  SavedFrameState::reload();
  const OrbLibraryVersion* const record = legacy90orbjGetLibVersion();
  EXPECT_EQ(orbRow_orbjGetLibVersion.lazy(), record);
  EXPECT_EQ(orbFrameState.buildIndex[kGroup5], earnedBuild());
}

template <class Function>
void expectRow(const OrbDispatchRow<Function>& row, Function* exported, Function* lazy) {
  static_assert(sizeof row == 8 * sizeof(void*));
  EXPECT_EQ(row.lazy, lazy);
  for (Function* const body : row.body) {
    EXPECT_NE(body, nullptr);
    EXPECT_NE(body, exported);
    EXPECT_NE(body, lazy);
  }
}
TEST(Dispatch, RowsAreWhole){
#define ORB_EXPORT(group, bytes, name)                        \
  {                                                           \
    SCOPED_TRACE(#name);                                      \
    expectRow(orbRow_##name, legacy90##name, orbLazy_##name); \
  }
#define ORB_VERSION_EXPORT ORB_EXPORT
#include "frame/exports.inc"
}

// Six arguments, of which one is a pair of numbers in one word or two: none may be lost on the way
// through a lazy entry, in registers or on the stack.
TEST(Dispatch, ArgumentsSurviveTheFirstCall) {
  const SavedFrameState saved;
  Plane<Orb8u> src(35, 7, {6, 1}), dst(17, 3, {3, 5});
  orbtest::Random random("arguments");
  src.fillAny(random);
  SavedFrameState::reload();
  ASSERT_EQ(legacy90orbiSampleDownH2V2_JPEG_8u_C1R(src.data(), src.step(), src.size(), dst.data(),
                                                   dst.step(), dst.size()),
            orbStsNoErr);
  for (int y = 0; y < 3; ++y) {
    for (int x = 0; x < 17; ++x) {
      const int sum = src.at(2 * x, 2 * y) + src.at(2 * x + 1, 2 * y) + src.at(2 * x, 2 * y + 1) +
                      src.at(2 * x + 1, 2 * y + 1);
      ASSERT_EQ(dst.at(x, y), (sum + 3) / 4);
    }
  }
  dst.expectOutsideUntouched();
}

// The last argument, and with it each one before, decides the status.
TEST(Dispatch, EachArgumentIsSeenByTheFirstCall) {
  const SavedFrameState saved;
  Plane<Orb8u> src(16, 4), dst(8, 2);
  const auto first = [](const Orb8u* pSrc, Orb32s srcStep, OrbiSize srcSize, Orb8u* pDst,
                        Orb32s dstStep, OrbiSize dstSize) {
    SavedFrameState::reload();
    return legacy90orbiSampleDownH2V2_JPEG_8u_C1R(pSrc, srcStep, srcSize, pDst, dstStep, dstSize);
  };
  const OrbiSize good = {8, 2};
  EXPECT_EQ(first(nullptr, 16, good, dst.data(), 8, good), orbStsNullPtrErr);
  EXPECT_EQ(first(src.data(), 0, good, dst.data(), 8, good), orbStsStepErr);
  EXPECT_EQ(first(src.data(), 16, {0, 2}, dst.data(), 8, good), orbStsSizeErr);
  EXPECT_EQ(first(src.data(), 16, {8, 0}, dst.data(), 8, good), orbStsSizeErr);
  EXPECT_EQ(first(src.data(), 16, good, nullptr, 8, good), orbStsNullPtrErr);
  EXPECT_EQ(first(src.data(), 16, good, dst.data(), 0, good), orbStsStepErr);
  EXPECT_EQ(first(src.data(), 16, good, dst.data(), 8, {0, 2}), orbStsSizeErr);
  EXPECT_EQ(first(src.data(), 16, good, dst.data(), 8, {8, 0}), orbStsSizeErr);
  EXPECT_EQ(first(src.data(), 16, good, dst.data(), 8, good), orbStsNoErr);
}

// Nine arguments: on 64 bits too, some of them are on the stack. Each one has its share in the two
// bytes that come out.
TEST(Dispatch, NineArgumentsSurviveTheFirstCall) {
  const SavedFrameState saved;
  // One code in each table: 0 for a difference of three bits, 00 for the end of a block.
  const Orb8u dcBits[16] = {1}, dcValues[] = {3}, acBits[16] = {0, 1}, acValues[] = {0};
  OrbiEncodeHuffmanSpec *dcTable, *acTable;
  OrbiEncodeHuffmanState* state;
  ASSERT_EQ(legacy90orbiEncodeHuffmanSpecInitAlloc_JPEG_8u(dcBits, dcValues, &dcTable),
            orbStsNoErr);
  ASSERT_EQ(legacy90orbiEncodeHuffmanSpecInitAlloc_JPEG_8u(acBits, acValues, &acTable),
            orbStsNoErr);
  ASSERT_EQ(legacy90orbiEncodeHuffmanStateInitAlloc_JPEG_8u(&state), orbStsNoErr);
  Plane<Orb8u> dst(4, 1);
  Orb32s position = 1;
  Orb16s lastDc = 2;
  const auto first = [&](Orb16s dc, Orb32s length, Orb32s flush) {
    const Orb16s block[64] = {dc};
    SavedFrameState::reload();
    return legacy90orbiEncodeHuffman8x8_JPEG_16s1u_C1(block, dst.data(), length, &position, &lastDc,
                                                      dcTable, acTable, state, flush);
  };
  EXPECT_EQ(first(7, 3, 0), orbStsNoErr);  // 0 101 00
  EXPECT_EQ(lastDc, 7);
  EXPECT_EQ(first(0, 3, 0), orbStsNoErr);  // 0 000 00, for -7
  EXPECT_EQ(lastDc, 0);
  EXPECT_EQ(first(0, 3, 1), orbStsNoErr);  // 1111 to the end
  EXPECT_EQ(position, 3);
  EXPECT_EQ(dst.at(1), 0x50);
  EXPECT_EQ(dst.at(2), 0x0F);
  EXPECT_EQ(first(7, 0, 1), orbStsSizeErr);
  legacy90orbiEncodeHuffmanSpecFree_JPEG_8u(dcTable);
  legacy90orbiEncodeHuffmanSpecFree_JPEG_8u(acTable);
  legacy90orbiEncodeHuffmanStateFree_JPEG_8u(state);
}

#if defined(__x86_64__)
// Every register that can hold an argument, on the way through a lazy entry. Behind it stands a
// body that takes no arguments, and so leaves these registers as it finds them; that of p8 makes a
// call.
TEST(Dispatch, RegistersSurviveTheFirstCall) {
  if (earnedBuild() == orb::kP8) GTEST_SKIP() << "the body of p8 uses these registers";
  const SavedFrameState saved;
  struct Registers {
    uint64_t integers[6];
    uint8_t vectors[8][16];
  };
  Registers in, out = {};
  for (size_t i = 0; i < sizeof in; ++i) {
    reinterpret_cast<unsigned char*>(&in)[i] = static_cast<unsigned char>(i * 37 + 1);
  }
  const OrbLibraryVersion* record;

  SavedFrameState::reload();
  __asm__ volatile(
      "movq 0(%[in]), %%rdi\n\t"
      "movq 8(%[in]), %%rsi\n\t"
      "movq 16(%[in]), %%rdx\n\t"
      "movq 24(%[in]), %%rcx\n\t"
      "movq 32(%[in]), %%r8\n\t"
      "movq 40(%[in]), %%r9\n\t"
      "movups 48(%[in]), %%xmm0\n\t"
      "movups 64(%[in]), %%xmm1\n\t"
      "movups 80(%[in]), %%xmm2\n\t"
      "movups 96(%[in]), %%xmm3\n\t"
      "movups 112(%[in]), %%xmm4\n\t"
      "movups 128(%[in]), %%xmm5\n\t"
      "movups 144(%[in]), %%xmm6\n\t"
      "movups 160(%[in]), %%xmm7\n\t"
      // Below the red zone, on the boundary that a call wants.
      "movq %%rsp, %%r14\n\t"
      "subq $128, %%rsp\n\t"
      "andq $-16, %%rsp\n\t"
      "call *%[exported]\n\t"
      "movq %%r14, %%rsp\n\t"
      "movq %%rdi, 0(%[out])\n\t"
      "movq %%rsi, 8(%[out])\n\t"
      "movq %%rdx, 16(%[out])\n\t"
      "movq %%rcx, 24(%[out])\n\t"
      "movq %%r8, 32(%[out])\n\t"
      "movq %%r9, 40(%[out])\n\t"
      "movups %%xmm0, 48(%[out])\n\t"
      "movups %%xmm1, 64(%[out])\n\t"
      "movups %%xmm2, 80(%[out])\n\t"
      "movups %%xmm3, 96(%[out])\n\t"
      "movups %%xmm4, 112(%[out])\n\t"
      "movups %%xmm5, 128(%[out])\n\t"
      "movups %%xmm6, 144(%[out])\n\t"
      "movups %%xmm7, 160(%[out])\n\t"
      : "=&a"(record)
      : [in] "b"(&in), [out] "r"(&out), [exported] "r"(&legacy90orbjGetLibVersion)
      : "rdi", "rsi", "rdx", "rcx", "r8", "r9", "r10", "r11", "r14", "xmm0", "xmm1", "xmm2", "xmm3",
        "xmm4", "xmm5", "xmm6", "xmm7", "xmm8", "xmm9", "xmm10", "xmm11", "xmm12", "xmm13", "xmm14",
        "xmm15", "cc", "memory");

  EXPECT_EQ(orbFrameState.buildIndex[kGroup5], earnedBuild());
  EXPECT_EQ(record, orbRow_orbjGetLibVersion.body[earnedBuild()]());
  for (int i = 0; i < 6; ++i) EXPECT_EQ(out.integers[i], in.integers[i]) << i;
  for (int i = 0; i < 8; ++i) EXPECT_EQ(std::memcmp(out.vectors[i], in.vectors[i], 16), 0) << i;
}
#endif

}  // namespace
