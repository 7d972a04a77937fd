#include "hosts/j2k/encode.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include "hosts/error.h"
#include "hosts/j2k/band_plan.h"
#include "hosts/j2k/codestream_writer.h"
#include "hosts/j2k/jp2_writer.h"
#include "hosts/j2k/layout.h"
#include "hosts/j2k/packet_sequence.h"
#include "hosts/j2k/rate_control.h"
#include "hosts/j2k/tile_encoder.h"

namespace orbhost::j2k {

namespace {

constexpr uint64_t kMostTiles = 65535;
constexpr int kMostLayers = 65535;

int bitsOf(int maximum) {
  int bits = 1;
  while (maximum >> bits != 0) ++bits;
  return bits;
}

// The exponent of a power of 2.
int exponentOf(int power, const char* what) {
  for (int exponent = 2; exponent <= 10; ++exponent) {
    if (power == 1 << exponent) return exponent;
  }
  throw Error("the " + std::string(what) + " of a code-block is a power of 2 from 4 to 1024");
}

void checkGoals(const std::vector<double>& goals, const char* what) {
  double before = 0;
  for (const double goal : goals) {
    if (!(goal > before) || goal > 1e6) {
      throw Error(std::string(what) + " are positive, and rise from layer to layer");
    }
    before = goal;
  }
}

PictureSize pictureSizeOf(const Image& image, const EncodeOptions& options) {
  PictureSize size;
  size.x1 = static_cast<uint32_t>(image.width());
  size.y1 = static_cast<uint32_t>(image.height());
  size.tileWidth = options.tileWidth == 0 ? size.x1 : options.tileWidth;
  size.tileHeight = options.tileHeight == 0 ? size.y1 : options.tileHeight;
  size.components.assign(image.channels(), {bitsOf(image.maximum()), false, 1, 1});
  if (TileGrid(size).count() > kMostTiles) {
    throw Error("a picture has no more than " + std::to_string(kMostTiles) + " tiles");
  }
  return size;
}

ComponentStyle componentStyleOf(const EncodeOptions& options) {
  if (options.levels < 0 || options.levels > kMaxLevels) {
    throw Error("there are 0 to " + std::to_string(kMaxLevels) + " levels");
  }
  ComponentStyle style;
  style.levels = options.levels;
  style.blockWidth = exponentOf(options.blockWidth, "width");
  style.blockHeight = exponentOf(options.blockHeight, "height");
  if (style.blockWidth + style.blockHeight > 12) {
    throw Error("a code-block has no more than 4096 samples");
  }
  style.blockStyle = options.blockStyle;
  style.isReversible = options.isLossless;
  for (int r = 0; r <= style.levels && !options.precincts.empty(); ++r) {
    const size_t fromTop = static_cast<size_t>(style.levels - r);
    const PrecinctSize& precinct =
        options.precincts[std::min(fromTop, options.precincts.size() - 1)];
    const int least = r == 0 ? 0 : 1;
    if (std::min(precinct.width, precinct.height) < least ||
        std::max(precinct.width, precinct.height) > 15) {
      throw Error("the sides of a precinct are powers of 2 from 2 to 32768");
    }
    style.precincts[r] = precinct;
  }
  return style;
}

class Encoder {
 public:
  Encoder(const Image& image, const EncodeOptions& options)
      : image_(image), options_(options), size_(pictureSizeOf(image, options)) {
    if (image.channels() != 1 && image.channels() != 3) {
      throw Error("only grey and RGB pictures become JPEG 2000 files");
    }
    checkGoals(options.rates, "rates");
    checkGoals(options.psnrs, "values of PSNR");
    if (!options.rates.empty() && !options.psnrs.empty()) {
      throw Error("layers have rates or values of PSNR, but not both");
    }
    coding_.style.mayHaveSop = options.hasSop;
    coding_.style.hasEph = options.hasEph;
    coding_.style.progression = options.progression;
    coding_.style.layers = std::max(options.layers, goals() + (endsWithAll() ? 1 : 0));
    if (coding_.style.layers > kMostLayers) {
      throw Error("there are no more than " + std::to_string(kMostLayers) + " layers");
    }
    coding_.style.transformsComponents = image.channels() == 3;
    const ComponentStyle style = componentStyleOf(options);
    plans_ = planBands(style.isReversible, style.levels, precision(), baseStep());
    Quantisation quantisation;
    quantisation.style =
        style.isReversible ? QuantisationStyle::kNone : QuantisationStyle::kExpounded;
    for (const BandPlan& plan : plans_) quantisation.steps.push_back(plan.code);
    coding_.components.assign(image.channels(), {style, quantisation, 0});
  }

  Bytes run() {
    TileEncoder encoder(image_, size_, coding_, plans_);
    const auto count = static_cast<uint32_t>(TileGrid(size_).count());
    std::vector<Tile> tiles;
    std::vector<TransformedTile> transformed;
    for (uint32_t t = 0; t < count; ++t) {
      tiles.emplace_back(size_, t, coding_);
      transformed.push_back(encoder.transform(tiles.back()));
    }
    // Planes that no layer can want are not coded. If one turns out to want them, they are.
    double finest = finestFor(encoder, transformed);
    for (;; finest /= 4) {
      std::vector<TilePrecincts> precincts;
      for (uint32_t t = 0; t < count; ++t) {
        precincts.push_back(encoder.encode(tiles[t], transformed[t], finest));
      }
      const int guardBits = guardBitsFor(precincts);
      for (ComponentCoding& one : coding_.components) one.quantisation.guardBits = guardBits;

      Bytes mainHeader;
      CodestreamWriter(mainHeader).mainHeader(size_, coding_);
      const size_t fixedBytes = (options_.isRaw ? 0 : jp2Header(size_, 0).size()) +
                                mainHeader.size() +
                                count * CodestreamWriter::kTilePartHeaderLength + kEndLength;
      RateControl control(precincts, guardBits, coding_, fixedBytes);
      addLayers(control);
      if (control.slope() >= kMostWorth * finest * finest || !encoder.leavesOut(finest)) {
        return assemble(tiles, control.packets(), std::move(mainHeader));
      }
    }
  }

 private:
  static constexpr size_t kEndLength = 2;

  int precision() const { return size_.components[0].precision; }
  int goals() const { return static_cast<int>(options_.rates.size() + options_.psnrs.size()); }
  bool endsWithAll() const { return options_.isLossless || goals() == 0; }
  double samples() const {
    return static_cast<double>(image_.width()) * image_.height() * image_.channels();
  }

  // The mean squared error at a value of PSNR.
  double errorAt(double psnr) const {
    return std::pow(image_.maximum(), 2) / std::pow(10.0, psnr / 10);
  }
  // That of samples before they are rounded to integers. They were integers at first: what is off
  // by less than 1/2 comes back, and what is off by more becomes 1 or more.
  double errorBeforeRounding(double psnr) const {
    const double wanted = errorAt(psnr);
    const auto rounded = [](double error) {
      double sum = 0;
      for (int k = 1; k < 40; ++k) {
        sum += (2 * k - 1) * std::erfc((k - 0.5) / std::sqrt(2 * error));
      }
      return sum;
    };
    if (wanted > 10) return wanted - 1.0 / 12;
    double low = 0;
    double high = 10;
    for (int i = 0; i < 40; ++i) {
      const double middle = (low + high) / 2;
      (rounded(middle) > wanted ? high : low) = middle;
    }
    return low;
  }

  // Fine enough for all goals. What is too fine is left out of the layers, or not coded at all.
  double baseStep() const {
    const double usual = std::pow(2.0, precision() - 8);
    if (!options_.rates.empty()) {
      constexpr double kBitsAtUsualStep = 3;  // of a sample
      const double bits = options_.rates.back() / image_.channels();
      return usual * std::min(1.0, std::pow(2.0, kBitsAtUsualStep - bits));
    }
    if (!options_.psnrs.empty()) {
      return std::min(usual, std::sqrt(errorBeforeRounding(options_.psnrs.back())));
    }
    return usual;
  }

  // A pass of a plane whose bits mean 1 in the picture lessens the squared error by no more than
  // this for each byte.
  static constexpr double kMostWorth = 6;

  // Well below what bits have to mean in the last layer.
  double finestFor(const TileEncoder& encoder, const std::vector<TransformedTile>& tiles) const {
    if (goals() == 0 || endsWithAll()) return 0;
    MagnitudeCounts counts;
    for (const TransformedTile& tile : tiles) encoder.count(tile, counts);
    const double threshold =
        options_.rates.empty()
            ? counts.thresholdOfError(errorBeforeRounding(options_.psnrs.back()) * samples())
            : counts.thresholdOfBits(options_.rates.back() * samples() / image_.channels());
    return threshold / 2.5;
  }

  // As few as hold all magnitudes.
  static int guardBitsFor(const std::vector<TilePrecincts>& tiles) {
    int guardBits = 1;
    for (const TilePrecincts& tile : tiles) {
      for (const std::vector<EncodedBand>& precinct : tile) {
        for (const EncodedBand& band : precinct) {
          for (const EncodedBlock& block : band.blocks) {
            guardBits = std::max(guardBits, block.bitPlanes - band.exponent + 1);
          }
        }
      }
    }
    return guardBits;
  }

  void addLayers(RateControl& control) const {
    const int below = coding_.style.layers - goals() - (endsWithAll() ? 1 : 0);
    const double pixels = static_cast<double>(image_.width()) * image_.height();
    const auto bytesOf = [&](double rate) { return rate * pixels / 8; };
    if (below > 0 && options_.psnrs.empty()) {
      const double first = options_.rates.empty() ? static_cast<double>(control.sizeOfAll())
                                                  : bytesOf(options_.rates[0]);
      constexpr double kLeastPart = 1.0 / 64;
      const double ratio = std::max(0.5, std::pow(kLeastPart, 1.0 / below));
      for (int i = below; i > 0; --i) addLayerOfSize(first * std::pow(ratio, i), control);
    } else if (below > 0) {
      const double first = options_.psnrs[0];
      const double step = std::min(3.0, first / (below + 1));
      for (int i = below; i > 0; --i) addLayerOfPsnr(first - step * i, control);
    }
    for (const double rate : options_.rates) addLayerOfSize(bytesOf(rate), control);
    for (const double psnr : options_.psnrs) addLayerOfPsnr(psnr, control);
    if (endsWithAll()) control.addLayerOfAll();
  }

  static void addLayerOfSize(double bytes, RateControl& control) {
    control.addLayerOfSize(static_cast<size_t>(
        std::min(bytes, static_cast<double>(std::numeric_limits<int32_t>::max()))));
  }
  void addLayerOfPsnr(double psnr, RateControl& control) const {
    control.addLayerOfError(errorBeforeRounding(psnr) * samples());
  }

  Bytes assemble(const std::vector<Tile>& tiles, const std::vector<TilePackets>& packets,
                 Bytes mainHeader) const {
    Bytes codestream = std::move(mainHeader);
    CodestreamWriter writer(codestream);
    for (size_t t = 0; t < tiles.size(); ++t) {
      Bytes tile;
      CodestreamWriter tileWriter(tile);
      PacketSequence sequence(size_, tiles[t], coding_);
      Packet packet;
      for (uint32_t i = 0; sequence.next(packet); ++i) {
        if (options_.hasSop) tileWriter.startOfPacket(i);
        const Bytes& bytes = packets[t][packet.precinctOfTile][packet.layer];
        tile.insert(tile.end(), bytes.begin(), bytes.end());
      }
      if (tile.size() >
          std::numeric_limits<uint32_t>::max() - CodestreamWriter::kTilePartHeaderLength) {
        throw Error("a tile has more than 4 GB");
      }
      writer.tilePart(static_cast<int>(t), tile.size());
      codestream.insert(codestream.end(), tile.begin(), tile.end());
    }
    writer.end();
    if (options_.isRaw) return codestream;
    Bytes file = jp2Header(size_, codestream.size());
    file.insert(file.end(), codestream.begin(), codestream.end());
    return file;
  }

  const Image& image_;
  const EncodeOptions& options_;
  PictureSize size_;
  TileCoding coding_;
  std::vector<BandPlan> plans_;
};

}  // namespace

Bytes encodeJ2k(const Image& image, const EncodeOptions& options) {
  return Encoder(image, options).run();
}

}  // namespace orbhost::j2k
