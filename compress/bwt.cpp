// The Burrows-Wheeler transform of small blocks: argument checks, then one call into a kernel.
#include "compress/px/bwt.h"

namespace orb::ORB_BUILD {

constexpr Orb32s kLongestBlock = 32768;  // positions have 15 bits

OrbStatus ORB_CALL orbsBWTGetSize_SmallBlock_8u(Orb32s len, Orb32s* pSize) {
  if (!pSize) return orbStsNullPtrErr;
  if (len < 1 || len > kLongestBlock) return orbStsSizeErr;
  store(pSize, kernel::bwtBufferSize(len));
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbsBWTFwd_SmallBlock_8u(const Orb8u* pSrc, Orb8u* pDst, Orb32s len,
                                            Orb32s* pIndex, Orb8u* pBuf) {
  if (!pSrc || !pDst || !pIndex || !pBuf) return orbStsNullPtrErr;
  if (len < 1 || len > kLongestBlock) return orbStsSizeErr;
  store(pIndex, kernel::orbBWTFwd(pSrc, pDst, len, pBuf));
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbsBWTInv_SmallBlock_8u(const Orb8u* pSrc, Orb8u* pDst, Orb32s len,
                                            Orb32s index, Orb8u* pBuf) {
  if (!pSrc || !pDst || !pBuf) return orbStsNullPtrErr;
  if (len < 1 || index >= len || len > kLongestBlock) return orbStsSizeErr;
  kernel::orbBWTInv(pSrc, pDst, len, index < 0 ? 0 : index, pBuf);
  return orbStsNoErr;
}

}  // namespace orb::ORB_BUILD
