// Wavelet transforms of whole images: in place, and between an image and four planes.
#include <cmath>
#include <cstring>
#include <vector>

#include "tests/jpeg2k/floats.h"
#include "tests/jpeg2k/wavelet_model.h"
#include "tests/support/builds.h"
#include "tests/support/faults.h"
#include "tests/support/guarded.h"
#include "tests/support/plane.h"

namespace {

using namespace orbtest;

constexpr int kSizes[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 16, 17, 34};

// ---- Lines

// A position outside of a line of `length` samples, as it comes back from the ends.
int reflected(int n, int length) {
  while (n < 0 || n >= length) n = n < 0 ? -n : 2 * (length - 1) - n;
  return n;
}

template <class Sample>
struct Reversible {
  using T = Sample;
  using A = Integers53<sizeof(T) == 2 ? 16 : 32>;
  using V = int64_t;
  static constexpr int kBits = sizeof(T) * 8;
  static V cut(V value) { return A::cut(value); }

  static std::vector<V> forward(const std::vector<V>& line, int p) {
    if (line.size() == 2) {
      const V l = line[p], d = cut(line[1 - p] - l);
      return {cut(l + floorDiv(cut32(d + 1), 2)), d};
    }
    return transformed<Forward53Model<A>>(line, p);
  }
  static std::vector<V> inverse(const std::vector<V>& bands, int p) {
    if (bands.size() == 2) {
      const V l = cut(bands[0] - floorDiv(cut32(bands[1] + 1), 2));
      const V h = cut(bands[1] + l);
      return p == 0 ? std::vector<V>{l, h} : std::vector<V>{h, l};
    }
    return undone<Inverse53Model<A>>(bands, p);
  }

  // The low band in front of the high band.
  template <class Model, class Values>
  static Values transformed(const Values& line, int p) {
    const int length = static_cast<int>(line.size());
    Model model([&](int n) { return line[reflected(n, length)]; }, p);
    Values result;
    for (int n = p; n < length; n += 2) result.push_back(model.low(n));
    for (int n = 1 - p; n < length; n += 2) result.push_back(model.high(n));
    return result;
  }
  template <class Model, class Values>
  static Values undone(const Values& bands, int p) {
    const int length = static_cast<int>(bands.size());
    const int lows = (length + 1 - p) / 2;
    Model model(
        [&](int n) {
          const int at = reflected(n, length);
          return (at - p) % 2 == 0 ? bands[(at - p) / 2] : bands[lows + (at - 1 + p) / 2];
        },
        p);
    Values result;
    for (int n = 0; n < length; ++n) result.push_back(model.at(n));
    return result;
  }
};

struct Irreversible16 {
  using T = Orb16s;
  using V = int64_t;
  static V cut(V value) { return cut16(value); }
  static std::vector<V> forward(const std::vector<V>& line, int p) {
    return Reversible<T>::transformed<Forward97Model<Cutting97>>(line, p);
  }
  static std::vector<V> inverse(const std::vector<V>& bands, int p) {
    return Reversible<T>::undone<Inverse97Model<Cutting97>>(bands, p);
  }
};

// Floating point along a line, integers behind it.
struct Irreversible32 {
  using T = Orb32s;
  using V = int64_t;
  static V cut(V value) { return cut32(value); }
  static std::vector<V> forward(const std::vector<V>& line, int p) {
    return truncated(Reversible<T>::transformed<Forward97Model<Floating97<double>>>(
        std::vector<double>(line.begin(), line.end()), p));
  }
  static std::vector<V> inverse(const std::vector<V>& bands, int p) {
    return truncated(Reversible<T>::undone<Inverse97Model<Floating97<double>>>(
        std::vector<double>(bands.begin(), bands.end()), p));
  }
  static std::vector<V> truncated(const std::vector<double>& values) {
    std::vector<V> result;
    for (const double value : values) {
      result.push_back(value >= 2147483648.0   ? 2147483647
                       : value < -2147483648.0 ? -2147483648LL
                                               : static_cast<V>(std::trunc(value)));
    }
    return result;
  }
};

// ---- Tiles

using Tile = std::vector<std::vector<int64_t>>;  // rows

Tile turned(const Tile& tile) {
  Tile result(tile[0].size(), std::vector<int64_t>(tile.size()));
  for (size_t y = 0; y < tile.size(); ++y) {
    for (size_t x = 0; x < tile[0].size(); ++x) result[x][y] = tile[y][x];
  }
  return result;
}

template <class W>
Tile forwardLines(Tile tile, int p) {
  for (auto& line : tile) {
    if (line.size() > 1) {
      line = W::forward(line, p);
    } else if (p == 1) {
      line[0] = W::cut(line[0] * 2);
    }
  }
  return tile;
}
template <class W>
Tile inverseLines(Tile tile, int p) {
  for (auto& line : tile) {
    if (line.size() > 1) {
      line = W::inverse(line, p);
    } else if (p == 1) {
      line[0] /= 2;
    }
  }
  return tile;
}

template <class W>
Tile forwardTile(const Tile& tile, const OrbiRect& rect) {
  return forwardLines<W>(turned(forwardLines<W>(turned(tile), rect.y & 1)), rect.x & 1);
}
template <class W>
Tile inverseTile(const Tile& tile, const OrbiRect& rect) {
  return turned(inverseLines<W>(turned(inverseLines<W>(tile, rect.x & 1)), rect.y & 1));
}

template <class T>
Tile tileOf(const Plane<T>& plane) {
  Tile tile(plane.height());
  for (int y = 0; y < plane.height(); ++y) {
    for (int x = 0; x < plane.width(); ++x) tile[y].push_back(plane.at(x, y));
  }
  return tile;
}

template <class T>
void fill(Plane<T>& plane, Random& random) {
  const int kind = random.between(0, 3);
  plane.fill([&] {
    return kind == 0   ? random.extreme<T>()
           : kind == 1 ? random.any<T>()
                       : static_cast<T>(random.between(-2000, 2000));
  });
}

// Working memory of exactly the size that is told.
template <class Size>
GuardedBytes bufferFor(Size* size, const OrbiRect& rect, Guard guard) {
  Orb32s bytes = -1;
  EXPECT_EQ(size(&rect, &bytes), orbStsNoErr);
  return GuardedBytes(static_cast<size_t>(bytes), guard);
}

// Tiles of many sizes at even and odd places.
template <class Body>
void forEachTile(const char* name, Body body) {
  Random random(name);
  for (const int width : kSizes) {
    for (const int height : kSizes) {
      for (int place = 0; place < 4; ++place) {
        const OrbiRect rect = {2 * random.between(-3, 3) + place % 2,
                               2 * random.between(-3, 3) + place / 2, width, height};
        SCOPED_TRACE(testing::Message()
                     << width << " x " << height << " at " << rect.x << ", " << rect.y);
        body(rect, random);
        if (testing::Test::HasFatalFailure()) return;
      }
    }
  }
}

template <class W, bool kForward, class Function, class Size>
void expectInPlace(const char* name, Function* function, Size* size) {
  using T = typename W::T;
  forEachTile(name, [&](const OrbiRect& rect, Random& random) {
    Plane<T> image(rect.width, rect.height, Placement::any(random));
    fill(image, random);
    const Tile before = tileOf(image);
    GuardedBytes buffer = bufferFor(size, rect, random.oneIn(2) ? Guard::kBefore : Guard::kBehind);
    ASSERT_EQ(function(image.data(), image.step(), &rect, buffer.data()), orbStsNoErr);
    ASSERT_EQ(tileOf(image),
              (kForward ? forwardTile<W>(before, rect) : inverseTile<W>(before, rect)));
    image.expectOutsideUntouched();
  });
}

// Where a plane's samples stand in the transformed image: cut in the middle, whatever the place.
struct BandPlace {
  int x, y, width, height;
};
BandPlace placeOf(int band, const OrbiRect& rect) {
  const int lowWidth = (rect.width + 1) / 2, lowHeight = (rect.height + 1) / 2;
  const bool right = band >= 2, below = band % 2 == 1;
  return {right ? lowWidth : 0, below ? lowHeight : 0, right ? rect.width - lowWidth : lowWidth,
          below ? rect.height - lowHeight : lowHeight};
}

template <class T>
struct FourPlanes {
  std::vector<Plane<T>> planes;
  T* first[4];
  const T* constFirst[4];
  Orb32s step[4];

  FourPlanes(const OrbiRect& rect, Random& random) {
    for (int band = 0; band < 4; ++band) {
      const BandPlace place = placeOf(band, rect);
      planes.emplace_back(place.width, place.height,
                          Placement{random.between(1, 9), random.between(0, 15)});
    }
    for (int band = 0; band < 4; ++band) {
      first[band] = planes[band].data();
      constFirst[band] = first[band];
      step[band] = planes[band].step();
    }
  }
};

template <class W, class Function, class Size>
void expectToPlanes(const char* name, Function* function, Size* size) {
  using T = typename W::T;
  forEachTile(name, [&](const OrbiRect& rect, Random& random) {
    Plane<T> image(rect.width, rect.height, Placement::any(random));
    fill(image, random);
    const Tile expected = forwardTile<W>(tileOf(image), rect);
    FourPlanes<T> bands(rect, random);
    GuardedBytes buffer = bufferFor(size, rect, random.oneIn(2) ? Guard::kBefore : Guard::kBehind);
    ASSERT_EQ(function(image.data(), image.step(), &rect, bands.first, bands.step, buffer.data()),
              orbStsNoErr);
    for (int band = 0; band < 4; ++band) {
      const BandPlace place = placeOf(band, rect);
      for (int y = 0; y < place.height; ++y) {
        for (int x = 0; x < place.width; ++x) {
          ASSERT_EQ(bands.planes[band].at(x, y), expected[place.y + y][place.x + x])
              << "band " << band;
        }
      }
      bands.planes[band].expectOutsideUntouched();
    }
    image.expectUntouched();
  });
}

template <class W, class Function, class Size>
void expectFromPlanes(const char* name, Function* function, Size* size) {
  using T = typename W::T;
  forEachTile(name, [&](const OrbiRect& rect, Random& random) {
    FourPlanes<T> bands(rect, random);
    Tile coded(rect.height, std::vector<int64_t>(rect.width));
    for (int band = 0; band < 4; ++band) {
      fill(bands.planes[band], random);
      const BandPlace place = placeOf(band, rect);
      for (int y = 0; y < place.height; ++y) {
        for (int x = 0; x < place.width; ++x) {
          coded[place.y + y][place.x + x] = bands.planes[band].at(x, y);
        }
      }
    }
    Plane<T> image(rect.width, rect.height, Placement::any(random));
    GuardedBytes buffer = bufferFor(size, rect, random.oneIn(2) ? Guard::kBefore : Guard::kBehind);
    ASSERT_EQ(
        function(bands.constFirst, bands.step, image.data(), image.step(), &rect, buffer.data()),
        orbStsNoErr);
    ASSERT_EQ(tileOf(image), inverseTile<W>(coded, rect));
    image.expectOutsideUntouched();
    for (const Plane<T>& plane : bands.planes) plane.expectUntouched();
  });
}

// A line too long for the stack, either way: it has nothing but the buffer.
template <class W, bool kForward, class Function, class Size>
void expectLongLines(Function* function, Size* size) {
  using T = typename W::T;
  constexpr int kLong = 40001;
  for (const OrbiRect rect : {OrbiRect{1, 0, kLong, 1}, OrbiRect{0, 0, 1, kLong}}) {
    Random random("long lines");
    Plane<T> image(rect.width, rect.height, {1, 1});
    image.fill([&] { return static_cast<T>(random.between(-2000, 2000)); });
    const Tile before = tileOf(image);
    GuardedBytes buffer = bufferFor(size, rect, Guard::kBehind);
    ASSERT_EQ(function(image.data(), image.step(), &rect, buffer.data()), orbStsNoErr);
    ASSERT_EQ(tileOf(image),
              (kForward ? forwardTile<W>(before, rect) : inverseTile<W>(before, rect)));
  }
}

// ---- Checks

template <class T, class Function>
void expectInPlaceChecks(Function* function) {
  struct Call {
    T* image;
    Orb32s step;
    const OrbiRect* rect;
    Orb8u* buffer;
  };
  const OrbiRect rect = {0, 0, 4, 4};
  Plane<T> image(4, 4);
  image.fill([] { return T{1}; });
  std::vector<Orb8u> buffer(1024);
  const auto run = [&](const Call& c) { return function(c.image, c.step, c.rect, c.buffer); };
  const Call good = {image.data(), image.step(), &rect, buffer.data()};
  expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.image = nullptr; }},
                      {orbStsStepErr, [](Call& c) { c.step = 0; }},
                      {orbStsNullPtrErr, [](Call& c) { c.rect = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.buffer = nullptr; }}},
                     good, run);
  // A size below 1 is no fault, and there is nothing to do.
  for (const OrbiRect none : {OrbiRect{0, 0, 0, 4}, OrbiRect{0, 0, 4, -1}}) {
    EXPECT_EQ(function(image.data(), image.step(), &none, buffer.data()), orbStsNoErr);
  }
  image.expectUntouched();
  EXPECT_EQ(run(good), orbStsNoErr);
}

template <class T, class Run>
void expectPlaneChecks(Run run) {
  struct Call {
    T* image;
    Orb32s imageStep;
    bool planes = true;
    bool steps = true;
    T* first[4];
    Orb32s step[4];
    const OrbiRect* rect;
    Orb8u* buffer;
  };
  static const OrbiRect rect = {0, 0, 4, 4}, noWidth = {0, 0, 0, 4}, noHeight = {0, 0, 4, -1};
  Random random("checks");
  Plane<T> image(4, 4);
  image.fill([] { return T{1}; });
  FourPlanes<T> bands(rect, random);
  for (Plane<T>& plane : bands.planes) plane.fill([] { return T{1}; });
  std::vector<Orb8u> buffer(1024);
  Call good = {image.data(), image.step(), true, true, {}, {}, &rect, buffer.data()};
  for (int i = 0; i < 4; ++i) {
    good.first[i] = bands.first[i];
    good.step[i] = bands.step[i];
  }
  std::vector<Fault<Call>> faults = {{orbStsNullPtrErr, [](Call& c) { c.image = nullptr; }},
                                     {orbStsNullPtrErr, [](Call& c) { c.planes = false; }},
                                     {orbStsNullPtrErr, [](Call& c) { c.steps = false; }},
                                     {orbStsNullPtrErr, [](Call& c) { c.rect = nullptr; }},
                                     {orbStsNullPtrErr, [](Call& c) { c.buffer = nullptr; }},
                                     {orbStsStepErr, [](Call& c) { c.imageStep = -1; }}};
  for (int i = 0; i < 4; ++i) {
    faults.push_back({orbStsNullPtrErr, [=](Call& c) { c.first[i] = nullptr; }});
  }
  for (int i = 0; i < 4; ++i) {
    faults.push_back({orbStsStepErr, [=](Call& c) { c.step[i] = 0; }});
  }
  faults.push_back({orbStsSizeErr, [](Call& c) { c.rect = &noHeight; }});
  faults.push_back({orbStsSizeErr, [](Call& c) { c.rect = &noWidth; }});
  const auto call = [&](const Call& c) {
    T* first[4] = {c.first[0], c.first[1], c.first[2], c.first[3]};
    return run(c.image, c.imageStep, c.planes ? first : nullptr, c.steps ? c.step : nullptr, c.rect,
               c.buffer);
  };
  expectChecks<Call>(faults, good, call);
  image.expectUntouched();
  for (const Plane<T>& plane : bands.planes) plane.expectUntouched();
  EXPECT_EQ(call(good), orbStsNoErr);
}

// ---- Agreement

template <class T, class Function>
void agreeInPlace(Function* mine, Function* px, Random& random) {
  for (int round = 0; round < 40; ++round) {
    const OrbiRect rect = {random.between(0, 1), random.between(0, 1), random.between(1, 150),
                           random.between(1, 40)};
    const Placement place = Placement::any(random);
    Plane<T> a(rect.width, rect.height, place), b(rect.width, rect.height, place);
    fill(a, random);
    b.copySamples(a);
    std::vector<Orb8u> buffer(8192);
    mine(a.data(), a.step(), &rect, buffer.data());
    px(b.data(), b.step(), &rect, buffer.data() + 1);
    ASSERT_TRUE(a.sameBytes(b));
  }
}

template <class T, class Function>
void agreeToPlanes(Function* mine, Function* px, Random& random) {
  for (int round = 0; round < 40; ++round) {
    const OrbiRect rect = {random.between(0, 1), random.between(0, 1), random.between(1, 150),
                           random.between(1, 40)};
    Plane<T> image(rect.width, rect.height, Placement::any(random));
    fill(image, random);
    FourPlanes<T> a(rect, random), b(rect, random);
    std::vector<Orb8u> buffer(65536);
    mine(image.data(), image.step(), &rect, a.first, a.step, buffer.data());
    px(image.data(), image.step(), &rect, b.first, b.step, buffer.data() + 1);
    for (int i = 0; i < 4; ++i) ASSERT_EQ(a.planes[i].samples(), b.planes[i].samples());
  }
}

template <class T, class Function>
void agreeFromPlanes(Function* mine, Function* px, Random& random) {
  for (int round = 0; round < 40; ++round) {
    const OrbiRect rect = {random.between(0, 1), random.between(0, 1), random.between(1, 150),
                           random.between(1, 40)};
    FourPlanes<T> bands(rect, random);
    for (Plane<T>& plane : bands.planes) fill(plane, random);
    const Placement place = Placement::any(random);
    Plane<T> a(rect.width, rect.height, place), b(rect.width, rect.height, place);
    std::vector<Orb8u> buffer(65536);
    mine(bands.constFirst, bands.step, a.data(), a.step(), &rect, buffer.data());
    px(bands.constFirst, bands.step, b.data(), b.step(), &rect, buffer.data() + 1);
    ASSERT_TRUE(a.sameBytes(b));
  }
}

// ---- Sizes

struct BufferSize {
  int sampleBytes;
  int extension;  // of a line, in bytes
  bool holdsImage;

  Orb32s of(const OrbiRect& rect) const {
    const int longer = std::max(rect.width, rect.height);
    const int line = rect.width < 3 && rect.height < 3 ? 0 : longer * sampleBytes + extension;
    const int row = (rect.width * sampleBytes + 31) / 32 * 32;
    return line + (holdsImage ? row * rect.height : 0);
  }
};

template <class Size>
void expectSizes(Size* size, const BufferSize& expected) {
  Orb32s bytes = 77;
  const OrbiRect rect = {0, 0, 4, 4};
  EXPECT_EQ(size(nullptr, &bytes), orbStsNullPtrErr);
  EXPECT_EQ(size(&rect, nullptr), orbStsNullPtrErr);
  EXPECT_EQ(bytes, 77);
  for (const int width : {1, 2, 3, 8, 15, 16, 17, 33, 1000}) {
    for (const int height : {1, 2, 3, 8, 33, 1000}) {
      const OrbiRect tile = {width, height, width, height};  // the place has no part in it
      ASSERT_EQ(size(&tile, &bytes), orbStsNoErr);
      ASSERT_EQ(bytes, expected.of(tile)) << width << " x " << height;
    }
  }
}

// The size functions have one text in every build; their answers are compared as well.
template <class Size>
void agreeSizes(Size* mine, Size* px, Random& random) {
  for (int round = 0; round < 200; ++round) {
    const OrbiRect rect = {0, 0, random.between(-3, 5000), random.between(-3, 5000)};
    Orb32s a = 0, b = 0;
    ASSERT_EQ(mine(&rect, &a), px(&rect, &b));
    ASSERT_EQ(a, b);
  }
}

}  // namespace

#define ORB_SIZE_TESTS(name, sampleBytes, extension, holdsImage)            \
  ORB_MEANING(name, TellsTheSize) {                                         \
    expectSizes(ORB(name), BufferSize{sampleBytes, extension, holdsImage}); \
  }                                                                         \
  ORB_AGREEMENT(name) {                                                     \
    agreeSizes(ORB(name), PX(name), random);                                \
  }

ORB_SIZE_TESTS(orbiWTGetBufSize_B53_JPEG2K_16s_C1IR, 2, 8, false)
ORB_SIZE_TESTS(orbiWTGetBufSize_B53_JPEG2K_32s_C1IR, 4, 16, false)
ORB_SIZE_TESTS(orbiWTGetBufSize_D97_JPEG2K_16s_C1IR, 2, 16, false)
ORB_SIZE_TESTS(orbiWTGetBufSize_D97_JPEG2K_32s_C1IR, 4, 32, false)
ORB_SIZE_TESTS(orbiWTGetBufSize_B53_JPEG2K_16s_C1R, 2, 8, true)
ORB_SIZE_TESTS(orbiWTGetBufSize_B53_JPEG2K_32s_C1R, 4, 16, true)
ORB_SIZE_TESTS(orbiWTGetBufSize_D97_JPEG2K_16s_C1R, 2, 16, true)
ORB_SIZE_TESTS(orbiWTGetBufSize_D97_JPEG2K_32s_C1R, 4, 32, true)

#define ORB_IN_PLACE_TESTS(name, size, W, kForward)          \
  ORB_MEANING(name, ChecksInOrder) {                         \
    expectInPlaceChecks<W::T>(ORB(name));                    \
  }                                                          \
  ORB_MEANING(name, IsTheTransform) {                        \
    expectInPlace<W, kForward>(#name, ORB(name), ORB(size)); \
  }                                                          \
  ORB_MEANING(name, LongLinesAreWorkedInTheBuffer) {         \
    expectLongLines<W, kForward>(ORB(name), ORB(size));      \
  }                                                          \
  ORB_AGREEMENT(name) {                                      \
    agreeInPlace<W::T>(ORB(name), PX(name), random);         \
  }

ORB_IN_PLACE_TESTS(orbiWTFwd_B53_JPEG2K_16s_C1IR, orbiWTGetBufSize_B53_JPEG2K_16s_C1IR,
                   Reversible<Orb16s>, true)
ORB_IN_PLACE_TESTS(orbiWTFwd_B53_JPEG2K_32s_C1IR, orbiWTGetBufSize_B53_JPEG2K_32s_C1IR,
                   Reversible<Orb32s>, true)
ORB_IN_PLACE_TESTS(orbiWTFwd_D97_JPEG2K_16s_C1IR, orbiWTGetBufSize_D97_JPEG2K_16s_C1IR,
                   Irreversible16, true)
ORB_IN_PLACE_TESTS(orbiWTFwd_D97_JPEG2K_32s_C1IR, orbiWTGetBufSize_D97_JPEG2K_32s_C1IR,
                   Irreversible32, true)
ORB_IN_PLACE_TESTS(orbiWTInv_B53_JPEG2K_16s_C1IR, orbiWTGetBufSize_B53_JPEG2K_16s_C1IR,
                   Reversible<Orb16s>, false)
ORB_IN_PLACE_TESTS(orbiWTInv_B53_JPEG2K_32s_C1IR, orbiWTGetBufSize_B53_JPEG2K_32s_C1IR,
                   Reversible<Orb32s>, false)
ORB_IN_PLACE_TESTS(orbiWTInv_D97_JPEG2K_16s_C1IR, orbiWTGetBufSize_D97_JPEG2K_16s_C1IR,
                   Irreversible16, false)
ORB_IN_PLACE_TESTS(orbiWTInv_D97_JPEG2K_32s_C1IR, orbiWTGetBufSize_D97_JPEG2K_32s_C1IR,
                   Irreversible32, false)

#define ORB_TO_PLANES_TESTS(name, size, W)                                                  \
  ORB_MEANING(name, ChecksInOrder) {                                                        \
    auto* const function = ORB(name);                                                       \
    expectPlaneChecks<W::T>([=](W::T* image, Orb32s imageStep, W::T* const* planes,         \
                                const Orb32s* steps, const OrbiRect* rect, Orb8u* buffer) { \
      return function(image, imageStep, rect, planes, steps, buffer);                       \
    });                                                                                     \
  }                                                                                         \
  ORB_MEANING(name, IsTheTransform) {                                                       \
    expectToPlanes<W>(#name, ORB(name), ORB(size));                                         \
  }                                                                                         \
  ORB_AGREEMENT(name) {                                                                     \
    agreeToPlanes<W::T>(ORB(name), PX(name), random);                                       \
  }

#define ORB_FROM_PLANES_TESTS(name, size, W)                                                \
  ORB_MEANING(name, ChecksInOrder) {                                                        \
    auto* const function = ORB(name);                                                       \
    expectPlaneChecks<W::T>([=](W::T* image, Orb32s imageStep, W::T* const* planes,         \
                                const Orb32s* steps, const OrbiRect* rect, Orb8u* buffer) { \
      return function(planes, steps, image, imageStep, rect, buffer);                       \
    });                                                                                     \
  }                                                                                         \
  ORB_MEANING(name, IsTheTransform) {                                                       \
    expectFromPlanes<W>(#name, ORB(name), ORB(size));                                       \
  }                                                                                         \
  ORB_AGREEMENT(name) {                                                                     \
    agreeFromPlanes<W::T>(ORB(name), PX(name), random);                                     \
  }

ORB_TO_PLANES_TESTS(orbiWTFwd_B53_JPEG2K_16s_C1R, orbiWTGetBufSize_B53_JPEG2K_16s_C1R,
                    Reversible<Orb16s>)
ORB_TO_PLANES_TESTS(orbiWTFwd_B53_JPEG2K_32s_C1R, orbiWTGetBufSize_B53_JPEG2K_32s_C1R,
                    Reversible<Orb32s>)
ORB_TO_PLANES_TESTS(orbiWTFwd_D97_JPEG2K_16s_C1R, orbiWTGetBufSize_D97_JPEG2K_16s_C1R,
                    Irreversible16)
ORB_TO_PLANES_TESTS(orbiWTFwd_D97_JPEG2K_32s_C1R, orbiWTGetBufSize_D97_JPEG2K_32s_C1R,
                    Irreversible32)
ORB_FROM_PLANES_TESTS(orbiWTInv_B53_JPEG2K_16s_C1R, orbiWTGetBufSize_B53_JPEG2K_16s_C1R,
                      Reversible<Orb16s>)
ORB_FROM_PLANES_TESTS(orbiWTInv_B53_JPEG2K_32s_C1R, orbiWTGetBufSize_B53_JPEG2K_32s_C1R,
                      Reversible<Orb32s>)
ORB_FROM_PLANES_TESTS(orbiWTInv_D97_JPEG2K_16s_C1R, orbiWTGetBufSize_D97_JPEG2K_16s_C1R,
                      Irreversible16)
ORB_FROM_PLANES_TESTS(orbiWTInv_D97_JPEG2K_32s_C1R, orbiWTGetBufSize_D97_JPEG2K_32s_C1R,
                      Irreversible32)

// ---- What a host relies on

// A tile of one sample at an odd place in both directions is four times the sample, and back.
ORB_MEANING(orbiWTFwd_B53_JPEG2K_16s_C1IR, OneSampleAtAnOddPlace) {
  const OrbiRect rect = {1, 1, 1, 1};
  Orb16s sample = -123;
  Orb8u none = 0;
  ASSERT_EQ(ORB(orbiWTFwd_B53_JPEG2K_16s_C1IR)(&sample, 2, &rect, &none), orbStsNoErr);
  EXPECT_EQ(sample, -492);
  ASSERT_EQ(ORB(orbiWTInv_B53_JPEG2K_16s_C1IR)(&sample, 2, &rect, &none), orbStsNoErr);
  EXPECT_EQ(sample, -123);
}

// The 5/3 comes back to the bit, of any size at any place.
ORB_MEANING(orbiWTInv_B53_JPEG2K_32s_C1IR, TurnsTheForwardTransformBack) {
  forEachTile("reversible", [&](const OrbiRect& rect, Random& random) {
    Plane<Orb32s> image(rect.width, rect.height);
    image.fill([&] { return random.between(-(1 << 24), 1 << 24); });
    const Tile before = tileOf(image);
    std::vector<Orb8u> buffer(1024);
    ORB(orbiWTFwd_B53_JPEG2K_32s_C1IR)(image.data(), image.step(), &rect, buffer.data());
    ORB(orbiWTInv_B53_JPEG2K_32s_C1IR)(image.data(), image.step(), &rect, buffer.data());
    ASSERT_EQ(tileOf(image), before);
  });
}
