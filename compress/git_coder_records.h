// The records of the GIT coder. The host sees their sizes alone, and may place them at any address.
//
// A block starts with everything anew, so all that lasts from call to call is the sizes.
#ifndef ORB_COMPRESS_GIT_CODER_RECORDS_H
#define ORB_COMPRESS_GIT_CODER_RECORDS_H

#include "orb90legacy/compress.h"

// The adaptive Rice code of one stream.
struct [[gnu::packed]] OrbGITStatistics {
  Orb32u intervalSum;
  Orb32u intervalCount;
  Orb32u updates;
  Orb32u k;
};

struct [[gnu::packed]] OrbGITRanks {
  Orb8u byteOf[256];  // by rank
  Orb8u rankOf[256];  // by byte
  Orb32s count[256];  // by rank: how often its byte has occurred
};

// Behind the encoder's record there is an area for each of the 256 streams. Streams are numbered by
// 255 less their byte.
struct [[gnu::packed]] OrbGITEncState {
  // How often the ranks below each node of a binary tree have occurred: node n has 2n and 2n + 1
  // below it, the root is 1, and the ranks are 256 to 511.
  Orb32s hits[512];
  // By rank: how often higher ranks had occurred when its byte last did.
  Orb32s last[256];

  OrbGITStatistics statistics[256];
  Orb32s position[256];  // in bits, where the next value of each stream begins
  OrbGITRanks ranks;

  Orb32s maxSrcLen;
  Orb32s maxDstLen;
};
constexpr Orb32s kGITEncBaseSize = 33912;
static_assert(sizeof(OrbGITEncState) + 256 * 8 <= kGITEncBaseSize,
              "the areas of the streams have 8 bytes each beyond their share of the size");

// Where a stream's next value begins, in bytes from the start of the source and bits, and where the
// stream ends.
struct [[gnu::packed]] OrbGITInput {
  Orb32s byte;
  Orb32s bit;
  Orb32s end;
};

struct [[gnu::packed]] OrbGITDecState {
  // By rank: how many bytes of higher ranks come before its next occurrence, times 256, and the
  // rank. What has come since is taken off from the whole blocks of 16 in `passed`, until their
  // keys are looked at; `lowest` is the least key of each block as it really is.
  Orb32s key[256];
  Orb32s passed[16];
  Orb32s lowest[16];
  // By stream: the distance behind the one that is in a key, times 256, or the end.
  Orb32s ahead[256];

  OrbGITStatistics statistics[256];
  OrbGITInput input[256];
  OrbGITRanks ranks;

  Orb32s maxDstLen;
};
constexpr Orb32s kGITDecBaseSize = 28824;
static_assert(sizeof(OrbGITDecState) <= kGITDecBaseSize, "the size that hosts allocate");

#endif
