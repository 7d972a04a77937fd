// Progressive code-block decoder (ITU-T T.800 annexes C and D).
#include <climits>
#include <cstring>
#include <vector>

#include "tests/jpeg2k/codeblock_host.h"
#include "tests/jpeg2k/codeblock_model.h"
#include "tests/support/builds.h"
#include "tests/support/guarded.h"
#include "tests/support/plane.h"

namespace {

using orbtest::BlockDecoderModel;
using orbtest::BlockSamples;
using orbtest::BlockStyle;
using orbtest::Bytes;
using orbtest::encodeBlock;
using orbtest::EncodedModel;
using orbtest::GuardedBytes;
using orbtest::NextPass;
using orbtest::Placement;
using orbtest::Plane;
using orbtest::Random;
using orbtest::randomSamples;
using orbtest::TestBuild;

// A state in memory of just its size, at an odd address.
class Decoder {
 public:
  Decoder(const TestBuild& testBuild, OrbiSize size)
      : build(testBuild), memory_(static_cast<size_t>(sizeOf(size))) {
    EXPECT_EQ(ORB(orbiDecodeCBProgrInit_JPEG2K)(state()), orbStsNoErr);
  }

  OrbiDecodeCBProgrState_JPEG2K* state() {
    return reinterpret_cast<OrbiDecodeCBProgrState_JPEG2K*>(memory_.data());
  }
  Bytes bytes() const { return Bytes(memory_.data(), memory_.data() + memory_.size()); }

  void attach(Plane<Orb32s>& dst, int subband, int bitPlanes, int flags) {
    EXPECT_EQ(ORB(orbiDecodeCBProgrAttach_JPEG2K_32s_C1R)(dst.data(), dst.step(), dst.size(),
                                                          state(), subband, bitPlanes, flags),
              orbStsNoErr);
  }
  void setPasses(int count) {
    EXPECT_EQ(ORB(orbiDecodeCBProgrSetPassCounter_JPEG2K)(count, state()), orbStsNoErr);
  }
  int passes() {
    Orb32s count = INT_MAX;
    EXPECT_EQ(ORB(orbiDecodeCBProgrGetPassCounter_JPEG2K)(state(), &count), orbStsNoErr);
    return count;
  }
  int plane() {
    Orb32s plane = INT_MAX;
    EXPECT_EQ(ORB(orbiDecodeCBProgrGetCurBitPlaneNum_JPEG2K)(state(), &plane), orbStsNoErr);
    return plane;
  }
  OrbStatus step(const Bytes& segment) {
    const GuardedBytes src(segment);
    return ORB(orbiDecodeCBProgrStep_JPEG2K)(src.data(), src.size(), state());
  }

 private:
  int sizeOf(OrbiSize size) const {
    Orb32s bytes = 0;
    EXPECT_EQ(ORB(orbiDecodeCBProgrGetStateSize_JPEG2K)(size, &bytes), orbStsNoErr);
    return bytes;
  }

  const TestBuild& build;
  GuardedBytes memory_;
};

void spoilTag(OrbiDecodeCBProgrState_JPEG2K* state) {
  reinterpret_cast<Orb8u*>(state)[3] ^= 0x80;
}

// ---- orbiDecodeCBProgrGetStateSize_JPEG2K

ORB_MEANING(orbiDecodeCBProgrGetStateSize_JPEG2K, ChecksInOrder) {
  const auto function = ORB(orbiDecodeCBProgrGetStateSize_JPEG2K);
  Orb32s size = 77;
  EXPECT_EQ(function({0, 5}, nullptr), orbStsSizeErr);
  EXPECT_EQ(function({5, 0}, nullptr), orbStsSizeErr);
  EXPECT_EQ(function({5, 5}, nullptr), orbStsNullPtrErr);
  EXPECT_EQ(function({INT_MIN, INT_MIN}, &size), orbStsSizeErr);
  // More than can be told.
  EXPECT_EQ(function({1 << 20, 1 << 10}, &size), orbStsSizeErr);
  EXPECT_EQ(size, 77);
}

ORB_MEANING(orbiDecodeCBProgrGetStateSize_JPEG2K, StoresTheSize) {
  for (int width = 1; width <= 40; ++width) {
    for (int height = 1; height <= 20; ++height) {
      int row = width * 4 + 8;
      while (row % 32 != 0) ++row;
      Orb32s size = 0;
      ASSERT_EQ(ORB(orbiDecodeCBProgrGetStateSize_JPEG2K)({width, height}, &size), orbStsNoErr);
      ASSERT_EQ(size, row * ((height + 1) / 2 + 2) + 388);
    }
  }
}

ORB_AGREEMENT(orbiDecodeCBProgrGetStateSize_JPEG2K) {
  for (int round = 0; round < 300; ++round) {
    const OrbiSize size = {random.extreme<Orb32s>() >> random.between(0, 20),
                           random.extreme<Orb32s>() >> random.between(0, 20)};
    Orb32s expected = 77, actual = 77;
    ASSERT_EQ(ORB(orbiDecodeCBProgrGetStateSize_JPEG2K)(size, &actual),
              PX(orbiDecodeCBProgrGetStateSize_JPEG2K)(size, &expected));
    ASSERT_EQ(actual, expected);
  }
}

// ---- orbiDecodeCBProgrInitAlloc_JPEG2K, orbiDecodeCBProgrInit_JPEG2K,
// orbiDecodeCBProgrFree_JPEG2K

ORB_MEANING(orbiDecodeCBProgrInitAlloc_JPEG2K, ChecksInOrder) {
  const auto function = ORB(orbiDecodeCBProgrInitAlloc_JPEG2K);
  EXPECT_EQ(function(nullptr, {0, 0}), orbStsNullPtrErr);
  OrbiDecodeCBProgrState_JPEG2K* const before =
      reinterpret_cast<OrbiDecodeCBProgrState_JPEG2K*>(64);
  OrbiDecodeCBProgrState_JPEG2K* state = before;
  EXPECT_EQ(function(&state, {0, 4}), orbStsSizeErr);
  EXPECT_EQ(function(&state, {4, -4}), orbStsSizeErr);
  EXPECT_EQ(state, before);
  EXPECT_EQ(function(&state, {INT_MAX, INT_MAX}), orbStsMemAllocErr);
  EXPECT_EQ(state, nullptr);
}

ORB_MEANING(orbiDecodeCBProgrInitAlloc_JPEG2K, MakesAStateThatIsNotAttached) {
  Plane<OrbiDecodeCBProgrState_JPEG2K*> pointer(1, 1, {0, 3});
  ASSERT_EQ(ORB(orbiDecodeCBProgrInitAlloc_JPEG2K)(pointer.data(), {9, 9}), orbStsNoErr);
  pointer.expectOutsideUntouched();
  OrbiDecodeCBProgrState_JPEG2K* const state = pointer.at(0);
  EXPECT_EQ(std::memcmp(state, "PAMC", 4), 0);
  const Orb8u src = 0;
  EXPECT_EQ(ORB(orbiDecodeCBProgrStep_JPEG2K)(&src, 1, state), orbStsNotAttachedErr);
  // It has room for a block of that size.
  Plane<Orb32s> dst(9, 9);
  EXPECT_EQ(ORB(orbiDecodeCBProgrAttach_JPEG2K_32s_C1R)(dst.data(), dst.step(), dst.size(), state,
                                                        0, 5, 0),
            orbStsNoErr);
  EXPECT_EQ(ORB(orbiDecodeCBProgrFree_JPEG2K)(state), orbStsNoErr);
}

ORB_AGREEMENT(orbiDecodeCBProgrInitAlloc_JPEG2K) {
  for (int round = 0; round < 50; ++round) {
    const OrbiSize size = {random.oneIn(4) ? random.extreme<Orb32s>() : random.between(1, 64),
                           random.oneIn(4) ? random.extreme<Orb32s>() : random.between(1, 64)};
    OrbiDecodeCBProgrState_JPEG2K *expected = nullptr, *actual = nullptr;
    ASSERT_EQ(ORB(orbiDecodeCBProgrInitAlloc_JPEG2K)(&actual, size),
              PX(orbiDecodeCBProgrInitAlloc_JPEG2K)(&expected, size));
    ASSERT_EQ(actual == nullptr, expected == nullptr);
    if (!expected) continue;
    ASSERT_EQ(std::memcmp(actual, expected, 4), 0);
    PX(orbiDecodeCBProgrFree_JPEG2K)(actual);
    ORB(orbiDecodeCBProgrFree_JPEG2K)(expected);
  }
}

ORB_MEANING(orbiDecodeCBProgrInit_JPEG2K, MakesAStateOfAnything) {
  EXPECT_EQ(ORB(orbiDecodeCBProgrInit_JPEG2K)(nullptr), orbStsNullPtrErr);
  Random random("init");
  for (int misalignment = 0; misalignment < 32; ++misalignment) {
    Plane<uint8_t> memory(32 * 3 + 388, 1, {0, misalignment});
    memory.fill([&] { return random.any<uint8_t>(); });
    OrbiDecodeCBProgrState_JPEG2K* const state =
        reinterpret_cast<OrbiDecodeCBProgrState_JPEG2K*>(memory.data());
    EXPECT_EQ(ORB(orbiDecodeCBProgrInit_JPEG2K)(state), orbStsNoErr);
    EXPECT_EQ(std::memcmp(memory.data(), "PAMC", 4), 0);
    const Orb8u src = 0;
    EXPECT_EQ(ORB(orbiDecodeCBProgrStep_JPEG2K)(&src, 1, state), orbStsNotAttachedErr);
    // The largest block that it has room for.
    Plane<Orb32s> dst(6, 2);
    EXPECT_EQ(ORB(orbiDecodeCBProgrAttach_JPEG2K_32s_C1R)(dst.data(), dst.step(), dst.size(), state,
                                                          0, 5, 0),
              orbStsNoErr);
    memory.expectOutsideUntouched();
  }
}

ORB_AGREEMENT(orbiDecodeCBProgrInit_JPEG2K) {
  EXPECT_EQ(ORB(orbiDecodeCBProgrInit_JPEG2K)(nullptr), PX(orbiDecodeCBProgrInit_JPEG2K)(nullptr));
  Plane<uint8_t> expected(500, 1, {0, 7}), actual(500, 1, {0, 7});
  expected.fillAny(random);
  actual.copySamples(expected);
  PX(orbiDecodeCBProgrInit_JPEG2K)
  (reinterpret_cast<OrbiDecodeCBProgrState_JPEG2K*>(expected.data()));
  ORB(orbiDecodeCBProgrInit_JPEG2K)
  (reinterpret_cast<OrbiDecodeCBProgrState_JPEG2K*>(actual.data()));
  EXPECT_TRUE(actual.sameBytes(expected));
}

ORB_MEANING(orbiDecodeCBProgrFree_JPEG2K, ChecksInOrder) {
  const auto function = ORB(orbiDecodeCBProgrFree_JPEG2K);
  EXPECT_EQ(function(nullptr), orbStsNullPtrErr);
  OrbiDecodeCBProgrState_JPEG2K* state = nullptr;
  ASSERT_EQ(ORB(orbiDecodeCBProgrInitAlloc_JPEG2K)(&state, {4, 4}), orbStsNoErr);
  spoilTag(state);
  EXPECT_EQ(function(state), orbStsContextMatchErr);
  spoilTag(state);
  EXPECT_EQ(function(state), orbStsNoErr);
}

ORB_AGREEMENT(orbiDecodeCBProgrFree_JPEG2K) {
  EXPECT_EQ(ORB(orbiDecodeCBProgrFree_JPEG2K)(nullptr), PX(orbiDecodeCBProgrFree_JPEG2K)(nullptr));
  OrbiDecodeCBProgrState_JPEG2K* state = nullptr;
  ASSERT_EQ(PX(orbiDecodeCBProgrInitAlloc_JPEG2K)(&state, {4, 4}), orbStsNoErr);
  EXPECT_EQ(ORB(orbiDecodeCBProgrFree_JPEG2K)(state), orbStsNoErr);
}

// ---- orbiDecodeCBProgrAttach_JPEG2K_32s_C1R

ORB_MEANING(orbiDecodeCBProgrAttach_JPEG2K_32s_C1R, ChecksInOrder) {
  const auto function = ORB(orbiDecodeCBProgrAttach_JPEG2K_32s_C1R);
  Decoder decoder(build, {4, 4});
  Plane<Orb32s> dst(4, 4);
  spoilTag(decoder.state());
  const Bytes before = decoder.bytes();
  // Each call has one fault more than those below it.
  EXPECT_EQ(function(dst.data(), 0, {0, 0}, nullptr, 0, 5, 0), orbStsNullPtrErr);
  EXPECT_EQ(function(nullptr, 0, {0, 0}, decoder.state(), 0, 5, 0), orbStsNullPtrErr);
  EXPECT_EQ(function(dst.data(), 0, {0, 0}, decoder.state(), 0, 5, 0), orbStsStepErr);
  EXPECT_EQ(function(dst.data(), -1, {0, 0}, decoder.state(), 0, 5, 0), orbStsStepErr);
  EXPECT_EQ(function(dst.data(), 16, {4, 0}, decoder.state(), 0, 5, 0), orbStsSizeErr);
  EXPECT_EQ(function(dst.data(), 16, {-4, 4}, decoder.state(), 0, 5, 0), orbStsSizeErr);
  EXPECT_EQ(function(dst.data(), 16, {4, 4}, decoder.state(), 0, 5, 0), orbStsContextMatchErr);
  dst.expectUntouched();
  EXPECT_EQ(decoder.bytes(), before);
  spoilTag(decoder.state());
  EXPECT_EQ(function(dst.data(), 16, {4, 4}, decoder.state(), 0, 5, 0), orbStsNoErr);
}

ORB_MEANING(orbiDecodeCBProgrAttach_JPEG2K_32s_C1R, StartsABlock) {
  Decoder decoder(build, {5, 7});
  for (const int flags : {0, 0x20000, 0x80000}) {
    for (const int bitPlanes : {7, 1, 0, -3}) {
      Plane<Orb32s> dst(5, 7, {3, 1});
      dst.fill([] { return 99; });
      decoder.setPasses(12);
      decoder.attach(dst, 0, bitPlanes, flags);
      EXPECT_EQ(decoder.passes(), 0);
      EXPECT_EQ(decoder.plane(), bitPlanes - 1);
      EXPECT_EQ(dst.samples(), std::vector<Orb32s>(35, flags == 0x20000 ? 99 : 0));
      dst.expectOutsideUntouched();
    }
  }
}

// A state knows nothing of the block before, and takes blocks of any shape that fits.
ORB_MEANING(orbiDecodeCBProgrAttach_JPEG2K_32s_C1R, OneBlockAfterTheOther) {
  Random random("blocks");
  Decoder decoder(build, {20, 20});
  for (int round = 0; round < 60; ++round) {
    const BlockSamples samples = orbtest::truncated(
        randomSamples(random, random.between(1, 20), random.between(1, 20), 8, 50), 31);
    const BlockStyle style = {random.between(0, 3), 31, 0, random.between(0, 1)};
    const EncodedModel model = encodeBlock(samples, style);
    Plane<Orb32s> dst(samples.width, samples.height, Placement::any(random));
    decoder.attach(dst, style.subband, model.bitLength, style.flags);
    decoder.setPasses(static_cast<int>(model.passes.size()));
    ASSERT_EQ(decoder.step(model.bytes), orbStsNoErr);
    ASSERT_EQ(dst.samples(), samples.values);
    dst.expectOutsideUntouched();
  }
}

// ---- The pass counter and the plane

ORB_MEANING(orbiDecodeCBProgrSetPassCounter_JPEG2K, ChecksInOrder) {
  const auto function = ORB(orbiDecodeCBProgrSetPassCounter_JPEG2K);
  EXPECT_EQ(function(5, nullptr), orbStsNullPtrErr);
  Decoder decoder(build, {4, 4});
  decoder.setPasses(3);
  spoilTag(decoder.state());
  EXPECT_EQ(function(5, decoder.state()), orbStsContextMatchErr);
  spoilTag(decoder.state());
  EXPECT_EQ(decoder.passes(), 3);
}

ORB_MEANING(orbiDecodeCBProgrSetPassCounter_JPEG2K, SetsTheCounter) {
  Decoder decoder(build, {4, 4});
  for (const int count : {0, 1, 91, -1, INT_MAX, INT_MIN}) {
    decoder.setPasses(count);
    EXPECT_EQ(decoder.passes(), count);
  }
}

template <class Function>
void expectQueryChecks(Function* function, const TestBuild& build) {
  Decoder decoder(build, {4, 4});
  Plane<Orb32s> dst(4, 4);
  decoder.attach(dst, 0, 9, 0);
  spoilTag(decoder.state());
  Plane<Orb32s> value(1, 1, {0, 1});
  EXPECT_EQ(function(nullptr, value.data()), orbStsNullPtrErr);
  EXPECT_EQ(function(decoder.state(), nullptr), orbStsNullPtrErr);
  EXPECT_EQ(function(decoder.state(), value.data()), orbStsContextMatchErr);
  value.expectUntouched();
  spoilTag(decoder.state());
  EXPECT_EQ(function(decoder.state(), value.data()), orbStsNoErr);
  value.expectOutsideUntouched();
}
ORB_MEANING(orbiDecodeCBProgrGetPassCounter_JPEG2K, ChecksInOrder) {
  expectQueryChecks(ORB(orbiDecodeCBProgrGetPassCounter_JPEG2K), build);
}
ORB_MEANING(orbiDecodeCBProgrGetCurBitPlaneNum_JPEG2K, ChecksInOrder) {
  expectQueryChecks(ORB(orbiDecodeCBProgrGetCurBitPlaneNum_JPEG2K), build);
}

// The one-shot function leaves them as they are.
template <class Function>
Orb32s queried(Function* function, const void* state) {
  Orb32s value = INT_MAX;
  EXPECT_EQ(function(static_cast<const OrbiDecodeCBProgrState_JPEG2K*>(state), &value),
            orbStsNoErr);
  return value;
}
ORB_MEANING(orbiDecodeCBProgrGetCurBitPlaneNum_JPEG2K, AfterADecodedBlock) {
  Random random("after");
  const GuardedBytes memory(orbtest::decoderBytes(random, build, {4, 4}));
  Plane<Orb32s> dst(4, 4);
  // Passes: cleanup in plane 6, three in plane 5, two in plane 4.
  orbtest::decodeInto(build, dst, const_cast<uint8_t*>(memory.data()),
                      {0, 7, 6, {{1, 2, 3, 4, 5}}, 0});
  EXPECT_EQ(queried(ORB(orbiDecodeCBProgrGetCurBitPlaneNum_JPEG2K), memory.data()), 4);
  EXPECT_EQ(queried(ORB(orbiDecodeCBProgrGetPassCounter_JPEG2K), memory.data()), 0);
  orbtest::decodeInto(build, dst, const_cast<uint8_t*>(memory.data()),
                      {0, 2, 9, {{1, 2, 3, 4, 5}}, 0});
  EXPECT_EQ(queried(ORB(orbiDecodeCBProgrGetCurBitPlaneNum_JPEG2K), memory.data()), -1);
  EXPECT_EQ(queried(ORB(orbiDecodeCBProgrGetPassCounter_JPEG2K), memory.data()), 5);
}

// ---- orbiDecodeCBProgrStep_JPEG2K

ORB_MEANING(orbiDecodeCBProgrStep_JPEG2K, ChecksInOrder) {
  const auto function = ORB(orbiDecodeCBProgrStep_JPEG2K);
  Decoder decoder(build, {4, 4});
  const Orb8u src[4] = {1, 2, 3, 4};
  spoilTag(decoder.state());
  EXPECT_EQ(function(src, 4, nullptr), orbStsNullPtrErr);
  EXPECT_EQ(function(nullptr, 4, decoder.state()), orbStsNullPtrErr);
  EXPECT_EQ(function(src, 4, decoder.state()), orbStsContextMatchErr);
  spoilTag(decoder.state());
  EXPECT_EQ(function(src, 4, decoder.state()), orbStsNotAttachedErr);
  Plane<Orb32s> dst(4, 4);
  decoder.attach(dst, 0, 5, 0);
  EXPECT_EQ(function(src, 4, decoder.state()), orbStsNoErr);
}

// A counter that has run out, and planes that have.
ORB_MEANING(orbiDecodeCBProgrStep_JPEG2K, NothingToDo) {
  Decoder decoder(build, {4, 4});
  Plane<Orb32s> dst(4, 4);
  decoder.attach(dst, 0, 5, 4);
  for (const int count : {0, -1, INT_MIN}) {
    decoder.setPasses(count);
    const Bytes before = decoder.bytes();
    EXPECT_EQ(decoder.step({0x55, 0x55}), orbStsNoErr);
    EXPECT_EQ(decoder.bytes(), before);
  }
  decoder.attach(dst, 0, 0, 4);
  decoder.setPasses(7);
  const Bytes before = decoder.bytes();
  EXPECT_EQ(decoder.step({0x55, 0x55}), orbStsNoErr);
  EXPECT_EQ(decoder.bytes(), before);
  EXPECT_EQ(decoder.passes(), 7);
}

Bytes anySegment(Random& random) {
  Bytes segment(static_cast<size_t>(random.between(0, 20)));
  const int most = random.oneIn(2) ? 255 : 143;
  for (uint8_t& byte : segment) {
    byte = random.oneIn(6) ? uint8_t{255} : static_cast<uint8_t>(random.between(0, most));
  }
  return segment;
}

// Any segments, in any number, with the counter raised between them: the machine goes on whatever
// it finds.
ORB_MEANING(orbiDecodeCBProgrStep_JPEG2K, AnySegments) {
  Random random("steps");
  int failed = 0, seen[6] = {};
  for (int round = 0; round < 400; ++round) {
    const OrbiSize size = {random.between(1, 9), random.between(1, 9)};
    const int subband = random.between(0, 3), bitPlanes = random.between(1, 12);
    const int flags = random.between(0, 31) | (random.oneIn(2) ? 0x100000 : 0);
    Decoder decoder(build, size);
    Plane<Orb32s> dst(size.width, size.height, Placement::any(random));
    decoder.attach(dst, subband, bitPlanes, flags);
    BlockDecoderModel model(size.width, size.height, subband, flags);
    model.restart(bitPlanes);
    for (int step = 0; step < 30; ++step) {
      if (random.oneIn(3)) {
        model.passCounter = random.between(0, 12);
        decoder.setPasses(model.passCounter);
      }
      ++seen[static_cast<int>(model.nextPass)];
      const Bytes segment = anySegment(random);
      const bool isWrong = model.step(segment);
      failed += isWrong;
      ASSERT_EQ(decoder.step(segment), isWrong ? orbStsCodeBlockDataErr : orbStsNoErr);
      ASSERT_EQ(decoder.passes(), model.passCounter);
      ASSERT_EQ(decoder.plane(), model.plane);
      ASSERT_EQ(dst.samples(), model.samples.values);
      dst.expectOutsideUntouched();
    }
  }
  EXPECT_GT(failed, 500);
  for (const int times : seen) EXPECT_GT(times, 100);
}

// One segment after the other gives what all in one call give, and a look in between shows the
// block as it is so far.
ORB_MEANING(orbiDecodeCBProgrStep_JPEG2K, SegmentBySegment) {
  Random random("segments");
  for (int round = 0; round < 80; ++round) {
    const BlockSamples samples =
        orbtest::truncated(randomSamples(random, 8, 9, random.between(1, 12), 60), 31);
    const BlockStyle style = {random.between(0, 3), 31, 0, random.between(0, 31)};
    const EncodedModel model = encodeBlock(samples, style);
    Decoder decoder(build, {8, 9});
    Plane<Orb32s> dst(8, 9);
    decoder.attach(dst, style.subband, model.bitLength, style.flags);
    decoder.setPasses(static_cast<int>(model.passes.size()));
    auto next = model.bytes.begin();
    for (const int length : model.segmentLengths) {
      ASSERT_EQ(decoder.step({next, next + length}), orbStsNoErr);
      next += length;
      // All that is known is right down to the plane that comes next.
      const int plane = std::max(decoder.plane(), 0);
      const BlockSamples sofar = {8, 9, dst.samples()};
      ASSERT_EQ(orbtest::truncated(sofar, 31 - std::min(plane + 1, 30)).values,
                orbtest::truncated(samples, 31 - std::min(plane + 1, 30)).values);
    }
    ASSERT_EQ(dst.samples(), samples.values);
    ASSERT_EQ(decoder.passes(), 0);
  }
}

// A step restarts its decoder: it does not know that it has seen a segment before.
ORB_MEANING(orbiDecodeCBProgrStep_JPEG2K, LengthsBelow1AreEmpty) {
  for (const int length : {0, -1, INT_MIN}) {
    Decoder expected(build, {6, 6}), decoder(build, {6, 6});
    Plane<Orb32s> expectedDst(6, 6), dst(6, 6);
    expected.attach(expectedDst, 0, 5, 2);
    decoder.attach(dst, 0, 5, 2);
    expected.setPasses(13);
    decoder.setPasses(13);
    for (int step = 0; step < 4; ++step) {
      const GuardedBytes none(0);
      const OrbStatus status =
          ORB(orbiDecodeCBProgrStep_JPEG2K)(none.data(), length, decoder.state());
      EXPECT_EQ(status, expected.step({255, 255, 255, 255}));
      EXPECT_EQ(dst.samples(), expectedDst.samples());
    }
  }
}

// All functions of the decoder, on what two builds make of the same.
void expectAgreement(const TestBuild& build, Random& random) {
  const TestBuild px = {orb::kPx, "px"};
  for (int round = 0; round < 100; ++round) {
    const OrbiSize size = {random.between(1, 30), random.between(1, 30)};
    const int flags = random.between(0, 31) | (random.oneIn(2) ? 0x100000 : 0);
    const int subband = random.between(0, 3), bitPlanes = random.between(0, 20);
    Decoder expected(px, size), actual(build, size);
    const Placement place = Placement::any(random);
    Plane<Orb32s> expectedDst(size.width, size.height, place), dst(size.width, size.height, place);
    expected.attach(expectedDst, subband, bitPlanes, flags);
    actual.attach(dst, subband, bitPlanes, flags);
    ASSERT_TRUE(dst.sameBytes(expectedDst));
    const int passes = random.between(0, 60);
    expected.setPasses(passes);
    actual.setPasses(passes);
    for (int step = 0; step < 10; ++step) {
      const Bytes segment = anySegment(random);
      ASSERT_EQ(actual.step(segment), expected.step(segment));
      ASSERT_EQ(actual.passes(), expected.passes());
      ASSERT_EQ(actual.plane(), expected.plane());
      ASSERT_TRUE(dst.sameBytes(expectedDst));
    }
  }
}
ORB_AGREEMENT(orbiDecodeCBProgrAttach_JPEG2K_32s_C1R) {
  expectAgreement(build, random);
}
ORB_AGREEMENT(orbiDecodeCBProgrSetPassCounter_JPEG2K) {
  expectAgreement(build, random);
}
ORB_AGREEMENT(orbiDecodeCBProgrGetPassCounter_JPEG2K) {
  expectAgreement(build, random);
}
ORB_AGREEMENT(orbiDecodeCBProgrGetCurBitPlaneNum_JPEG2K) {
  expectAgreement(build, random);
}
ORB_AGREEMENT(orbiDecodeCBProgrStep_JPEG2K) {
  expectAgreement(build, random);
}

}  // namespace
