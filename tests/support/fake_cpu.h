// A processor that answers from a record, and notes what it was asked.
#ifndef ORB_TESTS_SUPPORT_FAKE_CPU_H
#define ORB_TESTS_SUPPORT_FAKE_CPU_H

#include <cstdint>
#include <cstring>
#include <map>
#include <utility>
#include <vector>

#include "frame/cpu.h"

namespace orbtest {

using Leaf = std::pair<uint32_t, uint32_t>;  // leaf and subleaf

constexpr Leaf kLeaf0 = {0, 0};
constexpr Leaf kLeaf1 = {1, 0};
constexpr Leaf kLeaf7 = {7, 0};
constexpr Leaf kExtended0 = {0x80000000, 0};
constexpr Leaf kExtended1 = {0x80000001, 0};
constexpr Leaf kFamilyBLeaf = {0x20000001, 0};

struct FakeCpu {
  // A processor with every leaf that detection knows of, and no feature at all.
  FakeCpu() {
    leaves[kLeaf0] = {7, 0, 0, 0};
    leaves[kLeaf1] = {};
    leaves[kLeaf7] = {};
    leaves[kExtended0] = {0x80000001, 0, 0, 0};
    leaves[kExtended1] = {};
    setVendor("FakeProducer");
  }

  // The twelve characters in the order EBX, EDX, ECX.
  void setVendor(const char* vendor) {
    std::memcpy(&leaves[kLeaf0].ebx, vendor, 4);
    std::memcpy(&leaves[kLeaf0].edx, vendor + 4, 4);
    std::memcpy(&leaves[kLeaf0].ecx, vendor + 8, 4);
  }

  bool hasCpuid() const { return present; }
  orb::CpuidAnswer cpuid(uint32_t leaf, uint32_t subleaf) {
    asked.push_back({leaf, subleaf});
    const auto found = leaves.find({leaf, subleaf});
    // What is not on record answers with every bit set, so that whoever listens is found out.
    return found == leaves.end() ? orb::CpuidAnswer{~0u, ~0u, ~0u, ~0u} : found->second;
  }
  uint32_t xcr0() {
    ++xgetbvRuns;
    return control;
  }

  int timesAsked(Leaf leaf) const {
    int times = 0;
    for (const Leaf& each : asked) times += each == leaf;
    return times;
  }

  bool present = true;
  std::map<Leaf, orb::CpuidAnswer> leaves;
  uint32_t control = 0;

  std::vector<Leaf> asked;
  int xgetbvRuns = 0;
};

constexpr uint32_t bit(int n) {
  return uint32_t{1} << n;
}

}  // namespace orbtest

#endif
