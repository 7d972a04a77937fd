// The blocks of an image, for the benchmarks of Huffman coding, and what libjpeg-turbo does to
// them.
#ifndef ORB_BENCH_JPEG_HUFFMAN_BLOCKS_H
#define ORB_BENCH_JPEG_HUFFMAN_BLOCKS_H

// jpeglib.h needs size_t and FILE.
#include <cstddef>
#include <cstdio>
// clang-format off
#include <jpeglib.h>
// clang-format on

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "orb90legacy/jpeg.h"

namespace orbbench {

constexpr int kBlocksAcross = 64;
constexpr int kBlocks = kBlocksAcross * kBlocksAcross;

// Blocks as a photograph has them after quantisation: magnitudes that fall off with the frequency.
// `amount` is what is left of them: 1 about quality 50, 8 about quality 95.
inline std::vector<Orb16s> makeBlocks(double amount) {
  std::mt19937 random(1);
  std::vector<Orb16s> blocks(kBlocks * 64);
  for (int b = 0; b < kBlocks; ++b) {
    const double busy = amount * std::pow(2.0, static_cast<int>(random() % 5) - 2);
    for (int i = 0; i < 64; ++i) {
      const int distance = i / 8 + i % 8;
      const double scale = i == 0 ? 60 * amount : busy * 6 * std::exp(-0.55 * distance);
      const double u = (static_cast<double>(random()) + 1) / 4294967297.0;
      const double magnitude = -scale * std::log(u);
      const int value = static_cast<int>(std::min(magnitude, 1000.0));
      blocks[static_cast<size_t>(b * 64 + i)] =
          static_cast<Orb16s>(random() % 2 == 0 ? value : -value);
    }
  }
  return blocks;
}

inline const Orb16s* blockAt(const std::vector<Orb16s>& blocks, int b) {
  return blocks.data() + static_cast<ptrdiff_t>(b) * 64;
}
inline Orb16s* blockAt(std::vector<Orb16s>& blocks, int b) {
  return blocks.data() + static_cast<ptrdiff_t>(b) * 64;
}

// A grey file of the blocks by libjpeg-turbo, sequential with its usual tables or progressive with
// its usual scans and with tables of its own.
inline std::vector<Orb8u> encodeFile(const std::vector<Orb16s>& blocks,
                                     bool isProgressive = false) {
  jpeg_compress_struct info;
  jpeg_error_mgr errors;
  info.err = jpeg_std_error(&errors);
  jpeg_create_compress(&info);
  unsigned char* memory = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&info, &memory, &size);
  info.image_width = info.image_height = kBlocksAcross * 8;
  info.input_components = 1;
  info.in_color_space = JCS_GRAYSCALE;
  jpeg_set_defaults(&info);
  if (isProgressive) jpeg_simple_progression(&info);
  jvirt_barray_ptr array = info.mem->request_virt_barray(
      reinterpret_cast<j_common_ptr>(&info), JPOOL_IMAGE, FALSE, kBlocksAcross, kBlocksAcross, 1);
  info.comp_info[0].width_in_blocks = info.comp_info[0].height_in_blocks = kBlocksAcross;
  jpeg_write_coefficients(&info, &array);
  for (int y = 0; y < kBlocksAcross; ++y) {
    JBLOCKARRAY rows = info.mem->access_virt_barray(reinterpret_cast<j_common_ptr>(&info), array,
                                                    static_cast<JDIMENSION>(y), 1, TRUE);
    std::memcpy(rows[0], blockAt(blocks, y * kBlocksAcross), kBlocksAcross * 64 * sizeof(Orb16s));
  }
  jpeg_finish_compress(&info);
  jpeg_destroy_compress(&info);
  std::vector<Orb8u> file(memory, memory + size);
  std::free(memory);
  return file;
}

// Decodes a file up to its coefficients.
inline void decodeFile(const std::vector<Orb8u>& file) {
  jpeg_decompress_struct info;
  jpeg_error_mgr errors;
  info.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&info);
  jpeg_mem_src(&info, file.data(), file.size());
  jpeg_read_header(&info, TRUE);
  benchmark::DoNotOptimize(jpeg_read_coefficients(&info));
  jpeg_finish_decompress(&info);
  jpeg_destroy_decompress(&info);
}

}  // namespace orbbench

#endif
