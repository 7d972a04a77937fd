// orb pack and orb unpack: whatever is packed comes back, and damage does not.
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "hosts/error.h"
#include "hosts/file.h"
#include "hosts/pack/archive.h"
#include "tests/hosts/support/program.h"
#include "tests/hosts/support/streams.h"
#include "tests/hosts/support/texts.h"

namespace {

using orbhost::Bytes;
using orbhost::ByteView;
using orbhost::Error;
using orbhost::readFile;
using orbhost::writeFile;
using orbhost::pack::Ranking;
using orbtest::Directory;
using orbtest::MemorySink;
using orbtest::MemorySource;
using orbtest::Outcome;
using orbtest::run;
using orbtest::runOrb;

constexpr Ranking kRankings[] = {Ranking::kMoveToFront, Ranking::kIntervals};

Bytes packed(ByteView bytes, Ranking ranking = Ranking::kMoveToFront, size_t piece = SIZE_MAX) {
  MemorySource source(bytes, piece);
  MemorySink sink;
  orbhost::pack::pack(source, sink, ranking);
  return sink.all;
}

Bytes unpacked(ByteView bytes, size_t piece = SIZE_MAX) {
  MemorySource source(bytes, piece);
  MemorySink sink;
  const uint64_t length = orbhost::pack::unpack(source, sink);
  EXPECT_EQ(length, sink.all.size());
  return sink.all;
}

// What is said of a file, if it is refused; then what was written is the beginning of the original.
std::optional<std::string> refusalOf(ByteView bytes, const Bytes& original) {
  MemorySource source(bytes);
  MemorySink sink;
  try {
    orbhost::pack::unpack(source, sink);
  } catch (const Error& error) {
    EXPECT_LE(sink.all.size(), original.size());
    EXPECT_TRUE(std::equal(sink.all.begin(), sink.all.end(), original.begin()));
    return error.what();
  }
  EXPECT_EQ(sink.all, original);
  return std::nullopt;
}

TEST(Pack, EverySampleComesBack) {
  for (const orbtest::Sample& sample : orbtest::samples()) {
    SCOPED_TRACE(sample.name);
    const Bytes start(sample.bytes.begin(),
                      sample.bytes.begin() + std::min<size_t>(sample.bytes.size(), 600000));
    for (const Ranking ranking : kRankings) {
      const Bytes file = packed(start, ranking);
      ASSERT_EQ(unpacked(file), start);
      // Nothing grows by more than its headers.
      EXPECT_LE(file.size(), start.size() + 100 + start.size() / 1000);
    }
  }
}

TEST(Pack, SizesAroundBlocksAndSections) {
  const Bytes text = orbtest::prose(8 * 32768 + 2);
  for (const size_t size : {size_t{0}, size_t{1}, size_t{2}, size_t{3}, size_t{50}, size_t{51},
                            size_t{32767}, size_t{32768}, size_t{32769}, size_t{8 * 32768 - 1},
                            size_t{8 * 32768}, size_t{8 * 32768 + 1}}) {
    for (const Ranking ranking : kRankings) {
      ASSERT_EQ(unpacked(packed({text.data(), size}, ranking)),
                Bytes(text.begin(), text.begin() + size))
          << size;
    }
  }
}

TEST(Pack, PiecesMakeNoDifference) {
  const Bytes text = orbtest::mixture(100000);
  const Bytes file = packed(text);
  for (const size_t piece : {1, 2, 3, 7, 1000}) {
    EXPECT_EQ(packed(text, Ranking::kMoveToFront, piece), file);
    EXPECT_EQ(unpacked(file, piece), text);
  }
}

// Long runs, which come before the sorting; numbers of all sizes behind it.
TEST(Pack, RunsAndLargeNumbers) {
  Bytes bytes = orbtest::run(70000);
  for (int round = 0; round < 40; ++round) {
    for (int value = 255; value >= 0; --value) bytes.push_back(static_cast<uint8_t>(value));
  }
  for (const Ranking ranking : kRankings) {
    const Bytes file = packed(bytes, ranking);
    EXPECT_LT(file.size(), 4000u);
    EXPECT_EQ(unpacked(file), bytes);
  }
}

TEST(Pack, BeatsGzipOnText) {
  Directory directory;
  ASSERT_EQ(
      run({"sh", "-c",
           "cd /usr/share/common-licenses && cat GPL-3 GFDL-1.3 LGPL-2.1 >" + directory / "text" +
               " && gzip -6 -c " + directory / "text" + " >" + directory / "text.gz"})
          .status,
      0);
  EXPECT_LT(packed(readFile(directory / "text")).size(), readFile(directory / "text.gz").size());
}

// ---- Damage

TEST(Pack, EveryByteMayBeWrong) {
  const Bytes text = orbtest::prose(3000);
  const Bytes noise = orbtest::noise(200);
  const Bytes files[] = {packed(text), packed(text, Ranking::kIntervals), packed(noise)};
  const Bytes* const originals[] = {&text, &text, &noise};
  for (int i = 0; i < 3; ++i) {
    for (size_t at = 0; at < files[i].size(); ++at) {
      for (const int flip : {1, 128, 255}) {
        Bytes damaged = files[i];
        damaged[at] ^= static_cast<uint8_t>(flip);
        // Bits that fill up a byte make no difference.
        refusalOf(damaged, *originals[i]);
        ASSERT_FALSE(HasFailure()) << "byte " << at << " of file " << i << ", flipped by " << flip;
      }
    }
  }
}

TEST(Pack, EveryCutIsSeen) {
  const Bytes text = orbtest::prose(3000);
  for (const Ranking ranking : kRankings) {
    const Bytes file = packed(text, ranking);
    for (size_t size = 0; size < file.size(); ++size) {
      ASSERT_EQ(refusalOf({file.data(), size}, text).value_or("nothing"),
                "the file ends within the packed data");
    }
  }
}

TEST(Pack, SaysWhatIsWrong) {
  const Bytes text = orbtest::prose(100000);
  Bytes file = packed(text);
  const auto refusal = [&](const Bytes& bytes) { return refusalOf(bytes, text).value_or(""); };

  Bytes other = file;
  other[0] = 'o';
  EXPECT_EQ(refusal(other), "not a packed file");
  other = file;
  other[3] = 9;
  EXPECT_EQ(refusal(other), "a packed file of version 9, which is not known");
  other = file;
  other[7] ^= 1;  // of the first block's checksum
  EXPECT_EQ(refusal(other), "the packed data is damaged: a block's checksum is wrong");
  other = file;
  other[other.size() - 3] ^= 1;  // of the length
  EXPECT_EQ(refusal(other), "the packed data is damaged");
  file.push_back(0);
  EXPECT_EQ(refusal(file), "the packed file has other data behind its end");
}

// ---- The program

class PackProgram : public testing::Test {
 protected:
  void SetUp() override { writeFile(path_, text_); }

  Directory directory_;
  const Bytes text_ = orbtest::prose(50000);
  const std::string path_ = directory_ / "text";
  const std::string packedPath_ = path_ + ".orb";
};

TEST_F(PackProgram, ReplacesFilesAndBack) {
  for (const bool intervals : {false, true}) {
    std::vector<std::string> command = {"pack", path_};
    if (intervals) command.push_back("--git");
    EXPECT_EQ(runOrb(command).status, 0);
    EXPECT_EQ(directory_.files(), std::vector<std::string>{"text.orb"});
    EXPECT_EQ(unpacked(readFile(packedPath_)), text_);
    EXPECT_EQ(runOrb({"unpack", packedPath_}).status, 0);
    EXPECT_EQ(directory_.files(), std::vector<std::string>{"text"});
    EXPECT_EQ(readFile(path_), text_);
  }
}

TEST_F(PackProgram, KeepsWhatItShould) {
  EXPECT_EQ(runOrb({"pack", "--keep", path_}).status, 0);
  EXPECT_EQ(directory_.files(), (std::vector<std::string>{"text", "text.orb"}));
  EXPECT_EQ(runOrb({"unpack", packedPath_}).status, 2);
  EXPECT_EQ(directory_.files(), (std::vector<std::string>{"text", "text.orb"}));
  EXPECT_EQ(runOrb({"unpack", "--force", packedPath_}).status, 0);
  EXPECT_EQ(directory_.files(), std::vector<std::string>{"text"});
}

TEST_F(PackProgram, ReadsAndWritesStreams) {
  const Outcome outcome = run({"sh", "-c",
                               std::string(ORB_PROGRAM) + " pack <" + path_ + " | " + ORB_PROGRAM +
                                   " unpack >" + directory_ / "back"});
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  EXPECT_EQ(readFile(directory_ / "back"), text_);
}

TEST_F(PackProgram, DamageLeavesNothingBehind) {
  Bytes file = packed(text_);
  file[file.size() / 2] ^= 4;
  writeFile(packedPath_, file);
  EXPECT_EQ(runOrb({"unpack", "--test", packedPath_}).status, 1);
  const Outcome outcome = runOrb({"unpack", "--force", packedPath_});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output.rfind("orb: " + packedPath_ + ": the packed data is damaged", 0), 0u)
      << outcome.output;
  EXPECT_EQ(directory_.files(), (std::vector<std::string>{"text", "text.orb"}));
  EXPECT_EQ(readFile(path_), text_);
}

TEST_F(PackProgram, RefusesOtherNames) {
  EXPECT_EQ(runOrb({"unpack", path_}).status, 2);
  writeFile(packedPath_, packed(text_));
  EXPECT_EQ(runOrb({"pack", packedPath_}).status, 2);
  EXPECT_EQ(runOrb({"unpack", "--test", packedPath_}).status, 0);
  EXPECT_EQ(runOrb({"pack", directory_ / "none"}).status, 1);
  EXPECT_EQ(directory_.files(), (std::vector<std::string>{"text", "text.orb"}));
}

}  // namespace
