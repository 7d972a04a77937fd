// Interpolation over vectors of four doubles: the channels of a pixel, or four columns of one
// channel.
#ifndef ORB_IMAGE_SIMD_INTERPOLATION_H
#define ORB_IMAGE_SIMD_INTERPOLATION_H

#include "frame/vec.h"
#include "image/px/interpolation.h"

namespace orb::ORB_BUILD::simd {

inline Orb32u loadFour(const Orb8u* p) {
  return load(reinterpret_cast<const Orb32u*>(p));
}

// One of several neighbours in a row, of three bytes or four. Three are read with a fourth of the
// neighbour behind, or of the one before if this is the last.
template <Orb32s kChannels>
inline Orb32u pixelOf(const Orb8u* row, Orb32s column, Orb32s lastColumn) {
  const Orb8u* pixel = row + column * kChannels;
  if (kChannels == 4 || column < lastColumn) return loadFour(pixel);
  return loadFour(pixel - 1) >> 8;
}

template <Orb32s kChannels>
inline void storePixel(Orb8u* dst, Orb32u bytes) {
  for (Orb32s k = 0; k < kChannels; ++k) dst[k] = static_cast<Orb8u>(bytes >> (8 * k));
}

// Of pixels of several channels.
struct Linear {
  template <Orb32s kChannels>
  static void sample(const SourceImage& source, Orb64f x, Orb64f y, Orb8u* dst) {
    const plain::Linear::Taps across(x, source.size.width), down(y, source.size.height);
    const Orb8u* upper = source.pixel<kChannels>(across.first, down.first);
    const Orb8u* lower = rowAt(upper, source.step, 1);
    const F64 xPart = splatF64(across.part), yPart = splatF64(down.part);
    const auto ofRow = [=](const Orb8u* row) {
      const F64 left = widen8u(pixelOf<kChannels>(row, 0, 1));
      return left + (widen8u(pixelOf<kChannels>(row, 1, 1)) - left) * xPart;
    };
    const F64 top = ofRow(upper);
    storePixel<kChannels>(dst, truncate8u(top + (ofRow(lower) - top) * yPart + splatF64(0.5)));
  }
};

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
             ofColumns([=](const Orb8u* row) { return pixelOf<kChannels>(row, i, 3); });
    };
    const F64 sums = (ofColumn(0) + ofColumn(2)) + (ofColumn(1) + ofColumn(3));
    storePixel<kChannels>(dst,
                          truncate8u(limited(sums, splatF64(0), splatF64(255)) + splatF64(0.5)));
  }
};

template <Orb32s kChannels>
inline plain::SampleRun sampleRunOf(Orb32s method) {
  switch (method) {
    case orbInterLinear:
      if (kChannels == 1) break;
      return plain::sampleRun<Linear, kChannels>;
    case orbInterLagrange:
      return plain::sampleRun<Cubic<plain::LagrangeTaps>, kChannels>;
    case orbInterCatmullRom:
      return plain::sampleRun<Cubic<plain::CatmullRomTaps>, kChannels>;
    default:
      break;
  }
  return plain::sampleRunOf<kChannels>(method);
}

}  // namespace orb::ORB_BUILD::simd

#endif
