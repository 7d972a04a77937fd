// The overlap filters, which smooth the borders of blocks (ITU-T T.832).
#ifndef ORB_HOSTS_JXR_OVERLAP_H
#define ORB_HOSTS_JXR_OVERLAP_H

#include <cstddef>
#include <cstdint>

namespace orbhost::jxr {

// What is filtered as one: samples, or the DCs of blocks, which stand apart.
struct OverlapRegion {
  int32_t* first;
  ptrdiff_t across;  // samples from one to the next
  ptrdiff_t down;
  int width;
  int height;
};

// A decoder's filter is the inverse one.
enum class Sense { kForward, kInverse };

// At the corners of squares of 4 x 4. Width and height are multiples of 4.
void filterSquaresOf4(Sense sense, const OverlapRegion& region);

// At the corners of squares of 2 x 2, for the DCs of halved chroma. Width and height are even, and
// the width is above 2.
void filterSquaresOf2(Sense sense, const OverlapRegion& region);

}  // namespace orbhost::jxr

#endif
