// Pixels of 16 bits straight from the blocks, beside the judge's of 24.
#include "hosts/jpeg/packed_decode.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "hosts/error.h"
#include "hosts/jpeg/encode.h"
#include "tests/hosts/support/judges.h"
#include "tests/hosts/support/pictures.h"

namespace {

using orbhost::Bytes;
using orbhost::Error;
using orbhost::Image;
using orbhost::PackedFormat;
using orbhost::PackedImage;
using orbhost::jpeg::decodeJpeg;
using orbhost::jpeg::decodeJpegPacked;
using orbtest::cjpeg;
using orbtest::draw;
using orbtest::Motif;

constexpr PackedFormat kFormats[] = {PackedFormat::kBgr555, PackedFormat::kBgr565};

// Each field is the top bits of what the judge has, or a neighbour of that: two inverse transforms
// differ by 1, and the conversion without rounding by another.
void expectTopBitsOf(const Image& rgb, const PackedImage& packed) {
  ASSERT_EQ(packed.width(), rgb.width());
  ASSERT_EQ(packed.height(), rgb.height());
  const int greenBits = packed.format() == PackedFormat::kBgr555 ? 5 : 6;
  int unequal = 0;
  for (int y = 0; y < rgb.height(); ++y) {
    for (int x = 0; x < rgb.width(); ++x) {
      const int pixel = packed.row(y)[x];
      const uint8_t* const expected = rgb.row(y) + 3 * x;
      const int off[3] = {(pixel >> (5 + greenBits)) - (expected[0] >> 3),
                          (pixel >> 5 & ((1 << greenBits) - 1)) - (expected[1] >> (8 - greenBits)),
                          (pixel & 31) - (expected[2] >> 3)};
      for (const int one : off) {
        ASSERT_LE(std::abs(one), 1) << "at " << x << ", " << y;
        unequal += one != 0;
      }
    }
  }
  // A field changes with one sample in 8, or 4 for green of 6 bits, where that is off by 1.
  EXPECT_LE(unequal, rgb.width() * rgb.height() * 3 / 4);
}

TEST(JpegPackedDecode, OfTheUsualSamplings) {
  for (const char* const sampling : {"1x1", "2x1", "2x2"}) {
    for (const auto& [width, height] :
         {std::pair{160, 96}, std::pair{75, 41}, std::pair{17, 3}, std::pair{1, 1}}) {
      for (const char* const scans : {"-baseline", "-progressive"}) {
        SCOPED_TRACE(std::string(sampling) + " " + scans + ", " + std::to_string(width));
        const Bytes file = cjpeg(draw(Motif::kScene, width, height, 3),
                                 {scans, "-sample", sampling, "-quality", "92"});
        const Image expected = orbtest::judgeDecode(file, 1, orbtest::Chroma::kRepeated);
        for (const PackedFormat format : kFormats) {
          expectTopBitsOf(expected, decodeJpegPacked(file, format, {}));
        }
      }
    }
  }
}

TEST(JpegPackedDecode, AnythingElseIsDecodedAndPacked) {
  const Image image = draw(Motif::kScene, 60, 45, 3);
  orbhost::jpeg::EncodeOptions lossless;
  lossless.lossless = orbhost::jpeg::LosslessOptions{};
  for (const Bytes& file :
       {cjpeg(image, {"-sample", "1x2"}), cjpeg(image, {"-sample", "2x1,2x1,2x1"}),
        cjpeg(image, {"-grayscale"}), cjpeg(image, {"-rgb"}),
        orbtest::judgeEncodeCmyk(draw(Motif::kScene, 60, 45, 4), {}),
        orbhost::jpeg::encodeJpeg(image, lossless)}) {
    for (const PackedFormat format : kFormats) {
      const PackedImage expected = pack(decodeJpeg(file, {}), format);
      const PackedImage packed = decodeJpegPacked(file, format, {});
      for (int y = 0; y < 45; ++y) {
        for (int x = 0; x < 60; ++x) ASSERT_EQ(packed.row(y)[x], expected.row(y)[x]);
      }
    }
  }
}

TEST(JpegPackedDecode, ReducedSizesAndSomeScans) {
  const Bytes file = cjpeg(draw(Motif::kScene, 60, 45, 3), {"-progressive"});
  const PackedImage half = decodeJpegPacked(file, PackedFormat::kBgr565, {2});
  const PackedImage expected = pack(decodeJpeg(file, {2}), PackedFormat::kBgr565);
  ASSERT_EQ(half.width(), 30);
  ASSERT_EQ(half.height(), 23);
  for (int y = 0; y < 23; ++y) {
    for (int x = 0; x < 30; ++x) ASSERT_EQ(half.row(y)[x], expected.row(y)[x]);
  }
  // After the first scan a block of luma has one value: its mean.
  const PackedImage first = decodeJpegPacked(file, PackedFormat::kBgr555, {1, 1});
  for (int x = 0; x < 60; ++x) ASSERT_EQ(first.row(0)[x], first.row(0)[x / 8 * 8]);
  EXPECT_THROW(decodeJpegPacked(file, PackedFormat::kBgr555, {3}), Error);
  EXPECT_THROW(decodeJpegPacked(file, PackedFormat::kBgr555, {1, -1}), Error);
}

}  // namespace
