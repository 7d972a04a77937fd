// Huffman tables and bit-stream state (ITU-T T.81 annexes C and K.2).
#include <array>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <numeric>
#include <vector>

#include "jpeg/huffman_records.h"
#include "tests/jpeg/huffman_model.h"
#include "tests/support/builds.h"
#include "tests/support/guarded.h"
#include "tests/support/no_memory.h"
#include "tests/support/plane.h"

namespace {

using orbtest::binary;
using orbtest::Codes;
using orbtest::codesOf;
using orbtest::DecoderTable;
using orbtest::GuardedBytes;
using orbtest::HuffmanLists;
using orbtest::Placement;
using orbtest::Plane;
using orbtest::Random;

// A record in memory of its own, with canaries around it.
template <class Record>
class RecordMemory {
 public:
  explicit RecordMemory(int misalignment = 0) : bytes_(sizeof(Record), 1, {0, misalignment}) {}
  Record* get() { return reinterpret_cast<Record*>(bytes_.data()); }
  const Record* operator->() const { return reinterpret_cast<const Record*>(bytes_.data()); }
  Plane<Orb8u>& bytes() { return bytes_; }

 private:
  Plane<Orb8u> bytes_;
};
using EncodeSpec = RecordMemory<OrbiEncodeHuffmanSpec>;
using DecodeSpec = RecordMemory<OrbiDecodeHuffmanSpec>;

HuffmanLists listsOf(std::vector<Orb8u> bits) {
  bits.resize(16);
  const int total = std::accumulate(bits.begin(), bits.end(), 0);
  HuffmanLists lists = {bits, {}};
  for (int k = 0; k < total; ++k) lists.vals.push_back(static_cast<Orb8u>(255 - k));
  return lists;
}

// Lists that an encoder, a decoder or neither accepts: sparse, full and overfull at any length.
HuffmanLists anyLists(Random& random) {
  if (random.oneIn(4)) return orbtest::randomLists(random, random.between(1, 256));
  std::vector<Orb8u> bits(16);
  const int lengths = random.between(0, 6);
  for (int i = 0; i < lengths; ++i) {
    const int length = random.between(1, 16);
    const int most = length < 8 ? 1 << length : 256;
    bits[static_cast<size_t>(length - 1)] =
        static_cast<Orb8u>(random.between(0, std::min(most, random.oneIn(3) ? 255 : 8)));
  }
  HuffmanLists lists = listsOf(bits);
  for (Orb8u& symbol : lists.vals) symbol = random.any<Orb8u>();
  return lists;
}

// ---- Sizes

template <class Function>
void expectSize(Function* function, int size) {
  Plane<Orb32s> stored(1, 1, {0, 1});
  EXPECT_EQ(function(nullptr), orbStsNullPtrErr);
  EXPECT_EQ(function(stored.data()), orbStsNoErr);
  EXPECT_EQ(stored.at(0), size);
  stored.expectOutsideUntouched();
}
template <class Function>
void expectSizesAgree(Function* px, Function* build) {
  Orb32s expected = 0, actual = 0;
  EXPECT_EQ(build(&actual), px(&expected));
  EXPECT_EQ(actual, expected);
}

#define ORB_SIZE_TESTS(name, size)         \
  ORB_MEANING(name, StoresTheSize) {       \
    expectSize(ORB(name), size);           \
  }                                        \
  ORB_AGREEMENT(name) {                    \
    expectSizesAgree(PX(name), ORB(name)); \
  }
ORB_SIZE_TESTS(orbiEncodeHuffmanSpecGetBufSize_JPEG_8u, 1024)
ORB_SIZE_TESTS(orbiDecodeHuffmanSpecGetBufSize_JPEG_8u, 1644)
ORB_SIZE_TESTS(orbiEncodeHuffmanStateGetBufSize_JPEG_8u, 1048)
ORB_SIZE_TESTS(orbiDecodeHuffmanStateGetBufSize_JPEG_8u, 24)

// ---- orbiEncodeHuffmanSpecInit_JPEG_8u

template <class Memory, class Function>
void expectSpecChecks(Function* function) {
  const HuffmanLists lists = orbtest::luminanceDC();
  Memory spec;
  EXPECT_EQ(function(nullptr, lists.vals.data(), spec.get()), orbStsNullPtrErr);
  EXPECT_EQ(function(lists.bits.data(), nullptr, spec.get()), orbStsNullPtrErr);
  EXPECT_EQ(function(lists.bits.data(), lists.vals.data(), nullptr), orbStsNullPtrErr);
  spec.bytes().expectUntouched();
  EXPECT_EQ(function(lists.bits.data(), lists.vals.data(), spec.get()), orbStsNoErr);
}
ORB_MEANING(orbiEncodeHuffmanSpecInit_JPEG_8u, ChecksPointers) {
  expectSpecChecks<EncodeSpec>(ORB(orbiEncodeHuffmanSpecInit_JPEG_8u));
}

// Makes the table in a record at an odd address, from lists that end where memory ends.
template <class Memory, class Function>
OrbStatus initSpec(Function* function, const HuffmanLists& lists, Memory& spec) {
  const GuardedBytes bits(lists.bits), vals(lists.vals);
  const OrbStatus status = function(bits.data(), vals.data(), spec.get());
  spec.bytes().expectOutsideUntouched();
  return status;
}

template <class Function>
void expectEncodes(Function* function, const HuffmanLists& lists) {
  EncodeSpec spec(3);
  ASSERT_EQ(initSpec(function, lists, spec), orbStsNoErr);
  const Codes codes = codesOf(lists);
  for (int symbol = 0; symbol < 256; ++symbol) {
    const Orb32u entry = spec->entries[symbol];
    const auto code = codes.find(symbol);
    if (code == codes.end()) {
      ASSERT_EQ(entry, 0u) << symbol;
    } else {
      ASSERT_EQ(binary(entry & 65535, static_cast<int>(entry >> 16)), code->second) << symbol;
    }
  }
}
template <class Function>
void expectEncoderRefuses(Function* function, const HuffmanLists& lists) {
  EncodeSpec spec(1);
  EXPECT_EQ(initSpec(function, lists, spec), orbStsJpegHuffTableErr);
  for (const Orb32u entry : spec->entries) ASSERT_EQ(entry, 0u);
}

ORB_MEANING(orbiEncodeHuffmanSpecInit_JPEG_8u, TypicalTables) {
  expectEncodes(ORB(orbiEncodeHuffmanSpecInit_JPEG_8u), orbtest::luminanceDC());
  expectEncodes(ORB(orbiEncodeHuffmanSpecInit_JPEG_8u), orbtest::luminanceAC());
  expectEncodes(ORB(orbiEncodeHuffmanSpecInit_JPEG_8u), orbtest::chrominanceDC());
  expectEncodes(ORB(orbiEncodeHuffmanSpecInit_JPEG_8u), orbtest::chrominanceAC());
}

// Code words as tables K.3 to K.6 of T.81 print them.
ORB_MEANING(orbiEncodeHuffmanSpecInit_JPEG_8u, PrintedCodeWords) {
  struct Word {
    HuffmanLists lists;
    int symbol;
    const char* code;
  };
  const Word words[] = {
      {orbtest::luminanceDC(), 0, "00"},
      {orbtest::luminanceDC(), 2, "011"},
      {orbtest::luminanceDC(), 11, "111111110"},
      {orbtest::chrominanceDC(), 2, "10"},
      {orbtest::chrominanceDC(), 11, "11111111110"},
      {orbtest::luminanceAC(), 0x00, "1010"},
      {orbtest::luminanceAC(), 0x01, "00"},
      {orbtest::luminanceAC(), 0x06, "1111000"},
      {orbtest::luminanceAC(), 0x11, "1100"},
      {orbtest::luminanceAC(), 0x82, "111111111000000"},
      {orbtest::luminanceAC(), 0xF0, "11111111001"},
      {orbtest::luminanceAC(), 0xFA, "1111111111111110"},
      {orbtest::chrominanceAC(), 0x00, "00"},
      {orbtest::chrominanceAC(), 0xF0, "1111111010"},
      {orbtest::chrominanceAC(), 0xFA, "1111111111111110"},
  };
  for (const Word& word : words) {
    EncodeSpec spec;
    ASSERT_EQ(initSpec(ORB(orbiEncodeHuffmanSpecInit_JPEG_8u), word.lists, spec), orbStsNoErr);
    const Orb32u entry = spec->entries[word.symbol];
    EXPECT_EQ(binary(entry & 65535, static_cast<int>(entry >> 16)), word.code);
  }
}

ORB_MEANING(orbiEncodeHuffmanSpecInit_JPEG_8u, NoCodesAreAnEmptyTable) {
  expectEncodes(ORB(orbiEncodeHuffmanSpecInit_JPEG_8u), listsOf({}));
}

ORB_MEANING(orbiEncodeHuffmanSpecInit_JPEG_8u, ARepeatedSymbolHasItsLastCode) {
  const HuffmanLists lists = {{0, 2, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, {7, 9, 7, 9}};
  EncodeSpec spec;
  ASSERT_EQ(initSpec(ORB(orbiEncodeHuffmanSpecInit_JPEG_8u), lists, spec), orbStsNoErr);
  EXPECT_EQ(spec->entries[7], 3u << 16 | 4);
  EXPECT_EQ(spec->entries[9], 4u << 16 | 10);
}

ORB_MEANING(orbiEncodeHuffmanSpecInit_JPEG_8u, RefusesAllOnesAtEveryLength) {
  for (int length = 1; length <= 16; ++length) {
    // One code of each length, and at last two: 0, 10, 110, ... 1..10, 1..11.
    std::vector<Orb8u> bits(static_cast<size_t>(length), 1);
    expectEncodes(ORB(orbiEncodeHuffmanSpecInit_JPEG_8u), listsOf(bits));
    bits.back() = 2;
    expectEncoderRefuses(ORB(orbiEncodeHuffmanSpecInit_JPEG_8u), listsOf(bits));
    bits.back() = 3;
    expectEncoderRefuses(ORB(orbiEncodeHuffmanSpecInit_JPEG_8u), listsOf(bits));
    // The fault shows even with room behind it.
    if (length == 16) continue;
    bits.push_back(0);
    expectEncoderRefuses(ORB(orbiEncodeHuffmanSpecInit_JPEG_8u), listsOf(bits));
  }
}

ORB_MEANING(orbiEncodeHuffmanSpecInit_JPEG_8u, RefusesTooManyCodes) {
  const auto init = ORB(orbiEncodeHuffmanSpecInit_JPEG_8u);
  expectEncoderRefuses(init, listsOf({2}));
  expectEncoderRefuses(init, listsOf({0, 0, 0, 0, 0, 0, 0, 255, 1, 1}));  // 257
  expectEncoderRefuses(init, listsOf({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 255, 2}));
  expectEncoderRefuses(init, listsOf(std::vector<Orb8u>(16, 255)));
  expectEncodes(init, listsOf({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 255, 1}));  // 256
  expectEncodes(init, listsOf({0, 0, 0, 0, 0, 0, 0, 255, 1}));
}

ORB_MEANING(orbiEncodeHuffmanSpecInit_JPEG_8u, AnyLists) {
  Random random("encoder lists");
  int refused = 0;
  for (int round = 0; round < 500; ++round) {
    const HuffmanLists lists = anyLists(random);
    // Whether the codes of some length leave none behind them.
    bool full = lists.vals.size() > 256;
    int64_t taken = 0;
    for (int length = 1; length <= 16; ++length) {
      taken += int64_t{lists.bits[static_cast<size_t>(length - 1)]} << (16 - length);
      full = full || taken >= 65536;
    }
    refused += full;
    if (full) {
      expectEncoderRefuses(ORB(orbiEncodeHuffmanSpecInit_JPEG_8u), lists);
    } else {
      expectEncodes(ORB(orbiEncodeHuffmanSpecInit_JPEG_8u), lists);
    }
  }
  EXPECT_GT(refused, 50);
  EXPECT_LT(refused, 450);
}

template <class Memory, class Function>
void expectSpecsAgree(Function* px, Function* build, Random& random) {
  for (int round = 0; round < 400; ++round) {
    const HuffmanLists lists = anyLists(random);
    const int misalignment = random.between(0, 15);
    Memory expected(misalignment), actual(misalignment);
    ASSERT_EQ(initSpec(build, lists, actual), initSpec(px, lists, expected));
    ASSERT_TRUE(actual.bytes().sameBytes(expected.bytes()));
  }
}
ORB_AGREEMENT(orbiEncodeHuffmanSpecInit_JPEG_8u) {
  expectSpecsAgree<EncodeSpec>(PX(orbiEncodeHuffmanSpecInit_JPEG_8u),
                               ORB(orbiEncodeHuffmanSpecInit_JPEG_8u), random);
}

// ---- orbiDecodeHuffmanSpecInit_JPEG_8u

ORB_MEANING(orbiDecodeHuffmanSpecInit_JPEG_8u, ChecksPointers) {
  expectSpecChecks<DecodeSpec>(ORB(orbiDecodeHuffmanSpecInit_JPEG_8u));
}

template <class Function>
void expectDecodes(Function* function, const HuffmanLists& lists) {
  const DecoderTable table(lists);
  DecodeSpec spec(5);
  if (!table.valid) {
    EXPECT_EQ(initSpec(function, lists, spec), orbStsJpegHuffTableErr);
    return;
  }
  ASSERT_EQ(initSpec(function, lists, spec), orbStsNoErr);
  for (size_t i = 0; i < 256; ++i) {
    ASSERT_EQ(spec->symbols[i], table.symbols[i]) << i;
    const auto [length, symbol] = table.lookup[i];
    ASSERT_EQ(spec->lookup[i], static_cast<Orb32u>(length << 16 | symbol)) << i;
  }
  for (size_t l = 0; l < 18; ++l) {
    ASSERT_EQ(spec->minCode[l], table.first[l]) << l;
    ASSERT_EQ(spec->maxCode[l], table.last[l]) << l;
    ASSERT_EQ(spec->valOffset[l], table.offset[l]) << l;
  }
}

ORB_MEANING(orbiDecodeHuffmanSpecInit_JPEG_8u, TypicalTables) {
  expectDecodes(ORB(orbiDecodeHuffmanSpecInit_JPEG_8u), orbtest::luminanceDC());
  expectDecodes(ORB(orbiDecodeHuffmanSpecInit_JPEG_8u), orbtest::luminanceAC());
  expectDecodes(ORB(orbiDecodeHuffmanSpecInit_JPEG_8u), orbtest::chrominanceDC());
  expectDecodes(ORB(orbiDecodeHuffmanSpecInit_JPEG_8u), orbtest::chrominanceAC());
}

ORB_MEANING(orbiDecodeHuffmanSpecInit_JPEG_8u, TakesFullLengths) {
  const auto init = ORB(orbiDecodeHuffmanSpecInit_JPEG_8u);
  DecodeSpec two;
  ASSERT_EQ(initSpec(init, listsOf({2}), two), orbStsNoErr);
  EXPECT_EQ(two->lookup[0], 1u << 16 | 255);
  EXPECT_EQ(two->lookup[255], 1u << 16 | 254);
  EXPECT_EQ(two->maxCode[1], 1);

  // 256 codes of length 8 do not fit the byte of a count; 255 and two of length 9 are as full, and
  // so are 254 and four of length 9 with one of them missing.
  expectDecodes(init, listsOf({0, 0, 0, 0, 0, 0, 0, 255, 1}));
  expectDecodes(init, listsOf({0, 0, 0, 0, 0, 0, 128, 128}));
  expectDecodes(init, listsOf({1, 1, 1, 1, 1, 1, 1, 2}));
}

ORB_MEANING(orbiDecodeHuffmanSpecInit_JPEG_8u, RefusesTooManyCodes) {
  const auto refuse = [&](std::vector<Orb8u> bits) {
    DecodeSpec spec;
    EXPECT_EQ(initSpec(ORB(orbiDecodeHuffmanSpecInit_JPEG_8u), listsOf(bits), spec),
              orbStsJpegHuffTableErr);
  };
  refuse({3});
  refuse({0, 5});
  refuse({2, 1});
  refuse({0, 0, 0, 0, 0, 0, 0, 255, 2});  // 257
  refuse({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 255, 2});
  refuse(std::vector<Orb8u>(16, 255));
  refuse({2, 0, 0, 0, 0, 0, 0, 1});
  // One more than there can be of length 9 is taken: no stream leads to it.
  expectDecodes(ORB(orbiDecodeHuffmanSpecInit_JPEG_8u), listsOf({1, 1, 1, 1, 1, 1, 1, 1, 3}));
}

ORB_MEANING(orbiDecodeHuffmanSpecInit_JPEG_8u, NoCodesAreAnEmptyTable) {
  DecodeSpec spec;
  ASSERT_EQ(initSpec(ORB(orbiDecodeHuffmanSpecInit_JPEG_8u), listsOf({}), spec), orbStsNoErr);
  for (int l = 1; l < 18; ++l) EXPECT_EQ(spec->maxCode[l], 65535);
  for (const Orb32u entry : spec->lookup) EXPECT_EQ(entry, 0u);
}

ORB_MEANING(orbiDecodeHuffmanSpecInit_JPEG_8u, LongCodesHaveNoLookup) {
  DecodeSpec spec;
  ASSERT_EQ(initSpec(ORB(orbiDecodeHuffmanSpecInit_JPEG_8u),
                     listsOf({1, 0, 0, 0, 0, 0, 0, 0, 100, 1}), spec),
            orbStsNoErr);
  for (int next = 0; next < 256; ++next) {
    EXPECT_EQ(spec->lookup[next], next < 128 ? 1u << 16 | 255 : 0u);
  }
  EXPECT_EQ(spec->minCode[9], 256);
  EXPECT_EQ(spec->maxCode[9], 355);
  EXPECT_EQ(spec->valOffset[9], 1);
  EXPECT_EQ(spec->minCode[10], 712);
  EXPECT_EQ(spec->valOffset[10], 101);
}

ORB_MEANING(orbiDecodeHuffmanSpecInit_JPEG_8u, CodesPast16BitsWrap) {
  DecodeSpec spec;
  ASSERT_EQ(initSpec(ORB(orbiDecodeHuffmanSpecInit_JPEG_8u),
                     listsOf({2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 200}), spec),
            orbStsNoErr);
  EXPECT_EQ(spec->minCode[16], 0);
  EXPECT_EQ(spec->maxCode[16], 199);
  EXPECT_EQ(spec->valOffset[16], 2);
}

ORB_MEANING(orbiDecodeHuffmanSpecInit_JPEG_8u, AnyLists) {
  Random random("decoder lists");
  for (int round = 0; round < 500; ++round) {
    expectDecodes(ORB(orbiDecodeHuffmanSpecInit_JPEG_8u), anyLists(random));
    if (testing::Test::HasFailure()) return;
  }
}

ORB_AGREEMENT(orbiDecodeHuffmanSpecInit_JPEG_8u) {
  expectSpecsAgree<DecodeSpec>(PX(orbiDecodeHuffmanSpecInit_JPEG_8u),
                               ORB(orbiDecodeHuffmanSpecInit_JPEG_8u), random);
}

// ---- InitAlloc and Free

template <class Record, class Init, class InitAlloc, class Free>
void expectSpecAllocation(Init* init, InitAlloc* initAlloc, Free* free) {
  const HuffmanLists lists = orbtest::chrominanceAC();
  Record* const unset = reinterpret_cast<Record*>(&init);
  Record* spec = unset;
  EXPECT_EQ(initAlloc(nullptr, lists.vals.data(), &spec), orbStsNullPtrErr);
  EXPECT_EQ(initAlloc(lists.bits.data(), nullptr, &spec), orbStsNullPtrErr);
  EXPECT_EQ(initAlloc(lists.bits.data(), lists.vals.data(), nullptr), orbStsNullPtrErr);
  EXPECT_EQ(spec, unset);

  ASSERT_EQ(initAlloc(lists.bits.data(), lists.vals.data(), &spec), orbStsNoErr);
  ASSERT_NE(spec, unset);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(spec) % 64, 0u);
  RecordMemory<Record> expected;
  ASSERT_EQ(init(lists.bits.data(), lists.vals.data(), expected.get()), orbStsNoErr);
  EXPECT_EQ(std::memcmp(spec, expected.get(), sizeof(Record)), 0);
  EXPECT_EQ(free(spec), orbStsNoErr);
  EXPECT_EQ(free(nullptr), orbStsNullPtrErr);

  // After a fault in the lists there is a record to be released.
  const HuffmanLists bad = listsOf(std::vector<Orb8u>(16, 17));
  spec = nullptr;
  EXPECT_EQ(initAlloc(bad.bits.data(), bad.vals.data(), &spec), orbStsJpegHuffTableErr);
  ASSERT_NE(spec, nullptr);
  EXPECT_EQ(free(spec), orbStsNoErr);
}

template <class Record, class InitAlloc, class Free>
void expectStateAllocation(InitAlloc* initAlloc, Free* free) {
  EXPECT_EQ(initAlloc(nullptr), orbStsNullPtrErr);
  Record* state = nullptr;
  ASSERT_EQ(initAlloc(&state), orbStsNoErr);
  ASSERT_NE(state, nullptr);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(state) % 64, 0u);
  const Orb8u* const bytes = reinterpret_cast<const Orb8u*>(state);
  for (size_t i = 0; i < sizeof(Record); ++i) ASSERT_EQ(bytes[i], 0) << i;
  EXPECT_EQ(free(state), orbStsNoErr);
  EXPECT_EQ(free(nullptr), orbStsNullPtrErr);
}

#define ORB_SPEC_ALLOCATION_TESTS(Kind)                                  \
  static void Kind##Allocation(const orbtest::TestBuild& build) {        \
    expectSpecAllocation<Orbi##Kind>(ORB(orbi##Kind##Init_JPEG_8u),      \
                                     ORB(orbi##Kind##InitAlloc_JPEG_8u), \
                                     ORB(orbi##Kind##Free_JPEG_8u));     \
  }                                                                      \
  ORB_MEANING(orbi##Kind##InitAlloc_JPEG_8u, Allocates) {                \
    Kind##Allocation(build);                                             \
  }                                                                      \
  ORB_AGREEMENT(orbi##Kind##InitAlloc_JPEG_8u) {                         \
    Kind##Allocation(build);                                             \
  }                                                                      \
  ORB_MEANING(orbi##Kind##Free_JPEG_8u, Releases) {                      \
    Kind##Allocation(build);                                             \
  }                                                                      \
  ORB_AGREEMENT(orbi##Kind##Free_JPEG_8u) {                              \
    Kind##Allocation(build);                                             \
  }
ORB_SPEC_ALLOCATION_TESTS(EncodeHuffmanSpec)
ORB_SPEC_ALLOCATION_TESTS(DecodeHuffmanSpec)

#define ORB_STATE_ALLOCATION_TESTS(Kind)                                  \
  static void Kind##Allocation(const orbtest::TestBuild& build) {         \
    expectStateAllocation<Orbi##Kind>(ORB(orbi##Kind##InitAlloc_JPEG_8u), \
                                      ORB(orbi##Kind##Free_JPEG_8u));     \
  }                                                                       \
  ORB_MEANING(orbi##Kind##InitAlloc_JPEG_8u, Allocates) {                 \
    Kind##Allocation(build);                                              \
  }                                                                       \
  ORB_AGREEMENT(orbi##Kind##InitAlloc_JPEG_8u) {                          \
    Kind##Allocation(build);                                              \
  }                                                                       \
  ORB_MEANING(orbi##Kind##Free_JPEG_8u, Releases) {                       \
    Kind##Allocation(build);                                              \
  }                                                                       \
  ORB_AGREEMENT(orbi##Kind##Free_JPEG_8u) {                               \
    Kind##Allocation(build);                                              \
  }
ORB_STATE_ALLOCATION_TESTS(EncodeHuffmanState)
ORB_STATE_ALLOCATION_TESTS(DecodeHuffmanState)

// `call`, which is handed a pointer to a pointer, reports it and stores nothing.
template <class Record, class Call>
void expectRefusalWithoutMemory(Call call) {
  orbtest::expectWithoutMemory([&] {
    Record* const unset = reinterpret_cast<Record*>(&call);
    Record* record = unset;
    return call(&record) == orbStsNullPtrErr && record == unset;
  });
}

ORB_MEANING(orbiEncodeHuffmanSpecInitAlloc_JPEG_8u, NoMemory) {
  const HuffmanLists lists = orbtest::luminanceDC();
  expectRefusalWithoutMemory<OrbiEncodeHuffmanSpec>([&](OrbiEncodeHuffmanSpec** spec) {
    return ORB(orbiEncodeHuffmanSpecInitAlloc_JPEG_8u)(lists.bits.data(), lists.vals.data(), spec);
  });
}
ORB_MEANING(orbiDecodeHuffmanSpecInitAlloc_JPEG_8u, NoMemory) {
  const HuffmanLists lists = orbtest::luminanceDC();
  expectRefusalWithoutMemory<OrbiDecodeHuffmanSpec>([&](OrbiDecodeHuffmanSpec** spec) {
    return ORB(orbiDecodeHuffmanSpecInitAlloc_JPEG_8u)(lists.bits.data(), lists.vals.data(), spec);
  });
}
ORB_MEANING(orbiEncodeHuffmanStateInitAlloc_JPEG_8u, NoMemory) {
  expectRefusalWithoutMemory<OrbiEncodeHuffmanState>(ORB(orbiEncodeHuffmanStateInitAlloc_JPEG_8u));
}
ORB_MEANING(orbiDecodeHuffmanStateInitAlloc_JPEG_8u, NoMemory) {
  expectRefusalWithoutMemory<OrbiDecodeHuffmanState>(ORB(orbiDecodeHuffmanStateInitAlloc_JPEG_8u));
}

// ---- State Init

template <class Record, class Function>
void expectReset(Function* function) {
  EXPECT_EQ(function(nullptr), orbStsNullPtrErr);
  RecordMemory<Record> state(7);
  ASSERT_EQ(function(state.get()), orbStsNoErr);
  for (const Orb8u byte : state.bytes().samples()) ASSERT_EQ(byte, 0);
  state.bytes().expectOutsideUntouched();
}
ORB_MEANING(orbiEncodeHuffmanStateInit_JPEG_8u, Resets) {
  expectReset<OrbiEncodeHuffmanState>(ORB(orbiEncodeHuffmanStateInit_JPEG_8u));
}
ORB_AGREEMENT(orbiEncodeHuffmanStateInit_JPEG_8u) {
  expectReset<OrbiEncodeHuffmanState>(ORB(orbiEncodeHuffmanStateInit_JPEG_8u));
}
ORB_MEANING(orbiDecodeHuffmanStateInit_JPEG_8u, Resets) {
  expectReset<OrbiDecodeHuffmanState>(ORB(orbiDecodeHuffmanStateInit_JPEG_8u));
}
ORB_AGREEMENT(orbiDecodeHuffmanStateInit_JPEG_8u) {
  expectReset<OrbiDecodeHuffmanState>(ORB(orbiDecodeHuffmanStateInit_JPEG_8u));
}

// ---- orbiEncodeHuffmanRawTableInit_JPEG_8u

using Statistics = std::vector<Orb32s>;

// The procedure of T.81 K.2 over trees that are lists of their leaves.
struct OptimalLists {
  bool tooLong = false;
  std::vector<Orb8u> bits, vals;

  explicit OptimalLists(const Statistics& statistics) {
    struct Tree {
      Orb32s frequency;
      int name;
      std::vector<std::pair<int, int>> leaves;  // symbol and depth
    };
    std::vector<Tree> trees;
    for (int i = 0; i < 257; ++i) {
      trees.push_back({i < 256 ? statistics[static_cast<size_t>(i)] : 1, i, {{i, 0}}});
    }
    std::vector<Tree> done;
    const auto rarer = [](const Tree& a, const Tree& b) {
      return a.frequency != b.frequency ? a.frequency < b.frequency : a.name > b.name;
    };
    for (;;) {
      // Trees without occurrences and too frequent ones take no further part.
      for (size_t i = trees.size(); i-- > 0;) {
        if (trees[i].frequency != 0 && trees[i].frequency <= 1000000000) continue;
        done.push_back(trees[i]);
        trees.erase(trees.begin() + static_cast<ptrdiff_t>(i));
      }
      if (trees.size() < 2) break;
      std::sort(trees.begin(), trees.end(), rarer);
      const uint32_t sum =
          static_cast<uint32_t>(trees[0].frequency) + static_cast<uint32_t>(trees[1].frequency);
      trees[0].frequency = static_cast<Orb32s>(sum);
      for (const auto& leaf : trees[1].leaves) trees[0].leaves.push_back(leaf);
      for (auto& leaf : trees[0].leaves) ++leaf.second;
      trees.erase(trees.begin() + 1);
    }
    done.insert(done.end(), trees.begin(), trees.end());

    std::vector<int> size(257);
    for (const Tree& tree : done) {
      for (const auto& [symbol, depth] : tree.leaves) size[static_cast<size_t>(symbol)] = depth;
    }
    std::vector<int> lengths;  // of all codes
    for (const int s : size) {
      tooLong = tooLong || s > 32;
      if (s > 0) lengths.push_back(s);
    }
    if (tooLong) return;
    // Figure K.3: the two longest codes go up one level together, and one of them takes a place
    // that is made by splitting a shorter code's.
    for (;;) {
      std::sort(lengths.begin(), lengths.end());
      if (lengths.empty() || lengths.back() <= 16) break;
      const int longest = lengths.back();
      lengths.resize(lengths.size() - 2);
      const auto shorter = std::upper_bound(lengths.begin(), lengths.end(), longest - 2) - 1;
      ++*shorter;
      lengths.push_back(*shorter);
      lengths.push_back(longest - 1);
    }
    if (!lengths.empty()) lengths.pop_back();
    bits.resize(16);
    for (const int length : lengths) ++bits[static_cast<size_t>(length - 1)];
    for (int length = 1; length <= 32; ++length) {
      for (size_t symbol = 0; symbol < 256; ++symbol) {
        if (size[symbol] == length) vals.push_back(static_cast<Orb8u>(symbol));
      }
    }
  }
};

template <class Function>
HuffmanLists makeLists(Function* function, const Statistics& statistics) {
  GuardedBytes guarded(1024 + 4);
  std::memcpy(guarded.data(), statistics.data(), 1024);
  Plane<Orb8u> bits(16, 1), vals(256, 1);
  const OrbStatus status =
      function(reinterpret_cast<const Orb32s*>(guarded.data()), bits.data(), vals.data());
  const OptimalLists expected(statistics);
  if (expected.tooLong) {
    EXPECT_EQ(status, orbStsJpegHuffTableErr);
    bits.expectUntouched();
    vals.expectUntouched();
    return {};
  }
  EXPECT_EQ(status, orbStsNoErr);
  const int codes = static_cast<int>(expected.vals.size());
  bits.expectOutsideUntouched();
  vals.expectOutsideUntouched(codes, 1);
  HuffmanLists lists = {bits.samples(), vals.samples()};
  lists.vals.resize(expected.vals.size());
  EXPECT_EQ(lists.bits, expected.bits);
  EXPECT_EQ(lists.vals, expected.vals);
  return lists;
}

ORB_MEANING(orbiEncodeHuffmanRawTableInit_JPEG_8u, ChecksPointers) {
  const Statistics statistics(257, 1);
  Plane<Orb8u> bits(16, 1), vals(256, 1);
  const auto function = ORB(orbiEncodeHuffmanRawTableInit_JPEG_8u);
  EXPECT_EQ(function(nullptr, bits.data(), vals.data()), orbStsNullPtrErr);
  EXPECT_EQ(function(statistics.data(), nullptr, vals.data()), orbStsNullPtrErr);
  EXPECT_EQ(function(statistics.data(), bits.data(), nullptr), orbStsNullPtrErr);
  bits.expectUntouched();
  vals.expectUntouched();
}

ORB_MEANING(orbiEncodeHuffmanRawTableInit_JPEG_8u, NoneAndOneOccurrence) {
  Statistics statistics(256);
  HuffmanLists lists = makeLists(ORB(orbiEncodeHuffmanRawTableInit_JPEG_8u), statistics);
  EXPECT_EQ(lists.bits, std::vector<Orb8u>(16));
  EXPECT_TRUE(lists.vals.empty());
  for (const int symbol : {0, 17, 255}) {
    statistics.assign(256, 0);
    statistics[static_cast<size_t>(symbol)] = 12345;
    lists = makeLists(ORB(orbiEncodeHuffmanRawTableInit_JPEG_8u), statistics);
    EXPECT_EQ(lists.bits[0], 1);
    EXPECT_EQ(lists.vals, std::vector<Orb8u>{static_cast<Orb8u>(symbol)});
  }
}

ORB_MEANING(orbiEncodeHuffmanRawTableInit_JPEG_8u, EqualCounts) {
  const HuffmanLists lists =
      makeLists(ORB(orbiEncodeHuffmanRawTableInit_JPEG_8u), Statistics(256, 1000));
  // 257 leaves: all at depth 8 but the reserved one and the one that shares a branch with it.
  EXPECT_EQ(lists.bits[7], 255);
  EXPECT_EQ(lists.bits[8], 1);
  EXPECT_EQ(lists.vals.back(), 255);
}

// Behind the reserved symbol's 1 each count is the sum of the two before it: the tree is one long
// branch, as deep as there are symbols.
Statistics fibonacci(int symbols) {
  Statistics statistics(256);
  int count = 1, next = 2;
  for (int i = 0; i < symbols; ++i) {
    statistics[static_cast<size_t>(i * 3)] = count;
    next += count;
    count = next - count;
  }
  return statistics;
}

ORB_MEANING(orbiEncodeHuffmanRawTableInit_JPEG_8u, LongCodesAreShortened) {
  for (int symbols = 1; symbols <= 40; ++symbols) {
    const HuffmanLists lists =
        makeLists(ORB(orbiEncodeHuffmanRawTableInit_JPEG_8u), fibonacci(symbols));
    if (testing::Test::HasFailure()) return;
    EXPECT_EQ(lists.vals.empty(), symbols > 32) << symbols;
    if (symbols > 32) continue;
    EncodeSpec spec;
    EXPECT_EQ(initSpec(ORB(orbiEncodeHuffmanSpecInit_JPEG_8u), lists, spec), orbStsNoErr);
  }
}

ORB_MEANING(orbiEncodeHuffmanRawTableInit_JPEG_8u, CountsAboveABillionArePassedOver) {
  Statistics statistics(256);
  statistics[3] = 1000000000;
  statistics[4] = 1000000001;
  statistics[5] = 7;
  const HuffmanLists lists = makeLists(ORB(orbiEncodeHuffmanRawTableInit_JPEG_8u), statistics);
  EXPECT_EQ(lists.vals, (std::vector<Orb8u>{3, 5}));
}

// No more than any other prefix code, with the reserved symbol counted once.
int64_t leastBits(const Statistics& statistics) {
  std::multiset<int64_t> trees = {1};
  for (const Orb32s count : statistics) {
    if (count > 0) trees.insert(count);
  }
  int64_t bits = 0;
  while (trees.size() > 1) {
    const int64_t sum = *trees.begin() + *std::next(trees.begin());
    trees.erase(trees.begin());
    trees.erase(trees.begin());
    trees.insert(sum);
    bits += sum;
  }
  return bits;
}

ORB_MEANING(orbiEncodeHuffmanRawTableInit_JPEG_8u, OptimalForAnyCounts) {
  Random random("statistics");
  for (int round = 0; round < 60; ++round) {
    Statistics statistics(256);
    const int spread = random.between(0, 20);
    const int symbols = random.between(2, 256);
    for (int i = 0; i < symbols; ++i) {
      statistics[random.between<size_t>(0, 255)] =
          random.between(1, 1 << random.between(0, spread));
    }
    const HuffmanLists lists = makeLists(ORB(orbiEncodeHuffmanRawTableInit_JPEG_8u), statistics);
    if (testing::Test::HasFailure()) return;
    EncodeSpec spec;
    ASSERT_EQ(initSpec(ORB(orbiEncodeHuffmanSpecInit_JPEG_8u), lists, spec), orbStsNoErr);
    int64_t bits = 0;
    Orb32u longest = 0;
    for (size_t symbol = 0; symbol < 256; ++symbol) {
      const Orb32u length = spec->entries[symbol] >> 16;
      ASSERT_EQ(length != 0, statistics[symbol] != 0);
      bits += int64_t{length} * statistics[symbol];
      longest = std::max(longest, length);
    }
    if (longest < 16) {
      ASSERT_EQ(bits + longest, leastBits(statistics));
    }
  }
}

// Sums that wrap or vanish, counts below zero.
ORB_MEANING(orbiEncodeHuffmanRawTableInit_JPEG_8u, OddCounts) {
  Random random("odd statistics");
  for (int round = 0; round < 100; ++round) {
    Statistics statistics(256);
    const int symbols = random.between(1, 256);
    const int kind = random.between(0, 2);
    for (int i = 0; i < symbols; ++i) {
      statistics[random.between<size_t>(0, 255)] = kind == 0   ? random.any<Orb32s>()
                                                   : kind == 1 ? random.extreme<Orb32s>()
                                                               : random.between(-3, 3);
    }
    makeLists(ORB(orbiEncodeHuffmanRawTableInit_JPEG_8u), statistics);
    if (testing::Test::HasFailure()) return;
  }
}

ORB_AGREEMENT(orbiEncodeHuffmanRawTableInit_JPEG_8u) {
  for (int round = 0; round < 100; ++round) {
    Plane<Orb32s> statistics(257, 1, Placement::any(random));
    if (round % 3 == 0) {
      statistics.fillAny(random);
    } else if (round % 3 == 1) {
      statistics.fillExtreme(random);
    } else {
      statistics.fill([&] { return 1 << random.between(0, 24); });
    }
    const Placement place = Placement::any(random);
    Plane<Orb8u> bits(16, 1, place), vals(256, 1, place);
    Plane<Orb8u> expectedBits(16, 1, place), expectedVals(256, 1, place);
    const OrbStatus status = PX(orbiEncodeHuffmanRawTableInit_JPEG_8u)(
        statistics.data(), expectedBits.data(), expectedVals.data());
    EXPECT_EQ(
        ORB(orbiEncodeHuffmanRawTableInit_JPEG_8u)(statistics.data(), bits.data(), vals.data()),
        status);
    ASSERT_TRUE(bits.sameBytes(expectedBits));
    ASSERT_TRUE(vals.sameBytes(expectedVals));
  }
}

}  // namespace
