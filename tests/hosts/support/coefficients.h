// The coefficients that our decoder reads, in the form of the judge's.
#ifndef ORB_TESTS_HOSTS_SUPPORT_COEFFICIENTS_H
#define ORB_TESTS_HOSTS_SUPPORT_COEFFICIENTS_H

#include <gtest/gtest.h>

#include <vector>

#include "hosts/jpeg/block_decode.h"
#include "tests/hosts/support/judges.h"

namespace orbtest {

inline std::vector<Coefficients> ourCoefficients(orbhost::ByteView file, int scansTo = 0) {
  orbhost::jpeg::Coefficients all = orbhost::jpeg::decodeCoefficients(file, scansTo);
  std::vector<Coefficients> result;
  for (const orbhost::jpeg::ComponentLayout& component : all.layout.components) {
    Coefficients one = {component.blocksWide, component.blocksHigh, {}};
    const int c = static_cast<int>(result.size());
    for (int y = 0; y < one.blocksHigh; ++y) {
      for (int x = 0; x < one.blocksWide; ++x) {
        const Orb16s* const block = all.blocks.at(c, x, y).values;
        one.values.insert(one.values.end(), block, block + 64);
      }
    }
    result.push_back(std::move(one));
  }
  return result;
}

inline void expectEqual(const std::vector<Coefficients>& a, const std::vector<Coefficients>& b) {
  ASSERT_EQ(a.size(), b.size());
  for (size_t c = 0; c < a.size(); ++c) {
    EXPECT_EQ(a[c].blocksWide, b[c].blocksWide);
    EXPECT_EQ(a[c].blocksHigh, b[c].blocksHigh);
    EXPECT_TRUE(a[c].values == b[c].values) << "component " << c;
  }
}

}  // namespace orbtest

#endif
