// The multiple component transforms (ITU-T T.800 annex G), pixel by pixel.
#ifndef ORB_JPEG2K_PX_COMPONENTS_H
#define ORB_JPEG2K_PX_COMPONENTS_H

#include "frame/memory_access.h"

namespace orb::ORB_BUILD::plain {

template <class T>
struct Components {
  T values[3];
};

// ---- What happens to one pixel
//
// Integers are computed in 32 bits, which wrap, and cut to the sample's width when they are stored.
// Floats are computed in doubles.

template <class T>
struct ComputedIn {
  using Type = Orb32s;
};
template <>
struct ComputedIn<Orb32f> {
  using Type = Orb64f;
};

struct RCTForward {
  static Components<Orb32s> apply(Components<Orb32s> pixel) {
    const auto [r, g, b] = pixel.values;
    return {{(r + 2 * g + b) >> 2, b - g, r - g}};
  }
};

struct RCTInverse {
  static Components<Orb32s> apply(Components<Orb32s> pixel) {
    const auto [y, u, v] = pixel.values;
    const Orb32s g = y - ((u + v) >> 2);
    return {{v + g, g, u + g}};
  }
};

// The factors of integers have 14 fraction bits.
struct ICTForward {
  static Components<Orb32s> apply(Components<Orb32s> pixel) {
    const auto [r, g, b] = pixel.values;
    return {{(4899 * r + 9617 * g + 1868 * b + 8192) >> 14,
             (-2765 * r - 5427 * g + 8192 * b + 8192) >> 14,
             (8192 * r - 6860 * g - 1332 * b + 8192) >> 14}};
  }
  static Components<Orb64f> apply(Components<Orb64f> pixel) {
    const auto [r, g, b] = pixel.values;
    return {{0.299f * r + 0.587f * g + 0.114f * b, -0.16875f * r - 0.33126f * g + 0.5f * b,
             0.5f * r - 0.41869f * g - 0.08131f * b}};
  }
};

struct ICTInverse {
  static Components<Orb32s> apply(Components<Orb32s> pixel) {
    const auto [y, cb, cr] = pixel.values;
    return {{((22970 * cr + 8192) >> 14) + y, ((-5638 * cb - 11700 * cr + 8192) >> 14) + y,
             ((29032 * cb + 8192) >> 14) + y}};
  }
  static Components<Orb64f> apply(Components<Orb64f> pixel) {
    const auto [y, cb, cr] = pixel.values;
    return {{y + 1.402f * cr, y - 0.34413f * cb - 0.71414f * cr, y + 1.772f * cb}};
  }
};

// ---- Rows of pixels

// Component `c` of pixel `x` is at first[c][x * kDistance]: 1 in planes, 3 in interleaved pixels.
template <class T, ptrdiff_t kDistance>
struct ComponentRow {
  T* first[3];
};

template <class T>
inline ComponentRow<T, 3> interleavedRow(T* image, Orb32s step, ptrdiff_t y) {
  T* const row = rowAt(image, step, y);
  return {{row, row + 1, row + 2}};
}

template <class T>
inline ComponentRow<T, 1> planarRow(T* const planes[3], Orb32s step, ptrdiff_t y) {
  return {{rowAt(planes[0], step, y), rowAt(planes[1], step, y), rowAt(planes[2], step, y)}};
}

template <class Transform, class From, class T, ptrdiff_t kFrom, ptrdiff_t kTo>
inline void orbTransformRow(ComponentRow<From, kFrom> from, ComponentRow<T, kTo> to, Orb32s width) {
  using Wide = typename ComputedIn<T>::Type;
  for (ptrdiff_t x = 0; x < width; ++x) {
    const auto read = [&](int c) { return static_cast<Wide>(load(from.first[c] + x * kFrom)); };
    const Components<Wide> pixel = {{read(0), read(1), read(2)}};
    const Components<Wide> result = Transform::apply(pixel);
    for (int c = 0; c < 3; ++c) store(to.first[c] + x * kTo, static_cast<T>(result.values[c]));
  }
}

}  // namespace orb::ORB_BUILD::plain

#endif
