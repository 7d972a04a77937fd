// Resizing by the mean of the area that a pixel covers in the source.
//
// The areas are boxes, side by side. Samples outside of the image are those of its border.
#ifndef ORB_IMAGE_RESIZE_AREA_H
#define ORB_IMAGE_RESIZE_AREA_H

#include "image/px/resize_area.h"
#include "image/resize_axis.h"
#if ORB_SIMD
#include "image/simd/resize_area.h"
#endif

namespace orb::ORB_BUILD {

// A part of a sample up to this counts as none.
constexpr Orb64f kNoPart = 1e-7;

struct BoxAxis {
  Orb32s size;
  Orb32s count;
  Orb64f first;  // where the first box begins
  Orb64f side;
};

[[gnu::noinline]] inline BoxAxis boxAxisOf(const Axis& axis) {
  const DoublePrecision precision;
  return {axis.size, axis.count, static_cast<Orb64f>(axis.first) * axis.scale + axis.shift,
          axis.scale};
}

struct BoxAxes {
  BoxAxis x;
  BoxAxis y;
  bool areWhole;  // of whole samples, of which 32 bits hold the sum
};

// A boundary far outside of the image, where a box is much larger than that.
struct FarBoundary {
  int64_t whole;
  Orb64f part;
};

inline FarBoundary boundaryOf(const BoxAxis& axis, Orb32s i) {
  constexpr Orb64f kFar = 1LL << 60;
  const Orb64f place = within(axis.first + i * axis.side, -kFar, kFar);
  const Orb64f whole = __builtin_floor(place + kNoPart);
  const Orb64f part = place - whole;
  return {static_cast<int64_t>(whole), part > kNoPart ? part : 0};
}

inline bool isWhole(const BoxAxis& axis) {
  return axis.side - __builtin_floor(axis.side) <= kNoPart && boundaryOf(axis, 0).part == 0;
}

inline BoxAxis rounded(const BoxAxis& axis) {
  return {axis.size, axis.count, static_cast<Orb64f>(boundaryOf(axis, 0).whole),
          __builtin_floor(axis.side)};
}

[[gnu::noinline]] inline BoxAxes boxAxesOf(const BoxAxis& x, const BoxAxis& y) {
  const DoublePrecision precision;
  const bool areWhole = isWhole(x) && isWhole(y) && x.side * y.side < 0x7FFFFFFF / 255;
  if (areWhole) return {rounded(x), rounded(y), true};
  return {x, y, false};
}

// The boxes of a stretch of the destination's columns, whose sums the scratch holds.
struct BoxStretch {
  Orb32s from;
  Orb32s count;
  BoxBoundary* boundaries;  // in terms of the sums
  Orb32s sums;              // of columns, each with its channels
  Orb32s source;            // the first column of the source that is summed
  Orb32s sourceCount;
  Orb32s place;  // of that column among the sums
};

// How many boxes in a row have room for their boundaries and sums, which take so many values of 4
// bytes of the scratch.
inline Orb32s longestStretch(const BoxAxis& x, int channels, int64_t room) {
  Orb32s count = x.count;
  while (count > 0 && 2 * (count + 1.0) + (count * x.side + 3) * channels + 8 > room) count /= 2;
  return count;
}

[[gnu::noinline]] inline void placeStretch(const BoxAxis& x, BoxStretch& stretch) {
  const DoublePrecision precision;
  const int64_t first = boundaryOf(x, stretch.from).whole;
  for (Orb32s i = 0; i <= stretch.count; ++i) {
    const FarBoundary boundary = boundaryOf(x, stretch.from + i);
    stretch.boundaries[i] = {static_cast<Orb32s>(boundary.whole - first),
                             static_cast<Orb32f>(boundary.part)};
  }
  const BoxBoundary last = stretch.boundaries[stretch.count];
  const int64_t end = first + last.whole + (last.part > 0 ? 1 : 0);
  const int64_t source = limit<int64_t>(first, 0, x.size - 1);
  stretch.sums = static_cast<Orb32s>(end - first);
  stretch.source = static_cast<Orb32s>(source);
  stretch.sourceCount = static_cast<Orb32s>(limit<int64_t>(end, source + 1, x.size) - source);
  stretch.place = static_cast<Orb32s>(limit<int64_t>(source - first, 0, end - first - 1));
}

// How much of sample `i` a box takes. The first and the last sample reach out as far as it does.
inline Orb64f shareOf(Orb32s i, Orb32s size, Orb64f from, Orb64f to) {
  const Orb64f left = i > 0 && i > from ? i : from;
  const Orb64f right = i < size - 1 && i + 1 < to ? i + 1 : to;
  return right > left ? right - left : 0;
}

// The rows of the image that a box takes, all but the first and the last wholly.
struct BoxRows {
  Orb32s first;
  Orb32s last;
  Orb32f shareOfFirst;
  Orb32f shareOfLast;
};

[[gnu::noinline]] inline BoxRows boxRowsOf(const BoxAxis& y, Orb32s i) {
  const DoublePrecision precision;
  const FarBoundary top = boundaryOf(y, i);
  const FarBoundary bottom = boundaryOf(y, i + 1);
  const Orb64f from = static_cast<Orb64f>(top.whole) + top.part;
  const Orb64f to = static_cast<Orb64f>(bottom.whole) + bottom.part;
  const int64_t first = limit<int64_t>(top.whole, 0, y.size - 1);
  const int64_t last =
      limit<int64_t>(bottom.part > 0 ? bottom.whole : bottom.whole - 1, first, y.size - 1);
  const auto share = [&](int64_t row) {
    return static_cast<Orb32f>(shareOf(static_cast<Orb32s>(row), y.size, from, to));
  };
  return {static_cast<Orb32s>(first), static_cast<Orb32s>(last), share(first), share(last)};
}

// The sums of `samples` columns that begin at `src` in the first row of an image.
template <class Sum>
inline void sumRows(const Source& src, const BoxRows& rows, Sum* sums, ptrdiff_t samples) {
  for (Orb32s row = rows.first; row <= rows.last; ++row) {
    const Orb32f share = row == rows.first  ? rows.shareOfFirst
                         : row == rows.last ? rows.shareOfLast
                                            : 1;
    kernel::orbSumRow(src.row(row), static_cast<Sum>(share), row == rows.first, sums, samples);
  }
}

template <int kChannels, class Sum>
[[gnu::noinline]] void sumBoxes(const Source& source, const BoxRows& rows,
                                const BoxStretch& stretch, Sum* sums) {
  const SinglePrecision precision;
  const ptrdiff_t place = static_cast<ptrdiff_t>(stretch.place) * kChannels;
  const ptrdiff_t samples = static_cast<ptrdiff_t>(stretch.sourceCount) * kChannels;
  const ptrdiff_t all = static_cast<ptrdiff_t>(stretch.sums) * kChannels;
  sumRows({source.pixels + static_cast<ptrdiff_t>(stretch.source) * kChannels, source.step}, rows,
          sums + place, samples);
  for (ptrdiff_t i = place - 1; i >= 0; --i) sums[i] = sums[i + kChannels];
  for (ptrdiff_t i = place + samples; i < all; ++i) sums[i] = sums[i - kChannels];
  kernel::orbSumColumns<kChannels>(sums, stretch.boundaries, stretch.count);
}

template <class Sum>
[[gnu::noinline]] void meansOf(const Sum* sums, Orb64f scale, Orb8u* dst, ptrdiff_t samples) {
  const DoublePrecision precision;
  kernel::orbMeans(sums, scale, dst, samples);
}

template <int kChannels, class Sum>
inline void resizeStretch(const Source& source, const Target& target, const BoxAxes& axes,
                          Orb64f scale, const BoxStretch& stretch, Sum* sums) {
  for (Orb32s i = 0; i < axes.y.count; ++i) {
    sumBoxes<kChannels>(source, boxRowsOf(axes.y, i), stretch, sums);
    meansOf(sums, scale, target.row(i) + static_cast<ptrdiff_t>(stretch.from) * kChannels,
            static_cast<ptrdiff_t>(stretch.count) * kChannels);
  }
}

// ---- Boxes that are too large for sums of their columns

template <int kChannels>
[[gnu::noinline]] void resizeBox(const Source& source, const BoxAxes& axes, Orb64f scale, Orb32s x,
                                 Orb32s y, Orb8u* dst) {
  const DoublePrecision precision;
  const auto placeOf = [](const BoxAxis& axis, Orb32s i) { return axis.first + i * axis.side; };
  const auto sampleAt = [](const BoxAxis& axis, Orb64f place) {
    return static_cast<Orb32s>(within(place, 0, axis.size - 1));
  };
  const Orb64f left = placeOf(axes.x, x), right = placeOf(axes.x, x + 1);
  const Orb64f top = placeOf(axes.y, y), bottom = placeOf(axes.y, y + 1);
  Orb64f sums[kChannels] = {};
  for (Orb32s row = sampleAt(axes.y, top); row <= sampleAt(axes.y, bottom); ++row) {
    const Orb64f height = shareOf(row, axes.y.size, top, bottom);
    const Orb8u* const src = source.row(row);
    for (Orb32s column = sampleAt(axes.x, left); column <= sampleAt(axes.x, right); ++column) {
      const Orb64f share = height * shareOf(column, axes.x.size, left, right);
      for (int c = 0; c < kChannels; ++c) {
        sums[c] += share * src[static_cast<ptrdiff_t>(column) * kChannels + c];
      }
    }
  }
  for (int c = 0; c < kChannels; ++c) dst[c] = plain::meanOf(sums[c], scale);
}

// ----

// Whether an axis has boxes of two samples, all within the image.
inline bool isHalved(const BoxAxis& axis) {
  return axis.side == 2 && axis.first >= 0 && axis.first + 2.0 * axis.count <= axis.size;
}

template <int kChannels>
inline void halve(const Source& source, const Target& target, const BoxAxis& x, const BoxAxis& y) {
  const ptrdiff_t column = static_cast<ptrdiff_t>(x.first) * kChannels;
  const ptrdiff_t row = static_cast<ptrdiff_t>(y.first);
  for (ptrdiff_t i = 0; i < y.count; ++i) {
    kernel::orbHalveRow<kChannels>(source.row(row + 2 * i) + column,
                                   source.row(row + 2 * i + 1) + column, target.row(i), x.count);
  }
}

// `scale` makes a mean of the sum of a box.
template <int kChannels>
inline void resizeByArea(const Source& source, const Target& target, const BoxAxis& x,
                         const BoxAxis& y, Orb64f scale, Scratch scratch) {
  const BoxAxes axes = boxAxesOf(x, y);
  if (axes.areWhole && isHalved(axes.x) && isHalved(axes.y) && scale == 0.25) {
    return halve<kChannels>(source, target, axes.x, axes.y);
  }
  const Orb32s longest = longestStretch(axes.x, kChannels, scratch.left());
  if (longest == 0) {
    for (Orb32s i = 0; i < y.count; ++i) {
      for (Orb32s j = 0; j < x.count; ++j) {
        resizeBox<kChannels>(source, axes, scale, j, i,
                             target.row(i) + static_cast<ptrdiff_t>(j) * kChannels);
      }
    }
    return;
  }
  BoxStretch stretch = {};
  stretch.boundaries = scratch.take<BoxBoundary>(longest + 1);
  for (stretch.from = 0; stretch.from < x.count; stretch.from += stretch.count) {
    stretch.count = limit(x.count - stretch.from, 1, longest);
    placeStretch(axes.x, stretch);
    if (axes.areWhole) {
      resizeStretch<kChannels>(source, target, axes, scale, stretch, scratch.take<Orb32s>(0));
    } else {
      resizeStretch<kChannels>(source, target, axes, scale, stretch, scratch.take<Orb32f>(0));
    }
  }
}

}  // namespace orb::ORB_BUILD

#endif
