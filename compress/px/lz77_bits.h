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
// Whether a pair is a literal is as good as random, so there is no branch on it: a literal goes the
// way of a match, with no distance.

// Where the tables have what a pair wants. A host may hand over any words: of what lies outside of
// its range the low bits count, 8 of a literal, 8 of a length less 3, 15 of a distance less 1.
struct PairIndex {
  Orb32u symbol;    // in tables of literals and, from 256 on, lengths
  Orb32u distance;  // less 1, or anything
  Orb32u distanceSymbol;
  Orb32u literalMask;  // all ones for a literal, 0 for a match
};

inline PairIndex indexOf(OrbLZ77Pair pair) {
  const Orb32s before = pair.offset - 1;
  const Orb32u literal = static_cast<Orb32u>(before >> 31);
  const Orb32u symbol = ((pair.lengthOrLiteral - (3 & ~literal)) & 255) | (256 & ~literal);
  const Orb32u distance = static_cast<Orb32u>(before) & 32767;
  const Orb32u far = static_cast<Orb32u>((255 - static_cast<Orb32s>(distance)) >> 31);
  const Orb32u place = (distance >> (7 & far)) + (256 & far);
  return {symbol, distance, orbDeflateDistanceSymbol[(place & ~literal) | (kNoDistance & literal)],
          literal};
}

struct PairBits {
  uint64_t bits;
  Orb32u length;
};

inline PairBits bitsOfPair(const OrbLZ77Codes& codes, OrbLZ77Pair pair) {
  const PairIndex index = indexOf(pair);
  const OrbLZ77Code first = codes.joined[index.symbol];
  const OrbLZ77Code slot = codes.slot[index.distanceSymbol];
  const Orb32u extraBits = orbDeflateDistance[index.distanceSymbol].extraBits;
  // Slots begin at multiples of their size, so the extra bits are the low bits.
  const Orb32u extra = index.distance & ((1u << extraBits) - 1);
  const uint64_t second = slot.bits | extra << (slot.length & 31);
  return {first.bits | second << (first.length & 63), first.length + slot.length + extraBits};
}

// So many pairs take 8 bytes at least.
constexpr Orb32s kLastPairs = 64;

// Codes pairs until they or the room end. What a record's tables hold is not believed as far as it
// leads to memory.
//
// While there is room, whole words are stored; the bytes of them that are not yet due are written
// again by the last pairs, so that in the end nothing lies behind the last byte that is due.
inline void orbPutPairs(BitSink& sink, const OrbLZ77Codes& codes, const OrbLZ77Pair*& pairs,
                        Orb32s& left) {
  BitSink out = sink;
  const OrbLZ77Pair* pair = pairs;
  const OrbLZ77Pair* const end = pairs + left;
  while (end - pair > kLastPairs && out.room >= 8) {
    const PairBits bits = bitsOfPair(codes, load(pair++));
    out.put(bits.bits, bits.length);
    store(reinterpret_cast<uint64_t*>(out.dst), out.acc);
    const Orb32s bytes = (out.count & 63) >> 3;
    out.dst += bytes;
    out.room -= bytes;
    out.acc >>= bytes * 8;
    out.count &= 7;
  }
  while (pair != end && out.room > 0) {
    const PairBits bits = bitsOfPair(codes, load(pair++));
    out.put(bits.bits, bits.length);
    out.writeWholeBytes();
  }
  sink = out;
  pairs = pair;
  left = static_cast<Orb32s>(end - pair);
}

}  // namespace orb::ORB_BUILD::plain

#endif
