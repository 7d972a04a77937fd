// The stored blocks of a deflate stream (RFC 1951, 3.2.4), and the marker that ends a flush.
#ifndef ORB_COMPRESS_PX_INFLATE_STORED_H
#define ORB_COMPRESS_PX_INFLATE_STORED_H

#include "compress/px/inflate_blocks.h"

namespace orb::ORB_BUILD::plain {

// Stops when the next 32 bits are LEN and NLEN of an empty stored block, and leaves them unread.
inline OrbStatus orbFindMarker(BitSource& in) {
  constexpr Orb32u kMarker = 0xFFFF0000;
  in.dropToByte();
  for (;;) {
    if (!in.need(32)) return orbStsSrcShort;
    if (in.bits == kMarker) return orbStsNoErr;
    in.drop(8);
  }
}

inline OrbStatus endStored(OrbLZ77DecState& state) {
  state.decState = kReadHeader;
  return state.finalBlock != 0 ? orbStsStreamEnd : orbStsNoErr;
}

// Reads LEN and NLEN, from a byte boundary on. Bytes that follow are to be copied in the state
// `copying`; without any the block has ended.
inline OrbStatus readStoredLength(OrbLZ77DecState& state, BitSource& in, DecState copying) {
  if (!in.need(32)) return orbStsSrcShort;
  const Orb32u length = in.bits & 65535;
  if (length != (~in.bits >> 16)) return orbStsSizeErr;
  in.clear();
  if (length == 0) return endStored(state);
  state.matchLength = static_cast<Orb32s>(length);
  state.decState = copying;
  return orbStsNoErr;
}

// How many bytes of a stored block can be copied now.
inline Orb32s storedBytes(const OrbLZ77DecState& state, const BitSource& in, ptrdiff_t room) {
  const ptrdiff_t most = in.end - in.at < room ? in.end - in.at : room;
  return static_cast<Orb32s>(limit<ptrdiff_t>(state.matchLength, 0, most));
}

// The same bytes are in the output.
inline OrbStatus consumeStored(OrbLZ77DecState& state, BitSource& in, Orb32s n, bool isFull) {
  in.at += n;
  state.matchLength -= n;
  if (state.matchLength <= 0) return endStored(state);
  return isFull ? orbStsDstFull : orbStsSrcShort;
}

// `end` is behind the room, and `at` moves.
inline OrbStatus orbInflateStored(OrbLZ77DecState& state, BitSource& in, Orb8u*& at,
                                  const Orb8u* end) {
  if (state.decState == kSkipToByte) {
    in.dropToByte();
    state.decState = kReadStoredLength;
  }
  if (state.decState == kReadStoredLength) {
    const OrbStatus status = readStoredLength(state, in, kCopyStored);
    if (status != orbStsNoErr || state.decState != kCopyStored) return status;
  }
  if (state.decState == kCopyHeldBytes) {
    for (; in.count >= 8; *at++ = static_cast<Orb8u>(in.take(8))) {
      if (at == end) return orbStsDstFull;
    }
    state.decState = kCopyStored;
  }
  if (state.decState != kCopyStored) return orbStsErr;
  const Orb32s n = storedBytes(state, in, end - at);
  __builtin_memcpy(at, in.at, static_cast<size_t>(n));
  appendToRing(state, at, n);
  at += n;
  return consumeStored(state, in, n, at == end);
}

inline OrbStatus orbInflateStoredToPairs(OrbLZ77DecState& state, BitSource& in, PairOutput& out) {
  OrbStatus status = orbEnterBlock(state, in, orbLZ77BlockStored);
  if (status != orbStsNoErr) return status;
  if (state.decState == kReadCounts) {
    in.dropToByte();
    status = readStoredLength(state, in, kReadSymbol);
    if (status != orbStsNoErr || state.decState != kReadSymbol) return status;
  }
  if (state.decState != kReadSymbol) return orbStsErr;
  const Orb32s n = storedBytes(state, in, out.end - out.at);
  for (Orb32s i = 0; i < n; ++i) out.putLiteral(in.at[i]);
  return consumeStored(state, in, n, out.isFull());
}

}  // namespace orb::ORB_BUILD::plain

#endif
