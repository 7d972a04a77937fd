// Level shift and quantisation: argument checks, then one call into a kernel.
#include "jpeg/px/quant.h"

#include "jpeg/tables/zigzag.h"
#if ORB_SIMD
#include "jpeg/simd/quant.h"
#endif

namespace orb::ORB_BUILD {

// The common shape of a region from one plane to another.
static OrbStatus checkPlanes(const void* pSrc, Orb32s srcStep, const void* pDst, Orb32s dstStep,
                             OrbiSize roiSize) {
  if (!pSrc) return orbStsNullPtrErr;
  if (srcStep < 1) return orbStsStepErr;
  if (!pDst) return orbStsNullPtrErr;
  if (dstStep < 1) return orbStsStepErr;
  if (roiSize.width < 1 || roiSize.height < 1) return orbStsSizeErr;
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiAdd128_JPEG_16s8u_C1R(const Orb16s* pSrc, Orb32s srcStep, Orb8u* pDst,
                                             Orb32s dstStep, OrbiSize roiSize) {
  const OrbStatus status = checkPlanes(pSrc, srcStep, pDst, dstStep, roiSize);
  if (status != orbStsNoErr) return status;
  for (Orb32s y = 0; y < roiSize.height; ++y) {
    kernel::orbAdd128Row(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), roiSize.width);
  }
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiSub128_JPEG_8u16s_C1R(const Orb8u* pSrc, Orb32s srcStep, Orb16s* pDst,
                                             Orb32s dstStep, OrbiSize roiSize) {
  const OrbStatus status = checkPlanes(pSrc, srcStep, pDst, dstStep, roiSize);
  if (status != orbStsNoErr) return status;
  for (Orb32s y = 0; y < roiSize.height; ++y) {
    kernel::orbSub128Row(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), roiSize.width);
  }
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiQuantFwdRawTableInit_JPEG_8u(Orb8u* pQuantRawTable, Orb32s qualityFactor) {
  if (!pQuantRawTable) return orbStsNullPtrErr;
  if (qualityFactor < 1) return orbStsBadArgErr;
  const Orb32s scale = qualityFactor < 50 ? 5000 / qualityFactor : 200 - 2 * qualityFactor;
  for (int i = 0; i < 64; ++i) {
    const Orb32s scaled = (pQuantRawTable[i] * scale + 50) / 100;
    pQuantRawTable[i] = static_cast<Orb8u>(limit(scaled, 1, 255));
  }
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiQuantFwdTableInit_JPEG_8u16u(const Orb8u* pQuantRawTable,
                                                    Orb16u* pQuantFwdTable) {
  if (!pQuantRawTable || !pQuantFwdTable) return orbStsNullPtrErr;
  OrbStatus status = orbStsNoErr;
  Orb16u reciprocals[64];
  for (int i = 0; i < 64; ++i) {
    const Orb32u divisor = pQuantRawTable[orbZigzagOrder[i]];
    if (divisor == 0) {
      reciprocals[i] = 65535;
      status = orbStsDivByZero;
    } else {
      // To nearest: up on an odd integer part, down on an even one.
      const Orb32u quotient = 0x80000000u / divisor;
      reciprocals[i] = static_cast<Orb16u>((quotient + 32767 + ((quotient >> 15) & 2)) >> 16);
    }
  }
  __builtin_memcpy(static_cast<void*>(pQuantFwdTable), reciprocals, sizeof reciprocals);
  return status;
}

OrbStatus ORB_CALL orbiQuantInvTableInit_JPEG_8u16u(const Orb8u* pQuantRawTable,
                                                    Orb16u* pQuantInvTable) {
  if (!pQuantRawTable || !pQuantInvTable) return orbStsNullPtrErr;
  Orb16u divisors[64];
  for (int i = 0; i < 64; ++i) divisors[i] = pQuantRawTable[orbZigzagOrder[i]];
  __builtin_memcpy(static_cast<void*>(pQuantInvTable), divisors, sizeof divisors);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiQuantFwd8x8_JPEG_16s_C1I(Orb16s* pSrcDst, const Orb16u* pQuantFwdTable) {
  if (!pSrcDst || !pQuantFwdTable) return orbStsNullPtrErr;
  kernel::orbQuantFwd8x8(pSrcDst, pSrcDst, pQuantFwdTable);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiQuantInv8x8_JPEG_16s_C1I(Orb16s* pSrcDst, const Orb16u* pQuantInvTable) {
  if (!pSrcDst || !pQuantInvTable) return orbStsNullPtrErr;
  kernel::orbDequant(pSrcDst, pSrcDst, pQuantInvTable);
  return orbStsNoErr;
}

}  // namespace orb::ORB_BUILD
