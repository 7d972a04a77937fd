#include "hosts/j2k/layout.h"

#include <algorithm>

namespace orbhost::j2k {

namespace {

// A coordinate of a band (B-15): `high` is the bit of its orientation in this direction.
uint32_t bandCoordinate(uint32_t position, int level, bool high) {
  if (level == 0) return position;
  const uint64_t shift = high ? uint64_t{1} << (level - 1) : 0;
  if (position <= shift) return 0;
  return shiftUp(static_cast<uint32_t>(position - shift), level);
}

Rect bandRect(const Rect& component, int level, Orientation orientation) {
  const bool highAcross = (static_cast<int>(orientation) & 2) != 0;
  const bool highDown = (static_cast<int>(orientation) & 1) != 0;
  return {bandCoordinate(component.x0, level, highAcross),
          bandCoordinate(component.y0, level, highDown),
          bandCoordinate(component.x1, level, highAcross),
          bandCoordinate(component.y1, level, highDown)};
}

// How many cells of 2^exponent the interval [from, to) touches.
uint32_t cellsOf(uint32_t from, uint32_t to, int exponent) {
  return to > from ? shiftUp(to, exponent) - (from >> exponent) : 0;
}

uint32_t limited(uint64_t value) {
  return static_cast<uint32_t>(std::min<uint64_t>(value, UINT32_MAX));
}

// The cell of 2^exponent with this index, as far as it lies within [from, to).
void cutCell(uint64_t index, int exponent, uint32_t from, uint32_t to, uint32_t& first,
             uint32_t& end) {
  first = std::max(limited(index << exponent), from);
  end = std::min(limited((index + 1) << exponent), to);
}

}  // namespace

Rect componentRect(const Rect& rect, const ComponentSize& component) {
  return {divideUp(rect.x0, component.dx), divideUp(rect.y0, component.dy),
          divideUp(rect.x1, component.dx), divideUp(rect.y1, component.dy)};
}

Rect reducedRect(const Rect& rect, int levels) {
  return {shiftUp(rect.x0, levels), shiftUp(rect.y0, levels), shiftUp(rect.x1, levels),
          shiftUp(rect.y1, levels)};
}

Rect tileRect(const PictureSize& size, uint32_t tile) {
  const uint32_t columns = TileGrid(size).columns;
  const uint64_t x = size.tileX0 + uint64_t{tile % columns} * size.tileWidth;
  const uint64_t y = size.tileY0 + uint64_t{tile / columns} * size.tileHeight;
  return {std::max(limited(x), size.x0), std::max(limited(y), size.y0),
          std::min(limited(x + size.tileWidth), size.x1),
          std::min(limited(y + size.tileHeight), size.y1)};
}

Rect BlockGrid::block(uint32_t column, uint32_t row) const {
  Rect block;
  cutCell(uint64_t{rect.x0 >> blockWidth} + column, blockWidth, rect.x0, rect.x1, block.x0,
          block.x1);
  cutCell(uint64_t{rect.y0 >> blockHeight} + row, blockHeight, rect.y0, rect.y1, block.y0,
          block.y1);
  return block;
}

BlockGrid Resolution::blocks(const Band& band, uint32_t precinct) const {
  // A precinct has half as many samples of each band as of its resolution, but for the lowest one.
  const int halved = band.orientation == Orientation::kLl ? 0 : 1;
  const int width = precinctSize.width - halved;
  const int height = precinctSize.height - halved;
  BlockGrid grid{{}, std::min(blockWidth, width), std::min(blockHeight, height), 0, 0};
  cutCell(uint64_t{rect.x0 >> precinctSize.width} + precinct % precinctsWide, width, band.rect.x0,
          band.rect.x1, grid.rect.x0, grid.rect.x1);
  cutCell(uint64_t{rect.y0 >> precinctSize.height} + precinct / precinctsWide, height, band.rect.y0,
          band.rect.y1, grid.rect.y0, grid.rect.y1);
  if (!grid.rect.isEmpty()) {
    grid.columns = cellsOf(grid.rect.x0, grid.rect.x1, grid.blockWidth);
    grid.rows = cellsOf(grid.rect.y0, grid.rect.y1, grid.blockHeight);
  }
  return grid;
}

TileComponent::TileComponent(const Rect& area, const ComponentStyle& style) : rect(area) {
  for (int r = 0; r <= style.levels; ++r) {
    const Rect reduced = reducedRect(area, style.levels - r);
    const PrecinctSize& size = style.precincts[r];
    Resolution resolution{reduced,
                          size,
                          style.blockWidth,
                          style.blockHeight,
                          cellsOf(reduced.x0, reduced.x1, size.width),
                          cellsOf(reduced.y0, reduced.y1, size.height),
                          {},
                          0};
    if (r == 0) {
      resolution.bands.push_back({Orientation::kLl, style.levels, 0, reduced});
    } else {
      const int level = style.levels - r + 1;
      int index = 3 * (r - 1) + 1;
      for (const Orientation o : {Orientation::kHl, Orientation::kLh, Orientation::kHh}) {
        resolution.bands.push_back({o, level, index++, bandRect(area, level, o)});
      }
    }
    resolutions.push_back(std::move(resolution));
  }
}

Tile::Tile(const PictureSize& size, uint32_t tile, const TileCoding& coding)
    : rect(tileRect(size, tile)) {
  components.reserve(size.components.size());
  uint64_t precincts = 0;
  for (size_t c = 0; c < size.components.size(); ++c) {
    components.emplace_back(componentRect(rect, size.components[c]), coding.components[c].style);
    for (Resolution& resolution : components.back().resolutions) {
      resolution.firstPrecinct = static_cast<size_t>(precincts);
      precincts += resolution.precinctCount();
    }
  }
}

uint64_t Tile::precinctCount() const {
  uint64_t count = 0;
  for (const TileComponent& component : components) {
    for (const Resolution& resolution : component.resolutions) count += resolution.precinctCount();
  }
  return count;
}

StepSize stepOf(const Quantisation& quantisation, const Band& band) {
  if (quantisation.style != QuantisationStyle::kDerived) return quantisation.steps[band.index];
  // Band 0 has the level of the first bands behind it; each later level is one less.
  const int behind = band.index == 0 ? 0 : (band.index - 1) / 3;
  const StepSize& first = quantisation.steps[0];
  return {std::max(first.exponent - behind, 0), first.mantissa};
}

int bitPlanesOf(const Quantisation& quantisation, const Band& band) {
  return std::max(quantisation.guardBits + stepOf(quantisation, band).exponent - 1, 0);
}

}  // namespace orbhost::j2k
