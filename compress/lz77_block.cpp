// The blocks of deflate: argument checks and cursors, then one call into a kernel.
#include "compress/px/lz77_block.h"

namespace orb::ORB_BUILD {

OrbStatus ORB_CALL orbsEncodeLZ77SelectHuffMode_8u(const OrbLZ77Pair* pPairs, Orb32s count,
                                                   OrbLZ77BlockMode* pMode,
                                                   OrbLZ77EncState* pState) {
  if (!pPairs || !pMode || !pState) return orbStsNullPtrErr;
  if (count < 0) return orbStsSizeErr;
  if (!pState->headerReady) {
    pState->selectedMode = kernel::orbSelectMode(*pState, pPairs, count);
    pState->headerReady = 1;
  }
  store(pMode, OrbLZ77BlockMode{pState->selectedMode});
  return orbStsNoErr;
}

// The two coders of pairs differ in their kernel only.
template <class Code>
static OrbStatus codePairs(OrbLZ77Pair** ppPairs, Orb32s* pPairsLen, Orb8u** ppDst, Orb32s* pDstLen,
                           OrbLZ77Flush flush, OrbLZ77EncState* pState, Code code) {
  if (!ppPairs || !ppDst || !pPairsLen || !pDstLen || !load(ppDst) || !pState) {
    return orbStsNullPtrErr;
  }
  if (load(pDstLen) < 0 || load(pPairsLen) < 0) return orbStsSizeErr;
  if (load(pDstLen) == 0) return kernel::stopForRoom(*pState);
  OrbLZ77Pair* const pairs = load(ppPairs);
  kernel::BlockCall call = {pairs, load(pPairsLen), flush, {load(ppDst), load(pDstLen), 0, 0}};
  const OrbStatus status = code(*pState, call);
  pState->bitAcc = call.out.acc;
  pState->bitCount = call.out.count;
  store(ppPairs, pairs + (call.pairs - pairs));
  store(pPairsLen, call.pairsLeft);
  store(ppDst, call.out.dst);
  store(pDstLen, call.out.room);
  return status;
}

OrbStatus ORB_CALL orbsEncodeLZ77FixedHuff_8u(OrbLZ77Pair** ppPairs, Orb32s* pPairsLen,
                                              Orb8u** ppDst, Orb32s* pDstLen, OrbLZ77Flush flush,
                                              OrbLZ77EncState* pState) {
  return codePairs(ppPairs, pPairsLen, ppDst, pDstLen, flush, pState, kernel::orbCodeFixed);
}

OrbStatus ORB_CALL orbsEncodeLZ77DynamicHuff_8u(OrbLZ77Pair** ppPairs, Orb32s* pPairsLen,
                                                Orb8u** ppDst, Orb32s* pDstLen, OrbLZ77Flush flush,
                                                OrbLZ77EncState* pState) {
  return codePairs(ppPairs, pPairsLen, ppDst, pDstLen, flush, pState, kernel::orbCodeDynamic);
}

OrbStatus ORB_CALL orbsEncodeLZ77StoredBlock_8u(Orb8u** ppSrc, Orb32s* pSrcLen, Orb8u** ppDst,
                                                Orb32s* pDstLen, OrbLZ77Flush flush,
                                                OrbLZ77EncState* pState) {
  if (!ppSrc || !ppDst || !pSrcLen || !pDstLen || !load(ppSrc) || !load(ppDst) || !pState) {
    return orbStsNullPtrErr;
  }
  Orb8u* const src = load(ppSrc);
  kernel::StoredCall call = {src, load(pSrcLen), flush, {load(ppDst), load(pDstLen), 0, 0}};
  // Less than nothing is nothing.
  if (call.srcLeft < 0) call.srcLeft = 0;
  if (call.out.room < 0) call.out.room = 0;
  const OrbStatus status = kernel::orbCodeStored(*pState, call);
  pState->bitAcc = pState->savedAcc = call.out.acc;
  pState->bitCount = pState->savedBitCount = call.out.count;
  store(ppSrc, src + (call.src - src));
  store(pSrcLen, call.srcLeft);
  store(ppDst, call.out.dst);
  store(pDstLen, call.out.room);
  return status;
}

OrbStatus ORB_CALL orbsEncodeLZ77Flush_8u(Orb8u** ppDst, Orb32s* pDstLen, OrbLZ77EncState* pState) {
  if (!ppDst || !pDstLen || !pState) return orbStsNullPtrErr;
  if (pState->cursor.phase != orbLZ77PhaseFinal) return orbStsErr;
  const Orb32s kind = pState->checksumKind;
  if (kind < orbLZ77ChecksumNone || kind > orbLZ77ChecksumCRC32) return orbStsErr;
  Orb32s room = load(pDstLen);
  if (room < 1) return orbStsDstFull;
  if (pState->blockState == kernel::kStreamEnded) kernel::orbMakeTail(*pState);
  Orb8u* dst = load(ppDst);
  const OrbStatus status = kernel::orbPutTail(*pState, dst, room);
  store(ppDst, dst);
  store(pDstLen, room);
  return status;
}

}  // namespace orb::ORB_BUILD
