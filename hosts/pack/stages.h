// The stages between the bytes of a block and the symbols that are coded: run lengths, the
// Burrows-Wheeler transform, and a ranking that makes use of it.
#ifndef ORB_HOSTS_PACK_STAGES_H
#define ORB_HOSTS_PACK_STAGES_H

#include <cstdint>
#include <memory>

#include "hosts/bytes.h"
#include "orb90legacy.h"

namespace orbhost::pack {

constexpr size_t kLargestBlock = 32768;

// What follows the sorting. Both give numbers of which the small ones are the most frequent.
//
// Move to front: for each byte, how many others have come up since it did last; runs of zeros are
// written as digits 1 and 2 of base 2, the lowest first, as the symbols 0 and 1. Numbers 1 to 253
// are the symbols 2 to 254, and 254 and 255 are 255 with a 0 or a 1 behind it.
//
// Intervals: the library's GIT coder.
enum class Ranking : uint8_t { kMoveToFront = 0, kIntervals = 1 };

// What it takes to turn the symbols of a block back.
struct StageHeader {
  static constexpr size_t kSize = 8;

  Ranking ranking = Ranking::kMoveToFront;
  bool hasRuns = false;    // whether run lengths came first, which few blocks gain by
  uint16_t lastIndex = 0;  // the sorted length, less 1
  uint16_t row = 0;        // where the block is among its rotations
  uint32_t symbols = 0;    // 24 bits

  void appendTo(Bytes& to) const;
  // Throws an Error if it makes no sense.
  static StageHeader parse(const uint8_t* from);
};

// Holds the working memory of all blocks.
class Stages {
 public:
  explicit Stages(Ranking ranking);

  // Appends the block's symbols.
  StageHeader forward(ByteView block, Bytes& symbols);

  // Throws an Error if the symbols do not make a block of that length.
  Bytes inverse(const StageHeader& header, ByteView symbols, size_t length);

 private:
  struct FreeTable {
    void operator()(Orb8u* table) const { legacy90orbsMTFFree_8u(table); }
  };
  template <class State>
  struct FreeState {
    void operator()(State* state) const { legacy90orbsGITFree_8u(state); }
  };

  void moveToFront(ByteView sorted, Bytes& symbols) const;
  Bytes moveBack(ByteView symbols, size_t length) const;
  void toIntervals(ByteView sorted, Bytes& symbols);
  Bytes fromIntervals(ByteView symbols, size_t length);

  Ranking ranking_;
  Bytes sortingMemory_;
  std::unique_ptr<Orb8u, FreeTable> firstTable_;
  std::unique_ptr<OrbGITEncState, FreeState<OrbGITEncState>> intervalEncoder_;
  std::unique_ptr<OrbGITDecState, FreeState<OrbGITDecState>> intervalDecoder_;
};

}  // namespace orbhost::pack

#endif
