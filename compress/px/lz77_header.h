// The header of a dynamic block (RFC 1951, 3.2.7), and what a block costs.
#ifndef ORB_COMPRESS_PX_LZ77_HEADER_H
#define ORB_COMPRESS_PX_LZ77_HEADER_H

#include "compress/px/code_lengths.h"
#include "compress/px/lz77_bits.h"

namespace orb::ORB_BUILD::plain {

constexpr Orb32s kEndOfBlock = 256;

// ---- What a block would cost

struct PairCounts {
  Orb32u symbols[286];
  Orb32u distances[31];  // the last for literals, which have none
  uint64_t bytes;
};

inline void orbCountPairs(const OrbLZ77Pair* pairs, Orb32s count, PairCounts& counts) {
  counts = {};
  for (Orb32s i = 0; i < count; ++i) {
    const OrbLZ77Pair pair = load(pairs + i);
    const PairIndex index = indexOf(pair);
    ++counts.symbols[orbDeflateSymbol[index.symbol]];
    ++counts.distances[index.distanceSymbol];
    counts.bytes += ((pair.lengthOrLiteral - 1u) & ~index.literalMask) + 1;
  }
}

// The bits of all pairs in a code.
inline uint64_t bitsInCode(const PairCounts& counts, const OrbLZ77Codes& codes) {
  uint64_t bits = 0;
  for (Orb32u s = 0; s < 286; ++s) {
    const Orb32u extra = s > kEndOfBlock ? orbDeflateLength[s - 257].extraBits : 0;
    bits += uint64_t{counts.symbols[s]} * (codes.literal[s].length + extra);
  }
  for (Orb32u s = 0; s < 30; ++s) {
    const Orb32u extra = orbDeflateDistance[s].extraBits;
    bits += uint64_t{counts.distances[s]} * (codes.slot[s].length + extra);
  }
  return bits;
}

// ---- The header of a dynamic block (RFC 1951, 3.2.7)

// A symbol of the code-length alphabet and its extra bits, for a run of lengths.
struct LengthRun {
  Orb8u symbol;
  Orb8u extraBits;
  Orb8u extra;
};

struct LengthRuns {
  LengthRun runs[kMaxSymbols + 30];
  Orb32s count = 0;

  void add(Orb32s times, LengthRun run) {
    for (; times > 0; --times) runs[count++] = run;
  }
  // A run never goes on from one list to the next.
  void addList(const Orb8u* lengths, Orb32s symbols) {
    Orb32s previous = -1;
    for (Orb32s i = 0; i < symbols;) {
      const Orb8u length = lengths[i];
      if (length != 0 && length != previous) {
        add(1, {length, 0, 0});
        previous = length;
        ++i;
        continue;
      }
      const Orb32s most = length == 0 ? 138 : 6;
      Orb32s run = 1;
      while (run < most && i + run < symbols && lengths[i + run] == length) ++run;
      if (run < 3) {
        add(run, {length, 0, 0});
      } else if (length != 0) {
        add(1, {16, 2, static_cast<Orb8u>(run - 3)});
      } else if (run < 11) {
        add(1, {17, 3, static_cast<Orb8u>(run - 3)});
      } else {
        add(1, {18, 7, static_cast<Orb8u>(run - 11)});
      }
      previous = length;
      i += run;
    }
  }
};

inline void joinExtraBits(OrbLZ77Codes& codes) {
  for (Orb32u i = 0; i < 256; ++i) {
    codes.joined[i] = codes.literal[i];
    const Orb32u symbol = orbDeflateSymbol[256 + i];
    const OrbLZ77Code code = codes.literal[symbol];
    const OrbDeflateSlot slot = orbDeflateLength[symbol - 257];
    codes.joined[256 + i] = {code.bits | (i + 3 - slot.base) << code.length,
                             code.length + slot.extraBits};
  }
  codes.slot[30] = {0, 0};
}

// The three bits that every block begins with.
enum BlockType : Orb32s { kStoredType = 0, kFixedType = 1, kDynamicType = 2 };

constexpr Orb32s headerBits(BlockType type, bool isLast) {
  return type * 2 + (isLast ? 1 : 0);
}

// Makes the codes of a block with these pairs, and its header. The bytes that wait go into the
// header first, and what does not fill a byte in the end waits in their place.
inline void orbMakeDynamicHeader(OrbLZ77EncState& state, PairCounts& counts) {
  constexpr Orb32s kCodeLengthSymbols = 20;  // the last is never used
  counts.symbols[kEndOfBlock] = 1;
  Orb8u lengths[kMaxSymbols + 30];
  const Orb32s literals = orbMakeCodeLengths(counts.symbols, kMaxSymbols, 15, lengths);
  orbAssignCodes(lengths, kMaxSymbols, state.codes.literal);
  LengthRuns runs;
  runs.addList(lengths, literals);
  const Orb32s distances = orbMakeCodeLengths(counts.distances, 30, 15, lengths);
  orbAssignCodes(lengths, 30, state.codes.slot);
  runs.addList(lengths, distances);
  joinExtraBits(state.codes);

  Orb32u frequencies[kCodeLengthSymbols] = {};
  for (Orb32s i = 0; i < runs.count; ++i) ++frequencies[runs.runs[i].symbol];
  OrbLZ77Code codes[kCodeLengthSymbols];
  orbMakeCodeLengths(frequencies, kCodeLengthSymbols, 7, lengths);
  orbAssignCodes(lengths, kCodeLengthSymbols, codes);
  Orb32s sent = 19;
  while (lengths[orbDeflateCodeLengthOrder[static_cast<size_t>(sent) - 1]] == 0) --sent;

  BitSink out = {state.header, sizeof state.header, state.bitAcc, state.bitCount};
  const auto put = [&](Orb32s value, Orb32u length) {
    out.writeWholeBytes();
    out.put(static_cast<Orb32u>(value), length);
  };
  const bool isLast = state.lastFlush == orbLZ77FlushFinish && state.srcLeft == 0;
  put(headerBits(kDynamicType, isLast), 3);
  put(literals - 257, 5);
  put(distances - 1, 5);
  put(sent - 4, 4);
  for (Orb32s i = 0; i < sent; ++i) {
    put(lengths[orbDeflateCodeLengthOrder[static_cast<size_t>(i)]], 3);
  }
  for (Orb32s i = 0; i < runs.count; ++i) {
    const LengthRun run = runs.runs[i];
    const OrbLZ77Code code = codes[run.symbol];
    put(static_cast<Orb32s>(code.bits | static_cast<Orb32u>(run.extra) << code.length),
        code.length + run.extraBits);
  }
  out.writeWholeBytes();
  state.headerLen = static_cast<Orb32s>(sizeof state.header) - out.room;
  state.headerSent = 0;
  state.bitAcc = out.acc;
  state.bitCount = out.count;
}

}  // namespace orb::ORB_BUILD::plain

#endif
