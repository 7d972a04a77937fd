// One level of the wavelets backwards and forwards on 1024 x 1024 samples: whole images, rows,
// columns, and columns stage by stage. Items are samples of the image side.
#include <cstdint>
#include <string>
#include <vector>

#include "bench/support/builds.h"
#include "tests/support/random.h"

namespace {

using Build = orbtest::TestBuild;

constexpr int kSize = 1024;
constexpr int kMargin = 8;  // samples around the planes, for what is read there
constexpr int kStride = kSize + 2 * kMargin;

template <class T>
class Plane {
 public:
  Plane() : samples_(static_cast<size_t>(kStride) * (kSize + 2 * kMargin)) {
    orbtest::Random random("wavelet bench");
    for (T& sample : samples_) sample = static_cast<T>(random.between(-256, 255));
  }

  T* at(int x, int y) { return samples_.data() + (y + kMargin) * kStride + x + kMargin; }
  static constexpr int step() { return kStride * static_cast<int>(sizeof(T)); }

 private:
  std::vector<T> samples_;
};

template <class Work>
void measure(benchmark::State& state, Work work) {
  for (auto _ : state) work();
  state.SetItemsProcessed(state.iterations() * kSize * kSize);
}

constexpr OrbiRect kTile = {0, 0, kSize, kSize};
constexpr OrbiSize kRows = {kSize / 2, kSize};
constexpr OrbiSize kColumns = {kSize, kSize / 2};

template <class T, class Function>
void transformImage(benchmark::State& state, Function function) {
  Plane<T> plane;
  std::vector<Orb8u> buffer(4 * kSize + 64);
  measure(state, [&] { function(plane.at(0, 0), plane.step(), &kTile, buffer.data()); });
}

template <class T, class Function>
void splitRows(benchmark::State& state, Function function) {
  Plane<T> from, low, high;
  measure(state, [&] {
    function(from.at(0, 0), from.step(), low.at(0, 0), low.step(), high.at(0, 0), high.step(),
             kRows, 0);
  });
}
template <class T, class Function>
void splitColumns(benchmark::State& state, Function function) {
  Plane<T> from, low, high;
  measure(state, [&] {
    function(from.at(0, 0), from.step(), low.at(0, 0), low.step(), high.at(0, 0), high.step(),
             kColumns, 0);
  });
}
template <class T, class Function>
void joinRows(benchmark::State& state, Function function) {
  Plane<T> low, high, to;
  measure(state, [&] {
    function(low.at(0, 0), low.step(), high.at(0, 0), high.step(), kRows, to.at(0, 0), to.step(),
             0);
  });
}
template <class T, class Function>
void joinColumns(benchmark::State& state, Function function) {
  Plane<T> low, high, to;
  measure(state, [&] {
    function(low.at(0, 0), low.step(), high.at(0, 0), high.step(), kColumns, to.at(0, 0), to.step(),
             0);
  });
}

// A stage finishes two rows of the image.
template <class T, class Function>
void lift53(benchmark::State& state, Function function) {
  Plane<T> plane;
  measure(state, [&] {
    for (int y = 0; y < kSize; y += 2) {
      function(plane.at(0, 0), plane.at(0, 1), plane.at(0, 2), plane.at(0, 3), plane.at(0, 4),
               plane.at(0, 5), kSize);
    }
  });
}
template <class T, class Function>
void lift97(benchmark::State& state, Function function) {
  Plane<T> plane;
  measure(state, [&] {
    for (int y = 0; y < kSize; y += 2) {
      function(plane.at(0, 0), plane.at(0, 1), plane.at(0, 2), plane.at(0, 3), plane.at(0, 4),
               plane.at(0, 5), plane.at(0, 6), plane.at(0, 7), kSize);
    }
  });
}

}  // namespace

#define ORB_WAVELET_BENCHMARK(name, shape, type) \
  ORB_BENCHMARK(name) {                          \
    shape<type>(state, ORB(name));               \
  }

ORB_WAVELET_BENCHMARK(orbiWTInv_B53_JPEG2K_16s_C1IR, transformImage, Orb16s)
ORB_WAVELET_BENCHMARK(orbiWTInv_B53_JPEG2K_32s_C1IR, transformImage, Orb32s)
ORB_WAVELET_BENCHMARK(orbiWTInv_D97_JPEG2K_16s_C1IR, transformImage, Orb16s)
ORB_WAVELET_BENCHMARK(orbiWTInv_D97_JPEG2K_32s_C1IR, transformImage, Orb32s)
ORB_WAVELET_BENCHMARK(orbiWTFwd_B53_JPEG2K_32s_C1IR, transformImage, Orb32s)
ORB_WAVELET_BENCHMARK(orbiWTFwd_D97_JPEG2K_32s_C1IR, transformImage, Orb32s)
ORB_WAVELET_BENCHMARK(orbiWTInvRow_B53_JPEG2K_16s_C1R, joinRows, Orb16s)
ORB_WAVELET_BENCHMARK(orbiWTInvRow_B53_JPEG2K_32s_C1R, joinRows, Orb32s)
ORB_WAVELET_BENCHMARK(orbiWTInvRow_D97_JPEG2K_16s_C1R, joinRows, Orb16s)
ORB_WAVELET_BENCHMARK(orbiWTInvRow_D97_JPEG2K_32f_C1R, joinRows, Orb32f)
ORB_WAVELET_BENCHMARK(orbiWTFwdRow_B53_JPEG2K_32s_C1R, splitRows, Orb32s)
ORB_WAVELET_BENCHMARK(orbiWTFwdRow_D97_JPEG2K_32f_C1R, splitRows, Orb32f)
ORB_WAVELET_BENCHMARK(orbiWTInvCol_B53_JPEG2K_32s_C1R, joinColumns, Orb32s)
ORB_WAVELET_BENCHMARK(orbiWTInvCol_D97_JPEG2K_32f_C1R, joinColumns, Orb32f)
ORB_WAVELET_BENCHMARK(orbiWTFwdCol_B53_JPEG2K_32s_C1R, splitColumns, Orb32s)
ORB_WAVELET_BENCHMARK(orbiWTFwdCol_D97_JPEG2K_32f_C1R, splitColumns, Orb32f)
ORB_WAVELET_BENCHMARK(orbiWTInvColLift_B53_JPEG2K_32s_C1, lift53, Orb32s)
ORB_WAVELET_BENCHMARK(orbiWTInvColLift_D97_JPEG2K_32f_C1, lift97, Orb32f)
ORB_WAVELET_BENCHMARK(orbiWTFwdColLift_B53_JPEG2K_32s_C1, lift53, Orb32s)
ORB_WAVELET_BENCHMARK(orbiWTFwdColLift_D97_JPEG2K_32f_C1, lift97, Orb32f)
