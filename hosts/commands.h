// The program's commands. Each adds its arguments, its help and what it does to the command line.
#ifndef ORB_HOSTS_COMMANDS_H
#define ORB_HOSTS_COMMANDS_H

#include <CLI/CLI.hpp>
#include <string>

#include "hosts/error.h"

namespace orbhost {

void addJpegCommand(CLI::App& program);

// Runs what concerns one file; an Error then names it.
template <class Body>
auto withFile(const std::string& path, Body body) {
  try {
    return body();
  } catch (const Error& error) {
    throw Error(path + ": " + error.what());
  }
}

}  // namespace orbhost

#endif
