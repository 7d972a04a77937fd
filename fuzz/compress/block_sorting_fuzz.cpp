// The stages of a block-sorting decompressor on bytes that nobody has checked, and sorting of any
// block, in every build: no access outside of what the host handed over, and the results of px.
#include "frame/dispatch.h"
#include "fuzz/support/input.h"
#include "tests/support/runnable_builds.h"

namespace {

using orbfuzz::Input;
using orbfuzz::require;
using orbtest::TestBuild;

using Bytes = std::vector<Orb8u>;

struct Trace {
  std::vector<Orb32s> numbers;
  Bytes bytes;

  bool operator==(const Trace& other) const {
    return numbers == other.numbers && bytes == other.bytes;
  }
};

template <class Row>
void decodeRuns(const Row& row, const TestBuild& build, const Bytes& source, size_t room,
                Trace& trace) {
  Bytes bytes = source;
  Bytes output(room);
  Orb8u* src = bytes.data();
  Orb32s srcLen = static_cast<Orb32s>(bytes.size());
  Orb32s dstLen = static_cast<Orb32s>(room);
  const OrbStatus status = row.body[build.index](&src, &srcLen, output.data(), &dstLen);
  require(status == orbStsNoErr || status == orbStsDstFull);
  require(srcLen >= 0 && src + srcLen == bytes.data() + bytes.size());
  require(dstLen >= 0 && dstLen <= static_cast<Orb32s>(room));
  trace.numbers.insert(trace.numbers.end(), {status, srcLen, dstLen});
  trace.bytes.insert(trace.bytes.end(), output.begin(), output.end());
}

Trace run(const TestBuild& build, const Bytes& source, Orb32s index, size_t room) {
  Trace trace;
  decodeRuns(orbRow_orbsDecodeRLE_8u, build, source, room, trace);
  decodeRuns(orbRow_orbsDecodeRLE_BZ2_8u, build, source, room, trace);
  decodeRuns(orbRow_orbsEncodeRLE_8u, build, source, room, trace);

  const Orb32s length = static_cast<Orb32s>(source.size());
  Bytes block(source.size()), column(source.size()), back(source.size());
  Bytes buffer(source.size() * 4 + 2080);
  require(orbRow_orbsBWTInv_SmallBlock_8u.body[build.index](
              source.data(), block.data(), length, index % length, buffer.data()) == orbStsNoErr);
  Orb32s row = -1;
  require(orbRow_orbsBWTFwd_SmallBlock_8u.body[build.index](source.data(), column.data(), length,
                                                            &row, buffer.data()) == orbStsNoErr);
  require(row >= 0 && row < length);
  require(orbRow_orbsBWTInv_SmallBlock_8u.body[build.index](column.data(), back.data(), length, row,
                                                            buffer.data()) == orbStsNoErr);
  require(back == source);
  trace.numbers.push_back(row);
  trace.bytes.insert(trace.bytes.end(), block.begin(), block.end());
  trace.bytes.insert(trace.bytes.end(), column.begin(), column.end());
  return trace;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const size_t room = 1 + input.byte() * size_t{16};
  const Orb32s index = static_cast<Orb8s>(input.byte()) * 256 + input.byte();
  const size_t repeats = 1 + input.byte() % 8;
  const Bytes once = input.rest();
  // Blocks that repeat themselves are the hard ones.
  Bytes source;
  for (size_t i = 0; i < repeats; ++i) source.insert(source.end(), once.begin(), once.end());
  if (source.empty() || source.size() > 32768) return 0;
  const std::vector<TestBuild>& builds = orbtest::runnableBuilds();
  const Trace expected = run(builds[0], source, index, room);
  for (size_t i = 1; i < builds.size(); ++i) {
    require(run(builds[i], source, index, room) == expected);
  }
  return 0;
}
