// How a picture is divided (ITU-T T.800 annex B): into tiles, these into tile-components,
// resolutions and bands, and those into precincts and code-blocks.
#ifndef ORB_HOSTS_J2K_LAYOUT_H
#define ORB_HOSTS_J2K_LAYOUT_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "hosts/j2k/parameters.h"

namespace orbhost::j2k {

// ceil(a / b) and ceil(a / 2^n) for any values.
constexpr uint32_t divideUp(uint32_t a, uint32_t b) {
  return a / b + (a % b != 0 ? 1 : 0);
}
constexpr uint32_t shiftUp(uint32_t a, int n) {
  return static_cast<uint32_t>((uint64_t{a} + (uint64_t{1} << n) - 1) >> n);
}

// [x0, x1) x [y0, y1); empty if an end is not behind its beginning.
struct Rect {
  uint32_t x0 = 0;
  uint32_t y0 = 0;
  uint32_t x1 = 0;
  uint32_t y1 = 0;

  bool isEmpty() const { return x1 <= x0 || y1 <= y0; }
  uint32_t width() const { return x1 - x0; }
  uint32_t height() const { return y1 - y0; }
};

inline bool operator==(const Rect& a, const Rect& b) {
  return a.x0 == b.x0 && a.y0 == b.y0 && a.x1 == b.x1 && a.y1 == b.y1;
}

// A rectangle of the reference grid in samples of a component (B-12).
Rect componentRect(const Rect& rect, const ComponentSize& component);

// A tile-component after some levels of decomposition, low bands only (B-14).
Rect reducedRect(const Rect& rect, int levels);

// The picture's tiles (B.3).
struct TileGrid {
  uint32_t columns;
  uint32_t rows;

  explicit TileGrid(const PictureSize& size)
      : columns(divideUp(size.x1 - size.tileX0, size.tileWidth)),
        rows(divideUp(size.y1 - size.tileY0, size.tileHeight)) {}

  uint64_t count() const { return uint64_t{columns} * rows; }
};

// A tile in the reference grid.
Rect tileRect(const PictureSize& size, uint32_t tile);

// Bit 1: high-pass across; bit 0: high-pass down. The values are the library's.
enum class Orientation : int { kLl = 0, kLh = 1, kHl = 2, kHh = 3 };

// By how many bits the samples of a band may be larger than those of the picture (table E.1).
constexpr int gainOf(Orientation orientation) {
  const int bits = static_cast<int>(orientation);
  return (bits >> 1) + (bits & 1);
}

struct Band {
  Orientation orientation;
  int level;  // of decomposition
  int index;  // among the bands of the component, in the order of the codestream
  Rect rect;  // (B-15)
};

// The code-blocks of a band within a precinct.
struct BlockGrid {
  Rect rect;       // samples of the band
  int blockWidth;  // exponents
  int blockHeight;
  uint32_t columns;
  uint32_t rows;

  uint64_t count() const { return uint64_t{columns} * rows; }
  Rect block(uint32_t column, uint32_t row) const;
};

// One resolution of a tile-component. Resolution 0 is the lowest and has the LL band; the others
// have HL, LH, HH.
struct Resolution {
  Rect rect;
  PrecinctSize precinctSize;  // exponents
  int blockWidth;             // exponents of the code-blocks, before precincts limit them (B-17)
  int blockHeight;
  uint32_t precinctsWide;
  uint32_t precinctsHigh;
  std::vector<Band> bands;
  size_t firstPrecinct = 0;  // how many precincts of the tile come in front of its own

  uint64_t precinctCount() const { return uint64_t{precinctsWide} * precinctsHigh; }
  BlockGrid blocks(const Band& band, uint32_t precinct) const;
};

struct TileComponent {
  Rect rect;
  std::vector<Resolution> resolutions;

  TileComponent(const Rect& area, const ComponentStyle& style);
};

struct Tile {
  Rect rect;
  std::vector<TileComponent> components;

  Tile(const PictureSize& size, uint32_t tile, const TileCoding& coding);

  uint64_t precinctCount() const;
};

// The quantisation step of a band, derived from that of the LL band if need be (E-5), and the
// number of bit-planes that its magnitudes have at most, without those of a region of interest
// (E-2).
StepSize stepOf(const Quantisation& quantisation, const Band& band);
int bitPlanesOf(const Quantisation& quantisation, const Band& band);

}  // namespace orbhost::j2k

#endif
