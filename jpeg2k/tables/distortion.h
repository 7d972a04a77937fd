// By how much a coding pass decreases the squared error of a sample (ITU-T T.800 J.14), for
// rate-distortion optimisation.
#ifndef ORB_JPEG2K_TABLES_DISTORTION_H
#define ORB_JPEG2K_TABLES_DISTORTION_H

#include <stdint.h>

#include "frame/table.h"

namespace orb {

// In units of 1/8192 of the squared step of the bit-plane that is coded. A decoder knows a sample's
// bits down to some plane and puts it in the middle of what is left open; table 0 takes the new
// value for such a midpoint too, table 1 for the sample itself, as it is when the plane is the last
// one and nothing is left open.

// For a sample that becomes significant, by the six magnitude bits below the plane.
extern const OrbTable<OrbTable<int32_t, 64>, 2> orbSignificanceGain;

// For a sample that is refined, by the plane's bit and the six below it. May be negative.
extern const OrbTable<OrbTable<int32_t, 128>, 2> orbRefinementGain;

}  // namespace orb

#endif
