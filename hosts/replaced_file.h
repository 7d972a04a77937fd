// Files that a program turns into others, with the manners of gzip: the new file gets its name when
// it is complete, with the permissions and times of the old one.
#ifndef ORB_HOSTS_REPLACED_FILE_H
#define ORB_HOSTS_REPLACED_FILE_H

#include <sys/stat.h>

#include <optional>
#include <string>

#include "hosts/descriptor.h"
#include "hosts/error.h"
#include "hosts/stream.h"
#include "hosts/temporary_file.h"

namespace orbhost {

// Why a file was left as it is. Nothing went wrong, and nothing was done.
class Refusal : public Error {
 public:
  using Error::Error;
};

// The path of the standard input, and of the standard output.
inline const std::string kStandard = "-";

class InputFile : public Source {
 public:
  // What is to be replaced has to be a plain file; unless `force` says otherwise also one that is
  // not reached by a link, has no second name and no special permissions.
  enum class Purpose { kRead, kReplace };
  InputFile(const std::string& path, Purpose purpose, bool force);

  size_t read(uint8_t* to, size_t room) override { return descriptor_.read(to, room); }

  bool isTerminal() const;
  // Of a plain file.
  std::optional<uint64_t> size() const;
  const struct stat& status() const { return status_; }

 private:
  Descriptor descriptor_;
  struct stat status_;
};

class OutputFile : public Sink {
 public:
  // A Refusal if the file is there already, unless `force` allows to replace it.
  OutputFile(const std::string& path, bool force);

  void write(ByteView bytes) override;
  uint64_t count() const { return count_; }
  bool isStandard() const { return standard_.has_value(); }
  bool isTerminal() const;

  // The file is complete. It gets its name, and what it can of the original's owner, permissions
  // and times.
  void finishLike(const struct stat& original);

 private:
  const std::string path_;
  const bool force_;
  uint64_t count_ = 0;
  std::optional<TemporaryFile> temporary_;
  std::optional<Descriptor> standard_;
};

}  // namespace orbhost

#endif
