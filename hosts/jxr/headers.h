// The headers of a codestream, read and written (ITU-T T.832).
#ifndef ORB_HOSTS_JXR_HEADERS_H
#define ORB_HOSTS_JXR_HEADERS_H

#include <optional>
#include <vector>

#include "hosts/jxr/bits.h"
#include "hosts/jxr/format.h"
#include "hosts/jxr/quantiser.h"

namespace orbhost::jxr {

// Of the picture, as its header numbers them.
enum class OutputFormat { kGrey = 0, kCmyk = 4, kRgb = 7 };
enum class Depth { k8 = 1, k16 = 2 };

// Parts of a picture that are decoded each by itself, in macroblocks.
struct Tile {
  int number;
  int left;
  int top;
  int width;
  int height;
};

struct ImageHeader {
  bool hardTiles = false;  // overlap filters stop at the borders of tiles
  bool frequencyOrder = false;
  int orientation = 0;
  bool indexTable = false;
  int overlap = 0;  // stages of overlap filters
  bool trimmed = false;
  bool alpha = false;  // a second plane follows the first one
  OutputFormat output = OutputFormat::kGrey;
  Depth depth = Depth::k8;
  int width = 0;
  int height = 0;
  // Samples between the picture and the edges of what is coded.
  int marginTop = 0, marginLeft = 0, marginBottom = 0, marginRight = 0;
  // Where tiles begin, in macroblocks, and where the last one ends.
  std::vector<int> tileColumns;
  std::vector<int> tileRows;

  int macroblocksWide() const { return (width + marginLeft + marginRight) / kMacroblock; }
  int macroblocksHigh() const { return (height + marginTop + marginBottom) / kMacroblock; }
  int tiles() const { return static_cast<int>((tileColumns.size() - 1) * (tileRows.size() - 1)); }
  Tile tile(int number) const;
};

// Each throws an Error that says what is wrong, or not supported.
ImageHeader readImageHeader(BitReader& from);
void writeImageHeader(const ImageHeader& header, BitWriter& to);

struct PlaneHeader {
  ColourFormat format = ColourFormat::kGrey;
  int channels = 1;
  bool scaled = false;  // samples carry three bits more
  Bands bands = Bands::kAll;
  int shift = 0;  // lowest bits that samples have lost
  // For the whole plane, or in the header of each tile.
  std::optional<Quantiser> quantiser[kFlexbits];
};
PlaneHeader readPlaneHeader(Depth depth, BitReader& from);
void writePlaneHeader(const PlaneHeader& header, Depth depth, BitWriter& to);

// Where packets begin, counted from the end of the table and what follows it. An empty packet is
// not in the file.
using PacketOffset = std::optional<uint64_t>;

// The table, if there is one, and what stands between it and the first packet.
std::vector<PacketOffset> readIndexTable(bool hasTable, int packets, BitReader& from);
// For a file without one; else the offsets of all packets.
void writeNoIndexTable(BitWriter& to);
void writeIndexTable(const std::vector<uint32_t>& offsets, BitWriter& to);

// What a tile's packet begins with; the type is that of a spatial packet or of a band.
enum class PacketType { kSpatial, kDc, kLowPass, kHighPass, kFlexbits };
void readPacketHeader(int tile, PacketType type, BitReader& from);
void writePacketHeader(int tile, PacketType type, BitWriter& to);

}  // namespace orbhost::jxr

#endif
