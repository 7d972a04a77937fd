#include "frame/memory.h"

#include <stddef.h>
#include <stdlib.h>
#include <string.h>

namespace orb {
namespace {

constexpr uintptr_t kAlignment = 64;
constexpr size_t kOverhead = kAlignment + sizeof(void*);  // 68 on 32 bits

}  // namespace

void* orbMalloc(int32_t size) {
  if (size < 1) return nullptr;
  void* const raw = malloc(static_cast<size_t>(size) + kOverhead);
  if (!raw) return nullptr;
  const uintptr_t aligned = (reinterpret_cast<uintptr_t>(raw) + kOverhead - 1) & ~(kAlignment - 1);
  void* const block = reinterpret_cast<void*>(aligned);
  static_cast<void**>(block)[-1] = raw;
  return block;
}

void orbFree(void* block) {
  if (block) free(static_cast<void**>(block)[-1]);
}

void orbZero(void* block, int32_t length) {
  if (length >= 1) memset(block, 0, static_cast<size_t>(length));
}

}  // namespace orb
