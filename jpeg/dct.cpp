// DCT with quantisation: argument checks, then one call into a kernel.
#include "jpeg/px/dct.h"

#include "jpeg/px/dct_float.h"

namespace orb::ORB_BUILD {

// The common shape of a block on one side and a region of samples on the other.
static OrbStatus checkBlockAndPlane(const void* pSrc, const void* pDst, Orb32s step,
                                    const void* pTable) {
  if (!pSrc || !pDst) return orbStsNullPtrErr;
  if (step < 1) return orbStsStepErr;
  if (!pTable) return orbStsNullPtrErr;
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDCTQuantFwd8x8_JPEG_16s_C1(const Orb16s* pSrc, Orb16s* pDst,
                                                  const Orb16u* pQuantFwdTable) {
  if (!pSrc || !pDst || !pQuantFwdTable) return orbStsNullPtrErr;
  kernel::orbDctQuantFwd8x8(pSrc, pDst, pQuantFwdTable);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDCTQuantFwd8x8_JPEG_16s_C1I(Orb16s* pSrcDst, const Orb16u* pQuantFwdTable) {
  if (!pSrcDst || !pQuantFwdTable) return orbStsNullPtrErr;
  kernel::orbDctQuantFwd8x8(pSrcDst, pSrcDst, pQuantFwdTable);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(const Orb8u* pSrc, Orb32s srcStep,
                                                       Orb16s* pDst, const Orb16u* pQuantFwdTable) {
  const OrbStatus status = checkBlockAndPlane(pSrc, pDst, srcStep, pQuantFwdTable);
  if (status != orbStsNoErr) return status;
  kernel::orbDctQuantFwd8x8Ls(pSrc, srcStep, pDst, pQuantFwdTable);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDCTQuantFwd8x8LS_JPEG_16u16s_C1R(const Orb16u* pSrc, Orb32s srcStep,
                                                        Orb16s* pDst,
                                                        const Orb32f* pQuantFwdTable) {
  const OrbStatus status = checkBlockAndPlane(pSrc, pDst, srcStep, pQuantFwdTable);
  if (status != orbStsNoErr) return status;
  kernel::orbDctQuantFwd8x8Ls(pSrc, srcStep, pDst, pQuantFwdTable);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDCTQuantInv8x8_JPEG_16s_C1(const Orb16s* pSrc, Orb16s* pDst,
                                                  const Orb16u* pQuantInvTable) {
  if (!pSrc || !pDst || !pQuantInvTable) return orbStsNullPtrErr;
  kernel::orbDctQuantInv8x8(pSrc, pDst, pQuantInvTable);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDCTQuantInv8x8_JPEG_16s_C1I(Orb16s* pSrcDst, const Orb16u* pQuantInvTable) {
  if (!pSrcDst || !pQuantInvTable) return orbStsNullPtrErr;
  kernel::orbDctQuantInv8x8(pSrcDst, pSrcDst, pQuantInvTable);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R(const Orb16s* pSrc, Orb8u* pDst,
                                                       Orb32s dstStep,
                                                       const Orb16u* pQuantInvTable) {
  const OrbStatus status = checkBlockAndPlane(pSrc, pDst, dstStep, pQuantInvTable);
  if (status != orbStsNoErr) return status;
  kernel::orbDctQuantInv8x8Ls(pSrc, pDst, dstStep, pQuantInvTable);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDCTQuantInv8x8LS_JPEG_16s16u_C1R(const Orb16s* pSrc, Orb16u* pDst,
                                                        Orb32s dstStep,
                                                        const Orb32f* pQuantInvTable) {
  const OrbStatus status = checkBlockAndPlane(pSrc, pDst, dstStep, pQuantInvTable);
  if (status != orbStsNoErr) return status;
  kernel::orbDctQuantInv8x8Ls(pSrc, pDst, dstStep, pQuantInvTable);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R(const Orb16s* pSrc, Orb8u* pDst,
                                                           Orb32s dstStep,
                                                           const Orb16u* pQuantInvTable) {
  const OrbStatus status = checkBlockAndPlane(pSrc, pDst, dstStep, pQuantInvTable);
  if (status != orbStsNoErr) return status;
  kernel::orbDctQuantInv8x8Ls1x1(pSrc, pDst, dstStep, pQuantInvTable);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R(const Orb16s* pSrc, Orb8u* pDst,
                                                           Orb32s dstStep,
                                                           const Orb16u* pQuantInvTable) {
  const OrbStatus status = checkBlockAndPlane(pSrc, pDst, dstStep, pQuantInvTable);
  if (status != orbStsNoErr) return status;
  kernel::orbDctQuantInv8x8Ls2x2(pSrc, pDst, dstStep, pQuantInvTable);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R(const Orb16s* pSrc, Orb8u* pDst,
                                                           Orb32s dstStep,
                                                           const Orb16u* pQuantInvTable) {
  const OrbStatus status = checkBlockAndPlane(pSrc, pDst, dstStep, pQuantInvTable);
  if (status != orbStsNoErr) return status;
  kernel::orbDctQuantInv8x8Ls4x4(pSrc, pDst, dstStep, pQuantInvTable);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R(const Orb16s* pSrc, Orb8u* pDst,
                                                            Orb32s dstStep,
                                                            const Orb16u* pQuantInvTable) {
  const OrbStatus status = checkBlockAndPlane(pSrc, pDst, dstStep, pQuantInvTable);
  if (status != orbStsNoErr) return status;
  kernel::orbDctQuantInv8x8To2x2Ls(pSrc, pDst, dstStep, pQuantInvTable);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R(const Orb16s* pSrc, Orb8u* pDst,
                                                            Orb32s dstStep,
                                                            const Orb16u* pQuantInvTable) {
  const OrbStatus status = checkBlockAndPlane(pSrc, pDst, dstStep, pQuantInvTable);
  if (status != orbStsNoErr) return status;
  kernel::orbDctQuantInv8x8To4x4Ls(pSrc, pDst, dstStep, pQuantInvTable);
  return orbStsNoErr;
}

}  // namespace orb::ORB_BUILD
