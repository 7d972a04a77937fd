// PackBits rows of a drawing, of a text as a picture and of noise, beside libtiff, which codes a
// strip in memory.
#include <tiffio.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "bench/support/builds.h"

namespace {

using Bytes = std::vector<Orb8u>;

constexpr int kWidth = 2048;
constexpr int kHeight = 64;

// Rows of runs, whose lengths have this mean.
Bytes picture(double meanRun) {
  std::mt19937 random(1);
  std::geometric_distribution<int> more(1 / meanRun);
  Bytes bytes;
  while (bytes.size() < kWidth * kHeight) {
    bytes.insert(bytes.end(), 1 + static_cast<size_t>(more(random)), static_cast<Orb8u>(random()));
  }
  bytes.resize(kWidth * kHeight);
  return bytes;
}

struct Strip {
  Bytes bytes = Bytes(2 * kWidth * kHeight);
  Orb32s end = 0;
};

void pack(const orbtest::TestBuild& build, const Bytes& rows, Strip& strip) {
  strip.end = 0;
  for (int y = 0; y < kHeight; ++y) {
    ORB(orbiPackBitsRow_TIFF_8u_C1)
    (rows.data() + y * kWidth, kWidth, strip.bytes.data(), &strip.end,
     static_cast<Orb32s>(strip.bytes.size()));
  }
}
void unpack(const orbtest::TestBuild& build, const Strip& strip, Bytes& rows) {
  Orb32s cursor = 0;
  for (int y = 0; y < kHeight; ++y) {
    ORB(orbiUnpackBitsRow_TIFF_8u_C1)
    (strip.bytes.data(), &cursor, strip.end, rows.data() + y * kWidth, kWidth);
  }
}

// ---- A file in memory

struct MemoryFile {
  Bytes bytes;
  size_t at = 0;
};
MemoryFile& fileOf(thandle_t handle) {
  return *static_cast<MemoryFile*>(handle);
}
tmsize_t readFile(thandle_t handle, void* to, tmsize_t size) {
  MemoryFile& file = fileOf(handle);
  const size_t count = std::min(static_cast<size_t>(size), file.bytes.size() - file.at);
  std::memcpy(to, file.bytes.data() + file.at, count);
  file.at += count;
  return static_cast<tmsize_t>(count);
}
tmsize_t writeFile(thandle_t handle, void* from, tmsize_t size) {
  MemoryFile& file = fileOf(handle);
  const size_t end = file.at + static_cast<size_t>(size);
  if (end > file.bytes.size()) file.bytes.resize(end);
  std::memcpy(file.bytes.data() + file.at, from, static_cast<size_t>(size));
  file.at = end;
  return size;
}
toff_t seekFile(thandle_t handle, toff_t to, int whence) {
  MemoryFile& file = fileOf(handle);
  file.at = whence == SEEK_SET ? to : whence == SEEK_CUR ? file.at + to : file.bytes.size() + to;
  return file.at;
}
int closeFile(thandle_t) {
  return 0;
}
toff_t sizeOfFile(thandle_t handle) {
  return fileOf(handle).bytes.size();
}
TIFF* openFile(MemoryFile& file, const char* mode) {
  file.at = 0;
  return TIFFClientOpen("memory", mode, &file, readFile, writeFile, seekFile, closeFile, sizeOfFile,
                        nullptr, nullptr);
}

void describe(TIFF* tiff) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kWidth);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kHeight);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, kHeight);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_PACKBITS);
}

// Opening and closing are not timed.
void packByLibtiff(benchmark::State& state, const Bytes& rows) {
  for (auto _ : state) {
    state.PauseTiming();
    MemoryFile file;
    file.bytes.reserve(3 * kWidth * kHeight);
    TIFF* const tiff = openFile(file, "w");
    describe(tiff);
    state.ResumeTiming();
    const tmsize_t size =
        TIFFWriteEncodedStrip(tiff, 0, const_cast<Orb8u*>(rows.data()), kWidth * kHeight);
    state.PauseTiming();
    if (size != kWidth * kHeight) state.SkipWithError("was not written");
    uint64_t* counts = nullptr;
    TIFFGetField(tiff, TIFFTAG_STRIPBYTECOUNTS, &counts);
    state.counters["percent"] = 100.0 * static_cast<double>(counts[0]) / (kWidth * kHeight);
    TIFFClose(tiff);
    state.ResumeTiming();
  }
}

MemoryFile writtenFile(const Strip& strip) {
  MemoryFile file;
  TIFF* const tiff = openFile(file, "w");
  describe(tiff);
  TIFFWriteRawStrip(tiff, 0, const_cast<Orb8u*>(strip.bytes.data()), strip.end);
  TIFFClose(tiff);
  return file;
}

void unpackByLibtiff(benchmark::State& state, const Strip& strip, const Bytes& rows) {
  MemoryFile file = writtenFile(strip);
  TIFF* const tiff = openFile(file, "r");
  Bytes out(rows.size());
  for (auto _ : state) TIFFReadEncodedStrip(tiff, 0, out.data(), kWidth * kHeight);
  if (out != rows) state.SkipWithError("unpacked to other bytes");
  TIFFClose(tiff);
}

bool registerAll() {
  static const struct {
    const char* name;
    Bytes rows;
  } kPictures[] = {{"drawing", picture(20)}, {"text", picture(3)}, {"noise", picture(1.01)}};
  for (const auto& entry : kPictures) {
    const Bytes& rows = entry.rows;
    const auto add = [&](const char* what, const char* who, auto body) {
      benchmark::RegisterBenchmark((std::string(what) + "/" + entry.name + "/" + who).c_str(),
                                   [body](benchmark::State& state) {
                                     body(state);
                                     state.SetBytesProcessed(state.iterations() * kWidth * kHeight);
                                   });
    };
    for (const orbtest::TestBuild& build : orbtest::runnableBuilds()) {
      add("PackBits", build.tag, [&](benchmark::State& state) {
        Strip strip;
        for (auto _ : state) pack(build, rows, strip);
        state.counters["percent"] = 100.0 * strip.end / (kWidth * kHeight);
      });
      add("UnpackBits", build.tag, [&](benchmark::State& state) {
        Strip strip;
        pack(build, rows, strip);
        Bytes out(rows.size());
        for (auto _ : state) unpack(build, strip, out);
        if (out != rows) state.SkipWithError("unpacked to other bytes");
      });
    }
    add("PackBits", "libtiff", [&](benchmark::State& state) { packByLibtiff(state, rows); });
    add("UnpackBits", "libtiff", [&](benchmark::State& state) {
      Strip strip;
      pack(orbtest::runnableBuilds().front(), rows, strip);
      unpackByLibtiff(state, strip, rows);
    });
  }
  return true;
}
[[maybe_unused]] const bool registered = registerAll();

}  // namespace
