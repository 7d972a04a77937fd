// Sequential Huffman coding of the blocks of an image, beside libjpeg-turbo's on the same blocks
// with the same tables. Items are blocks; bytes are those of the coded data.
// jpeglib.h needs size_t and FILE.
#include <cstddef>
#include <cstdio>
// clang-format off
#include <jpeglib.h>
// clang-format on

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "bench/support/builds.h"
#include "tests/jpeg/huffman_model.h"

namespace {

using orbtest::HuffmanLists;

constexpr int kBlocksAcross = 64;
constexpr int kBlocks = kBlocksAcross * kBlocksAcross;

struct Records {
  alignas(64) Orb8u dcEncoder[1024], acEncoder[1024], dcDecoder[1644], acDecoder[1644];
  alignas(64) Orb8u encoderState[1048], decoderState[24];

  template <class Record>
  static Record* as(Orb8u* bytes) {
    return reinterpret_cast<Record*>(bytes);
  }
  OrbiEncodeHuffmanSpec* dcCodes() { return as<OrbiEncodeHuffmanSpec>(dcEncoder); }
  OrbiEncodeHuffmanSpec* acCodes() { return as<OrbiEncodeHuffmanSpec>(acEncoder); }
  OrbiDecodeHuffmanSpec* dcSymbols() { return as<OrbiDecodeHuffmanSpec>(dcDecoder); }
  OrbiDecodeHuffmanSpec* acSymbols() { return as<OrbiDecodeHuffmanSpec>(acDecoder); }
  OrbiEncodeHuffmanState* writer() { return as<OrbiEncodeHuffmanState>(encoderState); }
  OrbiDecodeHuffmanState* reader() { return as<OrbiDecodeHuffmanState>(decoderState); }

  Records() {
    const HuffmanLists dc = orbtest::luminanceDC(), ac = orbtest::luminanceAC();
    legacy90orbiEncodeHuffmanSpecInit_JPEG_8u(dc.bits.data(), dc.vals.data(), dcCodes());
    legacy90orbiEncodeHuffmanSpecInit_JPEG_8u(ac.bits.data(), ac.vals.data(), acCodes());
    legacy90orbiDecodeHuffmanSpecInit_JPEG_8u(dc.bits.data(), dc.vals.data(), dcSymbols());
    legacy90orbiDecodeHuffmanSpecInit_JPEG_8u(ac.bits.data(), ac.vals.data(), acSymbols());
  }
};

// Blocks as a photograph has them after quantisation: magnitudes that fall off with the frequency.
// `amount` is what is left of them: 1 about quality 50, 8 about quality 95.
std::vector<Orb16s> makeBlocks(double amount) {
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

struct Scan {
  std::vector<Orb16s> blocks;
  std::vector<Orb8u> bytes;  // coded, with an EOI behind them

  explicit Scan(double amount) : blocks(makeBlocks(amount)), bytes(kBlocks * 512) {
    Records records;
    legacy90orbiEncodeHuffmanStateInit_JPEG_8u(records.writer());
    Orb32s position = 0;
    Orb16s lastDC = 0;
    const Orb32s room = static_cast<Orb32s>(bytes.size());
    for (int b = 0; b < kBlocks; ++b) {
      legacy90orbiEncodeHuffman8x8_JPEG_16s1u_C1(&blocks[static_cast<size_t>(b) * 64], bytes.data(),
                                                 room, &position, &lastDC, records.dcCodes(),
                                                 records.acCodes(), records.writer(), 0);
    }
    legacy90orbiEncodeHuffman8x8_JPEG_16s1u_C1(nullptr, bytes.data(), room, &position, nullptr,
                                               nullptr, nullptr, records.writer(), 1);
    bytes.resize(static_cast<size_t>(position));
    bytes.insert(bytes.end(), {0xFF, 0xD9});
  }
  static const Scan& sparse() {
    static const Scan scan(1);
    return scan;
  }
  static const Scan& dense() {
    static const Scan scan(8);
    return scan;
  }
};

void countWork(benchmark::State& state, const Scan& scan) {
  state.SetItemsProcessed(state.iterations() * kBlocks);
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(scan.bytes.size()));
}

const Orb16s* blockAt(const std::vector<Orb16s>& blocks, int b) {
  return blocks.data() + static_cast<ptrdiff_t>(b) * 64;
}
Orb16s* blockAt(std::vector<Orb16s>& blocks, int b) {
  return blocks.data() + static_cast<ptrdiff_t>(b) * 64;
}

using Build = orbtest::TestBuild;

template <const Scan& makeScan()>
void encode(benchmark::State& state, const Build& build) {
  const Scan& scan = makeScan();
  Records records;
  std::vector<Orb8u> bytes(kBlocks * 512);
  for (auto _ : state) {
    legacy90orbiEncodeHuffmanStateInit_JPEG_8u(records.writer());
    Orb32s position = 0;
    Orb16s lastDC = 0;
    for (int b = 0; b < kBlocks; ++b) {
      ORB(orbiEncodeHuffman8x8_JPEG_16s1u_C1)
      (blockAt(scan.blocks, b), bytes.data(), static_cast<Orb32s>(bytes.size()), &position, &lastDC,
       records.dcCodes(), records.acCodes(), records.writer(), 0);
    }
    benchmark::ClobberMemory();
  }
  countWork(state, scan);
}

template <const Scan& makeScan()>
void encodeDirect(benchmark::State& state, const Build& build) {
  const Scan& scan = makeScan();
  Records records;
  std::vector<Orb8u> bytes(kBlocks * 512);
  for (auto _ : state) {
    Orb32s bits = 0;
    Orb16s lastDC = 0;
    for (int b = 0; b < kBlocks; ++b) {
      ORB(orbiEncodeHuffman8x8_Direct_JPEG_16s1u_C1)
      (blockAt(scan.blocks, b), bytes.data(), &bits, &lastDC, records.dcCodes(), records.acCodes());
    }
    benchmark::ClobberMemory();
  }
  countWork(state, scan);
}

template <const Scan& makeScan()>
void decode(benchmark::State& state, const Build& build) {
  const Scan& scan = makeScan();
  Records records;
  std::vector<Orb16s> blocks(kBlocks * 64);
  for (auto _ : state) {
    legacy90orbiDecodeHuffmanStateInit_JPEG_8u(records.reader());
    Orb32s position = 0, marker = 0;
    Orb16s lastDC = 0;
    for (int b = 0; b < kBlocks; ++b) {
      ORB(orbiDecodeHuffman8x8_JPEG_1u16s_C1)
      (scan.bytes.data(), static_cast<Orb32s>(scan.bytes.size()), &position, blockAt(blocks, b),
       &lastDC, &marker, records.dcSymbols(), records.acSymbols(), records.reader());
    }
    benchmark::ClobberMemory();
  }
  if (blocks != scan.blocks) state.SkipWithError("decoded other blocks");
  countWork(state, scan);
}

template <const Scan& makeScan()>
void decodeDirect(benchmark::State& state, const Build& build) {
  const Scan& scan = makeScan();
  Records records;
  std::vector<Orb16s> blocks(kBlocks * 64);
  for (auto _ : state) {
    Orb32s bits = 0, marker = 0, valid = 0;
    Orb32u prefetched = 0;
    Orb16s lastDC = 0;
    for (int b = 0; b < kBlocks; ++b) {
      ORB(orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1)
      (scan.bytes.data(), &bits, blockAt(blocks, b), &lastDC, &marker, &prefetched, &valid,
       records.dcSymbols(), records.acSymbols());
    }
    benchmark::ClobberMemory();
  }
  if (blocks != scan.blocks) state.SkipWithError("decoded other blocks");
  countWork(state, scan);
}

template <const Scan& makeScan()>
void count(benchmark::State& state, const Build& build) {
  const Scan& scan = makeScan();
  Orb32s dc[256] = {}, ac[256] = {};
  for (auto _ : state) {
    Orb16s lastDC = 0;
    for (int b = 0; b < kBlocks; ++b) {
      ORB(orbiGetHuffmanStatistics8x8_JPEG_16s_C1)(blockAt(scan.blocks, b), dc, ac, &lastDC);
    }
    benchmark::ClobberMemory();
  }
  countWork(state, scan);
}

// libjpeg-turbo codes whole files: a header and the hand-over of blocks are in its time, too.

// A grey file of the blocks.
std::vector<Orb8u> encodeFile(const Scan& scan) {
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
  jvirt_barray_ptr array = info.mem->request_virt_barray(
      reinterpret_cast<j_common_ptr>(&info), JPOOL_IMAGE, FALSE, kBlocksAcross, kBlocksAcross, 1);
  info.comp_info[0].width_in_blocks = info.comp_info[0].height_in_blocks = kBlocksAcross;
  jpeg_write_coefficients(&info, &array);
  for (int y = 0; y < kBlocksAcross; ++y) {
    JBLOCKARRAY rows = info.mem->access_virt_barray(reinterpret_cast<j_common_ptr>(&info), array,
                                                    static_cast<JDIMENSION>(y), 1, TRUE);
    std::memcpy(rows[0], blockAt(scan.blocks, y * kBlocksAcross),
                kBlocksAcross * 64 * sizeof(Orb16s));
  }
  jpeg_finish_compress(&info);
  jpeg_destroy_compress(&info);
  std::vector<Orb8u> file(memory, memory + size);
  std::free(memory);
  return file;
}

template <const Scan& makeScan()>
void encodeTheirs(benchmark::State& state) {
  const Scan& scan = makeScan();
  size_t size = 0;
  for (auto _ : state) size = encodeFile(scan).size();
  const std::vector<Orb8u> file = encodeFile(scan);
  if (size < scan.bytes.size() ||
      !std::equal(scan.bytes.rbegin(), scan.bytes.rend(), file.rbegin())) {
    state.SkipWithError("encoded other bytes");
  }
  countWork(state, scan);
}

template <const Scan& makeScan()>
void decodeTheirs(benchmark::State& state) {
  const Scan& scan = makeScan();
  const std::vector<Orb8u> file = encodeFile(scan);
  for (auto _ : state) {
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
  countWork(state, scan);
}

template <const Scan& makeScan()>
void registerAll(const std::string& kind) {
  using orbbench::onEachBuild;
  const auto add = [&](const char* name, orbbench::Body body) {
    onEachBuild((std::string(name) + "/" + kind).c_str(), body);
  };
  add("orbiEncodeHuffman8x8_JPEG_16s1u_C1", encode<makeScan>);
  add("orbiEncodeHuffman8x8_Direct_JPEG_16s1u_C1", encodeDirect<makeScan>);
  benchmark::RegisterBenchmark(("EncodeHuffman/" + kind + "/libjpeg-turbo").c_str(),
                               encodeTheirs<makeScan>);
  add("orbiDecodeHuffman8x8_JPEG_1u16s_C1", decode<makeScan>);
  add("orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1", decodeDirect<makeScan>);
  benchmark::RegisterBenchmark(("DecodeHuffman/" + kind + "/libjpeg-turbo").c_str(),
                               decodeTheirs<makeScan>);
  add("orbiGetHuffmanStatistics8x8_JPEG_16s_C1", count<makeScan>);
}

[[maybe_unused]] const bool registered = [] {
  registerAll<Scan::sparse>("sparse");
  registerAll<Scan::dense>("dense");
  return true;
}();

}  // namespace
