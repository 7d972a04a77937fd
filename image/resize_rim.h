// The rim around a resized rectangle: pixels that the source covers in part.
#ifndef ORB_IMAGE_RESIZE_RIM_H
#define ORB_IMAGE_RESIZE_RIM_H

#include "image/px/resize_taps.h"
#include "image/resize_axis.h"

namespace orb::ORB_BUILD {

// How far the source covers the pixel in front of those that are written, and the one behind them:
// 0 where there is no rim.
struct Rim {
  Orb64f front;
  Orb64f behind;
};

inline Rim rimOf(const Axis& axis) {
  constexpr Orb64f kNothing = 1e-10;
  const Orb64f front = axis.from - __builtin_floor(axis.from);
  const Orb64f behind = axis.to - __builtin_floor(axis.to);
  return {front > kNothing ? 1 - front : 0, behind + kNothing >= 1 ? 0 : behind};
}

// A pixel of the rim by the nearest pixel inside.
inline void rimPixel(bool blends, Orb64f coverage, const Orb8u* inside, Orb8u* pixel,
                     int channels) {
  if (coverage == 0) return;
  for (int c = 0; c < channels; ++c) {
    const Orb64f old = blends ? pixel[c] : 0;
    pixel[c] = saturate8u(static_cast<Orb32s>(old + (inside[c] - old) * coverage + 0.5000001));
  }
}

[[gnu::noinline]] inline void drawRim(const Target& target, const Axis& x, const Axis& y,
                                      bool blends, int channels) {
  const DoublePrecision precision;
  const Rim columns = rimOf(x);
  const Rim rows = rimOf(y);
  const auto pixelAt = [&](Orb32s column, Orb32s row) {
    return target.row(row) + static_cast<ptrdiff_t>(column) * channels;
  };
  const auto drawRow = [&](Orb32s row, Orb32s inside, Orb64f coverage) {
    rimPixel(blends, coverage * columns.front, pixelAt(0, inside), pixelAt(-1, row), channels);
    for (Orb32s i = 0; i < x.count; ++i) {
      rimPixel(blends, coverage, pixelAt(i, inside), pixelAt(i, row), channels);
    }
    rimPixel(blends, coverage * columns.behind, pixelAt(x.count - 1, inside), pixelAt(x.count, row),
             channels);
  };
  drawRow(-1, 0, rows.front);
  drawRow(y.count, y.count - 1, rows.behind);
  for (Orb32s i = 0; i < y.count; ++i) {
    rimPixel(blends, columns.front, pixelAt(0, i), pixelAt(-1, i), channels);
    rimPixel(blends, columns.behind, pixelAt(x.count - 1, i), pixelAt(x.count, i), channels);
  }
}

}  // namespace orb::ORB_BUILD

#endif
