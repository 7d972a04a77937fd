// From a JPEG 2000 file in memory to the samples of its components.
#ifndef ORB_HOSTS_J2K_DECODE_H
#define ORB_HOSTS_J2K_DECODE_H

#include <cstdint>
#include <vector>

#include "hosts/bytes.h"
#include "hosts/j2k/damage.h"
#include "hosts/j2k/jp2_file.h"
#include "hosts/j2k/tile_decoder.h"

namespace orbhost::j2k {

struct DecodeOptions {
  int reduce = 0;                            // halve the size so many times, rounding up
  int layers = 65535;                        // decode the first so many
  uint64_t freeSamples = uint64_t{1} << 27;  // what even the smallest file may have
};

struct Decoded {
  Jp2File jp2;  // what says nothing of colours if the file is a codestream alone
  std::vector<Component> components;
  Damage damage;
};

// Codestreams and JP2 files of ITU-T T.800. What is damaged or cut off is decoded as far as it
// goes, and the rest is 0. Throws an Error if there is nothing to decode.
Decoded decodeJ2k(ByteView file, const DecodeOptions& options);

}  // namespace orbhost::j2k

#endif
