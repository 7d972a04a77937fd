#include "hosts/j2k/band_plan.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "hosts/j2k/layout.h"

namespace orbhost::j2k {

namespace {

// One side and the middle of a symmetric filter.
using HalfFilter = std::vector<double>;

// The synthesis filters of T.800 annex F: the low one has a gain of 2 at frequency 0.
const HalfFilter& synthesisFilter(bool isReversible, bool isHigh) {
  static const HalfFilter kLow53 = {1, 0.5};
  static const HalfFilter kHigh53 = {0.75, -0.25, -0.125};
  static const HalfFilter kLow97 = {1.115087052456994, 0.5912717631142470, -0.05754352622849957,
                                    -0.09127176311424948};
  static const HalfFilter kHigh97 = {0.6029490182363579, -0.2668641184428723, -0.07822326652898785,
                                     0.01686411844287495, 0.02674875741080976};
  if (isReversible) return isHigh ? kHigh53 : kLow53;
  return isHigh ? kHigh97 : kLow97;
}

std::vector<double> wholeFilter(const HalfFilter& half) {
  std::vector<double> whole(half.rbegin(), half.rend());
  whole.insert(whole.end(), half.begin() + 1, half.end());
  return whole;
}

// The signal with a 0 behind each sample, filtered.
std::vector<double> synthesise(const std::vector<double>& signal,
                               const std::vector<double>& filter) {
  std::vector<double> result(2 * signal.size() + filter.size());
  for (size_t i = 0; i < signal.size(); ++i) {
    for (size_t k = 0; k < filter.size(); ++k) result[2 * i + k] += signal[i] * filter[k];
  }
  return result;
}

double normOf(const std::vector<double>& signal) {
  double squares = 0;
  for (const double sample : signal) squares += sample * sample;
  return std::sqrt(squares);
}

// The L2 norm of what a 1 in the low or the high band of a level becomes in a line of samples.
double lineNorm(bool isReversible, int level, bool isHigh) {
  if (level == 0) return 1;
  // From here on the shape only becomes twice as long with each level.
  constexpr int kLevelsToFollow = 8;
  const int followed = std::min(level, kLevelsToFollow);
  const std::vector<double> low = wholeFilter(synthesisFilter(isReversible, false));
  std::vector<double> signal = wholeFilter(synthesisFilter(isReversible, isHigh));
  for (int i = 1; i < followed; ++i) signal = synthesise(signal, low);
  return normOf(signal) * std::pow(2.0, 0.5 * (level - followed));
}

// The finest step of a band with a nominal range of so many bits. Magnitudes then have few enough
// bits for the weights of the library's block encoder.
constexpr int kLargestExponent = 20;

// The nearest step that a segment can say (E-3).
StepSize nearestStep(double step, int rangeBits) {
  int power = 0;  // step = fraction * 2^power, and the fraction is at least 1/2
  const double fraction = std::frexp(step, &power);
  int exponent = rangeBits - (power - 1);
  int mantissa = static_cast<int>(std::lround((2 * fraction - 1) * 2048));
  if (mantissa == 2048) {
    mantissa = 0;
    --exponent;
  }
  if (exponent > kLargestExponent) return {kLargestExponent, 0};
  if (exponent < 0) return {0, 2047};
  return {exponent, mantissa};
}

double valueOf(const StepSize& step, int rangeBits) {
  return std::ldexp(1 + step.mantissa / 2048.0, rangeBits - step.exponent);
}

}  // namespace

std::vector<BandPlan> planBands(bool isReversible, int levels, int precision, double baseStep) {
  std::vector<BandPlan> plans;
  const auto add = [&](Orientation orientation, int level) {
    const int highs = static_cast<int>(orientation);
    const double norm = lineNorm(isReversible, level, (highs & 2) != 0) *
                        lineNorm(isReversible, level, (highs & 1) != 0);
    const int rangeBits = precision + gainOf(orientation);
    if (isReversible) {
      plans.push_back({{rangeBits, 0}, 1, norm});
      return;
    }
    const StepSize code = nearestStep(baseStep / norm, rangeBits);
    plans.push_back({code, valueOf(code, rangeBits), norm});
  };
  add(Orientation::kLl, levels);
  for (int level = levels; level > 0; --level) {
    for (const Orientation o : {Orientation::kHl, Orientation::kLh, Orientation::kHh}) {
      add(o, level);
    }
  }
  return plans;
}

double componentNorm(bool isReversible, int component) {
  switch (component) {
    case 0:
      return std::sqrt(3.0);
    case 1:
      return isReversible ? normOf({-0.25, -0.25, 0.75}) : normOf({0.34413, 1.772});
    default:
      return isReversible ? normOf({-0.25, -0.25, 0.75}) : normOf({1.402, 0.71414});
  }
}

}  // namespace orbhost::j2k
