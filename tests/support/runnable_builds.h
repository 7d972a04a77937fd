// Which builds this machine can run, for tests and benchmarks that reach behind the door.
#ifndef ORB_TESTS_SUPPORT_RUNNABLE_BUILDS_H
#define ORB_TESTS_SUPPORT_RUNNABLE_BUILDS_H

#include <vector>

namespace orbtest {

struct TestBuild {
  int index;  // into the bodies of a dispatch row
  const char* tag;
};

// px first, then every build whose instructions the processor and the operating system offer. A
// build that the library does not hold is served by the next lower one.
const std::vector<TestBuild>& runnableBuilds();

}  // namespace orbtest

#endif
