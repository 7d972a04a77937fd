// The block operations of DV; items are blocks.
#include <array>

#include "bench/support/builds.h"

namespace {

using Block = std::array<Orb16s, 64>;

// Small values, and more of them in front.
Block makeBlock() {
  Block block;
  Orb32u state = 1;
  for (size_t i = 0; i < 64; ++i) {
    state = state * 1664525 + 1013904223;
    block[i] = static_cast<Orb16s>(static_cast<Orb16s>(state >> 24) - 128) /
               static_cast<Orb16s>(1 + i / 8);
  }
  return block;
}

// Each from the same block: a transform in place would let values grow.
template <class Function>
void run(benchmark::State& state, Function function) {
  const Block original = makeBlock();
  for (auto _ : state) {
    Block block = original;
    function(block.data());
    benchmark::DoNotOptimize(block);
  }
  state.SetItemsProcessed(state.iterations());
}

ORB_BENCHMARK(orbiDCT2x4x8Frw_16s_C1I) {
  run(state, ORB(orbiDCT2x4x8Frw_16s_C1I));
}
ORB_BENCHMARK(orbiDCT2x4x8Inv_16s_C1I) {
  run(state, ORB(orbiDCT2x4x8Inv_16s_C1I));
}
ORB_BENCHMARK(orbiCountZeros8x8_16s_C1) {
  run(state, [&](Orb16s* block) {
    Orb32s zeros = 0;
    ORB(orbiCountZeros8x8_16s_C1)(block, &zeros);
    benchmark::DoNotOptimize(zeros);
  });
}
ORB_BENCHMARK(orbiQuantWeightBlockInv_DV100_16s_C1I) {
  const Block weights = makeBlock();
  run(state, [&](Orb16s* block) {
    ORB(orbiQuantWeightBlockInv_DV100_16s_C1I)(block, weights.data(), 40);
  });
}

}  // namespace
