// What the boxes of a JP2 file say of its channels (T.800 annex I). Files are made here from
// components that opj_compress codes, and boxes that are written out.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "hosts/j2k/decode.h"
#include "hosts/j2k/picture.h"
#include "tests/hosts/support/codestream_parts.h"
#include "tests/hosts/support/j2k_judge.h"
#include "tests/hosts/support/pictures.h"

namespace {

using namespace orbtest;
using orbhost::Bytes;
using orbhost::Image;
using orbhost::j2k::Decoded;
using orbhost::j2k::decodeJ2k;

Bytes bytesOf(const std::string& text) {
  return Bytes(text.begin(), text.end());
}

Bytes box(const std::string& type, const Bytes& contents) {
  Bytes bytes;
  appendDoubleWord(bytes, static_cast<uint32_t>(contents.size() + 8));
  append(bytes, bytesOf(type));
  append(bytes, contents);
  return bytes;
}

// One whose length has 64 bits.
Bytes longBox(const std::string& type, const Bytes& contents) {
  Bytes bytes;
  appendDoubleWord(bytes, 1);
  append(bytes, bytesOf(type));
  appendDoubleWord(bytes, 0);
  appendDoubleWord(bytes, static_cast<uint32_t>(contents.size() + 16));
  append(bytes, contents);
  return bytes;
}

Bytes words(const std::vector<uint32_t>& values) {
  Bytes bytes;
  for (const uint32_t value : values) appendWord(bytes, value);
  return bytes;
}

Bytes colourBox(uint32_t space) {
  Bytes contents;
  contents.push_back(1);  // enumerated
  appendWord(contents, 0);
  appendDoubleWord(contents, space);
  return box("colr", contents);
}

Bytes fileOf(const std::vector<Bytes>& header, const Bytes& codestreamBox) {
  Bytes file = box("jP  ", {13, 10, 0x87, 10});
  append(file, box("ftyp", bytesOf("jp2 ....jp2 ")));
  Bytes all;
  for (const Bytes& one : header) append(all, one);
  append(file, box("jp2h", all));
  append(file, codestreamBox);
  return file;
}

// Components of one size: their samples one behind the other.
Bytes codestreamOf(const std::vector<Bytes>& components, int width, int height) {
  Bytes samples;
  std::string sampling;
  for (const Bytes& component : components) {
    append(samples, component);
    sampling += sampling.empty() ? "1x1" : ":1x1";
  }
  return opjCompressRaw(samples,
                        std::to_string(width) + "," + std::to_string(height) + "," +
                            std::to_string(components.size()) + ",8,u@" + sampling,
                        "-mct 0 -n 1");
}

Decoded decodeWell(const Bytes& file) {
  Decoded decoded = decodeJ2k(file, {});
  EXPECT_EQ(decoded.damage.count(), 0u) << decoded.damage.first();
  return decoded;
}

void expectPixels(const Image& image, int channels, const std::vector<int>& expected) {
  ASSERT_EQ(image.channels(), channels);
  ASSERT_EQ(image.size(), expected.size());
  for (size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(image.row(0)[i], expected[i]) << i;
}

const Bytes kA = {1, 2, 3, 0};
const Bytes kB = {40, 50, 60, 70};
const Bytes kC = {100, 110, 120, 130};
const Bytes kD = {200, 210, 220, 230};

TEST(J2kBoxes, EnumeratedColoursSayHowManyThereAre) {
  const Bytes codestream = box("jp2c", codestreamOf({kA, kB, kC, kD}, 2, 2));
  const std::vector<int> rgb = {1, 40, 100, 2, 50, 110, 3, 60, 120, 0, 70, 130};
  expectPixels(colourPicture(decodeWell(fileOf({colourBox(16)}, codestream))), 3, rgb);
  expectPixels(colourPicture(decodeWell(fileOf({colourBox(17)}, codestream))), 1, {1, 2, 3, 0});
  expectPixels(colourPicture(decodeWell(fileOf({colourBox(12)}, codestream))), 4,
               {1, 40, 100, 200, 2, 50, 110, 210, 3, 60, 120, 220, 0, 70, 130, 230});
  // Without the box, or with a profile, the number of channels says it.
  expectPixels(colourPicture(decodeWell(fileOf({}, codestream))), 3, rgb);
  expectPixels(colourPicture(decodeWell(fileOf({box("colr", {2, 0, 0, 9, 9})}, codestream))), 3,
               rgb);
}

// T.800 I.5.3.3 and IEC 61966-2-1 amendment 1: R = Y + 1.402 Cr and so on, chroma around 128.
TEST(J2kBoxes, LumaAndChromaBecomeRgb) {
  const Bytes y = {100, 100, 100, 0};
  const Bytes cb = {128, 228, 128, 0};
  const Bytes cr = {128, 128, 28, 0};
  const Bytes codestream = box("jp2c", codestreamOf({y, cb, cr}, 2, 2));
  expectPixels(colourPicture(decodeWell(fileOf({colourBox(18)}, codestream))), 3,
               {100, 100, 100, 100, 66, 255, 0, 171, 100, 0, 135, 0});
}

// Association 1 is red, 2 green, 3 blue; type 1 is opacity.
TEST(J2kBoxes, DefinitionsPutChannelsInOrder) {
  const Bytes codestream = box("jp2c", codestreamOf({kA, kB, kC, kD}, 2, 2));
  const Bytes definitions =
      box("cdef", words({4, 0, 1, 0, 1, 0, 3, 2, 0, 2, 3, 0, 1}));  // opacity, B, G, R
  const Decoded decoded = decodeWell(fileOf({colourBox(16), definitions}, codestream));
  expectPixels(colourPicture(decoded), 3, {200, 100, 40, 210, 110, 50, 220, 120, 60, 230, 130, 70});
  const auto [channels, tupleType] = allChannels(decoded);
  EXPECT_STREQ(tupleType, "RGB_ALPHA");
  expectPixels(channels, 4, {200, 100, 40, 1, 210, 110, 50, 2, 220, 120, 60, 3, 230, 130, 70, 0});
}

TEST(J2kBoxes, GreyMayHaveOpacity) {
  const Bytes codestream = box("jp2c", codestreamOf({kA, kB}, 2, 2));
  const Bytes definitions = box("cdef", words({2, 0, 0, 1, 1, 2, 0}));
  const Decoded decoded = decodeWell(fileOf({colourBox(17), definitions}, codestream));
  expectPixels(colourPicture(decoded), 1, {1, 2, 3, 0});
  EXPECT_STREQ(allChannels(decoded).tupleType, "GRAYSCALE_ALPHA");
}

// Three columns of a palette for one component; an index beyond the palette is its last entry.
TEST(J2kBoxes, PalettesAreLookedUp) {
  const Bytes codestream = box("jp2c", codestreamOf({kA}, 2, 2));
  const Bytes palette = box("pclr", {0, 3, 3, 7, 7, 7, 10, 20, 30, 11, 21, 31, 12, 22, 32});
  const Bytes mapping = box("cmap", {0, 0, 1, 2, 0, 0, 1, 1, 0, 0, 1, 0});  // last column first
  expectPixels(colourPicture(decodeWell(fileOf({palette, mapping, colourBox(16)}, codestream))), 3,
               {31, 21, 11, 32, 22, 12, 32, 22, 12, 30, 20, 10});
}

TEST(J2kBoxes, BoxesMayHaveLongLengthsOrNone) {
  const Bytes codestream = codestreamOf({kA}, 2, 2);
  const std::vector<int> expected = {1, 2, 3, 0};
  expectPixels(colourPicture(decodeWell(fileOf({longBox("free", Bytes(5)), colourBox(17)},
                                               longBox("jp2c", codestream)))),
               1, expected);
  Bytes last = box("jp2c", codestream);
  last[0] = last[1] = last[2] = last[3] = 0;  // up to the end of the file
  expectPixels(colourPicture(decodeWell(fileOf({colourBox(17)}, last))), 1, expected);
}

TEST(J2kBoxes, ChannelsOfOtherPrecisionsAreScaled) {
  const Bytes codestream = box("jp2c", codestreamOf({kA}, 2, 2));
  // Columns of 4 bits, of 8, and of 8 with a sign.
  const Bytes palette = box("pclr", {0, 2, 3, 3, 7, 0x87, 15, 15, 0x80, 5, 5, 0x7F});
  const Bytes mapping = box("cmap", {0, 0, 1, 0, 0, 0, 1, 1, 0, 0, 1, 2});
  expectPixels(colourPicture(decodeWell(fileOf({palette, mapping, colourBox(16)}, codestream))), 3,
               {85, 5, 255, 85, 5, 255, 85, 5, 255, 255, 15, 0});
}

TEST(J2kBoxes, DamagedBoxesLeaveThePicture) {
  const Bytes codestream = box("jp2c", codestreamOf({kA}, 2, 2));
  Bytes cut = box("pclr", {0, 3});
  const Decoded decoded = decodeJ2k(fileOf({cut, colourBox(17)}, codestream), {});
  EXPECT_EQ(decoded.damage.count(), 1u);
  expectPixels(colourPicture(decoded), 1, {1, 2, 3, 0});
  EXPECT_THROW(decodeJ2k(fileOf({colourBox(17)}, {}), {}), orbhost::Error);
}

}  // namespace
