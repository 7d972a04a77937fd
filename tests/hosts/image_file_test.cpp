// PNG and the any-maps, in and out. Of PNG the judge is libpng's own simplified interface.
#include "hosts/image_file.h"

#include <gtest/gtest.h>
#include <png.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/hosts/support/pictures.h"

namespace {

using orbhost::Bytes;
using orbhost::Error;
using orbhost::formatImage;
using orbhost::Image;
using orbhost::ImageFormat;
using orbhost::imageFormatOf;
using orbhost::parseImage;
using orbtest::difference;
using orbtest::draw;
using orbtest::Motif;

Bytes bytesOf(const std::string& text) {
  return Bytes(text.begin(), text.end());
}

std::vector<int> samplesOf(const Image& image) {
  return std::vector<int>(image.row(0), image.row(0) + image.size());
}

void expectEqual(const Image& a, const Image& b) {
  EXPECT_EQ(difference(a, b).largest, 0);
}

TEST(ImageFile, PngIsReadByTheJudge) {
  for (const int channels : {1, 3}) {
    const Image image = draw(Motif::kScene, 53, 31, channels);
    const Bytes file = formatImage(image, ImageFormat::kPng);
    png_image reader{};
    reader.version = PNG_IMAGE_VERSION;
    ASSERT_NE(png_image_begin_read_from_memory(&reader, file.data(), file.size()), 0);
    ASSERT_EQ(reader.width, 53u);
    ASSERT_EQ(reader.height, 31u);
    EXPECT_EQ(reader.format, channels == 1 ? PNG_FORMAT_GRAY : PNG_FORMAT_RGB);
    Image read(53, 31, channels);
    ASSERT_NE(png_image_finish_read(&reader, nullptr, read.row(0), 0, nullptr), 0);
    expectEqual(read, image);
    expectEqual(parseImage(file), image);
  }
}

// A PNG of any kind, written by libpng from rows as they are stored.
Bytes writePng(int width, int height, int depth, int colourType, bool interlaced,
               const std::vector<uint8_t>& samples, size_t rowBytes) {
  Bytes file;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_set_write_fn(
      png, &file,
      [](png_structp one, png_bytep from, size_t count) {
        auto* to = static_cast<Bytes*>(png_get_io_ptr(one));
        to->insert(to->end(), from, from + count);
      },
      nullptr);
  png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), depth,
               colourType, interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  const png_color palette[4] = {{1, 2, 3}, {40, 50, 60}, {70, 80, 90}, {255, 0, 128}};
  if (colourType == PNG_COLOR_TYPE_PALETTE) png_set_PLTE(png, info, palette, 4);
  png_write_info(png, info);
  std::vector<png_bytep> rows;
  for (int y = 0; y < height; ++y) {
    rows.push_back(const_cast<png_bytep>(samples.data() + static_cast<size_t>(y) * rowBytes));
  }
  png_write_image(png, rows.data());
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  return file;
}

TEST(ImageFile, PngOfOtherKindsBecomes8Bits) {
  const auto parsed = [](int width, int depth, int type, const std::vector<uint8_t>& row) {
    return samplesOf(parseImage(writePng(width, 1, depth, type, false, row, row.size())));
  };
  EXPECT_EQ(parsed(8, 1, PNG_COLOR_TYPE_GRAY, {0xA5}),
            (std::vector<int>{255, 0, 255, 0, 0, 255, 0, 255}));
  EXPECT_EQ(parsed(2, 4, PNG_COLOR_TYPE_GRAY, {0x1F}), (std::vector<int>{17, 255}));
  EXPECT_EQ(parsed(2, 2, PNG_COLOR_TYPE_PALETTE, {0xD0}),
            (std::vector<int>{255, 0, 128, 40, 50, 60}));
  EXPECT_EQ(parsed(1, 8, PNG_COLOR_TYPE_RGB_ALPHA, {9, 8, 7, 100}), (std::vector<int>{9, 8, 7}));
  EXPECT_EQ(parsed(2, 8, PNG_COLOR_TYPE_GRAY_ALPHA, {9, 0, 7, 100}), (std::vector<int>{9, 7}));
  // 65535 is 257 times 255.
  EXPECT_EQ(parsed(3, 16, PNG_COLOR_TYPE_GRAY, {0xFF, 0xFF, 0x80, 0x80, 0x00, 0x00}),
            (std::vector<int>{255, 128, 0}));

  const Image image = draw(Motif::kEdges, 13, 11, 3);
  const std::vector<uint8_t> samples(image.row(0), image.row(0) + image.size());
  expectEqual(parseImage(writePng(13, 11, 8, PNG_COLOR_TYPE_RGB, true, samples, image.rowBytes())),
              image);
}

TEST(ImageFile, AnyMaps) {
  const Image grey =
      parseImage(bytesOf("P2\n# a comment\n3 2 # another\n255\n0 1 2\n 253 254 255"));
  EXPECT_EQ(grey.width(), 3);
  EXPECT_EQ(grey.height(), 2);
  EXPECT_EQ(grey.channels(), 1);
  EXPECT_EQ(samplesOf(grey), (std::vector<int>{0, 1, 2, 253, 254, 255}));
  EXPECT_EQ(samplesOf(parseImage(bytesOf("P3 1 1 255 10 20 30\n"))),
            (std::vector<int>{10, 20, 30}));
  EXPECT_EQ(samplesOf(parseImage(bytesOf("P5 2 1 255\nab"))), (std::vector<int>{'a', 'b'}));
  EXPECT_EQ(samplesOf(parseImage(bytesOf("P6\n1 1\n255\n\n a"))),
            (std::vector<int>{'\n', ' ', 'a'}));
  // Other maxima are scaled to 255, to nearest; above 255 a sample has two bytes, high one first.
  EXPECT_EQ(samplesOf(parseImage(bytesOf("P2 4 1 3 0 1 2 3"))),
            (std::vector<int>{0, 85, 170, 255}));
  EXPECT_EQ(samplesOf(parseImage(Bytes{'P', '5', ' ', '2', ' ', '1', ' ', '1', '0', '2', '3', '\n',
                                       0x03, 0xFF, 0x02, 0x00})),
            (std::vector<int>{255, 128}));

  const Image colour = draw(Motif::kScene, 5, 4, 3);
  expectEqual(parseImage(formatImage(colour, ImageFormat::kPpm)), colour);
  expectEqual(parseImage(formatImage(colour, ImageFormat::kPnm)), colour);
  EXPECT_EQ(formatImage(grey, ImageFormat::kPgm), formatImage(grey, ImageFormat::kPnm));
  Bytes expected = bytesOf("P5\n3 2\n255\n");
  for (const int sample : {0, 1, 2, 253, 254, 255})
    expected.push_back(static_cast<uint8_t>(sample));
  EXPECT_EQ(formatImage(grey, ImageFormat::kPgm), expected);
  expected = bytesOf("P6\n1 2\n255\n");
  for (const int sample : {7, 7, 7, 9, 9, 9}) expected.push_back(static_cast<uint8_t>(sample));
  EXPECT_EQ(formatImage(parseImage(bytesOf("P2 1 2 255 7 9")), ImageFormat::kPpm), expected);
}

TEST(ImageFile, BadFilesAreRefused) {
  const auto refuses = [](const Bytes& file, const std::string& why) {
    try {
      parseImage(file);
      ADD_FAILURE() << "taken, and not: " << why;
    } catch (const Error& error) {
      EXPECT_NE(std::string(error.what()).find(why), std::string::npos) << error.what();
    }
  };
  refuses({}, "empty");
  refuses(bytesOf("GIF89a"), "neither");
  refuses(bytesOf("P7\n"), "neither");
  refuses(bytesOf("P5"), "neither");
  refuses(bytesOf("P5 "), "the width");
  refuses(bytesOf("P5 x"), "no number for the width");
  refuses(bytesOf("P5 0 1 255\n"), "without pixels");
  refuses(bytesOf("P5 1 1 0\na"), "maximum");
  refuses(bytesOf("P5 1 1 65536\naa"), "maximum");
  refuses(bytesOf("P5 99999999999 1 255\na"), "out of range");
  refuses(bytesOf("P5 2 2 255\nabc"), "ends before");
  refuses(bytesOf("P6 2147483647 2147483647 255\nabc"), "ends before");
  refuses(bytesOf("P2 2 1 255\n1"), "ends before");
  refuses(bytesOf("P2 2 1 255\n1 256"), "above the maximum");
  refuses(bytesOf("P2 2 1 255\n1 z"), "no number for a sample");

  const Bytes png = formatImage(draw(Motif::kScene, 20, 20, 3), ImageFormat::kPng);
  for (size_t size = 8; size < png.size(); size += 7) {
    refuses(Bytes(png.begin(), png.begin() + static_cast<long>(size)), "PNG:");
  }
  // A header that claims what 1032 times the file could not hold.
  Bytes huge = png;
  std::memcpy(&huge[16], "\x00\x01\xff\xff\x00\x01\xff\xff", 8);
  refuses(huge, "PNG:");
  EXPECT_THROW(formatImage(draw(Motif::kScene, 2, 2, 3), ImageFormat::kPgm), Error);
}

TEST(ImageFile, TheExtensionSaysWhatIsWritten) {
  EXPECT_EQ(imageFormatOf("a/b.png"), ImageFormat::kPng);
  EXPECT_EQ(imageFormatOf("B.PPM"), ImageFormat::kPpm);
  EXPECT_EQ(imageFormatOf("c.x.pgm"), ImageFormat::kPgm);
  EXPECT_EQ(imageFormatOf("d.pnm"), ImageFormat::kPnm);
  EXPECT_THROW(imageFormatOf("e.jpg"), Error);
  EXPECT_THROW(imageFormatOf("png"), Error);
}

}  // namespace
