// A constant table that a constexpr function can return.
#ifndef ORB_FRAME_TABLE_H
#define ORB_FRAME_TABLE_H

#include <stddef.h>

namespace orb {

// Indexing is always inlined: code of several builds uses the same tables, and none of it may leave
// a function behind that the linker could share between them.
template <class T, size_t N>
struct OrbTable {
  T entry[N];

  [[gnu::always_inline]] constexpr const T& operator[](size_t i) const { return entry[i]; }
  [[gnu::always_inline]] constexpr T& operator[](size_t i) { return entry[i]; }
};

}  // namespace orb

#endif
