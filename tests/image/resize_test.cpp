// Resizing of square pixels beside a model in doubles.
#include <cmath>
#include <cstring>
#include <string>

#include "tests/image/resize_model.h"
#include "tests/support/builds.h"
#include "tests/support/faults.h"
#include "tests/support/guarded.h"
#include "tests/support/plane.h"

namespace {

using orbtest::Guard;
using orbtest::GuardedBytes;
using orbtest::Random;
using orbtest::TestBuild;
using orbtest::resize::Model;
using orbtest::resize::Picture;
using orbtest::resize::Request;

constexpr int kMethods[] = {orbInterNearest, orbInterLinear,     orbInterLagrange,
                            orbInterBSpline, orbInterCatmullRom, orbInterCubicB05C03,
                            orbInterSuper,   orbInterLanczos};
constexpr int kWidening[] = {orbInterLinear,     orbInterLagrange,    orbInterBSpline,
                             orbInterCatmullRom, orbInterCubicB05C03, orbInterLanczos};
constexpr int kChannelCounts[] = {1, 3, 4};

using ResizeBody = decltype(&legacy90orbiResizeSqrPixel_8u_C1R);

ResizeBody bodyOf(int index, int channels) {
  const TestBuild build = {index, ""};
  return channels == 1   ? ORB(orbiResizeSqrPixel_8u_C1R)
         : channels == 3 ? ORB(orbiResizeSqrPixel_8u_C3R)
                         : ORB(orbiResizeSqrPixel_8u_C4R);
}

int scratchSizeOf(int index, const Request& request, int channels) {
  const TestBuild build = {index, ""};
  int size = -1;
  EXPECT_GE(ORB(orbiResizeGetBufSize)(request.srcRoi, request.dstRoi, channels,
                                      request.interpolation, &size),
            0);
  return size;
}

// Scratch of the reported size and not a byte more: behind it no memory, or at any address bytes
// that have to stay.
class ExactScratch {
 public:
  ExactScratch(int size, int misalignment)
      : misalignment_(misalignment),
        size_(size),
        guarded_(static_cast<size_t>(size) + (misalignment > 0 ? kBehind : 0)) {
    std::memset(guarded_.data(), 0xC5, static_cast<size_t>(guarded_.size()));
  }
  Orb8u* data() { return guarded_.data() + misalignment_; }
  void expectKept() const {
    for (int i = 0; i < misalignment_; ++i) ASSERT_EQ(guarded_.data()[i], 0xC5) << "in front";
    for (int i = misalignment_ + size_; i < guarded_.size(); ++i) {
      ASSERT_EQ(guarded_.data()[i], 0xC5) << "byte " << i - size_ - misalignment_ << " behind";
    }
  }

 private:
  static constexpr int kBehind = 64;
  int misalignment_;
  int size_;
  GuardedBytes guarded_;
};

Picture anyPicture(Random& random, int width, int height, int channels) {
  Picture picture(width, height, channels);
  const bool extreme = random.oneIn(3);
  for (uint8_t& byte : picture.bytes) {
    byte = extreme ? random.extreme<uint8_t>() : random.any<uint8_t>();
  }
  return picture;
}

// A destination whose pixels hold what a model can blend with.
struct Destination {
  orbtest::Plane<Orb8u> plane;
  int channels;

  Destination(Random& random, int width, int height, int channelCount)
      : plane(width * channelCount, height, orbtest::Placement::any(random)),
        channels(channelCount) {
    Orb8u value = random.any<Orb8u>();
    plane.fill([&] { return value = static_cast<Orb8u>(value * 5 + 77); });
  }
  int at(int x, int y, int c) const { return plane.at(x * channels + c, y); }
};

OrbStatus run(int index, const Picture& picture, const Request& request, Destination& destination,
              Guard guard = Guard::kBehind, int misalignment = 0) {
  const GuardedBytes source(picture.bytes, guard);
  ExactScratch scratch(scratchSizeOf(index, request, picture.channels), misalignment);
  const OrbStatus status = bodyOf(index, picture.channels)(
      source.data(), {picture.width, picture.height}, picture.width * picture.channels,
      request.srcRoi, destination.plane.data(), destination.plane.step(), request.dstRoi,
      request.xFactor, request.yFactor, request.xShift, request.yShift, request.interpolation,
      scratch.data());
  scratch.expectKept();
  return status;
}

std::string describe(const Picture& picture, const Request& r) {
  char text[300];
  std::snprintf(text, sizeof text,
                "%d x %d x %d from (%d, %d, %d, %d) to (%d, %d, %d, %d) by %.17g, %.17g and %.17g, "
                "%.17g with 0x%x",
                picture.width, picture.height, picture.channels, r.srcRoi.x, r.srcRoi.y,
                r.srcRoi.width, r.srcRoi.height, r.dstRoi.x, r.dstRoi.y, r.dstRoi.width,
                r.dstRoi.height, r.xFactor, r.yFactor, r.xShift, r.yShift,
                static_cast<unsigned>(r.interpolation));
  return text;
}

// ---- What the model says of each byte of the destination

int limited(double value) {
  return static_cast<int>(std::min(std::max(value, 0.0), 255.0));
}

// Floats may put a value on the other side of a rounding's edge.
void expectRounded(int actual, double value, double half, int x, int y, int c) {
  constexpr double kFloats = 1e-3;
  EXPECT_GE(actual, limited(value + half - kFloats)) << "pixel " << x << ", " << y << ", " << c;
  EXPECT_LE(actual, limited(value + half + kFloats)) << "pixel " << x << ", " << y << ", " << c;
}

void expectCovered(const Model& model, const Destination& result, int x, int y, int c) {
  const int actual = result.at(x, y, c);
  if (model.method == orbInterNearest) {
    EXPECT_EQ(actual, model.nearest(x, y, c)) << "pixel " << x << ", " << y << ", " << c;
  } else if (model.method == orbInterLinear && !model.request.has(orbInterAntialias)) {
    EXPECT_EQ(actual, model.linear(x, y, c)) << "pixel " << x << ", " << y << ", " << c;
  } else {
    expectRounded(actual, model.value(x, y, c), 0.5, x, y, c);
  }
}

// A pixel of the rim, or one that no one may touch.
void expectBeside(const Model& model, int old, const Destination& result, int x, int y, int c) {
  const int insideX = std::min(std::max(x, model.xFirst), model.xEnd - 1);
  const int insideY = std::min(std::max(y, model.yFirst), model.yEnd - 1);
  const auto coverage = [](const orbtest::resize::Line& line, int i, int first, int end) {
    if (i >= first && i < end) return 1.0;
    return i == first - 1 ? line.rimBefore(first) : i == end ? line.rimBehind(end - 1) : 0.0;
  };
  const double covered = coverage(model.x, x, model.xFirst, model.xEnd) *
                         coverage(model.y, y, model.yFirst, model.yEnd);
  if (!model.request.hasRim() || covered == 0) {
    EXPECT_EQ(result.at(x, y, c), old) << "pixel " << x << ", " << y << " is touched";
    return;
  }
  const int inside = result.at(insideX, insideY, c);
  const double value =
      model.request.has(orbInterEdgeFade) ? inside * covered : old + (inside - old) * covered;
  EXPECT_EQ(result.at(x, y, c), limited(value + 0.5000001)) << "rim " << x << ", " << y;
}

void expectModel(int index, const Picture& picture, const Request& request, Random& random) {
  SCOPED_TRACE(describe(picture, request));
  const Model model(picture, request);
  Destination result(random, request.dstRoi.x + request.dstRoi.width + random.between(0, 3),
                     request.dstRoi.y + request.dstRoi.height + random.between(0, 3),
                     picture.channels);
  const std::vector<Orb8u> before = result.plane.samples();
  const OrbStatus status =
      run(index, picture, request, result, random.oneIn(2) ? Guard::kBefore : Guard::kBehind,
          random.between(0, 15));
  const bool ignores = request.has(orbInterAntialias) &&
                       (request.method() == orbInterNearest || request.method() == orbInterSuper);
  ASSERT_EQ(status, model.isEmpty() ? orbStsNoOperation
                    : ignores       ? orbStsAntialiasIgnored
                                    : orbStsNoErr);
  result.plane.expectOutsideUntouched();
  for (int y = 0; y < result.plane.height(); ++y) {
    for (int x = 0; x < result.plane.width() / picture.channels; ++x) {
      const bool isCovered =
          x >= model.xFirst && x < model.xEnd && y >= model.yFirst && y < model.yEnd;
      for (int c = 0; c < picture.channels; ++c) {
        const size_t place =
            static_cast<size_t>(y * result.plane.width() + x * picture.channels + c);
        if (model.isEmpty()) {
          EXPECT_EQ(result.at(x, y, c), before[place]) << "pixel " << x << ", " << y;
        } else if (isCovered) {
          expectCovered(model, result, x, y, c);
        } else {
          expectBeside(model, before[place], result, x, y, c);
        }
      }
      if (testing::Test::HasFailure()) return;
    }
  }
}

// ---- Requests

Request whole(const Picture& picture, double xFactor, double yFactor, int interpolation) {
  return {{0, 0, picture.width, picture.height},
          {0, 0, static_cast<int>(std::lround(picture.width * xFactor)),
           static_cast<int>(std::lround(picture.height * yFactor))},
          xFactor,
          yFactor,
          0,
          0,
          interpolation};
}

// Factors that are no quotients of small numbers, so that no place is at a sample but for shifts.
double anyFactor(Random& random, bool reduces) {
  const double factor = std::exp(random.between(-1200, reduces ? -1 : 900) / 500.0);
  return random.oneIn(5) ? 1.0 : random.oneIn(4) ? (reduces ? 0.5 : 2.0) : factor;
}

Request anyRequest(Random& random, const Picture& picture, int interpolation) {
  const bool reduces = (interpolation & 0xFF) == orbInterSuper;
  Request r = {};
  r.interpolation = interpolation;
  r.srcRoi.x = random.between(0, picture.width - 1);
  r.srcRoi.y = random.between(0, picture.height - 1);
  r.srcRoi.width = random.between(1, picture.width);
  r.srcRoi.height = random.between(1, picture.height);
  if (random.oneIn(3)) r.srcRoi = {0, 0, picture.width, picture.height};
  r.xFactor = anyFactor(random, reduces);
  r.yFactor = random.oneIn(3) ? r.xFactor : anyFactor(random, reduces);
  const int place = random.between(0, 5);
  r.dstRoi = {place, random.between(0, 5), random.between(1, 60), random.between(1, 60)};
  // So that the region's image is somewhere near the rectangle.
  r.xShift = r.dstRoi.x - r.srcRoi.x * r.xFactor + random.between(-3000, 8000) / 1024.0;
  r.yShift = r.dstRoi.y - r.srcRoi.y * r.yFactor + random.between(-3000, 8000) / 1024.0;
  return r;
}

void expectModelOfAny(const TestBuild& build, int channels, const std::vector<int>& interpolations,
                      int times) {
  Random random("resize " + std::to_string(channels) + " " + std::to_string(interpolations[0]));
  for (int i = 0; i < times; ++i) {
    for (const int interpolation : interpolations) {
      const Picture picture =
          anyPicture(random, random.between(1, 70), random.between(1, 70), channels);
      expectModel(build.index, picture, anyRequest(random, picture, interpolation), random);
      if (testing::Test::HasFailure()) return;
    }
  }
}

std::vector<int> methodsWith(int option) {
  std::vector<int> all;
  for (const int method : kMethods) all.push_back(method | option);
  return all;
}

#define RESIZE_MEANINGS(exportName, channels)                             \
  ORB_MEANING(exportName, IsTheModel) {                                   \
    expectModelOfAny(build, channels, methodsWith(0), 12);                \
  }                                                                       \
  ORB_MEANING(exportName, FadesItsRim) {                                  \
    expectModelOfAny(build, channels, methodsWith(orbInterEdgeFade), 5);  \
  }                                                                       \
  ORB_MEANING(exportName, BlendsItsRim) {                                 \
    expectModelOfAny(build, channels, methodsWith(orbInterEdgeBlend), 5); \
  }                                                                       \
  ORB_MEANING(exportName, Antialiases) {                                  \
    expectModelOfAny(build, channels, methodsWith(orbInterAntialias), 8); \
  }

RESIZE_MEANINGS(orbiResizeSqrPixel_8u_C1R, 1)
RESIZE_MEANINGS(orbiResizeSqrPixel_8u_C3R, 3)
RESIZE_MEANINGS(orbiResizeSqrPixel_8u_C4R, 4)

// ---- What is exact: dyadic weights, whose ties go up

// Twice as large, by the weights of a quarter and three quarters of the way.
void expectDoubled(int index, int method, const std::vector<double>& quarter) {
  Random random("doubled");
  const Picture picture = anyPicture(random, 31, 23, 1);
  const Request request = whole(picture, 2, 2, method);
  Destination result(random, 62, 46, 1);
  ASSERT_EQ(run(index, picture, request, result), orbStsNoErr);
  const int taps = static_cast<int>(quarter.size());
  for (int y = taps; y < 46 - taps; ++y) {
    for (int x = taps; x < 62 - taps; ++x) {
      double sum = 0;
      for (int j = 0; j < taps; ++j) {
        for (int i = 0; i < taps; ++i) {
          // Odd pixels lie a quarter behind a sample, even ones three quarters.
          const double across = x % 2 ? quarter[i] : quarter[taps - 1 - i];
          const double down = y % 2 ? quarter[j] : quarter[taps - 1 - j];
          sum +=
              across * down * picture.at((x + 1) / 2 - taps / 2 + i, (y + 1) / 2 - taps / 2 + j, 0);
        }
      }
      ASSERT_EQ(result.at(x, y, 0), limited(std::floor(sum + 0.5))) << x << ", " << y;
    }
  }
}

ORB_MEANING(orbiResizeSqrPixel_8u_C1R, RoundsTiesUp) {
  expectDoubled(build.index, orbInterLagrange, {-7 / 128., 105 / 128., 35 / 128., -5 / 128.});
  expectDoubled(build.index, orbInterCatmullRom, {-9 / 128., 111 / 128., 29 / 128., -3 / 128.});
}

// Means of whole blocks, as integers with ties up.
ORB_MEANING(orbiResizeSqrPixel_8u_C3R, MeansOfBlocksAreExact) {
  Random random("blocks");
  for (const int across : {1, 2, 3, 4, 7, 16}) {
    for (const int down : {1, 2, 4, 5, 8}) {
      const Picture picture = anyPicture(random, 5 * across, 4 * down, 3);
      const Request request = whole(picture, 1. / across, 1. / down, orbInterSuper);
      Destination result(random, 5, 4, 3);
      ASSERT_EQ(run(build.index, picture, request, result), orbStsNoErr);
      for (int i = 0; i < 5 * 4 * 3; ++i) {
        const int c = i % 3, x = i / 3 % 5, y = i / 15;
        int sum = 0;
        for (int k = 0; k < across * down; ++k) {
          sum += picture.at(x * across + k % across, y * down + k / across, c);
        }
        // Doubles at each step, where registers hold more too.
        const volatile double scale = request.xFactor * request.yFactor;
        const volatile double mean = sum * scale;
        const volatile double rounded = mean + 0.5;
        ASSERT_EQ(result.at(x, y, c), static_cast<int>(rounded)) << across << " x " << down;
      }
    }
  }
}

// Half the size, of a part that begins anywhere: rows of every length, and places that are odd.
ORB_MEANING(orbiResizeSqrPixel_8u_C1R, HalvesAreExact) {
  Random random("halves");
  for (int width = 2; width <= 150; width += random.between(1, 4)) {
    const int channels = kChannelCounts[random.between(0, 2)];
    const Picture picture = anyPicture(random, width, 7, channels);
    const int left = random.between(0, width - 2), count = (width - left) / 2;
    const Request request = {
        {left, 1, 2 * count, 4}, {0, 0, count, 2}, 0.5, 0.5, -left * 0.5, -0.5, orbInterSuper};
    Destination result(random, count, 2, channels);
    ASSERT_EQ(run(build.index, picture, request, result), orbStsNoErr);
    for (int i = 0; i < count * 2 * channels; ++i) {
      const int c = i % channels, x = i / channels % count, y = i / channels / count;
      int sum = 2;
      for (int k = 0; k < 4; ++k) {
        sum += picture.at(left + 2 * x + k % 2, 1 + 2 * y + k / 2, c);
      }
      ASSERT_EQ(result.at(x, y, c), sum / 4) << width << " from " << left;
    }
  }
}

ORB_MEANING(orbiResizeSqrPixel_8u_C4R, CopiesAtFactorsOfOne) {
  Random random("copies");
  const Picture picture = anyPicture(random, 37, 29, 4);
  for (const int method : kMethods) {
    if (method == orbInterBSpline || method == orbInterCubicB05C03) continue;  // they smooth
    Destination result(random, 37, 29, 4);
    ASSERT_EQ(run(build.index, picture, whole(picture, 1, 1, method), result), orbStsNoErr);
    EXPECT_EQ(result.plane.samples(), picture.bytes) << "method " << method;
  }
}

// ---- Which pixels

ORB_MEANING(orbiResizeSqrPixel_8u_C1R, WritesPixelsWhoseMiddleIsCovered) {
  struct Case {
    double shift;
    int option;
    int first, end;
  };
  // A row of four pixels at a factor of 1; the rim of an edge option is not counted.
  const Case cases[] = {{0, 0, 0, 4},
                        {0.5, 0, 0, 5},
                        {0.5000000002, 0, 1, 5},
                        {0.4999999998, 0, 0, 4},
                        {2.25, 0, 2, 6},
                        {0.5, orbInterEdgeFade, 1, 4},
                        {1, orbInterEdgeFade, 1, 5},
                        {1 + 5e-11, orbInterEdgeBlend, 1, 5},
                        {1 - 5e-11, orbInterEdgeBlend, 1, 5}};
  Random random("middles");
  const Picture picture(4, 1, 1);  // black
  for (const Case& each : cases) {
    Request request = {
        {0, 0, 4, 1}, {0, 0, 9, 1}, 1, 1, each.shift, 0, orbInterNearest | each.option};
    Destination result(random, 9, 1, 1);
    result.plane.fill([] { return Orb8u{200}; });
    ASSERT_EQ(run(build.index, picture, request, result), orbStsNoErr);
    for (int x = each.first; x < each.end; ++x) EXPECT_EQ(result.at(x, 0, 0), 0) << each.shift;
    const int beside = each.end < 9 ? result.at(each.end, 0, 0) : 200;
    if (each.option == 0) {
      EXPECT_EQ(beside, 200) << each.shift;
    }
  }
}

// Half of a pixel on the left, a quarter on the right, none above, three eighths below.
ORB_MEANING(orbiResizeSqrPixel_8u_C3R, RimsAreOfPartialCoverage) {
  Random random("rim");
  Picture picture(4, 4, 3);
  for (uint8_t& byte : picture.bytes) byte = 80;
  for (const int option : {orbInterEdgeFade, orbInterEdgeBlend}) {
    const Request request = {{0, 0, 4, 4},           {0, 0, 9, 9}, 1.1875, 0.84375, 1.5, 2,
                             orbInterLinear | option};
    Destination result(random, 9, 9, 3);
    result.plane.fill([] { return Orb8u{16}; });
    ASSERT_EQ(run(build.index, picture, request, result), orbStsNoErr);
    const int old = option == orbInterEdgeFade ? 0 : 16;
    const auto covered = [&](double share) {
      return static_cast<int>(old + (80 - old) * share + 0.5);
    };
    for (int c = 0; c < 3; ++c) {
      EXPECT_EQ(result.at(1, 3, c), covered(0.5));
      EXPECT_EQ(result.at(2, 3, c), 80);
      EXPECT_EQ(result.at(6, 3, c), covered(0.25));
      EXPECT_EQ(result.at(3, 1, c), 16);  // 2 is whole: no rim
      EXPECT_EQ(result.at(3, 5, c), covered(0.375));
      EXPECT_EQ(result.at(1, 5, c), covered(0.5 * 0.375));
      EXPECT_EQ(result.at(6, 5, c), covered(0.25 * 0.375));
      EXPECT_EQ(result.at(1, 1, c), 16);
    }
  }
}

ORB_MEANING(orbiResizeSqrPixel_8u_C1R, WholeLimitsHaveNoRim) {
  Random random("whole limits");
  const Picture picture = anyPicture(random, 8, 8, 1);
  Request request = {{0, 0, 8, 8}, {0, 0, 20, 20}, 2, 1.5, 1, 3, orbInterCatmullRom};
  Destination plain(random, 20, 20, 1), faded(random, 20, 20, 1);
  faded.plane.copySamples(plain.plane);
  ASSERT_EQ(run(build.index, picture, request, plain), orbStsNoErr);
  request.interpolation |= orbInterEdgeFade;
  ASSERT_EQ(run(build.index, picture, request, faded), orbStsNoErr);
  EXPECT_EQ(plain.plane.samples(), faded.plane.samples());
}

// Any part of an image resized by itself is that part of the whole: its samples come from there.
ORB_MEANING(orbiResizeSqrPixel_8u_C4R, PartsFitTogether) {
  Random random("parts");
  const Picture picture = anyPicture(random, 60, 40, 4);
  for (const double factor : {0.5, 1.0, 2.5}) {
    for (const int method : kMethods) {
      if (method == orbInterSuper && factor > 1) continue;
      Request request = whole(picture, factor, factor, method);
      Destination once(random, request.dstRoi.width, request.dstRoi.height, 4);
      Destination parts(random, request.dstRoi.width, request.dstRoi.height, 4);
      ASSERT_EQ(run(build.index, picture, request, once), orbStsNoErr);
      for (int part = 0; part < 4; ++part) {
        request.srcRoi = {part % 2 * 20, part / 2 * 12, part % 2 ? 40 : 20, part / 2 ? 28 : 12};
        ASSERT_EQ(run(build.index, picture, request, parts), orbStsNoErr);
      }
      EXPECT_EQ(parts.plane.samples(), once.plane.samples()) << method << " by " << factor;
    }
  }
}

ORB_MEANING(orbiResizeSqrPixel_8u_C3R, TakesNegativeSteps) {
  Random random("upside down");
  Picture picture = anyPicture(random, 23, 17, 3);
  Picture flipped = picture;
  for (int i = 0; i < 23 * 17 * 3; ++i) {
    flipped.bytes[static_cast<size_t>((16 - i / 69) * 69 + i % 69)] = picture.bytes[i];
  }
  for (const int method : kMethods) {
    const Request request = whole(picture, 0.8, 0.8, method);
    Destination upright(random, 18, 14, 3), upsideDown(random, 18, 14, 3);
    ASSERT_EQ(run(build.index, picture, request, upright), orbStsNoErr);
    ExactScratch scratch(scratchSizeOf(build.index, request, 3), 0);
    ASSERT_EQ(ORB(orbiResizeSqrPixel_8u_C3R)(&flipped.bytes[16 * 69], {23, 17}, -69, request.srcRoi,
                                             upsideDown.plane.data() + 13 * upsideDown.plane.step(),
                                             -upsideDown.plane.step(), request.dstRoi, 0.8, 0.8, 0,
                                             0, method, scratch.data()),
              orbStsNoErr);
    for (int y = 0; y < 14; ++y) {
      for (int x = 0; x < 18 * 3; ++x) {
        ASSERT_EQ(upsideDown.plane.at(x, y), upright.plane.at(x, 13 - y)) << method;
      }
    }
    upsideDown.plane.expectOutsideUntouched();
  }
}

// ---- Scratch that a small part of a large image has, whose samples come from far around it

void expectSmallPart(int index, int channels, int interpolation, double factor) {
  Random random("small part");
  const Picture picture = anyPicture(random, 211, 190, channels);
  for (const OrbiRect roi : {OrbiRect{100, 90, 1, 1}, OrbiRect{7, 80, 190, 1},
                             OrbiRect{120, 3, 2, 180}, OrbiRect{209, 188, 2, 2}}) {
    const double x = (roi.x + roi.width / 2.) * factor, y = (roi.y + roi.height / 2.) * factor;
    const OrbiRect dst = {1, 2, std::max(1, static_cast<int>(roi.width * factor + 0.5)),
                          std::max(1, static_cast<int>(roi.height * factor + 0.5))};
    const Request request = {
        roi,          dst, factor, factor, dst.x + dst.width / 2. - x, dst.y + dst.height / 2. - y,
        interpolation};
    expectModel(index, picture, request, random);
    if (testing::Test::HasFailure()) return;
  }
}

ORB_MEANING(orbiResizeGetBufSize, IsEnoughForASmallPartOfALargeImage) {
  for (const double factor : {0.9, 0.3, 0.05, 0.011}) {
    expectSmallPart(build.index, 1, orbInterSuper, factor);
    expectSmallPart(build.index, 3, orbInterSuper, factor);
  }
  for (const double factor : {0.9, 0.3, 0.05}) {
    expectSmallPart(build.index, 1, orbInterLanczos | orbInterAntialias, factor);
    expectSmallPart(build.index, 4, orbInterLinear | orbInterAntialias, factor);
    expectSmallPart(build.index, 3, orbInterBSpline | orbInterAntialias, factor);
  }
}

// A destination that is smaller than what the source covers, or larger than it needs to be.
ORB_MEANING(orbiResizeGetBufSize, IsEnoughForRectanglesThatDoNotMatch) {
  Random random("no match");
  for (const int channels : kChannelCounts) {
    for (const int method : kWidening) {
      const Picture picture = anyPicture(random, random.between(40, 70), 60, channels);
      const int interpolation = method | orbInterAntialias;
      for (const OrbiRect dst : {OrbiRect{0, 0, 2, 3}, OrbiRect{0, 0, 60, 55}}) {
        expectModel(build.index, picture,
                    {{0, 0, picture.width, 60}, dst, 0.1, 0.37, 0.25, -0.25, interpolation},
                    random);
      }
    }
  }
}

// ---- The reported size

struct SizeCall {
  OrbiRect src = {0, 0, 100, 70};
  OrbiRect dst = {0, 0, 50, 33};
  Orb32s channels = 3;
  Orb32s interpolation = orbInterLinear;
  bool hasSize = true;
};

ORB_MEANING(orbiResizeGetBufSize, IsThatOfTheTable) {
  struct Case {
    SizeCall call;
    int size;
  };
  const int antialias = orbInterAntialias;
  // (50 + 15) / 16 = 4 and (33 + 15) / 16 = 3: a base of 448.
  const Case cases[] = {
      {{{0, 0, 100, 70}, {0, 0, 50, 33}, 1, orbInterNearest}, 448 + 16},
      {{{0, 0, 100, 70}, {0, 0, 50, 33}, 4, orbInterNearest | orbInterEdgeFade}, 448 + 16},
      // 4 * (64 + 64); 8 * 50 + 508 = 908, so 768 for each channel
      {{{0, 0, 100, 70}, {0, 0, 50, 33}, 3, orbInterLinear}, 512 + 3 * 768 + 448 + 16},
      // 4 * (64 + 64); 4 * 50 + 127 = 327, so 320; 16 * 33 + 508 = 1036, so 1024;
      // (4 * 50 + 255) / 64 = 7
      {{{0, 0, 100, 70}, {0, 0, 50, 33}, 1, orbInterCatmullRom},
       512 + 4 * 320 + 1024 + 256 * 7 + 448 + 16},
      {{{9, 9, 1, 1}, {7, 7, 50, 33}, 4, orbInterLagrange | orbInterEdgeBlend},
       512 + 4 * 320 + 1024 + 4 * 256 * 7 + 448 + 16},
      // L: 6 * 50 + 191 = 491, so 480; (6 * 33 + 191) / 32 = 12
      {{{0, 0, 100, 70}, {0, 0, 50, 33}, 3, orbInterLanczos},
       512 + 4 * 480 + 128 * 12 + 4 * 3 * 480 + 448 + 16},
      // (100 + 15) / 16 = 7
      {{{0, 0, 100, 70}, {0, 0, 50, 33}, 3, orbInterSuper}, 3 * 128 * 7 + 16},
      // 150 -> 160; 50 * 70 * 3 = 10500 -> 10512; N = 2: 300 -> 304; M = 70 / 33 up, 3: 264 -> 272
      {{{0, 0, 100, 70}, {0, 0, 50, 33}, 3, orbInterLinear | antialias},
       4 * 160 + 8 * 10512 + 8 * 304 + 8 * 272 + 16},
      // 50 -> 64; 50 * 10 = 500 -> 512; N = 3 * 2: 14 * 50 = 700 -> 704; M = 3: 264 -> 272
      {{{0, 0, 100, 10}, {0, 0, 50, 33}, 1, orbInterLanczos | antialias},
       4 * 64 + 8 * 512 + 8 * 704 + 8 * 272 + 16},
  };
  for (const Case& each : cases) {
    const SizeCall& call = each.call;
    Orb32s size = -1;
    EXPECT_EQ(
        ORB(orbiResizeGetBufSize)(call.src, call.dst, call.channels, call.interpolation, &size),
        orbStsNoErr);
    EXPECT_EQ(size, each.size) << "interpolation " << call.interpolation;
  }
  for (const int method : {orbInterNearest, orbInterSuper}) {
    Orb32s size = -1, plain = -1;
    EXPECT_EQ(ORB(orbiResizeGetBufSize)({0, 0, 9, 9}, {0, 0, 5, 5}, 1, method, &plain),
              orbStsNoErr);
    EXPECT_EQ(ORB(orbiResizeGetBufSize)({0, 0, 9, 9}, {0, 0, 5, 5}, 1, method | antialias, &size),
              orbStsAntialiasIgnored);
    EXPECT_EQ(size, plain);
  }
}

ORB_MEANING(orbiResizeGetBufSize, ChecksItsArguments) {
  using Faults = std::vector<orbtest::Fault<SizeCall>>;
  const Faults faults = {
      {orbStsNullPtrErr, [](SizeCall& c) { c.hasSize = false; }},
      {orbStsSizeErr, [](SizeCall& c) { c.src.x = -1; }},
      {orbStsSizeErr, [](SizeCall& c) { c.src.height = 0; }},
      {orbStsSizeErr, [](SizeCall& c) { c.dst.y = -1; }},
      {orbStsSizeErr, [](SizeCall& c) { c.dst.width = 0; }},
      {orbStsChannelCountErr, [](SizeCall& c) { c.channels = 2; }},
      {orbStsInterpolationErr, [](SizeCall& c) { c.interpolation = 3; }},
  };
  Orb32s size = 12345;
  const auto call = [&](const SizeCall& c) {
    return ORB(orbiResizeGetBufSize)(c.src, c.dst, c.channels, c.interpolation,
                                     c.hasSize ? &size : nullptr);
  };
  orbtest::expectChecks(faults, SizeCall{}, call);
  for (const int bad : {0, 3, 9, 15, 17, 32, 0x60000002, orbInterEdgeFade | orbInterEdgeBlend | 2,
                        orbInterEdgeBlend | orbInterAntialias | 8, -1}) {
    SizeCall c;
    c.interpolation = bad;
    EXPECT_EQ(call(c), orbStsInterpolationErr) << bad;
  }
  for (const int channels : {-1, 0, 5}) {
    SizeCall c;
    c.channels = channels;
    EXPECT_EQ(call(c), orbStsChannelCountErr);
  }
  EXPECT_EQ(size, 12345);
}

ORB_MEANING(orbiResizeGetBufSize, RefusesSizesThatDoNotFit) {
  const OrbiRect all = {0x7FFFFFFF, 0x7FFFFFFF, 0x7FFFFFFF, 0x7FFFFFFF}, one = {0, 0, 1, 1};
  for (const int method : kMethods) {
    Orb32s size = -1;
    EXPECT_EQ(ORB(orbiResizeGetBufSize)(all, all, 4, method, &size), orbStsSizeErr) << method;
    EXPECT_EQ(size, 0);
  }
  for (const int method : kWidening) {
    for (const auto& [src, dst] : {std::pair{all, all}, {one, all}, {all, one}}) {
      Orb32s size = -1;
      EXPECT_EQ(ORB(orbiResizeGetBufSize)(src, dst, 4, method | orbInterAntialias, &size),
                orbStsSizeErr);
      EXPECT_EQ(size, 0);
    }
  }
  // 8 * 4 * w: 2^31 is refused, and 64 less is not.
  Orb32s size = -1;
  EXPECT_EQ(ORB(orbiResizeGetBufSize)({0, 0, 1 << 26, 1}, one, 4, orbInterSuper, &size),
            orbStsSizeErr);
  EXPECT_EQ(size, 0);
  EXPECT_EQ(ORB(orbiResizeGetBufSize)({0, 0, (1 << 26) - 16, 1}, one, 4, orbInterSuper, &size),
            orbStsNoErr);
  EXPECT_EQ(size, 0x7FFFFFFF - 512 + 1 + 16);
}

// ---- Checks of the resize

struct ResizeCall {
  bool hasSource = true, hasDestination = true, hasScratch = true;
  OrbiSize size = {16, 12};
  Request request = {{0, 0, 16, 12}, {0, 0, 8, 6}, 0.5, 0.5, 0, 0, orbInterSuper};
};

void expectResizeChecks(int index, int channels) {
  Random random("checks");
  const Picture picture = anyPicture(random, 16, 12, channels);
  Destination result(random, 8, 6, channels);
  std::vector<Orb8u> scratch(1 << 16);
  const auto call = [&](const ResizeCall& c) {
    const Request& r = c.request;
    return bodyOf(index, channels)(
        c.hasSource ? picture.bytes.data() : nullptr, c.size, 16 * channels, r.srcRoi,
        c.hasDestination ? result.plane.data() : nullptr, result.plane.step(), r.dstRoi, r.xFactor,
        r.yFactor, r.xShift, r.yShift, r.interpolation, c.hasScratch ? scratch.data() : nullptr);
  };
  using Faults = std::vector<orbtest::Fault<ResizeCall>>;
  const Faults faults = {
      {orbStsNullPtrErr, [](ResizeCall& c) { c.hasSource = false; }},
      {orbStsNullPtrErr, [](ResizeCall& c) { c.hasDestination = false; }},
      {orbStsNullPtrErr, [](ResizeCall& c) { c.hasScratch = false; }},
      {orbStsSizeErr, [](ResizeCall& c) { c.size.width = 0; }},
      {orbStsSizeErr, [](ResizeCall& c) { c.size.height = 0; }},
      {orbStsSizeErr, [](ResizeCall& c) { c.request.srcRoi.x = -1; }},
      {orbStsSizeErr, [](ResizeCall& c) { c.request.srcRoi.width = 0; }},
      {orbStsSizeErr, [](ResizeCall& c) { c.request.dstRoi.y = -1; }},
      {orbStsSizeErr, [](ResizeCall& c) { c.request.dstRoi.height = 0; }},
      {orbStsResizeFactorErr, [](ResizeCall& c) { c.request.xFactor = 0; }},
      {orbStsResizeFactorErr, [](ResizeCall& c) { c.request.yFactor = -1; }},
      {orbStsInterpolationErr, [](ResizeCall& c) { c.request.interpolation = 3; }},
      {orbStsInterpolationErr, [](ResizeCall& c) { c.request.interpolation = 0x60000008; }},
      {orbStsResizeFactorErr, [](ResizeCall& c) { c.request.yFactor = 1.5; }},
      {orbStsRoiOutside, [](ResizeCall& c) { c.request.srcRoi.x = 16; }},
      {orbStsRoiOutside, [](ResizeCall& c) { c.request.srcRoi.y = 12; }},
      {orbStsNoOperation, [](ResizeCall& c) { c.request.dstRoi.x = 100; }},
  };
  // Spoilt in their order, each leaves what an earlier one has spoilt.
  orbtest::expectChecks(faults, ResizeCall{}, call);
  result.plane.expectUntouched();

  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const double odd : {kNaN, kInfinity, -kInfinity, 1e300, -1e300}) {
    ResizeCall c;
    c.request.interpolation = orbInterLinear;
    c.request.xShift = odd;
    EXPECT_EQ(call(c), orbStsNoOperation) << "a shift of " << odd;
    if (odd != odd) {
      c = {};
      c.request.yFactor = odd;
      EXPECT_EQ(call(c), orbStsNoOperation) << "a factor of " << odd;
    }
  }
  result.plane.expectUntouched();
}

ORB_MEANING(orbiResizeSqrPixel_8u_C1R, ChecksItsArguments) {
  expectResizeChecks(build.index, 1);
}
ORB_MEANING(orbiResizeSqrPixel_8u_C3R, ChecksItsArguments) {
  expectResizeChecks(build.index, 3);
}
ORB_MEANING(orbiResizeSqrPixel_8u_C4R, ChecksItsArguments) {
  expectResizeChecks(build.index, 4);
}

ORB_MEANING(orbiResizeSqrPixel_8u_C1R, TakesSimplerMethodsForSmallImages) {
  struct Case {
    int width, height, method, instead;
  };
  const Case cases[] = {
      {5, 40, orbInterLanczos, orbInterLagrange}, {40, 5, orbInterLanczos, orbInterLagrange},
      {3, 40, orbInterLanczos, orbInterLinear},   {40, 3, orbInterCatmullRom, orbInterLinear},
      {3, 40, orbInterLagrange, orbInterLinear},  {40, 2, orbInterBSpline, orbInterLinear},
      {1, 1, orbInterCubicB05C03, orbInterLinear}};
  Random random("small");
  for (const Case& each : cases) {
    for (const int option : {0, static_cast<int>(orbInterAntialias)}) {
      const Picture picture = anyPicture(random, each.width, each.height, 1);
      Request request = whole(picture, 1.7, 0.9, each.method | option);
      Destination asked(random, 70, 70, 1), instead(random, 70, 70, 1);
      instead.plane.copySamples(asked.plane);
      ASSERT_EQ(run(build.index, picture, request, asked), orbStsNoErr);
      request.interpolation = each.instead | option;
      ASSERT_EQ(run(build.index, picture, request, instead), orbStsNoErr);
      EXPECT_EQ(asked.plane.samples(), instead.plane.samples()) << each.width << " " << each.method;
    }
  }
}

// Rectangles and numbers that no host should hand over: nothing is read or written out of place.
ORB_MEANING(orbiResizeSqrPixel_8u_C1R, SurvivesAbsurdNumbers) {
  Random random("absurd");
  const double values[] = {5e-324, 1e-310, 1e-300, 1e-12, 1e-9, 1e-3, 1, 1e3, 1e9, 1e300};
  for (int i = 0; i < 800; ++i) {
    const Picture picture = anyPicture(random, random.between(1, 8), random.between(1, 8), 1);
    Request r = anyRequest(random, picture, kMethods[random.between(0, 7)]);
    if (random.oneIn(3)) r.interpolation |= orbInterEdgeFade;
    r.dstRoi = {0, 0, random.between(1, 9), random.between(1, 9)};
    r.srcRoi.width = random.oneIn(2) ? 0x7FFFFFFF : 1;
    r.xFactor = values[random.between(0, 9)];
    r.yFactor = values[random.between(0, 9)];
    r.xShift = random.oneIn(2) ? 0.5 : random.between(-9, 9) * values[random.between(0, 9)];
    r.yShift = random.oneIn(2) ? 0.5 : 0;
    Destination result(random, r.dstRoi.width, r.dstRoi.height, 1);
    SCOPED_TRACE(describe(picture, r));
    const GuardedBytes source(picture.bytes, i % 2 ? Guard::kBefore : Guard::kBehind);
    // The size of a source beyond the image is not to be had for every method.
    OrbiRect sized = r.srcRoi;
    if (r.method() == orbInterSuper) sized.width = r.srcRoi.width = picture.width;
    Orb32s size = 0;
    ASSERT_EQ(ORB(orbiResizeGetBufSize)(sized, r.dstRoi, 1, r.interpolation, &size), orbStsNoErr);
    ExactScratch scratch(size, i % 16);
    const OrbStatus status = ORB(orbiResizeSqrPixel_8u_C1R)(
        source.data(), {picture.width, picture.height}, picture.width, r.srcRoi,
        result.plane.data(), result.plane.step(), r.dstRoi, r.xFactor, r.yFactor, r.xShift,
        r.yShift, r.interpolation, scratch.data());
    EXPECT_TRUE(status == orbStsNoErr || status == orbStsNoOperation ||
                (status == orbStsResizeFactorErr && r.method() == orbInterSuper))
        << status;
    scratch.expectKept();
    result.plane.expectOutsideUntouched();
    if (testing::Test::HasFailure()) return;
  }
}

ORB_MEANING(orbiResizeSqrPixel_8u_C1R, WidensAKernelToALimit) {
  Random random("widest");
  Picture picture(3, 3, 1);
  for (uint8_t& byte : picture.bytes) byte = 77;
  // All of a middle lies within the pixel, however small the image has become.
  const Request request = {
      {0, 0, 3, 3}, {0, 0, 1, 1}, 1e-300, 1e-3, 0.5, 0.4985, orbInterLinear | orbInterAntialias};
  Destination result(random, 1, 1, 1);
  ASSERT_EQ(run(build.index, picture, request, result), orbStsNoErr);
  EXPECT_EQ(result.at(0, 0, 0), 77);
}

// ---- Agreement: to the bit

void expectAgreement(const TestBuild& build, Random& random, int channels) {
  for (const int option :
       {0, static_cast<int>(orbInterAntialias), static_cast<int>(orbInterEdgeFade),
        static_cast<int>(orbInterEdgeBlend)}) {
    for (const int method : kMethods) {
      for (int i = 0; i < 5; ++i) {
        const Picture picture =
            anyPicture(random, random.between(1, 120), random.between(1, 40), channels);
        Request request = anyRequest(random, picture, method | option);
        request.dstRoi.width = random.between(1, 150);
        request.dstRoi.height = random.between(1, 30);
        const int width = request.dstRoi.x + request.dstRoi.width;
        const int height = request.dstRoi.y + request.dstRoi.height;
        Destination reference(random, width, height, channels);
        Destination result(random, width, height, channels);
        result.plane.copySamples(reference.plane);
        SCOPED_TRACE(describe(picture, request));
        const OrbStatus status = run(orb::kPx, picture, request, reference);
        EXPECT_EQ(run(build.index, picture, request, result, Guard::kBehind, i), status);
        EXPECT_TRUE(reference.plane.samples() == result.plane.samples());
        result.plane.expectOutsideUntouched();
        if (testing::Test::HasFailure()) return;
      }
    }
  }
}

ORB_AGREEMENT(orbiResizeSqrPixel_8u_C1R) {
  expectAgreement(build, random, 1);
}
ORB_AGREEMENT(orbiResizeSqrPixel_8u_C3R) {
  expectAgreement(build, random, 3);
}
ORB_AGREEMENT(orbiResizeSqrPixel_8u_C4R) {
  expectAgreement(build, random, 4);
}

ORB_AGREEMENT(orbiResizeGetBufSize) {
  for (int i = 0; i < 2000; ++i) {
    const auto side = [&] { return random.oneIn(3) ? random.extreme<Orb32s>() : i; };
    const OrbiRect src = {side(), side(), side(), side()}, dst = {side(), side(), side(), side()};
    const int channels = random.between(0, 5);
    const int interpolation = kMethods[random.between(0, 7)] | random.between(-4, 3) * (1 << 29);
    Orb32s expected = 7, actual = 7;
    EXPECT_EQ(ORB(orbiResizeGetBufSize)(src, dst, channels, interpolation, &actual),
              PX(orbiResizeGetBufSize)(src, dst, channels, interpolation, &expected));
    EXPECT_EQ(actual, expected);
  }
}

}  // namespace
