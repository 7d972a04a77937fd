// Numbers of bits, for the signed values of Huffman coding (ITU-T T.81 F.1.2.1, F.2.2.1).
#ifndef ORB_JPEG_TABLES_HUFFMAN_H
#define ORB_JPEG_TABLES_HUFFMAN_H

#include <stdint.h>

#include "frame/table.h"

namespace orb {

// The position of a byte's highest set bit plus one; 0 for 0.
extern const OrbTable<uint8_t, 256> orbJpegCategoryOfByte;

// What turns `s` raw bits whose top bit is clear into a negative value when it is added to them:
// 1 - (1 << s), and 0 for no bits.
extern const OrbTable<int32_t, 16> orbJpegExtend;

}  // namespace orb

#endif
