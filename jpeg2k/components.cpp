// Component transforms of JPEG 2000: argument checks, then one call into a kernel for each row.
#include "jpeg2k/px/components.h"

namespace orb::ORB_BUILD {

template <class T>
static bool hasNull(T* const planes[3]) {
  return !planes[0] || !planes[1] || !planes[2];
}

static bool isEmpty(OrbiSize size) {
  return size.width < 1 || size.height < 1;
}

template <class Transform, class T>
static OrbStatus toPlanes(const T* pSrc, Orb32s srcStep, T* const pDst[3], Orb32s dstStep,
                          OrbiSize roiSize) {
  if (!pSrc || !pDst || hasNull(pDst)) return orbStsNullPtrErr;
  if (srcStep < 1 || dstStep < 1) return orbStsStepErr;
  if (isEmpty(roiSize)) return orbStsSizeErr;
  for (ptrdiff_t y = 0; y < roiSize.height; ++y) {
    kernel::orbTransformRow<Transform>(kernel::interleavedRow(pSrc, srcStep, y),
                                       kernel::planarRow(pDst, dstStep, y), roiSize.width);
  }
  return orbStsNoErr;
}

template <class Transform, class T>
static OrbStatus toPixels(const T* const pSrc[3], Orb32s srcStep, T* pDst, Orb32s dstStep,
                          OrbiSize roiSize) {
  if (!pSrc || !pDst || hasNull(pSrc)) return orbStsNullPtrErr;
  if (srcStep < 1 || dstStep < 1) return orbStsStepErr;
  if (isEmpty(roiSize)) return orbStsSizeErr;
  for (ptrdiff_t y = 0; y < roiSize.height; ++y) {
    kernel::orbTransformRow<Transform>(kernel::planarRow(pSrc, srcStep, y),
                                       kernel::interleavedRow(pDst, dstStep, y), roiSize.width);
  }
  return orbStsNoErr;
}

template <class Transform, class T>
static OrbStatus inPlace(T* const pSrcDst[3], Orb32s srcDstStep, OrbiSize roiSize) {
  if (!pSrcDst || hasNull(pSrcDst)) return orbStsNullPtrErr;
  if (srcDstStep < 1) return orbStsStepErr;
  if (isEmpty(roiSize)) return orbStsSizeErr;
  for (ptrdiff_t y = 0; y < roiSize.height; ++y) {
    const auto row = kernel::planarRow(pSrcDst, srcDstStep, y);
    kernel::orbTransformRow<Transform>(row, row, roiSize.width);
  }
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiRCTFwd_JPEG2K_16s_C3P3R(const Orb16s* pSrc, Orb32s srcStep,
                                               Orb16s* const pDst[3], Orb32s dstStep,
                                               OrbiSize roiSize) {
  return toPlanes<kernel::RCTForward>(pSrc, srcStep, pDst, dstStep, roiSize);
}

OrbStatus ORB_CALL orbiRCTFwd_JPEG2K_32s_C3P3R(const Orb32s* pSrc, Orb32s srcStep,
                                               Orb32s* const pDst[3], Orb32s dstStep,
                                               OrbiSize roiSize) {
  return toPlanes<kernel::RCTForward>(pSrc, srcStep, pDst, dstStep, roiSize);
}

OrbStatus ORB_CALL orbiICTFwd_JPEG2K_32f_C3P3R(const Orb32f* pSrc, Orb32s srcStep,
                                               Orb32f* const pDst[3], Orb32s dstStep,
                                               OrbiSize roiSize) {
  return toPlanes<kernel::ICTForward>(pSrc, srcStep, pDst, dstStep, roiSize);
}

OrbStatus ORB_CALL orbiRCTInv_JPEG2K_16s_P3C3R(const Orb16s* const pSrc[3], Orb32s srcStep,
                                               Orb16s* pDst, Orb32s dstStep, OrbiSize roiSize) {
  return toPixels<kernel::RCTInverse>(pSrc, srcStep, pDst, dstStep, roiSize);
}

OrbStatus ORB_CALL orbiRCTInv_JPEG2K_32s_P3C3R(const Orb32s* const pSrc[3], Orb32s srcStep,
                                               Orb32s* pDst, Orb32s dstStep, OrbiSize roiSize) {
  return toPixels<kernel::RCTInverse>(pSrc, srcStep, pDst, dstStep, roiSize);
}

OrbStatus ORB_CALL orbiICTInv_JPEG2K_32f_P3C3R(const Orb32f* const pSrc[3], Orb32s srcStep,
                                               Orb32f* pDst, Orb32s dstStep, OrbiSize roiSize) {
  return toPixels<kernel::ICTInverse>(pSrc, srcStep, pDst, dstStep, roiSize);
}

OrbStatus ORB_CALL orbiRCTFwd_JPEG2K_16s_P3IR(Orb16s* const pSrcDst[3], Orb32s srcDstStep,
                                              OrbiSize roiSize) {
  return inPlace<kernel::RCTForward>(pSrcDst, srcDstStep, roiSize);
}

OrbStatus ORB_CALL orbiRCTFwd_JPEG2K_32s_P3IR(Orb32s* const pSrcDst[3], Orb32s srcDstStep,
                                              OrbiSize roiSize) {
  return inPlace<kernel::RCTForward>(pSrcDst, srcDstStep, roiSize);
}

OrbStatus ORB_CALL orbiRCTInv_JPEG2K_16s_P3IR(Orb16s* const pSrcDst[3], Orb32s srcDstStep,
                                              OrbiSize roiSize) {
  return inPlace<kernel::RCTInverse>(pSrcDst, srcDstStep, roiSize);
}

OrbStatus ORB_CALL orbiRCTInv_JPEG2K_32s_P3IR(Orb32s* const pSrcDst[3], Orb32s srcDstStep,
                                              OrbiSize roiSize) {
  return inPlace<kernel::RCTInverse>(pSrcDst, srcDstStep, roiSize);
}

OrbStatus ORB_CALL orbiICTFwd_JPEG2K_16s_P3IR(Orb16s* const pSrcDst[3], Orb32s srcDstStep,
                                              OrbiSize roiSize) {
  return inPlace<kernel::ICTForward>(pSrcDst, srcDstStep, roiSize);
}

OrbStatus ORB_CALL orbiICTFwd_JPEG2K_32s_P3IR(Orb32s* const pSrcDst[3], Orb32s srcDstStep,
                                              OrbiSize roiSize) {
  return inPlace<kernel::ICTForward>(pSrcDst, srcDstStep, roiSize);
}

OrbStatus ORB_CALL orbiICTFwd_JPEG2K_32f_P3IR(Orb32f* const pSrcDst[3], Orb32s srcDstStep,
                                              OrbiSize roiSize) {
  return inPlace<kernel::ICTForward>(pSrcDst, srcDstStep, roiSize);
}

OrbStatus ORB_CALL orbiICTInv_JPEG2K_16s_P3IR(Orb16s* const pSrcDst[3], Orb32s srcDstStep,
                                              OrbiSize roiSize) {
  return inPlace<kernel::ICTInverse>(pSrcDst, srcDstStep, roiSize);
}

OrbStatus ORB_CALL orbiICTInv_JPEG2K_32s_P3IR(Orb32s* const pSrcDst[3], Orb32s srcDstStep,
                                              OrbiSize roiSize) {
  return inPlace<kernel::ICTInverse>(pSrcDst, srcDstStep, roiSize);
}

OrbStatus ORB_CALL orbiICTInv_JPEG2K_32f_P3IR(Orb32f* const pSrcDst[3], Orb32s srcDstStep,
                                              OrbiSize roiSize) {
  return inPlace<kernel::ICTInverse>(pSrcDst, srcDstStep, roiSize);
}

}  // namespace orb::ORB_BUILD
