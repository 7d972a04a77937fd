// A channel's transform as a whole: blocks, and the filters between them.
#ifndef ORB_HOSTS_JXR_STAGES_H
#define ORB_HOSTS_JXR_STAGES_H

#include "hosts/jxr/headers.h"
#include "hosts/jxr/samples.h"

namespace orbhost::jxr {

// Throws an Error if the filters cannot be applied to the picture's tiles.
void checkOverlap(const ImageHeader& image, ColourFormat format);

// Whether a macroblock's blocks are transformed by themselves, one after the other: the second
// filter stands between the blocks and their second stage, and wants all of them.
inline bool goesByMacroblocks(const ImageHeader& image) {
  return image.overlap < 2;
}

// The blocks of a macroblock, in place.
void forwardBlocks(ColourFormat format, int channel, Rows<int32_t> macroblock);
void inverseBlocks(ColourFormat format, int channel, Rows<int32_t> macroblock);

// What comes before the second stage: filters, and blocks if they do not go by macroblocks.
void forwardFirstStage(const ImageHeader& image, ColourFormat format, int channel, Plane& plane);

// What comes after it.
void inverseFirstStage(const ImageHeader& image, ColourFormat format, int channel, Plane& plane);

}  // namespace orbhost::jxr

#endif
