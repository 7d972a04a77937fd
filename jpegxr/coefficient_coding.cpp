// Coefficient coding: argument checks, then one call into a kernel.
#include "jpegxr/px/coefficient_decoder.h"
#include "jpegxr/px/coefficient_encoder.h"

namespace orb::ORB_BUILD {

// What all functions share: the bit stream and its three items.
template <class Unit>
static bool hasNull(Unit** ppBitStream, const Orb32u* pBitBuf, const Orb32u* pBitCount) {
  return !ppBitStream || !load(ppBitStream) || !pBitBuf || !pBitCount;
}

// ---- High-pass blocks

template <class T, class Rest>
static void encode4x4(const T* pSrc, Orb32s srcStep, Orb32s colourClass, Orb32u modelBits,
                      const Rest& rest, Orb8u** ppBitStream, Orb32u* pBitBuf, Orb32u* pBitCount,
                      Orb32s* pNumNonZero, OrbiVLCState_JPEGXR& state) {
  Orb32s pairs[2 * 15];
  const Orb32s pairCount = kernel::orbScanBlock(
      kernel::currentScan(state), kernel::RegionBlock<T>{pSrc, srcStep}, modelBits, rest, pairs);
  if (pairCount > 0) {
    kernel::orbEncodeBlock<kernel::WholeBlock>(kernel::BitWriter(ppBitStream, pBitBuf, pBitCount),
                                               state, kernel::highPassCoders(colourClass), pairs,
                                               pairCount)
        .close(ppBitStream, pBitBuf, pBitCount);
  }
  store(pNumNonZero, pairCount);
}

template <class T>
static OrbStatus encodePlain(const T* pSrc, Orb32s srcStep, Orb32s colourClass, Orb32u modelBits,
                             Orb8u** ppBitStream, Orb32u* pBitBuf, Orb32u* pBitCount,
                             Orb32s* pNumNonZero, OrbiVLCState_JPEGXR* pState) {
  if (!pState || !pSrc || !pNumNonZero || hasNull(ppBitStream, pBitBuf, pBitCount)) {
    return orbStsNullPtrErr;
  }
  if (load(pBitCount) > 32 || modelBits > 15) return orbStsOutOfRangeErr;
  encode4x4(pSrc, srcStep, colourClass, modelBits, kernel::NoResidual{}, ppBitStream, pBitBuf,
            pBitCount, pNumNonZero, *pState);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiVLCEncode4x4_JPEGXR_16s1u_C1R(const Orb16s* pSrc, Orb32s srcStep,
                                                     Orb32s colourClass, Orb32u modelBits,
                                                     Orb8u** ppBitStream, Orb32u* pBitBuf,
                                                     Orb32u* pBitCount, Orb32s* pNumNonZero,
                                                     OrbiVLCState_JPEGXR* pState) {
  return encodePlain(pSrc, srcStep, colourClass, modelBits, ppBitStream, pBitBuf, pBitCount,
                     pNumNonZero, pState);
}

OrbStatus ORB_CALL orbiVLCEncode4x4_JPEGXR_32s1u_C1R(const Orb32s* pSrc, Orb32s srcStep,
                                                     Orb32s colourClass, Orb32u modelBits,
                                                     Orb8u** ppBitStream, Orb32u* pBitBuf,
                                                     Orb32u* pBitCount, Orb32s* pNumNonZero,
                                                     OrbiVLCState_JPEGXR* pState) {
  return encodePlain(pSrc, srcStep, colourClass, modelBits, ppBitStream, pBitBuf, pBitCount,
                     pNumNonZero, pState);
}

template <class T>
static OrbStatus encodeFlex(const T* pSrc, Orb32s srcStep, Orb32s colourClass, Orb32u modelBits,
                            Orb32u trimBits, Orb32s* pResidual, Orb8u** ppBitStream,
                            Orb32u* pBitBuf, Orb32u* pBitCount, Orb32s* pNumNonZero,
                            OrbiVLCState_JPEGXR* pState) {
  if (!pState || !pSrc || !pResidual || !pNumNonZero || hasNull(ppBitStream, pBitBuf, pBitCount)) {
    return orbStsNullPtrErr;
  }
  if (load(pBitCount) > 32 || modelBits > 15 || trimBits > 15) return orbStsOutOfRangeErr;
  encode4x4(pSrc, srcStep, colourClass, modelBits, kernel::Residual{pResidual, trimBits},
            ppBitStream, pBitBuf, pBitCount, pNumNonZero, *pState);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiVLCEncode4x4Flex_JPEGXR_16s1u_C1R(const Orb16s* pSrc, Orb32s srcStep,
                                                         Orb32s colourClass, Orb32u modelBits,
                                                         Orb32u trimBits, Orb32s* pResidual,
                                                         Orb8u** ppBitStream, Orb32u* pBitBuf,
                                                         Orb32u* pBitCount, Orb32s* pNumNonZero,
                                                         OrbiVLCState_JPEGXR* pState) {
  return encodeFlex(pSrc, srcStep, colourClass, modelBits, trimBits, pResidual, ppBitStream,
                    pBitBuf, pBitCount, pNumNonZero, pState);
}

OrbStatus ORB_CALL orbiVLCEncode4x4Flex_JPEGXR_32s1u_C1R(const Orb32s* pSrc, Orb32s srcStep,
                                                         Orb32s colourClass, Orb32u modelBits,
                                                         Orb32u trimBits, Orb32s* pResidual,
                                                         Orb8u** ppBitStream, Orb32u* pBitBuf,
                                                         Orb32u* pBitCount, Orb32s* pNumNonZero,
                                                         OrbiVLCState_JPEGXR* pState) {
  return encodeFlex(pSrc, srcStep, colourClass, modelBits, trimBits, pResidual, ppBitStream,
                    pBitBuf, pBitCount, pNumNonZero, pState);
}

// A run that leaves the block is told by one coefficient more than there are.
static Orb32s reportedCount(const kernel::DecodedBlock& block) {
  return block.end == kernel::BlockEnd::kRunTooLong ? 16 : block.count;
}

template <class T>
static OrbStatus decode4x4(Orb16u** ppBitStream, Orb32u* pBitBuf, Orb32u* pBitCount, Orb16s scale,
                           T* pDst, Orb32s dstStep, Orb32s colourClass, Orb32s* pNumNonZero,
                           OrbiVLCState_JPEGXR* pState) {
  if (!pState || !pDst || !pNumNonZero || hasNull(ppBitStream, pBitBuf, pBitCount)) {
    return orbStsNullPtrErr;
  }
  if (load(pBitCount) > 32) return orbStsOutOfRangeErr;
  kernel::orbClear4x4(pDst, dstStep);
  const kernel::BitReader reader(ppBitStream, pBitBuf, pBitCount);
  const kernel::PlaceInRegion<T> place = {pDst, dstStep, scale, kernel::currentScan(*pState)};
  const kernel::DecodedBlock block = kernel::orbDecodeBlock<kernel::WholeBlock>(
      reader, *pState, kernel::highPassCoders(colourClass), place);
  block.reader.close(ppBitStream, pBitBuf, pBitCount);
  store(pNumNonZero, reportedCount(block));
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiVLCDecode4x4_JPEGXR_1u16s_C1R(Orb16u** ppBitStream, Orb32u* pBitBuf,
                                                     Orb32u* pBitCount, Orb16s scale, Orb16s* pDst,
                                                     Orb32s dstStep, Orb32s colourClass,
                                                     Orb32s* pNumNonZero,
                                                     OrbiVLCState_JPEGXR* pState) {
  return decode4x4(ppBitStream, pBitBuf, pBitCount, scale, pDst, dstStep, colourClass, pNumNonZero,
                   pState);
}

OrbStatus ORB_CALL orbiVLCDecode4x4_JPEGXR_1u32s_C1R(Orb16u** ppBitStream, Orb32u* pBitBuf,
                                                     Orb32u* pBitCount, Orb16s scale, Orb32s* pDst,
                                                     Orb32s dstStep, Orb32s colourClass,
                                                     Orb32s* pNumNonZero,
                                                     OrbiVLCState_JPEGXR* pState) {
  return decode4x4(ppBitStream, pBitBuf, pBitCount, scale, pDst, dstStep, colourClass, pNumNonZero,
                   pState);
}

// ---- Low-pass blocks

template <class Form>
static OrbStatus encodeLowPass(const Orb32s* pRunLevel, Orb32s pairCount, Orb32s mostPairs,
                               Orb32s colourClass, Orb8u** ppBitStream, Orb32u* pBitBuf,
                               Orb32u* pBitCount, OrbiVLCState_JPEGXR* pState) {
  if (!pState || !pRunLevel || hasNull(ppBitStream, pBitBuf, pBitCount)) return orbStsNullPtrErr;
  if (load(pBitCount) > 32 || pairCount > mostPairs) return orbStsOutOfRangeErr;
  const Orb32s coded = kernel::orbPairsWithin<Form>(pRunLevel, pairCount);
  if (coded <= 0) return orbStsNoErr;
  kernel::orbEncodeBlock<Form>(kernel::BitWriter(ppBitStream, pBitBuf, pBitCount), *pState,
                               kernel::lowPassCoders(colourClass), pRunLevel, coded)
      .close(ppBitStream, pBitBuf, pBitCount);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiVLCEncodeDC444_JPEGXR_32s1u(const Orb32s* pRunLevel, Orb32s pairCount,
                                                   Orb32s colourClass, Orb8u** ppBitStream,
                                                   Orb32u* pBitBuf, Orb32u* pBitCount,
                                                   OrbiVLCState_JPEGXR* pState) {
  return encodeLowPass<kernel::WholeBlock>(pRunLevel, pairCount, 16, colourClass, ppBitStream,
                                           pBitBuf, pBitCount, pState);
}

OrbStatus ORB_CALL orbiVLCEncodeDC422_JPEGXR_32s1u(const Orb32s* pRunLevel, Orb32s pairCount,
                                                   Orb8u** ppBitStream, Orb32u* pBitBuf,
                                                   Orb32u* pBitCount, OrbiVLCState_JPEGXR* pState) {
  return encodeLowPass<kernel::List422>(pRunLevel, pairCount, 14, 1, ppBitStream, pBitBuf,
                                        pBitCount, pState);
}

OrbStatus ORB_CALL orbiVLCEncodeDC420_JPEGXR_32s1u(const Orb32s* pRunLevel, Orb32s pairCount,
                                                   Orb8u** ppBitStream, Orb32u* pBitBuf,
                                                   Orb32u* pBitCount, OrbiVLCState_JPEGXR* pState) {
  return encodeLowPass<kernel::List420>(pRunLevel, pairCount, 6, 1, ppBitStream, pBitBuf, pBitCount,
                                        pState);
}

OrbStatus ORB_CALL orbiVLCDecodeDC444_JPEGXR_1u32s(Orb16u** ppBitStream, Orb32u* pBitBuf,
                                                   Orb32u* pBitCount, Orb32s* pDst,
                                                   Orb32s colourClass, Orb32s* pNumNonZero,
                                                   OrbiVLCState_JPEGXR* pState) {
  if (!pState || !pDst || !pNumNonZero || hasNull(ppBitStream, pBitBuf, pBitCount)) {
    return orbStsNullPtrErr;
  }
  if (load(pBitCount) > 32) return orbStsOutOfRangeErr;
  const kernel::BitReader reader(ppBitStream, pBitBuf, pBitCount);
  const kernel::PlaceInOrder place = {pDst, kernel::scanOf(*pState, kLowPassScan)};
  const kernel::DecodedBlock block = kernel::orbDecodeBlock<kernel::WholeBlock>(
      reader, *pState, kernel::lowPassCoders(colourClass), place);
  block.reader.close(ppBitStream, pBitBuf, pBitCount);
  store(pNumNonZero, reportedCount(block));
  return orbStsNoErr;
}

template <class Form>
static OrbStatus decodeList(Orb16u** ppBitStream, Orb32u* pBitBuf, Orb32u* pBitCount, Orb32s* pDst,
                            Orb32s* pNumNonZero, OrbiVLCState_JPEGXR* pState) {
  if (!pState || !pDst || !pNumNonZero || hasNull(ppBitStream, pBitBuf, pBitCount)) {
    return orbStsNullPtrErr;
  }
  if (load(pBitCount) > 32) return orbStsOutOfRangeErr;
  for (Orb32s i = Form::kFirst; i <= Form::kLast; ++i) store(pDst + i, 0);
  const kernel::BitReader reader(ppBitStream, pBitBuf, pBitCount);
  const kernel::DecodedBlock block = kernel::orbDecodeBlock<Form>(
      reader, *pState, kernel::lowPassCoders(1), kernel::PlaceInList{pDst});
  block.reader.close(ppBitStream, pBitBuf, pBitCount);
  if (block.end == kernel::BlockEnd::kWhole) store(pNumNonZero, block.count);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbiVLCDecodeDC422_JPEGXR_1u32s(Orb16u** ppBitStream, Orb32u* pBitBuf,
                                                   Orb32u* pBitCount, Orb32s* pDst,
                                                   Orb32s* pNumNonZero,
                                                   OrbiVLCState_JPEGXR* pState) {
  return decodeList<kernel::List422>(ppBitStream, pBitBuf, pBitCount, pDst, pNumNonZero, pState);
}

OrbStatus ORB_CALL orbiVLCDecodeDC420_JPEGXR_1u32s(Orb16u** ppBitStream, Orb32u* pBitBuf,
                                                   Orb32u* pBitCount, Orb32s* pDst,
                                                   Orb32s* pNumNonZero,
                                                   OrbiVLCState_JPEGXR* pState) {
  return decodeList<kernel::List420>(ppBitStream, pBitBuf, pBitCount, pDst, pNumNonZero, pState);
}

}  // namespace orb::ORB_BUILD
