// Others' JPEG files, as we read them.
#include "hosts/jpeg/decode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "hosts/image_convert.h"
#include "tests/hosts/support/judges.h"
#include "tests/hosts/support/pictures.h"
#include "tests/hosts/support/program.h"

namespace {

using orbhost::Bytes;
using orbhost::Error;
using orbhost::Image;
using orbhost::withoutInks;
using orbhost::jpeg::decodeJpeg;
using orbtest::cjpeg;
using orbtest::Difference;
using orbtest::difference;
using orbtest::djpeg;
using orbtest::draw;
using orbtest::Motif;
using orbtest::photograph;
using orbtest::psnr;

using Options = std::vector<std::string>;

// All that cjpeg can make of one and two for three components, and that a scan may interleave.
const char* const kSamplings[] = {"1x1",         "2x1",         "1x2",         "2x2",
                                  "2x2,2x1,1x2", "1x1,2x2,1x1", "2x1,1x2,1x1", "1x2,2x1,2x1",
                                  "2x2,1x2,1x1", "2x1,2x2,1x1", "1x1,1x1,2x2", "2x2,1x1,2x2",
                                  "1x2,1x2,2x2", "2x2,2x2,1x2", "1x1,2x1,1x2"};

// As expected of two inverse transforms: see the encoder's tests.
constexpr int kLargestDifference = 3;
constexpr double kMeanDifference = 0.1;

void expectSamePicture(const Bytes& file) {
  const Difference off = difference(djpeg(file), decodeJpeg(file, {}));
  EXPECT_LE(off.largest, kLargestDifference);
}

std::string messageFor(const Bytes& file) {
  try {
    decodeJpeg(file, {});
  } catch (const Error& error) {
    return error.what();
  }
  return "decoded";
}

TEST(JpegDecode, EverySamplingOfCjpeg) {
  for (const char* const sampling : kSamplings) {
    for (const auto& [width, height] : {std::pair{200, 120}, std::pair{33, 17}, std::pair{5, 3},
                                        std::pair{3, 40}, std::pair{1, 1}}) {
      SCOPED_TRACE(std::string(sampling) + ", " + std::to_string(width) + " x " +
                   std::to_string(height));
      const Image image = draw(Motif::kScene, width, height, 3);
      expectSamePicture(cjpeg(image, {"-sample", sampling, "-quality", "92"}));
    }
  }
}

TEST(JpegDecode, EverySmallSizeOfTheCommonSamplings) {
  for (const char* const sampling : {"1x1", "2x1", "1x2", "2x2"}) {
    for (int size = 1; size <= 18; ++size) {
      SCOPED_TRACE(std::string(sampling) + ", " + std::to_string(size));
      const Options options = {"-sample", sampling};
      expectSamePicture(cjpeg(draw(Motif::kEdges, size, 19 - size, 3), options));
      expectSamePicture(cjpeg(draw(Motif::kNoise, size + 30, size, 3), options));
    }
  }
}

TEST(JpegDecode, EveryQuality) {
  const Image image = draw(Motif::kScene, 48, 40, 3);
  for (int quality = 1; quality <= 100; ++quality) {
    SCOPED_TRACE("quality " + std::to_string(quality));
    // Without -baseline the low ones have divisors of 16 bits, in an extended sequential file.
    expectSamePicture(cjpeg(image, {"-quality", std::to_string(quality)}));
  }
}

TEST(JpegDecode, ThePhotograph) {
  for (const char* const sampling : kSamplings) {
    const Bytes file = cjpeg(photograph(), {"-sample", sampling, "-quality", "90"});
    const Difference off = difference(djpeg(file), decodeJpeg(file, {}));
    std::printf("%-12s largest difference %d, mean %.4f\n", sampling, off.largest, off.mean);
    EXPECT_LE(off.largest, kLargestDifference) << sampling;
    EXPECT_LT(off.mean, kMeanDifference) << sampling;
  }
}

TEST(JpegDecode, EveryOptionOfCjpeg) {
  const Image colour = draw(Motif::kScene, 150, 75, 3);
  const Image grey = draw(Motif::kScene, 75, 50, 1);
  for (const Options& options :
       {Options{"-optimize"}, Options{"-restart", "1"}, Options{"-restart", "1B"},
        Options{"-restart", "3B", "-optimize"}, Options{"-grayscale"}, Options{"-rgb"},
        Options{"-rgb", "-restart", "5B"}, Options{"-smooth", "20"}}) {
    SCOPED_TRACE(options[0]);
    expectSamePicture(cjpeg(colour, options));
    if (options[0] != "-rgb") expectSamePicture(cjpeg(grey, options));
  }
  EXPECT_EQ(decodeJpeg(cjpeg(grey, {}), {}).channels(), 1);
  EXPECT_EQ(decodeJpeg(cjpeg(colour, {"-grayscale"}), {}).channels(), 1);
}

TEST(JpegDecode, ScansOfSomeComponents) {
  const orbtest::Directory directory;
  const Image image = draw(Motif::kScene, 117, 59, 3);
  for (const char* const scans : {"0; 1; 2;", "2; 1; 0;", "0; 1 2;", "0 2; 1;"}) {
    std::ofstream(directory / "scans") << scans;
    for (const char* const sampling : {"1x1", "2x1", "1x2", "2x2", "2x2,2x1,1x2"}) {
      for (const char* const restart : {"0", "1", "3B"}) {
        SCOPED_TRACE(std::string(scans) + " " + sampling + " " + restart);
        expectSamePicture(cjpeg(
            image, {"-scans", directory / "scans", "-sample", sampling, "-restart", restart}));
      }
    }
  }
}

TEST(JpegDecode, CommentsAndApplicationsSegmentsAreSkipped) {
  const Bytes file = cjpeg(draw(Motif::kScene, 30, 20, 3), {});
  const Bytes commented = orbtest::wrjpgcom(file, std::string(3000, '\xff'));
  EXPECT_GT(commented.size(), file.size() + 3000);
  EXPECT_EQ(difference(decodeJpeg(file, {}), decodeJpeg(commented, {})).largest, 0);

  // Fill bytes before a marker, and anything behind the end.
  Bytes filled = file;
  filled.insert(filled.begin() + 2, 5, 0xFF);
  filled.insert(filled.end(), 100, 0x5A);
  EXPECT_EQ(difference(decodeJpeg(file, {}), decodeJpeg(filled, {})).largest, 0);
}

TEST(JpegDecode, Cmyk) {
  const Image inks = draw(Motif::kScene, 70, 45, 4);
  for (const bool ycck : {false, true}) {
    orbtest::JudgeOptions options;
    options.ycck = ycck;
    const Bytes file = orbtest::judgeEncodeCmyk(inks, options);
    // What djpeg prints of inks is as with Adobe's inverted ones; the product adds no more than a
    // rounding to a difference.
    const Difference off = difference(djpeg(file), withoutInks(decodeJpeg(file, {})));
    EXPECT_LE(off.largest, kLargestDifference) << off;
  }

  // Without an Adobe segment a value is an amount of ink: djpeg shows the complement of what it
  // stands for, so the inks are turned around before.
  Image turned(inks.width(), inks.height(), 4);
  for (size_t i = 0; i < inks.size(); ++i) {
    turned.row(0)[i] = static_cast<uint8_t>(255 - inks.row(0)[i]);
  }
  orbtest::JudgeOptions options;
  options.quality = 100;
  const Image expected = djpeg(orbtest::judgeEncodeCmyk(inks, options));
  options.adobeMarker = false;
  const Image plain = withoutInks(decodeJpeg(orbtest::judgeEncodeCmyk(turned, options), {}));
  EXPECT_GT(psnr(expected, plain), 50);
}

TEST(JpegDecode, ReducedSizes) {
  for (const char* const sampling : kSamplings) {
    const Bytes file = cjpeg(photograph(), {"-sample", sampling, "-quality", "90"});
    for (const int scale : {2, 4, 8}) {
      const Image theirs = djpeg(file, {"-scale", "1/" + std::to_string(scale)});
      const Image ours = decodeJpeg(file, {scale});
      const double db = psnr(theirs, ours);
      std::printf("%-12s 1/%d: %.2f dB\n", sampling, scale, db);
      EXPECT_GE(db, 40) << sampling << " 1/" << scale;
    }
  }
}

TEST(JpegDecode, ReducedSizesAreRoundedUp) {
  for (const char* const sampling : {"1x1", "2x1", "1x2", "2x2", "1x1,2x2,1x1"}) {
    for (int size = 1; size <= 33; ++size) {
      const Bytes file = cjpeg(draw(Motif::kGradient, size, 34 - size, 3), {"-sample", sampling});
      for (const int scale : {2, 4, 8}) {
        const Image image = decodeJpeg(file, {scale});
        EXPECT_EQ(image.width(), (size + scale - 1) / scale);
        EXPECT_EQ(image.height(), (34 - size + scale - 1) / scale);
        // The means of blocks are the same in every decoder, up to the last rounding.
        if (scale == 8) {
          EXPECT_LE(difference(orbtest::judgeDecode(file, 8), image).largest, 3);
        }
      }
    }
  }
  EXPECT_THROW(decodeJpeg(cjpeg(draw(Motif::kGradient, 8, 8, 1), {}), {3}), Error);
}

TEST(JpegDecode, NamesWhatItDoesNotSupport) {
  const Image image = draw(Motif::kScene, 40, 30, 3);
  EXPECT_NE(messageFor(cjpeg(image, {"-arithmetic"})).find("arithmetic-coded"), std::string::npos);
  EXPECT_NE(messageFor(cjpeg(image, {"-sample", "4x1"})).find("sampling factors above 2"),
            std::string::npos);
}

}  // namespace
