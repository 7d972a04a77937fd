// A file that gets its name when it is complete.
#ifndef ORB_HOSTS_TEMPORARY_FILE_H
#define ORB_HOSTS_TEMPORARY_FILE_H

#include <filesystem>

#include "hosts/descriptor.h"

namespace orbhost {

// A new file beside its target. It goes again unless it is renamed: with the object, or when a
// signal such as an interrupt ends the program. There is one at a time.
class TemporaryFile {
 public:
  // `mode` as open takes it, less the umask.
  TemporaryFile(std::filesystem::path target, mode_t mode);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  Descriptor& descriptor() { return descriptor_; }

  // The last call: closes the file and gives it its target's name. What bears that name already is
  // replaced or, if that is forbidden, kept: then it is an Error.
  enum class Replace { kAllowed, kForbidden };
  void rename(Replace replace);

 private:
  Descriptor create(mode_t mode);

  const std::filesystem::path target_;
  std::filesystem::path path_;
  Descriptor descriptor_;
};

}  // namespace orbhost

#endif
