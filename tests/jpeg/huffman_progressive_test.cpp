// Progressive Huffman block coding (ITU-T T.81 annex G).
#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "jpeg/huffman_records.h"
#include "tests/jpeg/huffman_progressive_model.h"
#include "tests/support/builds.h"
#include "tests/support/faults.h"
#include "tests/support/guarded.h"
#include "tests/support/plane.h"

namespace {

using orbtest::binary;
using orbtest::bitsIn;
using orbtest::blockOf;
using orbtest::bytesOf;
using orbtest::Codes;
using orbtest::DecoderTable;
using orbtest::GuardedBytes;
using orbtest::GuardedSource;
using orbtest::HuffmanLists;
using orbtest::Pass;
using orbtest::Plane;
using orbtest::ProgressiveDecoderModel;
using orbtest::ProgressiveEncoderModel;
using orbtest::ProgressiveScan;
using orbtest::Random;
using orbtest::randomBlock;
using orbtest::TestBuild;
using orbtest::unary;
using orbtest::WriterModel;
using orbtest::zigzag;

using Block = std::vector<Orb16s>;
using Bytes = std::vector<Orb8u>;

constexpr Orb32s kLeast = std::numeric_limits<Orb32s>::min();
constexpr Orb32s kMost = std::numeric_limits<Orb32s>::max();

// A table in all its forms: lists, the model's, and the library's, made by px.
struct Table {
  Codes codes;
  DecoderTable model;
  OrbiEncodeHuffmanSpec encoder;
  OrbiDecodeHuffmanSpec decoder;

  explicit Table(const HuffmanLists& lists) : codes(orbtest::codesOf(lists)), model(lists) {
    Bytes vals = lists.vals;
    vals.push_back(0);  // so that there is an address even for no codes
    PX(orbiEncodeHuffmanSpecInit_JPEG_8u)(lists.bits.data(), vals.data(), &encoder);
    PX(orbiDecodeHuffmanSpecInit_JPEG_8u)(lists.bits.data(), vals.data(), &decoder);
  }
};
// Every symbol has a code, of random length.
const Table& fullTable() {
  static const Table table = [] {
    Random random("full table");
    return Table(orbtest::randomLists(random));
  }();
  return table;
}
// 0x01, 0x00, ... have the codes 0, 10, 110 and so on.
const Table& shortTable() {
  static const Table table(unary({0x01, 0x00, 0x02, 0x10, 0xF0, 0x11, 0x71, 0x21}));
  return table;
}

// A scan with anything in it that its pass allows.
ProgressiveScan anyScan(Pass pass, Random& random) {
  const Orb32s ss = random.oneIn(4) ? 1 : random.between(1, 63);
  const Orb32s se = random.oneIn(4) ? 63 : random.between(ss, 63);
  return {pass, ss, se, random.between<Orb32u>(0, random.oneIn(4) ? 13 : 3)};
}
Block anyBlock(Random& random) {
  return randomBlock(random, random.between(0, 100), random.between(1, 10), 10);
}
std::vector<Block> anyBlocks(Random& random, int count) {
  const int percent = random.between(0, 100), bits = random.between(1, 10);
  std::vector<Block> blocks;
  for (int i = 0; i < count; ++i) blocks.push_back(randomBlock(random, percent, bits, 10));
  return blocks;
}

// One check, check(build, pass), as a test of the exports of several passes.
#define MEANING_OF_AC_ENCODERS(caseName, check)                        \
  ORB_MEANING(orbiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1, caseName) {  \
    check(build, Pass::kACFirst);                                      \
  }                                                                    \
  ORB_MEANING(orbiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1, caseName) { \
    check(build, Pass::kACRefine);                                     \
  }
#define MEANING_OF_ENCODERS(caseName, check)                           \
  ORB_MEANING(orbiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1, caseName) {  \
    check(build, Pass::kDCFirst);                                      \
  }                                                                    \
  ORB_MEANING(orbiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1, caseName) { \
    check(build, Pass::kDCRefine);                                     \
  }                                                                    \
  MEANING_OF_AC_ENCODERS(caseName, check)
#define MEANING_OF_AC_DECODERS(caseName, check)                        \
  ORB_MEANING(orbiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1, caseName) {  \
    check(build, Pass::kACFirst);                                      \
  }                                                                    \
  ORB_MEANING(orbiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1, caseName) { \
    check(build, Pass::kACRefine);                                     \
  }
#define MEANING_OF_DECODERS(caseName, check)                           \
  ORB_MEANING(orbiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1, caseName) {  \
    check(build, Pass::kDCFirst);                                      \
  }                                                                    \
  ORB_MEANING(orbiDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1, caseName) { \
    check(build, Pass::kDCRefine);                                     \
  }                                                                    \
  MEANING_OF_AC_DECODERS(caseName, check)
#define MEANING_OF_AC_COUNTERS(caseName, check)                             \
  ORB_MEANING(orbiGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1, caseName) {  \
    check(build, Pass::kACFirst);                                           \
  }                                                                         \
  ORB_MEANING(orbiGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1, caseName) { \
    check(build, Pass::kACRefine);                                          \
  }
#define MEANING_OF_COUNTERS(caseName, check)                               \
  ORB_MEANING(orbiGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1, caseName) { \
    check(build, Pass::kDCFirst);                                          \
  }                                                                        \
  MEANING_OF_AC_COUNTERS(caseName, check)

// Capacities of destinations in which every byte is tested for room, and in which there is room for
// whatever a call may write.
constexpr int kTight = 300, kRoomy = 2000;

// ---- Encoders

struct EncodeArgs {
  const Orb16s* src;
  Orb8u* dst;
  Orb32s length;
  Orb32s* position;
  Orb16s* lastDC;
  Orb32s ss, se;
  Orb32u al;
  const OrbiEncodeHuffmanSpec* table;
  OrbiEncodeHuffmanState* state;
  Orb32s flush;
};

OrbStatus encode(const TestBuild& build, Pass pass, const EncodeArgs& a) {
  switch (pass) {
    case Pass::kDCFirst:
      return ORB(orbiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1)(
          a.src, a.dst, a.length, a.position, a.lastDC, a.al, a.table, a.state, a.flush);
    case Pass::kDCRefine:
      return ORB(orbiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1)(a.src, a.dst, a.length, a.position,
                                                              a.al, a.state, a.flush);
    case Pass::kACFirst:
      return ORB(orbiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1)(
          a.src, a.dst, a.length, a.position, a.ss, a.se, a.al, a.table, a.state, a.flush);
    case Pass::kACRefine:
      return ORB(orbiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1)(
          a.src, a.dst, a.length, a.position, a.ss, a.se, a.al, a.table, a.state, a.flush);
  }
  return orbStsErr;
}

// What a host holds while it encodes: all of it with canaries, at odd addresses.
struct Encoder {
  Plane<Orb16s> block{64, 1, {0, 1}};
  GuardedBytes dst;
  Plane<Orb32s> position{1, 1, {0, 1}};
  Plane<Orb16s> lastDC{1, 1, {0, 3}};
  Plane<Orb8u> state{sizeof(OrbiEncodeHuffmanState), 1, {0, 1}};

  explicit Encoder(int capacity) : dst(static_cast<size_t>(capacity)) {
    position.set(0, 0, 0);
    lastDC.set(0, 0, 0);
    state.fill([] { return Orb8u{0}; });
  }
  OrbiEncodeHuffmanState* record() {
    return reinterpret_cast<OrbiEncodeHuffmanState*>(state.data());
  }
  // As if blocks had been coded that left this behind.
  void setPending(Orb32s eobRun, const std::string& corrections = "") {
    record()->eobRun = eobRun;
    record()->correctionCount = static_cast<Orb32s>(corrections.size());
    for (size_t i = 0; i < corrections.size(); ++i) {
      record()->correctionBits[i] = corrections[i] == '1';
    }
  }
  EncodeArgs args(const ProgressiveScan& scan, const Table& table) {
    return {block.data(),   dst.data(), dst.size(), position.data(),
            lastDC.data(),  scan.ss,    scan.se,    scan.al,
            &table.encoder, record(),   0};
  }
  OrbStatus encode(const TestBuild& build, const ProgressiveScan& scan, const Block& values,
                   const Table& table) {
    for (int i = 0; i < 64; ++i) block.set(i, 0, values[static_cast<size_t>(i)]);
    const OrbStatus status = ::encode(build, scan.pass, args(scan, table));
    expectMargins();
    return status;
  }
  // With no block, and nothing else that a flush has no use for.
  OrbStatus flush(const TestBuild& build, const ProgressiveScan& scan, const Table& table) {
    EncodeArgs a = args({scan.pass, 0, 99, 99}, table);
    a.src = nullptr;
    a.lastDC = nullptr;
    if (!scan.isAC()) a.table = nullptr;
    a.flush = -7;
    const OrbStatus status = ::encode(build, scan.pass, a);
    expectMargins();
    return status;
  }
  // What is written, without stuffed bytes, and the bits in the state.
  std::string bits() {
    std::string all;
    bool stuffed = false;
    for (int i = 0; i < position.at(0); ++i) {
      if (!stuffed) all += binary(dst.data()[i], 8);
      stuffed = dst.data()[i] == 255;
    }
    return all + binary(record()->bitBuffer, 24).substr(0, static_cast<size_t>(record()->bitCount));
  }
  Bytes written() const {
    return Bytes(dst.data(), dst.data() + std::clamp(position.at(0), 0, dst.size()));
  }
  void expectMargins() const {
    block.expectUntouched();
    position.expectOutsideUntouched();
    lastDC.expectOutsideUntouched();
    state.expectOutsideUntouched();
  }
  void expectNothingPending() const {
    for (const Orb8u byte : state.samples()) ASSERT_EQ(byte, 0);
  }
  void expectLike(const ProgressiveEncoderModel& model) {
    ASSERT_EQ(position.at(0), model.writer.position);
    ASSERT_TRUE(std::equal(model.writer.dst.begin(), model.writer.dst.end(), dst.data()));
    ASSERT_EQ(lastDC.at(0), model.lastDC);
    ASSERT_EQ(record()->bitCount, static_cast<Orb32s>(model.writer.pending.size()));
    ASSERT_EQ(record()->bitBuffer, model.writer.bitBuffer());
    ASSERT_EQ(record()->bitBufferHigh, 0u);
    ASSERT_EQ(record()->eobRun, model.eobRun);
    ASSERT_EQ(record()->correctionCount, static_cast<Orb32s>(model.held.size()));
    for (size_t i = 0; i < model.held.size(); ++i) {
      ASSERT_EQ(record()->correctionBits[i], model.held[i] == '1');
    }
  }
};

ProgressiveEncoderModel modelOf(const Encoder& encoder) {
  ProgressiveEncoderModel model;
  model.writer.dst.assign(encoder.dst.data(), encoder.dst.data() + encoder.dst.size());
  model.writer.position = encoder.position.at(0);
  return model;
}

// Encodes blocks until one fails, comparing everything with the model behind each, and flushes.
void expectEncodesAs(const TestBuild& build, const ProgressiveScan& scan,
                     const std::vector<Block>& blocks, const Table& table, int capacity) {
  Encoder encoder(capacity);
  ProgressiveEncoderModel model = modelOf(encoder);
  for (const Block& block : blocks) {
    const OrbStatus status = model.code(scan, block, table.codes);
    ASSERT_EQ(encoder.encode(build, scan, block, table), status);
    encoder.expectLike(model);
    if (testing::Test::HasFatalFailure() || status != orbStsNoErr) break;
  }
  ASSERT_EQ(encoder.flush(build, scan, table), model.flush(scan, table.codes));
  encoder.expectLike(model);
  encoder.expectNothingPending();
}

// A scan by the model, in a buffer that is large enough.
Bytes encodedScan(const ProgressiveScan& scan, const std::vector<Block>& blocks,
                  const Codes& codes) {
  ProgressiveEncoderModel model;
  model.writer.dst.resize(blocks.size() * 600 + 2000);
  for (const Block& block : blocks) model.code(scan, block, codes);
  model.flush(scan, codes);
  model.writer.dst.resize(static_cast<size_t>(model.writer.position));
  return model.writer.dst;
}

// Bands and shifts at and beyond the limits.
template <class Args, class Call>
void expectBandTest(const Args& good, Call call) {
  const auto status = [&](Orb32s ss, Orb32s se, Orb32u al) {
    Args args = good;
    args.ss = ss;
    args.se = se;
    args.al = al;
    return call(args);
  };
  EXPECT_EQ(status(0, 5, 0), orbStsBadArgErr);
  EXPECT_EQ(status(-1, 5, 0), orbStsBadArgErr);
  EXPECT_EQ(status(kLeast, 5, 0), orbStsBadArgErr);
  EXPECT_EQ(status(64, 64, 0), orbStsBadArgErr);
  EXPECT_EQ(status(5, 4, 0), orbStsBadArgErr);
  EXPECT_EQ(status(1, kLeast, 0), orbStsBadArgErr);
  EXPECT_EQ(status(1, 64, 0), orbStsBadArgErr);
  EXPECT_EQ(status(1, kMost, 0), orbStsBadArgErr);
  EXPECT_EQ(status(1, 63, 14), orbStsBadArgErr);
  EXPECT_EQ(status(1, 63, 0xFFFFFFFF), orbStsBadArgErr);
}

void expectEncoderChecks(const TestBuild& build, Pass pass) {
  using Faults = std::vector<orbtest::Fault<EncodeArgs>>;
  const ProgressiveScan scan = {pass, 1, 63, 0};
  Encoder e(100);
  e.block.fill([] { return Orb16s{3}; });
  e.record()->bitCount = 5;
  const EncodeArgs good = e.args(scan, fullTable());
  const auto call = [&](const EncodeArgs& args) { return encode(build, pass, args); };

  Faults faults = {
      {orbStsNullPtrErr, [](EncodeArgs& a) { a.dst = nullptr; }},
      {orbStsSizeErr, [](EncodeArgs& a) { a.length = 0; }},
      {orbStsSizeErr, [](EncodeArgs& a) { a.length = -1; }},
      {orbStsNullPtrErr, [](EncodeArgs& a) { a.position = nullptr; }},
      {orbStsNullPtrErr, [](EncodeArgs& a) { a.state = nullptr; }},
  };
  if (scan.isAC()) {
    faults.push_back({orbStsNullPtrErr, [](EncodeArgs& a) { a.table = nullptr; }});
  }
  const Faults inAnyCall = faults;
  faults.push_back({orbStsNullPtrErr, [](EncodeArgs& a) { a.src = nullptr; }});
  if (pass == Pass::kDCFirst) {
    faults.push_back({orbStsNullPtrErr, [](EncodeArgs& a) { a.lastDC = nullptr; }});
  }
  if (scan.isAC()) {
    faults.push_back({orbStsBadArgErr, [](EncodeArgs& a) { a.ss = 0; }});
  }
  faults.push_back({orbStsBadArgErr, [](EncodeArgs& a) { a.al = 14; }});
  if (pass == Pass::kDCFirst) {
    faults.push_back({orbStsNullPtrErr, [](EncodeArgs& a) { a.table = nullptr; }});
  }
  orbtest::expectChecks(faults, good, call);
  if (scan.isAC()) expectBandTest(good, call);
  for (const Orb32u al : {14u, 32u, 0xFFFFFFFFu}) {
    EncodeArgs shifted = good;
    shifted.al = al;
    EXPECT_EQ(call(shifted), orbStsBadArgErr);
  }
  EncodeArgs flush = good;
  flush.flush = 1;
  orbtest::expectChecks(inAnyCall, flush, call);

  EXPECT_EQ(e.position.at(0), 0);
  EXPECT_EQ(e.lastDC.at(0), 0);
  EXPECT_EQ(e.record()->bitCount, 5);
  e.position.expectUntouched();
  e.lastDC.expectUntouched();
  e.expectMargins();
  // A flush needs no block.
  EXPECT_EQ(e.flush(build, scan, fullTable()), orbStsNoErr);
  EXPECT_EQ(e.position.at(0), 1);
  EXPECT_EQ(encode(build, pass, e.args({pass, 63, 63, 13}, fullTable())), orbStsNoErr);
  EXPECT_EQ(encode(build, pass, e.args({pass, 1, 1, 13}, fullTable())), orbStsNoErr);
}

MEANING_OF_ENCODERS(ChecksInOrder, expectEncoderChecks)

// A scan of some blocks, and its bits, with spaces between symbols and values, in front of the ones
// that fill up the last byte.
struct KnownScan {
  ProgressiveScan scan;
  std::vector<Block> blocks;
  const char* bits;
};
void expectKnownBits(const TestBuild& build, const std::vector<KnownScan>& scans,
                     const Table& table) {
  for (const KnownScan& known : scans) {
    std::string bits = bitsIn(known.bits);
    while (bits.size() % 8 != 0) bits += '1';
    for (const int capacity : {kTight, kRoomy}) {
      Encoder encoder(capacity);
      for (const Block& block : known.blocks) {
        ASSERT_EQ(encoder.encode(build, known.scan, block, table), orbStsNoErr);
      }
      ASSERT_EQ(encoder.flush(build, known.scan, table), orbStsNoErr);
      EXPECT_EQ(encoder.bits(), bits) << known.bits;
    }
  }
}

ORB_MEANING(orbiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1, KnownBits) {
  // Categories 0, 2 and 3 of T.81 table K.3 are 00, 011 and 100.
  const auto scan = [](Orb32u al) { return ProgressiveScan{Pass::kDCFirst, 0, 0, al}; };
  expectKnownBits(build,
                  {
                      {scan(0), {blockOf({{0, 5}})}, "100 101"},
                      {scan(0), {blockOf({{0, -5}})}, "100 010"},
                      {scan(1), {blockOf({{0, 5}})}, "011 10"},
                      // -5 halved is -3.
                      {scan(1), {blockOf({{0, -5}})}, "011 00"},
                      {scan(13), {blockOf({{0, 8191}})}, "00"},
                      // Differences 5, -2, 0: of shifted values.
                      {scan(2),
                       {blockOf({{0, 20}}), blockOf({{0, 12}}), blockOf({{0, 15}})},
                       "100 101 011 01 00"},
                  },
                  Table(orbtest::luminanceDC()));
}

ORB_MEANING(orbiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1, KnownBits) {
  // 5 is ...0101, -5 is ...1011.
  const std::vector<Block> blocks = {blockOf({{0, 5}}), blockOf({{0, -5}}), blockOf({{1, 5}})};
  const auto scan = [](Orb32u al) { return ProgressiveScan{Pass::kDCRefine, 0, 0, al}; };
  expectKnownBits(build,
                  {
                      {scan(0), blocks, "110"},
                      {scan(1), blocks, "010"},
                      {scan(2), blocks, "100"},
                      {scan(13), blocks, "010"},
                  },
                  fullTable());
}

// 0x01: 0, 0x00: 10, 0x02: 110, 0x10: 1110, 0xF0: 11110, 0x11: 111110, 0x71: 1111110,
// 0x21: 11111110.
ORB_MEANING(orbiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1, KnownBits) {
  const auto scan = [](Orb32s ss, Orb32s se, Orb32u al) {
    return ProgressiveScan{Pass::kACFirst, ss, se, al};
  };
  const Block zeros(64);
  expectKnownBits(build,
                  {
                      {scan(1, 63, 0), {}, ""},
                      {scan(1, 5, 0), {blockOf({{1, 1}})}, "0 1 10"},
                      {scan(1, 5, 0), {blockOf({{1, -2}})}, "110 01 10"},
                      // What is outside of the band is not looked at.
                      {scan(2, 5, 0), {blockOf({{0, 9}, {1, 9}, {6, 9}})}, "10"},
                      // No end behind a value at the last position.
                      {scan(5, 5, 0), {blockOf({{5, 2}})}, "110 10"},
                      // Magnitudes are halved, not values: 1, 1, 0.
                      {scan(1, 3, 1), {blockOf({{1, 3}, {2, -3}, {3, -1}})}, "0 1 0 0 10"},
                      // A run of 16.
                      {scan(1, 63, 0), {blockOf({{17, 1}})}, "11110 0 1 10"},
                      // Runs of two and of three blocks; a run in front of a value.
                      {scan(1, 63, 0), {zeros, zeros}, "1110 0"},
                      {scan(1, 63, 0), {zeros, zeros, zeros}, "1110 1"},
                      {scan(1, 1, 0), {zeros, zeros, blockOf({{1, 1}})}, "1110 0 0 1"},
                      // The end of one block and a whole one.
                      {scan(1, 2, 0), {blockOf({{1, 1}}), zeros}, "0 1 1110 0"},
                  },
                  shortTable());
}

ORB_MEANING(orbiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1, KnownBits) {
  const auto scan = [](Orb32s ss, Orb32s se, Orb32u al) {
    return ProgressiveScan{Pass::kACRefine, ss, se, al};
  };
  const Block zeros(64);
  expectKnownBits(
      build,
      {
          {scan(1, 63, 0), {}, ""},
          // New: a sign. At the last position nothing more.
          {scan(1, 1, 0), {blockOf({{1, 1}})}, "0 1"},
          {scan(1, 1, 0), {blockOf({{1, -1}})}, "0 0"},
          {scan(1, 5, 0), {blockOf({{1, 1}})}, "0 1 10"},
          {scan(1, 1, 1), {blockOf({{1, -3}})}, "0 0"},
          // Corrections in front of a new coefficient come behind its sign.
          {scan(1, 5, 0), {blockOf({{1, 2}, {2, -1}})}, "0 0 0 10"},
          // Corrections behind the last new one: of the end of the band, also if it has no zero.
          {scan(1, 5, 0), {blockOf({{1, 1}, {2, -3}})}, "0 1 10 1"},
          {scan(1, 2, 0), {blockOf({{1, 3}, {2, 5}})}, "10 11"},
          {scan(1, 2, 1), {blockOf({{1, -5}, {2, 7}})}, "10 01"},
          // Those of a run are held until it goes out.
          {scan(1, 2, 0), {blockOf({{1, 3}}), zeros, blockOf({{2, 2}})}, "1110 1 1 0"},
          {scan(1, 2, 0), {blockOf({{1, 3}, {2, 5}}), blockOf({{1, 1}, {2, 2}})}, "10 11 0 1 10 0"},
          // Runs of 16 zeros in front of the last new coefficient only.
          {scan(1, 63, 0), {blockOf({{40, 3}})}, "10 1"},
          {scan(1, 63, 0), {blockOf({{40, 3}, {41, 1}})}, "11110 11110 1111110 1 1 10"},
          {scan(1, 63, 0), {blockOf({{1, 3}, {20, 1}})}, "11110 1 11111110 1 10"},
          {scan(1, 63, 0), {blockOf({{20, 1}, {60, 2}})}, "11110 111111110 1 10 0"},
      },
      Table(unary({0x01, 0x00, 0x02, 0x10, 0xF0, 0x11, 0x71, 0x21, 0x31})));
}

// Blocks of any pass and band against the model, in destinations with and without room for all.
void expectAnyScans(const TestBuild& build, Pass pass) {
  Random random("any scans");
  for (int round = 0; round < 150; ++round) {
    const ProgressiveScan scan = anyScan(pass, random);
    const int capacity = random.oneIn(3) ? random.between(1, kTight) : random.between(700, 3600);
    expectEncodesAs(build, scan, anyBlocks(random, 6), fullTable(), capacity);
    if (testing::Test::HasFailure()) return;
  }
}
MEANING_OF_ENCODERS(AnyScans, expectAnyScans)

// Blocks of values at and beside the ends of 16 bits.
void expectExtremeScans(const TestBuild& build, Pass pass) {
  Random random("extreme scans");
  for (int round = 0; round < 100; ++round) {
    ProgressiveScan scan = anyScan(pass, random);
    if (random.oneIn(2)) scan.al = random.between(0u, 13u);
    std::vector<Block> blocks(4, Block(64));
    for (Block& block : blocks) {
      for (Orb16s& value : block) value = random.oneIn(2) ? random.extreme<Orb16s>() : Orb16s{0};
    }
    expectEncodesAs(build, scan, blocks, fullTable(), random.oneIn(2) ? 3000 : 100);
    if (testing::Test::HasFailure()) return;
  }
}
MEANING_OF_ENCODERS(ExtremeValues, expectExtremeScans)

// Every length up to what the scan takes: each put may be the one that fails.
void expectEveryLength(const TestBuild& build, Pass pass) {
  Random random("short destinations");
  for (int round = 0; round < 4; ++round) {
    const ProgressiveScan scan = {pass, 1, round % 2 == 0 ? 63 : 20,
                                  static_cast<Orb32u>(round / 2)};
    std::vector<Block> blocks;
    for (int i = 0; i < 5; ++i) blocks.push_back(randomBlock(random, 40, round < 2 ? 3 : 8, 8));
    const int size = static_cast<int>(encodedScan(scan, blocks, fullTable().codes).size());
    for (int capacity = 1; capacity <= size + 1; ++capacity) {
      expectEncodesAs(build, scan, blocks, fullTable(), capacity);
      if (testing::Test::HasFailure()) return;
    }
  }
}
MEANING_OF_ENCODERS(EveryLengthOfDestination, expectEveryLength)

// Tables in which each of the scan's symbols in turn has no code.
void expectMissingCodes(const TestBuild& build, Pass pass) {
  Random random("missing codes");
  for (int round = 0; round < 100; ++round) {
    const ProgressiveScan scan = anyScan(pass, random);
    const Table some(orbtest::randomLists(random, random.between(1, 40)));
    expectEncodesAs(build, scan, anyBlocks(random, 6), some, 4000);
    if (testing::Test::HasFailure()) return;
  }
  const Table none(unary({}));
  expectEncodesAs(build, {pass, 1, 63, 0}, {blockOf({{0, 1}, {1, 1}})}, none, 100);
}
ORB_MEANING(orbiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1, MissingCodes) {
  expectMissingCodes(build, Pass::kDCFirst);
}
ORB_MEANING(orbiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1, MissingCodes) {
  expectMissingCodes(build, Pass::kACFirst);
}
ORB_MEANING(orbiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1, MissingCodes) {
  expectMissingCodes(build, Pass::kACRefine);
}

void expectPositionsOutside(const TestBuild& build, Pass pass) {
  for (const int position : {-1, kLeast, 100, 101, kMost}) {
    Encoder encoder(100);
    encoder.position.set(0, 0, position);
    encoder.record()->bitCount = 7;
    EXPECT_EQ(encoder.encode(build, {pass, 1, 63, 0}, blockOf({{0, 1}, {1, 1}}), fullTable()),
              orbStsJpegBufferEndErr);
    EXPECT_EQ(encoder.position.at(0), position);
    encoder.record()->bitCount = 7;
    EXPECT_EQ(encoder.flush(build, {pass, 1, 63, 0}, fullTable()), orbStsJpegBufferEndErr);
    EXPECT_EQ(encoder.position.at(0), position);
  }
}
MEANING_OF_ENCODERS(PositionsOutsideAreTheEnd, expectPositionsOutside)

ORB_MEANING(orbiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1, DifferencesOfUpTo11Bits) {
  const ProgressiveScan scan = {Pass::kDCFirst, 0, 0, 0};
  for (const int value : {2047, -2047}) {
    Encoder encoder(100);
    EXPECT_EQ(encoder.encode(build, scan, blockOf({{0, value}}), fullTable()), orbStsNoErr);
  }
  for (const int value : {2048, -2048, 32767, -32768}) {
    Encoder encoder(100);
    EXPECT_EQ(encoder.encode(build, scan, blockOf({{0, value}}), fullTable()),
              orbStsJpegBitStreamErr);
    EXPECT_EQ(encoder.lastDC.at(0), value);
    EXPECT_EQ(encoder.bits(), "");
  }
}

ORB_MEANING(orbiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1, MagnitudesOfUpTo11Bits) {
  struct Case {
    int value;
    Orb32u al;
    OrbStatus status;
  };
  const Case cases[] = {
      {2047, 0, orbStsNoErr},
      {-2047, 0, orbStsNoErr},
      {2048, 0, orbStsJpegBitStreamErr},
      {-2048, 0, orbStsJpegBitStreamErr},
      {4095, 1, orbStsNoErr},
      {4096, 1, orbStsJpegBitStreamErr},
      {32767, 4, orbStsNoErr},
      {-32768, 4, orbStsJpegBitStreamErr},
      {-32768, 5, orbStsNoErr},
  };
  for (const int capacity : {kTight, kRoomy}) {
    for (const Case& c : cases) {
      // What stands in front of it is written: a run of two blocks, and 16 zeros.
      Encoder encoder(capacity);
      encoder.setPending(2);
      EXPECT_EQ(encoder.encode(build, {Pass::kACFirst, 1, 63, c.al}, blockOf({{17, c.value}}),
                               fullTable()),
                c.status);
      EXPECT_EQ(encoder.record()->eobRun, c.status == orbStsNoErr ? 1 : 0);
      const std::string before = fullTable().codes.at(0x10) + "0" + fullTable().codes.at(0xF0);
      EXPECT_EQ(encoder.bits().substr(0, before.size()), before);
      EXPECT_EQ(encoder.bits() == before, c.status != orbStsNoErr);
    }
  }
}

// ---- End-of-band runs

// The symbol of a run's number of bits, and the bits below the highest.
std::string runBits(int run, const Table& table) {
  int n = 0;
  while (run >> n != 1) ++n;
  return table.codes.at(n * 16) + binary(run, n);
}

void expectEveryRunLength(const TestBuild& build, Pass pass) {
  const ProgressiveScan scan = {pass, 1, 63, 0};
  const auto& codes = fullTable().codes;
  for (const int capacity : {kTight, kRoomy}) {
    for (int n = 0; n <= 14; ++n) {
      for (const int run : {1 << n, (1 << n) + 1, (2 << n) - 1}) {
        if (run >> n != 1) continue;
        Encoder encoder(capacity);
        encoder.setPending(run);
        EXPECT_EQ(encoder.encode(build, scan, blockOf({{1, 1}, {63, 1}}), fullTable()),
                  orbStsNoErr);
        const std::string bits = runBits(run, fullTable()) + codes.at(0x01) + "1";
        EXPECT_EQ(encoder.bits().substr(0, bits.size()), bits) << run;
        EXPECT_EQ(encoder.record()->eobRun, 0);
      }
    }
    // A flush writes them the same way.
    for (const int run : {1, 2, 300, 20000, 32767}) {
      Encoder encoder(capacity);
      encoder.setPending(run);
      EXPECT_EQ(encoder.flush(build, scan, fullTable()), orbStsNoErr);
      const std::string bits = runBits(run, fullTable());
      EXPECT_EQ(encoder.bits().substr(0, bits.size()), bits);
      EXPECT_LT(encoder.bits().size(), bits.size() + 8);
      encoder.expectNothingPending();
    }
  }
}
MEANING_OF_AC_ENCODERS(EveryRunLength, expectEveryRunLength)

// Blocks below the shift write nothing, until there are 32767 of them.
void expectLongestRun(const TestBuild& build, Pass pass) {
  const ProgressiveScan scan = {pass, 1, 63, 4};
  const Block small = blockOf({{1, 15}, {30, -15}, {63, 1}});
  for (const int capacity : {kTight, kRoomy}) {
    Encoder encoder(capacity);
    for (int i = 0; i < 64; ++i) encoder.block.set(i, 0, small[static_cast<size_t>(i)]);
    for (int i = 1; i < 32767; ++i) {
      ASSERT_EQ(encode(build, pass, encoder.args(scan, fullTable())), orbStsNoErr);
      ASSERT_EQ(encoder.record()->eobRun, i);
    }
    EXPECT_EQ(encoder.bits(), "");
    EXPECT_EQ(encoder.encode(build, scan, small, fullTable()), orbStsNoErr);
    EXPECT_EQ(encoder.bits(), fullTable().codes.at(0xE0) + std::string(14, '1'));
    EXPECT_EQ(encoder.record()->eobRun, 0);
    // Without a code for it, the run stays, and is one too long with the next block.
    Encoder none(capacity);
    none.setPending(32766);
    EXPECT_EQ(none.encode(build, scan, small, shortTable()), orbStsJpegHuffTableErr);
    EXPECT_EQ(none.record()->eobRun, 32767);
    EXPECT_EQ(none.encode(build, scan, small, shortTable()), orbStsNoErr);
    EXPECT_EQ(none.record()->eobRun, 32768);
  }
}
MEANING_OF_AC_ENCODERS(ALongestRunGoesOutAtOnce, expectLongestRun)

// Runs above 32767, which only failing calls leave: first the category of 14 bits with the low bits
// of the whole, then the rest. A rest of 1 has no bits behind its symbol, and to write no bits is
// a failure.
struct OverlongRun {
  Orb32s run;
  int symbols;  // written of the two
  OrbStatus status;
  Orb32s left;
};
const OverlongRun kOverlongRuns[] = {
    {32768, 2, orbStsJpegHuffTableErr, 1},
    {32769, 2, orbStsNoErr, 0},
    {65534, 2, orbStsNoErr, 0},
    {65535, 1, orbStsJpegBitStreamErr, 32768},
    {kMost, 1, orbStsJpegBitStreamErr, kMost - 32767},
    // Of a damaged state.
    {-1, 0, orbStsJpegBitStreamErr, -1},
    {kLeast, 0, orbStsJpegBitStreamErr, kLeast},
};
std::string bitsOf(const OverlongRun& run) {
  std::string bits;
  if (run.symbols > 0) bits += fullTable().codes.at(0xE0) + binary(run.run, 14);
  if (run.symbols > 1) bits += runBits(run.run - 32767, fullTable());
  return bits;
}
void expectOverlongRuns(const TestBuild& build, Pass pass) {
  const ProgressiveScan scan = {pass, 1, 1, 0};
  for (const int capacity : {kTight, kRoomy}) {
    for (const OverlongRun& run : kOverlongRuns) {
      Encoder encoder(capacity);
      encoder.setPending(run.run);
      EXPECT_EQ(encoder.encode(build, scan, blockOf({{1, 1}}), fullTable()), run.status);
      std::string bits = bitsOf(run);
      if (run.status == orbStsNoErr) bits += fullTable().codes.at(0x01) + "1";
      EXPECT_EQ(encoder.bits(), bits);
      EXPECT_EQ(encoder.record()->eobRun, run.left);

      Encoder flushed(capacity);
      flushed.setPending(run.run, "10");
      EXPECT_EQ(flushed.flush(build, scan, fullTable()),
                pass == Pass::kACRefine ? run.status : orbStsNoErr);
      bits = bitsOf(run);
      // Correction bits do not follow a run that failed.
      if (run.status == orbStsNoErr) bits += "10";
      while (bits.size() % 8 != 0) bits += '1';
      EXPECT_EQ(flushed.bits(), bits);
      flushed.expectNothingPending();
    }
  }
}
MEANING_OF_AC_ENCODERS(OverlongRuns, expectOverlongRuns)

// ---- Correction bits

ORB_MEANING(orbiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1, HoldsUpTo937CorrectionBits) {
  const ProgressiveScan scan = {Pass::kACRefine, 1, 3, 0};
  const std::string held = "1" + std::string(934, '0');
  for (const int capacity : {kTight, kRoomy}) {
    // 935 and two more.
    Encoder encoder(capacity);
    encoder.setPending(7, held);
    EXPECT_EQ(encoder.encode(build, scan, blockOf({{1, 3}, {3, 2}}), fullTable()), orbStsNoErr);
    EXPECT_EQ(encoder.bits(), "");
    EXPECT_EQ(encoder.record()->correctionCount, 937);
    EXPECT_EQ(encoder.record()->eobRun, 8);
    // One more is too many.
    EXPECT_EQ(encoder.encode(build, scan, blockOf({{2, -3}}), fullTable()), orbStsNoErr);
    EXPECT_EQ(encoder.bits(), runBits(9, fullTable()) + held + "10" + "1");
    EXPECT_EQ(encoder.record()->correctionCount, 0);
    EXPECT_EQ(encoder.record()->eobRun, 0);
    // Whole blocks: the 15th brings 63 * 15 = 945.
    const Block block(64, 2);
    Encoder whole(capacity);
    for (int i = 1; i < 15; ++i) {
      EXPECT_EQ(whole.encode(build, {Pass::kACRefine, 1, 63, 0}, block, fullTable()), orbStsNoErr);
      EXPECT_EQ(whole.record()->correctionCount, 63 * i);
    }
    EXPECT_EQ(whole.bits(), "");
    EXPECT_EQ(whole.encode(build, {Pass::kACRefine, 1, 63, 0}, block, fullTable()), orbStsNoErr);
    EXPECT_EQ(whole.bits(), runBits(15, fullTable()) + std::string(945, '0'));
    // As many as there can be: 937 and 63.
    Encoder most(capacity);
    most.setPending(1, std::string(937, '1'));
    EXPECT_EQ(most.encode(build, {Pass::kACRefine, 1, 63, 0}, block, fullTable()), orbStsNoErr);
    EXPECT_EQ(most.bits(), runBits(2, fullTable()) + std::string(937, '1') + std::string(63, '0'));
  }
}

// What is still held when a call fails: the old correction bits until they are written.
ORB_MEANING(orbiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1, WhatStaysHeldWhenACallFails) {
  const ProgressiveScan scan = {Pass::kACRefine, 1, 63, 0};
  struct Case {
    const char* what;
    std::vector<Orb8u> symbols;
    Block block;
    Orb32s eobRun;
    Orb32s held;
    Orb32s left;
    std::string bits;
  };
  const Block isNew = blockOf({{1, 1}}), zerosFirst = blockOf({{1, 3}, {20, 1}});
  const Case cases[] = {
      {"the run", {0x01}, isNew, 1, 5, 5, ""},
      {"a new coefficient", {0x00}, isNew, 0, 5, 0, "0 11111"},
      {"the run in front of 16 zeros", {0x21, 0xF0}, zerosFirst, 1, 5, 5, ""},
      {"16 zeros", {0x00, 0x21}, zerosFirst, 0, 5, 0, "0 11111"},
      {"what comes behind them", {0x00, 0xF0}, zerosFirst, 0, 5, 0, "0 11111 10 1"},
      // The run of a block that brings too many: its bits are held as well.
      {"the run of too many", {0x01}, blockOf({{1, 3}, {2, 2}}), 2, 936, 938, ""},
  };
  for (const int capacity : {kTight, kRoomy}) {
    for (const Case& c : cases) {
      SCOPED_TRACE(c.what);
      Encoder encoder(capacity);
      encoder.setPending(1, std::string(static_cast<size_t>(c.held), '1'));
      EXPECT_EQ(encoder.encode(build, scan, c.block, Table(unary(c.symbols))),
                orbStsJpegHuffTableErr);
      EXPECT_EQ(encoder.record()->eobRun, c.eobRun);
      EXPECT_EQ(encoder.record()->correctionCount, c.left);
      EXPECT_EQ(encoder.bits(), bitsIn(c.bits));
    }
  }
  // No room for the run; for the held bits; for 16 zeros.
  const Table table(unary({0x00, 0xF0, 0x21}));
  struct Room {
    int bits;  // in the state, so that so many fewer fit into the only byte
    Orb32s eobRun, left;
  };
  for (const Room& room : {Room{7, 1, 5}, Room{5, 0, 5}, Room{1, 0, 0}}) {
    Encoder full(1);
    full.position.set(0, 0, 1);
    full.setPending(1, "00000");
    full.record()->bitCount = room.bits;
    EXPECT_EQ(full.encode(build, scan, zerosFirst, table), orbStsJpegBufferEndErr);
    EXPECT_EQ(full.record()->eobRun, room.eobRun);
    EXPECT_EQ(full.record()->correctionCount, room.left);
  }
}

// A state that no call leaves: what it claims to hold stays within the record.
ORB_MEANING(orbiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1, DamagedCountsOfCorrectionBits) {
  const ProgressiveScan scan = {Pass::kACRefine, 1, 63, 0};
  for (const Orb32s count : {-1, kLeast, 1000, 1024, 1025, 100000, kMost}) {
    Encoder encoder(2000);
    encoder.setPending(1, std::string(1024, '1'));
    encoder.record()->correctionCount = count;
    EXPECT_EQ(encoder.encode(build, scan, Block(64, 2), fullTable()), orbStsNoErr);
    EXPECT_EQ(encoder.record()->correctionCount, count < 0 ? 63 : 0);
    Encoder flushed(2000);
    flushed.setPending(0, std::string(1024, '1'));
    flushed.record()->correctionCount = count;
    EXPECT_EQ(flushed.flush(build, scan, fullTable()), orbStsNoErr);
    EXPECT_EQ(flushed.bits(), std::string(static_cast<size_t>(std::clamp(count, 0, 1024)), '1'));
  }
}

// ---- Flushes

void expectFlushes(const TestBuild& build, Pass pass) {
  const ProgressiveScan scan = {pass, 1, 63, 0};
  for (int bits = 0; bits < 8; ++bits) {
    Encoder encoder(10);
    encoder.record()->bitCount = bits;
    encoder.record()->correctionBits[1023] = 1;
    EXPECT_EQ(encoder.flush(build, scan, fullTable()), orbStsNoErr);
    EXPECT_EQ(encoder.written(), bits == 0 ? Bytes{} : Bytes{static_cast<Orb8u>(255 >> bits)});
    encoder.expectNothingPending();
  }
  // A last byte of 255 is stuffed; without room for it the state starts anew all the same.
  for (const int room : {2, 1, 0}) {
    Encoder ones(2);
    ones.position.set(0, 0, 2 - room);
    ones.record()->bitBuffer = 0xF00000;
    ones.record()->bitCount = 4;
    EXPECT_EQ(ones.flush(build, scan, fullTable()),
              room == 2 ? orbStsNoErr : orbStsJpegBufferEndErr);
    EXPECT_EQ(ones.position.at(0), 2);
    ones.expectNothingPending();
  }
}
MEANING_OF_ENCODERS(FlushFillsTheLastByteWithOnes, expectFlushes)

// The run and the correction bits go out; the scans of DC have neither.
void expectFlushOfPending(const TestBuild& build, Pass pass) {
  const ProgressiveScan scan = {pass, 1, 63, 0};
  Encoder encoder(10);
  encoder.setPending(5, "1001");
  EXPECT_EQ(encoder.flush(build, scan, shortTable()),
            pass == Pass::kACRefine ? orbStsJpegHuffTableErr : orbStsNoErr);
  EXPECT_EQ(encoder.bits(), "");
  encoder.setPending(3, "1001");
  EXPECT_EQ(encoder.flush(build, scan, shortTable()), orbStsNoErr);
  EXPECT_EQ(encoder.bits(), scan.isAC() ? "1110110011111111" : "");
}
MEANING_OF_ENCODERS(FlushOfPending, expectFlushOfPending)

// Where a flush fails, and what comes out of its two forms: AC first tells only of the last byte.
void expectFailingFlushes(const TestBuild& build, Pass pass) {
  struct Case {
    const char* what;
    std::vector<Orb8u> symbols;
    const char* held;
    int bits;  // in the state
    int room;
    OrbStatus first, refine;
    Bytes written;
  };
  const OrbStatus full = orbStsJpegBufferEndErr, noCode = orbStsJpegHuffTableErr;
  const Case cases[] = {
      {"no code", {0x10}, "11", 3, 9, orbStsNoErr, noCode, {0x1F}},
      {"no code, and no byte to fill up", {0x10}, "11", 0, 9, orbStsNoErr, noCode, {}},
      {"no code, and no room", {0x10}, "11", 3, 0, full, noCode, {}},
      // 10 is one bit more than fits, and what is left does not fit, either.
      {"no room for the run", {0x01, 0x00}, "", 7, 0, full, full, {}},
      {"no room for the corrections", {0x01, 0x00}, "111111", 0, 0, full, full, {}},
      {"no room for the last byte", {0x01, 0x00}, "1", 0, 0, full, full, {}},
      {"nothing to fill up", {0x01, 0x00}, "1", 5, 1, orbStsNoErr, orbStsNoErr, {0x05}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Encoder encoder(10);
    encoder.position.set(0, 0, 10 - c.room);
    encoder.setPending(1, c.held);
    encoder.record()->bitCount = c.bits;
    EXPECT_EQ(encoder.flush(build, {pass, 1, 63, 0}, Table(unary(c.symbols))),
              pass == Pass::kACFirst ? c.first : c.refine);
    const Bytes all = encoder.written();
    EXPECT_EQ(Bytes(all.begin() + 10 - c.room, all.end()), c.written);
    encoder.expectNothingPending();
  }
  // A code of 16 bits finds no room, and without it there is nothing to fill up.
  std::vector<Orb8u> sixteen(16, 0x01);
  sixteen[15] = 0x00;
  Encoder encoder(1);
  encoder.position.set(0, 0, 1);
  encoder.setPending(1, "1");
  EXPECT_EQ(encoder.flush(build, {pass, 1, 63, 0}, Table(unary(sixteen))),
            pass == Pass::kACFirst ? orbStsNoErr : orbStsJpegBufferEndErr);
}
ORB_MEANING(orbiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1, FlushLosesTheFirstFailure) {
  expectFailingFlushes(build, Pass::kACFirst);
}
ORB_MEANING(orbiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1, FlushKeepsTheFirstFailure) {
  expectFailingFlushes(build, Pass::kACRefine);
}

// ---- Agreement of the encoders

void expectEncodersAgree(const TestBuild& build, Pass pass, Random& random) {
  const TestBuild px = {orb::kPx, "px"};
  for (int round = 0; round < 600; ++round) {
    const int capacity = random.between(1, random.oneIn(2) ? 100 : 3000);
    Encoder expected(capacity), actual(capacity);
    Table table = fullTable();
    const bool damaged = random.oneIn(4);
    if (damaged) {
      orbtest::fillAny(table.encoder, random);
      expected.state.fillExtreme(random);
      if (random.oneIn(2)) expected.setPending(random.between(0, 70000), "110");
      if (random.oneIn(2)) expected.record()->correctionCount = random.extreme<Orb32s>();
      actual.state.copySamples(expected.state);
    }
    const ProgressiveScan scan = anyScan(pass, random);
    for (int i = 0; i < 5; ++i) {
      const Block block = anyBlock(random);
      ASSERT_EQ(actual.encode(build, scan, block, table), expected.encode(px, scan, block, table));
      ASSERT_EQ(actual.written(), expected.written());
      ASSERT_TRUE(actual.state.sameBytes(expected.state));
      ASSERT_TRUE(actual.position.sameBytes(expected.position));
      ASSERT_TRUE(actual.lastDC.sameBytes(expected.lastDC));
    }
    ASSERT_EQ(actual.flush(build, scan, table), expected.flush(px, scan, table));
    ASSERT_EQ(actual.written(), expected.written());
    ASSERT_TRUE(actual.state.sameBytes(expected.state));
  }
}
ORB_AGREEMENT(orbiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1) {
  expectEncodersAgree(build, Pass::kDCFirst, random);
}
ORB_AGREEMENT(orbiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1) {
  expectEncodersAgree(build, Pass::kDCRefine, random);
}
ORB_AGREEMENT(orbiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1) {
  expectEncodersAgree(build, Pass::kACFirst, random);
}
ORB_AGREEMENT(orbiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1) {
  expectEncodersAgree(build, Pass::kACRefine, random);
}

// ---- Decoders

struct DecodeArgs {
  const Orb8u* src;
  Orb32s length;
  Orb32s* position;
  Orb16s* dst;
  Orb16s* lastDC;
  Orb32s* marker;
  Orb32s ss, se;
  Orb32u al;
  const OrbiDecodeHuffmanSpec* table;
  OrbiDecodeHuffmanState* state;
};

OrbStatus decode(const TestBuild& build, Pass pass, const DecodeArgs& a) {
  switch (pass) {
    case Pass::kDCFirst:
      return ORB(orbiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1)(
          a.src, a.length, a.position, a.dst, a.lastDC, a.marker, a.al, a.table, a.state);
    case Pass::kDCRefine:
      return ORB(orbiDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1)(a.src, a.length, a.position, a.dst,
                                                              a.marker, a.al, a.state);
    case Pass::kACFirst:
      return ORB(orbiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1)(
          a.src, a.length, a.position, a.dst, a.marker, a.ss, a.se, a.al, a.table, a.state);
    case Pass::kACRefine:
      return ORB(orbiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1)(
          a.src, a.length, a.position, a.dst, a.marker, a.ss, a.se, a.al, a.table, a.state);
  }
  return orbStsErr;
}

// What a host holds while it decodes.
struct Decoder {
  GuardedSource src;
  Plane<Orb16s> block{64, 1, {0, 1}};
  Plane<Orb32s> position{1, 1, {0, 1}};
  Plane<Orb16s> lastDC{1, 1, {0, 1}};
  Plane<Orb32s> marker{1, 1, {0, 1}};
  Plane<Orb8u> state{sizeof(OrbiDecodeHuffmanState), 1, {0, 1}};

  explicit Decoder(const Bytes& bytes) : src(bytes) { start(bytes); }
  void start(const Bytes& bytes) {
    src.load(bytes);
    position.set(0, 0, 0);
    lastDC.set(0, 0, 0);
    marker.set(0, 0, 0);
    state.fill([] { return Orb8u{0}; });
    set(Block(64));
  }
  void set(const Block& values) {
    for (int i = 0; i < 64; ++i) block.set(i, 0, values[static_cast<size_t>(i)]);
  }
  Orb16s at(int k) const { return block.at(zigzag()[static_cast<size_t>(k)]); }
  OrbiDecodeHuffmanState* record() {
    return reinterpret_cast<OrbiDecodeHuffmanState*>(state.data());
  }
  DecodeArgs args(const ProgressiveScan& scan, const OrbiDecodeHuffmanSpec& table) {
    return {src.data(), src.size(), position.data(), block.data(), lastDC.data(), marker.data(),
            scan.ss,    scan.se,    scan.al,         &table,       record()};
  }
  OrbStatus decode(const TestBuild& build, const ProgressiveScan& scan,
                   const OrbiDecodeHuffmanSpec& table) {
    const OrbStatus status = ::decode(build, scan.pass, args(scan, table));
    block.expectOutsideUntouched();
    position.expectOutsideUntouched();
    lastDC.expectOutsideUntouched();
    marker.expectOutsideUntouched();
    state.expectOutsideUntouched();
    return status;
  }
  OrbStatus decode(const TestBuild& build, const ProgressiveScan& scan, const Table& table) {
    return decode(build, scan, table.decoder);
  }
  void expectLike(const ProgressiveDecoderModel& model) {
    ASSERT_EQ(position.at(0), model.reader.position);
    ASSERT_EQ(lastDC.at(0), model.lastDC);
    ASSERT_EQ(marker.at(0), model.reader.marker);
    ASSERT_EQ(record()->bitCount, model.reader.left);
    ASSERT_EQ(record()->bitBuffer, model.reader.bitBuffer());
    ASSERT_EQ(record()->bitBufferHigh, 0u);
    ASSERT_EQ(record()->eobRun, model.eobRun);
    ASSERT_EQ(record()->lastPosition, 0);
  }
  void expectSame(const Decoder& other) const {
    ASSERT_TRUE(block.sameBytes(other.block));
    ASSERT_TRUE(position.sameBytes(other.position));
    ASSERT_TRUE(lastDC.sameBytes(other.lastDC));
    ASSERT_TRUE(marker.sameBytes(other.marker));
    ASSERT_TRUE(state.sameBytes(other.state));
  }
};

// What is known of a block in front of a scan, if scans from some bit downwards were read before
// it, and behind it.
Block blockAbove(const Block& block, const ProgressiveScan& scan, int al) {
  Block known(64);
  if (!scan.isAC()) known[0] = static_cast<Orb16s>((block[0] >> al) * (1 << al));
  for (int k = scan.ss; scan.isAC() && k <= scan.se; ++k) {
    const size_t i = static_cast<size_t>(zigzag()[static_cast<size_t>(k)]);
    known[i] = static_cast<Orb16s>(block[i] / (1 << al) * (1 << al));
  }
  return known;
}
Block blockBefore(const Block& block, const ProgressiveScan& scan) {
  if (scan.pass == Pass::kDCFirst || scan.pass == Pass::kACFirst) return Block(64);
  return blockAbove(block, scan, static_cast<int>(scan.al) + 1);
}
Block blockBehind(const Block& block, const ProgressiveScan& scan) {
  return blockAbove(block, scan, static_cast<int>(scan.al));
}

// Decodes until a call fails or the blocks are at an end, comparing everything with the model.
void expectDecodesAs(const TestBuild& build, const ProgressiveScan& scan, const Bytes& bytes,
                     const std::vector<Block>& blocks, const Table& table) {
  if (bytes.empty()) return;  // there is no address for them
  Decoder decoder(bytes);
  ProgressiveDecoderModel model;
  model.reader.src = &bytes;
  for (const Block& block : blocks) {
    Block expected = blockBefore(block, scan);
    decoder.set(expected);
    const OrbStatus status = model.decode(scan, expected, table.model);
    ASSERT_EQ(decoder.decode(build, scan, table), status);
    ASSERT_EQ(decoder.block.samples(), expected);
    decoder.expectLike(model);
    if (testing::Test::HasFatalFailure() || status != orbStsNoErr) return;
  }
}

void expectDecoderChecks(const TestBuild& build, Pass pass) {
  using Faults = std::vector<orbtest::Fault<DecodeArgs>>;
  const ProgressiveScan scan = {pass, 1, 63, 0};
  Decoder d(Bytes(8));
  const DecodeArgs good = d.args(scan, fullTable().decoder);
  const auto call = [&](const DecodeArgs& args) { return decode(build, pass, args); };
  Faults faults = {
      {orbStsNullPtrErr, [](DecodeArgs& a) { a.src = nullptr; }},
      {orbStsSizeErr, [](DecodeArgs& a) { a.length = 0; }},
      {orbStsSizeErr, [](DecodeArgs& a) { a.length = kLeast; }},
      {orbStsNullPtrErr, [](DecodeArgs& a) { a.position = nullptr; }},
      {orbStsNullPtrErr, [](DecodeArgs& a) { a.dst = nullptr; }},
      {orbStsNullPtrErr, [](DecodeArgs& a) { a.marker = nullptr; }},
  };
  if (pass == Pass::kDCFirst) {
    faults.push_back({orbStsNullPtrErr, [](DecodeArgs& a) { a.lastDC = nullptr; }});
  }
  if (scan.isAC()) {
    faults.push_back({orbStsBadArgErr, [](DecodeArgs& a) { a.ss = 0; }});
  }
  faults.push_back({orbStsBadArgErr, [](DecodeArgs& a) { a.al = 14; }});
  if (pass != Pass::kDCRefine) {
    faults.push_back({orbStsNullPtrErr, [](DecodeArgs& a) { a.table = nullptr; }});
  }
  faults.push_back({orbStsNullPtrErr, [](DecodeArgs& a) { a.state = nullptr; }});
  orbtest::expectChecks(faults, good, call);
  if (scan.isAC()) expectBandTest(good, call);
  for (const Orb32u al : {14u, 32u, 0xFFFFFFFFu}) {
    DecodeArgs shifted = good;
    shifted.al = al;
    EXPECT_EQ(call(shifted), orbStsBadArgErr);
  }
  d.block.expectUntouched();
  d.position.expectUntouched();
  d.lastDC.expectUntouched();
  d.marker.expectUntouched();
  d.state.expectUntouched();
  Decoder highest(bytesOf(""));
  EXPECT_EQ(highest.decode(build, {pass, 63, 63, 13}, shortTable()), orbStsNoErr);
}
MEANING_OF_DECODERS(ChecksInOrder, expectDecoderChecks)

// Bits, with spaces between symbols and values, and what they make of blocks.
struct KnownBlocks {
  ProgressiveScan scan;
  const char* bits;
  std::vector<std::pair<Block, Block>> blocks;  // before and behind
};
void expectKnownBlocks(const TestBuild& build, const std::vector<KnownBlocks>& scans,
                       const Table& table) {
  for (const KnownBlocks& known : scans) {
    const std::string bits = bitsIn(known.bits);
    Decoder decoder(bytesOf(bits));
    for (const auto& [before, behind] : known.blocks) {
      decoder.set(before);
      ASSERT_EQ(decoder.decode(build, known.scan, table), orbStsNoErr);
      EXPECT_EQ(decoder.block.samples(), behind) << known.bits;
    }
    const int taken = decoder.position.at(0) * 8 - decoder.record()->bitCount;
    EXPECT_EQ(taken, static_cast<int>(bits.size())) << known.bits;
    EXPECT_EQ(decoder.record()->eobRun, 0) << known.bits;
  }
}

ORB_MEANING(orbiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1, KnownBlocks) {
  const auto scan = [](Orb32u al) { return ProgressiveScan{Pass::kDCFirst, 0, 0, al}; };
  const auto dc = [](int value) { return blockOf({{0, value}, {1, 7}}); };
  expectKnownBlocks(
      build,
      {
          {scan(0), "100 101", {{dc(-9), dc(5)}}},
          {scan(0), "100 010", {{dc(0), dc(-5)}}},
          {scan(2), "100 101 011 01 00", {{dc(0), dc(20)}, {dc(0), dc(12)}, {dc(1), dc(12)}}},
          // Shifted out at the top.
          {scan(13), "100 101", {{dc(0), dc(-24576)}}},
      },
      Table(orbtest::luminanceDC()));
}

ORB_MEANING(orbiDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1, KnownBlocks) {
  const auto scan = [](Orb32u al) { return ProgressiveScan{Pass::kDCRefine, 0, 0, al}; };
  const auto dc = [](int value) { return blockOf({{0, value}, {1, 7}}); };
  expectKnownBlocks(build,
                    {
                        {scan(0), "1", {{dc(4), dc(5)}}},
                        {scan(0), "0", {{dc(4), dc(4)}}},
                        {scan(0), "1", {{dc(5), dc(5)}}},
                        {scan(0), "0", {{dc(5), dc(5)}}},
                        // -4 is ...1100.
                        {scan(0), "1", {{dc(-4), dc(-3)}}},
                        {scan(1), "11", {{dc(-4), dc(-2)}, {dc(0), dc(2)}}},
                        {scan(13), "1", {{dc(0), dc(8192)}}},
                    },
                    shortTable());
}

ORB_MEANING(orbiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1, KnownBlocks) {
  const auto scan = [](Orb32s ss, Orb32s se, Orb32u al) {
    return ProgressiveScan{Pass::kACFirst, ss, se, al};
  };
  const Block zeros(64), any = blockOf({{0, 5}, {1, -9}, {2, 8}, {63, 3}});
  expectKnownBlocks(build,
                    {
                        {scan(1, 5, 0), "0 1 10", {{zeros, blockOf({{1, 1}})}}},
                        {scan(1, 5, 0), "110 01 10", {{zeros, blockOf({{1, -2}})}}},
                        {scan(3, 5, 2), "110 01 10", {{zeros, blockOf({{3, -8}})}}},
                        {scan(5, 5, 0), "110 10", {{zeros, blockOf({{5, 2}})}}},
                        // What is not coded stays as it is.
                        {scan(1, 63, 0), "10", {{any, any}}},
                        {scan(1, 63, 0), "11110 0 1 10", {{zeros, blockOf({{17, 1}})}}},
                        // 16 zeros may be the last that a band has, or end behind it.
                        {scan(1, 16, 0), "11110", {{any, any}}},
                        {scan(1, 5, 0), "11110", {{any, any}}},
                        {scan(60, 63, 0), "11110", {{any, any}}},
                        // Runs of two and of three blocks.
                        {scan(1, 63, 0), "1110 0", {{any, any}, {zeros, zeros}}},
                        {scan(1, 63, 0), "1110 1", {{any, any}, {zeros, zeros}, {any, any}}},
                        {scan(1, 2, 0),
                         "0 1 1110 0 0 0 10",
                         {{zeros, blockOf({{1, 1}})}, {any, any}, {zeros, blockOf({{1, -1}})}}},
                    },
                    shortTable());
}

ORB_MEANING(orbiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1, KnownBlocks) {
  const auto scan = [](Orb32s ss, Orb32s se, Orb32u al) {
    return ProgressiveScan{Pass::kACRefine, ss, se, al};
  };
  const Block zeros(64);
  const auto both = [](const Block& block) { return std::make_pair(block, block); };
  expectKnownBlocks(
      build,
      {
          {scan(1, 1, 0), "0 1", {{zeros, blockOf({{1, 1}})}}},
          {scan(1, 5, 2), "0 0 10", {{zeros, blockOf({{1, -4}})}}},
          // Corrections on the way to the place of a new coefficient.
          {scan(1, 5, 0),
           "0 0 1 0 10",
           {{blockOf({{1, 2}, {2, -6}}), blockOf({{1, 3}, {2, -6}, {3, -1}})}}},
          // Behind the last new one.
          {scan(1, 5, 0), "0 1 10 1", {{blockOf({{2, -2}}), blockOf({{1, 1}, {2, -3}})}}},
          {scan(1, 2, 1), "10 11", {{blockOf({{1, -4}, {2, 4}}), blockOf({{1, -6}, {2, 6}})}}},
          // A bit that is set already stays, and so does the value.
          {scan(1, 3, 0), "10 110", {both(blockOf({{1, 3}, {2, -3}, {3, 5}}))}},
          {scan(1, 2, 13), "10 11", {both(blockOf({{1, 32767}, {2, -8191}}))}},
          // Corrections within a run of blocks.
          {scan(1, 2, 0),
           "1110 1 1 0 1",
           {{blockOf({{1, 2}}), blockOf({{1, 3}})},
            {blockOf({{2, 2}}), blockOf({{2, 2}})},
            {blockOf({{1, -2}, {5, 4}}), blockOf({{1, -3}, {5, 4}})}}},
          // A run of 16 zeros, with corrections among them.
          {scan(1, 63, 0),
           "11110 1 11111110 1 10",
           {{blockOf({{1, 2}}), blockOf({{1, 3}, {20, 1}})}}},
          {scan(1, 16, 0), "11110", {both(zeros)}},
          {scan(1, 5, 0), "11110 0", {both(blockOf({{2, 2}}))}},
          // Another category counts as 1.
          {scan(1, 5, 0), "110 1 10", {{zeros, blockOf({{1, 1}})}}},
      },
      shortTable());
}

// Scans that the model has written, from all that was known before to all that is known behind.
void expectRoundTrips(const TestBuild& build, Pass pass) {
  Random random("round trips");
  for (int round = 0; round < 100; ++round) {
    const ProgressiveScan scan = anyScan(pass, random);
    const std::vector<Block> blocks = anyBlocks(random, 6);
    const Bytes bytes = encodedScan(scan, blocks, fullTable().codes);
    if (bytes.empty()) continue;
    Decoder decoder(bytes);
    for (const Block& block : blocks) {
      decoder.set(blockBefore(block, scan));
      ASSERT_EQ(decoder.decode(build, scan, fullTable()), orbStsNoErr);
      ASSERT_EQ(decoder.block.samples(), blockBehind(block, scan));
    }
    EXPECT_EQ(decoder.position.at(0), static_cast<int>(bytes.size()));
    EXPECT_LT(decoder.record()->bitCount, 8);
    std::vector<Block> more = blocks;
    more.insert(more.end(), blocks.begin(), blocks.end());
    expectDecodesAs(build, scan, bytes, more, fullTable());
    if (testing::Test::HasFailure()) return;
  }
}
MEANING_OF_DECODERS(RoundTrips, expectRoundTrips)

// Blocks through all the scans of a script, one scan's bytes at a time.
ORB_MEANING(orbiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1, WholePictures) {
  Random random("whole pictures");
  for (int round = 0; round < 25; ++round) {
    const std::vector<Block> blocks = anyBlocks(random, random.between(1, 12));
    std::vector<Block> decoded(blocks.size(), Block(64));
    for (const ProgressiveScan& scan : orbtest::randomScript(random)) {
      Encoder encoder(static_cast<int>(blocks.size()) * 600);
      for (const Block& block : blocks) {
        ASSERT_EQ(encoder.encode(build, scan, block, fullTable()), orbStsNoErr);
      }
      ASSERT_EQ(encoder.flush(build, scan, fullTable()), orbStsNoErr);
      ASSERT_EQ(encoder.written(), encodedScan(scan, blocks, fullTable().codes));
      Decoder decoder(encoder.written());
      for (Block& block : decoded) {
        decoder.set(block);
        ASSERT_EQ(decoder.decode(build, scan, fullTable()), orbStsNoErr);
        block = decoder.block.samples();
      }
      ASSERT_EQ(decoder.position.at(0), encoder.position.at(0));
    }
    ASSERT_EQ(decoded, blocks);
  }
}

// Sources that end, with and without a marker, with fill bytes or a lone 255, at each byte.
void expectDamagedEnds(const TestBuild& build, Pass pass) {
  Random random("damaged ends");
  const Bytes inserts[] = {{}, {255, 0xD9}, {255, 255, 0xD0}, {255, 255, 255, 0}, {255}};
  for (int round = 0; round < 2; ++round) {
    const ProgressiveScan scan = {pass, 1, 40, static_cast<Orb32u>(round)};
    std::vector<Block> blocks;
    for (int i = 0; i < 4; ++i) blocks.push_back(randomBlock(random, 40, 4, 8));
    const Bytes bytes = encodedScan(scan, blocks, fullTable().codes);
    for (size_t at = 0; at <= bytes.size(); ++at) {
      for (const Bytes& insert : inserts) {
        Bytes damaged = bytes;
        damaged.insert(damaged.begin() + static_cast<ptrdiff_t>(at), insert.begin(), insert.end());
        expectDecodesAs(build, scan, damaged, blocks, fullTable());
        damaged.resize(at + insert.size());
        expectDecodesAs(build, scan, damaged, blocks, fullTable());
        if (testing::Test::HasFailure()) return;
      }
    }
  }
}
MEANING_OF_DECODERS(DamagedEnds, expectDamagedEnds)

// What a call without a bit to read says, and that it leaves block and predictor alone.
void expectNothingToRead(const TestBuild& build, Pass pass) {
  const ProgressiveScan scan = {pass, 1, 63, 0};
  Random random("nothing to read");
  Block block(64);
  for (Orb16s& value : block) value = random.any<Orb16s>();
  struct Case {
    Bytes bytes;
    Orb32s position, marker;
    OrbStatus status;
    Orb32s positionBehind, markerBehind;
  };
  const Case cases[] = {
      {{0}, 1, 0, orbStsJpegBufferEndErr, 1, 0},
      {{255}, 0, 0, orbStsJpegBufferEndErr, 1, 0},
      {{0}, -1, 0, orbStsJpegBufferEndErr, -1, 0},
      {{0}, kLeast, 0, orbStsJpegBufferEndErr, kLeast, 0},
      {{0}, kMost, 0, orbStsJpegBufferEndErr, kMost, 0},
      // Behind a marker nothing is read.
      {{0, 0, 0, 0}, 0, 0xD9, orbStsJpegBitStreamErr, 0, 0xD9},
  };
  for (const Case& c : cases) {
    Decoder decoder(c.bytes);
    decoder.set(block);
    decoder.position.set(0, 0, c.position);
    decoder.marker.set(0, 0, c.marker);
    EXPECT_EQ(decoder.decode(build, scan, fullTable()), c.status);
    EXPECT_EQ(decoder.position.at(0), c.positionBehind);
    EXPECT_EQ(decoder.marker.at(0), c.markerBehind);
    EXPECT_EQ(decoder.block.samples(), block);
    EXPECT_EQ(decoder.lastDC.at(0), 0);
    EXPECT_EQ(decoder.record()->bitCount, 0);
  }
}
MEANING_OF_DECODERS(NothingToRead, expectNothingToRead)

// Codes that match nothing: 17 bits are gone.
void expectNoCode(const TestBuild& build, Pass pass) {
  const Table none(unary({}));
  Decoder decoder(Bytes(8, 0x55));
  EXPECT_EQ(decoder.decode(build, {pass, 1, 63, 0}, none), orbStsJpegBitStreamErr);
  EXPECT_EQ(decoder.position.at(0) * 8 - decoder.record()->bitCount, 17);
  EXPECT_EQ(decoder.block.samples(), Block(64));
}
ORB_MEANING(orbiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1, CodesThatMatchNothing) {
  expectNoCode(build, Pass::kDCFirst);
}
ORB_MEANING(orbiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1, CodesThatMatchNothing) {
  expectNoCode(build, Pass::kACFirst);
}
ORB_MEANING(orbiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1, CodesThatMatchNothing) {
  expectNoCode(build, Pass::kACRefine);
}

ORB_MEANING(orbiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1, ThePredictorWraps) {
  Decoder decoder(bytesOf("10 111111111111111"));
  decoder.lastDC.set(0, 0, 32767);
  ASSERT_EQ(decoder.decode(build, {Pass::kDCFirst, 0, 0, 1}, Table(unary({0, 15}))), orbStsNoErr);
  EXPECT_EQ(decoder.lastDC.at(0), -2);
  EXPECT_EQ(decoder.block.at(0), -4);
}

// Of a symbol above 15 the low half counts; 16 has no bits.
ORB_MEANING(orbiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1, OnlyTheLowHalfOfASymbolCounts) {
  const Table table(unary({16, 0x23}));
  Decoder decoder(
      bytesOf("0 10"
              "101"));
  ASSERT_EQ(decoder.decode(build, {Pass::kDCFirst, 0, 0, 0}, table), orbStsNoErr);
  EXPECT_EQ(decoder.block.at(0), 0);
  ASSERT_EQ(decoder.decode(build, {Pass::kDCFirst, 0, 0, 0}, table), orbStsNoErr);
  EXPECT_EQ(decoder.block.at(0), 5);
}

ORB_MEANING(orbiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1, ARunReadsNothing) {
  Random random("run");
  Decoder decoder(Bytes(3, 255));
  decoder.block.fillAny(random);
  decoder.record()->eobRun = 2;
  decoder.record()->bitBuffer = 0xABCDEF01;
  decoder.record()->bitCount = 3;
  for (const int left : {1, 0}) {
    EXPECT_EQ(decoder.decode(build, {Pass::kACFirst, 1, 63, 0}, fullTable()), orbStsNoErr);
    EXPECT_EQ(decoder.record()->eobRun, left);
    EXPECT_EQ(decoder.record()->bitBuffer, 0xABCDEF01);
    EXPECT_EQ(decoder.record()->bitCount, 3);
  }
  decoder.block.expectUntouched();
  decoder.position.expectUntouched();
  decoder.marker.expectUntouched();
  EXPECT_EQ(decoder.decode(build, {Pass::kACFirst, 1, 63, 0}, fullTable()), orbStsJpegBufferEndErr);
}

// A run of every number of bits, all of them set, up to 32767 blocks.
void expectDecodedRuns(const TestBuild& build, Pass pass) {
  for (int n = 0; n <= 14; ++n) {
    const Table table(unary({static_cast<Orb8u>(n * 16)}));
    Decoder decoder(bytesOf("0" + std::string(static_cast<size_t>(n), '1')));
    EXPECT_EQ(decoder.decode(build, {pass, 1, 63, 0}, table), orbStsNoErr);
    EXPECT_EQ(decoder.record()->eobRun, (2 << n) - 2);
    EXPECT_EQ(decoder.block.samples(), Block(64));
  }
}
MEANING_OF_AC_DECODERS(RunsOfBlocks, expectDecodedRuns)

// A run whose number is cut off is none; one whose first correction is cut off is there.
void expectCutRuns(const TestBuild& build, Pass pass) {
  const ProgressiveScan scan = {pass, 1, 63, 0};
  const Table table(unary({0xC0, 0x10, 0x40}));
  Decoder number({0x0F});  // 0, and 7 of 12 bits
  EXPECT_EQ(number.decode(build, scan, table), orbStsJpegBufferEndErr);
  EXPECT_EQ(number.record()->eobRun, 0);
  EXPECT_EQ(number.record()->bitCount, 7);
  Decoder whole({0xDF});  // 110, 1111 and one bit more
  whole.set(blockOf({{3, 2}, {4, -2}}));
  EXPECT_EQ(whole.decode(build, scan, table),
            pass == Pass::kACFirst ? orbStsNoErr : orbStsJpegBufferEndErr);
  EXPECT_EQ(whole.record()->eobRun, pass == Pass::kACFirst ? 30 : 31);
  // As far as the bits go.
  EXPECT_EQ(whole.at(3), pass == Pass::kACFirst ? 2 : 3);
  EXPECT_EQ(whole.at(4), -2);
}
MEANING_OF_AC_DECODERS(RunsThatAreCutOff, expectCutRuns)

// 15 zeros and a 1: 0. A 1: 10. 16 zeros: 110.
const Table& runTable() {
  static const Table table(unary({0xF1, 0x01, 0xF0, 0x00}));
  return table;
}

ORB_MEANING(orbiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1, ValuesBehindTheBand) {
  // Within the block they are stored.
  Decoder within(bytesOf("0 1"));
  EXPECT_EQ(within.decode(build, {Pass::kACFirst, 1, 5, 0}, runTable()), orbStsNoErr);
  EXPECT_EQ(within.block.samples(), blockOf({{16, 1}}));
  // Behind it they are the last coefficient, and nothing behind position 71.
  for (int ss = 48; ss <= 63; ++ss) {
    Decoder decoder(bytesOf("0 1"));
    const int k = ss + 15;
    EXPECT_EQ(decoder.decode(build, {Pass::kACFirst, ss, 63, 0}, runTable()),
              k > 71 ? orbStsErr : orbStsNoErr);
    EXPECT_EQ(decoder.block.samples(), k > 71 ? Block(64) : blockOf({{std::min(k, 63), 1}}));
    EXPECT_EQ(decoder.position.at(0) * 8 - decoder.record()->bitCount, 2);
  }
  // What came before a value that has no place stays.
  Decoder late(
      bytesOf("10 0"
              "0 1"));
  EXPECT_EQ(late.decode(build, {Pass::kACFirst, 60, 63, 0}, runTable()), orbStsErr);
  EXPECT_EQ(late.block.samples(), blockOf({{60, -1}}));
}

// A new coefficient for which there are too few zeros.
ORB_MEANING(orbiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1, ValuesBehindTheBand) {
  const auto decoded = [&](Orb32s ss, Orb32s se, const Block& before, const std::string& bits) {
    Decoder decoder(bytesOf(bits));
    decoder.set(before);
    EXPECT_EQ(decoder.decode(build, {Pass::kACRefine, ss, se, 1}, runTable()), orbStsNoErr);
    EXPECT_EQ(decoder.position.at(0) * 8 - decoder.record()->bitCount,
              static_cast<int>(bitsIn(bits).size()));
    return decoder.block.samples();
  };
  const Block zeros(64);
  EXPECT_EQ(decoded(3, 5, zeros, "0 1"), blockOf({{6, 2}}));
  EXPECT_EQ(decoded(3, 5, blockOf({{6, 100}}), "0 0"), blockOf({{6, -2}}));
  EXPECT_EQ(decoded(3, 62, blockOf({}),
                    "0 1"
                    "0 1"
                    "0 1"
                    "0 1"),
            blockOf({{18, 2}, {34, 2}, {50, 2}, {63, 2}}));
  EXPECT_EQ(decoded(50, 63, zeros, "0 1"), blockOf({{63, 2}}));
  // The last coefficient is corrected, and then replaced.
  EXPECT_EQ(decoded(60, 63, blockOf({{63, 12}}),
                    "0 0"
                    "1"),
            blockOf({{63, -2}}));
  // A band without a zero.
  EXPECT_EQ(decoded(1, 2, blockOf({{1, 4}, {2, -4}}),
                    "10 1"
                    "1 0"),
            blockOf({{1, 6}, {2, -4}, {3, 2}}));
}

// A state that no call leaves.
ORB_MEANING(orbiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1, ANegativeRunReadsNothing) {
  Decoder decoder(bytesOf("0 1"));
  decoder.set(blockOf({{1, 2}}));
  decoder.record()->eobRun = -1;
  EXPECT_EQ(decoder.decode(build, {Pass::kACRefine, 1, 63, 0}, runTable()), orbStsNoErr);
  EXPECT_EQ(decoder.block.samples(), blockOf({{1, 2}}));
  EXPECT_EQ(decoder.record()->eobRun, -1);
  EXPECT_EQ(decoder.position.at(0), 0);
}

// ---- Agreement of the decoders

// Tables that the decoder takes, most of them overfull.
const std::vector<Table>& decoderTables() {
  static const std::vector<Table> all = [] {
    Random random("decoder tables");
    std::vector<Table> tables = {fullTable(), shortTable(), runTable()};
    while (tables.size() < 12) tables.emplace_back(orbtest::overfullLists(random));
    return tables;
  }();
  return all;
}
const Table& anyDecoderTable(Random& random) {
  return decoderTables()[random.between<size_t>(0, decoderTables().size() - 1)];
}

Bytes mutatedScan(const ProgressiveScan& scan, const std::vector<Block>& blocks, const Table& table,
                  Random& random) {
  Bytes bytes = encodedScan(scan, blocks, table.codes);
  // Symbols without a code leave little.
  while (bytes.size() < 12) bytes.push_back(random.any<Orb8u>());
  return orbtest::mutated(bytes, random);
}

void expectMutatedScans(const TestBuild& build, Pass pass) {
  Random random("mutated scans");
  for (int round = 0; round < 300; ++round) {
    const ProgressiveScan scan = anyScan(pass, random);
    const Table& table = anyDecoderTable(random);
    const std::vector<Block> blocks = anyBlocks(random, 4);
    expectDecodesAs(build, scan, mutatedScan(scan, blocks, table, random), blocks, table);
    if (testing::Test::HasFailure()) return;
  }
}
MEANING_OF_DECODERS(MutatedScans, expectMutatedScans)

void expectDecodersAgree(const TestBuild& build, Pass pass, Random& random) {
  const TestBuild px = {orb::kPx, "px"};
  Decoder expected({}), actual({});
  for (int scans = 0; scans < 300; ++scans) {
    const ProgressiveScan scan = anyScan(pass, random);
    Table table = anyDecoderTable(random);
    const std::vector<Block> blocks = anyBlocks(random, 4);
    const Bytes bytes = mutatedScan(scan, blocks, table, random);
    const bool damaged = random.oneIn(5);
    if (damaged) orbtest::fillAny(table.decoder, random);
    for (int round = 0; round < 10; ++round) {
      const Bytes mutated = orbtest::mutated(bytes, random);
      if (mutated.empty()) continue;
      expected.start(mutated);
      actual.start(mutated);
      if (damaged) expected.state.fillExtreme(random);
      if (random.oneIn(3)) expected.record()->eobRun = random.between(0, 3);
      actual.state.copySamples(expected.state);
      for (const Block& block : blocks) {
        expected.set(blockBefore(block, scan));
        if (random.oneIn(8)) expected.block.fillExtreme(random);
        actual.block.copySamples(expected.block);
        const OrbStatus status = expected.decode(px, scan, table);
        ASSERT_EQ(actual.decode(build, scan, table), status);
        actual.expectSame(expected);
        if (testing::Test::HasFatalFailure()) return;
        // As a host that goes on without setting the state anew.
        if (random.oneIn(4)) {
          expected.marker.set(0, 0, 0);
          actual.marker.set(0, 0, 0);
        }
      }
    }
  }
}
ORB_AGREEMENT(orbiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1) {
  expectDecodersAgree(build, Pass::kDCFirst, random);
}
ORB_AGREEMENT(orbiDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1) {
  expectDecodersAgree(build, Pass::kDCRefine, random);
}
ORB_AGREEMENT(orbiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1) {
  expectDecodersAgree(build, Pass::kACFirst, random);
}
ORB_AGREEMENT(orbiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1) {
  expectDecodersAgree(build, Pass::kACRefine, random);
}

// ---- Statistics

struct CountArgs {
  const Orb16s* src;
  Orb32s* statistics;
  Orb16s* lastDC;
  Orb32s ss, se;
  Orb32u al;
  OrbiEncodeHuffmanState* state;
  Orb32s flush;
};

OrbStatus count(const TestBuild& build, Pass pass, const CountArgs& a) {
  switch (pass) {
    case Pass::kDCFirst:
      return ORB(orbiGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1)(a.src, a.statistics, a.lastDC,
                                                                  a.al);
    case Pass::kACFirst:
      return ORB(orbiGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1)(a.src, a.statistics, a.ss, a.se,
                                                                  a.al, a.state, a.flush);
    case Pass::kACRefine:
      return ORB(orbiGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1)(a.src, a.statistics, a.ss, a.se,
                                                                   a.al, a.state, a.flush);
    case Pass::kDCRefine:
      break;
  }
  return orbStsErr;
}

// What a host holds while it counts. The encoder's destination stays empty.
struct Counter {
  Encoder encoder{1};
  Plane<Orb32s> statistics{256, 1, {0, 1}};

  Counter() {
    statistics.fill([] { return 0; });
  }
  CountArgs args(const ProgressiveScan& scan) {
    return {encoder.block.data(),
            statistics.data(),
            encoder.lastDC.data(),
            scan.ss,
            scan.se,
            scan.al,
            encoder.record(),
            0};
  }
  OrbStatus count(const TestBuild& build, const ProgressiveScan& scan, const Block& values) {
    for (int i = 0; i < 64; ++i) encoder.block.set(i, 0, values[static_cast<size_t>(i)]);
    const OrbStatus status = ::count(build, scan.pass, args(scan));
    encoder.expectMargins();
    statistics.expectOutsideUntouched();
    return status;
  }
  OrbStatus flush(const TestBuild& build, const ProgressiveScan& scan) {
    CountArgs a = args({scan.pass, 0, 99, 99});
    a.src = nullptr;
    a.flush = -7;
    const OrbStatus status = ::count(build, scan.pass, a);
    encoder.expectMargins();
    statistics.expectOutsideUntouched();
    return status;
  }
  int at(int symbol) const { return statistics.at(symbol); }
  int total() const {
    int sum = 0;
    for (const Orb32s n : statistics.samples()) sum += n;
    return sum;
  }
};

ORB_MEANING(orbiGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1, ChecksInOrder) {
  Counter c;
  orbtest::expectChecks(
      std::vector<orbtest::Fault<CountArgs>>{
          {orbStsNullPtrErr, [](CountArgs& a) { a.src = nullptr; }},
          {orbStsNullPtrErr, [](CountArgs& a) { a.statistics = nullptr; }},
          {orbStsNullPtrErr, [](CountArgs& a) { a.lastDC = nullptr; }},
          {orbStsBadArgErr, [](CountArgs& a) { a.al = 14; }},
          {orbStsBadArgErr, [](CountArgs& a) { a.al = 0xFFFFFFFF; }},
      },
      c.args({Pass::kDCFirst, 0, 0, 0}),
      [&](const CountArgs& args) { return count(build, Pass::kDCFirst, args); });
  c.statistics.expectUntouched();
  c.encoder.lastDC.expectUntouched();
}

void expectCounterChecks(const TestBuild& build, Pass pass) {
  using Faults = std::vector<orbtest::Fault<CountArgs>>;
  Counter c;
  c.encoder.setPending(3);
  const CountArgs good = c.args({pass, 1, 63, 0});
  const auto call = [&](const CountArgs& args) { return count(build, pass, args); };
  Faults faults = {
      {orbStsNullPtrErr, [](CountArgs& a) { a.statistics = nullptr; }},
      {orbStsNullPtrErr, [](CountArgs& a) { a.state = nullptr; }},
  };
  CountArgs flush = good;
  flush.flush = 1;
  orbtest::expectChecks(faults, flush, call);
  faults.push_back({orbStsNullPtrErr, [](CountArgs& a) { a.src = nullptr; }});
  faults.push_back({orbStsBadArgErr, [](CountArgs& a) { a.ss = 0; }});
  faults.push_back({orbStsBadArgErr, [](CountArgs& a) { a.al = 14; }});
  orbtest::expectChecks(faults, good, call);
  expectBandTest(good, call);
  c.statistics.expectUntouched();
  EXPECT_EQ(c.encoder.record()->eobRun, 3);
  EXPECT_EQ(c.flush(build, {pass, 1, 63, 0}), orbStsNoErr);
  EXPECT_EQ(c.at(0x10), 1);
}
MEANING_OF_AC_COUNTERS(ChecksInOrder, expectCounterChecks)

// Added to what is there, against the model; the bits of the state are nobody's business.
void expectAnyCounts(const TestBuild& build, Pass pass) {
  Random random("any counts");
  for (int round = 0; round < 200; ++round) {
    ProgressiveScan scan = anyScan(pass, random);
    Counter counter;
    counter.statistics.fill([&] { return random.between(-1000, 1000); });
    counter.encoder.record()->bitBuffer = 0xABCDEF;
    counter.encoder.record()->bitCount = 3;
    std::vector<Orb32s> counts = counter.statistics.samples();
    ProgressiveEncoderModel model;
    model.counts = &counts;
    std::vector<Block> blocks = anyBlocks(random, 8);
    if (random.oneIn(4)) {
      for (Orb16s& value : blocks.back()) value = random.extreme<Orb16s>();
    }
    for (const Block& block : blocks) {
      const OrbStatus status = model.code(scan, block, fullTable().codes);
      ASSERT_EQ(counter.count(build, scan, block), status);
      ASSERT_EQ(counter.statistics.samples(), counts);
      ASSERT_EQ(counter.encoder.lastDC.at(0), model.lastDC);
      const OrbiEncodeHuffmanState& state = *counter.encoder.record();
      ASSERT_EQ(state.eobRun, model.eobRun);
      ASSERT_EQ(state.correctionCount, static_cast<Orb32s>(model.held.size()));
      ASSERT_EQ(state.bitBuffer, 0xABCDEFu);
      ASSERT_EQ(state.bitCount, 3);
    }
    if (!scan.isAC()) continue;
    ASSERT_EQ(counter.flush(build, scan), model.flush(scan, fullTable().codes));
    ASSERT_EQ(counter.statistics.samples(), counts);
    counter.encoder.expectNothingPending();
  }
}
MEANING_OF_COUNTERS(AnyCounts, expectAnyCounts)

ORB_MEANING(orbiGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1, DifferencesOfUpTo11Bits) {
  const ProgressiveScan scan = {Pass::kDCFirst, 0, 0, 0};
  Counter counter;
  EXPECT_EQ(counter.count(build, scan, blockOf({{0, 2047}})), orbStsNoErr);
  EXPECT_EQ(counter.at(11), 1);
  EXPECT_EQ(counter.count(build, scan, blockOf({{0, -1}})), orbStsJpegBitStreamErr);
  EXPECT_EQ(counter.encoder.lastDC.at(0), -1);
  EXPECT_EQ(counter.total(), 1);
}

// One bit less than the encoder takes.
ORB_MEANING(orbiGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1, MagnitudesOfUpTo10Bits) {
  struct Case {
    int value;
    Orb32u al;
    OrbStatus status;
  };
  const Case cases[] = {
      {1023, 0, orbStsNoErr},
      {-1023, 0, orbStsNoErr},
      {1024, 0, orbStsJpegBitStreamErr},
      {-1024, 0, orbStsJpegBitStreamErr},
      {2047, 1, orbStsNoErr},
      {2048, 1, orbStsJpegBitStreamErr},
      {-32768, 5, orbStsJpegBitStreamErr},
      {-32768, 6, orbStsNoErr},
  };
  for (const Case& c : cases) {
    Counter counter;
    counter.encoder.setPending(2);
    EXPECT_EQ(counter.count(build, {Pass::kACFirst, 1, 17, c.al}, blockOf({{17, c.value}})),
              c.status);
    EXPECT_EQ(counter.at(0x10), 1);
    EXPECT_EQ(counter.at(0xF0), 1);
    EXPECT_EQ(counter.at(10), c.status == orbStsNoErr ? 1 : 0);
    EXPECT_EQ(counter.encoder.record()->eobRun, 0);
  }
}

// Refinement knows no limit.
ORB_MEANING(orbiGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1, AnyMagnitude) {
  Counter counter;
  EXPECT_EQ(counter.count(build, {Pass::kACRefine, 1, 3, 0}, blockOf({{1, -32768}, {2, 32767}})),
            orbStsNoErr);
  EXPECT_EQ(counter.encoder.record()->correctionCount, 2);
  EXPECT_EQ(counter.encoder.record()->eobRun, 1);
  EXPECT_EQ(counter.total(), 0);
}

void expectCountedRuns(const TestBuild& build, Pass pass) {
  const ProgressiveScan scan = {pass, 1, 63, 0};
  struct Case {
    Orb32s run;
    int longest, second;  // the counts of 0xE0, and of the symbol given with it
    int symbol;
    OrbStatus status;
  };
  const Case cases[] = {
      {0, 0, 0, 0x00, orbStsNoErr},
      {1, 0, 1, 0x00, orbStsNoErr},
      {2, 0, 1, 0x10, orbStsNoErr},
      {3, 0, 1, 0x10, orbStsNoErr},
      {255, 0, 1, 0x70, orbStsNoErr},
      {256, 0, 1, 0x80, orbStsNoErr},
      {16383, 0, 1, 0xD0, orbStsNoErr},
      {16384, 1, 1, 0xE0, orbStsNoErr},
      {32767, 1, 1, 0xE0, orbStsNoErr},
      // In two parts, of which the second may be of one block here: there are no bits to write.
      {32768, 1, 1, 0x00, orbStsNoErr},
      {32769, 1, 1, 0x10, orbStsNoErr},
      {65534, 2, 2, 0xE0, orbStsNoErr},
      {65535, 1, 0, 0xF0, orbStsJpegBitStreamErr},
      {kMost, 1, 0, 0xF0, orbStsJpegBitStreamErr},
      {-1, 0, 0, 0xF0, orbStsJpegBitStreamErr},
  };
  for (const Case& c : cases) {
    for (const bool flush : {true, false}) {
      Counter counter;
      counter.encoder.setPending(c.run, "110");
      EXPECT_EQ(flush ? counter.flush(build, scan)
                      : counter.count(build, {pass, 1, 1, 0}, blockOf({{1, 1}})),
                c.status);
      const int others = flush || c.status != orbStsNoErr ? 0 : 1;
      EXPECT_EQ(counter.at(0xE0), c.longest) << c.run;
      EXPECT_EQ(counter.at(c.symbol), c.second) << c.run;
      EXPECT_EQ(counter.at(0x01), others);
      EXPECT_EQ(counter.total(), others + (c.symbol == 0xE0 ? c.longest : c.longest + c.second));
      if (flush) counter.encoder.expectNothingPending();
    }
  }
  // The run that has become 32767 blocks long is counted at once.
  Counter counter;
  counter.encoder.setPending(32766);
  EXPECT_EQ(counter.count(build, scan, Block(64)), orbStsNoErr);
  EXPECT_EQ(counter.at(0xE0), 1);
  EXPECT_EQ(counter.encoder.record()->eobRun, 0);
}
MEANING_OF_AC_COUNTERS(RunsOfBlocks, expectCountedRuns)

// 938 correction bits end a run here, too.
ORB_MEANING(orbiGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1, HoldsUpTo937CorrectionBits) {
  const ProgressiveScan scan = {Pass::kACRefine, 1, 63, 0};
  Counter counter;
  for (int i = 1; i < 15; ++i) {
    EXPECT_EQ(counter.count(build, scan, Block(64, 2)), orbStsNoErr);
    EXPECT_EQ(counter.encoder.record()->correctionCount, 63 * i);
  }
  EXPECT_EQ(counter.total(), 0);
  EXPECT_EQ(counter.count(build, scan, Block(64, 2)), orbStsNoErr);
  EXPECT_EQ(counter.at(0x30), 1);
  EXPECT_EQ(counter.encoder.record()->correctionCount, 0);
  EXPECT_EQ(counter.encoder.record()->eobRun, 0);
}

// A table of just the symbols that were counted is enough for the encoder.
void expectTableOfCounts(const TestBuild& build, Pass pass) {
  Random random("tables of counts");
  for (int round = 0; round < 20; ++round) {
    const ProgressiveScan scan = anyScan(pass, random);
    const std::vector<Block> blocks = anyBlocks(random, 8);
    Counter counter;
    for (const Block& block : blocks) {
      ASSERT_EQ(counter.count(build, scan, block), orbStsNoErr);
    }
    if (scan.isAC()) {
      ASSERT_EQ(counter.flush(build, scan), orbStsNoErr);
    }
    std::vector<Orb32s> counts = counter.statistics.samples();
    counts.push_back(0);  // one word more is read
    HuffmanLists lists = {Bytes(16), Bytes(256)};
    ASSERT_EQ(PX(orbiEncodeHuffmanRawTableInit_JPEG_8u)(counts.data(), lists.bits.data(),
                                                        lists.vals.data()),
              orbStsNoErr);
    const Table table(lists);
    Encoder encoder(6000);
    for (const Block& block : blocks) {
      ASSERT_EQ(encoder.encode(build, scan, block, table), orbStsNoErr);
    }
    ASSERT_EQ(encoder.flush(build, scan, table), orbStsNoErr);
  }
}
MEANING_OF_COUNTERS(TablesOfCounts, expectTableOfCounts)

void expectCountersAgree(const TestBuild& build, Pass pass, Random& random) {
  const TestBuild px = {orb::kPx, "px"};
  for (int round = 0; round < 600; ++round) {
    Counter expected, actual;
    if (random.oneIn(4)) {
      expected.encoder.state.fillExtreme(random);
      if (random.oneIn(2)) expected.encoder.setPending(random.between(0, 70000), "110");
      actual.encoder.state.copySamples(expected.encoder.state);
    }
    const ProgressiveScan scan = anyScan(pass, random);
    for (int i = 0; i < 5; ++i) {
      Block block = anyBlock(random);
      if (random.oneIn(10)) {
        for (Orb16s& value : block) value = random.extreme<Orb16s>();
      }
      ASSERT_EQ(actual.count(build, scan, block), expected.count(px, scan, block));
      ASSERT_TRUE(actual.statistics.sameBytes(expected.statistics));
      ASSERT_TRUE(actual.encoder.lastDC.sameBytes(expected.encoder.lastDC));
      ASSERT_TRUE(actual.encoder.state.sameBytes(expected.encoder.state));
    }
    if (!scan.isAC()) continue;
    ASSERT_EQ(actual.flush(build, scan), expected.flush(px, scan));
    ASSERT_TRUE(actual.statistics.sameBytes(expected.statistics));
    ASSERT_TRUE(actual.encoder.state.sameBytes(expected.encoder.state));
  }
}
ORB_AGREEMENT(orbiGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1) {
  expectCountersAgree(build, Pass::kDCFirst, random);
}
ORB_AGREEMENT(orbiGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1) {
  expectCountersAgree(build, Pass::kACFirst, random);
}
ORB_AGREEMENT(orbiGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1) {
  expectCountersAgree(build, Pass::kACRefine, random);
}

}  // namespace
