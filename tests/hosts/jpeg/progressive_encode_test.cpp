// Our progressive files, and files of several scans: the coefficients of the baseline file.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "hosts/error.h"
#include "hosts/jpeg/decode.h"
#include "hosts/jpeg/encode.h"
#include "tests/hosts/support/coefficients.h"
#include "tests/hosts/support/judges.h"
#include "tests/hosts/support/pictures.h"
#include "tests/hosts/support/program.h"
#include "tests/hosts/support/segments.h"

namespace {

using orbhost::Bytes;
using orbhost::Error;
using orbhost::Image;
using orbhost::jpeg::encodeJpeg;
using orbhost::jpeg::EncodeOptions;
using orbhost::jpeg::parseScript;
using orbhost::jpeg::Sampling;
using orbtest::difference;
using orbtest::draw;
using orbtest::expectEqual;
using orbtest::jpegtran;
using orbtest::judgeCoefficients;
using orbtest::judgeDecode;
using orbtest::Motif;

constexpr Sampling kSamplings[] = {Sampling::k444, Sampling::k422, Sampling::k420, Sampling::kGrey};

// Of three components, and of the first alone.
const char* const kProgressiveScripts[] = {
    "0,1,2: 0-0, 0, 0; 0: 1-63, 0, 0; 1: 1-63, 0, 0; 2: 1-63, 0, 0;",
    R"(0: 0-0, 0, 3; 0: 0-0, 3, 2; 0: 0-0, 2, 1; 0: 0-0, 1, 0; 1,2: 0-0, 0, 0;
       0: 1-63, 0, 4; 0: 1-63, 4, 3; 0: 1-63, 3, 2; 0: 1-63, 2, 1; 0: 1-63, 1, 0;
       2: 1-10, 0, 1; 2: 11-63, 0, 0; 1: 1-63, 0, 0; 2: 1-10, 1, 0;)",
    R"(0,1,2: 0-0, 0, 1; 0: 1-20, 0, 2; 0: 21-63, 0, 2; 0: 1-5, 2, 1; 0: 6-63, 2, 1;
       0: 40-40, 1, 0; 0: 1-39, 1, 0; 0: 41-63, 1, 0; 0 1 2: 0-0, 1, 0;
       1: 1-63, 0, 0; 2: 1-63, 0, 0)"};
const char* const kSequentialScripts[] = {"0; 1; 2;", "2; 0 1;", "1,2; 0;"};

// The same options, in one sequential scan.
EncodeOptions baselineOf(EncodeOptions options) {
  options.progressive = false;
  options.script = {};
  return options;
}

void expectSameAsBaseline(const Image& image, const EncodeOptions& options) {
  const Bytes file = encodeJpeg(image, options);
  const Bytes baseline = encodeJpeg(image, baselineOf(options));
  expectEqual(judgeCoefficients(file), judgeCoefficients(baseline));
  EXPECT_EQ(difference(judgeDecode(file), judgeDecode(baseline)).largest, 0);
  EXPECT_EQ(difference(orbhost::jpeg::decodeJpeg(file, {}), orbhost::jpeg::decodeJpeg(baseline, {}))
                .largest,
            0);
}

TEST(JpegProgressiveEncode, EverySamplingQualityAndRestart) {
  for (const Sampling sampling : kSamplings) {
    for (const int quality : {1, 50, 90, 100}) {
      for (const int restart : {0, 1, 5}) {
        for (const Motif motif : {Motif::kScene, Motif::kNoise, Motif::kEdges}) {
          SCOPED_TRACE("sampling " + std::to_string(static_cast<int>(sampling)) + ", quality " +
                       std::to_string(quality) + ", restart " + std::to_string(restart));
          EncodeOptions options;
          options.sampling = sampling;
          options.quality = quality;
          options.restartInterval = restart;
          options.restartInRows = restart == 1;
          options.progressive = true;
          expectSameAsBaseline(draw(motif, 173, 91, 3), options);
          if (HasFailure()) return;
        }
      }
    }
  }
}

TEST(JpegProgressiveEncode, EverySmallSize) {
  for (const Sampling sampling : kSamplings) {
    for (int width = 1; width <= 34; width += 3) {
      SCOPED_TRACE("sampling " + std::to_string(static_cast<int>(sampling)) + ", width " +
                   std::to_string(width));
      EncodeOptions options;
      options.sampling = sampling;
      options.progressive = true;
      expectSameAsBaseline(draw(Motif::kEdges, width, 35 - width, 3), options);
    }
  }
}

TEST(JpegProgressiveEncode, Scripts) {
  const Image image = draw(Motif::kScene, 117, 59, 3);
  EncodeOptions options;
  for (const Sampling sampling : {Sampling::k444, Sampling::k422, Sampling::k420}) {
    for (const int restart : {0, 1, 7}) {
      options.sampling = sampling;
      options.restartInterval = restart;
      options.restartInRows = restart == 1;
      for (const char* const script : kProgressiveScripts) {
        SCOPED_TRACE(script);
        options.script = parseScript(script);
        expectSameAsBaseline(image, options);
      }
      for (const char* const script : kSequentialScripts) {
        SCOPED_TRACE(script);
        options.script = parseScript(script);
        for (const bool optimize : {false, true}) {
          options.optimize = optimize;
          expectSameAsBaseline(image, options);
        }
      }
    }
  }
  options.script = parseScript("0: 0-0, 0, 1; 0: 1-63, 0, 0; 0: 0-0, 1, 0;");
  expectSameAsBaseline(draw(Motif::kScene, 50, 40, 1), options);
}

// What a script leaves out is 0.
TEST(JpegProgressiveEncode, ScriptsThatTellLess) {
  EncodeOptions options;
  const Image image = draw(Motif::kScene, 60, 50, 1);
  const auto whole = judgeCoefficients(encodeJpeg(image, options))[0].values;
  options.script = parseScript("0: 0-0, 0, 1; 0: 1-1, 0, 0;");
  const auto told = judgeCoefficients(encodeJpeg(image, options))[0].values;
  ASSERT_EQ(told.size(), whole.size());
  for (size_t i = 0; i < told.size(); ++i) {
    const int expected = i % 64 == 0 ? whole[i] & ~1 : i % 64 == 1 ? whole[i] : 0;
    ASSERT_EQ(told[i], expected);
  }
}

// From the same coefficients jpegtran makes the same file, to the byte.
TEST(JpegProgressiveEncode, FilesAreThoseOfJpegtran) {
  const orbtest::Directory directory;
  for (const Image& image : {draw(Motif::kScene, 333, 211, 3), draw(Motif::kNoise, 222, 155, 3)}) {
    for (const Sampling sampling : kSamplings) {
      for (const int restart : {0, 1, 3}) {
        SCOPED_TRACE("sampling " + std::to_string(static_cast<int>(sampling)) + ", restart " +
                     std::to_string(restart));
        EncodeOptions options;
        options.sampling = sampling;
        options.progressive = true;
        options.restartInterval = restart;
        options.restartInRows = true;
        const Bytes baseline = encodeJpeg(image, baselineOf(options));
        const std::vector<std::string> restarts = {"-restart", std::to_string(restart)};
        std::vector<std::string> words = restarts;
        words.push_back("-progressive");
        EXPECT_TRUE(encodeJpeg(image, options) == jpegtran(baseline, words));
        if (sampling == Sampling::kGrey) continue;
        for (const char* const script : kProgressiveScripts) {
          std::ofstream(directory / "scans") << script;
          words = restarts;
          words.insert(words.end(), {"-scans", directory / "scans"});
          options.script = parseScript(script);
          EXPECT_TRUE(encodeJpeg(image, options) == jpegtran(baseline, words)) << script;
        }
      }
    }
  }
}

TEST(JpegProgressiveEncode, ThePhotograph) {
  for (const Sampling sampling : kSamplings) {
    EncodeOptions options;
    options.sampling = sampling;
    options.quality = 90;
    options.progressive = true;
    const Bytes file = encodeJpeg(orbtest::photograph(), options);
    EncodeOptions baseline = baselineOf(options);
    baseline.optimize = true;
    const Bytes sequential = encodeJpeg(orbtest::photograph(), baseline);
    EXPECT_TRUE(file == jpegtran(sequential, {"-progressive"}));
    expectEqual(judgeCoefficients(file), judgeCoefficients(sequential));
    std::printf("sampling %d: %zu bytes progressive, %zu sequential\n", static_cast<int>(sampling),
                file.size(), sequential.size());
    EXPECT_LT(file.size(), sequential.size());
  }
}

// End-of-band runs of more blocks than one symbol holds, and more correction bits than a run does.
TEST(JpegProgressiveEncode, LongRuns) {
  EncodeOptions options;
  options.progressive = true;
  Image flat(2048, 1200, 1);
  for (size_t i = 0; i < flat.size(); ++i) flat.row(0)[i] = 100;
  flat.row(1199)[2047] = 255;
  expectSameAsBaseline(flat, options);
  options.quality = 100;
  options.script = parseScript("0: 0-0, 0, 0; 0: 1-63, 0, 1; 0: 1-63, 1, 0;");
  expectSameAsBaseline(draw(Motif::kNoise, 200, 160, 1), options);
}

TEST(JpegProgressiveEncode, TheLayoutOfAScriptIsFree) {
  const auto script = parseScript(
      "# All of it.\n\n0 1,2:0-0 0 1;0:1 - 63,0,\n 0 ; # a comment; with a semicolon\n"
      "\t1 :1-63,0,0;2:1-63,0,0; 0,1,2: 0-0, 1, 0");
  ASSERT_EQ(script.size(), 5u);
  EXPECT_EQ(script[0].components, (std::vector<int>{0, 1, 2}));
  EXPECT_EQ(script[0].selection.se, 0);
  EXPECT_EQ(script[0].selection.al, 1);
  EXPECT_EQ(script[1].components, std::vector<int>{0});
  EXPECT_EQ(script[1].selection.ss, 1);
  EXPECT_EQ(script[1].selection.se, 63);
  EXPECT_EQ(script[4].selection.ah, 1);
  EXPECT_EQ(script[4].selection.al, 0);
}

TEST(JpegProgressiveEncode, WrongScriptsAreNamed) {
  struct Case {
    const char* script;
    const char* says;
  };
  const Image image = draw(Motif::kScene, 30, 20, 3);
  for (const Case& one : {
           Case{"", "no scan"},
           Case{"# nothing\n", "no scan"},
           Case{"0; 1;\n2 x", "line 2: a scan ends with a semicolon, not with x"},
           Case{"0,1,2\n\n: 0-0, 0;", "line 3: a number was expected: Al"},
           Case{"luma;", "line 1: a number was expected: a component"},
           Case{"0,;", "line 1: a number was expected: a component"},
           Case{"0: 1-;", "a number was expected: the last coefficient"},
           Case{"0: 0-0 0 0 7;", "a scan ends with a semicolon, not with 7"},
           Case{"0; 1;", "lacks the DC of a component"},
           Case{"0; 1; 2; 1;", "scan 4 of the script: a second scan of component 1"},
           Case{"0; 1; 3;", "scan 3 of the script: there is no component 3 in a picture of 3"},
           Case{"1 0; 2;", "scan 1 of the script: components go upwards"},
           Case{"0 0; 1; 2;", "components go upwards"},
           Case{"0 1 2: 0-0 0 0; 1: 0-63 0 0;", "scan 2 of the script: DC and AC"},
           Case{"0: 0-0 0 0; 1: 1-63 0 0;", "AC coefficients of component 1 come before its DC"},
           Case{"0 1 2: 0-0 0 0; 0 1: 1-63 0 0;", "AC coefficients of several components"},
           Case{"0 1 2: 0-0 0 14;", "a scan ends with bit 0 to 13, not 14"},
           Case{"0 1 2: 0-0 0 13; 0 1 2: 0-0 13 11;", "does not go from bit 13 to 11"},
           Case{"0 1 2: 0-0 0 1; 0: 0-0 0 0;", "coefficient 0 of component 0 is coded a second"},
           Case{"0 1 2: 0-0 0 0; 0: 1-5 0 0; 0: 5-63 0 0;",
                "coefficient 5 of component 0 is coded"},
           Case{"0 1 2: 0-0 0 2; 0: 0-0 1 0;", "refined from bit 1, but known down to bit 2"},
           Case{"0 1 2: 0-0 0 0; 0: 1-5 1 0;", "coefficient 1 of component 0 is refined before"},
           Case{"0 1 2: 0-0 0 0; 0: 6-5 0 0;", "coefficients 6 to 5 are no band"},
           Case{"0 1 2: 0-0 0 0; 0: 6-64 0 0;", "coefficients 6 to 64 are no band"},
           Case{"0 1 2: 0-0 99999999999 0;", "does not go from bit"},
       }) {
    try {
      EncodeOptions options;
      options.script = parseScript(one.script);
      encodeJpeg(image, options);
      ADD_FAILURE() << "taken: " << one.script;
    } catch (const Error& error) {
      EXPECT_NE(std::string(error.what()).find(one.says), std::string::npos)
          << one.script << " says: " << error.what();
    }
  }
  EncodeOptions options;
  options.progressive = true;
  options.script = parseScript("0; 1; 2;");
  EXPECT_THROW(encodeJpeg(image, options), Error);
}

TEST(JpegProgressiveEncode, RestartIntervalsAreThoseOfTheScan) {
  // 4096 MCUs of luma alone in a row of the second scan, 2048 in one of the first.
  const Image image = draw(Motif::kGradient, 32768, 16, 3);
  EncodeOptions options;
  options.progressive = true;
  options.restartInRows = true;
  options.restartInterval = 15;
  EXPECT_NO_THROW(encodeJpeg(image, options));
  options.restartInterval = 17;
  EXPECT_THROW(encodeJpeg(image, options), Error);
}

}  // namespace
