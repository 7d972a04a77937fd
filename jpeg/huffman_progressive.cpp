// Progressive Huffman block coding: argument checks, then one call into a kernel.
#include "jpeg/px/huffman_progressive.h"

namespace orb::ORB_BUILD {

static bool isShift(Orb32u al) {
  return al <= 13;
}

static bool isBand(Orb32s ss, Orb32s se, Orb32u al) {
  return ss >= 1 && ss <= se && se <= 63 && isShift(al);
}

static kernel::Band bandOf(Orb32s ss, Orb32s se, Orb32u al) {
  return {ss, se, static_cast<Orb32s>(al)};
}

// ---- Encoding

OrbStatus ORB_CALL orbiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(
    const Orb16s* pSrc, Orb8u* pDst, Orb32s dstLenBytes, Orb32s* pDstCurrPos, Orb16s* pLastDC,
    Orb32u Al, const OrbiEncodeHuffmanSpec* pDcTable, OrbiEncodeHuffmanState* pEncHuffState,
    Orb32s bFlush) {
  if (!pDst) return orbStsNullPtrErr;
  if (dstLenBytes < 1) return orbStsSizeErr;
  if (!pDstCurrPos || !pEncHuffState) return orbStsNullPtrErr;
  kernel::BitWriter writer(pDst, dstLenBytes, pDstCurrPos, *pEncHuffState);
  if (bFlush != 0) return kernel::orbFlushBits(writer, pDstCurrPos, *pEncHuffState);
  if (!pSrc || !pLastDC) return orbStsNullPtrErr;
  if (!isShift(Al)) return orbStsBadArgErr;
  if (!pDcTable) return orbStsNullPtrErr;
  const OrbStatus status =
      kernel::orbEncodeDCFirst(pSrc, static_cast<Orb32s>(Al), pLastDC, *pDcTable, writer);
  writer.close(pDstCurrPos, *pEncHuffState);
  return status;
}

OrbStatus ORB_CALL orbiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(
    const Orb16s* pSrc, Orb8u* pDst, Orb32s dstLenBytes, Orb32s* pDstCurrPos, Orb32u Al,
    OrbiEncodeHuffmanState* pEncHuffState, Orb32s bFlush) {
  if (!pDst) return orbStsNullPtrErr;
  if (dstLenBytes < 1) return orbStsSizeErr;
  if (!pDstCurrPos || !pEncHuffState) return orbStsNullPtrErr;
  kernel::BitWriter writer(pDst, dstLenBytes, pDstCurrPos, *pEncHuffState);
  if (bFlush != 0) return kernel::orbFlushBits(writer, pDstCurrPos, *pEncHuffState);
  if (!pSrc) return orbStsNullPtrErr;
  if (!isShift(Al)) return orbStsBadArgErr;
  const OrbStatus status = kernel::orbJpegPutBits(writer, load(pSrc) >> Al, 1);
  writer.close(pDstCurrPos, *pEncHuffState);
  return status;
}

OrbStatus ORB_CALL orbiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(
    const Orb16s* pSrc, Orb8u* pDst, Orb32s dstLenBytes, Orb32s* pDstCurrPos, Orb32s Ss, Orb32s Se,
    Orb32u Al, const OrbiEncodeHuffmanSpec* pAcTable, OrbiEncodeHuffmanState* pEncHuffState,
    Orb32s bFlush) {
  if (!pDst) return orbStsNullPtrErr;
  if (dstLenBytes < 1) return orbStsSizeErr;
  if (!pDstCurrPos || !pEncHuffState || !pAcTable) return orbStsNullPtrErr;
  kernel::BitWriter writer(pDst, dstLenBytes, pDstCurrPos, *pEncHuffState);
  if (bFlush != 0) {
    // A failure of what is pending does not come out of this form.
    kernel::orbEncodePending(*pAcTable, *pEncHuffState, writer);
    return kernel::orbFlushBits(writer, pDstCurrPos, *pEncHuffState);
  }
  if (!pSrc) return orbStsNullPtrErr;
  if (!isBand(Ss, Se, Al)) return orbStsBadArgErr;
  const OrbStatus status =
      kernel::orbEncodeACFirst(pSrc, bandOf(Ss, Se, Al), *pAcTable, *pEncHuffState, writer);
  writer.close(pDstCurrPos, *pEncHuffState);
  return status;
}

OrbStatus ORB_CALL orbiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(
    const Orb16s* pSrc, Orb8u* pDst, Orb32s dstLenBytes, Orb32s* pDstCurrPos, Orb32s Ss, Orb32s Se,
    Orb32u Al, const OrbiEncodeHuffmanSpec* pAcTable, OrbiEncodeHuffmanState* pEncHuffState,
    Orb32s bFlush) {
  if (!pDst) return orbStsNullPtrErr;
  if (dstLenBytes < 1) return orbStsSizeErr;
  if (!pDstCurrPos || !pEncHuffState || !pAcTable) return orbStsNullPtrErr;
  kernel::BitWriter writer(pDst, dstLenBytes, pDstCurrPos, *pEncHuffState);
  if (bFlush != 0) {
    const OrbStatus pending = kernel::orbEncodePending(*pAcTable, *pEncHuffState, writer);
    const OrbStatus last = kernel::orbFlushBits(writer, pDstCurrPos, *pEncHuffState);
    return pending != orbStsNoErr ? pending : last;
  }
  if (!pSrc) return orbStsNullPtrErr;
  if (!isBand(Ss, Se, Al)) return orbStsBadArgErr;
  const OrbStatus status =
      kernel::orbEncodeACRefine(pSrc, bandOf(Ss, Se, Al), *pAcTable, *pEncHuffState, writer);
  writer.close(pDstCurrPos, *pEncHuffState);
  return status;
}

// ---- Decoding

OrbStatus ORB_CALL orbiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(
    const Orb8u* pSrc, Orb32s srcLenBytes, Orb32s* pSrcCurrPos, Orb16s* pDst, Orb16s* pLastDC,
    Orb32s* pMarker, Orb32u Al, const OrbiDecodeHuffmanSpec* pDcTable,
    OrbiDecodeHuffmanState* pDecHuffState) {
  if (!pSrc) return orbStsNullPtrErr;
  if (srcLenBytes < 1) return orbStsSizeErr;
  if (!pSrcCurrPos || !pDst || !pLastDC || !pMarker) return orbStsNullPtrErr;
  if (!isShift(Al)) return orbStsBadArgErr;
  if (!pDcTable || !pDecHuffState) return orbStsNullPtrErr;
  kernel::BitReader reader(pSrc, srcLenBytes, pSrcCurrPos, pMarker, *pDecHuffState);
  const OrbStatus status =
      kernel::orbDecodeDCFirst(reader, pDst, pLastDC, static_cast<Orb32s>(Al), *pDcTable);
  reader.close(pSrcCurrPos, pMarker, *pDecHuffState);
  return status;
}

OrbStatus ORB_CALL orbiDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(
    const Orb8u* pSrc, Orb32s srcLenBytes, Orb32s* pSrcCurrPos, Orb16s* pDst, Orb32s* pMarker,
    Orb32u Al, OrbiDecodeHuffmanState* pDecHuffState) {
  if (!pSrc) return orbStsNullPtrErr;
  if (srcLenBytes < 1) return orbStsSizeErr;
  if (!pSrcCurrPos || !pDst || !pMarker) return orbStsNullPtrErr;
  if (!isShift(Al)) return orbStsBadArgErr;
  if (!pDecHuffState) return orbStsNullPtrErr;
  kernel::BitReader reader(pSrc, srcLenBytes, pSrcCurrPos, pMarker, *pDecHuffState);
  const OrbStatus status = kernel::orbDecodeDCRefine(reader, pDst, static_cast<Orb32s>(Al));
  reader.close(pSrcCurrPos, pMarker, *pDecHuffState);
  return status;
}

OrbStatus ORB_CALL orbiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(
    const Orb8u* pSrc, Orb32s srcLenBytes, Orb32s* pSrcCurrPos, Orb16s* pDst, Orb32s* pMarker,
    Orb32s Ss, Orb32s Se, Orb32u Al, const OrbiDecodeHuffmanSpec* pAcTable,
    OrbiDecodeHuffmanState* pDecHuffState) {
  if (!pSrc) return orbStsNullPtrErr;
  if (srcLenBytes < 1) return orbStsSizeErr;
  if (!pSrcCurrPos || !pDst || !pMarker) return orbStsNullPtrErr;
  if (!isBand(Ss, Se, Al)) return orbStsBadArgErr;
  if (!pAcTable || !pDecHuffState) return orbStsNullPtrErr;
  Orb32s run = pDecHuffState->eobRun;
  if (run >= 1) {
    pDecHuffState->eobRun = run - 1;
    return orbStsNoErr;
  }
  kernel::BitReader reader(pSrc, srcLenBytes, pSrcCurrPos, pMarker, *pDecHuffState);
  const OrbStatus status =
      kernel::orbDecodeACFirst(reader, pDst, bandOf(Ss, Se, Al), *pAcTable, run);
  reader.close(pSrcCurrPos, pMarker, *pDecHuffState);
  pDecHuffState->eobRun = run;
  return status;
}

OrbStatus ORB_CALL orbiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(
    const Orb8u* pSrc, Orb32s srcLenBytes, Orb32s* pSrcCurrPos, Orb16s* pDst, Orb32s* pMarker,
    Orb32s Ss, Orb32s Se, Orb32u Al, const OrbiDecodeHuffmanSpec* pAcTable,
    OrbiDecodeHuffmanState* pDecHuffState) {
  if (!pSrc) return orbStsNullPtrErr;
  if (srcLenBytes < 1) return orbStsSizeErr;
  if (!pSrcCurrPos || !pDst || !pMarker) return orbStsNullPtrErr;
  if (!isBand(Ss, Se, Al)) return orbStsBadArgErr;
  if (!pAcTable || !pDecHuffState) return orbStsNullPtrErr;
  kernel::BitReader reader(pSrc, srcLenBytes, pSrcCurrPos, pMarker, *pDecHuffState);
  Orb32s run = pDecHuffState->eobRun;
  const OrbStatus status =
      kernel::orbDecodeACRefine(reader, pDst, bandOf(Ss, Se, Al), *pAcTable, run);
  reader.close(pSrcCurrPos, pMarker, *pDecHuffState);
  pDecHuffState->eobRun = run;
  return status;
}

// ---- Statistics

OrbStatus ORB_CALL orbiGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1(const Orb16s* pSrc,
                                                                   Orb32s* pDcStatistics,
                                                                   Orb16s* pLastDC, Orb32u Al) {
  if (!pSrc || !pDcStatistics || !pLastDC) return orbStsNullPtrErr;
  if (!isShift(Al)) return orbStsBadArgErr;
  kernel::ProgressiveCounter counter = {pDcStatistics};
  return kernel::orbCodeDCFirst(pSrc, static_cast<Orb32s>(Al), pLastDC, counter);
}

// Counts the pending run, and sets the state to the start of a scan whether or not it can be coded.
static OrbStatus countPending(kernel::ProgressiveCounter counter, OrbiEncodeHuffmanState* state) {
  const OrbStatus status = kernel::orbJpegEmitEobRun(*state, counter);
  orbZero(state, sizeof *state);
  return status;
}

OrbStatus ORB_CALL orbiGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(
    const Orb16s* pSrc, Orb32s* pAcStatistics, Orb32s Ss, Orb32s Se, Orb32u Al,
    OrbiEncodeHuffmanState* pEncHuffState, Orb32s bFlush) {
  if (!pAcStatistics || !pEncHuffState) return orbStsNullPtrErr;
  kernel::ProgressiveCounter counter = {pAcStatistics};
  if (bFlush != 0) return countPending(counter, pEncHuffState);
  if (!pSrc) return orbStsNullPtrErr;
  if (!isBand(Ss, Se, Al)) return orbStsBadArgErr;
  return kernel::orbCodeACFirst(pSrc, bandOf(Ss, Se, Al), *pEncHuffState, counter);
}

OrbStatus ORB_CALL orbiGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(
    const Orb16s* pSrc, Orb32s* pAcStatistics, Orb32s Ss, Orb32s Se, Orb32u Al,
    OrbiEncodeHuffmanState* pEncHuffState, Orb32s bFlush) {
  if (!pAcStatistics || !pEncHuffState) return orbStsNullPtrErr;
  kernel::ProgressiveCounter counter = {pAcStatistics};
  if (bFlush != 0) return countPending(counter, pEncHuffState);
  if (!pSrc) return orbStsNullPtrErr;
  if (!isBand(Ss, Se, Al)) return orbStsBadArgErr;
  return kernel::orbCodeACRefine(pSrc, bandOf(Ss, Se, Al), *pEncHuffState, counter);
}

}  // namespace orb::ORB_BUILD
