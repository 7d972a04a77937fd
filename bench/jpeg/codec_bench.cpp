// Whole pictures: our host in memory beside libjpeg-turbo, with the same settings, in one run. The
// photograph is the Earth of Debian's xplanet-images where that is installed, else a scene.
#include <benchmark/benchmark.h>
// jpeglib.h needs size_t and FILE.
#include <jpeglib.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "hosts/jpeg/decode.h"
#include "hosts/jpeg/encode.h"
#include "orb90legacy.h"
#include "tests/hosts/support/pictures.h"

namespace {

using orbhost::Bytes;
using orbhost::Image;
using orbhost::jpeg::EncodeOptions;
using orbhost::jpeg::Sampling;
using orbtest::photograph;

constexpr int kQuality = 90;

void setPixels(benchmark::State& state) {
  const double pixels = static_cast<double>(photograph().width()) * photograph().height();
  state.counters["Mpixel/s"] =
      benchmark::Counter(pixels / 1e6, benchmark::Counter::kIsIterationInvariantRate);
}

// Progressive files have the same scans from both, with tables made for each of them.
enum class Process { kBaseline, kProgressive };

Bytes encodeOurs(Sampling sampling, Process process) {
  EncodeOptions options;
  options.quality = kQuality;
  options.sampling = sampling;
  options.progressive = process == Process::kProgressive;
  return encodeJpeg(photograph(), options);
}

size_t encodeTheirs(Sampling sampling, Process process) {
  const Image& image = photograph();
  jpeg_compress_struct info;
  jpeg_error_mgr errors;
  info.err = jpeg_std_error(&errors);
  jpeg_create_compress(&info);
  unsigned char* memory = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&info, &memory, &size);
  info.image_width = static_cast<JDIMENSION>(image.width());
  info.image_height = static_cast<JDIMENSION>(image.height());
  info.input_components = 3;
  info.in_color_space = JCS_RGB;
  jpeg_set_defaults(&info);
  jpeg_set_quality(&info, kQuality, TRUE);
  info.dct_method = JDCT_ISLOW;
  info.comp_info[0].h_samp_factor = sampling == Sampling::k444 ? 1 : 2;
  info.comp_info[0].v_samp_factor = sampling == Sampling::k420 ? 2 : 1;
  if (process == Process::kProgressive) jpeg_simple_progression(&info);
  jpeg_start_compress(&info, TRUE);
  while (info.next_scanline < info.image_height) {
    JSAMPROW row = const_cast<JSAMPROW>(image.row(static_cast<int>(info.next_scanline)));
    jpeg_write_scanlines(&info, &row, 1);
  }
  jpeg_finish_compress(&info);
  jpeg_destroy_compress(&info);
  std::free(memory);
  return size;
}

Image decodeTheirs(const Bytes& file) {
  jpeg_decompress_struct info;
  jpeg_error_mgr errors;
  info.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&info);
  jpeg_mem_src(&info, file.data(), file.size());
  jpeg_read_header(&info, TRUE);
  info.dct_method = JDCT_ISLOW;
  jpeg_start_decompress(&info);
  Image image(static_cast<int>(info.output_width), static_cast<int>(info.output_height),
              info.output_components);
  while (info.output_scanline < info.output_height) {
    JSAMPROW row = image.row(static_cast<int>(info.output_scanline));
    jpeg_read_scanlines(&info, &row, 1);
  }
  jpeg_finish_decompress(&info);
  jpeg_destroy_decompress(&info);
  return image;
}

void registerCodec(const std::string& name, Sampling sampling, Process process) {
  const std::string ours = std::string("/orb:") + legacy90orbjGetLibVersion()->targetCpu;
  const std::string theirs = "/libjpeg-turbo";
  const auto add = [&](const std::string& title, auto work) {
    benchmark::RegisterBenchmark(title.c_str(), [work](benchmark::State& state) {
      for (auto _ : state) benchmark::DoNotOptimize(work());
      setPixels(state);
    })->Unit(benchmark::kMillisecond);
  };
  add("JpegEncode/" + name + ours, [=] { return encodeOurs(sampling, process).size(); });
  add("JpegEncode/" + name + theirs, [=] { return encodeTheirs(sampling, process); });
  const Bytes file = encodeOurs(sampling, process);
  add("JpegDecode/" + name + ours, [=] { return orbhost::jpeg::decodeJpeg(file, {}).row(0)[0]; });
  add("JpegDecode/" + name + theirs, [=] { return decodeTheirs(file).row(0)[0]; });
}

[[maybe_unused]] const bool registered = [] {
  registerCodec("420", Sampling::k420, Process::kBaseline);
  registerCodec("444", Sampling::k444, Process::kBaseline);
  registerCodec("420/progressive", Sampling::k420, Process::kProgressive);
  registerCodec("444/progressive", Sampling::k444, Process::kProgressive);
  return true;
}();

}  // namespace
