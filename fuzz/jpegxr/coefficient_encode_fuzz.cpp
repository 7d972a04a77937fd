// Any coefficients, coded and decoded in every build: the streams of px, no byte more than the
// header tells, and the coefficients back.
#include <algorithm>
#include <cstring>

#include "frame/dispatch.h"
#include "fuzz/support/input.h"
#include "tests/support/runnable_builds.h"

namespace {

using orbfuzz::Input;
using orbfuzz::require;
using orbtest::TestBuild;

constexpr size_t kMostBytes = 120;
constexpr Orb32s kLargest = (1 << 30) + 1;

struct Block {
  Orb32s colourClass;
  bool adapts;
  Orb32s scan;
  Orb32u modelBits;
  Orb32s samples[16];
};

std::vector<Block> blocksFrom(Input& input) {
  std::vector<Block> blocks(input.byte() % 40u);
  for (Block& block : blocks) {
    const int what = input.byte();
    block.colourClass = what & 1;
    block.adapts = what & 2;
    block.scan = (what >> 2) % 3;
    block.modelBits = static_cast<Orb32u>(input.byte()) % 16;
    block.samples[0] = 0;
    for (int i = 1; i < 16; ++i) {
      const Orb32u size = input.byte();
      Orb32u value = size % 2 == 0 ? 0 : (input.byte() + 1u) * (input.byte() + 1u);
      value <<= size / 2 % 16;
      block.samples[i] = std::clamp(static_cast<Orb32s>(value), -kLargest, kLargest);
      if (size >= 128) block.samples[i] = -block.samples[i];
    }
  }
  return blocks;
}

#define CALL(name) orbRow_##name.body[build.index]

struct Record {
  Orb8u bytes[1780] = {};
  OrbiVLCState_JPEGXR* get() { return reinterpret_cast<OrbiVLCState_JPEGXR*>(bytes); }

  explicit Record(const TestBuild& build) {
    CALL(orbiVLCInit_JPEGXR)(get());
    for (int scan = 0; scan < 3; ++scan) CALL(orbiVLCScanReset_JPEGXR)(get(), scan);
  }
  void prepare(const TestBuild& build, const Block& block) {
    if (block.adapts) CALL(orbiVLCAdapt_JPEGXR)(get(), 1);
    if (block.adapts) CALL(orbiVLCScanReset_JPEGXR)(get(), block.scan);
    CALL(orbiVLCScanSet_JPEGXR)(get(), block.scan);
  }
};

std::vector<Orb8u> encode(const TestBuild& build, const std::vector<Block>& blocks) {
  // The fixed-length code of a block takes up to 32 bytes more.
  std::vector<Orb8u> bytes(blocks.size() * (kMostBytes + 32) + 2);
  Record record(build);
  Orb8u* at = bytes.data();
  Orb32u bits = 0, count = 0;
  for (const Block& block : blocks) {
    record.prepare(build, block);
    Orb32s residual[16] = {}, coefficients = 0;
    const Orb8u* before = at;
    CALL(orbiVLCEncode4x4Flex_JPEGXR_32s1u_C1R)
    (block.samples, 16, block.colourClass, block.modelBits, 0, residual, &at, &bits, &count,
     &coefficients, record.get());
    require(at <= before + kMostBytes);
    before = at;
    CALL(orbiFLCEncode4x4_JPEGXR_32s1u_C1R)
    (block.samples, 16, residual, &at, &bits, &count, block.modelBits, 0, 1);
    require(at <= before + 32);
  }
  require(count <= 16);
  at[0] = static_cast<Orb8u>(bits >> 24);
  at[1] = static_cast<Orb8u>(bits >> 16);
  bytes.resize(static_cast<size_t>(at - bytes.data()) + 2);
  return bytes;
}

// Blocks without a level are told by the host's own means, so here they are by the samples.
void decode(const TestBuild& build, const std::vector<Block>& blocks, std::vector<Orb8u> bytes) {
  bytes.resize(bytes.size() + kMostBytes);
  Record record(build);
  Orb16u* at = reinterpret_cast<Orb16u*>(bytes.data());
  Orb32u bits = 0, count = 0;
  for (const Block& block : blocks) {
    record.prepare(build, block);
    Orb32s samples[16] = {}, coefficients = 0, expected = 0;
    for (const Orb32s sample : block.samples) {
      if (std::abs(sample) >> block.modelBits != 0) ++expected;
    }
    if (expected > 0) {
      CALL(orbiVLCDecode4x4_JPEGXR_1u32s_C1R)
      (&at, &bits, &count, 1, samples, 16, block.colourClass, &coefficients, record.get());
    }
    require(coefficients == expected);
    for (Orb32s& sample : samples) sample *= 1 << block.modelBits;
    CALL(orbiFLCDecode4x4_JPEGXR_1u32s_C1IR)
    (&at, &bits, &count, samples, 16, block.modelBits, 1, 1);
    require(std::memcmp(samples, block.samples, sizeof samples) == 0);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const std::vector<Block> blocks = blocksFrom(input);
  const std::vector<TestBuild>& builds = orbtest::runnableBuilds();
  const std::vector<Orb8u> expected = encode(builds[0], blocks);
  for (const TestBuild& build : builds) {
    require(encode(build, blocks) == expected);
    decode(build, blocks, expected);
  }
  return 0;
}
