/* Operations on 8-bit images: fixed filters, morphology, rotation and perspective warp here,
 * resizing in image_resize.h. All are stateless; what scratch they need they allocate for the call
 * alone.
 *
 * Channels are interleaved and all treated alike: the fourth of C4 is no alpha.
 */
#ifndef ORB90LEGACY_IMAGE_H
#define ORB90LEGACY_IMAGE_H

#include "orb90legacy/status.h"
#include "orb90legacy/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------------------------------
 * Interpolation
 * ---------------------------------------------------------------------------------------------- */

/* How samples between pixels are made: one method, and for some functions an option, combined by |.
 * Which of them a function takes is said in its note. */
enum {
  /* The nearest sample. */
  orbInterNearest = 1,
  /* Linear between two samples in each direction. */
  orbInterLinear = 2,
  /* The cubic through four samples in each direction. */
  orbInterLagrange = 4,
  /* Cubics of four samples in each direction, with Mitchell and Netravali's B and C: B-spline (1,
   * 0), Catmull-Rom (0, 1/2), and (1/2, 3/10). */
  orbInterBSpline = 5,
  orbInterCatmullRom = 6,
  orbInterCubicB05C03 = 7,
  /* The mean of the area that a pixel covers; for reductions. */
  orbInterSuper = 8,
  /* Lanczos of order 3, six samples in each direction. */
  orbInterLanczos = 16,

  /* Options. */
  /* A kernel as wide as a reduction wants it. */
  orbInterAntialias = 0x20000000,
  /* A rim that the image covers in part, faded towards zero. */
  orbInterEdgeFade = 0x40000000,
  /* A rim that the image covers in part, blended into what the destination held: bit 31. */
  orbInterEdgeBlend = -0x7FFFFFFF - 1
};

/* ------------------------------------------------------------------------------------------------
 * Fixed filters
 * ---------------------------------------------------------------------------------------------- */

/* The kernel of a filter by its size. */
typedef Orb32s OrbiMaskSize;

enum { orbMask3x3 = 33, orbMask5x5 = 55 };

/* One of four kernels over every channel of the region. Of the source one pixel (3x3) or two (5x5)
 * around the region are read too, on all four sides: the caller's image has to go on there. Written
 * is the region alone. Source and destination must not overlap.
 *
 *   Gauss     1 2 1     2  7  12  7 2     3x3: S / 16, ties to the even
 *             2 4 2     7 31  52 31 7     5x5: ((S + 286) * 29382) >> 24, nearly S / 571
 *             1 2 1    12 52 127 52 12
 *                       (and so on, up and down alike)
 *   Hipass    -1 all around, 8 or 24 in the middle: S limited to 0..255
 *   Laplace   3x3: as Hipass                    S limited to 0..255
 *             5x5: -1 -3 -4 -3 -1
 *                  -3  0  6  0 -3
 *                  -4  6 20  6 -4
 *                  (and so on, up and down alike)
 *   Lowpass   1 everywhere                      3x3: ((S + 5) * 455) >> 12, nearly S / 9
 *                                               5x5: ((S + 13) * 10485) >> 18, nearly S / 25
 *
 * S is the weighted sum. The fixed-point quotients are the definition: a value may lie one beside
 * the true quotient.
 *
 * Returns orbStsNullPtrErr for either pointer, orbStsSizeErr if the width or the height is below 1,
 * orbStsStepErr if a step is below 1, orbStsMaskSizeErr, orbStsMemAllocErr.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiFilterGauss_8u_C1R(const Orb8u* pSrc, Orb32s srcStep,
                                                          Orb8u* pDst, Orb32s dstStep,
                                                          OrbiSize roiSize, OrbiMaskSize mask);
ORB_API OrbStatus ORB_CALL legacy90orbiFilterGauss_8u_C3R(const Orb8u* pSrc, Orb32s srcStep,
                                                          Orb8u* pDst, Orb32s dstStep,
                                                          OrbiSize roiSize, OrbiMaskSize mask);
ORB_API OrbStatus ORB_CALL legacy90orbiFilterGauss_8u_C4R(const Orb8u* pSrc, Orb32s srcStep,
                                                          Orb8u* pDst, Orb32s dstStep,
                                                          OrbiSize roiSize, OrbiMaskSize mask);
ORB_API OrbStatus ORB_CALL legacy90orbiFilterHipass_8u_C1R(const Orb8u* pSrc, Orb32s srcStep,
                                                           Orb8u* pDst, Orb32s dstStep,
                                                           OrbiSize roiSize, OrbiMaskSize mask);
ORB_API OrbStatus ORB_CALL legacy90orbiFilterHipass_8u_C3R(const Orb8u* pSrc, Orb32s srcStep,
                                                           Orb8u* pDst, Orb32s dstStep,
                                                           OrbiSize roiSize, OrbiMaskSize mask);
ORB_API OrbStatus ORB_CALL legacy90orbiFilterHipass_8u_C4R(const Orb8u* pSrc, Orb32s srcStep,
                                                           Orb8u* pDst, Orb32s dstStep,
                                                           OrbiSize roiSize, OrbiMaskSize mask);
ORB_API OrbStatus ORB_CALL legacy90orbiFilterLaplace_8u_C1R(const Orb8u* pSrc, Orb32s srcStep,
                                                            Orb8u* pDst, Orb32s dstStep,
                                                            OrbiSize roiSize, OrbiMaskSize mask);
ORB_API OrbStatus ORB_CALL legacy90orbiFilterLaplace_8u_C3R(const Orb8u* pSrc, Orb32s srcStep,
                                                            Orb8u* pDst, Orb32s dstStep,
                                                            OrbiSize roiSize, OrbiMaskSize mask);
ORB_API OrbStatus ORB_CALL legacy90orbiFilterLaplace_8u_C4R(const Orb8u* pSrc, Orb32s srcStep,
                                                            Orb8u* pDst, Orb32s dstStep,
                                                            OrbiSize roiSize, OrbiMaskSize mask);
ORB_API OrbStatus ORB_CALL legacy90orbiFilterLowpass_8u_C1R(const Orb8u* pSrc, Orb32s srcStep,
                                                            Orb8u* pDst, Orb32s dstStep,
                                                            OrbiSize roiSize, OrbiMaskSize mask);
ORB_API OrbStatus ORB_CALL legacy90orbiFilterLowpass_8u_C3R(const Orb8u* pSrc, Orb32s srcStep,
                                                            Orb8u* pDst, Orb32s dstStep,
                                                            OrbiSize roiSize, OrbiMaskSize mask);

/* ------------------------------------------------------------------------------------------------
 * Morphology
 * ---------------------------------------------------------------------------------------------- */

/* The largest, or the smallest, of the nine pixels around each, in place. One pixel around the
 * region is read too, on all four sides, and not written.
 *
 * Returns orbStsNullPtrErr, orbStsStepErr if the step is below 1, orbStsSizeErr if the width or the
 * height is below 1, orbStsStrideErr if the width and its two border pixels are more than the step,
 * orbStsMemAllocErr.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiDilate3x3_8u_C1IR(Orb8u* pSrcDst, Orb32s srcDstStep,
                                                         OrbiSize roiSize);
ORB_API OrbStatus ORB_CALL legacy90orbiErode3x3_8u_C1IR(Orb8u* pSrcDst, Orb32s srcDstStep,
                                                        OrbiSize roiSize);

/* ------------------------------------------------------------------------------------------------
 * Rotation
 * ---------------------------------------------------------------------------------------------- */

/* Turns srcRoi of the source, and writes what of it falls into dstRoi of the destination. Pointers
 * are those of pixel (0, 0) of the whole images; the rectangles are positions in them, and no pixel
 * outside dstRoi is written. Pixel centres lie at whole numbers, y points down. Steps are not
 * checked and may be negative. Source and destination must not overlap.
 *
 * Rotate turns about pixel (0, 0), counter-clockwise by angle in degrees, and shifts then:
 *
 *   x' =  x cos + y sin + xShift
 *   y' = -x sin + y cos + yShift
 *
 * RotateCenter turns about the point (xCenter, yCenter), which stays where it is.
 *
 * By 90, 180 or 270 degrees and whole numbers of pixels, pixels are copied, and interpolation is
 * not looked at. Otherwise a destination pixel is written if it lies in the quadrangle of the four
 * turned corners (x and x + width - 1, y and y + height - 1), the edge included, up to 1e-13 of a
 * pixel along the row. Its value is interpolated at its place in the source, where samples come
 * from the whole image and not from srcRoi alone:
 *
 *   orbInterNearest      the pixel at the place plus a half, truncated
 *   orbInterLinear       of 2 x 2 pixels, to nearest, halves up
 *   orbInterLagrange     of the 4 x 4 pixels around, or the last 4 at the image's border; limited
 *                        to 0..255, to nearest. In an image of less than 4 pixels in one
 *                        direction it is orbInterLinear
 *   orbInterCatmullRom   of the 4 x 4 pixels around, those outside of the image replaced by the
 *                        nearest inside; rounded as above
 *
 * With orbInterEdgeBlend the sloping edges are smoothed then: step by step along the longer
 * direction of an edge, the pixel just outside becomes the mean of itself and the one just inside,
 * each weighted by the other's nearness to the edge.
 *
 * Returns orbStsAngleErr if the angle is infinite or not a number. Then, where pixels are copied,
 * orbStsNullPtrErr for either pointer; orbStsSizeErr if a side of srcSize, srcRoi or dstRoi is
 * below 1 or a position negative; the warning orbStsRoiOutside if srcRoi begins outside of the
 * image or nothing falls into dstRoi, and nothing is written. Elsewhere orbStsNullPtrErr,
 * orbStsSizeErr alike; orbStsInterpolationErr for any method but these four; orbStsRoiOutside if
 * srcRoi begins outside; orbStsRoiSmallErr if less than 2 x 2 pixels of it are in the image;
 * orbStsCoeffErr if the turned corners are no convex quadrangle, as with shifts that are no
 * numbers; the warning orbStsQuadOutside if nothing falls into dstRoi, or there is no memory, and
 * nothing is written.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiRotate_8u_C1R(const Orb8u* pSrc, OrbiSize srcSize,
                                                     Orb32s srcStep, OrbiRect srcRoi, Orb8u* pDst,
                                                     Orb32s dstStep, OrbiRect dstRoi, Orb64f angle,
                                                     Orb64f xShift, Orb64f yShift,
                                                     Orb32s interpolation);
ORB_API OrbStatus ORB_CALL legacy90orbiRotate_8u_C3R(const Orb8u* pSrc, OrbiSize srcSize,
                                                     Orb32s srcStep, OrbiRect srcRoi, Orb8u* pDst,
                                                     Orb32s dstStep, OrbiRect dstRoi, Orb64f angle,
                                                     Orb64f xShift, Orb64f yShift,
                                                     Orb32s interpolation);
ORB_API OrbStatus ORB_CALL legacy90orbiRotate_8u_C4R(const Orb8u* pSrc, OrbiSize srcSize,
                                                     Orb32s srcStep, OrbiRect srcRoi, Orb8u* pDst,
                                                     Orb32s dstStep, OrbiRect dstRoi, Orb64f angle,
                                                     Orb64f xShift, Orb64f yShift,
                                                     Orb32s interpolation);
ORB_API OrbStatus ORB_CALL legacy90orbiRotateCenter_8u_C1R(const Orb8u* pSrc, OrbiSize srcSize,
                                                           Orb32s srcStep, OrbiRect srcRoi,
                                                           Orb8u* pDst, Orb32s dstStep,
                                                           OrbiRect dstRoi, Orb64f angle,
                                                           Orb64f xCenter, Orb64f yCenter,
                                                           Orb32s interpolation);
ORB_API OrbStatus ORB_CALL legacy90orbiRotateCenter_8u_C3R(const Orb8u* pSrc, OrbiSize srcSize,
                                                           Orb32s srcStep, OrbiRect srcRoi,
                                                           Orb8u* pDst, Orb32s dstStep,
                                                           OrbiRect dstRoi, Orb64f angle,
                                                           Orb64f xCenter, Orb64f yCenter,
                                                           Orb32s interpolation);
ORB_API OrbStatus ORB_CALL legacy90orbiRotateCenter_8u_C4R(const Orb8u* pSrc, OrbiSize srcSize,
                                                           Orb32s srcStep, OrbiRect srcRoi,
                                                           Orb8u* pDst, Orb32s dstStep,
                                                           OrbiRect dstRoi, Orb64f angle,
                                                           Orb64f xCenter, Orb64f yCenter,
                                                           Orb32s interpolation);

/* ------------------------------------------------------------------------------------------------
 * Perspective warp
 * ---------------------------------------------------------------------------------------------- */

/* Maps srcRoi of the source into the destination by a projective transform, given row by row:
 *
 *   x' = (c00 x + c01 y + c02) / (c20 x + c21 y + c22)
 *   y' = (c10 x + c11 y + c12) / (c20 x + c21 y + c22)
 *
 * Images, rectangles, interpolation, the quadrangle that is written and orbInterEdgeBlend are as
 * with rotation, but that orbInterCatmullRom too is orbInterLinear in an image of less than 4
 * pixels in one direction. There are no right angles that are copied.
 *
 * Returns orbStsNullPtrErr for any pointer; orbStsSizeErr as in rotation; orbStsStepErr if a step
 * is below 1; orbStsInterpolationErr; orbStsCoeffErr if the transform is degenerate: if d, which is
 * (p - q) / p with p = c00 c11 and q = c01 c10, or q where |p| <= 1e-200, has a magnitude of at
 * most 1e-10 and (c01 c12 - c11 c02) c20 - (c12 c00 - c02 c10) c21 is below 1e-10; or if |c22| <=
 * 1e-200. Then the warning orbStsRoiOutside, orbStsRoiSmallErr, orbStsCoeffErr, and the warning
 * orbStsQuadOutside as in rotation.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiWarpPerspective_8u_C1R(
    const Orb8u* pSrc, OrbiSize srcSize, Orb32s srcStep, OrbiRect srcRoi, Orb8u* pDst,
    Orb32s dstStep, OrbiRect dstRoi, const Orb64f coeffs[3][3], Orb32s interpolation);
ORB_API OrbStatus ORB_CALL legacy90orbiWarpPerspective_8u_C3R(
    const Orb8u* pSrc, OrbiSize srcSize, Orb32s srcStep, OrbiRect srcRoi, Orb8u* pDst,
    Orb32s dstStep, OrbiRect dstRoi, const Orb64f coeffs[3][3], Orb32s interpolation);
ORB_API OrbStatus ORB_CALL legacy90orbiWarpPerspective_8u_C4R(
    const Orb8u* pSrc, OrbiSize srcSize, Orb32s srcStep, OrbiRect srcRoi, Orb8u* pDst,
    Orb32s dstStep, OrbiRect dstRoi, const Orb64f coeffs[3][3], Orb32s interpolation);

#ifdef __cplusplus
}
#endif

#endif
