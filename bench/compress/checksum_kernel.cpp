// The checksums of the library's build h9, which it has no export for.
#include "bench/compress/checksum_kernel.h"

#include "compress/simd/checksum.h"

uint32_t orbbench::adler32OfH9(const uint8_t* bytes, int32_t size) {
  return orb::ORB_BUILD::kernel::orbAdler32(1, bytes, size);
}

uint32_t orbbench::crc32OfH9(const uint8_t* bytes, int32_t size) {
  return orb::ORB_BUILD::kernel::orbCrc32Of(0, bytes, size);
}
