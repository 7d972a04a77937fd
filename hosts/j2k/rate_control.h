// Divides what a picture was coded to among layers.
#ifndef ORB_HOSTS_J2K_RATE_CONTROL_H
#define ORB_HOSTS_J2K_RATE_CONTROL_H

#include <vector>

#include "hosts/bytes.h"
#include "hosts/j2k/block_trimmer.h"
#include "hosts/j2k/packet_writer.h"
#include "hosts/j2k/parameters.h"
#include "hosts/j2k/tile_encoder.h"

namespace orbhost::j2k {

// The packets of a tile: by precinct and layer, from header to body.
using TilePackets = std::vector<std::vector<Bytes>>;

// Each layer takes the passes that lessen the picture's error the most for their bytes: all that
// have at least one slope, the same in all blocks, which the layer's goal decides.
class RateControl {
 public:
  // The tiles have to stay where they are. `fixedBytes` is what else the file has.
  RateControl(std::vector<TilePrecincts>& tiles, int guardBits, const TileCoding& coding,
              size_t fixedBytes);

  // The file's size if the next layer has all passes.
  size_t sizeOfAll();

  // The next layer: as much as the file may have in bytes up to there; as little as makes the sum
  // of the picture's squared errors no more than this; or all that is left.
  void addLayerOfSize(size_t bytes);
  void addLayerOfError(double squares);
  void addLayerOfAll();

  // What passes had to be worth in the last layer, which took all that are.
  double slope() const { return slope_; }

  std::vector<TilePackets>& packets() { return packets_; }

 private:
  void chooseWorth(double slope);
  void chooseAll();
  bool chooseMore(size_t room);
  void trimChosen();
  size_t sizeOfChosen();
  double errorOfChosen() const;
  void addLayer();

  std::vector<EncodedBlock*> blocks_;               // of the picture, as far as they have passes
  std::vector<int> taken_;                          // of each, the passes in the layers so far
  std::vector<std::vector<PacketWriter>> writers_;  // by tile and precinct
  PacketWriter trial_;
  std::vector<TilePackets> packets_;
  std::vector<double> slopes_;  // all that there are, the steepest first
  BlockTrimmer trimmer_;
  bool hasEph_;
  size_t packetOverhead_;    // of markers
  size_t bytes_;             // of the file so far
  double errorOfEmpty_ = 0;  // of blocks without passes
  double slope_ = 0;
};

}  // namespace orbhost::j2k

#endif
