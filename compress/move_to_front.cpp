// The table of move-to-front coding. The coding itself is the host's.
#include "frame/build.h"
#include "frame/memory.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD {

OrbStatus ORB_CALL orbsMTFInitAlloc_8u(Orb8u** ppTable) {
  if (!ppTable) return orbStsNullPtrErr;
  Orb8u* const table = static_cast<Orb8u*>(orbMalloc(256));
  if (!table) return orbStsMemAllocErr;
  for (int i = 0; i < 256; ++i) table[i] = static_cast<Orb8u>(i);
  store(ppTable, table);
  return orbStsNoErr;
}

void ORB_CALL orbsMTFFree_8u(Orb8u* pTable) {
  orbFree(pTable);
}

}  // namespace orb::ORB_BUILD
