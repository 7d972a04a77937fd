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
  if (!isEscaped) {
    ageStatistics(statistics);
    updateStatistics(statistics, value);
  }
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
  ageStatistics(statistics);
  updateStatistics(statistics, value);
  return true;
}

// ---- Keys
//
// The least key is that of the next byte. The keys of equal distances come in the order of their
// ranks, and the top rank waits for none but those of distance 0. What keys stand for wraps at
// 2^24, which no block's distances reach.

constexpr Orb32s kFinished = 0x7FFFFFFF;  // as if of the top rank, whose key is 255

constexpr Orb32s keyOf(Orb32s rank, Orb32u distance) {
  return static_cast<Orb32s>(distance << 8) + rank;
}

constexpr Orb32s lowered(Orb32s key, Orb32s by) {
  return key == kFinished ? key : key - by;
}

// Makes the keys of a block what they are, with one byte more passed in front of those below
// `place`.
inline void settleBlock(OrbGITDecState& state, Orb32s block, Orb32s place) {
  const Orb32s passed = state.passed[block];
  state.passed[block] = 0;
  for (Orb32s i = 0; i < 16; ++i) {
    const Orb32s at = block * 16 + i;
    state.key[at] = lowered(state.key[at], passed + (i < place ? 256 : 0));
  }
}

// Notes for all lower ranks that this one has occurred. Its own block is settled then.
inline void passLowerKeys(OrbGITDecState& state, Orb32s rank) {
  const Orb32s block = rank >> 4;
  for (Orb32s i = 0; i < 16; ++i) {
    const Orb32s by = i < block ? 256 : 0;
    state.passed[i] += by;
    state.lowest[i] = lowered(state.lowest[i], by);
  }
  settleBlock(state, block, rank & 15);
}

inline void findLowest(OrbGITDecState& state, Orb32s block) {
  Orb32s lowest = kFinished;
  for (Orb32s i = 0; i < 16; ++i) {
    const Orb32s key = state.key[block * 16 + i];
    lowest = key < lowest ? key : lowest;
  }
  state.lowest[block] = lowest;
}

inline Orb32s leastKey(const OrbGITDecState& state) {
  Orb32s least = kFinished;
  for (Orb32s i = 0; i < 16; ++i) {
    const Orb32s lowest = state.lowest[i];
    least = lowest < least ? lowest : least;
  }
  return least;
}

constexpr Orb32s keyAtRank(Orb32s key, Orb32s from, Orb32s to) {
  return key == kFinished ? key : key - from + to;
}

// The bytes take their distances along.
inline void exchangeKeys(OrbGITDecState& state, Orb32s rank, Orb32s other) {
  const Orb32s block = other >> 4;
  settleBlock(state, block, 0);
  const Orb32s key = state.key[rank];
  state.key[rank] = keyAtRank(state.key[other], other, rank);
  state.key[other] = keyAtRank(key, rank, other);
  findLowest(state, block);
}

// ---- Blocks

// Takes the next distance of a byte. False if it doesn't occur again.
inline bool takeDistance(const Orb8u* src, Orb32s srcLen, OrbGITDecState& state, Orb32s stream,
                         Orb32u& distance) {
  return takeValue(src, srcLen, state.input[stream], state.statistics[stream], distance);
}

// The output is written as it is found, up to maxDstLen bytes, even if there turn out to be more.
inline OrbStatus orbDecodeGIT(const Orb8u* src, Orb32s srcLen, Orb8u* dst, Orb32s* pDstLen,
                              Orb32s mode, OrbGITDecState& state) {
  resetStatistics(state.statistics);
  resetRanks(state.ranks);
  findStreams(src, srcLen, state.input);
  for (Orb32s rank = 0; rank < kTopRank; ++rank) {
    Orb32u distance;
    const bool occurs = takeDistance(src, srcLen, state, rank, distance);
    state.key[rank] = occurs ? keyOf(rank, distance) : kFinished;
  }
  // The stream of the top rank's byte says how often it occurs.
  Orb32u topLeft;
  if (!takeDistance(src, srcLen, state, kTopRank, topLeft)) topLeft = 0;
  state.key[kTopRank] = topLeft != 0 ? kTopRank : kFinished;
  for (Orb32s block = 0; block < 16; ++block) {
    state.passed[block] = 0;
    findLowest(state, block);
  }

  Orb32s primed = mode == kGITUnprimed ? 0 : 256;
  Orb32s written = 0;
  for (;;) {
    const Orb32s least = leastKey(state);
    if (least == kFinished) break;
    const Orb32s rank = least & 255;
    const Orb8u byte = state.ranks.byteOf[rank];
    state.ranks.count[rank] += 1;
    passLowerKeys(state, rank);
    if (rank == kTopRank) {
      if (--topLeft == 0) state.key[rank] = kFinished;
    } else {
      Orb32u distance;
      const bool occurs =
          takeDistance(src, srcLen, state, 255 - byte, distance) && distance >> 31 == 0;
      state.key[rank] = occurs ? keyOf(rank, distance) : kFinished;
    }
    if (primed > 0) {
      --primed;
    } else {
      if (written == state.maxDstLen) return orbStsSizeErr;
      dst[written++] = byte;
      const Orb32s next = nextRank(state.ranks, rank, mode);
      if (next != rank) {
        exchangeKeys(state, rank, next);
        exchangeRanks(state.ranks, rank, next);
      }
    }
    findLowest(state, rank >> 4);
  }
  store(pDstLen, written);
  return orbStsNoErr;
}

}  // namespace orb::ORB_BUILD::plain

#endif
