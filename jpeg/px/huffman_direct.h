// The bits of the Direct form of decoding: a source without a length, which ends with a marker, and
// no record but what the host carries. The functions are those of the ordinary form.
#ifndef ORB_JPEG_PX_HUFFMAN_DIRECT_H
#define ORB_JPEG_PX_HUFFMAN_DIRECT_H

#include "jpeg/px/huffman_bits.h"

namespace orb::ORB_BUILD::plain {

struct DirectReader {
  const Orb8u* at;
  Orb32s marker;  // above 0 when one has been met
  Orb32u bitBuffer;
  Orb32s bitCount;
};

// Reads bytes until there are 25 bits or more, or a marker comes up.
[[gnu::always_inline]] inline void fillDirect(DirectReader& reader) {
  if (reader.marker > 0) return;
  while (reader.bitCount < 25) {
    const Orb8u byte = *reader.at++;
    if (byte == 255) {
      Orb8u next;
      do next = *reader.at++;
      while (next == 255);
      if (next != 0) {
        reader.marker = next;
        return;
      }
    }
    reader.bitBuffer = reader.bitBuffer << 8 | byte;
    reader.bitCount += 8;
  }
}

// Fetches `n` bits, at most 15. With one bit left or more it takes what there is, and the count may
// fall below zero.
[[gnu::always_inline]] inline OrbStatus fetchBits(DirectReader& reader, Orb32s n, Orb32u& bits) {
  if (reader.bitCount < n) {
    fillDirect(reader);
    if (reader.bitCount < n && reader.bitCount < 1) return orbStsJpegBufferEndErr;
  }
  reader.bitCount -= n;
  bits = lowBits(reader.bitBuffer >> (reader.bitCount & 31), n);
  return orbStsNoErr;
}

// A code of more than 8 bits, none of which may be missing.
[[gnu::always_inline]] inline OrbStatus decodeLongSymbol(DirectReader& reader,
                                                         const OrbiDecodeHuffmanSpec& table,
                                                         Orb32s& symbol) {
  Orb32u code = 0;
  for (Orb32s length = 9; length <= 16; ++length) {
    const Orb32s n = length == 9 ? 9 : 1;
    if (reader.bitCount < n) fillDirect(reader);
    if (reader.bitCount < n) return orbStsJpegBitStreamErr;
    Orb32u bits = 0;
    fetchBits(reader, n, bits);
    code = code << 1 | bits;
    if (findSymbol(table, length, code, symbol)) return orbStsNoErr;
  }
  return orbStsJpegBitStreamErr;
}

// Decodes a symbol. Fewer than 8 bits behind a marker are looked up with zeros behind them, so that
// the count may fall below zero. Without any bit left there is no symbol, and no fault:
// orbStsNoOperation.
[[gnu::always_inline]] inline OrbStatus orbJpegDecodeSymbol(DirectReader& reader,
                                                            const OrbiDecodeHuffmanSpec& table,
                                                            Orb32s& symbol) {
  if (reader.bitCount < 8) {
    fillDirect(reader);
    if (reader.bitCount < 1) return orbStsNoOperation;
  }
  const Orb32u next = reader.bitCount >= 8 ? reader.bitBuffer >> ((reader.bitCount - 8) & 31)
                                           : reader.bitBuffer << (8 - reader.bitCount);
  const Orb32u entry = table.lookup[next & 255];
  if (!isShortCode(entry)) return decodeLongSymbol(reader, table, symbol);
  reader.bitCount -= static_cast<Orb32s>(entry >> 16);
  symbol = static_cast<Orb8u>(entry);
  return orbStsNoErr;
}

}  // namespace orb::ORB_BUILD::plain

#endif
