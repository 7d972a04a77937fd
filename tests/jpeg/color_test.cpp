// JPEG colour conversion (JFIF: ITU-T T.871, 7).
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <type_traits>
#include <vector>

#include "tests/support/builds.h"
#include "tests/support/guarded.h"
#include "tests/support/plane.h"

namespace {

using orbtest::GuardedBytes;
using orbtest::Placement;
using orbtest::Plane;
using orbtest::Random;

// ---- The equations, by division

// Three components, and black or what else is fourth.
using Pixel = std::array<int, 4>;

// The whole part of a fraction, down for negative ones too.
int floorOf(int64_t value, int64_t divisor) {
  return static_cast<int>(value / divisor - (value % divisor < 0 ? 1 : 0));
}
int lowByte(int value) {
  return ((value % 256) + 256) % 256;
}
int limited(int value) {
  return std::clamp(value, 0, 255);
}

int luma(int r, int g, int b) {
  return floorOf(19595 * r + 38470 * g + 7471 * b + 32768, 65536);
}
Pixel forwardA(Pixel p) {
  const auto [r, g, b, fourth] = p;
  return {luma(r, g, b), floorOf(-11059 * r - 21709 * g + 32768 * b + 8421375, 65536),
          floorOf(32768 * r - 27439 * g - 5329 * b + 8421375, 65536), fourth};
}
// Chroma of B from the sum of some pixels: a negative constant, and the low byte of what comes out.
Pixel chromaB(Pixel sum, int64_t constant, int64_t divisor) {
  const auto [r, g, b, fourth] = sum;
  return {0, lowByte(floorOf(32768 * b - 21709 * g - 11059 * r - constant, divisor)),
          lowByte(floorOf(32768 * r - 5329 * b - 27439 * g - constant, divisor)), 0};
}
Pixel forwardB(Pixel p) {
  const Pixel chroma = chromaB(p, 8372224, 65536);
  return {luma(p[0], p[1], p[2]), chroma[1], chroma[2], p[3]};
}

Pixel inverseA(Pixel p) {
  const int cb = p[1] - 128, cr = p[2] - 128;
  return {limited(p[0] + floorOf(91881 * cr + 32768, 65536)),
          limited(p[0] + floorOf(-22554 * cb + 32768 - 46802 * cr, 65536)),
          limited(p[0] + floorOf(116130 * cb + 32768, 65536)), p[3]};
}
Pixel inverseB(Pixel p) {
  const auto [y, cb, cr, fourth] = p;
  const auto cut = [](int64_t sum) { return static_cast<int16_t>(floorOf(sum, 65536)); };
  return {limited(cut(65536 * y + 91880 * cr - 11727880)),
          limited(cut(65536 * y - 22553 * cb - 46801 * cr + 8910128)),
          limited(cut(65536 * y + 116128 * cb - 14831618)), fourth};
}

Pixel complement(Pixel p) {
  return {255 - p[0], 255 - p[1], 255 - p[2], p[3]};
}
Pixel cmykForward(Pixel p) {
  return forwardA(complement(p));
}
Pixel cmykInverse(Pixel p) {
  return complement(inverseA(p));
}

// ---- Images of any layout, seen as pixels

struct Layout {
  enum Kind { kPlanes, kBytes, kWords, kYccPairs } kind;
  int channels;
  bool blueFirst = false;
  int greenBits = 0;
  int chromaColumns = 1;  // pixels that a chroma sample serves, in a row
  int chromaRows = 1;     // and in a column
};

constexpr Layout kLuma = {Layout::kPlanes, 1};
constexpr Layout kPlanes3 = {Layout::kPlanes, 3};
constexpr Layout kPlanes4 = {Layout::kPlanes, 4};
constexpr Layout kPlanes422 = {Layout::kPlanes, 3, false, 0, 2, 1};
constexpr Layout kPlanes420 = {Layout::kPlanes, 3, false, 0, 2, 2};
constexpr Layout kRgb3 = {Layout::kBytes, 3};
constexpr Layout kBgr3 = {Layout::kBytes, 3, true};
constexpr Layout kRgb4 = {Layout::kBytes, 4};
constexpr Layout kBgr4 = {Layout::kBytes, 4, true};
constexpr Layout kRgb555 = {Layout::kWords, 1, false, 5};
constexpr Layout kBgr555 = {Layout::kWords, 1, true, 5};
constexpr Layout kRgb565 = {Layout::kWords, 1, false, 6};
constexpr Layout kBgr565 = {Layout::kWords, 1, true, 6};
constexpr Layout kYccPairs = {Layout::kYccPairs, 1};

// One side of a call: pointers and steps, as any of the functions takes them.
struct Side {
  Orb8u* plane[4] = {};
  Orb32s step[3] = {};
  bool noArray = false;
  bool noSteps = false;

  template <class Pointer>
  Pointer pointer() {
    if constexpr (std::is_pointer_v<std::remove_pointer_t<Pointer>>) {
      return noArray ? nullptr : plane;
    } else {
      return reinterpret_cast<Pointer>(plane[0]);
    }
  }
  template <class Step>
  Step steps() {
    if constexpr (std::is_pointer_v<Step>) {
      return noSteps ? nullptr : step;
    } else {
      return step[0];
    }
  }
};

// `aval` reaches the functions that take it.
template <class Src, class SrcStep, class Dst, class DstStep, class... Aval>
OrbStatus call(OrbStatus(ORB_CALL* function)(Src, SrcStep, Dst, DstStep, OrbiSize, Aval...),
               Side src, Side dst, OrbiSize size, [[maybe_unused]] int aval = 0) {
  return function(src.pointer<Src>(), src.steps<SrcStep>(), dst.pointer<Dst>(),
                  dst.steps<DstStep>(), size, static_cast<Aval>(aval)...);
}

class Picture {
 public:
  // `placements` has one for each plane; planes of one size take the padding of the first. From the
  // bottom up, the first row of the picture is the last in memory and steps are negative.
  Picture(Layout layout, int width, int height, const std::array<Placement, 4>& placements,
          bool bottomUp = false)
      : layout_(layout), bottomUp_(bottomUp) {
    const int count = layout.kind == Layout::kPlanes ? layout.channels : 1;
    for (int i = 0; i < count; ++i) {
      const bool chroma = i == 1 || i == 2;
      const int columns = chroma ? layout.chromaColumns : 1;
      const int rows = chroma ? layout.chromaRows : 1;
      Placement at = placements[i];
      if (layout.chromaColumns == 1) at.padding = placements[0].padding;
      planes_.emplace_back(bytes((width + columns - 1) / columns), (height + rows - 1) / rows, at);
    }
  }

  template <class Generator>
  void fill(Generator generate) {
    for (Plane<Orb8u>& plane : planes_) plane.fill(generate);
  }
  void fillAnyOrExtreme(Random& random) {
    const bool extreme = random.oneIn(3);
    fill([&] { return extreme ? random.extreme<Orb8u>() : random.any<Orb8u>(); });
  }

  Pixel pixel(int x, int y) const {
    switch (layout_.kind) {
      case Layout::kPlanes: {
        Pixel p = {};
        for (size_t i = 0; i < planes_.size(); ++i) {
          const bool chroma = i == 1 || i == 2;
          p[i] =
              byte(i, chroma ? x / layout_.chromaColumns : x, chroma ? y / layout_.chromaRows : y);
        }
        return p;
      }
      case Layout::kBytes: {
        Pixel p = {};
        for (int i = 0; i < layout_.channels; ++i) p[i] = byte(0, x * layout_.channels + i, y);
        if (layout_.blueFirst) std::swap(p[0], p[2]);
        return p;
      }
      case Layout::kWords: {
        // Fields from the lowest up, each moved to the top of a byte.
        const int word = byte(0, 2 * x, y) + 256 * byte(0, 2 * x + 1, y);
        const int greens = 1 << layout_.greenBits;
        Pixel p = {word % 32 * 8, word / 32 % greens * (256 / greens), word / 32 / greens % 32 * 8,
                   0};
        if (layout_.blueFirst) std::swap(p[0], p[2]);
        return p;
      }
      default:
        return {byte(0, 2 * x, y), byte(0, x / 2 * 4 + 1, y), byte(0, x / 2 * 4 + 3, y), 0};
    }
  }

  void setPixel(int x, int y, Pixel p) {
    switch (layout_.kind) {
      case Layout::kPlanes:
        for (size_t i = 0; i < planes_.size(); ++i) setByte(i, x, y, p[i]);
        break;
      case Layout::kBytes:
        if (layout_.blueFirst) std::swap(p[0], p[2]);
        for (int i = 0; i < layout_.channels; ++i) setByte(0, x * layout_.channels + i, y, p[i]);
        break;
      default: {
        if (layout_.blueFirst) std::swap(p[0], p[2]);
        const int greens = 1 << layout_.greenBits;
        const int word = p[0] / 8 + p[1] / (256 / greens) * 32 + p[2] / 8 * 32 * greens;
        setByte(0, 2 * x, y, word % 256);
        setByte(0, 2 * x + 1, y, word / 256);
      }
    }
  }
  void setByte(size_t plane, int x, int y, int value) {
    planes_[plane].set(x, row(plane, y), static_cast<Orb8u>(value));
  }

  Side side() {
    Side side;
    for (size_t i = 0; i < planes_.size(); ++i) {
      Plane<Orb8u>& plane = planes_[i];
      side.plane[i] = plane.data() + ptrdiff_t{plane.step()} * row(i, 0);
      if (i < 3) side.step[i] = bottomUp_ ? -plane.step() : plane.step();
    }
    return side;
  }
  const std::vector<Plane<Orb8u>>& planes() const { return planes_; }

  testing::AssertionResult sameBytes(const Picture& other) const {
    for (size_t i = 0; i < planes_.size(); ++i) {
      const testing::AssertionResult result = planes_[i].sameBytes(other.planes_[i]);
      if (!result) return testing::AssertionFailure() << "plane " << i << ": " << result.message();
    }
    return testing::AssertionSuccess();
  }

 private:
  int bytes(int columns) const {
    switch (layout_.kind) {
      case Layout::kPlanes:
        return columns;
      case Layout::kBytes:
        return columns * layout_.channels;
      case Layout::kWords:
        return columns * 2;
      default:
        return (columns + 1) / 2 * 4;
    }
  }
  int row(size_t plane, int y) const { return bottomUp_ ? planes_[plane].height() - 1 - y : y; }
  int byte(size_t plane, int x, int y) const { return planes_[plane].at(x, row(plane, y)); }

  Layout layout_;
  bool bottomUp_;
  std::vector<Plane<Orb8u>> planes_;
};

// The planes of a picture in memory that ends where they end.
class GuardedPicture {
 public:
  explicit GuardedPicture(const Picture& picture) {
    for (const Plane<Orb8u>& plane : picture.planes()) {
      const size_t i = memory_.size();
      const size_t size = static_cast<size_t>(plane.step()) * (plane.height() - 1) + plane.width();
      memory_.push_back(std::make_unique<GuardedBytes>(size));
      side_.plane[i] = memory_[i]->data();
      if (i < 3) side_.step[i] = plane.step();
      std::copy_n(plane.data(), size, side_.plane[i]);
    }
  }
  Side side() const { return side_; }

 private:
  std::vector<std::unique_ptr<GuardedBytes>> memory_;
  Side side_;
};

// ---- What tells the functions apart

enum class Checks { kByPixels, kByPairs, kByGroups };
enum class OddColumn { kKept, kDropped, kCompleted };

struct Conversion {
  Layout src;
  Layout dst;
  Checks checks;
  Pixel (*convert)(Pixel);
  OddColumn oddColumn = OddColumn::kKept;
  bool warns = true;  // of odd sizes, where they matter

  // Pixels of a column that go together.
  int groupRows() const { return std::max(src.chromaRows, dst.chromaRows); }
  int smallestWidth() const { return checks == Checks::kByPixels ? 1 : 2; }
  int smallestHeight() const { return checks == Checks::kByGroups ? 2 : 1; }
  bool takesNegativeSteps() const { return checks != Checks::kByPixels; }

  // The columns that are read and written.
  int columns(int width) const {
    switch (oddColumn) {
      case OddColumn::kKept:
        return width;
      case OddColumn::kDropped:
        return width / 2 * 2;
      default:
        return (width + 1) / 2 * 2;
    }
  }
  OrbStatus status(int width, int height) const {
    const bool odd = width % 2 != 0 || (groupRows() == 2 && height % 2 != 0);
    return odd && warns && oddColumn != OddColumn::kKept ? orbStsDoubleSize : orbStsNoErr;
  }

  void apply(const Picture& from, Picture& to, int width, int height, int aval) const {
    const int columnsDone = columns(width);
    const int rowsDone = height / groupRows() * groupRows();
    for (int y = 0; y < rowsDone; ++y) {
      for (int x = 0; x < columnsDone; ++x) {
        Pixel p = from.pixel(x, y);
        if (dst.chromaColumns == 2) {
          to.setByte(0, x, y, luma(p[0], p[1], p[2]));
          continue;
        }
        p = convert(p);
        if (dst.channels == 4 && src.channels == 3) p[3] = aval;
        to.setPixel(x, y, p);
      }
    }
    if (dst.chromaColumns == 1) return;
    const int pixels = 2 * groupRows();
    for (int y = 0; y < height / groupRows(); ++y) {
      for (int x = 0; x < width / 2; ++x) {
        Pixel sum = {};
        for (int i = 0; i < pixels; ++i) {
          const Pixel p = from.pixel(2 * x + i % 2, groupRows() * y + i / 2);
          for (int c = 0; c < 3; ++c) sum[c] += p[c];
        }
        const Pixel chroma =
            pixels == 2 ? chromaB(sum, 16760832, 131072) : chromaB(sum, 33521664, 262144);
        to.setByte(1, x, y, chroma[1]);
        to.setByte(2, x, y, chroma[2]);
      }
    }
  }
};

Conversion byPixels(Layout src, Layout dst, Pixel (*convert)(Pixel)) {
  return {src, dst, Checks::kByPixels, convert};
}
Conversion byPairs(Layout src, Layout dst, Pixel (*convert)(Pixel)) {
  return {src, dst, Checks::kByPairs, convert};
}
Conversion halved(Layout src, Layout dst) {
  return {src, dst, Checks::kByPairs, nullptr, OddColumn::kDropped};
}
Conversion doubled(Layout src, Layout dst, OddColumn oddColumn) {
  return {src, dst, Checks::kByPairs, inverseB, oddColumn};
}
Conversion doubledPairs() {
  return {kYccPairs, kRgb3, Checks::kByGroups, inverseA, OddColumn::kCompleted, false};
}

// ---- Checks

// Calls with each fault by itself and with those that are looked for later.
template <class Src, class SrcStep, class Dst, class DstStep, class... Aval>
void expectChecks(OrbStatus(ORB_CALL* function)(Src, SrcStep, Dst, DstStep, OrbiSize, Aval...),
                  const Conversion& conversion) {
  Picture src(conversion.src, 8, 4, {}), dst(conversion.dst, 8, 4, {});
  src.fill([] { return Orb8u{77}; });
  const Picture untouched(conversion.dst, 8, 4, {});
  const Side goodSrc = src.side(), goodDst = dst.side();
  const OrbiSize goodSize = {8, 4};

  const int w = conversion.smallestWidth(), h = conversion.smallestHeight();
  const OrbiSize badSizes[] = {{w - 1, h}, {w, h - 1}, {0, 0}, {-8, 4}, {8, -4}};
  std::vector<Orb32s> badSteps = {0};
  if (!conversion.takesNegativeSteps()) {
    badSteps.push_back(-1);
    badSteps.push_back(std::numeric_limits<Orb32s>::min());
  }

  // Every way to have one null pointer on a side, and every way to have one bad step.
  const auto nulls = [](Side good, int planes, bool array, bool steps) {
    std::vector<Side> sides;
    for (int i = 0; i < planes; ++i) {
      sides.push_back(good);
      sides.back().plane[i] = nullptr;
    }
    if (array) {
      sides.push_back(good);
      sides.back().noArray = true;
    }
    if (steps) {
      sides.push_back(good);
      sides.back().noSteps = true;
    }
    return sides;
  };
  const auto stepped = [&](Side good, bool steps) {
    std::vector<Side> sides;
    for (int i = 0; i < (steps ? 3 : 1); ++i) {
      for (const Orb32s step : badSteps) {
        sides.push_back(good);
        sides.back().step[i] = step;
      }
    }
    return sides;
  };
  const auto planesOf = [](Layout layout) {
    return layout.kind == Layout::kPlanes ? layout.channels : 1;
  };
  constexpr bool kSrcArray = std::is_pointer_v<std::remove_pointer_t<Src>>;
  constexpr bool kDstArray = std::is_pointer_v<std::remove_pointer_t<Dst>>;
  const auto nullSrcs =
      nulls(goodSrc, planesOf(conversion.src), kSrcArray, std::is_pointer_v<SrcStep>);
  const auto nullDsts =
      nulls(goodDst, planesOf(conversion.dst), kDstArray, std::is_pointer_v<DstStep>);
  const auto steppedSrcs = stepped(goodSrc, std::is_pointer_v<SrcStep>);
  const auto steppedDsts = stepped(goodDst, std::is_pointer_v<DstStep>);

  // Pointers come before all else.
  for (const Side& nullSrc : nullSrcs) {
    EXPECT_EQ(call(function, nullSrc, goodDst, goodSize), orbStsNullPtrErr);
    for (const Side& side : steppedDsts) {
      EXPECT_EQ(call(function, nullSrc, side, {0, 0}), orbStsNullPtrErr);
    }
  }
  for (const Side& nullDst : nullDsts) {
    EXPECT_EQ(call(function, goodSrc, nullDst, goodSize), orbStsNullPtrErr);
    for (const Side& side : steppedSrcs) {
      EXPECT_EQ(call(function, side, nullDst, {0, 0}), orbStsNullPtrErr);
    }
  }

  // Then steps and sizes, in one order or the other.
  const OrbStatus first = conversion.checks == Checks::kByPixels ? orbStsStepErr : orbStsSizeErr;
  for (const Side& side : steppedSrcs) {
    EXPECT_EQ(call(function, side, goodDst, goodSize), orbStsStepErr);
    for (const OrbiSize size : badSizes) EXPECT_EQ(call(function, side, goodDst, size), first);
  }
  for (const Side& side : steppedDsts) {
    EXPECT_EQ(call(function, goodSrc, side, goodSize), orbStsStepErr);
    for (const OrbiSize size : badSizes) EXPECT_EQ(call(function, goodSrc, side, size), first);
  }
  for (const OrbiSize size : badSizes) {
    EXPECT_EQ(call(function, goodSrc, goodDst, size), orbStsSizeErr);
  }
  EXPECT_TRUE(dst.sameBytes(untouched));

  EXPECT_EQ(call(function, goodSrc, goodDst, {w, h}), conversion.status(w, h));
  EXPECT_EQ(call(function, goodSrc, goodDst, goodSize), orbStsNoErr);
}

// ---- Meaning and agreement

std::array<Placement, 4> placements(Random& random) {
  std::array<Placement, 4> all;
  for (Placement& placement : all) placement = Placement::any(random);
  return all;
}

// Every number of pixels behind the vectors of every width and behind whole stretches.
constexpr int kWidths[] = {1,  2,  3,  5,  7,  8,  9,   16,  17,  31, 32,
                           33, 63, 64, 65, 66, 97, 127, 128, 129, 200};

template <class Function>
void expectConverts(Function* function, const Conversion& conversion) {
  Random random("convert");
  for (const int width : kWidths) {
    if (width < conversion.smallestWidth()) continue;
    for (int height = conversion.smallestHeight(); height <= 5; ++height) {
      SCOPED_TRACE(testing::Message() << width << " x " << height);
      const int aval = random.any<Orb8u>();
      const bool bottomUp = conversion.takesNegativeSteps() && random.oneIn(3);
      const int room = std::max(width, conversion.columns(width));
      Picture src(conversion.src, room, height, placements(random), bottomUp);
      src.fillAnyOrExtreme(random);
      const auto places = placements(random);
      Picture expected(conversion.dst, room, height, places, bottomUp);
      Picture actual(conversion.dst, room, height, places, bottomUp);
      conversion.apply(src, expected, width, height, aval);
      ASSERT_EQ(call(function, src.side(), actual.side(), {width, height}, aval),
                conversion.status(width, height));
      ASSERT_TRUE(actual.sameBytes(expected)) << (bottomUp ? "bottom up" : "top down");
    }
  }
}

template <class Function>
void expectAgreement(Function* px, Function* build, const Conversion& conversion, Random& random) {
  for (int round = 0; round < 60; ++round) {
    const int width = random.between(conversion.smallestWidth(), 150);
    const int height = random.between(conversion.smallestHeight(), 4);
    SCOPED_TRACE(testing::Message() << width << " x " << height);
    const int aval = random.any<Orb8u>();
    const int room = std::max(width, conversion.columns(width));
    Picture src(conversion.src, room, height, placements(random));
    src.fillAnyOrExtreme(random);
    const GuardedPicture guarded(src);
    const auto places = placements(random);
    Picture expected(conversion.dst, room, height, places);
    Picture actual(conversion.dst, room, height, places);
    EXPECT_EQ(call(build, guarded.side(), actual.side(), {width, height}, aval),
              call(px, guarded.side(), expected.side(), {width, height}, aval));
    ASSERT_TRUE(actual.sameBytes(expected));
  }
}

#define COLOR_TESTS(name, ...)                                 \
  ORB_MEANING(name, ChecksInOrder) {                           \
    expectChecks(ORB(name), __VA_ARGS__);                      \
  }                                                            \
  ORB_MEANING(name, Converts) {                                \
    expectConverts(ORB(name), __VA_ARGS__);                    \
  }                                                            \
  ORB_AGREEMENT(name) {                                        \
    expectAgreement(PX(name), ORB(name), __VA_ARGS__, random); \
  }

COLOR_TESTS(orbiRGBToYCbCr_JPEG_8u_P3R, byPixels(kPlanes3, kPlanes3, forwardA))
COLOR_TESTS(orbiRGBToYCbCr_JPEG_8u_C3P3R, byPixels(kRgb3, kPlanes3, forwardA))
COLOR_TESTS(orbiBGRToYCbCr_JPEG_8u_C3P3R, byPixels(kBgr3, kPlanes3, forwardA))
COLOR_TESTS(orbiRGB555ToYCbCr_JPEG_16u8u_C3P3R, byPixels(kRgb555, kPlanes3, forwardA))
COLOR_TESTS(orbiBGR555ToYCbCr_JPEG_16u8u_C3P3R, byPixels(kBgr555, kPlanes3, forwardA))
COLOR_TESTS(orbiRGB565ToYCbCr_JPEG_16u8u_C3P3R, byPixels(kRgb565, kPlanes3, forwardA))
COLOR_TESTS(orbiBGR565ToYCbCr_JPEG_16u8u_C3P3R, byPixels(kBgr565, kPlanes3, forwardA))
COLOR_TESTS(orbiRGBToYCbCr_JPEG_8u_C4P3R, byPairs(kRgb4, kPlanes3, forwardB))
COLOR_TESTS(orbiBGRToYCbCr_JPEG_8u_C4P3R, byPairs(kBgr4, kPlanes3, forwardB))

COLOR_TESTS(orbiRGBToY_JPEG_8u_P3C1R, byPixels(kPlanes3, kLuma, forwardA))
COLOR_TESTS(orbiRGBToY_JPEG_8u_C3C1R, byPixels(kRgb3, kLuma, forwardA))
COLOR_TESTS(orbiBGRToY_JPEG_8u_C3C1R, byPixels(kBgr3, kLuma, forwardA))

COLOR_TESTS(orbiRGBToYCbCr422_JPEG_8u_C3P3R, halved(kRgb3, kPlanes422))
COLOR_TESTS(orbiBGRToYCbCr422_JPEG_8u_C3P3R, halved(kBgr3, kPlanes422))
COLOR_TESTS(orbiRGBToYCbCr422_JPEG_8u_C4P3R, halved(kRgb4, kPlanes422))
COLOR_TESTS(orbiBGRToYCbCr422_JPEG_8u_C4P3R, halved(kBgr4, kPlanes422))
COLOR_TESTS(orbiRGBToYCbCr411_JPEG_8u_C3P3R, halved(kRgb3, kPlanes420))
COLOR_TESTS(orbiBGRToYCbCr411_JPEG_8u_C3P3R, halved(kBgr3, kPlanes420))
COLOR_TESTS(orbiRGBToYCbCr411_JPEG_8u_C4P3R, halved(kRgb4, kPlanes420))
COLOR_TESTS(orbiBGRToYCbCr411_JPEG_8u_C4P3R, halved(kBgr4, kPlanes420))

COLOR_TESTS(orbiYCbCrToRGB_JPEG_8u_P3R, byPixels(kPlanes3, kPlanes3, inverseA))
COLOR_TESTS(orbiYCbCrToRGB_JPEG_8u_P3C3R, byPixels(kPlanes3, kRgb3, inverseA))
COLOR_TESTS(orbiYCbCrToBGR_JPEG_8u_P3C3R, byPixels(kPlanes3, kBgr3, inverseA))
COLOR_TESTS(orbiYCbCrToRGB555_JPEG_8u16u_P3C3R, byPixels(kPlanes3, kRgb555, inverseA))
COLOR_TESTS(orbiYCbCrToBGR555_JPEG_8u16u_P3C3R, byPixels(kPlanes3, kBgr555, inverseA))
COLOR_TESTS(orbiYCbCrToRGB565_JPEG_8u16u_P3C3R, byPixels(kPlanes3, kRgb565, inverseA))
COLOR_TESTS(orbiYCbCrToBGR565_JPEG_8u16u_P3C3R, byPixels(kPlanes3, kBgr565, inverseA))
COLOR_TESTS(orbiYCbCrToRGB_JPEG_8u_P3C4R, byPairs(kPlanes3, kRgb4, inverseB))
COLOR_TESTS(orbiYCbCrToBGR_JPEG_8u_P3C4R, byPairs(kPlanes3, kBgr4, inverseB))

COLOR_TESTS(orbiYCbCr422ToRGB_JPEG_8u_P3C3R, doubled(kPlanes422, kRgb3, OddColumn::kDropped))
COLOR_TESTS(orbiYCbCr422ToBGR_JPEG_8u_P3C3R, doubled(kPlanes422, kBgr3, OddColumn::kDropped))
COLOR_TESTS(orbiYCbCr422ToRGB_JPEG_8u_P3C4R, doubled(kPlanes422, kRgb4, OddColumn::kDropped))
COLOR_TESTS(orbiYCbCr422ToBGR_JPEG_8u_P3C4R, doubled(kPlanes422, kBgr4, OddColumn::kDropped))
COLOR_TESTS(orbiYCbCr422ToRGB_JPEG_8u_C2C3R, doubledPairs())
COLOR_TESTS(orbiYCbCr411ToRGB_JPEG_8u_P3C3R, doubled(kPlanes420, kRgb3, OddColumn::kDropped))
COLOR_TESTS(orbiYCbCr411ToBGR_JPEG_8u_P3C3R, doubled(kPlanes420, kBgr3, OddColumn::kCompleted))
COLOR_TESTS(orbiYCbCr411ToRGB_JPEG_8u_P3C4R, doubled(kPlanes420, kRgb4, OddColumn::kCompleted))
COLOR_TESTS(orbiYCbCr411ToBGR_JPEG_8u_P3C4R, doubled(kPlanes420, kBgr4, OddColumn::kCompleted))

COLOR_TESTS(orbiCMYKToYCCK_JPEG_8u_C4P4R, byPixels(kRgb4, kPlanes4, cmykForward))
COLOR_TESTS(orbiCMYKToYCCK_JPEG_8u_P4R, byPixels(kPlanes4, kPlanes4, cmykForward))
COLOR_TESTS(orbiYCCKToCMYK_JPEG_8u_P4C4R, byPixels(kPlanes4, kRgb4, cmykInverse))
COLOR_TESTS(orbiYCCKToCMYK_JPEG_8u_P4R, byPixels(kPlanes4, kPlanes4, cmykInverse))

// ---- Every colour there is, once through each of the four arithmetics

// Calls `expect` with 256 pictures of 65536 colours.
template <class Expect>
void onEveryColour(Layout layout, Expect expect) {
  for (int third = 0; third < 256; ++third) {
    SCOPED_TRACE(testing::Message() << "third component " << third);
    Picture src(layout, 256, 256, {});
    for (int y = 0; y < 256; ++y) {
      for (int x = 0; x < 256; ++x) src.setPixel(x, y, {x, y, third, 0});
    }
    expect(src);
    if (testing::Test::HasFailure()) return;
  }
}

template <class Function>
void expectEveryColour(Function* const (&bodies)[orb::kBuildCount], const Conversion& conversion) {
  onEveryColour(conversion.src, [&](Picture& src) {
    Picture expected(conversion.dst, 256, 256, {});
    conversion.apply(src, expected, 256, 256, 0);
    for (const orbtest::TestBuild& build : orbtest::runnableBuilds()) {
      Picture actual(conversion.dst, 256, 256, {});
      ASSERT_EQ(call(bodies[build.index], src.side(), actual.side(), {256, 256}), orbStsNoErr);
      ASSERT_TRUE(actual.sameBytes(expected)) << "build " << build.tag;
    }
  });
}

TEST(JpegColor, EveryColourForwardA) {
  expectEveryColour(orbRow_orbiRGBToYCbCr_JPEG_8u_P3R.body, byPixels(kPlanes3, kPlanes3, forwardA));
}
TEST(JpegColor, EveryColourForwardB) {
  expectEveryColour(orbRow_orbiRGBToYCbCr_JPEG_8u_C4P3R.body, byPairs(kRgb4, kPlanes3, forwardB));
}
TEST(JpegColor, EveryColourInverseA) {
  expectEveryColour(orbRow_orbiYCbCrToRGB_JPEG_8u_P3R.body, byPixels(kPlanes3, kPlanes3, inverseA));
}
TEST(JpegColor, EveryColourInverseB) {
  expectEveryColour(orbRow_orbiYCbCrToRGB_JPEG_8u_P3C4R.body, byPairs(kPlanes3, kRgb4, inverseB));
}

// A is JFIF's equations to nearest, but for what five decimals of the coefficients cost.
TEST(JpegColor, EveryColourIsNearTheRealEquations) {
  onEveryColour(kPlanes3, [](Picture& src) {
    Picture ycc(kPlanes3, 256, 256, {}), rgb(kPlanes3, 256, 256, {});
    const auto near = [](int value, double exact) {
      return std::abs(value - std::clamp(exact, 0.0, 255.0)) < 0.505;
    };
    ASSERT_EQ(
        call(orbRow_orbiRGBToYCbCr_JPEG_8u_P3R.body[orb::kPx], src.side(), ycc.side(), {256, 256}),
        orbStsNoErr);
    ASSERT_EQ(
        call(orbRow_orbiYCbCrToRGB_JPEG_8u_P3R.body[orb::kPx], src.side(), rgb.side(), {256, 256}),
        orbStsNoErr);
    int far = 0;
    for (int y = 0; y < 256; ++y) {
      for (int x = 0; x < 256; ++x) {
        const Pixel from = src.pixel(x, y), forward = ycc.pixel(x, y), back = rgb.pixel(x, y);
        const double r = from[0], g = from[1], b = from[2];
        far += !near(forward[0], 0.299 * r + 0.587 * g + 0.114 * b) +
               !near(forward[1], (-0.299 * r - 0.587 * g + 0.886 * b) / 1.772 + 128) +
               !near(forward[2], (0.701 * r - 0.587 * g - 0.114 * b) / 1.402 + 128);
        const double luma = from[0], cb = from[1] - 128, cr = from[2] - 128;
        far += !near(back[0], luma + 1.402 * cr) +
               !near(back[1], luma - (0.114 * 1.772 * cb + 0.299 * 1.402 * cr) / 0.587) +
               !near(back[2], luma + 1.772 * cb);
      }
    }
    ASSERT_EQ(far, 0);
  });
}

// ---- Single values and shapes

// One call on a single colour, and what its first pixel becomes.
template <class Function>
Pixel convertOne(Function* function, Layout from, Layout to, Pixel colour, int aval = 0) {
  Picture src(from, 4, 2, {}), dst(to, 4, 2, {});
  for (int i = 0; i < 8; ++i) src.setPixel(i % 4, i / 4, colour);
  EXPECT_EQ(call(function, src.side(), dst.side(), {4, 2}, aval), orbStsNoErr);
  return dst.pixel(0, 0);
}

ORB_MEANING(orbiRGBToYCbCr_JPEG_8u_C3P3R, KnownColours) {
  const auto convert = [&](Pixel colour) {
    return convertOne(ORB(orbiRGBToYCbCr_JPEG_8u_C3P3R), kRgb3, kPlanes3, colour);
  };
  EXPECT_EQ(convert({0, 0, 0}), (Pixel{0, 128, 128}));
  EXPECT_EQ(convert({255, 255, 255}), (Pixel{255, 128, 128}));
  EXPECT_EQ(convert({0, 0, 255}), (Pixel{29, 255, 107}));
  EXPECT_EQ(convert({255, 0, 0}), (Pixel{76, 85, 255}));
}

// Cb is 127.67 and Cr 127.58 there: one arithmetic rounds to nearest, the other by a quarter.
ORB_MEANING(orbiRGBToYCbCr_JPEG_8u_C4P3R, RoundsChromaByAQuarter) {
  const Pixel green = {0, 1, 0, 99};
  EXPECT_EQ(convertOne(ORB(orbiRGBToYCbCr_JPEG_8u_C3P3R), kRgb3, kPlanes3, green),
            (Pixel{1, 128, 128}));
  EXPECT_EQ(convertOne(ORB(orbiRGBToYCbCr_JPEG_8u_C4P3R), kRgb4, kPlanes3, green),
            (Pixel{1, 127, 127}));
}
ORB_MEANING(orbiYCbCrToRGB_JPEG_8u_P3C4R, DiffersFromTheOtherArithmetic) {
  const Pixel ycc = {128, 2, 97};
  EXPECT_EQ(convertOne(ORB(orbiYCbCrToRGB_JPEG_8u_P3C3R), kPlanes3, kRgb3, ycc),
            (Pixel{85, 194, 0}));
  EXPECT_EQ(convertOne(ORB(orbiYCbCrToRGB_JPEG_8u_P3C4R), kPlanes3, kRgb4, ycc, 201),
            (Pixel{85, 193, 0, 201}));
}

template <class Function>
void expectFourthByteIgnored(Function* function, Layout to) {
  Random random("fourth");
  Picture src(kRgb4, 70, 2, {}), other(kRgb4, 70, 2, {});
  src.fillAnyOrExtreme(random);
  for (int i = 0; i < 140; ++i) {
    Pixel p = src.pixel(i % 70, i / 70);
    p[3] = 255 - p[3];
    other.setPixel(i % 70, i / 70, p);
  }
  Picture expected(to, 70, 2, {}), actual(to, 70, 2, {});
  EXPECT_EQ(call(function, src.side(), expected.side(), {70, 2}), orbStsNoErr);
  EXPECT_EQ(call(function, other.side(), actual.side(), {70, 2}), orbStsNoErr);
  EXPECT_TRUE(actual.sameBytes(expected));
}
ORB_MEANING(orbiRGBToYCbCr_JPEG_8u_C4P3R, IgnoresTheFourthByte) {
  expectFourthByteIgnored(ORB(orbiRGBToYCbCr_JPEG_8u_C4P3R), kPlanes3);
}
ORB_MEANING(orbiRGBToYCbCr422_JPEG_8u_C4P3R, IgnoresTheFourthByte) {
  expectFourthByteIgnored(ORB(orbiRGBToYCbCr422_JPEG_8u_C4P3R), kPlanes422);
}
ORB_MEANING(orbiRGBToYCbCr411_JPEG_8u_C4P3R, IgnoresTheFourthByte) {
  expectFourthByteIgnored(ORB(orbiRGBToYCbCr411_JPEG_8u_C4P3R), kPlanes420);
}

// Rows that overlap: each lies one byte before the one above it, and the last one stays.
ORB_MEANING(orbiRGBToYCbCr_JPEG_8u_C4P3R, TakesAStepOfMinusOne) {
  Orb8u row[9] = {0, 0, 0, 0, 0, 200, 100, 50, 0};
  Orb8u y[4] = {9, 9, 9, 9}, cb[4] = {9, 9, 9, 9}, cr[4] = {9, 9, 9, 9};
  Orb8u* const dst[3] = {y + 1, cb + 1, cr + 1};
  ASSERT_EQ(ORB(orbiRGBToYCbCr_JPEG_8u_C4P3R)(row + 1, -1, dst, -1, {2, 2}), orbStsNoErr);
  const Pixel lower[2] = {forwardB({0, 0, 0}), forwardB({0, 200, 100})};
  const Pixel upperRight = forwardB({200, 100, 50});
  EXPECT_EQ(y[0], lower[0][0]);
  EXPECT_EQ(y[1], lower[1][0]);
  EXPECT_EQ(y[2], upperRight[0]);
  EXPECT_EQ(y[3], 9);
  EXPECT_EQ(cb[1], lower[1][1]);
  EXPECT_EQ(cb[2], upperRight[1]);
  EXPECT_EQ(cr[0], lower[0][2]);
  EXPECT_EQ(cr[2], upperRight[2]);
}

// How many pixels of the first row have been written, of eight that were all 9.
template <class Function>
int writtenColumns(Function* function, Layout from, Layout to, OrbiSize size, OrbStatus status) {
  Picture src(from, 8, 4, {}), dst(to, 8, 4, {});
  src.fill([] { return Orb8u{77}; });
  dst.fill([] { return Orb8u{9}; });
  EXPECT_EQ(call(function, src.side(), dst.side(), size, 77), status);
  int columns = 0;
  while (columns < 8 && dst.pixel(columns, 0)[0] != 9) ++columns;
  for (int x = columns; x < 8; ++x) EXPECT_EQ(dst.pixel(x, 0)[0], 9);
  return columns;
}

ORB_MEANING(orbiRGBToYCbCr422_JPEG_8u_C3P3R, DropsAnOddColumn) {
  const auto function = ORB(orbiRGBToYCbCr422_JPEG_8u_C3P3R);
  EXPECT_EQ(writtenColumns(function, kRgb3, kPlanes422, {5, 1}, orbStsDoubleSize), 4);
  EXPECT_EQ(writtenColumns(function, kRgb3, kPlanes422, {6, 1}, orbStsNoErr), 6);
}
ORB_MEANING(orbiRGBToYCbCr411_JPEG_8u_C3P3R, DoesNothingToOneRow) {
  const auto function = ORB(orbiRGBToYCbCr411_JPEG_8u_C3P3R);
  EXPECT_EQ(writtenColumns(function, kRgb3, kPlanes420, {4, 1}, orbStsDoubleSize), 0);
  EXPECT_EQ(writtenColumns(function, kRgb3, kPlanes420, {4, 2}, orbStsNoErr), 4);
}
ORB_MEANING(orbiYCbCr411ToRGB_JPEG_8u_P3C3R, DropsAnOddColumn) {
  const auto function = ORB(orbiYCbCr411ToRGB_JPEG_8u_P3C3R);
  EXPECT_EQ(writtenColumns(function, kPlanes420, kRgb3, {3, 2}, orbStsDoubleSize), 2);
  EXPECT_EQ(writtenColumns(function, kPlanes420, kRgb3, {4, 1}, orbStsDoubleSize), 0);
}
ORB_MEANING(orbiYCbCr411ToBGR_JPEG_8u_P3C3R, CompletesAnOddColumn) {
  const auto function = ORB(orbiYCbCr411ToBGR_JPEG_8u_P3C3R);
  EXPECT_EQ(writtenColumns(function, kPlanes420, kBgr3, {3, 2}, orbStsDoubleSize), 4);
  EXPECT_EQ(writtenColumns(function, kPlanes420, kBgr3, {4, 1}, orbStsDoubleSize), 0);
}
ORB_MEANING(orbiYCbCr422ToRGB_JPEG_8u_C2C3R, CompletesAnOddColumnInSilence) {
  const auto function = ORB(orbiYCbCr422ToRGB_JPEG_8u_C2C3R);
  EXPECT_EQ(writtenColumns(function, kYccPairs, kRgb3, {5, 2}, orbStsNoErr), 6);
  EXPECT_EQ(writtenColumns(function, kYccPairs, kRgb3, {4, 1}, orbStsSizeErr), 0);
}

// Planes onto themselves.
template <class Function>
void expectInPlace(Function* function, Layout layout) {
  Random random("in place");
  for (const int width : kWidths) {
    Picture src(layout, width, 3, {}), expected(layout, width, 3, {});
    src.fillAnyOrExtreme(random);
    EXPECT_EQ(call(function, src.side(), expected.side(), {width, 3}), orbStsNoErr);
    EXPECT_EQ(call(function, src.side(), src.side(), {width, 3}), orbStsNoErr);
    ASSERT_TRUE(src.sameBytes(expected)) << width;
  }
}
ORB_MEANING(orbiRGBToYCbCr_JPEG_8u_P3R, InPlace) {
  expectInPlace(ORB(orbiRGBToYCbCr_JPEG_8u_P3R), kPlanes3);
}
ORB_MEANING(orbiYCbCrToRGB_JPEG_8u_P3R, InPlace) {
  expectInPlace(ORB(orbiYCbCrToRGB_JPEG_8u_P3R), kPlanes3);
}
ORB_MEANING(orbiCMYKToYCCK_JPEG_8u_P4R, InPlace) {
  expectInPlace(ORB(orbiCMYKToYCCK_JPEG_8u_P4R), kPlanes4);
}
ORB_MEANING(orbiYCCKToCMYK_JPEG_8u_P4R, InPlace) {
  expectInPlace(ORB(orbiYCCKToCMYK_JPEG_8u_P4R), kPlanes4);
}

}  // namespace
