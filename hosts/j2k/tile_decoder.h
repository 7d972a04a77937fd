// From the packets of a tile to samples of the components (ITU-T T.800 annexes B to H).
#ifndef ORB_HOSTS_J2K_TILE_DECODER_H
#define ORB_HOSTS_J2K_TILE_DECODER_H

#include <cstdint>
#include <vector>

#include "hosts/j2k/budget.h"
#include "hosts/j2k/codestream.h"
#include "hosts/j2k/damage.h"
#include "hosts/j2k/inverse_wavelet.h"
#include "hosts/j2k/layout.h"

namespace orbhost::j2k {

// A component of the whole picture. Samples are within its precision: from 0, or if they are signed
// from -2^(precision - 1).
struct Component {
  ComponentSize size;
  Rect rect;  // at the reduced resolution
  std::vector<int32_t> samples;

  int32_t* row(uint32_t y) { return samples.data() + static_cast<size_t>(rect.width()) * y; }
  const int32_t* row(uint32_t y) const {
    return samples.data() + static_cast<size_t>(rect.width()) * y;
  }
};

struct TileOptions {
  int reduction;  // the highest resolutions to leave out
  int layers;     // how many to decode
};

// Memory for one tile after the other.
struct TileMemory {
  template <class T>
  struct Planes {
    Plane<T> components[3];
    BandPlanes<T> bands;
  };
  Planes<Orb32s> integers;
  Planes<Orb32f> floats;
};

// Decodes a tile into its place in the components. Throws an Error if its headers allow no
// decoding.
void decodeTile(const Codestream& codestream, uint32_t tile, const TileOptions& options,
                std::vector<Component>& components, TileMemory& memory, Budget& budget,
                Damage& damage);

}  // namespace orbhost::j2k

#endif
