// Progressive code-block decoder: argument checks, then one call into a kernel.
#include "jpeg2k/px/codeblock_progressive.h"

namespace orb::ORB_BUILD {

static bool hasTag(const OrbiDecodeCBProgrState_JPEG2K* pState) {
  return pState->tag == kDecodeTag;
}

OrbStatus ORB_CALL orbiDecodeCBProgrGetStateSize_JPEG2K(OrbiSize maxSize, Orb32s* pSize) {
  if (maxSize.height < 1 || maxSize.width < 1) return orbStsSizeErr;
  if (!pSize) return orbStsNullPtrErr;
  const int64_t size = kernel::orbDecodeStateSize(maxSize);
  if (size > INT32_MAX) return orbStsSizeErr;
  store(pSize, static_cast<Orb32s>(size));
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDecodeCBProgrInitAlloc_JPEG2K(OrbiDecodeCBProgrState_JPEG2K** ppState,
                                                     OrbiSize maxSize) {
  if (!ppState) return orbStsNullPtrErr;
  if (maxSize.height < 1 || maxSize.width < 1) return orbStsSizeErr;
  const int64_t size = kernel::orbDecodeStateSize(maxSize);
  void* const memory = size > INT32_MAX ? nullptr : orbMalloc(static_cast<Orb32s>(size));
  OrbiDecodeCBProgrState_JPEG2K* const state = static_cast<OrbiDecodeCBProgrState_JPEG2K*>(memory);
  store(ppState, state);
  if (!state) return orbStsMemAllocErr;
  kernel::orbInitDecodeState(*state);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDecodeCBProgrInit_JPEG2K(OrbiDecodeCBProgrState_JPEG2K* pState) {
  if (!pState) return orbStsNullPtrErr;
  kernel::orbInitDecodeState(*pState);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDecodeCBProgrFree_JPEG2K(OrbiDecodeCBProgrState_JPEG2K* pState) {
  if (!pState) return orbStsNullPtrErr;
  if (!hasTag(pState)) return orbStsContextMatchErr;
  orbFree(pState);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDecodeCBProgrAttach_JPEG2K_32s_C1R(Orb32s* pDst, Orb32s dstStep,
                                                          OrbiSize codeBlockSize,
                                                          OrbiDecodeCBProgrState_JPEG2K* pState,
                                                          Orb32s subband, Orb32s bitPlanes,
                                                          Orb32s flags) {
  if (!pState || !pDst) return orbStsNullPtrErr;
  if (dstStep < 1) return orbStsStepErr;
  if (codeBlockSize.height < 1 || codeBlockSize.width < 1) return orbStsSizeErr;
  if (!hasTag(pState)) return orbStsContextMatchErr;
  kernel::orbAttach(*pState, pDst, dstStep, codeBlockSize, subband, bitPlanes, flags);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDecodeCBProgrSetPassCounter_JPEG2K(Orb32s passCount,
                                                          OrbiDecodeCBProgrState_JPEG2K* pState) {
  if (!pState) return orbStsNullPtrErr;
  if (!hasTag(pState)) return orbStsContextMatchErr;
  pState->passCounter = passCount;
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDecodeCBProgrGetPassCounter_JPEG2K(
    const OrbiDecodeCBProgrState_JPEG2K* pState, Orb32s* pPassCount) {
  if (!pState || !pPassCount) return orbStsNullPtrErr;
  if (!hasTag(pState)) return orbStsContextMatchErr;
  store(pPassCount, Orb32s{pState->passCounter});
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDecodeCBProgrGetCurBitPlaneNum_JPEG2K(
    const OrbiDecodeCBProgrState_JPEG2K* pState, Orb32s* pPlane) {
  if (!pState || !pPlane) return orbStsNullPtrErr;
  if (!hasTag(pState)) return orbStsContextMatchErr;
  store(pPlane, Orb32s{pState->plane});
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDecodeCBProgrStep_JPEG2K(const Orb8u* pSrc, Orb32s srcLen,
                                                OrbiDecodeCBProgrState_JPEG2K* pState) {
  if (!pSrc || !pState) return orbStsNullPtrErr;
  if (!hasTag(pState)) return orbStsContextMatchErr;
  if (!pState->isAttached) return orbStsNotAttachedErr;
  return kernel::orbStep(*pState, pSrc, srcLen);
}

}  // namespace orb::ORB_BUILD
