// Where the segments of a frame are, and where the macroblocks of each belong in the picture.
#ifndef ORB_HOSTS_DV_PLACEMENT_H
#define ORB_HOSTS_DV_PLACEMENT_H

#include <cstddef>
#include <vector>

#include "hosts/dv/format.h"

namespace orbhost::dv {

constexpr int kMacroblocksOfSegment = 5;

// The upper left pixel.
struct Place {
  int x, y;
};

struct Segment {
  size_t offset;  // in the frame's data
  int sequence;   // in its channel
  int firstDif;   // its number among the video blocks of the sequence
  Place macroblock[kMacroblocksOfSegment];
};

// All segments of a frame with pictures, in the order of the data.
std::vector<Segment> placeSegments(const Format& format);

// Of a progressive picture the data say whether they are the second frame of two, whose macroblocks
// lie elsewhere.
Place inSecondFrame(Place place);

}  // namespace orbhost::dv

#endif
