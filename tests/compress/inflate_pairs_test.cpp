// Pairs to bytes, the second step of decoding deflate.
#include <cstring>

#include "tests/compress/inflate_calls.h"
#include "tests/support/guarded.h"

namespace {

using namespace orbtest;

// A decoder's second step, with all of the text that came before.
class ExpandModel {
 public:
  explicit ExpandModel(Bytes before) : text_(std::move(before)) {}

  InflateStep expand(const Pairs& pairs, size_t room) {
    InflateStep step;
    if (pairs.empty()) return step;
    step.status = orbStsDstFull;
    if (room == 0) return step;
    const size_t start = text_.size();
    const auto isFull = [&] { return text_.size() - start == room; };
    const auto copy = [&] {
      for (; length_ > 0 && !isFull(); --length_) appendMatch(text_, 1, distance_);
    };
    copy();
    for (; !isFull() && step.used < static_cast<int>(pairs.size()); ++step.used) {
      const OrbLZ77Pair& pair = pairs[static_cast<size_t>(step.used)];
      if (pair.offset == 0) {
        text_.push_back(static_cast<Orb8u>(pair.lengthOrLiteral));
      } else {
        length_ = pair.lengthOrLiteral;
        distance_ = pair.offset;
        copy();
      }
    }
    step.bytes.assign(text_.begin() + static_cast<ptrdiff_t>(start), text_.end());
    if (step.used == static_cast<int>(pairs.size()) && length_ == 0) step.status = orbStsNoErr;
    return step;
  }

 private:
  Bytes text_;
  int length_ = 0, distance_ = 0;  // what is left of a match
};

ORB_MEANING(orbsDecodeLZ77_8u, Checks) {
  Inflater inflater(build);
  OrbLZ77Pair pair = pairOf('a', 0);
  Orb8u byte = 0;
  OrbLZ77Pair* pairs = &pair;
  Orb8u* dst = &byte;
  Orb32s one = 1, none = 0, negative = -1;
  OrbLZ77DecState* const state = inflater.record();
  const auto expand = ORB(orbsDecodeLZ77_8u);
  // Null pointers before lengths.
  EXPECT_EQ(expand(nullptr, &negative, &dst, &negative, 0, state), orbStsNullPtrErr);
  EXPECT_EQ(expand(&pairs, nullptr, &dst, &negative, 0, state), orbStsNullPtrErr);
  EXPECT_EQ(expand(&pairs, &negative, nullptr, &negative, 0, state), orbStsNullPtrErr);
  EXPECT_EQ(expand(&pairs, &negative, &dst, nullptr, 0, state), orbStsNullPtrErr);
  EXPECT_EQ(expand(&pairs, &negative, &dst, &negative, 0, nullptr), orbStsNullPtrErr);
  // Negative lengths before lengths of 0.
  EXPECT_EQ(expand(&pairs, &none, &dst, &negative, 0, state), orbStsSizeErr);
  EXPECT_EQ(expand(&pairs, &negative, &dst, &none, 0, state), orbStsSizeErr);
  // No pairs before no room. Then nobody looks where they are.
  OrbLZ77Pair* noPairs = nullptr;
  Orb8u* noDst = nullptr;
  EXPECT_EQ(expand(&noPairs, &none, &noDst, &none, 0, state), orbStsNoErr);
  EXPECT_EQ(expand(&noPairs, &none, &noDst, &one, 0, state), orbStsNoErr);
  EXPECT_EQ(expand(&noPairs, &one, &noDst, &none, 0, state), orbStsDstFull);
  EXPECT_EQ(pairs, &pair);
  EXPECT_EQ(dst, &byte);
  EXPECT_EQ(one, 1);
  EXPECT_EQ(negative, -1);
  EXPECT_EQ(byte, 0);
}

// The first word of a pair may be anything, and so may the flush.
ORB_MEANING(orbsDecodeLZ77_8u, WordsOfPairs) {
  Inflater inflater(build);
  for (Orb32s flush = -1; flush < 5; ++flush) {
    ORB(orbsDecodeLZ77Reset_8u)(inflater.record());
    const InflateStep step = inflater.expand(
        {pairOf(0x4161, 0), pairOf(255, 0), pairOf(0, 7), pairOf(1, 2), pairOf(2, 1)}, 9, flush);
    expectStep(step, {orbStsNoErr, 5, {0x61, 255, 0x61, 0x61, 0x61}, {}});
  }
  const InflateStep longest = inflater.expand({pairOf('z', 0), pairOf(65535, 1)}, 70000);
  EXPECT_EQ(longest.status, orbStsNoErr);
  EXPECT_EQ(longest.bytes, Bytes(65536, 'z'));
}

// Every distance up to where copies in wide steps are sure to be plain, every length up to some of
// those steps, at every place of the room's end.
ORB_MEANING(orbsDecodeLZ77_8u, ShortDistances) {
  Bytes text(40);
  for (size_t i = 0; i < text.size(); ++i) text[i] = static_cast<Orb8u>(i * 37);
  Pairs literals;
  for (const Orb8u byte : text) literals.push_back(pairOf(byte, 0));
  for (int distance = 1; distance <= 40; ++distance) {
    for (int length = 1; length <= 70; ++length) {
      Bytes expected = text;
      appendMatch(expected, length, distance);
      Pairs pairs = literals;
      pairs.push_back(pairOf(length, distance));
      const size_t spare = static_cast<size_t>(distance * 7 + length) % 50;
      Inflater inflater(build);
      const InflateStep step = inflater.expand(pairs, expected.size() + spare);
      ASSERT_EQ(step.bytes, expected) << length << " bytes from " << distance << " back";
      ASSERT_EQ(step.status, orbStsNoErr);
    }
  }
}

ORB_MEANING(orbsDecodeLZ77_8u, RoomsOfAnySize) {
  Random random("rooms");
  for (const size_t room : {1u, 2u, 3u, 7u, 30u, 64u, 300u, 5000u}) {
    SCOPED_TRACE(room);
    const Bytes dictionary = randomBytes(random, 32768);
    Inflater inflater(build);
    inflater.setDictionary(dictionary);
    ExpandModel model(dictionary);
    Pairs pairs = randomPairs(random, 120, 32768);
    // A list of its own for each call, so that cut matches meet new lists too.
    while (!pairs.empty()) {
      const size_t count = random.between<size_t>(0, std::min<size_t>(pairs.size(), 40));
      const size_t now = random.oneIn(3) ? random.between<size_t>(0, room) : room;
      const Pairs list(pairs.begin(), pairs.begin() + static_cast<ptrdiff_t>(count));
      const InflateStep expected = model.expand(list, now);
      expectStep(inflater.expand(list, now), expected);
      ASSERT_FALSE(testing::Test::HasFailure());
      pairs.erase(pairs.begin(), pairs.begin() + expected.used);
    }
  }
}

// The rest of a match waits for pairs, and goes in front of whatever they are.
ORB_MEANING(orbsDecodeLZ77_8u, CutMatches) {
  Inflater inflater(build);
  expectStep(inflater.expand({pairOf('a', 0), pairOf('b', 0), pairOf(9, 2)}, 5),
             {orbStsDstFull, 3, {'a', 'b', 'a', 'b', 'a'}, {}});
  expectStep(inflater.expand({}, 5), {orbStsNoErr, 0, {}, {}});
  expectStep(inflater.expand({}, 0), {orbStsNoErr, 0, {}, {}});
  expectStep(inflater.expand({pairOf('x', 0)}, 0), {orbStsDstFull, 0, {}, {}});
  expectStep(inflater.expand({pairOf('x', 0)}, 1), {orbStsDstFull, 0, {'b'}, {}});
  expectStep(inflater.expand({pairOf('x', 0)}, 3), {orbStsDstFull, 0, {'a', 'b', 'a'}, {}});
  // The last two of the nine; the room ends with the match, and then with a pair left.
  expectStep(inflater.expand({pairOf('x', 0)}, 2), {orbStsDstFull, 0, {'b', 'a'}, {}});
  expectStep(inflater.expand({pairOf('x', 0)}, 1), {orbStsNoErr, 1, {'x'}, {}});
}

// All that was written stays within reach, at every size of call, around the end of the window.
ORB_MEANING(orbsDecodeLZ77_8u, WhatCameBefore) {
  Random random("window");
  for (const size_t size : {1u, 1000u, 16384u, 32767u, 32768u, 32769u, 50000u}) {
    SCOPED_TRACE(size);
    Inflater inflater(build);
    Bytes text;
    for (size_t call = 0; call < 80000 / std::max<size_t>(size, 9000) + 1; ++call) {
      Pairs pairs;
      for (const Orb8u byte : randomBytes(random, size)) pairs.push_back(pairOf(byte, 0));
      for (const OrbLZ77Pair& pair : pairs)
        text.push_back(static_cast<Orb8u>(pair.lengthOrLiteral));
      ASSERT_EQ(inflater.expand(pairs, size).status, orbStsNoErr);
      const int reach = static_cast<int>(std::min<size_t>(text.size(), 32768));
      for (const int distance : {reach, random.between(1, reach)}) {
        const size_t before = text.size();
        appendMatch(text, 258, distance);
        const InflateStep step = inflater.expand({pairOf(258, distance)}, 258);
        ASSERT_EQ(step.bytes, Bytes(text.begin() + static_cast<ptrdiff_t>(before), text.end()));
      }
    }
  }
}

// In front of the window stands the record, and nothing outside of it is read.
ORB_MEANING(orbsDecodeLZ77_8u, BeyondWhatCameBefore) {
  for (const Guard guard : {Guard::kBefore, Guard::kBehind}) {
    GuardedBytes memory(sizeof(OrbLZ77DecState), guard);
    OrbLZ77DecState* const state = reinterpret_cast<OrbLZ77DecState*>(memory.data());
    for (const Orb32s fill : {0, 1, 300, 32767, 32768}) {
      for (const int distance : {1, 2, 299, 301, 32768, 32769, 65535}) {
        for (const int length : {1, 258, 40000, 65535}) {
          ORB(orbsDecodeLZ77Init_8u)(0, state);
          if (fill > 0) {
            const Bytes before(static_cast<size_t>(fill), 'e');
            OrbLZ77Pair all[2] = {pairOf('e', 0), pairOf(fill - 1, 1)};
            OrbLZ77Pair* pairs = all;
            Orb32s count = fill > 1 ? 2 : 1;
            Bytes out(static_cast<size_t>(fill));
            Orb8u* dst = out.data();
            Orb32s room = fill;
            ASSERT_EQ(ORB(orbsDecodeLZ77_8u)(&pairs, &count, &dst, &room, 0, state), orbStsNoErr);
            ASSERT_EQ(out, before);
          }
          OrbLZ77Pair pair = pairOf(length, distance);
          OrbLZ77Pair* pairs = &pair;
          Orb32s count = 1;
          Bytes out(static_cast<size_t>(length));
          Orb8u* dst = out.data();
          Orb32s room = length;
          ASSERT_EQ(ORB(orbsDecodeLZ77_8u)(&pairs, &count, &dst, &room, 0, state), orbStsNoErr);
          ASSERT_EQ(room, 0);
          // As far as it is known.
          if (distance <= fill) {
            ASSERT_EQ(out, Bytes(static_cast<size_t>(length), 'e'));
          }
        }
      }
    }
  }
}

// A coder has met the end of the stream: told when the pairs are used up, and not before.
ORB_MEANING(orbsDecodeLZ77_8u, EndOfTheStream) {
  Inflater inflater(build);
  const Pairs pairs = {pairOf('a', 0), pairOf(5, 1), pairOf('b', 0)};
  ASSERT_EQ(inflater.toPairs(orbLZ77BlockFixed, bytesOf(fixedBlock(true, pairs)), 9).status,
            orbStsStreamEnd);
  expectStep(inflater.expand({}, 9), {orbStsNoErr, 0, {}, {}});
  expectStep(inflater.expand(pairs, 4), {orbStsDstFull, 2, {'a', 'a', 'a', 'a'}, {}});
  expectStep(inflater.expand({pairOf('b', 0)}, 2), {orbStsDstFull, 0, {'a', 'a'}, {}});
  expectStep(inflater.expand({pairOf('b', 0)}, 1), {orbStsStreamEnd, 1, {'b'}, {}});
  // That 'b' came too late to be kept: a match still finds what stood in front of it.
  expectStep(inflater.expand({pairOf(3, 1)}, 9), {orbStsStreamEnd, 1, {'a', 'a', 'a'}, {}});
}
// The final block being a stored one, there is nothing to tell.
ORB_MEANING(orbsDecodeLZ77_8u, EndOfTheStreamInAStoredBlock) {
  Inflater inflater(build);
  std::string bits;
  appendStored(bits, true, {'x'});
  const InflateStep step = inflater.storedToPairs(bytesOf(bits), 9);
  ASSERT_EQ(step.status, orbStsStreamEnd);
  expectStep(inflater.expand(step.pairs, 9), {orbStsNoErr, 1, {'x'}, {}});
}

ORB_AGREEMENT(orbsDecodeLZ77_8u) {
  for (int round = 0; round < 20; ++round) {
    // The history is what the record happens to hold.
    Inflater mine(build, round % 8), theirs(orbtest::runnableBuilds()[0], round % 8);
    for (int call = 0; call < 12; ++call) {
      Pairs pairs;
      for (size_t n = random.between<size_t>(0, 30); n > 0; --n) {
        pairs.push_back(random.oneIn(2)    ? pairOf(random.any<Orb8u>(), 0)
                        : random.oneIn(20) ? pairOf(random.any<Orb16u>(), random.any<Orb16u>())
                                           : pairOf(random.between(0, 300), random.between(1, 40)));
      }
      const size_t room = random.between<size_t>(0, random.oneIn(2) ? 20 : 3000);
      expectStep(mine.expand(pairs, room), theirs.expand(pairs, room));
      theirs.record()->cursor = mine.record()->cursor;  // each has its own address
      ASSERT_TRUE(mine.memory() == theirs.memory());
    }
  }
}

}  // namespace
