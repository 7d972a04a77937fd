#include "hosts/dv/quantisation.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace orbhost::dv {

namespace {

// The zigzag of IEC 61834-2 is that of JPEG with rows and columns as they are here; of the 2-4-8
// scan these are the sums, each of which the difference follows.
constexpr uint32_t kScan88[64] = {0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,
                                  12, 19, 26, 33, 40, 48, 41, 34, 27, 20, 13, 6,  7,  14, 21, 28,
                                  35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23, 30, 37, 44, 51,
                                  58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};
constexpr uint32_t kSums248[32] = {0,  1, 8, 2,  9,  16, 24, 17, 10, 3, 4,  11, 18, 25, 26, 19,
                                   12, 5, 6, 13, 20, 27, 28, 21, 14, 7, 15, 22, 29, 30, 23, 31};

constexpr std::array<uint32_t, 128> makeScans() {
  std::array<uint32_t, 128> scans = {};
  for (size_t i = 0; i < 64; ++i) {
    scans[i] = kScan88[i];
    scans[64 + i] = kSums248[i / 2] + (i % 2 == 0 ? 0 : 32);
  }
  return scans;
}
constexpr std::array<uint32_t, 128> kScans = makeScans();

// ---- 25 and 50 Mbit/s
//
// An amplitude becomes a coefficient by 2, by the step of its area, and by the inverse of its
// place's weight, which is the product of one for the row and one for the column.

constexpr int kAreaEnd[4] = {5, 20, 42, 63};

// The steps of the four areas as shifts, by the quantisation number with an offset for the class:
// each line is for two numbers, but that the finest begins in the middle of the last.
constexpr int kLines = 9;
constexpr int kSteps[kLines][4] = {{3, 3, 4, 4}, {2, 3, 3, 4}, {2, 2, 3, 3},
                                   {1, 2, 2, 3}, {1, 1, 2, 2}, {0, 1, 1, 2},
                                   {0, 0, 1, 1}, {0, 0, 0, 1}, {0, 0, 0, 0}};
constexpr int kClassOffset[4] = {6, 3, 0, 1};

int lineOf(BlockInfo info) {
  const int number = info.quantisation + kClassOffset[info.blockClass];
  return number > 14 ? kLines - 1 : number / 2;
}

// All that an amplitude is multiplied by, in units of 1/256 and by place in the block. In class 3
// amplitudes lack their lowest bit.
using Factors = std::array<int16_t, 64>;

Factors makeFactors(int mode, int line, bool isClass3) {
  const auto c = [](int m) { return std::cos(m * std::acos(-1.0) / 16); };
  const double w[8] = {1,
                       c(4) / (4 * c(7) * c(2)),
                       c(4) / (2 * c(6)),
                       1 / (2 * c(5)),
                       7.0 / 8,
                       c(4) / c(3),
                       c(4) / c(2),
                       c(4) / c(1)};
  Factors factors;
  for (int i = 0; i < 64; ++i) {
    const uint32_t place = kScans[64 * mode + i];
    const uint32_t row = mode == 0 ? place / 8 : place / 8 % 4 * 2;
    const int area = static_cast<int>(std::lower_bound(kAreaEnd, kAreaEnd + 4, i) - kAreaEnd);
    const int steps = 2 << kSteps[line][area] << (isClass3 ? 1 : 0);
    factors[place] = static_cast<int16_t>(std::lround(256 * steps / (w[row] * w[place % 8])));
  }
  return factors;
}

struct AllFactors {
  Factors factors[2][2][kLines];

  AllFactors() {
    for (int mode = 0; mode < 2; ++mode) {
      for (int class3 = 0; class3 < 2; ++class3) {
        for (int line = 0; line < kLines; ++line) {
          factors[mode][class3][line] = makeFactors(mode, line, class3 == 1);
        }
      }
    }
  }
};

// ---- DV100 (SMPTE 370M)

constexpr int kDv100Steps[16] = {1, 1, 2, 3, 4, 5, 6, 7, 8, 16, 18, 20, 22, 24, 28, 52};

constexpr int16_t kWeights1080Luma[64] = {
    128, 16, 17, 18,  18, 19, 42, 44, 16, 17, 18,  18,  19, 38, 43, 45, 17,  18,  19,  19, 40, 41,
    45,  48, 18, 18,  19, 40, 41, 42, 46, 49, 18,  19,  40, 41, 42, 43, 48,  101, 19,  38, 41, 42,
    43,  44, 98, 104, 42, 43, 45, 46, 48, 98, 109, 116, 44, 45, 48, 49, 101, 104, 116, 123};
constexpr int16_t kWeights1080Chroma[64] = {
    128, 16, 17, 25, 26,  26,  42,  44,  16, 17, 25, 25,  26,  38,  43,  91,
    17,  25, 26, 27, 40,  41,  91,  96,  25, 25, 27, 40,  41,  84,  93,  197,
    26,  26, 40, 41, 84,  86,  191, 203, 26, 38, 41, 84,  86,  177, 197, 209,
    42,  43, 91, 93, 191, 197, 219, 232, 44, 91, 96, 197, 203, 209, 232, 246};
constexpr int16_t kWeights720Luma[64] = {
    128, 16, 17,  18,  18, 19, 42, 44, 16, 17,  18,  18,  19, 38, 43, 68, 17,  18,  19,  19, 40, 41,
    68,  96, 18,  18,  19, 40, 41, 63, 92, 98,  18,  19,  40, 41, 63, 86, 96,  202, 19,  38, 41, 63,
    86,  88, 196, 208, 42, 43, 68, 92, 96, 196, 218, 232, 44, 68, 96, 98, 202, 208, 232, 246};
constexpr int16_t kWeights720Chroma[64] = {
    128, 24, 26,  36,  36,  38,  84,  88,  24, 26,  36,  36,  38,  76,  86,  182,
    26,  36, 38,  38,  80,  82,  182, 192, 36, 36,  38,  80,  82,  168, 186, 394,
    36,  38, 80,  82,  168, 192, 382, 406, 38, 76,  82,  168, 172, 354, 394, 418,
    84,  86, 182, 186, 382, 394, 438, 464, 88, 182, 192, 394, 406, 418, 464, 492};

}  // namespace

const uint32_t* scanTables() {
  return kScans.data();
}

void dequantise(int16_t* block, BlockInfo info) {
  static const AllFactors kAll;
  // The library hands over amplitudes times 64, and DC values times 128, of which 4 are wanted.
  const int16_t dc = static_cast<int16_t>(block[0] >> 5);
  const int16_t* const factors =
      kAll.factors[info.mode][info.blockClass == 3 ? 1 : 0][lineOf(info)].data();
  for (int i = 0; i < 64; ++i) {
    block[i] = static_cast<int16_t>((block[i] * factors[i] + 8192) >> 14);
  }
  block[0] = dc;
}

const int16_t* dv100Weights(const Format& format, bool isChroma) {
  if (format.isProgressive) return isChroma ? kWeights720Chroma : kWeights720Luma;
  return isChroma ? kWeights1080Chroma : kWeights1080Luma;
}

int dv100Step(BlockInfo info) {
  return kDv100Steps[info.quantisation] << info.blockClass;
}

}  // namespace orbhost::dv
