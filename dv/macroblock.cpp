// From the blocks of macroblocks to a frame: argument checks, then one call into a kernel.
#include "dv/px/macroblock.h"

#if ORB_SIMD
#include "dv/simd/macroblock.h"
#endif

namespace orb::ORB_BUILD {

using kernel::DVRows;

constexpr int kDVMacroblocks = 5;

OrbStatus ORB_CALL orbiYCrCb411ToYCbCr422_5MBDV_16s8u_P3C2R(const Orb16s* const* ppBlocks,
                                                            Orb8u* const* ppDst, Orb32s dstStep) {
  if (!ppBlocks || !ppDst) return orbStsNullPtrErr;
  for (int m = 0; m < kDVMacroblocks && load(ppBlocks + m); ++m) {
    Orb8u* const dst = load(ppDst + m);
    if (!dst) return orbStsNullPtrErr;
    orbWriteDV411<DVRows>(load(ppBlocks + m), dst, dstStep);
  }
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiYCrCb411ToYCbCr422_EdgeDV_16s8u_P3C2R(const Orb16s* pBlocks, Orb8u* pDst,
                                                             Orb32s dstStep) {
  if (!pBlocks || !pDst) return orbStsNullPtrErr;
  orbWriteDV411Edge<DVRows>(pBlocks, pDst, dstStep);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiYCrCb420ToYCbCr422_5MBDV_16s8u_P3C2R(const Orb16s* const* ppBlocks,
                                                            Orb8u* const* ppDst, Orb32s dstStep) {
  if (!ppBlocks || !ppDst) return orbStsNullPtrErr;
  for (int m = 0; m < kDVMacroblocks; ++m) {
    const Orb16s* const blocks = load(ppBlocks + m);
    Orb8u* const dst = load(ppDst + m);
    if (!blocks || !dst) return orbStsNullPtrErr;
    orbWriteDV420<DVRows>(blocks, dst, dstStep);
  }
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiYCrCb422ToYCbCr422_5MBDV_16s8u_P3C2R(const Orb16s* const* ppBlocks,
                                                            Orb8u* const* ppDst, Orb32s dstStep) {
  if (!ppBlocks || !ppDst) return orbStsNullPtrErr;
  for (int m = 0; m < kDVMacroblocks; ++m) {
    const Orb16s* const blocks = load(ppBlocks + m);
    Orb8u* const dst = load(ppDst + m);
    if (!blocks || !dst) return orbStsNullPtrErr;
    orbWriteDV422<DVRows>(blocks, blocks + 2 * kDVBlock, blocks + 4 * kDVBlock,
                          blocks + 5 * kDVBlock, dst, dstStep);
  }
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiYCrCb422ToYCbCr422_10HalvesMB16x8_DV100_16s8u_P3C2R(const Orb16s* pBlocks,
                                                                           Orb8u* const* ppDst,
                                                                           Orb32s dstStep) {
  if (!pBlocks || !ppDst) return orbStsNullPtrErr;
  for (int half = 0; half < 2 * kDVMacroblocks; ++half) {
    Orb8u* const dst = load(ppDst + half);
    if (!dst) return orbStsNullPtrErr;
    const Orb16s* const macroblock = pBlocks + half / 2 * 8 * kDVBlock;
    const Orb16s* const luma = macroblock + half % 2 * 2 * kDVBlock;
    const Orb16s* const chroma = macroblock + (4 + half % 2) * kDVBlock;
    orbWriteDV422<DVRows>(luma, luma + kDVBlock, chroma, chroma + 2 * kDVBlock, dst, dstStep);
  }
  return orbStsNoErr;
}

}  // namespace orb::ORB_BUILD
