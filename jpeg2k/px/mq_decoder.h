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

// The interval A is kept in two parts. A more probable symbol leaves the code register alone, and
// needs no renormalisation, as long as what remains of A is above the code (C >> 16) and not below
// 0x8000. The least such size changes only when something else happens, so `floor` holds it, and
// `spare` what A is beyond it: the common symbol costs one subtraction and one test.
struct MqDecoder {
  Segment segment;
  Orb32s position;  // of the byte read last
  Orb32u c;
  Orb32s floor;
  Orb32s spare;
  Orb32u ct;  // shifts before the next byte
  bool foundMarker;
};

inline void setInterval(MqDecoder& mq, Orb32u a) {
  const Orb32s code = static_cast<Orb32s>(mq.c >> 16);
  mq.floor = code < 0x8000 ? 0x8000 : code + 1;
  mq.spare = static_cast<Orb32s>(a) - mq.floor;
}
inline Orb32u intervalOf(const MqDecoder& mq) {
  return static_cast<Orb32u>(mq.floor + mq.spare);
}

// BYTEIN. Behind a byte of 255 the next has seven bits; if it is a marker it is not taken, and
// there are ones from then on.
inline void byteIn(MqDecoder& mq) {
  mq.ct = 8;
  if (mq.foundMarker) return;
  const Orb32u next = mq.segment.at(mq.position + 1);
  if (mq.segment.at(mq.position) != 255) {
    mq.c += 0xFF00 - (next << 8);
  } else if (next > 143) {
    mq.foundMarker = true;
    return;
  } else {
    mq.c += 0xFE00 - (next << 9);
    mq.ct = 7;
  }
  ++mq.position;
}

// INITDEC.
inline MqDecoder startMqDecoder(const Orb8u* src, Orb32s length) {
  MqDecoder mq = {};
  mq.segment = {src, length};
  mq.c = (255 - mq.segment.at(0)) << 16;
  byteIn(mq);
  mq.c <<= 7;
  mq.ct -= 7;
  setInterval(mq, 0x8000);
  return mq;
}

// DECODE and RENORMD.
[[gnu::always_inline]] inline Orb32u decode(MqDecoder& mq, Orb32u& context) {
  const Orb32u state = context;
  const Orb32u q = state >> 16;
  mq.spare -= static_cast<Orb32s>(q);
  if (mq.spare >= 0) return state & 1;
  Orb32u a = intervalOf(mq);
  // The subinterval on the code's side is the less probable symbol's, unless it is the larger one.
  const bool isBelow = a <= mq.c >> 16;
  const bool isExchanged = a < q;
  const Orb32u isLps = isBelow != isExchanged;
  if (isBelow) {
    mq.c -= a << 16;
    a = q;
  }
  context = orbMqStates[(isLps ? state >> 8 : state) & 255];
  Orb32u shift = static_cast<Orb32u>(__builtin_clz(a)) - 16;
  a <<= shift;
  while (shift > mq.ct) {
    mq.c <<= mq.ct;
    shift -= mq.ct;
    byteIn(mq);
  }
  mq.c <<= shift;
  mq.ct -= shift;
  setInterval(mq, a);
  return (state & 1) ^ isLps;
}

// Whether a segment cannot have been ended in the predictable way (D.4.2): if it was, its bytes are
// read to the end by now, and the code is in the lower end of what is left of the interval.
inline bool endsWrongly(const MqDecoder& mq) {
  if (!mq.foundMarker) {
    if (mq.position < mq.segment.length && mq.segment.at(mq.position) != 255) return true;
    if (mq.ct != 0 || mq.segment.at(mq.position + 1) < 144) return true;
  } else if (mq.ct == 1) {
    return false;
  }
  const Orb32u bitsLeft = mq.ct == 0 ? 8 : mq.ct;
  return intervalOf(mq) - (0x8000u >> (bitsLeft - 1)) > mq.c >> 16;
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
