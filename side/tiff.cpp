// Rows of TIFF files: argument checks, then one call into a kernel.
#include "side/px/tiff.h"

#if ORB_SIMD
#include "side/simd/tiff.h"
#endif

namespace orb::ORB_BUILD {

OrbStatus ORB_CALL orbiPackBitsRow_TIFF_8u_C1(const Orb8u* pSrc, Orb32s srcLen, Orb8u* pDst,
                                              Orb32s* pDstCursor, Orb32s dstLen) {
  if (!pSrc || !pDstCursor || !pDst) return orbStsNullPtrErr;
  if (srcLen < 1 || dstLen < 1) return orbStsSizeErr;
  const Orb32s cursor = load(pDstCursor);
  if (cursor < 0 || cursor > dstLen) return orbStsPackBitsDstErr;
  kernel::RowPacker packer(pSrc, srcLen, pDst, cursor, dstLen);
  const bool isComplete = packer.pack();
  store(pDstCursor, packer.cursor());
  return isComplete ? orbStsNoErr : orbStsPackBitsDstErr;
}

OrbStatus ORB_CALL orbiUnpackBitsRow_TIFF_8u_C1(const Orb8u* pSrc, Orb32s* pSrcCursor,
                                                Orb32s srcLen, Orb8u* pDst, Orb32s dstLen) {
  if (!pSrc || !pSrcCursor || !pDst) return orbStsNullPtrErr;
  if (srcLen < 1 || dstLen < 1) return orbStsSizeErr;
  Orb32s cursor = load(pSrcCursor);
  if (cursor < 0) return orbStsPackBitsDstErr;
  const bool isComplete = kernel::orbUnpackBits(pSrc, cursor, srcLen, pDst, dstLen);
  store(pSrcCursor, cursor);
  return isComplete ? orbStsNoErr : orbStsPackBitsDstErr;
}

OrbStatus ORB_CALL orbiSplitRow_TIFF_16u8u_C1(const Orb16u* pSrc, Orb8u* const pDst[2],
                                              Orb32s len) {
  if (!pSrc || !pDst) return orbStsNullPtrErr;
  if (len < 1) return orbStsStepErr;
  Orb8u* const high = load(pDst);
  Orb8u* const low = load(pDst + 1);
  if (!high || !low) return orbStsNullPtrErr;
  kernel::orbSplitBytes(pSrc, high, low, len);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiJoinRow_TIFF_8u16u_C1(const Orb8u* const pSrc[2], Orb16u* pDst, Orb32s len) {
  if (!pSrc || !pDst) return orbStsNullPtrErr;
  const Orb8u* const high = load(pSrc);
  const Orb8u* const low = load(pSrc + 1);
  if (!high || !low) return orbStsNullPtrErr;
  if (len < 1) return orbStsStepErr;
  kernel::orbJoinBytes(high, low, pDst, len);
  return orbStsNoErr;
}

}  // namespace orb::ORB_BUILD
