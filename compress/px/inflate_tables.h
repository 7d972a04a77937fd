// Decoding tables of deflate's codes (RFC 1951, 3.2.2), made from the lengths of a code's symbols.
#ifndef ORB_COMPRESS_PX_INFLATE_TABLES_H
#define ORB_COMPRESS_PX_INFLATE_TABLES_H

#include "compress/lz77_records.h"
#include "frame/build.h"

namespace orb::ORB_BUILD::plain {

constexpr Orb32u kLongestCode = 15;
// A code of one symbol that is longer than this is refused.
constexpr Orb32u kLongestSingleCode = 10;

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
  Orb32u symbols;
  Orb16u count[kLongestCode + 1] = {};

  CodeLengths(const Orb8u* lens, Orb32u n) : lengths(lens), symbols(n) {
    for (Orb32u i = 0; i < n; ++i) ++count[lengthOf(i)];
  }
  Orb32u lengthOf(Orb32u symbol) const { return lengths[symbol] & kLongestCode; }

  // Whether every sequence of bits begins with one of the codes, and with no more than one.
  bool isComplete() const {
    Orb32s unused = 1;
    for (Orb32u length = 1; length <= kLongestCode; ++length) {
      unused = unused * 2 - count[length];
      if (unused < 0) return false;
    }
    return unused == 0;
  }
  // The length of the only code there is, or 0.
  Orb32u single() const {
    if (symbols - count[0] != 1) return 0;
    Orb32u length = 1;
    while (count[length] == 0) ++length;
    return length;
  }
};

// The next code of so many bits, the first bit lowest: the carry goes from the last to the first.
inline Orb32u nextCode(Orb32u code, Orb32u length) {
  Orb32u bit = 1u << (length - 1);
  while ((code & bit) != 0) bit >>= 1;
  return bit != 0 ? (code & (bit - 1)) | bit : 0;
}

// Makes the table of a complete code; or of a single one of no more bits than the root, in which
// every other entry is that of no symbol.
inline void orbMakeInflateTable(const CodeLengths& code, const Orb32u* symbolEntries,
                                Orb32u rootBits, OrbInflateEntry* table) {
  // The symbols in the order of their codes.
  Orb16u sorted[kInflateLiteralSymbols];
  Orb16u next[kLongestCode + 2] = {};
  for (Orb32u length = 1; length <= kLongestCode; ++length) {
    next[length + 1] = static_cast<Orb16u>(next[length] + code.count[length]);
  }
  for (Orb32u i = 0; i < code.symbols; ++i) {
    const Orb32u length = code.lengthOf(i);
    if (length != 0) sorted[next[length]++] = static_cast<Orb16u>(i);
  }

  // Codes of the root: a table of `length` bits holds all shorter ones once it is two tables of a
  // bit less.
  const Orb16u* symbol = sorted;
  Orb32u index = 0;
  table[0].word = kInflateSpecial + code.single() * kInflateCodeBit;
  for (Orb32u length = 1; length <= rootBits; ++length) {
    const Orb32u half = 1u << (length - 1);
    __builtin_memcpy(table + half, table, half * sizeof *table);
    for (Orb32u n = code.count[length]; n > 0; --n) {
      table[index].word = symbolEntries[*symbol++] + length * kInflateCodeBit;
      index = nextCode(index, length);
    }
  }

  // Longer ones. Those that begin with the same bits as the root stand together.
  const Orb32u rootSize = 1u << rootBits;
  Orb32u prefix = rootSize;  // of the sub-table at hand: none so far
  Orb32u subTable = 0;
  Orb32u subBits = 0;
  Orb32u end = rootSize;
  for (Orb32u length = rootBits + 1; length <= kLongestCode; ++length) {
    for (Orb32u left = code.count[length]; left > 0; --left) {
      if (index % rootSize != prefix) {
        prefix = index % rootSize;
        subTable = end;
        // As many bits as it takes for the codes that are still to come to fill it.
        subBits = length - rootBits;
        for (Orb32u codes = left; codes < 1u << subBits;) {
          ++subBits;
          codes = codes * 2 + code.count[rootBits + subBits];
        }
        end += 1u << subBits;
        table[prefix].word = kInflateLink | subTable << 16 | subBits << 8 | rootBits;
      }
      const Orb32u subLength = length - rootBits;
      const Orb32u entry = symbolEntries[*symbol++] + subLength * kInflateCodeBit;
      for (Orb32u i = index / rootSize; i < 1u << subBits; i += 1u << subLength) {
        table[subTable + i].word = entry;
      }
      index = nextCode(index, length);
    }
  }
}

}  // namespace orb::ORB_BUILD::plain

#endif
