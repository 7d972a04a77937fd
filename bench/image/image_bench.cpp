// Filters, morphology, rotation and warp, beside OpenCV on one thread. Items are pixels.
//
// OpenCV's own Gaussian of 5 x 5 is separable and rounds to fewer bits; the other filters and the
// morphology are the same work. Its warps weigh with 5 bits of fraction in each direction, ours
// with doubles.
#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "bench/support/builds.h"

namespace {

constexpr int kWidth = 1024, kHeight = 768, kAround = 2;

// An image with room around it.
struct Image {
  explicit Image(int channelCount)
      : channels(channelCount),
        step((kWidth + 2 * kAround) * channels),
        bytes(static_cast<size_t>(step) * (kHeight + 2 * kAround)) {
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<Orb8u>(i * i * 7919 >> 9);
  }
  Orb8u* data() { return bytes.data() + kAround * (step + channels); }
  cv::Mat mat() {
    return cv::Mat(kHeight, kWidth, CV_MAKETYPE(CV_8U, channels), data(),
                   static_cast<size_t>(step));
  }

  int channels;
  int step;
  std::vector<Orb8u> bytes;
};

template <class Text>
void run(benchmark::State& state, Text text) {
  cv::setNumThreads(1);
  for (auto _ : state) {
    text();
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kWidth * kHeight);
}

// A benchmark of OpenCV, on images of 1, 3 and 4 channels.
template <class Text>
bool peer(const std::string& name, Text text) {
  for (const int channels : {1, 3, 4}) {
    benchmark::RegisterBenchmark(("OpenCV_" + name + "/C" + std::to_string(channels)).c_str(),
                                 [=](benchmark::State& state) {
                                   Image src(channels), dst(channels);
                                   const cv::Mat from = src.mat();
                                   cv::Mat to = dst.mat();
                                   run(state, [&] { text(from, to); });
                                 });
  }
  return true;
}

// ---- Filters

template <class Filter>
void runFilter(benchmark::State& state, Filter* filter, int channels, OrbiMaskSize mask) {
  Image src(channels), dst(channels);
  run(state, [&] { filter(src.data(), src.step, dst.data(), dst.step, {kWidth, kHeight}, mask); });
}

#define FILTER_BENCHMARKS(name, channels)                                          \
  const bool name##_of3x3 = orbbench::onEachBuild(                                 \
      #name "/3x3", [](benchmark::State& state, const orbtest::TestBuild& build) { \
        runFilter(state, ORB(name), channels, orbMask3x3);                         \
      });                                                                          \
  const bool name##_of5x5 = orbbench::onEachBuild(                                 \
      #name "/5x5", [](benchmark::State& state, const orbtest::TestBuild& build) { \
        runFilter(state, ORB(name), channels, orbMask5x5);                         \
      });
FILTER_BENCHMARKS(orbiFilterGauss_8u_C1R, 1)
FILTER_BENCHMARKS(orbiFilterGauss_8u_C3R, 3)
FILTER_BENCHMARKS(orbiFilterGauss_8u_C4R, 4)
FILTER_BENCHMARKS(orbiFilterHipass_8u_C1R, 1)
FILTER_BENCHMARKS(orbiFilterHipass_8u_C3R, 3)
FILTER_BENCHMARKS(orbiFilterHipass_8u_C4R, 4)
FILTER_BENCHMARKS(orbiFilterLaplace_8u_C1R, 1)
FILTER_BENCHMARKS(orbiFilterLaplace_8u_C3R, 3)
FILTER_BENCHMARKS(orbiFilterLaplace_8u_C4R, 4)
FILTER_BENCHMARKS(orbiFilterLowpass_8u_C1R, 1)
FILTER_BENCHMARKS(orbiFilterLowpass_8u_C3R, 3)

cv::Mat highPass(int size) {
  cv::Mat kernel = cv::Mat::ones(size, size, CV_32F) * -1;
  kernel.at<float>(size / 2, size / 2) = static_cast<float>(size * size - 1);
  return kernel;
}
const bool kPeerFilters[] = {
    peer("Gauss/3x3",
         [](const cv::Mat& src, cv::Mat& dst) {
           cv::GaussianBlur(src, dst, {3, 3}, 0.85);
         }),
    peer("Gauss/5x5",
         [](const cv::Mat& src, cv::Mat& dst) {
           cv::GaussianBlur(src, dst, {5, 5}, 1);
         }),
    peer("Hipass/3x3",
         [kernel = highPass(3)](const cv::Mat& src, cv::Mat& dst) {
           cv::filter2D(src, dst, -1, kernel);
         }),
    peer("Hipass/5x5",
         [kernel = highPass(5)](const cv::Mat& src, cv::Mat& dst) {
           cv::filter2D(src, dst, -1, kernel);
         }),
    peer("Lowpass/3x3",
         [](const cv::Mat& src, cv::Mat& dst) {
           cv::blur(src, dst, {3, 3});
         }),
    peer("Lowpass/5x5",
         [](const cv::Mat& src, cv::Mat& dst) {
           cv::blur(src, dst, {5, 5});
         }),
};

// ---- Morphology

ORB_BENCHMARK(orbiDilate3x3_8u_C1IR) {
  Image image(1);
  run(state, [&] { ORB(orbiDilate3x3_8u_C1IR)(image.data(), image.step, {kWidth, kHeight}); });
}
ORB_BENCHMARK(orbiErode3x3_8u_C1IR) {
  Image image(1);
  run(state, [&] { ORB(orbiErode3x3_8u_C1IR)(image.data(), image.step, {kWidth, kHeight}); });
}
const bool kPeerDilate = peer("Dilate", [](const cv::Mat& src, cv::Mat& dst) {
  cv::dilate(src, dst, cv::Mat::ones(3, 3, CV_8U));
});

// ---- Rotation and warp: the whole image, about its middle.

constexpr OrbiRect kWhole = {0, 0, kWidth, kHeight};

template <class Rotate>
void runRotation(benchmark::State& state, Rotate* rotate, int channels, double angle, int method) {
  Image src(channels), dst(channels);
  run(state, [&] {
    rotate(src.data(), {kWidth, kHeight}, src.step, kWhole, dst.data(), dst.step, kWhole, angle,
           kWidth / 2, kHeight / 2, method);
  });
}
template <class Warp>
void runWarp(benchmark::State& state, Warp* warp, int channels, int method) {
  Image src(channels), dst(channels);
  const double coeffs[3][3] = {{0.9, 0.1, 10}, {-0.05, 1, 20}, {1e-4, 5e-5, 1}};
  run(state, [&] {
    warp(src.data(), {kWidth, kHeight}, src.step, kWhole, dst.data(), dst.step, kWhole, coeffs,
         method);
  });
}

#define TRANSFORM_BENCHMARKS(rotate, warp, channels, title, method)                      \
  const bool rotate##_##title = orbbench::onEachBuild(                                   \
      #rotate "/" #title, [](benchmark::State& state, const orbtest::TestBuild& build) { \
        runRotation(state, ORB(rotate), channels, 10, method);                           \
      });                                                                                \
  const bool warp##_##title = orbbench::onEachBuild(                                     \
      #warp "/" #title, [](benchmark::State& state, const orbtest::TestBuild& build) {   \
        runWarp(state, ORB(warp), channels, method);                                     \
      });
#define TRANSFORM_BENCHMARKS_OF(rotate, warp, channels)                                  \
  TRANSFORM_BENCHMARKS(rotate, warp, channels, nearest, orbInterNearest)                 \
  TRANSFORM_BENCHMARKS(rotate, warp, channels, linear, orbInterLinear)                   \
  TRANSFORM_BENCHMARKS(rotate, warp, channels, lagrange, orbInterLagrange)               \
  TRANSFORM_BENCHMARKS(rotate, warp, channels, catmullrom, orbInterCatmullRom)           \
  const bool rotate##_quarter = orbbench::onEachBuild(                                   \
      #rotate "/quarter", [](benchmark::State& state, const orbtest::TestBuild& build) { \
        runRotation(state, ORB(rotate), channels, 90, orbInterNearest);                  \
      });
TRANSFORM_BENCHMARKS_OF(orbiRotateCenter_8u_C1R, orbiWarpPerspective_8u_C1R, 1)
TRANSFORM_BENCHMARKS_OF(orbiRotateCenter_8u_C3R, orbiWarpPerspective_8u_C3R, 3)
TRANSFORM_BENCHMARKS_OF(orbiRotateCenter_8u_C4R, orbiWarpPerspective_8u_C4R, 4)

bool peersOf(const std::string& title, int flags) {
  peer("Rotate/" + title, [=](const cv::Mat& src, cv::Mat& dst) {
    const cv::Mat turn = cv::getRotationMatrix2D({kWidth / 2, kHeight / 2}, 10, 1);
    cv::warpAffine(src, dst, turn, src.size(), flags, cv::BORDER_TRANSPARENT);
  });
  return peer("Warp/" + title, [=](const cv::Mat& src, cv::Mat& dst) {
    const cv::Matx33d coeffs(0.9, 0.1, 10, -0.05, 1, 20, 1e-4, 5e-5, 1);
    cv::warpPerspective(src, dst, coeffs, src.size(), flags, cv::BORDER_TRANSPARENT);
  });
}
const bool kPeerTransforms[] = {peersOf("nearest", cv::INTER_NEAREST),
                                peersOf("linear", cv::INTER_LINEAR),
                                peersOf("cubic", cv::INTER_CUBIC)};
const bool kPeerQuarter = peer("Rotate/quarter", [](const cv::Mat& src, cv::Mat&) {
  static cv::Mat turned;
  cv::rotate(src, turned, cv::ROTATE_90_COUNTERCLOCKWISE);
});

}  // namespace
