// The checksums of gzip and zlib, over data that comes in pieces. The deflate encoder keeps one of
// its own; the decoder leaves it to the host, and zlib's is not there for every target that orb is
// built for.
#ifndef ORB_HOSTS_GZIP_CHECKSUM_H
#define ORB_HOSTS_GZIP_CHECKSUM_H

#include <cstdint>

#include "hosts/bytes.h"

namespace orbhost::gzip {

// RFC 1952 8: begins at 0.
uint32_t crc32(uint32_t crc, ByteView bytes);

// RFC 1950 8.2: begins at 1.
uint32_t adler32(uint32_t adler, ByteView bytes);

enum class Checksum { kNone, kAdler32, kCrc32 };

// The modulus of Adler-32, the largest prime below 65536.
inline constexpr uint32_t kAdlerModulus = 65521;

}  // namespace orbhost::gzip

#endif
