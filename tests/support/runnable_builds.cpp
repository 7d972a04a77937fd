#include "tests/support/runnable_builds.h"

#include <cstdint>
#include <iterator>

#include "frame/cpu.h"

namespace orbtest {
namespace {

// What the code of each build may use, in the order of the rows.
struct Requirement {
  const char* tag;
  uint32_t features;
};
constexpr Requirement kRequirements[] = {
    {"px", 0},
    {"w7", orb::kSse2},
    {"v8", orb::kSse2 | orb::kSsse3},
    {"s8", orb::kSse2 | orb::kSsse3 | orb::kMovbe},
    {"p8", orb::kSse2 | orb::kSsse3 | orb::kSse41},
    {"g9", orb::kSse41 | orb::kAvx | orb::kAvxState},
    {"h9", orb::kAvx | orb::kAvxState | orb::kAvx2Class},
};
static_assert(std::size(kRequirements) == orb::kBuildCount);

}  // namespace

const std::vector<TestBuild>& runnableBuilds() {
  static const std::vector<TestBuild> builds = [] {
    orb::HostCpu cpu;
    const uint32_t features = cpu.hasCpuid() ? orb::featureWord(cpu) : 0;
    std::vector<TestBuild> found;
    for (int i = 0; i < orb::kBuildCount; ++i) {
      const uint32_t needed = kRequirements[i].features;
      if ((features & needed) == needed) found.push_back({i, kRequirements[i].tag});
    }
    return found;
  }();
  return builds;
}

}  // namespace orbtest
