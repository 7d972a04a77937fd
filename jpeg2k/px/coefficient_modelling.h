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
template <bool kIsRaw>
[[gnu::always_inline]] inline void codeSign(PlanePass& pass, Orb32u* at, Orb32s sample,
                                            Orb32s row) {
  const Orb32u isNegative = static_cast<Orb32u>(sample) >> 31;
  if (kIsRaw) {
    pass.decisions.put(0, isNegative);
  } else {
    const Orb32u context = signContext(*at, at, row);
    pass.decisions.put(context & 127, isNegative ^ context >> 7);
  }
  pass.gain += orbSignificanceGain[pass.isExact][sevenBits(pass, sample) & 63];
  becomeSignificant(at, pass.block.words.stride, row, isNegative, pass.block.isCausal);
}

inline Orb32s sampleOf(const PlanePass& pass, const Orb32s* src, Orb32s row) {
  return load(rowAt(src, pass.block.step, indexOf(row)));
}

// ---- Significance propagation pass (D.3.1)

template <bool kIsRaw>
[[gnu::always_inline]] inline void significanceColumn(PlanePass& pass, Orb32u* at,
                                                      const Orb32s* src, Orb32u rows) {
  Orb32u pending = rowsWithNeighbours(*at) & rows;
  while (pending != 0) {
    const Orb32s row = takeRow(pending);
    const Orb32s sample = sampleOf(pass, src, row);
    const Orb32u bit = bitOf(pass, sample);
    pass.decisions.put(kIsRaw ? 0 : zeroCodingContext(*at, row, *pass.block.zeroCoding), bit);
    *at |= significant(row) << kVisitedShift;
    if (bit != 0) {
      codeSign<kIsRaw>(pass, at, sample, row);
      pending |= significant(row + 3) & rows & ~*at;
    }
  }
}

template <bool kIsRaw>
inline void significancePass(PlanePass& pass) {
  scanStripes<significanceColumn<kIsRaw>>(pass);
}

// ---- Magnitude refinement pass (D.3.3)

template <bool kIsRaw>
[[gnu::always_inline]] inline void refinementColumn(PlanePass& pass, Orb32u* at, const Orb32s* src,
                                                    Orb32u rows) {
  const Orb32u word = *at;
  Orb32u pending = rowsToRefine(word) & rows;
  if (!kIsRaw) *at = word | pending << kRefinedShift;
  while (pending != 0) {
    const Orb32s row = takeRow(pending);
    const Orb32s sample = sampleOf(pass, src, row);
    pass.decisions.put(kIsRaw ? 0 : refinementContext(word, row), bitOf(pass, sample));
    pass.gain += orbRefinementGain[pass.isExact][sevenBits(pass, sample)];
  }
}

template <bool kIsRaw>
inline void refinementPass(PlanePass& pass) {
  scanStripes<refinementColumn<kIsRaw>>(pass);
}

// ---- Cleanup pass (D.3.4)

// Codes how many zeros lead a column in which nothing is known to be significant: 4 or the index of
// the first one's row.
[[gnu::always_inline]] inline Orb32s codeRun(PlanePass& pass, const Orb32s* src) {
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
  Orb32u pending = rowsToCleanUp(*at) & rows;
  bool isKnown = false;
  if (*at == 0 && rows == kAllRows) {
    const Orb32s run = codeRun(pass, src);
    if (run == 4) return;
    pending &= ~(significant(3 * run) - 1);
    isKnown = true;
  }
  while (pending != 0) {
    const Orb32s row = takeRow(pending);
    const Orb32s sample = sampleOf(pass, src, row);
    const Orb32u bit = bitOf(pass, sample);
    if (!isKnown) pass.decisions.put(zeroCodingContext(*at, row, *pass.block.zeroCoding), bit);
    if (bit != 0) codeSign<false>(pass, at, sample, row);
    isKnown = false;
  }
  *at &= ~kAllVisited;
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
