// Where encoders put their bits: into the destination with a test of every byte, or, where there is
// room for whatever they may put, into a buffer that is stuffed in the end.
#ifndef ORB_JPEG_PX_HUFFMAN_OUTPUT_H
#define ORB_JPEG_PX_HUFFMAN_OUTPUT_H

#include "jpeg/px/huffman_bits.h"

namespace orb::ORB_BUILD::plain {

// Tests every byte for room.
struct BoundedOutput {
  BitWriter& writer;

  OrbStatus put(HuffmanCode code, Magnitude value) {
    const OrbStatus status = orbJpegPutBits(writer, code.bits, code.length);
    if (status != orbStsNoErr || value.category == 0) return status;
    return orbJpegPutBits(writer, value.bits, value.category);
  }
  // The low bit of each value, one at a time.
  OrbStatus putEach(const Orb8u* values, Orb32s count) {
    for (Orb32s i = 0; i < count; ++i) {
      const OrbStatus status = orbJpegPutBits(writer, values[i], 1);
      if (status != orbStsNoErr) return status;
    }
    return orbStsNoErr;
  }
};

// Gathers the bits of one call, to be stuffed when they are complete. Where they are gathered there
// is room for them and for kBytesBehindBits bytes more.
constexpr Orb32s kBytesBehindBits = 8;
struct BlockBits {
  using Word = uintptr_t;
  static constexpr Orb32s kWordBits = sizeof(Word) * 8;

  Orb8u* at;
  Word bits;  // the low `count` bits, which is fewer than a word has
  Orb32s count;

  [[gnu::always_inline]] void storeWord(Word word) {
    if constexpr (sizeof(Word) == 8) {
      store(reinterpret_cast<Word*>(at), static_cast<Word>(__builtin_bswap64(word)));
    } else {
      store(reinterpret_cast<Word*>(at), static_cast<Word>(__builtin_bswap32(word)));
    }
  }
  // The value has no other bits than its low `n`, at most half a word.
  [[gnu::always_inline]] void putField(Word value, Orb32s n) {
    count += n;
    if (count < kWordBits) {
      bits = bits << n | value;
      return;
    }
    count -= kWordBits;
    storeWord(bits << (n - count) | value >> count);
    at += sizeof(Word);
    bits = value;
  }
  [[gnu::always_inline]] void put(HuffmanCode code, Magnitude value) {
    if constexpr (sizeof(Word) == 8) {
      putField(static_cast<Word>(code.bits) << value.category | value.bits,
               code.length + value.category);
    } else {
      putField(code.bits, code.length);
      putField(value.bits, value.category);
    }
  }
  // Stores what there is. Leaves the bits behind the last whole byte, 0 to 7, in the low bits.
  [[gnu::always_inline]] void finish() {
    storeWord(bits << 1 << (kWordBits - 1 - count));
    at += count >> 3;
    count &= 7;
    bits = lowBits(static_cast<Orb32u>(bits), count);
  }
};

// Copies bytes, with a 0 behind each 255. Returns the end of the copy.
inline Orb8u* copyStuffed(const Orb8u* from, const Orb8u* end, Orb8u* dst) {
  using Word = uintptr_t;
  constexpr ptrdiff_t kWordBytes = sizeof(Word);
  for (;;) {
    for (; end - from >= kWordBytes; from += kWordBytes, dst += kWordBytes) {
      const Word word = load(reinterpret_cast<const Word*>(from));
      if (hasByte255(word)) break;
      store(reinterpret_cast<Word*>(dst), word);
    }
    if (from == end) return dst;
    // Up to the first byte of 255, or the rest.
    Orb8u byte;
    do {
      byte = *from++;
      *dst++ = byte;
    } while (byte != 255 && from != end);
    if (byte == 255) *dst++ = 0;
  }
}

// Whether the writer has room for so many bytes, all of them stuffed.
inline bool hasRoomFor(const BitWriter& writer, Orb32s bytes) {
  return static_cast<Orb32u>(writer.bitCount) <= 7 && isWithin(writer.position, writer.length) &&
         writer.length - writer.position >= 2 * bytes;
}

// Starts with the bits that the writer holds.
inline BlockBits gatherBits(const BitWriter& writer, Orb8u* bytes) {
  return {bytes, writer.bitBuffer >> (24 - writer.bitCount), writer.bitCount};
}

// Ends with the writer behind the bits that were gathered from `bytes` on.
[[gnu::always_inline]] inline void putGathered(BitWriter& writer, BlockBits bits,
                                               const Orb8u* bytes) {
  bits.finish();
  Orb8u* const start = writer.dst + writer.position;
  writer.position += static_cast<Orb32s>(copyStuffed(bytes, bits.at, start) - start);
  const Orb32u lastByte = bits.at != bytes ? bits.at[-1] : writer.bitBuffer >> 24;
  writer.bitBuffer = lastByte << 24 | static_cast<Orb32u>(bits.bits) << (24 - bits.count);
  writer.bitCount = bits.count;
}

constexpr Orb32s kBytesBehindEach = 7;

// Fails for a symbol that has no code.
struct StrictOutput {
  BlockBits bits;

  [[gnu::always_inline]] OrbStatus put(HuffmanCode code, Magnitude value) {
    if (code.length == 0) return orbStsJpegHuffTableErr;
    bits.put(code, value);
    return orbStsNoErr;
  }
  // The low bit of each value. Up to kBytesBehindEach bytes behind them are read.
  [[gnu::always_inline]] OrbStatus putEach(const Orb8u* values, Orb32s count) {
    constexpr uint64_t kLowBits = 0x0101010101010101;
    for (; count > 0; values += 8, count -= 8) {
      // The multiplication moves byte x to bit 7 - x of the top byte.
      const uint64_t eight = load(reinterpret_cast<const uint64_t*>(values)) & kLowBits;
      const Orb32u field = static_cast<Orb32u>((eight * 0x8040201008040201u) >> 56);
      const Orb32s n = count < 8 ? count : 8;
      bits.putField(field >> (8 - n), n);
    }
    return orbStsNoErr;
  }
};

}  // namespace orb::ORB_BUILD::plain

#endif
