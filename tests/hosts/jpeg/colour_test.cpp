// Pictures in other colours than YCbCr: inks, and RGB as it is.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "hosts/error.h"
#include "hosts/jpeg/decode.h"
#include "hosts/jpeg/encode.h"
#include "tests/hosts/support/coefficients.h"
#include "tests/hosts/support/judges.h"
#include "tests/hosts/support/pictures.h"
#include "tests/hosts/support/segments.h"

namespace {

using orbhost::Bytes;
using orbhost::Error;
using orbhost::Image;
using orbhost::jpeg::ColourSpace;
using orbhost::jpeg::decodeJpeg;
using orbhost::jpeg::encodeJpeg;
using orbhost::jpeg::EncodeOptions;
using orbhost::jpeg::Sampling;
using orbtest::difference;
using orbtest::draw;
using orbtest::findMarker;
using orbtest::Motif;
using orbtest::psnr;

EncodeOptions optionsOf(ColourSpace colours, std::optional<Sampling> sampling, int quality) {
  EncodeOptions options;
  options.colours = colours;
  options.sampling = sampling;
  options.quality = quality;
  return options;
}

Image complementOf(const Image& image) {
  Image result(image.width(), image.height(), image.channels());
  for (size_t i = 0; i < image.size(); ++i) {
    result.row(0)[i] = static_cast<uint8_t>(255 - image.row(0)[i]);
  }
  return result;
}

Bytes headerOf(const Bytes& file) {
  return orbtest::slice(file, 0, findMarker(file, 0xDA));
}

TEST(JpegInks, TheJudgeReadsTheSame) {
  for (const auto& [width, height] :
       {std::pair{120, 75}, std::pair{33, 18}, std::pair{3, 5}, std::pair{1, 1}}) {
    const Image inks = draw(Motif::kScene, width, height, 4);
    for (const EncodeOptions& options :
         {optionsOf(ColourSpace::kCmyk, {}, 90), optionsOf(ColourSpace::kYcck, {}, 90),
          optionsOf(ColourSpace::kYcck, Sampling::k422, 75),
          optionsOf(ColourSpace::kYcck, Sampling::k444, 90)}) {
      const Bytes file = encodeJpeg(inks, options);
      const Image decoded = decodeJpeg(file, {});
      ASSERT_EQ(decoded.channels(), 4);
      // As in RGB two inverse transforms differ by 1, which a conversion turns into 3 at most.
      const int largest = options.colours == ColourSpace::kCmyk ? 1 : 3;
      EXPECT_LE(difference(orbtest::judgeDecodeInks(file), decoded).largest, largest);
    }
  }
}

// The judge is given light, since it takes no view of what it stores.
TEST(JpegInks, HeadersAreThoseOfTheJudge) {
  const Image inks = draw(Motif::kScene, 64, 48, 4);
  for (const ColourSpace colours : {ColourSpace::kCmyk, ColourSpace::kYcck}) {
    orbtest::JudgeOptions judge;
    judge.ycck = colours == ColourSpace::kYcck;
    EXPECT_EQ(headerOf(encodeJpeg(inks, optionsOf(colours, {}, judge.quality))),
              headerOf(orbtest::judgeEncodeCmyk(complementOf(inks), judge)));
  }
}

TEST(JpegInks, ComeBackNearly) {
  const Image inks = draw(Motif::kScene, 100, 80, 4);
  EXPECT_GT(psnr(inks, decodeJpeg(encodeJpeg(inks, optionsOf(ColourSpace::kCmyk, {}, 100)), {})),
            50);
  EXPECT_GT(
      psnr(inks,
           decodeJpeg(encodeJpeg(inks, optionsOf(ColourSpace::kYcck, Sampling::k444, 100)), {})),
      45);
  // YCCK is what is made of inks if nothing is said.
  EncodeOptions options;
  EXPECT_EQ(encodeJpeg(inks, options), encodeJpeg(inks, optionsOf(ColourSpace::kYcck, {}, 85)));
}

TEST(JpegInks, OneSheetOfEachInk) {
  for (int c = 0; c < 4; ++c) {
    Image inks(16, 16, 4);
    for (size_t i = 0; i < inks.size(); ++i)
      inks.row(0)[i] = i % 4 == static_cast<size_t>(c) ? 255 : 0;
    for (const ColourSpace colours : {ColourSpace::kCmyk, ColourSpace::kYcck}) {
      EXPECT_LE(
          difference(inks, decodeJpeg(encodeJpeg(inks, optionsOf(colours, {}, 95)), {})).largest,
          3);
    }
  }
}

TEST(JpegInks, InProgressiveFiles) {
  for (const ColourSpace colours : {ColourSpace::kCmyk, ColourSpace::kYcck}) {
    const Image inks = draw(Motif::kScene, 90, 61, 4);
    EncodeOptions options = optionsOf(colours, {}, 90);
    options.restartInterval = 3;
    const auto baseline = orbtest::judgeCoefficients(encodeJpeg(inks, options));
    options.progressive = true;
    orbtest::expectEqual(orbtest::judgeCoefficients(encodeJpeg(inks, options)), baseline);
  }
}

TEST(JpegRgb, IsStoredAsCjpegStoresIt) {
  const Image image = draw(Motif::kScene, 75, 50, 3);
  EncodeOptions options = optionsOf(ColourSpace::kRgb, {}, 90);
  const Bytes file = encodeJpeg(image, options);
  EXPECT_EQ(headerOf(file), headerOf(orbtest::cjpeg(image, {"-rgb", "-quality", "90"})));
  EXPECT_LE(difference(orbtest::judgeDecode(file), decodeJpeg(file, {})).largest, 1);
  EXPECT_GT(psnr(image, decodeJpeg(file, {})), 35);
  options.progressive = true;
  EXPECT_EQ(encodeJpeg(image, options), orbtest::jpegtran(file, {"-progressive"}));
}

TEST(JpegColours, ThatDoNotGoWithThePicture) {
  const auto refuses = [](int channels, const EncodeOptions& options) {
    EXPECT_THROW(encodeJpeg(draw(Motif::kScene, 8, 8, channels), options), Error);
  };
  refuses(1, optionsOf(ColourSpace::kRgb, {}, 90));
  refuses(1, optionsOf(ColourSpace::kYCbCr, {}, 90));
  refuses(3, optionsOf(ColourSpace::kCmyk, {}, 90));
  refuses(3, optionsOf(ColourSpace::kRgb, Sampling::kGrey, 90));
  refuses(3, optionsOf(ColourSpace::kRgb, Sampling::k420, 90));
  refuses(4, optionsOf(ColourSpace::kYCbCr, {}, 90));
  refuses(4, optionsOf(ColourSpace::kYcck, Sampling::kGrey, 90));
  refuses(4, optionsOf(ColourSpace::kCmyk, Sampling::k422, 90));
}

}  // namespace
