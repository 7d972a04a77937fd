#include "hosts/replaced_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace orbhost {

namespace {

using Replace = TemporaryFile::Replace;

// A copy, which may be closed.
Descriptor copyOf(int number) {
  const int copy = dup(number);
  if (copy < 0) failWithReason("is not open");
  return Descriptor(copy);
}

Descriptor openInput(const std::string& path, InputFile::Purpose purpose, bool force) {
  if (path == kStandard) return copyOf(STDIN_FILENO);
  struct stat status;
  // Looked at before it is opened, which would wait at a pipe for somebody who writes.
  if (stat(path.c_str(), &status) != 0) failWithReason("cannot be opened");
  if (S_ISDIR(status.st_mode)) throw Refusal("is a directory: left as it is");
  if (purpose == InputFile::Purpose::kRead) return Descriptor(path, O_RDONLY);

  if (!S_ISREG(status.st_mode)) throw Refusal("is not a plain file: left as it is");
  if (!force) {
    struct stat link;
    if (lstat(path.c_str(), &link) == 0 && S_ISLNK(link.st_mode)) {
      throw Error("is a symbolic link; --force or --stdout follows it");
    }
    if (status.st_nlink > 1) throw Refusal("has another name (a hard link): left as it is");
    if ((status.st_mode & (S_ISUID | S_ISGID | S_ISVTX)) != 0) {
      throw Refusal("has set-user-ID, set-group-ID or sticky permissions: left as it is");
    }
  }
  return Descriptor(path, O_RDONLY);
}

}  // namespace

InputFile::InputFile(const std::string& path, Purpose purpose, bool force)
    : descriptor_(openInput(path, purpose, force)) {
  if (fstat(descriptor_.number(), &status_) != 0) failWithReason("cannot be read");
}

bool InputFile::isTerminal() const {
  return isatty(descriptor_.number()) != 0;
}

std::optional<uint64_t> InputFile::size() const {
  if (!S_ISREG(status_.st_mode)) return std::nullopt;
  return static_cast<uint64_t>(status_.st_size);
}

OutputFile::OutputFile(const std::string& path, bool force) : path_(path), force_(force) {
  if (path == kStandard) {
    standard_.emplace(copyOf(STDOUT_FILENO));
    return;
  }
  struct stat status;
  if (!force && lstat(path.c_str(), &status) == 0) {
    throw Refusal(path + ": is there already; --force replaces it");
  }
  // Nobody else may read it before it has the permissions of the original.
  withFile(path, [&] { temporary_.emplace(path, S_IRUSR | S_IWUSR); });
}

bool OutputFile::isTerminal() const {
  return standard_ && isatty(standard_->number()) != 0;
}

void OutputFile::write(ByteView bytes) {
  count_ += bytes.size;
  withFile(standard_ ? "the standard output" : path_,
           [&] { (standard_ ? *standard_ : temporary_->descriptor()).write(bytes); });
}

void OutputFile::finishLike(const struct stat& original) {
  if (standard_) return;
  const int file = temporary_->descriptor().number();
  // Only root gives files away. Permissions come after the owner, whose change takes some of them.
  static_cast<void>(!fchown(file, original.st_uid, original.st_gid));
  const timespec times[] = {original.st_atim, original.st_mtim};
  if (fchmod(file, original.st_mode & 0777) != 0 || futimens(file, times) != 0) {
    failWithReason(path_ + ": cannot get the permissions and times of the original");
  }
  withFile(path_, [&] { temporary_->rename(force_ ? Replace::kAllowed : Replace::kForbidden); });
}

}  // namespace orbhost
