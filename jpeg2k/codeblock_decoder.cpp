// Code-block decoder: argument checks, then one call into a kernel.
#include "jpeg2k/px/codeblock_decoder.h"

namespace orb::ORB_BUILD {

OrbStatus ORB_CALL orbiDecodeGetBufSize_JPEG2K(OrbiSize maxSize, Orb32s* pSize) {
  return orbiDecodeCBProgrGetStateSize_JPEG2K(maxSize, pSize);
}

OrbStatus ORB_CALL orbiDecodeCodeBlock_JPEG2K_1u32s_C1R(
    const Orb8u* pSrc, Orb32s* pDst, Orb32s dstStep, OrbiSize codeBlockSize, Orb32s subband,
    Orb32s bitPlanes, Orb32s passCount, const Orb32s* pSegmentLengths, Orb32s segmentCount,
    Orb32s codeStyle, Orb32s* pErrorPlane, void* pState) {
  if (!pSrc || !pState) return orbStsNullPtrErr;
  if (codeBlockSize.height < 1 || codeBlockSize.width < 1) return orbStsSizeErr;
  if (!pSegmentLengths || !pDst) return orbStsNullPtrErr;
  if (dstStep < 1) return orbStsStepErr;
  OrbiDecodeCBProgrState_JPEG2K& state = *static_cast<OrbiDecodeCBProgrState_JPEG2K*>(pState);
  kernel::orbInitDecodeState(state);
  kernel::orbAttach(state, pDst, dstStep, codeBlockSize, subband, bitPlanes, codeStyle);
  const OrbStatus status =
      kernel::orbDecodeCodeBlock(state, pSrc, pSegmentLengths, segmentCount, passCount);
  if (status != orbStsNoErr && pErrorPlane) store(pErrorPlane, Orb32s{state.plane});
  return status;
}

}  // namespace orb::ORB_BUILD
