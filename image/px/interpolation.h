// Samples between pixels. Pixel centres lie at whole numbers.
#ifndef ORB_IMAGE_PX_INTERPOLATION_H
#define ORB_IMAGE_PX_INTERPOLATION_H

#include "frame/arith.h"
#include "frame/memory_access.h"
#include "frame/precision.h"

namespace orb::ORB_BUILD {

// A whole image.
struct SourceImage {
  const Orb8u* first;
  OrbiSize size;
  Orb32s step;

  template <Orb32s kChannels>
  const Orb8u* pixel(Orb32s x, Orb32s y) const {
    return rowAt(first, step, y) + static_cast<ptrdiff_t>(x) * kChannels;
  }
};

// Where a run of destination pixels lies in the source.
struct Places {
  static constexpr Orb32s kMost = 256;
  Orb64f x[kMost], y[kMost];
};

namespace plain {

// A place on an axis of `length` pixels, held less than half a pixel beside them. Places lie
// between them but for rounding, and for transforms that fold over; what is no number goes to the
// start.
inline Orb64f held(Orb64f place, Orb32s length) {
  const Orb64f low = -0.49, high = length - 1 + 0.49;
  return !(place > low) ? low : place > high ? high : place;
}
// The pixel in front of a place; one at most a hair behind it counts.
inline Orb32s pixelBefore(Orb64f place) {
  return static_cast<Orb32s>(place + 1e-7);
}
inline Orb8u toNearest(Orb64f value) {
  if (value >= 255) return 255;
  return value <= 0 ? 0 : static_cast<Orb8u>(static_cast<Orb32s>(value + 0.5));
}

// ---- The methods: each writes a pixel of the destination.

struct Nearest {
  template <Orb32s kChannels>
  static void sample(const SourceImage& source, Orb64f x, Orb64f y, Orb8u* dst) {
    const Orb8u* src =
        source.pixel<kChannels>(static_cast<Orb32s>(x + 0.5), static_cast<Orb32s>(y + 0.5));
    for (Orb32s k = 0; k < kChannels; ++k) dst[k] = src[k];
  }
};

struct Linear {
  // The first of two pixels, and how far behind it the place is.
  struct Taps {
    Orb32s first;
    Orb64f part;

    Taps(Orb64f place, Orb32s length) : first(pixelBefore(place)) {
      if (first >= length - 1) {
        first = length - 2;
        part = 1;
      } else {
        part = place - first;
      }
    }
  };

  template <Orb32s kChannels>
  static void sample(const SourceImage& source, Orb64f x, Orb64f y, Orb8u* dst) {
    const Taps across(x, source.size.width), down(y, source.size.height);
    const Orb8u* upper = source.pixel<kChannels>(across.first, down.first);
    const Orb8u* lower = rowAt(upper, source.step, 1);
    for (Orb32s k = 0; k < kChannels; ++k) {
      const Orb64f a = upper[k], b = upper[k + kChannels];
      const Orb64f c = lower[k], d = lower[k + kChannels];
      const Orb64f top = a + (b - a) * across.part, bottom = c + (d - c) * across.part;
      dst[k] = static_cast<Orb8u>(static_cast<Orb32s>(top + (bottom - top) * down.part + 0.5));
    }
  }
};

// The cubics: four taps in each direction. Columns are summed first, then every other one of them,
// so that vectors of four come to the same.
template <class Taps>
struct Cubic {
  template <Orb32s kChannels>
  static void sample(const SourceImage& source, Orb64f x, Orb64f y, Orb8u* dst) {
    const Taps across(x, source.size.width), down(y, source.size.height);
    for (Orb32s k = 0; k < kChannels; ++k) {
      Orb64f ofColumn[4];
      for (Orb32s i = 0; i < 4; ++i) {
        Orb64f sum = 0;
        for (Orb32s j = 0; j < 4; ++j) {
          const Orb8u* pixel = source.pixel<kChannels>(across.pixel(i), down.pixel(j));
          sum += down.weight[j] * pixel[k];
        }
        ofColumn[i] = across.weight[i] * sum;
      }
      dst[k] = toNearest((ofColumn[0] + ofColumn[2]) + (ofColumn[1] + ofColumn[3]));
    }
  }
};

// The cubic through four pixels in a row, its weights in floats. Near the border those are the last
// four, and the cubic goes on beyond the two in the middle.
struct LagrangeTaps {
  Orb32s first;
  Orb64f weight[4];

  LagrangeTaps(Orb64f place, Orb32s length) : first(pixelBefore(place)) {
    first = first >= length - 2 ? length - 4 : first < 1 ? 0 : first - 1;
    const Orb32f t = stored(static_cast<Orb32f>(place - 1 - first));
    const Orb32f square = stored(t * t);
    const Orb32f cube = stored(square * t), difference = stored(cube - t);
    const Orb32f rising = stored(stored(stored(-t / 6) + 0.5f) * t);
    weight[0] = stored(stored(rising - 1 / 3.f) * t);
    weight[1] = stored(stored(stored(difference / 2) + 1) - square);
    weight[2] = stored(t + stored(stored(stored(-t / 2) + 0.5f) * square));
    weight[3] = stored(difference / 6);
  }
  Orb32s pixel(Orb32s i) const { return first + i; }
  // Whether the four are neighbours.
  bool areInARow() const { return true; }
};

// Catmull-Rom. Pixels beyond the border are those at it.
struct CatmullRomTaps {
  Orb32s first;
  Orb32s last;
  Orb64f weight[4];

  CatmullRomTaps(Orb64f place, Orb32s length) : first(pixelBefore(place) - 1), last(length - 1) {
    const Orb64f t = place - (first + 1), square = t * t, cube = square * t;
    weight[0] = -cube / 2 + square - t / 2;
    weight[1] = 3 * cube / 2 - 5 * square / 2 + 1;
    weight[2] = -3 * cube / 2 + 2 * square + t / 2;
    weight[3] = cube / 2 - square / 2;
  }
  Orb32s pixel(Orb32s i) const { return limit(first + i, 0, last); }
  bool areInARow() const { return first >= 0 && first + 3 <= last; }
};

// ---- Runs of pixels

using SampleRun = void (*)(const SourceImage& source, const Places& places, Orb8u* dst,
                           Orb32s count);

template <class Method, Orb32s kChannels>
inline void sampleRun(const SourceImage& source, const Places& places, Orb8u* dst, Orb32s count) {
  for (Orb32s i = 0; i < count; ++i) {
    const Orb64f x = held(places.x[i], source.size.width);
    const Orb64f y = held(places.y[i], source.size.height);
    Method::template sample<kChannels>(source, x, y, dst + i * kChannels);
  }
}

// By one of the four methods.
template <Orb32s kChannels>
inline SampleRun sampleRunOf(Orb32s method) {
  switch (method) {
    case orbInterNearest:
      return sampleRun<Nearest, kChannels>;
    case orbInterLinear:
      return sampleRun<Linear, kChannels>;
    case orbInterLagrange:
      return sampleRun<Cubic<LagrangeTaps>, kChannels>;
    default:
      return sampleRun<Cubic<CatmullRomTaps>, kChannels>;
  }
}

}  // namespace plain
}  // namespace orb::ORB_BUILD

#endif
