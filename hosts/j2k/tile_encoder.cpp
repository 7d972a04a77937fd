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

// Signs in bit 31 and magnitudes. Returns the sum of their squares in units of a step.
double toMagnitudes(const Orb32s* from, int count, double, Orb32s* to) {
  double squares = 0;
  for (int i = 0; i < count; ++i) {
    const Orb32s magnitude = std::abs(from[i]);
    to[i] = static_cast<Orb32s>((static_cast<Orb32u>(from[i]) & kSign) |
                                static_cast<Orb32u>(magnitude));
    squares += static_cast<double>(magnitude) * magnitude;
  }
  return squares;
}
double toMagnitudes(const Orb32f* from, int count, double step, Orb32s* to) {
  const auto scale = static_cast<float>((1 << kFractionBits) / step);
  double squares = 0;
  for (int i = 0; i < count; ++i) {
    const float magnitude = std::fabs(from[i]) * scale;
    to[i] = static_cast<Orb32s>((from[i] < 0 ? kSign : 0) |
                                static_cast<Orb32u>(static_cast<Orb32s>(magnitude)));
    squares += static_cast<double>(magnitude) * magnitude;
  }
  return squares / (1 << 2 * kFractionBits);
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
                         std::vector<BandPlan> plans)
    : image_(image),
      size_(size),
      coding_(coding),
      plans_(std::move(plans)),
      blockEncoder_({1 << styleOf(coding).blockWidth, 1 << styleOf(coding).blockHeight},
                    styleOf(coding).blockStyle) {}

TilePrecincts TileEncoder::encode(const Tile& tile) {
  return styleOf(coding_).isReversible ? encodeAs<Orb32s>(tile) : encodeAs<Orb32f>(tile);
}

template <class Sample>
TilePrecincts TileEncoder::encodeAs(const Tile& tile) {
  const ComponentStyle& style = styleOf(coding_);
  TilePrecincts precincts;
  std::vector<PaddedPlane<Sample>> planes =
      componentPlanes<Sample>(image_, coding_, size_, tile.rect);
  for (int c = 0; c < size_.componentCount(); ++c) {
    const TileComponent& component = tile.components[c];
    const Subbands<Sample> subbands =
        transformForward(std::move(planes[c]), static_cast<int>(component.rect.x0),
                         static_cast<int>(component.rect.y0), style.levels);
    const double norm =
        coding_.style.transformsComponents ? componentNorm(style.isReversible, c) : 1;
    for (const Resolution& resolution : component.resolutions) {
      for (uint32_t precinct = 0; precinct < resolution.precinctCount(); ++precinct) {
        precincts.emplace_back();
        for (const Band& band : resolution.bands) {
          const BlockGrid grid = resolution.blocks(band, precinct);
          PrecinctBand coded = {static_cast<int>(grid.columns),
                                static_cast<int>(grid.rows),
                                plans_[band.index].code.exponent,
                                {}};
          coded.blocks.reserve(static_cast<size_t>(grid.count()));
          for (uint32_t row = 0; row < grid.rows; ++row) {
            for (uint32_t column = 0; column < grid.columns; ++column) {
              coded.blocks.push_back(
                  encodeBlock(planeOf(band, subbands), band, grid.block(column, row), norm * norm));
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
CodedBlock TileEncoder::encodeBlock(const PaddedPlane<Sample>& plane, const Band& band,
                                    const Rect& rect, double componentWeight) {
  constexpr bool kIsExact = std::is_integral_v<Sample>;
  const BandPlan& plan = plans_[band.index];
  const OrbiSize size = {static_cast<int>(rect.width()), static_cast<int>(rect.height())};
  const auto x = static_cast<int>(rect.x0 - band.rect.x0);
  const auto y = static_cast<int>(rect.y0 - band.rect.y0);
  magnitudes_.resize(static_cast<size_t>(size.width) * size.height);
  double squares = 0;
  for (int row = 0; row < size.height; ++row) {
    squares += toMagnitudes(plane.row(y + row) + x, size.width, plan.step,
                            magnitudes_.data() + static_cast<size_t>(row) * size.width);
  }
  const double weight = plan.step * plan.step * plan.norm * plan.norm * componentWeight;
  CodedBlock block =
      blockEncoder_.encode(magnitudes_.data(), size, static_cast<int>(band.orientation),
                           kIsExact ? 0 : kFractionBits, 0, weight);
  block.squaredError = squares * weight;
  findCuts(block, (styleOf(coding_).blockStyle & kPredictableTermination) != 0);
  return block;
}

}  // namespace orbhost::j2k
