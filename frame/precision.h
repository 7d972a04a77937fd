// Floating-point numbers as they are everywhere else, where they are computed in the x87 unit: px
// on 32 bits alone. Other builds compute in SSE, and there is nothing to do there.
#ifndef ORB_FRAME_PRECISION_H
#define ORB_FRAME_PRECISION_H

#include "frame/build.h"

namespace orb::ORB_BUILD {

// While one exists, the x87 unit rounds the result of each addition, multiplication, division and
// root to the bits of a type, and not to its own 64. What is computed has to lie in a function that
// is not inlined: the compiler may move arithmetic across a change of the control word.
template <Orb16u kControl>
class Precision {
 public:
#if defined(__i386__) && !defined(__SSE2_MATH__)
  Precision() {
    __asm__ volatile("fnstcw %0" : "=m"(before_));
    const Orb16u wanted = static_cast<Orb16u>((before_ & ~0x0300) | kControl);
    __asm__ volatile("fldcw %0" : : "m"(wanted) : "memory");
  }
  ~Precision() {
    __asm__ volatile("fldcw %0" : : "m"(before_) : "memory");
  }

 private:
  Orb16u before_;
#else
  Precision() {}
  ~Precision() {}
#endif

 public:
  Precision(const Precision&) = delete;
  Precision& operator=(const Precision&) = delete;
};

using DoublePrecision = Precision<0x0200>;
using SinglePrecision = Precision<0x0000>;

// A float as it is in memory: the x87 unit's registers keep more of it.
inline Orb32f stored(Orb32f value) {
#if defined(__i386__) && !defined(__SSE2_MATH__)
  __asm__("" : "+m"(value));
#endif
  return value;
}

}  // namespace orb::ORB_BUILD

#endif
