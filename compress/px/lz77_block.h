// The coders of deflate's blocks. Each goes on where it stopped for want of room.
#ifndef ORB_COMPRESS_PX_LZ77_BLOCK_H
#define ORB_COMPRESS_PX_LZ77_BLOCK_H

#include "compress/px/lz77_header.h"
#include "frame/arith.h"

namespace orb::ORB_BUILD::plain {

// Where the coder of a block stands. A new record is at none of these.
enum BlockState : Orb32s {
  kHeaderDue = 2,
  kInBlock = 3,
  kBlockEnded = 4,
  kStreamEnded = 5,
};

inline OrbStatus stopForRoom(OrbLZ77EncState& state) {
  state.blockState = kInBlock;
  return orbStsDstFull;
}

inline OrbStatus endBlock(OrbLZ77EncState& state) {
  state.blockState = kBlockEnded;
  state.headerReady = 0;
  return orbStsNoErr;
}

// ---- Endings

inline bool asksForMarker(OrbLZ77Flush flush) {
  return flush == orbLZ77FlushSync || flush == orbLZ77FlushRestart;
}

// The rest of the marker: the lengths of an empty stored block, whose header is out already or in
// the bits that wait.
inline OrbStatus putMarker(OrbLZ77EncState& state, BitSink& out) {
  out.writeWholeBytes();
  Orb32s left = limit(Orb32s{state.syncBytesLeft}, 0, 4);
  for (; out.count == 0 && left > 0 && out.room > 0; --left) out.writeByte(left > 2 ? 0x00 : 0xFF);
  state.syncBytesLeft = left;
  return left > 0 ? stopForRoom(state) : endBlock(state);
}

inline OrbStatus finishStream(OrbLZ77EncState& state, BitSink& out) {
  out.padToByte();
  out.writeWholeBytes();
  if (out.count > 0) return stopForRoom(state);
  endBlock(state);
  state.blockState = kStreamEnded;
  return state.srcLeft == 0 ? orbStsStreamEnd : orbStsNoErr;
}

// What follows the end-of-block code.
inline OrbStatus finishBlock(OrbLZ77EncState& state, BitSink& out, OrbLZ77Flush flush) {
  if (asksForMarker(flush)) {
    out.putZeros(3);  // the header of an empty stored block
    out.padToByte();
    state.syncBytesLeft = 4;
    return putMarker(state, out);
  }
  if (flush == orbLZ77FlushFinish && state.srcLeft == 0) return finishStream(state, out);
  return endBlock(state);
}

// A call without pairs behind the beginning of a block goes on with what a flush has begun. Returns
// false if there is no such thing.
inline bool resumeEnding(OrbLZ77EncState& state, BitSink& out, OrbLZ77Flush flush,
                         OrbStatus& status) {
  if (asksForMarker(flush) && state.syncBytesLeft != 0) {
    status = putMarker(state, out);
    return true;
  }
  if (flush == orbLZ77FlushFinish) {
    status = finishStream(state, out);
    return true;
  }
  return false;
}

// ---- Pairs to a block

// The cursors of a call.
struct BlockCall {
  const OrbLZ77Pair* pairs;
  Orb32s pairsLeft;
  OrbLZ77Flush flush;
  BitSink out;
};

// The bits in front of the block. If a header was made and is not used, those in front of it.
inline void takeBits(const OrbLZ77EncState& state, BitSink& out) {
  out.acc = state.headerReady ? state.savedAcc : state.bitAcc;
  out.count = state.headerReady ? state.savedBitCount : state.bitCount;
}

// Blocks without pairs can pile up bits where there is next to no room. What a block with pairs
// leaves is never too much for a header behind it.
inline bool isCrowded(const BitSink& out) {
  return out.count > 56;
}

inline OrbStatus orbCodeFixed(OrbLZ77EncState& state, BlockCall& call) {
  BitSink& out = call.out;
  takeBits(state, out);
  state.headerReady = 0;
  out.writeWholeBytes();
  if (state.blockState == kHeaderDue) {
    if (isCrowded(out)) return orbStsDstFull;
    const bool isLast = call.flush == orbLZ77FlushFinish && state.srcLeft == 0;
    out.put(headerBits(kFixedType, isLast), 3);
  } else if (call.pairsLeft == 0) {
    OrbStatus status;
    return resumeEnding(state, out, call.flush, status) ? status : endBlock(state);
  }
  orbPutPairs(out, orbDeflateFixedCodes, call.pairs, call.pairsLeft);
  if (call.pairsLeft > 0) return stopForRoom(state);
  out.putZeros(7);  // the end of the block
  return finishBlock(state, out, call.flush);
}

// Returns false if that takes all the room there is.
inline bool sendHeader(OrbLZ77EncState& state, BitSink& out) {
  const Orb32s length = limit(Orb32s{state.headerLen}, 0, Orb32s{sizeof state.header});
  const Orb32s sent = limit(Orb32s{state.headerSent}, 0, length);
  const Orb32s now = length - sent < out.room ? length - sent : out.room;
  __builtin_memcpy(out.dst, state.header + sent, static_cast<size_t>(now));
  out.dst += now;
  out.room -= now;
  state.headerSent = sent + now;
  if (out.room == 0) return false;
  state.headerLen = 0;
  return true;
}

inline OrbStatus orbCodeDynamic(OrbLZ77EncState& state, BlockCall& call) {
  BitSink& out = call.out;
  const bool begins = state.blockState == kHeaderDue || state.headerLen != 0;
  out.acc = state.bitAcc;
  out.count = state.bitCount;
  if (state.headerLen != 0 && !sendHeader(state, out)) return stopForRoom(state);
  if (state.blockState == kHeaderDue) {
    state.lastFlush = call.flush;
    if (!state.headerReady) {
      PairCounts counts;
      orbCountPairs(call.pairs, call.pairsLeft, counts);
      orbMakeDynamicHeader(state, counts);
      out.acc = state.bitAcc;
      out.count = state.bitCount;
      if (!sendHeader(state, out)) return stopForRoom(state);
    }
  }
  out.writeWholeBytes();
  if (call.pairsLeft == 0 && !begins) {
    OrbStatus status;
    if (resumeEnding(state, out, call.flush, status)) return status;
    const OrbLZ77Code end = state.codes.literal[kEndOfBlock];
    out.put(end.bits, end.length);
    return endBlock(state);
  }
  orbPutPairs(out, state.codes, call.pairs, call.pairsLeft);
  if (call.pairsLeft > 0) return stopForRoom(state);
  const OrbLZ77Code end = state.codes.literal[kEndOfBlock];
  out.put(end.bits, end.length);
  return finishBlock(state, out, call.flush);
}

inline OrbLZ77BlockMode orbSelectMode(OrbLZ77EncState& state, const OrbLZ77Pair* pairs,
                                      Orb32s count) {
  state.savedAcc = state.bitAcc;
  state.savedBitCount = state.bitCount;
  PairCounts counts;
  orbCountPairs(pairs, count, counts);
  orbMakeDynamicHeader(state, counts);
  counts.symbols[kEndOfBlock] = 0;  // is the same in both codes
  const uint64_t stored = 32 + 8 * counts.bytes;
  const uint64_t fixed = 3 + bitsInCode(counts, orbDeflateFixedCodes);
  const uint64_t dynamic =
      3 + 8 * static_cast<uint64_t>(state.headerLen) + bitsInCode(counts, state.codes);
  if (stored < fixed && stored < dynamic) return orbLZ77BlockStored;
  return fixed < dynamic ? orbLZ77BlockFixed : orbLZ77BlockDynamic;
}

// ---- Bytes to stored blocks

struct StoredCall {
  const Orb8u* src;
  Orb32s srcLeft;
  OrbLZ77Flush flush;
  BitSink out;
};

// What has been done of a block.
enum StoredStage : Orb32s { kNothing = 0, kType = 1, kLengths = 2, kHeader = 3 };

inline OrbStatus orbCodeStored(OrbLZ77EncState& state, StoredCall& call) {
  BitSink& out = call.out;
  takeBits(state, out);
  do {
    if (out.room == 0) return orbStsDstFull;
    if (state.syncBytesLeft == kNothing) {
      out.writeWholeBytes();
      if (isCrowded(out)) return orbStsDstFull;
      out.put(headerBits(kStoredType, call.flush == orbLZ77FlushFinish), 3);
      out.padToByte();
      state.syncBytesLeft = kType;
    }
    if (state.syncBytesLeft == kType) {
      out.writeWholeBytes();
      if (out.count > 0) return orbStsDstFull;
      state.storedLeft = call.srcLeft < 65535 ? call.srcLeft : 65535;
      const Orb32u length = static_cast<Orb32u>(state.storedLeft);
      out.put(length | (~length & 65535) << 16, 32);
      state.syncBytesLeft = kLengths;
    }
    if (state.syncBytesLeft == kLengths) {
      out.writeWholeBytes();
      if (out.count > 0) return orbStsDstFull;
      state.syncBytesLeft = kHeader;
    }
    Orb32s now = limit(Orb32s{state.storedLeft}, 0, call.srcLeft);
    if (now > out.room) now = out.room;
    __builtin_memcpy(out.dst, call.src, static_cast<size_t>(now));
    call.src += now;
    call.srcLeft -= now;
    out.dst += now;
    out.room -= now;
    state.storedLeft -= now;
    if (state.storedLeft > 0) return orbStsDstFull;
    state.syncBytesLeft = kNothing;
  } while (call.srcLeft > 0);
  if (call.flush != orbLZ77FlushFinish) return orbStsNoErr;
  state.blockState = kStreamEnded;
  return orbStsStreamEnd;
}

// ---- The trailer (RFC 1950 2.2, RFC 1952 2.3.1)

// The checksum of RFC 1950 has its highest byte first, those of RFC 1952 their lowest.
inline void orbMakeTail(OrbLZ77EncState& state) {
  const Orb32u checksum = state.checksum;
  if (state.checksumKind == orbLZ77ChecksumAdler32) {
    store(reinterpret_cast<Orb32u*>(state.tail), __builtin_bswap32(checksum));
  } else {
    store(reinterpret_cast<Orb32u*>(state.tail), checksum);
    store(reinterpret_cast<Orb32u*>(state.tail + 4), static_cast<Orb32u>(state.position));
  }
}

// Writes the rest of the trailer, with room for a byte at least, and a zero behind each byte that
// is not the last there is room for.
inline OrbStatus orbPutTail(OrbLZ77EncState& state, Orb8u*& dst, Orb32s& room) {
  const Orb32s length = state.checksumKind == orbLZ77ChecksumAdler32 ? 4 : 8;
  Orb32s index = limit(Orb32s{state.tailIndex}, 0, length - 1);
  do {
    *dst++ = state.tail[index++];
    if (--room > 0) *dst = 0;
  } while (index < length && room > 0);
  if (index < length) {
    state.tailIndex = index;
    return stopForRoom(state);
  }
  state.tailIndex = 0;
  state.blockState = kStreamEnded;
  return orbStsNoErr;
}

}  // namespace orb::ORB_BUILD::plain

#endif
