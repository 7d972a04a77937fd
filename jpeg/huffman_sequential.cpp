// Sequential Huffman block coding: argument checks, then one call into a kernel.
#include "jpeg/px/huffman_sequential.h"

namespace orb::ORB_BUILD {

OrbStatus ORB_CALL orbiEncodeHuffman8x8_JPEG_16s1u_C1(
    const Orb16s* pSrc, Orb8u* pDst, Orb32s dstLenBytes, Orb32s* pDstCurrPos, Orb16s* pLastDC,
    const OrbiEncodeHuffmanSpec* pDcTable, const OrbiEncodeHuffmanSpec* pAcTable,
    OrbiEncodeHuffmanState* pEncHuffState, Orb32s bFlush) {
  if (!pDst) return orbStsNullPtrErr;
  if (dstLenBytes < 1) return orbStsSizeErr;
  if (!pDstCurrPos || !pEncHuffState) return orbStsNullPtrErr;
  kernel::BitWriter writer(pDst, dstLenBytes, pDstCurrPos, *pEncHuffState);
  if (bFlush != 0) return kernel::orbFlushBits(writer, pDstCurrPos, *pEncHuffState);
  if (!pSrc || !pLastDC || !pDcTable || !pAcTable) return orbStsNullPtrErr;
  const OrbStatus status = kernel::orbEncodeBlock(pSrc, pLastDC, *pDcTable, *pAcTable, writer);
  writer.close(pDstCurrPos, *pEncHuffState);
  return status;
}

OrbStatus ORB_CALL orbiEncodeHuffman8x8_Direct_JPEG_16s1u_C1(
    const Orb16s* pSrc, Orb8u* pDst, Orb32s* pDstBitsLen, Orb16s* pLastDC,
    const OrbiEncodeHuffmanSpec* pDcTable, const OrbiEncodeHuffmanSpec* pAcTable) {
  if (!pSrc || !pDst || !pDstBitsLen || !pLastDC || !pDcTable || !pAcTable) {
    return orbStsNullPtrErr;
  }
  Orb32s bitPosition = load(pDstBitsLen);
  kernel::orbEncodeBlockDirect(pSrc, pDst, bitPosition, pLastDC, *pDcTable, *pAcTable);
  store(pDstBitsLen, bitPosition);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDecodeHuffman8x8_JPEG_1u16s_C1(const Orb8u* pSrc, Orb32s srcLenBytes,
                                                      Orb32s* pSrcCurrPos, Orb16s* pDst,
                                                      Orb16s* pLastDC, Orb32s* pMarker,
                                                      const OrbiDecodeHuffmanSpec* pDcTable,
                                                      const OrbiDecodeHuffmanSpec* pAcTable,
                                                      OrbiDecodeHuffmanState* pDecHuffState) {
  if (!pSrc) return orbStsNullPtrErr;
  if (srcLenBytes < 0) return orbStsBadArgErr;
  if (!pSrcCurrPos || !pDst || !pLastDC || !pMarker || !pDcTable || !pAcTable || !pDecHuffState) {
    return orbStsNullPtrErr;
  }
  kernel::BitReader reader(pSrc, srcLenBytes, pSrcCurrPos, pMarker, *pDecHuffState);
  Orb32s lastPosition = pDecHuffState->lastPosition;
  const OrbStatus status =
      kernel::orbDecodeBlock(reader, pDst, pLastDC, *pDcTable, *pAcTable, lastPosition);
  reader.close(pSrcCurrPos, pMarker, *pDecHuffState);
  pDecHuffState->lastPosition = lastPosition;
  return status;
}

OrbStatus ORB_CALL orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1(
    const Orb8u* pSrc, Orb32s* pSrcBitsLen, Orb16s* pDst, Orb16s* pLastDC, Orb32s* pMarker,
    Orb32u* pPrefetchedBits, Orb32s* pNumValidPrefetchedBits, const OrbiDecodeHuffmanSpec* pDcTable,
    const OrbiDecodeHuffmanSpec* pAcTable) {
  if (!pSrc || !pSrcBitsLen) return orbStsNullPtrErr;
  if (load(pSrcBitsLen) < 0) return orbStsBadArgErr;
  if (!pDst || !pLastDC || !pMarker || !pPrefetchedBits || !pNumValidPrefetchedBits) {
    return orbStsNullPtrErr;
  }
  if (load(pNumValidPrefetchedBits) < 0) return orbStsBadArgErr;
  if (!pDcTable || !pAcTable) return orbStsNullPtrErr;
  kernel::DirectReader reader = {pSrc + (load(pSrcBitsLen) >> 3), load(pMarker),
                                 load(pPrefetchedBits), load(pNumValidPrefetchedBits)};
  Orb32s lastPosition = 0;
  OrbStatus status =
      kernel::orbDecodeBlock(reader, pDst, pLastDC, *pDcTable, *pAcTable, lastPosition);
  if (status == orbStsNoOperation) {
    reader.bitCount = 0;
    status = orbStsNoErr;
  }
  store(pSrcBitsLen, static_cast<Orb32s>(reader.at - pSrc) * 8);
  store(pMarker, reader.marker);
  store(pPrefetchedBits, reader.bitBuffer);
  store(pNumValidPrefetchedBits, reader.bitCount);
  return status;
}

OrbStatus ORB_CALL orbiGetHuffmanStatistics8x8_JPEG_16s_C1(const Orb16s* pSrc,
                                                           Orb32s* pDcStatistics,
                                                           Orb32s* pAcStatistics, Orb16s* pLastDC) {
  if (!pSrc || !pDcStatistics || !pAcStatistics || !pLastDC) return orbStsNullPtrErr;
  return kernel::orbCountBlock(pSrc, pDcStatistics, pAcStatistics, pLastDC);
}

}  // namespace orb::ORB_BUILD
