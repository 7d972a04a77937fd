// The exports that the frame answers itself, and the numbers of the statuses.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <set>

#include "tests/support/frame_state.h"

namespace {

TEST(Threads, AnyNumberIsIgnored) {
  for (const Orb32s number :
       {0, 1, -5, 1000, std::numeric_limits<Orb32s>::max(), std::numeric_limits<Orb32s>::min()}) {
    EXPECT_EQ(legacy90orbdcSetNumThreads(number), orbStsNoOperation);
    EXPECT_EQ(legacy90orbjSetNumThreads(number), orbStsNoOperation);
    Orb32s dc = 77, j = 88;
    EXPECT_EQ(legacy90orbdcGetNumThreads(&dc), orbStsNoOperation);
    EXPECT_EQ(legacy90orbjGetNumThreads(&j), orbStsNoOperation);
    EXPECT_EQ(dc, 1);
    EXPECT_EQ(j, 1);
  }
}

TEST(Threads, GetWantsAPointer) {
  EXPECT_EQ(legacy90orbdcGetNumThreads(nullptr), orbStsNullPtrErr);
  EXPECT_EQ(legacy90orbjGetNumThreads(nullptr), orbStsNullPtrErr);
}

TEST(Threads, NeitherSelectsABuild) {
  const orbtest::SavedFrameState saved;
  orbtest::SavedFrameState::reload();
  Orb32s number;
  legacy90orbdcSetNumThreads(2);
  legacy90orbjSetNumThreads(2);
  legacy90orbdcGetNumThreads(&number);
  legacy90orbjGetNumThreads(&number);
  const orb::FrameState untouched;
  EXPECT_EQ(std::memcmp(&orbFrameState, &untouched, sizeof untouched), 0);
}

TEST(Init, SelectsItsOwnGroupOnly) {
  const orbtest::SavedFrameState saved;
  orbtest::SavedFrameState::reload();
  legacy90orbdcInit();
  for (int group = 1; group <= 8; ++group) {
    EXPECT_EQ(orbFrameState.buildIndex[group - 1] >= 0, group == 3) << group;
  }
  orbtest::SavedFrameState::reload();
  legacy90orbjInit();
  for (int group = 1; group <= 8; ++group) {
    EXPECT_EQ(orbFrameState.buildIndex[group - 1] >= 0, group == 5) << group;
  }
}

TEST(Init, TwiceTheSame) {
  const orbtest::SavedFrameState saved;
  orbtest::SavedFrameState::reload();
  const OrbStatus status = legacy90orbjInit();
  EXPECT_TRUE(status == orbStsNoErr || status == orbStsForeignCpu) << status;
  const orb::FrameState once = orbFrameState;
  EXPECT_EQ(legacy90orbjInit(), status);
  EXPECT_EQ(std::memcmp(&orbFrameState, &once, sizeof once), 0);
  EXPECT_EQ(legacy90orbdcInit(), status);
  EXPECT_EQ(legacy90orbdcInit(), status);
  EXPECT_EQ(orbFrameState.buildIndex[2], orbFrameState.buildIndex[4]);
  EXPECT_EQ(orbFrameState.enabledLow, once.enabledLow);
  EXPECT_EQ(orbFrameState.enabledHigh, 0u);
}

// Hosts keep these numbers: none of them may ever move.
TEST(Status, Numbers) {
  struct Number {
    int status;
    int number;
  };
  const Number numbers[] = {
      {orbStsNoErr, 0},
      {orbStsNoOperation, 1},
      {orbStsMisalignedData, 2},
      {orbStsDivByZero, 6},
      {orbStsForeignCpu, 20},
      {orbStsRoiOutside, 29},
      {orbStsQuadOutside, 30},
      {orbStsSrcShort, 32},
      {orbStsDstFull, 33},
      {orbStsStreamEnd, 34},
      {orbStsDoubleSize, 35},
      {orbStsNoCpuid, 36},
      {orbStsAntialiasIgnored, 46},
      {orbStsOddRowWidth, 48},
      {orbStsErr, -2},
      {orbStsBadArgErr, -5},
      {orbStsSizeErr, -6},
      {orbStsOutOfRangeErr, -7},
      {orbStsNullPtrErr, -8},
      {orbStsMemAllocErr, -9},
      {orbStsAngleErr, -11},
      {orbStsStepErr, -14},
      {orbStsContextMatchErr, -17},
      {orbStsInterpolationErr, -22},
      {orbStsResizeFactorErr, -23},
      {orbStsMaskSizeErr, -33},
      {orbStsStrideErr, -37},
      {orbStsChannelCountErr, -53},
      {orbStsCoeffErr, -56},
      {orbStsRoiSmallErr, -57},
      {orbStsJpegBufferEndErr, -62},
      {orbStsJpegBitStreamErr, -63},
      {orbStsJpegHuffTableErr, -64},
      {orbStsCodeBlockDataErr, -112},
      {orbStsPassIndexErr, -113},
      {orbStsPackBitsDstErr, -124},
      {orbStsNotAttachedErr, -180},
      {orbStsStrideMatrixErr, -182},
      {orbStsSingularErr, -195},
      {orbStsHuffFreqErr, -197},
      {orbStsHuffLenErr, -198},
      {orbStsHuffTooLongErr, -199},
      {orbStsResizeTooSmallErr, -201},
  };
  std::set<int> used;
  for (const Number& each : numbers) {
    EXPECT_EQ(each.status, each.number);
    EXPECT_TRUE(used.insert(each.number).second) << each.number;
  }
}

}  // namespace
