#include "hosts/jxr/headers.h"

#include <algorithm>
#include <limits>
#include <string>

#include "hosts/error.h"
#include "hosts/jxr/damage.h"

namespace orbhost::jxr {

namespace {

constexpr char kSignature[] = "WMPHOTO";  // with its final zero
constexpr int kVersion = 1;
constexpr int kSubVersion = 1;
constexpr uint32_t kPacketStart = 0x000001;

int readSize(int bits, BitReader& from) {
  const uint32_t size = from.take(bits);
  if (size >= static_cast<uint32_t>(std::numeric_limits<int>::max() - 2 * 64)) {
    throw Error("a picture of so many pixels cannot be held");
  }
  return static_cast<int>(size) + 1;
}

std::vector<int> readTileBorders(int count, int bits, BitReader& from) {
  std::vector<int> borders = {0};
  for (int i = 1; i < count; ++i) {
    borders.push_back(borders.back() + static_cast<int>(from.take(bits)));
  }
  return borders;
}

void closeTileBorders(int end, std::vector<int>& borders) {
  borders.push_back(end);
  for (size_t i = 1; i < borders.size(); ++i) {
    if (borders[i] <= borders[i - 1]) throw Error("the header's tiles do not fit the picture");
  }
}

bool fitShortHeader(const ImageHeader& header) {
  return std::max(header.macroblocksWide(), header.macroblocksHigh()) <= 255;
}

int channelsFor(ColourFormat format) {
  switch (format) {
    case ColourFormat::kGrey:
      return 1;
    case ColourFormat::kCmyk:
      return 4;
    default:
      return 3;
  }
}

bool hasShift(Depth depth) {
  return depth == Depth::k16;
}

// A variable-length word; empty for an escape.
std::optional<uint64_t> readWord(BitReader& from) {
  const uint32_t first = from.take(8);
  if (first < 0xFB) return first << 8 | from.take(8);
  if (first == 0xFB) return from.take(32);
  if (first == 0xFC) {
    const uint64_t high = from.take(32);
    return high << 32 | from.take(32);
  }
  return std::nullopt;
}

void writeWord(uint32_t value, BitWriter& to) {
  if (value < 0xFB00) {
    to.put(value, 16);
  } else {
    to.put(0xFB, 8);
    to.put(value, 32);
  }
}

}  // namespace

Tile ImageHeader::tile(int number) const {
  const int across = static_cast<int>(tileColumns.size()) - 1;
  const int column = number % across;
  const int row = number / across;
  return {number, tileColumns[column], tileRows[row], tileColumns[column + 1] - tileColumns[column],
          tileRows[row + 1] - tileRows[row]};
}

ImageHeader readImageHeader(BitReader& from) {
  for (const char byte : kSignature) {
    if (from.take(8) != static_cast<uint8_t>(byte)) throw Error("there is no JPEG XR codestream");
  }
  ImageHeader header;
  if (from.take(4) != kVersion) throw Error("a codestream of an unknown version");
  header.hardTiles = from.flag();
  if (from.take(3) != kSubVersion) throw Error("a codestream of an unknown version");
  const bool tiling = from.flag();
  header.frequencyOrder = from.flag();
  header.orientation = static_cast<int>(from.take(3));
  header.indexTable = from.flag();
  header.overlap = static_cast<int>(from.take(2));
  if (header.overlap > 2) throw Error("the header has an unknown overlap mode");
  const bool isShort = from.flag();
  from.flag();  // whether 32-bit arithmetic may be needed: it is always used
  const bool windowing = from.flag();
  header.trimmed = from.flag();
  const bool tileBytes = from.flag();
  from.take(2);  // order of red and blue in memory; premultiplied alpha
  header.alpha = from.flag();
  const uint32_t output = from.take(4);
  if (output != static_cast<uint32_t>(OutputFormat::kGrey) &&
      output != static_cast<uint32_t>(OutputFormat::kRgb) &&
      output != static_cast<uint32_t>(OutputFormat::kCmyk)) {
    throw Error("pictures other than grey, RGB and CMYK are not supported");
  }
  header.output = static_cast<OutputFormat>(output);
  const uint32_t depth = from.take(4);
  if (depth != static_cast<uint32_t>(Depth::k8) && depth != static_cast<uint32_t>(Depth::k16)) {
    throw Error("samples other than those of 8 and 16 bits without a sign are not supported");
  }
  header.depth = static_cast<Depth>(depth);
  header.width = readSize(isShort ? 16 : 32, from);
  header.height = readSize(isShort ? 16 : 32, from);
  int columns = 1;
  int rows = 1;
  if (tiling) {
    columns = static_cast<int>(from.take(12)) + 1;
    rows = static_cast<int>(from.take(12)) + 1;
  }
  header.tileColumns = readTileBorders(columns, isShort ? 8 : 16, from);
  header.tileRows = readTileBorders(rows, isShort ? 8 : 16, from);
  if (tileBytes) {
    for (int tile = columns * rows; tile > 0; --tile) from.take(8);
  }
  if (windowing) {
    for (int* const margin :
         {&header.marginTop, &header.marginLeft, &header.marginBottom, &header.marginRight}) {
      *margin = static_cast<int>(from.take(6));
    }
  } else {
    header.marginRight = -header.width & (kMacroblock - 1);
    header.marginBottom = -header.height & (kMacroblock - 1);
  }
  if ((header.width + header.marginLeft + header.marginRight) % kMacroblock != 0 ||
      (header.height + header.marginTop + header.marginBottom) % kMacroblock != 0) {
    throw Error("the header's margins do not fill up macroblocks");
  }
  closeTileBorders(header.macroblocksWide(), header.tileColumns);
  closeTileBorders(header.macroblocksHigh(), header.tileRows);
  if (!header.indexTable && (header.frequencyOrder || columns * rows > 1)) {
    throw Error("the index table lacks");
  }
  from.alignToByte();
  return header;
}

void writeImageHeader(const ImageHeader& header, BitWriter& to) {
  const bool tiling = header.tiles() > 1;
  const bool isShort = fitShortHeader(header);
  for (const char byte : kSignature) to.put(static_cast<uint8_t>(byte), 8);
  to.put(kVersion, 4);
  to.put(header.hardTiles, 1);
  to.put(kSubVersion, 3);
  to.put(tiling, 1);
  to.put(header.frequencyOrder, 1);
  to.put(static_cast<uint32_t>(header.orientation), 3);
  to.put(header.indexTable, 1);
  to.put(static_cast<uint32_t>(header.overlap), 2);
  to.put(isShort, 1);
  to.put(1, 1);  // 32-bit arithmetic may be needed
  to.put(0, 1);  // no margins but those that follow from the size
  to.put(header.trimmed, 1);
  to.put(0, 3);
  to.put(header.alpha, 1);
  to.put(static_cast<uint32_t>(header.output), 4);
  to.put(static_cast<uint32_t>(header.depth), 4);
  to.put(static_cast<uint32_t>(header.width - 1), isShort ? 16 : 32);
  to.put(static_cast<uint32_t>(header.height - 1), isShort ? 16 : 32);
  if (tiling) {
    to.put(static_cast<uint32_t>(header.tileColumns.size() - 2), 12);
    to.put(static_cast<uint32_t>(header.tileRows.size() - 2), 12);
    for (const std::vector<int>* const borders : {&header.tileColumns, &header.tileRows}) {
      for (size_t i = 1; i + 1 < borders->size(); ++i) {
        to.put(static_cast<uint32_t>((*borders)[i] - (*borders)[i - 1]), isShort ? 8 : 16);
      }
    }
  }
  to.alignToByte();
}

PlaneHeader readPlaneHeader(Depth depth, BitReader& from) {
  PlaneHeader header;
  const uint32_t format = from.take(3);
  if (format > static_cast<uint32_t>(ColourFormat::kCmyk)) {
    throw Error("a plane's colour format is not supported");
  }
  header.format = static_cast<ColourFormat>(format);
  header.channels = channelsFor(header.format);
  header.scaled = from.flag();
  const uint32_t bands = from.take(4);
  if (bands > static_cast<uint32_t>(Bands::kDcOnly)) {
    throw Error("a plane's bands are not known");
  }
  header.bands = static_cast<Bands>(bands);
  if (hasChroma(header.format)) from.take(8);  // where halved chroma lies
  if (hasShift(depth)) header.shift = static_cast<int>(from.take(8));
  if (header.shift > 15) throw Error("a plane is shifted by more than its samples have");

  if (from.flag()) header.quantiser[kDc] = readQuantiser(header.channels, from);
  for (int band = kLowPass; band < std::min<int>(bandsOf(header.bands), kFlexbits); ++band) {
    if (from.flag()) {
      header.quantiser[band] = header.quantiser[band - 1];
    } else if (from.flag()) {
      header.quantiser[band] = readQuantiser(header.channels, from);
    }
  }
  from.alignToByte();
  return header;
}

void writePlaneHeader(const PlaneHeader& header, Depth depth, BitWriter& to) {
  to.put(static_cast<uint32_t>(header.format), 3);
  to.put(header.scaled, 1);
  to.put(static_cast<uint32_t>(header.bands), 4);
  if (hasChroma(header.format)) to.put(0, 8);
  if (hasShift(depth)) to.put(static_cast<uint32_t>(header.shift), 8);
  // A quantiser is written even where a flag would do for that of the band before: there are
  // decoders that refuse such a flag in both bands.
  for (int band = kDc; band < std::min<int>(bandsOf(header.bands), kFlexbits); ++band) {
    if (band != kDc) to.put(0, 1);
    to.put(1, 1);
    writeQuantiser(*header.quantiser[band], header.channels, to);
  }
  to.alignToByte();
}

std::vector<PacketOffset> readIndexTable(bool hasTable, int packets, BitReader& from) {
  std::vector<PacketOffset> offsets;
  if (hasTable) {
    if (from.take(16) != 1) failDamaged();
    for (int i = 0; i < packets; ++i) offsets.push_back(readWord(from));
  } else {
    offsets.push_back(0);
  }
  // Profile and level.
  for (uint64_t bytes = readWord(from).value_or(0); bytes > 0; --bytes) from.take(8);
  from.alignToByte();
  return offsets;
}

void writeNoIndexTable(BitWriter& to) {
  // 4 bytes: the main profile, at the highest level, and no more of them.
  for (const uint32_t byte : {0x00, 0x04, 0x6F, 0xFF, 0x00, 0x01}) to.put(byte, 8);
}

void writeIndexTable(const std::vector<uint32_t>& offsets, BitWriter& to) {
  to.put(1, 16);
  for (const uint32_t offset : offsets) writeWord(offset, to);
  to.put(0xFF, 8);  // neither profile nor level
}

void readPacketHeader(int tile, PacketType type, BitReader& from) {
  if (from.take(24) != kPacketStart || from.take(5) != static_cast<uint32_t>(tile % 32) ||
      from.take(3) != static_cast<uint32_t>(type)) {
    failDamaged();
  }
}

void writePacketHeader(int tile, PacketType type, BitWriter& to) {
  to.put(kPacketStart, 24);
  to.put(static_cast<uint32_t>(tile % 32), 5);
  to.put(static_cast<uint32_t>(type), 3);
}

}  // namespace orbhost::jxr
