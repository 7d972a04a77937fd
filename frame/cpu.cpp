#include "frame/cpu.h"

#include <cpuid.h>

namespace orb {

bool HostCpu::hasCpuid() {
#if defined(__x86_64__)
  return true;
#else
  // A processor without CPUID does not let bit 21 of the flags register change.
  constexpr uint32_t kIdFlag = 1u << 21;
  uint32_t before, after;
  __asm__ volatile(
      "pushfl\n\t"
      "pushfl\n\t"
      "popl %0\n\t"
      "movl %0, %1\n\t"
      "xorl %2, %1\n\t"
      "pushl %1\n\t"
      "popfl\n\t"
      "pushfl\n\t"
      "popl %1\n\t"
      "popfl"
      : "=&r"(before), "=&r"(after)
      : "i"(kIdFlag)
      : "cc");
  return ((before ^ after) & kIdFlag) != 0;
#endif
}

CpuidAnswer HostCpu::cpuid(uint32_t leaf, uint32_t subleaf) {
  CpuidAnswer answer;
  __cpuid_count(leaf, subleaf, answer.eax, answer.ebx, answer.ecx, answer.edx);
  return answer;
}

uint32_t HostCpu::xcr0() {
  uint32_t low, high;
  __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return low;
}

}  // namespace orb
