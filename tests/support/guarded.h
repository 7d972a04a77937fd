// Bytes that end, or start, at a page that may not be touched: a read or write beyond them on that
// side is a fault at once, in every build and without a sanitizer.
#ifndef ORB_TESTS_SUPPORT_GUARDED_H
#define ORB_TESTS_SUPPORT_GUARDED_H

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace orbtest {

enum class Guard { kBefore, kBehind };

class GuardedBytes {
 public:
  explicit GuardedBytes(size_t size, Guard guard = Guard::kBehind) : size_(size) {
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    const size_t room = (size + page - 1) / page * page;
    mapped_ = room + 2 * page;
    void* memory =
        mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) std::abort();
    base_ = static_cast<uint8_t*>(memory);
    if (mprotect(base_, page, PROT_NONE) != 0) std::abort();
    if (mprotect(base_ + page + room, page, PROT_NONE) != 0) std::abort();
    data_ = base_ + page + (guard == Guard::kBehind ? room - size : 0);
  }
  explicit GuardedBytes(const std::vector<uint8_t>& bytes, Guard guard = Guard::kBehind)
      : GuardedBytes(bytes.size(), guard) {
    if (!bytes.empty()) std::memcpy(data_, bytes.data(), bytes.size());
  }
  GuardedBytes(const GuardedBytes&) = delete;
  GuardedBytes& operator=(const GuardedBytes&) = delete;
  ~GuardedBytes() { munmap(base_, mapped_); }

  uint8_t* data() { return data_; }
  const uint8_t* data() const { return data_; }
  int size() const { return static_cast<int>(size_); }

 private:
  size_t size_;
  size_t mapped_;
  uint8_t* base_;
  uint8_t* data_;
};

// Bytes that end where memory ends, to be replaced by others, of up to 4096 bytes at least.
class GuardedSource {
 public:
  explicit GuardedSource(const std::vector<uint8_t>& bytes)
      : memory_(std::max<size_t>(bytes.size(), 4096)) {
    load(bytes);
  }
  void load(const std::vector<uint8_t>& bytes) {
    size_ = static_cast<int>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), memory_.data() + memory_.size() - size_);
  }
  const uint8_t* data() const { return memory_.data() + memory_.size() - size_; }
  int size() const { return size_; }

 private:
  GuardedBytes memory_;
  int size_ = 0;
};

}  // namespace orbtest

#endif
