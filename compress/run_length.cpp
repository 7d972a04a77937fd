// Run-length coding: argument checks, then one call into a kernel.
#include "compress/px/run_length.h"

#include "frame/memory_access.h"

namespace orb::ORB_BUILD {

template <class Coder>
static OrbStatus codeRuns(Orb8u** ppSrc, Orb32s* pSrcLen, Orb8u* pDst, Orb32s* pDstLen,
                          Coder code) {
  Orb8u* const src = load(ppSrc);
  const Orb32s srcLen = load(pSrcLen);
  const kernel::RunLengthResult result = code(src, srcLen, pDst, load(pDstLen));
  store(ppSrc, src + result.read);
  store(pSrcLen, srcLen - result.read);
  store(pDstLen, Orb32s{result.written});
  return result.status;
}

static bool isAnyNull(Orb8u** ppSrc, Orb32s* pSrcLen, Orb8u* pDst, Orb32s* pDstLen) {
  return !ppSrc || !pDst || !pSrcLen || !pDstLen || !load(ppSrc);
}

OrbStatus ORB_CALL orbsEncodeRLE_8u(Orb8u** ppSrc, Orb32s* pSrcLen, Orb8u* pDst, Orb32s* pDstLen) {
  if (isAnyNull(ppSrc, pSrcLen, pDst, pDstLen)) return orbStsNullPtrErr;
  if (load(pSrcLen) < 1 || load(pDstLen) < 1) return orbStsSizeErr;
  return codeRuns(ppSrc, pSrcLen, pDst, pDstLen, kernel::orbEncodeRLE);
}

OrbStatus ORB_CALL orbsDecodeRLE_8u(Orb8u** ppSrc, Orb32s* pSrcLen, Orb8u* pDst, Orb32s* pDstLen) {
  if (isAnyNull(ppSrc, pSrcLen, pDst, pDstLen)) return orbStsNullPtrErr;
  if (load(pSrcLen) < 1 || load(pDstLen) < 1) return orbStsSizeErr;
  return codeRuns(ppSrc, pSrcLen, pDst, pDstLen, kernel::orbDecodeRLE);
}

OrbStatus ORB_CALL orbsDecodeRLE_BZ2_8u(Orb8u** ppSrc, Orb32s* pSrcLen, Orb8u* pDst,
                                        Orb32s* pDstLen) {
  if (isAnyNull(ppSrc, pSrcLen, pDst, pDstLen)) return orbStsNullPtrErr;
  if (load(pDstLen) < 1 || load(pSrcLen) < 0) return orbStsSizeErr;
  return codeRuns(ppSrc, pSrcLen, pDst, pDstLen, kernel::orbDecodeRLEBZ2);
}

}  // namespace orb::ORB_BUILD
