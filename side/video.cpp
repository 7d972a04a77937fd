// Video colour: argument checks, then one call into a kernel for each row or each two.
#include "side/px/video.h"

#if ORB_SIMD
#include "side/simd/video.h"
#endif

namespace orb::ORB_BUILD {

// ---- The planes of arguments

template <class Byte>
struct PlaneSet {
  Byte* plane[3];
  Orb32s step[3];

  PlaneSet(Byte* const* first, const Orb32s* steps) : plane{}, step{} {
    if (!first || !steps) return;
    for (int i = 0; i < 3; ++i) {
      plane[i] = load(first + i);
      step[i] = load(steps + i);
    }
  }
  bool anyNull() const { return !plane[0] || !plane[1] || !plane[2]; }
  Byte* row(int i, ptrdiff_t y) const { return rowAt(plane[i], step[i], y); }
};

static bool isBelow(OrbiSize size, Orb32s width, Orb32s height) {
  return size.width < width || size.height < height;
}

// ---- To planes

template <int kGreenBits, int kRows>
static OrbStatus toPlanes(const Orb16u* pSrc, Orb32s srcStep, Orb8u* const* pDst,
                          const Orb32s* dstStep, OrbiSize roiSize, int cbPlane) {
  const PlaneSet<Orb8u> dst(pDst, dstStep);
  if (!pSrc || dst.anyNull()) return orbStsNullPtrErr;
  if (isBelow(roiSize, 2, kRows)) return orbStsSizeErr;
  const int crPlane = 3 - cbPlane;
  const Orb32s groups = roiSize.height / kRows;
  for (Orb32s group = 0; group < groups; ++group) {
    const ptrdiff_t y = ptrdiff_t{group} * kRows;
    const VideoPlanes planes = {dst.row(0, y), dst.step[0], dst.row(cbPlane, group),
                                dst.row(crPlane, group)};
    kernel::orbVideoToPlanes<kGreenBits, kRows>(rowAt(pSrc, srcStep, y), srcStep, planes,
                                                roiSize.width);
  }
  for (Orb32s y = groups * kRows; y < roiSize.height; ++y) {
    kernel::orbVideoLumaRow<kGreenBits>(rowAt(pSrc, srcStep, y), dst.row(0, y), roiSize.width);
  }
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiBGR555ToYCbCr420_16u8u_C3P3R(const Orb16u* pSrc, Orb32s srcStep,
                                                    Orb8u* const pDst[3], const Orb32s dstStep[3],
                                                    OrbiSize roiSize) {
  return toPlanes<5, 2>(pSrc, srcStep, pDst, dstStep, roiSize, 1);
}
OrbStatus ORB_CALL orbiBGR565ToYCbCr420_16u8u_C3P3R(const Orb16u* pSrc, Orb32s srcStep,
                                                    Orb8u* const pDst[3], const Orb32s dstStep[3],
                                                    OrbiSize roiSize) {
  return toPlanes<6, 2>(pSrc, srcStep, pDst, dstStep, roiSize, 1);
}
OrbStatus ORB_CALL orbiBGR555ToYCrCb420_16u8u_C3P3R(const Orb16u* pSrc, Orb32s srcStep,
                                                    Orb8u* const pDst[3], const Orb32s dstStep[3],
                                                    OrbiSize roiSize) {
  return toPlanes<5, 2>(pSrc, srcStep, pDst, dstStep, roiSize, 2);
}
OrbStatus ORB_CALL orbiBGR565ToYCrCb420_16u8u_C3P3R(const Orb16u* pSrc, Orb32s srcStep,
                                                    Orb8u* const pDst[3], const Orb32s dstStep[3],
                                                    OrbiSize roiSize) {
  return toPlanes<6, 2>(pSrc, srcStep, pDst, dstStep, roiSize, 2);
}
OrbStatus ORB_CALL orbiBGR555ToYCbCr422_16u8u_C3P3R(const Orb16u* pSrc, Orb32s srcStep,
                                                    Orb8u* const pDst[3], const Orb32s dstStep[3],
                                                    OrbiSize roiSize) {
  return toPlanes<5, 1>(pSrc, srcStep, pDst, dstStep, roiSize, 1);
}
OrbStatus ORB_CALL orbiBGR565ToYCbCr422_16u8u_C3P3R(const Orb16u* pSrc, Orb32s srcStep,
                                                    Orb8u* const pDst[3], const Orb32s dstStep[3],
                                                    OrbiSize roiSize) {
  return toPlanes<6, 1>(pSrc, srcStep, pDst, dstStep, roiSize, 1);
}

// ---- Rows to rows

template <class Source, class Destination, class Convert>
static OrbStatus convertRows(const Source* pSrc, Orb32s srcStep, Destination* pDst, Orb32s dstStep,
                             OrbiSize roiSize, Orb32s leastWidth, Convert convert) {
  if (!pSrc || !pDst) return orbStsNullPtrErr;
  if (isBelow(roiSize, leastWidth, 1)) return orbStsSizeErr;
  for (Orb32s y = 0; y < roiSize.height; ++y) {
    convert(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), roiSize.width);
  }
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiBGR555ToYCbCr422_16u8u_C3C2R(const Orb16u* pSrc, Orb32s srcStep, Orb8u* pDst,
                                                    Orb32s dstStep, OrbiSize roiSize) {
  return convertRows(pSrc, srcStep, pDst, dstStep, roiSize, 2, kernel::orbVideoToPairs<5>);
}
OrbStatus ORB_CALL orbiBGR565ToYCbCr422_16u8u_C3C2R(const Orb16u* pSrc, Orb32s srcStep, Orb8u* pDst,
                                                    Orb32s dstStep, OrbiSize roiSize) {
  return convertRows(pSrc, srcStep, pDst, dstStep, roiSize, 2, kernel::orbVideoToPairs<6>);
}

// The lowest bit of a step of words does not count here.
OrbStatus ORB_CALL orbiBGR565ToBGR_16u8u_C3R(const Orb16u* pSrc, Orb32s srcStep, Orb8u* pDst,
                                             Orb32s dstStep, OrbiSize roiSize) {
  return convertRows(pSrc, srcStep & ~1, pDst, dstStep, roiSize, 1, kernel::orbVideoWordsToBytes);
}
OrbStatus ORB_CALL orbiBGRToBGR565_8u16u_C3R(const Orb8u* pSrc, Orb32s srcStep, Orb16u* pDst,
                                             Orb32s dstStep, OrbiSize roiSize) {
  return convertRows(pSrc, srcStep, pDst, dstStep & ~1, roiSize, 1, kernel::orbVideoBytesToWords);
}

// ---- From YCbCr

template <int kGreenBits>
static OrbStatus ofPlanes(const Orb8u* const* pSrc, const Orb32s* srcStep, Orb16u* pDst,
                          Orb32s dstStep, OrbiSize roiSize) {
  if (!pSrc || !srcStep || !pDst) return orbStsNullPtrErr;
  if (isBelow(roiSize, 1, 1)) return orbStsSizeErr;
  const PlaneSet<const Orb8u> src(pSrc, srcStep);
  if (src.anyNull()) return orbStsNullPtrErr;
  for (Orb32s y = 0; y < roiSize.height; ++y) {
    kernel::orbVideoOfPlanes<kGreenBits>({src.row(0, y), src.row(1, y >> 1), src.row(2, y >> 1)},
                                         rowAt(pDst, dstStep, y), roiSize.width);
  }
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiYCbCr420ToBGR555_8u16u_P3C3R(const Orb8u* const pSrc[3],
                                                    const Orb32s srcStep[3], Orb16u* pDst,
                                                    Orb32s dstStep, OrbiSize roiSize) {
  return ofPlanes<5>(pSrc, srcStep, pDst, dstStep, roiSize);
}
OrbStatus ORB_CALL orbiYCbCr420ToBGR565_8u16u_P3C3R(const Orb8u* const pSrc[3],
                                                    const Orb32s srcStep[3], Orb16u* pDst,
                                                    Orb32s dstStep, OrbiSize roiSize) {
  return ofPlanes<6>(pSrc, srcStep, pDst, dstStep, roiSize);
}

template <int kGreenBits>
static OrbStatus ofPairs(const Orb8u* pSrc, Orb32s srcStep, Orb16u* pDst, Orb32s dstStep,
                         OrbiSize roiSize) {
  if (roiSize.width != 1) {
    return convertRows(pSrc, srcStep, pDst, dstStep, roiSize, 1,
                       kernel::orbVideoOfPairs<kGreenBits>);
  }
  const auto single = [](const Orb8u* src, Orb8u* dst, ptrdiff_t) {
    kernel::orbVideoOfSingle(src, dst);
  };
  return convertRows(pSrc, srcStep, reinterpret_cast<Orb8u*>(pDst), dstStep >> 1, roiSize, 1,
                     single);
}

OrbStatus ORB_CALL orbiYCbCr422ToBGR555_8u16u_C2C3R(const Orb8u* pSrc, Orb32s srcStep, Orb16u* pDst,
                                                    Orb32s dstStep, OrbiSize roiSize) {
  return ofPairs<5>(pSrc, srcStep, pDst, dstStep, roiSize);
}
OrbStatus ORB_CALL orbiYCbCr422ToBGR565_8u16u_C2C3R(const Orb8u* pSrc, Orb32s srcStep, Orb16u* pDst,
                                                    Orb32s dstStep, OrbiSize roiSize) {
  return ofPairs<6>(pSrc, srcStep, pDst, dstStep, roiSize);
}

}  // namespace orb::ORB_BUILD
