// A frame in memory as the library writes it: interleaved 4:2:2, bytes in the order Y, Cb, Y, Cr.
#ifndef ORB_HOSTS_DV_PICTURE_H
#define ORB_HOSTS_DV_PICTURE_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "hosts/bytes.h"
#include "hosts/dv/format.h"
#include "hosts/image.h"

namespace orbhost::dv {

class Picture {
 public:
  // Black.
  explicit Picture(const Format& format);

  int width() const { return width_; }
  int height() const { return height_; }
  int step() const { return 2 * width_; }
  uint8_t* at(int x, int y) { return bytes_.data() + static_cast<size_t>(step()) * y + 2 * x; }
  const uint8_t* row(int y) const { return bytes_.data() + static_cast<size_t>(step()) * y; }

 private:
  int width_;
  int height_;
  std::vector<uint8_t> bytes_;
};

// The planes Y, Cb, Cr one behind the other, with the chroma that the format codes.
Bytes planesOf(const Picture& picture, const Format& format);

// As RGB: chroma is interpolated across, and the matrix is that of BT.601, or of BT.709 in high
// definition.
Image rgbOf(const Picture& picture, const Format& format);

}  // namespace orbhost::dv

#endif
