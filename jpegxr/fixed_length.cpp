// Fixed-length coding: argument checks, then one call into a kernel.
#include "jpegxr/px/fixed_length.h"

namespace orb::ORB_BUILD {

template <class T>
static OrbStatus encode(const T* pSrc, Orb32s srcStep, const Orb32s* pResidual, Orb8u** ppBitStream,
                        Orb32u* pBitBuf, Orb32u* pBitCount, Orb32u bits, Orb32u trimBits,
                        Orb32s useResidual) {
  if (!pSrc || !pResidual || !ppBitStream || !load(ppBitStream) || !pBitBuf || !pBitCount) {
    return orbStsNullPtrErr;
  }
  if (load(pBitCount) > 32 || bits > 15 || trimBits > 15) return orbStsOutOfRangeErr;
  kernel::FlexWriter writer = {kernel::BitWriter(ppBitStream, pBitBuf, pBitCount)};
  if (useResidual) {
    kernel::orbEncodeResidual(writer, pResidual, bits);
  } else {
    kernel::orbEncodeSamples(writer, pSrc, srcStep, bits, trimBits);
  }
  writer.send();
  writer.stream.close(ppBitStream, pBitBuf, pBitCount);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiFLCEncode4x4_JPEGXR_16s1u_C1R(const Orb16s* pSrc, Orb32s srcStep,
                                                     const Orb32s* pResidual, Orb8u** ppBitStream,
                                                     Orb32u* pBitBuf, Orb32u* pBitCount,
                                                     Orb32u bits, Orb32u trimBits,
                                                     Orb32s useResidual) {
  return encode(pSrc, srcStep, pResidual, ppBitStream, pBitBuf, pBitCount, bits, trimBits,
                useResidual);
}

OrbStatus ORB_CALL orbiFLCEncode4x4_JPEGXR_32s1u_C1R(const Orb32s* pSrc, Orb32s srcStep,
                                                     const Orb32s* pResidual, Orb8u** ppBitStream,
                                                     Orb32u* pBitBuf, Orb32u* pBitCount,
                                                     Orb32u bits, Orb32u trimBits,
                                                     Orb32s useResidual) {
  return encode(pSrc, srcStep, pResidual, ppBitStream, pBitBuf, pBitCount, bits, trimBits,
                useResidual);
}

template <class T>
static OrbStatus decode(Orb16u** ppBitStream, Orb32u* pBitBuf, Orb32u* pBitCount, T* pSrcDst,
                        Orb32s srcDstStep, Orb32u bits, Orb16s scale, Orb32s refine) {
  if (!pSrcDst || !ppBitStream || !load(ppBitStream) || !pBitBuf || !pBitCount) {
    return orbStsNullPtrErr;
  }
  if (load(pBitCount) > 32 || bits > 15) return orbStsOutOfRangeErr;
  kernel::BitReader reader(ppBitStream, pBitBuf, pBitCount);
  kernel::orbDecodeFlex(reader, pSrcDst, srcDstStep, bits, scale, refine != 0);
  reader.close(ppBitStream, pBitBuf, pBitCount);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiFLCDecode4x4_JPEGXR_1u16s_C1IR(Orb16u** ppBitStream, Orb32u* pBitBuf,
                                                      Orb32u* pBitCount, Orb16s* pSrcDst,
                                                      Orb32s srcDstStep, Orb32u bits, Orb16s scale,
                                                      Orb32s refine) {
  return decode(ppBitStream, pBitBuf, pBitCount, pSrcDst, srcDstStep, bits, scale, refine);
}

OrbStatus ORB_CALL orbiFLCDecode4x4_JPEGXR_1u32s_C1IR(Orb16u** ppBitStream, Orb32u* pBitBuf,
                                                      Orb32u* pBitCount, Orb32s* pSrcDst,
                                                      Orb32s srcDstStep, Orb32u bits, Orb16s scale,
                                                      Orb32s refine) {
  return decode(ppBitStream, pBitBuf, pBitCount, pSrcDst, srcDstStep, bits, scale, refine);
}

}  // namespace orb::ORB_BUILD
