// From the blocks of macroblocks to a frame; items are pixels.
#include <vector>

#include "bench/support/builds.h"

namespace {

constexpr int kStep = 1440;
constexpr int kPlaces = 10;

struct Work {
  std::vector<Orb16s> blocks = std::vector<Orb16s>(40 * 64);
  std::vector<Orb8u> frame = std::vector<Orb8u>(kStep * 64);
  const Orb16s* from[kPlaces / 2];
  Orb8u* to[kPlaces];

  Work() {
    Orb32u state = 1;
    for (Orb16s& value : blocks) {
      state = state * 1664525 + 1013904223;
      value = static_cast<Orb16s>((state >> 24) - 128);
    }
    for (int i = 0; i < kPlaces; ++i) {
      if (i < kPlaces / 2) from[i] = blocks.data() + i * 6 * 64;
      to[i] = frame.data() + (i % 3) * 16 * kStep + i * 64;
    }
  }
};

template <class Function>
void run(benchmark::State& state, int pixels, Function function) {
  Work work;
  for (auto _ : state) {
    function(work);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * pixels);
}

#define FIVE_BENCHMARK(name, pixels)                                            \
  ORB_BENCHMARK(name) {                                                         \
    run(state, 5 * (pixels), [&](Work& w) { ORB(name)(w.from, w.to, kStep); }); \
  }
FIVE_BENCHMARK(orbiYCrCb411ToYCbCr422_5MBDV_16s8u_P3C2R, 32 * 8)
FIVE_BENCHMARK(orbiYCrCb420ToYCbCr422_5MBDV_16s8u_P3C2R, 16 * 16)
FIVE_BENCHMARK(orbiYCrCb422ToYCbCr422_5MBDV_16s8u_P3C2R, 16 * 8)

ORB_BENCHMARK(orbiYCrCb411ToYCbCr422_EdgeDV_16s8u_P3C2R) {
  run(state, 16 * 16, [&](Work& w) {
    ORB(orbiYCrCb411ToYCbCr422_EdgeDV_16s8u_P3C2R)(w.blocks.data(), w.to[0], kStep);
  });
}
ORB_BENCHMARK(orbiYCrCb422ToYCbCr422_10HalvesMB16x8_DV100_16s8u_P3C2R) {
  run(state, 5 * 16 * 16, [&](Work& w) {
    ORB(orbiYCrCb422ToYCbCr422_10HalvesMB16x8_DV100_16s8u_P3C2R)(w.blocks.data(), w.to, kStep);
  });
}

}  // namespace
