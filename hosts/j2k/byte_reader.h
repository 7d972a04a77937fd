// Numbers from the bytes of a marker segment or a box, high byte first.
#ifndef ORB_HOSTS_J2K_BYTE_READER_H
#define ORB_HOSTS_J2K_BYTE_READER_H

#include <cstdint>
#include <string>

#include "hosts/bytes.h"
#include "hosts/j2k/markers.h"

namespace orbhost::j2k {

class ByteReader {
 public:
  // Reads [first, end) of the file. `name` is what an Error calls it.
  ByteReader(ByteView file, size_t first, size_t end, std::string name)
      : file_(file), position_(first), end_(end), name_(std::move(name)) {}

  size_t position() const { return position_; }
  size_t end() const { return end_; }
  size_t left() const { return end_ - position_; }

  uint64_t number(int bytes) {
    if (left() < static_cast<size_t>(bytes)) fail("is too short");
    uint64_t value = 0;
    for (int i = 0; i < bytes; ++i) value = value << 8 | file_[position_++];
    return value;
  }
  int byte() { return static_cast<int>(number(1)); }
  int word() { return static_cast<int>(number(2)); }
  uint32_t doubleWord() { return static_cast<uint32_t>(number(4)); }
  // The next bytes, or as many as there are.
  ByteView bytes(size_t count) {
    const ByteView view(file_.data + position_, count < left() ? count : left());
    position_ += view.size;
    return view;
  }

  [[noreturn]] void fail(const std::string& what) const { failAt(position_, name_ + " " + what); }

 private:
  ByteView file_;
  size_t position_;
  size_t end_;
  std::string name_;
};

}  // namespace orbhost::j2k

#endif
