#include "hosts/j2k/packet_writer.h"

#include <algorithm>
#include <utility>

namespace orbhost::j2k {

namespace {

int floorLog2(uint32_t number) {
  int log = 0;
  while (number >>= 1) ++log;
  return log;
}

// T.800 table B.4.
void putPassCount(int count, HeaderBitWriter& bits) {
  if (count == 1) {
    bits.put(0);
  } else if (count == 2) {
    bits.put(0b10, 2);
  } else if (count <= 5) {
    bits.put(0b1100u | static_cast<uint32_t>(count - 3), 4);
  } else if (count <= 36) {
    bits.put(0b1111'00000u | static_cast<uint32_t>(count - 6), 9);
  } else {
    bits.put(0b1111'11111'0000000u | static_cast<uint32_t>(count - 37), 16);
  }
}

}  // namespace

PacketWriter::PacketWriter(const std::vector<EncodedBand>& bands, int guardBits) {
  for (const EncodedBand& from : bands) {
    Band band = {TagTreeWriter(from.blocksWide, from.blocksHigh),
                 TagTreeWriter(from.blocksWide, from.blocksHigh),
                 {}};
    const int planes = guardBits + from.exponent - 1;
    for (const EncodedBlock& block : from.blocks) {
      band.missingPlanes.set(static_cast<int>(band.blocks.size()), planes - block.bitPlanes);
      band.blocks.push_back({&block});
    }
    bands_.push_back(std::move(band));
  }
}

size_t PacketWriter::putHeader(Bytes& to) {
  bool isEmpty = true;
  for (Band& band : bands_) {
    for (size_t i = 0; i < band.blocks.size(); ++i) {
      Block& block = band.blocks[i];
      block.before = block.now;
      block.now = block.coded->chosen;
      if (block.now == block.before) continue;
      isEmpty = false;
      if (block.before == 0) band.inclusion.set(static_cast<int>(i), layer_);
    }
  }
  HeaderBitWriter bits(to);
  bits.put(isEmpty ? 0 : 1);
  size_t bodyLength = 0;
  for (Band& band : bands_) {
    if (isEmpty) break;
    for (size_t i = 0; i < band.blocks.size(); ++i) {
      Block& block = band.blocks[i];
      const int leaf = static_cast<int>(i);
      const bool isThere = block.now > block.before;
      if (block.before > 0) {
        bits.put(isThere ? 1 : 0);
      } else {
        band.inclusion.write(leaf, layer_ + 1, bits);
        if (isThere) band.missingPlanes.write(leaf, TagTreeWriter::kAll, bits);
      }
      if (isThere) bodyLength += putPieces(block, bits);
    }
  }
  bits.finish();
  ++layer_;
  return bodyLength;
}

// The numbers of passes and bytes: of each piece as many bits as its length may have, which is more
// with more passes (B.10.7).
size_t PacketWriter::putPieces(Block& block, HeaderBitWriter& bits) {
  putPassCount(block.now - block.before, bits);
  int lengthBits = block.lengthBits;
  forEachPiece(*block.coded, block.before, block.now, [&](int passes, int32_t begin, int32_t end) {
    const int needed = end == begin ? 0 : floorLog2(static_cast<uint32_t>(end - begin)) + 1;
    lengthBits = std::max(lengthBits, needed - floorLog2(static_cast<uint32_t>(passes)));
  });
  for (; block.lengthBits < lengthBits; ++block.lengthBits) bits.put(1);
  bits.put(0);
  size_t bodyLength = 0;
  forEachPiece(*block.coded, block.before, block.now, [&](int passes, int32_t begin, int32_t end) {
    bits.put(static_cast<uint32_t>(end - begin),
             lengthBits + floorLog2(static_cast<uint32_t>(passes)));
    bodyLength += static_cast<size_t>(end - begin);
  });
  return bodyLength;
}

void PacketWriter::putBody(Bytes& to) const {
  for (const Band& band : bands_) {
    for (const Block& block : band.blocks) {
      forEachPiece(*block.coded, block.before, block.now, [&](int, int32_t begin, int32_t end) {
        to.insert(to.end(), block.coded->bytes.begin() + begin, block.coded->bytes.begin() + end);
      });
    }
  }
}

}  // namespace orbhost::j2k
