// Lossless prediction (ITU-T T.81 H.1.2.1): what the functions mean.
#ifndef ORB_JPEG_PX_LOSSLESS_H
#define ORB_JPEG_PX_LOSSLESS_H

#include "frame/arith.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD::plain {

// T.81 table H.1: from the sample to the left, the one above, and the one above and to the left.
template <int kPredictor>
struct Predictor {
  static_assert(1 <= kPredictor && kPredictor <= 7);
  static constexpr Orb32s predict(Orb32s left, Orb32s above, Orb32s corner) {
    switch (kPredictor) {
      case 1:
        return left;
      case 2:
        return above;
      case 3:
        return corner;
      case 4:
        return left + above - corner;
      case 5:
        return left + ((above - corner) >> 1);
      case 6:
        return above + ((left - corner) >> 1);
      default:
        return (left + above) >> 1;
    }
  }
};

// Calls rowOf(Predictor<n>()) for the predictor n, which is one.
template <class RowOf>
inline void withPredictor(Orb32s n, RowOf rowOf) {
  switch (n) {
    case 1:
      return rowOf(Predictor<1>());
    case 2:
      return rowOf(Predictor<2>());
    case 3:
      return rowOf(Predictor<3>());
    case 4:
      return rowOf(Predictor<4>());
    case 5:
      return rowOf(Predictor<5>());
    case 6:
      return rowOf(Predictor<6>());
    default:
      return rowOf(Predictor<7>());
  }
}

// ---- Differences from samples

// `first` predicts the first sample.
inline void orbDiffFirstRow(const Orb16s* src, Orb16s* dst, Orb32s width, Orb32s first) {
  store(dst, wrap16s(load(src) - first));
  for (ptrdiff_t i = 1; i < width; ++i) store(dst + i, wrap16s(load(src + i) - load(src + i - 1)));
}

inline void orbDiffRow(const Orb16s* src, const Orb16s* prev, Orb16s* dst, Orb32s width,
                       Orb32s predictor) {
  store(dst, wrap16s(load(src) - load(prev)));
  withPredictor(predictor, [=](auto p) {
    for (ptrdiff_t i = 1; i < width; ++i) {
      const Orb32s prediction = p.predict(load(src + i - 1), load(prev + i), load(prev + i - 1));
      store(dst + i, wrap16s(load(src + i) - prediction));
    }
  });
}

// ---- Samples from differences

inline void orbReconstructFirstRow(const Orb16s* src, Orb16s* dst, Orb32s width, Orb32s first) {
  Orb32s left = first;
  for (ptrdiff_t i = 0; i < width; ++i) {
    left += load(src + i);
    store(dst + i, wrap16s(left));
  }
}

inline void orbReconstructRow(const Orb16s* src, const Orb16s* prev, Orb16s* dst, Orb32s width,
                              Orb32s predictor) {
  Orb16s left = wrap16s(load(src) + load(prev));
  store(dst, left);
  withPredictor(predictor, [=](auto p) mutable {
    for (ptrdiff_t i = 1; i < width; ++i) {
      const Orb32s prediction = p.predict(left, load(prev + i), load(prev + i - 1));
      left = wrap16s(load(src + i) + prediction);
      store(dst + i, left);
    }
  });
}

}  // namespace orb::ORB_BUILD::plain

#endif
