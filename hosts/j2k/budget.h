// Bounds for what a file may ask for, so that a small damaged one can't take the machine's memory
// and time: no picture that somebody wants to see comes near them.
#ifndef ORB_HOSTS_J2K_BUDGET_H
#define ORB_HOSTS_J2K_BUDGET_H

#include <cstdint>
#include <string>

#include "hosts/error.h"

namespace orbhost::j2k {

class Budget {
 public:
  // A picture may have `freeSamples` samples even if the file is almost empty.
  Budget(uint64_t fileSize, uint64_t freeSamples) : size_(fileSize), freeSamples_(freeSamples) {}

  // Each throws an Error if there is more than a file of this size may have.

  // Of all components.
  void takeSamples(uint64_t count) { take("samples", samples_, count, freeSamples_, 8192); }
  // Of tiles that have data.
  void takeTileComponents(uint64_t count) {
    take("tile-components", tileComponents_, count, 1 << 18, 16);
  }
  // Of tiles that have data, times the progressions that go through them.
  void takePrecincts(uint64_t count) { take("precincts", precincts_, count, 1 << 20, 64); }
  // Of precincts that have data.
  void takeBlocks(uint64_t count) { take("code-blocks", blocks_, count, 1 << 22, 16); }
  // Of each packet's precinct.
  void takeBlockVisits(uint64_t count) {
    take("code-blocks in layers", visits_, count, 1 << 26, 256);
  }

 private:
  void take(const char* what, uint64_t& taken, uint64_t count, uint64_t free, uint64_t perByte) {
    const uint64_t most = free + size_ * perByte;
    if (count > most || taken > most - count) {
      throw Error(std::string("more ") + what + " than a file of this size can have");
    }
    taken += count;
  }

  const uint64_t size_;
  const uint64_t freeSamples_;
  uint64_t samples_ = 0;
  uint64_t tileComponents_ = 0;
  uint64_t precincts_ = 0;
  uint64_t blocks_ = 0;
  uint64_t visits_ = 0;
};

}  // namespace orbhost::j2k

#endif
