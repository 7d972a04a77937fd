#include "hosts/jxr/bits.h"

#include <utility>

#include "hosts/jxr/damage.h"

namespace orbhost::jxr {

void BitReader::check() const {
  if ((next_ - end_) * 8 > static_cast<ptrdiff_t>(count_)) failCutOff();
}

Bytes BitWriter::finish() {
  alignToByte();
  makeRoom();
  while (count_ > 0) {
    bytes_[size_++] = static_cast<uint8_t>(buffer_ >> 24);
    buffer_ <<= 8;
    count_ -= 8;
  }
  bytes_.resize(size_);
  size_ = 0;
  return std::move(bytes_);
}

}  // namespace orbhost::jxr
