// Code-block coding. Items are samples; bytes are those of the coded blocks.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench/support/builds.h"

namespace {

// Blocks of a subband, and what they are coded to.
struct Subband {
  struct Block {
    std::vector<Orb32s> samples;
    std::vector<Orb8u> bytes;
    Orb32s bitLength, passes, length;
  };
  int size;  // width and height of a block
  std::vector<Block> blocks;

  // Magnitudes of an exponential distribution: those of a wavelet's coefficients are much like it.
  // Its mean changes from column group to column group, by up to a factor of 2 to the `contrast`.
  Subband(int blockSize, double mean, int contrast) : size(blockSize) {
    std::mt19937 random(1);
    for (int i = 0; i < 16; ++i) {
      Block block;
      for (int j = 0; j < size * size; ++j) {
        const int place = j % size / 8 * 5 + j / size / 8 * 3 + i;
        const double local = mean * std::pow(2.0, -(place * 7 % (contrast + 1)));
        const double u = (static_cast<double>(random()) + 1) / 4294967297.0;
        const Orb32s magnitude = static_cast<Orb32s>(std::min(-local * std::log(u), 1e6));
        const bool isNegative = magnitude != 0 && random() % 2 == 0;
        block.samples.push_back(isNegative ? magnitude | INT32_MIN : magnitude);
      }
      encode(block);
      blocks.push_back(block);
    }
  }

  int64_t samples() const { return static_cast<int64_t>(blocks.size()) * size * size; }
  int64_t bytes() const {
    int64_t sum = 0;
    for (const Block& block : blocks) sum += block.length;
    return sum;
  }

 private:
  void encode(Block& block) const {
    OrbiEncodeState_JPEG2K* state;
    legacy90orbiEncodeInitAlloc_JPEG2K(&state, {size, size});
    Orb32s segments, isNotFinished;
    legacy90orbiEncodeLoadCodeBlock_JPEG2K_32s_C1R(block.samples.data(), size * 4, {size, size},
                                                   state, 0, 31, 0, 0, 0, &block.bitLength,
                                                   &block.passes, &segments);
    block.bytes.resize(static_cast<size_t>(size * size * 4));
    block.length = static_cast<Orb32s>(block.bytes.size());
    legacy90orbiEncodeStoreBits_JPEG2K_1u(block.bytes.data(), &block.length, state, &isNotFinished);
    legacy90orbiEncodeFree_JPEG2K(state);
  }
};

using Build = orbtest::TestBuild;

void countWork(benchmark::State& state, const Subband& subband) {
  state.SetItemsProcessed(state.iterations() * subband.samples());
  state.SetBytesProcessed(state.iterations() * subband.bytes());
}

void load(const Build& build, const Subband& subband, const Subband::Block& block,
          OrbiEncodeState_JPEG2K* encoder) {
  Orb32s bits, passes, segments;
  ORB(orbiEncodeLoadCodeBlock_JPEG2K_32s_C1R)
  (block.samples.data(), subband.size * 4, {subband.size, subband.size}, encoder, 0, 31, 0, 0, 0,
   &bits, &passes, &segments);
}

// The first stage alone, and both.
template <bool kStores>
void encode(benchmark::State& state, const Build& build, const Subband& subband) {
  OrbiEncodeState_JPEG2K* encoder;
  legacy90orbiEncodeInitAlloc_JPEG2K(&encoder, {subband.size, subband.size});
  std::vector<Orb8u> bytes(static_cast<size_t>(subband.size * subband.size * 4));
  for (auto _ : state) {
    for (const Subband::Block& block : subband.blocks) {
      load(build, subband, block, encoder);
      if (!kStores) continue;
      Orb32s length = static_cast<Orb32s>(bytes.size()), isNotFinished;
      ORB(orbiEncodeStoreBits_JPEG2K_1u)(bytes.data(), &length, encoder, &isNotFinished);
      if (length != block.length) state.SkipWithError("encoded other bytes");
    }
  }
  legacy90orbiEncodeFree_JPEG2K(encoder);
  countWork(state, subband);
}

void decode(benchmark::State& state, const Build& build, const Subband& subband) {
  const OrbiSize size = {subband.size, subband.size};
  Orb32s bytes;
  legacy90orbiDecodeGetBufSize_JPEG2K(size, &bytes);
  std::vector<Orb8u> decoder(static_cast<size_t>(bytes));
  std::vector<Orb32s> samples(static_cast<size_t>(subband.size * subband.size));
  for (auto _ : state) {
    for (const Subband::Block& block : subband.blocks) {
      ORB(orbiDecodeCodeBlock_JPEG2K_1u32s_C1R)
      (block.bytes.data(), samples.data(), subband.size * 4, size, 0, block.bitLength, block.passes,
       &block.length, 1, 0, nullptr, decoder.data());
    }
  }
  if (samples != subband.blocks.back().samples) state.SkipWithError("decoded other samples");
  countWork(state, subband);
}

void registerAll(const char* kind, int size, double mean, int contrast) {
  const auto subband = std::make_shared<Subband>(size, mean, contrast);
  const std::string suffix = std::string("/") + kind + "/" + std::to_string(size);
  for (const Build& build : orbtest::runnableBuilds()) {
    const auto add = [&](const char* name, auto body) {
      benchmark::RegisterBenchmark((name + suffix + "/" + build.tag).c_str(),
                                   [=](benchmark::State& state) { body(state, build, *subband); });
    };
    add("orbiEncodeLoadCodeBlock_JPEG2K_32s_C1R", encode<false>);
    add("orbiEncodeStoreBits_JPEG2K_1u", encode<true>);
    add("orbiDecodeCodeBlock_JPEG2K_1u32s_C1R", decode);
  }
}

[[maybe_unused]] const bool registered = [] {
  for (const int size : {64, 32}) {
    registerAll("noise", size, 100, 0);
    registerAll("natural", size, 16, 6);
    registerAll("sparse", size, 2, 6);
  }
  return true;
}();

}  // namespace
