// Pixels in memory.
#ifndef ORB_HOSTS_IMAGE_H
#define ORB_HOSTS_IMAGE_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>

#include "hosts/error.h"

namespace orbhost {

// 8-bit samples, interleaved, row after row without gaps: one channel is grey, three are RGB.
class Image {
 public:
  Image() = default;

  // The pixels hold anything until they are written. A row's bytes fit an int, since that is what
  // the library takes as a step.
  Image(int width, int height, int channels) : width_(width), height_(height), channels_(channels) {
    const int64_t rowBytes = int64_t{width} * channels;
    if (width < 1 || height < 1 || rowBytes > std::numeric_limits<int32_t>::max() ||
        rowBytes > static_cast<int64_t>(std::numeric_limits<ptrdiff_t>::max() / height)) {
      throw Error("a picture of " + std::to_string(width) + " x " + std::to_string(height) +
                  " pixels cannot be held");
    }
    pixels_.reset(new uint8_t[size()]);
  }

  int width() const { return width_; }
  int height() const { return height_; }
  int channels() const { return channels_; }
  size_t rowBytes() const { return static_cast<size_t>(width_) * channels_; }
  size_t size() const { return rowBytes() * height_; }

  uint8_t* row(int y) { return pixels_.get() + rowBytes() * y; }
  const uint8_t* row(int y) const { return pixels_.get() + rowBytes() * y; }

 private:
  int width_ = 0;
  int height_ = 0;
  int channels_ = 0;
  std::unique_ptr<uint8_t[]> pixels_;
};

}  // namespace orbhost

#endif
