// Codeword segments from a file that nobody has checked, with any style and any counts, in every
// build: no access outside of what the host handed over, and the results of px.
#include <cstring>

#include "frame/dispatch.h"
#include "fuzz/support/input.h"
#include "tests/support/runnable_builds.h"

namespace {

using orbfuzz::Input;
using orbfuzz::require;
using orbtest::TestBuild;

struct Job {
  OrbiSize size;
  Orb32s subband, bitPlanes, passCount, style;
  std::vector<Orb32s> lengths;
  std::vector<Orb8u> bytes;
};

Job jobFrom(Input& input) {
  Job job;
  job.size = {1 + input.byte() % 20, 1 + input.byte() % 20};
  job.subband = input.byte() % 5;
  job.bitPlanes = input.byte() % 40;
  job.passCount = input.byte() % 120;
  job.style = input.byte() % 32 | input.byte() % 32 << 16;
  const int segments = input.byte() % 20;
  for (int i = 0; i < segments; ++i) job.lengths.push_back(input.byte() % 32);
  job.lengths.push_back(0);  // so that there is an address even for no segments
  size_t length = 1;
  for (const Orb32s each : job.lengths) length += static_cast<size_t>(each);
  job.bytes = input.bytes(length);
  return job;
}

// Everything that decoding leaves behind.
struct Trace {
  std::vector<Orb32s> numbers;
  std::vector<Orb32s> samples;

  bool operator==(const Trace& other) const {
    return numbers == other.numbers && samples == other.samples;
  }
};

// The same bytes all over, so that significance which is kept out of nothing is the same at any
// address.
std::vector<Orb8u> stateFor(const Job& job) {
  Orb32s size = 0;
  require(legacy90orbiDecodeGetBufSize_JPEG2K(job.size, &size) == orbStsNoErr);
  return std::vector<Orb8u>(static_cast<size_t>(size), 0x35);
}

Trace decodeAll(const TestBuild& build, const Job& job) {
  Trace trace;
  trace.samples.assign(static_cast<size_t>(job.size.width * job.size.height), 0x1234567);
  std::vector<Orb8u> state = stateFor(job);
  Orb32s errorPlane = -100;
  const OrbStatus status = orbRow_orbiDecodeCodeBlock_JPEG2K_1u32s_C1R.body[build.index](
      job.bytes.data(), trace.samples.data(), job.size.width * 4, job.size, job.subband,
      job.bitPlanes, job.passCount, job.lengths.data(), static_cast<Orb32s>(job.lengths.size()),
      job.style, &errorPlane, state.data());
  require(status == orbStsNoErr || status == orbStsCodeBlockDataErr);
  require((errorPlane == -100) == (status == orbStsNoErr));
  trace.numbers = {status, errorPlane};
  return trace;
}

// Step by step, with a counter that runs out and is raised again.
Trace decodeInSteps(const TestBuild& build, const Job& job) {
  Trace trace;
  trace.samples.assign(static_cast<size_t>(job.size.width * job.size.height), 0x1234567);
  std::vector<Orb8u> memory = stateFor(job);
  OrbiDecodeCBProgrState_JPEG2K* const state =
      reinterpret_cast<OrbiDecodeCBProgrState_JPEG2K*>(memory.data());
  orbRow_orbiDecodeCBProgrInit_JPEG2K.body[build.index](state);
  require(orbRow_orbiDecodeCBProgrAttach_JPEG2K_32s_C1R.body[build.index](
              trace.samples.data(), job.size.width * 4, job.size, state, job.subband, job.bitPlanes,
              job.style) == orbStsNoErr);
  const Orb8u* next = job.bytes.data();
  for (const Orb32s length : job.lengths) {
    Orb32s passes = 0, plane = 0;
    orbRow_orbiDecodeCBProgrGetPassCounter_JPEG2K.body[build.index](state, &passes);
    if (passes < 1) {
      orbRow_orbiDecodeCBProgrSetPassCounter_JPEG2K.body[build.index](job.passCount % 7, state);
    }
    trace.numbers.push_back(
        orbRow_orbiDecodeCBProgrStep_JPEG2K.body[build.index](next, length, state));
    orbRow_orbiDecodeCBProgrGetCurBitPlaneNum_JPEG2K.body[build.index](state, &plane);
    require(plane >= -1 && plane < job.bitPlanes);
    trace.numbers.insert(trace.numbers.end(), {passes, plane});
    next += length;
  }
  return trace;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const Job job = jobFrom(input);
  const std::vector<TestBuild>& builds = orbtest::runnableBuilds();
  const Trace expected = decodeAll(builds[0], job);
  const Trace expectedInSteps = decodeInSteps(builds[0], job);
  for (size_t i = 1; i < builds.size(); ++i) {
    require(decodeAll(builds[i], job) == expected);
    require(decodeInSteps(builds[i], job) == expectedInSteps);
  }
  return 0;
}
