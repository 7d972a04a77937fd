// What the encoder and the decoder of GIT blocks share: ranks, and the statistics of Rice codes.
#ifndef ORB_COMPRESS_PX_GIT_CODER_H
#define ORB_COMPRESS_PX_GIT_CODER_H

#include "compress/git_coder_records.h"
#include "frame/build.h"
#include "frame/memory.h"

namespace orb::ORB_BUILD::plain {

// Modes: what may change ranks, and whether every byte occurs once before the block begins.
constexpr Orb32s kGITDown = 1;
constexpr Orb32s kGITUp = 2;
constexpr Orb32s kGITUnprimed = 3;

constexpr Orb32s gitMode(Orb32s mode) {
  return mode == 0 ? kGITDown : mode;
}

// The byte 0 has the top rank, for good.
constexpr Orb32s kTopRank = 255;

// A choice without a branch, as vectors make it.
constexpr Orb32s chosen(bool condition, Orb32s a, Orb32s b) {
  return b ^ ((a ^ b) & -static_cast<Orb32s>(condition));
}

// ---- Ranks

inline void resetRanks(OrbGITRanks& ranks) {
  for (int rank = 0; rank < 256; ++rank) {
    ranks.byteOf[rank] = static_cast<Orb8u>(255 - rank);
    ranks.rankOf[255 - rank] = static_cast<Orb8u>(rank);
    ranks.count[rank] = 0;
  }
}

// The rank that a byte is to change places with once it has occurred, or its own: the one above or
// the one below, if that has occurred less often.
inline Orb32s nextRank(const OrbGITRanks& ranks, Orb32s rank, Orb32s mode) {
  Orb32s neighbour = rank;
  if (mode == kGITUp && rank < kTopRank - 1) neighbour = rank + 1;
  if (mode == kGITDown && rank > 0 && rank < kTopRank) neighbour = rank - 1;
  return ranks.count[neighbour] < ranks.count[rank] ? neighbour : rank;
}

inline void exchangeRanks(OrbGITRanks& ranks, Orb32s a, Orb32s b) {
  const Orb8u byteOfA = ranks.byteOf[a];
  const Orb8u byteOfB = ranks.byteOf[b];
  ranks.byteOf[a] = byteOfB;
  ranks.byteOf[b] = byteOfA;
  ranks.rankOf[byteOfB] = static_cast<Orb8u>(a);
  ranks.rankOf[byteOfA] = static_cast<Orb8u>(b);
  const Orb32s countOfA = ranks.count[a];
  ranks.count[a] = ranks.count[b];
  ranks.count[b] = countOfA;
}

// ---- Rice codes
//
// A value is a quotient by 2^k in ones with a zero behind them, and the remainder in k bits. From a
// quotient of 8 on it is escaped: 8 ones, and a one for every step but the first in which 8 times
// 2^k are taken off and k doubles, until the quotient is below 8; a zero, the quotient, and the
// remainder. Only values without an escape change the statistics.

constexpr Orb32u kEscape = 8;

// Shifts by any number of bits.
constexpr Orb32u shiftedLeft(Orb32u value, Orb32u n) {
  return n < 32 ? value << n : 0;
}
constexpr Orb32u shiftedRight(Orb32u value, Orb32u n) {
  return n < 32 ? value >> n : 0;
}

inline void resetStatistics(OrbGITStatistics (&statistics)[256]) {
  for (OrbGITStatistics& s : statistics) s = {0, 0, 0, 10};
}

// Notes a value that isn't escaped: k becomes the least from 1 on with which the mean interval is
// no more than 2^k. In front of the 9th value, the 17th and so on, what came before is halved.
inline void updateStatistics(OrbGITStatistics& s, Orb32u value) {
  const Orb32u isOld = s.updates >= 8;
  const Orb32u sum = (s.intervalSum >> isOld) + value;
  const Orb32u count = (s.intervalCount >> isOld) + 1;
  s.updates = isOld != 0 ? 1 : s.updates + 1;
  s.intervalSum = sum;
  s.intervalCount = count;
  // No less than the difference in bits, and at most one more.
  const Orb32s bits = __builtin_clz(count) - __builtin_clz(sum | 1);
  const Orb32u k = bits < 1 ? 1 : static_cast<Orb32u>(bits);
  s.k = k + (uint64_t{count} << k < sum);
}

}  // namespace orb::ORB_BUILD::plain

#endif
