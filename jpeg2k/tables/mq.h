// The probability states of the MQ coder (ITU-T T.800 table C.2).
#ifndef ORB_JPEG2K_TABLES_MQ_H
#define ORB_JPEG2K_TABLES_MQ_H

#include <stdint.h>

#include "frame/table.h"

namespace orb {

// The 47 states, each with either symbol as the more probable one: state `i` with the more probable
// symbol `s` is entry 2 * i + s, and all that the coder wants to know of it is one word:
//
//   bits 31..16  Qe, the size of the less probable symbol's subinterval
//   bits 15..8   the entry that follows a less probable symbol
//   bits 7..0    the entry that follows a more probable symbol when the interval is renormalised
//
// A more probable symbol never changes which one that is, so bit 0 is the symbol itself.
extern const OrbTable<uint32_t, 94> orbMqStates;

}  // namespace orb

#endif
