// The products of the JFIF colour equations, for every sample.
#ifndef ORB_JPEG_TABLES_COLOR_H
#define ORB_JPEG_TABLES_COLOR_H

#include <stdint.h>

#include "frame/table.h"

namespace orb {

// Which of the forward tables multiplies what for what. Cb takes blue and Cr takes red by the same
// coefficient, one half, and so from the same table.
enum OrbRgbToYcc {
  orbRedToY,
  orbGreenToY,
  orbBlueToY,
  orbRedToCb,
  orbGreenToCb,
  orbBlueToCb,
  orbRedToCr = orbBlueToCb,
  orbGreenToCr,
  orbBlueToCr,
};

// 16.16 values whose sums of three are Y, Cb and Cr. The table for blue in Y holds the rounding
// term too, and the one for the half the zero of chroma with its rounding term.
extern const OrbTable<OrbTable<int32_t, 256>, 8> orbRgbToYccTables;

// What a chroma sample adds to Y in red and in blue.
extern const OrbTable<int32_t, 256> orbCrToR;
extern const OrbTable<int32_t, 256> orbCbToB;

// What the two chroma samples add in green, 16.16: the one for Cb holds the rounding term too.
extern const OrbTable<int32_t, 256> orbCrToG;
extern const OrbTable<int32_t, 256> orbCbToG;

}  // namespace orb

#endif
