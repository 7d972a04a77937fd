// Blocks of a deflate stream: headers, codes, stored bytes, both routes, and every place to stop.
#include <cstring>
#include <numeric>

#include "tests/compress/inflate_calls.h"
#include "tests/support/guarded.h"

namespace {

using namespace orbtest;

constexpr int kFixed = orbLZ77BlockFixed;
constexpr int kDynamic = orbLZ77BlockDynamic;
constexpr int kStored = orbLZ77BlockStored;

// ---- Streams of all kinds of blocks, cut in all ways

struct Cutting {
  Sizes pieces, rooms;
};
const Cutting kCuttings[] = {
    {{kWhole}, {kWhole}}, {{1}, {kWhole}}, {{2}, {kWhole}},        {{3}, {5}},
    {{7}, {3}},           {{kWhole}, {1}}, {{kWhole}, {2}},        {{kWhole}, {7}},
    {{1}, {1}},           {{40}, {64}},    {{9, true}, {9, true}}, {{90, true}, {400, true}}};

struct ManyCalls {
  Bytes before;
  std::vector<InflateCall> calls;
};
const std::vector<ManyCalls>& manyCalls(Route route) {
  static const auto make = [](Route r) {
    Random random(r == Route::kPairs ? "streams to pairs" : "streams to bytes");
    std::vector<ManyCalls> all;
    for (const Cutting& cutting : kCuttings) {
      for (int round = 0; round < 6; ++round) {
        const Bytes before = randomBytes(random, 32768);
        RandomStream stream = randomStream(random, random.between(1, 5), 32768);
        if (random.oneIn(2)) stream.bytes.insert(stream.bytes.end(), 40, 0xFF);
        all.push_back({before, callsOf(random, stream, before, r, cutting.pieces, cutting.rooms)});
      }
    }
    return all;
  };
  static const std::vector<ManyCalls> toBytes = make(Route::kBytes), toPairs = make(Route::kPairs);
  return route == Route::kPairs ? toPairs : toBytes;
}
void expectManyCalls(const TestBuild& build, Route route) {
  for (const ManyCalls& many : manyCalls(route)) {
    Inflater inflater(build);
    inflater.setDictionary(many.before);
    expectCalls(inflater, route, many.calls);
    ASSERT_FALSE(testing::Test::HasFailure());
  }
}
ORB_MEANING(orbsDecodeLZ77DynamicHuffFull_8u, StreamsInPieces) {
  expectManyCalls(build, Route::kBytes);
}
ORB_MEANING(orbsDecodeLZ77DynamicHuff_8u, StreamsInPieces) {
  expectManyCalls(build, Route::kPairs);
}

// A block of each kind, cut at every byte of its source and at every place of its output.
ORB_MEANING(orbsDecodeLZ77FixedHuffFull_8u, EveryCut) {
  Random random("every cut");
  const Bytes before = randomBytes(random, 300);
  for (const int kind : {kFixed, kDynamic}) {
    const Pairs pairs = randomPairs(random, 25, 300);
    const Bytes stream =
        bytesOf(kind == kFixed ? fixedBlock(true, pairs) : dynamicBlock(random, true, pairs));
    InflateModel whole(before);
    const Bytes text = whole.toBytes(kind, stream, kWhole).bytes;
    for (size_t cut = 0; cut <= std::max(stream.size(), text.size()); ++cut) {
      Inflater inflater(build);
      InflateModel model(before);
      inflater.setDictionary(before);
      const size_t source = std::min(cut, stream.size());
      Bytes rest = stream;
      for (const auto& [given, room] :
           {std::make_pair(source, cut), std::make_pair(stream.size(), cut),
            std::make_pair(stream.size(), kWhole)}) {
        const size_t taken = stream.size() - rest.size();
        const Bytes piece(rest.begin(),
                          rest.begin() + static_cast<ptrdiff_t>(std::max(given, taken) - taken));
        const InflateStep expected = model.toBytes(kind, piece, room);
        expectStep(inflater.toBytes(kind, piece, room), expected);
        rest.erase(rest.begin(), rest.begin() + expected.used);
        ASSERT_FALSE(testing::Test::HasFailure()) << "cut at " << cut;
      }
    }
  }
}
ORB_MEANING(orbsDecodeLZ77FixedHuff_8u, EveryCut) {
  Random random("every cut");
  for (const int kind : {kFixed, kDynamic}) {
    const Pairs pairs = randomPairs(random, 25, 300);
    const Bytes stream =
        bytesOf(kind == kFixed ? fixedBlock(true, pairs) : dynamicBlock(random, true, pairs));
    for (size_t cut = 0; cut <= stream.size(); ++cut) {
      Inflater inflater(build);
      InflateModel model;
      const Bytes first(stream.begin(), stream.begin() + static_cast<ptrdiff_t>(cut));
      InflateStep expected = model.toPairs(kind, first, 20);
      expectStep(inflater.toPairs(kind, first, 20), expected);
      const Bytes second(stream.begin() + expected.used, stream.end());
      expected = model.toPairs(kind, second, 20);
      expectStep(inflater.toPairs(kind, second, 20), expected);
      ASSERT_FALSE(testing::Test::HasFailure()) << "cut at " << cut;
    }
  }
}

// ---- Checks

// Calls a function with each of its pointers null, the lengths being bad too, and with bad lengths.
// `call` takes pointers to a source cursor and an output cursor, and a record.
template <class T, class Call>
void expectChecks(const TestBuild& build, bool looksAtPointers, Call call) {
  Inflater inflater(build);
  Orb8u byte = 0;
  T item = {};
  Orb8u* src = &byte;
  T* dst = &item;
  Orb32s one = 1, negative = -1;
  OrbLZ77DecState* const state = inflater.record();
  const RecordMemory before = inflater.memory();
  EXPECT_EQ(call(nullptr, &negative, &dst, &negative, state), orbStsNullPtrErr);
  EXPECT_EQ(call(&src, nullptr, &dst, &negative, state), orbStsNullPtrErr);
  EXPECT_EQ(call(&src, &negative, nullptr, &negative, state), orbStsNullPtrErr);
  EXPECT_EQ(call(&src, &negative, &dst, nullptr, state), orbStsNullPtrErr);
  EXPECT_EQ(call(&src, &negative, &dst, &negative, nullptr), orbStsNullPtrErr);
  Orb8u* noSrc = nullptr;
  T* noDst = nullptr;
  const OrbStatus ifNull = looksAtPointers ? orbStsNullPtrErr : orbStsSizeErr;
  EXPECT_EQ(call(&noSrc, &negative, &dst, &one, state), ifNull);
  EXPECT_EQ(call(&src, &negative, &noDst, &one, state), ifNull);
  EXPECT_EQ(src, &byte);
  EXPECT_EQ(dst, &item);
  EXPECT_EQ(one, 1);
  EXPECT_EQ(negative, -1);
  EXPECT_TRUE(inflater.memory() == before);
}
// The lengths, where they are checked, before a room of 0.
template <class T, class Call>
void expectLengthChecks(const TestBuild& build, Call call) {
  Inflater inflater(build);
  Orb8u byte = 0;
  T item = {};
  Orb8u* src = &byte;
  T* dst = &item;
  for (const auto& [srcLen, dstLen] : std::vector<std::pair<Orb32s, Orb32s>>{
           {-1, 1}, {1, -1}, {INT32_MIN, 0}, {0, INT32_MIN}, {-1, -1}}) {
    Orb32s source = srcLen, room = dstLen;
    EXPECT_EQ(call(&src, &source, &dst, &room, inflater.record()), orbStsSizeErr);
    EXPECT_EQ(source, srcLen);
    EXPECT_EQ(room, dstLen);
  }
  EXPECT_EQ(src, &byte);
  EXPECT_EQ(dst, &item);
}

template <class Function>
void checkToPairs(const TestBuild& build, Function* function) {
  const auto call = [&](Orb8u** ppSrc, Orb32s* pSrcLen, OrbLZ77Pair** ppPairs, Orb32s* pPairsLen,
                        OrbLZ77DecState* state) {
    return function(ppSrc, pSrcLen, ppPairs, pPairsLen, orbLZ77FlushSync, state);
  };
  expectChecks<OrbLZ77Pair>(build, false, call);
  expectLengthChecks<OrbLZ77Pair>(build, call);
  // No room, before the source is looked at; and no source.
  Inflater inflater(build);
  Orb8u* src = nullptr;
  OrbLZ77Pair* pairs = nullptr;
  Orb32s one = 1, none = 0;
  EXPECT_EQ(function(&src, &one, &pairs, &none, 0, inflater.record()), orbStsDstFull);
  EXPECT_EQ(function(&src, &none, &pairs, &none, 0, inflater.record()), orbStsDstFull);
  EXPECT_EQ(function(&src, &none, &pairs, &one, 0, inflater.record()), orbStsSrcShort);
}
ORB_MEANING(orbsDecodeLZ77FixedHuff_8u, Checks) {
  checkToPairs(build, ORB(orbsDecodeLZ77FixedHuff_8u));
}
ORB_MEANING(orbsDecodeLZ77DynamicHuff_8u, Checks) {
  checkToPairs(build, ORB(orbsDecodeLZ77DynamicHuff_8u));
}

template <class Function>
void checkToBytes(const TestBuild& build, Function* function) {
  const auto call = [&](Orb8u** ppSrc, Orb32s* pSrcLen, Orb8u** ppDst, Orb32s* pDstLen,
                        OrbLZ77DecState* state) {
    return function(ppSrc, pSrcLen, ppDst, pDstLen, orbLZ77FlushSync, state);
  };
  expectChecks<Orb8u>(build, true, call);
  expectLengthChecks<Orb8u>(build, call);
  Inflater inflater(build);
  EXPECT_EQ(inflater.toBytes(kFixed, {1}, 0).status, orbStsDstFull);
  EXPECT_EQ(inflater.toBytes(kFixed, {}, 0).status, orbStsDstFull);
  EXPECT_EQ(inflater.toBytes(kFixed, {}, 1).status, orbStsSrcShort);
}
ORB_MEANING(orbsDecodeLZ77FixedHuffFull_8u, Checks) {
  checkToBytes(build, ORB(orbsDecodeLZ77FixedHuffFull_8u));
}
ORB_MEANING(orbsDecodeLZ77DynamicHuffFull_8u, Checks) {
  checkToBytes(build, ORB(orbsDecodeLZ77DynamicHuffFull_8u));
}
ORB_MEANING(orbsDecodeLZ77StoredHuff_8u, Checks) {
  const auto call = ORB(orbsDecodeLZ77StoredHuff_8u);
  expectChecks<OrbLZ77Pair>(build, true, call);
  expectLengthChecks<OrbLZ77Pair>(build, call);
}

ORB_MEANING(orbsDecodeLZ77StoredBlock_8u, Checks) {
  const auto call = ORB(orbsDecodeLZ77StoredBlock_8u);
  expectChecks<Orb8u>(build, true, call);
  // No room comes before everything else; a source of less than nothing is none.
  Inflater inflater(build);
  for (const Orb32s room : {0, -1, INT32_MIN}) {
    Orb8u byte = 0;
    Orb8u* src = &byte;
    Orb8u* dst = &byte;
    Orb32s srcLen = 1, dstLen = room;
    EXPECT_EQ(call(&src, &srcLen, &dst, &dstLen, inflater.record()), orbStsDstFull);
    EXPECT_EQ(dstLen, room);
  }
  int mode = -1;
  ASSERT_EQ(inflater.blockType({1}, mode).status, orbStsNoErr);
  for (const Orb32s length : {0, -1, INT32_MIN}) {
    Orb8u byte = 0;
    Orb8u* src = &byte;
    Orb8u* dst = &byte;
    Orb32s srcLen = length, dstLen = 1;
    EXPECT_EQ(call(&src, &srcLen, &dst, &dstLen, inflater.record()), orbStsSrcShort);
    EXPECT_EQ(src, &byte);
    EXPECT_EQ(srcLen, length);
  }
}

// ---- GetBlockType

ORB_MEANING(orbsDecodeLZ77GetBlockType_8u, Checks) {
  Inflater inflater(build);
  Orb8u byte = 0x03;
  Orb8u* src = &byte;
  Orb8u* noSrc = nullptr;
  Orb32s srcLen = 1;
  Orb32s mode = 77;
  const auto type = ORB(orbsDecodeLZ77GetBlockType_8u);
  OrbLZ77DecState* const state = inflater.record();
  EXPECT_EQ(type(nullptr, &srcLen, &mode, state), orbStsNullPtrErr);
  EXPECT_EQ(type(&src, nullptr, &mode, state), orbStsNullPtrErr);
  EXPECT_EQ(type(&src, &srcLen, nullptr, state), orbStsNullPtrErr);
  EXPECT_EQ(type(&src, &srcLen, &mode, nullptr), orbStsNullPtrErr);
  EXPECT_EQ(type(&noSrc, &srcLen, &mode, state), orbStsNullPtrErr);
  for (const Orb32s length : {0, -1, INT32_MIN}) {
    srcLen = length;
    EXPECT_EQ(type(&src, &srcLen, &mode, state), orbStsSrcShort);
    EXPECT_EQ(srcLen, length);
  }
  EXPECT_EQ(src, &byte);
  EXPECT_EQ(mode, 77);
}

ORB_MEANING(orbsDecodeLZ77GetBlockType_8u, Kinds) {
  const struct {
    const char* header;
    int mode;
  } kinds[] = {{"000", kStored}, {"100", kStored},  {"010", kFixed},
               {"110", kFixed},  {"001", kDynamic}, {"101", kDynamic}};
  for (const auto& kind : kinds) {
    SCOPED_TRACE(kind.header);
    Inflater inflater(build);
    int mode = -1;
    expectStep(inflater.blockType(bytesOf(kind.header), mode), {orbStsNoErr, 1, {}, {}});
    EXPECT_EQ(mode, kind.mode);
    // Once more, with and without a source: the kind is known.
    for (const Bytes& src : {Bytes(), Bytes{0xFF, 0xFF}}) {
      mode = -1;
      expectStep(inflater.blockType(src, mode), {orbStsNoErr, 0, {}, {}});
      EXPECT_EQ(mode, kind.mode);
    }
  }
}

// A reserved type is passed over, with the 3 bits: here two of them in front of a fixed block.
ORB_MEANING(orbsDecodeLZ77GetBlockType_8u, ReservedType) {
  Inflater inflater(build);
  const std::string bits = "011111" + fixedBlock(true, {pairOf('r', 0)});
  Bytes stream = bytesOf(bits);
  int mode = -1;
  expectStep(inflater.blockType(stream, mode), {orbStsNoErr, 1, {}, {}});
  stream.erase(stream.begin());
  expectStep(inflater.blockType({}, mode), {orbStsNoErr, 0, {}, {}});
  EXPECT_EQ(mode, -1);
  // Two bits are left of the byte.
  expectStep(inflater.blockType({}, mode), {orbStsSrcShort, 0, {}, {}});
  expectStep(inflater.blockType(stream, mode), {orbStsNoErr, 1, {}, {}});
  EXPECT_EQ(mode, kFixed);
  stream.erase(stream.begin());
  expectStep(inflater.toBytes(kFixed, stream, 9), {orbStsStreamEnd, 1, {'r'}, {}});
}

// ---- Coders and kinds

// Without GetBlockType a coder reads the header, and takes its own kind only.
ORB_MEANING(orbsDecodeLZ77StoredHuff_8u, HeadersOfOtherKinds) {
  const char* const headers[] = {"000", "100", "010", "110", "001", "101", "011", "111"};
  for (size_t i = 0; i < 8; ++i) {
    SCOPED_TRACE(headers[i]);
    const Bytes stream = bytesOf(std::string(headers[i]) + "0000000000000");
    const int kind = i < 2 ? kStored : i < 4 ? kFixed : i < 6 ? kDynamic : -1;
    for (const int coder : {kFixed, kDynamic, kStored}) {
      if (coder == kind) continue;
      Inflater inflater(build);
      const RecordMemory before = inflater.memory();
      const InflateStep nothing = {orbStsErr, 0, {}, {}};
      if (coder == kStored) {
        expectStep(inflater.storedToPairs(stream, 9), nothing);
        expectStep(inflater.storedToPairs(stream, 0), nothing);
      } else {
        expectStep(inflater.toPairs(coder, stream, 9), nothing);
        expectStep(inflater.toBytes(coder, stream, 9), nothing);
      }
      expectStep(inflater.storedToBytes(stream, 9), nothing);
      EXPECT_TRUE(inflater.memory() == before);
    }
  }
}

// Nor does it go on with a block of another kind.
ORB_MEANING(orbsDecodeLZ77StoredHuff_8u, MiddlesOfOtherKinds) {
  for (const char* const header : {"000", "010", "001"}) {
    SCOPED_TRACE(header);
    Inflater inflater(build);
    int kind = -1;
    ASSERT_EQ(inflater.blockType(bytesOf(header), kind).status, orbStsNoErr);
    const Bytes src = {0, 0, 0, 0, 0, 0};
    const InflateStep nothing = {orbStsErr, 0, {}, {}};
    for (const int coder : {kFixed, kDynamic}) {
      if (coder == kind) continue;
      expectStep(inflater.toPairs(coder, src, 9), nothing);
      expectStep(inflater.toBytes(coder, src, 9), nothing);
    }
    // Behind GetBlockType a stored block goes to bytes only.
    expectStep(inflater.storedToPairs(src, 9), nothing);
    if (kind != kStored) {
      expectStep(inflater.storedToBytes(src, 9), nothing);
    }
  }
  // And a block that goes to pairs does not go on to bytes.
  Inflater inflater(build);
  std::string bits;
  appendStored(bits, false, {'x', 'y'});
  ASSERT_EQ(inflater.storedToPairs(bytesOf(bits), 1).status, orbStsDstFull);
  expectStep(inflater.storedToBytes({1, 2, 3}, 9), {orbStsErr, 0, {}, {}});
}

// ---- The end of the stream

// Behind it the source stands at the next byte, whatever was fetched ahead.
ORB_MEANING(orbsDecodeLZ77FixedHuff_8u, EndOfTheStream) {
  for (size_t literals = 0; literals < 40; ++literals) {
    // 9 bits each: the end falls on every bit of a byte.
    const Pairs pairs(literals, pairOf(200, 0));
    Bytes stream = bytesOf(fixedBlock(true, pairs));
    const int length = static_cast<int>(stream.size());
    stream.insert(stream.end(), 60, 0xA5);
    Inflater first(build), second(build);
    expectStep(first.toPairs(kFixed, stream, 100), {orbStsStreamEnd, length, {}, pairs});
    expectStep(second.toBytes(kFixed, stream, 100),
               {orbStsStreamEnd, length, Bytes(literals, 200), {}});
  }
}

// Whole bytes that a search has fetched go back too: to where an earlier call took them from.
ORB_MEANING(orbsDecodeLZ77FixedHuff_8u, BytesOfAnEarlierCallGoBack) {
  Inflater inflater(build);
  int mode = -1;
  ASSERT_EQ(inflater.blockType(bytesOf("110"), mode).status, orbStsNoErr);
  Bytes stream = {0, 0, 0xFF, 0xFF, 0x55};
  Orb8u* src = stream.data();
  Orb32s srcLen = 5;
  OrbLZ77Pair list[4];
  OrbLZ77Pair* pairs = list;
  Orb32s room = 4;
  const auto decode = ORB(orbsDecodeLZ77FixedHuff_8u);
  ASSERT_EQ(decode(&src, &srcLen, &pairs, &room, orbLZ77FlushSync, inflater.record()), orbStsNoErr);
  ASSERT_EQ(src, stream.data() + 4);
  // Seven zeros are the end of the block; the other 25 bits hold three bytes.
  ASSERT_EQ(decode(&src, &srcLen, &pairs, &room, orbLZ77FlushNone, inflater.record()),
            orbStsStreamEnd);
  EXPECT_EQ(src, stream.data() + 1);
  EXPECT_EQ(srcLen, 4);
  EXPECT_EQ(pairs, list);
}

// With the room used up, the end of the block is not looked at.
ORB_MEANING(orbsDecodeLZ77DynamicHuffFull_8u, NoRoomForTheEnd) {
  Random random("no room for the end");
  const Pairs pairs = {pairOf('a', 0), pairOf(10, 1)};
  const Bytes stream = bytesOf(dynamicBlock(random, true, pairs));
  Inflater first(build), second(build);
  InflateStep step = first.toBytes(kDynamic, stream, 11);
  EXPECT_EQ(step.status, orbStsDstFull);
  EXPECT_EQ(step.bytes, Bytes(11, 'a'));
  Bytes rest(stream.begin() + step.used, stream.end());
  EXPECT_EQ(first.toBytes(kDynamic, rest, 0).status, orbStsDstFull);
  step = first.toBytes(kDynamic, rest, 1);
  EXPECT_EQ(step.status, orbStsStreamEnd);
  EXPECT_TRUE(step.bytes.empty());
  step = second.toPairs(kDynamic, stream, 2);
  EXPECT_EQ(step.status, orbStsDstFull);
  EXPECT_TRUE(step.pairs == pairs);
}

// ---- The header of a dynamic block

// A header that says so in these tokens, with a code for all of them.
DynamicHeader headerWith(int literals, int distances, std::vector<LengthToken> tokens) {
  DynamicHeader header;
  header.literals = literals;
  header.distances = distances;
  for (size_t i = 0; i < 19; ++i) header.codeLengths[i] = i < 13 ? 4 : 5;
  header.tokens = std::move(tokens);
  return header;
}
// The same, with a token for each length.
DynamicHeader headerOf(std::vector<int> literals, const std::vector<int>& distances) {
  DynamicHeader header =
      headerWith(static_cast<int>(literals.size()), static_cast<int>(distances.size()), {});
  literals.insert(literals.end(), distances.begin(), distances.end());
  for (const int length : literals) header.tokens.push_back({length, 0});
  return header;
}
// Lengths of the symbols given; no codes for the others.
std::vector<int> lengthsOf(size_t symbols, const std::vector<std::pair<size_t, int>>& given) {
  std::vector<int> lengths(symbols);
  for (const auto& [symbol, length] : given) lengths[symbol] = length;
  return lengths;
}
// The end of the block and a literal, and two distances, 1 bit each.
const std::vector<int>& twoLiterals() {
  static const std::vector<int> lengths = lengthsOf(257, {{'a', 1}, {256, 1}});
  return lengths;
}
const std::vector<int> kTwoDistances = {1, 1};

// What the coders say of a block, on both routes, at once and byte by byte, and the model with
// them.
OrbStatus statusOf(const TestBuild& build, const std::string& bits) {
  const Bytes stream = bytesOf(bits);
  const Bytes before(32768, 'b');
  InflateModel pairsModel(before), bytesModel(before), slowModel(before);
  Inflater first(build), second(build), slow(build);
  for (Inflater* inflater : {&first, &second, &slow}) inflater->setDictionary(before);
  const InflateStep expected = pairsModel.toPairs(kDynamic, stream, 400);
  expectStep(first.toPairs(kDynamic, stream, 400), expected);
  expectStep(second.toBytes(kDynamic, stream, 9999), bytesModel.toBytes(kDynamic, stream, 9999));
  for (const Orb8u byte : stream) {
    const InflateStep step = slowModel.toBytes(kDynamic, {byte}, 300);
    expectStep(slow.toBytes(kDynamic, {byte}, 300), step);
    if (step.status != orbStsSrcShort) break;
  }
  if (expected.status == orbStsSizeErr) {
    // What is bad stays bad.
    EXPECT_EQ(first.toPairs(kDynamic, Bytes(99), 9).status, orbStsSizeErr);
    EXPECT_EQ(second.toBytes(kDynamic, Bytes(99), 9).status, orbStsSizeErr);
  }
  return expected.status;
}

ORB_MEANING(orbsDecodeLZ77DynamicHuff_8u, CodesForCodeLengths) {
  const struct {
    const char* what;
    std::vector<std::pair<size_t, int>> lengths;
  } bad[] = {{"none", {}},
             {"a single one", {{18, 1}}},
             {"two that leave room", {{18, 1}, {1, 2}}},
             {"too many", {{18, 1}, {1, 1}, {0, 7}}},
             {"too many of the longest", {{18, 1}, {1, 2}, {0, 3}, {2, 3}, {3, 7}}}};
  for (const auto& code : bad) {
    SCOPED_TRACE(code.what);
    DynamicHeader header;
    header.codeLengths = lengthsOf(19, code.lengths);
    EXPECT_EQ(statusOf(build, header.bits() + std::string(99, '0')), orbStsSizeErr);
  }
  // A code of two: 97 zeros, 1, 158 zeros, 1, and two distances.
  DynamicHeader header;
  header.distances = 2;
  header.codeLengths = lengthsOf(19, {{18, 1}, {1, 1}});
  header.tokens = {{18, 86}, {1, 0}, {18, 127}, {18, 9}, {1, 0}, {1, 0}, {1, 0}};
  EXPECT_EQ(statusOf(build, header.bits() + "01"), orbStsNoErr);
  // Of lengths that are not sent nothing is left from the block before.
  DynamicHeader shorter = header;
  shorter.sent = 17;  // without that of 1
  const Bytes stream = bytesOf(header.bits() + "01" + shorter.bits());
  Inflater inflater(build);
  const InflateStep step = inflater.toPairs(kDynamic, stream, 9);
  ASSERT_EQ(step.status, orbStsNoErr);
  EXPECT_EQ(inflater.toPairs(kDynamic, Bytes(stream.begin() + step.used, stream.end()), 9).status,
            orbStsSizeErr);
}

ORB_MEANING(orbsDecodeLZ77DynamicHuff_8u, CodesOfABlock) {
  const auto twoOf = [](int length) { return lengthsOf(257, {{'a', length}, {256, length}}); };
  const struct {
    const char* what;
    std::vector<int> literals, distances;
    OrbStatus expected;
  } cases[] = {
      {"two and two", twoLiterals(), kTwoDistances, orbStsNoErr},
      {"no literal", std::vector<int>(257), kTwoDistances, orbStsSizeErr},
      {"literals that leave room", twoOf(2), kTwoDistances, orbStsSizeErr},
      {"too many literals", std::vector<int>(257, 8), kTwoDistances, orbStsSizeErr},
      {"no distance", twoLiterals(), {0}, orbStsSizeErr},
      {"no distance in 32", twoLiterals(), std::vector<int>(32), orbStsSizeErr},
      {"a single distance", twoLiterals(), {1}, orbStsSizeErr},
      {"a single longer distance", twoLiterals(), {0, 0, 15}, orbStsSizeErr},
      {"distances that leave room", twoLiterals(), {1, 2}, orbStsSizeErr},
      {"too many distances", twoLiterals(), {1, 1, 15}, orbStsSizeErr},
      {"all distances", twoLiterals(), std::vector<int>(32, 5), orbStsNoErr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(statusOf(build, headerOf(c.literals, c.distances).bits() + "01"), c.expected);
  }
}

// Decodes up to 10 bits long; every other sequence of as many bits is none of a symbol.
ORB_MEANING(orbsDecodeLZ77DynamicHuff_8u, CodeOfOneLiteral) {
  for (int length = 1; length <= 15; ++length) {
    SCOPED_TRACE(length);
    const size_t bits = static_cast<size_t>(length);
    const std::string end = headerOf(lengthsOf(257, {{256, length}}), kTwoDistances).bits();
    const OrbStatus bad = orbStsSizeErr;
    EXPECT_EQ(statusOf(build, end + std::string(bits, '0')), length <= 10 ? orbStsNoErr : bad);
    EXPECT_EQ(statusOf(build, end + std::string(bits, '1')), bad);
    for (size_t one = 0; one < bits; ++one) {
      std::string code(bits, '0');
      code[one] = '1';
      EXPECT_EQ(statusOf(build, end + code), bad);
    }
    // A literal, over and over.
    const std::string literal = headerOf(lengthsOf(257, {{'q', length}}), kTwoDistances).bits();
    EXPECT_EQ(statusOf(build, literal + std::string(bits * 40, '0')),
              length <= 10 ? orbStsSrcShort : bad);
  }
}

ORB_MEANING(orbsDecodeLZ77DynamicHuff_8u, RepeatsOfLengths) {
  // The repeat of a length in front of which there is none: known when its bits are there.
  EXPECT_EQ(statusOf(build, headerWith(257, 1, {{16, 0}}).bits()), orbStsSizeErr);
  const std::string cut = headerWith(257, 1, {{16, 0}}).bits();
  Inflater inflater(build);
  const size_t bytes = (cut.size() - 1) / 8;
  EXPECT_EQ(inflater.toPairs(kDynamic, bytesOf(cut.substr(0, bytes * 8)), 9).status,
            orbStsSrcShort);

  // Lengths 1 for 255 and for the end of the block, and then repeats up to the end, or one more.
  const std::vector<LengthToken> literals = {{18, 127}, {18, 106}, {1, 0}, {1, 0}};
  const struct {
    int distances;
    std::vector<LengthToken> tokens;
  } ends[] = {{4, {{2, 0}, {16, 0}}},
              {8, {{3, 0}, {3, 0}, {16, 3}}},
              {5, {{1, 0}, {1, 0}, {17, 0}}},
              {12, {{1, 0}, {1, 0}, {17, 7}}},
              {13, {{1, 0}, {1, 0}, {18, 0}}}};
  for (const auto& e : ends) {
    std::vector<LengthToken> tokens = literals;
    tokens.insert(tokens.end(), e.tokens.begin(), e.tokens.end());
    EXPECT_EQ(statusOf(build, headerWith(257, e.distances, tokens).bits() + "01"), orbStsNoErr);
    for (int missing = 1; missing <= 2; ++missing) {
      EXPECT_EQ(statusOf(build, headerWith(257, e.distances - missing, tokens).bits() + "01"),
                orbStsSizeErr);
    }
  }
  // The longest repeat of zeros, where there is room for 137.
  EXPECT_EQ(statusOf(build, headerWith(257, 18, {{18, 127}, {18, 127}}).bits()), orbStsSizeErr);
}

// One repeat gives the last lengths of the literals and the first of the distances.
ORB_MEANING(orbsDecodeLZ77DynamicHuff_8u, RepeatsAcrossTheBorder) {
  // Lengths 1, 2, 2 for 254, 255 and the end of the block; 2 for four distances.
  const std::string lengths =
      headerWith(257, 4, {{18, 127}, {18, 105}, {1, 0}, {2, 0}, {16, 2}}).bits();
  // Lengths 1 for 255 and for the end of the block; 2 for the last four distances.
  const std::string zeros =
      headerWith(259, 6,
                 {{18, 127}, {18, 106}, {1, 0}, {1, 0}, {17, 1}, {2, 0}, {2, 0}, {2, 0}, {2, 0}})
          .bits();
  const std::string manyZeros =
      headerWith(259, 13,
                 {{18, 127}, {18, 106}, {1, 0}, {1, 0}, {18, 0}, {2, 0}, {2, 0}, {2, 0}, {2, 0}})
          .bits();
  const struct {
    std::string bits;
    int literal;
  } blocks[] = {{lengths + "10" + "11", 255}, {zeros + "0" + "1", 255}, {manyZeros + "01", 255}};
  for (const auto& block : blocks) {
    EXPECT_EQ(statusOf(build, block.bits), orbStsNoErr);
    Inflater inflater(build);
    EXPECT_TRUE(inflater.toPairs(kDynamic, bytesOf(block.bits), 9).pairs ==
                Pairs{pairOf(block.literal, 0)});
  }
}

// ---- Symbols

// Every length and distance with its extra bits, in codes of both kinds.
ORB_MEANING(orbsDecodeLZ77FixedHuff_8u, AllLengthsAndDistances) {
  Pairs pairs;
  for (int length = 3; length <= 258; ++length) pairs.push_back(pairOf(length, 32768));
  for (int distance = 1; distance <= 32768; distance += distance < 600 ? 1 : distance / 67) {
    pairs.push_back(pairOf(3, distance));
  }
  for (const Slot& slot : distanceSlots()) {
    pairs.push_back(pairOf(4, slot.base));
    pairs.push_back(pairOf(4, slot.base + (1 << slot.extraBits) - 1));
  }
  Random random("all of them");
  Inflater inflater(build);
  InflateStep step = inflater.toPairs(kFixed, bytesOf(fixedBlock(false, pairs)), 4000);
  EXPECT_EQ(step.status, orbStsNoErr);
  EXPECT_TRUE(step.pairs == pairs);
  ORB(orbsDecodeLZ77Reset_8u)(inflater.record());
  step = inflater.toPairs(kDynamic, bytesOf(dynamicBlock(random, false, pairs)), 4000);
  EXPECT_EQ(step.status, orbStsNoErr);
  EXPECT_TRUE(step.pairs == pairs);
}

// 258 can also be said with the extra bits of the symbol in front of its own.
ORB_MEANING(orbsDecodeLZ77FixedHuff_8u, TheLongestLengthInTwoWays) {
  const BlockCodes codes = fixedCodes();
  const std::string bits = "010" + codes.symbols[284] + "11111" + codes.distances[0] +
                           codes.symbols[285] + codes.distances[1] + codes.symbols[256];
  Inflater inflater(build);
  EXPECT_TRUE(inflater.toPairs(kFixed, bytesOf(bits), 9).pairs ==
              (Pairs{pairOf(258, 1), pairOf(258, 2)}));
}

// Symbols that may have codes but may not occur.
ORB_MEANING(orbsDecodeLZ77FixedHuff_8u, SymbolsOfNoUse) {
  const CodeStrings literals = canonicalCodes([] {
    std::vector<int> lengths(288, 8);
    std::fill(lengths.begin() + 144, lengths.begin() + 256, 9);
    std::fill(lengths.begin() + 256, lengths.begin() + 280, 7);
    return lengths;
  }());
  const CodeStrings distances = canonicalCodes(std::vector<int>(32, 5));
  for (const bool isEnd : {false, true}) {
    // At the end of the source, and with plenty behind.
    const std::string behind = isEnd ? "" : std::string(300, '0');
    for (const size_t symbol : {286u, 287u, 257u}) {
      for (const size_t distance : {30u, 31u, 0u}) {
        const std::string match = literals[symbol] + distances[distance];
        const bool isSound = symbol == 257 && distance == 0;
        const Bytes stream = bytesOf("110" + literals['s'] + match + literals[256] + behind);
        InflateModel pairsModel, bytesModel;
        Inflater first(build), second(build);
        const InflateStep step = pairsModel.toPairs(kFixed, stream, 99);
        EXPECT_EQ(step.status, isSound ? orbStsStreamEnd : orbStsSizeErr);
        expectStep(first.toPairs(kFixed, stream, 99), step);
        expectStep(second.toBytes(kFixed, stream, 400), bytesModel.toBytes(kFixed, stream, 400));
      }
    }
  }
  // The same in codes of a block's own: 288 literals of 8 and 9 bits, 32 distances of 5.
  std::vector<int> lengths(288, 8);
  std::fill(lengths.begin(), lengths.begin() + 64, 9);
  const CodeStrings own = canonicalCodes(lengths);
  const std::string header = headerOf(lengths, std::vector<int>(32, 5)).bits();
  for (const size_t symbol : {0u, 63u, 255u, 256u, 286u, 287u}) {
    EXPECT_EQ(statusOf(build, header + own[symbol] + own[256]),
              symbol < 257 ? orbStsNoErr : orbStsSizeErr);
  }
  for (size_t distance = 0; distance < 32; ++distance) {
    const size_t extraBits =
        distance < 30 ? static_cast<size_t>(distanceSlots()[distance].extraBits) : 0;
    EXPECT_EQ(statusOf(build, header + own[257] + distances[distance] +
                                  std::string(extraBits, '1') + own[256]),
              distance < 30 ? orbStsNoErr : orbStsSizeErr);
  }
}

// Codes whose tables are the largest that there are, each symbol once.
ORB_MEANING(orbsDecodeLZ77DynamicHuff_8u, LargestTables) {
  // How many codes there are of each length, from 1 on.
  const auto expandCounts = [](const std::vector<int>& counts, size_t symbols, bool fromTheEnd) {
    std::vector<int> lengths;
    for (size_t i = 0; i < counts.size(); ++i) {
      lengths.insert(lengths.end(), static_cast<size_t>(counts[i]), static_cast<int>(i + 1));
    }
    lengths.resize(symbols);
    if (fromTheEnd) std::reverse(lengths.begin(), lengths.end());
    return lengths;
  };
  const std::vector<int> literalCounts = {1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 231, 49, 1, 1, 2};
  const std::vector<int> distanceCounts = {1, 1, 1, 1, 1, 0, 0, 0, 11, 9, 1, 1, 1, 1, 2};
  for (const bool fromTheEnd : {false, true}) {
    const std::vector<int> literals = expandCounts(literalCounts, 288, fromTheEnd);
    const std::vector<int> distances = expandCounts(distanceCounts, 32, fromTheEnd);
    const CodeStrings literalCodes = canonicalCodes(literals);
    const CodeStrings distanceCodes = canonicalCodes(distances);
    std::string bits = headerOf(literals, distances).bits();
    for (size_t i = 0; i < 286; ++i) {
      if (i == 256) continue;
      bits += literalCodes[i];
      if (i < 256) continue;
      const size_t distance = 1 + i % 29;
      bits += std::string(static_cast<size_t>(lengthSlots()[i - 257].extraBits), '1');
      bits += distanceCodes[distance];
      bits += std::string(static_cast<size_t>(distanceSlots()[distance].extraBits), '1');
    }
    bits += literalCodes[256];
    EXPECT_EQ(statusOf(build, bits), orbStsNoErr);
    // They keep to their place in the record.
    Inflater inflater(build);
    ASSERT_EQ(inflater.toPairs(kDynamic, bytesOf(bits), 400).status, orbStsNoErr);
    for (const Orb8u byte : inflater.record()->unused) ASSERT_EQ(byte, 0);
  }
}

// Codes of all shapes, with bits behind them that mean anything.
ORB_MEANING(orbsDecodeLZ77DynamicHuff_8u, RandomCodes) {
  Random random("codes");
  for (int round = 0; round < 40; ++round) {
    const size_t literals = random.between<size_t>(257, 288);
    const size_t distances = random.between<size_t>(2, 32);
    std::vector<bool> usedLiterals(literals), usedDistances(distances);
    for (size_t i = 0; i < literals; ++i) usedLiterals[i] = !random.oneIn(1 + round % 4);
    for (size_t i = 0; i < distances; ++i) usedDistances[i] = !random.oneIn(1 + round % 3);
    const int deepest = random.between(9, 15);
    const std::string header =
        headerFor(random, false, randomLengths(random, usedLiterals, deepest),
                  randomLengths(random, usedDistances, deepest))
            .bits();
    // What any bits mean in them.
    statusOf(build, header + bitsOf(randomBytes(random, random.between<size_t>(0, 200))));
    ASSERT_FALSE(testing::Test::HasFailure());
  }
}

// ---- Stored blocks

ORB_MEANING(orbsDecodeLZ77StoredBlock_8u, StateByState) {
  // Three bits of header, five that are dropped, LEN and NLEN, and the bytes.
  std::string bits =
      "11111111"
      "000";
  appendStored(bits, false, {10, 11, 12, 13, 14});
  const Bytes stream = bytesOf(bits.substr(11));
  Inflater inflater(build);
  int mode = -1;
  expectStep(inflater.storedToBytes({stream}, 9), {orbStsErr, 0, {}, {}});
  expectStep(inflater.blockType({stream[0]}, mode), {orbStsNoErr, 1, {}, {}});
  expectStep(inflater.storedToBytes({}, 0), {orbStsDstFull, 0, {}, {}});
  expectStep(inflater.storedToBytes({}, 9), {orbStsSrcShort, 0, {}, {}});
  expectStep(inflater.storedToBytes({5, 0, 250}, 9), {orbStsSrcShort, 3, {}, {}});
  expectStep(inflater.storedToBytes({}, 9), {orbStsSrcShort, 0, {}, {}});
  // The kind is still told.
  expectStep(inflater.blockType({}, mode), {orbStsNoErr, 0, {}, {}});
  EXPECT_EQ(mode, kStored);
  expectStep(inflater.storedToBytes({255}, 9), {orbStsSrcShort, 1, {}, {}});
  expectStep(inflater.storedToBytes({10, 11}, 9), {orbStsSrcShort, 2, {10, 11}, {}});
  expectStep(inflater.storedToBytes({12, 13, 14}, 1), {orbStsDstFull, 1, {12}, {}});
  // Both used up: the room is told first. What is left over belongs to the next block.
  expectStep(inflater.storedToBytes({13}, 1), {orbStsDstFull, 1, {13}, {}});
  expectStep(inflater.storedToBytes({14, 15}, 1), {orbStsNoErr, 1, {14}, {}});
  expectStep(inflater.storedToBytes({15}, 1), {orbStsErr, 0, {}, {}});
}

ORB_MEANING(orbsDecodeLZ77StoredHuff_8u, StateByState) {
  Inflater inflater(build);
  const auto literals = [](const Bytes& bytes) {
    Pairs pairs;
    for (const Orb8u byte : bytes) pairs.push_back(pairOf(byte, 0));
    return pairs;
  };
  expectStep(inflater.storedToPairs({}, 9), {orbStsSrcShort, 0, {}, {}});
  // Header and length are read without room, too.
  expectStep(inflater.storedToPairs({0xF8, 5, 0}, 0), {orbStsSrcShort, 3, {}, {}});
  expectStep(inflater.storedToPairs({250, 255}, 0), {orbStsDstFull, 2, {}, {}});
  expectStep(inflater.storedToPairs({}, 9), {orbStsSrcShort, 0, {}, {}});
  expectStep(inflater.storedToPairs({1, 2}, 9), {orbStsSrcShort, 2, {}, literals({1, 2})});
  expectStep(inflater.storedToPairs({3, 4, 5}, 1), {orbStsDstFull, 1, {}, literals({3})});
  expectStep(inflater.storedToPairs({4}, 1), {orbStsDstFull, 1, {}, literals({4})});
  expectStep(inflater.storedToPairs({255, 6}, 9), {orbStsNoErr, 1, {}, literals({255})});
}

ORB_MEANING(orbsDecodeLZ77StoredBlock_8u, LengthsAndComplements) {
  const struct {
    Bytes words;
    bool isSound;
  } cases[] = {
      {{0, 0, 255, 255}, true},   {{1, 0, 254, 255}, true},   {{0, 1, 255, 254}, true},
      {{1, 0, 255, 255}, false},  {{0, 0, 255, 254}, false},  {{0, 0, 0, 0}, false},
      {{255, 255, 0, 0}, true},   {{255, 255, 1, 0}, false},  {{255, 255, 255, 255}, false},
      {{0, 128, 255, 127}, true}, {{0, 128, 255, 255}, false}};
  for (const auto& c : cases) {
    for (const bool isLast : {false, true}) {
      const Bytes header = {static_cast<Orb8u>(isLast)};
      const int length = c.words[0] | c.words[1] << 8;
      const OrbStatus ended = isLast ? orbStsStreamEnd : orbStsNoErr;
      const OrbStatus status = !c.isSound ? orbStsSizeErr : length == 0 ? ended : orbStsSrcShort;
      Inflater first(build), second(build);
      int mode = -1;
      ASSERT_EQ(first.blockType(header, mode).status, orbStsNoErr);
      expectStep(first.storedToBytes(c.words, 9), {status, 4, {}, {}});
      ASSERT_EQ(second.storedToPairs(header, 9).status, orbStsSrcShort);
      expectStep(second.storedToPairs(c.words, 9), {status, 4, {}, {}});
      if (c.isSound) continue;
      // The same state, with the same words in it.
      expectStep(first.storedToBytes({9, 9}, 9), {orbStsSizeErr, 0, {}, {}});
      expectStep(second.storedToPairs({9, 9}, 9), {orbStsSizeErr, 0, {}, {}});
    }
  }
}

// Bytes that wait in the accumulator, for a state that no function enters.
ORB_MEANING(orbsDecodeLZ77StoredBlock_8u, HeldBytes) {
  Inflater inflater(build);
  int mode = -1;
  ASSERT_EQ(inflater.blockType({0}, mode).status, orbStsNoErr);
  ASSERT_EQ(inflater.storedToBytes({2, 0, 253, 255}, 1).status, orbStsSrcShort);
  OrbLZ77DecState& record = *inflater.record();
  record.decState = 10;
  record.bitAcc = 0x434241;
  record.bitCount = 24;
  expectStep(inflater.storedToBytes({'x', 'y'}, 2), {orbStsDstFull, 0, {'A', 'B'}, {}});
  EXPECT_EQ(Orb32s{record.decState}, 10);
  expectStep(inflater.storedToBytes({'x', 'y'}, 2), {orbStsDstFull, 1, {'C', 'x'}, {}});
  expectStep(inflater.storedToBytes({'y'}, 2), {orbStsNoErr, 1, {'y'}, {}});
}

// ---- What came before, on the one-step route

// The ring goes round: literals, matches and stored bytes, in calls of all sizes.
ORB_MEANING(orbsDecodeLZ77DynamicHuffFull_8u, WhatCameBefore) {
  Random random("ring");
  for (const size_t room : {1000u, 32767u, 32768u, 32769u, 99999u}) {
    SCOPED_TRACE(room);
    Bytes text;
    std::string bits;
    while (text.size() < 100000) {
      const size_t start = text.size();
      if (random.oneIn(2)) {
        const Bytes bytes = randomBytes(
            random, random.oneIn(3) ? random.between(32760u, 32780u) : random.between(1u, 65535u));
        appendStored(bits, false, bytes);
        text.insert(text.end(), bytes.begin(), bytes.end());
      } else {
        Pairs pairs;
        for (int i = random.between(1, 60); i > 0; --i) {
          const int reach = static_cast<int>(std::min<size_t>(text.size(), 32768));
          if (reach == 0) pairs.push_back(pairOf('0', 0));
          if (reach == 0) text.push_back('0');
          if (reach == 0) continue;
          const int distance = random.oneIn(3) ? reach : random.between(1, reach);
          const int length = random.between(3, 258);
          pairs.push_back(pairOf(length, distance));
          appendMatch(text, length, distance);
        }
        bits += start % 2 == 0 ? fixedBlock(false, pairs) : dynamicBlock(random, false, pairs);
      }
    }
    Bytes rest = bytesOf(bits + fixedBlock(true, {}));
    Inflater inflater(build);
    Bytes out;
    int kind = -1;
    OrbStatus status = orbStsNoErr;
    while (status != orbStsStreamEnd) {
      if (status == orbStsNoErr) {
        const InflateStep type = inflater.blockType({rest.at(0)}, kind);
        ASSERT_EQ(type.status, orbStsNoErr);
        rest.erase(rest.begin(), rest.begin() + type.used);
      }
      const InflateStep step =
          kind == kStored ? inflater.storedToBytes(rest, room) : inflater.toBytes(kind, rest, room);
      status = step.status;
      ASSERT_TRUE(status == orbStsNoErr || status == orbStsDstFull || status == orbStsStreamEnd);
      out.insert(out.end(), step.bytes.begin(), step.bytes.end());
      rest.erase(rest.begin(), rest.begin() + step.used);
    }
    ASSERT_EQ(out, text);
  }
}

// Behind the end of the stream it stays as it was.
ORB_MEANING(orbsDecodeLZ77FixedHuffFull_8u, TheEndIsNotKept) {
  Inflater inflater(build);
  ASSERT_EQ(inflater.toBytes(kFixed, bytesOf(fixedBlock(false, {pairOf('k', 0)})), 9).status,
            orbStsNoErr);
  int mode = -1;
  // Three bits of filling, as a header: one of a stored block, and so on to the next byte.
  ASSERT_EQ(inflater.blockType({}, mode).status, orbStsNoErr);
  ASSERT_EQ(inflater.storedToBytes({0, 0, 255, 255}, 9).status, orbStsNoErr);
  ASSERT_EQ(inflater.toBytes(kFixed, bytesOf(fixedBlock(true, {pairOf('n', 0)})), 9).status,
            orbStsStreamEnd);
  expectStep(inflater.toBytes(kFixed, bytesOf(fixedBlock(true, {pairOf(3, 1)})), 9),
             {orbStsStreamEnd, 3, {'k', 'k', 'k'}, {}});
}

// A bad stream leaves the bytes in front of the fault in the output and in the ring.
ORB_MEANING(orbsDecodeLZ77FixedHuffFull_8u, BytesInFrontOfAFault) {
  const BlockCodes codes = fixedCodes();
  const Bytes stream = bytesOf("110" + codes.symbols['f'] + codes.symbols[257] + "11110");
  Inflater inflater(build);
  expectStep(inflater.toBytes(kFixed, stream, 9), {orbStsSizeErr, 3, {'f'}, {}});
  EXPECT_EQ(inflater.record()->window[0], 'f');
}

// ---- Both routes

ORB_MEANING(orbsDecodeLZ77FixedHuffFull_8u, SameBytesOnBothRoutes) {
  Random random("both routes");
  for (int round = 0; round < 10; ++round) {
    const Bytes before = randomBytes(random, 32768);
    const Pairs pairs = randomPairs(random, 1500, 32768);
    const int kind = round % 2 == 0 ? kFixed : kDynamic;
    const Bytes stream =
        bytesOf(kind == kFixed ? fixedBlock(true, pairs) : dynamicBlock(random, true, pairs));
    Bytes text = before;
    for (const OrbLZ77Pair& pair : pairs) {
      if (pair.offset == 0) text.push_back(static_cast<Orb8u>(pair.lengthOrLiteral));
      if (pair.offset != 0) appendMatch(text, pair.lengthOrLiteral, pair.offset);
    }
    text.erase(text.begin(), text.begin() + 32768);
    Inflater first(build), second(build);
    first.setDictionary(before);
    second.setDictionary(before);
    expectStep(first.toBytes(kind, stream, text.size() + 100),
               {orbStsStreamEnd, static_cast<int>(stream.size()), text, {}});
    const InflateStep step = second.toPairs(kind, stream, 2000);
    EXPECT_EQ(step.status, orbStsStreamEnd);
    EXPECT_TRUE(step.pairs == pairs);
    expectStep(second.expand(step.pairs, text.size()), {orbStsStreamEnd, 1500, text, {}});
    ASSERT_FALSE(testing::Test::HasFailure());
  }
}

// ---- The search for a marker

ORB_MEANING(orbsDecodeLZ77FixedHuff_8u, MarkerSearch) {
  Random random("marker");
  const Bytes marker = {0, 0, 255, 255};
  for (const OrbLZ77Flush flush : {orbLZ77FlushSync, orbLZ77FlushRestart}) {
    for (const int coder : {kFixed, kDynamic}) {
      for (size_t front = 0; front < 12; ++front) {
        Bytes stream = randomBytes(random, front);
        for (Orb8u& byte : stream) byte = random.oneIn(2) ? byte : random.oneIn(2) ? 0 : 255;
        stream.insert(stream.end(), marker.begin(), marker.end());
        stream.insert(stream.end(), {1, 2, 3});
        for (const size_t held : {0u, 1u, 2u}) {
          for (const size_t piece : {1u, 2u, 3u, 5u, 99u}) {
            Inflater inflater(build);
            InflateModel model;
            // Bits that a header leaves are dropped.
            int mode = -1, modelMode = -1;
            if (held == 1) {
              inflater.blockType({0xF9}, mode);
              model.blockType({0xF9}, modelMode);
            }
            if (held == 2) {
              ASSERT_EQ(inflater.toPairs(kFixed, {0xFA, 0xFF}, 1).status, orbStsDstFull);
              ASSERT_EQ(model.toPairs(kFixed, {0xFA, 0xFF}, 1).status, orbStsDstFull);
            }
            for (size_t at = 0; at < stream.size();) {
              const Bytes src(
                  stream.begin() + static_cast<ptrdiff_t>(at),
                  stream.begin() + static_cast<ptrdiff_t>(std::min(stream.size(), at + piece)));
              const InflateStep expected = model.findMarker(src);
              // The room is not looked at.
              expectStep(inflater.toPairs(coder, src, at % 2, flush), expected);
              at += static_cast<size_t>(expected.used);
              if (expected.status == orbStsNoErr) break;
            }
            // It stays where it is.
            expectStep(inflater.toPairs(coder, {}, 0, flush), {orbStsNoErr, 0, {}, {}});
            expectStep(inflater.toPairs(coder, {7, 7}, 9, flush), {orbStsNoErr, 0, {}, {}});
            ASSERT_FALSE(testing::Test::HasFailure());
          }
        }
      }
    }
  }
}

ORB_MEANING(orbsDecodeLZ77DynamicHuff_8u, NoMarker) {
  for (const Bytes& stream : {Bytes(), Bytes(3), Bytes(100), Bytes{0, 0, 255},
                              Bytes{0, 255, 255, 0}, Bytes{0, 0, 254, 255, 0, 0, 255, 254}}) {
    Inflater inflater(build);
    expectStep(inflater.toPairs(kDynamic, stream, 9, orbLZ77FlushSync),
               {orbStsSrcShort, static_cast<int>(stream.size()), {}, {}});
    expectStep(inflater.toPairs(kDynamic, {}, 9, orbLZ77FlushSync), {orbStsSrcShort, 0, {}, {}});
  }
  // Three bytes in one call and the last in another.
  Inflater inflater(build);
  EXPECT_EQ(inflater.toPairs(kDynamic, {9, 0, 0, 255}, 9, orbLZ77FlushSync).status, orbStsSrcShort);
  expectStep(inflater.toPairs(kDynamic, {255, 9}, 9, orbLZ77FlushSync), {orbStsNoErr, 1, {}, {}});
}

// Any other value means to decode, and the one-step route always does.
ORB_MEANING(orbsDecodeLZ77FixedHuff_8u, OtherFlushes) {
  const Pairs pairs = {pairOf('o', 0)};
  const Bytes stream = bytesOf(fixedBlock(true, pairs));
  for (const Orb32s flush : {0, 3, 4, -1, INT32_MIN, INT32_MAX}) {
    Inflater inflater(build);
    expectStep(inflater.toPairs(kFixed, stream, 9, flush),
               {orbStsStreamEnd, static_cast<int>(stream.size()), {}, pairs});
  }
  for (Orb32s flush = -1; flush < 5; ++flush) {
    Inflater inflater(build);
    expectStep(inflater.toBytes(kFixed, stream, 9, flush),
               {orbStsStreamEnd, static_cast<int>(stream.size()), {'o'}, {}});
  }
}

// ---- Agreement

// All calls of a stream, cut and damaged, in records that begin with the same bytes.
void agreeOnStreams(const TestBuild& build, Random& random, Route route) {
  for (int round = 0; round < 30; ++round) {
    RandomStream stream = randomStream(random, 3, 100);
    for (int n = random.between(0, 3); n > 0; --n) {
      stream.bytes[random.between<size_t>(0, stream.bytes.size() - 1)] = random.any<Orb8u>();
    }
    const int misalignment = random.between(0, 7);
    Inflater mine(build, misalignment), theirs(orbtest::runnableBuilds()[0], misalignment);
    Bytes rest = stream.bytes;
    for (int call = 0; call < 40; ++call) {
      const Bytes src(rest.begin(), rest.begin() + random.between<ptrdiff_t>(
                                                       0, static_cast<ptrdiff_t>(rest.size())));
      const size_t room = random.between<size_t>(0, random.oneIn(2) ? 10 : 1000);
      const int what = random.between(0, 9);
      const auto run = [&](Inflater& inflater) {
        int mode = -1;
        InflateStep step;
        if (what == 0) return inflater.toPairs(kFixed, src, room, orbLZ77FlushSync);
        if (what < 3) {
          step = inflater.blockType(src, mode);
          step.bytes = {static_cast<Orb8u>(mode)};
          return step;
        }
        const int kind = what % 3;
        if (route == Route::kPairs) {
          return kind == kStored ? inflater.storedToPairs(src, room)
                                 : inflater.toPairs(kind, src, room);
        }
        return kind == kStored ? inflater.storedToBytes(src, room)
                               : inflater.toBytes(kind, src, room);
      };
      const InflateStep expected = run(theirs);
      expectStep(run(mine), expected);
      theirs.record()->cursor = mine.record()->cursor;  // each has its own address
      ASSERT_TRUE(mine.memory() == theirs.memory());
      rest.erase(rest.begin(), rest.begin() + std::max(0, expected.used));
    }
  }
}
ORB_AGREEMENT(orbsDecodeLZ77GetBlockType_8u) {
  agreeOnStreams(build, random, Route::kBytes);
}
ORB_AGREEMENT(orbsDecodeLZ77FixedHuff_8u) {
  agreeOnStreams(build, random, Route::kPairs);
}
ORB_AGREEMENT(orbsDecodeLZ77DynamicHuff_8u) {
  agreeOnStreams(build, random, Route::kPairs);
}
ORB_AGREEMENT(orbsDecodeLZ77StoredHuff_8u) {
  agreeOnStreams(build, random, Route::kPairs);
}
ORB_AGREEMENT(orbsDecodeLZ77FixedHuffFull_8u) {
  agreeOnStreams(build, random, Route::kBytes);
}
ORB_AGREEMENT(orbsDecodeLZ77DynamicHuffFull_8u) {
  agreeOnStreams(build, random, Route::kBytes);
}
ORB_AGREEMENT(orbsDecodeLZ77StoredBlock_8u) {
  agreeOnStreams(build, random, Route::kBytes);
}

}  // namespace
