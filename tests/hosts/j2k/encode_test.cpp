// Our JPEG 2000 files, as others read them.
#include "hosts/j2k/encode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "hosts/error.h"
#include "hosts/j2k/decode.h"
#include "hosts/j2k/picture.h"
#include "tests/hosts/support/j2k_judge.h"
#include "tests/hosts/support/lossless_judges.h"
#include "tests/hosts/support/pictures.h"

namespace {

using orbhost::Bytes;
using orbhost::Error;
using orbhost::Image;
using orbhost::j2k::colourPicture;
using orbhost::j2k::decodeJ2k;
using orbhost::j2k::encodeJ2k;
using orbhost::j2k::EncodeOptions;
using orbhost::j2k::kPredictableTermination;
using orbhost::j2k::kTerminateEach;
using orbhost::j2k::Progression;
using orbtest::difference;
using orbtest::draw;
using orbtest::Motif;
using orbtest::opjCompress;
using orbtest::opjDecompress;
using orbtest::photograph;
using orbtest::psnr;

constexpr Progression kProgressions[] = {Progression::kLrcp, Progression::kRlcp, Progression::kRpcl,
                                         Progression::kPcrl, Progression::kCprl};

EncodeOptions lossyOptions() {
  EncodeOptions options;
  options.isLossless = false;
  return options;
}

void expectLossless(const Image& image, const EncodeOptions& options) {
  const Bytes file = encodeJ2k(image, options);
  EXPECT_EQ(difference(opjDecompress(file), image).largest, 0);
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
      EXPECT_GT(psnr(opjDecompress(encodeJ2k(image, options)), image), 50);
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
        EXPECT_GT(psnr(opjDecompress(encodeJ2k(image, lossy)), image), bits < 4 ? 20 : 48);
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
    EXPECT_GT(psnr(opjDecompress(encodeJ2k(image, options)), image), 50);
  }
}

TEST(J2kEncode, RatesAreMet) {
  const Image& image = photograph(2);
  const double pixels = static_cast<double>(image.width()) * image.height();
  for (const double rate : {0.1, 0.25, 0.7, 1.0, 3.0}) {
    for (const bool isRaw : {false, true}) {
      EncodeOptions options = lossyOptions();
      options.isRaw = isRaw;
      options.rates = {rate};
      const Bytes file = encodeJ2k(image, options);
      const double got = static_cast<double>(file.size()) * 8 / pixels;
      EXPECT_LE(got, rate);
      EXPECT_GT(got, rate * 0.995);
    }
  }
}

TEST(J2kEncode, ValuesOfPsnrAreMet) {
  for (const int maximum : {255, 4095}) {
    const Image drawn = draw(Motif::kScene, 400, 300, 3, maximum);
    const Image& image = maximum == 255 ? photograph(2) : drawn;
    for (const double wanted : {28.0, 35.0, 42.0, 50.0, 56.0}) {
      EncodeOptions options = lossyOptions();
      options.psnrs = {wanted};
      const double got = psnr(opjDecompress(encodeJ2k(image, options)), image);
      std::printf("maximum %d: %.0f dB wanted, %.2f dB\n", maximum, wanted, got);
      EXPECT_NEAR(got, wanted, 0.7);
    }
  }
}

// At the same size, with the same code-blocks and levels.
TEST(J2kEncode, PicturesAreAsGoodAsOpenJpegs) {
  const Image& image = photograph(2);
  for (const double rate : {0.25, 0.5, 1.0, 2.0}) {
    EncodeOptions options = lossyOptions();
    options.rates = {rate};
    const Bytes ours = encodeJ2k(image, options);
    char ratio[32];
    std::snprintf(ratio, sizeof(ratio), "-I -r %.6f", 24 / rate);
    const Bytes theirs = opjCompress(image, ratio, orbtest::J2kFormat::kJp2);
    const double oursGood = psnr(opjDecompress(ours), image);
    const double theirsGood = psnr(opjDecompress(theirs), image);
    std::printf("%.2f bpp: %zu bytes, %.3f dB; OpenJPEG %zu bytes, %.3f dB\n", rate, ours.size(),
                oursGood, theirs.size(), theirsGood);
    EXPECT_GT(oursGood, theirsGood - 0.1);
  }
}

TEST(J2kEncode, LosslessFilesAreAsSmallAsOpenJpegs) {
  const Image& image = photograph(2);
  const Bytes ours = encodeJ2k(image, {});
  EXPECT_EQ(difference(opjDecompress(ours), image).largest, 0);
  EXPECT_LE(ours.size(), opjCompress(image, "", orbtest::J2kFormat::kJp2).size());
}

// Each layer is the best of its size: as good as a file of one layer, but for what the layers cost.
TEST(J2kEncode, LayersGrowToTheirRates) {
  const Image& image = photograph(2);
  const std::vector<double> rates = {0.125, 0.25, 0.5, 1, 2};
  for (const bool isLossless : {false, true}) {
    EncodeOptions options;
    options.isLossless = isLossless;
    options.rates = rates;
    options.progression = Progression::kLrcp;
    const Bytes file = encodeJ2k(image, options);
    for (size_t i = 0; i < rates.size(); ++i) {
      EncodeOptions single = options;
      single.isLossless = false;
      single.rates = {rates[i]};
      const double alone = psnr(opjDecompress(encodeJ2k(image, single)), image);
      const double layered = psnr(opjDecompress(file, "-l " + std::to_string(i + 1)), image);
      EXPECT_GT(layered, alone - (isLossless ? 3 : 0.4)) << "layer " << i;
      // Cut off behind the layer's bytes, the file has all of the layer.
      const auto bytes =
          static_cast<size_t>(rates[i] * image.width() * static_cast<double>(image.height()) / 8);
      Bytes cut(file.begin(), file.begin() + static_cast<ptrdiff_t>(std::min(bytes, file.size())));
      EXPECT_NEAR(psnr(colourPicture(decodeJ2k(cut, {})), image), layered, 0.05) << "layer " << i;
    }
    if (isLossless) {
      EXPECT_EQ(difference(opjDecompress(file), image).largest, 0);
    }
  }
}

TEST(J2kEncode, LayersWithoutGoalsAreChosen) {
  const Image image = draw(Motif::kScene, 200, 160, 3);
  for (int variant = 0; variant < 4; ++variant) {
    EncodeOptions options;
    options.isLossless = variant == 0;
    options.layers = 6;
    if (variant == 2) options.rates = {2};
    if (variant == 3) options.psnrs = {40};
    const Bytes file = encodeJ2k(image, options);
    double before = 0;
    for (int layer = 1; layer <= 6; ++layer) {
      const double now = psnr(opjDecompress(file, "-l " + std::to_string(layer)), image);
      EXPECT_GT(now, before + 0.5) << "variant " << variant << ", layer " << layer;
      before = now;
    }
  }
}

TEST(J2kEncode, RatesAreMetInEveryStyle) {
  const Image image = draw(Motif::kScene, 256, 200, 3);
  double plain = 0;
  for (int style = 0; style < 64; ++style) {
    // Without segments of their own, predictable terminations leave few places to cut at.
    if ((style & kPredictableTermination) != 0 && (style & kTerminateEach) == 0) continue;
    SCOPED_TRACE("style " + std::to_string(style));
    EncodeOptions options = lossyOptions();
    options.blockStyle = style;
    options.rates = {0.5, 1.5};
    const Bytes file = encodeJ2k(image, options);
    const double good = psnr(opjDecompress(file), image);
    if (style == 0) plain = good;
    EXPECT_GT(good, plain - 0.4);
    const double got = static_cast<double>(file.size()) * 8 / (256 * 200);
    EXPECT_LE(got, 1.5);
    EXPECT_GT(got, 1.485);
  }
}

TEST(J2kEncode, FfmpegReadsTheSamePictures) {
  for (const int channels : {1, 3}) {
    const Image image = draw(Motif::kScene, 211, 133, channels);
    for (int variant = 0; variant < 6; ++variant) {
      SCOPED_TRACE("variant " + std::to_string(variant));
      EncodeOptions options;
      options.progression = kProgressions[variant % 5];
      options.layers = variant + 1;
      options.levels = variant;
      if (variant % 2 == 1) options.tileWidth = options.tileHeight = 100;
      if (variant >= 3) options.precincts = {{7, 6}};
      options.hasSop = variant == 4;
      options.hasEph = variant == 5;
      const Bytes samples =
          orbtest::ffmpegDecode(encodeJ2k(image, options), channels == 1 ? "gray" : "rgb24");
      EXPECT_EQ(samples, Bytes(image.row(0), image.row(0) + image.size()));
    }
  }
}

TEST(J2kEncode, RefusesWhatTheFormatCannotHold) {
  const Image image = draw(Motif::kGradient, 300, 300, 1);
  const auto refuses = [&](auto change) {
    EncodeOptions options;
    change(options);
    EXPECT_THROW(encodeJ2k(image, options), Error);
  };
  refuses([](EncodeOptions& options) { options.levels = 33; });
  refuses([](EncodeOptions& options) { options.levels = -1; });
  refuses([](EncodeOptions& options) { options.blockWidth = 48; });
  refuses([](EncodeOptions& options) { options.blockHeight = 2; });
  refuses([](EncodeOptions& options) { options.blockWidth = 2048; });
  refuses([](EncodeOptions& options) { options.tileWidth = options.tileHeight = 1; });
  refuses([](EncodeOptions& options) { options.precincts = {{0, 5}}; });
  refuses([](EncodeOptions& options) { options.precincts = {{16, 5}}; });
  refuses([](EncodeOptions& options) { options.layers = 65536; });
  refuses([](EncodeOptions& options) { options.rates = {1, 0.5}; });
  refuses([](EncodeOptions& options) { options.rates = {0}; });
  refuses([](EncodeOptions& options) { options.psnrs = {-3}; });
  refuses([](EncodeOptions& options) {
    options.rates = {1};
    options.psnrs = {30};
  });
  EXPECT_THROW(encodeJ2k(draw(Motif::kGradient, 8, 8, 4), {}), Error);
}

}  // namespace
