// Tables for the forward transform.
#ifndef ORB_HOSTS_JPEG_QUANTISATION_H
#define ORB_HOSTS_JPEG_QUANTISATION_H

#include <array>
#include <cstdint>

#include "orb90legacy.h"

namespace orbhost::jpeg {

// The library's transform rounds a coefficient to a whole number before it is quantised. With an
// even divisor, one number in as many then lies just in the middle between two steps, and could
// have come from either side of it. By the library's own table those would all go to the even step,
// most of them to 0: files would be smaller than users expect of a quality factor, and a little
// worse. So one table takes them away from 0 and another towards it, and blocks take them in turns:
// 9 to 7, which is where the steps begin in a coder that keeps eighths and rounds halves away from
// 0. The mean of a block stays with the library's table, since in flat areas taking turns would
// show.
struct ForwardTables {
  alignas(64) Orb16u away[64];
  alignas(64) Orb16u towards[64];

  const Orb16u* ofBlock(int column, int row) const {
    return (5 * column + 7 * row) % 16 < 9 ? away : towards;
  }
};

// Of divisors in zigzag order.
ForwardTables makeForwardTables(const std::array<uint8_t, 64>& divisors);

}  // namespace orbhost::jpeg

#endif
