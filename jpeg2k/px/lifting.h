// Lifting of lines (ITU-T T.800 annex F), in either direction of the image and of the transform.
//
// A line of samples is two lines: its samples of low parity and those of high parity. In an image
// they alternate, in sub-bands they lie apart, and only their distances tell one from the other: a
// transform reads two lines and writes two lines.
//
// With p = 0 the line begins with a sample of low parity, with p = 1 with one of high parity. Low
// sample k stands at position 2k + p of the alternating line, high sample k at 2k + 1 - p; so the
// neighbours of high sample k are the low samples k - p and k + 1 - p, and those of low sample k
// are the high samples k - 1 + p and k + p.
#ifndef ORB_JPEG2K_PX_LIFTING_H
#define ORB_JPEG2K_PX_LIFTING_H

#include "frame/arith.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD::plain {

// Samples of one parity, `distance` bytes apart. Of columns several are taken at once: a sample is
// then as many values as there are lanes, side by side.
template <class T>
struct Line {
  T* first;
  ptrdiff_t distance;

  T* at(ptrdiff_t k) const {
    return reinterpret_cast<T*>(reinterpret_cast<uintptr_t>(first) +
                                static_cast<uintptr_t>(k * distance));
  }
};

template <class T>
struct LinePair {
  Line<T> low;
  Line<T> high;

  LinePair movedBy(ptrdiff_t columns) const {
    return {{low.first + columns, low.distance}, {high.first + columns, high.distance}};
  }
};

// An alternating line with `step` bytes from sample to sample.
template <class T>
inline LinePair<T> alternating(T* first, ptrdiff_t step, ptrdiff_t p) {
  const Line<T> line = {first, step};
  return {{line.at(p), 2 * step}, {line.at(1 - p), 2 * step}};
}

struct Range {
  ptrdiff_t from;
  ptrdiff_t to;
};

// A stretch of a line in lifting: `count` low and high samples and what the steps need beyond them.
constexpr ptrdiff_t kStretchMargin = 2;
constexpr ptrdiff_t kStretchRoom = 36 * 64;

template <class Work>
struct Stretch {
  ptrdiff_t count;
  ptrdiff_t lanes;
  ptrdiff_t p;
  // For the row ends that have rules of their own: the samples in front of this stretch and behind
  // it in its line.
  ptrdiff_t before;
  ptrdiff_t behind;
  alignas(32) Work lowRoom[kStretchRoom];
  alignas(32) Work highRoom[kStretchRoom];

  Work* low(ptrdiff_t k) { return lowRoom + (k + kStretchMargin) * lanes; }
  Work* high(ptrdiff_t k) { return highRoom + (k + kStretchMargin) * lanes; }

  // One step: each sample of the range gets `step` of itself and its two neighbours.
  template <class Step>
  void liftLow(Range range, Step step) {
    lift(low(range.from), high(range.from - 1 + p), range.to - range.from, step);
  }
  template <class Step>
  void liftHigh(Range range, Step step) {
    lift(high(range.from), low(range.from - p), range.to - range.from, step);
  }

 private:
  template <class Step>
  void lift(Work* __restrict target, const Work* __restrict neighbours, ptrdiff_t samples,
            Step step) {
    for (ptrdiff_t i = 0; i < samples * lanes; ++i) {
      target[i] = step(target[i], neighbours[i], neighbours[i + lanes]);
    }
  }
};

// ---- Between lines and stretches
//
// An arithmetic says what a sample is worth in a stretch and what is stored of it: in() and out().

template <class Arithmetic, class T, class Work>
[[gnu::noinline]] void gather(Line<T> from, Range range, ptrdiff_t lanes, Work* __restrict to) {
  T* const first = from.at(range.from);
  const ptrdiff_t count = range.to - range.from;
  if (lanes > 1) {
    for (ptrdiff_t k = 0; k < count; ++k) {
      T* const sample = from.at(range.from + k);
      for (ptrdiff_t i = 0; i < lanes; ++i) to[k * lanes + i] = Arithmetic::in(load(sample + i));
    }
  } else if (from.distance == sizeof(T)) {
    for (ptrdiff_t k = 0; k < count; ++k) to[k] = Arithmetic::in(load(first + k));
  } else if (from.distance == 2 * sizeof(T)) {
    for (ptrdiff_t k = 0; k < count; ++k) to[k] = Arithmetic::in(load(first + 2 * k));
  } else {
    for (ptrdiff_t k = 0; k < count; ++k) to[k] = Arithmetic::in(load(from.at(range.from + k)));
  }
}

template <class Arithmetic, class T, class Work>
[[gnu::noinline]] void scatter(const Work* __restrict from, ptrdiff_t count, ptrdiff_t lanes,
                               Line<T> to, ptrdiff_t first) {
  if (lanes > 1) {
    for (ptrdiff_t k = 0; k < count; ++k) {
      T* const sample = to.at(first + k);
      for (ptrdiff_t i = 0; i < lanes; ++i) store(sample + i, Arithmetic::out(from[k * lanes + i]));
    }
  } else if (to.distance == sizeof(T)) {
    T* const sample = to.at(first);
    for (ptrdiff_t k = 0; k < count; ++k) store(sample + k, Arithmetic::out(from[k]));
  } else {
    for (ptrdiff_t k = 0; k < count; ++k) store(to.at(first + k), Arithmetic::out(from[k]));
  }
}

// A row that alternates, in which one write takes turns between both.
template <class Arithmetic, class T, class Work>
[[gnu::noinline]] void scatterAlternating(const Work* __restrict even, const Work* __restrict odd,
                                          ptrdiff_t count, T* to) {
  for (ptrdiff_t k = 0; k < count; ++k) {
    store(to + 2 * k, Arithmetic::out(even[k]));
    store(to + 2 * k + 1, Arithmetic::out(odd[k]));
  }
}

// ---- Lines

// A line whose neighbours lie around it.
template <class T>
struct OpenSource {
  LinePair<T> lines;

  template <class Arithmetic, class Work>
  void gatherInto(Stretch<Work>& stretch, Range low, Range high) const {
    const ptrdiff_t first = stretch.before;
    gather<Arithmetic>(lines.low, {first + low.from, first + low.to}, stretch.lanes,
                       stretch.low(low.from));
    gather<Arithmetic>(lines.high, {first + high.from, first + high.to}, stretch.lanes,
                       stretch.high(high.from));
  }
};

// A line of at least 2 samples that is reflected at its first and its last, again and again if it
// is short.
template <class T>
struct ReflectedSource {
  LinePair<T> lines;
  ptrdiff_t length;
  ptrdiff_t p;

  template <class Arithmetic, class Work>
  void gatherInto(Stretch<Work>& stretch, Range low, Range high) const {
    gatherReflected<Arithmetic>(lines.low, p, stretch.before, low, stretch.lanes,
                                stretch.low(low.from));
    gatherReflected<Arithmetic>(lines.high, 1 - p, stretch.before, high, stretch.lanes,
                                stretch.high(high.from));
  }

 private:
  // Sample k of the line stands at position 2k + offset.
  template <class Arithmetic, class Work>
  void gatherReflected(Line<T> line, ptrdiff_t offset, ptrdiff_t first, Range range,
                       ptrdiff_t lanes, Work* to) const {
    const ptrdiff_t count = (length - offset + 1) / 2;
    for (ptrdiff_t k = first + range.from; k < first + range.to;) {
      const bool isInside = k >= 0 && k < count;
      const ptrdiff_t from = isInside ? k : (reflected(2 * k + offset) - offset) / 2;
      const ptrdiff_t end = limit(first + range.to, k + 1, isInside ? count : k + 1);
      gather<Arithmetic>(line, {from, from + end - k}, lanes, to);
      to += (end - k) * lanes;
      k = end;
    }
  }

  ptrdiff_t reflected(ptrdiff_t position) const {
    const ptrdiff_t period = 2 * (length - 1);
    const ptrdiff_t inPeriod = ((position % period) + period) % period;
    return inPeriod < length ? inPeriod : period - inPeriod;
  }
};

// Transforms a line, or as many columns as there are lanes, from `source` to `to`, which holds
// `lowCount` and `highCount` samples of each parity.
template <class Wavelet, class Source, class T>
[[gnu::noinline, gnu::noclone]] void orbLiftLine(const Source& source, LinePair<T> to,
                                                 ptrdiff_t lowCount, ptrdiff_t highCount,
                                                 ptrdiff_t lanes, ptrdiff_t p) {
  using Arithmetic = typename Wavelet::Arithmetic;
  Stretch<typename Arithmetic::Work> stretch;
  stretch.lanes = lanes;
  stretch.p = p;
  const ptrdiff_t length = lowCount > highCount ? lowCount : highCount;
  const ptrdiff_t most = kStretchRoom / lanes - 2 * kStretchMargin;
  const bool alternates =
      lanes == 1 && to.low.distance == 2 * sizeof(T) &&
      (p == 0 ? to.low.first + 1 == to.high.first : to.high.first + 1 == to.low.first);
  for (ptrdiff_t first = 0; first < length; first += stretch.count) {
    stretch.count = limit<ptrdiff_t>(length - first, 0, most);
    stretch.before = first;
    stretch.behind = length - first - stretch.count;
    source.template gatherInto<Arithmetic>(stretch, Wavelet::lowReach(stretch),
                                           Wavelet::highReach(stretch));
    Wavelet::lift(stretch);
    const ptrdiff_t lows = limit<ptrdiff_t>(lowCount - first, 0, stretch.count);
    const ptrdiff_t highs = limit<ptrdiff_t>(highCount - first, 0, stretch.count);
    if (alternates && lows == highs) {
      const auto* const even = p == 0 ? stretch.low(0) : stretch.high(0);
      const auto* const odd = p == 0 ? stretch.high(0) : stretch.low(0);
      scatterAlternating<Arithmetic>(even, odd, lows,
                                     p == 0 ? to.low.at(first) : to.high.at(first));
    } else {
      scatter<Arithmetic>(stretch.low(0), lows, lanes, to.low, first);
      scatter<Arithmetic>(stretch.high(0), highs, lanes, to.high, first);
    }
  }
}

}  // namespace orb::ORB_BUILD::plain

#endif
