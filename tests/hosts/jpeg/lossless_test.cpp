// Lossless files: ours as others read them, others' as we do, and every kind through both ways.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "hosts/error.h"
#include "hosts/image_convert.h"
#include "hosts/jpeg/decode.h"
#include "hosts/jpeg/encode.h"
#include "tests/hosts/support/lossless_judges.h"
#include "tests/hosts/support/pictures.h"
#include "tests/hosts/support/segments.h"

namespace {

using orbhost::Bytes;
using orbhost::Error;
using orbhost::Image;
using orbhost::jpeg::decodeJpeg;
using orbhost::jpeg::encodeJpeg;
using orbhost::jpeg::EncodeOptions;
using orbhost::jpeg::LosslessOptions;
using orbtest::difference;
using orbtest::draw;
using orbtest::FileParts;
using orbtest::findMarker;
using orbtest::Motif;

Bytes encode(const Image& image, const LosslessOptions& lossless, int restartRows = 0) {
  EncodeOptions options;
  options.lossless = lossless;
  options.restartInterval = restartRows;
  options.restartInRows = true;
  return encodeJpeg(image, options);
}

// The picture without the lowest bits of its samples; of CMYK, of the light that is stored.
Image withoutBits(const Image& image, int bits) {
  Image result(image.width(), image.height(), image.channels(), image.maximum());
  const int flip = image.channels() == 4 ? image.maximum() : 0;
  for (int y = 0; y < image.height(); ++y) {
    result.withRow(y, [&](auto* to) {
      using Sample = std::remove_reference_t<decltype(*to)>;
      image.withRow(y, [&](const auto* from) {
        for (size_t i = 0; i < image.rowSamples(); ++i) {
          to[i] = static_cast<Sample>(((from[i] ^ flip) >> bits << bits) ^ flip);
        }
      });
    });
  }
  return result;
}

int maximumOf(int bits) {
  return (1 << bits) - 1;
}

std::string messageOf(const Bytes& file, const orbhost::jpeg::DecodeOptions& options = {}) {
  try {
    decodeJpeg(file, options);
  } catch (const Error& error) {
    return error.what();
  }
  return "decoded";
}

TEST(JpegLossless, EveryKindComesBack) {
  for (int precision = 2; precision <= 16; ++precision) {
    for (int predictor = 1; predictor <= 7; ++predictor) {
      for (const int channels : {1, 3, 4}) {
        for (const int pointTransform : {0, 1, precision - 1}) {
          for (const Motif motif : {Motif::kScene, Motif::kNoise}) {
            SCOPED_TRACE(std::to_string(precision) + " bits, predictor " +
                         std::to_string(predictor) + ", " + std::to_string(channels) +
                         " channels, " + std::to_string(pointTransform) + " bits less");
            const Image image = draw(motif, 23, 14, channels, maximumOf(precision));
            const Image decoded =
                decodeJpeg(encode(image, {predictor, pointTransform, 0}, predictor % 3 * 4), {});
            EXPECT_EQ(difference(decoded, withoutBits(image, pointTransform)).largest, 0);
            if (HasFailure()) return;
          }
        }
      }
    }
  }
}

TEST(JpegLossless, EverySmallSizeComesBack) {
  for (int width = 1; width <= 9; ++width) {
    for (int height = 1; height <= 5; ++height) {
      for (const int restartRows : {0, 1, 2}) {
        const Image image = draw(Motif::kNoise, width, height, 3, 65535);
        EXPECT_EQ(difference(decodeJpeg(encode(image, {7, 0, 0}, restartRows), {}), image).largest,
                  0);
      }
    }
  }
}

TEST(JpegLossless, ThePhotograph) {
  const Image& image = orbtest::photograph(2);
  for (const int predictor : {1, 4, 7}) {
    EXPECT_EQ(difference(decodeJpeg(encode(image, {predictor, 0, 0}), {}), image).largest, 0);
  }
}

// ---- Others read ours

TEST(JpegLossless, FfmpegReadsEveryPredictor) {
  struct Kind {
    int channels;
    int bits;
    const char* pixelFormat;
    int shift;  // what FFmpeg shifts samples up by
  };
  for (const Kind& kind :
       {Kind{1, 8, "gray", 0}, Kind{3, 8, "rgb24", 0}, Kind{1, 16, "gray16le", 0},
        Kind{3, 16, "rgb48le", 0}, Kind{1, 12, "gray16le", 4}, Kind{3, 12, "rgb48le", 0}}) {
    const Image image = draw(Motif::kScene, 71, 46, kind.channels, maximumOf(kind.bits));
    SCOPED_TRACE(std::string(kind.pixelFormat) + ", " + std::to_string(kind.bits) + " bits");
    // One file behind the other is a film.
    Bytes film;
    for (int predictor = 1; predictor <= 7; ++predictor) {
      const Bytes file = encode(image, {predictor, 0, 0}, predictor % 2);
      film.insert(film.end(), file.begin(), file.end());
    }
    const Bytes raw = orbtest::ffmpegDecode(film, kind.pixelFormat);
    ASSERT_EQ(raw.size(), 7 * image.size());
    size_t at = 0;
    for (int y = 0; y < 7 * image.height(); ++y) {
      image.withRow(y % image.height(), [&](const auto* row) {
        for (size_t i = 0; i < image.rowSamples(); ++i, at += sizeof *row) {
          const int sample = image.isWide() ? raw[at] | raw[at + 1] << 8 : raw[at];
          ASSERT_EQ(sample, row[i] << kind.shift) << "predictor " << y / image.height() + 1;
        }
      });
    }
  }
}

TEST(JpegLossless, DcmtkReadsEveryPredictor) {
  for (const int channels : {1, 3}) {
    for (const int bits : {8, 12, 16}) {
      // In DICOM only grey has more than 8.
      if (channels == 3 && bits != 8) continue;
      for (const Motif motif : {Motif::kScene, Motif::kNoise}) {
        const Image image = draw(motif, 53, 38, channels, maximumOf(bits));
        std::vector<Bytes> files;
        for (int predictor = 1; predictor <= 7; ++predictor) {
          files.push_back(encode(image, {predictor, 0, 0}, predictor % 2 * 3));
          files.push_back(encode(image, {predictor, 2, 0}));
        }
        const std::vector<Image> decoded = orbtest::dcmtkDecode(files, image);
        for (size_t i = 0; i < files.size(); ++i) {
          SCOPED_TRACE(std::to_string(bits) + " bits, file " + std::to_string(i));
          EXPECT_EQ(difference(decoded[i], withoutBits(image, i % 2 * 2)).largest, 0);
        }
      }
    }
  }
}

// A difference of 32768 has a category to itself, and no further bits.
TEST(JpegLossless, TheLargestDifference) {
  Image image(64, 8, 1, 65535);
  for (int y = 0; y < 8; ++y) {
    for (int x = 0; x < 64; ++x) image.wideRow(y)[x] = static_cast<uint16_t>(x % 3 * 32768 + y);
  }
  std::vector<Bytes> files;
  for (int predictor = 1; predictor <= 7; ++predictor) {
    files.push_back(encode(image, {predictor, 0, 0}));
    EXPECT_EQ(difference(decodeJpeg(files.back(), {}), image).largest, 0);
  }
  for (const Image& decoded : orbtest::dcmtkDecode(files, image)) {
    EXPECT_EQ(difference(decoded, image).largest, 0);
  }
}

// ---- We read others'

TEST(JpegLossless, DcmtksFilesOfEveryPredictor) {
  for (const auto& [channels, bits] : {std::pair{1, 8}, std::pair{3, 8}, std::pair{1, 16}}) {
    const Image image = draw(Motif::kNoise, 45, 31, channels, maximumOf(bits));
    for (int predictor = 1; predictor <= 7; ++predictor) {
      SCOPED_TRACE(std::to_string(bits) + " bits, predictor " + std::to_string(predictor));
      const int pointTransform = predictor % 3;
      const Image decoded = decodeJpeg(orbtest::dcmtkEncode(image, predictor, pointTransform), {});
      EXPECT_EQ(difference(decoded, withoutBits(image, pointTransform)).largest, 0);
    }
  }
}

// In FFmpeg's files of full chroma an MCU has two samples of each component, one above the other,
// and nothing tells that they are not RGB.
TEST(JpegLossless, FfmpegsFilesOfFullChroma) {
  for (const int height : {36, 37}) {
    const Image image = draw(Motif::kScene, 51, height, 3);
    const Bytes planes = orbtest::ffmpegConvert(image, "yuvj444p");
    const size_t size = image.size() / 3;
    for (const char* const prediction : {"left", "plane", "median"}) {
      const Image decoded = decodeJpeg(orbtest::ffmpegEncode(image, "yuvj444p", prediction), {});
      ASSERT_EQ(decoded.size(), image.size());
      for (size_t i = 0; i < image.size(); ++i) {
        ASSERT_EQ(decoded.row(0)[i], planes[i % 3 * size + i / 3]) << prediction << ' ' << i;
      }
    }
  }
}

TEST(JpegLossless, FfmpegsFilesOfLessChroma) {
  const int width = 52;
  const int height = 38;
  const Image image = draw(Motif::kScene, width, height, 3);
  for (const auto& [pixelFormat, down] : {std::pair{"yuvj420p", 2}, std::pair{"yuvj422p", 1}}) {
    const Bytes planes = orbtest::ffmpegConvert(image, pixelFormat);
    const uint8_t* const luma = planes.data();
    const uint8_t* const cb = luma + width * height;
    const uint8_t* const cr = cb + width / 2 * (height / down);
    const Image decoded = decodeJpeg(orbtest::ffmpegEncode(image, pixelFormat, "left"), {});
    ASSERT_EQ(decoded.size(), image.size());
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        const double l = luma[y * width + x];
        const double b = cb[y / down * (width / 2) + x / 2] - 128;
        const double r = cr[y / down * (width / 2) + x / 2] - 128;
        const double rgb[3] = {l + 1.402 * r, l - 0.344136 * b - 0.714136 * r, l + 1.772 * b};
        for (int c = 0; c < 3; ++c) {
          ASSERT_NEAR(decoded.row(y)[3 * x + c], std::clamp(rgb[c], 0.0, 255.0), 0.51);
        }
      }
    }
  }
}

// FFmpeg's RGB is that of JPEG 2000's reversible transform, in 9 bits, of which nothing in the file
// tells. What the file holds comes out; the transform's inverse makes the picture of it.
TEST(JpegLossless, FfmpegsTransformedRgb) {
  const Image image = draw(Motif::kScene, 51, 37, 3);
  for (const char* const prediction : {"left", "plane", "median"}) {
    const Image decoded = decodeJpeg(orbtest::ffmpegEncode(image, "bgr24", prediction), {});
    ASSERT_EQ(decoded.maximum(), 511);
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) {
        const uint16_t* const coded = decoded.wideRow(y) + 3 * x;
        const int u = coded[1] - 256;
        const int v = coded[2] - 256;
        const int green = coded[0] - ((u + v) >> 2);
        const uint8_t* const rgb = image.row(y) + 3 * x;
        ASSERT_EQ(green, rgb[1]);
        ASSERT_EQ(v + green, rgb[0]);
        ASSERT_EQ(u + green, rgb[2]);
      }
    }
  }
}

// ---- Scans

// A grey file's scan as that of a component.
Bytes scanOf(const Image& channel, int id, int predictor, int restartRows) {
  Bytes scan = FileParts(encode(channel, {predictor, 0, 0}, restartRows)).scans[0];
  scan[findMarker(scan, 0xDA) + 5] = static_cast<uint8_t>(id);
  return scan;
}

TEST(JpegLossless, ScansOfOneComponentEach) {
  const Image image = draw(Motif::kScene, 40, 30, 3);
  FileParts parts(encode(image, {}));
  parts.scans.clear();
  for (int c = 0; c < 3; ++c) {
    Image channel(40, 30, 1);
    for (int i = 0; i < 40 * 30; ++i) channel.row(0)[i] = image.row(0)[3 * i + c];
    // A scan without restarts says so, since the last one's interval would go on.
    Bytes scan = scanOf(channel, "RGB"[c], c + 1, c == 1 ? 7 : 0);
    if (c == 2) scan.insert(scan.begin(), {0xFF, 0xDD, 0, 4, 0, 0});
    parts.scans.push_back(scan);
  }
  EXPECT_EQ(difference(decodeJpeg(parts.with({0, 1, 2}), {}), image).largest, 0);
  EXPECT_EQ(difference(decodeJpeg(parts.with({2, 0, 1}), {}), image).largest, 0);

  const Image some = decodeJpeg(parts.with({0, 1, 2}), {1, 1});
  for (int i = 0; i < 40 * 30; ++i) {
    ASSERT_EQ(some.row(0)[3 * i], image.row(0)[3 * i]);
    ASSERT_EQ(some.row(0)[3 * i + 1], 128);
  }
  EXPECT_NE(messageOf(parts.with({0, 1})).find("before every component has had its scan"),
            std::string::npos);
  EXPECT_NE(messageOf(parts.with({0, 0})).find("a second scan of component 0"), std::string::npos);
}

TEST(JpegLossless, RestartsLieBetweenRows) {
  const Image image = draw(Motif::kScene, 40, 30, 1);
  const auto restarts = [&](int interval, bool rows) {
    EncodeOptions options;
    options.lossless = LosslessOptions{};
    options.restartInterval = interval;
    options.restartInRows = rows;
    const Bytes file = encodeJpeg(image, options);
    EXPECT_EQ(difference(decodeJpeg(file, {}), image).largest, 0);
    int count = 0;
    for (size_t i = 0; i + 1 < file.size(); ++i) {
      if (file[i] == 0xFF && (file[i + 1] & 0xF8) == 0xD0) {
        EXPECT_EQ(file[i + 1] & 7, count % 8);
        ++count;
      }
    }
    return count;
  };
  EXPECT_EQ(restarts(0, true), 0);
  EXPECT_EQ(restarts(1, true), 29);
  EXPECT_EQ(restarts(29, true), 1);
  EXPECT_EQ(restarts(30, true), 0);
  EXPECT_EQ(restarts(80, false), 14);
  EXPECT_THROW(restarts(20, false), Error);
  EXPECT_THROW(restarts(41, false), Error);
  EXPECT_THROW(restarts(1700, true), Error);  // 68000 MCUs
}

// ---- Ranges and faults

TEST(JpegLossless, SamplesHaveAsManyBitsAsThePictureOrAsIsSaid) {
  const auto bitsOf = [](const Image& image, int precision) {
    const Bytes file = encode(image, {1, 0, precision});
    const Image decoded = decodeJpeg(file, {});
    EXPECT_EQ(decoded.maximum(), maximumOf(file[findMarker(file, 0xC3) + 4]));
    EXPECT_EQ(difference(decoded, orbhost::withMaximum(image, decoded.maximum())).largest, 0);
    return static_cast<int>(file[findMarker(file, 0xC3) + 4]);
  };
  for (const auto& [maximum, bits] :
       {std::pair{1, 2}, std::pair{3, 2}, std::pair{4, 3}, std::pair{255, 8}, std::pair{256, 9},
        std::pair{1000, 10}, std::pair{4095, 12}, std::pair{65534, 16}, std::pair{65535, 16}}) {
    EXPECT_EQ(bitsOf(draw(Motif::kNoise, 16, 9, 1, maximum), 0), bits);
  }
  EXPECT_EQ(bitsOf(draw(Motif::kNoise, 16, 9, 3, 255), 12), 12);
  EXPECT_EQ(bitsOf(draw(Motif::kNoise, 16, 9, 3, 65535), 8), 8);
  const Image image = draw(Motif::kNoise, 16, 9, 1);
  EXPECT_THROW(bitsOf(image, 1), Error);
  EXPECT_THROW(bitsOf(image, 17), Error);
  EXPECT_THROW(encode(image, {0, 0, 0}), Error);
  EXPECT_THROW(encode(image, {8, 0, 0}), Error);
  EXPECT_THROW(encode(image, {1, 8, 0}), Error);
  EXPECT_THROW(encode(image, {1, -1, 0}), Error);
}

TEST(JpegLossless, FaultsAreNamed) {
  const Bytes file = encode(draw(Motif::kScene, 20, 15, 3), {});
  const size_t sof = findMarker(file, 0xC3);
  const size_t sos = findMarker(file, 0xDA);
  const auto says = [&](size_t offset, int value, const std::string& text) {
    Bytes damaged = file;
    damaged[offset] = static_cast<uint8_t>(value);
    const std::string said = messageOf(damaged);
    EXPECT_NE(said.find(text), std::string::npos) << said;
  };
  says(sof + 4, 1, "samples of 1 bits");
  says(sof + 4, 17, "samples of 17 bits");
  says(sos + 11, 0, "predictor 0");
  says(sos + 11, 8, "predictor 8");
  says(sos + 13, 8, "a point transform of 8 bits");
  says(sos + 6, 0x30, "DC Huffman table 3, which is missing");
  says(findMarker(file, 0xC4) + 21, 17, "a DC category of more than 16 bits");
  EXPECT_NE(messageOf(file, {2, 0}).find("its own size"), std::string::npos);

  EncodeOptions options;
  options.lossless = LosslessOptions{};
  options.restartInterval = 1;
  options.restartInRows = true;
  Bytes restarts = encodeJpeg(draw(Motif::kScene, 20, 15, 1), options);
  restarts[findMarker(restarts, 0xDD) + 5] = 19;
  EXPECT_NE(messageOf(restarts).find("restarts within a row"), std::string::npos);

  // Deep YCbCr.
  Bytes deep = encode(draw(Motif::kScene, 20, 15, 3, 4095), {});
  deep[findMarker(deep, 0xEE) + 15] = 1;
  EXPECT_NE(messageOf(deep).find("YCbCr of other than 8 bits"), std::string::npos);
}

}  // namespace
