// Transforms and weighting: argument checks, then one call into a kernel.
#include "dv/px/transform.h"

#if ORB_SIMD
#include "dv/simd/transform.h"
#endif

namespace orb::ORB_BUILD {

OrbStatus ORB_CALL orbiDCT2x4x8Frw_16s_C1I(Orb16s* pBlock) {
  if (!pBlock) return orbStsNullPtrErr;
  kernel::orbFdct248(pBlock);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDCT2x4x8Inv_16s_C1I(Orb16s* pBlock) {
  if (!pBlock) return orbStsNullPtrErr;
  kernel::orbIdct248(pBlock);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiCountZeros8x8_16s_C1(const Orb16s* pBlock, Orb32s* pZeros) {
  if (!pBlock || !pZeros) return orbStsNullPtrErr;
  store(pZeros, kernel::orbCountZeros8x8(pBlock));
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiQuantWeightBlockInv_DV100_16s_C1I(Orb16s* pBlock, const Orb16s* pWeights,
                                                         Orb32s qp) {
  if (!pBlock || !pWeights) return orbStsNullPtrErr;
  kernel::orbWeightDV100(pBlock, pWeights, qp);
  return orbStsNoErr;
}

}  // namespace orb::ORB_BUILD
