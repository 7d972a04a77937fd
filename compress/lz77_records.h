// The records of the deflate encoder and decoder. The host sees their sizes alone, and may place
// them at any address.
//
// Every area is a member and every link an index, so that no value in a record, damaged or not,
// leads out of it by itself. The one address is that of the host's pair list, which the library
// hands back and never follows.
#ifndef ORB_COMPRESS_LZ77_RECORDS_H
#define ORB_COMPRESS_LZ77_RECORDS_H

#include <stdint.h>

#include "compress/tables/inflate.h"
#include "orb90legacy/compress.h"

// The part that the accessors of both records share, at the start of each.
struct [[gnu::packed]] OrbLZ77PairCursor {
  uint64_t pPairs;  // an address, as wide on 32 bits as on 64
  Orb32s pairCount;
  Orb32s pairLeft;
  Orb32s phase;
};

// A code with its extra bits, if any, as they go into the stream: the next bit is the lowest.
struct [[gnu::packed]] OrbLZ77Code {
  Orb32u bits;
  Orb32u length;
};

// All that it takes to code a block.
struct [[gnu::packed]] OrbLZ77Codes {
  OrbLZ77Code literal[286];  // by symbol
  OrbLZ77Code joined[512];   // of a literal; from 256 on by length - 3, with the extra bits
  OrbLZ77Code slot[31];      // by symbol of the distance; the last is that of no distance
};

// A position of the text for each of 32768 places. Positions count the bytes consumed.
struct [[gnu::packed]] OrbLZ77Positions {
  Orb32s at[32768];
};

struct [[gnu::packed]] OrbLZ77EncState {
  OrbLZ77PairCursor cursor;

  Orb32s level;
  Orb32s checksumKind;
  Orb32u checksum;
  Orb32s srcLeft;  // source bytes of the last match call that were not consumed
  Orb32s lastFlush;

  Orb32s position;    // of the next byte
  Orb32s windowFill;  // where that byte is to lie in `window`, 0 to 65278
  Orb32s gapless;     // how many positions in front are entered in the tables, all or at most 32768

  // Bits of the stream that are not yet written, and what they were in front of the block header.
  // Counts may exceed 64: the bits above are zeros.
  uint64_t bitAcc;
  uint64_t savedAcc;
  Orb32s bitCount;
  Orb32s savedBitCount;

  Orb32s blockState;
  Orb32s selectedMode;
  Orb32s headerReady;
  Orb32s headerLen;
  Orb32s headerSent;
  Orb32s syncBytesLeft;  // of the marker that a flush adds, or the stage of a stored block
  Orb32s storedLeft;
  Orb32s tailIndex;

  OrbLZ77Positions prev;  // by position modulo 32768: the one before it with the same hash
  OrbLZ77Positions head;  // by hash: the newest position
  Orb8u window[65536];
  OrbLZ77Pair pairs[65280];
  Orb8u tail[8];
  OrbLZ77Codes codes;
  Orb8u header[296];
  Orb8u unused[2664];
};
static_assert(sizeof(OrbLZ77EncState) == 598508, "the size that hosts allocate");

// The header of a dynamic block while it is being read.
struct [[gnu::packed]] OrbLZ77DecHeader {
  orb::OrbInflateEntry lengthTable[1 << orb::kInflateLengthRoot];
  // By symbol, in the first 19 those of the code for code lengths; then the block's own, literals
  // and lengths first, distances behind them.
  Orb8u lens[orb::kInflateLiteralSymbols + orb::kInflateDistanceSymbols];
};

struct [[gnu::packed]] OrbLZ77DecState {
  OrbLZ77PairCursor cursor;

  Orb32s checksumKind;  // of no further use

  Orb32u bitAcc;    // unread bits, the next one lowest, and 0 above them
  Orb32s bitCount;  // 0 to 32

  // The machine: where it stands in a block, and what it has read of the step that it is in.
  Orb32s decState;
  Orb32s blockKind;
  Orb32s finalBlock;
  Orb32s streamEnded;
  Orb32s clCount;
  Orb32s litCount;
  Orb32s distCount;
  Orb32s lenIndex;
  Orb32s matchLength;
  Orb32s matchDistance;
  Orb32s extraBits;

  // The rest of a match that its output had no room for.
  Orb32s pendingLength;
  Orb32s pendingDistance;

  Orb32s ringPos;     // where the next byte of the one-step route goes, 0 to 32767
  Orb32s windowFill;  // the same for the two-step route, 0 to 32768

  union {
    OrbLZ77DecHeader header;
    orb::OrbInflateEntry codes[orb::kInflateEntries];  // then the tables of the block
  };
  Orb8u unused[204];

  // What came before the next call's output. On the one-step route a ring of 32768 bytes, on the
  // two-step route the bytes in front of `windowFill`.
  Orb8u window[65536];
  OrbLZ77Pair pairs[8192];
};
static_assert(sizeof(OrbLZ77DecState) == 105544, "the size that hosts allocate");

#endif
