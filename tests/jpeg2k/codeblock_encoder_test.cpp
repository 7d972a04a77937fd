// Code-block encoder (ITU-T T.800 annexes C and D).
#include <algorithm>
#include <climits>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "jpeg2k/codeblock_records.h"
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
using orbtest::encodeBlock;
using orbtest::EncodedBlock;
using orbtest::EncodedModel;
using orbtest::Encoder;
using orbtest::GuardedBytes;
using orbtest::Placement;
using orbtest::Plane;
using orbtest::planeOf;
using orbtest::Random;
using orbtest::randomSamples;
using orbtest::TestBuild;

// ---- The model itself

// The test sequence of ITU-T T.88 H.2, whose MQ coder is the same: one context, from state 0.
TEST(CodeBlockModel, TestSequence) {
  const Bytes data = {0x00, 0x02, 0x00, 0x51, 0x00, 0x00, 0x00, 0xC0, 0x03, 0x52, 0x87,
                      0x2A, 0xAA, 0xAA, 0xAA, 0xAA, 0x82, 0xC0, 0x20, 0x00, 0xFC, 0xD7,
                      0x9E, 0xF6, 0xBF, 0x7F, 0xED, 0x90, 0x4F, 0x46, 0xA3, 0xBF};
  const Bytes coded = {0x84, 0xC7, 0x3B, 0xFC, 0xE1, 0xA1, 0x43, 0x04, 0x02, 0x20,
                       0x00, 0x00, 0x41, 0x0D, 0xBB, 0x86, 0xF4, 0x31, 0x7F, 0xFF,
                       0x88, 0xFF, 0x37, 0x47, 0x1A, 0xDB, 0x6A, 0xDF};
  orbtest::MqEncoderModel encoder;
  orbtest::MqStandardDecoder decoder(coded);
  orbtest::MqDecoderModel other(coded);
  orbtest::MqContext contexts[3];
  for (const uint8_t byte : data) {
    for (int i = 7; i >= 0; --i) {
      const int bit = byte >> i & 1;
      encoder.encode(contexts[0], bit);
      ASSERT_EQ(decoder.decode(contexts[1]), bit);
      ASSERT_EQ(other.decode(contexts[2]), bit);
    }
  }
  EXPECT_EQ(encoder.flushFully(), coded);
}

// ---- orbiEncodeInitAlloc_JPEG2K, orbiEncodeFree_JPEG2K

ORB_MEANING(orbiEncodeInitAlloc_JPEG2K, ChecksInOrder) {
  const auto function = ORB(orbiEncodeInitAlloc_JPEG2K);
  OrbiEncodeState_JPEG2K* const before = reinterpret_cast<OrbiEncodeState_JPEG2K*>(64);
  OrbiEncodeState_JPEG2K* state = before;
  EXPECT_EQ(function(nullptr, {0, 0}), orbStsNullPtrErr);
  EXPECT_EQ(function(&state, {0, 1}), orbStsSizeErr);
  EXPECT_EQ(function(&state, {1, 0}), orbStsSizeErr);
  EXPECT_EQ(function(&state, {INT_MIN, INT_MIN}), orbStsSizeErr);
  EXPECT_EQ(state, before);
}

ORB_MEANING(orbiEncodeInitAlloc_JPEG2K, RefusesWhatNoMemoryHolds) {
  const OrbiSize sizes[] = {{INT_MAX, INT_MAX}, {INT_MAX, 1}, {1, INT_MAX},
                            {1 << 16, 1 << 16}, {4096, 4096}, {1970177, 1}};
  for (const OrbiSize size : sizes) {
    OrbiEncodeState_JPEG2K* state = reinterpret_cast<OrbiEncodeState_JPEG2K*>(64);
    EXPECT_EQ(ORB(orbiEncodeInitAlloc_JPEG2K)(&state, size), orbStsMemAllocErr);
    EXPECT_EQ(state, nullptr);
  }
}

// The pointer may lie anywhere; the state starts with its tag, and without a pass.
ORB_MEANING(orbiEncodeInitAlloc_JPEG2K, MakesAnEmptyState) {
  Plane<OrbiEncodeState_JPEG2K*> pointer(1, 1, {0, 3});
  ASSERT_EQ(ORB(orbiEncodeInitAlloc_JPEG2K)(pointer.data(), {5, 7}), orbStsNoErr);
  pointer.expectOutsideUntouched();
  OrbiEncodeState_JPEG2K* const state = pointer.at(0);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(state) % 64, 0u);
  EXPECT_EQ(std::memcmp(state, "DSML", 4), 0);
  Orb32s value = 7;
  Orb64f distortion = 7;
  EXPECT_EQ(ORB(orbiEncodeGetRate_JPEG2K)(state, 0, &value), orbStsPassIndexErr);
  EXPECT_EQ(ORB(orbiEncodeGetDist_JPEG2K)(state, 0, &distortion), orbStsPassIndexErr);
  EXPECT_EQ(ORB(orbiEncodeGetTermPassLen_JPEG2K)(state, 1, &value), orbStsPassIndexErr);
  EXPECT_EQ(ORB(orbiEncodeGetTermPassLen_JPEG2K)(state, 0, &value), orbStsNoErr);
  EXPECT_EQ(value, 0);
  Orb8u byte = 99;
  Orb32s length = 1, isNotFinished = 1;
  EXPECT_EQ(ORB(orbiEncodeStoreBits_JPEG2K_1u)(&byte, &length, state, &isNotFinished), orbStsNoErr);
  EXPECT_EQ(length, 0);
  EXPECT_EQ(isNotFinished, 0);
  EXPECT_EQ(byte, 99);
  EXPECT_EQ(ORB(orbiEncodeFree_JPEG2K)(state), orbStsNoErr);
}

ORB_AGREEMENT(orbiEncodeInitAlloc_JPEG2K) {
  for (int round = 0; round < 50; ++round) {
    const OrbiSize size = {random.oneIn(4) ? random.extreme<Orb32s>() : random.between(1, 64),
                           random.oneIn(4) ? random.extreme<Orb32s>() : random.between(1, 64)};
    if (size.width > 64 && size.height > 64) continue;
    OrbiEncodeState_JPEG2K *expected = nullptr, *actual = nullptr;
    ASSERT_EQ(ORB(orbiEncodeInitAlloc_JPEG2K)(&actual, size),
              PX(orbiEncodeInitAlloc_JPEG2K)(&expected, size));
    ASSERT_EQ(actual == nullptr, expected == nullptr);
    if (expected) {
      ASSERT_EQ(std::memcmp(actual, expected, sizeof *expected), 0);
      // Any build's state is any other's.
      PX(orbiEncodeFree_JPEG2K)(actual);
      ORB(orbiEncodeFree_JPEG2K)(expected);
    }
  }
}

ORB_MEANING(orbiEncodeFree_JPEG2K, WantsAState) {
  EXPECT_EQ(ORB(orbiEncodeFree_JPEG2K)(nullptr), orbStsNullPtrErr);
}

ORB_MEANING(orbiEncodeFree_JPEG2K, DoesNotLookAtTheTag) {
  OrbiEncodeState_JPEG2K* state = nullptr;
  ASSERT_EQ(ORB(orbiEncodeInitAlloc_JPEG2K)(&state, {8, 8}), orbStsNoErr);
  std::memset(state, 0, 4);
  EXPECT_EQ(ORB(orbiEncodeFree_JPEG2K)(state), orbStsNoErr);
}

ORB_AGREEMENT(orbiEncodeFree_JPEG2K) {
  EXPECT_EQ(ORB(orbiEncodeFree_JPEG2K)(nullptr), PX(orbiEncodeFree_JPEG2K)(nullptr));
  for (const int size : {1, 64, 1024}) {
    OrbiEncodeState_JPEG2K* state = nullptr;
    ASSERT_EQ(PX(orbiEncodeInitAlloc_JPEG2K)(&state, {size, 4}), orbStsNoErr);
    EXPECT_EQ(ORB(orbiEncodeFree_JPEG2K)(state), orbStsNoErr);
  }
}

// ---- Comparing with the model

EncodedBlock expectedBlock(const EncodedModel& model) {
  EncodedBlock block;
  block.bitLength = model.bitLength;
  block.passCount = static_cast<int>(model.passes.size());
  block.segmentCount = static_cast<int>(model.segmentLengths.size());
  block.bytes = model.bytes;
  block.segmentLengths = model.segmentLengths;
  for (int i = 0; i < block.passCount; ++i) {
    block.rates.push_back(model.passes[static_cast<size_t>(i)].rate);
    block.distortions.push_back(model.distortion(i));
  }
  return block;
}

std::string described(const BlockSamples& samples, const BlockStyle& style) {
  return std::to_string(samples.width) + " x " + std::to_string(samples.height) + ", subband " +
         std::to_string(style.subband) + ", " + std::to_string(style.magnBits) +
         " bits, termination " + std::to_string(style.termination) + ", style " +
         std::to_string(style.flags);
}

void expectBlock(const EncodedBlock& actual, const EncodedBlock& expected) {
  ASSERT_EQ(actual.bitLength, expected.bitLength);
  ASSERT_EQ(actual.passCount, expected.passCount);
  ASSERT_EQ(actual.segmentCount, expected.segmentCount);
  ASSERT_EQ(actual.segmentLengths, expected.segmentLengths);
  ASSERT_EQ(actual.bytes, expected.bytes);
  ASSERT_EQ(actual.rates, expected.rates);
  ASSERT_EQ(actual.distortions, expected.distortions);
}

// Codes a block into buffers of any lengths up to `room`, and compares all that there is to know.
void expectEncodes(const TestBuild& build, Random& random, const BlockSamples& samples,
                   const BlockStyle& style, int room = 1 << 20) {
  SCOPED_TRACE(described(samples, style));
  Encoder encoder(build, {samples.width, samples.height});
  const EncodedBlock actual = encoder.encode(
      samples, style, [&] { return random.between(1, room); }, Placement::any(random));
  expectBlock(actual, expectedBlock(encodeBlock(samples, style)));
}

// ---- orbiEncodeLoadCodeBlock_JPEG2K_32s_C1R

ORB_MEANING(orbiEncodeLoadCodeBlock_JPEG2K_32s_C1R, ChecksInOrder) {
  const auto function = ORB(orbiEncodeLoadCodeBlock_JPEG2K_32s_C1R);
  Random random("load checks");
  const BlockSamples samples = randomSamples(random, 8, 8, 10, 50);
  Encoder encoder(build, {8, 8});
  EncodedBlock block = encoder.load(samples, {});
  const Orb32s* const src = samples.values.data();
  OrbiEncodeState_JPEG2K* const state = encoder.state();
  Orb32s bits = 77, passes = 77, segments = 77;
  // Each call has one fault more than those below it.
  EXPECT_EQ(function(nullptr, 0, {0, 0}, nullptr, 0, 31, 0, 0, 0, nullptr, nullptr, nullptr),
            orbStsNullPtrErr);
  state->tag ^= 1;
  EXPECT_EQ(function(nullptr, 0, {0, 0}, state, 0, 31, 0, 0, 0, nullptr, nullptr, nullptr),
            orbStsContextMatchErr);
  state->tag ^= 1;
  EXPECT_EQ(function(nullptr, 0, {0, 0}, state, 0, 31, 0, 0, 0, nullptr, &passes, &segments),
            orbStsNullPtrErr);
  EXPECT_EQ(function(nullptr, 0, {0, 0}, state, 0, 31, 0, 0, 0, &bits, nullptr, &segments),
            orbStsNullPtrErr);
  EXPECT_EQ(function(nullptr, 0, {0, 0}, state, 0, 31, 0, 0, 0, &bits, &passes, nullptr),
            orbStsNullPtrErr);
  EXPECT_EQ(function(nullptr, 0, {8, 0}, state, 0, 31, 0, 0, 0, &bits, &passes, &segments),
            orbStsSizeErr);
  EXPECT_EQ(function(nullptr, 0, {-1, 8}, state, 0, 31, 0, 0, 0, &bits, &passes, &segments),
            orbStsSizeErr);
  EXPECT_EQ(function(nullptr, 0, {99, 99}, state, 0, 31, 0, 0, 0, &bits, &passes, &segments),
            orbStsNullPtrErr);
  EXPECT_EQ(function(src, 0, {99, 99}, state, 0, 31, 0, 0, 0, &bits, &passes, &segments),
            orbStsStepErr);
  EXPECT_EQ(function(src, -32, {8, 8}, state, 0, 31, 0, 0, 0, &bits, &passes, &segments),
            orbStsStepErr);
  EXPECT_EQ(function(src, 32, {99, 99}, state, 0, 31, 0, 0, 0, &bits, &passes, &segments),
            orbStsSizeErr);
  EXPECT_EQ(bits, 77);
  EXPECT_EQ(passes, 77);
  EXPECT_EQ(segments, 77);
  // The block that was there before still is.
  encoder.store(block, [] { return 1000; });
  encoder.query(block);
  expectBlock(block, expectedBlock(encodeBlock(samples, {})));
}

ORB_MEANING(orbiEncodeLoadCodeBlock_JPEG2K_32s_C1R, RefusesWhatTheStateHasNoRoomFor) {
  const BlockSamples samples = {1024, 8, std::vector<Orb32s>(1024 * 8, 1)};
  Encoder encoder(build, {16, 16});
  Orb32s bits, passes, segments;
  const auto load = [&](int width, int height) {
    return ORB(orbiEncodeLoadCodeBlock_JPEG2K_32s_C1R)(samples.values.data(), 16, {width, height},
                                                       encoder.state(), 0, 31, 0, 0, 0, &bits,
                                                       &passes, &segments);
  };
  EXPECT_EQ(load(16, 16), orbStsNoErr);
  EXPECT_EQ(load(17, 16), orbStsSizeErr);
  EXPECT_EQ(load(16, 17), orbStsSizeErr);
  EXPECT_EQ(load(INT_MAX, INT_MAX), orbStsSizeErr);
  EXPECT_EQ(load(1, 1024), orbStsSizeErr);
  EXPECT_EQ(load(1, 1), orbStsNoErr);
}

ORB_MEANING(orbiEncodeLoadCodeBlock_JPEG2K_32s_C1R, CountsPassesAndSegments) {
  // A single sample with its highest bit in each plane.
  for (int bits = 0; bits <= 31; ++bits) {
    for (int style : {0, 2, 4, 2 | 4}) {
      const uint32_t magnitude = bits == 0 ? 0 : 1u << (bits - 1);
      const BlockSamples samples = {1, 1, {static_cast<Orb32s>(magnitude | 0x80000000u)}};
      Encoder encoder(build, {1, 1});
      const EncodedBlock block = encoder.load(samples, {0, 31, 0, style});
      EXPECT_EQ(block.bitLength, bits);
      const int passes = std::max(3 * bits - 2, 0);
      EXPECT_EQ(block.passCount, passes);
      // With the bypass each plane from the fifth on has a raw segment and one of the MQ coder.
      const int alternating = 1 + (style == 2 ? 2 * std::max(bits - 4, 0) : 0);
      EXPECT_EQ(block.segmentCount, (style & 4) != 0 ? passes : alternating);
    }
  }
}

ORB_MEANING(orbiEncodeLoadCodeBlock_JPEG2K_32s_C1R, BlocksWithoutPasses) {
  const BlockSamples zeros = {5, 6, std::vector<Orb32s>(30, INT_MIN)};
  const BlockSamples low = {5, 6, std::vector<Orb32s>(30, 0xFF)};
  for (const int style : {0, 4, 16, 2 | 4 | 16}) {
    Encoder encoder(build, {5, 6});
    for (const auto& [samples, bits] : {std::pair{zeros, 0}, std::pair{low, 8}}) {
      const EncodedBlock block = encoder.encode(samples, {0, 31 - 8, 0, style}, [] { return 1; });
      EXPECT_EQ(block.bitLength, bits);
      EXPECT_EQ(block.passCount, 0);
      EXPECT_EQ(block.segmentCount, (style & 4) != 0 ? 0 : 1);
      EXPECT_TRUE(block.bytes.empty());
      for (const int length : block.segmentLengths) EXPECT_EQ(length, 0);
    }
  }
}

// No bits below 1, all of them from 31 on.
ORB_MEANING(orbiEncodeLoadCodeBlock_JPEG2K_32s_C1R, AnyNumberOfMagnitudeBits) {
  Random random("magnitude bits");
  const BlockSamples samples = randomSamples(random, 7, 9, 31, 80);
  for (int magnBits = 1; magnBits <= 31; ++magnBits) {
    expectEncodes(build, random, samples, {0, magnBits, 0, 32});
  }
  Encoder encoder(build, {7, 9});
  const EncodedBlock all = encoder.encode(samples, {0, 31, 0, 0}, [] { return 100000; });
  for (const int magnBits : {32, 33, 63, 100, INT_MAX}) {
    const EncodedBlock block = encoder.encode(samples, {0, magnBits, 0, 0}, [] { return 100000; });
    EXPECT_TRUE(block == all) << magnBits;
  }
  for (const int magnBits : {0, -1, -32, INT_MIN}) {
    EXPECT_EQ(encoder.load(samples, {0, magnBits, 0, 0}).passCount, 0) << magnBits;
  }
}

ORB_MEANING(orbiEncodeLoadCodeBlock_JPEG2K_32s_C1R, Subbands) {
  Random random("subbands");
  for (int round = 0; round < 20; ++round) {
    const BlockSamples samples = randomSamples(random, 12, 11, 8, random.between(5, 60));
    for (int subband = 0; subband < 4; ++subband) {
      expectEncodes(build, random, samples, {subband, 31, 0, 0});
    }
    Encoder encoder(build, {12, 11});
    const EncodedBlock ll = encoder.encode(samples, {0, 31, 0, 0}, [] { return 100000; });
    for (const int subband : {1, 4, 5, -1, INT_MAX, INT_MIN}) {
      const EncodedBlock block =
          encoder.encode(samples, {subband, 31, 0, 0}, [] { return 100000; });
      EXPECT_TRUE(block == ll) << subband;
    }
  }
}

ORB_MEANING(orbiEncodeLoadCodeBlock_JPEG2K_32s_C1R, IgnoresReservedAndUnknownStyles) {
  Random random("reserved");
  const BlockSamples samples = randomSamples(random, 9, 9, 12, 70);
  Encoder encoder(build, {9, 9});
  EncodedBlock expected = encoder.encode(samples, {0, 31, 0, 0}, [] { return 100000; });
  EncodedBlock block;
  ASSERT_EQ(ORB(orbiEncodeLoadCodeBlock_JPEG2K_32s_C1R)(
                samples.values.data(), 36, {9, 9}, encoder.state(), 0, 31, 77, INT_MIN, ~63,
                &block.bitLength, &block.passCount, &block.segmentCount),
            orbStsNoErr);
  encoder.store(block, [] { return 100000; });
  encoder.query(block);
  expectBlock(block, expected);
}

// Overlapping rows are the host's affair.
ORB_MEANING(orbiEncodeLoadCodeBlock_JPEG2K_32s_C1R, AnyStep) {
  Random random("steps");
  GuardedBytes src(4 * 5 + 6 * 1);
  for (int i = 0; i < src.size(); ++i) src.data()[i] = random.any<uint8_t>();
  BlockSamples samples = {5, 7, {}};
  for (int y = 0; y < 7; ++y) {
    for (int x = 0; x < 5; ++x) {
      Orb32s sample;
      std::memcpy(&sample, src.data() + y + 4 * x, 4);
      samples.values.push_back(sample);
    }
  }
  Encoder encoder(build, {5, 7});
  EncodedBlock block;
  ASSERT_EQ(ORB(orbiEncodeLoadCodeBlock_JPEG2K_32s_C1R)(
                reinterpret_cast<const Orb32s*>(src.data()), 1, {5, 7}, encoder.state(), 0, 31, 0,
                0, 0, &block.bitLength, &block.passCount, &block.segmentCount),
            orbStsNoErr);
  encoder.store(block, [] { return 100000; });
  encoder.query(block);
  expectBlock(block, expectedBlock(encodeBlock(samples, {})));
}

// A state serves block after block, of any size that fits, finished or not.
ORB_MEANING(orbiEncodeLoadCodeBlock_JPEG2K_32s_C1R, AbandonsTheBlockBefore) {
  Random random("one state");
  Encoder encoder(build, {40, 40});
  for (int round = 0; round < 60; ++round) {
    const BlockSamples samples = anySamples(random);
    const BlockStyle style = anyStyle(random);
    SCOPED_TRACE(described(samples, style));
    if (random.oneIn(2)) {
      encoder.load(anySamples(random), anyStyle(random));
      Orb8u some[7];
      Orb32s length = 7, isNotFinished;
      ASSERT_EQ(ORB(orbiEncodeStoreBits_JPEG2K_1u)(some, &length, encoder.state(), &isNotFinished),
                orbStsNoErr);
    }
    const EncodedBlock block = encoder.encode(samples, style, [] { return 100000; });
    expectBlock(block, expectedBlock(encodeBlock(samples, style)));
    if (testing::Test::HasFailure()) return;
  }
}

template <class Body>
void forManyBlocks(Random& random, int rounds, Body body) {
  for (int round = 0; round < rounds && !testing::Test::HasFailure(); ++round) {
    const BlockSamples samples = anySamples(random);
    body(samples, anyStyle(random));
  }
}

void expectAgreement(const TestBuild& build, Random& random, int rounds) {
  const TestBuild px = {orb::kPx, "px"};
  forManyBlocks(random, rounds, [&](const BlockSamples& samples, const BlockStyle& style) {
    SCOPED_TRACE(described(samples, style));
    Encoder reference(px, {samples.width, samples.height});
    Encoder encoder(build, {samples.width, samples.height});
    const int room = random.oneIn(2) ? 1 << 20 : random.between(1, 40);
    expectBlock(encoder.encode(
                    samples, style, [&] { return room; }, Placement::any(random)),
                reference.encode(samples, style, [&] { return room; }));
  });
}

ORB_AGREEMENT(orbiEncodeLoadCodeBlock_JPEG2K_32s_C1R) {
  expectAgreement(build, random, 150);
}

// ---- orbiEncodeStoreBits_JPEG2K_1u

ORB_MEANING(orbiEncodeStoreBits_JPEG2K_1u, ChecksInOrder) {
  const auto function = ORB(orbiEncodeStoreBits_JPEG2K_1u);
  Random random("store checks");
  const BlockSamples samples = randomSamples(random, 8, 8, 10, 50);
  Encoder encoder(build, {8, 8});
  EncodedBlock block = encoder.load(samples, {});
  OrbiEncodeState_JPEG2K* const state = encoder.state();
  Orb8u dst[4] = {9, 9, 9, 9};
  Orb32s length = 0, isNotFinished = 77;
  EXPECT_EQ(function(nullptr, nullptr, nullptr, nullptr), orbStsNullPtrErr);
  state->tag ^= 0x80000000u;
  EXPECT_EQ(function(nullptr, nullptr, state, nullptr), orbStsContextMatchErr);
  state->tag ^= 0x80000000u;
  EXPECT_EQ(function(nullptr, &length, state, &isNotFinished), orbStsNullPtrErr);
  EXPECT_EQ(function(dst, nullptr, state, &isNotFinished), orbStsNullPtrErr);
  EXPECT_EQ(function(dst, &length, state, nullptr), orbStsNullPtrErr);
  EXPECT_EQ(function(dst, &length, state, &isNotFinished), orbStsSizeErr);
  EXPECT_EQ(length, 0);
  length = -1;
  EXPECT_EQ(function(dst, &length, state, &isNotFinished), orbStsSizeErr);
  EXPECT_EQ(length, -1);
  EXPECT_EQ(isNotFinished, 77);
  EXPECT_EQ(dst[0], 9);
  encoder.store(block, [] { return 1000; });
  encoder.query(block);
  expectBlock(block, expectedBlock(encodeBlock(samples, {})));
}

ORB_MEANING(orbiEncodeStoreBits_JPEG2K_1u, AnyBlocksInOneCall) {
  Random random("blocks");
  forManyBlocks(random, 700, [&](const BlockSamples& samples, const BlockStyle& style) {
    expectEncodes(build, random, samples, style);
  });
}

// Every byte is a place to stop at.
ORB_MEANING(orbiEncodeStoreBits_JPEG2K_1u, AnyBlocksInPieces) {
  Random random("pieces");
  for (const int room : {1, 2, 5, 60}) {
    forManyBlocks(random, 150, [&](const BlockSamples& samples, const BlockStyle& style) {
      expectEncodes(build, random, samples, style, room);
    });
  }
}

ORB_MEANING(orbiEncodeStoreBits_JPEG2K_1u, EveryStyle) {
  Random random("styles");
  for (int flags = 0; flags < 64; ++flags) {
    for (const int termination : {0, 1, 2, 3, -1}) {
      const BlockSamples samples =
          randomSamples(random, random.between(1, 8), random.between(1, 13), 9, 60);
      BlockStyle style = {random.between(0, 3), 31, termination, flags};
      expectEncodes(build, random, samples, style, 50);
      if (testing::Test::HasFailure()) return;
    }
  }
}

ORB_MEANING(orbiEncodeStoreBits_JPEG2K_1u, EverySizeOfAStripe) {
  Random random("sizes");
  const OrbiSize sizes[] = {{1, 1},  {1, 2},  {1, 3},  {1, 4},   {1, 5},    {1, 64},  {64, 1},
                            {2, 64}, {64, 2}, {64, 3}, {64, 64}, {4, 1024}, {1024, 4}};
  for (const OrbiSize size : sizes) {
    for (const int percent : {0, 3, 100}) {
      const BlockSamples samples = randomSamples(random, size.width, size.height, 7, percent);
      expectEncodes(build, random, samples, {random.between(0, 3), 31, 0, random.between(0, 63)});
    }
  }
}

ORB_MEANING(orbiEncodeStoreBits_JPEG2K_1u, ExtremeSamples) {
  Random random("extreme samples");
  for (int round = 0; round < 40; ++round) {
    BlockSamples samples = {random.between(1, 9), random.between(1, 9), {}};
    for (int i = 0; i < samples.width * samples.height; ++i) {
      samples.values.push_back(random.extreme<Orb32s>());
    }
    expectEncodes(build, random, samples, anyStyle(random));
  }
}

// A complete block has no more bytes.
ORB_MEANING(orbiEncodeStoreBits_JPEG2K_1u, StaysFinished) {
  Random random("finished");
  const BlockSamples samples = randomSamples(random, 8, 8, 10, 50);
  Encoder encoder(build, {8, 8});
  EncodedBlock block = encoder.encode(samples, {}, [] { return 1000; });
  Orb8u byte = 99;
  Orb32s length = 1, isNotFinished = 1;
  EXPECT_EQ(ORB(orbiEncodeStoreBits_JPEG2K_1u)(&byte, &length, encoder.state(), &isNotFinished),
            orbStsNoErr);
  EXPECT_EQ(length, 0);
  EXPECT_EQ(isNotFinished, 0);
  EXPECT_EQ(byte, 99);
  block.rates.clear();
  block.distortions.clear();
  block.segmentLengths.clear();
  encoder.query(block);
  expectBlock(block, expectedBlock(encodeBlock(samples, {})));
}

// A buffer that the block just fills has it complete in one call.
ORB_MEANING(orbiEncodeStoreBits_JPEG2K_1u, ExactRoom) {
  Random random("exact room");
  forManyBlocks(random, 60, [&](const BlockSamples& samples, const BlockStyle& style) {
    const EncodedModel model = encodeBlock(samples, style);
    if (model.bytes.empty()) return;
    Encoder encoder(build, {samples.width, samples.height});
    EncodedBlock block = encoder.load(samples, style);
    GuardedBytes dst(model.bytes.size());
    Orb32s length = dst.size(), isNotFinished = 77;
    ASSERT_EQ(
        ORB(orbiEncodeStoreBits_JPEG2K_1u)(dst.data(), &length, encoder.state(), &isNotFinished),
        orbStsNoErr);
    ASSERT_EQ(length, dst.size());
    // Passes without bytes of their own may be left over.
    encoder.store(block, [] { return 1; });
    ASSERT_TRUE(block.bytes.empty());
  });
}

// A raw segment that ends with a byte of 255 has no padding behind it, and its rate does without
// that byte; so has the rate of a pass behind it that adds no byte, even if it is finished in
// another call.
ORB_MEANING(orbiEncodeStoreBits_JPEG2K_1u, RawSegmentsOf255) {
  // All samples become significant in the first plane; from the fifth on there are eight bits of
  // refinement, all ones.
  const BlockSamples samples = {2, 4, std::vector<Orb32s>(8, 0x3F)};
  for (const int room : {1, 2, 1000}) {
    Encoder encoder(build, {2, 4});
    const EncodedBlock block = encoder.encode(samples, {0, 31, 1, 2}, [&] { return room; });
    expectBlock(block, expectedBlock(encodeBlock(samples, {0, 31, 1, 2})));
    ASSERT_EQ(block.segmentCount, 5);
    EXPECT_EQ(block.segmentLengths[1], 1);
    EXPECT_EQ(block.segmentLengths[2], 0);
    const int first = block.segmentLengths[0];
    EXPECT_EQ(block.bytes[static_cast<size_t>(first)], 255);
    EXPECT_EQ(block.rates[11], first);  // refinement
    EXPECT_EQ(block.rates[12], first);  // cleanup
  }
}

std::vector<Bytes> withSegment(std::vector<Bytes> segments, size_t i, Bytes segment) {
  segments[i] = std::move(segment);
  return segments;
}

bool decodesTo(const TestBuild& build, Random& random, const BlockSamples& samples,
               const DecodeArguments& arguments) {
  const DecodedBlock decoded =
      orbtest::decode(random, build, {samples.width, samples.height}, arguments);
  return decoded.status == orbStsNoErr && decoded.samples == samples.values;
}

// The shortest termination: no segment can be cut any further, unless by the bytes 255, 127 that
// read like what stands behind a segment and had left the coder before it knew.
ORB_MEANING(orbiEncodeStoreBits_JPEG2K_1u, ShortestSegmentsCannotBeCut) {
  Random random("cuts");
  int cuts = 0;
  for (int round = 0; round < 120; ++round) {
    BlockStyle style = {random.between(0, 3), 31, 1, random.oneIn(2) ? 4 : 0};
    style.flags |= random.oneIn(2) ? 8 : 0;
    const BlockSamples samples =
        orbtest::truncated(randomSamples(random, random.between(1, 6), random.between(1, 9),
                                         random.between(1, 9), random.between(1, 100)),
                           31);
    const EncodedBlock block = orbtest::encode(build, samples, style);
    DecodeArguments arguments = {style.subband, block.bitLength, block.passCount, block.segments(),
                                 style.flags};
    ASSERT_TRUE(decodesTo(build, random, samples, arguments));
    const std::vector<Bytes> segments = block.segments();
    for (size_t i = 0; i < segments.size(); ++i) {
      Bytes cut = segments[i];
      while (cut.size() >= 2 && cut[cut.size() - 2] == 255 && cut.back() == 127) {
        cut.resize(cut.size() - 2);
      }
      while (!cut.empty()) {
        cut.pop_back();
        arguments.segments = withSegment(segments, i, cut);
        ASSERT_FALSE(decodesTo(build, random, samples, arguments)) << "segment " << i;
        ++cuts;
      }
    }
  }
  EXPECT_GT(cuts, 1000);
}

// Nor is there any other string that is shorter, of all that there are.
ORB_MEANING(orbiEncodeStoreBits_JPEG2K_1u, NoShorterSegmentDoes) {
  Random random("shorter strings");
  int lengths[3] = {};
  for (int round = 0; round < 300; ++round) {
    const BlockSamples samples = orbtest::truncated(
        randomSamples(random, random.between(1, 3), random.between(1, 3), random.between(1, 2), 50),
        31);
    const EncodedBlock block = orbtest::encode(build, samples, {0, 31, 1, 0});
    const int length = static_cast<int>(block.bytes.size());
    if (length < 1 || length > 2) continue;
    ++lengths[length];
    DecodeArguments arguments = {0, block.bitLength, block.passCount, {{}}, 0};
    ASSERT_FALSE(decodesTo(build, random, samples, arguments));
    if (length == 1) continue;
    for (int byte = 0; byte < 256; ++byte) {
      arguments.segments = {{static_cast<uint8_t>(byte)}};
      ASSERT_FALSE(decodesTo(build, random, samples, arguments));
    }
  }
  EXPECT_GT(lengths[1], 10);
  EXPECT_GT(lengths[2], 5);
}

// No segment of the MQ coder ends with 255, and none holds a marker.
ORB_MEANING(orbiEncodeStoreBits_JPEG2K_1u, SegmentsHoldNoMarkers) {
  Random random("markers");
  forManyBlocks(random, 300, [&](const BlockSamples& samples, const BlockStyle& style) {
    if (style.has(2)) return;
    for (const Bytes& segment : orbtest::encode(build, samples, style).segments()) {
      ASSERT_TRUE(segment.empty() || segment.back() != 255);
      for (size_t i = 1; i < segment.size(); ++i) {
        ASSERT_TRUE(segment[i - 1] != 255 || segment[i] < 144);
      }
    }
  });
}

ORB_AGREEMENT(orbiEncodeStoreBits_JPEG2K_1u) {
  expectAgreement(build, random, 150);
}

// ---- The queries

template <class Function, class Result>
void expectQueryChecks(Function* function, Encoder& encoder, int count, Result untouched) {
  Result result = untouched;
  OrbiEncodeState_JPEG2K* const state = encoder.state();
  EXPECT_EQ(function(nullptr, -1, nullptr), orbStsNullPtrErr);
  state->tag ^= 256;
  EXPECT_EQ(function(state, -1, nullptr), orbStsContextMatchErr);
  state->tag ^= 256;
  EXPECT_EQ(function(state, -1, nullptr), orbStsNullPtrErr);
  for (const int index : {-1, INT_MIN, count, count + 1, INT_MAX}) {
    EXPECT_EQ(function(state, index, &result), orbStsPassIndexErr);
  }
  EXPECT_EQ(result, untouched);
  EXPECT_EQ(function(state, 0, &result), orbStsNoErr);
  EXPECT_NE(result, untouched);
  Plane<Result> placed(1, 1, {0, 3});
  EXPECT_EQ(function(state, count - 1, placed.data()), orbStsNoErr);
  placed.expectOutsideUntouched();
  EXPECT_EQ(function(state, count - 1, &result), orbStsNoErr);
  EXPECT_EQ(placed.at(0), result);
}

// A block with 16 passes in 5 segments.
EncodedBlock encodeForQueries(Encoder& encoder) {
  Random random("queries");
  const BlockSamples samples = randomSamples(random, 8, 8, 6, 100);
  return encoder.encode(samples, {0, 31, 0, 2}, [] { return 1000; });
}

ORB_MEANING(orbiEncodeGetRate_JPEG2K, ChecksInOrder) {
  Encoder encoder(build, {8, 8});
  const EncodedBlock block = encodeForQueries(encoder);
  expectQueryChecks(ORB(orbiEncodeGetRate_JPEG2K), encoder, block.passCount, Orb32s{-77});
}

ORB_MEANING(orbiEncodeGetDist_JPEG2K, ChecksInOrder) {
  Encoder encoder(build, {8, 8});
  const EncodedBlock block = encodeForQueries(encoder);
  expectQueryChecks(ORB(orbiEncodeGetDist_JPEG2K), encoder, block.passCount, Orb64f{-77});
}

ORB_MEANING(orbiEncodeGetTermPassLen_JPEG2K, ChecksInOrder) {
  Encoder encoder(build, {8, 8});
  const EncodedBlock block = encodeForQueries(encoder);
  ASSERT_EQ(block.segmentCount, 5);
  expectQueryChecks(ORB(orbiEncodeGetTermPassLen_JPEG2K), encoder, block.segmentCount, Orb32s{-77});
}

// With each pass a segment of its own, a pass without bytes has a length of 0.
ORB_MEANING(orbiEncodeGetTermPassLen_JPEG2K, AddUpToTheBlock) {
  Random random("lengths");
  forManyBlocks(random, 200, [&](const BlockSamples& samples, const BlockStyle& style) {
    const EncodedBlock block = orbtest::encode(build, samples, style);
    size_t sum = 0;
    for (const int length : block.segmentLengths) {
      ASSERT_GE(length, 0);
      sum += static_cast<size_t>(length);
    }
    ASSERT_EQ(sum, block.bytes.size());
  });
}

// As many bytes as a pass is said to need are enough to decode it.
ORB_MEANING(orbiEncodeGetRate_JPEG2K, BytesAreEnough) {
  Random random("rates");
  int passes = 0;
  for (int round = 0; round < 150; ++round) {
    const BlockSamples samples = anySamples(random);
    BlockStyle style = anyStyle(random);
    const EncodedBlock block = orbtest::encode(build, samples, style);
    const OrbiSize size = {samples.width, samples.height};
    for (int pass = 0; pass < block.passCount; pass += random.between(1, 6)) {
      DecodeArguments arguments = {style.subband, block.bitLength, pass + 1, block.segments(),
                                   style.flags};
      const DecodedBlock expected = orbtest::decode(random, build, size, arguments);
      int left = block.rates[static_cast<size_t>(pass)];
      for (Bytes& segment : arguments.segments) {
        segment.resize(std::min(segment.size(), static_cast<size_t>(left)));
        left -= static_cast<int>(segment.size());
      }
      const DecodedBlock decoded = orbtest::decode(random, build, size, arguments);
      ASSERT_EQ(decoded.samples, expected.samples) << described(samples, style) << " pass " << pass;
      ++passes;
    }
  }
  EXPECT_GT(passes, 500);
}

double valueOf(uint32_t magnitude) {
  return static_cast<double>(magnitude);
}

// The distortion is what a decoder of the same passes makes of it, when the samples have no bits
// beyond the six that are counted. In an exact last plane nothing is left open.
ORB_MEANING(orbiEncodeGetDist_JPEG2K, IsTheDecreaseOfTheSquaredError) {
  Random random("distortion");
  int passes = 0;
  for (int round = 0; round < 150; ++round) {
    const int low = random.between(1, 24), bits = random.between(1, 7);
    BlockSamples samples = randomSamples(random, random.between(1, 9), random.between(1, 9), bits,
                                         random.between(10, 100));
    for (Orb32s& sample : samples.values) {
      const uint32_t magnitude = static_cast<uint32_t>(sample) % 0x80000000u;
      sample = static_cast<Orb32s>(magnitude << low | (sample < 0 ? 0x80000000u : 0));
    }
    const bool isExact = random.oneIn(2);
    const int lastPlane = isExact ? low : low + random.between(0, bits - 1);
    const EncodedBlock block =
        orbtest::encode(build, samples, {0, 31 - lastPlane, 0, isExact ? 32 : 0});
    for (int pass = 0; pass < block.passCount; ++pass) {
      const DecodedBlock decoded =
          orbtest::decode(random, build, {samples.width, samples.height},
                          {0, block.bitLength, pass + 1, {block.bytes}, 0x40000});
      double decrease = 0;
      for (size_t i = 0; i < samples.values.size(); ++i) {
        const uint32_t magnitude = static_cast<uint32_t>(samples.values[i]) % 0x80000000u;
        uint32_t known = static_cast<uint32_t>(decoded.samples[i]) % 0x80000000u;
        if (isExact) known &= ~(1u << (low - 1));
        const double value = valueOf(magnitude), error = value - valueOf(known);
        decrease += value * value - error * error;
      }
      ASSERT_EQ(block.distortions[static_cast<size_t>(pass)], std::ldexp(decrease, -2 * lastPlane))
          << described(samples, {0, 31 - lastPlane, 0, isExact ? 32 : 0}) << " pass " << pass;
      ++passes;
    }
  }
  EXPECT_GT(passes, 500);
}

// 0.75 squared steps of the plane, in those of plane 0, as long as a 32-bit integer holds the
// weight.
ORB_MEANING(orbiEncodeGetDist_JPEG2K, TheWeightIsOf32Bits) {
  for (int plane = 0; plane <= 30; ++plane) {
    const EncodedBlock block =
        orbtest::encode(build, {1, 1, {static_cast<Orb32s>(1u << plane)}}, {0, 31, 0, 0});
    double expected = std::ldexp(0.75, 2 * plane);
    if (plane == 22) expected = -expected;
    if (plane > 22) expected = std::ldexp(0.75, 2 * plane - 32);
    EXPECT_EQ(block.distortions[0], expected) << plane;
  }
}

ORB_AGREEMENT(orbiEncodeGetRate_JPEG2K) {
  expectAgreement(build, random, 60);
}
ORB_AGREEMENT(orbiEncodeGetDist_JPEG2K) {
  expectAgreement(build, random, 60);
}
ORB_AGREEMENT(orbiEncodeGetTermPassLen_JPEG2K) {
  expectAgreement(build, random, 60);
}

}  // namespace
