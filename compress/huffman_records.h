// The record of the byte Huffman coder. The host sees its size alone, and may place it at any
// address.
#ifndef ORB_COMPRESS_HUFFMAN_RECORDS_H
#define ORB_COMPRESS_HUFFMAN_RECORDS_H

#include "orb90legacy/compress.h"

struct [[gnu::packed]] OrbHuffState {
  // By byte; the length is 0 for a byte without a code.
  Orb32s codeLen[256];
  Orb32u code[256];

  // Decoder: the bytes that have codes, from the code of zeros up. Then by length, from 1 on: the
  // first code as the first `maxLen` bits of a stream, and how many codes are as long or shorter.
  Orb8u symbols[256];
  Orb32u firstCode[32];
  Orb32s cumCount[32];
  Orb32s symbolCount;  // decoder; 0 in a record that no decoder made
  Orb32u unusedLinks[2];

  Orb32s maxLen;
  Orb32s minLen;  // decoder

  Orb32u bitAcc;  // the next bit at the top
  Orb32s bitCount;
  Orb32s zeroBits;   // decoder: zeros in front of those of bitAcc
  Orb8u zeroSymbol;  // decoder: the byte of the code of zeros
  Orb8u unused[3];
};
static_assert(sizeof(OrbHuffState) == 2596, "the size that hosts allocate");

#endif
