// From the blocks of macroblocks to a frame.
#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/builds.h"
#include "tests/support/plane.h"

namespace {

using orbtest::Placement;
using orbtest::Plane;
using orbtest::Random;
using orbtest::TestBuild;

// ---- What the functions write, pixel by pixel

struct Sample {
  int block, row, column;
};

// A layout of macroblocks: where a pixel's luma is, and the chroma of the pair that it is in.
// Chroma blocks are named as those of Cr; Cb is `cbBehind` blocks on. A second chroma sample means
// that the pair has the mean of both.
struct Layout {
  int width, height;  // of what one entry of the destinations receives
  int blocks;         // of the memory that it comes from
  int cbBehind;
  std::function<Sample(int x, int y)> luma;
  std::function<std::pair<Sample, Sample>(int pair, int y)> chroma;
};

std::pair<Sample, Sample> same(Sample s) {
  return {s, s};
}

// Chroma columns of 4:1:1 from `first` to `last`, two pairs each.
std::pair<Sample, Sample> spread(int block, int row, int first, int last, int pair) {
  const int column = first + pair / 2;
  const int next = pair % 2 == 1 ? std::min(column + 1, last) : column;
  return {{block, row, column}, {block, row, next}};
}

Sample twoByTwo(int x, int y) {
  return {x / 8 + y / 8 * 2, y % 8, x % 8};
}

const Layout k411 = {32,
                     8,
                     6,
                     1,
                     [](int x, int y) {
                       return Sample{x / 8, y, x % 8};
                     },
                     [](int pair, int y) { return spread(4, y, 0, 7, pair); }};
const Layout k411Edge = {16, 16, 6, 1, twoByTwo, [](int pair, int y) {
                           const int first = y < 8 ? 0 : 4;
                           return spread(4, y % 8, first, first + 3, pair);
                         }};
const Layout k420 = {16, 16, 6, 1, twoByTwo, [](int pair, int y) {
                       const int rows[16] = {0, 1, 0, 1, 2, 3, 2, 3, 4, 5, 4, 5, 6, 7, 6, 7};
                       return same({4, rows[y], pair});
                     }};
const Layout k422 = {16,
                     8,
                     6,
                     1,
                     [](int x, int y) {
                       return Sample{x < 8 ? 0 : 2, y, x % 8};
                     },
                     [](int pair, int y) {
                       return same({4, y, pair});
                     }};
const Layout kHalf[2] = {
    {16, 8, 8, 2,
     [](int x, int y) {
       return Sample{x / 8, y, x % 8};
     },
     [](int pair, int y) {
       return same({4, y, pair});
     }},
    {16, 8, 8, 2,
     [](int x, int y) {
       return Sample{2 + x / 8, y, x % 8};
     },
     [](int pair, int y) {
       return same({5, y, pair});
     }},
};

using Blocks = Plane<Orb16s>;
using Pixels = Plane<Orb8u>;

Blocks makeBlocks(int count, Random& random) {
  Blocks blocks = orbtest::makeRow<Orb16s>(64 * count, Placement::any(random));
  const int kind = random.between(0, 2);
  blocks.fill([&] {
    return kind == 0   ? random.between<Orb16s>(-140, 140)
           : kind == 1 ? random.any<Orb16s>()
                       : random.extreme<Orb16s>();
  });
  return blocks;
}

Orb8u byteOf(int value) {
  return static_cast<Orb8u>(std::clamp(value + 128, 0, 255));
}

// The bytes of one macroblock, or half of one, whose blocks start at `first`.
std::vector<Orb8u> model(const Layout& layout, const Blocks& blocks, int first) {
  const auto at = [&](Sample s, int further = 0) {
    return int{blocks.at(64 * (first + s.block + further) + 8 * s.row + s.column)};
  };
  std::vector<Orb8u> bytes;
  for (int y = 0; y < layout.height; ++y) {
    for (int x = 0; x < layout.width; ++x) {
      bytes.push_back(byteOf(at(layout.luma(x, y))));
      const auto [one, other] = layout.chroma(x / 2, y);
      const int further = x % 2 == 0 ? layout.cbBehind : 0;
      // Division goes towards zero.
      bytes.push_back(byteOf((at(one, further) + at(other, further)) / 2));
    }
  }
  return bytes;
}

// ---- Frames: macroblocks lie apart, in any order, with a margin between them

struct Frame {
  Pixels pixels;
  std::vector<Orb8u*> places;

  Frame(const Layout& layout, int count, Random& random)
      : pixels((2 * layout.width + 4) * count, layout.height, Placement::any(random)) {
    for (int i = 0; i < count; ++i) {
      const int place = (3 * i + 1) % count;
      places.push_back(pixels.data() + (2 * layout.width + 4) * place + 2);
    }
  }
  void set(const Layout& layout, int i, const std::vector<Orb8u>& bytes) {
    const int column = static_cast<int>(places[i] - pixels.data());
    for (int y = 0; y < layout.height; ++y) {
      for (int k = 0; k < 2 * layout.width; ++k) {
        pixels.set(column + k, y, bytes[2 * layout.width * y + k]);
      }
    }
  }
  // The same bytes, at a place and a step of its own.
  static Frame like(const Layout& layout, const Frame& other, Random& random) {
    Frame frame(layout, static_cast<int>(other.places.size()), random);
    frame.pixels.copySamples(other.pixels);
    return frame;
  }
};

using OfFive = OrbStatus(ORB_CALL*)(const Orb16s* const*, Orb8u* const*, Orb32s);
using OfOne = OrbStatus(ORB_CALL*)(const Orb16s*, Orb8u*, Orb32s);
using OfHalves = OrbStatus(ORB_CALL*)(const Orb16s*, Orb8u* const*, Orb32s);

std::vector<const Orb16s*> pointersTo(const Blocks& blocks, int each) {
  std::vector<const Orb16s*> all;
  for (int m = 0; m < 5; ++m) all.push_back(blocks.data() + 64 * each * m);
  return all;
}

// Calls a function of any form on the blocks of five macroblocks.
OrbStatus call(OfFive function, const Blocks& blocks, Frame& frame) {
  return function(pointersTo(blocks, 6).data(), frame.places.data(), frame.pixels.step());
}
OrbStatus call(OfOne function, const Blocks& blocks, Frame& frame) {
  return function(blocks.data(), frame.places[0], frame.pixels.step());
}
OrbStatus call(OfHalves function, const Blocks& blocks, Frame& frame) {
  return function(blocks.data(), frame.places.data(), frame.pixels.step());
}

// The layouts of what a function writes to its destinations in turn, with the first of the blocks.
struct Piece {
  const Layout* layout;
  int firstBlock;
};
std::vector<Piece> fivePieces(const Layout& layout) {
  std::vector<Piece> pieces;
  for (int m = 0; m < 5; ++m) pieces.push_back({&layout, m * layout.blocks});
  return pieces;
}
std::vector<Piece> tenHalves() {
  std::vector<Piece> pieces;
  for (int half = 0; half < 10; ++half) pieces.push_back({&kHalf[half % 2], half / 2 * 8});
  return pieces;
}

template <class Function>
void expectModel(Function function, const std::vector<Piece>& pieces) {
  Random random("model");
  const Layout& layout = *pieces[0].layout;
  for (int round = 0; round < 60; ++round) {
    Blocks blocks = makeBlocks(5 * layout.blocks, random);
    Frame frame(layout, static_cast<int>(pieces.size()), random);
    Frame expected = Frame::like(layout, frame, random);
    for (size_t i = 0; i < pieces.size(); ++i) {
      expected.set(layout, static_cast<int>(i),
                   model(*pieces[i].layout, blocks, pieces[i].firstBlock));
    }
    ASSERT_EQ(call(function, blocks, frame), orbStsNoErr);
    ASSERT_EQ(frame.pixels.samples(), expected.pixels.samples());
    frame.pixels.expectOutsideUntouched();
    blocks.expectUntouched();
  }
}

template <class Function>
void expectAgreement(Function function, Function reference, const std::vector<Piece>& pieces,
                     Random& random) {
  const Layout& layout = *pieces[0].layout;
  for (int round = 0; round < 60; ++round) {
    const Blocks blocks = makeBlocks(5 * layout.blocks, random);
    Frame ours(layout, static_cast<int>(pieces.size()), random);
    Frame theirs = Frame::like(layout, ours, random);
    ASSERT_EQ(call(function, blocks, ours), orbStsNoErr);
    ASSERT_EQ(call(reference, blocks, theirs), orbStsNoErr);
    ASSERT_EQ(ours.pixels.samples(), theirs.pixels.samples());
    ours.pixels.expectOutsideUntouched();
  }
}

// Rows from the bottom up.
template <class Function>
void expectNegativeSteps(
    Function function, const Layout& layout,
    const std::function<OrbStatus(Function, const Orb16s*, Orb8u*, Orb32s)>& run) {
  Random random("negative");
  const Blocks blocks = makeBlocks(layout.blocks, random);
  Pixels pixels(2 * layout.width, layout.height, Placement::any(random));
  Orb8u* const last = pixels.data() + pixels.step() * (layout.height - 1);
  ASSERT_EQ(run(function, blocks.data(), last, -pixels.step()), orbStsNoErr);
  const std::vector<Orb8u> expected = model(layout, blocks, 0);
  for (int y = 0; y < layout.height; ++y) {
    for (int k = 0; k < 2 * layout.width; ++k) {
      ASSERT_EQ(pixels.at(k, layout.height - 1 - y), expected[2 * layout.width * y + k]);
    }
  }
  pixels.expectOutsideUntouched();
}

// What a null in the arrays does, as its turn comes.
enum class NullBlock { kEnds, kFails };

void expectNullsOfFive(OfFive function, const Layout& layout, NullBlock nullBlock) {
  Random random("nulls");
  const Blocks blocks = makeBlocks(5 * 6, random);
  Frame frame(layout, 5, random);
  std::vector<const Orb16s*> pointers = pointersTo(blocks, 6);
  EXPECT_EQ(function(nullptr, frame.places.data(), frame.pixels.step()), orbStsNullPtrErr);
  EXPECT_EQ(function(pointers.data(), nullptr, frame.pixels.step()), orbStsNullPtrErr);
  frame.pixels.expectUntouched();
  for (int m = 0; m < 5; ++m) {
    for (const bool isBlock : {false, true}) {
      SCOPED_TRACE(std::to_string(m) + (isBlock ? " of the blocks" : " of the destinations"));
      Frame written(layout, 5, random);
      Frame expected = Frame::like(layout, written, random);
      for (int i = 0; i < m; ++i) expected.set(layout, i, model(layout, blocks, 6 * i));
      std::vector<const Orb16s*> from = pointers;
      std::vector<Orb8u*> to = written.places;
      if (isBlock)
        from[m] = nullptr;
      else
        to[m] = nullptr;
      const bool isEnd = isBlock && nullBlock == NullBlock::kEnds;
      EXPECT_EQ(function(from.data(), to.data(), written.pixels.step()),
                isEnd ? orbStsNoErr : orbStsNullPtrErr);
      if (isEnd) {
        // What is behind the end is not looked at.
        std::fill(to.begin() + m, to.end(), nullptr);
        std::fill(from.begin() + m + 1, from.end(), nullptr);
        EXPECT_EQ(function(from.data(), to.data(), written.pixels.step()), orbStsNoErr);
      }
      EXPECT_EQ(written.pixels.samples(), expected.pixels.samples());
    }
  }
}

// ---- 4:1:1

ORB_MEANING(orbiYCrCb411ToYCbCr422_5MBDV_16s8u_P3C2R, Pixels) {
  expectModel(ORB(orbiYCrCb411ToYCbCr422_5MBDV_16s8u_P3C2R), fivePieces(k411));
}
ORB_MEANING(orbiYCrCb411ToYCbCr422_5MBDV_16s8u_P3C2R, LimitsAndMeans) {
  Orb16s blocks[6 * 64] = {};
  Orb8u pixels[8][64];
  const Orb16s luma[] = {127, 128, -128, -129, 32767, -32768, 0, -1};
  std::copy(luma, luma + 8, blocks);
  Orb16s* const cr = blocks + 4 * 64;
  Orb16s* const cb = blocks + 5 * 64;
  cb[0] = -1, cb[2] = 1, cb[4] = -3, cb[6] = 32767, cb[7] = 32767;
  cr[0] = -32768, cr[1] = -32768, cr[7] = 5;
  const Orb16s* const from[5] = {blocks};
  Orb8u* const to[5] = {pixels[0]};
  ASSERT_EQ(ORB(orbiYCrCb411ToYCbCr422_5MBDV_16s8u_P3C2R)(from, to, 64), orbStsNoErr);
  const int expectedLuma[] = {255, 255, 0, 0, 255, 0, 128, 127};
  for (int x = 0; x < 8; ++x) EXPECT_EQ(pixels[0][2 * x], expectedLuma[x]);
  // The pairs of columns 0 to 7: as it is, then the mean with the next.
  const int cbPairs[] = {127, 128, 128, 128, 129, 128, 128, 127,
                         125, 127, 128, 255, 255, 255, 255, 255};
  for (int pair = 0; pair < 16; ++pair) EXPECT_EQ(pixels[0][4 * pair + 1], cbPairs[pair]) << pair;
  const int crPairs[] = {0, 0, 0, 0};
  for (int pair = 0; pair < 4; ++pair) EXPECT_EQ(pixels[0][4 * pair + 3], crPairs[pair]) << pair;
  const int lastCrPairs[] = {128, 130, 133, 133};
  for (int i = 0; i < 4; ++i) EXPECT_EQ(pixels[0][4 * (12 + i) + 3], lastCrPairs[i]) << i;
}
ORB_MEANING(orbiYCrCb411ToYCbCr422_5MBDV_16s8u_P3C2R, Nulls) {
  expectNullsOfFive(ORB(orbiYCrCb411ToYCbCr422_5MBDV_16s8u_P3C2R), k411, NullBlock::kEnds);
}
ORB_AGREEMENT(orbiYCrCb411ToYCbCr422_5MBDV_16s8u_P3C2R) {
  expectAgreement(ORB(orbiYCrCb411ToYCbCr422_5MBDV_16s8u_P3C2R),
                  PX(orbiYCrCb411ToYCbCr422_5MBDV_16s8u_P3C2R), fivePieces(k411), random);
}

ORB_MEANING(orbiYCrCb411ToYCbCr422_EdgeDV_16s8u_P3C2R, Pixels) {
  expectModel(ORB(orbiYCrCb411ToYCbCr422_EdgeDV_16s8u_P3C2R), {{&k411Edge, 0}});
}
ORB_MEANING(orbiYCrCb411ToYCbCr422_EdgeDV_16s8u_P3C2R, NegativeSteps) {
  expectNegativeSteps<OfOne>(
      ORB(orbiYCrCb411ToYCbCr422_EdgeDV_16s8u_P3C2R), k411Edge,
      [](OfOne f, const Orb16s* from, Orb8u* to, Orb32s step) { return f(from, to, step); });
}
ORB_MEANING(orbiYCrCb411ToYCbCr422_EdgeDV_16s8u_P3C2R, Checks) {
  Orb16s blocks[6 * 64] = {};
  Orb8u pixels[16 * 32] = {};
  EXPECT_EQ(ORB(orbiYCrCb411ToYCbCr422_EdgeDV_16s8u_P3C2R)(nullptr, pixels, 32), orbStsNullPtrErr);
  EXPECT_EQ(ORB(orbiYCrCb411ToYCbCr422_EdgeDV_16s8u_P3C2R)(blocks, nullptr, 32), orbStsNullPtrErr);
  EXPECT_TRUE(std::all_of(pixels, std::end(pixels), [](Orb8u byte) { return byte == 0; }));
}
ORB_AGREEMENT(orbiYCrCb411ToYCbCr422_EdgeDV_16s8u_P3C2R) {
  expectAgreement(ORB(orbiYCrCb411ToYCbCr422_EdgeDV_16s8u_P3C2R),
                  PX(orbiYCrCb411ToYCbCr422_EdgeDV_16s8u_P3C2R), {{&k411Edge, 0}}, random);
}

// ---- 4:2:0 and 4:2:2

OrbStatus firstOfFive(OfFive function, const Orb16s* from, Orb8u* to, Orb32s step) {
  const Orb16s* const blocks[5] = {from, from, from, from, from};
  Orb8u* const places[5] = {to, to, to, to, to};
  return function(blocks, places, step);
}

ORB_MEANING(orbiYCrCb420ToYCbCr422_5MBDV_16s8u_P3C2R, Pixels) {
  expectModel(ORB(orbiYCrCb420ToYCbCr422_5MBDV_16s8u_P3C2R), fivePieces(k420));
  expectNegativeSteps<OfFive>(ORB(orbiYCrCb420ToYCbCr422_5MBDV_16s8u_P3C2R), k420, firstOfFive);
}
ORB_MEANING(orbiYCrCb420ToYCbCr422_5MBDV_16s8u_P3C2R, Nulls) {
  expectNullsOfFive(ORB(orbiYCrCb420ToYCbCr422_5MBDV_16s8u_P3C2R), k420, NullBlock::kFails);
}
ORB_AGREEMENT(orbiYCrCb420ToYCbCr422_5MBDV_16s8u_P3C2R) {
  expectAgreement(ORB(orbiYCrCb420ToYCbCr422_5MBDV_16s8u_P3C2R),
                  PX(orbiYCrCb420ToYCbCr422_5MBDV_16s8u_P3C2R), fivePieces(k420), random);
}

ORB_MEANING(orbiYCrCb422ToYCbCr422_5MBDV_16s8u_P3C2R, Pixels) {
  expectModel(ORB(orbiYCrCb422ToYCbCr422_5MBDV_16s8u_P3C2R), fivePieces(k422));
  expectNegativeSteps<OfFive>(ORB(orbiYCrCb422ToYCbCr422_5MBDV_16s8u_P3C2R), k422, firstOfFive);
}
ORB_MEANING(orbiYCrCb422ToYCbCr422_5MBDV_16s8u_P3C2R, Nulls) {
  expectNullsOfFive(ORB(orbiYCrCb422ToYCbCr422_5MBDV_16s8u_P3C2R), k422, NullBlock::kFails);
}
ORB_AGREEMENT(orbiYCrCb422ToYCbCr422_5MBDV_16s8u_P3C2R) {
  expectAgreement(ORB(orbiYCrCb422ToYCbCr422_5MBDV_16s8u_P3C2R),
                  PX(orbiYCrCb422ToYCbCr422_5MBDV_16s8u_P3C2R), fivePieces(k422), random);
}

ORB_MEANING(orbiYCrCb422ToYCbCr422_10HalvesMB16x8_DV100_16s8u_P3C2R, Pixels) {
  expectModel(ORB(orbiYCrCb422ToYCbCr422_10HalvesMB16x8_DV100_16s8u_P3C2R), tenHalves());
}
ORB_MEANING(orbiYCrCb422ToYCbCr422_10HalvesMB16x8_DV100_16s8u_P3C2R, Nulls) {
  Random random("nulls");
  const Blocks blocks = makeBlocks(40, random);
  const auto function = ORB(orbiYCrCb422ToYCbCr422_10HalvesMB16x8_DV100_16s8u_P3C2R);
  for (int missing = 0; missing < 10; ++missing) {
    Frame frame(kHalf[0], 10, random);
    Frame expected = Frame::like(kHalf[0], frame, random);
    EXPECT_EQ(function(nullptr, frame.places.data(), frame.pixels.step()), orbStsNullPtrErr);
    EXPECT_EQ(function(blocks.data(), nullptr, frame.pixels.step()), orbStsNullPtrErr);
    frame.pixels.expectUntouched();
    for (int i = 0; i < missing; ++i) {
      expected.set(kHalf[0], i, model(kHalf[i % 2], blocks, i / 2 * 8));
    }
    std::vector<Orb8u*> places = frame.places;
    places[missing] = nullptr;
    EXPECT_EQ(function(blocks.data(), places.data(), frame.pixels.step()), orbStsNullPtrErr);
    EXPECT_EQ(frame.pixels.samples(), expected.pixels.samples());
  }
}
ORB_AGREEMENT(orbiYCrCb422ToYCbCr422_10HalvesMB16x8_DV100_16s8u_P3C2R) {
  expectAgreement(ORB(orbiYCrCb422ToYCbCr422_10HalvesMB16x8_DV100_16s8u_P3C2R),
                  PX(orbiYCrCb422ToYCbCr422_10HalvesMB16x8_DV100_16s8u_P3C2R), tenHalves(), random);
}

}  // namespace
