// Lossless prediction and row coding of the rows of a picture; items are samples.
#include <cmath>
#include <cstdint>
#include <vector>

#include "bench/support/builds.h"
#include "jpeg/huffman_records.h"

namespace {

constexpr int kWidth = 1920;
constexpr int kRows = 3;

// Rows of 8 bits with slopes and noise, and the row above each.
struct Picture {
  std::vector<Orb16s> rows[kRows], above[kRows], differences[kRows], out[kRows];
  Picture() {
    Orb32u state = 1;
    const auto sample = [&](int x, int slope) {
      state = state * 1664525 + 1013904223;
      const double wave = 60 * std::sin(x / 50.0) + slope;
      return static_cast<Orb16s>(128 + wave + static_cast<int>(state >> 29));
    };
    for (int c = 0; c < kRows; ++c) {
      for (int x = 0; x < kWidth; ++x) {
        above[c].push_back(sample(x, c * 5));
        rows[c].push_back(sample(x, c * 5 + 1));
      }
      differences[c].resize(kWidth);
      out[c].resize(kWidth);
      legacy90orbiDiffPredRow_JPEG_16s_C1(rows[c].data(), above[c].data(), differences[c].data(),
                                          kWidth, 7);
    }
  }
};
Picture& picture() {
  static Picture all;
  return all;
}

template <class Text>
void run(benchmark::State& state, int items, Text text) {
  for (auto _ : state) {
    text();
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * items);
}

ORB_BENCHMARK(orbiDiffPredFirstRow_JPEG_16s_C1) {
  Picture& p = picture();
  run(state, kWidth, [&] {
    ORB(orbiDiffPredFirstRow_JPEG_16s_C1)(p.rows[0].data(), p.out[0].data(), kWidth, 8, 0);
  });
}
ORB_BENCHMARK(orbiReconstructPredFirstRow_JPEG_16s_C1) {
  Picture& p = picture();
  run(state, kWidth, [&] {
    ORB(orbiReconstructPredFirstRow_JPEG_16s_C1)(p.rows[0].data(), p.out[0].data(), kWidth, 8, 0);
  });
}

using RowFunction = decltype(legacy90orbiDiffPredRow_JPEG_16s_C1);

template <int kPredictor>
void predict(benchmark::State& state, RowFunction* function) {
  Picture& p = picture();
  run(state, kWidth,
      [&] { function(p.rows[0].data(), p.above[0].data(), p.out[0].data(), kWidth, kPredictor); });
}
template <int kPredictor>
void differences(benchmark::State& state, const orbtest::TestBuild& build) {
  predict<kPredictor>(state, ORB(orbiDiffPredRow_JPEG_16s_C1));
}
template <int kPredictor>
void reconstruct(benchmark::State& state, const orbtest::TestBuild& build) {
  predict<kPredictor>(state, ORB(orbiReconstructPredRow_JPEG_16s_C1));
}

template <int kPredictor>
void registerPredictor() {
  const std::string n = "/" + std::to_string(kPredictor);
  orbbench::onEachBuild(("orbiDiffPredRow_JPEG_16s_C1" + n).c_str(), differences<kPredictor>);
  orbbench::onEachBuild(("orbiReconstructPredRow_JPEG_16s_C1" + n).c_str(),
                        reconstruct<kPredictor>);
}
[[maybe_unused]] const bool registered = [] {
  registerPredictor<1>();
  registerPredictor<2>();
  registerPredictor<3>();
  registerPredictor<4>();
  registerPredictor<5>();
  registerPredictor<6>();
  registerPredictor<7>();
  return true;
}();

// Row coding of three interleaved rows with a table of their own.
struct Coder {
  OrbiEncodeHuffmanSpec encoder;
  OrbiDecodeHuffmanSpec decoder;
  const Orb16s* src[kRows];
  Orb16s* dst[kRows];
  const OrbiEncodeHuffmanSpec* encoders[kRows];
  const OrbiDecodeHuffmanSpec* decoders[kRows];
  std::vector<Orb8u> scan = std::vector<Orb8u>(kWidth * kRows * 8);
  Orb32s size = 0;

  Coder() {
    Picture& p = picture();
    Orb32s statistics[257] = {};
    for (int c = 0; c < kRows; ++c) {
      for (const Orb16s& value : p.differences[c]) {
        legacy90orbiGetHuffmanStatisticsOne_JPEG_16s_C1(&value, statistics);
      }
      src[c] = p.differences[c].data();
      dst[c] = p.out[c].data();
      encoders[c] = &encoder;
      decoders[c] = &decoder;
    }
    Orb8u bits[16], vals[256];
    legacy90orbiEncodeHuffmanRawTableInit_JPEG_8u(statistics, bits, vals);
    legacy90orbiEncodeHuffmanSpecInit_JPEG_8u(bits, vals, &encoder);
    legacy90orbiDecodeHuffmanSpecInit_JPEG_8u(bits, vals, &decoder);
    OrbiEncodeHuffmanState state = {};
    legacy90orbiEncodeHuffmanRow_JPEG_16s1u_P4C1(src, kWidth, kRows, scan.data(), room(), &size,
                                                 encoders, &state, 0);
    legacy90orbiEncodeHuffmanRow_JPEG_16s1u_P4C1(nullptr, 0, 0, scan.data(), room(), &size, nullptr,
                                                 &state, 1);
  }
  Orb32s room() const { return static_cast<Orb32s>(scan.size()); }
};
Coder& coder() {
  static Coder all;
  return all;
}

ORB_BENCHMARK(orbiEncodeHuffmanRow_JPEG_16s1u_P4C1) {
  Coder& c = coder();
  std::vector<Orb8u> bytes(c.scan.size());
  run(state, kWidth * kRows, [&] {
    OrbiEncodeHuffmanState record = {};
    Orb32s position = 0;
    ORB(orbiEncodeHuffmanRow_JPEG_16s1u_P4C1)
    (c.src, kWidth, kRows, bytes.data(), c.room(), &position, c.encoders, &record, 0);
  });
  state.SetBytesProcessed(state.iterations() * c.size);
}
ORB_BENCHMARK(orbiEncodeHuffmanOne_JPEG_16s1u_C1) {
  Coder& c = coder();
  std::vector<Orb8u> bytes(c.scan.size());
  run(state, kWidth, [&] {
    OrbiEncodeHuffmanState record = {};
    Orb32s position = 0;
    for (int x = 0; x < kWidth; ++x) {
      ORB(orbiEncodeHuffmanOne_JPEG_16s1u_C1)
      (c.src[0] + x, bytes.data(), c.room(), &position, &c.encoder, &record, 0);
    }
  });
}
ORB_BENCHMARK(orbiDecodeHuffmanRow_JPEG_1u16s_C1P4) {
  Coder& c = coder();
  run(state, kWidth * kRows, [&] {
    OrbiDecodeHuffmanState record = {};
    Orb32s position = 0, marker = 0;
    ORB(orbiDecodeHuffmanRow_JPEG_1u16s_C1P4)
    (c.scan.data(), c.size, &position, c.dst, kWidth, kRows, &marker, c.decoders, &record);
  });
  state.SetBytesProcessed(state.iterations() * c.size);
}
ORB_BENCHMARK(orbiDecodeHuffmanOne_JPEG_1u16s_C1) {
  Coder& c = coder();
  run(state, kWidth, [&] {
    OrbiDecodeHuffmanState record = {};
    Orb32s position = 0, marker = 0;
    for (int x = 0; x < kWidth; ++x) {
      ORB(orbiDecodeHuffmanOne_JPEG_1u16s_C1)
      (c.scan.data(), c.size, &position, c.dst[0] + x, &marker, &c.decoder, &record);
    }
  });
}

}  // namespace
