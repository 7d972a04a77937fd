#include "jpeg2k/tables/distortion.h"

namespace orb {
namespace {

// Squared error in units of 1/8192 of the plane's squared step, of a value and its reconstruction
// in 64ths of the step.
constexpr int32_t squaredError(int32_t value, int32_t reconstructed) {
  return 2 * (value - reconstructed) * (value - reconstructed);
}

constexpr OrbTable<OrbTable<int32_t, 64>, 2> significance() {
  OrbTable<OrbTable<int32_t, 64>, 2> gain = {};
  for (int32_t below = 0; below < 64; ++below) {
    const int32_t value = 64 + below;
    const int32_t before = squaredError(value, 0);
    gain[0][static_cast<uint32_t>(below)] = before - squaredError(value, 96);
    gain[1][static_cast<uint32_t>(below)] = before;
  }
  return gain;
}

constexpr OrbTable<OrbTable<int32_t, 128>, 2> refinement() {
  OrbTable<OrbTable<int32_t, 128>, 2> gain = {};
  for (int32_t value = 0; value < 128; ++value) {
    const int32_t before = squaredError(value, 64);
    gain[0][static_cast<uint32_t>(value)] = before - squaredError(value, value < 64 ? 32 : 96);
    gain[1][static_cast<uint32_t>(value)] = before;
  }
  return gain;
}

}  // namespace

constexpr OrbTable<OrbTable<int32_t, 64>, 2> orbSignificanceGain = significance();
constexpr OrbTable<OrbTable<int32_t, 128>, 2> orbRefinementGain = refinement();

}  // namespace orb
