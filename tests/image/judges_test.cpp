// Image operations beside OpenCV, where both mean the same.
#include <algorithm>
#include <cstdlib>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "tests/support/builds.h"

namespace {

using orbtest::Random;

// An image whose rows have no gaps; its inside leaves two pixels on each side.
struct Image {
  Image(int w, int h, int channelCount)
      : width(w), height(h), channels(channelCount), bytes(static_cast<size_t>(w) * h * channels) {}
  void fill(Random& random) {
    for (Orb8u& byte : bytes) byte = random.any<Orb8u>();
  }
  int step() const { return width * channels; }
  Orb8u* inside() { return bytes.data() + 2 * step() + 2 * channels; }
  OrbiSize insideSize() const { return {width - 4, height - 4}; }
  cv::Mat mat() { return cv::Mat(height, width, CV_MAKETYPE(CV_8U, channels), bytes.data()); }
  // The inside of what OpenCV made of the whole, which sees the same neighbours there.
  static cv::Mat insideOf(const cv::Mat& whole) {
    return whole(cv::Rect(2, 2, whole.cols - 4, whole.rows - 4)).clone();
  }
  cv::Mat insideMat() { return insideOf(mat()); }

  int width, height, channels;
  std::vector<Orb8u> bytes;
};

// The largest difference of two images of the same shape.
int difference(const cv::Mat& a, const cv::Mat& b) {
  return static_cast<int>(cv::norm(a, b, cv::NORM_INF));
}

// A kernel's rows, of which the middle one is the last given.
cv::Mat mirrored(const std::vector<std::vector<float>>& rows) {
  const int size = 2 * static_cast<int>(rows.size()) - 1;
  cv::Mat kernel(size, size, CV_32F);
  for (int y = 0; y < size; ++y) {
    for (int x = 0; x < size; ++x) {
      kernel.at<float>(y, x) = rows[static_cast<size_t>(std::min(y, size - 1 - y))]
                                   [static_cast<size_t>(std::min(x, size - 1 - x))];
    }
  }
  return kernel;
}

using Filter = decltype(legacy90orbiFilterGauss_8u_C1R);

void expectFiltered(Filter* filter, OrbiMaskSize mask, int channels, const cv::Mat& kernel,
                    int off) {
  Random random("judged filters");
  Image src(61, 43, channels), dst(61, 43, channels);
  src.fill(random);
  ASSERT_EQ(filter(src.inside(), src.step(), dst.inside(), dst.step(), src.insideSize(), mask),
            orbStsNoErr);
  cv::Mat judged;
  cv::filter2D(src.mat(), judged, -1, kernel);
  EXPECT_LE(difference(dst.insideMat(), Image::insideOf(judged)), off) << mask;
}

const cv::Mat kHipass3x3 = mirrored({{-1, -1}, {-1, 8}});
const cv::Mat kHipass5x5 = mirrored({{-1, -1, -1}, {-1, -1, -1}, {-1, -1, 24}});
const cv::Mat kLaplace5x5 = mirrored({{-1, -3, -4}, {-3, 0, 6}, {-4, 6, 20}});
const cv::Mat kGauss3x3 = mirrored({{1, 2}, {2, 4}}) / 16;
const cv::Mat kGauss5x5 = mirrored({{2, 7, 12}, {7, 31, 52}, {12, 52, 127}}) / 571;

// Sums that are only limited are the same to the bit, quotients up to their rounding.
ORB_MEANING(orbiFilterHipass_8u_C1R, AsOpenCv) {
  expectFiltered(ORB(orbiFilterHipass_8u_C1R), orbMask3x3, 1, kHipass3x3, 0);
  expectFiltered(ORB(orbiFilterHipass_8u_C1R), orbMask5x5, 1, kHipass5x5, 0);
}
ORB_MEANING(orbiFilterHipass_8u_C4R, AsOpenCv) {
  expectFiltered(ORB(orbiFilterHipass_8u_C4R), orbMask5x5, 4, kHipass5x5, 0);
}
ORB_MEANING(orbiFilterLaplace_8u_C3R, AsOpenCv) {
  expectFiltered(ORB(orbiFilterLaplace_8u_C3R), orbMask3x3, 3, kHipass3x3, 0);
  expectFiltered(ORB(orbiFilterLaplace_8u_C3R), orbMask5x5, 3, kLaplace5x5, 0);
}
ORB_MEANING(orbiFilterGauss_8u_C3R, AsOpenCv) {
  expectFiltered(ORB(orbiFilterGauss_8u_C3R), orbMask3x3, 3, kGauss3x3, 1);
  expectFiltered(ORB(orbiFilterGauss_8u_C3R), orbMask5x5, 3, kGauss5x5, 1);
}
ORB_MEANING(orbiFilterLowpass_8u_C1R, AsOpenCv) {
  expectFiltered(ORB(orbiFilterLowpass_8u_C1R), orbMask3x3, 1, cv::Mat::ones(3, 3, CV_32F) / 9, 1);
  expectFiltered(ORB(orbiFilterLowpass_8u_C1R), orbMask5x5, 1, cv::Mat::ones(5, 5, CV_32F) / 25, 1);
}

ORB_MEANING(orbiDilate3x3_8u_C1IR, AsOpenCv) {
  Random random("judged dilation");
  Image image(97, 40, 1);
  image.fill(random);
  cv::Mat judged;
  cv::dilate(image.mat(), judged, cv::Mat::ones(3, 3, CV_8U));
  ASSERT_EQ(ORB(orbiDilate3x3_8u_C1IR)(image.inside(), image.step(), image.insideSize()),
            orbStsNoErr);
  EXPECT_EQ(difference(image.insideMat(), Image::insideOf(judged)), 0);
}
ORB_MEANING(orbiErode3x3_8u_C1IR, AsOpenCv) {
  Random random("judged erosion");
  Image image(97, 40, 1);
  image.fill(random);
  cv::Mat judged;
  cv::erode(image.mat(), judged, cv::Mat::ones(3, 3, CV_8U));
  ASSERT_EQ(ORB(orbiErode3x3_8u_C1IR)(image.inside(), image.step(), image.insideSize()),
            orbStsNoErr);
  EXPECT_EQ(difference(image.insideMat(), Image::insideOf(judged)), 0);
}

ORB_MEANING(orbiRotate_8u_C3R, RightAnglesAsOpenCv) {
  Random random("judged right angles");
  Image src(50, 30, 3);
  src.fill(random);
  const struct {
    double angle, x, y;
    int code;
  } turns[] = {{90, 0, 49, cv::ROTATE_90_COUNTERCLOCKWISE},
               {180, 49, 29, cv::ROTATE_180},
               {270, 29, 0, cv::ROTATE_90_CLOCKWISE}};
  for (const auto& turn : turns) {
    cv::Mat judged;
    cv::rotate(src.mat(), judged, turn.code);
    Image dst(judged.cols, judged.rows, 3);
    ASSERT_EQ(ORB(orbiRotate_8u_C3R)(src.bytes.data(), {50, 30}, src.step(), {0, 0, 50, 30},
                                     dst.bytes.data(), dst.step(), {0, 0, dst.width, dst.height},
                                     turn.angle, turn.x, turn.y, 0),
              orbStsNoErr);
    EXPECT_EQ(difference(dst.mat(), judged), 0) << turn.angle;
  }
}

// OpenCV rounds places to 1/32 of a pixel: these are such.
ORB_MEANING(orbiWarpPerspective_8u_C4R, LinearAsOpenCv) {
  Random random("judged warp");
  Image src(64, 48, 4), dst(64, 48, 4);
  src.fill(random);
  const double steps[][6] = {
      {1, 0, 0.25, 0, 1, 3.5}, {2, 0, -7.25, 0, 4, -20.125}, {1, -0.5, 20, 0.5, 1, -8.75}};
  for (const auto& m : steps) {
    // The inverse of the map is exact in OpenCV's 1/32 too: it is given, and the forward map made
    // of it.
    const double determinant = m[0] * m[4] - m[1] * m[3];
    const double coeffs[3][3] = {
        {m[4] / determinant, -m[1] / determinant, (m[1] * m[5] - m[4] * m[2]) / determinant},
        {-m[3] / determinant, m[0] / determinant, (m[3] * m[2] - m[0] * m[5]) / determinant},
        {0, 0, 1}};
    std::fill(dst.bytes.begin(), dst.bytes.end(), Orb8u{0});
    ASSERT_EQ(ORB(orbiWarpPerspective_8u_C4R)(src.bytes.data(), {64, 48}, src.step(),
                                              {0, 0, 64, 48}, dst.bytes.data(), dst.step(),
                                              {0, 0, 64, 48}, coeffs, orbInterLinear),
              orbStsNoErr);
    cv::Mat judged;
    const cv::Mat back = (cv::Mat_<double>(2, 3) << m[0], m[1], m[2], m[3], m[4], m[5]);
    cv::warpAffine(src.mat(), judged, back, {64, 48}, cv::INTER_LINEAR | cv::WARP_INVERSE_MAP);
    int compared = 0;
    for (int y = 0; y < 48; ++y) {
      for (int x = 0; x < 64; ++x) {
        // OpenCV mixes its own border in where not all four pixels are in the image.
        const double sx = m[0] * x + m[1] * y + m[2], sy = m[3] * x + m[4] * y + m[5];
        if (sx < 0 || sy < 0 || sx > 63 || sy > 47) continue;
        ++compared;
        for (int k = 0; k < 4; ++k) {
          const int ours = dst.bytes[static_cast<size_t>((y * 64 + x) * 4 + k)];
          const int theirs = judged.at<cv::Vec4b>(y, x)[k];
          ASSERT_LE(std::abs(ours - theirs), 1) << x << ", " << y;
        }
      }
    }
    EXPECT_GT(compared, 200);
  }
}

}  // namespace
