// The adaptive state of coefficient coding: which codes are in use, and the order of the scans.
#ifndef ORB_JPEGXR_PX_VLC_STATE_H
#define ORB_JPEGXR_PX_VLC_STATE_H

#include "frame/arith.h"
#include "frame/memory_access.h"
#include "jpegxr/px/bit_stream.h"
#include "jpegxr/tables/scan.h"
#include "jpegxr/tables/vlc.h"
#include "jpegxr/vlc_records.h"

namespace orb::ORB_BUILD::plain {

// ---- Coders

// Moves a coder to the next table if the symbols that it has coded ask for it: down by the first
// discriminant, up by the second where there are two.
inline void orbAdaptCoder(OrbiVLCState_JPEGXR& state, Orb32u coder) {
  OrbCoderRecord& record = state.coders[coder];
  const OrbVlcFamily family = orbVlcFamilies[record.symbols & 15];
  const Orb32s last = family.tableCount - 1;
  Orb32s first = state.firstDiscriminant[coder];
  Orb32s second = family.hasSecond ? state.secondDiscriminant[coder] : first;
  if (!record.hasStarted) {
    record.hasStarted = 1;
    record.table = family.startTable;
    first = second = 0;
  } else if (first < record.lowerBound) {
    --record.table;
    first = second = 0;
  } else if (second > record.upperBound) {
    ++record.table;
    first = second = 0;
  }
  record.table = limit(record.table, 0, last);
  record.lowerBound = record.table == 0 ? INT32_MIN : -8;
  record.upperBound = record.table == last ? 0x40000000 : 8;
  state.firstDiscriminant[coder] = limit(first, -64, 64);
  state.secondDiscriminant[coder] = limit(second, -64, 64);

  const Orb32s table = record.table;
  const Orb32s lastChanges = family.changesCount - 1;
  state.codes[coder] = state.lookups[coder] = static_cast<Orb32u>(family.firstTable + table);
  state.firstChanges[coder] =
      static_cast<Orb32u>(family.changes + limit(table - 1, 0, lastChanges));
  state.secondChanges[coder] =
      family.hasSecond ? static_cast<Orb32u>(family.changes + limit(table, 0, lastChanges)) : 0;
}

inline void orbAdaptLowPass(OrbiVLCState_JPEGXR& state) {
  orbAdaptCoder(state, kRunCoder);
  for (Orb32u i = kLowPassIndexCoders; i < kHighPassIndexCoders; ++i) orbAdaptCoder(state, i);
}

inline void orbAdaptHighPass(OrbiVLCState_JPEGXR& state) {
  for (Orb32u i = kHighPassIndexCoders; i < kCoderCount; ++i) orbAdaptCoder(state, i);
}

// Notes that a coder has coded a symbol.
inline void orbCountSymbol(OrbiVLCState_JPEGXR& state, Orb32u coder, Orb32u symbol) {
  state.firstDiscriminant[coder] += orbVlcChanges[state.firstChanges[coder] & kVlcLinkMask][symbol];
  state.secondDiscriminant[coder] +=
      orbVlcChanges[state.secondChanges[coder] & kVlcLinkMask][symbol];
}

// ---- Scans

inline OrbScanRecord* scanOf(OrbiVLCState_JPEGXR& state, Orb32s number) {
  return state.scans[kScanCount - 1 - number];
}
inline OrbScanRecord* currentScan(OrbiVLCState_JPEGXR& state) {
  return scanOf(state, state.scan < kScanCount ? static_cast<Orb32s>(state.scan) : 0);
}

// All but the weights.
inline void orbStartScan(OrbScanRecord* scan, const OrbTable<Orb8u, 16>& order) {
  for (Orb32s i = 0; i < 16; ++i) {
    const OrbScanPlace place = orbScanPlaces[order[i]];
    scan[i].index = order[i];
    scan[i].x = place.x;
    scan[i].y = place.y;
  }
}

// The weight of the first record is one that no other reaches.
inline void orbResetWeights(OrbScanRecord* scan) {
  scan[0].weight = 32767;
  for (Orb32u i = 1; i < 16; ++i) scan[i].weight = 34 - 2 * i;
}

// Notes a coefficient at a position, 1 to 15: it moves up when it has come more often than the one
// before.
inline void orbCountUse(OrbScanRecord* scan, Orb32s position) {
  OrbScanRecord& record = scan[position];
  OrbScanRecord& before = scan[position - 1];
  if (++record.weight <= before.weight) return;
  const OrbScanRecord risen = record;
  record = before;
  before = risen;
}

// ---- From blocks to runs and levels

// A block in natural order.
struct NaturalBlock {
  const Orb32s* src;
  Orb32s at(const OrbScanRecord& record) const { return load(src + (record.index & 15)); }
};

// What is left of the coefficients, for fixed-length coding; `trimBits` of it are dropped.
struct Residual {
  Orb32s* dst;
  Orb32u trimBits;
  // Of a coefficient that is coded the low bits follow.
  void setCoded(const OrbScanRecord& record, Orb32u lowBits) const {
    store(dst + (record.index & 15), static_cast<Orb32s>(lowBits >> trimBits << 1));
  }
  // Any other follows as a whole, and brings its sign.
  void setWhole(const OrbScanRecord& record, Orb32u magnitude, bool isNegative) const {
    const Orb32u value = magnitude >> trimBits;
    const Orb32u sign = value != 0 ? 1 + (isNegative ? 2 : 0) : 0;
    store(dst + (record.index & 15), static_cast<Orb32s>(value << 2 | sign));
  }
};
struct NoResidual {
  void setCoded(const OrbScanRecord&, Orb32u) const {}
  void setWhole(const OrbScanRecord&, Orb32u, bool) const {}
};

// The levels of a block in the order of a scan, which adapts to them: pairs of the zeros in front
// of a level and the level, 15 at most. Returns how many there are.
template <class Block, class Rest>
inline Orb32s orbScanBlock(OrbScanRecord* scan, const Block& block, Orb32u modelBits,
                           const Rest& rest, Orb32s* pairs) {
  const Orb32u mask = (1u << modelBits) - 1;
  Orb32s pairCount = 0;
  Orb32s run = 0;
  for (Orb32s position = 1; position < 16; ++position) {
    const OrbScanRecord& record = scan[position];
    const Orb32s value = block.at(record);
    const Orb32u magnitude = magnitudeOf(value);
    if (magnitude <= mask) {
      rest.setWhole(record, magnitude, value < 0);
      ++run;
      continue;
    }
    rest.setCoded(record, magnitude & mask);
    store(pairs + 2 * pairCount, run);
    store(pairs + 2 * pairCount + 1,
          withSign(static_cast<Orb32s>(magnitude >> modelBits), value >> 31));
    ++pairCount;
    run = 0;
    // The first position has none in front of it but the DC.
    if (position == 1) {
      ++scan[1].weight;
    } else {
      orbCountUse(scan, position);
    }
  }
  return pairCount;
}

}  // namespace orb::ORB_BUILD::plain

#endif
