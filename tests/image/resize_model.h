// Resizing, pixel by pixel and straight from its definition, in doubles.
#ifndef ORB_TESTS_IMAGE_RESIZE_MODEL_H
#define ORB_TESTS_IMAGE_RESIZE_MODEL_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <vector>

#include "orb90legacy.h"

namespace orbtest::resize {

constexpr double kPi = 3.141592653589793;

// Interleaved bytes without gaps between rows.
struct Picture {
  int width, height, channels;
  std::vector<uint8_t> bytes;

  Picture(int w, int h, int c)
      : width(w), height(h), channels(c), bytes(static_cast<size_t>(w) * h * c) {}
  uint8_t& at(int x, int y, int c) {
    return bytes[(static_cast<size_t>(y) * width + x) * channels + c];
  }
  uint8_t at(int x, int y, int c) const {
    return bytes[(static_cast<size_t>(y) * width + x) * channels + c];
  }
};

struct Request {
  OrbiRect srcRoi;
  OrbiRect dstRoi;
  double xFactor, yFactor, xShift, yShift;
  int interpolation;

  int method() const { return interpolation & 0x1FFFFFFF; }
  bool has(int option) const { return (interpolation & option) != 0; }
  bool hasRim() const { return has(orbInterEdgeFade) || has(orbInterEdgeBlend); }
};

// ---- Kernels, by the distance of a sample

inline double mitchell(double b, double c, double t) {
  const double t2 = t * t, t3 = t2 * t;
  if (t < 1) return ((12 - 9 * b - 6 * c) * t3 + (-18 + 12 * b + 6 * c) * t2 + 6 - 2 * b) / 6;
  if (t < 2) {
    return ((-b - 6 * c) * t3 + (6 * b + 30 * c) * t2 + (-12 * b - 48 * c) * t + 8 * b + 24 * c) /
           6;
  }
  return 0;
}

// The polynomial that is 1 at a sample and 0 at its three neighbours, as seen from that sample.
inline double lagrange(double t) {
  if (t < 1) return (1 - t) * (1 + t) * (2 - t) / 2;
  if (t < 2) return (1 - t) * (2 - t) * (3 - t) / 6;
  return 0;
}

inline double lanczos(double t) {
  if (t == 0) return 1;
  const double a = kPi * t;
  return t < 3 ? 3 * std::sin(a) * std::sin(a / 3) / (a * a) : 0;
}

inline double lanczosByLines(double t) {
  if (t >= 3) return 0;
  const double k = std::floor(100 * t);
  const double share = 100 * t - k;
  return (1 - share) * lanczos(k / 100) + share * lanczos((k + 1) / 100);
}

inline double kernelAt(int method, double t) {
  switch (method) {
    case orbInterLinear:
      return std::max(0.0, 1 - t);
    case orbInterLagrange:
      return lagrange(t);
    case orbInterBSpline:
      return mitchell(1, 0, t);
    case orbInterCatmullRom:
      return mitchell(0, 0.5, t);
    case orbInterCubicB05C03:
      return mitchell(0.5, 0.3, t);
    default:
      return lanczos(t);
  }
}

inline int reachOf(int method) {
  return method == orbInterLinear ? 1 : method == orbInterLanczos ? 3 : 2;
}

// ---- One direction

struct Line {
  int size;               // of the image
  int roiFrom, roiCount;  // of the source
  int dstFrom, dstCount;
  double factor, shift;
  bool hasRim;

  double mapped(double source) const { return source * factor + shift; }
  double from() const { return std::max<double>(dstFrom, mapped(roiFrom)); }
  double to() const {
    return std::min<double>(dstFrom + dstCount, mapped(std::min(size, roiFrom + roiCount)));
  }
  // Whether the source covers a pixel's middle, or with a rim the whole of it.
  bool covers(int x) const {
    if (hasRim) return x >= from() - 1e-10 && x + 1 <= to() + 1e-10;
    return x + 0.5 >= from() - 1e-10 && x + 0.5 <= to() + 1e-10;
  }
  // The share of a pixel beside those that is covered, or 0.
  double rimBefore(int first) const {
    const double open = from() - (first - 1);
    return open > 1e-10 && open < 1 - 1e-11 ? 1 - open : 0;
  }
  double rimBehind(int last) const {
    const double covered = to() - (last + 1);
    return covered > 0 && covered < 1 - 1e-10 ? covered : 0;
  }
  // Where a pixel's middle lies in the source, in whose coordinates sample i reaches from i to i
  // + 1.
  double source(int x) const { return (x + 0.5) * (1 / factor) - shift / factor; }
};

struct Tap {
  int sample;
  double weight;
};
using Taps = std::vector<Tap>;

inline int clamped(int sample, int size) {
  return std::min(std::max(sample, 0), size - 1);
}

inline Taps tapsOf(const Line& line, int method, int x) {
  const double p = line.source(x) - 0.5;
  const double whole = std::floor(p);
  const int reach = reachOf(method);
  const int anchor = static_cast<int>(std::min(std::max(whole, -1.0), line.size - 1.0));
  Taps taps;
  double sum = 0;
  for (int k = 1 - reach; k <= reach; ++k) {
    const double t = std::fabs(whole + k - p);
    const double weight = method == orbInterLanczos ? lanczosByLines(t) : kernelAt(method, t);
    taps.push_back({clamped(anchor + k, line.size), weight});
    sum += weight;
  }
  if (method == orbInterLanczos) {
    for (Tap& tap : taps) tap.weight /= sum;
  }
  return taps;
}

inline Taps wideTapsOf(const Line& line, int method, int x) {
  const double scale = 1 / line.factor;
  const double widening = std::max(1.0, scale);
  const double reach = reachOf(method) * widening;
  const double middle = line.source(x);
  Taps taps;
  double sum = 0;
  for (int j = static_cast<int>(std::floor(middle - reach)); j <= middle + reach; ++j) {
    const double weight = kernelAt(method, std::fabs(middle - j) / widening);
    taps.push_back({clamped(j, line.size), weight});
    sum += weight;
  }
  for (Tap& tap : taps) tap.weight /= sum;
  return taps;
}

inline Taps areaTapsOf(const Line& line, int xFirst, int x) {
  const double side = 1 / line.factor;
  const double first = xFirst * side - line.shift / line.factor;
  const double from = first + (x - xFirst) * side, to = from + side;
  Taps taps;
  for (int j = static_cast<int>(std::floor(from)) - 1; j <= to; ++j) {
    const double share = std::min<double>(to, j + 1) - std::max<double>(from, j);
    if (share > 0) taps.push_back({clamped(j, line.size), share});
  }
  return taps;
}

// ---- Two directions

struct Model {
  const Picture& source;
  Request request;
  int method;  // with which the work is done
  Line x, y;
  int xFirst = 0, xEnd = 0, yFirst = 0, yEnd = 0;  // the pixels that are covered

  Model(const Picture& picture, const Request& wanted)
      : source(picture),
        request(wanted),
        method(wanted.method()),
        x{picture.width,       wanted.srcRoi.x, wanted.srcRoi.width, wanted.dstRoi.x,
          wanted.dstRoi.width, wanted.xFactor,  wanted.xShift,       wanted.hasRim()},
        y{picture.height,       wanted.srcRoi.y, wanted.srcRoi.height, wanted.dstRoi.y,
          wanted.dstRoi.height, wanted.yFactor,  wanted.yShift,        wanted.hasRim()} {
    const int smaller = std::min(picture.width, picture.height);
    if (method == orbInterLanczos && smaller < 6) method = orbInterLagrange;
    if (method >= 4 && method <= 7 && smaller < 4) method = orbInterLinear;
    findCovered(x, xFirst, xEnd);
    findCovered(y, yFirst, yEnd);
  }

  bool isEmpty() const { return xFirst == xEnd || yFirst == yEnd; }

  // The value of a covered pixel, for all methods whose values are rounded but once.
  double value(int column, int row, int c) const {
    const Taps across = taps(x, xFirst, column), down = taps(y, yFirst, row);
    double sum = 0;
    for (const Tap& v : down) {
      for (const Tap& h : across) sum += v.weight * h.weight * source.at(h.sample, v.sample, c);
    }
    return method == orbInterSuper ? sum * request.xFactor * request.yFactor : sum;
  }

  int nearest(int column, int row, int c) const {
    return source.at(nearestOf(x, column), nearestOf(y, row), c);
  }

  // In steps, with 14 fraction bits.
  int linear(int column, int row, int c) const {
    const double px = x.source(column) - 0.5, py = y.source(row) - 0.5;
    const int ix = static_cast<int>(std::floor(px)), iy = static_cast<int>(std::floor(py));
    const int wx = static_cast<int>((px - ix) * 16384 + 1e-7);
    const int wy = static_cast<int>((py - iy) * 16384 + 1e-7);
    const auto sample = [&](int i, int j) {
      return source.at(clamped(i, x.size), clamped(j, y.size), c);
    };
    const bool between = px >= 0 && px < x.size - 1;
    if (py < 0 || py >= y.size - 1) {
      const int a = sample(ix, iy), b = sample(between ? ix + 1 : ix, iy);
      return ((16384 - wx) * a + wx * b + 8192) >> 14;
    }
    if (!between) {
      return ((16384 - wy) * sample(ix, iy) + wy * sample(ix, iy + 1) + 8192) >> 14;
    }
    const auto across = [&](int j) {
      return ((16384 - wx) * sample(ix, j) + wx * sample(ix + 1, j) + 128) >> 8;
    };
    return (wy * across(iy + 1) + (16384 - wy) * across(iy) + 0x80000) >> 20;
  }

 private:
  static void findCovered(const Line& line, int& first, int& end) {
    first = line.dstFrom;
    while (first < line.dstFrom + line.dstCount && !line.covers(first)) ++first;
    end = first;
    while (end < line.dstFrom + line.dstCount && line.covers(end)) ++end;
  }

  static int nearestOf(const Line& line, int i) {
    return clamped(static_cast<int>(std::floor(line.source(i) - 1e-10)), line.size);
  }

  Taps taps(const Line& line, int first, int i) const {
    if (method == orbInterSuper) return areaTapsOf(line, first, i);
    return request.has(orbInterAntialias) ? wideTapsOf(line, method, i) : tapsOf(line, method, i);
  }
};

}  // namespace orbtest::resize

#endif
