#include "jpeg/tables/huffman.h"

namespace orb {
namespace {

constexpr OrbTable<uint8_t, 256> countBits() {
  OrbTable<uint8_t, 256> category = {};
  for (uint32_t m = 1; m < 256; ++m) {
    category[m] = static_cast<uint8_t>(category[m >> 1] + 1);
  }
  return category;
}

constexpr OrbTable<int32_t, 16> extend() {
  OrbTable<int32_t, 16> offset = {};
  for (uint32_t s = 1; s < 16; ++s) offset[s] = 1 - (1 << s);
  return offset;
}

}  // namespace

constexpr OrbTable<uint8_t, 256> orbJpegCategoryOfByte = countBits();
constexpr OrbTable<int32_t, 16> orbJpegExtend = extend();

}  // namespace orb
