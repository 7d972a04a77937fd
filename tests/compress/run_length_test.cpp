// Run-length coding, and the pre-coding of bzip2.
#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/builds.h"
#include "tests/support/faults.h"
#include "tests/support/guarded.h"
#include "tests/support/plane.h"

namespace {

using orbtest::expectChecks;
using orbtest::GuardedBytes;
using orbtest::Plane;
using orbtest::Random;

using Bytes = std::vector<Orb8u>;
using Coder = OrbStatus ORB_CALL(Orb8u**, Orb32s*, Orb8u*, Orb32s*);

int sizeOf(const Bytes& bytes) {
  return static_cast<int>(bytes.size());
}
Bytes joined(std::initializer_list<Bytes> parts) {
  Bytes whole;
  for (const Bytes& part : parts) whole.insert(whole.end(), part.begin(), part.end());
  return whole;
}
Bytes run(int length, Orb8u byte) {
  return Bytes(static_cast<size_t>(length), byte);
}
// Runs of all lengths, most of them short.
Bytes randomRuns(Random& random, int runs) {
  Bytes bytes;
  const int alphabet = random.between(1, 4);
  for (; runs > 0; --runs) {
    const int length = random.oneIn(8) ? random.between(1, 600) : random.between(1, 6);
    const Bytes more = run(length, static_cast<Orb8u>(random.between(0, alphabet)));
    bytes.insert(bytes.end(), more.begin(), more.end());
  }
  return bytes;
}

// What a call did.
struct Coded {
  OrbStatus status;
  int read;
  Bytes output;

  bool operator==(const Coded& other) const {
    return status == other.status && read == other.read && output == other.output;
  }
};
std::ostream& operator<<(std::ostream& out, const Coded& coded) {
  out << "status " << coded.status << ", " << coded.read << " read, output";
  for (const Orb8u byte : coded.output) out << ' ' << static_cast<int>(byte);
  return out;
}

// The source and the room end where memory ends, and the cursors are at odd addresses.
Coded code(Coder* coder, const Bytes& bytes, int room) {
  GuardedBytes source(bytes), output(static_cast<size_t>(room));
  std::memset(output.data(), 0xA5, static_cast<size_t>(room));
  Plane<Orb8u*> src(1, 1, {0, 1});
  Plane<Orb32s> srcLen(1, 1, {0, 3}), dstLen(1, 1, {0, 5});
  src.set(0, 0, source.data());
  srcLen.set(0, 0, source.size());
  dstLen.set(0, 0, room);
  const OrbStatus status = coder(src.data(), srcLen.data(), output.data(), dstLen.data());
  src.expectOutsideUntouched();
  srcLen.expectOutsideUntouched();
  dstLen.expectOutsideUntouched();
  const int read = static_cast<int>(src.at(0) - source.data());
  const int written = dstLen.at(0);
  EXPECT_EQ(srcLen.at(0), source.size() - read);
  EXPECT_GE(written, 0);
  EXPECT_LE(written, room);
  for (int i = written; i < room; ++i) EXPECT_EQ(output.data()[i], 0xA5) << "byte " << i;
  return {status, read, Bytes(output.data(), output.data() + written)};
}

struct Call {
  Orb8u** ppSrc;
  Orb32s* pSrcLen;
  Orb8u* pDst;
  Orb32s* pDstLen;
};
void expectRunLengthChecks(Coder* coder, bool takesNothing) {
  Bytes source = {1, 2, 3};
  Plane<Orb8u> output(8, 1);
  Orb8u *src = source.data(), *null = nullptr;
  Orb32s srcLen = 3, dstLen = 8, zero = 0, negative = -1, least = INT32_MIN;
  std::vector<orbtest::Fault<Call>> faults = {
      {orbStsNullPtrErr, [](Call& c) { c.ppSrc = nullptr; }},
      {orbStsNullPtrErr, [](Call& c) { c.pDst = nullptr; }},
      {orbStsNullPtrErr, [](Call& c) { c.pSrcLen = nullptr; }},
      {orbStsNullPtrErr, [](Call& c) { c.pDstLen = nullptr; }},
      {orbStsNullPtrErr, [&](Call& c) { c.ppSrc = &null; }},
      {orbStsSizeErr, [&](Call& c) { c.pDstLen = &zero; }},
      {orbStsSizeErr, [&](Call& c) { c.pDstLen = &least; }},
      {orbStsSizeErr, [&](Call& c) { c.pSrcLen = &negative; }}};
  if (!takesNothing) faults.push_back({orbStsSizeErr, [&](Call& c) { c.pSrcLen = &zero; }});
  expectChecks<Call>(faults, {&src, &srcLen, output.data(), &dstLen},
                     [&](const Call& c) { return coder(c.ppSrc, c.pSrcLen, c.pDst, c.pDstLen); });
  EXPECT_EQ(src, source.data());
  EXPECT_EQ(null, nullptr);
  EXPECT_EQ(std::vector<Orb32s>({srcLen, dstLen, zero, negative, least}),
            std::vector<Orb32s>({3, 8, 0, -1, INT32_MIN}));
  output.expectUntouched();
}

void expectCodersAgree(Coder* px, Coder* build, Random& random) {
  for (int round = 0; round < 500; ++round) {
    Bytes source = randomRuns(random, random.between(1, 20));
    if (random.oneIn(3)) {
      for (Orb8u& byte : source) byte = random.any<Orb8u>();
    }
    const int room = random.between(1, sizeOf(source) * 2);
    ASSERT_EQ(code(build, source, room), code(px, source, room));
  }
}

// ---- orbsEncodeRLE_8u

// A run or a byte on its own, as it is coded.
struct Token {
  Bytes bytes;
  int length;
};
std::vector<Token> tokensOf(const Bytes& source) {
  std::vector<Token> tokens;
  auto first = source.begin();
  while (first != source.end()) {
    auto end = std::find_if(first, source.end(), [&](Orb8u byte) { return byte != *first; });
    if (end - first > 257) end = first + 257;
    const int length = static_cast<int>(end - first);
    Token token = {{*first}, length};
    if (length > 1) token.bytes = {*first, *first, static_cast<Orb8u>(length - 2)};
    tokens.push_back(token);
    first = end;
  }
  return tokens;
}
// Tokens as long as the largest of them would fit, then bytes as they are.
Coded encoded(const Bytes& source, int room) {
  Coded coded = {orbStsNoErr, 0, {}};
  for (const Token& token : tokensOf(source)) {
    if (sizeOf(coded.output) + 3 > room) break;
    coded.output.insert(coded.output.end(), token.bytes.begin(), token.bytes.end());
    coded.read += token.length;
  }
  while (coded.read < sizeOf(source) && sizeOf(coded.output) < room) {
    coded.output.push_back(source[static_cast<size_t>(coded.read++)]);
  }
  if (coded.read < sizeOf(source)) coded.status = orbStsDstFull;
  return coded;
}

ORB_MEANING(orbsEncodeRLE_8u, Checks) {
  expectRunLengthChecks(ORB(orbsEncodeRLE_8u), false);
}

ORB_MEANING(orbsEncodeRLE_8u, WorkedByHand) {
  struct Example {
    Bytes source;
    int room;
    Coded expected;
  };
  const Example examples[] = {
      {{7}, 1, {orbStsNoErr, 1, {7}}},
      {{7}, 9, {orbStsNoErr, 1, {7}}},
      {{7, 7}, 9, {orbStsNoErr, 2, {7, 7, 0}}},
      {{7, 7, 7}, 9, {orbStsNoErr, 3, {7, 7, 1}}},
      {{1, 2, 2, 2, 2, 3}, 9, {orbStsNoErr, 6, {1, 2, 2, 2, 3}}},
      {run(257, 5), 9, {orbStsNoErr, 257, {5, 5, 255}}},
      {run(258, 5), 9, {orbStsNoErr, 258, {5, 5, 255, 5}}},
      {run(300, 5), 9, {orbStsNoErr, 300, {5, 5, 255, 5, 5, 41}}},
      // With 2 bytes of room left, or less, bytes are copied as they are.
      {{7, 7, 7}, 2, {orbStsDstFull, 2, {7, 7}}},
      {{7, 7}, 2, {orbStsNoErr, 2, {7, 7}}},
      {{7, 7}, 1, {orbStsDstFull, 1, {7}}},
      {{7, 7}, 3, {orbStsNoErr, 2, {7, 7, 0}}},
      {{1, 7, 7, 7}, 3, {orbStsDstFull, 3, {1, 7, 7}}},
      {{1, 7, 7, 7}, 4, {orbStsNoErr, 4, {1, 7, 7, 1}}},
      {run(300, 5), 5, {orbStsDstFull, 259, {5, 5, 255, 5, 5}}},
      {run(300, 5), 4, {orbStsDstFull, 258, {5, 5, 255, 5}}},
  };
  for (const Example& example : examples) {
    EXPECT_EQ(code(ORB(orbsEncodeRLE_8u), example.source, example.room), example.expected);
  }
}

ORB_MEANING(orbsEncodeRLE_8u, AnyRunsAndAnyRoom) {
  Random random("runs to encode");
  for (int round = 0; round < 1000; ++round) {
    const Bytes source = randomRuns(random, random.between(1, 20));
    const int room = random.between(1, sizeOf(source) * 2);
    ASSERT_EQ(code(ORB(orbsEncodeRLE_8u), source, room), encoded(source, room));
  }
}

ORB_AGREEMENT(orbsEncodeRLE_8u) {
  expectCodersAgree(PX(orbsEncodeRLE_8u), ORB(orbsEncodeRLE_8u), random);
}

// ---- orbsDecodeRLE_8u

// Tokens as long as they are within all but the last two bytes of the source and there is room for
// them, then bytes as they are; but nothing more behind a run that has no room.
Coded decoded(const Bytes& source, int room) {
  Coded coded = {orbStsNoErr, 0, {}};
  const auto byte = [&](int i) { return source[static_cast<size_t>(i)]; };
  const int size = sizeOf(source);
  while (coded.read + 2 < size && sizeOf(coded.output) < room) {
    const bool isRun = byte(coded.read) == byte(coded.read + 1);
    const Bytes bytes = run(isRun ? 2 + byte(coded.read + 2) : 1, byte(coded.read));
    if (sizeOf(coded.output) + sizeOf(bytes) > room) {
      coded.status = orbStsDstFull;
      return coded;
    }
    coded.output.insert(coded.output.end(), bytes.begin(), bytes.end());
    coded.read += isRun ? 3 : 1;
  }
  while (coded.read < size && sizeOf(coded.output) < room) {
    coded.output.push_back(byte(coded.read++));
  }
  if (coded.read < size) coded.status = orbStsDstFull;
  return coded;
}

ORB_MEANING(orbsDecodeRLE_8u, Checks) {
  expectRunLengthChecks(ORB(orbsDecodeRLE_8u), false);
}

ORB_MEANING(orbsDecodeRLE_8u, WorkedByHand) {
  struct Example {
    Bytes source;
    int room;
    Coded expected;
  };
  const Example examples[] = {
      {{7}, 1, {orbStsNoErr, 1, {7}}},
      {{7, 7}, 9, {orbStsNoErr, 2, {7, 7}}},
      {{7, 7, 0}, 9, {orbStsNoErr, 3, {7, 7}}},
      {{7, 7, 2}, 9, {orbStsNoErr, 3, {7, 7, 7, 7}}},
      {{7, 7, 2}, 4, {orbStsNoErr, 3, {7, 7, 7, 7}}},
      {{1, 2, 2, 1, 3, 3}, 9, {orbStsNoErr, 6, {1, 2, 2, 2, 3, 3}}},
      // A run without room: the source stays at its start.
      {{7, 7, 2}, 3, {orbStsDstFull, 0, {}}},
      {{1, 7, 7, 2, 8}, 4, {orbStsDstFull, 1, {1}}},
      // Room that ends between bytes.
      {{1, 2, 3, 4}, 3, {orbStsDstFull, 3, {1, 2, 3}}},
      {{1, 2, 3, 4}, 1, {orbStsDstFull, 1, {1}}},
      {{7, 7, 2, 8}, 4, {orbStsDstFull, 3, {7, 7, 7, 7}}},
      {{5, 5, 255, 5, 5, 41}, 300, {orbStsNoErr, 6, run(300, 5)}},
  };
  for (const Example& example : examples) {
    EXPECT_EQ(code(ORB(orbsDecodeRLE_8u), example.source, example.room), example.expected);
  }
}

ORB_MEANING(orbsDecodeRLE_8u, AnySourceAndAnyRoom) {
  Random random("runs to decode");
  for (int round = 0; round < 1000; ++round) {
    const Bytes source = randomRuns(random, random.between(1, 10));
    const int room = random.between(1, random.oneIn(2) ? 20 : 2000);
    ASSERT_EQ(code(ORB(orbsDecodeRLE_8u), source, room), decoded(source, room));
  }
}

ORB_MEANING(orbsDecodeRLE_8u, TakesBackTheCoding) {
  Random random("runs both ways");
  for (int round = 0; round < 300; ++round) {
    const Bytes bytes = randomRuns(random, random.between(1, 50));
    const Coded coded = code(ORB(orbsEncodeRLE_8u), bytes, sizeOf(bytes) * 3 / 2 + 2);
    ASSERT_EQ(coded.read, sizeOf(bytes));
    ASSERT_EQ(code(ORB(orbsDecodeRLE_8u), coded.output, sizeOf(bytes)),
              (Coded{orbStsNoErr, sizeOf(coded.output), bytes}));
  }
}

ORB_AGREEMENT(orbsDecodeRLE_8u) {
  expectCodersAgree(PX(orbsDecodeRLE_8u), ORB(orbsDecodeRLE_8u), random);
}

// ---- orbsDecodeRLE_BZ2_8u

// bzip2's pre-coding: a run goes in pieces of up to 259, each of 4 or more as 4 and the rest's
// number.
Bytes precoded(const Bytes& bytes) {
  Bytes coded;
  for (size_t first = 0; first < bytes.size();) {
    size_t length = 1;
    while (length < 259 && first + length < bytes.size() && bytes[first + length] == bytes[first]) {
      ++length;
    }
    coded.insert(coded.end(), std::min(length, size_t{4}), bytes[first]);
    if (length >= 4) coded.push_back(static_cast<Orb8u>(length - 4));
    first += length;
  }
  return coded;
}

// Reads a source as a row of pieces: up to and with the fourth of equal bytes in a row, as far as
// there is room, and a count.
Coded undone(const Bytes& source, int room) {
  Coded coded = {orbStsNoErr, 0, {}};
  std::string equal;  // one mark for each of the equal bytes in a row
  while (coded.read < sizeOf(source)) {
    const Orb8u byte = source[static_cast<size_t>(coded.read++)];
    const bool isCount = equal == "****" || sizeOf(coded.output) == room;
    if (!isCount) {
      const bool goesOn = !equal.empty() && coded.output.back() == byte;
      equal = goesOn ? equal + "*" : "*";
      coded.output.push_back(byte);
      continue;
    }
    equal.clear();
    const Bytes copies = run(byte, coded.output.back());
    if (sizeOf(coded.output) + sizeOf(copies) > room) {
      coded.status = orbStsDstFull;
      return coded;
    }
    coded.output.insert(coded.output.end(), copies.begin(), copies.end());
  }
  if (sizeOf(coded.output) == room) coded.status = orbStsDstFull;
  return coded;
}

ORB_MEANING(orbsDecodeRLE_BZ2_8u, Checks) {
  expectRunLengthChecks(ORB(orbsDecodeRLE_BZ2_8u), true);
}

ORB_MEANING(orbsDecodeRLE_BZ2_8u, WorkedByHand) {
  struct Example {
    Bytes source;
    int room;
    Coded expected;
  };
  const Example examples[] = {
      {{}, 9, {orbStsNoErr, 0, {}}},
      {{7, 7, 7}, 9, {orbStsNoErr, 3, {7, 7, 7}}},
      {{7, 7, 7, 7, 0}, 9, {orbStsNoErr, 5, {7, 7, 7, 7}}},
      {{7, 7, 7, 7, 2}, 9, {orbStsNoErr, 5, run(6, 7)}},
      {{7, 7, 7, 7}, 9, {orbStsNoErr, 4, {7, 7, 7, 7}}},
      // Counting begins anew behind a count.
      {{7, 7, 7, 7, 1, 7, 7, 7, 8}, 20, {orbStsNoErr, 9, joined({run(8, 7), {8}})}},
      {{7, 7, 7, 7, 0, 7, 7, 7, 7, 3, 9}, 20, {orbStsNoErr, 11, joined({run(11, 7), {9}})}},
      {{7, 7, 7, 7, 255}, 300, {orbStsNoErr, 5, run(259, 7)}},
      // A full room is reported, even when nothing is left.
      {{7, 8}, 2, {orbStsDstFull, 2, {7, 8}}},
      {{7, 7, 7, 7, 2}, 6, {orbStsDstFull, 5, run(6, 7)}},
      {{7, 7, 7, 7}, 4, {orbStsDstFull, 4, run(4, 7)}},
      // A count without room for its copies stays read.
      {{7, 7, 7, 7, 2, 9}, 5, {orbStsDstFull, 5, run(4, 7)}},
      // So does the byte behind a room that ended early: it is read as a count.
      {{1, 2, 3, 4}, 2, {orbStsDstFull, 3, {1, 2}}},
      {{1, 2, 0, 0, 5, 6}, 2, {orbStsDstFull, 5, {1, 2}}},
      {{1, 2, 0, 0}, 2, {orbStsDstFull, 4, {1, 2}}},
  };
  for (const Example& example : examples) {
    EXPECT_EQ(code(ORB(orbsDecodeRLE_BZ2_8u), example.source, example.room), example.expected);
  }
}

ORB_MEANING(orbsDecodeRLE_BZ2_8u, TakesBackThePreCoding) {
  Random random("pre-coding");
  for (int round = 0; round < 300; ++round) {
    const Bytes bytes = randomRuns(random, random.between(1, 50));
    const Bytes coded = precoded(bytes);
    ASSERT_EQ(code(ORB(orbsDecodeRLE_BZ2_8u), coded, sizeOf(bytes) + 1),
              (Coded{orbStsNoErr, sizeOf(coded), bytes}));
  }
}

ORB_MEANING(orbsDecodeRLE_BZ2_8u, AnySourceAndAnyRoom) {
  Random random("pre-coded bytes");
  for (int round = 0; round < 1000; ++round) {
    const Bytes source = randomRuns(random, random.between(1, 10));
    const int room = random.between(1, random.oneIn(2) ? 20 : 2000);
    ASSERT_EQ(code(ORB(orbsDecodeRLE_BZ2_8u), source, room), undone(source, room));
  }
}

ORB_AGREEMENT(orbsDecodeRLE_BZ2_8u) {
  expectCodersAgree(PX(orbsDecodeRLE_BZ2_8u), ORB(orbsDecodeRLE_BZ2_8u), random);
}

}  // namespace
