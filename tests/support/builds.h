// Running a test on every build that this machine can run.
//
//   ORB_MEANING(orbiAdd128_JPEG_16s8u_C1R, LimitsToBytes) {
//       EXPECT_EQ(ORB(orbiAdd128_JPEG_16s8u_C1R)(...), orbStsNoErr);
//   }
//
// is one test that runs its text for each build, with ORB(name) standing for that build's body of
// the export. ORB_AGREEMENT(name) { ... } runs for each build but px; there PX(name) stands for the
// reference, and `random` is a generator with a seed of the test's own.
//
// Both note that the export has a test of that kind; tests/frame/coverage_test.cpp reads the notes.
#ifndef ORB_TESTS_SUPPORT_BUILDS_H
#define ORB_TESTS_SUPPORT_BUILDS_H

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "frame/dispatch.h"
#include "tests/support/random.h"
#include "tests/support/runnable_builds.h"

namespace orbtest {

// The exports that have a test of each kind.
inline std::set<std::string>& testedMeanings() {
  static std::set<std::string> names;
  return names;
}
inline std::set<std::string>& testedAgreements() {
  static std::set<std::string> names;
  return names;
}

template <class Body>
void onEachBuild(size_t first, Body body) {
  const std::vector<TestBuild>& builds = runnableBuilds();
  for (size_t i = first; i < builds.size(); ++i) {
    SCOPED_TRACE(std::string("build ") + builds[i].tag);
    body(builds[i]);
    if (testing::Test::HasFailure()) return;
  }
}

}  // namespace orbtest

// The body of an export in the build under test, and in the reference.
#define ORB(name) (::orbRow_##name.body[build.index])
#define PX(name) (::orbRow_##name.body[::orb::kPx])

#define ORB_MEANING(exportName, caseName)                                 \
  static void exportName##_##caseName(const ::orbtest::TestBuild& build); \
  [[maybe_unused]] static const bool exportName##_##caseName##_noted =    \
      ::orbtest::testedMeanings().insert(#exportName).second;             \
  TEST(exportName, caseName) {                                            \
    ::orbtest::onEachBuild(0, exportName##_##caseName);                   \
  }                                                                       \
  static void exportName##_##caseName([[maybe_unused]] const ::orbtest::TestBuild& build)

#define ORB_AGREEMENT(exportName)                                                        \
  static void exportName##_Agreement(const ::orbtest::TestBuild& build,                  \
                                     ::orbtest::Random& random);                         \
  [[maybe_unused]] static const bool exportName##_Agreement_noted =                      \
      ::orbtest::testedAgreements().insert(#exportName).second;                          \
  TEST(exportName, Agreement) {                                                          \
    ::orbtest::onEachBuild(1, [](const ::orbtest::TestBuild& build) {                    \
      ::orbtest::Random random(#exportName);                                             \
      exportName##_Agreement(build, random);                                             \
    });                                                                                  \
  }                                                                                      \
  static void exportName##_Agreement([[maybe_unused]] const ::orbtest::TestBuild& build, \
                                     [[maybe_unused]] ::orbtest::Random& random)

#endif
