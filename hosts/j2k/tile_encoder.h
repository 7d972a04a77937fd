// From the pixels of a tile to its code-blocks.
#ifndef ORB_HOSTS_J2K_TILE_ENCODER_H
#define ORB_HOSTS_J2K_TILE_ENCODER_H

#include <vector>

#include "hosts/image.h"
#include "hosts/j2k/band_plan.h"
#include "hosts/j2k/block_encoder.h"
#include "hosts/j2k/forward_wavelet.h"
#include "hosts/j2k/layout.h"
#include "hosts/j2k/magnitude_counts.h"
#include "hosts/j2k/packet_writer.h"
#include "hosts/j2k/parameters.h"

namespace orbhost::j2k {

// The bands of each precinct of a tile, through components, and through their resolutions.
using TilePrecincts = std::vector<std::vector<EncodedBand>>;

// The subbands of a tile's components: integers, or else floats.
struct TransformedTile {
  std::vector<Subbands<Orb32s>> exact;
  std::vector<Subbands<Orb32f>> real;
};

class TileEncoder {
 public:
  // All have to stay where they are. The components have one precision, one style and
  // one plan of their bands.
  TileEncoder(const Image& image, const PictureSize& size, const TileCoding& coding,
              const std::vector<BandPlan>& plans);

  TransformedTile transform(const Tile& tile);

  // Adds the coefficients of an irreversible transform, with their weights in the picture.
  void count(const TransformedTile& tile, MagnitudeCounts& counts) const;

  // Planes whose bits mean less than `finest` in the picture are left out.
  TilePrecincts encode(const Tile& tile, const TransformedTile& transformed, double finest);

  // Whether there are such planes.
  bool leavesOut(double finest) const;

 private:
  double unitOf(int component, int band) const {
    return plans_[band].step * plans_[band].norm * componentNorms_[component];
  }
  int lastPlaneFor(int component, int band, double finest) const;

  template <class Sample>
  TilePrecincts encodeAs(const Tile& tile, const std::vector<Subbands<Sample>>& components,
                         double finest);
  template <class Sample>
  EncodedBlock encodeBlock(const PaddedPlane<Sample>& plane, int component, const Band& band,
                           const Rect& rect, double finest);

  const Image& image_;
  const PictureSize& size_;
  const TileCoding& coding_;
  const std::vector<BandPlan>& plans_;
  std::vector<double> componentNorms_;
  BlockEncoder blockEncoder_;
  std::vector<Orb32s> magnitudes_;  // of one block
};

}  // namespace orbhost::j2k

#endif
