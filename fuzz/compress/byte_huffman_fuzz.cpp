// Packed tables of lengths and streams of byte Huffman codes that nobody has checked, in every
// build: no access outside of what the host handed over, and the results of px.
#include <cstring>
#include <utility>

#include "compress/huffman_records.h"
#include "frame/dispatch.h"
#include "fuzz/support/input.h"
#include "tests/support/runnable_builds.h"

namespace {

using orbfuzz::Input;
using orbfuzz::require;
using orbtest::TestBuild;

// Everything that decoding leaves behind, the record included.
using Trace = std::vector<Orb8u>;

void note(Trace& trace, const void* data, size_t size) {
  const Orb8u* const bytes = static_cast<const Orb8u*>(data);
  trace.insert(trace.end(), bytes, bytes + size);
}

// The stream in two pieces.
Trace decode(const TestBuild& build, const OrbHuffState& start, const std::vector<Orb8u>& stream,
             size_t cut, size_t room) {
  Trace trace;
  OrbHuffState state = start;
  for (const auto& [first, end] : {std::pair{size_t{0}, cut}, std::pair{cut, stream.size()}}) {
    if (first == end) continue;
    const std::vector<Orb8u> piece(stream.begin() + static_cast<ptrdiff_t>(first),
                                   stream.begin() + static_cast<ptrdiff_t>(end));
    std::vector<Orb8u> output(room);
    Orb32s length = static_cast<Orb32s>(room);
    require(orbRow_orbsDecodeHuff_8u.body[build.index](
                piece.data(), static_cast<Orb32s>(piece.size()), output.data(), &length, &state) ==
            orbStsNoErr);
    require(length >= 0 && length <= static_cast<Orb32s>(room));
    note(trace, &length, sizeof length);
    note(trace, output.data(), output.size());
  }
  note(trace, &state, sizeof state);
  // As many bytes as a code of 32 bits can reach.
  std::vector<Orb8u> some(stream);
  some.resize(5);
  for (Orb32s offset = 0; offset < 8; ++offset) {
    Orb8u byte = 0;
    const OrbStatus status =
        orbRow_orbsDecodeHuffOne_8u.body[build.index](some.data(), offset, &byte, &start);
    note(trace, &status, sizeof status);
    note(trace, &byte, 1);
  }
  return trace;
}

// What the codes of the record say, they take back.
void requireBothWays(const OrbHuffState& start, const std::vector<Orb8u>& text) {
  Orb32s lengths[256];
  require(legacy90orbsHuffGetLenCodeTable_8u(lengths, &start) == orbStsNoErr);
  // Of full codes only.
  uint64_t taken = 0;
  for (const Orb32s length : lengths) taken += length == 0 ? 0 : uint64_t{1} << (32 - length);
  if (taken != uint64_t{1} << 32) return;
  std::vector<Orb8u> coded;
  for (const Orb8u byte : text) {
    if (lengths[byte] != 0) coded.push_back(byte);
  }
  if (coded.empty()) return;
  const Orb32s count = static_cast<Orb32s>(coded.size());
  Orb32s most = 0, written = 0, last = 0;
  require(legacy90orbsHuffGetDstBuffSize_8u(lengths, count, &most, nullptr) == orbStsNoErr);
  std::vector<Orb8u> stream(static_cast<size_t>(most));
  OrbHuffState encoder = start, decoder = start;
  require(legacy90orbsEncodeHuff_8u(coded.data(), count, stream.data(), &written, &encoder) ==
          orbStsNoErr);
  require(legacy90orbsEncodeHuffFinal_8u(stream.data() + written, &last, &encoder) == orbStsNoErr);
  require(written + last <= most);
  std::vector<Orb8u> decoded(coded.size());
  Orb32s length = count;
  require(legacy90orbsDecodeHuff_8u(stream.data(), written + last, decoded.data(), &length,
                                    &decoder) == orbStsNoErr);
  require(length == count && decoded == coded);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  OrbHuffState state;
  const bool isDamaged = input.byte() % 4 == 0;
  const size_t room = 1 + input.byte() * size_t{8};
  const size_t cut = input.byte();
  if (isDamaged) {
    const std::vector<Orb8u> bytes = input.bytes(sizeof state);
    std::memcpy(&state, bytes.data(), bytes.size());
  } else {
    const std::vector<Orb8u> packed = input.bytes(1 + input.byte());
    Orb32s packedLength = static_cast<Orb32s>(packed.size());
    Orb32s lengths[256];
    // Also of a table that was cut short.
    legacy90orbsHuffLenCodeTableUnpack_8u(packed.data(), &packedLength, lengths);
    require(packedLength >= 1 && packedLength <= static_cast<Orb32s>(packed.size()));
    for (const Orb32s length : lengths) require(length >= 0 && length <= 38);
    if (legacy90orbsDecodeHuffInit_8u(lengths, &state) != orbStsNoErr) return 0;
  }
  const std::vector<Orb8u> stream = input.rest();
  const size_t first = cut < stream.size() ? cut : stream.size();
  const std::vector<TestBuild>& builds = orbtest::runnableBuilds();
  const Trace expected = decode(builds[0], state, stream, first, room);
  for (size_t i = 1; i < builds.size(); ++i) {
    require(decode(builds[i], state, stream, first, room) == expected);
  }
  if (!isDamaged) requireBothWays(state, stream);
  return 0;
}
