// Code-block encoder: argument checks, then one call into a kernel.
#include "jpeg2k/px/codeblock_encoder.h"

namespace orb::ORB_BUILD {

static OrbStatus checkState(const OrbiEncodeState_JPEG2K* pState) {
  if (!pState) return orbStsNullPtrErr;
  return pState->tag == kEncodeTag ? orbStsNoErr : orbStsContextMatchErr;
}

OrbStatus ORB_CALL orbiEncodeInitAlloc_JPEG2K(OrbiEncodeState_JPEG2K** ppState,
                                              OrbiSize codeBlockMaxSize) {
  if (!ppState) return orbStsNullPtrErr;
  if (codeBlockMaxSize.height < 1 || codeBlockMaxSize.width < 1) return orbStsSizeErr;
  OrbiEncodeState_JPEG2K* const state = kernel::orbAllocateEncoder(codeBlockMaxSize);
  store(ppState, state);
  return state ? orbStsNoErr : orbStsMemAllocErr;
}

OrbStatus ORB_CALL orbiEncodeFree_JPEG2K(OrbiEncodeState_JPEG2K* pState) {
  if (!pState) return orbStsNullPtrErr;
  orbFree(pState);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiEncodeLoadCodeBlock_JPEG2K_32s_C1R(
    const Orb32s* pSrc, Orb32s srcStep, OrbiSize codeBlockSize, OrbiEncodeState_JPEG2K* pState,
    Orb32s subband, Orb32s magnBits, Orb32s mqTermMode, Orb32s, Orb32s codeStyle,
    Orb32s* pMaxBitLength, Orb32s* pPassCount, Orb32s* pTermPassCount) {
  const OrbStatus status = checkState(pState);
  if (status != orbStsNoErr) return status;
  if (!pMaxBitLength || !pPassCount || !pTermPassCount) return orbStsNullPtrErr;
  if (codeBlockSize.height < 1 || codeBlockSize.width < 1) return orbStsSizeErr;
  if (!pSrc) return orbStsNullPtrErr;
  if (srcStep < 1) return orbStsStepErr;
  if (!kernel::hasRoomFor(*pState, codeBlockSize)) return orbStsSizeErr;
  const Orb32s bitLength = kernel::orbLoadCodeBlock(*pState, pSrc, srcStep, codeBlockSize, subband,
                                                    magnBits, mqTermMode, codeStyle);
  store(pMaxBitLength, bitLength);
  store(pPassCount, pState->passCount);
  store(pTermPassCount, kernel::orbCountSegments(*pState));
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiEncodeStoreBits_JPEG2K_1u(Orb8u* pDst, Orb32s* pDstLen,
                                                 OrbiEncodeState_JPEG2K* pState,
                                                 Orb32s* pIsNotFinished) {
  const OrbStatus status = checkState(pState);
  if (status != orbStsNoErr) return status;
  if (!pDst || !pDstLen || !pIsNotFinished) return orbStsNullPtrErr;
  if (load(pDstLen) < 1) return orbStsSizeErr;
  store(pDstLen, kernel::orbStoreBits(*pState, pDst, load(pDstLen)));
  store(pIsNotFinished, Orb32s{pState->pass < pState->passCount});
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiEncodeGetRate_JPEG2K(const OrbiEncodeState_JPEG2K* pState, Orb32s passIndex,
                                            Orb32s* pRate) {
  const OrbStatus status = checkState(pState);
  if (status != orbStsNoErr) return status;
  if (!pRate) return orbStsNullPtrErr;
  if (passIndex < 0 || passIndex >= pState->passCount) return orbStsPassIndexErr;
  store(pRate, pState->passes[passIndex].rate);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiEncodeGetDist_JPEG2K(const OrbiEncodeState_JPEG2K* pState, Orb32s passIndex,
                                            Orb64f* pDist) {
  const OrbStatus status = checkState(pState);
  if (status != orbStsNoErr) return status;
  if (!pDist) return orbStsNullPtrErr;
  if (passIndex < 0 || passIndex >= pState->passCount) return orbStsPassIndexErr;
  store(pDist, kernel::orbDistortion(*pState, passIndex));
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiEncodeGetTermPassLen_JPEG2K(const OrbiEncodeState_JPEG2K* pState,
                                                   Orb32s termPassIndex, Orb32s* pLength) {
  const OrbStatus status = checkState(pState);
  if (status != orbStsNoErr) return status;
  if (!pLength) return orbStsNullPtrErr;
  if (termPassIndex < 0 || termPassIndex >= kernel::orbCountSegments(*pState)) {
    return orbStsPassIndexErr;
  }
  store(pLength, kernel::orbSegmentLength(*pState, termPassIndex));
  return orbStsNoErr;
}

}  // namespace orb::ORB_BUILD
