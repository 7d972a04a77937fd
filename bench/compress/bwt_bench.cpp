// The Burrows-Wheeler transform of small blocks both ways, beside libdivsufsort's of the same
// blocks (which takes the end of the block for less than every byte).
#include <divsufsort.h>

#include <string>

#include "bench/compress/blocks.h"
#include "bench/support/builds.h"

namespace {

using orbbench::Blocks;
using orbbench::Bytes;
using orbtest::TestBuild;

constexpr Orb32s kLength = static_cast<Orb32s>(orbbench::kBlockLength);

template <const Blocks& blocks()>
void forward(benchmark::State& state, const TestBuild& build) {
  Bytes column(kLength), buffer(kLength * 4 + 2080);
  Orb32s index = 0;
  for (auto _ : state) {
    for (const Bytes& block : blocks()) {
      ORB(orbsBWTFwd_SmallBlock_8u)
      (block.data(), column.data(), kLength, &index, buffer.data());
    }
    benchmark::ClobberMemory();
  }
  orbbench::countBlocks(state);
}

template <const Blocks& blocks()>
void inverse(benchmark::State& state, const TestBuild& build) {
  Bytes back(kLength), buffer(kLength * 4 + 2080);
  Blocks columns = blocks();
  std::vector<Orb32s> indexes(columns.size());
  for (size_t i = 0; i < columns.size(); ++i) {
    ORB(orbsBWTFwd_SmallBlock_8u)
    (blocks()[i].data(), columns[i].data(), kLength, &indexes[i], buffer.data());
  }
  for (auto _ : state) {
    for (size_t i = 0; i < columns.size(); ++i) {
      ORB(orbsBWTInv_SmallBlock_8u)
      (columns[i].data(), back.data(), kLength, indexes[i], buffer.data());
    }
    benchmark::ClobberMemory();
  }
  if (back != blocks().back()) state.SkipWithError("another block came back");
  orbbench::countBlocks(state);
}

template <const Blocks& blocks()>
void theirForward(benchmark::State& state) {
  Bytes column(kLength);
  std::vector<saidx_t> work(kLength + 1);
  for (auto _ : state) {
    for (const Bytes& block : blocks()) divbwt(block.data(), column.data(), work.data(), kLength);
    benchmark::ClobberMemory();
  }
  orbbench::countBlocks(state);
}

template <const Blocks& blocks()>
void theirInverse(benchmark::State& state) {
  Bytes back(kLength);
  std::vector<saidx_t> work(kLength + 1), indexes;
  Blocks columns = blocks();
  for (Bytes& column : columns) {
    indexes.push_back(divbwt(column.data(), column.data(), work.data(), kLength));
  }
  for (auto _ : state) {
    for (size_t i = 0; i < columns.size(); ++i) {
      inverse_bw_transform(columns[i].data(), back.data(), work.data(), kLength, indexes[i]);
    }
    benchmark::ClobberMemory();
  }
  if (back != blocks().back()) state.SkipWithError("another block came back");
  orbbench::countBlocks(state);
}

template <const Blocks& blocks()>
void registerAll(const std::string& kind) {
  orbbench::onEachBuild(("orbsBWTFwd_SmallBlock_8u/" + kind).c_str(), forward<blocks>);
  benchmark::RegisterBenchmark(("BWTFwd/" + kind + "/libdivsufsort").c_str(), theirForward<blocks>);
  orbbench::onEachBuild(("orbsBWTInv_SmallBlock_8u/" + kind).c_str(), inverse<blocks>);
  benchmark::RegisterBenchmark(("BWTInv/" + kind + "/libdivsufsort").c_str(), theirInverse<blocks>);
}

[[maybe_unused]] const bool registered = [] {
  registerAll<orbbench::textBlocks>("text");
  registerAll<orbbench::programBlocks>("program");
  registerAll<orbbench::randomBlocks>("random");
  registerAll<orbbench::repeatedBlocks>("repeated");
  return true;
}();

}  // namespace
