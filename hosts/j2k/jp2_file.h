// The boxes of a JP2 file around a codestream (ITU-T T.800 annex I).
#ifndef ORB_HOSTS_J2K_JP2_FILE_H
#define ORB_HOSTS_J2K_JP2_FILE_H

#include <cstdint>
#include <vector>

#include "hosts/bytes.h"
#include "hosts/j2k/damage.h"

namespace orbhost::j2k {

// Four letters as a number.
constexpr uint32_t boxType(const char (&letters)[5]) {
  uint32_t type = 0;
  for (int i = 0; i < 4; ++i) type = type << 8 | static_cast<unsigned char>(letters[i]);
  return type;
}

constexpr uint32_t kSignatureBox = boxType("jP  ");
constexpr uint32_t kFileTypeBox = boxType("ftyp");
constexpr uint32_t kHeaderBox = boxType("jp2h");
constexpr uint32_t kImageHeaderBox = boxType("ihdr");
constexpr uint32_t kDepthsBox = boxType("bpcc");
constexpr uint32_t kColourBox = boxType("colr");
constexpr uint32_t kPaletteBox = boxType("pclr");
constexpr uint32_t kMappingBox = boxType("cmap");
constexpr uint32_t kChannelsBox = boxType("cdef");
constexpr uint32_t kCodestreamBox = boxType("jp2c");

// Enumerated colour spaces (table I.10, and that of inks from ISO/IEC 15444-2).
enum ColourSpace : uint32_t { kCmyk = 12, kSrgb = 16, kGrey = 17, kSycc = 18 };

struct Palette {
  struct Column {
    int precision;
    bool isSigned;
  };
  std::vector<Column> columns;
  std::vector<std::vector<int32_t>> entries;  // each with a value for each column
};

// Where a channel comes from: a component, or a palette's column that the component is an index
// for.
struct ChannelMapping {
  int component;
  bool usesPalette;
  int column;
};

// What a channel is (table I.16, I.17).
struct ChannelDefinition {
  int channel;
  int type;         // 0 colour, 1 opacity, 2 premultiplied opacity
  int association;  // the number of the colour, from 1 on; 0 the whole picture
};

struct Jp2File {
  size_t codestreamFirst = 0;
  size_t codestreamEnd = 0;
  uint32_t colourSpace = 0;  // 0 if none is enumerated
  Palette palette;
  std::vector<ChannelMapping> mappings;
  std::vector<ChannelDefinition> definitions;
};

bool isJp2(ByteView file);

// Throws an Error if there is no codestream. Other boxes that make no sense are damage.
Jp2File readJp2(ByteView file, Damage& damage);

}  // namespace orbhost::j2k

#endif
