// The photo core transform (ITU-T T.832) against its steps, taken one by one in wide numbers.
#include <cmath>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "tests/support/builds.h"
#include "tests/support/faults.h"
#include "tests/support/plane.h"

namespace {

using orbtest::expectChecks;
using orbtest::Fault;
using orbtest::Placement;
using orbtest::Plane;
using orbtest::Random;
using orbtest::TestBuild;

// ---- The model

// What a step computes of 16 bits: numbers that do not end. Of 32 bits all arithmetic wraps. Of
// floats it is doubles.
template <class T>
using Wide = std::conditional_t<std::is_integral_v<T>, int64_t, double>;

// (x + rounding) / divisor: downwards of whole numbers, exact and without rounding of others.
template <class T>
Wide<T> divided(Wide<T> x, int rounding, int divisor) {
  if constexpr (std::is_integral_v<T>) {
    const int64_t sum = x + rounding;
    const int64_t kept = sizeof(T) == 4 ? static_cast<T>(static_cast<uint64_t>(sum)) : sum;
    return kept / divisor - (kept % divisor < 0 ? 1 : 0);
  } else {
    return x / divisor;
  }
}

// Where a step stores a value: whole numbers wrap, others are rounded.
template <class T>
struct Cell {
  T stored = 0;
  operator Wide<T>() const { return stored; }
  Cell& operator=(Wide<T> value) {
    if constexpr (std::is_integral_v<T>) {
      stored = static_cast<T>(static_cast<uint64_t>(value));
    } else {
      stored = static_cast<T>(value);
    }
    return *this;
  }
};

template <class T>
struct BlockModel {
  Cell<T> cells[4][4];

  using W = Wide<T>;
  struct Four {
    Cell<T>&a, &b, &c, &d;
  };
  struct Place {
    int row, column;
  };
  Cell<T>& at(Place place) { return cells[place.row][place.column]; }
  Four four(Place a, Place b, Place c, Place d) { return {at(a), at(b), at(c), at(d)}; }

  static void h(Four v, int rounding) {
    auto [a, b, c, d] = v;
    a = W{a} + W{d};
    b = W{b} - W{c};
    Cell<T> t;
    t = divided<T>(W{a} - W{b}, rounding, 2) - W{d};
    b = W{b} + W{t};
    d = W{d} - W{c} + W{t};
    a = W{a} - W{d};
    c = W{t};
  }
  static void oForward(Four v) {
    auto [a, b, c, d] = v;
    b = W{b} - W{c};
    a = W{a} + W{d};
    c = W{c} + divided<T>(W{b}, 1, 2);
    d = divided<T>(W{a}, 1, 2) - W{d};
    b = W{b} - divided<T>(3 * W{a}, 4, 8);
    a = W{a} + divided<T>(3 * W{b}, 4, 8);
    d = W{d} - divided<T>(3 * W{c}, 4, 8);
    c = W{c} + divided<T>(3 * W{d}, 4, 8);
    d = W{d} + divided<T>(W{b}, 0, 2);
    c = W{c} - divided<T>(W{a}, 1, 2);
    b = W{b} - W{d};
    a = W{a} + W{c};
  }
  static void oInverse(Four v) {
    auto [a, b, c, d] = v;
    b = W{b} + W{d};
    a = W{a} - W{c};
    d = W{d} - divided<T>(W{b}, 0, 2);
    c = W{c} + divided<T>(W{a}, 1, 2);
    a = W{a} - divided<T>(3 * W{b}, 4, 8);
    b = W{b} + divided<T>(3 * W{a}, 4, 8);
    c = W{c} - divided<T>(3 * W{d}, 4, 8);
    d = W{d} + divided<T>(3 * W{c}, 4, 8);
    c = W{c} - divided<T>(W{b}, 1, 2);
    d = divided<T>(W{a}, 1, 2) - W{d};
    b = W{b} + W{c};
    a = W{a} - W{d};
  }
  static void dForward(Four v) {
    auto [a, b, c, d] = v;
    Cell<T> t, u, x;
    b = -W{b};
    c = -W{c};
    d = W{d} + W{a};
    c = W{c} - W{b};
    t = divided<T>(W{d}, 0, 2);
    a = W{a} - W{t};
    u = divided<T>(W{c}, 0, 2);
    x = W{b} + W{u};
    a = W{a} + divided<T>(3 * W{x}, 4, 8);
    x = W{x} - divided<T>(3 * W{a}, 3, 4);
    b = W{x} - W{u};
    a = W{a} + divided<T>(3 * W{x}, 3, 8) + W{t};
    c = W{c} + W{b};
    d = W{d} - W{a};
  }
  static void dInverse(Four v) {
    auto [a, b, c, d] = v;
    Cell<T> t, u, x;
    d = W{d} + W{a};
    c = W{c} - W{b};
    t = divided<T>(W{d}, 0, 2);
    a = W{a} - W{t};
    u = divided<T>(W{c}, 0, 2);
    x = W{b} + W{u};
    a = W{a} - divided<T>(3 * W{x}, 3, 8);
    x = W{x} + divided<T>(3 * W{a}, 3, 4);
    b = W{x} - W{u};
    a = W{a} - divided<T>(3 * W{x}, 4, 8) + W{t};
    c = W{c} + W{b};
    d = W{d} - W{a};
    b = -W{b};
    c = -W{c};
  }

  void forward() {
    h(four({0, 0}, {0, 3}, {3, 0}, {3, 3}), 0);
    h(four({0, 1}, {0, 2}, {3, 1}, {3, 2}), 0);
    h(four({1, 0}, {1, 3}, {2, 0}, {2, 3}), 0);
    h(four({1, 1}, {1, 2}, {2, 1}, {2, 2}), 0);
    h(four({0, 0}, {0, 1}, {1, 0}, {1, 1}), 1);
    oForward(four({0, 2}, {0, 3}, {1, 2}, {1, 3}));
    oForward(four({2, 0}, {3, 0}, {2, 1}, {3, 1}));
    dForward(four({2, 2}, {2, 3}, {3, 2}, {3, 3}));
  }
  void inverse() {
    oInverse(four({0, 2}, {0, 3}, {1, 2}, {1, 3}));
    oInverse(four({2, 0}, {3, 0}, {2, 1}, {3, 1}));
    dInverse(four({2, 2}, {2, 3}, {3, 2}, {3, 3}));
    h(four({0, 0}, {0, 1}, {1, 0}, {1, 1}), 1);
    h(four({0, 0}, {0, 3}, {3, 0}, {3, 3}), 0);
    h(four({0, 1}, {0, 2}, {3, 1}, {3, 2}), 0);
    h(four({1, 0}, {1, 3}, {2, 0}, {2, 3}), 0);
    h(four({1, 1}, {1, 2}, {2, 1}, {2, 2}), 0);
  }
};

template <class T>
std::vector<T> transformed(const Plane<T>& plane, bool isForward) {
  Plane<T> result(plane.width(), plane.height());
  for (int y = 0; y < plane.height(); y += 4) {
    for (int x = 0; x < plane.width(); x += 4) {
      BlockModel<T> block;
      for (int i = 0; i < 16; ++i)
        block.cells[i / 4][i % 4].stored = plane.at(x + i % 4, y + i / 4);
      isForward ? block.forward() : block.inverse();
      for (int i = 0; i < 16; ++i)
        result.set(x + i % 4, y + i / 4, block.cells[i / 4][i % 4].stored);
    }
  }
  return result.samples();
}

// ---- Samples

template <class T>
T anySample(Random& random, int bits) {
  if constexpr (std::is_integral_v<T>) {
    return static_cast<T>(random.any<T>() >> (static_cast<int>(8 * sizeof(T)) - bits));
  } else {
    return std::ldexp(static_cast<T>(random.between(-(1 << 24), 1 << 24)), bits - 24);
  }
}

template <class T>
void fillSamples(Plane<T>& plane, Random& random) {
  const int kind = random.between(0, 3);
  const int bits = random.between(2, static_cast<int>(8 * sizeof(T)));
  plane.fill([&] {
    if constexpr (std::is_integral_v<T>) {
      if (kind == 0) return random.extreme<T>();
    } else {
      // Of sizes that are far apart, so that steps have to round.
      if (kind == 0) return anySample<T>(random, random.between(-30, 60));
    }
    return anySample<T>(random, bits);
  });
}

template <class T>
testing::AssertionResult same(const std::vector<T>& actual, const std::vector<T>& expected) {
  if (actual == expected) return testing::AssertionSuccess();
  for (size_t i = 0;; ++i) {
    if (actual[i] != expected[i]) {
      return testing::AssertionFailure()
             << actual[i] << " and not " << expected[i] << " in sample " << i;
    }
  }
}

// ---- Shapes: an image of any size, or a macroblock's plane

struct Image {
  static OrbiSize size(Random& random) {
    return {4 * random.between(1, 24), 4 * random.between(1, 5)};
  }
  template <class T, class Function>
  static OrbStatus run(Function* function, Plane<T>& plane) {
    return function(plane.data(), static_cast<Orb32u>(plane.step()), plane.width(), plane.height());
  }
  template <class T, class Function>
  static void expectChecks(Function* function) {
    struct Call {
      T* pSrcDst;
      Orb32u step;
      Orb32s width, height;
    };
    constexpr Orb32u kSize = sizeof(T);
    Plane<T> plane(8, 8);
    plane.fill([] { return T{5}; });
    const auto run = [&](const Call& c) { return function(c.pSrcDst, c.step, c.width, c.height); };
    const Call good = {plane.data(), 8 * kSize, 8, 8};
    orbtest::expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.pSrcDst = nullptr; }},
                                 {orbStsSizeErr, [](Call& c) { c.width = 0; }},
                                 {orbStsSizeErr, [](Call& c) { c.height = 0; }},
                                 {orbStsSizeErr, [](Call& c) { c.width = INT32_MIN; }},
                                 {orbStsSizeErr, [](Call& c) { c.height = -4; }},
                                 {orbStsStepErr, [](Call& c) { c.step = 4 * kSize - 1; }},
                                 {orbStsSizeErr, [](Call& c) { c.height = 6; }}},
                                good, run);
    // A width that is no multiple of 4 comes up behind the step; a row of more bytes than a step
    // can have is wider than any.
    EXPECT_EQ(run({plane.data(), 6 * kSize - 1, 6, 8}), orbStsStepErr);
    EXPECT_EQ(run({plane.data(), 6 * kSize, 6, 8}), orbStsSizeErr);
    EXPECT_EQ(run({plane.data(), 4, 0x40000000, 4}), orbStsStepErr);
    if (kSize == 4) {
      EXPECT_EQ(run({plane.data(), ~0u, 0x40000000, 6}), orbStsStepErr);
    }
    plane.expectUntouched();
  }
};

template <int kWidth, int kHeight>
struct Macroblock {
  static OrbiSize size(Random&) { return {kWidth, kHeight}; }
  template <class T, class Function>
  static OrbStatus run(Function* function, Plane<T>& plane) {
    return function(plane.data(), static_cast<Orb32u>(plane.step()));
  }
  template <class T, class Function>
  static void expectChecks(Function* function) {
    constexpr Orb32u kRow = kWidth * sizeof(T);
    Plane<T> plane(kWidth, kHeight);
    EXPECT_EQ(function(nullptr, kRow - 1), orbStsNullPtrErr);
    EXPECT_EQ(function(plane.data(), kRow - 1), orbStsStepErr);
    EXPECT_EQ(function(plane.data(), 0), orbStsStepErr);
    plane.expectUntouched();
    EXPECT_EQ(function(plane.data(), kRow), orbStsNoErr);
  }
};

// ---- Tests

template <class Shape, class T>
Plane<T> anyPlane(Random& random) {
  const OrbiSize size = Shape::size(random);
  Plane<T> plane(size.width, size.height, Placement::any(random));
  fillSamples(plane, random);
  return plane;
}

template <class Shape, class T, class Function>
void expectTakesTheSteps(const char* name, Function* function, bool isForward) {
  Random random(name);
  for (int round = 0; round < 40; ++round) {
    Plane<T> plane = anyPlane<Shape, T>(random);
    const std::vector<T> expected = transformed(plane, isForward);
    ASSERT_EQ(Shape::template run<T>(function, plane), orbStsNoErr);
    ASSERT_TRUE(same(plane.samples(), expected)) << "round " << round;
    plane.expectOutsideUntouched();
  }
}

// Whole numbers come back exactly where nothing wraps, others almost.
template <class Shape, class T, class Forward, class Inverse>
void expectComesBack(const char* name, Forward* forward, Inverse* inverse) {
  Random random(name);
  constexpr int kBits = sizeof(T) == 2 ? 13 : 24;
  for (int round = 0; round < 20; ++round) {
    const OrbiSize size = Shape::size(random);
    Plane<T> plane(size.width, size.height, Placement::any(random));
    plane.fill([&] { return anySample<T>(random, kBits); });
    const std::vector<T> before = plane.samples();
    ASSERT_EQ(Shape::template run<T>(forward, plane), orbStsNoErr);
    ASSERT_EQ(Shape::template run<T>(inverse, plane), orbStsNoErr);
    const std::vector<T> after = plane.samples();
    for (size_t i = 0; i < before.size(); ++i) {
      if constexpr (std::is_integral_v<T>) {
        ASSERT_EQ(after[i], before[i]) << i;
      } else {
        ASSERT_NEAR(after[i], before[i], std::ldexp(1.0, kBits - 21)) << i;
      }
    }
  }
}

template <class T, class Forward>
void expectConstantIsDC(Forward* forward) {
  for (const int value : {0, 1, -1, 100, -777, 4095}) {
    Plane<T> plane(8, 4);
    plane.fill([&] { return static_cast<T>(value); });
    ASSERT_EQ(forward(plane.data(), static_cast<Orb32u>(plane.step()), 8, 4), orbStsNoErr);
    for (int i = 0; i < 32; ++i) {
      const bool isDC = i % 4 == 0 && i < 8;
      EXPECT_EQ(plane.at(i % 8, i / 8), static_cast<T>(isDC ? 4 * value : 0)) << value << " " << i;
    }
  }
}

template <class Shape, class T, class Function>
void expectAgreement(Random& random, Function* mine, Function* px) {
  for (int round = 0; round < 60; ++round) {
    Plane<T> plane = anyPlane<Shape, T>(random);
    Plane<T> expected(plane.width(), plane.height());
    expected.copySamples(plane);
    Shape::template run<T>(mine, plane);
    Shape::template run<T>(px, expected);
    ASSERT_TRUE(same(plane.samples(), expected.samples()));
    plane.expectOutsideUntouched();
  }
}

#define TRANSFORM_TESTS(forward, inverse, T, ...)                          \
  ORB_MEANING(forward, TakesTheSteps) {                                    \
    expectTakesTheSteps<__VA_ARGS__, T>(#forward, ORB(forward), true);     \
  }                                                                        \
  ORB_MEANING(inverse, TakesTheSteps) {                                    \
    expectTakesTheSteps<__VA_ARGS__, T>(#inverse, ORB(inverse), false);    \
  }                                                                        \
  ORB_MEANING(inverse, ComesBack) {                                        \
    expectComesBack<__VA_ARGS__, T>(#inverse, ORB(forward), ORB(inverse)); \
  }                                                                        \
  ORB_MEANING(forward, ChecksInOrder) {                                    \
    __VA_ARGS__::expectChecks<T>(ORB(forward));                            \
  }                                                                        \
  ORB_MEANING(inverse, ChecksInOrder) {                                    \
    __VA_ARGS__::expectChecks<T>(ORB(inverse));                            \
  }                                                                        \
  ORB_AGREEMENT(forward) {                                                 \
    expectAgreement<__VA_ARGS__, T>(random, ORB(forward), PX(forward));    \
  }                                                                        \
  ORB_AGREEMENT(inverse) {                                                 \
    expectAgreement<__VA_ARGS__, T>(random, ORB(inverse), PX(inverse));    \
  }

#define TRANSFORM_TESTS_OF(type, T)                                                              \
  TRANSFORM_TESTS(orbiPCTFwd_JPEGXR_##type##_C1IR, orbiPCTInv_JPEGXR_##type##_C1IR, T, Image)    \
  TRANSFORM_TESTS(orbiPCTFwd8x8_JPEGXR_##type##_C1IR, orbiPCTInv8x8_JPEGXR_##type##_C1IR, T,     \
                  Macroblock<8, 8>)                                                              \
  TRANSFORM_TESTS(orbiPCTFwd8x16_JPEGXR_##type##_C1IR, orbiPCTInv8x16_JPEGXR_##type##_C1IR, T,   \
                  Macroblock<8, 16>)                                                             \
  TRANSFORM_TESTS(orbiPCTFwd16x16_JPEGXR_##type##_C1IR, orbiPCTInv16x16_JPEGXR_##type##_C1IR, T, \
                  Macroblock<16, 16>)                                                            \
  ORB_MEANING(orbiPCTFwd_JPEGXR_##type##_C1IR, AConstantIsItsDC) {                               \
    expectConstantIsDC<T>(ORB(orbiPCTFwd_JPEGXR_##type##_C1IR));                                 \
  }

TRANSFORM_TESTS_OF(16s, Orb16s)
TRANSFORM_TESTS_OF(32s, Orb32s)
TRANSFORM_TESTS_OF(32f, Orb32f)

}  // namespace
