// The code table of DV from its descriptions: what the function means.
#ifndef ORB_DV_PX_HUFFMAN_TABLE_H
#define ORB_DV_PX_HUFFMAN_TABLE_H

#include "dv/segment_records.h"
#include "frame/arith.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD::plain {

constexpr Orb32s kWidestDVTable = 27;

inline bool isDVTableWidth(Orb32s width) {
  return width >= 0 && width <= kWidestDVTable;
}

// Both tables. If they are smaller than what a decoder reads, places without a code follow.
inline Orb32s orbCountDVPlaces(Orb32s width1, Orb32s width2) {
  const Orb32s places = (1 << width1) + (1 << width2);
  return places < kDVPlacesRead ? kDVPlacesRead : places;
}

// Enters the codes of one description; `prefix` is what their lengths leave out.
inline void orbEnterDVCodes(const Orb32s* spec, Orb32s prefix, DVHuffEntry* table) {
  const Orb32s width = load(spec);
  const Orb32u mask = (1u << width) - 1;
  spec += 3;
  for (Orb32s length = 1; length <= width; ++length) {
    const Orb32s places = 1 << (width - length);
    const Orb32s count = load(spec++);
    for (Orb32s i = 0; i < count; ++i, spec += 3) {
      const Orb32u first = (static_cast<Orb32u>(load(spec)) << (width - length)) & mask;
      const DVHuffEntry entry = {wrap8u(length + prefix), wrap8u(load(spec + 1)),
                                 wrap16s(load(spec + 2) << 6)};
      for (Orb32s k = 0; k < places; ++k) table[first + static_cast<Orb32u>(k)] = entry;
    }
  }
}

inline void orbMakeDVTable(const Orb32s* spec1, const Orb32s* spec2, DVHuffEntry* table) {
  const Orb32s width1 = load(spec1);
  const Orb32s places = orbCountDVPlaces(width1, load(spec2));
  for (Orb32s i = 0; i < places; ++i) table[i] = {kNoDVCode, 0, 0};
  orbEnterDVCodes(spec1, 0, table);
  orbEnterDVCodes(spec2, 4, table + (1 << width1));
}

}  // namespace orb::ORB_BUILD::plain

#endif
