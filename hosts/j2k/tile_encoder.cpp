#include "hosts/j2k/tile_encoder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <type_traits>
#include <utility>

namespace orbhost::j2k {

namespace {

// What of a sample's magnitude below the last plane a block's encoder takes account of.
constexpr int kFractionBits = 6;

void transformComponents(const Orb32s* from, Orb32s* const to[3], int width) {
  const Orb32s step = width * static_cast<Orb32s>(sizeof(Orb32s));
  legacy90orbiRCTFwd_JPEG2K_32s_C3P3R(from, 3 * step, to, step, {width, 1});
}
void transformComponents(const Orb32f* from, Orb32f* const to[3], int width) {
  const Orb32s step = width * static_cast<Orb32s>(sizeof(Orb32f));
  legacy90orbiICTFwd_JPEG2K_32f_C3P3R(from, 3 * step, to, step, {width, 1});
}

// The tile's samples around 0, by component (T.800 annex G).
template <class Sample>
std::vector<PaddedPlane<Sample>> componentPlanes(const Image& image, const TileCoding& coding,
                                                 const PictureSize& size, const Rect& tile) {
  const int channels = image.channels();
  const int width = static_cast<int>(tile.width());
  const int height = static_cast<int>(tile.height());
  const int middle = 1 << (size.components[0].precision - 1);
  std::vector<PaddedPlane<Sample>> planes;
  for (int c = 0; c < channels; ++c) planes.emplace_back(width, height);
  std::vector<Sample> shifted(static_cast<size_t>(width) * channels);
  for (int y = 0; y < height; ++y) {
    image.withRow(static_cast<int>(tile.y0) + y, [&](const auto* row) {
      std::transform(row + size_t{tile.x0} * channels, row + size_t{tile.x1} * channels,
                     shifted.begin(),
                     [middle](int sample) { return static_cast<Sample>(sample - middle); });
    });
    if (coding.style.transformsComponents) {
      Sample* const rows[3] = {planes[0].row(y), planes[1].row(y), planes[2].row(y)};
      transformComponents(shifted.data(), rows, width);
      continue;
    }
    for (int c = 0; c < channels; ++c) {
      Sample* const row = planes[c].row(y);
      for (int x = 0; x < width; ++x) row[x] = shifted[static_cast<size_t>(x) * channels + c];
    }
  }
  return planes;
}

constexpr Orb32u kSign = 0x80000000u;

// Signs in bit 31 and magnitudes.
void toMagnitudes(const Orb32s* from, int count, double, Orb32s* to) {
  for (int i = 0; i < count; ++i) {
    to[i] = static_cast<Orb32s>((static_cast<Orb32u>(from[i]) & kSign) |
                                static_cast<Orb32u>(std::abs(from[i])));
  }
}
void toMagnitudes(const Orb32f* from, int count, double step, Orb32s* to) {
  const auto scale = static_cast<float>((1 << kFractionBits) / step);
  for (int i = 0; i < count; ++i) {
    const auto magnitude = static_cast<Orb32s>(std::fabs(from[i]) * scale);
    to[i] = static_cast<Orb32s>((from[i] < 0 ? kSign : 0) | static_cast<Orb32u>(magnitude));
  }
}

template <class Sample>
const PaddedPlane<Sample>& planeOf(const Band& band, const Subbands<Sample>& subbands) {
  using Bands = Subbands<Sample>;
  switch (band.orientation) {
    case Orientation::kLl:
      return subbands.low;
    case Orientation::kHl:
      return subbands.levels[band.level - 1][Bands::kHl];
    case Orientation::kLh:
      return subbands.levels[band.level - 1][Bands::kLh];
    case Orientation::kHh:
      break;
  }
  return subbands.levels[band.level - 1][Bands::kHh];
}

const ComponentStyle& styleOf(const TileCoding& coding) {
  return coding.components[0].style;
}

}  // namespace

TileEncoder::TileEncoder(const Image& image, const PictureSize& size, const TileCoding& coding,
                         const std::vector<BandPlan>& plans)
    : image_(image),
      size_(size),
      coding_(coding),
      plans_(plans),
      blockEncoder_({1 << styleOf(coding).blockWidth, 1 << styleOf(coding).blockHeight},
                    styleOf(coding).blockStyle) {
  for (int c = 0; c < size.componentCount(); ++c) {
    componentNorms_.push_back(
        coding.style.transformsComponents ? componentNorm(styleOf(coding).isReversible, c) : 1);
  }
}

TransformedTile TileEncoder::transform(const Tile& tile) {
  TransformedTile transformed;
  const auto transformAs = [&](auto& components, auto planes) {
    for (size_t c = 0; c < planes.size(); ++c) {
      components.push_back(
          transformForward(std::move(planes[c]), static_cast<int>(tile.components[c].rect.x0),
                           static_cast<int>(tile.components[c].rect.y0), styleOf(coding_).levels));
    }
  };
  if (styleOf(coding_).isReversible) {
    transformAs(transformed.exact, componentPlanes<Orb32s>(image_, coding_, size_, tile.rect));
  } else {
    transformAs(transformed.real, componentPlanes<Orb32f>(image_, coding_, size_, tile.rect));
  }
  return transformed;
}

void TileEncoder::count(const TransformedTile& tile, MagnitudeCounts& counts) const {
  for (size_t c = 0; c < tile.real.size(); ++c) {
    size_t band = 0;
    const auto add = [&](const PaddedPlane<Orb32f>& plane) {
      const auto norm = static_cast<float>(plans_[band++].norm * componentNorms_[c]);
      for (int y = 0; y < plane.height(); ++y) counts.add(plane.row(y), plane.width(), norm);
    };
    const Subbands<Orb32f>& subbands = tile.real[c];
    add(subbands.low);
    for (size_t level = subbands.levels.size(); level > 0; --level) {
      for (const PaddedPlane<Orb32f>& plane : subbands.levels[level - 1]) add(plane);
    }
  }
}

TilePrecincts TileEncoder::encode(const Tile& tile, const TransformedTile& transformed,
                                  double finest) {
  return styleOf(coding_).isReversible ? encodeAs(tile, transformed.exact, finest)
                                       : encodeAs(tile, transformed.real, finest);
}

bool TileEncoder::leavesOut(double finest) const {
  for (int c = 0; c < size_.componentCount(); ++c) {
    for (int band = 0; band < static_cast<int>(plans_.size()); ++band) {
      if (lastPlaneFor(c, band, finest) > 0) return true;
    }
  }
  return false;
}

int TileEncoder::lastPlaneFor(int component, int band, double finest) const {
  constexpr int kMostLeftOut = 20;
  int plane = 0;
  for (double unit = unitOf(component, band); unit < finest && plane < kMostLeftOut; unit *= 2) {
    ++plane;
  }
  return plane;
}

template <class Sample>
TilePrecincts TileEncoder::encodeAs(const Tile& tile,
                                    const std::vector<Subbands<Sample>>& components,
                                    double finest) {
  TilePrecincts precincts;
  for (int c = 0; c < size_.componentCount(); ++c) {
    for (const Resolution& resolution : tile.components[c].resolutions) {
      for (uint32_t precinct = 0; precinct < resolution.precinctCount(); ++precinct) {
        precincts.emplace_back();
        for (const Band& band : resolution.bands) {
          const BlockGrid grid = resolution.blocks(band, precinct);
          EncodedBand coded = {static_cast<int>(grid.columns),
                               static_cast<int>(grid.rows),
                               plans_[band.index].code.exponent,
                               {}};
          coded.blocks.reserve(static_cast<size_t>(grid.count()));
          const PaddedPlane<Sample>& plane = planeOf(band, components[c]);
          for (uint32_t row = 0; row < grid.rows; ++row) {
            for (uint32_t column = 0; column < grid.columns; ++column) {
              coded.blocks.push_back(encodeBlock(plane, c, band, grid.block(column, row), finest));
            }
          }
          precincts.back().push_back(std::move(coded));
        }
      }
    }
  }
  return precincts;
}

template <class Sample>
EncodedBlock TileEncoder::encodeBlock(const PaddedPlane<Sample>& plane, int component,
                                      const Band& band, const Rect& rect, double finest) {
  constexpr bool kIsExact = std::is_integral_v<Sample>;
  const OrbiSize size = {static_cast<int>(rect.width()), static_cast<int>(rect.height())};
  const auto x = static_cast<int>(rect.x0 - band.rect.x0);
  const auto y = static_cast<int>(rect.y0 - band.rect.y0);
  magnitudes_.resize(static_cast<size_t>(size.width) * size.height);
  for (int row = 0; row < size.height; ++row) {
    toMagnitudes(plane.row(y + row) + x, size.width, plans_[band.index].step,
                 magnitudes_.data() + static_cast<size_t>(row) * size.width);
  }
  const double unit = unitOf(component, band.index);
  EncodedBlock block = blockEncoder_.encode(
      magnitudes_.data(), size, static_cast<int>(band.orientation), kIsExact ? 0 : kFractionBits,
      lastPlaneFor(component, band.index, finest), unit * unit);
  findCuts(block, (styleOf(coding_).blockStyle & kPredictableTermination) != 0);
  return block;
}

}  // namespace orbhost::j2k
