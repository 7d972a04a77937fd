// What compressors are timed on: a text, source code, a program, and the samples of a picture.
#ifndef ORB_BENCH_COMPRESS_DEFLATE_DATA_H
#define ORB_BENCH_COMPRESS_DEFLATE_DATA_H

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "orb90legacy/types.h"

namespace orbbench {

struct Data {
  const char* name;
  std::vector<Orb8u> bytes;
};

inline void appendFile(std::vector<Orb8u>& bytes, const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  bytes.insert(bytes.end(), std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

// All files in a directory and below it that have one of these extensions, by name.
inline std::vector<Orb8u> filesIn(const std::filesystem::path& directory,
                                  const std::vector<std::string>& extensions) {
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(directory)) {
    const std::string extension = entry.path().extension().string();
    if (entry.is_symlink() || !entry.is_regular_file()) continue;
    if (std::count(extensions.begin(), extensions.end(), extension)) paths.push_back(entry.path());
  }
  std::sort(paths.begin(), paths.end());
  std::vector<Orb8u> bytes;
  for (const auto& path : paths) appendFile(bytes, path);
  return bytes;
}

// Waves with a little noise, three samples to a pixel.
inline std::vector<Orb8u> picture() {
  constexpr int kSide = 512;
  std::mt19937 random(1);
  std::vector<Orb8u> samples;
  for (int y = 0; y < kSide; ++y) {
    for (int x = 0; x < kSide; ++x) {
      for (int c = 0; c < 3; ++c) {
        const double value = 128 + 45 * std::sin(x / 70.0 + c) + 30 * std::sin(y / 50.0 - c) +
                             12 * std::sin(x * y / 9000.0) + static_cast<double>(random() % 4);
        samples.push_back(static_cast<Orb8u>(value));
      }
    }
  }
  return samples;
}

// Licences stand on every Debian, and the program is this one.
inline const std::vector<Data>& deflateData() {
  static const std::vector<Data> all = [] {
    std::vector<Orb8u> program;
    appendFile(program, "/proc/self/exe");
    program.resize(std::min<size_t>(program.size(), 2 << 20));
    std::vector<Orb8u> source;
    for (const char* const room : {"frame", "jpeg", "compress", "tests"}) {
      const std::vector<Orb8u> files =
          filesIn(std::filesystem::path(ORB_SOURCE_DIRECTORY) / room, {".h", ".cpp"});
      source.insert(source.end(), files.begin(), files.end());
    }
    return std::vector<Data>{
        {"text", filesIn("/usr/share/common-licenses", {"", ".0", ".1", ".2", ".3"})},
        {"source", source},
        {"program", program},
        {"picture", picture()}};
  }();
  return all;
}

}  // namespace orbbench

#endif
