#include "hosts/image/resize.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include "hosts/error.h"
#include "hosts/image/operations.h"

namespace orbhost::image {

namespace {

OrbiRect wholeOf(OrbiSize size) {
  return {0, 0, size.width, size.height};
}

// Of which a whole side becomes no less than the whole other one.
double factorOf(int from, int to) {
  const double factor = static_cast<double>(to) / from;
  return from * factor < to ? std::nextafter(factor, std::numeric_limits<double>::infinity())
                            : factor;
}

}  // namespace

Placement placedInto(const Image& image, OrbiSize size) {
  return {wholeOf({image.width(), image.height()}),
          factorOf(image.width(), size.width),
          factorOf(image.height(), size.height),
          0,
          0,
          size};
}

Placement placedBy(const Image& image, double factor) {
  const auto side = [=](int from) {
    const double scaled = std::ceil(from * factor - 1e-6);
    if (!(scaled >= 1 && scaled < std::numeric_limits<int>::max())) {
      throw Error("a picture cannot be scaled by " + std::to_string(factor));
    }
    return static_cast<int>(scaled);
  };
  return {wholeOf({image.width(), image.height()}),   factor, factor, 0, 0,
          {side(image.width()), side(image.height())}};
}

Image resize(const Image& image, const Placement& placement, int interpolation) {
  Image result(placement.size.width, placement.size.height, image.channels());
  std::memset(result.row(0), 0, result.size());
  const OrbiRect target = wholeOf(placement.size);
  Orb32s scratchSize = 0;
  check(legacy90orbiResizeGetBufSize(placement.region, target, image.channels(), interpolation,
                                     &scratchSize));
  Bytes scratch(static_cast<size_t>(scratchSize));
  const auto function = image.channels() == 1   ? legacy90orbiResizeSqrPixel_8u_C1R
                        : image.channels() == 3 ? legacy90orbiResizeSqrPixel_8u_C3R
                                                : legacy90orbiResizeSqrPixel_8u_C4R;
  check(function(image.row(0), {image.width(), image.height()}, static_cast<int>(image.rowBytes()),
                 placement.region, result.row(0), static_cast<int>(result.rowBytes()), target,
                 placement.xFactor, placement.yFactor, placement.xShift, placement.yShift,
                 interpolation, scratch.data()));
  return result;
}

Bytes resizeYuv(ByteView frames, OrbiSize from, OrbiSize to, int method) {
  checkCanBeHeld(from.width, from.height, int64_t{from.width} * 2);
  checkCanBeHeld(to.width, to.height, int64_t{to.width} * 2);
  if (from.width % 2 != 0 || to.width % 2 != 0) throw Error("4:2:2 has pixels in pairs");
  const size_t frame = static_cast<size_t>(from.width) * 2 * from.height;
  const size_t resized = static_cast<size_t>(to.width) * 2 * to.height;
  if (frames.size == 0 || frames.size % frame != 0) {
    throw Error("not of whole frames of " + std::to_string(frame) + " bytes");
  }
  Bytes result(frames.size / frame * resized);
  for (size_t i = 0; i < frames.size / frame; ++i) {
    check(legacy90orbiResizeYUV422_8u_C2R(frames.data + i * frame, from, from.width * 2,
                                          wholeOf(from), result.data() + i * resized, to.width * 2,
                                          to, factorOf(from.width, to.width),
                                          factorOf(from.height, to.height), method));
  }
  return result;
}

}  // namespace orbhost::image
