// Pixels of 16 bits: three samples in one word.
#ifndef ORB_HOSTS_PACKED_IMAGE_H
#define ORB_HOSTS_PACKED_IMAGE_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "hosts/image.h"

namespace orbhost {

// Blue in the lowest 5 bits, green in the next 5 or 6, then red in 5.
enum class PackedFormat { kBgr555, kBgr565 };

class PackedImage {
 public:
  // Rows have room for `roomWide` pixels, and there is room for `roomHigh` rows: a coder may write
  // beyond the picture's edges up to there.
  PackedImage(PackedFormat format, int width, int height, int roomWide, int roomHigh)
      : format_(format), width_(width), height_(height), roomWide_(roomWide) {
    checkCanBeHeld(width, roomHigh, int64_t{roomWide} * 2);
    pixels_.resize(static_cast<size_t>(roomWide) * roomHigh);
  }

  PackedFormat format() const { return format_; }
  int width() const { return width_; }
  int height() const { return height_; }
  int step() const { return roomWide_ * 2; }  // bytes from row to row

  uint16_t* row(int y) { return pixels_.data() + static_cast<size_t>(roomWide_) * y; }
  const uint16_t* row(int y) const { return pixels_.data() + static_cast<size_t>(roomWide_) * y; }

 private:
  PackedFormat format_;
  int width_;
  int height_;
  int roomWide_;
  std::vector<uint16_t> pixels_;
};

// The highest bits of any picture's samples.
PackedImage pack(const Image& image, PackedFormat format);

}  // namespace orbhost

#endif
