#include "hosts/j2k/block_trimmer.h"

#include <algorithm>

#include "hosts/j2k/parameters.h"

namespace orbhost::j2k {

namespace {

// How many bytes are not needed, most often.
constexpr int32_t kUsual = 3;

// In more bytes than these, so few are not worth the time.
constexpr int32_t kMostWorthIt = 400;

}  // namespace

void BlockTrimmer::trim(EncodedBlock& block, int taken, int chosen) {
  EncodedBlock::Pass& last = block.passes[chosen - 1];
  const EncodedBlock::Segment& segment = block.segments[last.segment];
  if (last.isTrimmed || chosen == segment.passEnd) return;
  last.isTrimmed = true;
  if (last.length > kMostWorthIt) return;
  const int32_t takenLength = taken == 0 ? 0 : block.passes[taken - 1].length;
  const int32_t least = std::max(segment.begin, takenLength);
  decode(block, chosen, last.length, wanted_);
  const auto isEnough = [&](int32_t length) {
    if (length < least) return false;
    decode(block, chosen, length, samples_);
    return samples_ == wanted_;
  };
  int32_t length = last.length - kUsual;
  if (isEnough(length)) {
    while (isEnough(length - 1)) --length;
  } else {
    while (++length < last.length && !isEnough(length)) {
    }
  }
  last.length = length;
  for (int pass = taken; pass < chosen; ++pass) {
    block.passes[pass].length = std::min(block.passes[pass].length, last.length);
  }
}

void BlockTrimmer::decode(const EncodedBlock& block, int passes, int32_t length,
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
