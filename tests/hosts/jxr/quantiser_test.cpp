// Quantisers that a tile's header gives and a macroblock chooses from. No encoder at hand writes
// them: they are put into a file that has them in its plane's header, and change nothing of the
// picture.
#include "hosts/jxr/quantiser.h"

#include <gtest/gtest.h>

#include <vector>

#include "hosts/jxr/container.h"
#include "hosts/jxr/decode.h"
#include "hosts/jxr/encode.h"
#include "tests/hosts/support/jxr_judges.h"
#include "tests/hosts/support/pictures.h"

namespace {

using orbhost::Bytes;
using orbhost::ByteView;
using orbhost::Image;
using orbhost::jxr::BitReader;
using orbhost::jxr::BitWriter;
using orbhost::jxr::decodeJxr;
using orbhost::jxr::encodeJxr;
using orbtest::difference;
using orbtest::draw;
using orbtest::Motif;

constexpr int kIndex = 40;

// A table of a band, and the number in it of the macroblock's quantiser; or that of the band
// before.
struct Table {
  bool usesPrevious;
  std::vector<int> indexes;
  int number;
  int numberBits;
};

// From a file of one grey macroblock.
Bytes withTables(const Bytes& file, const Image& image, const Table& lowPass,
                 const Table& highPass) {
  const ByteView old = orbhost::jxr::findCodestream(file);
  Bytes padded(old.data, old.data + old.size);
  padded.resize(padded.size() + orbhost::jxr::kBlockBytes);
  BitReader from(padded.data(), padded.data() + old.size);
  BitWriter to;
  const auto copy = [&](int bytes) {
    for (; bytes > 0; --bytes) to.put(from.take(8), 8);
  };
  copy(16 + 1);  // the picture's header, and what a plane's begins with
  // A quantiser of 8 bits for each band, with 1, 2 and 2 flags in front.
  from.take(9 + 10 + 10);
  from.alignToByte();
  to.put(0, 5);
  to.alignToByte();
  copy(6 + 4);  // the profile, and the packet's header
  to.put(kIndex, 8);
  for (const Table& table : {lowPass, highPass}) {
    to.put(table.usesPrevious, 1);
    if (table.usesPrevious) continue;
    to.put(static_cast<uint32_t>(table.indexes.size() - 1), 4);
    for (const int index : table.indexes) to.put(static_cast<uint32_t>(index), 8);
  }
  for (const Table& table : {lowPass, highPass}) {
    if (table.numberBits == 0) continue;
    to.put(table.number != 0, 1);
    if (table.number != 0) to.put(static_cast<uint32_t>(table.number - 1), table.numberBits);
  }
  for (size_t rest = old.size - (16 + 5 + 6 + 4); rest > 0; --rest) to.put(from.take(8), 8);
  return orbhost::jxr::makeFile(image.width(), image.height(), 1, 8, to.finish());
}

TEST(JxrQuantiser, TablesOfTiles) {
  const Image image = draw(Motif::kScene, 16, 16, 1);
  orbhost::jxr::EncodeOptions options;
  options.quantiser = kIndex;
  const Bytes file = encodeJxr(image, options);
  const Image expected = decodeJxr(file);
  EXPECT_GT(difference(expected, image).largest, 0);

  const Table previous = {true, {}, 0, 0};
  const Table tables[] = {
      {false, {kIndex}, 0, 0},
      {false, {kIndex, 3}, 0, 1},
      {false, {3, kIndex}, 1, 1},
      {false, {3, 90, kIndex}, 2, 1},
      {false, {3, 90, 250, 0, kIndex}, 4, 2},
      {false, {3, 90, 250, 0, 7, 8, kIndex, 10, 11}, 6, 3},
      {false, {3, 90, 250, 0, 7, 8, 9, 10, 11, kIndex}, 9, 4},
      {false, {3, 90, 250, 0, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, kIndex}, 15, 4},
      previous,
  };
  for (const Table& lowPass : tables) {
    for (const Table& highPass : tables) {
      SCOPED_TRACE(testing::Message() << lowPass.indexes.size() << ' ' << highPass.indexes.size());
      const Bytes changed = withTables(file, image, lowPass, highPass);
      EXPECT_EQ(difference(decodeJxr(changed), expected).largest, 0);
      // The judge takes no flags in both bands.
      if (lowPass.usesPrevious || highPass.usesPrevious) continue;
      EXPECT_EQ(difference(orbtest::jxrDecApp(changed, image), expected).largest, 0);
    }
  }
}

// At the edges of the cases of T.832.
TEST(JxrQuantiser, StepsByIndex) {
  using orbhost::jxr::kDc;
  using orbhost::jxr::kHighPass;
  using orbhost::jxr::kLowPass;
  using orbhost::jxr::stepOf;
  for (const bool scaled : {false, true}) {
    EXPECT_EQ(stepOf(0, kDc, 0, scaled), 1);
    EXPECT_EQ(stepOf(0, kHighPass, 1, scaled), 1);
  }
  // With three more bits: luma, and high-pass coefficients, have twice the step.
  EXPECT_EQ(stepOf(1, kDc, 0, true), 2);
  EXPECT_EQ(stepOf(15, kLowPass, 0, true), 30);
  EXPECT_EQ(stepOf(16, kDc, 0, true), 32);
  EXPECT_EQ(stepOf(47, kDc, 0, true), 31 * 4);
  EXPECT_EQ(stepOf(255, kDc, 0, true), 31 << 15);
  EXPECT_EQ(stepOf(1, kDc, 1, true), 1);
  EXPECT_EQ(stepOf(16, kLowPass, 2, true), 16);
  EXPECT_EQ(stepOf(255, kLowPass, 1, true), 31 << 14);
  EXPECT_EQ(stepOf(255, kHighPass, 1, true), 31 << 15);
  for (const int channel : {0, 1}) {
    EXPECT_EQ(stepOf(1, kDc, channel, false), 1);
    EXPECT_EQ(stepOf(2, kDc, channel, false), 1);
    EXPECT_EQ(stepOf(31, kDc, channel, false), 8);
    EXPECT_EQ(stepOf(32, kLowPass, channel, false), 8);
    EXPECT_EQ(stepOf(47, kLowPass, channel, false), 16);
    EXPECT_EQ(stepOf(48, kHighPass, channel, false), 16);
    EXPECT_EQ(stepOf(255, kHighPass, channel, false), 31 << 12);
  }
}

}  // namespace
