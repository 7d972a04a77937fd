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
inline constexpr bool kIsRaw = false;
template <>
inline constexpr bool kIsRaw<RawReader> = true;

// Decodes the sign of a sample that has just become significant, and puts it in the middle of what
// its lower bits leave open.
template <class Source>
[[gnu::always_inline]] inline void decodeSign(PlaneDecoder<Source>& pass, Orb32u* at, Orb32s* dst,
                                              Orb32s row) {
  Orb32u isNegative;
  if constexpr (kIsRaw<Source>) {
    isNegative = readBit(pass.source);
  } else {
    const Orb32u context = signContext(*at, at, row);
    isNegative = decodeEven(pass.source, pass.contexts[context & 127]) ^ context >> 7;
  }
  const Orb32u sample = isNegative << 31 | 3u << pass.plane >> 1;
  store(rowAt(dst, pass.block.step, indexOf(row)), static_cast<Orb32s>(sample));
  becomeSignificant(at, pass.block.words.stride, row, isNegative, pass.block.isCausal);
}

// The MQ context of a sample that is not significant so far.
template <class Source>
[[gnu::always_inline]] inline auto& zeroCoding(PlaneDecoder<Source>& pass, Orb32u word,
                                               Orb32s row) {
  return pass.contexts[zeroCodingContext(word, row, *pass.block.zeroCoding)];
}

// ---- Significance propagation pass (D.3.1)

template <class Source>
[[gnu::always_inline]] inline void significanceColumn(PlaneDecoder<Source>& pass, Orb32u* at,
                                                      Orb32s* dst, Orb32u rows) {
  Orb32u pending = rowsWithNeighbours(*at) & rows;
  while (pending != 0) {
    const Orb32s row = takeRow(pending);
    *at |= significant(row) << kVisitedShift;
    Orb32u bit;
    if constexpr (kIsRaw<Source>) {
      bit = readBit(pass.source);
    } else {
      bit = decodeEven(pass.source, zeroCoding(pass, *at, row));
    }
    if (bit != 0) {
      decodeSign(pass, at, dst, row);
      pending |= significant(row + 3) & rows & ~*at;
    }
  }
}

template <class Source>
inline void significancePass(PlaneDecoder<Source>& pass) {
  scanStripes<significanceColumn<Source>>(pass);
}

// ---- Magnitude refinement pass (D.3.3)

template <class Source>
[[gnu::always_inline]] inline void refinementColumn(PlaneDecoder<Source>& pass, Orb32u* at,
                                                    Orb32s* dst, Orb32u rows) {
  const Orb32u word = *at;
  Orb32u pending = rowsToRefine(word) & rows;
  if (!kIsRaw<Source>) *at = word | pending << kRefinedShift;
  while (pending != 0) {
    const Orb32s row = takeRow(pending);
    Orb32u bit;
    if constexpr (kIsRaw<Source>) {
      bit = readBit(pass.source);
    } else {
      bit = decodeEven(pass.source, pass.contexts[refinementContext(word, row)]);
    }
    Orb32s* const sample = rowAt(dst, pass.block.step, indexOf(row));
    const Orb32u above = static_cast<Orb32u>(load(sample)) & ~0u << pass.plane << 1;
    const Orb32u half = 1u << pass.plane >> 1;
    store(sample, static_cast<Orb32s>(above | bit << pass.plane | half));
  }
}

template <class Source>
inline void refinementPass(PlaneDecoder<Source>& pass) {
  scanStripes<refinementColumn<Source>>(pass);
}

// ---- Cleanup pass (D.3.4)

// Decodes how many zeros lead a column in which nothing is known to be significant: 4 or the row of
// the first one.
[[gnu::always_inline]] inline Orb32s decodeRun(PlaneDecoder<MqDecoder>& pass) {
  if (!decode(pass.source, pass.contexts[orbRunLengthContext])) return 4;
  const Orb32u high = decodeEven(pass.source, pass.contexts[orbUniformContext]);
  return static_cast<Orb32s>(high << 1 | decodeEven(pass.source, pass.contexts[orbUniformContext]));
}

[[gnu::always_inline]] inline void cleanupColumn(PlaneDecoder<MqDecoder>& pass, Orb32u* at,
                                                 Orb32s* dst, Orb32u rows) {
  Orb32u pending = rowsToCleanUp(*at) & rows;
  bool isInterrupted = false;
  if (*at == 0 && rows == kAllRows) {
    const Orb32s run = decodeRun(pass);
    if (run == 4) return;
    pending &= ~(significant(3 * run) - 1);
    isInterrupted = true;
  }
  while (pending != 0) {
    const Orb32s row = takeRow(pending);
    if (isInterrupted || decode(pass.source, zeroCoding(pass, *at, row)))
      decodeSign(pass, at, dst, row);
    isInterrupted = false;
  }
  *at &= ~kAllVisited;
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
