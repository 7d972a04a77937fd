// What a sample weighs by its distance, in each kernel of interpolation.
#ifndef ORB_IMAGE_PX_SAMPLE_WEIGHTS_H
#define ORB_IMAGE_PX_SAMPLE_WEIGHTS_H

#include "frame/build.h"
#include "image/tables/lanczos.h"

namespace orb::ORB_BUILD::plain {

// A cubic of four samples: the factors of t^3, t^2, t and 1 up to a distance of 1 and up to 2.
struct CubicKernel {
  Orb64f near[4];
  Orb64f far[4];
};

// The family of Mitchell and Netravali.
constexpr CubicKernel cubicOf(Orb64f b, Orb64f c) {
  return {{2 - 1.5 * b - c, -3 + 2 * b + c, 0, 1 - b / 3},
          {-b / 6 - c, b + 5 * c, -2 * b - 8 * c, 4 * b / 3 + 4 * c}};
}

constexpr CubicKernel kLagrangeKernel = {{0.5, -1, -0.5, 1}, {-1.0 / 6, 1, -11.0 / 6, 1}};
constexpr CubicKernel kBSplineKernel = cubicOf(1, 0);
constexpr CubicKernel kCatmullRomKernel = cubicOf(0, 0.5);
constexpr CubicKernel kB05C03Kernel = cubicOf(0.5, 0.3);

inline const CubicKernel& cubicKernelOf(Orb32s method) {
  switch (method) {
    case orbInterBSpline:
      return kBSplineKernel;
    case orbInterCatmullRom:
      return kCatmullRomKernel;
    case orbInterCubicB05C03:
      return kB05C03Kernel;
    default:
      return kLagrangeKernel;
  }
}

inline Orb64f cubicWeight(const CubicKernel& kernel, Orb64f distance) {
  if (!(distance < 2)) return 0;
  const Orb64f* const k = distance < 1 ? kernel.near : kernel.far;
  return ((k[0] * distance + k[1]) * distance + k[2]) * distance + k[3];
}

// By lines between the table's values.
inline Orb64f lanczosWeight(Orb64f distance) {
  if (!(distance < 3)) return 0;
  const Orb64f u = 100 * distance;
  const size_t k = static_cast<size_t>(u);
  const Orb64f left = orbLanczosTable[k];
  return left + (u - static_cast<Orb64f>(k)) * (orbLanczosTable[k + 1] - left);
}

constexpr Orb64f kPi = 3.14159265358979323846;

inline Orb64f sinc(Orb64f t) {
  return t == 0 ? 1 : __builtin_sin(kPi * t) / (kPi * t);
}

// A method's kernel without a table, and its reach.
inline Orb64f kernelWeight(Orb32s method, Orb64f distance) {
  switch (method) {
    case orbInterLinear:
      return distance < 1 ? 1 - distance : 0;
    case orbInterLanczos:
      return distance < 3 ? sinc(distance) * sinc(distance / 3) : 0;
    default:
      return cubicWeight(cubicKernelOf(method), distance);
  }
}

inline Orb32s kernelReach(Orb32s method) {
  return method == orbInterLinear ? 1 : method == orbInterLanczos ? 3 : 2;
}

}  // namespace orb::ORB_BUILD::plain

#endif
