// Small JPEG files of every kind that our encoder makes, to be damaged.
#ifndef ORB_TESTS_HOSTS_SUPPORT_FILE_KINDS_H
#define ORB_TESTS_HOSTS_SUPPORT_FILE_KINDS_H

#include <string>
#include <vector>

#include "hosts/bytes.h"

namespace orbtest {

// Baseline, with restarts and tables of its own.
orbhost::Bytes smallFile();

struct FileKind {
  std::string name;
  orbhost::Bytes file;
};
std::vector<FileKind> everyFileKind();

}  // namespace orbtest

#endif
