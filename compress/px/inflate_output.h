// Where the symbols of a deflate stream go: as bytes to a host's buffer, or as pairs to its list.
#ifndef ORB_COMPRESS_PX_INFLATE_OUTPUT_H
#define ORB_COMPRESS_PX_INFLATE_OUTPUT_H

#include "compress/lz77_records.h"
#include "frame/arith.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD::plain {

constexpr Orb32u kHistory = 32768;

// ---- What came before

// The bytes in front of a call's output, the newest in front of `end`. In front of the area's first
// byte stands its last, so that every distance leads to a byte of the record.
struct History {
  const Orb8u* area;
  Orb32u size;  // a power of two
  Orb32u end;

  Orb32u indexOf(Orb32u back) const { return (end - back) & (size - 1); }
};

// Copies `length` bytes from `back` bytes in front of the output's start, where they all lie.
inline Orb8u* copyFromHistory(const History& history, Orb32u back, Orb32u length, Orb8u* to) {
  while (length > 0) {
    const Orb32u from = history.indexOf(back);
    const Orb32u upToWrap = history.size - from;
    const Orb32u n = length < upToWrap ? length : upToWrap;
    __builtin_memcpy(to, history.area + from, n);
    to += n;
    back -= n;
    length -= n;
  }
  return to;
}

inline History ringOf(const OrbLZ77DecState& state) {
  return {state.window, kHistory, static_cast<Orb32u>(state.ringPos)};
}

inline void appendToRing(OrbLZ77DecState& state, const Orb8u* bytes, ptrdiff_t count) {
  Orb32u position = static_cast<Orb32u>(state.ringPos) % kHistory;
  if (count >= ptrdiff_t{kHistory}) {
    bytes += count - kHistory;
    count = kHistory;
    position = 0;
  }
  const Orb32u n = static_cast<Orb32u>(count);
  const Orb32u upToWrap = n < kHistory - position ? n : kHistory - position;
  __builtin_memcpy(state.window + position, bytes, upToWrap);
  __builtin_memcpy(state.window, bytes + upToWrap, n - upToWrap);
  state.ringPos = static_cast<Orb32s>((position + n) % kHistory);
}

inline Orb32u windowFillOf(const OrbLZ77DecState& state) {
  return static_cast<Orb32u>(limit(Orb32s{state.windowFill}, 0, static_cast<Orb32s>(kHistory)));
}

inline History windowOf(const OrbLZ77DecState& state) {
  return {state.window, sizeof state.window, windowFillOf(state)};
}

inline void appendToWindow(OrbLZ77DecState& state, const Orb8u* bytes, ptrdiff_t count) {
  Orb32u fill = windowFillOf(state);
  if (count > ptrdiff_t{kHistory}) {
    bytes += count - kHistory;
    count = kHistory;
  }
  __builtin_memcpy(state.window + fill, bytes, static_cast<size_t>(count));
  fill += static_cast<Orb32u>(count);
  if (fill > kHistory) {
    __builtin_memmove(state.window, state.window + fill - kHistory, kHistory);
    fill = kHistory;
  }
  state.windowFill = static_cast<Orb32s>(fill);
}

// ---- Bytes

struct WideStep {
  Orb8u bytes[16];
};

// Copies are made in steps, the first two of them in any case: up to so many bytes behind a match
// are written too, to be overwritten by what follows it.
constexpr ptrdiff_t kOvershoot = 2 * sizeof(WideStep);

struct ByteOutput {
  const History& before;
  OrbLZ77DecState& state;  // keeps the rest of a match that the room was too small for
  Orb8u* begin;
  Orb8u* at;
  Orb8u* end;

  ByteOutput(Orb8u** ppDst, const Orb32s* pDstLen, const History& history, OrbLZ77DecState& record)
      : before(history), state(record), begin(load(ppDst)), at(begin), end(begin + load(pDstLen)) {}
  void close(Orb8u** ppDst, Orb32s* pDstLen) const {
    store(ppDst, at);
    store(pDstLen, static_cast<Orb32s>(end - at));
  }

  bool isFull() const { return at == end; }
  bool hasRoomFor(ptrdiff_t items) const { return end - at >= items; }

  [[gnu::always_inline]] void putLiteral(Orb32u value) { *at++ = static_cast<Orb8u>(value); }

  // Up to the room. A distance beyond all that came before reads what the history happens to hold.
  [[gnu::always_inline]] void putMatch(Orb16u length, Orb32u distance) {
    const size_t written = static_cast<size_t>(at - begin);
    if (!hasRoomFor(length + kOvershoot)) {
      at = copyMatch(*this, length, distance);
    } else if (distance - 1 < written) {
      putRepetition(length, distance);
    } else {
      const Orb32u back = distance - static_cast<Orb32u>(written);
      const Orb32u from = before.indexOf(back);
      if (length <= back && from + length <= before.size) {
        copySteps(at, before.area + from, length);
        at += length;
      } else {
        at = copyMatch(*this, length, distance);
      }
    }
  }

  // Goes on with the match that waits.
  void putPending() {
    const Orb32u length = static_cast<Orb32u>(state.pendingLength);
    if (length > 0) at = copyMatch(*this, length, static_cast<Orb32u>(state.pendingDistance));
  }

 private:
  [[gnu::always_inline]] static void copyStep(Orb8u* to, const Orb8u* from) {
    store(reinterpret_cast<WideStep*>(to), load(reinterpret_cast<const WideStep*>(from)));
  }
  [[gnu::always_inline]] static void copySteps(Orb8u* to, const Orb8u* from, Orb32u length) {
    copyStep(to, from);
    copyStep(to + sizeof(WideStep), from + sizeof(WideStep));
    for (Orb32u i = 2 * sizeof(WideStep); i < length; i += sizeof(WideStep)) {
      copyStep(to + i, from + i);
    }
  }
  // Of bytes in the output itself.
  [[gnu::always_inline]] void putRepetition(Orb32u length, Orb32u distance) {
    const Orb8u* const from = at - distance;
    Orb8u* to = at;
    at += length;
    if (distance >= sizeof(WideStep)) {
      copySteps(to, from, length);
    } else if (distance >= sizeof(uint64_t)) {
      // One step makes two copies of what is repeated, and they are as long as a step.
      copyStep(to, from);
      if (length > distance) copySteps(to + distance, from, length - distance);
    } else {
      const OrbInflateRepetition& repetition = orbInflateRepetitions[distance];
      const uint64_t word = load(reinterpret_cast<const uint64_t*>(from));
      const uint64_t repeated = (word & ((uint64_t{1} << distance * 8) - 1)) * repetition.factor;
      do {
        store(reinterpret_cast<uint64_t*>(to), repeated);
        to += repetition.step;
      } while (to < at);
    }
  }

  // The same to the byte, and from the history too. A distance of 0 stands in a damaged record
  // only, and counts as 1.
  [[gnu::noinline]] static Orb8u* copyMatch(ByteOutput out, Orb32u length, Orb32u distance) {
    if (distance == 0) distance = 1;
    const Orb32u room = static_cast<Orb32u>(out.end - out.at);
    Orb32u n = length < room ? length : room;
    out.state.pendingLength = static_cast<Orb32s>(length - n);
    out.state.pendingDistance = static_cast<Orb32s>(distance);
    const Orb32u written = static_cast<Orb32u>(out.at - out.begin);
    if (distance > written) {
      const Orb32u back = distance - written;
      const Orb32u fromBefore = n < back ? n : back;
      out.at = copyFromHistory(out.before, back, fromBefore, out.at);
      n -= fromBefore;
    }
    // Each step doubles what can be repeated at once.
    const Orb8u* const from = out.at - distance;
    while (n > 0) {
      const Orb32u whole = static_cast<Orb32u>(out.at - from);
      const Orb32u step = n < whole ? n : whole;
      __builtin_memcpy(out.at, from, step);
      out.at += step;
      n -= step;
    }
    return out.at;
  }
};

// ---- Pairs

struct PairOutput {
  OrbLZ77Pair* at;
  OrbLZ77Pair* end;

  PairOutput(OrbLZ77Pair** ppPairs, const Orb32s* pPairsLen)
      : at(load(ppPairs)), end(at + load(pPairsLen)) {}
  void close(OrbLZ77Pair** ppPairs, Orb32s* pPairsLen) const {
    store(ppPairs, at);
    store(pPairsLen, static_cast<Orb32s>(end - at));
  }

  bool isFull() const { return at == end; }
  bool hasRoomFor(ptrdiff_t items) const { return end - at >= items; }

  [[gnu::always_inline]] void putLiteral(Orb32u value) { putMatch(static_cast<Orb8u>(value), 0); }
  [[gnu::always_inline]] void putMatch(Orb16u length, Orb32u distance) {
    store(at++, OrbLZ77Pair{length, static_cast<Orb16u>(distance)});
  }
};

}  // namespace orb::ORB_BUILD::plain

#endif
