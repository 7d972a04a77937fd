// What a host of coefficient coding holds: a record at an odd address, and a bit stream that is
// written or read, in memory that ends where it may be touched last.
#ifndef ORB_TESTS_JPEGXR_CODING_HOST_H
#define ORB_TESTS_JPEGXR_CODING_HOST_H

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "jpegxr/vlc_records.h"
#include "tests/jpegxr/coefficient_model.h"
#include "tests/support/builds.h"
#include "tests/support/guarded.h"
#include "tests/support/plane.h"

namespace orbtest::jxr {

// A call writes or reads no more than this.
constexpr int kMostBytes = 120;

struct State {
  Plane<Orb8u> bytes{sizeof(OrbiVLCState_JPEGXR), 1, {0, 1}};

  // As a host starts it.
  State() {
    bytes.fill([] { return Orb8u{0x5A}; });
    PX(orbiVLCInit_JPEGXR)(record());
    for (int scan = 0; scan < 3; ++scan) PX(orbiVLCScanReset_JPEGXR)(record(), scan);
  }
  OrbiVLCState_JPEGXR* record() { return reinterpret_cast<OrbiVLCState_JPEGXR*>(bytes.data()); }
};

// A record and its model take the same steps.
struct Twins {
  State state;
  Model model;

  void adapt(int kind) {
    PX(orbiVLCAdapt_JPEGXR)(state.record(), kind);
    model.adapt(kind);
  }
  void setScan(int scan) {
    PX(orbiVLCScanSet_JPEGXR)(state.record(), scan);
    model.scan = static_cast<size_t>(scan);
  }
  void resetScan(int scan) {
    PX(orbiVLCScanReset_JPEGXR)(state.record(), scan);
    model.scans[static_cast<size_t>(scan)].reset();
  }
  // What a host does between blocks, every now and then.
  void housekeeping(Random& random) {
    if (random.oneIn(12)) adapt(random.between(0, 1));
    if (random.oneIn(40)) resetScan(random.between(0, 2));
    if (random.oneIn(3)) setScan(random.between(0, 2));
  }
};

struct Writer {
  GuardedBytes memory;
  Orb8u* at;
  Orb32u bits = 0;
  Orb32u count = 0;

  explicit Writer(int capacity) : memory(static_cast<size_t>(capacity)), at(memory.data()) {}
  // All that was written, and what waits. Behind that there are zeros.
  std::string text() const {
    std::string all;
    for (const Orb8u* byte = memory.data(); byte != at; ++byte) all += binary(*byte, 8);
    EXPECT_EQ(binary(bits, 32).substr(count), std::string(32 - count, '0'));
    return all + binary(bits, 32).substr(0, count);
  }
};

struct Reader {
  GuardedBytes memory;
  Orb16u* at;
  Orb32u bits = 0;
  Orb32u count = 0;

  explicit Reader(const std::vector<uint8_t>& bytes)
      : memory(bytes), at(reinterpret_cast<Orb16u*>(memory.data())) {}
  // The bits that have been used.
  int64_t used() const {
    return 8 * (reinterpret_cast<const uint8_t*>(at) - memory.data()) - static_cast<int64_t>(count);
  }
};

// Text as bytes with as much behind it as a reader fetches that has used all of it.
inline std::vector<uint8_t> bytesToRead(std::string text, size_t used) {
  const size_t units = (used + 16 + 15) / 16;
  text.resize(16 * units, '0');
  return packBits(text);
}

inline std::string randomBits(Random& random, int count) {
  std::string text;
  // In stretches with few or many ones, so that long codes come up.
  for (int ones = 4; count > 0; --count) {
    if (random.oneIn(50)) ones = random.between(1, 7);
    text += random.between(1, 8) <= ones ? '1' : '0';
  }
  return text;
}

// 16 coefficients by natural index, of up to `bits` bits of magnitude and of any density.
inline std::vector<int64_t> randomCoefficients(Random& random, int bits) {
  std::vector<int64_t> values(16);
  const int sparseness = random.between(1, 12), most = random.between(1, bits);
  for (int64_t& value : values) {
    if (!random.oneIn(sparseness)) continue;
    value = random.any<Orb32u>() >> (32 - random.between(1, most));
    if (random.oneIn(2)) value = -value;
  }
  return values;
}

template <class T>
Plane<T> blockOf(const std::vector<int64_t>& values, Placement at) {
  Plane<T> block(4, 4, at);
  for (size_t i = 0; i < 16; ++i) {
    block.set(places()[i].first, places()[i].second, static_cast<T>(values[i]));
  }
  return block;
}

// The list of a block by a scan, which adapts.
inline std::vector<RunLevel> listOf(const std::vector<int64_t>& values, int modelBits, Scan& scan) {
  const std::vector<int> order = scan.order;
  std::vector<RunLevel> list;
  int zeros = 0;
  for (size_t position = 1; position < 16; ++position) {
    const int64_t value = values[static_cast<size_t>(order[position])];
    const int64_t level = value / (int64_t{1} << modelBits);
    if (level == 0) {
      ++zeros;
      continue;
    }
    list.push_back({zeros, level});
    zeros = 0;
    scan.use(position);
  }
  return list;
}

// What is left to fixed-length coding: low bits, or a whole value with its sign.
inline int64_t residualOf(int64_t value, int modelBits, int trimBits) {
  const int64_t unit = int64_t{1} << modelBits, trimmed = int64_t{1} << trimBits;
  if (value / unit != 0) return std::abs(value) % unit / trimmed * 2;
  const int64_t kept = value / trimmed;
  return std::abs(kept) * 4 + (kept < 0 ? 2 : 0) + (kept != 0 ? 1 : 0);
}

}  // namespace orbtest::jxr

#endif
