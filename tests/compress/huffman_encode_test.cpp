// The encoder of the byte Huffman coder.
#include <algorithm>
#include <cstdint>
#include <queue>
#include <string>
#include <utility>
#include <vector>

#include "tests/compress/huffman_model.h"
#include "tests/support/faults.h"
#include "tests/support/no_memory.h"

namespace {

using namespace orbtest::huffman;
using orbtest::binary;
using orbtest::expectChecks;
using orbtest::GuardedBytes;
using orbtest::packBits;
using orbtest::Plane;
using orbtest::Random;

// ---- Size, Free

ORB_MEANING(orbsHuffGetSize_8u, StoresTheSize) {
  EXPECT_EQ(ORB(orbsHuffGetSize_8u)(nullptr), orbStsNullPtrErr);
  Plane<Orb32s> size(1, 1, {0, 1});
  EXPECT_EQ(ORB(orbsHuffGetSize_8u)(size.data()), orbStsNoErr);
  EXPECT_EQ(size.at(0), 2596);
  size.expectOutsideUntouched();
}
ORB_AGREEMENT(orbsHuffGetSize_8u) {
  Orb32s expected = 0, actual = 0;
  EXPECT_EQ(ORB(orbsHuffGetSize_8u)(&actual), PX(orbsHuffGetSize_8u)(&expected));
  EXPECT_EQ(actual, expected);
}

// ---- orbsEncodeHuffInit_8u

ORB_MEANING(orbsEncodeHuffInit_8u, ChecksPointers) {
  expectInitChecks(ORB(orbsEncodeHuffInit_8u), Table(256, 1));
}

// The lengths of the codes that frequencies lead to.
template <class Init, class GetTable>
Table lengthsFor(Init* init, GetTable* getTable, const Table& frequencies) {
  TableMemory table(frequencies), lengths(Table(256, -1));
  Record record;
  EXPECT_EQ(init(table.get(), record.get()), orbStsNoErr);
  EXPECT_EQ(getTable(lengths.get(), record.get()), orbStsNoErr);
  record.bytes().expectOutsideUntouched();
  return lengths.values();
}
#define LENGTHS_FOR(frequencies) \
  lengthsFor(ORB(orbsEncodeHuffInit_8u), ORB(orbsHuffGetLenCodeTable_8u), frequencies)

ORB_MEANING(orbsEncodeHuffInit_8u, AByteAloneHasALengthOf1) {
  for (const int byte : {0, 77, 255}) {
    for (const Orb32s frequency : {1, 1000, INT32_MAX}) {
      EXPECT_EQ(LENGTHS_FOR(tableOf({{byte, frequency}})), tableOf({{byte, 1}}));
    }
  }
}

// Which of several equal frequencies are joined first follows from the sort.
ORB_MEANING(orbsEncodeHuffInit_8u, TiesWorkedByHand) {
  EXPECT_EQ(LENGTHS_FOR(lengthsFrom({5, 1, 2, 11})), lengthsFrom({2, 3, 3, 1}));
  EXPECT_EQ(LENGTHS_FOR(lengthsFrom({1, 1})), lengthsFrom({1, 1}));
  // A pair comes behind the bytes that are as frequent: 1 + 1 behind the 2.
  EXPECT_EQ(LENGTHS_FOR(lengthsFrom({1, 1, 2, 2})), lengthsFrom({2, 2, 2, 2}));
  // Up to nine: the first of the most frequent moves to the end, which leaves equal ones in their
  // order but for the first, which is the last.
  EXPECT_EQ(LENGTHS_FOR(lengthsFrom({1, 1, 1})), lengthsFrom({1, 2, 2}));
  EXPECT_EQ(LENGTHS_FOR(lengthsFrom({1, 1, 1, 1, 1, 1, 1, 1, 1})),
            lengthsFrom({3, 4, 4, 3, 3, 3, 3, 3, 3}));
  // Ten equal ones are not moved.
  EXPECT_EQ(LENGTHS_FOR(lengthsFrom({1, 1, 1, 1, 1, 1, 1, 1, 1, 1})),
            lengthsFrom({4, 4, 4, 4, 3, 3, 3, 3, 3, 3}));
  // Six of 2 and six of 1. In order are 6 10 9 8 7 11, of which 5 stay where the cursors put them;
  // then, by selection from 5 4 3 2 1 0, 4 3 2 1 0 5.
  EXPECT_EQ(LENGTHS_FOR(lengthsFrom({2, 2, 2, 2, 2, 2, 1, 1, 1, 1, 1, 1})),
            lengthsFrom({3, 3, 3, 4, 4, 3, 4, 4, 4, 4, 4, 4}));
}

// The lengths of a tree in which, of equal weights, leaves are joined before pairs and older pairs
// before newer ones; by rising frequency. Each set of leaves is kept as their positions.
std::vector<int> lengthsByRank(const std::vector<int64_t>& sorted) {
  struct Tree {
    int64_t weight;
    int age;
    std::vector<size_t> leaves;
  };
  const auto comesLater = [](const Tree& a, const Tree& b) {
    return std::make_pair(a.weight, a.age) > std::make_pair(b.weight, b.age);
  };
  std::priority_queue<Tree, std::vector<Tree>, decltype(comesLater)> trees(comesLater);
  int age = 0;
  for (size_t i = 0; i < sorted.size(); ++i) trees.push({sorted[i], age++, {i}});
  std::vector<int> lengths(sorted.size());
  while (trees.size() > 1) {
    Tree joined = trees.top();
    trees.pop();
    joined.weight += trees.top().weight;
    joined.leaves.insert(joined.leaves.end(), trees.top().leaves.begin(), trees.top().leaves.end());
    trees.pop();
    joined.age = age++;
    for (const size_t leaf : joined.leaves) ++lengths[leaf];
    trees.push(joined);
  }
  return lengths;
}
// The frequencies with their lengths, which say all but which of equal ones has which length.
std::vector<std::pair<int64_t, int>> pairsOf(const Table& frequencies, const Table& lengths) {
  std::vector<std::pair<int64_t, int>> pairs;
  for (size_t byte = 0; byte < 256; ++byte) {
    if (frequencies[byte] != 0) pairs.push_back({frequencies[byte], lengths[byte]});
  }
  std::sort(pairs.begin(), pairs.end());
  return pairs;
}

ORB_MEANING(orbsEncodeHuffInit_8u, LengthsOfAHuffmanTree) {
  Random random("frequencies");
  for (int round = 0; round < 300; ++round) {
    const Table frequencies = randomFrequencies(random);
    const Table lengths = LENGTHS_FOR(frequencies);
    std::vector<int64_t> sorted;
    for (const Orb32s frequency : frequencies) {
      if (frequency != 0) sorted.push_back(frequency);
    }
    if (sorted.size() < 2) continue;
    std::sort(sorted.begin(), sorted.end());
    const std::vector<int> expected = lengthsByRank(sorted);
    std::vector<std::pair<int64_t, int>> pairs;
    for (size_t i = 0; i < sorted.size(); ++i) pairs.push_back({sorted[i], expected[i]});
    std::sort(pairs.begin(), pairs.end());
    ASSERT_EQ(pairsOf(frequencies, lengths), pairs) << "round " << round;
  }
}

// As many Fibonacci numbers as bytes make a tree as deep as can be.
Table fibonacci(int count) {
  std::vector<Orb32s> values = {1, 1};
  while (static_cast<int>(values.size()) < count) {
    values.push_back(values.end()[-1] + values.end()[-2]);
  }
  return lengthsFrom(values);
}
ORB_MEANING(orbsEncodeHuffInit_8u, CodesOfUpTo32Bits) {
  const Table lengths = LENGTHS_FOR(fibonacci(33));
  EXPECT_EQ(*std::max_element(lengths.begin(), lengths.end()), 32);
  for (const int count : {34, 40}) {
    TableMemory frequencies(fibonacci(count));
    Record record;
    EXPECT_EQ(ORB(orbsEncodeHuffInit_8u)(frequencies.get(), record.get()), orbStsHuffTooLongErr);
    record.bytes().expectOutsideUntouched();
  }
}

ORB_MEANING(orbsEncodeHuffInit_8u, RefusesFrequencies) {
  const Table bad[] = {
      Table(256),
      tableOf({{5, INT32_MIN}}),
      tableOf({{5, -1}, {6, 1}}),
      tableOf({{0, INT32_MAX}, {255, 1}}),
      tableOf({{0, 1 << 30}, {1, 1 << 30}}),
      Table(256, 1 << 23),
      // The sum is back below 2^31 in the end.
      tableOf({{0, INT32_MAX}, {1, INT32_MAX}, {2, INT32_MAX}}),
  };
  for (const Table& frequencies : bad) {
    TableMemory table(frequencies);
    Record record;
    EXPECT_EQ(ORB(orbsEncodeHuffInit_8u)(table.get(), record.get()), orbStsHuffFreqErr);
    record.bytes().expectUntouched();
  }
  EXPECT_EQ(LENGTHS_FOR(tableOf({{0, INT32_MAX - 1}, {255, 1}})), tableOf({{0, 1}, {255, 1}}));
}

ORB_AGREEMENT(orbsEncodeHuffInit_8u) {
  for (int round = 0; round < 200; ++round) {
    Table frequencies = randomFrequencies(random);
    if (random.oneIn(10)) frequencies[at(random.between(0, 255))] = random.extreme<Orb32s>();
    expectInitsAgree(PX(orbsEncodeHuffInit_8u), ORB(orbsEncodeHuffInit_8u), frequencies);
  }
}

// ---- InitAlloc and Free

template <class InitAlloc, class Free>
void expectAllocation(InitAlloc* initAlloc, Free* free, const Table& good, const Table& bad,
                      OrbStatus badStatus) {
  TableMemory goodTable(good), badTable(bad);
  EXPECT_EQ(initAlloc(goodTable.get(), nullptr), orbStsNullPtrErr);
  EXPECT_EQ(initAlloc(nullptr, nullptr), orbStsNullPtrErr);
  OrbHuffState* state = nullptr;
  ASSERT_EQ(initAlloc(goodTable.get(), &state), orbStsNoErr);
  ASSERT_NE(state, nullptr);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(state) % 64, 0u);
  free(state);
  // There is a record to be released.
  state = nullptr;
  EXPECT_EQ(initAlloc(badTable.get(), &state), badStatus);
  EXPECT_NE(state, nullptr);
  free(state);
  free(nullptr);
}
void expectEncoderAllocation(const orbtest::TestBuild& build) {
  expectAllocation(ORB(orbsEncodeHuffInitAlloc_8u), ORB(orbsHuffFree_8u), Table(256, 9), Table(256),
                   orbStsHuffFreqErr);
  // It is allocated before the frequencies are missed.
  OrbHuffState* state = nullptr;
  EXPECT_EQ(ORB(orbsEncodeHuffInitAlloc_8u)(nullptr, &state), orbStsNullPtrErr);
  EXPECT_NE(state, nullptr);
  ORB(orbsHuffFree_8u)(state);
}
void expectDecoderAllocation(const orbtest::TestBuild& build) {
  expectAllocation(ORB(orbsDecodeHuffInitAlloc_8u), ORB(orbsHuffFree_8u), Table(256, 8),
                   Table(256, 33), orbStsHuffLenErr);
  OrbHuffState* const unset = reinterpret_cast<OrbHuffState*>(&expectDecoderAllocation);
  OrbHuffState* state = unset;
  EXPECT_EQ(ORB(orbsDecodeHuffInitAlloc_8u)(nullptr, &state), orbStsNullPtrErr);
  EXPECT_EQ(state, unset);
}
// The pointer says what the status does not: that there was no memory.
template <class InitAlloc>
void expectNullWithoutMemory(InitAlloc* initAlloc) {
  Table table(256, 8);
  orbtest::expectWithoutMemory([&] {
    OrbHuffState* state = reinterpret_cast<OrbHuffState*>(table.data());
    return initAlloc(table.data(), &state) == orbStsNullPtrErr && state == nullptr;
  });
}

ORB_MEANING(orbsEncodeHuffInitAlloc_8u, Allocates) {
  expectEncoderAllocation(build);
}
ORB_MEANING(orbsEncodeHuffInitAlloc_8u, NoMemory) {
  expectNullWithoutMemory(ORB(orbsEncodeHuffInitAlloc_8u));
}
ORB_AGREEMENT(orbsEncodeHuffInitAlloc_8u) {
  expectEncoderAllocation(build);
}
ORB_MEANING(orbsDecodeHuffInitAlloc_8u, Allocates) {
  expectDecoderAllocation(build);
}
ORB_MEANING(orbsDecodeHuffInitAlloc_8u, NoMemory) {
  expectNullWithoutMemory(ORB(orbsDecodeHuffInitAlloc_8u));
}
ORB_AGREEMENT(orbsDecodeHuffInitAlloc_8u) {
  expectDecoderAllocation(build);
}
ORB_MEANING(orbsHuffFree_8u, Releases) {
  expectEncoderAllocation(build);
}
ORB_AGREEMENT(orbsHuffFree_8u) {
  expectDecoderAllocation(build);
}

// ---- orbsEncodeHuffOne_8u

ORB_MEANING(orbsEncodeHuffOne_8u, Checks) {
  struct Call {
    int src;
    Orb8u* pDst;
    Orb32s offset;
    const OrbHuffState* pState;
  };
  Record record;
  makeRecord(build, lengthsFrom({1, 2, 2}), record);
  Plane<Orb8u> output(8, 1);
  const auto run = [&](const Call& c) {
    return ORB(orbsEncodeHuffOne_8u)(static_cast<Orb8u>(c.src), c.pDst, c.offset, c.pState);
  };
  const Call good = {2, output.data(), 7, record.get()};
  expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.pDst = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pState = nullptr; }},
                      {orbStsSizeErr, [](Call& c) { c.offset = 8; }},
                      {orbStsSizeErr, [](Call& c) { c.offset = INT32_MAX; }},
                      {orbStsSizeErr, [](Call& c) { c.offset = -1; }},
                      {orbStsHuffLenErr, [](Call& c) { c.src = 3; }}},
                     good, run);
  output.expectUntouched();
  EXPECT_EQ(run(good), orbStsNoErr);
}

// What a destination holds once the code is in it.
Bytes afterOne(const Bytes& before, const std::string& code, int offset) {
  const std::string front = binary(before[0], 8).substr(0, at(offset));
  Bytes expected = packBits(front + code);
  // By OR the first byte keeps all of its bits.
  if (offset > 0) expected[0] |= before[0];
  const Bytes rest(before.begin() + sizeOf(expected), before.end());
  expected.insert(expected.end(), rest.begin(), rest.end());
  return expected;
}
ORB_MEANING(orbsEncodeHuffOne_8u, AnyCodeAtAnyOffset) {
  Random random("single codes");
  for (const Table& lengths : {staircase(32), fullLengths(random, 256, 32), Table(256, 8),
                               lengthsFrom({1, 1}), fullLengths(random, 30, 9)}) {
    Record record;
    makeRecord(build, lengths, record);
    const Bytes before = record.bytes().samples();
    for (const auto& [byte, code] : codesOf(lengths)) {
      for (int offset = 0; offset < 8; ++offset) {
        const int reached = (offset + static_cast<int>(code.size()) + 7) / 8;
        GuardedBytes output(at(reached));
        Bytes bytes(at(reached));
        for (Orb8u& b : bytes) b = random.any<Orb8u>();
        std::memcpy(output.data(), bytes.data(), bytes.size());
        ASSERT_EQ(ORB(orbsEncodeHuffOne_8u)(static_cast<Orb8u>(byte), output.data(), offset,
                                            record.get()),
                  orbStsNoErr);
        ASSERT_EQ(Bytes(output.data(), output.data() + reached), afterOne(bytes, code, offset))
            << "code " << code << " at " << offset;
      }
    }
    EXPECT_EQ(record.bytes().samples(), before);
  }
}
ORB_AGREEMENT(orbsEncodeHuffOne_8u) {
  Record record;
  makeRecord(build, fullLengths(random, 100, 32), record);
  for (int round = 0; round < 1000; ++round) {
    const Orb8u byte = random.any<Orb8u>();
    const int offset = random.between(-1, 8);
    Plane<Orb8u> expected(8, 1), actual(8, 1, {0, 3});
    EXPECT_EQ(ORB(orbsEncodeHuffOne_8u)(byte, actual.data(), offset, record.get()),
              PX(orbsEncodeHuffOne_8u)(byte, expected.data(), offset, record.get()));
    EXPECT_TRUE(actual.sameBytes(expected));
  }
}

// ---- orbsEncodeHuff_8u, orbsEncodeHuffFinal_8u

ORB_MEANING(orbsEncodeHuff_8u, Checks) {
  struct Call {
    const Orb8u* pSrc;
    Orb32s srcLen;
    Orb8u* pDst;
    Orb32s* pDstLen;
    OrbHuffState* pState;
  };
  Record record;
  makeRecord(build, Table(256, 8), record);
  const Bytes before = record.bytes().samples();
  const Bytes source(8, 1);
  Plane<Orb8u> output(8, 1);
  Plane<Orb32s> dstLen(1, 1, {0, 1});
  const auto run = [&](const Call& c) {
    return ORB(orbsEncodeHuff_8u)(c.pSrc, c.srcLen, c.pDst, c.pDstLen, c.pState);
  };
  const Call good = {source.data(), 8, output.data(), dstLen.data(), record.get()};
  expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.pSrc = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pDst = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pDstLen = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pState = nullptr; }},
                      {orbStsSizeErr, [](Call& c) { c.srcLen = 0; }},
                      {orbStsSizeErr, [](Call& c) { c.srcLen = INT32_MIN; }}},
                     good, run);
  output.expectUntouched();
  dstLen.expectUntouched();
  EXPECT_EQ(record.bytes().samples(), before);
  EXPECT_EQ(run(good), orbStsNoErr);
  EXPECT_EQ(dstLen.at(0), 8);
}
ORB_MEANING(orbsEncodeHuffFinal_8u, Checks) {
  struct Call {
    Orb8u* pDst;
    Orb32s* pDstLen;
    const OrbHuffState* pState;
  };
  Record record;
  makeRecord(build, Table(256, 8), record);
  Plane<Orb8u> output(8, 1);
  Plane<Orb32s> dstLen(1, 1, {0, 1});
  const auto run = [&](const Call& c) {
    return ORB(orbsEncodeHuffFinal_8u)(c.pDst, c.pDstLen, c.pState);
  };
  const Call good = {output.data(), dstLen.data(), record.get()};
  expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.pDst = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pDstLen = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pState = nullptr; }}},
                     good, run);
  output.expectUntouched();
  dstLen.expectUntouched();
  EXPECT_EQ(run(good), orbStsNoErr);
  EXPECT_EQ(dstLen.at(0), 0);
}

// Encodes a text in pieces, each into memory that ends behind the words that it makes, and then its
// last bits.
template <class Encode, class Final>
Bytes encodeInPieces(Encode* encode, Final* final, Random& random, const Bytes& text,
                     const Codes& codes, Record& record) {
  Bytes stream;
  size_t held = 0;
  for (size_t first = 0; first < text.size();) {
    const size_t length = random.between(size_t{1}, text.size() - first);
    const Bytes piece(text.begin() + static_cast<ptrdiff_t>(first),
                      text.begin() + static_cast<ptrdiff_t>(first + length));
    held += bitsOf(codes, piece).size();
    const GuardedBytes source(piece);
    GuardedBytes output(held / 32 * 4);
    Orb32s written = -77;
    EXPECT_EQ(encode(source.data(), source.size(), output.data(), &written, record.get()),
              orbStsNoErr);
    EXPECT_EQ(written, output.size());
    stream.insert(stream.end(), output.data(), output.data() + output.size());
    held %= 32;
    first += length;
  }
  const Bytes before = record.bytes().samples();
  GuardedBytes output((held + 7) / 8);
  Orb32s written = -77;
  EXPECT_EQ(final(output.data(), &written, record.get()), orbStsNoErr);
  EXPECT_EQ(written, output.size());
  EXPECT_EQ(record.bytes().samples(), before);
  stream.insert(stream.end(), output.data(), output.data() + output.size());
  record.bytes().expectOutsideUntouched();
  return stream;
}
void expectStreams(const orbtest::TestBuild& build) {
  Random random("streams to write");
  for (int round = 0; round < 60; ++round) {
    const Table lengths =
        round == 0 ? staircase(32) : fullLengths(random, random.between(2, 256), 32);
    const Codes codes = codesOf(lengths);
    const Bytes text = randomText(random, codes, random.between(1, 300));
    Record record(round % 8);
    makeRecord(build, lengths, record);
    ASSERT_EQ(encodeInPieces(ORB(orbsEncodeHuff_8u), ORB(orbsEncodeHuffFinal_8u), random, text,
                             codes, record),
              packBits(bitsOf(codes, text)));
  }
}
ORB_MEANING(orbsEncodeHuff_8u, CodesOneAfterTheOther) {
  expectStreams(build);
}
ORB_MEANING(orbsEncodeHuffFinal_8u, TheLastBitsPadded) {
  expectStreams(build);
}

// An encoder's own record, from frequencies.
ORB_MEANING(orbsEncodeHuff_8u, FromFrequencies) {
  Random random("encoders");
  for (int round = 0; round < 60; ++round) {
    TableMemory frequencies(randomFrequencies(random)), lengths(Table(256));
    Record record;
    ASSERT_EQ(ORB(orbsEncodeHuffInit_8u)(frequencies.get(), record.get()), orbStsNoErr);
    ASSERT_EQ(ORB(orbsHuffGetLenCodeTable_8u)(lengths.get(), record.get()), orbStsNoErr);
    const Codes codes = codesOf(lengths.values());
    const Bytes text = randomText(random, codes, random.between(1, 300));
    ASSERT_EQ(encodeInPieces(ORB(orbsEncodeHuff_8u), ORB(orbsEncodeHuffFinal_8u), random, text,
                             codes, record),
              packBits(bitsOf(codes, text)));
  }
}

// Lengths, and then codes: the highest byte of the longest length has the code of zeros.
ORB_MEANING(orbsEncodeHuff_8u, CodesWorkedByHand) {
  Record record;
  makeRecord(build, tableOf({{10, 3}, {20, 3}, {30, 2}, {40, 1}}), record);
  const Bytes text = {20, 10, 30, 40, 40};
  Bytes output(8);
  Orb32s written = -1;
  ASSERT_EQ(ORB(orbsEncodeHuff_8u)(text.data(), 5, output.data(), &written, record.get()),
            orbStsNoErr);
  EXPECT_EQ(written, 0);
  ASSERT_EQ(ORB(orbsEncodeHuffFinal_8u)(output.data(), &written, record.get()), orbStsNoErr);
  EXPECT_EQ(Bytes(output.begin(), output.begin() + written), packBits("000"
                                                                      "001"
                                                                      "01"
                                                                      "1"
                                                                      "1"));
}

ORB_MEANING(orbsEncodeHuff_8u, AByteAloneIsABitOf0) {
  Record record;
  TableMemory frequencies(tableOf({{99, 5}}));
  ASSERT_EQ(ORB(orbsEncodeHuffInit_8u)(frequencies.get(), record.get()), orbStsNoErr);
  const Bytes text(75, 99);
  Bytes output(12, 0xFF);
  Orb32s written = -1;
  ASSERT_EQ(ORB(orbsEncodeHuff_8u)(text.data(), 75, output.data(), &written, record.get()),
            orbStsNoErr);
  EXPECT_EQ(written, 8);
  EXPECT_EQ(Bytes(output.begin(), output.begin() + 8), Bytes(8));
  ASSERT_EQ(ORB(orbsEncodeHuffFinal_8u)(output.data(), &written, record.get()), orbStsNoErr);
  EXPECT_EQ(written, 2);
}

ORB_MEANING(orbsEncodeHuff_8u, BytesWithoutACodeArePassedOver) {
  Random random("bytes without a code");
  const Table lengths = lengthsFrom({1, 2, 2});
  Record record;
  makeRecord(build, lengths, record);
  const Codes codes = codesOf(lengths);
  Bytes text(500);
  for (Orb8u& byte : text) byte = static_cast<Orb8u>(random.between(0, 5));
  EXPECT_EQ(encodeInPieces(ORB(orbsEncodeHuff_8u), ORB(orbsEncodeHuffFinal_8u), random, text, codes,
                           record),
            packBits(bitsOf(codes, text)));
}

ORB_AGREEMENT(orbsEncodeHuff_8u) {
  for (int round = 0; round < 100; ++round) {
    const Table lengths = fullLengths(random, random.between(2, 256), 32);
    Record expected(1), actual(4);
    makeRecord(build, lengths, expected);
    makeRecord(build, lengths, actual);
    Bytes text(at(random.between(1, 3000)));
    for (Orb8u& byte : text) byte = random.any<Orb8u>();
    Plane<Orb8u> expectedOutput(sizeOf(text) * 4 + 4, 1), output(sizeOf(text) * 4 + 4, 1, {0, 1});
    Orb32s expectedLength = 0, length = 0;
    for (int call = 0; call < 3; ++call) {
      PX(orbsEncodeHuff_8u)
      (text.data(), sizeOf(text), expectedOutput.data(), &expectedLength, expected.get());
      ORB(orbsEncodeHuff_8u)(text.data(), sizeOf(text), output.data(), &length, actual.get());
      ASSERT_EQ(length, expectedLength);
      ASSERT_TRUE(output.sameBytes(expectedOutput));
      ASSERT_TRUE(actual.bytes().sameBytes(expected.bytes()));
    }
  }
}
ORB_AGREEMENT(orbsEncodeHuffFinal_8u) {
  for (int count = 0; count < 32; ++count) {
    Record record;
    makeRecord(build, Table(256, 8), record);
    record.get()->bitAcc = random.any<Orb32u>();
    record.get()->bitCount = count;
    Plane<Orb8u> expected(8, 1), actual(8, 1, {0, 1});
    Orb32s expectedLength = 0, length = 0;
    PX(orbsEncodeHuffFinal_8u)(expected.data(), &expectedLength, record.get());
    ORB(orbsEncodeHuffFinal_8u)(actual.data(), &length, record.get());
    EXPECT_EQ(length, expectedLength);
    EXPECT_TRUE(actual.sameBytes(expected));
  }
}

}  // namespace
