// The move-to-front table.
#include <cstdint>

#include "tests/support/builds.h"
#include "tests/support/no_memory.h"

namespace {

void expectTable(const orbtest::TestBuild& build) {
  EXPECT_EQ(ORB(orbsMTFInitAlloc_8u)(nullptr), orbStsNullPtrErr);
  Orb8u* table = nullptr;
  ASSERT_EQ(ORB(orbsMTFInitAlloc_8u)(&table), orbStsNoErr);
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(table) % 64, 0u);
  for (int i = 0; i < 256; ++i) EXPECT_EQ(table[i], i);
  ORB(orbsMTFFree_8u)(table);
  ORB(orbsMTFFree_8u)(nullptr);
}

ORB_MEANING(orbsMTFInitAlloc_8u, AllBytesInOrder) {
  expectTable(build);
}
ORB_AGREEMENT(orbsMTFInitAlloc_8u) {
  expectTable(build);
}
ORB_MEANING(orbsMTFInitAlloc_8u, NoMemory) {
  orbtest::expectWithoutMemory([&] {
    Orb8u byte;
    Orb8u* table = &byte;
    return ORB(orbsMTFInitAlloc_8u)(&table) == orbStsMemAllocErr && table == &byte;
  });
}

// Leaks would be found by the sanitizer, and by the heap's end.
ORB_MEANING(orbsMTFFree_8u, Releases) {
  for (int i = 0; i < 100; ++i) expectTable(build);
}
ORB_AGREEMENT(orbsMTFFree_8u) {
  expectTable(build);
}

}  // namespace
