// The cosines of a row in the forward 2-4-8 transform.
#ifndef ORB_DV_TABLES_DCT248_H
#define ORB_DV_TABLES_DCT248_H

#include <stdint.h>

#include "frame/table.h"

namespace orb {

// In units of 1/65536: `a` for outputs 0 and 4, `c` and `d` for 2 and 6, `m` for the odd ones.
struct DVRowFactors {
  int32_t a, c, d, m[4];
};

// Of even and of odd rows. The latter have sqrt(2) cos(pi / 8) in all of them, which the transform
// of the columns leaves out of its odd outputs.
constexpr DVRowFactors kDVRowFactors[2] = {
    {8192, 10703, 4433, {11363, 9633, 6436, 2260}},
    {10703, 13985, 5793, {14846, 12586, 8410, 2953}},
};

// The same as matrices, for sums of products of two neighbours: the factors of x[2 i] and x[2 i +
// 1] in output k are at (i * 8 + k) * 2 and behind that.
extern const OrbTable<OrbTable<int16_t, 64>, 2> orbDVRowMatrix;

}  // namespace orb

#endif
