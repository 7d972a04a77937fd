// Component transforms: RCT and ICT between interleaved pixels and planes, and in place.
#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <type_traits>
#include <vector>

#include "tests/jpeg2k/floats.h"
#include "tests/support/builds.h"
#include "tests/support/faults.h"
#include "tests/support/plane.h"

namespace {

using orbtest::Fault;
using orbtest::Placement;
using orbtest::Plane;
using orbtest::Random;

constexpr int kWidths[] = {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 33, 64, 65};
constexpr int kHeight = 3;

// ---- What the transforms are

template <class T>
using Triple = std::array<T, 3>;

// Of an exact integer, what is left in the width of a sample.
template <class T>
T cut(int64_t value) {
  return static_cast<T>(static_cast<uint64_t>(value));
}
int64_t cut32(int64_t value) {
  return cut<int32_t>(value);
}
int64_t floorDiv(int64_t value, int64_t divisor) {
  return value >= 0 ? value / divisor : -((-value + divisor - 1) / divisor);
}

template <class T>
Triple<T> rctForward(Triple<T> p) {
  const int64_t r = p[0], g = p[1], b = p[2];
  return {cut<T>(floorDiv(cut32(r + 2 * g + b), 4)), cut<T>(b - g), cut<T>(r - g)};
}
template <class T>
Triple<T> rctInverse(Triple<T> p) {
  const int64_t y = p[0], u = p[1], v = p[2];
  const int64_t g = cut32(y - floorDiv(cut32(u + v), 4));
  return {cut<T>(v + g), cut<T>(g), cut<T>(u + g)};
}

int64_t rounded14(int64_t sum) {
  return floorDiv(cut32(sum + 8192), 16384);
}
template <class T>
Triple<T> ictForward(Triple<T> p) {
  const int64_t r = p[0], g = p[1], b = p[2];
  return {cut<T>(rounded14(4899 * r + 9617 * g + 1868 * b)),
          cut<T>(rounded14(-2765 * r - 5427 * g + 8192 * b)),
          cut<T>(rounded14(8192 * r - 6860 * g - 1332 * b))};
}
template <class T>
Triple<T> ictInverse(Triple<T> p) {
  const int64_t y = p[0], cb = p[1], cr = p[2];
  return {cut<T>(rounded14(22970 * cr) + y), cut<T>(rounded14(-5638 * cb - 11700 * cr) + y),
          cut<T>(rounded14(29032 * cb) + y)};
}

long double single(float value) {
  return value;
}
Triple<Orb32f> rounded(long double a, long double b, long double c) {
  return {static_cast<Orb32f>(a), static_cast<Orb32f>(b), static_cast<Orb32f>(c)};
}
Triple<Orb32f> ictForwardF(Triple<Orb32f> p) {
  const long double r = p[0], g = p[1], b = p[2];
  return rounded(single(0.299f) * r + single(0.587f) * g + single(0.114f) * b,
                 0.5L * b - single(0.33126f) * g - single(0.16875f) * r,
                 0.5L * r - single(0.41869f) * g - single(0.08131f) * b);
}
Triple<Orb32f> ictInverseF(Triple<Orb32f> p) {
  const long double y = p[0], cb = p[1], cr = p[2];
  return rounded(y + single(1.402f) * cr, y - single(0.34413f) * cb - single(0.71414f) * cr,
                 y + single(1.772f) * cb);
}

// ---- Harness

template <class T>
T anySample(Random& random) {
  if constexpr (std::is_floating_point_v<T>) {
    return orbtest::anyFloat(random);
  } else {
    switch (random.between(0, 2)) {
      case 0:
        return static_cast<T>(random.between(-255, 255));
      case 1:
        return random.extreme<T>();
      default:
        return random.any<T>();
    }
  }
}

// Floats may differ in their last bit from the rounded exact result.
template <class T>
testing::AssertionResult isResult(T actual, T expected, const Triple<T>& of) {
  if constexpr (std::is_floating_point_v<T>) {
    // Where terms cancel each other, doubles leave an error of theirs.
    double scale = 0;
    for (const T value : of) scale = std::max(scale, std::fabs(static_cast<double>(value)));
    return orbtest::near(actual, expected, 1, scale * 1e-8);
  } else if (actual == expected) {
    return testing::AssertionSuccess();
  } else {
    return testing::AssertionFailure() << actual << " and not " << expected;
  }
}

template <class T>
using Model = std::function<Triple<T>(Triple<T>)>;

// Three planes of the same step at places of their own.
template <class T>
struct Planes {
  std::vector<Plane<T>> planes;

  Planes(int width, int height, Random& random) {
    const int padding = random.between(0, 9);
    for (int c = 0; c < 3; ++c) {
      planes.emplace_back(width, height, Placement{padding, random.between(0, 15)});
    }
  }
  Planes(const Planes& from, Random&) {
    for (const Plane<T>& plane : from.planes) planes.push_back(copyOf(plane));
  }
  static Plane<T> copyOf(const Plane<T>& plane) {
    Plane<T> copy(plane.width(), plane.height(),
                  {plane.step() - plane.width() * static_cast<int>(sizeof(T)), 0});
    copy.copySamples(plane);
    return copy;
  }
  void fill(Random& random) {
    for (Plane<T>& plane : planes) plane.fill([&] { return anySample<T>(random); });
  }
  Triple<T*> pointers() { return {planes[0].data(), planes[1].data(), planes[2].data()}; }
  Triple<T> at(int x, int y) const {
    return {planes[0].at(x, y), planes[1].at(x, y), planes[2].at(x, y)};
  }
  Orb32s step() const { return planes[0].step(); }
};

template <class T>
Triple<T> pixelAt(const Plane<T>& plane, int x, int y) {
  return {plane.at(3 * x, y), plane.at(3 * x + 1, y), plane.at(3 * x + 2, y)};
}

template <class T, class Function>
void expectToPlanes(const char* name, Function* function, const Model<T>& model) {
  Random random(name);
  for (const int width : kWidths) {
    Plane<T> src(3 * width, kHeight, Placement::any(random));
    src.fill([&] { return anySample<T>(random); });
    Planes<T> dst(width, kHeight, random);
    ASSERT_EQ(function(src.data(), src.step(), dst.pointers().data(), dst.step(), {width, kHeight}),
              orbStsNoErr);
    for (int y = 0; y < kHeight; ++y) {
      for (int x = 0; x < width; ++x) {
        const Triple<T> from = pixelAt(src, x, y);
        const Triple<T> expected = model(from);
        for (int c = 0; c < 3; ++c) {
          ASSERT_TRUE(isResult(dst.at(x, y)[c], expected[c], from)) << "component " << c;
        }
      }
    }
    for (const Plane<T>& plane : dst.planes) plane.expectOutsideUntouched();
    src.expectUntouched();
  }
}

template <class T, class Function>
void expectToPixels(const char* name, Function* function, const Model<T>& model) {
  Random random(name);
  for (const int width : kWidths) {
    Planes<T> src(width, kHeight, random);
    src.fill(random);
    Plane<T> dst(3 * width, kHeight, Placement::any(random));
    ASSERT_EQ(function(src.pointers().data(), src.step(), dst.data(), dst.step(), {width, kHeight}),
              orbStsNoErr);
    for (int y = 0; y < kHeight; ++y) {
      for (int x = 0; x < width; ++x) {
        const Triple<T> expected = model(src.at(x, y));
        for (int c = 0; c < 3; ++c) {
          ASSERT_TRUE(isResult(pixelAt(dst, x, y)[c], expected[c], src.at(x, y)))
              << "component " << c;
        }
      }
    }
    dst.expectOutsideUntouched();
    for (const Plane<T>& plane : src.planes) plane.expectUntouched();
  }
}

template <class T, class Function>
void expectInPlace(const char* name, Function* function, const Model<T>& model) {
  Random random(name);
  for (const int width : kWidths) {
    Planes<T> planes(width, kHeight, random);
    planes.fill(random);
    const Planes<T> before(planes, random);
    ASSERT_EQ(function(planes.pointers().data(), planes.step(), {width, kHeight}), orbStsNoErr);
    for (int y = 0; y < kHeight; ++y) {
      for (int x = 0; x < width; ++x) {
        const Triple<T> expected = model(before.at(x, y));
        for (int c = 0; c < 3; ++c) {
          ASSERT_TRUE(isResult(planes.at(x, y)[c], expected[c], before.at(x, y)))
              << "component " << c;
        }
      }
    }
    for (const Plane<T>& plane : planes.planes) plane.expectOutsideUntouched();
  }
}

// ---- Checks

// The arguments of every form: the image is that with one pointer.
template <class T>
struct Call {
  T* image;
  Orb32s imageStep;
  T** planes;
  Triple<T*> entries;
  Orb32s planeStep;
  OrbiSize size;
};

template <class T, class Run>
void expectChecks(Run run) {
  Random random("checks");
  Plane<T> image(12, 2);
  Planes<T> planes(4, 2, random);
  image.fill([] { return T{1}; });
  for (Plane<T>& plane : planes.planes) plane.fill([] { return T{1}; });
  T* none[3] = {};
  const Call<T> good = {image.data(),      image.step(),  none,
                        planes.pointers(), planes.step(), image.size()};
  const auto call = [&](const Call<T>& c) {
    T* entries[3] = {c.entries[0], c.entries[1], c.entries[2]};
    Call<T> whole = c;
    if (whole.planes != nullptr) whole.planes = entries;
    whole.size.width = c.size.width / 3;
    return run(whole);
  };
  std::vector<Fault<Call<T>>> faults = {
      {orbStsNullPtrErr, [](Call<T>& c) { c.image = nullptr; }},
      {orbStsNullPtrErr, [](Call<T>& c) { c.planes = nullptr; }},
      {orbStsNullPtrErr, [](Call<T>& c) { c.entries[0] = nullptr; }},
      {orbStsNullPtrErr, [](Call<T>& c) { c.entries[1] = nullptr; }},
      {orbStsNullPtrErr, [](Call<T>& c) { c.entries[2] = nullptr; }},
      {orbStsStepErr, [](Call<T>& c) { c.imageStep = 0; }},
      {orbStsStepErr, [](Call<T>& c) { c.planeStep = -1; }},
      {orbStsStepErr, [](Call<T>& c) { c.imageStep = c.planeStep = 0; }},
      {orbStsSizeErr, [](Call<T>& c) { c.size.width = 0; }},
      {orbStsSizeErr, [](Call<T>& c) { c.size.height = -1; }}};
  orbtest::expectChecks(faults, good, call);
  image.expectUntouched();
  for (const Plane<T>& plane : planes.planes) plane.expectUntouched();
  EXPECT_EQ(call(good), orbStsNoErr);
}

template <class T, class Function>
void expectChecksToPlanes(Function* function) {
  expectChecks<T>([=](const Call<T>& c) {
    return function(c.image, c.imageStep, c.planes, c.planeStep, c.size);
  });
}
template <class T, class Function>
void expectChecksToPixels(Function* function) {
  expectChecks<T>([=](const Call<T>& c) {
    return function(c.planes, c.planeStep, c.image, c.imageStep, c.size);
  });
}
// Without an image its faults are those of the planes.
template <class T, class Function>
void expectChecksInPlace(Function* function) {
  expectChecks<T>([=](const Call<T>& c) {
    T** const planes = c.image != nullptr ? c.planes : nullptr;
    return function(planes, c.imageStep < 1 ? c.imageStep : c.planeStep, c.size);
  });
}

// ---- Agreement

template <class T>
bool sameBits(const Plane<T>& a, const Plane<T>& b, const Triple<double>& largest) {
  for (int y = 0; y < a.height(); ++y) {
    for (int x = 0; x < a.width(); ++x) {
      if constexpr (std::is_floating_point_v<T>) {
        if (!orbtest::near(a.at(x, y), b.at(x, y), 1, largest[0] * 1e-8)) return false;
      } else {
        if (a.at(x, y) != b.at(x, y)) return false;
      }
    }
  }
  return true;
}

template <class T, class Function>
void agreeToPlanes(Function* mine, Function* px, Random& random) {
  for (const int width : kWidths) {
    Plane<T> src(3 * width, kHeight, Placement::any(random));
    src.fill([&] { return anySample<T>(random); });
    Planes<T> a(width, kHeight, random), b(width, kHeight, random);
    mine(src.data(), src.step(), a.pointers().data(), a.step(), {width, kHeight});
    px(src.data(), src.step(), b.pointers().data(), b.step(), {width, kHeight});
    for (int c = 0; c < 3; ++c) ASSERT_TRUE(sameBits(a.planes[c], b.planes[c], {70000, 0, 0}));
  }
}
template <class T, class Function>
void agreeToPixels(Function* mine, Function* px, Random& random) {
  for (const int width : kWidths) {
    Planes<T> src(width, kHeight, random);
    src.fill(random);
    Plane<T> a(3 * width, kHeight, Placement::any(random)),
        b(3 * width, kHeight, Placement::any(random));
    mine(src.pointers().data(), src.step(), a.data(), a.step(), {width, kHeight});
    px(src.pointers().data(), src.step(), b.data(), b.step(), {width, kHeight});
    ASSERT_TRUE(sameBits(a, b, {70000, 0, 0}));
  }
}
template <class T, class Function>
void agreeInPlace(Function* mine, Function* px, Random& random) {
  for (const int width : kWidths) {
    Planes<T> a(width, kHeight, random);
    a.fill(random);
    Planes<T> b(a, random);
    mine(a.pointers().data(), a.step(), {width, kHeight});
    px(b.pointers().data(), b.step(), {width, kHeight});
    for (int c = 0; c < 3; ++c) ASSERT_TRUE(sameBits(a.planes[c], b.planes[c], {70000, 0, 0}));
  }
}

}  // namespace

// ---- Every export

#define ORB_COMPONENT_TESTS(name, T, model, Form)       \
  ORB_MEANING(name, ChecksInOrder) {                    \
    expectChecks##Form<T>(ORB(name));                   \
  }                                                     \
  ORB_MEANING(name, IsTheTransform) {                   \
    expect##Form<T>(#name, ORB(name), Model<T>(model)); \
  }                                                     \
  ORB_AGREEMENT(name) {                                 \
    agree##Form<T>(ORB(name), PX(name), random);        \
  }

ORB_COMPONENT_TESTS(orbiRCTFwd_JPEG2K_16s_C3P3R, Orb16s, rctForward<Orb16s>, ToPlanes)
ORB_COMPONENT_TESTS(orbiRCTFwd_JPEG2K_32s_C3P3R, Orb32s, rctForward<Orb32s>, ToPlanes)
ORB_COMPONENT_TESTS(orbiICTFwd_JPEG2K_32f_C3P3R, Orb32f, ictForwardF, ToPlanes)
ORB_COMPONENT_TESTS(orbiRCTInv_JPEG2K_16s_P3C3R, Orb16s, rctInverse<Orb16s>, ToPixels)
ORB_COMPONENT_TESTS(orbiRCTInv_JPEG2K_32s_P3C3R, Orb32s, rctInverse<Orb32s>, ToPixels)
ORB_COMPONENT_TESTS(orbiICTInv_JPEG2K_32f_P3C3R, Orb32f, ictInverseF, ToPixels)
ORB_COMPONENT_TESTS(orbiRCTFwd_JPEG2K_16s_P3IR, Orb16s, rctForward<Orb16s>, InPlace)
ORB_COMPONENT_TESTS(orbiRCTFwd_JPEG2K_32s_P3IR, Orb32s, rctForward<Orb32s>, InPlace)
ORB_COMPONENT_TESTS(orbiRCTInv_JPEG2K_16s_P3IR, Orb16s, rctInverse<Orb16s>, InPlace)
ORB_COMPONENT_TESTS(orbiRCTInv_JPEG2K_32s_P3IR, Orb32s, rctInverse<Orb32s>, InPlace)
ORB_COMPONENT_TESTS(orbiICTFwd_JPEG2K_16s_P3IR, Orb16s, ictForward<Orb16s>, InPlace)
ORB_COMPONENT_TESTS(orbiICTFwd_JPEG2K_32s_P3IR, Orb32s, ictForward<Orb32s>, InPlace)
ORB_COMPONENT_TESTS(orbiICTFwd_JPEG2K_32f_P3IR, Orb32f, ictForwardF, InPlace)
ORB_COMPONENT_TESTS(orbiICTInv_JPEG2K_16s_P3IR, Orb16s, ictInverse<Orb16s>, InPlace)
ORB_COMPONENT_TESTS(orbiICTInv_JPEG2K_32s_P3IR, Orb32s, ictInverse<Orb32s>, InPlace)
ORB_COMPONENT_TESTS(orbiICTInv_JPEG2K_32f_P3IR, Orb32f, ictInverseF, InPlace)

// ---- What a host relies on

// Forward and back again, whatever the samples are as long as nothing wraps.
ORB_MEANING(orbiRCTInv_JPEG2K_16s_P3IR, TurnsTheForwardTransformBack) {
  Random random("reversible");
  Planes<Orb16s> planes(1000, 1, random);
  for (Plane<Orb16s>& plane : planes.planes) {
    plane.fill([&] { return random.between<Orb16s>(-8192, 8191); });
  }
  const Planes<Orb16s> before(planes, random);
  ORB(orbiRCTFwd_JPEG2K_16s_P3IR)(planes.pointers().data(), planes.step(), {1000, 1});
  ORB(orbiRCTInv_JPEG2K_16s_P3IR)(planes.pointers().data(), planes.step(), {1000, 1});
  for (int x = 0; x < 1000; ++x) ASSERT_EQ(planes.at(x, 0), before.at(x, 0));
}

// Grey has no chroma.
ORB_MEANING(orbiICTFwd_JPEG2K_16s_P3IR, GreyHasNoChroma) {
  for (int grey = -2048; grey < 2048; grey += 7) {
    Orb16s values[3] = {static_cast<Orb16s>(grey), static_cast<Orb16s>(grey),
                        static_cast<Orb16s>(grey)};
    Orb16s* planes[3] = {&values[0], &values[1], &values[2]};
    ORB(orbiICTFwd_JPEG2K_16s_P3IR)(planes, 2, {1, 1});
    EXPECT_EQ(values[0], grey);
    EXPECT_EQ(values[1], 0);
    EXPECT_EQ(values[2], 0);
  }
}
