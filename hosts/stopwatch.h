// How long something takes.
#ifndef ORB_HOSTS_STOPWATCH_H
#define ORB_HOSTS_STOPWATCH_H

#include <chrono>

namespace orbhost {

class Stopwatch {
 public:
  double seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace orbhost

#endif
