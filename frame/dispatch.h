// One row of code pointers for each dispatched export, and the two entries that lead to it.
//
// An export is a stub (stubs.S): load the group's build index, jump to entry 1 + index of the row.
// The index starts at -1, so the first call of a group lands on entry 0, the lazy entry, which
// selects the build and goes through the stub again. No later call sees it, and none pays for it.
#ifndef ORB_FRAME_DISPATCH_H
#define ORB_FRAME_DISPATCH_H

#include "frame/cpu.h"
#include "frame/features.h"
#include "orb90legacy.h"

template <class Function>
struct OrbDispatchRow {
  Function* lazy;
  Function* body[orb::kBuildCount];
};

extern "C" {

extern orb::FrameState orbFrameState;

// Selects the build of a group, 1 to 8. The lazy entries come here through stubs.S.
OrbStatus orbInitGroup(int32_t group);

#define ORB_DECLARE_ROW(group, bytes, name) \
  decltype(legacy90##name) orbLazy_##name;  \
  extern const OrbDispatchRow<decltype(legacy90##name)> orbRow_##name;
#define ORB_VERSION_EXPORT ORB_DECLARE_ROW
#define ORB_EXPORT ORB_DECLARE_ROW
#include "frame/exports.inc"
#undef ORB_DECLARE_ROW

}  // extern "C"

#endif
