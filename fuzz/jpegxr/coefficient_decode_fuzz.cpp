// Coefficients from a stream that nobody has checked, in every build: no access outside of what the
// host handed over, which is the stream and the bytes behind it that the header asks for, and the
// results of px. The record, too, may hold anything.
#include <cstring>

#include "frame/dispatch.h"
#include "fuzz/support/input.h"
#include "tests/support/runnable_builds.h"

namespace {

using orbfuzz::Input;
using orbfuzz::require;
using orbtest::TestBuild;

constexpr size_t kBytesBehind = 120;

struct Job {
  std::vector<Orb8u> record;  // or none for a fresh one
  std::vector<Orb8u> steps;   // what to call, three bytes for each call
  std::vector<Orb8u> bytes;
};

Job jobFrom(Input& input) {
  Job job;
  if (input.byte() % 4 == 0) job.record = input.bytes(1780);
  job.steps = input.bytes(3 * static_cast<size_t>(input.byte()));
  job.bytes = input.rest();
  job.bytes.resize(job.bytes.size() + kBytesBehind);
  return job;
}

#define CALL(name) orbRow_##name.body[build.index]

// What a host holds, and with it everything that calls leave behind.
struct Session {
  const TestBuild& build;
  std::vector<Orb8u> memory = std::vector<Orb8u>(1780);
  std::vector<Orb8u> bytes;
  Orb16u* at;
  Orb32u bits = 0, count = 0;
  std::vector<Orb32s> trace;

  Session(const TestBuild& usedBuild, const Job& job) : build(usedBuild), bytes(job.bytes) {
    at = reinterpret_cast<Orb16u*>(bytes.data());
    CALL(orbiVLCInit_JPEGXR)(record());
    for (int scan = 0; scan < 3; ++scan) CALL(orbiVLCScanReset_JPEGXR)(record(), scan);
    if (!job.record.empty()) memory = job.record;
    for (size_t i = 0; i < job.steps.size() && !isAtEnd(); i += 3) step(&job.steps[i]);
    trace.insert(trace.end(), {static_cast<Orb32s>(bits), static_cast<Orb32s>(count)});
    trace.insert(trace.end(), memory.begin(), memory.end());
  }
  OrbiVLCState_JPEGXR* record() { return reinterpret_cast<OrbiVLCState_JPEGXR*>(memory.data()); }
  bool isAtEnd() const {
    return reinterpret_cast<const Orb8u*>(at) > bytes.data() + (bytes.size() - kBytesBehind);
  }
  void step(const Orb8u* what) {
    const Orb32s colourClass = what[1] & 1;
    const Orb16s scale = static_cast<Orb16s>(what[2] * 256 + what[1]);
    Orb32s samples[16], count16 = -1;
    Orb16s words[16];
    std::memset(samples, 0x11, sizeof samples);
    std::memset(words, 0x11, sizeof words);
    switch (what[0] % 10) {
      case 0:
        CALL(orbiVLCAdapt_JPEGXR)(record(), colourClass);
        break;
      case 1:
        CALL(orbiVLCScanReset_JPEGXR)(record(), what[1] % 3);
        break;
      case 2:
        CALL(orbiVLCScanSet_JPEGXR)(record(), what[1] % 3);
        break;
      case 3:
        CALL(orbiVLCDecodeDC444_JPEGXR_1u32s)
        (&at, &bits, &count, samples, colourClass, &count16, record());
        break;
      case 4:
        CALL(orbiVLCDecodeDC422_JPEGXR_1u32s)(&at, &bits, &count, samples, &count16, record());
        break;
      case 5:
        CALL(orbiVLCDecodeDC420_JPEGXR_1u32s)(&at, &bits, &count, samples, &count16, record());
        break;
      case 6:
        CALL(orbiFLCDecode4x4_JPEGXR_1u16s_C1IR)
        (&at, &bits, &count, words, 8, what[2] % 16u, scale, colourClass);
        break;
      case 7:
        CALL(orbiFLCDecode4x4_JPEGXR_1u32s_C1IR)
        (&at, &bits, &count, samples, 16, what[2] % 16u, scale, colourClass);
        break;
      case 8:
        CALL(orbiVLCDecode4x4_JPEGXR_1u16s_C1R)
        (&at, &bits, &count, scale, words, 8, colourClass, &count16, record());
        break;
      default:
        CALL(orbiVLCDecode4x4_JPEGXR_1u32s_C1R)
        (&at, &bits, &count, scale, samples, 16, colourClass, &count16, record());
    }
    require(count16 >= -1 && count16 <= 16);
    trace.push_back(count16);
    trace.insert(trace.end(), samples, samples + 16);
    trace.insert(trace.end(), words, words + 16);
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const Job job = jobFrom(input);
  const std::vector<TestBuild>& builds = orbtest::runnableBuilds();
  const Session expected(builds[0], job);
  for (size_t i = 1; i < builds.size(); ++i) {
    require(Session(builds[i], job).trace == expected.trace);
  }
  return 0;
}
