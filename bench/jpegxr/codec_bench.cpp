// Whole pictures: our host in memory beside jxrlib, with the same settings, in one run. The
// photograph is the Earth of Debian's xplanet-images where that is installed, else a scene.
#include <benchmark/benchmark.h>

#include <string>

#include "bench/jpegxr/jxrlib_peer.h"
#include "hosts/jxr/decode.h"
#include "hosts/jxr/encode.h"
#include "orb90legacy.h"
#include "tests/hosts/support/pictures.h"

namespace {

using orbhost::Bytes;
using orbhost::jxr::EncodeOptions;
using orbhost::jxr::Subsampling;
using orbtest::photograph;

void registerCodec(const std::string& name, int quantiser, bool halvedChroma) {
  EncodeOptions options;
  options.quantiser = quantiser;
  options.subsampling = halvedChroma ? Subsampling::k420 : Subsampling::k444;
  const std::string ours = std::string("/orb:") + legacy90orbjGetLibVersion()->targetCpu;
  const std::string theirs = "/jxrlib";
  const auto add = [&](const std::string& title, auto work) {
    benchmark::RegisterBenchmark(title.c_str(), [work](benchmark::State& state) {
      for (auto _ : state) benchmark::DoNotOptimize(work());
      const double pixels = static_cast<double>(photograph().width()) * photograph().height();
      state.counters["Mpixel/s"] =
          benchmark::Counter(pixels / 1e6, benchmark::Counter::kIsIterationInvariantRate);
    })->Unit(benchmark::kMillisecond);
  };
  add("JxrEncode/" + name + ours, [=] { return encodeJxr(photograph(), options).size(); });
  add("JxrEncode/" + name + theirs,
      [=] { return orbbench::jxrlibEncode(photograph(), quantiser, halvedChroma).size(); });
  const Bytes file = encodeJxr(photograph(), options);
  add("JxrDecode/" + name + ours, [=] { return orbhost::jxr::decodeJxr(file).row(0)[0]; });
  add("JxrDecode/" + name + theirs, [=] { return orbbench::jxrlibDecode(file).row(0)[0]; });
}

[[maybe_unused]] const bool registered = [] {
  registerCodec("444/lossless", 0, false);
  registerCodec("444/quantiser32", 32, false);
  registerCodec("420/quantiser32", 32, true);
  return true;
}();

}  // namespace
