// Resizing beside OpenCV, where both mean the same.
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "tests/support/builds.h"

namespace {

using orbtest::Random;
using orbtest::TestBuild;

struct Sizes {
  int width, height;  // of the source
  int across, down;   // of the result
};

// The largest difference of ours and OpenCV's result, with three channels.
int differenceOf(const TestBuild& build, const Sizes& sizes, int method, int peer) {
  Random random("judges");
  cv::Mat source(sizes.height, sizes.width, CV_8UC3);
  for (size_t i = 0; i < source.total() * 3; ++i) source.data[i] = random.any<Orb8u>();
  cv::Mat expected, actual(sizes.down, sizes.across, CV_8UC3);
  cv::resize(source, expected, actual.size(), 0, 0, peer);

  const OrbiRect from = {0, 0, sizes.width, sizes.height}, to = {0, 0, sizes.across, sizes.down};
  Orb32s size = 0;
  EXPECT_EQ(ORB(orbiResizeGetBufSize)(from, to, 3, method, &size), orbStsNoErr);
  std::vector<Orb8u> scratch(static_cast<size_t>(size));
  EXPECT_EQ(ORB(orbiResizeSqrPixel_8u_C3R)(
                source.data, {sizes.width, sizes.height}, sizes.width * 3, from, actual.data,
                sizes.across * 3, to, static_cast<double>(sizes.across) / sizes.width,
                static_cast<double>(sizes.down) / sizes.height, 0, 0, method, scratch.data()),
            orbStsNoErr);
  return static_cast<int>(cv::norm(actual, expected, cv::NORM_INF));
}

// No middle of a pixel lies between two.
ORB_MEANING(orbiResizeSqrPixel_8u_C3R, NearestIsOpenCvs) {
  for (const Sizes& sizes : {Sizes{97, 61, 64, 128}, Sizes{33, 45, 256, 16}}) {
    EXPECT_EQ(differenceOf(build, sizes, orbInterNearest, cv::INTER_NEAREST_EXACT), 0);
  }
}

// Weights there are a little coarser.
ORB_MEANING(orbiResizeSqrPixel_8u_C3R, LinearIsOpenCvs) {
  for (const Sizes& sizes : {Sizes{97, 61, 64, 128}, Sizes{33, 45, 250, 16}, Sizes{5, 1, 64, 7}}) {
    EXPECT_LE(differenceOf(build, sizes, orbInterLinear, cv::INTER_LINEAR_EXACT), 1);
  }
}

// Odd blocks have no ties, which are rounded to even there.
ORB_MEANING(orbiResizeSqrPixel_8u_C3R, MeansAreOpenCvs) {
  for (const Sizes& sizes : {Sizes{99, 60, 33, 12}, Sizes{70, 63, 10, 9}, Sizes{15, 9, 1, 9}}) {
    EXPECT_EQ(differenceOf(build, sizes, orbInterSuper, cv::INTER_AREA), 0);
  }
  for (const Sizes& sizes : {Sizes{97, 61, 64, 60}, Sizes{50, 50, 49, 7}}) {
    EXPECT_LE(differenceOf(build, sizes, orbInterSuper, cv::INTER_AREA), 1);
  }
}

}  // namespace
