// orb wav beside SoX.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "hosts/error.h"
#include "hosts/file.h"
#include "hosts/wav/channels.h"
#include "tests/hosts/support/program.h"

namespace {

using orbhost::Bytes;
using orbhost::readFile;
using orbhost::writeFile;
using orbhost::wav::bytesOf;
using orbhost::wav::formatWav;
using orbhost::wav::join;
using orbhost::wav::parseWav;
using orbhost::wav::SampleFormat;
using orbhost::wav::Sound;
using orbhost::wav::split;
using orbtest::Directory;
using orbtest::run;
using orbtest::runOrb;

constexpr SampleFormat kFormats[] = {SampleFormat::k16, SampleFormat::k24, SampleFormat::kFloat};

// Some noise, louder and louder.
Sound makeSound(SampleFormat format, int channels, size_t length) {
  Sound sound = {format, 44100, channels, {}};
  uint32_t state = 1;
  for (size_t i = 0; i < length * static_cast<size_t>(channels); ++i) {
    state = state * 1664525 + 1013904223;
    const double sample = static_cast<int32_t>(state) / 2147483648.0 * static_cast<double>(i + 1) /
                          static_cast<double>(length * static_cast<size_t>(channels));
    uint32_t code = 0;
    if (format == SampleFormat::kFloat) {
      // Of 16 bits: SoX has 32 for a sample, and of floats keeps fewer than they have.
      const float value = static_cast<float>(std::lround(sample * 32767)) / 32768;
      std::memcpy(&code, &value, sizeof code);
    } else {
      const int half = format == SampleFormat::k16 ? 32767 : 8388607;
      code = static_cast<uint32_t>(static_cast<int>(std::lround(sample * half)));
    }
    for (int k = 0; k < bytesOf(format); ++k) {
      sound.samples.push_back(static_cast<uint8_t>(code >> (8 * k)));
    }
  }
  return sound;
}

// The samples of a file as SoX reads them, in its own format or another.
Bytes samplesBySox(const std::string& path, const std::vector<std::string>& format,
                   const std::vector<std::string>& effect = {}) {
  const Directory directory;
  std::vector<std::string> command = {"sox", "-D", path, "-t", "raw"};
  command.insert(command.end(), format.begin(), format.end());
  command.push_back(directory / "out");
  command.insert(command.end(), effect.begin(), effect.end());
  const orbtest::Outcome outcome = run(command);
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  return readFile(directory / "out");
}
std::vector<std::string> soxFormat(SampleFormat format) {
  return format == SampleFormat::k16   ? std::vector<std::string>{"-e", "signed", "-b", "16"}
         : format == SampleFormat::k24 ? std::vector<std::string>{"-e", "signed", "-b", "24"}
                                       : std::vector<std::string>{"-e", "float", "-b", "32"};
}

TEST(Wav, SoxReadsWhatWeWrite) {
  const Directory directory;
  for (const SampleFormat format : kFormats) {
    for (const int channels : {1, 2, 5}) {
      const Sound sound = makeSound(format, channels, 1000);
      writeFile(directory / "a.wav", formatWav(sound));
      EXPECT_EQ(samplesBySox(directory / "a.wav", soxFormat(format)), sound.samples);
      const Sound read = parseWav(readFile(directory / "a.wav"));
      EXPECT_EQ(read.format, format);
      EXPECT_EQ(read.channels, channels);
      EXPECT_EQ(read.rate, 44100);
      EXPECT_EQ(read.samples, sound.samples);
    }
  }
}

TEST(Wav, FilesDoNotTellTheTime) {
  for (const SampleFormat format : kFormats) {
    const Bytes file = formatWav(makeSound(format, 1, 2));
    EXPECT_EQ(std::string(file.begin(), file.end()).find("PEAK"), std::string::npos);
  }
}

TEST(Wav, ChannelsAreThoseOfSox) {
  const Directory directory;
  for (const SampleFormat format : kFormats) {
    const Sound sound = makeSound(format, 3, 500);
    writeFile(directory / "in.wav", formatWav(sound));
    ASSERT_EQ(runOrb({"wav", "split", directory / "in.wav", directory / "1.wav",
                      directory / "2.wav", directory / "3.wav"})
                  .status,
              0);
    for (const char* const channel : {"1", "2", "3"}) {
      EXPECT_EQ(parseWav(readFile(directory / (std::string(channel) + ".wav"))).samples,
                samplesBySox(directory / "in.wav", soxFormat(format), {"remix", channel}));
    }
    ASSERT_EQ(runOrb({"wav", "join", directory / "1.wav", directory / "2.wav", directory / "3.wav",
                      directory / "again.wav"})
                  .status,
              0);
    EXPECT_EQ(readFile(directory / "again.wav"), readFile(directory / "in.wav"));
    ASSERT_EQ(run({"sox", "-M", directory / "1.wav", directory / "2.wav", directory / "3.wav",
                   directory / "sox.wav"})
                  .status,
              0);
    EXPECT_EQ(samplesBySox(directory / "sox.wav", soxFormat(format)), sound.samples);
  }
}

// A sample from -1 to 1, the first of which is the smallest integer for us and for SoX.
double valueAt(const Bytes& samples, SampleFormat format, size_t index) {
  const size_t at = index * bytesOf(format);
  if (format == SampleFormat::kFloat) {
    float value;
    std::memcpy(&value, samples.data() + at, sizeof value);
    return value;
  }
  uint32_t code = 0;
  const int shift = 32 - 8 * bytesOf(format);
  for (int k = 0; k < bytesOf(format); ++k) {
    code |= static_cast<uint32_t>(samples[at + k]) << (8 * k + shift);
  }
  return static_cast<int32_t>(code) / 2147483648.0;
}

// Our integers lie around 0, theirs have a 0: they are half a step apart at 0, and a whole one
// at 1.
TEST(Wav, OtherFormatsAreNearThoseOfSox) {
  const Directory directory;
  for (const SampleFormat from : kFormats) {
    const Sound sound = makeSound(from, 2, 500);
    writeFile(directory / "in.wav", formatWav(sound));
    for (const SampleFormat to : kFormats) {
      const Bytes ours = withFormat(sound, to).samples;
      const Bytes theirs = samplesBySox(directory / "in.wav", soxFormat(to));
      ASSERT_EQ(ours.size(), theirs.size());
      const bool isCoarse = from == SampleFormat::k16 || to == SampleFormat::k16;
      const double step = isCoarse ? 1 / 32768.0 : 1 / 8388608.0;
      for (size_t i = 0; i < 1000; ++i) {
        ASSERT_NEAR(valueAt(ours, to, i), valueAt(theirs, to, i), 2 * step);
      }
    }
  }
}

TEST(Wav, JoinsWhatFits) {
  Sound a = makeSound(SampleFormat::k16, 1, 10), b = makeSound(SampleFormat::k16, 1, 7);
  const Sound both = join({a, b});
  EXPECT_EQ(both.length(), 10u);
  EXPECT_EQ(valueAt(both.samples, SampleFormat::k16, 2 * 6 + 1),
            valueAt(b.samples, SampleFormat::k16, 6));
  EXPECT_EQ(valueAt(both.samples, SampleFormat::k16, 2 * 7 + 1), 0);
  b.rate = 48000;
  EXPECT_THROW(join({a, b}), orbhost::Error);
  EXPECT_THROW(join({a, makeSound(SampleFormat::k16, 2, 10)}), orbhost::Error);
  EXPECT_EQ(join({a, makeSound(SampleFormat::kFloat, 1, 10)}).format, SampleFormat::k16);
  EXPECT_TRUE(split(makeSound(SampleFormat::k24, 2, 0))[1].samples.empty());
}

TEST(Wav, WhatIsNotReadIsRefused) {
  const Directory directory;
  const Sound sound = makeSound(SampleFormat::k16, 2, 100);
  writeFile(directory / "in.wav", formatWav(sound));
  EXPECT_THROW(parseWav({}), orbhost::Error);
  EXPECT_THROW(parseWav({'R', 'I', 'F', 'F'}), orbhost::Error);
  ASSERT_EQ(run({"sox", directory / "in.wav", "-b", "8", directory / "8.wav"}).status, 0);
  EXPECT_THROW(parseWav(readFile(directory / "8.wav")), orbhost::Error);
  ASSERT_EQ(run({"sox", directory / "in.wav", directory / "in.aiff"}).status, 0);
  EXPECT_THROW(parseWav(readFile(directory / "in.aiff")), orbhost::Error);
  EXPECT_EQ(runOrb({"wav", "split", directory / "in.wav", directory / "1.wav"}).status, 1);
  const Bytes file = readFile(directory / "in.wav");
  for (size_t size = 0; size < file.size(); ++size) {
    try {
      parseWav(Bytes(file.begin(), file.begin() + static_cast<ptrdiff_t>(size)));
    } catch (const orbhost::Error&) {
    }
  }
}

}  // namespace
