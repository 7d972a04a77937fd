#include "hosts/j2k/packet_reader.h"

#include <algorithm>
#include <climits>
#include <string>

#include "hosts/j2k/markers.h"

namespace orbhost::j2k {

namespace {

// More than any code-block's bit-planes, those of a region of interest among them.
constexpr uint32_t kMaxPlanes = 31 + 7 + 255;

ByteView behind(ByteView bytes, size_t count) {
  return {bytes.data + count, bytes.size - count};
}

// Table B.4.
uint32_t readPassCount(HeaderBits& bits) {
  if (bits.bit() == 0) return 1;
  if (bits.bit() == 0) return 2;
  const uint32_t few = bits.bits(2);
  if (few < 3) return 3 + few;
  const uint32_t more = bits.bits(5);
  return more < 31 ? 6 + more : 37 + bits.bits(7);
}

int floorLog2(uint32_t value) {
  int bits = 0;
  while (value >>= 1) ++bits;
  return bits;
}

}  // namespace

int segmentPassesFrom(int pass, int blockStyle) {
  if ((blockStyle & kTerminateEach) != 0) return 1;
  if ((blockStyle & kBypass) == 0) return INT_MAX;
  // The MQ coder goes down to the fourth plane; then two raw passes and a cleanup pass take turns.
  if (pass < 10) return 10 - pass;
  return (pass - 10) % 3 == 0 ? 2 : 1;
}

PacketReader::PacketReader(const PictureSize& size, const Tile& tile, const TileCoding& coding,
                           const TileData& data, int reduction, int layers, Budget& budget,
                           Damage& damage)
    : tile_(tile),
      coding_(coding),
      data_(data),
      reduction_(reduction),
      layers_(layers),
      budget_(budget),
      damage_(damage),
      sequence_(size, tile, coding),
      headers_(data.packetHeaders),
      precincts_(static_cast<size_t>(tile.precinctCount())) {
  try {
    Packet packet;
    while (sequence_.next(packet) && readPacket(packet)) {
    }
  } catch (const Error& error) {
    damage_.note(error.what());
  }
}

// False if there is no packet any more: a codestream may be cut at packets to save bytes.
bool PacketReader::readPacket(const Packet& packet) {
  while (body_.size == 0 && nextBody_ < data_.bodies.size()) body_ = data_.bodies[nextBody_++];
  skipMarker(body_, kSop, 6);
  ByteView& headers = data_.packsHeaders ? headers_ : body_;
  if (headers.size == 0) return false;

  pieces_.clear();
  HeaderBits bits(headers);
  if (bits.bit() != 0) readHeader(packet, bits);
  if (bits.isPastEnd()) throw Error("a packet ends within its header");
  headers = behind(headers, bits.byteCount());
  skipMarker(headers, kEph, 2);

  for (const Piece& piece : pieces_) {
    const bool isWanted =
        packet.layer < layers_ &&
        packet.resolution + reduction_ <= coding_.components[packet.component].style.levels;
    if (piece.length <= body_.size) {
      if (isWanted) append(piece, {body_.data, piece.length}, piece.passes);
      body_ = behind(body_, piece.length);
      continue;
    }
    // The first passes take the fewest bytes, so this many at least are there.
    const uint32_t passes =
        static_cast<uint32_t>(uint64_t{piece.passes} * body_.size / piece.length);
    if (isWanted && passes > 0) append(piece, body_, passes);
    throw Error("a tile ends within a packet");
  }
  return true;
}

void PacketReader::skipMarker(ByteView& bytes, int marker, size_t length) {
  if (bytes.size >= length && bytes[0] == marker >> 8 && bytes[1] == (marker & 255)) {
    bytes = behind(bytes, length);
  }
}

void PacketReader::readHeader(const Packet& packet, HeaderBits& bits) {
  for (PrecinctBand& band : openPrecinct(packet)) {
    for (uint32_t row = 0; row < band.grid.rows; ++row) {
      for (uint32_t column = 0; column < band.grid.columns; ++column) {
        readBlock(band, column, row, packet, bits);
      }
    }
  }
}

std::vector<PrecinctBand>& PacketReader::openPrecinct(const Packet& packet) {
  std::vector<PrecinctBand>& bands = precincts_[packet.precinctOfTile];
  const Resolution& resolution = tile_.components[packet.component].resolutions[packet.resolution];
  uint64_t blocks = 0;
  if (bands.empty()) {
    for (const Band& band : resolution.bands) {
      const BlockGrid grid = resolution.blocks(band, packet.precinct);
      budget_.takeBlocks(grid.count());
      bands.push_back({grid, std::vector<CodedBlock>(static_cast<size_t>(grid.count())),
                       TagTreeReader(grid.columns, grid.rows),
                       TagTreeReader(grid.columns, grid.rows)});
    }
  }
  for (const PrecinctBand& band : bands) blocks += band.grid.count();
  budget_.takeBlockVisits(blocks);
  return bands;
}

void PacketReader::readBlock(PrecinctBand& band, uint32_t column, uint32_t row,
                             const Packet& packet, HeaderBits& bits) {
  CodedBlock& block = band.blocks[static_cast<size_t>(row) * band.grid.columns + column];
  if (block.lengthBits != 0) {
    if (bits.bit() == 0) return;
  } else {
    if (!band.inclusion.isBelow(column, row, static_cast<uint32_t>(packet.layer) + 1, bits)) return;
    const uint32_t zeroPlanes = band.zeroPlanes.value(column, row, kMaxPlanes, bits);
    if (zeroPlanes == kMaxPlanes) throw Error("a code-block without bit-planes");
    block.zeroPlanes = static_cast<uint16_t>(zeroPlanes);
    block.lengthBits = 3;
  }

  const int style = coding_.components[packet.component].style.blockStyle;
  uint32_t passes = readPassCount(bits);
  if (block.passes + passes > 3 * kMaxPlanes) throw Error("a code-block of too many passes");
  while (bits.bit() != 0) {
    if (++block.lengthBits > 32) throw Error("a code-block of more than 4 GiB");
  }
  while (passes > 0) {
    const uint32_t inSegment =
        std::min(passes, static_cast<uint32_t>(segmentPassesFrom(block.passes, style)));
    const int lengthBits = block.lengthBits + floorLog2(inSegment);
    if (lengthBits > 32) throw Error("a code-block of more than 4 GiB");
    pieces_.push_back({&block, bits.bits(lengthBits), inSegment});
    block.passes = static_cast<uint16_t>(block.passes + inSegment);
    passes -= inSegment;
  }
}

void PacketReader::append(const Piece& piece, ByteView bytes, uint32_t passes) {
  const uint32_t index = static_cast<uint32_t>(contributions_.size());
  contributions_.push_back({bytes.data, static_cast<uint32_t>(bytes.size), passes, kNone});
  CodedBlock& block = *piece.block;
  (block.first == kNone ? block.first : contributions_[block.last].next) = index;
  block.last = index;
}

}  // namespace orbhost::j2k
