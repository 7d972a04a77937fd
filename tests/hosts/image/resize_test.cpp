// orb image resize and resize-yuv: which pixels are there, and how the program is asked.
#include "hosts/image/resize.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "hosts/error.h"
#include "hosts/file.h"
#include "hosts/image/picture.h"
#include "tests/hosts/support/pictures.h"
#include "tests/hosts/support/program.h"

namespace {

using orbhost::Bytes;
using orbhost::Error;
using orbhost::Image;
using orbhost::readFile;
using orbhost::writeFile;
using orbhost::image::placedBy;
using orbhost::image::placedInto;
using orbhost::image::resize;
using orbhost::image::resizeYuv;
using orbtest::difference;
using orbtest::Directory;
using orbtest::draw;
using orbtest::Motif;
using orbtest::Outcome;
using orbtest::runOrb;

Image white(int width, int height, int channels) {
  Image image(width, height, channels);
  std::memset(image.row(0), 255, image.size());
  return image;
}

TEST(ImageResize, EveryPixelOfAnySizeIsDrawn) {
  for (int from = 1; from <= 60; from += 13) {
    for (int to = 1; to <= 60; ++to) {
      for (const int method : {orbInterNearest, orbInterLinear, orbInterLanczos}) {
        const Image image = white(from, 61 - from, 3);
        const Image resized = resize(image, placedInto(image, {to, 61 - to}), method);
        EXPECT_EQ(difference(resized, white(to, 61 - to, 3)).largest, 0) << from << " to " << to;
      }
    }
  }
}

TEST(ImageResize, APartOfAPixelIsAPixel) {
  const Image image = white(10, 20, 1);
  const auto sizeBy = [&](double factor) {
    const OrbiSize size = placedBy(image, factor).size;
    return std::to_string(size.width) + "x" + std::to_string(size.height);
  };
  EXPECT_EQ(sizeBy(1), "10x20");
  EXPECT_EQ(sizeBy(0.3), "3x6");
  EXPECT_EQ(sizeBy(0.31), "4x7");
  EXPECT_EQ(sizeBy(0.001), "1x1");
  EXPECT_EQ(sizeBy(2.05), "21x41");
  EXPECT_THROW(placedBy(image, 1e9), Error);

  // A rim of a tenth, and what is behind the middle of its pixel is left out without one.
  const Image faded = resize(image, placedBy(image, 0.31), orbInterLinear | orbInterEdgeFade);
  EXPECT_EQ(faded.row(0)[2], 255);
  EXPECT_EQ(faded.row(0)[3], 26);  // 25.5
  EXPECT_EQ(faded.row(6)[0], 51);
  EXPECT_EQ(resize(image, placedBy(image, 0.31), orbInterLinear).row(0)[3], 0);
}

TEST(ImageResize, SaysWhatDoesNotGo) {
  const Image image = draw(Motif::kNoise, 20, 20, 3);
  EXPECT_THROW(resize(image, placedBy(image, 2), orbInterSuper), Error);
  EXPECT_THROW(resize(image, placedBy(image, 0.01), orbInterLinear), Error);  // no middle in there
  EXPECT_NO_THROW(resize(image, placedBy(image, 0.5), orbInterSuper | orbInterAntialias));
}

TEST(ImageResize, FramesOfAnySizeAreFilled) {
  for (int from = 2; from <= 40; from += 6) {
    for (int to = 2; to <= 50; to += 2) {
      for (const int method : {orbInterNearest, orbInterLinear, orbInterLagrange}) {
        const OrbiSize old = {from, 41 - from}, wanted = {to, 51 - to};
        const Bytes frames(static_cast<size_t>(old.width) * 2 * old.height * 2, 99);
        const Bytes resized = resizeYuv(frames, old, wanted, method);
        EXPECT_EQ(resized, Bytes(static_cast<size_t>(wanted.width) * 2 * wanted.height * 2, 99))
            << from << " to " << to;
      }
    }
  }
  EXPECT_THROW(resizeYuv(Bytes(33), {4, 4}, {2, 2}, orbInterLinear), Error);
  EXPECT_THROW(resizeYuv(Bytes(), {4, 4}, {2, 2}, orbInterLinear), Error);
  EXPECT_THROW(resizeYuv(Bytes(30), {3, 5}, {2, 2}, orbInterLinear), Error);
  EXPECT_THROW(resizeYuv(Bytes(32), {4, 4}, {8, 8}, orbInterSuper), Error);
}

// ---- The program

TEST(OrbImageResize, TakesASizeOrAScale) {
  const Directory directory;
  const std::string from = directory / "from.ppm", to = directory / "to.ppm";
  orbhost::image::writePicture(from, {draw(Motif::kEdges, 90, 60, 3), false});
  const auto sizeAfter = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"image", "resize"});
    arguments.insert(arguments.end(), {from, to});
    const Outcome outcome = runOrb(arguments);
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    const Image image = orbhost::image::readPicture(to).pixels;
    return std::to_string(image.width()) + "x" + std::to_string(image.height());
  };
  EXPECT_EQ(sizeAfter({"45x91"}), "45x91");
  EXPECT_EQ(sizeAfter({"-s", "1.5"}), "135x90");
  EXPECT_EQ(sizeAfter({"--scale", "0.333", "--edge", "blend"}), "30x20");
  for (const char* method :
       {"nearest", "linear", "lagrange", "bspline", "catmullrom", "b05c03", "lanczos", "area"}) {
    EXPECT_EQ(sizeAfter({"30x20", "--antialias", "--method", method}), "30x20");
  }
}

TEST(OrbImageResize, ResizesFrames) {
  const Directory directory;
  writeFile(directory / "from.yuv", Bytes(3 * 16 * 2 * 8, 40));
  const Outcome outcome = runOrb({"image", "resize-yuv", "16x8", "8x12", directory / "from.yuv",
                                  directory / "to.yuv", "--method", "lagrange"});
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  EXPECT_EQ(readFile(directory / "to.yuv"), Bytes(3 * 8 * 2 * 12, 40));
}

TEST(OrbImageResize, SaysWhatIsWrong) {
  const Directory directory;
  const std::string from = directory / "from.ppm", to = directory / "to.ppm";
  orbhost::image::writePicture(from, {draw(Motif::kEdges, 9, 6, 3), false});
  const std::vector<std::vector<std::string>> wrong = {
      {"resize", from, to},
      {"resize", "4x4", "--scale", "2", from, to},
      {"resize", "4x", from, to},
      {"resize", "0x4", from, to},
      {"resize", "4x4x4", from, to},
      {"resize", "--scale", "-1", from, to},
      {"resize", "40x40", "--method", "area", from, to},
      {"resize", "4x4", "--method", "best", from, to},
      {"resize", "--scale", "0.5", "--antialias", "--edge", "fade", from, to},
      {"resize-yuv", "4x4", "2x2", from, to},
  };
  for (std::vector<std::string> arguments : wrong) {
    arguments.insert(arguments.begin(), "image");
    const Outcome outcome = runOrb(arguments);
    EXPECT_EQ(outcome.status, 1) << outcome.output;
    EXPECT_FALSE(outcome.output.empty());
    EXPECT_THROW(readFile(to), Error);
  }
}

}  // namespace
