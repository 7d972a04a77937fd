// Running programs, and directories that go away.
#ifndef ORB_TESTS_HOSTS_SUPPORT_PROGRAM_H
#define ORB_TESTS_HOSTS_SUPPORT_PROGRAM_H

#include <string>
#include <vector>

namespace orbtest {

// A new directory for one test, removed with all that is in it.
class Directory {
 public:
  Directory();
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;
  ~Directory();

  std::string operator/(const std::string& name) const { return path_ + "/" + name; }
  const std::string& path() const { return path_; }
  std::vector<std::string> files() const;  // sorted names

 private:
  std::string path_;
};

struct Outcome {
  int status;          // of its exit; negative: the signal that ended it
  std::string output;  // of both streams
};

// Throws if the program is not there, with the hint that it is one of the tests' needs.
Outcome run(const std::vector<std::string>& command);

// The program orb of this build.
Outcome runOrb(std::vector<std::string> arguments);

}  // namespace orbtest

#endif
