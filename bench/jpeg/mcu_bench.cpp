// Between pixels and MCUs, over a stripe of a picture; items are pixels.
#include <cstdint>
#include <vector>

#include "bench/support/builds.h"

namespace {

constexpr int kWidth = 1024;
constexpr int kHeight = 16;

// Pixels of up to four bytes, and blocks as the inverse DCT leaves them.
struct Stripe {
  std::vector<Orb8u> pixels = std::vector<Orb8u>(kWidth * kHeight * 4);
  std::vector<Orb16s> blocks = std::vector<Orb16s>(kWidth * kHeight * 4);
  Stripe() {
    Orb32u state = 1;
    const auto next = [&] {
      state = state * 1664525 + 1013904223;
      return static_cast<int>(state >> 24);
    };
    for (Orb8u& sample : pixels) sample = static_cast<Orb8u>(next());
    for (Orb16s& value : blocks) value = static_cast<Orb16s>(next() - 128);
  }
  // The blocks of one MCU: those of each component lie in a quarter of all.
  template <class Block>
  void mcu(int index, int luma, Block* (&components)[4]) {
    Orb16s* const quarter = blocks.data();
    for (int c = 0; c < 4; ++c) {
      const int values = c == 1 || c == 2 ? 64 : luma;
      components[c] = quarter + c * kWidth * kHeight + index * values;
    }
  }
};

// Each MCU of the stripe: visit(its first byte of pixels, its components).
template <class Block, class Visit>
void run(benchmark::State& state, int width, int height, int pixelBytes, Visit visit) {
  static Stripe stripe;
  const int step = kWidth * pixelBytes;
  for (auto _ : state) {
    int index = 0;
    for (int y = 0; y < kHeight; y += height) {
      for (int x = 0; x < kWidth; x += width) {
        Block* components[4];
        stripe.mcu(index++, width * height, components);
        visit(stripe.pixels.data() + y * step + x * pixelBytes, step, components);
      }
    }
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kWidth * kHeight);
}

template <class Sample>
void run(benchmark::State& state,
         OrbStatus(ORB_CALL* function)(const Sample*, Orb32s, Orb16s* const*), int width,
         int height, int pixelBytes) {
  run<Orb16s>(state, width, height, pixelBytes,
              [&](Orb8u* pixels, int step, Orb16s* const* components) {
                function(reinterpret_cast<const Sample*>(pixels), step, components);
              });
}
template <class Sample>
void run(benchmark::State& state,
         OrbStatus(ORB_CALL* function)(const Orb16s* const*, Sample*, Orb32s), int width,
         int height, int pixelBytes) {
  run<const Orb16s>(state, width, height, pixelBytes,
                    [&](Orb8u* pixels, int step, const Orb16s* const* components) {
                      function(components, reinterpret_cast<Sample*>(pixels), step);
                    });
}

#define MCU_BENCHMARK(name, width, height, pixelBytes) \
  ORB_BENCHMARK(name) {                                \
    run(state, ORB(name), width, height, pixelBytes);  \
  }
#define MCU_BENCHMARKS(head, tail, pixelBytes)      \
  MCU_BENCHMARK(head##444##tail, 8, 8, pixelBytes)  \
  MCU_BENCHMARK(head##422##tail, 16, 8, pixelBytes) \
  MCU_BENCHMARK(head##411##tail, 16, 16, pixelBytes)

MCU_BENCHMARKS(orbiRGBToYCbCr, LS_MCU_8u16s_C3P3R, 3)
MCU_BENCHMARKS(orbiBGR565ToYCbCr, LS_MCU_16u16s_C3P3R, 2)
MCU_BENCHMARKS(orbiCMYKToYCCK, LS_MCU_8u16s_C4P4R, 4)
MCU_BENCHMARKS(orbiSampleDown, LS_MCU_8u16s_C3P3R, 3)
MCU_BENCHMARK(orbiSplit422LS_MCU_8u16s_C2P3R, 16, 8, 2)

MCU_BENCHMARKS(orbiYCbCr, ToRGBLS_MCU_16s8u_P3C3R, 3)
MCU_BENCHMARKS(orbiYCbCr, ToBGR565LS_MCU_16s16u_P3C3R, 2)
MCU_BENCHMARKS(orbiYCCK, ToCMYKLS_MCU_16s8u_P4C4R, 4)
MCU_BENCHMARKS(orbiSampleUp, LS_MCU_16s8u_P3C3R, 3)
MCU_BENCHMARK(orbiJoin422LS_MCU_16s8u_P3C2R, 16, 8, 2)

}  // namespace
