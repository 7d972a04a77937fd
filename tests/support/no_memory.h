// A call in a process whose heap is at its end, with no block of any size left over.
#ifndef ORB_TESTS_SUPPORT_NO_MEMORY_H
#define ORB_TESTS_SUPPORT_NO_MEMORY_H

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstdlib>

namespace orbtest {

// `call` returns whether it saw what it should, and the test fails if not.
template <class Call>
void expectWithoutMemory(Call call) {
#if defined(ORB_SANITIZED)
  GTEST_SKIP() << "the sanitizer's heap ends the program instead of refusing";
#endif
  const auto tryIt = [&] {
    struct rlimit limit = {1 << 20, 1 << 20};
    if (setrlimit(RLIMIT_AS, &limit) != 0) std::_Exit(2);
    for (size_t size = 1 << 16; size >= 16; size -= size > 8192 ? 8192 : 16) {
      void* volatile block = nullptr;
      do block = std::malloc(size);
      while (block);
    }
    std::_Exit(call() ? 0 : 1);
  };
  EXPECT_EXIT(tryIt(), testing::ExitedWithCode(0), "");
}

}  // namespace orbtest

#endif
