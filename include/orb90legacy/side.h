/* Side primitives, small families that stand by themselves: video colour, small linear systems,
 * channels of samples, and rows of TIFF files.
 */
#ifndef ORB90LEGACY_SIDE_H
#define ORB90LEGACY_SIDE_H

#include "orb90legacy/status.h"
#include "orb90legacy/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------------------------------
 * Video colour (ITU-R BT.601, video range)
 *
 * Between BGR in words of 16 bits and YCbCr in which black has a Y of 16, white one of 235, and
 * chroma without colour is 128. Conversions for JPEG files, where Y goes from 0 to 255, are in
 * jpeg.h.
 *
 * A word has blue in its lowest 5 bits, then green in 5 (BGR555) or 6 (BGR565), then red in 5. The
 * highest bit of a BGR555 word is not looked at, and written as 0. A field counts as the sample of
 * 8 bits whose lowest bits are 0: the whitest word is not quite white.
 *
 * Planes come as arrays of three pointers and three steps, in the order Y, Cb, Cr, or Y, Cr, Cb
 * where the name has it so. Chroma has one sample for two pixels of a row (422), or for two by two
 * pixels (420). In the interleaved form (C2) two pixels are four bytes: Y, Cb, Y, Cr. roiSize
 * counts pixels.
 *
 * Steps are in bytes and are not examined; that of the words of orbiBGR565ToBGR and orbiBGRToBGR565
 * counts without its lowest bit. A pointer to a plane or to an array of steps counts as a pointer.
 * All is computed in integers, the same in every build.
 * ---------------------------------------------------------------------------------------------- */

/* BGR to planes. With B, G and R the fields as samples of 8 bits, or the sums of those of the n = 2
 * or 4 pixels that share a chroma sample:
 *
 *   Y = (6423 B + 33030 G + 16843 R + 65536 * 16 + 32768) / 65536
 *   Cb = (28770 B - 19071 G - 9699 R) / (65536 n) + 128 + 1/8
 *   Cr = (-4653 B - 24117 G + 28770 R) / (65536 n) + 128 + 1/8
 *
 * rounded down. An odd last column and, of 420, an odd last row have their Y, and no chroma.
 *
 * Returns orbStsNullPtrErr for any pointer, orbStsSizeErr if the width is below 2 or the height
 * below 2 (420) or 1 (422).
 */
ORB_API OrbStatus ORB_CALL legacy90orbiBGR555ToYCbCr420_16u8u_C3P3R(const Orb16u* pSrc,
                                                                    Orb32s srcStep,
                                                                    Orb8u* const pDst[3],
                                                                    const Orb32s dstStep[3],
                                                                    OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiBGR565ToYCbCr420_16u8u_C3P3R(const Orb16u* pSrc,
                                                                    Orb32s srcStep,
                                                                    Orb8u* const pDst[3],
                                                                    const Orb32s dstStep[3],
                                                                    OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiBGR555ToYCrCb420_16u8u_C3P3R(const Orb16u* pSrc,
                                                                    Orb32s srcStep,
                                                                    Orb8u* const pDst[3],
                                                                    const Orb32s dstStep[3],
                                                                    OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiBGR565ToYCrCb420_16u8u_C3P3R(const Orb16u* pSrc,
                                                                    Orb32s srcStep,
                                                                    Orb8u* const pDst[3],
                                                                    const Orb32s dstStep[3],
                                                                    OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiBGR555ToYCbCr422_16u8u_C3P3R(const Orb16u* pSrc,
                                                                    Orb32s srcStep,
                                                                    Orb8u* const pDst[3],
                                                                    const Orb32s dstStep[3],
                                                                    OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiBGR565ToYCbCr422_16u8u_C3P3R(const Orb16u* pSrc,
                                                                    Orb32s srcStep,
                                                                    Orb8u* const pDst[3],
                                                                    const Orb32s dstStep[3],
                                                                    OrbiSize roiSize);

/* BGR to interleaved 422, by the same equations. An odd last pixel has a Y and behind it a Cb of
 * its own (n = 1); no Cr is written.
 *
 * Returns orbStsNullPtrErr for either pointer, orbStsSizeErr if the width is below 2 or the height
 * below 1.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiBGR555ToYCbCr422_16u8u_C3C2R(const Orb16u* pSrc,
                                                                    Orb32s srcStep, Orb8u* pDst,
                                                                    Orb32s dstStep,
                                                                    OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiBGR565ToYCbCr422_16u8u_C3C2R(const Orb16u* pSrc,
                                                                    Orb32s srcStep, Orb8u* pDst,
                                                                    Orb32s dstStep,
                                                                    OrbiSize roiSize);

/* Planes to BGR. A pixel takes the chroma sample of its pair of columns and of its pair of rows;
 * those of an odd last column or row have one too. In 4 fraction bits, each product rounded down:
 *
 *   y = (1220480 (Y - 16)) / 65536       u = 128 (Cb - 128)       v = 128 (Cr - 128)
 *   R = (y + 13074 v / 65536) / 16
 *   G = (y - 3211 u / 65536 - 6660 v / 65536) / 16
 *   B = (y + 16523 u / 65536) / 16
 *
 * rounded down again and limited to 0..255, of which a word takes the highest bits.
 *
 * Returns orbStsNullPtrErr for pSrc, pDst or the array of steps, orbStsSizeErr if the width or the
 * height is below 1, orbStsNullPtrErr for a plane.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr420ToBGR555_8u16u_P3C3R(const Orb8u* const pSrc[3],
                                                                    const Orb32s srcStep[3],
                                                                    Orb16u* pDst, Orb32s dstStep,
                                                                    OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr420ToBGR565_8u16u_P3C3R(const Orb8u* const pSrc[3],
                                                                    const Orb32s srcStep[3],
                                                                    Orb16u* pDst, Orb32s dstStep,
                                                                    OrbiSize roiSize);

/* Interleaved 422 to BGR:
 *
 *   R = (76284 Y + 104595 Cr - 14608761) / 65536
 *   G = (76284 Y - 25690 Cb - 53281 Cr + 8887730) / 65536
 *   B = (76284 Y + 132186 Cb - 18140365) / 65536
 *
 * rounded down and limited to 0..255, of which a word takes the highest bits. An odd last pixel
 * takes its Y, the Cb behind it, and the Cr of the pair in front of it.
 *
 * A width of 1 is something else: no words are written, but three bytes for each row, and the rows
 * are half of dstStep apart, rounded down. They are, of the row's first byte Y and the C behind it,
 *
 *   (76284 Y + 104595 C - 14608761) / 65536
 *   (76284 Y - 78971 C + 8887730) / 65536
 *   (76284 Y + 132186 C - 18140365) / 65536
 *
 * Returns orbStsNullPtrErr for either pointer, orbStsSizeErr if the width or the height is below 1.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr422ToBGR555_8u16u_C2C3R(const Orb8u* pSrc,
                                                                    Orb32s srcStep, Orb16u* pDst,
                                                                    Orb32s dstStep,
                                                                    OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiYCbCr422ToBGR565_8u16u_C2C3R(const Orb8u* pSrc,
                                                                    Orb32s srcStep, Orb16u* pDst,
                                                                    Orb32s dstStep,
                                                                    OrbiSize roiSize);

/* Words to bytes B, G, R, with zeros below the fields; and bytes to words, which take their highest
 * bits.
 *
 * Returns orbStsNullPtrErr for either pointer, orbStsSizeErr if the width or the height is below 1.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiBGR565ToBGR_16u8u_C3R(const Orb16u* pSrc, Orb32s srcStep,
                                                             Orb8u* pDst, Orb32s dstStep,
                                                             OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiBGRToBGR565_8u16u_C3R(const Orb8u* pSrc, Orb32s srcStep,
                                                             Orb16u* pDst, Orb32s dstStep,
                                                             OrbiSize roiSize);

/* ------------------------------------------------------------------------------------------------
 * Small linear systems
 *
 * LU decomposition with partial pivoting of a square matrix, and the solution of a system with it.
 * Element (i, j) of a matrix lies i * stride1 + j * stride2 bytes behind its first, so that rows,
 * columns and parts of something larger all serve; element i of a vector lies i * stride2 bytes
 * behind its first. Strides are positive multiples of 8. A stride2 of 8 is the fast case.
 *
 * Doubles are computed in the stated order, each product and sum rounded, the same in every build;
 * where the x87 unit of a 32-bit px has more bits, last ones may differ.
 * ---------------------------------------------------------------------------------------------- */

/* Factors a matrix of widthHeight rows and columns, by columns from the left. Rows stay where they
 * are: pDstIndex becomes a permutation of 0 to widthHeight - 1, in which entry k names the row of
 * pDst that is the k-th of the factors. That row holds, left of column k, the multipliers of L,
 * whose diagonal is 1, and from column k on a row of U.
 *
 * The pivot of a column is the element of the largest magnitude; of equals the first by pDstIndex.
 * Multipliers are products with the pivot's reciprocal; but with 3 rows that of the second column
 * is a quotient.
 *
 * pSrc and pDst may be the same matrix with the same strides.
 *
 * Returns orbStsNullPtrErr for any pointer, orbStsSizeErr if widthHeight is below 1,
 * orbStsStrideMatrixErr if a stride is below 1 or no multiple of 8; then orbStsSingularErr if a
 * pivot, that of the last column among them, is too small: with 3, 4 or 5 rows below
 * 4.450147717014403e-308, which is twice the smallest normal double; otherwise not above
 * 2.220446049250313e-16, which is 2 to the power of -52. What has been done until then stands in
 * pDst and pDstIndex.
 */
ORB_API OrbStatus ORB_CALL legacy90orbmLUDecomp_m_64f(const Orb64f* pSrc, Orb32s srcStride1,
                                                      Orb32s srcStride2, Orb32s* pDstIndex,
                                                      Orb64f* pDst, Orb32s dstStride1,
                                                      Orb32s dstStride2, Orb32s widthHeight);

/* Solves for the vector pSrc2, in its own order, with the factors and the index that
 * legacy90orbmLUDecomp_m_64f made; the solution comes in its own order too. pDst must not overlap
 * the other arguments. Nothing is tested: entries of the index have to be rows, and the factors of
 * a singular matrix give what they give.
 *
 * Row by row, the sum of the products with what is known, the first column first, is subtracted
 * from the element; going back, the difference is divided by the pivot.
 *
 * Returns orbStsNullPtrErr for any pointer, orbStsSizeErr if widthHeight is below 1,
 * orbStsStrideMatrixErr if a stride is below 1 or no multiple of 8.
 */
ORB_API OrbStatus ORB_CALL legacy90orbmLUBackSubst_mv_64f(
    const Orb64f* pSrc, Orb32s srcStride1, Orb32s srcStride2, const Orb32s* pSrcIndex,
    const Orb64f* pSrc2, Orb32s src2Stride2, Orb64f* pDst, Orb32s dstStride2, Orb32s widthHeight);

/* ------------------------------------------------------------------------------------------------
 * Channels of samples
 *
 * Between one buffer for each channel, of len samples each, and one buffer in which sample i of
 * channel c has the index i * channels + c.
 * ---------------------------------------------------------------------------------------------- */

/* Joins channels, and splits them, as they are.
 *
 * Returns orbStsNullPtrErr for the array of channels or the interleaved buffer,
 * orbStsChannelCountErr if channels is below 1, orbStsSizeErr if len is below 1, orbStsNullPtrErr
 * for a channel. Then orbStsMisalignedData, a warning, if a channel or the interleaved buffer does
 * not begin at a multiple of 16.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsInterleave_16s(Orb16s* const* ppSrc, Orb32s channels,
                                                      Orb32s len, Orb16s* pDst);
ORB_API OrbStatus ORB_CALL legacy90orbsInterleave_32f(Orb32f* const* ppSrc, Orb32s channels,
                                                      Orb32s len, Orb32f* pDst);
ORB_API OrbStatus ORB_CALL legacy90orbsDeinterleave_16s(const Orb16s* pSrc, Orb32s channels,
                                                        Orb32s len, Orb16s* const* ppDst);

/* Joins channels of floats from -1 to 1 to integers of 16 bits, or of 24 in three bytes, the lowest
 * first. A float x becomes x * 32767.5 - 0.5, or x * 8388607.5 - 0.5, computed in doubles, to
 * nearest with ties to even: 1 is the largest integer and -1 the smallest, and so is what lies
 * beyond. What is not a number becomes 0.
 *
 * Returns orbStsNullPtrErr for pDst, orbStsSizeErr if channels or len is below 1, orbStsNullPtrErr
 * for the array of channels, then for a channel.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsJoinScaled_32f16s_D2L(Orb32f* const* ppSrc, Orb32s channels,
                                                             Orb32s len, Orb16s* pDst);
ORB_API OrbStatus ORB_CALL legacy90orbsJoinScaled_32f24s_D2L(Orb32f* const* ppSrc, Orb32s channels,
                                                             Orb32s len, Orb8u* pDst);

/* The other way: an integer v becomes v * a + b, computed in doubles and rounded to a float. For 16
 * bits a and b are 2 / 65535 and 1 / 65535 as floats; for 24 bits they are 1.19209296656209e-7 and
 * 5.96046483281045e-8. The smallest integer becomes -1, the largest 1.
 *
 * Returns orbStsNullPtrErr for pSrc, orbStsSizeErr if channels or len is below 1, orbStsNullPtrErr
 * for the array of channels, then for a channel.
 */
ORB_API OrbStatus ORB_CALL legacy90orbsSplitScaled_16s32f_D2L(const Orb16s* pSrc,
                                                              Orb32f* const* ppDst, Orb32s channels,
                                                              Orb32s len);
ORB_API OrbStatus ORB_CALL legacy90orbsSplitScaled_24s32f_D2L(const Orb8u* pSrc,
                                                              Orb32f* const* ppDst, Orb32s channels,
                                                              Orb32s len);

/* ------------------------------------------------------------------------------------------------
 * Rows of TIFF files
 *
 * PackBits (TIFF 6.0, section 9) and rows of 16-bit samples as two rows of bytes. A PackBits item
 * is a control byte n, read as signed, and data: for 0 to 127 the n + 1 bytes that follow, as they
 * are; for -127 to -1 one byte, to be repeated 1 - n times; -128 is nothing.
 * ---------------------------------------------------------------------------------------------- */

/* Packs a row of srcLen bytes into the strip pDst, which has room for dstLen bytes, from
 * *pDstCursor on, and moves the cursor behind it. Items do not reach from row to row.
 *
 * Equal bytes are counted up to 128, and two or more of them are repeated; others are taken as they
 * are, up to 128, as long as the next byte is another. Two equal bytes between bytes that are not
 * become part of the literals around them: if the items before are a literal one, whose control
 * byte is below 125, and a repeated one of two bytes, and no three equal bytes follow, then both
 * become one, and bytes are added to it as long as the next is another and its control byte is
 * below 126; the last byte of the row is added in any case.
 *
 * Returns orbStsNullPtrErr for any pointer, orbStsSizeErr if srcLen or dstLen is below 1,
 * orbStsPackBitsDstErr if the cursor is negative or beyond dstLen, or if an item has no room: then
 * the items before it stand, and the cursor is behind them.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiPackBitsRow_TIFF_8u_C1(const Orb8u* pSrc, Orb32s srcLen,
                                                              Orb8u* pDst, Orb32s* pDstCursor,
                                                              Orb32s dstLen);

/* Unpacks a row of dstLen bytes from the strip pSrc, which has srcLen bytes, from *pSrcCursor on,
 * and moves the cursor behind the last item.
 *
 * Returns orbStsNullPtrErr for any pointer, orbStsSizeErr if srcLen or dstLen is below 1,
 * orbStsPackBitsDstErr if the cursor is negative, or if the strip ends before the row is complete
 * or an item does not fit into the row: then what the items before it made stands, and the cursor
 * is at the end of the strip or behind the control byte.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiUnpackBitsRow_TIFF_8u_C1(const Orb8u* pSrc,
                                                                Orb32s* pSrcCursor, Orb32s srcLen,
                                                                Orb8u* pDst, Orb32s dstLen);

/* Splits len samples into their high bytes, pDst[0], and their low ones, pDst[1].
 *
 * Returns orbStsNullPtrErr for pSrc or pDst, orbStsStepErr if len is below 1, orbStsNullPtrErr for
 * either row of bytes.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiSplitRow_TIFF_16u8u_C1(const Orb16u* pSrc,
                                                              Orb8u* const pDst[2], Orb32s len);

/* Joins the high bytes of samples, pSrc[0], and their low ones, pSrc[1].
 *
 * Returns orbStsNullPtrErr for any pointer, orbStsStepErr if len is below 1.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiJoinRow_TIFF_8u16u_C1(const Orb8u* const pSrc[2],
                                                             Orb16u* pDst, Orb32s len);

#ifdef __cplusplus
}
#endif

#endif
