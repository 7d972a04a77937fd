// The four records of Huffman coding: two forms of a table, and the states of a bit stream that is
// written or read. The host sees their sizes alone, and may place them at any address.
#ifndef ORB_JPEG_HUFFMAN_RECORDS_H
#define ORB_JPEG_HUFFMAN_RECORDS_H

#include "orb90legacy/jpeg.h"

struct [[gnu::packed]] OrbiEncodeHuffmanSpec {
  // By symbol: the code's length in the high 16 bits, the code in the low 16 bits; 0 for a symbol
  // without a code.
  Orb32u entries[256];
};
static_assert(sizeof(OrbiEncodeHuffmanSpec) == 1024, "the size that hosts allocate");

struct [[gnu::packed]] OrbiDecodeHuffmanSpec {
  // In order of increasing code.
  Orb16u symbols[256];
  // By the next 8 bits of the stream: the code's length in the high 16 bits, the symbol in the low
  // 16 bits; 0 if no code of at most 8 bits begins so.
  Orb32u lookup[256];
  // By length: the first code, the last code (65535 if there is none, and always at 17), and the
  // position of the first code in `symbols`.
  Orb16u minCode[18];
  Orb16u maxCode[18];
  Orb16u valOffset[18];
};
static_assert(sizeof(OrbiDecodeHuffmanSpec) == 1644, "the size that hosts allocate");

struct [[gnu::packed]] OrbiEncodeHuffmanState {
  // The bits not yet written, left aligned at bit 23. Above them the last byte that was written, of
  // no further use.
  Orb32u bitBuffer;
  Orb32u bitBufferHigh;  // always 0
  Orb32s bitCount;       // 0 to 7 between calls
  // Progressive coding: the blocks of the pending end-of-band run, and the correction bits held,
  // one to a byte.
  Orb32s eobRun;
  Orb32s correctionCount;
  Orb8u correctionBits[1024];
  Orb8u unused[4];
};
static_assert(sizeof(OrbiEncodeHuffmanState) == 1048, "the size that hosts allocate");

struct [[gnu::packed]] OrbiDecodeHuffmanState {
  Orb32u bitBuffer;      // the last bytes read; the bits not yet taken are at the low end
  Orb32u bitBufferHigh;  // always 0
  Orb32s bitCount;       // below 0 when bits were taken that were not there
  Orb32s eobRun;         // progressive coding: the blocks left in the end-of-band run
  Orb32s lastPosition;   // sequential coding: the block positions that the last call passed through
  Orb8u unused[4];
};
static_assert(sizeof(OrbiDecodeHuffmanState) == 24, "the size that hosts allocate");

#endif
