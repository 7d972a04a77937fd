// The byte Huffman coder: argument checks, then one call into a kernel.
#include "compress/px/huffman.h"

namespace orb::ORB_BUILD {

static bool isBitOffset(Orb32s offset) {
  return offset >= 0 && offset <= 7;
}

OrbStatus ORB_CALL orbsHuffGetSize_8u(Orb32s* pSize) {
  if (!pSize) return orbStsNullPtrErr;
  store(pSize, Orb32s{sizeof(OrbHuffState)});
  return orbStsNoErr;
}

void ORB_CALL orbsHuffFree_8u(OrbHuffState* pState) {
  orbFree(pState);
}

// ---- Length tables

OrbStatus ORB_CALL orbsHuffGetLenCodeTable_8u(Orb32s* pCodeLenTable, const OrbHuffState* pState) {
  if (!pCodeLenTable || !pState) return orbStsNullPtrErr;
  for (int byte = 0; byte < 256; ++byte) {
    store(pCodeLenTable + byte, Orb32s{pState->codeLen[byte]});
  }
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbsHuffGetDstBuffSize_8u(const Orb32s* pCodeLenTable, Orb32s srcLen,
                                             Orb32s* pDstBytes, Orb32s* pMaxSymbols) {
  if (!pCodeLenTable) return orbStsNullPtrErr;
  if (srcLen < 1) return orbStsSizeErr;
  return kernel::orbGetHuffBufferSizes(pCodeLenTable, srcLen, pDstBytes, pMaxSymbols);
}

OrbStatus ORB_CALL orbsHuffLenCodeTablePack_8u(const Orb32s* pCodeLenTable, Orb8u* pDst,
                                               Orb32s* pDstLen) {
  if (!pCodeLenTable || !pDst || !pDstLen) return orbStsNullPtrErr;
  Orb32s dstLen = load(pDstLen);
  if (dstLen < 1) return orbStsSizeErr;
  const OrbStatus status = kernel::orbPackCodeLengths(pCodeLenTable, pDst, dstLen);
  store(pDstLen, dstLen);
  return status;
}

OrbStatus ORB_CALL orbsHuffLenCodeTableUnpack_8u(const Orb8u* pSrc, Orb32s* pSrcLen,
                                                 Orb32s* pCodeLenTable) {
  if (!pSrc || !pSrcLen || !pCodeLenTable) return orbStsNullPtrErr;
  Orb32s srcLen = load(pSrcLen);
  if (srcLen < 1) return orbStsSizeErr;
  const OrbStatus status = kernel::orbUnpackCodeLengths(pSrc, srcLen, pCodeLenTable);
  store(pSrcLen, srcLen);
  return status;
}

// ---- Encoder

OrbStatus ORB_CALL orbsEncodeHuffInit_8u(const Orb32s* pFreqTable, OrbHuffState* pState) {
  if (!pFreqTable || !pState) return orbStsNullPtrErr;
  return kernel::orbMakeHuffEncoder(pFreqTable, *pState);
}

// The pointer is stored before the frequencies are looked at, and even if there is no memory.
OrbStatus ORB_CALL orbsEncodeHuffInitAlloc_8u(const Orb32s* pFreqTable, OrbHuffState** ppState) {
  if (!ppState) return orbStsNullPtrErr;
  OrbHuffState* const state = static_cast<OrbHuffState*>(orbMalloc(sizeof(OrbHuffState)));
  store(ppState, state);
  return orbsEncodeHuffInit_8u(pFreqTable, state);
}

OrbStatus ORB_CALL orbsEncodeHuffOne_8u(Orb8u src, Orb8u* pDst, Orb32s dstBitOffset,
                                        const OrbHuffState* pState) {
  if (!pDst || !pState) return orbStsNullPtrErr;
  if (!isBitOffset(dstBitOffset)) return orbStsSizeErr;
  return kernel::orbEncodeHuffOne(src, pDst, dstBitOffset, *pState);
}

OrbStatus ORB_CALL orbsEncodeHuff_8u(const Orb8u* pSrc, Orb32s srcLen, Orb8u* pDst, Orb32s* pDstLen,
                                     OrbHuffState* pState) {
  if (!pSrc || !pDst || !pDstLen || !pState) return orbStsNullPtrErr;
  if (srcLen < 1) return orbStsSizeErr;
  store(pDstLen, kernel::orbEncodeHuff(pSrc, srcLen, pDst, *pState));
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbsEncodeHuffFinal_8u(Orb8u* pDst, Orb32s* pDstLen,
                                          const OrbHuffState* pState) {
  if (!pDst || !pDstLen || !pState) return orbStsNullPtrErr;
  store(pDstLen, kernel::orbEncodeHuffFinal(pDst, *pState));
  return orbStsNoErr;
}

// ---- Decoder

OrbStatus ORB_CALL orbsDecodeHuffInit_8u(const Orb32s* pCodeLenTable, OrbHuffState* pState) {
  if (!pCodeLenTable || !pState) return orbStsNullPtrErr;
  return kernel::orbMakeHuffDecoder(pCodeLenTable, *pState);
}

OrbStatus ORB_CALL orbsDecodeHuffInitAlloc_8u(const Orb32s* pCodeLenTable, OrbHuffState** ppState) {
  if (!pCodeLenTable || !ppState) return orbStsNullPtrErr;
  OrbHuffState* const state = static_cast<OrbHuffState*>(orbMalloc(sizeof(OrbHuffState)));
  store(ppState, state);
  return orbsDecodeHuffInit_8u(pCodeLenTable, state);
}

OrbStatus ORB_CALL orbsDecodeHuffOne_8u(const Orb8u* pSrc, Orb32s srcBitOffset, Orb8u* pDst,
                                        const OrbHuffState* pState) {
  if (!pSrc || !pDst || !pState) return orbStsNullPtrErr;
  if (!isBitOffset(srcBitOffset)) return orbStsSizeErr;
  return kernel::orbDecodeHuffOne(pSrc, srcBitOffset, pDst, *pState);
}

OrbStatus ORB_CALL orbsDecodeHuff_8u(const Orb8u* pSrc, Orb32s srcLen, Orb8u* pDst, Orb32s* pDstLen,
                                     OrbHuffState* pState) {
  if (!pSrc || !pDst || !pDstLen || !pState) return orbStsNullPtrErr;
  const Orb32s room = load(pDstLen);
  if (srcLen < 1 || room < 1) return orbStsSizeErr;
  store(pDstLen, kernel::orbDecodeHuff(pSrc, srcLen, pDst, room, *pState));
  return orbStsNoErr;
}

}  // namespace orb::ORB_BUILD
