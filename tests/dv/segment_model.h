// Video segments as text: their codes, a packer that deals bits out as IEC 61834-2 has it, and a
// decoder that reads them one character at a time.
#ifndef ORB_TESTS_DV_SEGMENT_MODEL_H
#define ORB_TESTS_DV_SEGMENT_MODEL_H

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "hosts/dv/codes.h"
#include "orb90legacy/dv.h"
#include "tests/support/bit_string.h"
#include "tests/support/random.h"

namespace orbtest::dv {

constexpr int kMacroblocks = 5;

struct Form {
  std::vector<int> areaBytes;  // of a macroblock's blocks
  bool modeChoosesScan;

  int blocksEach() const { return static_cast<int>(areaBytes.size()); }
  int blocks() const { return kMacroblocks * blocksEach(); }
};
inline const Form kDv = {{14, 14, 14, 14, 10, 10}, true};
inline const Form kDv100 = {{10, 10, 10, 10, 10, 10, 8, 8}, false};

// ---- Codes

struct Symbol {
  int run, level;
};

// The codes of two descriptions by their text, without escapes.
using Dictionary = std::map<std::string, Symbol>;

inline Dictionary readDescriptions(const std::vector<Orb32s>& shorter,
                                   const std::vector<Orb32s>& longer) {
  Dictionary codes;
  for (const std::vector<Orb32s>* words : {&shorter, &longer}) {
    const std::string prefix = words == &longer ? "1111" : "";
    size_t at = 3;
    for (int length = 1; length <= (*words)[0]; ++length) {
      const int count = (*words)[at++];
      for (int i = 0; i < count; ++i, at += 3) {
        codes[prefix + binary((*words)[at], length)] = {(*words)[at + 1], (*words)[at + 2]};
      }
    }
  }
  return codes;
}

inline const Dictionary& standardCodes() {
  static const Dictionary codes = [] {
    const orbhost::dv::CodeDescriptions d = orbhost::dv::describeCodes();
    return readDescriptions(d.upTo9Bits, d.longer);
  }();
  return codes;
}

inline const std::string kEnd = "0110";

inline std::string escape(int amplitude, bool isNegative) {
  return "1111111" + binary(amplitude, 8) + (isNegative ? "1" : "0");
}

// The text of a run and a level: the shortest code.
inline std::string code(int run, int level) {
  static const auto byValue = [] {
    std::map<std::pair<int, int>, std::string> texts;
    for (const auto& [text, symbol] : standardCodes()) {
      std::string& kept = texts[{symbol.run, symbol.level}];
      if (kept.empty() || text.size() < kept.size()) kept = text;
    }
    return texts;
  }();
  const auto found = byValue.find({run, level});
  if (found != byValue.end()) return found->second;
  if (run == 0) return escape(std::abs(level), level < 0);
  return code(run - 1, 0) + code(0, level);
}

// ---- Segments

class Segment {
 public:
  explicit Segment(const Form& form, char fill = '0') : form_(form) {
    for (int n = 0; n < form.blocks(); ++n) areas_.push_back(std::string(areaBits(n), fill));
  }

  const Form& form() const { return form_; }
  int areaBits(int n) const { return 8 * form_.areaBytes[n % form_.blocksEach()]; }
  std::string& area(int n) { return areas_[n]; }
  const std::string& area(int n) const { return areas_[n]; }
  void setQuantisation(int m, int number) { quantisation_[m] = number; }
  int quantisation(int m) const { return quantisation_[m]; }

  // The start of an area: DC, mode and class, then text that fits.
  void set(int n, int dc, int mode, int blockClass, const std::string& codes) {
    const std::string text = binary(dc, 9) + binary(mode, 1) + binary(blockClass, 2) + codes;
    if (text.size() > areas_[n].size()) throw std::logic_error("no room");
    areas_[n].replace(0, text.size(), text);
  }
  // So that a block leaves nothing behind: it fills its area up to the end with coefficients of
  // these codes, which are of 3 and 4 bits, and ends there.
  void setFull(int n) {
    std::string codes;
    const int room = areaBits(n) - 12 - 4;
    while (static_cast<int>(codes.size()) < room) {
      codes += (room - static_cast<int>(codes.size())) % 3 == 0 ? code(0, 1) : code(0, 2);
    }
    set(n, 0, 0, 0, codes + kEnd);
  }

  std::vector<Orb8u> bytes() const {
    std::vector<Orb8u> all;
    for (int n = 0; n < form_.blocks(); ++n) {
      if (n % form_.blocksEach() == 0) {
        const int m = n / form_.blocksEach();
        all.insert(all.end(), {0xFF, 0xFF, 0xFF, static_cast<Orb8u>(0xA0 | quantisation_[m])});
      }
      const std::vector<Orb8u> area = packBits(areas_[n]);
      all.insert(all.end(), area.begin(), area.end());
    }
    return all;
  }

 private:
  Form form_;
  std::vector<std::string> areas_;
  int quantisation_[kMacroblocks] = {};
};

struct Decoded {
  std::vector<Orb16s> blocks;
  std::vector<Orb32u> info;

  bool operator==(const Decoded& other) const {
    return blocks == other.blocks && info == other.info;
  }
};

// ---- The decoder

class ModelDecoder {
 public:
  ModelDecoder(const Segment& segment, const std::vector<Orb32u>& scans, const Dictionary& codes)
      : segment_(segment), scans_(scans), codes_(codes) {}

  // What it leaves alone is 0.
  Decoded decode() {
    const Form& form = segment_.form();
    blocks_.resize(form.blocks());
    decoded_.blocks.assign(form.blocks() * 64, 0);
    for (int n = 0; n < form.blocks(); ++n) rest_.push_back(segment_.area(n).substr(12));
    std::vector<int> needs, surplus;
    for (int m = 0; m < kMacroblocks; ++m) {
      std::vector<int> ownNeeds, ownSurplus;
      for (int n = m * form.blocksEach(); n < (m + 1) * form.blocksEach(); ++n) {
        readHead(n);
        if (!read(n, n)) {
          ownNeeds.push_back(n);
        } else if (!rest_[n].empty()) {
          ownSurplus.push_back(n);
        }
      }
      share(ownNeeds, ownSurplus);
      needs.insert(needs.end(), ownNeeds.begin(), ownNeeds.end());
      surplus.insert(surplus.end(), ownSurplus.begin(), ownSurplus.end());
    }
    share(needs, surplus);
    for (int n = 0; n < form.blocks(); ++n) decoded_.info.push_back(infoOf(n));
    return decoded_;
  }

 private:
  struct Block {
    std::string pending;
    int position = 0;
    bool endOfBlock = false;
  };

  static int number(const std::string& text) { return std::stoi(text, nullptr, 2); }

  void readHead(int n) {
    const int dc = number(segment_.area(n).substr(0, 9));
    decoded_.blocks[n * 64] = static_cast<Orb16s>((dc < 256 ? dc : dc - 512) * 128);
  }

  Orb32u infoOf(int n) const {
    const int m = n / segment_.form().blocksEach();
    return static_cast<Orb32u>(blocks_[n].endOfBlock | number(segment_.area(n).substr(9, 3)) << 4 |
                               blocks_[n].position << 8 | segment_.quantisation(m) << 16);
  }

  // The code that the text begins with, if it is whole.
  struct Match {
    size_t length;
    Symbol symbol;
  };
  std::optional<Match> match(const std::string& text) const {
    if (text.compare(0, 7, "1111111") == 0) {
      if (text.size() < 16) return std::nullopt;
      const int amplitude = number(text.substr(7, 8));
      return Match{16, {0, text[15] == '1' ? -amplitude : amplitude}};
    }
    for (size_t length = 1; length <= std::min<size_t>(text.size(), 13); ++length) {
      const auto found = codes_.find(text.substr(0, length));
      if (found != codes_.end()) return Match{length, found->second};
    }
    return std::nullopt;
  }

  // Whether the block comes to its end in what is left of an area.
  bool read(int n, int area) {
    Block& block = blocks_[n];
    std::string text = block.pending + rest_[area];
    const bool isSecond = segment_.form().modeChoosesScan && segment_.area(n)[9] == '1';
    for (;;) {
      const std::optional<Match> found = match(text);
      if (!found) {
        block.pending = text;
        rest_[area].clear();
        return false;
      }
      const int position = block.position + found->symbol.run + 1;
      if (position >= 64) {
        block.endOfBlock = text.compare(0, 4, kEnd) == 0;
        rest_[area] = text.substr(found->length);
        return true;
      }
      text.erase(0, found->length);
      block.position = position;
      decoded_.blocks[n * 64 + scans_[(isSecond ? 64 : 0) + position]] =
          static_cast<Orb16s>(found->symbol.level * 64);
    }
  }

  // Leaves in both lists what is left.
  void share(std::vector<int>& needs, std::vector<int>& surplus) {
    while (!needs.empty() && !surplus.empty()) {
      const bool isDone = read(needs.front(), surplus.front());
      if (rest_[surplus.front()].empty()) surplus.erase(surplus.begin());
      if (isDone) needs.erase(needs.begin());
    }
  }

  const Segment& segment_;
  const std::vector<Orb32u>& scans_;
  const Dictionary& codes_;
  std::vector<Block> blocks_;
  std::vector<std::string> rest_;
  Decoded decoded_;
};

// ---- The packer

// Deals texts out to areas: what a block has no room for goes to the room that the others of its
// macroblock leave, then to that of the segment. Returns how many bits of each block found a place.
inline std::vector<size_t> deal(const std::vector<std::string>& texts, Segment& segment) {
  const int count = segment.form().blocks(), each = segment.form().blocksEach();
  std::vector<size_t> placed(count), used(count);
  const auto move = [&](int from, int to) {
    std::string& area = segment.area(to);
    const size_t bits = std::min(texts[from].size() - placed[from], area.size() - used[to]);
    area.replace(used[to], bits, texts[from], placed[from], bits);
    placed[from] += bits;
    used[to] += bits;
  };
  for (int n = 0; n < count; ++n) move(n, n);
  for (const int group : {each, count}) {
    for (int n = 0; n < count; ++n) {
      const int first = n / group * group;
      for (int to = first; to < first + group; ++to) move(n, to);
    }
  }
  return placed;
}

// Random text of a block, DC and all, of about so many bits.
inline std::string randomBlock(Random& random, int bits) {
  std::string text = binary(random.between(0, 511), 9) + binary(random.between(0, 7), 3);
  int position = 0;
  for (;;) {
    const bool isLong = random.oneIn(8);
    const int run = isLong ? random.between(0, 20) : random.between(0, 2);
    const int level = isLong ? random.between(-255, 255) : random.between(-3, 3);
    position += run + 1;
    if (position > 63 || static_cast<int>(text.size()) >= bits) break;
    text += code(run, level);
  }
  return text + kEnd;
}

}  // namespace orbtest::dv

#endif
