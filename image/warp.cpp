// Perspective warp: argument checks, the transform's inverse, and the drawing by it.
#include "image/transform.h"

namespace orb::ORB_BUILD {

// Whether the transform takes the plane to less than one.
static bool isDegenerate(const Orb64f (&c)[9]) {
  const Orb64f p = c[0] * c[4], q = c[1] * c[3];
  const Orb64f d = __builtin_fabs(p) > 1e-200 ? (p - q) / p : q;
  return __builtin_fabs(d) <= 1e-10 &&
         (c[1] * c[5] - c[4] * c[2]) * c[6] - (c[5] * c[0] - c[2] * c[3]) * c[7] < 1e-10;
}

// A row of the transform or of its inverse: a x + b y + c.
struct LinearForm {
  Orb64f a, b, c;

  Orb64f at(Orb64f x, Orb64f y) const { return a * x + b * y + c; }
  Orb64f ofRow(Orb64f y) const { return b * y + c; }
};

template <Orb32s kChannels>
[[gnu::noinline]] static OrbStatus warpPerspective(const Transform& transform,
                                                   const Orb64f (*coeffs)[3]) {
  if (!transform.pSrc || !transform.pDst || !coeffs) return orbStsNullPtrErr;
  if (!transform.hasSizes()) return orbStsSizeErr;
  if (transform.srcStep < 1 || transform.dstStep < 1) return orbStsStepErr;
  if (!transform.hasMethod()) return orbStsInterpolationErr;
  Orb64f c[9];
  __builtin_memcpy(c, static_cast<const void*>(coeffs), sizeof c);
  if (isDegenerate(c) || __builtin_fabs(c[8]) <= 1e-200) return orbStsCoeffErr;
  if (!transform.beginsInSource()) return orbStsRoiOutside;
  const Box box = transform.sourceBox();
  if (isSmall(box)) return orbStsRoiSmallErr;
  const LinearForm toX = {c[0], c[1], c[2]}, toY = {c[3], c[4], c[5]}, toW = {c[6], c[7], c[8]};
  const plain::Quadrangle mapped = mapCorners(box, [&](Orb64f x, Orb64f y) {
    return Point{toX.at(x, y) / toW.at(x, y), toY.at(x, y) / toW.at(x, y)};
  });
  if (!mapped.isConvex()) return orbStsCoeffErr;

  // The adjugate: the determinant would cancel.
  const LinearForm backX = {c[4] * c[8] - c[7] * c[5], c[7] * c[2] - c[1] * c[8],
                            c[1] * c[5] - c[4] * c[2]};
  const LinearForm backY = {c[5] * c[6] - c[3] * c[8], c[8] * c[0] - c[2] * c[6],
                            c[2] * c[3] - c[5] * c[0]};
  const LinearForm backW = {c[3] * c[7] - c[4] * c[6], c[6] * c[1] - c[7] * c[0],
                            c[4] * c[0] - c[3] * c[1]};
  const bool isCubic =
      transform.method() == orbInterLagrange || transform.method() == orbInterCatmullRom;
  const Orb32s method = isCubic && transform.isSmallSource() ? orbInterLinear : transform.method();
  return drawQuadrangle<kChannels>(
      transform, method, mapped, [&](Orb32s x, Orb32s y, Orb32s count, Places& places) {
        const Orb64f xOfRow = backX.ofRow(y), yOfRow = backY.ofRow(y), wOfRow = backW.ofRow(y);
        for (Orb32s i = 0; i < count; ++i) {
          const Orb64f scale = 1 / (backW.a * (x + i) + wOfRow);
          places.x[i] = (backX.a * (x + i) + xOfRow) * scale;
          places.y[i] = (backY.a * (x + i) + yOfRow) * scale;
        }
      });
}

OrbStatus ORB_CALL orbiWarpPerspective_8u_C1R(const Orb8u* pSrc, OrbiSize srcSize, Orb32s srcStep,
                                              OrbiRect srcRoi, Orb8u* pDst, Orb32s dstStep,
                                              OrbiRect dstRoi, const Orb64f coeffs[3][3],
                                              Orb32s interpolation) {
  const DoublePrecision doubles;
  return warpPerspective<1>({pSrc, srcSize, srcStep, srcRoi, pDst, dstStep, dstRoi, interpolation},
                            coeffs);
}
OrbStatus ORB_CALL orbiWarpPerspective_8u_C3R(const Orb8u* pSrc, OrbiSize srcSize, Orb32s srcStep,
                                              OrbiRect srcRoi, Orb8u* pDst, Orb32s dstStep,
                                              OrbiRect dstRoi, const Orb64f coeffs[3][3],
                                              Orb32s interpolation) {
  const DoublePrecision doubles;
  return warpPerspective<3>({pSrc, srcSize, srcStep, srcRoi, pDst, dstStep, dstRoi, interpolation},
                            coeffs);
}
OrbStatus ORB_CALL orbiWarpPerspective_8u_C4R(const Orb8u* pSrc, OrbiSize srcSize, Orb32s srcStep,
                                              OrbiRect srcRoi, Orb8u* pDst, Orb32s dstStep,
                                              OrbiRect dstRoi, const Orb64f coeffs[3][3],
                                              Orb32s interpolation) {
  const DoublePrecision doubles;
  return warpPerspective<4>({pSrc, srcSize, srcStep, srcRoi, pDst, dstStep, dstRoi, interpolation},
                            coeffs);
}

}  // namespace orb::ORB_BUILD
