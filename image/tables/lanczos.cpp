#include "image/tables/lanczos.h"

namespace orb {
namespace {

constexpr double kPi = 3.14159265358979323846;

// By its series, which has converged for angles up to 3 pi long before the last term.
constexpr double sine(double angle) {
  double term = angle;
  double sum = angle;
  for (int n = 2; n < 44; n += 2) {
    term *= -angle * angle / (n * (n + 1));
    sum += term;
  }
  return sum;
}

constexpr double sinc(double t) {
  return t == 0 ? 1 : sine(kPi * t) / (kPi * t);
}

constexpr OrbTable<float, 302> lanczos() {
  OrbTable<float, 302> table = {};
  for (uint32_t k = 0; k < 302; ++k) {
    const double t = k / 100.0;
    table[k] = static_cast<float>(sinc(t) * sinc(t / 3));
  }
  return table;
}

}  // namespace

constexpr OrbTable<float, 302> orbLanczosTable = lanczos();

}  // namespace orb
