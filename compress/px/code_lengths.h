// Code lengths by frequency, for the alphabets of a deflate block: a Huffman code (Huffman 1952),
// shortened where it is longer than the format allows.
//
// Which of two symbols of equal frequency gets the shorter code depends on the order in which the
// sort leaves them, so the sort's steps are part of the result.
#ifndef ORB_COMPRESS_PX_CODE_LENGTHS_H
#define ORB_COMPRESS_PX_CODE_LENGTHS_H

#include "compress/lz77_records.h"
#include "frame/build.h"

namespace orb::ORB_BUILD::plain {

constexpr Orb32s kMaxSymbols = 286;
// A code of length n needs frequencies that add up to more than the Fibonacci number n; frequencies
// have 32 bits.
constexpr Orb32s kMaxTreeDepth = 48;

struct Frequency {
  Orb32u symbol;
  Orb32u count;
};

inline void exchange(Frequency& a, Frequency& b) {
  const Frequency before = a;
  a = b;
  b = before;
}

// Up to this many records are sorted by selection.
constexpr Orb32s kShortStretch = 9;

inline void sortShort(Frequency* records, Orb32s first, Orb32s last) {
  for (; last > first; --last) {
    Orb32s highest = first;
    for (Orb32s i = first + 1; i <= last; ++i) {
      if (records[i].count > records[highest].count) highest = i;
    }
    exchange(records[highest], records[last]);
  }
}

// Sorts by rising frequency: quicksort, with the median of three as the pivot.
inline void sortByFrequency(Frequency* records, Orb32s count) {
  struct Stretch {
    Orb32s first, last;
  };
  Stretch waiting[16];  // the larger side waits, so each is at most half of the one before it
  Orb32s waitingCount = 0;
  Stretch now = {0, count - 1};
  for (;;) {
    const Orb32s size = now.last - now.first + 1;
    if (size <= kShortStretch) {
      sortShort(records, now.first, now.last);
      if (waitingCount == 0) return;
      now = waiting[--waitingCount];
      continue;
    }
    Frequency& first = records[now.first];
    Frequency& middle = records[now.first + size / 2];
    Frequency& last = records[now.last];
    if (first.count > middle.count) exchange(first, middle);
    if (first.count > last.count) exchange(first, last);
    if (middle.count > last.count) exchange(middle, last);
    const Orb32u pivot = middle.count;

    // Neither end has to be looked at: they are on their sides already.
    Orb32s low = now.first;
    Orb32s high = now.last;
    for (;;) {
      do ++low;
      while (low <= now.last && records[low].count <= pivot);
      do --high;
      while (records[high].count > pivot);
      if (high < low) break;
      exchange(records[low], records[high]);
    }
    while (high > now.first && records[high].count == pivot) --high;

    const Stretch below = {now.first, high};
    const Stretch above = {low, now.last};
    const bool belowIsLarger = below.last - below.first >= above.last - above.first;
    waiting[waitingCount++] = belowIsLarger ? below : above;
    now = belowIsLarger ? above : below;
  }
}

// Stores how many leaves the Huffman tree of the sorted frequencies has at each depth, and returns
// its depth. Of a leaf and a node of equal weight the leaf is joined first, and of two nodes the
// older one, which makes the tree as flat as it can be.
inline Orb32s countDepths(const Frequency* sorted, Orb32s leaves, Orb32s (&counts)[kMaxTreeDepth]) {
  Orb32u weight[kMaxSymbols];
  Orb32s parent[kMaxSymbols];  // of a node
  Orb32s depth[kMaxSymbols];
  Orb32s leafChildren[kMaxSymbols];
  Orb32s leaf = 0;
  Orb32s oldest = 0;  // of the nodes without a parent
  for (Orb32s node = 0; node < leaves - 1; ++node) {
    weight[node] = 0;
    leafChildren[node] = 0;
    for (Orb32s child = 0; child < 2; ++child) {
      if (oldest == node || (leaf < leaves && sorted[leaf].count <= weight[oldest])) {
        weight[node] += sorted[leaf++].count;
        ++leafChildren[node];
      } else {
        weight[node] += weight[oldest];
        parent[oldest++] = node;
      }
    }
  }
  for (Orb32s& count : counts) count = 0;
  for (Orb32s node = leaves - 2; node >= 0; --node) {
    depth[node] = node == leaves - 2 ? 1 : depth[parent[node]] + 1;  // of its children
    counts[depth[node]] += leafChildren[node];
  }
  return depth[0];  // the first node is as deep as any
}

// Moves leaves up, two at a time, until none is deeper than `limit`: one takes the place of their
// parent, and the other hangs beside a leaf from above the limit.
inline void limitDepths(Orb32s (&counts)[kMaxTreeDepth], Orb32s deepest, Orb32s limit) {
  for (Orb32s depth = deepest; depth > limit; --depth) {
    while (counts[depth] > 0) {
      Orb32s other = limit - 1;
      while (counts[other] == 0) --other;
      counts[depth] -= 2;
      ++counts[depth - 1];
      --counts[other];
      counts[other + 1] += 2;
    }
  }
}

// Stores the length of each symbol's code, 0 for those that do not occur. Returns one above the
// highest symbol with a code. There are always two codes: a symbol alone is joined by another.
inline Orb32s orbMakeCodeLengths(const Orb32u* frequencies, Orb32s symbols, Orb32s limit,
                                 Orb8u* lengths) {
  Frequency records[kMaxSymbols];
  for (Orb32s i = 0; i < symbols; ++i) {
    records[i] = {static_cast<Orb32u>(i), frequencies[i]};
    lengths[i] = 0;
  }
  // Those that occur to the front.
  Orb32s used = 0;
  for (Orb32s last = symbols - 1;; exchange(records[used], records[last])) {
    while (used <= last && records[used].count != 0) ++used;
    while (used < last && records[last].count == 0) --last;
    if (used >= last) break;
  }
  if (used < 2) {
    records[0].count = 1;
    used = 2;
  }
  Orb32u highest = 0;
  for (Orb32s i = 0; i < used; ++i) {
    if (records[i].symbol > highest) highest = records[i].symbol;
  }
  sortByFrequency(records, used);

  Orb32s counts[kMaxTreeDepth];
  const Orb32s deepest = countDepths(records, used, counts);
  limitDepths(counts, deepest, limit);
  // The rarer a symbol the longer its code.
  Orb32s next = 0;
  for (Orb32s length = deepest < limit ? deepest : limit; length > 0; --length) {
    for (Orb32s i = 0; i < counts[length]; ++i) {
      lengths[records[next++].symbol] = static_cast<Orb8u>(length);
    }
  }
  return static_cast<Orb32s>(highest) + 1;
}

// The low `length` bits, at most 16, in reverse.
inline Orb32u reverseBits(Orb32u bits, Orb32u length) {
  bits = (bits & 0x5555) << 1 | (bits >> 1 & 0x5555);
  bits = (bits & 0x3333) << 2 | (bits >> 2 & 0x3333);
  bits = (bits & 0x0F0F) << 4 | (bits >> 4 & 0x0F0F);
  bits = (bits & 0x00FF) << 8 | (bits >> 8 & 0x00FF);
  return bits >> (16 - length);
}

// The canonical code of these lengths (RFC 1951, 3.2.2), as it goes into the stream.
inline void orbAssignCodes(const Orb8u* lengths, Orb32s symbols, OrbLZ77Code* codes) {
  Orb32u counts[16] = {};
  for (Orb32s i = 0; i < symbols; ++i) ++counts[lengths[i]];
  counts[0] = 0;
  Orb32u next[16] = {};
  for (Orb32s length = 1; length < 15; ++length)
    next[length + 1] = (next[length] + counts[length]) * 2;
  for (Orb32s i = 0; i < symbols; ++i) {
    const Orb32u length = lengths[i];
    codes[i] = {length == 0 ? 0 : reverseBits(next[length]++, length), length};
  }
}

}  // namespace orb::ORB_BUILD::plain

#endif
