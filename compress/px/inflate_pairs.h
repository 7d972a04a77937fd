// Pairs to bytes: the second step of the route over pairs.
#ifndef ORB_COMPRESS_PX_INFLATE_PAIRS_H
#define ORB_COMPRESS_PX_INFLATE_PAIRS_H

#include "compress/px/inflate_output.h"

namespace orb::ORB_BUILD::plain {

// Stops when the room is used up with a pair, or a part of one, left; `pairs` moves. There is one
// at least.
inline OrbStatus orbExpandPairs(OrbLZ77Pair*& pairs, const OrbLZ77Pair* end, ByteOutput& output) {
  ByteOutput out = output;
  out.putPending();
  OrbLZ77Pair* at = pairs;
  for (; at != end && !out.isFull(); ++at) {
    const OrbLZ77Pair pair = load(at);
    if (pair.offset == 0) {
      out.putLiteral(pair.lengthOrLiteral);
    } else {
      out.putMatch(pair.lengthOrLiteral, pair.offset);
    }
  }
  pairs = at;
  output.at = out.at;
  return at != end || out.state.pendingLength != 0 ? orbStsDstFull : orbStsNoErr;
}

}  // namespace orb::ORB_BUILD::plain

#endif
