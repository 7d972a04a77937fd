// Tables that decode deflate's codes (RFC 1951, 3.2.2 and 3.2.5 to 3.2.7).
//
// A table is indexed by the next bits of the stream, as many as its root has. Where a code is
// longer, the entry is a link to a sub-table, which the bits that follow index. An entry:
//
//   bits 0-7    how many bits of the stream it stands for, the extra bits of a length or distance
//               among them; in a link, those of the root
//   bits 8-12   how many of them are the code; in a link, how many bits index the sub-table
//   bits 13-15  the marks kInflateEnd, kInflateLink, kInflateSpecial
//   bits 16-30  a literal, or a code length or repeat; the base of a length or a distance; in a
//               link, where the sub-table begins, counted from where the table does
//   bit 31      the mark kInflateLiteral
#ifndef ORB_COMPRESS_TABLES_INFLATE_H
#define ORB_COMPRESS_TABLES_INFLATE_H

#include <stdint.h>

#include "frame/table.h"

namespace orb {

constexpr uint32_t kInflateLiteral = 1u << 31;
// Not to be taken as a literal or a base. Without one of the other two marks: no symbol of the
// stream.
constexpr uint32_t kInflateSpecial = 1u << 15;
constexpr uint32_t kInflateLink = kInflateSpecial | 1u << 14;
constexpr uint32_t kInflateEnd = kInflateSpecial | 1u << 13;

// What a bit of code adds to an entry.
constexpr uint32_t kInflateCodeBit = 0x101;

constexpr uint32_t kInflateLiteralSymbols = 288;
constexpr uint32_t kInflateDistanceSymbols = 32;
constexpr uint32_t kInflateLengthSymbols = 19;

// Roots that most codes fit into. Complete codes of so many symbols, of up to 15 bits, make tables
// of at most so many entries, the sub-tables included.
constexpr uint32_t kInflateLiteralRoot = 10;
constexpr uint32_t kInflateLiteralEntries = 1334;
constexpr uint32_t kInflateDistanceRoot = 8;
constexpr uint32_t kInflateDistanceEntries = 402;
constexpr uint32_t kInflateLengthRoot = 7;

// The two tables of a block stand in one: first distances, then literals and lengths.
constexpr uint32_t kInflateEntries = kInflateDistanceEntries + kInflateLiteralEntries;

// An entry where it stands in a table, at any address.
struct [[gnu::packed]] OrbInflateEntry {
  uint32_t word;
};

// The entry of each symbol, without its code.
extern const OrbTable<uint32_t, kInflateLiteralSymbols> orbInflateLiterals;
extern const OrbTable<uint32_t, kInflateDistanceSymbols> orbInflateDistances;
extern const OrbTable<uint32_t, kInflateLengthSymbols> orbInflateLengths;

// The two tables of the fixed codes.
constexpr uint32_t kInflateFixedEntries = kInflateDistanceEntries + (1u << kInflateLiteralRoot);
extern const OrbTable<OrbInflateEntry, kInflateFixedEntries> orbInflateFixed;

// How to repeat a few bytes: `factor` makes a word of copies of them, and the first `step` bytes of
// it are whole copies. By the number of bytes, 1 to 7.
struct OrbInflateRepetition {
  uint64_t factor;
  uint32_t step;
};
extern const OrbTable<OrbInflateRepetition, 8> orbInflateRepetitions;

}  // namespace orb

#endif
