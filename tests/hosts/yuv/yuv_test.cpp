// orb yuv beside FFmpeg's swscale.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "hosts/bmp_file.h"
#include "hosts/error.h"
#include "hosts/file.h"
#include "hosts/yuv/video.h"
#include "tests/hosts/support/pictures.h"
#include "tests/hosts/support/program.h"

namespace {

using orbhost::Bytes;
using orbhost::Image;
using orbhost::PackedFormat;
using orbhost::PackedImage;
using orbhost::readFile;
using orbhost::writeFile;
using orbhost::yuv::frameSize;
using orbhost::yuv::Layout;
using orbhost::yuv::ofVideo;
using orbhost::yuv::toVideo;
using orbtest::Directory;
using orbtest::run;
using orbtest::runOrb;

constexpr PackedFormat kFormats[] = {PackedFormat::kBgr555, PackedFormat::kBgr565};
struct Kind {
  Layout layout;
  const char* pixelFormat;  // FFmpeg's
};
constexpr Kind kKinds[] = {
    {Layout::kI420, "yuv420p"}, {Layout::kI422, "yuv422p"}, {Layout::kYuyv, "yuyv422"}};

// Squares of 2 x 2 pixels of one colour, so that it does not matter how chroma is averaged.
PackedImage squares(PackedFormat format, int width, int height) {
  const Image small = draw(orbtest::Motif::kNoise, (width + 1) / 2, (height + 1) / 2, 3);
  const PackedImage packed = pack(small, format);
  PackedImage image(format, width, height, width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) image.row(y)[x] = packed.row(y / 2)[x / 2];
  }
  return image;
}

// Fields at the top of bytes, red first.
Bytes bytesOf(const PackedImage& image) {
  const int greenBits = image.format() == PackedFormat::kBgr565 ? 6 : 5;
  Bytes bytes;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      const int word = image.row(y)[x];
      bytes.push_back(static_cast<uint8_t>(word >> (5 + greenBits) << 3));
      bytes.push_back(static_cast<uint8_t>((word >> 5) << (8 - greenBits)));
      bytes.push_back(static_cast<uint8_t>(word << 3));
    }
  }
  return bytes;
}

Bytes convertByFfmpeg(const Bytes& in, const std::string& from, const std::string& to, int width,
                      int height) {
  const Directory directory;
  writeFile(directory / "in", in);
  const orbtest::Outcome outcome =
      run({"ffmpeg", "-v", "error", "-f", "rawvideo", "-pix_fmt", from, "-s",
           std::to_string(width) + "x" + std::to_string(height), "-i", directory / "in", "-vf",
           "scale=flags=neighbor+accurate_rnd+full_chroma_inp+full_chroma_int", "-f", "rawvideo",
           "-pix_fmt", to, directory / "out"});
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  return readFile(directory / "out");
}

int largestDifference(const Bytes& a, const Bytes& b) {
  if (a.size() != b.size()) return 256;
  int largest = 0;
  for (size_t i = 0; i < a.size(); ++i) largest = std::max(largest, std::abs(a[i] - b[i]));
  return largest;
}

// Both round Y to nearest; chroma we round down, but for an eighth.
TEST(Yuv, FramesAreThoseOfSwscale) {
  for (const PackedFormat format : kFormats) {
    for (const auto& [layout, pixelFormat] : kKinds) {
      const PackedImage image = squares(format, 64, 48);
      const Bytes theirs = convertByFfmpeg(bytesOf(image), "rgb24", pixelFormat, 64, 48);
      EXPECT_LE(largestDifference(toVideo(image, layout), theirs), 1) << pixelFormat;
    }
  }
}

// Theirs is cut to the bits that ours has; we round down in between.
TEST(Yuv, PixelsAreThoseOfSwscale) {
  for (const PackedFormat format : kFormats) {
    for (const auto& [layout, pixelFormat] : kKinds) {
      if (layout == Layout::kI422) continue;
      const Bytes frame = toVideo(squares(format, 64, 48), layout);
      const Bytes ours = bytesOf(ofVideo(frame, layout, 64, 48, format));
      Bytes theirs = convertByFfmpeg(frame, pixelFormat, "rgb24", 64, 48);
      const int greens = format == PackedFormat::kBgr565 ? 4 : 8;
      for (size_t i = 0; i < theirs.size(); ++i) {
        theirs[i] = static_cast<uint8_t>(theirs[i] & (i % 3 == 1 ? -greens : -8));
      }
      EXPECT_LE(largestDifference(ours, theirs), 8) << pixelFormat;
    }
  }
}

TEST(Yuv, OddSizes) {
  for (const PackedFormat format : kFormats) {
    for (const auto& [width, height] : {std::pair{1, 1}, {3, 5}, {2, 7}, {7, 2}}) {
      const PackedImage image = squares(format, width, height);
      const size_t chroma = static_cast<size_t>((width + 1) / 2);
      EXPECT_EQ(frameSize(Layout::kI420, width, height),
                width * height + 2 * chroma * static_cast<size_t>((height + 1) / 2));
      EXPECT_EQ(frameSize(Layout::kYuyv, width, height), 4 * chroma * static_cast<size_t>(height));
      for (const Layout layout : {Layout::kI420, Layout::kYv12, Layout::kYuyv}) {
        const Bytes frame = toVideo(image, layout);
        ASSERT_EQ(frame.size(), frameSize(layout, width, height));
        const Bytes back = bytesOf(ofVideo(frame, layout, width, height, format));
        EXPECT_LE(largestDifference(back, bytesOf(image)), 8);
      }
    }
  }
}

TEST(Yuv, PlanesChangePlaces) {
  const PackedImage image = squares(PackedFormat::kBgr565, 16, 16);
  const Bytes a = toVideo(image, Layout::kI420), b = toVideo(image, Layout::kYv12);
  EXPECT_TRUE(std::equal(a.begin(), a.begin() + 256, b.begin()));
  EXPECT_TRUE(std::equal(a.begin() + 256, a.begin() + 320, b.begin() + 320));
  EXPECT_TRUE(std::equal(a.begin() + 320, a.end(), b.begin() + 256));
}

TEST(Yuv, BmpFilesComeBack) {
  for (const PackedFormat format : kFormats) {
    for (const int width : {1, 2, 33}) {
      const PackedImage image = squares(format, width, 9);
      const PackedImage read = orbhost::parsePackedBmp(formatBmp(image));
      EXPECT_EQ(read.format(), format);
      EXPECT_EQ(bytesOf(read), bytesOf(image));
    }
  }
}

// Cut or changed, a file is read or refused.
TEST(Yuv, DamagedBmpFiles) {
  const Bytes file = formatBmp(squares(PackedFormat::kBgr565, 5, 4));
  for (size_t size = 0; size < file.size(); ++size) {
    EXPECT_THROW(orbhost::parsePackedBmp({file.data(), size}), orbhost::Error);
  }
  for (size_t at = 0; at < 66; ++at) {
    for (const int flip : {1, 128, 255}) {
      Bytes damaged = file;
      damaged[at] ^= static_cast<uint8_t>(flip);
      try {
        orbhost::parsePackedBmp(damaged);
      } catch (const orbhost::Error&) {
      }
    }
  }
}

TEST(Yuv, TheProgram) {
  const Directory directory;
  const PackedImage image = squares(PackedFormat::kBgr565, 20, 10);
  writeFile(directory / "in.bmp", formatBmp(image));
  ASSERT_EQ(runOrb({"yuv", "encode", "--layout", "yuyv", directory / "in.bmp", directory / "a.yuv"})
                .status,
            0);
  EXPECT_EQ(readFile(directory / "a.yuv"), toVideo(image, Layout::kYuyv));
  ASSERT_EQ(runOrb({"yuv", "decode", "--layout", "yuyv", "--size", "20x10", directory / "a.yuv",
                    directory / "b.bmp"})
                .status,
            0);
  EXPECT_EQ(readFile(directory / "b.bmp"),
            formatBmp(ofVideo(toVideo(image, Layout::kYuyv), Layout::kYuyv, 20, 10,
                              PackedFormat::kBgr565)));
  for (const char* const size : {"20x11", "20", "0x3", "20x10x"}) {
    EXPECT_EQ(runOrb({"yuv", "decode", "--layout", "yuyv", "--size", size, directory / "a.yuv",
                      directory / "c.bmp"})
                  .status,
              1);
  }
  EXPECT_EQ(directory.files().size(), 3u);
}

}  // namespace
