// Wavelet transforms of whole images: argument checks and sizes, then one call into a kernel.
#include "jpeg2k/px/wavelet_image.h"

namespace orb::ORB_BUILD {

static kernel::Tile tileOf(const OrbiRect* rect) {
  return {rect->width, rect->height, rect->x & 1, rect->y & 1};
}

// ---- Working memory

// A line and its extension at both ends, in samples.
constexpr Orb32s kExtension53 = 4;
constexpr Orb32s kExtension97 = 8;

// The distance of the rows of an image in the buffer.
static Orb32s bufferStepOf(Orb32s width, Orb32s sampleBytes) {
  return (width * sampleBytes + 31) & ~31;
}

static Orb32s lineSize(const OrbiRect& rect, Orb32s sampleBytes, Orb32s extension) {
  const Orb32s longer = rect.width > rect.height ? rect.width : rect.height;
  return longer < 3 ? 0 : (longer + extension) * sampleBytes;
}

static OrbStatus lineBufSize(const OrbiRect* pTileRect, Orb32s* pSize, Orb32s sampleBytes,
                             Orb32s extension) {
  if (!pTileRect || !pSize) return orbStsNullPtrErr;
  *pSize = lineSize(*pTileRect, sampleBytes, extension);
  return orbStsNoErr;
}

static OrbStatus imageBufSize(const OrbiRect* pTileRect, Orb32s* pSize, Orb32s sampleBytes,
                              Orb32s extension) {
  if (!pTileRect || !pSize) return orbStsNullPtrErr;
  *pSize = bufferStepOf(pTileRect->width, sampleBytes) * pTileRect->height +
           lineSize(*pTileRect, sampleBytes, extension);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiWTGetBufSize_B53_JPEG2K_16s_C1IR(const OrbiRect* pTileRect, Orb32s* pSize) {
  return lineBufSize(pTileRect, pSize, sizeof(Orb16s), kExtension53);
}

OrbStatus ORB_CALL orbiWTGetBufSize_B53_JPEG2K_32s_C1IR(const OrbiRect* pTileRect, Orb32s* pSize) {
  return lineBufSize(pTileRect, pSize, sizeof(Orb32s), kExtension53);
}

OrbStatus ORB_CALL orbiWTGetBufSize_D97_JPEG2K_16s_C1IR(const OrbiRect* pTileRect, Orb32s* pSize) {
  return lineBufSize(pTileRect, pSize, sizeof(Orb16s), kExtension97);
}

OrbStatus ORB_CALL orbiWTGetBufSize_D97_JPEG2K_32s_C1IR(const OrbiRect* pTileRect, Orb32s* pSize) {
  return lineBufSize(pTileRect, pSize, sizeof(Orb32s), kExtension97);
}

OrbStatus ORB_CALL orbiWTGetBufSize_B53_JPEG2K_16s_C1R(const OrbiRect* pTileRect, Orb32s* pSize) {
  return imageBufSize(pTileRect, pSize, sizeof(Orb16s), kExtension53);
}

OrbStatus ORB_CALL orbiWTGetBufSize_B53_JPEG2K_32s_C1R(const OrbiRect* pTileRect, Orb32s* pSize) {
  return imageBufSize(pTileRect, pSize, sizeof(Orb32s), kExtension53);
}

OrbStatus ORB_CALL orbiWTGetBufSize_D97_JPEG2K_16s_C1R(const OrbiRect* pTileRect, Orb32s* pSize) {
  return imageBufSize(pTileRect, pSize, sizeof(Orb16s), kExtension97);
}

OrbStatus ORB_CALL orbiWTGetBufSize_D97_JPEG2K_32s_C1R(const OrbiRect* pTileRect, Orb32s* pSize) {
  return imageBufSize(pTileRect, pSize, sizeof(Orb32s), kExtension97);
}

// ---- In place

template <class T>
static OrbStatus checkInPlace(const T* pSrcDst, Orb32s srcDstStep, const OrbiRect* pTileRect,
                              const Orb8u* pBuffer) {
  if (!pSrcDst) return orbStsNullPtrErr;
  if (srcDstStep < 1) return orbStsStepErr;
  if (!pTileRect || !pBuffer) return orbStsNullPtrErr;
  return orbStsNoErr;
}

static bool isEmpty(const OrbiRect& rect) {
  return rect.width < 1 || rect.height < 1;
}

template <class W, class T>
static OrbStatus forwardInPlace(T* pSrcDst, Orb32s srcDstStep, const OrbiRect* pTileRect,
                                Orb8u* pBuffer) {
  const OrbStatus status = checkInPlace(pSrcDst, srcDstStep, pTileRect, pBuffer);
  if (status != orbStsNoErr || isEmpty(*pTileRect)) return status;
  kernel::orbForwardTileInPlace<W>(pSrcDst, srcDstStep, tileOf(pTileRect), pBuffer);
  return orbStsNoErr;
}

template <class W, class T>
static OrbStatus inverseInPlace(T* pSrcDst, Orb32s srcDstStep, const OrbiRect* pTileRect,
                                Orb8u* pBuffer) {
  const OrbStatus status = checkInPlace(pSrcDst, srcDstStep, pTileRect, pBuffer);
  if (status != orbStsNoErr || isEmpty(*pTileRect)) return status;
  kernel::orbInverseTileInPlace<W>(pSrcDst, srcDstStep, tileOf(pTileRect), pBuffer);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiWTFwd_B53_JPEG2K_16s_C1IR(Orb16s* pSrcDst, Orb32s srcDstStep,
                                                 const OrbiRect* pTileRect, Orb8u* pBuffer) {
  return forwardInPlace<kernel::Wavelet53<Orb16s>>(pSrcDst, srcDstStep, pTileRect, pBuffer);
}

OrbStatus ORB_CALL orbiWTFwd_B53_JPEG2K_32s_C1IR(Orb32s* pSrcDst, Orb32s srcDstStep,
                                                 const OrbiRect* pTileRect, Orb8u* pBuffer) {
  return forwardInPlace<kernel::Wavelet53<Orb32s>>(pSrcDst, srcDstStep, pTileRect, pBuffer);
}

OrbStatus ORB_CALL orbiWTFwd_D97_JPEG2K_16s_C1IR(Orb16s* pSrcDst, Orb32s srcDstStep,
                                                 const OrbiRect* pTileRect, Orb8u* pBuffer) {
  return forwardInPlace<kernel::Wavelet97Of16>(pSrcDst, srcDstStep, pTileRect, pBuffer);
}

OrbStatus ORB_CALL orbiWTFwd_D97_JPEG2K_32s_C1IR(Orb32s* pSrcDst, Orb32s srcDstStep,
                                                 const OrbiRect* pTileRect, Orb8u* pBuffer) {
  return forwardInPlace<kernel::Wavelet97Of32>(pSrcDst, srcDstStep, pTileRect, pBuffer);
}

OrbStatus ORB_CALL orbiWTInv_B53_JPEG2K_16s_C1IR(Orb16s* pSrcDst, Orb32s srcDstStep,
                                                 const OrbiRect* pTileRect, Orb8u* pBuffer) {
  return inverseInPlace<kernel::Wavelet53<Orb16s>>(pSrcDst, srcDstStep, pTileRect, pBuffer);
}

OrbStatus ORB_CALL orbiWTInv_B53_JPEG2K_32s_C1IR(Orb32s* pSrcDst, Orb32s srcDstStep,
                                                 const OrbiRect* pTileRect, Orb8u* pBuffer) {
  return inverseInPlace<kernel::Wavelet53<Orb32s>>(pSrcDst, srcDstStep, pTileRect, pBuffer);
}

OrbStatus ORB_CALL orbiWTInv_D97_JPEG2K_16s_C1IR(Orb16s* pSrcDst, Orb32s srcDstStep,
                                                 const OrbiRect* pTileRect, Orb8u* pBuffer) {
  return inverseInPlace<kernel::Wavelet97Of16>(pSrcDst, srcDstStep, pTileRect, pBuffer);
}

OrbStatus ORB_CALL orbiWTInv_D97_JPEG2K_32s_C1IR(Orb32s* pSrcDst, Orb32s srcDstStep,
                                                 const OrbiRect* pTileRect, Orb8u* pBuffer) {
  return inverseInPlace<kernel::Wavelet97Of32>(pSrcDst, srcDstStep, pTileRect, pBuffer);
}

// ---- Between an image and four planes

template <class T>
static OrbStatus checkPlanes(const void* image, Orb32s imageStep, T* const planes[4],
                             const Orb32s steps[4], const OrbiRect* pTileRect,
                             const Orb8u* pBuffer) {
  if (!image || !planes || !steps || !pTileRect || !pBuffer) return orbStsNullPtrErr;
  if (imageStep < 1) return orbStsStepErr;
  for (int i = 0; i < 4; ++i) {
    if (!planes[i]) return orbStsNullPtrErr;
  }
  for (int i = 0; i < 4; ++i) {
    if (steps[i] < 1) return orbStsStepErr;
  }
  return isEmpty(*pTileRect) ? orbStsSizeErr : orbStsNoErr;
}

template <class W, class T>
static OrbStatus forwardToPlanes(const T* pSrc, Orb32s srcStep, const OrbiRect* pTileRect,
                                 T* const pDst[4], const Orb32s dstStep[4], Orb8u* pBuffer) {
  const OrbStatus status = checkPlanes(pSrc, srcStep, pDst, dstStep, pTileRect, pBuffer);
  if (status != orbStsNoErr) return status;
  kernel::orbForwardTile<W, T>(pSrc, srcStep, {pDst, dstStep}, tileOf(pTileRect), pBuffer,
                               bufferStepOf(pTileRect->width, sizeof(T)));
  return orbStsNoErr;
}

template <class W, class T>
static OrbStatus inverseFromPlanes(const T* const pSrc[4], const Orb32s srcStep[4], T* pDst,
                                   Orb32s dstStep, const OrbiRect* pTileRect, Orb8u* pBuffer) {
  const OrbStatus status = checkPlanes(pDst, dstStep, pSrc, srcStep, pTileRect, pBuffer);
  if (status != orbStsNoErr) return status;
  kernel::orbInverseTile<W, T>({pSrc, srcStep}, pDst, dstStep, tileOf(pTileRect), pBuffer,
                               bufferStepOf(pTileRect->width, sizeof(T)));
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiWTFwd_B53_JPEG2K_16s_C1R(const Orb16s* pSrc, Orb32s srcStep,
                                                const OrbiRect* pTileRect, Orb16s* const pDst[4],
                                                const Orb32s dstStep[4], Orb8u* pBuffer) {
  return forwardToPlanes<kernel::Wavelet53<Orb16s>>(pSrc, srcStep, pTileRect, pDst, dstStep,
                                                    pBuffer);
}

OrbStatus ORB_CALL orbiWTFwd_B53_JPEG2K_32s_C1R(const Orb32s* pSrc, Orb32s srcStep,
                                                const OrbiRect* pTileRect, Orb32s* const pDst[4],
                                                const Orb32s dstStep[4], Orb8u* pBuffer) {
  return forwardToPlanes<kernel::Wavelet53<Orb32s>>(pSrc, srcStep, pTileRect, pDst, dstStep,
                                                    pBuffer);
}

OrbStatus ORB_CALL orbiWTFwd_D97_JPEG2K_16s_C1R(const Orb16s* pSrc, Orb32s srcStep,
                                                const OrbiRect* pTileRect, Orb16s* const pDst[4],
                                                const Orb32s dstStep[4], Orb8u* pBuffer) {
  return forwardToPlanes<kernel::Wavelet97Of16>(pSrc, srcStep, pTileRect, pDst, dstStep, pBuffer);
}

OrbStatus ORB_CALL orbiWTFwd_D97_JPEG2K_32s_C1R(const Orb32s* pSrc, Orb32s srcStep,
                                                const OrbiRect* pTileRect, Orb32s* const pDst[4],
                                                const Orb32s dstStep[4], Orb8u* pBuffer) {
  return forwardToPlanes<kernel::Wavelet97Of32>(pSrc, srcStep, pTileRect, pDst, dstStep, pBuffer);
}

OrbStatus ORB_CALL orbiWTInv_B53_JPEG2K_16s_C1R(const Orb16s* const pSrc[4],
                                                const Orb32s srcStep[4], Orb16s* pDst,
                                                Orb32s dstStep, const OrbiRect* pTileRect,
                                                Orb8u* pBuffer) {
  return inverseFromPlanes<kernel::Wavelet53<Orb16s>>(pSrc, srcStep, pDst, dstStep, pTileRect,
                                                      pBuffer);
}

OrbStatus ORB_CALL orbiWTInv_B53_JPEG2K_32s_C1R(const Orb32s* const pSrc[4],
                                                const Orb32s srcStep[4], Orb32s* pDst,
                                                Orb32s dstStep, const OrbiRect* pTileRect,
                                                Orb8u* pBuffer) {
  return inverseFromPlanes<kernel::Wavelet53<Orb32s>>(pSrc, srcStep, pDst, dstStep, pTileRect,
                                                      pBuffer);
}

OrbStatus ORB_CALL orbiWTInv_D97_JPEG2K_16s_C1R(const Orb16s* const pSrc[4],
                                                const Orb32s srcStep[4], Orb16s* pDst,
                                                Orb32s dstStep, const OrbiRect* pTileRect,
                                                Orb8u* pBuffer) {
  return inverseFromPlanes<kernel::Wavelet97Of16>(pSrc, srcStep, pDst, dstStep, pTileRect, pBuffer);
}

OrbStatus ORB_CALL orbiWTInv_D97_JPEG2K_32s_C1R(const Orb32s* const pSrc[4],
                                                const Orb32s srcStep[4], Orb32s* pDst,
                                                Orb32s dstStep, const OrbiRect* pTileRect,
                                                Orb8u* pBuffer) {
  return inverseFromPlanes<kernel::Wavelet97Of32>(pSrc, srcStep, pDst, dstStep, pTileRect, pBuffer);
}

}  // namespace orb::ORB_BUILD
