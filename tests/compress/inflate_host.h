// A host that decodes whole deflate streams: the loop that the public header describes, with the
// source and the output in pieces.
#ifndef ORB_TESTS_COMPRESS_INFLATE_HOST_H
#define ORB_TESTS_COMPRESS_INFLATE_HOST_H

#include <algorithm>
#include <vector>

#include "tests/compress/inflate_calls.h"

namespace orbtest {
inline namespace lz77 {

class InflateHost {
 public:
  InflateHost(const TestBuild& b, Route route, Sizes pieces, Sizes rooms)
      : build(b), route_(route), pieces_(pieces), rooms_(rooms), memory_(0) {
    ORB(orbsDecodeLZ77Init_8u)(orbLZ77ChecksumNone, state());
  }

  // Decodes until the stream ends, turns out bad or is used up, but makes no more than `most`
  // bytes. The status is that of the last call.
  OrbStatus decode(const Bytes& stream, size_t most) {
    stream_ = stream;
    src_ = stream_.data();
    srcEnd_ = src_;
    out.resize(most);
    dst_ = out.data();
    const OrbStatus status = route_ == Route::kBytes ? toBytes() : overPairs();
    used = src_ - stream_.data();
    out.resize(static_cast<size_t>(dst_ - out.data()));
    return status;
  }

  Bytes out;
  ptrdiff_t used = 0;  // of the stream
  const TestBuild& build;

 private:
  OrbLZ77DecState* state() { return memory_.record(); }

  // False if there is no more of the stream, or no more room for its bytes.
  bool goesOn(OrbStatus status) {
    if (status == orbStsDstFull) return dst_ != out.data() + out.size();
    if (status != orbStsSrcShort) return false;
    const ptrdiff_t rest = stream_.data() + stream_.size() - srcEnd_;
    if (rest == 0) return false;
    srcEnd_ += std::min(rest, static_cast<ptrdiff_t>(std::max<size_t>(1, pieces_.next(random_))));
    return true;
  }
  template <class Call>
  OrbStatus take(Call call) {
    Orb32s srcLen = static_cast<Orb32s>(srcEnd_ - src_);
    return call(&src_, &srcLen);
  }
  template <class Call>
  OrbStatus put(Call call) {
    const ptrdiff_t rest = out.data() + out.size() - dst_;
    Orb32s room = static_cast<Orb32s>(
        std::min(rest, static_cast<ptrdiff_t>(std::max<size_t>(1, rooms_.next(random_)))));
    return call(&dst_, &room);
  }

  OrbStatus toBytes() {
    for (;;) {
      OrbLZ77BlockMode mode = -1;
      OrbStatus status;
      do {
        status = take([&](Orb8u** ppSrc, Orb32s* pSrcLen) {
          return ORB(orbsDecodeLZ77GetBlockType_8u)(ppSrc, pSrcLen, &mode, state());
        });
      } while (goesOn(status));
      if (status != orbStsNoErr) return status;
      if (mode == -1) return orbStsErr;  // of the reserved type
      do {
        status = take([&](Orb8u** ppSrc, Orb32s* pSrcLen) {
          return put([&](Orb8u** ppDst, Orb32s* pDstLen) {
            if (mode == orbLZ77BlockStored) {
              return ORB(orbsDecodeLZ77StoredBlock_8u)(ppSrc, pSrcLen, ppDst, pDstLen, state());
            }
            const auto coder = mode == orbLZ77BlockFixed ? ORB(orbsDecodeLZ77FixedHuffFull_8u)
                                                         : ORB(orbsDecodeLZ77DynamicHuffFull_8u);
            return coder(ppSrc, pSrcLen, ppDst, pDstLen, orbLZ77FlushNone, state());
          });
        });
      } while (goesOn(status));
      if (status != orbStsNoErr) return status;
    }
  }

  // The list of pairs is as long as a room. A coder that is not of the block's kind says so.
  OrbStatus overPairs() {
    int kind = 0;
    for (;;) {
      OrbStatus status = orbStsErr;
      for (int tries = 0; tries < 3 && status == orbStsErr; ++tries) {
        if (tries > 0) kind = (kind + 1) % 3;
        status = codePairs(kind);
      }
      const OrbStatus expanded = expand();
      if (expanded == orbStsDstFull) return expanded;
      if (status != orbStsNoErr && status != orbStsDstFull && !goesOn(status)) return status;
    }
  }
  OrbStatus codePairs(int kind) {
    pairs_.resize(std::min<size_t>(8192, std::max<size_t>(1, rooms_.next(random_))));
    OrbLZ77Pair* next = pairs_.data();
    Orb32s room = static_cast<Orb32s>(pairs_.size());
    const OrbStatus status = take([&](Orb8u** ppSrc, Orb32s* pSrcLen) {
      if (kind == orbLZ77BlockStored) {
        return ORB(orbsDecodeLZ77StoredHuff_8u)(ppSrc, pSrcLen, &next, &room, state());
      }
      const auto coder = kind == orbLZ77BlockFixed ? ORB(orbsDecodeLZ77FixedHuff_8u)
                                                   : ORB(orbsDecodeLZ77DynamicHuff_8u);
      return coder(ppSrc, pSrcLen, &next, &room, orbLZ77FlushNone, state());
    });
    pairs_.resize(static_cast<size_t>(next - pairs_.data()));
    return status;
  }
  // Not cut into pieces: the rest of a match would wait for pairs that may never come.
  OrbStatus expand() {
    OrbLZ77Pair* next = pairs_.data();
    Orb32s count = static_cast<Orb32s>(pairs_.size());
    Orb32s room = static_cast<Orb32s>(out.data() + out.size() - dst_);
    return ORB(orbsDecodeLZ77_8u)(&next, &count, &dst_, &room, orbLZ77FlushNone, state());
  }

  Route route_;
  Sizes pieces_, rooms_;
  RecordMemory memory_;
  Random random_{"host"};
  Bytes stream_;
  Orb8u* src_ = nullptr;
  Orb8u* srcEnd_ = nullptr;
  Orb8u* dst_ = nullptr;
  Pairs pairs_;
};

}  // namespace lz77
}  // namespace orbtest

#endif
