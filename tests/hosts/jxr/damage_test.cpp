// Damaged, cut-off and hostile JPEG XR files: a message, or a picture where the damage cannot be
// told; never a crash.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "hosts/error.h"
#include "hosts/jxr/decode.h"
#include "hosts/jxr/encode.h"
#include "tests/hosts/support/jxr_judges.h"
#include "tests/hosts/support/pictures.h"
#include "tests/support/guarded.h"
#include "tests/support/random.h"

namespace {

using orbhost::Bytes;
using orbhost::ByteView;
using orbhost::Error;
using orbhost::jxr::decodeJxr;
using orbhost::jxr::encodeJxr;
using orbhost::jxr::EncodeOptions;
using orbhost::jxr::Subsampling;
using orbtest::draw;
using orbtest::Motif;

// Empty if there is a picture. A read behind the file's end is a fault.
std::string messageFor(const Bytes& file) {
  const orbtest::GuardedBytes guarded(file);
  try {
    decodeJxr(ByteView(guarded.data(), file.size()));
  } catch (const Error& error) {
    EXPECT_STRNE(error.what(), "");
    return error.what();
  }
  return "";
}

// Small files of each kind that there is.
std::vector<Bytes> everyKind() {
  std::vector<Bytes> files;
  for (const int channels : {1, 3, 4}) {
    EncodeOptions options;
    options.quality = channels == 1 ? 100 : 80;
    files.push_back(encodeJxr(draw(Motif::kScene, 36, 20, channels), options));
    options.frequencyOrder = true;
    options.tileWidth = 16;
    options.tileHeight = 32;
    options.trim = 1;
    files.push_back(encodeJxr(draw(Motif::kNoise, 36, 20, channels, 65535), options));
  }
  for (const Subsampling subsampling : {Subsampling::k422, Subsampling::k420}) {
    EncodeOptions options;
    options.quality = 70;
    options.overlap = 2;
    options.subsampling = subsampling;
    files.push_back(encodeJxr(draw(Motif::kScene, 36, 20, 3), options));
  }
  return files;
}

Bytes withByte(Bytes file, size_t offset, int value) {
  file[offset] = static_cast<uint8_t>(value);
  return file;
}

// Where our files have their codestream.
constexpr size_t kCodestream = 8 + 16 + 2 + 5 * 12 + 4;

TEST(JxrDamage, EveryPrefixIsRefused) {
  for (const Bytes& file : everyKind()) {
    ASSERT_EQ(messageFor(file), "");
    for (size_t size = 0; size < file.size(); ++size) {
      EXPECT_NE(messageFor(Bytes(file.begin(), file.begin() + static_cast<long>(size))), "")
          << size;
    }
  }
}

TEST(JxrDamage, EveryByteMayBeWrong) {
  orbtest::Random random("EveryByteMayBeWrong");
  for (const Bytes& file : everyKind()) {
    for (size_t i = 0; i < file.size(); ++i) {
      messageFor(withByte(file, i, file[i] ^ 0xFF));
      messageFor(withByte(file, i, file[i] ^ (1 << random.between(0, 7))));
    }
  }
}

TEST(JxrDamage, AnyBytesMayBeWrong) {
  orbtest::Random random("AnyBytesMayBeWrong");
  for (const Bytes& file : everyKind()) {
    for (int round = 0; round < 300; ++round) {
      Bytes damaged = file;
      for (int n = random.between(1, 6); n > 0; --n) {
        damaged[random.between<size_t>(0, file.size() - 1)] = random.any<uint8_t>();
      }
      if (random.oneIn(4)) {
        const size_t at = random.between<size_t>(0, file.size() - 1);
        damaged.erase(damaged.begin() + static_cast<long>(at),
                      damaged.begin() + static_cast<long>(random.between(at, file.size())));
      }
      messageFor(damaged);
    }
  }
}

#define EXPECT_SAYS(file, text) \
  EXPECT_NE(messageFor(file).find(text), std::string::npos) << messageFor(file)

TEST(JxrDamage, EachFaultIsNamed) {
  EncodeOptions options;
  options.quality = 100;
  const Bytes file = encodeJxr(draw(Motif::kScene, 40, 30, 3), options);
  EXPECT_SAYS(Bytes{}, "not a JPEG XR file");
  EXPECT_SAYS(Bytes({0x49, 0x49, 0x2A, 0, 8, 0, 0, 0}), "not a JPEG XR file");
  EXPECT_SAYS(withByte(file, 7, 0x10), "ends within its tags");
  EXPECT_SAYS(withByte(file, 24, 0), "has no codestream");
  EXPECT_SAYS(withByte(file, kCodestream - 16 - 1, 0x10), "ends before its codestream");
  EXPECT_SAYS(withByte(file, kCodestream, 'V'), "no JPEG XR codestream");
  EXPECT_SAYS(withByte(file, kCodestream + 8, 0x21), "unknown version");
  EXPECT_SAYS(withByte(file, kCodestream + 8, 0x10), "unknown version");
  EXPECT_SAYS(withByte(file, kCodestream + 9, file[kCodestream + 9] | 3), "unknown overlap mode");
  EXPECT_SAYS(withByte(file, kCodestream + 9, file[kCodestream + 9] | 0x40), "index table lacks");
  EXPECT_SAYS(withByte(file, kCodestream + 11, 0x31), "other than grey, RGB and CMYK");
  EXPECT_SAYS(withByte(file, kCodestream + 11, 0x77), "other than those of 8 and 16 bits");
  EXPECT_SAYS(withByte(file, kCodestream + 11, 0x01), "do not go together");
  EXPECT_SAYS(withByte(withByte(file, kCodestream + 12, 0xFF), kCodestream + 14, 0xFF),
              "too short for a picture of that size");
  EXPECT_SAYS(withByte(file, kCodestream + 16, 0xC0), "colour format is not supported");
  EXPECT_SAYS(Bytes(file.begin(), file.end() - 20), "ends before the picture does");
  const size_t packet = kCodestream + 16 + 7 + 6;  // behind the headers of picture, plane, profile
  EXPECT_SAYS(withByte(file, packet + 2, 0), "damaged");
}

}  // namespace
