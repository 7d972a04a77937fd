// Resizing of 4:2:2 images: argument checks, geometry and tables, then rows across and down.
#include "frame/memory.h"
#include "image/resize_area.h"
#include "image/resize_axis.h"
#include "image/resize_linear.h"
#include "image/resize_taps.h"

namespace orb::ORB_BUILD {

// ---- Geometry

// Samples in one direction: luma, chroma or rows. Output i stands at i * step behind the region's
// first sample; the image reaches from sample `first` to sample `last`, counted from there.
struct Samples {
  Orb32s first;
  Orb32s last;
  Orb32s count;
  Orb64f step;
};

constexpr Orb64f kHair = 1e-7;

// First and last samples of `size` and of `resized` lie over one another.
static Orb64f stepOf(Orb32s size, Orb64f resized) {
  return resized > 1 ? (size - 1) / (resized - 1) : 0;
}

static Place placeOf(const Samples& samples, Orb32s i) {
  const Orb64f p = within(i * samples.step, 0, samples.last);
  const Orb32s whole = static_cast<Orb32s>(p + kHair);
  return {whole, p - whole};
}

// The lines of a direction that are written: 0 if there would be less than half of what is too few.
static Orb32s linesOf(Orb64f resized, Orb32s room, Orb32s least) {
  if (!(resized < room)) return room;
  const Orb32s lines = static_cast<Orb32s>(resized);
  if (lines >= least) return lines;
  return resized + kHair < least - 0.5 ? 0 : least;
}

struct Layout {
  Samples luma;
  Samples chroma;
  Samples rows;
};

[[gnu::noinline]] static Layout layoutOf(OrbiSize size, Orb32s x, Orb32s y, Orb32s width,
                                         Orb32s height, OrbiSize room, Orb64f xFactor,
                                         Orb64f yFactor) {
  const DoublePrecision precision;
  const Orb64f resizedWidth = width * xFactor;
  const Orb64f resizedHeight = height * yFactor;
  const Orb32s pairs = linesOf(resizedWidth, room.width, 2) / 2;
  const Orb32s rows = linesOf(resizedHeight, room.height, 1);
  return {{-x, size.width - x - 1, 2 * pairs, stepOf(width, resizedWidth)},
          {-x / 2, (size.width - x) / 2 - 1, pairs, stepOf(width / 2, xFactor * (width / 2))},
          {-y, size.height - y - 1, rows, stepOf(height, resizedHeight)}};
}

// ---- What samples are made of

// Each method has its weights, a value between the passes, and the two passes.

struct NearestSamples {
  static constexpr int kTaps = 1;
  static constexpr Orb32s kBefore = 0;  // the taps in front of the place's sample
  using Value = Orb8u;
  struct Weights {};

  static Weights weightsOf(Place&, const Samples&) { return {}; }
  static Value across(const Orb8u* src, const Orb32s* offsets, const Weights&) {
    return src[offsets[0]];
  }
  static void down(const Value* const* rows, const Weights&, Orb8u* dst, ptrdiff_t samples) {
    __builtin_memcpy(dst, rows[0], static_cast<size_t>(samples));
  }
};

struct LinearSamples {
  static constexpr int kTaps = 2;
  static constexpr Orb32s kBefore = 0;
  using Value = Orb16s;
  using Weights = LinearWeights;

  static Weights weightsOf(Place& place, const Samples& samples) {
    if (place.whole < samples.last) return linearWeightsOf(place.part);
    --place.whole;
    return {0, kLinearOne};
  }
  static Value across(const Orb8u* src, const Orb32s* offsets, const Weights& weights) {
    const Orb32s sum = weights.here * src[offsets[0]] + weights.next * src[offsets[1]];
    return static_cast<Orb16s>((sum + 128) >> 8);
  }
  static void down(const Value* const* rows, const Weights& weights, Orb8u* dst,
                   ptrdiff_t samples) {
    kernel::orbLinearDown(rows[0], rows[1], weights, dst, static_cast<Orb32s>(samples));
  }
};

struct LagrangeSamples {
  static constexpr int kTaps = 4;
  static constexpr Orb32s kBefore = 1;
  using Value = Orb32f;
  // Of the differences; rows take as many as there are taps.
  struct Weights {
    Orb32f factors[kTaps];
  };

  static Weights weightsOf(Place& place, const Samples&) {
    Orb64f factors[3];
    newtonFactorsOf(place.part, factors);
    return {{static_cast<Orb32f>(factors[0]), static_cast<Orb32f>(factors[1]),
             static_cast<Orb32f>(factors[2]), 0}};
  }
  static Value across(const Orb8u* src, const Orb32s* offsets, const Weights& weights) {
    Orb32f samples[kTaps];
    for (int k = 0; k < kTaps; ++k) samples[k] = src[offsets[k]];
    return NewtonCubic::of(samples, weights.factors);
  }
  static void down(const Value* const* rows, const Weights& weights, Orb8u* dst,
                   ptrdiff_t samples) {
    kernel::orbTapsDown<NewtonCubic>(rows, weights.factors, dst, samples);
  }
};

// A sample of the result: where its taps lie in a row, or which rows they are.
template <class Method>
struct Taps {
  Orb32s offsets[Method::kTaps];
  typename Method::Weights weights;
};

template <class Method>
[[gnu::noinline]] static void findTaps(const Samples& samples, Orb32s from, Orb32s count,
                                       Orb32s distance, Taps<Method>* taps) {
  const DoublePrecision precision;
  for (Orb32s i = 0; i < count; ++i) {
    Place place = placeOf(samples, from + i);
    taps[i].weights = Method::weightsOf(place, samples);
    for (int k = 0; k < Method::kTaps; ++k) {
      const Orb32s tap = place.whole - Method::kBefore + k;
      taps[i].offsets[k] = distance * limit(tap, samples.first, samples.last);
    }
  }
}

template <class Method>
[[gnu::noinline]] static void pairsAcross(const Orb8u* src, const Taps<Method>* luma,
                                          const Taps<Method>* chroma, ptrdiff_t pairs,
                                          typename Method::Value* dst) {
  const SinglePrecision precision;
  const auto sample = [](const Orb8u* first, const Taps<Method>& taps) {
    return Method::across(first, taps.offsets, taps.weights);
  };
  for (ptrdiff_t i = 0; i < pairs; ++i) {
    dst[4 * i] = sample(src, luma[2 * i]);
    dst[4 * i + 1] = sample(src + 1, chroma[i]);
    dst[4 * i + 2] = sample(src, luma[2 * i + 1]);
    dst[4 * i + 3] = sample(src + 3, chroma[i]);
  }
}

template <class Method>
[[gnu::noinline]] static void pairsDown(const typename Method::Value* const* rows,
                                        const typename Method::Weights& weights, Orb8u* dst,
                                        ptrdiff_t pairs) {
  const SinglePrecision precision;
  Method::down(rows, weights, dst, 4 * pairs);
}

// ---- The tables of a call, in one block

class Block {
 public:
  explicit Block(int64_t size)
      : memory_(size <= kMost ? orbMalloc(static_cast<Orb32s>(size)) : nullptr), size_(size) {}
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;
  ~Block() { orbFree(memory_); }

  explicit operator bool() const { return memory_ != nullptr; }
  Scratch scratch() const { return Scratch(static_cast<Orb8u*>(memory_), size_); }

 private:
  static constexpr int64_t kMost = 0x7FFFFFFF;

  void* memory_;
  int64_t size_;
};

// What areas of a scratch may lose to their alignment.
constexpr int64_t kAlignments = 8 * 16;

template <class Method>
static OrbStatus resizePairs(const Source& source, const Target& target, const Layout& layout) {
  constexpr int kTaps = Method::kTaps;
  using Value = typename Method::Value;
  const int64_t pairs = layout.chroma.count;
  const Block block(3 * pairs * static_cast<int64_t>(sizeof(Taps<Method>)) +
                    kTaps * 4 * pairs * static_cast<int64_t>(sizeof(Value)) + kAlignments);
  if (!block) return orbStsMemAllocErr;
  Scratch scratch = block.scratch();
  auto* const luma = scratch.take<Taps<Method>>(2 * pairs);
  auto* const chroma = scratch.take<Taps<Method>>(pairs);
  findTaps<Method>(layout.luma, 0, layout.luma.count, 2, luma);
  findTaps<Method>(layout.chroma, 0, layout.chroma.count, 4, chroma);

  // Rows of the source, filtered across. Taps never span more than these, so that no two of them
  // want the same place.
  Value* filtered[kTaps];
  Orb32s held[kTaps] = {};
  bool isHeld[kTaps] = {};
  for (Value*& row : filtered) row = scratch.take<Value>(4 * pairs);
  for (Orb32s i = 0; i < layout.rows.count; ++i) {
    Taps<Method> taps;
    findTaps<Method>(layout.rows, i, 1, 1, &taps);
    const Value* rows[kTaps];
    for (int k = 0; k < kTaps; ++k) {
      const Orb32s row = taps.offsets[k];
      const Orb32u place = static_cast<Orb32u>(row - layout.rows.first) % kTaps;
      if (!isHeld[place] || held[place] != row) {
        isHeld[place] = true;
        held[place] = row;
        pairsAcross<Method>(source.row(row), luma, chroma, static_cast<ptrdiff_t>(pairs),
                            filtered[place]);
      }
      rows[k] = filtered[place];
    }
    pairsDown<Method>(rows, taps.weights, target.row(i), static_cast<ptrdiff_t>(pairs));
  }
  return orbStsNoErr;
}

// ---- Means of areas

// `first` is the place of the kind's first sample in a pair, and samples lie `distance` apart.
static void sumsOfBoxes(const Orb32f* sums, ptrdiff_t first, ptrdiff_t distance,
                        const BoxBoundary* boundaries, ptrdiff_t boxes, Orb32f* dst) {
  for (ptrdiff_t i = 0; i < boxes; ++i) {
    dst[first + i * distance] =
        plain::boxSum(sums + first, distance, boundaries[i], boundaries[i + 1]);
  }
}

[[gnu::noinline]] static void sumPairs(const Source& source, const BoxRows& rows, ptrdiff_t samples,
                                       ptrdiff_t reach, const BoxBoundary* luma,
                                       const BoxBoundary* chroma, ptrdiff_t pairs, Orb32f* sums,
                                       Orb32f* dst) {
  const SinglePrecision precision;
  sumRows(source, rows, sums, samples);
  for (ptrdiff_t i = samples; i < reach; ++i) sums[i] = sums[i % 2 == 0 ? i - 2 : i - 4];
  sumsOfBoxes(sums, 0, 2, luma, 2 * pairs, dst);
  sumsOfBoxes(sums, 1, 4, chroma, pairs, dst);
  sumsOfBoxes(sums, 3, 4, chroma, pairs, dst);
}

struct PairBoxes {
  BoxAxis luma;
  BoxAxis chroma;
  BoxAxis rows;
  Orb64f scale;
  int64_t reach;  // the bytes of a row up to the end of the last box
};

static int64_t endOf(const BoxAxis& axis) {
  const FarBoundary end = boundaryOf(axis, axis.count);
  return end.whole + (end.part > 0 ? 1 : 0);
}

[[gnu::noinline]] static PairBoxes pairBoxesOf(const Layout& layout, Orb64f xFactor,
                                               Orb64f yFactor) {
  const DoublePrecision precision;
  const Orb64f width = 1 / xFactor;
  const BoxAxis luma = {layout.luma.last + 1, layout.luma.count, 0, width};
  const BoxAxis chroma = {layout.chroma.last + 1, layout.chroma.count, 0, width};
  const int64_t lumaEnd = 2 * endOf(luma);
  const int64_t chromaEnd = 4 * endOf(chroma);
  return {luma,
          chroma,
          {layout.rows.last + 1, layout.rows.count, 0, 1 / yFactor},
          xFactor * yFactor,
          lumaEnd > chromaEnd ? lumaEnd : chromaEnd};
}

[[gnu::noinline]] static void findBoundaries(const BoxAxis& axis, BoxBoundary* boundaries) {
  const DoublePrecision precision;
  for (Orb32s i = 0; i <= axis.count; ++i) {
    const FarBoundary boundary = boundaryOf(axis, i);
    boundaries[i] = {static_cast<Orb32s>(boundary.whole), static_cast<Orb32f>(boundary.part)};
  }
}

static OrbStatus resizePairsByArea(const Source& source, const Target& target, const Layout& layout,
                                   Orb64f xFactor, Orb64f yFactor) {
  const PairBoxes boxes = pairBoxesOf(layout, xFactor, yFactor);
  const int64_t pairs = layout.chroma.count;
  const int64_t inImage = 4 * (layout.chroma.last + static_cast<int64_t>(1));
  const int64_t samples = boxes.reach < inImage ? boxes.reach : inImage;
  const Block block((3 * pairs + 2) * static_cast<int64_t>(sizeof(BoxBoundary)) +
                    (boxes.reach + 4 * pairs) * static_cast<int64_t>(sizeof(Orb32f)) + kAlignments);
  if (!block) return orbStsMemAllocErr;
  Scratch scratch = block.scratch();
  BoxBoundary* const luma = scratch.take<BoxBoundary>(2 * pairs + 1);
  BoxBoundary* const chroma = scratch.take<BoxBoundary>(pairs + 1);
  Orb32f* const sums = scratch.take<Orb32f>(boxes.reach);
  Orb32f* const means = scratch.take<Orb32f>(4 * pairs);
  findBoundaries(boxes.luma, luma);
  findBoundaries(boxes.chroma, chroma);
  for (Orb32s i = 0; i < layout.rows.count; ++i) {
    sumPairs(source, boxRowsOf(boxes.rows, i), static_cast<ptrdiff_t>(samples),
             static_cast<ptrdiff_t>(boxes.reach), luma, chroma, static_cast<ptrdiff_t>(pairs), sums,
             means);
    meansOf(means, boxes.scale, target.row(i), static_cast<ptrdiff_t>(4 * pairs));
  }
  return orbStsNoErr;
}

// ----

OrbStatus ORB_CALL orbiResizeYUV422_8u_C2R(const Orb8u* pSrc, OrbiSize srcSize, Orb32s srcStep,
                                           OrbiRect srcRoi, Orb8u* pDst, Orb32s dstStep,
                                           OrbiSize dstRoiSize, Orb64f xFactor, Orb64f yFactor,
                                           Orb32s interpolation) {
  if (!pSrc || !pDst) return orbStsNullPtrErr;
  if (srcSize.width < 1 || srcSize.height < 1 || srcRoi.width < 1 || srcRoi.height < 1 ||
      dstRoiSize.width < 2 || dstRoiSize.height < 1 || (srcSize.width & 1) != 0 ||
      (srcRoi.width & 1) != 0 || (srcRoi.x & 1) != 0) {
    return orbStsSizeErr;
  }
  if (static_cast<int64_t>(srcRoi.width) + srcRoi.x < 1 ||
      static_cast<int64_t>(srcRoi.height) + srcRoi.y < 1 || srcRoi.x >= srcSize.width ||
      srcRoi.y >= srcSize.height) {
    return orbStsRoiOutside;
  }
  if (!(xFactor > 0) || !(yFactor > 0)) return orbStsResizeFactorErr;
  if (interpolation != orbInterNearest && interpolation != orbInterLinear &&
      interpolation != orbInterLagrange && interpolation != orbInterSuper) {
    return orbStsInterpolationErr;
  }
  // A negative position makes the region larger by as much.
  const auto within = [](Orb32s position, Orb32s length, Orb32s size) {
    const int64_t grown = static_cast<int64_t>(length) - (position < 0 ? position : 0);
    return static_cast<Orb32s>(limit<int64_t>(grown, 0, size - (position > 0 ? position : 0)));
  };
  const Orb32s x = srcRoi.x > 0 ? srcRoi.x : 0;
  const Orb32s y = srcRoi.y > 0 ? srcRoi.y : 0;
  const Layout layout =
      layoutOf(srcSize, x, y, within(srcRoi.x, srcRoi.width, srcSize.width),
               within(srcRoi.y, srcRoi.height, srcSize.height), dstRoiSize, xFactor, yFactor);
  if (layout.chroma.count == 0 || layout.rows.count == 0) return orbStsResizeTooSmallErr;
  if (interpolation == orbInterSuper && (xFactor > 1 || yFactor > 1)) {
    return orbStsResizeFactorErr;
  }

  const Source source = {rowAt(pSrc, srcStep, y) + static_cast<ptrdiff_t>(x) * 2, srcStep};
  const Target target = {pDst, dstStep};
  switch (interpolation) {
    case orbInterNearest:
      return resizePairs<NearestSamples>(source, target, layout);
    case orbInterLinear:
      return resizePairs<LinearSamples>(source, target, layout);
    case orbInterLagrange:
      return resizePairs<LagrangeSamples>(source, target, layout);
    default:
      return resizePairsByArea(source, target, layout, xFactor, yFactor);
  }
}

}  // namespace orb::ORB_BUILD
