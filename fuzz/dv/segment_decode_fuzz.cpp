// Segments, code tables and scans that nobody has checked, in both forms and every build: no access
// outside of what the host handed over, and the results of px.
#include "frame/dispatch.h"
#include "fuzz/support/input.h"
#include "hosts/dv/codes.h"
#include "tests/support/runnable_builds.h"

namespace {

using orbfuzz::Input;
using orbfuzz::require;
using orbtest::TestBuild;

struct Job {
  bool isDv100;
  std::vector<Orb32s> specs[2];
  std::vector<Orb32u> scans;
  std::vector<Orb8u> stream;

  size_t blocks() const { return isDv100 ? 40 : 30; }
};

std::vector<Orb32s> specFrom(Input& input) {
  const int width = input.byte() % 12;
  std::vector<Orb32s> words = {width, 0, 0};
  for (int length = 1; length <= width; ++length) {
    const int count = input.byte() % 8;
    words.push_back(count);
    for (int i = 0; i < count; ++i) {
      const int code = input.byte() << 8 | input.byte();
      words.insert(words.end(), {code, input.byte() % 80, input.byte() - 128});
    }
  }
  return words;
}

Job jobFrom(Input& input) {
  Job job;
  const int kind = input.byte();
  job.isDv100 = (kind & 1) != 0;
  if ((kind & 2) != 0) {
    for (std::vector<Orb32s>& spec : job.specs) spec = specFrom(input);
  } else {
    const orbhost::dv::CodeDescriptions codes = orbhost::dv::describeCodes();
    job.specs[0] = codes.upTo9Bits;
    job.specs[1] = codes.longer;
  }
  for (int i = 0; i < 128; ++i) {
    job.scans.push_back((kind & 4) != 0 ? input.byte() * 0x01010101u : static_cast<Orb32u>(i));
  }
  job.stream = input.bytes(400);
  return job;
}

struct Trace {
  std::vector<Orb16s> blocks;
  std::vector<Orb32u> info;

  bool operator==(const Trace& other) const { return blocks == other.blocks && info == other.info; }
};

Trace decode(const TestBuild& build, const Job& job) {
  Trace trace;
  trace.blocks.assign(job.blocks() * 64, 0x1234);
  trace.info.assign(job.blocks(), 0x12345678);
  OrbDVHuffTable* table = nullptr;
  require(orbRow_orbiInitAllocHuffmanTable_DV_32u.body[build.index](
              job.specs[0].data(), job.specs[1].data(), &table) == orbStsNoErr);
  const auto function = job.isDv100 ? orbRow_orbiHuffmanDecodeSegment_DV100_8u16s.body[build.index]
                                    : orbRow_orbiHuffmanDecodeSegment_DV_8u16s.body[build.index];
  require(function(job.stream.data(), job.scans.data(), table, trace.blocks.data(),
                   trace.info.data()) == orbStsNoErr);
  require(orbRow_orbiFreeHuffmanTable_DV_32u.body[build.index](table) == orbStsNoErr);
  for (const Orb32u word : trace.info) require((word >> 8 & 255) < 64);
  return trace;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const Job job = jobFrom(input);
  const std::vector<TestBuild>& builds = orbtest::runnableBuilds();
  const Trace expected = decode(builds[0], job);
  for (size_t i = 1; i < builds.size(); ++i) require(decode(builds[i], job) == expected);
  return 0;
}
