// Chroma sampling: argument checks, then one call into a kernel for each row.
#include "jpeg/px/sampling.h"

namespace orb::ORB_BUILD {

static bool isEmpty(OrbiSize size) {
  return size.width < 1 || size.height < 1;
}

static OrbStatus checkPlanes(const void* pSrc, Orb32s srcStep, OrbiSize srcRoiSize,
                             const void* pDst, Orb32s dstStep, OrbiSize dstRoiSize) {
  if (!pSrc) return orbStsNullPtrErr;
  if (srcStep < 1) return orbStsStepErr;
  if (isEmpty(srcRoiSize)) return orbStsSizeErr;
  if (!pDst) return orbStsNullPtrErr;
  if (dstStep < 1) return orbStsStepErr;
  if (isEmpty(dstRoiSize)) return orbStsSizeErr;
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiSampleDownH2V1_JPEG_8u_C1R(const Orb8u* pSrc, Orb32s srcStep,
                                                  OrbiSize srcRoiSize, Orb8u* pDst, Orb32s dstStep,
                                                  OrbiSize dstRoiSize) {
  const OrbStatus status = checkPlanes(pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize);
  if (status != orbStsNoErr) return status;
  for (Orb32s y = 0; y < dstRoiSize.height; ++y) {
    kernel::orbSampleDownH2V1Row(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y),
                                 dstRoiSize.width);
  }
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiSampleDownH2V2_JPEG_8u_C1R(const Orb8u* pSrc, Orb32s srcStep,
                                                  OrbiSize srcRoiSize, Orb8u* pDst, Orb32s dstStep,
                                                  OrbiSize dstRoiSize) {
  const OrbStatus status = checkPlanes(pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize);
  if (status != orbStsNoErr) return status;
  for (ptrdiff_t y = 0; y < dstRoiSize.height; ++y) {
    kernel::orbSampleDownH2V2Row(rowAt(pSrc, srcStep, 2 * y), rowAt(pSrc, srcStep, 2 * y + 1),
                                 rowAt(pDst, dstStep, y), dstRoiSize.width);
  }
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiSampleUpH2V1_JPEG_8u_C1R(const Orb8u* pSrc, Orb32s srcStep,
                                                OrbiSize srcRoiSize, Orb8u* pDst, Orb32s dstStep,
                                                OrbiSize dstRoiSize) {
  const OrbStatus status = checkPlanes(pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize);
  if (status != orbStsNoErr) return status;
  for (Orb32s y = 0; y < dstRoiSize.height; ++y) {
    kernel::orbSampleUpH2V1Row(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), dstRoiSize.width);
  }
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiSampleUpH2V2_JPEG_8u_C1R(const Orb8u* pSrc, Orb32s srcStep,
                                                OrbiSize srcRoiSize, Orb8u* pDst, Orb32s dstStep,
                                                OrbiSize dstRoiSize) {
  const OrbStatus status = checkPlanes(pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize);
  if (status != orbStsNoErr) return status;
  for (Orb32s y = 0; y < dstRoiSize.height; ++y) {
    const Orb32s near = y >> 1;
    const Orb32s far = y & 1 ? near + 1 : near - 1;
    kernel::orbSampleUpH2V2Row(rowAt(pSrc, srcStep, near), rowAt(pSrc, srcStep, far),
                               rowAt(pDst, dstStep, y), dstRoiSize.width);
  }
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiSampleDownRowH2V1_Box_JPEG_8u_C1(const Orb8u* pSrc, Orb32s srcWidth,
                                                        Orb8u* pDst) {
  if (!pSrc || !pDst) return orbStsNullPtrErr;
  if (srcWidth < 2) return orbStsSizeErr;
  kernel::orbSampleDownRowH2V1Box(pSrc, pDst, srcWidth / 2);
  return srcWidth & 1 ? orbStsOddRowWidth : orbStsNoErr;
}

OrbStatus ORB_CALL orbiSampleDownRowH2V2_Box_JPEG_8u_C1(const Orb8u* pSrc1, const Orb8u* pSrc2,
                                                        Orb32s srcWidth, Orb8u* pDst) {
  if (!pSrc1 || !pSrc2 || !pDst) return orbStsNullPtrErr;
  if (srcWidth < 1) return orbStsSizeErr;
  kernel::orbSampleDownRowH2V2Box(pSrc1, pSrc2, pDst, srcWidth / 2 + srcWidth % 2);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiSampleUpRowH2V1_Triangle_JPEG_8u_C1(const Orb8u* pSrc, Orb32s srcWidth,
                                                           Orb8u* pDst) {
  if (!pSrc || !pDst) return orbStsNullPtrErr;
  if (srcWidth < 1) return orbStsSizeErr;
  kernel::orbSampleUpRowH2V1Triangle(pSrc, pDst, srcWidth);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiSampleUpRowH2V2_Triangle_JPEG_8u_C1(const Orb8u* pSrc1, const Orb8u* pSrc2,
                                                           Orb32s srcWidth, Orb8u* pDst) {
  if (!pSrc1 || !pSrc2 || !pDst) return orbStsNullPtrErr;
  if (srcWidth < 1) return orbStsSizeErr;
  kernel::orbSampleUpRowH2V2Triangle(pSrc1, pSrc2, pDst, srcWidth);
  return orbStsNoErr;
}

}  // namespace orb::ORB_BUILD
