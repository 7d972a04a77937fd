// Files of opj_compress in great variety: what is lossless is exact, what is not is as OpenJPEG
// decodes it, but for the rounding of floats.
#include "hosts/j2k/decode.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "hosts/j2k/picture.h"
#include "tests/hosts/support/j2k_judge.h"
#include "tests/hosts/support/pictures.h"
#include "tests/hosts/support/segments.h"
#include "tests/support/random.h"

namespace {

using orbhost::Bytes;
using orbhost::Image;
using orbhost::j2k::Decoded;
using orbhost::j2k::decodeJ2k;
using orbhost::j2k::DecodeOptions;
using orbtest::difference;
using orbtest::draw;
using orbtest::J2kFormat;
using orbtest::Motif;
using orbtest::opjCompress;
using orbtest::opjCompressRaw;
using orbtest::opjDecompress;

// The picture of a file in which nothing is wrong.
Decoded decodeWell(const Bytes& file, const DecodeOptions& options = {}) {
  Decoded decoded = decodeJ2k(file, options);
  EXPECT_EQ(decoded.damage.count(), 0u) << decoded.damage.first();
  return decoded;
}
Image pictureOf(const Bytes& file, const DecodeOptions& options = {}) {
  return orbhost::j2k::colourPicture(decodeWell(file, options));
}

DecodeOptions with(int reduce, int layers) {
  DecodeOptions options;
  options.reduce = reduce;
  if (layers != 0) options.layers = layers;
  return options;
}

struct Case {
  const char* options;
  int width = 90;
  int height = 70;
  int channels = 3;
  int maximum = 255;
  J2kFormat format = J2kFormat::kCodestream;
};
std::ostream& operator<<(std::ostream& out, const Case& c) {
  return out << c.width << " x " << c.height << " x " << c.channels << " of " << c.maximum << ": "
             << c.options;
}

constexpr J2kFormat kJp2 = J2kFormat::kJp2;

// Every option stands somewhere, alone and beside others.
constexpr Case kLossless[] = {
    {""},
    {"-n 1", 1, 1, 1},
    {"-n 2", 3, 5, 3, 255, kJp2},
    {"-n 1", 17, 33, 1},
    {"", 257, 131, 3},
    {"", 90, 70, 1, 65535},
    {"", 90, 70, 3, 65535, kJp2},
    {"", 90, 70, 3, 4095},
    {"-mct 0", 90, 70, 3, 1023},
    {"-p RLCP -c [32,32],[16,16]"},
    {"-p RPCL -c [64,32],[16,32]", 90, 70, 3, 255, kJp2},
    {"-p PCRL -c [32,32]"},
    {"-p CPRL -c [128,128],[64,64] -mct 0"},
    {"-b 4,4"},
    {"-b 4,1024", 40, 1100, 1},
    {"-b 1024,4", 1100, 40, 1},
    {"-b 16,64"},
    {"-t 32,40"},
    {"-t 33,17 -p RPCL -n 4 -c [16,16]"},
    {"-t 64,64 -TP R"},
    {"-t 64,64 -TP L -r 20,10,1"},
    {"-t 64,64 -TP C -p CPRL"},
    {"-SOP -EPH"},
    {"-SOP -PLT -TLM"},
    {"-EPH -n 4 -r 30,10,3,1"},
    {"-q 30,40,0"},
    {"-d 17,29"},
    {"-d 17,29 -t 40,40 -T 5,11 -p PCRL", 90, 70, 3, 255, kJp2},
    {"-d 1,1 -n 6", 64, 64, 1},
    {"-d 63,1023 -t 64,1024 -T 60,1020", 9, 9, 3},
    {"-M 1", 90, 70, 1, 65535},
    {"-M 2"},
    {"-M 4"},
    {"-M 8"},
    {"-M 16"},
    {"-M 32"},
    {"-M 63", 90, 70, 1, 65535},
    {"-M 5 -r 20,5,1", 90, 70, 3, 65535},
    {"-M 9 -SOP -EPH -r 20,5,1", 90, 70, 1, 4095},
    {"-M 38 -b 32,32"},
    {"-M 62 -t 50,50"},
    {"-GuardBits 4"},
    {"-ROI c=0,U=7"},
    {"-ROI c=1,U=3 -M 13 -mct 0"},
    {"-POC T1=0,0,1,3,3,RLCP/T1=3,0,1,6,3,CPRL"},
    {"-t 64,64 -n 3 -POC T1=0,0,1,2,3,RPCL/T1=2,0,1,3,3,PCRL/T2=0,0,1,1,3,CPRL/T2=1,0,1,3,3,RLCP"},
};

TEST(J2kDecode, LosslessFilesAreExact) {
  bool isNoise = false;
  for (const Case& c : kLossless) {
    isNoise = !isNoise;
    const Image image =
        draw(isNoise ? Motif::kNoise : Motif::kScene, c.width, c.height, c.channels, c.maximum);
    const Image decoded = pictureOf(opjCompress(image, c.options, c.format));
    EXPECT_EQ(decoded.maximum(), c.maximum) << c;
    EXPECT_EQ(difference(decoded, image).largest, 0) << c;
  }
}

constexpr Case kLossy[] = {
    {"-I"},
    {"-I -r 20", 257, 131, 3},
    {"-I -r 10", 90, 70, 1, 255, kJp2},
    {"-I -q 30,40 -p RPCL -c [64,64],[32,32]"},
    {"-I -r 10 -t 37,41"},
    {"-I -n 1"},
    {"-I -d 11,23 -n 4 -r 8"},
    {"-I -r 10 -M 63", 90, 70, 1, 4095},
    {"-I -r 6 -mct 0", 90, 70, 3, 4095},
    {"-I -r 40,20,10", 90, 70, 3, 1023},
    {"-I -ROI c=0,U=5"},
    {"-r 10"},
    {"-q 35 -b 16,16", 90, 70, 3, 255, kJp2},
    {"-r 5 -M 5", 90, 70, 1, 1023},
};

TEST(J2kDecode, LossyFilesAreAsTheJudgeDecodesThem) {
  for (const Case& c : kLossy) {
    const Bytes file = opjCompress(draw(Motif::kScene, c.width, c.height, c.channels, c.maximum),
                                   c.options, c.format);
    const bool isReversible = std::string(c.options).find("-I") == std::string::npos;
    EXPECT_LE(difference(pictureOf(file), opjDecompress(file)).largest, isReversible ? 0 : 1) << c;
  }
}

// Another quantisation than the encoder's: another picture, but the same for both.
TEST(J2kDecode, DerivedStepsAreAsTheJudgeDecodesThem) {
  Bytes file = opjCompress(draw(Motif::kScene, 90, 70, 1), "-I -n 4");
  const size_t at = orbtest::findMarker(file, 0x5C);
  const size_t length = static_cast<size_t>(file[at + 2] << 8 | file[at + 3]);
  file[at + 3] = 5;
  file[at + 4] = static_cast<uint8_t>((file[at + 4] & 0xE0) | 1);
  file.erase(file.begin() + static_cast<ptrdiff_t>(at + 7),
             file.begin() + static_cast<ptrdiff_t>(at + 2 + length));
  EXPECT_LE(difference(pictureOf(file), opjDecompress(file)).largest, 1);
}

TEST(J2kDecode, ReducedPicturesAreAsTheJudgeDecodesThem) {
  for (const char* const options : {"", "-I", "-t 33,45 -p RPCL", "-d 13,7 -c [32,32],[16,16]"}) {
    const Bytes file = opjCompress(draw(Motif::kScene, 131, 97, 3), options);
    for (int reduce = 1; reduce <= 5; ++reduce) {
      EXPECT_LE(difference(pictureOf(file, with(reduce, 0)),
                           opjDecompress(file, "-r " + std::to_string(reduce)))
                    .largest,
                options[0] == '-' && options[1] == 'I' ? 1 : 0)
          << options << ", " << reduce;
    }
  }
}

TEST(J2kDecode, MoreReductionsThanLevelsAreRefused) {
  const Bytes file = opjCompress(draw(Motif::kScene, 64, 64, 1), "-n 3");
  EXPECT_EQ(pictureOf(file, with(2, 0)).width(), 16);
  EXPECT_THROW(decodeJ2k(file, with(3, 0)), orbhost::Error);
}

TEST(J2kDecode, FewerLayersAreAsTheJudgeDecodesThem) {
  for (const char* const options :
       {"-r 40,20,10,1", "-I -q 25,35,45", "-r 30,10,2 -p PCRL -M 5 -c [32,32]"}) {
    const Bytes file = opjCompress(draw(Motif::kScene, 131, 97, 3), options);
    for (int layers = 1; layers <= 3; ++layers) {
      EXPECT_LE(difference(pictureOf(file, with(0, layers)),
                           opjDecompress(file, "-l " + std::to_string(layers)))
                    .largest,
                options[1] == 'I' ? 1 : 0)
          << options << ", " << layers;
    }
  }
}

TEST(J2kDecode, CinemaFilesAreAsTheJudgeDecodesThem) {
  const Bytes file = opjCompress(draw(Motif::kScene, 400, 216, 3, 4095), "-cinema2K 24");
  EXPECT_LE(difference(pictureOf(file), opjDecompress(file)).largest, 1);
}

// Components of their own sizes, each with bytes of noise.
struct Raw {
  Bytes bytes;
  std::vector<Image> components;

  void add(int width, int height) {
    components.push_back(draw(Motif::kNoise, width, height, 1));
    bytes.insert(bytes.end(), components.back().row(0),
                 components.back().row(0) + components.back().size());
  }
};

TEST(J2kDecode, SubsampledComponentsAreExactAndRepeatedToTheSizeOfTheFinest) {
  Raw raw;
  raw.add(52, 38);
  raw.add(26, 38);
  raw.add(13, 19);
  const Decoded decoded =
      decodeWell(opjCompressRaw(raw.bytes, "52,38,3,8,u@1x1:2x1:4x2", "-mct 0 -n 3 -p PCRL"));
  for (int c = 0; c < 3; ++c) {
    EXPECT_EQ(difference(orbhost::j2k::componentPicture(decoded, c), raw.components[c]).largest, 0)
        << c;
  }
  const Image picture = orbhost::j2k::colourPicture(decoded);
  ASSERT_EQ(picture.width(), 52);
  ASSERT_EQ(picture.height(), 38);
  for (int y = 0; y < 38; ++y) {
    for (int x = 0; x < 52; ++x) {
      ASSERT_EQ(picture.row(y)[3 * x], raw.components[0].row(y)[x]);
      ASSERT_EQ(picture.row(y)[3 * x + 1], raw.components[1].row(y)[x / 2]);
      ASSERT_EQ(picture.row(y)[3 * x + 2], raw.components[2].row(y / 2)[x / 4]);
    }
  }
}

TEST(J2kDecode, ComponentsOfAnyNumberAreChannels) {
  for (const int count : {2, 4, 5, 257}) {
    Raw raw;
    std::string sampling = "1x1";
    for (int c = 0; c < count; ++c) raw.add(9, 7);
    for (int c = 1; c < count; ++c) sampling += ":1x1";
    const Decoded decoded = decodeWell(opjCompressRaw(
        raw.bytes, "9,7," + std::to_string(count) + ",8,u@" + sampling, "-mct 0 -n 2"));
    const auto [channels, tupleType] = orbhost::j2k::allChannels(decoded);
    ASSERT_EQ(channels.channels(), count);
    EXPECT_STREQ(tupleType, "");
    for (int c = 0; c < count; ++c) {
      for (int i = 0; i < 63; ++i) {
        ASSERT_EQ(channels.row(0)[i * count + c], raw.components[c].row(0)[i]);
      }
    }
    EXPECT_EQ(orbhost::j2k::colourPicture(decoded).channels(), count < 3 ? 1 : 3);
  }
}

TEST(J2kDecode, SignedSamplesAreMovedUp) {
  orbtest::Random random("signed");
  Bytes bytes;
  for (int i = 0; i < 30 * 20 * 2; ++i) bytes.push_back(random.any<uint8_t>());
  const Decoded decoded = decodeWell(opjCompressRaw(bytes, "30,20,1,16,s", "-n 3"));
  const Image picture = orbhost::j2k::colourPicture(decoded);
  ASSERT_EQ(picture.maximum(), 65535);
  for (int i = 0; i < 30 * 20; ++i) {
    const int16_t sample = static_cast<int16_t>(bytes[2 * i] << 8 | bytes[2 * i + 1]);
    ASSERT_EQ(decoded.components[0].samples[i], sample);
    ASSERT_EQ(picture.wideRow(0)[i], sample + 32768);
  }
}

}  // namespace
