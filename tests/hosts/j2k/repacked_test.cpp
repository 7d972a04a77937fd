// Codestreams that few encoders make: the packets of opj_compress in other orders and places.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <tuple>

#include "hosts/j2k/codestream.h"
#include "hosts/j2k/decode.h"
#include "hosts/j2k/packet_sequence.h"
#include "hosts/j2k/picture.h"
#include "tests/hosts/support/codestream_parts.h"
#include "tests/hosts/support/j2k_judge.h"
#include "tests/hosts/support/pictures.h"

namespace {

using namespace orbtest;
using orbhost::Bytes;
using orbhost::Image;

constexpr const char* kMarked = "-SOP -EPH -t 40,40 -n 3 -c [32,32],[16,16] -r 10,4,1 ";

const Image& picture() {
  static const Image image = draw(Motif::kScene, 90, 70, 3);
  return image;
}

CodestreamParts partsOf(const std::string& options) {
  return takeApart(opjCompress(picture(), options));
}

// Appends the end, and expects the picture as it was.
void expectPicture(Bytes file) {
  appendWord(file, 0xFFD9);
  const orbhost::j2k::Decoded decoded = orbhost::j2k::decodeJ2k(file, {});
  EXPECT_EQ(decoded.damage.count(), 0u) << decoded.damage.first();
  EXPECT_EQ(difference(orbhost::j2k::colourPicture(decoded), picture()).largest, 0);
}

// Headers and bodies of some of a tile's packets.
struct Stretch {
  Bytes headers;
  Bytes bodies;
  Bytes both;

  Stretch(const TileParts& tile, size_t first, size_t end, bool marksHeaders = false) {
    for (size_t i = first; i < end && i < tile.packets.size(); ++i) {
      const PacketParts& packet = tile.packets[i];
      for (Bytes* const to : {&headers, &both}) {
        append(*to, packet.header);
        if (marksHeaders) appendWord(*to, 0xFF92);
      }
      append(bodies, packet.body);
      append(both, packet.body);
    }
  }
};

// A segment of packed headers: those from one byte to another.
Bytes packedSegment(int marker, size_t index, const Bytes& headers, size_t first, size_t end) {
  Bytes contents;
  contents.push_back(static_cast<uint8_t>(index));
  for (size_t i = first; i < std::min(end, headers.size()); ++i) contents.push_back(headers[i]);
  return segmentOf(marker, contents);
}

TEST(J2kRepacked, PlainPacketsNeedNoMarkers) {
  const CodestreamParts parts = partsOf(kMarked);
  Bytes file = parts.mainHeader;
  for (size_t t = 0; t < parts.tiles.size(); ++t) {
    append(file, tilePartOf(static_cast<int>(t), 0, {}, Stretch(parts.tiles[t], 0, 999).both));
  }
  expectPicture(file);
}

// Parts of all tiles take turns; some of them are empty.
TEST(J2kRepacked, TilePartsMayBeInterleaved) {
  const CodestreamParts parts = partsOf(kMarked);
  Bytes file = parts.mainHeader;
  for (int part = 0; part < 12; ++part) {
    for (size_t t = parts.tiles.size(); t-- > 0;) {
      const size_t first = static_cast<size_t>(part) * 20;
      append(file, tilePartOf(static_cast<int>(t), part, {},
                              Stretch(parts.tiles[t], first, part == 11 ? 9999 : first + 20).both));
    }
  }
  expectPicture(file);
}

TEST(J2kRepacked, TheLastTilePartNeedNotTellItsLength) {
  const CodestreamParts parts = partsOf(kMarked);
  Bytes file = parts.mainHeader;
  for (size_t t = 0; t < parts.tiles.size(); ++t) {
    append(file, tilePartOf(static_cast<int>(t), 0, {}, Stretch(parts.tiles[t], 0, 9999).both,
                            t + 1 < parts.tiles.size()));
  }
  expectPicture(file);
}

// In two segments of a header, which stand in the wrong order.
TEST(J2kRepacked, HeadersMayBePackedInTilePartHeaders) {
  const CodestreamParts parts = partsOf(kMarked);
  for (const bool marksHeaders : {false, true}) {
    Bytes file = parts.mainHeader;
    for (size_t t = 0; t < parts.tiles.size(); ++t) {
      for (int part = 0; part < 2; ++part) {
        const Stretch stretch(parts.tiles[t], part == 0 ? 0 : 50, part == 0 ? 50 : 9999,
                              marksHeaders);
        const size_t half = stretch.headers.size() / 2;
        Bytes segments = packedSegment(0xFF61, 1, stretch.headers, half, SIZE_MAX);
        append(segments, packedSegment(0xFF61, 0, stretch.headers, 0, half));
        append(file, tilePartOf(static_cast<int>(t), part, segments, stretch.bodies));
      }
    }
    expectPicture(file);
  }
}

// Those of a tile-part begin in one segment and end in the next.
TEST(J2kRepacked, HeadersMayBePackedInTheMainHeader) {
  const CodestreamParts parts = partsOf(kMarked);
  Bytes packed;
  Bytes tiles;
  for (int part = 0; part < 2; ++part) {
    for (size_t t = 0; t < parts.tiles.size(); ++t) {
      const Stretch stretch(parts.tiles[t], part == 0 ? 0 : 50, part == 0 ? 50 : 9999);
      appendDoubleWord(packed, static_cast<uint32_t>(stretch.headers.size()));
      append(packed, stretch.headers);
      append(tiles, tilePartOf(static_cast<int>(t), part, {}, stretch.bodies));
    }
  }
  Bytes file = parts.mainHeader;
  for (size_t i = 0; i * 97 < packed.size(); ++i) {
    append(file, packedSegment(0xFF60, i, packed, i * 97, i * 97 + 97));
  }
  append(file, tiles);
  expectPicture(file);
}

// Packets in the order of other progressions, which volumes with layers divide between them.
Bytes changesOf(const std::vector<orbhost::j2k::ProgressionChange>& changes) {
  Bytes contents;
  for (const orbhost::j2k::ProgressionChange& change : changes) {
    contents.push_back(static_cast<uint8_t>(change.firstResolution));
    contents.push_back(static_cast<uint8_t>(change.firstComponent));
    appendWord(contents, static_cast<uint32_t>(change.endLayer));
    contents.push_back(static_cast<uint8_t>(change.endResolution));
    contents.push_back(static_cast<uint8_t>(change.endComponent));
    contents.push_back(static_cast<uint8_t>(change.progression));
  }
  return segmentOf(0xFF5F, contents);
}

TEST(J2kRepacked, ProgressionsChangeByLayersComponentsAndResolutions) {
  using orbhost::j2k::Progression;
  const std::vector<orbhost::j2k::ProgressionChange> changes = {
      {0, 0, 1, 33, 3, Progression::kRpcl}, {0, 0, 3, 1, 1, Progression::kCprl},
      {0, 1, 2, 33, 2, Progression::kPcrl}, {1, 0, 3, 33, 0, Progression::kRlcp},
      {0, 0, 3, 33, 0, Progression::kLrcp},
  };
  const Bytes coded = opjCompress(picture(), std::string(kMarked) + "-p LRCP");
  const CodestreamParts parts = takeApart(coded);
  orbhost::j2k::Damage damage;
  const orbhost::j2k::Codestream codestream(coded, 0, coded.size(), damage);
  Bytes tiles;
  std::vector<Bytes> reordered;
  for (uint32_t t = 0; t < codestream.tileCount(); ++t) {
    orbhost::j2k::TileCoding coding = codestream.codingOf(t);
    const orbhost::j2k::Tile tile(codestream.size(), t, coding);
    std::map<std::tuple<size_t, int>, size_t> places;
    orbhost::j2k::Packet packet;
    orbhost::j2k::PacketSequence before(codestream.size(), tile, coding);
    while (before.next(packet)) {
      const size_t place = places.size();
      places[{packet.precinctOfTile, packet.layer}] = place;
    }
    ASSERT_EQ(places.size(), parts.tiles[t].packets.size());
    coding.changes = changes;
    for (orbhost::j2k::ProgressionChange& change : coding.changes) {
      if (change.endComponent == 0) change.endComponent = 256;
    }
    orbhost::j2k::PacketSequence after(codestream.size(), tile, coding);
    TileParts moved;
    while (after.next(packet)) {
      moved.packets.push_back(
          parts.tiles[t].packets[places.at({packet.precinctOfTile, packet.layer})]);
    }
    ASSERT_EQ(places.size(), moved.packets.size());
    reordered.push_back(Stretch(moved, 0, 9999).both);
  }

  Bytes inMainHeader = parts.mainHeader;
  append(inMainHeader, changesOf(changes));
  Bytes inTileHeaders = parts.mainHeader;
  append(inTileHeaders, changesOf({{0, 0, 3, 33, 3, Progression::kCprl}}));  // not in force
  for (size_t t = 0; t < reordered.size(); ++t) {
    const int tile = static_cast<int>(t);
    append(inMainHeader, tilePartOf(tile, 0, {}, reordered[t]));
    // The list goes on in the header of the second part.
    const std::vector<orbhost::j2k::ProgressionChange> first(changes.begin(), changes.begin() + 2);
    const std::vector<orbhost::j2k::ProgressionChange> rest(changes.begin() + 2, changes.end());
    append(inTileHeaders, tilePartOf(tile, 0, changesOf(first), reordered[t]));
    append(inTileHeaders, tilePartOf(tile, 1, changesOf(rest), {}));
  }
  expectPicture(inMainHeader);
  expectPicture(inTileHeaders);
}

}  // namespace
