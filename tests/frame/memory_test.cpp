// The library's one allocator.
#include "frame/memory.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/resource.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <vector>

namespace {

constexpr int32_t kSizes[] = {1,  2,   3,   4,   7,   8,    63,   64,    65,
                              68, 100, 127, 128, 129, 1000, 4096, 65536, 1000003};

TEST(Malloc, NothingForASizeBelowOne) {
  EXPECT_EQ(orb::orbMalloc(0), nullptr);
  EXPECT_EQ(orb::orbMalloc(-1), nullptr);
  EXPECT_EQ(orb::orbMalloc(-64), nullptr);
  EXPECT_EQ(orb::orbMalloc(std::numeric_limits<int32_t>::min()), nullptr);
}

TEST(Malloc, AlignedToSixtyFour) {
  std::vector<void*> blocks;
  for (int round = 0; round < 20; ++round) {
    for (const int32_t size : kSizes) {
      void* const block = orb::orbMalloc(size);
      ASSERT_NE(block, nullptr) << size;
      EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 64, 0u) << size;
      std::memset(block, 0xA5, static_cast<size_t>(size));
      blocks.push_back(block);
    }
  }
  for (void* const block : blocks) orb::orbFree(block);
}

// The word in front is the heap's pointer: the heap holds a block there that reaches to the end of
// ours, and orbFree hands back no other.
TEST(Malloc, TheHeapsPointerStandsInFront) {
  for (const int32_t size : kSizes) {
    void* const block = orb::orbMalloc(size);
    ASSERT_NE(block, nullptr);
    void* const raw = static_cast<void**>(block)[-1];
    const ptrdiff_t ahead = static_cast<char*>(block) - static_cast<char*>(raw);
    EXPECT_GE(ahead, static_cast<ptrdiff_t>(sizeof(void*))) << size;
    EXPECT_LE(ahead, static_cast<ptrdiff_t>(63 + sizeof(void*))) << size;
    EXPECT_GE(malloc_usable_size(raw), static_cast<size_t>(size + ahead)) << size;
    std::free(raw);
  }
}

TEST(Free, NullIsIgnored) {
  orb::orbFree(nullptr);
}

// In all, more than 32 bits can address and most machines have.
TEST(Free, GivesBackToTheHeap) {
  for (int i = 0; i < 2000; ++i) {
    void* const block = orb::orbMalloc(16 << 20);
    ASSERT_NE(block, nullptr);
    orb::orbFree(block);
  }
}

// With too little room for addresses. The heap is still good for what fits.
[[noreturn]] void askForTooMuch() {
  const rlimit room = {256 << 20, 256 << 20};
  if (setrlimit(RLIMIT_AS, &room) != 0) std::_Exit(2);
  if (orb::orbMalloc(std::numeric_limits<int32_t>::max()) || orb::orbMalloc(1 << 30)) std::_Exit(1);
  std::_Exit(orb::orbMalloc(1000) ? 0 : 3);
}
TEST(Malloc, NothingIfTheHeapRefuses) {
#if defined(ORB_SANITIZED)
  GTEST_SKIP() << "the sanitizer's heap ends the program instead of refusing";
#endif
  EXPECT_EXIT(askForTooMuch(), testing::ExitedWithCode(0), "");
}

TEST(Zero, SetsTheBytesAndNoOthers) {
  for (const int32_t length : kSizes) {
    for (const size_t at : {size_t{16}, size_t{17}}) {
      std::vector<uint8_t> bytes(static_cast<size_t>(length) + 64, 0xA5);
      orb::orbZero(bytes.data() + at, length);
      for (size_t i = 0; i < bytes.size(); ++i) {
        const bool inside = i >= at && i < at + static_cast<size_t>(length);
        ASSERT_EQ(bytes[i], inside ? 0 : 0xA5) << i << " of " << length;
      }
    }
  }
}

TEST(Zero, NothingForALengthBelowOne) {
  std::vector<uint8_t> bytes(64, 0xA5);
  for (const int32_t length : {0, -1, -16, std::numeric_limits<int32_t>::min()}) {
    orb::orbZero(bytes.data() + 32, length);
    EXPECT_EQ(bytes, std::vector<uint8_t>(64, 0xA5)) << length;
    orb::orbZero(nullptr, length);
  }
}

}  // namespace
