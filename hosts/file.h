// Whole files, read and written.
#ifndef ORB_HOSTS_FILE_H
#define ORB_HOSTS_FILE_H

#include <string>

#include "hosts/bytes.h"

namespace orbhost {

// Throws an Error that says why if the file cannot be read to its end.
Bytes readFile(const std::string& path);

// Writes beside the target under another name and renames at the end, so that the target is either
// what it was or complete. A target that is there and is no plain file (a device, a pipe) is
// written directly.
void writeFile(const std::string& path, ByteView bytes);

}  // namespace orbhost

#endif
