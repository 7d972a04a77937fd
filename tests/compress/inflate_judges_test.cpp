// Streams that other programs make: zlib, libdeflate and zopfli, at every setting that shapes a
// stream, decoded on both routes, in pieces of every kind.
#include <libdeflate.h>
#include <zlib.h>
#include <zopfli/deflate.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

#include "tests/compress/inflate_host.h"

namespace {

using namespace orbtest;

// ---- Data

Bytes words(Random& random, size_t size) {
  std::vector<std::string> vocabulary;
  for (int i = 0; i < 400; ++i) {
    std::string word;
    for (int n = random.between(1, 9); n > 0; --n)
      word += "etaoinshrdlucmfw"[random.between(0, 15)];
    vocabulary.push_back(word);
  }
  Bytes text;
  while (text.size() < size) {
    const size_t at = random.between<size_t>(0, random.between<size_t>(0, vocabulary.size() - 1));
    text.insert(text.end(), vocabulary[at].begin(), vocabulary[at].end());
    text.push_back(random.oneIn(12) ? '\n' : ' ');
  }
  return text;
}
// From the middle of this program.
Bytes machineCode(size_t size) {
  std::ifstream file("/proc/self/exe", std::ios::binary);
  file.seekg(1 << 20);
  Bytes code(size);
  file.read(reinterpret_cast<char*>(code.data()), static_cast<std::streamsize>(size));
  return code;
}
// A slope with noise.
Bytes samples(Random& random, size_t size) {
  Bytes bytes(size);
  for (size_t i = 0; i < size; ++i) {
    bytes[i] = static_cast<Orb8u>(i / 37 + i % 256 / 7 + random.between<size_t>(0, 3));
  }
  return bytes;
}
// Repetitions of all short distances, with long runs of one byte.
Bytes runs(Random& random, size_t size) {
  Bytes bytes;
  while (bytes.size() < size) {
    const size_t period = random.between<size_t>(1, 20);
    const Bytes period_bytes = randomBytes(random, period);
    for (size_t n = random.between<size_t>(1, 700); n > 0; --n) {
      bytes.push_back(period_bytes[n % period]);
    }
  }
  return bytes;
}

const std::vector<Bytes>& data() {
  static const std::vector<Bytes> all = [] {
    Random random("data");
    return std::vector<Bytes>{{},
                              {'1'},
                              words(random, 12000),
                              machineCode(16000),
                              samples(random, 8000),
                              runs(random, 50000),
                              randomBytes(random, 3000),
                              Bytes(50000)};
  }();
  return all;
}

// ---- Their encoders

struct Settings {
  int level = 6;
  int windowBits = 15;
  int memLevel = 8;
  int strategy = Z_DEFAULT_STRATEGY;
  int flush = Z_NO_FLUSH;
  size_t piece = 2345;  // between two flushes
};
Bytes zlibStream(const Bytes& bytes, const Settings& settings, const Bytes& dictionary = {}) {
  z_stream z = {};
  EXPECT_EQ(deflateInit2(&z, settings.level, Z_DEFLATED, -settings.windowBits, settings.memLevel,
                         settings.strategy),
            Z_OK);
  if (!dictionary.empty()) {
    deflateSetDictionary(&z, dictionary.data(), static_cast<uInt>(dictionary.size()));
  }
  Bytes stream(bytes.size() * 2 + 10000);
  z.next_out = stream.data();
  z.avail_out = static_cast<uInt>(stream.size());
  z.next_in = const_cast<Bytef*>(bytes.data());
  for (size_t at = 0; at < bytes.size(); at += settings.piece) {
    z.avail_in = static_cast<uInt>(std::min(bytes.size() - at, settings.piece));
    EXPECT_EQ(deflate(&z, settings.flush), Z_OK);
  }
  EXPECT_EQ(deflate(&z, Z_FINISH), Z_STREAM_END);
  stream.resize(z.total_out);
  deflateEnd(&z);
  return stream;
}

Bytes libdeflateStream(const Bytes& bytes, int level) {
  libdeflate_compressor* const compressor = libdeflate_alloc_compressor(level);
  Bytes stream(libdeflate_deflate_compress_bound(compressor, bytes.size()));
  stream.resize(libdeflate_deflate_compress(compressor, bytes.data(), bytes.size(), stream.data(),
                                            stream.size()));
  libdeflate_free_compressor(compressor);
  return stream;
}

// Type 0 to 2 as in RFC 1951: stored, fixed, dynamic.
Bytes zopfliStream(const Bytes& bytes, int type) {
  ZopfliOptions options;
  ZopfliInitOptions(&options);
  options.numiterations = 1;
  unsigned char bit = 0;
  unsigned char* stream = nullptr;
  size_t size = 0;
  ZopfliDeflate(&options, type, 1, bytes.data(), bytes.size(), &bit, &stream, &size);
  const Bytes result(stream, stream + size);
  std::free(stream);
  return result;
}

// ---- Our decoder

struct Pieces {
  Sizes source, output;
};
const Pieces kPieces[] = {{{1 << 20}, {1 << 20}},
                          {{1}, {1 << 20}},
                          {{1 << 20}, {1}},
                          {{2}, {3}},
                          {{7}, {7}},
                          {{3}, {2}},
                          {{500, true}, {500, true}},
                          {{40, true}, {90, true}}};

// On one route as a whole, on the other in pieces; routes and pieces go round.
void expectDecodes(const TestBuild& build, Bytes stream, const Bytes& bytes) {
  static size_t turn = 0;
  ++turn;
  const ptrdiff_t length = static_cast<ptrdiff_t>(stream.size());
  stream.insert(stream.end(), 9, 0x5A);
  for (const Route route : {Route::kBytes, Route::kPairs}) {
    const bool isWhole = (route == Route::kBytes) == (turn % 2 == 0);
    const Pieces& pieces = kPieces[isWhole ? 0 : 1 + turn % (std::size(kPieces) - 1)];
    InflateHost host(build, route, pieces.source, pieces.output);
    EXPECT_EQ(host.decode(stream, bytes.size() + 1), orbStsStreamEnd);
    EXPECT_EQ(host.used, length);
    EXPECT_TRUE(host.out == bytes);
  }
}

struct Sample {
  Bytes stream;
  const Bytes* bytes;
};
void expectAll(const TestBuild& build, const std::vector<Sample>& samplesToDecode) {
  for (size_t i = 0; i < samplesToDecode.size(); ++i) {
    expectDecodes(build, samplesToDecode[i].stream, *samplesToDecode[i].bytes);
    ASSERT_FALSE(testing::Test::HasFailure()) << "sample " << i;
  }
}

ORB_MEANING(orbsDecodeLZ77DynamicHuffFull_8u, ZlibLevelsAndStrategies) {
  static const std::vector<Sample> all = [] {
    std::vector<Sample> made;
    for (const Bytes& bytes : data()) {
      for (int level = 0; level <= 9; ++level) {
        Settings settings;
        settings.level = level;
        made.push_back({zlibStream(bytes, settings), &bytes});
      }
      for (const int strategy : {Z_FILTERED, Z_HUFFMAN_ONLY, Z_RLE, Z_FIXED}) {
        Settings settings;
        settings.strategy = strategy;
        made.push_back({zlibStream(bytes, settings), &bytes});
      }
    }
    return made;
  }();
  expectAll(build, all);
}

ORB_MEANING(orbsDecodeLZ77DynamicHuffFull_8u, ZlibWindowsAndMemory) {
  static const std::vector<Sample> all = [] {
    std::vector<Sample> made;
    for (const Bytes& bytes : data()) {
      for (int windowBits = 9; windowBits <= 15; ++windowBits) {
        Settings settings;
        settings.windowBits = windowBits;
        settings.memLevel = windowBits - 6;
        made.push_back({zlibStream(bytes, settings), &bytes});
      }
      // Many small blocks.
      Settings settings;
      settings.memLevel = 1;
      made.push_back({zlibStream(bytes, settings), &bytes});
    }
    return made;
  }();
  expectAll(build, all);
}

ORB_MEANING(orbsDecodeLZ77DynamicHuffFull_8u, ZlibFlushes) {
  static const std::vector<Sample> all = [] {
    std::vector<Sample> made;
    for (const Bytes& bytes : data()) {
      for (const int flush : {Z_PARTIAL_FLUSH, Z_SYNC_FLUSH, Z_FULL_FLUSH, Z_BLOCK}) {
        Settings settings;
        settings.flush = flush;
        made.push_back({zlibStream(bytes, settings), &bytes});
        if (bytes.size() > 16000) continue;
        settings.piece = 100;
        made.push_back({zlibStream(bytes, settings), &bytes});
      }
    }
    return made;
  }();
  expectAll(build, all);
}

ORB_MEANING(orbsDecodeLZ77DynamicHuffFull_8u, LibdeflateLevels) {
  static const std::vector<Sample> all = [] {
    std::vector<Sample> made;
    for (const Bytes& bytes : data()) {
      for (int level = 1; level <= 12; ++level)
        made.push_back({libdeflateStream(bytes, level), &bytes});
    }
    return made;
  }();
  expectAll(build, all);
}

ORB_MEANING(orbsDecodeLZ77DynamicHuffFull_8u, ZopfliTypes) {
  static const std::vector<Bytes> parts = [] {
    std::vector<Bytes> made;
    for (const Bytes& bytes : data()) {
      made.emplace_back(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(
                                                           std::min<size_t>(bytes.size(), 9000)));
    }
    return made;
  }();
  static const std::vector<Sample> all = [] {
    std::vector<Sample> made;
    for (const Bytes& bytes : parts) {
      for (int type = 0; type <= 2; ++type) made.push_back({zopfliStream(bytes, type), &bytes});
    }
    return made;
  }();
  expectAll(build, all);
}

// A dictionary that the encoder had too, on both routes.
ORB_MEANING(orbsDecodeLZ77SetDictionary_8u, ZlibDictionaries) {
  Random random("dictionaries");
  const Bytes& text = data()[2];
  for (const size_t size : {1u, 5u, 258u, 8000u, 11000u}) {
    const Bytes dictionary(text.begin(), text.begin() + static_cast<ptrdiff_t>(size));
    const Bytes bytes(text.begin() + static_cast<ptrdiff_t>(size) / 2, text.end());
    const Bytes stream = zlibStream(bytes, {}, dictionary);
    Inflater first(build), second(build);
    first.setDictionary(dictionary);
    second.setDictionary(dictionary);
    Bytes out;
    InflateStep step = {orbStsNoErr, 0, {}, {}};
    for (Bytes rest = stream; step.status == orbStsNoErr;) {
      step = first.toBytes(orbLZ77BlockDynamic, rest, bytes.size() - out.size() + 1);
      out.insert(out.end(), step.bytes.begin(), step.bytes.end());
      rest.erase(rest.begin(), rest.begin() + step.used);
    }
    EXPECT_EQ(step.status, orbStsStreamEnd);
    EXPECT_TRUE(out == bytes);
    out.clear();
    step = {orbStsNoErr, 0, {}, {}};
    for (Bytes rest = stream; step.status == orbStsNoErr || step.status == orbStsDstFull;) {
      step = second.toPairs(orbLZ77BlockDynamic, rest, 5000);
      const Bytes more = second.expand(step.pairs, bytes.size() + 1).bytes;
      out.insert(out.end(), more.begin(), more.end());
      rest.erase(rest.begin(), rest.begin() + step.used);
    }
    EXPECT_EQ(step.status, orbStsStreamEnd);
    EXPECT_TRUE(out == bytes);
  }
}

}  // namespace
