// Wavelet lifting of rows and columns: argument checks, then one call into a kernel for each row,
// or one for all columns.
#include "jpeg2k/px/wavelet_lifting.h"

namespace orb::ORB_BUILD {

using kernel::Floating;
using kernel::LinePair;
using kernel::Reversible;
using kernel::Saturating;
using kernel::SaturatingRow;
using kernel::Wrapping;
using kernel::WrappingRow;

// The arithmetic of columns and of a band of one sample, and that of rows.
struct Arithmetic16s {
  using Column = Saturating;
  using Row = SaturatingRow;
};
struct Arithmetic32s {
  using Column = Wrapping;
  using Row = WrappingRow;
};
struct Arithmetic32f {
  using Column = Floating<Orb32f>;
  using Row = Column;
};

template <class T>
static OrbStatus checkPlanes(const T* plane0, Orb32s step0, const T* plane1, Orb32s step1,
                             const T* plane2, Orb32s step2, OrbiSize size) {
  if (!plane0 || !plane1 || !plane2) return orbStsNullPtrErr;
  if (step0 < 1 || step1 < 1 || step2 < 1) return orbStsStepErr;
  if (size.height < 1 || size.width < 1) return orbStsSizeErr;
  return orbStsNoErr;
}

template <class T>
static LinePair<T> bandRows(T* low, Orb32s lowStep, T* high, Orb32s highStep, ptrdiff_t y) {
  return {{rowAt(low, lowStep, y), sizeof(T)}, {rowAt(high, highStep, y), sizeof(T)}};
}

template <class T>
static LinePair<T> imageRow(T* image, Orb32s step, ptrdiff_t y, Orb32u phase) {
  return kernel::alternating(rowAt(image, step, y), sizeof(T), phase != 0);
}

// ---- Rows

template <class T>
static OrbStatus forwardRow53(const T* pSrc, Orb32s srcStep, T* pDstLow, Orb32s dstLowStep,
                              T* pDstHigh, Orb32s dstHighStep, OrbiSize size, Orb32u phase) {
  const OrbStatus status =
      checkPlanes<T>(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, size);
  if (status != orbStsNoErr) return status;
  for (ptrdiff_t y = 0; y < size.height; ++y) {
    kernel::orbTransformRow<kernel::Forward53<Reversible<T>>>(
        imageRow(pSrc, srcStep, y, phase), bandRows(pDstLow, dstLowStep, pDstHigh, dstHighStep, y),
        size.width, phase != 0);
  }
  return orbStsNoErr;
}

template <class T>
static OrbStatus inverseRow53(const T* pSrcLow, Orb32s srcLowStep, const T* pSrcHigh,
                              Orb32s srcHighStep, OrbiSize size, T* pDst, Orb32s dstStep,
                              Orb32u phase) {
  const OrbStatus status =
      checkPlanes<T>(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, pDst, dstStep, size);
  if (status != orbStsNoErr) return status;
  for (ptrdiff_t y = 0; y < size.height; ++y) {
    kernel::orbTransformRow<kernel::Inverse53<Reversible<T>>>(
        bandRows(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, y), imageRow(pDst, dstStep, y, phase),
        size.width, phase != 0);
  }
  return orbStsNoErr;
}

template <class A, class T>
static OrbStatus forwardRow97(const T* pSrc, Orb32s srcStep, T* pDstLow, Orb32s dstLowStep,
                              T* pDstHigh, Orb32s dstHighStep, OrbiSize size, Orb32u phase) {
  const OrbStatus status =
      checkPlanes<T>(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, size);
  if (status != orbStsNoErr) return status;
  for (ptrdiff_t y = 0; y < size.height; ++y) {
    const auto from = imageRow(pSrc, srcStep, y, phase);
    const auto to = bandRows(pDstLow, dstLowStep, pDstHigh, dstHighStep, y);
    if (size.width == 1) {
      kernel::orbFilterForward<typename A::Column>(from, to, phase != 0);
    } else {
      kernel::orbTransformRow<kernel::Forward97<typename A::Row>>(from, to, size.width, phase != 0);
    }
  }
  return orbStsNoErr;
}

template <class A, class T>
static OrbStatus inverseRow97(const T* pSrcLow, Orb32s srcLowStep, const T* pSrcHigh,
                              Orb32s srcHighStep, OrbiSize size, T* pDst, Orb32s dstStep,
                              Orb32u phase) {
  const OrbStatus status =
      checkPlanes<T>(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, pDst, dstStep, size);
  if (status != orbStsNoErr) return status;
  for (ptrdiff_t y = 0; y < size.height; ++y) {
    const auto from = bandRows(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, y);
    const auto to = imageRow(pDst, dstStep, y, phase);
    if (size.width == 1) {
      kernel::orbFilterInverse<typename A::Column>(from, to, phase != 0);
    } else {
      kernel::orbTransformRow<kernel::Inverse97<typename A::Row>>(from, to, size.width, phase != 0);
    }
  }
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiWTFwdRow_B53_JPEG2K_16s_C1R(const Orb16s* pSrc, Orb32s srcStep,
                                                   Orb16s* pDstLow, Orb32s dstLowStep,
                                                   Orb16s* pDstHigh, Orb32s dstHighStep,
                                                   OrbiSize dstRoiSize, Orb32u phase) {
  return forwardRow53(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstRoiSize, phase);
}

OrbStatus ORB_CALL orbiWTFwdRow_B53_JPEG2K_32s_C1R(const Orb32s* pSrc, Orb32s srcStep,
                                                   Orb32s* pDstLow, Orb32s dstLowStep,
                                                   Orb32s* pDstHigh, Orb32s dstHighStep,
                                                   OrbiSize dstRoiSize, Orb32u phase) {
  return forwardRow53(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstRoiSize, phase);
}

OrbStatus ORB_CALL orbiWTInvRow_B53_JPEG2K_16s_C1R(const Orb16s* pSrcLow, Orb32s srcLowStep,
                                                   const Orb16s* pSrcHigh, Orb32s srcHighStep,
                                                   OrbiSize srcRoiSize, Orb16s* pDst,
                                                   Orb32s dstStep, Orb32u phase) {
  return inverseRow53(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoiSize, pDst, dstStep, phase);
}

OrbStatus ORB_CALL orbiWTInvRow_B53_JPEG2K_32s_C1R(const Orb32s* pSrcLow, Orb32s srcLowStep,
                                                   const Orb32s* pSrcHigh, Orb32s srcHighStep,
                                                   OrbiSize srcRoiSize, Orb32s* pDst,
                                                   Orb32s dstStep, Orb32u phase) {
  return inverseRow53(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoiSize, pDst, dstStep, phase);
}

OrbStatus ORB_CALL orbiWTFwdRow_D97_JPEG2K_16s_C1R(const Orb16s* pSrc, Orb32s srcStep,
                                                   Orb16s* pDstLow, Orb32s dstLowStep,
                                                   Orb16s* pDstHigh, Orb32s dstHighStep,
                                                   OrbiSize dstRoiSize, Orb32u phase) {
  return forwardRow97<Arithmetic16s>(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep,
                                     dstRoiSize, phase);
}

OrbStatus ORB_CALL orbiWTFwdRow_D97_JPEG2K_32s_C1R(const Orb32s* pSrc, Orb32s srcStep,
                                                   Orb32s* pDstLow, Orb32s dstLowStep,
                                                   Orb32s* pDstHigh, Orb32s dstHighStep,
                                                   OrbiSize dstRoiSize, Orb32u phase) {
  return forwardRow97<Arithmetic32s>(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep,
                                     dstRoiSize, phase);
}

OrbStatus ORB_CALL orbiWTFwdRow_D97_JPEG2K_32f_C1R(const Orb32f* pSrc, Orb32s srcStep,
                                                   Orb32f* pDstLow, Orb32s dstLowStep,
                                                   Orb32f* pDstHigh, Orb32s dstHighStep,
                                                   OrbiSize dstRoiSize, Orb32u phase) {
  return forwardRow97<Arithmetic32f>(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep,
                                     dstRoiSize, phase);
}

OrbStatus ORB_CALL orbiWTInvRow_D97_JPEG2K_16s_C1R(const Orb16s* pSrcLow, Orb32s srcLowStep,
                                                   const Orb16s* pSrcHigh, Orb32s srcHighStep,
                                                   OrbiSize srcRoiSize, Orb16s* pDst,
                                                   Orb32s dstStep, Orb32u phase) {
  return inverseRow97<Arithmetic16s>(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoiSize, pDst,
                                     dstStep, phase);
}

OrbStatus ORB_CALL orbiWTInvRow_D97_JPEG2K_32s_C1R(const Orb32s* pSrcLow, Orb32s srcLowStep,
                                                   const Orb32s* pSrcHigh, Orb32s srcHighStep,
                                                   OrbiSize srcRoiSize, Orb32s* pDst,
                                                   Orb32s dstStep, Orb32u phase) {
  return inverseRow97<Arithmetic32s>(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoiSize, pDst,
                                     dstStep, phase);
}

OrbStatus ORB_CALL orbiWTInvRow_D97_JPEG2K_32f_C1R(const Orb32f* pSrcLow, Orb32s srcLowStep,
                                                   const Orb32f* pSrcHigh, Orb32s srcHighStep,
                                                   OrbiSize srcRoiSize, Orb32f* pDst,
                                                   Orb32s dstStep, Orb32u phase) {
  return inverseRow97<Arithmetic32f>(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoiSize, pDst,
                                     dstStep, phase);
}

// ---- Columns

template <class Wavelet, class T>
static OrbStatus forwardColumns(const T* pSrc, Orb32s srcStep, T* pDstLow, Orb32s dstLowStep,
                                T* pDstHigh, Orb32s dstHighStep, OrbiSize size, Orb32u phase) {
  const OrbStatus status =
      checkPlanes<T>(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, size);
  if (status != orbStsNoErr) return status;
  kernel::orbTransformColumns<Wavelet>(kernel::alternating(pSrc, srcStep, phase != 0),
                                       LinePair<T>{{pDstLow, dstLowStep}, {pDstHigh, dstHighStep}},
                                       size, phase != 0);
  return orbStsNoErr;
}

template <class Wavelet, class T>
static OrbStatus inverseColumns(const T* pSrcLow, Orb32s srcLowStep, const T* pSrcHigh,
                                Orb32s srcHighStep, OrbiSize size, T* pDst, Orb32s dstStep,
                                Orb32u phase) {
  const OrbStatus status =
      checkPlanes<T>(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, pDst, dstStep, size);
  if (status != orbStsNoErr) return status;
  kernel::orbTransformColumns<Wavelet>(
      LinePair<const T>{{pSrcLow, srcLowStep}, {pSrcHigh, srcHighStep}},
      kernel::alternating(pDst, dstStep, phase != 0), size, phase != 0);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiWTFwdCol_B53_JPEG2K_16s_C1R(const Orb16s* pSrc, Orb32s srcStep,
                                                   Orb16s* pDstLow, Orb32s dstLowStep,
                                                   Orb16s* pDstHigh, Orb32s dstHighStep,
                                                   OrbiSize dstRoiSize, Orb32u phase) {
  return forwardColumns<kernel::Forward53<Reversible<Orb16s>>>(
      pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstRoiSize, phase);
}

OrbStatus ORB_CALL orbiWTFwdCol_B53_JPEG2K_32s_C1R(const Orb32s* pSrc, Orb32s srcStep,
                                                   Orb32s* pDstLow, Orb32s dstLowStep,
                                                   Orb32s* pDstHigh, Orb32s dstHighStep,
                                                   OrbiSize dstRoiSize, Orb32u phase) {
  return forwardColumns<kernel::Forward53<Reversible<Orb32s>>>(
      pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstRoiSize, phase);
}

OrbStatus ORB_CALL orbiWTInvCol_B53_JPEG2K_16s_C1R(const Orb16s* pSrcLow, Orb32s srcLowStep,
                                                   const Orb16s* pSrcHigh, Orb32s srcHighStep,
                                                   OrbiSize srcRoiSize, Orb16s* pDst,
                                                   Orb32s dstStep, Orb32u phase) {
  return inverseColumns<kernel::Inverse53<Reversible<Orb16s>>>(
      pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoiSize, pDst, dstStep, phase);
}

OrbStatus ORB_CALL orbiWTInvCol_B53_JPEG2K_32s_C1R(const Orb32s* pSrcLow, Orb32s srcLowStep,
                                                   const Orb32s* pSrcHigh, Orb32s srcHighStep,
                                                   OrbiSize srcRoiSize, Orb32s* pDst,
                                                   Orb32s dstStep, Orb32u phase) {
  return inverseColumns<kernel::Inverse53<Reversible<Orb32s>>>(
      pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoiSize, pDst, dstStep, phase);
}

OrbStatus ORB_CALL orbiWTFwdCol_D97_JPEG2K_32f_C1R(const Orb32f* pSrc, Orb32s srcStep,
                                                   Orb32f* pDstLow, Orb32s dstLowStep,
                                                   Orb32f* pDstHigh, Orb32s dstHighStep,
                                                   OrbiSize dstRoiSize, Orb32u phase) {
  if (dstRoiSize.height != 1) {
    return forwardColumns<kernel::Forward97<Floating<Orb32f>>>(
        pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstRoiSize, phase);
  }
  const OrbStatus status =
      checkPlanes<Orb32f>(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstRoiSize);
  if (status != orbStsNoErr) return status;
  const auto from = kernel::alternating(pSrc, srcStep, phase != 0);
  const LinePair<Orb32f> to = {{pDstLow, dstLowStep}, {pDstHigh, dstHighStep}};
  for (ptrdiff_t x = 0; x < dstRoiSize.width; ++x) {
    kernel::orbFilterForward<Floating<Orb32f>>(from.movedBy(x), to.movedBy(x), phase != 0);
  }
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiWTInvCol_D97_JPEG2K_32f_C1R(const Orb32f* pSrcLow, Orb32s srcLowStep,
                                                   const Orb32f* pSrcHigh, Orb32s srcHighStep,
                                                   OrbiSize srcRoiSize, Orb32f* pDst,
                                                   Orb32s dstStep, Orb32u phase) {
  if (srcRoiSize.height != 1) {
    return inverseColumns<kernel::Inverse97<Floating<Orb32f>>>(
        pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoiSize, pDst, dstStep, phase);
  }
  const OrbStatus status =
      checkPlanes<Orb32f>(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, pDst, dstStep, srcRoiSize);
  if (status != orbStsNoErr) return status;
  const LinePair<const Orb32f> from = {{pSrcLow, srcLowStep}, {pSrcHigh, srcHighStep}};
  const auto to = kernel::alternating(pDst, dstStep, phase != 0);
  for (ptrdiff_t x = 0; x < srcRoiSize.width; ++x) {
    kernel::orbFilterInverse<Floating<Orb32f>>(from.movedBy(x), to.movedBy(x), phase != 0);
  }
  return orbStsNoErr;
}

// ---- Stages of columns

template <class T>
static OrbStatus forwardLift53(const T* pSrc0, const T* pSrc1, const T* pSrc2, T* pDstLow,
                               const T* pSrcHigh, T* pDstHigh, Orb32s width) {
  if (!pSrc0 || !pSrc1 || !pSrc2 || !pDstLow || !pSrcHigh || !pDstHigh) {
    return orbStsNullPtrErr;
  }
  if (width < 1) return orbStsSizeErr;
  kernel::orbForwardLift53(pSrc0, pSrc1, pSrc2, pDstLow, pSrcHigh, pDstHigh, width);
  return orbStsNoErr;
}

template <class T>
static OrbStatus inverseLift53(const T* pSrcLow, const T* pSrcHigh0, const T* pSrcHigh1,
                               const T* pSrcEven, T* pDstOdd, T* pDstEven, Orb32s width) {
  if (!pSrcLow || !pSrcHigh0 || !pSrcHigh1 || !pSrcEven || !pDstOdd || !pDstEven) {
    return orbStsNullPtrErr;
  }
  if (width < 1) return orbStsSizeErr;
  kernel::orbInverseLift53(pSrcLow, pSrcHigh0, pSrcHigh1, pSrcEven, pDstOdd, pDstEven, width);
  return orbStsNoErr;
}

template <class A, class T>
static OrbStatus forwardLift97(const T* pSrc0, const T* pSrc1, const T* pSrc2, T* pLift3,
                               T* pLift2New, T* pLift4, T* pLift1, T* pLift1New, Orb32s width) {
  if (!pSrc0 || !pSrc1 || !pSrc2 || !pLift3 || !pLift2New || !pLift4 || !pLift1 || !pLift1New) {
    return orbStsNullPtrErr;
  }
  if (width < 1) return orbStsSizeErr;
  kernel::orbForwardLift97<typename A::Column>(pSrc0, pSrc1, pSrc2, pLift3, pLift2New, pLift4,
                                               pLift1, pLift1New, width);
  return orbStsNoErr;
}

template <class A, class T>
static OrbStatus inverseLift97(const T* pSrcLow, const T* pSrcHigh0, const T* pSrcHigh1,
                               const T* pLift0, T* pLift1, T* pLift2, T* pLift3New, T* pLift4New,
                               Orb32s width) {
  if (!pSrcLow || !pSrcHigh0 || !pSrcHigh1 || !pLift0 || !pLift1 || !pLift2 || !pLift3New ||
      !pLift4New) {
    return orbStsNullPtrErr;
  }
  if (width < 1) return orbStsSizeErr;
  kernel::orbInverseLift97<typename A::Column>(pSrcLow, pSrcHigh0, pSrcHigh1, pLift0, pLift1,
                                               pLift2, pLift3New, pLift4New, width);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiWTFwdColLift_B53_JPEG2K_16s_C1(const Orb16s* pSrc0, const Orb16s* pSrc1,
                                                      const Orb16s* pSrc2, Orb16s* pDstLow,
                                                      const Orb16s* pSrcHigh, Orb16s* pDstHigh,
                                                      Orb32s width) {
  return forwardLift53(pSrc0, pSrc1, pSrc2, pDstLow, pSrcHigh, pDstHigh, width);
}

OrbStatus ORB_CALL orbiWTFwdColLift_B53_JPEG2K_32s_C1(const Orb32s* pSrc0, const Orb32s* pSrc1,
                                                      const Orb32s* pSrc2, Orb32s* pDstLow,
                                                      const Orb32s* pSrcHigh, Orb32s* pDstHigh,
                                                      Orb32s width) {
  return forwardLift53(pSrc0, pSrc1, pSrc2, pDstLow, pSrcHigh, pDstHigh, width);
}

OrbStatus ORB_CALL orbiWTInvColLift_B53_JPEG2K_16s_C1(const Orb16s* pSrcLow,
                                                      const Orb16s* pSrcHigh0,
                                                      const Orb16s* pSrcHigh1,
                                                      const Orb16s* pSrcEven, Orb16s* pDstOdd,
                                                      Orb16s* pDstEven, Orb32s width) {
  return inverseLift53(pSrcLow, pSrcHigh0, pSrcHigh1, pSrcEven, pDstOdd, pDstEven, width);
}

OrbStatus ORB_CALL orbiWTInvColLift_B53_JPEG2K_32s_C1(const Orb32s* pSrcLow,
                                                      const Orb32s* pSrcHigh0,
                                                      const Orb32s* pSrcHigh1,
                                                      const Orb32s* pSrcEven, Orb32s* pDstOdd,
                                                      Orb32s* pDstEven, Orb32s width) {
  return inverseLift53(pSrcLow, pSrcHigh0, pSrcHigh1, pSrcEven, pDstOdd, pDstEven, width);
}

OrbStatus ORB_CALL orbiWTFwdColLift_D97_JPEG2K_16s_C1(const Orb16s* pSrc0, const Orb16s* pSrc1,
                                                      const Orb16s* pSrc2, Orb16s* pLift3,
                                                      Orb16s* pLift2New, Orb16s* pLift4,
                                                      Orb16s* pLift1, Orb16s* pLift1New,
                                                      Orb32s width) {
  return forwardLift97<Arithmetic16s>(pSrc0, pSrc1, pSrc2, pLift3, pLift2New, pLift4, pLift1,
                                      pLift1New, width);
}

OrbStatus ORB_CALL orbiWTFwdColLift_D97_JPEG2K_32s_C1(const Orb32s* pSrc0, const Orb32s* pSrc1,
                                                      const Orb32s* pSrc2, Orb32s* pLift3,
                                                      Orb32s* pLift2New, Orb32s* pLift4,
                                                      Orb32s* pLift1, Orb32s* pLift1New,
                                                      Orb32s width) {
  return forwardLift97<Arithmetic32s>(pSrc0, pSrc1, pSrc2, pLift3, pLift2New, pLift4, pLift1,
                                      pLift1New, width);
}

OrbStatus ORB_CALL orbiWTFwdColLift_D97_JPEG2K_32f_C1(const Orb32f* pSrc0, const Orb32f* pSrc1,
                                                      const Orb32f* pSrc2, Orb32f* pLift3,
                                                      Orb32f* pLift2New, Orb32f* pLift4,
                                                      Orb32f* pLift1, Orb32f* pLift1New,
                                                      Orb32s width) {
  return forwardLift97<Arithmetic32f>(pSrc0, pSrc1, pSrc2, pLift3, pLift2New, pLift4, pLift1,
                                      pLift1New, width);
}

OrbStatus ORB_CALL orbiWTInvColLift_D97_JPEG2K_16s_C1(
    const Orb16s* pSrcLow, const Orb16s* pSrcHigh0, const Orb16s* pSrcHigh1, const Orb16s* pLift0,
    Orb16s* pLift1, Orb16s* pLift2, Orb16s* pLift3New, Orb16s* pLift4New, Orb32s width) {
  return inverseLift97<Arithmetic16s>(pSrcLow, pSrcHigh0, pSrcHigh1, pLift0, pLift1, pLift2,
                                      pLift3New, pLift4New, width);
}

OrbStatus ORB_CALL orbiWTInvColLift_D97_JPEG2K_32s_C1(
    const Orb32s* pSrcLow, const Orb32s* pSrcHigh0, const Orb32s* pSrcHigh1, const Orb32s* pLift0,
    Orb32s* pLift1, Orb32s* pLift2, Orb32s* pLift3New, Orb32s* pLift4New, Orb32s width) {
  return inverseLift97<Arithmetic32s>(pSrcLow, pSrcHigh0, pSrcHigh1, pLift0, pLift1, pLift2,
                                      pLift3New, pLift4New, width);
}

OrbStatus ORB_CALL orbiWTInvColLift_D97_JPEG2K_32f_C1(
    const Orb32f* pSrcLow, const Orb32f* pSrcHigh0, const Orb32f* pSrcHigh1, const Orb32f* pLift0,
    Orb32f* pLift1, Orb32f* pLift2, Orb32f* pLift3New, Orb32f* pLift4New, Orb32s width) {
  return inverseLift97<Arithmetic32f>(pSrcLow, pSrcHigh0, pSrcHigh1, pLift0, pLift1, pLift2,
                                      pLift3New, pLift4New, width);
}

}  // namespace orb::ORB_BUILD
