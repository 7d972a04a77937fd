// Damaged, cut-off and hostile JPEG files: a message, or a picture where the damage cannot be told;
// never a crash.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "hosts/jpeg/decode.h"
#include "hosts/jpeg/packed_decode.h"
#include "tests/hosts/support/file_kinds.h"
#include "tests/hosts/support/judges.h"
#include "tests/hosts/support/pictures.h"
#include "tests/hosts/support/segments.h"
#include "tests/support/guarded.h"
#include "tests/support/random.h"

namespace {

using orbhost::Bytes;
using orbhost::ByteView;
using orbhost::Error;
using orbhost::jpeg::decodeJpeg;
using orbhost::jpeg::DecodeOptions;
using orbtest::draw;
using orbtest::everyFileKind;
using orbtest::FileKind;
using orbtest::findMarker;
using orbtest::GuardedBytes;
using orbtest::Motif;
using orbtest::smallFile;

// Empty if there is a picture. A read behind the file's end is a fault.
template <class Decode>
std::string messageOf(const Bytes& file, Decode decode) {
  const GuardedBytes guarded(file);
  try {
    decode(ByteView(guarded.data(), file.size()));
  } catch (const Error& error) {
    EXPECT_STRNE(error.what(), "");
    return error.what();
  }
  return "";
}
std::string messageFor(const Bytes& file, const DecodeOptions& options = {}) {
  return messageOf(file, [&](ByteView view) { decodeJpeg(view, options); });
}

// In one of the ways in which a file can be decoded.
void decodeSomehow(const Bytes& file, orbtest::Random& random) {
  DecodeOptions options;
  if (random.oneIn(3)) options.scale = 1 << random.between(0, 3);
  if (random.oneIn(3)) options.scansTo = random.between(1, 5);
  if (random.oneIn(3)) {
    messageOf(file, [&](ByteView view) {
      orbhost::jpeg::decodeJpegPacked(view, orbhost::PackedFormat::kBgr565, options);
    });
  } else {
    messageFor(file, options);
  }
}

Bytes withByte(Bytes file, size_t offset, int value) {
  file[offset] = static_cast<uint8_t>(value);
  return file;
}

#define EXPECT_SAYS(file, text) \
  EXPECT_NE(messageFor(file).find(text), std::string::npos) << messageFor(file)

TEST(JpegDamage, EveryPrefixIsRefused) {
  for (const auto& [name, file] : everyFileKind()) {
    SCOPED_TRACE(name);
    ASSERT_EQ(messageFor(file), "");
    for (size_t size = 0; size < file.size(); ++size) {
      EXPECT_NE(messageFor(orbtest::slice(file, 0, size)), "") << size;
    }
  }
}

TEST(JpegDamage, EveryByteMayBeWrong) {
  orbtest::Random random("EveryByteMayBeWrong");
  for (const auto& [name, file] : everyFileKind()) {
    for (size_t i = 0; i < file.size(); ++i) {
      decodeSomehow(withByte(file, i, file[i] ^ 0xFF), random);
      decodeSomehow(withByte(file, i, file[i] ^ (1 << random.between(0, 7))), random);
      decodeSomehow(withByte(file, i, random.between(0, 255)), random);
    }
  }
}

TEST(JpegDamage, EveryByteMayLackOrComeTwice) {
  orbtest::Random random("EveryByteMayLackOrComeTwice");
  for (const auto& [name, file] : everyFileKind()) {
    for (size_t i = 0; i < file.size(); ++i) {
      Bytes damaged = file;
      damaged.erase(damaged.begin() + static_cast<long>(i));
      decodeSomehow(damaged, random);
      damaged = file;
      damaged.insert(damaged.begin() + static_cast<long>(i), file[i]);
      decodeSomehow(damaged, random);
    }
  }
}

TEST(JpegDamage, AnyBytesMayBeWrong) {
  orbtest::Random random("AnyBytesMayBeWrong");
  std::vector<FileKind> kinds = everyFileKind();
  kinds.push_back(
      {"sampled down", orbtest::cjpeg(draw(Motif::kNoise, 40, 40, 3), {"-sample", "1x2"})});
  kinds.push_back(
      {"without Adobe's segment", orbtest::judgeEncodeCmyk(draw(Motif::kEdges, 24, 24, 4), {})});
  for (const auto& [name, file] : kinds) {
    for (int round = 0; round < 1000; ++round) {
      Bytes damaged = file;
      for (int n = random.between(1, 6); n > 0; --n) {
        damaged[random.between<size_t>(2, file.size() - 1)] = random.any<uint8_t>();
      }
      if (random.oneIn(4)) {
        const size_t at = random.between<size_t>(2, file.size() - 1);
        damaged.erase(damaged.begin() + static_cast<long>(at),
                      damaged.begin() + static_cast<long>(random.between(at, file.size())));
      }
      decodeSomehow(damaged, random);
    }
  }
}

TEST(JpegDamage, EachFaultIsNamed) {
  const Bytes file = smallFile();
  const size_t sof = findMarker(file, 0xC0);
  const size_t dqt = findMarker(file, 0xDB);
  const size_t dht = findMarker(file, 0xC4);
  const size_t sos = findMarker(file, 0xDA);

  EXPECT_SAYS(Bytes{}, "empty");
  EXPECT_SAYS(Bytes({'B', 'M', 0}), "not a JPEG file");
  EXPECT_SAYS(Bytes({0xFF, 0xD8}), "not a JPEG file");
  EXPECT_SAYS(Bytes({0xFF, 0xD8, 0xFF, 0xD9}), "no picture");
  EXPECT_SAYS(withByte(file, 3, 0x01), "a marker was expected");  // the segment's first byte
  EXPECT_SAYS(withByte(file, 3, 0xD3), "no place here");
  EXPECT_SAYS(withByte(file, dqt + 1, 0xFE), "quantisation table 0, which is missing");
  EXPECT_SAYS(withByte(file, dht + 1, 0xFE), "DC Huffman table 0, which is missing");
  EXPECT_SAYS(withByte(file, sos + 1, 0xFE), "a marker was expected");
  EXPECT_SAYS(withByte(withByte(file, dqt + 2, 0), dqt + 3, 1), "a segment of length 1");
  EXPECT_SAYS(withByte(file, sos + 2, 0xFF), "beyond the file's end");
  EXPECT_SAYS(withByte(file, dqt + 4, 0x20), "class and number 20");
  EXPECT_SAYS(withByte(file, dqt + 4, 0x04), "class and number 04");
  EXPECT_SAYS(withByte(file, dqt + 4, 0x10), "too short");
  EXPECT_SAYS(withByte(file, dqt + 5, 0), "a divisor of 0");
  EXPECT_SAYS(withByte(file, dht + 4, 0x21), "class and number 21");
  EXPECT_SAYS(withByte(file, dht + 5, 3), "more codes than their lengths allow");
  EXPECT_SAYS(withByte(file, dht + 20, 0xC8), "");  // length 16 may have that many: too short
  EXPECT_SAYS(withByte(file, dht + 21, 16), "a category of more than 15 bits");
  EXPECT_SAYS(withByte(file, dht + 21, 17), "a DC category of more than 16 bits");

  EXPECT_SAYS(withByte(file, sof + 1, 0xC2), "DC and AC coefficients do not share a scan");
  EXPECT_SAYS(withByte(file, sof + 1, 0xC3), "predictor 0");
  EXPECT_SAYS(withByte(file, sof + 1, 0xC9), "arithmetic-coded sequential JPEG is not supported");
  EXPECT_SAYS(withByte(file, sof + 1, 0xDE), "hierarchical JPEG is not supported");
  EXPECT_SAYS(withByte(file, sof + 1, 0xFE), "a scan before the frame");
  EXPECT_SAYS(withByte(file, sof + 4, 12), "samples of 12 bits");
  EXPECT_SAYS(withByte(withByte(file, sof + 5, 0), sof + 6, 0), "DNL");
  EXPECT_SAYS(withByte(withByte(file, sof + 7, 0), sof + 8, 0), "without columns");
  EXPECT_SAYS(withByte(withByte(file, sof + 5, 0xFF), sof + 7, 0xFF), "cannot come from");
  EXPECT_SAYS(withByte(file, sof + 9, 0), "0 components");
  EXPECT_SAYS(withByte(file, sof + 9, 2), "2 components");
  EXPECT_SAYS(withByte(file, sof + 9, 4), "too short");
  EXPECT_SAYS(withByte(file, sof + 9, 1), "too long");
  EXPECT_SAYS(withByte(file, sof + 11, 0x20), "outside 1 to 4");
  EXPECT_SAYS(withByte(file, sof + 11, 0x51), "outside 1 to 4");
  EXPECT_SAYS(withByte(file, sof + 11, 0x13), "above 2");
  EXPECT_SAYS(withByte(file, sof + 12, 4), "a table of divisors above 3");
  EXPECT_SAYS(withByte(file, sof + 13, file[sof + 10]), "two components of one name");

  EXPECT_SAYS(withByte(file, sos + 4, 0), "has 0 components");
  EXPECT_SAYS(withByte(file, sos + 4, 5), "has 5 components");
  EXPECT_SAYS(withByte(file, sos + 4, 2), "too long");
  EXPECT_SAYS(withByte(file, sos + 5, 77), "does not have");
  EXPECT_SAYS(withByte(file, sos + 7, file[sos + 5]), "names a component twice");
  EXPECT_SAYS(withByte(file, sos + 6, 0x40), "names a table above 3");
  EXPECT_SAYS(withByte(file, sos + 6, 0x02), "AC Huffman table 2, which is missing");
  EXPECT_SAYS(withByte(file, findMarker(file, 0xD1) + 1, 0xD2), "restart marker 1");

  // 12 blocks in an MCU.
  Bytes many = file;
  for (const size_t component : {0, 1, 2}) many[sof + 11 + 3 * component] = 0x22;
  EXPECT_SAYS(many, "more than 10 blocks");

  // A second frame, a second scan, and a scan that lacks.
  Bytes twice(file.begin(), file.begin() + static_cast<long>(sos));
  twice.insert(twice.end(), file.begin() + static_cast<long>(sof), file.end());
  EXPECT_SAYS(twice, "a second frame");
  Bytes scans(file.begin(), file.end() - 2);
  scans.insert(scans.end(), file.begin() + static_cast<long>(sos), file.end());
  EXPECT_SAYS(scans, "a scan behind the last one");
}

TEST(JpegDamage, ScansThatLackOrRepeatAComponent) {
  const Bytes grey = orbtest::cjpeg(draw(Motif::kScene, 16, 16, 1), {});
  // The same scan under a frame of three components, of which it is the first.
  const size_t sof = findMarker(grey, 0xC0);
  Bytes file(grey.begin(), grey.begin() + static_cast<long>(sof));
  for (const int byte :
       {0xFF, 0xC0, 0, 17, 8, 0, 16, 0, 16, 3, 1, 0x11, 0, 2, 0x11, 0, 3, 0x11, 0}) {
    file.push_back(static_cast<uint8_t>(byte));
  }
  file.insert(file.end(), grey.begin() + static_cast<long>(sof) + 13, grey.end());
  EXPECT_SAYS(file, "before every component has had its scan");

  const Bytes scan(grey.begin() + static_cast<long>(findMarker(grey, 0xDA)), grey.end() - 2);
  Bytes twice = file;
  twice.insert(twice.end() - 2, scan.begin(), scan.end());
  EXPECT_SAYS(twice, "a second scan of component 0");

  Bytes whole = file;
  for (const int id : {2, 3}) {
    whole.insert(whole.end() - 2, scan.begin(), scan.end());
    whole[whole.size() - 2 - scan.size() + 5] = static_cast<uint8_t>(id);
  }
  EXPECT_EQ(messageFor(whole), "");
}

}  // namespace
