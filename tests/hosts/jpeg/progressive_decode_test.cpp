// Others' progressive files, and files of several scans, as we read them: to the same coefficients.
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "hosts/error.h"
#include "hosts/jpeg/decode.h"
#include "tests/hosts/support/coefficients.h"
#include "tests/hosts/support/judges.h"
#include "tests/hosts/support/pictures.h"
#include "tests/hosts/support/program.h"
#include "tests/hosts/support/segments.h"

namespace {

using orbhost::Bytes;
using orbhost::Error;
using orbhost::Image;
using orbhost::jpeg::decodeJpeg;
using orbtest::cjpeg;
using orbtest::difference;
using orbtest::draw;
using orbtest::expectEqual;
using orbtest::FileParts;
using orbtest::jpegtran;
using orbtest::judgeCoefficients;
using orbtest::judgeDecode;
using orbtest::Motif;
using orbtest::ourCoefficients;

using Options = std::vector<std::string>;

const char* const kSamplings[] = {"1x1",         "2x1",         "1x2",        "2x2",
                                  "2x2,2x1,1x2", "1x1,2x2,1x1", "1x2,2x1,2x1"};

void expectSameCoefficients(const Bytes& file) {
  expectEqual(ourCoefficients(file), judgeCoefficients(file));
}

// What cjpeg makes with a script of scans.
Bytes cjpegScans(const Image& image, const std::string& script, Options options = {}) {
  const orbtest::Directory directory;
  std::ofstream(directory / "scans") << script;
  options.insert(options.end(), {"-scans", directory / "scans"});
  return cjpeg(image, options);
}

TEST(JpegProgressiveDecode, EverySamplingAndSizeOfCjpeg) {
  for (const char* const sampling : kSamplings) {
    for (const auto& [width, height] : {std::pair{200, 120}, std::pair{33, 17}, std::pair{5, 3},
                                        std::pair{3, 40}, std::pair{1, 1}}) {
      SCOPED_TRACE(std::string(sampling) + ", " + std::to_string(width) + " x " +
                   std::to_string(height));
      expectSameCoefficients(cjpeg(draw(Motif::kScene, width, height, 3),
                                   {"-progressive", "-sample", sampling, "-quality", "90"}));
    }
  }
}

TEST(JpegProgressiveDecode, EveryOptionOfCjpeg) {
  for (const Motif motif : {Motif::kScene, Motif::kNoise, Motif::kEdges}) {
    const Image colour = draw(motif, 150, 75, 3);
    for (const Options& more :
         {Options{}, Options{"-restart", "1"}, Options{"-restart", "1B"}, Options{"-restart", "5B"},
          Options{"-grayscale"}, Options{"-rgb"}, Options{"-quality", "100"},
          Options{"-quality", "10"}, Options{"-grayscale", "-restart", "3B"}}) {
      Options options = {"-progressive"};
      options.insert(options.end(), more.begin(), more.end());
      expectSameCoefficients(cjpeg(colour, options));
    }
  }
}

// End-of-band runs of more blocks than one symbol holds.
TEST(JpegProgressiveDecode, LongRuns) {
  Image image(2048, 1200, 1);
  for (size_t i = 0; i < image.size(); ++i) image.row(0)[i] = 100;
  image.row(1199)[2047] = 255;
  expectSameCoefficients(cjpeg(image, {"-progressive"}));
}

TEST(JpegProgressiveDecode, Scripts) {
  const Image image = draw(Motif::kScene, 117, 59, 3);
  for (const char* const script :
       {"0,1,2: 0-0, 0, 0; 0: 1-63, 0, 0; 1: 1-63, 0, 0; 2: 1-63, 0, 0;",
        // One component after the other, every bit by itself.
        "0: 0-0, 0, 3; 0: 0-0, 3, 2; 0: 0-0, 2, 1; 0: 0-0, 1, 0; 1,2: 0-0, 0, 0;"
        "0: 1-63, 0, 4; 0: 1-63, 4, 3; 0: 1-63, 3, 2; 0: 1-63, 2, 1; 0: 1-63, 1, 0;"
        "2: 1-10, 0, 1; 2: 11-63, 0, 0; 1: 1-63, 0, 0; 2: 1-10, 1, 0;",
        // Bands that are cut in another way when they are refined.
        "0,1,2: 0-0, 0, 1; 0: 1-20, 0, 2; 0: 21-63, 0, 2; 0: 1-5, 2, 1; 0: 6-63, 2, 1;"
        "0: 40-40, 1, 0; 0: 1-39, 1, 0; 0: 41-63, 1, 0; 1,2: 0-0, 1, 0;",
        // Much is never told.
        "0,1,2: 0-0, 0, 2; 0: 1-3, 0, 3; 1: 63-63, 0, 0;"}) {
    SCOPED_TRACE(script);
    for (const char* const sampling : {"1x1", "2x2"}) {
      for (const char* const restart : {"0", "1", "7B"}) {
        expectSameCoefficients(
            cjpegScans(image, script, {"-sample", sampling, "-restart", restart}));
      }
    }
  }
}

TEST(JpegProgressiveDecode, ThereAndBackByJpegtran) {
  for (const char* const sampling : {"1x1", "2x1", "2x2"}) {
    const Image image = draw(Motif::kScene, 133, 77, 3);
    const Bytes baseline = cjpeg(image, {"-sample", sampling, "-quality", "93"});
    const Bytes progressive = jpegtran(baseline, {"-progressive"});
    const Bytes back = jpegtran(progressive, {"-restart", "1"});
    const auto expected = judgeCoefficients(baseline);
    expectEqual(ourCoefficients(baseline), expected);
    expectEqual(ourCoefficients(progressive), expected);
    expectEqual(ourCoefficients(back), expected);
    for (const int scale : {1, 2, 4, 8}) {
      orbhost::jpeg::DecodeOptions options;
      options.scale = scale;
      const Image whole = decodeJpeg(baseline, options);
      EXPECT_EQ(difference(decodeJpeg(progressive, options), whole).largest, 0);
      EXPECT_EQ(difference(decodeJpeg(back, options), whole).largest, 0);
    }
  }
}

TEST(JpegProgressiveDecode, ThePhotograph) {
  expectSameCoefficients(cjpeg(orbtest::photograph(), {"-progressive", "-quality", "90"}));
}

TEST(JpegProgressiveDecode, Inks) {
  orbtest::JudgeOptions options;
  options.ycck = true;
  expectSameCoefficients(jpegtran(orbtest::judgeEncodeCmyk(draw(Motif::kScene, 70, 45, 4), options),
                                  {"-progressive"}));
}

// After some of the scans the picture is that of a file that has no more of them.
TEST(JpegProgressiveDecode, StopsAfterScans) {
  const Image image = draw(Motif::kScene, 100, 60, 3);
  for (const Bytes& file :
       {cjpeg(image, {"-progressive"}), cjpeg(image, {"-progressive", "-restart", "2B"})}) {
    const FileParts parts(file);
    ASSERT_EQ(parts.scans.size(), 10u);
    for (int scans = 1; scans <= 10; ++scans) {
      const Bytes shorter = parts.withFirst(scans);
      expectEqual(ourCoefficients(file, scans), judgeCoefficients(shorter));
      expectEqual(ourCoefficients(shorter), judgeCoefficients(shorter));
      orbhost::jpeg::DecodeOptions options;
      options.scansTo = scans;
      EXPECT_LE(difference(decodeJpeg(file, options), judgeDecode(shorter)).largest, 3);
      // What lies behind those scans may be damaged.
      Bytes cut = shorter;
      cut.resize(cut.size() - 2);
      cut.insert(cut.end(), 100, 0x55);
      EXPECT_EQ(difference(decodeJpeg(cut, options), decodeJpeg(shorter, {})).largest, 0);
    }
    EXPECT_EQ(difference(decodeJpeg(file, {1, 99}), decodeJpeg(file, {})).largest, 0);
  }
  EXPECT_THROW(decodeJpeg(cjpeg(image, {}), {1, -1}), Error);
}

// Components without a scan so far are neutral.
TEST(JpegProgressiveDecode, StopsBetweenSequentialScans) {
  const Image image = draw(Motif::kScene, 50, 40, 3);
  const Bytes file = cjpegScans(image, "0; 1; 2;");
  const Image luma = decodeJpeg(file, {1, 1});
  ASSERT_EQ(luma.channels(), 3);
  const Image grey = decodeJpeg(jpegtran(file, {"-grayscale"}), {});
  for (size_t i = 0; i < grey.size(); ++i) {
    for (size_t c = 0; c < 3; ++c) ASSERT_EQ(luma.row(0)[3 * i + c], grey.row(0)[i]);
  }
  EXPECT_EQ(difference(decodeJpeg(file, {1, 3}), decodeJpeg(file, {})).largest, 0);
  // One scan of all components has nothing to stop at.
  const Bytes baseline = cjpeg(image, {});
  EXPECT_EQ(difference(decodeJpeg(baseline, {1, 1}), decodeJpeg(baseline, {})).largest, 0);
}

TEST(JpegProgressiveDecode, ScansOutOfOrderAreNamed) {
  const auto message = [](const Bytes& file) -> std::string {
    try {
      decodeJpeg(file, {});
    } catch (const Error& error) {
      return error.what();
    }
    return "decoded";
  };
  const Image image = draw(Motif::kScene, 40, 30, 3);
  // 0 DC, 1 luma 1-5, 2 Cr, 3 Cb, 4 luma 6-63, 5 luma refined, 6 DC refined, 7 Cr, 8 Cb, 9 luma.
  const FileParts parts(cjpeg(image, {"-progressive"}));
  const auto expectSays = [&](const std::vector<int>& scans, const std::string& text) {
    const std::string said = message(parts.with(scans));
    EXPECT_NE(said.find(text), std::string::npos) << said;
  };
  expectSays({0, 6, 3, 8, 2, 7, 4, 1, 5, 9}, "decoded");
  expectSays({1, 0}, "AC coefficients of component 0 come before its DC");
  expectSays({0, 0}, "coefficient 0 of component 0 is coded a second time");
  expectSays({0, 1, 4, 1}, "coefficient 1 of component 0 is coded a second time");
  expectSays({0, 6, 6},
             "coefficient 0 of component 0 is refined from bit 1, but known down to bit 0");
  expectSays({0, 1, 5}, "coefficient 6 of component 0 is refined before it is coded");
  expectSays({0, 1, 4, 9}, "refined from bit 1, but known down to bit 2");

  const FileParts single(cjpegScans(image, "0; 1 2;"));
  const Bytes twice = single.with({0, 0});
  EXPECT_NE(message(twice).find("a second scan of component 0"), std::string::npos);
  EXPECT_NE(message(single.with({0})).find("before every component has had its scan"),
            std::string::npos);
}

}  // namespace
