#include "tests/hosts/support/program.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace orbtest {

namespace fs = std::filesystem;

Directory::Directory() {
  std::string pattern = fs::temp_directory_path().string() + "/orb-test-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no directory for a test");
  path_ = pattern;
}

Directory::~Directory() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

std::vector<std::string> Directory::files() const {
  std::vector<std::string> names;
  for (const fs::directory_entry& entry : fs::directory_iterator(path_)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

Outcome run(const std::vector<std::string>& command) {
  std::vector<char*> arguments;
  for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);

  int ends[2];
  if (pipe(ends) != 0) throw std::runtime_error("no pipe");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
  posix_spawn_file_actions_addclose(&actions, ends[0]);
  posix_spawn_file_actions_addclose(&actions, ends[1]);
  pid_t child = 0;
  const int error =
      posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  if (error != 0) {
    close(ends[0]);
    throw std::runtime_error(command[0] + " cannot be run (" + std::strerror(error) +
                             "): scripts/install_packages.sh test brings it");
  }

  Outcome outcome;
  char buffer[4096];
  for (;;) {
    const ssize_t got = read(ends[0], buffer, sizeof buffer);
    if (got > 0) outcome.output.append(buffer, static_cast<size_t>(got));
    if (got == 0 || (got < 0 && errno != EINTR)) break;
  }
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  return outcome;
}

Outcome runOrb(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), ORB_PROGRAM);
  return run(arguments);
}

}  // namespace orbtest
