#include "hosts/file.h"

#include <fcntl.h>

#include <filesystem>
#include <system_error>

#include "hosts/descriptor.h"
#include "hosts/error.h"
#include "hosts/temporary_file.h"

namespace orbhost {

namespace fs = std::filesystem;

Bytes readFile(const std::string& path) {
  std::error_code ignored;
  if (fs::is_directory(path, ignored)) throw Error("is a directory");
  const Descriptor file(path, O_RDONLY);

  // One byte more than a plain file holds lets the last read find its end.
  const uintmax_t known = fs::is_regular_file(path, ignored) ? fs::file_size(path, ignored) : 0;
  Bytes bytes(known + 1);
  size_t size = 0;
  while (const size_t got = file.read(bytes.data() + size, bytes.size() - size)) {
    size += got;
    if (size == bytes.size()) bytes.resize(bytes.size() * 2 + 65536);
  }
  bytes.resize(size);
  return bytes;
}

void writeFile(const std::string& path, ByteView bytes) {
  fs::path target = path;
  std::error_code ignored;
  if (fs::is_symlink(target, ignored)) {
    const fs::path behind = fs::weakly_canonical(target, ignored);
    if (!behind.empty()) target = behind;
  }
  if (fs::is_directory(target, ignored)) throw Error("is a directory");
  if (fs::exists(target, ignored) && !fs::is_regular_file(target, ignored)) {
    Descriptor file(path, O_WRONLY);
    file.write(bytes);
    file.close();
    return;
  }
  TemporaryFile temporary(target, 0666);
  temporary.descriptor().write(bytes);
  temporary.rename(TemporaryFile::Replace::kAllowed);
}

}  // namespace orbhost
