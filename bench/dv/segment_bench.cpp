// Decoding of video segments as full as a coder makes them; items are segments.
#include <vector>

#include "bench/support/builds.h"
#include "hosts/dv/codes.h"
#include "tests/dv/segment_model.h"

namespace {

using orbtest::dv::Form;

// Enough of them that the processor cannot learn them by heart.
constexpr int kSegments = 64;

std::vector<Orb8u> makeSegments(const Form& form) {
  orbtest::Random random("segments");
  std::vector<Orb8u> all;
  for (int i = 0; i < kSegments; ++i) {
    orbtest::dv::Segment segment(form);
    std::vector<std::string> texts;
    for (int n = 0; n < form.blocks(); ++n) {
      texts.push_back(
          orbtest::dv::randomBlock(random, random.between(30, 2 * segment.areaBits(n) - 50)));
    }
    deal(texts, segment);
    const std::vector<Orb8u> bytes = segment.bytes();
    all.insert(all.end(), bytes.begin(), bytes.end());
  }
  return all;
}

template <class Decode>
void run(benchmark::State& state, const Form& form, Decode decode) {
  const std::vector<Orb8u> segments = makeSegments(form);
  const orbhost::dv::CodeDescriptions codes = orbhost::dv::describeCodes();
  OrbDVHuffTable* table = nullptr;
  legacy90orbiInitAllocHuffmanTable_DV_32u(codes.upTo9Bits.data(), codes.longer.data(), &table);
  std::vector<Orb32u> scans(128);
  for (Orb32u i = 0; i < 128; ++i) scans[i] = i % 64;
  std::vector<Orb16s> blocks(static_cast<size_t>(form.blocks()) * 64);
  std::vector<Orb32u> info(static_cast<size_t>(form.blocks()));
  int next = 0;
  for (auto _ : state) {
    decode(segments.data() + 400 * next, scans.data(), table, blocks.data(), info.data());
    next = (next + 1) % kSegments;
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations());
  legacy90orbiFreeHuffmanTable_DV_32u(table);
}

ORB_BENCHMARK(orbiHuffmanDecodeSegment_DV_8u16s) {
  run(state, orbtest::dv::kDv, ORB(orbiHuffmanDecodeSegment_DV_8u16s));
}
ORB_BENCHMARK(orbiHuffmanDecodeSegment_DV100_8u16s) {
  run(state, orbtest::dv::kDv100, ORB(orbiHuffmanDecodeSegment_DV100_8u16s));
}

}  // namespace
