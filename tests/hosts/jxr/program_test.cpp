// orb jxr encode, orb jxr decode.
#include "tests/hosts/support/program.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "hosts/file.h"
#include "hosts/image_file.h"
#include "hosts/jxr/decode.h"
#include "hosts/jxr/encode.h"
#include "tests/hosts/support/pictures.h"

namespace {

using orbhost::Bytes;
using orbhost::Image;
using orbhost::ImageFormat;
using orbhost::readFile;
using orbhost::writeFile;
using orbhost::jxr::encodeJxr;
using orbhost::jxr::EncodeOptions;
using orbhost::jxr::Subsampling;
using orbtest::Directory;
using orbtest::draw;
using orbtest::Motif;
using orbtest::Outcome;
using orbtest::runOrb;

class JxrProgram : public testing::Test {
 protected:
  void SetUp() override { writeFile(picture_, formatImage(image_, ImageFormat::kPpm)); }

  Bytes encoded(std::vector<std::string> options) {
    options.insert(options.begin(), {"jxr", "encode"});
    options.insert(options.end(), {picture_, coded_});
    const Outcome outcome = runOrb(options);
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    return readFile(coded_);
  }

  Directory directory_;
  const Image image_ = draw(Motif::kScene, 70, 50, 3);
  const std::string picture_ = directory_ / "picture.ppm";
  const std::string coded_ = directory_ / "coded.jxr";
};

TEST_F(JxrProgram, GoesThereAndBack) {
  encoded({"--quality", "100"});
  const std::string back = directory_ / "back.ppm";
  EXPECT_EQ(runOrb({"jxr", "decode", coded_, back}).status, 0);
  EXPECT_EQ(readFile(back), readFile(picture_));
}

TEST_F(JxrProgram, TakesEveryOption) {
  EncodeOptions options;
  EXPECT_EQ(encoded({}), encodeJxr(image_, options));
  options.quality = 40;
  options.subsampling = Subsampling::k420;
  options.overlap = 2;
  EXPECT_EQ(encoded({"-q", "40", "-s", "420", "-l", "2"}), encodeJxr(image_, options));
  options = {};
  options.quantiser = 33;
  options.subsampling = Subsampling::k422;
  options.overlap = 0;
  options.frequencyOrder = true;
  options.trim = 2;
  options.tileWidth = 32;
  options.tileHeight = 16;
  options.hardTiles = true;
  EXPECT_EQ(encoded({"--quantiser", "33", "--subsampling", "422", "--overlap", "0", "--order",
                     "frequency", "--trim", "2", "--tile", "32x16", "--hard-tiles"}),
            encodeJxr(image_, options));
}

TEST_F(JxrProgram, ExplainsFailures) {
  const auto expectFailure = [](const std::vector<std::string>& command, const std::string& text) {
    const Outcome outcome = runOrb(command);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.output.find(text), std::string::npos) << outcome.output;
  };
  expectFailure({"jxr", "encode", "--tile", "32", picture_, coded_}, "--tile takes a width");
  expectFailure({"jxr", "encode", "--tile", "0x16", picture_, coded_}, "--tile takes a width");
  expectFailure({"jxr", "encode", "--tile", "16x16x", picture_, coded_}, "--tile takes a width");
  expectFailure({"jxr", "encode", "--tile", "20x16", picture_, coded_}, "multiples of 16");
  expectFailure({"jxr", "encode", "-q", "50", "--quantiser", "3", picture_, coded_}, "excludes");
  expectFailure({"jxr", "decode", picture_, directory_ / "out.ppm"},
                picture_ + ": not a JPEG XR file");
  expectFailure({"jxr", "decode", directory_ / "none", directory_ / "out.ppm"}, "none");
  EXPECT_EQ(directory_.files(), std::vector<std::string>{"picture.ppm"});
}

}  // namespace
