// The calls of a deflate decoder on memory that ends where the arguments say, with canaries around
// all that may be written, and the calls of whole streams as the model foretells them.
#ifndef ORB_TESTS_COMPRESS_INFLATE_CALLS_H
#define ORB_TESTS_COMPRESS_INFLATE_CALLS_H

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "compress/lz77_records.h"
#include "tests/compress/inflate_model.h"
#include "tests/support/builds.h"
#include "tests/support/plane.h"

namespace orbtest {
inline namespace lz77 {

// A cursor of a call, at an odd address like its length: checked for moving as one.
template <class T>
class Cursor {
 public:
  Cursor(T* start, int length) : start_(start), length_(length) {
    pointer_.set(0, 0, start);
    left_.set(0, 0, length);
  }
  T** pointer() { return pointer_.data(); }
  Orb32s* left() { return left_.data(); }
  int moved() const {
    const ptrdiff_t n = pointer_.at(0) - start_;
    EXPECT_EQ(left_.at(0), length_ - n);
    pointer_.expectOutsideUntouched();
    left_.expectOutsideUntouched();
    return static_cast<int>(n);
  }

 private:
  T* start_;
  int length_;
  Plane<T*> pointer_{1, 1, {0, 1}};
  Plane<Orb32s> left_{1, 1, {0, 3}};
};

// A record between canaries. It is too long to be looked at byte by byte with every call.
class RecordMemory {
 public:
  explicit RecordMemory(int misalignment)
      : bytes_(sizeof(OrbLZ77DecState) + 2 * kMargin + 8, 0xA5),
        start_(kMargin + static_cast<size_t>(misalignment)) {}
  OrbLZ77DecState* record() { return reinterpret_cast<OrbLZ77DecState*>(&bytes_[start_]); }
  const Orb8u* bytes() const { return &bytes_[start_]; }

  void expectMargins() const {
    const auto isCanary = [](Orb8u byte) { return byte == 0xA5; };
    const auto record = bytes_.begin() + static_cast<ptrdiff_t>(start_);
    EXPECT_TRUE(std::all_of(bytes_.begin(), record, isCanary) &&
                std::all_of(record + sizeof(OrbLZ77DecState), bytes_.end(), isCanary));
  }
  bool operator==(const RecordMemory& other) const {
    return std::memcmp(bytes(), other.bytes(), sizeof(OrbLZ77DecState)) == 0;
  }

 private:
  static constexpr size_t kMargin = 64;
  std::vector<Orb8u> bytes_;
  size_t start_;
};

class Inflater {
 public:
  explicit Inflater(const TestBuild& b, int misalignment = 1) : build(b), memory_(misalignment) {
    ORB(orbsDecodeLZ77Init_8u)(orbLZ77ChecksumNone, record());
  }
  OrbLZ77DecState* record() { return memory_.record(); }
  const RecordMemory& memory() const { return memory_; }

  void setDictionary(const Bytes& dictionary) {
    if (dictionary.empty()) return;
    ASSERT_EQ(ORB(orbsDecodeLZ77SetDictionary_8u)(dictionary.data(),
                                                  static_cast<Orb32s>(dictionary.size()), record()),
              orbStsNoErr);
  }

  // Leaves `mode` alone if nothing is stored.
  InflateStep blockType(const Bytes& src, int& mode) {
    Plane<Orb32s> stored(1, 1, {0, 1});
    const Orb32s before = stored.at(0);
    const InflateStep step = run(src, [&](Orb8u** ppSrc, Orb32s* pSrcLen) {
      return ORB(orbsDecodeLZ77GetBlockType_8u)(ppSrc, pSrcLen, stored.data(), record());
    });
    stored.expectOutsideUntouched();
    if (stored.at(0) != before) mode = stored.at(0);
    return step;
  }

  InflateStep toPairs(int kind, const Bytes& src, size_t room,
                      OrbLZ77Flush flush = orbLZ77FlushNone) {
    return runToPairs(
        src, room, [&](Orb8u** ppSrc, Orb32s* pSrcLen, OrbLZ77Pair** ppPairs, Orb32s* pPairsLen) {
          const auto coder = kind == orbLZ77BlockFixed ? ORB(orbsDecodeLZ77FixedHuff_8u)
                                                       : ORB(orbsDecodeLZ77DynamicHuff_8u);
          return coder(ppSrc, pSrcLen, ppPairs, pPairsLen, flush, record());
        });
  }
  InflateStep storedToPairs(const Bytes& src, size_t room) {
    return runToPairs(
        src, room, [&](Orb8u** ppSrc, Orb32s* pSrcLen, OrbLZ77Pair** ppPairs, Orb32s* pPairsLen) {
          return ORB(orbsDecodeLZ77StoredHuff_8u)(ppSrc, pSrcLen, ppPairs, pPairsLen, record());
        });
  }

  InflateStep toBytes(int kind, const Bytes& src, size_t room,
                      OrbLZ77Flush flush = orbLZ77FlushNone) {
    return runToBytes(
        src, room, [&](Orb8u** ppSrc, Orb32s* pSrcLen, Orb8u** ppDst, Orb32s* pDstLen) {
          const auto coder = kind == orbLZ77BlockFixed ? ORB(orbsDecodeLZ77FixedHuffFull_8u)
                                                       : ORB(orbsDecodeLZ77DynamicHuffFull_8u);
          return coder(ppSrc, pSrcLen, ppDst, pDstLen, flush, record());
        });
  }
  InflateStep storedToBytes(const Bytes& src, size_t room) {
    return runToBytes(
        src, room, [&](Orb8u** ppSrc, Orb32s* pSrcLen, Orb8u** ppDst, Orb32s* pDstLen) {
          return ORB(orbsDecodeLZ77StoredBlock_8u)(ppSrc, pSrcLen, ppDst, pDstLen, record());
        });
  }

  // `used` counts pairs.
  InflateStep expand(const Pairs& pairs, size_t room, OrbLZ77Flush flush = orbLZ77FlushNone) {
    Plane<OrbLZ77Pair> list(static_cast<int>(pairs.size()), 1, {0, 1});
    for (size_t i = 0; i < pairs.size(); ++i) list.set(static_cast<int>(i), 0, pairs[i]);
    Plane<Orb8u> dst(static_cast<int>(room), 1, {0, 1});
    Cursor<OrbLZ77Pair> in(list.data(), list.width());
    Cursor<Orb8u> out(dst.data(), dst.width());
    InflateStep step;
    step.status =
        ORB(orbsDecodeLZ77_8u)(in.pointer(), in.left(), out.pointer(), out.left(), flush, record());
    step.used = in.moved();
    for (int i = 0; i < out.moved(); ++i) step.bytes.push_back(dst.at(i));
    list.expectUntouched();
    dst.expectOutsideUntouched();
    memory_.expectMargins();
    return step;
  }

  const TestBuild& build;

 private:
  // Of just its size on the heap, and never null.
  template <class Call>
  InflateStep run(const Bytes& src, Call call) {
    const std::unique_ptr<Orb8u[]> exact(new Orb8u[src.size()]);
    std::copy(src.begin(), src.end(), exact.get());
    Cursor<Orb8u> in(exact.get(), static_cast<int>(src.size()));
    InflateStep step;
    step.status = call(in.pointer(), in.left());
    step.used = in.moved();
    EXPECT_TRUE(std::equal(src.begin(), src.end(), exact.get()));
    memory_.expectMargins();
    return step;
  }
  template <class Call>
  InflateStep runToPairs(const Bytes& src, size_t room, Call call) {
    Plane<OrbLZ77Pair> list(static_cast<int>(room), 1, {0, 1});
    Cursor<OrbLZ77Pair> out(list.data(), list.width());
    InflateStep step = run(src, [&](Orb8u** ppSrc, Orb32s* pSrcLen) {
      return call(ppSrc, pSrcLen, out.pointer(), out.left());
    });
    const int made = out.moved();
    for (int i = 0; i < made; ++i) step.pairs.push_back(list.at(i));
    list.expectOutsideUntouched(made, 1);
    return step;
  }
  template <class Call>
  InflateStep runToBytes(const Bytes& src, size_t room, Call call) {
    Plane<Orb8u> dst(static_cast<int>(room), 1, {0, 1});
    Cursor<Orb8u> out(dst.data(), dst.width());
    InflateStep step = run(src, [&](Orb8u** ppSrc, Orb32s* pSrcLen) {
      return call(ppSrc, pSrcLen, out.pointer(), out.left());
    });
    const int made = out.moved();
    for (int i = 0; i < made; ++i) step.bytes.push_back(dst.at(i));
    dst.expectOutsideUntouched();
    return step;
  }

  RecordMemory memory_;
};

// ---- Whole streams

enum class Route { kBytes, kPairs };

// Sizes of pieces: always the same, or at random up to it.
struct Sizes {
  size_t size;
  bool isRandom = false;

  size_t next(Random& random) const { return isRandom ? random.between<size_t>(0, size) : size; }
};
constexpr size_t kWhole = 4000;

// One call of a coder, and what comes of it.
struct InflateCall {
  enum Kind { kType, kBlock, kStored } what;
  int kind;  // of the block
  Bytes src;
  size_t room;
  int mode = -1;
  InflateStep expected;

  template <class Decoder>
  InflateStep run(Decoder& decoder, Route route, int& toldMode) const {
    if (what == kType) return decoder.blockType(src, toldMode);
    if (what == kStored) {
      return route == Route::kPairs ? decoder.storedToPairs(src, room)
                                    : decoder.storedToBytes(src, room);
    }
    return route == Route::kPairs ? decoder.toPairs(kind, src, room)
                                  : decoder.toBytes(kind, src, room);
  }
};

// A host's calls on a stream that comes in pieces, with rooms as they come, up to the end of the
// stream, of what there is of it, or of what is sound.
inline std::vector<InflateCall> callsOf(Random& random, const RandomStream& stream,
                                        const Bytes& before, Route route, Sizes pieces,
                                        Sizes rooms) {
  InflateModel model(before);
  std::vector<InflateCall> calls;
  size_t at = 0, given = 0, block = 0;
  for (;;) {
    const int kind = stream.kinds.at(block);
    InflateCall call = {InflateCall::kBlock, kind, {}, rooms.next(random), -1, {}};
    call.src.assign(stream.bytes.begin() + static_cast<ptrdiff_t>(at),
                    stream.bytes.begin() + static_cast<ptrdiff_t>(given));
    const bool readsHeader = kind == orbLZ77BlockStored ? route == Route::kPairs : random.oneIn(2);
    if (model.isBetween() && random.oneIn(4)) {
      // A coder of another kind, which changes nothing.
      call.kind = random.between(0, 2);
    } else if (model.isBetween() && !readsHeader) {
      call.what = InflateCall::kType;
    }
    if (call.what == InflateCall::kBlock && call.kind == orbLZ77BlockStored) {
      call.what = InflateCall::kStored;
    }
    const bool wasBetween = model.isBetween();
    call.expected = call.run(model, route, call.mode);
    at += static_cast<size_t>(call.expected.used);
    calls.push_back(call);
    switch (call.expected.status) {
      case orbStsStreamEnd:
      case orbStsSizeErr:
        return calls;
      case orbStsSrcShort:
        if (given == stream.bytes.size()) return calls;
        given = std::min(stream.bytes.size(), given + std::max<size_t>(1, pieces.next(random)));
        break;
      case orbStsNoErr:
        if (call.what != InflateCall::kType && (!wasBetween || call.kind == kind)) ++block;
        break;
      default:
        break;
    }
  }
}

inline void expectStep(const InflateStep& step, const InflateStep& expected) {
  EXPECT_EQ(step.status, expected.status);
  EXPECT_EQ(step.used, expected.used);
  EXPECT_EQ(step.bytes, expected.bytes);
  EXPECT_TRUE(step.pairs == expected.pairs);
}

inline void expectCalls(Inflater& inflater, Route route, const std::vector<InflateCall>& calls) {
  for (size_t i = 0; i < calls.size(); ++i) {
    const InflateCall& call = calls[i];
    SCOPED_TRACE("call " + std::to_string(i) + " of " + std::to_string(calls.size()));
    int mode = -1;
    expectStep(call.run(inflater, route, mode), call.expected);
    EXPECT_EQ(mode, call.mode);
    if (testing::Test::HasFailure()) return;
  }
}

}  // namespace lz77
}  // namespace orbtest

#endif
