// Coefficient and fixed-length coding of the high-pass blocks of an image. Items are coefficients
// that are not 0; bytes are those of the coded data.
#include <cmath>
#include <cstdint>
#include <vector>

#include "bench/support/builds.h"
#include "tests/support/random.h"

namespace {

using orbtest::Random;
using Build = orbtest::TestBuild;

constexpr int kBlocks = 4096;
constexpr int kBlocksOfRow = 256;  // after which codes adapt and scans start anew

struct Record {
  alignas(64) Orb8u bytes[1780];

  OrbiVLCState_JPEGXR* get() { return reinterpret_cast<OrbiVLCState_JPEGXR*>(bytes); }
  Record() {
    legacy90orbiVLCInit_JPEGXR(get());
    legacy90orbiVLCScanSet_JPEGXR(get(), 1);
    adapt();
  }
  void adapt() {
    legacy90orbiVLCAdapt_JPEGXR(get(), 1);
    for (int scan = 0; scan < 3; ++scan) legacy90orbiVLCScanReset_JPEGXR(get(), scan);
  }
};

// Blocks with coefficients that fall off as their frequencies rise, in the order of a scan. None is
// empty: a host's block pattern keeps those out.
std::vector<Orb32s> makeBlocks(double amount) {
  const int order[] = {1, 5, 8, 4, 2, 10, 3, 12, 6, 9, 14, 13, 7, 11, 15};
  Random random("blocks");
  std::vector<Orb32s> samples(kBlocks * 16);
  for (int b = 0; b < kBlocks; ++b) {
    for (int i = 0; i < 15; ++i) {
      const double noise =
          std::log((random.between(0, 9999) + 1) / 10000.0) * (random.oneIn(2) ? amount : -amount);
      samples[static_cast<size_t>(16 * b + order[i])] = static_cast<Orb32s>(noise / (1 + i));
    }
    if (samples[static_cast<size_t>(16 * b + 1)] == 0) samples[static_cast<size_t>(16 * b + 1)] = 1;
  }
  return samples;
}

struct Stream {
  std::vector<Orb32s> blocks;
  std::vector<Orb16u> units;
  int64_t coefficients = 0;
  int64_t bytes = 0;

  explicit Stream(double amount) : blocks(makeBlocks(amount)), units(kBlocks * 60) {
    encode([](auto... arguments) { legacy90orbiVLCEncode4x4_JPEGXR_32s1u_C1R(arguments...); });
  }
  template <class Function>
  void encode(Function function) {
    Record record;
    Orb8u* at = reinterpret_cast<Orb8u*>(units.data());
    Orb32u bits = 0, count = 0;
    coefficients = 0;
    for (int b = 0; b < kBlocks; ++b) {
      if (b % kBlocksOfRow == 0) record.adapt();
      Orb32s nonZero = 0;
      function(&blocks[static_cast<size_t>(16 * b)], 16, 0, 0u, &at, &bits, &count, &nonZero,
               record.get());
      coefficients += nonZero;
    }
    bytes = at - reinterpret_cast<Orb8u*>(units.data());
    at[0] = static_cast<Orb8u>(bits >> 24);
    at[1] = static_cast<Orb8u>(bits >> 16);
  }
  template <class Function>
  void decode(Function function) {
    Record record;
    Orb16u* at = units.data();
    Orb32u bits = 0, count = 0;
    for (int b = 0; b < kBlocks; ++b) {
      if (b % kBlocksOfRow == 0) record.adapt();
      Orb32s nonZero = 0;
      function(&at, &bits, &count, Orb16s{1}, &blocks[static_cast<size_t>(16 * b)], 16, 0, &nonZero,
               record.get());
    }
  }
  void countWork(benchmark::State& state) const {
    state.SetItemsProcessed(state.iterations() * coefficients);
    state.SetBytesProcessed(state.iterations() * bytes);
  }
};

void encodeBlocks(benchmark::State& state, const Build& build, double amount) {
  Stream stream(amount);
  for (auto _ : state) stream.encode(ORB(orbiVLCEncode4x4_JPEGXR_32s1u_C1R));
  stream.countWork(state);
}
void decodeBlocks(benchmark::State& state, const Build& build, double amount) {
  Stream stream(amount);
  for (auto _ : state) stream.decode(ORB(orbiVLCDecode4x4_JPEGXR_1u32s_C1R));
  stream.countWork(state);
}

[[maybe_unused]] const bool registered[] = {
    orbbench::onEachBuild("JpegXrEncodeSparse",
                          [](auto& state, const Build& build) { encodeBlocks(state, build, 3); }),
    orbbench::onEachBuild("JpegXrEncodeDense",
                          [](auto& state, const Build& build) { encodeBlocks(state, build, 30); }),
    orbbench::onEachBuild("JpegXrDecodeSparse",
                          [](auto& state, const Build& build) { decodeBlocks(state, build, 3); }),
    orbbench::onEachBuild("JpegXrDecodeDense",
                          [](auto& state, const Build& build) { decodeBlocks(state, build, 30); }),
};

// Four bits of each coefficient of a block, most of which have none yet.
ORB_BENCHMARK(orbiFLCDecode4x4_JPEGXR_1u32s_C1IR) {
  Random random("flexbits");
  std::vector<Orb16u> units(64);
  for (Orb16u& unit : units) unit = random.any<Orb16u>();
  Orb32s block[16];
  for (auto _ : state) {
    for (Orb32s& sample : block) sample = 0;
    Orb16u* at = units.data();
    Orb32u bits = 0, count = 0;
    ORB(orbiFLCDecode4x4_JPEGXR_1u32s_C1IR)(&at, &bits, &count, block, 16, 4, 1, 1);
    benchmark::DoNotOptimize(block);
  }
  state.SetItemsProcessed(state.iterations() * 15);
}

ORB_BENCHMARK(orbiFLCEncode4x4_JPEGXR_32s1u_C1R) {
  Random random("flexbits");
  Orb32s block[16], residual[16];
  for (int i = 0; i < 16; ++i) {
    block[i] = random.between(-15, 15);
    residual[i] = block[i] < 0 ? -4 * block[i] + 3 : 4 * block[i] + (block[i] != 0);
  }
  std::vector<Orb8u> bytes(64);
  for (auto _ : state) {
    Orb8u* at = bytes.data();
    Orb32u bits = 0, count = 0;
    ORB(orbiFLCEncode4x4_JPEGXR_32s1u_C1R)(block, 16, residual, &at, &bits, &count, 4, 0, 1);
    benchmark::DoNotOptimize(bytes.data());
  }
  state.SetItemsProcessed(state.iterations() * 15);
}

}  // namespace
