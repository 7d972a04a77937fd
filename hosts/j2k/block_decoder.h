// From the bytes of code-blocks to the coefficients of bands (ITU-T T.800 annexes D, E, H).
#ifndef ORB_HOSTS_J2K_BLOCK_DECODER_H
#define ORB_HOSTS_J2K_BLOCK_DECODER_H

#include <memory>
#include <vector>

#include "hosts/j2k/damage.h"
#include "hosts/j2k/packet_reader.h"
#include "hosts/j2k/parameters.h"
#include "hosts/j2k/plane.h"
#include "orb90legacy.h"

namespace orbhost::j2k {

// Decodes the blocks of one component in one tile.
class BlockDecoder {
 public:
  BlockDecoder(const ComponentCoding& coding, int precision, const PacketReader& packets,
               Damage& damage);

  // All coded blocks of a band; the plane has its size and keeps its samples elsewhere. Integers
  // are coefficients that need no quantisation, floats are multiplied by the band's step.
  void decodeBand(const Resolution& resolution, size_t band, Plane<Orb32s>& to);
  void decodeBand(const Resolution& resolution, size_t band, Plane<Orb32f>& to);

 private:
  // A codeword segment.
  struct Segment {
    const uint8_t* bytes;
    uint32_t length;
    bool isGathered;  // bytes of several packets, from `gathered` on in `gathered_`
    size_t gathered;
  };

  struct Free {
    void operator()(OrbiDecodeCBProgrState_JPEG2K* state) const {
      legacy90orbiDecodeCBProgrFree_JPEG2K(state);
    }
  };

  template <class T, class Put>
  void decodeBlocks(const Resolution& resolution, size_t band, Plane<T>& to, Put put);
  bool decodeBlock(const CodedBlock& block, const Band& band, int width, int height);
  void gather(const CodedBlock& block);
  void extend(Segment& segment, const Contribution& part);
  void unshiftRegion(int count);

  const ComponentCoding& coding_;
  const int precision_;
  const PacketReader& packets_;
  Damage& damage_;
  std::unique_ptr<OrbiDecodeCBProgrState_JPEG2K, Free> state_;
  std::vector<Orb32s> samples_;  // of a block: signs and magnitudes, which have one fraction bit

  // The block's codeword segments.
  std::vector<Segment> segments_;
  std::vector<uint8_t> gathered_;
  int passes_ = 0;
};

}  // namespace orbhost::j2k

#endif
