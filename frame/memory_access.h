// Samples at any address: rows are addressed in bytes and need not be aligned to their sample.
#ifndef ORB_FRAME_MEMORY_ACCESS_H
#define ORB_FRAME_MEMORY_ACCESS_H

#include <stddef.h>

#include "frame/build.h"

namespace orb::ORB_BUILD {

template <class T>
inline T load(const T* address) {
  T value;
  __builtin_memcpy(&value, static_cast<const void*>(address), sizeof value);
  return value;
}

template <class T>
inline void store(T* address, T value) {
  __builtin_memcpy(static_cast<void*>(address), &value, sizeof value);
}

// The start of row `y` of a region whose rows are `step` bytes apart.
template <class T>
inline T* rowAt(T* first, Orb32s step, ptrdiff_t y) {
  return reinterpret_cast<T*>(reinterpret_cast<uintptr_t>(first) +
                              static_cast<uintptr_t>(static_cast<ptrdiff_t>(step) * y));
}

}  // namespace orb::ORB_BUILD

#endif
