/* JPEG block primitives: everything between samples and the entropy-coded bytes of a scan of
 * ITU-T T.81. The host owns tables, blocks, the loop over them, markers and the file.
 *
 * A block is 64 contiguous values in raster order unless a note says zigzag.
 */
#ifndef ORB90LEGACY_JPEG_H
#define ORB90LEGACY_JPEG_H

#include "orb90legacy/status.h"
#include "orb90legacy/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------------------------------
 * Level shift and quantisation (T.81 A.3.1, A.3.4)
 *
 * A raw table is what a DQT segment stores: 64 divisors of 8 bits in zigzag order. A forward table
 * holds the reciprocals of the divisors in 1.15 fixed point (32768 for a divisor of 1), an inverse
 * table the divisors themselves; both are unsigned 16-bit and in raster order.
 * ---------------------------------------------------------------------------------------------- */

/* Adds 128 to each sample of the region and limits the sum to 0..255; or subtracts 128 from each.
 * Steps are in bytes: a tight 16-bit row of width 8 has a step of 16.
 *
 * Returns orbStsNullPtrErr for pSrc, orbStsStepErr if srcStep < 1, orbStsNullPtrErr for pDst,
 * orbStsStepErr if dstStep < 1, orbStsSizeErr if the width or the height is below 1.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiAdd128_JPEG_16s8u_C1R(const Orb16s* pSrc, Orb32s srcStep,
                                                             Orb8u* pDst, Orb32s dstStep,
                                                             OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiSub128_JPEG_8u16s_C1R(const Orb8u* pSrc, Orb32s srcStep,
                                                             Orb16s* pDst, Orb32s dstStep,
                                                             OrbiSize roiSize);

/* Rescales a raw table in place by a quality factor, as the Independent JPEG Group's coder does: 50
 * keeps the table, 1 is coarsest, 100 and above give divisors of 1. Entries end within 1..255.
 *
 * Returns orbStsNullPtrErr, orbStsBadArgErr if qualityFactor < 1; there is no upper limit.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiQuantFwdRawTableInit_JPEG_8u(Orb8u* pQuantRawTable,
                                                                    Orb32s qualityFactor);

/* Builds the forward table of a raw table.
 *
 * Returns orbStsNullPtrErr for either pointer; orbStsDivByZero, a warning, if a divisor is 0: its
 * entry is then 65535, and all others are right.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiQuantFwdTableInit_JPEG_8u16u(const Orb8u* pQuantRawTable,
                                                                    Orb16u* pQuantFwdTable);

/* Builds the inverse table of a raw table. A divisor of 0 stays 0.
 *
 * Returns orbStsNullPtrErr for either pointer.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiQuantInvTableInit_JPEG_8u16u(const Orb8u* pQuantRawTable,
                                                                    Orb16u* pQuantInvTable);

/* Quantises a block in place: each value times its table entry, divided by 32768, to nearest with
 * ties to even, limited to 16 bits.
 *
 * The builds with SIMD take a shorter road when both addresses are even, which truncates where px
 * rounds: ((((s << 3) * (q >> 1)) >> 16) + 1) >> 1 on 16-bit words. Its results differ from px by
 * at most 1 for values of magnitude below 4096; larger ones wrap.
 *
 * Returns orbStsNullPtrErr for either pointer.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiQuantFwd8x8_JPEG_16s_C1I(Orb16s* pSrcDst,
                                                                const Orb16u* pQuantFwdTable);

/* Dequantises a block in place: each value times its table entry, both read as signed 16-bit,
 * limited to 16 bits. The builds with SIMD wrap instead of limiting when both addresses are even.
 *
 * Returns orbStsNullPtrErr for either pointer.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiQuantInv8x8_JPEG_16s_C1I(Orb16s* pSrcDst,
                                                                const Orb16u* pQuantInvTable);

/* ------------------------------------------------------------------------------------------------
 * DCT with quantisation (T.81 A.3.1, A.3.3, A.3.4)
 *
 * One block between samples and quantised coefficients in one call. The transforms have the scaling
 * of A.3.3: the DC coefficient is the sum of the 64 samples divided by 8. Tables are those of the
 * section above, or, for samples of 12 bits, 64 floats in raster order that the host makes: the
 * reciprocals of the divisors forward, the divisors inverse. Their values are not examined.
 *
 * Samples of 8 bits go through integers of a fixed number of fraction bits. What a sum or a word in
 * between cannot hold wraps, which blocks outside the format's range may see. Samples of 12 bits go
 * through single precision. The integer functions give the same results in all builds; the two of
 * 12 bits may differ by 1 where the x87 unit of a 32-bit px rounds another way than SSE.
 *
 * Steps are in bytes. A region is read or written in exactly its 8 rows of 8 samples, or the 2 of 2
 * or 4 of 4 of the To2x2 and To4x4 forms. A source block is left as it is.
 * ---------------------------------------------------------------------------------------------- */

/* Forward DCT and quantisation of a block of samples about 0: each coefficient times its table
 * entry, divided by 32768, to nearest with ties to even. pSrc and pDst may be the same block.
 *
 * Returns orbStsNullPtrErr for any pointer.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiDCTQuantFwd8x8_JPEG_16s_C1(const Orb16s* pSrc, Orb16s* pDst,
                                                                  const Orb16u* pQuantFwdTable);
ORB_API OrbStatus ORB_CALL legacy90orbiDCTQuantFwd8x8_JPEG_16s_C1I(Orb16s* pSrcDst,
                                                                   const Orb16u* pQuantFwdTable);

/* The same from 8 rows of 8 samples, with the level shift: 128 is subtracted from samples of 8
 * bits, 2048 from those of 12. The latter are read as full 16-bit words; their coefficients are
 * multiplied by the table's entries, limited to 16 bits and rounded to nearest with ties to even.
 *
 * Returns orbStsNullPtrErr for pSrc or pDst, orbStsStepErr if srcStep < 1, orbStsNullPtrErr for the
 * table.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(
    const Orb8u* pSrc, Orb32s srcStep, Orb16s* pDst, const Orb16u* pQuantFwdTable);
ORB_API OrbStatus ORB_CALL legacy90orbiDCTQuantFwd8x8LS_JPEG_16u16s_C1R(
    const Orb16u* pSrc, Orb32s srcStep, Orb16s* pDst, const Orb32f* pQuantFwdTable);

/* Dequantisation and inverse DCT of a block: each coefficient times its table entry, both read as
 * signed, limited to 16 bits. The results are about 0 and not limited to samples. pSrc and pDst may
 * be the same block.
 *
 * Returns orbStsNullPtrErr for any pointer.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiDCTQuantInv8x8_JPEG_16s_C1(const Orb16s* pSrc, Orb16s* pDst,
                                                                  const Orb16u* pQuantInvTable);
ORB_API OrbStatus ORB_CALL legacy90orbiDCTQuantInv8x8_JPEG_16s_C1I(Orb16s* pSrcDst,
                                                                   const Orb16u* pQuantInvTable);

/* The same to 8 rows of 8 samples, with the level shift: 128 is added and the sum limited to
 * 0..255, or 2048 and the sum limited to 0..4095.
 *
 * Returns orbStsNullPtrErr for pSrc or pDst, orbStsStepErr if dstStep < 1, orbStsNullPtrErr for the
 * table.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R(
    const Orb16s* pSrc, Orb8u* pDst, Orb32s dstStep, const Orb16u* pQuantInvTable);
ORB_API OrbStatus ORB_CALL legacy90orbiDCTQuantInv8x8LS_JPEG_16s16u_C1R(
    const Orb16s* pSrc, Orb16u* pDst, Orb32s dstStep, const Orb32f* pQuantInvTable);

/* For blocks that are known to have low frequencies only: the 1, 4 or 16 coefficients at the top
 * left give the 8 rows of 8 samples, and all others count as 0 whatever they hold. The 1x1 form
 * reads its one table entry as unsigned, does not limit the product, and rounds its eighth down.
 *
 * Statuses as above.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R(
    const Orb16s* pSrc, Orb8u* pDst, Orb32s dstStep, const Orb16u* pQuantInvTable);
ORB_API OrbStatus ORB_CALL legacy90orbiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R(
    const Orb16s* pSrc, Orb8u* pDst, Orb32s dstStep, const Orb16u* pQuantInvTable);
ORB_API OrbStatus ORB_CALL legacy90orbiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R(
    const Orb16s* pSrc, Orb8u* pDst, Orb32s dstStep, const Orb16u* pQuantInvTable);

/* For decoding at a fourth or a half of the picture's size: 2 rows of 2 samples or 4 rows of 4,
 * each the mean of the samples of the whole inverse that it stands for. Rows and columns 2, 4 and 6
 * of the coefficients have no part in the former, row and column 4 none in the latter.
 *
 * Statuses as above.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R(
    const Orb16s* pSrc, Orb8u* pDst, Orb32s dstStep, const Orb16u* pQuantInvTable);
ORB_API OrbStatus ORB_CALL legacy90orbiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R(
    const Orb16s* pSrc, Orb8u* pDst, Orb32s dstStep, const Orb16u* pQuantInvTable);

/* ------------------------------------------------------------------------------------------------
 * Huffman tables and bit-stream state (T.81 annexes C and K.2)
 *
 * All coders of entropy-coded data work from four records: a Huffman table in the form that an
 * encoder wants and in the form that a decoder wants, and the state of a bit stream that is being
 * written or read. They are opaque and carry no tag: a record of the wrong kind goes undetected.
 *
 * A record is made in one of two ways. Either the host takes memory of the size that GetBufSize
 * reports and hands it to Init; or InitAlloc allocates the record, and Free releases it. What the
 * host allocated itself is never passed to Free. A table is read only once it is made, and may be
 * shared between threads; a state belongs to one scan and to one thread at a time.
 *
 * pListBits and pListVals are the two lists of a DHT segment: 16 bytes with the number of codes of
 * each length from 1 to 16, and the symbols in order of increasing code. Of pListVals as many bytes
 * are read as pListBits counts codes.
 * ---------------------------------------------------------------------------------------------- */

/* The code of each symbol. */
typedef struct OrbiEncodeHuffmanSpec OrbiEncodeHuffmanSpec;
/* The symbol of each code, with a lookup for codes of up to 8 bits. */
typedef struct OrbiDecodeHuffmanSpec OrbiDecodeHuffmanSpec;
/* Bits that do not yet fill a byte, and the end-of-band run of a progressive scan. */
typedef struct OrbiEncodeHuffmanState OrbiEncodeHuffmanState;
/* Bits read ahead, and the end-of-band run of a progressive scan. */
typedef struct OrbiDecodeHuffmanState OrbiDecodeHuffmanState;

/* Stores the size of a record in bytes: 1024 and 1644 for the tables, 1048 and 24 for the states.
 *
 * Returns orbStsNullPtrErr.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiEncodeHuffmanSpecGetBufSize_JPEG_8u(Orb32s* pSize);
ORB_API OrbStatus ORB_CALL legacy90orbiDecodeHuffmanSpecGetBufSize_JPEG_8u(Orb32s* pSize);
ORB_API OrbStatus ORB_CALL legacy90orbiEncodeHuffmanStateGetBufSize_JPEG_8u(Orb32s* pSize);
ORB_API OrbStatus ORB_CALL legacy90orbiDecodeHuffmanStateGetBufSize_JPEG_8u(Orb32s* pSize);

/* Makes an encoder's table. A symbol that is listed twice has its last code. With no code at all
 * the table is empty, and every symbol fails when it is to be coded.
 *
 * Returns orbStsNullPtrErr for any pointer; orbStsJpegHuffTableErr if the lists hold more than 256
 * codes, or if the codes of a length run up to all ones or beyond: the record is then empty.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiEncodeHuffmanSpecInit_JPEG_8u(
    const Orb8u* pListBits, const Orb8u* pListVals, OrbiEncodeHuffmanSpec* pEncHuffSpec);

/* Makes a decoder's table. It takes more than the encoder does: a code of all ones, and lengths
 * above 8 with more codes than there can be, whose excess no stream can reach. When the last code
 * of length 16 is all ones, no code of length 16 is recognised.
 *
 * Returns orbStsNullPtrErr for any pointer; orbStsJpegHuffTableErr if the lists hold more than 256
 * codes, or more codes of a length up to 8 than there can be: the record is then not to be used.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiDecodeHuffmanSpecInit_JPEG_8u(
    const Orb8u* pListBits, const Orb8u* pListVals, OrbiDecodeHuffmanSpec* pDecHuffSpec);

/* The same in a record that the library allocates, at a multiple of 64 bytes.
 *
 * Returns orbStsNullPtrErr for any pointer, and also if the allocation fails, with nothing stored;
 * then as Init does. After orbStsJpegHuffTableErr the record stands at the output pointer all the
 * same, for the host to release.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiEncodeHuffmanSpecInitAlloc_JPEG_8u(
    const Orb8u* pListBits, const Orb8u* pListVals, OrbiEncodeHuffmanSpec** ppEncHuffSpec);
ORB_API OrbStatus ORB_CALL legacy90orbiDecodeHuffmanSpecInitAlloc_JPEG_8u(
    const Orb8u* pListBits, const Orb8u* pListVals, OrbiDecodeHuffmanSpec** ppDecHuffSpec);

/* Releases a table of InitAlloc.
 *
 * Returns orbStsNullPtrErr.
 */
ORB_API OrbStatus ORB_CALL
legacy90orbiEncodeHuffmanSpecFree_JPEG_8u(OrbiEncodeHuffmanSpec* pEncHuffSpec);
ORB_API OrbStatus ORB_CALL
legacy90orbiDecodeHuffmanSpecFree_JPEG_8u(OrbiDecodeHuffmanSpec* pDecHuffSpec);

/* Sets a state to the start of a scan: no bits, no run. A decoder's state is also set anew at each
 * restart marker, and after a failure.
 *
 * Returns orbStsNullPtrErr.
 */
ORB_API OrbStatus ORB_CALL
legacy90orbiEncodeHuffmanStateInit_JPEG_8u(OrbiEncodeHuffmanState* pEncHuffState);
ORB_API OrbStatus ORB_CALL
legacy90orbiDecodeHuffmanStateInit_JPEG_8u(OrbiDecodeHuffmanState* pDecHuffState);

/* The same in a record that the library allocates, at a multiple of 64 bytes.
 *
 * Returns orbStsNullPtrErr, also if the allocation fails, with nothing stored.
 */
ORB_API OrbStatus ORB_CALL
legacy90orbiEncodeHuffmanStateInitAlloc_JPEG_8u(OrbiEncodeHuffmanState** ppEncHuffState);
ORB_API OrbStatus ORB_CALL
legacy90orbiDecodeHuffmanStateInitAlloc_JPEG_8u(OrbiDecodeHuffmanState** ppDecHuffState);

/* Releases a state of InitAlloc.
 *
 * Returns orbStsNullPtrErr.
 */
ORB_API OrbStatus ORB_CALL
legacy90orbiEncodeHuffmanStateFree_JPEG_8u(OrbiEncodeHuffmanState* pEncHuffState);
ORB_API OrbStatus ORB_CALL
legacy90orbiDecodeHuffmanStateFree_JPEG_8u(OrbiDecodeHuffmanState* pDecHuffState);

/* Makes the two lists of an optimal table from how often each of the 256 symbols occurs (T.81 K.2),
 * with codes of at most 16 bits and none of all ones. A symbol that never occurs has no code, and
 * of pListVals only as many bytes are written as there are codes.
 *
 * A count above 1000000000, of a symbol or of symbols that are already joined, is passed over: keep
 * the sum of all counts below it. Sums wrap.
 *
 * Returns orbStsNullPtrErr for any pointer; orbStsJpegHuffTableErr, with nothing written, if a code
 * would have more than 32 bits before it is shortened.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiEncodeHuffmanRawTableInit_JPEG_8u(const Orb32s* pStatistics,
                                                                         Orb8u* pListBits,
                                                                         Orb8u* pListVals);

/* ------------------------------------------------------------------------------------------------
 * Sequential Huffman block coding (T.81 F.1.2, F.2.2)
 *
 * Each call codes one block of quantised coefficients, in raster order, to or from entropy-coded
 * data. The host owns the loop over blocks, the order of components, restarts and markers, and one
 * DC predictor for each component: *pLastDC, 0 at the start of a scan and after each restart.
 *
 * The ordinary forms keep their bits in a state record and test every byte against the length of
 * the buffer; a position outside of the buffer counts as its end. The Direct forms have neither:
 * the host carries the bits itself, and answers for the size of the buffer.
 * ---------------------------------------------------------------------------------------------- */

/* Encodes a block behind what *pDstCurrPos (a byte position in pDst, which has dstLenBytes bytes)
 * and the state hold, and moves both. A byte of 255 is followed by a 0. *pLastDC becomes the DC
 * value of the block before anything is written, so it has moved even if the call fails.
 *
 * With bFlush other than 0 the call ends a scan or a restart interval instead, and the four
 * pointers to the block, predictor and tables are not looked at: the last byte is filled up with
 * ones and written, nothing at a byte boundary, and the state is set to the start of a scan.
 *
 * Coefficients may have any value. A category is a symbol like any other, so a value that the
 * format does not allow fails for want of a code.
 *
 * Returns orbStsNullPtrErr for pDst, orbStsSizeErr if dstLenBytes < 1, orbStsNullPtrErr for
 * pDstCurrPos or pEncHuffState; then, without bFlush, orbStsNullPtrErr for pSrc, pLastDC, pDcTable
 * or pAcTable; orbStsJpegHuffTableErr if a symbol has no code, what came before it being written;
 * orbStsJpegBufferEndErr if the destination is full: it holds all bytes that fit, and the scan is
 * lost.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiEncodeHuffman8x8_JPEG_16s1u_C1(
    const Orb16s* pSrc, Orb8u* pDst, Orb32s dstLenBytes, Orb32s* pDstCurrPos, Orb16s* pLastDC,
    const OrbiEncodeHuffmanSpec* pDcTable, const OrbiEncodeHuffmanSpec* pAcTable,
    OrbiEncodeHuffmanState* pEncHuffState, Orb32s bFlush);

/* Encodes a block at bit position *pDstBitsLen of pDst, and moves the position. The bits of its
 * byte in front of the position are kept; the bits behind the new position are 0 to the end of its
 * byte, which is written even if the position is at its start. The buffer need not be cleared.
 *
 * There is no flush: the host fills up the last byte. A symbol without a code is left out and no
 * failure. A block takes at most 512 bytes beyond the one it starts in.
 *
 * Returns orbStsNullPtrErr for any pointer.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiEncodeHuffman8x8_Direct_JPEG_16s1u_C1(
    const Orb16s* pSrc, Orb8u* pDst, Orb32s* pDstBitsLen, Orb16s* pLastDC,
    const OrbiEncodeHuffmanSpec* pDcTable, const OrbiEncodeHuffmanSpec* pAcTable);

/* Decodes a block from what the state holds and the srcLenBytes bytes at pSrc from *pSrcCurrPos on,
 * and moves both; bytes are read ahead, up to 4. All 64 values of pDst are written.
 *
 * A marker ends the reading: its second byte is stored in *pMarker, and the position lies behind
 * it. Bytes of 255 in front of a marker are passed over. While *pMarker is not 0 nothing is read;
 * the host handles the marker, clears *pMarker and sets the state anew. A call that lacks bits
 * behind a marker may make up the last value of a block, but the next read fails.
 *
 * A value whose position in zigzag order is past 63 replaces the last coefficient, up to position
 * 71; beyond it the call fails.
 *
 * Returns orbStsNullPtrErr for pSrc, orbStsBadArgErr if srcLenBytes < 0, orbStsNullPtrErr for any
 * other pointer; then, with the block as far as it was decoded and the position, state and
 * predictor moved: orbStsJpegBufferEndErr if the source is at its end, orbStsJpegBitStreamErr if no
 * code matches or bits are wanted behind a marker, orbStsErr for a position past 71.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiDecodeHuffman8x8_JPEG_1u16s_C1(
    const Orb8u* pSrc, Orb32s srcLenBytes, Orb32s* pSrcCurrPos, Orb16s* pDst, Orb16s* pLastDC,
    Orb32s* pMarker, const OrbiDecodeHuffmanSpec* pDcTable, const OrbiDecodeHuffmanSpec* pAcTable,
    OrbiDecodeHuffmanState* pDecHuffState);

/* Decodes a block without a state: *pPrefetchedBits holds *pNumValidPrefetchedBits bits at its low
 * end, 0 at the start of a scan, and the bytes behind them start at bit position *pSrcBitsLen,
 * rounded down to a byte. A *pMarker above 0 stands for a marker that has been met. The source is
 * read until a marker comes up, so it has to end with one.
 *
 * Behind a marker, bits that are missing for a code of up to 8 bits count as 0, and a value takes
 * what bits there are; when no bit is left before a symbol, the call succeeds with the block as far
 * as it was decoded, and zeros from there on.
 *
 * Returns orbStsNullPtrErr for pSrc or pSrcBitsLen, orbStsBadArgErr if *pSrcBitsLen < 0,
 * orbStsNullPtrErr for pDst, pLastDC, pMarker, pPrefetchedBits or pNumValidPrefetchedBits,
 * orbStsBadArgErr if *pNumValidPrefetchedBits < 0, orbStsNullPtrErr for pDcTable or pAcTable; then,
 * with everything as far as it was decoded: orbStsJpegBitStreamErr if no code matches,
 * orbStsJpegBufferEndErr if a value is wanted and no bit is left, orbStsErr for a value whose
 * position in zigzag order is past 71.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1(
    const Orb8u* pSrc, Orb32s* pSrcBitsLen, Orb16s* pDst, Orb16s* pLastDC, Orb32s* pMarker,
    Orb32u* pPrefetchedBits, Orb32s* pNumValidPrefetchedBits, const OrbiDecodeHuffmanSpec* pDcTable,
    const OrbiDecodeHuffmanSpec* pAcTable);

/* Adds the symbols of a block to the counts of 256 DC and 256 AC symbols, and moves the predictor:
 * the first pass of a coder that makes its own tables, which clears the counts once for each scan.
 *
 * Returns orbStsNullPtrErr for any pointer; orbStsJpegBitStreamErr for a DC difference of more than
 * 15 bits or an AC coefficient of more than 14, what came before it being counted.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiGetHuffmanStatistics8x8_JPEG_16s_C1(const Orb16s* pSrc,
                                                                           Orb32s* pDcStatistics,
                                                                           Orb32s* pAcStatistics,
                                                                           Orb16s* pLastDC);

/* ------------------------------------------------------------------------------------------------
 * Progressive Huffman block coding (T.81 annex G)
 *
 * Each call codes one block of quantised coefficients, in raster order, for one scan: the DC value
 * or a band of the AC coefficients without their Al low bits (first), or one more of those bits
 * (refine). pDst, dstLenBytes, pDstCurrPos, pSrc, srcLenBytes, pSrcCurrPos and pMarker are those of
 * the ordinary forms of sequential coding, and so are markers, stuffed bytes and lost scans. A band
 * runs from Ss to Se, positions in zigzag order from 1 to 63 with Ss <= Se. Al goes from 0 to 13.
 *
 * Blocks without anything new behind some point are gathered in an end-of-band run. The run, and in
 * refinement the correction bits of its blocks, stay in the state from one call to the next; so one
 * state serves one scan of one component from its start to its flush.
 * ---------------------------------------------------------------------------------------------- */

/* The first scan of DC: encodes the difference between the DC value, shifted right with its sign,
 * and *pLastDC, and moves *pLastDC to the former before anything is written.
 *
 * With bFlush other than 0 the call ends a scan or a restart interval instead: the last byte is
 * filled up with ones and written, nothing at a byte boundary, and the state is set to the start of
 * a scan. Only pDst, dstLenBytes, pDstCurrPos and pEncHuffState are looked at.
 *
 * Returns orbStsNullPtrErr for pDst, orbStsSizeErr if dstLenBytes < 1, orbStsNullPtrErr for
 * pDstCurrPos or pEncHuffState; then, without bFlush, orbStsNullPtrErr for pSrc or pLastDC,
 * orbStsBadArgErr for Al, orbStsNullPtrErr for pDcTable; orbStsJpegBitStreamErr for a difference of
 * more than 11 bits; orbStsJpegHuffTableErr if its number of bits has no code;
 * orbStsJpegBufferEndErr if the destination is full.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(
    const Orb16s* pSrc, Orb8u* pDst, Orb32s dstLenBytes, Orb32s* pDstCurrPos, Orb16s* pLastDC,
    Orb32u Al, const OrbiEncodeHuffmanSpec* pDcTable, OrbiEncodeHuffmanState* pEncHuffState,
    Orb32s bFlush);

/* A further scan of DC: writes bit Al of the DC value as it stands, sign and all. bFlush as in the
 * first scan.
 *
 * Returns orbStsNullPtrErr for pDst, orbStsSizeErr if dstLenBytes < 1, orbStsNullPtrErr for
 * pDstCurrPos or pEncHuffState; then, without bFlush, orbStsNullPtrErr for pSrc, orbStsBadArgErr
 * for Al; orbStsJpegBufferEndErr if the destination is full.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(
    const Orb16s* pSrc, Orb8u* pDst, Orb32s dstLenBytes, Orb32s* pDstCurrPos, Orb32u Al,
    OrbiEncodeHuffmanState* pEncHuffState, Orb32s bFlush);

/* The first scan of a band: encodes the coefficients whose magnitude, shifted right by Al, is not
 * 0. A block that ends without one joins the end-of-band run, and writes nothing more; a run of
 * 32767 blocks goes out at once.
 *
 * With bFlush other than 0 the call ends a scan or a restart interval instead: the run is written,
 * then the correction bits that the state may hold, then the last byte as in the DC scans, and the
 * state is set to the start of a scan. Of the pointers all but pSrc are needed. The status is that
 * of the last byte alone: failures of what comes before it are not reported.
 *
 * A run above 32767, which no calls but failing ones leave, is written in two parts, and fails with
 * orbStsJpegBitStreamErr if the second has more than 15 bits.
 *
 * Returns orbStsNullPtrErr for pDst, orbStsSizeErr if dstLenBytes < 1, orbStsNullPtrErr for
 * pDstCurrPos, pEncHuffState or pAcTable; then, without bFlush, orbStsNullPtrErr for pSrc,
 * orbStsBadArgErr for the band or Al; with what came before it written, orbStsJpegBitStreamErr for
 * a shifted magnitude of more than 11 bits; orbStsJpegHuffTableErr if a symbol has no code;
 * orbStsJpegBufferEndErr if the destination is full.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(
    const Orb16s* pSrc, Orb8u* pDst, Orb32s dstLenBytes, Orb32s* pDstCurrPos, Orb32s Ss, Orb32s Se,
    Orb32u Al, const OrbiEncodeHuffmanSpec* pAcTable, OrbiEncodeHuffmanState* pEncHuffState,
    Orb32s bFlush);

/* A further scan of a band (T.81 figure G.7): encodes the coefficients whose shifted magnitude is
 * 1, with their signs, and bit Al of the magnitude of those that were coded before, as correction
 * bits. The correction bits of the blocks of an end-of-band run are held in the state; the run goes
 * out with them when it has 32767 blocks or they are 938 or more.
 *
 * bFlush and the statuses are as in the first scan, with two differences: there is no limit to a
 * magnitude, and a flush returns the first failure of all that it writes.
 *
 * When a call fails, the state's correction bits are still held if they or the run in front of them
 * were not written, and are gone if what failed stands behind them.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(
    const Orb16s* pSrc, Orb8u* pDst, Orb32s dstLenBytes, Orb32s* pDstCurrPos, Orb32s Ss, Orb32s Se,
    Orb32u Al, const OrbiEncodeHuffmanSpec* pAcTable, OrbiEncodeHuffmanState* pEncHuffState,
    Orb32s bFlush);

/* Decodes what the encoder of the same name has written. A decoder writes those coefficients only
 * that its scan has something of, so the host clears the block before its first scan. DC first
 * stores *pLastDC, moved by the difference and shifted left by Al. DC refine sets bit Al of the DC
 * value as it stands, or leaves it.
 *
 * The state and the position move as in sequential decoding, and a failing call leaves the block as
 * far as it was decoded.
 *
 * Returns orbStsNullPtrErr for pSrc, orbStsSizeErr if srcLenBytes < 1, orbStsNullPtrErr for
 * pSrcCurrPos, pDst, pLastDC or pMarker, orbStsBadArgErr for Al, orbStsNullPtrErr for pDcTable or
 * pDecHuffState; then orbStsJpegBufferEndErr if the source is at its end, orbStsJpegBitStreamErr if
 * no code matches or bits are wanted behind a marker.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(
    const Orb8u* pSrc, Orb32s srcLenBytes, Orb32s* pSrcCurrPos, Orb16s* pDst, Orb16s* pLastDC,
    Orb32s* pMarker, Orb32u Al, const OrbiDecodeHuffmanSpec* pDcTable,
    OrbiDecodeHuffmanState* pDecHuffState);
ORB_API OrbStatus ORB_CALL legacy90orbiDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(
    const Orb8u* pSrc, Orb32s srcLenBytes, Orb32s* pSrcCurrPos, Orb16s* pDst, Orb32s* pMarker,
    Orb32u Al, OrbiDecodeHuffmanState* pDecHuffState);

/* The same for a band. In an end-of-band run AC first takes one from the run and reads nothing; AC
 * refine still reads the correction bits of the coefficients that are not 0. A correction is
 * applied only if bit Al of the coefficient as it stands is 0.
 *
 * A damaged stream may lead out of the band, but not out of the block. In AC first, a value whose
 * position is past Se is stored there, one at the positions 64 to 71 replaces the last coefficient,
 * and beyond them the call fails. In AC refine, a new coefficient that finds no place in the band
 * is stored behind it, at Se + 1, or replaces the last coefficient if there is none.
 *
 * Returns orbStsNullPtrErr for pSrc, orbStsSizeErr if srcLenBytes < 1, orbStsNullPtrErr for
 * pSrcCurrPos, pDst or pMarker, orbStsBadArgErr for the band or Al, orbStsNullPtrErr for pAcTable
 * or pDecHuffState; then as the decoders of DC, and in AC first orbStsErr for a position past 71.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(
    const Orb8u* pSrc, Orb32s srcLenBytes, Orb32s* pSrcCurrPos, Orb16s* pDst, Orb32s* pMarker,
    Orb32s Ss, Orb32s Se, Orb32u Al, const OrbiDecodeHuffmanSpec* pAcTable,
    OrbiDecodeHuffmanState* pDecHuffState);
ORB_API OrbStatus ORB_CALL legacy90orbiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(
    const Orb8u* pSrc, Orb32s srcLenBytes, Orb32s* pSrcCurrPos, Orb16s* pDst, Orb32s* pMarker,
    Orb32s Ss, Orb32s Se, Orb32u Al, const OrbiDecodeHuffmanSpec* pAcTable,
    OrbiDecodeHuffmanState* pDecHuffState);

/* Adds the symbols that the encoder of the same name would write to the counts of 256 symbols, and
 * moves the predictor, or the end-of-band run of the state, as it does. DC refine has no symbols.
 * With bFlush other than 0 the pending run is counted and the state is set to the start of a scan.
 *
 * Returns orbStsNullPtrErr for any pointer of DC first, then orbStsBadArgErr for Al; in the AC
 * forms orbStsNullPtrErr for pAcStatistics or pEncHuffState; then, without bFlush, orbStsNullPtrErr
 * for pSrc, orbStsBadArgErr for the band or Al. With what came before it counted,
 * orbStsJpegBitStreamErr for a DC difference of more than 11 bits, a shifted magnitude of more than
 * 10 in AC first, one bit less than its encoder takes, or for a run of which more than 15 bits are
 * left behind its first 32767 blocks; with bFlush the state is reset all the same.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1(
    const Orb16s* pSrc, Orb32s* pDcStatistics, Orb16s* pLastDC, Orb32u Al);
ORB_API OrbStatus ORB_CALL legacy90orbiGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(
    const Orb16s* pSrc, Orb32s* pAcStatistics, Orb32s Ss, Orb32s Se, Orb32u Al,
    OrbiEncodeHuffmanState* pEncHuffState, Orb32s bFlush);
ORB_API OrbStatus ORB_CALL legacy90orbiGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(
    const Orb16s* pSrc, Orb32s* pAcStatistics, Orb32s Ss, Orb32s Se, Orb32u Al,
    OrbiEncodeHuffmanState* pEncHuffState, Orb32s bFlush);

/* ------------------------------------------------------------------------------------------------
 * Lossless prediction and row coding (T.81 annex H)
 *
 * Without a DCT each sample is predicted from its neighbours, and the difference is coded by the
 * tables of DC values. Rows are arrays of 16-bit samples; differences are kept in 16 bits and wrap
 * (modulo 65536), so that any row comes back as it was.
 * ---------------------------------------------------------------------------------------------- */

/* Differences of the first row of a scan or restart interval: the first sample is predicted by the
 * middle of its range, each other by the one to its left.
 *
 *   dst[0] = src[0] - (1 << (P - Pt - 1))
 *   dst[i] = src[i] - src[i - 1]
 *
 * P is the precision of samples in bits and Pt the point transform, which the host has applied. The
 * shift counts modulo 32, and what is beyond 16 bits is dropped. pDst must not overlap pSrc.
 *
 * Returns orbStsNullPtrErr for either pointer, orbStsSizeErr if width < 1, orbStsBadArgErr if P is
 * not in 2..16 or Pt < 0.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiDiffPredFirstRow_JPEG_16s_C1(const Orb16s* pSrc,
                                                                    Orb16s* pDst, Orb32s width,
                                                                    Orb32s P, Orb32s Pt);

/* Differences of a row that has one above it: the first sample is predicted by the sample above, by
 * any predictor; the others by one of T.81 table H.1, of Ra to the left, Rb above, and Rc above and
 * to the left. Shifts are arithmetic, of a sum or difference that is not cut to 16 bits.
 *
 *   predictor   1   Ra              5   Ra + ((Rb - Rc) >> 1)
 *               2   Rb              6   Rb + ((Ra - Rc) >> 1)
 *               3   Rc              7   (Ra + Rb) >> 1
 *               4   Ra + Rb - Rc
 *
 * pPrevRow holds the samples of the row above. pDst must not overlap either source.
 *
 * Returns orbStsNullPtrErr for any pointer, orbStsSizeErr if width < 1, orbStsBadArgErr if the
 * predictor is not in 1..7.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiDiffPredRow_JPEG_16s_C1(const Orb16s* pSrc,
                                                               const Orb16s* pPrevRow, Orb16s* pDst,
                                                               Orb32s width, Orb32s predictor);

/* The samples of a row from its differences: the exact inverses of the two functions above, with
 * the same predictions from samples that have been reconstructed. pDst may be pSrc, or not overlap
 * it; it must not overlap pPrevRow.
 *
 * Return the statuses of their forward functions.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiReconstructPredFirstRow_JPEG_16s_C1(const Orb16s* pSrc,
                                                                           Orb16s* pDst,
                                                                           Orb32s width, Orb32s P,
                                                                           Orb32s Pt);
ORB_API OrbStatus ORB_CALL legacy90orbiReconstructPredRow_JPEG_16s_C1(const Orb16s* pSrc,
                                                                      const Orb16s* pPrevRow,
                                                                      Orb16s* pDst, Orb32s width,
                                                                      Orb32s predictor);

/* Encodes the difference *pSrc: the code of its category, 0 to 16, and its additional bits. A
 * difference of -32768 has category 16 and no additional bits (T.81 H.1.2.2). Position, state and
 * flush are those of orbiEncodeHuffman8x8_JPEG_16s1u_C1; a flush looks at neither pSrc nor the
 * table.
 *
 * Returns orbStsNullPtrErr for pDst, orbStsSizeErr if dstLenBytes < 1, orbStsNullPtrErr for
 * pDstCurrPos or pEncHuffState; then, without bFlush, orbStsNullPtrErr for pSrc or pDcTable;
 * orbStsJpegHuffTableErr, with nothing written, if the category has no code; orbStsJpegBufferEndErr
 * if the destination is full: it holds all bytes that fit, and the scan is lost.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiEncodeHuffmanOne_JPEG_16s1u_C1(
    const Orb16s* pSrc, Orb8u* pDst, Orb32s dstLenBytes, Orb32s* pDstCurrPos,
    const OrbiEncodeHuffmanSpec* pDcTable, OrbiEncodeHuffmanState* pEncHuffState, Orb32s bFlush);

/* Encodes nSrcRows rows of nSrcLen differences, interleaved sample by sample: the first of each row
 * in turn, then the second of each, and so on. pSrc and pDcTables hold a pointer for each row. More
 * than 4 rows count as 4. Otherwise as the function above.
 *
 * Returns orbStsNullPtrErr for pDst, orbStsSizeErr if dstLenBytes < 1, orbStsNullPtrErr for
 * pDstCurrPos or pEncHuffState; then, without bFlush, orbStsNullPtrErr for pSrc, orbStsSizeErr if
 * nSrcLen < 1 or nSrcRows < 1, orbStsNullPtrErr for pDcTables, a row or a table;
 * orbStsJpegHuffTableErr if a category has no code, the differences before it being written;
 * orbStsJpegBufferEndErr as above.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiEncodeHuffmanRow_JPEG_16s1u_P4C1(
    const Orb16s* const pSrc[], Orb32s nSrcLen, Orb32s nSrcRows, Orb8u* pDst, Orb32s dstLenBytes,
    Orb32s* pDstCurrPos, const OrbiEncodeHuffmanSpec* const pDcTables[],
    OrbiEncodeHuffmanState* pEncHuffState, Orb32s bFlush);

/* Decodes a difference. A category of 16, or any symbol above, is -32768 and has no additional
 * bits. Position, marker and state are those of orbiDecodeHuffman8x8_JPEG_1u16s_C1.
 *
 * Returns orbStsNullPtrErr for pSrc, orbStsSizeErr if srcLenBytes < 1, orbStsNullPtrErr for any
 * other pointer; then, with *pDst as it was and the position and state moved:
 * orbStsJpegBufferEndErr if the source is at its end, orbStsJpegBitStreamErr if no code matches or
 * bits are wanted behind a marker.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiDecodeHuffmanOne_JPEG_1u16s_C1(
    const Orb8u* pSrc, Orb32s srcLenBytes, Orb32s* pSrcCurrPos, Orb16s* pDst, Orb32s* pMarker,
    const OrbiDecodeHuffmanSpec* pDcTable, OrbiDecodeHuffmanState* pDecHuffState);

/* Decodes nDstRows rows of nDstLen differences, interleaved sample by sample. pDst and pDcTables
 * hold a pointer for each row. More than 4 rows count as 4. Otherwise as the function above.
 *
 * Returns orbStsNullPtrErr for pSrc, orbStsSizeErr if srcLenBytes < 1, orbStsNullPtrErr for
 * pSrcCurrPos or pDst, orbStsSizeErr if nDstLen < 1 or nDstRows < 1, orbStsNullPtrErr for pMarker,
 * pDcTables, pDecHuffState, a row or a table; then the failures of the function above, with the
 * rows as far as they were decoded.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiDecodeHuffmanRow_JPEG_1u16s_C1P4(
    const Orb8u* pSrc, Orb32s srcLenBytes, Orb32s* pSrcCurrPos, Orb16s* const pDst[],
    Orb32s nDstLen, Orb32s nDstRows, Orb32s* pMarker,
    const OrbiDecodeHuffmanSpec* const pDcTables[], OrbiDecodeHuffmanState* pDecHuffState);

/* Adds the category of a difference, 0 to 16, to the counts of 256 symbols: the first pass of a
 * coder that makes its own tables.
 *
 * Returns orbStsNullPtrErr for either pointer.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiGetHuffmanStatisticsOne_JPEG_16s_C1(const Orb16s* pSrc,
                                                                           Orb32s* pDcStatistics);

/* ------------------------------------------------------------------------------------------------
 * Colour conversion (JFIF: ITU-T T.871, 7; CMYK and YCCK: T.872)
 *
 * YCbCr is JFIF's: all three components use 0 to 255, and chroma has its zero at 128. No level
 * shift is applied. Interleaved images are one pointer and one step. Planar ones are an array of
 * plane pointers with either one step for all planes or an array of one step for each. Steps are in
 * bytes. roiSize counts pixels; a subsampled chroma plane has the fraction of it that the note
 * tells. `411` in a name stands for one chroma sample for two by two pixels (4:2:0).
 *
 * RGB names the order of bytes: red first. BGR is blue first. Of four bytes for an RGB pixel the
 * fourth is ignored in a source, and set to `aval` in a destination. Packed pixels are 16-bit
 * words:
 *
 *            red           green        blue
 *   RGB555   bits 0-4      bits 5-9     bits 10-14
 *   BGR555   bits 10-14    bits 5-9     bits 0-4
 *   RGB565   bits 0-4      bits 5-10    bits 11-15
 *   BGR565   bits 11-15    bits 5-10    bits 0-4
 *
 * A field is the top bits of its sample: read, the low bits are 0; written, they are dropped.
 *
 * There are two arithmetics in each direction, whose results differ by one for some colours. Shifts
 * are arithmetic.
 *
 *   forward A   Y  = (19595 R + 38470 G +  7471 B +   32768) >> 16
 *               Cb = (32768 B - 21709 G - 11059 R + 8421375) >> 16
 *               Cr = (32768 R - 27439 G -  5329 B + 8421375) >> 16
 *   forward B   Y is the same; Cb and Cr have 8404992 in place of 8421375
 *   inverse A   R = limit(Y + ((91881 (Cr - 128) + 32768) >> 16))
 *               G = limit(Y + ((22554 (128 - Cb) + 46802 (128 - Cr) + 32768) >> 16))
 *               B = limit(Y + ((116130 (Cb - 128) + 32768) >> 16))
 *   inverse B   R = limit((65536 Y + 91880 Cr - 11727880) >> 16)
 *               G = limit((65536 Y - 22553 Cb - 46801 Cr + 8910128) >> 16)
 *               B = limit((65536 Y + 116128 Cb - 14831618) >> 16)
 *
 * Source and destination may be the same planes where both are planar with a whole sample for each
 * pixel.
 *
 * The functions check their arguments in one of two orders, which their notes name:
 *
 *   by pixels   orbStsNullPtrErr if any pointer is null, that to an array or one within it;
 *               orbStsStepErr if a step is below 1;
 *               orbStsSizeErr if the width or the height is below 1.
 *   by pairs    orbStsNullPtrErr likewise, also for an array of steps;
 *               orbStsSizeErr if the width is below 2 or the height below 1;
 *               orbStsStepErr if a step is 0. A negative step is taken as it stands: each row lies
 *               before the one above it.
 * ---------------------------------------------------------------------------------------------- */

/* RGB to YCbCr by forward A. Checks by pixels.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiRGBToYCbCr_JPEG_8u_P3R(const Orb8u* const pSrc[3],
                                                              Orb32s srcStep, Orb8u* const pDst[3],
                                                              Orb32s dstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiRGBToYCbCr_JPEG_8u_C3P3R(const Orb8u* pSrc, Orb32s srcStep,
                                                                Orb8u* const pDst[3],
                                                                Orb32s dstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiBGRToYCbCr_JPEG_8u_C3P3R(const Orb8u* pSrc, Orb32s srcStep,
                                                                Orb8u* const pDst[3],
                                                                Orb32s dstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiRGB555ToYCbCr_JPEG_16u8u_C3P3R(
    const Orb16u* pSrc, Orb32s srcStep, Orb8u* const pDst[3], Orb32s dstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiBGR555ToYCbCr_JPEG_16u8u_C3P3R(
    const Orb16u* pSrc, Orb32s srcStep, Orb8u* const pDst[3], Orb32s dstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiRGB565ToYCbCr_JPEG_16u8u_C3P3R(
    const Orb16u* pSrc, Orb32s srcStep, Orb8u* const pDst[3], Orb32s dstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiBGR565ToYCbCr_JPEG_16u8u_C3P3R(
    const Orb16u* pSrc, Orb32s srcStep, Orb8u* const pDst[3], Orb32s dstStep, OrbiSize roiSize);

/* RGB to YCbCr by forward B. Checks by pairs, though an odd last column is converted too.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiRGBToYCbCr_JPEG_8u_C4P3R(const Orb8u* pSrc, Orb32s srcStep,
                                                                Orb8u* const pDst[3],
                                                                Orb32s dstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiBGRToYCbCr_JPEG_8u_C4P3R(const Orb8u* pSrc, Orb32s srcStep,
                                                                Orb8u* const pDst[3],
                                                                Orb32s dstStep, OrbiSize roiSize);

/* RGB to the Y of forward A. Checks by pixels.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiRGBToY_JPEG_8u_P3C1R(const Orb8u* const pSrc[3],
                                                            Orb32s srcStep, Orb8u* pDst,
                                                            Orb32s dstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiRGBToY_JPEG_8u_C3C1R(const Orb8u* pSrc, Orb32s srcStep,
                                                            Orb8u* pDst, Orb32s dstStep,
                                                            OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiBGRToY_JPEG_8u_C3C1R(const Orb8u* pSrc, Orb32s srcStep,
                                                            Orb8u* pDst, Orb32s dstStep,
                                                            OrbiSize roiSize);

/* RGB to YCbCr with one chroma sample for two pixels of a row: Cb and Cr have half the width. Y is
 * that of forward B, chroma is worked from the sums of two pixels:
 *
 *   Cb = (32768 B - 21709 G - 11059 R + 16793600) >> 17
 *   Cr = (32768 R - 27439 G -  5329 B + 16793600) >> 17
 *
 * Checks by pairs. Returns orbStsDoubleSize, a warning, if the width is odd: the last column is not
 * converted, not even its Y.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiRGBToYCbCr422_JPEG_8u_C3P3R(const Orb8u* pSrc,
                                                                   Orb32s srcStep,
                                                                   Orb8u* const pDst[3],
                                                                   const Orb32s dstStep[3],
                                                                   OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiBGRToYCbCr422_JPEG_8u_C3P3R(const Orb8u* pSrc,
                                                                   Orb32s srcStep,
                                                                   Orb8u* const pDst[3],
                                                                   const Orb32s dstStep[3],
                                                                   OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiRGBToYCbCr422_JPEG_8u_C4P3R(const Orb8u* pSrc,
                                                                   Orb32s srcStep,
                                                                   Orb8u* const pDst[3],
                                                                   const Orb32s dstStep[3],
                                                                   OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiBGRToYCbCr422_JPEG_8u_C4P3R(const Orb8u* pSrc,
                                                                   Orb32s srcStep,
                                                                   Orb8u* const pDst[3],
                                                                   const Orb32s dstStep[3],
                                                                   OrbiSize roiSize);

/* RGB to YCbCr with one chroma sample for two by two pixels: Cb and Cr have half the width and half
 * the height. Y is that of forward B, chroma is worked from the sums of four pixels:
 *
 *   Cb = (32768 B - 21709 G - 11059 R + 33587200) >> 18
 *   Cr = (32768 R - 27439 G -  5329 B + 33587200) >> 18
 *
 * Checks by pairs. Returns orbStsDoubleSize, a warning, if the width or the height is odd: the last
 * column or row is not converted, not even its Y. A region of one row is left as it is.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiRGBToYCbCr411_JPEG_8u_C3P3R(const Orb8u* pSrc,
                                                                   Orb32s srcStep,
                                                                   Orb8u* const pDst[3],
                                                                   const Orb32s dstStep[3],
                                                                   OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiBGRToYCbCr411_JPEG_8u_C3P3R(const Orb8u* pSrc,
                                                                   Orb32s srcStep,
                                                                   Orb8u* const pDst[3],
                                                                   const Orb32s dstStep[3],
                                                                   OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiRGBToYCbCr411_JPEG_8u_C4P3R(const Orb8u* pSrc,
                                                                   Orb32s srcStep,
                                                                   Orb8u* const pDst[3],
                                                                   const Orb32s dstStep[3],
                                                                   OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiBGRToYCbCr411_JPEG_8u_C4P3R(const Orb8u* pSrc,
                                                                   Orb32s srcStep,
                                                                   Orb8u* const pDst[3],
                                                                   const Orb32s dstStep[3],
                                                                   OrbiSize roiSize);

/* YCbCr to RGB by inverse A. Checks by pixels.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCrToRGB_JPEG_8u_P3R(const Orb8u* const pSrc[3],
                                                              Orb32s srcStep, Orb8u* const pDst[3],
                                                              Orb32s dstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCrToRGB_JPEG_8u_P3C3R(const Orb8u* const pSrc[3],
                                                                Orb32s srcStep, Orb8u* pDst,
                                                                Orb32s dstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCrToBGR_JPEG_8u_P3C3R(const Orb8u* const pSrc[3],
                                                                Orb32s srcStep, Orb8u* pDst,
                                                                Orb32s dstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCrToRGB555_JPEG_8u16u_P3C3R(const Orb8u* const pSrc[3],
                                                                      Orb32s srcStep, Orb16u* pDst,
                                                                      Orb32s dstStep,
                                                                      OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCrToBGR555_JPEG_8u16u_P3C3R(const Orb8u* const pSrc[3],
                                                                      Orb32s srcStep, Orb16u* pDst,
                                                                      Orb32s dstStep,
                                                                      OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCrToRGB565_JPEG_8u16u_P3C3R(const Orb8u* const pSrc[3],
                                                                      Orb32s srcStep, Orb16u* pDst,
                                                                      Orb32s dstStep,
                                                                      OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCrToBGR565_JPEG_8u16u_P3C3R(const Orb8u* const pSrc[3],
                                                                      Orb32s srcStep, Orb16u* pDst,
                                                                      Orb32s dstStep,
                                                                      OrbiSize roiSize);

/* YCbCr to RGB by inverse B. Checks by pairs, though an odd last column is converted too.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCrToRGB_JPEG_8u_P3C4R(const Orb8u* const pSrc[3],
                                                                Orb32s srcStep, Orb8u* pDst,
                                                                Orb32s dstStep, OrbiSize roiSize,
                                                                Orb8u aval);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCrToBGR_JPEG_8u_P3C4R(const Orb8u* const pSrc[3],
                                                                Orb32s srcStep, Orb8u* pDst,
                                                                Orb32s dstStep, OrbiSize roiSize,
                                                                Orb8u aval);

/* YCbCr with one chroma sample for two pixels of a row to RGB, by inverse B: both pixels take the
 * sample as it is.
 *
 * Checks by pairs. Returns orbStsDoubleSize, a warning, if the width is odd: the last column is not
 * written.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr422ToRGB_JPEG_8u_P3C3R(const Orb8u* const pSrc[3],
                                                                   const Orb32s srcStep[3],
                                                                   Orb8u* pDst, Orb32s dstStep,
                                                                   OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr422ToBGR_JPEG_8u_P3C3R(const Orb8u* const pSrc[3],
                                                                   const Orb32s srcStep[3],
                                                                   Orb8u* pDst, Orb32s dstStep,
                                                                   OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr422ToRGB_JPEG_8u_P3C4R(const Orb8u* const pSrc[3],
                                                                   const Orb32s srcStep[3],
                                                                   Orb8u* pDst, Orb32s dstStep,
                                                                   OrbiSize roiSize, Orb8u aval);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr422ToBGR_JPEG_8u_P3C4R(const Orb8u* const pSrc[3],
                                                                   const Orb32s srcStep[3],
                                                                   Orb8u* pDst, Orb32s dstStep,
                                                                   OrbiSize roiSize, Orb8u aval);

/* The same by inverse A from one interleaved image, in which two pixels are four bytes: Y, Cb, Y,
 * Cr.
 *
 * Checks by pairs, and orbStsSizeErr if the height is below 2. An odd width is no warning: the last
 * pair is read and written whole, one pixel beyond the region.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr422ToRGB_JPEG_8u_C2C3R(const Orb8u* pSrc,
                                                                   Orb32s srcStep, Orb8u* pDst,
                                                                   Orb32s dstStep,
                                                                   OrbiSize roiSize);

/* YCbCr with one chroma sample for two by two pixels to RGB, by inverse B: all four pixels take the
 * sample as it is.
 *
 * Checks by pairs. Returns orbStsDoubleSize, a warning, if the width or the height is odd. An odd
 * last row is not written. An odd last column is not written by
 * legacy90orbiYCbCr411ToRGB_JPEG_8u_P3C3R; the others complete its pair, and so read one Y and
 * write one pixel beyond the region in each row, and read the chroma sample of that pair.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr411ToRGB_JPEG_8u_P3C3R(const Orb8u* const pSrc[3],
                                                                   const Orb32s srcStep[3],
                                                                   Orb8u* pDst, Orb32s dstStep,
                                                                   OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr411ToBGR_JPEG_8u_P3C3R(const Orb8u* const pSrc[3],
                                                                   const Orb32s srcStep[3],
                                                                   Orb8u* pDst, Orb32s dstStep,
                                                                   OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr411ToRGB_JPEG_8u_P3C4R(const Orb8u* const pSrc[3],
                                                                   const Orb32s srcStep[3],
                                                                   Orb8u* pDst, Orb32s dstStep,
                                                                   OrbiSize roiSize, Orb8u aval);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr411ToBGR_JPEG_8u_P3C4R(const Orb8u* const pSrc[3],
                                                                   const Orb32s srcStep[3],
                                                                   Orb8u* pDst, Orb32s dstStep,
                                                                   OrbiSize roiSize, Orb8u aval);

/* CMYK to YCCK: C, M and Y are taken as the complements of R, G and B (255 less the sample) and
 * converted by forward A; K is copied. Checks by pixels.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiCMYKToYCCK_JPEG_8u_C4P4R(const Orb8u* pSrc, Orb32s srcStep,
                                                                Orb8u* const pDst[4],
                                                                Orb32s dstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiCMYKToYCCK_JPEG_8u_P4R(const Orb8u* const pSrc[4],
                                                              Orb32s srcStep, Orb8u* const pDst[4],
                                                              Orb32s dstStep, OrbiSize roiSize);

/* YCCK to CMYK: the first three planes are converted by inverse A, and C, M and Y are the
 * complements of R, G and B; K is copied. Checks by pixels.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiYCCKToCMYK_JPEG_8u_P4C4R(const Orb8u* const pSrc[4],
                                                                Orb32s srcStep, Orb8u* pDst,
                                                                Orb32s dstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiYCCKToCMYK_JPEG_8u_P4R(const Orb8u* const pSrc[4],
                                                              Orb32s srcStep, Orb8u* const pDst[4],
                                                              Orb32s dstStep, OrbiSize roiSize);

/* ------------------------------------------------------------------------------------------------
 * Chroma sampling
 *
 * T.81 A.1.1 lets a component have fewer samples than another; it leaves to the coder how they are
 * made and how they are turned back. Here a component is halved or doubled, across only (H2V1) or
 * in both directions (H2V2). All samples are of 8 bits. The rounding terms are no plain halves, and
 * some alternate between the even and the odd output, so that a flat error does not build up along
 * a row; they are the same in every build, and a flat component stays flat.
 * ---------------------------------------------------------------------------------------------- */

/* Halves a plane. With s the source,
 *
 *   H2V1: dst(x, y) = (s(2x, y) + s(2x + 1, y) + 1) >> 1
 *   H2V2: dst(x, y) = (s(2x, 2y) + s(2x + 1, 2y) + s(2x, 2y + 1) + s(2x + 1, 2y + 1) + 3) >> 2
 *
 * dstRoiSize is what is written and decides what is read: twice its width, and in H2V2 twice its
 * height. srcRoiSize is checked, and has no other effect. Steps are in bytes.
 *
 * Returns orbStsNullPtrErr for pSrc, orbStsStepErr if srcStep < 1, orbStsSizeErr if the width or
 * the height of srcRoiSize is below 1; then the same for pDst, dstStep and dstRoiSize.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiSampleDownH2V1_JPEG_8u_C1R(const Orb8u* pSrc, Orb32s srcStep,
                                                                  OrbiSize srcRoiSize, Orb8u* pDst,
                                                                  Orb32s dstStep,
                                                                  OrbiSize dstRoiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiSampleDownH2V2_JPEG_8u_C1R(const Orb8u* pSrc, Orb32s srcStep,
                                                                  OrbiSize srcRoiSize, Orb8u* pDst,
                                                                  Orb32s dstStep,
                                                                  OrbiSize dstRoiSize);

/* Doubles a plane with a triangle filter. With s the source,
 *
 *   H2V1: dst(2i, y)     = (3 s(i, y) + s(i - 1, y) + 1) >> 2
 *         dst(2i + 1, y) = (3 s(i, y) + s(i + 1, y) + 2) >> 2
 *
 *   H2V2: t(i) = 3 s(i, p) + s(i, q) with p = y / 2, and q = p - 1 for even y, p + 1 for odd y;
 *         dst(2i, y)     = (3 t(i) + t(i - 1) + 8) >> 4
 *         dst(2i + 1, y) = (3 t(i) + t(i + 1) + 7) >> 4
 *
 * There is no rule for the edges: the samples on either side of a row are read like any others, at
 * columns -1 and width, where the width is half that of dstRoiSize, rounded up; and so are in H2V2
 * the rows -1 and height, with their own columns -1 and width. The caller provides them. dstRoiSize
 * is what is written, and its width and height may be odd: then the last source column or row gives
 * one output, and column width or row height is not read. srcRoiSize is checked, and has no other
 * effect. Steps are in bytes.
 *
 * Returns the statuses of the downward functions, in the same order.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiSampleUpH2V1_JPEG_8u_C1R(const Orb8u* pSrc, Orb32s srcStep,
                                                                OrbiSize srcRoiSize, Orb8u* pDst,
                                                                Orb32s dstStep,
                                                                OrbiSize dstRoiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiSampleUpH2V2_JPEG_8u_C1R(const Orb8u* pSrc, Orb32s srcStep,
                                                                OrbiSize srcRoiSize, Orb8u* pDst,
                                                                Orb32s dstStep,
                                                                OrbiSize dstRoiSize);

/* Halves a row with a box filter: dst[i] = (s[2i] + s[2i + 1] + (i & 1)) >> 1 for srcWidth / 2
 * outputs. The last sample of an odd row is left out.
 *
 * Returns orbStsNullPtrErr for either pointer, orbStsSizeErr if srcWidth < 2; orbStsOddRowWidth, a
 * warning with a complete result, if srcWidth is odd.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiSampleDownRowH2V1_Box_JPEG_8u_C1(const Orb8u* pSrc,
                                                                        Orb32s srcWidth,
                                                                        Orb8u* pDst);

/* Halves two rows, a and b, to one with a box filter, for (srcWidth + 1) / 2 outputs:
 *
 *   dst[i] = (a[2i] + a[2i + 1] + b[2i] + b[2i + 1] + t) >> 2, t = 1 for even i and 2 for odd i
 *
 * With an odd srcWidth the last output reads one sample past the end of both rows, without a
 * warning: the caller provides it.
 *
 * Returns orbStsNullPtrErr for any pointer, orbStsSizeErr if srcWidth < 1.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiSampleDownRowH2V2_Box_JPEG_8u_C1(const Orb8u* pSrc1,
                                                                        const Orb8u* pSrc2,
                                                                        Orb32s srcWidth,
                                                                        Orb8u* pDst);

/* Doubles a row of n = srcWidth samples to 2n with a triangle filter. Within the row it is that of
 * orbiSampleUpH2V1_JPEG_8u_C1R, while the ends stand by themselves and read nothing outside:
 *
 *   dst[0] = s[0], dst[2n - 1] = s[n - 1]
 *
 * A row of one sample is the exception: s[-1] and s[1] are read, and dst[0] is
 * (3 s[0] + s[-1] + 1) >> 2.
 *
 * Returns orbStsNullPtrErr for either pointer, orbStsSizeErr if srcWidth < 1.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiSampleUpRowH2V1_Triangle_JPEG_8u_C1(const Orb8u* pSrc,
                                                                           Orb32s srcWidth,
                                                                           Orb8u* pDst);

/* Doubles a row of n = srcWidth samples to 2n with a triangle filter over itself, pSrc1, and its
 * neighbour on the output's side, pSrc2. With c[i] = 3 pSrc1[i] + pSrc2[i] it is within the row
 * that of orbiSampleUpH2V2_JPEG_8u_C1R, while the ends stand by themselves and read nothing
 * outside:
 *
 *   dst[0] = (4 c[0] + 8) >> 4, dst[2n - 1] = (4 c[n - 1] + 7) >> 4
 *
 * A row of one sample is the exception: columns -1 and 1 of both rows are read, and dst[0] is
 * (3 c[0] + c[-1] + 8) >> 4.
 *
 * Returns orbStsNullPtrErr for any pointer, orbStsSizeErr if srcWidth < 1.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiSampleUpRowH2V2_Triangle_JPEG_8u_C1(const Orb8u* pSrc1,
                                                                           const Orb8u* pSrc2,
                                                                           Orb32s srcWidth,
                                                                           Orb8u* pDst);

/* ------------------------------------------------------------------------------------------------
 * Level-shifted MCU conversion
 *
 * Between the pixels of one minimum coded unit and the blocks of the DCT in one pass: colour,
 * subsampling of chroma and level shift together. An MCU is an array of pointers, one for each
 * component, to its blocks, which lie one behind the other; the number in a name tells how many:
 *
 *         pixels    blocks of the first component (and of K)   blocks of each other
 *   444    8 x 8    1                                           1
 *   422   16 x 8    2: left, right                              1
 *   411   16 x 16   4: top left, top right, then below          1
 *
 * So in 422 and 411 a chroma value stands for 2 by 1 or 2 by 2 pixels. Steps of pixels are in
 * bytes. Values are those of the DCT, samples less 128. Formats of pixels are those of colour
 * conversion, the arithmetic is not: there are no rounding terms, and shifts are arithmetic.
 *
 *   forward   Y  = ((19595 R + 38470 G + 7471 B) >> 16) - 128
 *             Cb = (32768 B - 21709 G - 11059 R) >> 16
 *             Cr = (32768 R - 27439 G -  5329 B) >> 16
 *             chroma of 2 or 4 pixels is worked from the sums of their R, G and B, with >> 17 or
 *             >> 18
 *   inverse   R = limit(Y + ((91881 Cr) >> 16) + 128)
 *             G = limit(Y + ((-22554 Cb - 46802 Cr) >> 16) + 128)
 *             B = limit(Y + ((116130 Cb) >> 16) + 128)
 *             all pixels of a group take its chroma value as it is
 *
 * Values of blocks may be any: products and sums wrap at 32 bits, and limit() is to 0..255.
 *
 * The functions to an MCU return orbStsNullPtrErr for pSrc or pDstMCU, orbStsStepErr if
 * srcStep < 1, orbStsNullPtrErr if an entry of pDstMCU is null. Those from an MCU return
 * orbStsNullPtrErr for pSrcMCU or pDst, orbStsNullPtrErr if an entry of pSrcMCU is null,
 * orbStsStepErr if dstStep < 1.
 * ---------------------------------------------------------------------------------------------- */

/* Pixels to an MCU of Y, Cb and Cr.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiRGBToYCbCr444LS_MCU_8u16s_C3P3R(const Orb8u* pSrc,
                                                                       Orb32s srcStep,
                                                                       Orb16s* const pDstMCU[3]);
ORB_API OrbStatus ORB_CALL legacy90orbiRGBToYCbCr422LS_MCU_8u16s_C3P3R(const Orb8u* pSrc,
                                                                       Orb32s srcStep,
                                                                       Orb16s* const pDstMCU[3]);
ORB_API OrbStatus ORB_CALL legacy90orbiRGBToYCbCr411LS_MCU_8u16s_C3P3R(const Orb8u* pSrc,
                                                                       Orb32s srcStep,
                                                                       Orb16s* const pDstMCU[3]);
ORB_API OrbStatus ORB_CALL legacy90orbiBGRToYCbCr444LS_MCU_8u16s_C3P3R(const Orb8u* pSrc,
                                                                       Orb32s srcStep,
                                                                       Orb16s* const pDstMCU[3]);
ORB_API OrbStatus ORB_CALL legacy90orbiBGRToYCbCr422LS_MCU_8u16s_C3P3R(const Orb8u* pSrc,
                                                                       Orb32s srcStep,
                                                                       Orb16s* const pDstMCU[3]);
ORB_API OrbStatus ORB_CALL legacy90orbiBGRToYCbCr411LS_MCU_8u16s_C3P3R(const Orb8u* pSrc,
                                                                       Orb32s srcStep,
                                                                       Orb16s* const pDstMCU[3]);
ORB_API OrbStatus ORB_CALL legacy90orbiBGR555ToYCbCr444LS_MCU_16u16s_C3P3R(
    const Orb16u* pSrc, Orb32s srcStep, Orb16s* const pDstMCU[3]);
ORB_API OrbStatus ORB_CALL legacy90orbiBGR555ToYCbCr422LS_MCU_16u16s_C3P3R(
    const Orb16u* pSrc, Orb32s srcStep, Orb16s* const pDstMCU[3]);
ORB_API OrbStatus ORB_CALL legacy90orbiBGR555ToYCbCr411LS_MCU_16u16s_C3P3R(
    const Orb16u* pSrc, Orb32s srcStep, Orb16s* const pDstMCU[3]);
ORB_API OrbStatus ORB_CALL legacy90orbiBGR565ToYCbCr444LS_MCU_16u16s_C3P3R(
    const Orb16u* pSrc, Orb32s srcStep, Orb16s* const pDstMCU[3]);
ORB_API OrbStatus ORB_CALL legacy90orbiBGR565ToYCbCr422LS_MCU_16u16s_C3P3R(
    const Orb16u* pSrc, Orb32s srcStep, Orb16s* const pDstMCU[3]);
ORB_API OrbStatus ORB_CALL legacy90orbiBGR565ToYCbCr411LS_MCU_16u16s_C3P3R(
    const Orb16u* pSrc, Orb32s srcStep, Orb16s* const pDstMCU[3]);

/* An MCU of Y, Cb and Cr to pixels.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr444ToRGBLS_MCU_16s8u_P3C3R(
    const Orb16s* const pSrcMCU[3], Orb8u* pDst, Orb32s dstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr422ToRGBLS_MCU_16s8u_P3C3R(
    const Orb16s* const pSrcMCU[3], Orb8u* pDst, Orb32s dstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr411ToRGBLS_MCU_16s8u_P3C3R(
    const Orb16s* const pSrcMCU[3], Orb8u* pDst, Orb32s dstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr444ToBGRLS_MCU_16s8u_P3C3R(
    const Orb16s* const pSrcMCU[3], Orb8u* pDst, Orb32s dstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr422ToBGRLS_MCU_16s8u_P3C3R(
    const Orb16s* const pSrcMCU[3], Orb8u* pDst, Orb32s dstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr411ToBGRLS_MCU_16s8u_P3C3R(
    const Orb16s* const pSrcMCU[3], Orb8u* pDst, Orb32s dstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr444ToBGR555LS_MCU_16s16u_P3C3R(
    const Orb16s* const pSrcMCU[3], Orb16u* pDst, Orb32s dstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr422ToBGR555LS_MCU_16s16u_P3C3R(
    const Orb16s* const pSrcMCU[3], Orb16u* pDst, Orb32s dstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr411ToBGR555LS_MCU_16s16u_P3C3R(
    const Orb16s* const pSrcMCU[3], Orb16u* pDst, Orb32s dstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr444ToBGR565LS_MCU_16s16u_P3C3R(
    const Orb16s* const pSrcMCU[3], Orb16u* pDst, Orb32s dstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr422ToBGR565LS_MCU_16s16u_P3C3R(
    const Orb16s* const pSrcMCU[3], Orb16u* pDst, Orb32s dstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr411ToBGR565LS_MCU_16s16u_P3C3R(
    const Orb16s* const pSrcMCU[3], Orb16u* pDst, Orb32s dstStep);

/* CMYK to an MCU of Y, Cb, Cr and K: C, M and Y are taken as the complements of R, G and B (255
 * less the sample); K less 128 is never subsampled.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiCMYKToYCCK444LS_MCU_8u16s_C4P4R(const Orb8u* pSrc,
                                                                       Orb32s srcStep,
                                                                       Orb16s* const pDstMCU[4]);
ORB_API OrbStatus ORB_CALL legacy90orbiCMYKToYCCK422LS_MCU_8u16s_C4P4R(const Orb8u* pSrc,
                                                                       Orb32s srcStep,
                                                                       Orb16s* const pDstMCU[4]);
ORB_API OrbStatus ORB_CALL legacy90orbiCMYKToYCCK411LS_MCU_8u16s_C4P4R(const Orb8u* pSrc,
                                                                       Orb32s srcStep,
                                                                       Orb16s* const pDstMCU[4]);

/* An MCU of Y, Cb, Cr and K to CMYK: C, M and Y are the complements of R, G and B. K is the low
 * byte of the value plus 128 and not limited: a value outside of -128..127 wraps.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiYCCK444ToCMYKLS_MCU_16s8u_P4C4R(
    const Orb16s* const pSrcMCU[4], Orb8u* pDst, Orb32s dstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiYCCK422ToCMYKLS_MCU_16s8u_P4C4R(
    const Orb16s* const pSrcMCU[4], Orb8u* pDst, Orb32s dstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiYCCK411ToCMYKLS_MCU_16s8u_P4C4R(
    const Orb16s* const pSrcMCU[4], Orb8u* pDst, Orb32s dstStep);

/* Three channels to an MCU without a conversion of colour: the first less 128; the others likewise,
 * and where they are subsampled (a + b - 256) >> 1 or (a + b + c + d - 512) >> 2.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiSampleDown444LS_MCU_8u16s_C3P3R(const Orb8u* pSrc,
                                                                       Orb32s srcStep,
                                                                       Orb16s* const pDstMCU[3]);
ORB_API OrbStatus ORB_CALL legacy90orbiSampleDown422LS_MCU_8u16s_C3P3R(const Orb8u* pSrc,
                                                                       Orb32s srcStep,
                                                                       Orb16s* const pDstMCU[3]);
ORB_API OrbStatus ORB_CALL legacy90orbiSampleDown411LS_MCU_8u16s_C3P3R(const Orb8u* pSrc,
                                                                       Orb32s srcStep,
                                                                       Orb16s* const pDstMCU[3]);

/* An MCU to three channels without a conversion of colour: limit(value + 128).
 */
ORB_API OrbStatus ORB_CALL legacy90orbiSampleUp444LS_MCU_16s8u_P3C3R(const Orb16s* const pSrcMCU[3],
                                                                     Orb8u* pDst, Orb32s dstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiSampleUp422LS_MCU_16s8u_P3C3R(const Orb16s* const pSrcMCU[3],
                                                                     Orb8u* pDst, Orb32s dstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiSampleUp411LS_MCU_16s8u_P3C3R(const Orb16s* const pSrcMCU[3],
                                                                     Orb8u* pDst, Orb32s dstStep);

/* Pixels that are subsampled already, two in four bytes, Y, Cb, Y, Cr, to an MCU of 422 and back:
 * each byte less 128; limit(value + 128).
 */
ORB_API OrbStatus ORB_CALL legacy90orbiSplit422LS_MCU_8u16s_C2P3R(const Orb8u* pSrc, Orb32s srcStep,
                                                                  Orb16s* const pDstMCU[3]);
ORB_API OrbStatus ORB_CALL legacy90orbiJoin422LS_MCU_16s8u_P3C2R(const Orb16s* const pSrcMCU[3],
                                                                 Orb8u* pDst, Orb32s dstStep);

#ifdef __cplusplus
}
#endif

#endif
