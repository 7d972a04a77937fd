// Open files of the system.
#ifndef ORB_HOSTS_DESCRIPTOR_H
#define ORB_HOSTS_DESCRIPTOR_H

#include <sys/types.h>

#include <string>
#include <utility>

#include "hosts/bytes.h"

namespace orbhost {

// An Error of `what` and the reason that errno holds.
[[noreturn]] void failWithReason(const std::string& what);

class Descriptor {
 public:
  // As open takes them. An Error says that the file cannot be opened, or created.
  Descriptor(const std::string& path, int flags, mode_t mode = 0);
  // One that is open.
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&&) = delete;
  ~Descriptor();

  int number() const { return number_; }

  // What is there, up to `room` bytes; 0 only at the end.
  size_t read(uint8_t* to, size_t room) const;
  void write(ByteView bytes) const;
  // An Error if what was written did not arrive.
  void close();

 private:
  int number_;
};

}  // namespace orbhost

#endif
