// Whole frames: our host in memory beside FFmpeg's decoder and libdv's, each in one thread, in one
// run. FFmpeg's coder makes the frames of a drawn scene with some noise.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/frame.h>
#include <libavutil/pixdesc.h>
#include <libdv/dv.h>
}

#include "hosts/dv/decode.h"
#include "orb90legacy.h"
#include "tests/hosts/support/pictures.h"
#include "tests/support/random.h"

namespace {

using orbhost::Bytes;

void require(bool holds, const char* what) {
  if (!holds) throw std::runtime_error(what);
}

// A scene in the planes of a frame; each chroma sample is that of one of its pixels.
void drawInto(AVFrame& frame) {
  const orbhost::Image image = orbtest::draw(orbtest::Motif::kScene, frame.width, frame.height, 3);
  const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
  orbtest::Random random("scene");
  for (int plane = 0; plane < 3; ++plane) {
    const int across = plane == 0 ? 0 : format.log2_chroma_w;
    const int down = plane == 0 ? 0 : format.log2_chroma_h;
    constexpr int kFactors[3][4] = {{66, 129, 25, 16}, {-38, -74, 112, 128}, {112, -94, -18, 128}};
    const int* const f = kFactors[plane];
    for (int y = 0; y < frame.height >> down; ++y) {
      for (int x = 0; x < frame.width >> across; ++x) {
        const uint8_t* const p = image.row(y << down) + 3 * (x << across);
        const int value = (f[0] * p[0] + f[1] * p[1] + f[2] * p[2]) / 256 + f[3];
        frame.data[plane][y * frame.linesize[plane] + x] =
            static_cast<uint8_t>(std::clamp(value + random.between(-4, 4), 16, 235));
      }
    }
  }
}

Bytes encodeTheirs(int width, int height, AVPixelFormat pixels, AVRational rate) {
  AVCodecContext* context = avcodec_alloc_context3(avcodec_find_encoder(AV_CODEC_ID_DVVIDEO));
  require(context != nullptr, "no DV encoder");
  context->width = width;
  context->height = height;
  context->pix_fmt = pixels;
  context->time_base = {rate.den, rate.num};
  context->framerate = rate;
  context->thread_count = 1;
  require(avcodec_open2(context, nullptr, nullptr) == 0, "the DV encoder does not open");
  AVFrame* frame = av_frame_alloc();
  frame->width = width;
  frame->height = height;
  frame->format = pixels;
  require(av_frame_get_buffer(frame, 0) == 0, "no frame");
  drawInto(*frame);
  AVPacket* packet = av_packet_alloc();
  require(avcodec_send_frame(context, frame) == 0 && avcodec_receive_packet(context, packet) == 0,
          "the DV encoder fails");
  const Bytes bytes(packet->data, packet->data + packet->size);
  av_packet_free(&packet);
  av_frame_free(&frame);
  avcodec_free_context(&context);
  return bytes;
}

void decodeOurs(benchmark::State& state, const Bytes& bytes) {
  const orbhost::dv::Format& format = orbhost::dv::detectFormat(bytes);
  orbhost::dv::Decoder decoder(format);
  orbhost::dv::Picture picture(format);
  for (auto _ : state) benchmark::DoNotOptimize(decoder.decode(bytes, picture));
}

void decodeFfmpeg(benchmark::State& state, const Bytes& bytes) {
  AVCodecContext* context = avcodec_alloc_context3(avcodec_find_decoder(AV_CODEC_ID_DVVIDEO));
  context->thread_count = 1;
  require(avcodec_open2(context, nullptr, nullptr) == 0, "the DV decoder does not open");
  AVFrame* frame = av_frame_alloc();
  AVPacket* packet = av_packet_alloc();
  require(av_new_packet(packet, static_cast<int>(bytes.size())) == 0, "no packet");
  std::copy(bytes.begin(), bytes.end(), packet->data);
  for (auto _ : state) {
    require(avcodec_send_packet(context, packet) == 0 && avcodec_receive_frame(context, frame) == 0,
            "the DV decoder fails");
    benchmark::DoNotOptimize(frame->data[0]);
  }
  av_packet_free(&packet);
  av_frame_free(&frame);
  avcodec_free_context(&context);
}

void decodeLibdv(benchmark::State& state, const Bytes& bytes) {
  dv_decoder_t* decoder = dv_decoder_new(0, 0, 0);
  decoder->quality = DV_QUALITY_BEST;
  dv_parse_header(decoder, bytes.data());
  std::vector<uint8_t> pixels(720 * 576 * 2);
  uint8_t* planes[3] = {pixels.data(), nullptr, nullptr};
  int steps[3] = {720 * 2, 0, 0};
  for (auto _ : state) {
    dv_decode_full_frame(decoder, bytes.data(), e_dv_color_yuv, planes, steps);
    benchmark::ClobberMemory();
  }
  dv_decoder_free(decoder);
}

void registerFormat(const std::string& name, int width, int height, AVPixelFormat pixels,
                    AVRational rate) {
  const Bytes bytes = encodeTheirs(width, height, pixels, rate);
  const auto add = [&](const std::string& title, auto work) {
    benchmark::RegisterBenchmark(("DvDecode/" + name + title).c_str(),
                                 [=](benchmark::State& state) {
                                   work(state, bytes);
                                   state.SetItemsProcessed(state.iterations());
                                 })
        ->Unit(benchmark::kMicrosecond);
  };
  add(std::string("/orb:") + legacy90orbjGetLibVersion()->targetCpu, decodeOurs);
  add("/FFmpeg", decodeFfmpeg);
  if (name == "25-525" || name == "25-625") add("/libdv", decodeLibdv);
}

[[maybe_unused]] const bool registered = [] {
  av_log_set_level(AV_LOG_ERROR);
  registerFormat("25-525", 720, 480, AV_PIX_FMT_YUV411P, {30000, 1001});
  registerFormat("25-625", 720, 576, AV_PIX_FMT_YUV420P, {25, 1});
  registerFormat("50-525", 720, 480, AV_PIX_FMT_YUV422P, {30000, 1001});
  registerFormat("100-1080", 1280, 1080, AV_PIX_FMT_YUV422P, {30000, 1001});
  registerFormat("100-720", 960, 720, AV_PIX_FMT_YUV422P, {60000, 1001});
  return true;
}();

}  // namespace
