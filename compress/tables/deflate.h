// The alphabets of deflate (RFC 1951, 3.2.5 to 3.2.7).
#ifndef ORB_COMPRESS_TABLES_DEFLATE_H
#define ORB_COMPRESS_TABLES_DEFLATE_H

#include <stdint.h>

#include "compress/lz77_records.h"
#include "frame/table.h"

namespace orb {

// A symbol with extra bits: they are added to `base`, which is a length or a distance.
struct OrbDeflateSlot {
  uint16_t base;
  uint16_t extraBits;
};

// The lengths of symbols 257 to 285. The last one, 258, could be written with the extra bits of
// symbol 284 too, and never is.
extern const OrbTable<OrbDeflateSlot, 29> orbDeflateLength;

// The distances of symbols 0 to 29, and behind them that of no distance, which takes no bits.
extern const OrbTable<OrbDeflateSlot, 31> orbDeflateDistance;

// The symbol of a literal, and in the second half that of a length, by length - 3.
extern const OrbTable<uint16_t, 512> orbDeflateSymbol;

// The symbol of a distance d: by d - 1 up to 256, and above by 256 + (d - 1) / 128; the last is
// that of no distance.
constexpr uint32_t kNoDistance = 512;
extern const OrbTable<uint8_t, 513> orbDeflateDistanceSymbol;

// The order in which a block header sends the lengths of the code-length alphabet.
extern const OrbTable<uint8_t, 19> orbDeflateCodeLengthOrder;

// The fixed code, ready for writing.
extern const OrbLZ77Codes orbDeflateFixedCodes;

}  // namespace orb

#endif
