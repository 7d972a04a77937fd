// Whole pictures: our host in memory beside OpenJPEG's library with one thread, on the same files
// in one run. The photograph is the Earth of Debian's xplanet-images where that is installed, else
// a scene.
#include <benchmark/benchmark.h>
#include <openjpeg.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>

#include "hosts/j2k/decode.h"
#include "hosts/j2k/picture.h"
#include "orb90legacy.h"
#include "tests/hosts/support/pictures.h"

namespace {

using orbhost::Bytes;
using orbhost::Image;
using orbtest::photograph;

// A file in memory, as OpenJPEG reads and writes it.
struct MemoryFile {
  Bytes bytes;
  size_t position = 0;
};

OPJ_SIZE_T readMemory(void* to, OPJ_SIZE_T size, void* user) {
  MemoryFile& file = *static_cast<MemoryFile*>(user);
  const size_t count = std::min(size, file.bytes.size() - file.position);
  if (count == 0) return static_cast<OPJ_SIZE_T>(-1);
  std::memcpy(to, file.bytes.data() + file.position, count);
  file.position += count;
  return count;
}
OPJ_SIZE_T writeMemory(void* from, OPJ_SIZE_T size, void* user) {
  MemoryFile& file = *static_cast<MemoryFile*>(user);
  file.bytes.resize(std::max(file.bytes.size(), file.position + size));
  std::memcpy(file.bytes.data() + file.position, from, size);
  file.position += size;
  return size;
}
OPJ_BOOL seekMemory(OPJ_OFF_T position, void* user) {
  static_cast<MemoryFile*>(user)->position = static_cast<size_t>(position);
  return OPJ_TRUE;
}
OPJ_OFF_T skipMemory(OPJ_OFF_T count, void* user) {
  static_cast<MemoryFile*>(user)->position += static_cast<size_t>(count);
  return count;
}

using Stream = std::unique_ptr<opj_stream_t, decltype(&opj_stream_destroy)>;
using Codec = std::unique_ptr<opj_codec_t, decltype(&opj_destroy_codec)>;
using Picture = std::unique_ptr<opj_image_t, decltype(&opj_image_destroy)>;

Stream streamOf(MemoryFile& file, bool isInput) {
  Stream stream(opj_stream_default_create(isInput ? OPJ_TRUE : OPJ_FALSE), opj_stream_destroy);
  opj_stream_set_user_data(stream.get(), &file, nullptr);
  opj_stream_set_user_data_length(stream.get(), file.bytes.size());
  opj_stream_set_read_function(stream.get(), readMemory);
  opj_stream_set_write_function(stream.get(), writeMemory);
  opj_stream_set_seek_function(stream.get(), seekMemory);
  opj_stream_set_skip_function(stream.get(), skipMemory);
  return stream;
}

void require(OPJ_BOOL worked) {
  if (worked != OPJ_TRUE) throw std::runtime_error("OpenJPEG failed");
}

struct Settings {
  bool isReversible;
  float ratio;  // of all samples to the file; 1 is lossless
};

Bytes encodeTheirs(const Settings& settings) {
  const Image& image = photograph();
  opj_image_cmptparm_t parameters[3] = {};
  for (opj_image_cmptparm_t& component : parameters) {
    component.dx = component.dy = 1;
    component.w = static_cast<OPJ_UINT32>(image.width());
    component.h = static_cast<OPJ_UINT32>(image.height());
    component.prec = 8;
  }
  const Picture picture(opj_image_create(3, parameters, OPJ_CLRSPC_SRGB), opj_image_destroy);
  picture->x1 = parameters[0].w;
  picture->y1 = parameters[0].h;
  for (size_t i = 0; i < image.size(); ++i) {
    picture->comps[i % 3].data[i / 3] = image.row(0)[i];
  }
  opj_cparameters_t coding;
  opj_set_default_encoder_parameters(&coding);
  coding.irreversible = settings.isReversible ? 0 : 1;
  coding.tcp_mct = 1;
  coding.tcp_numlayers = 1;
  coding.tcp_rates[0] = settings.ratio;
  coding.cp_disto_alloc = 1;
  const Codec codec(opj_create_compress(OPJ_CODEC_J2K), opj_destroy_codec);
  require(opj_setup_encoder(codec.get(), &coding, picture.get()));
  MemoryFile file;
  const Stream stream = streamOf(file, false);
  require(opj_start_compress(codec.get(), picture.get(), stream.get()));
  require(opj_encode(codec.get(), stream.get()));
  require(opj_end_compress(codec.get(), stream.get()));
  opj_stream_set_user_data(stream.get(), nullptr, nullptr);
  return file.bytes;
}

// To interleaved bytes, as we do.
Image decodeTheirs(const Bytes& bytes) {
  MemoryFile file{bytes};
  const Stream stream = streamOf(file, true);
  const Codec codec(opj_create_decompress(OPJ_CODEC_J2K), opj_destroy_codec);
  opj_dparameters_t coding;
  opj_set_default_decoder_parameters(&coding);
  require(opj_setup_decoder(codec.get(), &coding));
  opj_image_t* raw = nullptr;
  require(opj_read_header(stream.get(), codec.get(), &raw));
  const Picture picture(raw, opj_image_destroy);
  require(opj_decode(codec.get(), stream.get(), picture.get()));
  Image image(static_cast<int>(picture->comps[0].w), static_cast<int>(picture->comps[0].h), 3);
  for (int y = 0; y < image.height(); ++y) {
    for (int c = 0; c < 3; ++c) {
      const OPJ_INT32* const from =
          picture->comps[c].data + static_cast<size_t>(image.width()) * static_cast<size_t>(y);
      uint8_t* const to = image.row(y) + c;
      for (int x = 0; x < image.width(); ++x) to[3 * x] = static_cast<uint8_t>(from[x]);
    }
  }
  return image;
}

Image decodeOurs(const Bytes& file) {
  return colourPicture(orbhost::j2k::decodeJ2k(file, {}));
}

void registerCodec(const std::string& name, const Settings& settings) {
  const auto file = std::make_shared<Bytes>();
  const auto add = [&](const std::string& title, auto decode) {
    benchmark::RegisterBenchmark(title.c_str(), [=](benchmark::State& state) {
      if (file->empty()) *file = encodeTheirs(settings);
      for (auto _ : state) benchmark::DoNotOptimize(decode(*file).row(0)[0]);
      const double pixels = static_cast<double>(photograph().width()) * photograph().height();
      state.counters["Mpixel/s"] =
          benchmark::Counter(pixels / 1e6, benchmark::Counter::kIsIterationInvariantRate);
      state.counters["bits/pixel"] = static_cast<double>(file->size()) * 8 / pixels;
    })->Unit(benchmark::kMillisecond);
  };
  add("J2kDecode/" + name + "/orb:" + legacy90orbjGetLibVersion()->targetCpu, decodeOurs);
  add("J2kDecode/" + name + "/openjpeg", decodeTheirs);
}

[[maybe_unused]] const bool registered = [] {
  registerCodec("lossless", {true, 1});
  registerCodec("lossy/ratio:12", {false, 12});
  registerCodec("lossy/ratio:40", {false, 40});
  return true;
}();

}  // namespace
