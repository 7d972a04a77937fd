// Checksums of deflate's wrappers as a decoder takes them: on bytes of a stored block, which it
// copies. Beside them a copy, and others' checksums of the source before it is copied.
#include <isa-l/crc.h>
#include <isa-l/igzip_lib.h>
#include <libdeflate.h>
#include <zlib.h>

#include <cstring>
#include <vector>

#include "bench/support/builds.h"
#include "compress/lz77_records.h"

namespace {

using orbtest::TestBuild;

constexpr size_t kSize = 65535;

struct Block {
  Orb8u header[5] = {0, 0xFF, 0xFF, 0, 0};  // RFC 1951, 3.2.4: stored, and another block follows
  Orb8u bytes[kSize];

  Block() {
    for (size_t i = 0; i < kSize; ++i) bytes[i] = static_cast<Orb8u>(i * i >> 7);
  }
};
Block block;
Orb8u copy[kSize];

template <class Body>
void timeBytes(benchmark::State& state, Body body) {
  for (auto _ : state) {
    body();
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kSize));
}

void decodeStored(benchmark::State& state, const TestBuild& build, OrbLZ77Checksum kind) {
  static OrbLZ77DecState record;
  timeBytes(state, [&] {
    ORB(orbsDecodeLZ77Init_8u)(kind, &record);
    Orb8u* src = block.header;
    Orb8u* dst = copy;
    Orb32s srcLen = sizeof block;
    Orb32s dstLen = sizeof copy;
    OrbLZ77BlockMode mode;
    ORB(orbsDecodeLZ77GetBlockType_8u)(&src, &srcLen, &mode, &record);
    ORB(orbsDecodeLZ77StoredBlock_8u)(&src, &srcLen, &dst, &dstLen, &record);
  });
  if (std::memcmp(copy, block.bytes, kSize) != 0) state.SkipWithError("copied other bytes");
}

// `checksum` takes bytes and their number.
template <class Checksum>
void copyAfter(benchmark::State& state, Checksum checksum) {
  timeBytes(state, [&] {
    benchmark::DoNotOptimize(checksum(block.bytes, kSize));
    std::memcpy(copy, block.bytes, kSize);
  });
}

bool registerAll() {
  const struct {
    const char* name;
    OrbLZ77Checksum kind;
  } kKinds[] = {{"None", orbLZ77ChecksumNone},
                {"Adler32", orbLZ77ChecksumAdler32},
                {"Crc32", orbLZ77ChecksumCRC32}};
  for (const auto& [name, kind] : kKinds) {
    for (const TestBuild& build : orbtest::runnableBuilds()) {
      benchmark::RegisterBenchmark(
          (std::string("Checksum/") + name + "/" + build.tag).c_str(),
          [&build, k = kind](benchmark::State& state) { decodeStored(state, build, k); });
    }
  }
  const auto add = [](const char* name, auto checksum) {
    benchmark::RegisterBenchmark(name,
                                 [=](benchmark::State& state) { copyAfter(state, checksum); });
  };
  add("Checksum/None/memcpy", [](const Orb8u*, size_t) { return 0; });
  add("Checksum/Adler32/zlib",
      [](const Orb8u* bytes, size_t size) { return adler32(1, bytes, static_cast<uInt>(size)); });
  add("Checksum/Adler32/libdeflate",
      [](const Orb8u* bytes, size_t size) { return libdeflate_adler32(1, bytes, size); });
  add("Checksum/Adler32/isa-l",
      [](const Orb8u* bytes, size_t size) { return isal_adler32(1, bytes, size); });
  add("Checksum/Crc32/zlib",
      [](const Orb8u* bytes, size_t size) { return crc32(0, bytes, static_cast<uInt>(size)); });
  add("Checksum/Crc32/libdeflate",
      [](const Orb8u* bytes, size_t size) { return libdeflate_crc32(0, bytes, size); });
  add("Checksum/Crc32/isa-l",
      [](const Orb8u* bytes, size_t size) { return crc32_gzip_refl(0, bytes, size); });
  return true;
}
[[maybe_unused]] const bool registered = registerAll();

}  // namespace
