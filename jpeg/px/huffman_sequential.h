// Sequential Huffman block coding (ITU-T T.81 F.1.2, F.2.2): one block of 64 coefficients.
#ifndef ORB_JPEG_PX_HUFFMAN_SEQUENTIAL_H
#define ORB_JPEG_PX_HUFFMAN_SEQUENTIAL_H

#include "jpeg/px/huffman_bits.h"
#include "jpeg/px/huffman_direct.h"
#include "jpeg/tables/zigzag.h"

namespace orb::ORB_BUILD::plain {

constexpr Orb32s kZeroRunOf16 = 0xF0;
constexpr Orb32s kEndOfBlock = 0;

// ---- Encoding

// Bit k is set if the coefficient at zigzag position k is not 0, for k from 1 to 63.
inline uint64_t nonzeroAC(const Orb16s* block) {
  uint64_t mask = 0;
  for (int k = 1; k < 64; ++k) {
    mask |= static_cast<uint64_t>(load(block + orbZigzagNatural[k]) != 0) << k;
  }
  return mask;
}

// A difference or coefficient as it is coded: its number of bits, and those bits.
struct Magnitude {
  Orb32s category;
  Orb32u bits;
};
inline Magnitude magnitudeOf(Orb32s value) {
  const Orb32s sign = value >> 31;
  const Orb32s category = orbJpegCategory(static_cast<Orb32u>((value ^ sign) - sign));
  return {category, lowBits(static_cast<Orb32u>(value + sign), category)};
}

// The DC difference, with the predictor moved.
inline Magnitude nextDifference(const Orb16s* block, Orb16s* lastDC) {
  const Orb16s dc = load(block);
  const Orb32s difference = dc - load(lastDC);
  store(lastDC, dc);
  return magnitudeOf(difference);
}

// Goes through the nonzero AC coefficients: `zeroRun` for each whole 16 of the zeros in front of
// one, `coefficient` with the rest of them and its magnitude, `endOfBlock` if there are zeros
// behind the last. Stops at the first status other than orbStsNoErr.
template <class ZeroRun, class Coefficient, class EndOfBlock>
[[gnu::always_inline]] inline OrbStatus forEachAC(const Orb16s* block, ZeroRun zeroRun,
                                                  Coefficient coefficient, EndOfBlock endOfBlock) {
  Orb32s previous = 0;
  for (uint64_t mask = nonzeroAC(block); mask != 0; mask &= mask - 1) {
    const Orb32s k = __builtin_ctzll(mask);
    Orb32s run = k - previous - 1;
    previous = k;
    for (; run > 15; run -= 16) {
      const OrbStatus status = zeroRun();
      if (status != orbStsNoErr) return status;
    }
    const OrbStatus status = coefficient(run, magnitudeOf(load(block + orbZigzagNatural[k])));
    if (status != orbStsNoErr) return status;
  }
  return previous != 63 ? endOfBlock() : orbStsNoErr;
}

// Puts the code of a symbol and the bits behind it. `Symbol` is called with a code and a magnitude.
template <class Symbol>
[[gnu::always_inline]] inline OrbStatus encodeBlock(const Orb16s* block, Orb16s* lastDC,
                                                    const OrbiEncodeHuffmanSpec& dcTable,
                                                    const OrbiEncodeHuffmanSpec& acTable,
                                                    Symbol symbol) {
  const Magnitude difference = nextDifference(block, lastDC);
  const OrbStatus status = symbol(codeOf(dcTable, difference.category), difference);
  if (status != orbStsNoErr) return status;
  return forEachAC(
      block, [&] { return symbol(codeOf(acTable, kZeroRunOf16), {}); },
      [&](Orb32s run, Magnitude value) {
        // A category of 16 leads into the next run's row, and the last row has none behind it.
        const Orb32s number = run * 16 + value.category;
        return symbol(number < 256 ? codeOf(acTable, number) : HuffmanCode{}, value);
      },
      [&] { return symbol(codeOf(acTable, kEndOfBlock), {}); });
}

// What a block takes at most: 64 codes and values of 16 bits each, every byte of them 255.
constexpr Orb32s kMostBytesOfBlock = 512;

inline OrbStatus orbEncodeBlock(const Orb16s* block, Orb16s* lastDC,
                                const OrbiEncodeHuffmanSpec& dcTable,
                                const OrbiEncodeHuffmanSpec& acTable, BitWriter& writer) {
  if (static_cast<Orb32u>(writer.bitCount) > 7 || !isWithin(writer.position, writer.length) ||
      writer.length - writer.position < kMostBytesOfBlock) {
    return encodeBlock(block, lastDC, dcTable, acTable, [&](HuffmanCode code, Magnitude value) {
      OrbStatus status = orbJpegPutBits(writer, code.bits, code.length);
      if (status != orbStsNoErr || value.category == 0) return status;
      return orbJpegPutBits(writer, value.bits, value.category);
    });
  }
  Orb8u* const start = writer.dst + writer.position;
  RoomyWriter roomy = {start, writer.bitBuffer >> (24 - writer.bitCount), writer.bitCount};
  const OrbStatus status =
      encodeBlock(block, lastDC, dcTable, acTable, [&](HuffmanCode code, Magnitude value) {
        if (code.length == 0) return orbStsJpegHuffTableErr;
        roomy.put(code.bits << value.category | value.bits, code.length + value.category);
        return orbStsNoErr;
      });
  roomy.drain();
  writer.position += static_cast<Orb32s>(roomy.at - start);
  writer.bitBuffer = static_cast<Orb32u>(roomy.bits << (24 - roomy.count));
  writer.bitCount = roomy.count;
  return status;
}

inline void orbEncodeBlockDirect(const Orb16s* block, Orb8u* dst, Orb32s& bitPosition,
                                 Orb16s* lastDC, const OrbiEncodeHuffmanSpec& dcTable,
                                 const OrbiEncodeHuffmanSpec& acTable) {
  Orb8u* const start = dst + (bitPosition >> 3);
  const Orb32s begun = bitPosition & 7;
  RoomyWriter roomy = {start, begun != 0 ? static_cast<Orb32u>(*start) >> (8 - begun) : 0, begun};
  encodeBlock(block, lastDC, dcTable, acTable, [&](HuffmanCode code, Magnitude value) {
    roomy.put(code.bits << value.category | value.bits, code.length + value.category);
    return orbStsNoErr;
  });
  roomy.drain();
  const Orb32s bits = static_cast<Orb32s>(roomy.at - start) * 8 + roomy.count - begun;
  if (bits == 0) return;
  *roomy.at = static_cast<Orb8u>(roomy.bits << (8 - roomy.count));
  bitPosition += bits;
}

inline OrbStatus orbCountBlock(const Orb16s* block, Orb32s* dcStatistics, Orb32s* acStatistics,
                               Orb16s* lastDC) {
  const auto count = [](Orb32s* statistic) {
    store(statistic, load(statistic) + 1);
    return orbStsNoErr;
  };
  const Magnitude difference = nextDifference(block, lastDC);
  if (difference.category > 15) return orbStsJpegBitStreamErr;
  count(dcStatistics + difference.category);
  return forEachAC(
      block, [&] { return count(acStatistics + kZeroRunOf16); },
      [&](Orb32s run, Magnitude value) {
        if (value.category > 14) return orbStsJpegBitStreamErr;
        return count(acStatistics + run * 16 + value.category);
      },
      [&] { return count(acStatistics + kEndOfBlock); });
}

// ---- Decoding

// Fetches the bits of a value of category `s`.
template <class Reader>
[[gnu::always_inline]] inline OrbStatus fetchValue(Reader& reader, Orb32s s, Orb32s& value) {
  Orb32u raw = 0;
  const OrbStatus status = fetchBits(reader, s, raw);
  value = extended(raw, s);
  return status;
}

// Decodes a block; stops at the first status other than orbStsNoErr. `position` becomes the number
// of positions passed through, 0 if the DC part fails; it stays as it is at a coefficient beyond
// what runs may step over the end of the block.
template <class Reader>
[[gnu::always_inline]] inline OrbStatus orbDecodeBlock(Reader& reader, Orb16s* block,
                                                       Orb16s* lastDC,
                                                       const OrbiDecodeHuffmanSpec& dcTable,
                                                       const OrbiDecodeHuffmanSpec& acTable,
                                                       Orb32s& position) {
  __builtin_memset(static_cast<void*>(block), 0, 64 * sizeof(Orb16s));
  Orb32s symbol = 0;
  Orb32s value = 0;
  OrbStatus status = orbJpegDecodeSymbol(reader, dcTable, symbol);
  if (status == orbStsNoErr && symbol != 0) status = fetchValue(reader, symbol & 15, value);
  if (status != orbStsNoErr) {
    position = 0;
    return status;
  }
  const Orb16s dc = wrap16s(load(lastDC) + value);
  store(lastDC, dc);
  store(block, dc);

  Orb32s k = 1;
  do {
    status = orbJpegDecodeSymbol(reader, acTable, symbol);
    if (status != orbStsNoErr) break;
    const Orb32s run = symbol >> 4;
    const Orb32s s = symbol & 15;
    if (s != 0) {
      k += run;
      status = fetchValue(reader, s, value);
      if (status != orbStsNoErr) break;
      if (k > 71) return orbStsErr;
      store(block + orbZigzagNatural[k], wrap16s(value));
      ++k;
    } else {
      if (run < 15) break;
      k += 16;
    }
  } while (k < 64);
  position = k;
  return status;
}

}  // namespace orb::ORB_BUILD::plain

#endif
