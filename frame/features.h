// The frame state: the detected and the enabled features, and the build of each dispatch group.
//
// Threads may race through a first call. They compute the same values and store them, so every
// access is a relaxed atomic of a whole word and nothing is locked. A thread may see a group's
// index before the enabled word that belongs to it, and then reads the load-time value of 3: a
// reader has to be right with less than what its build earned.
#ifndef ORB_FRAME_FEATURES_H
#define ORB_FRAME_FEATURES_H

#include <stdint.h>

#include "frame/cpu.h"
#include "orb90legacy/status.h"

namespace orb {

constexpr int kGroupCount = 8;
constexpr int32_t kUnselected = -1;

// CPUID leaf 0 spells the vendor in EBX, EDX, ECX. The reference is the line of processors on which
// the builds are compared and timed before a release; only a warning depends on it.
constexpr char kReferenceVendor[] = "AuthenticAMD";

struct FrameState {
  // Indexed by group - 1. The stubs read it, so it stands first.
  int32_t buildIndex[kGroupCount] = {kUnselected, kUnselected, kUnselected, kUnselected,
                                     kUnselected, kUnselected, kUnselected, kUnselected};
  uint32_t detectedFlag = 0;
  uint32_t detectedFeatures = 0;  // the word's high half is zero on every processor
  uint32_t enabledLow = kMmx | kSse;
  uint32_t enabledHigh = 0;
};

template <class T>
T loadWord(const T& word) {
  return __atomic_load_n(&word, __ATOMIC_RELAXED);
}
template <class T>
void storeWord(T& word, T value) {
  __atomic_store_n(&word, value, __ATOMIC_RELAXED);
}

// Fills `features` and returns 1, or returns 0 and leaves it alone if the processor has no CPUID.
// Detection runs once; without CPUID it stays undone and is tried again.
template <class Cpu>
int32_t orbDetectFeatures(FrameState& state, Cpu& cpu, uint64_t* features) {
  if (!__atomic_load_n(&state.detectedFlag, __ATOMIC_ACQUIRE)) {
    if (!cpu.hasCpuid()) return 0;
    storeWord(state.detectedFeatures, featureWord(cpu));
    // Whoever sees the flag sees the word; on x86 this costs what a plain store costs.
    __atomic_store_n(&state.detectedFlag, 1u, __ATOMIC_RELEASE);
  }
  *features = loadWord(state.detectedFeatures);
  return 1;
}

// The request code that makes orbGetCpuFeatures run a leaf of the caller's choice: "getinfoa" as
// bytes.
constexpr uint64_t kGetInfoRequest = 0x616F666E69746567;

// Replaces the word at `features`, which comes in as a request code, by the feature word. `regs`,
// if not null, receives EAX, EBX, ECX and EDX of leaf 1, or with the request code those of the leaf
// and subleaf that stand in its elements 0 and 2.
template <class Cpu>
OrbStatus orbGetCpuFeatures(FrameState& state, Cpu& cpu, uint64_t* features, uint32_t* regs) {
  uint64_t detected;
  if (!orbDetectFeatures(state, cpu, &detected)) return orbStsNoCpuid;
  if (!features) return orbStsNullPtrErr;
  const uint64_t request = *features;
  *features = detected;
  if (regs) {
    const bool chosen = request == kGetInfoRequest;
    const CpuidAnswer answer = cpu.cpuid(chosen ? regs[0] : 1, chosen ? regs[2] : 0);
    regs[0] = answer.eax;
    regs[1] = answer.ebx;
    regs[2] = answer.ecx;
    regs[3] = answer.edx;
  }
  return orbStsNoErr;
}

inline OrbStatus orbSetEnabledFeatures(FrameState& state, uint32_t low, uint32_t high) {
  storeWord(state.enabledLow, low);
  storeWord(state.enabledHigh, high);
  return orbStsNoErr;
}

inline int32_t orbIsFeatureEnabled(const FrameState& state, uint32_t low, uint32_t high) {
  return (loadWord(state.enabledLow) & low) == low && (loadWord(state.enabledHigh) & high) == high;
}

// Whether `build`, by its number in the selection's own list, may be taken. Every build may.
inline int32_t orbAdmitBuild(int32_t build) {
  static_cast<void>(build);
  return 1;
}
constexpr int32_t kAvxAdmission = 70;

template <class Cpu>
bool isReferenceVendor(Cpu& cpu) {
  const CpuidAnswer vendor = cpu.cpuid(0, 0);
  const auto word = [](int at) {
    uint32_t value = 0;
    for (int i = 3; i >= 0; --i) {
      value = value << 8 | static_cast<unsigned char>(kReferenceVendor[at + i]);
    }
    return value;
  };
  return vendor.ebx == word(0) && vendor.edx == word(4) && vendor.ecx == word(8);
}

// Selects the build of one group. There is no path that leaves the index at -1.
template <class Cpu>
OrbStatus initGroup(FrameState& state, Cpu& cpu, int32_t group) {
  int32_t& index = state.buildIndex[group - 1];
  uint64_t features = 0;
  uint32_t regs[4];
  const OrbStatus status = orbGetCpuFeatures(state, cpu, &features, regs);
  if (status != orbStsNoErr) {
    storeWord(index, static_cast<int32_t>(kPx));
    orbSetEnabledFeatures(state, kMmx | kSse, 0);
    return orbStsForeignCpu;
  }
  const uint32_t word = static_cast<uint32_t>(features);
  const BuildChoice choice = chooseBuild(word, orbAdmitBuild(kAvxAdmission) != 0);
  storeWord(index, static_cast<int32_t>(choice.build));
  orbSetEnabledFeatures(state, word & choice.featureMask, 0);
  return isReferenceVendor(cpu) ? orbStsNoErr : orbStsForeignCpu;
}

}  // namespace orb

#endif
