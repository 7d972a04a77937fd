// A bit stream of 16-bit units, most significant bit first: what coefficient coding and
// fixed-length coding share. Between calls the host keeps the position, the pending bits (left
// aligned, zeros behind them) and their number.
#ifndef ORB_JPEGXR_PX_BIT_STREAM_H
#define ORB_JPEGXR_PX_BIT_STREAM_H

#include "frame/arith.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD::plain {

// ---- Writing

// No more than 16 bits wait.
struct BitWriter {
  Orb8u* at;
  Orb32u bits;
  Orb32u count;

  BitWriter(Orb8u** ppBitStream, const Orb32u* pBitBuf, const Orb32u* pBitCount)
      : at(load(ppBitStream)), bits(load(pBitBuf)), count(load(pBitCount)) {
    sendUnit();
  }
  void close(Orb8u** ppBitStream, Orb32u* pBitBuf, Orb32u* pBitCount) const {
    store(ppBitStream, at);
    store(pBitBuf, bits);
    store(pBitCount, count);
  }
  void sendUnit() {
    if (count <= 16) return;
    at[0] = static_cast<Orb8u>(bits >> 24);
    at[1] = static_cast<Orb8u>(bits >> 16);
    at += 2;
    bits <<= 16;
    count -= 16;
  }
};

// Appends `n` bits, at most 16; the value has no others.
inline void putBits(BitWriter& writer, Orb32u value, Orb32u n) {
  writer.bits |= value << (16 - writer.count) << (16 - n);
  writer.count += n;
  writer.sendUnit();
}

// ---- Reading

// At least 16 bits are there.
struct BitReader {
  const Orb8u* at;
  Orb32u bits;
  Orb32u count;

  BitReader(Orb16u** ppBitStream, const Orb32u* pBitBuf, const Orb32u* pBitCount)
      : at(reinterpret_cast<const Orb8u*>(load(ppBitStream))),
        bits(load(pBitBuf)),
        count(load(pBitCount)) {
    fetchUnit();
  }
  void close(Orb16u** ppBitStream, Orb32u* pBitBuf, Orb32u* pBitCount) const {
    store(ppBitStream, reinterpret_cast<Orb16u*>(reinterpret_cast<uintptr_t>(at)));
    store(pBitBuf, bits);
    store(pBitCount, count);
  }
  void fetchUnit() {
    if (count >= 16) return;
    const Orb32u unit = __builtin_bswap16(load(reinterpret_cast<const Orb16u*>(at)));
    bits |= unit << (16 - count);
    at += 2;
    count += 16;
  }
};

// The next `n` bits, at most 16, which stay there.
inline Orb32u peekBits(const BitReader& reader, Orb32u n) {
  return reader.bits >> 1 >> (31 - n);
}

// Drops `n` bits, at most 16.
inline void skipBits(BitReader& reader, Orb32u n) {
  reader.bits <<= n;
  reader.count -= n;
  reader.fetchUnit();
}

inline Orb32u takeBits(BitReader& reader, Orb32u n) {
  const Orb32u value = peekBits(reader, n);
  skipBits(reader, n);
  return value;
}

// ---- Signs

inline Orb32u magnitudeOf(Orb32s value) {
  return static_cast<Orb32u>(value < 0 ? -value : value);
}

// The value, or its negative for a sign of -1.
inline Orb32s withSign(Orb32s value, Orb32s sign) {
  return (value ^ sign) - sign;
}

}  // namespace orb::ORB_BUILD::plain

#endif
