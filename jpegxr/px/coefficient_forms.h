// The forms of a block of coefficients: its coders and its positions.
#ifndef ORB_JPEGXR_PX_COEFFICIENT_FORMS_H
#define ORB_JPEGXR_PX_COEFFICIENT_FORMS_H

#include "frame/build.h"
#include "jpegxr/vlc_records.h"

namespace orb::ORB_BUILD::plain {

// The first of the index coders and of the level coders.
struct BlockCoders {
  Orb32u index;
  Orb32u level;
};
inline BlockCoders highPassCoders(Orb32s colourClass) {
  return {kHighPassIndexCoders + (colourClass != 0 ? kCodersOfClass : 0u), kHighPassLevelCoders};
}
inline BlockCoders lowPassCoders(Orb32s colourClass) {
  return {kLowPassIndexCoders + (colourClass != 0 ? kCodersOfClass : 0u), kLowPassLevelCoders};
}

// A block without its DC, and the lists of the low-pass coefficients of both chroma planes.
struct WholeBlock {
  static constexpr Orb32s kFirst = 1;
  static constexpr Orb32s kLast = 15;
};
struct List422 {
  static constexpr Orb32s kFirst = 0;
  static constexpr Orb32s kLast = 13;
};
struct List420 {
  static constexpr Orb32s kFirst = 0;
  static constexpr Orb32s kLast = 5;
};

// The last level that can be coded: behind an escape of 29 bits.
constexpr Orb32u kLargestLevel = (1u << 30) + 1;

}  // namespace orb::ORB_BUILD::plain

#endif
