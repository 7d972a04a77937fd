#include "hosts/file.h"

#include <fcntl.h>

#include <filesystem>
#include <system_error>

#include "hosts/error.h"

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

NewFile::NewFile(const std::string& path) {
  fs::path target = path;
  std::error_code ignored;
  if (fs::is_symlink(target, ignored)) {
    const fs::path behind = fs::weakly_canonical(target, ignored);
    if (!behind.empty()) target = behind;
  }
  if (fs::is_directory(target, ignored)) throw Error("is a directory");
  if (fs::exists(target, ignored) && !fs::is_regular_file(target, ignored)) {
    direct_.emplace(path, O_WRONLY);
  } else {
    temporary_.emplace(target, 0666);
  }
}

void NewFile::write(ByteView bytes) {
  (direct_ ? *direct_ : temporary_->descriptor()).write(bytes);
}

void NewFile::finish() {
  if (direct_) {
    direct_->close();
  } else {
    temporary_->rename(TemporaryFile::Replace::kAllowed);
  }
}

void writeFile(const std::string& path, ByteView bytes) {
  NewFile file(path);
  file.write(bytes);
  file.finish();
}

}  // namespace orbhost
