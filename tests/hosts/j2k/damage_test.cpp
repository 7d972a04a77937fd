// Damaged, cut-off and hostile JPEG 2000 files: as much of the picture as there is, or a message;
// never a crash, nor memory and time that the file does not account for.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "hosts/file.h"
#include "hosts/image_file.h"
#include "hosts/j2k/decode.h"
#include "hosts/j2k/picture.h"
#include "tests/hosts/support/codestream_parts.h"
#include "tests/hosts/support/j2k_judge.h"
#include "tests/hosts/support/pictures.h"
#include "tests/hosts/support/program.h"
#include "tests/hosts/support/segments.h"
#include "tests/support/guarded.h"
#include "tests/support/random.h"

namespace {

using namespace orbtest;
using orbhost::Bytes;
using orbhost::ByteView;
using orbhost::Image;
using orbhost::j2k::Decoded;
using orbhost::j2k::decodeJ2k;
using orbhost::j2k::DecodeOptions;

DecodeOptions smallOptions() {
  DecodeOptions options;
  options.freeSamples = 1 << 18;
  return options;
}

// What is said of a file, if anything. A read behind its end is a fault.
std::string wordsOn(const Bytes& file, const DecodeOptions& options = smallOptions()) {
  const GuardedBytes guarded(file);
  try {
    const Decoded decoded = decodeJ2k(ByteView(guarded.data(), file.size()), options);
    colourPicture(decoded);
    allChannels(decoded);
    return decoded.damage.first();
  } catch (const orbhost::Error& error) {
    EXPECT_STRNE(error.what(), "");
    return error.what();
  }
}

// A small file of each kind that there is.
const std::vector<Bytes>& kinds() {
  static const std::vector<Bytes> files = [] {
    const Image image = draw(Motif::kScene, 50, 41, 3);
    std::vector<Bytes> made;
    for (const char* const options :
         {"-n 3", "-I -r 5 -M 63", "-t 33,20 -n 3 -SOP -EPH -p RPCL -c [16,16]",
          "-M 5 -r 20,5,1 -n 4", "-n 3 -POC T1=0,0,1,2,3,RLCP/T1=2,0,1,3,3,CPRL",
          "-ROI c=0,U=7 -M 32 -n 3", "-d 11,17 -t 30,30 -TP R -n 3 -b 4,4"}) {
      made.push_back(opjCompress(image, options));
    }
    made.push_back(opjCompress(image, "", J2kFormat::kJp2));
    return made;
  }();
  return files;
}

TEST(J2kDamage, WholeFilesAreNotDamaged) {
  for (const Bytes& file : kinds()) EXPECT_EQ(wordsOn(file), "");
}

TEST(J2kDamage, CutFilesAreReported) {
  for (const Bytes& file : kinds()) {
    for (size_t size = 0; size < file.size(); size += 1 + size / 40) {
      EXPECT_NE(wordsOn(slice(file, 0, size)), "") << size;
    }
  }
}

// Of three layers in order the first two stand in front of the place where it ends.
TEST(J2kDamage, CutFilesShowWhatTheyHave) {
  const Image image = draw(Motif::kScene, 200, 150, 1);
  const Bytes file = opjCompress(image, "-r 30,8,1 -p LRCP");
  const Decoded decoded = decodeJ2k(slice(file, 0, file.size() * 9 / 10), {});
  EXPECT_GT(decoded.damage.count(), 0u);
  DecodeOptions layers;
  layers.layers = 2;
  EXPECT_GE(psnr(colourPicture(decoded), image),
            psnr(colourPicture(decodeJ2k(file, layers)), image));
}

TEST(J2kDamage, MissingTilesAreEmpty) {
  const Image image = draw(Motif::kNoise, 80, 40, 1);
  CodestreamParts parts = takeApart(opjCompress(image, "-t 40,40 -n 3 -SOP -EPH"));
  Bytes file = parts.mainHeader;
  Bytes data;
  for (const PacketParts& packet : parts.tiles[1].packets) {
    append(data, packet.header);
    append(data, packet.body);
  }
  append(file, tilePartOf(1, 0, {}, data));
  appendWord(file, 0xFFD9);
  const Decoded decoded = decodeJ2k(file, {});
  EXPECT_EQ(decoded.damage.first(), "tile 0 is missing");
  const Image picture = colourPicture(decoded);
  for (int x = 0; x < 80; ++x) {
    EXPECT_EQ(picture.row(9)[x], x < 40 ? 0 : image.row(9)[x]) << x;
  }
}

TEST(J2kDamage, ChangedFilesDoNoHarm) {
  Random random("j2k damage");
  for (int i = 0; i < 3000; ++i) {
    Bytes file = kinds()[random.between<size_t>(0, kinds().size() - 1)];
    const size_t header = std::min<size_t>(file.size(), 200);
    for (int changes = random.between(1, 4); changes > 0; --changes) {
      const size_t at = random.between<size_t>(0, (random.oneIn(2) ? header : file.size()) - 1);
      file[at] = random.oneIn(2) ? random.any<uint8_t>() : random.extreme<uint8_t>();
    }
    DecodeOptions options = smallOptions();
    options.reduce = random.between(0, 2);
    wordsOn(file, options);
  }
}

// The size and the tiles of a picture in its main header.
Bytes withSize(Bytes file, size_t field, uint32_t value) {
  Bytes bytes;
  appendDoubleWord(bytes, value);
  std::copy(bytes.begin(), bytes.end(), file.begin() + static_cast<ptrdiff_t>(8 + 4 * field));
  return file;
}

TEST(J2kDamage, AbsurdSizesAreRefused) {
  const Bytes file = opjCompress(draw(Motif::kScene, 64, 64, 3), "-n 3");
  const Bytes wide = withSize(withSize(file, 0, 4000000000u), 4, 4000000000u);
  EXPECT_NE(wordsOn(wide).find("more samples than"), std::string::npos) << wordsOn(wide);
  EXPECT_NE(wordsOn(withSize(file, 4, 0)).find("do not cover"), std::string::npos);
  const Bytes thin = withSize(withSize(file, 4, 1), 0, 100000);
  EXPECT_NE(wordsOn(thin).find("too many tiles"), std::string::npos) << wordsOn(thin);
}

TEST(J2kDamage, OtherFilesAreNamedAsSuch) {
  EXPECT_EQ(wordsOn({}), "the file is empty");
  EXPECT_EQ(wordsOn({'P', '6', '\n'}), "neither a JP2 file nor a codestream of JPEG 2000");
  Bytes highThroughput = kinds()[0];
  highThroughput[6] |= 0x40;  // Rsiz
  EXPECT_NE(wordsOn(highThroughput).find("high-throughput"), std::string::npos);
}

// The command writes what there is, says so in one line, and its status is that of a failure.
TEST(J2kDamage, TheCommandWritesWhatThereIs) {
  const Directory directory;
  const Image image = draw(Motif::kScene, 60, 50, 3);
  const Bytes file = opjCompress(image, "-n 3");
  orbhost::writeFile(directory / "whole.j2k", file);
  orbhost::writeFile(directory / "cut.j2k", slice(file, 0, file.size() - 40));
  const Outcome whole = runOrb({"j2k", "decode", directory / "whole.j2k", directory / "whole.ppm"});
  EXPECT_EQ(whole.status, 0);
  EXPECT_EQ(whole.output, "");
  EXPECT_EQ(
      difference(orbhost::parseImage(orbhost::readFile(directory / "whole.ppm")), image).largest,
      0);
  const Outcome cut = runOrb({"j2k", "decode", directory / "cut.j2k", directory / "cut.png"});
  EXPECT_EQ(cut.status, 1);
  EXPECT_NE(cut.output.find("cut.j2k: damaged, and decoded as far as it goes: byte"),
            std::string::npos)
      << cut.output;
  EXPECT_GT(psnr(orbhost::parseImage(orbhost::readFile(directory / "cut.png")), image), 20);
}

TEST(J2kCommand, WritesComponentsAndAllChannels) {
  const Directory directory;
  const Image image = draw(Motif::kScene, 33, 20, 3, 4095);
  orbhost::writeFile(directory / "a.jp2", opjCompress(image, "-n 3", J2kFormat::kJp2));
  const auto decode = [&](std::vector<std::string> options, const std::string& to) {
    options.insert(options.begin(), {"j2k", "decode", directory / "a.jp2", directory / to});
    const Outcome outcome = runOrb(options);
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    return orbhost::parseImage(orbhost::readFile(directory / to));
  };
  EXPECT_EQ(difference(decode({}, "all.pam"), image).largest, 0);
  const Image green = decode({"--component", "1"}, "green.pgm");
  EXPECT_EQ(green.maximum(), 4095);
  for (int x = 0; x < 33; ++x) EXPECT_EQ(green.wideRow(5)[x], image.wideRow(5)[3 * x + 1]);
  EXPECT_EQ(decode({"--reduce", "2", "--layers", "1"}, "small.ppm").width(), 9);
  const Outcome outcome =
      runOrb({"j2k", "decode", "--component", "3", directory / "a.jp2", directory / "none.pgm"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.output.find("there is no component 3 of 3"), std::string::npos);
}

}  // namespace
