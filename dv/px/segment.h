// Decoding of video segments: what the functions mean.
//
// Blocks are read in three passes: each from its own area, then from what is left of the areas of
// its macroblock, then of the segment. A block that is cut off takes the bits that it could not use
// with it, and they stand in front of the next area that it reads.
#ifndef ORB_DV_PX_SEGMENT_H
#define ORB_DV_PX_SEGMENT_H

#include "dv/segment_records.h"
#include "frame/arith.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD::plain {

constexpr Orb32s kDVMacroblocks = 5;

// What differs between the two forms of a segment.
struct DVForm {
  static constexpr Orb32s kBlocks = 6;
  static constexpr bool kModeChoosesScan = true;
  static constexpr Orb32s areaBytes(Orb32s block) { return block < 4 ? 14 : 10; }
};
struct DV100Form {
  static constexpr Orb32s kBlocks = 8;
  static constexpr bool kModeChoosesScan = false;
  static constexpr Orb32s areaBytes(Orb32s block) { return block < 6 ? 10 : 8; }
};

// The bits that are left of an area, from the top of `high` down; zeros are behind them. An area's
// codes and the saved bits that may come in front of them take 116 bits at most.
struct DVAreaBits {
  uint64_t high, low;
  Orb32s left;

  // Of the next bits, 1 to 32.
  Orb32u peek(Orb32s count) const { return static_cast<Orb32u>(high >> (64 - count)); }
  // 1 to 63 bits.
  void skip(Orb32s count) {
    high = high << count | low >> (64 - count);
    low <<= count;
    left -= count;
  }
};

inline uint64_t loadDVBits(const Orb8u* bytes) {
  return __builtin_bswap64(load(reinterpret_cast<const uint64_t*>(bytes)));
}

// 8, 10 or 14 bytes.
inline DVAreaBits readDVArea(const Orb8u* area, Orb32s bytes) {
  const uint64_t tail = loadDVBits(area + bytes - 8);
  return {loadDVBits(area), bytes == 8 ? 0 : tail << (8 * (16 - bytes)), 8 * bytes};
}

struct DVBlock {
  Orb16s* output;
  const Orb32u* scan;
  Orb8u position;    // of the last coefficient stored
  Orb8u endOfBlock;  // 1 if the block ended by that code
  Orb8u savedCount;
  Orb16u savedBits;  // from the top down
};

// How the reading of a block from an area ends.
enum class DVReading {
  needsMore,   // the area is used up, and the block is not at its end
  areaIsUsed,  // so is the area, but the block is at its end
  areaHasMore,
};

// A code that is not whole is saved, at most 15 bits. Bits that are no code at all may be more: the
// first 16 are enough to show the same wherever the block comes next, so that it gets no further.
inline void saveDVBits(DVBlock& block, DVAreaBits& bits) {
  block.savedCount = static_cast<Orb8u>(bits.left < 16 ? bits.left : 16);
  block.savedBits = static_cast<Orb16u>(bits.high >> 48);
  bits.left = 0;
}

inline void putBackDVBits(DVBlock& block, DVAreaBits& bits) {
  const Orb32s count = block.savedCount;
  bits.low = bits.low >> count | bits.high << (64 - count);
  bits.high = bits.high >> count | static_cast<uint64_t>(block.savedBits) << 48;
  bits.left += count;
  block.savedCount = 0;
}

inline DVReading orbReadDVBlock(DVBlock& block, DVAreaBits& area, const DVHuffEntry* table) {
  if (block.savedCount > 0) putBackDVBits(block, area);
  Orb16s* const output = block.output;
  const Orb32u* const scan = block.scan;
  DVAreaBits bits = area;
  Orb32s position = block.position;
  DVReading end = DVReading::needsMore;
  for (;;) {
    const Orb32u window = bits.peek(9);
    Orb32s next, level;
    if (window < 508) {
      const bool isLong = window >= 480;
      const DVHuffEntry entry = table[isLong ? kSecondDVTable + (bits.peek(13) & 511) : window];
      if (entry.len > bits.left) break;
      bits.skip(entry.len);
      next = position + entry.run + 1;
      level = entry.level;
    } else {
      // An escape: 1111111, 8 bits of amplitude, the sign.
      if (bits.left < 16) break;
      const Orb32s amplitude = static_cast<Orb32s>(bits.peek(15) & 255) << 6;
      level = bits.peek(16) & 1 ? -amplitude : amplitude;
      bits.skip(16);
      next = position + 1;
    }
    if (next >= 64) {
      block.endOfBlock = window >> 5 == 6;
      end = bits.left > 0 ? DVReading::areaHasMore : DVReading::areaIsUsed;
      break;
    }
    position = next;
    store(output + (load(scan + position) & 63), wrap16s(level));
  }
  block.position = static_cast<Orb8u>(position);
  area = bits;
  if (end == DVReading::needsMore) saveDVBits(block, area);
  return end;
}

// Blocks that need bits, or areas that have some, by their numbers in the segment and in its order.
struct DVNumberList {
  Orb8u number[kDVMacroblocks * 8];
  Orb32s count = 0;

  void add(Orb32s n) { number[count++] = static_cast<Orb8u>(n); }
};

template <class Form>
struct DVSegmentDecoder {
  static constexpr Orb32s kCount = kDVMacroblocks * Form::kBlocks;

  const DVHuffEntry* table;
  DVBlock block[kCount];
  DVAreaBits area[kCount];
  DVNumberList needs, surplus;  // what the macroblocks leave for the third pass

  DVReading read(Orb32s b, Orb32s a) { return orbReadDVBlock(block[b], area[a], table); }

  // The blocks of one list go on in the areas of the other. Of both, what is left is told by where
  // the walk stops.
  struct Stop {
    Orb32s need, surplus;
  };
  Stop share(const DVNumberList& blocks, const DVNumberList& areas) {
    Stop at = {0, 0};
    while (at.need < blocks.count && at.surplus < areas.count) {
      const DVReading end = read(blocks.number[at.need], areas.number[at.surplus]);
      if (end != DVReading::needsMore) ++at.need;
      if (end != DVReading::areaHasMore) ++at.surplus;
    }
    return at;
  }

  // The first and the second pass of the blocks from `first` on.
  void readMacroblock(Orb32s first, const Orb8u* bytes, const Orb32u* scanTables, Orb16s* output) {
    DVNumberList ownNeeds, ownSurplus;
    for (Orb32s b = 0; b < Form::kBlocks; ++b) {
      const Orb32s n = first + b;
      DVAreaBits& bits = area[n] = readDVArea(bytes, Form::areaBytes(b));
      const bool mode = Form::kModeChoosesScan && (bits.peek(10) & 1);
      block[n] = {output + n * 64, scanTables + (mode ? 64 : 0), 0, 0, 0, 0};
      store(block[n].output, wrap16s(static_cast<Orb32s>(bits.peek(9) << 7)));
      bits.skip(12);
      switch (read(n, n)) {
        case DVReading::areaHasMore:
          ownSurplus.add(n);
          break;
        case DVReading::needsMore:
          ownNeeds.add(n);
          break;
        case DVReading::areaIsUsed:
          break;
      }
      bytes += Form::areaBytes(b);
    }
    const Stop at = share(ownNeeds, ownSurplus);
    for (Orb32s i = at.need; i < ownNeeds.count; ++i) needs.add(ownNeeds.number[i]);
    for (Orb32s i = at.surplus; i < ownSurplus.count; ++i) surplus.add(ownSurplus.number[i]);
  }
};

template <class Form>
inline void orbDecodeDVSegment(const Orb8u* stream, const Orb32u* scanTables,
                               const OrbDVHuffTable* table, Orb16s* blocks, Orb32u* info) {
  DVSegmentDecoder<Form> decoder;
  decoder.table = table->entry;
  for (Orb32s m = 0; m < kDVMacroblocks; ++m) {
    decoder.readMacroblock(m * Form::kBlocks, stream + 80 * m + 4, scanTables, blocks);
  }
  decoder.share(decoder.needs, decoder.surplus);

  for (Orb32s m = 0; m < kDVMacroblocks; ++m) {
    const Orb8u* const macroblock = stream + 80 * m;
    const Orb8u* bytes = macroblock + 4;
    for (Orb32s b = 0; b < Form::kBlocks; ++b) {
      const DVBlock& block = decoder.block[m * Form::kBlocks + b];
      const Orb32u modeAndClass = bytes[1] & 0x70u;
      const Orb32u quantisation = macroblock[3] & 15u;
      store(info++, block.endOfBlock | modeAndClass | static_cast<Orb32u>(block.position) << 8 |
                        quantisation << 16);
      bytes += Form::areaBytes(b);
    }
  }
}

}  // namespace orb::ORB_BUILD::plain

#endif
