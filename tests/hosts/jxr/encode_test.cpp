// Files of ours, as JxrDecApp and we decode them.
#include "hosts/jxr/encode.h"

#include <gtest/gtest.h>

#include <string>

#include "hosts/error.h"
#include "hosts/jxr/decode.h"
#include "tests/hosts/support/jxr_judges.h"
#include "tests/hosts/support/pictures.h"

namespace {

using orbhost::Bytes;
using orbhost::Error;
using orbhost::Image;
using orbhost::jxr::decodeJxr;
using orbhost::jxr::encodeJxr;
using orbhost::jxr::EncodeOptions;
using orbhost::jxr::Subsampling;
using orbtest::difference;
using orbtest::draw;
using orbtest::jxrDecApp;
using orbtest::Motif;
using orbtest::psnr;

EncodeOptions lossless() {
  EncodeOptions options;
  options.quality = 100;
  return options;
}

// Returns what both decode.
Image decodedAlike(const Image& image, const EncodeOptions& options) {
  const Bytes file = encodeJxr(image, options);
  Image ours = decodeJxr(file);
  EXPECT_EQ(difference(ours, jxrDecApp(file, image)).largest, 0);
  return ours;
}

void expectLossless(const Image& image, const EncodeOptions& options) {
  EXPECT_EQ(difference(decodedAlike(image, options), image).largest, 0);
}

const Subsampling kSubsamplings[] = {Subsampling::k444, Subsampling::k422, Subsampling::k420};

TEST(JxrEncode, KeepsAllAtQuality100) {
  for (const int maximum : {255, 65535}) {
    for (const int channels : {1, 3}) {
      for (const Motif motif : {Motif::kGradient, Motif::kScene, Motif::kNoise, Motif::kEdges}) {
        for (int overlap = 0; overlap <= 2; ++overlap) {
          for (const bool frequencyOrder : {false, true}) {
            SCOPED_TRACE(testing::Message()
                         << maximum << ' ' << channels << ' ' << overlap << ' ' << frequencyOrder);
            EncodeOptions options = lossless();
            options.overlap = overlap;
            options.frequencyOrder = frequencyOrder;
            expectLossless(draw(motif, 83, 61, channels, maximum), options);
          }
        }
      }
    }
  }
}

TEST(JxrEncode, IsDecodedAlikeAtEveryQuantiser) {
  for (const int maximum : {255, 65535}) {
    for (const int channels : {1, 3}) {
      const Image image = draw(Motif::kScene, 70, 50, channels, maximum);
      for (int index = 0; index < 256; index += 15) {
        SCOPED_TRACE(testing::Message() << maximum << ' ' << channels << ' ' << index);
        EncodeOptions options;
        options.quantiser = index;
        options.overlap = index % 3;
        options.frequencyOrder = index % 2 == 1;
        const Image decoded = decodedAlike(image, options);
        if (index == 0) {
          EXPECT_EQ(difference(decoded, image).largest, 0);
        }
      }
    }
  }
}

TEST(JxrEncode, QualityIsWorthItsBytes) {
  for (const int maximum : {255, 65535}) {
    const Image image = draw(Motif::kScene, 160, 120, 3, maximum);
    double lastPsnr = 0;
    size_t lastSize = 0;
    for (const int quality : {10, 30, 50, 70, 85, 95, 99}) {
      EncodeOptions options;
      options.quality = quality;
      const Bytes file = encodeJxr(image, options);
      const double now = psnr(decodeJxr(file), image);
      EXPECT_GT(now, lastPsnr + 1) << quality;
      EXPECT_GT(file.size(), lastSize) << quality;
      lastPsnr = now;
      lastSize = file.size();
    }
    EXPECT_GT(lastPsnr, 45);
  }
}

TEST(JxrEncode, HalvedChroma) {
  for (const int maximum : {255, 65535}) {
    const Image image = draw(Motif::kScene, 100, 75, 3, maximum);
    for (const Subsampling subsampling : kSubsamplings) {
      for (int overlap = 0; overlap <= 2; ++overlap) {
        for (const int quality : {100, 95, 80, 40}) {
          SCOPED_TRACE(testing::Message() << maximum << ' ' << static_cast<int>(subsampling) << ' '
                                          << overlap << ' ' << quality);
          EncodeOptions options;
          options.subsampling = subsampling;
          options.overlap = overlap;
          options.quality = quality;
          options.frequencyOrder = overlap == 1;
          const Image decoded = decodedAlike(image, options);
          if (quality == 100) {
            EXPECT_GT(psnr(decoded, image), 33);
          }
        }
      }
    }
  }
}

TEST(JxrEncode, EverySize) {
  const int sizes[][2] = {{1, 1}, {16, 16}, {17, 3}, {8, 40}, {33, 16}, {300, 20}, {20, 4200}};
  for (const auto& size : sizes) {
    SCOPED_TRACE(testing::Message() << size[0] << " x " << size[1]);
    for (const int channels : {1, 3}) {
      for (int overlap = 0; overlap <= 2; ++overlap) {
        EncodeOptions options = lossless();
        options.overlap = overlap;
        expectLossless(draw(Motif::kScene, size[0], size[1], channels), options);
      }
    }
    for (const Subsampling subsampling : {Subsampling::k422, Subsampling::k420}) {
      EncodeOptions options;
      options.subsampling = subsampling;
      decodedAlike(draw(Motif::kScene, size[0], size[1], 3), options);
    }
  }
}

TEST(JxrEncode, TilesInBothOrders) {
  const Image image = draw(Motif::kScene, 150, 130, 3);
  const int tiles[][2] = {{16, 16}, {64, 32}, {160, 16}, {16, 160}, {1024, 64}};
  for (const auto& tile : tiles) {
    for (const bool frequencyOrder : {false, true}) {
      for (int overlap = 0; overlap <= 2; ++overlap) {
        SCOPED_TRACE(testing::Message()
                     << tile[0] << ' ' << tile[1] << ' ' << frequencyOrder << ' ' << overlap);
        EncodeOptions options = lossless();
        options.tileWidth = tile[0];
        options.tileHeight = tile[1];
        options.frequencyOrder = frequencyOrder;
        options.overlap = overlap;
        expectLossless(image, options);
        options.quality = 80;
        options.subsampling = Subsampling::k420;
        decodedAlike(image, options);
      }
    }
  }
}

// The judge mixes up the borders of columns and rows: here they are the same.
TEST(JxrEncode, HardTiles) {
  const Image image = draw(Motif::kScene, 128, 128, 3);
  for (int overlap = 0; overlap <= 2; ++overlap) {
    SCOPED_TRACE(overlap);
    EncodeOptions options = lossless();
    options.overlap = overlap;
    options.tileWidth = 48;
    options.tileHeight = 48;
    options.hardTiles = true;
    expectLossless(image, options);
    options.quality = 60;
    const Image hard = decodedAlike(image, options);
    options.hardTiles = false;
    EXPECT_EQ(difference(hard, decodedAlike(image, options)).largest > 0, overlap > 0);
    options.hardTiles = true;
    options.subsampling = Subsampling::k420;
    decodedAlike(image, options);
  }
}

TEST(JxrEncode, TrimmedFlexbits) {
  for (const int maximum : {255, 65535}) {
    const Image image = draw(Motif::kNoise, 64, 48, 3, maximum);
    size_t lastSize = 0;
    for (const int trim : {15, 6, 4, 3, 2, 1, 0}) {
      for (const bool frequencyOrder : {false, true}) {
        SCOPED_TRACE(testing::Message() << maximum << ' ' << trim << ' ' << frequencyOrder);
        EncodeOptions options = lossless();
        options.trim = trim;
        options.frequencyOrder = frequencyOrder;
        const Image decoded = decodedAlike(image, options);
        if (trim == 0) {
          EXPECT_EQ(difference(decoded, image).largest, 0);
        }
        if (frequencyOrder) continue;
        const size_t size = encodeJxr(image, options).size();
        EXPECT_GE(size, lastSize);
        lastSize = size;
      }
    }
  }
}

TEST(JxrEncode, InksComeBack) {
  for (const int maximum : {255, 65535}) {
    const Image image = draw(Motif::kScene, 50, 40, 4, maximum);
    expectLossless(image, lossless());
    EncodeOptions options;
    options.quality = 95;
    options.frequencyOrder = true;
    EXPECT_GT(psnr(decodedAlike(image, options), image), 35);
  }
}

TEST(JxrEncode, OtherMaximaAreScaled) {
  const Image image = draw(Motif::kScene, 30, 20, 1, 4095);
  const Image decoded = decodeJxr(encodeJxr(image, lossless()));
  EXPECT_EQ(decoded.maximum(), 65535);
  EXPECT_NEAR(decoded.wideRow(3)[5], image.wideRow(3)[5] * 65535.0 / 4095, 0.51);
}

TEST(JxrEncode, SaysWhichOptionsDoNotDo) {
  const Image narrow = draw(Motif::kScene, 16, 40, 3);
  const auto refusal = [&](const EncodeOptions& options) -> std::string {
    try {
      encodeJxr(narrow, options);
    } catch (const Error& error) {
      return error.what();
    }
    return "";
  };
  EncodeOptions options;
  options.quality = 0;
  EXPECT_EQ(refusal(options), "a quality is from 1 to 100");
  options = {};
  options.quantiser = 256;
  EXPECT_EQ(refusal(options), "a quantiser is from 0 to 255");
  options = {};
  options.overlap = 3;
  EXPECT_EQ(refusal(options), "an overlap level is from 0 to 2");
  options = {};
  options.trim = 16;
  EXPECT_EQ(refusal(options), "a number of trimmed bits is from 0 to 15");
  options = {};
  options.tileWidth = 40;
  EXPECT_EQ(refusal(options), "a tile's sides are multiples of 16");
  options = {};
  options.subsampling = Subsampling::k422;
  options.overlap = 2;
  EXPECT_EQ(refusal(options), "both overlap filters with halved chroma take more than 16 columns");
  options.overlap = 1;
  EXPECT_EQ(refusal(options), "");
}

}  // namespace
