// Sequential Huffman block coding (ITU-T T.81 F.1.2, F.2.2).
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "jpeg/huffman_records.h"
#include "tests/jpeg/huffman_model.h"
#include "tests/support/builds.h"
#include "tests/support/guarded.h"
#include "tests/support/plane.h"

namespace {

using orbtest::blockOf;
using orbtest::bytesOf;
using orbtest::Codes;
using orbtest::codesOf;
using orbtest::DecoderTable;
using orbtest::encodeScan;
using orbtest::fillAny;
using orbtest::GuardedBytes;
using orbtest::GuardedSource;
using orbtest::HuffmanLists;
using orbtest::mutated;
using orbtest::Placement;
using orbtest::Plane;
using orbtest::Random;
using orbtest::randomBlock;
using orbtest::ReaderModel;
using orbtest::unary;
using orbtest::WriterModel;
using orbtest::zigzag;

using Block = std::vector<Orb16s>;
using Bytes = std::vector<Orb8u>;

// A pair of tables in all their forms: lists, the model's, and the library's, made by px.
struct Tables {
  Codes dcCodes, acCodes;
  DecoderTable dcTable, acTable;
  OrbiEncodeHuffmanSpec dcEncoder, acEncoder;
  OrbiDecodeHuffmanSpec dcDecoder, acDecoder;

  Tables(const HuffmanLists& dc, const HuffmanLists& ac)
      : dcCodes(codesOf(dc)), acCodes(codesOf(ac)), dcTable(dc), acTable(ac) {
    init(PX(orbiEncodeHuffmanSpecInit_JPEG_8u), dc, &dcEncoder);
    init(PX(orbiEncodeHuffmanSpecInit_JPEG_8u), ac, &acEncoder);
    init(PX(orbiDecodeHuffmanSpecInit_JPEG_8u), dc, &dcDecoder);
    init(PX(orbiDecodeHuffmanSpecInit_JPEG_8u), ac, &acDecoder);
  }

 private:
  template <class Function, class Spec>
  static void init(Function* function, const HuffmanLists& lists, Spec* spec) {
    Bytes vals = lists.vals;
    vals.push_back(0);  // so that there is an address even for no codes
    function(lists.bits.data(), vals.data(), spec);
  }
};
const Tables& typicalTables() {
  static const Tables tables(orbtest::luminanceDC(), orbtest::luminanceAC());
  return tables;
}
// Every symbol has a code, of random length.
const Tables& fullTables() {
  static const Tables tables = [] {
    Random random("full tables");
    const HuffmanLists dc = orbtest::randomLists(random), ac = orbtest::randomLists(random);
    return Tables(dc, ac);
  }();
  return tables;
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
  template <class Function>
  OrbStatus encode(Function* function, const Block& values, const Tables& tables) {
    for (int i = 0; i < 64; ++i) block.set(i, 0, values[static_cast<size_t>(i)]);
    const OrbStatus status =
        function(block.data(), dst.data(), dst.size(), position.data(), lastDC.data(),
                 &tables.dcEncoder, &tables.acEncoder, record(), 0);
    expectMargins();
    return status;
  }
  template <class Function>
  OrbStatus flush(Function* function) {
    return function(nullptr, dst.data(), dst.size(), position.data(), nullptr, nullptr, nullptr,
                    record(), 1);
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
  void expectLike(const WriterModel& model) {
    ASSERT_EQ(position.at(0), model.position);
    ASSERT_TRUE(std::equal(model.dst.begin(), model.dst.end(), dst.data()));
    ASSERT_EQ(record()->bitCount, static_cast<Orb32s>(model.pending.size()));
    ASSERT_EQ(record()->bitBuffer, model.bitBuffer());
    ASSERT_EQ(record()->bitBufferHigh, 0u);
    ASSERT_EQ(record()->eobRun, 0);
    ASSERT_EQ(record()->correctionCount, 0);
  }
};

WriterModel writerModel(const Encoder& encoder) {
  WriterModel model;
  model.dst.assign(encoder.dst.data(), encoder.dst.data() + encoder.dst.size());
  model.position = encoder.position.at(0);
  return model;
}

using EncodeFunction = decltype(legacy90orbiEncodeHuffman8x8_JPEG_16s1u_C1);
using DirectEncodeFunction = decltype(legacy90orbiEncodeHuffman8x8_Direct_JPEG_16s1u_C1);
using DecodeFunction = decltype(legacy90orbiDecodeHuffman8x8_JPEG_1u16s_C1);
using DirectDecodeFunction = decltype(legacy90orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1);
using CountFunction = decltype(legacy90orbiGetHuffmanStatistics8x8_JPEG_16s_C1);

// Encodes blocks until one fails, comparing everything with the model behind each, and flushes.
void expectEncodesAs(EncodeFunction* function, const std::vector<Block>& blocks,
                     const Tables& tables, int capacity) {
  Encoder encoder(capacity);
  WriterModel model = writerModel(encoder);
  Orb16s lastDC = 0;
  for (const Block& block : blocks) {
    const OrbStatus status = model.encode(block, lastDC, tables.dcCodes, tables.acCodes);
    ASSERT_EQ(encoder.encode(function, block, tables), status);
    ASSERT_EQ(encoder.lastDC.at(0), lastDC);
    encoder.expectLike(model);
    if (testing::Test::HasFatalFailure() || status != orbStsNoErr) break;
  }
  ASSERT_EQ(encoder.flush(function), model.flush());
  encoder.expectLike(model);
}

// ---- orbiEncodeHuffman8x8_JPEG_16s1u_C1

ORB_MEANING(orbiEncodeHuffman8x8_JPEG_16s1u_C1, ChecksInOrder) {
  const auto function = ORB(orbiEncodeHuffman8x8_JPEG_16s1u_C1);
  const Tables& tables = typicalTables();
  Encoder e(100);
  e.state.set(8, 0, 5);  // 5 bits pending
  const OrbiEncodeHuffmanSpec *dc = &tables.dcEncoder, *ac = &tables.acEncoder;
  Orb32s* const position = e.position.data();
  EXPECT_EQ(function(nullptr, nullptr, 0, nullptr, nullptr, nullptr, nullptr, nullptr, 1),
            orbStsNullPtrErr);
  Orb8u* const dst = e.dst.data();
  EXPECT_EQ(function(nullptr, dst, 0, nullptr, nullptr, nullptr, nullptr, nullptr, 1),
            orbStsSizeErr);
  EXPECT_EQ(function(nullptr, dst, -1, nullptr, nullptr, nullptr, nullptr, nullptr, 1),
            orbStsSizeErr);
  EXPECT_EQ(function(nullptr, dst, 100, nullptr, nullptr, nullptr, nullptr, e.record(), 1),
            orbStsNullPtrErr);
  EXPECT_EQ(function(nullptr, dst, 100, position, nullptr, nullptr, nullptr, nullptr, 1),
            orbStsNullPtrErr);
  const Orb16s* const src = e.block.data();
  Orb16s* const lastDC = e.lastDC.data();
  EXPECT_EQ(function(nullptr, dst, 100, position, lastDC, dc, ac, e.record(), 0), orbStsNullPtrErr);
  EXPECT_EQ(function(src, dst, 100, position, nullptr, dc, ac, e.record(), 0), orbStsNullPtrErr);
  EXPECT_EQ(function(src, dst, 100, position, lastDC, nullptr, ac, e.record(), 0),
            orbStsNullPtrErr);
  EXPECT_EQ(function(src, dst, 100, position, lastDC, dc, nullptr, e.record(), 0),
            orbStsNullPtrErr);
  e.block.expectUntouched();
  e.position.expectUntouched();
  e.lastDC.expectUntouched();
  e.state.expectUntouched();
  // A flush needs no block and no tables.
  EXPECT_EQ(function(nullptr, dst, 100, position, nullptr, nullptr, nullptr, e.record(), -7),
            orbStsNoErr);
  EXPECT_EQ(e.position.at(0), 1);
}

ORB_MEANING(orbiEncodeHuffman8x8_JPEG_16s1u_C1, KnownBits) {
  const auto function = ORB(orbiEncodeHuffman8x8_JPEG_16s1u_C1);
  struct Case {
    Block block;
    const char* bits;
  };
  const Case cases[] = {
      // DC category 0, EOB.
      {blockOf({}),
       "00"
       "1010"},
      // DC 5: category 3. DC -5.
      {blockOf({{0, 5}}),
       "100"
       "101"
       "1010"},
      {blockOf({{0, -5}}),
       "100"
       "010"
       "1010"},
      // The last coefficient leaves nothing to end: three runs of 16 zeros, then a run of 14.
      {blockOf({{63, 1}}),
       "00"
       "11111111001"
       "11111111001"
       "11111111001"
       "1111111111101011"
       "1"},
      // A run of 15 and a run of 16.
      {blockOf({{16, -1}}),
       "00"
       "1111111111110101"
       "0"
       "1010"},
      {blockOf({{17, -1}}),
       "00"
       "11111111001"
       "00"
       "0"
       "1010"},
      {blockOf({{1, 1}, {2, -2}, {4, 3}}),
       "00"
       "00"
       "1"
       "01"
       "01"
       "11011"
       "11"
       "1010"},
  };
  for (const Case& c : cases) {
    Encoder encoder(600);
    ASSERT_EQ(encoder.encode(function, c.block, typicalTables()), orbStsNoErr);
    std::string bits;
    bool stuffed = false;
    for (const Orb8u byte : encoder.written()) {
      if (!stuffed) bits += orbtest::binary(byte, 8);
      stuffed = byte == 255;
    }
    bits += orbtest::binary(encoder.record()->bitBuffer >> 16, 8)
                .substr(0, static_cast<size_t>(encoder.record()->bitCount));
    EXPECT_EQ(bits, c.bits);
  }
}

ORB_MEANING(orbiEncodeHuffman8x8_JPEG_16s1u_C1, AnyBlocks) {
  Random random("encode");
  for (int round = 0; round < 300; ++round) {
    const bool full = random.oneIn(2);
    const int percent = random.between(0, 100), bits = random.between(1, full ? 15 : 10);
    std::vector<Block> blocks;
    for (int i = 0; i < 6; ++i) {
      blocks.push_back(randomBlock(random, percent, bits, full ? 15 : 10));
    }
    expectEncodesAs(ORB(orbiEncodeHuffman8x8_JPEG_16s1u_C1), blocks,
                    full ? fullTables() : typicalTables(), 6 * 512 + 2);
    if (testing::Test::HasFailure()) return;
  }
}

// Magnitudes of 16 bits; an AC category of 16 is the next run's category 0, and behind the last run
// there is no symbol.
ORB_MEANING(orbiEncodeHuffman8x8_JPEG_16s1u_C1, ExtremeValues) {
  const auto function = ORB(orbiEncodeHuffman8x8_JPEG_16s1u_C1);
  Random random("extreme blocks");
  for (const int capacity : {5000, 511}) {
    for (int round = 0; round < 50; ++round) {
      Block first(64), second(64);
      for (Orb16s& value : first) value = random.extreme<Orb16s>();
      for (Orb16s& value : second) value = random.extreme<Orb16s>();
      expectEncodesAs(function, {first, second}, fullTables(), capacity);
    }
    const Block low = blockOf({{0, -32768}}), high = blockOf({{0, 32767}});
    expectEncodesAs(function, {low, high, low}, fullTables(), capacity);
    expectEncodesAs(function, {blockOf({{15, -32768}, {40, 5}})}, fullTables(), capacity);
    // The symbol 256.
    Encoder encoder(capacity);
    EXPECT_EQ(encoder.encode(function, blockOf({{16, -32768}}), fullTables()),
              orbStsJpegHuffTableErr);
    expectEncodesAs(function, {blockOf({{16, -32768}})}, fullTables(), capacity);
    if (testing::Test::HasFailure()) return;
  }
}

ORB_MEANING(orbiEncodeHuffman8x8_JPEG_16s1u_C1, EverySymbolMayLackItsCode) {
  const auto function = ORB(orbiEncodeHuffman8x8_JPEG_16s1u_C1);
  const Block block = blockOf({{0, 4}, {1, 1}, {20, -3}});
  // DC 3; AC 01, F0, 22, 00.
  const std::vector<Orb8u> all = {0x01, 0xF0, 0x22, 0x00};
  for (const int capacity : {600, 20}) {
    for (size_t codes = 0; codes <= 4; ++codes) {
      const Tables tables(unary({3}), unary(std::vector<Orb8u>(all.begin(), all.begin() + codes)));
      Encoder encoder(capacity);
      EXPECT_EQ(encoder.encode(function, block, tables),
                codes < 4 ? orbStsJpegHuffTableErr : orbStsNoErr);
      EXPECT_EQ(encoder.lastDC.at(0), 4);
      expectEncodesAs(function, {block}, tables, capacity);
    }
    const Tables noDC(unary({2}), unary(all));
    Encoder encoder(capacity);
    EXPECT_EQ(encoder.encode(function, block, noDC), orbStsJpegHuffTableErr);
    EXPECT_EQ(encoder.lastDC.at(0), 4);
    expectEncodesAs(function, {block}, noDC, capacity);
  }
}

// Every length up to what the blocks take, and from any position on, with bits in the state.
ORB_MEANING(orbiEncodeHuffman8x8_JPEG_16s1u_C1, EveryLengthOfDestination) {
  Random random("short destinations");
  for (int round = 0; round < 2; ++round) {
    std::vector<Block> blocks;
    for (int i = 0; i < 3; ++i) blocks.push_back(randomBlock(random, 30, 10, 8));
    const int size = static_cast<int>(
        encodeScan(blocks, typicalTables().dcCodes, typicalTables().acCodes).size());
    for (int capacity = 1; capacity <= size + 1; ++capacity) {
      expectEncodesAs(ORB(orbiEncodeHuffman8x8_JPEG_16s1u_C1), blocks, typicalTables(), capacity);
      if (testing::Test::HasFailure()) return;
    }
  }
  // Lengths around the room that a block may need.
  const Block block = randomBlock(random, 100, 10, 8);
  for (int capacity = 505; capacity < 520; ++capacity) {
    expectEncodesAs(ORB(orbiEncodeHuffman8x8_JPEG_16s1u_C1), {block}, typicalTables(), capacity);
  }
}

ORB_MEANING(orbiEncodeHuffman8x8_JPEG_16s1u_C1, OneByteShort) {
  const auto function = ORB(orbiEncodeHuffman8x8_JPEG_16s1u_C1);
  Random random("one byte short");
  const Block block = randomBlock(random, 100, 8, 8);
  Encoder enough(600);
  ASSERT_EQ(enough.encode(function, block, typicalTables()), orbStsNoErr);
  const int size = enough.position.at(0);
  Encoder exact(size), tooShort(size - 1);
  EXPECT_EQ(exact.encode(function, block, typicalTables()), orbStsNoErr);
  EXPECT_EQ(tooShort.encode(function, block, typicalTables()), orbStsJpegBufferEndErr);
  EXPECT_EQ(tooShort.position.at(0), size - 1);
}

ORB_MEANING(orbiEncodeHuffman8x8_JPEG_16s1u_C1, PositionsOutsideAreTheEnd) {
  const auto function = ORB(orbiEncodeHuffman8x8_JPEG_16s1u_C1);
  for (const int position : {-1, -2147483647 - 1, 100, 101, 2147483647}) {
    Encoder encoder(100);
    encoder.position.set(0, 0, position);
    EXPECT_EQ(encoder.encode(function, blockOf({{0, 300}}), typicalTables()),
              orbStsJpegBufferEndErr);
    EXPECT_EQ(encoder.position.at(0), position);
  }
}

// 255 is followed by 0, wherever in the four bytes that may be written at once it falls.
ORB_MEANING(orbiEncodeHuffman8x8_JPEG_16s1u_C1, StuffsBytesOf255) {
  Random random("stuffing");
  const Tables tables(unary({0, 1, 2, 3, 4, 5, 6, 7}), unary({8, 0, 3, 1, 5, 7, 4, 2, 6}));
  int stuffed = 0;
  for (int round = 0; round < 300; ++round) {
    std::vector<Block> blocks(3, Block(64));
    for (Block& block : blocks) {
      for (size_t i = 0; i < 64; ++i) {
        // Values of ones: 3, 7, ... 255.
        block[i] = static_cast<Orb16s>((1 << random.between(1, i == 0 ? 7 : 8)) - 1);
        if (random.oneIn(8)) block[i] = static_cast<Orb16s>(-block[i]);
      }
      block[0] = 0;
    }
    const Bytes scan = encodeScan(blocks, tables.dcCodes, tables.acCodes);
    stuffed += static_cast<int>(std::count(scan.begin(), scan.end(), 255));
    expectEncodesAs(ORB(orbiEncodeHuffman8x8_JPEG_16s1u_C1), blocks, tables,
                    round % 2 == 0 ? 3000 : 500);
    if (testing::Test::HasFailure()) return;
  }
  EXPECT_GT(stuffed, 5000);
}

ORB_MEANING(orbiEncodeHuffman8x8_JPEG_16s1u_C1, FlushFillsTheLastByteWithOnes) {
  const auto function = ORB(orbiEncodeHuffman8x8_JPEG_16s1u_C1);
  for (int bits = 0; bits < 8; ++bits) {
    Encoder encoder(10);
    encoder.state.fill([] { return Orb8u{0}; });
    encoder.record()->bitCount = bits;
    encoder.record()->eobRun = 77;
    encoder.record()->correctionCount = 5;
    encoder.record()->correctionBits[1023] = 1;
    EXPECT_EQ(encoder.flush(function), orbStsNoErr);
    if (bits == 0) {
      EXPECT_TRUE(encoder.written().empty());
    } else {
      EXPECT_EQ(encoder.written(), Bytes{static_cast<Orb8u>(255 >> bits)});
    }
    for (const Orb8u byte : encoder.state.samples()) ASSERT_EQ(byte, 0);
  }
  // A last byte of 255 is stuffed, too.
  Encoder ones(2);
  ones.record()->bitBuffer = 0xF00000;
  ones.record()->bitCount = 4;
  EXPECT_EQ(ones.flush(function), orbStsNoErr);
  EXPECT_EQ(ones.written(), (Bytes{255, 0}));
  // Without room for it the state starts anew all the same.
  for (const int room : {0, 1}) {
    Encoder full(2);
    full.position.set(0, 0, 2 - room);
    full.record()->bitBuffer = 0xF00000;
    full.record()->bitCount = 4;
    EXPECT_EQ(full.flush(function), orbStsJpegBufferEndErr);
    EXPECT_EQ(full.position.at(0), 2);
    for (const Orb8u byte : full.state.samples()) ASSERT_EQ(byte, 0);
  }
}

ORB_AGREEMENT(orbiEncodeHuffman8x8_JPEG_16s1u_C1) {
  for (int round = 0; round < 1000; ++round) {
    const int capacity = random.oneIn(2) ? random.between(1, 300) : random.between(500, 1500);
    Encoder expected(capacity), actual(capacity);
    Tables tables = random.oneIn(2) ? typicalTables() : fullTables();
    const bool damaged = random.oneIn(4);
    if (damaged) {
      fillAny(tables.dcEncoder, random);
      fillAny(tables.acEncoder, random);
    }
    if (damaged && random.oneIn(2)) {
      expected.state.fillExtreme(random);
      actual.state.copySamples(expected.state);
    }
    for (int i = 0; i < 5; ++i) {
      const Block block = randomBlock(random, random.between(0, 100), random.between(1, 15), 15);
      ASSERT_EQ(actual.encode(ORB(orbiEncodeHuffman8x8_JPEG_16s1u_C1), block, tables),
                expected.encode(PX(orbiEncodeHuffman8x8_JPEG_16s1u_C1), block, tables));
      ASSERT_EQ(actual.written(), expected.written());
      ASSERT_TRUE(actual.state.sameBytes(expected.state));
      ASSERT_TRUE(actual.position.sameBytes(expected.position));
      ASSERT_TRUE(actual.lastDC.sameBytes(expected.lastDC));
    }
    ASSERT_EQ(actual.flush(ORB(orbiEncodeHuffman8x8_JPEG_16s1u_C1)),
              expected.flush(PX(orbiEncodeHuffman8x8_JPEG_16s1u_C1)));
    ASSERT_EQ(actual.written(), expected.written());
  }
}

// ---- orbiEncodeHuffman8x8_Direct_JPEG_16s1u_C1

ORB_MEANING(orbiEncodeHuffman8x8_Direct_JPEG_16s1u_C1, ChecksPointers) {
  const auto function = ORB(orbiEncodeHuffman8x8_Direct_JPEG_16s1u_C1);
  const OrbiEncodeHuffmanSpec *dc = &typicalTables().dcEncoder, *ac = &typicalTables().acEncoder;
  const Block block(64);
  Plane<Orb8u> dst(600, 1);
  Orb32s bits = 3;
  Orb16s lastDC = 4;
  EXPECT_EQ(function(nullptr, dst.data(), &bits, &lastDC, dc, ac), orbStsNullPtrErr);
  EXPECT_EQ(function(block.data(), nullptr, &bits, &lastDC, dc, ac), orbStsNullPtrErr);
  EXPECT_EQ(function(block.data(), dst.data(), nullptr, &lastDC, dc, ac), orbStsNullPtrErr);
  EXPECT_EQ(function(block.data(), dst.data(), &bits, nullptr, dc, ac), orbStsNullPtrErr);
  EXPECT_EQ(function(block.data(), dst.data(), &bits, &lastDC, nullptr, ac), orbStsNullPtrErr);
  EXPECT_EQ(function(block.data(), dst.data(), &bits, &lastDC, dc, nullptr), orbStsNullPtrErr);
  EXPECT_EQ(bits, 3);
  EXPECT_EQ(lastDC, 4);
  dst.expectUntouched();
}

// Encodes blocks one behind the other from a bit position on, into a destination that ends with the
// byte of the last position.
void expectDirectEncodesAs(DirectEncodeFunction* function, const std::vector<Block>& blocks,
                           const Tables& tables, int start) {
  Random random("direct destination");
  // The model: all bits in a row, those in front of the start included.
  WriterModel model;
  Bytes before(static_cast<size_t>(start / 8 + 1));
  for (Orb8u& byte : before) byte = random.any<Orb8u>();
  model.dst.resize(blocks.size() * 512 + before.size());
  model.position = start / 8;
  model.pending = orbtest::binary(before.back(), 8).substr(0, static_cast<size_t>(start % 8));
  std::vector<int> ends;
  Orb16s lastDC = 0;
  for (const Block& block : blocks) {
    const std::vector<orbtest::BlockSymbol> symbols = orbtest::symbolsOf(block, lastDC);
    for (size_t i = 0; i < symbols.size(); ++i) {
      const Codes& codes = i == 0 ? tables.dcCodes : tables.acCodes;
      const auto code = codes.find(symbols[i].symbol);
      if (code != codes.end()) model.put(code->second);
      if (symbols[i].value != 0) model.put(orbtest::valueBits(symbols[i].value));
    }
    lastDC = block[0];
    ends.push_back(model.position * 8 + static_cast<int>(model.pending.size()));
  }

  GuardedBytes dst(static_cast<size_t>(ends.back() / 8 + 1));
  for (int i = 0; i < dst.size(); ++i) dst.data()[i] = random.any<Orb8u>();
  std::copy(before.begin(), before.end(), dst.data());
  const Bytes original(dst.data(), dst.data() + dst.size());
  Plane<Orb32s> bits(1, 1, {0, 1});
  Plane<Orb16s> predictor(1, 1, {0, 1});
  bits.set(0, 0, start);
  predictor.set(0, 0, 0);
  for (size_t b = 0; b < blocks.size(); ++b) {
    Plane<Orb16s> block(64, 1, {0, 5});
    for (int i = 0; i < 64; ++i) block.set(i, 0, blocks[b][static_cast<size_t>(i)]);
    ASSERT_EQ(function(block.data(), dst.data(), bits.data(), predictor.data(), &tables.dcEncoder,
                       &tables.acEncoder),
              orbStsNoErr);
    ASSERT_EQ(bits.at(0), ends[b]);
    ASSERT_EQ(predictor.at(0), blocks[b][0]);
    // What is behind the position in its byte is 0, and nothing is written behind the byte.
    const int moved = ends[b] != (b == 0 ? start : ends[b - 1]);
    const int touched = ends[b] / 8 + 1;
    if (moved && ends[b] % 8 != 0) {
      ASSERT_EQ(dst.data()[touched - 1] & (255 >> ends[b] % 8), 0);
    }
    if (moved && ends[b] % 8 == 0) {
      ASSERT_EQ(dst.data()[touched - 1], 0);
    }
    ASSERT_TRUE(
        std::equal(dst.data() + touched, dst.data() + dst.size(), original.begin() + touched));
  }
  bits.expectOutsideUntouched();
  predictor.expectOutsideUntouched();
  std::copy(before.begin(), before.end() - 1, model.dst.begin());
  ASSERT_TRUE(std::equal(dst.data(), dst.data() + model.position, model.dst.begin()));
  ASSERT_EQ(orbtest::binary(dst.data()[model.position], 8).substr(0, model.pending.size()),
            model.pending);
}

ORB_MEANING(orbiEncodeHuffman8x8_Direct_JPEG_16s1u_C1, AnyBlocksFromAnyPosition) {
  Random random("direct encode");
  for (int round = 0; round < 400; ++round) {
    const bool full = random.oneIn(2);
    const int percent = random.between(0, 100), bits = random.between(1, full ? 15 : 10);
    std::vector<Block> blocks;
    for (int i = 0; i < 5; ++i) {
      blocks.push_back(randomBlock(random, percent, bits, full ? 15 : 10));
    }
    expectDirectEncodesAs(ORB(orbiEncodeHuffman8x8_Direct_JPEG_16s1u_C1), blocks,
                          full ? fullTables() : typicalTables(), round % 32);
    if (testing::Test::HasFailure()) return;
  }
}

ORB_MEANING(orbiEncodeHuffman8x8_Direct_JPEG_16s1u_C1, ExtremeValuesAndStuffing) {
  Random random("direct extremes");
  const Tables ones(unary({0, 1, 2, 3, 4, 5, 6, 7}), unary({8, 0, 3, 1, 5, 7, 4, 2, 6}));
  for (int round = 0; round < 200; ++round) {
    std::vector<Block> blocks(3, Block(64));
    for (Block& block : blocks) {
      for (size_t i = 0; i < 64; ++i) {
        block[i] = round % 2 == 0 ? random.extreme<Orb16s>()
                                  : static_cast<Orb16s>((1 << random.between(1, 8)) - 1);
      }
    }
    expectDirectEncodesAs(ORB(orbiEncodeHuffman8x8_Direct_JPEG_16s1u_C1), blocks,
                          round % 2 == 0 ? fullTables() : ones, round % 24);
    if (testing::Test::HasFailure()) return;
  }
}

ORB_MEANING(orbiEncodeHuffman8x8_Direct_JPEG_16s1u_C1, SymbolsWithoutACodeAreLeftOut) {
  const auto function = ORB(orbiEncodeHuffman8x8_Direct_JPEG_16s1u_C1);
  const Block block = blockOf({{0, 4}, {1, 1}, {20, -3}});
  const Tables none(unary({}), unary({})), some(unary({7}), unary({0xF0, 0x22}));
  for (int start = 0; start < 16; ++start) {
    expectDirectEncodesAs(function, {block, block}, none, start);
    expectDirectEncodesAs(function, {block, block}, some, start);
    // The symbol 256.
    expectDirectEncodesAs(function, {blockOf({{16, -32768}})}, fullTables(), start);
  }
  // With nothing to write nothing is touched.
  const Block zeros(64);
  for (int start = 0; start < 16; ++start) {
    Plane<Orb8u> dst(4, 1);
    Orb32s bits = start;
    Orb16s lastDC = 0;
    EXPECT_EQ(function(zeros.data(), dst.data(), &bits, &lastDC, &none.dcEncoder, &none.acEncoder),
              orbStsNoErr);
    EXPECT_EQ(bits, start);
    dst.expectUntouched();
  }
}

ORB_AGREEMENT(orbiEncodeHuffman8x8_Direct_JPEG_16s1u_C1) {
  for (int round = 0; round < 1000; ++round) {
    Tables tables = random.oneIn(2) ? typicalTables() : fullTables();
    if (random.oneIn(4)) {
      fillAny(tables.dcEncoder, random);
      fillAny(tables.acEncoder, random);
    }
    const int start = random.between(0, 63);
    const int room = start / 8 + 1 + 5 * 512;
    Plane<Orb8u> expected(room, 1), actual(room, 1);
    Orb32s expectedBits = start, bits = start;
    Orb16s expectedDC = 0, lastDC = 0;
    for (int i = 0; i < 5; ++i) {
      const Block block = randomBlock(random, random.between(0, 100), random.between(1, 15), 15);
      ASSERT_EQ(PX(orbiEncodeHuffman8x8_Direct_JPEG_16s1u_C1)(block.data(), expected.data(),
                                                              &expectedBits, &expectedDC,
                                                              &tables.dcEncoder, &tables.acEncoder),
                orbStsNoErr);
      ASSERT_EQ(
          ORB(orbiEncodeHuffman8x8_Direct_JPEG_16s1u_C1)(
              block.data(), actual.data(), &bits, &lastDC, &tables.dcEncoder, &tables.acEncoder),
          orbStsNoErr);
      ASSERT_EQ(bits, expectedBits);
      ASSERT_EQ(lastDC, expectedDC);
      ASSERT_TRUE(actual.sameBytes(expected));
    }
    actual.expectOutsideUntouched();
  }
}

// ---- orbiDecodeHuffman8x8_JPEG_1u16s_C1

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
  }
  OrbiDecodeHuffmanState* record() {
    return reinterpret_cast<OrbiDecodeHuffmanState*>(state.data());
  }
  OrbStatus decode(DecodeFunction* function, const OrbiDecodeHuffmanSpec& dc,
                   const OrbiDecodeHuffmanSpec& ac) {
    const OrbStatus status = function(src.data(), src.size(), position.data(), block.data(),
                                      lastDC.data(), marker.data(), &dc, &ac, record());
    block.expectOutsideUntouched();
    position.expectOutsideUntouched();
    lastDC.expectOutsideUntouched();
    marker.expectOutsideUntouched();
    state.expectOutsideUntouched();
    return status;
  }
  OrbStatus decode(DecodeFunction* function, const Tables& tables) {
    return decode(function, tables.dcDecoder, tables.acDecoder);
  }
  void expectSame(const Decoder& other) const {
    ASSERT_TRUE(block.sameBytes(other.block));
    ASSERT_TRUE(position.sameBytes(other.position));
    ASSERT_TRUE(lastDC.sameBytes(other.lastDC));
    ASSERT_TRUE(marker.sameBytes(other.marker));
    ASSERT_TRUE(state.sameBytes(other.state));
  }
};

// Decodes until a call fails or `calls` have been made, comparing everything with the model.
void expectDecodesAs(DecodeFunction* function, const Bytes& scan, const Tables& tables, int calls) {
  Decoder decoder(scan);
  ReaderModel model;
  model.src = &scan;
  Block block;
  Orb16s lastDC = 0;
  int lastPosition = 0;
  for (int i = 0; i < calls; ++i) {
    const OrbStatus status =
        model.decode(block, lastDC, tables.dcTable, tables.acTable, lastPosition);
    ASSERT_EQ(decoder.decode(function, tables), status);
    ASSERT_EQ(decoder.block.samples(), block);
    ASSERT_EQ(decoder.lastDC.at(0), lastDC);
    ASSERT_EQ(decoder.position.at(0), model.position);
    ASSERT_EQ(decoder.marker.at(0), model.marker);
    ASSERT_EQ(decoder.record()->bitCount, model.left);
    ASSERT_EQ(decoder.record()->bitBuffer, model.bitBuffer());
    ASSERT_EQ(decoder.record()->bitBufferHigh, 0u);
    ASSERT_EQ(decoder.record()->eobRun, 0);
    ASSERT_EQ(decoder.record()->lastPosition, lastPosition);
    if (status != orbStsNoErr) break;
  }
}

ORB_MEANING(orbiDecodeHuffman8x8_JPEG_1u16s_C1, ChecksInOrder) {
  const auto function = ORB(orbiDecodeHuffman8x8_JPEG_1u16s_C1);
  Decoder d({1, 2, 3, 4});
  const OrbiDecodeHuffmanSpec *dc = &typicalTables().dcDecoder, *ac = &typicalTables().acDecoder;
  const Orb8u* const src = d.src.data();
  Orb32s *const position = d.position.data(), *const marker = d.marker.data();
  Orb16s *const dst = d.block.data(), *const lastDC = d.lastDC.data();
  OrbiDecodeHuffmanState* const state = d.record();
  EXPECT_EQ(function(nullptr, -1, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
            orbStsNullPtrErr);
  EXPECT_EQ(function(src, -1, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
            orbStsBadArgErr);
  EXPECT_EQ(function(src, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
            orbStsNullPtrErr);
  EXPECT_EQ(function(src, 4, nullptr, dst, lastDC, marker, dc, ac, state), orbStsNullPtrErr);
  EXPECT_EQ(function(src, 4, position, nullptr, lastDC, marker, dc, ac, state), orbStsNullPtrErr);
  EXPECT_EQ(function(src, 4, position, dst, nullptr, marker, dc, ac, state), orbStsNullPtrErr);
  EXPECT_EQ(function(src, 4, position, dst, lastDC, nullptr, dc, ac, state), orbStsNullPtrErr);
  EXPECT_EQ(function(src, 4, position, dst, lastDC, marker, nullptr, ac, state), orbStsNullPtrErr);
  EXPECT_EQ(function(src, 4, position, dst, lastDC, marker, dc, nullptr, state), orbStsNullPtrErr);
  EXPECT_EQ(function(src, 4, position, dst, lastDC, marker, dc, ac, nullptr), orbStsNullPtrErr);
  d.block.expectUntouched();
  d.position.expectUntouched();
  d.lastDC.expectUntouched();
  d.marker.expectUntouched();
  d.state.expectUntouched();
  EXPECT_EQ(function(src, 0, position, dst, lastDC, marker, dc, ac, state), orbStsJpegBufferEndErr);
  EXPECT_EQ(d.block.samples(), Block(64));
}

// Blocks that the model encodes and the library decodes.
void expectRoundTrip(DecodeFunction* function, const std::vector<Block>& blocks,
                     const Tables& tables) {
  const Bytes scan = encodeScan(blocks, tables.dcCodes, tables.acCodes);
  Decoder decoder(scan);
  for (const Block& block : blocks) {
    ASSERT_EQ(decoder.decode(function, tables), orbStsNoErr);
    ASSERT_EQ(decoder.block.samples(), block);
    ASSERT_EQ(decoder.lastDC.at(0), block[0]);
  }
  ASSERT_EQ(decoder.marker.at(0), 0);
  expectDecodesAs(function, scan, tables, static_cast<int>(blocks.size()) + 3);
}

std::vector<Block> anyBlocks(Random& random, int count, bool full) {
  const int percent = random.between(0, 100), bits = random.between(1, full ? 14 : 10);
  std::vector<Block> blocks;
  for (int i = 0; i < count; ++i) {
    blocks.push_back(randomBlock(random, percent, bits, full ? 14 : 10));
  }
  return blocks;
}

ORB_MEANING(orbiDecodeHuffman8x8_JPEG_1u16s_C1, RoundTrips) {
  Random random("decode");
  for (int round = 0; round < 200; ++round) {
    const bool full = round % 2 == 0;
    expectRoundTrip(ORB(orbiDecodeHuffman8x8_JPEG_1u16s_C1), anyBlocks(random, 6, full),
                    full ? fullTables() : typicalTables());
    if (testing::Test::HasFailure()) return;
  }
}

ORB_MEANING(orbiDecodeHuffman8x8_JPEG_1u16s_C1, LastPosition) {
  const auto function = ORB(orbiDecodeHuffman8x8_JPEG_1u16s_C1);
  const auto lastPosition = [&](const Block& block) {
    Decoder decoder(encodeScan({block}, typicalTables().dcCodes, typicalTables().acCodes));
    EXPECT_EQ(decoder.decode(function, typicalTables()), orbStsNoErr);
    return decoder.record()->lastPosition;
  };
  EXPECT_EQ(lastPosition(blockOf({})), 1);
  EXPECT_EQ(lastPosition(blockOf({{1, 5}})), 2);
  EXPECT_EQ(lastPosition(blockOf({{40, 5}})), 41);
  EXPECT_EQ(lastPosition(blockOf({{63, 5}})), 64);
}

// DC: category 0. AC: run 15 of category 1, run 0 of category 1, ZRL, EOB.
const Tables& runTables() {
  static const Tables tables(unary({0, 3}), unary({0xF1, 0x01, 0xF0, 0x00}));
  return tables;
}

ORB_MEANING(orbiDecodeHuffman8x8_JPEG_1u16s_C1, RunsOverTheEndOfTheBlock) {
  const auto function = ORB(orbiDecodeHuffman8x8_JPEG_1u16s_C1);
  // Four runs of 15 end at position 64, so that one more from 49 + n lands on 64 + n.
  for (int extra = 0; extra < 15; ++extra) {
    std::string bits = "0";
    for (int run = 0; run < 3; ++run)
      bits +=
          "0"
          "0";
    for (int i = 0; i < extra; ++i)
      bits +=
          "10"
          "0";
    bits +=
        "0"
        "1";
    Decoder decoder(bytesOf(bits));
    decoder.record()->lastPosition = 1234;
    const int landed = 49 + extra + 15;
    const OrbStatus status = decoder.decode(function, runTables());
    if (landed > 71) {
      EXPECT_EQ(status, orbStsErr) << landed;
      EXPECT_EQ(decoder.block.at(63), extra >= 15 ? -1 : 0);
      EXPECT_EQ(decoder.record()->lastPosition, 1234);
      EXPECT_EQ(decoder.block.at(zigzag()[16]), -1);
    } else {
      EXPECT_EQ(status, orbStsNoErr) << landed;
      EXPECT_EQ(decoder.block.at(63), 1);
      EXPECT_EQ(decoder.record()->lastPosition, landed + 1);
    }
    expectDecodesAs(function, bytesOf(bits), runTables(), 1);
  }
  // Runs of 16 zeros: the last may end anywhere.
  const std::string zeroRuns =
      "0"
      "110"
      "110"
      "110"
      "110";
  Decoder zeros(bytesOf(zeroRuns));
  EXPECT_EQ(zeros.decode(function, runTables()), orbStsNoErr);
  EXPECT_EQ(zeros.record()->lastPosition, 65);
  EXPECT_EQ(zeros.block.samples(), Block(64));
}

ORB_MEANING(orbiDecodeHuffman8x8_JPEG_1u16s_C1, SourcesCutAtEveryByte) {
  Random random("cut sources");
  for (int round = 0; round < 6; ++round) {
    const bool full = round % 2 == 0;
    const Tables& tables = full ? fullTables() : typicalTables();
    const Bytes scan = encodeScan(anyBlocks(random, 3, full), tables.dcCodes, tables.acCodes);
    for (size_t size = 0; size < scan.size(); ++size) {
      const Bytes cut(scan.begin(), scan.begin() + static_cast<ptrdiff_t>(size));
      expectDecodesAs(ORB(orbiDecodeHuffman8x8_JPEG_1u16s_C1), cut, tables, 5);
      if (testing::Test::HasFailure()) return;
    }
  }
}

ORB_MEANING(orbiDecodeHuffman8x8_JPEG_1u16s_C1, MarkersAndFillBytesAtEveryByte) {
  Random random("markers");
  for (int round = 0; round < 2; ++round) {
    const bool full = round % 2 == 0;
    const Tables& tables = full ? fullTables() : typicalTables();
    const Bytes scan = encodeScan(anyBlocks(random, 2, full), tables.dcCodes, tables.acCodes);
    const Bytes inserts[] = {
        {255, 0xD9}, {255, 255, 0xD0}, {255, 255, 255, 1}, {255, 255, 255, 255, 0},
        {255},       {255, 255}};
    for (size_t at = 0; at <= scan.size(); ++at) {
      for (const Bytes& insert : inserts) {
        Bytes damaged = scan;
        damaged.insert(damaged.begin() + static_cast<ptrdiff_t>(at), insert.begin(), insert.end());
        expectDecodesAs(ORB(orbiDecodeHuffman8x8_JPEG_1u16s_C1), damaged, tables, 6);
        damaged.resize(at + insert.size());
        expectDecodesAs(ORB(orbiDecodeHuffman8x8_JPEG_1u16s_C1), damaged, tables, 6);
        if (testing::Test::HasFailure()) return;
      }
    }
  }
}

ORB_MEANING(orbiDecodeHuffman8x8_JPEG_1u16s_C1, FillBytesBeforeStuffing) {
  // 255 255 255 0 is one byte of 255.
  const Tables tables(unary({0, 1, 2, 3, 4, 5, 6, 7, 8}), unary({0}));
  Decoder decoder({255, 255, 255, 0, 0, 0, 0});
  // Category 8 (1111 1111 0), then 8 bits of 0 (-255), then EOB.
  ASSERT_EQ(decoder.decode(ORB(orbiDecodeHuffman8x8_JPEG_1u16s_C1), tables), orbStsNoErr);
  EXPECT_EQ(decoder.block.at(0), -255);
}

ORB_MEANING(orbiDecodeHuffman8x8_JPEG_1u16s_C1, AMarkerEndsTheReading) {
  const auto function = ORB(orbiDecodeHuffman8x8_JPEG_1u16s_C1);
  // Blocks of 6 bits: four in three bytes.
  const Block zeros(64);
  Bytes scan =
      encodeScan({zeros, zeros, zeros, zeros}, typicalTables().dcCodes, typicalTables().acCodes);
  ASSERT_EQ(scan.size(), 3u);
  scan.insert(scan.end(), {255, 0xD3, 0x28, 0x28});
  Decoder decoder(scan);
  for (int i = 0; i < 4; ++i) {
    ASSERT_EQ(decoder.decode(function, typicalTables()), orbStsNoErr);
    EXPECT_EQ(decoder.marker.at(0), 0xD3);
    EXPECT_EQ(decoder.position.at(0), 5);
  }
  EXPECT_EQ(decoder.record()->bitCount, 0);
  ASSERT_EQ(decoder.decode(function, typicalTables()), orbStsJpegBitStreamErr);
  EXPECT_EQ(decoder.record()->lastPosition, 0);
  // The host clears the marker and sets the state anew: decoding goes on behind it.
  decoder.marker.set(0, 0, 0);
  decoder.state.fill([] { return Orb8u{0}; });
  ASSERT_EQ(decoder.decode(function, typicalTables()), orbStsNoErr);
  EXPECT_EQ(decoder.position.at(0), 7);
}

// A marker that comes up while the bits of a value are fetched: the value is made of what is there,
// the count falls below zero, and only the next read fails.
ORB_MEANING(orbiDecodeHuffman8x8_JPEG_1u16s_C1, AMarkerWithinAValue) {
  const auto function = ORB(orbiDecodeHuffman8x8_JPEG_1u16s_C1);
  const Tables tables(unary({0, 1, 2, 3, 4, 5, 6, 10}), unary({0}));
  // Category 10 is 1111 1110; of its bits none is there.
  const Bytes scan = {0xFE, 255, 0xD9};
  Decoder decoder(scan);
  EXPECT_EQ(decoder.decode(function, tables), orbStsJpegBitStreamErr);
  EXPECT_EQ(decoder.marker.at(0), 0xD9);
  EXPECT_EQ(decoder.record()->bitCount, 0);
  EXPECT_EQ(decoder.lastDC.at(0), 0);
  // The marker is met in the first fill, and behind it bits are wanted: not so if it comes up only
  // when the value is fetched.
  Decoder late(scan);
  late.position.set(0, 0, 1);
  late.record()->bitBuffer = 0xFE;
  late.record()->bitCount = 8;
  EXPECT_EQ(late.decode(function, tables), orbStsJpegBitStreamErr);
  EXPECT_EQ(late.marker.at(0), 0xD9);
  EXPECT_EQ(late.record()->bitCount, -10);
  EXPECT_EQ(late.record()->lastPosition, 1);
  EXPECT_NE(late.lastDC.at(0), 0);
}

ORB_MEANING(orbiDecodeHuffman8x8_JPEG_1u16s_C1, A255AtTheEndFailsWithBitsLeft) {
  const auto function = ORB(orbiDecodeHuffman8x8_JPEG_1u16s_C1);
  // Six zeros are a block; but the fill before its first symbol meets the 255.
  Decoder decoder({0x28, 255});
  EXPECT_EQ(decoder.decode(function, typicalTables()), orbStsJpegBufferEndErr);
  EXPECT_EQ(decoder.position.at(0), 2);
  EXPECT_EQ(decoder.record()->bitCount, 8);
  // Without it they are decoded.
  Decoder whole({0x28});
  EXPECT_EQ(whole.decode(function, typicalTables()), orbStsNoErr);
  EXPECT_EQ(whole.record()->bitCount, 2);
}

ORB_MEANING(orbiDecodeHuffman8x8_JPEG_1u16s_C1, PositionsOutsideAreTheEnd) {
  const auto function = ORB(orbiDecodeHuffman8x8_JPEG_1u16s_C1);
  for (const int position : {-1, -2147483647 - 1, 8, 9, 2147483647}) {
    Decoder decoder(Bytes(8));
    decoder.position.set(0, 0, position);
    EXPECT_EQ(decoder.decode(function, typicalTables()), orbStsJpegBufferEndErr);
    EXPECT_EQ(decoder.position.at(0), position);
  }
}

ORB_MEANING(orbiDecodeHuffman8x8_JPEG_1u16s_C1, CodesThatMatchNothing) {
  const auto function = ORB(orbiDecodeHuffman8x8_JPEG_1u16s_C1);
  const Tables none(unary({}), unary({}));
  Decoder decoder(Bytes(8, 0x55));
  EXPECT_EQ(decoder.decode(function, none), orbStsJpegBitStreamErr);
  EXPECT_EQ(decoder.record()->bitCount, 25 + 7 - 17);
  expectDecodesAs(function, Bytes(8, 0x55), none, 1);
  expectDecodesAs(function, Bytes(2, 0x55), none, 1);
  expectDecodesAs(function, Bytes(3, 0x55), none, 1);
  // The predictor has moved when an AC symbol fails.
  const Tables noAC(unary({0, 3}), unary({}));
  Decoder moved(
      bytesOf("10"
              "111"));
  EXPECT_EQ(moved.decode(function, noAC), orbStsJpegBitStreamErr);
  EXPECT_EQ(moved.lastDC.at(0), 7);
  EXPECT_EQ(moved.block.at(0), 7);
  EXPECT_EQ(moved.record()->lastPosition, 1);
}

// When the last code of length 16 is all ones, length 16 counts as having none.
ORB_MEANING(orbiDecodeHuffman8x8_JPEG_1u16s_C1, AllOnesOfLength16) {
  const auto function = ORB(orbiDecodeHuffman8x8_JPEG_1u16s_C1);
  HuffmanLists full = unary({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
  full.bits[15] = 2;
  full.vals.push_back(3);
  const Tables tables(full, unary({0}));
  const std::string ones(15, '1');
  Decoder fifteen(bytesOf(ones.substr(1) + "0"));
  EXPECT_EQ(fifteen.decode(function, tables), orbStsNoErr);
  EXPECT_EQ(fifteen.block.at(0), -16383);
  for (const char* last : {"0", "1"}) {
    Decoder sixteen(bytesOf(ones + last));
    EXPECT_EQ(sixteen.decode(function, tables), orbStsJpegBitStreamErr);
    expectDecodesAs(function, bytesOf(ones + last), tables, 1);
  }
}

// The predictor wraps at 16 bits.
ORB_MEANING(orbiDecodeHuffman8x8_JPEG_1u16s_C1, ThePredictorWraps) {
  const Tables tables(unary({0, 15}), unary({0}));
  Decoder decoder(
      bytesOf("10"
              "111111111111111"
              "0"));
  decoder.lastDC.set(0, 0, 32767);
  ASSERT_EQ(decoder.decode(ORB(orbiDecodeHuffman8x8_JPEG_1u16s_C1), tables), orbStsNoErr);
  EXPECT_EQ(decoder.block.at(0), -2);
  EXPECT_EQ(decoder.lastDC.at(0), -2);
}

// A category of 16 in the DC table has no bits.
ORB_MEANING(orbiDecodeHuffman8x8_JPEG_1u16s_C1, OnlyTheLowHalfOfADCSymbolCounts) {
  const Tables tables(unary({16, 0x23}), unary({0}));
  Decoder decoder(
      bytesOf("0"
              "0"
              "10"
              "101"
              "0"));
  ASSERT_EQ(decoder.decode(ORB(orbiDecodeHuffman8x8_JPEG_1u16s_C1), tables), orbStsNoErr);
  EXPECT_EQ(decoder.block.at(0), 0);
  ASSERT_EQ(decoder.decode(ORB(orbiDecodeHuffman8x8_JPEG_1u16s_C1), tables), orbStsNoErr);
  EXPECT_EQ(decoder.block.at(0), 5);
}

// Tables that the decoder takes, most of them overfull.
const std::vector<Tables>& decoderTables() {
  static const std::vector<Tables> all = [] {
    Random random("decoder tables");
    std::vector<Tables> tables = {typicalTables(), fullTables(), runTables()};
    while (tables.size() < 16) {
      const HuffmanLists dc = orbtest::overfullLists(random);
      tables.emplace_back(dc, orbtest::overfullLists(random));
    }
    return tables;
  }();
  return all;
}

Bytes mutatedScan(Random& random, const Tables& tables) {
  std::vector<Block> blocks;
  for (int i = 0; i < 3; ++i) {
    blocks.push_back(randomBlock(random, random.between(0, 60), random.between(1, 10), 10));
  }
  Bytes scan = encodeScan(blocks, tables.dcCodes, tables.acCodes);
  if (random.oneIn(2)) {
    for (size_t i = 0; i + 1 < scan.size(); ++i) {
      if (random.oneIn(40)) scan[i] = 255;
    }
  }
  return mutated(scan, random);
}

ORB_MEANING(orbiDecodeHuffman8x8_JPEG_1u16s_C1, MutatedScans) {
  Random random("mutated scans");
  for (int round = 0; round < 1000; ++round) {
    const Tables& tables = decoderTables()[random.between<size_t>(0, decoderTables().size() - 1)];
    ASSERT_TRUE(tables.dcTable.valid && tables.acTable.valid);
    expectDecodesAs(ORB(orbiDecodeHuffman8x8_JPEG_1u16s_C1), mutatedScan(random, tables), tables,
                    4);
    if (testing::Test::HasFailure()) return;
  }
}

ORB_AGREEMENT(orbiDecodeHuffman8x8_JPEG_1u16s_C1) {
  Decoder expected({}), actual({});
  for (int scans = 0; scans < 400; ++scans) {
    Tables tables = decoderTables()[random.between<size_t>(0, decoderTables().size() - 1)];
    const bool damaged = random.oneIn(5);
    if (damaged) {
      fillAny(tables.dcDecoder, random);
      fillAny(tables.acDecoder, random);
    }
    const Bytes scan = mutatedScan(random, tables);
    for (int round = 0; round < 30; ++round) {
      const Bytes bytes = mutated(scan, random);
      expected.start(bytes);
      actual.start(bytes);
      if (damaged) {
        expected.state.fillExtreme(random);
        actual.state.copySamples(expected.state);
      }
      for (int i = 0; i < 4; ++i) {
        const OrbStatus status = expected.decode(PX(orbiDecodeHuffman8x8_JPEG_1u16s_C1), tables);
        ASSERT_EQ(actual.decode(ORB(orbiDecodeHuffman8x8_JPEG_1u16s_C1), tables), status);
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

// ---- orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1

// What a host holds while it decodes without a state.
struct DirectDecoder {
  GuardedSource src;
  Plane<Orb16s> block{64, 1, {0, 1}};
  Plane<Orb32s> bits{1, 1, {0, 1}};
  Plane<Orb16s> lastDC{1, 1, {0, 1}};
  Plane<Orb32s> marker{1, 1, {0, 1}};
  Plane<Orb32u> prefetched{1, 1, {0, 1}};
  Plane<Orb32s> valid{1, 1, {0, 1}};

  explicit DirectDecoder(const Bytes& bytes) : src(bytes) { start(bytes); }
  void start(const Bytes& bytes) {
    src.load(bytes);
    bits.set(0, 0, 0);
    lastDC.set(0, 0, 0);
    marker.set(0, 0, 0);
    prefetched.set(0, 0, 0);
    valid.set(0, 0, 0);
  }
  OrbStatus decode(DirectDecodeFunction* function, const Tables& tables) {
    const OrbStatus status =
        function(src.data(), bits.data(), block.data(), lastDC.data(), marker.data(),
                 prefetched.data(), valid.data(), &tables.dcDecoder, &tables.acDecoder);
    block.expectOutsideUntouched();
    bits.expectOutsideUntouched();
    lastDC.expectOutsideUntouched();
    marker.expectOutsideUntouched();
    prefetched.expectOutsideUntouched();
    valid.expectOutsideUntouched();
    return status;
  }
  void expectSame(const DirectDecoder& other) const {
    ASSERT_TRUE(block.sameBytes(other.block));
    ASSERT_TRUE(bits.sameBytes(other.bits));
    ASSERT_TRUE(lastDC.sameBytes(other.lastDC));
    ASSERT_TRUE(marker.sameBytes(other.marker));
    ASSERT_TRUE(prefetched.sameBytes(other.prefetched));
    ASSERT_TRUE(valid.sameBytes(other.valid));
  }
};

ORB_MEANING(orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1, ChecksInOrder) {
  const auto function = ORB(orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1);
  DirectDecoder d({0, 0, 0, 0});
  const OrbiDecodeHuffmanSpec *dc = &typicalTables().dcDecoder, *ac = &typicalTables().acDecoder;
  const Orb8u* const src = d.src.data();
  Orb32s *const bits = d.bits.data(), *const marker = d.marker.data(), *const n = d.valid.data();
  Orb16s *const dst = d.block.data(), *const lastDC = d.lastDC.data();
  Orb32u* const word = d.prefetched.data();
  d.bits.set(0, 0, -1);
  d.valid.set(0, 0, -1);
  EXPECT_EQ(function(nullptr, bits, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
            orbStsNullPtrErr);
  EXPECT_EQ(function(src, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
            orbStsNullPtrErr);
  EXPECT_EQ(function(src, bits, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
            orbStsBadArgErr);
  d.bits.set(0, 0, 0);
  EXPECT_EQ(function(src, bits, nullptr, lastDC, marker, word, n, nullptr, nullptr),
            orbStsNullPtrErr);
  EXPECT_EQ(function(src, bits, dst, nullptr, marker, word, n, nullptr, nullptr), orbStsNullPtrErr);
  EXPECT_EQ(function(src, bits, dst, lastDC, nullptr, word, n, nullptr, nullptr), orbStsNullPtrErr);
  EXPECT_EQ(function(src, bits, dst, lastDC, marker, nullptr, n, nullptr, nullptr),
            orbStsNullPtrErr);
  EXPECT_EQ(function(src, bits, dst, lastDC, marker, word, nullptr, nullptr, nullptr),
            orbStsNullPtrErr);
  EXPECT_EQ(function(src, bits, dst, lastDC, marker, word, n, nullptr, nullptr), orbStsBadArgErr);
  d.valid.set(0, 0, 0);
  EXPECT_EQ(function(src, bits, dst, lastDC, marker, word, n, nullptr, ac), orbStsNullPtrErr);
  EXPECT_EQ(function(src, bits, dst, lastDC, marker, word, n, dc, nullptr), orbStsNullPtrErr);
  d.block.expectUntouched();
  d.bits.expectUntouched();
  d.lastDC.expectUntouched();
  d.marker.expectUntouched();
  d.prefetched.expectUntouched();
  d.valid.expectUntouched();
}

// The scan has to end with a marker, and memory ends behind it. Decodes until a call fails or finds
// no bit left.
void expectDirectDecodesAs(DirectDecodeFunction* function, const Bytes& scan, const Tables& tables,
                           int calls) {
  DirectDecoder decoder(scan);
  ReaderModel model;
  model.src = &scan;
  model.direct = true;
  Block block;
  Orb16s lastDC = 0;
  int lastPosition = 0;
  for (int i = 0; i < calls && model.left >= 0; ++i) {
    OrbStatus status = model.decode(block, lastDC, tables.dcTable, tables.acTable, lastPosition);
    if (status == orbStsNoOperation) {
      status = orbStsNoErr;
      model.left = 0;
    }
    ASSERT_EQ(decoder.decode(function, tables), status);
    ASSERT_EQ(decoder.block.samples(), block);
    ASSERT_EQ(decoder.lastDC.at(0), lastDC);
    ASSERT_EQ(decoder.bits.at(0), model.position * 8);
    ASSERT_EQ(decoder.marker.at(0), model.marker);
    ASSERT_EQ(decoder.valid.at(0), model.left);
    ASSERT_EQ(decoder.prefetched.at(0), model.bitBuffer());
    if (status != orbStsNoErr) break;
  }
}

Bytes withMarker(Bytes scan) {
  scan.insert(scan.end(), {255, 0xD9});
  return scan;
}

ORB_MEANING(orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1, RoundTrips) {
  Random random("direct decode");
  for (int round = 0; round < 200; ++round) {
    const bool full = round % 2 == 0;
    const Tables& tables = full ? fullTables() : typicalTables();
    const std::vector<Block> blocks = anyBlocks(random, 6, full);
    const Bytes scan = withMarker(encodeScan(blocks, tables.dcCodes, tables.acCodes));
    DirectDecoder decoder(scan);
    for (const Block& block : blocks) {
      ASSERT_EQ(decoder.decode(ORB(orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1), tables),
                orbStsNoErr);
      ASSERT_EQ(decoder.block.samples(), block);
      ASSERT_EQ(decoder.lastDC.at(0), block[0]);
    }
    expectDirectDecodesAs(ORB(orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1), scan, tables, 9);
    if (testing::Test::HasFailure()) return;
  }
}

ORB_MEANING(orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1, StartsAtAnyByte) {
  const auto function = ORB(orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1);
  const Bytes scan = withMarker(
      encodeScan({blockOf({{0, 9}, {5, 3}})}, typicalTables().dcCodes, typicalTables().acCodes));
  for (int start = 0; start < 40; ++start) {
    Bytes bytes(static_cast<size_t>(start / 8), 255);
    bytes.insert(bytes.end(), scan.begin(), scan.end());
    DirectDecoder decoder(bytes);
    decoder.bits.set(0, 0, start);
    ASSERT_EQ(decoder.decode(function, typicalTables()), orbStsNoErr);
    EXPECT_EQ(decoder.block.samples(), blockOf({{0, 9}, {5, 3}}));
    EXPECT_EQ(decoder.bits.at(0), static_cast<Orb32s>(bytes.size()) * 8);
  }
}

ORB_MEANING(orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1, NoBitsBehindAMarker) {
  const auto function = ORB(orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1);
  // Before the DC symbol: an empty block, the predictor as it was.
  DirectDecoder empty({255, 255, 0xD9});
  empty.lastDC.set(0, 0, 77);
  EXPECT_EQ(empty.decode(function, typicalTables()), orbStsNoErr);
  EXPECT_EQ(empty.block.samples(), Block(64));
  EXPECT_EQ(empty.lastDC.at(0), 77);
  EXPECT_EQ(empty.marker.at(0), 0xD9);
  EXPECT_EQ(empty.bits.at(0), 24);
  EXPECT_EQ(empty.valid.at(0), 0);
  // Before an AC symbol: DC 5 is 100 101, and 00 1 00 1 ... are ones at the first positions.
  const Tables& tables = runTables();
  DirectDecoder part({0xB4, 255, 0xD9});  // 10 110 | 10 0
  part.lastDC.set(0, 0, 1);
  EXPECT_EQ(part.decode(function, tables), orbStsNoErr);
  EXPECT_EQ(part.block.samples(), blockOf({{0, 7}, {1, -1}}));
  EXPECT_EQ(part.valid.at(0), 0);
  EXPECT_EQ(part.lastDC.at(0), 7);
  // A pending marker that is below 0 is none.
  DirectDecoder negative({0xB4, 255, 0xD9});
  negative.marker.set(0, 0, -5);
  EXPECT_EQ(negative.decode(function, tables), orbStsNoErr);
  EXPECT_EQ(negative.block.at(0), 6);
  DirectDecoder pending({0xB4, 255, 0xD9});
  pending.marker.set(0, 0, 5);
  EXPECT_EQ(pending.decode(function, tables), orbStsNoErr);
  EXPECT_EQ(pending.block.samples(), Block(64));
  EXPECT_EQ(pending.bits.at(0), 0);
}

ORB_MEANING(orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1, FewBitsBehindAMarker) {
  const auto function = ORB(orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1);
  const Tables tables(unary({0, 1, 2, 3, 4, 5, 6, 10}), unary({0, 1, 2, 3, 4, 5, 6, 7, 8}));
  // Category 10 (1111 1110) and no bit of the value.
  DirectDecoder none({0xFE, 255, 0xD9});
  EXPECT_EQ(none.decode(function, tables), orbStsJpegBufferEndErr);
  EXPECT_EQ(none.lastDC.at(0), 0);
  // The code 10 of category 1, its value 1, then 110 of category 2 with one bit of two: it takes
  // what there is, and the count falls below zero.
  DirectDecoder some({0xBB, 255, 0xD9});  // 10 1 | 110 1 1
  some.valid.set(0, 0, 0);
  EXPECT_EQ(some.decode(function, tables), orbStsNoErr);
  expectDirectDecodesAs(function, {0xBB, 255, 0xD9}, tables, 3);
  expectDirectDecodesAs(function, {0xB7, 255, 0xD9}, tables, 3);  // 10 1 | 10 1 | 11...
  // A code of 9 bits of which 8 are there.
  const Tables nine(unary({1, 2, 3, 4, 5, 6, 7, 0}), unary({1, 2, 3, 4, 5, 6, 7, 8, 9, 0}));
  DirectDecoder code({0xFE, 255, 0, 255, 0xD9});
  EXPECT_EQ(code.decode(function, nine), orbStsJpegBitStreamErr);
  for (int first = 0; first < 256; ++first) {
    const Bytes bytes = first == 255 ? Bytes{255, 0, 255, 1} : Bytes{Orb8u(first), 255, 1};
    expectDirectDecodesAs(function, bytes, tables, 9);
    expectDirectDecodesAs(function, bytes, typicalTables(), 9);
    expectDirectDecodesAs(function, bytes, fullTables(), 9);
  }
}

ORB_MEANING(orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1, RunsOverTheEndOfTheBlock) {
  const auto function = ORB(orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1);
  for (int extra = 0; extra < 15; ++extra) {
    std::string bits = "0";
    for (int run = 0; run < 3; ++run)
      bits +=
          "0"
          "0";
    for (int i = 0; i < extra; ++i)
      bits +=
          "10"
          "0";
    bits +=
        "0"
        "1";
    const Bytes scan = withMarker(bytesOf(bits));
    DirectDecoder decoder(scan);
    EXPECT_EQ(decoder.decode(function, runTables()), extra > 7 ? orbStsErr : orbStsNoErr);
    expectDirectDecodesAs(function, scan, runTables(), 1);
  }
}

ORB_MEANING(orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1, MarkersAndFillBytesAtEveryByte) {
  Random random("direct markers");
  for (int round = 0; round < 2; ++round) {
    const bool full = round % 2 == 0;
    const Tables& tables = full ? fullTables() : typicalTables();
    const Bytes scan = encodeScan(anyBlocks(random, 2, full), tables.dcCodes, tables.acCodes);
    for (size_t at = 0; at <= scan.size(); ++at) {
      for (const Bytes& insert : {Bytes{255, 0xD9}, Bytes{255, 255, 255, 1}, Bytes{255, 255, 0}}) {
        Bytes damaged = scan;
        damaged.insert(damaged.begin() + static_cast<ptrdiff_t>(at), insert.begin(), insert.end());
        damaged = withMarker(damaged);
        expectDirectDecodesAs(ORB(orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1), damaged, tables, 6);
        if (testing::Test::HasFailure()) return;
      }
    }
  }
}

ORB_MEANING(orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1, MutatedScans) {
  Random random("direct mutated scans");
  for (int round = 0; round < 1000; ++round) {
    const Tables& tables = decoderTables()[random.between<size_t>(0, decoderTables().size() - 1)];
    expectDirectDecodesAs(ORB(orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1),
                          withMarker(mutatedScan(random, tables)), tables, 4);
    if (testing::Test::HasFailure()) return;
  }
}

ORB_AGREEMENT(orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1) {
  DirectDecoder expected({}), actual({});
  for (int scans = 0; scans < 300; ++scans) {
    Tables tables = decoderTables()[random.between<size_t>(0, decoderTables().size() - 1)];
    const bool damaged = random.oneIn(5);
    if (damaged) {
      fillAny(tables.dcDecoder, random);
      fillAny(tables.acDecoder, random);
    }
    const Bytes scan = mutatedScan(random, tables);
    for (int round = 0; round < 30; ++round) {
      const Bytes bytes = withMarker(mutated(scan, random));
      expected.start(bytes);
      actual.start(bytes);
      if (damaged) {
        const Orb32s valid = random.between(0, 1000);
        expected.valid.set(0, 0, valid);
        actual.valid.set(0, 0, valid);
      }
      for (int i = 0; i < 4; ++i) {
        const OrbStatus status =
            expected.decode(PX(orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1), tables);
        ASSERT_EQ(actual.decode(ORB(orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1), tables), status);
        actual.expectSame(expected);
        if (testing::Test::HasFatalFailure()) return;
      }
    }
  }
}

// ---- orbiGetHuffmanStatistics8x8_JPEG_16s_C1

struct Counts {
  Plane<Orb32s> dc{256, 1, {0, 1}};
  Plane<Orb32s> ac{256, 1, {0, 1}};
  Plane<Orb16s> lastDC{1, 1, {0, 1}};

  Counts() {
    dc.fill([] { return 0; });
    ac.fill([] { return 0; });
    lastDC.set(0, 0, 0);
  }
  OrbStatus count(CountFunction* function, const Block& values) {
    Plane<Orb16s> block(64, 1, {0, 1});
    for (int i = 0; i < 64; ++i) block.set(i, 0, values[static_cast<size_t>(i)]);
    const OrbStatus status = function(block.data(), dc.data(), ac.data(), lastDC.data());
    block.expectUntouched();
    dc.expectOutsideUntouched();
    ac.expectOutsideUntouched();
    lastDC.expectOutsideUntouched();
    return status;
  }
};

ORB_MEANING(orbiGetHuffmanStatistics8x8_JPEG_16s_C1, ChecksPointers) {
  const auto function = ORB(orbiGetHuffmanStatistics8x8_JPEG_16s_C1);
  const Block block(64, 3);
  Counts counts;
  Orb32s *const dc = counts.dc.data(), *const ac = counts.ac.data();
  Orb16s* const lastDC = counts.lastDC.data();
  EXPECT_EQ(function(nullptr, dc, ac, lastDC), orbStsNullPtrErr);
  EXPECT_EQ(function(block.data(), nullptr, ac, lastDC), orbStsNullPtrErr);
  EXPECT_EQ(function(block.data(), dc, nullptr, lastDC), orbStsNullPtrErr);
  EXPECT_EQ(function(block.data(), dc, ac, nullptr), orbStsNullPtrErr);
  counts.dc.expectUntouched();
  counts.ac.expectUntouched();
  counts.lastDC.expectUntouched();
}

// The counts are those of the symbols that an encoder would write, added to what there was.
ORB_MEANING(orbiGetHuffmanStatistics8x8_JPEG_16s_C1, CountsWhatTheEncoderWrites) {
  Random random("statistics");
  Counts counts;
  std::vector<Orb32s> dc(256), ac(256);
  Orb16s lastDC = 0;
  for (int round = 0; round < 500; ++round) {
    const Block block = randomBlock(random, random.between(0, 100), random.between(1, 14), 14);
    const auto symbols = orbtest::symbolsOf(block, lastDC);
    for (size_t i = 0; i < symbols.size(); ++i) {
      ++(i == 0 ? dc : ac)[static_cast<size_t>(symbols[i].symbol)];
    }
    lastDC = block[0];
    ASSERT_EQ(counts.count(ORB(orbiGetHuffmanStatistics8x8_JPEG_16s_C1), block), orbStsNoErr);
    ASSERT_EQ(counts.lastDC.at(0), lastDC);
  }
  EXPECT_EQ(counts.dc.samples(), dc);
  EXPECT_EQ(counts.ac.samples(), ac);
}

ORB_MEANING(orbiGetHuffmanStatistics8x8_JPEG_16s_C1, ValuesTooLarge) {
  const auto function = ORB(orbiGetHuffmanStatistics8x8_JPEG_16s_C1);
  // DC: 15 bits are counted, 16 are not, but the predictor has moved.
  Counts dc;
  EXPECT_EQ(dc.count(function, blockOf({{0, 32767}})), orbStsNoErr);
  EXPECT_EQ(dc.dc.at(15), 1);
  EXPECT_EQ(dc.count(function, blockOf({{0, -1}})), orbStsJpegBitStreamErr);
  EXPECT_EQ(dc.lastDC.at(0), -1);
  EXPECT_EQ(dc.dc.at(16), 0);
  EXPECT_EQ(dc.ac.at(0), 1);
  // AC: 14 bits are counted, 15 are not, but the runs of 16 zeros before them are.
  for (const int value : {16384, -16384, 32767, -32768}) {
    Counts ac;
    EXPECT_EQ(ac.count(function, blockOf({{1, 16383}, {40, value}, {41, 1}})),
              orbStsJpegBitStreamErr);
    EXPECT_EQ(ac.dc.at(0), 1);
    EXPECT_EQ(ac.ac.at(14), 1);
    EXPECT_EQ(ac.ac.at(0xF0), 2);
    EXPECT_EQ(ac.ac.at(1), 0);
    EXPECT_EQ(ac.ac.at(0), 0);
  }
}

ORB_MEANING(orbiGetHuffmanStatistics8x8_JPEG_16s_C1, CountsWrap) {
  Counts counts;
  counts.ac.set(0, 0, 2147483647);
  ASSERT_EQ(counts.count(ORB(orbiGetHuffmanStatistics8x8_JPEG_16s_C1), Block(64)), orbStsNoErr);
  EXPECT_EQ(counts.ac.at(0), -2147483647 - 1);
}

ORB_AGREEMENT(orbiGetHuffmanStatistics8x8_JPEG_16s_C1) {
  Counts expected, actual;
  for (int round = 0; round < 3000; ++round) {
    const Block block = randomBlock(random, random.between(0, 100), random.between(1, 15), 15);
    ASSERT_EQ(actual.count(ORB(orbiGetHuffmanStatistics8x8_JPEG_16s_C1), block),
              expected.count(PX(orbiGetHuffmanStatistics8x8_JPEG_16s_C1), block));
    ASSERT_TRUE(actual.dc.sameBytes(expected.dc));
    ASSERT_TRUE(actual.ac.sameBytes(expected.ac));
    ASSERT_TRUE(actual.lastDC.sameBytes(expected.lastDC));
  }
}

// ---- Together

// Two passes as a coder with tables of its own makes them: count, make tables, encode; and both
// forms of the coder give the same bytes, which both forms of the decoder take.
ORB_MEANING(orbiEncodeHuffman8x8_JPEG_16s1u_C1, TwoPasses) {
  Random random("two passes");
  std::vector<Block> blocks;
  for (int i = 0; i < 200; ++i) blocks.push_back(randomBlock(random, i % 100, i % 11 + 1, 11));
  Counts counts;
  for (const Block& block : blocks) {
    ASSERT_EQ(counts.count(ORB(orbiGetHuffmanStatistics8x8_JPEG_16s_C1), block), orbStsNoErr);
  }
  HuffmanLists lists[2];
  for (int i = 0; i < 2; ++i) {
    lists[i] = {Bytes(16), Bytes(256)};
    std::vector<Orb32s> statistics = (i == 0 ? counts.dc : counts.ac).samples();
    statistics.push_back(0);
    ASSERT_EQ(ORB(orbiEncodeHuffmanRawTableInit_JPEG_8u)(statistics.data(), lists[i].bits.data(),
                                                         lists[i].vals.data()),
              orbStsNoErr);
  }
  const Tables tables(lists[0], lists[1]);
  Encoder encoder(200 * 512);
  Plane<Orb8u> direct(200 * 512, 1);
  Orb32s bits = 0;
  Orb16s lastDC = 0;
  for (const Block& block : blocks) {
    ASSERT_EQ(encoder.encode(ORB(orbiEncodeHuffman8x8_JPEG_16s1u_C1), block, tables), orbStsNoErr);
    ASSERT_EQ(
        ORB(orbiEncodeHuffman8x8_Direct_JPEG_16s1u_C1)(block.data(), direct.data(), &bits, &lastDC,
                                                       &tables.dcEncoder, &tables.acEncoder),
        orbStsNoErr);
    ASSERT_EQ(bits, encoder.position.at(0) * 8 + encoder.record()->bitCount);
  }
  Bytes scan = encoder.written();
  ASSERT_TRUE(std::equal(scan.begin(), scan.end(), direct.data()));
  ASSERT_EQ(encoder.flush(ORB(orbiEncodeHuffman8x8_JPEG_16s1u_C1)), orbStsNoErr);
  scan = withMarker(encoder.written());
  EXPECT_EQ(scan, withMarker(encodeScan(blocks, tables.dcCodes, tables.acCodes)));
  Decoder decoder(scan);
  DirectDecoder directDecoder(scan);
  for (const Block& block : blocks) {
    ASSERT_EQ(decoder.decode(ORB(orbiDecodeHuffman8x8_JPEG_1u16s_C1), tables), orbStsNoErr);
    ASSERT_EQ(decoder.block.samples(), block);
    ASSERT_EQ(directDecoder.decode(ORB(orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1), tables),
              orbStsNoErr);
    ASSERT_EQ(directDecoder.block.samples(), block);
    ASSERT_EQ(directDecoder.bits.at(0), decoder.position.at(0) * 8);
    ASSERT_EQ(directDecoder.valid.at(0), decoder.record()->bitCount);
  }
}

}  // namespace
