#include "hosts/jxr/encode.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

#include "hosts/error.h"
#include "hosts/image_convert.h"
#include "hosts/jxr/colour.h"
#include "hosts/jxr/container.h"
#include "hosts/jxr/headers.h"
#include "hosts/jxr/plane_writer.h"
#include "hosts/jxr/second_stage.h"
#include "hosts/jxr/stages.h"

namespace orbhost::jxr {

namespace {

constexpr int kMostTiles = 4096;    // across, or down
constexpr int kDeepIndex = 8 * 16;  // what makes a step 256 times as large
constexpr int kMostTrim = 15;

void check(int value, int least, int most, const char* what) {
  if (value < least || value > most) {
    throw Error(std::string(what) + " is from " + std::to_string(least) + " to " +
                std::to_string(most));
  }
}

void checkOptions(const EncodeOptions& options) {
  check(options.quality, 1, 100, "a quality");
  check(options.quantiser.value_or(0), 0, 255, "a quantiser");
  check(options.overlap, 0, 2, "an overlap level");
  check(options.trim, 0, kMostTrim, "a number of trimmed bits");
  for (const int size : {options.tileWidth, options.tileHeight}) {
    if (size < 0 || size % kMacroblock != 0) throw Error("a tile's sides are multiples of 16");
  }
}

// A step doubles with every 16 of the index, or with a quality that is lower by about 13.
int indexFor(const EncodeOptions& options, bool isDeep) {
  if (options.quantiser) return *options.quantiser;
  if (options.quality == 100) return 0;
  return (100 - options.quality) * 5 / 4 + 2 + (isDeep ? kDeepIndex : 0);
}

std::vector<int> tileBorders(int pixels, int macroblocks) {
  std::vector<int> borders;
  const int step = pixels == 0 ? macroblocks : pixels / kMacroblock;
  for (int at = 0; at < macroblocks; at += std::min(step, macroblocks - at)) borders.push_back(at);
  borders.push_back(macroblocks);
  if (borders.size() > kMostTiles + 1) throw Error("so many tiles have no place in a file");
  return borders;
}

ImageHeader imageHeaderFor(const Image& image, const EncodeOptions& options) {
  ImageHeader header;
  header.hardTiles = options.hardTiles;
  header.frequencyOrder = options.frequencyOrder;
  header.overlap = options.overlap;
  header.trimmed = options.trim > 0;
  header.output = image.channels() == 1   ? OutputFormat::kGrey
                  : image.channels() == 3 ? OutputFormat::kRgb
                                          : OutputFormat::kCmyk;
  header.depth = image.isWide() ? Depth::k16 : Depth::k8;
  header.width = image.width();
  header.height = image.height();
  header.marginRight = -image.width() & (kMacroblock - 1);
  header.marginBottom = -image.height() & (kMacroblock - 1);
  header.tileColumns = tileBorders(options.tileWidth, header.macroblocksWide());
  header.tileRows = tileBorders(options.tileHeight, header.macroblocksHigh());
  header.indexTable = header.frequencyOrder || header.tiles() > 1;
  return header;
}

ColourFormat formatFor(const Image& image, const EncodeOptions& options) {
  if (image.channels() == 1) return ColourFormat::kGrey;
  if (image.channels() == 4) return ColourFormat::kCmyk;
  return options.subsampling == Subsampling::k420   ? ColourFormat::k420
         : options.subsampling == Subsampling::k422 ? ColourFormat::k422
                                                    : ColourFormat::k444;
}

PlaneHeader planeHeaderFor(const Image& image, const EncodeOptions& options) {
  PlaneHeader header;
  header.format = formatFor(image, options);
  header.channels = image.channels();
  const int index = indexFor(options, image.isWide());
  // Halved chroma has lost bits already.
  header.scaled = index != 0 || isHalvedAcross(header.format, 1);
  Quantiser quantiser;
  quantiser.fill(static_cast<uint8_t>(index));
  for (int band = kDc; band < kFlexbits; ++band) header.quantiser[band] = quantiser;
  return header;
}

int32_t levelOf(int32_t value, int32_t step, int32_t rounding) {
  if (step == 1) return value;
  const int32_t magnitude = std::abs(value) + rounding;
  if (magnitude < step) return 0;  // as most are: no division
  const int32_t level = magnitude / step;
  return value < 0 ? -level : level;
}

// High-pass and low-pass coefficients that are near 0 become it.
int32_t roundingOf(Band band, int32_t step) {
  return band == kDc ? step >> 1 : (3 * step + 1) >> 3;
}

class Encoder {
 public:
  Encoder(const Image& image, const EncodeOptions& options)
      : image_(imageHeaderFor(image, options)),
        plane_(planeHeaderFor(image, options)),
        trim_(options.trim),
        macroblocks_(image_.macroblocksWide(), image_.macroblocksHigh()) {
    checkOverlap(image_, plane_.format);
    planes_ = planesFrom(image, image_, plane_);
    for (int c = 0; c < plane_.channels; ++c) {
      forwardFirstStage(image_, plane_.format, c, planes_[c]);
      for (int y = 0; y < image_.macroblocksHigh(); ++y) {
        for (int x = 0; x < image_.macroblocksWide(); ++x) quantise(c, x, y);
      }
    }
  }

  Bytes run() {
    const int perTile = image_.frequencyOrder ? kBands : 1;
    const int tiles = image_.tiles();
    std::vector<Bytes> packets(static_cast<size_t>(tiles) * perTile);
    for (int tile = 0; tile < tiles; ++tile) {
      writeTile(image_.tile(tile), &packets[static_cast<size_t>(tile) * perTile]);
    }
    // Band by band, so that the first part of the file gives a coarse picture.
    std::vector<size_t> order;
    for (int i = 0; i < perTile; ++i) {
      for (int tile = 0; tile < tiles; ++tile) {
        order.push_back(static_cast<size_t>(tile) * perTile + i);
      }
    }
    std::vector<uint32_t> offsets(packets.size());
    uint64_t size = 0;
    for (const size_t packet : order) {
      offsets[packet] = static_cast<uint32_t>(size);
      size += packets[packet].size();
    }
    if (size > std::numeric_limits<uint32_t>::max() / 2) {
      throw Error("the picture is too large for a file of this kind");
    }
    BitWriter headers;
    writeImageHeader(image_, headers);
    writePlaneHeader(plane_, image_.depth, headers);
    if (image_.indexTable) {
      writeIndexTable(offsets, headers);
    } else {
      writeNoIndexTable(headers);
    }
    Bytes codestream = headers.finish();
    codestream.reserve(codestream.size() + static_cast<size_t>(size));
    for (const size_t packet : order) {
      codestream.insert(codestream.end(), packets[packet].begin(), packets[packet].end());
    }
    return codestream;
  }

 private:
  int32_t stepFor(Band band, int channel) const {
    return stepOf((*plane_.quantiser[band])[channel], band, channel, plane_.scaled);
  }

  // Coefficients of a macroblock to levels; those of the second stage to where it keeps them.
  void quantise(int channel, int x, int y) {
    const int wide = blocksWide(plane_.format, channel) * 4;
    const int high = blocksHigh(plane_.format, channel) * 4;
    const Rows<int32_t> samples = planes_[channel].rows().from(x * wide, y * high);
    if (goesByMacroblocks(image_)) forwardBlocks(plane_.format, channel, samples);
    int32_t coefficients[16] = {};
    forwardSecondStage(plane_.format, channel, plane_.scaled, {samples.first, samples.step},
                       coefficients);
    int32_t* const levels = macroblocks_.at(x, y).levels[channel];
    for (int i = 0; i < 16; ++i) {
      const Band band = i == 0 ? kDc : kLowPass;
      const int32_t step = stepFor(band, channel);
      levels[i] = levelOf(coefficients[i], step, roundingOf(band, step));
    }
    const int32_t step = stepFor(kHighPass, channel);
    if (step == 1) return;
    const int32_t rounding = roundingOf(kHighPass, step);
    for (int row = 0; row < high; ++row) {
      for (int column = 0; column < wide; ++column) {
        int32_t& sample = samples.at(column, row);
        sample = levelOf(sample, step, rounding);
      }
    }
  }

  // One packet, or one for each band.
  void writeTile(const Tile& tile, Bytes* packets) {
    BitWriter writers[kBands];
    if (image_.frequencyOrder) {
      for (int band = kDc; band < kBands; ++band) {
        writePacketHeader(tile.number, static_cast<PacketType>(band + 1), writers[band]);
      }
    } else {
      writePacketHeader(tile.number, PacketType::kSpatial, writers[kDc]);
    }
    TileOutput output = {{}, trim_};
    for (int band = kDc; band < kBands; ++band) {
      output.to[band] = &writers[image_.frequencyOrder ? band : kDc];
    }
    if (image_.trimmed) output.to[kFlexbits]->put(static_cast<uint32_t>(trim_), 4);
    PlaneWriter writer(plane_, tile, planes_, macroblocks_);
    for (int y = 0; y < tile.height; ++y) {
      for (int x = 0; x < tile.width; ++x) writer.write(x, y, output);
    }
    for (int i = 0; i < (image_.frequencyOrder ? kBands : 1); ++i) packets[i] = writers[i].finish();
  }

  ImageHeader image_;
  PlaneHeader plane_;
  int trim_;
  std::vector<Plane> planes_;
  Macroblocks macroblocks_;
};

}  // namespace

Bytes encodeJxr(const Image& image, const EncodeOptions& options) {
  checkOptions(options);
  const int maximum = image.isWide() ? 65535 : 255;
  if (image.maximum() != maximum) return encodeJxr(withMaximum(image, maximum), options);
  const Bytes codestream = Encoder(image, options).run();
  return makeFile(image.width(), image.height(), image.channels(), image.isWide() ? 16 : 8,
                  codestream);
}

}  // namespace orbhost::jxr
