// Rows of TIFF files: PackBits (TIFF 6.0, section 9), and samples of 16 bits as two rows of bytes.
#ifndef ORB_SIDE_PX_TIFF_H
#define ORB_SIDE_PX_TIFF_H

#include "frame/arith.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD::plain {

constexpr Orb32s kPackBitsLongest = 128;  // of both kinds of items
constexpr Orb8s kPackBitsNothing = -128;

// ---- Equal neighbours, in words

// How many of the first `limit` bytes are equal to the first.
inline Orb32s equalToFirst(const Orb8u* bytes, Orb32s limit) {
  constexpr Orb32s kWord = sizeof(uintptr_t);
  const uintptr_t wanted = bytes[0] * (~uintptr_t{0} / 255);
  Orb32s n = 1;
  for (; n + kWord <= limit; n += kWord) {
    const uintptr_t difference = load(reinterpret_cast<const uintptr_t*>(bytes + n)) ^ wanted;
    if (difference == 0) continue;
    const Orb32s zeros =
        kWord == 8 ? __builtin_ctzll(difference) : __builtin_ctz(static_cast<Orb32u>(difference));
    return n + zeros / 8;
  }
  while (n < limit && bytes[n] == bytes[0]) ++n;
  return n;
}

// How many of the first `limit` bytes differ from the byte behind them, up to the first that does
// not. The byte behind the limit is read too.
inline Orb32s differentFromNext(const Orb8u* bytes, Orb32s limit) {
  constexpr uintptr_t kOnes = ~uintptr_t{0} / 255;
  constexpr Orb32s kWord = sizeof(uintptr_t);
  Orb32s n = 0;
  for (; n + kWord <= limit; n += kWord) {
    const uintptr_t difference = load(reinterpret_cast<const uintptr_t*>(bytes + n)) ^
                                 load(reinterpret_cast<const uintptr_t*>(bytes + n + 1));
    // The lowest byte that is 0 has the lowest bit that is set here.
    const uintptr_t zeros = (difference - kOnes) & ~difference & (kOnes << 7);
    if (zeros == 0) continue;
    const Orb32s bits =
        kWord == 8 ? __builtin_ctzll(zeros) : __builtin_ctz(static_cast<Orb32u>(zeros));
    return n + bits / 8;
  }
  while (n < limit && bytes[n] != bytes[n + 1]) ++n;
  return n;
}

// ---- The bytes of an item, at most 128, in blocks that may overlap: calls and repeated
// instructions take longer to begin than to end

template <int kBlock>
inline void copyBlocks(Orb8u* dst, const Orb8u* src, Orb32s count) {
  for (Orb32s i = 0; i < count - kBlock; i += kBlock) __builtin_memcpy(dst + i, src + i, kBlock);
  __builtin_memcpy(dst + count - kBlock, src + count - kBlock, kBlock);
}

inline void copyItem(Orb8u* dst, const Orb8u* src, Orb32s count) {
  if (count >= 16) return copyBlocks<16>(dst, src, count);
  if (count >= 4) return copyBlocks<4>(dst, src, count);
  for (Orb32s i = 0; i < count; ++i) dst[i] = src[i];
}

template <int kBlock>
inline void fillBlocks(Orb8u* dst, Orb8u value, Orb32s count) {
  for (Orb32s i = 0; i < count - kBlock; i += kBlock) __builtin_memset(dst + i, value, kBlock);
  __builtin_memset(dst + count - kBlock, value, kBlock);
}

inline void fillItem(Orb8u* dst, Orb8u value, Orb32s count) {
  if (count >= 16) return fillBlocks<16>(dst, value, count);
  if (count >= 4) return fillBlocks<4>(dst, value, count);
  for (Orb32s i = 0; i < count; ++i) dst[i] = value;
}

// ---- PackBits

class RowPacker {
 public:
  RowPacker(const Orb8u* src, Orb32s srcLen, Orb8u* dst, Orb32s cursor, Orb32s dstLen)
      : src_(src), left_(srcLen), dst_(dst), at_(cursor), end_(dstLen) {}

  // False if an item has no room. Those before it stand.
  bool pack() {
    while (left_ > 0) {
      const Orb32s run = equalToFirst(src_, left_ < kPackBitsLongest ? left_ : kPackBitsLongest);
      const bool canMerge = run <= 2 && isPairBehindLiterals() && dst_[literals_] < kLastToGrow;
      if (!(canMerge ? mergePair() : run >= 2 ? putRun(run) : putLiterals())) return false;
    }
    return true;
  }
  Orb32s cursor() const { return at_; }

 private:
  // A literal item grows as long as its control byte is below the limit; by two bytes at once only
  // if that does not lead beyond it.
  static constexpr Orb32s kGrowthLimit = 126;
  static constexpr Orb32s kLastToGrow = kGrowthLimit - 1;

  // Whether the last item is a repetition of two bytes, and the one before it a literal one. In the
  // history the lowest bit tells whether the last item is literal.
  bool isPairBehindLiterals() const { return (history_ & 3) == 2 && dst_[at_ - 2] == 0xFF; }

  bool putRun(Orb32s run) {
    if (end_ - at_ < 2) return false;
    dst_[at_] = wrap8u(1 - run);
    dst_[at_ + 1] = src_[0];
    at_ += 2;
    take(run);
    history_ = history_ << 1;
    return true;
  }

  bool putLiterals() {
    Orb32s count =
        differentFromNext(src_, left_ - 1 < kPackBitsLongest ? left_ - 1 : kPackBitsLongest);
    if (count == left_ - 1 && count < kPackBitsLongest) ++count;
    if (end_ - at_ <= count) return false;
    literals_ = at_++;
    dst_[literals_] = wrap8u(count - 1);
    appendLiterals(count);
    return true;
  }

  // Makes the pair literal, and adds what follows.
  bool mergePair() {
    const Orb32s control = dst_[literals_] + 2;
    const Orb32s growth = kGrowthLimit - control;
    Orb32s count = differentFromNext(src_, left_ - 1 < growth ? left_ - 1 : growth);
    if (count == left_ - 1) ++count;
    if (end_ - at_ < count) return false;
    dst_[literals_] = wrap8u(control + count);
    dst_[at_ - 2] = dst_[at_ - 1];
    appendLiterals(count);
    return true;
  }

  void appendLiterals(Orb32s count) {
    copyItem(dst_ + at_, src_, count);
    at_ += count;
    take(count);
    history_ = history_ << 1 | 1;
  }

  void take(Orb32s count) {
    src_ += count;
    left_ -= count;
  }

  const Orb8u* src_;
  Orb32s left_;
  Orb8u* dst_;
  Orb32s at_;
  Orb32s end_;
  Orb32s literals_ = 0;  // where the last literal item begins
  Orb32u history_ = 0;
};

// Returns false if the row is not complete.
inline bool orbUnpackBits(const Orb8u* src, Orb32s& cursor, Orb32s srcLen, Orb8u* dst,
                          Orb32s dstLen) {
  Orb32s made = 0;
  while (made < dstLen) {
    if (cursor >= srcLen) return false;
    const Orb8s control = static_cast<Orb8s>(src[cursor++]);
    if (control == kPackBitsNothing) continue;
    const Orb32s count = control < 0 ? 1 - control : control + 1;
    const Orb32s data = control < 0 ? 1 : count;
    if (data > srcLen - cursor || count > dstLen - made) return false;
    if (control < 0) {
      fillItem(dst + made, src[cursor], count);
    } else {
      copyItem(dst + made, src + cursor, count);
    }
    cursor += data;
    made += count;
  }
  return true;
}

// ---- Samples as bytes

inline void orbSplitBytes(const Orb16u* src, Orb8u* high, Orb8u* low, Orb32s len) {
  for (Orb32s i = 0; i < len; ++i) {
    const Orb16u sample = load(src + i);
    high[i] = static_cast<Orb8u>(sample >> 8);
    low[i] = wrap8u(sample);
  }
}

inline void orbJoinBytes(const Orb8u* high, const Orb8u* low, Orb16u* dst, Orb32s len) {
  for (Orb32s i = 0; i < len; ++i) store(dst + i, static_cast<Orb16u>(high[i] << 8 | low[i]));
}

}  // namespace orb::ORB_BUILD::plain

#endif
