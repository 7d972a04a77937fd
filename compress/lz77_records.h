// The records of the deflate encoder and decoder. The host sees their sizes alone, and may place
// them at any address.
//
// Every area is a member and every link an index, so that no value in a record, damaged or not,
// leads out of it by itself. The one address is that of the host's pair list, which the library
// hands back and never follows.
#ifndef ORB_COMPRESS_LZ77_RECORDS_H
#define ORB_COMPRESS_LZ77_RECORDS_H

#include <stdint.h>

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

// An entry of a decoding table.
struct [[gnu::packed]] OrbLZ77DecEntry {
  Orb8u op;
  Orb8u bits;
  Orb16u value;
};

struct [[gnu::packed]] OrbLZ77DecState {
  OrbLZ77PairCursor cursor;

  Orb32s checksumKind;
  Orb32u bitAcc;
  Orb32s bitCount;
  Orb32s ringPos;
  Orb32s windowFill;
  Orb32s decState;
  Orb32s matchLength;
  Orb32s extraBits;
  Orb32s matchDistance;
  Orb32s finalBlock;
  Orb32s streamEnded;
  Orb32s blockKind;
  Orb32s litTable;
  Orb32s distTable;
  Orb32s litRootBits;
  Orb32s distRootBits;
  Orb32s clCount;
  Orb32s litCount;
  Orb32s distCount;
  Orb32s lenIndex;
  Orb32s tableCursor;
  Orb32s pendingLength;
  Orb32s pendingDistance;
  Orb8u unused[144];

  Orb8u window[65536];
  OrbLZ77Pair pairs[8192];
  Orb8u tail[8];
  Orb16u lens[320];
  Orb16u work[288];
  OrbLZ77DecEntry codes[1440];
};
static_assert(sizeof(OrbLZ77DecState) == 105544, "the size that hosts allocate");

#endif
