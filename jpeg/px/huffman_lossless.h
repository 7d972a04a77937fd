// Lossless row coding (ITU-T T.81 H.1.2.2, H.2): differences by the tables of DC values.
#ifndef ORB_JPEG_PX_HUFFMAN_LOSSLESS_H
#define ORB_JPEG_PX_HUFFMAN_LOSSLESS_H

#include "jpeg/px/huffman_output.h"

namespace orb::ORB_BUILD::plain {

// Category 16 holds -32768 alone, and has no additional bits. A difference has nothing written if
// its category has no code.
template <class Output>
[[gnu::always_inline]] inline OrbStatus putDifference(Output& output, Orb32s difference,
                                                      const OrbiEncodeHuffmanSpec& table) {
  const Magnitude value = magnitudeOf(difference);
  const Orb32s n = value.category & 15;
  return output.put(codeOf(table, value.category), {n, lowBits(value.bits, n)});
}

inline OrbStatus orbEncodeDifference(BitWriter& writer, Orb32s difference,
                                     const OrbiEncodeHuffmanSpec& table) {
  BoundedOutput output = {writer};
  return putDifference(output, difference, table);
}

// Rows of a scan from one column to another, interleaved sample by sample.
template <class Output>
[[gnu::always_inline]] inline OrbStatus putColumns(Output& output, const Orb16s* const* rows,
                                                   ptrdiff_t from, ptrdiff_t to, Orb32s count,
                                                   const OrbiEncodeHuffmanSpec* const* tables) {
  for (ptrdiff_t i = from; i < to; ++i) {
    for (Orb32s c = 0; c < count; ++c) {
      const OrbStatus status = putDifference(output, load(rows[c] + i), *tables[c]);
      if (status != orbStsNoErr) return status;
    }
  }
  return orbStsNoErr;
}

// As many differences as are gathered at once, and what they take at most: 16 bits of code and 15
// of value each.
constexpr Orb32s kBatch = 64;
constexpr Orb32s kMostBytesOfBatch = kBatch * 4;

// Where there is room for any batch, nothing is tested on the way.
inline OrbStatus orbEncodeRows(BitWriter& writer, const Orb16s* const* rows, Orb32s length,
                               Orb32s count, const OrbiEncodeHuffmanSpec* const* tables) {
  const Orb32s columns = kBatch / count;
  ptrdiff_t from = 0;
  for (; from < length && hasRoomFor(writer, kMostBytesOfBatch); from += columns) {
    const ptrdiff_t to = length - from < columns ? length : from + columns;
    Orb8u bytes[kMostBytesOfBatch + kBytesBehindBits];
    StrictOutput output = {gatherBits(writer, bytes)};
    const OrbStatus status = putColumns(output, rows, from, to, count, tables);
    putGathered(writer, output.bits, bytes);
    if (status != orbStsNoErr) return status;
  }
  BoundedOutput output = {writer};
  return putColumns(output, rows, from, length, count, tables);
}

// Stores nothing unless the status is orbStsNoErr. Symbols above 16 count as 16.
[[gnu::always_inline]] inline OrbStatus orbDecodeDifference(BitReader& reader, Orb16s* difference,
                                                            const OrbiDecodeHuffmanSpec& table) {
  Orb32s category = 0;
  OrbStatus status = orbJpegDecodeSymbol(reader, table, category);
  if (status != orbStsNoErr) return status;
  Orb32s value = 0;
  if (category >= 16) {
    value = -32768;
  } else if (reader.bitCount >= category || category != 0) {
    // No bits are wanted for category 0, not even where fewer than none are left. That stands
    // second: the first is nearly always true, and no branch depends on the category.
    status = fetchValue(reader, category, value);
    if (status != orbStsNoErr) return status;
  }
  store(difference, wrap16s(value));
  return orbStsNoErr;
}

inline OrbStatus orbDecodeRows(BitReader& reader, Orb16s* const* rows, Orb32s length, Orb32s count,
                               const OrbiDecodeHuffmanSpec* const* tables) {
  for (ptrdiff_t i = 0; i < length; ++i) {
    for (Orb32s c = 0; c < count; ++c) {
      const OrbStatus status = orbDecodeDifference(reader, rows[c] + i, *tables[c]);
      if (status != orbStsNoErr) return status;
    }
  }
  return orbStsNoErr;
}

}  // namespace orb::ORB_BUILD::plain

#endif
