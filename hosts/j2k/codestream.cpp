#include "hosts/j2k/codestream.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>

#include "hosts/j2k/byte_reader.h"
#include "hosts/j2k/layout.h"
#include "hosts/j2k/markers.h"

namespace orbhost::j2k {

namespace {

constexpr uint64_t kMaxTiles = 65535;

std::string hex(int marker) {
  char text[8];
  std::snprintf(text, sizeof text, "%04X", marker & 0xFFFF);
  return text;
}

ByteReader readerOf(ByteView file, const Segment& segment) {
  return {file, segment.first, segment.end, "the segment " + hex(segment.marker)};
}

// Packed packet headers come in segments with an index each.
using IndexedSegments = std::vector<std::pair<int, ByteView>>;

void addIndexed(ByteReader reader, IndexedSegments& to) {
  const int index = reader.byte();
  to.emplace_back(index, reader.bytes(reader.left()));
}

void appendInOrder(IndexedSegments segments, Bytes& to) {
  std::stable_sort(segments.begin(), segments.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  for (const auto& [index, bytes] : segments) {
    to.insert(to.end(), bytes.data, bytes.data + bytes.size);
  }
}

// SPcod, SPcoc (tables A.15, A.20).
ComponentStyle readComponentStyle(ByteReader& reader, bool hasPrecincts) {
  ComponentStyle style;
  style.levels = reader.byte();
  if (style.levels > kMaxLevels) reader.fail("asks for more than 32 levels of decomposition");
  style.blockWidth = reader.byte() + 2;
  style.blockHeight = reader.byte() + 2;
  if (style.blockWidth > 10 || style.blockHeight > 10 ||
      style.blockWidth + style.blockHeight > 12) {
    reader.fail("asks for code-blocks that are too large");
  }
  style.blockStyle = reader.byte();
  if (style.blockStyle > 63) reader.fail("asks for an unknown code-block style");
  const int wavelet = reader.byte();
  if (wavelet > 1) reader.fail("asks for an unknown wavelet");
  style.isReversible = wavelet == 1;
  for (int r = 0; hasPrecincts && r <= style.levels; ++r) {
    const int sizes = reader.byte();
    style.precincts[r] = {sizes & 15, sizes >> 4};
    if (r > 0 && ((sizes & 15) == 0 || sizes >> 4 == 0)) {
      reader.fail("asks for precincts that are too small");
    }
  }
  return style;
}

// Sqcd, SPqcd (tables A.28 to A.30).
Quantisation readQuantisation(ByteReader& reader) {
  Quantisation quantisation;
  const int style = reader.byte();
  if ((style & 31) > 2) reader.fail("asks for an unknown quantisation");
  quantisation.style = static_cast<QuantisationStyle>(style & 31);
  quantisation.guardBits = style >> 5;
  const bool hasMantissas = quantisation.style != QuantisationStyle::kNone;
  while (reader.left() >= (hasMantissas ? 2 : 1)) {
    if (hasMantissas) {
      const int step = reader.word();
      quantisation.steps.push_back({step >> 11, step & 2047});
    } else {
      quantisation.steps.push_back({reader.byte() >> 3, 0});
    }
  }
  if (quantisation.steps.empty()) reader.fail("is too short");
  return quantisation;
}

}  // namespace

void Codestream::Settings::beginTile() {
  ownStyle.assign(ownStyle.size(), false);
  ownQuantisation.assign(ownQuantisation.size(), false);
  hasChanges = false;
}

Codestream::Codestream(ByteView file, size_t first, size_t end, Damage& damage)
    : file_(file), position_(first), end_(end), damage_(damage) {
  readMainHeader();
  readTileParts();
}

// The segment at the position, which becomes that behind it. A marker that has no segment is one
// that ends here.
Segment Codestream::nextSegment() {
  ByteReader reader(file_, position_, end_, "the codestream");
  const int marker = reader.word();
  if (marker < 0xFF00) {
    failAt(position_, "a marker was expected, not " + hex(marker));
  }
  if (marker == kSod || marker == kEoc || marker == kSoc ||
      (marker >= 0xFF30 && marker <= 0xFF3F)) {
    position_ = reader.position();
    return {marker, position_, position_};
  }
  const size_t length = static_cast<size_t>(reader.word());
  if (length < 2) failAt(position_, "a segment of length " + std::to_string(length));
  if (length - 2 > reader.left()) {
    failAt(position_, "the segment " + hex(marker) + " reaches beyond the codestream's end");
  }
  position_ = reader.position() + length - 2;
  return {marker, reader.position(), position_};
}

void Codestream::readMainHeader() {
  if (end_ - position_ < 4 || nextSegment().marker != kSoc) failAt(position_, "no codestream");
  const Segment first = nextSegment();
  if (first.marker != kSiz) failAt(position_, "the codestream does not begin with its size");
  readSize(first);

  std::vector<Segment> quantisations;
  IndexedSegments packed;
  for (;;) {
    const size_t start = position_;
    const Segment segment = nextSegment();
    if (segment.marker == kSot) {
      position_ = start;
      break;
    }
    if (segment.marker == kSod || segment.marker == kEoc || segment.marker == kSoc ||
        segment.marker == kSiz) {
      failAt(start, "the marker " + hex(segment.marker) + " has no place in the main header");
    }
    if (segment.marker == kPpm) {
      hasPackedMain_ = true;
      addIndexed(readerOf(file_, segment), packed);
    } else {
      apply(segment, main_);
    }
  }
  if (!main_.hasStyle) failAt(position_, "the main header says nothing of the coding style");
  if (!main_.hasQuantisation) failAt(position_, "the main header says nothing of quantisation");
  appendInOrder(packed, packedMain_);
  main_.beginTile();
}

void Codestream::readSize(const Segment& segment) {
  ByteReader reader = readerOf(file_, segment);
  size_.capabilities = reader.word();
  if ((size_.capabilities & 0x4000) != 0) reader.fail("asks for high-throughput code-blocks");
  size_.x1 = reader.doubleWord();
  size_.y1 = reader.doubleWord();
  size_.x0 = reader.doubleWord();
  size_.y0 = reader.doubleWord();
  size_.tileWidth = reader.doubleWord();
  size_.tileHeight = reader.doubleWord();
  size_.tileX0 = reader.doubleWord();
  size_.tileY0 = reader.doubleWord();
  if (size_.x1 <= size_.x0 || size_.y1 <= size_.y0) reader.fail("is that of an empty picture");
  const auto isFirstTileEmpty = [](uint32_t tile0, uint32_t tileSize, uint32_t picture0) {
    return tile0 > picture0 || tileSize == 0 || uint64_t{tile0} + tileSize <= picture0;
  };
  if (isFirstTileEmpty(size_.tileX0, size_.tileWidth, size_.x0) ||
      isFirstTileEmpty(size_.tileY0, size_.tileHeight, size_.y0)) {
    reader.fail("has tiles that do not cover the picture");
  }
  const uint64_t tiles = TileGrid(size_).count();
  if (tiles > kMaxTiles) reader.fail("divides the picture into too many tiles");
  tiles_.resize(static_cast<size_t>(tiles));

  const int count = reader.word();
  if (count < 1 || count > kMaxComponents) {
    reader.fail("is that of a picture with " + std::to_string(count) + " components");
  }
  for (int c = 0; c < count; ++c) {
    ComponentSize component;
    const int depth = reader.byte();
    component.precision = (depth & 127) + 1;
    component.isSigned = (depth & 128) != 0;
    component.dx = static_cast<uint32_t>(reader.byte());
    component.dy = static_cast<uint32_t>(reader.byte());
    if (component.precision > kMaxPrecision || component.dx == 0 || component.dy == 0) {
      reader.fail("has an impossible component");
    }
    size_.components.push_back(component);
  }
  const size_t components = size_.components.size();
  main_.coding.components.resize(components);
  main_.ownStyle.resize(components);
  main_.ownQuantisation.resize(components);
}

// Markers that say nothing of the coding, or that a decoder does not need, are passed over.
void Codestream::apply(const Segment& segment, Settings& settings) const {
  ByteReader reader = readerOf(file_, segment);
  TileCoding& coding = settings.coding;
  const int components = size_.componentCount();
  const int componentBytes = components < 257 ? 1 : 2;
  const auto component = [&] {
    const int c = static_cast<int>(reader.number(componentBytes));
    if (c >= components) reader.fail("is for a component that there is not");
    return c;
  };

  switch (segment.marker) {
    case kCod: {
      const int flags = reader.byte();
      coding.style.mayHaveSop = (flags & 2) != 0;
      coding.style.hasEph = (flags & 4) != 0;
      const int progression = reader.byte();
      if (progression > 4) reader.fail("asks for an unknown progression");
      coding.style.progression = static_cast<Progression>(progression);
      coding.style.layers = reader.word();
      if (coding.style.layers == 0) reader.fail("is that of a picture without layers");
      const int transform = reader.byte();
      if (transform > 1) reader.fail("asks for an unknown component transform");
      coding.style.transformsComponents = transform == 1;
      const ComponentStyle style = readComponentStyle(reader, (flags & 1) != 0);
      for (int c = 0; c < components; ++c) {
        if (!settings.ownStyle[c]) coding.components[c].style = style;
      }
      settings.hasStyle = true;
      break;
    }
    case kCoc: {
      const int c = component();
      const int flags = reader.byte();
      coding.components[c].style = readComponentStyle(reader, (flags & 1) != 0);
      settings.ownStyle[c] = true;
      break;
    }
    case kQcd: {
      const Quantisation quantisation = readQuantisation(reader);
      for (int c = 0; c < components; ++c) {
        if (!settings.ownQuantisation[c]) coding.components[c].quantisation = quantisation;
      }
      settings.hasQuantisation = true;
      break;
    }
    case kQcc: {
      const int c = component();
      coding.components[c].quantisation = readQuantisation(reader);
      settings.ownQuantisation[c] = true;
      break;
    }
    case kRgn: {
      const int c = component();
      if (reader.byte() != 0) reader.fail("asks for an unknown kind of region of interest");
      coding.components[c].roiShift = reader.byte();
      break;
    }
    case kPoc: {
      if (!settings.hasChanges) coding.changes.clear();
      settings.hasChanges = true;
      while (reader.left() > 0) {
        ProgressionChange change;
        change.firstResolution = reader.byte();
        change.firstComponent = static_cast<int>(reader.number(componentBytes));
        change.endLayer = reader.word();
        change.endResolution = reader.byte();
        change.endComponent = static_cast<int>(reader.number(componentBytes));
        if (change.endComponent == 0) change.endComponent = componentBytes == 1 ? 256 : 16384;
        const int progression = reader.byte();
        if (progression > 4) reader.fail("asks for an unknown progression");
        change.progression = static_cast<Progression>(progression);
        coding.changes.push_back(change);
      }
      break;
    }
    default:
      break;
  }
}

void Codestream::readTileParts() {
  while (end_ - position_ >= 2) {
    const int marker = file_[position_] << 8 | file_[position_ + 1];
    if (marker == kEoc) return;
    if (marker != kSot) {
      damage_.note(position_, "a tile-part was expected, not " + hex(marker));
      return;
    }
    try {
      readTilePart();
    } catch (const Error& error) {
      damage_.note(error.what());
      return;
    }
  }
  damage_.note(end_, "the codestream breaks off");
}

void Codestream::readTilePart() {
  const size_t start = position_;
  ByteReader reader = readerOf(file_, nextSegment());
  const uint32_t tile = static_cast<uint32_t>(reader.word());
  const size_t length = reader.doubleWord();
  reader.word();  // which part of the tile it is, of how many
  size_t end = end_;
  if (length == 0) {  // the last one: it ends with the codestream
    if (end - position_ >= 2 && file_[end - 2] == kEoc >> 8 && file_[end - 1] == (kEoc & 255)) {
      end -= 2;
    }
  } else if (length <= end_ - start) {
    end = start + length;
    if (end < position_) failAt(start, "a tile-part of " + std::to_string(length) + " bytes");
  }
  if (tile >= tiles_.size()) {
    damage_.note(start, "there is no tile " + std::to_string(tile));
  } else {
    readTilePartHeader(tiles_[tile], end);
    tiles_[tile].bodies.emplace_back(file_.data + position_, end - position_);
  }
  position_ = end;
  if (length > end_ - start) failAt(end_, "the codestream breaks off in a tile-part");
}

// Up to and including the start of data, which has to come in front of `end`.
void Codestream::readTilePartHeader(TileData& tile, size_t end) {
  IndexedSegments packed;
  for (;;) {
    const size_t start = position_;
    const Segment segment = nextSegment();
    if (position_ > end) failAt(start, "a tile-part ends within its header");
    if (segment.marker == kSod) break;
    if (segment.marker == kSot || segment.marker == kEoc || segment.marker == kSoc ||
        segment.marker == kSiz) {
      failAt(start, "the marker " + hex(segment.marker) + " has no place in a tile-part's header");
    }
    if (segment.marker == kPpt) {
      tile.packsHeaders = true;
      addIndexed(readerOf(file_, segment), packed);
    } else {
      tile.segments.push_back(segment);
    }
  }
  appendInOrder(packed, tile.packetHeaders);
  if (!hasPackedMain_) return;
  // Each tile-part, in the order of the codestream, has the next part of the main header's.
  tile.packsHeaders = true;
  ByteReader reader(packedMain_, packedMainPosition_, packedMain_.size(), "PPM");
  if (reader.left() < 4) {
    damage_.note(position_, "the main header packs no packet headers for this tile-part");
    return;
  }
  const ByteView headers = reader.bytes(reader.doubleWord());
  packedMainPosition_ = reader.position();
  tile.packetHeaders.insert(tile.packetHeaders.end(), headers.data, headers.data + headers.size);
}

TileCoding Codestream::codingOf(uint32_t tile) const {
  Settings settings = main_;
  for (const Segment& segment : tiles_[tile].segments) apply(segment, settings);
  check(settings.coding);
  return std::move(settings.coding);
}

void Codestream::check(const TileCoding& coding) const {
  for (const ComponentCoding& component : coding.components) {
    const size_t bands = static_cast<size_t>(3 * component.style.levels + 1);
    if (component.quantisation.style != QuantisationStyle::kDerived &&
        component.quantisation.steps.size() < bands) {
      throw Error("the quantisation of some bands is missing");
    }
  }
}

}  // namespace orbhost::j2k
