// Through the door: a program that knows the public header and the shared library only. CTest runs
// each of these tests in a process of its own, so that what a test calls first is the first call.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "frame/cpu.h"
#include "orb90legacy.h"

namespace {

// What the processor earns, found without the library.
std::string earnedTag() {
  const char* const tags[] = {"px", "w7", "v8", "s8", "p8", "g9", "h9"};
  orb::HostCpu cpu;
  return tags[cpu.hasCpuid() ? orb::chooseBuild(orb::featureWord(cpu), true).build : orb::kPx];
}

void expectEarned(const OrbLibraryVersion* record, const char* domain) {
  ASSERT_NE(record, nullptr);
  const std::string tag = earnedTag();
  EXPECT_EQ(std::memcmp(record->targetCpu, (tag + std::string(2, '\0')).data(), 4), 0) << tag;
  EXPECT_EQ(std::string(record->name).rfind(domain, 0), 0u) << record->name;
  EXPECT_NE(std::string(record->name).find("(" + tag + ")"), std::string::npos) << record->name;
  EXPECT_EQ(record->major, 9);
}

// Four samples a, a + 1, a, a + 1 have the mean a + 1 with the rounding of this function.
void expectHalvedPlane() {
  const int width = 70, height = 6, step = width + 3;
  std::vector<Orb8u> src(step * height), dst(40 * 3, 0xA5);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x)
      src[y * step + x] = static_cast<Orb8u>((x / 2 + y / 2) * 5 + x % 2);
  }
  ASSERT_EQ(legacy90orbiSampleDownH2V2_JPEG_8u_C1R(src.data(), step, {width, height}, dst.data(),
                                                   40, {35, 3}),
            orbStsNoErr);
  for (int y = 0; y < 3; ++y) {
    for (int x = 0; x < 35; ++x) ASSERT_EQ(dst[y * 40 + x], (x + y) * 5 + 1);
    for (int x = 35; x < 40; ++x) ASSERT_EQ(dst[y * 40 + x], 0xA5);
  }
}

TEST(FirstCall, GetLibVersionOfGroupThree) {
  expectEarned(legacy90orbdcGetLibVersion(), "orbDC ");
  expectEarned(legacy90orbjGetLibVersion(), "orbJP ");
}

TEST(FirstCall, GetLibVersionOfGroupFive) {
  expectEarned(legacy90orbjGetLibVersion(), "orbJP ");
  expectEarned(legacy90orbdcGetLibVersion(), "orbDC ");
}

TEST(FirstCall, AFunctionOfSixArguments) {
  expectHalvedPlane();
  expectEarned(legacy90orbjGetLibVersion(), "orbJP ");
  expectHalvedPlane();
}

TEST(FirstCall, AFailingCall) {
  EXPECT_EQ(legacy90orbiAdd128_JPEG_16s8u_C1R(nullptr, 0, nullptr, 0, {0, 0}), orbStsNullPtrErr);
  expectEarned(legacy90orbjGetLibVersion(), "orbJP ");
}

TEST(FirstCall, AnInit) {
  const OrbStatus status = legacy90orbjInit();
  EXPECT_TRUE(status == orbStsNoErr || status == orbStsForeignCpu) << status;
  EXPECT_EQ(legacy90orbjInit(), status);
  EXPECT_EQ(legacy90orbdcInit(), status);
  expectEarned(legacy90orbjGetLibVersion(), "orbJP ");
  expectEarned(legacy90orbdcGetLibVersion(), "orbDC ");
  expectHalvedPlane();
}

TEST(FirstCall, TheNumberOfThreads) {
  EXPECT_EQ(legacy90orbjSetNumThreads(4), orbStsNoOperation);
  Orb32s number = 0;
  EXPECT_EQ(legacy90orbjGetNumThreads(&number), orbStsNoOperation);
  EXPECT_EQ(number, 1);
  EXPECT_EQ(legacy90orbdcGetNumThreads(nullptr), orbStsNullPtrErr);
}

TEST(FirstCall, ATableAndItsUse) {
  Orb8u raw[64];
  Orb16u table[64];
  Orb16s block[64];
  for (int i = 0; i < 64; ++i) {
    raw[i] = 5;
    block[i] = static_cast<Orb16s>(i - 32);
  }
  ASSERT_EQ(legacy90orbiQuantInvTableInit_JPEG_8u16u(raw, table), orbStsNoErr);
  ASSERT_EQ(legacy90orbiQuantInv8x8_JPEG_16s_C1I(block, table), orbStsNoErr);
  for (int i = 0; i < 64; ++i) EXPECT_EQ(block[i], (i - 32) * 5);
}

}  // namespace
