// Channels of samples: argument checks, then one call into a kernel.
#include "side/px/samples.h"

#if ORB_SIMD
#include "side/simd/samples.h"
#endif

namespace orb::ORB_BUILD {

template <class T>
static bool isAnyNull(T* const* channels, Orb32s count) {
  for (Orb32s c = 0; c < count; ++c) {
    if (!load(channels + c)) return true;
  }
  return false;
}

// ---- As they are

static bool isMisaligned(const void* address) {
  return reinterpret_cast<uintptr_t>(address) % 16 != 0;
}

template <class T>
static OrbStatus checkPlain(T* const* channels, const T* interleaved, Orb32s count, Orb32s len) {
  if (!channels || !interleaved) return orbStsNullPtrErr;
  if (count < 1) return orbStsChannelCountErr;
  if (len < 1) return orbStsSizeErr;
  return isAnyNull(channels, count) ? orbStsNullPtrErr : orbStsNoErr;
}

template <class T>
static OrbStatus alignmentStatus(T* const* channels, const T* interleaved, Orb32s count) {
  bool any = isMisaligned(interleaved);
  for (Orb32s c = 0; c < count; ++c) any |= isMisaligned(load(channels + c));
  return any ? orbStsMisalignedData : orbStsNoErr;
}

template <class T>
static OrbStatus interleave(T* const* ppSrc, Orb32s channels, Orb32s len, T* pDst) {
  const OrbStatus status = checkPlain(ppSrc, pDst, channels, len);
  if (status != orbStsNoErr) return status;
  kernel::orbInterleave(ppSrc, channels, len, pDst);
  return alignmentStatus(ppSrc, pDst, channels);
}

OrbStatus ORB_CALL orbsInterleave_16s(Orb16s* const* ppSrc, Orb32s channels, Orb32s len,
                                      Orb16s* pDst) {
  return interleave(ppSrc, channels, len, pDst);
}

OrbStatus ORB_CALL orbsInterleave_32f(Orb32f* const* ppSrc, Orb32s channels, Orb32s len,
                                      Orb32f* pDst) {
  // As words: the x87 unit would not leave every float as it is.
  return interleave(reinterpret_cast<Orb32u* const*>(ppSrc), channels, len,
                    reinterpret_cast<Orb32u*>(pDst));
}

OrbStatus ORB_CALL orbsDeinterleave_16s(const Orb16s* pSrc, Orb32s channels, Orb32s len,
                                        Orb16s* const* ppDst) {
  const OrbStatus status = checkPlain(ppDst, pSrc, channels, len);
  if (status != orbStsNoErr) return status;
  kernel::orbDeinterleave(pSrc, channels, len, ppDst);
  return alignmentStatus(ppDst, pSrc, channels);
}

// ---- Scaled

template <class T>
static OrbStatus checkScaled(T* const* channels, const void* interleaved, Orb32s count,
                             Orb32s len) {
  if (!interleaved) return orbStsNullPtrErr;
  if (count < 1 || len < 1) return orbStsSizeErr;
  return !channels || isAnyNull(channels, count) ? orbStsNullPtrErr : orbStsNoErr;
}

template <class Code>
static OrbStatus joinScaled(Orb32f* const* ppSrc, Orb32s channels, Orb32s len, Orb8u* pDst) {
  const OrbStatus status = checkScaled(ppSrc, pDst, channels, len);
  if (status != orbStsNoErr) return status;
  const ptrdiff_t step = ptrdiff_t{channels} * Code::kBytes;
  for (Orb32s c = 0; c < channels; ++c) {
    kernel::orbJoinScaled<Code>(load(ppSrc + c), len, pDst + ptrdiff_t{c} * Code::kBytes, step);
  }
  return orbStsNoErr;
}

template <class Code>
static OrbStatus splitScaled(const Orb8u* pSrc, Orb32f* const* ppDst, Orb32s channels, Orb32s len) {
  const OrbStatus status = checkScaled(ppDst, pSrc, channels, len);
  if (status != orbStsNoErr) return status;
  const ptrdiff_t step = ptrdiff_t{channels} * Code::kBytes;
  for (Orb32s c = 0; c < channels; ++c) {
    kernel::orbSplitScaled<Code>(pSrc + ptrdiff_t{c} * Code::kBytes, step, len, load(ppDst + c));
  }
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbsJoinScaled_32f16s_D2L(Orb32f* const* ppSrc, Orb32s channels, Orb32s len,
                                             Orb16s* pDst) {
  return joinScaled<Code16s>(ppSrc, channels, len, reinterpret_cast<Orb8u*>(pDst));
}

OrbStatus ORB_CALL orbsJoinScaled_32f24s_D2L(Orb32f* const* ppSrc, Orb32s channels, Orb32s len,
                                             Orb8u* pDst) {
  return joinScaled<Code24s>(ppSrc, channels, len, pDst);
}

OrbStatus ORB_CALL orbsSplitScaled_16s32f_D2L(const Orb16s* pSrc, Orb32f* const* ppDst,
                                              Orb32s channels, Orb32s len) {
  return splitScaled<Code16s>(reinterpret_cast<const Orb8u*>(pSrc), ppDst, channels, len);
}

OrbStatus ORB_CALL orbsSplitScaled_24s32f_D2L(const Orb8u* pSrc, Orb32f* const* ppDst,
                                              Orb32s channels, Orb32s len) {
  return splitScaled<Code24s>(pSrc, ppDst, channels, len);
}

}  // namespace orb::ORB_BUILD
