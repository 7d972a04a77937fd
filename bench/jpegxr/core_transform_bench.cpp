// The photo core transform. Items are pixels.
#include <cstdint>
#include <vector>

#include "bench/support/builds.h"
#include "tests/support/random.h"

namespace {

using orbtest::Random;

// A stripe of macroblocks that stays in the cache, in rows that do not lie on top of each other
// there.
constexpr int kWidth = 128, kHeight = 16, kRow = kWidth + 16;

template <class T>
std::vector<T> stripe() {
  Random random("stripe");
  std::vector<T> samples(kRow * kHeight);
  for (T& sample : samples) sample = static_cast<T>(random.between(-128, 127));
  return samples;
}

template <class T, class Function>
void transformStripe(benchmark::State& state, Function* function) {
  std::vector<T> samples = stripe<T>();
  const std::vector<T> fresh = samples;
  for (auto _ : state) {
    samples = fresh;
    function(samples.data(), kRow * sizeof(T), kWidth, kHeight);
    benchmark::DoNotOptimize(samples.data());
  }
  state.SetItemsProcessed(state.iterations() * kWidth * kHeight);
}

template <class T, class Function>
void transformMacroblocks(benchmark::State& state, Function* function, int width, int height) {
  std::vector<T> samples = stripe<T>();
  const std::vector<T> fresh = samples;
  for (auto _ : state) {
    samples = fresh;
    for (int x = 0; x + width <= kWidth; x += width) {
      function(samples.data() + x, kRow * sizeof(T));
    }
    benchmark::DoNotOptimize(samples.data());
  }
  state.SetItemsProcessed(state.iterations() * kWidth * height);
}

#define STRIPE_BENCHMARK(name, T)         \
  ORB_BENCHMARK(name) {                   \
    transformStripe<T>(state, ORB(name)); \
  }
#define MACROBLOCK_BENCHMARK(name, T, width, height)          \
  ORB_BENCHMARK(name) {                                       \
    transformMacroblocks<T>(state, ORB(name), width, height); \
  }

STRIPE_BENCHMARK(orbiPCTFwd_JPEGXR_16s_C1IR, Orb16s)
STRIPE_BENCHMARK(orbiPCTInv_JPEGXR_16s_C1IR, Orb16s)
STRIPE_BENCHMARK(orbiPCTFwd_JPEGXR_32s_C1IR, Orb32s)
STRIPE_BENCHMARK(orbiPCTInv_JPEGXR_32s_C1IR, Orb32s)
STRIPE_BENCHMARK(orbiPCTFwd_JPEGXR_32f_C1IR, Orb32f)
STRIPE_BENCHMARK(orbiPCTInv_JPEGXR_32f_C1IR, Orb32f)
MACROBLOCK_BENCHMARK(orbiPCTInv8x8_JPEGXR_16s_C1IR, Orb16s, 8, 8)
MACROBLOCK_BENCHMARK(orbiPCTInv16x16_JPEGXR_16s_C1IR, Orb16s, 16, 16)
MACROBLOCK_BENCHMARK(orbiPCTInv8x8_JPEGXR_32s_C1IR, Orb32s, 8, 8)
MACROBLOCK_BENCHMARK(orbiPCTInv16x16_JPEGXR_32s_C1IR, Orb32s, 16, 16)

}  // namespace
