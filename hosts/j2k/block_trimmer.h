// Finds how few bytes of a code-block are enough.
#ifndef ORB_HOSTS_J2K_BLOCK_TRIMMER_H
#define ORB_HOSTS_J2K_BLOCK_TRIMMER_H

#include <vector>

#include "hosts/j2k/encoded_block.h"
#include "orb90legacy.h"

namespace orbhost::j2k {

// Within a codeword segment an encoder only knows a limit of what a decoder needs up to a pass. The
// last few of these bytes are often not needed, as decoding without them shows.
class BlockTrimmer {
 public:
  // `style` is a sum of BlockStyle.
  explicit BlockTrimmer(int style) : style_(style) {}

  // Makes what is needed for the chosen number of passes as short as it can be. That of the passes
  // that are taken already stays as it is.
  void trim(EncodedBlock& block, int taken, int chosen);

 private:
  void decode(const EncodedBlock& block, int passes, int32_t length, std::vector<Orb32s>& samples);

  int style_;
  std::vector<Orb8u> state_;
  std::vector<Orb32s> segmentLengths_;
  std::vector<Orb32s> wanted_;
  std::vector<Orb32s> samples_;
};

}  // namespace orbhost::j2k

#endif
