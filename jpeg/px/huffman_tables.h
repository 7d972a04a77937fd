// Huffman tables: codes from a DHT segment's lists, and such lists from statistics.
#ifndef ORB_JPEG_PX_HUFFMAN_TABLES_H
#define ORB_JPEG_PX_HUFFMAN_TABLES_H

#include "frame/arith.h"
#include "frame/memory.h"
#include "frame/memory_access.h"
#include "jpeg/huffman_records.h"

namespace orb::ORB_BUILD::plain {

// Codes are assigned as T.81 annex C does: the first code of a length is the one behind the last
// code of the length before it, doubled.

inline bool tooManyCodes(const Orb8u* listBits) {
  Orb32s codes = 0;
  for (int length = 1; length <= 16; ++length) codes += listBits[length - 1];
  return codes > 256;
}

// Whether the codes of some length run up to all ones, or need more bits than they have.
inline bool codesOverflow(const Orb8u* listBits) {
  Orb32s code = 0;
  for (int length = 1; length <= 16; ++length) {
    code += listBits[length - 1];
    if (code >= 1 << length) return true;
    code <<= 1;
  }
  return false;
}

inline OrbStatus orbMakeEncodeSpec(const Orb8u* listBits, const Orb8u* listVals,
                                   OrbiEncodeHuffmanSpec& spec) {
  orbZero(&spec, sizeof spec);
  if (tooManyCodes(listBits) || codesOverflow(listBits)) return orbStsJpegHuffTableErr;
  Orb32u code = 0;
  for (Orb32u length = 1; length <= 16; ++length) {
    for (int n = listBits[length - 1]; n > 0; --n) {
      spec.entries[*listVals++] = length << 16 | code++;
    }
    code <<= 1;
  }
  return orbStsNoErr;
}

// Codes of length 16 may run past 16 bits here, and wrap: their prefixes are all taken by shorter
// codes.
inline OrbStatus orbMakeDecodeSpec(const Orb8u* listBits, const Orb8u* listVals,
                                   OrbiDecodeHuffmanSpec& spec) {
  orbZero(&spec, sizeof spec);
  if (tooManyCodes(listBits)) return orbStsJpegHuffTableErr;
  Orb32s position = 0;
  Orb32s code = 0;
  for (int length = 1; length <= 16; ++length) {
    const Orb32s count = listBits[length - 1];
    spec.maxCode[length] = 65535;
    if (count != 0) {
      spec.valOffset[length] = wrap16u(position);
      spec.minCode[length] = wrap16u(code);
      spec.maxCode[length] = wrap16u(code + count - 1);
    }
    for (Orb32s i = 0; i < count; ++i, ++position, ++code) {
      const Orb32u symbol = listVals[position];
      spec.symbols[position] = static_cast<Orb16u>(symbol);
      if (length > 8) continue;
      const Orb32s entries = 1 << (8 - length);
      const Orb32s first = code * entries;
      if (first + entries > 256) return orbStsJpegHuffTableErr;
      for (Orb32s j = 0; j < entries; ++j) {
        spec.lookup[first + j] = static_cast<Orb32u>(length) << 16 | symbol;
      }
    }
    code <<= 1;
  }
  spec.maxCode[17] = 65535;
  return orbStsNoErr;
}

// The grown tree of an optimal table. Number 256 is reserved: it takes the code of all ones, and is
// dropped in the end.
constexpr int kReserved = 256;
constexpr int kTreeSymbols = 257;

// The least nonzero frequency's number, the largest of equals; `except` is left out. -1 if there is
// none, and frequencies above 1000000000 count as none.
inline int rarest(const Orb32s* frequency, int except) {
  int best = -1;
  Orb32s least = 1000000000;
  for (int i = 0; i < kTreeSymbols; ++i) {
    if (i == except || frequency[i] == 0 || frequency[i] > least) continue;
    least = frequency[i];
    best = i;
  }
  return best;
}

// T.81 figure K.1: joins the two rarest trees until one is left. A tree is named by one of its
// symbols, and all of them are chained behind it. Sums may wrap, even to 0, which drops a tree.
inline void growTree(Orb32s* frequency, Orb32s* codeSize) {
  int others[kTreeSymbols];
  for (int i = 0; i < kTreeSymbols; ++i) {
    codeSize[i] = 0;
    others[i] = -1;
  }
  for (;;) {
    const int first = rarest(frequency, -1);
    const int second = first < 0 ? -1 : rarest(frequency, first);
    if (second < 0) return;
    frequency[first] += frequency[second];
    frequency[second] = 0;
    int last = first;
    for (int i = first; i >= 0; i = others[i]) {
      ++codeSize[i];
      last = i;
    }
    others[last] = second;
    for (int i = second; i >= 0; i = others[i]) ++codeSize[i];
  }
}

// T.81 figure K.3: moves codes of more than 16 bits up, two at a time. The trees are full: on their
// lowest level codes come in pairs, and with no more than 257 codes there is always a shorter one
// to be split.
inline void limitTo16Bits(Orb32s* bits) {
  for (int length = 32; length > 16; --length) {
    while (bits[length] > 0) {
      int shorter = length - 2;
      while (bits[shorter] == 0) --shorter;
      bits[length] -= 2;
      bits[length - 1] += 1;
      bits[shorter + 1] += 2;
      bits[shorter] -= 1;
    }
  }
}

inline OrbStatus orbMakeOptimalLists(const Orb32s* statistics, Orb8u* listBits, Orb8u* listVals) {
  Orb32s frequency[kTreeSymbols];
  for (int i = 0; i < kReserved; ++i) frequency[i] = load(statistics + i);
  frequency[kReserved] = 1;
  Orb32s codeSize[kTreeSymbols];
  growTree(frequency, codeSize);

  Orb32s bits[33] = {};
  for (int i = 0; i < kTreeSymbols; ++i) {
    if (codeSize[i] > 32) return orbStsJpegHuffTableErr;
    if (codeSize[i] != 0) ++bits[codeSize[i]];
  }
  limitTo16Bits(bits);
  int longest = 16;
  while (longest > 0 && bits[longest] == 0) --longest;
  if (longest > 0) --bits[longest];

  for (int length = 1; length <= 16; ++length) listBits[length - 1] = wrap8u(bits[length]);
  for (int size = 1; size <= 32; ++size) {
    for (int symbol = 0; symbol < kReserved; ++symbol) {
      if (codeSize[symbol] == size) *listVals++ = wrap8u(symbol);
    }
  }
  return orbStsNoErr;
}

}  // namespace orb::ORB_BUILD::plain

#endif
