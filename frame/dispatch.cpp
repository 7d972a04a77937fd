#include "frame/dispatch.h"

#include <stddef.h>

namespace orb::px {
#include "frame/bodies.inc"
}
namespace orb::w7 {
#include "frame/bodies.inc"
}
namespace orb::v8 {
#include "frame/bodies.inc"
}
namespace orb::s8 {
#include "frame/bodies.inc"
}
namespace orb::p8 {
#include "frame/bodies.inc"
}
namespace orb::g9 {
#include "frame/bodies.inc"
}
namespace orb::h9 {
#include "frame/bodies.inc"
}

namespace orb {
namespace {

// What an argument takes on a 32-bit stack: pointers are words there, and nothing is less than one.
template <class T>
struct StackBytes {
  static constexpr size_t value = (sizeof(T) + 3) / 4 * 4;
};
template <class T>
struct StackBytes<T*> {
  static constexpr size_t value = 4;
};
template <class Result, class... Args>
constexpr size_t argumentBytes(Result(ORB_CALL*)(Args...)) {
  return (size_t{0} + ... + StackBytes<Args>::value);
}

}  // namespace
}  // namespace orb

extern "C" {

orb::FrameState orbFrameState;
static_assert(offsetof(orb::FrameState, buildIndex) == 0, "the stubs read it at the start");

OrbStatus orbInitGroup(int32_t group) {
  orb::HostCpu cpu;
  return orb::initGroup(orbFrameState, cpu, group);
}

// ORB_BODIES_<build> names the build whose bodies serve it: its own, or in a library without it the
// next lower one that was built. The version records are those of the processor's build always.
#define ORB_ROW(name, w7_, v8_, s8_, p8_, g9_, h9_)                                   \
  constexpr OrbDispatchRow<decltype(legacy90##name)> orbRow_##name = {                \
      orbLazy_##name,                                                                 \
      {orb::px::name, orb::w7_::name, orb::v8_::name, orb::s8_::name, orb::p8_::name, \
       orb::g9_::name, orb::h9_::name}};
#define ORB_CHECK_BYTES(bytes, name)                            \
  static_assert(orb::argumentBytes(&legacy90##name) == (bytes), \
                "exports.inc states other bytes of arguments than the header for " #name);

#define ORB_FRAME_EXPORT ORB_CHECK_BYTES
#define ORB_VERSION_EXPORT(group, bytes, name) \
  ORB_CHECK_BYTES(bytes, name)                 \
  ORB_ROW(name, w7, v8, s8, p8, g9, h9)
#define ORB_EXPORT(group, bytes, name)                                                     \
  ORB_CHECK_BYTES(bytes, name)                                                             \
  ORB_ROW(name, ORB_BODIES_w7, ORB_BODIES_v8, ORB_BODIES_s8, ORB_BODIES_p8, ORB_BODIES_g9, \
          ORB_BODIES_h9)
#include "frame/exports.inc"

}  // extern "C"
