// Cubics over vectors of four doubles: four columns of one channel, or four channels of one column.
#ifndef ORB_IMAGE_SIMD_INTERPOLATION_H
#define ORB_IMAGE_SIMD_INTERPOLATION_H

#include "frame/vec.h"
#include "image/px/interpolation.h"

namespace orb::ORB_BUILD::simd {

inline Orb32u loadFour(const Orb8u* p) {
  return load(reinterpret_cast<const Orb32u*>(p));
}

// The pixel of a column, whose four are neighbours: one of three bytes is read with the one behind
// it, and the last with the one before it.
template <Orb32s kChannels>
inline Orb32u pixelOf(const Orb8u* row, Orb32s column) {
  const Orb8u* pixel = row + column * kChannels;
  if (kChannels == 4 || column < 3) return loadFour(pixel);
  return loadFour(pixel - 1) >> 8;
}

template <class Taps>
struct Cubic {
  template <Orb32s kChannels>
  static void sample(const SourceImage& source, Orb64f x, Orb64f y, Orb8u* dst) {
    const Taps across(x, source.size.width), down(y, source.size.height);
    if (!across.areInARow()) {
      return plain::Cubic<Taps>::template sample<kChannels>(source, x, y, dst);
    }
    const Orb8u* rows[4];
    F64 weights[4];
    for (Orb32s j = 0; j < 4; ++j) {
      rows[j] = source.pixel<kChannels>(across.pixel(0), down.pixel(j));
      weights[j] = splatF64(down.weight[j]);
    }
    const auto ofColumns = [&](auto bytesOf) {
      return weights[0] * widen8u(bytesOf(rows[0])) + weights[1] * widen8u(bytesOf(rows[1])) +
             weights[2] * widen8u(bytesOf(rows[2])) + weights[3] * widen8u(bytesOf(rows[3]));
    };
    if (kChannels == 1) {
      const F64 columns = ofColumns([](const Orb8u* row) { return loadFour(row); });
      dst[0] = plain::toNearest(sumOfLanes(loadF64(across.weight) * columns));
      return;
    }
    const auto ofColumn = [&](Orb32s i) {
      return splatF64(across.weight[i]) *
             ofColumns([=](const Orb8u* row) { return pixelOf<kChannels>(row, i); });
    };
    const F64 sums = (ofColumn(0) + ofColumn(2)) + (ofColumn(1) + ofColumn(3));
    const Orb32u bytes = truncate8u(limited(sums, splatF64(0), splatF64(255)) + splatF64(0.5));
    for (Orb32s k = 0; k < kChannels; ++k) dst[k] = static_cast<Orb8u>(bytes >> (8 * k));
  }
};

template <Orb32s kChannels>
inline plain::SampleRun sampleRunOf(Orb32s method) {
  switch (method) {
    case orbInterLagrange:
      return plain::sampleRun<Cubic<plain::LagrangeTaps>, kChannels>;
    case orbInterCatmullRom:
      return plain::sampleRun<Cubic<plain::CatmullRomTaps>, kChannels>;
    default:
      return plain::sampleRunOf<kChannels>(method);
  }
}

}  // namespace orb::ORB_BUILD::simd

#endif
