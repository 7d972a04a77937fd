// The wrappers: gzip, zlib and raw streams.
#include "hosts/gzip/format.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "hosts/error.h"
#include "tests/hosts/support/streams.h"
#include "tests/hosts/support/texts.h"
#include "tests/hosts/support/zlib_judge.h"
#include "tests/support/random.h"

namespace {

using orbhost::Bytes;
using orbhost::ByteView;
using orbhost::gzip::CompressOptions;
using orbhost::gzip::Expander;
using orbhost::gzip::Format;
using orbhost::gzip::Level;
using orbtest::bytesOf;
using orbtest::MemorySink;
using orbtest::MemorySource;
using orbtest::Sample;
using orbtest::samples;
using orbtest::Wrapper;
using orbtest::zlibDeflate;
using orbtest::zlibInflate;

Bytes compress(ByteView bytes, const CompressOptions& options) {
  MemorySource source(bytes);
  MemorySink sink;
  orbhost::gzip::compress(source, sink, options);
  return sink.all;
}

CompressOptions optionsFor(Format format, Bytes dictionary = {}) {
  CompressOptions options;
  options.format = format;
  options.coding.dictionary = std::move(dictionary);
  return options;
}

struct Expanded {
  Bytes bytes;
  std::string complaint;
  orbhost::gzip::Origin origin;
  Expander::Totals totals = {};
};

Expanded expand(const Bytes& file, std::optional<Format> format = std::nullopt,
                const Bytes& dictionary = {}, size_t piece = SIZE_MAX) {
  MemorySource source(file, piece);
  MemorySink sink;
  Expanded result;
  try {
    Expander expander(source, format, dictionary);
    result.origin = expander.origin();
    result.totals = expander.expand(sink);
    EXPECT_EQ(result.totals.length, sink.all.size());
  } catch (const orbhost::Error& error) {
    result.complaint = error.what();
    EXPECT_NE(result.complaint, "");
  }
  result.bytes = sink.all;
  return result;
}

Bytes operator+(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

Bytes withByte(Bytes file, size_t offset, int value) {
  file[offset] = static_cast<uint8_t>(value);
  return file;
}

TEST(GzipFormat, ZlibAndWeReadEachOther) {
  for (const Sample& sample : samples()) {
    for (const Format format : {Format::kGzip, Format::kZlib}) {
      const Wrapper wrapper = format == Format::kGzip ? Wrapper::kGzip : Wrapper::kZlib;
      CompressOptions options = optionsFor(format);
      options.coding.level = Level::kFast;
      const Bytes ours = compress(sample.bytes, options);
      EXPECT_TRUE(zlibInflate(ours, wrapper) == sample.bytes) << sample.name;
      for (const Bytes& file : {ours, zlibDeflate(sample.bytes, wrapper, {})}) {
        const Expanded expanded = expand(file);
        EXPECT_EQ(expanded.complaint, "") << sample.name;
        EXPECT_TRUE(expanded.bytes == sample.bytes) << sample.name;
        EXPECT_EQ(expanded.totals.compressed, file.size());
        EXPECT_FALSE(expanded.totals.garbageFollowed);
      }
    }
  }
}

// RFC 1952 2.3, byte by byte.
TEST(GzipFormat, GzipHeaderAndTrailer) {
  CompressOptions options;
  options.origin = {"a b", 0x12345678};
  Bytes wanted = {0x1F, 0x8B, 8, 8, 0x78, 0x56, 0x34, 0x12, 2, 3, 'a', ' ', 'b', 0};
  const Bytes empty = {3, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(compress({}, options), wanted + empty);
  const Expanded expanded = expand(wanted + empty);
  EXPECT_EQ(expanded.origin.name, "a b");
  EXPECT_EQ(expanded.origin.time, 0x12345678u);

  options.origin = {};
  options.coding.level = Level::kFast;
  EXPECT_EQ(compress({}, options), (Bytes{0x1F, 0x8B, 8, 0, 0, 0, 0, 0, 4, 3}) + empty);
  options.coding.level = Level::kChain;
  EXPECT_EQ(compress({}, options), (Bytes{0x1F, 0x8B, 8, 0, 0, 0, 0, 0, 0, 3}) + empty);
}

// RFC 1950 2.2.
TEST(GzipFormat, ZlibHeaderAndTrailer) {
  CompressOptions options = optionsFor(Format::kZlib);
  const Bytes empty = {3, 0, 0, 0, 0, 1};
  EXPECT_EQ(compress({}, options), (Bytes{0x78, 0xDA}) + empty);
  options.coding.level = Level::kChain;
  EXPECT_EQ(compress({}, options), (Bytes{0x78, 0x9C}) + empty);
  options.coding.level = Level::kFast;
  EXPECT_EQ(compress({}, options), (Bytes{0x78, 0x01}) + empty);
  // FDICT and the dictionary's Adler-32.
  options.coding.dictionary = bytesOf("123456789");
  EXPECT_EQ(compress({}, options), (Bytes{0x78, 0x20, 0x09, 0x1E, 0x01, 0xDE}) + empty);
}

TEST(GzipFormat, OptionalHeaderFields) {
  const Bytes body = [] {
    const Bytes file = compress(bytesOf("text"), {});
    return Bytes(file.begin() + 10, file.end());
  }();
  const auto header = [](int flags) {
    return Bytes{0x1F, 0x8B, 8, static_cast<uint8_t>(flags), 1, 0, 0, 0, 0, 255};
  };
  const Bytes extra = {5, 0, 'A', 'p', 1, 0, 'x'};
  const Bytes name = bytesOf("n\xFC") + Bytes{0};
  const Bytes comment = bytesOf("said") + Bytes{0};
  for (int flags = 0; flags < 32; ++flags) {
    Bytes file = header(flags);
    if (flags & 4) file = file + extra;
    if (flags & 8) file = file + name;
    if (flags & 16) file = file + comment;
    if (flags & 2) {
      const uLong crc = crc32(0, file.data(), static_cast<uInt>(file.size()));
      file.push_back(static_cast<uint8_t>(crc));
      file.push_back(static_cast<uint8_t>(crc >> 8));
      EXPECT_EQ(expand(withByte(file, file.size() - 1, ~file.back()) + body).complaint,
                "the gzip header is damaged: its checksum is wrong");
    }
    ASSERT_EQ(zlibInflate(file + body, Wrapper::kGzip), bytesOf("text"));
    const Expanded expanded = expand(file + body);
    EXPECT_EQ(expanded.complaint, "") << flags;
    EXPECT_EQ(expanded.bytes, bytesOf("text"));
    EXPECT_EQ(expanded.origin.name, flags & 8 ? "n\xFC" : "");
    EXPECT_EQ(expanded.origin.time, 1u);
  }
  for (const int flags : {32, 64, 128}) {
    EXPECT_EQ(expand(header(flags) + body).complaint, "a gzip header with flags that are reserved");
  }
  EXPECT_EQ(expand(withByte(header(0), 2, 7) + body).complaint,
            "a gzip file of method 7, which is not deflate");
  // A name that no system takes, but the data is there.
  const Expanded endless = expand(header(8) + Bytes(100000, 'n') + Bytes{0} + body);
  EXPECT_EQ(endless.origin.name, "");
  EXPECT_EQ(endless.bytes, bytesOf("text"));
}

TEST(GzipFormat, Members) {
  const Bytes one = compress(bytesOf("one "), {});
  const Bytes none = compress({}, {});
  const Bytes long_ = orbtest::mixture(500000);
  const Bytes file =
      one + none + compress(long_, {}) + zlibDeflate(bytesOf(" three"), Wrapper::kGzip, {});
  for (const size_t piece : {size_t{1}, size_t{100}, SIZE_MAX}) {
    const Expanded expanded = expand(file, Format::kGzip, {}, piece);
    EXPECT_EQ(expanded.complaint, "");
    EXPECT_TRUE(expanded.bytes == bytesOf("one ") + long_ + bytesOf(" three"));
    EXPECT_EQ(expanded.totals.compressed, file.size());
  }
  // A fault in a later member.
  EXPECT_NE(expand(one + Bytes(none.begin(), none.end() - 1)).complaint, "");
  EXPECT_NE(expand(one + withByte(none, 3, 0xFF)).complaint, "");
}

TEST(GzipFormat, WhatFollowsTheEnd) {
  for (const Format format : {Format::kGzip, Format::kZlib, Format::kRaw}) {
    const Bytes file = compress(bytesOf("text"), optionsFor(format));
    const auto garbageFollowed = [&](const Bytes& more, size_t piece) {
      const Expanded expanded = expand(file + more, format, {}, piece);
      EXPECT_EQ(expanded.complaint, "");
      EXPECT_EQ(expanded.bytes, bytesOf("text"));
      EXPECT_EQ(expanded.totals.compressed, file.size());
      return expanded.totals.garbageFollowed;
    };
    for (const size_t piece : {size_t{1}, SIZE_MAX}) {
      EXPECT_FALSE(garbageFollowed({}, piece));
      EXPECT_FALSE(garbageFollowed({0}, piece));
      EXPECT_FALSE(garbageFollowed(Bytes(200000, 0), piece));
      EXPECT_TRUE(garbageFollowed({1}, piece));
      EXPECT_TRUE(garbageFollowed({0x1F}, piece));
      EXPECT_TRUE(garbageFollowed(bytesOf("more"), piece));
      EXPECT_TRUE(garbageFollowed(Bytes(200000, 0) + Bytes{1}, piece));
    }
  }
}

TEST(GzipFormat, DictionariesOfZlibFiles) {
  const Bytes text = orbtest::prose(100000);
  const Bytes dictionary(text.begin(), text.begin() + 50000);
  const Bytes bytes(text.begin() + 20000, text.end());
  const Bytes ours = compress(bytes, optionsFor(Format::kZlib, dictionary));
  EXPECT_TRUE(zlibInflate(ours, Wrapper::kZlib, dictionary) == bytes);
  orbtest::ZlibOptions options;
  options.dictionary = dictionary;
  for (const Bytes& file : {ours, zlibDeflate(bytes, Wrapper::kZlib, options)}) {
    EXPECT_TRUE(expand(file, std::nullopt, dictionary).bytes == bytes);
    const uLong adler = adler32(1, dictionary.data(), static_cast<uInt>(dictionary.size()));
    char hexadecimal[9];
    std::snprintf(hexadecimal, sizeof hexadecimal, "%08lx", adler);
    EXPECT_EQ(expand(file).complaint,
              std::string("needs the dictionary whose Adler-32 is ") + hexadecimal);
    EXPECT_EQ(expand(file, std::nullopt, bytesOf("123456789")).complaint,
              std::string("needs the dictionary whose Adler-32 is ") + hexadecimal +
                  "; that of the given one is 091e01de");
  }
  // One that is not asked for does no harm; a gzip file can't ask.
  EXPECT_EQ(
      expand(compress(bytesOf("text"), optionsFor(Format::kZlib)), Format::kZlib, dictionary).bytes,
      bytesOf("text"));
  EXPECT_EQ(expand(compress(bytesOf("text"), {}), Format::kGzip, dictionary).complaint,
            "a gzip file has no place for a dictionary: that is for zlib and raw streams");
  EXPECT_THROW(compress(bytesOf("text"), optionsFor(Format::kGzip, dictionary)), orbhost::Error);

  const Bytes raw = compress(bytes, optionsFor(Format::kRaw, dictionary));
  EXPECT_TRUE(zlibInflate(raw, Wrapper::kRaw, dictionary) == bytes);
  EXPECT_TRUE(expand(raw, Format::kRaw, dictionary).bytes == bytes);
}

TEST(GzipFormat, WhatIsNoneOfThem) {
  EXPECT_EQ(expand({}).complaint, "the file is empty");
  EXPECT_EQ(expand({}, Format::kRaw).complaint, "the file is empty");
  EXPECT_EQ(expand({0x1F}).complaint, "neither a gzip nor a zlib file");
  EXPECT_EQ(expand(bytesOf("text")).complaint, "neither a gzip nor a zlib file");
  EXPECT_EQ(expand(bytesOf("text"), Format::kGzip).complaint, "not a gzip file");
  EXPECT_EQ(expand(bytesOf("text"), Format::kZlib).complaint, "not a zlib file");
  // RFC 1950: another method, a window above 32768, wrong check bits.
  for (const Bytes& header : {Bytes{0x77, 0x06}, Bytes{0x88, 0x1C}, Bytes{0x78, 0x9D}}) {
    EXPECT_EQ(expand(header + Bytes(10, 0)).complaint, "neither a gzip nor a zlib file");
  }
}

TEST(GzipFormat, WrongTrailers) {
  const Bytes gzip = compress(bytesOf("123456789"), {});
  const size_t end = gzip.size();
  EXPECT_EQ(expand(withByte(gzip, end - 8, 0x27)).complaint,
            "the data is damaged: its CRC-32 is cbf43926, not cbf43927");
  EXPECT_EQ(expand(withByte(gzip, end - 4, 10)).complaint,
            "the data is damaged: it is 9 bytes long, where 10 (modulo 2^32) are promised");
  const Bytes zlib = compress(bytesOf("123456789"), optionsFor(Format::kZlib));
  EXPECT_EQ(expand(withByte(zlib, zlib.size() - 1, 0xDF)).complaint,
            "the data is damaged: its Adler-32 is 091e01de, not 091e01df");
}

TEST(GzipFormat, NoPrefixIsWhole) {
  const Bytes text = orbtest::prose(3000);
  CompressOptions named;
  named.origin = {"name", 1};
  orbtest::ZlibOptions fixed;
  fixed.strategy = Z_FIXED;
  orbtest::ZlibOptions stored;
  stored.level = 0;
  for (const Bytes& file :
       {compress(text, named), compress(text, optionsFor(Format::kZlib)),
        zlibDeflate(text, Wrapper::kGzip, fixed), zlibDeflate(text, Wrapper::kGzip, stored)}) {
    for (size_t size = 0; size < file.size(); ++size) {
      const Bytes prefix(file.begin(), file.begin() + static_cast<long>(size));
      const Expanded expanded = expand(prefix);
      EXPECT_NE(expanded.complaint, "") << size;
      EXPECT_TRUE(std::equal(expanded.bytes.begin(), expanded.bytes.end(), text.begin()));
    }
  }
}

// Each flipped bit is either told or does not matter: name, time and the like.
TEST(GzipFormat, EveryBitMayBeWrong) {
  const Bytes text = orbtest::prose(1500);
  for (const Format format : {Format::kGzip, Format::kZlib, Format::kRaw}) {
    const Bytes file = compress(text, optionsFor(format));
    for (size_t bit = 0; bit < 8 * file.size(); ++bit) {
      const Bytes damaged = withByte(file, bit / 8, file[bit / 8] ^ (1 << bit % 8));
      const Expanded expanded = expand(damaged, format);
      if (expanded.complaint.empty() && format != Format::kRaw) {
        EXPECT_TRUE(expanded.bytes == text) << bit;
      }
    }
  }
}

TEST(GzipFormat, AnyBytesMayBeWrong) {
  orbtest::Random random("GzipFormat.AnyBytesMayBeWrong");
  const Bytes files[] = {compress(orbtest::mixture(30000), {}),
                         compress(orbtest::prose(30000), optionsFor(Format::kZlib)),
                         compress(orbtest::prose(5000), optionsFor(Format::kRaw))};
  for (const Bytes& file : files) {
    const std::optional<Format> format =
        file[0] == 0x1F || file[0] == 0x78 ? std::nullopt : std::optional(Format::kRaw);
    for (int round = 0; round < 300; ++round) {
      Bytes damaged = file;
      for (int n = random.between(1, 6); n > 0; --n) {
        damaged[random.between<size_t>(2, file.size() - 1)] = random.any<uint8_t>();
      }
      if (random.oneIn(4)) {
        const size_t at = random.between<size_t>(2, file.size() - 1);
        damaged.erase(damaged.begin() + static_cast<long>(at),
                      damaged.begin() + static_cast<long>(random.between(at, file.size())));
      }
      expand(damaged, format, {}, random.oneIn(2) ? SIZE_MAX : random.between<size_t>(1, 300));
    }
  }
}

}  // namespace
