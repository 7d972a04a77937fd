// Code lengths by frequency, for the alphabets of a deflate block: a Huffman code (Huffman 1952),
// shortened where it is longer than the format allows.
#ifndef ORB_COMPRESS_PX_CODE_LENGTHS_H
#define ORB_COMPRESS_PX_CODE_LENGTHS_H

#include "compress/lz77_records.h"
#include "compress/px/frequency_sort.h"

namespace orb::ORB_BUILD::plain {

constexpr Orb32s kMaxSymbols = 286;
// A code of length n needs frequencies that add up to more than the Fibonacci number n; frequencies
// have 32 bits.
constexpr Orb32s kMaxTreeDepth = 48;

// Moves leaves up, two at a time, until none is deeper than `limit`: one takes the place of their
// parent, and the other hangs beside a leaf from above the limit.
inline void limitDepths(Orb32s (&counts)[kMaxTreeDepth], Orb32s deepest, Orb32s limit) {
  for (Orb32s depth = deepest; depth > limit; --depth) {
    while (counts[depth] > 0) {
      Orb32s other = limit - 1;
      while (counts[other] == 0) --other;
      counts[depth] -= 2;
      ++counts[depth - 1];
      --counts[other];
      counts[other + 1] += 2;
    }
  }
}

// Stores the length of each symbol's code, 0 for those that do not occur. Returns one above the
// highest symbol with a code. There are always two codes: a symbol alone is joined by another.
inline Orb32s orbMakeCodeLengths(const Orb32u* frequencies, Orb32s symbols, Orb32s limit,
                                 Orb8u* lengths) {
  SymbolFrequency records[kMaxSymbols];
  for (Orb32s i = 0; i < symbols; ++i) {
    records[i] = {frequencies[i], i};
    lengths[i] = 0;
  }
  // Those that occur to the front.
  Orb32s used = 0;
  for (Orb32s last = symbols - 1;; swapRecords(records[used], records[last])) {
    while (used <= last && records[used].frequency != 0) ++used;
    while (used < last && records[last].frequency == 0) --last;
    if (used >= last) break;
  }
  if (used < 2) {
    records[0].frequency = 1;
    used = 2;
  }
  sortByFrequency(records, used);
  Orb32s order[kMaxSymbols];
  for (Orb32s i = 0; i < used; ++i) order[i] = records[i].symbol;

  Orb32s depths[kMaxSymbols] = {};
  const Orb32s deepest = measureTree(records, used, JoinedLabel::kSecond, depths);
  Orb32s counts[kMaxTreeDepth] = {};
  for (Orb32s i = 0; i < used; ++i) ++counts[depths[order[i]]];
  limitDepths(counts, deepest, limit);
  // The rarer a symbol the longer its code. In a tree that was not too deep that is so already.
  Orb32s next = 0;
  Orb32s highest = 0;
  for (Orb32s length = deepest < limit ? deepest : limit; length > 0; --length) {
    for (Orb32s i = 0; i < counts[length]; ++i) {
      const Orb32s symbol = order[next++];
      lengths[symbol] = static_cast<Orb8u>(length);
      if (symbol > highest) highest = symbol;
    }
  }
  return highest + 1;
}

// The low `length` bits, at most 16, in reverse.
inline Orb32u reverseBits(Orb32u bits, Orb32u length) {
  bits = (bits & 0x5555) << 1 | (bits >> 1 & 0x5555);
  bits = (bits & 0x3333) << 2 | (bits >> 2 & 0x3333);
  bits = (bits & 0x0F0F) << 4 | (bits >> 4 & 0x0F0F);
  bits = (bits & 0x00FF) << 8 | (bits >> 8 & 0x00FF);
  return bits >> (16 - length);
}

// The canonical code of these lengths (RFC 1951, 3.2.2), as it goes into the stream.
inline void orbAssignCodes(const Orb8u* lengths, Orb32s symbols, OrbLZ77Code* codes) {
  Orb32u counts[16] = {};
  for (Orb32s i = 0; i < symbols; ++i) ++counts[lengths[i]];
  counts[0] = 0;
  Orb32u next[16] = {};
  for (Orb32s length = 1; length < 15; ++length)
    next[length + 1] = (next[length] + counts[length]) * 2;
  for (Orb32s i = 0; i < symbols; ++i) {
    const Orb32u length = lengths[i];
    codes[i] = {length == 0 ? 0 : reverseBits(next[length]++, length), length};
  }
}

}  // namespace orb::ORB_BUILD::plain

#endif
