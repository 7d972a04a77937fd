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

// Throws an Error if rows of so many bytes, and so many of them, are no picture or too large a one.
// A row's bytes fit an int, since that is what the library takes as a step.
inline void checkCanBeHeld(int width, int height, int64_t rowBytes) {
  if (width < 1 || height < 1 || rowBytes > std::numeric_limits<int32_t>::max() ||
      rowBytes > static_cast<int64_t>(std::numeric_limits<ptrdiff_t>::max() / height)) {
    throw Error("a picture of " + std::to_string(width) + " x " + std::to_string(height) +
                " pixels cannot be held");
  }
}

// Interleaved samples, row after row without gaps: one channel is grey, three are RGB, four are
// CMYK, amounts of ink. Samples go from 0 to the picture's maximum, and are bytes if that is at
// most 255, else words of 16 bits.
class Image {
 public:
  Image() = default;

  // The pixels hold anything until they are written.
  Image(int width, int height, int channels, int maximum = 255)
      : width_(width), height_(height), channels_(channels), maximum_(maximum) {
    checkCanBeHeld(width, height, int64_t{width} * channels * (isWide() ? 2 : 1));
    pixels_.reset(new uint16_t[size() / 2 + size() % 2]);
  }

  int width() const { return width_; }
  int height() const { return height_; }
  int channels() const { return channels_; }
  int maximum() const { return maximum_; }
  bool isWide() const { return maximum_ > 255; }
  size_t rowSamples() const { return static_cast<size_t>(width_) * channels_; }
  size_t rowBytes() const { return rowSamples() * (isWide() ? 2 : 1); }
  size_t size() const { return rowBytes() * height_; }

  // A row of bytes.
  uint8_t* row(int y) { return reinterpret_cast<uint8_t*>(pixels_.get()) + rowBytes() * y; }
  const uint8_t* row(int y) const {
    return reinterpret_cast<const uint8_t*>(pixels_.get()) + rowBytes() * y;
  }
  // A row of words.
  uint16_t* wideRow(int y) { return pixels_.get() + rowSamples() * y; }
  const uint16_t* wideRow(int y) const { return pixels_.get() + rowSamples() * y; }

  // Calls `body` with a row as it is stored.
  template <class Body>
  auto withRow(int y, Body body) {
    return isWide() ? body(wideRow(y)) : body(row(y));
  }
  template <class Body>
  auto withRow(int y, Body body) const {
    return isWide() ? body(wideRow(y)) : body(row(y));
  }

 private:
  int width_ = 0;
  int height_ = 0;
  int channels_ = 0;
  int maximum_ = 255;
  std::unique_ptr<uint16_t[]> pixels_;
};

}  // namespace orbhost

#endif
