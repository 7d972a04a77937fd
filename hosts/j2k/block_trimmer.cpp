#include "hosts/j2k/block_trimmer.h"

#include <algorithm>

#include "hosts/j2k/parameters.h"

namespace orbhost::j2k {

void BlockTrimmer::trim(CodedBlock& block, int taken, int chosen) {
  CodedBlock::Pass& last = block.passes[chosen - 1];
  const CodedBlock::Segment& segment = block.segments[last.segment];
  if (last.isTrimmed || chosen == segment.passEnd) return;
  last.isTrimmed = true;
  constexpr int32_t kMostTrimmed = 6;
  const int32_t takenLength = taken == 0 ? 0 : block.passes[taken - 1].length;
  const int32_t least = std::max({segment.begin, takenLength, last.length - kMostTrimmed});
  decode(block, chosen, last.length, wanted_);
  while (last.length > least) {
    decode(block, chosen, last.length - 1, samples_);
    if (samples_ != wanted_) break;
    --last.length;
  }
  for (int pass = taken; pass < chosen; ++pass) {
    block.passes[pass].length = std::min(block.passes[pass].length, last.length);
  }
}

void BlockTrimmer::decode(const CodedBlock& block, int passes, int32_t length,
                          std::vector<Orb32s>& samples) {
  const OrbiSize size = {block.width, block.height};
  Orb32s stateSize;
  legacy90orbiDecodeGetBufSize_JPEG2K(size, &stateSize);
  if (state_.size() < static_cast<size_t>(stateSize)) state_.resize(static_cast<size_t>(stateSize));
  samples.resize(static_cast<size_t>(size.width) * size.height);
  const int last = block.passes[passes - 1].segment;
  segmentLengths_.clear();
  for (int segment = 0; segment <= last; ++segment) {
    const int32_t end = segment == last ? length : block.segments[segment + 1].begin;
    segmentLengths_.push_back(end - block.segments[segment].begin);
  }
  legacy90orbiDecodeCodeBlock_JPEG2K_1u32s_C1R(
      block.bytes.data(), samples.data(), size.width * static_cast<Orb32s>(sizeof(Orb32s)), size,
      block.subband, block.bitPlanes, passes, segmentLengths_.data(), last + 1,
      libraryStyleOf(style_), nullptr, state_.data());
}

}  // namespace orbhost::j2k
