// CRC-32 with the reflected polynomial 0xEDB88320 (RFC 1952, section 8).
#ifndef ORB_COMPRESS_TABLES_CRC32_H
#define ORB_COMPRESS_TABLES_CRC32_H

#include <stdint.h>

#include "frame/table.h"

namespace orb {

constexpr uint32_t kCrc32Polynomial = 0xEDB88320;

// Entry [k][b]: what the byte b leaves behind in the checksum when k zero bytes follow it.
extern const OrbTable<OrbTable<uint32_t, 256>, 8> orbCrc32;

}  // namespace orb

#endif
