// The program's commands. Each adds its arguments, its help and what it does to the command line.
#ifndef ORB_HOSTS_COMMANDS_H
#define ORB_HOSTS_COMMANDS_H

#include <CLI/CLI.hpp>

namespace orbhost {

void addDvCommand(CLI::App& program);
void addGzipCommand(CLI::App& program);
void addGunzipCommand(CLI::App& program);
void addJ2kCommand(CLI::App& program);
void addImageCommand(CLI::App& program);
void addJpegCommand(CLI::App& program);
void addJxrCommand(CLI::App& program);
void addPackCommand(CLI::App& program);
void addTiffCommand(CLI::App& program);
void addUnpackCommand(CLI::App& program);
void addWavCommand(CLI::App& program);
void addYuvCommand(CLI::App& program);

// Thrown by a command that has said itself what there is to say: the status that the program ends
// with.
struct ExitStatus {
  int value;
};

}  // namespace orbhost

#endif
