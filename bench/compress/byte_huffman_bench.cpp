// The byte Huffman coder, beside zlib's Huffman coding without a search for matches of the same
// blocks. Bytes are those of the blocks.
#include <zlib.h>

#include <string>

#include "bench/compress/blocks.h"
#include "bench/support/builds.h"
#include "compress/huffman_records.h"

namespace {

using orbbench::Blocks;
using orbbench::Bytes;
using orbtest::TestBuild;

constexpr Orb32s kLength = static_cast<Orb32s>(orbbench::kBlockLength);

// A block's codes, and its stream.
struct Coded {
  OrbHuffState encoder;
  OrbHuffState decoder;
  Bytes stream;

  explicit Coded(const Bytes& block) : stream(kLength * 4 + 4) {
    Orb32s frequencies[256] = {}, lengths[256];
    for (const Orb8u byte : block) ++frequencies[byte];
    legacy90orbsEncodeHuffInit_8u(frequencies, &encoder);
    legacy90orbsHuffGetLenCodeTable_8u(lengths, &encoder);
    legacy90orbsDecodeHuffInit_8u(lengths, &decoder);
    OrbHuffState state = encoder;
    Orb32s written = 0, last = 0;
    legacy90orbsEncodeHuff_8u(block.data(), kLength, stream.data(), &written, &state);
    legacy90orbsEncodeHuffFinal_8u(stream.data() + written, &last, &state);
    stream.resize(static_cast<size_t>(written + last));
  }
};
std::vector<Coded> codedBlocks(const Blocks& blocks) {
  std::vector<Coded> coded;
  for (const Bytes& block : blocks) coded.emplace_back(block);
  return coded;
}

template <const Blocks& blocks()>
void encode(benchmark::State& state, const TestBuild& build) {
  const std::vector<Coded> coded = codedBlocks(blocks());
  Bytes stream(kLength * 4 + 4);
  for (auto _ : state) {
    for (size_t i = 0; i < coded.size(); ++i) {
      OrbHuffState encoder = coded[i].encoder;
      Orb32s written = 0, last = 0;
      ORB(orbsEncodeHuff_8u)(blocks()[i].data(), kLength, stream.data(), &written, &encoder);
      ORB(orbsEncodeHuffFinal_8u)(stream.data() + written, &last, &encoder);
    }
    benchmark::ClobberMemory();
  }
  orbbench::countBlocks(state);
}

template <const Blocks& blocks()>
void makeEncoder(benchmark::State& state, const TestBuild& build) {
  OrbHuffState encoder;
  for (auto _ : state) {
    for (const Bytes& block : blocks()) {
      Orb32s frequencies[256] = {};
      for (const Orb8u byte : block) ++frequencies[byte];
      ORB(orbsEncodeHuffInit_8u)(frequencies, &encoder);
    }
    benchmark::ClobberMemory();
  }
  orbbench::countBlocks(state);
}

template <const Blocks& blocks()>
void decode(benchmark::State& state, const TestBuild& build) {
  const std::vector<Coded> coded = codedBlocks(blocks());
  Bytes back(kLength);
  for (auto _ : state) {
    for (const Coded& one : coded) {
      OrbHuffState decoder = one.decoder;
      Orb32s length = kLength;
      ORB(orbsDecodeHuff_8u)
      (one.stream.data(), static_cast<Orb32s>(one.stream.size()), back.data(), &length, &decoder);
    }
    benchmark::ClobberMemory();
  }
  if (back != blocks().back()) state.SkipWithError("another block came back");
  orbbench::countBlocks(state);
}

z_stream theirEncoder() {
  z_stream stream = {};
  deflateInit2(&stream, 6, Z_DEFLATED, -15, 8, Z_HUFFMAN_ONLY);
  return stream;
}
Bytes theirStream(z_stream& stream, const Bytes& block) {
  Bytes coded(deflateBound(&stream, kLength));
  deflateReset(&stream);
  stream.next_in = const_cast<Orb8u*>(block.data());
  stream.avail_in = kLength;
  stream.next_out = coded.data();
  stream.avail_out = static_cast<uInt>(coded.size());
  deflate(&stream, Z_FINISH);
  coded.resize(stream.total_out);
  return coded;
}

template <const Blocks& blocks()>
void theirEncode(benchmark::State& state) {
  z_stream stream = theirEncoder();
  for (auto _ : state) {
    for (const Bytes& block : blocks()) benchmark::DoNotOptimize(theirStream(stream, block));
  }
  deflateEnd(&stream);
  orbbench::countBlocks(state);
}

template <const Blocks& blocks()>
void theirDecode(benchmark::State& state) {
  z_stream encoder = theirEncoder(), stream = {};
  Blocks coded;
  for (const Bytes& block : blocks()) coded.push_back(theirStream(encoder, block));
  deflateEnd(&encoder);
  inflateInit2(&stream, -15);
  Bytes back(kLength);
  for (auto _ : state) {
    for (Bytes& one : coded) {
      inflateReset(&stream);
      stream.next_in = one.data();
      stream.avail_in = static_cast<uInt>(one.size());
      stream.next_out = back.data();
      stream.avail_out = kLength;
      inflate(&stream, Z_FINISH);
    }
    benchmark::ClobberMemory();
  }
  inflateEnd(&stream);
  if (back != blocks().back()) state.SkipWithError("another block came back");
  orbbench::countBlocks(state);
}

template <const Blocks& blocks()>
void registerAll(const std::string& kind) {
  orbbench::onEachBuild(("orbsEncodeHuffInit_8u/" + kind).c_str(), makeEncoder<blocks>);
  orbbench::onEachBuild(("orbsEncodeHuff_8u/" + kind).c_str(), encode<blocks>);
  benchmark::RegisterBenchmark(("EncodeHuff/" + kind + "/zlib").c_str(), theirEncode<blocks>);
  orbbench::onEachBuild(("orbsDecodeHuff_8u/" + kind).c_str(), decode<blocks>);
  benchmark::RegisterBenchmark(("DecodeHuff/" + kind + "/zlib").c_str(), theirDecode<blocks>);
}

[[maybe_unused]] const bool registered = [] {
  registerAll<orbbench::textBlocks>("text");
  registerAll<orbbench::programBlocks>("program");
  return true;
}();

}  // namespace
