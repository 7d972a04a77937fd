// Morphology in place: argument checks, then a kernel for each row.
#include "image/px/morphology.h"

#include "frame/memory.h"
#include "frame/memory_access.h"
#if ORB_SIMD
#include "image/simd/morphology.h"
#endif

namespace orb::ORB_BUILD {

using MorphologyRow = void (*)(const Orb8u* above, const Orb8u* middle, const Orb8u* below,
                               Orb8u* dst, Orb32s width);

// A row is written back when no later one reads it: two rows after it was made.
static OrbStatus morph(MorphologyRow row, Orb8u* pSrcDst, Orb32s srcDstStep, OrbiSize roiSize) {
  if (!pSrcDst) return orbStsNullPtrErr;
  if (srcDstStep < 1) return orbStsStepErr;
  if (roiSize.width < 1 || roiSize.height < 1) return orbStsSizeErr;
  if (int64_t{roiSize.width} + 2 > srcDstStep) return orbStsStrideErr;

  const int64_t scratchStep = (int64_t{roiSize.width} + 15) & ~int64_t{15};
  if (2 * scratchStep > INT32_MAX) return orbStsMemAllocErr;
  Orb8u* const scratch = static_cast<Orb8u*>(orbMalloc(static_cast<Orb32s>(2 * scratchStep)));
  if (!scratch) return orbStsMemAllocErr;
  const auto imageRow = [&](ptrdiff_t y) { return rowAt(pSrcDst, srcDstStep, y); };
  const auto scratchRow = [&](ptrdiff_t y) { return scratch + (y & 1) * scratchStep; };
  const auto writeBack = [&](ptrdiff_t y) {
    __builtin_memcpy(imageRow(y), scratchRow(y), static_cast<size_t>(roiSize.width));
  };
  for (ptrdiff_t y = 0; y < roiSize.height; ++y) {
    if (y >= 2) writeBack(y - 2);
    row(imageRow(y - 1), imageRow(y), imageRow(y + 1), scratchRow(y), roiSize.width);
  }
  if (roiSize.height >= 2) writeBack(roiSize.height - 2);
  writeBack(roiSize.height - 1);
  orbFree(scratch);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiDilate3x3_8u_C1IR(Orb8u* pSrcDst, Orb32s srcDstStep, OrbiSize roiSize) {
  return morph(kernel::orbDilateRow, pSrcDst, srcDstStep, roiSize);
}

OrbStatus ORB_CALL orbiErode3x3_8u_C1IR(Orb8u* pSrcDst, Orb32s srcDstStep, OrbiSize roiSize) {
  return morph(kernel::orbErodeRow, pSrcDst, srcDstStep, roiSize);
}

}  // namespace orb::ORB_BUILD
