// DV frames: beside FFmpeg's decoder, and with all kinds of damage.
#include "hosts/dv/decode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "hosts/error.h"
#include "tests/hosts/dv/clips.h"
#include "tests/support/random.h"

namespace {

using orbhost::Bytes;
using orbhost::ByteView;
using orbhost::dv::Decoder;
using orbhost::dv::detectFormat;
using orbhost::dv::Format;
using orbhost::dv::kDifBytes;
using orbhost::dv::kMacroblocksOfSegment;
using orbhost::dv::kSequenceBytes;
using orbhost::dv::Picture;
using orbhost::dv::placeSegments;
using orbhost::dv::Segment;
using orbtest::Clip;
using orbtest::codedClip;
using orbtest::Random;

ByteView frameOf(const Bytes& stream, const Format& format, int number) {
  return {stream.data() + format.frameBytes() * number, format.frameBytes()};
}

// The planes of all frames, which are whole.
Bytes decodeAll(const Bytes& stream) {
  const Format& format = detectFormat(stream);
  Decoder decoder(format);
  Picture picture(format);
  Bytes all;
  for (int frame = 0; format.frameBytes() * (frame + 1) <= stream.size(); ++frame) {
    EXPECT_EQ(decoder.decode(frameOf(stream, format, frame), picture), 0);
    const Bytes planes = planesOf(picture, format);
    all.insert(all.end(), planes.begin(), planes.end());
  }
  return all;
}

struct Comparison {
  double psnr;
  int largest;
};
Comparison compare(const Bytes& ours, const Bytes& theirs) {
  if (ours.size() != theirs.size() || ours.empty()) return {0, 255};
  Comparison result = {0, 0};
  double sum = 0;
  for (size_t i = 0; i < ours.size(); ++i) {
    const int difference = std::abs(ours[i] - theirs[i]);
    sum += difference * difference;
    result.largest = std::max(result.largest, difference);
  }
  result.psnr = 10 * std::log10(255.0 * 255.0 * static_cast<double>(ours.size()) / (sum + 1e-9));
  return result;
}

// A difference of 8 in one sample rules out that any macroblock of these pictures is elsewhere.
void expectLikeFfmpeg(const Bytes& stream, const std::string& name) {
  const Comparison result = compare(decodeAll(stream), orbtest::judgeDecodeDv(stream));
  EXPECT_GE(result.psnr, 50) << name;
  EXPECT_LE(result.largest, 8) << name;
  std::printf("%s: %.2f dB, differences of up to %d\n", name.c_str(), result.psnr, result.largest);
}

// Where a macroblock's first block has its mode.
constexpr int kModeByte = 5;

// Every macroblock of the stream: its 80 bytes.
template <class Visit>
void forEachMacroblock(Bytes& stream, Visit visit) {
  const Format& format = detectFormat(stream);
  const std::vector<Segment> segments = placeSegments(format);
  for (size_t start = 0; start < stream.size(); start += format.frameBytes()) {
    for (const Segment& segment : segments) {
      for (int m = 0; m < kMacroblocksOfSegment; ++m) {
        visit(stream.data() + start + segment.offset + kDifBytes * m);
      }
    }
  }
}

// Interlaced clips have macroblocks of both modes.
void expectBothModes(Bytes stream, const Clip& clip) {
  int modes[2] = {};
  forEachMacroblock(stream, [&](uint8_t* bytes) { ++modes[bytes[kModeByte] >> 6 & 1]; });
  EXPECT_GT(modes[0], 100) << clip.name;
  if (clip.isInterlaced) {
    EXPECT_GT(modes[1], 0) << clip.name;
  }
}

TEST(DvDecode, EveryFormatIsAsFfmpegDecodesIt) {
  for (const Clip& clip : orbtest::clips()) {
    expectBothModes(codedClip(clip), clip);
    const Format& format = detectFormat(codedClip(clip));
    EXPECT_EQ(format.width, clip.width) << clip.name;
    EXPECT_EQ(format.height, clip.height) << clip.name;
    EXPECT_EQ(codedClip(clip).size(), 2 * format.frameBytes()) << clip.name;
    expectLikeFfmpeg(codedClip(clip), clip.name);
  }
}

// The fields of macroblocks of DV100, those of the last lines too, which coders seldom use: with
// the bit turned in every macroblock the picture is another, and still FFmpeg's.
TEST(DvDecode, FieldModeEverywhere) {
  for (const Clip& clip : orbtest::clips()) {
    if (clip.name.find("DV100") == std::string::npos) continue;
    Bytes stream = codedClip(clip);
    forEachMacroblock(stream, [](uint8_t* bytes) { bytes[kModeByte] |= 0x40; });
    expectLikeFfmpeg(stream, clip.name + " in fields");
  }
}

// The second frame of two in 720 lines has its macroblocks 144 lines above, and the uppermost at
// the bottom.
TEST(DvDecode, SecondFramesOf720Lines) {
  for (const Clip& clip : orbtest::clips()) {
    if (clip.height != 720) continue;
    Bytes stream = codedClip(clip);
    const Format& format = detectFormat(stream);
    Decoder decoder(format);
    Picture first(format), second(format);
    EXPECT_EQ(decoder.decode(frameOf(stream, format, 0), first), 0);
    for (size_t at = 0; at < stream.size(); at += kDifBytes) stream[at + 1] &= 0xF3;
    EXPECT_EQ(decoder.decode(frameOf(stream, format, 0), second), 0);
    for (int y = 0; y < 720; ++y) {
      const uint8_t* const expected = first.row((y + 144) % 720);
      ASSERT_TRUE(std::equal(expected, expected + first.step(), second.row(y))) << y;
    }
  }
}

// ---- The places of macroblocks

// Each pixel belongs to one macroblock, and no segment overlaps another in the data.
TEST(DvPlacement, EveryPixelHasOnePlace) {
  for (const Format& format : orbhost::dv::formats()) {
    SCOPED_TRACE(format.name);
    const bool is411 = format.macroblocks == orbhost::dv::Macroblocks::k411;
    const bool is422 = format.macroblocks == orbhost::dv::Macroblocks::k422;
    std::vector<int> owners(static_cast<size_t>(format.width) * format.height);
    size_t behind = 0;
    for (const Segment& segment : placeSegments(format)) {
      EXPECT_GE(segment.offset, behind);
      behind = segment.offset + kMacroblocksOfSegment * kDifBytes;
      for (const orbhost::dv::Place& place : segment.macroblock) {
        const bool isWide = (is411 && place.x != 704) || place.y == 1072;
        const bool isLow = isWide || is422;
        for (int y = 0; y < (isLow ? 8 : 16); ++y) {
          for (int x = 0; x < (isWide ? 32 : 16); ++x) {
            ++owners[static_cast<size_t>(format.width) * (place.y + y) + place.x + x];
          }
        }
      }
    }
    EXPECT_LE(behind, format.frameBytes());
    EXPECT_EQ(std::count(owners.begin(), owners.end(), 1), static_cast<ptrdiff_t>(owners.size()));
  }
}

// ---- Damage

class DvDamage : public testing::Test {
 protected:
  // Of the first clip, whose second frame is damaged.
  const Bytes& original_ = codedClip(orbtest::clips()[0]);
  const Format& format_ = detectFormat(original_);
  const std::vector<Segment> segments_ = placeSegments(format_);

  // Decodes the first frame, then the damaged second. Segments that are `lost` keep the first
  // frame, the others are those of the whole second one.
  void expectLost(const Bytes& damaged, size_t size, const std::vector<int>& lost) {
    Decoder decoder(format_);
    Picture first(format_), second(format_), shown(format_);
    decoder.decode(frameOf(original_, format_, 0), first);
    decoder.decode(frameOf(original_, format_, 1), second);
    decoder.decode(frameOf(original_, format_, 0), shown);
    const ByteView frame = {frameOf(damaged, format_, 1).data, size};
    EXPECT_EQ(decoder.decode(frame, shown), static_cast<int>(lost.size()));
    for (int n = 0; n < decoder.segments(); ++n) {
      const bool isLost = std::count(lost.begin(), lost.end(), n) > 0;
      for (const orbhost::dv::Place& place : segments_[static_cast<size_t>(n)].macroblock) {
        // Two rows of a macroblock tell whose it is.
        for (const int y : {place.y, place.y + 7}) {
          const uint8_t* const expected = (isLost ? first : second).row(y) + 2 * place.x;
          ASSERT_TRUE(std::equal(expected, expected + 32, shown.row(y) + 2 * place.x))
              << "segment " << n;
        }
      }
    }
  }

  uint8_t* macroblock(Bytes& stream, int n, int m) const {
    return stream.data() + format_.frameBytes() + segments_[static_cast<size_t>(n)].offset +
           kDifBytes * m;
  }
};

TEST_F(DvDamage, BlocksOutOfTheirPlace) {
  Bytes stream = original_;
  macroblock(stream, 3, 0)[0] = 0x76;    // of audio
  macroblock(stream, 50, 4)[1] ^= 0x20;  // of another sequence
  macroblock(stream, 269, 2)[2] ^= 1;    // another number
  expectLost(stream, format_.frameBytes(), {3, 50, 269});
}

TEST_F(DvDamage, BlocksThatSayTheyAreWrong) {
  Bytes stream = original_;
  macroblock(stream, 0, 1)[3] |= 0x70;
  macroblock(stream, 7, 3)[3] |= 0xF0;
  macroblock(stream, 9, 3)[3] |= 0x20;  // replaced by something better
  expectLost(stream, format_.frameBytes(), {0, 7});
}

TEST_F(DvDamage, BlocksWithoutTheirEnd) {
  Bytes stream = original_;
  for (int m = 0; m < kMacroblocksOfSegment; ++m) {
    std::fill_n(macroblock(stream, 20, m) + 4, kDifBytes - 4, uint8_t{0});
  }
  expectLost(stream, format_.frameBytes(), {20});
}

TEST_F(DvDamage, FramesThatAreCut) {
  for (const size_t size : {format_.frameBytes() - 1, 5 * kSequenceBytes, size_t{1}, size_t{0}}) {
    std::vector<int> lost;
    for (size_t n = 0; n < segments_.size(); ++n) {
      if (segments_[n].offset + 400 > size) lost.push_back(static_cast<int>(n));
    }
    expectLost(original_, size, lost);
  }
}

// Whatever the bytes, segments are decoded or counted.
TEST_F(DvDamage, AnyBytes) {
  Random random("any bytes");
  for (const size_t which : {0, 1, 3, 5}) {
    const Clip& clip = orbtest::clips()[which];
    Bytes stream = codedClip(clip);
    const Format& format = detectFormat(stream);
    Decoder decoder(format);
    Picture picture(format);
    int flip = 0;
    forEachMacroblock(stream, [&](uint8_t* bytes) {
      if (++flip % 3 != 0) return;
      for (int i = random.between(1, 10); i > 0; --i) {
        bytes[random.between<size_t>(3, kDifBytes - 1)] ^= random.any<uint8_t>();
      }
    });
    const int damaged = decoder.decode(frameOf(stream, format, 0), picture);
    EXPECT_GT(damaged, 0) << clip.name;
    EXPECT_LE(damaged, decoder.segments()) << clip.name;
  }
}

TEST(DvFormat, OtherBytesAreNoStream) {
  const auto refusal = [](const Bytes& bytes) -> std::string {
    try {
      detectFormat(bytes);
    } catch (const orbhost::Error& error) {
      return error.what();
    }
    return "";
  };
  EXPECT_EQ(refusal({}), "not a DV stream");
  EXPECT_EQ(refusal(Bytes(79, 0x1F)), "not a DV stream");
  EXPECT_EQ(refusal(Bytes(100000, 0)), "not a DV stream");
  Bytes stream = codedClip(orbtest::clips()[0]);
  for (size_t sequence = 0; sequence < stream.size(); sequence += kSequenceBytes) {
    for (size_t at = sequence + 3 * kDifBytes; at < sequence + 6 * kDifBytes; ++at) {
      if (stream[at] == 0x60) stream[at + 3] |= 1;
    }
  }
  EXPECT_EQ(refusal(stream), "a DV stream of type 1, which is not known");
}

// What is wrong with a few blocks of the beginning makes no difference.
TEST(DvFormat, IsThatOfTheMost) {
  Bytes stream = codedClip(orbtest::clips()[1]);
  std::fill_n(stream.begin(), kSequenceBytes / 2, uint8_t{0});
  EXPECT_STREQ(detectFormat(stream).name, "DV 625/50 4:2:0");
}

}  // namespace
