// The records of deflate: size, allocation and what a host reads and writes in them.
#include <stddef.h>

#include "compress/px/lz77_block.h"
#include "compress/px/lz77_match.h"
#include "frame/memory.h"

namespace orb::ORB_BUILD {

void ORB_CALL orbsLZ77Free_8u(void* pState) {
  orbFree(pState);
}

// ---- The accessors of both records

template <class Record>
static OrbStatus getPairs(OrbLZ77Pair** ppPairs, Orb32s* pCount, Orb32s* pLeft,
                          const Record* pState) {
  if (!ppPairs || !pCount || !pLeft || !pState) return orbStsNullPtrErr;
  const OrbLZ77PairCursor& cursor = pState->cursor;
  store(ppPairs, reinterpret_cast<OrbLZ77Pair*>(static_cast<uintptr_t>(cursor.pPairs)));
  store(pCount, Orb32s{cursor.pairCount});
  store(pLeft, Orb32s{cursor.pairLeft});
  return orbStsNoErr;
}

template <class Record>
static OrbStatus setPairs(OrbLZ77Pair* pPairs, Orb32s count, Orb32s left, Record* pState) {
  if (!pPairs || !pState) return orbStsNullPtrErr;
  pState->cursor.pPairs = reinterpret_cast<uintptr_t>(pPairs);
  pState->cursor.pairCount = count;
  pState->cursor.pairLeft = left;
  return orbStsNoErr;
}

template <class Record>
static OrbStatus getPhase(Orb32s* pPhase, const Record* pState) {
  if (!pPhase || !pState) return orbStsNullPtrErr;
  store(pPhase, Orb32s{pState->cursor.phase});
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbsEncodeLZ77GetPairs_8u(OrbLZ77Pair** ppPairs, Orb32s* pCount, Orb32s* pLeft,
                                             const OrbLZ77EncState* pState) {
  return getPairs(ppPairs, pCount, pLeft, pState);
}

OrbStatus ORB_CALL orbsDecodeLZ77GetPairs_8u(OrbLZ77Pair** ppPairs, Orb32s* pCount, Orb32s* pLeft,
                                             const OrbLZ77DecState* pState) {
  return getPairs(ppPairs, pCount, pLeft, pState);
}

OrbStatus ORB_CALL orbsEncodeLZ77SetPairs_8u(OrbLZ77Pair* pPairs, Orb32s count, Orb32s left,
                                             OrbLZ77EncState* pState) {
  return setPairs(pPairs, count, left, pState);
}

OrbStatus ORB_CALL orbsDecodeLZ77SetPairs_8u(OrbLZ77Pair* pPairs, Orb32s count, Orb32s left,
                                             OrbLZ77DecState* pState) {
  return setPairs(pPairs, count, left, pState);
}

OrbStatus ORB_CALL orbsEncodeLZ77GetStatus_8u(OrbLZ77Phase* pPhase, const OrbLZ77EncState* pState) {
  return getPhase(pPhase, pState);
}

OrbStatus ORB_CALL orbsDecodeLZ77GetStatus_8u(OrbLZ77Phase* pPhase, const OrbLZ77DecState* pState) {
  return getPhase(pPhase, pState);
}

// ---- The encoder's record

constexpr Orb32s kPairs = sizeof(OrbLZ77EncState::pairs) / sizeof(OrbLZ77Pair);

OrbStatus ORB_CALL orbsEncodeLZ77GetSize_8u(Orb32s* pSize) {
  if (!pSize) return orbStsNullPtrErr;
  store(pSize, Orb32s{sizeof(OrbLZ77EncState)});
  return orbStsNoErr;
}

static void fillEmpty(OrbLZ77Positions& table) {
  for (Orb32s i = 0; i < 32768; ++i) table.at[i] = kernel::kEmpty;
}

OrbStatus ORB_CALL orbsEncodeLZ77Init_8u(OrbLZ77Level level, OrbLZ77Checksum checksumKind,
                                         OrbLZ77EncState* pState) {
  if (!pState) return orbStsNullPtrErr;
  orbZero(pState, offsetof(OrbLZ77EncState, prev));
  orbZero(pState->tail, sizeof *pState - offsetof(OrbLZ77EncState, tail));
  pState->cursor.pPairs = reinterpret_cast<uintptr_t>(pState) + offsetof(OrbLZ77EncState, pairs);
  pState->cursor.pairLeft = kPairs;
  const bool isKnown = level == orbLZ77LevelFast || level == orbLZ77LevelLazy;
  pState->level = isKnown ? level : orbLZ77LevelChain;
  pState->checksumKind = checksumKind;
  pState->gapless = kernel::kHistory;
  fillEmpty(pState->head);
  fillEmpty(pState->prev);
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbsEncodeLZ77InitAlloc_8u(OrbLZ77Level level, OrbLZ77Checksum checksumKind,
                                              OrbLZ77EncState** ppState) {
  if (!ppState) return orbStsNullPtrErr;
  void* const memory = orbMalloc(sizeof(OrbLZ77EncState));
  if (!memory) return orbStsMemAllocErr;
  OrbLZ77EncState* const state = static_cast<OrbLZ77EncState*>(memory);
  store(ppState, state);
  return orbsEncodeLZ77Init_8u(level, checksumKind, state);
}

// The chains stay: they are only entered from a head. Where the coders of blocks stand stays, too,
// and with it `headerReady`.
OrbStatus ORB_CALL orbsEncodeLZ77Reset_8u(OrbLZ77EncState* pState) {
  if (!pState) return orbStsNullPtrErr;
  fillEmpty(pState->head);
  pState->cursor.pairCount = 0;
  pState->cursor.pairLeft = kPairs;
  pState->checksum = 0;
  pState->srcLeft = 0;
  pState->lastFlush = orbLZ77FlushNone;
  pState->position = 0;
  pState->windowFill = 0;
  pState->gapless = kernel::kHistory;
  pState->bitAcc = 0;
  pState->bitCount = 0;
  pState->selectedMode = 0;
  pState->headerLen = 0;
  pState->headerSent = 0;
  pState->syncBytesLeft = 0;
  pState->tailIndex = 0;
  return orbStsNoErr;
}

OrbStatus ORB_CALL orbsEncodeLZ77SetStatus_8u(OrbLZ77Phase phase, OrbLZ77EncState* pState) {
  if (!pState) return orbStsNullPtrErr;
  OrbLZ77PairCursor& cursor = pState->cursor;
  cursor.phase = phase;
  if (phase == orbLZ77PhaseCode) {
    pState->blockState = kernel::kHeaderDue;
    cursor.pairLeft = cursor.pairCount;
    cursor.pairCount = 0;
  } else if (phase == orbLZ77PhaseMatch) {
    cursor.pairCount = 0;
    cursor.pairLeft = kPairs;
  }
  return orbStsNoErr;
}

}  // namespace orb::ORB_BUILD
