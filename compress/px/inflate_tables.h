// Decoding tables of deflate's codes (RFC 1951, 3.2.2), made from the lengths of a code's symbols.
#ifndef ORB_COMPRESS_PX_INFLATE_TABLES_H
#define ORB_COMPRESS_PX_INFLATE_TABLES_H

#include "compress/lz77_records.h"
#include "frame/build.h"

namespace orb::ORB_BUILD::plain {

constexpr Orb32s kLongestCode = 15;
// A code of one symbol that is longer than this is refused.
constexpr Orb32s kLongestSingleCode = 10;

inline bool isLiteral(Orb32u entry) {
  return (entry & kInflateLiteral) != 0;
}
inline bool isSpecial(Orb32u entry) {
  return (entry & kInflateSpecial) != 0;
}
inline bool isLink(Orb32u entry) {
  return (entry & kInflateLink) == kInflateLink;
}
inline bool isEnd(Orb32u entry) {
  return (entry & kInflateEnd) == kInflateEnd;
}
inline Orb32u bitsOf(Orb32u entry) {
  return entry & 255;
}
inline Orb32u codeBitsOf(Orb32u entry) {
  return entry >> 8 & 31;
}
// Of a literal its low 8 bits.
inline Orb32u valueOf(Orb32u entry) {
  return entry >> 16;
}

// The entry that a link leads to, by the bits behind the root. `entries` are as many as the table
// may have.
inline Orb32u linkedEntry(const OrbInflateEntry* table, Orb32u entries, Orb32u link, Orb32u bits) {
  const Orb32u index = valueOf(link) + (bits & ((1u << codeBitsOf(link)) - 1));
  // Only in a damaged record is there nothing.
  return index < entries ? table[index].word : kInflateSpecial;
}

// The symbols of a code, counted by length.
struct CodeLengths {
  const Orb8u* lengths;  // by symbol, 0 for one without a code
  Orb32s symbols;
  Orb16u count[kLongestCode + 1] = {};

  CodeLengths(const Orb8u* lens, Orb32s n) : lengths(lens), symbols(n) {
    for (Orb32s i = 0; i < n; ++i) ++count[lengths[i] & 15];
  }

  // Whether the code is complete: every sequence of bits begins with one of its codes, and with no
  // more than one.
  bool isComplete() const {
    Orb32s unused = 1;
    for (Orb32s length = 1; length <= kLongestCode; ++length) {
      unused = unused * 2 - count[length];
      if (unused < 0) return false;
    }
    return unused == 0;
  }
  // The length of the only code there is, or 0.
  Orb32s single() const {
    if (symbols - count[0] != 1) return 0;
    Orb32s length = 1;
    while (count[length] == 0) ++length;
    return length;
  }
};

// Makes the table of a complete code, or of a single one of no more bits than the root, whose other
// entries then are those of no symbol.
inline void orbMakeInflateTable(const CodeLengths& code, const Orb32u* symbolEntries,
                                Orb32s rootBits, OrbInflateEntry* table) {
  // The symbols by length.
  Orb16u sorted[kInflateLiteralSymbols];
  Orb16u next[kLongestCode + 1] = {};
  for (Orb32s length = 1; length < kLongestCode; ++length) {
    next[length + 1] = static_cast<Orb16u>(next[length] + code.count[length]);
  }
  for (Orb32s i = 0; i < code.symbols; ++i) {
    const Orb32s length = code.lengths[i] & 15;
    if (length != 0) sorted[next[length]++] = static_cast<Orb16u>(i);
  }

  const Orb32s single = code.single();
  if (single != 0) {
    for (Orb32u i = 0; i < 1u << rootBits; ++i) {
      table[i].word = kInflateSpecial + static_cast<Orb32u>(single) * kInflateCodeBit;
    }
  }

  Orb16u left[kLongestCode + 1];  // codes that are still to come, by length
  __builtin_memcpy(left, code.count, sizeof left);
  const Orb32u rootMask = (1u << rootBits) - 1;
  Orb32u end = 1u << rootBits;
  Orb32u prefix = end;  // of the sub-table at hand; none so far
  Orb32u subTable = 0;
  Orb32s subBits = 0;
  Orb32u index = 0;  // the code, its first bit lowest
  const Orb16u* symbol = sorted;
  for (Orb32s length = 1; length <= kLongestCode; ++length) {
    for (; left[length] > 0; --left[length]) {
      Orb32u entry = symbolEntries[*symbol++];
      if (length <= rootBits) {
        entry += static_cast<Orb32u>(length) * kInflateCodeBit;
        for (Orb32u i = index; i <= rootMask; i += 1u << length) table[i].word = entry;
      } else {
        if ((index & rootMask) != prefix) {
          prefix = index & rootMask;
          // As many bits as the codes to come with this prefix need.
          subBits = length - rootBits;
          for (Orb32s room = 1 << subBits; subBits < kLongestCode - rootBits; ++subBits) {
            room -= left[rootBits + subBits];
            if (room <= 0) break;
            room <<= 1;
          }
          subTable = end;
          end += 1u << subBits;
          table[prefix].word = kInflateLink | subTable << 16 | static_cast<Orb32u>(subBits) << 8 |
                               static_cast<Orb32u>(rootBits);
        }
        entry += static_cast<Orb32u>(length - rootBits) * kInflateCodeBit;
        for (Orb32u i = index >> rootBits; i < 1u << subBits; i += 1u << (length - rootBits)) {
          table[subTable + i].word = entry;
        }
      }
      // The next code of this length, carried from its last bit to its first.
      Orb32u bit = 1u << (length - 1);
      while ((index & bit) != 0) bit >>= 1;
      index = bit != 0 ? (index & (bit - 1)) | bit : 0;
    }
  }
}

}  // namespace orb::ORB_BUILD::plain

#endif
