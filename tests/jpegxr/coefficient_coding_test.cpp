// Coefficient coding (ITU-T T.832): encoders and decoders against a model, alone and in long
// sequences in which codes and scans adapt.
#include <cstring>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "tests/jpegxr/coding_host.h"
#include "tests/support/faults.h"

namespace {

using orbtest::expectChecks;
using orbtest::Fault;
using orbtest::makeRow;
using orbtest::Placement;
using orbtest::Plane;
using orbtest::Random;
using orbtest::TestBuild;
using namespace orbtest::jxr;

std::string modelHighPass(Model& model, const std::vector<RunLevel>& list, int colourClass) {
  return model.encode(list, 1, model.highPass[colourClass != 0], model.highPassLevels);
}
// The position of the standard at which a list starts that has `slots` coefficients.
int startOf(int slots) {
  return 16 - slots;
}
std::string modelLowPass(Model& model, const std::vector<RunLevel>& list, int slots,
                         int colourClass) {
  return model.encode(list, startOf(slots), model.lowPass[colourClass != 0], model.lowPassLevels);
}

template <class T>
constexpr int kBits = 8 * sizeof(T) - 1;

// ---- One signature for the functions of a kind

template <class T>
struct EncodeCall {
  Plane<T> block{4, 4};
  int colourClass = 0, modelBits = 0, trimBits = 0;
  Plane<Orb32s> residual = makeRow<Orb32s>(16, {0, 3});
  Plane<Orb32s> count = makeRow<Orb32s>(1, {0, 1});
};
template <class T>
using Encode = std::function<OrbStatus(EncodeCall<T>&, Writer&, State&)>;

template <class T, class Function>
Encode<T> encodePlain(Function* function) {
  return [=](EncodeCall<T>& call, Writer& writer, State& state) {
    return function(call.block.data(), call.block.step(), call.colourClass,
                    static_cast<Orb32u>(call.modelBits), &writer.at, &writer.bits, &writer.count,
                    call.count.data(), state.record());
  };
}
template <class T, class Function>
Encode<T> encodeFlex(Function* function) {
  return [=](EncodeCall<T>& call, Writer& writer, State& state) {
    return function(call.block.data(), call.block.step(), call.colourClass,
                    static_cast<Orb32u>(call.modelBits), static_cast<Orb32u>(call.trimBits),
                    call.residual.data(), &writer.at, &writer.bits, &writer.count,
                    call.count.data(), state.record());
  };
}

// ---- High-pass blocks: writing

template <class T>
void expectModelWrites(const char* name, const Encode<T>& encode, bool hasResidual) {
  Random random(name);
  constexpr int kBlocks = 250;
  for (int sequence = 0; sequence < 3; ++sequence) {
    Twins twins;
    Writer writer(kBlocks * kMostBytes);
    std::string expected;
    for (int i = 0; i < kBlocks; ++i) {
      twins.housekeeping(random);
      const std::vector<int64_t> values = randomCoefficients(random, kBits<T>);
      EncodeCall<T> call;
      call.block = blockOf<T>(values, Placement::any(random));
      call.colourClass = random.between(0, 1);
      call.modelBits = random.oneIn(2) ? 0 : random.between(0, 15);
      call.trimBits = random.oneIn(2) ? 0 : random.between(0, 15);
      call.residual.fill([&] { return random.any<Orb32s>(); });
      const std::vector<Orb32s> before = call.residual.samples();
      ASSERT_EQ(encode(call, writer, twins.state), orbStsNoErr);

      const std::vector<RunLevel> list =
          listOf(values, call.modelBits, twins.model.scans[twins.model.scan]);
      expected += modelHighPass(twins.model, list, call.colourClass);
      ASSERT_EQ(call.count.at(0), static_cast<int>(list.size()));
      ASSERT_EQ(static_cast<size_t>(8 * (writer.at - writer.memory.data()) + writer.count),
                expected.size());
      ASSERT_LE(writer.count, 16u);
      for (size_t n = 0; n < 16; ++n) {
        const int64_t residual =
            hasResidual && n > 0 ? residualOf(values[n], call.modelBits, call.trimBits) : before[n];
        ASSERT_EQ(call.residual.at(static_cast<int>(n)), residual) << n;
      }
      call.block.expectUntouched();
      call.residual.expectOutsideUntouched();
      call.count.expectOutsideUntouched();
    }
    twins.state.bytes.expectOutsideUntouched();
    ASSERT_EQ(writer.text(), expected);
  }
}

// With symbols of the first tables: a first index is 00010 for 1, 000001 for 3, a sign, a level.
template <class T>
void expectKnownBits(const Encode<T>& encode) {
  struct Known {
    int index;  // natural
    int value;
    const char* bits;
  };
  // Scan 2 starts 0, 1, 4, 5 ... and ends with 15.
  for (const Known& known : std::vector<Known>{{1, 1, "000100"},
                                               {1, -1, "000101"},
                                               {1, 2, "000001001"},
                                               {1, -3, "000001110"},
                                               {4, 1, "001001"},
                                               {15, 1, "001000001111"}}) {
    State state;
    Writer writer(64);
    EncodeCall<T> call;
    std::vector<int64_t> values(16);
    values[static_cast<size_t>(known.index)] = known.value;
    call.block = blockOf<T>(values, {});
    ASSERT_EQ(encode(call, writer, state), orbStsNoErr);
    EXPECT_EQ(writer.text(), known.bits) << known.index << ": " << known.value;
    EXPECT_EQ(call.count.at(0), 1);
  }
}

template <class T>
void expectNothingForAnEmptyBlock(const Encode<T>& encode) {
  State state;
  const State fresh;
  Writer writer(0);
  writer.bits = 0x12340000;
  writer.count = 32;
  EncodeCall<T> call;
  call.block = blockOf<T>({-5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, {});
  ASSERT_EQ(encode(call, writer, state), orbStsNoErr);
  EXPECT_EQ(call.count.at(0), 0);
  EXPECT_EQ(writer.text(), orbtest::binary(0x12340000, 32));
  EXPECT_TRUE(state.bytes.sameBytes(fresh.bytes));
}

// Whatever waits at the start goes out first.
template <class T>
void expectAnyStartOfStream(const Encode<T>& encode) {
  for (Orb32u waiting = 0; waiting <= 32; ++waiting) {
    State state;
    Writer writer(64);
    writer.count = waiting;
    writer.bits = waiting == 0 ? 0 : ~0u << (32 - waiting);
    EncodeCall<T> call;
    call.block = blockOf<T>({0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, {});
    ASSERT_EQ(encode(call, writer, state), orbStsNoErr);
    EXPECT_EQ(writer.text(), std::string(waiting, '1') + "000100");
  }
}

template <class T>
void expectAgreement(Random& random, const Encode<T>& mine, const Encode<T>& px) {
  constexpr int kBlocks = 300;
  State mineState, pxState;
  Writer mineWriter(kBlocks * kMostBytes), pxWriter(kBlocks * kMostBytes);
  for (int i = 0; i < kBlocks; ++i) {
    // Now and then in a record that is no state.
    if (random.oneIn(20)) {
      mineState.bytes.fillAny(random);
      pxState.bytes.copySamples(mineState.bytes);
    }
    EncodeCall<T> call;
    call.block = blockOf<T>(randomCoefficients(random, 8 * sizeof(T)), Placement::any(random));
    call.colourClass = random.between(-1, 2);
    call.modelBits = random.between(0, 15);
    call.trimBits = random.between(0, 15);
    EncodeCall<T> pxCall;
    pxCall.block = Plane<T>(4, 4, {call.block.step() - 4 * static_cast<int>(sizeof(T)), 0});
    pxCall.block.copySamples(call.block);
    pxCall.colourClass = call.colourClass;
    pxCall.modelBits = call.modelBits;
    pxCall.trimBits = call.trimBits;
    ASSERT_EQ(mine(call, mineWriter, mineState), px(pxCall, pxWriter, pxState));
    ASSERT_TRUE(call.residual.sameBytes(pxCall.residual));
    ASSERT_EQ(call.count.at(0), pxCall.count.at(0));
    ASSERT_TRUE(mineState.bytes.sameBytes(pxState.bytes));
  }
  ASSERT_EQ(mineWriter.text(), pxWriter.text());
}

template <class T>
struct EncodeArguments {
  const T* pSrc;
  Orb32u modelBits, trimBits;
  Orb32s* pResidual;
  Orb8u** ppBitStream;
  Orb32u* pBitBuf;
  Orb32u* pBitCount;
  Orb32s* pNumNonZero;
  OrbiVLCState_JPEGXR* pState;
};

template <class T, class Run>
void expectEncodeChecks(Run run, bool isFlex) {
  using Call = EncodeArguments<T>;
  State state;
  const State fresh;
  EncodeCall<T> good;
  good.block = blockOf<T>(std::vector<int64_t>(16, 9), {});
  good.count.set(0, 0, 77);
  Writer writer(64);
  Orb8u* none = nullptr;
  Orb32u tooMany = 33;
  std::vector<Fault<Call>> faults = {{orbStsNullPtrErr, [](Call& c) { c.pState = nullptr; }},
                                     {orbStsNullPtrErr, [](Call& c) { c.pSrc = nullptr; }},
                                     {orbStsNullPtrErr, [](Call& c) { c.pNumNonZero = nullptr; }},
                                     {orbStsNullPtrErr, [](Call& c) { c.ppBitStream = nullptr; }},
                                     {orbStsNullPtrErr, [&](Call& c) { c.ppBitStream = &none; }},
                                     {orbStsNullPtrErr, [](Call& c) { c.pBitBuf = nullptr; }},
                                     {orbStsNullPtrErr, [](Call& c) { c.pBitCount = nullptr; }}};
  if (isFlex) faults.push_back({orbStsNullPtrErr, [](Call& c) { c.pResidual = nullptr; }});
  faults.push_back({orbStsOutOfRangeErr, [&](Call& c) { c.pBitCount = &tooMany; }});
  faults.push_back({orbStsOutOfRangeErr, [](Call& c) { c.modelBits = 16; }});
  if (isFlex) faults.push_back({orbStsOutOfRangeErr, [](Call& c) { c.trimBits = 16; }});
  expectChecks<Call>(faults,
                     {good.block.data(), 15, 15, good.residual.data(), &writer.at, &writer.bits,
                      &writer.count, good.count.data(), state.record()},
                     run);
  EXPECT_EQ(writer.text(), "");
  good.residual.expectUntouched();
  good.count.expectUntouched();
  EXPECT_TRUE(state.bytes.sameBytes(fresh.bytes));
}

#define ENCODE_TESTS(name, T, wrap, isFlex, ...)                                               \
  ORB_MEANING(name, WritesLikeTheModel) {                                                      \
    expectModelWrites<T>(#name, wrap<T>(ORB(name)), isFlex);                                   \
  }                                                                                            \
  ORB_MEANING(name, KnownBits) {                                                               \
    expectKnownBits<T>(wrap<T>(ORB(name)));                                                    \
  }                                                                                            \
  ORB_MEANING(name, EmptyBlock) {                                                              \
    expectNothingForAnEmptyBlock<T>(wrap<T>(ORB(name)));                                       \
  }                                                                                            \
  ORB_MEANING(name, AnyStartOfStream) {                                                        \
    expectAnyStartOfStream<T>(wrap<T>(ORB(name)));                                             \
  }                                                                                            \
  ORB_MEANING(name, ChecksInOrder) {                                                           \
    expectEncodeChecks<T>([&](const EncodeArguments<T>& c) { return ORB(name)(__VA_ARGS__); }, \
                          isFlex);                                                             \
  }                                                                                            \
  ORB_AGREEMENT(name) {                                                                        \
    expectAgreement<T>(random, wrap<T>(ORB(name)), wrap<T>(PX(name)));                         \
  }

ENCODE_TESTS(orbiVLCEncode4x4_JPEGXR_16s1u_C1R, Orb16s, encodePlain, false, c.pSrc, 8, 0,
             c.modelBits, c.ppBitStream, c.pBitBuf, c.pBitCount, c.pNumNonZero, c.pState)
ENCODE_TESTS(orbiVLCEncode4x4_JPEGXR_32s1u_C1R, Orb32s, encodePlain, false, c.pSrc, 16, 0,
             c.modelBits, c.ppBitStream, c.pBitBuf, c.pBitCount, c.pNumNonZero, c.pState)
ENCODE_TESTS(orbiVLCEncode4x4Flex_JPEGXR_16s1u_C1R, Orb16s, encodeFlex, true, c.pSrc, 8, 0,
             c.modelBits, c.trimBits, c.pResidual, c.ppBitStream, c.pBitBuf, c.pBitCount,
             c.pNumNonZero, c.pState)
ENCODE_TESTS(orbiVLCEncode4x4Flex_JPEGXR_32s1u_C1R, Orb32s, encodeFlex, true, c.pSrc, 16, 0,
             c.modelBits, c.trimBits, c.pResidual, c.ppBitStream, c.pBitBuf, c.pBitCount,
             c.pNumNonZero, c.pState)

ORB_MEANING(orbiVLCEncode4x4_JPEGXR_32s1u_C1R, LimitsLevelsAndLength) {
  // The largest level that can be coded stands for those that can't; no block is longer than
  // blocks of these.
  const int64_t largest = (int64_t{1} << 30) + 1;
  for (const int64_t value : {largest, largest + 1, int64_t{INT32_MAX}, int64_t{INT32_MIN}}) {
    Twins twins;
    Writer writer(kMostBytes);
    EncodeCall<Orb32s> call;
    const std::vector<int64_t> values(16, value);
    call.block = blockOf<Orb32s>(values, {});
    writer.count = 32;
    ASSERT_EQ(
        encodePlain<Orb32s>(ORB(orbiVLCEncode4x4_JPEGXR_32s1u_C1R))(call, writer, twins.state),
        orbStsNoErr);
    const std::string expected =
        modelHighPass(twins.model, listOf(values, 0, twins.model.scans[2]), 0);
    EXPECT_EQ(writer.text(), std::string(32, '0') + expected);
  }
}

// ---- High-pass blocks: reading

template <class T>
struct DecodeCall {
  Plane<T> block{4, 4};
  int colourClass = 0;
  Orb16s scale = 1;
  Plane<Orb32s> count = makeRow<Orb32s>(1, {0, 1});

  template <class Function>
  OrbStatus run(Function* function, Reader& reader, State& state) {
    return function(&reader.at, &reader.bits, &reader.count, scale, block.data(), block.step(),
                    colourClass, count.data(), state.record());
  }
};

template <class T>
T cut(int64_t value) {
  return static_cast<T>(static_cast<uint64_t>(value));
}

// A stream of blocks with what the host does between them: the same twice, for the model that
// finds out how long it is, and for the function.
struct Story {
  std::string bits;
  int blocks;
  std::string name;
};

// Reads a stream with the function and with the model, from memory that ends with the last unit
// that a reader may fetch. Any bits do: most random ones lead out of a block sooner or later.
template <class T, class Function>
void expectModelReads(const Story& story, Function* function) {
  size_t used = 0;
  for (const bool isMeasuring : {true, false}) {
    Random random(story.name);
    Twins twins;
    BitSource source = {story.bits};
    Reader reader(bytesToRead(story.bits, isMeasuring ? story.bits.size() : used));
    for (int i = 0; i < story.blocks; ++i) {
      twins.housekeeping(random);
      DecodeCall<T> call;
      call.block = Plane<T>(4, 4, Placement::any(random));
      call.colourClass = random.between(0, 1);
      call.scale = random.oneIn(2) ? Orb16s{1} : random.any<Orb16s>();
      const Scan before = twins.model.scans[twins.model.scan];
      const Model::Read read = twins.model.decode(
          source, 1, twins.model.highPass[call.colourClass != 0], twins.model.highPassLevels);
      std::vector<int64_t> expected(16);
      Scan& scan = twins.model.scans[twins.model.scan];
      for (const auto& [position, level] : read.levels) {
        expected[static_cast<size_t>(scan.order[static_cast<size_t>(position)])] =
            level * call.scale;
        scan.use(static_cast<size_t>(position));
      }
      if (isMeasuring) continue;
      ASSERT_EQ(call.run(function, reader, twins.state), orbStsNoErr);
      for (size_t n = 0; n < 16; ++n) {
        ASSERT_EQ(call.block.at(places()[n].first, places()[n].second), cut<T>(expected[n]))
            << "block " << i << ", index " << n;
      }
      ASSERT_EQ(call.count.at(0), read.byRun ? 16 : static_cast<int>(read.levels.size()));
      ASSERT_EQ(reader.used(), static_cast<int64_t>(source.at)) << "block " << i;
      ASSERT_GE(reader.count, 16u);
      ASSERT_LE(reader.count, 31u);
      call.block.expectOutsideUntouched();
      call.count.expectOutsideUntouched();
    }
    twins.state.bytes.expectOutsideUntouched();
    used = source.at;
  }
}

// Streams as an encoder writes them.
template <class T>
Story writtenStory(const std::string& name) {
  Random random(name), content(name + " content");
  Story story = {"", 400, name};
  Twins twins;
  for (int i = 0; i < story.blocks; ++i) {
    twins.housekeeping(random);
    Placement::any(random);
    const int colourClass = random.between(0, 1);
    if (!random.oneIn(2)) random.any<Orb16s>();
    std::vector<int64_t> values = randomCoefficients(content, std::min(30, kBits<T>));
    values[static_cast<size_t>(content.between(1, 15))] = 1;
    Scan& scan = twins.model.scans[twins.model.scan];
    story.bits += modelHighPass(twins.model, listOf(values, 0, scan), colourClass);
  }
  return story;
}

template <class T, class Function>
void expectDecoderLikeTheModel(const char* name, Function* function) {
  expectModelReads<T>(writtenStory<T>(name), function);
  Random random(name);
  for (int i = 0; i < 4; ++i) {
    const std::string seed = std::string(name) + " damaged " + std::to_string(i);
    expectModelReads<T>({randomBits(random, 40000), 500, seed}, function);
  }
}

template <class T, class Function>
void expectDecodersAgree(Random& random, Function* mine, Function* px) {
  const std::vector<uint8_t> bytes = orbtest::packBits(randomBits(random, 500 * 8 * kMostBytes));
  Reader mineReader(bytes), pxReader(bytes);
  State mineState, pxState;
  for (int i = 0; i < 500; ++i) {
    if (random.oneIn(20)) {
      mineState.bytes.fillAny(random);
      pxState.bytes.copySamples(mineState.bytes);
    }
    DecodeCall<T> mineCall, pxCall;
    mineCall.colourClass = pxCall.colourClass = random.between(-1, 2);
    mineCall.scale = pxCall.scale = random.any<Orb16s>();
    mineCall.run(mine, mineReader, mineState);
    pxCall.run(px, pxReader, pxState);
    ASSERT_TRUE(mineCall.block.sameBytes(pxCall.block));
    ASSERT_EQ(mineCall.count.at(0), pxCall.count.at(0));
    ASSERT_EQ(mineReader.used(), pxReader.used());
    ASSERT_EQ(mineReader.bits, pxReader.bits);
    ASSERT_EQ(mineReader.count, pxReader.count);
    ASSERT_TRUE(mineState.bytes.sameBytes(pxState.bytes));
  }
}

struct DecodeArguments {
  Orb16u** ppBitStream;
  Orb32u* pBitBuf;
  Orb32u* pBitCount;
  void* pDst;
  Orb32s* pNumNonZero;
  OrbiVLCState_JPEGXR* pState;
};

template <class Run>
void expectDecodeChecks(Run run) {
  using Call = DecodeArguments;
  State state;
  const State fresh;
  Plane<Orb32s> dst(16, 1), count(1, 1);
  Reader reader(std::vector<uint8_t>(kMostBytes, 0xAA));
  Orb16u* none = nullptr;
  Orb32u tooMany = 33;
  expectChecks<Call>(
      {{orbStsNullPtrErr, [](Call& c) { c.pState = nullptr; }},
       {orbStsNullPtrErr, [](Call& c) { c.pDst = nullptr; }},
       {orbStsNullPtrErr, [](Call& c) { c.pNumNonZero = nullptr; }},
       {orbStsNullPtrErr, [](Call& c) { c.ppBitStream = nullptr; }},
       {orbStsNullPtrErr, [&](Call& c) { c.ppBitStream = &none; }},
       {orbStsNullPtrErr, [](Call& c) { c.pBitBuf = nullptr; }},
       {orbStsNullPtrErr, [](Call& c) { c.pBitCount = nullptr; }},
       {orbStsOutOfRangeErr, [&](Call& c) { c.pBitCount = &tooMany; }}},
      {&reader.at, &reader.bits, &reader.count, dst.data(), count.data(), state.record()}, run);
  EXPECT_EQ(reader.used(), 0);
  dst.expectUntouched();
  count.expectUntouched();
  EXPECT_TRUE(state.bytes.sameBytes(fresh.bytes));
  // 32 bits that wait are as many as there may be.
  Orb32u full = 32;
  EXPECT_EQ(run({&reader.at, &reader.bits, &full, dst.data(), count.data(), state.record()}),
            orbStsNoErr);
}

#define DECODE_TESTS(name, T)                                                             \
  ORB_MEANING(name, ReadsLikeTheModel) {                                                  \
    expectDecoderLikeTheModel<T>(#name, ORB(name));                                       \
  }                                                                                       \
  ORB_MEANING(name, ChecksInOrder) {                                                      \
    expectDecodeChecks([&](const DecodeArguments& c) {                                    \
      return ORB(name)(c.ppBitStream, c.pBitBuf, c.pBitCount, 1, static_cast<T*>(c.pDst), \
                       4 * static_cast<Orb32s>(sizeof(T)), 0, c.pNumNonZero, c.pState);   \
    });                                                                                   \
  }                                                                                       \
  ORB_AGREEMENT(name) {                                                                   \
    expectDecodersAgree<T>(random, ORB(name), PX(name));                                  \
  }

DECODE_TESTS(orbiVLCDecode4x4_JPEGXR_1u16s_C1R, Orb16s)
DECODE_TESTS(orbiVLCDecode4x4_JPEGXR_1u32s_C1R, Orb32s)

// ---- Low-pass blocks: writing

using EncodeLowPass =
    std::function<OrbStatus(const Plane<Orb32s>&, int pairs, int colourClass, Writer&, State&)>;

template <class Function>
EncodeLowPass encodeChannel(Function* function) {
  return [=](const Plane<Orb32s>& pairs, int count, int colourClass, Writer& w, State& state) {
    return function(pairs.data(), count, colourClass, &w.at, &w.bits, &w.count, state.record());
  };
}
template <class Function>
EncodeLowPass encodeChroma(Function* function) {
  return [=](const Plane<Orb32s>& pairs, int count, int, Writer& w, State& state) {
    return function(pairs.data(), count, &w.at, &w.bits, &w.count, state.record());
  };
}

std::vector<RunLevel> randomList(Random& random, int slots) {
  const int sparseness = random.between(1, slots), bits = random.between(1, 30);
  std::vector<RunLevel> list;
  int zeros = 0;
  for (int slot = 0; slot < slots; ++slot) {
    if (!random.oneIn(sparseness)) {
      ++zeros;
      continue;
    }
    const int64_t level = 1 + (random.any<Orb32u>() >> (32 - random.between(1, bits)));
    list.push_back({zeros, random.oneIn(2) ? level : -level});
    zeros = 0;
  }
  return list;
}

Plane<Orb32s> planeOf(const std::vector<RunLevel>& list) {
  Plane<Orb32s> pairs = makeRow<Orb32s>(32, {0, 3});
  for (size_t i = 0; i < list.size(); ++i) {
    pairs.set(2 * static_cast<int>(i), 0, list[i].run);
    pairs.set(2 * static_cast<int>(i) + 1, 0, static_cast<Orb32s>(list[i].level));
  }
  return pairs;
}

void expectModelWritesLowPass(const char* name, int slots, bool hasClass,
                              const EncodeLowPass& encode) {
  Random random(name);
  constexpr int kBlocks = 300;
  for (int sequence = 0; sequence < 3; ++sequence) {
    Twins twins;
    Writer writer(kBlocks * kMostBytes);
    std::string expected;
    for (int i = 0; i < kBlocks; ++i) {
      twins.housekeeping(random);
      const int colourClass = random.between(0, 1);
      std::vector<RunLevel> list = randomList(random, slots);
      const Plane<Orb32s> pairs = planeOf(list);
      ASSERT_EQ(encode(pairs, static_cast<int>(list.size()), colourClass, writer, twins.state),
                orbStsNoErr);
      expected += modelLowPass(twins.model, list, slots, hasClass ? colourClass : 1);
      ASSERT_EQ(static_cast<size_t>(8 * (writer.at - writer.memory.data()) + writer.count),
                expected.size());
    }
    twins.state.bytes.expectOutsideUntouched();
    ASSERT_EQ(writer.text(), expected);
  }
}

// A pair behind the last position, or with a run that is none, ends the list.
void expectListsEndWithTheBlock(int slots, const EncodeLowPass& encode) {
  const std::vector<RunLevel> strays = {{slots, 1}, {-1, 1}, {INT32_MAX, 1}, {INT32_MIN, 1}};
  for (const RunLevel stray : strays) {
    for (const int good : {0, 1, 3}) {
      Twins twins;
      Writer writer(kMostBytes);
      std::vector<RunLevel> list(static_cast<size_t>(good), {0, 5});
      const std::string expected = modelLowPass(twins.model, list, slots, 1);
      list.push_back(stray);
      list.push_back({0, 7});
      ASSERT_EQ(encode(planeOf(list), good + 2, 1, writer, twins.state), orbStsNoErr);
      EXPECT_EQ(writer.text(), expected);
    }
  }
  for (const int none : {0, -1, INT32_MIN}) {
    State state;
    Writer writer(0);
    writer.count = 32;
    EXPECT_EQ(encode(planeOf({}), none, 0, writer, state), orbStsNoErr);
    EXPECT_EQ(writer.count, 32u);
  }
}

struct LowPassArguments {
  const Orb32s* pRunLevel;
  Orb32s pairCount;
  Orb8u** ppBitStream;
  Orb32u* pBitBuf;
  Orb32u* pBitCount;
  OrbiVLCState_JPEGXR* pState;
};

template <class Run>
void expectLowPassChecks(int mostPairs, Run run) {
  using Call = LowPassArguments;
  State state;
  const State fresh;
  Writer writer(kMostBytes);
  const Plane<Orb32s> pairs = planeOf(std::vector<RunLevel>(16, {0, 5}));
  Orb8u* none = nullptr;
  Orb32u tooMany = 33;
  const Call good = {pairs.data(), mostPairs,     &writer.at,
                     &writer.bits, &writer.count, state.record()};
  expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.pState = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pRunLevel = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.ppBitStream = nullptr; }},
                      {orbStsNullPtrErr, [&](Call& c) { c.ppBitStream = &none; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pBitBuf = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pBitCount = nullptr; }},
                      {orbStsOutOfRangeErr, [&](Call& c) { c.pBitCount = &tooMany; }},
                      {orbStsOutOfRangeErr, [](Call& c) { ++c.pairCount; }}},
                     good, run);
  EXPECT_EQ(writer.text(), "");
  EXPECT_TRUE(state.bytes.sameBytes(fresh.bytes));
  EXPECT_EQ(run(good), orbStsNoErr);
}

void expectLowPassAgreement(Random& random, const EncodeLowPass& mine, const EncodeLowPass& px,
                            int mostPairs) {
  constexpr int kBlocks = 300;
  State mineState, pxState;
  Writer mineWriter(kBlocks * kMostBytes), pxWriter(kBlocks * kMostBytes);
  for (int i = 0; i < kBlocks; ++i) {
    if (random.oneIn(20)) {
      mineState.bytes.fillAny(random);
      pxState.bytes.copySamples(mineState.bytes);
    }
    std::vector<RunLevel> list;
    for (int n = 0; n < 16; ++n) {
      list.push_back({random.oneIn(30) ? random.any<Orb32s>() : random.between(0, 2),
                      random.any<Orb32s>() >> random.between(0, 31)});
    }
    const Plane<Orb32s> pairs = planeOf(list);
    const int count = random.between(-1, mostPairs), colourClass = random.between(-1, 2);
    mine(pairs, count, colourClass, mineWriter, mineState);
    px(pairs, count, colourClass, pxWriter, pxState);
    ASSERT_TRUE(mineState.bytes.sameBytes(pxState.bytes));
  }
  ASSERT_EQ(mineWriter.text(), pxWriter.text());
}

#define LOW_PASS_ENCODE_TESTS(name, wrap, slots, mostPairs, hasClass, ...)             \
  ORB_MEANING(name, WritesLikeTheModel) {                                              \
    expectModelWritesLowPass(#name, slots, hasClass, wrap(ORB(name)));                 \
  }                                                                                    \
  ORB_MEANING(name, ListsEndWithTheBlock) {                                            \
    expectListsEndWithTheBlock(slots, wrap(ORB(name)));                                \
  }                                                                                    \
  ORB_MEANING(name, ChecksInOrder) {                                                   \
    expectLowPassChecks(mostPairs, [&](const LowPassArguments& c) {                    \
      return ORB(name)(c.pRunLevel, c.pairCount, __VA_ARGS__ c.ppBitStream, c.pBitBuf, \
                       c.pBitCount, c.pState);                                         \
    });                                                                                \
  }                                                                                    \
  ORB_AGREEMENT(name) {                                                                \
    expectLowPassAgreement(random, wrap(ORB(name)), wrap(PX(name)), mostPairs);        \
  }

#define COLOUR_CLASS_0 0,
LOW_PASS_ENCODE_TESTS(orbiVLCEncodeDC444_JPEGXR_32s1u, encodeChannel, 15, 16, true, COLOUR_CLASS_0)
LOW_PASS_ENCODE_TESTS(orbiVLCEncodeDC422_JPEGXR_32s1u, encodeChroma, 14, 14, false, )
LOW_PASS_ENCODE_TESTS(orbiVLCEncodeDC420_JPEGXR_32s1u, encodeChroma, 6, 6, false, )

// ---- Low-pass blocks: reading

using DecodeLowPass =
    std::function<OrbStatus(Reader&, Plane<Orb32s>& dst, int colourClass, Orb32s* count, State&)>;

template <class Function>
DecodeLowPass decodeChannel(Function* function) {
  return [=](Reader& r, Plane<Orb32s>& dst, int colourClass, Orb32s* count, State& state) {
    return function(&r.at, &r.bits, &r.count, dst.data(), colourClass, count, state.record());
  };
}
template <class Function>
DecodeLowPass decodeChroma(Function* function) {
  return [=](Reader& r, Plane<Orb32s>& dst, int, Orb32s* count, State& state) {
    return function(&r.at, &r.bits, &r.count, dst.data(), count, state.record());
  };
}

// What the destination holds after a call that reads `read`; 4:4:4 goes by scan 2, which adapts.
std::vector<Orb32s> levelsIn(std::vector<Orb32s> dst, const Model::Read& read, int slots,
                             Scan& scan) {
  if (slots < 15) std::fill(dst.begin(), dst.begin() + slots, 0);
  for (const auto& [position, level] : read.levels) {
    const size_t at = slots == 15 ? static_cast<size_t>(scan.order[static_cast<size_t>(position)])
                                  : static_cast<size_t>(position - startOf(slots));
    dst[at] = static_cast<Orb32s>(level);
    if (slots == 15) scan.use(static_cast<size_t>(position));
  }
  return dst;
}

void expectModelReadsLowPass(const Story& story, int slots, bool hasClass,
                             const DecodeLowPass& decode) {
  size_t used = 0;
  for (const bool isMeasuring : {true, false}) {
    Random random(story.name);
    Twins twins;
    BitSource source = {story.bits};
    Reader reader(bytesToRead(story.bits, isMeasuring ? story.bits.size() : used));
    for (int i = 0; i < story.blocks; ++i) {
      twins.housekeeping(random);
      const int colourClass = random.between(0, 1);
      Plane<Orb32s> dst = makeRow<Orb32s>(slots == 15 ? 16 : slots, {0, 3});
      dst.fill([] { return 0x12345678; });
      const Model::Read read = twins.model.decode(
          source, startOf(slots), twins.model.lowPass[hasClass ? colourClass != 0 : 1],
          twins.model.lowPassLevels);
      const std::vector<Orb32s> expected =
          levelsIn(dst.samples(), read, slots, twins.model.scans[2]);
      if (isMeasuring) continue;
      Orb32s count = -7;
      ASSERT_EQ(decode(reader, dst, colourClass, &count, twins.state), orbStsNoErr);
      ASSERT_EQ(dst.samples(), expected) << "block " << i;
      const int levels = static_cast<int>(read.levels.size());
      if (slots == 15) {
        ASSERT_EQ(count, read.byRun ? 16 : levels);
      } else {
        ASSERT_EQ(count, read.leadsOut ? -7 : levels);
      }
      ASSERT_EQ(reader.used(), static_cast<int64_t>(source.at)) << "block " << i;
      ASSERT_GE(reader.count, 16u);
      ASSERT_LE(reader.count, 31u);
      dst.expectOutsideUntouched();
    }
    twins.state.bytes.expectOutsideUntouched();
    used = source.at;
  }
}

Story writtenLowPassStory(const std::string& name, int slots, bool hasClass) {
  Random random(name), content(name + " content");
  Story story = {"", 400, name};
  Twins twins;
  for (int i = 0; i < story.blocks; ++i) {
    twins.housekeeping(random);
    const int colourClass = random.between(0, 1);
    std::vector<RunLevel> list = randomList(content, slots);
    if (list.empty()) list = {{slots - 1, -1}};
    story.bits += modelLowPass(twins.model, list, slots, hasClass ? colourClass : 1);
    levelsIn(std::vector<Orb32s>(16), {}, slots, twins.model.scans[2]);
  }
  return story;
}

void expectLowPassDecoderLikeTheModel(const char* name, int slots, bool hasClass,
                                      const DecodeLowPass& decode) {
  expectModelReadsLowPass(writtenLowPassStory(name, slots, hasClass), slots, hasClass, decode);
  Random random(name);
  for (int i = 0; i < 4; ++i) {
    const std::string seed = std::string(name) + " damaged " + std::to_string(i);
    expectModelReadsLowPass({randomBits(random, 40000), 500, seed}, slots, hasClass, decode);
  }
}

void expectLowPassDecodersAgree(Random& random, const DecodeLowPass& mine,
                                const DecodeLowPass& px) {
  const std::vector<uint8_t> bytes = orbtest::packBits(randomBits(random, 500 * 8 * kMostBytes));
  Reader mineReader(bytes), pxReader(bytes);
  State mineState, pxState;
  for (int i = 0; i < 500; ++i) {
    if (random.oneIn(20)) {
      mineState.bytes.fillAny(random);
      pxState.bytes.copySamples(mineState.bytes);
    }
    Plane<Orb32s> mineDst(16, 1), pxDst(16, 1);
    Orb32s mineCount = -7, pxCount = -7;
    const int colourClass = random.between(-1, 2);
    mine(mineReader, mineDst, colourClass, &mineCount, mineState);
    px(pxReader, pxDst, colourClass, &pxCount, pxState);
    ASSERT_TRUE(mineDst.sameBytes(pxDst));
    ASSERT_EQ(mineCount, pxCount);
    ASSERT_EQ(mineReader.used(), pxReader.used());
    ASSERT_EQ(mineReader.bits, pxReader.bits);
    ASSERT_TRUE(mineState.bytes.sameBytes(pxState.bytes));
  }
}

#define LOW_PASS_DECODE_TESTS(name, wrap, slots, hasClass, ...)                             \
  ORB_MEANING(name, ReadsLikeTheModel) {                                                    \
    expectLowPassDecoderLikeTheModel(#name, slots, hasClass, wrap(ORB(name)));              \
  }                                                                                         \
  ORB_MEANING(name, ChecksInOrder) {                                                        \
    expectDecodeChecks([&](const DecodeArguments& c) {                                      \
      return ORB(name)(c.ppBitStream, c.pBitBuf, c.pBitCount, static_cast<Orb32s*>(c.pDst), \
                       __VA_ARGS__ c.pNumNonZero, c.pState);                                \
    });                                                                                     \
  }                                                                                         \
  ORB_AGREEMENT(name) {                                                                     \
    expectLowPassDecodersAgree(random, wrap(ORB(name)), wrap(PX(name)));                    \
  }

LOW_PASS_DECODE_TESTS(orbiVLCDecodeDC444_JPEGXR_1u32s, decodeChannel, 15, true, COLOUR_CLASS_0)
LOW_PASS_DECODE_TESTS(orbiVLCDecodeDC422_JPEGXR_1u32s, decodeChroma, 14, false, )
LOW_PASS_DECODE_TESTS(orbiVLCDecodeDC420_JPEGXR_1u32s, decodeChroma, 6, false, )

}  // namespace
