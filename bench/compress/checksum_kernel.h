// The library's checksums, compiled as its build h9 has them: only for a processor that runs it.
#ifndef ORB_BENCH_COMPRESS_CHECKSUM_KERNEL_H
#define ORB_BENCH_COMPRESS_CHECKSUM_KERNEL_H

#include <stdint.h>

namespace orbbench {

uint32_t adler32OfH9(const uint8_t* bytes, int32_t size);
uint32_t crc32OfH9(const uint8_t* bytes, int32_t size);

}  // namespace orbbench

#endif
