// A channel's transform as a whole: blocks, and the filters between them.
#ifndef ORB_HOSTS_JXR_STAGES_H
#define ORB_HOSTS_JXR_STAGES_H

#include "hosts/jxr/headers.h"
#include "hosts/jxr/samples.h"

namespace orbhost::jxr {

// Throws an Error if the filters cannot be applied to the picture's tiles.
void checkOverlap(const ImageHeader& image, ColourFormat format);

// Samples to the coefficients of blocks; their DCs are ready for the second stage.
void forwardFirstStage(const ImageHeader& image, ColourFormat format, int channel, Plane& plane);

// From what the second stage has left to samples.
void inverseFirstStage(const ImageHeader& image, ColourFormat format, int channel, Plane& plane);

}  // namespace orbhost::jxr

#endif
