// The GIT coder.
#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "compress/git_coder_records.h"
#include "tests/compress/git_coder_model.h"
#include "tests/support/builds.h"
#include "tests/support/faults.h"
#include "tests/support/guarded.h"
#include "tests/support/no_memory.h"
#include "tests/support/plane.h"

namespace {

using orbtest::Bytes;
using orbtest::expectChecks;
using orbtest::GITDecoded;
using orbtest::GITDecoder;
using orbtest::GITEncoder;
using orbtest::GuardedBytes;
using orbtest::Plane;
using orbtest::Random;

size_t at(int i) {
  return static_cast<size_t>(i);
}
int sizeOf(const Bytes& bytes) {
  return static_cast<int>(bytes.size());
}

constexpr int kModes[] = {0, 1, 2, 3, 4, -1, INT32_MIN, INT32_MAX};

// ---- Sizes and Init

ORB_MEANING(orbsEncodeGITGetSize_8u, StoresTheSize) {
  struct Example {
    Orb32s maxSrcLen, maxDstLen, size;
    OrbStatus status;
  };
  const Example examples[] = {
      {4096, 8192, 4096 * 256 + 8192 + 33912, orbStsNoErr},
      {4096, 1, 4096 * 256 + 33912, orbStsNoErr},
      {4103, 8199, 4096 * 256 + 8192 + 33912, orbStsNoErr},
      {100000, 50001, 100000 * 256 + 50000 + 33912, orbStsNoErr},
      // Raised, both of them.
      {4095, 8192, 4096 * 256 + 8192 + 33912, orbStsDstFull},
      {100, 1000000, 4096 * 256 + 8192 + 33912, orbStsDstFull},
      {1, 1, 4096 * 256 + 8192 + 33912, orbStsDstFull},
      // The largest: 2147483640 bytes.
      {8388336, 35719, 8388336 * 256 + 35712 + 33912, orbStsNoErr},
  };
  for (const Example& example : examples) {
    Plane<Orb32s> size(1, 1, {0, 1});
    EXPECT_EQ(ORB(orbsEncodeGITGetSize_8u)(example.maxSrcLen, example.maxDstLen, size.data()),
              example.status);
    EXPECT_EQ(size.at(0), example.size);
    size.expectOutsideUntouched();
  }
}
ORB_MEANING(orbsDecodeGITGetSize_8u, StoresTheSize) {
  for (const Orb32s maxSrcLen : {1, 7, 8, 100, 4095, 4096, 100001, 8388488}) {
    Plane<Orb32s> size(1, 1, {0, 1});
    EXPECT_EQ(ORB(orbsDecodeGITGetSize_8u)(maxSrcLen, size.data()), orbStsNoErr);
    EXPECT_EQ(size.at(0), maxSrcLen / 8 * 8 * 256 + 28824);
    size.expectOutsideUntouched();
  }
}

// The functions that size, make and allocate an encoder check the same.
struct EncoderShape {
  Orb32s maxSrcLen;
  Orb32s maxDstLen;
  bool isNull;
};
template <class Run>
void expectEncoderShapeChecks(Run run) {
  using Shape = EncoderShape;
  expectChecks<Shape>({{orbStsNullPtrErr, [](Shape& s) { s.isNull = true; }},
                       {orbStsSizeErr, [](Shape& s) { s.maxSrcLen = 0; }},
                       {orbStsSizeErr, [](Shape& s) { s.maxSrcLen = INT32_MIN; }},
                       {orbStsSizeErr, [](Shape& s) { s.maxDstLen = 0; }},
                       {orbStsSizeErr, [](Shape& s) { s.maxDstLen = -1; }},
                       // More than 2^31 - 1 bytes.
                       {orbStsSizeErr, [](Shape& s) { s.maxSrcLen = 8388480; }},
                       {orbStsSizeErr, [](Shape& s) { s.maxSrcLen = INT32_MAX; }},
                       {orbStsSizeErr, [](Shape& s) { s.maxDstLen = INT32_MAX; }}},
                      {8192, 33904, false}, run);
}
struct DecoderShape {
  Orb32s maxSrcLen;
  Orb32s maxDstLen;
  bool isNull;
};
template <class Run>
void expectDecoderShapeChecks(bool hasSrcLen, bool hasDstLen, Run run) {
  using Shape = DecoderShape;
  std::vector<orbtest::Fault<Shape>> faults = {
      {orbStsNullPtrErr, [](Shape& s) { s.isNull = true; }}};
  if (hasSrcLen) {
    for (const Orb32s bad : {0, -1, INT32_MIN, 8388496, INT32_MAX}) {
      faults.push_back({orbStsSizeErr, [bad](Shape& s) { s.maxSrcLen = bad; }});
    }
  }
  if (hasDstLen) {
    for (const Orb32s bad : {0, -1, INT32_MIN}) {
      faults.push_back({orbStsSizeErr, [bad](Shape& s) { s.maxDstLen = bad; }});
    }
  }
  expectChecks<Shape>(faults, {100, 100, false}, run);
}

ORB_MEANING(orbsEncodeGITGetSize_8u, Checks) {
  Plane<Orb32s> size(1, 1);
  expectEncoderShapeChecks([&](const EncoderShape& s) {
    return ORB(orbsEncodeGITGetSize_8u)(s.maxSrcLen, s.maxDstLen, s.isNull ? nullptr : size.data());
  });
  size.expectUntouched();
}
ORB_MEANING(orbsDecodeGITGetSize_8u, Checks) {
  Plane<Orb32s> size(1, 1);
  expectDecoderShapeChecks(true, false, [&](const DecoderShape& s) {
    return ORB(orbsDecodeGITGetSize_8u)(s.maxSrcLen, s.isNull ? nullptr : size.data());
  });
  size.expectUntouched();
}
ORB_AGREEMENT(orbsEncodeGITGetSize_8u) {
  for (int round = 0; round < 300; ++round) {
    const Orb32s src = random.oneIn(3) ? random.extreme<Orb32s>() : random.between(1, 9000000);
    const Orb32s dst = random.oneIn(3) ? random.extreme<Orb32s>() : random.between(1, 9000000);
    Orb32s expected = -1, actual = -1;
    EXPECT_EQ(ORB(orbsEncodeGITGetSize_8u)(src, dst, &actual),
              PX(orbsEncodeGITGetSize_8u)(src, dst, &expected));
    EXPECT_EQ(actual, expected);
  }
}
ORB_AGREEMENT(orbsDecodeGITGetSize_8u) {
  for (int round = 0; round < 300; ++round) {
    const Orb32s src = random.oneIn(3) ? random.extreme<Orb32s>() : random.between(1, 9000000);
    Orb32s expected = -1, actual = -1;
    EXPECT_EQ(ORB(orbsDecodeGITGetSize_8u)(src, &actual),
              PX(orbsDecodeGITGetSize_8u)(src, &expected));
    EXPECT_EQ(actual, expected);
  }
}

// A record that ends where nothing may be touched.
template <class State>
class StateMemory {
 public:
  explicit StateMemory(int size) : bytes_(at(size)) {
    std::fill(bytes_.data(), bytes_.data() + std::min(size, 40000), Orb8u{0xA5});
  }
  State* get() { return reinterpret_cast<State*>(bytes_.data()); }
  Bytes bytes() const { return Bytes(bytes_.data(), bytes_.data() + bytes_.size()); }

 private:
  GuardedBytes bytes_;
};
struct Encoder : StateMemory<OrbGITEncState> {
  Encoder(const orbtest::TestBuild& build, Orb32s maxSrcLen, Orb32s maxDstLen)
      : StateMemory(sizeFor(build, maxSrcLen, maxDstLen)) {
    EXPECT_GE(ORB(orbsEncodeGITInit_8u)(maxSrcLen, maxDstLen, get()), 0);
  }
  static int sizeFor(const orbtest::TestBuild& build, Orb32s maxSrcLen, Orb32s maxDstLen) {
    Orb32s size = 0;
    EXPECT_GE(ORB(orbsEncodeGITGetSize_8u)(maxSrcLen, maxDstLen, &size), 0);
    return size;
  }
};
struct Decoder : StateMemory<OrbGITDecState> {
  Decoder(const orbtest::TestBuild& build, Orb32s maxDstLen) : StateMemory(28824) {
    EXPECT_EQ(ORB(orbsDecodeGITInit_8u)(maxDstLen, get()), orbStsNoErr);
  }
};

ORB_MEANING(orbsEncodeGITInit_8u, Checks) {
  StateMemory<OrbGITEncState> memory(33912);
  const Bytes before = memory.bytes();
  expectEncoderShapeChecks([&](const EncoderShape& s) {
    return ORB(orbsEncodeGITInit_8u)(s.maxSrcLen, s.maxDstLen, s.isNull ? nullptr : memory.get());
  });
  EXPECT_EQ(memory.bytes(), before);
  EXPECT_EQ(ORB(orbsEncodeGITInit_8u)(4096, 1, memory.get()), orbStsNoErr);
  EXPECT_EQ(ORB(orbsEncodeGITInit_8u)(4095, 1, memory.get()), orbStsDstFull);
}
ORB_MEANING(orbsDecodeGITInit_8u, Checks) {
  StateMemory<OrbGITDecState> memory(28824);
  const Bytes before = memory.bytes();
  expectDecoderShapeChecks(false, true, [&](const DecoderShape& s) {
    return ORB(orbsDecodeGITInit_8u)(s.maxDstLen, s.isNull ? nullptr : memory.get());
  });
  EXPECT_EQ(memory.bytes(), before);
  EXPECT_EQ(ORB(orbsDecodeGITInit_8u)(1, memory.get()), orbStsNoErr);
}
ORB_AGREEMENT(orbsEncodeGITInit_8u) {
  for (int round = 0; round < 50; ++round) {
    const Orb32s src = random.oneIn(3) ? random.extreme<Orb32s>() : random.between(1, 10000);
    const Orb32s dst = random.oneIn(3) ? random.extreme<Orb32s>() : random.between(1, 10000);
    StateMemory<OrbGITEncState> expected(33912), actual(33912);
    EXPECT_EQ(ORB(orbsEncodeGITInit_8u)(src, dst, actual.get()),
              PX(orbsEncodeGITInit_8u)(src, dst, expected.get()));
    EXPECT_EQ(actual.bytes(), expected.bytes());
  }
}
ORB_AGREEMENT(orbsDecodeGITInit_8u) {
  for (int round = 0; round < 50; ++round) {
    const Orb32s dst = random.extreme<Orb32s>();
    StateMemory<OrbGITDecState> expected(28824), actual(28824);
    EXPECT_EQ(ORB(orbsDecodeGITInit_8u)(dst, actual.get()),
              PX(orbsDecodeGITInit_8u)(dst, expected.get()));
    EXPECT_EQ(actual.bytes(), expected.bytes());
  }
}

// ---- InitAlloc and Free

void expectEncoderAllocation(const orbtest::TestBuild& build) {
  Orb32s unset = 0;
  OrbGITEncState* const before = reinterpret_cast<OrbGITEncState*>(&unset);
  OrbGITEncState* state = before;
  expectEncoderShapeChecks([&](const EncoderShape& s) {
    return ORB(orbsEncodeGITInitAlloc_8u)(s.maxSrcLen, s.maxDstLen, s.isNull ? nullptr : &state);
  });
  EXPECT_EQ(state, before);
  for (const Orb32s maxSrcLen : {4096, 100}) {
    state = before;
    EXPECT_EQ(ORB(orbsEncodeGITInitAlloc_8u)(maxSrcLen, 8192, &state),
              maxSrcLen == 100 ? orbStsDstFull : orbStsNoErr);
    ASSERT_NE(state, before);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(state) % 64, 0u);
    // All of 4096 bytes, whatever was asked for.
    const Bytes block(4096, 7);
    Bytes coded(8192);
    Orb32s length = 0;
    EXPECT_EQ(ORB(orbsEncodeGIT_8u)(block.data(), 4096, coded.data(), &length, 3, state),
              orbStsNoErr);
    ORB(orbsGITFree_8u)(state);
  }
  ORB(orbsGITFree_8u)(nullptr);
}
void expectDecoderAllocation(const orbtest::TestBuild& build) {
  Orb32s unset = 0;
  OrbGITDecState* const before = reinterpret_cast<OrbGITDecState*>(&unset);
  OrbGITDecState* state = before;
  expectDecoderShapeChecks(true, true, [&](const DecoderShape& s) {
    return ORB(orbsDecodeGITInitAlloc_8u)(s.maxSrcLen, s.maxDstLen, s.isNull ? nullptr : &state);
  });
  EXPECT_EQ(state, before);
  EXPECT_EQ(ORB(orbsDecodeGITInitAlloc_8u)(2000, 10, &state), orbStsNoErr);
  ASSERT_NE(state, before);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(state) % 64, 0u);
  ORB(orbsGITFree_8u)(state);
  ORB(orbsGITFree_8u)(nullptr);
}

ORB_MEANING(orbsEncodeGITInitAlloc_8u, Allocates) {
  expectEncoderAllocation(build);
}
ORB_MEANING(orbsEncodeGITInitAlloc_8u, NoMemory) {
  orbtest::expectWithoutMemory([&] {
    OrbGITEncState* const before = reinterpret_cast<OrbGITEncState*>(const_cast<char*>(build.tag));
    OrbGITEncState* state = before;
    return ORB(orbsEncodeGITInitAlloc_8u)(1, 1, &state) == orbStsMemAllocErr && state == before;
  });
}
ORB_AGREEMENT(orbsEncodeGITInitAlloc_8u) {
  expectEncoderAllocation(build);
}
ORB_MEANING(orbsDecodeGITInitAlloc_8u, Allocates) {
  expectDecoderAllocation(build);
}
// It is Init that misses the record.
ORB_MEANING(orbsDecodeGITInitAlloc_8u, NoMemory) {
  orbtest::expectWithoutMemory([&] {
    OrbGITDecState* state = reinterpret_cast<OrbGITDecState*>(const_cast<char*>(build.tag));
    return ORB(orbsDecodeGITInitAlloc_8u)(1, 1, &state) == orbStsNullPtrErr && state == nullptr;
  });
}
ORB_AGREEMENT(orbsDecodeGITInitAlloc_8u) {
  expectDecoderAllocation(build);
}
ORB_MEANING(orbsGITFree_8u, Releases) {
  expectEncoderAllocation(build);
}
ORB_AGREEMENT(orbsGITFree_8u) {
  expectDecoderAllocation(build);
}

// ---- Blocks

Bytes constant(int length, int byte) {
  return Bytes(at(length), static_cast<Orb8u>(byte));
}
Bytes randomBlock(Random& random, int length, int alphabet) {
  Bytes block(at(length));
  const int lowest = random.between(0, 256 - alphabet);
  for (Orb8u& byte : block) byte = static_cast<Orb8u>(lowest + random.between(0, alphabet - 1));
  return block;
}
// Stretches of a few bytes each, as a sorted block has them.
Bytes sortedLike(Random& random, int length) {
  Bytes block;
  while (sizeOf(block) < length) {
    const Bytes more = randomBlock(random, random.between(1, 400), random.between(1, 6));
    block.insert(block.end(), more.begin(), more.end());
  }
  block.resize(at(length));
  return block;
}
// One byte is rare, and all others have higher ranks: long intervals after short ones.
Bytes withRareBytes(Random& random, int length) {
  Bytes block = randomBlock(random, length, 3);
  for (Orb8u& byte : block) byte = static_cast<Orb8u>(1 + byte % 3);
  for (int i = 0; i < 30 && i < length; ++i) block[at(i)] = 255;
  block.back() = 255;
  return block;
}

struct Case {
  Bytes block;
  int mode;
  Bytes coded;

  Case(const Bytes& itsBlock, int itsMode)
      : block(itsBlock), mode(itsMode), coded(GITEncoder(1 << 20).encode(itsBlock, itsMode)) {}
};
const std::vector<Case>& cases() {
  static const std::vector<Case> all = [] {
    std::vector<Case> some;
    Random random("blocks of intervals");
    Bytes everything;
    for (int i = 0; i < 1024; ++i) everything.push_back(static_cast<Orb8u>(i * 5));
    for (const int mode : kModes) {
      some.emplace_back(Bytes(), mode);
      for (const int byte : {0, 1, 128, 254, 255}) some.emplace_back(constant(40, byte), mode);
      some.emplace_back(everything, mode);
      some.emplace_back(withRareBytes(random, 4000), mode);
      for (int i = 0; i < 4; ++i) {
        some.emplace_back(randomBlock(random, random.between(1, 3000), random.between(1, 256)),
                          mode);
        some.emplace_back(sortedLike(random, random.between(1, 3000)), mode);
      }
    }
    return some;
  }();
  return all;
}

// ---- orbsEncodeGIT_8u

ORB_MEANING(orbsEncodeGIT_8u, Checks) {
  struct Call {
    const Orb8u* pSrc;
    Orb32s srcLen;
    Orb8u* pDst;
    Orb32s* pDstLen;
    OrbGITEncState* pState;
  };
  Encoder encoder(build, 5000, 9000), raised(build, 10, 1);
  const Bytes block(5000), before = encoder.bytes();
  Plane<Orb8u> coded(9000, 1);
  Plane<Orb32s> length(1, 1, {0, 1});
  const auto run = [&](const Call& c) {
    return ORB(orbsEncodeGIT_8u)(c.pSrc, c.srcLen, c.pDst, c.pDstLen, 3, c.pState);
  };
  const Call good = {block.data(), 5000, coded.data(), length.data(), encoder.get()};
  expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.pSrc = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pDst = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pState = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pDstLen = nullptr; }},
                      {orbStsSizeErr, [](Call& c) { c.srcLen = -1; }},
                      {orbStsSizeErr, [](Call& c) { c.srcLen = INT32_MIN; }},
                      {orbStsSizeErr, [](Call& c) { c.srcLen = 5001; }},
                      {orbStsSizeErr, [](Call& c) { c.srcLen = INT32_MAX; }}},
                     good, run);
  EXPECT_EQ(encoder.bytes(), before);
  coded.expectUntouched();
  length.expectUntouched();
  EXPECT_EQ(run(good), orbStsNoErr);
  // As many as the record was raised to.
  EXPECT_EQ(run({block.data(), 4096, coded.data(), length.data(), raised.get()}), orbStsNoErr);
  EXPECT_EQ(run({block.data(), 4097, coded.data(), length.data(), raised.get()}), orbStsSizeErr);
}

template <class Function>
void expectEncodes(Function* function, OrbGITEncState* state, const Bytes& bytes, int mode,
                   const Bytes& expected) {
  const GuardedBytes block(bytes);
  GuardedBytes coded(expected.size());
  Plane<Orb32s> length(1, 1, {0, 3});
  ASSERT_EQ(function(block.data(), block.size(), coded.data(), length.data(), mode, state),
            orbStsNoErr);
  length.expectOutsideUntouched();
  ASSERT_EQ(length.at(0), sizeOf(expected));
  ASSERT_TRUE(std::equal(expected.begin(), expected.end(), coded.data()));
}

ORB_MEANING(orbsEncodeGIT_8u, AnyBlockInAnyMode) {
  Encoder encoder(build, 4096, 100000);
  for (const Case& one : cases()) {
    SCOPED_TRACE("mode " + std::to_string(one.mode) + ", " + std::to_string(one.block.size()) +
                 " bytes");
    expectEncodes(ORB(orbsEncodeGIT_8u), encoder.get(), one.block, one.mode, one.coded);
    if (testing::Test::HasFatalFailure()) return;
  }
}

// Nothing at all: 255 streams of nothing but ones, and 0 as the number of zeros, in 1 + 10 bits.
ORB_MEANING(orbsEncodeGIT_8u, AnEmptyBlock) {
  Encoder encoder(build, 4096, 8192);
  Bytes expected;
  for (int stream = 0; stream < 255; ++stream) {
    expected.insert(expected.end(), {0, 0, 0, 1, 0xFF});
  }
  expected.insert(expected.end(), {0, 0, 0, 2, 0x00, 0x1F});
  expectEncodes(ORB(orbsEncodeGIT_8u), encoder.get(), {}, 3, expected);
}

// One byte of each kind. The 255 comes first: no interval. So does every other, but then all others
// have come before it: for the byte 3 those of 2, 1 and 0 that are in front.
ORB_MEANING(orbsEncodeGIT_8u, WorkedByHand) {
  Encoder encoder(build, 4096, 8192);
  // Byte 2: 0, then, when 1, 0 and 1 have passed, 3. Codes 0 and 10 bits; the mean of 0 makes k 1,
  // and 3 is 1 and 1, 10 1; byte 1: 0, and 1 for the 0 in front of it. Two zeros.
  Bytes expected;
  for (int byte = 255; byte >= 0; --byte) {
    if (byte == 2) {
      // 0 0000000000 | 10 1 | 11
      expected.insert(expected.end(), {0, 0, 0, 2, 0b00000000, 0b00010111});
    } else if (byte == 1) {
      // 0 0000000000 | 0 1 | 111
      expected.insert(expected.end(), {0, 0, 0, 2, 0b00000000, 0b00001111});
    } else if (byte == 0) {
      // 0 0000000010 | 11111
      expected.insert(expected.end(), {0, 0, 0, 2, 0b00000000, 0b01011111});
    } else {
      expected.insert(expected.end(), {0, 0, 0, 1, 0xFF});
    }
  }
  expectEncodes(ORB(orbsEncodeGIT_8u), encoder.get(), {2, 1, 0, 1, 2, 0}, 3, expected);
}

// Its coded length, and not a byte less.
ORB_MEANING(orbsEncodeGIT_8u, RoomForTheCodedBlock) {
  Random random("room for a coded block");
  const Bytes block = randomBlock(random, 4096, 200);
  const Bytes expected = GITEncoder(4096).encode(block, 1);
  ASSERT_GT(sizeOf(expected), 4096);
  Encoder enough(build, 4096, sizeOf(expected));
  expectEncodes(ORB(orbsEncodeGIT_8u), enough.get(), block, 1, expected);

  Encoder tooLittle(build, 4096, sizeOf(expected) - 1);
  Plane<Orb8u> coded(sizeOf(expected), 1);
  Plane<Orb32s> length(1, 1);
  EXPECT_EQ(
      ORB(orbsEncodeGIT_8u)(block.data(), 4096, coded.data(), length.data(), 1, tooLittle.get()),
      orbStsSizeErr);
  coded.expectUntouched();
  length.expectUntouched();
}

// Streams that are full, which no block leads to: in records whose length was changed, each stream
// takes a few bytes, and what doesn't fit is left out.
ORB_MEANING(orbsEncodeGIT_8u, FullStreams) {
  Random random("full streams");
  for (int round = 0; round < 60; ++round) {
    const Orb32s capacity = random.between(1, 40);
    const int mode = kModes[round % 8];
    const Bytes block = sortedLike(random, random.between(0, capacity));
    // Just as much memory as such a record has.
    StateMemory<OrbGITEncState> record(
        static_cast<int>(sizeof(OrbGITEncState) + at((capacity / 8 * 8 + 8) * 256)));
    record.get()->maxSrcLen = capacity;
    record.get()->maxDstLen = 100000;
    const Bytes expected = GITEncoder(at(capacity)).encode(block, mode);
    expectEncodes(ORB(orbsEncodeGIT_8u), record.get(), block, mode, expected);
    if (testing::Test::HasFatalFailure()) return;
  }
}

// At an odd address, with a source and a destination at others.
ORB_MEANING(orbsEncodeGIT_8u, AnyAddress) {
  const Case& one = cases()[9];
  const int n = sizeOf(one.block);
  for (int misalignment = 1; misalignment < 16; misalignment += 7) {
    Plane<Orb8u> record(Encoder::sizeFor(build, 4096, 100000), 1, {0, misalignment});
    OrbGITEncState* const state = reinterpret_cast<OrbGITEncState*>(record.data());
    ASSERT_EQ(ORB(orbsEncodeGITInit_8u)(4096, 100000, state), orbStsNoErr);
    Plane<Orb8u> block(n, 1, {0, misalignment}), coded(sizeOf(one.coded), 1, {0, misalignment});
    for (int i = 0; i < n; ++i) block.set(i, 0, one.block[at(i)]);
    Orb32s length = 0;
    EXPECT_EQ(ORB(orbsEncodeGIT_8u)(block.data(), n, coded.data(), &length, one.mode, state),
              orbStsNoErr);
    EXPECT_EQ(coded.samples(), one.coded);
    coded.expectOutsideUntouched();
    record.expectOutsideUntouched();
    block.expectUntouched();
  }
}

ORB_AGREEMENT(orbsEncodeGIT_8u) {
  Encoder expectedEncoder(build, 8192, 200000), encoder(build, 8192, 200000);
  for (int round = 0; round < 40; ++round) {
    const Bytes block = random.oneIn(2) ? sortedLike(random, random.between(0, 8192))
                                        : randomBlock(random, random.between(0, 8192), 256);
    const int mode = random.between(-1, 5);
    Plane<Orb8u> expected(200000, 1), actual(200000, 1, {0, 1});
    Orb32s expectedLength = 0, length = 0;
    const Orb8u none = 0;
    const Orb8u* const src = block.empty() ? &none : block.data();
    EXPECT_EQ(PX(orbsEncodeGIT_8u)(src, sizeOf(block), expected.data(), &expectedLength, mode,
                                   expectedEncoder.get()),
              orbStsNoErr);
    EXPECT_EQ(
        ORB(orbsEncodeGIT_8u)(src, sizeOf(block), actual.data(), &length, mode, encoder.get()),
        orbStsNoErr);
    ASSERT_EQ(length, expectedLength);
    ASSERT_TRUE(actual.sameBytes(expected));
  }
}

// ---- orbsDecodeGIT_8u

ORB_MEANING(orbsDecodeGIT_8u, Checks) {
  struct Call {
    const Orb8u* pSrc;
    Orb32s srcLen;
    Orb8u* pDst;
    Orb32s* pDstLen;
    OrbGITDecState* pState;
  };
  const Case& one = cases()[9];
  Decoder decoder(build, 4096);
  const Bytes before = decoder.bytes();
  Plane<Orb8u> block(4096, 1);
  Plane<Orb32s> length(1, 1, {0, 1});
  const auto run = [&](const Call& c) {
    return ORB(orbsDecodeGIT_8u)(c.pSrc, c.srcLen, c.pDst, c.pDstLen, one.mode, c.pState);
  };
  const Call good = {one.coded.data(), sizeOf(one.coded), block.data(), length.data(),
                     decoder.get()};
  expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.pSrc = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pDst = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pDstLen = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pState = nullptr; }},
                      {orbStsSizeErr, [](Call& c) { c.srcLen = -1; }},
                      {orbStsSizeErr, [](Call& c) { c.srcLen = INT32_MIN; }}},
                     good, run);
  EXPECT_EQ(decoder.bytes(), before);
  block.expectUntouched();
  length.expectUntouched();
  EXPECT_EQ(run(good), orbStsNoErr);
  EXPECT_EQ(length.at(0), sizeOf(one.block));
}

template <class Function>
GITDecoded decode(Function* function, OrbGITDecState* state, const Bytes& bytes, int mode,
                  int room) {
  const GuardedBytes coded(bytes);
  GuardedBytes block(at(room));
  std::fill(block.data(), block.data() + room, Orb8u{0xA5});
  Plane<Orb32s> length(1, 1, {0, 3});
  length.set(0, 0, -77);
  GITDecoded decoded;
  decoded.status = function(coded.data(), coded.size(), block.data(), length.data(), mode, state);
  length.expectOutsideUntouched();
  // If there is more than room, the room has been used and the length has not.
  int written = length.at(0);
  if (decoded.status != orbStsNoErr) {
    EXPECT_EQ(written, -77);
    written = room;
  }
  EXPECT_LE(written, room);
  for (int i = written; i < room; ++i) EXPECT_EQ(block.data()[i], 0xA5) << "byte " << i;
  decoded.block.assign(block.data(), block.data() + written);
  return decoded;
}

ORB_MEANING(orbsDecodeGIT_8u, TakesBackTheCoding) {
  for (const Case& one : cases()) {
    SCOPED_TRACE("mode " + std::to_string(one.mode) + ", " + std::to_string(one.block.size()) +
                 " bytes");
    const int n = sizeOf(one.block);
    Decoder decoder(build, std::max(n, 1));
    GITDecoded decoded = decode(ORB(orbsDecodeGIT_8u), decoder.get(), one.coded, one.mode, n);
    ASSERT_EQ(decoded.status, orbStsNoErr);
    ASSERT_TRUE(decoded.block == one.block);
    if (n < 2) continue;
    // Room for all but a byte.
    Decoder tooLittle(build, n - 1);
    decoded = decode(ORB(orbsDecodeGIT_8u), tooLittle.get(), one.coded, one.mode, n - 1);
    ASSERT_EQ(decoded.status, orbStsSizeErr);
    ASSERT_TRUE(std::equal(decoded.block.begin(), decoded.block.end(), one.block.begin()));
  }
}

// Damaged in any way, a block decodes to what the steps lead to, and touches nothing outside.
void damage(Random& random, Bytes& coded) {
  switch (random.between(0, 5)) {
    case 0:
      coded.resize(random.between(size_t{0}, coded.size()));
      break;
    case 1:
      // Lengths: the first streams have theirs near the start.
      coded[random.between(size_t{0}, std::min(coded.size() - 1, size_t{40}))] =
          random.any<Orb8u>();
      break;
    case 2:
      for (Orb8u& byte : coded) {
        if (random.oneIn(40)) byte = random.any<Orb8u>();
      }
      break;
    case 3:
      for (Orb8u& byte : coded) {
        if (random.oneIn(40)) byte = 0xFF;
      }
      break;
    default:
      for (int i = random.between(1, 8); i > 0; --i) {
        coded[random.between(size_t{0}, coded.size() - 1)] ^=
            static_cast<Orb8u>(1 << random.between(0, 7));
      }
  }
}
ORB_MEANING(orbsDecodeGIT_8u, DamagedBlocks) {
  Random random("damaged blocks");
  for (int round = 0; round < 150; ++round) {
    const Case& one = cases()[random.between(size_t{0}, cases().size() - 1)];
    if (one.block.size() > 1500) continue;
    Bytes coded = one.coded;
    damage(random, coded);
    const int room = random.between(1, 2000);
    const int mode = random.oneIn(4) ? random.between(-1, 4) : one.mode;
    Decoder decoder(build, room);
    const GITDecoded expected = GITDecoder().decode(coded, mode, at(room));
    const GITDecoded decoded = decode(ORB(orbsDecodeGIT_8u), decoder.get(), coded, mode, room);
    ASSERT_EQ(decoded.status, expected.status) << "round " << round;
    ASSERT_TRUE(decoded.block == expected.block) << "round " << round;
  }
}

// Streams of values that no encoder writes: of any size, and with any number of steps.
Bytes blockOfStreams(Random& random) {
  Bytes coded;
  for (int stream = 0; stream < 256; ++stream) {
    std::string bits;
    for (int i = random.oneIn(8) ? random.between(0, 6) : 0; i > 0; --i) {
      const int ones = random.oneIn(3) ? random.between(8, 20) : random.between(0, 8);
      bits += std::string(at(ones), '1') + '0';
      if (ones >= 8) bits += std::string(at(random.between(0, 9)), '1') + '0';
      for (int k = random.between(0, 70); k > 0; --k) bits += random.oneIn(2) ? '1' : '0';
    }
    const Bytes bytes = orbtest::packBits(bits + '1', '1');
    const Bytes length = orbtest::packBits(orbtest::binary(sizeOf(bytes), 32));
    coded.insert(coded.end(), length.begin(), length.end());
    coded.insert(coded.end(), bytes.begin(), bytes.end());
  }
  return coded;
}
ORB_MEANING(orbsDecodeGIT_8u, AnyStreams) {
  Random random("any streams");
  for (int round = 0; round < 150; ++round) {
    const Bytes coded = blockOfStreams(random);
    const int mode = random.between(-1, 4);
    Decoder decoder(build, 1000);
    const GITDecoded expected = GITDecoder().decode(coded, mode, 1000);
    const GITDecoded decoded = decode(ORB(orbsDecodeGIT_8u), decoder.get(), coded, mode, 1000);
    ASSERT_EQ(decoded.status, expected.status) << "round " << round;
    ASSERT_TRUE(decoded.block == expected.block) << "round " << round;
  }
}

ORB_MEANING(orbsDecodeGIT_8u, NothingToReadIsAnEmptyBlock) {
  Decoder decoder(build, 10);
  for (const Bytes& coded : {Bytes(), Bytes(3, 0xFF), Bytes(4, 0xFF), Bytes(2000, 0)}) {
    for (const int mode : kModes) {
      const GITDecoded decoded = decode(ORB(orbsDecodeGIT_8u), decoder.get(), coded, mode, 10);
      EXPECT_EQ(decoded.status, orbStsNoErr);
      EXPECT_EQ(decoded.block, Bytes());
    }
  }
}

// Intervals of more than a million, for which k doubles until it is 32: both directions.
ORB_MEANING(orbsDecodeGIT_8u, TheLongestIntervals) {
  struct LongCase {
    Bytes block;
    Bytes coded;
  };
  static const LongCase one = [] {
    Bytes block = constant(10, 255);
    block.resize(1100010, 1);
    block.push_back(255);
    orbtest::RiceStatistics rare, frequent, zeros;
    std::string rareBits, frequentBits;
    for (int i = 0; i < 10; ++i) rareBits += orbtest::riceCode(0, rare);
    EXPECT_EQ(rare.k(), 1u);
    rareBits += orbtest::riceCode(1100000, rare);
    for (int i = 0; i < 1100000; ++i) frequentBits += orbtest::riceCode(0, frequent);
    const auto streamOf = [](const std::string& bits) {
      const Bytes bytes = orbtest::packBits(bits + '1', '1');
      Bytes stream = orbtest::packBits(orbtest::binary(sizeOf(bytes), 32));
      stream.insert(stream.end(), bytes.begin(), bytes.end());
      return stream;
    };
    Bytes coded = streamOf(rareBits);
    for (int byte = 254; byte >= 0; --byte) {
      const Bytes stream = streamOf(byte == 1   ? frequentBits
                                    : byte == 0 ? orbtest::riceCode(0, zeros)
                                                : "");
      coded.insert(coded.end(), stream.begin(), stream.end());
    }
    return LongCase{block, coded};
  }();
  const int n = sizeOf(one.block);
  OrbGITEncState* encoder = nullptr;
  ASSERT_EQ(ORB(orbsEncodeGITInitAlloc_8u)(n, n, &encoder), orbStsNoErr);
  expectEncodes(ORB(orbsEncodeGIT_8u), encoder, one.block, 3, one.coded);
  ORB(orbsGITFree_8u)(encoder);
  Decoder decoder(build, n);
  const GITDecoded decoded = decode(ORB(orbsDecodeGIT_8u), decoder.get(), one.coded, 3, n);
  EXPECT_EQ(decoded.status, orbStsNoErr);
  EXPECT_TRUE(decoded.block == one.block);
}

ORB_MEANING(orbsDecodeGIT_8u, AnyAddress) {
  const Case& one = cases()[9];
  for (int misalignment = 1; misalignment < 16; misalignment += 7) {
    Plane<Orb8u> record(28824, 1, {0, misalignment});
    OrbGITDecState* const state = reinterpret_cast<OrbGITDecState*>(record.data());
    ASSERT_EQ(ORB(orbsDecodeGITInit_8u)(sizeOf(one.block), state), orbStsNoErr);
    Plane<Orb8u> coded(sizeOf(one.coded), 1, {0, misalignment});
    Plane<Orb8u> block(sizeOf(one.block), 1, {0, misalignment});
    for (int i = 0; i < sizeOf(one.coded); ++i) coded.set(i, 0, one.coded[at(i)]);
    Orb32s length = 0;
    EXPECT_EQ(ORB(orbsDecodeGIT_8u)(coded.data(), sizeOf(one.coded), block.data(), &length,
                                    one.mode, state),
              orbStsNoErr);
    EXPECT_EQ(block.samples(), one.block);
    block.expectOutsideUntouched();
    record.expectOutsideUntouched();
    coded.expectUntouched();
  }
}

ORB_AGREEMENT(orbsDecodeGIT_8u) {
  for (int round = 0; round < 300; ++round) {
    Bytes coded = random.oneIn(4) ? blockOfStreams(random)
                                  : cases()[random.between(size_t{0}, cases().size() - 1)].coded;
    if (random.oneIn(2)) damage(random, coded);
    const int mode = random.between(-1, 4);
    const int room = random.between(1, 4000);
    Decoder expectedDecoder(build, room), decoder(build, room);
    const GITDecoded expected =
        decode(PX(orbsDecodeGIT_8u), expectedDecoder.get(), coded, mode, room);
    const GITDecoded decoded = decode(ORB(orbsDecodeGIT_8u), decoder.get(), coded, mode, room);
    ASSERT_EQ(decoded.status, expected.status);
    ASSERT_TRUE(decoded.block == expected.block);
  }
}

}  // namespace
