// Our JPEG 2000 files, as others read them.
#include "hosts/j2k/encode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "hosts/error.h"
#include "tests/hosts/support/j2k_judges.h"
#include "tests/hosts/support/lossless_judges.h"
#include "tests/hosts/support/pictures.h"

namespace {

using orbhost::Bytes;
using orbhost::Error;
using orbhost::Image;
using orbhost::j2k::encodeJ2k;
using orbhost::j2k::EncodeOptions;
using orbhost::j2k::Progression;
using orbtest::difference;
using orbtest::draw;
using orbtest::Motif;
using orbtest::opjDecode;
using orbtest::photograph;
using orbtest::psnr;

constexpr Progression kProgressions[] = {Progression::kLrcp, Progression::kRlcp, Progression::kRpcl,
                                         Progression::kPcrl, Progression::kCprl};

void expectLossless(const Image& image, const EncodeOptions& options) {
  const Bytes file = encodeJ2k(image, options);
  EXPECT_EQ(difference(opjDecode(file), image).largest, 0);
}

TEST(J2kEncode, EverySmallSizeIsReadByTheJudge) {
  for (int height = 1; height <= 9; ++height) {
    for (int width = 1; width <= 9; ++width) {
      SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height));
      EncodeOptions options;
      options.isRaw = height % 2 == 0;
      options.levels = (width + height) % 6;
      expectLossless(draw(Motif::kNoise, width, height, width % 2 == 0 ? 3 : 1), options);
    }
  }
}

// Tiles put lines of every length at even and odd places.
TEST(J2kEncode, TilesOfAnySizeAreReadByTheJudge) {
  for (const auto& [width, height] :
       {std::pair{1u, 1u}, std::pair{3u, 2u}, std::pair{5u, 7u}, std::pair{16u, 9u},
        std::pair{31u, 64u}, std::pair{200u, 100u}}) {
    for (const int levels : {0, 1, 2, 5}) {
      SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height) + ", levels " +
                   std::to_string(levels));
      EncodeOptions options;
      options.tileWidth = width;
      options.tileHeight = height;
      options.levels = levels;
      const int shrink = width < 4 ? 4 : 1;
      const Image image = draw(Motif::kScene, 133 / shrink, 71 / shrink, 3);
      expectLossless(image, options);
      options.isLossless = false;
      EXPECT_GT(psnr(opjDecode(encodeJ2k(image, options)), image), 50);
    }
  }
}

TEST(J2kEncode, EveryBlockStyleIsReadByTheJudge) {
  const Image image = draw(Motif::kScene, 90, 75, 1);
  for (int style = 0; style < 64; ++style) {
    SCOPED_TRACE("style " + std::to_string(style));
    EncodeOptions options;
    options.blockStyle = style;
    options.levels = 2;
    options.layers = 1 + style % 5;
    expectLossless(image, options);
  }
}

TEST(J2kEncode, EveryProgressionIsReadByTheJudge) {
  const Image image = draw(Motif::kScene, 150, 117, 3);
  for (const Progression progression : kProgressions) {
    for (int variant = 0; variant < 8; ++variant) {
      SCOPED_TRACE("progression " + std::to_string(static_cast<int>(progression)) + ", variant " +
                   std::to_string(variant));
      EncodeOptions options;
      options.progression = progression;
      options.layers = variant % 2 == 0 ? 1 : 4;
      if (variant % 4 >= 2) options.precincts = {{6, 5}, {5, 6}, {4, 4}};
      if (variant >= 4) {
        options.tileWidth = 70;
        options.tileHeight = 53;
      }
      options.hasSop = variant % 3 == 1;
      options.hasEph = variant % 3 != 0;
      options.levels = 4;
      options.blockWidth = 16;
      options.blockHeight = 32;
      expectLossless(image, options);
    }
  }
}

TEST(J2kEncode, EveryBlockSizeIsReadByTheJudge) {
  const Image image = draw(Motif::kScene, 300, 131, 1);
  for (int width = 4; width <= 1024; width *= 2) {
    for (int height = 4; height <= 1024; height *= 2) {
      EncodeOptions options;
      options.blockWidth = width;
      options.blockHeight = height;
      SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height));
      if (width * height > 4096) {
        EXPECT_THROW(encodeJ2k(image, options), Error);
      } else {
        expectLossless(image, options);
      }
    }
  }
}

TEST(J2kEncode, EveryDepthIsReadByTheJudge) {
  for (int bits = 1; bits <= 16; ++bits) {
    SCOPED_TRACE("bits " + std::to_string(bits));
    for (const int channels : {1, 3}) {
      for (const Motif motif : {Motif::kNoise, Motif::kScene}) {
        const Image image = draw(motif, 67, 50, channels, (1 << bits) - 1);
        expectLossless(image, {});
        EncodeOptions lossy;
        lossy.isLossless = false;
        EXPECT_GT(psnr(opjDecode(encodeJ2k(image, lossy)), image), bits < 4 ? 20 : 48);
      }
    }
  }
}

TEST(J2kEncode, EveryNumberOfLevelsIsReadByTheJudge) {
  const Image image = draw(Motif::kScene, 61, 43, 3);
  for (int levels = 0; levels <= 32; ++levels) {
    SCOPED_TRACE("levels " + std::to_string(levels));
    EncodeOptions options;
    options.levels = levels;
    expectLossless(image, options);
    options.isLossless = false;
    EXPECT_GT(psnr(opjDecode(encodeJ2k(image, options)), image), 50);
  }
}

}  // namespace
