// The photo core transform: argument checks, then one call into a kernel.
#include "jpegxr/px/core_transform.h"

#if ORB_SIMD
#include "jpegxr/simd/core_transform.h"
#endif

namespace orb::ORB_BUILD {

template <class Transform, class Lift, class T>
static OrbStatus transformImage(T* pSrcDst, Orb32u srcDstStep, Orb32s width, Orb32s height) {
  if (!pSrcDst) return orbStsNullPtrErr;
  if (width < 1 || height < 1) return orbStsSizeErr;
  if (srcDstStep < static_cast<uint64_t>(width) * sizeof(T)) return orbStsStepErr;
  if (width % 4 != 0 || height % 4 != 0) return orbStsSizeErr;
  kernel::orbTransformRegion<Transform, Lift>(pSrcDst, srcDstStep, width, height);
  return orbStsNoErr;
}

template <class Transform, class Lift, Orb32s kWidth, Orb32s kHeight, class T>
static OrbStatus transformMacroblock(T* pSrcDst, Orb32u srcDstStep) {
  if (!pSrcDst) return orbStsNullPtrErr;
  if (srcDstStep < kWidth * sizeof(T)) return orbStsStepErr;
  kernel::orbTransformRegion<Transform, Lift>(pSrcDst, srcDstStep, kWidth, kHeight);
  return orbStsNoErr;
}

// ---- Forward

OrbStatus ORB_CALL orbiPCTFwd_JPEGXR_16s_C1IR(Orb16s* pSrcDst, Orb32u srcDstStep, Orb32s width,
                                              Orb32s height) {
  return transformImage<kernel::CoreForward, kernel::Lift16s>(pSrcDst, srcDstStep, width, height);
}

OrbStatus ORB_CALL orbiPCTFwd_JPEGXR_32s_C1IR(Orb32s* pSrcDst, Orb32u srcDstStep, Orb32s width,
                                              Orb32s height) {
  return transformImage<kernel::CoreForward, kernel::Lift32s>(pSrcDst, srcDstStep, width, height);
}

OrbStatus ORB_CALL orbiPCTFwd_JPEGXR_32f_C1IR(Orb32f* pSrcDst, Orb32u srcDstStep, Orb32s width,
                                              Orb32s height) {
  return transformImage<kernel::CoreForward, kernel::Lift32f>(pSrcDst, srcDstStep, width, height);
}

OrbStatus ORB_CALL orbiPCTFwd8x8_JPEGXR_16s_C1IR(Orb16s* pSrcDst, Orb32u srcDstStep) {
  return transformMacroblock<kernel::CoreForward, kernel::Lift16s, 8, 8>(pSrcDst, srcDstStep);
}

OrbStatus ORB_CALL orbiPCTFwd8x8_JPEGXR_32s_C1IR(Orb32s* pSrcDst, Orb32u srcDstStep) {
  return transformMacroblock<kernel::CoreForward, kernel::Lift32s, 8, 8>(pSrcDst, srcDstStep);
}

OrbStatus ORB_CALL orbiPCTFwd8x8_JPEGXR_32f_C1IR(Orb32f* pSrcDst, Orb32u srcDstStep) {
  return transformMacroblock<kernel::CoreForward, kernel::Lift32f, 8, 8>(pSrcDst, srcDstStep);
}

OrbStatus ORB_CALL orbiPCTFwd8x16_JPEGXR_16s_C1IR(Orb16s* pSrcDst, Orb32u srcDstStep) {
  return transformMacroblock<kernel::CoreForward, kernel::Lift16s, 8, 16>(pSrcDst, srcDstStep);
}

OrbStatus ORB_CALL orbiPCTFwd8x16_JPEGXR_32s_C1IR(Orb32s* pSrcDst, Orb32u srcDstStep) {
  return transformMacroblock<kernel::CoreForward, kernel::Lift32s, 8, 16>(pSrcDst, srcDstStep);
}

OrbStatus ORB_CALL orbiPCTFwd8x16_JPEGXR_32f_C1IR(Orb32f* pSrcDst, Orb32u srcDstStep) {
  return transformMacroblock<kernel::CoreForward, kernel::Lift32f, 8, 16>(pSrcDst, srcDstStep);
}

OrbStatus ORB_CALL orbiPCTFwd16x16_JPEGXR_16s_C1IR(Orb16s* pSrcDst, Orb32u srcDstStep) {
  return transformMacroblock<kernel::CoreForward, kernel::Lift16s, 16, 16>(pSrcDst, srcDstStep);
}

OrbStatus ORB_CALL orbiPCTFwd16x16_JPEGXR_32s_C1IR(Orb32s* pSrcDst, Orb32u srcDstStep) {
  return transformMacroblock<kernel::CoreForward, kernel::Lift32s, 16, 16>(pSrcDst, srcDstStep);
}

OrbStatus ORB_CALL orbiPCTFwd16x16_JPEGXR_32f_C1IR(Orb32f* pSrcDst, Orb32u srcDstStep) {
  return transformMacroblock<kernel::CoreForward, kernel::Lift32f, 16, 16>(pSrcDst, srcDstStep);
}

// ---- Inverse

OrbStatus ORB_CALL orbiPCTInv_JPEGXR_16s_C1IR(Orb16s* pSrcDst, Orb32u srcDstStep, Orb32s width,
                                              Orb32s height) {
  return transformImage<kernel::CoreInverse, kernel::Lift16s>(pSrcDst, srcDstStep, width, height);
}

OrbStatus ORB_CALL orbiPCTInv_JPEGXR_32s_C1IR(Orb32s* pSrcDst, Orb32u srcDstStep, Orb32s width,
                                              Orb32s height) {
  return transformImage<kernel::CoreInverse, kernel::Lift32s>(pSrcDst, srcDstStep, width, height);
}

OrbStatus ORB_CALL orbiPCTInv_JPEGXR_32f_C1IR(Orb32f* pSrcDst, Orb32u srcDstStep, Orb32s width,
                                              Orb32s height) {
  return transformImage<kernel::CoreInverse, kernel::Lift32f>(pSrcDst, srcDstStep, width, height);
}

OrbStatus ORB_CALL orbiPCTInv8x8_JPEGXR_16s_C1IR(Orb16s* pSrcDst, Orb32u srcDstStep) {
  return transformMacroblock<kernel::CoreInverse, kernel::Lift16s, 8, 8>(pSrcDst, srcDstStep);
}

OrbStatus ORB_CALL orbiPCTInv8x8_JPEGXR_32s_C1IR(Orb32s* pSrcDst, Orb32u srcDstStep) {
  return transformMacroblock<kernel::CoreInverse, kernel::Lift32s, 8, 8>(pSrcDst, srcDstStep);
}

OrbStatus ORB_CALL orbiPCTInv8x8_JPEGXR_32f_C1IR(Orb32f* pSrcDst, Orb32u srcDstStep) {
  return transformMacroblock<kernel::CoreInverse, kernel::Lift32f, 8, 8>(pSrcDst, srcDstStep);
}

OrbStatus ORB_CALL orbiPCTInv8x16_JPEGXR_16s_C1IR(Orb16s* pSrcDst, Orb32u srcDstStep) {
  return transformMacroblock<kernel::CoreInverse, kernel::Lift16s, 8, 16>(pSrcDst, srcDstStep);
}

OrbStatus ORB_CALL orbiPCTInv8x16_JPEGXR_32s_C1IR(Orb32s* pSrcDst, Orb32u srcDstStep) {
  return transformMacroblock<kernel::CoreInverse, kernel::Lift32s, 8, 16>(pSrcDst, srcDstStep);
}

OrbStatus ORB_CALL orbiPCTInv8x16_JPEGXR_32f_C1IR(Orb32f* pSrcDst, Orb32u srcDstStep) {
  return transformMacroblock<kernel::CoreInverse, kernel::Lift32f, 8, 16>(pSrcDst, srcDstStep);
}

OrbStatus ORB_CALL orbiPCTInv16x16_JPEGXR_16s_C1IR(Orb16s* pSrcDst, Orb32u srcDstStep) {
  return transformMacroblock<kernel::CoreInverse, kernel::Lift16s, 16, 16>(pSrcDst, srcDstStep);
}

OrbStatus ORB_CALL orbiPCTInv16x16_JPEGXR_32s_C1IR(Orb32s* pSrcDst, Orb32u srcDstStep) {
  return transformMacroblock<kernel::CoreInverse, kernel::Lift32s, 16, 16>(pSrcDst, srcDstStep);
}

OrbStatus ORB_CALL orbiPCTInv16x16_JPEGXR_32f_C1IR(Orb32f* pSrcDst, Orb32u srcDstStep) {
  return transformMacroblock<kernel::CoreInverse, kernel::Lift32f, 16, 16>(pSrcDst, srcDstStep);
}

}  // namespace orb::ORB_BUILD
