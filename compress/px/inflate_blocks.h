// The blocks of a deflate stream (RFC 1951, 3.2.3 to 3.2.7), as a machine that stops wherever its
// source or its output ends, and goes on from there.
#ifndef ORB_COMPRESS_PX_INFLATE_BLOCKS_H
#define ORB_COMPRESS_PX_INFLATE_BLOCKS_H

#include "compress/px/inflate_bits.h"
#include "compress/px/inflate_output.h"
#include "compress/px/inflate_tables.h"
#include "compress/tables/deflate.h"
#include "frame/memory.h"

namespace orb::ORB_BUILD::plain {

// What the decoder is about to do: `decState` of the record.
enum DecState : Orb32s {
  kReadHeader = 0,
  kReadCounts = 1,       // of a dynamic block; LEN of a stored block that becomes pairs
  kReadCodeLengths = 2,  // from `lenIndex`
  kReadLengths = 3,      // from `lenIndex`
  kReadSymbol = 4,       // copy the bytes of a stored block that becomes pairs
  kReadLengthBits = 5,
  kReadDistance = 6,
  kReadDistanceBits = 7,
  kSkipToByte = 8,  // the states of a stored block that becomes bytes
  kReadStoredLength = 9,
  kCopyHeldBytes = 10,
  kCopyStored = 11,
};

// ---- Headers of blocks

struct BlockHeader {
  Orb32s isFinal;
  Orb32u type;  // the two bits of RFC 1951, 3.2.3

  explicit BlockHeader(Orb32u bits) : isFinal(static_cast<Orb32s>(bits & 1)), type(bits >> 1) {}
  bool isReserved() const { return type == 3; }
  OrbLZ77BlockMode mode() const {
    return type == 0 ? orbLZ77BlockStored : type == 1 ? orbLZ77BlockFixed : orbLZ77BlockDynamic;
  }
};

inline void enterBlock(OrbLZ77DecState& state, const BlockHeader& header, DecState next) {
  state.finalBlock = header.isFinal;
  state.blockKind = header.mode();
  state.decState = next;
}

// Reads the header of the next block, if it is not read yet.
inline OrbStatus orbReadBlockType(OrbLZ77DecState& state, BitSource& in,
                                  OrbLZ77BlockMode* pBlockMode) {
  if (state.decState == kReadHeader) {
    if (!in.need(3)) return orbStsSrcShort;
    const BlockHeader header(in.take(3));
    if (header.isReserved()) {
      state.finalBlock = header.isFinal;
      return orbStsNoErr;
    }
    const DecState first[] = {kReadSymbol, kReadCounts, kSkipToByte};
    enterBlock(state, header, first[header.mode()]);
  }
  store(pBlockMode, OrbLZ77BlockMode{state.blockKind});
  return orbStsNoErr;
}

// Makes sure that a coder is within a block of its own kind. A header of another kind stays unread.
inline OrbStatus orbEnterBlock(OrbLZ77DecState& state, BitSource& in, OrbLZ77BlockMode kind) {
  if (state.decState != kReadHeader) return state.blockKind == kind ? orbStsNoErr : orbStsErr;
  const BitSource before = in;
  if (!in.need(3)) return orbStsSrcShort;
  const BlockHeader header(in.take(3));
  if (header.isReserved() || header.mode() != kind) {
    in = before;
    return orbStsErr;
  }
  enterBlock(state, header, kind == orbLZ77BlockFixed ? kReadSymbol : kReadCounts);
  return orbStsNoErr;
}

// ---- Codes

// Looks up the next code, taking bytes until the bits hold a whole one. `codeBits` is its length.
inline bool lookUp(BitSource& in, const OrbInflateEntry* table, Orb32u entries, Orb32u rootBits,
                   Orb32u& entry, Orb32u& codeBits) {
  for (;;) {
    entry = table[in.peek(rootBits)].word;
    codeBits = isLink(entry) ? rootBits : codeBitsOf(entry);
    if (isLink(entry) && in.count >= rootBits) {
      entry = linkedEntry(table, entries, entry, in.bits >> rootBits);
      codeBits += codeBitsOf(entry);
    }
    if (codeBits - 1 >= kLongestCode) {
      // Of no bits or too many: that stands in a damaged record only.
      entry = kInflateSpecial;
      return true;
    }
    if (codeBits <= in.count) return true;
    if (!in.need(in.count + 1)) return false;
  }
}

// ---- The header of a dynamic block

inline OrbStatus readCounts(OrbLZ77DecState& state, BitSource& in) {
  if (!in.need(14)) return orbStsSrcShort;
  state.litCount = static_cast<Orb32s>(in.take(5)) + 257;
  state.distCount = static_cast<Orb32s>(in.take(5)) + 1;
  state.clCount = static_cast<Orb32s>(in.take(4)) + 4;
  state.lenIndex = 0;
  state.decState = kReadCodeLengths;
  return orbStsNoErr;
}

inline OrbStatus readCodeLengths(OrbLZ77DecState& state, BitSource& in) {
  constexpr Orb32s kSymbols = kInflateLengthSymbols;
  Orb8u* const lens = state.header.lens;
  const Orb32s count = limit(Orb32s{state.clCount}, 0, kSymbols);
  Orb32s index = limit(Orb32s{state.lenIndex}, 0, count);
  if (index == 0) __builtin_memset(lens, 0, kSymbols);
  for (; index < count; ++index) {
    state.lenIndex = index;
    if (!in.need(3)) return orbStsSrcShort;
    lens[orbDeflateCodeLengthOrder[static_cast<size_t>(index)]] = static_cast<Orb8u>(in.take(3));
  }
  state.lenIndex = index;
  const CodeLengths code(lens, kInflateLengthSymbols);
  if (!code.isComplete()) return orbStsSizeErr;
  orbMakeInflateTable(code, &orbInflateLengths[0], kInflateLengthRoot, state.header.lengthTable);
  state.lenIndex = 0;
  state.decState = kReadLengths;
  return orbStsNoErr;
}

// A symbol of the code for code lengths (RFC 1951, 3.2.7): one length, or the repetition of the one
// before or of zeros.
struct LengthSymbol {
  Orb32u extraBits;
  Orb32s repeats;  // without what the extra bits add
};
inline LengthSymbol lengthSymbol(Orb32u symbol) {
  if (symbol < 16) return {0, 1};
  if (symbol == 16) return {2, 3};
  if (symbol == 17) return {3, 3};
  return {7, 11};
}

// A symbol is taken with all of its bits or not at all.
inline OrbStatus readLengths(OrbLZ77DecState& state, BitSource& in) {
  const Orb32s literals = limit(Orb32s{state.litCount}, 257, Orb32s{kInflateLiteralSymbols});
  const Orb32s distances = limit(Orb32s{state.distCount}, 1, Orb32s{kInflateDistanceSymbols});
  const Orb32s count = literals + distances;
  Orb32s index = limit(Orb32s{state.lenIndex}, 0, count);
  while (index < count) {
    state.lenIndex = index;
    Orb32u entry, codeBits;
    if (!lookUp(in, state.header.lengthTable, 1 << kInflateLengthRoot, kInflateLengthRoot, entry,
                codeBits)) {
      return orbStsSrcShort;
    }
    const Orb32u symbol = valueOf(entry);
    const LengthSymbol kind = lengthSymbol(symbol);
    if (!in.need(codeBits + kind.extraBits)) return orbStsSrcShort;
    const Orb32s repeats =
        kind.repeats + static_cast<Orb32s>(in.peek(codeBits + kind.extraBits) >> codeBits);
    Orb8u* const lens = state.header.lens;
    if (symbol == 16 && index == 0) return orbStsSizeErr;
    if (repeats > count - index) return orbStsSizeErr;
    in.drop(codeBits + kind.extraBits);
    const Orb32u length = symbol < 16 ? symbol : symbol == 16 ? lens[index - 1] : 0;
    __builtin_memset(lens + index, static_cast<Orb8u>(length), static_cast<size_t>(repeats));
    index += repeats;
  }
  state.lenIndex = index;

  // The tables will stand where the lengths do, so nothing is made before all is known to be sound.
  Orb8u lens[sizeof state.header.lens];
  __builtin_memcpy(lens, state.header.lens, sizeof lens);
  const CodeLengths literalCode(lens, static_cast<Orb32u>(literals));
  const CodeLengths distanceCode(lens + literals, static_cast<Orb32u>(distances));
  const Orb32u single = literalCode.single();
  const bool isSound = single != 0 ? single <= kLongestSingleCode : literalCode.isComplete();
  if (!isSound || !distanceCode.isComplete()) return orbStsSizeErr;
  orbMakeInflateTable(distanceCode, &orbInflateDistances[0], kInflateDistanceRoot, state.codes);
  orbMakeInflateTable(literalCode, &orbInflateLiterals[0], kInflateLiteralRoot,
                      state.codes + kInflateDistanceEntries);
  state.decState = kReadSymbol;
  return orbStsNoErr;
}

inline OrbStatus readDynamicHeader(OrbLZ77DecState& state, BitSource& in) {
  OrbStatus status = orbStsNoErr;
  if (state.decState == kReadCounts) status = readCounts(state, in);
  if (status == orbStsNoErr && state.decState == kReadCodeLengths) {
    status = readCodeLengths(state, in);
  }
  if (status == orbStsNoErr && state.decState == kReadLengths) status = readLengths(state, in);
  return status;
}

// ---- Symbols, while there is plenty of source and room

// Bits in a word of the machine, fetched by the word. `count` is modulo the bits of a word; above
// the bits that it counts stand further ones of the source, those that the next refill adds.
struct FastBits {
  using Word = uintptr_t;
  static constexpr Orb32u kWordBits = sizeof(Word) * 8;
  // What there is behind a refill at least: enough for a length and a distance in the longer word,
  // for the longest part of either in the shorter one.
  static constexpr Orb32u kRefilled = kWordBits - 8;
  static constexpr bool kHoldsMatch = kRefilled >= 15 + 5 + 15 + 13;

  const Orb8u* at;
  Word bits;
  Orb32u count;

  [[gnu::always_inline]] void refill() {
    bits |= load(reinterpret_cast<const Word*>(at)) << count % kWordBits;
    at += ~count / 8 % sizeof(Word);
    count |= kRefilled;
  }
  [[gnu::always_inline]] Orb32u peek(Orb32u n) const {
    return static_cast<Orb32u>(bits) & ((1u << n) - 1);
  }
  // As many bits as the low end of `n` says.
  [[gnu::always_inline]] void drop(Orb32u n) {
    bits >>= n % kWordBits;
    count -= n;
  }
  // The base of an entry and its extra bits.
  [[gnu::always_inline]] Orb32u takeBase(Orb32u entry) {
    const Word low = bits & ((Word{1} << entry % kWordBits) - 1);
    drop(entry);
    return valueOf(entry) + static_cast<Orb32u>(low >> (entry >> 8) % kWordBits);
  }
};

// Whole symbols are decoded until something else comes up, or source or room run low. Both are left
// as if every bit had been taken in turn.
constexpr ptrdiff_t kFastSource = 24;  // five refills
constexpr ptrdiff_t kFastRoom = 3;     // symbols between two looks at the room

template <class Output>
[[gnu::noinline]] inline void decodeFast(const OrbInflateEntry* tables, OrbLZ77DecState& state,
                                         BitSource& in, Output& output) {
  if (in.end - in.at < kFastSource || in.count > 24 || !output.hasRoomFor(kFastRoom)) return;
  const OrbInflateEntry* const distances = tables;
  const OrbInflateEntry* const literals = tables + kInflateDistanceEntries;
  const Orb8u* const last = in.end - kFastSource;
  FastBits bits = {in.at, in.bits, in.count};
  Output out = output;
  bits.refill();
  Orb32u entry = literals[bits.peek(kInflateLiteralRoot)].word;
  do {
    const auto takeLiteral = [&] {
      bits.drop(entry);
      out.putLiteral(valueOf(entry));
      entry = literals[bits.peek(kInflateLiteralRoot)].word;
    };
    if (isLiteral(entry)) {
      takeLiteral();
      if (isLiteral(entry)) {
        takeLiteral();
        if (!FastBits::kHoldsMatch) {
          bits.refill();
          continue;
        }
        if (isLiteral(entry)) {
          takeLiteral();
          bits.refill();
          continue;
        }
      }
      bits.refill();
    }
    if (isSpecial(entry)) {
      if (!isLink(entry)) break;
      const FastBits before = bits;
      bits.drop(entry);
      entry = linkedEntry(literals, kInflateLiteralEntries, entry, static_cast<Orb32u>(bits.bits));
      if (isLiteral(entry)) {
        takeLiteral();
        bits.refill();
        continue;
      }
      if (isSpecial(entry)) {
        bits = before;
        break;
      }
    }
    const Orb32u length = bits.takeBase(entry);
    if (length == 0) break;  // in a damaged record only, but there for ever

    if (!FastBits::kHoldsMatch) bits.refill();
    entry = distances[bits.peek(kInflateDistanceRoot)].word;
    if (isSpecial(entry)) {
      const FastBits before = bits;
      if (isLink(entry)) {
        bits.drop(entry);
        entry =
            linkedEntry(distances, kInflateDistanceEntries, entry, static_cast<Orb32u>(bits.bits));
      }
      if (isSpecial(entry)) {
        bits = before;
        state.matchLength = static_cast<Orb32s>(length);
        state.decState = kReadDistance;
        break;
      }
    }
    if (!FastBits::kHoldsMatch) {
      bits.drop(entry >> 8);
      bits.refill();
      entry -= codeBitsOf(entry) * kInflateCodeBit;
    }
    const Orb32u distance = bits.takeBase(entry);
    // The next symbol is on its way while the match is copied.
    entry = literals[bits.peek(kInflateLiteralRoot)].word;
    bits.refill();
    out.putMatch(static_cast<Orb16u>(length), distance);
  } while (bits.at <= last && out.hasRoomFor(kFastRoom));

  const Orb32u count = bits.count % FastBits::kWordBits;
  const ptrdiff_t taken = bits.at - in.at;
  const ptrdiff_t whole = static_cast<ptrdiff_t>(count / 8);
  const ptrdiff_t unused = whole < taken ? whole : taken;
  in.at = bits.at - unused;
  in.count = (count - static_cast<Orb32u>(unused) * 8) % 32;
  in.bits = static_cast<Orb32u>(bits.bits) & ((1u << in.count) - 1);
  output.at = out.at;
}

// ---- The machine

inline OrbStatus endBlock(OrbLZ77DecState& state, BitSource& in) {
  state.decState = kReadHeader;
  if (state.finalBlock != 1) return orbStsNoErr;
  state.streamEnded = 1;
  in.finish();
  return orbStsStreamEnd;
}

// The next symbol of a block, as far as its code.
template <class Output>
inline OrbStatus readSymbol(const OrbInflateEntry* tables, OrbLZ77DecState& state, BitSource& in,
                            Output& out) {
  if (out.isFull()) return orbStsDstFull;
  Orb32u entry, codeBits;
  if (!lookUp(in, tables + kInflateDistanceEntries, kInflateLiteralEntries, kInflateLiteralRoot,
              entry, codeBits)) {
    return orbStsSrcShort;
  }
  if (isSpecial(entry) && !isEnd(entry)) return orbStsSizeErr;
  in.drop(codeBits);
  if (isEnd(entry)) return endBlock(state, in);
  if (isLiteral(entry)) {
    out.putLiteral(valueOf(entry));
  } else {
    state.matchLength = static_cast<Orb32s>(valueOf(entry));
    state.extraBits = static_cast<Orb32s>(bitsOf(entry) - codeBitsOf(entry));
    state.decState = kReadLengthBits;
  }
  return orbStsNoErr;
}

inline OrbStatus readDistance(const OrbInflateEntry* tables, OrbLZ77DecState& state,
                              BitSource& in) {
  Orb32u entry, codeBits;
  if (!lookUp(in, tables, kInflateDistanceEntries, kInflateDistanceRoot, entry, codeBits)) {
    return orbStsSrcShort;
  }
  if (isSpecial(entry)) return orbStsSizeErr;
  in.drop(codeBits);
  state.matchDistance = static_cast<Orb32s>(valueOf(entry));
  state.extraBits = static_cast<Orb32s>(bitsOf(entry) - codeBitsOf(entry));
  state.decState = kReadDistanceBits;
  return orbStsNoErr;
}

// Decodes the block that the machine is in, or the next one, which has to be of this kind, up to
// its end.
template <class Output>
inline OrbStatus orbInflateBlock(OrbLZ77DecState& state, OrbLZ77BlockMode kind, BitSource& in,
                                 Output& out) {
  OrbStatus status = orbEnterBlock(state, in, kind);
  if (status == orbStsNoErr) status = readDynamicHeader(state, in);
  const OrbInflateEntry* const tables =
      kind == orbLZ77BlockFixed ? &orbInflateFixed[0] : state.codes;
  while (status == orbStsNoErr) {
    switch (state.decState) {
      case kReadSymbol:
        decodeFast(tables, state, in, out);
        if (state.decState != kReadSymbol) break;
        status = readSymbol(tables, state, in, out);
        if (state.decState == kReadHeader) return status;
        break;
      case kReadLengthBits:
      case kReadDistanceBits: {
        const Orb32u extraBits = static_cast<Orb32u>(limit(Orb32s{state.extraBits}, 0, 13));
        if (!in.need(extraBits)) return orbStsSrcShort;
        const Orb32s extra = static_cast<Orb32s>(in.take(extraBits));
        if (state.decState == kReadLengthBits) {
          state.matchLength += extra;
          state.decState = kReadDistance;
        } else {
          state.matchDistance += extra;
          out.putMatch(wrap16u(state.matchLength), static_cast<Orb32u>(state.matchDistance));
          state.decState = kReadSymbol;
        }
        break;
      }
      case kReadDistance:
        status = readDistance(tables, state, in);
        break;
      default:
        // The states of stored blocks.
        return orbStsErr;
    }
  }
  return status;
}

}  // namespace orb::ORB_BUILD::plain

#endif
