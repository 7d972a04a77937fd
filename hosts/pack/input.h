// The bytes of a packed file, one after the other.
#ifndef ORB_HOSTS_PACK_INPUT_H
#define ORB_HOSTS_PACK_INPUT_H

#include <cstdint>

#include "hosts/bytes.h"
#include "hosts/error.h"
#include "hosts/stream.h"

namespace orbhost::pack {

class Input {
 public:
  explicit Input(Source& source) : source_(source) {}

  Bytes bytes(size_t count) {
    Bytes result(count);
    for (size_t have = 0; have < count;) {
      const size_t got = source_.read(result.data() + have, count - have);
      if (got == 0) throw Error("the file ends within the packed data");
      have += got;
    }
    return result;
  }
  uint64_t number(size_t size) {
    uint64_t value = 0;
    const Bytes read = bytes(size);
    for (size_t i = size; i-- > 0;) value = value << 8 | read[i];
    return value;
  }
  bool isAtEnd() {
    uint8_t byte;
    return source_.read(&byte, 1) == 0;
  }

 private:
  Source& source_;
};

inline void appendNumber(uint64_t value, size_t size, Bytes& to) {
  for (size_t i = 0; i < size; ++i, value >>= 8) to.push_back(static_cast<uint8_t>(value));
}

}  // namespace orbhost::pack

#endif
