#include "hosts/j2k/jp2_file.h"

#include <algorithm>
#include <optional>
#include <string>

#include "hosts/j2k/byte_reader.h"

namespace orbhost::j2k {

namespace {

struct Box {
  uint32_t type;
  size_t first;  // of its contents
  size_t end;
};

std::string nameOf(uint32_t type) {
  std::string name;
  for (int shift = 24; shift >= 0; shift -= 8) {
    const char c = static_cast<char>(type >> shift);
    name += c >= ' ' && c <= '~' ? c : '?';
  }
  return "the box \"" + name + "\"";
}

// The box at a position of [position, end). None if it isn't there or reaches beyond the end; then
// what is there of a codestream is a box all the same.
std::optional<Box> boxAt(ByteView file, size_t position, size_t end, Damage& damage) {
  if (end - position < 8) {
    if (end != position) damage.note(position, "the file ends within a box");
    return std::nullopt;
  }
  ByteReader reader(file, position, end, "a box");
  uint64_t length = reader.doubleWord();
  const uint32_t type = reader.doubleWord();
  if (length == 1) {
    if (reader.left() < 8) {
      damage.note(position, "the file ends within a box");
      return std::nullopt;
    }
    length = reader.number(8);
  } else if (length == 0) {
    length = end - position;
  }
  if (length < reader.position() - position) {
    damage.note(position, nameOf(type) + " has a length of " + std::to_string(length));
    return std::nullopt;
  }
  if (length > end - position) {
    damage.note(position, nameOf(type) + " reaches beyond the end");
    if (type != kCodestreamBox) return std::nullopt;
    length = end - position;
  }
  return Box{type, reader.position(), position + static_cast<size_t>(length)};
}

ByteReader readerOf(ByteView file, const Box& box) {
  return {file, box.first, box.end, nameOf(box.type)};
}

void readColour(ByteReader reader, Jp2File& jp2) {
  const int method = reader.byte();
  reader.word();  // precedence and approximation
  if (method == 1 && jp2.colourSpace == 0) jp2.colourSpace = reader.doubleWord();
}

void readPalette(ByteReader reader, Palette& palette) {
  Palette read;
  const int entries = reader.word();
  const int columns = reader.byte();
  if (entries < 1 || entries > 1024 || columns < 1) reader.fail("has no palette");
  for (int i = 0; i < columns; ++i) {
    const int depth = reader.byte();
    if ((depth & 127) + 1 > 31) reader.fail("has an impossible depth");
    read.columns.push_back({(depth & 127) + 1, (depth & 128) != 0});
  }
  for (int i = 0; i < entries; ++i) {
    std::vector<int32_t> entry;
    for (const Palette::Column& column : read.columns) {
      const uint64_t value = reader.number((column.precision + 7) / 8);
      const int64_t top = int64_t{1} << (column.precision - 1);
      int64_t number = static_cast<int64_t>(value & static_cast<uint64_t>(2 * top - 1));
      if (column.isSigned && number >= top) number -= 2 * top;
      entry.push_back(static_cast<int32_t>(number));
    }
    read.entries.push_back(std::move(entry));
  }
  palette = std::move(read);
}

void readMapping(ByteReader reader, std::vector<ChannelMapping>& mappings) {
  while (reader.left() >= 4) {
    const int component = reader.word();
    const int type = reader.byte();
    mappings.push_back({component, type == 1, reader.byte()});
  }
}

void readDefinitions(ByteReader reader, std::vector<ChannelDefinition>& definitions) {
  const int count = reader.word();
  for (int i = 0; i < count; ++i) {
    const int channel = reader.word();
    const int type = reader.word();
    definitions.push_back({channel, type, reader.word()});
  }
}

void readHeader(ByteView file, const Box& header, Jp2File& jp2, Damage& damage) {
  size_t position = header.first;
  while (const auto box = boxAt(file, position, header.end, damage)) {
    try {
      switch (box->type) {
        case kColourBox:
          readColour(readerOf(file, *box), jp2);
          break;
        case kPaletteBox:
          readPalette(readerOf(file, *box), jp2.palette);
          break;
        case kMappingBox:
          readMapping(readerOf(file, *box), jp2.mappings);
          break;
        case kChannelsBox:
          readDefinitions(readerOf(file, *box), jp2.definitions);
          break;
        default:  // the codestream says better what the others do
          break;
      }
    } catch (const Error& error) {
      damage.note(error.what());
    }
    position = box->end;
  }
}

}  // namespace

bool isJp2(ByteView file) {
  static constexpr uint8_t kStart[] = {0, 0, 0, 12, 'j', 'P', ' ', ' ', 13, 10, 0x87, 10};
  return file.size >= sizeof kStart && std::equal(kStart, kStart + sizeof kStart, file.data);
}

Jp2File readJp2(ByteView file, Damage& damage) {
  Jp2File jp2;
  size_t position = 0;
  while (const auto box = boxAt(file, position, file.size, damage)) {
    if (box->type == kHeaderBox) {
      readHeader(file, *box, jp2, damage);
    } else if (box->type == kCodestreamBox) {
      jp2.codestreamFirst = box->first;
      jp2.codestreamEnd = box->end;
      return jp2;
    }
    position = box->end;
  }
  throw Error("a JP2 file without a codestream");
}

}  // namespace orbhost::j2k
