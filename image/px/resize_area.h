// Rows of a resize by the mean of areas: rows of the source are summed, then columns of the sums.
#ifndef ORB_IMAGE_PX_RESIZE_AREA_H
#define ORB_IMAGE_PX_RESIZE_AREA_H

#include "frame/arith.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD {

// Where one box ends and the next begins: behind `part` of sample `whole`.
struct BoxBoundary {
  Orb32s whole;
  Orb32f part;
};

namespace plain {

// Starts the sums of rows, or adds to them.
template <class Sum>
inline void orbSumRow(const Orb8u* row, Sum weight, bool isFirst, Sum* sums, ptrdiff_t samples) {
  for (ptrdiff_t i = 0; i < samples; ++i) {
    const Sum weighted = weight * row[i];
    sums[i] = isFirst ? weighted : sums[i] + weighted;
  }
}

// What of a boundary's sample belongs to the box in front of it and to the one behind it.
inline Orb32f partInFront(BoxBoundary boundary, Orb32f sum) {
  return boundary.part * sum;
}
inline Orb32f partBehind(BoxBoundary boundary, Orb32f sum) {
  return (1 - boundary.part) * sum;
}
// Boxes of whole samples have integer sums.
inline Orb32s partInFront(BoxBoundary, Orb32s) {
  return 0;
}
inline Orb32s partBehind(BoxBoundary, Orb32s sum) {
  return sum;
}

// The sum of a box of columns whose sums lie `distance` apart.
template <class Sum>
inline Sum boxSum(const Sum* sums, ptrdiff_t distance, BoxBoundary left, BoxBoundary right) {
  Sum sum = partBehind(left, sums[left.whole * distance]);
  for (ptrdiff_t i = left.whole + 1; i < right.whole; ++i) sum += sums[i * distance];
  if (right.part > 0) sum += partInFront(right, sums[right.whole * distance]);
  return sum;
}

// The sums of boxes take the place of those of their columns, from the front: a box is at least as
// wide as one.
template <int kChannels, class Sum>
inline void orbSumColumns(Sum* sums, const BoxBoundary* boundaries, ptrdiff_t boxes) {
  for (ptrdiff_t i = 0; i < boxes; ++i) {
    for (int c = 0; c < kChannels; ++c) {
      sums[i * kChannels + c] = boxSum(sums + c, kChannels, boundaries[i], boundaries[i + 1]);
    }
  }
}

// Means of four pixels each.
template <int kChannels>
inline void orbHalveRow(const Orb8u* upper, const Orb8u* lower, Orb8u* dst, ptrdiff_t width) {
  for (ptrdiff_t x = 0; x < width; ++x) {
    for (int c = 0; c < kChannels; ++c) {
      const ptrdiff_t i = 2 * x * kChannels + c;
      const Orb32s sum = upper[i] + upper[i + kChannels] + lower[i] + lower[i + kChannels];
      dst[x * kChannels + c] = static_cast<Orb8u>((sum + 2) >> 2);
    }
  }
}

inline Orb8u meanOf(Orb64f sum, Orb64f scale) {
  const Orb64f mean = sum * scale + 0.5;
  return mean < 256 ? static_cast<Orb8u>(static_cast<Orb32s>(mean)) : 255;
}

template <class Sum>
inline void orbMeans(const Sum* sums, Orb64f scale, Orb8u* dst, ptrdiff_t samples) {
  for (ptrdiff_t i = 0; i < samples; ++i) dst[i] = meanOf(sums[i], scale);
}

}  // namespace plain
}  // namespace orb::ORB_BUILD

#endif
