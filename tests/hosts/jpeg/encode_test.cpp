// Our JPEG files, as others read them.
#include "hosts/jpeg/encode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "hosts/image_convert.h"
#include "hosts/jpeg/decode.h"
#include "hosts/jpeg/tables.h"
#include "tests/hosts/support/judges.h"
#include "tests/hosts/support/pictures.h"

namespace {

using orbhost::Bytes;
using orbhost::Error;
using orbhost::Image;
using orbhost::jpeg::decodeJpeg;
using orbhost::jpeg::encodeJpeg;
using orbhost::jpeg::EncodeOptions;
using orbhost::jpeg::Sampling;
using orbtest::cjpeg;
using orbtest::Difference;
using orbtest::difference;
using orbtest::draw;
using orbtest::judgeDecode;
using orbtest::Motif;
using orbtest::photograph;
using orbtest::psnr;

constexpr Sampling kSamplings[] = {Sampling::k444, Sampling::k422, Sampling::k420, Sampling::kGrey};

EncodeOptions optionsOf(Sampling sampling, int quality) {
  EncodeOptions options;
  options.sampling = sampling;
  options.quality = quality;
  return options;
}

// What cjpeg takes for the same file. Its tables of 16 bits at low qualities are not baseline.
std::vector<std::string> cjpegOptions(const EncodeOptions& options) {
  std::vector<std::string> words = {"-baseline", "-dct", "int", "-quality",
                                    std::to_string(options.quality)};
  switch (*options.sampling) {
    case Sampling::k444:
      words.insert(words.end(), {"-sample", "1x1"});
      break;
    case Sampling::k422:
      words.insert(words.end(), {"-sample", "2x1"});
      break;
    case Sampling::k420:
      words.insert(words.end(), {"-sample", "2x2"});
      break;
    case Sampling::kGrey:
      words.push_back("-grayscale");
      break;
  }
  if (options.optimize) words.push_back("-optimize");
  if (options.restartInterval != 0) {
    words.insert(words.end(), {"-restart", std::to_string(options.restartInterval) +
                                               (options.restartInRows ? "" : "B")});
  }
  return words;
}

// The judge and we see the same picture: two inverse transforms, each within 1 of the exact sample,
// round it up or down. A difference of 1 stays that in the doubling of chroma, and the conversion
// to RGB turns 1 in luma and 1 in chroma into at most 1 + 1.772, which is rounded to 3.
Difference expectSamePicture(const Bytes& file) {
  const Difference off = difference(judgeDecode(file), decodeJpeg(file, {}));
  EXPECT_LE(off.largest, 3);
  return off;
}

Image lumaOf(const Image& image) {
  Image grey(image.width(), image.height(), 1);
  for (size_t i = 0; i < grey.size(); ++i) {
    const uint8_t* const rgb = image.row(0) + 3 * i;
    grey.row(0)[i] =
        static_cast<uint8_t>(std::lround(0.299 * rgb[0] + 0.587 * rgb[1] + 0.114 * rgb[2]));
  }
  return grey;
}

TEST(JpegEncode, EverySmallSizeIsReadByTheJudge) {
  for (const Sampling sampling : kSamplings) {
    for (int height = 1; height <= 19; ++height) {
      for (int width = 1; width <= 17; ++width) {
        SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height) + ", sampling " +
                     std::to_string(static_cast<int>(sampling)));
        const Image image = draw(Motif::kGradient, width, height, 3);
        const Bytes file = encodeJpeg(image, optionsOf(sampling, 90));
        expectSamePicture(file);
        if (HasFailure()) return;
      }
    }
  }
}

TEST(JpegEncode, EveryKindOfFileIsReadByTheJudge) {
  for (const Sampling sampling : kSamplings) {
    for (const int quality : {1, 10, 50, 90, 100}) {
      for (const int variant : {0, 1, 2, 3}) {
        EncodeOptions options = optionsOf(sampling, quality);
        options.optimize = variant % 2 == 1;
        options.restartInterval = variant;
        options.restartInRows = variant == 3;
        for (const Motif motif : {Motif::kScene, Motif::kNoise, Motif::kEdges}) {
          SCOPED_TRACE("sampling " + std::to_string(static_cast<int>(sampling)) + ", quality " +
                       std::to_string(quality) + ", variant " + std::to_string(variant));
          expectSamePicture(encodeJpeg(draw(motif, 173, 91, 3), options));
          expectSamePicture(encodeJpeg(draw(motif, 64, 48, 1), options));
          if (HasFailure()) return;
        }
      }
    }
  }
}

TEST(JpegEncode, ThePhotographIsReadByDjpegAsByUs) {
  for (const Sampling sampling : kSamplings) {
    for (const int quality : {50, 75, 90, 98}) {
      const Bytes file = encodeJpeg(photograph(), optionsOf(sampling, quality));
      const Difference off = difference(orbtest::djpeg(file), decodeJpeg(file, {}));
      std::printf("sampling %d quality %2d: largest difference %d, mean %.4f\n",
                  static_cast<int>(sampling), quality, off.largest, off.mean);
      EXPECT_LE(off.largest, 3);
      EXPECT_LT(off.mean, 0.1);
    }
  }
}

// Everything before the coded data is the same as cjpeg's to the byte: the segments, their order,
// the tables for every quality.
TEST(JpegEncode, HeadersAreThoseOfCjpeg) {
  const auto header = [](const Bytes& file) {
    const uint8_t sos[] = {0xFF, 0xDA};
    const auto scan = std::search(file.begin(), file.end(), sos, sos + 2);
    return Bytes(file.begin(), scan + 2 + scan[3]);
  };
  const Image image = draw(Motif::kScene, 40, 24, 3);
  for (int quality = 1; quality <= 100; ++quality) {
    EncodeOptions options = optionsOf(kSamplings[quality % 4], quality);
    options.restartInterval = quality % 3;
    EXPECT_EQ(header(encodeJpeg(image, options)), header(cjpeg(image, cjpegOptions(options))))
        << "quality " << quality;
  }
}

// Same tables, nearly the same coefficients: the files differ where a coefficient lies near the
// middle between two steps. The photograph was a JPEG file before, so at high qualities whole areas
// of it lie on such middles, as those of a drawn scene do at any.
TEST(JpegEncode, FilesAreAsLargeAndAsGoodAsCjpegs) {
  const Image& image = photograph();
  const Image luma = lumaOf(image);
  for (const Sampling sampling : kSamplings) {
    for (const int quality : {25, 50, 75, 85, 90, 95}) {
      const EncodeOptions options = optionsOf(sampling, quality);
      const Bytes ours = encodeJpeg(image, options);
      const Bytes theirs = cjpeg(image, cjpegOptions(options));
      const double percent = 100.0 * ours.size() / theirs.size() - 100;
      const Image& original = sampling == Sampling::kGrey ? luma : image;
      const double oursGood = psnr(original, judgeDecode(ours));
      const double theirsGood = psnr(original, judgeDecode(theirs));
      std::printf("sampling %d quality %d: %zu bytes, cjpeg %zu, %+.3f %%; %.2f dB, %+.3f dB\n",
                  static_cast<int>(sampling), quality, ours.size(), theirs.size(), percent,
                  oursGood, oursGood - theirsGood);
      const bool usual = quality >= 50 && quality <= 90 && orbtest::isPhotographThere();
      EXPECT_LE(std::abs(percent), usual ? 0.2 : 2);
      EXPECT_GT(oursGood, theirsGood - (usual ? 0.2 : 1));
    }
  }
}

// The blocks in the file are the quantised DCT (T.81 A.3.3) of the picture with its edges repeated.
// A quotient may be off the nearest by the transform's own rounding, to a quarter, and by what its
// reciprocal is too large, at most one part in 8192 / divisor.
TEST(JpegEncode, CoefficientsAreThoseOfTheSamples) {
  const Image image = draw(Motif::kScene, 61, 43, 1);
  for (const int quality : {10, 80, 100}) {
    EncodeOptions options = optionsOf(Sampling::kGrey, quality);
    const Bytes file = encodeJpeg(image, options);
    // The table as the file has it, in zigzag order.
    const uint8_t dqt[] = {0xFF, 0xDB};
    const auto divisors = std::search(file.begin(), file.end(), dqt, dqt + 2) + 5;
    const auto components = orbtest::judgeCoefficients(file);
    options.optimize = true;
    EXPECT_EQ(orbtest::judgeCoefficients(encodeJpeg(image, options))[0].values,
              components[0].values);
    ASSERT_EQ(components.size(), 1u);
    ASSERT_EQ(components[0].blocksWide, 8);
    ASSERT_EQ(components[0].blocksHigh, 6);
    for (int block = 0; block < 48; ++block) {
      for (int k = 0; k < 64; ++k) {
        const int u = orbhost::jpeg::kZigzag[k] % 8;
        const int v = orbhost::jpeg::kZigzag[k] / 8;
        double sum = 0;
        for (int i = 0; i < 64; ++i) {
          const int x = std::min(block % 8 * 8 + i % 8, image.width() - 1);
          const int y = std::min(block / 8 * 8 + i / 8, image.height() - 1);
          sum += (image.row(y)[x] - 128) * std::cos((2 * (i % 8) + 1) * u * M_PI / 16) *
                 std::cos((2 * (i / 8) + 1) * v * M_PI / 16);
        }
        const double exact = sum / 4 * (u == 0 ? M_SQRT1_2 : 1) * (v == 0 ? M_SQRT1_2 : 1);
        const double quotient = exact / divisors[k];
        const double tolerance = 0.5 + 0.6 / divisors[k] + std::abs(exact) / 32768;
        ASSERT_NEAR(components[0].values[static_cast<size_t>(block) * 64 + 8 * v + u], quotient,
                    tolerance)
            << "quality " << quality << ", block " << block << ", coefficient " << k;
      }
    }
  }
}

TEST(JpegEncode, OptimizedTablesChangeTheSizeAndNothingElse) {
  for (const Sampling sampling : kSamplings) {
    EncodeOptions options = optionsOf(sampling, 75);
    const Image image = draw(Motif::kScene, 200, 120, 3);
    const Bytes plain = encodeJpeg(image, options);
    options.optimize = true;
    const Bytes optimized = encodeJpeg(image, options);
    EXPECT_LT(optimized.size(), plain.size());
    EXPECT_EQ(difference(decodeJpeg(plain, {}), decodeJpeg(optimized, {})).largest, 0);
    // jpegtran makes the same tables from the same symbols.
    EXPECT_EQ(orbtest::jpegtran(plain, {"-optimize"}), optimized);
  }
}

TEST(JpegEncode, RestartMarkersComeWhereTheyAreWanted) {
  const Image image = draw(Motif::kScene, 100, 80, 3);  // 7 x 5 MCUs
  const auto restarts = [&](int interval, bool rows) {
    EncodeOptions options = optionsOf(Sampling::k420, 80);
    options.restartInterval = interval;
    options.restartInRows = rows;
    const Bytes file = encodeJpeg(image, options);
    int count = 0;
    for (size_t i = 0; i + 1 < file.size(); ++i) {
      if (file[i] == 0xFF && (file[i + 1] & 0xF8) == 0xD0) {
        EXPECT_EQ(file[i + 1] & 7, count % 8);
        ++count;
      }
    }
    expectSamePicture(file);
    return count;
  };
  EXPECT_EQ(restarts(0, false), 0);
  EXPECT_EQ(restarts(1, false), 34);
  EXPECT_EQ(restarts(34, false), 1);
  EXPECT_EQ(restarts(35, false), 0);
  EXPECT_EQ(restarts(1, true), 4);
  EXPECT_EQ(restarts(2, true), 2);
}

TEST(JpegEncode, RefusesWhatTheFormatCannotHold) {
  EXPECT_THROW(encodeJpeg(Image(65536, 1, 1), {}), Error);
  EXPECT_THROW(encodeJpeg(Image(1, 65536, 1), {}), Error);
  const Image image = draw(Motif::kGradient, 4096, 16, 1);
  EncodeOptions options = optionsOf(Sampling::kGrey, 50);
  options.restartInRows = true;
  options.restartInterval = 200;  // rows of 512 MCUs
  EXPECT_THROW(encodeJpeg(image, options), Error);
  EXPECT_THROW(encodeJpeg(image, optionsOf(Sampling::kGrey, 0)), Error);
  EXPECT_THROW(encodeJpeg(image, optionsOf(Sampling::kGrey, 101)), Error);
}

TEST(JpegEncode, OtherMaximaAreRescaled) {
  for (const int maximum : {1, 15, 1000, 65535}) {
    const Image image = draw(Motif::kScene, 40, 30, 3, maximum);
    EXPECT_EQ(encodeJpeg(image, {}), encodeJpeg(orbhost::withMaximum(image, 255), {}));
  }
}

TEST(JpegEncode, TakesTheLargestSides) {
  for (const auto& [width, height] : {std::pair{65535, 2}, std::pair{3, 65535}}) {
    const Bytes file =
        encodeJpeg(draw(Motif::kGradient, width, height, 1), optionsOf(Sampling::kGrey, 50));
    const Image decoded = decodeJpeg(file, {});
    EXPECT_EQ(decoded.width(), width);
    EXPECT_EQ(decoded.height(), height);
  }
}

}  // namespace
