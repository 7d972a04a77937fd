#include "hosts/temporary_file.h"

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <string>
#include <utility>

#include "hosts/error.h"

namespace orbhost {

namespace {

// The file that a signal's handler has to remove.
std::atomic<const char*> unfinished = nullptr;
static_assert(std::atomic<const char*>::is_always_lock_free);

constexpr int kEndingSignals[] = {SIGINT, SIGTERM, SIGHUP};

extern "C" void removeUnfinished(int signal) {
  if (const char* const path = unfinished) unlink(path);
  // The handler stood for this one signal: now it ends the program as it would have.
  raise(signal);
}

void catchEndingSignals() {
  static const bool kCaught = [] {
    for (const int signal : kEndingSignals) {
      struct sigaction action = {};
      sigaction(signal, nullptr, &action);
      if (action.sa_handler == SIG_IGN) continue;
      action.sa_handler = removeUnfinished;
      action.sa_flags = SA_RESETHAND | SA_RESTART;
      sigaction(signal, &action, nullptr);
    }
    return true;
  }();
  static_cast<void>(kCaught);
}

// While one lives, ending signals wait.
class SignalsHeld {
 public:
  SignalsHeld() {
    sigset_t ending;
    sigemptyset(&ending);
    for (const int signal : kEndingSignals) sigaddset(&ending, signal);
    sigprocmask(SIG_BLOCK, &ending, &before_);
  }
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;
  ~SignalsHeld() { sigprocmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_;
};

}  // namespace

TemporaryFile::TemporaryFile(std::filesystem::path target, mode_t mode)
    : target_(std::move(target)), descriptor_(create(mode)) {}

Descriptor TemporaryFile::create(mode_t mode) {
  catchEndingSignals();
  const SignalsHeld held;
  for (int attempt = 0;; ++attempt) {
    path_ = target_.parent_path() / (".orb-part-" + std::to_string(attempt));
    const int number = open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (number >= 0) {
      unfinished = path_.c_str();
      return Descriptor(number);
    }
    if (errno != EEXIST || attempt == 999) failWithReason("cannot be created");
  }
}

TemporaryFile::~TemporaryFile() {
  if (path_.empty()) return;
  unlink(path_.c_str());
  unfinished = nullptr;
}

void TemporaryFile::rename(Replace replace) {
  descriptor_.close();
  int result = -1;
  if (replace == Replace::kForbidden) {
    result = renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, target_.c_str(), RENAME_NOREPLACE);
    // Where the file system has no such call, looking first has to do.
    if (result != 0 && errno != EINVAL) failWithReason("cannot get its name");
    if (result != 0 && std::filesystem::exists(target_)) throw Error("is there already");
  }
  if (result != 0 && ::rename(path_.c_str(), target_.c_str()) != 0) {
    failWithReason("cannot be replaced");
  }
  unfinished = nullptr;
  path_.clear();
}

}  // namespace orbhost
