// Sorting the rotations of a text of up to 32768 symbols.
//
// A rotation rises if the one that begins a symbol later is greater, and falls if it is less. A
// valley is a rotation that rises behind one that falls. Once the valleys are in order, two scans
// put all others in order: first the falling rotations, each found in front of one that is less,
// then the rising ones, each found in front of one that is greater (Nong, Zhang and Chan, "Two
// Efficient Algorithms for Linear Time Suffix Array Construction", here without an end of the text
// that is less than every symbol).
//
// The valleys themselves are sorted by their bytes. Where that takes too long, because long
// stretches repeat, they are sorted as the paper does: by the names of what lies between one valley
// and the next, which are a text of half the length at most. That takes time in proportion to the
// length, whatever the text.
//
// Every text here begins with a valley, so that its last rotation falls. Behind its end its first
// symbols stand once more.
#ifndef ORB_COMPRESS_PX_ROTATION_SORT_H
#define ORB_COMPRESS_PX_ROTATION_SORT_H

#include "frame/memory.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD::plain {

// A bit that no position has.
constexpr Orb16u kMarked = 0x8000;

// Rows beyond those of the text: a text of names wants a symbol behind its end, and there are fewer
// texts within one another than this, each at most half as long as the one around it.
constexpr Orb32s kSpareRows = 16;

// How many bytes of a text stand once more behind its end, so that eight can be loaded anywhere.
constexpr Orb32s kRepeatedBytes = 8;

// Where the rotations of a text of bytes are sorted.
struct RotationSpace {
  Orb8u* text;
  Orb16u* rows;   // kSpareRows more than the text is long, at a multiple of 8 bytes
  Orb16u* spare;  // what follows the rows: half as many as the text is long, and at least 256
  const Orb8u* spareEnd;
};

// ---- Valleys

// Calls visit(position, isValley) for each position, from the last to the first.
template <class Symbol, class Visit>
[[gnu::always_inline]] inline void visitValleys(const Symbol* text, Orb32s length, Visit visit) {
  Symbol next = text[length - 1];
  bool nextRises = false;
  for (Orb32s i = length - 2; i >= 0; --i) {
    const Symbol symbol = text[i];
    visit(i + 1, nextRises & (symbol > next));
    nextRises = (symbol < next) | (nextRises & (symbol == next));
    next = symbol;
  }
  visit(0, nextRises);
}

// ---- Rows of equal first symbols

template <class Symbol>
inline void countSymbols(const Symbol* text, Orb32s length, Orb32s alphabet, Orb16u* count) {
  orbZero(count, alphabet * 2);
  for (Orb32s i = 0; i < length; ++i) ++count[text[i]];
}
template <class Symbol>
inline void findStarts(const Symbol* text, Orb32s length, Orb32s alphabet, Orb16u* bucket) {
  countSymbols(text, length, alphabet, bucket);
  Orb32u start = 0;
  for (Orb32s symbol = 0; symbol < alphabet; ++symbol) {
    const Orb32u count = bucket[symbol];
    bucket[symbol] = static_cast<Orb16u>(start);
    start += count;
  }
}
template <class Symbol>
inline void findEnds(const Symbol* text, Orb32s length, Orb32s alphabet, Orb16u* bucket) {
  countSymbols(text, length, alphabet, bucket);
  Orb32u end = 0;
  for (Orb32s symbol = 0; symbol < alphabet; ++symbol) {
    end += bucket[symbol];
    bucket[symbol] = static_cast<Orb16u>(end);
  }
}

// ---- From the order of the valleys to that of all rotations

// The sorted valleys are the first `valleys` rows, and move to the ends of their buckets; marked
// zeros take all other rows.
template <class Symbol>
inline void spreadValleys(const Symbol* text, Orb32s length, Orb32s alphabet, Orb32s valleys,
                          Orb16u* rows, Orb16u* bucket) {
  findEnds(text, length, alphabet, bucket);
  for (Orb32s i = valleys; i < length; ++i) rows[i] = kMarked;
  for (Orb32s i = valleys - 1; i >= 0; --i) {
    const Orb16u position = rows[i];
    rows[i] = kMarked;
    rows[--bucket[text[position]]] = position;
  }
}

// Falling rotations from the valleys, front to back. What is marked has nothing in front of it that
// falls; each row's mark changes over as it is passed, or it is set to 0 if only the valleys are
// wanted in the end.
template <bool kOnlyValleys, class Symbol>
inline void induceFalling(const Symbol* text, Orb32s length, Orb16u* rows, Orb16u* bucket) {
  for (Orb32s i = 0; i < length; ++i) {
    const Orb16u position = rows[i];
    rows[i] = position ^ kMarked;
    if (position & kMarked) continue;
    if (kOnlyValleys) rows[i] = 0;
    const Orb32s before = (position == 0 ? length : position) - 1;
    const Symbol symbol = text[before];
    const Orb16u mark = text[before - 1] < symbol ? kMarked : 0;
    rows[bucket[symbol]++] = static_cast<Orb16u>(before | mark);
  }
}

// Rising rotations from the falling ones, back to front. The valleys come to lie where they belong;
// those that were the start are overwritten or passed over.
//
// At the end no row is marked; or, if only the valleys are wanted, those are, and the rest is 0.
template <bool kOnlyValleys, class Symbol>
inline void induceRising(const Symbol* text, Orb32s length, Orb16u* rows, Orb16u* bucket) {
  for (Orb32s i = length - 1; i >= 0; --i) {
    const Orb16u position = rows[i];
    if (position & kMarked) {
      if (!kOnlyValleys) rows[i] = position ^ kMarked;
      continue;
    }
    if (kOnlyValleys) {
      if (position == 0) continue;
      rows[i] = 0;
    }
    const Orb32s before = position - 1;
    const Symbol symbol = text[before];
    const Orb16u mark = text[before == 0 ? length - 1 : before - 1] > symbol ? kMarked : 0;
    rows[--bucket[symbol]] = static_cast<Orb16u>(before | mark);
  }
}

// All rows from the first `valleys`, which are the valleys in order.
template <class Symbol>
inline void induceRows(const Symbol* text, Orb32s length, Orb32s alphabet, Orb32s valleys,
                       Orb16u* rows, Orb16u* bucket) {
  spreadValleys(text, length, alphabet, valleys, rows, bucket);
  findStarts(text, length, alphabet, bucket);
  induceFalling<false>(text, length, rows, bucket);
  findEnds(text, length, alphabet, bucket);
  induceRising<false>(text, length, rows, bucket);
}

// ---- Valleys by their names

inline void sortRotationsOfNames(const Orb16u* text, Orb32s length, Orb32s alphabet, Orb16u* rows,
                                 Orb32s room, Orb16u* bucket);

// The first `valleys` rows are the valleys, those with equal stretches up to and with the next
// valley side by side. Numbers the kinds of stretches by their rows, and lays the numbers out
// behind the valleys in the order of the text, with 65535 in between. Returns the number of kinds.
template <class Symbol>
inline Orb32s nameValleys(const Symbol* text, Orb32s length, Orb32s valleys, Orb16u* rows) {
  // There is never a valley next to another, so half a position is a place of its own. It holds the
  // length of the stretch, without the valley at its end, until it is numbered.
  Orb16u* const names = rows + valleys;
  for (Orb32s i = valleys; i < length; ++i) rows[i] = 65535;
  Orb32s end = length;
  visitValleys(text, length, [&](Orb32s position, bool isValley) {
    if (!isValley) return;
    names[position >> 1] = static_cast<Orb16u>(end - position);
    end = position;
  });
  Orb32s kinds = 0;
  Orb32s last = 0;
  Orb32s lastLength = 0;
  for (Orb32s i = 0; i < valleys; ++i) {
    const Orb32s position = rows[i];
    const Orb32s stretch = names[position >> 1];
    bool isSame = stretch == lastLength;
    for (Orb32s k = 0; isSame && k <= stretch; ++k) isSame = text[position + k] == text[last + k];
    if (!isSame) {
      ++kinds;
      last = position;
      lastLength = stretch;
    }
    names[position >> 1] = static_cast<Orb16u>(kinds - 1);
  }
  return kinds;
}

// Makes the first rows the valleys in order, and returns how many there are. The text has to begin
// with its least rotation: so does the text of the names then.
template <class Symbol>
inline Orb32s sortValleysByNames(const Symbol* text, Orb32s length, Orb32s alphabet, Orb16u* rows,
                                 Orb32s room, Orb16u* bucket) {
  // In the order of their stretches, from any order within the buckets.
  for (Orb32s i = 0; i < length; ++i) rows[i] = kMarked;
  findEnds(text, length, alphabet, bucket);
  visitValleys(text, length, [&](Orb32s position, bool isValley) {
    if (isValley) rows[--bucket[text[position]]] = static_cast<Orb16u>(position);
  });
  findStarts(text, length, alphabet, bucket);
  induceFalling<true>(text, length, rows, bucket);
  findEnds(text, length, alphabet, bucket);
  induceRising<true>(text, length, rows, bucket);
  Orb32s valleys = 0;
  for (Orb32s i = 0; i < length; ++i) {
    const Orb16u position = rows[i];
    if (position & kMarked) rows[valleys++] = position ^ kMarked;
  }

  const Orb32s kinds = nameValleys(text, length, valleys, rows);
  if (kinds == valleys) return valleys;

  // The names, in the order of the text, at the end of the room.
  Orb16u* const names = rows + room - valleys - 1;
  Orb32s next = valleys;
  for (Orb32s i = length - 1; i >= valleys; --i) {
    if (rows[i] != 65535) names[--next] = rows[i];
  }
  names[valleys] = names[0];
  sortRotationsOfNames(names, valleys, kinds, rows, room - valleys - 1, bucket);

  // From numbers of valleys to their positions.
  next = valleys;
  visitValleys(text, length, [&](Orb32s position, bool isValley) {
    if (isValley) names[--next] = static_cast<Orb16u>(position);
  });
  for (Orb32s i = 0; i < valleys; ++i) rows[i] = names[rows[i]];
  return valleys;
}

// The text begins with its least rotation, or all of its symbols are one and the same.
inline void sortRotationsOfNames(const Orb16u* text, Orb32s length, Orb32s alphabet, Orb16u* rows,
                                 Orb32s room, Orb16u* bucket) {
  if (alphabet == 1) {
    for (Orb32s i = 0; i < length; ++i) rows[i] = static_cast<Orb16u>(i);
    return;
  }
  const Orb32s valleys = sortValleysByNames(text, length, alphabet, rows, room, bucket);
  induceRows(text, length, alphabet, valleys, rows, bucket);
}

// ---- Valleys by their bytes

constexpr Orb32s kKeyBytes = 6;
constexpr Orb32s kFewRotations = 6;  // as many are compared one by one
constexpr Orb32s kDeepest = 64 * kKeyBytes;

struct ByteSorter {
  const Orb8u* text;
  Orb32s length;
  Orb32s effort;  // keys that may yet be looked at; once it is below 0, nothing is in order

  // The eight bytes of a rotation that follow its first `depth`, which are fewer than all.
  uint64_t bytesAt(Orb32s position, Orb32s depth) const {
    Orb32s at = position + depth;
    if (at >= length) at -= length;
    return __builtin_bswap64(load(reinterpret_cast<const uint64_t*>(text + at)));
  }
};

inline bool comesBefore(ByteSorter& sorter, Orb32s a, Orb32s b, Orb32s depth) {
  for (; depth < sorter.length; depth += 8) {
    if (--sorter.effort < 0) return false;
    const uint64_t bytesOfA = sorter.bytesAt(a, depth);
    const uint64_t bytesOfB = sorter.bytesAt(b, depth);
    if (bytesOfA != bytesOfB) return bytesOfA < bytesOfB;
  }
  return false;
}

inline void sortFewRotations(ByteSorter& sorter, Orb16u* rows, Orb32s count, Orb32s depth) {
  for (Orb32s i = 1; i < count; ++i) {
    const Orb16u position = rows[i];
    Orb32s at = i;
    for (; at > 0 && comesBefore(sorter, position, rows[at - 1], depth); --at) {
      rows[at] = rows[at - 1];
    }
    rows[at] = position;
  }
}

// No key equals another. The median of three has a lesser and a greater one beside it, so both
// sides are shorter.
inline void sortKeys(ByteSorter& sorter, uint64_t* keys, Orb32s count) {
  while (count > 12) {
    sorter.effort -= count;
    if (sorter.effort < 0) return;
    const uint64_t a = keys[0];
    const uint64_t b = keys[count / 2];
    const uint64_t c = keys[count - 1];
    const uint64_t low = a < b ? a : b;
    const uint64_t high = a < b ? b : a;
    const uint64_t pivot = c < low ? low : c > high ? high : c;
    Orb32s lesser = 0;
    for (Orb32s i = 0; i < count; ++i) {
      const uint64_t key = keys[i];
      keys[i] = keys[lesser];
      keys[lesser] = key;
      lesser += key < pivot;
    }
    const Orb32s others = count - lesser;
    if (lesser < others) {
      sortKeys(sorter, keys, lesser);
      keys += lesser;
      count = others;
    } else {
      sortKeys(sorter, keys + lesser, others);
      count = lesser;
    }
  }
  for (Orb32s i = 1; i < count; ++i) {
    const uint64_t key = keys[i];
    Orb32s at = i;
    for (; at > 0 && keys[at - 1] > key; --at) keys[at] = keys[at - 1];
    keys[at] = key;
  }
}

// Rotations that have their first `depth` bytes in common: six more bytes of each and its position
// make a key. Then those with equal bytes, by the next six.
inline void sortByBytes(ByteSorter& sorter, Orb16u* rows, Orb32s count, Orb32s depth,
                        uint64_t* keys) {
  if (count <= kFewRotations) {
    sortFewRotations(sorter, rows, count, depth);
    return;
  }
  if (depth >= sorter.length) return;
  if (depth > kDeepest) sorter.effort = 0;
  sorter.effort -= count;
  if (sorter.effort < 0) return;
  for (Orb32s i = 0; i < count; ++i) {
    keys[i] = (sorter.bytesAt(rows[i], depth) & ~uint64_t{65535}) | rows[i];
  }
  sortKeys(sorter, keys, count);
  for (Orb32s i = 0; i < count; ++i) rows[i] = static_cast<Orb16u>(keys[i]);
  Orb32s end;
  for (Orb32s first = 0; first < count; first = end) {
    const uint64_t bytes = keys[first] >> 16;
    end = first + 1;
    while (end < count && keys[end] >> 16 == bytes) ++end;
    if (end - first > 1) {
      sortByBytes(sorter, rows + first, end - first, depth + kKeyBytes, keys + first);
    }
  }
}

// Makes the first rows the valleys in order, and returns how many there are; or 0 if it takes too
// long, or there is no room for the keys.
inline Orb32s sortValleysByBytes(const RotationSpace& space, Orb32s length) {
  // The first byte puts them in buckets.
  Orb16u* const found = space.spare;
  Orb32s valleys = 0;
  visitValleys(space.text, length, [&](Orb32s position, bool isValley) {
    found[valleys] = static_cast<Orb16u>(position);
    valleys += isValley;
  });
  Orb16u bucket[257];
  orbZero(bucket, sizeof bucket);
  for (Orb32s i = 0; i < valleys; ++i) ++bucket[space.text[found[i]] + 1];
  for (int byte = 1; byte <= 256; ++byte) bucket[byte] += bucket[byte - 1];
  for (Orb32s i = 0; i < valleys; ++i) space.rows[bucket[space.text[found[i]]]++] = found[i];

  // Each cursor stands at the end of its bucket now.
  uint64_t* const keys = reinterpret_cast<uint64_t*>(space.rows + (valleys + 3) / 4 * 4);
  const ptrdiff_t room = (space.spareEnd - reinterpret_cast<const Orb8u*>(keys)) / 8;
  ByteSorter sorter = {space.text, length, 32 * length};
  Orb32s first = 0;
  for (int byte = 0; byte < 256; ++byte) {
    const Orb32s count = bucket[byte] - first;
    if (count > room) return 0;
    sortByBytes(sorter, space.rows + first, count, 1, keys);
    first += count;
  }
  return sorter.effort < 0 ? 0 : valleys;
}

}  // namespace orb::ORB_BUILD::plain

#endif
