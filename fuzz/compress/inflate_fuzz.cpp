// A deflate stream that nobody has checked, or a decoder's record that is damaged, on both routes
// and in every build: no access outside of what the host handed over, no end without a status, and
// the results of px.
#include <algorithm>
#include <cstring>
#include <memory>

#include "compress/lz77_records.h"
#include "frame/dispatch.h"
#include "fuzz/support/input.h"
#include "tests/support/runnable_builds.h"

#define ORB(name) (::orbRow_##name.body[build.index])

namespace {

using orbfuzz::Input;
using orbfuzz::require;
using orbtest::TestBuild;
using Bytes = std::vector<Orb8u>;

constexpr int kMostCalls = 60;
constexpr int kMostRooms = 10;  // for the pairs of a call

struct Plan {
  bool toPairs;
  bool isDamaged;
  bool searches;  // for a marker, now and then
  size_t piece, room;
  Bytes damage;  // positions and values
  Bytes stream;
};

// Everything that decoding leaves behind.
struct Trace {
  std::vector<Orb32s> numbers;
  Bytes bytes;

  bool operator==(const Trace& other) const {
    return numbers == other.numbers && bytes == other.bytes;
  }
};

class Decoder {
 public:
  Decoder(const TestBuild& forBuild, const Plan& forPlan) : build(forBuild), plan(forPlan) {
    std::memset(static_cast<void*>(state()), 0xA5, sizeof(OrbLZ77DecState));
    ORB(orbsDecodeLZ77Init_8u)(orbLZ77ChecksumNone, state());
  }

  Trace run() {
    for (int call = 0; call < kMostCalls; ++call) {
      if (plan.isDamaged && call == 3) damage();
      const OrbStatus status = plan.toPairs ? pairsCall(call) : bytesCall();
      trace_.numbers.push_back(status);
      const bool isAtEnd = at_ == plan.stream.size();
      if (status < 0 || status == orbStsStreamEnd || (status == orbStsSrcShort && isAtEnd)) break;
    }
    return trace_;
  }

 private:
  // The same for all decoders: to allocate so much takes longer than to decode so little.
  static Orb8u* recordMemory() {
    static const std::unique_ptr<Orb8u[]> memory(new Orb8u[sizeof(OrbLZ77DecState)]);
    return memory.get();
  }
  OrbLZ77DecState* state() { return reinterpret_cast<OrbLZ77DecState*>(memory_); }

  void damage() {
    for (size_t i = 0; i + 2 < plan.damage.size(); i += 3) {
      const size_t at = (plan.damage[i] | plan.damage[i + 1] << 8) %
                        (offsetof(OrbLZ77DecState, window) - sizeof(OrbLZ77PairCursor));
      memory_[sizeof(OrbLZ77PairCursor) + at] = plan.damage[i + 2];
    }
  }

  // `call` takes a cursor into the next piece of the stream, which is a block of its own.
  template <class Call>
  OrbStatus withSource(Call call) {
    const size_t size = std::min(plan.piece, plan.stream.size() - at_);
    const std::unique_ptr<Orb8u[]> piece(new Orb8u[size]);
    std::copy_n(plan.stream.begin() + static_cast<ptrdiff_t>(at_), size, piece.get());
    Orb8u* src = piece.get();
    Orb32s srcLen = static_cast<Orb32s>(size);
    const OrbStatus status = call(&src, &srcLen);
    const ptrdiff_t used = src - piece.get();
    require(used == static_cast<Orb32s>(size) - srcLen && used <= static_cast<ptrdiff_t>(size));
    // What a damaged record gives back was never taken.
    require(used >= 0 || plan.isDamaged || plan.searches);
    at_ += static_cast<size_t>(std::max<ptrdiff_t>(0, used));
    trace_.numbers.push_back(static_cast<Orb32s>(used));
    return status;
  }
  // The same for room, as much as there is in a block of its own.
  template <class T, class Call>
  OrbStatus withRoom(std::vector<T>& made, Call call) {
    const std::unique_ptr<T[]> block(new T[plan.room]);
    T* dst = block.get();
    Orb32s room = static_cast<Orb32s>(plan.room);
    const OrbStatus status = call(&dst, &room);
    const ptrdiff_t count = dst - block.get();
    require(count >= 0 && count == static_cast<ptrdiff_t>(plan.room) - room && room >= 0);
    made.assign(block.get(), dst);
    return status;
  }
  void note(const Bytes& bytes) {
    trace_.bytes.insert(trace_.bytes.end(), bytes.begin(), bytes.end());
  }

  OrbStatus bytesCall() {
    OrbLZ77BlockMode mode = -1;
    const OrbStatus told = withSource([&](Orb8u** ppSrc, Orb32s* pSrcLen) {
      return ORB(orbsDecodeLZ77GetBlockType_8u)(ppSrc, pSrcLen, &mode, state());
    });
    trace_.numbers.push_back(mode);
    if (told != orbStsNoErr) return told;
    Bytes made;
    const OrbStatus status = withSource([&](Orb8u** ppSrc, Orb32s* pSrcLen) {
      return withRoom<Orb8u>(made, [&](Orb8u** ppDst, Orb32s* pDstLen) {
        if (mode == orbLZ77BlockStored) {
          return ORB(orbsDecodeLZ77StoredBlock_8u)(ppSrc, pSrcLen, ppDst, pDstLen, state());
        }
        const auto coder = mode == orbLZ77BlockFixed ? ORB(orbsDecodeLZ77FixedHuffFull_8u)
                                                     : ORB(orbsDecodeLZ77DynamicHuffFull_8u);
        return coder(ppSrc, pSrcLen, ppDst, pDstLen, orbLZ77FlushNone, state());
      });
    });
    note(made);
    return status;
  }

  OrbStatus pairsCall(int call) {
    std::vector<OrbLZ77Pair> pairs;
    OrbStatus status = orbStsErr;
    const Orb32s flush = plan.searches && call % 8 == 7 ? orbLZ77FlushSync : orbLZ77FlushNone;
    for (int kind = 0; kind < 3 && status == orbStsErr; ++kind) {
      status = withSource([&](Orb8u** ppSrc, Orb32s* pSrcLen) {
        return withRoom<OrbLZ77Pair>(pairs, [&](OrbLZ77Pair** ppPairs, Orb32s* pPairsLen) {
          if (kind == orbLZ77BlockStored) {
            return ORB(orbsDecodeLZ77StoredHuff_8u)(ppSrc, pSrcLen, ppPairs, pPairsLen, state());
          }
          const auto coder = kind == orbLZ77BlockFixed ? ORB(orbsDecodeLZ77FixedHuff_8u)
                                                       : ORB(orbsDecodeLZ77DynamicHuff_8u);
          return coder(ppSrc, pSrcLen, ppPairs, pPairsLen, flush, state());
        });
      });
    }
    OrbLZ77Pair* next = pairs.data();
    Orb32s count = static_cast<Orb32s>(pairs.size());
    OrbStatus expanded = orbStsDstFull;
    for (int round = 0; round < kMostRooms && expanded == orbStsDstFull; ++round) {
      Bytes made;
      expanded = withRoom<Orb8u>(made, [&](Orb8u** ppDst, Orb32s* pDstLen) {
        return ORB(orbsDecodeLZ77_8u)(&next, &count, ppDst, pDstLen, orbLZ77FlushNone, state());
      });
      require(next + count == pairs.data() + pairs.size());
      note(made);
      trace_.numbers.push_back(expanded);
    }
    return status;
  }

  const TestBuild& build;
  const Plan& plan;
  Orb8u* const memory_ = recordMemory();
  size_t at_ = 0;
  Trace trace_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  Plan plan;
  const uint8_t options = input.byte();
  plan.toPairs = (options & 1) != 0;
  plan.isDamaged = (options & 6) == 6;
  plan.searches = (options & 24) == 24;
  const uint8_t piece = input.byte(), room = input.byte();
  plan.piece = piece < 200 ? piece + 1u : 1000;
  plan.room = room < 200 ? room + 1u : 3000;
  if (plan.isDamaged) plan.damage = input.bytes(input.byte());
  plan.stream = input.rest();
  const std::vector<TestBuild>& builds = orbtest::runnableBuilds();
  const Trace expected = Decoder(builds[0], plan).run();
  for (size_t i = 1; i < builds.size(); ++i) require(Decoder(builds[i], plan).run() == expected);
  return 0;
}
