// Whole files, read and written.
#ifndef ORB_HOSTS_FILE_H
#define ORB_HOSTS_FILE_H

#include <optional>
#include <string>

#include "hosts/descriptor.h"
#include "hosts/stream.h"
#include "hosts/temporary_file.h"

namespace orbhost {

// Throws an Error that says why if the file cannot be read to its end.
Bytes readFile(const std::string& path);

// A file that is written beside its target under another name and renamed at the end, so that the
// target is either what it was or complete. A target that is there and is no plain file (a device,
// a pipe) is written directly.
class NewFile : public Sink {
 public:
  explicit NewFile(const std::string& path);

  void write(ByteView bytes) override;
  // The last call.
  void finish();

 private:
  std::optional<TemporaryFile> temporary_;
  std::optional<Descriptor> direct_;
};

// All of such a file at once.
void writeFile(const std::string& path, ByteView bytes);

}  // namespace orbhost

#endif
