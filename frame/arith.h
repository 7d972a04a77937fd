// Where a value is cut or limited, in words: integers wrap (the library is compiled with -fwrapv),
// and narrowing goes through these.
#ifndef ORB_FRAME_ARITH_H
#define ORB_FRAME_ARITH_H

#include "frame/build.h"

namespace orb::ORB_BUILD {

static_assert(-3 >> 1 == -2, "right shifts of negative values are arithmetic");

template <class T>
constexpr T limit(T value, T low, T high) {
  return value < low ? low : value > high ? high : value;
}

// Keeps the low 16 bits and reads them as signed.
constexpr Orb16s wrap16s(Orb32s value) {
  return static_cast<Orb16s>(value);
}
// Keeps the low 16 bits.
constexpr Orb16u wrap16u(Orb32s value) {
  return static_cast<Orb16u>(value);
}
// Keeps the low 8 bits.
constexpr Orb8u wrap8u(Orb32s value) {
  return static_cast<Orb8u>(value);
}
constexpr Orb16s saturate16s(Orb32s value) {
  return static_cast<Orb16s>(limit(value, -32768, 32767));
}
constexpr Orb8u saturate8u(Orb32s value) {
  return static_cast<Orb8u>(limit(value, 0, 255));
}

// To nearest, ties to even; the value must be within the result's range. One instruction in every
// build, SSE or x87, and in vectors where the compiler has the first of the two.
inline Orb32s roundToEven(Orb32f value) {
#if __has_builtin(__builtin_irintf)
  return __builtin_irintf(value);
#else
  return static_cast<Orb32s>(__builtin_lrintf(value));
#endif
}
inline Orb32s roundToEven(Orb64f value) {
#if __has_builtin(__builtin_irint)
  return __builtin_irint(value);
#else
  return static_cast<Orb32s>(__builtin_lrint(value));
#endif
}

}  // namespace orb::ORB_BUILD

#endif
