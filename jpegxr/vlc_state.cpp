// The adaptive state of coefficient coding: argument checks, then one call into a kernel.
#include "jpegxr/px/vlc_state.h"

#include "frame/memory.h"

namespace orb::ORB_BUILD {

OrbStatus ORB_CALL orbiVLCGetStateSize_JPEGXR(Orb32s* pSize) {
  if (!pSize) return orbStsNullPtrErr;
  store(pSize, static_cast<Orb32s>(sizeof(OrbiVLCState_JPEGXR)));
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiVLCInit_JPEGXR(OrbiVLCState_JPEGXR* pState) {
  if (!pState) return orbStsNullPtrErr;
  orbZero(pState, offsetof(OrbiVLCState_JPEGXR, scans));
  for (Orb32u i = 0; i < kCoderCount; ++i) pState->coders[i].symbols = orbVlcSymbols[i];
  kernel::orbAdaptLowPass(*pState);
  kernel::orbAdaptHighPass(*pState);
  pState->scan = kLowPassScan;
  for (Orb32s i = 0; i < kScanCount; ++i) {
    kernel::orbStartScan(kernel::scanOf(*pState, i), orbScanStart[i]);
  }
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiVLCAdapt_JPEGXR(OrbiVLCState_JPEGXR* pState, Orb32s kind) {
  if (!pState) return orbStsNullPtrErr;
  switch (kind) {
    case 0:
      kernel::orbAdaptLowPass(*pState);
      return orbStsNoErr;
    case 1:
      kernel::orbAdaptHighPass(*pState);
      return orbStsNoErr;
    default:
      return orbStsOutOfRangeErr;
  }
}

OrbStatus ORB_CALL orbiVLCScanSet_JPEGXR(OrbiVLCState_JPEGXR* pState, Orb32s scan) {
  if (!pState) return orbStsNullPtrErr;
  if (scan < 0 || scan >= kScanCount) return orbStsOutOfRangeErr;
  pState->scan = static_cast<Orb32u>(scan);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiVLCScanReset_JPEGXR(OrbiVLCState_JPEGXR* pState, Orb32s scan) {
  if (!pState) return orbStsNullPtrErr;
  if (scan < 0 || scan >= kScanCount) return orbStsOutOfRangeErr;
  kernel::orbResetWeights(kernel::scanOf(*pState, scan));
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiVLCScan4x4DC_JPEGXR_32s(const Orb32s* pSrc, Orb32u modelBits,
                                               Orb32s* pResidual, Orb32s* pRunLevel,
                                               Orb32s* pPairCount, OrbiVLCState_JPEGXR* pState) {
  if (!pState || !pSrc || !pResidual || !pRunLevel || !pPairCount) return orbStsNullPtrErr;
  if (modelBits > 15) return orbStsOutOfRangeErr;
  pState->scan = kLowPassScan;
  OrbScanRecord* scan = kernel::scanOf(*pState, kLowPassScan);
  const kernel::NaturalBlock block = {pSrc};
  // Without model bits nothing is left over.
  const Orb32s pairCount =
      modelBits == 0
          ? kernel::orbScanBlock(scan, block, 0, kernel::NoResidual{}, pRunLevel)
          : kernel::orbScanBlock(scan, block, modelBits, kernel::Residual{pResidual, 0}, pRunLevel);
  store(pPairCount, pairCount);
  return orbStsNoErr;
}

}  // namespace orb::ORB_BUILD
