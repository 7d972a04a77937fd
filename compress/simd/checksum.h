// Checksums over vectors: CRC-32 by carry-less multiplication where the processor has it.
#ifndef ORB_COMPRESS_SIMD_CHECKSUM_H
#define ORB_COMPRESS_SIMD_CHECKSUM_H

#include <immintrin.h>

#include "compress/px/checksum.h"

namespace orb::ORB_BUILD::simd {}  // namespace orb::ORB_BUILD::simd

#endif
