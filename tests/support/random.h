// Test data: uniform and extreme values from a seed that the test's name makes.
#ifndef ORB_TESTS_SUPPORT_RANDOM_H
#define ORB_TESTS_SUPPORT_RANDOM_H

#include <cstdint>
#include <limits>
#include <random>
#include <string_view>
#include <type_traits>

namespace orbtest {

class Random {
 public:
  explicit Random(std::string_view name) {
    // FNV-1a: the same seed with every standard library.
    uint32_t hash = 2166136261u;
    for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619u;
    engine_.seed(hash);
  }

  // Uniform over low..high, both included.
  template <class T>
  T between(T low, T high) {
    const uint64_t span = static_cast<uint64_t>(static_cast<int64_t>(high) - low) + 1;
    return static_cast<T>(static_cast<int64_t>(low) + static_cast<int64_t>(engine_() % span));
  }
  bool oneIn(int n) { return between(1, n) == 1; }

  // Uniform over the whole of an integer type.
  template <class T>
  T any() {
    static_assert(std::is_integral_v<T> && sizeof(T) <= 4);
    return between(std::numeric_limits<T>::min(), std::numeric_limits<T>::max());
  }

  // The ends of the type, values beside them and around zero, now and then anything.
  template <class T>
  T extreme() {
    using Limits = std::numeric_limits<T>;
    switch (between(0, 7)) {
      case 0:
        return Limits::min();
      case 1:
        return Limits::max();
      case 2:
        return static_cast<T>(Limits::min() + 1);
      case 3:
        return static_cast<T>(Limits::max() - 1);
      case 4:
        return T{0};
      case 5:
        return T{1};
      case 6:
        return static_cast<T>(-1);
      default:
        return any<T>();
    }
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace orbtest

#endif
