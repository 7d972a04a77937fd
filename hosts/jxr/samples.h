// Planes of samples and coefficients.
#ifndef ORB_HOSTS_JXR_SAMPLES_H
#define ORB_HOSTS_JXR_SAMPLES_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
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
    const size_t samples = static_cast<size_t>(width) * static_cast<size_t>(height);
    samples_.reset(static_cast<int32_t*>(std::calloc(samples, sizeof(int32_t))));
    if (!samples_) throw std::bad_alloc();
  }

  int width() const { return width_; }
  int height() const { return height_; }
  Rows<int32_t> rows() { return {samples_.get(), width_}; }
  Rows<const int32_t> rows() const { return {samples_.get(), width_}; }

 private:
  struct Free {
    void operator()(int32_t* samples) const { std::free(samples); }
  };

  int width_;
  int height_;
  std::unique_ptr<int32_t[], Free> samples_;  // zeros that cost nothing before they are used
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
