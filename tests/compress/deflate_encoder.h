// An encoder of one build as a host has it: its record at an odd address with canaries around it,
// and every buffer of a call just as large as the host says it is.
#ifndef ORB_TESTS_COMPRESS_DEFLATE_ENCODER_H
#define ORB_TESTS_COMPRESS_DEFLATE_ENCODER_H

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>
#include <vector>

#include "compress/lz77_records.h"
#include "tests/compress/deflate_model.h"
#include "tests/support/builds.h"
#include "tests/support/guarded.h"

namespace orbtest {
inline namespace lz77 {

// A text with matches: new bytes of a small alphabet, and copies from any distance.
inline Bytes anyText(Random& random, size_t size) {
  const int alphabet = random.oneIn(2) ? random.between(1, 8) : random.between(9, 256);
  const int copies = random.between(1, 6);
  Bytes text;
  while (text.size() < size) {
    if (text.empty() || random.oneIn(copies)) {
      text.push_back(static_cast<Orb8u>(random.between(0, alphabet - 1)));
      continue;
    }
    const size_t reach = random.oneIn(4) ? text.size() : std::min<size_t>(text.size(), 300);
    const size_t distance = random.between<size_t>(1, reach);
    const size_t length = random.oneIn(20) ? random.between(3, 600) : random.between(2, 20);
    for (size_t i = 0; i < length && text.size() < size; ++i) {
      text.push_back(text[text.size() - distance]);
    }
  }
  return text;
}

inline Bytes slice(const Bytes& bytes, size_t from, size_t size) {
  const auto begin = bytes.begin() + static_cast<ptrdiff_t>(std::min(from, bytes.size()));
  return Bytes(begin, begin + static_cast<ptrdiff_t>(std::min<size_t>(size, bytes.end() - begin)));
}

class Encoder {
 public:
  explicit Encoder(const TestBuild& forBuild, int level = 1, int checksumKind = 0)
      : build(forBuild) {
    EXPECT_EQ(ORB(orbsEncodeLZ77Init_8u)(level, checksumKind, record()), orbStsNoErr);
  }
  ~Encoder() {
    const auto isCanary = [](Orb8u byte) { return byte == kCanary; };
    EXPECT_TRUE(std::all_of(memory_.begin(), memory_.begin() + kBefore, isCanary));
    EXPECT_TRUE(std::all_of(memory_.end() - kBehind, memory_.end(), isCanary));
    pool().push_back(std::move(memory_));
  }
  Encoder(const Encoder&) = delete;
  Encoder& operator=(const Encoder&) = delete;

  OrbLZ77EncState* record() { return reinterpret_cast<OrbLZ77EncState*>(memory_.data() + kBefore); }
  // All of the record but the address of its pair list.
  Bytes image() { return part(sizeof(uint64_t), sizeof(OrbLZ77EncState)); }
  void copyFrom(Encoder& other) {
    const Bytes bytes = other.image();
    std::copy(bytes.begin(), bytes.end(), reinterpret_cast<Orb8u*>(record()) + sizeof(uint64_t));
  }
  // What the coders of blocks have to do with.
  Bytes blockImage() {
    Bytes bytes = part(sizeof(uint64_t), offsetof(OrbLZ77EncState, prev));
    const Bytes rest = part(offsetof(OrbLZ77EncState, tail), sizeof(OrbLZ77EncState));
    bytes.insert(bytes.end(), rest.begin(), rest.end());
    return bytes;
  }

  struct Made {
    OrbStatus status;
    Pairs pairs;
    int used;
  };
  // What the call leaves in the cursors has to be what it did.
  Made makePairs(const Bytes& source, size_t room, int flush) {
    GuardedBytes src(source), list(room * sizeof(OrbLZ77Pair));
    Orb8u* at = src.data();
    Orb32s left = src.size();
    OrbLZ77Pair* const first = reinterpret_cast<OrbLZ77Pair*>(list.data());
    OrbLZ77Pair* pairs = first;
    Orb32s pairsLeft = static_cast<Orb32s>(room);
    Made made;
    made.status = ORB(orbsEncodeLZ77_8u)(&at, &left, &pairs, &pairsLeft, flush, record());
    made.used = static_cast<int>(at - src.data());
    EXPECT_EQ(left, src.size() - made.used);
    EXPECT_EQ(pairsLeft, static_cast<Orb32s>(room) - (pairs - first));
    EXPECT_TRUE(std::equal(source.begin(), source.end(), src.data()));
    made.pairs.assign(first, pairs);
    return made;
  }
  void setStatus(int phase) {
    EXPECT_EQ(ORB(orbsEncodeLZ77SetStatus_8u)(phase, record()), orbStsNoErr);
  }
  int select(const Pairs& pairs) {
    GuardedBytes list(pairs.size() * sizeof(OrbLZ77Pair));
    if (!pairs.empty()) std::memcpy(list.data(), pairs.data(), static_cast<size_t>(list.size()));
    Orb32s mode = -1;
    EXPECT_EQ(
        ORB(orbsEncodeLZ77SelectHuffMode_8u)(reinterpret_cast<OrbLZ77Pair*>(list.data()),
                                             static_cast<Orb32s>(pairs.size()), &mode, record()),
        orbStsNoErr);
    return mode;
  }

  struct Step : BlockModel::Step {
    bool isCleanBehind;  // nothing is written behind the cursor
  };
  Step fixed(const Pairs& pairs, size_t room, int flush) {
    return code(ORB(orbsEncodeLZ77FixedHuff_8u), pairs, room, flush);
  }
  Step dynamic(const Pairs& pairs, size_t room, int flush) {
    return code(ORB(orbsEncodeLZ77DynamicHuff_8u), pairs, room, flush);
  }
  Step stored(const Bytes& source, size_t room, int flush) {
    return code(ORB(orbsEncodeLZ77StoredBlock_8u), source, room, flush);
  }

  const TestBuild& build;

 private:
  static constexpr Orb8u kCanary = 0xA5;
  static constexpr int kBefore = 65, kBehind = 64;

  // Memory comes with what the last encoder left in it.
  static std::vector<Bytes>& pool() {
    static std::vector<Bytes> free;
    return free;
  }
  static Bytes takeMemory() {
    if (pool().empty()) return Bytes(kBefore + sizeof(OrbLZ77EncState) + kBehind, kCanary);
    Bytes memory = std::move(pool().back());
    pool().pop_back();
    return memory;
  }

  Bytes memory_ = takeMemory();

  Bytes part(size_t from, size_t to) {
    const auto* bytes = reinterpret_cast<const Orb8u*>(record());
    return Bytes(bytes + from, bytes + to);
  }
  template <class Function, class Item>
  Step code(Function* function, const std::vector<Item>& items, size_t room, int flush) {
    GuardedBytes src(items.size() * sizeof(Item)), dst(room);
    if (!items.empty()) std::memcpy(src.data(), items.data(), static_cast<size_t>(src.size()));
    std::memset(dst.data(), kCanary, room);
    Item* const first = reinterpret_cast<Item*>(src.data());
    Item* at = first;
    Orb32s left = static_cast<Orb32s>(items.size());
    Orb8u* out = dst.data();
    Orb32s outLeft = dst.size();
    Step step;
    step.status = function(&at, &left, &out, &outLeft, flush, record());
    step.pairs = static_cast<size_t>(at - first);
    EXPECT_EQ(left, static_cast<Orb32s>(items.size() - step.pairs));
    EXPECT_EQ(outLeft, dst.size() - (out - dst.data()));
    step.written.assign(dst.data(), out);
    step.isCleanBehind =
        std::all_of(out, dst.data() + dst.size(), [](Orb8u byte) { return byte == kCanary; });
    return step;
  }
};

}  // namespace lz77
}  // namespace orbtest

#endif
