// Any samples in any style, in every build: the bytes of px, however they are cut, which decode to
// the samples.
#include <cstring>

#include "frame/dispatch.h"
#include "fuzz/support/input.h"
#include "tests/support/runnable_builds.h"

namespace {

using orbfuzz::Input;
using orbfuzz::require;
using orbtest::TestBuild;

struct Block {
  OrbiSize size;
  Orb32s subband, magnBits, termination, style;
  std::vector<Orb32s> samples;
};

Block blockFrom(Input& input) {
  Block block;
  block.size = {1 + input.byte() % 12, 1 + input.byte() % 12};
  block.subband = input.byte() % 4;
  block.magnBits = 1 + input.byte() % 31;
  block.termination = input.byte() % 3;
  block.style = input.byte() % 64;
  const int low = input.byte() % 24;
  for (int i = 0; i < block.size.width * block.size.height; ++i) {
    const uint32_t bits = input.byte() | static_cast<uint32_t>(input.byte()) << 8;
    block.samples.push_back(static_cast<Orb32s>((bits & 0x7FFF) << low % 17 | bits >> 15 << 31));
  }
  return block;
}

struct Coded {
  std::vector<Orb8u> bytes;
  std::vector<Orb32s> numbers, lengths;
  std::vector<Orb64f> distortions;
  Orb32s bitLength = 0, passes = 0, segments = 0;

  bool operator==(const Coded& other) const {
    return bytes == other.bytes && numbers == other.numbers && lengths == other.lengths &&
           distortions == other.distortions && bitLength == other.bitLength &&
           passes == other.passes && segments == other.segments;
  }
};

Coded encode(const TestBuild& build, const Block& block, int room) {
  Coded coded;
  OrbiEncodeState_JPEG2K* state = nullptr;
  require(orbRow_orbiEncodeInitAlloc_JPEG2K.body[build.index](&state, block.size) == orbStsNoErr);
  require(orbRow_orbiEncodeLoadCodeBlock_JPEG2K_32s_C1R.body[build.index](
              block.samples.data(), block.size.width * 4, block.size, state, block.subband,
              block.magnBits, block.termination, 0, block.style, &coded.bitLength, &coded.passes,
              &coded.segments) == orbStsNoErr);
  Orb32s isNotFinished = 1;
  while (isNotFinished) {
    std::vector<Orb8u> buffer(static_cast<size_t>(room));
    Orb32s length = room;
    require(orbRow_orbiEncodeStoreBits_JPEG2K_1u.body[build.index](buffer.data(), &length, state,
                                                                   &isNotFinished) == orbStsNoErr);
    require(length >= 0 && length <= room);
    coded.bytes.insert(coded.bytes.end(), buffer.begin(), buffer.begin() + length);
  }
  for (Orb32s i = 0; i < coded.passes; ++i) {
    Orb32s rate = 0;
    Orb64f distortion = 0;
    orbRow_orbiEncodeGetRate_JPEG2K.body[build.index](state, i, &rate);
    orbRow_orbiEncodeGetDist_JPEG2K.body[build.index](state, i, &distortion);
    coded.numbers.push_back(rate);
    coded.distortions.push_back(distortion);
  }
  for (Orb32s i = 0; i < coded.segments; ++i) {
    Orb32s length = 0;
    orbRow_orbiEncodeGetTermPassLen_JPEG2K.body[build.index](state, i, &length);
    coded.lengths.push_back(length);
  }
  orbRow_orbiEncodeFree_JPEG2K.body[build.index](state);
  return coded;
}

void requireDecodes(const Block& block, Coded coded) {
  Orb32s size = 0;
  require(legacy90orbiDecodeGetBufSize_JPEG2K(block.size, &size) == orbStsNoErr);
  std::vector<Orb8u> state(static_cast<size_t>(size));
  std::vector<Orb32s> samples(block.samples.size());
  const Orb32s check = block.termination == 2 ? 0x100000 : 0;
  coded.bytes.push_back(0);
  coded.lengths.push_back(0);
  require(legacy90orbiDecodeCodeBlock_JPEG2K_1u32s_C1R(
              coded.bytes.data(), samples.data(), block.size.width * 4, block.size, block.subband,
              coded.bitLength, coded.passes, coded.lengths.data(), coded.segments,
              (block.style & 31) | check, nullptr, state.data()) == orbStsNoErr);
  const uint32_t kept = ~0u << (31 - block.magnBits);
  for (size_t i = 0; i < samples.size(); ++i) {
    uint32_t expected = static_cast<uint32_t>(block.samples[i]) & kept;
    if ((expected & 0x7FFFFFFF) == 0) expected = 0;
    require((static_cast<uint32_t>(samples[i]) & kept) == expected);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const int room = 1 + input.byte() % 16;
  const Block block = blockFrom(input);
  const std::vector<TestBuild>& builds = orbtest::runnableBuilds();
  const Coded expected = encode(builds[0], block, 4096);
  for (const TestBuild& build : builds) require(encode(build, block, room) == expected);
  requireDecodes(block, expected);
  return 0;
}
