/* JPEG XR primitives: everything between the samples of a macroblock and the bits of its
 * coefficients (ITU-T T.832). The host owns colour, the overlap filters, quantisation, prediction,
 * block patterns, the DC band, packets, headers and the file.
 */
#ifndef ORB90LEGACY_JPEGXR_H
#define ORB90LEGACY_JPEGXR_H

#include "orb90legacy/status.h"
#include "orb90legacy/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------------------------------
 * Core transform
 * ---------------------------------------------------------------------------------------------- */

/* The photo core transform of each 4x4 block of a region by itself, in place. It is made of lifting
 * steps with rounding, so that of integers the inverse restores exactly what the forward transform
 * had; a block of one value v becomes 4v, up to rounding, in its first sample, and zeros. The order
 * of the coefficients in a block is the transform's own: see the natural frequency index below.
 *
 * What a step stores wraps to 16 bits (16s) or to 32 bits (32s). 16s is exact for samples of up to
 * 13 bits with their sign. 32f does the same steps without rounding: each is computed in double
 * precision and stored in single, so that the inverse comes back to within a few units in the last
 * place.
 *
 * The step is unsigned, and rows do not overlap.
 */

/* An image, of any width and height that are multiples of 4.
 *
 * Returns orbStsNullPtrErr; orbStsSizeErr if the width or the height is below 1; orbStsStepErr if
 * the step is less than a row's bytes; orbStsSizeErr if the width or the height is not a multiple
 * of 4.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiPCTFwd_JPEGXR_16s_C1IR(Orb16s* pSrcDst, Orb32u srcDstStep,
                                                              Orb32s width, Orb32s height);
ORB_API OrbStatus ORB_CALL legacy90orbiPCTFwd_JPEGXR_32s_C1IR(Orb32s* pSrcDst, Orb32u srcDstStep,
                                                              Orb32s width, Orb32s height);
ORB_API OrbStatus ORB_CALL legacy90orbiPCTFwd_JPEGXR_32f_C1IR(Orb32f* pSrcDst, Orb32u srcDstStep,
                                                              Orb32s width, Orb32s height);
ORB_API OrbStatus ORB_CALL legacy90orbiPCTInv_JPEGXR_16s_C1IR(Orb16s* pSrcDst, Orb32u srcDstStep,
                                                              Orb32s width, Orb32s height);
ORB_API OrbStatus ORB_CALL legacy90orbiPCTInv_JPEGXR_32s_C1IR(Orb32s* pSrcDst, Orb32u srcDstStep,
                                                              Orb32s width, Orb32s height);
ORB_API OrbStatus ORB_CALL legacy90orbiPCTInv_JPEGXR_32f_C1IR(Orb32f* pSrcDst, Orb32u srcDstStep,
                                                              Orb32s width, Orb32s height);

/* The planes of a macroblock, with the sizes in the name (width x height): luma 16x16, chroma of
 * 4:2:2 8x16 and of 4:2:0 8x8. The same as an image of that size.
 *
 * Returns orbStsNullPtrErr; orbStsStepErr if the step is less than a row's bytes.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiPCTFwd8x8_JPEGXR_16s_C1IR(Orb16s* pSrcDst,
                                                                 Orb32u srcDstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiPCTFwd8x8_JPEGXR_32s_C1IR(Orb32s* pSrcDst,
                                                                 Orb32u srcDstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiPCTFwd8x8_JPEGXR_32f_C1IR(Orb32f* pSrcDst,
                                                                 Orb32u srcDstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiPCTFwd8x16_JPEGXR_16s_C1IR(Orb16s* pSrcDst,
                                                                  Orb32u srcDstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiPCTFwd8x16_JPEGXR_32s_C1IR(Orb32s* pSrcDst,
                                                                  Orb32u srcDstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiPCTFwd8x16_JPEGXR_32f_C1IR(Orb32f* pSrcDst,
                                                                  Orb32u srcDstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiPCTFwd16x16_JPEGXR_16s_C1IR(Orb16s* pSrcDst,
                                                                   Orb32u srcDstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiPCTFwd16x16_JPEGXR_32s_C1IR(Orb32s* pSrcDst,
                                                                   Orb32u srcDstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiPCTFwd16x16_JPEGXR_32f_C1IR(Orb32f* pSrcDst,
                                                                   Orb32u srcDstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiPCTInv8x8_JPEGXR_16s_C1IR(Orb16s* pSrcDst,
                                                                 Orb32u srcDstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiPCTInv8x8_JPEGXR_32s_C1IR(Orb32s* pSrcDst,
                                                                 Orb32u srcDstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiPCTInv8x8_JPEGXR_32f_C1IR(Orb32f* pSrcDst,
                                                                 Orb32u srcDstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiPCTInv8x16_JPEGXR_16s_C1IR(Orb16s* pSrcDst,
                                                                  Orb32u srcDstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiPCTInv8x16_JPEGXR_32s_C1IR(Orb32s* pSrcDst,
                                                                  Orb32u srcDstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiPCTInv8x16_JPEGXR_32f_C1IR(Orb32f* pSrcDst,
                                                                  Orb32u srcDstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiPCTInv16x16_JPEGXR_16s_C1IR(Orb16s* pSrcDst,
                                                                   Orb32u srcDstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiPCTInv16x16_JPEGXR_32s_C1IR(Orb32s* pSrcDst,
                                                                   Orb32u srcDstStep);
ORB_API OrbStatus ORB_CALL legacy90orbiPCTInv16x16_JPEGXR_32f_C1IR(Orb32f* pSrcDst,
                                                                   Orb32u srcDstStep);

/* ------------------------------------------------------------------------------------------------
 * Adaptive scan and codes
 * ---------------------------------------------------------------------------------------------- */

/* Coefficients are coded with variable-length codes, in the order of a scan, and both follow the
 * data: each coder steps between the code tables of its alphabet, and each position of a scan moves
 * up as its coefficient proves to be more frequent. A record holds both. A host has one for each
 * tile and plane: it starts it with orbiVLCInit_JPEGXR and orbiVLCScanReset_JPEGXR of all three
 * scans, and then resets and adapts it at the macroblocks where the standard says so.
 *
 * The natural frequency index numbers the coefficients of a block, at (column, row) in a block as
 * the forward transform leaves it:
 *
 *    0 (0, 0)   1 (1, 0)   2 (0, 1)   3 (1, 1)   4 (3, 0)   5 (2, 0)   6 (3, 1)   7 (2, 1)
 *    8 (0, 3)   9 (1, 3)  10 (0, 2)  11 (1, 2)  12 (3, 3)  13 (2, 3)  14 (3, 2)  15 (2, 2)
 *
 * The scans are three permutations of it. They start as follows, and index 0, the DC, stays in
 * front:
 *
 *   0, high-pass   0 10  2 12  5  9  4  8  1 13  6 15 14  3 11  7
 *   1, high-pass   0  5 10 12  1  2  8  4  6  9  3 14 13  7 11 15
 *   2, low-pass    0  1  4  5  2  8  6  9  3 12 10  7 13 11 14 15
 *
 * Of the low-pass block, which is the block of DCs of a macroblock, an index n of scan 2 is as well
 * read as 4 x vertical + horizontal frequency: what a host takes an index for is its own affair
 * there.
 */
typedef struct OrbiVLCState_JPEGXR OrbiVLCState_JPEGXR;

/* The size of a record in bytes: 1780. The host allocates it, at any address.
 *
 * Returns orbStsNullPtrErr.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiVLCGetStateSize_JPEGXR(Orb32s* pSize);

/* Starts a record: every coder with the first table of its alphabet, the scans in their start
 * orders, scan 2 the current one. The weights of the scans are left as they are: see
 * orbiVLCScanReset_JPEGXR.
 *
 * Returns orbStsNullPtrErr.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiVLCInit_JPEGXR(OrbiVLCState_JPEGXR* pState);

/* Lets coders step to the next table if the symbols that they have coded since ask for it: with
 * kind 0 those of runs and of low-pass blocks, with 1 those of high-pass blocks.
 *
 * Each coder has one discriminant or two, to which every symbol adds a change from a table. A first
 * one below -8 steps down, a second (or only) one above 8 steps up, and both start anew from 0;
 * otherwise they are limited to -64..64. Runs have one code for good: coding them changes nothing.
 *
 * Returns orbStsNullPtrErr; orbStsOutOfRangeErr for another kind.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiVLCAdapt_JPEGXR(OrbiVLCState_JPEGXR* pState, Orb32s kind);

/* Makes scan 0, 1 or 2 the current one: the one by which orbiVLCEncode4x4 and orbiVLCDecode4x4 go.
 *
 * Returns orbStsNullPtrErr; orbStsOutOfRangeErr for another scan.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiVLCScanSet_JPEGXR(OrbiVLCState_JPEGXR* pState, Orb32s scan);

/* Gives the positions of a scan their weights 32767, 32, 30, 28 and so on to 4. Its order stays. A
 * coefficient adds 1 to the weight of its position, which moves up by one if it then exceeds that
 * of the position before.
 *
 * Returns orbStsNullPtrErr; orbStsOutOfRangeErr for another scan than 0, 1 and 2.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiVLCScanReset_JPEGXR(OrbiVLCState_JPEGXR* pState,
                                                           Orb32s scan);

/* Makes the list of a low-pass block that the encoders for 4:4:4 take, and makes scan 2 the current
 * one. pSrc has 16 coefficients by index; that of index 0 is not looked at.
 *
 * With modelBits m, a coefficient x of a magnitude a of 2^m or more becomes a pair, the number of
 * zeros in front of it in the order of scan 2 and then its level, a >> m with the sign of x;
 * smaller ones count as zeros. pRunLevel has room for 15 pairs, *pPairCount is their number. With m
 * above 0 the rest of each goes to pResidual, by index:
 *
 *   with a pair    2 (a mod 2^m)
 *   without        4a, plus 2 if x is negative, plus 1 if x is not 0
 *
 * A residual is made for fixed-length coding: bit 0 tells that it has a sign, which is bit 1 then.
 * With m = 0, and at index 0, pResidual is left as it is.
 *
 * Returns orbStsNullPtrErr for any pointer; orbStsOutOfRangeErr if modelBits is above 15.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiVLCScan4x4DC_JPEGXR_32s(const Orb32s* pSrc, Orb32u modelBits,
                                                               Orb32s* pResidual, Orb32s* pRunLevel,
                                                               Orb32s* pPairCount,
                                                               OrbiVLCState_JPEGXR* pState);

/* ------------------------------------------------------------------------------------------------
 * Coefficient coding
 * ---------------------------------------------------------------------------------------------- */

/* The run-level code of the coefficients of one block. Every call updates the adaptive state.
 *
 * The bit stream has its most significant bits first, in units of two bytes, the high one first. Of
 * it the host keeps three things, which the functions move on: *ppBitStream, the next unit;
 * *pBitBuf, pending bits, left aligned and with zeros behind them; *pBitCount, their number, at
 * most 32. A stream starts with no bits, and a host may put in and take out bits of its own between
 * calls.
 *
 * - A writer sends a unit whenever more than 16 bits wait, so that 16 or fewer do after a call. A
 * host that ends a stream stores those itself.
 * - A reader fetches a unit whenever fewer than 16 bits are there, so that 16 or more are after a
 * call. It has then read up to 31 bits, and no more, beyond those that it has used: the stream
 * position in bits is that of *ppBitStream less *pBitCount.
 *
 * Nothing in a stream is a fault that a reader would notice, but a run that leaves its block, and
 * readers know no end: the host bounds the stream. A call writes or reads no more than 120 bytes
 * whatever the coefficients and the bits are, so that it is enough to have 120 bytes behind the
 * stream (zeros, say), and to check before each call that the position has not passed its end.
 *
 * colourClass is 0 for the first channel and any other value for the others; each has index coders
 * of its own. Levels have a sign and a magnitude of 1 to 2^30 + 1; a larger one is coded as the
 * largest.
 */

/* A high-pass block, by the current scan: a region of 4x4 samples, the first of which is not looked
 * at. With modelBits m, a coefficient of magnitude a is coded if a is 2^m or more, as the level a
 * >> m with its sign. *pNumNonZero is the number of coefficients coded. If there are none, nothing
 * is written.
 *
 * Returns orbStsNullPtrErr for any pointer, and for a stream that is null; orbStsOutOfRangeErr if
 * *pBitCount is above 32 or modelBits above 15.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiVLCEncode4x4_JPEGXR_16s1u_C1R(
    const Orb16s* pSrc, Orb32s srcStep, Orb32s colourClass, Orb32u modelBits, Orb8u** ppBitStream,
    Orb32u* pBitBuf, Orb32u* pBitCount, Orb32s* pNumNonZero, OrbiVLCState_JPEGXR* pState);
ORB_API OrbStatus ORB_CALL legacy90orbiVLCEncode4x4_JPEGXR_32s1u_C1R(
    const Orb32s* pSrc, Orb32s srcStep, Orb32s colourClass, Orb32u modelBits, Orb8u** ppBitStream,
    Orb32u* pBitBuf, Orb32u* pBitCount, Orb32s* pNumNonZero, OrbiVLCState_JPEGXR* pState);

/* The same, and the rest of each coefficient goes to pResidual, which has 16 entries by natural
 * index (the first is left as it is), without its trimBits lowest bits:
 *
 *   coded       2 ((a mod 2^modelBits) >> trimBits)
 *   not coded   with w = a >> trimBits: 4w, plus 2 if negative and plus 1, both only if w is not 0
 *
 * Returns orbStsNullPtrErr for any pointer, and for a stream that is null; orbStsOutOfRangeErr if
 * *pBitCount is above 32, modelBits above 15 or trimBits above 15.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiVLCEncode4x4Flex_JPEGXR_16s1u_C1R(
    const Orb16s* pSrc, Orb32s srcStep, Orb32s colourClass, Orb32u modelBits, Orb32u trimBits,
    Orb32s* pResidual, Orb8u** ppBitStream, Orb32u* pBitBuf, Orb32u* pBitCount, Orb32s* pNumNonZero,
    OrbiVLCState_JPEGXR* pState);
ORB_API OrbStatus ORB_CALL legacy90orbiVLCEncode4x4Flex_JPEGXR_32s1u_C1R(
    const Orb32s* pSrc, Orb32s srcStep, Orb32s colourClass, Orb32u modelBits, Orb32u trimBits,
    Orb32s* pResidual, Orb8u** ppBitStream, Orb32u* pBitBuf, Orb32u* pBitCount, Orb32s* pNumNonZero,
    OrbiVLCState_JPEGXR* pState);

/* Reads a high-pass block that has coefficients. All 16 samples are cleared first; those of the
 * coefficients become level x scale, cut to the sample's width. *pNumNonZero is the number of
 * coefficients, or 16 if a run has left the block: the coefficients in front of it stand in the
 * block then.
 *
 * Returns orbStsNullPtrErr for any pointer, and for a stream that is null; orbStsOutOfRangeErr if
 * *pBitCount is above 32.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiVLCDecode4x4_JPEGXR_1u16s_C1R(
    Orb16u** ppBitStream, Orb32u* pBitBuf, Orb32u* pBitCount, Orb16s scale, Orb16s* pDst,
    Orb32s dstStep, Orb32s colourClass, Orb32s* pNumNonZero, OrbiVLCState_JPEGXR* pState);
ORB_API OrbStatus ORB_CALL legacy90orbiVLCDecode4x4_JPEGXR_1u32s_C1R(
    Orb16u** ppBitStream, Orb32u* pBitBuf, Orb32u* pBitCount, Orb16s scale, Orb32s* pDst,
    Orb32s dstStep, Orb32s colourClass, Orb32s* pNumNonZero, OrbiVLCState_JPEGXR* pState);

/* Writes the list of a low-pass block: pairs of a run of zeros and a level that is not 0. DC444
 * takes the 15 coefficients of a channel, as orbiVLCScan4x4DC_JPEGXR_32s lists them. DC422 and
 * DC420 take those of both chroma channels, 14 and 6, in the host's order of slots (that of the
 * standard alternates between the two), as colour class 1. A pair that would lead behind the last
 * position is left out, and with it those that follow. Without a pair nothing is written.
 *
 * Returns orbStsNullPtrErr for any pointer, and for a stream that is null; orbStsOutOfRangeErr if
 * *pBitCount is above 32, or pairCount above 16 (DC444), 14 (DC422) or 6 (DC420).
 */
ORB_API OrbStatus ORB_CALL legacy90orbiVLCEncodeDC444_JPEGXR_32s1u(
    const Orb32s* pRunLevel, Orb32s pairCount, Orb32s colourClass, Orb8u** ppBitStream,
    Orb32u* pBitBuf, Orb32u* pBitCount, OrbiVLCState_JPEGXR* pState);
ORB_API OrbStatus ORB_CALL legacy90orbiVLCEncodeDC422_JPEGXR_32s1u(
    const Orb32s* pRunLevel, Orb32s pairCount, Orb8u** ppBitStream, Orb32u* pBitBuf,
    Orb32u* pBitCount, OrbiVLCState_JPEGXR* pState);
ORB_API OrbStatus ORB_CALL legacy90orbiVLCEncodeDC420_JPEGXR_32s1u(
    const Orb32s* pRunLevel, Orb32s pairCount, Orb8u** ppBitStream, Orb32u* pBitBuf,
    Orb32u* pBitCount, OrbiVLCState_JPEGXR* pState);

/* Reads a low-pass block that has coefficients, of one channel of 16 blocks: pDst has 16 entries by
 * index. Those of the coefficients become the levels, and scan 2 adapts. All others are left as
 * they are: the host clears them. *pNumNonZero is the number of coefficients, or 16 if a run has
 * left the block.
 *
 * Returns orbStsNullPtrErr for any pointer, and for a stream that is null; orbStsOutOfRangeErr if
 * *pBitCount is above 32.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiVLCDecodeDC444_JPEGXR_1u32s(
    Orb16u** ppBitStream, Orb32u* pBitBuf, Orb32u* pBitCount, Orb32s* pDst, Orb32s colourClass,
    Orb32s* pNumNonZero, OrbiVLCState_JPEGXR* pState);

/* Reads the list of both chroma channels. The entries of pDst, 14 (DC422) or 6 (DC420), are cleared
 * first, and those of the coefficients become the levels. *pNumNonZero is the number of
 * coefficients; it is not written if the stream leads behind the last entry.
 *
 * Returns as orbiVLCDecodeDC444_JPEGXR_1u32s does.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiVLCDecodeDC422_JPEGXR_1u32s(Orb16u** ppBitStream,
                                                                   Orb32u* pBitBuf,
                                                                   Orb32u* pBitCount, Orb32s* pDst,
                                                                   Orb32s* pNumNonZero,
                                                                   OrbiVLCState_JPEGXR* pState);
ORB_API OrbStatus ORB_CALL legacy90orbiVLCDecodeDC420_JPEGXR_1u32s(Orb16u** ppBitStream,
                                                                   Orb32u* pBitBuf,
                                                                   Orb32u* pBitCount, Orb32s* pDst,
                                                                   Orb32s* pNumNonZero,
                                                                   OrbiVLCState_JPEGXR* pState);

/* ------------------------------------------------------------------------------------------------
 * Fixed-length coding
 * ---------------------------------------------------------------------------------------------- */

/* The low bits of the 15 coefficients of a block behind its DC, which the run-level code has left
 * out (the standard's flexbits), in the fixed order of natural indexes
 *
 *   5 1 6 10 12 8 14 2 4 3 7 9 13 11 15
 *
 * The bit stream is that of coefficient coding. A call writes or reads no more than 32 bytes.
 */

/* Writes a block. With useResidual not 0, of each word r of pResidual (16 by natural index) the
 * value r >> 1 goes out, in `bits` bits, or in one more if r is odd. With useResidual 0, of each
 * sample the value v = magnitude >> trimBits goes out, in `bits` bits and followed by the sign if v
 * is not 0, or as `bits` zeros. Of a value that is too large the low bits go out. A v of 2^bits or
 * more may then be sent as 0 with a sign, on which a reader loses step: the host sees to it that
 * values fit.
 *
 * Returns orbStsNullPtrErr for any pointer, used or not, and for a stream that is null;
 * orbStsOutOfRangeErr if *pBitCount is above 32, or bits or trimBits above 15.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiFLCEncode4x4_JPEGXR_16s1u_C1R(
    const Orb16s* pSrc, Orb32s srcStep, const Orb32s* pResidual, Orb8u** ppBitStream,
    Orb32u* pBitBuf, Orb32u* pBitCount, Orb32u bits, Orb32u trimBits, Orb32s useResidual);
ORB_API OrbStatus ORB_CALL legacy90orbiFLCEncode4x4_JPEGXR_32s1u_C1R(
    const Orb32s* pSrc, Orb32s srcStep, const Orb32s* pResidual, Orb8u** ppBitStream,
    Orb32u* pBitBuf, Orb32u* pBitCount, Orb32u bits, Orb32u trimBits, Orb32s useResidual);

/* Reads a block: of each coefficient a value of `bits` bits, which leaves the sample as it is if it
 * is 0. With refine not 0, a sample that is not 0 grows away from 0 by value x scale, and no sign
 * follows. Otherwise, and with refine 0 always, a sign follows, and the sample becomes value x
 * scale with it. Samples are cut to their width.
 *
 * Returns orbStsNullPtrErr for any pointer, and for a stream that is null; orbStsOutOfRangeErr if
 * *pBitCount is above 32 or bits above 15.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiFLCDecode4x4_JPEGXR_1u16s_C1IR(
    Orb16u** ppBitStream, Orb32u* pBitBuf, Orb32u* pBitCount, Orb16s* pSrcDst, Orb32s srcDstStep,
    Orb32u bits, Orb16s scale, Orb32s refine);
ORB_API OrbStatus ORB_CALL legacy90orbiFLCDecode4x4_JPEGXR_1u32s_C1IR(
    Orb16u** ppBitStream, Orb32u* pBitBuf, Orb32u* pBitCount, Orb32s* pSrcDst, Orb32s srcDstStep,
    Orb32u bits, Orb16s scale, Orb32s refine);

#ifdef __cplusplus
}
#endif

#endif
