#include "hosts/descriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "hosts/error.h"

namespace orbhost {

void failWithReason(const std::string& what) {
  throw Error(what + ": " + std::strerror(errno));
}

Descriptor::Descriptor(const std::string& path, int flags, mode_t mode)
    : number_(::open(path.c_str(), flags | O_CLOEXEC, mode)) {
  if (number_ < 0)
    failWithReason((flags & O_CREAT) != 0 ? "cannot be created" : "cannot be opened");
}

Descriptor::~Descriptor() {
  if (number_ >= 0) ::close(number_);
}

size_t Descriptor::read(uint8_t* to, size_t room) const {
  for (;;) {
    const ssize_t got = ::read(number_, to, room);
    if (got >= 0) return static_cast<size_t>(got);
    if (errno != EINTR) failWithReason("cannot be read");
  }
}

void Descriptor::write(ByteView bytes) const {
  for (size_t done = 0; done < bytes.size;) {
    const ssize_t put = ::write(number_, bytes.data + done, bytes.size - done);
    if (put >= 0) {
      done += static_cast<size_t>(put);
    } else if (errno != EINTR) {
      failWithReason("cannot be written");
    }
  }
}

void Descriptor::close() {
  if (::close(std::exchange(number_, -1)) != 0) failWithReason("cannot be written");
}

}  // namespace orbhost
