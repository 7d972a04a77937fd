// Code-block decoder (ITU-T T.800 annexes C and D).
#include <climits>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "tests/jpeg2k/codeblock_host.h"
#include "tests/jpeg2k/codeblock_model.h"
#include "tests/support/builds.h"
#include "tests/support/guarded.h"
#include "tests/support/plane.h"

namespace {

using orbtest::anySamples;
using orbtest::anyStyle;
using orbtest::BlockSamples;
using orbtest::BlockStyle;
using orbtest::Bytes;
using orbtest::DecodeArguments;
using orbtest::DecodedBlock;
using orbtest::DecodedModel;
using orbtest::encodeBlock;
using orbtest::EncodedModel;
using orbtest::GuardedBytes;
using orbtest::Placement;
using orbtest::Plane;
using orbtest::Random;
using orbtest::randomSamples;
using orbtest::TestBuild;

constexpr int kFallBack = 0x10000;
constexpr int kKeepSamples = 0x20000;
constexpr int kKeepMidpoints = 0x40000;
constexpr int kKeepSignificance = 0x80000;
constexpr int kCheck = 0x100000;

// ---- orbiDecodeGetBufSize_JPEG2K

ORB_MEANING(orbiDecodeGetBufSize_JPEG2K, ChecksInOrder) {
  const auto function = ORB(orbiDecodeGetBufSize_JPEG2K);
  EXPECT_EQ(function({0, 1}, nullptr), orbStsSizeErr);
  EXPECT_EQ(function({1, INT_MIN}, nullptr), orbStsSizeErr);
  EXPECT_EQ(function({INT_MAX, INT_MAX}, nullptr), orbStsNullPtrErr);
  Orb32s size = 77;
  EXPECT_EQ(function({-1, -1}, &size), orbStsSizeErr);
  EXPECT_EQ(function({INT_MAX, INT_MAX}, &size), orbStsSizeErr);
  EXPECT_EQ(size, 77);
}

ORB_MEANING(orbiDecodeGetBufSize_JPEG2K, StoresTheSize) {
  const int sizes[][3] = {{1, 1, 32 * 3 + 388},      {6, 1, 32 * 3 + 388},
                          {7, 2, 64 * 3 + 388},      {64, 64, 288 * 34 + 388},
                          {4, 1024, 32 * 514 + 388}, {1024, 4, 4128 * 4 + 388},
                          {32, 33, 160 * 19 + 388}};
  for (const auto& [width, height, expected] : sizes) {
    Plane<Orb32s> size(1, 1, {0, 1});
    EXPECT_EQ(ORB(orbiDecodeGetBufSize_JPEG2K)({width, height}, size.data()), orbStsNoErr);
    EXPECT_EQ(size.at(0), expected);
    size.expectOutsideUntouched();
  }
}

ORB_AGREEMENT(orbiDecodeGetBufSize_JPEG2K) {
  for (int round = 0; round < 300; ++round) {
    const OrbiSize size = {random.extreme<Orb32s>() >> random.between(0, 20),
                           random.extreme<Orb32s>() >> random.between(0, 20)};
    Orb32s expected = 77, actual = 77;
    ASSERT_EQ(ORB(orbiDecodeGetBufSize_JPEG2K)(size, &actual),
              PX(orbiDecodeGetBufSize_JPEG2K)(size, &expected));
    ASSERT_EQ(actual, expected);
  }
}

// ---- orbiDecodeCodeBlock_JPEG2K_1u32s_C1R

ORB_MEANING(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R, ChecksInOrder) {
  const auto function = ORB(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R);
  Random random("decode checks");
  const Bytes state = orbtest::decoderBytes(random, build, {4, 4});
  Bytes memory = state;
  Plane<Orb32s> dst(4, 4);
  const Orb8u src[4] = {};
  const Orb32s length = 4;
  Orb32s errorPlane = 77;
  Orb32s* const error = &errorPlane;
  void* const at = memory.data();
  // Each call has one fault more than those below it.
  EXPECT_EQ(function(nullptr, nullptr, 0, {0, 0}, 0, 4, 1, nullptr, 1, 0, error, at),
            orbStsNullPtrErr);
  EXPECT_EQ(function(src, nullptr, 0, {0, 0}, 0, 4, 1, nullptr, 1, 0, error, nullptr),
            orbStsNullPtrErr);
  EXPECT_EQ(function(src, nullptr, 0, {4, 0}, 0, 4, 1, nullptr, 1, 0, error, at), orbStsSizeErr);
  EXPECT_EQ(function(src, nullptr, 0, {-1, 4}, 0, 4, 1, nullptr, 1, 0, error, at), orbStsSizeErr);
  EXPECT_EQ(function(src, dst.data(), 0, {4, 4}, 0, 4, 1, nullptr, 1, 0, error, at),
            orbStsNullPtrErr);
  EXPECT_EQ(function(src, nullptr, 0, {4, 4}, 0, 4, 1, &length, 1, 0, error, at), orbStsNullPtrErr);
  EXPECT_EQ(function(src, dst.data(), 0, {4, 4}, 0, 4, 1, &length, 1, 0, error, at), orbStsStepErr);
  EXPECT_EQ(function(src, dst.data(), -16, {4, 4}, 0, 4, 1, &length, 1, 0, error, at),
            orbStsStepErr);
  dst.expectUntouched();
  EXPECT_EQ(memory, state);
  EXPECT_EQ(errorPlane, 77);
  EXPECT_EQ(function(src, dst.data(), 16, {4, 4}, 0, 4, 1, &length, 1, 0, nullptr, at),
            orbStsNoErr);
}

// T.800 J.10.1: the high-pass subband of an image of 1 x 9 samples.
ORB_MEANING(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R, TheExampleOfTheStandard) {
  Random random("J.10");
  const DecodedBlock decoded =
      orbtest::decode(random, build, {1, 4}, {1, 3, 7, {{0x0F, 0xB1, 0x76}}, 0});
  EXPECT_EQ(decoded.status, orbStsNoErr);
  EXPECT_EQ(decoded.samples, (std::vector<Orb32s>{1, 5, 1, 0}));
}

std::string described(OrbiSize size, const DecodeArguments& arguments) {
  std::string text = std::to_string(size.width) + " x " + std::to_string(size.height) +
                     ", subband " + std::to_string(arguments.subband) + ", " +
                     std::to_string(arguments.bitPlanes) + " planes, " +
                     std::to_string(arguments.passCount) + " passes, style " +
                     std::to_string(arguments.style) + ", segments";
  for (const Bytes& segment : arguments.segments) text += " " + std::to_string(segment.size());
  return text;
}

// Decodes, and compares status, samples and error plane with the model.
DecodedModel expectDecodes(const TestBuild& build, Random& random, OrbiSize size,
                           const DecodeArguments& arguments) {
  SCOPED_TRACE(described(size, arguments));
  const DecodedBlock actual = orbtest::decode(random, build, size, arguments);
  const DecodedModel expected =
      orbtest::decodeBlock(size.width, size.height, arguments.subband, arguments.bitPlanes,
                           arguments.passCount, arguments.segments, arguments.style);
  EXPECT_EQ(actual.status, expected.failed ? orbStsCodeBlockDataErr : orbStsNoErr);
  EXPECT_EQ(actual.samples, expected.samples.values);
  EXPECT_EQ(actual.errorPlane, expected.failed ? expected.plane : -100);
  return expected;
}

// A block as the model encodes it, and how to decode it.
DecodeArguments argumentsFor(const EncodedModel& model, const BlockStyle& style) {
  DecodeArguments arguments = {
      style.subband, model.bitLength, static_cast<int>(model.passes.size()), {}, style.flags & 31};
  auto next = model.bytes.begin();
  for (const int length : model.segmentLengths) {
    arguments.segments.emplace_back(next, next + length);
    next += length;
  }
  return arguments;
}

template <class Body>
void forManyBlocks(Random& random, int rounds, Body body) {
  for (int round = 0; round < rounds && !testing::Test::HasFailure(); ++round) {
    const BlockSamples samples = anySamples(random);
    const BlockStyle style = anyStyle(random);
    body(samples, style, argumentsFor(encodeBlock(samples, style), style));
  }
}

// What the model encodes comes back, whatever its style; and ends that can be checked are right.
ORB_MEANING(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R, GivesTheSamplesBack) {
  Random random("there and back");
  forManyBlocks(
      random, 500,
      [&](const BlockSamples& samples, const BlockStyle& style, DecodeArguments arguments) {
        if (style.termination == 2) arguments.style |= kCheck;
        const DecodedBlock decoded =
            orbtest::decode(random, build, {samples.width, samples.height}, arguments);
        ASSERT_EQ(decoded.status, orbStsNoErr);
        ASSERT_EQ(decoded.errorPlane, -100);
        // Below the last plane that has been coded a sample has at most its midpoint.
        BlockSamples kept = {samples.width, samples.height, decoded.samples};
        ASSERT_EQ(orbtest::truncated(kept, style.magnBits).values,
                  orbtest::truncated(samples, style.magnBits).values);
      });
}

ORB_MEANING(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R, EverySizeOfAStripe) {
  Random random("sizes");
  const OrbiSize sizes[] = {{1, 1},  {1, 2},  {1, 3},  {1, 4},   {1, 5},    {1, 64},  {64, 1},
                            {2, 64}, {64, 2}, {64, 3}, {64, 64}, {4, 1024}, {1024, 4}};
  for (const OrbiSize size : sizes) {
    for (const int percent : {0, 3, 100}) {
      const BlockSamples samples =
          orbtest::truncated(randomSamples(random, size.width, size.height, 7, percent), 31);
      const BlockStyle style = {random.between(0, 3), 31, 0, random.between(0, 31)};
      const DecodeArguments arguments = argumentsFor(encodeBlock(samples, style), style);
      EXPECT_EQ(expectDecodes(build, random, size, arguments).samples.values, samples.values);
    }
  }
}

// Passes that are left out, and more passes or segments than there are.
ORB_MEANING(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R, AnyNumberOfPasses) {
  Random random("passes");
  forManyBlocks(random, 300,
                [&](const BlockSamples& samples, const BlockStyle&, DecodeArguments arguments) {
                  const int passes = arguments.passCount;
                  arguments.passCount = random.between(-1, passes + 2);
                  if (random.oneIn(3)) arguments.style |= kKeepMidpoints;
                  if (random.oneIn(4)) arguments.segments.push_back({1, 2, 3});
                  expectDecodes(build, random, {samples.width, samples.height}, arguments);
                });
}

// A damaged segment: bytes changed, cut off or put in, and many of 255.
Bytes damaged(Random& random, Bytes segment) {
  const auto anyByte = [&] {
    return random.oneIn(3) ? uint8_t{255}
                           : static_cast<uint8_t>(random.between(0, random.oneIn(2) ? 255 : 143));
  };
  switch (random.between(0, 4)) {
    case 0:
      segment.resize(static_cast<size_t>(random.between(0, static_cast<int>(segment.size()))));
      break;
    case 1:
      segment.push_back(anyByte());
      break;
    case 2:
      for (uint8_t& byte : segment) byte = anyByte();
      break;
    case 3:
      for (uint8_t& byte : segment) {
        if (random.oneIn(10)) byte = anyByte();
      }
      break;
    default:
      if (!segment.empty()) {
        segment[random.between<size_t>(0, segment.size() - 1)] ^=
            static_cast<uint8_t>(1 << random.between(0, 7));
      }
      break;
  }
  return segment;
}

ORB_MEANING(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R, DamagedSegments) {
  Random random("damage");
  int failed = 0, passed = 0;
  forManyBlocks(
      random, 1500, [&](const BlockSamples& samples, const BlockStyle&, DecodeArguments arguments) {
        for (Bytes& segment : arguments.segments) {
          if (random.oneIn(2)) segment = damaged(random, segment);
        }
        arguments.style |= random.between(0, 31) << 16 & (kFallBack | kKeepMidpoints | kCheck);
        const DecodedModel model =
            expectDecodes(build, random, {samples.width, samples.height}, arguments);
        ++(model.failed ? failed : passed);
      });
  EXPECT_GT(failed, 200);
  EXPECT_GT(passed, 200);
}

// A change of a predictably ended segment does not go unnoticed for long.
ORB_MEANING(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R, FindsDamage) {
  Random random("found");
  int found = 0;
  constexpr int kBlocks = 300;
  for (int round = 0; round < kBlocks; ++round) {
    const BlockSamples samples = randomSamples(random, 16, 16, 8, 60);
    const BlockStyle style = {0, 31, 2, 4};
    DecodeArguments arguments = argumentsFor(encodeBlock(samples, style), style);
    arguments.style |= kCheck;
    Bytes& segment = arguments.segments[random.between<size_t>(4, 12)];
    segment[random.between<size_t>(0, segment.size() - 1)] ^=
        static_cast<uint8_t>(1 << random.between(0, 7));
    found += expectDecodes(build, random, {16, 16}, arguments).failed;
  }
  EXPECT_GT(found, kBlocks * 9 / 10);
}

ORB_MEANING(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R, SegmentationSymbols) {
  Random random("symbols");
  // Of a stream without the symbols, what follows is read for them.
  for (int round = 0; round < 60; ++round) {
    const BlockSamples samples = randomSamples(random, 8, 8, 5, 60);
    const BlockStyle style = {0, 31, 2, random.oneIn(2) ? 4 : 0};
    DecodeArguments arguments = argumentsFor(encodeBlock(samples, style), style);
    arguments.style |= 16;
    EXPECT_TRUE(expectDecodes(build, random, {8, 8}, arguments).failed);
    // A clean end counts for more. It is a matter of chance here.
    arguments.style |= kCheck;
    expectDecodes(build, random, {8, 8}, arguments);
  }
}

// The end of a raw refinement pass is checked even if no check is asked for.
ORB_MEANING(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R, RawRefinementIsAlwaysChecked) {
  // Significant in the first plane, all of them; three bits of refinement in plane 0.
  const BlockSamples samples = {3, 1, {21, 17, 21}};
  for (const int flags : {2, 2 | 4}) {
    const BlockStyle style = {0, 31, 0, flags};
    const DecodeArguments arguments = argumentsFor(encodeBlock(samples, style), style);
    Random random("raw ends");
    const DecodedBlock good = orbtest::decode(random, build, {3, 1}, arguments);
    EXPECT_EQ(good.status, orbStsNoErr);
    EXPECT_EQ(good.samples, samples.values);
    // 111, and 01010 behind it.
    const size_t raw = (flags & 4) != 0 ? 11 : 1;
    ASSERT_EQ(arguments.segments[raw], (Bytes{0xEA}));
    for (int byte = 0; byte < 256; ++byte) {
      DecodeArguments changed = arguments;
      changed.segments[raw] = {static_cast<uint8_t>(byte)};
      const DecodedBlock decoded = orbtest::decode(random, build, {3, 1}, changed);
      EXPECT_EQ(decoded.status, byte % 32 == 10 ? orbStsNoErr : orbStsCodeBlockDataErr);
      EXPECT_EQ(decoded.errorPlane, byte % 32 == 10 ? -100 : 0);
    }
  }
}

// A raw significance pass of its own is checked if that is asked for.
ORB_MEANING(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R, RawSignificanceIsCheckedOnDemand) {
  // The second sample becomes significant in plane 0: 1, 0, and 010101 behind them.
  const BlockSamples samples = {2, 1, {16, 1}};
  const BlockStyle style = {0, 31, 2, 2 | 4};
  DecodeArguments arguments = argumentsFor(encodeBlock(samples, style), style);
  ASSERT_EQ(arguments.segments[10], (Bytes{0x95}));
  Random random("raw ends");
  for (int byte = 0x80; byte < 0xC0; ++byte) {
    arguments.segments[10] = {static_cast<uint8_t>(byte)};
    arguments.style = 2 | 4;
    DecodedBlock decoded = orbtest::decode(random, build, {2, 1}, arguments);
    EXPECT_EQ(decoded.status, orbStsNoErr);
    EXPECT_EQ(decoded.samples, samples.values);
    arguments.style |= kCheck;
    decoded = orbtest::decode(random, build, {2, 1}, arguments);
    EXPECT_EQ(decoded.status, byte == 0x95 ? orbStsNoErr : orbStsCodeBlockDataErr);
  }
}

// Decodes without errors down to some plane, which tells what an error there leaves.
ORB_MEANING(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R, FallsBack) {
  // A stream whose symbols are wrong in the first cleanup pass that has them.
  Random random("fall back");
  for (int round = 0; round < 40; ++round) {
    const BlockSamples samples = randomSamples(random, 5, 5, random.between(1, 6), 80);
    const BlockStyle style = {0, 31, 0, 4};
    DecodeArguments arguments = argumentsFor(encodeBlock(samples, style), style);
    arguments.style |= 16;
    const DecodedBlock plain = orbtest::decode(random, build, {5, 5}, arguments);
    if (plain.status == orbStsNoErr) continue;
    arguments.style |= kFallBack | kKeepMidpoints;
    const DecodedBlock decoded = orbtest::decode(random, build, {5, 5}, arguments);
    ASSERT_EQ(decoded.status, orbStsCodeBlockDataErr);
    ASSERT_EQ(decoded.errorPlane, plain.errorPlane);
    for (size_t i = 0; i < decoded.samples.size(); ++i) {
      const uint32_t sample = static_cast<uint32_t>(decoded.samples[i]);
      if (sample == 0) continue;
      // Behind plane 0 there is nothing to set.
      if (plain.errorPlane >= 0) {
        ASSERT_EQ(sample % (2u << plain.errorPlane), 1u << plain.errorPlane);
      }
      ASSERT_NE(sample % 0x80000000u, 0u);
    }
    expectDecodes(build, random, {5, 5}, arguments);
  }
}

ORB_MEANING(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R, ErrorsInPlane0) {
  Random random("plane 0");
  int failed = 0;
  for (int round = 0; round < 50; ++round) {
    // One plane, one cleanup pass, and symbols that are not there.
    BlockSamples samples = orbtest::truncated(randomSamples(random, 4, 3, 1, 50), 31);
    samples.values[0] = 1;
    DecodeArguments arguments = argumentsFor(encodeBlock(samples, {}), {});
    arguments.style = 16 | kFallBack;
    DecodedModel model = expectDecodes(build, random, {4, 3}, arguments);
    if (!model.failed) continue;
    ++failed;
    EXPECT_EQ(model.plane, 0);
    EXPECT_EQ(model.samples.values, samples.values);
    // When each pass is a segment, the plane has moved on.
    arguments.style |= 4;
    model = expectDecodes(build, random, {4, 3}, arguments);
    ASSERT_TRUE(model.failed);
    EXPECT_EQ(model.plane, -1);
    EXPECT_EQ(model.samples.values, samples.values);
  }
  EXPECT_GT(failed, 20);
}

// Without segments there is nothing but clearing and the last mask.
ORB_MEANING(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R, NoSegments) {
  Random random("no segments");
  GuardedBytes state(orbtest::decoderBytes(random, build, {3, 3}));
  const Orb8u src = 0;
  const Orb32s length = 1;
  for (const int count : {0, -1, INT_MIN}) {
    for (const int style : {0, kKeepSamples, kKeepMidpoints, kKeepSamples | kKeepMidpoints}) {
      Plane<Orb32s> dst(3, 3, {5, 1});
      dst.fill([] { return 0x1234567F | INT_MIN; });
      Orb32s errorPlane = 77;
      EXPECT_EQ(ORB(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R)(&src, dst.data(), dst.step(), {3, 3}, 0,
                                                          5, 10, &length, count, style, &errorPlane,
                                                          state.data()),
                orbStsNoErr);
      const Orb32s kept = (style & kKeepMidpoints) != 0 ? 0x1234567F : 0x12345670;
      const Orb32s expected = (style & kKeepSamples) != 0 ? kept | INT_MIN : 0;
      EXPECT_EQ(dst.samples(), std::vector<Orb32s>(9, expected));
      dst.expectOutsideUntouched();
      EXPECT_EQ(errorPlane, 77);
    }
  }
}

// Empty segments decode to what bytes of 255 decode to; a length below 0 is that of an empty one.
ORB_MEANING(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R, EmptySegments) {
  Random random("empty segments");
  for (int round = 0; round < 40; ++round) {
    const int style = random.between(0, 31);
    const DecodeArguments empty = {0, 6, 16, std::vector<Bytes>(16), style};
    const DecodedModel model = expectDecodes(build, random, {6, 6}, empty);
    GuardedBytes state(orbtest::decoderBytes(random, build, {6, 6}));
    const std::vector<Orb32s> lengths(16, random.oneIn(2) ? -1 : INT_MIN);
    const GuardedBytes src(0);
    Plane<Orb32s> dst(6, 6);
    ORB(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R)
    (src.data(), dst.data(), dst.step(), {6, 6}, 0, 6, 16, lengths.data(), 16, style, nullptr,
     state.data());
    EXPECT_EQ(dst.samples(), model.samples.values);
  }
}

// Planes that a sample has no place for, and numbers of planes that there cannot be.
ORB_MEANING(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R, AnyNumberOfPlanes) {
  Random random("planes");
  const Bytes segment(50, 0x5A);
  for (const int bitPlanes : {0, -1, INT_MIN + 5}) {
    const DecodedBlock decoded =
        orbtest::decode(random, build, {4, 4}, {0, bitPlanes, 5, {segment}, kKeepMidpoints});
    EXPECT_EQ(decoded.status, orbStsNoErr);
    EXPECT_EQ(decoded.samples, std::vector<Orb32s>(16, 0));
  }
  for (const int bitPlanes : {1, 2, 30, 31}) {
    expectDecodes(build, random, {4, 4}, {0, bitPlanes, 100, {segment, segment, segment}, 0});
    expectDecodes(build, random, {4, 4},
                  {0, bitPlanes, 100, {segment, segment, segment}, kKeepMidpoints | 4});
  }
  for (const int bitPlanes : {32, 33, 64, 1000, INT_MAX, INT_MIN}) {
    for (const int style : {0, 2, 4, kFallBack | 16, kKeepMidpoints}) {
      const DecodeArguments arguments = {0, bitPlanes, 30, {segment, segment, segment}, style};
      const DecodedBlock decoded = orbtest::decode(random, build, {4, 4}, arguments);
      EXPECT_TRUE(decoded.status == orbStsNoErr || decoded.status == orbStsCodeBlockDataErr);
    }
  }
}

// A state may lie at any address, and what it held before does not matter.
ORB_MEANING(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R, AStateAtAnyAddress) {
  Random random("addresses");
  const BlockSamples samples = orbtest::truncated(randomSamples(random, 9, 7, 8, 60), 31);
  const DecodeArguments arguments = argumentsFor(encodeBlock(samples, {}), {});
  const Bytes state = orbtest::decoderBytes(random, build, {9, 7});
  for (int misalignment = 0; misalignment < 64; ++misalignment) {
    Plane<uint8_t> memory(static_cast<int>(state.size()), 1, {0, misalignment});
    memory.fill([&] { return random.any<uint8_t>(); });
    Plane<Orb32s> dst(9, 7);
    const DecodedBlock decoded = orbtest::decodeInto(build, dst, memory.data(), arguments);
    EXPECT_EQ(decoded.status, orbStsNoErr);
    EXPECT_EQ(decoded.samples, samples.values);
    memory.expectOutsideUntouched();
  }
}

ORB_MEANING(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R, OverlappingRows) {
  const BlockSamples samples = {1, 8, {1, 2, 3, 4, 5, 6, 7, 0}};
  const DecodeArguments arguments = argumentsFor(encodeBlock(samples, {}), {});
  Random random("overlapping rows");
  GuardedBytes state(orbtest::decoderBytes(random, build, {1, 8}));
  GuardedBytes dst(4 + 7);
  const Orb32s length = static_cast<Orb32s>(arguments.segments[0].size());
  EXPECT_EQ(ORB(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R)(
                arguments.segments[0].data(), reinterpret_cast<Orb32s*>(dst.data()), 1, {1, 8}, 0,
                arguments.bitPlanes, arguments.passCount, &length, 1, 0, nullptr, state.data()),
            orbStsNoErr);
}

// A block that is decoded in stages goes on over what is there.
ORB_MEANING(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R, KeepsSamplesAndSignificance) {
  Random random("stages");
  for (int round = 0; round < 100; ++round) {
    const OrbiSize size = {random.between(1, 9), random.between(1, 9)};
    const int style = random.between(0, 31) | kKeepMidpoints;
    GuardedBytes state(orbtest::decoderBytes(random, build, size));
    Plane<Orb32s> dst(size.width, size.height, Placement::any(random));
    orbtest::BlockDecoderModel model(size.width, size.height, 0, style);
    DecodeArguments arguments = {0, random.between(4, 12), 0, {}, style};
    for (int stage = 0; stage < 3; ++stage) {
      arguments.passCount = random.between(0, 9);
      arguments.segments.assign(1, Bytes(static_cast<size_t>(random.between(0, 40))));
      for (uint8_t& byte : arguments.segments[0]) byte = random.any<uint8_t>();
      model.restart(arguments.bitPlanes);
      model.passCounter = arguments.passCount;
      const bool failed = model.step(arguments.segments[0]);
      const DecodedBlock decoded = orbtest::decodeInto(build, dst, state.data(), arguments);
      ASSERT_EQ(decoded.status, failed ? orbStsCodeBlockDataErr : orbStsNoErr);
      ASSERT_EQ(decoded.samples, model.samples.values);
      arguments.style |= kKeepSamples | kKeepSignificance;
      arguments.bitPlanes = std::max(arguments.bitPlanes - 2, 1);
    }
  }
}

// Significance that nobody has cleared: anything may come out, but nothing bad may happen.
ORB_MEANING(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R, SignificanceOutOfNothing) {
  Random random("garbage");
  for (int round = 0; round < 100; ++round) {
    const OrbiSize size = {random.between(1, 20), random.between(1, 20)};
    Bytes segment(60);
    for (uint8_t& byte : segment) byte = random.any<uint8_t>();
    const int style = kKeepSignificance | kKeepSamples | random.between(0, 31);
    const DecodedBlock decoded =
        orbtest::decode(random, build, size, {random.between(0, 3), 20, 60, {segment}, style});
    EXPECT_TRUE(decoded.status == orbStsNoErr || decoded.status == orbStsCodeBlockDataErr);
  }
}

ORB_AGREEMENT(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R) {
  const TestBuild px = {orb::kPx, "px"};
  forManyBlocks(
      random, 300, [&](const BlockSamples& samples, const BlockStyle&, DecodeArguments arguments) {
        for (Bytes& segment : arguments.segments) {
          if (random.oneIn(4)) segment = damaged(random, segment);
        }
        arguments.style |= random.between(0, 31) << 16;
        const OrbiSize size = {samples.width, samples.height};
        const Bytes memory = orbtest::decoderBytes(random, px, size);
        Plane<Orb32s> expectedDst(size.width, size.height, {3, 2}),
            dst(size.width, size.height, {3, 2});
        // The same address for both, as far as it matters.
        Plane<uint8_t> expectedState(static_cast<int>(memory.size()), 1, {0, 5});
        Plane<uint8_t> state(static_cast<int>(memory.size()), 1, {0, 5});
        for (size_t i = 0; i < memory.size(); ++i) {
          expectedState.set(static_cast<int>(i), 0, memory[i]);
          state.set(static_cast<int>(i), 0, memory[i]);
        }
        const DecodedBlock expected =
            orbtest::decodeInto(px, expectedDst, expectedState.data(), arguments);
        const DecodedBlock actual = orbtest::decodeInto(build, dst, state.data(), arguments);
        ASSERT_EQ(actual.status, expected.status);
        ASSERT_EQ(actual.errorPlane, expected.errorPlane);
        ASSERT_TRUE(dst.sameBytes(expectedDst));
      });
}

}  // namespace
