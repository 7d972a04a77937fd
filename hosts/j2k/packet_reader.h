// The packets of a tile (ITU-T T.800 B.9, B.10): which code-blocks have something in each, and
// where that lies.
#ifndef ORB_HOSTS_J2K_PACKET_READER_H
#define ORB_HOSTS_J2K_PACKET_READER_H

#include <cstdint>
#include <memory>
#include <vector>

#include "hosts/bytes.h"
#include "hosts/j2k/budget.h"
#include "hosts/j2k/codestream.h"
#include "hosts/j2k/damage.h"
#include "hosts/j2k/header_bits.h"
#include "hosts/j2k/layout.h"
#include "hosts/j2k/packet_sequence.h"

namespace orbhost::j2k {

constexpr uint32_t kNone = UINT32_MAX;

// Coding passes of a code-block in one packet, all of one codeword segment.
struct Contribution {
  const uint8_t* bytes;
  uint32_t length;
  uint32_t passes;
  uint32_t next;  // of the same code-block, or kNone
};

struct CodedBlock {
  uint32_t first = kNone;  // contribution
  uint32_t last = kNone;
  uint16_t passes = 0;
  uint16_t zeroPlanes = 0;  // the highest bit-planes, which are not coded
  uint16_t lengthBits = 0;  // Lblock (B.10.7.1); 0 until the block is included
};

// The code-blocks of one band in a precinct.
struct PrecinctBand {
  BlockGrid grid;
  std::vector<CodedBlock> blocks;  // row after row
  TagTreeReader inclusion;
  TagTreeReader zeroPlanes;
};

// How many passes the codeword segment has that begins with a pass (D.4.2, D.6): without limit if
// that depends on nothing but the code-block's end.
int segmentPassesFrom(int pass, int blockStyle);

class PacketReader {
 public:
  // Reads all packets, or as many as there are. What is wrong with them is damage, and ends the
  // reading; what was read stands. Layers from `layers` on and the highest `reduction` resolutions
  // are passed over.
  PacketReader(const PictureSize& size, const Tile& tile, const TileCoding& coding,
               const TileData& data, int reduction, int layers, Budget& budget, Damage& damage);

  // The coded blocks of a precinct for each of its bands; none if all are empty.
  const std::vector<PrecinctBand>& bands(const Resolution& resolution, uint32_t precinct) const {
    return precincts_[resolution.firstPrecinct + precinct];
  }
  const Contribution& contribution(uint32_t i) const { return contributions_[i]; }

 private:
  struct Piece {
    CodedBlock* block;
    uint32_t length;
    uint32_t passes;
  };

  bool readPacket(const Packet& packet);
  void readHeader(const Packet& packet, HeaderBits& bits);
  void readBlock(PrecinctBand& band, uint32_t column, uint32_t row, const Packet& packet,
                 HeaderBits& bits);
  static void skipMarker(ByteView& bytes, int marker, size_t length);
  std::vector<PrecinctBand>& openPrecinct(const Packet& packet);
  void append(const Piece& piece, ByteView bytes, uint32_t passes);

  const Tile& tile_;
  const TileCoding& coding_;
  const TileData& data_;
  const int reduction_;
  const int layers_;
  Budget& budget_;
  Damage& damage_;

  PacketSequence sequence_;
  ByteView body_;
  size_t nextBody_ = 0;
  ByteView headers_;

  std::vector<std::vector<PrecinctBand>> precincts_;
  std::vector<Contribution> contributions_;
  std::vector<Piece> pieces_;  // of the packet that is being read, in the order of their bytes
};

}  // namespace orbhost::j2k

#endif
