// Planes of samples and coefficients.
#ifndef ORB_HOSTS_JXR_SAMPLES_H
#define ORB_HOSTS_JXR_SAMPLES_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "hosts/image.h"
#include "hosts/jxr/format.h"

namespace orbhost::jxr {

// Rows of samples from some place on.
template <class Sample>
struct Rows {
  Sample* first;
  ptrdiff_t step;  // samples from row to row

  Sample& at(int x, int y) const { return first[y * step + x]; }
  Rows from(int x, int y) const { return {&at(x, y), step}; }
  int stepBytes() const { return static_cast<int>(step * static_cast<ptrdiff_t>(sizeof(Sample))); }
};

// Samples become coefficients in their places and these samples again: each block of 4 x 4 has its
// own, the DC in front.
class Plane {
 public:
  Plane(int width, int height) : width_(width), height_(height) {
    checkCanBeHeld(width, height, int64_t{width} * 4);
    samples_.resize(static_cast<size_t>(width) * static_cast<size_t>(height));
  }

  int width() const { return width_; }
  int height() const { return height_; }
  Rows<int32_t> rows() { return {samples_.data(), width_}; }
  Rows<const int32_t> rows() const { return {samples_.data(), width_}; }

 private:
  int width_;
  int height_;
  std::vector<int32_t> samples_;
};

// One for each channel of a picture, filled up to whole macroblocks.
inline std::vector<Plane> makePlanes(ColourFormat format, int channels, int macroblocksWide,
                                     int macroblocksHigh) {
  std::vector<Plane> planes;
  for (int c = 0; c < channels; ++c) {
    planes.emplace_back(macroblocksWide * blocksWide(format, c) * 4,
                        macroblocksHigh * blocksHigh(format, c) * 4);
  }
  return planes;
}

}  // namespace orbhost::jxr

#endif
