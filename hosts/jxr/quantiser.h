// Steps by index (ITU-T T.832).
#ifndef ORB_HOSTS_JXR_QUANTISER_H
#define ORB_HOSTS_JXR_QUANTISER_H

#include <array>
#include <cstdint>
#include <vector>

#include "hosts/jxr/bits.h"
#include "hosts/jxr/format.h"

namespace orbhost::jxr {

// An index for each channel. Index 0 keeps everything.
using Quantiser = std::array<uint8_t, kMostChannels>;

Quantiser readQuantiser(int channels, BitReader& from);
void writeQuantiser(const Quantiser& quantiser, int channels, BitWriter& to);

// The step of a channel. Scaled arithmetic carries three more bits of a sample.
int32_t stepOf(int index, Band band, int channel, bool scaled);

// The quantisers of a tile and band, from which a macroblock chooses by number.
struct QuantiserSet {
  std::vector<Quantiser> all;
  int numberBits = 0;  // that a macroblock spends on a number other than 0

  explicit QuantiserSet(const Quantiser& one = {}) : all{one} {}
};
QuantiserSet readQuantiserSet(int channels, BitReader& from);
int readQuantiserNumber(const QuantiserSet& set, BitReader& from);

}  // namespace orbhost::jxr

#endif
