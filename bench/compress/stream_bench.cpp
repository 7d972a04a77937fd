// Whole deflate streams: our host in memory beside zlib's levels, in one run. The text is the
// headers of this system's C library, the binary is this program.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "hosts/file.h"
#include "hosts/gzip/format.h"
#include "tests/hosts/support/streams.h"
#include "tests/hosts/support/zlib_judge.h"

namespace {

namespace fs = std::filesystem;

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

constexpr size_t kSize = 8000000;

Bytes headers() {
  std::vector<std::string> paths;
  for (const auto& entry : fs::recursive_directory_iterator("/usr/include")) {
    if (entry.is_regular_file() && entry.path().extension() == ".h") paths.push_back(entry.path());
  }
  std::sort(paths.begin(), paths.end());
  Bytes text;
  for (size_t i = 0; i < paths.size() && text.size() < kSize; ++i) {
    const Bytes file = orbhost::readFile(paths[i]);
    text.insert(text.end(), file.begin(), file.end());
  }
  text.resize(std::min(text.size(), kSize));
  return text;
}

Bytes thisProgram() {
  Bytes program = orbhost::readFile("/proc/self/exe");
  program.resize(std::min(program.size(), kSize));
  return program;
}

const Bytes& data(int64_t kind) {
  static const Bytes kData[] = {headers(), thisProgram()};
  return kData[kind];
}

void report(benchmark::State& state, size_t size, size_t compressed) {
  state.counters["MB/s"] = benchmark::Counter(static_cast<double>(size) / 1e6,
                                              benchmark::Counter::kIsIterationInvariantRate);
  state.counters["percent"] = 100.0 * static_cast<double>(compressed) / static_cast<double>(size);
}

Bytes compressOurs(const Bytes& bytes, Level level) {
  CompressOptions options;
  options.format = Format::kGzip;
  options.coding.level = level;
  MemorySource source(bytes);
  MemorySink sink;
  orbhost::gzip::compress(source, sink, options);
  return std::move(sink.all);
}

Bytes compressTheirs(const Bytes& bytes, int level) {
  orbtest::ZlibOptions options;
  options.level = level;
  return zlibDeflate(bytes, Wrapper::kGzip, options);
}

void DeflateOurs(benchmark::State& state, Level level) {
  const Bytes& bytes = data(state.range(0));
  size_t size = 0;
  for (auto _ : state) size = compressOurs(bytes, level).size();
  report(state, bytes.size(), size);
}
void DeflateZlib(benchmark::State& state, int level) {
  const Bytes& bytes = data(state.range(0));
  size_t size = 0;
  for (auto _ : state) size = compressTheirs(bytes, level).size();
  report(state, bytes.size(), size);
}
BENCHMARK_CAPTURE(DeflateOurs, fast, Level::kFast)->DenseRange(0, 1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(DeflateZlib, 1, 1)->DenseRange(0, 1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(DeflateOurs, chain, Level::kChain)
    ->DenseRange(0, 1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(DeflateZlib, 6, 6)->DenseRange(0, 1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(DeflateOurs, lazy, Level::kLazy)->DenseRange(0, 1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(DeflateZlib, 9, 9)->DenseRange(0, 1)->Unit(benchmark::kMillisecond);

// Of the file that zlib writes at its level 6.
void InflateOurs(benchmark::State& state) {
  const Bytes& bytes = data(state.range(0));
  const Bytes file = compressTheirs(bytes, 6);
  for (auto _ : state) {
    MemorySource source(file);
    MemorySink sink;
    sink.all.reserve(bytes.size());
    Expander(source, std::nullopt, {}).expand(sink);
    benchmark::DoNotOptimize(sink.all.data());
  }
  report(state, bytes.size(), file.size());
}
void InflateZlib(benchmark::State& state) {
  const Bytes& bytes = data(state.range(0));
  const Bytes file = compressTheirs(bytes, 6);
  for (auto _ : state) benchmark::DoNotOptimize(zlibInflate(file, Wrapper::kGzip).data());
  report(state, bytes.size(), file.size());
}
BENCHMARK(InflateOurs)->DenseRange(0, 1)->Unit(benchmark::kMillisecond);
BENCHMARK(InflateZlib)->DenseRange(0, 1)->Unit(benchmark::kMillisecond);

}  // namespace
