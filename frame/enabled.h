// The one question that a body may ask of the frame.
#ifndef ORB_FRAME_ENABLED_H
#define ORB_FRAME_ENABLED_H

#include <stdint.h>

namespace orb {

// Whether every feature of the mask (frame/cpu.h) is enabled for the selected build. Asked where a
// build can use more than its class promises. The answer may still be no right after the build was
// selected, so the road without the feature has to give the same result.
int32_t orbIsFeatureEnabled(uint32_t low, uint32_t high);

}  // namespace orb

#endif
