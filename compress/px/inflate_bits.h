// The bits of a deflate stream (RFC 1951, 3.1.1).
#ifndef ORB_COMPRESS_PX_INFLATE_BITS_H
#define ORB_COMPRESS_PX_INFLATE_BITS_H

#include "compress/lz77_records.h"
#include "frame/arith.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD::plain {

// A host's source as bits. A byte is taken only when its bits are needed, so that wherever decoding
// stops, the source stands behind the byte with the last bit that was needed.
struct BitSource {
  const Orb8u* begin;
  const Orb8u* at;
  const Orb8u* end;
  Orb32u bits;  // the next one lowest, and 0 above them
  Orb32u count;

  // A negative length counts as none. Nor is more believed of the record than its bits can be.
  BitSource(Orb8u** ppSrc, const Orb32s* pSrcLen, const OrbLZ77DecState& state)
      : begin(load(ppSrc)),
        at(begin),
        end(begin + (load(pSrcLen) > 0 ? load(pSrcLen) : 0)),
        bits(state.bitAcc),
        count(static_cast<Orb32u>(limit(Orb32s{state.bitCount}, 0, 32))) {}
  void close(Orb8u** ppSrc, Orb32s* pSrcLen, OrbLZ77DecState& state) const {
    const ptrdiff_t used = at - begin;
    store(ppSrc, load(ppSrc) + used);
    store(pSrcLen, static_cast<Orb32s>(load(pSrcLen) - used));
    state.bitAcc = bits;
    state.bitCount = static_cast<Orb32s>(count);
  }

  // Takes bytes until there are `n` bits, at most 24, or any multiple of 8 on a byte boundary.
  bool need(Orb32u n) {
    while (count < n) {
      if (at == end) return false;
      bits |= static_cast<Orb32u>(*at++) << count;
      count += 8;
    }
    return true;
  }
  // The next `n` bits, at most 31, of those that are there.
  Orb32u peek(Orb32u n) const { return bits & ((1u << n) - 1); }
  void drop(Orb32u n) {
    bits >>= n;
    count -= n;
  }
  Orb32u take(Orb32u n) {
    const Orb32u value = peek(n);
    drop(n);
    return value;
  }
  void dropToByte() { drop(count & 7); }
  void clear() { bits = count = 0; }

  // Ends the stream: whole bytes that are not of it go back.
  void finish() {
    at -= count >> 3;
    clear();
  }
};

}  // namespace orb::ORB_BUILD::plain

#endif
