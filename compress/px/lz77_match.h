// The match search of deflate: from bytes to pairs.
//
// Tables and text speak of positions, which count the bytes consumed, modulo 2^32. A search works
// on `i`, the index of a byte in the source of its call, and on distances, which stay right when
// positions wrap. Only distances lead to memory, and only after they have been checked: whatever a
// table holds, a search stays within the source and the window.
#ifndef ORB_COMPRESS_PX_LZ77_MATCH_H
#define ORB_COMPRESS_PX_LZ77_MATCH_H

#include "compress/lz77_records.h"
#include "compress/tables/hash_mix.h"
#include "frame/arith.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD::plain {

constexpr Orb32s kMinMatch = 3;
constexpr Orb32s kMaxMatch = 258;
constexpr Orb32s kHistory = 32768;                  // the reach of a distance
constexpr Orb32s kWindowLimit = 65536 - kMaxMatch;  // the window's place for the seam
constexpr Orb32s kHashMask = 0x7FFF;
constexpr Orb32s kEmpty = -32768;  // farther than the reach, from the first position on

// A 3-byte match from farther away than this costs more than three literals.
constexpr Orb32u kFarForThree = 4096;

// ---- Hashes

// Of the fast level: the low 15 bits.
struct FastHash {
  Orb32u bits = 0;

  void roll(Orb8u byte) { bits = bits << 5 ^ byte; }
  Orb32u value() const { return bits & kHashMask; }
};

// Of the levels with chains.
struct MixHash {
  uint64_t bits = 0;

  void roll(Orb8u byte) { bits = bits << 16 ^ orbHashMix[byte]; }
  Orb32u value() const { return static_cast<Orb32u>(bits >> 32) & kHashMask; }
};

inline void enterHead(OrbLZ77EncState& state, Orb32u hash, Orb32u position) {
  state.head.at[hash] = static_cast<Orb32s>(position);
}

// Returns the position before it with the same hash.
inline Orb32s enterChain(OrbLZ77EncState& state, Orb32u hash, Orb32u position) {
  const Orb32s before = state.head.at[hash];
  state.prev.at[position % kHistory] = before;
  state.head.at[hash] = static_cast<Orb32s>(position);
  return before;
}

// ---- Comparing

// How many of the first `limit` bytes are equal.
inline Orb32s equalBytes(const Orb8u* a, const Orb8u* b, Orb32s limit) {
  constexpr Orb32s kWord = sizeof(uintptr_t);
  Orb32s n = 0;
  for (; n + kWord <= limit; n += kWord) {
    const uintptr_t difference = load(reinterpret_cast<const uintptr_t*>(a + n)) ^
                                 load(reinterpret_cast<const uintptr_t*>(b + n));
    if (difference != 0) {
      const Orb32s zeros =
          kWord == 8 ? __builtin_ctzll(difference) : __builtin_ctz(static_cast<Orb32u>(difference));
      return n + zeros / 8;
    }
  }
  while (n < limit && a[n] == b[n]) ++n;
  return n;
}

inline Orb32u load32(const Orb8u* bytes) {
  return load(reinterpret_cast<const Orb32u*>(bytes));
}

// ---- Which candidates count

// Those that a distance of deflate reaches. The largest, 32768, is never used: it would be that of
// a position whose place in the chains is taken by the present one.
struct InWindow {
  static constexpr bool kChainsAreWhole = true;

  explicit InWindow(Orb32s) {}
  bool counts(Orb32s candidate, Orb32u position) const {
    return position - static_cast<Orb32u>(candidate) - 1 < kHistory - 1;
  }
};

// Those of this call, but for position 0. Calls begin at 0; in front of the beginning of another
// there is nothing to be read.
struct InCall {
  static constexpr bool kChainsAreWhole = false;

  Orb32s first;

  explicit InCall(Orb32s start) : first(start < 1 ? 1 : start) {}
  bool counts(Orb32s candidate, Orb32u position) const {
    return candidate >= first && candidate < static_cast<Orb32s>(position);
  }
};

// ---- Searching

struct Match {
  Orb32s length;
  Orb32u distance;
};

template <class Reach>
struct Search {
  OrbLZ77EncState& state;
  const Orb8u* src;
  ptrdiff_t length;
  const Orb8u* window;  // where the source begins in the window, too: behind the history
  Orb32u start;         // the position of the first byte
  Reach reach;
  ptrdiff_t gapless;   // how many positions in front of `start` are entered without a gap
  OrbLZ77Pair* pairs;  // where the next pair goes
  OrbLZ77Pair* pairsEnd;

  bool hasRoom() const { return pairs != pairsEnd; }
  Orb32u position(ptrdiff_t i) const { return start + static_cast<Orb32u>(i); }
  // The longest match at i, if the search is to leave the last `rest` bytes alone.
  Orb32s maxLength(ptrdiff_t i, Orb32s rest) const {
    const ptrdiff_t left = length - i - rest;
    return left < kMaxMatch ? static_cast<Orb32s>(left) : kMaxMatch;
  }
  const Orb8u* behind(ptrdiff_t i, Orb32u distance) const {
    const Orb8u* const text = distance <= static_cast<size_t>(i) ? src : window;
    return text + i - static_cast<ptrdiff_t>(distance);
  }

  void putLiteral(ptrdiff_t i) { store(pairs++, OrbLZ77Pair{src[i], 0}); }
  void putMatch(Match match) {
    store(pairs++,
          OrbLZ77Pair{static_cast<Orb16u>(match.length), static_cast<Orb16u>(match.distance)});
  }

  // The longest match at i that is longer than `best`, which is at least 2, and no longer than
  // `limit`, among the first `tries` of a chain; of equals the first. If there is none, a match of
  // length `best` and any distance.
  //
  // With kRace a chain of other candidates is followed beside the first, that of the three bytes in
  // which a longer match would end. It has every place with a longer match, if all positions have
  // been entered that it could be found by; and it is often much shorter. If it ends first, and
  // none of its places has a longer match, there is none.
  template <bool kRace>
  Match longest(ptrdiff_t i, Orb32s candidate, Orb32s best, Orb32s limit, Orb32s tries) const {
    Match found = {best, 0};
    const Orb32u here = position(i);
    if (limit <= best || !reach.counts(candidate, here)) return found;
    const bool isComplete = kRace && gapless + i >= kHistory;
    // To be longer a match has to agree in its bytes from `tail` on, as many as the mask says.
    ptrdiff_t tail = 0;
    Orb32u mask = 0xFFFFFF;
    Orb32u wanted = load32(src + i) & mask;
    bool isRacing = false;
    Orb32s rival = kEmpty;
    const auto beat = [&](Orb32s longer) {
      tail = longer - 3;
      mask = 0xFFFFFFFF;
      wanted = load32(src + i + tail);
      isRacing = isComplete;
      if (!isRacing) return;
      MixHash hash;
      for (ptrdiff_t k = tail + 1; k <= longer; ++k) hash.roll(src[i + k]);
      rival = state.head.at[hash.value()];
    };
    if (best > 2) beat(best);
    for (;;) {
      const Orb32u distance = here - static_cast<Orb32u>(candidate);
      candidate = state.prev.at[static_cast<Orb32u>(candidate) % kHistory];
      const Orb8u* const other = behind(i, distance);
      if ((load32(other + tail) & mask) == wanted) {
        const Orb32s equal = equalBytes(src + i, other, limit);
        if (equal > found.length) {
          found = {equal, distance};
          if (equal == limit) break;
          beat(equal);
        }
      }
      if (!reach.counts(candidate, here) || --tries == 0) break;
      if (!isRacing) continue;
      const Orb32u offset = static_cast<Orb32u>(tail) + 1;
      if (reach.counts(rival, here + offset)) {
        const Orb32u rivalDistance = here + offset - static_cast<Orb32u>(rival);
        rival = state.prev.at[static_cast<Orb32u>(rival) % kHistory];
        const Orb8u* const rivalText = behind(i, rivalDistance);
        isRacing = load32(rivalText + tail) != wanted ||
                   equalBytes(src + i, rivalText, limit) <= found.length;
      } else if (here - static_cast<Orb32u>(candidate) > offset) {
        // What is nearer may end in bytes that are not entered yet.
        break;
      }
    }
    return found;
  }

  // The three levels return the index of the first byte that is in no pair.

  ptrdiff_t searchFast() {
    ptrdiff_t i = 0;
    if (length <= 2) return i;
    FastHash hash;
    hash.roll(src[0]);
    hash.roll(src[1]);
    while (i < length - 2 && hasRoom()) {
      hash.roll(src[i + 2]);
      const Orb32u here = position(i);
      const Orb32s candidate = state.head.at[hash.value()];
      enterHead(state, hash.value(), here);
      const Orb32s limit = maxLength(i, 2);
      Match match = {0, here - static_cast<Orb32u>(candidate)};
      if (limit >= kMinMatch && reach.counts(candidate, here)) {
        const Orb8u* const other = behind(i, match.distance);
        if (((load32(other) ^ load32(src + i)) & 0xFFFFFF) == 0) {
          match.length = equalBytes(src + i, other, limit);
        }
      }
      if (match.length < kMinMatch) {
        putLiteral(i++);
        continue;
      }
      putMatch(match);
      for (const ptrdiff_t end = i + match.length; ++i != end;) {
        hash.roll(src[i + 2]);
        enterHead(state, hash.value(), position(i));
      }
    }
    return i;
  }

  ptrdiff_t searchChain() {
    ptrdiff_t i = 0;
    if (length <= 2) return i;
    MixHash hash;
    hash.roll(src[0]);
    hash.roll(src[1]);
    while (i < length - 2 && hasRoom()) {
      hash.roll(src[i + 2]);
      const Orb32s candidate = enterChain(state, hash.value(), position(i));
      const Match match = longest<false>(i, candidate, kMinMatch - 1, maxLength(i, 2), 16);
      if (match.length < kMinMatch) {
        putLiteral(i++);
        continue;
      }
      putMatch(match);
      for (const ptrdiff_t end = i + match.length; ++i != end;) {
        hash.roll(src[i + 2]);
        enterChain(state, hash.value(), position(i));
      }
    }
    return i;
  }

  static bool isWorthIt(Match match) {
    return match.length > kMinMatch ||
           (match.length == kMinMatch && match.distance <= kFarForThree);
  }

  // A match is only taken if there is no longer one at the next byte.
  ptrdiff_t searchLazy() {
    constexpr bool kRace = Reach::kChainsAreWhole;
    ptrdiff_t i = 0;
    if (length <= 3) return i;
    MixHash hash;  // at the loop's head, of the bytes at i
    hash.roll(src[0]);
    hash.roll(src[1]);
    hash.roll(src[2]);
    Match match = {};
    bool needSearch = true;
    while (i < length - 3 && hasRoom()) {
      const Orb32s candidate = enterChain(state, hash.value(), position(i));
      if (needSearch) match = longest<kRace>(i, candidate, kMinMatch - 1, maxLength(i, 3), 512);
      hash.roll(src[i + 3]);
      // The next match is only asked for its length if it is to be longer.
      const bool worthIt = isWorthIt(match);
      const Match next =
          longest<kRace>(i + 1, state.head.at[hash.value()], worthIt ? match.length : kMinMatch - 1,
                         maxLength(i + 1, 3), 512);
      needSearch = worthIt && next.length == match.length;
      if (!needSearch) {
        putLiteral(i++);
        match = next;
        continue;
      }
      putMatch(match);
      for (const ptrdiff_t end = i + match.length; ++i != end;) {
        enterChain(state, hash.value(), position(i));
        hash.roll(src[i + 3]);
      }
    }
    return i;
  }

  // Makes pairs until the source or the room ends.
  ptrdiff_t run() {
    ptrdiff_t i = state.level == orbLZ77LevelFast   ? searchFast()
                  : state.level == orbLZ77LevelLazy ? searchLazy()
                                                    : searchChain();
    gapless += i;
    if (i < length && hasRoom()) gapless = 0;
    while (i < length && hasRoom()) putLiteral(i++);
    return i;
  }
};

// ---- What surrounds a search

// Brings positions down to their low 15 bits, and all entries with them, so that a position keeps
// its place in the chains. Entries may turn negative. One that would fall out of the range stays at
// its end, as far away as can be.
inline void orbRebase(OrbLZ77EncState& state) {
  const Orb32s cut = state.position & ~(kHistory - 1);
  const Orb32s lowest = INT32_MIN + cut;
  const auto rebase = [=](OrbLZ77Positions& table) {
    for (Orb32s i = 0; i < 32768; ++i) {
      const Orb32s entry = table.at[i];
      table.at[i] = (entry < lowest ? lowest : entry) - cut;
    }
  };
  state.position -= cut;
  rebase(state.head);
  rebase(state.prev);
}

// The last match of a call may run on from the window into the source. It is compared in the window
// alone, which for that purpose has the first bytes of the source behind the history.
inline Orb32s orbPlaceSeam(OrbLZ77EncState& state, const Orb8u* src, Orb32s length) {
  const Orb32s placed = length < kMaxMatch ? length : kMaxMatch;
  __builtin_memcpy(state.window + state.windowFill, src, static_cast<size_t>(placed));
  return placed;
}

// Appends the bytes that a call has consumed to the window, which has its seam already.
inline void orbAppendToWindow(OrbLZ77EncState& state, const Orb8u* src, Orb32s used) {
  if (used >= kHistory) {
    __builtin_memcpy(state.window, src + used - kHistory, kHistory);
    state.windowFill = kHistory;
    return;
  }
  const Orb32s placed = used < kMaxMatch ? used : kMaxMatch;
  const Orb32s rest = used - placed;
  Orb32s end = state.windowFill + placed;
  if (end + rest > kWindowLimit) {
    const Orb32s kept = kHistory - rest;
    __builtin_memmove(state.window, state.window + end - kept, static_cast<size_t>(kept));
    end = kept;
  }
  __builtin_memcpy(state.window + end, src + placed, static_cast<size_t>(rest));
  state.windowFill = end + rest;
}

template <class Reach>
inline Orb32s orbSearch(OrbLZ77EncState& state, const Orb8u* src, Orb32s length,
                        OrbLZ77Pair** ppPairs, Orb32s* pPairsLen) {
  OrbLZ77Pair* const pairs = load(ppPairs);
  const Orb32s room = load(pPairsLen);
  Search<Reach> search = {state,
                          src,
                          length,
                          state.window + state.windowFill,
                          static_cast<Orb32u>(state.position),
                          Reach(state.position),
                          state.gapless,
                          pairs,
                          pairs + room};
  const Orb32s used = static_cast<Orb32s>(search.run());
  state.gapless = static_cast<Orb32s>(search.gapless < kHistory ? search.gapless : kHistory);
  store(ppPairs, search.pairs);
  store(pPairsLen, room - static_cast<Orb32s>(search.pairs - pairs));
  return used;
}

// Makes pairs of the source until it or the room ends. Returns how many bytes went into them.
inline Orb32s orbMakePairs(OrbLZ77EncState& state, const Orb8u* src, Orb32s length,
                           OrbLZ77Pair** ppPairs, Orb32s* pPairsLen, bool restart) {
  state.windowFill = limit(state.windowFill, 0, kWindowLimit);
  orbPlaceSeam(state, src, length);
  return restart ? orbSearch<InCall>(state, src, length, ppPairs, pPairsLen)
                 : orbSearch<InWindow>(state, src, length, ppPairs, pPairsLen);
}

// Makes a text of at most 32768 bytes the history of a new stream.
inline void orbSetHistory(OrbLZ77EncState& state, const Orb8u* text, Orb32s length) {
  __builtin_memcpy(state.window, text, static_cast<size_t>(length));
  state.windowFill = length;
  state.position = length;
  state.gapless = 0;
  const auto enterAll = [&](auto hash, auto enter) {
    hash.roll(text[0]);
    hash.roll(text[1]);
    for (Orb32s i = 0; i + kMinMatch <= length; ++i) {
      hash.roll(text[i + 2]);
      enter(state, hash.value(), static_cast<Orb32u>(i));
    }
  };
  if (state.level == orbLZ77LevelFast) {
    enterAll(FastHash(), enterHead);
  } else {
    enterAll(MixHash(), enterChain);
  }
}

}  // namespace orb::ORB_BUILD::plain

#endif
