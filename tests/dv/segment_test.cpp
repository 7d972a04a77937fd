// Decoding of video segments, and the code table.
#include <algorithm>
#include <array>
#include <numeric>
#include <string>
#include <vector>

#include "dv/segment_records.h"
#include "tests/dv/segment_model.h"
#include "tests/support/builds.h"
#include "tests/support/faults.h"
#include "tests/support/guarded.h"
#include "tests/support/no_memory.h"
#include "tests/support/plane.h"

namespace {

using orbtest::Fault;
using orbtest::GuardedBytes;
using orbtest::Placement;
using orbtest::Plane;
using orbtest::Random;
using orbtest::TestBuild;
using orbtest::dv::code;
using orbtest::dv::Decoded;
using orbtest::dv::Dictionary;
using orbtest::dv::escape;
using orbtest::dv::Form;
using orbtest::dv::kDv;
using orbtest::dv::kDv100;
using orbtest::dv::kEnd;
using orbtest::dv::Segment;

using Words = std::vector<Orb32s>;
using Decode = OrbStatus(ORB_CALL*)(const Orb8u*, const Orb32u*, const OrbDVHuffTable*, Orb16s*,
                                    Orb32u*);

// ---- The code table

class Table {
 public:
  Table(const TestBuild& build, const Words& shorter, const Words& longer) : build_(build) {
    EXPECT_EQ(ORB(orbiInitAllocHuffmanTable_DV_32u)(shorter.data(), longer.data(), &table_),
              orbStsNoErr);
  }
  explicit Table(const TestBuild& build) : Table(build, kStandard.upTo9Bits, kStandard.longer) {}
  Table(const Table&) = delete;
  Table& operator=(const Table&) = delete;
  ~Table() { EXPECT_EQ(free(), orbStsNoErr); }

  const OrbDVHuffTable* get() const { return table_; }
  orb::DVHuffEntry at(int place) const { return table_->entry[place]; }

 private:
  OrbStatus free() {
    const TestBuild& build = build_;
    return ORB(orbiFreeHuffmanTable_DV_32u)(table_);
  }

  inline static const orbhost::dv::CodeDescriptions kStandard = orbhost::dv::describeCodes();
  TestBuild build_;
  OrbDVHuffTable* table_ = nullptr;
};

testing::AssertionResult isEntry(orb::DVHuffEntry entry, int len, int run, int level) {
  if (entry.len == len && entry.run == run && entry.level == level) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure()
         << int{entry.len} << ", " << int{entry.run} << ", " << entry.level << " and not " << len
         << ", " << run << ", " << level;
}

// Which code a place begins with is looked up by its text.
void expectStandardTable(const TestBuild& build) {
  const Table table(build);
  const Dictionary& codes = orbtest::dv::standardCodes();
  for (int place = 0; place < 1024; ++place) {
    SCOPED_TRACE(place);
    const bool isLong = place >= 512;
    // A place of the second table stands for 13 bits of which the first four are all ones.
    const std::string text = (isLong ? "1111" : "") + orbtest::binary(place % 512, 9);
    bool isFound = false;
    for (size_t length = isLong ? 10 : 1; length <= text.size(); ++length) {
      const auto found = codes.find(text.substr(0, length));
      if (found == codes.end()) continue;
      ASSERT_TRUE(isEntry(table.at(place), static_cast<int>(length), found->second.run,
                          found->second.level * 64));
      isFound = true;
    }
    if (!isFound) {
      ASSERT_TRUE(isEntry(table.at(place), 255, 0, 0));
    }
    ASSERT_EQ(isFound, place % 512 < (isLong ? 448 : 480));
  }
}

ORB_MEANING(orbiInitAllocHuffmanTable_DV_32u, TheStandardsCodes) {
  expectStandardTable(build);
}

ORB_MEANING(orbiInitAllocHuffmanTable_DV_32u, WidthsOfTheirOwn) {
  // One code of 2 bits of 3, one of 3 with bits above them; runs and levels are cut to 8 and 16.
  const Words two = {3, 7, 7, 0, 1, 2, 300, -600, 1, 9, 5, 1};
  // A later code takes places from an earlier one.
  const Words three = {2, 0, 0, 1, 1, 1, 1, 1, 3, 9, 3};
  const Table table(build, two, three);
  for (int place = 0; place < 8; ++place) {
    if (place == 1) {
      EXPECT_TRUE(isEntry(table.at(place), 3, 5, 64));
    } else if (place == 4 || place == 5) {
      EXPECT_TRUE(isEntry(table.at(place), 2, 300 - 256, -600 * 64 + 65536));
    } else {
      EXPECT_TRUE(isEntry(table.at(place), 255, 0, 0));
    }
  }
  EXPECT_TRUE(isEntry(table.at(8 + 0), 255, 0, 0));
  EXPECT_TRUE(isEntry(table.at(8 + 1), 255, 0, 0));
  EXPECT_TRUE(isEntry(table.at(8 + 2), 5, 1, 64));
  EXPECT_TRUE(isEntry(table.at(8 + 3), 6, 9, 192));
  // What else a decoder may look at is there, and empty.
  for (int place = 12; place < 1024; ++place) EXPECT_TRUE(isEntry(table.at(place), 255, 0, 0));
}

ORB_MEANING(orbiInitAllocHuffmanTable_DV_32u, AWidthOfZeroEndsTheDescription) {
  GuardedBytes memory(4);
  const Orb32s zero = 0;
  std::memcpy(memory.data(), &zero, 4);
  const Orb32s* const none = reinterpret_cast<const Orb32s*>(memory.data());
  OrbDVHuffTable* table = nullptr;
  ASSERT_EQ(ORB(orbiInitAllocHuffmanTable_DV_32u)(none, none, &table), orbStsNoErr);
  for (int place = 0; place < 1024; ++place) {
    EXPECT_TRUE(isEntry(table->entry[place], 255, 0, 0));
  }
  EXPECT_EQ(ORB(orbiFreeHuffmanTable_DV_32u)(table), orbStsNoErr);
}

ORB_MEANING(orbiInitAllocHuffmanTable_DV_32u, Checks) {
  struct Call {
    Words shorter = {0, 0, 0}, longer = {0, 0, 0};
    int missing = 0;
  };
  OrbDVHuffTable* const before = reinterpret_cast<OrbDVHuffTable*>(const_cast<char*>(build.tag));
  OrbDVHuffTable* table = before;
  std::vector<Fault<Call>> faults;
  for (int i = 1; i <= 3; ++i) {
    faults.push_back({orbStsNullPtrErr, [i](Call& c) { c.missing = i; }});
  }
  for (const Orb32s width : {-1, 28, 31, 32, INT32_MAX, INT32_MIN}) {
    faults.push_back({orbStsMemAllocErr, [width](Call& c) { c.shorter[0] = width; }});
    faults.push_back({orbStsMemAllocErr, [width](Call& c) { c.longer[0] = width; }});
  }
  expectChecks(faults, Call(), [&](const Call& c) {
    return ORB(orbiInitAllocHuffmanTable_DV_32u)(c.missing == 1 ? nullptr : c.shorter.data(),
                                                 c.missing == 2 ? nullptr : c.longer.data(),
                                                 c.missing == 3 ? nullptr : &table);
  });
  EXPECT_EQ(table, before);
}

ORB_MEANING(orbiInitAllocHuffmanTable_DV_32u, WithoutMemory) {
  const Words none = {0, 0, 0};
  orbtest::expectWithoutMemory([&] {
    OrbDVHuffTable* const before = reinterpret_cast<OrbDVHuffTable*>(const_cast<char*>(build.tag));
    OrbDVHuffTable* table = before;
    return ORB(orbiInitAllocHuffmanTable_DV_32u)(none.data(), none.data(), &table) ==
               orbStsMemAllocErr &&
           table == before;
  });
}

ORB_AGREEMENT(orbiInitAllocHuffmanTable_DV_32u) {
  for (int round = 0; round < 20; ++round) {
    Words specs[2];
    for (Words& words : specs) {
      const int width = random.between(0, 10);
      words = {width, 0, 0};
      for (int length = 1; length <= width; ++length) {
        const int count = random.between(0, 6);
        words.push_back(count);
        for (int i = 0; i < 3 * count; ++i) words.push_back(random.any<Orb32s>());
      }
    }
    const Table ours(build, specs[0], specs[1]);
    const Table reference(orbtest::runnableBuilds()[0], specs[0], specs[1]);
    const int places = std::max(1024, (1 << specs[0][0]) + (1 << specs[1][0]));
    ASSERT_EQ(std::memcmp(ours.get(), reference.get(), static_cast<size_t>(places) * 4), 0);
  }
}

ORB_MEANING(orbiFreeHuffmanTable_DV_32u, Releases) {
  expectStandardTable(build);
  EXPECT_EQ(ORB(orbiFreeHuffmanTable_DV_32u)(nullptr), orbStsNullPtrErr);
}
// A table is released by any build, whichever made it.
ORB_AGREEMENT(orbiFreeHuffmanTable_DV_32u) {
  const Words none = {0, 0, 0};
  OrbDVHuffTable* table = nullptr;
  ASSERT_EQ(PX(orbiInitAllocHuffmanTable_DV_32u)(none.data(), none.data(), &table), orbStsNoErr);
  EXPECT_EQ(ORB(orbiFreeHuffmanTable_DV_32u)(table), orbStsNoErr);
  EXPECT_EQ(PX(orbiFreeHuffmanTable_DV_32u)(nullptr), orbStsNullPtrErr);
}

// ---- Segments

// Two scans without any order, position 0 included, so that a mistake shows.
const std::vector<Orb32u>& scans() {
  static const std::vector<Orb32u> both = [] {
    Random random("scans");
    std::vector<Orb32u> all(128);
    for (int mode = 0; mode < 2; ++mode) {
      std::iota(all.begin() + 64 * mode, all.begin() + 64 * (mode + 1), 0u);
      for (int i = 63; i > 1; --i)
        std::swap(all[64 * mode + i], all[64 * mode + random.between(1, i)]);
    }
    return all;
  }();
  return both;
}

// Everything at any address, the stream at the end of memory, blocks cleared to `clear`.
Decoded decode(Decode function, const Form& form, const std::vector<Orb8u>& bytes,
               const OrbDVHuffTable* table, Orb16s clear = 0,
               const std::vector<Orb32u>& scan = scans()) {
  static Random random("places");
  const GuardedBytes stream(bytes);
  Plane<Orb32u> scanTables = orbtest::makeRow<Orb32u>(128, Placement::any(random));
  for (int i = 0; i < 128; ++i) scanTables.set(i, 0, scan[i]);
  Plane<Orb16s> blocks = orbtest::makeRow<Orb16s>(64 * form.blocks(), Placement::any(random));
  blocks.fill([&] { return clear; });
  Plane<Orb32u> info = orbtest::makeRow<Orb32u>(form.blocks(), Placement::any(random));
  EXPECT_EQ(function(stream.data(), scanTables.data(), table, blocks.data(), info.data()),
            orbStsNoErr);
  blocks.expectOutsideUntouched();
  info.expectOutsideUntouched();
  scanTables.expectUntouched();
  return {blocks.samples(), info.samples()};
}

testing::AssertionResult isDecoded(const Decoded& actual, const Decoded& expected) {
  for (size_t n = 0; n < expected.info.size(); ++n) {
    if (actual.info[n] != expected.info[n]) {
      return testing::AssertionFailure() << std::hex << "info " << actual.info[n] << " and not "
                                         << expected.info[n] << std::dec << " of block " << n;
    }
    for (size_t i = 64 * n; i < 64 * n + 64; ++i) {
      if (actual.blocks[i] == expected.blocks[i]) continue;
      return testing::AssertionFailure() << actual.blocks[i] << " and not " << expected.blocks[i]
                                         << " at " << i % 64 << " of block " << n;
    }
  }
  return testing::AssertionSuccess();
}

// What a test says of one block: the word of info without mode, class and quantisation, and
// coefficients by scan position.
struct BlockFacts {
  bool endOfBlock;
  int lastPosition;
  std::vector<std::pair<int, int>> coefficients;
};

void expectBlock(const Decoded& decoded, int n, const BlockFacts& facts, int mode = 0) {
  SCOPED_TRACE("block " + std::to_string(n));
  EXPECT_EQ(decoded.info[n] & 0xFF0F,
            static_cast<Orb32u>(facts.endOfBlock | facts.lastPosition << 8));
  std::vector<Orb16s> expected(64);
  expected[0] = decoded.blocks[64 * n];
  for (const auto& [position, value] : facts.coefficients) {
    expected[scans()[64 * mode + position]] = static_cast<Orb16s>(value);
  }
  const auto first = decoded.blocks.begin() + 64 * n;
  EXPECT_EQ(std::vector<Orb16s>(first, first + 64), expected);
}

// Every block ends at once in its area, and what is behind that belongs to nobody.
Segment emptySegment(const Form& form, char fill = '0') {
  Segment segment(form, fill);
  for (int n = 0; n < form.blocks(); ++n) segment.set(n, 0, 0, 0, kEnd);
  return segment;
}
// No block leaves anything.
Segment fullSegment(const Form& form) {
  Segment segment(form);
  for (int n = 0; n < form.blocks(); ++n) segment.setFull(n);
  return segment;
}

// A row of tests that hold for both forms. `run` decodes a segment.
class Tests {
 public:
  Tests(const TestBuild& build, const Form& form, Decode function)
      : form_(form), function_(function), table_(build) {}

  void all() {
    heads();
    codes();
    ends();
    overflow();
    splitCodes();
    blocksAndAreasInOrder();
    whatIsLeftIsDropped();
  }

 private:
  Decoded run(const Segment& segment, Orb16s clear = 0) {
    return decode(function_, form_, segment.bytes(), table_.get(), clear);
  }

  void heads() {
    Segment segment = emptySegment(form_, '1');
    const int dcs[] = {0, 1, 0x0FF, 0x100, 0x1FF, 0x155};
    for (int n = 0; n < form_.blocks(); ++n) {
      segment.set(n, dcs[n % 6], n / 4 % 2, n % 4, code(0, 1) + kEnd);
    }
    for (int m = 0; m < 5; ++m) segment.setQuantisation(m, 15 - 3 * m);
    const Decoded decoded = run(segment);
    for (int n = 0; n < form_.blocks(); ++n) {
      const int dc = dcs[n % 6];
      EXPECT_EQ(decoded.blocks[64 * n], (dc < 256 ? dc : dc - 512) * 128);
      const int mode = n / 4 % 2;
      const Orb32u quantisation = static_cast<Orb32u>(15 - n / form_.blocksEach() * 3);
      EXPECT_EQ(decoded.info[n],
                1u | static_cast<Orb32u>(n % 4 << 4 | mode << 6) | 1u << 8 | quantisation << 16);
      expectBlock(decoded, n, {true, 1, {{1, 64}}}, form_.modeChoosesScan ? mode : 0);
    }
    EXPECT_EQ(decoded.blocks[64 * 3], -32768);
  }

  // Every code, and escapes, in a block of its own.
  void codes() {
    const int limit = form_.areaBytes.back() * 8 - 12 - 4;
    const auto expectCode = [&](const std::string& text, int run, int level) {
      if (static_cast<int>(text.size()) > limit) return;
      Segment segment = emptySegment(form_, '1');
      segment.set(7, 5, 0, 0, text + kEnd);
      SCOPED_TRACE(text);
      expectBlock(this->run(segment), 7, {true, run + 1, {{run + 1, level * 64}}});
    };
    for (const auto& [text, symbol] : orbtest::dv::standardCodes()) {
      if (symbol.run < 63) expectCode(text, symbol.run, symbol.level);
    }
    for (const int amplitude : {0, 1, 22, 23, 128, 255}) {
      expectCode(escape(amplitude, false), 0, amplitude);
      expectCode(escape(amplitude, true), 0, -amplitude);
    }
  }

  void ends() {
    const std::string run50 = code(50, 0);
    const struct {
      std::string name, codes;
      BlockFacts facts;
    } cases[] = {
        {"at position 63", run50 + code(11, 1) + kEnd, {true, 63, {{63, 64}}}},
        {"a run past 63", run50 + code(12, 1), {false, 51, {}}},
        {"the longest run", run50 + code(61, 0), {false, 51, {}}},
        {"an escape past 63", run50 + code(11, -1) + escape(7, true), {false, 63, {{63, -64}}}},
        {"a code past 63", run50 + code(11, 2) + code(0, 1), {false, 63, {{63, 128}}}},
    };
    for (const auto& c : cases) {
      SCOPED_TRACE(c.name);
      Segment segment = emptySegment(form_);
      segment.set(2, 0, 0, 0, c.codes);
      expectBlock(run(segment), 2, c.facts);
      // The block takes nothing that follows: a neighbour that needs bits finds them.
      segment.set(3, 0, 0, 0, longText(segment, 3, 8).substr(0, segment.areaBits(3) - 12));
      for (const int n : {0, 1}) segment.setFull(n);
      segment.area(2).replace(12 + c.codes.size(), 8, longText(segment, 3, 8),
                              segment.areaBits(3) - 12, 8);
      const Decoded decoded = run(segment);
      expectBlock(decoded, 2, c.facts);
      expectWhole(decoded, 3, segment.areaBits(3) - 12 + 8 - 4);
    }
    // Places that no code stores are left alone; zeros that codes store are stored.
    Segment segment = emptySegment(form_);
    segment.set(2, 0, 0, 0, code(3, 0) + escape(0, true) + kEnd);
    const Decoded decoded = run(segment, 77);
    for (int position = 1; position < 64; ++position) {
      EXPECT_EQ(decoded.blocks[64 * 2 + scans()[position]],
                position == 4 || position == 5 ? 0 : 77);
    }
  }

  // Text for block n that goes on behind its area for so many bits.
  static std::string longText(const Segment& segment, int n, int beyond) {
    std::string text;
    const int room = segment.areaBits(n) - 12 + beyond - 4;
    while (static_cast<int>(text.size()) < room) {
      text += (room - static_cast<int>(text.size())) % 3 == 0 ? code(0, 1) : code(0, -2);
    }
    return text + kEnd;
  }
  static int codesIn(int bits) {
    return bits % 3 == 0 ? bits / 3 : bits % 3 == 1 ? (bits - 4) / 3 + 1 : (bits - 8) / 3 + 2;
  }
  void start(Segment& segment, int n, const std::string& text) {
    segment.set(n, 0, 0, 0, text.substr(0, segment.areaBits(n) - 12));
  }

  void expectWhole(const Decoded& decoded, int n, int bits) {
    EXPECT_EQ(decoded.info[n] & 0xFF01, 1u | static_cast<Orb32u>(codesIn(bits)) << 8) << n;
  }

  void overflow() {
    const int each = form_.blocksEach();
    // Within the macroblock: from the last block to the one area that has room, the second.
    for (const int m : {0, 4}) {
      Segment segment = fullSegment(form_);
      const int from = m * each + each - 1, to = m * each + 1;
      const std::string text = longText(segment, from, 30);
      start(segment, from, text);
      segment.set(to, 0, 0, 0, kEnd + text.substr(segment.areaBits(from) - 12));
      expectWhole(run(segment), from, segment.areaBits(from) - 12 + 30 - 4);
    }
    // Within the segment: to the first and to the last macroblock, through two areas.
    for (const int m : {1, 4}) {
      Segment segment = fullSegment(form_);
      const int from = 2 * each, to = m * each + 2;
      const std::string text = longText(segment, from, 60);
      start(segment, from, text);
      size_t at = segment.areaBits(from) - 12;
      for (const int n : {to, to + 1}) {
        segment.set(n, 0, 0, 0, code(1, 1) + kEnd);
        const size_t bits = std::min<size_t>(text.size() - at, segment.areaBits(n) - 12 - 9);
        segment.area(n).replace(12 + 9, bits, text, at, bits);
        at += bits;
      }
      ASSERT_EQ(at, text.size());
      expectWhole(run(segment), from, segment.areaBits(from) - 12 + 60 - 4);
    }
  }

  // An escape, the longest code, cut anywhere: between the area of its block, one of the macroblock
  // and one of the segment.
  void splitCodes() {
    const int each = form_.blocksEach();
    const std::string text = escape(200, true) + kEnd;
    for (size_t first = 0; first <= 16; ++first) {
      for (size_t second = 1; first + second <= text.size(); ++second) {
        SCOPED_TRACE(std::to_string(first) + " and " + std::to_string(second));
        Segment segment = fullSegment(form_);
        // Of the first area the codes leave `first` bits, of the second an end leaves `second`.
        const int room = segment.areaBits(0) - 12 - static_cast<int>(first);
        std::string codes = longText(segment, 0, -static_cast<int>(first));
        const int filled = room - 4;
        codes.replace(filled, 4, code(0, -2));  // in place of the end
        ASSERT_EQ(static_cast<int>(codes.size()), room);
        segment.set(0, 0, 0, 0, codes + text.substr(0, first));
        std::string other = longText(segment, 1, -static_cast<int>(second));
        segment.set(1, 0, 0, 0, other + text.substr(first, second));
        segment.set(3 * each, 0, 0, 0, kEnd + text.substr(first + second));
        const Decoded decoded = run(segment);
        const int position = codesIn(filled) + 1 + 1;
        EXPECT_EQ(decoded.info[0] & 0xFF01, 1u | static_cast<Orb32u>(position) << 8);
        EXPECT_EQ(decoded.blocks[scans()[position]], -200 * 64);
      }
    }
  }

  // Blocks have their turn in the order of the stream, and so have areas; a block that is at its
  // end leaves the rest of an area to the next.
  void blocksAndAreasInOrder() {
    const int each = form_.blocksEach();
    Segment segment = fullSegment(form_);
    const std::string one = longText(segment, 1, 9), three = longText(segment, 3, 11);
    start(segment, 1, one);
    start(segment, 3, three);
    const std::string rest =
        one.substr(segment.areaBits(1) - 12) + three.substr(segment.areaBits(3) - 12);
    ASSERT_EQ(rest.size(), 20u);
    // Area 0 ends 12 bits before its end, area 2 has the other 8 and room to spare.
    segment.set(0, 0, 0, 0, longText(segment, 0, -12) + rest.substr(0, 12));
    segment.set(2, 0, 0, 0, kEnd + rest.substr(12));
    // And what it spares is the first that a block of the next macroblock gets.
    const int from = each + 2;
    const std::string other = longText(segment, from, 10);
    start(segment, from, other);
    segment.area(2).replace(12 + 4 + 8, 10, other, segment.areaBits(from) - 12, 10);
    const Decoded decoded = run(segment);
    expectWhole(decoded, 1, segment.areaBits(1) - 12 + 9 - 4);
    expectWhole(decoded, 3, segment.areaBits(3) - 12 + 11 - 4);
    expectWhole(decoded, from, segment.areaBits(from) - 12 + 10 - 4);
  }

  void whatIsLeftIsDropped() {
    Segment segment = fullSegment(form_);
    const int from = 4;
    start(segment, from, longText(segment, from, 1));
    const Decoded decoded = run(segment);
    EXPECT_EQ(decoded.info[from] & 1, 0u);
    // A block that ends just where its area does needs nothing: all others are whole.
    for (int n = 0; n < form_.blocks(); ++n) {
      if (n != from) expectWhole(decoded, n, segment.areaBits(n) - 12 - 4);
    }
  }

  Form form_;
  Decode function_;
  Table table_;
};

ORB_MEANING(orbiHuffmanDecodeSegment_DV_8u16s, BitByBit) {
  Tests(build, kDv, ORB(orbiHuffmanDecodeSegment_DV_8u16s)).all();
}
ORB_MEANING(orbiHuffmanDecodeSegment_DV100_8u16s, BitByBit) {
  Tests(build, kDv100, ORB(orbiHuffmanDecodeSegment_DV100_8u16s)).all();
}

// Segments of all degrees of fullness, as a coder makes them, then with damage.
void expectModel(const TestBuild& build, const Form& form, Decode function, const char* name) {
  Random random(name);
  const Table table(build);
  for (int round = 0; round < 60; ++round) {
    Segment segment(form);
    for (int m = 0; m < 5; ++m) segment.setQuantisation(m, random.between(0, 15));
    std::vector<std::string> texts;
    const int mean = random.between(20, 200);
    for (int n = 0; n < form.blocks(); ++n) {
      texts.push_back(orbtest::dv::randomBlock(random, random.between(0, 2 * mean)));
    }
    const std::vector<size_t> placed = deal(texts, segment);
    orbtest::dv::ModelDecoder model(segment, scans(), orbtest::dv::standardCodes());
    const Decoded expected = model.decode();
    const Decoded actual = decode(function, form, segment.bytes(), table.get());
    ASSERT_TRUE(isDecoded(actual, expected)) << "round " << round;
    for (int n = 0; n < form.blocks(); ++n) {
      ASSERT_EQ(actual.info[n] & 1, static_cast<Orb32u>(placed[n] == texts[n].size()));
    }
    for (int damage = 0; damage < 5; ++damage) {
      std::string& area = segment.area(random.between(0, form.blocks() - 1));
      for (int flips = random.between(1, 20); flips > 0; --flips) {
        area[random.between<size_t>(0, area.size() - 1)] ^= 1;
      }
      orbtest::dv::ModelDecoder other(segment, scans(), orbtest::dv::standardCodes());
      ASSERT_TRUE(isDecoded(decode(function, form, segment.bytes(), table.get()), other.decode()));
    }
  }
}

ORB_MEANING(orbiHuffmanDecodeSegment_DV_8u16s, AsAModelDecodes) {
  expectModel(build, kDv, ORB(orbiHuffmanDecodeSegment_DV_8u16s), "model of DV");
}
ORB_MEANING(orbiHuffmanDecodeSegment_DV100_8u16s, AsAModelDecodes) {
  expectModel(build, kDv100, ORB(orbiHuffmanDecodeSegment_DV100_8u16s), "model of DV100");
}

// With codes left out, a block that meets one of them stops there, and takes along what it is
// given.
void expectMissingCodes(const TestBuild& build, const Form& form, Decode function) {
  Random random("missing codes");
  for (int round = 0; round < 30; ++round) {
    const orbhost::dv::CodeDescriptions standard = orbhost::dv::describeCodes();
    Words specs[2];
    for (int i = 0; i < 2; ++i) {
      const Words& from = i == 0 ? standard.upTo9Bits : standard.longer;
      specs[i] = {9, 0, 0};
      size_t at = 3;
      for (int length = 1; length <= 9; ++length) {
        const size_t countAt = specs[i].size();
        specs[i].push_back(0);
        const int count = from[at++];
        for (int k = 0; k < count; ++k, at += 3) {
          if (random.oneIn(12)) continue;
          specs[i].insert(specs[i].end(), from.begin() + at, from.begin() + at + 3);
          ++specs[i][countAt];
        }
      }
    }
    const Table table(build, specs[0], specs[1]);
    const Dictionary codes = orbtest::dv::readDescriptions(specs[0], specs[1]);
    Segment segment(form);
    for (int n = 0; n < form.blocks(); ++n) {
      for (char& bit : segment.area(n)) bit = random.oneIn(2) ? '1' : '0';
    }
    orbtest::dv::ModelDecoder model(segment, scans(), codes);
    ASSERT_TRUE(isDecoded(decode(function, form, segment.bytes(), table.get()), model.decode()));
  }
}

ORB_MEANING(orbiHuffmanDecodeSegment_DV_8u16s, MissingCodes) {
  expectMissingCodes(build, kDv, ORB(orbiHuffmanDecodeSegment_DV_8u16s));
}
ORB_MEANING(orbiHuffmanDecodeSegment_DV100_8u16s, MissingCodes) {
  expectMissingCodes(build, kDv100, ORB(orbiHuffmanDecodeSegment_DV100_8u16s));
}

void expectSegmentChecks(const Form& form, Decode function, const OrbDVHuffTable* table) {
  const std::vector<Orb8u> stream(400);
  std::vector<Orb16s> blocks(static_cast<size_t>(form.blocks()) * 64, 3);
  std::vector<Orb32u> info(static_cast<size_t>(form.blocks()), 3);
  const std::vector<Orb16s> blocksBefore = blocks;
  const std::vector<Orb32u> infoBefore = info;
  for (int missing = 0; missing < 5; ++missing) {
    const auto unless = [missing](int i, auto* pointer) {
      return i == missing ? nullptr : pointer;
    };
    EXPECT_EQ(function(unless(0, stream.data()), unless(1, scans().data()), unless(2, table),
                       unless(3, blocks.data()), unless(4, info.data())),
              orbStsNullPtrErr);
  }
  EXPECT_EQ(blocks, blocksBefore);
  EXPECT_EQ(info, infoBefore);
}

ORB_MEANING(orbiHuffmanDecodeSegment_DV_8u16s, Checks) {
  const Table table(build);
  expectSegmentChecks(kDv, ORB(orbiHuffmanDecodeSegment_DV_8u16s), table.get());
}
ORB_MEANING(orbiHuffmanDecodeSegment_DV100_8u16s, Checks) {
  const Table table(build);
  expectSegmentChecks(kDv100, ORB(orbiHuffmanDecodeSegment_DV100_8u16s), table.get());
}

// Any bytes, any table, any scan: nothing outside of the blocks is touched, and builds agree.
void expectAgreement(const TestBuild& build, Random& random, const Form& form, Decode function,
                     Decode reference) {
  for (int round = 0; round < 100; ++round) {
    Words specs[2];
    for (Words& words : specs) {
      const int width = random.oneIn(2) ? 9 : random.between(0, 11);
      words = {width, 0, 0};
      for (int length = 1; length <= width; ++length) {
        const int count = random.between(0, 1 << std::min(length, 6));
        words.push_back(count);
        for (int i = 0; i < count; ++i) {
          words.insert(words.end(),
                       {random.any<Orb32s>(), random.between(0, 6), random.any<Orb32s>()});
        }
      }
    }
    const bool isStandard = random.oneIn(2);
    const orbhost::dv::CodeDescriptions standard = orbhost::dv::describeCodes();
    const Table table(build, isStandard ? standard.upTo9Bits : specs[0],
                      isStandard ? standard.longer : specs[1]);
    std::vector<Orb32u> scan(128);
    for (Orb32u& place : scan)
      place = random.oneIn(4) ? random.any<Orb32u>() : random.between(0u, 63u);
    std::vector<Orb8u> bytes(400);
    for (Orb8u& byte : bytes) byte = random.any<Orb8u>();
    ASSERT_TRUE(isDecoded(decode(function, form, bytes, table.get(), 5, scan),
                          decode(reference, form, bytes, table.get(), 5, scan)));
  }
}

ORB_AGREEMENT(orbiHuffmanDecodeSegment_DV_8u16s) {
  expectAgreement(build, random, kDv, ORB(orbiHuffmanDecodeSegment_DV_8u16s),
                  PX(orbiHuffmanDecodeSegment_DV_8u16s));
}
ORB_AGREEMENT(orbiHuffmanDecodeSegment_DV100_8u16s) {
  expectAgreement(build, random, kDv100, ORB(orbiHuffmanDecodeSegment_DV100_8u16s),
                  PX(orbiHuffmanDecodeSegment_DV100_8u16s));
}

}  // namespace
