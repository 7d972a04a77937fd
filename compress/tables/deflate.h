// The alphabets of deflate (RFC 1951, 3.2.5 and 3.2.7).
#ifndef ORB_COMPRESS_TABLES_DEFLATE_H
#define ORB_COMPRESS_TABLES_DEFLATE_H

#include <stdint.h>

#include "frame/table.h"

namespace orb {

// A symbol with extra bits: they are added to `base`, which is a length or a distance.
struct OrbDeflateSlot {
  uint16_t base;
  uint16_t extraBits;
};

// The lengths of symbols 257 to 285. The last one, 258, has no extra bits of its own but could be
// written with those of symbol 284 too.
extern const OrbTable<OrbDeflateSlot, 29> orbDeflateLength;

// The distances of symbols 0 to 29.
extern const OrbTable<OrbDeflateSlot, 30> orbDeflateDistance;

// The order in which a block header sends the lengths of the code-length alphabet.
extern const OrbTable<uint8_t, 19> orbDeflateCodeLengthOrder;

}  // namespace orb

#endif
