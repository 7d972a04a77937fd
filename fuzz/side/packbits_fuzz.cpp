// PackBits strips that nobody has checked, and rows to be packed, in every build: no access outside
// of what the host handed over, the results of px, and rows that come back.
#include <cstring>

#include "frame/dispatch.h"
#include "fuzz/support/input.h"
#include "tests/support/runnable_builds.h"

namespace {

using orbfuzz::Input;
using orbfuzz::require;
using orbtest::TestBuild;

using Bytes = std::vector<Orb8u>;

struct Coded {
  OrbStatus status;
  Orb32s cursor;
  Bytes bytes;

  bool operator==(const Coded& other) const {
    return status == other.status && cursor == other.cursor && bytes == other.bytes;
  }
};

Coded unpack(const TestBuild& build, Bytes strip, Orb32s cursor, size_t length) {
  Coded row = {0, cursor, Bytes(length)};
  row.status = orbRow_orbiUnpackBitsRow_TIFF_8u_C1.body[build.index](
      strip.data(), &row.cursor, static_cast<Orb32s>(strip.size()), row.bytes.data(),
      static_cast<Orb32s>(length));
  return row;
}

Coded pack(const TestBuild& build, Bytes row, Orb32s cursor, size_t room) {
  Coded strip = {0, cursor, Bytes(room)};
  strip.status = orbRow_orbiPackBitsRow_TIFF_8u_C1.body[build.index](
      row.data(), static_cast<Orb32s>(row.size()), strip.bytes.data(), &strip.cursor,
      static_cast<Orb32s>(room));
  return strip;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const Orb32s cursor = static_cast<int8_t>(input.byte());
  const size_t length = 1 + (input.byte() << 8 | input.byte()) % 2000u;
  const Bytes bytes = input.rest();
  if (bytes.empty()) return 0;
  const std::vector<TestBuild>& builds = orbtest::runnableBuilds();

  const Coded unpacked = unpack(builds[0], bytes, cursor, length);
  const Coded packed = pack(builds[0], bytes, cursor, length);
  for (size_t i = 1; i < builds.size(); ++i) {
    require(unpack(builds[i], bytes, cursor, length) == unpacked);
    require(pack(builds[i], bytes, cursor, length) == packed);
  }

  // With room enough, the row comes back; with less, its beginning.
  const Coded whole = pack(builds[0], bytes, 0, 2 * bytes.size() + 2);
  require(whole.status == orbStsNoErr);
  const Coded again = unpack(builds[0], whole.bytes, 0, bytes.size());
  require(again.status == orbStsNoErr && again.cursor == whole.cursor && again.bytes == bytes);
  const Coded part = pack(builds[0], bytes, 0, length);
  require(part.cursor >= 0 && part.cursor <= static_cast<Orb32s>(length));
  require((part.status == orbStsNoErr) == (whole.cursor <= static_cast<Orb32s>(length)));
  return 0;
}
