// Packed files, by block sorting.
//
// A file begins with the 4 bytes "ORB" and the version, and goes on in sections of up to 8 blocks
// of 32 KB. Numbers have their lowest byte first.
//
//   section   1 byte     number of blocks, 1 to 8; 128 more if they are stored as they are
//             per block  2 bytes length - 1, 4 bytes CRC-32, then its stages (stages.h) if it is
//                        coded
//             the symbols of all its blocks (symbol_code.h), or their bytes
//   end       1 byte 0, 8 bytes length of the whole
#ifndef ORB_HOSTS_PACK_ARCHIVE_H
#define ORB_HOSTS_PACK_ARCHIVE_H

#include <cstdint>

#include "hosts/pack/stages.h"
#include "hosts/stream.h"

namespace orbhost::pack {

void pack(Source& source, Sink& sink, Ranking ranking);

// Returns the length of what was packed. Throws an Error if the file is damaged, having written no
// block that is.
uint64_t unpack(Source& source, Sink& sink);

}  // namespace orbhost::pack

#endif
