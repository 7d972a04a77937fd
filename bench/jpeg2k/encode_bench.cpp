// Whole pictures: our host in memory beside OpenJPEG, with the same settings and one thread, in one
// run. The photograph is the Earth of Debian's xplanet-images where that is installed, else a
// scene.
#include <benchmark/benchmark.h>
#include <openjpeg.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "hosts/j2k/encode.h"
#include "orb90legacy.h"
#include "tests/hosts/support/pictures.h"

namespace {

using orbhost::Image;
using orbhost::j2k::EncodeOptions;
using orbtest::photograph;

size_t encodeOurs(double rate) {
  EncodeOptions options;
  options.isRaw = true;
  options.isLossless = rate == 0;
  if (rate != 0) options.rates = {rate};
  return encodeJ2k(photograph(), options).size();
}

// Where OpenJPEG's bytes go.
struct Memory {
  std::vector<unsigned char> bytes;
  size_t position = 0;
};

opj_image_t* theirImage(const Image& image) {
  std::vector<opj_image_cmptparm_t> components(static_cast<size_t>(image.channels()));
  for (opj_image_cmptparm_t& one : components) {
    one = {};
    one.dx = one.dy = 1;
    one.w = static_cast<OPJ_UINT32>(image.width());
    one.h = static_cast<OPJ_UINT32>(image.height());
    one.prec = 8;
  }
  opj_image_t* const result = opj_image_create(static_cast<OPJ_UINT32>(components.size()),
                                               components.data(), OPJ_CLRSPC_SRGB);
  result->x1 = static_cast<OPJ_UINT32>(image.width());
  result->y1 = static_cast<OPJ_UINT32>(image.height());
  const size_t pixels = image.size() / components.size();
  for (size_t c = 0; c < components.size(); ++c) {
    for (size_t i = 0; i < pixels; ++i) {
      result->comps[c].data[i] = image.row(0)[i * components.size() + c];
    }
  }
  return result;
}

size_t encodeTheirs(double rate) {
  opj_cparameters_t parameters;
  opj_set_default_encoder_parameters(&parameters);
  parameters.tcp_mct = 1;
  parameters.irreversible = rate != 0;
  parameters.tcp_numlayers = 1;
  parameters.cp_disto_alloc = 1;
  parameters.tcp_rates[0] = rate == 0 ? 0 : static_cast<float>(24 / rate);
  opj_image_t* const image = theirImage(photograph());
  opj_codec_t* const codec = opj_create_compress(OPJ_CODEC_J2K);
  opj_setup_encoder(codec, &parameters, image);

  Memory memory;
  opj_stream_t* const stream = opj_stream_default_create(OPJ_FALSE);
  opj_stream_set_user_data(stream, &memory, nullptr);
  opj_stream_set_write_function(stream, [](void* from, OPJ_SIZE_T count, void* user) {
    Memory& to = *static_cast<Memory*>(user);
    const auto* const bytes = static_cast<const unsigned char*>(from);
    to.bytes.resize(std::max(to.bytes.size(), to.position + count));
    std::copy(bytes, bytes + count, to.bytes.begin() + static_cast<ptrdiff_t>(to.position));
    to.position += count;
    return count;
  });
  opj_stream_set_seek_function(stream, [](OPJ_OFF_T position, void* user) {
    static_cast<Memory*>(user)->position = static_cast<size_t>(position);
    return OPJ_TRUE;
  });
  opj_stream_set_skip_function(stream, [](OPJ_OFF_T count, void* user) {
    static_cast<Memory*>(user)->position += static_cast<size_t>(count);
    return count;
  });
  const bool isDone = opj_start_compress(codec, image, stream) != OPJ_FALSE &&
                      opj_encode(codec, stream) != OPJ_FALSE &&
                      opj_end_compress(codec, stream) != OPJ_FALSE;
  opj_stream_destroy(stream);
  opj_destroy_codec(codec);
  opj_image_destroy(image);
  return isDone ? memory.bytes.size() : 0;
}

template <class Encode>
void registerEncoder(const std::string& name, Encode encode) {
  benchmark::RegisterBenchmark(name.c_str(), [encode](benchmark::State& state) {
    size_t bytes = 0;
    for (auto _ : state) bytes = encode();
    if (bytes == 0) state.SkipWithError("encoded nothing");
    const double pixels = static_cast<double>(photograph().width()) * photograph().height();
    state.counters["Mpixel/s"] =
        benchmark::Counter(pixels / 1e6, benchmark::Counter::kIsIterationInvariantRate);
    state.counters["bytes"] = static_cast<double>(bytes);
  })->Unit(benchmark::kMillisecond);
}

[[maybe_unused]] const bool registered = [] {
  const auto add = [](const std::string& kind, double rate) {
    registerEncoder("J2kEncode/" + kind + "/orb:" + legacy90orbjGetLibVersion()->targetCpu,
                    [rate] { return encodeOurs(rate); });
    registerEncoder("J2kEncode/" + kind + "/OpenJPEG", [rate] { return encodeTheirs(rate); });
  };
  add("lossless", 0);
  add("0.25bpp", 0.25);
  add("1bpp", 1);
  add("2bpp", 2);
  return true;
}();

}  // namespace
