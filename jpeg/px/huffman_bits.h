// The bits of entropy-coded data (ITU-T T.81 F.1.2.3, F.2.2.3 to F.2.2.5): what the sequential, the
// progressive and the lossless coders share.
//
// A coder opens a BitWriter or a BitReader over a state record and a buffer, works on it in
// registers, and closes it in the end, which is when the record and the position are written. Both
// hold at any time what the record would hold, so a coder may close and return wherever it fails.
#ifndef ORB_JPEG_PX_HUFFMAN_BITS_H
#define ORB_JPEG_PX_HUFFMAN_BITS_H

#include "frame/arith.h"
#include "frame/memory.h"
#include "frame/memory_access.h"
#include "jpeg/huffman_records.h"
#include "jpeg/tables/huffman.h"

namespace orb::ORB_BUILD::plain {

// The low `n` bits, n from 0 to 31.
inline Orb32u lowBits(Orb32u value, Orb32s n) {
  return value & ((1u << n) - 1);
}

// The number of bits of a magnitude of up to 16 bits.
inline Orb32s orbJpegCategory(Orb32u magnitude) {
  return magnitude < 256 ? orbJpegCategoryOfByte[magnitude]
                         : orbJpegCategoryOfByte[magnitude >> 8] + 8;
}

// The value of `s` raw bits, s from 0 to 15. Their top bit is as good as random, so there is no
// branch on it.
inline Orb32s extended(Orb32u raw, Orb32s s) {
  const Orb32s value = static_cast<Orb32s>(raw);
  const Orb32s isNegative = (value - ((1 << s) >> 1)) >> 31;
  return value + (isNegative & orbJpegExtend[s]);
}

// A position outside of the buffer counts as its end, and stays as it is.
inline bool isWithin(Orb32s position, Orb32s length) {
  return static_cast<Orb32u>(position) < static_cast<Orb32u>(length);
}

// ---- Writing

// The code of a symbol.
struct HuffmanCode {
  Orb32u bits = 0;
  Orb32s length = 0;  // 0 for a symbol without a code, else 1 to 16
};
// Of an entry with a length that no code has, as in a damaged table, nothing is believed.
[[gnu::always_inline]] inline HuffmanCode codeOf(const OrbiEncodeHuffmanSpec& table,
                                                 Orb32s symbol) {
  const Orb32u entry = table.entries[symbol];
  if (entry - (1 << 16) >= 16 << 16) return {};
  return {entry & 65535, static_cast<Orb32s>(entry >> 16)};
}

// A difference or coefficient as it is coded: its number of bits, and those bits.
struct Magnitude {
  Orb32s category = 0;
  Orb32u bits = 0;
};
[[gnu::always_inline]] inline Magnitude magnitudeOf(Orb32s value) {
  const Orb32s sign = value >> 31;
  const Orb32s bits = value + sign;  // one less if negative, which inverts the magnitude
  const Orb32s category = orbJpegCategory(static_cast<Orb32u>(bits ^ sign));
  return {category, lowBits(static_cast<Orb32u>(bits), category)};
}

struct BitWriter {
  Orb8u* dst;
  Orb32s length;
  Orb32s position;
  Orb32u bitBuffer;
  Orb32s bitCount;

  BitWriter(Orb8u* pDst, Orb32s dstLenBytes, const Orb32s* pDstCurrPos,
            const OrbiEncodeHuffmanState& state)
      : dst(pDst),
        length(dstLenBytes),
        position(load(pDstCurrPos)),
        bitBuffer(state.bitBuffer),
        bitCount(state.bitCount) {}
  void close(Orb32s* pDstCurrPos, OrbiEncodeHuffmanState& state) const {
    store(pDstCurrPos, position);
    state.bitBuffer = bitBuffer;
    state.bitBufferHigh = 0;
    state.bitCount = bitCount;
  }
};

// Appends the low `length` bits of the value, at most 16. No bits are those of a symbol without a
// code, and a fault.
//
// At the end of the destination the writer keeps the bits that it had, while the position has moved
// behind the last byte that was stored.
inline OrbStatus orbJpegPutBits(BitWriter& writer, Orb32u value, Orb32s length) {
  if (length == 0) return orbStsJpegHuffTableErr;
  Orb32s count = writer.bitCount + length;
  Orb32u bits = writer.bitBuffer | lowBits(value, length) << ((24 - count) & 31);
  while (count >= 8) {
    if (!isWithin(writer.position, writer.length)) return orbStsJpegBufferEndErr;
    const Orb8u byte = static_cast<Orb8u>(bits >> 16);
    writer.dst[writer.position++] = byte;
    if (byte == 255) {
      if (!isWithin(writer.position, writer.length)) return orbStsJpegBufferEndErr;
      writer.dst[writer.position++] = 0;
    }
    count -= 8;
    bits <<= 8;
  }
  writer.bitBuffer = bits;
  writer.bitCount = count;
  return orbStsNoErr;
}

// Ends a scan or a restart interval: fills the last byte up with ones, and drops what is left of
// them. The state starts anew even if there is no room for the byte.
inline OrbStatus orbFlushBits(BitWriter& writer, Orb32s* pDstCurrPos,
                              OrbiEncodeHuffmanState& state) {
  const OrbStatus status = orbJpegPutBits(writer, 127, 7);
  writer.close(pDstCurrPos, state);
  orbZero(&state, sizeof state);
  return status;
}

// ---- Reading

struct BitReader {
  const Orb8u* src;
  const Orb8u* at;
  const Orb8u* end;
  const Orb8u* fastEnd;  // from in front of it four bytes may be loaded, and nothing is in the way
  Orb32s marker;
  Orb32u bitBuffer;
  Orb32s bitCount;
  // The valid bits once more, left aligned: from here it is the shortest way to the next symbol.
  Orb32u next;

  BitReader(const Orb8u* pSrc, Orb32s srcLenBytes, const Orb32s* pSrcCurrPos, const Orb32s* pMarker,
            const OrbiDecodeHuffmanState& state)
      : src(pSrc),
        at(pSrc + load(pSrcCurrPos)),
        end(isWithin(load(pSrcCurrPos), srcLenBytes) ? pSrc + srcLenBytes : at),
        fastEnd(nullptr),
        marker(load(pMarker)),
        bitBuffer(state.bitBuffer),
        bitCount(state.bitCount) {
    align();
    if (end - at >= 4 && marker == 0 && bitCount >= 0) fastEnd = end - 3;
  }
  // Of 1 to 32 bits. There is nothing to align in other counts, and nothing is taken from them.
  void align() { next = bitBuffer << (-bitCount & 31); }
  void close(Orb32s* pSrcCurrPos, Orb32s* pMarker, OrbiDecodeHuffmanState& state) const {
    store(pSrcCurrPos, static_cast<Orb32s>(at - src));
    store(pMarker, marker);
    state.bitBuffer = bitBuffer;
    state.bitBufferHigh = 0;
    state.bitCount = bitCount;
  }
};

// Whether one of the bytes of an unsigned word is 255.
template <class Word>
inline bool hasByte255(Word word) {
  constexpr Word kOnes = static_cast<Word>(-1) / 255;  // 1 in every byte
  return (word & ~(word + kOnes) & kOnes << 7) != 0;
}

struct FillResult {
  BitReader reader;
  OrbStatus status;
};

// The whole of orbJpegFillBits, a byte at a time. It takes and returns the reader by value, so that
// the callers' readers stay in registers.
[[gnu::noinline]] inline FillResult fillByBytes(BitReader reader, Orb32s need) {
  if (reader.marker != 0) {
    return {reader, need > reader.bitCount ? orbStsJpegBitStreamErr : orbStsNoErr};
  }
  while (reader.bitCount < 25) {
    if (reader.at == reader.end) {
      return {reader, need > reader.bitCount ? orbStsJpegBufferEndErr : orbStsNoErr};
    }
    const Orb8u byte = *reader.at++;
    if (byte == 255) {
      Orb8u next;
      do {
        if (reader.at == reader.end) return {reader, orbStsJpegBufferEndErr};
        next = *reader.at++;
      } while (next == 255);
      if (next != 0) {
        reader.marker = next;
        reader.fastEnd = nullptr;
        return {reader, orbStsNoErr};
      }
    }
    reader.bitBuffer = reader.bitBuffer << 8 | byte;
    reader.bitCount += 8;
  }
  return {reader, orbStsNoErr};
}

// Reads bytes until there are 25 bits or more, or a marker comes up, or the source ends. Called
// with no more than 24 bits. Bits that are needed and not there are a fault behind a marker and at
// the end of the source, but not when the marker comes up just now: they are then taken from what
// the buffer happens to hold, and the count falls below zero. A byte of 255 at the very end of the
// source is a fault in any case.
[[gnu::always_inline]] inline OrbStatus orbJpegFillBits(BitReader& reader, Orb32s need) {
  // As many as there is room for at once, when no byte of 255 is among the next four.
  if (reader.at < reader.fastEnd) {
    const Orb32u word = __builtin_bswap32(load(reinterpret_cast<const Orb32u*>(reader.at)));
    if (!hasByte255(word)) {
      const Orb32s unused = (reader.bitCount + 7) & ~7;  // of the word's bits
      const uint64_t both = static_cast<uint64_t>(reader.bitBuffer) << 32 | word;
      reader.bitBuffer = static_cast<Orb32u>(both >> unused);
      reader.bitCount += 32 - unused;
      reader.at += (32 - unused) >> 3;
      reader.align();
      return orbStsNoErr;
    }
  }
  const FillResult filled = fillByBytes(reader, need);
  reader = filled.reader;
  reader.align();
  return filled.status;
}

// Drops `n` bits that are there.
[[gnu::always_inline]] inline void skipBits(BitReader& reader, Orb32s n) {
  reader.bitCount -= n;
  reader.next <<= n;
}

// Takes `n` bits, at most 16, and fetches them first if need be. Behind a marker that has just come
// up they are taken from the buffer even if they are not there.
[[gnu::always_inline]] inline OrbStatus fetchBits(BitReader& reader, Orb32s n, Orb32u& bits) {
  if (reader.bitCount < n) {
    const OrbStatus status = orbJpegFillBits(reader, n);
    if (status < 0) return status;
    if (reader.bitCount < n) {
      reader.bitCount -= n;
      bits = lowBits(reader.bitBuffer >> (reader.bitCount & 31), n);
      return orbStsNoErr;
    }
  }
  bits = reader.next >> 1 >> (31 - n);
  skipBits(reader, n);
  return orbStsNoErr;
}

// Fetches the bits of a value of category `s`, at most 15.
template <class Reader>
[[gnu::always_inline]] inline OrbStatus fetchValue(Reader& reader, Orb32s s, Orb32s& value) {
  Orb32u raw = 0;
  const OrbStatus status = fetchBits(reader, s, raw);
  value = extended(raw, s);
  return status;
}

// The symbol of the code of this length, if there is one: codes of one length are successive.
//
// Bits that were not there may make a code that no stream leads to; its position is kept within the
// symbols.
inline bool findSymbol(const OrbiDecodeHuffmanSpec& table, Orb32s length, Orb32u code,
                       Orb32s& symbol) {
  const Orb32u last = table.maxCode[length];
  if (last == 65535 || code > last) return false;
  const Orb32u position = table.valOffset[length] - table.minCode[length] + code;
  symbol = static_cast<Orb8u>(table.symbols[position & 255]);
  return true;
}

// Whether a code of at most 8 bits was looked up. Other lengths stand in no table but a damaged
// one.
inline bool isShortCode(Orb32u entry) {
  return entry - (1 << 16) < 8 << 16;
}

// Decodes bit by bit, starting with codes of length `n`.
[[gnu::always_inline]] inline OrbStatus decodeLongSymbol(BitReader& reader,
                                                         const OrbiDecodeHuffmanSpec& table,
                                                         Orb32s n, Orb32s& symbol) {
  Orb32u code = 0;
  OrbStatus status = fetchBits(reader, n, code);
  if (status < 0) return status;
  for (Orb32s length = n; length <= 16; ++length) {
    if (findSymbol(table, length, code, symbol)) return orbStsNoErr;
    Orb32u bit = 0;
    status = fetchBits(reader, 1, bit);
    if (status < 0) return status;
    code = code * 2 + bit;
  }
  symbol = 0;
  return orbStsJpegBitStreamErr;
}

// Decodes a symbol: by the next 8 bits if the code is no longer, bit by bit if it is, or if there
// are fewer than 8 bits left. When no code matches, 17 bits are gone.
[[gnu::always_inline]] inline OrbStatus orbJpegDecodeSymbol(BitReader& reader,
                                                            const OrbiDecodeHuffmanSpec& table,
                                                            Orb32s& symbol) {
  if (reader.bitCount < 8) {
    const OrbStatus status = orbJpegFillBits(reader, 0);
    if (status < 0) return status;
    if (reader.bitCount < 8) return decodeLongSymbol(reader, table, 1, symbol);
  }
  const Orb32u entry = table.lookup[reader.next >> 24];
  if (!isShortCode(entry)) return decodeLongSymbol(reader, table, 9, symbol);
  skipBits(reader, static_cast<Orb32s>(entry >> 16));
  symbol = static_cast<Orb8u>(entry);
  return orbStsNoErr;
}

}  // namespace orb::ORB_BUILD::plain

#endif
