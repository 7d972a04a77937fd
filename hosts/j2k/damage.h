// What is wrong with a file that can be decoded all the same.
#ifndef ORB_HOSTS_J2K_DAMAGE_H
#define ORB_HOSTS_J2K_DAMAGE_H

#include <cstddef>
#include <string>

namespace orbhost::j2k {

// Counts what is found, and keeps the words of the first.
class Damage {
 public:
  void note(const std::string& what) {
    if (count_++ == 0) first_ = what;
  }
  void note(size_t offset, const std::string& what) {
    note("byte " + std::to_string(offset) + ": " + what);
  }

  size_t count() const { return count_; }
  const std::string& first() const { return first_; }

 private:
  size_t count_ = 0;
  std::string first_;
};

}  // namespace orbhost::j2k

#endif
