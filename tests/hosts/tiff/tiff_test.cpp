// orb tiff: what libtiff reads of our files, and we of its.
#include <gtest/gtest.h>
#include <tiffio.h>

#include <algorithm>
#include <string>
#include <vector>

#include "hosts/error.h"
#include "hosts/file.h"
#include "hosts/image_file.h"
#include "hosts/tiff/tiff_file.h"
#include "tests/hosts/support/pictures.h"
#include "tests/hosts/support/program.h"

namespace {

using orbhost::Bytes;
using orbhost::Error;
using orbhost::Image;
using orbhost::readFile;
using orbhost::writeFile;
using orbhost::tiff::formatTiff;
using orbhost::tiff::parseTiff;
using orbtest::Directory;
using orbtest::draw;
using orbtest::Motif;
using orbtest::run;
using orbtest::runOrb;

testing::AssertionResult areEqual(const Image& a, const Image& b) {
  if (a.width() != b.width() || a.height() != b.height() || a.channels() != b.channels() ||
      a.maximum() != b.maximum()) {
    return testing::AssertionFailure() << "other shapes";
  }
  if (!std::equal(a.row(0), a.row(0) + a.size(), b.row(0))) {
    return testing::AssertionFailure() << "other samples";
  }
  return testing::AssertionSuccess();
}

Image readByLibtiff(const Bytes& file) {
  const Directory directory;
  writeFile(directory / "in.tif", file);
  TIFF* const tiff = TIFFOpen((directory / "in.tif").c_str(), "r");
  if (!tiff) throw Error("libtiff does not open it");
  uint32_t width = 0, height = 0;
  uint16_t channels = 0, bits = 0, compression = 0;
  TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
  TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
  TIFFGetField(tiff, TIFFTAG_SAMPLESPERPIXEL, &channels);
  TIFFGetField(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
  TIFFGetField(tiff, TIFFTAG_COMPRESSION, &compression);
  EXPECT_EQ(compression, COMPRESSION_PACKBITS);
  Image image(static_cast<int>(width), static_cast<int>(height), channels,
              bits == 16 ? 65535 : 255);
  for (uint32_t y = 0; y < height; ++y) {
    EXPECT_EQ(TIFFReadScanline(tiff, image.row(static_cast<int>(y)), y), 1);
  }
  TIFFClose(tiff);
  return image;
}

struct Written {
  const char* mode = "w";  // with the order of bytes
  uint16_t compression = COMPRESSION_PACKBITS;
  uint16_t photometric = PHOTOMETRIC_MINISBLACK;
  uint32_t rowsPerStrip = 3;
};
Bytes writtenByLibtiff(const Image& image, const Written& how) {
  const Directory directory;
  const std::string path = directory / "out.tif";
  TIFF* const tiff = TIFFOpen(path.c_str(), how.mode);
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, image.width());
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, image.height());
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, image.channels());
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, image.isWide() ? 16 : 8);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC,
               image.channels() == 3 ? PHOTOMETRIC_RGB : static_cast<int>(how.photometric));
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, how.compression);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, how.rowsPerStrip);
  for (int y = 0; y < image.height(); ++y) {
    Bytes row(image.row(y), image.row(y) + image.rowBytes());  // libtiff may swap its bytes
    TIFFWriteScanline(tiff, row.data(), static_cast<uint32_t>(y));
  }
  TIFFClose(tiff);
  return readFile(path);
}

// Grey and RGB, of 8 and 16 bits, in one strip and in many.
std::vector<Image> pictures() {
  std::vector<Image> all;
  for (const Motif motif : {Motif::kGradient, Motif::kNoise, Motif::kEdges, Motif::kScene}) {
    for (const int channels : {1, 3}) {
      for (const int maximum : {255, 65535}) {
        all.push_back(draw(motif, 1, 1, channels, maximum));
        all.push_back(draw(motif, 33, 7, channels, maximum));
        all.push_back(draw(motif, 300, 70, channels, maximum));
      }
    }
  }
  all.push_back(draw(Motif::kNoise, 9000, 2, 3, 255));
  return all;
}

TEST(Tiff, LibtiffReadsWhatWeWrite) {
  for (const Image& image : pictures()) {
    const Bytes file = formatTiff(image);
    ASSERT_TRUE(areEqual(readByLibtiff(file), image));
    ASSERT_TRUE(areEqual(parseTiff(file), image));
  }
}

TEST(Tiff, WeReadWhatLibtiffWrites) {
  for (const Image& image : pictures()) {
    for (const Written& how : {Written{"wl"}, Written{"wb"}, Written{"wl", COMPRESSION_NONE},
                               Written{"wb", COMPRESSION_NONE, PHOTOMETRIC_MINISBLACK, 1000}}) {
      ASSERT_TRUE(areEqual(parseTiff(writtenByLibtiff(image, how)), image));
    }
  }
}

TEST(Tiff, WhiteMayBeZero) {
  for (const int maximum : {255, 65535}) {
    const Image image = draw(Motif::kScene, 20, 10, 1, maximum);
    const Image read =
        parseTiff(writtenByLibtiff(image, {"w", COMPRESSION_PACKBITS, PHOTOMETRIC_MINISWHITE}));
    for (int x = 0; x < image.width(); ++x) {
      if (image.isWide()) {
        EXPECT_EQ(read.wideRow(3)[x], maximum - image.wideRow(3)[x]);
      } else {
        EXPECT_EQ(read.row(3)[x], maximum - image.row(3)[x]);
      }
    }
  }
}

TEST(Tiff, OtherDepthsAreRescaled) {
  const Image image = draw(Motif::kGradient, 40, 5, 1, 1000);
  const Image read = parseTiff(formatTiff(image));
  EXPECT_EQ(read.maximum(), 65535);
  EXPECT_NEAR(read.wideRow(2)[7] / 65535.0, image.wideRow(2)[7] / 1000.0, 1e-5);
}

std::string refusalOf(const Bytes& file) {
  try {
    parseTiff(file);
  } catch (const Error& error) {
    return error.what();
  }
  return "";
}

TEST(Tiff, WhatIsNotReadIsRefused) {
  const Image grey = draw(Motif::kScene, 20, 10, 1);
  EXPECT_EQ(refusalOf({}), "this is no TIFF file");
  EXPECT_EQ(refusalOf({'I', 'I', 43, 0, 8, 0, 0, 0}), "this is no TIFF file");
  EXPECT_EQ(refusalOf(writtenByLibtiff(grey, {"w", COMPRESSION_LZW})),
            "compression 5 is not supported");
}

// Whatever is in a file: it is read, or refused by an Error.
TEST(Tiff, DamageDoesNoHarm) {
  for (const int maximum : {255, 65535}) {
    const Bytes file = formatTiff(draw(Motif::kEdges, 40, 12, 3, maximum));
    for (size_t size = 0; size < file.size(); ++size) {
      EXPECT_NE(refusalOf(Bytes(file.begin(), file.begin() + static_cast<ptrdiff_t>(size))), "");
    }
    for (size_t at = 0; at < file.size(); ++at) {
      for (const int flip : {1, 128, 255}) {
        Bytes damaged = file;
        damaged[at] ^= static_cast<uint8_t>(flip);
        refusalOf(damaged);
      }
    }
  }
}

TEST(Tiff, TheProgramAndTheTools) {
  const Directory directory;
  const Image image = draw(Motif::kScene, 200, 100, 3);
  writeFile(directory / "in.ppm", formatImage(image, orbhost::ImageFormat::kPpm));
  ASSERT_EQ(runOrb({"tiff", "pack", directory / "in.ppm", directory / "a.tif"}).status, 0);

  const orbtest::Outcome said = run({"tiffinfo", "-D", directory / "a.tif"});
  EXPECT_EQ(said.status, 0);
  for (const char* const line :
       {"Image Width: 200 Image Length: 100", "Compression Scheme: PackBits",
        "Photometric Interpretation: RGB color", "Bits/Sample: 8"}) {
    EXPECT_NE(said.output.find(line), std::string::npos) << said.output;
  }
  EXPECT_EQ(said.output.find("Warning"), std::string::npos) << said.output;

  // Through the tools' own coder, in the other order of bytes.
  ASSERT_EQ(
      run({"tiffcp", "-L", "-r", "7", "-c", "packbits", directory / "a.tif", directory / "b.tif"})
          .status,
      0);
  EXPECT_EQ(run({"tiffcmp", directory / "a.tif", directory / "b.tif"}).status, 0);
  ASSERT_EQ(runOrb({"tiff", "unpack", directory / "b.tif", directory / "b.ppm"}).status, 0);
  EXPECT_EQ(readFile(directory / "b.ppm"), readFile(directory / "in.ppm"));

  const orbtest::Outcome info = runOrb({"tiff", "info", directory / "b.tif"});
  EXPECT_EQ(info.status, 0);
  EXPECT_EQ(info.output.find("200 x 100 pixels, 3 x 8 bits, photometric interpretation 2, "
                             "compression 32773, 15 strips, little-endian, "),
            0u)
      << info.output;
  EXPECT_EQ(runOrb({"tiff", "unpack", directory / "in.ppm", directory / "c.ppm"}).status, 1);
  EXPECT_EQ(directory.files().size(), 4u);
}

}  // namespace
