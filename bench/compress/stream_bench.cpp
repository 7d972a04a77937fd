// Whole deflate streams in memory: our host beside zlib, libdeflate and ISA-L at their levels, in
// one run. The percentage is that of the bytes which are left.
#include <benchmark/benchmark.h>
#include <isa-l/igzip_lib.h>
#include <libdeflate.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bench/compress/deflate_data.h"
#include "hosts/gzip/format.h"
#include "tests/hosts/support/streams.h"
#include "tests/hosts/support/zlib_judge.h"

namespace {

using orbbench::Data;
using orbhost::Bytes;
using orbhost::gzip::CompressOptions;
using orbhost::gzip::Expander;
using orbhost::gzip::Format;
using orbhost::gzip::Level;
using orbtest::MemorySink;
using orbtest::MemorySource;
using orbtest::Wrapper;
using orbtest::zlibDeflate;
using orbtest::zlibInflate;

// ---- gzip files of bytes, by level

Bytes byUs(const Bytes& bytes, Level level) {
  CompressOptions options;
  options.format = Format::kGzip;
  options.coding.level = level;
  MemorySource source(bytes);
  MemorySink sink;
  orbhost::gzip::compress(source, sink, options);
  return std::move(sink.all);
}

Bytes byZlib(const Bytes& bytes, int level) {
  orbtest::ZlibOptions options;
  options.level = level;
  return zlibDeflate(bytes, Wrapper::kGzip, options);
}

Bytes byLibdeflate(const Bytes& bytes, int level) {
  const std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor*)> compressor(
      libdeflate_alloc_compressor(level), libdeflate_free_compressor);
  Bytes file(libdeflate_gzip_compress_bound(compressor.get(), bytes.size()));
  file.resize(libdeflate_gzip_compress(compressor.get(), bytes.data(), bytes.size(), file.data(),
                                       file.size()));
  return file;
}

Bytes byIsal(const Bytes& bytes, int level) {
  constexpr uint32_t kWork[] = {ISAL_DEF_LVL0_DEFAULT, ISAL_DEF_LVL1_DEFAULT, ISAL_DEF_LVL2_DEFAULT,
                                ISAL_DEF_LVL3_DEFAULT};
  Bytes work(kWork[level]);
  Bytes file(2 * bytes.size() + 1024);  // its fixed code may expand
  const auto stream = std::make_unique<isal_zstream>();
  isal_deflate_init(stream.get());
  stream->level = static_cast<uint32_t>(level);
  stream->level_buf = work.data();
  stream->level_buf_size = kWork[level];
  stream->gzip_flag = IGZIP_GZIP;
  stream->end_of_stream = 1;
  stream->next_in = const_cast<uint8_t*>(bytes.data());
  stream->avail_in = static_cast<uint32_t>(bytes.size());
  stream->next_out = file.data();
  stream->avail_out = static_cast<uint32_t>(file.size());
  isal_deflate(stream.get());
  file.resize(stream->total_out);
  return file;
}

struct Compressor {
  std::string name;
  std::function<Bytes(const Bytes&)> compress;
};

std::vector<Compressor> compressors() {
  std::vector<Compressor> all;
  const auto add = [&](const std::string& name, auto compress, auto level) {
    all.push_back({name, [=](const Bytes& bytes) { return compress(bytes, level); }});
  };
  add("ours/fast", byUs, Level::kFast);
  add("ours/chain", byUs, Level::kChain);
  add("ours/lazy", byUs, Level::kLazy);
  for (const int level : {1, 6, 9}) add("zlib/" + std::to_string(level), byZlib, level);
  for (const int level : {1, 6, 9}) add("libdeflate/" + std::to_string(level), byLibdeflate, level);
  for (const int level : {0, 1, 3}) add("isa-l/" + std::to_string(level), byIsal, level);
  return all;
}

void timeDeflate(benchmark::State& state, const Bytes& bytes, const Compressor& compressor) {
  Bytes file;
  for (auto _ : state) file = compressor.compress(bytes);
  if (zlibInflate(file, Wrapper::kGzip) != bytes) state.SkipWithError("made of other bytes");
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes.size()));
  state.counters["percent"] =
      100.0 * static_cast<double>(file.size()) / static_cast<double>(bytes.size());
}

// ---- Files that zlib made at its usual level, with their checksums

Bytes expandedByUs(const Bytes& file, size_t size) {
  MemorySource source(file);
  MemorySink sink;
  sink.all.reserve(size);
  Expander(source, std::nullopt, {}).expand(sink);
  return std::move(sink.all);
}

Bytes expandedByZlib(const Bytes& file, size_t) {
  return zlibInflate(file, Wrapper::kGzip);
}

Bytes expandedByLibdeflate(const Bytes& file, size_t size) {
  static libdeflate_decompressor* const decompressor = libdeflate_alloc_decompressor();
  Bytes bytes(size);
  libdeflate_gzip_decompress(decompressor, file.data(), file.size(), bytes.data(), size, nullptr);
  return bytes;
}

void timeInflate(benchmark::State& state, const Bytes& bytes,
                 Bytes (*expand)(const Bytes& file, size_t size)) {
  const Bytes file = byZlib(bytes, 6);
  Bytes expanded;
  for (auto _ : state) expanded = expand(file, bytes.size());
  if (expanded != bytes) state.SkipWithError("expanded to other bytes");
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes.size()));
}

bool registerAll() {
  static const std::vector<Compressor> kCompressors = compressors();
  for (const Data& data : orbbench::deflateData()) {
    for (const Compressor& compressor : kCompressors) {
      benchmark::RegisterBenchmark(
          ("GzipFile/" + std::string(data.name) + "/" + compressor.name).c_str(),
          [&](benchmark::State& state) { timeDeflate(state, data.bytes, compressor); })
          ->Unit(benchmark::kMillisecond);
    }
    const auto addExpander = [&](const char* name, auto expand) {
      benchmark::RegisterBenchmark(
          ("GunzipFile/" + std::string(data.name) + "/" + name).c_str(),
          [&data, expand](benchmark::State& state) { timeInflate(state, data.bytes, expand); })
          ->Unit(benchmark::kMillisecond);
    };
    addExpander("ours", expandedByUs);
    addExpander("zlib", expandedByZlib);
    addExpander("libdeflate", expandedByLibdeflate);
  }
  return true;
}
[[maybe_unused]] const bool registered = registerAll();

}  // namespace
