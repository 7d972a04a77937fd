// What rotation and perspective warp draw, found for each destination pixel by itself: its place in
// the source by the inverse map in long doubles, and its value by the textbook form of each
// interpolation.
#ifndef ORB_TESTS_IMAGE_TRANSFORM_MODEL_H
#define ORB_TESTS_IMAGE_TRANSFORM_MODEL_H

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "orb90legacy.h"
#include "tests/support/plane.h"

namespace orbtest::transform {

struct Place {
  long double x, y;
};
using Map = std::function<Place(Place)>;

// An image of interleaved pixels.
struct Picture {
  Picture(OrbiSize pixels, int channelCount, Placement at = {})
      : size(pixels),
        channels(channelCount),
        place(at),
        plane(pixels.width * channels, pixels.height, at) {}

  // The same pixels in the same place of other memory.
  Picture copy() const {
    Picture other(size, channels, place);
    other.plane.copySamples(plane);
    return other;
  }
  int at(int x, int y, int channel) const { return plane.at(x * channels + channel, y); }

  OrbiSize size;
  int channels;
  Placement place;
  Plane<Orb8u> plane;
};

// A call, but for the map. `forward` takes the source to the destination, `back` the other way.
struct Drawing {
  const Picture& src;
  OrbiRect srcRoi;
  OrbiRect dstRoi;
  int method;
  Map forward, back;
};

inline int lastOf(int first, int length, int end) {
  return std::min(first + length, end) - 1;
}

// ---- Interpolation

inline long double tent(long double distance) {
  return std::max(0.0L, 1 - std::fabs(distance));
}
// Keys' cubic convolution with a = -1/2.
inline long double keys(long double distance) {
  const long double d = std::fabs(distance);
  if (d >= 2) return 0;
  return d <= 1 ? 1.5L * d * d * d - 2.5L * d * d + 1
                : -0.5L * d * d * d + 2.5L * d * d - 4 * d + 2;
}
// The weight of node `which` of four that begin at `first`, for the cubic through them.
inline long double throughFour(long double place, int first, int which) {
  long double product = 1;
  for (int other = 0; other < 4; ++other) {
    if (other != which) product *= (place - (first + other)) / (which - other);
  }
  return product;
}

struct Tap {
  int pixel;
  long double weight;
};
inline std::vector<Tap> tapsAt(long double place, int length, int method) {
  const int before = std::clamp(static_cast<int>(std::floor(place)), 0, length - 1);
  std::vector<Tap> taps;
  for (int i = before - 1; i <= before + 2; ++i) {
    const int inside = std::clamp(i, 0, length - 1);
    if (method == orbInterNearest) {
      if (i == static_cast<int>(std::floor(place + 0.5L))) taps.push_back({inside, 1});
    } else if (method == orbInterLinear) {
      taps.push_back({inside, tent(place - i)});
    } else if (method == orbInterLagrange) {
      const int first = std::clamp(before - 1, 0, length - 4);
      taps.push_back({first + i - before + 1, throughFour(place, first, i - before + 1)});
    } else {
      taps.push_back({inside, keys(place - i)});
    }
  }
  return taps;
}
inline long double valueAt(const Picture& src, Place place, int channel, int method) {
  long double sum = 0;
  for (const Tap& down : tapsAt(place.y, src.size.height, method)) {
    for (const Tap& across : tapsAt(place.x, src.size.width, method)) {
      sum += down.weight * across.weight * src.at(across.pixel, down.pixel, channel);
    }
  }
  return sum;
}

// Whether a byte is the value at a place. Beside a place where values jump by rounding, those of
// both sides will do.
inline bool isValueAt(int byte, const Picture& src, Place place, int channel, int method) {
  const long double hair = 1e-8L, error = method >= orbInterLagrange ? 2e-3L : 1e-5L;
  const auto rounded = [](long double value) {
    return static_cast<int>(std::floor(std::clamp(value, 0.0L, 255.0L) + 0.5L));
  };
  if (rounded(valueAt(src, place, channel, method)) == byte) return true;
  int low = 255, high = 0;
  for (const long double dx : {-hair, hair}) {
    for (const long double dy : {-hair, hair}) {
      const Place near = {
          std::clamp(place.x + dx, 0.0L, static_cast<long double>(src.size.width - 1)),
          std::clamp(place.y + dy, 0.0L, static_cast<long double>(src.size.height - 1))};
      const long double value = valueAt(src, near, channel, method);
      low = std::min(low, rounded(value - error));
      high = std::max(high, rounded(value + error));
    }
  }
  return low <= byte && byte <= high;
}

// ---- What is written

// How far inside the source rectangle a place is; below 0 outside.
inline long double depth(const Drawing& drawing, Place place) {
  const OrbiRect& roi = drawing.srcRoi;
  const int right = lastOf(roi.x, roi.width, drawing.src.size.width);
  const int bottom = lastOf(roi.y, roi.height, drawing.src.size.height);
  return std::min({place.x - roi.x, right - place.x, place.y - roi.y, bottom - place.y});
}

// Compares every pixel of the destination after a call with what it should be, and with what it was
// before. Pixels on the edge may be written or not. Returns how many had to be written.
inline int expectDrawn(const Drawing& drawing, const Picture& before, const Picture& after) {
  const OrbiRect& roi = drawing.dstRoi;
  int drawn = 0;
  for (int y = 0; y < after.size.height; ++y) {
    for (int x = 0; x < after.size.width; ++x) {
      const bool inRoi =
          x >= roi.x && y >= roi.y && x - roi.x < roi.width && y - roi.y < roi.height;
      const Place place = drawing.back({static_cast<long double>(x), static_cast<long double>(y)});
      const long double inside = inRoi ? depth(drawing, place) : -1;
      const bool must = inside > 1e-9L, may = inside > -1e-9L;
      bool isOld = true, isNew = true;
      for (int k = 0; k < after.channels; ++k) {
        isOld = isOld && after.at(x, y, k) == before.at(x, y, k);
        isNew = isNew && may && isValueAt(after.at(x, y, k), drawing.src, place, k, drawing.method);
      }
      if (must) ++drawn;
      EXPECT_TRUE(isNew || (!must && isOld))
          << x << ", " << y << " from " << static_cast<double>(place.x) << ", "
          << static_cast<double>(place.y)
          << (must  ? ", inside"
              : may ? ", on the edge"
                    : ", outside")
          << ", is " << after.at(x, y, 0) << " by method " << drawing.method;
      if (testing::Test::HasFailure()) return drawn;
    }
  }
  return drawn;
}

// ---- Smooth edges

// A drawing with smooth edges beside the same without. What an edge does is looked at where no
// other one is near. Returns how many pixels an edge went by.
inline int expectSmoothed(const Drawing& drawing, const Picture& plain, const Picture& smooth) {
  const OrbiRect &src = drawing.srcRoi, &dst = drawing.dstRoi;
  const long double left = src.x, right = lastOf(src.x, src.width, drawing.src.size.width);
  const long double top = src.y, bottom = lastOf(src.y, src.height, drawing.src.size.height);
  const Place corners[] = {drawing.forward({left, top}), drawing.forward({right, top}),
                           drawing.forward({right, bottom}), drawing.forward({left, bottom})};
  const Place centre = drawing.forward({(left + right) / 2, (top + bottom) / 2});
  const auto isNearACorner = [&](long double x, long double y) {
    return std::any_of(std::begin(corners), std::end(corners),
                       [&](Place c) { return std::hypot(c.x - x, c.y - y) < 4; });
  };
  Picture expected = plain.copy();
  std::vector<bool> known(static_cast<size_t>(plain.size.width) * plain.size.height, true);
  int passed = 0;
  for (int i = 0; i < 4; ++i) {
    const Place a = corners[i], b = corners[(i + 1) % 4];
    if (a.x == b.x || a.y == b.y) continue;
    const bool byColumns = std::fabs(b.x - a.x) >= std::fabs(b.y - a.y);
    for (int y = dst.y; y < dst.y + dst.height; ++y) {
      for (int x = dst.x; x < dst.x + dst.width; ++x) {
        // A pixel is outer if the edge crosses its column (or row) less than one pixel from it, and
        // it lies on the other side than the centre.
        const long double part = byColumns ? (x - a.x) / (b.x - a.x) : (y - a.y) / (b.y - a.y);
        if (part < 0 || part > 1) continue;
        const long double crossing =
            byColumns ? a.y + (b.y - a.y) * part : a.x + (b.x - a.x) * part;
        const long double side = (b.x - a.x) * (y - a.y) - (b.y - a.y) * (x - a.x);
        const long double in = (b.x - a.x) * (centre.y - a.y) - (b.y - a.y) * (centre.x - a.x);
        const int across = byColumns ? y : x;
        const long double distance = std::fabs(crossing - across);
        if (side * in >= 0 || distance >= 1) continue;
        const int inner = across + (crossing > across ? 1 : -1);
        const int ix = byColumns ? x : inner, iy = byColumns ? inner : y;
        const size_t index = static_cast<size_t>(y) * plain.size.width + x;
        // Where the edge meets the rectangle's own side the inner pixel may lie outside of it.
        const bool isInner =
            ix >= dst.x && iy >= dst.y && ix < dst.x + dst.width && iy < dst.y + dst.height;
        if (isNearACorner(x, y) || !isInner || distance < 1e-9L || distance > 1 - 1e-9L) {
          known[index] = false;
          continue;
        }
        ++passed;
        for (int k = 0; k < plain.channels; ++k) {
          const long double mixed =
              plain.at(ix, iy, k) * (1 - distance) + plain.at(x, y, k) * distance + 0.5L;
          const bool isTie = std::fabs(mixed - std::round(mixed)) < 1e-7L;
          if (isTie) known[index] = false;
          expected.plane.set(x * plain.channels + k, y, static_cast<Orb8u>(mixed));
        }
      }
    }
  }
  for (int y = 0; y < plain.size.height; ++y) {
    for (int x = 0; x < plain.size.width; ++x) {
      if (isNearACorner(x, y) || !known[static_cast<size_t>(y) * plain.size.width + x]) continue;
      for (int k = 0; k < plain.channels; ++k) {
        EXPECT_EQ(smooth.at(x, y, k), expected.at(x, y, k)) << x << ", " << y;
      }
      if (testing::Test::HasFailure()) return passed;
    }
  }
  return passed;
}

}  // namespace orbtest::transform

#endif
