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

// The significance of a row's own sample, which is also the row's place in a mask of rows.
constexpr Orb32u significant(int row) {
  return 1u << (3 * row + 4);
}
constexpr Orb32u kAllRows = significant(0) | significant(1) | significant(2) | significant(3);
constexpr int kVisitedShift = 16;  // from a row's place in a mask
constexpr int kRefinedShift = 17;
constexpr Orb32u kAllVisited = kAllRows << kVisitedShift;

// Where the sign of a row's sample stands; -1 is the row above the stripe, 4 the row below.
constexpr int negativeBit(int row) {
  return row < 0 ? 18 : 3 * row + 19;
}

// The rows of a stripe that `height` rows are left for, as a mask.
inline Orb32u rowsOfStripe(Orb32s height) {
  return height >= 4 ? kAllRows : kAllRows & ((1u << (3 * height + 4)) - 1);
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

template <int kRow>
inline Orb32u zeroCodingContext(Orb32u word, const OrbTable<uint8_t, 512>& contexts) {
  return contexts[word >> (3 * kRow) & 511];
}

// A bit of a word, moved to another place.
template <int kFrom, int kTo>
inline Orb32u moveBit(Orb32u word) {
  return (kFrom >= kTo ? word >> (kFrom - kTo) : word << (kTo - kFrom)) & 1u << kTo;
}

// The entry of orbSignContexts for the sample of a row.
template <int kRow>
inline Orb32u signContext(Orb32u word, const Orb32u* at) {
  const Orb32u significance = word >> (3 * kRow) & 0xAA;
  const Orb32u signs =
      moveBit<negativeBit(kRow - 1), 0>(word) | moveBit<negativeBit(kRow), 2>(at[-1]) |
      moveBit<negativeBit(kRow), 4>(at[1]) | moveBit<negativeBit(kRow + 1), 6>(word);
  return orbSignContexts[significance | signs];
}

template <int kRow>
inline Orb32u refinementContext(Orb32u word) {
  if (word & significant(kRow) << kRefinedShift) return orbRefinementContext + 2;
  return orbRefinementContext + ((word >> (3 * kRow) & 0x1EF) != 0);
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

// The sample of a row becomes significant. `word` is the copy of *at that the caller works on; the
// words around are written at once. With causal contexts a stripe knows nothing of the next one,
// so the first row does not report upwards.
template <int kRow>
inline void becomeSignificant(Orb32u& word, Orb32u* at, ptrdiff_t stride, bool isNegative,
                              bool isCausal) {
  const Orb32u negative = isNegative;
  word |= significant(kRow) | significant(kRow) << kVisitedShift | negative << negativeBit(kRow);
  at[-1] |= significant(kRow) << 1;
  at[1] |= significant(kRow) >> 1;
  if (kRow == 0 && !isCausal) {
    Orb32u* const above = at - stride;
    above[-1] |= significant(4) << 1;
    above[0] |= significant(4) | negative << negativeBit(4);
    above[1] |= significant(4) >> 1;
  }
  if (kRow == 3) {
    Orb32u* const below = at + stride;
    below[-1] |= significant(-1) << 1;
    below[0] |= significant(-1) | negative << negativeBit(-1);
    below[1] |= significant(-1) >> 1;
  }
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
inline void scanStripes(Pass& outer) {
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
