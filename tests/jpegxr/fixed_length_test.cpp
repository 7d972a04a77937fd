// Fixed-length coding of low bits (flexbits of ITU-T T.832).
#include <string>
#include <vector>

#include "tests/jpegxr/coding_host.h"
#include "tests/support/faults.h"

namespace {

using orbtest::binary;
using orbtest::expectChecks;
using orbtest::Fault;
using orbtest::makeRow;
using orbtest::Placement;
using orbtest::Plane;
using orbtest::Random;
using orbtest::TestBuild;
using namespace orbtest::jxr;

constexpr int kMostFlexBytes = 32;

// Column and row of the 15 coefficients: those of the standard's order of frequencies, 1 to 15.
const std::vector<std::pair<int, int>>& flexPlaces() {
  static const std::vector<std::pair<int, int>> list = {{2, 0}, {1, 0}, {3, 1}, {0, 2}, {3, 3},
                                                        {0, 3}, {3, 2}, {0, 1}, {3, 0}, {1, 1},
                                                        {2, 1}, {1, 3}, {2, 3}, {1, 2}, {2, 2}};
  return list;
}
size_t naturalIndexAt(std::pair<int, int> place) {
  const auto& all = places();
  return static_cast<size_t>(std::find(all.begin(), all.end(), place) - all.begin());
}

// ---- Writing

template <class T>
struct FlexCall {
  std::vector<int64_t> values = std::vector<int64_t>(16);
  Plane<T> block{4, 4};
  Plane<Orb32s> residual = makeRow<Orb32s>(16, {0, 1});
  int bits = 0, trimBits = 0, useResidual = 0;

  template <class Function>
  OrbStatus run(Function* function, Writer& writer) {
    return function(block.data(), block.step(), residual.data(), &writer.at, &writer.bits,
                    &writer.count, static_cast<Orb32u>(bits), static_cast<Orb32u>(trimBits),
                    useResidual);
  }
};

template <class T>
FlexCall<T> anyFlexCall(Random& random) {
  FlexCall<T> call;
  call.values = randomCoefficients(random, 8 * sizeof(T) - 1);
  call.block = blockOf<T>(call.values, Placement::any(random));
  call.bits = random.between(0, 15);
  call.trimBits = random.between(0, 15);
  call.useResidual = random.between(-1, 1);
  const int shift = random.between(0, 31);
  call.residual.fill([&] { return random.any<Orb32s>() >> shift; });
  return call;
}

template <class T>
std::string modelFlex(const FlexCall<T>& call) {
  std::string text;
  for (const auto& place : flexPlaces()) {
    const size_t index = naturalIndexAt(place);
    if (call.useResidual != 0) {
      const Orb32s word = call.residual.at(static_cast<int>(index));
      text += binary(word >> 1, call.bits + (word & 1));
    } else {
      const int64_t value = std::abs(call.values[index]) >> call.trimBits;
      text += binary(value, call.bits);
      if (value != 0) text += call.values[index] < 0 ? '1' : '0';
    }
  }
  return text;
}

template <class T, class Function>
void expectModelWrites(const char* name, Function* function) {
  Random random(name);
  std::string expected;
  Writer writer(400 * kMostFlexBytes);
  for (int i = 0; i < 400; ++i) {
    FlexCall<T> call = anyFlexCall<T>(random);
    ASSERT_EQ(call.run(function, writer), orbStsNoErr);
    expected += modelFlex(call);
    ASSERT_EQ(static_cast<size_t>(8 * (writer.at - writer.memory.data()) + writer.count),
              expected.size());
    ASSERT_LE(writer.count, 16u);
    call.block.expectUntouched();
    call.residual.expectUntouched();
  }
  ASSERT_EQ(writer.text(), expected);
}

// No call writes more than 32 bytes, and 32 bits may wait.
template <class T, class Function>
void expectMostBytes(Function* function) {
  Writer writer(kMostFlexBytes);
  writer.count = 32;
  FlexCall<T> call;
  call.values.assign(16, -1);
  call.block = blockOf<T>(call.values, {});
  call.bits = 15;
  ASSERT_EQ(call.run(function, writer), orbStsNoErr);
  EXPECT_EQ(writer.text(), std::string(32, '0') + modelFlex(call));
}

template <class T, class Function>
void expectEncodeChecks(Function* function) {
  struct Call {
    const T* pSrc;
    const Orb32s* pResidual;
    Orb8u** ppBitStream;
    Orb32u* pBitBuf;
    Orb32u* pBitCount;
    Orb32u bits, trimBits;
  };
  FlexCall<T> good;
  Writer writer(kMostFlexBytes);
  Orb8u* none = nullptr;
  Orb32u tooMany = 33;
  for (const int useResidual : {0, 1}) {
    expectChecks<Call>(
        {{orbStsNullPtrErr, [](Call& c) { c.pSrc = nullptr; }},
         {orbStsNullPtrErr, [](Call& c) { c.pResidual = nullptr; }},
         {orbStsNullPtrErr, [](Call& c) { c.ppBitStream = nullptr; }},
         {orbStsNullPtrErr, [&](Call& c) { c.ppBitStream = &none; }},
         {orbStsNullPtrErr, [](Call& c) { c.pBitBuf = nullptr; }},
         {orbStsNullPtrErr, [](Call& c) { c.pBitCount = nullptr; }},
         {orbStsOutOfRangeErr, [&](Call& c) { c.pBitCount = &tooMany; }},
         {orbStsOutOfRangeErr, [](Call& c) { c.bits = 16; }},
         {orbStsOutOfRangeErr, [](Call& c) { c.trimBits = 16; }}},
        {good.block.data(), good.residual.data(), &writer.at, &writer.bits, &writer.count, 15, 15},
        [&](const Call& c) {
          return function(c.pSrc, good.block.step(), c.pResidual, c.ppBitStream, c.pBitBuf,
                          c.pBitCount, c.bits, c.trimBits, useResidual);
        });
  }
  EXPECT_EQ(writer.text(), "");
}

template <class T, class Function>
void expectEncodersAgree(Random& random, Function* mine, Function* px) {
  Writer mineWriter(300 * kMostFlexBytes), pxWriter(300 * kMostFlexBytes);
  for (int i = 0; i < 300; ++i) {
    FlexCall<T> call = anyFlexCall<T>(random);
    call.block.fill([&] { return random.extreme<T>(); });
    call.run(mine, mineWriter);
    call.run(px, pxWriter);
  }
  ASSERT_EQ(mineWriter.text(), pxWriter.text());
}

#define FLEX_ENCODE_TESTS(name, T)                       \
  ORB_MEANING(name, WritesLikeTheModel) {                \
    expectModelWrites<T>(#name, ORB(name));              \
  }                                                      \
  ORB_MEANING(name, MostBytes) {                         \
    expectMostBytes<T>(ORB(name));                       \
  }                                                      \
  ORB_MEANING(name, ChecksInOrder) {                     \
    expectEncodeChecks<T>(ORB(name));                    \
  }                                                      \
  ORB_AGREEMENT(name) {                                  \
    expectEncodersAgree<T>(random, ORB(name), PX(name)); \
  }

FLEX_ENCODE_TESTS(orbiFLCEncode4x4_JPEGXR_16s1u_C1R, Orb16s)
FLEX_ENCODE_TESTS(orbiFLCEncode4x4_JPEGXR_32s1u_C1R, Orb32s)

// ---- Reading

template <class T>
struct RefineCall {
  Plane<T> block{4, 4};
  int bits = 0, refine = 0;
  Orb16s scale = 1;

  template <class Function>
  OrbStatus run(Function* function, Reader& reader) {
    return function(&reader.at, &reader.bits, &reader.count, block.data(), block.step(),
                    static_cast<Orb32u>(bits), scale, refine);
  }
};

template <class T>
RefineCall<T> anyRefineCall(Random& random) {
  RefineCall<T> call;
  call.block = Plane<T>(4, 4, Placement::any(random));
  call.block.fill([&] { return random.oneIn(2) ? T{0} : random.extreme<T>(); });
  call.bits = random.between(0, 15);
  call.refine = random.between(-1, 1);
  call.scale = random.oneIn(3) ? Orb16s{1} : random.any<Orb16s>();
  return call;
}

// Takes the values of a block from the bits.
template <class T>
std::vector<T> modelRefine(RefineCall<T> call, BitSource& source) {
  for (const auto& [x, y] : flexPlaces()) {
    const int64_t value = source.take(call.bits) * call.scale;
    const T sample = call.block.at(x, y);
    if (value == 0 && call.scale != 0) continue;
    const bool grows = call.refine != 0 && sample != 0;
    const bool isNegative = grows ? sample < 0 : source.next();
    const int64_t sum = (grows ? int64_t{sample} : 0) + (isNegative ? -value : value);
    call.block.set(x, y, static_cast<T>(static_cast<uint64_t>(sum)));
  }
  return call.block.samples();
}

template <class T>
RefineCall<T> copyOf(const RefineCall<T>& call) {
  RefineCall<T> copy;
  copy.block.copySamples(call.block);
  copy.bits = call.bits;
  copy.refine = call.refine;
  copy.scale = call.scale;
  return copy;
}

template <class T, class Function>
void expectModelReads(const char* name, Function* function) {
  Random random(name);
  const std::string bits = randomBits(random, 20000);
  size_t used = 0;
  for (const bool isMeasuring : {true, false}) {
    Random calls(name);
    BitSource source = {bits};
    Reader reader(bytesToRead(bits, isMeasuring ? bits.size() : used));
    for (int i = 0; i < 400 && source.at < bits.size() - 8 * kMostFlexBytes; ++i) {
      RefineCall<T> call = anyRefineCall<T>(calls);
      if (call.scale == 0) call.scale = 2;
      const std::vector<T> expected = modelRefine(copyOf(call), source);
      if (isMeasuring) continue;
      ASSERT_EQ(call.run(function, reader), orbStsNoErr);
      ASSERT_EQ(call.block.samples(), expected) << "block " << i;
      ASSERT_EQ(reader.used(), static_cast<int64_t>(source.at));
      ASSERT_GE(reader.count, 16u);
      ASSERT_LE(reader.count, 31u);
      call.block.expectOutsideUntouched();
    }
    used = source.at;
  }
}

// -3 with a value of 1 and a scale of 2 becomes -5; a sample of 0 takes a sign, a value of 0 does
// not.
template <class T, class Function>
void expectKnownValues(Function* function) {
  RefineCall<T> call;
  call.block.fill([] { return T{0}; });
  call.block.set(2, 0, -3);
  call.block.set(1, 0, 4);
  call.bits = 1;
  call.scale = 2;
  call.refine = 1;
  // Grows, grows, a new negative one, and no others.
  Reader reader(bytesToRead("1111", 4 + 12));
  ASSERT_EQ(call.run(function, reader), orbStsNoErr);
  EXPECT_EQ(call.block.at(2, 0), -5);
  EXPECT_EQ(call.block.at(1, 0), 6);
  EXPECT_EQ(call.block.at(3, 1), -2);
  EXPECT_EQ(reader.used(), 4 + 12);
}

// What the encoder writes of a block whose values fit, the decoder reads back into an empty one.
template <class T, class Encode, class Decode>
void expectRoundTrip(Random& random, Encode* encode, Decode* decode) {
  for (int i = 0; i < 200; ++i) {
    const int bits = random.between(1, 15);
    FlexCall<T> call;
    call.values = randomCoefficients(random, bits);
    call.values[0] = 0;
    call.block = blockOf<T>(call.values, {});
    call.bits = bits;
    Writer writer(kMostFlexBytes + 8);
    ASSERT_EQ(call.run(encode, writer), orbStsNoErr);
    const std::string text = writer.text();
    RefineCall<T> back;
    back.block.fill([] { return T{0}; });
    back.bits = bits;
    back.refine = i % 2;
    Reader reader(bytesToRead(text, text.size()));
    ASSERT_EQ(back.run(decode, reader), orbStsNoErr);
    ASSERT_EQ(back.block.samples(), call.block.samples());
  }
}

template <class T, class Function>
void expectDecodeChecks(Function* function) {
  struct Call {
    Orb16u** ppBitStream;
    Orb32u* pBitBuf;
    Orb32u* pBitCount;
    T* pSrcDst;
    Orb32u bits;
  };
  Plane<T> block(4, 4);
  Reader reader(std::vector<uint8_t>(kMostFlexBytes, 0xFF));
  Orb16u* none = nullptr;
  Orb32u tooMany = 33;
  const auto run = [&](const Call& c) {
    return function(c.ppBitStream, c.pBitBuf, c.pBitCount, c.pSrcDst, block.step(), c.bits, 1, 0);
  };
  expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.pSrcDst = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.ppBitStream = nullptr; }},
                      {orbStsNullPtrErr, [&](Call& c) { c.ppBitStream = &none; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pBitBuf = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pBitCount = nullptr; }},
                      {orbStsOutOfRangeErr, [&](Call& c) { c.pBitCount = &tooMany; }},
                      {orbStsOutOfRangeErr, [](Call& c) { c.bits = 16; }}},
                     {&reader.at, &reader.bits, &reader.count, block.data(), 15}, run);
  EXPECT_EQ(reader.used(), 0);
  block.expectUntouched();
  Orb32u full = 32;
  EXPECT_EQ(run({&reader.at, &reader.bits, &full, block.data(), 0}), orbStsNoErr);
  EXPECT_EQ(full, 32u);
}

template <class T, class Function>
void expectDecodersAgree(Random& random, Function* mine, Function* px) {
  const std::vector<uint8_t> bytes =
      orbtest::packBits(randomBits(random, 300 * 8 * kMostFlexBytes));
  Reader mineReader(bytes), pxReader(bytes);
  for (int i = 0; i < 300; ++i) {
    const RefineCall<T> call = anyRefineCall<T>(random);
    RefineCall<T> mineCall = copyOf(call), pxCall = copyOf(call);
    mineCall.run(mine, mineReader);
    pxCall.run(px, pxReader);
    ASSERT_TRUE(mineCall.block.sameBytes(pxCall.block));
    ASSERT_EQ(mineReader.used(), pxReader.used());
    ASSERT_EQ(mineReader.bits, pxReader.bits);
  }
}

#define FLEX_DECODE_TESTS(name, encoder, T)              \
  ORB_MEANING(name, ReadsLikeTheModel) {                 \
    expectModelReads<T>(#name, ORB(name));               \
  }                                                      \
  ORB_MEANING(name, KnownValues) {                       \
    expectKnownValues<T>(ORB(name));                     \
  }                                                      \
  ORB_MEANING(name, RoundTrip) {                         \
    Random random("flex round trip");                    \
    expectRoundTrip<T>(random, ORB(encoder), ORB(name)); \
  }                                                      \
  ORB_MEANING(name, ChecksInOrder) {                     \
    expectDecodeChecks<T>(ORB(name));                    \
  }                                                      \
  ORB_AGREEMENT(name) {                                  \
    expectDecodersAgree<T>(random, ORB(name), PX(name)); \
  }

FLEX_DECODE_TESTS(orbiFLCDecode4x4_JPEGXR_1u16s_C1IR, orbiFLCEncode4x4_JPEGXR_16s1u_C1R, Orb16s)
FLEX_DECODE_TESTS(orbiFLCDecode4x4_JPEGXR_1u32s_C1IR, orbiFLCEncode4x4_JPEGXR_32s1u_C1R, Orb32s)

}  // namespace
