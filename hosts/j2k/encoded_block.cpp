#include "hosts/j2k/encoded_block.h"

#include <algorithm>

namespace orbhost::j2k {

double errorOfChosen(const EncodedBlock& block) {
  if (block.passes.empty()) return block.errorLeft;
  const double taken = block.chosen == 0 ? 0 : block.passes[block.chosen - 1].errorLess;
  return block.errorLeft + block.passes.back().errorLess - taken;
}

int passesWorth(const EncodedBlock& block, double slope) {
  const auto behind =
      std::partition_point(block.cuts.begin(), block.cuts.end(),
                           [slope](const EncodedBlock::Cut& cut) { return cut.slope >= slope; });
  return behind == block.cuts.begin() ? 0 : behind[-1].passes;
}

void findCuts(EncodedBlock& block, bool onlyAtSegmentEnds) {
  const auto passOf = [&](int passes) {
    return passes == 0 ? EncodedBlock::Pass{0, 0, 0} : block.passes[passes - 1];
  };
  block.cuts.clear();
  for (int passes = 1; passes <= static_cast<int>(block.passes.size()); ++passes) {
    const EncodedBlock::Pass& pass = block.passes[passes - 1];
    if (onlyAtSegmentEnds && block.segments[pass.segment].passEnd != passes) continue;
    // A cut that is worth less than what follows it is none.
    for (;;) {
      const EncodedBlock::Pass before = passOf(block.cuts.empty() ? 0 : block.cuts.back().passes);
      const double gain = pass.errorLess - before.errorLess;
      if (gain <= 0) break;
      const double slope = gain / std::max(pass.length - before.length, 1);
      if (block.cuts.empty() || slope < block.cuts.back().slope) {
        block.cuts.push_back({passes, slope});
        break;
      }
      block.cuts.pop_back();
    }
  }
}

}  // namespace orbhost::j2k
