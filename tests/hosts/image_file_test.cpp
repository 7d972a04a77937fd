// PNG and the any-maps, in and out. Of PNG the judge is libpng's own simplified interface.
#include "hosts/image_file.h"

#include <gtest/gtest.h>
#include <png.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "hosts/image_convert.h"
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
  std::vector<int> samples;
  for (int y = 0; y < image.height(); ++y) {
    image.withRow(
        y, [&](const auto* row) { samples.insert(samples.end(), row, row + image.rowSamples()); });
  }
  return samples;
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

TEST(ImageFile, PngOfOtherKinds) {
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
  EXPECT_EQ(parsed(3, 16, PNG_COLOR_TYPE_GRAY, {0xFF, 0xFF, 0x80, 0x7F, 0x00, 0x01}),
            (std::vector<int>{65535, 0x807F, 1}));
  EXPECT_EQ(parsed(1, 16, PNG_COLOR_TYPE_RGB_ALPHA, {1, 2, 3, 4, 5, 6, 7, 8}),
            (std::vector<int>{0x102, 0x304, 0x506}));

  const Image image = draw(Motif::kEdges, 13, 11, 3);
  const std::vector<uint8_t> samples(image.row(0), image.row(0) + image.size());
  expectEqual(parseImage(writePng(13, 11, 8, PNG_COLOR_TYPE_RGB, true, samples, image.rowBytes())),
              image);
}

// What libpng finds in a file.
struct PngContent {
  int depth;
  int significantBits;  // 0 if the file does not say
  std::vector<int> samples;
};

PngContent readPng(const Bytes& file) {
  struct Source {
    const Bytes& file;
    size_t at;
  } source = {file, 0};
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_set_read_fn(png, &source, [](png_structp one, png_bytep to, size_t count) {
    auto* from = static_cast<Source*>(png_get_io_ptr(one));
    std::memcpy(to, from->file.data() + from->at, count);
    from->at += count;
  });
  png_read_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
  PngContent content = {png_get_bit_depth(png, info), 0, {}};
  png_color_8p bits = nullptr;
  if (png_get_sBIT(png, info, &bits) != 0) {
    content.significantBits = png_get_channels(png, info) == 1 ? bits->gray : bits->green;
  }
  const size_t rowBytes = png_get_rowbytes(png, info);
  for (png_uint_32 y = 0; y < png_get_image_height(png, info); ++y) {
    const png_bytep row = png_get_rows(png, info)[y];
    for (size_t i = 0; i < rowBytes; i += content.depth == 16 ? 2 : 1) {
      content.samples.push_back(content.depth == 16 ? row[i] << 8 | row[i + 1] : row[i]);
    }
  }
  png_destroy_read_struct(&png, &info, nullptr);
  return content;
}

TEST(ImageFile, PngKeepsEveryMaximum) {
  for (const int channels : {1, 3}) {
    for (const int bits : {2, 4, 7, 8, 9, 10, 12, 15, 16}) {
      SCOPED_TRACE(std::to_string(bits) + " bits");
      const int maximum = (1 << bits) - 1;
      const Image image = draw(Motif::kNoise, 40, 30, channels, maximum);
      const Bytes file = formatImage(image, ImageFormat::kPng);
      const PngContent content = readPng(file);
      EXPECT_EQ(content.depth, bits > 8 ? 16 : 8);
      EXPECT_EQ(content.significantBits, bits == 8 || bits == 16 ? 0 : bits);
      const double factor = (bits > 8 ? 65535.0 : 255.0) / maximum;
      const std::vector<int> samples = samplesOf(image);
      ASSERT_EQ(content.samples.size(), samples.size());
      for (size_t i = 0; i < samples.size(); ++i) {
        ASSERT_EQ(content.samples[i], std::lround(samples[i] * factor));
      }
      expectEqual(parseImage(file), image);
    }
  }
  // A maximum that is no number of bits comes back in all that the file has.
  const Image odd = parseImage(bytesOf("P2 4 1 1000 0 1 999 1000"));
  EXPECT_EQ(samplesOf(parseImage(formatImage(odd, ImageFormat::kPng))),
            (std::vector<int>{0, 66, 65469, 65535}));
}

// Significant bits that a file claims, and samples that hold more.
TEST(ImageFile, PngThatHoldsMoreThanItSays) {
  Bytes file = formatImage(parseImage(bytesOf("P2 2 1 15 0 15")), ImageFormat::kPng);
  EXPECT_EQ(parseImage(file).maximum(), 15);
  const Image whole = parseImage(bytesOf("P2 2 1 255 17 18"));
  const Bytes other = formatImage(whole, ImageFormat::kPng);
  // The other file's samples behind this one's claim.
  const auto dataOf = [](Bytes& bytes) {
    const uint8_t name[] = {'I', 'D', 'A', 'T'};
    return std::search(bytes.begin(), bytes.end(), name, name + 4) - 4;
  };
  Bytes samples = other;
  file.erase(dataOf(file), file.end());
  file.insert(file.end(), dataOf(samples), samples.end());
  EXPECT_EQ(samplesOf(parseImage(file)), (std::vector<int>{17, 18}));
  EXPECT_EQ(parseImage(file).maximum(), 255);
}

TEST(ImageFile, Pam) {
  const Image inks = draw(Motif::kScene, 5, 4, 4);
  const Bytes file = formatImage(inks, ImageFormat::kPam);
  Bytes expected = bytesOf("P7\nWIDTH 5\nHEIGHT 4\nDEPTH 4\nMAXVAL 255\nTUPLTYPE CMYK\nENDHDR\n");
  for (const int sample : samplesOf(inks)) expected.push_back(static_cast<uint8_t>(sample));
  EXPECT_EQ(file, expected);
  expectEqual(parseImage(file), inks);
  for (const int channels : {1, 3, 4}) {
    const Image image = draw(Motif::kNoise, 7, 3, channels, 4095);
    expectEqual(parseImage(formatImage(image, ImageFormat::kPam)), image);
  }
  const Image wide =
      parseImage(bytesOf("P7 WIDTH 1 HEIGHT 1 DEPTH 4 MAXVAL 255\n# of four samples, "
                         "three\nTUPLTYPE RGB_ALPHA ENDHDR\nabcd"));
  EXPECT_EQ(samplesOf(wide), (std::vector<int>{'a', 'b', 'c'}));
  EXPECT_EQ(samplesOf(parseImage(bytesOf("P7\nWIDTH 2\nHEIGHT 1\nDEPTH 1\nMAXVAL 1000\nENDHDR\n"
                                         "\x01\x02\x03\x04"))),
            (std::vector<int>{0x102, 0x304}));
}

// The light that inks leave: none of a channel's ink and none of black is all of it.
TEST(ImageFile, InksBecomeLightWhereTheFormatHasNone) {
  const Image inks =
      parseImage(bytesOf("P7\nWIDTH 2\nHEIGHT 1\nDEPTH 4\nMAXVAL 15\nTUPLTYPE CMYK\n"
                         "ENDHDR\n\x0F\x05\x01\x03\x01\x02\x03\x0F"));
  // 15 - ink, times 12 / 15 and 0 / 15.
  EXPECT_EQ(samplesOf(parseImage(formatImage(inks, ImageFormat::kPnm))),
            (std::vector<int>{0, 8, 11, 0, 0, 0}));
  EXPECT_EQ(parseImage(formatImage(inks, ImageFormat::kPng)).channels(), 3);
  EXPECT_THROW(formatImage(inks, ImageFormat::kPgm), Error);
}

TEST(ImageFile, OtherMaxima) {
  const auto rescaled = [](const std::string& file, int maximum) {
    return samplesOf(orbhost::withMaximum(parseImage(bytesOf(file)), maximum));
  };
  EXPECT_EQ(rescaled("P2 4 1 3 0 1 2 3", 255), (std::vector<int>{0, 85, 170, 255}));
  EXPECT_EQ(rescaled("P2 3 1 1023 1023 512 0", 255), (std::vector<int>{255, 128, 0}));
  // 65535 is 257 times 255.
  EXPECT_EQ(rescaled("P2 4 1 65535 65535 32896 128 129", 255), (std::vector<int>{255, 128, 0, 1}));
  EXPECT_EQ(rescaled("P2 3 1 255 0 1 255", 65535), (std::vector<int>{0, 257, 65535}));
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
  // Other maxima stay; above 255 a sample has two bytes, high one first.
  EXPECT_EQ(samplesOf(parseImage(bytesOf("P2 4 1 3 0 1 2 3"))), (std::vector<int>{0, 1, 2, 3}));
  EXPECT_EQ(parseImage(bytesOf("P2 4 1 3 0 1 2 3")).maximum(), 3);
  EXPECT_EQ(samplesOf(parseImage(Bytes{'P', '5', ' ', '2', ' ', '1', ' ', '1', '0', '2', '3', '\n',
                                       0x03, 0xFF, 0x02, 0x00})),
            (std::vector<int>{1023, 512}));

  for (const int maximum : {1, 100, 255, 256, 4095, 65535}) {
    const Image image = draw(Motif::kNoise, 9, 7, 3, maximum);
    expectEqual(parseImage(formatImage(image, ImageFormat::kPpm)), image);
  }
  EXPECT_EQ(formatImage(parseImage(bytesOf("P2 2 1 300 258 1")), ImageFormat::kPpm),
            bytesOf(std::string("P6\n2 1\n300\n\1\2\1\2\1\2\0\1\0\1\0\1", 23)));

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
  refuses(bytesOf("P8\n"), "neither");
  refuses(bytesOf("P7\n"), "before its header does");
  refuses(bytesOf("P7\nWIDTH 1\nDEEP 1\n"), "has no DEEP");
  refuses(bytesOf("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nENDHDR\nabcd"), "tuple type");
  refuses(bytesOf("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 3\nMAXVAL 255\nTUPLTYPE CMYK\nENDHDR\nabc"),
          "tuple type \"CMYK\" with 3 samples");
  refuses(bytesOf("P7\nDEPTH 1\nMAXVAL 255\nENDHDR\nabc"), "without pixels");
  refuses(bytesOf("P7\nWIDTH 1\nHEIGHT 2\nDEPTH 1\nMAXVAL 255\nENDHDR\na"), "ends before");
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
  EXPECT_EQ(imageFormatOf("d.pam"), ImageFormat::kPam);
  EXPECT_EQ(imageFormatOf("d.BMP"), ImageFormat::kBmp);
  EXPECT_THROW(imageFormatOf("e.jpg"), Error);
  EXPECT_THROW(imageFormatOf("png"), Error);
}

}  // namespace
