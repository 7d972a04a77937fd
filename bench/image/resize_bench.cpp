// Resizing up and down, beside OpenCV and zimg on one thread. Items are pixels of the larger image.
//
// OpenCV's cubic is of four samples as ours, its Lanczos of eight where ours has six; both of its
// have weights in 11 bits of fraction, ours are floats. zimg widens its kernels as we do with
// orbInterAntialias, and has weights in 14 bits.
#include <zimg.h>

#include <algorithm>
#include <cstdlib>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "bench/support/builds.h"

namespace {

struct Shape {
  const char* name;
  int width, height;  // of the result
};
constexpr int kWidth = 1024, kHeight = 768;
constexpr Shape kUp = {"up", 1536, 1152};
constexpr Shape kDown = {"down", 410, 307};
constexpr Shape kHalf = {"half", 512, 384};

struct Image {
  Image(int w, int h, int channelCount)
      : width(w), height(h), channels(channelCount), bytes(static_cast<size_t>(w) * h * channels) {
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<Orb8u>(i * i * 7919 >> 9);
  }
  int step() const { return width * channels; }
  cv::Mat mat() { return cv::Mat(height, width, CV_MAKETYPE(CV_8U, channels), bytes.data()); }

  int width, height, channels;
  std::vector<Orb8u> bytes;
};

template <class Text>
void run(benchmark::State& state, const Shape& shape, Text text) {
  cv::setNumThreads(1);
  for (auto _ : state) {
    text();
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() *
                          std::max(kWidth * kHeight, shape.width * shape.height));
}

struct Method {
  const char* name;
  int value;
  int peer;  // OpenCV's name of it, or -1
};
constexpr Method kMethods[] = {{"nearest", orbInterNearest, cv::INTER_NEAREST},
                               {"linear", orbInterLinear, cv::INTER_LINEAR},
                               {"lagrange", orbInterLagrange, -1},
                               {"catmullrom", orbInterCatmullRom, cv::INTER_CUBIC},
                               {"lanczos", orbInterLanczos, cv::INTER_LANCZOS4}};
constexpr Method kArea = {"area", orbInterSuper, cv::INTER_AREA};

void runOurs(benchmark::State& state, const orbtest::TestBuild& build, const Shape& shape,
             int channels, int interpolation) {
  Image src(kWidth, kHeight, channels), dst(shape.width, shape.height, channels);
  const OrbiRect from = {0, 0, kWidth, kHeight}, to = {0, 0, shape.width, shape.height};
  Orb32s size = 0;
  ORB(orbiResizeGetBufSize)(from, to, channels, interpolation, &size);
  std::vector<Orb8u> scratch(static_cast<size_t>(size));
  const auto body = channels == 1   ? ORB(orbiResizeSqrPixel_8u_C1R)
                    : channels == 3 ? ORB(orbiResizeSqrPixel_8u_C3R)
                                    : ORB(orbiResizeSqrPixel_8u_C4R);
  run(state, shape, [&] {
    body(src.bytes.data(), {kWidth, kHeight}, src.step(), from, dst.bytes.data(), dst.step(), to,
         static_cast<double>(shape.width) / kWidth, static_cast<double>(shape.height) / kHeight, 0,
         0, interpolation, scratch.data());
  });
}

void runOpenCv(benchmark::State& state, const Shape& shape, int channels, int peer) {
  Image src(kWidth, kHeight, channels), dst(shape.width, shape.height, channels);
  const cv::Mat from = src.mat();
  cv::Mat to = dst.mat();
  run(state, shape, [&] { cv::resize(from, to, to.size(), 0, 0, peer); });
}

void runZimg(benchmark::State& state, const Shape& shape, zimg_resample_filter_e filter) {
  zimg_image_format from, to;
  zimg_image_format_default(&from, ZIMG_API_VERSION);
  from.pixel_type = ZIMG_PIXEL_BYTE;
  from.width = kWidth;
  from.height = kHeight;
  to = from;
  to.width = static_cast<unsigned>(shape.width);
  to.height = static_cast<unsigned>(shape.height);
  zimg_graph_builder_params parameters;
  zimg_graph_builder_params_default(&parameters, ZIMG_API_VERSION);
  parameters.resample_filter = filter;
  zimg_filter_graph* const graph = zimg_filter_graph_build(&from, &to, &parameters);
  size_t scratchSize = 0;
  zimg_filter_graph_get_tmp_size(graph, &scratchSize);
  // Rows at multiples of 64 bytes.
  const auto rowsOf = [](int width, int height) {
    return static_cast<Orb8u*>(
        std::aligned_alloc(64, static_cast<size_t>((width + 63) & ~63) * height));
  };
  Orb8u* const src = rowsOf(kWidth, kHeight);
  Orb8u* const dst = rowsOf(shape.width, shape.height);
  void* const scratch = std::aligned_alloc(64, (scratchSize + 63) & ~size_t{63});
  const Image noise(kWidth, kHeight, 1);
  std::copy(noise.bytes.begin(), noise.bytes.end(), src);
  zimg_image_buffer_const source = {ZIMG_API_VERSION, {}};
  zimg_image_buffer target = {ZIMG_API_VERSION, {}};
  source.plane[0] = {src, kWidth, ZIMG_BUFFER_MAX};
  target.plane[0] = {dst, (shape.width + 63) & ~63, ZIMG_BUFFER_MAX};
  run(state, shape, [&] {
    zimg_filter_graph_process(graph, &source, &target, scratch, nullptr, nullptr, nullptr, nullptr);
  });
  std::free(scratch);
  std::free(dst);
  std::free(src);
  zimg_filter_graph_free(graph);
}

void add(const Shape& shape, const Method& method, int option) {
  const std::string what = std::string(option ? "antialias_" : "") + method.name + "/" + shape.name;
  const int interpolation = method.value | option;
  for (const int channels : {1, 3, 4}) {
    const std::string name = what + "/C" + std::to_string(channels);
    for (const orbtest::TestBuild& build : orbtest::runnableBuilds()) {
      benchmark::RegisterBenchmark(
          ("orbiResizeSqrPixel_8u/" + name + "/" + build.tag).c_str(),
          [=](benchmark::State& state) { runOurs(state, build, shape, channels, interpolation); });
    }
    if (option == 0 && method.peer >= 0) {
      benchmark::RegisterBenchmark(("OpenCV_resize/" + name).c_str(), [=](benchmark::State& state) {
        runOpenCv(state, shape, channels, method.peer);
      });
    }
  }
}

void addZimg(const Shape& shape, const char* name, zimg_resample_filter_e filter) {
  benchmark::RegisterBenchmark(
      (std::string("zimg_resize/antialias_") + name + "/" + shape.name + "/C1").c_str(),
      [=](benchmark::State& state) { runZimg(state, shape, filter); });
}

const bool registered = [] {
  for (const Method& method : kMethods) {
    add(kUp, method, 0);
    add(kDown, method, 0);
    if (method.value != orbInterNearest) add(kDown, method, orbInterAntialias);
  }
  add(kDown, kArea, 0);
  add(kHalf, kArea, 0);
  addZimg(kDown, "linear", ZIMG_RESIZE_BILINEAR);
  addZimg(kDown, "catmullrom", ZIMG_RESIZE_BICUBIC);
  addZimg(kDown, "lanczos", ZIMG_RESIZE_LANCZOS);
  return true;
}();

ORB_BENCHMARK(orbiResizeYUV422_8u_C2R) {
  Image src(kWidth, kHeight, 2), dst(kUp.width, kUp.height, 2);
  run(state, kUp, [&] {
    ORB(orbiResizeYUV422_8u_C2R)
    (src.bytes.data(), {kWidth, kHeight}, src.step(), {0, 0, kWidth, kHeight}, dst.bytes.data(),
     dst.step(), {kUp.width, kUp.height}, 1.5, 1.5, orbInterLinear);
  });
}

}  // namespace
