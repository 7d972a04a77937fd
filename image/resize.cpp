// Resizing of images of square pixels: argument checks, scratch sizes and geometry, then one call
// into an engine.
#include "image/resize_area.h"
#include "image/resize_axis.h"
#include "image/resize_linear.h"
#include "image/resize_nearest.h"
#include "image/resize_rim.h"
#include "image/resize_taps.h"
#include "image/resize_wide.h"

namespace orb::ORB_BUILD {

// ---- The interpolation argument

constexpr Orb32u kOptions = 0xE0000000;

static Orb32s methodOf(Orb32s interpolation) {
  return static_cast<Orb32s>(static_cast<Orb32u>(interpolation) & ~kOptions);
}

static bool hasOption(Orb32s interpolation, Orb32s option) {
  return (interpolation & option) != 0;
}

static bool isMethod(Orb32s method) {
  return method == orbInterNearest || method == orbInterLinear ||
         (method >= orbInterLagrange && method <= orbInterSuper) || method == orbInterLanczos;
}

static bool isInterpolation(Orb32s interpolation) {
  const Orb32u options = static_cast<Orb32u>(interpolation) & kOptions;
  return isMethod(methodOf(interpolation)) && (options & (options - 1)) == 0;
}

// Antialiasing means nothing to these.
static bool ignoresAntialias(Orb32s interpolation) {
  const Orb32s method = methodOf(interpolation);
  return hasOption(interpolation, orbInterAntialias) &&
         (method == orbInterNearest || method == orbInterSuper);
}

static bool isBadRect(OrbiRect rect) {
  return rect.x < 0 || rect.y < 0 || rect.width < 1 || rect.height < 1;
}

// ---- Scratch

// Counts of samples are far below 2^63 but not their products: this is as good as any.
constexpr int64_t kEnormous = 1LL << 50;

static int64_t product(int64_t a, int64_t b) {
  return a > kEnormous / b ? kEnormous : a * b;
}

static int64_t up(int64_t value, int64_t multiple) {
  return (value + multiple - 1) & -multiple;
}

static int64_t down(int64_t value, int64_t multiple) {
  return value & -multiple;
}

[[gnu::noinline]] static int64_t reachOf(Orb32s method, Orb32s from, Orb32s to) {
  const DoublePrecision precision;
  const Orb64f ratio = static_cast<Orb64f>(from) / to;
  const Orb64f reach = plain::kernelReach(method) * (ratio >= 1 ? ratio : 1);
  return static_cast<int64_t>(-__builtin_floor(-reach));
}

// What a resize takes of a buffer behind its first address that is a multiple of 16.
static int64_t scratchSize(OrbiRect srcRoi, OrbiRect dstRoi, int channels, Orb32s interpolation) {
  const Orb32s method = methodOf(interpolation);
  const int64_t width = dstRoi.width;
  const int64_t height = dstRoi.height;
  if (hasOption(interpolation, orbInterAntialias) && !ignoresAntialias(interpolation)) {
    const int64_t across = reachOf(method, srcRoi.width, dstRoi.width);
    const int64_t down = reachOf(method, srcRoi.height, dstRoi.height);
    return 4 * up(width * channels, 16) +
           8 * up(product(product(width, srcRoi.height), channels), 16) +
           8 * up((2 * across + 2) * width, 16) + 8 * up((2 * down + 2) * height, 16);
  }
  const int64_t base = 4 * (up(width, 16) + up(height, 16));
  switch (method) {
    case orbInterNearest:
      return base;
    case orbInterLinear:
      return base + 4 * (up(width, 64) + up(height, 64)) + channels * down(8 * width + 508, 256);
    case orbInterSuper:
      return channels * 8 * up(srcRoi.width, 16);
    case orbInterLanczos:
      return base + 4 * (up(width, 32) + up(height, 32)) +
             (1 + channels) * 4 * down(6 * width + 191, 32) + 4 * down(6 * height + 191, 32);
    default:
      return base + 4 * (up(width, 32) + up(height, 32)) + 4 * down(4 * width + 127, 32) +
             down(16 * height + 508, 128) + channels * 4 * down(4 * width + 255, 64);
  }
}

OrbStatus ORB_CALL orbiResizeGetBufSize(OrbiRect srcRoi, OrbiRect dstRoi, Orb32s nChannels,
                                        Orb32s interpolation, Orb32s* pBufSize) {
  if (!pBufSize) return orbStsNullPtrErr;
  if (isBadRect(srcRoi) || isBadRect(dstRoi)) return orbStsSizeErr;
  if (nChannels != 1 && nChannels != 3 && nChannels != 4) return orbStsChannelCountErr;
  if (!isInterpolation(interpolation)) return orbStsInterpolationErr;
  const int64_t size = scratchSize(srcRoi, dstRoi, nChannels, interpolation);
  if (size > 0x7FFFFFFF) {
    *pBufSize = 0;
    return orbStsSizeErr;
  }
  *pBufSize = static_cast<Orb32s>(size + 16);
  return ignoresAntialias(interpolation) ? orbStsAntialiasIgnored : orbStsNoErr;
}

// ---- Geometry

// The engines for four and six samples want as many of them and some more.
static Orb32s methodForSize(Orb32s method, OrbiSize size) {
  const Orb32s smaller = size.width < size.height ? size.width : size.height;
  if (method == orbInterLanczos && smaller < 6) method = orbInterLagrange;
  const bool isCubic = method >= orbInterLagrange && method <= orbInterCubicB05C03;
  return isCubic && smaller < 4 ? orbInterLinear : method;
}

// One side of a rectangle.
struct Stretch {
  Orb32s from;
  Orb32s length;
};

// The count is 0 if nothing is written.
[[gnu::noinline]] static Axis axisOf(Orb32s size, Stretch src, Stretch dst, Orb64f factor,
                                     Orb64f shift, bool wholePixels) {
  const DoublePrecision precision;
  const Orb32s length = limit(src.length, 1, size - src.from);
  const Orb64f dstFrom = dst.from;
  const Orb64f dstTo = dstFrom + dst.length;
  const Orb64f from = src.from * factor + shift;
  const Orb64f to = (static_cast<Orb64f>(src.from) + length) * factor + shift;
  Axis axis = {size,
               0,
               0,
               from < dstFrom ? dstFrom : from,
               to > dstTo ? dstTo : to,
               1 / factor,
               -(shift / factor)};
  if (!(axis.from < dstTo && axis.to > dstFrom)) return axis;
  Orb64f first, end;
  if (wholePixels) {
    first = -__builtin_floor(-(axis.from - 1e-10));
    end = __builtin_floor(axis.to + 1e-10);
  } else {
    first = __builtin_floor(axis.from + 0.4999999999);
    end = __builtin_floor(axis.to + 0.5000000001);
  }
  axis.first = static_cast<int64_t>(first);
  if (first < end) axis.count = static_cast<Orb32s>(end - first);
  return axis;
}

[[gnu::noinline]] static Orb64f areaScaleOf(Orb64f xFactor, Orb64f yFactor) {
  const DoublePrecision precision;
  return xFactor * yFactor;
}

// ---- The resize

struct Resize {
  const Source& source;
  const Target& target;
  const Axis& x;
  const Axis& y;
  Orb32s method;
  bool antialiases;
  Orb64f areaScale;
  Scratch scratch;
};

template <int kChannels>
static void run(const Resize& resize) {
  const auto& [source, target, x, y, method, antialiases, areaScale, scratch] = resize;
  if (method == orbInterNearest) {
    resizeNearest<kChannels>(source, target, x, y, scratch);
  } else if (method == orbInterSuper) {
    resizeByArea<kChannels>(source, target, boxAxisOf(x), boxAxisOf(y), areaScale, scratch);
  } else if (antialiases) {
    resizeByWideKernel<kChannels>(method, source, target, x, y, scratch);
  } else if (method == orbInterLinear) {
    resizeLinear<kChannels>(source, target, x, y, scratch);
  } else if (method == orbInterLagrange) {
    resizeByTaps<NewtonCubic, kChannels>(method, source, target, x, y, scratch);
  } else if (method == orbInterLanczos) {
    resizeByTaps<WeightedSum<6>, kChannels>(method, source, target, x, y, scratch);
  } else {
    resizeByTaps<WeightedSum<4>, kChannels>(method, source, target, x, y, scratch);
  }
}

template <int kChannels>
static OrbStatus resize(const Orb8u* pSrc, OrbiSize srcSize, Orb32s srcStep, OrbiRect srcRoi,
                        Orb8u* pDst, Orb32s dstStep, OrbiRect dstRoi, Orb64f xFactor,
                        Orb64f yFactor, Orb64f xShift, Orb64f yShift, Orb32s interpolation,
                        Orb8u* pBuffer) {
  if (!pSrc || !pDst || !pBuffer) return orbStsNullPtrErr;
  if (srcSize.width < 1 || srcSize.height < 1 || isBadRect(srcRoi) || isBadRect(dstRoi)) {
    return orbStsSizeErr;
  }
  if (xFactor <= 0 || yFactor <= 0) return orbStsResizeFactorErr;
  if (!isInterpolation(interpolation)) return orbStsInterpolationErr;
  const Orb32s method = methodOf(interpolation);
  if (method == orbInterSuper && (xFactor > 1 || yFactor > 1)) return orbStsResizeFactorErr;
  if (srcRoi.x >= srcSize.width || srcRoi.y >= srcSize.height) return orbStsRoiOutside;
  const bool fades = hasOption(interpolation, orbInterEdgeFade);
  const bool blends = hasOption(interpolation, orbInterEdgeBlend);
  const Axis x = axisOf(srcSize.width, {srcRoi.x, srcRoi.width}, {dstRoi.x, dstRoi.width}, xFactor,
                        xShift, fades || blends);
  const Axis y = axisOf(srcSize.height, {srcRoi.y, srcRoi.height}, {dstRoi.y, dstRoi.height},
                        yFactor, yShift, fades || blends);
  if (x.count == 0 || y.count == 0) return orbStsNoOperation;

  const Source source = {pSrc, srcStep};
  const Target target = {rowAt(pDst, dstStep, static_cast<ptrdiff_t>(y.first)) +
                             static_cast<ptrdiff_t>(x.first) * kChannels,
                         dstStep};
  run<kChannels>({source, target, x, y, methodForSize(method, srcSize),
                  hasOption(interpolation, orbInterAntialias), areaScaleOf(xFactor, yFactor),
                  Scratch(pBuffer, scratchSize(srcRoi, dstRoi, kChannels, interpolation))});
  if (fades || blends) drawRim(target, x, y, blends, kChannels);
  return ignoresAntialias(interpolation) ? orbStsAntialiasIgnored : orbStsNoErr;
}

OrbStatus ORB_CALL orbiResizeSqrPixel_8u_C1R(const Orb8u* pSrc, OrbiSize srcSize, Orb32s srcStep,
                                             OrbiRect srcRoi, Orb8u* pDst, Orb32s dstStep,
                                             OrbiRect dstRoi, Orb64f xFactor, Orb64f yFactor,
                                             Orb64f xShift, Orb64f yShift, Orb32s interpolation,
                                             Orb8u* pBuffer) {
  return resize<1>(pSrc, srcSize, srcStep, srcRoi, pDst, dstStep, dstRoi, xFactor, yFactor, xShift,
                   yShift, interpolation, pBuffer);
}

OrbStatus ORB_CALL orbiResizeSqrPixel_8u_C3R(const Orb8u* pSrc, OrbiSize srcSize, Orb32s srcStep,
                                             OrbiRect srcRoi, Orb8u* pDst, Orb32s dstStep,
                                             OrbiRect dstRoi, Orb64f xFactor, Orb64f yFactor,
                                             Orb64f xShift, Orb64f yShift, Orb32s interpolation,
                                             Orb8u* pBuffer) {
  return resize<3>(pSrc, srcSize, srcStep, srcRoi, pDst, dstStep, dstRoi, xFactor, yFactor, xShift,
                   yShift, interpolation, pBuffer);
}

OrbStatus ORB_CALL orbiResizeSqrPixel_8u_C4R(const Orb8u* pSrc, OrbiSize srcSize, Orb32s srcStep,
                                             OrbiRect srcRoi, Orb8u* pDst, Orb32s dstStep,
                                             OrbiRect dstRoi, Orb64f xFactor, Orb64f yFactor,
                                             Orb64f xShift, Orb64f yShift, Orb32s interpolation,
                                             Orb8u* pBuffer) {
  return resize<4>(pSrc, srcSize, srcStep, srcRoi, pDst, dstStep, dstRoi, xFactor, yFactor, xShift,
                   yShift, interpolation, pBuffer);
}

}  // namespace orb::ORB_BUILD
