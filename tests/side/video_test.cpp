// Video colour (ITU-R BT.601, video range).
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "tests/support/builds.h"
#include "tests/support/faults.h"
#include "tests/support/plane.h"

namespace {

using orbtest::expectChecks;
using orbtest::Placement;
using orbtest::Plane;
using orbtest::Random;
using orbtest::TestBuild;

// ---- The equations, by division

struct Bgr {
  int b, g, r;

  bool operator==(const Bgr& other) const { return b == other.b && g == other.g && r == other.r; }
};
struct YCbCr {
  int y, cb, cr;
};

int floorOf(int64_t value, int64_t divisor) {
  return static_cast<int>(value / divisor - (value % divisor < 0 ? 1 : 0));
}
int limited(int value) {
  return std::clamp(value, 0, 255);
}

// A word's fields, each at the top of a byte; and back.
Bgr unpacked(int word, int greenBits) {
  const int greens = 1 << greenBits;
  return {word % 32 * 8, word / 32 % greens * (256 / greens), word / 32 / greens % 32 * 8};
}
int packed(Bgr p, int greenBits) {
  const int greens = 1 << greenBits;
  return p.b / 8 + 32 * (p.g / (256 / greens) + greens * (p.r / 8));
}

int luma(Bgr p) {
  return floorOf(6423 * p.b + 33030 * p.g + 16843 * p.r + 16 * 65536 + 32768, 65536);
}
// The mean of pixels has 128 and one eighth added to it, and is rounded down.
YCbCr chroma(const std::vector<Bgr>& pixels) {
  int64_t b = 0, g = 0, r = 0;
  for (const Bgr& p : pixels) {
    b += p.b;
    g += p.g;
    r += p.r;
  }
  const int64_t n = static_cast<int64_t>(pixels.size());
  const int64_t zero = 65536 * n * 128 + 8192 * n;
  return {0, floorOf(28770 * b - 19071 * g - 9699 * r + zero, 65536 * n),
          floorOf(28770 * r - 4653 * b - 24117 * g + zero, 65536 * n)};
}

Bgr ofPlanes(YCbCr p) {
  const int luma16 = floorOf(int64_t{1220480} * p.y - 19527680, 65536);
  const int u = 128 * p.cb - 16384, v = 128 * p.cr - 16384;
  return {limited(floorOf(luma16 + floorOf(16523 * u, 65536), 16)),
          limited(floorOf(luma16 - floorOf(3211 * u, 65536) - floorOf(6660 * v, 65536), 16)),
          limited(floorOf(luma16 + floorOf(13074 * v, 65536), 16))};
}
Bgr ofPairs(YCbCr p) {
  return {limited(floorOf(76284 * p.y + 132186 * p.cb - 18140365, 65536)),
          limited(floorOf(76284 * p.y - 25690 * p.cb - 53281 * p.cr + 8887730, 65536)),
          limited(floorOf(76284 * p.y + 104595 * p.cr - 14608761, 65536))};
}

// ---- Calls of any of the functions

// One side of a call: pointers and steps, as a function takes them.
struct Side {
  Orb8u* plane[3] = {};
  Orb32s step[3] = {};
  bool hasArray = true;
  bool hasSteps = true;

  template <class Pointer>
  Pointer pointer() {
    if constexpr (std::is_pointer_v<std::remove_pointer_t<Pointer>>) {
      return hasArray ? plane : nullptr;
    } else {
      return hasArray ? reinterpret_cast<Pointer>(plane[0]) : nullptr;
    }
  }
  template <class Step>
  Step steps() {
    if constexpr (std::is_pointer_v<Step>) {
      return hasSteps ? step : nullptr;
    } else {
      return step[0];
    }
  }
};

template <class Src, class SrcStep, class Dst, class DstStep>
OrbStatus call(OrbStatus(ORB_CALL* function)(Src, SrcStep, Dst, DstStep, OrbiSize), Side src,
               Side dst, OrbiSize size) {
  return function(src.pointer<Src>(), src.steps<SrcStep>(), dst.pointer<Dst>(),
                  dst.steps<DstStep>(), size);
}

// Planes of bytes: one for an interleaved image, or three.
using Planes = std::vector<Plane<Orb8u>>;

Side sideOf(Planes& planes) {
  Side side;
  for (size_t i = 0; i < planes.size(); ++i) {
    side.plane[i] = planes[i].data();
    side.step[i] = planes[i].step();
  }
  return side;
}

// How pixels lie in memory.
struct Layout {
  enum Kind { kWords, kBytes, kPairs, kPlanes } kind;
  int greenBits = 0;  // of words
  int chromaRows = 1;
  int cbPlane = 1;
};
constexpr Layout kBgr555 = {Layout::kWords, 5};
constexpr Layout kBgr565 = {Layout::kWords, 6};
constexpr Layout kBytes = {Layout::kBytes};
constexpr Layout kPairs = {Layout::kPairs};
constexpr Layout kPlanes422 = {Layout::kPlanes};
constexpr Layout kPlanes420 = {Layout::kPlanes, 0, 2};
constexpr Layout kPlanes420Swapped = {Layout::kPlanes, 0, 2, 2};

// `half` halves a side, up in a source, where an odd pixel has chroma, and down in a destination.
template <class Half>
Planes makePlanes(Layout layout, OrbiSize size, Random& random, Half half) {
  Planes planes;
  const auto add = [&](int width, int height) {
    planes.emplace_back(width, height, Placement::any(random));
  };
  switch (layout.kind) {
    case Layout::kWords:
      // One kind of function takes no odd steps.
      planes.emplace_back(2 * size.width, size.height,
                          Placement{2 * random.between(0, 5), random.between(0, 15)});
      break;
    case Layout::kBytes:
      add(3 * size.width, size.height);
      break;
    case Layout::kPairs:
      add(2 * size.width, size.height);
      break;
    case Layout::kPlanes:
      add(size.width, size.height);
      for (int i = 0; i < 2; ++i) {
        add(half(size.width), layout.chromaRows == 2 ? half(size.height) : size.height);
      }
  }
  return planes;
}
Planes makeSource(Layout layout, OrbiSize size, Random& random) {
  Planes planes = makePlanes(layout, size, random, [](int side) { return (side + 1) / 2; });
  const bool extreme = random.oneIn(3);
  for (Plane<Orb8u>& plane : planes) extreme ? plane.fillExtreme(random) : plane.fillAny(random);
  return planes;
}
Planes makeDestination(Layout layout, OrbiSize size, Random& random) {
  return makePlanes(layout, size, random, [](int side) { return std::max(side / 2, 1); });
}

Bgr bgrAt(const Planes& planes, Layout layout, int x, int y) {
  const Plane<Orb8u>& bytes = planes[0];
  if (layout.kind == Layout::kBytes) {
    return {bytes.at(3 * x, y), bytes.at(3 * x + 1, y), bytes.at(3 * x + 2, y)};
  }
  return unpacked(bytes.at(2 * x, y) + 256 * bytes.at(2 * x + 1, y), layout.greenBits);
}
int wordAt(const Planes& planes, int x, int y) {
  return planes[0].at(2 * x, y) + 256 * planes[0].at(2 * x + 1, y);
}

// ---- To YCbCr

template <class Function>
void expectToPlanes(Function function, Layout from, Layout to) {
  Random random("to planes");
  for (int round = 0; round < 150; ++round) {
    const int chromaRows = to.chromaRows;
    const OrbiSize size = {random.between(2, round % 4 == 0 ? 140 : 9),
                           random.between(chromaRows, 5)};
    Planes src = makeSource(from, size, random);
    Planes dst = makeDestination(to, size, random);
    ASSERT_EQ(call(function, sideOf(src), sideOf(dst), size), orbStsNoErr);
    for (int y = 0; y < size.height; ++y) {
      for (int x = 0; x < size.width; ++x) {
        ASSERT_EQ(dst[0].at(x, y), luma(bgrAt(src, from, x, y))) << x << ' ' << y;
      }
    }
    const OrbiSize half = {size.width / 2, size.height / chromaRows};
    for (int y = 0; y < half.height; ++y) {
      for (int x = 0; x < half.width; ++x) {
        std::vector<Bgr> group;
        for (int k = 0; k < 2 * chromaRows; ++k) {
          group.push_back(bgrAt(src, from, 2 * x + k % 2, chromaRows * y + k / 2));
        }
        const YCbCr expected = chroma(group);
        ASSERT_EQ(dst[to.cbPlane].at(x, y), expected.cb) << x << ' ' << y;
        ASSERT_EQ(dst[3 - to.cbPlane].at(x, y), expected.cr) << x << ' ' << y;
      }
    }
    dst[0].expectOutsideUntouched();
    dst[1].expectOutsideUntouched(half.width, half.height);
    dst[2].expectOutsideUntouched(half.width, half.height);
  }
}

template <class Function>
void expectToPairs(Function function, Layout from) {
  Random random("to pairs");
  for (int round = 0; round < 150; ++round) {
    const OrbiSize size = {random.between(2, round % 4 == 0 ? 140 : 9), random.between(1, 3)};
    Planes src = makeSource(from, size, random);
    Planes dst = makeDestination(kPairs, size, random);
    ASSERT_EQ(call(function, sideOf(src), sideOf(dst), size), orbStsNoErr);
    for (int y = 0; y < size.height; ++y) {
      for (int x = 0; x < size.width; ++x) {
        const Bgr pixel = bgrAt(src, from, x, y);
        ASSERT_EQ(dst[0].at(2 * x, y), luma(pixel)) << x << ' ' << y;
        const bool isLeft = x % 2 == 0;
        const bool isAlone = isLeft && x + 1 == size.width;
        const YCbCr expected = isAlone
                                   ? chroma({pixel})
                                   : chroma({pixel, bgrAt(src, from, isLeft ? x + 1 : x - 1, y)});
        ASSERT_EQ(dst[0].at(2 * x + 1, y), isLeft ? expected.cb : expected.cr) << x << ' ' << y;
      }
    }
    dst[0].expectOutsideUntouched();
  }
}

// Pointers first, then the size.
template <class Function>
void expectForwardChecks(Function function, Layout from, Layout to, int leastHeight) {
  Random random("checks");
  Planes src = makeSource(from, {4, 4}, random);
  Planes dst = makeDestination(to, {4, 4}, random);
  struct Call {
    Side src, dst;
    OrbiSize size = {4, 4};
  };
  std::vector<orbtest::Fault<Call>> faults = {
      {orbStsNullPtrErr, [](Call& c) { c.src.hasArray = false; }},
      {orbStsNullPtrErr, [](Call& c) { c.dst.hasArray = false; }},
      {orbStsNullPtrErr, [](Call& c) { c.dst.plane[0] = nullptr; }}};
  if (to.kind == Layout::kPlanes) {
    faults.push_back({orbStsNullPtrErr, [](Call& c) { c.dst.hasSteps = false; }});
    faults.push_back({orbStsNullPtrErr, [](Call& c) { c.dst.plane[1] = nullptr; }});
    faults.push_back({orbStsNullPtrErr, [](Call& c) { c.dst.plane[2] = nullptr; }});
  }
  faults.push_back({orbStsSizeErr, [](Call& c) { c.size.width = 1; }});
  faults.push_back({orbStsSizeErr, [=](Call& c) { c.size.height = leastHeight - 1; }});
  faults.push_back({orbStsSizeErr, [](Call& c) { c.size.width = -4; }});
  Call good;
  good.src = sideOf(src);
  good.dst = sideOf(dst);
  expectChecks<Call>(faults, good,
                     [&](const Call& c) { return call(function, c.src, c.dst, c.size); });
  for (const Plane<Orb8u>& plane : dst) plane.expectUntouched();
}

// Of all words as images of one grey, and of one.
template <class Function>
void expectSingleColours(Function function, int white, int black) {
  for (const auto& [word, y] : {std::pair{0xFFFF, white}, {0, black}}) {
    std::vector<Orb16u> src(5 * 5, static_cast<Orb16u>(word));
    std::vector<Orb8u> dst[3] = {std::vector<Orb8u>(25), std::vector<Orb8u>(25),
                                 std::vector<Orb8u>(25)};
    Orb8u* const planes[3] = {dst[0].data(), dst[1].data(), dst[2].data()};
    const Orb32s steps[3] = {5, 2, 2};
    ASSERT_EQ(function(src.data(), 10, planes, steps, OrbiSize{5, 5}), orbStsNoErr);
    EXPECT_EQ(dst[0], std::vector<Orb8u>(25, static_cast<Orb8u>(y)));
  }
}

ORB_MEANING(orbiBGR565ToYCbCr420_16u8u_C3P3R, FollowsTheEquations) {
  const auto function = ORB(orbiBGR565ToYCbCr420_16u8u_C3P3R);
  expectToPlanes(function, kBgr565, kPlanes420);
  expectForwardChecks(function, kBgr565, kPlanes420, 2);
  expectSingleColours(function, 231, 16);
}
ORB_MEANING(orbiBGR555ToYCbCr420_16u8u_C3P3R, FollowsTheEquations) {
  const auto function = ORB(orbiBGR555ToYCbCr420_16u8u_C3P3R);
  expectToPlanes(function, kBgr555, kPlanes420);
  expectForwardChecks(function, kBgr555, kPlanes420, 2);
  expectSingleColours(function, 229, 16);
}
ORB_MEANING(orbiBGR565ToYCrCb420_16u8u_C3P3R, FollowsTheEquations) {
  expectToPlanes(ORB(orbiBGR565ToYCrCb420_16u8u_C3P3R), kBgr565, kPlanes420Swapped);
  expectForwardChecks(ORB(orbiBGR565ToYCrCb420_16u8u_C3P3R), kBgr565, kPlanes420Swapped, 2);
}
ORB_MEANING(orbiBGR555ToYCrCb420_16u8u_C3P3R, FollowsTheEquations) {
  expectToPlanes(ORB(orbiBGR555ToYCrCb420_16u8u_C3P3R), kBgr555, kPlanes420Swapped);
  expectForwardChecks(ORB(orbiBGR555ToYCrCb420_16u8u_C3P3R), kBgr555, kPlanes420Swapped, 2);
}
ORB_MEANING(orbiBGR565ToYCbCr422_16u8u_C3P3R, FollowsTheEquations) {
  expectToPlanes(ORB(orbiBGR565ToYCbCr422_16u8u_C3P3R), kBgr565, kPlanes422);
  expectForwardChecks(ORB(orbiBGR565ToYCbCr422_16u8u_C3P3R), kBgr565, kPlanes422, 1);
}
ORB_MEANING(orbiBGR555ToYCbCr422_16u8u_C3P3R, FollowsTheEquations) {
  expectToPlanes(ORB(orbiBGR555ToYCbCr422_16u8u_C3P3R), kBgr555, kPlanes422);
  expectForwardChecks(ORB(orbiBGR555ToYCbCr422_16u8u_C3P3R), kBgr555, kPlanes422, 1);
}
ORB_MEANING(orbiBGR565ToYCbCr422_16u8u_C3C2R, FollowsTheEquations) {
  expectToPairs(ORB(orbiBGR565ToYCbCr422_16u8u_C3C2R), kBgr565);
  expectForwardChecks(ORB(orbiBGR565ToYCbCr422_16u8u_C3C2R), kBgr565, kPairs, 1);
}
ORB_MEANING(orbiBGR555ToYCbCr422_16u8u_C3C2R, FollowsTheEquations) {
  expectToPairs(ORB(orbiBGR555ToYCbCr422_16u8u_C3C2R), kBgr555);
  expectForwardChecks(ORB(orbiBGR555ToYCbCr422_16u8u_C3C2R), kBgr555, kPairs, 1);
}

// Beside the real numbers of BT.601: Y may be off by a half and what the factors are off; chroma is
// rounded down but for an eighth.
ORB_MEANING(orbiBGR565ToYCbCr422_16u8u_C3C2R, IsNearTheStandard) {
  for (int word = 0; word < 65536; word += 7) {
    Orb16u pair[2] = {static_cast<Orb16u>(word), static_cast<Orb16u>(word)};
    Orb8u bytes[4];
    ASSERT_EQ(ORB(orbiBGR565ToYCbCr422_16u8u_C3C2R)(pair, 4, bytes, 4, {2, 1}), orbStsNoErr);
    const auto [b, g, r] = unpacked(word, 6);
    const double y = (0.299 * r + 0.587 * g + 0.114 * b) / 255;
    ASSERT_NEAR(bytes[0], 16 + 219 * y, 0.6);
    ASSERT_NEAR(bytes[1], 128 + 112 * (b / 255.0 - y) / 0.886, 1);
    ASSERT_NEAR(bytes[3], 128 + 112 * (r / 255.0 - y) / 0.701, 1);
  }
}

// ---- From YCbCr

template <class Function>
void expectOfPlanes(Function function, int greenBits) {
  Random random("of planes");
  const Layout to = {Layout::kWords, greenBits};
  for (int round = 0; round < 150; ++round) {
    const OrbiSize size = {random.between(1, round % 4 == 0 ? 140 : 9), random.between(1, 5)};
    Planes src = makeSource(kPlanes420, size, random);
    Planes dst = makeDestination(to, size, random);
    ASSERT_EQ(call(function, sideOf(src), sideOf(dst), size), orbStsNoErr);
    for (int y = 0; y < size.height; ++y) {
      for (int x = 0; x < size.width; ++x) {
        const Bgr expected =
            ofPlanes({src[0].at(x, y), src[1].at(x / 2, y / 2), src[2].at(x / 2, y / 2)});
        ASSERT_EQ(wordAt(dst, x, y), packed(expected, greenBits)) << x << ' ' << y;
      }
    }
    dst[0].expectOutsideUntouched();
  }
}

template <class Function>
void expectOfPairs(Function function, int greenBits) {
  Random random("of pairs");
  const Layout to = {Layout::kWords, greenBits};
  for (int round = 0; round < 150; ++round) {
    const OrbiSize size = {random.between(2, round % 4 == 0 ? 140 : 9), random.between(1, 3)};
    Planes src = makeSource(kPairs, size, random);
    Planes dst = makeDestination(to, size, random);
    ASSERT_EQ(call(function, sideOf(src), sideOf(dst), size), orbStsNoErr);
    for (int y = 0; y < size.height; ++y) {
      for (int x = 0; x < size.width; ++x) {
        const int pair = x / 2 * 4;
        const int crAt = pair + 3 < 2 * size.width ? pair + 3 : pair - 1;
        const Bgr expected =
            ofPairs({src[0].at(2 * x, y), src[0].at(pair + 1, y), src[0].at(crAt, y)});
        ASSERT_EQ(wordAt(dst, x, y), packed(expected, greenBits)) << x << ' ' << y;
      }
    }
    dst[0].expectOutsideUntouched();
  }
}

// Rows of one pixel become three bytes at half the step, rows from the first on: where they overlap
// the later one stays.
template <class Function>
void expectSinglePixels(Function function) {
  Random random("single pixels");
  for (int step = -30; step <= 30; ++step) {
    const int height = random.between(1, 6);
    Plane<Orb8u> src = orbtest::makeRow<Orb8u>(2 * height);
    src.fillAny(random);
    Plane<Orb8u> dst = orbtest::makeRow<Orb8u>(2 * 100 + 3);
    std::vector<Orb8u> expected = dst.samples();
    for (int k = 0; k < height; ++k) {
      const int y = src.at(2 * k), c = src.at(2 * k + 1);
      const Bgr p = ofPairs({y, c, c});
      const int at = 100 + k * floorOf(step, 2);
      expected[at] = static_cast<Orb8u>(p.r);
      expected[at + 1] =
          static_cast<Orb8u>(limited(floorOf(76284 * y - 78971 * c + 8887730, 65536)));
      expected[at + 2] = static_cast<Orb8u>(p.b);
    }
    ASSERT_EQ(function(src.data(), 2, reinterpret_cast<Orb16u*>(dst.data() + 100), step,
                       OrbiSize{1, height}),
              orbStsNoErr);
    ASSERT_EQ(dst.samples(), expected) << "with a step of " << step;
    dst.expectOutsideUntouched();
  }
}

// Black and white: no field but zeros, and no field but ones.
template <class Function>
void expectGreysOfPlanes(Function function, int white) {
  for (const auto& [luma, word] : {std::pair{16, 0}, {235, white}}) {
    Orb8u y = static_cast<Orb8u>(luma), c = 128;
    const Orb8u* const planes[3] = {&y, &c, &c};
    const Orb32s steps[3] = {1, 1, 1};
    Orb16u pixel = 0x1234;
    ASSERT_EQ(function(planes, steps, &pixel, 2, OrbiSize{1, 1}), orbStsNoErr);
    EXPECT_EQ(pixel, word);
  }
}
template <class Function>
void expectGreysOfPairs(Function function, int white) {
  for (const auto& [luma, word] : {std::pair{16, 0}, {235, white}}) {
    const Orb8u y = static_cast<Orb8u>(luma);
    const Orb8u pair[4] = {y, 128, y, 128};
    Orb16u pixels[2] = {0x1234, 0x1234};
    ASSERT_EQ(function(pair, 4, pixels, 4, OrbiSize{2, 1}), orbStsNoErr);
    EXPECT_EQ(pixels[0], word);
    EXPECT_EQ(pixels[1], word);
  }
}

// The array and the destination, the size, and only then the planes.
template <class Function>
void expectInverseChecks(Function function, Layout from) {
  Random random("checks");
  Planes src = makeSource(from, {4, 4}, random);
  Planes dst = makeDestination(kBgr565, {4, 4}, random);
  struct Call {
    Side src, dst;
    OrbiSize size = {4, 4};
  };
  std::vector<orbtest::Fault<Call>> faults = {
      {orbStsNullPtrErr, [](Call& c) { c.src.hasArray = false; }},
      {orbStsNullPtrErr, [](Call& c) { c.dst.hasArray = false; }}};
  if (from.kind == Layout::kPlanes) {
    faults.push_back({orbStsNullPtrErr, [](Call& c) { c.src.hasSteps = false; }});
  }
  faults.push_back({orbStsSizeErr, [](Call& c) { c.size.width = 0; }});
  faults.push_back({orbStsSizeErr, [](Call& c) { c.size.height = 0; }});
  faults.push_back({orbStsSizeErr, [](Call& c) { c.size.height = -1; }});
  if (from.kind == Layout::kPlanes) {
    faults.push_back({orbStsNullPtrErr, [](Call& c) { c.src.plane[0] = nullptr; }});
    faults.push_back({orbStsNullPtrErr, [](Call& c) { c.src.plane[1] = nullptr; }});
    faults.push_back({orbStsNullPtrErr, [](Call& c) { c.src.plane[2] = nullptr; }});
  }
  Call good;
  good.src = sideOf(src);
  good.dst = sideOf(dst);
  expectChecks<Call>(faults, good,
                     [&](const Call& c) { return call(function, c.src, c.dst, c.size); });
  dst[0].expectUntouched();
}

ORB_MEANING(orbiYCbCr420ToBGR565_8u16u_P3C3R, FollowsTheEquations) {
  expectOfPlanes(ORB(orbiYCbCr420ToBGR565_8u16u_P3C3R), 6);
  expectGreysOfPlanes(ORB(orbiYCbCr420ToBGR565_8u16u_P3C3R), 0xFFFF);
  expectInverseChecks(ORB(orbiYCbCr420ToBGR565_8u16u_P3C3R), kPlanes420);
}
ORB_MEANING(orbiYCbCr420ToBGR555_8u16u_P3C3R, FollowsTheEquations) {
  expectOfPlanes(ORB(orbiYCbCr420ToBGR555_8u16u_P3C3R), 5);
  expectGreysOfPlanes(ORB(orbiYCbCr420ToBGR555_8u16u_P3C3R), 0x7FFF);
  expectInverseChecks(ORB(orbiYCbCr420ToBGR555_8u16u_P3C3R), kPlanes420);
}
ORB_MEANING(orbiYCbCr422ToBGR565_8u16u_C2C3R, FollowsTheEquations) {
  expectOfPairs(ORB(orbiYCbCr422ToBGR565_8u16u_C2C3R), 6);
  expectSinglePixels(ORB(orbiYCbCr422ToBGR565_8u16u_C2C3R));
  expectGreysOfPairs(ORB(orbiYCbCr422ToBGR565_8u16u_C2C3R), 0xFFFF);
  expectInverseChecks(ORB(orbiYCbCr422ToBGR565_8u16u_C2C3R), kPairs);
}
ORB_MEANING(orbiYCbCr422ToBGR555_8u16u_C2C3R, FollowsTheEquations) {
  expectOfPairs(ORB(orbiYCbCr422ToBGR555_8u16u_C2C3R), 5);
  expectSinglePixels(ORB(orbiYCbCr422ToBGR555_8u16u_C2C3R));
  expectGreysOfPairs(ORB(orbiYCbCr422ToBGR555_8u16u_C2C3R), 0x7FFF);
  expectInverseChecks(ORB(orbiYCbCr422ToBGR555_8u16u_C2C3R), kPairs);
}

// ---- Words and bytes

template <class Function>
void expectRepacked(Function function, Layout from, Layout to) {
  Random random("repacked");
  for (int round = 0; round < 150; ++round) {
    const OrbiSize size = {random.between(1, round % 4 == 0 ? 140 : 12), random.between(1, 3)};
    Planes src = makeSource(from, size, random);
    Planes dst = makeDestination(to, size, random);
    ASSERT_EQ(call(function, sideOf(src), sideOf(dst), size), orbStsNoErr);
    for (int y = 0; y < size.height; ++y) {
      for (int x = 0; x < size.width; ++x) {
        const Bgr p = bgrAt(src, from, x, y);
        const Bgr cut = {p.b / 8 * 8, p.g / 4 * 4, p.r / 8 * 8};
        ASSERT_TRUE(bgrAt(dst, to, x, y) == cut) << x << ' ' << y;
      }
    }
    dst[0].expectOutsideUntouched();
  }
}

ORB_MEANING(orbiBGR565ToBGR_16u8u_C3R, MovesTheFields) {
  const auto function = ORB(orbiBGR565ToBGR_16u8u_C3R);
  expectRepacked(function, kBgr565, kBytes);
  expectInverseChecks(function, kBgr565);
  const Orb16u white = 0xFFFF;
  Orb8u bytes[3];
  ASSERT_EQ(function(&white, 2, bytes, 3, {1, 1}), orbStsNoErr);
  EXPECT_EQ((std::array<int, 3>{bytes[0], bytes[1], bytes[2]}),
            (std::array<int, 3>{248, 252, 248}));
}
ORB_MEANING(orbiBGRToBGR565_8u16u_C3R, MovesTheFields) {
  expectRepacked(ORB(orbiBGRToBGR565_8u16u_C3R), kBytes, kBgr565);
  expectInverseChecks(ORB(orbiBGRToBGR565_8u16u_C3R), kBytes);
}

// An odd step of words is one less; from the bottom up it is one more of magnitude.
ORB_MEANING(orbiBGR565ToBGR_16u8u_C3R, TheStepOfWordsIsEven) {
  const Orb16u words[] = {1, 2, 3, 4, 5, 6};
  Orb8u bytes[2][3] = {};
  ASSERT_EQ(ORB(orbiBGR565ToBGR_16u8u_C3R)(words, 5, bytes[0], 3, {1, 2}), orbStsNoErr);
  EXPECT_EQ(bytes[1][0], words[2] * 8);
  ASSERT_EQ(ORB(orbiBGR565ToBGR_16u8u_C3R)(words + 4, -3, bytes[0], 3, {1, 2}), orbStsNoErr);
  EXPECT_EQ(bytes[1][0], words[2] * 8);
}
ORB_MEANING(orbiBGRToBGR565_8u16u_C3R, TheStepOfWordsIsEven) {
  const Orb8u bytes[2][3] = {{8, 0, 0}, {16, 0, 0}};
  Orb16u words[6] = {};
  ASSERT_EQ(ORB(orbiBGRToBGR565_8u16u_C3R)(bytes[0], 3, words, 5, {1, 2}), orbStsNoErr);
  EXPECT_EQ(words[2], 2);
  ASSERT_EQ(ORB(orbiBGRToBGR565_8u16u_C3R)(bytes[0], 3, words + 5, -3, {1, 2}), orbStsNoErr);
  EXPECT_EQ(words[5], 1);
  EXPECT_EQ(words[3], 2);
}

// ---- Every build

template <class Function>
void expectSame(Function mine, Function reference, Random& random, Layout from, Layout to) {
  for (int round = 0; round < 200; ++round) {
    const OrbiSize size = {random.between(2, round % 3 == 0 ? 200 : 12), random.between(2, 5)};
    Planes src = makeSource(from, size, random);
    // The same places for both.
    Random places = random;
    Planes a = makeDestination(to, size, random);
    Planes b = makeDestination(to, size, places);
    ASSERT_EQ(call(mine, sideOf(src), sideOf(a), size),
              call(reference, sideOf(src), sideOf(b), size));
    for (size_t i = 0; i < a.size(); ++i) ASSERT_TRUE(a[i].sameBytes(b[i]));
  }
}

#define AGREES(name, from, to)                         \
  ORB_AGREEMENT(name) {                                \
    expectSame(ORB(name), PX(name), random, from, to); \
  }
AGREES(orbiBGR555ToYCbCr420_16u8u_C3P3R, kBgr555, kPlanes420)
AGREES(orbiBGR565ToYCbCr420_16u8u_C3P3R, kBgr565, kPlanes420)
AGREES(orbiBGR555ToYCrCb420_16u8u_C3P3R, kBgr555, kPlanes420Swapped)
AGREES(orbiBGR565ToYCrCb420_16u8u_C3P3R, kBgr565, kPlanes420Swapped)
AGREES(orbiBGR555ToYCbCr422_16u8u_C3P3R, kBgr555, kPlanes422)
AGREES(orbiBGR565ToYCbCr422_16u8u_C3P3R, kBgr565, kPlanes422)
AGREES(orbiBGR555ToYCbCr422_16u8u_C3C2R, kBgr555, kPairs)
AGREES(orbiBGR565ToYCbCr422_16u8u_C3C2R, kBgr565, kPairs)
AGREES(orbiYCbCr420ToBGR555_8u16u_P3C3R, kPlanes420, kBgr555)
AGREES(orbiYCbCr420ToBGR565_8u16u_P3C3R, kPlanes420, kBgr565)
AGREES(orbiYCbCr422ToBGR555_8u16u_C2C3R, kPairs, kBgr555)
AGREES(orbiYCbCr422ToBGR565_8u16u_C2C3R, kPairs, kBgr565)
AGREES(orbiBGR565ToBGR_16u8u_C3R, kBgr565, kBytes)
AGREES(orbiBGRToBGR565_8u16u_C3R, kBytes, kBgr565)

}  // namespace
