// The checks of a function in their order: each fault by itself, and with every one that is looked
// for later.
//
//   struct Call { const Orb8u* pSrc = samples; Orb32s width = 8; };
//   expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.pSrc = nullptr; }},
//                       {orbStsSizeErr, [](Call& c) { c.width = 0; }}},
//                      good, [&](const Call& c) { return function(c.pSrc, c.width); });
#ifndef ORB_TESTS_SUPPORT_FAULTS_H
#define ORB_TESTS_SUPPORT_FAULTS_H

#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "orb90legacy/status.h"

namespace orbtest {

// Something wrong with the arguments of a call, and what the call returns for it.
template <class Call>
struct Fault {
  OrbStatus status;
  std::function<void(Call&)> spoil;
};

template <class Call, class Run>
void expectChecks(const std::vector<Fault<Call>>& faults, const Call& good, Run run) {
  for (size_t first = 0; first < faults.size(); ++first) {
    for (size_t later = first; later < faults.size(); ++later) {
      Call call = good;
      faults[later].spoil(call);
      faults[first].spoil(call);
      EXPECT_EQ(run(call), faults[first].status) << "with the faults " << first << ", " << later;
    }
  }
}

}  // namespace orbtest

#endif
