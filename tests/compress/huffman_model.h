// The byte Huffman coder in strings of bits, slowly: the judge of the library's. With it tables and
// records for its tests.
#ifndef ORB_TESTS_COMPRESS_HUFFMAN_MODEL_H
#define ORB_TESTS_COMPRESS_HUFFMAN_MODEL_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "compress/huffman_records.h"
#include "tests/support/bit_string.h"
#include "tests/support/builds.h"
#include "tests/support/guarded.h"
#include "tests/support/plane.h"

namespace orbtest::huffman {

using Bytes = std::vector<Orb8u>;
using Table = std::vector<Orb32s>;  // 256 values, by byte
using Codes = std::map<int, std::string>;

inline size_t at(int i) {
  return static_cast<size_t>(i);
}
inline int sizeOf(const Bytes& bytes) {
  return static_cast<int>(bytes.size());
}

// ---- Tables

inline Table tableOf(const std::map<int, Orb32s>& values) {
  Table table(256);
  for (const auto& [byte, value] : values) table[at(byte)] = value;
  return table;
}
// The lengths for the first bytes, in their order.
inline Table lengthsFrom(const std::vector<Orb32s>& lengths) {
  Table table(256);
  std::copy(lengths.begin(), lengths.end(), table.begin());
  return table;
}
// One code of each length, and a second one of the longest: the longest code of zeros.
inline Table staircase(int longest) {
  std::vector<Orb32s> lengths;
  for (int length = 1; length <= longest; ++length) lengths.push_back(length);
  lengths.push_back(longest);
  return lengthsFrom(lengths);
}
// The lengths of a full code of up to 256 bytes: one code is split again and again.
inline Table fullLengths(Random& random, int count, int longest) {
  std::vector<Orb32s> lengths = {0};
  const bool isDeep = random.oneIn(2);
  while (static_cast<int>(lengths.size()) < count) {
    const size_t last = lengths.size() - 1;
    const size_t split = isDeep && !random.oneIn(4) ? last : random.between(size_t{0}, last);
    if (lengths[split] == longest) {
      if (*std::min_element(lengths.begin(), lengths.end()) == longest) break;
      continue;
    }
    lengths.push_back(++lengths[split]);
  }
  if (lengths[0] == 0) lengths = {1, 1};
  // Any bytes may have them.
  Table table(256);
  for (const Orb32s length : lengths) {
    size_t byte;
    do byte = random.between(size_t{0}, size_t{255});
    while (table[byte] != 0);
    table[byte] = length;
  }
  return table;
}

inline Table randomFrequencies(Random& random) {
  Table frequencies(256);
  const int used = random.between(2, 256);
  const int kind = random.between(0, 3);
  for (int i = 0; i < used; ++i) {
    const int most = kind == 0 ? 3 : kind == 1 ? 100 : kind == 2 ? 1 << (i % 16) : INT32_MAX / 256;
    frequencies[at(random.between(0, 255))] = random.between(1, most);
  }
  return frequencies;
}

// Runs of equal lengths, short or long. They make no full code.
inline Table randomLengths(Random& random) {
  Table lengths(256);
  const int longestRun = random.oneIn(2) ? 4 : 120;
  for (size_t first = 0; first < 256;) {
    const size_t end = std::min(first + at(random.between(1, longestRun)), size_t{256});
    const Orb32s length = random.between(0, random.oneIn(3) ? 32 : 12);
    std::fill(lengths.begin() + static_cast<ptrdiff_t>(first),
              lengths.begin() + static_cast<ptrdiff_t>(end), length);
    first = end;
  }
  return lengths;
}

// In memory that ends where nothing may be touched.
class TableMemory {
 public:
  explicit TableMemory(const Table& table) : bytes_(table.size() * sizeof(Orb32s)) {
    std::memcpy(bytes_.data(), table.data(), table.size() * sizeof(Orb32s));
  }
  Orb32s* get() { return reinterpret_cast<Orb32s*>(bytes_.data()); }
  Table values() const {
    Table table(256);
    std::memcpy(table.data(), bytes_.data(), 256 * sizeof(Orb32s));
    return table;
  }

 private:
  GuardedBytes bytes_;
};

// A record at an odd address, with canaries around it.
class Record {
 public:
  explicit Record(int misalignment = 3) : bytes_(sizeof(OrbHuffState), 1, {0, misalignment}) {}
  OrbHuffState* get() { return reinterpret_cast<OrbHuffState*>(bytes_.data()); }
  Plane<Orb8u>& bytes() { return bytes_; }

 private:
  Plane<Orb8u> bytes_;
};

// ---- The model of the codes

// A full code takes all numbers of its longest length, and each byte as many of them as its code
// leaves open: the longest codes and the highest bytes first.
inline Codes codesOf(const Table& lengths) {
  const int longest = *std::max_element(lengths.begin(), lengths.end());
  std::vector<std::pair<int, int>> order;
  for (int byte = 0; byte < 256; ++byte) {
    if (lengths[at(byte)] != 0) order.push_back({lengths[at(byte)], byte});
  }
  std::sort(order.rbegin(), order.rend());
  Codes codes;
  int64_t taken = 0;
  for (const auto& [length, byte] : order) {
    codes[byte] = binary(taken, longest).substr(0, at(length));
    taken += int64_t{1} << (longest - length);
  }
  return codes;
}
inline std::string bitsOf(const Codes& codes, const Bytes& bytes) {
  std::string bits;
  for (const Orb8u byte : bytes) {
    const auto code = codes.find(byte);
    if (code != codes.end()) bits += code->second;
  }
  return bits;
}
// Bytes that have codes, the rarer the longer the codes are.
inline Bytes randomText(Random& random, const Codes& codes, int length) {
  std::map<std::string, int> bytes;
  for (const auto& [byte, code] : codes) bytes[code] = byte;
  Bytes text;
  while (sizeOf(text) < length) {
    std::string code;
    while (bytes.count(code) == 0) code += random.oneIn(2) ? '1' : '0';
    text.push_back(static_cast<Orb8u>(bytes[code]));
    // And now and then any of them.
    if (random.oneIn(8)) {
      auto any = codes.begin();
      std::advance(any, random.between(size_t{0}, codes.size() - 1));
      text.push_back(static_cast<Orb8u>(any->first));
    }
  }
  text.resize(at(length));
  return text;
}

// ---- Making a record

template <class Function>
void expectInitChecks(Function* function, const Table& good) {
  TableMemory table(good);
  Record record;
  EXPECT_EQ(function(nullptr, record.get()), orbStsNullPtrErr);
  EXPECT_EQ(function(table.get(), nullptr), orbStsNullPtrErr);
  EXPECT_EQ(function(nullptr, nullptr), orbStsNullPtrErr);
  record.bytes().expectUntouched();
  EXPECT_EQ(function(table.get(), record.get()), orbStsNoErr);
  record.bytes().expectOutsideUntouched();
}

template <class Function>
void expectInitsAgree(Function* px, Function* build, const Table& values) {
  TableMemory table(values);
  Record expected(1), actual(2);
  ASSERT_EQ(build(table.get(), actual.get()), px(table.get(), expected.get()));
  ASSERT_TRUE(actual.bytes().sameBytes(expected.bytes()));
}

// A record that has these lengths, and codes in either direction.
inline void makeRecord(const orbtest::TestBuild& build, const Table& lengths, Record& record) {
  TableMemory table(lengths);
  ASSERT_EQ(ORB(orbsDecodeHuffInit_8u)(table.get(), record.get()), orbStsNoErr);
}

}  // namespace orbtest::huffman

#endif
