// The blocks of a deflate stream: argument checks, then one call into a kernel.
#include "compress/px/inflate_blocks.h"

#include "compress/px/inflate_stored.h"

namespace orb::ORB_BUILD {

OrbStatus ORB_CALL orbsDecodeLZ77GetBlockType_8u(Orb8u** ppSrc, Orb32s* pSrcLen,
                                                 OrbLZ77BlockMode* pBlockMode,
                                                 OrbLZ77DecState* pState) {
  if (!ppSrc || !pSrcLen || !pBlockMode || !pState || !load(ppSrc)) return orbStsNullPtrErr;
  kernel::BitSource in(ppSrc, pSrcLen, *pState);
  const OrbStatus status = kernel::orbReadBlockType(*pState, in, pBlockMode);
  in.close(ppSrc, pSrcLen, *pState);
  return status;
}

// ---- To pairs

static OrbStatus inflateToPairs(OrbLZ77BlockMode kind, Orb8u** ppSrc, Orb32s* pSrcLen,
                                OrbLZ77Pair** ppPairs, Orb32s* pPairsLen, OrbLZ77Flush flush,
                                OrbLZ77DecState* pState) {
  if (!ppSrc || !ppPairs || !pState || !pSrcLen || !pPairsLen) return orbStsNullPtrErr;
  if (load(pSrcLen) < 0 || load(pPairsLen) < 0) return orbStsSizeErr;
  kernel::BitSource in(ppSrc, pSrcLen, *pState);
  OrbStatus status;
  if (flush == orbLZ77FlushSync || flush == orbLZ77FlushRestart) {
    status = kernel::orbFindMarker(in);
  } else {
    kernel::PairOutput out(ppPairs, pPairsLen);
    status = out.isFull() ? orbStsDstFull : kernel::orbInflateBlock(*pState, kind, in, out);
    out.close(ppPairs, pPairsLen);
  }
  in.close(ppSrc, pSrcLen, *pState);
  return status;
}

OrbStatus ORB_CALL orbsDecodeLZ77FixedHuff_8u(Orb8u** ppSrc, Orb32s* pSrcLen, OrbLZ77Pair** ppPairs,
                                              Orb32s* pPairsLen, OrbLZ77Flush flush,
                                              OrbLZ77DecState* pState) {
  return inflateToPairs(orbLZ77BlockFixed, ppSrc, pSrcLen, ppPairs, pPairsLen, flush, pState);
}

OrbStatus ORB_CALL orbsDecodeLZ77DynamicHuff_8u(Orb8u** ppSrc, Orb32s* pSrcLen,
                                                OrbLZ77Pair** ppPairs, Orb32s* pPairsLen,
                                                OrbLZ77Flush flush, OrbLZ77DecState* pState) {
  return inflateToPairs(orbLZ77BlockDynamic, ppSrc, pSrcLen, ppPairs, pPairsLen, flush, pState);
}

OrbStatus ORB_CALL orbsDecodeLZ77StoredHuff_8u(Orb8u** ppSrc, Orb32s* pSrcLen,
                                               OrbLZ77Pair** ppPairs, Orb32s* pPairsLen,
                                               OrbLZ77DecState* pState) {
  if (!ppSrc || !ppPairs || !pSrcLen || !pPairsLen || !pState) return orbStsNullPtrErr;
  if (!load(ppSrc) || !load(ppPairs)) return orbStsNullPtrErr;
  if (load(pSrcLen) < 0 || load(pPairsLen) < 0) return orbStsSizeErr;
  kernel::BitSource in(ppSrc, pSrcLen, *pState);
  kernel::PairOutput out(ppPairs, pPairsLen);
  const OrbStatus status = kernel::orbInflateStoredToPairs(*pState, in, out);
  in.close(ppSrc, pSrcLen, *pState);
  out.close(ppPairs, pPairsLen);
  return status;
}

// ---- To bytes

static OrbStatus inflateToBytes(OrbLZ77BlockMode kind, Orb8u** ppSrc, Orb32s* pSrcLen,
                                Orb8u** ppDst, Orb32s* pDstLen, OrbLZ77DecState* pState) {
  if (!ppSrc || !ppDst || !pState || !pSrcLen || !pDstLen) return orbStsNullPtrErr;
  if (!load(ppSrc) || !load(ppDst)) return orbStsNullPtrErr;
  if (load(pSrcLen) < 0 || load(pDstLen) < 0) return orbStsSizeErr;
  if (load(pDstLen) == 0) return orbStsDstFull;
  kernel::BitSource in(ppSrc, pSrcLen, *pState);
  const kernel::History ring = kernel::ringOf(*pState);
  kernel::ByteOutput out(ppDst, pDstLen, ring, *pState);
  out.putPending();
  const OrbStatus status = kernel::orbInflateBlock(*pState, kind, in, out);
  if (status != orbStsStreamEnd) kernel::appendToRing(*pState, out.begin, out.at - out.begin);
  in.close(ppSrc, pSrcLen, *pState);
  out.close(ppDst, pDstLen);
  return status;
}

OrbStatus ORB_CALL orbsDecodeLZ77FixedHuffFull_8u(Orb8u** ppSrc, Orb32s* pSrcLen, Orb8u** ppDst,
                                                  Orb32s* pDstLen, OrbLZ77Flush,
                                                  OrbLZ77DecState* pState) {
  return inflateToBytes(orbLZ77BlockFixed, ppSrc, pSrcLen, ppDst, pDstLen, pState);
}

OrbStatus ORB_CALL orbsDecodeLZ77DynamicHuffFull_8u(Orb8u** ppSrc, Orb32s* pSrcLen, Orb8u** ppDst,
                                                    Orb32s* pDstLen, OrbLZ77Flush,
                                                    OrbLZ77DecState* pState) {
  return inflateToBytes(orbLZ77BlockDynamic, ppSrc, pSrcLen, ppDst, pDstLen, pState);
}

OrbStatus ORB_CALL orbsDecodeLZ77StoredBlock_8u(Orb8u** ppSrc, Orb32s* pSrcLen, Orb8u** ppDst,
                                                Orb32s* pDstLen, OrbLZ77DecState* pState) {
  if (!ppSrc || !ppDst || !pSrcLen || !pDstLen || !pState) return orbStsNullPtrErr;
  if (!load(ppSrc) || !load(ppDst)) return orbStsNullPtrErr;
  const Orb32s room = load(pDstLen);
  if (room < 1) return orbStsDstFull;
  kernel::BitSource in(ppSrc, pSrcLen, *pState);
  Orb8u* at = load(ppDst);
  const OrbStatus status = kernel::orbInflateStored(*pState, in, at, at + room);
  in.close(ppSrc, pSrcLen, *pState);
  store(pDstLen, static_cast<Orb32s>(room - (at - load(ppDst))));
  store(ppDst, at);
  return status;
}

}  // namespace orb::ORB_BUILD
