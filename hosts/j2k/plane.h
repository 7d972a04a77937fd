// Rows of samples or coefficients, with room around each row for what filters read and write there.
#ifndef ORB_HOSTS_J2K_PLANE_H
#define ORB_HOSTS_J2K_PLANE_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "hosts/image.h"

namespace orbhost::j2k {

template <class T>
class Plane {
 public:
  // Samples beside a row on either side.
  static constexpr int kMargin = 4;

  Plane() = default;
  Plane(uint32_t width, uint32_t height) { reshape(width, height); }

  // Gives it a size; samples are whatever they were, or 0 if they are new.
  void reshape(uint32_t width, uint32_t height) {
    const uint64_t rowSamples = uint64_t{width} + 2 * kMargin;
    if (height != 0 && width != 0) {
      checkCanBeHeld(static_cast<int>(width), static_cast<int>(height),
                     static_cast<int64_t>(rowSamples * sizeof(T)));
    }
    width_ = static_cast<int>(width);
    height_ = static_cast<int>(height);
    samples_.resize(static_cast<size_t>(rowSamples) * height);
  }
  // The same, and all samples are 0.
  void reset(uint32_t width, uint32_t height) {
    samples_.clear();
    reshape(width, height);
  }

  int width() const { return width_; }
  int height() const { return height_; }
  // From row to row, in samples and in bytes.
  ptrdiff_t stride() const { return width_ + 2 * kMargin; }
  int32_t step() const { return static_cast<int32_t>(stride() * sizeof(T)); }

  T* row(int y) { return samples_.data() + stride() * y + kMargin; }
  const T* row(int y) const { return samples_.data() + stride() * y + kMargin; }

 private:
  int width_ = 0;
  int height_ = 0;
  std::vector<T> samples_;
};

}  // namespace orbhost::j2k

#endif
