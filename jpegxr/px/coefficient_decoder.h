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

// A symbol at the front of the stream, and the length of its code.
struct CodedSymbol {
  Orb32u symbol;
  Orb32u length;
};
[[gnu::always_inline]] inline CodedSymbol peekSymbol(const BitReader& reader,
                                                     const OrbiVLCState_JPEGXR& state,
                                                     Orb32u coder) {
  const auto& lookup = orbVlcLookups[state.lookups[coder] & kVlcLinkMask];
  Orb32s entry = lookup[peekBits(reader, kVlcLookupBits)];
  if (entry >= 0) return {static_cast<Orb32u>(entry >> 3), static_cast<Orb32u>(entry & 7)};
  Orb32u length = kVlcLookupBits;
  do {
    const Orb32u bit = reader.bits << length >> 31;
    entry = lookup[(1u << kVlcLookupBits) + 2 * static_cast<Orb32u>(-entry - 1) + bit];
    ++length;
  } while (entry < 0);
  return {static_cast<Orb32u>(entry >> 3), length};
}

// Takes a code and its extra bits.
[[gnu::always_inline]] inline Orb32s takeRange(BitReader& reader, OrbVlcRange range,
                                               Orb32u codeLength) {
  const Orb32u extra = reader.bits << codeLength >> 1 >> (31 - range.extraBits);
  skipBits(reader, codeLength + range.extraBits);
  return static_cast<Orb32s>(range.base + extra);
}

// A level behind an escape: the number of its bits, which may take three goes, and they. It takes
// and returns the reader by value, so that the callers' readers stay in registers.
struct EscapedLevel {
  BitReader reader;
  Orb32s level;
};
[[gnu::noinline]] inline EscapedLevel decodeEscapedLevel(BitReader reader) {
  Orb32u n = takeBits(reader, 4) + 4;
  if (n == 19) n += takeBits(reader, 2);
  if (n == 22) n += takeBits(reader, 3);
  Orb32u value = n > 16 ? takeBits(reader, n - 16) << 16 : 0;
  value |= takeBits(reader, n > 16 ? 16 : n);
  return {reader, static_cast<Orb32s>((1u << n) + value + 2)};
}

// A level of 2 or more.
[[gnu::always_inline]] inline Orb32s decodeLevel(BitReader& reader, OrbiVLCState_JPEGXR& state,
                                                 Orb32u coder) {
  const CodedSymbol coded = peekSymbol(reader, state, coder);
  orbCountSymbol(state, coder, coded.symbol);
  if (coded.symbol < kLevelEscape) {
    return takeRange(reader, orbLevelRanges[coded.symbol], coded.length);
  }
  skipBits(reader, coded.length);
  const EscapedLevel escaped = decodeEscapedLevel(reader);
  reader = escaped.reader;
  return escaped.level;
}

// A run of 1 or more, where there is room for `room` positions. In a damaged stream it may be
// longer, and there may be no room at all.
[[gnu::always_inline]] inline Orb32s decodeRun(BitReader& reader, const OrbiVLCState_JPEGXR& state,
                                               Orb32s room) {
  if (room >= kLeastRunRoom) {
    const CodedSymbol coded = peekSymbol(reader, state, kRunCoder);
    const Orb32u row = orbRunRows[static_cast<Orb32u>(room)];
    return takeRange(reader, orbRunRanges[row][coded.symbol], coded.length);
  }
  if (room <= 1) return 1;
  // A one behind as many zeros as the run has positions more than one. The longest does without.
  const Orb32s zeros = __builtin_clz(reader.bits | 1u << (32 - room));
  skipBits(reader, static_cast<Orb32u>(zeros + 1 < room ? zeros + 1 : zeros));
  return zeros + 1;
}

// The index of a coefficient that is not the first. The last two positions leave little to tell,
// and have fixed codes.
template <class Form>
[[gnu::always_inline]] inline CodedSymbol peekIndex(const BitReader& reader,
                                                    OrbiVLCState_JPEGXR& state, Orb32u coder,
                                                    Orb32s position) {
  if (position < Form::kLast - 1) {
    const CodedSymbol coded = peekSymbol(reader, state, coder);
    orbCountSymbol(state, coder, coded.symbol);
    return coded;
  }
  if (position == Form::kLast) return {peekBits(reader, 1), 1};
  const Orb32u index = orbLateIndexLookup[peekBits(reader, 3)];
  return {index, orbLateIndexCodes[index].length};
}

// Takes a code and the sign behind it: -1 for a bit that is set, 0 for one that is clear.
[[gnu::always_inline]] inline Orb32s takeSign(BitReader& reader, Orb32u codeLength) {
  const Orb32s sign = static_cast<Orb32s>(reader.bits << codeLength) >> 31;
  skipBits(reader, codeLength + 1);
  return sign;
}

// How many coefficients were read, and how a block ended: as it should, or because the stream leads
// on to where there is no position left, or into a run that goes there.
enum class BlockEnd { kWhole, kNoPosition, kRunTooLong };
struct DecodedBlock {
  BitReader reader;
  Orb32s count;
  BlockEnd end;
};

// Hands each level, with its sign, to `place`, with its position. Reader and place come by value,
// and the reader goes back so: then both stay in registers, whatever is stored in the state.
template <class Form, class Place>
inline DecodedBlock orbDecodeBlock(BitReader reader, OrbiVLCState_JPEGXR& state, BlockCoders coders,
                                   Place place) {
  const CodedSymbol coded = peekSymbol(reader, state, coders.index);
  const Orb32u first = coded.symbol;
  orbCountSymbol(state, coders.index, first);
  Orb32u next = first >> 2;
  Orb32u context = first & next & 1;
  Orb32s sign = takeSign(reader, coded.length);
  Orb32s level = first & 2 ? decodeLevel(reader, state, coders.level + context) : 1;
  Orb32s position = Form::kFirst;
  if ((first & 1) == 0) position += decodeRun(reader, state, Form::kLast - position);
  if (position > Form::kLast) return {reader, 0, BlockEnd::kRunTooLong};
  place(position, withSign(level, sign));

  Orb32s count = 1;
  for (; next != 0; ++count) {
    if (++position > Form::kLast) return {reader, count, BlockEnd::kNoPosition};
    if (next == 2) {
      position += decodeRun(reader, state, Form::kLast - position);
      if (position > Form::kLast) return {reader, count, BlockEnd::kRunTooLong};
    }
    const CodedSymbol later = peekIndex<Form>(reader, state, coders.index + 1 + context, position);
    sign = takeSign(reader, later.length);
    next = later.symbol >> 1;
    context &= next;
    level = later.symbol & 1 ? decodeLevel(reader, state, coders.level + context) : 1;
    place(position, withSign(level, sign));
  }
  return {reader, count, BlockEnd::kWhole};
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
