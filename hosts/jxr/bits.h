// Bits, the highest of a byte first, in the form in which the library's coders of blocks take and
// leave them: a pointer, a buffer whose valid bits are its highest, and their count.
#ifndef ORB_HOSTS_JXR_BITS_H
#define ORB_HOSTS_JXR_BITS_H

#include <cstddef>
#include <cstdint>

#include "hosts/bytes.h"
#include "orb90legacy.h"

namespace orbhost::jxr {

// More bytes than one block of coefficients can take, with what a reader is ahead.
constexpr size_t kBlockBytes = 256;

class BitReader {
 public:
  BitReader() = default;
  // `kBlockBytes` readable bytes stand behind the end.
  BitReader(const uint8_t* data, const uint8_t* end) : next_(data), end_(end) {}

  // The next bits, up to 16, without taking them.
  uint32_t peek(int bits) {
    fill();
    return bits == 0 ? 0 : buffer_ >> (32 - bits);
  }
  void skip(int bits) {
    buffer_ <<= bits;
    count_ -= static_cast<uint32_t>(bits);
  }
  // Up to 32 bits.
  uint32_t take(int bits) {
    if (bits > 16) {
      const uint32_t high = take(bits - 16);
      return high << 16 | take(16);
    }
    const uint32_t value = peek(bits);
    skip(bits);
    return value;
  }
  bool flag() { return take(1) != 0; }
  void alignToByte() { skip(static_cast<int>(count_ % 8)); }

  // Throws an Error if bits behind the end have been taken.
  void check() const;

  // The first byte that no bit was taken of; after alignToByte.
  const uint8_t* position() const { return next_ - count_ / 8; }

  // Calls a decoder of the library with its three arguments. It may run ahead of the end, into the
  // bytes behind it, by as much as a block may take: the next call sees that.
  template <class Decode>
  void decode(Decode decoder) {
    check();
    Orb16u* at = reinterpret_cast<Orb16u*>(const_cast<uint8_t*>(next_));
    decoder(&at, &buffer_, &count_);
    next_ = reinterpret_cast<const uint8_t*>(at);
  }

 private:
  void fill() {
    if (count_ >= 16) return;
    check();
    buffer_ |= static_cast<uint32_t>(next_[0] << 8 | next_[1]) << (16 - count_);
    next_ += 2;
    count_ += 16;
  }

  const uint8_t* next_ = nullptr;
  const uint8_t* end_ = nullptr;
  Orb32u buffer_ = 0;
  Orb32u count_ = 0;
};

class BitWriter {
 public:
  // The lowest bits of a value, up to 32.
  void put(uint32_t value, int bits) {
    if (bits > 16) {
      put(value >> 16, bits - 16);
      bits = 16;
    }
    if (bits == 0) return;
    makeRoom();
    buffer_ |= (value & ((1u << bits) - 1)) << (32 - static_cast<int>(count_) - bits);
    count_ += static_cast<uint32_t>(bits);
    if (count_ > 16) flushWord();
  }
  void alignToByte() { put(0, static_cast<int>((8 - count_ % 8) % 8)); }

  // Calls an encoder of the library, for one block, with its three arguments.
  template <class Encode>
  void encode(Encode encoder) {
    makeRoom();
    Orb8u* at = bytes_.data() + size_;
    encoder(&at, &buffer_, &count_);
    size_ = static_cast<size_t>(at - bytes_.data());
  }

  // All that was written, filled up to a byte.
  Bytes finish();

 private:
  void makeRoom() {
    if (bytes_.size() - size_ < kBlockBytes) bytes_.resize(2 * bytes_.size() + 4 * kBlockBytes);
  }
  void flushWord() {
    bytes_[size_++] = static_cast<uint8_t>(buffer_ >> 24);
    bytes_[size_++] = static_cast<uint8_t>(buffer_ >> 16);
    buffer_ <<= 16;
    count_ -= 16;
  }

  Bytes bytes_;
  size_t size_ = 0;
  Orb32u buffer_ = 0;
  Orb32u count_ = 0;
};

}  // namespace orbhost::jxr

#endif
