// The variable-length code of the AC coefficients of DV (IEC 61834-2, SMPTE 314M), and its
// description as the library takes it. The table stands in a header, since tests want it too.
#ifndef ORB_HOSTS_DV_CODES_H
#define ORB_HOSTS_DV_CODES_H

#include <cstdint>
#include <vector>

namespace orbhost::dv {

struct RunLevel {
  int run;    // zeros in front of the coefficient
  int level;  // its amplitude; 0 for run + 1 zeros
};

// A run that leads past the block's end from any position.
constexpr int kEndRun = 127;

// How many codes there are of each length, without their signs. They are those of a canonical code:
// in the order of the table below each is the one before plus 1, with zeros behind it if it is
// longer.
constexpr int kCodesOfLength[] = {0, 0, 1, 1, 4, 4, 4, 8, 16, 16, 7, 8, 20};

constexpr RunLevel kCodes[] = {
    // 2, 3 and 4 bits
    {0, 1},
    {0, 2},
    {kEndRun, 0},
    {1, 1},
    {0, 3},
    {0, 4},
    // 5 bits
    {2, 1},
    {1, 2},
    {0, 5},
    {0, 6},
    // 6 bits
    {3, 1},
    {4, 1},
    {0, 7},
    {0, 8},
    // 7 bits
    {5, 1},
    {6, 1},
    {2, 2},
    {1, 3},
    {1, 4},
    {0, 9},
    {0, 10},
    {0, 11},
    // 8 bits
    {7, 1},
    {8, 1},
    {9, 1},
    {10, 1},
    {3, 2},
    {4, 2},
    {2, 3},
    {1, 5},
    {1, 6},
    {1, 7},
    {0, 12},
    {0, 13},
    {0, 14},
    {0, 15},
    {0, 16},
    {0, 17},
    // 9 bits
    {11, 1},
    {12, 1},
    {13, 1},
    {14, 1},
    {5, 2},
    {6, 2},
    {3, 3},
    {4, 3},
    {2, 4},
    {2, 5},
    {1, 8},
    {0, 18},
    {0, 19},
    {0, 20},
    {0, 21},
    {0, 22},
    // 10 bits
    {5, 3},
    {3, 4},
    {3, 5},
    {2, 6},
    {1, 9},
    {1, 10},
    {1, 11},
    // 11 bits
    {0, 0},
    {1, 0},
    {6, 3},
    {4, 4},
    {3, 6},
    {1, 12},
    {1, 13},
    {1, 14},
    // 12 bits
    {2, 0},
    {3, 0},
    {4, 0},
    {5, 0},
    {7, 2},
    {8, 2},
    {9, 2},
    {10, 2},
    {7, 3},
    {8, 3},
    {4, 5},
    {3, 7},
    {2, 7},
    {2, 8},
    {2, 9},
    {2, 10},
    {2, 11},
    {1, 15},
    {1, 16},
    {1, 17},
};

// Behind them 1111110 and 6 bits stand for so many zeros and one more, and 1111111, which the
// library knows, for an amplitude of 8 bits and its sign.
constexpr int kRunPrefix = 0x7E;
constexpr int kRunBits = 6;

// The code's two descriptions for legacy90orbiInitAllocHuffmanTable_DV_32u.
struct CodeDescriptions {
  std::vector<int32_t> upTo9Bits;
  std::vector<int32_t> longer;
};

inline CodeDescriptions describeCodes() {
  constexpr int kWidth = 9;       // of both tables
  constexpr int kPrefixBits = 4;  // which all longer codes have in common
  std::vector<int32_t> triples[2][kWidth + 1];
  const auto enter = [&](int length, int code, int run, int level) {
    const bool isLonger = length > kWidth;
    const int places = isLonger ? length - kPrefixBits : length;
    std::vector<int32_t>& list = triples[isLonger][places];
    list.insert(list.end(), {code & ((1 << places) - 1), run, level});
  };
  const RunLevel* next = kCodes;
  int code = 0;
  int length = 0;
  for (const int count : kCodesOfLength) {
    for (int i = 0; i < count; ++i, ++code, ++next) {
      if (next->level == 0) {
        enter(length, code, next->run, 0);
      } else {
        enter(length + 1, 2 * code, next->run, next->level);
        enter(length + 1, 2 * code + 1, next->run, -next->level);
      }
    }
    code *= 2;
    ++length;
  }
  for (int run = 0; run < 1 << kRunBits; ++run) {
    enter(7 + kRunBits, kRunPrefix << kRunBits | run, run, 0);
  }

  CodeDescriptions descriptions;
  for (int i = 0; i < 2; ++i) {
    std::vector<int32_t>& words = i == 0 ? descriptions.upTo9Bits : descriptions.longer;
    words = {kWidth, 0, 0};
    for (int places = 1; places <= kWidth; ++places) {
      const std::vector<int32_t>& list = triples[i][places];
      words.push_back(static_cast<int32_t>(list.size() / 3));
      words.insert(words.end(), list.begin(), list.end());
    }
  }
  return descriptions;
}

}  // namespace orbhost::dv

#endif
