// The MQ coder (ITU-T T.800 C.2) and the raw bits of the bypass (D.6), into a buffer that may be
// full at any time.
#ifndef ORB_JPEG2K_PX_MQ_ENCODER_H
#define ORB_JPEG2K_PX_MQ_ENCODER_H

#include "frame/memory_access.h"
#include "jpeg2k/codeblock_records.h"
#include "jpeg2k/tables/mq.h"

namespace orb::ORB_BUILD::plain {

// ---- Bytes

// The room that a host has given, and the bytes that it does not hold.
struct ByteSink {
  Orb8u* at;
  Orb8u* end;
  Orb8u* waiting;
  Orb32s waitingCount;

  bool isFull() const { return at == end; }
};

inline void putByte(ByteSink& sink, Orb32u byte) {
  if (sink.isFull()) {
    sink.waiting[sink.waitingCount++] = static_cast<Orb8u>(byte);
  } else {
    *sink.at++ = static_cast<Orb8u>(byte);
  }
}

// Delivers what waits, as far as there is room.
inline void drain(ByteSink& sink) {
  Orb32s taken = 0;
  while (taken < sink.waitingCount && !sink.isFull()) *sink.at++ = sink.waiting[taken++];
  for (Orb32s i = taken; i < sink.waitingCount; ++i) sink.waiting[i - taken] = sink.waiting[i];
  sink.waitingCount -= taken;
}

// ---- The MQ coder

// INITENC, without the contexts: those live as long as the block.
inline void startMq(OrbMqEncoder& mq) {
  mq = {0x8000, 0, 12, 0, 0};
}

// Sends off the byte in hand.
inline void sendByte(OrbMqEncoder& mq, ByteSink& sink) {
  if (mq.hasByte) putByte(sink, mq.b);
  mq.hasByte = 1;
}

// BYTEOUT: sends off the byte in hand, with its carry, and takes the next one from the code
// register. Behind a byte of 255 the next has room for the carry, and so seven bits of its own.
inline void byteOut(OrbMqEncoder& mq, ByteSink& sink) {
  if (mq.b != 255 && mq.c >> 27 != 0) {
    ++mq.b;
    mq.c &= 0x7FFFFFF;
  }
  sendByte(mq, sink);
  mq.ct = mq.b == 255 ? 7 : 8;
  mq.b = mq.c >> (27 - mq.ct);
  mq.c &= (1u << (27 - mq.ct)) - 1;
}

// CODEMPS, CODELPS and RENORME: codes decisions from `next` on, until `end` or until the room is
// used up. Returns where it stopped. With kIsEven there is no branch on what is coded, which is the
// quick way where both symbols are about equally probable.
template <bool kIsEven>
inline const Orb8u* codeDecisions(OrbMqEncoder& outerMq, Orb32u* contexts, ByteSink& outerSink,
                                  const Orb8u* next, const Orb8u* end) {
  OrbMqEncoder mq = outerMq;
  ByteSink sink = outerSink;
  while (next != end && !sink.isFull()) {
    const Orb32u bit = *next & 1;
    Orb32u& context = contexts[*next >> 1];
    ++next;
    const Orb32u state = context;
    const Orb32u q = state >> 16;
    const Orb32u isLps = (state ^ bit) & 1;
    mq.a -= q;
    if (!kIsEven && (mq.a & ~(isLps << 15) & 0x8000) != 0) {
      mq.c += q;
      continue;
    }
    const Orb32u isShifted = (isLps | ~mq.a >> 15) & 1;
    // The larger subinterval is the more probable symbol's; the upper one has the size q.
    const Orb32u isLower = -(isLps ^ (mq.a < q) ^ 1);
    mq.c += q & isLower;
    mq.a = q ^ ((q ^ mq.a) & isLower);
    const Orb32u nextOnMps = orbMqStates[state & 255];
    const Orb32u nextOnLps = orbMqStates[state >> 8 & 255];
    const Orb32u following = nextOnMps ^ ((nextOnMps ^ nextOnLps) & -isLps);
    context = state ^ ((state ^ following) & -isShifted);
    Orb32u shift = static_cast<Orb32u>(__builtin_clz(mq.a)) - 16;
    mq.a <<= shift;
    while (shift >= mq.ct) {
      mq.c <<= mq.ct;
      shift -= mq.ct;
      byteOut(mq, sink);
    }
    mq.c <<= shift;
    mq.ct -= shift;
  }
  outerMq = mq;
  outerSink = sink;
  return next;
}

// ---- Terminations (T.800 C.2.9, D.4.2): each leaves bytes from which all that has been coded can
// be decoded, whatever stands behind them. The byte that is in hand at the end is dropped.

// FLUSH: as many bits of ones as the interval allows.
inline void flushFully(OrbMqEncoder& mq, ByteSink& sink) {
  Orb32u ones = mq.c | 0xFFFF;
  if (ones >= mq.c + mq.a) ones -= 0x8000;
  mq.c = ones << mq.ct;
  byteOut(mq, sink);
  mq.c = (mq.c | 0x7FFF) << mq.ct;
  byteOut(mq, sink);
  mq.c |= 0x7FFF;
  if (mq.b < 255) {
    mq.c <<= mq.ct;
    byteOut(mq, sink);
  }
}

// The lower end of the interval to the last bit that has been shifted in. A decoder can check this
// one: there is no other way to end (predictable termination).
inline void flushPredictably(OrbMqEncoder& mq, ByteSink& sink) {
  Orb32s bits = 12 - static_cast<Orb32s>(mq.ct);
  while (bits > 0) {
    mq.c <<= mq.ct;
    byteOut(mq, sink);
    bits -= static_cast<Orb32s>(mq.ct);
  }
  if (mq.b < 255) {
    mq.c <<= mq.ct;
    byteOut(mq, sink);
  }
}

// As few bytes as there can be. Behind the last byte a decoder reads ones without end, so the bytes
// of the interval's lower end will do up to the first in which the upper end differs: filled up
// with ones they are above the one and below the other. That byte is never 255, or the ends would
// have differed in the byte before; but a byte of 255 may be in hand to begin with, and then the
// fill stands for it.
inline void flushShortest(OrbMqEncoder& mq, ByteSink& sink) {
  const Orb32u high = (mq.c + mq.a) << mq.ct;
  const Orb32u low = mq.c << mq.ct;
  mq.c = low;
  // The byte in hand ends above bit 27.
  for (Orb32u end = 27; low >> end == high >> end; end -= mq.ct) {
    byteOut(mq, sink);
    mq.c <<= mq.ct;
  }
  if (mq.b < 255) sendByte(mq, sink);
}

// ---- Raw bits

inline void startRaw(OrbRawWriter& raw) {
  raw = {0, 7, 0};
}

// Whether there are bits that do not fill a byte.
inline bool hasRawBits(const OrbRawWriter& raw) {
  return raw.position != (raw.follows255 ? 6 : 7);
}

// Sends off the byte that is being filled. Behind a byte of 255 the next has seven bits.
inline void sendRawByte(OrbRawWriter& raw, ByteSink& sink) {
  putByte(sink, raw.bits);
  raw.follows255 = raw.bits == 255;
  raw.position = raw.follows255 ? 6 : 7;
  raw.bits = 0;
}

// Packs bits from `next` on, one to a byte, until `end` or until the room is used up. Returns where
// it stopped.
inline const Orb8u* packBits(OrbRawWriter& raw, ByteSink& sink, const Orb8u* next,
                             const Orb8u* end) {
  while (next != end && !sink.isFull()) {
    if (raw.position == 7 && end - next >= 8) {
      // The product has the eight bits in its top byte, the first one highest.
      uint64_t eight;
      __builtin_memcpy(&eight, next, 8);
      raw.bits = static_cast<Orb32u>(eight * 0x8040201008040201u >> 56);
      next += 8;
      sendRawByte(raw, sink);
      continue;
    }
    raw.bits |= static_cast<Orb32u>(*next++) << raw.position;
    if (--raw.position < 0) sendRawByte(raw, sink);
  }
  return next;
}

// Fills the last byte up with 0101..., which a decoder can check. A byte of which no bit is taken
// is none.
inline void flushRaw(OrbRawWriter& raw, ByteSink& sink) {
  if (hasRawBits(raw)) {
    raw.bits |= 42u >> (6 - raw.position);
    putByte(sink, raw.bits);
  }
  startRaw(raw);
}

}  // namespace orb::ORB_BUILD::plain

#endif
