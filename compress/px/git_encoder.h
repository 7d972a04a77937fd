// The encoder of GIT blocks.
#ifndef ORB_COMPRESS_PX_GIT_ENCODER_H
#define ORB_COMPRESS_PX_GIT_ENCODER_H

#include "compress/px/git_coder.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD::plain {

// ---- Streams

inline Orb32s streamAreaSize(const OrbGITEncState& state) {
  return (state.maxSrcLen & ~7) + 8;
}
inline Orb8u* streamArea(OrbGITEncState& state, Orb32s stream) {
  return reinterpret_cast<Orb8u*>(&state + 1) +
         static_cast<size_t>(stream) * static_cast<size_t>(streamAreaSize(state));
}

// Appends the low `n` bits of the value, 1 to 57. A stream takes maxSrcLen bytes: of what would
// fill it only as many bits as fit are written, and the result is false.
inline bool putBits(OrbGITEncState& state, Orb32s stream, uint64_t value, Orb32s n) {
  const Orb32s position = state.position[stream];
  const Orb32s room = state.maxSrcLen * 8 - position;
  const Orb32s first = position >> 3;
  const Orb32s held = position & 7;
  Orb8u* const at = streamArea(state, stream) + first;
  uint64_t bits = value << (64 - n) >> held;
  bits |= static_cast<uint64_t>(*at & ~(255 >> held)) << 56;
  const uint64_t word = __builtin_bswap64(bits);
  if (n < room && first + 8 <= streamAreaSize(state)) {
    store(reinterpret_cast<uint64_t*>(at), word);
    state.position[stream] = position + n;
    return true;
  }
  const Orb32s written = n < room ? n : room;
  __builtin_memcpy(at, &word, static_cast<size_t>((held + written + 7) / 8));
  state.position[stream] = position + written;
  return n < room;
}

inline bool putEscapedValue(OrbGITEncState& state, Orb32s stream, Orb32u value, Orb32u k) {
  if (!putBits(state, stream, 255, 8)) return false;
  value -= shiftedLeft(kEscape, k);
  k *= 2;
  while (shiftedRight(value, k) >= kEscape) {
    if (!putBits(state, stream, 1, 1)) return false;
    value -= shiftedLeft(kEscape, k);
    k *= 2;
  }
  // The quotient in ones, between two zeros. The remainder may have more bits than the value.
  const Orb32s quotient = static_cast<Orb32s>(shiftedRight(value, k));
  const Orb32s bits = static_cast<Orb32s>(k);
  if (!putBits(state, stream, ((1u << quotient) - 1) << 1, quotient + 2)) return false;
  if (bits > 32 && !putBits(state, stream, 0, bits - 32)) return false;
  return putBits(state, stream, value, bits > 32 ? 32 : bits);
}

inline bool putValue(OrbGITEncState& state, Orb32s stream, Orb32u value) {
  OrbGITStatistics& statistics = state.statistics[stream];
  const Orb32u k = statistics.k;
  const Orb32u quotient = shiftedRight(value, k);
  if (quotient >= kEscape) return putEscapedValue(state, stream, value, k);
  const uint64_t prefix = (uint64_t{1} << quotient) - 1;
  const uint64_t remainder = value & ((uint64_t{1} << k) - 1);
  if (!putBits(state, stream, prefix << (k + 1) | remainder,
               static_cast<Orb32s>(quotient + 1 + k))) {
    return false;
  }
  updateStatistics(statistics, value);
  return true;
}

// Fills up the last byte with ones. Returns the length in bytes.
inline Orb32s closeStream(OrbGITEncState& state, Orb32s stream) {
  const Orb32s position = state.position[stream];
  const Orb32s held = position & 7;
  Orb8u& last = streamArea(state, stream)[position >> 3];
  last = static_cast<Orb8u>((last & ~(255 >> held)) | 255 >> held);
  return (position >> 3) + 1;
}

// ---- Intervals

// How often higher ranks have occurred: what is at the right of the way up.
inline Orb32s countHigher(const OrbGITEncState& state, Orb32s rank) {
  Orb32s higher = 0;
  for (Orb32s node = rank + 256; node > 1; node >>= 1) {
    higher += chosen((node & 1) == 0, state.hits[node | 1], 0);
  }
  return higher;
}

inline void countRank(OrbGITEncState& state, Orb32s rank) {
  for (Orb32s node = rank + 256; node > 0; node >>= 1) state.hits[node] += 1;
}

// The byte of this rank occurs: its interval is the number of higher ranks since it last did. The
// intervals of the top rank are all 0, and nothing is written.
//
// Returns false if nothing more is to be done for this byte.
inline bool putInterval(OrbGITEncState& state, Orb32s rank, Orb32s stream) {
  state.ranks.count[rank] += 1;
  countRank(state, rank);
  if (rank == kTopRank) return false;
  const Orb32s higher = countHigher(state, rank);
  const Orb32s interval = higher - state.last[rank];
  state.last[rank] = higher;
  return putValue(state, stream, static_cast<Orb32u>(interval));
}

// Neither byte's interval changes on the way: that of the byte that has just occurred is 0.
inline void changeRanks(OrbGITEncState& state, Orb32s rank, Orb32s other) {
  const Orb32s higher = countHigher(state, rank);
  const Orb32s higherThanOther = countHigher(state, other);
  state.last[rank] = state.last[other] + higher - higherThanOther;
  state.last[other] = higherThanOther;
  exchangeRanks(state.ranks, rank, other);
}

inline void resetEncoder(OrbGITEncState& state) {
  resetStatistics(state.statistics);
  resetRanks(state.ranks);
  orbZero(state.position, sizeof state.position);
  orbZero(state.last, sizeof state.last);
  orbZero(state.hits, sizeof state.hits);
}

// ---- Blocks

inline OrbStatus orbEncodeGIT(const Orb8u* src, Orb32s srcLen, Orb8u* dst, Orb32s* pDstLen,
                              Orb32s mode, OrbGITEncState& state) {
  resetEncoder(state);
  if (mode != kGITUnprimed) {
    for (Orb32s rank = 255; rank >= 0; --rank) putInterval(state, rank, rank);
  }
  for (Orb32s i = 0; i < srcLen; ++i) {
    const Orb32s rank = state.ranks.rankOf[src[i]];
    if (!putInterval(state, rank, 255 - src[i])) continue;
    const Orb32s next = nextRank(state.ranks, rank, mode);
    if (next != rank) changeRanks(state, rank, next);
  }
  putValue(state, kTopRank, static_cast<Orb32u>(Orb32s{state.ranks.count[kTopRank]}));

  Orb32s length[256];
  int64_t total = 0;
  for (Orb32s stream = 0; stream < 256; ++stream) {
    length[stream] = closeStream(state, stream);
    total += 4 + length[stream];
  }
  if (total > state.maxDstLen) return orbStsSizeErr;
  for (Orb32s stream = 0; stream < 256; ++stream) {
    store(reinterpret_cast<Orb32u*>(dst), __builtin_bswap32(static_cast<Orb32u>(length[stream])));
    __builtin_memcpy(dst + 4, streamArea(state, stream), static_cast<size_t>(length[stream]));
    dst += 4 + length[stream];
  }
  store(pDstLen, static_cast<Orb32s>(total));
  return orbStsNoErr;
}

}  // namespace orb::ORB_BUILD::plain

#endif
