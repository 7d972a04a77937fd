// JPEG colour conversion with vectors, which the compiler makes.
//
// It does where pixels lie in planes of words and all is arithmetic. So there are no tables here,
// and a row goes through planes of words, a stretch at a time.
#ifndef ORB_JPEG_SIMD_COLOR_H
#define ORB_JPEG_SIMD_COLOR_H

#include "jpeg/px/color.h"

namespace orb::ORB_BUILD::simd {

// The sums that the tables hold.
using ForwardA = ForwardOf<32767>;
using InverseA = InverseOf<91881, 22554, 46802, 116130, 32768, 32768, 32768>;

constexpr Orb32s kStretch = 64;

struct StretchIn {
  Orb16u component[3][kStretch];
};
struct StretchOut {
  Orb8u component[3][kStretch];
};

// The three steps are functions of their own, so that each exists once and not for every pair of
// images.
template <class Source>
[[gnu::noinline]] void readStretch(Source src, Orb32s width, StretchIn& __restrict in) {
  for (Orb32s x = 0; x < width; ++x) {
    const auto [a, b, c] = src.read(x);
    in.component[0][x] = static_cast<Orb16u>(a);
    in.component[1][x] = static_cast<Orb16u>(b);
    in.component[2][x] = static_cast<Orb16u>(c);
  }
}

template <Orb32s kRows>
[[gnu::noinline]] void readStretch(SharedChromaImage<kRows> src, Orb32s width,
                                   StretchIn& __restrict in) {
  const auto plane = src.planes.plane;
  for (Orb32s x = 0; x < width; ++x) in.component[0][x] = plane[0][x];
  for (Orb32s pair = 0; pair < width / 2; ++pair) {
    in.component[1][2 * pair] = in.component[1][2 * pair + 1] = plane[1][pair];
    in.component[2][2 * pair] = in.component[2][2 * pair + 1] = plane[2][pair];
  }
}

template <class Conversion>
[[gnu::noinline]] void convertStretch(const StretchIn& __restrict in, StretchOut& __restrict out) {
  for (Orb32s x = 0; x < kStretch; ++x) {
    const auto [a, b, c] =
        Conversion::convert({in.component[0][x], in.component[1][x], in.component[2][x]});
    out.component[0][x] = wrap8u(a);
    out.component[1][x] = wrap8u(b);
    out.component[2][x] = wrap8u(c);
  }
}

template <class Destination>
[[gnu::noinline]] void writeStretch(const StretchOut& __restrict out, Orb32s width,
                                    Destination dst) {
  for (Orb32s x = 0; x < width; ++x) {
    dst.write(x, {out.component[0][x], out.component[1][x], out.component[2][x]});
  }
}

template <class Conversion, class Source, class Destination>
inline void orbConvertRow(const Source& src, const Destination& dst, Orb32s width) {
  StretchIn in = {};
  StretchOut out;
  for (Orb32s x = 0; x < width; x += kStretch) {
    const Orb32s stretch = width - x < kStretch ? width - x : kStretch;
    readStretch(src.at(x, 0), stretch, in);
    convertStretch<Conversion>(in, out);
    writeStretch(out, stretch, dst.at(x, 0));
  }
}

}  // namespace orb::ORB_BUILD::simd

#endif
