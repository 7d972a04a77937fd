// Coded GIT blocks that nobody has checked, and coding of any block, in every build: no access
// outside of what the host handed over, and the results of px.
#include <utility>

#include "compress/git_coder_records.h"
#include "frame/dispatch.h"
#include "fuzz/support/input.h"
#include "tests/support/runnable_builds.h"

namespace {

using orbfuzz::Input;
using orbfuzz::require;
using orbtest::TestBuild;

using Bytes = std::vector<Orb8u>;

struct Decoded {
  OrbStatus status;
  Bytes block;

  bool operator==(const Decoded& other) const {
    return status == other.status && block == other.block;
  }
};

Decoded decode(const TestBuild& build, const Bytes& coded, Orb32s mode, size_t room) {
  Bytes record(kGITDecBaseSize);
  OrbGITDecState* const state = reinterpret_cast<OrbGITDecState*>(record.data());
  require(orbRow_orbsDecodeGITInit_8u.body[build.index](static_cast<Orb32s>(room), state) ==
          orbStsNoErr);
  Decoded decoded = {orbStsNoErr, Bytes(room)};
  const Orb8u none = 0;
  Orb32s length = static_cast<Orb32s>(room);
  decoded.status = orbRow_orbsDecodeGIT_8u.body[build.index](
      coded.empty() ? &none : coded.data(), static_cast<Orb32s>(coded.size()), decoded.block.data(),
      &length, mode, state);
  require(decoded.status == orbStsNoErr || decoded.status == orbStsSizeErr);
  require(length >= 0 && length <= static_cast<Orb32s>(room));
  decoded.block.resize(static_cast<size_t>(length));
  return decoded;
}

Bytes encode(const TestBuild& build, const Bytes& block, Orb32s mode) {
  constexpr Orb32s kRoom = 1 << 16;
  Orb32s size = 0;
  require(orbRow_orbsEncodeGITGetSize_8u.body[build.index](4096, kRoom, &size) == orbStsNoErr);
  static Bytes record(static_cast<size_t>(size));
  OrbGITEncState* const state = reinterpret_cast<OrbGITEncState*>(record.data());
  require(orbRow_orbsEncodeGITInit_8u.body[build.index](4096, kRoom, state) == orbStsNoErr);
  Bytes coded(kRoom);
  Orb32s length = 0;
  require(orbRow_orbsEncodeGIT_8u.body[build.index](block.data(), static_cast<Orb32s>(block.size()),
                                                    coded.data(), &length, mode,
                                                    state) == orbStsNoErr);
  coded.resize(static_cast<size_t>(length));
  return coded;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const Orb32s mode = input.byte() % 6;
  const size_t room = 1 + input.byte() * size_t{16};
  const bool isBlock = input.byte() % 2 == 0;
  // The coded block, or what it is made from: bytes that are replaced, and a block.
  std::vector<std::pair<size_t, Orb8u>> faults;
  for (int i = isBlock ? input.byte() % 8 : 0; i > 0; --i) {
    const size_t place = input.byte() * size_t{256} + input.byte();
    faults.push_back({place, input.byte()});
  }
  Bytes coded = input.rest();
  const std::vector<TestBuild>& builds = orbtest::runnableBuilds();
  if (isBlock && !coded.empty() && coded.size() <= 4096) {
    const Bytes block = coded;
    coded = encode(builds[0], block, mode);
    for (const TestBuild& build : builds) {
      require(encode(build, block, mode) == coded);
      require(decode(build, coded, mode, block.size()) == Decoded{orbStsNoErr, block});
    }
    for (const auto& [place, byte] : faults) coded[place % coded.size()] = byte;
  }
  const Decoded expected = decode(builds[0], coded, mode, room);
  for (size_t i = 1; i < builds.size(); ++i) {
    require(decode(builds[i], coded, mode, room) == expected);
  }
  return 0;
}
