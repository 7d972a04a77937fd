// Decoding of deflate streams that zlib made at its usual level, whole buffers, in one step and
// over pairs; beside zlib, libdeflate and ISA-L. Bytes are those of the decoded data.
#include <isa-l/igzip_lib.h>
#include <libdeflate.h>
#include <zlib.h>

#include "bench/compress/deflate_data.h"
#include "bench/support/builds.h"
#include "compress/lz77_records.h"

namespace {

using orbbench::Data;
using orbtest::TestBuild;
using Bytes = std::vector<Orb8u>;

struct Sample {
  std::string name;
  Bytes bytes, stream;

  explicit Sample(const Data& data) : name(data.name), bytes(data.bytes) {
    stream.resize(compressBound(bytes.size()));
    z_stream z = {};
    deflateInit2(&z, 6, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
    z.next_in = bytes.data();
    z.avail_in = static_cast<uInt>(bytes.size());
    z.next_out = stream.data();
    z.avail_out = static_cast<uInt>(stream.size());
    deflate(&z, Z_FINISH);
    stream.resize(z.total_out);
    deflateEnd(&z);
  }
};

// `decode` makes bytes of a stream, in room that is just large enough.
template <class Decode>
void time(benchmark::State& state, const Sample& sample, Decode decode) {
  Bytes stream = sample.stream;
  Bytes out(sample.bytes.size() + 1);
  for (auto _ : state) {
    decode(stream, out);
    benchmark::ClobberMemory();
  }
  if (!std::equal(sample.bytes.begin(), sample.bytes.end(), out.begin())) {
    state.SkipWithError("decoded other bytes");
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(sample.bytes.size()));
}

// ---- Ours

struct Host {
  const TestBuild& build;
  OrbLZ77DecState* state;
  Orb8u* src;
  Orb8u* dst;
  Orb32s srcLen, dstLen;

  Host(const TestBuild& b, OrbLZ77DecState& record, Bytes& stream, Bytes& out)
      : build(b),
        state(&record),
        src(stream.data()),
        dst(out.data()),
        srcLen(static_cast<Orb32s>(stream.size())),
        dstLen(static_cast<Orb32s>(out.size())) {
    ORB(orbsDecodeLZ77Init_8u)(orbLZ77ChecksumNone, state);
  }
  void decodeToBytes() {
    OrbStatus status = orbStsNoErr;
    while (status == orbStsNoErr) {
      OrbLZ77BlockMode mode = orbLZ77BlockStored;
      ORB(orbsDecodeLZ77GetBlockType_8u)(&src, &srcLen, &mode, state);
      if (mode == orbLZ77BlockStored) {
        status = ORB(orbsDecodeLZ77StoredBlock_8u)(&src, &srcLen, &dst, &dstLen, state);
      } else {
        const auto coder = mode == orbLZ77BlockFixed ? ORB(orbsDecodeLZ77FixedHuffFull_8u)
                                                     : ORB(orbsDecodeLZ77DynamicHuffFull_8u);
        status = coder(&src, &srcLen, &dst, &dstLen, orbLZ77FlushNone, state);
      }
    }
  }
  void decodeOverPairs() {
    OrbStatus status = orbStsNoErr;
    while (status != orbStsStreamEnd) {
      static OrbLZ77Pair list[8192];
      OrbLZ77Pair* pairs = list;
      Orb32s room = static_cast<Orb32s>(std::size(list));
      const auto code = [&](auto coder) {
        status = coder(&src, &srcLen, &pairs, &room, orbLZ77FlushNone, state);
      };
      code(ORB(orbsDecodeLZ77DynamicHuff_8u));
      if (status == orbStsErr) code(ORB(orbsDecodeLZ77FixedHuff_8u));
      if (status == orbStsErr) {
        status = ORB(orbsDecodeLZ77StoredHuff_8u)(&src, &srcLen, &pairs, &room, state);
      }
      if (status < 0) return;
      Orb32s made = static_cast<Orb32s>(pairs - list);
      pairs = list;
      ORB(orbsDecodeLZ77_8u)(&pairs, &made, &dst, &dstLen, orbLZ77FlushNone, state);
    }
  }
};

// ---- Theirs

void decodeByZlib(Bytes& stream, Bytes& out) {
  z_stream z = {};
  inflateInit2(&z, -15);
  z.next_in = stream.data();
  z.avail_in = static_cast<uInt>(stream.size());
  z.next_out = out.data();
  z.avail_out = static_cast<uInt>(out.size());
  inflate(&z, Z_FINISH);
  inflateEnd(&z);
}

void decodeByLibdeflate(Bytes& stream, Bytes& out) {
  static libdeflate_decompressor* const decompressor = libdeflate_alloc_decompressor();
  size_t made = 0;
  libdeflate_deflate_decompress(decompressor, stream.data(), stream.size(), out.data(), out.size(),
                                &made);
}

void decodeByIsal(Bytes& stream, Bytes& out) {
  static inflate_state isal;
  isal_inflate_init(&isal);
  isal.next_in = stream.data();
  isal.avail_in = static_cast<uint32_t>(stream.size());
  isal.next_out = out.data();
  isal.avail_out = static_cast<uint32_t>(out.size());
  isal_inflate_stateless(&isal);
}

bool registerAll() {
  static std::vector<Sample> samples(orbbench::deflateData().begin(),
                                     orbbench::deflateData().end());
  static OrbLZ77DecState record;
  for (const Sample& sample : samples) {
    const auto add = [&](const std::string& name, auto decode) {
      benchmark::RegisterBenchmark(
          ("Inflate/" + sample.name + "/" + name).c_str(),
          [&sample, decode](benchmark::State& state) { time(state, sample, decode); });
    };
    for (const TestBuild& build : orbtest::runnableBuilds()) {
      add(std::string("one_step/") + build.tag, [&build](Bytes& stream, Bytes& out) {
        Host(build, record, stream, out).decodeToBytes();
      });
      add(std::string("over_pairs/") + build.tag, [&build](Bytes& stream, Bytes& out) {
        Host(build, record, stream, out).decodeOverPairs();
      });
    }
    add("zlib", decodeByZlib);
    add("libdeflate", decodeByLibdeflate);
    add("isa-l", decodeByIsal);
  }
  return true;
}
[[maybe_unused]] const bool registered = registerAll();

}  // namespace
