/* Resizing of 8-bit images, by any factor in each direction, whole or not. How samples between
 * pixels are made is told by an interpolation argument: see image.h.
 */
#ifndef ORB90LEGACY_IMAGE_RESIZE_H
#define ORB90LEGACY_IMAGE_RESIZE_H

#include "orb90legacy/image.h"
#include "orb90legacy/status.h"
#include "orb90legacy/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------------------------------
 * Images of square pixels
 * ---------------------------------------------------------------------------------------------- */

/* The bytes of scratch that a resize of these rectangles wants in pBuffer: an upper bound, which
 * holds for every image around srcRoi. With sw x sh and dw x dh the sizes of the two, c channels
 * and up(v, n) the next multiple of n, it is 16 and
 *
 *   base                  4 * (up(dw, 16) + up(dh, 16))
 *   orbInterNearest       base
 *   orbInterLinear        base + 4 * (up(dw, 64) + up(dh, 64)) + c * 256 * ((8 * dw + 508) / 256)
 *   four-sample methods   base + 4 * (up(dw, 32) + up(dh, 32)) + 128 * ((4 * dw + 127) / 32)
 *                         + 128 * ((16 * dh + 508) / 128) + c * 256 * ((4 * dw + 255) / 64)
 *   orbInterLanczos       base + 4 * (up(dw, 32) + up(dh, 32)) + 128 * ((6 * dh + 191) / 32)
 *                         + (1 + c) * 128 * ((6 * dw + 191) / 32)
 *   orbInterSuper         c * 128 * ((sw + 15) / 16)
 *   orbInterAntialias     4 * up(dw * c, 16) + 8 * up(dw * sh * c, 16)
 *                         + 8 * up((2 * N + 2) * dw, 16) + 8 * up((2 * M + 2) * dh, 16)
 *
 * where divisions of whole numbers drop the rest, and N and M are the kernel's reach in each
 * direction, rounded up: 1 (linear), 2 (four samples) or 3 (Lanczos), times sw / dw or sh / dh
 * where that is above 1.
 *
 * Returns orbStsNullPtrErr; orbStsSizeErr if a position is negative or a side below 1;
 * orbStsChannelCountErr unless nChannels is 1, 3 or 4; orbStsInterpolationErr for what is no method
 * of image.h, or more than one option; orbStsSizeErr, and a size of 0, if it is not below 2^31.
 * With orbInterAntialias on orbInterNearest or orbInterSuper, which take no notice of it, the
 * warning orbStsAntialiasIgnored.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiResizeGetBufSize(OrbiRect srcRoi, OrbiRect dstRoi,
                                                        Orb32s nChannels, Orb32s interpolation,
                                                        Orb32s* pBufSize);

/* Scales srcRoi by xFactor and yFactor, shifts it, and writes what of it falls into dstRoi.
 * Pointers are those of pixel (0, 0) of the whole images; the rectangles are positions in them, and
 * no pixel outside dstRoi is written. A pixel is a square: pixel x reaches from x to x + 1, and the
 * point x of the source lands on x * xFactor + xShift. Steps are not checked and may be negative.
 * Source and destination must not overlap.
 *
 * Which pixels. srcRoi, as far as it lies in the image, is mapped and clipped to dstRoi: from x0 to
 * x1 across, y0 to y1 down. Written are the pixels whose middle lies in there, from
 * trunc(x0 + 0.4999999999) to before trunc(x1 + 0.5000000001). With one of the edge options it is
 * the pixels that lie in there wholly, from ceil(x0 - 1e-10) to before floor(x1 + 1e-10); around
 * them there is then a rim of one pixel, on each side where the limit is not whole, which is
 * covered to a part of k:
 *
 *   orbInterEdgeFade      trunc(v * k + 0.5000001), v being the nearest pixel inside
 *   orbInterEdgeBlend     trunc(old + (v - old) * k + 0.5000001), old being what was there
 *
 * A corner's k is the product of those of its sides.
 *
 * srcRoi chooses pixels and no more. Samples come from the whole image, those outside of it from
 * its border, so that parts of an image that are resized one by one fit together. Destination pixel
 * x is interpolated at p = (x + 0.5) / xFactor - xShift / xFactor - 0.5 among the samples of the
 * source, i = floor(p), f = p - i:
 *
 *   orbInterNearest       the sample at trunc(p + 0.5 - 1e-10)
 *   orbInterLinear        weights in 14 fraction bits, f cut to them; across in 16-bit words with 6
 *                         fraction bits, (.. + 128) >> 8, then down, (.. + 0x80000) >> 20. Where p
 *                         lies outside of the samples in one direction, there is one step in the
 *                         other, (.. + 8192) >> 14
 *   orbInterLagrange, orbInterBSpline, orbInterCatmullRom, orbInterCubicB05C03
 *                         samples i - 1 to i + 2 with float weights, across and then down
 *   orbInterLanczos       samples i - 2 to i + 3 with float weights, which are lines between values
 *                         100 to a sample of sinc(t) sinc(t / 3), divided by their sum
 *   orbInterSuper         the mean of the source's area of the pixel, rounded with halves up; where
 *                         that is of whole pixels it is trunc(S * (xFactor * yFactor) + 0.5) of the
 *                         exact sum S
 *
 * With orbInterAntialias the kernel is as much wider as the reduction wants it, 2^20 times at most,
 * and its weights are divided by their sum. It stands at p + 0.5 among the samples: the picture
 * lies half a source pixel further up and left than without the option.
 *
 * Floats are rounded by trunc(v + 0.5000001) and limited to 0..255. An image with a side below 6
 * gets orbInterLagrange in place of orbInterLanczos; one with a side below 4 orbInterLinear in
 * place of any method of four or six samples.
 *
 * pBuffer has the size that legacy90orbiResizeGetBufSize reports for the same rectangles and
 * interpolation, and any alignment. What it holds matters neither before nor after.
 *
 * Returns orbStsNullPtrErr for pSrc, pDst or pBuffer; orbStsSizeErr if a side of srcSize or a
 * rectangle is below 1, or a position negative; orbStsResizeFactorErr if a factor is not above 0;
 * orbStsInterpolationErr for what is no method, or more than one option; orbStsResizeFactorErr for
 * orbInterSuper with a factor above 1; the warning orbStsRoiOutside if srcRoi begins outside of the
 * image; the warning orbStsNoOperation if no pixel is to be written, as for factors and shifts that
 * are no numbers. With both warnings nothing is written. With orbInterAntialias on orbInterNearest
 * or orbInterSuper the work is done without it, and the warning is orbStsAntialiasIgnored.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiResizeSqrPixel_8u_C1R(
    const Orb8u* pSrc, OrbiSize srcSize, Orb32s srcStep, OrbiRect srcRoi, Orb8u* pDst,
    Orb32s dstStep, OrbiRect dstRoi, Orb64f xFactor, Orb64f yFactor, Orb64f xShift, Orb64f yShift,
    Orb32s interpolation, Orb8u* pBuffer);
ORB_API OrbStatus ORB_CALL legacy90orbiResizeSqrPixel_8u_C3R(
    const Orb8u* pSrc, OrbiSize srcSize, Orb32s srcStep, OrbiRect srcRoi, Orb8u* pDst,
    Orb32s dstStep, OrbiRect dstRoi, Orb64f xFactor, Orb64f yFactor, Orb64f xShift, Orb64f yShift,
    Orb32s interpolation, Orb8u* pBuffer);
ORB_API OrbStatus ORB_CALL legacy90orbiResizeSqrPixel_8u_C4R(
    const Orb8u* pSrc, OrbiSize srcSize, Orb32s srcStep, OrbiRect srcRoi, Orb8u* pDst,
    Orb32s dstStep, OrbiRect dstRoi, Orb64f xFactor, Orb64f yFactor, Orb64f xShift, Orb64f yShift,
    Orb32s interpolation, Orb8u* pBuffer);

/* ------------------------------------------------------------------------------------------------
 * Images in 4:2:2
 * ---------------------------------------------------------------------------------------------- */

/* Scales srcRoi of an image of bytes Y0, Cb, Y1, Cr for each pair of pixels. pSrc is pixel (0, 0)
 * of the source, pDst the first pixel that is written. Steps are not checked and may be negative.
 * Source and destination must not overlap.
 *
 * srcRoi may begin at a negative position: it then begins at 0 and is so much wider or higher. Then
 * it is clipped to the image. The result has dw = trunc(width * xFactor) columns, at least 2 and at
 * most dstRoiSize.width, the last of an odd number left out, and dh = trunc(height * yFactor) rows,
 * at least 1 and at most dstRoiSize.height.
 *
 * The first and the last samples of both images lie over one another: output i stands at
 * i * (width - 1) / (width * xFactor - 1), rows alike, and chroma with the width in pairs; all at 0
 * where the size that divides is not above 1. Samples come from the whole image, those outside of
 * it from its border. At position p, with i = trunc(p + 1e-7) and f = p - i:
 *
 *   orbInterNearest       sample i
 *   orbInterLinear        as above, across and then down
 *   orbInterLagrange      samples i - 1 to i + 2, across and then down, in floats
 *   orbInterSuper         the mean of a box of 1 / xFactor by 1 / yFactor samples: the boxes lie
 *                         side by side from the corner of srcRoi on
 *
 * Returns orbStsNullPtrErr; orbStsSizeErr if a side of srcSize, srcRoi or dstRoiSize is below 1, if
 * the width of srcSize or the width or x of srcRoi is odd, or if the width of dstRoiSize is below
 * 2; the warning orbStsRoiOutside, with nothing written, if srcRoi lies outside of the image;
 * orbStsResizeFactorErr if a factor is not above 0; orbStsInterpolationErr for any other value,
 * options included; orbStsResizeTooSmallErr if width * xFactor is below 1.5 or height * yFactor
 * below 0.5, by more than 1e-7, and dstRoiSize does not cut what there is; orbStsResizeFactorErr
 * for orbInterSuper with a factor above 1; orbStsMemAllocErr.
 */
ORB_API OrbStatus ORB_CALL legacy90orbiResizeYUV422_8u_C2R(const Orb8u* pSrc, OrbiSize srcSize,
                                                           Orb32s srcStep, OrbiRect srcRoi,
                                                           Orb8u* pDst, Orb32s dstStep,
                                                           OrbiSize dstRoiSize, Orb64f xFactor,
                                                           Orb64f yFactor, Orb32s interpolation);

#ifdef __cplusplus
}
#endif

#endif
