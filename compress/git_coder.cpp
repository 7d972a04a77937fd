// The GIT coder: argument checks, then one call into a kernel.
#include "compress/px/git_decoder.h"
#include "compress/px/git_encoder.h"

namespace orb::ORB_BUILD {

// ---- Sizes

// The encoder takes no shorter blocks: it gets these two.
constexpr Orb32s kLeastSrcLen = 4096;
constexpr Orb32s kLeastDstLen = 8192;

// A record has 256 areas for the source's length, rounded down to a multiple of 8.
static OrbStatus findSize(Orb32s maxSrcLen, int64_t rest, Orb32s& size) {
  const int64_t whole = static_cast<int64_t>(maxSrcLen & ~7) * 256 + rest;
  if (whole > INT32_MAX) return orbStsSizeErr;
  size = static_cast<Orb32s>(whole);
  return orbStsNoErr;
}

// Raises the lengths if need be, which is a warning, and finds the size of the record.
static OrbStatus shapeEncoder(Orb32s& maxSrcLen, Orb32s& maxDstLen, Orb32s& size) {
  if (maxSrcLen < 1 || maxDstLen < 1) return orbStsSizeErr;
  const bool isRaised = maxSrcLen < kLeastSrcLen;
  if (isRaised) {
    maxSrcLen = kLeastSrcLen;
    maxDstLen = kLeastDstLen;
  }
  const int64_t rest = static_cast<int64_t>(maxDstLen & ~7) + kGITEncBaseSize;
  const OrbStatus status = findSize(maxSrcLen, rest, size);
  return status == orbStsNoErr && isRaised ? orbStsDstFull : status;
}

static OrbStatus shapeDecoder(Orb32s maxSrcLen, Orb32s& size) {
  if (maxSrcLen < 1) return orbStsSizeErr;
  return findSize(maxSrcLen, kGITDecBaseSize, size);
}

OrbStatus ORB_CALL orbsEncodeGITGetSize_8u(Orb32s maxSrcLen, Orb32s maxDstLen, Orb32s* pSize) {
  if (!pSize) return orbStsNullPtrErr;
  Orb32s size = 0;
  const OrbStatus status = shapeEncoder(maxSrcLen, maxDstLen, size);
  if (status >= 0) store(pSize, size);
  return status;
}

OrbStatus ORB_CALL orbsDecodeGITGetSize_8u(Orb32s maxSrcLen, Orb32s* pSize) {
  if (!pSize) return orbStsNullPtrErr;
  Orb32s size = 0;
  const OrbStatus status = shapeDecoder(maxSrcLen, size);
  if (status >= 0) store(pSize, size);
  return status;
}

// ---- Records

OrbStatus ORB_CALL orbsEncodeGITInit_8u(Orb32s maxSrcLen, Orb32s maxDstLen,
                                        OrbGITEncState* pState) {
  if (!pState) return orbStsNullPtrErr;
  Orb32s size = 0;
  const OrbStatus status = shapeEncoder(maxSrcLen, maxDstLen, size);
  if (status < 0) return status;
  pState->maxSrcLen = maxSrcLen;
  pState->maxDstLen = maxDstLen;
  return status;
}

OrbStatus ORB_CALL orbsDecodeGITInit_8u(Orb32s maxDstLen, OrbGITDecState* pState) {
  if (!pState) return orbStsNullPtrErr;
  if (maxDstLen < 1) return orbStsSizeErr;
  pState->maxDstLen = maxDstLen;
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbsEncodeGITInitAlloc_8u(Orb32s maxSrcLen, Orb32s maxDstLen,
                                             OrbGITEncState** ppState) {
  if (!ppState) return orbStsNullPtrErr;
  Orb32s size = 0;
  const OrbStatus status = shapeEncoder(maxSrcLen, maxDstLen, size);
  if (status < 0) return status;
  OrbGITEncState* const state = static_cast<OrbGITEncState*>(orbMalloc(size));
  if (!state) return orbStsMemAllocErr;
  store(ppState, state);
  orbsEncodeGITInit_8u(maxSrcLen, maxDstLen, state);
  return status;
}

// The pointer is stored even if there is no memory.
OrbStatus ORB_CALL orbsDecodeGITInitAlloc_8u(Orb32s maxSrcLen, Orb32s maxDstLen,
                                             OrbGITDecState** ppState) {
  if (!ppState) return orbStsNullPtrErr;
  Orb32s size = 0;
  const OrbStatus status = shapeDecoder(maxSrcLen, size);
  if (status < 0) return status;
  if (maxDstLen < 1) return orbStsSizeErr;
  OrbGITDecState* const state = static_cast<OrbGITDecState*>(orbMalloc(size));
  store(ppState, state);
  return orbsDecodeGITInit_8u(maxDstLen, state);
}

void ORB_CALL orbsGITFree_8u(void* pState) {
  orbFree(pState);
}

// ---- Blocks

OrbStatus ORB_CALL orbsEncodeGIT_8u(const Orb8u* pSrc, Orb32s srcLen, Orb8u* pDst, Orb32s* pDstLen,
                                    Orb32s mode, OrbGITEncState* pState) {
  if (!pSrc || !pDst || !pState || !pDstLen) return orbStsNullPtrErr;
  if (srcLen < 0 || srcLen > pState->maxSrcLen) return orbStsSizeErr;
  return kernel::orbEncodeGIT(pSrc, srcLen, pDst, pDstLen, kernel::gitMode(mode), *pState);
}

OrbStatus ORB_CALL orbsDecodeGIT_8u(const Orb8u* pSrc, Orb32s srcLen, Orb8u* pDst, Orb32s* pDstLen,
                                    Orb32s mode, OrbGITDecState* pState) {
  if (!pSrc || !pDst || !pDstLen || !pState) return orbStsNullPtrErr;
  if (srcLen < 0) return orbStsSizeErr;
  return kernel::orbDecodeGIT(pSrc, srcLen, pDst, pDstLen, kernel::gitMode(mode), *pState);
}

}  // namespace orb::ORB_BUILD
