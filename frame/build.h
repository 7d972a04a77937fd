// What a body may know of the build that it is compiled for.
//
// Every entry file is compiled once for each build, with ORB_BUILD naming the build and the
// compiler's flags setting its instructions. All that the object emits lies in `orb::ORB_BUILD`, so
// that the linker never takes code of one build for another's.
//
// Kernels come in two kinds: `plain`, which say what a function means, and `simd`, which stand
// beside them in a build with vectors. A body calls `kernel::f`: that is `simd::f` where there is
// one, and `plain::f` otherwise.
#ifndef ORB_FRAME_BUILD_H
#define ORB_FRAME_BUILD_H

#include <stdint.h>

#include "frame/enabled.h"
#include "orb90legacy.h"

#ifndef ORB_BUILD
#error "ORB_BUILD names the build that this file is compiled for"
#endif

#define ORB_BUILD_IS_px 0
#define ORB_BUILD_IS_w7 1
#define ORB_BUILD_IS_v8 1
#define ORB_BUILD_IS_s8 1
#define ORB_BUILD_IS_p8 1
#define ORB_BUILD_IS_g9 1
#define ORB_BUILD_IS_h9 1
#define ORB_BUILD_IS_(build) ORB_BUILD_IS_##build
#define ORB_BUILD_IS(build) ORB_BUILD_IS_(build)

// 1 in every build but px, 0 in px.
#define ORB_SIMD ORB_BUILD_IS(ORB_BUILD)

namespace orb {

namespace ORB_BUILD {

namespace plain {}

#if ORB_SIMD
namespace simd {
using namespace plain;
}
namespace kernel = simd;
#else
namespace kernel = plain;
#endif

// The bodies of this build have the types of the public declarations.
#include "frame/bodies.inc"

}  // namespace ORB_BUILD
}  // namespace orb

#endif
