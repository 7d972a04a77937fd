// Run-length coding of blocks, sorted ones too. Bytes are those of the blocks.
#include <string>

#include "bench/compress/blocks.h"
#include "bench/support/builds.h"

namespace {

using orbbench::Blocks;
using orbbench::Bytes;
using orbtest::TestBuild;

constexpr Orb32s kLength = static_cast<Orb32s>(orbbench::kBlockLength);
constexpr Orb32s kRoom = kLength * 3 / 2 + 2;

Blocks sorted(Blocks blocks) {
  Bytes buffer(kLength * 4 + 2080);
  Orb32s index = 0;
  for (Bytes& block : blocks) {
    legacy90orbsBWTFwd_SmallBlock_8u(block.data(), block.data(), kLength, &index, buffer.data());
  }
  return blocks;
}
const Blocks& sortedText() {
  static const Blocks blocks = sorted(orbbench::textBlocks());
  return blocks;
}

template <const Blocks& blocks()>
void encode(benchmark::State& state, const TestBuild& build) {
  Bytes coded(kRoom);
  Blocks sources = blocks();
  for (auto _ : state) {
    for (Bytes& block : sources) {
      Orb8u* src = block.data();
      Orb32s srcLen = kLength, dstLen = kRoom;
      ORB(orbsEncodeRLE_8u)(&src, &srcLen, coded.data(), &dstLen);
    }
    benchmark::ClobberMemory();
  }
  orbbench::countBlocks(state);
}

template <const Blocks& blocks()>
void decode(benchmark::State& state, const TestBuild& build) {
  Blocks streams;
  for (Bytes block : blocks()) {
    Bytes coded(kRoom);
    Orb8u* src = block.data();
    Orb32s srcLen = kLength, dstLen = kRoom;
    ORB(orbsEncodeRLE_8u)(&src, &srcLen, coded.data(), &dstLen);
    coded.resize(static_cast<size_t>(dstLen));
    streams.push_back(coded);
  }
  Bytes back(kLength);
  for (auto _ : state) {
    for (Bytes& coded : streams) {
      Orb8u* src = coded.data();
      Orb32s srcLen = static_cast<Orb32s>(coded.size()), dstLen = kLength;
      ORB(orbsDecodeRLE_8u)(&src, &srcLen, back.data(), &dstLen);
    }
    benchmark::ClobberMemory();
  }
  if (back != blocks().back()) state.SkipWithError("another block came back");
  orbbench::countBlocks(state);
}

// The block taken for one that bzip2 has pre-coded.
template <const Blocks& blocks()>
void decodeBZ2(benchmark::State& state, const TestBuild& build) {
  Bytes back(kLength * 64);
  Blocks sources = blocks();
  for (auto _ : state) {
    for (Bytes& block : sources) {
      Orb8u* src = block.data();
      Orb32s srcLen = kLength, dstLen = static_cast<Orb32s>(back.size());
      ORB(orbsDecodeRLE_BZ2_8u)(&src, &srcLen, back.data(), &dstLen);
    }
    benchmark::ClobberMemory();
  }
  orbbench::countBlocks(state);
}

template <const Blocks& blocks()>
void registerAll(const std::string& kind) {
  orbbench::onEachBuild(("orbsEncodeRLE_8u/" + kind).c_str(), encode<blocks>);
  orbbench::onEachBuild(("orbsDecodeRLE_8u/" + kind).c_str(), decode<blocks>);
  orbbench::onEachBuild(("orbsDecodeRLE_BZ2_8u/" + kind).c_str(), decodeBZ2<blocks>);
}

[[maybe_unused]] const bool registered = [] {
  registerAll<orbbench::textBlocks>("text");
  registerAll<sortedText>("sorted");
  return true;
}();

}  // namespace
