// Lossless prediction: argument checks, then one call into a kernel.
#include "jpeg/px/lossless.h"

namespace orb::ORB_BUILD {

static OrbStatus checkFirstRow(const Orb16s* pSrc, const Orb16s* pDst, Orb32s width, Orb32s P,
                               Orb32s Pt) {
  if (!pSrc || !pDst) return orbStsNullPtrErr;
  if (width < 1) return orbStsSizeErr;
  if (P < 2 || P > 16 || Pt < 0) return orbStsBadArgErr;
  return orbStsNoErr;
}

static OrbStatus checkRow(const Orb16s* pSrc, const Orb16s* pPrevRow, const Orb16s* pDst,
                          Orb32s width, Orb32s predictor) {
  if (!pSrc || !pPrevRow || !pDst) return orbStsNullPtrErr;
  if (width < 1) return orbStsSizeErr;
  if (predictor < 1 || predictor > 7) return orbStsBadArgErr;
  return orbStsNoErr;
}

// Half of the range of a sample. A point transform of P or more makes the count negative.
static Orb32s middleOfRange(Orb32s P, Orb32s Pt) {
  return static_cast<Orb32s>(1u << ((P - Pt - 1) & 31));
}

OrbStatus ORB_CALL orbiDiffPredFirstRow_JPEG_16s_C1(const Orb16s* pSrc, Orb16s* pDst, Orb32s width,
                                                    Orb32s P, Orb32s Pt) {
  const OrbStatus status = checkFirstRow(pSrc, pDst, width, P, Pt);
  if (status == orbStsNoErr) kernel::orbDiffFirstRow(pSrc, pDst, width, middleOfRange(P, Pt));
  return status;
}

OrbStatus ORB_CALL orbiDiffPredRow_JPEG_16s_C1(const Orb16s* pSrc, const Orb16s* pPrevRow,
                                               Orb16s* pDst, Orb32s width, Orb32s predictor) {
  const OrbStatus status = checkRow(pSrc, pPrevRow, pDst, width, predictor);
  if (status == orbStsNoErr) kernel::orbDiffRow(pSrc, pPrevRow, pDst, width, predictor);
  return status;
}

OrbStatus ORB_CALL orbiReconstructPredFirstRow_JPEG_16s_C1(const Orb16s* pSrc, Orb16s* pDst,
                                                           Orb32s width, Orb32s P, Orb32s Pt) {
  const OrbStatus status = checkFirstRow(pSrc, pDst, width, P, Pt);
  if (status == orbStsNoErr) {
    kernel::orbReconstructFirstRow(pSrc, pDst, width, middleOfRange(P, Pt));
  }
  return status;
}

OrbStatus ORB_CALL orbiReconstructPredRow_JPEG_16s_C1(const Orb16s* pSrc, const Orb16s* pPrevRow,
                                                      Orb16s* pDst, Orb32s width,
                                                      Orb32s predictor) {
  const OrbStatus status = checkRow(pSrc, pPrevRow, pDst, width, predictor);
  if (status == orbStsNoErr) kernel::orbReconstructRow(pSrc, pPrevRow, pDst, width, predictor);
  return status;
}

}  // namespace orb::ORB_BUILD
