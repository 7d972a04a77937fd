// Lossless scans and tables from a file that nobody has checked, in every build: no access outside
// of what the host handed over, positions within the source, and the results of px. Both forms
// decode the same differences.
#include <cstring>

#include "frame/dispatch.h"
#include "fuzz/support/input.h"
#include "jpeg/huffman_records.h"
#include "tests/support/runnable_builds.h"

namespace {

using orbfuzz::Input;
using orbfuzz::require;
using orbtest::TestBuild;

constexpr int kLength = 8;  // of a row
constexpr int kCalls = 6;

// Everything that decoding leaves behind.
struct Trace {
  std::vector<Orb32s> numbers;
  std::vector<Orb16s> values;

  void note(OrbStatus status, Orb32s position, Orb32s marker, const OrbiDecodeHuffmanState& state) {
    numbers.insert(numbers.end(), {status, position, marker, static_cast<Orb32s>(state.bitBuffer),
                                   state.bitCount});
  }
  bool operator==(const Trace& other) const {
    return numbers == other.numbers && values == other.values;
  }
};

struct Scan {
  OrbiDecodeHuffmanSpec tables[4];
  int rows;
  std::vector<Orb8u> bytes;

  Orb32s size() const { return static_cast<Orb32s>(bytes.size()); }
};

Trace decodeRows(const TestBuild& build, const Scan& scan) {
  Trace trace;
  OrbiDecodeHuffmanState state = {};
  Orb32s position = 0, marker = 0;
  for (int call = 0; call < kCalls; ++call) {
    // Exactly as much memory as the call may write.
    std::vector<std::vector<Orb16s>> rows(scan.rows, std::vector<Orb16s>(kLength, 12345));
    std::vector<Orb16s*> dst;
    std::vector<const OrbiDecodeHuffmanSpec*> tables;
    for (int row = 0; row < scan.rows; ++row) {
      dst.push_back(rows[row].data());
      tables.push_back(&scan.tables[row]);
    }
    const OrbStatus status = orbRow_orbiDecodeHuffmanRow_JPEG_1u16s_C1P4.body[build.index](
        scan.bytes.data(), scan.size(), &position, dst.data(), kLength, scan.rows, &marker,
        tables.data(), &state);
    require(position >= 0 && position <= scan.size());
    require(state.bitCount <= 32);
    trace.note(status, position, marker, state);
    for (const std::vector<Orb16s>& row : rows) {
      trace.values.insert(trace.values.end(), row.begin(), row.end());
    }
    // As a host that goes on behind a marker.
    marker = 0;
  }
  return trace;
}

Trace decodeOneByOne(const TestBuild& build, const Scan& scan) {
  Trace trace;
  OrbiDecodeHuffmanState state = {};
  Orb32s position = 0, marker = 0;
  for (int call = 0; call < kCalls; ++call) {
    std::vector<std::vector<Orb16s>> rows(scan.rows, std::vector<Orb16s>(kLength, 12345));
    OrbStatus status = orbStsNoErr;
    for (int i = 0; i < kLength * scan.rows && status == orbStsNoErr; ++i) {
      const int row = i % scan.rows;
      status = orbRow_orbiDecodeHuffmanOne_JPEG_1u16s_C1.body[build.index](
          scan.bytes.data(), scan.size(), &position, &rows[row][i / scan.rows], &marker,
          &scan.tables[row], &state);
    }
    trace.note(status, position, marker, state);
    for (const std::vector<Orb16s>& row : rows) {
      trace.values.insert(trace.values.end(), row.begin(), row.end());
    }
    marker = 0;
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
  Scan scan;
  const int kind = input.byte();
  scan.rows = kind % 4 + 1;
  for (int row = 0; row < scan.rows; ++row) {
    OrbiDecodeHuffmanSpec& table = scan.tables[row];
    if (kind / 4 % 4 == 0) {
      // A record that is damaged itself.
      const std::vector<Orb8u> bytes = input.bytes(sizeof table);
      std::memcpy(&table, bytes.data(), bytes.size());
    } else if (makeTable(input, table) != orbStsNoErr) {
      return 0;
    }
  }
  scan.bytes = input.rest();
  if (scan.bytes.empty()) return 0;
  const std::vector<TestBuild>& builds = orbtest::runnableBuilds();
  const Trace expected = decodeRows(builds[0], scan);
  for (const TestBuild& build : builds) {
    require(decodeRows(build, scan) == expected);
    require(decodeOneByOne(build, scan) == expected);
  }
  return 0;
}
