// Reads the run-level code of a block of coefficients (ITU-T T.832).
//
// A block is a list of coefficients in the order of a scan. The index of each tells whether it has
// a level of 2 or more, and what follows: nothing, a coefficient at the next position, or a run of
// zeros and a coefficient. That of the first also tells whether zeros stand in front of it.
#ifndef ORB_JPEGXR_PX_COEFFICIENT_DECODER_H
#define ORB_JPEGXR_PX_COEFFICIENT_DECODER_H

#include "jpegxr/px/bit_stream.h"
#include "jpegxr/px/coefficient_forms.h"
#include "jpegxr/px/vlc_state.h"
#include "jpegxr/tables/run_level.h"

namespace orb::ORB_BUILD::plain {

inline Orb32u decodeSymbolAsIs(BitReader& reader, const OrbiVLCState_JPEGXR& state, Orb32s coder) {
  const auto& lookup = orbVlcLookups[state.lookups[coder] & kVlcLinkMask];
  Orb32s entry = lookup[peekBits(reader, kVlcLookupBits)];
  if (entry >= 0) {
    skipBits(reader, static_cast<Orb32u>(entry & 7));
  } else {
    skipBits(reader, kVlcLookupBits);
    do {
      const Orb32s pair = (1 << kVlcLookupBits) + 2 * (-entry - 1);
      entry = lookup[static_cast<Orb32u>(pair) + takeBits(reader, 1)];
    } while (entry < 0);
  }
  return static_cast<Orb32u>(entry >> 3);
}

inline Orb32u decodeSymbol(BitReader& reader, OrbiVLCState_JPEGXR& state, Orb32s coder) {
  const Orb32u symbol = decodeSymbolAsIs(reader, state, coder);
  orbCountSymbol(state, coder, symbol);
  return symbol;
}

inline Orb32s takeFromRange(BitReader& reader, OrbVlcRange range) {
  return range.base + static_cast<Orb32s>(takeBits(reader, range.extraBits));
}

// A level behind an escape: the number of its bits, which may take three goes, and they.
inline Orb32s decodeEscapedLevel(BitReader& reader) {
  Orb32u n = takeBits(reader, 4) + 4;
  if (n == 19) n += takeBits(reader, 2);
  if (n == 22) n += takeBits(reader, 3);
  Orb32u value = n > 16 ? takeBits(reader, n - 16) << 16 : 0;
  value |= takeBits(reader, n > 16 ? 16 : n);
  return static_cast<Orb32s>((1u << n) + value + 2);
}

// A level of 2 or more.
inline Orb32s decodeLevel(BitReader& reader, OrbiVLCState_JPEGXR& state, Orb32s coder) {
  const Orb32u symbol = decodeSymbol(reader, state, coder);
  if (symbol >= kLevelEscape) return decodeEscapedLevel(reader);
  return takeFromRange(reader, orbLevelRanges[symbol]);
}

// A run of 1 or more, where there is room for `room` positions. In a damaged stream it may be
// longer, and there may be no room at all.
inline Orb32s decodeRun(BitReader& reader, const OrbiVLCState_JPEGXR& state, Orb32s room) {
  if (room >= kLeastRunRoom) {
    const Orb32u symbol = decodeSymbolAsIs(reader, state, kRunCoder);
    return takeFromRange(reader, orbRunRanges[orbRunRows[room]][symbol]);
  }
  if (room <= 1) return 1;
  // As many ones less one in zeros, and a one that the longest run does without.
  const Orb32s zeros = __builtin_clz(reader.bits | 1u << (32 - room));
  skipBits(reader, static_cast<Orb32u>(zeros + 1 < room ? zeros + 1 : zeros));
  return zeros + 1;
}

// The index of a coefficient that is not the first. The last two positions leave little to tell,
// and have fixed codes.
template <class Form>
inline Orb32u decodeIndex(BitReader& reader, OrbiVLCState_JPEGXR& state, Orb32s coder,
                          Orb32s position) {
  if (position < Form::kLast - 1) return decodeSymbol(reader, state, coder);
  if (position == Form::kLast) return takeBits(reader, 1);
  const Orb32u index = orbLateIndexLookup[peekBits(reader, 3)];
  skipBits(reader, orbLateIndexCodes[index].length);
  return index;
}

// How many coefficients were read, and how a block ended: as it should, or because the stream leads
// on to where there is no position left, or into a run that goes there.
enum class BlockEnd { kWhole, kNoPosition, kRunTooLong };
struct DecodedBlock {
  Orb32s count;
  BlockEnd end;
};

// Hands each level, with its sign, to `place`, with its position.
template <class Form, class Place>
inline DecodedBlock orbDecodeBlock(BitReader& reader, OrbiVLCState_JPEGXR& state,
                                   BlockCoders coders, const Place& place) {
  const Orb32u first = decodeSymbol(reader, state, coders.index);
  Orb32u next = first >> 2;
  Orb32u context = first & next & 1;
  Orb32s sign = takeSign(reader);
  const Orb32s level =
      first & 2 ? decodeLevel(reader, state, coders.level + static_cast<Orb32s>(context)) : 1;
  Orb32s position = Form::kFirst;
  if ((first & 1) == 0) position += decodeRun(reader, state, Form::kLast - position);
  if (position > Form::kLast) return {0, BlockEnd::kRunTooLong};
  place(position, withSign(level, sign));

  Orb32s count = 1;
  for (; next != 0; ++count) {
    if (++position > Form::kLast) return {count, BlockEnd::kNoPosition};
    if (next == 2) {
      position += decodeRun(reader, state, Form::kLast - position);
      if (position > Form::kLast) return {count, BlockEnd::kRunTooLong};
    }
    const Orb32u index =
        decodeIndex<Form>(reader, state, coders.index + 1 + static_cast<Orb32s>(context), position);
    sign = takeSign(reader);
    next = index >> 1;
    context &= next;
    const Orb32s later =
        index & 1 ? decodeLevel(reader, state, coders.level + static_cast<Orb32s>(context)) : 1;
    place(position, withSign(later, sign));
  }
  return {count, BlockEnd::kWhole};
}

// ---- Where levels go

// Into a region, scaled, by a scan that adapts.
template <class T>
struct PlaceInRegion {
  T* dst;
  Orb32s step;
  Orb32s scale;
  OrbScanRecord* scan;
  void operator()(Orb32s position, Orb32s level) const {
    const OrbScanRecord& record = scan[position];
    store(rowAt(dst, step, record.y & 3) + (record.x & 3), static_cast<T>(level * scale));
    orbCountUse(scan, position);
  }
};

// Into a block in natural order, by a scan that adapts.
struct PlaceInOrder {
  Orb32s* dst;
  OrbScanRecord* scan;
  void operator()(Orb32s position, Orb32s level) const {
    store(dst + (scan[position].index & 15), level);
    orbCountUse(scan, position);
  }
};

struct PlaceInList {
  Orb32s* dst;
  void operator()(Orb32s position, Orb32s level) const { store(dst + position, level); }
};

template <class T>
inline void orbClear4x4(T* dst, Orb32s step) {
  for (Orb32s y = 0; y < 4; ++y) {
    T* row = rowAt(dst, step, y);
    for (Orb32s x = 0; x < 4; ++x) store(row + x, T{0});
  }
}

}  // namespace orb::ORB_BUILD::plain

#endif
