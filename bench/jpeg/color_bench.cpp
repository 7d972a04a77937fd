// JPEG colour conversion of a stripe of pixels; items are pixels.
#include <cstdint>
#include <type_traits>

#include "bench/support/builds.h"

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 16;

// Room for one plane, or for up to four bytes of each pixel.
struct Image {
  alignas(64) Orb8u samples[kWidth * kHeight * 4];
  Image() {
    Orb32u state = 1;
    for (Orb8u& sample : samples) {
      state = state * 1664525 + 1013904223;
      sample = static_cast<Orb8u>(state >> 24);
    }
  }
};
Image sourceImages[4], destinationImages[4];

// The image argument of a function, one pointer or one for each plane, and its step argument.
template <class Pointer, class Step>
struct Argument {
  static constexpr bool kPlanar = std::is_pointer_v<std::remove_pointer_t<Pointer>>;

  Orb8u* planes[4];
  Step step;

  Argument(Image* images, int pixelBytes)
      : planes{images[0].samples, images[1].samples, images[2].samples, images[3].samples} {
    static constexpr Orb32s kSteps[3] = {kWidth, kWidth / 2, kWidth / 2};
    if constexpr (std::is_pointer_v<Step>) {
      step = kSteps;
    } else {
      step = kPlanar ? kWidth : kWidth * pixelBytes;
    }
  }
  Pointer pointer() {
    if constexpr (kPlanar) {
      return planes;
    } else {
      return reinterpret_cast<Pointer>(planes[0]);
    }
  }
};

template <class Src, class SrcStep, class Dst, class DstStep, class... Aval>
void run(benchmark::State& state,
         OrbStatus(ORB_CALL* function)(Src, SrcStep, Dst, DstStep, OrbiSize, Aval...),
         int pixelBytes) {
  Argument<Src, SrcStep> src(sourceImages, pixelBytes);
  Argument<Dst, DstStep> dst(destinationImages, pixelBytes);
  for (auto _ : state) {
    function(src.pointer(), src.step, dst.pointer(), dst.step, {kWidth, kHeight}, Aval{255}...);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kWidth * kHeight);
}

ORB_BENCHMARK(orbiRGBToYCbCr_JPEG_8u_P3R) {
  run(state, ORB(orbiRGBToYCbCr_JPEG_8u_P3R), 1);
}
ORB_BENCHMARK(orbiRGBToYCbCr_JPEG_8u_C3P3R) {
  run(state, ORB(orbiRGBToYCbCr_JPEG_8u_C3P3R), 3);
}
ORB_BENCHMARK(orbiRGBToYCbCr_JPEG_8u_C4P3R) {
  run(state, ORB(orbiRGBToYCbCr_JPEG_8u_C4P3R), 4);
}
ORB_BENCHMARK(orbiRGB565ToYCbCr_JPEG_16u8u_C3P3R) {
  run(state, ORB(orbiRGB565ToYCbCr_JPEG_16u8u_C3P3R), 2);
}
ORB_BENCHMARK(orbiRGBToY_JPEG_8u_C3C1R) {
  run(state, ORB(orbiRGBToY_JPEG_8u_C3C1R), 3);
}
ORB_BENCHMARK(orbiRGBToYCbCr422_JPEG_8u_C3P3R) {
  run(state, ORB(orbiRGBToYCbCr422_JPEG_8u_C3P3R), 3);
}
ORB_BENCHMARK(orbiRGBToYCbCr411_JPEG_8u_C3P3R) {
  run(state, ORB(orbiRGBToYCbCr411_JPEG_8u_C3P3R), 3);
}
ORB_BENCHMARK(orbiRGBToYCbCr411_JPEG_8u_C4P3R) {
  run(state, ORB(orbiRGBToYCbCr411_JPEG_8u_C4P3R), 4);
}

ORB_BENCHMARK(orbiYCbCrToRGB_JPEG_8u_P3R) {
  run(state, ORB(orbiYCbCrToRGB_JPEG_8u_P3R), 1);
}
ORB_BENCHMARK(orbiYCbCrToRGB_JPEG_8u_P3C3R) {
  run(state, ORB(orbiYCbCrToRGB_JPEG_8u_P3C3R), 3);
}
ORB_BENCHMARK(orbiYCbCrToRGB_JPEG_8u_P3C4R) {
  run(state, ORB(orbiYCbCrToRGB_JPEG_8u_P3C4R), 4);
}
ORB_BENCHMARK(orbiYCbCrToRGB565_JPEG_8u16u_P3C3R) {
  run(state, ORB(orbiYCbCrToRGB565_JPEG_8u16u_P3C3R), 2);
}
ORB_BENCHMARK(orbiYCbCr422ToRGB_JPEG_8u_P3C3R) {
  run(state, ORB(orbiYCbCr422ToRGB_JPEG_8u_P3C3R), 3);
}
ORB_BENCHMARK(orbiYCbCr422ToRGB_JPEG_8u_C2C3R) {
  run(state, ORB(orbiYCbCr422ToRGB_JPEG_8u_C2C3R), 3);
}
ORB_BENCHMARK(orbiYCbCr411ToRGB_JPEG_8u_P3C3R) {
  run(state, ORB(orbiYCbCr411ToRGB_JPEG_8u_P3C3R), 3);
}
ORB_BENCHMARK(orbiYCbCr411ToRGB_JPEG_8u_P3C4R) {
  run(state, ORB(orbiYCbCr411ToRGB_JPEG_8u_P3C4R), 4);
}

ORB_BENCHMARK(orbiCMYKToYCCK_JPEG_8u_C4P4R) {
  run(state, ORB(orbiCMYKToYCCK_JPEG_8u_C4P4R), 4);
}
ORB_BENCHMARK(orbiYCCKToCMYK_JPEG_8u_P4C4R) {
  run(state, ORB(orbiYCCKToCMYK_JPEG_8u_P4C4R), 4);
}

}  // namespace
