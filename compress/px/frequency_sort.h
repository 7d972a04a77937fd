// From the frequencies of symbols to the depths of a Huffman tree, for the codes of deflate and of
// the byte coder.
//
// The sort isn't stable, and which of two symbols of equal frequency gets the longer code follows
// from its steps: every one of them is part of what the coders put out.
#ifndef ORB_COMPRESS_PX_FREQUENCY_SORT_H
#define ORB_COMPRESS_PX_FREQUENCY_SORT_H

#include "frame/build.h"

namespace orb::ORB_BUILD::plain {

struct SymbolFrequency {
  Orb32u frequency;
  Orb32s symbol;
};

inline void swapRecords(SymbolFrequency& a, SymbolFrequency& b) {
  const SymbolFrequency held = a;
  a = b;
  b = held;
}
inline void putInOrder(SymbolFrequency& a, SymbolFrequency& b) {
  if (a.frequency > b.frequency) swapRecords(a, b);
}

// Moves the most frequent of those left to the end, again and again; the first of equals.
inline void sortShortStretch(SymbolFrequency* records, Orb32s first, Orb32s last) {
  for (; last > first; --last) {
    Orb32s highest = first;
    for (Orb32s i = first + 1; i <= last; ++i) {
      if (records[i].frequency > records[highest].frequency) highest = i;
    }
    swapRecords(records[highest], records[last]);
  }
}

// Sorts by rising frequency: a quicksort about the median of the first, the middle and the last
// record, down to stretches of 9.
inline void sortByFrequency(SymbolFrequency* records, Orb32s count) {
  struct Stretch {
    Orb32s first, last;
  };
  // Of two stretches the longer one waits, so each that waits is less than half of the one below.
  Stretch waiting[32];
  int waitingCount = 0;
  Stretch now = {0, count - 1};
  for (;;) {
    if (now.last - now.first < 9) {
      sortShortStretch(records, now.first, now.last);
      if (waitingCount == 0) return;
      now = waiting[--waitingCount];
      continue;
    }
    const Orb32s middle = now.first + (now.last - now.first + 1) / 2;
    putInOrder(records[now.first], records[middle]);
    putInOrder(records[now.first], records[now.last]);
    putInOrder(records[middle], records[now.last]);
    const Orb32u pivot = records[middle].frequency;

    // Each cursor finds a record to stop at: the pivot's, or one that was swapped before.
    Orb32s low = now.first;
    Orb32s high = now.last;
    for (;;) {
      do ++low;
      while (low <= now.last && records[low].frequency <= pivot);
      do --high;
      while (records[high].frequency > pivot);
      if (high < low) break;
      swapRecords(records[low], records[high]);
    }
    while (high > now.first && records[high].frequency == pivot) --high;

    const Stretch left = {now.first, high};
    const Stretch right = {low, now.last};
    const bool leftIsLonger = high - now.first >= now.last - low;
    waiting[waitingCount++] = leftIsLonger ? left : right;
    now = leftIsLonger ? right : left;
  }
}

// By which of its two symbols a joined pair goes on.
enum class JoinedLabel { kFirst, kSecond };

// Joins the two rarest of `count` sorted records until one is left, and sets `depth` of each symbol
// among them, which has to be 0 before. A joined pair comes behind all records of its frequency.
// Returns the largest depth. Of the records nothing is left.
inline Orb32s measureTree(SymbolFrequency* records, Orb32s count, JoinedLabel label,
                          Orb32s* depth) {
  // Record i and its successor are joined; then record i remembers the successor's symbol.
  for (Orb32s i = 0; i < count - 1; ++i) {
    const Orb32s first = records[i].symbol;
    const Orb32s second = records[i + 1].symbol;
    const SymbolFrequency joined = {records[i].frequency + records[i + 1].frequency,
                                    label == JoinedLabel::kFirst ? first : second};
    records[i].frequency = static_cast<Orb32u>(second);
    Orb32s gap = i + 1;
    for (; gap + 1 < count && records[gap + 1].frequency <= joined.frequency; ++gap) {
      records[gap] = records[gap + 1];
    }
    records[gap] = joined;
  }
  Orb32s largest = 0;
  for (Orb32s i = count - 2; i >= 0; --i) {
    const Orb32s first = records[i].symbol;
    const Orb32s second = static_cast<Orb32s>(records[i].frequency);
    const Orb32s below = depth[label == JoinedLabel::kFirst ? first : second] + 1;
    depth[first] = depth[second] = below;
    if (below > largest) largest = below;
  }
  return largest;
}

}  // namespace orb::ORB_BUILD::plain

#endif
