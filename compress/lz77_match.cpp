// The match search of deflate: argument checks, the cursors, then the kernels.
#include "compress/px/lz77_match.h"

#include "compress/px/checksum.h"
#if ORB_SIMD
#include "compress/simd/checksum.h"
#endif

namespace orb::ORB_BUILD {

OrbStatus ORB_CALL orbsEncodeLZ77SetDictionary_8u(const Orb8u* pDict, Orb32s dictLen,
                                                  OrbLZ77EncState* pState) {
  if (!pDict || !pState) return orbStsNullPtrErr;
  if (dictLen < 0) return orbStsSizeErr;
  if (dictLen < kernel::kMinMatch) return orbStsNoErr;
  if (pState->cursor.phase != orbLZ77PhaseInit) return orbStsErr;
  const Orb32s length = dictLen < kernel::kHistory ? dictLen : kernel::kHistory;
  kernel::orbSetHistory(*pState, pDict + dictLen - length, length);
  return orbStsNoErr;
}

static Orb32u checksumOf(Orb32s kind, Orb32u checksum, const Orb8u* src, Orb32s length) {
  if (kind == orbLZ77ChecksumAdler32) return kernel::orbAdler32(checksum, src, length);
  if (kind == orbLZ77ChecksumCRC32) return kernel::orbCrc32Of(checksum, src, length);
  return checksum;
}

OrbStatus ORB_CALL orbsEncodeLZ77_8u(Orb8u** ppSrc, Orb32s* pSrcLen, OrbLZ77Pair** ppPairs,
                                     Orb32s* pPairsLen, OrbLZ77Flush flush,
                                     OrbLZ77EncState* pState) {
  if (!ppSrc || !ppPairs || !pSrcLen || !pPairsLen || !load(ppPairs) || !pState) {
    return orbStsNullPtrErr;
  }
  const Orb32s length = load(pSrcLen);
  if (load(pPairsLen) < 0 || length < 0) return orbStsSizeErr;

  OrbLZ77EncState& state = *pState;
  if (state.position > INT32_MAX - length) kernel::orbRebase(state);
  // A restart counts from the beginning of the stream, where it ought to stand.
  const bool restart = flush == orbLZ77FlushRestart;
  const Orb32s before = restart ? state.position : 0;
  state.srcLeft = before + length;
  state.lastFlush = flush;
  if (load(pPairsLen) == 0) return orbStsDstFull;
  if (length == 0) return orbStsNoErr;
  state.headerReady = 0;

  Orb8u* const src = load(ppSrc);
  const Orb32s used = kernel::orbMakePairs(state, src, length, ppPairs, pPairsLen, restart);
  const Orb32s moved = before + used;
  state.checksum =
      checksumOf(state.checksumKind, state.checksum, src, moved < length ? moved : length);
  if (restart) {
    state.position = 0;
  } else {
    kernel::orbAppendToWindow(state, src, used);
    state.position += used;
  }
  state.srcLeft -= moved;
  store(ppSrc, src + moved);
  store(pSrcLen, length - moved);
  return used < length ? orbStsDstFull : orbStsNoErr;
}

}  // namespace orb::ORB_BUILD
