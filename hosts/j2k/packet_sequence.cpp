#include "hosts/j2k/packet_sequence.h"

#include <algorithm>
#include <tuple>

namespace orbhost::j2k {

namespace {

// Where on the reference grid a row or column of precincts comes up: the tile's edge for the first
// one if it begins in front of it (the conditions of B.12.1.3 to B.12.1.5).
uint32_t positionOf(uint32_t precinct, uint32_t resolutionStart, int precinctSize, int levels,
                    uint32_t subsampling, uint32_t tileStart) {
  const uint64_t cell = uint64_t{resolutionStart >> precinctSize} + precinct;
  const uint64_t start = cell << precinctSize;
  if (start < resolutionStart) return tileStart;
  return static_cast<uint32_t>((start << levels) * subsampling);
}

}  // namespace

PacketSequence::PacketSequence(const PictureSize& size, const Tile& tile, const TileCoding& coding)
    : size_(size), tile_(tile), changes_(coding.changes) {
  if (changes_.empty()) {
    changes_.push_back({0, 0, coding.style.layers, kMaxLevels + 1,
                        static_cast<int>(tile.components.size()), coding.style.progression});
  }
  for (ProgressionChange& change : changes_) {
    change.endLayer = std::min(change.endLayer, coding.style.layers);
    change.endComponent = std::min(change.endComponent, static_cast<int>(tile.components.size()));
  }
  nextLayers_.resize(static_cast<size_t>(tile.precinctCount()));
}

bool PacketSequence::next(Packet& packet) {
  for (;;) {
    while (stop_ == groupEnd_) {
      if (++layer_ < change_.endLayer) {
        stop_ = groupFirst_;
      } else if (!nextGroup()) {
        return false;
      }
    }
    const Stop& stop = stops_[stop_++];
    const size_t precinct =
        tile_.components[stop.component].resolutions[stop.resolution].firstPrecinct + stop.precinct;
    if (layer_ == nextLayers_[precinct]) {
      ++nextLayers_[precinct];
      packet = {stop.component, stop.resolution, stop.precinct, layer_, precinct};
      return true;
    }
  }
}

// The next precincts whose layers take turns, in this progression or in the next one.
bool PacketSequence::nextGroup() {
  while (groupEnd_ == stops_.size()) {
    if (nextChange_ == changes_.size()) return false;
    begin(changes_[nextChange_++]);
  }
  groupFirst_ = stop_ = groupEnd_;
  do {
    ++groupEnd_;
  } while (groupEnd_ < stops_.size() && sharesGroup(stops_[groupFirst_], stops_[groupEnd_]));
  layer_ = 0;
  return true;
}

bool PacketSequence::sharesGroup(const Stop& a, const Stop& b) const {
  return change_.progression == Progression::kLrcp ||
         (change_.progression == Progression::kRlcp && a.resolution == b.resolution);
}

void PacketSequence::begin(const ProgressionChange& change) {
  change_ = change;
  stops_.clear();
  groupFirst_ = groupEnd_ = stop_ = 0;
  for (int r = change.firstResolution; r < std::min(change.endResolution, kMaxLevels + 1); ++r) {
    for (int c = change.firstComponent; c < change.endComponent; ++c) collect(c, r);
  }
  const auto sortBy = [this](auto key) {
    std::sort(stops_.begin(), stops_.end(),
              [key](const Stop& a, const Stop& b) { return key(a) < key(b); });
  };
  // Precincts of one resolution with the same position do not exist.
  switch (change.progression) {
    case Progression::kLrcp:
    case Progression::kRlcp:
      break;  // as they were collected
    case Progression::kRpcl:
      sortBy([](const Stop& s) { return std::make_tuple(s.resolution, s.y, s.x, s.component); });
      break;
    case Progression::kPcrl:
      sortBy([](const Stop& s) { return std::make_tuple(s.y, s.x, s.component, s.resolution); });
      break;
    case Progression::kCprl:
      sortBy([](const Stop& s) { return std::make_tuple(s.component, s.y, s.x, s.resolution); });
      break;
  }
}

// Appends the precincts of a resolution that have layers left.
void PacketSequence::collect(int component, int resolution) {
  const auto& resolutions = tile_.components[component].resolutions;
  if (resolution >= static_cast<int>(resolutions.size())) return;
  const Resolution& r = resolutions[resolution];
  const ComponentSize& size = size_.components[component];
  const int levels = static_cast<int>(resolutions.size()) - 1 - resolution;
  const uint16_t* const nextLayers = nextLayers_.data() + r.firstPrecinct;
  uint32_t precinct = 0;
  for (uint32_t row = 0; row < r.precinctsHigh; ++row) {
    const uint32_t y =
        positionOf(row, r.rect.y0, r.precinctSize.height, levels, size.dy, tile_.rect.y0);
    for (uint32_t column = 0; column < r.precinctsWide; ++column, ++precinct) {
      if (nextLayers[precinct] >= change_.endLayer) continue;
      const uint32_t x =
          positionOf(column, r.rect.x0, r.precinctSize.width, levels, size.dx, tile_.rect.x0);
      stops_.push_back(
          {y, x, precinct, static_cast<uint16_t>(component), static_cast<uint8_t>(resolution)});
    }
  }
}

}  // namespace orbhost::j2k
