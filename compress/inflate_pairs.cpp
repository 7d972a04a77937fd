// Pairs to bytes: argument checks, then one call into a kernel.
#include "compress/px/inflate_pairs.h"

namespace orb::ORB_BUILD {

OrbStatus ORB_CALL orbsDecodeLZ77_8u(OrbLZ77Pair** ppPairs, Orb32s* pPairsLen, Orb8u** ppDst,
                                     Orb32s* pDstLen, OrbLZ77Flush, OrbLZ77DecState* pState) {
  if (!ppPairs || !ppDst || !pState || !pPairsLen || !pDstLen) return orbStsNullPtrErr;
  const Orb32s count = load(pPairsLen);
  if (load(pDstLen) < 0 || count < 0) return orbStsSizeErr;
  if (count == 0) return orbStsNoErr;
  if (load(pDstLen) == 0) return orbStsDstFull;
  OrbLZ77Pair* pairs = load(ppPairs);
  const OrbLZ77Pair* const end = pairs + count;
  const kernel::History window = kernel::windowOf(*pState);
  kernel::ByteOutput out(ppDst, pDstLen, window, *pState);
  OrbStatus status = kernel::orbExpandPairs(pairs, end, out);
  if (status == orbStsNoErr && pState->streamEnded == 1) {
    status = orbStsStreamEnd;
  } else {
    kernel::appendToWindow(*pState, out.begin, out.at - out.begin);
  }
  store(ppPairs, pairs);
  store(pPairsLen, static_cast<Orb32s>(end - pairs));
  out.close(ppDst, pDstLen);
  return status;
}

}  // namespace orb::ORB_BUILD
