#include "hosts/image/operations.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "hosts/error.h"

namespace orbhost::image {

namespace {

// The picture with its outermost pixels repeated `around` times on each side.
Image withBorder(const Image& image, int around) {
  const int channels = image.channels();
  Image wide(image.width() + 2 * around, image.height() + 2 * around, channels);
  for (int y = 0; y < wide.height(); ++y) {
    const uint8_t* const from = image.row(std::clamp(y - around, 0, image.height() - 1));
    uint8_t* const to = wide.row(y);
    for (int x = 0; x < wide.width(); ++x) {
      const int column = std::clamp(x - around, 0, image.width() - 1);
      std::memcpy(to + x * channels, from + column * channels, static_cast<size_t>(channels));
    }
  }
  return wide;
}

// The first pixel of the picture in one with a border.
uint8_t* insideOf(Image& wide, int around) {
  return wide.row(around) + around * wide.channels();
}

Image blank(int width, int height, int channels) {
  Image image(width, height, channels);
  std::memset(image.row(0), 0, image.size());
  return image;
}

int stepOf(const Image& image) {
  return static_cast<int>(image.rowBytes());
}
OrbiSize sizeOf(const Image& image) {
  return {image.width(), image.height()};
}
OrbiRect wholeOf(const Image& image) {
  return {0, 0, image.width(), image.height()};
}

// One channel as a picture of its own, and back.
Image channelOf(const Image& image, int channel) {
  Image plane(image.width(), image.height(), 1);
  for (int y = 0; y < image.height(); ++y) {
    const uint8_t* from = image.row(y) + channel;
    for (int x = 0; x < image.width(); ++x) plane.row(y)[x] = from[x * image.channels()];
  }
  return plane;
}
void setChannel(Image& image, int channel, const Image& plane) {
  for (int y = 0; y < image.height(); ++y) {
    uint8_t* to = image.row(y) + channel;
    for (int x = 0; x < image.width(); ++x) to[x * image.channels()] = plane.row(y)[x];
  }
}
// For functions of one channel alone: `work` on each.
template <class Work>
Image onEachChannel(const Image& image, Work work) {
  if (image.channels() == 1) return work(image);
  Image result(image.width(), image.height(), image.channels());
  for (int channel = 0; channel < image.channels(); ++channel) {
    setChannel(result, channel, work(channelOf(image, channel)));
  }
  return result;
}

// The three functions of a family by their channels.
template <class Function>
struct ByChannels {
  Function *c1, *c3, *c4;

  Function* of(const Image& image) const {
    return image.channels() == 1 ? c1 : image.channels() == 3 ? c3 : c4;
  }
};

using Filter = decltype(legacy90orbiFilterGauss_8u_C1R);
using Morphology = decltype(legacy90orbiDilate3x3_8u_C1IR);

ByChannels<Filter> filterOf(FilterKind kind) {
  switch (kind) {
    case FilterKind::kGauss:
      return {legacy90orbiFilterGauss_8u_C1R, legacy90orbiFilterGauss_8u_C3R,
              legacy90orbiFilterGauss_8u_C4R};
    case FilterKind::kHipass:
      return {legacy90orbiFilterHipass_8u_C1R, legacy90orbiFilterHipass_8u_C3R,
              legacy90orbiFilterHipass_8u_C4R};
    case FilterKind::kLaplace:
      return {legacy90orbiFilterLaplace_8u_C1R, legacy90orbiFilterLaplace_8u_C3R,
              legacy90orbiFilterLaplace_8u_C4R};
    default:  // four channels are filtered one by one
      return {legacy90orbiFilterLowpass_8u_C1R, legacy90orbiFilterLowpass_8u_C3R, nullptr};
  }
}

Image morph(const Image& image, Morphology* function) {
  return onEachChannel(image, [&](const Image& plane) {
    Image wide = withBorder(plane, 1);
    check(function(insideOf(wide, 1), stepOf(wide), sizeOf(plane)));
    Image result(plane.width(), plane.height(), 1);
    for (int y = 0; y < plane.height(); ++y) {
      std::memcpy(result.row(y), wide.row(y + 1) + 1, result.rowBytes());
    }
    return result;
  });
}

// Columns or rows that hold points from `low` to `high`, as far as memory may go.
int extentOf(double low, double high) {
  const double pixels = std::floor(high - low + 1e-9) + 1;
  if (!(pixels < 1e6)) throw Error("the result would be too large");
  return static_cast<int>(pixels);
}

}  // namespace

void check(OrbStatus status) {
  if (status == orbStsNoErr || status == orbStsAntialiasIgnored) return;
  switch (status) {
    case orbStsResizeFactorErr:
      throw Error("means of areas only make a picture smaller");
    case orbStsResizeTooSmallErr:
    case orbStsNoOperation:
      throw Error("nothing of the picture would be left");
    case orbStsQuadOutside:
    case orbStsRoiOutside:
      throw Error("nothing of the picture falls into the result");
    case orbStsRoiSmallErr:
      throw Error("the picture has less than 2 x 2 pixels");
    case orbStsCoeffErr:
      throw Error("the four corners make no convex figure");
    case orbStsMemAllocErr:
      throw Error("out of memory");
    default:
      throw Error("the library refuses its arguments, with status " + std::to_string(status));
  }
}

Image filter(const Image& image, FilterKind kind, OrbiMaskSize mask) {
  Filter* const function = filterOf(kind).of(image);
  if (function == nullptr) {
    return onEachChannel(image, [&](const Image& plane) { return filter(plane, kind, mask); });
  }
  const int around = mask == orbMask3x3 ? 1 : 2;
  Image wide = withBorder(image, around);
  Image result(image.width(), image.height(), image.channels());
  check(function(insideOf(wide, around), stepOf(wide), result.row(0), stepOf(result),
                 sizeOf(result), mask));
  return result;
}

Image dilate(const Image& image) {
  return morph(image, legacy90orbiDilate3x3_8u_C1IR);
}

Image erode(const Image& image) {
  return morph(image, legacy90orbiErode3x3_8u_C1IR);
}

Image rotate(const Image& image, double degrees, Canvas canvas, int interpolation) {
  using Rotate = decltype(legacy90orbiRotate_8u_C1R);
  const double radians = degrees / 180 * std::acos(-1.0);
  const bool isRight = std::fmod(degrees, 90) == 0;
  const double sine = isRight ? std::round(std::sin(radians)) : std::sin(radians);
  const double cosine = isRight ? std::round(std::cos(radians)) : std::cos(radians);
  const double w = image.width() - 1, h = image.height() - 1;
  const double across = std::fabs(cosine) * w + std::fabs(sine) * h;
  const double down = std::fabs(cosine) * h + std::fabs(sine) * w;
  const bool fits = canvas == Canvas::kFit;
  Image result = blank(fits ? extentOf(0, across) : image.width(),
                       fits ? extentOf(0, down) : image.height(), image.channels());
  // From middle to middle; by right angles pixels are copied, and half a pixel is left out.
  double xShift = (result.width() - 1) / 2.0 - (cosine * w + sine * h) / 2;
  double yShift = (result.height() - 1) / 2.0 - (cosine * h - sine * w) / 2;
  if (isRight) {
    xShift = std::floor(xShift);
    yShift = std::floor(yShift);
  }
  const ByChannels<Rotate> functions = {legacy90orbiRotate_8u_C1R, legacy90orbiRotate_8u_C3R,
                                        legacy90orbiRotate_8u_C4R};
  check(functions.of(image)(image.row(0), sizeOf(image), stepOf(image), wholeOf(image),
                            result.row(0), stepOf(result), wholeOf(result), degrees, xShift, yShift,
                            interpolation));
  return result;
}

Image warp(const Image& image, const Corners& corners, Canvas canvas, int interpolation) {
  using Warp = decltype(legacy90orbiWarpPerspective_8u_C1R);
  if (image.width() < 2 || image.height() < 2) check(orbStsRoiSmallErr);
  Corners placed = corners;
  int width = image.width(), height = image.height();
  if (canvas == Canvas::kFit) {
    const auto ofX = [](Point a, Point b) { return a.x < b.x; };
    const auto ofY = [](Point a, Point b) { return a.y < b.y; };
    const auto [left, right] = std::minmax_element(corners.begin(), corners.end(), ofX);
    const auto [top, bottom] = std::minmax_element(corners.begin(), corners.end(), ofY);
    width = extentOf(left->x, right->x);
    height = extentOf(top->y, bottom->y);
    for (Point& corner : placed) corner = {corner.x - left->x, corner.y - top->y};
  }
  const Homography homography = homographyTo(placed, image.width(), image.height());
  Image result = blank(width, height, image.channels());
  const ByChannels<Warp> functions = {legacy90orbiWarpPerspective_8u_C1R,
                                      legacy90orbiWarpPerspective_8u_C3R,
                                      legacy90orbiWarpPerspective_8u_C4R};
  check(functions.of(image)(image.row(0), sizeOf(image), stepOf(image), wholeOf(image),
                            result.row(0), stepOf(result), wholeOf(result), homography.coeffs,
                            interpolation));
  return result;
}

}  // namespace orbhost::image
