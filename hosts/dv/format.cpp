#include "hosts/dv/format.h"

#include <map>

#include "hosts/error.h"

namespace orbhost::dv {

namespace {

// IEC 61834-2 and SMPTE 314M; SMPTE 370M.
const std::vector<Format> kFormats = {
    {"DV 525/60 4:1:1",
     720,
     480,
     false,
     0,
     -1,
     1,
     10,
     10,
     Macroblocks::k411,
     {30000, 1001},
     {8, 9},
     false},
    {"DV 625/50 4:2:0",
     720,
     576,
     true,
     0,
     0,
     1,
     12,
     12,
     Macroblocks::k420,
     {25, 1},
     {16, 15},
     false},
    {"DV 625/50 4:1:1",
     720,
     576,
     true,
     0,
     1,
     1,
     12,
     12,
     Macroblocks::k411,
     {25, 1},
     {16, 15},
     false},
    {"DV50 525/60 4:2:2",
     720,
     480,
     false,
     4,
     -1,
     2,
     10,
     10,
     Macroblocks::k422,
     {30000, 1001},
     {8, 9},
     false},
    {"DV50 625/50 4:2:2",
     720,
     576,
     true,
     4,
     -1,
     2,
     12,
     12,
     Macroblocks::k422,
     {25, 1},
     {16, 15},
     false},
    {"DV100 1080/60i 4:2:2",
     1280,
     1080,
     false,
     0x14,
     -1,
     4,
     10,
     10,
     Macroblocks::kDv100,
     {30000, 1001},
     {3, 2},
     false},
    {"DV100 1080/50i 4:2:2",
     1440,
     1080,
     true,
     0x14,
     -1,
     4,
     12,
     11,
     Macroblocks::kDv100,
     {25, 1},
     {4, 3},
     false},
    {"DV100 720/60p 4:2:2",
     960,
     720,
     false,
     0x18,
     -1,
     2,
     10,
     10,
     Macroblocks::kDv100,
     {60000, 1001},
     {4, 3},
     true},
    {"DV100 720/50p 4:2:2",
     960,
     720,
     true,
     0x18,
     -1,
     2,
     12,
     10,
     Macroblocks::kDv100,
     {50, 1},
     {4, 3},
     true},
};

// Says of each value how often it was seen.
class Votes {
 public:
  void add(int value) { ++count_[value]; }
  bool empty() const { return count_.empty(); }
  int winner() const {
    auto best = count_.begin();
    for (auto each = count_.begin(); each != count_.end(); ++each) {
      if (each->second > best->second) best = each;
    }
    return best->first;
  }

 private:
  std::map<int, int> count_;
};

}  // namespace

const std::vector<Format>& formats() {
  return kFormats;
}

const Format& detectFormat(ByteView beginning) {
  constexpr int kSourcePack = 0x60, kPackBytes = 5;
  Votes applications, sources;
  for (size_t at = 0; at + kDifBytes <= beginning.size; at += kDifBytes) {
    const uint8_t* const dif = beginning.data + at;
    if (sectionOf(dif) == Section::kHeader) applications.add(dif[4] & 7);
    if (sectionOf(dif) != Section::kVaux) continue;
    for (int pack = 0; pack < 15; ++pack) {
      const uint8_t* const bytes = dif + 3 + kPackBytes * pack;
      if (bytes[0] == kSourcePack) sources.add(bytes[3] & 0x3F);
    }
  }
  if (applications.empty() || sources.empty()) throw Error("not a DV stream");
  const int source = sources.winner();
  const bool is50 = (source & 0x20) != 0;
  const int streamType = source & 0x1F;
  for (const Format& format : kFormats) {
    if (format.is50 != is50 || format.streamType != streamType) continue;
    // What is not 4:2:0 by its application is 4:1:1.
    if (format.application == 0 && applications.winner() != 0) continue;
    return format;
  }
  throw Error("a DV stream of type " + std::to_string(streamType) + ", which is not known");
}

}  // namespace orbhost::dv
