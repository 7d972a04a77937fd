// JPEG colour conversion: argument checks, then one call into a kernel for each row.
#include "jpeg/px/color.h"

#if ORB_SIMD
#include "jpeg/simd/color.h"
#endif

namespace orb::ORB_BUILD {

using kernel::ForwardA;
using kernel::InverseA;

// ---- The images that arguments make. A null array of planes or steps makes null planes.

template <int kChannels, class Byte>
static InterleavedImage<Byte, Order::rgb, kChannels> rgb(Byte* first, Orb32s step) {
  return {first, step};
}
template <int kChannels, class Byte>
static InterleavedImage<Byte, Order::bgr, kChannels> bgr(Byte* first, Orb32s step) {
  return {first, step};
}
static AlphaImage<Order::rgb> rgbAlpha(Orb8u* first, Orb32s step, Orb8u alpha) {
  return {first, step, alpha};
}
static AlphaImage<Order::bgr> bgrAlpha(Orb8u* first, Orb32s step, Orb8u alpha) {
  return {first, step, alpha};
}

template <int kGreenBits, class Word>
static PackedImage<Word, Order::rgb, kGreenBits> packedRgb(Word* first, Orb32s step) {
  return {first, step};
}
template <int kGreenBits, class Word>
static PackedImage<Word, Order::bgr, kGreenBits> packedBgr(Word* first, Orb32s step) {
  return {first, step};
}

template <class Pixel, int kPlanes, class Byte>
static PlanarImage<Pixel, Byte, kPlanes> planes(Byte* const* first, Orb32s step) {
  PlanarImage<Pixel, Byte, kPlanes> image = {};
  for (int i = 0; i < kPlanes; ++i) {
    image.plane[i] = first ? first[i] : nullptr;
    image.step[i] = step;
  }
  return image;
}
template <class Byte>
static PlanarImage<YCbCr, Byte, 3> yccPlanes(Byte* const* first, Orb32s step) {
  return planes<YCbCr, 3>(first, step);
}
template <class Byte>
static PlanarImage<YCbCr, Byte, 3> yccPlanes(Byte* const* first, const Orb32s* steps) {
  if (!first || !steps) return {};
  return {{first[0], first[1], first[2]}, {steps[0], steps[1], steps[2]}};
}

// ---- Checks

template <class Image, class Test>
static bool anyStep(const Image& image, Test test) {
  return test(image.step);
}
template <class Pixel, class Byte, int kPlanes, class Test>
static bool anyStep(const PlanarImage<Pixel, Byte, kPlanes>& image, Test test) {
  for (const Orb32s step : image.step) {
    if (test(step)) return true;
  }
  return false;
}

template <class Source, class Destination>
static OrbStatus checkPixels(const Source& src, const Destination& dst, OrbiSize roiSize) {
  const auto belowOne = [](Orb32s step) { return step < 1; };
  if (src.anyNull() || dst.anyNull()) return orbStsNullPtrErr;
  if (anyStep(src, belowOne) || anyStep(dst, belowOne)) return orbStsStepErr;
  if (roiSize.width < 1 || roiSize.height < 1) return orbStsSizeErr;
  return orbStsNoErr;
}

// For the functions that go by pairs of pixels: a negative step passes.
template <class Source, class Destination>
static OrbStatus checkPairs(const Source& src, const Destination& dst, OrbiSize roiSize,
                            Orb32s lowestHeight = 1) {
  const auto zero = [](Orb32s step) { return step == 0; };
  if (src.anyNull() || dst.anyNull()) return orbStsNullPtrErr;
  if (roiSize.width < 2 || roiSize.height < lowestHeight) return orbStsSizeErr;
  if (anyStep(src, zero) || anyStep(dst, zero)) return orbStsStepErr;
  return orbStsNoErr;
}

// ---- The shapes of conversions

template <class Conversion, class Source, class Destination>
static void convertImage(const Source& src, const Destination& dst, OrbiSize size) {
  for (Orb32s y = 0; y < size.height; ++y) {
    kernel::orbConvertRow<Conversion>(src.at(0, y), dst.at(0, y), size.width);
  }
}

template <class Conversion, class Source, class Destination>
static OrbStatus convertPixels(const Source& src, const Destination& dst, OrbiSize roiSize) {
  const OrbStatus status = checkPixels(src, dst, roiSize);
  if (status == orbStsNoErr) convertImage<Conversion>(src, dst, roiSize);
  return status;
}

// Pixel by pixel too, with the checks of the functions that go by pairs.
template <class Conversion, class Source, class Destination>
static OrbStatus convertTwoOrMore(const Source& src, const Destination& dst, OrbiSize roiSize) {
  const OrbStatus status = checkPairs(src, dst, roiSize);
  if (status == orbStsNoErr) convertImage<Conversion>(src, dst, roiSize);
  return status;
}

template <class Conversion, class Source, class Destination>
static OrbStatus convertWithBlack(const Source& src, const Destination& dst, OrbiSize roiSize) {
  const OrbStatus status = checkPixels(src, dst, roiSize);
  if (status != orbStsNoErr) return status;
  for (Orb32s y = 0; y < roiSize.height; ++y) {
    const auto srcRow = src.at(0, y);
    const auto dstRow = dst.at(0, y);
    kernel::orbConvertRow<Conversion>(srcRow, dstRow, roiSize.width);
    orbCopyFourth(srcRow, dstRow, roiSize.width);
  }
  return orbStsNoErr;
}

static OrbStatus evenWidthStatus(OrbiSize roiSize) {
  return roiSize.width % 2 == 0 ? orbStsNoErr : orbStsDoubleSize;
}
static OrbStatus evenSizeStatus(OrbiSize roiSize) {
  return roiSize.height % 2 == 0 ? evenWidthStatus(roiSize) : orbStsDoubleSize;
}

// One chroma sample for two pixels of kRows rows. An odd last column or row is left out.
template <class ChromaOfGroups, Orb32s kRows, class Source>
static void convertSubsampled(const Source& src, const YccPlanes& dst, OrbiSize roiSize) {
  const LumaImage luma = {dst.plane[0], dst.step[0]};
  const OrbiSize groups = {roiSize.width / 2, roiSize.height / kRows};
  for (Orb32s y = 0; y < groups.height; ++y) {
    const OrbiSize lumaSize = {groups.width * 2, kRows};
    convertImage<LumaForward>(src.at(0, y * kRows), luma.at(0, y * kRows), lumaSize);
    kernel::orbConvertRow<ChromaOfGroups>(GroupSumsImage<Source, 2, kRows>{src}.at(0, y),
                                          ChromaImage{dst}.at(0, y), groups.width);
  }
}

template <class Source>
static OrbStatus convertTo422(const Source& src, const YccPlanes& dst, OrbiSize roiSize) {
  const OrbStatus status = checkPairs(src, dst, roiSize);
  if (status != orbStsNoErr) return status;
  convertSubsampled<ChromaForwardOfPair, 1>(src, dst, roiSize);
  return evenWidthStatus(roiSize);
}

template <class Source>
static OrbStatus convertTo420(const Source& src, const YccPlanes& dst, OrbiSize roiSize) {
  const OrbStatus status = checkPairs(src, dst, roiSize);
  if (status != orbStsNoErr) return status;
  convertSubsampled<ChromaForwardOfGroup, 2>(src, dst, roiSize);
  return evenSizeStatus(roiSize);
}

// What becomes of an odd last column: it is left out, or its pair is completed beyond the region.
static Orb32s widthWithoutHalfPair(Orb32s width) {
  return width - width % 2;
}
static Orb32s widthWithWholePair(Orb32s width) {
  return width + width % 2;
}

template <class Destination>
static OrbStatus convertFrom422(const ConstYccPlanes& src, const Destination& dst,
                                OrbiSize roiSize) {
  const OrbStatus status = checkPairs(src, dst, roiSize);
  if (status != orbStsNoErr) return status;
  const OrbiSize pairs = {widthWithoutHalfPair(roiSize.width), roiSize.height};
  convertImage<InverseB>(SharedChromaImage<1>{src}, dst, pairs);
  return evenWidthStatus(roiSize);
}

template <class Destination>
static OrbStatus convertFrom420(const ConstYccPlanes& src, const Destination& dst, OrbiSize roiSize,
                                Orb32s (*widthOfPairs)(Orb32s width)) {
  const OrbStatus status = checkPairs(src, dst, roiSize);
  if (status != orbStsNoErr) return status;
  const OrbiSize groups = {widthOfPairs(roiSize.width), roiSize.height - roiSize.height % 2};
  convertImage<InverseB>(SharedChromaImage<2>{src}, dst, groups);
  return evenSizeStatus(roiSize);
}

// ---- RGB to YCbCr

OrbStatus ORB_CALL orbiRGBToYCbCr_JPEG_8u_P3R(const Orb8u* const pSrc[3], Orb32s srcStep,
                                              Orb8u* const pDst[3], Orb32s dstStep,
                                              OrbiSize roiSize) {
  return convertPixels<ForwardA>(planes<Rgb, 3>(pSrc, srcStep), yccPlanes(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiRGBToYCbCr_JPEG_8u_C3P3R(const Orb8u* pSrc, Orb32s srcStep,
                                                Orb8u* const pDst[3], Orb32s dstStep,
                                                OrbiSize roiSize) {
  return convertPixels<ForwardA>(rgb<3>(pSrc, srcStep), yccPlanes(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiBGRToYCbCr_JPEG_8u_C3P3R(const Orb8u* pSrc, Orb32s srcStep,
                                                Orb8u* const pDst[3], Orb32s dstStep,
                                                OrbiSize roiSize) {
  return convertPixels<ForwardA>(bgr<3>(pSrc, srcStep), yccPlanes(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiRGBToYCbCr_JPEG_8u_C4P3R(const Orb8u* pSrc, Orb32s srcStep,
                                                Orb8u* const pDst[3], Orb32s dstStep,
                                                OrbiSize roiSize) {
  return convertTwoOrMore<ForwardB>(rgb<4>(pSrc, srcStep), yccPlanes(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiBGRToYCbCr_JPEG_8u_C4P3R(const Orb8u* pSrc, Orb32s srcStep,
                                                Orb8u* const pDst[3], Orb32s dstStep,
                                                OrbiSize roiSize) {
  return convertTwoOrMore<ForwardB>(bgr<4>(pSrc, srcStep), yccPlanes(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiRGB555ToYCbCr_JPEG_16u8u_C3P3R(const Orb16u* pSrc, Orb32s srcStep,
                                                      Orb8u* const pDst[3], Orb32s dstStep,
                                                      OrbiSize roiSize) {
  return convertPixels<ForwardA>(packedRgb<5>(pSrc, srcStep), yccPlanes(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiBGR555ToYCbCr_JPEG_16u8u_C3P3R(const Orb16u* pSrc, Orb32s srcStep,
                                                      Orb8u* const pDst[3], Orb32s dstStep,
                                                      OrbiSize roiSize) {
  return convertPixels<ForwardA>(packedBgr<5>(pSrc, srcStep), yccPlanes(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiRGB565ToYCbCr_JPEG_16u8u_C3P3R(const Orb16u* pSrc, Orb32s srcStep,
                                                      Orb8u* const pDst[3], Orb32s dstStep,
                                                      OrbiSize roiSize) {
  return convertPixels<ForwardA>(packedRgb<6>(pSrc, srcStep), yccPlanes(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiBGR565ToYCbCr_JPEG_16u8u_C3P3R(const Orb16u* pSrc, Orb32s srcStep,
                                                      Orb8u* const pDst[3], Orb32s dstStep,
                                                      OrbiSize roiSize) {
  return convertPixels<ForwardA>(packedBgr<6>(pSrc, srcStep), yccPlanes(pDst, dstStep), roiSize);
}

// ---- RGB to Y

OrbStatus ORB_CALL orbiRGBToY_JPEG_8u_P3C1R(const Orb8u* const pSrc[3], Orb32s srcStep, Orb8u* pDst,
                                            Orb32s dstStep, OrbiSize roiSize) {
  return convertPixels<LumaForward>(planes<Rgb, 3>(pSrc, srcStep), LumaImage{pDst, dstStep},
                                    roiSize);
}

OrbStatus ORB_CALL orbiRGBToY_JPEG_8u_C3C1R(const Orb8u* pSrc, Orb32s srcStep, Orb8u* pDst,
                                            Orb32s dstStep, OrbiSize roiSize) {
  return convertPixels<LumaForward>(rgb<3>(pSrc, srcStep), LumaImage{pDst, dstStep}, roiSize);
}

OrbStatus ORB_CALL orbiBGRToY_JPEG_8u_C3C1R(const Orb8u* pSrc, Orb32s srcStep, Orb8u* pDst,
                                            Orb32s dstStep, OrbiSize roiSize) {
  return convertPixels<LumaForward>(bgr<3>(pSrc, srcStep), LumaImage{pDst, dstStep}, roiSize);
}

// ---- RGB to YCbCr, one chroma sample for two pixels of a row

OrbStatus ORB_CALL orbiRGBToYCbCr422_JPEG_8u_C3P3R(const Orb8u* pSrc, Orb32s srcStep,
                                                   Orb8u* const pDst[3], const Orb32s dstStep[3],
                                                   OrbiSize roiSize) {
  return convertTo422(rgb<3>(pSrc, srcStep), yccPlanes(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiBGRToYCbCr422_JPEG_8u_C3P3R(const Orb8u* pSrc, Orb32s srcStep,
                                                   Orb8u* const pDst[3], const Orb32s dstStep[3],
                                                   OrbiSize roiSize) {
  return convertTo422(bgr<3>(pSrc, srcStep), yccPlanes(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiRGBToYCbCr422_JPEG_8u_C4P3R(const Orb8u* pSrc, Orb32s srcStep,
                                                   Orb8u* const pDst[3], const Orb32s dstStep[3],
                                                   OrbiSize roiSize) {
  return convertTo422(rgb<4>(pSrc, srcStep), yccPlanes(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiBGRToYCbCr422_JPEG_8u_C4P3R(const Orb8u* pSrc, Orb32s srcStep,
                                                   Orb8u* const pDst[3], const Orb32s dstStep[3],
                                                   OrbiSize roiSize) {
  return convertTo422(bgr<4>(pSrc, srcStep), yccPlanes(pDst, dstStep), roiSize);
}

// ---- RGB to YCbCr, one chroma sample for two by two pixels

OrbStatus ORB_CALL orbiRGBToYCbCr411_JPEG_8u_C3P3R(const Orb8u* pSrc, Orb32s srcStep,
                                                   Orb8u* const pDst[3], const Orb32s dstStep[3],
                                                   OrbiSize roiSize) {
  return convertTo420(rgb<3>(pSrc, srcStep), yccPlanes(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiBGRToYCbCr411_JPEG_8u_C3P3R(const Orb8u* pSrc, Orb32s srcStep,
                                                   Orb8u* const pDst[3], const Orb32s dstStep[3],
                                                   OrbiSize roiSize) {
  return convertTo420(bgr<3>(pSrc, srcStep), yccPlanes(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiRGBToYCbCr411_JPEG_8u_C4P3R(const Orb8u* pSrc, Orb32s srcStep,
                                                   Orb8u* const pDst[3], const Orb32s dstStep[3],
                                                   OrbiSize roiSize) {
  return convertTo420(rgb<4>(pSrc, srcStep), yccPlanes(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiBGRToYCbCr411_JPEG_8u_C4P3R(const Orb8u* pSrc, Orb32s srcStep,
                                                   Orb8u* const pDst[3], const Orb32s dstStep[3],
                                                   OrbiSize roiSize) {
  return convertTo420(bgr<4>(pSrc, srcStep), yccPlanes(pDst, dstStep), roiSize);
}

// ---- YCbCr to RGB

OrbStatus ORB_CALL orbiYCbCrToRGB_JPEG_8u_P3R(const Orb8u* const pSrc[3], Orb32s srcStep,
                                              Orb8u* const pDst[3], Orb32s dstStep,
                                              OrbiSize roiSize) {
  return convertPixels<InverseA>(yccPlanes(pSrc, srcStep), planes<Rgb, 3>(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiYCbCrToRGB_JPEG_8u_P3C3R(const Orb8u* const pSrc[3], Orb32s srcStep,
                                                Orb8u* pDst, Orb32s dstStep, OrbiSize roiSize) {
  return convertPixels<InverseA>(yccPlanes(pSrc, srcStep), rgb<3>(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiYCbCrToBGR_JPEG_8u_P3C3R(const Orb8u* const pSrc[3], Orb32s srcStep,
                                                Orb8u* pDst, Orb32s dstStep, OrbiSize roiSize) {
  return convertPixels<InverseA>(yccPlanes(pSrc, srcStep), bgr<3>(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiYCbCrToRGB_JPEG_8u_P3C4R(const Orb8u* const pSrc[3], Orb32s srcStep,
                                                Orb8u* pDst, Orb32s dstStep, OrbiSize roiSize,
                                                Orb8u aval) {
  return convertTwoOrMore<InverseB>(yccPlanes(pSrc, srcStep), rgbAlpha(pDst, dstStep, aval),
                                    roiSize);
}

OrbStatus ORB_CALL orbiYCbCrToBGR_JPEG_8u_P3C4R(const Orb8u* const pSrc[3], Orb32s srcStep,
                                                Orb8u* pDst, Orb32s dstStep, OrbiSize roiSize,
                                                Orb8u aval) {
  return convertTwoOrMore<InverseB>(yccPlanes(pSrc, srcStep), bgrAlpha(pDst, dstStep, aval),
                                    roiSize);
}

OrbStatus ORB_CALL orbiYCbCrToRGB555_JPEG_8u16u_P3C3R(const Orb8u* const pSrc[3], Orb32s srcStep,
                                                      Orb16u* pDst, Orb32s dstStep,
                                                      OrbiSize roiSize) {
  return convertPixels<InverseA>(yccPlanes(pSrc, srcStep), packedRgb<5>(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiYCbCrToBGR555_JPEG_8u16u_P3C3R(const Orb8u* const pSrc[3], Orb32s srcStep,
                                                      Orb16u* pDst, Orb32s dstStep,
                                                      OrbiSize roiSize) {
  return convertPixels<InverseA>(yccPlanes(pSrc, srcStep), packedBgr<5>(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiYCbCrToRGB565_JPEG_8u16u_P3C3R(const Orb8u* const pSrc[3], Orb32s srcStep,
                                                      Orb16u* pDst, Orb32s dstStep,
                                                      OrbiSize roiSize) {
  return convertPixels<InverseA>(yccPlanes(pSrc, srcStep), packedRgb<6>(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiYCbCrToBGR565_JPEG_8u16u_P3C3R(const Orb8u* const pSrc[3], Orb32s srcStep,
                                                      Orb16u* pDst, Orb32s dstStep,
                                                      OrbiSize roiSize) {
  return convertPixels<InverseA>(yccPlanes(pSrc, srcStep), packedBgr<6>(pDst, dstStep), roiSize);
}

// ---- YCbCr to RGB, one chroma sample for two pixels of a row

OrbStatus ORB_CALL orbiYCbCr422ToRGB_JPEG_8u_P3C3R(const Orb8u* const pSrc[3],
                                                   const Orb32s srcStep[3], Orb8u* pDst,
                                                   Orb32s dstStep, OrbiSize roiSize) {
  return convertFrom422(yccPlanes(pSrc, srcStep), rgb<3>(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiYCbCr422ToBGR_JPEG_8u_P3C3R(const Orb8u* const pSrc[3],
                                                   const Orb32s srcStep[3], Orb8u* pDst,
                                                   Orb32s dstStep, OrbiSize roiSize) {
  return convertFrom422(yccPlanes(pSrc, srcStep), bgr<3>(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiYCbCr422ToRGB_JPEG_8u_P3C4R(const Orb8u* const pSrc[3],
                                                   const Orb32s srcStep[3], Orb8u* pDst,
                                                   Orb32s dstStep, OrbiSize roiSize, Orb8u aval) {
  return convertFrom422(yccPlanes(pSrc, srcStep), rgbAlpha(pDst, dstStep, aval), roiSize);
}

OrbStatus ORB_CALL orbiYCbCr422ToBGR_JPEG_8u_P3C4R(const Orb8u* const pSrc[3],
                                                   const Orb32s srcStep[3], Orb8u* pDst,
                                                   Orb32s dstStep, OrbiSize roiSize, Orb8u aval) {
  return convertFrom422(yccPlanes(pSrc, srcStep), bgrAlpha(pDst, dstStep, aval), roiSize);
}

OrbStatus ORB_CALL orbiYCbCr422ToRGB_JPEG_8u_C2C3R(const Orb8u* pSrc, Orb32s srcStep, Orb8u* pDst,
                                                   Orb32s dstStep, OrbiSize roiSize) {
  const YccPairsImage src = {pSrc, srcStep};
  const auto dst = rgb<3>(pDst, dstStep);
  const OrbStatus status = checkPairs(src, dst, roiSize, 2);
  if (status != orbStsNoErr) return status;
  const OrbiSize pairs = {widthWithWholePair(roiSize.width), roiSize.height};
  convertImage<InverseA>(src, dst, pairs);
  return orbStsNoErr;
}

// ---- YCbCr to RGB, one chroma sample for two by two pixels

OrbStatus ORB_CALL orbiYCbCr411ToRGB_JPEG_8u_P3C3R(const Orb8u* const pSrc[3],
                                                   const Orb32s srcStep[3], Orb8u* pDst,
                                                   Orb32s dstStep, OrbiSize roiSize) {
  return convertFrom420(yccPlanes(pSrc, srcStep), rgb<3>(pDst, dstStep), roiSize,
                        widthWithoutHalfPair);
}

OrbStatus ORB_CALL orbiYCbCr411ToBGR_JPEG_8u_P3C3R(const Orb8u* const pSrc[3],
                                                   const Orb32s srcStep[3], Orb8u* pDst,
                                                   Orb32s dstStep, OrbiSize roiSize) {
  return convertFrom420(yccPlanes(pSrc, srcStep), bgr<3>(pDst, dstStep), roiSize,
                        widthWithWholePair);
}

OrbStatus ORB_CALL orbiYCbCr411ToRGB_JPEG_8u_P3C4R(const Orb8u* const pSrc[3],
                                                   const Orb32s srcStep[3], Orb8u* pDst,
                                                   Orb32s dstStep, OrbiSize roiSize, Orb8u aval) {
  return convertFrom420(yccPlanes(pSrc, srcStep), rgbAlpha(pDst, dstStep, aval), roiSize,
                        widthWithWholePair);
}

OrbStatus ORB_CALL orbiYCbCr411ToBGR_JPEG_8u_P3C4R(const Orb8u* const pSrc[3],
                                                   const Orb32s srcStep[3], Orb8u* pDst,
                                                   Orb32s dstStep, OrbiSize roiSize, Orb8u aval) {
  return convertFrom420(yccPlanes(pSrc, srcStep), bgrAlpha(pDst, dstStep, aval), roiSize,
                        widthWithWholePair);
}

// ---- CMYK and YCCK

OrbStatus ORB_CALL orbiCMYKToYCCK_JPEG_8u_C4P4R(const Orb8u* pSrc, Orb32s srcStep,
                                                Orb8u* const pDst[4], Orb32s dstStep,
                                                OrbiSize roiSize) {
  return convertWithBlack<ComplementForward<ForwardA>>(rgb<4>(pSrc, srcStep),
                                                       planes<YCbCr, 4>(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiCMYKToYCCK_JPEG_8u_P4R(const Orb8u* const pSrc[4], Orb32s srcStep,
                                              Orb8u* const pDst[4], Orb32s dstStep,
                                              OrbiSize roiSize) {
  return convertWithBlack<ComplementForward<ForwardA>>(planes<Rgb, 4>(pSrc, srcStep),
                                                       planes<YCbCr, 4>(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiYCCKToCMYK_JPEG_8u_P4C4R(const Orb8u* const pSrc[4], Orb32s srcStep,
                                                Orb8u* pDst, Orb32s dstStep, OrbiSize roiSize) {
  return convertWithBlack<ComplementInverse<InverseA>>(planes<YCbCr, 4>(pSrc, srcStep),
                                                       rgb<4>(pDst, dstStep), roiSize);
}

OrbStatus ORB_CALL orbiYCCKToCMYK_JPEG_8u_P4R(const Orb8u* const pSrc[4], Orb32s srcStep,
                                              Orb8u* const pDst[4], Orb32s dstStep,
                                              OrbiSize roiSize) {
  return convertWithBlack<ComplementInverse<InverseA>>(planes<YCbCr, 4>(pSrc, srcStep),
                                                       planes<Rgb, 4>(pDst, dstStep), roiSize);
}

}  // namespace orb::ORB_BUILD
