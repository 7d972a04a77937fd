// orb j2k encode.
#ifndef ORB_HOSTS_J2K_ENCODE_COMMAND_H
#define ORB_HOSTS_J2K_ENCODE_COMMAND_H

#include <CLI/CLI.hpp>

namespace orbhost::j2k {

void addEncodeCommand(CLI::App& j2k);

}  // namespace orbhost::j2k

#endif
