// How the bands of a component are quantised, and how much their errors weigh.
#ifndef ORB_HOSTS_J2K_BAND_PLAN_H
#define ORB_HOSTS_J2K_BAND_PLAN_H

#include <vector>

#include "hosts/j2k/parameters.h"

namespace orbhost::j2k {

struct BandPlan {
  StepSize code;  // as a QCD segment has it
  double step;    // 1 for reversible bands
  double norm;    // L2, of what a 1 in the band becomes in the component
};

// By Band::index. An error of one step in any band of irreversible ones weighs as much as
// `baseStep` in one sample, as far as a step may be so fine.
std::vector<BandPlan> planBands(bool isReversible, int levels, int precision, double baseStep);

// The L2 norm of what a 1 in a component becomes in the three of RGB, by the inverse of the RCT or
// the ICT.
double componentNorm(bool isReversible, int component);

}  // namespace orbhost::j2k

#endif
