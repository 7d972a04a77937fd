// The Burrows-Wheeler transform of small blocks, judged by the rotations' ranks from doubling, and
// on a larger scale by libdivsufsort.
#include <algorithm>
#include <cstdint>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#if ORB_HAS_DIVSUFSORT
#include <divsufsort.h>
#endif

#include "tests/support/builds.h"
#include "tests/support/faults.h"
#include "tests/support/guarded.h"
#include "tests/support/plane.h"

namespace {

using orbtest::expectChecks;
using orbtest::Guard;
using orbtest::GuardedBytes;
using orbtest::Plane;
using orbtest::Random;

using Bytes = std::vector<Orb8u>;

constexpr int kLongest = 32768;

size_t at(int i) {
  return static_cast<size_t>(i);
}
int sizeOf(const Bytes& bytes) {
  return static_cast<int>(bytes.size());
}
size_t bufferSize(const Bytes& block) {
  return block.size() * 4 + 2080;
}

// ---- The model

// The rank of each rotation, equal ones having the same: by the first byte, then by the ranks of
// both halves of the first 2, 4, 8 ... bytes.
std::vector<int> rotationRanks(const Bytes& block) {
  const int n = sizeOf(block);
  std::vector<int> ranks(block.begin(), block.end());
  std::vector<int> order(block.size());
  std::iota(order.begin(), order.end(), 0);
  for (int half = 0; half < n; half = half == 0 ? 1 : half * 2) {
    const auto key = [&](int rotation) {
      return std::make_pair(ranks[at(rotation)], half == 0 ? 0 : ranks[at((rotation + half) % n)]);
    };
    std::sort(order.begin(), order.end(), [&](int a, int b) { return key(a) < key(b); });
    std::vector<int> finer(block.size());
    for (int row = 1; row < n; ++row) {
      const int before = finer[at(order[at(row - 1)])];
      const bool differs = key(order[at(row - 1)]) != key(order[at(row)]);
      finer[at(order[at(row)])] = differs ? row : before;
    }
    if (half > 0 && finer == ranks) break;
    ranks = finer;
  }
  return ranks;
}

struct Transform {
  Bytes column;
  // The rows that hold the block itself.
  int firstIndex;
  int lastIndex;
};

Transform transformOf(const Bytes& block) {
  const std::vector<int> ranks = rotationRanks(block);
  const int n = sizeOf(block);
  // Equal rotations end with the same byte, so any order among them will do.
  std::vector<int> order(block.size());
  std::iota(order.begin(), order.end(), 0);
  std::sort(order.begin(), order.end(), [&](int a, int b) { return ranks[at(a)] < ranks[at(b)]; });
  Transform transform = {{}, ranks[0], 0};
  for (const int rotation : order) transform.column.push_back(block[at((rotation + n - 1) % n)]);
  const int equals = static_cast<int>(std::count(ranks.begin(), ranks.end(), ranks[0]));
  transform.lastIndex = ranks[0] + equals - 1;
  return transform;
}

// The inverse as it is defined: from a row to that of the byte that follows, which is where its
// first byte stands in the column.
Bytes blockOf(const Bytes& column, int index) {
  std::vector<int> following(column.size());
  std::iota(following.begin(), following.end(), 0);
  std::stable_sort(following.begin(), following.end(),
                   [&](int a, int b) { return column[at(a)] < column[at(b)]; });
  Bytes block;
  int row = index;
  while (block.size() < column.size()) {
    row = following[at(row)];
    block.push_back(column[at(row)]);
  }
  return block;
}

// ---- Blocks

Bytes bytesOf(const std::string& text) {
  return Bytes(text.begin(), text.end());
}
Bytes randomBlock(Random& random, int length, int alphabet) {
  Bytes block(at(length));
  const int lowest = random.between(0, 256 - alphabet);
  for (Orb8u& byte : block) byte = static_cast<Orb8u>(lowest + random.between(0, alphabet - 1));
  return block;
}
// Begins as another block does, and repeats itself from there.
Bytes repeated(const Bytes& start, int length) {
  Bytes block = start;
  block.resize(at(length));
  for (size_t i = start.size(); i < block.size(); ++i) block[i] = block[i - start.size()];
  return block;
}
Bytes withLast(Bytes block, char last) {
  block.back() = static_cast<Orb8u>(last);
  return block;
}
Bytes fibonacciWord(int length) {
  std::string shorter = "b", word = "a";
  while (static_cast<int>(word.size()) < length) {
    const std::string next = word + shorter;
    shorter = word;
    word = next;
  }
  return bytesOf(word.substr(0, at(length)));
}
// Words from a small stock, so that long stretches occur again and again.
Bytes textLike(Random& random, int length, int stock) {
  std::vector<std::string> words;
  for (int i = 0; i < stock; ++i) {
    std::string word;
    for (int k = random.between(1, 12); k > 0; --k) {
      word += static_cast<char>('a' + random.between(0, 25));
    }
    words.push_back(word + " ");
  }
  std::string text;
  while (static_cast<int>(text.size()) < length) {
    // The first words are the most frequent.
    const int most = random.between(0, stock - 1);
    text += words[at(random.between(0, most))];
  }
  return bytesOf(text.substr(0, at(length)));
}
// As 16-bit samples with small values: every other byte is the same.
Bytes wideSamples(Random& random, int length) {
  Bytes block(at(length));
  for (int i = 0; i < length; ++i) {
    block[at(i)] = i % 2 == 0 ? 0 : static_cast<Orb8u>(random.between(32, 127));
  }
  return block;
}

struct Case {
  std::string name;
  Bytes block;
  Transform expected;

  Case(std::string itsName, Bytes itsBlock)
      : name(std::move(itsName)), block(std::move(itsBlock)), expected(transformOf(block)) {}
};

std::vector<Case> makeCases() {
  std::vector<Case> cases;
  const auto add = [&](const std::string& name, const Bytes& block) {
    cases.emplace_back(name + " of " + std::to_string(block.size()), block);
  };
  Random random("blocks to sort");
  for (const char* text : {"x", "ab", "ba", "aa", "acb", "bac", "cab", "cba", "aab", "bbaab",
                           "banana", "mississippi", "abracadabra", "abcabcabc"}) {
    add(text, bytesOf(text));
  }
  for (const int length : {2, 3, 100, kLongest}) add("one byte", Bytes(at(length), 'a'));
  for (const int length : {4, 5, 257, kLongest - 1, kLongest}) {
    add("two bytes in turn", repeated(bytesOf("ab"), length));
    add("two bytes in turn, downward", repeated(bytesOf("ba"), length));
  }
  for (const char last : {'A', 'a', 'b', 'z'}) {
    add("one byte and another", withLast(Bytes(kLongest, 'a'), last));
    add("two bytes and another", withLast(repeated(bytesOf("ab"), kLongest), last));
  }
  for (const int period : {3, 64, 100, 1000, 1024, 10000, kLongest / 2}) {
    const Bytes start = randomBlock(random, period, 256);
    add("repeats", repeated(start, kLongest));
    add("repeats, and another byte", withLast(repeated(start, kLongest), '!'));
    add("repeats of two values", repeated(randomBlock(random, period, 2), kLongest));
  }
  // Whole periods: every rotation has its equals.
  add("twice the same", repeated(randomBlock(random, kLongest / 2, 3), kLongest));
  add("many times the same", repeated(bytesOf("abaabaaab"), 9 * 3000));
  add("Fibonacci word", fibonacciWord(kLongest));
  Bytes up(kLongest), saw(kLongest);
  for (int i = 0; i < kLongest; ++i) {
    up[at(i)] = static_cast<Orb8u>(i / 128);
    saw[at(i)] = static_cast<Orb8u>(i % 512 < 256 ? i % 256 : 255 - i % 256);
  }
  add("rising", up);
  add("falling", Bytes(up.rbegin(), up.rend()));
  add("rising and falling", saw);
  add("wide samples", wideSamples(random, kLongest));
  add("wide samples", wideSamples(random, kLongest - 1));
  for (const int alphabet : {2, 3, 16, 256}) {
    for (const int length : {2, 31, 1000, kLongest}) {
      add("random", randomBlock(random, length, alphabet));
    }
  }
  for (const int stock : {3, 30, 1000}) add("words", textLike(random, kLongest, stock));
  for (int i = 0; i < 300; ++i) {
    const int length = random.between(1, 40);
    const Bytes start = randomBlock(random, random.between(1, length), random.between(1, 4));
    add("small", repeated(start, length));
  }
  return cases;
}
const std::vector<Case>& cases() {
  static const std::vector<Case> all = makeCases();
  return all;
}

// ---- orbsBWTGetSize_SmallBlock_8u

ORB_MEANING(orbsBWTGetSize_SmallBlock_8u, StoresTheSize) {
  for (const int len : {1, 2, 1000, 32767, 32768}) {
    Plane<Orb32s> size(1, 1, {0, 3});
    EXPECT_EQ(ORB(orbsBWTGetSize_SmallBlock_8u)(len, size.data()), orbStsNoErr);
    EXPECT_EQ(size.at(0), len * 4 + 2080);
    size.expectOutsideUntouched();
  }
}
ORB_MEANING(orbsBWTGetSize_SmallBlock_8u, Checks) {
  Plane<Orb32s> size(1, 1);
  for (const int len : {0, -1, INT32_MIN, 32769, INT32_MAX}) {
    EXPECT_EQ(ORB(orbsBWTGetSize_SmallBlock_8u)(len, nullptr), orbStsNullPtrErr);
    EXPECT_EQ(ORB(orbsBWTGetSize_SmallBlock_8u)(len, size.data()), orbStsSizeErr);
  }
  size.expectUntouched();
}
ORB_AGREEMENT(orbsBWTGetSize_SmallBlock_8u) {
  for (int i = 0; i < 200; ++i) {
    const Orb32s len = random.oneIn(2) ? random.extreme<Orb32s>() : random.between(-2, 40000);
    Orb32s expected = 5, actual = 5;
    EXPECT_EQ(ORB(orbsBWTGetSize_SmallBlock_8u)(len, &actual),
              PX(orbsBWTGetSize_SmallBlock_8u)(len, &expected));
    EXPECT_EQ(actual, expected);
  }
}

// ---- orbsBWTFwd_SmallBlock_8u

struct ForwardCall {
  const Orb8u* pSrc;
  Orb8u* pDst;
  Orb32s len;
  Orb32s* pIndex;
  Orb8u* pBuf;
};

ORB_MEANING(orbsBWTFwd_SmallBlock_8u, Checks) {
  const Bytes block = bytesOf("abracadabra");
  Plane<Orb8u> column(11, 1), buffer(11 * 4 + 2080, 1);
  Plane<Orb32s> index(1, 1);
  const ForwardCall good = {block.data(), column.data(), 11, index.data(), buffer.data()};
  const auto run = [&](const ForwardCall& c) {
    return ORB(orbsBWTFwd_SmallBlock_8u)(c.pSrc, c.pDst, c.len, c.pIndex, c.pBuf);
  };
  expectChecks<ForwardCall>({{orbStsNullPtrErr, [](ForwardCall& c) { c.pSrc = nullptr; }},
                             {orbStsNullPtrErr, [](ForwardCall& c) { c.pDst = nullptr; }},
                             {orbStsNullPtrErr, [](ForwardCall& c) { c.pIndex = nullptr; }},
                             {orbStsNullPtrErr, [](ForwardCall& c) { c.pBuf = nullptr; }},
                             {orbStsSizeErr, [](ForwardCall& c) { c.len = 0; }},
                             {orbStsSizeErr, [](ForwardCall& c) { c.len = -1; }},
                             {orbStsSizeErr, [](ForwardCall& c) { c.len = 32769; }}},
                            good, run);
  column.expectUntouched();
  index.expectUntouched();
  buffer.expectUntouched();
  EXPECT_EQ(run(good), orbStsNoErr);
}

// With nothing to be read or written behind the buffers, or in front of them.
template <class Function>
void expectTransforms(Function* function, const Case& one, Guard guard) {
  const GuardedBytes block(one.block, guard);
  GuardedBytes column(one.block.size(), guard), buffer(bufferSize(one.block), guard);
  Plane<Orb32s> index(1, 1, {0, 1});
  ASSERT_EQ(function(block.data(), column.data(), block.size(), index.data(), buffer.data()),
            orbStsNoErr);
  index.expectOutsideUntouched();
  ASSERT_TRUE(std::equal(one.expected.column.begin(), one.expected.column.end(), column.data()));
  ASSERT_GE(index.at(0), one.expected.firstIndex);
  ASSERT_LE(index.at(0), one.expected.lastIndex);
}

ORB_MEANING(orbsBWTFwd_SmallBlock_8u, LastColumnOfTheSortedRotations) {
  for (const Case& one : cases()) {
    SCOPED_TRACE(one.name);
    for (const Guard guard : {Guard::kBefore, Guard::kBehind}) {
      expectTransforms(ORB(orbsBWTFwd_SmallBlock_8u), one, guard);
    }
    if (testing::Test::HasFatalFailure()) return;
  }
}

// Worked by hand: the rows are abanan, anaban, ananab, banana, nabana, nanaba.
ORB_MEANING(orbsBWTFwd_SmallBlock_8u, Banana) {
  const Bytes block = bytesOf("banana");
  Bytes column(6), buffer(6 * 4 + 2080);
  Orb32s index = -1;
  ASSERT_EQ(ORB(orbsBWTFwd_SmallBlock_8u)(block.data(), column.data(), 6, &index, buffer.data()),
            orbStsNoErr);
  EXPECT_EQ(column, bytesOf("nnbaaa"));
  EXPECT_EQ(index, 3);
}

ORB_MEANING(orbsBWTFwd_SmallBlock_8u, OneByte) {
  const Bytes block = {200}, buffer(4 + 2080);
  Bytes column(1), work = buffer;
  Orb32s index = -1;
  ASSERT_EQ(ORB(orbsBWTFwd_SmallBlock_8u)(block.data(), column.data(), 1, &index, work.data()),
            orbStsNoErr);
  EXPECT_EQ(column, block);
  EXPECT_EQ(index, 0);
}

// Everything at any address, and nothing written beside the buffers.
ORB_MEANING(orbsBWTFwd_SmallBlock_8u, AnyAddress) {
  for (const Case& one : cases()) {
    if (one.block.size() > 1100) continue;
    for (int misalignment = 0; misalignment < 40; misalignment += 3) {
      SCOPED_TRACE(one.name + " at " + std::to_string(misalignment));
      const int n = sizeOf(one.block);
      Plane<Orb8u> block(n, 1, {0, misalignment}), column(n, 1, {0, misalignment + 1});
      Plane<Orb8u> buffer(static_cast<int>(bufferSize(one.block)), 1, {0, misalignment});
      for (int i = 0; i < n; ++i) block.set(i, 0, one.block[at(i)]);
      Plane<Orb32s> index(1, 1, {0, misalignment});
      ASSERT_EQ(ORB(orbsBWTFwd_SmallBlock_8u)(block.data(), column.data(), n, index.data(),
                                              buffer.data()),
                orbStsNoErr);
      ASSERT_EQ(column.samples(), one.expected.column);
      block.expectUntouched();
      column.expectOutsideUntouched();
      buffer.expectOutsideUntouched();
      index.expectOutsideUntouched();
    }
  }
}

ORB_MEANING(orbsBWTFwd_SmallBlock_8u, InPlace) {
  for (const Case& one : cases()) {
    Bytes block = one.block, buffer(bufferSize(block));
    Orb32s index = -1;
    ASSERT_EQ(ORB(orbsBWTFwd_SmallBlock_8u)(block.data(), block.data(), sizeOf(block), &index,
                                            buffer.data()),
              orbStsNoErr);
    ASSERT_TRUE(block == one.expected.column) << one.name;
  }
}

#if ORB_HAS_DIVSUFSORT
// The order of the suffixes of a block written twice is that of its rotations, as far as they begin
// in the first.
ORB_MEANING(orbsBWTFwd_SmallBlock_8u, AsLibdivsufsort) {
  Random random("libdivsufsort");
  for (int round = 0; round < 12; ++round) {
    const int n = random.between(20000, kLongest);
    const Bytes block = round % 3 == 0   ? randomBlock(random, n, random.between(2, 256))
                        : round % 3 == 1 ? textLike(random, n, random.between(2, 2000))
                                         : repeated(textLike(random, random.between(1, n), 100), n);
    Bytes twice = block;
    twice.insert(twice.end(), block.begin(), block.end());
    std::vector<saidx_t> suffixes(twice.size());
    ASSERT_EQ(divsufsort(twice.data(), suffixes.data(), static_cast<saidx_t>(twice.size())), 0);
    Bytes expected;
    for (const saidx_t suffix : suffixes) {
      if (suffix < n) expected.push_back(twice[at(suffix + n - 1)]);
    }
    Bytes column(block.size()), buffer(bufferSize(block));
    Orb32s index = -1;
    ASSERT_EQ(ORB(orbsBWTFwd_SmallBlock_8u)(block.data(), column.data(), n, &index, buffer.data()),
              orbStsNoErr);
    ASSERT_TRUE(column == expected) << "round " << round;
    ASSERT_TRUE(blockOf(column, index) == block) << "round " << round;
  }
}
#endif

ORB_AGREEMENT(orbsBWTFwd_SmallBlock_8u) {
  for (int round = 0; round < 400; ++round) {
    const int length = random.between(1, random.oneIn(20) ? 9000 : 200);
    const Bytes start = randomBlock(random, random.between(1, length), random.between(1, 256));
    const Bytes block = repeated(start, length);
    Plane<Orb8u> expected(length, 1), actual(length, 1, {0, 5});
    Bytes buffer(bufferSize(block));
    Orb32s expectedIndex = -1, index = -1;
    EXPECT_EQ(PX(orbsBWTFwd_SmallBlock_8u)(block.data(), expected.data(), length, &expectedIndex,
                                           buffer.data()),
              orbStsNoErr);
    EXPECT_EQ(
        ORB(orbsBWTFwd_SmallBlock_8u)(block.data(), actual.data(), length, &index, buffer.data()),
        orbStsNoErr);
    ASSERT_TRUE(actual.sameBytes(expected));
    ASSERT_EQ(index, expectedIndex);
  }
}

// ---- orbsBWTInv_SmallBlock_8u

struct InverseCall {
  const Orb8u* pSrc;
  Orb8u* pDst;
  Orb32s len;
  Orb32s index;
  Orb8u* pBuf;
};

ORB_MEANING(orbsBWTInv_SmallBlock_8u, Checks) {
  const Bytes column = bytesOf("nnbaaa");
  Plane<Orb8u> block(6, 1), buffer(6 * 4 + 2080, 1);
  const InverseCall good = {column.data(), block.data(), 6, 3, buffer.data()};
  const auto run = [&](const InverseCall& c) {
    return ORB(orbsBWTInv_SmallBlock_8u)(c.pSrc, c.pDst, c.len, c.index, c.pBuf);
  };
  expectChecks<InverseCall>({{orbStsNullPtrErr, [](InverseCall& c) { c.pSrc = nullptr; }},
                             {orbStsNullPtrErr, [](InverseCall& c) { c.pDst = nullptr; }},
                             {orbStsNullPtrErr, [](InverseCall& c) { c.pBuf = nullptr; }},
                             {orbStsSizeErr, [](InverseCall& c) { c.len = 0; }},
                             {orbStsSizeErr, [](InverseCall& c) { c.len = INT32_MIN; }},
                             {orbStsSizeErr, [](InverseCall& c) { c.index = 6; }},
                             {orbStsSizeErr, [](InverseCall& c) { c.index = INT32_MAX; }},
                             {orbStsSizeErr, [](InverseCall& c) { c.len = 32769; }}},
                            good, run);
  block.expectUntouched();
  buffer.expectUntouched();
  EXPECT_EQ(run(good), orbStsNoErr);
  EXPECT_EQ(block.samples(), bytesOf("banana"));
}

template <class Function>
void expectInverse(Function* function, const Bytes& column, int index, const Bytes& expected,
                   Guard guard) {
  const GuardedBytes source(column, guard);
  GuardedBytes block(column.size(), guard), buffer(bufferSize(column), guard);
  ASSERT_EQ(function(source.data(), block.data(), source.size(), index, buffer.data()),
            orbStsNoErr);
  ASSERT_TRUE(std::equal(expected.begin(), expected.end(), block.data()));
}

ORB_MEANING(orbsBWTInv_SmallBlock_8u, RestoresTheBlock) {
  for (const Case& one : cases()) {
    SCOPED_TRACE(one.name);
    // Any of the rows that hold the block.
    for (const int index : {one.expected.firstIndex, one.expected.lastIndex}) {
      for (const Guard guard : {Guard::kBefore, Guard::kBehind}) {
        expectInverse(ORB(orbsBWTInv_SmallBlock_8u), one.expected.column, index, one.block, guard);
      }
    }
    if (testing::Test::HasFatalFailure()) return;
  }
}

// Bytes that are no block's transform, and rows that are not the block's.
ORB_MEANING(orbsBWTInv_SmallBlock_8u, AnyBytesAndAnyRow) {
  Random random("any column");
  for (int round = 0; round < 500; ++round) {
    const int length = random.between(1, random.oneIn(20) ? 5000 : 60);
    const Bytes column = randomBlock(random, length, random.between(1, 256));
    const int index = random.between(0, length - 1);
    expectInverse(ORB(orbsBWTInv_SmallBlock_8u), column, index, blockOf(column, index),
                  random.oneIn(2) ? Guard::kBefore : Guard::kBehind);
    if (testing::Test::HasFatalFailure()) return;
  }
}

ORB_MEANING(orbsBWTInv_SmallBlock_8u, ANegativeRowIsRow0) {
  const Bytes column = bytesOf("nnbaaa");
  for (const int index : {-1, -6, INT32_MIN}) {
    expectInverse(ORB(orbsBWTInv_SmallBlock_8u), column, index, bytesOf("abanan"), Guard::kBehind);
    expectInverse(ORB(orbsBWTInv_SmallBlock_8u), {77}, index, {77}, Guard::kBefore);
  }
}

ORB_MEANING(orbsBWTInv_SmallBlock_8u, AnyAddress) {
  Random random("inverse at any address");
  for (int misalignment = 0; misalignment < 40; ++misalignment) {
    const int n = random.between(1, 300);
    const Bytes bytes = randomBlock(random, n, 20);
    Plane<Orb8u> column(n, 1, {0, misalignment}), block(n, 1, {0, misalignment + 1});
    Plane<Orb8u> buffer(n * 4 + 2080, 1, {0, misalignment});
    for (int i = 0; i < n; ++i) column.set(i, 0, bytes[at(i)]);
    ASSERT_EQ(ORB(orbsBWTInv_SmallBlock_8u)(column.data(), block.data(), n, n / 2, buffer.data()),
              orbStsNoErr);
    EXPECT_EQ(block.samples(), blockOf(bytes, n / 2));
    column.expectUntouched();
    block.expectOutsideUntouched();
    buffer.expectOutsideUntouched();
  }
}

ORB_AGREEMENT(orbsBWTInv_SmallBlock_8u) {
  for (int round = 0; round < 400; ++round) {
    const int length = random.between(1, random.oneIn(20) ? 9000 : 200);
    const Bytes column = randomBlock(random, length, random.between(1, 256));
    const int index = random.between(-2, length - 1);
    Plane<Orb8u> expected(length, 1), actual(length, 1, {0, 5});
    Bytes buffer(bufferSize(column));
    EXPECT_EQ(
        PX(orbsBWTInv_SmallBlock_8u)(column.data(), expected.data(), length, index, buffer.data()),
        orbStsNoErr);
    EXPECT_EQ(
        ORB(orbsBWTInv_SmallBlock_8u)(column.data(), actual.data(), length, index, buffer.data()),
        orbStsNoErr);
    ASSERT_TRUE(actual.sameBytes(expected));
  }
}

}  // namespace
