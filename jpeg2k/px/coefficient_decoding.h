// The coding passes of the decoder (ITU-T T.800 D.3).
#ifndef ORB_JPEG2K_PX_COEFFICIENT_DECODING_H
#define ORB_JPEG2K_PX_COEFFICIENT_DECODING_H

#include "jpeg2k/px/mq_decoder.h"
#include "jpeg2k/px/stripe_words.h"

namespace orb::ORB_BUILD::plain {

// What a pass over one bit-plane works with; `Source` is MqDecoder or RawReader.
template <class Source>
struct PlaneDecoder {
  CodeBlock<Orb32s> block;
  Source source;
  Orb32u* contexts;
  Orb32u plane;  // 0 to 31; a sample has no place for the last, but it does no harm
};

template <class Source>
constexpr bool kIsRaw = false;
template <>
constexpr bool kIsRaw<RawReader> = true;

// Decodes the sign of a sample that has just become significant, and puts it in the middle of what
// its lower bits leave open.
template <int kRow, class Source>
[[gnu::always_inline]] inline void decodeSign(PlaneDecoder<Source>& pass, Orb32s* dst, Orb32u& word,
                                              Orb32u* at) {
  Orb32u isNegative;
  if constexpr (kIsRaw<Source>) {
    isNegative = readBit(pass.source);
  } else {
    const Orb32u context = signContext<kRow>(word, at);
    isNegative = decode(pass.source, pass.contexts[context & 127]) ^ context >> 7;
  }
  const Orb32u sample = isNegative << 31 | 3u << pass.plane >> 1;
  store(rowAt(dst, pass.block.step, kRow), static_cast<Orb32s>(sample));
  becomeSignificant<kRow>(word, at, pass.block.words.stride, isNegative, pass.block.isCausal);
}

template <int kRow, class Source>
[[gnu::always_inline]] inline Orb32u decodeSignificance(PlaneDecoder<Source>& pass, Orb32u word) {
  if constexpr (kIsRaw<Source>) {
    return readBit(pass.source);
  } else {
    return decode(pass.source,
                  pass.contexts[zeroCodingContext<kRow>(word, *pass.block.zeroCoding)]);
  }
}

// ---- Significance propagation pass (D.3.1)

template <int kRow, class Source>
[[gnu::always_inline]] inline void visitSignificance(PlaneDecoder<Source>& pass, Orb32s* dst,
                                                     Orb32u rows, Orb32u& pending, Orb32u& word,
                                                     Orb32u* at) {
  if ((pending & significant(kRow)) == 0) return;
  if (decodeSignificance<kRow>(pass, word)) {
    decodeSign<kRow>(pass, dst, word, at);
    if (kRow < 3) pending |= significant(kRow + 1) & rows & ~word;
  }
  word |= significant(kRow) << kVisitedShift;
}

template <class Source>
[[gnu::always_inline]] inline void significanceColumn(PlaneDecoder<Source>& pass, Orb32u* at,
                                                      Orb32s* dst, Orb32u rows) {
  Orb32u word = *at;
  Orb32u pending = rowsWithNeighbours(word) & rows;
  if (pending == 0) return;
  visitSignificance<0>(pass, dst, rows, pending, word, at);
  visitSignificance<1>(pass, dst, rows, pending, word, at);
  visitSignificance<2>(pass, dst, rows, pending, word, at);
  visitSignificance<3>(pass, dst, rows, pending, word, at);
  *at = word;
}

template <class Source>
inline void significancePass(PlaneDecoder<Source>& pass) {
  scanStripes<significanceColumn<Source>>(pass);
}

// ---- Magnitude refinement pass (D.3.3)

template <int kRow, class Source>
[[gnu::always_inline]] inline void visitRefinement(PlaneDecoder<Source>& pass, Orb32s* dst,
                                                   Orb32u pending, Orb32u word) {
  if ((pending & significant(kRow)) == 0) return;
  Orb32u bit;
  if constexpr (kIsRaw<Source>) {
    bit = readBit(pass.source);
  } else {
    bit = decode(pass.source, pass.contexts[refinementContext<kRow>(word)]);
  }
  Orb32s* const sample = rowAt(dst, pass.block.step, kRow);
  const Orb32u above = static_cast<Orb32u>(load(sample)) & ~0u << pass.plane << 1;
  const Orb32u half = 1u << pass.plane >> 1;
  store(sample, static_cast<Orb32s>(above | bit << pass.plane | half));
}

template <class Source>
[[gnu::always_inline]] inline void refinementColumn(PlaneDecoder<Source>& pass, Orb32u* at,
                                                    Orb32s* dst, Orb32u rows) {
  const Orb32u word = *at;
  const Orb32u pending = rowsToRefine(word) & rows;
  if (pending == 0) return;
  visitRefinement<0>(pass, dst, pending, word);
  visitRefinement<1>(pass, dst, pending, word);
  visitRefinement<2>(pass, dst, pending, word);
  visitRefinement<3>(pass, dst, pending, word);
  if (!kIsRaw<Source>) *at = word | pending << kRefinedShift;
}

template <class Source>
inline void refinementPass(PlaneDecoder<Source>& pass) {
  scanStripes<refinementColumn<Source>>(pass);
}

// ---- Cleanup pass (D.3.4)

// `run` is the row that a run has been interrupted at: its bit is known.
template <int kRow>
[[gnu::always_inline]] inline void visitCleanup(PlaneDecoder<MqDecoder>& pass, Orb32s* dst,
                                                Orb32u pending, Orb32s run, Orb32u& word,
                                                Orb32u* at) {
  if ((pending & significant(kRow)) == 0) return;
  if (kRow != run && !decodeSignificance<kRow>(pass, word)) return;
  decodeSign<kRow>(pass, dst, word, at);
}

// Decodes how many zeros lead a column in which nothing is known to be significant: 4 or the row of
// the first one.
[[gnu::always_inline]] inline Orb32s decodeRun(PlaneDecoder<MqDecoder>& pass) {
  if (!decode(pass.source, pass.contexts[orbRunLengthContext])) return 4;
  const Orb32u high = decode(pass.source, pass.contexts[orbUniformContext]);
  return static_cast<Orb32s>(high << 1 | decode(pass.source, pass.contexts[orbUniformContext]));
}

[[gnu::always_inline]] inline void cleanupColumn(PlaneDecoder<MqDecoder>& pass, Orb32u* at,
                                                 Orb32s* dst, Orb32u rows) {
  Orb32u word = *at;
  Orb32u pending = rowsToCleanUp(word) & rows;
  Orb32s run = -1;
  if (word == 0 && rows == kAllRows) {
    run = decodeRun(pass);
    if (run == 4) return;
    pending &= ~(significant(run) - 1);
  }
  visitCleanup<0>(pass, dst, pending, run, word, at);
  visitCleanup<1>(pass, dst, pending, run, word, at);
  visitCleanup<2>(pass, dst, pending, run, word, at);
  visitCleanup<3>(pass, dst, pending, run, word, at);
  *at = word & ~kAllVisited;
}

inline void cleanupPass(PlaneDecoder<MqDecoder>& pass) {
  scanStripes<cleanupColumn>(pass);
}

// Whether the four decisions behind a cleanup pass are not those of the encoder (D.5).
inline bool hasWrongSegmentationSymbols(PlaneDecoder<MqDecoder>& pass) {
  Orb32u symbols = 0;
  for (int i = 0; i < 4; ++i) {
    symbols = symbols << 1 | decode(pass.source, pass.contexts[orbUniformContext]);
  }
  return symbols != kSegmentationSymbols;
}

}  // namespace orb::ORB_BUILD::plain

#endif
