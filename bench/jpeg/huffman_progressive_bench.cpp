// Progressive Huffman coding of the blocks of an image, scan by scan, and all scans of a file
// beside libjpeg-turbo's on the same blocks. Items are blocks of one scan, or of the whole file;
// bytes are those of the coded data.
#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "bench/jpeg/huffman_blocks.h"
#include "bench/support/builds.h"

namespace {

using orbbench::blockAt;
using orbbench::kBlocks;
using Build = orbtest::TestBuild;

template <class Record>
Record* as(std::vector<Orb8u>& bytes) {
  return reinterpret_cast<Record*>(bytes.data());
}

struct Scan {
  const char* name;
  bool isAC, isFirst;
  Orb32s ss, se;
  Orb32u al;
};
// Those that libjpeg-turbo makes of a grey picture.
const Scan kScript[] = {
    {"DCFirst", false, true, 0, 0, 1},      {"ACFirst/1-5", true, true, 1, 5, 2},
    {"ACFirst/6-63", true, true, 6, 63, 2}, {"ACRefine/1", true, false, 1, 63, 1},
    {"DCRefine", false, false, 0, 0, 0},    {"ACRefine/0", true, false, 1, 63, 0},
};
constexpr size_t kScans = sizeof kScript / sizeof *kScript;

// One scan of the blocks: what coding it takes, and its coded data.
struct CodedScan {
  std::vector<Orb8u> encoder = std::vector<Orb8u>(1024), decoder = std::vector<Orb8u>(1644);
  std::vector<Orb8u> bytes;
};

void countBlocks(const Build& build, const Scan& scan, const std::vector<Orb16s>& blocks,
                 Orb32s* counts) {
  std::vector<Orb8u> state(1048);
  auto* const record = as<OrbiEncodeHuffmanState>(state);
  Orb16s lastDC = 0;
  // A call more flushes.
  for (int b = 0; b <= kBlocks; ++b) {
    const bool flush = b == kBlocks;
    const Orb16s* const block = flush ? nullptr : blockAt(blocks, b);
    if (!scan.isAC) {
      if (scan.isFirst && !flush) {
        ORB(orbiGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1)(block, counts, &lastDC, scan.al);
      }
    } else if (scan.isFirst) {
      ORB(orbiGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1)
      (block, counts, scan.ss, scan.se, scan.al, record, flush);
    } else {
      ORB(orbiGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1)
      (block, counts, scan.ss, scan.se, scan.al, record, flush);
    }
  }
}

// Returns the length of the coded data.
Orb32s encodeBlocks(const Build& build, const Scan& scan, const std::vector<Orb16s>& blocks,
                    std::vector<Orb8u>& table, std::vector<Orb8u>& bytes) {
  std::vector<Orb8u> state(1048);
  auto* const record = as<OrbiEncodeHuffmanState>(state);
  const auto* const spec = as<OrbiEncodeHuffmanSpec>(table);
  const Orb32s room = static_cast<Orb32s>(bytes.size());
  Orb32s position = 0;
  Orb16s lastDC = 0;
  for (int b = 0; b <= kBlocks; ++b) {
    const bool flush = b == kBlocks;
    const Orb16s* const block = flush ? nullptr : blockAt(blocks, b);
    if (!scan.isAC && scan.isFirst) {
      ORB(orbiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1)
      (block, bytes.data(), room, &position, &lastDC, scan.al, spec, record, flush);
    } else if (!scan.isAC) {
      ORB(orbiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1)
      (block, bytes.data(), room, &position, scan.al, record, flush);
    } else if (scan.isFirst) {
      ORB(orbiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1)
      (block, bytes.data(), room, &position, scan.ss, scan.se, scan.al, spec, record, flush);
    } else {
      ORB(orbiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1)
      (block, bytes.data(), room, &position, scan.ss, scan.se, scan.al, spec, record, flush);
    }
  }
  return position;
}

void decodeBlocks(const Build& build, const Scan& scan, const std::vector<Orb8u>& bytes,
                  std::vector<Orb8u>& table, std::vector<Orb16s>& blocks) {
  std::vector<Orb8u> state(24);
  auto* const record = as<OrbiDecodeHuffmanState>(state);
  const auto* const spec = as<OrbiDecodeHuffmanSpec>(table);
  const Orb32s length = static_cast<Orb32s>(bytes.size());
  Orb32s position = 0, marker = 0;
  Orb16s lastDC = 0;
  for (int b = 0; b < kBlocks; ++b) {
    Orb16s* const block = blockAt(blocks, b);
    if (!scan.isAC && scan.isFirst) {
      ORB(orbiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1)
      (bytes.data(), length, &position, block, &lastDC, &marker, scan.al, spec, record);
    } else if (!scan.isAC) {
      ORB(orbiDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1)
      (bytes.data(), length, &position, block, &marker, scan.al, record);
    } else if (scan.isFirst) {
      ORB(orbiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1)
      (bytes.data(), length, &position, block, &marker, scan.ss, scan.se, scan.al, spec, record);
    } else {
      ORB(orbiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1)
      (bytes.data(), length, &position, block, &marker, scan.ss, scan.se, scan.al, spec, record);
    }
  }
}

// The tables that suit the blocks, in both forms.
void makeTables(const Build& build, const Scan& scan, const std::vector<Orb16s>& blocks,
                CodedScan& coded) {
  Orb32s counts[257] = {};
  Orb8u bits[16] = {}, vals[256] = {};
  countBlocks(build, scan, blocks, counts);
  legacy90orbiEncodeHuffmanRawTableInit_JPEG_8u(counts, bits, vals);
  legacy90orbiEncodeHuffmanSpecInit_JPEG_8u(bits, vals, as<OrbiEncodeHuffmanSpec>(coded.encoder));
  legacy90orbiDecodeHuffmanSpecInit_JPEG_8u(bits, vals, as<OrbiDecodeHuffmanSpec>(coded.decoder));
}

struct Picture {
  std::vector<Orb16s> blocks;
  CodedScan scans[kScans];
  std::vector<Orb16s> before[kScans];  // what is known of the blocks in front of each scan
  std::vector<Orb8u> file;             // libjpeg-turbo's

  explicit Picture(double amount)
      : blocks(orbbench::makeBlocks(amount)), file(orbbench::encodeFile(blocks, true)) {
    const Build& px = orbtest::runnableBuilds()[0];
    std::vector<Orb16s> known(blocks.size());
    for (size_t i = 0; i < kScans; ++i) {
      CodedScan& coded = scans[i];
      makeTables(px, kScript[i], blocks, coded);
      coded.bytes.resize(kBlocks * 512);
      coded.bytes.resize(
          static_cast<size_t>(encodeBlocks(px, kScript[i], blocks, coded.encoder, coded.bytes)));
      before[i] = known;
      coded.bytes.insert(coded.bytes.end(), {0xFF, 0xD9});
      decodeBlocks(px, kScript[i], coded.bytes, coded.decoder, known);
    }
  }
  size_t size() const {
    size_t sum = 0;
    for (const CodedScan& scan : scans) sum += scan.bytes.size();
    return sum;
  }
  static Picture& sparse() {
    static Picture picture(1);
    return picture;
  }
  static Picture& dense() {
    static Picture picture(8);
    return picture;
  }
};

void countWork(benchmark::State& state, size_t bytes) {
  state.SetItemsProcessed(state.iterations() * kBlocks);
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes));
}

// One scan.

template <Picture& makePicture(), size_t scan>
void encode(benchmark::State& state, const Build& build) {
  Picture& picture = makePicture();
  CodedScan& coded = picture.scans[scan];
  std::vector<Orb8u> bytes(kBlocks * 512);
  for (auto _ : state) {
    encodeBlocks(build, kScript[scan], picture.blocks, coded.encoder, bytes);
    benchmark::ClobberMemory();
  }
  countWork(state, coded.bytes.size());
}

template <Picture& makePicture(), size_t scan>
void decode(benchmark::State& state, const Build& build) {
  Picture& picture = makePicture();
  CodedScan& coded = picture.scans[scan];
  std::vector<Orb16s> blocks;
  for (auto _ : state) {
    state.PauseTiming();
    blocks = picture.before[scan];
    state.ResumeTiming();
    decodeBlocks(build, kScript[scan], coded.bytes, coded.decoder, blocks);
    benchmark::ClobberMemory();
  }
  if (blocks != (scan + 1 < kScans ? picture.before[scan + 1] : picture.blocks)) {
    state.SkipWithError("decoded other blocks");
  }
  countWork(state, coded.bytes.size());
}

template <Picture& makePicture(), size_t scan>
void count(benchmark::State& state, const Build& build) {
  Picture& picture = makePicture();
  Orb32s counts[256] = {};
  for (auto _ : state) {
    countBlocks(build, kScript[scan], picture.blocks, counts);
    benchmark::ClobberMemory();
  }
  countWork(state, picture.scans[scan].bytes.size());
}

// All scans of a file, each with tables of its own. libjpeg-turbo's files have headers, and the
// hand-over of blocks is in its time, too.

template <Picture& makePicture()>
void encodeAll(benchmark::State& state, const Build& build) {
  Picture& picture = makePicture();
  std::vector<Orb8u> bytes(kBlocks * 512);
  for (auto _ : state) {
    for (const Scan& scan : kScript) {
      CodedScan coded;
      if (scan.isAC || scan.isFirst) makeTables(build, scan, picture.blocks, coded);
      encodeBlocks(build, scan, picture.blocks, coded.encoder, bytes);
    }
  }
  for (const CodedScan& coded : picture.scans) {
    if (std::search(picture.file.begin(), picture.file.end(), coded.bytes.begin(),
                    coded.bytes.end() - 2) == picture.file.end()) {
      state.SkipWithError("libjpeg-turbo has encoded other bytes");
    }
  }
  countWork(state, picture.size());
}

template <Picture& makePicture()>
void encodeTheirs(benchmark::State& state) {
  Picture& picture = makePicture();
  for (auto _ : state) orbbench::encodeFile(picture.blocks, true);
  countWork(state, picture.size());
}

template <Picture& makePicture()>
void decodeAll(benchmark::State& state, const Build& build) {
  Picture& picture = makePicture();
  std::vector<Orb16s> blocks;
  for (auto _ : state) {
    blocks.assign(kBlocks * 64, 0);
    for (size_t i = 0; i < kScans; ++i) {
      decodeBlocks(build, kScript[i], picture.scans[i].bytes, picture.scans[i].decoder, blocks);
    }
  }
  if (blocks != picture.blocks) state.SkipWithError("decoded other blocks");
  countWork(state, picture.size());
}

template <Picture& makePicture()>
void decodeTheirs(benchmark::State& state) {
  Picture& picture = makePicture();
  for (auto _ : state) orbbench::decodeFile(picture.file);
  countWork(state, picture.size());
}

template <Picture& makePicture(), size_t scan>
void registerScan(const std::string& kind) {
  const auto add = [&](const char* what, orbbench::Body body) {
    orbbench::onEachBuild((std::string(what) + kScript[scan].name + "/" + kind).c_str(), body);
  };
  add("ProgressiveEncode/", encode<makePicture, scan>);
  add("ProgressiveDecode/", decode<makePicture, scan>);
  if (kScript[scan].isAC || kScript[scan].isFirst) {
    add("ProgressiveCount/", count<makePicture, scan>);
  }
  if constexpr (scan + 1 < kScans) registerScan<makePicture, scan + 1>(kind);
}

template <Picture& makePicture()>
void registerAll(const std::string& kind) {
  registerScan<makePicture, 0>(kind);
  orbbench::onEachBuild(("ProgressiveEncode/All/" + kind).c_str(), encodeAll<makePicture>);
  benchmark::RegisterBenchmark(("ProgressiveEncode/All/" + kind + "/libjpeg-turbo").c_str(),
                               encodeTheirs<makePicture>);
  orbbench::onEachBuild(("ProgressiveDecode/All/" + kind).c_str(), decodeAll<makePicture>);
  benchmark::RegisterBenchmark(("ProgressiveDecode/All/" + kind + "/libjpeg-turbo").c_str(),
                               decodeTheirs<makePicture>);
}

[[maybe_unused]] const bool registered = [] {
  registerAll<Picture::sparse>("sparse");
  registerAll<Picture::dense>("dense");
  return true;
}();

}  // namespace
