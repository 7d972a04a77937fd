// The MQ decoder (ITU-T T.800 C.3) in the form of software (J.1), where the code register holds the
// complement of the code, and the reader of the bypass's raw bits (D.6).
//
// Neither reads outside of its segment: behind it there are bytes of 255 without end.
#ifndef ORB_JPEG2K_PX_MQ_DECODER_H
#define ORB_JPEG2K_PX_MQ_DECODER_H

#include "frame/memory_access.h"
#include "jpeg2k/codeblock_records.h"
#include "jpeg2k/tables/mq.h"

namespace orb::ORB_BUILD::plain {

// A codeword segment.
struct Segment {
  const Orb8u* bytes;
  Orb32s length;

  Orb32u at(Orb32s position) const { return position < length ? bytes[position] : 255; }
};

// ---- The MQ decoder

// The code register is as wide as the machine's: its top 16 bits are those that the interval is
// compared with, behind them are bits that have been read ahead.
using CodeBits = uintptr_t;
constexpr Orb32u kCodeShift = 8 * sizeof(CodeBits) - 16;

struct CodeRegister {
  Segment segment;
  Orb32s position;  // of the byte read last
  bool foundMarker;
  int64_t bitsRead;  // in all
  Orb32u bitsAhead;
  CodeBits bits;
};

inline Orb32u codeOf(const CodeRegister& code) {
  return static_cast<Orb32u>(code.bits >> kCodeShift);
}

// BYTEIN for the position of a byte and whether a marker has been found there. Returns how many
// bits there are in the next byte: behind a byte of 255 it has seven. If it would be a marker it is
// not taken, and there are ones from then on. `bits` becomes their complement, which is negative
// where an encoder has put a carry into the eighth bit.
inline Orb32u byteIn(const Segment& segment, Orb32s& position, bool& foundMarker, Orb32s& bits) {
  bits = 0;
  if (foundMarker) return 8;
  const Orb32s next = static_cast<Orb32s>(segment.at(position + 1));
  if (segment.at(position) != 255) {
    ++position;
    bits = 255 - next;
    return 8;
  }
  if (next > 143) {
    foundMarker = true;
    return 8;
  }
  ++position;
  bits = 127 - next;
  return 7;
}

// Whether the next byte has a carry for the bits in front of it. Those must not see it too soon.
inline bool isCarryNext(const CodeRegister& code) {
  const Orb32u next = code.segment.at(code.position + 1);
  return code.segment.at(code.position) == 255 && next > 127 && next <= 143;
}

// Reads bytes when there are no bits ahead. It takes and returns the register by value, so that
// those of the callers stay in registers of the machine.
[[gnu::noinline]] inline CodeRegister readAhead(CodeRegister code) {
  code.bitsAhead = 0;
  do {
    Orb32s bits;
    const Orb32u width = byteIn(code.segment, code.position, code.foundMarker, bits);
    code.bitsAhead += width;
    code.bitsRead += width;
    code.bits += static_cast<CodeBits>(static_cast<intptr_t>(bits))
                 << (kCodeShift - code.bitsAhead);
  } while (code.bitsAhead + 8 <= kCodeShift && !isCarryNext(code));
  return code;
}

inline void skipBits(CodeRegister& code, Orb32u count) {
  while (count > code.bitsAhead) {
    code.bits <<= code.bitsAhead;
    count -= code.bitsAhead;
    code = readAhead(code);
  }
  code.bits <<= count;
  code.bitsAhead -= count;
}

struct MqDecoder {
  CodeRegister code;
  Orb32u a;
  // A more probable symbol changes nothing but the interval as long as what remains of that is
  // above the code and not below 0x8000: above this, which is the code or 0x7FFF.
  Orb32u floor;
};

inline void setFloor(MqDecoder& mq) {
  const Orb32u code = codeOf(mq.code);
  mq.floor = code < 0x7FFF ? 0x7FFF : code;
}

// INITDEC.
inline MqDecoder startMqDecoder(const Orb8u* src, Orb32s length) {
  MqDecoder mq = {};
  mq.code.segment = {src, length};
  mq.code.bits = static_cast<CodeBits>(255 - mq.code.segment.at(0)) << kCodeShift;
  skipBits(mq.code, 7);
  mq.a = 0x8000;
  setFloor(mq);
  return mq;
}

// DECODE and RENORMD without a branch on what is decoded: the quick way where both symbols are
// about equally probable.
[[gnu::always_inline]] inline Orb32u decodeEven(MqDecoder& mq, Orb32u& context) {
  const Orb32u state = context;
  const Orb32u q = state >> 16;
  const Orb32u rest = mq.a - q;
  // The code is in the upper subinterval, of size q, or in the lower one. The larger one is the
  // more probable symbol's.
  const Orb32u isUpper = rest <= codeOf(mq.code);
  const Orb32u isLps = isUpper ^ (rest < q);
  mq.code.bits -= static_cast<CodeBits>(rest & -isUpper) << kCodeShift;
  mq.a = rest ^ ((rest ^ q) & -isUpper);
  const Orb32u isShifted = ~mq.a >> 15 & 1;
  const Orb32u nextOnMps = orbMqStates[state & 255];
  const Orb32u nextOnLps = orbMqStates[state >> 8 & 255];
  const Orb32u next = nextOnMps ^ ((nextOnMps ^ nextOnLps) & -isLps);
  context = state ^ ((state ^ next) & -isShifted);
  const Orb32u shift = static_cast<Orb32u>(__builtin_clz(mq.a)) - 16;
  mq.a <<= shift;
  skipBits(mq.code, shift);
  setFloor(mq);
  return (state & 1) ^ isLps;
}

// The quick way where one symbol is the more probable by far.
[[gnu::always_inline]] inline Orb32u decode(MqDecoder& mq, Orb32u& context) {
  const Orb32u state = context;
  const Orb32u rest = mq.a - (state >> 16);
  if (rest <= mq.floor) return decodeEven(mq, context);
  mq.a = rest;
  return state & 1;
}

// Whether a segment cannot have been ended in the predictable way (D.4.2): if it was, its bytes are
// read to the end by now, and the code is in the upper end of what is left of the interval.
inline bool endsWrongly(const MqDecoder& mq) {
  const Segment& segment = mq.code.segment;
  // Where a decoder would stand that reads no byte before it needs it.
  Orb32s position = 0;
  bool foundMarker = false;
  int64_t bitsLeft = mq.code.bitsAhead - mq.code.bitsRead;
  do {
    Orb32s bits;
    bitsLeft += byteIn(segment, position, foundMarker, bits);
  } while (bitsLeft < 0);
  if (!foundMarker) {
    if (position < segment.length && segment.at(position) != 255) return true;
    if (bitsLeft != 0 || segment.at(position + 1) < 144) return true;
  } else if (bitsLeft == 1) {
    return false;
  }
  const Orb32u size = 0x8000u >> ((bitsLeft == 0 ? 8 : bitsLeft) - 1);
  return mq.a - size > codeOf(mq.code);
}

// ---- Raw bits

struct RawReader {
  Segment segment;
  Orb32s position;  // of the next byte
  Orb32u byte;
  Orb32s bitsLeft;  // of the byte
};

inline RawReader startRawReader(const Orb8u* src, Orb32s length) {
  return {{src, length}, 0, 0, 0};
}

inline Orb32u readBit(RawReader& raw) {
  if (raw.bitsLeft == 0) {
    raw.bitsLeft = raw.byte == 255 ? 7 : 8;
    raw.byte = raw.segment.at(raw.position++);
  }
  return raw.byte >> --raw.bitsLeft & 1;
}

// Whether the last byte is filled up with anything but 0101...
inline bool endsWrongly(const RawReader& raw) {
  const Orb32u fill = raw.byte & ((1u << raw.bitsLeft) - 1);
  return fill != 85u >> (8 - raw.bitsLeft);
}

}  // namespace orb::ORB_BUILD::plain

#endif
