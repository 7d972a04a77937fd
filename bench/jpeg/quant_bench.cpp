// Level shift and quantisation of one block.
#include <cstdint>

#include "bench/support/builds.h"

namespace {

struct Block {
  alignas(64) Orb16s values[64];
  alignas(64) Orb16u table[64];
  Block() {
    for (int i = 0; i < 64; ++i) {
      values[i] = static_cast<Orb16s>((i * 7919) % 2048 - 1024);
      table[i] = static_cast<Orb16u>(32768 / (i + 1));
    }
  }
};

ORB_BENCHMARK(orbiQuantFwd8x8_JPEG_16s_C1I) {
  Block block;
  for (auto _ : state) {
    ORB(orbiQuantFwd8x8_JPEG_16s_C1I)(block.values, block.table);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations());
}

ORB_BENCHMARK(orbiQuantInv8x8_JPEG_16s_C1I) {
  Block block;
  for (auto _ : state) {
    ORB(orbiQuantInv8x8_JPEG_16s_C1I)(block.values, block.table);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations());
}

ORB_BENCHMARK(orbiSub128_JPEG_8u16s_C1R) {
  constexpr int kWidth = 1920;
  static Orb8u src[kWidth * 8];
  static Orb16s dst[kWidth * 8];
  for (auto _ : state) {
    ORB(orbiSub128_JPEG_8u16s_C1R)(src, kWidth, dst, kWidth * 2, {kWidth, 8});
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kWidth * 8);
}

ORB_BENCHMARK(orbiAdd128_JPEG_16s8u_C1R) {
  constexpr int kWidth = 1920;
  static Orb16s src[kWidth * 8];
  static Orb8u dst[kWidth * 8];
  for (auto _ : state) {
    ORB(orbiAdd128_JPEG_16s8u_C1R)(src, kWidth * 2, dst, kWidth, {kWidth, 8});
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kWidth * 8);
}

}  // namespace
