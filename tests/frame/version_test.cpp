// The version records of all seven builds, through the rows. Their bodies need no instructions of
// their build, so each of them runs on every machine.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "tests/support/frame_state.h"

namespace {

struct Names {
  const char* tag;
  const char* dc;
  const char* j;
};
const Names kNames[] = {
    {"px", "orbDC PX (px)", "orbJP PX (px)"},
    {"w7", "orbDC SSE2 (w7)", "orbJP SSE2 (w7)"},
    {"v8", "orbDC SSSE3 (v8)", "orbJP SSSE3 (v8)"},
    {"s8", "orbDC Brio (s8)", "orbJP Brio (s8)"},
    {"p8", "orbDC SSE4.1/4.2 (p8)", "orbJP SSE4.1/4.2 (p8)"},
    {"g9", "orbDC AVX (g9)", "orbJP AVX (g9)"},
    {"h9", "orbDC AVX2 (h9)", "orbJP AVX2 (h9)"},
};

void expectRecord(const OrbLibraryVersion* record, const char* tag, const std::string& name) {
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->major, 9);
  EXPECT_EQ(record->minor, 0);
  EXPECT_EQ(record->majorBuild, 0);
  EXPECT_EQ(record->build, -1);
  const char targetCpu[4] = {tag[0], tag[1], '\0', '\0'};
  EXPECT_EQ(std::memcmp(record->targetCpu, targetCpu, 4), 0) << tag;
  EXPECT_EQ(record->name, name);
  EXPECT_STREQ(record->version, "9.0 Legacy (r48491) (-)");
  EXPECT_STREQ(record->buildDate, "Oct 14 2015");
}

void expectRecords(const char* plusOfP8) {
  for (int i = 0; i < orb::kBuildCount; ++i) {
    const std::string plus = i == orb::kP8 ? plusOfP8 : "";
    expectRecord(orbRow_orbdcGetLibVersion.body[i](), kNames[i].tag, kNames[i].dc + plus);
    expectRecord(orbRow_orbjGetLibVersion.body[i](), kNames[i].tag, kNames[i].j + plus);
  }
}

TEST(LibVersion, EveryBuild) {
  const orbtest::SavedFrameState saved;
  orbSetEnabledFeatures(orbFrameState, orb::kSse42, 0);
  expectRecords("+");
  orbSetEnabledFeatures(orbFrameState, ~0u, ~0u);
  expectRecords("+");
  orbSetEnabledFeatures(orbFrameState, 0, 0);
  expectRecords("");
  orbSetEnabledFeatures(orbFrameState, ~uint32_t{orb::kSse42}, ~0u);
  expectRecords("");
}

// A thread that finds the index before the enabled word reads what was there at load.
TEST(LibVersion, BetweenIndexAndEnabledWordNoPlus) {
  const orbtest::SavedFrameState saved;
  orbtest::SavedFrameState::reload();
  expectRecords("");
}

TEST(LibVersion, TheRecordIsConstant) {
  for (int i = 0; i < orb::kBuildCount; ++i) {
    EXPECT_EQ(orbRow_orbdcGetLibVersion.body[i](), orbRow_orbdcGetLibVersion.body[i]());
    EXPECT_EQ(orbRow_orbjGetLibVersion.body[i](), orbRow_orbjGetLibVersion.body[i]());
  }
}

}  // namespace
