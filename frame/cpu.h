// What the processor can do: from the answers of CPUID and XGETBV to the feature word, and from the
// word to the build.
//
// The rules are written over any `Cpu` that answers three questions, so that tests can put recorded
// processors in the place of the real one:
//
//   bool hasCpuid();                                  is there a CPUID instruction at all
//   CpuidAnswer cpuid(uint32_t leaf, uint32_t subleaf);
//   uint32_t xcr0();                                  low half of extended control register 0
#ifndef ORB_FRAME_CPU_H
#define ORB_FRAME_CPU_H

#include <stdint.h>

namespace orb {

struct CpuidAnswer {
  uint32_t eax, ebx, ecx, edx;
};

// The feature word. Bits 20 to 30 are never set, nor is anything above bit 31.
enum CpuFeature : uint32_t {
  kMmx = 1u << 0,
  kSse = 1u << 1,
  kSse2 = 1u << 2,
  kSse3 = 1u << 3,
  kSsse3 = 1u << 4,
  kMovbe = 1u << 5,
  kSse41 = 1u << 6,
  kSse42 = 1u << 7,
  kAvx = 1u << 8,       // offered by the processor; says nothing of the operating system
  kAvxState = 1u << 9,  // the operating system saves the registers of AVX
  kAes = 1u << 10,
  kPclmulqdq = 1u << 11,
  kFamilyB = 1u << 12,  // a capability that only processors of family 0xB report
  kRdrand = 1u << 13,
  kF16c = 1u << 14,
  kAvx2Class = 1u << 15,  // FMA, AVX2, BMI1 and BMI2 together
  kAdx = 1u << 16,
  kRdseed = 1u << 17,
  kPrefetchw = 1u << 18,
  kSha = 1u << 19,
  kFamilyBModel1 = 1u << 31,
};

// A leaf that the processor does not offer is never asked for: what CPUID answers there is
// meaningless, and XGETBV faults where the operating system has not enabled it.
template <class Cpu>
uint32_t featureWord(Cpu& cpu) {
  struct Rule {
    uint32_t mask;
    uint32_t feature;
  };
  const auto bit = [](int n) { return uint32_t{1} << n; };
  const auto collect = [](uint32_t reg, const auto& rules) {
    uint32_t found = 0;
    for (const Rule& rule : rules) {
      if (reg & rule.mask) found |= rule.feature;
    }
    return found;
  };

  const uint32_t highestLeaf = cpu.cpuid(0, 0).eax;
  const uint32_t highestExtendedLeaf = cpu.cpuid(0x80000000, 0).eax;
  const CpuidAnswer leaf1 = cpu.cpuid(1, 0);

  const Rule leaf1Edx[] = {{bit(23), kMmx}, {bit(25), kSse}, {bit(26), kSse2}};
  const Rule leaf1Ecx[] = {{bit(0), kSse3},   {bit(9), kSsse3},     {bit(22), kMovbe},
                           {bit(19), kSse41}, {bit(20), kSse42},    {bit(28), kAvx},
                           {bit(25), kAes},   {bit(1), kPclmulqdq}, {bit(30), kRdrand},
                           {bit(29), kF16c}};
  uint32_t word = collect(leaf1.edx, leaf1Edx) | collect(leaf1.ecx, leaf1Ecx);

  const uint32_t osxsaveAndAvx = bit(27) | bit(28);
  const uint32_t sseAndAvxState = bit(1) | bit(2);
  if ((leaf1.ecx & osxsaveAndAvx) == osxsaveAndAvx &&
      (cpu.xcr0() & sseAndAvxState) == sseAndAvxState) {
    word |= kAvxState;
  }

  if (((leaf1.eax >> 8) & 0xF) == 0xB && (cpu.cpuid(0x20000001, 0).edx & bit(1))) {
    word |= kFamilyB;
  }
  if (((leaf1.eax >> 4) & 0xFF) == 0xB1) word |= kFamilyBModel1;

  if (highestLeaf >= 7) {
    const uint32_t ebx = cpu.cpuid(7, 0).ebx;
    const Rule leaf7Ebx[] = {{bit(19), kAdx}, {bit(18), kRdseed}, {bit(29), kSha}};
    word |= collect(ebx, leaf7Ebx);
    const uint32_t avx2AndBmi = bit(5) | bit(3) | bit(8);
    const bool fma = leaf1.ecx & bit(12);
    if (fma && (ebx & avx2AndBmi) == avx2AndBmi) word |= kAvx2Class;
  }
  if (highestExtendedLeaf >= 0x80000001 && (cpu.cpuid(0x80000001, 0).ecx & bit(8))) {
    word |= kPrefetchw;
  }
  return word;
}

// The builds, in the order of the dispatch rows.
enum Build : int32_t { kPx, kW7, kV8, kS8, kP8, kG9, kH9, kBuildCount };

// A build, and the features that its code may ask for: the mask shuts off what the selected class
// does not promise.
struct BuildChoice {
  Build build;
  uint32_t featureMask;
};

constexpr BuildChoice chooseBuild(uint32_t features, bool avxAdmitted) {
  const auto has = [features](uint32_t mask) { return (features & mask) == mask; };
  if (has(kAvx | kAvxState) && avxAdmitted) {
    return has(kAvx2Class) ? BuildChoice{kH9, 0xFEFFF} : BuildChoice{kG9, 0x86FDF};
  }
  if (has(kSse41)) return {kP8, 0x80CDF};
  if (has(kSsse3)) return has(kMovbe) ? BuildChoice{kS8, 0x3F} : BuildChoice{kV8, 0x1F};
  if (has(kSse2)) return {kW7, 0x7};
  return {kPx, 0x3};
}

// The processor that the library runs on.
struct HostCpu {
  bool hasCpuid();
  CpuidAnswer cpuid(uint32_t leaf, uint32_t subleaf);
  uint32_t xcr0();
};

}  // namespace orb

#endif
