// Lossless row coding: argument checks, then one call into a kernel.
#include "jpeg/px/huffman_lossless.h"

namespace orb::ORB_BUILD {

// What a scan may interleave.
static Orb32s atMostFour(Orb32s rows) {
  return rows < 4 ? rows : 4;
}

template <class Row, class Table>
static bool anyNull(Row* const* rows, const Table* const* tables, Orb32s count) {
  for (Orb32s c = 0; c < count; ++c) {
    if (!rows[c] || !tables[c]) return true;
  }
  return false;
}

OrbStatus ORB_CALL orbiEncodeHuffmanOne_JPEG_16s1u_C1(const Orb16s* pSrc, Orb8u* pDst,
                                                      Orb32s dstLenBytes, Orb32s* pDstCurrPos,
                                                      const OrbiEncodeHuffmanSpec* pDcTable,
                                                      OrbiEncodeHuffmanState* pEncHuffState,
                                                      Orb32s bFlush) {
  if (!pDst) return orbStsNullPtrErr;
  if (dstLenBytes < 1) return orbStsSizeErr;
  if (!pDstCurrPos || !pEncHuffState) return orbStsNullPtrErr;
  kernel::BitWriter writer(pDst, dstLenBytes, pDstCurrPos, *pEncHuffState);
  if (bFlush != 0) return kernel::orbFlushBits(writer, pDstCurrPos, *pEncHuffState);
  if (!pSrc || !pDcTable) return orbStsNullPtrErr;
  const OrbStatus status = kernel::orbEncodeDifference(writer, load(pSrc), *pDcTable);
  writer.close(pDstCurrPos, *pEncHuffState);
  return status;
}

OrbStatus ORB_CALL orbiEncodeHuffmanRow_JPEG_16s1u_P4C1(
    const Orb16s* const pSrc[], Orb32s nSrcLen, Orb32s nSrcRows, Orb8u* pDst, Orb32s dstLenBytes,
    Orb32s* pDstCurrPos, const OrbiEncodeHuffmanSpec* const pDcTables[],
    OrbiEncodeHuffmanState* pEncHuffState, Orb32s bFlush) {
  if (!pDst) return orbStsNullPtrErr;
  if (dstLenBytes < 1) return orbStsSizeErr;
  if (!pDstCurrPos || !pEncHuffState) return orbStsNullPtrErr;
  kernel::BitWriter writer(pDst, dstLenBytes, pDstCurrPos, *pEncHuffState);
  if (bFlush != 0) return kernel::orbFlushBits(writer, pDstCurrPos, *pEncHuffState);
  if (!pSrc) return orbStsNullPtrErr;
  if (nSrcLen < 1 || nSrcRows < 1) return orbStsSizeErr;
  const Orb32s rows = atMostFour(nSrcRows);
  if (!pDcTables || anyNull(pSrc, pDcTables, rows)) return orbStsNullPtrErr;
  const OrbStatus status = kernel::orbEncodeRows(writer, pSrc, nSrcLen, rows, pDcTables);
  writer.close(pDstCurrPos, *pEncHuffState);
  return status;
}

OrbStatus ORB_CALL orbiDecodeHuffmanOne_JPEG_1u16s_C1(const Orb8u* pSrc, Orb32s srcLenBytes,
                                                      Orb32s* pSrcCurrPos, Orb16s* pDst,
                                                      Orb32s* pMarker,
                                                      const OrbiDecodeHuffmanSpec* pDcTable,
                                                      OrbiDecodeHuffmanState* pDecHuffState) {
  if (!pSrc) return orbStsNullPtrErr;
  if (srcLenBytes < 1) return orbStsSizeErr;
  if (!pSrcCurrPos || !pDst || !pMarker || !pDcTable || !pDecHuffState) return orbStsNullPtrErr;
  kernel::BitReader reader(pSrc, srcLenBytes, pSrcCurrPos, pMarker, *pDecHuffState);
  const OrbStatus status = kernel::orbDecodeDifference(reader, pDst, *pDcTable);
  reader.close(pSrcCurrPos, pMarker, *pDecHuffState);
  return status;
}

OrbStatus ORB_CALL orbiDecodeHuffmanRow_JPEG_1u16s_C1P4(
    const Orb8u* pSrc, Orb32s srcLenBytes, Orb32s* pSrcCurrPos, Orb16s* const pDst[],
    Orb32s nDstLen, Orb32s nDstRows, Orb32s* pMarker,
    const OrbiDecodeHuffmanSpec* const pDcTables[], OrbiDecodeHuffmanState* pDecHuffState) {
  if (!pSrc) return orbStsNullPtrErr;
  if (srcLenBytes < 1) return orbStsSizeErr;
  if (!pSrcCurrPos || !pDst) return orbStsNullPtrErr;
  if (nDstLen < 1 || nDstRows < 1) return orbStsSizeErr;
  const Orb32s rows = atMostFour(nDstRows);
  if (!pMarker || !pDcTables || !pDecHuffState || anyNull(pDst, pDcTables, rows)) {
    return orbStsNullPtrErr;
  }
  kernel::BitReader reader(pSrc, srcLenBytes, pSrcCurrPos, pMarker, *pDecHuffState);
  const OrbStatus status = kernel::orbDecodeRows(reader, pDst, nDstLen, rows, pDcTables);
  reader.close(pSrcCurrPos, pMarker, *pDecHuffState);
  return status;
}

OrbStatus ORB_CALL orbiGetHuffmanStatisticsOne_JPEG_16s_C1(const Orb16s* pSrc,
                                                           Orb32s* pDcStatistics) {
  if (!pSrc || !pDcStatistics) return orbStsNullPtrErr;
  Orb32s* const statistic = pDcStatistics + kernel::magnitudeOf(load(pSrc)).category;
  store(statistic, load(statistic) + 1);
  return orbStsNoErr;
}

}  // namespace orb::ORB_BUILD
