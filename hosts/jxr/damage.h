// What is said of a JPEG XR file that is not what it should be.
#ifndef ORB_HOSTS_JXR_DAMAGE_H
#define ORB_HOSTS_JXR_DAMAGE_H

#include "hosts/error.h"

namespace orbhost::jxr {

[[noreturn]] inline void failDamaged() {
  throw Error("the coded picture is damaged");
}

[[noreturn]] inline void failCutOff() {
  throw Error("the file ends before the picture does");
}

}  // namespace orbhost::jxr

#endif
