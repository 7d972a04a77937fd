// The progressive code-block decoder: which pass comes next, and where segments begin and end.
#ifndef ORB_JPEG2K_PX_CODEBLOCK_PROGRESSIVE_H
#define ORB_JPEG2K_PX_CODEBLOCK_PROGRESSIVE_H

#include "frame/arith.h"
#include "frame/memory.h"
#include "jpeg2k/px/coefficient_decoding.h"

namespace orb::ORB_BUILD::plain {

// ---- The record and what stands behind it

inline Orb32u* wordsOf(OrbiDecodeCBProgrState_JPEG2K& state) {
  const uintptr_t behind = reinterpret_cast<uintptr_t>(&state) + sizeof state;
  return reinterpret_cast<Orb32u*>((behind + 31) & ~uintptr_t{31});
}

// The size of a state for blocks of up to a size. There is room for a word for every two samples of
// a column, which is twice what is used.
inline int64_t orbDecodeStateSize(OrbiSize maxSize) {
  const int64_t row = (static_cast<int64_t>(maxSize.width) * 4 + 8 + 31) & ~31;
  const int64_t rows = (static_cast<int64_t>(maxSize.height) + 1) / 2 + 2;
  // A single row may already be more than there is a number for.
  return row > INT32_MAX ? row : row * rows + kDecodeRecordRoom;
}

inline void orbInitDecodeState(OrbiDecodeCBProgrState_JPEG2K& state) {
  state.tag = kDecodeTag;
  state.isAttached = 0;
}

inline void orbAttach(OrbiDecodeCBProgrState_JPEG2K& state, Orb32s* dst, Orb32s dstStep,
                      OrbiSize size, Orb32s subband, Orb32s bitPlanes, Orb32s flags) {
  if ((flags & kDecodeKeepSamples) == 0) {
    for (Orb32s y = 0; y < size.height; ++y) {
      Orb32s* const row = rowAt(dst, dstStep, y);
      for (Orb32s x = 0; x < size.width; ++x) store(row + x, 0);
    }
  }
  if ((flags & kDecodeKeepSignificance) == 0) {
    Orb32u* const words = wordsOf(state);
    const int64_t count = stripeWordCount(size);
    for (int64_t i = 0; i < count; ++i) words[i] = 0;
  }
  Orb32u contexts[orbContextCount];
  resetContexts(contexts);
  __builtin_memcpy(state.contexts, contexts, sizeof contexts);
  state.flags = flags;
  state.dst = dst;
  state.dstStep = dstStep;
  state.size = size;
  state.subband = subband;
  state.bypassPlane = (flags & kStyleBypass) != 0 ? limit(bitPlanes - 4, 0, INT32_MAX) : 0;
  state.plane = bitPlanes - 1;
  state.nextPass = kNextCleanup;
  state.passCounter = 0;
  state.hasFailed = 0;
  state.isAttached = 1;
}

// ---- Passes

template <class Source>
inline PlaneDecoder<Source> planeDecoder(OrbiDecodeCBProgrState_JPEG2K& state, Source source,
                                         Orb32u* contexts) {
  const CodeBlock<Orb32s> block = {state.dst,
                                   state.dstStep,
                                   state.size,
                                   stripeWordsIn(wordsOf(state), state.size.width),
                                   &zeroCodingOf(state.subband),
                                   (state.flags & kStyleCausal) != 0};
  return {block, source, contexts, 0};
}

template <class Source>
inline void startPass(const OrbiDecodeCBProgrState_JPEG2K& state, PlaneDecoder<Source>& decoder) {
  decoder.plane = static_cast<Orb32u>(state.plane) & 31;
}

// True if there was an error. What the check of a termination says counts for more than what was
// known before.
template <class Source>
inline bool finishPass(OrbiDecodeCBProgrState_JPEG2K& state, PlaneDecoder<Source>& decoder,
                       bool isWrong, bool isChecked) {
  if (state.flags & kStyleResetContexts) resetContexts(decoder.contexts);
  --state.passCounter;
  return isChecked ? endsWrongly(decoder.source) : isWrong;
}

template <class Source>
inline bool decodeSignificancePass(OrbiDecodeCBProgrState_JPEG2K& state,
                                   PlaneDecoder<Source>& decoder, bool isChecked) {
  startPass(state, decoder);
  significancePass(decoder);
  return finishPass(state, decoder, false, isChecked);
}

template <class Source>
inline bool decodeRefinementPass(OrbiDecodeCBProgrState_JPEG2K& state,
                                 PlaneDecoder<Source>& decoder, bool isChecked) {
  startPass(state, decoder);
  refinementPass(decoder);
  return finishPass(state, decoder, false, isChecked);
}

inline bool decodeCleanupPass(OrbiDecodeCBProgrState_JPEG2K& state,
                              PlaneDecoder<MqDecoder>& decoder, bool isChecked) {
  startPass(state, decoder);
  cleanupPass(decoder);
  const bool isWrong =
      (state.flags & kStyleSegmentationSymbols) != 0 && hasWrongSegmentationSymbols(decoder);
  return finishPass(state, decoder, isWrong, isChecked);
}

// ---- Segments

// A raw refinement pass is always the last of its segment, and its end is always checked.
constexpr bool kAlwaysChecked = true;

// Each pass is a segment.
inline bool stepPass(OrbiDecodeCBProgrState_JPEG2K& state, const Orb8u* src, Orb32s srcLen,
                     Orb32u* contexts, bool isChecked) {
  if (state.nextPass == kNextRawSignificance || state.nextPass == kNextRawRefinement) {
    PlaneDecoder<RawReader> raw = planeDecoder(state, startRawReader(src, srcLen), contexts);
    if (state.nextPass == kNextRawSignificance) {
      state.nextPass = kNextRawRefinement;
      return decodeSignificancePass(state, raw, isChecked);
    }
    state.nextPass = kNextCleanupBehindRaw;
    return decodeRefinementPass(state, raw, kAlwaysChecked);
  }
  PlaneDecoder<MqDecoder> mq = planeDecoder(state, startMqDecoder(src, srcLen), contexts);
  if (state.nextPass == kNextSignificance) {
    state.nextPass = kNextRefinement;
    return decodeSignificancePass(state, mq, isChecked);
  }
  if (state.nextPass == kNextRefinement) {
    state.nextPass = kNextCleanup;
    return decodeRefinementPass(state, mq, isChecked);
  }
  const bool isWrong = decodeCleanupPass(state, mq, isChecked);
  --state.plane;
  state.nextPass = state.nextPass == kNextCleanup && state.plane >= state.bypassPlane
                       ? kNextSignificance
                       : kNextRawSignificance;
  return isWrong;
}

// A segment is what lies between changes from the MQ coder to raw bits and back.
inline bool stepSegment(OrbiDecodeCBProgrState_JPEG2K& state, const Orb8u* src, Orb32s srcLen,
                        Orb32u* contexts, bool isChecked) {
  if (state.nextPass == kNextRawSignificance) {
    PlaneDecoder<RawReader> raw = planeDecoder(state, startRawReader(src, srcLen), contexts);
    decodeSignificancePass(state, raw, false);
    if (state.passCounter < 1) return false;
    state.nextPass = kNextCleanupBehindRaw;
    return decodeRefinementPass(state, raw, kAlwaysChecked);
  }
  PlaneDecoder<MqDecoder> mq = planeDecoder(state, startMqDecoder(src, srcLen), contexts);
  if (state.nextPass == kNextCleanupBehindRaw) {
    const bool isWrong = decodeCleanupPass(state, mq, isChecked);
    if (state.passCounter > 0) {
      state.nextPass = kNextRawSignificance;
      --state.plane;
    }
    return isWrong;
  }
  bool isWrong = false;
  while (true) {
    const bool isLast = state.plane <= state.bypassPlane;
    isWrong |= decodeCleanupPass(state, mq, isChecked && state.plane == state.bypassPlane);
    if (state.passCounter < 1) break;
    --state.plane;
    if (isLast) {
      state.nextPass = kNextRawSignificance;
      break;
    }
    decodeSignificancePass(state, mq, false);
    if (state.passCounter < 1) break;
    decodeRefinementPass(state, mq, false);
    if (state.passCounter < 1) break;
  }
  return isWrong;
}

inline OrbStatus orbStep(OrbiDecodeCBProgrState_JPEG2K& state, const Orb8u* src, Orb32s srcLen) {
  if (state.passCounter < 1 || state.plane < 0) return orbStsNoErr;
  const bool isChecked = (state.flags & kDecodeCheckTerminations) != 0;
  Orb32u contexts[orbContextCount];
  __builtin_memcpy(contexts, state.contexts, sizeof contexts);
  const bool isWrong = (state.flags & kStyleTerminateAll) != 0
                           ? stepPass(state, src, srcLen, contexts, isChecked)
                           : stepSegment(state, src, srcLen, contexts, isChecked);
  __builtin_memcpy(state.contexts, contexts, sizeof contexts);
  if (!isWrong) return orbStsNoErr;
  state.hasFailed = 1;
  return orbStsCodeBlockDataErr;
}

}  // namespace orb::ORB_BUILD::plain

#endif
