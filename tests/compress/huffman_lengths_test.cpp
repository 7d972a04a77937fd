// What the byte Huffman coder makes of tables of lengths: room, and the packed form.
#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/compress/huffman_model.h"
#include "tests/support/faults.h"

namespace {

using namespace orbtest::huffman;
using orbtest::binary;
using orbtest::expectChecks;
using orbtest::GuardedBytes;
using orbtest::packBits;
using orbtest::Plane;
using orbtest::Random;

// ---- orbsHuffGetLenCodeTable_8u

ORB_MEANING(orbsHuffGetLenCodeTable_8u, CopiesTheLengths) {
  Random random("length tables");
  for (int round = 0; round < 20; ++round) {
    const Table lengths = fullLengths(random, random.between(2, 256), 32);
    TableMemory source(lengths);
    Record record;
    ASSERT_EQ(ORB(orbsDecodeHuffInit_8u)(source.get(), record.get()), orbStsNoErr);
    Plane<Orb32s> table(256, 1, {0, random.between(0, 15)});
    EXPECT_EQ(ORB(orbsHuffGetLenCodeTable_8u)(nullptr, record.get()), orbStsNullPtrErr);
    EXPECT_EQ(ORB(orbsHuffGetLenCodeTable_8u)(table.data(), nullptr), orbStsNullPtrErr);
    table.expectUntouched();
    EXPECT_EQ(ORB(orbsHuffGetLenCodeTable_8u)(table.data(), record.get()), orbStsNoErr);
    EXPECT_EQ(table.samples(), lengths);
    table.expectOutsideUntouched();
  }
}
ORB_AGREEMENT(orbsHuffGetLenCodeTable_8u) {
  TableMemory frequencies(randomFrequencies(random));
  Record record;
  ASSERT_EQ(PX(orbsEncodeHuffInit_8u)(frequencies.get(), record.get()), orbStsNoErr);
  TableMemory expected(Table(256)), actual(Table(256));
  EXPECT_EQ(PX(orbsHuffGetLenCodeTable_8u)(expected.get(), record.get()), orbStsNoErr);
  EXPECT_EQ(ORB(orbsHuffGetLenCodeTable_8u)(actual.get(), record.get()), orbStsNoErr);
  EXPECT_EQ(actual.values(), expected.values());
}

// ---- orbsHuffGetDstBuffSize_8u

ORB_MEANING(orbsHuffGetDstBuffSize_8u, Checks) {
  struct Call {
    Orb32s* pCodeLenTable;
    Orb32s srcLen;
  };
  TableMemory good(lengthsFrom({1, 2, 2}));
  TableMemory negative(lengthsFrom({1, 2, 2, -1})), tooLong(lengthsFrom({1, 2, 2, 33}));
  TableMemory least(lengthsFrom({INT32_MIN})), most(lengthsFrom({INT32_MAX}));
  Plane<Orb32s> bytes(1, 1, {0, 1}), symbols(1, 1, {0, 3});
  const auto run = [&](const Call& c) {
    return ORB(orbsHuffGetDstBuffSize_8u)(c.pCodeLenTable, c.srcLen, bytes.data(), symbols.data());
  };
  expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.pCodeLenTable = nullptr; }},
                      {orbStsSizeErr, [](Call& c) { c.srcLen = 0; }},
                      {orbStsSizeErr, [](Call& c) { c.srcLen = INT32_MIN; }}},
                     {tooLong.get(), 5}, run);
  for (TableMemory* const table : {&negative, &tooLong, &least, &most}) {
    EXPECT_EQ(run({table->get(), 5}), orbStsHuffLenErr);
  }
  bytes.expectUntouched();
  symbols.expectUntouched();
  EXPECT_EQ(run({good.get(), 5}), orbStsNoErr);
}

struct BufferSizes {
  OrbStatus status = orbStsNoErr;
  Orb32s bytes = -1;
  Orb32s symbols = -1;
};
template <class Function>
BufferSizes bufferSizes(Function* function, const Table& lengths, Orb32s srcLen) {
  TableMemory table(lengths);
  BufferSizes sizes;
  sizes.status = function(table.get(), srcLen, &sizes.bytes, &sizes.symbols);
  return sizes;
}

ORB_MEANING(orbsHuffGetDstBuffSize_8u, Bounds) {
  struct Example {
    Table lengths;
    Orb32s srcLen, bytes, symbols;
  };
  const Example examples[] = {
      {lengthsFrom({1, 2, 2}), 5, (10 + 2 + 7) / 8, 5 * 64},
      {lengthsFrom({3, 3, 3, 3, 3, 3, 3, 3}), 10, (30 + 3 + 7) / 8, 640 / 3},
      {staircase(32), 100, (3200 + 32 + 7) / 8, 6400},
      // Without any code lengths count as 1 and 32.
      {Table(256), 7, (7 + 1 + 7) / 8, 7 * 64 / 32},
      {Table(256, 32), 7, (224 + 32 + 7) / 8, 14},
      // In 32 bits: 0x7FFFFFFF * 32 is -32, 0x2000000 * 64 is -0x80000000.
      {Table(256, 32), INT32_MAX, 0, -2},
      {Table(256, 1), 0x2000000, 0x2000008 / 8, INT32_MIN},
  };
  for (const Example& example : examples) {
    const BufferSizes sizes =
        bufferSizes(ORB(orbsHuffGetDstBuffSize_8u), example.lengths, example.srcLen);
    EXPECT_EQ(sizes.status, orbStsNoErr);
    EXPECT_EQ(sizes.bytes, example.bytes);
    EXPECT_EQ(sizes.symbols, example.symbols);
  }
}
ORB_MEANING(orbsHuffGetDstBuffSize_8u, EitherResultMayBeUnwanted) {
  TableMemory table(lengthsFrom({1, 2, 2}));
  Orb32s bytes = -1, symbols = -1;
  EXPECT_EQ(ORB(orbsHuffGetDstBuffSize_8u)(table.get(), 8, nullptr, nullptr), orbStsNoErr);
  EXPECT_EQ(ORB(orbsHuffGetDstBuffSize_8u)(table.get(), 8, &bytes, nullptr), orbStsNoErr);
  EXPECT_EQ(ORB(orbsHuffGetDstBuffSize_8u)(table.get(), 8, nullptr, &symbols), orbStsNoErr);
  EXPECT_EQ(bytes, (16 + 2 + 7) / 8);
  EXPECT_EQ(symbols, 512);
}
ORB_AGREEMENT(orbsHuffGetDstBuffSize_8u) {
  for (int round = 0; round < 200; ++round) {
    Table lengths = fullLengths(random, random.between(2, 256), 32);
    if (random.oneIn(4)) lengths[at(random.between(0, 255))] = random.extreme<Orb32s>();
    const Orb32s srcLen = random.oneIn(2) ? random.extreme<Orb32s>() : random.between(1, 1 << 20);
    const BufferSizes expected = bufferSizes(PX(orbsHuffGetDstBuffSize_8u), lengths, srcLen);
    const BufferSizes actual = bufferSizes(ORB(orbsHuffGetDstBuffSize_8u), lengths, srcLen);
    EXPECT_EQ(actual.status, expected.status);
    EXPECT_EQ(actual.bytes, expected.bytes);
    EXPECT_EQ(actual.symbols, expected.symbols);
  }
}

// ---- orbsHuffLenCodeTablePack_8u

// Packed tables as values first: lengths and numbers of further ones. Each stretch of equal lengths
// is the first, if it differs from what was before, and repeats in portions of up to 34.
std::vector<int> packedValues(const Table& lengths) {
  std::vector<int> values;
  int before = 0;
  for (auto first = lengths.begin(); first != lengths.end();) {
    const Orb32s length = *first;
    const auto end = std::find_if(first, lengths.end(), [&](Orb32s l) { return l != length; });
    int repeats = static_cast<int>(end - first);
    if (length != before) {
      values.push_back(length);
      --repeats;
    }
    for (; repeats > 0; repeats -= std::min(repeats, 34)) {
      values.push_back(length);
      if (repeats == 1) continue;
      values.push_back(length);
      values.push_back(std::min(repeats, 34) - 2);
    }
    before = length;
    first = end;
  }
  return values;
}
// In digits, one character each.
Bytes packedBytes(const std::vector<int>& values) {
  std::string bits;
  int page = 0;
  for (const int value : values) {
    if (value / 13 != page) bits += binary(13 + value / 13, 4);
    page = value / 13;
    bits += binary(value % 13, 4);
  }
  return packBits(bits);
}

ORB_MEANING(orbsHuffLenCodeTablePack_8u, Checks) {
  struct Call {
    Orb32s* pCodeLenTable;
    Orb8u* pDst;
    Orb32s* pDstLen;
  };
  TableMemory table(Table(256));
  Plane<Orb8u> output(64, 1);
  Orb32s dstLen = 64, zero = 0, negative = INT32_MIN;
  const auto run = [&](const Call& c) {
    return ORB(orbsHuffLenCodeTablePack_8u)(c.pCodeLenTable, c.pDst, c.pDstLen);
  };
  const Call good = {table.get(), output.data(), &dstLen};
  expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.pCodeLenTable = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pDst = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pDstLen = nullptr; }},
                      {orbStsSizeErr, [&](Call& c) { c.pDstLen = &zero; }},
                      {orbStsSizeErr, [&](Call& c) { c.pDstLen = &negative; }}},
                     good, run);
  output.expectUntouched();
  EXPECT_EQ(run(good), orbStsNoErr);
}

// What a call with this much room returns and leaves.
struct Packed {
  OrbStatus status = orbStsNoErr;
  Bytes bytes;

  bool operator==(const Packed& other) const {
    return status == other.status && bytes == other.bytes;
  }
};
template <class Function>
Packed pack(Function* function, const Table& lengths, int room) {
  TableMemory table(lengths);
  GuardedBytes output(at(room));
  std::memset(output.data(), 0xA5, at(room));
  Plane<Orb32s> dstLen(1, 1, {0, 1});
  dstLen.set(0, 0, room);
  Packed packed;
  packed.status = function(table.get(), output.data(), dstLen.data());
  const int length = dstLen.at(0);
  EXPECT_GE(length, 0);
  EXPECT_LE(length, room);
  for (int i = length; i < room; ++i) EXPECT_EQ(output.data()[i], 0xA5) << "byte " << i;
  packed.bytes.assign(output.data(), output.data() + length);
  return packed;
}

ORB_MEANING(orbsHuffLenCodeTablePack_8u, WorkedByHand) {
  // The first zero is no other than the 0 in front of it: 34 repeats are 0, 0 and 32 more, the
  // digit 6 on the page of 26, from which it is turned back for the next. Seven times; then 0, 0
  // and 16.
  std::string digits = binary(0x00F6, 16);
  for (int i = 1; i < 7; ++i) digits += binary(0xD00F6, 20);
  const Bytes zeros = packBits(digits + binary(0xD00E3, 20));
  EXPECT_EQ(pack(ORB(orbsHuffLenCodeTablePack_8u), Table(256), 256).bytes, zeros);
  // 12 is on the first page, 13 on the second, 26 and 32 on the third.
  Table pages(256, 32);
  pages[0] = 12;
  pages[1] = 13;
  pages[2] = 25;
  pages[3] = 26;
  const Bytes start = {0xCE, 0x0C, 0xF0};
  const Packed packed = pack(ORB(orbsHuffLenCodeTablePack_8u), pages, 256);
  EXPECT_EQ(packed.status, orbStsNoErr);
  EXPECT_TRUE(std::equal(start.begin(), start.end(), packed.bytes.begin()));
}

ORB_MEANING(orbsHuffLenCodeTablePack_8u, AnyLengths) {
  Random random("tables to pack");
  for (int round = 0; round < 300; ++round) {
    const Table lengths = randomLengths(random);
    const Bytes expected = packedBytes(packedValues(lengths));
    ASSERT_EQ(pack(ORB(orbsHuffLenCodeTablePack_8u), lengths, 256),
              (Packed{orbStsNoErr, expected}));
    // Just enough room, and too little.
    ASSERT_EQ(pack(ORB(orbsHuffLenCodeTablePack_8u), lengths, sizeOf(expected)),
              (Packed{orbStsNoErr, expected}));
    if (sizeOf(expected) == 1) continue;
    const int room = random.between(1, sizeOf(expected) - 1);
    ASSERT_EQ(pack(ORB(orbsHuffLenCodeTablePack_8u), lengths, room),
              (Packed{orbStsSizeErr, Bytes(expected.begin(), expected.begin() + room)}));
  }
}
// No two neighbours alike, and each on another page: two digits each.
ORB_MEANING(orbsHuffLenCodeTablePack_8u, TheLongestTable) {
  Table lengths(256);
  for (size_t byte = 0; byte < 256; ++byte) lengths[byte] = byte % 2 == 0 ? 32 : 1;
  EXPECT_EQ(pack(ORB(orbsHuffLenCodeTablePack_8u), lengths, 256).status, orbStsNoErr);
  EXPECT_EQ(pack(ORB(orbsHuffLenCodeTablePack_8u), lengths, 256).bytes.size(), 256u);
}
ORB_MEANING(orbsHuffLenCodeTablePack_8u, LengthsOutOfRange) {
  for (const Orb32s length : {33, 38, 39, INT32_MAX, -1, INT32_MIN}) {
    Table lengths(256, 5), nearest(256, 5);
    lengths[100] = length;
    nearest[100] = std::min(std::max(length, 0), 38);
    const Bytes expected = packedBytes(packedValues(nearest));
    EXPECT_EQ(pack(ORB(orbsHuffLenCodeTablePack_8u), lengths, 256),
              (Packed{orbStsHuffLenErr, expected}));
    // It comes before the room that is missing.
    EXPECT_EQ(pack(ORB(orbsHuffLenCodeTablePack_8u), lengths, 1),
              (Packed{orbStsHuffLenErr, {expected[0]}}));
  }
}
ORB_AGREEMENT(orbsHuffLenCodeTablePack_8u) {
  for (int round = 0; round < 200; ++round) {
    Table lengths = randomLengths(random);
    if (random.oneIn(4)) lengths[at(random.between(0, 255))] = random.extreme<Orb32s>();
    const int room = random.between(1, 256);
    ASSERT_EQ(pack(ORB(orbsHuffLenCodeTablePack_8u), lengths, room),
              pack(PX(orbsHuffLenCodeTablePack_8u), lengths, room));
  }
}

// ---- orbsHuffLenCodeTableUnpack_8u

ORB_MEANING(orbsHuffLenCodeTableUnpack_8u, Checks) {
  struct Call {
    const Orb8u* pSrc;
    Orb32s* pSrcLen;
    Orb32s* pCodeLenTable;
  };
  const Bytes source = packedBytes(packedValues(Table(256)));
  Plane<Orb32s> table(256, 1, {0, 1});
  Orb32s srcLen = sizeOf(source), zero = 0, negative = INT32_MIN;
  const auto run = [&](const Call& c) {
    return ORB(orbsHuffLenCodeTableUnpack_8u)(c.pSrc, c.pSrcLen, c.pCodeLenTable);
  };
  const Call good = {source.data(), &srcLen, table.data()};
  expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.pSrc = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pSrcLen = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pCodeLenTable = nullptr; }},
                      {orbStsSizeErr, [&](Call& c) { c.pSrcLen = &zero; }},
                      {orbStsSizeErr, [&](Call& c) { c.pSrcLen = &negative; }}},
                     good, run);
  table.expectUntouched();
  EXPECT_EQ(run(good), orbStsNoErr);
  table.expectOutsideUntouched();
}

struct Unpacked {
  OrbStatus status = orbStsNoErr;
  Orb32s srcLen = 0;
  Table lengths;

  bool operator==(const Unpacked& other) const {
    return status == other.status && srcLen == other.srcLen && lengths == other.lengths;
  }
};
template <class Function>
Unpacked unpack(Function* function, const Bytes& bytes) {
  const GuardedBytes source(bytes);
  TableMemory table(Table(256, -1));
  Plane<Orb32s> srcLen(1, 1, {0, 1});
  srcLen.set(0, 0, source.size());
  Unpacked unpacked;
  unpacked.status = function(source.data(), srcLen.data(), table.get());
  unpacked.srcLen = srcLen.at(0);
  unpacked.lengths = table.values();
  srcLen.expectOutsideUntouched();
  return unpacked;
}

ORB_MEANING(orbsHuffLenCodeTableUnpack_8u, TakesBackThePacking) {
  Random random("tables to unpack");
  for (int round = 0; round < 300; ++round) {
    const Table lengths = round == 0 ? Table(256) : randomLengths(random);
    Bytes packed = packedBytes(packedValues(lengths));
    const int length = sizeOf(packed);
    // Whatever follows is not looked at.
    for (int more = random.between(0, 3); more > 0; --more) packed.push_back(random.any<Orb8u>());
    ASSERT_EQ(unpack(ORB(orbsHuffLenCodeTableUnpack_8u), packed),
              (Unpacked{orbStsNoErr, length, lengths}));
  }
}

// Lengths from values, with zeros behind the last: two repeats of the length before call for a
// count.
Unpacked unpacked(const Bytes& bytes) {
  std::string digits;
  for (const Orb8u byte : bytes) digits += binary(byte, 8);
  const auto digit = [&](size_t i) {
    return i * 4 < digits.size() ? std::stoi(digits.substr(i * 4, 4), nullptr, 2) : 0;
  };
  size_t used = 0;
  int page = 0;
  const auto value = [&] {
    while (digit(used) > 12) page = digit(used++) - 13;
    return page * 13 + digit(used++);
  };
  Table lengths = {0};  // that in front of the first
  int written = 0;      // equal lengths written one after the other
  while (lengths.size() <= 256) {
    const int length = value();
    written = length == lengths.back() ? written + 1 : 0;
    lengths.push_back(length);
    if (written < 2) continue;
    lengths.insert(lengths.end(), at(value()), length);
    written = 0;
  }
  lengths.erase(lengths.begin());
  lengths.resize(256);
  const int consumed = static_cast<int>(used + 1) / 2;
  if (consumed > sizeOf(bytes)) return {orbStsSizeErr, sizeOf(bytes), lengths};
  return {orbStsNoErr, consumed, lengths};
}
ORB_MEANING(orbsHuffLenCodeTableUnpack_8u, AnyBytes) {
  Random random("bytes to unpack");
  for (int round = 0; round < 1000; ++round) {
    Bytes bytes(at(random.between(1, 300)));
    const int pages = random.between(0, 3);
    for (Orb8u& byte : bytes) {
      byte = random.any<Orb8u>();
      // Many runs, or many pages turned.
      if (pages == 0) byte &= 0x33;
      if (pages == 1) byte |= 0xC0;
    }
    ASSERT_EQ(unpack(ORB(orbsHuffLenCodeTableUnpack_8u), bytes), unpacked(bytes));
  }
}
ORB_MEANING(orbsHuffLenCodeTableUnpack_8u, WorkedByHand) {
  // 5, and 5, 5 and 38 more; 29 on the page that has been turned to; then zeros behind the end,
  // which are 26 there.
  Table lengths(256, 26);
  std::fill(lengths.begin(), lengths.begin() + 41, 5);
  lengths[41] = 29;
  EXPECT_EQ(unpack(ORB(orbsHuffLenCodeTableUnpack_8u), {0x55, 0x5F, 0xC3}),
            (Unpacked{orbStsSizeErr, 3, lengths}));
  // 38, and 38, 38 and 38 more; then six times 38, 38 and 38 more, the last of which go past the
  // end and stop there. Pages may be turned for nothing.
  std::string digits = binary(0xDEFCCCC, 28);
  for (int i = 0; i < 6; ++i) digits += binary(0xCCC, 12);
  EXPECT_EQ(unpack(ORB(orbsHuffLenCodeTableUnpack_8u), packBits(digits)),
            (Unpacked{orbStsNoErr, 13, Table(256, 38)}));
}
ORB_MEANING(orbsHuffLenCodeTableUnpack_8u, EndsWithinATable) {
  Random random("tables cut short");
  for (int round = 0; round < 100; ++round) {
    const Bytes packed = packedBytes(packedValues(randomLengths(random)));
    if (packed.size() < 2) continue;
    const Bytes cut(packed.begin(), packed.begin() + random.between(1, sizeOf(packed) - 1));
    const Unpacked result = unpack(ORB(orbsHuffLenCodeTableUnpack_8u), cut);
    EXPECT_EQ(result.status, orbStsSizeErr);
    EXPECT_EQ(result.srcLen, sizeOf(cut));
  }
}
ORB_AGREEMENT(orbsHuffLenCodeTableUnpack_8u) {
  for (int round = 0; round < 300; ++round) {
    Bytes bytes(at(random.between(1, 200)));
    for (Orb8u& byte : bytes) byte = random.any<Orb8u>();
    ASSERT_EQ(unpack(ORB(orbsHuffLenCodeTableUnpack_8u), bytes),
              unpack(PX(orbsHuffLenCodeTableUnpack_8u), bytes));
  }
}

}  // namespace
