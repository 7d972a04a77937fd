// Deflate streams, written and read: zlib reads what we write and writes what we read.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "hosts/error.h"
#include "hosts/gzip/checksum.h"
#include "hosts/gzip/deflate_decode.h"
#include "hosts/gzip/deflate_encode.h"
#include "tests/hosts/support/streams.h"
#include "tests/hosts/support/texts.h"
#include "tests/hosts/support/zlib_judge.h"

namespace {

using orbhost::Bytes;
using orbhost::ByteView;
using orbhost::gzip::Blocks;
using orbhost::gzip::Checksum;
using orbhost::gzip::Decoder;
using orbhost::gzip::Deflated;
using orbhost::gzip::DeflateOptions;
using orbhost::gzip::Input;
using orbhost::gzip::Level;
using orbtest::bytesOf;
using orbtest::MemorySink;
using orbtest::MemorySource;
using orbtest::Sample;
using orbtest::samples;
using orbtest::Wrapper;
using orbtest::zlibDeflate;
using orbtest::zlibInflate;
using orbtest::ZlibOptions;

constexpr Level kLevels[] = {Level::kFast, Level::kChain, Level::kLazy};
constexpr Blocks kBlocks[] = {Blocks::kShortest, Blocks::kFixed, Blocks::kDynamic, Blocks::kStored};

DeflateOptions optionsOf(Level level, Blocks blocks) {
  DeflateOptions options;
  options.level = level;
  options.blocks = blocks;
  return options;
}

Bytes deflate(ByteView bytes, const DeflateOptions& options, size_t piece = SIZE_MAX) {
  MemorySource source(bytes, piece);
  MemorySink sink;
  const Deflated result = orbhost::gzip::deflate(source, sink, options, Checksum::kNone);
  EXPECT_EQ(result.length, bytes.size);
  EXPECT_EQ(result.checksum, 0u);
  return sink.all;
}

// Expects the stream to end where the bytes do.
Bytes inflate(ByteView bytes, ByteView dictionary = {}, size_t piece = SIZE_MAX) {
  MemorySource source(bytes, piece);
  MemorySink sink;
  Input input(source);
  Decoder().decode(input, dictionary, sink);
  EXPECT_EQ(input.position(), bytes.size);
  return sink.all;
}

// Says which sample it is, in place of printing megabytes.
void expectEqual(const Bytes& found, const Bytes& wanted, const std::string& name) {
  EXPECT_TRUE(found == wanted) << name << ": " << found.size() << " bytes of " << wanted.size();
}

TEST(Deflate, ZlibReadsWhatWeWrite) {
  for (const Sample& sample : samples()) {
    for (const Level level : kLevels) {
      for (const Blocks blocks : kBlocks) {
        const Bytes stream = deflate(sample.bytes, optionsOf(level, blocks));
        const std::string name = sample.name + ", level " + std::to_string(int(level)) +
                                 ", blocks " + std::to_string(int(blocks));
        expectEqual(zlibInflate(stream, Wrapper::kRaw), sample.bytes, name);
        expectEqual(inflate(stream), sample.bytes, name);
      }
    }
  }
}

TEST(Deflate, WeReadWhatZlibWrites) {
  const Bytes bytes = orbtest::mixture(400000);
  for (int level = 0; level <= 9; ++level) {
    for (const int strategy : {Z_DEFAULT_STRATEGY, Z_FILTERED, Z_HUFFMAN_ONLY, Z_RLE, Z_FIXED}) {
      ZlibOptions options;
      options.level = level;
      options.strategy = strategy;
      expectEqual(inflate(zlibDeflate(bytes, Wrapper::kRaw, options)), bytes,
                  "level " + std::to_string(level) + ", strategy " + std::to_string(strategy));
    }
  }
  for (int windowBits = 9; windowBits <= 15; ++windowBits) {
    for (int memoryLevel = 1; memoryLevel <= 9; ++memoryLevel) {
      ZlibOptions options;
      options.windowBits = windowBits;
      options.memoryLevel = memoryLevel;
      expectEqual(
          inflate(zlibDeflate(bytes, Wrapper::kRaw, options)), bytes,
          "window " + std::to_string(windowBits) + ", memory " + std::to_string(memoryLevel));
    }
  }
  for (const int flush : {Z_SYNC_FLUSH, Z_FULL_FLUSH, Z_PARTIAL_FLUSH, Z_BLOCK}) {
    ZlibOptions options;
    options.flush = flush;
    options.piece = 1000;
    expectEqual(inflate(zlibDeflate(bytes, Wrapper::kRaw, options)), bytes,
                "flush " + std::to_string(flush));
  }
  for (const Sample& sample : samples()) {
    expectEqual(inflate(zlibDeflate(sample.bytes, Wrapper::kRaw, {})), sample.bytes, sample.name);
  }
}

TEST(Deflate, PiecesMakeTheSameStream) {
  const Bytes bytes = orbtest::mixture(1500000);
  const Bytes stream = deflate(bytes, {});
  for (const size_t piece : {1000, 4096, 65537, 1048576}) {
    EXPECT_TRUE(deflate(bytes, {}, piece) == stream) << piece;
    expectEqual(inflate(stream, {}, piece), bytes, "by " + std::to_string(piece));
  }
  // The decoder gives back what it has read ahead, also of pieces that are gone.
  for (const Bytes& one : {stream, deflate(bytes, optionsOf(Level::kFast, Blocks::kStored))}) {
    for (const size_t piece : {1, 2, 3, 5}) {
      expectEqual(inflate(one, {}, piece), bytes, "by " + std::to_string(piece));
    }
  }
}

TEST(Deflate, ChecksumsAreThoseOfTheFormats) {
  for (const Sample& sample : samples()) {
    for (const bool dictionary : {false, true}) {
      DeflateOptions options;
      options.level = Level::kFast;
      if (dictionary) options.dictionary = orbtest::prose(1000);
      const auto checksum = [&](Checksum kind) {
        MemorySource source(sample.bytes);
        MemorySink sink;
        const Deflated result = orbhost::gzip::deflate(source, sink, options, kind);
        EXPECT_EQ(result.length, sample.bytes.size());
        return result.checksum;
      };
      const uInt size = static_cast<uInt>(sample.bytes.size());
      EXPECT_EQ(checksum(Checksum::kCrc32), crc32(crc32(0, nullptr, 0), sample.bytes.data(), size))
          << sample.name;
      EXPECT_EQ(checksum(Checksum::kAdler32),
                adler32(adler32(0, nullptr, 0), sample.bytes.data(), size))
          << sample.name;
    }
  }
}

TEST(Deflate, Dictionaries) {
  const Bytes text = orbtest::prose(100000);
  for (const size_t dictionarySize : {1, 2, 3, 1000, 32767, 32768, 32769, 60000}) {
    const Bytes dictionary(text.begin(), text.begin() + static_cast<long>(dictionarySize));
    // Starts with what ends the dictionary.
    const Bytes bytes(text.begin() + static_cast<long>(dictionarySize / 2), text.end());
    for (const Level level : kLevels) {
      DeflateOptions options;
      options.level = level;
      options.dictionary = dictionary;
      const Bytes stream = deflate(bytes, options);
      const std::string name = std::to_string(dictionarySize);
      expectEqual(zlibInflate(stream, Wrapper::kRaw, dictionary), bytes, name);
      expectEqual(inflate(stream, dictionary), bytes, name);
    }
    ZlibOptions options;
    options.dictionary = dictionary;
    expectEqual(inflate(zlibDeflate(bytes, Wrapper::kRaw, options), dictionary), bytes, "zlib's");
  }

  // It is of use.
  const Bytes dictionary(text.begin(), text.begin() + 30000);
  const Bytes part(text.begin() + 10000, text.begin() + 12000);
  DeflateOptions options;
  options.dictionary = dictionary;
  EXPECT_LT(deflate(part, options).size() * 4, deflate(part, {}).size());
}

TEST(Deflate, LevelsAndBlocksAreWorthTheirNames) {
  const Bytes text = orbtest::prose(1000000);
  const auto size = [&](Level level, Blocks blocks) {
    return deflate(text, optionsOf(level, blocks)).size();
  };
  EXPECT_LT(size(Level::kChain, Blocks::kShortest), size(Level::kFast, Blocks::kShortest));
  EXPECT_LT(size(Level::kLazy, Blocks::kShortest), size(Level::kChain, Blocks::kShortest));
  EXPECT_LT(size(Level::kLazy, Blocks::kDynamic), size(Level::kLazy, Blocks::kFixed));
  // Each stored block of at most 65535 bytes has at most 5 bytes in front.
  EXPECT_GT(size(Level::kLazy, Blocks::kStored), text.size());
  EXPECT_LT(size(Level::kLazy, Blocks::kStored), text.size() + 5 * (text.size() / 20000 + 2));
  // What can't be compressed hardly grows.
  const Bytes noise = orbtest::noise(1000000);
  EXPECT_LT(deflate(noise, {}).size(), noise.size() + noise.size() / 2000);

  EXPECT_EQ(deflate({}, {}), (Bytes{0x03, 0x00}));  // RFC 1951 3.2.6: 1, 01, 0000000
  EXPECT_EQ(deflate({}, optionsOf(Level::kFast, Blocks::kStored)), (Bytes{1, 0, 0, 0xFF, 0xFF}));
}

// A stream's end, where others follow.
TEST(Deflate, StreamsOneAfterTheOther) {
  const Bytes texts[] = {orbtest::prose(70000), {}, orbtest::noise(70000), bytesOf("x")};
  Bytes file;
  for (const Bytes& text : texts) {
    const Bytes stream = deflate(text, {});
    file.insert(file.end(), stream.begin(), stream.end());
  }
  for (const size_t piece : {size_t{1}, size_t{7}, SIZE_MAX}) {
    MemorySource source(file, piece);
    Input input(source);
    Decoder decoder;
    for (const Bytes& text : texts) {
      MemorySink sink;
      decoder.decode(input, {}, sink);
      expectEqual(sink.all, text, "stream of a sequence");
    }
    EXPECT_EQ(input.position(), file.size());
  }
}

// Distances that lead before the start: never into an earlier stream, whose bytes might be secret.
TEST(Deflate, NothingOfAnEarlierStreamIsReached) {
  // The fixed code: a length of 3 (0000001), a distance of 4 (00011), the end (0000000).
  const Bytes early = {0x03, 0x62, 0x00};
  ASSERT_THROW(zlibInflate(early, Wrapper::kRaw), std::runtime_error);
  const Bytes dictionary = bytesOf("abcd");
  ASSERT_EQ(zlibInflate(early, Wrapper::kRaw, dictionary), bytesOf("abc"));

  Bytes file = deflate(orbtest::prose(100000), {});
  file.insert(file.end(), early.begin(), early.end());
  MemorySource source(file);
  Input input(source);
  Decoder decoder;
  MemorySink first;
  decoder.decode(input, {}, first);
  MemorySink second;
  decoder.decode(input, {}, second);
  EXPECT_EQ(second.all, Bytes(3, 0));
  expectEqual(inflate(early, dictionary), bytesOf("abc"), "with a dictionary");
}

std::string messageFor(const Bytes& stream) {
  MemorySource source(stream);
  MemorySink sink;
  Input input(source);
  try {
    Decoder().decode(input, {}, sink);
  } catch (const orbhost::Error& error) {
    return error.what();
  }
  return "";
}

TEST(Deflate, DamageIsTold) {
  EXPECT_EQ(messageFor({}), "the file ends within the compressed data");
  EXPECT_EQ(messageFor({0x02}), "the file ends within the compressed data");
  EXPECT_EQ(messageFor({0x07}), "the compressed data is damaged, at or before byte 1");  // kind 3
  // LEN that NLEN does not confirm.
  EXPECT_EQ(messageFor({0x01, 1, 0, 0xFF, 0xFF, 'x'}),
            "the compressed data is damaged, at or before byte 5");
  // A dynamic block whose code-length code has no code.
  EXPECT_NE(messageFor({0x05, 0, 0, 0, 0, 0, 0}).find("damaged"), std::string::npos);
}

// What came before the damage is there, for who wants to save it.
TEST(Deflate, WhatIsGoodIsWritten) {
  const Bytes text = orbtest::prose(300000);
  Bytes stream = deflate(text, {});
  stream.resize(stream.size() / 2);
  MemorySource source(stream);
  MemorySink sink;
  Input input(source);
  EXPECT_THROW(Decoder().decode(input, {}, sink), orbhost::Error);
  ASSERT_GT(sink.all.size(), text.size() / 3);
  EXPECT_TRUE(std::equal(sink.all.begin(), sink.all.end(), text.begin()));
}

}  // namespace
