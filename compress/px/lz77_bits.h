// Pairs to bits (RFC 1951, 3.2.5): what coding a pair and counting it have in common, and the
// writer.
#ifndef ORB_COMPRESS_PX_LZ77_BITS_H
#define ORB_COMPRESS_PX_LZ77_BITS_H

#include "compress/lz77_records.h"
#include "compress/tables/deflate.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD::plain {

// ---- Bits

// The destination may end anywhere. Bits that did not go out wait in the record, at most 62 of
// them: up to 7 in front of a pair, up to 48 of the pair, less the byte that there was room for,
// and 15 of the end of the block. Zeros that only fill up are counted and not stored, so a count
// may be higher.
struct BitSink {
  Orb8u* dst;
  Orb32s room;
  uint64_t acc;
  Orb32s count;

  void put(uint64_t bits, Orb32u length) {
    acc |= bits << (count & 63);
    count += static_cast<Orb32s>(length);
  }
  void putZeros(Orb32s n) { count += n; }
  void padToByte() { count = (count + 7) & ~7; }
  void writeByte(Orb8u byte) {
    *dst++ = byte;
    --room;
  }
  // As many as there is room for.
  void writeWholeBytes() {
    for (; count >= 8 && room > 0; count -= 8) {
      writeByte(static_cast<Orb8u>(acc));
      acc >>= 8;
    }
  }
};

// ---- Pairs
//
// A host may hand over any words. What lies outside of its range counts by its low bits: a literal
// by 8, a length less 3 by 8, a distance less 1 by 15.

inline bool isLiteral(OrbLZ77Pair pair) {
  return pair.offset == 0;
}
inline Orb32u symbolOf(OrbLZ77Pair pair) {
  const Orb32u value = pair.lengthOrLiteral;
  return isLiteral(pair) ? value & 255 : orbDeflateSymbol[256 + ((value - 3) & 255)];
}
// Of a match.
inline Orb32u distanceOf(OrbLZ77Pair pair) {
  return (pair.offset - 1u) & 32767;
}
inline Orb32u distanceSymbolOf(Orb32u distance) {
  return orbDeflateDistanceSymbol[distance < 256 ? distance : 256 + (distance >> 7)];
}

struct PairBits {
  uint64_t bits;
  Orb32u length;
};

inline PairBits bitsOfPair(const OrbLZ77Codes& codes, OrbLZ77Pair pair) {
  if (isLiteral(pair)) {
    const OrbLZ77Code literal = codes.literal[pair.lengthOrLiteral & 255];
    return {literal.bits, literal.length};
  }
  const OrbLZ77Code length = codes.length[(pair.lengthOrLiteral - 3u) & 255];
  const Orb32u distance = distanceOf(pair);
  uint64_t bits;
  Orb32u count;
  if (distance < 256) {
    bits = codes.distance[distance].bits;
    count = codes.distance[distance].length;
  } else {
    const Orb32u symbol = distanceSymbolOf(distance);
    const OrbLZ77Code slot = codes.slot[symbol];
    const OrbDeflateSlot extra = orbDeflateDistance[symbol];
    bits = slot.bits | static_cast<uint64_t>(distance + 1 - extra.base) << (slot.length & 63);
    count = slot.length + extra.extraBits;
  }
  return {length.bits | bits << (length.length & 63), length.length + count};
}

// So many pairs take 8 bytes at least.
constexpr Orb32s kLastPairs = 64;

// Codes pairs until they or the room end. What a record's tables hold is not believed as far as it
// leads to memory.
//
// While there is room, whole words are stored; the bytes of them that are not yet due are written
// again by the last pairs, so that in the end nothing lies behind the last byte that is due.
inline void orbPutPairs(BitSink& out, const OrbLZ77Codes& codes, const OrbLZ77Pair*& pairs,
                        Orb32s& left) {
  while (left > kLastPairs && out.room >= 8) {
    const PairBits pair = bitsOfPair(codes, load(pairs++));
    --left;
    out.put(pair.bits, pair.length);
    store(reinterpret_cast<uint64_t*>(out.dst), out.acc);
    const Orb32s bytes = (out.count & 63) >> 3;
    out.dst += bytes;
    out.room -= bytes;
    out.acc >>= bytes * 8;
    out.count &= 7;
  }
  while (left > 0 && out.room > 0) {
    const PairBits pair = bitsOfPair(codes, load(pairs++));
    --left;
    out.put(pair.bits, pair.length);
    out.writeWholeBytes();
  }
}

}  // namespace orb::ORB_BUILD::plain

#endif
