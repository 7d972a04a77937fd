// Entropy-coded data and tables from a file that nobody has checked, in every build: no access
// outside of what the host handed over, positions within the source, and the results of px.
#include <cstring>

#include "frame/dispatch.h"
#include "fuzz/support/input.h"
#include "jpeg/huffman_records.h"
#include "tests/support/runnable_builds.h"

namespace {

using orbfuzz::Input;
using orbfuzz::require;
using orbtest::TestBuild;

// Everything that decoding leaves behind.
struct Trace {
  std::vector<Orb32s> numbers;
  std::vector<Orb16s> values;

  bool operator==(const Trace& other) const {
    return numbers == other.numbers && values == other.values;
  }
};

struct Tables {
  OrbiDecodeHuffmanSpec dc, ac;
};

Trace decode(const TestBuild& build, const std::vector<Orb8u>& scan, const Tables& tables) {
  Trace trace;
  OrbiDecodeHuffmanState state = {};
  Orb32s position = 0, marker = 0;
  Orb16s lastDC = 0;
  for (int call = 0; call < 8; ++call) {
    Orb16s block[64];
    const Orb8u none = 0;
    const OrbStatus status = orbRow_orbiDecodeHuffman8x8_JPEG_1u16s_C1.body[build.index](
        scan.empty() ? &none : scan.data(), static_cast<Orb32s>(scan.size()), &position, block,
        &lastDC, &marker, &tables.dc, &tables.ac, &state);
    require(position >= 0 && position <= static_cast<Orb32s>(scan.size()));
    require(state.bitCount <= 32 && state.lastPosition <= 79);
    trace.numbers.insert(trace.numbers.end(),
                         {status, position, marker, lastDC, static_cast<Orb32s>(state.bitBuffer),
                          state.bitCount, state.lastPosition});
    trace.values.insert(trace.values.end(), block, block + 64);
    // As a host that goes on behind a marker.
    marker = 0;
  }
  return trace;
}

// The scan ends with a marker.
Trace decodeDirect(const TestBuild& build, const std::vector<Orb8u>& scan, const Tables& tables) {
  Trace trace;
  Orb32s bits = 0, marker = 0, valid = 0;
  Orb32u prefetched = 0;
  Orb16s lastDC = 0;
  for (int call = 0; call < 8; ++call) {
    Orb16s block[64];
    const OrbStatus status = orbRow_orbiDecodeHuffman8x8_Direct_JPEG_1u16s_C1.body[build.index](
        scan.data(), &bits, block, &lastDC, &marker, &prefetched, &valid, &tables.dc, &tables.ac);
    require(bits >= 0 && bits <= static_cast<Orb32s>(scan.size()) * 8);
    trace.numbers.insert(trace.numbers.end(),
                         {status, bits, marker, lastDC, static_cast<Orb32s>(prefetched), valid});
    trace.values.insert(trace.values.end(), block, block + 64);
    if (status != orbStsNoErr || valid < 0) break;
  }
  return trace;
}

OrbStatus makeTable(Input& input, OrbiDecodeHuffmanSpec& spec) {
  const std::vector<Orb8u> bits = input.bytes(16);
  size_t codes = 1;
  for (const Orb8u count : bits) codes += count;
  const std::vector<Orb8u> vals = input.bytes(codes);
  return legacy90orbiDecodeHuffmanSpecInit_JPEG_8u(bits.data(), vals.data(), &spec);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  Tables tables;
  if (input.byte() % 4 == 0) {
    // A record that is damaged itself.
    for (OrbiDecodeHuffmanSpec* spec : {&tables.dc, &tables.ac}) {
      const std::vector<Orb8u> bytes = input.bytes(sizeof *spec);
      std::memcpy(spec, bytes.data(), bytes.size());
    }
  } else {
    if (makeTable(input, tables.dc) != orbStsNoErr) return 0;
    if (makeTable(input, tables.ac) != orbStsNoErr) return 0;
  }
  std::vector<Orb8u> scan = input.rest();
  std::vector<Orb8u> ended = scan;
  ended.insert(ended.end(), {255, 0xD9});
  const std::vector<TestBuild>& builds = orbtest::runnableBuilds();
  const Trace expected = decode(builds[0], scan, tables);
  const Trace expectedDirect = decodeDirect(builds[0], ended, tables);
  for (size_t i = 1; i < builds.size(); ++i) {
    require(decode(builds[i], scan, tables) == expected);
    require(decodeDirect(builds[i], ended, tables) == expectedDirect);
  }
  return 0;
}
