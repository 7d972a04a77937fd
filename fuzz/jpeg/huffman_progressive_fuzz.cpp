// Progressive entropy-coded data, a table, blocks and a state from a file that nobody has checked,
// through all four decoders in every build: no access outside of what the host handed over,
// positions within the source, and the results of px.
#include <cstring>

#include "frame/dispatch.h"
#include "fuzz/support/input.h"
#include "jpeg/huffman_records.h"
#include "tests/support/runnable_builds.h"

namespace {

using orbfuzz::Input;
using orbfuzz::require;
using orbtest::TestBuild;

constexpr int kPasses = 4;
constexpr int kBlocks = 8;

struct Case {
  OrbiDecodeHuffmanSpec table;
  Orb32s ss, se;
  Orb32u al;
  OrbiDecodeHuffmanState state;
  std::vector<Orb16s> block;
  std::vector<Orb8u> scan;
};

// Everything that decoding leaves behind.
struct Trace {
  std::vector<Orb32s> numbers;
  std::vector<Orb16s> values;

  bool operator==(const Trace& other) const {
    return numbers == other.numbers && values == other.values;
  }
};

#define ORB(name) orbRow_##name.body[build.index]

Trace decode(const TestBuild& build, const Case& c, int pass) {
  Trace trace;
  OrbiDecodeHuffmanState state = c.state;
  const Orb8u* const src = c.scan.data();
  const Orb32s length = static_cast<Orb32s>(c.scan.size());
  Orb32s position = 0, marker = 0;
  Orb16s lastDC = 0;
  std::vector<Orb16s> block = c.block;  // goes through several times, as if it were many
  for (int call = 0; call < kBlocks; ++call) {
    OrbStatus status = orbStsNoErr;
    switch (pass) {
      case 0:
        status = ORB(orbiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1)(
            src, length, &position, block.data(), &lastDC, &marker, c.al, &c.table, &state);
        break;
      case 1:
        status = ORB(orbiDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1)(
            src, length, &position, block.data(), &marker, c.al, &state);
        break;
      case 2:
        status = ORB(orbiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1)(
            src, length, &position, block.data(), &marker, c.ss, c.se, c.al, &c.table, &state);
        break;
      default:
        status = ORB(orbiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1)(
            src, length, &position, block.data(), &marker, c.ss, c.se, c.al, &c.table, &state);
    }
    require(position >= 0 && position <= length);
    trace.numbers.insert(trace.numbers.end(),
                         {status, position, marker, lastDC, static_cast<Orb32s>(state.bitBuffer),
                          state.bitCount, state.eobRun});
    trace.values.insert(trace.values.end(), block.begin(), block.end());
    // As a host that goes on behind a marker.
    marker = 0;
  }
  return trace;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  Case c = {};
  const Orb8u kind = input.byte();
  if (kind % 4 == 0) {
    // A record that is damaged itself.
    const std::vector<Orb8u> bytes = input.bytes(sizeof c.table);
    std::memcpy(&c.table, bytes.data(), bytes.size());
  } else {
    const std::vector<Orb8u> bits = input.bytes(16);
    size_t codes = 1;
    for (const Orb8u count : bits) codes += count;
    const std::vector<Orb8u> vals = input.bytes(codes);
    if (legacy90orbiDecodeHuffmanSpecInit_JPEG_8u(bits.data(), vals.data(), &c.table) !=
        orbStsNoErr) {
      return 0;
    }
  }
  if (kind / 4 % 4 == 0) {
    const std::vector<Orb8u> bytes = input.bytes(sizeof c.state);
    std::memcpy(&c.state, bytes.data(), bytes.size());
  }
  c.ss = 1 + input.byte() % 63;
  c.se = c.ss + input.byte() % (64 - c.ss);
  c.al = input.byte() % 14u;
  c.block.resize(64);
  const bool hasBlock = kind / 16 % 2 == 0;
  for (size_t i = 0; hasBlock && i < 64; ++i) {
    const int high = input.byte();
    c.block[i] = static_cast<Orb16s>(high << 8 | input.byte());
  }
  c.scan = input.rest();
  if (c.scan.empty()) return 0;
  const std::vector<TestBuild>& builds = orbtest::runnableBuilds();
  for (int pass = 0; pass < kPasses; ++pass) {
    const Trace expected = decode(builds[0], c, pass);
    for (size_t i = 1; i < builds.size(); ++i) require(decode(builds[i], c, pass) == expected);
  }
  return 0;
}
