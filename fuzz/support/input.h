// What a fuzz target makes of its bytes.
#ifndef ORB_FUZZ_SUPPORT_INPUT_H
#define ORB_FUZZ_SUPPORT_INPUT_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace orbfuzz {

class Input {
 public:
  Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}

  // 0 behind the end.
  uint8_t byte() {
    if (size_ == 0) return 0;
    --size_;
    return *data_++;
  }
  std::vector<uint8_t> bytes(size_t count) {
    std::vector<uint8_t> taken(count);
    for (uint8_t& b : taken) b = byte();
    return taken;
  }
  // All that is left, in memory of just this size.
  std::vector<uint8_t> rest() { return std::vector<uint8_t>(data_, data_ + size_); }

 private:
  const uint8_t* data_;
  size_t size_;
};

// Stops the fuzzer here.
inline void require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace orbfuzz

#endif
