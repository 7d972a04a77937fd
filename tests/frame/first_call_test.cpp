// Threads that race through the first call: sixteen of them leave a barrier together, half of them
// for a group that the other half leaves alone at first. A process can have only one first call, so
// this is a program to be run many times; built with the frame under ThreadSanitizer, it also shows
// that the race is one of atomic words.
#include <atomic>
#include <cstdio>
#include <cstring>
#include <thread>
#include <vector>

#include "orb90legacy.h"

namespace {

constexpr int kThreads = 16;

struct Result {
  char jpegCpu[4];
  char compressionCpu[4];
  OrbStatus status;
  Orb16s samples[64];
};

void callFirst(int thread, Result& result) {
  Orb8u src[64];
  for (int i = 0; i < 64; ++i) src[i] = static_cast<Orb8u>(i * 4);
  const auto sub128 = [&] {
    result.status = legacy90orbiSub128_JPEG_8u16s_C1R(src, 8, result.samples, 16, {8, 8});
  };
  const auto jpegVersion = [&] {
    std::memcpy(result.jpegCpu, legacy90orbjGetLibVersion()->targetCpu, 4);
  };
  const auto compressionVersion = [&] {
    std::memcpy(result.compressionCpu, legacy90orbdcGetLibVersion()->targetCpu, 4);
  };
  switch (thread % 4) {
    case 0:
      sub128();
      jpegVersion();
      compressionVersion();
      break;
    case 1:
      compressionVersion();
      jpegVersion();
      sub128();
      break;
    case 2:
      jpegVersion();
      compressionVersion();
      sub128();
      break;
    default:
      legacy90orbdcInit();
      compressionVersion();
      sub128();
      jpegVersion();
      break;
  }
}

}  // namespace

int main() {
  std::vector<Result> results(kThreads);
  std::atomic<int> waiting{kThreads};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      waiting.fetch_sub(1);
      while (waiting.load() != 0) std::this_thread::yield();
      callFirst(i, results[i]);
    });
  }
  for (std::thread& thread : threads) thread.join();

  for (const Result& result : results) {
    for (int i = 0; i < 64; ++i) {
      if (result.samples[i] == i * 4 - 128) continue;
      std::printf("sample %d is %d\n", i, result.samples[i]);
      return 1;
    }
    if (result.status != orbStsNoErr) {
      std::printf("status %d\n", result.status);
      return 1;
    }
    if (std::memcmp(result.jpegCpu, results[0].jpegCpu, 4) != 0 ||
        std::memcmp(result.compressionCpu, results[0].jpegCpu, 4) != 0) {
      std::printf("builds differ: %.4s, %.4s, %.4s\n", result.jpegCpu, result.compressionCpu,
                  results[0].jpegCpu);
      return 1;
    }
  }
  return 0;
}
