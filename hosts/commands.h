// The program's commands. Each adds its arguments, its help and what it does to the command line.
#ifndef ORB_HOSTS_COMMANDS_H
#define ORB_HOSTS_COMMANDS_H

#include <CLI/CLI.hpp>

namespace orbhost {

void addJpegCommand(CLI::App& program);

}  // namespace orbhost

#endif
