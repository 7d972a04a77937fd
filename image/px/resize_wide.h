// Rows of a resize by kernels of any width: across into floats, then down.
#ifndef ORB_IMAGE_PX_RESIZE_WIDE_H
#define ORB_IMAGE_PX_RESIZE_WIDE_H

#include "image/px/resize_taps.h"

namespace orb::ORB_BUILD {

// The samples that a row's pixels are made of: `count` from `first` on, with weights that begin
// `stride` floats apart.
struct WideTaps {
  Orb32s* first;
  Orb32s* count;
  Orb32f* weights;
  Orb32s stride;
};

// Rows that are held in turns: row r of the source in place r % places.
struct RowRing {
  Orb32f* rows;
  ptrdiff_t rowFloats;
  Orb32s places;

  Orb32f* row(Orb32s r) const { return rows + (r % places) * rowFloats; }
};

// Sums are taken in so many parts, which are then added up in pairs: vectors of any length come to
// the same results.
template <int kChannels>
constexpr int kSumParts = kChannels == 1 ? 8 : 2;

namespace plain {

template <int kChannels>
inline void orbWidePixel(const Orb8u* src, const Orb32f* weights, Orb32s taps, Orb32f* dst) {
  constexpr int kParts = kSumParts<kChannels>;
  Orb32f parts[kParts][kChannels] = {};
  for (ptrdiff_t k = 0; k < taps; ++k) {
    for (int c = 0; c < kChannels; ++c) {
      Orb32f& part = parts[k % kParts][c];
      part = part + weights[k] * src[k * kChannels + c];
    }
  }
  for (int half = kParts / 2; half > 0; half /= 2) {
    for (int i = 0; i < half; ++i) {
      for (int c = 0; c < kChannels; ++c) parts[i][c] = parts[i][c] + parts[i + half][c];
    }
  }
  for (int c = 0; c < kChannels; ++c) dst[c] = parts[0][c];
}

// Of a source of `size` pixels.
template <int kChannels>
inline void orbWideAcross(const Orb8u* src, const WideTaps& taps, Orb32f* dst, Orb32s width,
                          Orb32s) {
  for (ptrdiff_t x = 0; x < width; ++x) {
    orbWidePixel<kChannels>(src + static_cast<ptrdiff_t>(taps.first[x]) * kChannels,
                            taps.weights + x * taps.stride, taps.count[x], dst + x * kChannels);
  }
}

// Adds `count` weighted rows to the sums, or starts them.
inline void orbWideDown(const RowRing& ring, Orb32s first, Orb32s count, const Orb32f* weights,
                        bool isFirst, Orb32f* sums, ptrdiff_t samples) {
  for (Orb32s k = 0; k < count; ++k) {
    const Orb32f* const row = ring.row(first + k);
    const Orb32f weight = weights[k];
    const bool begins = isFirst && k == 0;
    for (ptrdiff_t i = 0; i < samples; ++i) {
      sums[i] = begins ? weight * row[i] : sums[i] + weight * row[i];
    }
  }
}

inline void orbWideBytes(const Orb32f* sums, Orb8u* dst, ptrdiff_t samples) {
  for (ptrdiff_t i = 0; i < samples; ++i) dst[i] = byteOf(sums[i]);
}

}  // namespace plain
}  // namespace orb::ORB_BUILD

#endif
