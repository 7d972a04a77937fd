// Resizing of 4:2:2 images beside a model in doubles.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include "tests/support/builds.h"
#include "tests/support/faults.h"
#include "tests/support/guarded.h"
#include "tests/support/no_memory.h"
#include "tests/support/plane.h"

namespace {

using orbtest::Guard;
using orbtest::GuardedBytes;
using orbtest::Random;
using orbtest::TestBuild;

constexpr int kMethods[] = {orbInterNearest, orbInterLinear, orbInterLagrange, orbInterSuper};

struct Request {
  OrbiSize size;
  OrbiRect roi;
  OrbiSize room;
  double xFactor, yFactor;
  int method;
};

std::string describe(const Request& r) {
  char text[200];
  std::snprintf(text, sizeof text, "%d x %d from (%d, %d, %d, %d) into %d x %d by %.17g, %.17g, %d",
                r.size.width, r.size.height, r.roi.x, r.roi.y, r.roi.width, r.roi.height,
                r.room.width, r.room.height, r.xFactor, r.yFactor, r.method);
  return text;
}

// ---- The model: one plane of samples at a time

// A direction of a plane: samples `origin` to the end of the region are scaled, those from 0 to
// `size` are there.
struct Line {
  int size, origin, length;
  double factor;

  double place(int i) const {
    const double resized = length * factor;
    return resized > 1 ? i * ((length - 1) / (resized - 1)) : 0;
  }
  int clamped(int sample) const { return std::min(std::max(origin + sample, 0), size - 1); }
};

struct Model {
  const std::vector<uint8_t>& bytes;
  Request request;
  int width, height;  // of the region
  int x = 0, y = 0;
  int columns, rows;  // of the result

  Model(const std::vector<uint8_t>& source, const Request& wanted)
      : bytes(source), request(wanted) {
    width = grown(wanted.roi.x, wanted.roi.width, wanted.size.width, x);
    height = grown(wanted.roi.y, wanted.roi.height, wanted.size.height, y);
    columns = lines(width * wanted.xFactor, wanted.room.width, 2);
    rows = lines(height * wanted.yFactor, wanted.room.height, 1);
  }

  // The value of a byte of the result, not rounded. Linear values are whole already.
  double value(int byte, int row) const {
    const bool isLuma = byte % 2 == 0;
    const Line across = isLuma ? Line{request.size.width, x, width, request.xFactor}
                               : Line{request.size.width / 2, x / 2, width / 2, request.xFactor};
    const Line down = {request.size.height, y, height, request.yFactor};
    const int column = isLuma ? byte / 2 : byte / 4;
    const auto sample = [&](int i, int j) -> double {
      const int place = isLuma ? 2 * across.clamped(i) : 4 * across.clamped(i) + byte % 4;
      return bytes[static_cast<size_t>(down.clamped(j)) * request.size.width * 2 + place];
    };
    switch (request.method) {
      case orbInterNearest:
        return sample(static_cast<int>(across.place(column) + 1e-7),
                      static_cast<int>(down.place(row) + 1e-7));
      case orbInterLinear:
        return linear(sample, across, column, down, row);
      case orbInterLagrange:
        return lagrange(sample, across.place(column), down.place(row));
      default:
        return mean(sample, across, column, down, row);
    }
  }

 private:
  static int grown(int position, int length, int size, int& first) {
    if (position < 0) length += -position;
    first = std::max(position, 0);
    return std::min(length, size - first);
  }
  static int lines(double resized, int room, int least) {
    if (resized >= room) return room;
    if (resized >= least) return static_cast<int>(resized);
    return resized + 1e-7 < least - 0.5 ? 0 : least;
  }

  template <class Sample>
  static double linear(Sample sample, const Line& across, int column, const Line& down, int row) {
    const double px = across.place(column), py = down.place(row);
    const int ix = static_cast<int>(px + 1e-7), iy = static_cast<int>(py + 1e-7);
    // The last sample gives all of its weight to itself, as does one beyond it.
    const auto weight = [](const Line& line, int i, double p) {
      return i + line.origin >= line.size - 1 ? 0 : static_cast<int>((p - i) * 16384 + 1e-7);
    };
    const int wx = weight(across, ix, px), wy = weight(down, iy, py);
    const auto filtered = [&](int j) {
      return (static_cast<int>((16384 - wx) * sample(ix, j) + wx * sample(ix + 1, j)) + 128) >> 8;
    };
    return ((16384 - wy) * filtered(iy) + wy * filtered(iy + 1) + 0x80000) >> 20;
  }

  template <class Sample>
  static double lagrange(Sample sample, double px, double py) {
    const int ix = static_cast<int>(px + 1e-7), iy = static_cast<int>(py + 1e-7);
    // The polynomial that is 1 at tap k of -1 to 2 and 0 at the others.
    const auto weight = [](int k, double f) {
      double product = 1;
      for (int other = -1; other <= 2; ++other) {
        if (other != k) product *= (f - other) / (k - other);
      }
      return product;
    };
    double sum = 0;
    for (int j = -1; j <= 2; ++j) {
      for (int i = -1; i <= 2; ++i) {
        sum += weight(i, px - ix) * weight(j, py - iy) * sample(ix + i, iy + j);
      }
    }
    return sum;
  }

  template <class Sample>
  static double mean(Sample sample, const Line& across, int column, const Line& down, int row) {
    const auto share = [](const Line& line, int box, int i) {
      const double side = 1 / line.factor;
      return std::max(0., std::min(i + 1., (box + 1) * side) - std::max<double>(i, box * side));
    };
    double sum = 0;
    for (int j = 0; j <= (row + 1) / down.factor; ++j) {
      for (int i = 0; i <= (column + 1) / across.factor; ++i) {
        sum += share(across, column, i) * share(down, row, j) * sample(i, j);
      }
    }
    return sum * across.factor * down.factor;
  }
};

std::vector<uint8_t> anyBytes(Random& random, OrbiSize size) {
  std::vector<uint8_t> bytes(static_cast<size_t>(size.width) * 2 * size.height);
  const bool extreme = random.oneIn(3);
  for (uint8_t& byte : bytes) byte = extreme ? random.extreme<uint8_t>() : random.any<uint8_t>();
  return bytes;
}

OrbStatus run(int index, const std::vector<uint8_t>& bytes, const Request& r,
              orbtest::Plane<Orb8u>& result, Guard guard = Guard::kBehind) {
  const TestBuild build = {index, ""};
  const GuardedBytes source(bytes, guard);
  return ORB(orbiResizeYUV422_8u_C2R)(source.data(), r.size, r.size.width * 2, r.roi, result.data(),
                                      result.step(), r.room, r.xFactor, r.yFactor, r.method);
}

void expectModel(int index, const Request& request, Random& random) {
  SCOPED_TRACE(describe(request));
  const std::vector<uint8_t> bytes = anyBytes(random, request.size);
  const Model model(bytes, request);
  orbtest::Plane<Orb8u> result(request.room.width * 2, request.room.height,
                               orbtest::Placement::any(random));
  result.fillAny(random);
  const OrbStatus status =
      run(index, bytes, request, result, random.oneIn(2) ? Guard::kBefore : Guard::kBehind);
  if (model.columns == 0 || model.rows == 0) {
    ASSERT_EQ(status, orbStsResizeTooSmallErr);
    result.expectUntouched();
    return;
  }
  ASSERT_EQ(status, orbStsNoErr);
  const int written = model.columns / 2 * 4;
  result.expectOutsideUntouched(written, model.rows);
  for (int y = 0; y < model.rows; ++y) {
    for (int x = 0; x < written; ++x) {
      const double value = model.value(x, y) + 0.5;
      const double limited = std::min(std::max(value, 0.), 255.);
      ASSERT_GE(result.at(x, y), static_cast<int>(limited - (limited > 1e-3 ? 1e-3 : 0)))
          << x << ", " << y;
      ASSERT_LE(result.at(x, y), static_cast<int>(limited + 1e-3)) << x << ", " << y;
    }
  }
}

Request anyRequest(Random& random, int method) {
  Request r = {};
  r.method = method;
  r.size = {2 * random.between(1, 35), random.between(1, 60)};
  r.roi = {2 * random.between(-3, r.size.width / 2 - 1), random.between(-5, r.size.height - 1),
           2 * random.between(1, 35), random.between(1, 70)};
  if (r.roi.x + r.roi.width < 1) r.roi.width = 2 - r.roi.x;
  if (r.roi.y + r.roi.height < 1) r.roi.height = 1 - r.roi.y;
  if (random.oneIn(3)) r.roi = {0, 0, r.size.width, r.size.height};
  r.room = {random.between(2, 90), random.between(1, 70)};
  const auto factor = [&] {
    if (random.oneIn(5)) return random.oneIn(2) ? 1.0 : 0.5;
    return std::exp(random.between(-1500, method == orbInterSuper ? -1 : 800) / 500.0);
  };
  r.xFactor = factor();
  r.yFactor = factor();
  return r;
}

ORB_MEANING(orbiResizeYUV422_8u_C2R, IsTheModel) {
  Random random("4:2:2");
  for (int i = 0; i < 60; ++i) {
    for (const int method : kMethods) {
      expectModel(build.index, anyRequest(random, method), random);
      if (testing::Test::HasFailure()) return;
    }
  }
}

// A result that is made two columns or one row wide is larger than its factors say.
ORB_MEANING(orbiResizeYUV422_8u_C2R, MakesTheSmallestResult) {
  Random random("smallest");
  for (const int method : kMethods) {
    for (const double wide : {1.5, 1.75, 1.999}) {
      for (const double high : {0.5, 0.7, 1.0, 1.2}) {
        const Request r = {{20, 18}, {2, 3, 16, 12}, {8, 8}, wide / 16, high / 12, method};
        expectModel(build.index, r, random);
      }
    }
    const Request cut = {{20, 18}, {2, 3, 16, 12}, {2, 1}, 0.5, 0.5, method};
    expectModel(build.index, cut, random);
  }
}

ORB_MEANING(orbiResizeYUV422_8u_C2R, CopiesAtFactorsOfOne) {
  Random random("copies");
  const OrbiSize size = {26, 17};
  const std::vector<uint8_t> bytes = anyBytes(random, size);
  for (const int method : kMethods) {
    orbtest::Plane<Orb8u> result(52, 17);
    ASSERT_EQ(run(build.index, bytes, {size, {0, 0, 26, 17}, size, 1, 1, method}, result),
              orbStsNoErr);
    EXPECT_EQ(result.samples(), bytes) << method;
  }
}

// Behind a negative position the region is larger, not smaller.
ORB_MEANING(orbiResizeYUV422_8u_C2R, GrowsBehindANegativePosition) {
  Random random("grows");
  const OrbiSize size = {26, 17};
  const std::vector<uint8_t> bytes = anyBytes(random, size);
  for (const int method : kMethods) {
    orbtest::Plane<Orb8u> asked(26, 9), instead(26, 9);
    ASSERT_EQ(run(build.index, bytes, {size, {-2, -3, 8, 6}, {13, 9}, 0.8, 0.9, method}, asked),
              orbStsNoErr);
    ASSERT_EQ(run(build.index, bytes, {size, {0, 0, 10, 9}, {13, 9}, 0.8, 0.9, method}, instead),
              orbStsNoErr);
    EXPECT_EQ(asked.samples(), instead.samples());
  }
}

// First and last samples stay where they are.
ORB_MEANING(orbiResizeYUV422_8u_C2R, KeepsTheCorners) {
  Random random("corners");
  const OrbiSize size = {16, 9};
  const std::vector<uint8_t> bytes = anyBytes(random, size);
  for (const int method : {orbInterNearest, orbInterLinear, orbInterLagrange}) {
    orbtest::Plane<Orb8u> result(2 * 40, 27);
    ASSERT_EQ(run(build.index, bytes, {size, {0, 0, 16, 9}, {40, 27}, 2.5, 3, method}, result),
              orbStsNoErr);
    for (const int row : {0, 26}) {
      const auto source = [&](int byte) { return bytes[static_cast<size_t>(row / 3 * 32 + byte)]; };
      EXPECT_EQ(result.at(0, row), source(0)) << method;
      EXPECT_EQ(result.at(1, row), source(1));
      EXPECT_EQ(result.at(3, row), source(3));
      EXPECT_EQ(result.at(77, row), source(29));
      EXPECT_EQ(result.at(78, row), source(30));
      EXPECT_EQ(result.at(79, row), source(31));
    }
  }
}

ORB_MEANING(orbiResizeYUV422_8u_C2R, TakesNegativeSteps) {
  Random random("upside down");
  const OrbiSize size = {14, 10};
  const std::vector<uint8_t> bytes = anyBytes(random, size);
  std::vector<uint8_t> flipped;
  for (int y = 9; y >= 0; --y) {
    flipped.insert(flipped.end(), bytes.begin() + 28 * y, bytes.begin() + 28 * (y + 1));
  }
  for (const int method : kMethods) {
    orbtest::Plane<Orb8u> upright(2 * 10, 7), upsideDown(2 * 10, 7);
    ASSERT_EQ(run(build.index, bytes, {size, {0, 0, 14, 10}, {10, 7}, 0.75, 0.75, method}, upright),
              orbStsNoErr);
    ASSERT_EQ(ORB(orbiResizeYUV422_8u_C2R)(&flipped[28 * 9], size, -28, {0, 0, 14, 10},
                                           upsideDown.data() + 6 * upsideDown.step(),
                                           -upsideDown.step(), {10, 7}, 0.75, 0.75, method),
              orbStsNoErr);
    for (int y = 0; y < 7; ++y) {
      for (int x = 0; x < 20; ++x) ASSERT_EQ(upsideDown.at(x, y), upright.at(x, 6 - y));
    }
  }
}

struct Call {
  bool hasSource = true, hasDestination = true;
  Request request = {{16, 12}, {0, 0, 16, 12}, {8, 6}, 0.5, 0.5, orbInterSuper};
};

ORB_MEANING(orbiResizeYUV422_8u_C2R, ChecksItsArguments) {
  Random random("checks");
  const std::vector<uint8_t> bytes = anyBytes(random, {16, 12});
  orbtest::Plane<Orb8u> result(16, 6);
  const auto call = [&](const Call& c) {
    const Request& r = c.request;
    return ORB(orbiResizeYUV422_8u_C2R)(c.hasSource ? bytes.data() : nullptr, r.size, 32, r.roi,
                                        c.hasDestination ? result.data() : nullptr, result.step(),
                                        r.room, r.xFactor, r.yFactor, r.method);
  };
  using Faults = std::vector<orbtest::Fault<Call>>;
  const Faults faults = {
      {orbStsNullPtrErr, [](Call& c) { c.hasSource = false; }},
      {orbStsNullPtrErr, [](Call& c) { c.hasDestination = false; }},
      {orbStsSizeErr, [](Call& c) { c.request.size.width = 0; }},
      {orbStsSizeErr, [](Call& c) { c.request.size.height = 0; }},
      {orbStsSizeErr, [](Call& c) { c.request.roi.width = 0; }},
      {orbStsSizeErr, [](Call& c) { c.request.roi.height = -1; }},
      {orbStsSizeErr, [](Call& c) { c.request.room.height = 0; }},
      {orbStsSizeErr, [](Call& c) { c.request.size.width = 15; }},
      {orbStsSizeErr, [](Call& c) { c.request.roi.width = 15; }},
      {orbStsSizeErr, [](Call& c) { c.request.roi.x = 3; }},
      {orbStsSizeErr, [](Call& c) { c.request.room.width = 1; }},
      {orbStsRoiOutside, [](Call& c) { c.request.roi.x = -16; }},
      {orbStsRoiOutside, [](Call& c) { c.request.roi.y = -12; }},
      {orbStsRoiOutside, [](Call& c) { c.request.roi.x = 16; }},
      {orbStsRoiOutside, [](Call& c) { c.request.roi.y = 12; }},
      {orbStsResizeFactorErr, [](Call& c) { c.request.xFactor = 0; }},
      {orbStsResizeFactorErr, [](Call& c) { c.request.yFactor = -0.5; }},
      {orbStsResizeFactorErr,
       [](Call& c) { c.request.yFactor = std::numeric_limits<double>::quiet_NaN(); }},
      {orbStsInterpolationErr, [](Call& c) { c.request.method = orbInterLanczos; }},
      {orbStsInterpolationErr,
       [](Call& c) { c.request.method = orbInterLinear | orbInterAntialias; }},
      {orbStsResizeTooSmallErr, [](Call& c) { c.request.xFactor = 1.49 / 16; }},
      {orbStsResizeTooSmallErr, [](Call& c) { c.request.yFactor = 0.49 / 12; }},
      {orbStsResizeFactorErr, [](Call& c) { c.request.xFactor = 2; }},
  };
  // A later fault at the same argument as an earlier one gives way to it.
  orbtest::expectChecks(faults, Call{}, call);
  result.expectUntouched();
}

// Sums of positions and sizes that 32 bits do not hold.
ORB_MEANING(orbiResizeYUV422_8u_C2R, SurvivesAbsurdNumbers) {
  constexpr int kMost = 0x7FFFFFFF, kLeast = -kMost - 1;
  Random random("absurd");
  const OrbiSize size = {8, 6};
  const std::vector<uint8_t> bytes = anyBytes(random, size);
  orbtest::Plane<Orb8u> result(8, 3);
  const auto status = [&](OrbiRect roi, double xFactor, double yFactor, int method) {
    return run(build.index, bytes, {size, roi, {4, 3}, xFactor, yFactor, method}, result);
  };
  for (const int method : kMethods) {
    EXPECT_EQ(status({2, 1, kMost - 1, kMost}, 0.5, 0.5, method), orbStsNoErr);
    EXPECT_EQ(status({kLeast, 0, kMost - 1, 6}, 0.5, 0.5, method), orbStsRoiOutside);
    EXPECT_EQ(status({-kMost + 1, -kMost + 1, kMost - 1, kMost}, 0.5, 0.5, method),
              orbStsRoiOutside);
    EXPECT_EQ(status({-kMost + 3, -kMost + 1, kMost - 1, kMost}, 0.5, 0.5, method), orbStsNoErr);
    EXPECT_EQ(status({0, 0, 8, 6}, 5e-324, 0.5, method), orbStsResizeTooSmallErr);
    const OrbStatus large = method == orbInterSuper ? orbStsResizeFactorErr : orbStsNoErr;
    EXPECT_EQ(status({0, 0, 8, 6}, 1e300, std::numeric_limits<double>::infinity(), method), large);
  }
  result.expectOutsideUntouched();
}

ORB_MEANING(orbiResizeYUV422_8u_C2R, SaysWhenThereIsNoMemory) {
  for (const int method : kMethods) {
    orbtest::expectWithoutMemory([&] {
      static Orb8u source[64 * 64 * 2], destination[64 * 64 * 2];
      const OrbStatus status = ORB(orbiResizeYUV422_8u_C2R)(
          source, {64, 64}, 128, {0, 0, 64, 64}, destination, 128, {64, 64}, 0.9, 0.9, method);
      return status == orbStsMemAllocErr && destination[0] == 0;
    });
  }
}

ORB_AGREEMENT(orbiResizeYUV422_8u_C2R) {
  for (int i = 0; i < 60; ++i) {
    for (const int method : kMethods) {
      Request request = anyRequest(random, method);
      request.size.width += 2 * random.between(0, 40);
      request.roi.width += 2 * random.between(0, 40);
      SCOPED_TRACE(describe(request));
      const std::vector<uint8_t> bytes = anyBytes(random, request.size);
      orbtest::Plane<Orb8u> reference(request.room.width * 2, request.room.height);
      orbtest::Plane<Orb8u> result(request.room.width * 2, request.room.height,
                                   orbtest::Placement::any(random));
      const OrbStatus status = run(orb::kPx, bytes, request, reference);
      result.copySamples(reference);
      EXPECT_EQ(run(build.index, bytes, request, result), status);
      EXPECT_TRUE(result.samples() == reference.samples());
      result.expectOutsideUntouched();
    }
  }
}

}  // namespace
