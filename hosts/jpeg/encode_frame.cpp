#include "hosts/jpeg/encode_frame.h"

#include <string>

#include "hosts/error.h"

namespace orbhost::jpeg {

namespace {

constexpr int kLargestSide = 65535;
constexpr int kLargestInterval = 65535;

}  // namespace

Frame makeFrame(const Image& image, int marker, int precision, ColourSpace colourSpace) {
  if (image.width() > kLargestSide || image.height() > kLargestSide) {
    throw Error("a JPEG holds at most 65535 x 65535 pixels, not " + std::to_string(image.width()) +
                " x " + std::to_string(image.height()));
  }
  Frame frame = {marker, precision, image.width(), image.height(), {}};
  switch (colourSpace) {
    case ColourSpace::kGrey:
      frame.components = {{1, 1, 1, 0}};
      break;
    case ColourSpace::kYCbCr:
      frame.components = {{1, 1, 1, 0}, {2, 1, 1, 1}, {3, 1, 1, 1}};
      break;
    case ColourSpace::kRgb:
      frame.components = {{'R', 1, 1, 0}, {'G', 1, 1, 0}, {'B', 1, 1, 0}};
      break;
    case ColourSpace::kCmyk:
      frame.components = {{'C', 1, 1, 0}, {'M', 1, 1, 0}, {'Y', 1, 1, 0}, {'K', 1, 1, 0}};
      break;
    case ColourSpace::kYcck:
      frame.components = {{1, 1, 1, 0}, {2, 1, 1, 1}, {3, 1, 1, 1}, {4, 1, 1, 0}};
      break;
  }
  return frame;
}

void writeColourSpace(ColourSpace colourSpace, MarkerWriter& markers) {
  switch (colourSpace) {
    case ColourSpace::kGrey:
    case ColourSpace::kYCbCr:
      markers.jfif();
      break;
    case ColourSpace::kRgb:
    case ColourSpace::kCmyk:
      markers.adobe(0);
      break;
    case ColourSpace::kYcck:
      markers.adobe(2);
      break;
  }
}

int restartIntervalFor(const EncodeOptions& options, int mcusPerRow) {
  const int64_t mcus = int64_t{options.restartInterval} * (options.restartInRows ? mcusPerRow : 1);
  if (mcus < 0 || mcus > kLargestInterval) {
    throw Error("a restart interval is at most 65535 MCUs, not " + std::to_string(mcus));
  }
  return static_cast<int>(mcus);
}

}  // namespace orbhost::jpeg
