// The blocks of deflate: the coders of pairs and of bytes, the choice between them, the trailer.
#include <algorithm>
#include <cstdint>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "tests/compress/deflate_encoder.h"

namespace {

using orbtest::anyText;
using orbtest::BlockModel;
using orbtest::Bytes;
using orbtest::Encoder;
using orbtest::pairOf;
using orbtest::Pairs;
using orbtest::Random;
using orbtest::TestBuild;

constexpr size_t kRoomy = 1 << 20;

enum Coder { kFixed, kDynamic };

// An encoder and its model, with a list of pairs of the host's own.
struct Both {
  Encoder encoder;
  BlockModel model;
  Bytes written;  // in all

  explicit Both(const TestBuild& build, int checksumKind = 0) : encoder(build, 1, checksumKind) {}

  // As behind a match call.
  void matched(int flush, int srcLeft = 0) {
    encoder.record()->lastFlush = flush;
    encoder.record()->srcLeft = srcLeft;
    encoder.record()->headerReady = 0;
    model.matched(flush, srcLeft);
  }
  void startBlock() {
    encoder.setStatus(orbLZ77PhaseCode);
    model.blockState = 2;
  }
  int select(const Pairs& pairs) {
    const int mode = encoder.select(pairs);
    EXPECT_EQ(mode, model.select(pairs));
    return mode;
  }
  OrbStatus compare(const Encoder::Step& step, const BlockModel::Step& expected) {
    EXPECT_TRUE(step.isCleanBehind);
    EXPECT_EQ(step.status, expected.status);
    EXPECT_EQ(step.pairs, expected.pairs);
    EXPECT_EQ(step.written, expected.written);
    EXPECT_EQ(encoder.record()->blockState, model.blockState);
    written.insert(written.end(), step.written.begin(), step.written.end());
    return step.status;
  }
  // One call.
  OrbStatus code(Coder coder, Pairs& pairs, size_t room, int flush) {
    const Encoder::Step step =
        coder == kFixed ? encoder.fixed(pairs, room, flush) : encoder.dynamic(pairs, room, flush);
    const OrbStatus status = compare(step, coder == kFixed ? model.fixed(pairs, room, flush)
                                                           : model.dynamic(pairs, room, flush));
    pairs.erase(pairs.begin(), pairs.begin() + static_cast<ptrdiff_t>(step.pairs));
    return status;
  }
  OrbStatus store(Bytes& src, size_t room, int flush) {
    const Encoder::Step step = encoder.stored(src, room, flush);
    const OrbStatus status = compare(step, model.stored(src, room, flush));
    src.erase(src.begin(), src.begin() + static_cast<ptrdiff_t>(step.pairs));
    return status;
  }
  // Calls until the block is done, each with the room that `room()` says.
  template <class Room>
  OrbStatus codeAll(Coder coder, Pairs pairs, Room room, int flush) {
    OrbStatus status;
    do status = code(coder, pairs, room(), flush);
    while (status == orbStsDstFull && !testing::Test::HasFailure());
    return status;
  }
  template <class Room>
  OrbStatus storeAll(Bytes src, Room room, int flush) {
    OrbStatus status;
    do status = store(src, room(), flush);
    while (status == orbStsDstFull && !testing::Test::HasFailure());
    return status;
  }
};

const auto kAtOnce = [] { return kRoomy; };

OrbLZ77Pair anyMatch(Random& random) {
  return pairOf(random.between(3, 258),
                random.oneIn(2) ? random.between(1, 32768) : 1 << random.between(0, 15));
}

// Symbols from all over or from few, as many literals as matches, or nearly none of one kind.
Pairs anyPairs(Random& random, size_t count) {
  const int literals = random.between(0, 4);
  const int most = random.oneIn(2) ? 255 : random.between(0, 20);
  const int lengths = random.oneIn(2) ? 258 : random.between(3, 20);
  const int distances = random.oneIn(2) ? 32768 : random.between(1, 400);
  Pairs pairs;
  while (pairs.size() < count) {
    if (random.between(0, 3) < literals) {
      pairs.push_back(pairOf(std::min(random.between(0, most), random.between(0, most)), 0));
    } else {
      pairs.push_back(pairOf(std::min(random.between(3, lengths), random.between(3, lengths)),
                             random.between(1, distances)));
    }
  }
  return pairs;
}

// ---- The two coders of pairs

template <class Function>
void expectChecksInOrder(const TestBuild& build, Function* function) {
  Encoder encoder(build);
  OrbLZ77EncState* const record = encoder.record();
  const Bytes before = encoder.image();
  OrbLZ77Pair pair = {1, 0}, *pairs = &pair, *noPairs = nullptr;
  Orb8u byte = 7, *dst = &byte, *none = nullptr;
  Orb32s one = 1, bad = -1, zero = 0;
  EXPECT_EQ(function(nullptr, &bad, &dst, &bad, 0, record), orbStsNullPtrErr);
  EXPECT_EQ(function(&pairs, nullptr, &dst, &bad, 0, record), orbStsNullPtrErr);
  EXPECT_EQ(function(&pairs, &bad, nullptr, &bad, 0, record), orbStsNullPtrErr);
  EXPECT_EQ(function(&pairs, &bad, &none, &bad, 0, record), orbStsNullPtrErr);
  EXPECT_EQ(function(&pairs, &bad, &dst, nullptr, 0, record), orbStsNullPtrErr);
  EXPECT_EQ(function(&pairs, &bad, &dst, &bad, 0, nullptr), orbStsNullPtrErr);
  EXPECT_EQ(function(&pairs, &one, &dst, &bad, 0, record), orbStsSizeErr);
  EXPECT_EQ(function(&pairs, &bad, &dst, &one, 0, record), orbStsSizeErr);
  EXPECT_EQ(function(&pairs, &bad, &dst, &zero, 0, record), orbStsSizeErr);
  EXPECT_EQ(encoder.image(), before);
  EXPECT_EQ(byte, 7);
  EXPECT_EQ(pairs, &pair);
  EXPECT_EQ(dst, &byte);
  // Without room the block counts as begun.
  EXPECT_EQ(function(&pairs, &one, &dst, &zero, 0, record), orbStsDstFull);
  EXPECT_EQ(record->blockState, 3);
  EXPECT_EQ(one, 1);
  // No pairs need no list.
  one = 1;
  record->blockState = 2;
  Orb8u room[100];
  dst = room;
  Orb32s left = 100;
  EXPECT_EQ(function(&noPairs, &zero, &dst, &left, 0, record), orbStsNoErr);
}
ORB_MEANING(orbsEncodeLZ77FixedHuff_8u, ChecksInOrder) {
  expectChecksInOrder(build, ORB(orbsEncodeLZ77FixedHuff_8u));
}
ORB_MEANING(orbsEncodeLZ77DynamicHuff_8u, ChecksInOrder) {
  expectChecksInOrder(build, ORB(orbsEncodeLZ77DynamicHuff_8u));
}

// By hand, from RFC 1951: 1 10 00110000+'a' ... 0000000, padded.
ORB_MEANING(orbsEncodeLZ77FixedHuff_8u, ALiteralByHand) {
  Encoder encoder(build);
  encoder.setStatus(orbLZ77PhaseCode);
  const Encoder::Step step = encoder.fixed({pairOf('a', 0)}, 10, orbLZ77FlushFinish);
  EXPECT_EQ(step.status, orbStsStreamEnd);
  EXPECT_EQ(step.written, (Bytes{0x4B, 0x04, 0x00}));
}

// Every literal, every length, every distance about the ends of the slots, and some between.
ORB_MEANING(orbsEncodeLZ77FixedHuff_8u, EveryCode) {
  Pairs pairs;
  for (int literal = 0; literal < 256; ++literal) pairs.push_back(pairOf(literal, 0));
  for (int length = 3; length <= 258; ++length) pairs.push_back(pairOf(length, 1));
  for (int distance = 1; distance <= 32768; distance += distance < 600 ? 1 : 31) {
    pairs.push_back(pairOf(3, distance));
  }
  for (const orbtest::Slot& slot : orbtest::distanceSlots()) {
    pairs.push_back(pairOf(258, slot.base));
    pairs.push_back(pairOf(258, std::max(1, slot.base - 1)));
  }
  pairs.push_back(pairOf(258, 32768));
  Both both(build);
  both.startBlock();
  EXPECT_EQ(both.codeAll(kFixed, pairs, kAtOnce, orbLZ77FlushFinish), orbStsStreamEnd);
}

// Headers, codes and ends of blocks that follow one another, with all flushes, at any room.
template <class Room>
void expectLikeTheModel(const TestBuild& build, Random& random, Coder coder, size_t most,
                        Room room) {
  Both both(build);
  const int blocks = random.between(1, 4);
  for (int block = 0; block < blocks; ++block) {
    const bool isLast = block == blocks - 1;
    const int flush = isLast ? orbLZ77FlushFinish : random.between(0, 3);
    both.matched(flush, isLast ? 0 : random.between(1, 9));
    const Pairs pairs = anyPairs(random, random.between<size_t>(0, most));
    both.startBlock();
    if (random.oneIn(3)) both.select(pairs);
    const OrbStatus status = both.codeAll(coder, pairs, room, flush);
    ASSERT_EQ(status, isLast ? orbStsStreamEnd : orbStsNoErr);
    if (testing::Test::HasFailure()) return;
  }
}
void expectLikeTheModel(const TestBuild& build, Coder coder) {
  Random random("blocks");
  for (int round = 0; round < 20; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    expectLikeTheModel(build, random, coder, 600, kAtOnce);
    expectLikeTheModel(build, random, coder, 60, [] { return size_t{1}; });
    expectLikeTheModel(build, random, coder, 200, [&] { return random.between<size_t>(1, 12); });
    expectLikeTheModel(build, random, coder, 600, [&] { return random.between<size_t>(1, 300); });
    if (testing::Test::HasFailure()) return;
  }
}
ORB_MEANING(orbsEncodeLZ77FixedHuff_8u, BlocksAreTheModels) {
  expectLikeTheModel(build, kFixed);
}
ORB_MEANING(orbsEncodeLZ77DynamicHuff_8u, BlocksAreTheModels) {
  expectLikeTheModel(build, kDynamic);
}

// Ways to divide the bytes of a short stream into two calls, and a byte in each.
template <class Start>
void expectCuts(const TestBuild& build, size_t most, Start start) {
  Random random("cut blocks");
  for (const Coder coder : {kFixed, kDynamic}) {
    for (const int flush : {orbLZ77FlushSync, orbLZ77FlushFinish}) {
      const Pairs pairs = anyPairs(random, 40);
      const auto run = [&](auto room) {
        Both both(build);
        both.matched(flush);
        start(both);
        both.startBlock();
        both.codeAll(coder, pairs, room, flush);
        return both.written;
      };
      const Bytes whole = run(kAtOnce);
      EXPECT_EQ(run([] { return size_t{1}; }), whole);
      for (size_t cut = 1; cut <= std::min(most, whole.size()); ++cut) {
        SCOPED_TRACE("cut at " + std::to_string(cut));
        ASSERT_EQ(
            run([=, first = true]() mutable { return std::exchange(first, false) ? cut : kRoomy; }),
            whole);
      }
    }
  }
}
ORB_MEANING(orbsEncodeLZ77FixedHuff_8u, EveryCut) {
  expectCuts(build, kRoomy, [](Both&) {});
}
// Behind a block whose last pair, with long codes, found room for one byte.
ORB_MEANING(orbsEncodeLZ77DynamicHuff_8u, CutsBehindWaitingWords) {
  Pairs pairs;
  for (int i = 0; i < 9; ++i) {
    pairs.insert(pairs.end(), size_t{1} << i, pairOf(i, 0));
    pairs.insert(pairs.end(), size_t{1} << i, pairOf(10, 1 << i));
  }
  pairs.push_back(pairOf(227, 32768));
  Both whole(build);
  whole.startBlock();
  whole.codeAll(kDynamic, pairs, kAtOnce, orbLZ77FlushNone);
  const size_t most = whole.written.size() - 20;
  expectCuts(build, 12, [&](Both& both) {
    both.startBlock();
    both.codeAll(
        kDynamic, pairs,
        [=, first = true]() mutable { return std::exchange(first, false) ? most : size_t{1}; },
        orbLZ77FlushNone);
    EXPECT_GT(both.encoder.record()->bitCount, 32);
  });
}

// No pairs: a header, two codes of literals and two of distances, and the end of the block.
ORB_MEANING(orbsEncodeLZ77DynamicHuff_8u, EmptyBlocks) {
  for (const int flush : {0, 1, 2, 3}) {
    for (const size_t room : {size_t{1}, size_t{2}, size_t{3}, kRoomy}) {
      Both both(build);
      both.matched(flush);
      both.startBlock();
      both.codeAll(
          kDynamic, {}, [=] { return room; }, flush);
      if (flush != 0) {
        EXPECT_EQ(both.written.back(), flush == 3 ? both.written.back() : 0xFF);
      }
    }
  }
}

// The host may have a code's block made where pairs have but one distance, or none.
ORB_MEANING(orbsEncodeLZ77DynamicHuff_8u, CodesOfOneSymbolGetAPartner) {
  for (const Pairs& pairs :
       {Pairs{}, Pairs{pairOf(0, 0)}, Pairs{pairOf(255, 0)}, Pairs{pairOf(3, 1)},
        Pairs{pairOf(3, 2)}, Pairs(9, pairOf(258, 32768)), Pairs{pairOf(3, 1), pairOf(3, 2)}}) {
    Both both(build);
    both.matched(orbLZ77FlushFinish);
    both.startBlock();
    EXPECT_EQ(both.codeAll(kDynamic, pairs, kAtOnce, orbLZ77FlushFinish), orbStsStreamEnd);
    const OrbLZ77Codes& codes = both.encoder.record()->codes;
    int literals = 0, distances = 0;
    for (int i = 0; i < 286; ++i) literals += codes.literal[i].length != 0;
    for (int i = 0; i < 30; ++i) distances += codes.slot[i].length != 0;
    EXPECT_GE(literals, 2);
    EXPECT_EQ(distances, 2);
  }
}

// Frequencies that grow as the Fibonacci numbers make the longest codes there are.
ORB_MEANING(orbsEncodeLZ77DynamicHuff_8u, CodesAreLimited) {
  Pairs pairs;
  size_t count = 1, before = 1;  // the end of the block occurs once, too
  for (int i = 0; i < 20; ++i) {
    pairs.insert(pairs.end(), count, pairOf(i * 11, 0));
    pairs.insert(pairs.end(), before, pairOf(3, orbtest::distanceSlots()[size_t(i)].base));
    before = std::exchange(count, count + before);
  }
  Both both(build);
  both.matched(orbLZ77FlushNone);
  both.startBlock();
  EXPECT_EQ(both.codeAll(kDynamic, pairs, kAtOnce, orbLZ77FlushNone), orbStsNoErr);
  EXPECT_GT(both.model.block().longest[0], 15);
  EXPECT_GT(both.model.block().longest[1], 15);
}

// Lists whose code lengths are such that the code of code lengths is limited, too.
ORB_MEANING(orbsEncodeLZ77DynamicHuff_8u, CodesOfCodeLengthsAreLimited) {
  // So many symbols of each length from 2 to 13: the rarest lengths occur once.
  const std::vector<int> symbolsOfLength = {0, 0, 1, 1, 2, 2, 3, 5, 8, 13, 21, 34, 55, 16};
  int limited = 0;
  Random random("code lengths");
  for (int round = 0; round < 40; ++round) {
    std::vector<int> literals(256);
    std::iota(literals.begin(), literals.end(), 0);
    for (size_t i = 255; i > 0; --i) std::swap(literals[i], literals[random.between<size_t>(0, i)]);
    Pairs pairs;
    size_t next = 0;
    for (size_t length = 2; length < symbolsOfLength.size(); ++length) {
      for (int i = 0; i < symbolsOfLength[length] && next < 256; ++i) {
        const size_t times = (size_t{1} << (13 - length)) + (random.oneIn(4) ? 1 : 0);
        pairs.insert(pairs.end(), times, pairOf(literals[next++], 0));
      }
    }
    Both both(build);
    both.matched(orbLZ77FlushNone);
    both.startBlock();
    EXPECT_EQ(both.codeAll(kDynamic, pairs, kAtOnce, orbLZ77FlushNone), orbStsNoErr);
    limited += both.model.block().longest[2] > 7;
    if (testing::Test::HasFailure()) return;
  }
  EXPECT_GT(limited, 0);
}

// The order of equals decides which of them gets the longer code, from few symbols to all.
ORB_MEANING(orbsEncodeLZ77DynamicHuff_8u, CodesOfEqualFrequencies) {
  Random random("equals");
  for (int round = 0; round < 150; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    const int symbols = random.between(1, 256), most = random.between(1, 6);
    Pairs pairs;
    for (int literal = 0; literal < symbols; ++literal) {
      pairs.insert(pairs.end(), random.between<size_t>(0, static_cast<size_t>(most)),
                   pairOf(literal, 0));
    }
    for (int i = random.between(0, 60); i > 0; --i) pairs.push_back(anyMatch(random));
    Both both(build);
    both.matched(orbLZ77FlushFinish);
    both.startBlock();
    ASSERT_EQ(both.codeAll(kDynamic, pairs, kAtOnce, orbLZ77FlushFinish), orbStsStreamEnd);
    if (testing::Test::HasFailure()) return;
  }
}

// ---- Calls that go on

// An interrupted end goes on without pairs; what else a call without pairs does differs on purpose.
ORB_MEANING(orbsEncodeLZ77FixedHuff_8u, CallsWithoutPairs) {
  for (const int flush : {0, 1, 2, 3}) {
    for (const int srcLeft : {0, 5}) {
      // Behind a block that has ended.
      Both both(build);
      both.matched(flush, srcLeft);
      both.startBlock();
      both.codeAll(kFixed, {pairOf(1, 0)}, kAtOnce, 0);
      EXPECT_EQ(both.codeAll(kFixed, {}, kAtOnce, flush),
                flush == 3 && srcLeft == 0 ? orbStsStreamEnd : orbStsNoErr);
      // Behind a call without room, which loses the header.
      Both begun(build);
      begun.matched(flush, srcLeft);
      begun.startBlock();
      Pairs none;
      EXPECT_EQ(begun.code(kFixed, none, 0, flush), orbStsDstFull);
      begun.code(kFixed, none, kRoomy, flush);
      EXPECT_EQ(begun.encoder.record()->bitCount, 0);
    }
  }
}
ORB_MEANING(orbsEncodeLZ77DynamicHuff_8u, CallsWithoutPairs) {
  for (const int flush : {0, 1, 2, 3}) {
    for (const int srcLeft : {0, 5}) {
      Both both(build);
      both.matched(flush, srcLeft);
      both.startBlock();
      both.codeAll(kDynamic, {pairOf(1, 0)}, kAtOnce, 0);
      const Orb32s waiting = both.encoder.record()->bitCount;
      EXPECT_EQ(both.codeAll(kDynamic, {}, kAtOnce, flush),
                flush == 3 && srcLeft == 0 ? orbStsStreamEnd : orbStsNoErr);
      // One more end of a block, of 2 bits at most.
      if (flush != 3) {
        EXPECT_NE(both.encoder.record()->bitCount % 8, waiting % 8);
      }
    }
  }
}

// A marker goes on where it stopped, at each of its bytes.
ORB_MEANING(orbsEncodeLZ77FixedHuff_8u, MarkersAreResumed) {
  for (const int flush : {orbLZ77FlushSync, orbLZ77FlushRestart}) {
    for (int literals = 0; literals < 8; ++literals) {  // ends at any bit of a byte
      const Pairs pairs(static_cast<size_t>(literals), pairOf(200, 0));
      Both both(build);
      both.startBlock();
      EXPECT_EQ(both.codeAll(
                    kFixed, pairs, [] { return size_t{1}; }, flush),
                orbStsNoErr);
      const Bytes tail(both.written.end() - 4, both.written.end());
      EXPECT_EQ(tail, (Bytes{0, 0, 0xFF, 0xFF}));
      EXPECT_EQ(both.encoder.record()->bitCount, 0);
    }
  }
}

// Blocks without pairs, with room for a byte each: their bits wait, and none is lost.
ORB_MEANING(orbsEncodeLZ77FixedHuff_8u, EmptyBlocksPileUp) {
  Encoder encoder(build);
  Bytes written;
  int blocks = 0;
  for (int call = 0; call < 100; ++call) {
    encoder.setStatus(orbLZ77PhaseCode);
    const Encoder::Step step = encoder.fixed({}, 1, orbLZ77FlushNone);
    written.insert(written.end(), step.written.begin(), step.written.end());
    blocks += step.status == orbStsNoErr;
    EXPECT_LE(encoder.record()->bitCount, 66);
  }
  EXPECT_EQ(written.size(), 99u);
  EXPECT_EQ(blocks, (99 * 8 + encoder.record()->bitCount) / 10);
  // 010 0000000 again and again.
  for (size_t i = 0; i < written.size() * 8; ++i) {
    ASSERT_EQ(written[i / 8] >> i % 8 & 1, i % 10 == 1) << "bit " << i;
  }
}

// Words that no pair has count by their low bits.
template <class Code>
void expectLowBits(const TestBuild& build, Code code) {
  Random random("words");
  for (int round = 0; round < 30; ++round) {
    Pairs bad, good;
    for (int i = 0; i < 300; ++i) {
      const OrbLZ77Pair pair = {random.any<Orb16u>(),
                                random.oneIn(2) ? Orb16u{0} : random.any<Orb16u>()};
      bad.push_back(pair);
      good.push_back(pair.offset == 0 ? pairOf(pair.lengthOrLiteral & 255, 0)
                                      : pairOf(((pair.lengthOrLiteral - 3) & 255) + 3,
                                               ((pair.offset - 1) & 32767) + 1));
    }
    Encoder encoder(build), other(build);
    encoder.setStatus(orbLZ77PhaseCode);
    other.setStatus(orbLZ77PhaseCode);
    const Encoder::Step step = code(encoder, bad), expected = code(other, good);
    ASSERT_EQ(step.status, expected.status);
    ASSERT_EQ(step.written, expected.written);
  }
}
ORB_MEANING(orbsEncodeLZ77FixedHuff_8u, WordsOutOfRange) {
  expectLowBits(build, [](Encoder& encoder, const Pairs& pairs) {
    return encoder.fixed(pairs, kRoomy, orbLZ77FlushFinish);
  });
}
ORB_MEANING(orbsEncodeLZ77DynamicHuff_8u, WordsOutOfRange) {
  expectLowBits(build, [](Encoder& encoder, const Pairs& pairs) {
    return encoder.dynamic(pairs, kRoomy, orbLZ77FlushFinish);
  });
}

// ---- orbsEncodeLZ77SelectHuffMode_8u

ORB_MEANING(orbsEncodeLZ77SelectHuffMode_8u, ChecksInOrder) {
  const auto function = ORB(orbsEncodeLZ77SelectHuffMode_8u);
  Encoder encoder(build);
  const Bytes before = encoder.image();
  const OrbLZ77Pair pair = {1, 0};
  Orb32s mode = 77;
  EXPECT_EQ(function(nullptr, -1, &mode, encoder.record()), orbStsNullPtrErr);
  EXPECT_EQ(function(&pair, -1, nullptr, encoder.record()), orbStsNullPtrErr);
  EXPECT_EQ(function(&pair, -1, &mode, nullptr), orbStsNullPtrErr);
  EXPECT_EQ(function(&pair, -1, &mode, encoder.record()), orbStsSizeErr);
  EXPECT_EQ(encoder.image(), before);
  EXPECT_EQ(mode, 77);
  EXPECT_EQ(function(&pair, 0, &mode, encoder.record()), orbStsNoErr);
}

// Costs are compared to the bit, about every tie.
ORB_MEANING(orbsEncodeLZ77SelectHuffMode_8u, TheCheapest) {
  Random random("modes");
  int modes[3] = {};
  for (int round = 0; round < 400; ++round) {
    const size_t count = random.between<size_t>(0, random.oneIn(2) ? 30 : 400);
    Pairs pairs;
    switch (random.between(0, 2)) {
      case 0:
        pairs = anyPairs(random, count);
        break;
      case 1:  // no two literals of a kind
        for (size_t i = 0; i < count; ++i) pairs.push_back(pairOf((i * 77) & 255, 0));
        break;
      default:
        for (size_t i = 0; i < count; ++i) pairs.push_back(pairOf(random.between(100, 255), 0));
    }
    Both both(build);
    both.matched(random.between(0, 3), random.between(0, 1));
    ++modes[both.select(pairs)];
    if (testing::Test::HasFailure()) return;
  }
  EXPECT_GT(modes[0], 20);
  EXPECT_GT(modes[1], 20);
  EXPECT_GT(modes[2], 20);
}

// Stored costs 32 bits and 8 per byte. Of literals above 143 the fixed code has 9 bits, of others
// 8, and the dynamic code's header is long: 3 + 9n against 32 + 8n tips at 29 and 30 literals.
ORB_MEANING(orbsEncodeLZ77SelectHuffMode_8u, TiesAreNotStored) {
  for (const size_t count : {28u, 29u, 30u, 31u}) {
    Pairs pairs;
    for (size_t i = 0; i < count; ++i) pairs.push_back(pairOf(144 + i * 3, 0));
    Encoder encoder(build);
    EXPECT_EQ(encoder.select(pairs), count > 29 ? orbLZ77BlockStored : orbLZ77BlockFixed) << count;
  }
}

// A decision stands until there are new pairs.
ORB_MEANING(orbsEncodeLZ77SelectHuffMode_8u, StandsUntilThereAreNewPairs) {
  Encoder encoder(build);
  const Pairs few = {pairOf('a', 0)}, many(2000, pairOf('a', 0));
  EXPECT_EQ(encoder.select(few), orbLZ77BlockFixed);
  const Bytes before = encoder.image();
  EXPECT_EQ(encoder.select(many), orbLZ77BlockFixed);
  EXPECT_EQ(encoder.image(), before);
  encoder.makePairs({1, 2, 3}, 0, 0);
  EXPECT_EQ(encoder.select(many), orbLZ77BlockFixed);
  encoder.makePairs({1, 2, 3}, 10, 0);
  EXPECT_EQ(encoder.select(many), orbLZ77BlockDynamic);
}

// Whatever is chosen, and whatever waits, the bits in front of the block are those before the
// choice.
ORB_MEANING(orbsEncodeLZ77SelectHuffMode_8u, AnyCoderMayFollow) {
  Random random("any coder");
  for (int round = 0; round < 60; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    Both both(build);
    const auto room = [&] { return random.between<size_t>(1, random.oneIn(2) ? 3 : 500); };
    for (int block = 0; block < 6; ++block) {
      const bool isLast = block == 5;
      const int flush = isLast ? orbLZ77FlushFinish : random.between(0, 2);
      both.matched(flush, isLast ? 0 : 1);
      const Pairs pairs = anyPairs(random, random.between<size_t>(0, 100));
      both.startBlock();
      both.select(pairs);
      switch (random.between(0, 2)) {
        case 0:
          both.codeAll(kFixed, pairs, room, flush);
          break;
        case 1:
          both.codeAll(kDynamic, pairs, room, flush);
          break;
        default:
          both.storeAll(anyText(random, random.between<size_t>(0, 300)), room, flush);
      }
      if (testing::Test::HasFailure()) return;
    }
  }
}

// A header that was made and not used goes out in front of the next dynamic block, if no choice is
// made for that.
ORB_MEANING(orbsEncodeLZ77DynamicHuff_8u, AnUnusedHeaderGoesFirst) {
  Both both(build);
  const Pairs pairs(50, pairOf('x', 0));
  both.matched(0);
  both.startBlock();
  both.select(pairs);
  both.codeAll(kFixed, pairs, kAtOnce, 0);
  both.matched(0);
  both.startBlock();
  both.codeAll(kDynamic, {pairOf('y', 0)}, kAtOnce, 0);
  EXPECT_EQ(both.encoder.record()->headerLen, 0);
}

// ---- orbsEncodeLZ77StoredBlock_8u

ORB_MEANING(orbsEncodeLZ77StoredBlock_8u, ChecksInOrder) {
  const auto function = ORB(orbsEncodeLZ77StoredBlock_8u);
  Encoder encoder(build);
  OrbLZ77EncState* const record = encoder.record();
  const Bytes before = encoder.image();
  Orb8u from = 1, to[10] = {}, *src = &from, *dst = to, *none = nullptr;
  Orb32s one = 1, room = 10;
  EXPECT_EQ(function(nullptr, &one, &dst, &room, 0, record), orbStsNullPtrErr);
  EXPECT_EQ(function(&none, &one, &dst, &room, 0, record), orbStsNullPtrErr);
  EXPECT_EQ(function(&src, nullptr, &dst, &room, 0, record), orbStsNullPtrErr);
  EXPECT_EQ(function(&src, &one, nullptr, &room, 0, record), orbStsNullPtrErr);
  EXPECT_EQ(function(&src, &one, &none, &room, 0, record), orbStsNullPtrErr);
  EXPECT_EQ(function(&src, &one, &dst, nullptr, 0, record), orbStsNullPtrErr);
  EXPECT_EQ(function(&src, &one, &dst, &room, 0, nullptr), orbStsNullPtrErr);
  EXPECT_EQ(encoder.image(), before);
  EXPECT_EQ(to[0], 0);
  // Lengths are not checked: below 0 there is no room, and no source.
  for (Orb32s length : {0, -1, INT32_MIN}) {
    EXPECT_EQ(function(&src, &one, &dst, &length, 0, record), orbStsDstFull);
  }
  Orb32s less = -5;
  EXPECT_EQ(function(&src, &less, &dst, &room, orbLZ77FlushFinish, record), orbStsStreamEnd);
  EXPECT_EQ(Bytes(to, to + 6), (Bytes{1, 0, 0, 0xFF, 0xFF, 0}));
  EXPECT_EQ(room, 5);
}

ORB_MEANING(orbsEncodeLZ77StoredBlock_8u, ByHand) {
  Encoder encoder(build);
  const Encoder::Step open = encoder.stored({'a', 'b'}, 10, orbLZ77FlushSync);
  EXPECT_EQ(open.status, orbStsNoErr);
  EXPECT_EQ(open.written, (Bytes{0, 2, 0, 0xFD, 0xFF, 'a', 'b'}));
  const Encoder::Step empty = encoder.stored({}, 5, orbLZ77FlushFinish);
  EXPECT_EQ(empty.status, orbStsStreamEnd);
  EXPECT_EQ(empty.written, (Bytes{1, 0, 0, 0xFF, 0xFF}));
  EXPECT_EQ(encoder.record()->blockState, 5);
}

// At any room, behind bits that wait and without; more than a block holds makes several, each of
// them the last of the stream if the call is.
ORB_MEANING(orbsEncodeLZ77StoredBlock_8u, BlocksAreTheModels) {
  Random random("stored");
  for (const size_t size : {0u, 1u, 2u, 100u, 65535u, 65536u, 140000u}) {
    for (const size_t room : {size_t{1}, size_t{2}, size_t{5}, size_t{40000}, kRoomy}) {
      if (size / room > 1000) continue;
      for (const int flush : {orbLZ77FlushNone, orbLZ77FlushFinish}) {
        SCOPED_TRACE(std::to_string(size) + " bytes, room for " + std::to_string(room));
        Both both(build);
        both.startBlock();
        both.codeAll(kFixed, anyPairs(random, random.between<size_t>(0, 10)), kAtOnce, 0);
        both.storeAll(
            anyText(random, size), [=] { return room; }, flush);
        // A fixed block may follow.
        both.startBlock();
        both.codeAll(kFixed, anyPairs(random, 10), kAtOnce, orbLZ77FlushFinish);
        if (testing::Test::HasFailure()) return;
      }
    }
  }
}

// ---- orbsEncodeLZ77Flush_8u

struct Trailer {
  OrbStatus status;
  Bytes bytes;  // written
  int behind;   // the byte behind them, 0xA5 if untouched
};
Trailer flush(Encoder& encoder, Orb32s room) {
  const TestBuild& build = encoder.build;
  orbtest::GuardedBytes dst(static_cast<size_t>(std::max(room, 0)));
  std::fill_n(dst.data(), dst.size(), Orb8u{0xA5});
  Orb8u* at = dst.data();
  const Orb32s before = room;
  Trailer trailer;
  trailer.status = ORB(orbsEncodeLZ77Flush_8u)(&at, &room, encoder.record());
  EXPECT_EQ(room, before - (at - dst.data()));
  trailer.bytes.assign(dst.data(), at);
  trailer.behind = room > 0 ? *at : -1;
  for (Orb32s i = 1; i < room; ++i) EXPECT_EQ(at[i], 0xA5);
  return trailer;
}
// At the end of a stream of 0x01020304 bytes with this checksum.
void end(Encoder& encoder) {
  encoder.record()->position = 0x01020304;
  encoder.record()->checksum = 0xA1B2C3D4;
  encoder.record()->blockState = 5;
  encoder.setStatus(orbLZ77PhaseFinal);
}

ORB_MEANING(orbsEncodeLZ77Flush_8u, ChecksInOrder) {
  const auto function = ORB(orbsEncodeLZ77Flush_8u);
  Encoder encoder(build, 1, 3);
  Orb8u to[10] = {}, *dst = to;
  Orb32s room = 10;
  const Bytes before = encoder.image();
  EXPECT_EQ(function(nullptr, &room, encoder.record()), orbStsNullPtrErr);
  EXPECT_EQ(function(&dst, nullptr, encoder.record()), orbStsNullPtrErr);
  EXPECT_EQ(function(&dst, &room, nullptr), orbStsNullPtrErr);
  for (const int phase : {0, 1, 2, 4}) {
    encoder.record()->cursor.phase = phase;
    EXPECT_EQ(function(&dst, &room, encoder.record()), orbStsErr) << phase;
  }
  for (const int kind : {3, -1, INT32_MAX}) {
    encoder.record()->cursor.phase = orbLZ77PhaseFinal;
    encoder.record()->checksumKind = kind;
    EXPECT_EQ(function(&dst, &room, encoder.record()), orbStsErr) << kind;
  }
  encoder.record()->cursor.phase = orbLZ77PhaseInit;
  encoder.record()->checksumKind = 3;
  EXPECT_EQ(encoder.image(), before);
  EXPECT_EQ(dst, to);
  EXPECT_EQ(to[0], 0);
}

const Bytes kAdlerTail = {0xA1, 0xB2, 0xC3, 0xD4};
const Bytes kCrcTail = {0xD4, 0xC3, 0xB2, 0xA1, 4, 3, 2, 1};
const Bytes& tailOf(int kind) {
  return kind == orbLZ77ChecksumAdler32 ? kAdlerTail : kCrcTail;
}

ORB_MEANING(orbsEncodeLZ77Flush_8u, TheTrailer) {
  for (const int kind : {0, 1, 2}) {
    for (const int spare : {0, 1, 5}) {
      Encoder encoder(build, 1, kind);
      end(encoder);
      const Trailer trailer = flush(encoder, static_cast<Orb32s>(tailOf(kind).size()) + spare);
      EXPECT_EQ(trailer.status, orbStsNoErr);
      EXPECT_EQ(trailer.bytes, tailOf(kind)) << kind;
      // A zero stands behind it, if there is room.
      EXPECT_EQ(trailer.behind, spare > 0 ? 0 : -1);
      EXPECT_EQ(encoder.record()->blockState, 5);
      // It can be had again.
      EXPECT_EQ(flush(encoder, 100).bytes, tailOf(kind));
    }
  }
}

ORB_MEANING(orbsEncodeLZ77Flush_8u, TheTrailerInPieces) {
  for (const int kind : {0, 1, 2}) {
    for (const Orb32s room : {1, 2, 3, 7}) {
      Encoder encoder(build, 1, kind);
      end(encoder);
      Bytes bytes;
      Trailer piece;
      do {
        piece = flush(encoder, room);
        bytes.insert(bytes.end(), piece.bytes.begin(), piece.bytes.end());
        EXPECT_EQ(encoder.record()->blockState, piece.status == orbStsDstFull ? 3 : 5);
        // What has been prepared stays as it is.
        encoder.record()->checksum ^= 0xFF;
      } while (piece.status == orbStsDstFull);
      EXPECT_EQ(piece.status, orbStsNoErr);
      EXPECT_EQ(bytes, tailOf(kind));
    }
  }
}

// Where the stream has not ended, the trailer is whatever was prepared last: nothing but zeros in a
// new record. Without room nothing happens.
ORB_MEANING(orbsEncodeLZ77Flush_8u, OddCalls) {
  Encoder encoder(build, 1, orbLZ77ChecksumCRC32);
  end(encoder);
  encoder.record()->blockState = 4;
  EXPECT_EQ(flush(encoder, 8).bytes, Bytes(8));
  end(encoder);
  const Bytes before = encoder.image();
  for (const Orb32s room : {0, -1, INT32_MIN}) {
    EXPECT_EQ(flush(encoder, room).status, orbStsDstFull);
    EXPECT_EQ(encoder.image(), before);
  }
}

// ---- Agreement

// Two records with the same contents, and a host that does anything to them.
struct Pairing {
  Encoder ours, theirs;

  Pairing(const TestBuild& build, Random& random)
      : ours(build, 1, random.between(0, 2)),
        theirs(orbtest::runnableBuilds()[0], 1, ours.record()->checksumKind) {
    if (!random.oneIn(3)) return;
    // Damaged in front of the tables, or in the codes.
    Orb8u* const bytes = reinterpret_cast<Orb8u*>(ours.record());
    const bool inCodes = random.oneIn(2);
    const size_t first = inCodes ? offsetof(OrbLZ77EncState, codes) : sizeof(OrbLZ77PairCursor);
    const size_t last =
        inCodes ? offsetof(OrbLZ77EncState, header) : offsetof(OrbLZ77EncState, prev);
    for (int times = random.between(1, 2000); times > 0; --times) {
      bytes[random.between(first, last - 1)] = random.any<Orb8u>();
    }
    ours.record()->checksumKind = theirs.record()->checksumKind;
    Orb8u* const copy = reinterpret_cast<Orb8u*>(theirs.record());
    std::copy(bytes + first, bytes + last, copy + first);
  }
  template <class Act>
  void act(Act act) {
    const Encoder::Step mine = act(ours), reference = act(theirs);
    ASSERT_EQ(mine.status, reference.status);
    ASSERT_EQ(mine.pairs, reference.pairs);
    ASSERT_EQ(mine.written, reference.written);
    ASSERT_EQ(ours.blockImage(), theirs.blockImage());
  }
};

Pairs wildPairs(Random& random) {
  Pairs pairs = anyPairs(random, random.between<size_t>(0, 400));
  if (random.oneIn(2)) {
    for (OrbLZ77Pair& pair : pairs) pair = {random.any<Orb16u>(), random.extreme<Orb16u>()};
  }
  return pairs;
}

template <class Act>
void expectAgreement(const TestBuild& build, Random& random, Act act) {
  for (int round = 0; round < 60; ++round) {
    Pairing pairing(build, random);
    for (int call = 0; call < 6; ++call) {
      if (random.oneIn(2)) {
        pairing.ours.setStatus(orbLZ77PhaseCode);
        pairing.theirs.setStatus(orbLZ77PhaseCode);
      }
      if (random.oneIn(3)) {
        const Pairs pairs = wildPairs(random);
        ASSERT_EQ(pairing.ours.select(pairs), pairing.theirs.select(pairs));
      }
      const size_t room = random.between<size_t>(0, random.oneIn(2) ? 10 : 700);
      const int how = random.between(-1, 4);
      act(pairing, room, how);
      if (testing::Test::HasFailure()) return;
    }
  }
}
ORB_AGREEMENT(orbsEncodeLZ77SelectHuffMode_8u) {
  expectAgreement(build, random, [&](Pairing& pairing, size_t, int) {
    const Pairs pairs = wildPairs(random);
    pairing.act([&](Encoder& encoder) {
      return Encoder::Step{{encoder.select(pairs), {}, 0}, true};
    });
  });
}
ORB_AGREEMENT(orbsEncodeLZ77FixedHuff_8u) {
  expectAgreement(build, random, [&](Pairing& pairing, size_t room, int how) {
    const Pairs pairs = wildPairs(random);
    pairing.act([&](Encoder& encoder) { return encoder.fixed(pairs, room, how); });
  });
}
ORB_AGREEMENT(orbsEncodeLZ77DynamicHuff_8u) {
  expectAgreement(build, random, [&](Pairing& pairing, size_t room, int how) {
    const Pairs pairs = wildPairs(random);
    pairing.act([&](Encoder& encoder) { return encoder.dynamic(pairs, room, how); });
  });
}
ORB_AGREEMENT(orbsEncodeLZ77StoredBlock_8u) {
  expectAgreement(build, random, [&](Pairing& pairing, size_t room, int how) {
    const Bytes src = anyText(random, random.between<size_t>(0, 500));
    pairing.act([&](Encoder& encoder) { return encoder.stored(src, room, how); });
  });
}
ORB_AGREEMENT(orbsEncodeLZ77Flush_8u) {
  expectAgreement(build, random, [&](Pairing& pairing, size_t room, int) {
    pairing.act([&](Encoder& encoder) {
      encoder.setStatus(orbLZ77PhaseFinal);
      const Trailer trailer = flush(encoder, static_cast<Orb32s>(room));
      return Encoder::Step{{trailer.status, trailer.bytes, 0}, true};
    });
  });
}

}  // namespace
