// Morphology over vectors of bytes.
#ifndef ORB_IMAGE_SIMD_MORPHOLOGY_H
#define ORB_IMAGE_SIMD_MORPHOLOGY_H

#include "frame/vec.h"
#include "image/px/morphology.h"

namespace orb::ORB_BUILD::simd {

// The row is as long as a vector at least. The last vector ends with it, and may redo what the one
// before it did.
template <class Extremum>
inline void orbMorphRow(const Orb8u* above, const Orb8u* middle, const Orb8u* below, Orb8u* dst,
                        Orb32s width, Extremum extremum) {
  const auto ofColumns = [=](Orb32s x) {
    return extremum(extremum(loadU8(above + x), loadU8(middle + x)), loadU8(below + x));
  };
  const auto ofVector = [=](Orb32s x) {
    storeU8(dst + x, extremum(extremum(ofColumns(x - 1), ofColumns(x)), ofColumns(x + 1)));
  };
  for (Orb32s x = 0; x <= width - kU8Lanes; x += kU8Lanes) ofVector(x);
  if (width % kU8Lanes != 0) ofVector(width - kU8Lanes);
}

inline void orbDilateRow(const Orb8u* above, const Orb8u* middle, const Orb8u* below, Orb8u* dst,
                         Orb32s width) {
  if (width < kU8Lanes) return plain::orbDilateRow(above, middle, below, dst, width);
  orbMorphRow(above, middle, below, dst, width, [](U8 a, U8 b) { return largest(a, b); });
}
inline void orbErodeRow(const Orb8u* above, const Orb8u* middle, const Orb8u* below, Orb8u* dst,
                        Orb32s width) {
  if (width < kU8Lanes) return plain::orbErodeRow(above, middle, below, dst, width);
  orbMorphRow(above, middle, below, dst, width, [](U8 a, U8 b) { return smallest(a, b); });
}

}  // namespace orb::ORB_BUILD::simd

#endif
