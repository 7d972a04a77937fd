// The GIT coder on sorted blocks, as it stands behind the Burrows-Wheeler transform. It has no
// peers: the stage in its place elsewhere, move-to-front coding, is timed as a plain loop.
#include <cstring>
#include <numeric>
#include <string>

#include "bench/compress/blocks.h"
#include "bench/support/builds.h"

namespace {

using orbbench::Blocks;
using orbbench::Bytes;
using orbtest::TestBuild;

constexpr Orb32s kLength = static_cast<Orb32s>(orbbench::kBlockLength);
constexpr Orb32s kRoom = 2 * kLength;

template <const Blocks& blocks()>
const Blocks& sorted() {
  static const Blocks columns = [] {
    Blocks all = blocks();
    Bytes buffer(kLength * 4 + 2080);
    Orb32s index = 0;
    for (Bytes& block : all) {
      legacy90orbsBWTFwd_SmallBlock_8u(block.data(), block.data(), kLength, &index, buffer.data());
    }
    return all;
  }();
  return columns;
}

template <const Blocks& blocks(), Orb32s mode>
void encode(benchmark::State& state, const TestBuild& build) {
  OrbGITEncState* encoder = nullptr;
  ORB(orbsEncodeGITInitAlloc_8u)(kLength, kRoom, &encoder);
  Bytes coded(kRoom);
  Orb32s length = 0;
  const Blocks& columns = sorted<blocks>();
  for (auto _ : state) {
    for (const Bytes& column : columns) {
      ORB(orbsEncodeGIT_8u)(column.data(), kLength, coded.data(), &length, mode, encoder);
    }
    benchmark::ClobberMemory();
  }
  ORB(orbsGITFree_8u)(encoder);
  orbbench::countBlocks(state);
}

template <const Blocks& blocks(), Orb32s mode>
void decode(benchmark::State& state, const TestBuild& build) {
  OrbGITEncState* encoder = nullptr;
  OrbGITDecState* decoder = nullptr;
  ORB(orbsEncodeGITInitAlloc_8u)(kLength, kRoom, &encoder);
  ORB(orbsDecodeGITInitAlloc_8u)(kRoom, kLength, &decoder);
  Blocks streams;
  for (const Bytes& column : sorted<blocks>()) {
    Bytes coded(kRoom);
    Orb32s length = 0;
    ORB(orbsEncodeGIT_8u)(column.data(), kLength, coded.data(), &length, mode, encoder);
    coded.resize(static_cast<size_t>(length));
    streams.push_back(coded);
  }
  Bytes back(kLength);
  for (auto _ : state) {
    for (const Bytes& coded : streams) {
      Orb32s length = 0;
      ORB(orbsDecodeGIT_8u)
      (coded.data(), static_cast<Orb32s>(coded.size()), back.data(), &length, mode, decoder);
    }
    benchmark::ClobberMemory();
  }
  if (back != sorted<blocks>().back()) state.SkipWithError("another block came back");
  ORB(orbsGITFree_8u)(encoder);
  ORB(orbsGITFree_8u)(decoder);
  orbbench::countBlocks(state);
}

template <const Blocks& blocks()>
void moveToFront(benchmark::State& state) {
  Bytes out(kLength);
  for (auto _ : state) {
    for (const Bytes& column : sorted<blocks>()) {
      Orb8u table[256];
      std::iota(table, table + 256, Orb8u{0});
      for (size_t i = 0; i < column.size(); ++i) {
        const Orb8u* const found =
            static_cast<const Orb8u*>(std::memchr(table, column[i], sizeof table));
        const size_t place = static_cast<size_t>(found - table);
        std::memmove(table + 1, table, place);
        table[0] = column[i];
        out[i] = static_cast<Orb8u>(place);
      }
    }
    benchmark::ClobberMemory();
  }
  orbbench::countBlocks(state);
}

template <const Blocks& blocks()>
void registerAll(const std::string& kind) {
  orbbench::onEachBuild(("orbsEncodeGIT_8u/mode1/" + kind).c_str(), encode<blocks, 1>);
  orbbench::onEachBuild(("orbsEncodeGIT_8u/mode3/" + kind).c_str(), encode<blocks, 3>);
  orbbench::onEachBuild(("orbsDecodeGIT_8u/mode1/" + kind).c_str(), decode<blocks, 1>);
  orbbench::onEachBuild(("orbsDecodeGIT_8u/mode3/" + kind).c_str(), decode<blocks, 3>);
  benchmark::RegisterBenchmark(("MoveToFront/" + kind + "/loop").c_str(), moveToFront<blocks>);
}

[[maybe_unused]] const bool registered = [] {
  registerAll<orbbench::textBlocks>("text");
  registerAll<orbbench::programBlocks>("program");
  return true;
}();

}  // namespace
