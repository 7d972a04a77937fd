#include "hosts/pack/archive.h"

#include <algorithm>
#include <string>
#include <vector>

#include "hosts/gzip/checksum.h"
#include "hosts/pack/damage.h"
#include "hosts/pack/input.h"
#include "hosts/pack/symbol_code.h"

namespace orbhost::pack {

namespace {

constexpr uint8_t kMagic[] = {'O', 'R', 'B', 1};
constexpr size_t kBlocksOfSection = 8;
constexpr uint8_t kStored = 128;

// More symbols than this no block has.
constexpr size_t kMostSymbols = 4 * kLargestBlock;

size_t readAsMuchAs(Source& source, Bytes& to) {
  size_t have = 0;
  while (have < to.size()) {
    const size_t got = source.read(to.data() + have, to.size() - have);
    if (got == 0) break;
    have += got;
  }
  return have;
}

ByteView blockOf(ByteView section, size_t block) {
  const size_t first = block * kLargestBlock;
  return {section.data + first, std::min(kLargestBlock, section.size - first)};
}

void packSection(ByteView section, Stages& stages, Sink& sink) {
  const size_t blocks = (section.size + kLargestBlock - 1) / kLargestBlock;
  Bytes stored = {static_cast<uint8_t>(blocks | kStored)};
  Bytes coded = {static_cast<uint8_t>(blocks)};
  Bytes symbols;
  for (size_t i = 0; i < blocks; ++i) {
    const ByteView block = blockOf(section, i);
    for (Bytes* const to : {&stored, &coded}) {
      appendNumber(block.size - 1, 2, *to);
      appendNumber(gzip::crc32(0, block), 4, *to);
    }
    stages.forward(block, symbols).appendTo(coded);
  }
  appendSymbols(symbols, coded);
  stored.insert(stored.end(), section.data, section.data + section.size);
  sink.write(coded.size() < stored.size() ? coded : stored);
}

struct BlockHeader {
  size_t length;
  uint32_t crc;
  StageHeader stages;
};

void give(ByteView block, const BlockHeader& header, Sink& sink) {
  if (gzip::crc32(0, block) != header.crc) {
    throw Error("the packed data is damaged: a block's checksum is wrong");
  }
  sink.write(block);
}

uint64_t unpackSection(size_t blocks, bool isStored, Input& input, Stages& stages, Sink& sink) {
  std::vector<BlockHeader> headers;
  uint64_t length = 0;
  size_t count = 0;
  for (size_t i = 0; i < blocks; ++i) {
    BlockHeader header{};
    header.length = input.number(2) + 1;
    if (header.length > kLargestBlock) failDamaged();
    header.crc = static_cast<uint32_t>(input.number(4));
    if (!isStored) {
      header.stages = StageHeader::parse(input.bytes(StageHeader::kSize).data());
      if (header.stages.symbols < 1 || header.stages.symbols > kMostSymbols) failDamaged();
      count += header.stages.symbols;
    }
    length += header.length;
    headers.push_back(header);
  }
  if (isStored) {
    for (const BlockHeader& header : headers) give(input.bytes(header.length), header, sink);
    return length;
  }
  const Bytes symbols = readSymbols(input, count);
  size_t first = 0;
  for (const BlockHeader& header : headers) {
    const ByteView ofBlock = {symbols.data() + first, header.stages.symbols};
    first += header.stages.symbols;
    give(stages.inverse(header.stages, ofBlock, header.length), header, sink);
  }
  return length;
}

}  // namespace

void pack(Source& source, Sink& sink, Ranking ranking) {
  sink.write({kMagic, sizeof kMagic});
  Stages stages(ranking);
  Bytes section(kBlocksOfSection * kLargestBlock);
  uint64_t length = 0;
  while (const size_t got = readAsMuchAs(source, section)) {
    packSection({section.data(), got}, stages, sink);
    length += got;
  }
  Bytes end = {0};
  appendNumber(length, 8, end);
  sink.write(end);
}

uint64_t unpack(Source& source, Sink& sink) {
  Input input(source);
  const Bytes magic = input.bytes(sizeof kMagic);
  if (!std::equal(magic.begin(), magic.end() - 1, kMagic)) throw Error("not a packed file");
  if (magic.back() != kMagic[sizeof kMagic - 1]) {
    throw Error("a packed file of version " + std::to_string(magic.back()) +
                ", which is not known");
  }
  Stages stages(Ranking::kMoveToFront);
  uint64_t length = 0;
  while (const size_t first = input.number(1)) {
    const size_t blocks = first & ~size_t{kStored};
    if (blocks < 1 || blocks > kBlocksOfSection) failDamaged();
    length += unpackSection(blocks, (first & kStored) != 0, input, stages, sink);
  }
  if (input.number(8) != length) failDamaged();
  if (!input.isAtEnd()) throw Error("the packed file has other data behind its end");
  return length;
}

}  // namespace orbhost::pack
