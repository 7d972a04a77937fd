/* JPEG 2000 primitives: everything between the samples of a tile and the bytes of its code-blocks
 * (ITU-T T.800). The host owns tiles, quantisation, the loop over code-blocks, packets, markers and
 * the file.
 */
#ifndef ORB90LEGACY_JPEG2K_H
#define ORB90LEGACY_JPEG2K_H

#include "orb90legacy/status.h"
#include "orb90legacy/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------------------------------
 * Wavelet lifting of rows and columns (T.800 annex F)
 * ---------------------------------------------------------------------------------------------- */

/* One level of the reversible 5/3 (B53) or the irreversible 9/7 (D97) wavelet in one direction. A
 * rectangle is filtered along its rows (Row) or its columns (Col); a ColLift function does one
 * stage of a transform of columns on rows that the caller hands over one by one.
 *
 * The low and the high band lie in planes of their own and are of the same size, which is the size
 * argument: an image side has twice the width (Row) or twice the height (Col). phase tells which
 * samples are low: with 0 those at even positions of the image side, with any other value those at
 * odd ones. With p = 0 or 1 for the two, low sample k is position 2k + p and high sample k position
 * 2k + 1 - p.
 *
 * Nothing is extended: the caller has laid out the symmetric extension, or the true neighbours,
 * around the rectangle. What is read, for a band of w samples along the filtered direction:
 *
 *   5/3 forward   s[-2] to s[2w] with an even phase, s[-1] to s[2w+1] with an odd one
 *   5/3 inverse   low[0] to low[w], or low[-1] to low[w-1]; high[-1] to high[w]
 *   9/7 forward   s[-4] to s[2w+2], or s[-3] to s[2w+3]
 *   9/7 inverse   low[-1] to low[w+1], or low[-2] to low[w]; high[-2] to high[w+1]
 *
 * The 5/3 keeps sums of 16-bit samples in 32 bits and cuts what it stores to 16 bits; that of 32
 * bits wraps. The 9/7 has factors in 16 fraction bits. On 16 bits each step's result is limited to
 * them and products are exact; on 32 bits sums of two samples wrap, products have 64 bits, and
 * results are cut. In both, the last step of the low band and its gain are one rounding, but in a
 * forward Row function the last low sample of each row, or the last two with an odd phase, is
 * rounded twice: behind the step and behind the gain. On 16 bits a few products at the ends of a
 * row have 32 bits and wrap: that of the first high sample that the first low one needs, forward;
 * those of the last step of each kind on high samples, inverse. It takes samples near full scale to
 * see it. Floats are computed in doubles and rounded where a step stores; where the x87 unit of a
 * 32-bit px has more bits, a step's result may differ in its last one.
 *
 * A 9/7 band of one sample is not lifted but filtered directly, by the taps of the whole filters;
 * its last bits differ from those of lifting.
 *
 * Source and destination of Row and Col functions must not overlap. Steps are in bytes.
 */

/* Along rows: image to bands.
 *
 * Returns orbStsNullPtrErr for any pointer, orbStsStepErr if a step is below 1, orbStsSizeErr if
 * the height or the width is below 1.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiWTFwdRow_B53_JPEG2K_16s_C1R(
    const Orb16s* pSrc, Orb32s srcStep, Orb16s* pDstLow, Orb32s dstLowStep, Orb16s* pDstHigh,
    Orb32s dstHighStep, OrbiSize dstRoiSize, Orb32u phase);
ORB_API OrbStatus ORB_CALL legacy90orbiWTFwdRow_B53_JPEG2K_32s_C1R(
    const Orb32s* pSrc, Orb32s srcStep, Orb32s* pDstLow, Orb32s dstLowStep, Orb32s* pDstHigh,
    Orb32s dstHighStep, OrbiSize dstRoiSize, Orb32u phase);
ORB_API OrbStatus ORB_CALL legacy90orbiWTFwdRow_D97_JPEG2K_16s_C1R(
    const Orb16s* pSrc, Orb32s srcStep, Orb16s* pDstLow, Orb32s dstLowStep, Orb16s* pDstHigh,
    Orb32s dstHighStep, OrbiSize dstRoiSize, Orb32u phase);
ORB_API OrbStatus ORB_CALL legacy90orbiWTFwdRow_D97_JPEG2K_32s_C1R(
    const Orb32s* pSrc, Orb32s srcStep, Orb32s* pDstLow, Orb32s dstLowStep, Orb32s* pDstHigh,
    Orb32s dstHighStep, OrbiSize dstRoiSize, Orb32u phase);
ORB_API OrbStatus ORB_CALL legacy90orbiWTFwdRow_D97_JPEG2K_32f_C1R(
    const Orb32f* pSrc, Orb32s srcStep, Orb32f* pDstLow, Orb32s dstLowStep, Orb32f* pDstHigh,
    Orb32s dstHighStep, OrbiSize dstRoiSize, Orb32u phase);

/* Along rows: bands to image. Returns as the forward functions do. */
ORB_API OrbStatus ORB_CALL legacy90orbiWTInvRow_B53_JPEG2K_16s_C1R(
    const Orb16s* pSrcLow, Orb32s srcLowStep, const Orb16s* pSrcHigh, Orb32s srcHighStep,
    OrbiSize srcRoiSize, Orb16s* pDst, Orb32s dstStep, Orb32u phase);
ORB_API OrbStatus ORB_CALL legacy90orbiWTInvRow_B53_JPEG2K_32s_C1R(
    const Orb32s* pSrcLow, Orb32s srcLowStep, const Orb32s* pSrcHigh, Orb32s srcHighStep,
    OrbiSize srcRoiSize, Orb32s* pDst, Orb32s dstStep, Orb32u phase);
ORB_API OrbStatus ORB_CALL legacy90orbiWTInvRow_D97_JPEG2K_16s_C1R(
    const Orb16s* pSrcLow, Orb32s srcLowStep, const Orb16s* pSrcHigh, Orb32s srcHighStep,
    OrbiSize srcRoiSize, Orb16s* pDst, Orb32s dstStep, Orb32u phase);
ORB_API OrbStatus ORB_CALL legacy90orbiWTInvRow_D97_JPEG2K_32s_C1R(
    const Orb32s* pSrcLow, Orb32s srcLowStep, const Orb32s* pSrcHigh, Orb32s srcHighStep,
    OrbiSize srcRoiSize, Orb32s* pDst, Orb32s dstStep, Orb32u phase);
ORB_API OrbStatus ORB_CALL legacy90orbiWTInvRow_D97_JPEG2K_32f_C1R(
    const Orb32f* pSrcLow, Orb32s srcLowStep, const Orb32f* pSrcHigh, Orb32s srcHighStep,
    OrbiSize srcRoiSize, Orb32f* pDst, Orb32s dstStep, Orb32u phase);

/* Along columns: image to bands. pSrc is the first row of the rectangle, and rows above it are
 * read. The 9/7 of integers has no such form: its columns are transformed with ColLift functions.
 *
 * Returns as the functions of rows do.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiWTFwdCol_B53_JPEG2K_16s_C1R(
    const Orb16s* pSrc, Orb32s srcStep, Orb16s* pDstLow, Orb32s dstLowStep, Orb16s* pDstHigh,
    Orb32s dstHighStep, OrbiSize dstRoiSize, Orb32u phase);
ORB_API OrbStatus ORB_CALL legacy90orbiWTFwdCol_B53_JPEG2K_32s_C1R(
    const Orb32s* pSrc, Orb32s srcStep, Orb32s* pDstLow, Orb32s dstLowStep, Orb32s* pDstHigh,
    Orb32s dstHighStep, OrbiSize dstRoiSize, Orb32u phase);
ORB_API OrbStatus ORB_CALL legacy90orbiWTFwdCol_D97_JPEG2K_32f_C1R(
    const Orb32f* pSrc, Orb32s srcStep, Orb32f* pDstLow, Orb32s dstLowStep, Orb32f* pDstHigh,
    Orb32s dstHighStep, OrbiSize dstRoiSize, Orb32u phase);

/* Along columns: bands to image. Returns as the functions of rows do. */
ORB_API OrbStatus ORB_CALL legacy90orbiWTInvCol_B53_JPEG2K_16s_C1R(
    const Orb16s* pSrcLow, Orb32s srcLowStep, const Orb16s* pSrcHigh, Orb32s srcHighStep,
    OrbiSize srcRoiSize, Orb16s* pDst, Orb32s dstStep, Orb32u phase);
ORB_API OrbStatus ORB_CALL legacy90orbiWTInvCol_B53_JPEG2K_32s_C1R(
    const Orb32s* pSrcLow, Orb32s srcLowStep, const Orb32s* pSrcHigh, Orb32s srcHighStep,
    OrbiSize srcRoiSize, Orb32s* pDst, Orb32s dstStep, Orb32u phase);
ORB_API OrbStatus ORB_CALL legacy90orbiWTInvCol_D97_JPEG2K_32f_C1R(
    const Orb32f* pSrcLow, Orb32s srcLowStep, const Orb32f* pSrcHigh, Orb32s srcHighStep,
    OrbiSize srcRoiSize, Orb32f* pDst, Orb32s dstStep, Orb32u phase);

/* One stage of the 5/3 on columns, forward: of three successive rows of the image, of low, high and
 * low parity, and the high row that the previous stage gave, come one high and one low row:
 *
 *   pDstHigh = pSrc1 - ((pSrc0 + pSrc2) >> 1)
 *   pDstLow = pSrc0 + ((pSrcHigh + pDstHigh + 2) >> 2)
 *
 * Returns orbStsNullPtrErr for any pointer, orbStsSizeErr if the width is below 1.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiWTFwdColLift_B53_JPEG2K_16s_C1(
    const Orb16s* pSrc0, const Orb16s* pSrc1, const Orb16s* pSrc2, Orb16s* pDstLow,
    const Orb16s* pSrcHigh, Orb16s* pDstHigh, Orb32s width);
ORB_API OrbStatus ORB_CALL legacy90orbiWTFwdColLift_B53_JPEG2K_32s_C1(
    const Orb32s* pSrc0, const Orb32s* pSrc1, const Orb32s* pSrc2, Orb32s* pDstLow,
    const Orb32s* pSrcHigh, Orb32s* pDstHigh, Orb32s width);

/* The inverse: of a low row and the two high rows around it, and the row of low parity that the
 * previous stage gave, come the next row of low parity (pDstEven) and the row of high parity in
 * front of it (pDstOdd):
 *
 *   pDstEven = pSrcLow - ((pSrcHigh0 + pSrcHigh1 + 2) >> 2)
 *   pDstOdd = pSrcHigh0 + ((pSrcEven + pDstEven) >> 1)
 *
 * Returns as the forward stage does.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiWTInvColLift_B53_JPEG2K_16s_C1(
    const Orb16s* pSrcLow, const Orb16s* pSrcHigh0, const Orb16s* pSrcHigh1, const Orb16s* pSrcEven,
    Orb16s* pDstOdd, Orb16s* pDstEven, Orb32s width);
ORB_API OrbStatus ORB_CALL legacy90orbiWTInvColLift_B53_JPEG2K_32s_C1(
    const Orb32s* pSrcLow, const Orb32s* pSrcHigh0, const Orb32s* pSrcHigh1, const Orb32s* pSrcEven,
    Orb32s* pDstOdd, Orb32s* pDstEven, Orb32s width);

/* One stage of the 9/7 on columns, forward. Rows in the pipeline move on by one step each, over all
 * columns before the next begins; alpha to delta are the factors of T.800 table F.4:
 *
 *   pLift1New = pSrc1 + alpha (pSrc0 + pSrc2)
 *   pLift2New = pSrc0 + beta (pLift1 + pLift1New)
 *   pLift1 += gamma (pLift3 + pLift2New)
 *   pLift3 = low gain (pLift3 + delta (pLift4 + pLift1)), a finished low row
 *   pLift4 = high gain pLift4, a finished high row
 *
 * Returns orbStsNullPtrErr for any pointer, orbStsSizeErr if the width is below 1.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiWTFwdColLift_D97_JPEG2K_16s_C1(
    const Orb16s* pSrc0, const Orb16s* pSrc1, const Orb16s* pSrc2, Orb16s* pLift3,
    Orb16s* pLift2New, Orb16s* pLift4, Orb16s* pLift1, Orb16s* pLift1New, Orb32s width);
ORB_API OrbStatus ORB_CALL legacy90orbiWTFwdColLift_D97_JPEG2K_32s_C1(
    const Orb32s* pSrc0, const Orb32s* pSrc1, const Orb32s* pSrc2, Orb32s* pLift3,
    Orb32s* pLift2New, Orb32s* pLift4, Orb32s* pLift1, Orb32s* pLift1New, Orb32s width);
ORB_API OrbStatus ORB_CALL legacy90orbiWTFwdColLift_D97_JPEG2K_32f_C1(
    const Orb32f* pSrc0, const Orb32f* pSrc1, const Orb32f* pSrc2, Orb32f* pLift3,
    Orb32f* pLift2New, Orb32f* pLift4, Orb32f* pLift1, Orb32f* pLift1New, Orb32s width);

/* The inverse:
 *
 *   pLift4New = high gain pSrcLow - delta low gain (pSrcHigh0 + pSrcHigh1)
 *   pLift3New = low gain pSrcHigh0 - gamma (pLift2 + pLift4New)
 *   pLift2 -= beta (pLift1 + pLift3New), a finished row of the image
 *   pLift1 -= alpha (pLift0 + pLift2), a finished row of the image
 *
 * Returns as the forward stage does.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiWTInvColLift_D97_JPEG2K_16s_C1(
    const Orb16s* pSrcLow, const Orb16s* pSrcHigh0, const Orb16s* pSrcHigh1, const Orb16s* pLift0,
    Orb16s* pLift1, Orb16s* pLift2, Orb16s* pLift3New, Orb16s* pLift4New, Orb32s width);
ORB_API OrbStatus ORB_CALL legacy90orbiWTInvColLift_D97_JPEG2K_32s_C1(
    const Orb32s* pSrcLow, const Orb32s* pSrcHigh0, const Orb32s* pSrcHigh1, const Orb32s* pLift0,
    Orb32s* pLift1, Orb32s* pLift2, Orb32s* pLift3New, Orb32s* pLift4New, Orb32s width);
ORB_API OrbStatus ORB_CALL legacy90orbiWTInvColLift_D97_JPEG2K_32f_C1(
    const Orb32f* pSrcLow, const Orb32f* pSrcHigh0, const Orb32f* pSrcHigh1, const Orb32f* pLift0,
    Orb32f* pLift1, Orb32f* pLift2, Orb32f* pLift3New, Orb32f* pLift4New, Orb32s width);

/* ------------------------------------------------------------------------------------------------
 * Wavelet transforms of whole images (T.800 annex F)
 * ---------------------------------------------------------------------------------------------- */

/* One level of a wavelet in both directions, with symmetric extension at the borders: columns first
 * and rows second forward, rows first and columns second inverse. pTileRect is the tile-component
 * in the reference grid of this level: its size, and of its place the parity of the first column
 * and row, which is the phase.
 *
 * The 5/3 is that of the functions above. The 9/7 on 16 bits has factors in 14 fraction bits and
 * cuts each step's result to 16 bits; that on 32 bits runs along a line in floating point and is
 * then cut towards zero and limited to 32 bits, where the x87 unit of a 32-bit px may land on the
 * other side of a whole number. A line of one sample at an odd place is doubled, and halved in the
 * inverse, towards zero; at an even place it stays.
 *
 * pBuffer is working memory; what it holds is of no interest before and after. It need not be
 * aligned.
 */

/* The size of pBuffer in bytes. For the functions in place it is 0 if the width and the height are
 * below 3, but a null pointer is refused even then.
 *
 * Returns orbStsNullPtrErr for either pointer.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiWTGetBufSize_B53_JPEG2K_16s_C1IR(const OrbiRect* pTileRect,
                                                                        Orb32s* pSize);
ORB_API OrbStatus ORB_CALL legacy90orbiWTGetBufSize_B53_JPEG2K_32s_C1IR(const OrbiRect* pTileRect,
                                                                        Orb32s* pSize);
ORB_API OrbStatus ORB_CALL legacy90orbiWTGetBufSize_D97_JPEG2K_16s_C1IR(const OrbiRect* pTileRect,
                                                                        Orb32s* pSize);
ORB_API OrbStatus ORB_CALL legacy90orbiWTGetBufSize_D97_JPEG2K_32s_C1IR(const OrbiRect* pTileRect,
                                                                        Orb32s* pSize);
ORB_API OrbStatus ORB_CALL legacy90orbiWTGetBufSize_B53_JPEG2K_16s_C1R(const OrbiRect* pTileRect,
                                                                       Orb32s* pSize);
ORB_API OrbStatus ORB_CALL legacy90orbiWTGetBufSize_B53_JPEG2K_32s_C1R(const OrbiRect* pTileRect,
                                                                       Orb32s* pSize);
ORB_API OrbStatus ORB_CALL legacy90orbiWTGetBufSize_D97_JPEG2K_16s_C1R(const OrbiRect* pTileRect,
                                                                       Orb32s* pSize);
ORB_API OrbStatus ORB_CALL legacy90orbiWTGetBufSize_D97_JPEG2K_32s_C1R(const OrbiRect* pTileRect,
                                                                       Orb32s* pSize);

/* In place. In each direction the low band stands in front of the high band; of n samples the low
 * band has (n + 1) / 2, or n / 2 at an odd place.
 *
 * A width or height below 1 does nothing. Returns orbStsNullPtrErr for pSrcDst, orbStsStepErr if
 * srcDstStep < 1, orbStsNullPtrErr for pTileRect or pBuffer.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiWTFwd_B53_JPEG2K_16s_C1IR(Orb16s* pSrcDst, Orb32s srcDstStep,
                                                                 const OrbiRect* pTileRect,
                                                                 Orb8u* pBuffer);
ORB_API OrbStatus ORB_CALL legacy90orbiWTFwd_B53_JPEG2K_32s_C1IR(Orb32s* pSrcDst, Orb32s srcDstStep,
                                                                 const OrbiRect* pTileRect,
                                                                 Orb8u* pBuffer);
ORB_API OrbStatus ORB_CALL legacy90orbiWTFwd_D97_JPEG2K_16s_C1IR(Orb16s* pSrcDst, Orb32s srcDstStep,
                                                                 const OrbiRect* pTileRect,
                                                                 Orb8u* pBuffer);
ORB_API OrbStatus ORB_CALL legacy90orbiWTFwd_D97_JPEG2K_32s_C1IR(Orb32s* pSrcDst, Orb32s srcDstStep,
                                                                 const OrbiRect* pTileRect,
                                                                 Orb8u* pBuffer);
ORB_API OrbStatus ORB_CALL legacy90orbiWTInv_B53_JPEG2K_16s_C1IR(Orb16s* pSrcDst, Orb32s srcDstStep,
                                                                 const OrbiRect* pTileRect,
                                                                 Orb8u* pBuffer);
ORB_API OrbStatus ORB_CALL legacy90orbiWTInv_B53_JPEG2K_32s_C1IR(Orb32s* pSrcDst, Orb32s srcDstStep,
                                                                 const OrbiRect* pTileRect,
                                                                 Orb8u* pBuffer);
ORB_API OrbStatus ORB_CALL legacy90orbiWTInv_D97_JPEG2K_16s_C1IR(Orb16s* pSrcDst, Orb32s srcDstStep,
                                                                 const OrbiRect* pTileRect,
                                                                 Orb8u* pBuffer);
ORB_API OrbStatus ORB_CALL legacy90orbiWTInv_D97_JPEG2K_32s_C1IR(Orb32s* pSrcDst, Orb32s srcDstStep,
                                                                 const OrbiRect* pTileRect,
                                                                 Orb8u* pBuffer);

/* Between an image and four planes: low-low; low across, high down; high across, low down;
 * high-high. The low halves have (width + 1) / 2 columns and (height + 1) / 2 rows whatever the
 * place: with an odd place and an odd size a plane's last column or row is the first one of the
 * other band. Such tiles are for the functions in place.
 *
 * Returns orbStsNullPtrErr for the image, the array of planes, the array of steps, pTileRect or
 * pBuffer; orbStsStepErr if the image's step is below 1; orbStsNullPtrErr for a plane;
 * orbStsStepErr if a plane's step is below 1; orbStsSizeErr if the width or the height is below 1.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiWTFwd_B53_JPEG2K_16s_C1R(const Orb16s* pSrc, Orb32s srcStep,
                                                                const OrbiRect* pTileRect,
                                                                Orb16s* const pDst[4],
                                                                const Orb32s dstStep[4],
                                                                Orb8u* pBuffer);
ORB_API OrbStatus ORB_CALL legacy90orbiWTFwd_B53_JPEG2K_32s_C1R(const Orb32s* pSrc, Orb32s srcStep,
                                                                const OrbiRect* pTileRect,
                                                                Orb32s* const pDst[4],
                                                                const Orb32s dstStep[4],
                                                                Orb8u* pBuffer);
ORB_API OrbStatus ORB_CALL legacy90orbiWTFwd_D97_JPEG2K_16s_C1R(const Orb16s* pSrc, Orb32s srcStep,
                                                                const OrbiRect* pTileRect,
                                                                Orb16s* const pDst[4],
                                                                const Orb32s dstStep[4],
                                                                Orb8u* pBuffer);
ORB_API OrbStatus ORB_CALL legacy90orbiWTFwd_D97_JPEG2K_32s_C1R(const Orb32s* pSrc, Orb32s srcStep,
                                                                const OrbiRect* pTileRect,
                                                                Orb32s* const pDst[4],
                                                                const Orb32s dstStep[4],
                                                                Orb8u* pBuffer);
ORB_API OrbStatus ORB_CALL legacy90orbiWTInv_B53_JPEG2K_16s_C1R(const Orb16s* const pSrc[4],
                                                                const Orb32s srcStep[4],
                                                                Orb16s* pDst, Orb32s dstStep,
                                                                const OrbiRect* pTileRect,
                                                                Orb8u* pBuffer);
ORB_API OrbStatus ORB_CALL legacy90orbiWTInv_B53_JPEG2K_32s_C1R(const Orb32s* const pSrc[4],
                                                                const Orb32s srcStep[4],
                                                                Orb32s* pDst, Orb32s dstStep,
                                                                const OrbiRect* pTileRect,
                                                                Orb8u* pBuffer);
ORB_API OrbStatus ORB_CALL legacy90orbiWTInv_D97_JPEG2K_16s_C1R(const Orb16s* const pSrc[4],
                                                                const Orb32s srcStep[4],
                                                                Orb16s* pDst, Orb32s dstStep,
                                                                const OrbiRect* pTileRect,
                                                                Orb8u* pBuffer);
ORB_API OrbStatus ORB_CALL legacy90orbiWTInv_D97_JPEG2K_32s_C1R(const Orb32s* const pSrc[4],
                                                                const Orb32s srcStep[4],
                                                                Orb32s* pDst, Orb32s dstStep,
                                                                const OrbiRect* pTileRect,
                                                                Orb8u* pBuffer);

/* ------------------------------------------------------------------------------------------------
 * Component transforms (T.800 annex G)
 * ---------------------------------------------------------------------------------------------- */

/* RCT, the reversible transform that goes with the 5/3 wavelet, and ICT, the irreversible one that
 * goes with the 9/7. Components 0, 1, 2 are R, G, B on one side and Y, Cb, Cr on the other: in
 * planes that share a step, or interleaved. The P3IR forms work in place. Nothing is limited.
 *
 *   RCT   Y = (R + 2 G + B) >> 2     Cb = B - G                  Cr = R - G
 *   back  G = Y - ((Cb + Cr) >> 2)   R = Cr + G                  B = Cb + G
 *
 *   ICT   Y = 0.299 R + 0.587 G + 0.114 B
 *         Cb = -0.16875 R - 0.33126 G + 0.5 B
 *         Cr = 0.5 R - 0.41869 G - 0.08131 B
 *   back  R = Y + 1.402 Cr           B = Y + 1.772 Cb
 *         G = Y - 0.34413 Cb - 0.71414 Cr
 *
 * Integers are computed in 32 bits, which wrap, and cut to the sample's width; the factors of the
 * ICT then have 14 fraction bits, and sums are rounded to nearest. Floats are computed in doubles,
 * with factors in single precision, and rounded in the end; where the x87 unit of a 32-bit px has
 * more bits, a result may differ in its last one.
 *
 * Steps are in bytes. All return orbStsNullPtrErr for a pointer, the array or one of its entries;
 * orbStsStepErr if a step is below 1; orbStsSizeErr if the width or the height is below 1.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiRCTFwd_JPEG2K_16s_C3P3R(const Orb16s* pSrc, Orb32s srcStep,
                                                               Orb16s* const pDst[3],
                                                               Orb32s dstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiRCTFwd_JPEG2K_32s_C3P3R(const Orb32s* pSrc, Orb32s srcStep,
                                                               Orb32s* const pDst[3],
                                                               Orb32s dstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiICTFwd_JPEG2K_32f_C3P3R(const Orb32f* pSrc, Orb32s srcStep,
                                                               Orb32f* const pDst[3],
                                                               Orb32s dstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiRCTInv_JPEG2K_16s_P3C3R(const Orb16s* const pSrc[3],
                                                               Orb32s srcStep, Orb16s* pDst,
                                                               Orb32s dstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiRCTInv_JPEG2K_32s_P3C3R(const Orb32s* const pSrc[3],
                                                               Orb32s srcStep, Orb32s* pDst,
                                                               Orb32s dstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiICTInv_JPEG2K_32f_P3C3R(const Orb32f* const pSrc[3],
                                                               Orb32s srcStep, Orb32f* pDst,
                                                               Orb32s dstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiRCTFwd_JPEG2K_16s_P3IR(Orb16s* const pSrcDst[3],
                                                              Orb32s srcDstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiRCTFwd_JPEG2K_32s_P3IR(Orb32s* const pSrcDst[3],
                                                              Orb32s srcDstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiRCTInv_JPEG2K_16s_P3IR(Orb16s* const pSrcDst[3],
                                                              Orb32s srcDstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiRCTInv_JPEG2K_32s_P3IR(Orb32s* const pSrcDst[3],
                                                              Orb32s srcDstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiICTFwd_JPEG2K_16s_P3IR(Orb16s* const pSrcDst[3],
                                                              Orb32s srcDstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiICTFwd_JPEG2K_32s_P3IR(Orb32s* const pSrcDst[3],
                                                              Orb32s srcDstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiICTFwd_JPEG2K_32f_P3IR(Orb32f* const pSrcDst[3],
                                                              Orb32s srcDstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiICTInv_JPEG2K_16s_P3IR(Orb16s* const pSrcDst[3],
                                                              Orb32s srcDstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiICTInv_JPEG2K_32s_P3IR(Orb32s* const pSrcDst[3],
                                                              Orb32s srcDstStep, OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiICTInv_JPEG2K_32f_P3IR(Orb32f* const pSrcDst[3],
                                                              Orb32s srcDstStep, OrbiSize roiSize);

/* ------------------------------------------------------------------------------------------------
 * Code-block encoder (T.800 annexes C and D)
 *
 * Codes the quantised coefficients of one code-block at a time, in two stages with a record between
 * them. LoadCodeBlock models all coding passes and keeps their decisions; no byte exists yet.
 * StoreBits then runs them through the MQ coder, or writes them as raw bits, into buffers of any
 * size: it stops when a buffer is full and goes on in the next call. When it has finished, the
 * three Get functions tell what a rate-distortion optimiser wants to know of each pass:
 *
 *     orbiEncodeInitAlloc_JPEG2K(&state, (OrbiSize){64, 64});
 *     for each code-block
 *       orbiEncodeLoadCodeBlock_JPEG2K_32s_C1R(..., state, ..., &bits, &passes, &segments);
 *       do orbiEncodeStoreBits_JPEG2K_1u(buffer, &length, state, &isNotFinished);
 *       while (isNotFinished);
 *       orbiEncodeGetRate_JPEG2K(state, pass, &rate) ...
 *     orbiEncodeFree_JPEG2K(state);
 *
 * A sample has its sign in bit 31, 1 for negative, and its magnitude in bits 30..0; bit-plane p is
 * magnitude bit p.
 * ---------------------------------------------------------------------------------------------- */

typedef struct OrbiEncodeState_JPEG2K OrbiEncodeState_JPEG2K;

/* Allocates a state for code-blocks up to a size. It takes 1090 bytes for each four rows of a
 * column, most of which are never touched.
 *
 * Returns orbStsNullPtrErr for ppState, orbStsSizeErr if the height or the width is below 1,
 * orbStsMemAllocErr, with *ppState set to null, if there is no memory for it.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiEncodeInitAlloc_JPEG2K(OrbiEncodeState_JPEG2K** ppState,
                                                              OrbiSize codeBlockMaxSize);

/* Releases a state. Its tag is not looked at.
 *
 * Returns orbStsNullPtrErr.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiEncodeFree_JPEG2K(OrbiEncodeState_JPEG2K* pState);

/* Models all coding passes of a block. What the state held of an earlier block is gone, finished or
 * not.
 *
 * subband     2 for HL, 3 for HH, any other value for LL and LH: the contexts of zero coding
 * magnBits    how many magnitude bits are coded, from bit 30 downwards: the last plane is
 *             31 - magnBits. None below 1, all from 31 on.
 * mqTermMode  how the MQ coder ends a codeword segment: 1 with as few bytes as there can be; 2 in
 *             the predictable way of D.4.2, which a decoder can check; any other value with the
 *             flush of C.2.9
 * reserved    not read
 * codeStyle   a sum of
 *             1   vertically causal contexts (D.7)
 *             2   selective arithmetic coding bypass (D.6): the significance and refinement passes
 *                 are raw from the fifth plane on
 *             4   each pass is a codeword segment of its own
 *             8   the contexts are reset behind each pass
 *             16  each cleanup pass ends with the segmentation symbols (D.5)
 *             32  the last plane is exact: nothing is left open below it. It matters to
 *                 orbiEncodeGetDist_JPEG2K alone.
 *
 * The first pass is the cleanup pass of the highest plane that has a bit; on each plane below come
 * a significance, a refinement and a cleanup pass. Raw bits are padded with 0101... where a segment
 * ends.
 *
 * *pMaxBitLength   becomes the number of bits of the largest magnitude, 0 if all samples are 0
 * *pPassCount      the number of passes, 0 if no plane from the last one up has a bit
 * *pTermPassCount  the number of codeword segments: that of passes with style 4; without it a
 *                  segment is a run of passes of one kind, and without any pass there is 1
 *
 * Returns orbStsNullPtrErr for pState, orbStsContextMatchErr if it is no encoder's state,
 * orbStsNullPtrErr for any of the three results, orbStsSizeErr if the height or the width is below
 * 1, orbStsNullPtrErr for pSrc, orbStsStepErr if srcStep < 1, orbStsSizeErr if the state has no
 * room for a block of this size.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiEncodeLoadCodeBlock_JPEG2K_32s_C1R(
    const Orb32s* pSrc, Orb32s srcStep, OrbiSize codeBlockSize, OrbiEncodeState_JPEG2K* pState,
    Orb32s subband, Orb32s magnBits, Orb32s mqTermMode, Orb32s reserved, Orb32s codeStyle,
    Orb32s* pMaxBitLength, Orb32s* pPassCount, Orb32s* pTermPassCount);

/* Stores the next bytes of the block. On entry *pDstLen is the room at pDst in bytes, on return the
 * number of bytes written; *pIsNotFinished becomes 1 if there are passes left and 0 if the block is
 * complete. The bytes, and what the Get functions say in the end, do not depend on how the buffers
 * were cut. A block without passes has no bytes.
 *
 * Returns orbStsNullPtrErr for pState, orbStsContextMatchErr if it is no encoder's state,
 * orbStsNullPtrErr for pDst, pDstLen or pIsNotFinished, orbStsSizeErr if *pDstLen < 1.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiEncodeStoreBits_JPEG2K_1u(Orb8u* pDst, Orb32s* pDstLen,
                                                                 OrbiEncodeState_JPEG2K* pState,
                                                                 Orb32s* pIsNotFinished);

/* Tells how many bytes of the block are enough to decode it up to and including a pass. At the end
 * of a segment that is what has been stored, without a last byte of 255; within one it is an upper
 * limit. Passes that StoreBits has not finished have the values of an earlier block.
 *
 * Returns orbStsNullPtrErr for pState, orbStsContextMatchErr if it is no encoder's state,
 * orbStsNullPtrErr for pRate, orbStsPassIndexErr if passIndex is not one of a pass.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiEncodeGetRate_JPEG2K(const OrbiEncodeState_JPEG2K* pState,
                                                            Orb32s passIndex, Orb32s* pRate);

/* Tells by how much the passes up to and including one decrease the squared error of the block, in
 * units of the squared step of the last plane. A decoder is taken to put each sample in the middle
 * of what its missing bits leave open, of which the next six are counted.
 *
 * The weight of a plane is made of a 32-bit integer: it is right up to 21 planes above the last
 * one, negative 22 planes above it, and starts again at 2 for the next.
 *
 * Statuses as above.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiEncodeGetDist_JPEG2K(const OrbiEncodeState_JPEG2K* pState,
                                                            Orb32s passIndex, Orb64f* pDist);

/* Tells the length of a codeword segment in bytes, a last byte of 255 included. Passes that
 * StoreBits has not finished have the values of an earlier block.
 *
 * Statuses as above, for the index of a segment. A block without passes has one of length 0, unless
 * each pass is a segment.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiEncodeGetTermPassLen_JPEG2K(
    const OrbiEncodeState_JPEG2K* pState, Orb32s termPassIndex, Orb32s* pLength);

/* ------------------------------------------------------------------------------------------------
 * Code-block decoder (T.800 annexes C and D)
 *
 * Decodes one code-block from its codeword segments, in one call; it is the progressive decoder of
 * the next section, used from beginning to end. The magnitude of each sample stands in its bits
 * 30..0 at its true position, the sign in bit 31. The state is memory of the host's, at any address
 * and with any contents, and serves any number of blocks that are not larger than it was sized for.
 * ---------------------------------------------------------------------------------------------- */

/* Stores the size of a state for blocks up to a size, in bytes:
 * (width * 4 + 8, rounded up to a multiple of 32) * ((height + 1) / 2 + 2) + 388.
 *
 * Returns orbStsSizeErr if the height or the width is below 1, orbStsNullPtrErr for pSize,
 * orbStsSizeErr if the size is more than pSize can hold.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiDecodeGetBufSize_JPEG2K(OrbiSize maxSize, Orb32s* pSize);

/* Decodes a block. Its segments lie one behind the other at pSrc; pSegmentLengths has the length of
 * each of the segmentCount segments in bytes, and a length below 1 is that of an empty one.
 *
 * subband      as for the encoder
 * bitPlanes    the number of bit-planes, 1 to 31; the first pass is the cleanup pass of plane
 *              bitPlanes - 1
 * passCount    how many passes there are; no more is decoded
 * codeStyle    a sum of
 *              1, 2, 4, 8, 16  as for the encoder
 *              0x10000   on an error, fall back to the plane in which it was found: in every sample
 *                        the bits below that plane are cleared; if a bit of the magnitude is left
 *                        the plane's bit is set, else the sample becomes 0
 *              0x20000   go on with the samples in pDst, instead of clearing them first
 *              0x40000   keep midpoints: a sample has the bit below its last decoded plane set, as
 *                        the middle of what is left open. Without it all bits below the current
 *                        plane (as orbiDecodeCBProgrGetCurBitPlaneNum_JPEG2K tells it) are cleared
 *                        in the end.
 *              0x80000   go on with the significance of samples that the state knows, instead of
 *                        clearing it first
 *              0x100000  check that segments of the MQ coder were ended in the predictable way, and
 *                        raw significance passes that are segments of their own with 0101...
 * pErrorPlane  receives the current plane after an error, and may be null
 *
 * A segment never ends too soon: bytes of 255 are read behind it. Two kinds of damage are found:
 * segmentation symbols (style 16) that do not read 1, 0, 1, 0, and segments that end in another way
 * than the encoder's; the end of a raw refinement pass is checked without being asked for. Where a
 * pass is checked for both, the end alone decides. Decoding stops behind the segment, and what it
 * gave stays in pDst.
 *
 * Returns orbStsNullPtrErr for pSrc or pState, orbStsSizeErr if the height or the width is below 1,
 * orbStsNullPtrErr for pSegmentLengths or pDst, orbStsStepErr if dstStep < 1;
 * orbStsCodeBlockDataErr if damage was found.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiDecodeCodeBlock_JPEG2K_1u32s_C1R(
    const Orb8u* pSrc, Orb32s* pDst, Orb32s dstStep, OrbiSize codeBlockSize, Orb32s subband,
    Orb32s bitPlanes, Orb32s passCount, const Orb32s* pSegmentLengths, Orb32s segmentCount,
    Orb32s codeStyle, Orb32s* pErrorPlane, void* pState);

/* ------------------------------------------------------------------------------------------------
 * Progressive code-block decoder (T.800 annexes C and D)
 *
 * Decodes a code-block as its codeword segments arrive: attach a destination, set the pass counter,
 * then take a step for each segment. Between steps the host may look at the samples, raise the
 * counter, or stop. The state remembers which kind of pass comes next.
 *
 * A state is made in one of two ways. Either the host takes memory of the size that GetStateSize
 * reports, at any address, and hands it to Init; or InitAlloc allocates it, and Free releases it.
 * What the host allocated itself is never passed to Free. A state may be attached again and again,
 * to blocks that are not larger than it was sized for. It knows its own address, and must not be
 * moved.
 * ---------------------------------------------------------------------------------------------- */

typedef struct OrbiDecodeCBProgrState_JPEG2K OrbiDecodeCBProgrState_JPEG2K;

/* As orbiDecodeGetBufSize_JPEG2K. */
ORB_API OrbStatus ORB_CALL legacy90orbiDecodeCBProgrGetStateSize_JPEG2K(OrbiSize maxSize,
                                                                        Orb32s* pSize);

/* Allocates and initialises a state.
 *
 * Returns orbStsNullPtrErr for ppState, orbStsSizeErr if the height or the width is below 1,
 * orbStsMemAllocErr, with *ppState set to null, if there is no memory for it.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiDecodeCBProgrInitAlloc_JPEG2K(
    OrbiDecodeCBProgrState_JPEG2K** ppState, OrbiSize maxSize);

/* Initialises a state in memory of the host's. It is not attached.
 *
 * Returns orbStsNullPtrErr.
 */
ORB_API OrbStatus ORB_CALL
legacy90orbiDecodeCBProgrInit_JPEG2K(OrbiDecodeCBProgrState_JPEG2K* pState);

/* Releases a state of InitAlloc.
 *
 * Returns orbStsNullPtrErr, orbStsContextMatchErr if it is no decoder's state.
 */
ORB_API OrbStatus ORB_CALL
legacy90orbiDecodeCBProgrFree_JPEG2K(OrbiDecodeCBProgrState_JPEG2K* pState);

/* Starts a block. Its samples at pDst are cleared, and so is what the state knows of them, unless
 * `flags` says otherwise; the contexts start anew, the next pass is the cleanup pass of plane
 * bitPlanes - 1, and the pass counter is 0. subband, bitPlanes and `flags` are as for
 * orbiDecodeCodeBlock_JPEG2K_1u32s_C1R, except that 0x10000 and 0x40000 mean nothing here:
 * midpoints stay, and an error changes nothing.
 *
 * Returns orbStsNullPtrErr for pState or pDst, orbStsStepErr if dstStep < 1, orbStsSizeErr if the
 * height or the width is below 1, orbStsContextMatchErr if pState is no decoder's state.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiDecodeCBProgrAttach_JPEG2K_32s_C1R(
    Orb32s* pDst, Orb32s dstStep, OrbiSize codeBlockSize, OrbiDecodeCBProgrState_JPEG2K* pState,
    Orb32s subband, Orb32s bitPlanes, Orb32s flags);

/* Sets how many passes are still to be decoded, or stores how many those are.
 *
 * Returns orbStsNullPtrErr for either pointer, orbStsContextMatchErr if pState is no decoder's
 * state.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiDecodeCBProgrSetPassCounter_JPEG2K(
    Orb32s passCount, OrbiDecodeCBProgrState_JPEG2K* pState);
ORB_API OrbStatus ORB_CALL legacy90orbiDecodeCBProgrGetPassCounter_JPEG2K(
    const OrbiDecodeCBProgrState_JPEG2K* pState, Orb32s* pPassCount);

/* Stores the current plane: that of the next pass, and -1 behind the last one. It moves on behind a
 * cleanup pass; but where the counter runs out there, it stays, unless each pass is a segment.
 *
 * Returns orbStsNullPtrErr for either pointer, orbStsContextMatchErr if pState is no decoder's
 * state.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiDecodeCBProgrGetCurBitPlaneNum_JPEG2K(
    const OrbiDecodeCBProgrState_JPEG2K* pState, Orb32s* pPlane);

/* Decodes the next codeword segment, of srcLen bytes; a length below 1 is that of an empty one. The
 * counter falls by 1 with each pass. With style 4 a step is one pass. Without it, it is all passes
 * up to the next change between the MQ coder and raw bits: the first segment goes down to the
 * fourth plane, then a raw significance pass with its refinement pass and a cleanup pass take
 * turns; without the bypass there is one segment for all. A step ends early when the counter runs
 * out, and does nothing if it has, or if no plane is left.
 *
 * An error does not stop the machine: the state is as if all had gone well, and the next step may
 * follow.
 *
 * Returns orbStsNullPtrErr for pSrc or pState, orbStsContextMatchErr if pState is no decoder's
 * state, orbStsNotAttachedErr if it is not attached; orbStsCodeBlockDataErr if damage was found, as
 * orbiDecodeCodeBlock_JPEG2K_1u32s_C1R tells it, with the segment decoded.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiDecodeCBProgrStep_JPEG2K(
    const Orb8u* pSrc, Orb32s srcLen, OrbiDecodeCBProgrState_JPEG2K* pState);

#ifdef __cplusplus
}
#endif

#endif
