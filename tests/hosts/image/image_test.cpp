// orb image: pictures in and out, what the host adds to the library's operations, and the gallery.
#include <gtest/gtest.h>
#include <png.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "hosts/error.h"
#include "hosts/file.h"
#include "hosts/image/gallery.h"
#include "hosts/image/homography.h"
#include "hosts/image/operations.h"
#include "hosts/image/picture.h"
#include "hosts/image_file.h"
#include "hosts/png_file.h"
#include "tests/hosts/support/pictures.h"
#include "tests/hosts/support/program.h"

namespace {

using orbhost::Bytes;
using orbhost::Error;
using orbhost::Image;
using orbhost::ImageFormat;
using orbhost::parsePng;
using orbhost::readFile;
using orbhost::Transparency;
using orbhost::writeFile;
using orbhost::image::Canvas;
using orbhost::image::Corners;
using orbhost::image::FilterKind;
using orbhost::image::Homography;
using orbhost::image::homographyTo;
using orbhost::image::Point;
using orbtest::difference;
using orbtest::Directory;
using orbtest::draw;
using orbtest::Motif;
using orbtest::Outcome;
using orbtest::runOrb;

int at(const Image& image, int x, int y, int channel) {
  return image.row(y)[x * image.channels() + channel];
}
void expectEqual(const Image& a, const Image& b) {
  EXPECT_EQ(difference(a, b).largest, 0);
}

// ---- Operations

// Means of 9 pixels, those at the edge repeated.
TEST(ImageOperations, FiltersHaveTheirEdgesRepeated) {
  for (const int channels : {1, 3, 4}) {
    const Image image = draw(Motif::kNoise, 13, 9, channels);
    const Image mean = orbhost::image::filter(image, FilterKind::kLowpass, orbMask3x3);
    for (int y = 0; y < 9; ++y) {
      for (int x = 0; x < 13; ++x) {
        for (int k = 0; k < channels; ++k) {
          double sum = 0;
          for (int dy = -1; dy <= 1; ++dy) {
            for (int dx = -1; dx <= 1; ++dx) {
              sum += at(image, std::clamp(x + dx, 0, 12), std::clamp(y + dy, 0, 8), k);
            }
          }
          ASSERT_NEAR(at(mean, x, y, k), sum / 9, 1) << x << ", " << y;
        }
      }
    }
  }
}

TEST(ImageOperations, ErosionIsTheDilationOfTheNegative) {
  for (const int channels : {1, 3, 4}) {
    Image image = draw(Motif::kEdges, 30, 20, channels);
    const Image eroded = orbhost::image::erode(image);
    for (size_t i = 0; i < image.size(); ++i)
      image.row(0)[i] = static_cast<uint8_t>(~image.row(0)[i]);
    const Image dilated = orbhost::image::dilate(image);
    for (size_t i = 0; i < image.size(); ++i) ASSERT_EQ(eroded.row(0)[i], 255 - dilated.row(0)[i]);
  }
}

TEST(ImageOperations, FourQuarterTurnsAreNone) {
  for (const int channels : {1, 3, 4}) {
    const Image image = draw(Motif::kScene, 17, 10, channels);
    Image turned = orbhost::image::rotate(image, 90, Canvas::kFit, orbInterLinear);
    EXPECT_EQ(turned.width(), 10);
    EXPECT_EQ(turned.height(), 17);
    EXPECT_EQ(at(turned, 0, 0, 0), at(image, 16, 0, 0));  // counter-clockwise
    for (int i = 0; i < 3; ++i)
      turned = orbhost::image::rotate(turned, 90, Canvas::kFit, orbInterLinear);
    expectEqual(turned, image);
    // On a canvas of the same size too, pixels are copied and not blurred.
    const Image same = orbhost::image::rotate(image, -270, Canvas::kSame, orbInterLinear);
    EXPECT_EQ(same.width(), 17);
    const Image quarter = orbhost::image::rotate(image, 90, Canvas::kFit, orbInterLinear);
    for (int x = 3; x < 13; ++x) ASSERT_EQ(at(same, x, 5, 0), at(quarter, x - 3, 9, 0)) << x;
  }
}

// There and back again: the middle has moved nowhere.
TEST(ImageOperations, TurnsFitTheirCanvas) {
  const Image image = draw(Motif::kGradient, 60, 40, 1);
  const Image turned = orbhost::image::rotate(image, 30, Canvas::kFit, orbInterCatmullRom);
  EXPECT_EQ(turned.width(), 71);   // 59 cos 30 + 39 sin 30 + 1 = 71.6
  EXPECT_EQ(turned.height(), 64);  // 39 cos 30 + 59 sin 30 + 1 = 64.3
  const Image back = orbhost::image::rotate(turned, -30, Canvas::kSame, orbInterCatmullRom);
  for (int y = 8; y < 32; ++y) {
    for (int x = 8; x < 52; ++x) ASSERT_NEAR(at(back, x + 5, y + 12, 0), at(image, x, y, 0), 6);
  }
}

TEST(ImageOperations, CornersGoWhereTheyAreWanted) {
  const Corners corners = {{{3, 5}, {40.5, -2}, {50, 33}, {-7, 21}}};
  const Homography h = homographyTo(corners, 31, 22);
  const Point own[] = {{0, 0}, {30, 0}, {30, 21}, {0, 21}};
  for (int i = 0; i < 4; ++i) {
    const auto row = [&](int r) {
      return h.coeffs[r][0] * own[i].x + h.coeffs[r][1] * own[i].y + h.coeffs[r][2];
    };
    EXPECT_NEAR(row(0) / row(2), corners[i].x, 1e-9);
    EXPECT_NEAR(row(1) / row(2), corners[i].y, 1e-9);
  }
  EXPECT_THROW(homographyTo({{{0, 0}, {1, 0}, {2, 0}, {3, 0}}}, 5, 5), Error);
}

TEST(ImageOperations, AWarpToItsOwnCornersIsNone) {
  for (const int channels : {1, 3, 4}) {
    const Image image = draw(Motif::kScene, 31, 22, channels);
    const Corners own = {{{0, 0}, {30, 0}, {30, 21}, {0, 21}}};
    expectEqual(orbhost::image::warp(image, own, Canvas::kSame, orbInterLagrange), image);
    const Corners moved = {{{100, 50}, {130, 50}, {130, 71}, {100, 71}}};
    expectEqual(orbhost::image::warp(image, moved, Canvas::kFit, orbInterLinear), image);
    EXPECT_THROW(orbhost::image::warp(image, moved, Canvas::kSame, orbInterLinear), Error);
    const Corners crossed = {{{0, 0}, {30, 21}, {30, 0}, {0, 21}}};
    EXPECT_THROW(orbhost::image::warp(image, crossed, Canvas::kSame, orbInterLinear), Error);
  }
}

TEST(ImageOperations, ALineIsTurnedByRightAnglesOnly) {
  const Image line = draw(Motif::kNoise, 9, 1, 1);
  EXPECT_EQ(orbhost::image::rotate(line, 90, Canvas::kFit, orbInterLinear).height(), 9);
  EXPECT_THROW(orbhost::image::rotate(line, 10, Canvas::kFit, orbInterLinear), Error);
  const Corners corners = {{{0, 0}, {8, 0}, {8, 8}, {0, 8}}};
  EXPECT_THROW(orbhost::image::warp(line, corners, Canvas::kSame, orbInterLinear), Error);
}

// ---- Transparency

// A palette of red and of half a green, by libpng's simplified interface.
Bytes paletteFile() {
  png_image picture{};
  picture.version = PNG_IMAGE_VERSION;
  picture.width = 2;
  picture.height = 1;
  picture.format = PNG_FORMAT_RGBA_COLORMAP;
  picture.colormap_entries = 2;
  const uint8_t palette[] = {255, 0, 0, 255, 0, 200, 0, 128}, pixels[] = {0, 1};
  png_alloc_size_t size = 0;
  png_image_write_to_memory(&picture, nullptr, &size, 0, pixels, 0, palette);
  Bytes file(size);
  EXPECT_NE(png_image_write_to_memory(&picture, file.data(), &size, 0, pixels, 0, palette), 0);
  file.resize(size);
  return file;
}

TEST(PngFile, KeepsTransparencyWhereItIsAskedTo) {
  const Image kept = parsePng(paletteFile(), Transparency::kKept);
  ASSERT_EQ(kept.channels(), 4);
  EXPECT_EQ(std::vector<uint8_t>(kept.row(0), kept.row(0) + 8),
            (std::vector<uint8_t>{255, 0, 0, 255, 0, 200, 0, 128}));
  EXPECT_EQ(parsePng(paletteFile()).channels(), 3);
  const Bytes opaque = formatImage(draw(Motif::kScene, 5, 5, 1), ImageFormat::kPng);
  EXPECT_EQ(parsePng(opaque, Transparency::kKept).channels(), 1);
}
TEST(PngFile, WritesTransparency) {
  for (const int maximum : {255, 65535}) {
    const Image image = draw(Motif::kNoise, 12, 7, 4, maximum);
    expectEqual(parsePng(formatPng(image), Transparency::kKept), image);
  }
}

// ---- The program

void expectFailure(const Outcome& outcome, const std::string& why) {
  EXPECT_EQ(outcome.status, 1) << outcome.output;
  EXPECT_NE(outcome.output.find(why), std::string::npos) << outcome.output;
}

class ImageProgram : public testing::Test {
 protected:
  ImageProgram() {
    writeFile(directory / "in.ppm", formatImage(colour, ImageFormat::kPpm));
    writeFile(directory / "in.pgm", formatImage(grey, ImageFormat::kPgm));
    writeFile(directory / "clear.png", formatPng(clear));
  }
  Outcome orb(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "image");
    return runOrb(arguments);
  }
  // What the command says nothing about, and writes.
  Image result(std::vector<std::string> arguments, const std::string& name) {
    arguments.push_back(directory / name);
    const Outcome outcome = orb(arguments);
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    EXPECT_EQ(outcome.output, "");
    return orbhost::image::readPicture(directory / name).pixels;
  }

  const Directory directory;
  const Image colour = draw(Motif::kScene, 40, 30, 3);
  const Image grey = draw(Motif::kScene, 40, 30, 1);
  const Image clear = draw(Motif::kScene, 40, 30, 4);
};

TEST_F(ImageProgram, Filters) {
  expectEqual(result({"filter", "gauss", "--mask", "5", directory / "in.ppm"}, "a.png"),
              orbhost::image::filter(colour, FilterKind::kGauss, orbMask5x5));
  expectEqual(result({"filter", "laplace", directory / "in.pgm"}, "a.pgm"),
              orbhost::image::filter(grey, FilterKind::kLaplace, orbMask3x3));
  expectEqual(result({"filter", "lowpass", directory / "clear.png"}, "b.png"),
              orbhost::image::filter(clear, FilterKind::kLowpass, orbMask3x3));
  expectEqual(result({"dilate", directory / "in.ppm"}, "a.ppm"), orbhost::image::dilate(colour));
  expectEqual(result({"erode", directory / "clear.png"}, "c.png"), orbhost::image::erode(clear));
}
TEST_F(ImageProgram, TurnsAndWarps) {
  expectEqual(result({"rotate", "-33.5", directory / "in.ppm"}, "a.png"),
              orbhost::image::rotate(colour, -33.5, Canvas::kSame, orbInterLinear));
  expectEqual(
      result({"rotate", "--fit", "-m", "catmullrom", "--smooth", "20", directory / "clear.png"},
             "b.png"),
      orbhost::image::rotate(clear, 20, Canvas::kFit, orbInterCatmullRom | orbInterEdgeBlend));
  const Corners corners = {{{2, 1}, {38.5, 4}, {36, 28}, {-3, 25}}};
  expectEqual(result({"warp", "2,1", "38.5,4", "36,28", "-3,25", "--method", "nearest",
                      directory / "in.pgm"},
                     "a.pgm"),
              orbhost::image::warp(grey, corners, Canvas::kSame, orbInterNearest));
}
TEST_F(ImageProgram, SaysWhatIsWrong) {
  const std::string in = directory / "in.ppm", out = directory / "out.png";
  expectFailure(orb({"filter", "gauss", "--mask", "4", in, out}), "--mask");
  expectFailure(orb({"filter", "blur", in, out}), "kind");
  expectFailure(orb({"rotate", "10", "--fit", "--center", in, out}), "--fit");
  expectFailure(orb({"rotate", "10", "--method", "cubic", in, out}), "--method");
  expectFailure(orb({"rotate", "inf", in, out}), "status -11");
  expectFailure(orb({"warp", "1,1", "5", "5,5", "1,5", in, out}), "x,y");
  expectFailure(orb({"warp", "1,1", "5,1x", "5,5", "1,5", in, out}), "x,y");
  expectFailure(orb({"warp", "1,1", "5,5", "5,1", "1,5", in, out}), "convex");
  expectFailure(orb({"warp", "1,1", "5,5", "7,7", "9,9", in, out}), "line");
  expectFailure(orb({"warp", "0,0", "1e9,0", "1e9,9", "0,9", "--fit", in, out}), "too large");
  expectFailure(orb({"dilate", directory / "nothing.ppm", out}), "nothing.ppm");
  expectFailure(orb({"dilate", directory / "clear.png", directory / "out.ppm"}), "transparent");
  EXPECT_EQ(directory.files(), (std::vector<std::string>{"clear.png", "in.pgm", "in.ppm"}));
}

TEST_F(ImageProgram, ShowsAGallery) {
  for (const std::string name : {"in.ppm", "in.pgm", "clear.png"}) {
    const std::string gallery = directory / ("of-" + name);
    const Outcome outcome = orb({"gallery", directory / name, gallery});
    ASSERT_EQ(outcome.status, 0) << outcome.output;
    const Bytes page = readFile(gallery + "/index.html");
    const std::string text(page.begin(), page.end());
    const int width = orbhost::image::readPicture(directory / name).pixels.width();
    for (const orbhost::image::Exhibit& exhibit : orbhost::image::allExhibits()) {
      EXPECT_NE(text.find("src=\"" + exhibit.name + ".png\""), std::string::npos);
      EXPECT_NE(text.find("<figcaption>" + exhibit.caption), std::string::npos);
      const Image picture =
          orbhost::image::readPicture(gallery + "/" + exhibit.name + ".png").pixels;
      EXPECT_GE(picture.width(), width / 3) << exhibit.name;
    }
    EXPECT_EQ(orbhost::image::readPicture(gallery + "/sheet.png").pixels.channels(), 3);
  }
}

}  // namespace
