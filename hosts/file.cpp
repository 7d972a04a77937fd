#include "hosts/file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>

#include "hosts/error.h"

namespace orbhost {

namespace fs = std::filesystem;

namespace {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

[[noreturn]] void fail(const std::string& what) {
  throw Error(what + ": " + std::strerror(errno));
}

void writeAll(File file, ByteView bytes) {
  if (std::fwrite(bytes.data, 1, bytes.size, file.get()) != bytes.size) fail("cannot be written");
  // What is still buffered may be what no longer fits on the disk.
  if (std::fclose(file.release()) != 0) fail("cannot be written");
}

// A new file beside the target, which goes again unless it is renamed.
class Temporary {
 public:
  explicit Temporary(const fs::path& target) {
    for (int attempt = 0;; ++attempt) {
      path_ = target.parent_path() / (".orb-part-" + std::to_string(attempt));
      file_.reset(std::fopen(path_.string().c_str(), "wbx"));
      if (file_) return;
      if (errno != EEXIST || attempt == 999) fail("cannot be created");
    }
  }
  Temporary(const Temporary&) = delete;
  Temporary& operator=(const Temporary&) = delete;
  ~Temporary() {
    file_.reset();
    std::error_code ignored;
    if (!path_.empty()) fs::remove(path_, ignored);
  }

  void write(ByteView bytes) { writeAll(std::move(file_), bytes); }
  void renameTo(const fs::path& target) {
    std::error_code error;
    fs::rename(path_, target, error);
    if (error) throw Error("cannot be replaced: " + error.message());
    path_.clear();
  }

 private:
  fs::path path_;
  File file_;
};

}  // namespace

Bytes readFile(const std::string& path) {
  std::error_code ignored;
  if (fs::is_directory(path, ignored)) throw Error("is a directory");
  File file(std::fopen(path.c_str(), "rb"));
  if (!file) fail("cannot be opened");

  // One byte more than a plain file holds lets the first read find its end.
  const uintmax_t known = fs::is_regular_file(path, ignored) ? fs::file_size(path, ignored) : 0;
  Bytes bytes(known + 1);
  size_t size = 0;
  for (;;) {
    size += std::fread(bytes.data() + size, 1, bytes.size() - size, file.get());
    if (std::ferror(file.get())) fail("cannot be read");
    if (std::feof(file.get())) break;
    bytes.resize(bytes.size() * 2 + 65536);
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
    File file(std::fopen(path.c_str(), "wb"));
    if (!file) fail("cannot be opened for writing");
    writeAll(std::move(file), bytes);
    return;
  }
  Temporary temporary(target);
  temporary.write(bytes);
  temporary.renameTo(target);
}

}  // namespace orbhost
