// The decoder of the byte Huffman coder.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
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

// ---- orbsDecodeHuffInit_8u

ORB_MEANING(orbsDecodeHuffInit_8u, ChecksPointers) {
  expectInitChecks(ORB(orbsDecodeHuffInit_8u), Table(256, 8));
}
ORB_MEANING(orbsDecodeHuffInit_8u, RefusesLengths) {
  for (const Table& lengths :
       {Table(256), Table(256, 33), tableOf({{0, 1}, {255, 33}}), tableOf({{0, 1}, {1, -1}}),
        tableOf({{7, INT32_MIN}}), tableOf({{7, INT32_MAX}})}) {
    TableMemory table(lengths);
    Record record;
    EXPECT_EQ(ORB(orbsDecodeHuffInit_8u)(table.get(), record.get()), orbStsHuffLenErr);
    record.bytes().expectUntouched();
  }
}
// Codes that are not full, and more codes than there can be.
ORB_MEANING(orbsDecodeHuffInit_8u, TakesAnyLengthsFrom1To32) {
  Random random("any lengths");
  for (const Table& lengths : {tableOf({{3, 1}}), tableOf({{3, 32}}), Table(256, 1), Table(256, 32),
                               randomLengths(random)}) {
    TableMemory table(lengths);
    Record record;
    EXPECT_EQ(ORB(orbsDecodeHuffInit_8u)(table.get(), record.get()), orbStsNoErr);
    record.bytes().expectOutsideUntouched();
  }
}
ORB_AGREEMENT(orbsDecodeHuffInit_8u) {
  for (int round = 0; round < 200; ++round) {
    Table lengths =
        random.oneIn(2) ? randomLengths(random) : fullLengths(random, random.between(2, 256), 32);
    if (random.oneIn(8)) lengths[at(random.between(0, 255))] = random.extreme<Orb32s>();
    expectInitsAgree(PX(orbsDecodeHuffInit_8u), ORB(orbsDecodeHuffInit_8u), lengths);
  }
}

// ---- orbsDecodeHuffOne_8u

ORB_MEANING(orbsDecodeHuffOne_8u, Checks) {
  struct Call {
    const Orb8u* pSrc;
    Orb32s offset;
    Orb8u* pDst;
    const OrbHuffState* pState;
  };
  Record record, empty, encoder;
  makeRecord(build, lengthsFrom({1, 2, 2}), record);
  // As a host that takes cleared memory for an encoder's record.
  std::memset(empty.get(), 0, sizeof(OrbHuffState));
  std::memset(encoder.get(), 0, sizeof(OrbHuffState));
  TableMemory frequencies(lengthsFrom({1, 1, 1}));
  ASSERT_EQ(ORB(orbsEncodeHuffInit_8u)(frequencies.get(), encoder.get()), orbStsNoErr);
  const Bytes source = {0xFF, 0xFF};
  Plane<Orb8u> output(1, 1);
  const auto run = [&](const Call& c) {
    return ORB(orbsDecodeHuffOne_8u)(c.pSrc, c.offset, c.pDst, c.pState);
  };
  const Call good = {source.data(), 7, output.data(), record.get()};
  expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.pSrc = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pDst = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pState = nullptr; }},
                      {orbStsSizeErr, [](Call& c) { c.offset = 8; }},
                      {orbStsSizeErr, [](Call& c) { c.offset = INT32_MIN; }},
                      {orbStsSizeErr, [&](Call& c) { c.pState = empty.get(); }},
                      {orbStsNullPtrErr, [&](Call& c) { c.pState = encoder.get(); }}},
                     good, run);
  output.expectUntouched();
  EXPECT_EQ(run(good), orbStsNoErr);
}

ORB_MEANING(orbsDecodeHuffOne_8u, AnyCodeAtAnyOffset) {
  Random random("single codes to decode");
  for (const Table& lengths : {staircase(32), fullLengths(random, 256, 32), Table(256, 8),
                               lengthsFrom({1, 1}), fullLengths(random, 30, 9)}) {
    Record record;
    makeRecord(build, lengths, record);
    const Bytes before = record.bytes().samples();
    const int longest = *std::max_element(lengths.begin(), lengths.end());
    for (const auto& [byte, code] : codesOf(lengths)) {
      for (int offset = 0; offset < 8; ++offset) {
        // Anything around the code, as far as the longest would reach.
        const int reached = (offset + longest + 7) / 8;
        std::string bits = binary(random.any<Orb8u>(), offset) + code;
        while (static_cast<int>(bits.size()) < reached * 8) bits += random.oneIn(2) ? '0' : '1';
        const GuardedBytes source(packBits(bits));
        Plane<Orb8u> output(1, 1);
        ASSERT_EQ(ORB(orbsDecodeHuffOne_8u)(source.data(), offset, output.data(), record.get()),
                  orbStsNoErr);
        ASSERT_EQ(output.at(0), byte) << "code " << code << " at " << offset;
        output.expectOutsideUntouched();
      }
    }
    EXPECT_EQ(record.bytes().samples(), before);
  }
}

// Lengths of 2, 2 and 3 leave a half of all numbers: 000 is the code of 3 bits, and halved and
// rounded down, 00 and 01 are those of 2, the first of which hides it.
ORB_MEANING(orbsDecodeHuffOne_8u, BitsWithoutACode) {
  Record record;
  makeRecord(build, tableOf({{1, 3}, {2, 2}, {3, 2}}), record);
  const auto decode = [&](const std::string& bits) {
    const Bytes source = packBits(bits);
    Plane<Orb8u> output(1, 1);
    const OrbStatus status =
        ORB(orbsDecodeHuffOne_8u)(source.data(), 0, output.data(), record.get());
    if (status != orbStsNoErr) output.expectUntouched();
    return status == orbStsNoErr ? int{output.at(0)} : status;
  };
  EXPECT_EQ(decode("000"), 3);
  EXPECT_EQ(decode("001"), 3);
  EXPECT_EQ(decode("010"), 2);
  EXPECT_EQ(decode("011"), 2);
  EXPECT_EQ(decode("100"), orbStsHuffLenErr);
  EXPECT_EQ(decode("111"), orbStsHuffLenErr);
}
ORB_AGREEMENT(orbsDecodeHuffOne_8u) {
  for (int round = 0; round < 100; ++round) {
    Record record;
    makeRecord(build,
               random.oneIn(2) ? fullLengths(random, random.between(2, 256), 32)
                               : tableOf({{1, 1}, {5, random.between(1, 32)}}),
               record);
    for (int i = 0; i < 50; ++i) {
      Bytes source(5);
      for (Orb8u& byte : source) byte = random.oneIn(3) ? 0 : random.any<Orb8u>();
      const int offset = random.between(-1, 8);
      Plane<Orb8u> expected(1, 1), actual(1, 1);
      ASSERT_EQ(ORB(orbsDecodeHuffOne_8u)(source.data(), offset, actual.data(), record.get()),
                PX(orbsDecodeHuffOne_8u)(source.data(), offset, expected.data(), record.get()));
      ASSERT_TRUE(actual.sameBytes(expected));
    }
  }
}

// ---- orbsDecodeHuff_8u

ORB_MEANING(orbsDecodeHuff_8u, Checks) {
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
  Orb32s dstLen = 8, zero = 0, negative = INT32_MIN;
  const auto run = [&](const Call& c) {
    return ORB(orbsDecodeHuff_8u)(c.pSrc, c.srcLen, c.pDst, c.pDstLen, c.pState);
  };
  const Call good = {source.data(), 8, output.data(), &dstLen, record.get()};
  expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.pSrc = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pDst = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pDstLen = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pState = nullptr; }},
                      {orbStsSizeErr, [](Call& c) { c.srcLen = 0; }},
                      {orbStsSizeErr, [](Call& c) { c.srcLen = INT32_MIN; }},
                      {orbStsSizeErr, [&](Call& c) { c.pDstLen = &zero; }},
                      {orbStsSizeErr, [&](Call& c) { c.pDstLen = &negative; }}},
                     good, run);
  output.expectUntouched();
  EXPECT_EQ(record.bytes().samples(), before);
  EXPECT_EQ(run(good), orbStsNoErr);
  EXPECT_EQ(dstLen, 8);
}

// The decoder's steps, with the bits that it holds in a string: bytes are read while fewer than 17
// bits are held, but bytes of zeros at their front count as not held.
class SlowDecoder {
 public:
  explicit SlowDecoder(const Table& lengths) {
    for (const auto& [byte, code] : codesOf(lengths)) {
      bytes_[code] = byte;
      longest_ = std::max(longest_, code.size());
    }
  }

  Bytes decode(const Bytes& source, int room) {
    size_t next = 0;
    Bytes output;
    while (sizeOf(output) < room) {
      dropZeros();
      for (; next < source.size() && bits_.size() < 17; ++next) {
        bits_ += binary(source[next], 8);
        dropZeros();
      }
      if (zeros_ >= longest_) {
        zeros_ -= longest_;
        output.push_back(static_cast<Orb8u>(bytes_.at(std::string(longest_, '0'))));
        continue;
      }
      const std::string held = std::string(zeros_, '0') + bits_;
      size_t length = 1;
      while (length <= held.size() && bytes_.count(held.substr(0, length)) == 0) ++length;
      if (length > held.size()) break;
      output.push_back(static_cast<Orb8u>(bytes_.at(held.substr(0, length))));
      bits_ = held.substr(length);
      zeros_ = 0;
    }
    return output;
  }

 private:
  void dropZeros() {
    while (bits_.size() >= 8 && bits_.compare(0, 8, "00000000") == 0) {
      bits_.erase(0, 8);
      zeros_ += 8;
    }
  }

  std::map<std::string, int> bytes_;
  size_t longest_ = 0;
  std::string bits_;
  size_t zeros_ = 0;
};

template <class Function>
Bytes decodeOnce(Function* function, const Bytes& bytes, int room, Record& record) {
  const GuardedBytes source(bytes);
  GuardedBytes output(at(room));
  std::memset(output.data(), 0xA5, at(room));
  Plane<Orb32s> dstLen(1, 1, {0, 1});
  dstLen.set(0, 0, room);
  EXPECT_EQ(function(source.data(), source.size(), output.data(), dstLen.data(), record.get()),
            orbStsNoErr);
  record.bytes().expectOutsideUntouched();
  const int length = dstLen.at(0);
  EXPECT_GE(length, 0);
  EXPECT_LE(length, room);
  for (int i = length; i < room; ++i) EXPECT_EQ(output.data()[i], 0xA5) << "byte " << i;
  return Bytes(output.data(), output.data() + length);
}

// Lengths whose streams have few, many or only zeros in them.
Table randomCode(Random& random) {
  switch (random.between(0, 5)) {
    case 0:
      return staircase(random.between(1, 32));
    case 1:
      return Table(256, 8);
    case 2:
      return fullLengths(random, random.between(2, 6), 32);
    default:
      return fullLengths(random, random.between(2, 256), random.between(8, 32));
  }
}

// Streams in pieces, with room for all that comes.
ORB_MEANING(orbsDecodeHuff_8u, TakesBackTheCoding) {
  Random random("streams to read");
  for (int round = 0; round < 100; ++round) {
    const Table lengths = randomCode(random);
    const Codes codes = codesOf(lengths);
    const Bytes text = randomText(random, codes, random.between(1, round % 4 == 0 ? 3000 : 200));
    const Bytes stream = packBits(bitsOf(codes, text));
    Record record;
    makeRecord(build, lengths, record);
    Bytes decoded;
    for (size_t first = 0; first < stream.size() && decoded.size() < text.size();) {
      const size_t length =
          random.oneIn(3) ? size_t{1} : random.between(size_t{1}, stream.size() - first);
      const Bytes piece(stream.begin() + static_cast<ptrdiff_t>(first),
                        stream.begin() + static_cast<ptrdiff_t>(first + length));
      const Bytes more = decodeOnce(ORB(orbsDecodeHuff_8u), piece,
                                    static_cast<int>(text.size() - decoded.size()), record);
      decoded.insert(decoded.end(), more.begin(), more.end());
      first += length;
    }
    ASSERT_EQ(decoded, text) << "round " << round;
  }
}

// Rooms that are full while source is left: what was read of it shows in the bytes that come next.
ORB_MEANING(orbsDecodeHuff_8u, AnySourceAndAnyRoom) {
  Random random("sources and rooms");
  for (int round = 0; round < 150; ++round) {
    const Table lengths = randomCode(random);
    Record record(round % 8);
    makeRecord(build, lengths, record);
    SlowDecoder slow(lengths);
    for (int call = 0; call < 8; ++call) {
      Bytes source(at(random.between(1, random.oneIn(4) ? 900 : 30)));
      const int zeros = random.between(0, 3);
      for (Orb8u& byte : source) {
        byte = random.between(0, 3) < zeros ? 0 : random.any<Orb8u>();
        if (random.oneIn(6)) byte = static_cast<Orb8u>(1 << random.between(0, 7));
      }
      const int room = random.between(1, random.oneIn(4) ? 4000 : 60);
      ASSERT_EQ(decodeOnce(ORB(orbsDecodeHuff_8u), source, room, record), slow.decode(source, room))
          << "round " << round << ", call " << call;
    }
  }
}

ORB_MEANING(orbsDecodeHuff_8u, LongRunsOfTheCodeOfZeros) {
  Record record;
  makeRecord(build, staircase(32), record);
  // The highest of the two bytes with 32 bits.
  EXPECT_EQ(decodeOnce(ORB(orbsDecodeHuff_8u), Bytes(4000), 5000, record), Bytes(1000, 32));
  EXPECT_EQ(decodeOnce(ORB(orbsDecodeHuff_8u), Bytes(4002), 400, record), Bytes(400, 32));
  // Of the zeros that are left 16 belong to the next code.
  EXPECT_EQ(decodeOnce(ORB(orbsDecodeHuff_8u), {0, 1}, 5000, record), [] {
    Bytes rest(600, 32);
    rest.push_back(31);
    return rest;
  }());
}

ORB_MEANING(orbsDecodeHuff_8u, ASourceThatEndsWithinACode) {
  Record record;
  makeRecord(build, tableOf({{10, 3}, {20, 3}, {30, 2}, {40, 1}}), record);
  // 1 01 1 000 | 0 01 ...
  EXPECT_EQ(decodeOnce(ORB(orbsDecodeHuff_8u), packBits("10110000"), 9, record),
            Bytes({40, 30, 40, 20}));
  EXPECT_EQ(decodeOnce(ORB(orbsDecodeHuff_8u), packBits("01111111"), 9, record),
            Bytes({10, 40, 40, 40, 40, 40, 40}));
}

// Bits that are no byte's code end it, and stay.
ORB_MEANING(orbsDecodeHuff_8u, BitsWithoutACode) {
  Record record;
  makeRecord(build, tableOf({{9, 1}}), record);
  EXPECT_EQ(decodeOnce(ORB(orbsDecodeHuff_8u), packBits("00010000"), 99, record), Bytes(3, 9));
  EXPECT_EQ(decodeOnce(ORB(orbsDecodeHuff_8u), {0, 0, 0}, 99, record), Bytes());
  makeRecord(build, tableOf({{9, 1}}), record);
  Bytes source(300);
  source[200] = 1;
  EXPECT_EQ(decodeOnce(ORB(orbsDecodeHuff_8u), source, 9999, record), Bytes(201 * 8 - 1, 9));
}

// Records that no Init made, or that were damaged: nothing but the output is written, and nothing
// beside the source read.
ORB_MEANING(orbsDecodeHuff_8u, DamagedRecords) {
  Random random("damaged records");
  for (int round = 0; round < 600; ++round) {
    Record record;
    makeRecord(build, randomCode(random), record);
    Orb8u* const bytes = reinterpret_cast<Orb8u*>(record.get());
    for (size_t i = 0; i < sizeof(OrbHuffState); ++i) {
      const bool isTail = i >= offsetof(OrbHuffState, symbols);
      if (round % 3 == 0 || (isTail && random.oneIn(round % 3 == 1 ? 4 : 40))) {
        bytes[i] = random.any<Orb8u>();
      }
    }
    // As often as not within what a record may hold.
    if (random.oneIn(2)) record.get()->maxLen = random.between(-1, 33);
    Bytes source(at(random.between(1, 400)));
    for (Orb8u& byte : source) byte = random.any<Orb8u>();
    decodeOnce(ORB(orbsDecodeHuff_8u), source, random.between(1, 2000), record);
    Orb8u output[8];
    ORB(orbsDecodeHuffOne_8u)(source.data(), 0, output, source.size() < 5 ? nullptr : record.get());
    ORB(orbsEncodeHuffOne_8u)(1, output, 7, record.get());
    Orb32s written;
    ORB(orbsEncodeHuffFinal_8u)(output, &written, record.get());
  }
}

ORB_AGREEMENT(orbsDecodeHuff_8u) {
  for (int round = 0; round < 100; ++round) {
    const Table lengths = random.oneIn(4) ? randomLengths(random) : randomCode(random);
    Table used = lengths;
    if (*std::max_element(used.begin(), used.end()) == 0) used[0] = 1;
    Record expected(1), actual(6);
    makeRecord(build, used, expected);
    makeRecord(build, used, actual);
    for (int call = 0; call < 4; ++call) {
      Bytes source(at(random.between(1, 700)));
      for (Orb8u& byte : source) byte = random.oneIn(3) ? 0 : random.any<Orb8u>();
      const int room = random.between(1, 3000);
      ASSERT_EQ(decodeOnce(ORB(orbsDecodeHuff_8u), source, room, actual),
                decodeOnce(PX(orbsDecodeHuff_8u), source, room, expected));
      ASSERT_TRUE(actual.bytes().sameBytes(expected.bytes()));
    }
  }
}

}  // namespace
