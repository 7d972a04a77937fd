#include "compress/tables/crc32.h"

namespace orb {
namespace {

constexpr OrbTable<OrbTable<uint32_t, 256>, 8> divide() {
  OrbTable<OrbTable<uint32_t, 256>, 8> table = {};
  for (uint32_t byte = 0; byte < 256; ++byte) {
    uint32_t rest = byte;
    for (uint32_t bit = 0; bit < 64; ++bit) {
      rest = rest >> 1 ^ (rest & 1 ? kCrc32Polynomial : 0);
      if (bit % 8 == 7) table[bit / 8][byte] = rest;
    }
  }
  return table;
}

}  // namespace

constexpr OrbTable<OrbTable<uint32_t, 256>, 8> orbCrc32 = divide();

}  // namespace orb
