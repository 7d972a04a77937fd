// A region of samples in memory of its own: any step, any alignment, canaries all around.
#ifndef ORB_TESTS_SUPPORT_PLANE_H
#define ORB_TESTS_SUPPORT_PLANE_H

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "orb90legacy/types.h"
#include "tests/support/random.h"

namespace orbtest {

// Where a plane lies: how many bytes its rows are longer than their samples, and how many bytes its
// first sample is off an address that is a multiple of 64.
struct Placement {
  int padding = 0;
  int misalignment = 0;

  static Placement any(Random& random) { return {random.between(0, 9), random.between(0, 15)}; }
};

// Two planes of the same shape that start equal stay equal, byte for byte with their margins and
// the gaps between rows, when two builds do the same to them: compare them with sameBytes(). What a
// call may not touch is checked with expectOutsideUntouched().
template <class T>
class Plane {
 public:
  static constexpr int kMargin = 128;

  Plane(int width, int height, Placement at = {})
      : width_(width),
        height_(height),
        step_(width * static_cast<int>(sizeof(T)) + at.padding),
        memory_(static_cast<size_t>(2 * kMargin + 128 + at.misalignment) +
                static_cast<size_t>(step_) * height) {
    const uintptr_t base = reinterpret_cast<uintptr_t>(memory_.data()) + kMargin;
    first_ = static_cast<size_t>(((base + 63) & ~uintptr_t{63}) - base) + kMargin + at.misalignment;
    for (size_t i = 0; i < memory_.size(); ++i) {
      memory_[i] = static_cast<uint8_t>(0xA5 ^ ((i - first_) * 7));
    }
    original_ = memory_;
  }
  Plane(Plane&&) = default;
  Plane& operator=(Plane&&) = default;

  int width() const { return width_; }
  int height() const { return height_; }
  OrbiSize size() const { return {width_, height_}; }
  Orb32s step() const { return step_; }

  // May be at an odd address: to be handed on, not to be read through.
  T* data() { return reinterpret_cast<T*>(memory_.data() + first_); }
  const T* data() const { return reinterpret_cast<const T*>(memory_.data() + first_); }

  T at(int x, int y = 0) const {
    T value;
    std::memcpy(&value, memory_.data() + offset(x, y), sizeof value);
    return value;
  }
  void set(int x, int y, T value) {
    std::memcpy(memory_.data() + offset(x, y), &value, sizeof value);
    std::memcpy(original_.data() + offset(x, y), &value, sizeof value);
  }
  template <class Generator>
  void fill(Generator generate) {
    for (int y = 0; y < height_; ++y) {
      for (int x = 0; x < width_; ++x) set(x, y, generate());
    }
  }
  void fillAny(Random& random) {
    fill([&] { return random.any<T>(); });
  }
  void fillExtreme(Random& random) {
    fill([&] { return random.extreme<T>(); });
  }

  // The same samples in another place, from a plane of the same shape.
  void copySamples(const Plane& from) {
    for (int y = 0; y < height_; ++y) {
      for (int x = 0; x < width_; ++x) set(x, y, from.at(x, y));
    }
  }

  std::vector<T> samples() const {
    std::vector<T> all;
    for (int y = 0; y < height_; ++y) {
      for (int x = 0; x < width_; ++x) all.push_back(at(x, y));
    }
    return all;
  }

  // Whether a plane of the same shape holds the same bytes, in its margins and gaps too.
  testing::AssertionResult sameBytes(const Plane& other) const {
    const ptrdiff_t end = static_cast<ptrdiff_t>(step_) * height_ + kMargin;
    for (ptrdiff_t i = -kMargin; i < end; ++i) {
      const int mine = memory_[first_ + static_cast<size_t>(i)];
      const int theirs = other.memory_[other.first_ + static_cast<size_t>(i)];
      if (mine == theirs) continue;
      return testing::AssertionFailure()
             << mine << " and not " << theirs << " at byte " << i << ", with a step of " << step_;
    }
    return testing::AssertionSuccess();
  }

  // Nothing outside the first `columns` of the first `rows` has changed since it was last set.
  void expectOutsideUntouched(int columns, int rows) const {
    std::vector<uint8_t> now = memory_;
    for (int y = 0; y < rows; ++y) {
      std::memcpy(now.data() + offset(0, y), original_.data() + offset(0, y),
                  static_cast<size_t>(columns) * sizeof(T));
    }
    EXPECT_TRUE(now == original_) << "written outside of " << columns << " x " << rows
                                  << " samples";
  }
  void expectOutsideUntouched() const { expectOutsideUntouched(width_, height_); }
  void expectUntouched() const { expectOutsideUntouched(0, 0); }

 private:
  size_t offset(int x, int y) const {
    return first_ + static_cast<size_t>(step_) * y + static_cast<size_t>(x) * sizeof(T);
  }

  int width_;
  int height_;
  int step_;
  std::vector<uint8_t> memory_;
  std::vector<uint8_t> original_;
  size_t first_;
};

// A table, block or row: one row of samples.
template <class T>
Plane<T> makeRow(int length, Placement at = {}) {
  return Plane<T>(length, 1, at);
}

}  // namespace orbtest

#endif
