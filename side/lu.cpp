// Small linear systems: argument checks, then one call into a kernel.
#include "side/px/lu.h"

namespace orb::ORB_BUILD {

static bool isStride(Orb32s stride) {
  return stride >= 1 && stride % 8 == 0;
}

// The kernels for one kind of rows, those of 3, 4 and 5 elements unrolled.
template <class Elements>
static bool decompose(const Elements& matrix, Orb32s* index, Orb32s size) {
  switch (size) {
    case 3:
      return kernel::orbDecomposeSmall<3>(matrix, index);
    case 4:
      return kernel::orbDecomposeSmall<4>(matrix, index);
    case 5:
      return kernel::orbDecomposeSmall<5>(matrix, index);
    default:
      return kernel::orbDecompose(matrix, index, size);
  }
}

template <class Factors>
static void substitute(const Factors& factors, const Orb32s* index, const LuVector<const Orb64f>& b,
                       const LuVector<Orb64f>& x, Orb32s size) {
  switch (size) {
    case 3:
      return kernel::orbSubstituteSmall<3>(factors, index, b, x);
    case 4:
      return kernel::orbSubstituteSmall<4>(factors, index, b, x);
    case 5:
      return kernel::orbSubstituteSmall<5>(factors, index, b, x);
    default:
      return kernel::orbSubstitute(factors, index, b, x, size);
  }
}

OrbStatus ORB_CALL orbmLUDecomp_m_64f(const Orb64f* pSrc, Orb32s srcStride1, Orb32s srcStride2,
                                      Orb32s* pDstIndex, Orb64f* pDst, Orb32s dstStride1,
                                      Orb32s dstStride2, Orb32s widthHeight) {
  if (!pSrc || !pDst || !pDstIndex) return orbStsNullPtrErr;
  if (widthHeight < 1) return orbStsSizeErr;
  if (!isStride(srcStride1) || !isStride(srcStride2) || !isStride(dstStride1) ||
      !isStride(dstStride2)) {
    return orbStsStrideMatrixErr;
  }
  const StridedMatrix<const Orb64f> src = {pSrc, srcStride1, srcStride2};
  const StridedMatrix<Orb64f> dst = {pDst, dstStride1, dstStride2};
  const ContiguousRows<Orb64f> dstRows = {pDst, dstStride1};
  const bool isContiguous = srcStride2 == sizeof(Orb64f) && dstStride2 == sizeof(Orb64f);
  for (Orb32s i = 0; i < widthHeight; ++i) store(pDstIndex + i, i);
  if (isContiguous) {
    kernel::orbCopyMatrix(ContiguousRows<const Orb64f>{pSrc, srcStride1}, dstRows, widthHeight);
  } else {
    kernel::orbCopyMatrix(src, dst, widthHeight);
  }
  const bool isRegular = isContiguous ? decompose(dstRows, pDstIndex, widthHeight)
                                      : decompose(dst, pDstIndex, widthHeight);
  return isRegular ? orbStsNoErr : orbStsSingularErr;
}

OrbStatus ORB_CALL orbmLUBackSubst_mv_64f(const Orb64f* pSrc, Orb32s srcStride1, Orb32s srcStride2,
                                          const Orb32s* pSrcIndex, const Orb64f* pSrc2,
                                          Orb32s src2Stride2, Orb64f* pDst, Orb32s dstStride2,
                                          Orb32s widthHeight) {
  if (!pSrc || !pSrc2 || !pDst || !pSrcIndex) return orbStsNullPtrErr;
  if (widthHeight < 1) return orbStsSizeErr;
  if (!isStride(srcStride1) || !isStride(srcStride2) || !isStride(src2Stride2) ||
      !isStride(dstStride2)) {
    return orbStsStrideMatrixErr;
  }
  const LuVector<const Orb64f> b = {pSrc2, src2Stride2};
  const LuVector<Orb64f> x = {pDst, dstStride2};
  if (srcStride2 == sizeof(Orb64f)) {
    substitute(ContiguousRows<const Orb64f>{pSrc, srcStride1}, pSrcIndex, b, x, widthHeight);
  } else {
    substitute(StridedMatrix<const Orb64f>{pSrc, srcStride1, srcStride2}, pSrcIndex, b, x,
               widthHeight);
  }
  return orbStsNoErr;
}

}  // namespace orb::ORB_BUILD
