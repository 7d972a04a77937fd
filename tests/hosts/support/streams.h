// Sources and sinks in memory.
#ifndef ORB_TESTS_HOSTS_SUPPORT_STREAMS_H
#define ORB_TESTS_HOSTS_SUPPORT_STREAMS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "hosts/stream.h"

namespace orbtest {

// Gives at most `piece` bytes at a time.
class MemorySource : public orbhost::Source {
 public:
  explicit MemorySource(orbhost::ByteView bytes, size_t piece = SIZE_MAX)
      : bytes_(bytes), piece_(piece) {}

  size_t read(uint8_t* to, size_t room) override {
    const size_t count = std::min({room, piece_, bytes_.size - done_});
    std::copy_n(bytes_.data + done_, count, to);
    done_ += count;
    return count;
  }

 private:
  const orbhost::ByteView bytes_;
  const size_t piece_;
  size_t done_ = 0;
};

class MemorySink : public orbhost::Sink {
 public:
  void write(orbhost::ByteView bytes) override {
    all.insert(all.end(), bytes.data, bytes.data + bytes.size);
  }

  orbhost::Bytes all;
};

}  // namespace orbtest

#endif
