// The photo core transform of many blocks at once: a vector holds one sample of each.
//
// Steps on 16 bits stay within words. Where a step of the plain lifting needs more than a word
// before it shifts, there is a form here that comes to the same without.
#ifndef ORB_JPEGXR_SIMD_CORE_TRANSFORM_H
#define ORB_JPEGXR_SIMD_CORE_TRANSFORM_H

#include <immintrin.h>

#include "jpegxr/px/core_transform.h"

namespace orb::ORB_BUILD::simd {

// ---- Registers, in two widths where the build has them
//
// A unit is 16 bytes of a row: one block of 32-bit samples, or two of 16 bits. Four registers are
// loaded at a time.

constexpr Orb32s kUnitBytes = 16;

struct Narrow {
  using Register = __m128i;
  static constexpr Orb32s kUnits = 4;  // in four registers
  static Register load(Orb8u* const* unit, uintptr_t offset) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(unit[0] + offset));
  }
  static void store(Orb8u* const* unit, uintptr_t offset, Register bytes) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(unit[0] + offset), bytes);
  }
  static Register low16(Register a, Register b) { return _mm_unpacklo_epi16(a, b); }
  static Register low32(Register a, Register b) { return _mm_unpacklo_epi32(a, b); }
  static Register low64(Register a, Register b) { return _mm_unpacklo_epi64(a, b); }
  static Register high16(Register a, Register b) { return _mm_unpackhi_epi16(a, b); }
  static Register high32(Register a, Register b) { return _mm_unpackhi_epi32(a, b); }
  static Register high64(Register a, Register b) { return _mm_unpackhi_epi64(a, b); }
#if defined(__SSSE3__)
  // The product in 15 fraction bits, rounded.
  static Register mulRounded16(Register a, Register b) {
    return _mm_mulhrs_epi16(a, b);
  }
#endif
};

#if defined(__AVX2__)
struct Wide {
  using Register = __m256i;
  static constexpr Orb32s kUnits = 8;
  // A unit, and the fourth behind it.
  static Register load(Orb8u* const* unit, uintptr_t offset) {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(Narrow::load(unit, offset)),
                                   Narrow::load(unit + 4, offset), 1);
  }
  static void store(Orb8u* const* unit, uintptr_t offset, Register bytes) {
    Narrow::store(unit, offset, _mm256_castsi256_si128(bytes));
    Narrow::store(unit + 4, offset, _mm256_extracti128_si256(bytes, 1));
  }
  static Register low16(Register a, Register b) { return _mm256_unpacklo_epi16(a, b); }
  static Register low32(Register a, Register b) { return _mm256_unpacklo_epi32(a, b); }
  static Register low64(Register a, Register b) { return _mm256_unpacklo_epi64(a, b); }
  static Register high16(Register a, Register b) { return _mm256_unpackhi_epi16(a, b); }
  static Register high32(Register a, Register b) { return _mm256_unpackhi_epi32(a, b); }
  static Register high64(Register a, Register b) { return _mm256_unpackhi_epi64(a, b); }
  static Register mulRounded16(Register a, Register b) { return _mm256_mulhrs_epi16(a, b); }
};
#else
using Wide = Narrow;
#endif

// ---- Lanes: a sample of each block

template <class Width, class T>
struct Lanes {
  typedef T Vector __attribute__((vector_size(sizeof(typename Width::Register))));
  Vector v;

  friend Lanes operator+(Lanes a, Lanes b) { return {a.v + b.v}; }
  friend Lanes operator-(Lanes a, Lanes b) { return {a.v - b.v}; }
  friend Lanes operator-(Lanes a) { return {-a.v}; }
  friend Lanes operator&(Lanes a, Lanes b) { return {a.v & b.v}; }
  friend Lanes operator~(Lanes a) { return {~a.v}; }
  friend Lanes operator>>(Lanes a, int n) { return {a.v >> n}; }
  // Lanes of the same value.
  static Lanes of(T value) { return {Vector{} + value}; }

  using Register = typename Width::Register;
  static Lanes from(Register r) { return {reinterpret_cast<Vector>(r)}; }
  Register asRegister() const { return reinterpret_cast<Register>(v); }
};

template <class Width>
struct Lift32sLanes {
  using Sample = Lanes<Width, Orb32s>;
  using Exact = Sample;
  static Sample cut(Sample value) { return value; }
  static Sample half(Sample a) { return a >> 1; }
  template <Orb32s kRounding>
  static Sample halfDifference(Sample a, Sample b) {
    return (a - b + Sample::of(kRounding)) >> 1;
  }
  static Sample halfUp(Sample a) { return (a + Sample::of(1)) >> 1; }
  static Sample threeEighths(Sample a) { return (a + a + a + Sample::of(4)) >> 3; }
  static Sample threeEighthsDown(Sample a) { return (a + a + a + Sample::of(3)) >> 3; }
  static Sample threeQuarters(Sample a) { return (a + a + a + Sample::of(3)) >> 2; }
};

template <class Width>
struct Lift16sLanes {
  using Sample = Lanes<Width, Orb16s>;
  using Exact = Sample;
  static Sample cut(Sample value) { return value; }
  static Sample half(Sample a) { return a >> 1; }
  // Half of each, and one off where their last bits say so.
  template <Orb32s kRounding>
  static Sample halfDifference(Sample a, Sample b) {
    const Sample halves = (a >> 1) - (b >> 1);
    const Sample one = Sample::of(1);
    if constexpr (kRounding == 0) return halves - (~a & b & one);
    return halves + (a & ~b & one);
  }
  static Sample halfUp(Sample a) { return a - (a >> 1); }
  static Sample threeQuarters(Sample a) { return a - (a >> 2); }
#if defined(__SSSE3__)
  static Sample threeEighths(Sample a) {
    return Sample::from(Width::mulRounded16(a.asRegister(), Sample::of(3 << 12).asRegister()));
  }
  // One less where that has rounded a half up.
  static Sample threeEighthsDown(Sample a) {
    return threeEighths(a) + Sample{(a & Sample::of(7)).v == Sample::of(4).v};
  }
#else
  // Of the multiple of 8, and of what is left.
  static Sample threeEighths(Sample a) {
    return threeEighths(a, Sample::of(4));
  }
  static Sample threeEighthsDown(Sample a) {
    return threeEighths(a, Sample::of(3));
  }
  static Sample threeEighths(Sample a, Sample rounding) {
    const Sample eighths = a >> 3, left = a & Sample::of(7);
    return eighths + eighths + eighths + ((left + left + left + rounding) >> 3);
  }
#endif
};

// ---- From rows of units to lanes by column, and back

template <class Width>
struct Four {
  typename Width::Register r[4];
};

// Of each register one column of four 32-bit samples for each block, and the same way back.
template <class W>
inline Four<W> exchange32(Four<W> in) {
  const auto& r = in.r;
  const auto a = W::low32(r[0], r[1]), b = W::low32(r[2], r[3]);
  const auto c = W::high32(r[0], r[1]), d = W::high32(r[2], r[3]);
  return {{W::low64(a, b), W::high64(a, b), W::low64(c, d), W::high64(c, d)}};
}
// The same of 16-bit samples, where a unit has two blocks.
template <class W>
inline Four<W> toColumns16(Four<W> rows) {
  const auto& r = rows.r;
  const auto a = W::low16(r[0], r[1]), b = W::low16(r[2], r[3]);
  const auto c = W::high16(r[0], r[1]), d = W::high16(r[2], r[3]);
  const auto e = W::low32(a, b), f = W::low32(c, d);
  const auto g = W::high32(a, b), h = W::high32(c, d);
  return {{W::low64(e, f), W::high64(e, f), W::low64(g, h), W::high64(g, h)}};
}
template <class W>
inline Four<W> toRows16(Four<W> columns) {
  const auto& c = columns.r;
  const auto e = W::low16(c[0], c[1]), f = W::high16(c[0], c[1]);
  const auto g = W::low16(c[2], c[3]), h = W::high16(c[2], c[3]);
  const auto a = W::low32(e, g), b = W::low32(f, h);
  const auto i = W::high32(e, g), j = W::high32(f, h);
  return {{W::low64(a, b), W::high64(a, b), W::low64(i, j), W::high64(i, j)}};
}

// ---- How samples go through vectors. Floats do not: they are computed as doubles.

template <class Lift>
struct InLanes {
  static constexpr bool kExist = false;
};
template <>
struct InLanes<Lift16s> {
  static constexpr bool kExist = true;
  template <class Width>
  using LaneLift = Lift16sLanes<Width>;
  template <class Width>
  static Four<Width> toColumns(Four<Width> rows) {
    return toColumns16(rows);
  }
  template <class Width>
  static Four<Width> toRows(Four<Width> columns) {
    return toRows16(columns);
  }
};
template <>
struct InLanes<Lift32s> {
  static constexpr bool kExist = true;
  template <class Width>
  using LaneLift = Lift32sLanes<Width>;
  template <class Width>
  static Four<Width> toColumns(Four<Width> rows) {
    return exchange32(rows);
  }
  template <class Width>
  static Four<Width> toRows(Four<Width> columns) {
    return exchange32(columns);
  }
};

// A unit may come up more than once: all are loaded before any is stored.
template <class Width, class Transform, class Lift>
inline void orbTransformUnits(Orb8u* const* unit, Orb32u step) {
  using In = InLanes<Lift>;
  using LaneLift = typename In::template LaneLift<Width>;
  using Sample = typename LaneLift::Sample;
  Sample a[16];
  for (Orb32u y = 0; y < 4; ++y) {
    Four<Width> rows;
    for (Orb32s i = 0; i < 4; ++i) {
      rows.r[i] = Width::load(unit + i, static_cast<uintptr_t>(step) * y);
    }
    const Four<Width> columns = In::toColumns(rows);
    for (Orb32u x = 0; x < 4; ++x) a[4 * y + x] = Sample::from(columns.r[x]);
  }
  Transform::template apply<LaneLift>(a);
  for (Orb32u y = 0; y < 4; ++y) {
    Four<Width> columns;
    for (Orb32u x = 0; x < 4; ++x) columns.r[x] = a[4 * y + x].asRegister();
    const Four<Width> rows = In::toRows(columns);
    for (Orb32s i = 0; i < 4; ++i) {
      Width::store(unit + i, static_cast<uintptr_t>(step) * y, rows.r[i]);
    }
  }
}

// Fewer units than fill the widest registers, at least one.
template <class Transform, class Lift>
inline void orbTransformRest(Orb8u* (&unit)[Wide::kUnits], Orb32s count, Orb32u step) {
  for (Orb32s i = count; i < Wide::kUnits; ++i) unit[i] = unit[0];
  if (count > Narrow::kUnits) {
    orbTransformUnits<Wide, Transform, Lift>(unit, step);
  } else {
    orbTransformUnits<Narrow, Transform, Lift>(unit, step);
  }
}

template <class Transform, class Lift>
inline void orbTransformRegion(typename Lift::Sample* first, Orb32u step, Orb32s width,
                               Orb32s height) {
  if constexpr (!InLanes<Lift>::kExist) {
    plain::orbTransformRegion<Transform, Lift>(first, step, width, height);
  } else {
    constexpr Orb32s kUnitWidth = kUnitBytes / sizeof(*first);
    Orb8u* unit[Wide::kUnits];
    Orb32s count = 0;
    for (Orb32s y = 0; y < height; y += 4) {
      Orb32s x = 0;
      for (; x + kUnitWidth <= width; x += kUnitWidth) {
        unit[count++] = reinterpret_cast<Orb8u*>(first + x);
        if (count < Wide::kUnits) continue;
        orbTransformUnits<Wide, Transform, Lift>(unit, step);
        count = 0;
      }
      if (x < width) orbTransformBlock<Transform, Lift>(first + x, step);
      for (Orb32s i = 0; i < 4; ++i) first = rowBehind(first, step);
    }
    if (count > 0) orbTransformRest<Transform, Lift>(unit, count, step);
  }
}

}  // namespace orb::ORB_BUILD::simd

#endif
