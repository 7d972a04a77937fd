// DCT with quantisation of one block, beside libjpeg-turbo's coder on the same blocks.
// clang-format off: <jpeglib.h> wants <cstdio> in front of it
#include <cstdio>
#define JPEG_INTERNALS
#include <jpeglib.h>
// clang-format on

#include <cmath>
#include <cstdlib>
#include <vector>

#include "bench/support/builds.h"

namespace {

constexpr int kBlocks = 64;  // side by side
constexpr int kWidth = 8 * kBlocks;
constexpr int kQuality = 75;  // of the peer

// A row of blocks: soft structure with some noise, and its coefficients by a table that is about as
// coarse as the peer's.
struct Picture {
  alignas(64) Orb8u samples[8 * kWidth];
  alignas(64) Orb16u wide[8 * kWidth];
  alignas(64) Orb16s coefficients[kBlocks][64];
  alignas(64) Orb16u forward[64];
  alignas(64) Orb16u inverse[64];
  alignas(64) Orb32f forwardFloat[64];
  alignas(64) Orb32f inverseFloat[64];

  Picture() {
    for (int y = 0; y < 8; ++y) {
      for (int x = 0; x < kWidth; ++x) {
        const double wave = 50 * std::sin(x / 7.0 + y / 3.0) + 40 * std::cos(x / 31.0);
        const int noise = (x * 7919 + y * 104729) % 13;
        samples[y * kWidth + x] = static_cast<Orb8u>(120 + wave + noise);
        wide[y * kWidth + x] = static_cast<Orb16u>(16 * samples[y * kWidth + x]);
      }
    }
    Orb8u raw[64];
    for (int i = 0; i < 64; ++i) raw[i] = static_cast<Orb8u>(8 + i * 3 / 4);
    orbRow_orbiQuantFwdTableInit_JPEG_8u16u.body[0](raw, forward);
    orbRow_orbiQuantInvTableInit_JPEG_8u16u.body[0](raw, inverse);
    for (int i = 0; i < 64; ++i) {
      inverseFloat[i] = inverse[i];
      forwardFloat[i] = 1 / inverseFloat[i];
    }
    for (int b = 0; b < kBlocks; ++b) {
      orbRow_orbiDCTQuantFwd8x8LS_JPEG_8u16s_C1R.body[0](samples + 8 * b, kWidth, coefficients[b],
                                                         forward);
    }
  }
};

const Picture& picture() {
  static const Picture made;
  return made;
}

template <class Text>
void onEachBlock(benchmark::State& state, Text text) {
  picture();
  for (auto _ : state) {
    for (int b = 0; b < kBlocks; ++b) text(b);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kBlocks);
}

alignas(64) Orb16s blocks[kBlocks][64];
alignas(64) Orb8u samples[8 * kWidth];
alignas(64) Orb16u wide[8 * kWidth];

ORB_BENCHMARK(orbiDCTQuantFwd8x8_JPEG_16s_C1) {
  onEachBlock(state, [&](int b) {
    ORB(orbiDCTQuantFwd8x8_JPEG_16s_C1)(picture().coefficients[b], blocks[b], picture().forward);
  });
}
ORB_BENCHMARK(orbiDCTQuantFwd8x8LS_JPEG_8u16s_C1R) {
  onEachBlock(state, [&](int b) {
    ORB(orbiDCTQuantFwd8x8LS_JPEG_8u16s_C1R)
    (picture().samples + 8 * b, kWidth, blocks[b], picture().forward);
  });
}
ORB_BENCHMARK(orbiDCTQuantFwd8x8LS_JPEG_16u16s_C1R) {
  onEachBlock(state, [&](int b) {
    ORB(orbiDCTQuantFwd8x8LS_JPEG_16u16s_C1R)
    (picture().wide + 8 * b, kWidth * 2, blocks[b], picture().forwardFloat);
  });
}
ORB_BENCHMARK(orbiDCTQuantInv8x8_JPEG_16s_C1) {
  onEachBlock(state, [&](int b) {
    ORB(orbiDCTQuantInv8x8_JPEG_16s_C1)(picture().coefficients[b], blocks[b], picture().inverse);
  });
}
ORB_BENCHMARK(orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R) {
  onEachBlock(state, [&](int b) {
    ORB(orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R)
    (picture().coefficients[b], samples + 8 * b, kWidth, picture().inverse);
  });
}
ORB_BENCHMARK(orbiDCTQuantInv8x8LS_JPEG_16s16u_C1R) {
  onEachBlock(state, [&](int b) {
    ORB(orbiDCTQuantInv8x8LS_JPEG_16s16u_C1R)
    (picture().coefficients[b], wide + 8 * b, kWidth * 2, picture().inverseFloat);
  });
}
ORB_BENCHMARK(orbiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R) {
  onEachBlock(state, [&](int b) {
    ORB(orbiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R)
    (picture().coefficients[b], samples + 8 * b, kWidth, picture().inverse);
  });
}
ORB_BENCHMARK(orbiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R) {
  onEachBlock(state, [&](int b) {
    ORB(orbiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R)
    (picture().coefficients[b], samples + 8 * b, kWidth, picture().inverse);
  });
}
ORB_BENCHMARK(orbiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R) {
  onEachBlock(state, [&](int b) {
    ORB(orbiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R)
    (picture().coefficients[b], samples + 8 * b, kWidth, picture().inverse);
  });
}
ORB_BENCHMARK(orbiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R) {
  onEachBlock(state, [&](int b) {
    ORB(orbiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R)
    (picture().coefficients[b], samples + 8 * b, kWidth, picture().inverse);
  });
}
ORB_BENCHMARK(orbiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R) {
  onEachBlock(state, [&](int b) {
    ORB(orbiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R)
    (picture().coefficients[b], samples + 8 * b, kWidth, picture().inverse);
  });
}

// ---- The peer: the stages that its coder would call on a grey picture of 8 rows

struct Rows {
  JSAMPROW row[8];
  explicit Rows(Orb8u* first) {
    for (int y = 0; y < 8; ++y) row[y] = first + y * kWidth;
  }
};

// Compresses the picture, and hands over the coder when it is ready for samples.
template <class Ready>
std::vector<Orb8u> peerCompress(Ready ready) {
  jpeg_compress_struct coder = {};
  jpeg_error_mgr errors;
  coder.err = jpeg_std_error(&errors);
  jpeg_create_compress(&coder);
  Orb8u* bytes = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&coder, &bytes, &size);
  coder.image_width = kWidth;
  coder.image_height = 8;
  coder.input_components = 1;
  coder.in_color_space = JCS_GRAYSCALE;
  jpeg_set_defaults(&coder);
  jpeg_set_quality(&coder, kQuality, TRUE);
  coder.dct_method = JDCT_ISLOW;
  jpeg_start_compress(&coder, TRUE);
  Rows rows(const_cast<Orb8u*>(picture().samples));
  ready(coder, rows);
  jpeg_write_scanlines(&coder, rows.row, 8);
  jpeg_finish_compress(&coder);
  jpeg_destroy_compress(&coder);
  std::vector<Orb8u> result(bytes, bytes + size);
  std::free(bytes);
  return result;
}

void peerForward(benchmark::State& state) {
  peerCompress([&](jpeg_compress_struct& coder, Rows& rows) {
    onEachBlock(state, [&](int b) {
      coder.fdct->forward_DCT(&coder, coder.comp_info, rows.row, &blocks[b], 0, 8 * b, 1);
    });
  });
}

// The inverse to blocks of 8 / divisor.
void peerInverse(benchmark::State& state, int divisor) {
  const std::vector<Orb8u> file = peerCompress([](jpeg_compress_struct&, Rows&) {});
  jpeg_decompress_struct coder = {};
  jpeg_error_mgr errors;
  coder.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&coder);
  jpeg_mem_src(&coder, file.data(), file.size());
  jpeg_read_header(&coder, TRUE);
  coder.dct_method = JDCT_ISLOW;
  coder.scale_num = 1;
  coder.scale_denom = static_cast<unsigned>(divisor);
  jpeg_start_decompress(&coder);
  Rows rows(samples);
  onEachBlock(state, [&](int b) {
    coder.idct->inverse_DCT[0](&coder, coder.comp_info,
                               const_cast<Orb16s*>(picture().coefficients[b]), rows.row, 8 * b);
  });
  jpeg_destroy_decompress(&coder);
}

[[maybe_unused]] const bool kPeerRegistered = [] {
  benchmark::RegisterBenchmark("forward/libjpeg-turbo", peerForward);
  benchmark::RegisterBenchmark("inverse/libjpeg-turbo", peerInverse, 1);
  benchmark::RegisterBenchmark("inverse4x4/libjpeg-turbo", peerInverse, 2);
  benchmark::RegisterBenchmark("inverse2x2/libjpeg-turbo", peerInverse, 4);
  return true;
}();

}  // namespace
