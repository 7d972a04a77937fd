// The deflate decoder's record: how it is made, set back, copied, and what a host keeps in it.
#include <cstring>

#include "tests/compress/inflate_calls.h"
#include "tests/support/no_memory.h"

namespace {

using namespace orbtest;

// A literal and a match on what comes before the stream, in a fixed block.
Bytes matchAt(int distance, int length = 3) {
  return bytesOf(fixedBlock(true, {pairOf(distance == 0 ? 'x' : length, distance)}));
}

// What a match of so many bytes at this distance finds, by either route.
Bytes reachedByBytes(Inflater& inflater, int distance, int length) {
  return inflater.toBytes(orbLZ77BlockFixed, matchAt(distance, length), 1000).bytes;
}
Bytes reachedByPairs(Inflater& inflater, int distance, int length) {
  return inflater.expand({pairOf(length, distance)}, 1000).bytes;
}

ORB_MEANING(orbsDecodeLZ77GetSize_8u, Size) {
  Plane<Orb32s> size(1, 1, {0, 1});
  EXPECT_EQ(ORB(orbsDecodeLZ77GetSize_8u)(size.data()), orbStsNoErr);
  EXPECT_EQ(size.at(0), 105544);
  size.expectOutsideUntouched();
  EXPECT_EQ(ORB(orbsDecodeLZ77GetSize_8u)(nullptr), orbStsNullPtrErr);
}
ORB_AGREEMENT(orbsDecodeLZ77GetSize_8u) {
  Orb32s size = 0, expected = 0;
  EXPECT_EQ(ORB(orbsDecodeLZ77GetSize_8u)(&size), PX(orbsDecodeLZ77GetSize_8u)(&expected));
  EXPECT_EQ(size, expected);
}

// ---- Init, InitAlloc, Reset

// The record stands at the start of a stream: in its own list, ready for any block.
void expectStart(Inflater& inflater) {
  const TestBuild& build = inflater.build;
  OrbLZ77Pair* pairs = nullptr;
  Orb32s count = -1, left = -1, phase = -1;
  ASSERT_EQ(ORB(orbsDecodeLZ77GetPairs_8u)(&pairs, &count, &left, inflater.record()), orbStsNoErr);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(left, 8192);
  ASSERT_EQ(ORB(orbsDecodeLZ77GetStatus_8u)(&phase, inflater.record()), orbStsNoErr);
  EXPECT_EQ(phase, orbLZ77PhaseInit);
  EXPECT_EQ(inflater.toBytes(orbLZ77BlockFixed, matchAt(0), 9).bytes, Bytes{'x'});
}

// Leaves something in every field: within a match of a dynamic block, with bits held, output
// pending, a history and a cursor.
void disturb(Inflater& inflater, Random& random) {
  const TestBuild& build = inflater.build;
  ASSERT_EQ(ORB(orbsDecodeLZ77Init_8u)(0, inflater.record()), orbStsNoErr);
  const Pairs pairs = {pairOf('a', 0), pairOf(200, 1), pairOf(5, 2), pairOf(5, 2)};
  const Bytes stream = bytesOf(dynamicBlock(random, true, pairs));
  const InflateStep step = inflater.toBytes(orbLZ77BlockDynamic, stream, 100);
  ASSERT_EQ(step.status, orbStsDstFull);
  ASSERT_EQ(inflater.expand({pairOf('a', 0), pairOf(20, 1)}, 9).status, orbStsDstFull);
  static OrbLZ77Pair list[3];
  ASSERT_EQ(ORB(orbsDecodeLZ77SetPairs_8u)(list, 1, 2, inflater.record()), orbStsNoErr);
  ASSERT_EQ(ORB(orbsDecodeLZ77SetStatus_8u)(7, inflater.record()), orbStsNoErr);
}

ORB_MEANING(orbsDecodeLZ77Init_8u, StartOfAStream) {
  EXPECT_EQ(ORB(orbsDecodeLZ77Init_8u)(orbLZ77ChecksumCRC32, nullptr), orbStsNullPtrErr);
  Random random("init");
  Inflater inflater(build);
  expectStart(inflater);
  disturb(inflater, random);
  for (const Orb32s checksum : {2, 99, -1}) {
    ASSERT_EQ(ORB(orbsDecodeLZ77Init_8u)(checksum, inflater.record()), orbStsNoErr);
    expectStart(inflater);
    inflater.memory().expectMargins();
  }
}

ORB_MEANING(orbsDecodeLZ77Init_8u, LeavesWhatCameBefore) {
  Inflater inflater(build);
  Random random("before");
  const Bytes dictionary = randomBytes(random, 32768);
  inflater.setDictionary(dictionary);
  ASSERT_EQ(ORB(orbsDecodeLZ77Init_8u)(orbLZ77ChecksumNone, inflater.record()), orbStsNoErr);
  EXPECT_EQ(reachedByBytes(inflater, 32768, 258),
            Bytes(dictionary.begin(), dictionary.begin() + 258));
}

ORB_MEANING(orbsDecodeLZ77Init_8u, TheListIsWithinTheRecord) {
  Inflater inflater(build);
  OrbLZ77Pair* pairs = nullptr;
  Orb32s count = 0, left = 0;
  ORB(orbsDecodeLZ77GetPairs_8u)(&pairs, &count, &left, inflater.record());
  const Orb8u* const first = inflater.memory().bytes();
  const Orb8u* const list = reinterpret_cast<Orb8u*>(pairs);
  EXPECT_GE(list, first);
  EXPECT_LE(list + 8192 * sizeof(OrbLZ77Pair), first + sizeof(OrbLZ77DecState));
  // It is no part of anything else: a stream decodes with all of it in use.
  Random random("list");
  const Bytes dictionary = randomBytes(random, 32768);
  inflater.setDictionary(dictionary);
  std::memset(static_cast<void*>(pairs), 0xA5, 8192 * sizeof(OrbLZ77Pair));
  const RandomStream stream = randomStream(random, 4, 32768);
  expectCalls(inflater, Route::kBytes,
              callsOf(random, stream, dictionary, Route::kBytes, {7}, {kWhole}));
}

ORB_AGREEMENT(orbsDecodeLZ77Init_8u) {
  Inflater mine(build);
  disturb(mine, random);
  RecordMemory theirs = mine.memory();
  ORB(orbsDecodeLZ77Init_8u)(5, mine.record());
  PX(orbsDecodeLZ77Init_8u)(5, theirs.record());
  theirs.record()->cursor = mine.record()->cursor;  // each has its own address
  EXPECT_TRUE(mine.memory() == theirs);
}

ORB_MEANING(orbsDecodeLZ77InitAlloc_8u, ARecordOfTheLibrary) {
  EXPECT_EQ(ORB(orbsDecodeLZ77InitAlloc_8u)(orbLZ77ChecksumNone, nullptr), orbStsNullPtrErr);
  OrbLZ77DecState* state = nullptr;
  ASSERT_EQ(ORB(orbsDecodeLZ77InitAlloc_8u)(orbLZ77ChecksumAdler32, &state), orbStsNoErr);
  ASSERT_NE(state, nullptr);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(state) % 64, 0u);
  Bytes stream = matchAt(0);
  Orb8u* src = stream.data();
  Orb32s srcLen = static_cast<Orb32s>(stream.size());
  Orb8u byte = 0;
  Orb8u* dst = &byte;
  Orb32s dstLen = 1;
  EXPECT_EQ(ORB(orbsDecodeLZ77FixedHuffFull_8u)(&src, &srcLen, &dst, &dstLen, 0, state),
            orbStsDstFull);
  EXPECT_EQ(byte, 'x');
  ORB(orbsLZ77Free_8u)(state);
}
ORB_MEANING(orbsDecodeLZ77InitAlloc_8u, NoMemory) {
  expectWithoutMemory([&] {
    OrbLZ77DecState* state = nullptr;
    return ORB(orbsDecodeLZ77InitAlloc_8u)(orbLZ77ChecksumNone, &state) == orbStsMemAllocErr &&
           state == nullptr;
  });
}
ORB_AGREEMENT(orbsDecodeLZ77InitAlloc_8u) {
  OrbLZ77DecState* mine = nullptr;
  OrbLZ77DecState* theirs = nullptr;
  ASSERT_EQ(ORB(orbsDecodeLZ77InitAlloc_8u)(2, &mine), orbStsNoErr);
  ASSERT_EQ(PX(orbsDecodeLZ77InitAlloc_8u)(2, &theirs), orbStsNoErr);
  theirs->cursor = mine->cursor;
  EXPECT_EQ(std::memcmp(mine, theirs, offsetof(OrbLZ77DecState, window)), 0);
  ORB(orbsLZ77Free_8u)(mine);
  PX(orbsLZ77Free_8u)(theirs);
}

ORB_MEANING(orbsDecodeLZ77Reset_8u, StartOfAnotherStream) {
  EXPECT_EQ(ORB(orbsDecodeLZ77Reset_8u)(nullptr), orbStsNullPtrErr);
  Random random("reset");
  Inflater inflater(build);
  disturb(inflater, random);
  ASSERT_EQ(ORB(orbsDecodeLZ77Reset_8u)(inflater.record()), orbStsNoErr);
  expectStart(inflater);
  // Behind a bad stream, and on the other route.
  ASSERT_EQ(
      inflater.toPairs(orbLZ77BlockFixed, bytesOf("110" + fixedCodes().symbols[257] + "11110"), 9)
          .status,
      orbStsSizeErr);
  ASSERT_EQ(ORB(orbsDecodeLZ77Reset_8u)(inflater.record()), orbStsNoErr);
  const Bytes dictionary = randomBytes(random, 32768);
  inflater.setDictionary(dictionary);
  const RandomStream stream = randomStream(random, 4, 32768);
  expectCalls(inflater, Route::kPairs,
              callsOf(random, stream, dictionary, Route::kPairs, {3}, {7}));
  // The end of that stream is forgotten, too.
  ASSERT_EQ(ORB(orbsDecodeLZ77Reset_8u)(inflater.record()), orbStsNoErr);
  EXPECT_EQ(inflater.expand({pairOf('q', 0)}, 9).status, orbStsNoErr);
}

ORB_MEANING(orbsDecodeLZ77Reset_8u, TheCursorStaysInItsList) {
  Inflater inflater(build);
  OrbLZ77Pair own[4];
  ASSERT_EQ(ORB(orbsDecodeLZ77SetPairs_8u)(own + 1, 2, 3, inflater.record()), orbStsNoErr);
  ASSERT_EQ(ORB(orbsDecodeLZ77Reset_8u)(inflater.record()), orbStsNoErr);
  OrbLZ77Pair* pairs = nullptr;
  Orb32s count = -1, left = -1;
  ASSERT_EQ(ORB(orbsDecodeLZ77GetPairs_8u)(&pairs, &count, &left, inflater.record()), orbStsNoErr);
  EXPECT_EQ(pairs, own + 1);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(left, 8192);
}

ORB_AGREEMENT(orbsDecodeLZ77Reset_8u) {
  Inflater inflater(build);
  disturb(inflater, random);
  RecordMemory theirs = inflater.memory();
  ORB(orbsDecodeLZ77Reset_8u)(inflater.record());
  PX(orbsDecodeLZ77Reset_8u)(theirs.record());
  EXPECT_TRUE(inflater.memory() == theirs);
}

// ---- SetDictionary

ORB_MEANING(orbsDecodeLZ77SetDictionary_8u, Checks) {
  Inflater inflater(build);
  const Orb8u byte = 0;
  const auto set = ORB(orbsDecodeLZ77SetDictionary_8u);
  EXPECT_EQ(set(nullptr, 0, inflater.record()), orbStsNullPtrErr);
  EXPECT_EQ(set(&byte, 0, nullptr), orbStsNullPtrErr);
  EXPECT_EQ(set(&byte, 0, inflater.record()), orbStsSizeErr);
  EXPECT_EQ(set(&byte, -1, inflater.record()), orbStsSizeErr);
  EXPECT_EQ(set(&byte, INT32_MIN, inflater.record()), orbStsSizeErr);
  EXPECT_EQ(inflater.record()->windowFill, 0);
}

ORB_MEANING(orbsDecodeLZ77SetDictionary_8u, ServesBothRoutes) {
  Random random("dictionary");
  for (const size_t size : {1u, 2u, 5u, 258u, 32767u, 32768u, 32769u, 40000u}) {
    SCOPED_TRACE(size);
    const Bytes dictionary = randomBytes(random, size);
    const int reach = static_cast<int>(std::min<size_t>(size, 32768));
    for (const int distance : {1, 2, 5, reach / 2, reach - 1, reach}) {
      if (distance < 1 || distance > reach) continue;
      for (const int length : {3, 5, 258}) {
        Bytes expected = dictionary;
        appendMatch(expected, length, distance);
        expected.erase(expected.begin(), expected.begin() + static_cast<ptrdiff_t>(size));
        Inflater first(build), second(build);
        first.setDictionary(dictionary);
        second.setDictionary(dictionary);
        ASSERT_EQ(reachedByBytes(first, distance, length), expected) << distance;
        ASSERT_EQ(reachedByPairs(second, distance, length), expected) << distance;
      }
    }
  }
}

// What stands in front of a short one is what stood there.
ORB_MEANING(orbsDecodeLZ77SetDictionary_8u, InFrontOfAShortOne) {
  Random random("dictionary over another");
  Bytes expected = randomBytes(random, 32768);
  const Bytes five = randomBytes(random, 5);
  Inflater first(build), second(build);
  for (Inflater* inflater : {&first, &second}) {
    inflater->setDictionary(expected);
    inflater->setDictionary(five);
  }
  std::copy(five.begin(), five.end(), expected.end() - 5);
  expected.erase(expected.begin(), expected.end() - 20);
  EXPECT_EQ(reachedByBytes(first, 20, 20), expected);
  EXPECT_EQ(reachedByPairs(second, 20, 20), expected);
}

ORB_AGREEMENT(orbsDecodeLZ77SetDictionary_8u) {
  for (const size_t size : {1u, 77u, 32768u, 50000u}) {
    const Bytes dictionary = randomBytes(random, size);
    Inflater mine(build);
    RecordMemory theirs = mine.memory();
    mine.setDictionary(dictionary);
    PX(orbsDecodeLZ77SetDictionary_8u)
    (dictionary.data(), static_cast<Orb32s>(size), theirs.record());
    EXPECT_TRUE(mine.memory() == theirs);
  }
}

// ---- CopyState

ORB_MEANING(orbsDecodeLZ77CopyState_8u, Checks) {
  Inflater inflater(build);
  EXPECT_EQ(ORB(orbsDecodeLZ77CopyState_8u)(nullptr, inflater.record()), orbStsNullPtrErr);
  EXPECT_EQ(ORB(orbsDecodeLZ77CopyState_8u)(inflater.record(), nullptr), orbStsNullPtrErr);
}

// Every call is made on a copy of the record that the call before was made on, at another address,
// and what is left behind is overwritten.
ORB_MEANING(orbsDecodeLZ77CopyState_8u, AnywhereInAStream) {
  Random random("copies");
  for (int round = 0; round < 6; ++round) {
    const Route route = round % 2 == 0 ? Route::kBytes : Route::kPairs;
    const Bytes dictionary = randomBytes(random, 32768);
    const RandomStream stream = randomStream(random, 4, 32768);
    const std::vector<InflateCall> calls =
        callsOf(random, stream, dictionary, route, {5, true}, {9, true});
    const auto first = std::make_unique<Inflater>(build, 0);
    const auto second = std::make_unique<Inflater>(build, 3);
    first->setDictionary(dictionary);
    Inflater* now = first.get();
    Inflater* other = second.get();
    for (const InflateCall& call : calls) {
      ASSERT_EQ(ORB(orbsDecodeLZ77CopyState_8u)(now->record(), other->record()), orbStsNoErr);
      disturb(*now, random);
      std::swap(now, other);
      int mode = -1;
      expectStep(call.run(*now, route, mode), call.expected);
      ASSERT_FALSE(testing::Test::HasFailure());
      ASSERT_EQ(ORB(orbsDecodeLZ77Init_8u)(0, other->record()), orbStsNoErr);
    }
  }
}

ORB_MEANING(orbsDecodeLZ77CopyState_8u, KeepsTheListAndTakesThePairs) {
  Inflater from(build), to(build, 5);
  OrbLZ77Pair* fromPairs = nullptr;
  OrbLZ77Pair* toPairs = nullptr;
  OrbLZ77Pair* after = nullptr;
  Orb32s count = 0, left = 0, phase = 0;
  ORB(orbsDecodeLZ77GetPairs_8u)(&fromPairs, &count, &left, from.record());
  ORB(orbsDecodeLZ77GetPairs_8u)(&toPairs, &count, &left, to.record());
  const OrbLZ77Pair pair = pairOf(258, 12345);
  std::memcpy(static_cast<void*>(fromPairs + 8191), &pair, sizeof pair);
  ORB(orbsDecodeLZ77SetPairs_8u)(fromPairs, 17, 99, from.record());
  ORB(orbsDecodeLZ77SetStatus_8u)(orbLZ77PhaseFinal, from.record());
  ASSERT_EQ(ORB(orbsDecodeLZ77CopyState_8u)(from.record(), to.record()), orbStsNoErr);
  ORB(orbsDecodeLZ77GetPairs_8u)(&after, &count, &left, to.record());
  EXPECT_EQ(after, toPairs);
  EXPECT_EQ(count, 17);
  EXPECT_EQ(left, 99);
  ORB(orbsDecodeLZ77GetStatus_8u)(&phase, to.record());
  EXPECT_EQ(phase, orbLZ77PhaseFinal);
  OrbLZ77Pair copied;
  std::memcpy(&copied, static_cast<void*>(toPairs + 8191), sizeof copied);
  EXPECT_TRUE(copied == pair);
  from.memory().expectMargins();
  to.memory().expectMargins();
}

ORB_MEANING(orbsDecodeLZ77CopyState_8u, OfItself) {
  Random random("copy of itself");
  Inflater inflater(build);
  disturb(inflater, random);
  const RecordMemory before = inflater.memory();
  ASSERT_EQ(ORB(orbsDecodeLZ77CopyState_8u)(inflater.record(), inflater.record()), orbStsNoErr);
  EXPECT_TRUE(inflater.memory() == before);
}

ORB_AGREEMENT(orbsDecodeLZ77CopyState_8u) {
  Inflater from(build), mine(build), theirs(build);
  disturb(from, random);
  ASSERT_EQ(ORB(orbsDecodeLZ77CopyState_8u)(from.record(), mine.record()), orbStsNoErr);
  ASSERT_EQ(PX(orbsDecodeLZ77CopyState_8u)(from.record(), theirs.record()), orbStsNoErr);
  theirs.record()->cursor = mine.record()->cursor;  // each has its own address
  EXPECT_TRUE(mine.memory() == theirs.memory());
}

// ---- What is the host's

ORB_MEANING(orbsDecodeLZ77SetStatus_8u, IsTheHostsAlone) {
  Inflater inflater(build);
  EXPECT_EQ(ORB(orbsDecodeLZ77SetStatus_8u)(1, nullptr), orbStsNullPtrErr);
  for (const Orb32s phase : {1, 2, 3, 0, -9, INT32_MAX}) {
    RecordMemory expected = inflater.memory();
    ASSERT_EQ(ORB(orbsDecodeLZ77SetStatus_8u)(phase, inflater.record()), orbStsNoErr);
    Plane<Orb32s> stored(1, 1, {0, 1});
    ASSERT_EQ(ORB(orbsDecodeLZ77GetStatus_8u)(stored.data(), inflater.record()), orbStsNoErr);
    EXPECT_EQ(stored.at(0), phase);
    stored.expectOutsideUntouched();
    expected.record()->cursor.phase = phase;
    EXPECT_TRUE(inflater.memory() == expected);
  }
}
ORB_AGREEMENT(orbsDecodeLZ77SetStatus_8u) {
  Inflater inflater(build);
  const Orb32s phase = random.any<Orb32s>();
  PX(orbsDecodeLZ77SetStatus_8u)(phase, inflater.record());
  const Orb32s expected = inflater.record()->cursor.phase;
  inflater.record()->cursor.phase = 0;
  ORB(orbsDecodeLZ77SetStatus_8u)(phase, inflater.record());
  EXPECT_EQ(Orb32s{inflater.record()->cursor.phase}, expected);
}
}  // namespace
