// Bytes that come and go in pieces, so that no whole file has to be in memory.
#ifndef ORB_HOSTS_STREAM_H
#define ORB_HOSTS_STREAM_H

#include "hosts/bytes.h"

namespace orbhost {

class Source {
 public:
  virtual ~Source() = default;

  // Up to `room` bytes, at least one until the end; 0 there, or if `room` is 0.
  virtual size_t read(uint8_t* to, size_t room) = 0;
};

class Sink {
 public:
  virtual ~Sink() = default;

  virtual void write(ByteView bytes) = 0;
};

}  // namespace orbhost

#endif
