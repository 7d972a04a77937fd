// Packets: what one layer holds of one precinct (ITU-T T.800 B.9, B.10).
#ifndef ORB_HOSTS_J2K_PACKET_WRITER_H
#define ORB_HOSTS_J2K_PACKET_WRITER_H

#include <vector>

#include "hosts/bytes.h"
#include "hosts/j2k/encoded_block.h"
#include "hosts/j2k/tag_tree_writer.h"

namespace orbhost::j2k {

// The code-blocks of one subband in a precinct, row by row.
struct EncodedBand {
  int blocksWide = 0;
  int blocksHigh = 0;
  int exponent = 0;  // of the subband's quantisation step
  std::vector<EncodedBlock> blocks;
};

// Makes the packets of a precinct, one layer after the other.
class PacketWriter {
 public:
  PacketWriter() = default;
  // Blocks have to stay where they are.
  PacketWriter(const std::vector<EncodedBand>& bands, int guardBits);

  // Appends the header of the next layer's packet, with the chosen passes that are not in earlier
  // layers, and goes on to the layer behind it. Returns the length of its body.
  size_t putHeader(Bytes& to);

  // Appends the body of the packet whose header was put last.
  void putBody(Bytes& to) const;

 private:
  struct Block {
    const EncodedBlock* coded;
    int before = 0;      // passes in earlier layers
    int now = 0;         // passes in those and this one
    int lengthBits = 3;  // Lblock
  };
  struct Band {
    TagTreeWriter inclusion;
    TagTreeWriter missingPlanes;
    std::vector<Block> blocks;
  };

  size_t putPieces(Block& block, HeaderBitWriter& bits);

  std::vector<Band> bands_;
  int layer_ = 0;
};

}  // namespace orbhost::j2k

#endif
