#include "hosts/j2k/tile_decoder.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "hosts/j2k/block_decoder.h"
#include "hosts/j2k/inverse_wavelet.h"
#include "hosts/j2k/packet_reader.h"

namespace orbhost::j2k {

namespace {

// The inverse component transforms of the rows of three planes (annex G).
void inverseTransform(Orb32s* const rows[3], int step, int width) {
  legacy90orbiRCTInv_JPEG2K_32s_P3IR(rows, step, {width, 1});
}
void inverseTransform(Orb32f* const rows[3], int step, int width) {
  legacy90orbiICTInv_JPEG2K_32f_P3IR(rows, step, {width, 1});
}

// Samples as they were before the level shift of G.1, limited to what the precision holds.
class SampleRange {
 public:
  explicit SampleRange(const ComponentSize& size)
      : half_(int32_t{1} << (size.precision - 1)),
        offset_(size.isSigned ? 0 : half_),
        top_(std::nextafter(2.0f * static_cast<float>(half_), 0.0f)) {}

  void put(const Orb32s* from, int32_t* to, int width) const {
    for (int x = 0; x < width; ++x) {
      to[x] = std::min(std::max(from[x], -half_), half_ - 1) + offset_;
    }
  }
  // To nearest. What is no number becomes the lowest.
  void put(const Orb32f* from, int32_t* to, int width) const {
    const float shift = static_cast<float>(half_) + 0.5f;
    const int32_t back = offset_ - half_;
    for (int x = 0; x < width; ++x) {
      const float shifted = from[x] + shift;
      const float positive = shifted > 0.0f ? shifted : 0.0f;
      to[x] = static_cast<int32_t>(positive < top_ ? positive : top_) + back;
    }
  }

 private:
  int32_t half_;
  int32_t offset_;
  float top_;  // below 2^precision
};

class TileDecoder {
 public:
  TileDecoder(const PictureSize& size, const Tile& tile, const TileCoding& coding,
              const PacketReader& packets, int reduction, std::vector<Component>& components,
              TileMemory& memory, Damage& damage)
      : size_(size),
        tile_(tile),
        coding_(coding),
        packets_(packets),
        reduction_(reduction),
        components_(components),
        memory_(memory),
        damage_(damage) {}

  void run() {
    int c = 0;
    if (coding_.style.transformsComponents) {
      if (canTransform()) {
        if (coding_.components[0].style.isReversible) {
          decodeTogether(memory_.integers);
        } else {
          decodeTogether(memory_.floats);
        }
        c = 3;
      } else {
        damage_.note("a component transform of components that do not fit each other");
      }
    }
    for (; c < static_cast<int>(components_.size()); ++c) {
      if (coding_.components[c].style.isReversible) {
        decodeAlone(c, memory_.integers);
      } else {
        decodeAlone(c, memory_.floats);
      }
    }
  }

 private:
  bool canTransform() const {
    if (components_.size() < 3) return false;
    for (int c = 1; c < 3; ++c) {
      if (!(tile_.components[c].rect == tile_.components[0].rect) ||
          coding_.components[c].style.isReversible != coding_.components[0].style.isReversible) {
        return false;
      }
    }
    return true;
  }

  template <class T>
  void decodeTogether(TileMemory::Planes<T>& memory) {
    for (int c = 0; c < 3; ++c) decodePlane(c, memory.components[c], memory.bands);
    const int width = memory.components[0].width();
    for (int y = 0; width > 0 && y < memory.components[0].height(); ++y) {
      T* const rows[3] = {memory.components[0].row(y), memory.components[1].row(y),
                          memory.components[2].row(y)};
      inverseTransform(rows, memory.components[0].step(), width);
      for (int c = 0; c < 3; ++c) put(memory.components[c], c, y);
    }
  }

  template <class T>
  void decodeAlone(int c, TileMemory::Planes<T>& memory) {
    Plane<T>& plane = memory.components[0];
    decodePlane(c, plane, memory.bands);
    for (int y = 0; y < plane.height(); ++y) put(plane, c, y);
  }

  template <class T>
  void put(const Plane<T>& plane, int c, int y) {
    const Rect rect = reducedRect(tile_.components[c].rect, reduction_);
    Component& component = components_[c];
    int32_t* const to = component.row(rect.y0 - component.rect.y0 + static_cast<uint32_t>(y)) +
                        (rect.x0 - component.rect.x0);
    SampleRange(component.size).put(plane.row(y), to, plane.width());
  }

  // The samples of a component, from its lowest resolution up.
  template <class T>
  void decodePlane(int c, Plane<T>& plane, BandPlanes<T>& bands) {
    const std::vector<Resolution>& resolutions = tile_.components[c].resolutions;
    BlockDecoder blocks(coding_.components[c], size_.components[c].precision, packets_, damage_);
    const auto decodeBand = [&](const Resolution& resolution, size_t band, Plane<T>& to) {
      to.reset(resolution.bands[band].rect.width(), resolution.bands[band].rect.height());
      blocks.decodeBand(resolution, band, to);
    };
    decodeBand(resolutions[0], 0, plane);
    for (size_t r = 1; r + static_cast<size_t>(reduction_) < resolutions.size(); ++r) {
      const Resolution& resolution = resolutions[r];
      std::swap(bands.ll, plane);
      decodeBand(resolution, 0, bands.hl);
      decodeBand(resolution, 1, bands.lh);
      decodeBand(resolution, 2, bands.hh);
      plane.reshape(resolution.rect.width(), resolution.rect.height());
      inverseWavelet(resolution.rect, bands, plane);
    }
  }

  const PictureSize& size_;
  const Tile& tile_;
  const TileCoding& coding_;
  const PacketReader& packets_;
  const int reduction_;
  std::vector<Component>& components_;
  TileMemory& memory_;
  Damage& damage_;
};

}  // namespace

void decodeTile(const Codestream& codestream, uint32_t index, const TileOptions& options,
                std::vector<Component>& components, TileMemory& memory, Budget& budget,
                Damage& damage) {
  budget.takeTileComponents(components.size());
  const PictureSize& size = codestream.size();
  const TileCoding coding = codestream.codingOf(index);
  for (const ComponentCoding& component : coding.components) {
    if (component.style.levels < options.reduction) {
      throw Error("the picture has only " + std::to_string(component.style.levels) +
                  " lower resolutions");
    }
  }
  const Tile tile(size, index, coding);
  budget.takePrecincts(tile.precinctCount());
  for (size_t i = 1; i < coding.changes.size(); ++i) budget.takePrecincts(tile.precinctCount());
  const PacketReader packets(size, tile, coding, codestream.tile(index), options.reduction,
                             options.layers, budget, damage);
  TileDecoder(size, tile, coding, packets, options.reduction, components, memory, damage).run();
}

}  // namespace orbhost::j2k
