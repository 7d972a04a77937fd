// The record of the deflate decoder: argument checks, and what is in it.
#include "compress/lz77_records.h"
#include "frame/build.h"
#include "frame/memory.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD {

constexpr Orb32s kHistory = 32768;
constexpr Orb32s kOwnPairs = sizeof(OrbLZ77DecState::pairs) / sizeof(OrbLZ77Pair);

// All that stands in front of the window.
static void clearFields(OrbLZ77DecState& state) {
  orbZero(&state, static_cast<Orb32s>(state.window - reinterpret_cast<Orb8u*>(&state)));
  state.cursor.pairLeft = kOwnPairs;
}

OrbStatus ORB_CALL orbsDecodeLZ77GetSize_8u(Orb32s* pSize) {
  if (!pSize) return orbStsNullPtrErr;
  store(pSize, Orb32s{sizeof(OrbLZ77DecState)});
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbsDecodeLZ77Init_8u(OrbLZ77Checksum checksumKind, OrbLZ77DecState* pState) {
  if (!pState) return orbStsNullPtrErr;
  clearFields(*pState);
  pState->checksumKind = checksumKind;
  pState->cursor.pPairs = reinterpret_cast<uintptr_t>(pState->pairs);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbsDecodeLZ77InitAlloc_8u(OrbLZ77Checksum checksumKind,
                                              OrbLZ77DecState** ppState) {
  if (!ppState) return orbStsNullPtrErr;
  void* const memory = orbMalloc(sizeof(OrbLZ77DecState));
  if (!memory) return orbStsMemAllocErr;
  OrbLZ77DecState* const state = static_cast<OrbLZ77DecState*>(memory);
  store(ppState, state);
  return orbsDecodeLZ77Init_8u(checksumKind, state);
}

// What a stream does not leave behind is kept: where the pair list is, and the checksum's kind.
OrbStatus ORB_CALL orbsDecodeLZ77Reset_8u(OrbLZ77DecState* pState) {
  if (!pState) return orbStsNullPtrErr;
  const OrbLZ77DecState& state = *pState;
  const uint64_t pPairs = state.cursor.pPairs;
  const Orb32s checksumKind = state.checksumKind;
  clearFields(*pState);
  pState->cursor.pPairs = pPairs;
  pState->checksumKind = checksumKind;
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbsDecodeLZ77SetDictionary_8u(const Orb8u* pDict, Orb32s dictLen,
                                                  OrbLZ77DecState* pState) {
  if (!pDict || !pState) return orbStsNullPtrErr;
  if (dictLen < 1) return orbStsSizeErr;
  const Orb32s n = dictLen < kHistory ? dictLen : kHistory;
  __builtin_memcpy(pState->window + kHistory - n, pDict + dictLen - n, static_cast<size_t>(n));
  pState->windowFill = kHistory;
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbsDecodeLZ77CopyState_8u(const OrbLZ77DecState* pSrcState,
                                              OrbLZ77DecState* pDstState) {
  if (!pSrcState || !pDstState) return orbStsNullPtrErr;
  const uint64_t pPairs = pDstState->cursor.pPairs;
  __builtin_memmove(pDstState, pSrcState, sizeof *pDstState);
  pDstState->cursor.pPairs = pPairs;
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbsDecodeLZ77SetStatus_8u(OrbLZ77Phase phase, OrbLZ77DecState* pState) {
  if (!pState) return orbStsNullPtrErr;
  pState->cursor.phase = phase;
  return orbStsNoErr;
}

}  // namespace orb::ORB_BUILD
