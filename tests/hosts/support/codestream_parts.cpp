#include "tests/hosts/support/codestream_parts.h"

#include <stdexcept>

namespace orbtest {

using orbhost::Bytes;

namespace {

int wordAt(const Bytes& file, size_t i) {
  return file.at(i) << 8 | file.at(i + 1);
}

// The packets in [first, end): each begins with SOP, and EPH ends its header.
void takePackets(const Bytes& file, size_t first, size_t end, std::vector<PacketParts>& to) {
  bool isHeader = false;
  for (size_t i = first; i < end;) {
    const int marker = i + 1 < end ? wordAt(file, i) : 0;
    if (marker == 0xFF91) {
      to.emplace_back();
      isHeader = true;
      i += 6;
    } else if (marker == 0xFF92 && isHeader) {
      isHeader = false;
      i += 2;
    } else {
      (isHeader ? to.back().header : to.back().body).push_back(file[i++]);
    }
  }
}

}  // namespace

CodestreamParts takeApart(const Bytes& file) {
  CodestreamParts parts;
  size_t at = 2;
  while (wordAt(file, at) != 0xFF90) at += 2 + static_cast<size_t>(wordAt(file, at + 2));
  parts.mainHeader.assign(file.begin(), file.begin() + static_cast<ptrdiff_t>(at));
  while (wordAt(file, at) != 0xFFD9) {
    const size_t tile = static_cast<size_t>(wordAt(file, at + 4));
    const size_t end =
        at + (static_cast<size_t>(wordAt(file, at + 6)) << 16 | wordAt(file, at + 8));
    const bool isFirst = file[at + 10] == 0;
    at += 12;
    const size_t segments = at;
    while (wordAt(file, at) != 0xFF93) at += 2 + static_cast<size_t>(wordAt(file, at + 2));
    if (parts.tiles.size() <= tile) parts.tiles.resize(tile + 1);
    if (isFirst) {
      parts.tiles[tile].segments.assign(file.begin() + static_cast<ptrdiff_t>(segments),
                                        file.begin() + static_cast<ptrdiff_t>(at));
    }
    takePackets(file, at + 2, end, parts.tiles[tile].packets);
    at = end;
  }
  return parts;
}

void appendWord(Bytes& to, uint32_t value) {
  to.push_back(static_cast<uint8_t>(value >> 8));
  to.push_back(static_cast<uint8_t>(value));
}

void appendDoubleWord(Bytes& to, uint32_t value) {
  appendWord(to, value >> 16);
  appendWord(to, value);
}

void append(Bytes& to, const Bytes& bytes) {
  to.insert(to.end(), bytes.begin(), bytes.end());
}

Bytes segmentOf(int marker, const Bytes& contents) {
  Bytes segment;
  appendWord(segment, static_cast<uint32_t>(marker));
  appendWord(segment, static_cast<uint32_t>(contents.size() + 2));
  append(segment, contents);
  return segment;
}

Bytes tilePartOf(int tile, int part, const Bytes& segments, const Bytes& data, bool tellsLength) {
  Bytes bytes;
  appendWord(bytes, 0xFF90);
  appendWord(bytes, 10);
  appendWord(bytes, static_cast<uint32_t>(tile));
  appendDoubleWord(bytes,
                   tellsLength ? static_cast<uint32_t>(14 + segments.size() + data.size()) : 0);
  bytes.push_back(static_cast<uint8_t>(part));
  bytes.push_back(0);  // of how many is not told
  append(bytes, segments);
  appendWord(bytes, 0xFF93);
  append(bytes, data);
  return bytes;
}

}  // namespace orbtest
