// Video colour of a stripe of pixels, beside libyuv where it has the conversion; items are pixels.
#include <libyuv.h>

#include <type_traits>

#include "bench/support/builds.h"

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 16;
constexpr OrbiSize kSize = {kWidth, kHeight};

// Room for one plane, or for up to three bytes of each pixel.
struct Image {
  alignas(64) Orb8u samples[kWidth * kHeight * 3];
  Image() {
    Orb32u state = 1;
    for (Orb8u& sample : samples) {
      state = state * 1664525 + 1013904223;
      sample = static_cast<Orb8u>(state >> 24);
    }
  }
};
Image srcImages[3], dstImages[3];

// The image argument of a function, one pointer or three, and its steps.
template <class Pointer, class Step>
struct Argument {
  Orb8u* planes[3];
  Orb32s steps[3] = {kWidth, kWidth / 2, kWidth / 2};
  int pixelBytes;

  Argument(Image* images, int bytes)
      : planes{images[0].samples, images[1].samples, images[2].samples}, pixelBytes(bytes) {}
  Pointer pointer() {
    if constexpr (std::is_pointer_v<Step>) {
      return planes;
    } else {
      return reinterpret_cast<Pointer>(planes[0]);
    }
  }
  Step step() {
    if constexpr (std::is_pointer_v<Step>) {
      return steps;
    } else {
      return kWidth * pixelBytes;
    }
  }
};

template <class Body>
void timePixels(benchmark::State& state, Body body) {
  for (auto _ : state) {
    body();
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kWidth * kHeight);
}

template <class Src, class SrcStep, class Dst, class DstStep>
void run(benchmark::State& state,
         OrbStatus(ORB_CALL* function)(Src, SrcStep, Dst, DstStep, OrbiSize), int srcBytes,
         int dstBytes) {
  Argument<Src, SrcStep> src(srcImages, srcBytes);
  Argument<Dst, DstStep> dst(dstImages, dstBytes);
  timePixels(state, [&] { function(src.pointer(), src.step(), dst.pointer(), dst.step(), kSize); });
}

ORB_BENCHMARK(orbiBGR565ToYCbCr420_16u8u_C3P3R) {
  run(state, ORB(orbiBGR565ToYCbCr420_16u8u_C3P3R), 2, 1);
}
ORB_BENCHMARK(orbiBGR555ToYCbCr420_16u8u_C3P3R) {
  run(state, ORB(orbiBGR555ToYCbCr420_16u8u_C3P3R), 2, 1);
}
ORB_BENCHMARK(orbiBGR565ToYCbCr422_16u8u_C3P3R) {
  run(state, ORB(orbiBGR565ToYCbCr422_16u8u_C3P3R), 2, 1);
}
ORB_BENCHMARK(orbiBGR565ToYCbCr422_16u8u_C3C2R) {
  run(state, ORB(orbiBGR565ToYCbCr422_16u8u_C3C2R), 2, 2);
}
ORB_BENCHMARK(orbiYCbCr420ToBGR565_8u16u_P3C3R) {
  run(state, ORB(orbiYCbCr420ToBGR565_8u16u_P3C3R), 1, 2);
}
ORB_BENCHMARK(orbiYCbCr420ToBGR555_8u16u_P3C3R) {
  run(state, ORB(orbiYCbCr420ToBGR555_8u16u_P3C3R), 1, 2);
}
ORB_BENCHMARK(orbiYCbCr422ToBGR565_8u16u_C2C3R) {
  run(state, ORB(orbiYCbCr422ToBGR565_8u16u_C2C3R), 2, 2);
}
ORB_BENCHMARK(orbiBGR565ToBGR_16u8u_C3R) {
  run(state, ORB(orbiBGR565ToBGR_16u8u_C3R), 2, 3);
}
ORB_BENCHMARK(orbiBGRToBGR565_8u16u_C3R) {
  run(state, ORB(orbiBGRToBGR565_8u16u_C3R), 3, 2);
}

using FromWords = int (*)(const uint8_t*, int, uint8_t*, int, uint8_t*, int, uint8_t*, int, int,
                          int);
void libyuvToPlanes(benchmark::State& state, FromWords function) {
  timePixels(state, [=] {
    function(srcImages[0].samples, 2 * kWidth, dstImages[0].samples, kWidth, dstImages[1].samples,
             kWidth / 2, dstImages[2].samples, kWidth / 2, kWidth, kHeight);
  });
}
using ToWords = int (*)(const uint8_t*, int, const uint8_t*, int, const uint8_t*, int, uint8_t*,
                        int, int, int);
void libyuvOfPlanes(benchmark::State& state, ToWords function) {
  timePixels(state, [=] {
    function(srcImages[0].samples, kWidth, srcImages[1].samples, kWidth / 2, srcImages[2].samples,
             kWidth / 2, dstImages[0].samples, 2 * kWidth, kWidth, kHeight);
  });
}
BENCHMARK_CAPTURE(libyuvToPlanes, RGB565ToI420, libyuv::RGB565ToI420);
BENCHMARK_CAPTURE(libyuvToPlanes, ARGB1555ToI420, libyuv::ARGB1555ToI420);
BENCHMARK_CAPTURE(libyuvOfPlanes, I420ToRGB565, libyuv::I420ToRGB565);
BENCHMARK_CAPTURE(libyuvOfPlanes, I420ToARGB1555, libyuv::I420ToARGB1555);

}  // namespace
