// Floats in tests: random ones, and what counts as the same result.
#ifndef ORB_TESTS_JPEG2K_FLOATS_H
#define ORB_TESTS_JPEG2K_FLOATS_H

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>

#include "orb90legacy/types.h"
#include "tests/support/random.h"

namespace orbtest {

// Of either sign and of magnitudes from tiny to large.
inline Orb32f anyFloat(Random& random) {
  const int mantissa = random.between(-(1 << 24), 1 << 24);
  return std::ldexp(static_cast<Orb32f>(mantissa), random.between(-34, -8));
}

// Whether two results differ by no more than `ulps` of floats as large as `scale`.
inline testing::AssertionResult near(Orb32f actual, double expected, int ulps, double scale = 0) {
  const double magnitude = std::max({std::fabs(expected), scale, 1e-30});
  const double ulp = std::ldexp(1.0, std::ilogb(magnitude) - 23);
  if (std::fabs(actual - expected) <= ulps * ulp) return testing::AssertionSuccess();
  return testing::AssertionFailure() << actual << " and not " << expected;
}

}  // namespace orbtest

#endif
