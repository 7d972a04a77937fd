// The precision of floating point, held to that of the types.
//
// The registers of the x87 unit are wider than a float or a double, and how far each operation
// rounds is set in its control word, by whoever came last. With the type's own precision a result
// is to the bit what SSE computes. The unit computes the floats of px on 32 bits alone: elsewhere
// there is nothing to set.
#ifndef ORB_FRAME_X87_H
#define ORB_FRAME_X87_H

#include "frame/build.h"

namespace orb::ORB_BUILD {

enum class Precision : Orb16u { kSingle = 0x0000, kDouble = 0x0200 };

#if defined(__i386__) && !defined(__SSE2_MATH__)

// As long as one lives, additions, multiplications, divisions and roots round to this precision.
// What is computed has to lie in a function that is not inlined: the compiler may move arithmetic
// across a change of the control word.
class FloatPrecision {
 public:
  explicit FloatPrecision(Precision precision) {
    asm volatile("fnstcw %0" : "=m"(saved_));
    const Orb16u wanted = static_cast<Orb16u>((saved_ & ~0x0300) | static_cast<Orb16u>(precision));
    asm volatile("fldcw %0" : : "m"(wanted) : "memory");
  }
  FloatPrecision(const FloatPrecision&) = delete;
  FloatPrecision& operator=(const FloatPrecision&) = delete;
  ~FloatPrecision() { asm volatile("fldcw %0" : : "m"(saved_) : "memory"); }

 private:
  Orb16u saved_;
};

#else

class FloatPrecision {
 public:
  explicit FloatPrecision(Precision) {}
  FloatPrecision(const FloatPrecision&) = delete;
  FloatPrecision& operator=(const FloatPrecision&) = delete;
  ~FloatPrecision() {}
};

#endif

}  // namespace orb::ORB_BUILD

#endif
