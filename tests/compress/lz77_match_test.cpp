// The match search of deflate: pairs of three levels, the dictionary and the checksums.
#include <algorithm>
#include <cstdint>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "tests/compress/deflate_encoder.h"
#include "tests/support/frame_state.h"

namespace {

using orbtest::anyText;
using orbtest::Bytes;
using orbtest::Encoder;
using orbtest::MatchModel;
using orbtest::pairOf;
using orbtest::Pairs;
using orbtest::Random;
using orbtest::slice;

constexpr int kPairs = 65280;
constexpr int kLevels[] = {orbLZ77LevelFast, orbLZ77LevelChain, orbLZ77LevelLazy};

// Feeds a source in one call to both, and compares.
void expectSamePairs(Encoder& encoder, MatchModel& model, const Bytes& src, size_t room,
                     int flush) {
  const Encoder::Made made = encoder.makePairs(src, room, flush);
  const MatchModel::Made expected = model.makePairs(src, room, flush);
  ASSERT_EQ(made.used, expected.used);
  ASSERT_EQ(made.status, made.used < static_cast<int>(src.size()) ? orbStsDstFull : orbStsNoErr);
  ASSERT_EQ(made.pairs.size(), expected.pairs.size());
  for (size_t i = 0; i < made.pairs.size(); ++i) {
    ASSERT_EQ(made.pairs[i].lengthOrLiteral, expected.pairs[i].lengthOrLiteral) << "pair " << i;
    ASSERT_EQ(made.pairs[i].offset, expected.pairs[i].offset) << "pair " << i;
  }
  ASSERT_EQ(encoder.record()->position, model.position());
  ASSERT_EQ(encoder.record()->srcLeft, static_cast<int>(src.size()) - made.used);
  ASSERT_EQ(encoder.record()->lastFlush, flush);
}

// All of a text, in calls of sizes and with rooms as given.
template <class Size, class Room>
void expectSamePairsInCalls(Encoder& encoder, MatchModel& model, const Bytes& text, Size size,
                            Room room, int flush = orbLZ77FlushNone) {
  for (size_t at = 0; at < text.size();) {
    const Bytes src = slice(text, at, size());
    const int before = encoder.record()->position;
    expectSamePairs(encoder, model, src, room(), flush);
    if (testing::Test::HasFatalFailure()) return;
    at += static_cast<size_t>(encoder.record()->position - before);
  }
}

const auto kAll = [] { return std::numeric_limits<size_t>::max(); };
const auto kAllPairs = [] { return size_t{kPairs}; };

// ---- orbsEncodeLZ77_8u

ORB_MEANING(orbsEncodeLZ77_8u, ChecksInOrder) {
  const auto function = ORB(orbsEncodeLZ77_8u);
  Encoder encoder(build);
  OrbLZ77EncState* const record = encoder.record();
  record->headerReady = 1;
  const Bytes before = encoder.image();
  Orb8u byte = 7;
  Orb8u* src = &byte;
  OrbLZ77Pair pair = {1, 2};
  OrbLZ77Pair *pairs = &pair, *none = nullptr;
  Orb32s one = 1, bad = -1, worst = INT32_MIN;
  // Null before everything, then the room, then the source.
  EXPECT_EQ(function(nullptr, &bad, &pairs, &bad, 0, record), orbStsNullPtrErr);
  EXPECT_EQ(function(&src, nullptr, &pairs, &bad, 0, record), orbStsNullPtrErr);
  EXPECT_EQ(function(&src, &bad, nullptr, &bad, 0, record), orbStsNullPtrErr);
  EXPECT_EQ(function(&src, &bad, &pairs, nullptr, 0, record), orbStsNullPtrErr);
  EXPECT_EQ(function(&src, &bad, &none, &bad, 0, record), orbStsNullPtrErr);
  EXPECT_EQ(function(&src, &bad, &pairs, &bad, 0, nullptr), orbStsNullPtrErr);
  EXPECT_EQ(function(&src, &one, &pairs, &bad, 0, record), orbStsSizeErr);
  EXPECT_EQ(function(&src, &bad, &pairs, &one, 0, record), orbStsSizeErr);
  EXPECT_EQ(function(&src, &worst, &pairs, &one, 0, record), orbStsSizeErr);
  EXPECT_EQ(function(&src, &one, &pairs, &worst, 0, record), orbStsSizeErr);
  EXPECT_EQ(encoder.image(), before);
  EXPECT_EQ(src, &byte);
  EXPECT_EQ(pairs, &pair);
  EXPECT_EQ(pair.lengthOrLiteral, 1);
  EXPECT_EQ(one, 1);
}

// Without room nothing is done, whether there is a source or not; but what is left of it is known.
ORB_MEANING(orbsEncodeLZ77_8u, NoRoomOrNoSource) {
  Encoder encoder(build);
  encoder.record()->headerReady = 1;
  EXPECT_EQ(encoder.makePairs({1, 2, 3}, 0, orbLZ77FlushSync).status, orbStsDstFull);
  EXPECT_EQ(encoder.record()->srcLeft, 3);
  EXPECT_EQ(encoder.record()->lastFlush, orbLZ77FlushSync);
  EXPECT_EQ(encoder.makePairs({}, 0, orbLZ77FlushFinish).status, orbStsDstFull);
  EXPECT_EQ(encoder.record()->srcLeft, 0);
  EXPECT_EQ(encoder.record()->lastFlush, orbLZ77FlushFinish);
  EXPECT_EQ(encoder.makePairs({}, 5, orbLZ77FlushNone).status, orbStsNoErr);
  EXPECT_EQ(encoder.record()->lastFlush, orbLZ77FlushNone);
  EXPECT_EQ(encoder.record()->headerReady, 1);
  // A source is not looked for where there is none.
  Orb8u* none = nullptr;
  Orb32s length = 0, room = 1;
  OrbLZ77Pair pair, *pairs = &pair;
  EXPECT_EQ(ORB(orbsEncodeLZ77_8u)(&none, &length, &pairs, &room, 0, encoder.record()),
            orbStsNoErr);
  EXPECT_EQ(encoder.makePairs({1}, 1, orbLZ77FlushNone).status, orbStsNoErr);
  EXPECT_EQ(encoder.record()->headerReady, 0);
}

ORB_MEANING(orbsEncodeLZ77_8u, ShortSourcesAreLiterals) {
  for (const int level : kLevels) {
    for (size_t size = 1; size <= 5; ++size) {
      Encoder encoder(build, level);
      EXPECT_EQ(encoder.makePairs(Bytes(size, 9), 10, 0).pairs, Pairs(size, pairOf(9, 0)))
          << size << " at level " << level;
    }
  }
}

// A run: one literal, a match of distance 1 that stops in front of the bytes that no match reaches,
// and these.
ORB_MEANING(orbsEncodeLZ77_8u, ARun) {
  for (const int level : kLevels) {
    const int rest = level == orbLZ77LevelLazy ? 3 : 2;
    Encoder encoder(build, level);
    Pairs expected = {pairOf('a', 0), pairOf(257 - rest, 1)};
    expected.insert(expected.end(), static_cast<size_t>(rest), pairOf('a', 0));
    EXPECT_EQ(encoder.makePairs(Bytes(258, 'a'), 10, 0).pairs, expected) << "level " << level;
    // The longest match is 258, however long the run; and it goes on from the call before, whose
    // last bytes were not entered.
    Encoder other(build, level);
    other.makePairs(Bytes(10, 'a'), 10, 0);
    const Pairs pairs = other.makePairs(Bytes(600, 'a'), 10, 0).pairs;
    EXPECT_EQ(pairs[0], pairOf(258, rest + 1)) << "level " << level;
  }
}

// The text is read up to the farthest distance and no farther.
ORB_MEANING(orbsEncodeLZ77_8u, TheReach) {
  const std::string word = "match";
  for (const int level : kLevels) {
    for (const size_t distance : {32766u, 32767u, 32768u, 32769u}) {
      // Every three bytes occur but once.
      Bytes text(word.begin(), word.end());
      for (int i = 0; text.size() < distance; ++i) {
        text.push_back(static_cast<Orb8u>(128 + i / 2 % 64));
        text.push_back(static_cast<Orb8u>(192 + i % 2 * 32 + i / 128 % 32));
        text.push_back(static_cast<Orb8u>(i / 4096 % 64));
      }
      text.resize(distance);
      text.insert(text.end(), word.begin(), word.end());
      text.insert(text.end(), 3, '.');
      Encoder encoder(build, level);
      const Pairs pairs = encoder.makePairs(text, kPairs, 0).pairs;
      const bool found = std::count(pairs.begin(), pairs.end(), pairOf(5, int(distance))) == 1;
      EXPECT_EQ(found, distance < 32768) << distance << " at level " << level;
    }
  }
}

ORB_MEANING(orbsEncodeLZ77_8u, ThreeFromAfarAreNotWorthIt) {
  for (const size_t distance : {4095u, 4096u, 4097u}) {
    Bytes text = {'o', 'n', 'e'};
    for (int i = 0; text.size() < distance; ++i) {
      for (const int byte : {128 + i % 128, i / 128 % 64, 64}) {
        text.push_back(static_cast<Orb8u>(byte));
      }
    }
    text.resize(distance);
    for (const char c : std::string("one.....")) text.push_back(static_cast<Orb8u>(c));
    for (const int level : {orbLZ77LevelChain, orbLZ77LevelLazy}) {
      Encoder encoder(build, level);
      const Pairs pairs = encoder.makePairs(text, kPairs, 0).pairs;
      const bool taken = std::count(pairs.begin(), pairs.end(), pairOf(3, int(distance))) == 1;
      EXPECT_EQ(taken, level == orbLZ77LevelChain || distance <= 4096)
          << distance << " at level " << level;
    }
  }
}

ORB_MEANING(orbsEncodeLZ77_8u, PairsAreTheModels) {
  Random random("pairs");
  for (int round = 0; round < 60; ++round) {
    const int level = kLevels[round % 3];
    SCOPED_TRACE("round " + std::to_string(round) + " at level " + std::to_string(level));
    Encoder encoder(build, level);
    MatchModel model(level);
    const int flush = std::vector<int>{orbLZ77FlushNone, orbLZ77FlushSync, orbLZ77FlushFinish,
                                       -1}[static_cast<size_t>(random.between(0, 3))];
    const Bytes text = anyText(random, random.between<size_t>(1, 4000));
    expectSamePairs(encoder, model, text, kPairs, flush);
    if (testing::Test::HasFatalFailure()) return;
  }
}

// Cut anywhere, and with any room: the text goes on.
ORB_MEANING(orbsEncodeLZ77_8u, SourcesInPieces) {
  Random random("pieces");
  for (int round = 0; round < 30; ++round) {
    const int level = kLevels[round % 3];
    SCOPED_TRACE("round " + std::to_string(round) + " at level " + std::to_string(level));
    Encoder encoder(build, level);
    MatchModel model(level);
    const size_t most = random.oneIn(2) ? 10 : 700;
    const auto size = [&] { return random.between<size_t>(1, most); };
    const auto room = [&] { return random.between<size_t>(1, 40); };
    expectSamePairsInCalls(encoder, model, anyText(random, 3000), size, room);
    if (testing::Test::HasFatalFailure()) return;
  }
}

ORB_MEANING(orbsEncodeLZ77_8u, EveryCutOfAText) {
  Random random("cuts");
  const Bytes text = anyText(random, 150);
  for (const int level : kLevels) {
    for (size_t cut = 1; cut < text.size(); ++cut) {
      SCOPED_TRACE("cut at " + std::to_string(cut) + ", level " + std::to_string(level));
      Encoder encoder(build, level);
      MatchModel model(level);
      expectSamePairs(encoder, model, slice(text, 0, cut), kPairs, orbLZ77FlushNone);
      expectSamePairs(encoder, model, slice(text, cut, kPairs), kPairs, orbLZ77FlushFinish);
      if (testing::Test::HasFatalFailure()) return;
    }
  }
}

ORB_MEANING(orbsEncodeLZ77_8u, RoomForOnePair) {
  Random random("one pair");
  for (const int level : kLevels) {
    Encoder encoder(build, level);
    MatchModel model(level);
    expectSamePairsInCalls(encoder, model, anyText(random, 600), kAll, [] { return size_t{1}; });
    if (testing::Test::HasFatalFailure()) return;
  }
}

// The window fills up and moves, whatever a call adds: less than a longest match, just that, nearly
// all of the reach, all of it, more.
ORB_MEANING(orbsEncodeLZ77_8u, LongTexts) {
  Random random("long texts");
  for (const int level : kLevels) {
    for (const size_t piece : {100u, 258u, 259u, 5000u, 32510u, 32767u, 32768u, 40000u, 150000u}) {
      SCOPED_TRACE("pieces of " + std::to_string(piece) + ", level " + std::to_string(level));
      Encoder encoder(build, level);
      MatchModel model(level);
      // Words from all over, so that matches reach far.
      Bytes words = anyText(random, 20000), text;
      while (text.size() < (piece < 5000 ? 70000 : 100000)) {
        const size_t length = random.between<size_t>(3, 400);
        const Bytes word = slice(words, random.between<size_t>(0, words.size() - length), length);
        text.insert(text.end(), word.begin(), word.end());
      }
      expectSamePairsInCalls(
          encoder, model, text, [&] { return piece; }, kAllPairs);
      if (testing::Test::HasFatalFailure()) return;
    }
  }
}

// 17 and 513 words: the last candidates that count are the 16th and the 512th.
ORB_MEANING(orbsEncodeLZ77_8u, TriesAreLimited) {
  for (const int level : {orbLZ77LevelChain, orbLZ77LevelLazy}) {
    const int tries = level == orbLZ77LevelChain ? 16 : 512;
    for (const int between : {tries - 1, tries}) {
      Bytes text = {'a', 'b', 'c', 'd', 'e'};
      for (int i = 0; i < between; ++i) {
        for (const int byte : {int{'a'}, int{'b'}, int{'c'}, 128 + i % 128, 200 + i / 128}) {
          text.push_back(static_cast<Orb8u>(byte));
        }
      }
      const int distance = static_cast<int>(text.size()) + 1;
      for (const char c : std::string("#abcde....")) text.push_back(static_cast<Orb8u>(c));
      Encoder encoder(build, level);
      const Pairs pairs = encoder.makePairs(text, kPairs, 0).pairs;
      const bool found = std::count(pairs.begin(), pairs.end(), pairOf(5, distance)) == 1;
      EXPECT_EQ(found, between < tries) << between << " in between at level " << level;
    }
  }
}

// As if 2^31 bytes had gone by: all positions of the record are that much higher.
void advance(OrbLZ77EncState& record, Orb32s by) {
  record.position += by;
  for (int i = 0; i < 32768; ++i) {
    if (record.head.at[i] >= 0) record.head.at[i] += by;
    if (record.prev.at[i] >= 0) record.prev.at[i] += by;
  }
}

// Positions start over, and the text does not.
ORB_MEANING(orbsEncodeLZ77_8u, PositionsStartOver) {
  Random random("positions");
  for (const int level : kLevels) {
    SCOPED_TRACE("level " + std::to_string(level));
    Encoder encoder(build, level);
    OrbLZ77EncState& record = *encoder.record();
    MatchModel model(level);
    const Bytes text = anyText(random, 120000);
    int64_t cut = 0;  // by how much the record's positions are behind the model's
    size_t at = 0;
    const auto feed = [&](size_t size) {
      const Bytes src = slice(text, at, size);
      const Encoder::Made made = encoder.makePairs(src, kPairs, 0);
      EXPECT_EQ(made.pairs, model.makePairs(src, kPairs, 0).pairs);
      at += src.size();
    };
    feed(10000);
    for (int times = 0; times < 3; ++times) {
      const Orb32s by = (INT32_MAX - record.position) / 32768 * 32768;
      advance(record, by);
      cut -= by;
      const Orb32s before = record.position;
      ASSERT_GT(before, INT32_MAX - 32768);
      // As much as still has a position, and then one byte more.
      feed(static_cast<size_t>(INT32_MAX - before));
      ASSERT_EQ(record.position, INT32_MAX);
      feed(1);
      ASSERT_EQ(record.position, 32768);
      cut += int64_t{INT32_MAX} + 1 - 32768;
      ASSERT_EQ(record.position + cut, model.position());
      feed(500);
      if (testing::Test::HasFailure()) return;
    }
  }
}

// An entry that is out of reach stays so, however often positions start over.
ORB_MEANING(orbsEncodeLZ77_8u, EmptyEntriesStayEmpty) {
  for (const int level : kLevels) {
    Encoder encoder(build, level);
    OrbLZ77EncState& record = *encoder.record();
    for (int times = 0; times < 4; ++times) {
      record.position = INT32_MAX;
      encoder.makePairs({1}, 1, 0);
      ASSERT_EQ(record.position, 32768);
      for (int i = 0; i < 32768; ++i) {
        ASSERT_LE(record.head.at[i], -32768);
        ASSERT_LE(record.prev.at[i], -32768);
      }
    }
  }
}

// Lengths of up to 2^31 - 1 are fine; with room for a few pairs only the start is read.
ORB_MEANING(orbsEncodeLZ77_8u, TheLongestSource) {
  const Bytes text(1000, 'x');
  for (const int level : kLevels) {
    Encoder encoder(build, level);
    encoder.makePairs(Bytes(100, 'x'), 100, 0);
    Orb8u* src = const_cast<Orb8u*>(text.data());
    Orb32s length = INT32_MAX, room = 2;
    OrbLZ77Pair list[2], *pairs = list;
    EXPECT_EQ(ORB(orbsEncodeLZ77_8u)(&src, &length, &pairs, &room, 0, encoder.record()),
              orbStsDstFull);
    EXPECT_EQ(list[0].lengthOrLiteral, 258);
    EXPECT_EQ(list[1].lengthOrLiteral, 258);
    EXPECT_EQ(length, INT32_MAX - 516);
    EXPECT_EQ(encoder.record()->position, 616);
  }
}

// ---- Restart

ORB_MEANING(orbsEncodeLZ77_8u, RestartedPairsAreTheModels) {
  Random random("restart");
  for (int round = 0; round < 45; ++round) {
    const int level = kLevels[round % 3];
    SCOPED_TRACE("round " + std::to_string(round) + " at level " + std::to_string(level));
    Encoder encoder(build, level);
    MatchModel model(level);
    // Tables keep what earlier calls left.
    const Bytes text = anyText(random, 9000);
    for (size_t at = 0; at < text.size();) {
      const size_t size = random.between<size_t>(1, 3000);
      expectSamePairs(encoder, model, slice(text, at, size), kPairs, orbLZ77FlushRestart);
      if (testing::Test::HasFatalFailure()) return;
      at += size;
    }
    // Reset makes the record good for all other modes.
    ASSERT_EQ(ORB(orbsEncodeLZ77Reset_8u)(encoder.record()), orbStsNoErr);
    model.reset();
    expectSamePairs(encoder, model, text, kPairs, orbLZ77FlushNone);
    if (testing::Test::HasFatalFailure()) return;
  }
}

// More than deflate's distances reach; chains whose places have been taken lead elsewhere.
ORB_MEANING(orbsEncodeLZ77_8u, RestartedLongCalls) {
  Random random("long restart");
  for (const int level : kLevels) {
    SCOPED_TRACE("level " + std::to_string(level));
    Encoder encoder(build, level);
    MatchModel model(level);
    expectSamePairs(encoder, model, anyText(random, 50000), kPairs, orbLZ77FlushRestart);
    expectSamePairs(encoder, model, anyText(random, 40000), kPairs, orbLZ77FlushRestart);
    if (testing::Test::HasFatalFailure()) return;
  }
}

// When the room ends, the rest of the source is a call of its own.
ORB_MEANING(orbsEncodeLZ77_8u, RestartedWithoutRoom) {
  Random random("restart room");
  for (const int level : kLevels) {
    Encoder encoder(build, level);
    MatchModel model(level);
    const Bytes text = anyText(random, 500);
    for (size_t at = 0; at < text.size();) {
      const Bytes src = slice(text, at, 500);
      const Encoder::Made made = encoder.makePairs(src, 7, orbLZ77FlushRestart);
      ASSERT_EQ(made.pairs, model.makePairs(src, 7, orbLZ77FlushRestart).pairs);
      ASSERT_EQ(encoder.record()->position, 0);
      at += static_cast<size_t>(made.used);
    }
  }
}

// Position 0 is never matched.
ORB_MEANING(orbsEncodeLZ77_8u, RestartedRun) {
  for (const int level : kLevels) {
    const int rest = level == orbLZ77LevelLazy ? 3 : 2;
    Encoder encoder(build, level);
    Pairs expected = {pairOf(5, 0), pairOf(5, 0), pairOf(98 - rest, 1)};
    expected.insert(expected.end(), static_cast<size_t>(rest), pairOf(5, 0));
    EXPECT_EQ(encoder.makePairs(Bytes(100, 5), 100, orbLZ77FlushRestart).pairs, expected);
  }
}

// In a stream that has begun, a restart counts from its beginning: the cursors move by as much
// more, and nothing in front of the source is read.
ORB_MEANING(orbsEncodeLZ77_8u, RestartedTooLate) {
  Random random("late restart");
  for (const int level : kLevels) {
    const Bytes text = anyText(random, 2000);
    Encoder encoder(build, level, orbLZ77ChecksumAdler32);
    encoder.makePairs(text, kPairs, orbLZ77FlushNone);
    const Orb32u before = encoder.record()->checksum;
    for (const auto guard : {orbtest::Guard::kBefore, orbtest::Guard::kBehind}) {
      encoder.record()->position = 2000;
      encoder.record()->checksum = before;
      orbtest::GuardedBytes src(text, guard);
      Orb8u* at = src.data();
      Orb32s left = src.size(), room = kPairs;
      Pairs list(kPairs);
      OrbLZ77Pair* pairs = list.data();
      EXPECT_EQ(
          ORB(orbsEncodeLZ77_8u)(&at, &left, &pairs, &room, orbLZ77FlushRestart, encoder.record()),
          orbStsNoErr);
      EXPECT_EQ(at - src.data(), 4000);
      EXPECT_EQ(left, -2000);
      EXPECT_EQ(encoder.record()->srcLeft, 0);
      EXPECT_EQ(encoder.record()->position, 0);
      EXPECT_EQ(encoder.record()->checksum, orbtest::adler32(before, text));
    }
  }
}

// ---- Checksums

ORB_MEANING(orbsEncodeLZ77_8u, ChecksumsGoOnFromCallToCall) {
  Random random("checksums");
  const orbtest::SavedFrameState saved;
  orb::HostCpu cpu;
  uint64_t features = 0;
  orb::orbDetectFeatures(orbFrameState, cpu, &features);
  for (const uint32_t enabled : {uint32_t{3}, static_cast<uint32_t>(features)}) {
    orb::orbSetEnabledFeatures(orbFrameState, enabled, 0);
    for (const size_t most : {20u, 300u, 30000u}) {
      for (const bool isExtreme : {false, true}) {
        Encoder adler(build, 0, orbLZ77ChecksumAdler32), crc(build, 0, orbLZ77ChecksumCRC32);
        Encoder none(build, 0, orbLZ77ChecksumNone), other(build, 0, 3);
        Orb32u expectedAdler = 0, expectedCrc = 0;
        for (int call = 0; call < 20; ++call) {
          Bytes src(random.between<size_t>(1, most), 255);
          if (!isExtreme)
            std::generate(src.begin(), src.end(), [&] { return random.any<Orb8u>(); });
          expectedAdler = orbtest::adler32(expectedAdler, src);
          expectedCrc = orbtest::crc32(expectedCrc, src);
          for (Encoder* encoder : {&adler, &crc, &none, &other}) {
            ASSERT_EQ(encoder->makePairs(src, kPairs, 0).status, orbStsNoErr);
          }
          ASSERT_EQ(adler.record()->checksum, expectedAdler) << src.size();
          ASSERT_EQ(crc.record()->checksum, expectedCrc) << src.size();
          ASSERT_EQ(none.record()->checksum, 0u);
          ASSERT_EQ(other.record()->checksum, 0u);
        }
      }
    }
  }
}

// Of what went into pairs, not of what was given; and not of a dictionary.
ORB_MEANING(orbsEncodeLZ77_8u, ChecksumsOfWhatIsConsumed) {
  const Bytes text = {'a', 'b', 'c', 'd', 'e'};
  Encoder encoder(build, 1, orbLZ77ChecksumCRC32);
  ORB(orbsEncodeLZ77SetDictionary_8u)(text.data(), 5, encoder.record());
  EXPECT_EQ(encoder.makePairs({1, 2, 3, 4}, 3, 0).used, 3);
  EXPECT_EQ(encoder.record()->checksum, orbtest::crc32(0, {1, 2, 3}));
}

// The check value of CRC-32 in every catalogue, and the Adler-32 of RFC 1950's usual example, less
// what its start at 1 adds.
ORB_MEANING(orbsEncodeLZ77_8u, KnownChecksums) {
  const std::string digits = "123456789", name = "Wikipedia";
  Encoder crc(build, 0, orbLZ77ChecksumCRC32), adler(build, 0, orbLZ77ChecksumAdler32);
  crc.makePairs(Bytes(digits.begin(), digits.end()), 9, 0);
  EXPECT_EQ(crc.record()->checksum, 0xCBF43926);
  adler.makePairs(Bytes(name.begin(), name.end()), 9, 0);
  EXPECT_EQ(adler.record()->checksum, 0x11E60398u - (9u << 16) - 1);
}

// ---- Records that no host should have

// Nothing is read or written outside of the record and the buffers, and all builds do the same.
ORB_AGREEMENT(orbsEncodeLZ77_8u) {
  const orbtest::SavedFrameState saved;
  orb::HostCpu cpu;
  uint64_t features = 0;
  orb::orbDetectFeatures(orbFrameState, cpu, &features);
  orb::orbSetEnabledFeatures(orbFrameState, static_cast<uint32_t>(features), 0);
  const orbtest::TestBuild& px = orbtest::runnableBuilds()[0];
  for (int round = 0; round < 40; ++round) {
    const int level = random.between(0, 2), kind = random.between(0, 3);
    Encoder ours(build, level, kind), theirs(px, level, kind);
    if (round % 2 == 1) {
      OrbLZ77EncState& record = *ours.record();
      for (int i = 0; i < 32768; ++i) {
        record.head.at[i] =
            random.oneIn(2) ? random.extreme<Orb32s>() : random.between(-40000, 90000);
        record.prev.at[i] =
            random.oneIn(2) ? random.extreme<Orb32s>() : random.between(-40000, 90000);
      }
      record.position = random.oneIn(2) ? random.extreme<Orb32s>() : random.between(0, 70000);
      record.windowFill = random.extreme<Orb32s>();
    }
    theirs.copyFrom(ours);
    for (int call = 0; call < 4; ++call) {
      const Bytes text = anyText(random, random.between<size_t>(1, 3000));
      const size_t room = random.between<size_t>(1, 1000);
      // A restart in a stream that has begun moves the cursors anywhere.
      const int flush = std::vector<int>{0, 1, 3}[random.between<size_t>(0, 2)];
      const Encoder::Made mine = ours.makePairs(text, room, flush);
      const Encoder::Made reference = theirs.makePairs(text, room, flush);
      ASSERT_EQ(mine.status, reference.status);
      ASSERT_EQ(mine.used, reference.used);
      ASSERT_EQ(mine.pairs, reference.pairs);
      ASSERT_EQ(ours.image(), theirs.image());
    }
  }
}

// ---- orbsEncodeLZ77SetDictionary_8u

ORB_MEANING(orbsEncodeLZ77SetDictionary_8u, ChecksInOrder) {
  const auto function = ORB(orbsEncodeLZ77SetDictionary_8u);
  Encoder encoder(build);
  const Bytes text = {1, 2, 3, 4};
  encoder.setStatus(orbLZ77PhaseMatch);
  const Bytes before = encoder.image();
  EXPECT_EQ(function(nullptr, -1, encoder.record()), orbStsNullPtrErr);
  EXPECT_EQ(function(text.data(), -1, nullptr), orbStsNullPtrErr);
  EXPECT_EQ(function(text.data(), -1, encoder.record()), orbStsSizeErr);
  EXPECT_EQ(function(text.data(), INT32_MIN, encoder.record()), orbStsSizeErr);
  for (const int length : {0, 1, 2}) {
    EXPECT_EQ(function(text.data(), length, encoder.record()), orbStsNoErr) << length;
  }
  for (const int phase : {1, 2, 3, -1, 99}) {
    encoder.record()->cursor.phase = phase;
    EXPECT_EQ(function(text.data(), 3, encoder.record()), orbStsErr) << phase;
  }
  encoder.record()->cursor.phase = orbLZ77PhaseMatch;
  EXPECT_EQ(encoder.image(), before);
  // Too short a text changes nothing in the right phase, either.
  encoder.record()->cursor.phase = orbLZ77PhaseInit;
  EXPECT_EQ(function(text.data(), 2, encoder.record()), orbStsNoErr);
  EXPECT_EQ(encoder.record()->position, 0);
  EXPECT_EQ(function(text.data(), 3, encoder.record()), orbStsNoErr);
  EXPECT_EQ(encoder.record()->position, 3);
}

ORB_MEANING(orbsEncodeLZ77SetDictionary_8u, GoesInFrontOfTheText) {
  Random random("dictionary");
  for (const int level : kLevels) {
    for (const size_t size : {3u, 4u, 258u, 1000u, 32767u, 32768u, 32769u, 40000u}) {
      SCOPED_TRACE(std::to_string(size) + " at level " + std::to_string(level));
      const Bytes dictionary = anyText(random, size);
      Encoder encoder(build, level);
      MatchModel model(level);
      {
        const orbtest::GuardedBytes bytes(dictionary);
        ASSERT_EQ(ORB(orbsEncodeLZ77SetDictionary_8u)(bytes.data(), bytes.size(), encoder.record()),
                  orbStsNoErr);
      }
      model.setDictionary(dictionary);
      ASSERT_EQ(encoder.record()->position, static_cast<int>(std::min<size_t>(size, 32768)));
      Bytes text = slice(dictionary, size / 2, 500);
      const Bytes more = anyText(random, 500);
      text.insert(text.end(), more.begin(), more.end());
      expectSamePairs(encoder, model, text, kPairs, orbLZ77FlushNone);
      expectSamePairs(encoder, model, more, kPairs, orbLZ77FlushNone);
      if (testing::Test::HasFatalFailure()) return;
    }
  }
}

ORB_AGREEMENT(orbsEncodeLZ77SetDictionary_8u) {
  const orbtest::TestBuild& px = orbtest::runnableBuilds()[0];
  for (const int level : kLevels) {
    Encoder ours(build, level), theirs(px, level);
    const Bytes dictionary = anyText(random, random.between<size_t>(3, 40000));
    const Orb32s length = static_cast<Orb32s>(dictionary.size());
    theirs.copyFrom(ours);
    ASSERT_EQ(ORB(orbsEncodeLZ77SetDictionary_8u)(dictionary.data(), length, ours.record()),
              PX(orbsEncodeLZ77SetDictionary_8u)(dictionary.data(), length, theirs.record()));
    ASSERT_EQ(ours.image(), theirs.image());
  }
}

// ---- The hash of the chains

TEST(HashMix, BeginsAsItsFirstUserHadIt) {
  const Orb32u first[] = {0x499D, 0x3DC2, 0x2D07, 0x705B, 0x7A76, 0x3469, 0x59DB, 0x0C58};
  const Orb32u second[] = {0x5B6B, 0x656C, 0x1CA2, 0x167C, 0x65A5, 0x7597, 0x1F4F, 0x47DD};
  const Orb32u third[] = {0x5C40, 0x1DD8, 0x7164, 0x77CC, 0x0C10, 0x6789, 0x1A4B, 0x42DD};
  for (size_t i = 0; i < 8; ++i) {
    EXPECT_EQ(orb::orbHashMix[i] & 0xFFFF, first[i]);
    EXPECT_EQ(orb::orbHashMix[i] >> 16 & 0xFFFF, second[i]);
    EXPECT_EQ(orb::orbHashMix[i] >> 32, third[i]);
  }
}

TEST(HashMix, IsSpread) {
  for (const int row : {0, 16, 32}) {
    std::set<uint64_t> values;
    uint64_t sum = 0;
    for (size_t i = 0; i < 256; ++i) {
      const uint64_t value = orb::orbHashMix[i] >> row & 0xFFFF;
      EXPECT_GE(value, 1u);
      EXPECT_LE(value, 32767u);
      values.insert(value);
      sum += value;
    }
    EXPECT_EQ(values.size(), 256u);
    EXPECT_NEAR(static_cast<double>(sum) / 256, 16384, 1500);
  }
}

}  // namespace
