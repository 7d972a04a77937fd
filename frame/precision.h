// Doubles as they are everywhere else, where they are computed in the x87 unit.
#ifndef ORB_FRAME_PRECISION_H
#define ORB_FRAME_PRECISION_H

#include "frame/build.h"

namespace orb::ORB_BUILD {

// While one exists, the x87 unit rounds each result to the 53 bits of a double, and not to its
// own 64. Other builds compute in SSE, and it does nothing there.
class DoublePrecision {
 public:
#if defined(__i386__) && !defined(__SSE2_MATH__)
  DoublePrecision() {
    __asm__ volatile("fnstcw %0" : "=m"(before_));
    const Orb16u doubles = static_cast<Orb16u>((before_ & ~0x0300) | 0x0200);
    __asm__ volatile("fldcw %0" : : "m"(doubles));
  }
  ~DoublePrecision() {
    __asm__ volatile("fldcw %0" : : "m"(before_));
  }

 private:
  Orb16u before_;
#else
  DoublePrecision() {}
  ~DoublePrecision() {}
#endif

 public:
  DoublePrecision(const DoublePrecision&) = delete;
  DoublePrecision& operator=(const DoublePrecision&) = delete;
};

// A float as it is in memory: the x87 unit's registers keep more of it.
inline Orb32f stored(Orb32f value) {
#if defined(__i386__) && !defined(__SSE2_MATH__)
  __asm__("" : "+m"(value));
#endif
  return value;
}

}  // namespace orb::ORB_BUILD

#endif
