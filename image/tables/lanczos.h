// The Lanczos kernel of order 3, 100 values to a sample.
#ifndef ORB_IMAGE_TABLES_LANCZOS_H
#define ORB_IMAGE_TABLES_LANCZOS_H

#include <stdint.h>

#include "frame/table.h"

namespace orb {

// Entry k is sinc(t) sinc(t / 3) at t = k / 100: up to 3, and one more to draw a line to.
extern const OrbTable<float, 302> orbLanczosTable;

}  // namespace orb

#endif
