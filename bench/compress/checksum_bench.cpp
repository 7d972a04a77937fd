// Checksums of deflate's wrappers over a buffer that stays in the cache.
#include <isa-l/crc.h>
#include <isa-l/igzip_lib.h>
#include <libdeflate.h>
#include <zlib.h>

#include <vector>

#include "bench/compress/checksum_kernel.h"
#include "bench/support/builds.h"

namespace {

constexpr int kSize = 65536;

// `checksum` takes bytes and their number; `judge` is zlib.
template <class Checksum>
void add(const char* name, uint32_t (*judge)(const std::vector<Orb8u>& bytes), Checksum checksum) {
  benchmark::RegisterBenchmark(name, [=](benchmark::State& state) {
    std::vector<Orb8u> bytes(kSize);
    for (int i = 0; i < kSize; ++i) bytes[i] = static_cast<Orb8u>(i * i >> 7);
    uint32_t sum = 0;
    for (auto _ : state) benchmark::DoNotOptimize(sum = checksum(bytes.data(), kSize));
    if (sum != judge(bytes)) state.SkipWithError("is another checksum");
    state.SetBytesProcessed(state.iterations() * kSize);
  });
}

uint32_t adlerByZlib(const std::vector<Orb8u>& bytes) {
  return static_cast<uint32_t>(adler32(1, bytes.data(), kSize));
}
uint32_t crcByZlib(const std::vector<Orb8u>& bytes) {
  return static_cast<uint32_t>(crc32(0, bytes.data(), kSize));
}

bool registerAll() {
  if (orbtest::runnableBuilds().back().index == orb::kH9) {
    add("Adler32/h9", adlerByZlib, orbbench::adler32OfH9);
    add("Crc32/h9", crcByZlib, orbbench::crc32OfH9);
  }
  add("Adler32/zlib", adlerByZlib, [](const Orb8u* bytes, int size) {
    return static_cast<uint32_t>(adler32(1, bytes, static_cast<uInt>(size)));
  });
  add("Adler32/libdeflate", adlerByZlib,
      [](const Orb8u* bytes, int size) { return libdeflate_adler32(1, bytes, size); });
  add("Adler32/isa-l", adlerByZlib,
      [](const Orb8u* bytes, int size) { return isal_adler32(1, bytes, size); });
  add("Crc32/zlib", crcByZlib, [](const Orb8u* bytes, int size) {
    return static_cast<uint32_t>(crc32(0, bytes, static_cast<uInt>(size)));
  });
  add("Crc32/libdeflate", crcByZlib,
      [](const Orb8u* bytes, int size) { return libdeflate_crc32(0, bytes, size); });
  add("Crc32/isa-l", crcByZlib,
      [](const Orb8u* bytes, int size) { return crc32_gzip_refl(0, bytes, size); });
  return true;
}
[[maybe_unused]] const bool registered = registerAll();

}  // namespace
