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
 * DCT with quantisation
 * ---------------------------------------------------------------------------------------------- */

/* ------------------------------------------------------------------------------------------------
 * Huffman tables and bit-stream state
 * ---------------------------------------------------------------------------------------------- */

/* ------------------------------------------------------------------------------------------------
 * Sequential Huffman block coding
 * ---------------------------------------------------------------------------------------------- */

/* ------------------------------------------------------------------------------------------------
 * Colour conversion
 * ---------------------------------------------------------------------------------------------- */

/* ------------------------------------------------------------------------------------------------
 * Chroma sampling
 * ---------------------------------------------------------------------------------------------- */

#ifdef __cplusplus
}
#endif

#endif
