// A code-block's bytes, and where they may be cut.
#ifndef ORB_HOSTS_J2K_ENCODED_BLOCK_H
#define ORB_HOSTS_J2K_ENCODED_BLOCK_H

#include <cstdint>
#include <vector>

#include "hosts/bytes.h"

namespace orbhost::j2k {

struct EncodedBlock {
  struct Pass {
    int32_t length;          // how many bytes of the block are enough up to here
    int32_t segment;         // of the codeword segments, the one it is in
    double errorLess;        // by how much the passes up to here lessen the picture's squared error
    bool isTrimmed = false;  // the length is the least one
  };
  struct Segment {
    int32_t begin;    // in the bytes
    int32_t passEnd;  // behind its last pass
  };
  // A number of passes that is worth its bytes: less error for each byte than any other one gives.
  struct Cut {
    int32_t passes;
    double slope;  // of the error over the bytes since the cut before; they fall from cut to cut
  };

  int width = 0;
  int height = 0;
  int subband = 0;  // as the library counts them
  Bytes bytes;
  int bitPlanes = 0;     // that have a bit, or lie below one that has
  double errorLeft = 0;  // the squared error that all passes leave in the picture
  std::vector<Pass> passes;
  std::vector<Segment> segments;
  std::vector<Cut> cuts;

  int chosen = 0;  // passes in the layers up to the one that is being made
};

// The squared error that the chosen passes leave in the picture.
double errorOfChosen(const EncodedBlock& block);

// How many passes are worth a slope.
int passesWorth(const EncodedBlock& block, double slope);

// Finds the cuts: behind any pass, or only where segments end.
void findCuts(EncodedBlock& block, bool onlyAtSegmentEnds);

// Calls `visit` with the number of passes of each piece of a segment between two numbers of passes,
// and where its bytes begin and end.
template <class Visit>
void forEachPiece(const EncodedBlock& block, int firstPass, int passEnd, Visit visit) {
  int32_t begin = firstPass == 0 ? 0 : block.passes[firstPass - 1].length;
  while (firstPass < passEnd) {
    const EncodedBlock::Segment& segment = block.segments[block.passes[firstPass].segment];
    const int end = passEnd < segment.passEnd ? passEnd : segment.passEnd;
    if (begin < segment.begin) begin = segment.begin;
    const int32_t length = block.passes[end - 1].length;
    visit(end - firstPass, begin, length < begin ? begin : length);
    firstPass = end;
    begin = 0;
  }
}

}  // namespace orbhost::j2k

#endif
