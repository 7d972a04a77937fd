// The Burrows-Wheeler transform of a block and its inverse.
#ifndef ORB_COMPRESS_PX_BWT_H
#define ORB_COMPRESS_PX_BWT_H

#include "compress/px/rotation_sort.h"

namespace orb::ORB_BUILD::plain {

// Enough for both directions, wherever the host places the work buffer.
constexpr Orb32s bwtBufferSize(Orb32s length) {
  return length * 4 + 2080;
}

template <class T>
inline T* alignUp(Orb8u* address, uintptr_t alignment) {
  const uintptr_t aligned =
      (reinterpret_cast<uintptr_t>(address) + alignment - 1) / alignment * alignment;
  return reinterpret_cast<T*>(aligned);
}

constexpr Orb32s wrapAround(Orb32s position, Orb32s length) {
  return position >= length ? position - length : position;
}

// ---- Forward

// The rows at the start of the work buffer, the text at its end. Between them there is room for one
// row for each two bytes of the text, and more.
inline RotationSpace divideBuffer(Orb8u* buffer, Orb32s length) {
  Orb8u* const text = buffer + bwtBufferSize(length) - (length + kRepeatedBytes);
  Orb16u* const rows = alignUp<Orb16u>(buffer, 8);
  return {text, rows, rows + length + kSpareRows, text};
}

// A valley of the block, if its bytes are not all the same: the first place where it falls and
// rises again, or that where it is least.
inline Orb32s someValley(const Orb8u* block, Orb32s length) {
  Orb32s valley = 0;
  for (Orb32s i = 1; i < length; ++i) {
    if (block[i] < block[i - 1]) valley = i;
    if (block[i] > block[i - 1] && valley > 0) return valley;
  }
  return block[valley] > block[0] ? 0 : valley;
}

// Where the least rotation of the block starts, the first of equals. Of two candidates the greater
// is out of the race, and with it all starts that it has passed in the comparison.
inline Orb32s leastRotation(const Orb8u* block, Orb32s length) {
  Orb32s a = 0;
  Orb32s b = 1;
  Orb32s equal = 0;
  while (a < length && b < length && equal < length) {
    const Orb8u byteOfA = block[wrapAround(a + equal, length)];
    const Orb8u byteOfB = block[wrapAround(b + equal, length)];
    if (byteOfA == byteOfB) {
      ++equal;
      continue;
    }
    (byteOfA > byteOfB ? a : b) += equal + 1;
    if (a == b) ++b;
    equal = 0;
  }
  return a < b ? a : b;
}

// The text is the block from byte `start` on, once around.
inline void copyRotated(const Orb8u* block, Orb32s length, Orb32s start, Orb8u* text) {
  __builtin_memcpy(text, block + start, static_cast<size_t>(length - start));
  __builtin_memcpy(text + (length - start), block, static_cast<size_t>(start));
  for (Orb32s i = 0; i < kRepeatedBytes; ++i) text[length + i] = text[i];
}

// Returns the row of the block itself. The destination may be the block.
inline Orb32s orbBWTFwd(const Orb8u* block, Orb8u* dst, Orb32s length, Orb8u* buffer) {
  const RotationSpace space = divideBuffer(buffer, length);
  Orb32s start = someValley(block, length);
  copyRotated(block, length, start, space.text);
  if (space.text[0] == space.text[length - 1]) {
    // There is nothing to sort without a valley: all bytes are the same.
    __builtin_memset(dst, space.text[0], static_cast<size_t>(length));
    return 0;
  }
  Orb32s valleys = sortValleysByBytes(space, length);
  if (valleys == 0) {
    start = leastRotation(block, length);
    copyRotated(block, length, start, space.text);
    valleys =
        sortValleysByNames(space.text, length, 256, space.rows, length + kSpareRows, space.spare);
  }
  induceRows(space.text, length, 256, valleys, space.rows, space.spare);

  const Orb32s positionOfBlock = wrapAround(length - start, length);
  Orb32s rowOfBlock = 0;
  for (Orb32s row = 0; row < length; ++row) {
    const Orb32s position = space.rows[row];
    if (position == positionOfBlock) rowOfBlock = row;
    dst[row] = space.text[(position == 0 ? length : position) - 1];
  }
  return rowOfBlock;
}

// ---- Inverse

// From a row to that of the rotation that begins a byte later, and to that which begins a byte
// earlier.
struct RowLinks {
  Orb16u* later;
  Orb16u* earlier;
};

// Rows that begin with the same byte come in the order of the rows that end with it.
inline RowLinks linkRows(const Orb8u* column, Orb32s length, Orb8u* buffer) {
  Orb16u* const cursor = alignUp<Orb16u>(buffer, 2);
  const RowLinks links = {cursor + 256, cursor + 256 + length};
  // Equal bytes come in runs here, and counting them one after the other in one place would wait
  // for each.
  Orb16u odd[256];
  orbZero(cursor, 512);
  orbZero(odd, sizeof odd);
  for (Orb32s i = 0; i < length - 1; i += 2) {
    ++cursor[column[i]];
    ++odd[column[i + 1]];
  }
  if (length % 2 != 0) ++cursor[column[length - 1]];
  Orb32u start = 0;
  for (int byte = 0; byte < 256; ++byte) {
    const Orb32u count = cursor[byte] + odd[byte];
    cursor[byte] = static_cast<Orb16u>(start);
    start += count;
  }
  for (Orb32s row = 0; row < length; ++row) {
    const Orb16u earlier = cursor[column[row]]++;
    links.earlier[row] = earlier;
    links.later[earlier] = static_cast<Orb16u>(row);
  }
  return links;
}

inline void orbBWTInv(const Orb8u* column, Orb8u* dst, Orb32s length, Orb32s index, Orb8u* buffer) {
  const RowLinks links = linkRows(column, length, buffer);
  // Each step waits for the one before, so the block is read from both of its ends at a time. The
  // two meet in one row, unless the column is that of no block or the row is not on its way.
  const Orb32s half = length / 2;
  Orb32s ahead = index;
  Orb32s behind = index;
  for (Orb32s i = 0; i < half; ++i) {
    ahead = links.later[ahead];
    dst[i] = column[ahead];
    dst[length - 1 - i] = column[behind];
    behind = links.earlier[behind];
  }
  if (length % 2 != 0) {
    ahead = links.later[ahead];
    dst[half] = column[ahead];
  }
  if (ahead == behind) return;
  for (Orb32s i = length - half; i < length; ++i) {
    ahead = links.later[ahead];
    dst[i] = column[ahead];
  }
}

}  // namespace orb::ORB_BUILD::plain

#endif
