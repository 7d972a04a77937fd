// The two checksums of deflate's wrappers. A length below 1 leaves a checksum as it is.
#ifndef ORB_COMPRESS_PX_CHECKSUM_H
#define ORB_COMPRESS_PX_CHECKSUM_H

#include "compress/tables/crc32.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD::plain {

constexpr Orb32u kAdlerModulus = 65521;
// So many bytes may be added before the sums, which begin below the modulus, leave 32 bits.
constexpr Orb32s kAdlerBlock = 5552;

// Adler-32 (RFC 1950, section 9): the sum of all bytes in the low half, the sum of these sums in
// the high half, from whatever value they start.
inline Orb32u orbAdler32(Orb32u adler, const Orb8u* data, Orb32s length) {
  Orb32u sum = adler & 0xFFFF;
  Orb32u sumOfSums = adler >> 16;
  while (length > 0) {
    const Orb32s block = length < kAdlerBlock ? length : kAdlerBlock;
    for (Orb32s i = 0; i < block; ++i) {
      sum += data[i];
      sumOfSums += sum;
    }
    sum %= kAdlerModulus;
    sumOfSums %= kAdlerModulus;
    data += block;
    length -= block;
  }
  return sumOfSums << 16 | sum;
}

// Division of the bytes by the polynomial; `rest` is that of the bytes before, without the
// complements of CRC-32.
inline Orb32u crcRest(Orb32u rest, const Orb8u* data, Orb32s length) {
  for (; length >= 8; length -= 8, data += 8) {
    const Orb32u low = load(reinterpret_cast<const Orb32u*>(data)) ^ rest;
    const Orb32u high = load(reinterpret_cast<const Orb32u*>(data + 4));
    rest = orbCrc32[7][low & 255] ^ orbCrc32[6][low >> 8 & 255] ^ orbCrc32[5][low >> 16 & 255] ^
           orbCrc32[4][low >> 24] ^ orbCrc32[3][high & 255] ^ orbCrc32[2][high >> 8 & 255] ^
           orbCrc32[1][high >> 16 & 255] ^ orbCrc32[0][high >> 24];
  }
  for (; length > 0; --length) rest = rest >> 8 ^ orbCrc32[0][(rest ^ *data++) & 255];
  return rest;
}

inline Orb32u orbCrc32Of(Orb32u crc, const Orb8u* data, Orb32s length) {
  return ~crcRest(~crc, data, length);
}

}  // namespace orb::ORB_BUILD::plain

#endif
