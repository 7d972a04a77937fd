// Sequential Huffman coding of the blocks of an image, beside libjpeg-turbo's on the same blocks
// with the same tables. Items are blocks; bytes are those of the coded data.
#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "bench/jpeg/huffman_blocks.h"
#include "bench/support/builds.h"
#include "tests/jpeg/huffman_model.h"

namespace {

using orbbench::blockAt;
using orbbench::decodeFile;
using orbbench::encodeFile;
using orbbench::kBlocks;
using orbbench::makeBlocks;
using orbtest::HuffmanLists;

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

template <const Scan& makeScan()>
void encodeTheirs(benchmark::State& state) {
  const Scan& scan = makeScan();
  size_t size = 0;
  for (auto _ : state) size = encodeFile(scan.blocks).size();
  const std::vector<Orb8u> file = encodeFile(scan.blocks);
  if (size < scan.bytes.size() ||
      !std::equal(scan.bytes.rbegin(), scan.bytes.rend(), file.rbegin())) {
    state.SkipWithError("encoded other bytes");
  }
  countWork(state, scan);
}

template <const Scan& makeScan()>
void decodeTheirs(benchmark::State& state) {
  const Scan& scan = makeScan();
  const std::vector<Orb8u> file = encodeFile(scan.blocks);
  for (auto _ : state) decodeFile(file);
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
