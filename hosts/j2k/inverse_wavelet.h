// One level of the wavelets backwards (ITU-T T.800 F.3): from four bands to the next resolution.
#ifndef ORB_HOSTS_J2K_INVERSE_WAVELET_H
#define ORB_HOSTS_J2K_INVERSE_WAVELET_H

#include "hosts/j2k/layout.h"
#include "hosts/j2k/plane.h"
#include "orb90legacy.h"

namespace orbhost::j2k {

// Planes by their orientation.
template <class T>
struct BandPlanes {
  Plane<T> ll;
  Plane<T> lh;
  Plane<T> hl;
  Plane<T> hh;
};

// The 5/3 for integers, the 9/7 for floats. `rect` is the resolution that comes out, and `to` has
// its size. What the bands' margins hold is lost.
void inverseWavelet(const Rect& rect, BandPlanes<Orb32s>& bands, Plane<Orb32s>& to);
void inverseWavelet(const Rect& rect, BandPlanes<Orb32f>& bands, Plane<Orb32f>& to);

}  // namespace orbhost::j2k

#endif
