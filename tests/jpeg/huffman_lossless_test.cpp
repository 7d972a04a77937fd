// Lossless row coding (ITU-T T.81 H.1.2.2, H.2).
#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "jpeg/huffman_records.h"
#include "tests/jpeg/huffman_model.h"
#include "tests/support/builds.h"
#include "tests/support/faults.h"
#include "tests/support/guarded.h"
#include "tests/support/plane.h"

namespace {

using orbtest::bitLength;
using orbtest::bytesOf;
using orbtest::Codes;
using orbtest::codesOf;
using orbtest::DecoderTable;
using orbtest::expectChecks;
using orbtest::fillAny;
using orbtest::GuardedBytes;
using orbtest::GuardedSource;
using orbtest::HuffmanLists;
using orbtest::mutated;
using orbtest::Placement;
using orbtest::Plane;
using orbtest::Random;
using orbtest::ReaderModel;
using orbtest::unary;
using orbtest::valueBits;
using orbtest::WriterModel;

using Bytes = std::vector<Orb8u>;
using Row = std::vector<Orb16s>;
using Rows = std::vector<Row>;

constexpr int kLeast = std::numeric_limits<Orb32s>::min();

using EncodeOneFunction = decltype(legacy90orbiEncodeHuffmanOne_JPEG_16s1u_C1);
using EncodeRowFunction = decltype(legacy90orbiEncodeHuffmanRow_JPEG_16s1u_P4C1);
using DecodeOneFunction = decltype(legacy90orbiDecodeHuffmanOne_JPEG_1u16s_C1);
using DecodeRowFunction = decltype(legacy90orbiDecodeHuffmanRow_JPEG_1u16s_C1P4);

// ---- Tables

// A table in all its forms: the model's, and the library's, made by px.
struct Table {
  Codes codes;
  DecoderTable model;
  OrbiEncodeHuffmanSpec encoder;
  OrbiDecodeHuffmanSpec decoder;

  explicit Table(const HuffmanLists& lists) : codes(codesOf(lists)), model(lists) {
    Bytes vals = lists.vals;
    vals.push_back(0);  // so that there is an address even for no codes
    PX(orbiEncodeHuffmanSpecInit_JPEG_8u)(lists.bits.data(), vals.data(), &encoder);
    PX(orbiDecodeHuffmanSpecInit_JPEG_8u)(lists.bits.data(), vals.data(), &decoder);
  }
};
using Tables = std::vector<const Table*>;

// The categories 0 to 16 with codes of 2 to 14 bits.
const Table& typicalTable() {
  static const Table table({{0, 1, 5, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0},
                            {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}});
  return table;
}
// Codes of up to 16 bits for all symbols that there are, in four ways.
const Table& fullTable(size_t n) {
  static const std::vector<Table> tables = [] {
    Random random("full tables");
    std::vector<Table> all;
    for (int i = 0; i < 4; ++i) all.emplace_back(orbtest::randomLists(random));
    return all;
  }();
  return tables[n];
}
Tables typicalTables(size_t rows) {
  return Tables(rows, &typicalTable());
}
Tables fullTables(size_t rows) {
  Tables tables;
  for (size_t i = 0; i < rows; ++i) tables.push_back(&fullTable(i));
  return tables;
}

// ---- Rows

Rows randomRows(Random& random, size_t count, int length) {
  const int bits = random.between(0, 16);
  const bool extreme = random.oneIn(4);
  Rows rows(count, Row(static_cast<size_t>(length)));
  for (Row& row : rows) {
    for (Orb16s& value : row) {
      const int any = random.any<Orb16s>();
      value = extreme ? random.extreme<Orb16s>() : static_cast<Orb16s>(any >> (16 - bits));
    }
  }
  return rows;
}
Rows everyValue() {
  Rows rows(1);
  for (int value = -32768; value < 32768; ++value) rows[0].push_back(static_cast<Orb16s>(value));
  return rows;
}

// The samples of rows in the order of a scan: visit(row, i) until it returns a failure.
template <class Visit>
OrbStatus inScanOrder(size_t rows, size_t length, Visit visit) {
  for (size_t i = 0; i < length; ++i) {
    for (size_t row = 0; row < rows; ++row) {
      const OrbStatus status = visit(row, i);
      if (status != orbStsNoErr) return status;
    }
  }
  return orbStsNoErr;
}

// Pointers in memory that ends behind the last of them.
template <class T>
class GuardedPointers {
 public:
  explicit GuardedPointers(size_t count) : memory_(count * sizeof(T*)) {}
  T*& operator[](size_t i) { return data()[i]; }
  T** data() { return reinterpret_cast<T**>(memory_.data()); }

 private:
  GuardedBytes memory_;
};

// ---- Encoding

// The equations: a code, and the bits of the value, if there are any to tell it by.
OrbStatus encodeDifference(WriterModel& writer, int value, const Codes& codes) {
  const auto code = codes.find(bitLength(value));
  const OrbStatus status = writer.put(code == codes.end() ? "" : code->second);
  const bool hasBits = value != 0 && value != -32768;
  return status == orbStsNoErr && hasBits ? writer.put(valueBits(value)) : status;
}
OrbStatus encodeRows(WriterModel& writer, const Rows& rows, const Tables& tables) {
  return inScanOrder(rows.size(), rows[0].size(), [&](size_t row, size_t i) {
    return encodeDifference(writer, rows[row][i], tables[row]->codes);
  });
}
Bytes encodedScan(const Rows& rows, const Tables& tables) {
  WriterModel writer;
  writer.dst.resize(rows.size() * rows[0].size() * 8 + 2);
  EXPECT_EQ(encodeRows(writer, rows, tables), orbStsNoErr);
  writer.flush();
  writer.dst.resize(static_cast<size_t>(writer.position));
  return writer.dst;
}

// What a host holds while it encodes, at odd addresses. The fields of progressive coding are not
// these functions' business.
struct Encoder {
  GuardedBytes dst;
  Plane<Orb32s> position{1, 1, {0, 1}};
  Plane<Orb8u> state{sizeof(OrbiEncodeHuffmanState), 1, {0, 1}};

  explicit Encoder(int capacity) : dst(static_cast<size_t>(capacity)) {
    position.set(0, 0, 0);
    state.fill([] { return Orb8u{0}; });
    record()->eobRun = 77;
    record()->correctionCount = 5;
    record()->correctionBits[1023] = 1;
  }
  OrbiEncodeHuffmanState* record() {
    return reinterpret_cast<OrbiEncodeHuffmanState*>(state.data());
  }
  WriterModel model() const {
    WriterModel writer;
    writer.dst.assign(dst.data(), dst.data() + dst.size());
    writer.position = position.at(0);
    return writer;
  }
  void expectLike(const WriterModel& writer) {
    ASSERT_EQ(position.at(0), writer.position);
    ASSERT_TRUE(std::equal(writer.dst.begin(), writer.dst.end(), dst.data()));
    ASSERT_EQ(record()->bitCount, static_cast<Orb32s>(writer.pending.size()));
    ASSERT_EQ(record()->bitBuffer, writer.bitBuffer());
    ASSERT_EQ(record()->bitBufferHigh, 0u);
    ASSERT_EQ(record()->eobRun, 77);
    ASSERT_EQ(record()->correctionCount, 5);
    ASSERT_EQ(record()->correctionBits[1023], 1);
    position.expectOutsideUntouched();
    state.expectOutsideUntouched();
  }
};

// Either form, seen as a coder of rows that can end a scan.
struct EncodeForm {
  std::function<OrbStatus(Encoder&, const Rows&, const Tables&)> encode;
  std::function<OrbStatus(Encoder&)> flush;
};

EncodeForm byOne(EncodeOneFunction* function) {
  return {[=](Encoder& e, const Rows& rows, const Tables& tables) {
            Plane<Orb16s> value(1, 1, {0, 1});
            return inScanOrder(rows.size(), rows[0].size(), [&](size_t row, size_t i) {
              value.set(0, 0, rows[row][i]);
              return function(value.data(), e.dst.data(), e.dst.size(), e.position.data(),
                              &tables[row]->encoder, e.record(), 0);
            });
          },
          [=](Encoder& e) {
            return function(nullptr, e.dst.data(), e.dst.size(), e.position.data(), nullptr,
                            e.record(), 1);
          }};
}

EncodeForm byRows(EncodeRowFunction* function) {
  return {[=](Encoder& e, const Rows& rows, const Tables& tables) {
            const int count = static_cast<int>(rows.size());
            const int length = static_cast<int>(rows[0].size());
            std::vector<std::unique_ptr<GuardedBytes>> memory;
            GuardedPointers<const Orb16s> src(rows.size());
            GuardedPointers<const OrbiEncodeHuffmanSpec> specs(rows.size());
            for (size_t i = 0; i < rows.size(); ++i) {
              const auto bytes = reinterpret_cast<const Orb8u*>(rows[i].data());
              memory.push_back(std::make_unique<GuardedBytes>(
                  Bytes(bytes, bytes + rows[i].size() * sizeof(Orb16s))));
              src[i] = reinterpret_cast<const Orb16s*>(memory[i]->data());
              specs[i] = &tables[i]->encoder;
            }
            return function(src.data(), length, count, e.dst.data(), e.dst.size(),
                            e.position.data(), specs.data(), e.record(), 0);
          },
          [=](Encoder& e) {
            return function(nullptr, 0, 0, e.dst.data(), e.dst.size(), e.position.data(), nullptr,
                            e.record(), -1);
          }};
}

// Encodes rows twice, comparing everything with the model behind each call, and ends the scan.
void expectEncodes(const EncodeForm& form, const Rows& rows, const Tables& tables, int capacity) {
  Encoder encoder(capacity);
  WriterModel model = encoder.model();
  for (int times = 0; times < 2; ++times) {
    const OrbStatus status = encodeRows(model, rows, tables);
    ASSERT_EQ(form.encode(encoder, rows, tables), status) << "capacity " << capacity;
    encoder.expectLike(model);
    if (testing::Test::HasFatalFailure() || status != orbStsNoErr) break;
  }
  ASSERT_EQ(form.flush(encoder), model.flush());
  ASSERT_EQ(encoder.position.at(0), model.position);
  ASSERT_TRUE(std::equal(model.dst.begin(), model.dst.end(), encoder.dst.data()));
  for (const Orb8u byte : encoder.state.samples()) ASSERT_EQ(byte, 0);
}

// The bits that a call has written or kept, with all stuffing taken out.
std::string encodedBits(const EncodeForm& form, const Rows& rows, const Tables& tables) {
  Encoder encoder(100);
  EXPECT_EQ(form.encode(encoder, rows, tables), orbStsNoErr);
  std::string bits;
  for (int i = 0; i < encoder.position.at(0); ++i) {
    const Orb8u* const byte = encoder.dst.data() + i;
    if (i == 0 || byte[-1] != 255) bits += orbtest::binary(*byte, 8);
  }
  const size_t kept = static_cast<size_t>(encoder.record()->bitCount);
  return bits + orbtest::binary(encoder.record()->bitBuffer >> 16, 8).substr(0, kept);
}

void expectKnownBits(const EncodeForm& form) {
  const auto bits = [&](Orb16s value) { return encodedBits(form, {{value}}, typicalTables(1)); };
  EXPECT_EQ(bits(0), "00");
  EXPECT_EQ(bits(1), "0101");
  EXPECT_EQ(bits(-1), "0100");
  EXPECT_EQ(bits(5),
            "100"
            "101");
  EXPECT_EQ(bits(-5),
            "100"
            "010");
  EXPECT_EQ(bits(32767),
            "1111111111110"
            "111111111111111");
  EXPECT_EQ(bits(-32767),
            "1111111111110"
            "000000000000000");
  // Category 16 says it all.
  EXPECT_EQ(bits(-32768), "11111111111110");
}

void expectEncodesAny(const EncodeForm& form) {
  Random random("rows to encode");
  for (int round = 0; round < 200; ++round) {
    const size_t count = random.between<size_t>(1, 4);
    const Rows rows = randomRows(random, count, random.between(1, 40));
    expectEncodes(form, rows, random.oneIn(2) ? fullTables(count) : typicalTables(count), 3000);
    if (testing::Test::HasFailure()) return;
  }
  // Longer ones, with room for all and with not quite enough.
  for (const size_t count : {1, 2, 3, 4}) {
    const Rows rows = randomRows(random, count, 700);
    const int size = static_cast<int>(encodedScan(rows, fullTables(count)).size());
    for (const int capacity : {20 * size, 2 * size + 10, size + size / 2, size - 1}) {
      expectEncodes(form, rows, fullTables(count), capacity);
      if (testing::Test::HasFailure()) return;
    }
  }
}

void expectEncodesEveryValue(const EncodeForm& form) {
  expectEncodes(form, everyValue(), typicalTables(1), 2 * 65536 * 8);
  expectEncodes(form, everyValue(), fullTables(1), 2 * 65536 * 8);
}

// Values and codes of ones, with a byte of 255 at any place.
void expectStuffs(const EncodeForm& form) {
  const Table ones(unary({15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0}));
  Random random("stuffing");
  for (int round = 0; round < 100; ++round) {
    Rows rows(2, Row(30));
    for (Row& row : rows) {
      for (Orb16s& value : row) value = static_cast<Orb16s>((1 << random.between(0, 15)) - 1);
    }
    const Bytes scan = encodedScan(rows, {&ones, &ones});
    ASSERT_GT(std::count(scan.begin(), scan.end(), 255), 10);
    expectEncodes(form, rows, {&ones, &ones}, round % 2 == 0 ? 3000 : 250);
    if (testing::Test::HasFailure()) return;
  }
}

// A symbol without a code writes nothing; what came before it stays.
void expectMissingCodesFail(const EncodeForm& form) {
  const Table some(unary({0, 1, 2})), none(unary({}));
  for (const int capacity : {1, 2, 3, 600}) {
    Encoder encoder(capacity);
    encoder.record()->bitCount = 3;
    encoder.record()->bitBuffer = 0xA00000;
    const Bytes before = encoder.state.samples();
    EXPECT_EQ(form.encode(encoder, {{0}}, {&none}), orbStsJpegHuffTableErr);
    EXPECT_EQ(form.encode(encoder, {{4}}, {&some}), orbStsJpegHuffTableErr);
    EXPECT_EQ(form.encode(encoder, {{-32768}}, {&some}), orbStsJpegHuffTableErr);
    EXPECT_EQ(encoder.state.samples(), before);
    EXPECT_EQ(encoder.position.at(0), 0);
    for (size_t bad = 0; bad < 5; ++bad) {
      for (size_t row = 0; row < 2; ++row) {
        Rows rows = {{3, -3, 3, -3, 3}, {1, 0, 2, 1, 0}};
        rows[row][bad] = 7;
        expectEncodes(form, rows, {&some, &some}, capacity);
        if (testing::Test::HasFailure()) return;
      }
    }
  }
  for (size_t bad = 0; bad < 150; bad += 3) {
    Rows rows(3, Row(150, 2));
    rows[bad % 2][bad] = -4;
    expectEncodes(form, rows, {&some, &some, &some}, 2000);
  }
}

void expectEveryLengthOfDestination(const EncodeForm& form) {
  Random random("short destinations");
  for (int round = 0; round < 3; ++round) {
    const size_t count = random.between<size_t>(1, 4);
    const Rows rows = randomRows(random, count, 25);
    const int size = static_cast<int>(encodedScan(rows, fullTables(count)).size());
    for (int capacity = 1; capacity <= 2 * size + 2; ++capacity) {
      expectEncodes(form, rows, fullTables(count), capacity);
      if (testing::Test::HasFailure()) return;
    }
  }
}

void expectPositionsOutsideAreTheEnd(const EncodeForm& form) {
  for (const int position : {-1, kLeast, 100, 101, 2147483647}) {
    Encoder encoder(100);
    encoder.position.set(0, 0, position);
    EXPECT_EQ(form.encode(encoder, {{30000}}, typicalTables(1)), orbStsJpegBufferEndErr);
    EXPECT_EQ(encoder.position.at(0), position);
  }
}

void expectFlushes(const EncodeForm& form) {
  for (int bits = 0; bits < 8; ++bits) {
    Encoder encoder(1);
    encoder.record()->bitCount = bits;
    EXPECT_EQ(form.flush(encoder), orbStsNoErr);
    EXPECT_EQ(encoder.position.at(0), bits == 0 ? 0 : 1);
    if (bits != 0) {
      EXPECT_EQ(encoder.dst.data()[0], 255 >> bits);
    }
    for (const Orb8u byte : encoder.state.samples()) ASSERT_EQ(byte, 0);
  }
  // The state starts anew even if there is no room.
  Encoder full(1);
  full.position.set(0, 0, 1);
  full.record()->bitCount = 4;
  EXPECT_EQ(form.flush(full), orbStsJpegBufferEndErr);
  for (const Orb8u byte : full.state.samples()) ASSERT_EQ(byte, 0);
}

// Any values, tables and states, damaged ones too.
void expectAgreement(const EncodeForm& px, const EncodeForm& build, Random& random) {
  for (int round = 0; round < 200; ++round) {
    const size_t count = random.between<size_t>(1, 4);
    const Rows rows = randomRows(random, count, random.between(1, 150));
    Encoder expected(random.between(1, 2000)), actual(expected.dst.size());
    std::vector<Table> own(count, typicalTable());
    Tables tables;
    for (Table& table : own) {
      if (random.oneIn(8)) fillAny(table.encoder, random);
      tables.push_back(&table);
    }
    if (random.oneIn(2)) tables = fullTables(count);
    if (random.oneIn(8)) {
      expected.state.fillExtreme(random);
      actual.state.copySamples(expected.state);
    }
    for (int call = 0; call < 3; ++call) {
      const OrbStatus status = px.encode(expected, rows, tables);
      ASSERT_EQ(build.encode(actual, rows, tables), status);
      ASSERT_TRUE(std::equal(expected.dst.data(), expected.dst.data() + expected.dst.size(),
                             actual.dst.data()));
      ASSERT_TRUE(actual.state.sameBytes(expected.state));
      ASSERT_TRUE(actual.position.sameBytes(expected.position));
    }
    ASSERT_EQ(build.flush(actual), px.flush(expected));
    ASSERT_TRUE(std::equal(expected.dst.data(), expected.dst.data() + expected.dst.size(),
                           actual.dst.data()));
  }
}

#define ENCODE_TESTS(name, form)                              \
  ORB_MEANING(name, KnownBits) {                              \
    expectKnownBits(form(ORB(name)));                         \
  }                                                           \
  ORB_MEANING(name, AnyDifferences) {                         \
    expectEncodesAny(form(ORB(name)));                        \
  }                                                           \
  ORB_MEANING(name, EveryValue) {                             \
    expectEncodesEveryValue(form(ORB(name)));                 \
  }                                                           \
  ORB_MEANING(name, StuffsBytesOf255) {                       \
    expectStuffs(form(ORB(name)));                            \
  }                                                           \
  ORB_MEANING(name, SymbolsWithoutACodeFail) {                \
    expectMissingCodesFail(form(ORB(name)));                  \
  }                                                           \
  ORB_MEANING(name, EveryLengthOfDestination) {               \
    expectEveryLengthOfDestination(form(ORB(name)));          \
  }                                                           \
  ORB_MEANING(name, PositionsOutsideAreTheEnd) {              \
    expectPositionsOutsideAreTheEnd(form(ORB(name)));         \
  }                                                           \
  ORB_MEANING(name, FlushFillsTheLastByteWithOnes) {          \
    expectFlushes(form(ORB(name)));                           \
  }                                                           \
  ORB_AGREEMENT(name) {                                       \
    expectAgreement(form(PX(name)), form(ORB(name)), random); \
  }

ENCODE_TESTS(orbiEncodeHuffmanOne_JPEG_16s1u_C1, byOne)
ENCODE_TESTS(orbiEncodeHuffmanRow_JPEG_16s1u_P4C1, byRows)

ORB_MEANING(orbiEncodeHuffmanOne_JPEG_16s1u_C1, ChecksInOrder) {
  const auto function = ORB(orbiEncodeHuffmanOne_JPEG_16s1u_C1);
  struct Call {
    const Orb16s* src;
    Orb8u* dst;
    Orb32s length;
    Orb32s* position;
    const OrbiEncodeHuffmanSpec* table;
    OrbiEncodeHuffmanState* state;
    Orb32s flush = 0;
  };
  const Orb16s value = 5;
  Encoder e(100);
  const Call good = {&value,    e.dst.data(), 100, e.position.data(), &typicalTable().encoder,
                     e.record()};
  const auto run = [&](const Call& c) {
    return function(c.src, c.dst, c.length, c.position, c.table, c.state, c.flush);
  };
  const std::vector<orbtest::Fault<Call>> first = {
      {orbStsNullPtrErr, [](Call& c) { c.dst = nullptr; }},
      {orbStsSizeErr, [](Call& c) { c.length = 0; }},
      {orbStsSizeErr, [](Call& c) { c.length = kLeast; }},
      {orbStsNullPtrErr, [](Call& c) { c.position = nullptr; }},
      {orbStsNullPtrErr, [](Call& c) { c.state = nullptr; }}};
  std::vector<orbtest::Fault<Call>> all = first;
  all.push_back({orbStsNullPtrErr, [](Call& c) { c.src = nullptr; }});
  all.push_back({orbStsNullPtrErr, [](Call& c) { c.table = nullptr; }});
  const Bytes before = e.state.samples();
  expectChecks(all, good, run);
  // A flush comes in front of the difference and its table.
  Call flush = good;
  flush.flush = 1;
  flush.src = nullptr;
  flush.table = nullptr;
  expectChecks(first, flush, run);
  EXPECT_EQ(e.position.at(0), 0);
  EXPECT_EQ(e.state.samples(), before);
  EXPECT_EQ(run(good), orbStsNoErr);
  EXPECT_EQ(run(flush), orbStsNoErr);
  EXPECT_EQ(e.position.at(0), 1);
}

// A call on rows with everything in place.
struct EncodeRowCall {
  const Orb16s* rows[4];
  Orb32s length = 2, count = 4;
  Orb8u* dst;
  Orb32s dstLength = 100;
  Orb32s* position;
  const OrbiEncodeHuffmanSpec* tables[4];
  OrbiEncodeHuffmanState* state;
  Orb32s flush = 0;
  bool hasRows = true, hasTables = true;

  EncodeRowCall(Encoder& e, const Orb16s* row)
      : dst(e.dst.data()), position(e.position.data()), state(e.record()) {
    std::fill(rows, rows + 4, row);
    std::fill(tables, tables + 4, &typicalTable().encoder);
  }
  OrbStatus run(EncodeRowFunction* function) const {
    return function(hasRows ? rows : nullptr, length, count, dst, dstLength, position,
                    hasTables ? tables : nullptr, state, flush);
  }
};

ORB_MEANING(orbiEncodeHuffmanRow_JPEG_16s1u_P4C1, ChecksInOrder) {
  using Call = EncodeRowCall;
  const auto run = [&](const Call& c) { return c.run(ORB(orbiEncodeHuffmanRow_JPEG_16s1u_P4C1)); };
  const Orb16s row[2] = {5, 6};
  Encoder e(100);
  const Call good(e, row);
  const std::vector<orbtest::Fault<Call>> first = {
      {orbStsNullPtrErr, [](Call& c) { c.dst = nullptr; }},
      {orbStsSizeErr, [](Call& c) { c.dstLength = 0; }},
      {orbStsSizeErr, [](Call& c) { c.dstLength = -1; }},
      {orbStsNullPtrErr, [](Call& c) { c.position = nullptr; }},
      {orbStsNullPtrErr, [](Call& c) { c.state = nullptr; }}};
  std::vector<orbtest::Fault<Call>> all = first;
  const std::vector<orbtest::Fault<Call>> rest = {
      {orbStsNullPtrErr, [](Call& c) { c.hasRows = false; }},
      {orbStsSizeErr, [](Call& c) { c.length = 0; }},
      {orbStsSizeErr, [](Call& c) { c.length = kLeast; }},
      {orbStsSizeErr, [](Call& c) { c.count = 0; }},
      {orbStsSizeErr, [](Call& c) { c.count = kLeast; }},
      {orbStsNullPtrErr, [](Call& c) { c.hasTables = false; }}};
  all.insert(all.end(), rest.begin(), rest.end());
  for (int i = 0; i < 4; ++i) {
    all.push_back({orbStsNullPtrErr, [i](Call& c) { c.rows[i] = nullptr; }});
    all.push_back({orbStsNullPtrErr, [i](Call& c) { c.tables[i] = nullptr; }});
  }
  const Bytes before = e.state.samples();
  expectChecks(all, good, run);
  Call flush = good;
  flush.flush = 1;
  flush.hasRows = flush.hasTables = false;
  flush.length = flush.count = 0;
  expectChecks(first, flush, run);
  EXPECT_EQ(e.position.at(0), 0);
  EXPECT_EQ(e.state.samples(), before);
  EXPECT_EQ(run(good), orbStsNoErr);
  EXPECT_EQ(e.position.at(0), 6);
  // What is behind the rows of the call is not looked at.
  Call two = good;
  two.count = 2;
  two.rows[2] = two.rows[3] = nullptr;
  two.tables[2] = two.tables[3] = nullptr;
  EXPECT_EQ(run(two), orbStsNoErr);
  EXPECT_EQ(run(flush), orbStsNoErr);
}

ORB_MEANING(orbiEncodeHuffmanRow_JPEG_16s1u_P4C1, MoreThanFourRowsAreFour) {
  const Orb16s row[2] = {5, 6};
  Encoder four(100), more(100);
  EncodeRowCall call(four, row);
  EXPECT_EQ(call.run(ORB(orbiEncodeHuffmanRow_JPEG_16s1u_P4C1)), orbStsNoErr);
  for (const int count : {5, 2147483647}) {
    GuardedPointers<const Orb16s> rows(4);
    GuardedPointers<const OrbiEncodeHuffmanSpec> tables(4);
    std::fill(rows.data(), rows.data() + 4, row);
    std::fill(tables.data(), tables.data() + 4, &typicalTable().encoder);
    Encoder encoder(100);
    EXPECT_EQ(ORB(orbiEncodeHuffmanRow_JPEG_16s1u_P4C1)(rows.data(), 2, count, encoder.dst.data(),
                                                        100, encoder.position.data(), tables.data(),
                                                        encoder.record(), 0),
              orbStsNoErr);
    EXPECT_TRUE(encoder.position.sameBytes(four.position));
    EXPECT_TRUE(encoder.state.sameBytes(four.state));
    EXPECT_TRUE(std::equal(four.dst.data(), four.dst.data() + 100, encoder.dst.data()));
  }
}

// ---- Decoding

constexpr Orb16s kUntouched = 12345;

// The equations. What fails stores nothing.
OrbStatus decodeDifference(ReaderModel& reader, const DecoderTable& table, Orb16s& value) {
  int category = 0, difference = 0;
  OrbStatus status = reader.symbol(table, category);
  if (status == orbStsNoErr && category > 0 && category < 16) {
    status = reader.value(category, difference);
  }
  if (status == orbStsNoErr) value = static_cast<Orb16s>(category < 16 ? difference : -32768);
  return status;
}

// What a host holds while it decodes. The fields of block coding are not these functions' business.
struct Decoder {
  GuardedSource src;
  Plane<Orb32s> position{1, 1, {0, 1}};
  Plane<Orb32s> marker{1, 1, {0, 1}};
  Plane<Orb8u> state{sizeof(OrbiDecodeHuffmanState), 1, {0, 1}};

  explicit Decoder(const Bytes& bytes) : src(bytes) {
    position.set(0, 0, 0);
    marker.set(0, 0, 0);
    state.fill([] { return Orb8u{0}; });
    record()->eobRun = 77;
    record()->lastPosition = 1234;
  }
  OrbiDecodeHuffmanState* record() {
    return reinterpret_cast<OrbiDecodeHuffmanState*>(state.data());
  }
  void expectLike(const ReaderModel& reader) {
    ASSERT_EQ(position.at(0), reader.position);
    ASSERT_EQ(marker.at(0), reader.marker);
    ASSERT_EQ(record()->bitCount, reader.left);
    ASSERT_EQ(record()->bitBuffer, reader.bitBuffer());
    ASSERT_EQ(record()->bitBufferHigh, 0u);
    ASSERT_EQ(record()->eobRun, 77);
    ASSERT_EQ(record()->lastPosition, 1234);
    position.expectOutsideUntouched();
    marker.expectOutsideUntouched();
    state.expectOutsideUntouched();
  }
};

// Either form, seen as a decoder of rows, which have their size already.
using DecodeForm = std::function<OrbStatus(Decoder&, Rows&, const Tables&)>;

DecodeForm byOne(DecodeOneFunction* function) {
  return [=](Decoder& d, Rows& rows, const Tables& tables) {
    return inScanOrder(rows.size(), rows[0].size(), [&](size_t row, size_t i) {
      Plane<Orb16s> value(1, 1, {0, 1});
      value.set(0, 0, rows[row][i]);
      const OrbStatus status = function(d.src.data(), d.src.size(), d.position.data(), value.data(),
                                        d.marker.data(), &tables[row]->decoder, d.record());
      value.expectOutsideUntouched();
      rows[row][i] = value.at(0);
      return status;
    });
  };
}

DecodeForm byRows(DecodeRowFunction* function) {
  return [=](Decoder& d, Rows& rows, const Tables& tables) {
    const int count = static_cast<int>(rows.size());
    const int length = static_cast<int>(rows[0].size());
    std::vector<Plane<Orb16s>> planes;
    GuardedPointers<Orb16s> dst(rows.size());
    GuardedPointers<const OrbiDecodeHuffmanSpec> specs(rows.size());
    for (int c = 0; c < count; ++c) {
      planes.push_back(orbtest::makeRow<Orb16s>(length, {0, c + 1}));
      for (int i = 0; i < length; ++i) planes[c].set(i, 0, rows[c][i]);
      dst[c] = planes[c].data();
      specs[c] = &tables[c]->decoder;
    }
    const OrbStatus status = function(d.src.data(), d.src.size(), d.position.data(), dst.data(),
                                      length, count, d.marker.data(), specs.data(), d.record());
    for (int c = 0; c < count; ++c) {
      planes[c].expectOutsideUntouched();
      rows[c] = planes[c].samples();
    }
    return status;
  };
}

// Decodes rows until a call fails, comparing everything with the model.
void expectDecodes(const DecodeForm& form, const Bytes& scan, size_t count, size_t length,
                   const Tables& tables, int calls) {
  Decoder decoder(scan);
  ReaderModel model;
  model.src = &scan;
  for (int call = 0; call < calls; ++call) {
    Rows expected(count, Row(length, kUntouched)), actual = expected;
    const OrbStatus status = inScanOrder(count, length, [&](size_t row, size_t i) {
      return decodeDifference(model, tables[row]->model, expected[row][i]);
    });
    ASSERT_EQ(form(decoder, actual, tables), status);
    ASSERT_EQ(actual, expected);
    decoder.expectLike(model);
    if (testing::Test::HasFatalFailure() || status != orbStsNoErr) return;
  }
}

void expectRoundTrip(const DecodeForm& form, const Rows& rows, const Tables& tables) {
  const Bytes scan = encodedScan(rows, tables);
  Decoder decoder(scan);
  Rows decoded(rows.size(), Row(rows[0].size(), kUntouched));
  ASSERT_EQ(form(decoder, decoded, tables), orbStsNoErr);
  ASSERT_EQ(decoded, rows);
  expectDecodes(form, scan, rows.size(), rows[0].size(), tables, 2);
}

void expectRoundTrips(const DecodeForm& form) {
  Random random("rows to decode");
  for (int round = 0; round < 100; ++round) {
    const size_t count = random.between<size_t>(1, 4);
    const Rows rows = randomRows(random, count, random.between(1, 60));
    expectRoundTrip(form, rows, random.oneIn(2) ? fullTables(count) : typicalTables(count));
    if (testing::Test::HasFailure()) return;
  }
}

void expectEveryValueBack(const DecodeForm& form) {
  const Rows rows = everyValue();
  Decoder decoder(encodedScan(rows, typicalTables(1)));
  Rows decoded(1, Row(65536, kUntouched));
  ASSERT_EQ(form(decoder, decoded, typicalTables(1)), orbStsNoErr);
  ASSERT_EQ(decoded, rows);
}

// Every symbol from 16 on is -32768, and no bits follow.
void expectHighSymbols(const DecodeForm& form) {
  for (int symbol = 16; symbol < 256; ++symbol) {
    const Table table(unary({static_cast<Orb8u>(symbol), 1}));
    Decoder decoder(
        bytesOf("0"
                "10"
                "1"
                "0"
                "10"
                "0"));
    Rows decoded(1, Row(4, kUntouched));
    ASSERT_EQ(form(decoder, decoded, {&table}), orbStsNoErr);
    ASSERT_EQ(decoded[0], (Row{-32768, 1, -32768, -1})) << "symbol " << symbol;
  }
}

void expectSourcesCutAtEveryByte(const DecodeForm& form) {
  Random random("cut sources");
  for (int round = 0; round < 6; ++round) {
    const size_t count = random.between<size_t>(1, 4);
    const Tables tables = round % 2 == 0 ? fullTables(count) : typicalTables(count);
    const Bytes scan = encodedScan(randomRows(random, count, 12), tables);
    for (size_t size = 1; size < scan.size(); ++size) {
      expectDecodes(form, Bytes(scan.begin(), scan.begin() + size), count, 5, tables, 4);
      if (testing::Test::HasFailure()) return;
    }
  }
}

void expectMarkersAtEveryByte(const DecodeForm& form) {
  Random random("markers");
  const Bytes inserts[] = {{255, 0xD9}, {255, 255, 0xD0}, {255, 255, 255, 0}, {255}, {255, 255}};
  for (int round = 0; round < 2; ++round) {
    const Tables tables = round % 2 == 0 ? fullTables(3) : typicalTables(3);
    const Bytes scan = encodedScan(randomRows(random, 3, 6), tables);
    for (size_t at = 0; at <= scan.size(); ++at) {
      for (const Bytes& insert : inserts) {
        Bytes damaged = scan;
        damaged.insert(damaged.begin() + static_cast<ptrdiff_t>(at), insert.begin(), insert.end());
        expectDecodes(form, damaged, 3, 2, tables, 4);
        damaged.resize(at + insert.size());
        expectDecodes(form, damaged, 3, 2, tables, 4);
        if (testing::Test::HasFailure()) return;
      }
    }
  }
}

// A marker that comes up while a code is read: bits that are not there make a symbol of category 0,
// which wants no more of them, and only the next read fails.
void expectMarkerWithinACode(const DecodeForm& form) {
  HuffmanLists lists = {Bytes(16), {0}};
  lists.bits[8] = 1;  // nine zeros
  const Table table(lists);
  Decoder decoder({0, 255, 0xD9});
  decoder.position.set(0, 0, 1);
  decoder.record()->bitCount = 8;
  Rows decoded(1, Row(2, kUntouched));
  EXPECT_EQ(form(decoder, decoded, {&table}), orbStsJpegBitStreamErr);
  EXPECT_EQ(decoded[0], (Row{0, kUntouched}));
  EXPECT_EQ(decoder.record()->bitCount, -1);
  EXPECT_EQ(decoder.marker.at(0), 0xD9);
}

// One that comes up while a value is read makes up the value.
void expectMarkerWithinAValue(const DecodeForm& form) {
  const Table table(unary({10}));
  Decoder decoder({0, 255, 0xD9});
  decoder.position.set(0, 0, 1);
  decoder.record()->bitCount = 8;
  Rows decoded(1, Row(2, kUntouched));
  EXPECT_EQ(form(decoder, decoded, {&table}), orbStsJpegBitStreamErr);
  EXPECT_NE(decoded[0][0], kUntouched);
  EXPECT_EQ(decoded[0][1], kUntouched);
  EXPECT_EQ(decoder.record()->bitCount, -3);
}

void expectReadPositionsOutsideAreTheEnd(const DecodeForm& form) {
  for (const int position : {-1, kLeast, 8, 9, 2147483647}) {
    Decoder decoder(Bytes(8));
    decoder.position.set(0, 0, position);
    Rows decoded(1, Row(1, kUntouched));
    EXPECT_EQ(form(decoder, decoded, typicalTables(1)), orbStsJpegBufferEndErr);
    EXPECT_EQ(decoder.position.at(0), position);
    EXPECT_EQ(decoded[0][0], kUntouched);
  }
}

// The value stays as it is when there is none.
void expectFailuresStoreNothing(const DecodeForm& form) {
  const Table none(unary({})), ten(unary({10}));
  for (const Table* table : {&none, &ten}) {
    Decoder decoder(Bytes(1, 0x55));
    Rows decoded(1, Row(1, kUntouched));
    EXPECT_EQ(form(decoder, decoded, {table}), orbStsJpegBufferEndErr);
    EXPECT_EQ(decoded[0][0], kUntouched);
  }
  Decoder decoder(Bytes(8, 0x55));
  Rows decoded(1, Row(1, kUntouched));
  EXPECT_EQ(form(decoder, decoded, {&none}), orbStsJpegBitStreamErr);
  EXPECT_EQ(decoded[0][0], kUntouched);
  expectDecodes(form, Bytes(8, 0x55), 1, 1, {&none}, 1);
}

// Scans that nobody has made, by tables that only decoders take.
void expectDamagedScans(const DecodeForm& form) {
  Random random("damaged scans");
  std::vector<Table> overfull;
  for (int i = 0; i < 8; ++i) overfull.emplace_back(orbtest::overfullLists(random));
  for (int round = 0; round < 300; ++round) {
    const size_t count = random.between<size_t>(1, 4);
    Tables tables = fullTables(count);
    Bytes scan = mutated(encodedScan(randomRows(random, count, 20), tables), random);
    if (scan.empty()) scan.push_back(0);
    for (const Table*& table : tables) {
      if (random.oneIn(4)) table = &overfull[random.between<size_t>(0, 7)];
    }
    expectDecodes(form, scan, count, 8, tables, 4);
    if (testing::Test::HasFailure()) return;
  }
}

void expectAgreement(const DecodeForm& px, const DecodeForm& build, Random& random) {
  for (int round = 0; round < 250; ++round) {
    const size_t count = random.between<size_t>(1, 4);
    Tables tables = random.oneIn(2) ? fullTables(count) : typicalTables(count);
    Bytes scan = encodedScan(randomRows(random, count, 40), tables);
    if (random.oneIn(2)) scan = mutated(scan, random);
    if (scan.empty()) scan.push_back(0);
    Table own = typicalTable();
    if (random.oneIn(8)) {
      fillAny(own.decoder, random);
      tables[0] = &own;
    }
    Decoder expected(scan), actual(scan);
    if (random.oneIn(8)) {
      expected.state.fillExtreme(random);
      actual.state.copySamples(expected.state);
    }
    for (int call = 0; call < 4; ++call) {
      Rows expectedRows(count, Row(12, kUntouched)), actualRows = expectedRows;
      const OrbStatus status = px(expected, expectedRows, tables);
      ASSERT_EQ(build(actual, actualRows, tables), status);
      ASSERT_EQ(actualRows, expectedRows);
      ASSERT_TRUE(actual.state.sameBytes(expected.state));
      ASSERT_TRUE(actual.position.sameBytes(expected.position));
      ASSERT_TRUE(actual.marker.sameBytes(expected.marker));
    }
  }
}

#define DECODE_TESTS(name, form)                              \
  ORB_MEANING(name, RoundTrips) {                             \
    expectRoundTrips(form(ORB(name)));                        \
  }                                                           \
  ORB_MEANING(name, EveryValue) {                             \
    expectEveryValueBack(form(ORB(name)));                    \
  }                                                           \
  ORB_MEANING(name, SymbolsFrom16OnAreTheLeastDifference) {   \
    expectHighSymbols(form(ORB(name)));                       \
  }                                                           \
  ORB_MEANING(name, SourcesCutAtEveryByte) {                  \
    expectSourcesCutAtEveryByte(form(ORB(name)));             \
  }                                                           \
  ORB_MEANING(name, MarkersAndFillBytesAtEveryByte) {         \
    expectMarkersAtEveryByte(form(ORB(name)));                \
  }                                                           \
  ORB_MEANING(name, AMarkerWithinACode) {                     \
    expectMarkerWithinACode(form(ORB(name)));                 \
  }                                                           \
  ORB_MEANING(name, AMarkerWithinAValue) {                    \
    expectMarkerWithinAValue(form(ORB(name)));                \
  }                                                           \
  ORB_MEANING(name, PositionsOutsideAreTheEnd) {              \
    expectReadPositionsOutsideAreTheEnd(form(ORB(name)));     \
  }                                                           \
  ORB_MEANING(name, FailuresStoreNothing) {                   \
    expectFailuresStoreNothing(form(ORB(name)));              \
  }                                                           \
  ORB_MEANING(name, DamagedScans) {                           \
    expectDamagedScans(form(ORB(name)));                      \
  }                                                           \
  ORB_AGREEMENT(name) {                                       \
    expectAgreement(form(PX(name)), form(ORB(name)), random); \
  }

DECODE_TESTS(orbiDecodeHuffmanOne_JPEG_1u16s_C1, byOne)
DECODE_TESTS(orbiDecodeHuffmanRow_JPEG_1u16s_C1P4, byRows)

ORB_MEANING(orbiDecodeHuffmanOne_JPEG_1u16s_C1, ChecksInOrder) {
  struct Call {
    const Orb8u* src;
    Orb32s length;
    Orb32s* position;
    Orb16s* dst;
    Orb32s* marker;
    const OrbiDecodeHuffmanSpec* table;
    OrbiDecodeHuffmanState* state;
  };
  Decoder d(Bytes(4));
  Orb16s value = kUntouched;
  const Call good = {
      d.src.data(), 4, d.position.data(), &value, d.marker.data(), &typicalTable().decoder,
      d.record()};
  const auto run = [&](const Call& c) {
    return ORB(orbiDecodeHuffmanOne_JPEG_1u16s_C1)(c.src, c.length, c.position, c.dst, c.marker,
                                                   c.table, c.state);
  };
  const Bytes before = d.state.samples();
  expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.src = nullptr; }},
                      {orbStsSizeErr, [](Call& c) { c.length = 0; }},
                      {orbStsSizeErr, [](Call& c) { c.length = kLeast; }},
                      {orbStsNullPtrErr, [](Call& c) { c.position = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.dst = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.marker = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.table = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.state = nullptr; }}},
                     good, run);
  EXPECT_EQ(value, kUntouched);
  EXPECT_EQ(d.position.at(0), 0);
  EXPECT_EQ(d.state.samples(), before);
  EXPECT_EQ(run(good), orbStsNoErr);
}

ORB_MEANING(orbiDecodeHuffmanRow_JPEG_1u16s_C1P4, ChecksInOrder) {
  struct Call {
    const Orb8u* src;
    Orb32s srcLength;
    Orb32s* position;
    Orb32s* marker;
    OrbiDecodeHuffmanState* state;
    Orb16s* rows[4];
    const OrbiDecodeHuffmanSpec* tables[4];
    Orb32s length = 2, count = 4;
    bool hasRows = true, hasTables = true;
  };
  Decoder d(Bytes(4));
  Orb16s row[2] = {kUntouched, kUntouched};
  const OrbiDecodeHuffmanSpec* const table = &typicalTable().decoder;
  const Call good = {d.src.data(),
                     4,
                     d.position.data(),
                     d.marker.data(),
                     d.record(),
                     {row, row, row, row},
                     {table, table, table, table}};
  const auto run = [&](const Call& c) {
    return ORB(orbiDecodeHuffmanRow_JPEG_1u16s_C1P4)(
        c.src, c.srcLength, c.position, c.hasRows ? c.rows : nullptr, c.length, c.count, c.marker,
        c.hasTables ? c.tables : nullptr, c.state);
  };
  std::vector<orbtest::Fault<Call>> faults = {
      {orbStsNullPtrErr, [](Call& c) { c.src = nullptr; }},
      {orbStsSizeErr, [](Call& c) { c.srcLength = 0; }},
      {orbStsSizeErr, [](Call& c) { c.srcLength = -1; }},
      {orbStsNullPtrErr, [](Call& c) { c.position = nullptr; }},
      {orbStsNullPtrErr, [](Call& c) { c.hasRows = false; }},
      {orbStsSizeErr, [](Call& c) { c.length = 0; }},
      {orbStsSizeErr, [](Call& c) { c.length = kLeast; }},
      {orbStsSizeErr, [](Call& c) { c.count = 0; }},
      {orbStsSizeErr, [](Call& c) { c.count = kLeast; }},
      {orbStsNullPtrErr, [](Call& c) { c.marker = nullptr; }},
      {orbStsNullPtrErr, [](Call& c) { c.hasTables = false; }},
      {orbStsNullPtrErr, [](Call& c) { c.state = nullptr; }}};
  for (int i = 0; i < 4; ++i) {
    faults.push_back({orbStsNullPtrErr, [i](Call& c) { c.rows[i] = nullptr; }});
    faults.push_back({orbStsNullPtrErr, [i](Call& c) { c.tables[i] = nullptr; }});
  }
  const Bytes before = d.state.samples();
  expectChecks(faults, good, run);
  EXPECT_EQ(row[0], kUntouched);
  EXPECT_EQ(d.position.at(0), 0);
  EXPECT_EQ(d.state.samples(), before);
  EXPECT_EQ(run(good), orbStsNoErr);
  // What is behind the rows of the call is not looked at.
  Call one = good;
  one.count = 1;
  std::fill(one.rows + 1, one.rows + 4, nullptr);
  std::fill(one.tables + 1, one.tables + 4, nullptr);
  EXPECT_EQ(run(one), orbStsNoErr);
}

ORB_MEANING(orbiDecodeHuffmanRow_JPEG_1u16s_C1P4, MoreThanFourRowsAreFour) {
  Random random("five rows");
  const Rows rows = randomRows(random, 4, 9);
  for (const int count : {4, 5, 2147483647}) {
    Decoder decoder(encodedScan(rows, fullTables(4)));
    Rows decoded(4, Row(9, kUntouched));
    GuardedPointers<Orb16s> dst(4);
    GuardedPointers<const OrbiDecodeHuffmanSpec> tables(4);
    for (size_t i = 0; i < 4; ++i) {
      dst[i] = decoded[i].data();
      tables[i] = &fullTable(i).decoder;
    }
    ASSERT_EQ(ORB(orbiDecodeHuffmanRow_JPEG_1u16s_C1P4)(
                  decoder.src.data(), decoder.src.size(), decoder.position.data(), dst.data(), 9,
                  count, decoder.marker.data(), tables.data(), decoder.record()),
              orbStsNoErr);
    EXPECT_EQ(decoded, rows);
  }
}

// ---- orbiGetHuffmanStatisticsOne_JPEG_16s_C1

ORB_MEANING(orbiGetHuffmanStatisticsOne_JPEG_16s_C1, ChecksPointers) {
  const auto function = ORB(orbiGetHuffmanStatisticsOne_JPEG_16s_C1);
  const Orb16s value = 1;
  Orb32s counts[256] = {};
  EXPECT_EQ(function(nullptr, counts), orbStsNullPtrErr);
  EXPECT_EQ(function(&value, nullptr), orbStsNullPtrErr);
  EXPECT_EQ(*std::max_element(counts, counts + 256), 0);
}

ORB_MEANING(orbiGetHuffmanStatisticsOne_JPEG_16s_C1, CountsEveryValue) {
  const auto function = ORB(orbiGetHuffmanStatisticsOne_JPEG_16s_C1);
  Plane<Orb16s> src(1, 1, {0, 1});
  Plane<Orb32s> counts(256, 1, {0, 3});
  std::vector<Orb32s> expected(256, 1000);
  counts.fill([] { return 1000; });
  for (int value = -32768; value < 32768; ++value) {
    src.set(0, 0, static_cast<Orb16s>(value));
    ASSERT_EQ(function(src.data(), counts.data()), orbStsNoErr);
    ++expected[static_cast<size_t>(bitLength(value))];
  }
  EXPECT_EQ(counts.samples(), expected);
  EXPECT_EQ(counts.at(0), 1001);
  EXPECT_EQ(counts.at(15), 1000 + 32768);
  EXPECT_EQ(counts.at(16), 1001);
  counts.expectOutsideUntouched();
}

ORB_AGREEMENT(orbiGetHuffmanStatisticsOne_JPEG_16s_C1) {
  Orb32s expected[256] = {}, actual[256] = {};
  for (int round = 0; round < 2000; ++round) {
    const Orb16s value = random.oneIn(2) ? random.any<Orb16s>() : random.extreme<Orb16s>();
    ASSERT_EQ(PX(orbiGetHuffmanStatisticsOne_JPEG_16s_C1)(&value, expected), orbStsNoErr);
    ASSERT_EQ(ORB(orbiGetHuffmanStatisticsOne_JPEG_16s_C1)(&value, actual), orbStsNoErr);
  }
  EXPECT_TRUE(std::equal(expected, expected + 256, actual));
}

}  // namespace
