// Fixed filters: argument checks, scratch for the call, then one call into a kernel.
#include "image/px/filter.h"

#include "frame/memory.h"
#if ORB_SIMD
#include "image/simd/filter.h"
#endif

namespace orb::ORB_BUILD {

// A kernel, and how many rows of 32-bit words it wants as scratch.
struct FilterKernel {
  void (*run)(const FilterRegion& region, Orb32s* scratch);
  Orb32s scratchRows;
};
struct FilterFamily {
  FilterKernel of3x3, of5x5;
};

static constexpr FilterFamily kGauss = {{kernel::orbGauss3x3, plain::kRows3x3},
                                        {kernel::orbGauss5x5, plain::kRows5x5}};
static constexpr FilterFamily kHipass = {{kernel::orbHipass3x3, plain::kRows3x3},
                                         {kernel::orbHipass5x5, plain::kRowsBox5x5}};
static constexpr FilterFamily kLaplace = {{kernel::orbHipass3x3, plain::kRows3x3},
                                          {kernel::orbLaplace5x5, plain::kRows5x5}};
static constexpr FilterFamily kLowpass = {{kernel::orbLowpass3x3, plain::kRows3x3},
                                          {kernel::orbLowpass5x5, plain::kRowsBox5x5}};

static OrbStatus filter(const FilterFamily& family, const Orb8u* pSrc, Orb32s srcStep, Orb8u* pDst,
                        Orb32s dstStep, OrbiSize roiSize, OrbiMaskSize mask, Orb32s channels) {
  if (!pSrc || !pDst) return orbStsNullPtrErr;
  if (roiSize.width < 1 || roiSize.height < 1) return orbStsSizeErr;
  if (srcStep < 1 || dstStep < 1) return orbStsStepErr;
  if (mask != orbMask3x3 && mask != orbMask5x5) return orbStsMaskSizeErr;

  const FilterKernel& kernel = mask == orbMask3x3 ? family.of3x3 : family.of5x5;
  const int64_t bytes = int64_t{roiSize.width} * channels * kernel.scratchRows * 4;
  if (bytes > INT32_MAX) return orbStsMemAllocErr;
  Orb32s* const scratch = static_cast<Orb32s*>(orbMalloc(static_cast<Orb32s>(bytes)));
  if (!scratch) return orbStsMemAllocErr;
  kernel.run({pSrc, srcStep, pDst, dstStep, roiSize.width * channels, channels, roiSize.height},
             scratch);
  orbFree(scratch);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiFilterGauss_8u_C1R(const Orb8u* pSrc, Orb32s srcStep, Orb8u* pDst,
                                          Orb32s dstStep, OrbiSize roiSize, OrbiMaskSize mask) {
  return filter(kGauss, pSrc, srcStep, pDst, dstStep, roiSize, mask, 1);
}
OrbStatus ORB_CALL orbiFilterGauss_8u_C3R(const Orb8u* pSrc, Orb32s srcStep, Orb8u* pDst,
                                          Orb32s dstStep, OrbiSize roiSize, OrbiMaskSize mask) {
  return filter(kGauss, pSrc, srcStep, pDst, dstStep, roiSize, mask, 3);
}
OrbStatus ORB_CALL orbiFilterGauss_8u_C4R(const Orb8u* pSrc, Orb32s srcStep, Orb8u* pDst,
                                          Orb32s dstStep, OrbiSize roiSize, OrbiMaskSize mask) {
  return filter(kGauss, pSrc, srcStep, pDst, dstStep, roiSize, mask, 4);
}
OrbStatus ORB_CALL orbiFilterHipass_8u_C1R(const Orb8u* pSrc, Orb32s srcStep, Orb8u* pDst,
                                           Orb32s dstStep, OrbiSize roiSize, OrbiMaskSize mask) {
  return filter(kHipass, pSrc, srcStep, pDst, dstStep, roiSize, mask, 1);
}
OrbStatus ORB_CALL orbiFilterHipass_8u_C3R(const Orb8u* pSrc, Orb32s srcStep, Orb8u* pDst,
                                           Orb32s dstStep, OrbiSize roiSize, OrbiMaskSize mask) {
  return filter(kHipass, pSrc, srcStep, pDst, dstStep, roiSize, mask, 3);
}
OrbStatus ORB_CALL orbiFilterHipass_8u_C4R(const Orb8u* pSrc, Orb32s srcStep, Orb8u* pDst,
                                           Orb32s dstStep, OrbiSize roiSize, OrbiMaskSize mask) {
  return filter(kHipass, pSrc, srcStep, pDst, dstStep, roiSize, mask, 4);
}
OrbStatus ORB_CALL orbiFilterLaplace_8u_C1R(const Orb8u* pSrc, Orb32s srcStep, Orb8u* pDst,
                                            Orb32s dstStep, OrbiSize roiSize, OrbiMaskSize mask) {
  return filter(kLaplace, pSrc, srcStep, pDst, dstStep, roiSize, mask, 1);
}
OrbStatus ORB_CALL orbiFilterLaplace_8u_C3R(const Orb8u* pSrc, Orb32s srcStep, Orb8u* pDst,
                                            Orb32s dstStep, OrbiSize roiSize, OrbiMaskSize mask) {
  return filter(kLaplace, pSrc, srcStep, pDst, dstStep, roiSize, mask, 3);
}
OrbStatus ORB_CALL orbiFilterLaplace_8u_C4R(const Orb8u* pSrc, Orb32s srcStep, Orb8u* pDst,
                                            Orb32s dstStep, OrbiSize roiSize, OrbiMaskSize mask) {
  return filter(kLaplace, pSrc, srcStep, pDst, dstStep, roiSize, mask, 4);
}
OrbStatus ORB_CALL orbiFilterLowpass_8u_C1R(const Orb8u* pSrc, Orb32s srcStep, Orb8u* pDst,
                                            Orb32s dstStep, OrbiSize roiSize, OrbiMaskSize mask) {
  return filter(kLowpass, pSrc, srcStep, pDst, dstStep, roiSize, mask, 1);
}
OrbStatus ORB_CALL orbiFilterLowpass_8u_C3R(const Orb8u* pSrc, Orb32s srcStep, Orb8u* pDst,
                                            Orb32s dstStep, OrbiSize roiSize, OrbiMaskSize mask) {
  return filter(kLowpass, pSrc, srcStep, pDst, dstStep, roiSize, mask, 3);
}

}  // namespace orb::ORB_BUILD
