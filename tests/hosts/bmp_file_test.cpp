// BMP files, as FFmpeg reads them: their samples come out as they lie in the file.
#include "hosts/bmp_file.h"

#include <gtest/gtest.h>

#include <string>

#include "hosts/image_file.h"
#include "tests/hosts/support/lossless_judges.h"
#include "tests/hosts/support/pictures.h"

namespace {

using orbhost::Bytes;
using orbhost::formatBmp;
using orbhost::Image;
using orbhost::PackedFormat;
using orbhost::PackedImage;
using orbtest::draw;
using orbtest::ffmpegDecode;
using orbtest::Motif;

TEST(BmpFile, Of24Bits) {
  for (const int width : {1, 2, 3, 4, 50}) {
    for (const int channels : {1, 3}) {
      const Image image = draw(Motif::kScene, width, 7, channels);
      Bytes rgb;
      for (size_t i = 0; i < image.size(); ++i) {
        rgb.insert(rgb.end(), channels == 3 ? 1 : 3, image.row(0)[i]);
      }
      EXPECT_EQ(ffmpegDecode(formatBmp(image), "rgb24"), rgb);
    }
  }
}

TEST(BmpFile, Of16Bits) {
  for (const auto& [format, pixelFormat] : {std::pair{PackedFormat::kBgr555, "rgb555le"},
                                            std::pair{PackedFormat::kBgr565, "rgb565le"}}) {
    for (const int width : {1, 2, 33}) {
      // Of all values that there are in the word, in rows with room behind them.
      PackedImage image(format, width, 9, width + 5, 16);
      Bytes words;
      int word = 0;
      for (int y = 0; y < 9; ++y) {
        for (int x = 0; x < width; ++x) {
          word = (word * 77 + 1234) & (format == PackedFormat::kBgr555 ? 0x7FFF : 0xFFFF);
          image.row(y)[x] = static_cast<uint16_t>(word);
          words.push_back(static_cast<uint8_t>(word));
          words.push_back(static_cast<uint8_t>(word >> 8));
        }
      }
      EXPECT_EQ(ffmpegDecode(formatBmp(image), pixelFormat), words) << pixelFormat << ' ' << width;
    }
  }
}

TEST(BmpFile, OtherPicturesArePacked) {
  const auto packed = [](const std::string& pnm, PackedFormat format) {
    const Image image = orbhost::parseImage(Bytes(pnm.begin(), pnm.end()));
    return static_cast<int>(pack(image, format).row(0)[0]);
  };
  // 200 is 25 * 8, 100 is 12 * 8 + 4 and 25 * 4, 47 is 5 * 8 + 7.
  EXPECT_EQ(packed("P3 1 1 255 200 100 47", PackedFormat::kBgr555), 25 << 10 | 12 << 5 | 5);
  EXPECT_EQ(packed("P3 1 1 255 200 100 47", PackedFormat::kBgr565), 25 << 11 | 25 << 5 | 5);
  EXPECT_EQ(packed("P2 1 1 255 100", PackedFormat::kBgr565), 12 << 11 | 25 << 5 | 12);
  EXPECT_EQ(packed("P2 1 1 1 1", PackedFormat::kBgr555), 0x7FFF);
  EXPECT_EQ(packed("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE CMYK\nENDHDR\n\xFF" +
                       std::string(3, '\0'),
                   PackedFormat::kBgr555),
            31 << 5 | 31);
}

}  // namespace
