#include "compress/tables/hash_mix.h"

namespace orb {
namespace {

struct Row {
  uint32_t value[256];
};

// Eight given values, then those of a generator. All are from 1 to 32767, and no two are the same,
// so that bytes which differ in one place only never have the same hash.
constexpr Row spread(const uint32_t (&given)[8], uint32_t seed) {
  Row row = {};
  uint32_t count = 0;
  uint32_t state = seed;
  while (count < 256) {
    uint32_t value = 0;
    if (count < 8) {
      value = given[count];
    } else {
      // Xorshift (Marsaglia 2003), of which the middle bits are taken.
      state ^= state << 13;
      state ^= state >> 17;
      state ^= state << 5;
      value = state >> 8 & 0x7FFF;
    }
    bool isNew = value != 0;
    for (uint32_t i = 0; i < count; ++i) isNew = isNew && row.value[i] != value;
    if (isNew) row.value[count++] = value;
  }
  return row;
}

constexpr OrbTable<uint64_t, 256> sideBySide() {
  const Row first =
      spread({0x499D, 0x3DC2, 0x2D07, 0x705B, 0x7A76, 0x3469, 0x59DB, 0x0C58}, 0x9E3779B9);
  const Row second =
      spread({0x5B6B, 0x656C, 0x1CA2, 0x167C, 0x65A5, 0x7597, 0x1F4F, 0x47DD}, 0x7F4A7C15);
  const Row third =
      spread({0x5C40, 0x1DD8, 0x7164, 0x77CC, 0x0C10, 0x6789, 0x1A4B, 0x42DD}, 0xF39CC060);
  OrbTable<uint64_t, 256> mix = {};
  for (uint32_t byte = 0; byte < 256; ++byte) {
    mix[byte] = first.value[byte] | static_cast<uint64_t>(second.value[byte]) << 16 |
                static_cast<uint64_t>(third.value[byte]) << 32;
  }
  return mix;
}

}  // namespace

constexpr OrbTable<uint64_t, 256> orbHashMix = sideBySide();

}  // namespace orb
