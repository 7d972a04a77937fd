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
    plane.fillAny(random);
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

}  // namespace
