// The decoder of GIT blocks.
//
// Each byte value's stream says how many bytes of higher ranks come between two of its occurrences.
// The byte that has the least of them to wait for is the next; of several, that of the lowest rank.
#ifndef ORB_COMPRESS_PX_GIT_DECODER_H
#define ORB_COMPRESS_PX_GIT_DECODER_H

#include "compress/px/git_coder.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD::plain {

// ---- Streams

// A stream that the source is too short for ends with it, and those behind it are empty.
inline void findStreams(const Orb8u* src, Orb32s srcLen, OrbGITInput (&input)[256]) {
  Orb32s at = 0;
  for (OrbGITInput& in : input) {
    Orb32u length = 0;
    if (srcLen - at < 4) {
      at = srcLen;
    } else {
      length = __builtin_bswap32(load(reinterpret_cast<const Orb32u*>(src + at)));
      at += 4;
    }
    const Orb32u left = static_cast<Orb32u>(srcLen - at);
    in.byte = at;
    in.bit = 0;
    at += static_cast<Orb32s>(length < left ? length : left);
    in.end = at;
  }
}

// Reads a stream bit by bit. It is at its end when a bit is wanted behind its last one; and when
// ones are counted, in front of a one that is its last bit, since its last byte is filled up so.
struct GITBitReader {
  const Orb8u* src;
  OrbGITInput in;
  bool isAtEnd = false;

  int64_t bitsLeft() const { return static_cast<int64_t>(in.end - in.byte) * 8 - in.bit; }
  void skip(int64_t n) {
    const int64_t bit = in.bit + n;
    in.byte += static_cast<Orb32s>(bit >> 3);
    in.bit = static_cast<Orb32s>(bit & 7);
  }
  bool takesOne() {
    const int64_t left = bitsLeft();
    const bool isOne = left > 0 && (src[in.byte] << in.bit & 128) != 0;
    isAtEnd = isAtEnd || left <= 0 || (isOne && left == 1);
    if (isAtEnd) return false;
    skip(1);
    return isOne;
  }
  // The last 32 of them, if there are more.
  Orb32u takeBits(Orb32u n) {
    isAtEnd = isAtEnd || n > bitsLeft();
    if (isAtEnd) return 0;
    if (n > 32) {
      skip(n - 32);
      n = 32;
    }
    Orb32u bits = 0;
    for (; n > 0; --n) {
      bits = bits << 1 | (src[in.byte] >> (7 - in.bit) & 1);
      skip(1);
    }
    return bits;
  }
};

// Takes a value from a stream. False at its end.
inline bool takeValueByBits(const Orb8u* src, OrbGITInput& input, OrbGITStatistics& statistics,
                            Orb32u& value) {
  GITBitReader reader = {src, input};
  Orb32u k = statistics.k;
  Orb32u ones = 0;
  while (ones < kEscape && reader.takesOne()) ++ones;
  const bool isEscaped = ones == kEscape;
  Orb32u base = 0;
  if (isEscaped) {
    do {
      base += shiftedLeft(kEscape, k);
      if (k < 1u << 30) k *= 2;
    } while (reader.takesOne());
    for (ones = 0; reader.takesOne();) ++ones;
  }
  value = base + shiftedLeft(ones, k) + reader.takeBits(k);
  if (reader.isAtEnd) return false;
  input = reader.in;
  if (!isEscaped) updateStatistics(statistics, value);
  return true;
}

inline bool takeValue(const Orb8u* src, Orb32s srcLen, OrbGITInput& input,
                      OrbGITStatistics& statistics, Orb32u& value) {
  if (srcLen - input.byte < 8) return takeValueByBits(src, input, statistics, value);
  const Orb32u k = statistics.k;
  const uint64_t bits = __builtin_bswap64(load(reinterpret_cast<const uint64_t*>(src + input.byte)))
                        << input.bit;
  const Orb32u ones = static_cast<Orb32u>(__builtin_clzll(~bits | 1));
  const Orb32s next = input.bit + static_cast<Orb32s>(ones + 1 + k);
  // What is 8 bytes long at most and ends within the stream has its zero within, too.
  if (ones >= kEscape || next > 64 || (next + 7) >> 3 > input.end - input.byte) {
    return takeValueByBits(src, input, statistics, value);
  }
  value = ones << k | static_cast<Orb32u>(bits << (ones + 1) >> (64 - k));
  input.byte += next >> 3;
  input.bit = next & 7;
  updateStatistics(statistics, value);
  return true;
}

// ---- Keys
//
// The least key is that of the next byte. The keys of equal distances come in the order of their
// ranks, and the top rank waits for none but those of distance 0. What keys stand for wraps at
// 2^24, which no block's distances reach.

constexpr Orb32s kFinished = 0x7FFFFFFF;  // as if of the top rank, whose key is 255

constexpr Orb32s keyAtRank(Orb32s key, Orb32s rank) {
  return key == kFinished ? key : (key & ~255) + rank;
}
constexpr Orb32s lowered(Orb32s key, Orb32s by) {
  return key - chosen(key == kFinished, 0, by);
}
constexpr Orb32s lesser(Orb32s a, Orb32s b) {
  return a < b ? a : b;
}

// Two ranks, maybe one and the same, that get these keys.
struct NewKeys {
  Orb32s rank;
  Orb32s key;
  Orb32s other;
  Orb32s otherKey;
};

// What a key is once a byte of this rank has occurred.
inline Orb32s keyBehind(const OrbGITDecState& state, Orb32s of, Orb32s rank) {
  return lowered(state.key[of], state.passed[of >> 4] + (of < rank ? 256 : 0));
}

// Makes the keys of a block what they are once a byte of the rank `now.rank` has occurred. Returns
// the least but for the new ones.
//
// Arrays that are read as a whole are written as a whole, here and below: a processor waits long
// for a vector of which a part has just been stored.
inline Orb32s settleBlock(OrbGITDecState& state, Orb32s block, const NewKeys& now) {
  const Orb32s passed = state.passed[block];
  Orb32s least = kFinished;
  for (Orb32s i = 0; i < 16; ++i) {
    const Orb32s at = block * 16 + i;
    const Orb32s key = lowered(state.key[at], passed + chosen(at < now.rank, 256, 0));
    const Orb32s withRank = chosen(at == now.rank, now.key, key);
    state.key[at] = chosen(at == now.other, now.otherKey, withRank);
    least = lesser(least, chosen((at == now.rank) | (at == now.other), kFinished, key));
  }
  return least;
}

// Notes for all lower ranks that the rank has occurred, and sets the new keys. Returns the least of
// all.
inline Orb32s setKeys(OrbGITDecState& state, const NewKeys& now) {
  const Orb32s block = now.rank >> 4;
  const Orb32s otherBlock = now.other >> 4;
  const bool isOneBlock = block == otherBlock;
  Orb32s low = lesser(settleBlock(state, block, now), now.key);
  Orb32s otherLow = now.otherKey;
  if (isOneBlock) {
    otherLow = low = lesser(low, otherLow);
  } else {
    otherLow = lesser(settleBlock(state, otherBlock, now), otherLow);
  }
  Orb32s least = lesser(low, otherLow);
  for (Orb32s i = 0; i < 16; ++i) {
    const bool isSettled = (i == block) | (i == otherBlock);
    const Orb32s by = chosen(i < block, 256, 0);
    const Orb32s lowest = lowered(state.lowest[i], by);
    state.passed[i] = chosen(isSettled, 0, state.passed[i] + by);
    state.lowest[i] = chosen(i == block, low, chosen(i == otherBlock, otherLow, lowest));
    least = lesser(least, chosen(isSettled, kFinished, lowest));
  }
  return least;
}

// ---- Blocks

// The next distance of a stream, times 256. The first one may be anything, those behind it are not
// negative.
inline Orb32s takeDistance(const Orb8u* src, Orb32s srcLen, OrbGITDecState& state, Orb32s stream,
                           Orb32u most) {
  Orb32u distance;
  const bool isThere =
      takeValue(src, srcLen, state.input[stream], state.statistics[stream], distance);
  return isThere && distance <= most ? static_cast<Orb32s>(distance << 8) : kFinished;
}
constexpr Orb32u kAnyDistance = ~Orb32u{0};
constexpr Orb32u kMostDistance = 0x7FFFFFFF;

// The output is written as it is found, up to maxDstLen bytes, even if there turn out to be more.
inline OrbStatus orbDecodeGIT(const Orb8u* src, Orb32s srcLen, Orb8u* dst, Orb32s* pDstLen,
                              Orb32s mode, OrbGITDecState& state) {
  resetStatistics(state.statistics);
  resetRanks(state.ranks);
  findStreams(src, srcLen, state.input);
  for (Orb32s rank = 0; rank < kTopRank; ++rank) {
    state.key[rank] = keyAtRank(takeDistance(src, srcLen, state, rank, kAnyDistance), rank);
    state.ahead[rank] = takeDistance(src, srcLen, state, rank, kMostDistance);
  }
  // The stream of the top rank's byte says how often it occurs.
  Orb32u topLeft = 0;
  if (!takeValue(src, srcLen, state.input[kTopRank], state.statistics[kTopRank], topLeft)) {
    topLeft = 0;
  }
  state.key[kTopRank] = topLeft != 0 ? kTopRank : kFinished;
  Orb32s least = kFinished;
  for (Orb32s block = 0; block < 16; ++block) {
    Orb32s lowest = kFinished;
    for (Orb32s i = 0; i < 16; ++i) lowest = lesser(lowest, state.key[block * 16 + i]);
    state.passed[block] = 0;
    state.lowest[block] = lowest;
    least = lesser(least, lowest);
  }

  Orb32s primed = mode == kGITUnprimed ? 0 : 256;
  Orb32s written = 0;
  while (least != kFinished) {
    const Orb32s rank = least & 255;
    const Orb8u byte = state.ranks.byteOf[rank];
    const Orb32s stream = 255 - byte;
    Orb32s distance = 0;
    if (rank == kTopRank) {
      if (--topLeft == 0) distance = kFinished;
    } else {
      distance = state.ahead[stream];
      if (distance != kFinished) {
        state.ahead[stream] = takeDistance(src, srcLen, state, stream, kMostDistance);
      }
    }
    state.ranks.count[rank] += 1;
    Orb32s next = rank;
    if (primed > 0) {
      --primed;
    } else {
      if (written == state.maxDstLen) return orbStsSizeErr;
      dst[written++] = byte;
      next = nextRank(state.ranks, rank, mode);
    }
    // The bytes of two ranks take their distances along.
    NewKeys now = {rank, keyAtRank(distance, rank), rank, keyAtRank(distance, rank)};
    if (next != rank) {
      now = {rank, keyAtRank(keyBehind(state, next, rank), rank), next, keyAtRank(distance, next)};
      exchangeRanks(state.ranks, rank, next);
    }
    least = setKeys(state, now);
  }
  store(pDstLen, written);
  return orbStsNoErr;
}

}  // namespace orb::ORB_BUILD::plain

#endif
