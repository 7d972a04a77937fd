#include "hosts/jxr/decode.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "hosts/error.h"
#include "hosts/jxr/bits.h"
#include "hosts/jxr/colour.h"
#include "hosts/jxr/container.h"
#include "hosts/jxr/damage.h"
#include "hosts/jxr/headers.h"
#include "hosts/jxr/orientation.h"
#include "hosts/jxr/plane_reader.h"
#include "hosts/jxr/stages.h"

namespace orbhost::jxr {

namespace {

// That a macroblock takes: channels with chroma share two bits of the DC band and one of each
// other.
int leastBits(const PlaneHeader& plane) {
  const int bands = std::min<int>(bandsOf(plane.bands), kFlexbits);
  return hasChroma(plane.format) ? 1 + bands : plane.channels * bands;
}

void checkColours(OutputFormat output, ColourFormat format) {
  const bool fits = output == OutputFormat::kGrey ? format == ColourFormat::kGrey
                    : output == OutputFormat::kCmyk
                        ? format == ColourFormat::kCmyk
                        : hasChroma(format) || format == ColourFormat::kGrey;
  if (!fits) throw Error("the picture's colours and its planes do not go together");
}

// What is decoded of a plane.
struct CodedPlane {
  CodedPlane(const PlaneHeader& from, const ImageHeader& image)
      : header(from),
        planes(makePlanes(header.format, header.channels, image.macroblocksWide(),
                          image.macroblocksHigh())),
        macroblocks(image.macroblocksWide(), image.macroblocksHigh()) {}

  PlaneHeader header;
  std::vector<Plane> planes;
  Macroblocks macroblocks;
};

class Decoder {
 public:
  Decoder(const uint8_t* codestream, size_t size)
      : end_(codestream + size), headers_(codestream, end_), image_(readImageHeader(headers_)) {
    std::vector<PlaneHeader> headers = {readPlaneHeader(image_.depth, headers_)};
    const int64_t macroblocks = int64_t{image_.macroblocksWide()} * image_.macroblocksHigh();
    if (macroblocks > static_cast<int64_t>(size) * 8 / leastBits(headers[0])) {
      throw Error("the file is too short for a picture of that size");
    }
    checkColours(image_.output, headers[0].format);
    checkOverlap(image_, headers[0].format);
    if (image_.alpha) {
      headers.push_back(readPlaneHeader(image_.depth, headers_));
      if (headers[1].format != ColourFormat::kGrey || headers[1].bands < headers[0].bands) {
        throw Error("the plane of transparency does not go with the picture");
      }
    }
    bands_ = bandsOf(headers[0].bands);
    offsets_ = readIndexTable(image_.indexTable,
                              image_.tiles() * (image_.frequencyOrder ? bands_ : 1), headers_);
    headers_.check();
    base_ = headers_.position();
    for (const PlaneHeader& header : headers) {
      planes_.push_back(std::make_unique<CodedPlane>(header, image_));
    }
  }

  Image run() {
    for (int tile = 0; tile < image_.tiles(); ++tile) decodeTile(image_.tile(tile));
    CodedPlane& picture = *planes_[0];
    for (int c = 0; c < picture.header.channels; ++c) {
      inverseFirstStage(image_, picture.header.format, c, picture.planes[c]);
    }
    return turned(imageFrom(picture.planes, image_, picture.header), image_.orientation);
  }

 private:
  void decodeTile(const Tile& tile) {
    std::vector<PlaneReader> readers;
    for (const auto& plane : planes_) {
      readers.emplace_back(image_, plane->header, tile, plane->planes, plane->macroblocks);
    }
    std::optional<BitReader> packets[kBands];
    int trim = 0;
    const auto readTrim = [&](BitReader& from) {
      if (image_.trimmed) trim = static_cast<int>(from.take(4));
    };
    const auto readTileHeaders = [&](Band band, BitReader& from) {
      for (size_t i = 0; i < readers.size(); ++i) {
        if (bandsOf(planes_[i]->header.bands) > band) readers[i].readTileHeader(band, from);
      }
    };
    if (image_.frequencyOrder) {
      for (int i = 0; i < bands_; ++i) {
        const Band band = static_cast<Band>(i);
        const PacketOffset offset = offsets_[static_cast<size_t>(tile.number) * bands_ + i];
        // Flexbits that are nothing but zeros need not be there.
        if (!offset && band == kFlexbits) continue;
        packets[band] = openPacket(tile.number, static_cast<PacketType>(i + 1), offset);
        if (band == kFlexbits) {
          readTrim(*packets[band]);
        } else {
          readTileHeaders(band, *packets[band]);
        }
      }
    } else {
      BitReader& packet = packets[kDc].emplace(
          openPacket(tile.number, PacketType::kSpatial, offsets_[tile.number]));
      readTrim(packet);
      for (const Band band : {kDc, kLowPass, kHighPass}) readTileHeaders(band, packet);
    }

    std::vector<TileInput> inputs;
    for (const auto& plane : planes_) {
      TileInput input = {{}, !image_.frequencyOrder, trim};
      for (int band = kDc; band < bandsOf(plane->header.bands); ++band) {
        std::optional<BitReader>& packet = packets[image_.frequencyOrder ? band : kDc];
        input.of[band] = packet ? &*packet : nullptr;
      }
      inputs.push_back(input);
    }
    for (int y = 0; y < tile.height; ++y) {
      for (int x = 0; x < tile.width; ++x) {
        for (size_t i = 0; i < readers.size(); ++i) readers[i].read(x, y, inputs[i]);
      }
    }
    for (const std::optional<BitReader>& packet : packets) {
      if (packet) packet->check();
    }
  }

  BitReader openPacket(int tile, PacketType type, const PacketOffset& offset) const {
    if (!offset) failDamaged();
    if (*offset >= static_cast<uint64_t>(end_ - base_)) failCutOff();
    BitReader packet(base_ + static_cast<ptrdiff_t>(*offset), end_);
    readPacketHeader(tile, type, packet);
    return packet;
  }

  const uint8_t* end_;
  BitReader headers_;
  ImageHeader image_;
  int bands_ = 0;
  std::vector<PacketOffset> offsets_;
  const uint8_t* base_ = nullptr;
  std::vector<std::unique_ptr<CodedPlane>> planes_;  // the picture's, and that of its transparency
};

}  // namespace

Image decodeJxr(ByteView file) {
  const ByteView codestream = findCodestream(file);
  Bytes padded(codestream.data, codestream.data + codestream.size);
  padded.resize(padded.size() + kBlockBytes);
  return Decoder(padded.data(), codestream.size).run();
}

}  // namespace orbhost::jxr
