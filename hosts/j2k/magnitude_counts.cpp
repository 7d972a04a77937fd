#include "hosts/j2k/magnitude_counts.h"

#include <cmath>
#include <cstring>

namespace orbhost::j2k {

namespace {

constexpr int kShift = 22;  // leaves the exponent and one bit of a float

double lowestOf(size_t bin) {
  const uint32_t bits = static_cast<uint32_t>(bin) << kShift;
  float value;
  std::memcpy(&value, &bits, sizeof(value));
  return value;
}

}  // namespace

void MagnitudeCounts::add(const float* coefficients, int count, float norm) {
  for (int i = 0; i < count; ++i) {
    const float magnitude = std::fabs(coefficients[i]) * norm;
    uint32_t bits;
    std::memcpy(&bits, &magnitude, sizeof(bits));
    ++counts_[bits >> kShift];
  }
}

double MagnitudeCounts::thresholdOfBits(double bits) const {
  constexpr double kBitsOfOne = 6;  // its place, its sign and its magnitude, in most pictures
  double sum = 0;
  for (size_t bin = counts_.size() - 1; bin > 0; --bin) {
    sum += kBitsOfOne * static_cast<double>(counts_[bin]);
    if (sum > bits) return lowestOf(bin);
  }
  return 0;
}

double MagnitudeCounts::thresholdOfError(double squares) const {
  double above = 0;
  for (const uint64_t count : counts_) above += static_cast<double>(count);
  double below = 0;
  for (size_t bin = 0; bin + 1 < counts_.size(); ++bin) {
    const double threshold = lowestOf(bin + 1);
    const double square = lowestOf(bin) * threshold;
    below += static_cast<double>(counts_[bin]) * square;
    above -= static_cast<double>(counts_[bin]);
    if (below + above * threshold * threshold / 12 > squares) return lowestOf(bin);
  }
  return 0;
}

}  // namespace orbhost::j2k
