// From the blocks of macroblocks to a frame: what the functions mean.
//
// A function is a loop over rows of a macroblock, which says where their samples are, and the work
// on one row of sixteen pixels. The loops are the same in all builds; they take that work from a
// class of rows.
#ifndef ORB_DV_PX_MACROBLOCK_H
#define ORB_DV_PX_MACROBLOCK_H

#include "frame/arith.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD {

namespace plain {

struct DVRows {
  // Eight samples, or eight chroma columns.
  struct Row {
    Orb16s at[8];
  };
  struct TwoRows {
    Row left, right;
  };

  static Row read(const Orb16s* samples) { return load(reinterpret_cast<const Row*>(samples)); }

  // The chroma of sixteen pairs of pixels from the columns of 4:1:1. Of the two pairs of a column
  // the second has the mean of it and the next, unless it is the last of its group.
  template <int kGroup>
  static TwoRows spread(const Row& columns) {
    Orb16s pairs[16];
    for (int c = 0; c < 8; ++c) {
      const int next = c % kGroup == kGroup - 1 ? c : c + 1;
      pairs[2 * c] = columns.at[c];
      pairs[2 * c + 1] = wrap16s((columns.at[c] + columns.at[next]) / 2);
    }
    return load(reinterpret_cast<const TwoRows*>(pairs));
  }

  static void write(Orb8u* dst, const TwoRows& luma, const Row& cb, const Row& cr) {
    for (int pair = 0; pair < 8; ++pair) {
      const Row& half = pair < 4 ? luma.left : luma.right;
      dst[4 * pair] = saturate8u(half.at[2 * pair % 8] + 128);
      dst[4 * pair + 1] = saturate8u(cb.at[pair] + 128);
      dst[4 * pair + 2] = saturate8u(half.at[2 * pair % 8 + 1] + 128);
      dst[4 * pair + 3] = saturate8u(cr.at[pair] + 128);
    }
  }
};

}  // namespace plain

constexpr int kDVBlock = 64;
constexpr int kSixteenDVPixels = 32;  // bytes

// Four Y blocks in a row.
template <class DVRows>
inline void orbWriteDV411(const Orb16s* blocks, Orb8u* dst, Orb32s step) {
  for (int y = 0; y < 8; ++y) {
    const Orb16s* const row = blocks + 8 * y;
    const auto luma = [&](int block) { return DVRows::read(row + block * kDVBlock); };
    const auto cr = DVRows::template spread<8>(DVRows::read(row + 4 * kDVBlock));
    const auto cb = DVRows::template spread<8>(DVRows::read(row + 5 * kDVBlock));
    Orb8u* const pixels = rowAt(dst, step, y);
    DVRows::write(pixels, {luma(0), luma(1)}, cb.left, cr.left);
    DVRows::write(pixels + kSixteenDVPixels, {luma(2), luma(3)}, cb.right, cr.right);
  }
}

// Y blocks two by two; the right half of a chroma row serves a row of the lower ones.
template <class DVRows>
inline void orbWriteDV411Edge(const Orb16s* blocks, Orb8u* dst, Orb32s step) {
  for (int y = 0; y < 8; ++y) {
    const Orb16s* const row = blocks + 8 * y;
    const auto luma = [&](int block) { return DVRows::read(row + block * kDVBlock); };
    const auto cr = DVRows::template spread<4>(DVRows::read(row + 4 * kDVBlock));
    const auto cb = DVRows::template spread<4>(DVRows::read(row + 5 * kDVBlock));
    DVRows::write(rowAt(dst, step, y), {luma(0), luma(1)}, cb.left, cr.left);
    DVRows::write(rowAt(dst, step, y + 8), {luma(2), luma(3)}, cb.right, cr.right);
  }
}

// Y blocks two by two; each field has the chroma rows of its own parity, twice.
template <class DVRows>
inline void orbWriteDV420(const Orb16s* blocks, Orb8u* dst, Orb32s step) {
  for (int y = 0; y < 16; ++y) {
    const Orb16s* const luma = blocks + (y < 8 ? 0 : 2 * kDVBlock) + y % 8 * 8;
    const Orb16s* const chroma = blocks + 4 * kDVBlock + (y / 4 * 2 + y % 2) * 8;
    DVRows::write(rowAt(dst, step, y), {DVRows::read(luma), DVRows::read(luma + kDVBlock)},
                  DVRows::read(chroma + kDVBlock), DVRows::read(chroma));
  }
}

// Two Y blocks side by side, and one of each chroma.
template <class DVRows>
inline void orbWriteDV422(const Orb16s* left, const Orb16s* right, const Orb16s* cr,
                          const Orb16s* cb, Orb8u* dst, Orb32s step) {
  for (int y = 0; y < 8; ++y) {
    DVRows::write(rowAt(dst, step, y), {DVRows::read(left + 8 * y), DVRows::read(right + 8 * y)},
                  DVRows::read(cb + 8 * y), DVRows::read(cr + 8 * y));
  }
}

}  // namespace orb::ORB_BUILD

#endif
