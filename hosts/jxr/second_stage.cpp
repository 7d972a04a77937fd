#include "hosts/jxr/second_stage.h"

#include "orb90legacy.h"

namespace orbhost::jxr {

namespace {

constexpr int kRowBytes = 4 * static_cast<int>(sizeof(int32_t));

// Where the block transform has the coefficient of a number: row x 4 + column.
constexpr int kPlace[16] = {0, 2, 1, 7, 8, 15, 12, 11, 4, 3, 5, 6, 13, 14, 9, 10};

}  // namespace

void inverseSecondStage(ColourFormat format, int channel, bool scaled, int32_t (&coefficients)[16],
                        Rows<int32_t> macroblock) {
  const int wide = blocksWide(format, channel);
  const int high = blocksHigh(format, channel);
  const int doubling = scaled && channel != kLuma ? 1 : 0;
  int32_t block[16];
  const int32_t* values = coefficients;
  if (wide == 4) {
    for (int number = 0; number < 16; ++number) block[kPlace[number]] = coefficients[number];
    legacy90orbiPCTInv_JPEGXR_32s_C1IR(block, kRowBytes, 4, 4);
    values = block;
  } else {
    int32_t* const c = coefficients;
    if (high == 4) {
      c[0] -= (c[4] + 1) >> 1;
      c[4] += c[0];
      hadamard(c[4], c[5], c[6], c[7]);
    }
    hadamard(c[0], c[1], c[2], c[3]);
  }
  for (int y = 0; y < high; ++y) {
    for (int x = 0; x < wide; ++x) {
      macroblock.at(4 * x, 4 * y) = values[y * wide + x] << doubling;
    }
  }
}

void forwardSecondStage(ColourFormat format, int channel, bool scaled,
                        Rows<const int32_t> macroblock, int32_t (&coefficients)[16]) {
  const int wide = blocksWide(format, channel);
  const int high = blocksHigh(format, channel);
  const int halving = scaled && channel != kLuma ? 1 : 0;
  int32_t values[16];
  for (int y = 0; y < high; ++y) {
    for (int x = 0; x < wide; ++x) values[y * wide + x] = macroblock.at(4 * x, 4 * y);
  }
  if (wide == 4) {
    legacy90orbiPCTFwd_JPEGXR_32s_C1IR(values, kRowBytes, 4, 4);
    for (int number = 0; number < 16; ++number) {
      coefficients[number] = values[kPlace[number]] >> halving;
    }
    return;
  }
  int32_t* const c = coefficients;
  for (int i = 0; i < wide * high; ++i) c[i] = values[i] >> halving;
  hadamard(c[0], c[1], c[2], c[3]);
  if (high == 4) {
    hadamard(c[4], c[5], c[6], c[7]);
    c[4] -= c[0];
    c[0] += (c[4] + 1) >> 1;
  }
}

}  // namespace orbhost::jxr
