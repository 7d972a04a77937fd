// The coding passes of the encoder (ITU-T T.800 D.3), as decisions in memory: the arithmetic comes
// later and in a loop of its own.
//
// A decision takes a byte: its context in bits 7..1, the bit itself in bit 0. In a raw pass there
// is no context.
#ifndef ORB_JPEG2K_PX_COEFFICIENT_MODELLING_H
#define ORB_JPEG2K_PX_COEFFICIENT_MODELLING_H

#include "jpeg2k/codeblock_records.h"
#include "jpeg2k/px/stripe_words.h"
#include "jpeg2k/tables/distortion.h"

namespace orb::ORB_BUILD::plain {

// No pass makes more than 10 decisions in a stripe's column (a cleanup pass: three for the run, a
// sign, then three samples with their signs), and there is room for 109 passes of that kind. It is
// far more than any block makes, the four segmentation symbols of its passes included.
constexpr Orb32s kDecisionsPerColumn = 109 * 10;

struct DecisionWriter {
  Orb8u* next;

  void put(Orb32u context, Orb32u bit) { *next++ = static_cast<Orb8u>(context << 1 | bit); }
};

// What a pass over one bit-plane works with.
struct PlanePass {
  CodeBlock<const Orb32s> block;
  Orb32s plane;
  // Bring the plane's bit to bit 6 of a sample, where the gain tables want it.
  Orb32s rightShift;
  Orb32s leftShift;
  bool isExact;
  bool hasSegmentationSymbols;
  // What the pass has to show for itself.
  DecisionWriter decisions;
  Orb32s gain;
};

inline Orb32u bitOf(const PlanePass& pass, Orb32s sample) {
  return static_cast<Orb32u>(sample) >> pass.plane & 1;
}
// The plane's bit and the six below it; bits that there are not are 0.
inline Orb32u sevenBits(const PlanePass& pass, Orb32s sample) {
  return static_cast<Orb32u>(sample) >> pass.rightShift << pass.leftShift & 127;
}

// Codes the sign of a sample whose first bit has just been coded.
template <int kRow, bool kIsRaw>
[[gnu::always_inline]] inline void codeSign(PlanePass& pass, Orb32s sample, Orb32u& word,
                                            Orb32u* at) {
  const Orb32u isNegative = static_cast<Orb32u>(sample) >> 31;
  if (kIsRaw) {
    pass.decisions.put(0, isNegative);
  } else {
    const Orb32u context = signContext<kRow>(word, at);
    pass.decisions.put(context & 127, isNegative ^ context >> 7);
  }
  pass.gain += orbSignificanceGain[pass.isExact][sevenBits(pass, sample) & 63];
  becomeSignificant<kRow>(word, at, pass.block.words.stride, isNegative, pass.block.isCausal);
}

// Codes the plane's bit of a sample that was insignificant so far; true if it is no longer.
template <int kRow, bool kIsRaw>
[[gnu::always_inline]] inline bool codeSignificance(PlanePass& pass, const Orb32s* src,
                                                    Orb32u& word, Orb32u* at) {
  const Orb32s sample = load(rowAt(src, pass.block.step, kRow));
  const Orb32u bit = bitOf(pass, sample);
  pass.decisions.put(kIsRaw ? 0 : zeroCodingContext<kRow>(word, *pass.block.zeroCoding), bit);
  if (bit == 0) return false;
  codeSign<kRow, kIsRaw>(pass, sample, word, at);
  return true;
}

// ---- Significance propagation pass (D.3.1)

template <int kRow, bool kIsRaw>
[[gnu::always_inline]] inline void visitSignificance(PlanePass& pass, const Orb32s* src,
                                                     Orb32u rows, Orb32u& pending, Orb32u& word,
                                                     Orb32u* at) {
  if ((pending & significant(kRow)) == 0) return;
  word |= significant(kRow) << kVisitedShift;
  if (!codeSignificance<kRow, kIsRaw>(pass, src, word, at)) return;
  if (kRow < 3) pending |= significant(kRow + 1) & rows & ~word;
}

template <bool kIsRaw>
[[gnu::always_inline]] inline void significanceColumn(PlanePass& pass, Orb32u* at,
                                                      const Orb32s* src, Orb32u rows) {
  Orb32u word = *at;
  Orb32u pending = rowsWithNeighbours(word) & rows;
  if (pending == 0) return;
  visitSignificance<0, kIsRaw>(pass, src, rows, pending, word, at);
  visitSignificance<1, kIsRaw>(pass, src, rows, pending, word, at);
  visitSignificance<2, kIsRaw>(pass, src, rows, pending, word, at);
  visitSignificance<3, kIsRaw>(pass, src, rows, pending, word, at);
  *at = word;
}

template <bool kIsRaw>
inline void significancePass(PlanePass& pass) {
  scanStripes<significanceColumn<kIsRaw>>(pass);
}

// ---- Magnitude refinement pass (D.3.3)

template <int kRow, bool kIsRaw>
[[gnu::always_inline]] inline void visitRefinement(PlanePass& pass, const Orb32s* src,
                                                   Orb32u pending, Orb32u word) {
  if ((pending & significant(kRow)) == 0) return;
  const Orb32s sample = load(rowAt(src, pass.block.step, kRow));
  pass.decisions.put(kIsRaw ? 0 : refinementContext<kRow>(word), bitOf(pass, sample));
  pass.gain += orbRefinementGain[pass.isExact][sevenBits(pass, sample)];
}

template <bool kIsRaw>
[[gnu::always_inline]] inline void refinementColumn(PlanePass& pass, Orb32u* at, const Orb32s* src,
                                                    Orb32u rows) {
  const Orb32u word = *at;
  const Orb32u pending = rowsToRefine(word) & rows;
  if (pending == 0) return;
  visitRefinement<0, kIsRaw>(pass, src, pending, word);
  visitRefinement<1, kIsRaw>(pass, src, pending, word);
  visitRefinement<2, kIsRaw>(pass, src, pending, word);
  visitRefinement<3, kIsRaw>(pass, src, pending, word);
  if (!kIsRaw) *at = word | pending << kRefinedShift;
}

template <bool kIsRaw>
inline void refinementPass(PlanePass& pass) {
  scanStripes<refinementColumn<kIsRaw>>(pass);
}

// ---- Cleanup pass (D.3.4)

// `run` is the row that a run has been interrupted at: its bit is known.
template <int kRow>
[[gnu::always_inline]] inline void visitCleanup(PlanePass& pass, const Orb32s* src, Orb32u pending,
                                                Orb32s run, Orb32u& word, Orb32u* at) {
  if ((pending & significant(kRow)) == 0) return;
  if (kRow == run) {
    codeSign<kRow, false>(pass, load(rowAt(src, pass.block.step, kRow)), word, at);
  } else {
    codeSignificance<kRow, false>(pass, src, word, at);
  }
}

// Codes how many zeros lead a column in which nothing is known to be significant: 4 or the row of
// the first one.
inline Orb32s codeRun(PlanePass& pass, const Orb32s* src) {
  Orb32s run = 0;
  while (run < 4 && bitOf(pass, load(rowAt(src, pass.block.step, run))) == 0) ++run;
  pass.decisions.put(orbRunLengthContext, run < 4);
  if (run == 4) return 4;
  pass.decisions.put(orbUniformContext, static_cast<Orb32u>(run) >> 1);
  pass.decisions.put(orbUniformContext, run & 1);
  return run;
}

[[gnu::always_inline]] inline void cleanupColumn(PlanePass& pass, Orb32u* at, const Orb32s* src,
                                                 Orb32u rows) {
  Orb32u word = *at;
  Orb32u pending = rowsToCleanUp(word) & rows;
  Orb32s run = -1;
  if (word == 0 && rows == kAllRows) {
    run = codeRun(pass, src);
    if (run == 4) return;
    pending &= ~(significant(run) - 1);
  }
  visitCleanup<0>(pass, src, pending, run, word, at);
  visitCleanup<1>(pass, src, pending, run, word, at);
  visitCleanup<2>(pass, src, pending, run, word, at);
  visitCleanup<3>(pass, src, pending, run, word, at);
  *at = word & ~kAllVisited;
}

inline void cleanupPass(PlanePass& pass) {
  scanStripes<cleanupColumn>(pass);
  if (!pass.hasSegmentationSymbols) return;
  for (int i = 3; i >= 0; --i) {
    pass.decisions.put(orbUniformContext, kSegmentationSymbols >> i & 1);
  }
}

}  // namespace orb::ORB_BUILD::plain

#endif
