// The two stages of the code-block encoder. The first models all passes and leaves their decisions
// in memory; the second codes them into the host's buffer, and may stop at any byte.
#ifndef ORB_JPEG2K_PX_CODEBLOCK_ENCODER_H
#define ORB_JPEG2K_PX_CODEBLOCK_ENCODER_H

#include "frame/arith.h"
#include "frame/memory.h"
#include "jpeg2k/px/coefficient_modelling.h"
#include "jpeg2k/px/mq_encoder.h"

namespace orb::ORB_BUILD::plain {

// ---- The record and what stands behind it

inline Orb32u* wordsOf(OrbiEncodeState_JPEG2K& state) {
  return reinterpret_cast<Orb32u*>(&state + 1);
}
inline Orb8u* decisionsOf(OrbiEncodeState_JPEG2K& state) {
  return reinterpret_cast<Orb8u*>(wordsOf(state) + state.wordCapacity);
}

// All decisions have to be within reach of a signed size.
constexpr int64_t kMaxColumns = INT32_MAX / kDecisionsPerColumn;
inline int64_t stripeColumnCount(OrbiSize size) {
  return size.width * stripesOf(size.height);
}

inline bool hasRoomFor(const OrbiEncodeState_JPEG2K& state, OrbiSize size) {
  return stripeWordCount(size) <= state.wordCapacity &&
         stripeColumnCount(size) <= state.columnCapacity;
}

// A record with room for blocks of a size, or null.
inline OrbiEncodeState_JPEG2K* orbAllocateEncoder(OrbiSize maxSize) {
  const int64_t words = stripeWordCount(maxSize);
  const int64_t columns = stripeColumnCount(maxSize);
  if (columns > kMaxColumns) return nullptr;
  constexpr int64_t kRecord = sizeof(OrbiEncodeState_JPEG2K);
  const int64_t bytes = kRecord + 4 * words + kDecisionsPerColumn * columns;
  if (bytes > INT32_MAX) return nullptr;
  void* const memory = orbMalloc(static_cast<Orb32s>(bytes));
  if (!memory) return nullptr;
  orbZero(memory, kRecord);
  OrbiEncodeState_JPEG2K* const state = static_cast<OrbiEncodeState_JPEG2K*>(memory);
  state->tag = kEncodeTag;
  state->wordCapacity = static_cast<Orb32s>(words);
  state->columnCapacity = static_cast<Orb32s>(columns);
  return state;
}

// ---- Modelling

// The magnitude bits of all samples together.
inline Orb32u orbJoinMagnitudes(const Orb32s* src, Orb32s srcStep, OrbiSize size) {
  Orb32u all = 0;
  for (Orb32s y = 0; y < size.height; ++y) {
    const Orb32s* const row = rowAt(src, srcStep, y);
    for (Orb32s x = 0; x < size.width; ++x) all |= static_cast<Orb32u>(load(row + x));
  }
  return all & 0x7FFFFFFF;
}

// One pass over the block, behind those that are recorded.
inline void recordPass(OrbiEncodeState_JPEG2K& state, PlanePass& pass, Orb32s exponent, bool isRaw,
                       void (*run)(PlanePass&)) {
  const Orb8u* const first = pass.decisions.next;
  pass.gain = 0;
  run(pass);
  OrbCodingPass& recorded = state.passes[state.passCount++];
  recorded.gain = pass.gain;
  recorded.exponent = exponent;
  recorded.decisionCount = static_cast<Orb32s>(pass.decisions.next - first);
  recorded.isRaw = isRaw;
}

inline void recordPasses(OrbiEncodeState_JPEG2K& state, const CodeBlock<const Orb32s>& block,
                         Orb32s bitLength, Orb32s lastPlane) {
  const Orb32s topPlane = bitLength - 1;
  PlanePass pass = {};
  pass.block = block;
  pass.hasSegmentationSymbols = (state.style & kStyleSegmentationSymbols) != 0;
  pass.decisions.next = decisionsOf(state);
  for (Orb32s plane = topPlane; plane >= lastPlane; --plane) {
    pass.plane = plane;
    pass.rightShift = limit(plane - 6, 0, 31);
    pass.leftShift = limit(6 - plane, 0, 31);
    pass.isExact = plane == lastPlane && (state.style & kEncodeExactLastPlane) != 0;
    // Gains are counted in 1/8192 of the plane's squared step.
    const Orb32s exponent = 2 * (plane - lastPlane) - 13;
    if (plane != topPlane) {
      // The four planes from the top are never raw.
      const bool isRaw = (state.style & kStyleBypass) != 0 && plane < bitLength - 4;
      recordPass(state, pass, exponent, isRaw,
                 isRaw ? significancePass<true> : significancePass<false>);
      recordPass(state, pass, exponent, isRaw,
                 isRaw ? refinementPass<true> : refinementPass<false>);
    }
    recordPass(state, pass, exponent, false, cleanupPass);
  }
}

// Models all passes of a block, and stands before the first of them to be stored. Returns how many
// bits the largest magnitude has.
inline Orb32s orbLoadCodeBlock(OrbiEncodeState_JPEG2K& state, const Orb32s* src, Orb32s srcStep,
                               OrbiSize size, Orb32s subband, Orb32s magnBits,
                               Orb32s terminationMode, Orb32s style) {
  orbZero(wordsOf(state), static_cast<Orb32s>(4 * stripeWordCount(size)));
  state.style = style;
  state.terminationMode = terminationMode;
  state.passCount = 0;
  state.pass = 0;
  state.decisionsBefore = 0;
  state.decisionsCoded = 0;
  state.bytesBefore = 0;
  state.bytesDelivered = 0;
  resetContexts(state.contexts);
  startMq(state.mq);
  state.hasCoded = 0;
  startRaw(state.raw);
  state.waitingCount = 0;

  const Orb32u magnitudes = orbJoinMagnitudes(src, srcStep, size);
  const Orb32s bitLength = magnitudes == 0 ? 0 : 32 - __builtin_clz(magnitudes);
  const CodeBlock<const Orb32s> block = {src,
                                         srcStep,
                                         size,
                                         stripeWordsIn(wordsOf(state), size.width),
                                         &zeroCodingOf(subband),
                                         (style & kStyleCausal) != 0};
  recordPasses(state, block, bitLength, 31 - limit(magnBits, 0, 31));
  return bitLength;
}

// ---- Segments

// Whether pass `i` is coded in another way than the one behind it.
inline bool changesKind(const OrbiEncodeState_JPEG2K& state, Orb32s i) {
  return i + 1 < state.passCount && state.passes[i].isRaw != state.passes[i + 1].isRaw;
}
inline bool endsSegment(const OrbiEncodeState_JPEG2K& state, Orb32s i) {
  return (state.style & kStyleTerminateAll) != 0 || i + 1 == state.passCount ||
         changesKind(state, i);
}

// Without a pass there is one all the same, unless each pass has its own.
inline Orb32s orbCountSegments(const OrbiEncodeState_JPEG2K& state) {
  if (state.style & kStyleTerminateAll) return state.passCount;
  Orb32s segments = 1;
  for (Orb32s i = 0; i < state.passCount; ++i) segments += changesKind(state, i);
  return segments;
}

inline Orb32s orbSegmentLength(const OrbiEncodeState_JPEG2K& state, Orb32s segment) {
  Orb32s length = 0;
  for (Orb32s i = 0; i < state.passCount; ++i) {
    if (segment == 0) length += state.passes[i].length;
    if (endsSegment(state, i)) --segment;
  }
  return length;
}

// ---- Output

inline void terminate(OrbiEncodeState_JPEG2K& state, bool isRaw, ByteSink& sink) {
  if (isRaw) {
    flushRaw(state.raw, sink);
  } else if (state.hasCoded) {
    if (state.terminationMode == 1) {
      flushShortest(state.mq, sink);
    } else if (state.terminationMode == 2) {
      flushPredictably(state.mq, sink);
    } else {
      flushFully(state.mq, sink);
    }
    startMq(state.mq);
    state.hasCoded = 0;
  }
}

// How many bytes behind those delivered a decoder may need for what has been coded and not
// flushed.
inline Orb32s bytesToCome(const OrbiEncodeState_JPEG2K& state, bool isRaw) {
  if (isRaw) return hasRawBits(state.raw);
  if (!state.hasCoded) return 0;
  const OrbMqEncoder& mq = state.mq;
  const Orb32u isLong = 27 - mq.ct > (mq.b >= 254 ? 22u : 23u);
  return static_cast<Orb32s>(3 + mq.hasByte + isLong);
}

// All of the pass has been delivered, or waits in the coder for what follows.
inline void finishPass(OrbiEncodeState_JPEG2K& state, Orb32s bytesDelivered) {
  OrbCodingPass& pass = state.passes[state.pass];
  const Orb32s toCome = bytesToCome(state, pass.isRaw);
  pass.length = bytesDelivered - state.bytesBefore;
  pass.rate = bytesDelivered + toCome;
  if (toCome == 0) {
    // What came before does not need more than all bytes that there are.
    for (OrbCodingPass* p = &pass; p != state.passes && p->rate < p[-1].rate; --p) {
      p[-1].rate = p->rate;
    }
  }
  if (state.style & kStyleResetContexts) resetContexts(state.contexts);
  state.bytesBefore = bytesDelivered;
  state.decisionsBefore += pass.decisionCount;
  state.decisionsCoded = 0;
  ++state.pass;
}

// Goes on with the pass at which the stage stands, as far as there is room; true if all of it has
// been delivered.
inline bool storePass(OrbiEncodeState_JPEG2K& state, ByteSink& sink) {
  const OrbCodingPass& pass = state.passes[state.pass];
  const Orb8u* const first = decisionsOf(state) + state.decisionsBefore;
  const Orb8u* const next = first + state.decisionsCoded;
  const Orb8u* const end = first + pass.decisionCount;
  const Orb8u* stop;
  if (pass.isRaw) {
    stop = packBits(state.raw, sink, next, end);
  } else {
    const bool isRefinement = state.pass % 3 == 2;
    stop = (isRefinement ? codeDecisions<true> : codeDecisions<false>)(state.mq, state.contexts,
                                                                       sink, next, end);
    if (stop != next) state.hasCoded = 1;
  }
  state.decisionsCoded = static_cast<Orb32s>(stop - first);
  if (stop != end) return false;
  if (endsSegment(state, state.pass)) terminate(state, pass.isRaw, sink);
  return sink.waitingCount == 0;
}

// A segment need not include a last byte of 255: a decoder reads ones behind it anyway. So each
// finished pass whose last byte has now been delivered does without it if it is one. That byte may
// also be the last one of the call before, when nothing had to be delivered to finish the pass.
inline void dropTrailing255(OrbiEncodeState_JPEG2K& state, const Orb8u* dst, Orb32s length) {
  for (Orb32s i = 0; i < state.pass; ++i) {
    const Orb32s at = state.passes[i].rate - 1 - state.bytesDelivered;
    if (at < -1 || at >= length) continue;
    const Orb32u byte = at >= 0 ? dst[at] : state.lastByte;
    if (byte == 255) --state.passes[i].rate;
  }
}

// Stores what fits into `length` bytes. Returns how many there are.
inline Orb32s orbStoreBits(OrbiEncodeState_JPEG2K& state, Orb8u* dst, Orb32s length) {
  ByteSink sink = {dst, dst + length, state.waiting, state.waitingCount};
  drain(sink);
  while (state.pass < state.passCount && storePass(state, sink)) {
    finishPass(state, state.bytesDelivered + static_cast<Orb32s>(sink.at - dst));
    if (sink.isFull()) break;
  }
  state.waitingCount = sink.waitingCount;
  const Orb32s stored = static_cast<Orb32s>(sink.at - dst);
  dropTrailing255(state, dst, stored);
  state.bytesDelivered += stored;
  if (stored > 0) state.lastByte = dst[stored - 1];
  return stored;
}

// ---- Distortion

// 2 to the power of an exponent by way of 32-bit integers: from 31 on it turns round.
inline Orb64f powerOfTwo(Orb32s exponent) {
  const Orb32u shift = static_cast<Orb32u>(exponent > 0 ? exponent : -exponent) & 31;
  const Orb64f power = static_cast<Orb32s>(1u << shift);
  return exponent > 0 ? power : 1 / power;
}

inline Orb64f orbDistortion(const OrbiEncodeState_JPEG2K& state, Orb32s lastPass) {
  // In memory after each addition: registers of the x87 unit would keep more than 64 bits.
  volatile Orb64f sum = 0;
  for (Orb32s i = 0; i <= lastPass; ++i) {
    sum = sum + state.passes[i].gain * powerOfTwo(state.passes[i].exponent);
  }
  return sum;
}

}  // namespace orb::ORB_BUILD::plain

#endif
