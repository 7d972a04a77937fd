// Files and streams in memory.
#ifndef ORB_HOSTS_BYTES_H
#define ORB_HOSTS_BYTES_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orbhost {

using Bytes = std::vector<uint8_t>;

// Bytes that somebody else owns.
struct ByteView {
  const uint8_t* data = nullptr;
  size_t size = 0;

  ByteView() = default;
  ByteView(const uint8_t* first, size_t count) : data(first), size(count) {}
  ByteView(const Bytes& bytes) : data(bytes.data()), size(bytes.size()) {}

  uint8_t operator[](size_t i) const { return data[i]; }
};

}  // namespace orbhost

#endif
