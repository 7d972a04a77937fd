// Lossless row coding (ITU-T T.81 H.1.2.2, H.2): differences by the tables of DC values.
#ifndef ORB_JPEG_PX_HUFFMAN_LOSSLESS_H
#define ORB_JPEG_PX_HUFFMAN_LOSSLESS_H

#include "jpeg/px/huffman_bits.h"

namespace orb::ORB_BUILD::plain {

// The additional bits of a category: none for 0, and none for 16, which holds -32768 alone.
inline Orb32s additionalBits(Orb32s category) {
  return category & 15;
}

// A difference has nothing written if its category has no code.
inline OrbStatus orbEncodeDifference(BitWriter& writer, Orb32s difference,
                                     const OrbiEncodeHuffmanSpec& table) {
  const Magnitude value = magnitudeOf(difference);
  const HuffmanCode code = codeOf(table, value.category);
  const OrbStatus status = orbJpegPutBits(writer, code.bits, code.length);
  const Orb32s n = additionalBits(value.category);
  return status != orbStsNoErr || n == 0 ? status : orbJpegPutBits(writer, value.bits, n);
}

inline OrbStatus orbEncodeRows(BitWriter& writer, const Orb16s* const* rows, Orb32s length,
                               Orb32s count, const OrbiEncodeHuffmanSpec* const* tables) {
  for (ptrdiff_t i = 0; i < length; ++i) {
    for (Orb32s c = 0; c < count; ++c) {
      const OrbStatus status = orbEncodeDifference(writer, load(rows[c] + i), *tables[c]);
      if (status != orbStsNoErr) return status;
    }
  }
  return orbStsNoErr;
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
