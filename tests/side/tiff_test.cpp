// Rows of TIFF files: PackBits (TIFF 6.0, section 9), and samples as two rows of bytes.
#include <algorithm>
#include <numeric>
#include <vector>

#include "tests/support/builds.h"
#include "tests/support/faults.h"
#include "tests/support/guarded.h"
#include "tests/support/plane.h"

namespace {

using orbtest::expectChecks;
using orbtest::GuardedBytes;
using orbtest::Placement;
using orbtest::Plane;
using orbtest::Random;
using orbtest::TestBuild;

using Bytes = std::vector<Orb8u>;

Bytes joined(std::initializer_list<Bytes> parts) {
  Bytes whole;
  for (const Bytes& part : parts) whole.insert(whole.end(), part.begin(), part.end());
  return whole;
}
// first, first + 1, ...
Bytes counting(int count, int first = 0) {
  Bytes bytes(static_cast<size_t>(count));
  std::iota(bytes.begin(), bytes.end(), static_cast<Orb8u>(first));
  return bytes;
}
Bytes part(const Bytes& bytes, size_t count) {
  return Bytes(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(count));
}

// ---- The coder, by lists of items

struct Item {
  bool isLiteral;
  Bytes bytes;
};

Bytes serialized(const std::vector<Item>& items) {
  Bytes out;
  for (const auto& [isLiteral, bytes] : items) {
    const int count = static_cast<int>(bytes.size());
    out.push_back(static_cast<Orb8u>(isLiteral ? count - 1 : 257 - count));
    out.insert(out.end(), bytes.begin(), isLiteral ? bytes.end() : bytes.begin() + 1);
  }
  return out;
}

struct Packed {
  OrbStatus status;
  Bytes bytes;  // up to the cursor

  bool operator==(const Packed& other) const {
    return status == other.status && bytes == other.bytes;
  }
};

Packed packedByModel(const Bytes& row, size_t room) {
  std::vector<Item> items;
  for (size_t at = 0; at < row.size();) {
    size_t run = 1;
    while (run < 128 && at + run < row.size() && row[at + run] == row[at]) ++run;
    std::vector<Item> next = items;
    const auto gather = [&](Bytes& bytes, size_t limit) {
      while (at + 1 < row.size() && row[at] != row[at + 1] && bytes.size() < limit) {
        bytes.push_back(row[at++]);
      }
      if (at + 1 == row.size() && bytes.size() < 128) bytes.push_back(row[at++]);
    };
    const size_t n = items.size();
    const bool pairWaits = n >= 2 && items[n - 2].isLiteral && !items[n - 1].isLiteral &&
                           items[n - 1].bytes.size() == 2;
    if (run <= 2 && pairWaits && items[n - 2].bytes.size() < 126) {
      Bytes& literals = next[n - 2].bytes;
      literals.insert(literals.end(), next[n - 1].bytes.begin(), next[n - 1].bytes.end());
      next.pop_back();
      gather(literals, 127);
    } else if (run >= 2) {
      next.push_back({false, Bytes(run, row[at])});
      at += run;
    } else {
      next.push_back({true, {}});
      gather(next.back().bytes, 128);
    }
    if (serialized(next).size() > room) return {orbStsPackBitsDstErr, serialized(items)};
    items = next;
  }
  return {orbStsNoErr, serialized(items)};
}

// What a reader makes of whole items.
Bytes unpackedByModel(const Bytes& packed) {
  Bytes row;
  for (size_t at = 0; at < packed.size();) {
    const int control = packed[at++];
    if (control == 128) continue;
    if (control < 128) {
      for (int i = 0; i <= control; ++i) row.push_back(packed.at(at++));
    } else {
      row.insert(row.end(), static_cast<size_t>(257 - control), packed.at(at++));
    }
  }
  return row;
}

// ---- Packing

// From memory that ends behind the row, to memory that ends behind the strip.
Packed pack(const TestBuild& build, const Bytes& row, int room) {
  const GuardedBytes src(row);
  GuardedBytes strip(static_cast<size_t>(room));
  Orb32s cursor = 0;
  const OrbStatus status =
      ORB(orbiPackBitsRow_TIFF_8u_C1)(src.data(), src.size(), strip.data(), &cursor, strip.size());
  return {status, Bytes(strip.data(), strip.data() + cursor)};
}

ORB_MEANING(orbiPackBitsRow_TIFF_8u_C1, RowsByHand) {
  const struct {
    const char* name;
    Bytes row, packed;
  } kCases[] = {
      {"one byte", {7}, {0, 7}},
      {"two equal", {7, 7}, {0xFF, 7}},
      {"two different", {7, 8}, {1, 7, 8}},
      {"128 equal", Bytes(128, 5), {0x81, 5}},
      {"129 equal", Bytes(129, 5), {0x81, 5, 0, 5}},
      {"130 equal", Bytes(130, 5), {0x81, 5, 0xFF, 5}},
      {"128 different", counting(128), joined({{127}, counting(128)})},
      {"129 different", counting(129), joined({{127}, counting(128), {0, 128}})},
      {"the last of 128 begins a run", joined({counting(128), {127}}),
       joined({{126}, counting(127), {0xFF, 127}})},
      {"two equal among others", {1, 2, 2, 3}, {3, 1, 2, 2, 3}},
      {"two equal at the end", {1, 2, 2}, {0, 1, 0xFF, 2}},
      {"two equal at the beginning", {2, 2, 1}, {0xFF, 2, 0, 1}},
      {"two pairs", {1, 2, 2, 3, 3}, {2, 1, 2, 2, 0xFF, 3}},
      {"two pairs and another", {1, 2, 2, 3, 3, 4}, {5, 1, 2, 2, 3, 3, 4}},
      {"three equal stay", {1, 2, 2, 2, 3}, {0, 1, 0xFE, 2, 0, 3}},
      {"three equal behind a pair", {1, 2, 2, 3, 3, 3}, {0, 1, 0xFF, 2, 0xFE, 3}},
      {"a pair behind three equal", {1, 2, 2, 2, 3, 3, 4}, {0, 1, 0xFE, 2, 0xFF, 3, 0, 4}},
      // A literal item of 125 bytes grows by a pair, and no more: its control byte is at 126 then.
      {"a pair behind 125", joined({counting(125), {200, 200, 1, 2}}),
       joined({{126}, counting(125), {200, 200, 1, 1, 2}})},
      {"a pair and the last byte behind 125", joined({counting(125), {200, 200, 1}}),
       joined({{127}, counting(125), {200, 200, 1}})},
      {"a pair behind 126", joined({counting(126), {200, 200, 1}}),
       joined({{125}, counting(126), {0xFF, 200, 0, 1}})},
      {"two pairs behind 126", joined({counting(126), {200, 200, 201, 201, 1}}),
       joined({{125}, counting(126), {0xFF, 200, 0xFF, 201, 0, 1}})},
      {"a pair and more than there is room for behind 124",
       joined({counting(124), {200, 200, 1, 2, 3}}),
       joined({{126}, counting(124), {200, 200, 1, 1, 2, 3}})},
  };
  for (const auto& [name, row, packed] : kCases) {
    SCOPED_TRACE(name);
    ASSERT_EQ(unpackedByModel(packed), row);
    EXPECT_TRUE(pack(build, row, 300) == (Packed{orbStsNoErr, packed}));
  }
}

// Runs of all lengths, most of them short.
Bytes randomRow(Random& random, int runs) {
  Bytes row;
  const int alphabet = random.between(1, 255);
  const int shortest = random.between(1, 5);
  for (; runs > 0; --runs) {
    const size_t length = static_cast<size_t>(random.oneIn(20)         ? random.between(1, 300)
                                              : random.oneIn(shortest) ? random.between(1, 4)
                                                                       : 1);
    row.insert(row.end(), length, static_cast<Orb8u>(random.between(0, alphabet)));
  }
  return row;
}

ORB_MEANING(orbiPackBitsRow_TIFF_8u_C1, FollowsTheModel) {
  Random random("rows");
  for (int round = 0; round < 200; ++round) {
    const Bytes row = randomRow(random, random.between(1, 120));
    const Packed expected = packedByModel(row, SIZE_MAX);
    ASSERT_EQ(unpackedByModel(expected.bytes), row);
    ASSERT_TRUE(pack(build, row, static_cast<int>(expected.bytes.size())) == expected);
  }
}

// With room for less than all: the cursor is behind whole items.
ORB_MEANING(orbiPackBitsRow_TIFF_8u_C1, WithoutRoom) {
  Random random("room");
  for (int round = 0; round < 30; ++round) {
    const Bytes row = randomRow(random, random.between(1, 40));
    const int needed = static_cast<int>(packedByModel(row, SIZE_MAX).bytes.size());
    for (int room = 1; room < needed; ++room) {
      const Packed packed = pack(build, row, room);
      ASSERT_TRUE(packed == packedByModel(row, static_cast<size_t>(room))) << room;
      ASSERT_EQ(packed.status, orbStsPackBitsDstErr);
      const Bytes unpacked = unpackedByModel(packed.bytes);
      ASSERT_EQ(unpacked, part(row, unpacked.size()));
    }
  }
}

// Rows go behind one another, and know nothing of each other.
ORB_MEANING(orbiPackBitsRow_TIFF_8u_C1, CursorsMove) {
  const Bytes rows[] = {{1, 2, 2}, {3}, {3, 4}};
  Plane<Orb8u> strip = orbtest::makeRow<Orb8u>(20);
  Orb32s cursor = 2;
  for (const Bytes& row : rows) {
    ASSERT_EQ(ORB(orbiPackBitsRow_TIFF_8u_C1)(row.data(), static_cast<Orb32s>(row.size()),
                                              strip.data(), &cursor, strip.width()),
              orbStsNoErr);
  }
  const Bytes expected = {0, 1, 0xFF, 2, 0, 3, 1, 3, 4};
  ASSERT_EQ(cursor, 2 + static_cast<int>(expected.size()));
  for (size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(strip.at(2 + static_cast<int>(i)), expected[i]);
  }
  Plane<Orb8u> untouched = orbtest::makeRow<Orb8u>(20);
  EXPECT_EQ(strip.at(0), untouched.at(0));
  EXPECT_EQ(strip.at(1), untouched.at(1));
  EXPECT_EQ(strip.at(cursor), untouched.at(cursor));
}

ORB_MEANING(orbiPackBitsRow_TIFF_8u_C1, Checks) {
  const Bytes row = {1, 2, 3};
  Plane<Orb8u> strip = orbtest::makeRow<Orb8u>(8);
  Orb32s cursor = 0;
  struct Call {
    const Orb8u* src;
    Orb32s srcLen = 3;
    Orb8u* dst;
    Orb32s* cursor;
    Orb32s dstLen = 8;
  };
  const Call good = {row.data(), 3, strip.data(), &cursor, 8};
  expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.src = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.cursor = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.dst = nullptr; }},
                      {orbStsSizeErr, [](Call& c) { c.srcLen = 0; }},
                      {orbStsSizeErr, [](Call& c) { c.dstLen = 0; }},
                      {orbStsSizeErr, [](Call& c) { c.srcLen = -1; }},
                      {orbStsSizeErr, [](Call& c) { c.dstLen = INT32_MIN; }}},
                     good, [&](const Call& c) {
                       return ORB(orbiPackBitsRow_TIFF_8u_C1)(c.src, c.srcLen, c.dst, c.cursor,
                                                              c.dstLen);
                     });
  for (const Orb32s outside : {-1, INT32_MIN, 8, 9, INT32_MAX}) {
    cursor = outside;
    EXPECT_EQ(ORB(orbiPackBitsRow_TIFF_8u_C1)(row.data(), 3, strip.data(), &cursor, 8),
              orbStsPackBitsDstErr);
    EXPECT_EQ(cursor, outside);
  }
  strip.expectUntouched();
}

ORB_AGREEMENT(orbiPackBitsRow_TIFF_8u_C1) {
  for (int round = 0; round < 400; ++round) {
    const Bytes row = randomRow(random, random.between(1, 300));
    const Placement place = Placement::any(random);
    Plane<Orb8u> mine = orbtest::makeRow<Orb8u>(random.between(1, 900), place);
    Plane<Orb8u> reference = orbtest::makeRow<Orb8u>(mine.width(), place);
    Orb32s cursors[2];
    cursors[0] = cursors[1] = random.between(0, 10);
    const Orb32s length = static_cast<Orb32s>(row.size());
    ASSERT_EQ(
        ORB(orbiPackBitsRow_TIFF_8u_C1)(row.data(), length, mine.data(), &cursors[0], mine.width()),
        PX(orbiPackBitsRow_TIFF_8u_C1)(row.data(), length, reference.data(), &cursors[1],
                                       mine.width()));
    ASSERT_EQ(cursors[0], cursors[1]);
    ASSERT_TRUE(mine.sameBytes(reference));
  }
}

// ---- Unpacking

struct Unpacked {
  OrbStatus status;
  int cursor;
  Bytes row;  // canaries where nothing was written

  bool operator==(const Unpacked& other) const {
    return status == other.status && cursor == other.cursor && row == other.row;
  }
};
std::ostream& operator<<(std::ostream& out, const Unpacked& unpacked) {
  out << "status " << unpacked.status << ", cursor " << unpacked.cursor << ", row";
  for (const Orb8u byte : unpacked.row) out << ' ' << static_cast<int>(byte);
  return out;
}
constexpr Orb8u kCanary = 0xC5;

Unpacked unpack(const TestBuild& build, const Bytes& packed, int length, Orb32s cursor = 0) {
  const GuardedBytes strip(packed);
  GuardedBytes row(Bytes(static_cast<size_t>(length), kCanary));
  const OrbStatus status = ORB(orbiUnpackBitsRow_TIFF_8u_C1)(strip.data(), &cursor, strip.size(),
                                                             row.data(), row.size());
  return {status, cursor, Bytes(row.data(), row.data() + length)};
}

ORB_MEANING(orbiUnpackBitsRow_TIFF_8u_C1, RowsByHand) {
  const OrbStatus bad = orbStsPackBitsDstErr;
  constexpr Orb8u x = kCanary;
  const struct {
    const char* name;
    Bytes packed;
    int start;
    Unpacked expected;
  } kCases[] = {
      {"literals", {2, 7, 8, 9}, 0, {orbStsNoErr, 4, {7, 8, 9}}},
      {"a repetition", {0xFE, 7}, 0, {orbStsNoErr, 2, {7, 7, 7}}},
      {"both", {0, 7, 0xFF, 8, 5}, 0, {orbStsNoErr, 4, {7, 8, 8}}},
      {"nothing, now and then", {0x80, 0x80, 0, 7, 0x80, 1, 8, 9}, 0, {orbStsNoErr, 8, {7, 8, 9}}},
      {"nothing behind the row is not read", {1, 7, 8, 0x80}, 0, {orbStsNoErr, 3, {7, 8}}},
      {"from the cursor on", {9, 9, 1, 7, 8}, 2, {orbStsNoErr, 5, {7, 8}}},
      {"a cursor at the end", {1, 7, 8}, 3, {bad, 3, {x, x}}},
      {"a cursor beyond the end", {1, 7, 8}, 9, {bad, 9, {x, x}}},
      {"a cursor in front", {1, 7, 8}, -1, {bad, -1, {x, x}}},
      {"the strip ends between items", {0, 7}, 0, {bad, 2, {7, x}}},
      {"the strip ends with nothing", {0, 7, 0x80}, 0, {bad, 3, {7, x}}},
      {"a repetition without its byte", {0, 7, 0xFF}, 0, {bad, 3, {7, x, x}}},
      {"literals without their last byte", {0, 7, 1, 8}, 0, {bad, 3, {7, x, x}}},
      {"a repetition beyond the row", {0, 7, 0xFE, 8}, 0, {bad, 3, {7, x, x}}},
      {"literals beyond the row", {0, 7, 2, 8, 9, 10}, 0, {bad, 3, {7, x, x}}},
  };
  for (const auto& [name, packed, start, expected] : kCases) {
    SCOPED_TRACE(name);
    EXPECT_EQ(unpack(build, packed, static_cast<int>(expected.row.size()), start), expected);
  }
}

// Every control byte, with its data, without the last byte of it, and without the room for it.
ORB_MEANING(orbiUnpackBitsRow_TIFF_8u_C1, EveryControlByte) {
  for (int control = 0; control < 256; ++control) {
    if (control == 128) continue;
    SCOPED_TRACE(control);
    const int count = control < 128 ? control + 1 : 257 - control;
    const Bytes data = control < 128 ? counting(count, 3) : Bytes(1, 3);
    const Bytes packed = joined({{static_cast<Orb8u>(control)}, data});
    const int end = static_cast<int>(packed.size());
    ASSERT_EQ(unpack(build, packed, count), (Unpacked{orbStsNoErr, end, unpackedByModel(packed)}));
    const Unpacked nothing = {orbStsPackBitsDstErr, 1, Bytes(static_cast<size_t>(count), kCanary)};
    ASSERT_EQ(unpack(build, part(packed, packed.size() - 1), count), nothing);
    if (count == 1) continue;
    const Unpacked less = {orbStsPackBitsDstErr, 1, part(nothing.row, nothing.row.size() - 1)};
    ASSERT_EQ(unpack(build, packed, count - 1), less);
  }
}

ORB_MEANING(orbiUnpackBitsRow_TIFF_8u_C1, WhatWasPacked) {
  Random random("packed");
  for (int round = 0; round < 300; ++round) {
    const Bytes row = randomRow(random, random.between(1, 300));
    const Bytes packed = pack(build, row, static_cast<int>(2 * row.size() + 2)).bytes;
    ASSERT_EQ(unpack(build, packed, static_cast<int>(row.size())),
              (Unpacked{orbStsNoErr, static_cast<int>(packed.size()), row}));
  }
}

ORB_MEANING(orbiUnpackBitsRow_TIFF_8u_C1, Checks) {
  const Bytes strip = {1, 2, 3};
  Plane<Orb8u> row = orbtest::makeRow<Orb8u>(2);
  Orb32s cursor = 0;
  struct Call {
    const Orb8u* src;
    Orb32s* cursor;
    Orb32s srcLen;
    Orb8u* dst;
    Orb32s dstLen;
  };
  const Call good = {strip.data(), &cursor, 3, row.data(), 2};
  expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.src = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.cursor = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.dst = nullptr; }},
                      {orbStsSizeErr, [](Call& c) { c.srcLen = 0; }},
                      {orbStsSizeErr, [](Call& c) { c.dstLen = 0; }},
                      {orbStsSizeErr, [](Call& c) { c.srcLen = INT32_MIN; }},
                      {orbStsSizeErr, [](Call& c) { c.dstLen = -1; }}},
                     good, [&](const Call& c) {
                       return ORB(orbiUnpackBitsRow_TIFF_8u_C1)(c.src, c.cursor, c.srcLen, c.dst,
                                                                c.dstLen);
                     });
  EXPECT_EQ(cursor, 0);
  row.expectUntouched();
}

ORB_AGREEMENT(orbiUnpackBitsRow_TIFF_8u_C1) {
  for (int round = 0; round < 2000; ++round) {
    Plane<Orb8u> strip = orbtest::makeRow<Orb8u>(random.between(1, 200));
    const int most = random.oneIn(2) ? 255 : 12;
    strip.fill([&] { return static_cast<Orb8u>(random.between(0, most) - most / 2); });
    const Placement place = Placement::any(random);
    Plane<Orb8u> mine = orbtest::makeRow<Orb8u>(random.between(1, 400), place);
    Plane<Orb8u> reference = orbtest::makeRow<Orb8u>(mine.width(), place);
    Orb32s cursors[2];
    cursors[0] = cursors[1] = random.between(0, strip.width());
    ASSERT_EQ(ORB(orbiUnpackBitsRow_TIFF_8u_C1)(strip.data(), &cursors[0], strip.width(),
                                                mine.data(), mine.width()),
              PX(orbiUnpackBitsRow_TIFF_8u_C1)(strip.data(), &cursors[1], strip.width(),
                                               reference.data(), mine.width()));
    ASSERT_EQ(cursors[0], cursors[1]);
    ASSERT_TRUE(mine.sameBytes(reference));
  }
}

// ---- Samples as two rows of bytes

// Bytes in memory, so that samples may be at odd addresses.
struct Rows {
  Plane<Orb16u> samples;
  Plane<Orb8u> high, low;

  Rows(int length, Random& random)
      : samples(length, 1, Placement::any(random)),
        high(length, 1, Placement::any(random)),
        low(length, 1, Placement::any(random)) {}
};

ORB_MEANING(orbiSplitRow_TIFF_16u8u_C1, HighAndLowBytes) {
  Random random("split");
  for (int length = 1; length < 150; ++length) {
    Rows rows(length, random);
    rows.samples.fillAny(random);
    Orb8u* const bytes[2] = {rows.high.data(), rows.low.data()};
    ASSERT_EQ(ORB(orbiSplitRow_TIFF_16u8u_C1)(rows.samples.data(), bytes, length), orbStsNoErr);
    for (int i = 0; i < length; ++i) {
      ASSERT_EQ(rows.high.at(i), rows.samples.at(i) / 256);
      ASSERT_EQ(rows.low.at(i), rows.samples.at(i) % 256);
    }
    rows.high.expectOutsideUntouched();
    rows.low.expectOutsideUntouched();
  }
}

ORB_MEANING(orbiJoinRow_TIFF_8u16u_C1, HighAndLowBytes) {
  Random random("join");
  for (int length = 1; length < 150; ++length) {
    Rows rows(length, random);
    rows.high.fillAny(random);
    rows.low.fillAny(random);
    const Orb8u* const bytes[2] = {rows.high.data(), rows.low.data()};
    ASSERT_EQ(ORB(orbiJoinRow_TIFF_8u16u_C1)(bytes, rows.samples.data(), length), orbStsNoErr);
    for (int i = 0; i < length; ++i) {
      ASSERT_EQ(rows.samples.at(i), 256 * rows.high.at(i) + rows.low.at(i));
    }
    rows.samples.expectOutsideUntouched();
  }
}

ORB_MEANING(orbiSplitRow_TIFF_16u8u_C1, Checks) {
  Random random("checks");
  Rows rows(4, random);
  struct Call {
    const Orb16u* src;
    Orb8u* dst[2];
    bool hasArray;
    Orb32s len;
  };
  const Call good = {rows.samples.data(), {rows.high.data(), rows.low.data()}, true, 4};
  expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.src = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.hasArray = false; }},
                      {orbStsStepErr, [](Call& c) { c.len = 0; }},
                      {orbStsStepErr, [](Call& c) { c.len = -1; }},
                      {orbStsNullPtrErr, [](Call& c) { c.dst[0] = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.dst[1] = nullptr; }}},
                     good, [&](const Call& c) {
                       return ORB(orbiSplitRow_TIFF_16u8u_C1)(c.src, c.hasArray ? c.dst : nullptr,
                                                              c.len);
                     });
  rows.high.expectUntouched();
  rows.low.expectUntouched();
}

ORB_MEANING(orbiJoinRow_TIFF_8u16u_C1, Checks) {
  Random random("checks");
  Rows rows(4, random);
  struct Call {
    const Orb8u* src[2];
    bool hasArray;
    Orb16u* dst;
    Orb32s len;
  };
  const Call good = {{rows.high.data(), rows.low.data()}, true, rows.samples.data(), 4};
  expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.hasArray = false; }},
                      {orbStsNullPtrErr, [](Call& c) { c.dst = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.src[0] = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.src[1] = nullptr; }},
                      {orbStsStepErr, [](Call& c) { c.len = 0; }},
                      {orbStsStepErr, [](Call& c) { c.len = INT32_MIN; }}},
                     good, [&](const Call& c) {
                       return ORB(orbiJoinRow_TIFF_8u16u_C1)(c.hasArray ? c.src : nullptr, c.dst,
                                                             c.len);
                     });
  rows.samples.expectUntouched();
}

ORB_AGREEMENT(orbiSplitRow_TIFF_16u8u_C1) {
  for (int round = 0; round < 300; ++round) {
    const int length = random.between(1, 300);
    Rows mine(length, random);
    Rows reference(length, random);
    mine.samples.fillExtreme(random);
    Orb8u* const bytes[2] = {mine.high.data(), mine.low.data()};
    Orb8u* const referenceBytes[2] = {reference.high.data(), reference.low.data()};
    ASSERT_EQ(ORB(orbiSplitRow_TIFF_16u8u_C1)(mine.samples.data(), bytes, length),
              PX(orbiSplitRow_TIFF_16u8u_C1)(mine.samples.data(), referenceBytes, length));
    ASSERT_EQ(mine.high.samples(), reference.high.samples());
    ASSERT_EQ(mine.low.samples(), reference.low.samples());
    mine.high.expectOutsideUntouched();
    mine.low.expectOutsideUntouched();
  }
}

ORB_AGREEMENT(orbiJoinRow_TIFF_8u16u_C1) {
  for (int round = 0; round < 300; ++round) {
    const int length = random.between(1, 300);
    Rows mine(length, random);
    Rows reference(length, random);
    mine.high.fillAny(random);
    mine.low.fillExtreme(random);
    const Orb8u* const bytes[2] = {mine.high.data(), mine.low.data()};
    ASSERT_EQ(ORB(orbiJoinRow_TIFF_8u16u_C1)(bytes, mine.samples.data(), length),
              PX(orbiJoinRow_TIFF_8u16u_C1)(bytes, reference.samples.data(), length));
    ASSERT_EQ(mine.samples.samples(), reference.samples.samples());
    mine.samples.expectOutsideUntouched();
  }
}

}  // namespace
