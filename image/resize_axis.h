// The two directions of a resize: which pixels are written, and where in the source they lie.
#ifndef ORB_IMAGE_RESIZE_AXIS_H
#define ORB_IMAGE_RESIZE_AXIS_H

#include "frame/arith.h"
#include "frame/memory_access.h"
#include "frame/precision.h"

namespace orb::ORB_BUILD {

// One direction. The middle of pixel i that is written lies at (first + i + 0.5) * scale + shift in
// the source.
struct Axis {
  Orb32s size;    // of the source image
  int64_t first;  // of the pixels that are written
  Orb32s count;
  Orb64f from;  // the limits of what the source covers of the destination
  Orb64f to;
  Orb64f scale;
  Orb64f shift;
};

// A place among the samples of the source: at sample `whole` and `part` of the way to the next.
// Outside of them `whole` is -1 or the last sample, however far outside.
struct Place {
  Orb32s whole;
  Orb64f part;
};

// Limited to `low` and `high`; what is no number becomes `high`.
inline Orb64f within(Orb64f value, Orb64f low, Orb64f high) {
  if (value > low) return value < high ? value : high;
  return value <= low ? low : high;
}

inline Orb64f middleOf(const Axis& axis, Orb32s i) {
  const Orb64f x = static_cast<Orb64f>(axis.first + i);
  return (x + 0.5) * axis.scale + axis.shift;
}

inline Place placeOf(const Axis& axis, Orb32s i) {
  const Orb64f p = middleOf(axis, i) - 0.5;
  const Orb64f whole = __builtin_floor(p);
  const Orb64f part = p - whole;
  return {static_cast<Orb32s>(within(whole, -1, axis.size - 1)), part >= 0 && part <= 1 ? part : 0};
}

inline Orb32s limitToImage(Orb32s sample, Orb32s size) {
  return limit(sample, 0, size - 1);
}

// The pixels whose taps lie within the image: from `from` to before `to`. The taps of those in
// front of them and behind them are limited to it.
struct Inner {
  Orb32s from;
  Orb32s to;
};

// The pixels that have so many samples before `whole` and behind it. `whole` never falls.
inline Inner innerOf(const Orb32s* whole, const Axis& axis, Orb32s before, Orb32s behind) {
  Inner inner = {0, axis.count};
  while (inner.from < inner.to && whole[inner.from] < before) ++inner.from;
  while (inner.to > inner.from && whole[inner.to - 1] >= axis.size - behind) --inner.to;
  return inner;
}

struct Source {
  const Orb8u* pixels;
  Orb32s step;

  const Orb8u* row(ptrdiff_t y) const { return rowAt(pixels, step, y); }
};

// The rows that are written, from their first pixel on.
struct Target {
  Orb8u* pixels;
  Orb32s step;

  Orb8u* row(ptrdiff_t y) const { return rowAt(pixels, step, y); }
};

// The caller's scratch, of which areas are taken one by one.
class Scratch {
 public:
  // `size` is the room behind the first address that is a multiple of 16.
  Scratch(Orb8u* buffer, int64_t size)
      : next_((reinterpret_cast<uintptr_t>(buffer) + 15) & ~static_cast<uintptr_t>(15)),
        left_(size) {}

  // How many values of 4 bytes can still be taken at once.
  int64_t left() const { return left_ >> 2; }

  template <class T>
  T* take(int64_t count) {
    const int64_t bytes =
        (count * static_cast<int64_t>(sizeof(T)) + 15) & ~static_cast<int64_t>(15);
    T* const area = reinterpret_cast<T*>(next_);
    next_ += static_cast<uintptr_t>(bytes);
    left_ -= bytes;
    return area;
  }

 private:
  uintptr_t next_;
  int64_t left_;
};

}  // namespace orb::ORB_BUILD

#endif
