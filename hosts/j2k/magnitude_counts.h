// How the coefficients of a picture are distributed: what its rate or its error at a step may be.
#ifndef ORB_HOSTS_J2K_MAGNITUDE_COUNTS_H
#define ORB_HOSTS_J2K_MAGNITUDE_COUNTS_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace orbhost::j2k {

class MagnitudeCounts {
 public:
  // Coefficients, and what a 1 is in the picture.
  void add(const float* coefficients, int count, float norm);

  // Of a quantiser that gives coefficients below a threshold up: with which threshold so many bits
  // are about enough for the others, or the sum of squared errors is about so large. 0 if with any.
  double thresholdOfBits(double bits) const;
  double thresholdOfError(double squares) const;

 private:
  // Of magnitudes by their exponents and the first bits of their fractions.
  std::array<uint64_t, 512> counts_ = {};
};

}  // namespace orbhost::j2k

#endif
