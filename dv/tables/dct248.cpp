#include "dv/tables/dct248.h"

namespace orb {
namespace {

// Outputs 0 and 4, 2 and 6, and the odd ones by the symmetry of a cosine about the middle of a row:
// of x[7 - i] the factor is that of x[i], in odd outputs with the other sign.
constexpr int32_t factor(const DVRowFactors& f, uint32_t output, uint32_t input) {
  const bool isRight = input > 3;
  const uint32_t i = isRight ? 7 - input : input;
  const int32_t even[4][4] = {
      {f.a, f.a, f.a, f.a}, {f.c, f.d, -f.d, -f.c}, {f.a, -f.a, -f.a, f.a}, {f.d, -f.c, f.c, -f.d}};
  const int32_t odd[4][4] = {{f.m[0], f.m[1], f.m[2], f.m[3]},
                             {f.m[1], -f.m[3], -f.m[0], -f.m[2]},
                             {f.m[2], -f.m[0], f.m[3], f.m[1]},
                             {f.m[3], -f.m[2], f.m[1], -f.m[0]}};
  if (output % 2 == 0) return even[output / 2][i];
  return isRight ? -odd[output / 2][i] : odd[output / 2][i];
}

constexpr OrbTable<OrbTable<int16_t, 64>, 2> matrices() {
  OrbTable<OrbTable<int16_t, 64>, 2> matrix = {};
  for (uint32_t parity = 0; parity < 2; ++parity) {
    for (uint32_t input = 0; input < 8; ++input) {
      for (uint32_t output = 0; output < 8; ++output) {
        matrix[parity][(input / 2 * 8 + output) * 2 + input % 2] =
            static_cast<int16_t>(factor(kDVRowFactors[parity], output, input));
      }
    }
  }
  return matrix;
}

}  // namespace

constexpr OrbTable<OrbTable<int16_t, 64>, 2> orbDVRowMatrix = matrices();

}  // namespace orb
