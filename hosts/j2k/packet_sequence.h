// The order of a tile's packets (ITU-T T.800 B.12).
#ifndef ORB_HOSTS_J2K_PACKET_SEQUENCE_H
#define ORB_HOSTS_J2K_PACKET_SEQUENCE_H

#include <cstdint>
#include <vector>

#include "hosts/j2k/layout.h"
#include "hosts/j2k/parameters.h"

namespace orbhost::j2k {

struct Packet {
  int component;
  int resolution;
  uint32_t precinct;  // of the resolution
  int layer;
  size_t precinctOfTile;  // precincts counted through the components' resolutions
};

// Goes through the packets of a tile, by its only progression or by its progression changes. A
// packet that an earlier progression had is left out of a later one.
class PacketSequence {
 public:
  // The tile and the size have to stay where they are.
  PacketSequence(const PictureSize& size, const Tile& tile, const TileCoding& coding);

  // False behind the last packet.
  bool next(Packet& packet);

  // The progression, counted from 0, that the packet of the last call belongs to.
  size_t change() const { return nextChange_ - 1; }

 private:
  // A precinct, and where on the reference grid its packets come up in progressions by position.
  struct Stop {
    uint32_t y;
    uint32_t x;
    uint32_t precinct;
    uint16_t component;
    uint8_t resolution;
  };

  void begin(const ProgressionChange& change);
  void collect(int component, int resolution);
  bool nextGroup();
  bool sharesGroup(const Stop& a, const Stop& b) const;

  const PictureSize& size_;
  const Tile& tile_;
  std::vector<ProgressionChange> changes_;
  size_t nextChange_ = 0;
  std::vector<uint16_t> nextLayers_;  // of each precinct of the tile

  // The progression: its precincts in order, in groups whose layers take turns.
  ProgressionChange change_;
  std::vector<Stop> stops_;
  size_t groupFirst_ = 0;
  size_t groupEnd_ = 0;
  size_t stop_ = 0;
  int layer_ = 0;
};

}  // namespace orbhost::j2k

#endif
