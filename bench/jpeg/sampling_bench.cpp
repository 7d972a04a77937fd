// Chroma sampling of planes and of rows.
#include "bench/support/builds.h"

namespace {

constexpr int kWidth = 1920;  // of the side with more samples
constexpr int kHeight = 16;
constexpr int kHalf = kWidth / 2;
constexpr int kStep = kHalf + 64;  // room for the columns and rows beside a half plane

struct Planes {
  alignas(64) Orb8u full[kWidth * kHeight];
  alignas(64) Orb8u half[kStep * (kHeight + 2)];
  Planes() {
    for (int i = 0; i < kWidth * kHeight; ++i) full[i] = static_cast<Orb8u>(i * 7919 >> 5);
    for (int i = 0; i < kStep * (kHeight + 2); ++i) half[i] = static_cast<Orb8u>(i * 7919 >> 5);
  }
  Orb8u* inner() { return half + kStep + 32; }
};
Planes planes;

// A run of the text for `items` samples of the side with more of them.
template <class Text>
void run(benchmark::State& state, int items, Text text) {
  for (auto _ : state) {
    text();
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * items);
}

ORB_BENCHMARK(orbiSampleDownH2V1_JPEG_8u_C1R) {
  run(state, kWidth * kHeight, [&] {
    ORB(orbiSampleDownH2V1_JPEG_8u_C1R)
    (planes.full, kWidth, {kWidth, kHeight}, planes.inner(), kStep, {kHalf, kHeight});
  });
}

ORB_BENCHMARK(orbiSampleDownH2V2_JPEG_8u_C1R) {
  run(state, kWidth * kHeight, [&] {
    ORB(orbiSampleDownH2V2_JPEG_8u_C1R)
    (planes.full, kWidth, {kWidth, kHeight}, planes.inner(), kStep, {kHalf, kHeight / 2});
  });
}

ORB_BENCHMARK(orbiSampleUpH2V1_JPEG_8u_C1R) {
  run(state, kWidth * kHeight, [&] {
    ORB(orbiSampleUpH2V1_JPEG_8u_C1R)
    (planes.inner(), kStep, {kHalf, kHeight}, planes.full, kWidth, {kWidth, kHeight});
  });
}

ORB_BENCHMARK(orbiSampleUpH2V2_JPEG_8u_C1R) {
  run(state, kWidth * kHeight, [&] {
    ORB(orbiSampleUpH2V2_JPEG_8u_C1R)
    (planes.inner(), kStep, {kHalf, kHeight / 2}, planes.full, kWidth, {kWidth, kHeight});
  });
}

ORB_BENCHMARK(orbiSampleDownRowH2V1_Box_JPEG_8u_C1) {
  run(state, kWidth, [&] {
    ORB(orbiSampleDownRowH2V1_Box_JPEG_8u_C1)(planes.full, kWidth, planes.half);
  });
}

ORB_BENCHMARK(orbiSampleDownRowH2V2_Box_JPEG_8u_C1) {
  run(state, 2 * kWidth, [&] {
    ORB(orbiSampleDownRowH2V2_Box_JPEG_8u_C1)
    (planes.full, planes.full + kWidth, kWidth, planes.half);
  });
}

ORB_BENCHMARK(orbiSampleUpRowH2V1_Triangle_JPEG_8u_C1) {
  run(state, kWidth, [&] {
    ORB(orbiSampleUpRowH2V1_Triangle_JPEG_8u_C1)(planes.half, kHalf, planes.full);
  });
}

ORB_BENCHMARK(orbiSampleUpRowH2V2_Triangle_JPEG_8u_C1) {
  run(state, kWidth, [&] {
    ORB(orbiSampleUpRowH2V2_Triangle_JPEG_8u_C1)
    (planes.half, planes.half + kStep, kHalf, planes.full);
  });
}

}  // namespace
