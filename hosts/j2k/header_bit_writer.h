// The bits of a packet's header (ITU-T T.800 B.10.1).
#ifndef ORB_HOSTS_J2K_HEADER_BIT_WRITER_H
#define ORB_HOSTS_J2K_HEADER_BIT_WRITER_H

#include <cstdint>

#include "hosts/bytes.h"

namespace orbhost::j2k {

// Appends bits to a header, the highest of a byte first. The highest bit behind a byte of 255 is
// always 0, so that no marker comes up.
class HeaderBitWriter {
 public:
  explicit HeaderBitWriter(Bytes& to) : to_(to) {}

  void put(int bit) {
    byte_ = byte_ << 1 | static_cast<unsigned>(bit);
    if (--room_ == 0) flush();
  }
  void put(uint32_t bits, int count) {
    while (count-- > 0) put(static_cast<int>(bits >> count & 1));
  }

  // Fills up the last byte. A header does not end in 255.
  void finish() {
    if (room_ < 8 && !(room_ == 7 && isStuffed_)) {
      byte_ <<= room_;
      flush();
    }
    if (isStuffed_) to_.push_back(0);
  }

 private:
  void flush() {
    to_.push_back(static_cast<uint8_t>(byte_));
    isStuffed_ = byte_ == 255;
    byte_ = 0;
    room_ = isStuffed_ ? 7 : 8;
  }

  Bytes& to_;
  unsigned byte_ = 0;
  int room_ = 8;
  bool isStuffed_ = false;  // the byte in hand follows one of 255
};

}  // namespace orbhost::j2k

#endif
