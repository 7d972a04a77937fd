// The hash of three bytes, for the searches along a chain.
#ifndef ORB_COMPRESS_TABLES_HASH_MIX_H
#define ORB_COMPRESS_TABLES_HASH_MIX_H

#include <stdint.h>

#include "frame/table.h"

namespace orb {

// What a byte adds to a hash of 15 bits, by exclusive or: as the first of the three bytes in bits 0
// to 15, as the second in bits 16 to 31, as the third in bits 32 to 47. So a word that is shifted
// up by 16 bits for each byte, and takes the byte's entry, has the hash of the last three bytes in
// bits 32 to 47.
extern const OrbTable<uint64_t, 256> orbHashMix;

}  // namespace orb

#endif
