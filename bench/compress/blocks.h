// What the coders of blocks are timed on: several blocks each, so that no processor learns one by
// heart.
#ifndef ORB_BENCH_COMPRESS_BLOCKS_H
#define ORB_BENCH_COMPRESS_BLOCKS_H

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "orb90legacy/types.h"

namespace orbbench {

using Bytes = std::vector<Orb8u>;
using Blocks = std::vector<Bytes>;

constexpr size_t kBlockLength = 32768;
constexpr size_t kBlockCount = 16;

inline Blocks blocksOf(const Bytes& bytes) {
  Blocks blocks;
  for (size_t i = 0; i < kBlockCount; ++i) {
    const auto start = bytes.begin() + static_cast<ptrdiff_t>(i * kBlockLength);
    blocks.emplace_back(start, start + kBlockLength);
  }
  return blocks;
}

// Words of made-up syllables, some much more frequent than others, in sentences.
inline const Blocks& textBlocks() {
  static const Blocks blocks = [] {
    std::mt19937 random(1);
    std::vector<std::string> words;
    for (int i = 0; i < 4000; ++i) {
      std::string word;
      for (size_t k = 1 + random() % 4; k > 0; --k) {
        word += "tnsrhldcmfpgwbvk"[random() % 16 * (random() % 16) / 16];
        word += "eaoiuy"[random() % 6 * (random() % 6) / 6];
        if (random() % 3 == 0) word += "nstrld"[random() % 6];
      }
      words.push_back(word);
    }
    Bytes text;
    while (text.size() < kBlockCount * kBlockLength) {
      const double u = (static_cast<double>(random()) + 1) / 4294967297.0;
      const std::string& word = words[static_cast<size_t>(std::pow(4000, u)) - 1];
      text.insert(text.end(), word.begin(), word.end());
      if (random() % 10 == 0) text.push_back(random() % 3 == 0 ? '.' : ',');
      text.push_back(random() % 12 == 0 ? '\n' : ' ');
    }
    return blocksOf(text);
  }();
  return blocks;
}

// The code of this very program.
inline const Blocks& programBlocks() {
  static const Blocks blocks = [] {
    std::ifstream file("/proc/self/exe", std::ios::binary);
    Bytes bytes(kBlockCount * kBlockLength + 0x40000);
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    bytes.erase(bytes.begin(), bytes.begin() + 0x40000);
    return blocksOf(bytes);
  }();
  return blocks;
}

inline const Blocks& randomBlocks() {
  static const Blocks blocks = [] {
    std::mt19937 random(2);
    Bytes bytes(kBlockCount * kBlockLength);
    for (Orb8u& byte : bytes) byte = static_cast<Orb8u>(random());
    return blocksOf(bytes);
  }();
  return blocks;
}

// A page that comes again and again, with a change here and there.
inline const Blocks& repeatedBlocks() {
  static const Blocks blocks = [] {
    std::mt19937 random(3);
    Bytes bytes(kBlockCount * kBlockLength);
    for (size_t i = 0; i < bytes.size(); ++i) {
      const bool isNew = i % kBlockLength < 1000 || random() % 8192 == 0;
      bytes[i] = isNew ? static_cast<Orb8u>(random()) : bytes[i - 1000];
    }
    return blocksOf(bytes);
  }();
  return blocks;
}

inline void countBlocks(benchmark::State& state) {
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kBlockCount * kBlockLength));
}

}  // namespace orbbench

#endif
