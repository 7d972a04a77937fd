// The forward wavelet transform of a tile-component (ITU-T T.800 annex F).
#ifndef ORB_HOSTS_J2K_FORWARD_WAVELET_H
#define ORB_HOSTS_J2K_FORWARD_WAVELET_H

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

#include "hosts/image.h"
#include "orb90legacy.h"

namespace orbhost::j2k {

// A rectangle of samples with room on each side for what the filters read beyond it.
template <class Sample>
class PaddedPlane {
 public:
  static constexpr int kRoomBefore = 4;
  static constexpr int kRoomBehind = 5;

  PaddedPlane() = default;
  // The samples hold anything until they are written.
  PaddedPlane(int width, int height) : width_(width), height_(height) {
    const int64_t step = (int64_t{width} + kRoom) * static_cast<int64_t>(sizeof(Sample));
    checkCanBeHeld(width + kRoom, height + kRoom, step);
    samples_.reset(new Sample[stride() * (static_cast<size_t>(height) + kRoom)]);
  }

  int width() const { return width_; }
  int height() const { return height_; }
  Orb32s step() const { return static_cast<Orb32s>(stride() * sizeof(Sample)); }

  Sample* row(int y) { return samples_.get() + offsetOf(y); }
  const Sample* row(int y) const { return samples_.get() + offsetOf(y); }

 private:
  static constexpr int kRoom = kRoomBefore + kRoomBehind;

  size_t stride() const { return static_cast<size_t>(width_) + kRoom; }
  size_t offsetOf(int y) const {
    return stride() * static_cast<size_t>(y + kRoomBefore) + kRoomBefore;
  }

  int width_ = 0;
  int height_ = 0;
  std::unique_ptr<Sample[]> samples_;
};

template <class Sample>
struct Subbands {
  enum { kHl, kLh, kHh };

  PaddedPlane<Sample> low;                                 // LL of the last level
  std::vector<std::array<PaddedPlane<Sample>, 3>> levels;  // HL, LH, HH; that of level 1 first
};

// By the reversible 5/3 filter, if samples are integers, or the irreversible 9/7. The place is that
// of the tile-component's first sample on its own grid.
template <class Sample>
Subbands<Sample> transformForward(PaddedPlane<Sample> samples, int x, int y, int levels);

extern template Subbands<Orb32s> transformForward(PaddedPlane<Orb32s>, int, int, int);
extern template Subbands<Orb32f> transformForward(PaddedPlane<Orb32f>, int, int, int);

}  // namespace orbhost::j2k

#endif
