// Between the pixels of an MCU and its blocks: argument checks, then one call into a kernel.
#include "jpeg/px/mcu.h"

#if ORB_SIMD
#include "jpeg/simd/mcu.h"
#endif

namespace orb::ORB_BUILD {

using kernel::ShiftDown;
using kernel::ShiftedForward;
using kernel::ShiftedInverse;
using kernel::ShiftUp;

template <class Byte>
using RgbImage = InterleavedImage<Byte, Order::rgb, 3>;
template <class Byte>
using BgrImage = InterleavedImage<Byte, Order::bgr, 3>;
template <class Word>
using Bgr555Image = PackedImage<Word, Order::bgr, 5>;
template <class Word>
using Bgr565Image = PackedImage<Word, Order::bgr, 6>;

template <class Image>
static bool anyNullBlocks(const Orb16s* const* mcu) {
  for (int i = 0; i < kComponents<Image>; ++i) {
    if (!mcu[i]) return true;
  }
  return false;
}

template <class Layout, class Conversion, template <class> class ImageOf, class Sample>
static OrbStatus toMcu(const Sample* pSrc, Orb32s srcStep, Orb16s* const* pDstMCU) {
  using Image = ImageOf<const Sample>;
  if (!pSrc || !pDstMCU) return orbStsNullPtrErr;
  if (srcStep < 1) return orbStsStepErr;
  if (anyNullBlocks<Image>(pDstMCU)) return orbStsNullPtrErr;
  kernel::orbConvertToMcu<Layout, Conversion>(Image{pSrc, srcStep}, pDstMCU);
  return orbStsNoErr;
}

template <class Layout, class Conversion, template <class> class ImageOf, class Sample>
static OrbStatus fromMcu(const Orb16s* const* pSrcMCU, Sample* pDst, Orb32s dstStep) {
  using Image = ImageOf<Sample>;
  if (!pSrcMCU || !pDst || anyNullBlocks<Image>(pSrcMCU)) return orbStsNullPtrErr;
  if (dstStep < 1) return orbStsStepErr;
  kernel::orbConvertFromMcu<Layout, Conversion>(pSrcMCU, Image{pDst, dstStep});
  return orbStsNoErr;
}

// The body of one function, and the bodies of a family of three, which have their layout in the
// middle of their names.

#define ORB_TO_MCU(name, Layout, Conversion, Image, Sample)                             \
  OrbStatus ORB_CALL name(const Sample* pSrc, Orb32s srcStep, Orb16s* const* pDstMCU) { \
    return toMcu<Layout, Conversion, Image>(pSrc, srcStep, pDstMCU);                    \
  }

#define ORB_FROM_MCU(name, Layout, Conversion, Image, Sample)                           \
  OrbStatus ORB_CALL name(const Orb16s* const* pSrcMCU, Sample* pDst, Orb32s dstStep) { \
    return fromMcu<Layout, Conversion, Image>(pSrcMCU, pDst, dstStep);                  \
  }

#define ORB_THREE(body, head, tail, Conversion, Image, Sample) \
  body(head##444##tail, Mcu444, Conversion, Image, Sample)     \
      body(head##422##tail, Mcu422, Conversion, Image, Sample) \
          body(head##411##tail, Mcu411, Conversion, Image, Sample)

ORB_THREE(ORB_TO_MCU, orbiRGBToYCbCr, LS_MCU_8u16s_C3P3R, ShiftedForward, RgbImage, Orb8u)
ORB_THREE(ORB_TO_MCU, orbiBGRToYCbCr, LS_MCU_8u16s_C3P3R, ShiftedForward, BgrImage, Orb8u)
ORB_THREE(ORB_TO_MCU, orbiBGR555ToYCbCr, LS_MCU_16u16s_C3P3R, ShiftedForward, Bgr555Image, Orb16u)
ORB_THREE(ORB_TO_MCU, orbiBGR565ToYCbCr, LS_MCU_16u16s_C3P3R, ShiftedForward, Bgr565Image, Orb16u)
ORB_THREE(ORB_TO_MCU, orbiCMYKToYCCK, LS_MCU_8u16s_C4P4R, ShiftedForward, CmykImage, Orb8u)
ORB_THREE(ORB_TO_MCU, orbiSampleDown, LS_MCU_8u16s_C3P3R, ShiftDown, RgbImage, Orb8u)
ORB_TO_MCU(orbiSplit422LS_MCU_8u16s_C2P3R, Mcu422, ShiftDown, SharedPairsImage, Orb8u)

ORB_THREE(ORB_FROM_MCU, orbiYCbCr, ToRGBLS_MCU_16s8u_P3C3R, ShiftedInverse, RgbImage, Orb8u)
ORB_THREE(ORB_FROM_MCU, orbiYCbCr, ToBGRLS_MCU_16s8u_P3C3R, ShiftedInverse, BgrImage, Orb8u)
ORB_THREE(ORB_FROM_MCU, orbiYCbCr, ToBGR555LS_MCU_16s16u_P3C3R, ShiftedInverse, Bgr555Image, Orb16u)
ORB_THREE(ORB_FROM_MCU, orbiYCbCr, ToBGR565LS_MCU_16s16u_P3C3R, ShiftedInverse, Bgr565Image, Orb16u)
ORB_THREE(ORB_FROM_MCU, orbiYCCK, ToCMYKLS_MCU_16s8u_P4C4R, ShiftedInverse, CmykImage, Orb8u)
ORB_THREE(ORB_FROM_MCU, orbiSampleUp, LS_MCU_16s8u_P3C3R, ShiftUp, RgbImage, Orb8u)
ORB_FROM_MCU(orbiJoin422LS_MCU_16s8u_P3C2R, Mcu422, ShiftUp, SharedPairsImage, Orb8u)

}  // namespace orb::ORB_BUILD
