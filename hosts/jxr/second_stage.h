// The transform of the DCs of a macroblock's blocks (ITU-T T.832).
#ifndef ORB_HOSTS_JXR_SECOND_STAGE_H
#define ORB_HOSTS_JXR_SECOND_STAGE_H

#include <cstdint>

#include "hosts/jxr/format.h"
#include "hosts/jxr/samples.h"

namespace orbhost::jxr {

// H2, the smallest operator of all transforms: on two columns and two rows. Its own inverse.
template <class Value>
void hadamard(Value& a, Value& b, Value& c, Value& d) {
  a += d;
  b -= c;
  const Value half = (a - b) >> 1;
  const Value oldC = c;
  c = half - d;
  d = half - oldC;
  a -= d;
  b += c;
}

// DC and low-pass coefficients, by their numbers, to the DCs of the blocks, which stand at every
// fourth sample; and back.
void inverseSecondStage(ColourFormat format, int channel, bool scaled, int32_t (&coefficients)[16],
                        Rows<int32_t> macroblock);
void forwardSecondStage(ColourFormat format, int channel, bool scaled,
                        Rows<const int32_t> macroblock, int32_t (&coefficients)[16]);

}  // namespace orbhost::jxr

#endif
