// Sequential Huffman block coding (ITU-T T.81 F.1.2, F.2.2): one block of 64 coefficients.
#ifndef ORB_JPEG_PX_HUFFMAN_SEQUENTIAL_H
#define ORB_JPEG_PX_HUFFMAN_SEQUENTIAL_H

#include "jpeg/px/huffman_blocks.h"
#include "jpeg/px/huffman_direct.h"
#include "jpeg/px/huffman_output.h"

namespace orb::ORB_BUILD::plain {

// ---- Encoding

// Goes through the symbols of a block with the values behind them: symbols.dc(value), then
// symbols.ac(symbol, value) for each coefficient other than 0, for each whole 16 of the zeros in
// front of one, and for zeros behind the last. Stops at the first status other than orbStsNoErr.
template <class Symbols>
[[gnu::always_inline]] inline OrbStatus forEachSymbol(const Orb16s* block, Orb16s* lastDC,
                                                      Symbols& symbols) {
  OrbStatus status = symbols.dc(nextDifference(load(block), lastDC));
  if (status != orbStsNoErr) return status;
  Orb32s previous = 0;
  const auto isNonzero = [](Orb16s value) { return value != 0; };
  for (uint64_t mask = zigzagSet(block, 1, 63, isNonzero); mask != 0; mask &= mask - 1) {
    const Orb32s k = lowestBit(mask);
    Orb32s run = k - previous - 1;
    previous = k;
    for (; run > 15; run -= 16) {
      status = symbols.ac(kZeroRunOf16, {});
      if (status != orbStsNoErr) return status;
    }
    const Magnitude value = magnitudeOf(load(block + orbZigzagNatural[k]));
    status = symbols.ac(run * 16 + value.category, value);
    if (status != orbStsNoErr) return status;
  }
  return previous != 63 ? symbols.ac(kEndOfBlock, {}) : orbStsNoErr;
}

// Writes them: out.put(code, value).
template <class Output>
struct SymbolEncoder {
  const OrbiEncodeHuffmanSpec& dcTable;
  const OrbiEncodeHuffmanSpec& acTable;
  Output out;

  [[gnu::always_inline]] OrbStatus dc(Magnitude value) {
    return out.put(codeOf(dcTable, value.category), value);
  }
  // A category of 16 leads into the next run's row, and the last row has none behind it.
  [[gnu::always_inline]] OrbStatus ac(Orb32s symbol, Magnitude value) {
    return out.put(symbol < 256 ? codeOf(acTable, symbol) : HuffmanCode{}, value);
  }
};

// Counts them.
struct SymbolCounter {
  Orb32s* dcStatistics;
  Orb32s* acStatistics;

  [[gnu::always_inline]] static OrbStatus count(Orb32s* statistic) {
    store(statistic, load(statistic) + 1);
    return orbStsNoErr;
  }
  [[gnu::always_inline]] OrbStatus dc(Magnitude value) {
    return value.category > 15 ? orbStsJpegBitStreamErr : count(dcStatistics + value.category);
  }
  [[gnu::always_inline]] OrbStatus ac(Orb32s symbol, Magnitude value) {
    return value.category > 14 ? orbStsJpegBitStreamErr : count(acStatistics + symbol);
  }
};

inline OrbStatus orbCountBlock(const Orb16s* block, Orb32s* dcStatistics, Orb32s* acStatistics,
                               Orb16s* lastDC) {
  SymbolCounter counter = {dcStatistics, acStatistics};
  return forEachSymbol(block, lastDC, counter);
}

// What a block takes at most: 64 codes and values of 16 bits each.
constexpr Orb32s kMostBytesOfBlock = 64 * 32 / 8;

// Leaves out the codes of symbols that have none.
struct LenientOutput {
  BlockBits bits;

  [[gnu::always_inline]] OrbStatus put(HuffmanCode code, Magnitude value) {
    bits.put(code, value);
    return orbStsNoErr;
  }
};

[[gnu::noinline]] inline OrbStatus encodeBlockBounded(const Orb16s* block, Orb16s* lastDC,
                                                      const OrbiEncodeHuffmanSpec& dcTable,
                                                      const OrbiEncodeHuffmanSpec& acTable,
                                                      BitWriter& writer) {
  SymbolEncoder<BoundedOutput> encoder = {dcTable, acTable, {writer}};
  return forEachSymbol(block, lastDC, encoder);
}

// Where there is room for any block, which is nearly always, nothing is tested on the way.
inline OrbStatus orbEncodeBlock(const Orb16s* block, Orb16s* lastDC,
                                const OrbiEncodeHuffmanSpec& dcTable,
                                const OrbiEncodeHuffmanSpec& acTable, BitWriter& writer) {
  if (!hasRoomFor(writer, kMostBytesOfBlock)) {
    return encodeBlockBounded(block, lastDC, dcTable, acTable, writer);
  }
  Orb8u bytes[kMostBytesOfBlock + kBytesBehindBits];
  SymbolEncoder<StrictOutput> encoder = {dcTable, acTable, {gatherBits(writer, bytes)}};
  const OrbStatus status = forEachSymbol(block, lastDC, encoder);
  putGathered(writer, encoder.out.bits, bytes);
  return status;
}

inline void orbEncodeBlockDirect(const Orb16s* block, Orb8u* dst, Orb32s& bitPosition,
                                 Orb16s* lastDC, const OrbiEncodeHuffmanSpec& dcTable,
                                 const OrbiEncodeHuffmanSpec& acTable) {
  Orb8u* const start = dst + (bitPosition >> 3);
  const Orb32s begun = bitPosition & 7;
  Orb8u bytes[kMostBytesOfBlock + kBytesBehindBits];
  SymbolEncoder<LenientOutput> encoder = {
      dcTable,
      acTable,
      {{bytes, begun != 0 ? static_cast<Orb32u>(*start) >> (8 - begun) : 0, begun}}};
  forEachSymbol(block, lastDC, encoder);
  BlockBits bits = encoder.out.bits;
  bits.finish();
  Orb8u* const end = copyStuffed(bytes, bits.at, start);
  const Orb32s written = static_cast<Orb32s>(end - start) * 8 + bits.count - begun;
  if (written == 0) return;
  *end = static_cast<Orb8u>(bits.bits << (8 - bits.count));
  bitPosition += written;
}

// ---- Decoding

// A loop or a call of memset would become a string instruction, which takes longer to start than
// this to end.
[[gnu::always_inline]] inline void clearBlock(Orb16s* block) {
  struct Quarter {
    Orb32u words[8];
  };
  Quarter* const quarters = reinterpret_cast<Quarter*>(block);
  store(quarters, {});
  store(quarters + 1, {});
  store(quarters + 2, {});
  store(quarters + 3, {});
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
  clearBlock(block);
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
