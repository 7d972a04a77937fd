// From the pixels of a tile to its code-blocks.
#ifndef ORB_HOSTS_J2K_TILE_ENCODER_H
#define ORB_HOSTS_J2K_TILE_ENCODER_H

#include <vector>

#include "hosts/image.h"
#include "hosts/j2k/band_plan.h"
#include "hosts/j2k/block_encoder.h"
#include "hosts/j2k/forward_wavelet.h"
#include "hosts/j2k/layout.h"
#include "hosts/j2k/packet_writer.h"
#include "hosts/j2k/parameters.h"

namespace orbhost::j2k {

// The bands of each precinct of a tile, through components, and through their resolutions.
using TilePrecincts = std::vector<std::vector<PrecinctBand>>;

class TileEncoder {
 public:
  // The first three have to stay where they are. The components have one precision, one style and
  // one plan of their bands.
  TileEncoder(const Image& image, const PictureSize& size, const TileCoding& coding,
              std::vector<BandPlan> plans);

  TilePrecincts encode(const Tile& tile);

 private:
  template <class Sample>
  TilePrecincts encodeAs(const Tile& tile);
  template <class Sample>
  CodedBlock encodeBlock(const PaddedPlane<Sample>& plane, const Band& band, const Rect& rect,
                         double componentWeight);

  const Image& image_;
  const PictureSize& size_;
  const TileCoding& coding_;
  std::vector<BandPlan> plans_;
  BlockEncoder blockEncoder_;
  std::vector<Orb32s> magnitudes_;  // of one block
};

}  // namespace orbhost::j2k

#endif
