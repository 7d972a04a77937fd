// Between the pixels of an MCU and its blocks, with the level shift.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include "tests/support/builds.h"
#include "tests/support/faults.h"
#include "tests/support/guarded.h"
#include "tests/support/plane.h"

namespace {

using orbtest::expectChecks;
using orbtest::Guard;
using orbtest::GuardedBytes;
using orbtest::makeRow;
using orbtest::Placement;
using orbtest::Plane;
using orbtest::Random;

// ---- The equations, by division

// Three channels of a pixel or values of an MCU, and a fourth.
using Values = std::array<int, 4>;

// The whole part of a fraction, down for negative ones too.
int floorOf(int64_t value, int64_t divisor) {
  return static_cast<int>(value / divisor - (value % divisor < 0 ? 1 : 0));
}
int limited(int value) {
  return std::clamp(value, 0, 255);
}
// Modulo 2^32, as a signed value.
int64_t wrapped(int64_t value) {
  const int64_t all = int64_t{1} << 32;
  const int64_t low = ((value % all) + all) % all;
  return low < all / 2 ? low : low - all;
}

// The luma of a pixel, and the chroma of the sum of some pixels.
int lumaOf(Values p) {
  return floorOf(19595 * p[0] + 38470 * p[1] + 7471 * p[2], 65536) - 128;
}
std::array<int, 2> chromaOf(Values sum, int pixels) {
  const auto [r, g, b, fourth] = sum;
  return {floorOf(-11059 * r - 21709 * g + 32768 * b, 65536 * pixels),
          floorOf(32768 * r - 27439 * g - 5329 * b, 65536 * pixels)};
}

// What chroma adds to red, green and blue.
std::array<int, 3> offsets(int64_t cb, int64_t cr) {
  return {floorOf(wrapped(91881 * cr), 65536), floorOf(wrapped(-22554 * cb - 46802 * cr), 65536),
          floorOf(wrapped(116130 * cb), 65536)};
}
Values colourOf(int y, int cb, int cr) {
  const auto [r, g, b] = offsets(cb, cr);
  return {limited(y + r + 128), limited(y + g + 128), limited(y + b + 128), 0};
}

// ---- Pixels of any format

enum class Format { kRgb, kBgr, kBgr555, kBgr565, kCmyk, kThreeSamples, kPairs };

int bytesOf(Format format) {
  switch (format) {
    case Format::kRgb:
    case Format::kBgr:
    case Format::kThreeSamples:
      return 3;
    case Format::kCmyk:
      return 4;
    default:
      return 2;
  }
}

// Fields from the lowest up, each at the top of a byte.
Values fieldsOf(int word, int greens) {
  return {word / 32 / greens % 32 * 8, word / 32 % greens * (256 / greens), word % 32 * 8, 0};
}

Values readPixel(Format format, const Orb8u* row, int x) {
  const Orb8u* const p = row + x * bytesOf(format);
  switch (format) {
    case Format::kBgr:
      return {p[2], p[1], p[0], 0};
    case Format::kBgr555:
      return fieldsOf(p[0] + 256 * p[1], 32);
    case Format::kBgr565:
      return fieldsOf(p[0] + 256 * p[1], 64);
    case Format::kCmyk:
      return {255 - p[0], 255 - p[1], 255 - p[2], p[3]};
    case Format::kPairs:
      return {p[0], row[x / 2 * 4 + 1], row[x / 2 * 4 + 3], 0};
    default:
      return {p[0], p[1], p[2], 0};
  }
}

void writePixel(Format format, Orb8u* row, int x, Values value) {
  Orb8u* const p = row + x * bytesOf(format);
  const auto [r, g, b, fourth] = value;
  const auto put = [](Orb8u* at, std::initializer_list<int> bytes) {
    for (const int byte : bytes) *at++ = static_cast<Orb8u>(byte);
  };
  const auto putWord = [&](int word) { put(p, {word % 256, word / 256}); };
  switch (format) {
    case Format::kBgr:
      return put(p, {b, g, r});
    case Format::kBgr555:
      return putWord(b / 8 + g / 8 * 32 + r / 8 * 1024);
    case Format::kBgr565:
      return putWord(b / 8 + g / 4 * 32 + r / 8 * 2048);
    case Format::kCmyk:
      return put(p, {255 - r, 255 - g, 255 - b, fourth});
    case Format::kPairs:
      put(p, {r});
      put(row + x / 2 * 4 + 1, {g});
      return put(row + x / 2 * 4 + 3, {b});
    default:
      return put(p, {r, g, b});
  }
}

// ---- MCUs

struct Shape {
  int width, height;  // in pixels
};
constexpr Shape k444 = {8, 8}, k422 = {16, 8}, k411 = {16, 16};

// What a function converts between.
struct Family {
  Format format;
  Shape shape;

  bool hasColour() const { return format != Format::kThreeSamples && format != Format::kPairs; }
  int components() const { return format == Format::kCmyk ? 4 : 3; }
  bool isSubsampled(int component) const { return component == 1 || component == 2; }
  int blocks(int component) const {
    return isSubsampled(component) ? 1 : shape.width * shape.height / 64;
  }
  int rowBytes() const { return shape.width * bytesOf(format); }
  int groupColumns() const { return shape.width / 8; }
  int groupRows() const { return shape.height / 8; }
  int groupPixels() const { return groupColumns() * groupRows(); }
};

// Calls visit(x, y, index) for each pixel with its place in the blocks of a component that has a
// value for each: block after block, from the top left, each row by row.
template <class Visit>
void forEachPixel(Shape shape, Visit visit) {
  int index = 0;
  for (int top = 0; top < shape.height; top += 8) {
    for (int left = 0; left < shape.width; left += 8) {
      for (int i = 0; i < 64; ++i) visit(left + i % 8, top + i / 8, index++);
    }
  }
}

class Mcu {
 public:
  Mcu(Family family, const std::array<Placement, 4>& placements) {
    for (int c = 0; c < family.components(); ++c) {
      blocks_.push_back(makeRow<Orb16s>(64 * family.blocks(c), placements[c]));
    }
  }
  Orb16s at(int component, int i) const { return blocks_[component].at(i); }
  void set(int component, int i, int value) {
    blocks_[component].set(i, 0, static_cast<Orb16s>(value));
  }
  template <class Generator>
  void fill(Generator generate) {
    for (Plane<Orb16s>& plane : blocks_) plane.fill(generate);
  }
  std::array<Orb16s*, 4> pointers() {
    std::array<Orb16s*, 4> all = {};
    for (size_t c = 0; c < blocks_.size(); ++c) all[c] = blocks_[c].data();
    return all;
  }
  const std::vector<Plane<Orb16s>>& components() const { return blocks_; }
  // The blocks alone: quicker.
  bool sameValues(const Mcu& other) const {
    for (size_t c = 0; c < blocks_.size(); ++c) {
      const size_t size = static_cast<size_t>(blocks_[c].width()) * sizeof(Orb16s);
      if (std::memcmp(blocks_[c].data(), other.blocks_[c].data(), size) != 0) return false;
    }
    return true;
  }
  testing::AssertionResult sameBytes(const Mcu& other) const {
    for (size_t c = 0; c < blocks_.size(); ++c) {
      const testing::AssertionResult result = blocks_[c].sameBytes(other.blocks_[c]);
      if (!result) return testing::AssertionFailure() << "component " << c << result.message();
    }
    return testing::AssertionSuccess();
  }

 private:
  std::vector<Plane<Orb16s>> blocks_;
};

std::array<Placement, 4> placements(Random& random) {
  std::array<Placement, 4> all;
  for (Placement& placement : all) placement = Placement::any(random);
  return all;
}

using Pixels = Plane<Orb8u>;

Pixels makePixels(Family family, Placement at = {}) {
  return Pixels(family.rowBytes(), family.shape.height, at);
}

void modelToMcu(Family family, const Orb8u* pixels, int step, Mcu& mcu) {
  std::vector<Values> sums(64);
  forEachPixel(family.shape, [&](int x, int y, int index) {
    const Values p = readPixel(family.format, pixels + ptrdiff_t{step} * y, x);
    mcu.set(0, index, family.hasColour() ? lumaOf(p) : p[0] - 128);
    if (family.components() == 4) mcu.set(3, index, p[3] - 128);
    Values& sum = sums[y / family.groupRows() * 8 + x / family.groupColumns()];
    for (int c = 0; c < 3; ++c) sum[c] += p[c];
  });
  const int n = family.groupPixels();
  for (int i = 0; i < 64; ++i) {
    const auto chroma = family.hasColour() ? chromaOf(sums[i], n)
                                           : std::array<int, 2>{floorOf(sums[i][1] - 128 * n, n),
                                                                floorOf(sums[i][2] - 128 * n, n)};
    mcu.set(1, i, chroma[0]);
    mcu.set(2, i, chroma[1]);
  }
}

void modelFromMcu(Family family, const Mcu& mcu, Pixels& pixels) {
  std::vector<Orb8u> row(static_cast<size_t>(family.rowBytes()));
  std::vector<std::vector<Values>> picture(
      static_cast<size_t>(family.shape.height),
      std::vector<Values>(static_cast<size_t>(family.shape.width)));
  forEachPixel(family.shape, [&](int x, int y, int index) {
    const int group = y / family.groupRows() * 8 + x / family.groupColumns();
    const int luma = mcu.at(0, index), cb = mcu.at(1, group), cr = mcu.at(2, group);
    Values p = {limited(luma + 128), limited(cb + 128), limited(cr + 128), 0};
    if (family.hasColour()) p = colourOf(luma, cb, cr);
    if (family.components() == 4) p[3] = ((mcu.at(3, index) + 128) % 256 + 256) % 256;
    picture[y][x] = p;
  });
  for (int y = 0; y < family.shape.height; ++y) {
    for (int x = 0; x < family.shape.width; ++x) {
      writePixel(family.format, row.data(), x, picture[y][x]);
    }
    for (int i = 0; i < family.rowBytes(); ++i) pixels.set(i, y, row[i]);
  }
}

// ---- Calls

template <class Sample>
using ToMcu = OrbStatus(ORB_CALL*)(const Sample*, Orb32s, Orb16s* const*);
template <class Sample>
using FromMcu = OrbStatus(ORB_CALL*)(const Orb16s* const*, Sample*, Orb32s);

template <class Sample>
OrbStatus call(ToMcu<Sample> function, const Pixels& src, Mcu& dst) {
  const auto blocks = dst.pointers();
  return function(reinterpret_cast<const Sample*>(src.data()), src.step(), blocks.data());
}
template <class Sample>
OrbStatus call(FromMcu<Sample> function, Mcu& src, Pixels& dst) {
  const auto blocks = src.pointers();
  return function(blocks.data(), reinterpret_cast<Sample*>(dst.data()), dst.step());
}

void fillPixels(Pixels& pixels, Random& random) {
  const bool extreme = random.oneIn(3);
  pixels.fill([&] { return extreme ? random.extreme<Orb8u>() : random.any<Orb8u>(); });
}

// As a decoder has them, anything, or the ends of the range. Where chroma is large, a luma that
// brings a channel back between 0 and 255 shows what the others would hide.
void fillBlocks(Mcu& mcu, Family family, Random& random) {
  switch (random.between(0, 3)) {
    case 0:
      return mcu.fill([&] { return random.between<Orb16s>(-200, 200); });
    case 1:
      return mcu.fill([&] { return random.any<Orb16s>(); });
    case 2:
      return mcu.fill([&] { return random.extreme<Orb16s>(); });
    default:
      mcu.fill([&] { return random.any<Orb16s>(); });
      const int channel = random.between(0, 2);
      forEachPixel(family.shape, [&](int x, int y, int index) {
        const int group = y / family.groupRows() * 8 + x / family.groupColumns();
        const int offset = offsets(mcu.at(1, group), mcu.at(2, group))[channel];
        mcu.set(0, index, std::clamp(random.between(-130, 130) - offset, -32768, 32767));
      });
  }
}

// ---- Checks

template <class Sample>
void expectChecked(ToMcu<Sample> function, Family family) {
  Pixels src = makePixels(family);
  Mcu dst(family, {}), untouched(family, {});
  struct Call {
    const Sample* src;
    Orb32s step;
    std::array<Orb16s*, 4> blocks;
    bool array = true;
  };
  std::vector<orbtest::Fault<Call>> faults = {
      {orbStsNullPtrErr, [](Call& c) { c.src = nullptr; }},
      {orbStsNullPtrErr, [](Call& c) { c.array = false; }},
      {orbStsStepErr, [](Call& c) { c.step = 0; }},
      {orbStsStepErr, [](Call& c) { c.step = -1; }},
      {orbStsStepErr, [](Call& c) { c.step = std::numeric_limits<Orb32s>::min(); }}};
  for (int i = 0; i < family.components(); ++i) {
    faults.push_back({orbStsNullPtrErr, [i](Call& c) { c.blocks[i] = nullptr; }});
  }
  const Call good = {reinterpret_cast<const Sample*>(src.data()), src.step(), dst.pointers()};
  const auto run = [&](const Call& c) {
    return function(c.src, c.step, c.array ? c.blocks.data() : nullptr);
  };
  expectChecks(faults, good, run);
  EXPECT_TRUE(dst.sameBytes(untouched));
  EXPECT_EQ(run(good), orbStsNoErr);
}

template <class Sample>
void expectChecked(FromMcu<Sample> function, Family family) {
  Mcu src(family, {});
  Pixels dst = makePixels(family);
  struct Call {
    std::array<Orb16s*, 4> blocks;
    Sample* dst;
    Orb32s step;
    bool array = true;
  };
  std::vector<orbtest::Fault<Call>> faults = {{orbStsNullPtrErr, [](Call& c) { c.array = false; }},
                                              {orbStsNullPtrErr, [](Call& c) { c.dst = nullptr; }}};
  for (int i = 0; i < family.components(); ++i) {
    faults.push_back({orbStsNullPtrErr, [i](Call& c) { c.blocks[i] = nullptr; }});
  }
  for (const Orb32s step : {0, -1, std::numeric_limits<Orb32s>::min()}) {
    faults.push_back({orbStsStepErr, [step](Call& c) { c.step = step; }});
  }
  const Call good = {src.pointers(), reinterpret_cast<Sample*>(dst.data()), dst.step()};
  const auto run = [&](const Call& c) {
    return function(c.array ? c.blocks.data() : nullptr, c.dst, c.step);
  };
  expectChecks(faults, good, run);
  dst.expectUntouched();
  EXPECT_EQ(run(good), orbStsNoErr);
}

// ---- Meaning and agreement

template <class Sample>
void expectConverts(ToMcu<Sample> function, Family family) {
  Random random("to MCU");
  for (int round = 0; round < 300; ++round) {
    Pixels src = makePixels(family, Placement::any(random));
    fillPixels(src, random);
    const auto places = placements(random);
    Mcu expected(family, places), actual(family, places);
    modelToMcu(family, src.data(), src.step(), expected);
    ASSERT_EQ(call(function, src, actual), orbStsNoErr);
    ASSERT_TRUE(actual.sameBytes(expected));
    src.expectUntouched();
  }
}

template <class Sample>
void expectConverts(FromMcu<Sample> function, Family family) {
  Random random("from MCU");
  for (int round = 0; round < 300; ++round) {
    Mcu src(family, placements(random));
    fillBlocks(src, family, random);
    const Placement place = Placement::any(random);
    Pixels expected = makePixels(family, place), actual = makePixels(family, place);
    modelFromMcu(family, src, expected);
    ASSERT_EQ(call(function, src, actual), orbStsNoErr);
    ASSERT_TRUE(actual.sameBytes(expected));
    for (const Plane<Orb16s>& blocks : src.components()) blocks.expectUntouched();
  }
}

template <class Sample>
void expectAgreement(ToMcu<Sample> px, ToMcu<Sample> build, Family family, Random& random) {
  for (int round = 0; round < 300; ++round) {
    Pixels src = makePixels(family, Placement::any(random));
    fillPixels(src, random);
    const auto places = placements(random);
    Mcu expected(family, places), actual(family, places);
    ASSERT_EQ(call(px, src, expected), orbStsNoErr);
    ASSERT_EQ(call(build, src, actual), orbStsNoErr);
    ASSERT_TRUE(actual.sameBytes(expected));
  }
}

template <class Sample>
void expectAgreement(FromMcu<Sample> px, FromMcu<Sample> build, Family family, Random& random) {
  for (int round = 0; round < 300; ++round) {
    Mcu src(family, placements(random));
    fillBlocks(src, family, random);
    const Placement place = Placement::any(random);
    Pixels expected = makePixels(family, place), actual = makePixels(family, place);
    ASSERT_EQ(call(px, src, expected), orbStsNoErr);
    ASSERT_EQ(call(build, src, actual), orbStsNoErr);
    ASSERT_TRUE(actual.sameBytes(expected));
  }
}

// Nothing outside of the pixels, the blocks and the entries of the array is touched.
struct GuardedMcu {
  Family family;
  int step = family.rowBytes() + 5;
  GuardedBytes pixels;
  GuardedBytes array;
  std::vector<std::unique_ptr<GuardedBytes>> blocks;

  GuardedMcu(Family of, Guard guard)
      : family(of),
        pixels(static_cast<size_t>(step * (of.shape.height - 1) + of.rowBytes()), guard),
        array(static_cast<size_t>(of.components()) * sizeof(Orb16s*), guard) {
    for (int c = 0; c < family.components(); ++c) {
      const size_t size = static_cast<size_t>(family.blocks(c)) * 64 * sizeof(Orb16s);
      blocks.push_back(std::make_unique<GuardedBytes>(size, guard));
      entries()[c] = reinterpret_cast<Orb16s*>(blocks.back()->data());
    }
  }
  Orb16s** entries() { return reinterpret_cast<Orb16s**>(array.data()); }
};

template <class Sample>
OrbStatus call(ToMcu<Sample> function, GuardedMcu& memory) {
  return function(reinterpret_cast<const Sample*>(memory.pixels.data()), memory.step,
                  memory.entries());
}
template <class Sample>
OrbStatus call(FromMcu<Sample> function, GuardedMcu& memory) {
  return function(memory.entries(), reinterpret_cast<Sample*>(memory.pixels.data()), memory.step);
}

template <class Function>
void expectStaysWithin(Function function, Family family) {
  for (const Guard guard : {Guard::kBefore, Guard::kBehind}) {
    GuardedMcu memory(family, guard);
    EXPECT_EQ(call(function, memory), orbStsNoErr);
  }
}

#define MCU_TESTS(name, format, shape)                                   \
  ORB_MEANING(name, ChecksInOrder) {                                     \
    expectChecked(ORB(name), {format, shape});                           \
  }                                                                      \
  ORB_MEANING(name, Converts) {                                          \
    expectConverts(ORB(name), {format, shape});                          \
  }                                                                      \
  ORB_MEANING(name, StaysWithinItsMcu) {                                 \
    expectStaysWithin(ORB(name), {format, shape});                       \
  }                                                                      \
  ORB_AGREEMENT(name) {                                                  \
    expectAgreement(PX(name), ORB(name), Family{format, shape}, random); \
  }
#define MCU_TESTS_OF_EACH_SHAPE(head, tail, format) \
  MCU_TESTS(head##444##tail, format, k444)          \
  MCU_TESTS(head##422##tail, format, k422)          \
  MCU_TESTS(head##411##tail, format, k411)

MCU_TESTS_OF_EACH_SHAPE(orbiRGBToYCbCr, LS_MCU_8u16s_C3P3R, Format::kRgb)
MCU_TESTS_OF_EACH_SHAPE(orbiBGRToYCbCr, LS_MCU_8u16s_C3P3R, Format::kBgr)
MCU_TESTS_OF_EACH_SHAPE(orbiBGR555ToYCbCr, LS_MCU_16u16s_C3P3R, Format::kBgr555)
MCU_TESTS_OF_EACH_SHAPE(orbiBGR565ToYCbCr, LS_MCU_16u16s_C3P3R, Format::kBgr565)
MCU_TESTS_OF_EACH_SHAPE(orbiCMYKToYCCK, LS_MCU_8u16s_C4P4R, Format::kCmyk)
MCU_TESTS_OF_EACH_SHAPE(orbiSampleDown, LS_MCU_8u16s_C3P3R, Format::kThreeSamples)
MCU_TESTS(orbiSplit422LS_MCU_8u16s_C2P3R, Format::kPairs, k422)

MCU_TESTS_OF_EACH_SHAPE(orbiYCbCr, ToRGBLS_MCU_16s8u_P3C3R, Format::kRgb)
MCU_TESTS_OF_EACH_SHAPE(orbiYCbCr, ToBGRLS_MCU_16s8u_P3C3R, Format::kBgr)
MCU_TESTS_OF_EACH_SHAPE(orbiYCbCr, ToBGR555LS_MCU_16s16u_P3C3R, Format::kBgr555)
MCU_TESTS_OF_EACH_SHAPE(orbiYCbCr, ToBGR565LS_MCU_16s16u_P3C3R, Format::kBgr565)
MCU_TESTS_OF_EACH_SHAPE(orbiYCCK, ToCMYKLS_MCU_16s8u_P4C4R, Format::kCmyk)
MCU_TESTS_OF_EACH_SHAPE(orbiSampleUp, LS_MCU_16s8u_P3C3R, Format::kThreeSamples)
MCU_TESTS(orbiJoin422LS_MCU_16s8u_P3C2R, Format::kPairs, k422)

// ---- Single values

// Each block of a component by its average if it is flat.
int flatValue(const Mcu& mcu, int component) {
  const std::vector<Orb16s> values = mcu.components()[component].samples();
  for (const Orb16s value : values) EXPECT_EQ(value, values[0]);
  return values[0];
}
Values flatMcu(ToMcu<Orb8u> function, Family family, std::initializer_list<Orb8u> pixel) {
  Pixels src = makePixels(family);
  for (int i = 0; i < src.width() * src.height(); ++i) {
    src.set(i % src.width(), i / src.width(), pixel.begin()[i % pixel.size()]);
  }
  Mcu mcu(family, {});
  EXPECT_EQ(call(function, src, mcu), orbStsNoErr);
  Values values = {};
  for (int c = 0; c < family.components(); ++c) values[c] = flatValue(mcu, c);
  return values;
}

ORB_MEANING(orbiRGBToYCbCr444LS_MCU_8u16s_C3P3R, KnownColours) {
  const auto convert = [&](std::initializer_list<Orb8u> rgb) {
    return flatMcu(ORB(orbiRGBToYCbCr444LS_MCU_8u16s_C3P3R), {Format::kRgb, k444}, rgb);
  };
  EXPECT_EQ(convert({0, 0, 0}), (Values{-128, 0, 0}));
  EXPECT_EQ(convert({255, 255, 255}), (Values{127, 0, 0}));
  EXPECT_EQ(convert({128, 128, 128}), (Values{0, 0, 0}));
  // No rounding: 76.24, -43.03 and 127.5 for red; 29.07, 127.5 and -20.74 for blue.
  EXPECT_EQ(convert({255, 0, 0}), (Values{-52, -44, 127}));
  EXPECT_EQ(convert({0, 0, 255}), (Values{-99, 127, -21}));
}

// All chroma of a group is summed before it is cut: -0.17 - 0.17 is -1 once, not twice.
ORB_MEANING(orbiRGBToYCbCr422LS_MCU_8u16s_C3P3R, CutsTheSumOnce) {
  EXPECT_EQ(flatMcu(ORB(orbiRGBToYCbCr422LS_MCU_8u16s_C3P3R), {Format::kRgb, k422}, {1, 0, 0}),
            (Values{-128, -1, 0}));
}
ORB_MEANING(orbiRGBToYCbCr411LS_MCU_8u16s_C3P3R, CutsTheSumOnce) {
  EXPECT_EQ(flatMcu(ORB(orbiRGBToYCbCr411LS_MCU_8u16s_C3P3R), {Format::kRgb, k411}, {1, 0, 0}),
            (Values{-128, -1, 0}));
}

ORB_MEANING(orbiCMYKToYCCK444LS_MCU_8u16s_C4P4R, KnownColours) {
  const auto convert = [&](std::initializer_list<Orb8u> cmyk) {
    return flatMcu(ORB(orbiCMYKToYCCK444LS_MCU_8u16s_C4P4R), {Format::kCmyk, k444}, cmyk);
  };
  EXPECT_EQ(convert({255, 255, 255, 0}), (Values{-128, 0, 0, -128}));
  EXPECT_EQ(convert({0, 0, 0, 255}), (Values{127, 0, 0, 127}));
}

ORB_MEANING(orbiSampleDown422LS_MCU_8u16s_C3P3R, RoundsDown) {
  const Family family = {Format::kThreeSamples, k422};
  Pixels src = makePixels(family);
  src.fill([] { return Orb8u{128}; });
  // Pairs of 127 and 128, then of 128 and 129.
  src.set(1, 0, 127);
  src.set(7, 0, 129);
  Mcu mcu(family, {});
  ASSERT_EQ(call(ORB(orbiSampleDown422LS_MCU_8u16s_C3P3R), src, mcu), orbStsNoErr);
  EXPECT_EQ(mcu.at(1, 0), -1);
  EXPECT_EQ(mcu.at(1, 1), 0);
}

// Blocks that are flat but for the first component, whose blocks count up.
ORB_MEANING(orbiSampleUp411LS_MCU_16s8u_P3C3R, OrderOfBlocks) {
  const Family family = {Format::kThreeSamples, k411};
  Mcu src(family, {});
  src.fill([] { return Orb16s{0}; });
  for (int i = 0; i < 256; ++i) src.set(0, i, i / 64);
  Pixels dst = makePixels(family);
  ASSERT_EQ(call(ORB(orbiSampleUp411LS_MCU_16s8u_P3C3R), src, dst), orbStsNoErr);
  EXPECT_EQ(dst.at(0, 0), 128);
  EXPECT_EQ(dst.at(7 * 3, 7), 128);
  EXPECT_EQ(dst.at(8 * 3, 0), 129);
  EXPECT_EQ(dst.at(0, 8), 130);
  EXPECT_EQ(dst.at(15 * 3, 15), 131);
}

ORB_MEANING(orbiYCCK444ToCMYKLS_MCU_16s8u_P4C4R, BlackIsNotLimited) {
  const Family family = {Format::kCmyk, k444};
  Mcu src(family, {});
  src.fill([] { return Orb16s{0}; });
  const int blacks[][2] = {{-128, 0},   {127, 255}, {200, 72},    {128, 0},
                           {-129, 255}, {-328, 56}, {32767, 127}, {-32768, 128}};
  for (int i = 0; i < 8; ++i) src.set(3, i, blacks[i][0]);
  Pixels dst = makePixels(family);
  ASSERT_EQ(call(ORB(orbiYCCK444ToCMYKLS_MCU_16s8u_P4C4R), src, dst), orbStsNoErr);
  for (int i = 0; i < 8; ++i) {
    EXPECT_EQ(dst.at(4 * i + 3, 0), blacks[i][1]);
    for (int c = 0; c < 3; ++c) EXPECT_EQ(dst.at(4 * i + c, 0), 127);
  }
}

// ---- Rows may overlap, or lie far apart

ORB_MEANING(orbiRGBToYCbCr411LS_MCU_8u16s_C3P3R, AnyStep) {
  const Family family = {Format::kRgb, k411};
  Random random("steps");
  for (const int step : {1, 2, 3, 47, 48, 49, 1000}) {
    Plane<Orb8u> memory(step * 15 + 48, 1);
    memory.fillAny(random);
    Mcu expected(family, {}), actual(family, {});
    modelToMcu(family, memory.data(), step, expected);
    const auto blocks = actual.pointers();
    ASSERT_EQ(ORB(orbiRGBToYCbCr411LS_MCU_8u16s_C3P3R)(memory.data(), step, blocks.data()),
              orbStsNoErr);
    ASSERT_TRUE(actual.sameBytes(expected)) << "step " << step;
  }
}

template <class Sample>
void expectRowsInOrder(FromMcu<Sample> function, Family family) {
  Random random("steps");
  for (const int step : {1, 2, 5, 8, family.rowBytes() / 2, family.rowBytes() - 1, 1000}) {
    Mcu src(family, {});
    fillBlocks(src, family, random);
    const int size = step * (family.shape.height - 1) + family.rowBytes();
    Plane<Orb8u> expected(size, 1), actual(size, 1);
    Pixels rows = makePixels(family);
    modelFromMcu(family, src, rows);
    for (int y = 0; y < rows.height(); ++y) {
      for (int i = 0; i < rows.width(); ++i) expected.set(y * step + i, 0, rows.at(i, y));
    }
    const auto blocks = src.pointers();
    ASSERT_EQ(function(blocks.data(), reinterpret_cast<Sample*>(actual.data()), step), orbStsNoErr);
    ASSERT_TRUE(actual.sameBytes(expected)) << "step " << step;
  }
}
ORB_MEANING(orbiYCbCr444ToRGBLS_MCU_16s8u_P3C3R, AnyStep) {
  expectRowsInOrder(ORB(orbiYCbCr444ToRGBLS_MCU_16s8u_P3C3R), {Format::kRgb, k444});
}
ORB_MEANING(orbiYCbCr422ToBGR565LS_MCU_16s16u_P3C3R, AnyStep) {
  expectRowsInOrder(ORB(orbiYCbCr422ToBGR565LS_MCU_16s16u_P3C3R), {Format::kBgr565, k422});
}
ORB_MEANING(orbiYCCK411ToCMYKLS_MCU_16s8u_P4C4R, AnyStep) {
  expectRowsInOrder(ORB(orbiYCCK411ToCMYKLS_MCU_16s8u_P4C4R), {Format::kCmyk, k411});
}
ORB_MEANING(orbiJoin422LS_MCU_16s8u_P3C2R, AnyStep) {
  expectRowsInOrder(ORB(orbiJoin422LS_MCU_16s8u_P3C2R), {Format::kPairs, k422});
}

// ---- Every value there is

TEST(JpegMcu, EveryColourForward) {
  const Family family = {Format::kRgb, k444};
  Pixels src = makePixels(family);
  Mcu expected(family, {}), actual(family, {});
  for (int colour = 0; colour < 1 << 24; colour += 64) {
    for (int i = 0; i < 64; ++i) {
      Orb8u* const pixel = src.data() + ptrdiff_t{src.step()} * (i / 8) + i % 8 * 3;
      pixel[0] = static_cast<Orb8u>((colour + i) >> 16);
      pixel[1] = static_cast<Orb8u>((colour + i) >> 8);
      pixel[2] = static_cast<Orb8u>(colour + i);
    }
    modelToMcu(family, src.data(), src.step(), expected);
    for (const orbtest::TestBuild& build : orbtest::runnableBuilds()) {
      ASSERT_EQ(call(ORB(orbiRGBToYCbCr444LS_MCU_8u16s_C3P3R), src, actual), orbStsNoErr);
      ASSERT_TRUE(actual.sameValues(expected)) << "build " << build.tag << ", colour " << colour;
    }
  }
}

// All of Cb with all of Cr would take too long: each with some of the other, in small steps where
// colours lie. A luma for each channel in turn brings it to the middle, where nothing is limited.
TEST(JpegMcu, EveryChromaInverse) {
  const Family family = {Format::kRgb, k444};
  Random random("chroma");
  Mcu src(family, {});
  Pixels expected = makePixels(family), actual = makePixels(family);
  for (int first = -32768; first < 32768; first += 32) {
    for (int channel = 0; channel < 3; ++channel) {
      for (int i = 0; i < 64; ++i) {
        const int value = first + i % 32;
        const int other = random.oneIn(2) ? random.any<Orb16s>() : random.between(-128, 127);
        const int cb = i < 32 ? value : other, cr = i < 32 ? other : value;
        const int offset = offsets(cb, cr)[channel];
        src.set(0, i, std::clamp(-offset, -32768, 32767));
        src.set(1, i, cb);
        src.set(2, i, cr);
      }
      modelFromMcu(family, src, expected);
      for (const orbtest::TestBuild& build : orbtest::runnableBuilds()) {
        ASSERT_EQ(call(ORB(orbiYCbCr444ToRGBLS_MCU_16s8u_P3C3R), src, actual), orbStsNoErr);
        ASSERT_TRUE(actual.sameBytes(expected)) << "build " << build.tag << ", chroma " << first;
      }
    }
  }
}

// The colours of a decoder: all of Cb with all of Cr that a sample can have.
TEST(JpegMcu, EveryColourInverse) {
  const Family family = {Format::kRgb, k444};
  Mcu src(family, {});
  Pixels expected = makePixels(family), actual = makePixels(family);
  for (int colour = 0; colour < 1 << 16; colour += 64) {
    for (int luma = -128; luma < 128; luma += 51) {
      for (int i = 0; i < 64; ++i) {
        src.set(0, i, luma);
        src.set(1, i, (colour + i) % 256 - 128);
        src.set(2, i, (colour + i) / 256 - 128);
      }
      modelFromMcu(family, src, expected);
      for (const orbtest::TestBuild& build : orbtest::runnableBuilds()) {
        ASSERT_EQ(call(ORB(orbiYCbCr444ToRGBLS_MCU_16s8u_P3C3R), src, actual), orbStsNoErr);
        ASSERT_TRUE(actual.sameBytes(expected)) << "build " << build.tag << ", colour " << colour;
      }
    }
  }
}

}  // namespace
