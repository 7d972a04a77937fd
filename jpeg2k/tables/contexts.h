// The contexts of coefficient bit modelling (ITU-T T.800 D.3).
#ifndef ORB_JPEG2K_TABLES_CONTEXTS_H
#define ORB_JPEG2K_TABLES_CONTEXTS_H

#include <stdint.h>

#include "frame/table.h"

namespace orb {

// Where the contexts of each kind begin. The labels of the last three kinds are those of T.800 plus
// 2.
enum OrbContext {
  orbUniformContext = 0,
  orbRunLengthContext = 1,
  orbZeroCodingContext = 2,   // 9 of them
  orbSignContext = 11,        // 5
  orbRefinementContext = 16,  // 3
  orbContextCount = 19,
};

// The entry of orbMqStates in which each context starts (T.800 table D.7).
extern const OrbTable<uint8_t, orbContextCount> orbContextStart;

// Which orientation of subband has which contexts for zero coding.
enum OrbZeroCoding { orbZeroCodingLlLh, orbZeroCodingHl, orbZeroCodingHh };

// The zero coding context of a sample by which samples of its 3x3 neighbourhood are significant:
// bit 3 * row + column, the upper left at bit 0. The sample itself, bit 4, plays no part (T.800
// table D.1).
extern const OrbTable<OrbTable<uint8_t, 512>, 3> orbZeroCodingContexts;

// The sign coding context of a sample by its four nearest neighbours, two bits to each: north at
// bit 0, west at bit 2, east at bit 4, south at bit 6. The lower bit of a pair says that the
// neighbour is negative, the upper one that it is significant; an insignificant neighbour has no
// sign. Bit 7 of an entry is to be exclusive-ored with the sign bit (T.800 tables D.2 and D.3).
extern const OrbTable<uint8_t, 256> orbSignContexts;

}  // namespace orb

#endif
