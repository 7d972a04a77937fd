// Writes the run-level code of a block of coefficients (ITU-T T.832).
#ifndef ORB_JPEGXR_PX_COEFFICIENT_ENCODER_H
#define ORB_JPEGXR_PX_COEFFICIENT_ENCODER_H

#include "jpegxr/px/bit_stream.h"
#include "jpegxr/px/coefficient_forms.h"
#include "jpegxr/px/vlc_state.h"
#include "jpegxr/tables/run_level.h"

namespace orb::ORB_BUILD::plain {

inline OrbVlcCode codeOf(const OrbiVLCState_JPEGXR& state, Orb32u coder, Orb32u symbol) {
  return orbVlcCodes[state.codes[coder] & kVlcLinkMask][symbol];
}

inline OrbVlcCode takeCode(OrbiVLCState_JPEGXR& state, Orb32u coder, Orb32u symbol) {
  orbCountSymbol(state, coder, symbol);
  return codeOf(state, coder, symbol);
}

// A code, and behind it the part of the value that its symbol leaves open.
inline void putRange(BitWriter& writer, OrbVlcCode code, OrbVlcRange range, Orb32u value) {
  putBits(writer, static_cast<Orb32u>(code.bits) << range.extraBits | (value - range.base),
          static_cast<Orb32u>(code.length) + range.extraBits);
}

// A code, and the sign behind it.
inline void putSigned(BitWriter& writer, OrbVlcCode code, Orb32s level) {
  putBits(writer, static_cast<Orb32u>(code.bits) << 1 | (level < 0),
          static_cast<Orb32u>(code.length) + 1);
}

// Of a level that is too large, the largest is coded.
[[gnu::noinline]] inline BitWriter encodeEscapedLevel(BitWriter writer, Orb32u level) {
  const Orb32u value = (level < kLargestLevel ? level : kLargestLevel) - 2;
  const Orb32u n = 31 - static_cast<Orb32u>(__builtin_clz(value));
  putBits(writer, n < 19 ? n - 4 : 15, 4);
  if (n >= 19) putBits(writer, n < 22 ? n - 19 : 3, 2);
  if (n >= 22) putBits(writer, n - 22, 3);
  const Orb32u bits = value - (1u << n);
  if (n > 16) putBits(writer, bits >> 16, n - 16);
  putBits(writer, bits & 65535, n > 16 ? 16 : n);
  return writer;
}

// A level of 2 or more.
[[gnu::always_inline]] inline void encodeLevel(BitWriter& writer, OrbiVLCState_JPEGXR& state,
                                               Orb32u coder, Orb32u level) {
  if (level >= kLeastEscapedLevel) {
    const OrbVlcCode code = takeCode(state, coder, kLevelEscape);
    putBits(writer, code.bits, code.length);
    writer = encodeEscapedLevel(writer, level);
    return;
  }
  const Orb32u symbol = orbLevelSymbols[level];
  putRange(writer, takeCode(state, coder, symbol), orbLevelRanges[symbol], level);
}

// A run of 1 or more, where there is room for `room` positions.
[[gnu::always_inline]] inline void encodeRun(BitWriter& writer, const OrbiVLCState_JPEGXR& state,
                                             Orb32s room, Orb32s run) {
  if (room >= kLeastRunRoom) {
    const Orb32u row = orbRunRows[static_cast<Orb32u>(room)];
    const Orb32u symbol = orbRunSymbols[row][static_cast<Orb32u>(run)];
    putRange(writer, codeOf(state, kRunCoder, symbol), orbRunRanges[row][symbol],
             static_cast<Orb32u>(run));
  } else if (run < room) {
    putBits(writer, 1, static_cast<Orb32u>(run));
  } else {
    putBits(writer, 0, static_cast<Orb32u>(room - 1));
  }
}

// The code of the index of a coefficient that is not the first.
template <class Form>
inline OrbVlcCode takeIndexCode(OrbiVLCState_JPEGXR& state, Orb32u coder, Orb32s position,
                                Orb32u index) {
  if (position < Form::kLast - 1) return takeCode(state, coder, index);
  if (position < Form::kLast) return orbLateIndexCodes[index];
  return {static_cast<Orb8u>(index), 1};
}

// How many of the pairs lie within the block. The host's list may lead out of it.
template <class Form>
inline Orb32s orbPairsWithin(const Orb32s* pairs, Orb32s pairCount) {
  Orb32s position = Form::kFirst;
  for (Orb32s i = 0; i < pairCount; ++i) {
    const Orb32s run = load(pairs + 2 * i);
    if (run < 0 || run > Form::kLast - position) return i;
    position += run + 1;
  }
  return pairCount;
}

// What follows the pair `i`: nothing, a coefficient at the next position, or one behind a run.
inline Orb32u whatFollows(const Orb32s* pairs, Orb32s pairCount, Orb32s i) {
  if (i + 1 == pairCount) return 0;
  return load(pairs + 2 * (i + 1)) > 0 ? 2 : 1;
}

// Writes one pair or more, all within the block. The writer comes and goes by value, and so stays
// in registers, whatever is stored in the state.
template <class Form>
inline BitWriter orbEncodeBlock(BitWriter writer, OrbiVLCState_JPEGXR& state, BlockCoders coders,
                                const Orb32s* pairs, Orb32s pairCount) {
  Orb32s run = load(pairs);
  Orb32s level = load(pairs + 1);
  Orb32u magnitude = magnitudeOf(level);
  Orb32u next = whatFollows(pairs, pairCount, 0);
  const Orb32u first = next << 2 | (magnitude >= 2 ? 2 : 0) | (run == 0 ? 1 : 0);
  Orb32u context = first & next & 1;
  putSigned(writer, takeCode(state, coders.index, first), level);
  if (magnitude >= 2) {
    encodeLevel(writer, state, coders.level + context, magnitude);
  }
  Orb32s position = Form::kFirst + run;
  if (run > 0) encodeRun(writer, state, Form::kLast - Form::kFirst, run);

  for (Orb32s i = 1; i < pairCount; ++i) {
    run = load(pairs + 2 * i);
    level = load(pairs + 2 * i + 1);
    magnitude = magnitudeOf(level);
    ++position;
    if (run > 0) encodeRun(writer, state, Form::kLast - position, run);
    position += run;
    next = whatFollows(pairs, pairCount, i);
    const OrbVlcCode code = takeIndexCode<Form>(state, coders.index + 1 + context, position,
                                                next << 1 | (magnitude >= 2 ? 1 : 0));
    putSigned(writer, code, level);
    context &= next;
    if (magnitude >= 2) {
      encodeLevel(writer, state, coders.level + context, magnitude);
    }
  }
  return writer;
}

// ---- Where coefficients come from

// A region.
template <class T>
struct RegionBlock {
  const T* src;
  Orb32s step;
  Orb32s at(const OrbScanRecord& record) const {
    return load(rowAt(src, step, record.y & 3) + (record.x & 3));
  }
};

}  // namespace orb::ORB_BUILD::plain

#endif
