#include "hosts/yuv/video.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "hosts/error.h"
#include "orb90legacy.h"

namespace orbhost::yuv {

namespace {

// The planes of a frame, of which kYuyv has one.
struct Planes {
  size_t offset[3];
  int step[3];
  size_t size;
};

int half(int side) {
  return side / 2 + side % 2;
}

Planes planesOf(Layout layout, int width, int height) {
  checkCanBeHeld(width, height, 2 * int64_t{width} + 2);
  if (layout == Layout::kYuyv) {
    const int step = 4 * half(width);
    return {{0, 0, 0}, {step, 0, 0}, static_cast<size_t>(step) * height};
  }
  const int chromaWidth = half(width);
  const size_t luma = static_cast<size_t>(width) * height;
  const size_t chroma =
      static_cast<size_t>(chromaWidth) * (layout == Layout::kI422 ? height : half(height));
  return {{0, luma, luma + chroma}, {width, chromaWidth, chromaWidth}, luma + 2 * chroma};
}

// With even sides: the last column and the last row may be there twice.
PackedImage padded(const PackedImage& image) {
  const int width = 2 * half(image.width());
  const int height = 2 * half(image.height());
  PackedImage even(image.format(), width, height, width, height);
  for (int y = 0; y < height; ++y) {
    const uint16_t* const from = image.row(std::min(y, image.height() - 1));
    std::copy_n(from, image.width(), even.row(y));
    even.row(y)[width - 1] = from[image.width() - 1];
  }
  return even;
}

void check(OrbStatus status) {
  if (status != orbStsNoErr) throw Error("the frame can't be converted");
}

}  // namespace

size_t frameSize(Layout layout, int width, int height) {
  return planesOf(layout, width, height).size;
}

Bytes toVideo(const PackedImage& image, Layout layout) {
  const PackedImage even = padded(image);
  const bool is565 = image.format() == PackedFormat::kBgr565;
  const OrbiSize evenSize = {even.width(), even.height()};
  // Of the even size first.
  const Planes planes = planesOf(layout, even.width(), even.height());
  Bytes frame(planes.size);
  Orb8u* const first[3] = {frame.data() + planes.offset[0], frame.data() + planes.offset[1],
                           frame.data() + planes.offset[2]};
  const auto toPlanes = [&](auto convert) {
    check(convert(even.row(0), even.step(), first, planes.step, evenSize));
  };
  switch (layout) {
    case Layout::kI420:
      toPlanes(is565 ? legacy90orbiBGR565ToYCbCr420_16u8u_C3P3R
                     : legacy90orbiBGR555ToYCbCr420_16u8u_C3P3R);
      break;
    case Layout::kYv12:
      toPlanes(is565 ? legacy90orbiBGR565ToYCrCb420_16u8u_C3P3R
                     : legacy90orbiBGR555ToYCrCb420_16u8u_C3P3R);
      break;
    case Layout::kI422:
      toPlanes(is565 ? legacy90orbiBGR565ToYCbCr422_16u8u_C3P3R
                     : legacy90orbiBGR555ToYCbCr422_16u8u_C3P3R);
      break;
    case Layout::kYuyv: {
      const auto convert = is565 ? legacy90orbiBGR565ToYCbCr422_16u8u_C3C2R
                                 : legacy90orbiBGR555ToYCbCr422_16u8u_C3C2R;
      check(convert(even.row(0), even.step(), first[0], planes.step[0], evenSize));
    }
  }
  // What the picture has of it.
  const Planes wanted = planesOf(layout, image.width(), image.height());
  Bytes cropped(wanted.size);
  const int planeCount = layout == Layout::kYuyv ? 1 : 3;
  for (int i = 0; i < planeCount; ++i) {
    const size_t end = i + 1 < planeCount ? wanted.offset[i + 1] : wanted.size;
    const size_t rows = (end - wanted.offset[i]) / static_cast<size_t>(wanted.step[i]);
    for (size_t y = 0; y < rows; ++y) {
      std::memcpy(cropped.data() + wanted.offset[i] + y * wanted.step[i],
                  frame.data() + planes.offset[i] + y * planes.step[i],
                  static_cast<size_t>(wanted.step[i]));
    }
  }
  return cropped;
}

PackedImage ofVideo(ByteView frame, Layout layout, int width, int height, PackedFormat format) {
  if (layout == Layout::kI422) throw Error("frames of i422 are written, and not read");
  const Planes planes = planesOf(layout, width, height);
  if (frame.size < planes.size) {
    throw Error("a frame of " + std::to_string(width) + " x " + std::to_string(height) + " has " +
                std::to_string(planes.size) + " bytes, and there are " +
                std::to_string(frame.size));
  }
  // Pairs are converted whole.
  PackedImage image(format, width, height, 2 * half(width), height);
  const bool is565 = format == PackedFormat::kBgr565;
  if (layout == Layout::kYuyv) {
    const auto convert =
        is565 ? legacy90orbiYCbCr422ToBGR565_8u16u_C2C3R : legacy90orbiYCbCr422ToBGR555_8u16u_C2C3R;
    check(
        convert(frame.data, planes.step[0], image.row(0), image.step(), {2 * half(width), height}));
    return image;
  }
  const int cb = layout == Layout::kYv12 ? 2 : 1;
  const Orb8u* const first[3] = {frame.data, frame.data + planes.offset[cb],
                                 frame.data + planes.offset[3 - cb]};
  const auto convert =
      is565 ? legacy90orbiYCbCr420ToBGR565_8u16u_P3C3R : legacy90orbiYCbCr420ToBGR555_8u16u_P3C3R;
  check(convert(first, planes.step, image.row(0), image.step(), {width, height}));
  return image;
}

}  // namespace orbhost::yuv
