// What the coding passes know of a code-block's samples (ITU-T T.800 annex D): encoder and decoder
// share it.
//
// A block is scanned in stripes of four rows, and in each stripe column by column. One word stands
// for the four samples of a stripe's column, so that a pass finds out with a few operations, and
// without a look at the samples, which of the four are its own:
//
//   bits 0..17    significance of the 3x6 neighbourhood: the row above the stripe, its four rows,
//                 the row below; from west to east in each
//   bit 18        the sample above is negative
//   bits 19..30   of each of the four rows: negative; visited in this plane's significance pass;
//                 refined at least once
//   bit 31        the sample below is negative
//
// A row's significance, its visited bit and its refined bit are all three bits apart, so masks of
// rows line up by a shift. A sample reports its significance to the words around it when it becomes
// significant. Around the block there is a word of margin on each side, which takes such reports
// and is never coded.
#ifndef ORB_JPEG2K_PX_STRIPE_WORDS_H
#define ORB_JPEG2K_PX_STRIPE_WORDS_H

#include "frame/memory_access.h"
#include "jpeg2k/tables/contexts.h"
#include "jpeg2k/tables/mq.h"

namespace orb::ORB_BUILD::plain {

// ---- Bits of a word

// A row is known by how far its bits are above those of the first row: 0, 3, 6 or 9. The row above
// the stripe and the row below it are known in the same way.
constexpr Orb32s kRowAbove = -3;
constexpr Orb32s kRowBelow = 12;
constexpr Orb32s indexOf(Orb32s row) {
  return row * 11 >> 5;
}

// The significance of a row's own sample, which is also the row's place in a mask of rows.
constexpr Orb32u significant(Orb32s row) {
  return 1u << (row + 4);
}
constexpr Orb32u kAllRows = significant(0) | significant(3) | significant(6) | significant(9);
constexpr Orb32s kVisitedShift = 16;  // from a row's place in a mask
constexpr Orb32s kRefinedShift = 17;
constexpr Orb32u kAllVisited = kAllRows << kVisitedShift;

// Where the sign of a row's sample stands.
constexpr Orb32s negativeBit(Orb32s row) {
  return row == kRowAbove ? 18 : row + 19;
}

// The rows of a stripe that `height` rows are left for, as a mask.
inline Orb32u rowsOfStripe(Orb32s height) {
  return height >= 4 ? kAllRows : kAllRows & (significant(3 * height) - 1);
}

// Takes the first row out of a mask.
inline Orb32s takeRow(Orb32u& rows) {
  const Orb32s row = __builtin_ctz(rows) - 4;
  rows &= rows - 1;
  return row;
}

// The rows that have a significant neighbour and are not significant themselves.
inline Orb32u rowsWithNeighbours(Orb32u word) {
  const Orb32u byRow = word << 1 | word | word >> 1;  // at the place of the middle column
  return (byRow << 3 | byRow | byRow >> 3) & kAllRows & ~word;
}
inline Orb32u rowsToRefine(Orb32u word) {
  return word & kAllRows & ~(word >> kVisitedShift);
}
inline Orb32u rowsToCleanUp(Orb32u word) {
  return kAllRows & ~(word | word >> kVisitedShift);
}

// ---- Contexts

// The words of the MQ coder's states with which a block starts.
inline void resetContexts(Orb32u* contexts) {
  for (int i = 0; i < orbContextCount; ++i) contexts[i] = orbMqStates[orbContextStart[i]];
}

// By the `subband` argument: 2 for HL, 3 for HH, any other for LL and LH.
inline const OrbTable<uint8_t, 512>& zeroCodingOf(Orb32s subband) {
  return orbZeroCodingContexts[subband == 2   ? orbZeroCodingHl
                               : subband == 3 ? orbZeroCodingHh
                                              : orbZeroCodingLlLh];
}

inline Orb32u zeroCodingContext(Orb32u word, Orb32s row, const OrbTable<uint8_t, 512>& contexts) {
  return contexts[word >> row & 511];
}

// The entry of orbSignContexts for the sample of a row.
inline Orb32u signContext(Orb32u word, const Orb32u* at, Orb32s row) {
  const Orb32u significance = word >> row & 0xAA;
  const Orb32u north = word >> negativeBit(row - 3) & 1;
  const Orb32u west = at[-1] >> negativeBit(row) & 1;
  const Orb32u east = at[1] >> negativeBit(row) & 1;
  const Orb32u south = word >> negativeBit(row + 3) & 1;
  return orbSignContexts[significance | north | west << 2 | east << 4 | south << 6];
}

inline Orb32u refinementContext(Orb32u word, Orb32s row) {
  const Orb32u isRefined = word >> row >> (4 + kRefinedShift) & 1;
  const Orb32u hasNeighbours = (word >> row & 0x1EF) != 0;
  return orbRefinementContext + (isRefined << 1 | (hasNeighbours & ~isRefined));
}

// ---- The words of a block

// `words` is that of the first column in the first stripe; those of the next stripe are `stride`
// words away.
struct StripeWords {
  Orb32u* words;
  ptrdiff_t stride;
};

// The number of words with their margins, and the number of stripes.
inline int64_t stripesOf(Orb32s height) {
  return (static_cast<int64_t>(height) + 3) / 4;
}
inline int64_t stripeWordCount(OrbiSize size) {
  return (static_cast<int64_t>(size.width) + 2) * (stripesOf(size.height) + 2);
}

inline StripeWords stripeWordsIn(Orb32u* memory, Orb32s width) {
  const ptrdiff_t stride = static_cast<ptrdiff_t>(width) + 2;
  return {memory + stride + 1, stride};
}

// Tells the words of three columns that a sample of a row in the middle one is significant.
inline void reportSignificance(Orb32u* at, Orb32s row, Orb32u isNegative) {
  at[-1] |= significant(row) << 1;
  at[0] |= significant(row) | isNegative << negativeBit(row);
  at[1] |= significant(row) >> 1;
}

// The sample of a row becomes significant. With causal contexts a stripe knows nothing of the next
// one, so the first row does not report upwards.
inline void becomeSignificant(Orb32u* at, ptrdiff_t stride, Orb32s row, Orb32u isNegative,
                              bool isCausal) {
  reportSignificance(at, row, isNegative);
  if (row == 0 && !isCausal) reportSignificance(at - stride, kRowBelow, isNegative);
  if (row == 9) reportSignificance(at + stride, kRowAbove, isNegative);
}

// ---- Scanning

// A code-block in sign-magnitude form, and what is known of it.
template <class Sample>
struct CodeBlock {
  Sample* samples;
  Orb32s step;
  OrbiSize size;
  StripeWords words;
  const OrbTable<uint8_t, 512>* zeroCoding;
  bool isCausal;
};

// Calls kVisit(pass, word, first sample, rows) for each stripe's column of pass.block in the order
// of the scan, with the rows that there are as a mask. It works on a copy of the pass, so that
// compilers keep what changes in registers.
template <auto kVisit, class Pass>
[[gnu::noinline]] inline void scanStripes(Pass& outer) {
  Pass pass = outer;
  Orb32u* at = pass.block.words.words;
  auto* samples = pass.block.samples;
  for (Orb32s left = pass.block.size.height; left > 0; left -= 4) {
    const Orb32u rows = rowsOfStripe(left);
    for (Orb32s x = 0; x < pass.block.size.width; ++x) kVisit(pass, at + x, samples + x, rows);
    at += pass.block.words.stride;
    samples = rowAt(samples, pass.block.step, 4);
  }
  outer = pass;
}

}  // namespace orb::ORB_BUILD::plain

#endif
