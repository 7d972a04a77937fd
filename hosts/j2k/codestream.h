// A codestream's headers (ITU-T T.800 annex A), and where its coded bytes lie.
#ifndef ORB_HOSTS_J2K_CODESTREAM_H
#define ORB_HOSTS_J2K_CODESTREAM_H

#include <vector>

#include "hosts/bytes.h"
#include "hosts/j2k/damage.h"
#include "hosts/j2k/parameters.h"

namespace orbhost::j2k {

// Where a marker segment lies, without its marker and length.
struct Segment {
  int marker;
  size_t first;
  size_t end;
};

// What the parts of a tile hold, in their order.
struct TileData {
  std::vector<Segment> segments;  // of its headers: how it is coded
  std::vector<ByteView> bodies;   // bytes of packets; one view for each part, none if it is missing
  Bytes packetHeaders;            // the headers of all packets, if they are packed
  bool packsHeaders = false;
};

class Codestream {
 public:
  // Reads all headers of the codestream in [first, end) of a file, which has to stay where it is.
  // What cannot be decoded is an Error. Where a codestream breaks off behind its main header that
  // is damage, and what was read stands.
  Codestream(ByteView file, size_t first, size_t end, Damage& damage);

  const PictureSize& size() const { return size_; }
  uint32_t tileCount() const { return static_cast<uint32_t>(tiles_.size()); }
  const TileData& tile(uint32_t tile) const { return tiles_[tile]; }

  // How a tile is coded. Throws an Error if its own headers are wrong.
  TileCoding codingOf(uint32_t tile) const;

 private:
  // What segments have set. One for a component stands above one for all of them.
  struct Settings {
    TileCoding coding;
    std::vector<bool> ownStyle;
    std::vector<bool> ownQuantisation;
    bool hasStyle = false;
    bool hasQuantisation = false;
    bool hasChanges = false;

    // For what a tile sets: that stands above what the main header set, for a component or not.
    void beginTile();
  };

  Segment nextSegment();
  void readMainHeader();
  void readSize(const Segment& segment);
  void readTileParts();
  void readTilePart();
  void readTilePartHeader(TileData& tile, size_t end);
  void apply(const Segment& segment, Settings& settings) const;
  void check(const TileCoding& coding) const;

  ByteView file_;
  size_t position_;
  size_t end_;
  Damage& damage_;
  PictureSize size_;
  Settings main_;
  Bytes packedMain_;  // of all PPM segments
  size_t packedMainPosition_ = 0;
  bool hasPackedMain_ = false;
  std::vector<TileData> tiles_;
};

}  // namespace orbhost::j2k

#endif
