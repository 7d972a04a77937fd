// What is said of a packed file that is not what it was.
#ifndef ORB_HOSTS_PACK_DAMAGE_H
#define ORB_HOSTS_PACK_DAMAGE_H

#include "hosts/error.h"

namespace orbhost::pack {

[[noreturn]] inline void failDamaged() {
  throw Error("the packed data is damaged");
}

}  // namespace orbhost::pack

#endif
