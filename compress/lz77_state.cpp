// The records of deflate: size, allocation and what a host reads and writes in them.
#include "compress/lz77_records.h"
#include "frame/build.h"
#include "frame/memory.h"
#include "frame/memory_access.h"

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

OrbStatus ORB_CALL orbsEncodeLZ77GetSize_8u(Orb32s* pSize) {
  if (!pSize) return orbStsNullPtrErr;
  store(pSize, Orb32s{sizeof(OrbLZ77EncState)});
  return orbStsNoErr;
}

}  // namespace orb::ORB_BUILD
