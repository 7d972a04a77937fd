// How pictures are divided and packets ordered, against the rules of T.800 annex B taken word by
// word: sets of coordinates, and loops over every position.
#include "hosts/j2k/layout.h"

#include <gtest/gtest.h>

#include <set>
#include <tuple>
#include <vector>

#include "hosts/j2k/packet_sequence.h"
#include "tests/support/random.h"

namespace {

using namespace orbhost::j2k;

// The coordinates of [first, end) that a wavelet's levels leave in a band: low ones stand at even
// places and high ones at odd ones.
std::vector<uint32_t> bandCoordinates(uint32_t first, uint32_t end, int level, bool isHigh) {
  std::vector<uint32_t> line;
  for (uint32_t x = first; x < end; ++x) line.push_back(x);
  for (int i = 1; i <= level; ++i) {
    std::vector<uint32_t> half;
    for (const uint32_t x : line) {
      if (x % 2 == (isHigh && i == level ? 1u : 0u)) half.push_back(x / 2);
    }
    line = half;
  }
  return line;
}

void expectSpan(const std::vector<uint32_t>& expected, uint32_t first, uint32_t end) {
  ASSERT_EQ(end - first, expected.size());
  for (size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(expected[i], first + i);
}

// A picture of a few tiles and components, all of them odd.
PictureSize randomSize(orbtest::Random& random) {
  PictureSize size;
  size.x0 = static_cast<uint32_t>(random.between(0, 40));
  size.y0 = static_cast<uint32_t>(random.between(0, 40));
  size.x1 = size.x0 + static_cast<uint32_t>(random.between(1, 60));
  size.y1 = size.y0 + static_cast<uint32_t>(random.between(1, 60));
  size.tileX0 = static_cast<uint32_t>(random.between(0, static_cast<int>(size.x0)));
  size.tileY0 = static_cast<uint32_t>(random.between(0, static_cast<int>(size.y0)));
  size.tileWidth = size.x0 - size.tileX0 + static_cast<uint32_t>(random.between(1, 50));
  size.tileHeight = size.y0 - size.tileY0 + static_cast<uint32_t>(random.between(1, 50));
  const int components = random.between(1, 3);
  for (int c = 0; c < components; ++c) {
    ComponentSize component;
    component.dx = static_cast<uint32_t>(random.between(1, 3));
    component.dy = static_cast<uint32_t>(random.between(1, 3));
    size.components.push_back(component);
  }
  return size;
}

TileCoding randomCoding(orbtest::Random& random, int components) {
  TileCoding coding;
  coding.style.layers = random.between(1, 3);
  coding.style.progression = static_cast<Progression>(random.between(0, 4));
  for (int c = 0; c < components; ++c) {
    ComponentCoding component;
    component.style.levels = random.between(0, 4);
    component.style.blockWidth = random.between(2, 4);
    component.style.blockHeight = random.between(2, 4);
    for (int r = 0; r <= component.style.levels; ++r) {
      component.style.precincts[r] = {random.between(r == 0 ? 0 : 1, 5),
                                      random.between(r == 0 ? 0 : 1, 5)};
    }
    coding.components.push_back(component);
  }
  const int changes = random.oneIn(2) ? random.between(1, 4) : 0;
  for (int i = 0; i < changes; ++i) {
    ProgressionChange change;
    change.firstResolution = random.between(0, 2);
    change.firstComponent = random.between(0, components - 1);
    change.endLayer = random.between(1, 4);
    change.endResolution = random.between(change.firstResolution + 1, 6);
    change.endComponent = random.between(change.firstComponent + 1, 4);
    change.progression = static_cast<Progression>(random.between(0, 4));
    coding.changes.push_back(change);
  }
  return coding;
}

TEST(J2kLayout, TilesCoverThePictureOnce) {
  orbtest::Random random("tiles");
  for (int i = 0; i < 200; ++i) {
    const PictureSize size = randomSize(random);
    std::vector<int> covered(static_cast<size_t>(size.x1) * size.y1);
    for (uint32_t t = 0; t < TileGrid(size).count(); ++t) {
      const Rect tile = tileRect(size, t);
      for (uint32_t y = tile.y0; y < tile.y1; ++y) {
        for (uint32_t x = tile.x0; x < tile.x1; ++x) ++covered[y * size.x1 + x];
      }
    }
    for (uint32_t y = 0; y < size.y1; ++y) {
      for (uint32_t x = 0; x < size.x1; ++x) {
        ASSERT_EQ(covered[y * size.x1 + x], x >= size.x0 && y >= size.y0 ? 1 : 0);
      }
    }
  }
}

TEST(J2kLayout, BandsHaveTheCoordinatesThatTheWaveletLeaves) {
  orbtest::Random random("bands");
  for (int i = 0; i < 100; ++i) {
    const PictureSize size = randomSize(random);
    const TileCoding coding = randomCoding(random, size.componentCount());
    const Tile tile(size, 0, coding);
    for (size_t c = 0; c < tile.components.size(); ++c) {
      const Rect& rect = tile.components[c].rect;
      const int levels = coding.components[c].style.levels;
      ASSERT_EQ(tile.components[c].resolutions.size(), static_cast<size_t>(levels) + 1);
      for (int r = 0; r <= levels; ++r) {
        const Resolution& resolution = tile.components[c].resolutions[r];
        expectSpan(bandCoordinates(rect.x0, rect.x1, levels - r, false), resolution.rect.x0,
                   resolution.rect.x1);
        ASSERT_EQ(resolution.bands.size(), r == 0 ? 1u : 3u);
        for (const Band& band : resolution.bands) {
          const int orientation = static_cast<int>(band.orientation);
          const int level = r == 0 ? levels : levels - r + 1;
          EXPECT_EQ(band.level, level);
          expectSpan(bandCoordinates(rect.x0, rect.x1, level, (orientation & 2) != 0), band.rect.x0,
                     band.rect.x1);
          expectSpan(bandCoordinates(rect.y0, rect.y1, level, (orientation & 1) != 0), band.rect.y0,
                     band.rect.y1);
        }
      }
    }
  }
}

TEST(J2kLayout, BandsStandInTheOrderOfTheCodestream) {
  PictureSize size;
  size.x1 = size.y1 = size.tileWidth = size.tileHeight = 64;
  size.components.resize(1);
  TileCoding coding;
  coding.components.resize(1);
  coding.components[0].style.levels = 2;
  const Tile tile(size, 0, coding);
  std::vector<Orientation> order;
  int index = 0;
  for (const Resolution& resolution : tile.components[0].resolutions) {
    for (const Band& band : resolution.bands) {
      EXPECT_EQ(band.index, index++);
      order.push_back(band.orientation);
    }
  }
  EXPECT_EQ(order, (std::vector<Orientation>{Orientation::kLl, Orientation::kHl, Orientation::kLh,
                                             Orientation::kHh, Orientation::kHl, Orientation::kLh,
                                             Orientation::kHh}));
}

// Precincts are cut on the resolution's grid, which has two samples for one of a band.
TEST(J2kLayout, CodeBlocksCoverABandOnceAndStayWithinTheirCells) {
  orbtest::Random random("blocks");
  for (int i = 0; i < 100; ++i) {
    const PictureSize size = randomSize(random);
    const TileCoding coding = randomCoding(random, size.componentCount());
    const Tile tile(size, 0, coding);
    for (const TileComponent& component : tile.components) {
      for (const Resolution& resolution : component.resolutions) {
        for (const Band& band : resolution.bands) {
          std::set<std::pair<uint32_t, uint32_t>> covered;
          const int halved = band.orientation == Orientation::kLl ? 0 : 1;
          for (uint32_t p = 0; p < resolution.precinctCount(); ++p) {
            const BlockGrid grid = resolution.blocks(band, p);
            for (uint32_t row = 0; row < grid.rows; ++row) {
              for (uint32_t column = 0; column < grid.columns; ++column) {
                const Rect block = grid.block(column, row);
                ASSERT_FALSE(block.isEmpty());
                const uint32_t px = resolution.rect.x0 >> resolution.precinctSize.width;
                const uint32_t py = resolution.rect.y0 >> resolution.precinctSize.height;
                for (uint32_t y = block.y0; y < block.y1; ++y) {
                  for (uint32_t x = block.x0; x < block.x1; ++x) {
                    ASSERT_TRUE(covered.emplace(x, y).second);
                    ASSERT_EQ((x << halved) >> resolution.precinctSize.width,
                              px + p % resolution.precinctsWide);
                    ASSERT_EQ((y << halved) >> resolution.precinctSize.height,
                              py + p / resolution.precinctsWide);
                    ASSERT_EQ(x >> resolution.blockWidth, block.x0 >> resolution.blockWidth);
                    ASSERT_EQ(y >> resolution.blockHeight, block.y0 >> resolution.blockHeight);
                  }
                }
              }
            }
          }
          ASSERT_EQ(covered.size(), static_cast<size_t>(band.rect.width()) * band.rect.height());
        }
      }
    }
  }
}

TEST(J2kLayout, CoordinatesAtTheEndOfTheGridDoNotWrap) {
  EXPECT_EQ(divideUp(UINT32_MAX, 2), 0x80000000u);
  EXPECT_EQ(divideUp(UINT32_MAX, 1), UINT32_MAX);
  EXPECT_EQ(shiftUp(UINT32_MAX, 1), 0x80000000u);
  EXPECT_EQ(shiftUp(UINT32_MAX, 32), 1u);
  EXPECT_EQ(shiftUp(0, 32), 0u);
  PictureSize size;
  size.x0 = size.y0 = UINT32_MAX - 10;
  size.x1 = size.y1 = UINT32_MAX;
  size.tileWidth = size.tileHeight = UINT32_MAX;
  const Rect tile = tileRect(size, 0);
  EXPECT_EQ(tile.x0, UINT32_MAX - 10);
  EXPECT_EQ(tile.x1, UINT32_MAX);
}

TEST(J2kLayout, DerivedStepsLoseOneBitOfExponentPerLevel) {
  Quantisation quantisation;
  quantisation.style = QuantisationStyle::kDerived;
  quantisation.guardBits = 1;
  quantisation.steps = {{13, 77}};
  // E-5: exponent 13 - 3 + level, of three levels.
  for (const auto& [index, exponent] : {std::pair{0, 13}, {1, 13}, {3, 13}, {4, 12}, {9, 11}}) {
    const Band band{Orientation::kHl, 0, index, {}};
    EXPECT_EQ(stepOf(quantisation, band).exponent, exponent) << index;
    EXPECT_EQ(stepOf(quantisation, band).mantissa, 77);
    EXPECT_EQ(bitPlanesOf(quantisation, band), exponent);
  }
}

// ---- Packets

using Place = std::tuple<int, int, uint32_t, int>;  // component, resolution, precinct, layer

// The loops of B.12.1 as they stand there.
class Model {
 public:
  Model(const PictureSize& size, const Tile& tile, const TileCoding& coding)
      : size_(size), tile_(tile), coding_(coding) {
    if (coding.changes.empty()) {
      run({0, 0, coding.style.layers, 33, static_cast<int>(tile.components.size()),
           coding.style.progression});
    }
    for (const ProgressionChange& change : coding.changes) run(change);
  }

  const std::vector<Place>& order() const { return order_; }

 private:
  void run(const ProgressionChange& change) {
    const int layers = std::min(change.endLayer, coding_.style.layers);
    const int components = std::min(change.endComponent, static_cast<int>(tile_.components.size()));
    const int c0 = change.firstComponent;
    const int r0 = change.firstResolution;
    const int resolutions = change.endResolution;
    switch (change.progression) {
      case Progression::kLrcp:
        for (int l = 0; l < layers; ++l)
          for (int r = r0; r < resolutions; ++r)
            for (int c = c0; c < components; ++c)
              for (uint32_t k = 0; k < precincts(c, r); ++k) add(c, r, k, l);
        break;
      case Progression::kRlcp:
        for (int r = r0; r < resolutions; ++r)
          for (int l = 0; l < layers; ++l)
            for (int c = c0; c < components; ++c)
              for (uint32_t k = 0; k < precincts(c, r); ++k) add(c, r, k, l);
        break;
      case Progression::kRpcl:
        for (int r = r0; r < resolutions; ++r)
          for (uint32_t y = tile_.rect.y0; y < tile_.rect.y1; ++y)
            for (uint32_t x = tile_.rect.x0; x < tile_.rect.x1; ++x)
              for (int c = c0; c < components; ++c) visit(c, r, x, y, layers);
        break;
      case Progression::kPcrl:
        for (uint32_t y = tile_.rect.y0; y < tile_.rect.y1; ++y)
          for (uint32_t x = tile_.rect.x0; x < tile_.rect.x1; ++x)
            for (int c = c0; c < components; ++c)
              for (int r = r0; r < resolutions; ++r) visit(c, r, x, y, layers);
        break;
      case Progression::kCprl:
        for (int c = c0; c < components; ++c)
          for (uint32_t y = tile_.rect.y0; y < tile_.rect.y1; ++y)
            for (uint32_t x = tile_.rect.x0; x < tile_.rect.x1; ++x)
              for (int r = r0; r < resolutions; ++r) visit(c, r, x, y, layers);
        break;
    }
  }

  uint32_t precincts(int c, int r) const {
    const auto& resolutions = tile_.components[c].resolutions;
    return r < static_cast<int>(resolutions.size())
               ? static_cast<uint32_t>(resolutions[r].precinctCount())
               : 0;
  }

  void visit(int c, int r, uint32_t x, uint32_t y, int layers) {
    if (precincts(c, r) == 0) return;
    const Resolution& resolution = tile_.components[c].resolutions[r];
    const int below = static_cast<int>(tile_.components[c].resolutions.size()) - 1 - r;
    const uint64_t dx = size_.components[c].dx;
    const uint64_t dy = size_.components[c].dy;
    const PrecinctSize& exponents = resolution.precinctSize;
    const auto comesUp = [below](uint64_t at, uint64_t d, int exponent, uint64_t tileFirst,
                                 uint64_t first) {
      return at % (d << (exponent + below)) == 0 ||
             (at == tileFirst && (first << below) % (uint64_t{1} << (exponent + below)) != 0);
    };
    if (!comesUp(y, dy, exponents.height, tile_.rect.y0, resolution.rect.y0) ||
        !comesUp(x, dx, exponents.width, tile_.rect.x0, resolution.rect.x0)) {
      return;
    }
    const auto cell = [below](uint64_t at, uint64_t d, int exponent, uint64_t first) {
      const uint64_t sample = (at + (d << below) - 1) / (d << below);
      return (sample >> exponent) - (first >> exponent);
    };
    const uint64_t k = cell(x, dx, exponents.width, resolution.rect.x0) +
                       resolution.precinctsWide * cell(y, dy, exponents.height, resolution.rect.y0);
    for (int l = 0; l < layers; ++l) add(c, r, static_cast<uint32_t>(k), l);
  }

  void add(int c, int r, uint32_t k, int l) {
    if (done_.emplace(c, r, k, l).second) order_.emplace_back(c, r, k, l);
  }

  const PictureSize& size_;
  const Tile& tile_;
  const TileCoding& coding_;
  std::set<Place> done_;
  std::vector<Place> order_;
};

TEST(J2kPacketSequence, FollowsTheLoopsOfTheStandard) {
  orbtest::Random random("packets");
  for (int i = 0; i < 300; ++i) {
    const PictureSize size = randomSize(random);
    const TileCoding coding = randomCoding(random, size.componentCount());
    const uint32_t last = static_cast<uint32_t>(TileGrid(size).count()) - 1;
    const Tile tile(size, static_cast<uint32_t>(random.between(0, static_cast<int>(last))), coding);
    std::vector<Place> order;
    PacketSequence sequence(size, tile, coding);
    for (Packet packet; sequence.next(packet);) {
      const Resolution& r = tile.components[packet.component].resolutions[packet.resolution];
      EXPECT_EQ(packet.precinctOfTile, r.firstPrecinct + packet.precinct);
      order.emplace_back(packet.component, packet.resolution, packet.precinct, packet.layer);
    }
    ASSERT_EQ(order, Model(size, tile, coding).order()) << "picture " << i;
    Packet packet;
    EXPECT_FALSE(sequence.next(packet));
  }
}

TEST(J2kPacketSequence, TellsWhichProgressionAPacketBelongsTo) {
  PictureSize size;
  size.x1 = size.y1 = size.tileWidth = size.tileHeight = 8;
  size.components.resize(2);
  TileCoding coding;
  coding.components.resize(2);
  for (ComponentCoding& component : coding.components) component.style.levels = 1;
  coding.changes = {{0, 0, 1, 1, 2, Progression::kLrcp}, {0, 0, 1, 2, 2, Progression::kCprl}};
  const Tile tile(size, 0, coding);
  PacketSequence sequence(size, tile, coding);
  std::vector<size_t> changes;
  for (Packet packet; sequence.next(packet);) changes.push_back(sequence.change());
  EXPECT_EQ(changes, (std::vector<size_t>{0, 0, 1, 1}));
}

}  // namespace
