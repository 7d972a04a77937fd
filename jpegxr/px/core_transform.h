// The photo core transform of JPEG XR (ITU-T T.832) on 4x4 blocks, in lifting steps.
//
// The steps are written once, over a `Lift` that says how samples of a type take them: a step is
// computed exactly and then cut to the sample. `Sample` may also be a vector of them.
#ifndef ORB_JPEGXR_PX_CORE_TRANSFORM_H
#define ORB_JPEGXR_PX_CORE_TRANSFORM_H

#include "frame/arith.h"
#include "frame/memory_access.h"
#include "frame/precision.h"

namespace orb::ORB_BUILD::plain {

// Shifts of 32-bit integers, which wrap.
struct LiftIntegers {
  using Exact = Orb32s;
  struct Precision {};
  template <Orb32s kRounding>
  static Orb32s halfDifference(Orb32s a, Orb32s b) {
    return (a - b + kRounding) >> 1;
  }
  static Orb32s half(Orb32s a) { return a >> 1; }
  static Orb32s halfUp(Orb32s a) { return (a + 1) >> 1; }
  static Orb32s threeEighths(Orb32s a) { return (3 * a + 4) >> 3; }
  static Orb32s threeEighthsDown(Orb32s a) { return (3 * a + 3) >> 3; }
  static Orb32s threeQuarters(Orb32s a) { return (3 * a + 3) >> 2; }
};

struct Lift16s : LiftIntegers {
  using Sample = Orb16s;
  static Orb16s cut(Orb32s value) { return wrap16s(value); }
};

struct Lift32s : LiftIntegers {
  using Sample = Orb32s;
  static Orb32s cut(Orb32s value) { return value; }
};

// Nothing is rounded but what a step stores.
struct Lift32f {
  using Sample = Orb32f;
  using Exact = Orb64f;
  using Precision = DoublePrecision;
  static Orb32f cut(Orb64f value) { return stored(static_cast<Orb32f>(value)); }
  template <Orb32s kRounding>
  static Orb64f halfDifference(Orb64f a, Orb64f b) {
    return 0.5 * (a - b);
  }
  static Orb64f half(Orb64f a) { return 0.5 * a; }
  static Orb64f halfUp(Orb64f a) { return 0.5 * a; }
  static Orb64f threeEighths(Orb64f a) { return 0.375 * a; }
  static Orb64f threeEighthsDown(Orb64f a) { return 0.375 * a; }
  static Orb64f threeQuarters(Orb64f a) { return 0.75 * a; }
};

// ---- Operators on four samples

// The smallest transform, which is its own inverse.
template <class Lift, Orb32s kRounding, class T>
[[gnu::always_inline]] inline void liftH(T& a, T& b, T& c, T& d) {
  using Exact = typename Lift::Exact;
  a = Lift::cut(Exact{a} + d);
  b = Lift::cut(Exact{b} - c);
  const T t = Lift::cut(Lift::template halfDifference<kRounding>(a, b) - d);
  b = Lift::cut(Exact{b} + t);
  d = Lift::cut(Exact{d} - c + t);
  a = Lift::cut(Exact{a} - d);
  c = t;
}

// The transform of two rows or columns of which one has been rotated.
template <class Lift, class T>
[[gnu::always_inline]] inline void liftOddForward(T& a, T& b, T& c, T& d) {
  using Exact = typename Lift::Exact;
  b = Lift::cut(Exact{b} - c);
  a = Lift::cut(Exact{a} + d);
  c = Lift::cut(Exact{c} + Lift::halfUp(b));
  d = Lift::cut(Lift::halfUp(a) - d);
  b = Lift::cut(Exact{b} - Lift::threeEighths(a));
  a = Lift::cut(Exact{a} + Lift::threeEighths(b));
  d = Lift::cut(Exact{d} - Lift::threeEighths(c));
  c = Lift::cut(Exact{c} + Lift::threeEighths(d));
  d = Lift::cut(Exact{d} + Lift::half(b));
  c = Lift::cut(Exact{c} - Lift::halfUp(a));
  b = Lift::cut(Exact{b} - d);
  a = Lift::cut(Exact{a} + c);
}

template <class Lift, class T>
[[gnu::always_inline]] inline void liftOddInverse(T& a, T& b, T& c, T& d) {
  using Exact = typename Lift::Exact;
  b = Lift::cut(Exact{b} + d);
  a = Lift::cut(Exact{a} - c);
  d = Lift::cut(Exact{d} - Lift::half(b));
  c = Lift::cut(Exact{c} + Lift::halfUp(a));
  a = Lift::cut(Exact{a} - Lift::threeEighths(b));
  b = Lift::cut(Exact{b} + Lift::threeEighths(a));
  c = Lift::cut(Exact{c} - Lift::threeEighths(d));
  d = Lift::cut(Exact{d} + Lift::threeEighths(c));
  c = Lift::cut(Exact{c} - Lift::halfUp(b));
  d = Lift::cut(Lift::halfUp(a) - d);
  b = Lift::cut(Exact{b} + c);
  a = Lift::cut(Exact{a} - d);
}

// The transform of samples that are rotated both ways.
template <class Lift, class T>
[[gnu::always_inline]] inline void liftOddOddForward(T& a, T& b, T& c, T& d) {
  using Exact = typename Lift::Exact;
  b = Lift::cut(-Exact{b});
  c = Lift::cut(-Exact{c});
  d = Lift::cut(Exact{d} + a);
  c = Lift::cut(Exact{c} - b);
  const T t = Lift::cut(Lift::half(d));
  a = Lift::cut(Exact{a} - t);
  const T u = Lift::cut(Lift::half(c));
  T x = Lift::cut(Exact{b} + u);
  a = Lift::cut(Exact{a} + Lift::threeEighths(x));
  x = Lift::cut(Exact{x} - Lift::threeQuarters(a));
  b = Lift::cut(Exact{x} - u);
  a = Lift::cut(Exact{a} + Lift::threeEighthsDown(x) + t);
  c = Lift::cut(Exact{c} + b);
  d = Lift::cut(Exact{d} - a);
}

template <class Lift, class T>
[[gnu::always_inline]] inline void liftOddOddInverse(T& a, T& b, T& c, T& d) {
  using Exact = typename Lift::Exact;
  d = Lift::cut(Exact{d} + a);
  c = Lift::cut(Exact{c} - b);
  const T t = Lift::cut(Lift::half(d));
  a = Lift::cut(Exact{a} - t);
  const T u = Lift::cut(Lift::half(c));
  T x = Lift::cut(Exact{b} + u);
  a = Lift::cut(Exact{a} - Lift::threeEighthsDown(x));
  x = Lift::cut(Exact{x} + Lift::threeQuarters(a));
  b = Lift::cut(Exact{x} - u);
  a = Lift::cut(Exact{a} - Lift::threeEighths(x) + t);
  c = Lift::cut(Exact{c} + b);
  d = Lift::cut(Exact{d} - a);
  b = Lift::cut(-Exact{b});
  c = Lift::cut(-Exact{c});
}

// ---- Blocks, in rows of four

// The upper right part is the lower left one with rows and columns exchanged.
struct CoreForward {
  template <class Lift, class T>
  [[gnu::always_inline]] static void apply(T (&a)[16]) {
    liftH<Lift, 0>(a[0], a[3], a[12], a[15]);
    liftH<Lift, 0>(a[1], a[2], a[13], a[14]);
    liftH<Lift, 0>(a[4], a[7], a[8], a[11]);
    liftH<Lift, 0>(a[5], a[6], a[9], a[10]);
    liftH<Lift, 1>(a[0], a[1], a[4], a[5]);
    liftOddForward<Lift>(a[2], a[3], a[6], a[7]);
    liftOddForward<Lift>(a[8], a[12], a[9], a[13]);
    liftOddOddForward<Lift>(a[10], a[11], a[14], a[15]);
  }
};

struct CoreInverse {
  template <class Lift, class T>
  [[gnu::always_inline]] static void apply(T (&a)[16]) {
    liftOddInverse<Lift>(a[2], a[3], a[6], a[7]);
    liftOddInverse<Lift>(a[8], a[12], a[9], a[13]);
    liftOddOddInverse<Lift>(a[10], a[11], a[14], a[15]);
    liftH<Lift, 1>(a[0], a[1], a[4], a[5]);
    liftH<Lift, 0>(a[0], a[3], a[12], a[15]);
    liftH<Lift, 0>(a[1], a[2], a[13], a[14]);
    liftH<Lift, 0>(a[4], a[7], a[8], a[11]);
    liftH<Lift, 0>(a[5], a[6], a[9], a[10]);
  }
};

// ---- Regions

template <class T>
inline T* rowBehind(T* row, Orb32u step) {
  return reinterpret_cast<T*>(reinterpret_cast<uintptr_t>(row) + step);
}

template <class Transform, class Lift>
inline void orbTransformBlock(typename Lift::Sample* block, Orb32u step) {
  typename Lift::Sample a[16];
  auto* row = block;
  for (Orb32s y = 0; y < 4; ++y, row = rowBehind(row, step)) {
    for (Orb32s x = 0; x < 4; ++x) a[4 * y + x] = load(row + x);
  }
  Transform::template apply<Lift>(a);
  row = block;
  for (Orb32s y = 0; y < 4; ++y, row = rowBehind(row, step)) {
    for (Orb32s x = 0; x < 4; ++x) store(row + x, a[4 * y + x]);
  }
}

// The width and the height are multiples of 4.
template <class Transform, class Lift>
inline void orbTransformRegion(typename Lift::Sample* first, Orb32u step, Orb32s width,
                               Orb32s height) {
  [[maybe_unused]] typename Lift::Precision precision;
  for (Orb32s y = 0; y < height; y += 4) {
    for (Orb32s x = 0; x < width; x += 4) {
      orbTransformBlock<Transform, Lift>(first + x, step);
    }
    for (Orb32s i = 0; i < 4; ++i) first = rowBehind(first, step);
  }
}

}  // namespace orb::ORB_BUILD::plain

#endif
