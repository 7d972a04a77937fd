// Morphology, plain: extrema of columns move along a row in a ring of three.
#ifndef ORB_IMAGE_PX_MORPHOLOGY_H
#define ORB_IMAGE_PX_MORPHOLOGY_H

#include "frame/build.h"

namespace orb::ORB_BUILD::plain {

struct Largest {
  static Orb8u of(Orb8u a, Orb8u b) { return a > b ? a : b; }
};
struct Smallest {
  static Orb8u of(Orb8u a, Orb8u b) { return a < b ? a : b; }
};

// The extremum around each of `width` pixels of the row `middle`; columns -1 and `width` are read.
template <class Extremum>
inline void orbMorphRow(const Orb8u* above, const Orb8u* middle, const Orb8u* below, Orb8u* dst,
                        Orb32s width) {
  const auto ofColumn = [&](Orb32s x) {
    return Extremum::of(Extremum::of(above[x], middle[x]), below[x]);
  };
  Orb8u left = ofColumn(-1), here = ofColumn(0);
  for (Orb32s x = 0; x < width; ++x) {
    const Orb8u right = ofColumn(x + 1);
    dst[x] = Extremum::of(Extremum::of(left, here), right);
    left = here;
    here = right;
  }
}

inline void orbDilateRow(const Orb8u* above, const Orb8u* middle, const Orb8u* below, Orb8u* dst,
                         Orb32s width) {
  orbMorphRow<Largest>(above, middle, below, dst, width);
}
inline void orbErodeRow(const Orb8u* above, const Orb8u* middle, const Orb8u* below, Orb8u* dst,
                        Orb32s width) {
  orbMorphRow<Smallest>(above, middle, below, dst, width);
}

}  // namespace orb::ORB_BUILD::plain

#endif
