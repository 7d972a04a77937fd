/* DV primitives (IEC 61834-2, SMPTE 314M, SMPTE 370M): decoding of compressed video segments to
 * blocks of coefficients, the block operations behind that, and the way from blocks to a frame.
 *
 * The host owns the DIF blocks, the places of macroblocks in a frame, quantisation and weights. A
 * block is 64 contiguous values, rows of 8.
 */
#ifndef ORB90LEGACY_DV_H
#define ORB90LEGACY_DV_H

#include "orb90legacy/status.h"
#include "orb90legacy/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------------------------------
 * Variable-length decoding of video segments
 *
 * A segment is 400 bytes: five compressed macroblocks of 80. The low 4 bits of a macroblock's byte
 * 3 are its quantisation number; from byte 4 on each of its blocks has an area: 4 of 14 bytes and 2
 * of 10 in DV, 6 of 10 and 2 of 8 in DV100. An area starts with 9 bits of DC, a mode bit (1 for the
 * 2-4-8 transform) and 2 class bits; codes of AC coefficients follow, most significant bit first.
 *
 * A block that finds no room in its area goes on in what others have left of theirs: first within
 * the macroblock, then within the segment. Blocks and the areas with room are both taken in the
 * order of the stream.
 * ---------------------------------------------------------------------------------------------- */

/* A code table, made by InitAlloc and released by Free. Any number of threads may read it. */
typedef struct OrbDVHuffTable OrbDVHuffTable;

/* Makes a table of two descriptions of codes. A description is an array of words: its width N, two
 * words that are not read, then for each length from 1 to N a count and as many triples of code,
 * run and level. A code takes all places of a table of 2^N that begin with its bits; what a code
 * has above N bits is dropped, and of two codes for one place the later one stands. A width of 0
 * ends the description.
 *
 * pSpec1 has the codes that 9 bits tell, and N of 9. pSpec2 has those behind the prefix 1111, which
 * the places 480 to 507 of 9 bits lead to: N is 9, and a length counts neither the prefix nor the
 * 4 bits that the decoder adds for it. A sign is a code's last bit, and level carries it. The code
 * for the end of a block, 0110, has a run that leads past position 63 from any other. Escapes, with
 * the prefix 1111111, are not described: the decoder knows them.
 *
 * With other widths a decoder reads the places that it would read at 9, whatever they then hold.
 *
 * Returns orbStsNullPtrErr for any pointer; orbStsMemAllocErr if there is no memory, as there is
 * not for a width below 0 or above 27.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiInitAllocHuffmanTable_DV_32u(const Orb32s* pSpec1,
                                                                    const Orb32s* pSpec2,
                                                                    OrbDVHuffTable** ppTable);

/* Releases a table. Returns orbStsNullPtrErr for null. */
ORB_API OrbStatus ORB_CALL legacy90orbiFreeHuffmanTable_DV_32u(OrbDVHuffTable* pTable);

/* Decodes the 400 bytes of a segment to 30 blocks, or 40 of DV100, in the order of the stream.
 *
 * A DC value is stored times 128 as element 0 of its block, an AC coefficient times 64 at the place
 * that pScanTables gives for its scan position: 64 places for blocks of mode 0, then 64 for those
 * of mode 1, which DV100 does not look at. Places count modulo 64. Nothing else is stored, so the
 * host clears the blocks first. A scan position may be stored as 0, by codes for runs.
 *
 * pBlockInfo receives a word for each block: bit 0 is 1 if the block ended by the end-of-block
 * code; bits 4 to 6 are the class bits and, in bit 6, the mode bit; bits 8 to 15 are the scan
 * position of the last coefficient stored, 0 if there is only DC; bits 16 to 19 are the
 * quantisation number.
 *
 * Any bytes decode. What does not belong to a code ends its block where it stands, and so does a
 * position that passes 63 otherwise than by the end-of-block code, or the end of all areas: bit 0
 * of the block's word shows it.
 *
 * Returns orbStsNullPtrErr for any pointer.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiHuffmanDecodeSegment_DV_8u16s(const Orb8u* pStream,
                                                                     const Orb32u* pScanTables,
                                                                     const OrbDVHuffTable* pTable,
                                                                     Orb16s* pBlocks,
                                                                     Orb32u* pBlockInfo);
ORB_API OrbStatus ORB_CALL legacy90orbiHuffmanDecodeSegment_DV100_8u16s(
    const Orb8u* pStream, const Orb32u* pScanTables, const OrbDVHuffTable* pTable, Orb16s* pBlocks,
    Orb32u* pBlockInfo);

/* ------------------------------------------------------------------------------------------------
 * Transforms and weighting
 *
 * The 2-4-8 transform is for blocks whose two fields differ by motion: the sums and the differences
 * of each two lines are transformed by themselves, 4 lines down and 8 columns across. Rows 0 to 3
 * of its coefficients belong to the sums, rows 4 to 7 to the differences. The transforms work on
 * integers of 32 bits, which wrap, and keep the low 16 bits between their stages; their results are
 * the same in all builds. 8-8 blocks go through the DCT of jpeg.h.
 * ---------------------------------------------------------------------------------------------- */

/* The 2-4-8 transform of a block in place, forward, scaled so that a flat block of v gives 8 v at
 * element 0; and inverse. The two give a block of samples back to within 2.
 *
 * Returns orbStsNullPtrErr.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiDCT2x4x8Frw_16s_C1I(Orb16s* pBlock);
ORB_API OrbStatus ORB_CALL legacy90orbiDCT2x4x8Inv_16s_C1I(Orb16s* pBlock);

/* Counts the zeros among the 64 values of a block.
 *
 * Returns orbStsNullPtrErr for either pointer.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiCountZeros8x8_16s_C1(const Orb16s* pBlock, Orb32s* pZeros);

/* Turns a decoded block of DV100 into coefficients for the inverse DCT, in place: element 0 becomes
 * c >> 5, any other ((c >> 6) * qp * weight) >> 5, of which the low 16 bits are kept. qp is the
 * quantisation step shifted left by the class; pWeights has 64 weights in raster order, and its
 * element 0 is not used.
 *
 * Returns orbStsNullPtrErr for either pointer.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiQuantWeightBlockInv_DV100_16s_C1I(Orb16s* pBlock,
                                                                         const Orb16s* pWeights,
                                                                         Orb32s qp);

/* ------------------------------------------------------------------------------------------------
 * From blocks to a frame
 *
 * Blocks are samples about 0: a macroblock is a run of them, Y first, then Cr, then Cb. A frame is
 * interleaved 4:2:2, bytes in the order Y, Cb, Y, Cr; each is a sample plus 128, limited to 0..255.
 * Functions write whole macroblocks, whose first bytes may lie anywhere in the frame; dstStep may
 * be negative, and is not checked.
 * ---------------------------------------------------------------------------------------------- */

/* 4:1:1: four Y blocks in a row, 32 x 8 pixels, of five macroblocks. A chroma column serves four
 * pixels: the first two as it is, the others with the mean of it and the next column, halved
 * towards zero. The last column has no next, and serves all four as it is.
 *
 * A null in ppBlocks ends the work: what is before it is written, and what is behind it not looked
 * at.
 *
 * Returns orbStsNullPtrErr for ppBlocks or ppDst; for a null in ppDst, as its turn comes.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiYCrCb411ToYCbCr422_5MBDV_16s8u_P3C2R(
    const Orb16s* const* ppBlocks, Orb8u* const* ppDst, Orb32s dstStep);

/* 4:1:1 at the right edge of a frame: one macroblock of 16 x 16 pixels, Y blocks 2 by 2. Chroma
 * columns 0 to 3 of row r belong to pixel row r, columns 4 to 7 to pixel row r + 8; each four are
 * spread as above.
 *
 * Returns orbStsNullPtrErr for either pointer.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiYCrCb411ToYCbCr422_EdgeDV_16s8u_P3C2R(const Orb16s* pBlocks,
                                                                             Orb8u* pDst,
                                                                             Orb32s dstStep);

/* 4:2:0: Y blocks 2 by 2, 16 x 16 pixels, of five macroblocks. A chroma column serves two pixels.
 * Of four pixel rows 4 i to 4 i + 3, the even two have chroma row 2 i, the odd two row 2 i + 1:
 * each field repeats its own.
 *
 * Returns orbStsNullPtrErr for ppBlocks or ppDst; for a null in either, as its turn comes.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiYCrCb420ToYCbCr422_5MBDV_16s8u_P3C2R(
    const Orb16s* const* ppBlocks, Orb8u* const* ppDst, Orb32s dstStep);

/* 4:2:2 of 50 Mbit/s: 16 x 8 pixels, of five macroblocks of six blocks. Y is in blocks 0 and 2, Cr
 * in 4, Cb in 5; blocks 1 and 3 hold no picture. A chroma column serves two pixels.
 *
 * Returns orbStsNullPtrErr for ppBlocks or ppDst; for a null in either, as its turn comes.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiYCrCb422ToYCbCr422_5MBDV_16s8u_P3C2R(
    const Orb16s* const* ppBlocks, Orb8u* const* ppDst, Orb32s dstStep);

/* 4:2:2 of DV100: the 40 blocks of five macroblocks, each in two halves of 16 x 8 pixels, for which
 * ppDst has ten places. The first half of a macroblock has Y in its blocks 0 and 1, Cr in 4, Cb in
 * 6; the second has 2, 3, 5 and 7.
 *
 * Returns orbStsNullPtrErr for pBlocks or ppDst; for a null in ppDst, as its turn comes.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiYCrCb422ToYCbCr422_10HalvesMB16x8_DV100_16s8u_P3C2R(
    const Orb16s* pBlocks, Orb8u* const* ppDst, Orb32s dstStep);

#ifdef __cplusplus
}
#endif

#endif
