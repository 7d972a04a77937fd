// The library's one allocator.
#ifndef ORB_FRAME_MEMORY_H
#define ORB_FRAME_MEMORY_H

#include <stdint.h>

namespace orb {

// A block of `size` bytes, not cleared, at a multiple of 64 bytes; null if the size is below 1 or
// the heap refuses. The pointer that the heap gave stands whole in the word in front of the block.
void* orbMalloc(int32_t size);

// Releases a block of orbMalloc, and nothing else. Null is ignored.
void orbFree(void* block);

// Sets `length` bytes to zero; nothing for a length below 1.
void orbZero(void* block, int32_t length);

}  // namespace orb

#endif
