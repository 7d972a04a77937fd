// Codes blocks of a subband with the library's encoder.
#ifndef ORB_HOSTS_J2K_BLOCK_ENCODER_H
#define ORB_HOSTS_J2K_BLOCK_ENCODER_H

#include <memory>

#include "hosts/j2k/encoded_block.h"
#include "orb90legacy.h"

namespace orbhost::j2k {

class BlockEncoder {
 public:
  // `style` is a sum of BlockStyle.
  BlockEncoder(OrbiSize largest, int style);

  // Samples are signs in bit 31 and magnitudes, whose lowest `fractionBits` lie below a step of the
  // quantiser; without any, the lowest plane is exact. Planes below `lastPlane` are left out.
  // `weight` is what a squared error of one step is in the picture.
  EncodedBlock encode(const Orb32s* samples, OrbiSize size, int subband, int fractionBits,
                      int lastPlane, double weight);

 private:
  struct Free {
    void operator()(OrbiEncodeState_JPEG2K* state) const { legacy90orbiEncodeFree_JPEG2K(state); }
  };

  void store(EncodedBlock& block);

  std::unique_ptr<OrbiEncodeState_JPEG2K, Free> state_;
  int style_;
  Bytes buffer_;
};

}  // namespace orbhost::j2k

#endif
