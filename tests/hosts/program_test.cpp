// The program: what it takes, what it says, and what it leaves behind.
#include "tests/hosts/support/program.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <vector>

#include "hosts/bmp_file.h"
#include "hosts/file.h"
#include "hosts/image_file.h"
#include "hosts/jpeg/decode.h"
#include "hosts/jpeg/encode.h"
#include "hosts/jpeg/packed_decode.h"
#include "orb90legacy.h"
#include "tests/hosts/support/judges.h"
#include "tests/hosts/support/pictures.h"

namespace {

using orbhost::Bytes;
using orbhost::Image;
using orbhost::ImageFormat;
using orbhost::readFile;
using orbhost::writeFile;
using orbhost::jpeg::encodeJpeg;
using orbtest::difference;
using orbtest::Directory;
using orbtest::draw;
using orbtest::Motif;
using orbtest::Outcome;
using orbtest::runOrb;

using Names = std::vector<std::string>;

// Fails and says why.
void expectFailure(const Outcome& outcome, const std::string& why) {
  EXPECT_EQ(outcome.status, 1) << outcome.output;
  EXPECT_NE(outcome.output.find(why), std::string::npos) << outcome.output;
}
// Of a file: in a line of its own, and in no other.
void expectFileFailure(const Outcome& outcome, const std::string& why) {
  expectFailure(outcome, why);
  EXPECT_EQ(outcome.output.rfind("orb: ", 0), 0u) << outcome.output;
  EXPECT_EQ(outcome.output.find('\n'), outcome.output.size() - 1) << outcome.output;
}

TEST(Program, EncodesAndDecodes) {
  const Directory directory;
  const Image image = draw(Motif::kScene, 70, 50, 3);
  writeFile(directory / "in.png", formatImage(image, ImageFormat::kPng));
  writeFile(directory / "in.ppm", formatImage(image, ImageFormat::kPpm));
  EXPECT_EQ(runOrb({"jpeg", "encode", directory / "in.png", directory / "a.jpg"}).output, "");
  ASSERT_EQ(runOrb({"jpeg", "encode", "--quality", "85", "--sampling", "420", directory / "in.ppm",
                    directory / "b.jpg"})
                .status,
            0);
  orbhost::jpeg::EncodeOptions options;
  EXPECT_EQ(readFile(directory / "a.jpg"), encodeJpeg(image, options));
  EXPECT_EQ(readFile(directory / "b.jpg"), encodeJpeg(image, options));

  ASSERT_EQ(runOrb({"jpeg", "encode", "-q", "60", "-s", "444", "-o", "-r", "1row",
                    directory / "in.png", directory / "a.jpg"})
                .status,
            0);
  options.quality = 60;
  options.sampling = orbhost::jpeg::Sampling::k444;
  options.optimize = true;
  options.restartInterval = 1;
  options.restartInRows = true;
  const Bytes file = readFile(directory / "a.jpg");
  EXPECT_EQ(file, encodeJpeg(image, options));

  for (const char* const name : {"out.png", "out.ppm", "out.pnm"}) {
    ASSERT_EQ(runOrb({"jpeg", "decode", directory / "a.jpg", directory / name}).status, 0);
    const Image decoded = orbhost::parseImage(readFile(directory / name));
    EXPECT_EQ(difference(decoded, orbhost::jpeg::decodeJpeg(file, {})).largest, 0);
  }
  ASSERT_EQ(
      runOrb({"jpeg", "decode", "--scale", "1/4", directory / "a.jpg", directory / "q.ppm"}).status,
      0);
  EXPECT_EQ(orbhost::parseImage(readFile(directory / "q.ppm")).width(), 18);
  EXPECT_EQ(directory.files(), (Names{"a.jpg", "b.jpg", "in.png", "in.ppm", "out.png", "out.pnm",
                                      "out.ppm", "q.ppm"}));
}

TEST(Program, EncodesInScans) {
  const Directory directory;
  const Image image = draw(Motif::kScene, 70, 50, 3);
  writeFile(directory / "in.ppm", formatImage(image, ImageFormat::kPpm));
  orbhost::jpeg::EncodeOptions options;
  options.progressive = true;
  ASSERT_EQ(
      runOrb({"jpeg", "encode", "--progressive", directory / "in.ppm", directory / "a.jpg"}).status,
      0);
  EXPECT_EQ(readFile(directory / "a.jpg"), encodeJpeg(image, options));

  const std::string script = "0; # luma\n1 2; # chroma\n";
  writeFile(directory / "scans", Bytes(script.begin(), script.end()));
  options.progressive = false;
  options.script = orbhost::jpeg::parseScript(script);
  ASSERT_EQ(runOrb({"jpeg", "encode", "--scans", directory / "scans", directory / "in.ppm",
                    directory / "b.jpg"})
                .status,
            0);
  EXPECT_EQ(readFile(directory / "b.jpg"), encodeJpeg(image, options));
  expectFileFailure(runOrb({"jpeg", "encode", "-p", "--scans", directory / "scans",
                            directory / "in.ppm", directory / "c.jpg"}),
                    "not progressive");
  expectFileFailure(runOrb({"jpeg", "encode", "--scans", directory / "in.ppm", directory / "in.ppm",
                            directory / "c.jpg"}),
                    "in.ppm: line 1: a number was expected");
  EXPECT_EQ(directory.files(), (Names{"a.jpg", "b.jpg", "in.ppm", "scans"}));
}

TEST(Program, KeepsEverySample) {
  const Directory directory;
  for (const auto& [name, bits] : {std::pair{"deep.png", 16}, std::pair{"deep.png", 12},
                                   std::pair{"deep.ppm", 10}, std::pair{"deep.png", 8}}) {
    const Image image = draw(Motif::kNoise, 30, 20, 3, (1 << bits) - 1);
    const std::string in = directory / name;
    const std::string out = directory / (std::string("out-") + name);
    writeFile(in, formatImage(image, orbhost::imageFormatOf(in)));
    ASSERT_EQ(runOrb({"jpeg", "encode", "--lossless", "7", in, directory / "a.jpg"}).output, "");
    ASSERT_EQ(runOrb({"jpeg", "decode", directory / "a.jpg", out}).output, "");
    EXPECT_EQ(readFile(out), readFile(in));
  }
  const std::string in = directory / "deep.png";
  const std::string jpg = directory / "a.jpg";
  ASSERT_EQ(runOrb({"jpeg", "encode", "-l", "4,2", "--precision", "10", in, jpg}).output, "");
  EXPECT_EQ(orbhost::jpeg::decodeJpeg(readFile(jpg), {}).maximum(), 1023);
  for (const char* const wrong : {"x", "1,", "1,2,3", "1 2", "1.5", "-1", "99999999999"}) {
    expectFailure(runOrb({"jpeg", "encode", std::string("--lossless=") + wrong, in, jpg}),
                  "a predictor");
  }
  expectFailure(runOrb({"jpeg", "encode", "--lossless", "8", in, jpg}),
                "a predictor is from 1 to 7");
  expectFailure(runOrb({"jpeg", "encode", "--lossless", "1", "-q", "50", in, jpg}), "--quality");
  expectFailure(runOrb({"jpeg", "encode", "--precision", "9", in, jpg}), "--lossless");
}

TEST(Program, KeepsInks) {
  const Directory directory;
  const Image inks = draw(Motif::kScene, 30, 20, 4);
  writeFile(directory / "in.pam", formatImage(inks, ImageFormat::kPam));
  orbhost::jpeg::EncodeOptions options;
  options.colours = orbhost::jpeg::ColourSpace::kCmyk;
  const std::string jpg = directory / "a.jpg";
  ASSERT_EQ(runOrb({"jpeg", "encode", "--colour", "cmyk", directory / "in.pam", jpg}).output, "");
  EXPECT_EQ(readFile(jpg), encodeJpeg(inks, options));
  const Image decoded = orbhost::jpeg::decodeJpeg(readFile(jpg), {});
  ASSERT_EQ(runOrb({"jpeg", "decode", jpg, directory / "out.pam"}).output, "");
  ASSERT_EQ(runOrb({"jpeg", "decode", jpg, directory / "out.ppm"}).output, "");
  EXPECT_EQ(readFile(directory / "out.pam"), formatImage(decoded, ImageFormat::kPam));
  EXPECT_EQ(readFile(directory / "out.ppm"), formatImage(decoded, ImageFormat::kPpm));
  expectFailure(runOrb({"jpeg", "encode", "--color", "rgb", directory / "in.pam", jpg}),
                "not stored in these colours");
}

TEST(Program, WritesPixelsOf16Bits) {
  const Directory directory;
  const Bytes file = encodeJpeg(draw(Motif::kScene, 30, 20, 3), {});
  const std::string jpg = directory / "a.jpg";
  const std::string bmp = directory / "a.bmp";
  writeFile(jpg, file);
  ASSERT_EQ(runOrb({"jpeg", "decode", "--pixels", "bgr565", jpg, bmp}).output, "");
  EXPECT_EQ(readFile(bmp), orbhost::formatBmp(orbhost::jpeg::decodeJpegPacked(
                               file, orbhost::PackedFormat::kBgr565, {})));
  ASSERT_EQ(runOrb({"jpeg", "decode", jpg, bmp}).output, "");
  EXPECT_EQ(readFile(bmp), orbhost::formatBmp(orbhost::jpeg::decodeJpeg(file, {})));
  expectFileFailure(runOrb({"jpeg", "decode", "--pixels", "bgr555", jpg, directory / "a.png"}),
                    "a.png: only a .bmp holds");
}

TEST(Program, ShowsSomeScans) {
  const Directory directory;
  const Bytes file = orbtest::cjpeg(draw(Motif::kScene, 60, 40, 3), {"-progressive"});
  writeFile(directory / "a.jpg", file);
  ASSERT_EQ(runOrb({"jpeg", "decode", "--scans-to", "2", directory / "a.jpg", directory / "b.ppm"})
                .status,
            0);
  EXPECT_EQ(difference(orbhost::parseImage(readFile(directory / "b.ppm")),
                       orbhost::jpeg::decodeJpeg(file, {1, 2}))
                .largest,
            0);
}

TEST(Program, GreyStaysGrey) {
  const Directory directory;
  writeFile(directory / "in.pgm", formatImage(draw(Motif::kScene, 20, 30, 1), ImageFormat::kPgm));
  ASSERT_EQ(runOrb({"jpeg", "encode", directory / "in.pgm", directory / "a.jpg"}).status, 0);
  ASSERT_EQ(runOrb({"jpeg", "decode", directory / "a.jpg", directory / "out.pgm"}).status, 0);
  ASSERT_EQ(runOrb({"jpeg", "decode", directory / "a.jpg", directory / "out.ppm"}).status, 0);
  EXPECT_EQ(orbhost::parseImage(readFile(directory / "out.pgm")).channels(), 1);
  EXPECT_EQ(orbhost::parseImage(readFile(directory / "out.ppm")).channels(), 3);
}

TEST(Program, StatsAreOneLine) {
  const Directory directory;
  writeFile(directory / "in.pgm", formatImage(draw(Motif::kScene, 20, 30, 1), ImageFormat::kPgm));
  const std::string build = legacy90orbjGetLibVersion()->targetCpu;
  const Outcome encoded =
      runOrb({"jpeg", "encode", "--stats", directory / "in.pgm", directory / "a.jpg"});
  const size_t size = readFile(directory / "a.jpg").size();
  EXPECT_EQ(encoded.output.find("bytes=" + std::to_string(size) + " bits_per_pixel="), 0u);
  EXPECT_NE(encoded.output.find(" mpixels_per_second="), std::string::npos);
  EXPECT_NE(encoded.output.find(" build=" + build + "\n"), std::string::npos);
  const Outcome decoded =
      runOrb({"jpeg", "decode", "--stats", directory / "a.jpg", directory / "b.pgm"});
  EXPECT_EQ(decoded.output.find("bytes=" + std::to_string(size) + " bits_per_pixel="), 0u);
}

TEST(Program, TeachesAndTellsItsBuild) {
  const Outcome version = runOrb({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_NE(version.output.find(legacy90orbjGetLibVersion()->name), std::string::npos);
  EXPECT_NE(version.output.find(legacy90orbdcGetLibVersion()->name), std::string::npos);
  for (const Names& command :
       {Names{"--help"}, Names{"jpeg", "encode", "--help"}, Names{"jpeg", "decode", "--help"}}) {
    const Outcome help = runOrb(command);
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.output.find("Examples:\n  orb jpeg "), std::string::npos) << help.output;
  }
}

TEST(Program, WrongArgumentsAreFailures) {
  const Directory directory;
  const std::string in = directory / "in.pgm";
  const std::string out = directory / "out.jpg";
  writeFile(in, formatImage(draw(Motif::kScene, 20, 30, 1), ImageFormat::kPgm));
  expectFailure(runOrb({}), "subcommand");
  expectFailure(runOrb({"jpeg"}), "subcommand");
  expectFailure(runOrb({"jpeg", "encode", in}), "output");
  expectFailure(runOrb({"jpeg", "encode", in, out, "--quality", "0"}), "quality");
  expectFailure(runOrb({"jpeg", "encode", in, out, "--quality", "101"}), "quality");
  expectFailure(runOrb({"jpeg", "encode", in, out, "--sampling", "411"}), "sampling");
  expectFailure(runOrb({"jpeg", "encode", in, out, "--restart", "-1"}), "--restart");
  expectFailure(runOrb({"jpeg", "encode", in, out, "--restart", "1column"}), "--restart");
  expectFailure(runOrb({"jpeg", "decode", in, out, "--scale", "1/3"}), "scale");
  expectFailure(runOrb({"jpeg", "decode", in, out, "--scans-to", "0"}), "scans-to");
  EXPECT_EQ(directory.files(), Names{"in.pgm"});
}

TEST(Program, BadFilesLeaveNothingBehind) {
  const Directory directory;
  const Bytes file = encodeJpeg(draw(Motif::kScene, 60, 40, 3), {});
  const std::string in = directory / "in";
  const std::string out = directory / "out.ppm";
  const auto decode = [&](const Bytes& bytes) {
    writeFile(in, bytes);
    return runOrb({"jpeg", "decode", in, out});
  };
  expectFileFailure(decode({}), "in: the file is empty");
  expectFileFailure(decode({'n', 'o', 'n', 'e'}), "in: not a JPEG file");
  for (size_t size = 1; size < file.size(); size += 97) {
    expectFileFailure(decode(Bytes(file.begin(), file.begin() + static_cast<long>(size))), "in: ");
  }
  const Bytes arithmetic = orbtest::cjpeg(draw(Motif::kScene, 60, 40, 3), {"-arithmetic"});
  expectFileFailure(decode(arithmetic), "arithmetic-coded sequential JPEG is not supported");
  EXPECT_EQ(directory.files(), Names{"in"});

  for (size_t i = 2; i < file.size(); i += 41) {
    Bytes damaged = file;
    damaged[i] ^= 0x55;
    const Outcome outcome = decode(damaged);
    EXPECT_TRUE(outcome.status == 0 || outcome.status == 1) << outcome.status << " at byte " << i;
    EXPECT_EQ(directory.files(), outcome.status == 0 ? (Names{"in", "out.ppm"}) : Names{"in"});
    unlink(out.c_str());
  }
}

TEST(Program, BadPlacesLeaveNothingBehind) {
  const Directory directory;
  const Image grey = draw(Motif::kScene, 20, 30, 1);
  const std::string in = directory / "in.pgm";
  const std::string jpg = directory / "in.jpg";
  writeFile(in, formatImage(grey, ImageFormat::kPgm));
  writeFile(jpg, encodeJpeg(draw(Motif::kScene, 20, 30, 3), {}));
  mkdir((directory / "place.png").c_str(), 0777);
  expectFileFailure(runOrb({"jpeg", "encode", directory / "none.png", directory / "a.jpg"}),
                    "none.png: cannot be opened");
  expectFileFailure(runOrb({"jpeg", "encode", directory.path(), directory / "a.jpg"}),
                    "is a directory");
  expectFileFailure(runOrb({"jpeg", "decode", directory.path(), directory / "a.png"}),
                    "is a directory");
  expectFileFailure(runOrb({"jpeg", "decode", jpg, directory / "place.png"}), "is a directory");
  expectFileFailure(runOrb({"jpeg", "encode", in, directory / "no/where.jpg"}),
                    "cannot be created");
  expectFileFailure(runOrb({"jpeg", "decode", jpg, directory / "a.gif"}),
                    "a.gif: a picture is written");
  expectFileFailure(runOrb({"jpeg", "decode", jpg, directory / "a.pgm"}), "does not fit a .pgm");
  expectFileFailure(runOrb({"jpeg", "decode", jpg, "/proc/orb.png"}),
                    "/proc/orb.png: cannot be created");
  EXPECT_EQ(directory.files(), (Names{"in.jpg", "in.pgm", "place.png"}));
}

TEST(Program, AnOldOutputStaysUntilTheNewOneIsThere) {
  const Directory directory;
  const Bytes old = {'o', 'l', 'd'};
  writeFile(directory / "out.ppm", old);
  writeFile(directory / "in.jpg", Bytes{0xFF, 0xD8, 0xFF});
  expectFileFailure(runOrb({"jpeg", "decode", directory / "in.jpg", directory / "out.ppm"}),
                    "in.jpg");
  EXPECT_EQ(readFile(directory / "out.ppm"), old);

  // Through a link to the file behind it, and into the input itself.
  ASSERT_EQ(symlink("out.ppm", (directory / "link.ppm").c_str()), 0);
  const Image image = draw(Motif::kScene, 20, 30, 3);
  writeFile(directory / "in.jpg", encodeJpeg(image, {}));
  ASSERT_EQ(runOrb({"jpeg", "decode", directory / "in.jpg", directory / "link.ppm"}).status, 0);
  EXPECT_EQ(orbhost::parseImage(readFile(directory / "out.ppm")).width(), 20);
  ASSERT_EQ(runOrb({"jpeg", "encode", directory / "out.ppm", directory / "out.ppm"}).status, 0);
  EXPECT_EQ(readFile(directory / "link.ppm")[1], 0xD8);
  EXPECT_EQ(directory.files(), (Names{"in.jpg", "link.ppm", "out.ppm"}));
}

}  // namespace
