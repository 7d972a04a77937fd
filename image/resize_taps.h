// Resizing by four or six samples in each direction, with float weights.
#ifndef ORB_IMAGE_RESIZE_TAPS_H
#define ORB_IMAGE_RESIZE_TAPS_H

#include "image/px/resize_taps.h"
#include "image/px/sample_weights.h"
#include "image/resize_axis.h"
#if ORB_SIMD
#include "image/simd/resize_taps.h"
#endif

namespace orb::ORB_BUILD {

constexpr int kMostTaps = 6;

// `weights` has an array for each tap. Where the cubic is by Newton's differences, the inner
// pixels' have the factors of the differences in the place of weights.
struct TapsAxis {
  Orb32s* whole;
  Orb32f* weights[kMostTaps];
  Inner inner;
};

inline void cubicWeightsOf(Orb32s method, Orb64f part, Orb64f* weights) {
  const plain::CubicKernel& cubic = plain::cubicKernelOf(method);
  const Orb64f distances[4] = {1 + part, part, 1 - part, 2 - part};
  for (int k = 0; k < 4; ++k) weights[k] = plain::cubicWeight(cubic, distances[k]);
}

inline void lanczosWeightsOf(Orb64f part, Orb64f* weights) {
  const Orb64f distances[6] = {2 + part, 1 + part, part, 1 - part, 2 - part, 3 - part};
  Orb64f sum = 0;
  for (int k = 0; k < 6; ++k) {
    weights[k] = plain::lanczosWeight(distances[k]);
    sum += weights[k];
  }
  for (int k = 0; k < 6; ++k) weights[k] /= sum;
}

inline void newtonFactorsOf(Orb64f part, Orb64f* factors) {
  factors[0] = 1 + part;
  factors[1] = part * (1 + part) / 2;
  factors[2] = (part - 1) * part * (1 + part) / 6;
}

template <class Method>
[[gnu::noinline]] TapsAxis tapsAxisOf(const Axis& axis, Orb32s method, Scratch& scratch) {
  constexpr int kTaps = Method::kTaps;
  const DoublePrecision precision;
  TapsAxis taps = {};
  taps.whole = scratch.take<Orb32s>(axis.count);
  for (int k = 0; k < kTaps; ++k) taps.weights[k] = scratch.take<Orb32f>(axis.count);
  for (Orb32s i = 0; i < axis.count; ++i) {
    const Place place = placeOf(axis, i);
    const bool isInner = place.whole >= kTaps / 2 - 1 && place.whole < axis.size - kTaps / 2;
    Orb64f weights[kTaps] = {};
    if constexpr (kTaps == 6) {
      lanczosWeightsOf(place.part, weights);
    } else if (method == orbInterLagrange && isInner) {
      newtonFactorsOf(place.part, weights);
    } else {
      cubicWeightsOf(method, place.part, weights);
    }
    taps.whole[i] = place.whole;
    for (int k = 0; k < kTaps; ++k) taps.weights[k][i] = static_cast<Orb32f>(weights[k]);
  }
  taps.inner = innerOf(taps.whole, axis, kTaps / 2 - 1, kTaps / 2);
  return taps;
}

// Pixels whose taps are limited to the image, from `from` to before `to`.
template <int kTaps, int kChannels>
inline void borderAcross(const Orb8u* src, const Axis& x, const TapsAxis& columns, Orb32s from,
                         Orb32s to, Orb32f* dst) {
  for (ptrdiff_t i = from; i < to; ++i) {
    Orb32f weight[kTaps];
    for (int k = 0; k < kTaps; ++k) weight[k] = columns.weights[k][i];
    for (int c = 0; c < kChannels; ++c) {
      Orb32f sample[kTaps];
      for (int k = 0; k < kTaps; ++k) {
        const Orb32s tap = limitToImage(columns.whole[i] - (kTaps / 2 - 1) + k, x.size);
        sample[k] = src[static_cast<ptrdiff_t>(tap) * kChannels + c];
      }
      dst[i * kChannels + c] = WeightedSum<kTaps>::of(sample, weight);
    }
  }
}

template <class Method, int kChannels>
[[gnu::noinline]] void tapsAcross(const Orb8u* src, const Axis& x, const TapsAxis& columns,
                                  Orb32f* dst) {
  const SinglePrecision precision;
  const Inner inner = columns.inner;
  const Orb32f* weights[Method::kTaps];
  for (int k = 0; k < Method::kTaps; ++k) weights[k] = columns.weights[k] + inner.from;
  borderAcross<Method::kTaps, kChannels>(src, x, columns, 0, inner.from, dst);
  kernel::orbTapsAcross<Method, kChannels>(src, columns.whole + inner.from, weights,
                                           dst + static_cast<ptrdiff_t>(inner.from) * kChannels,
                                           inner.to - inner.from, x.size);
  borderAcross<Method::kTaps, kChannels>(src, x, columns, inner.to, x.count, dst);
}

template <class Method>
[[gnu::noinline]] void tapsDown(const Orb32f* const* rows, const Orb32f* weights, bool isInner,
                                Orb8u* dst, ptrdiff_t samples) {
  const SinglePrecision precision;
  if (isInner) {
    kernel::orbTapsDown<Method>(rows, weights, dst, samples);
  } else {
    kernel::orbTapsDown<WeightedSum<Method::kTaps>>(rows, weights, dst, samples);
  }
}

// A kernel may write so many values behind a row that it filters across.
constexpr Orb32s kRowMargin = 4;

template <class Method, int kChannels>
inline void resizeByTaps(Orb32s method, const Source& source, const Target& target, const Axis& x,
                         const Axis& y, Scratch scratch) {
  constexpr int kTaps = Method::kTaps;
  const TapsAxis columns = tapsAxisOf<Method>(x, method, scratch);
  const TapsAxis rows = tapsAxisOf<Method>(y, method, scratch);
  const int64_t samples = static_cast<int64_t>(x.count) * kChannels;

  // Rows of the source, filtered across. Taps never span more than these, so that no two of them
  // want the same place.
  Orb32f* filtered[kTaps];
  Orb32s held[kTaps];
  for (int k = 0; k < kTaps; ++k) {
    filtered[k] = scratch.take<Orb32f>(samples + kRowMargin);
    held[k] = -1;
  }
  for (Orb32s i = 0; i < y.count; ++i) {
    const Orb32f* tapRows[kTaps];
    Orb32f weights[kTaps];
    for (int k = 0; k < kTaps; ++k) {
      const Orb32s row = limitToImage(rows.whole[i] - (kTaps / 2 - 1) + k, y.size);
      const int place = row % kTaps;
      if (held[place] != row) {
        held[place] = row;
        tapsAcross<Method, kChannels>(source.row(row), x, columns, filtered[place]);
      }
      tapRows[k] = filtered[place];
      weights[k] = rows.weights[k][i];
    }
    tapsDown<Method>(tapRows, weights, i >= rows.inner.from && i < rows.inner.to, target.row(i),
                     static_cast<ptrdiff_t>(samples));
  }
}

}  // namespace orb::ORB_BUILD

#endif
