#include "hosts/j2k/block_encoder.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "hosts/j2k/parameters.h"

namespace orbhost::j2k {

namespace {

constexpr int kExactLastPlane = 32;
constexpr int kShortest = 1;
constexpr int kPredictably = 2;
constexpr int kMagnitudeBits = 31;

// With the bypass, the significance and refinement passes from the fifth plane on are raw.
bool isRaw(int pass, int style) {
  return (style & kBypass) != 0 && pass >= 10 && pass % 3 != 0;
}

// Of magnitudes cut in front of a bit, where a decoder takes the middle of what that leaves open.
double squaredErrorOf(const Orb32s* samples, OrbiSize size, int lastBit) {
  if (lastBit == 0) return 0;
  const Orb32s left = (1 << lastBit) - 1;
  const Orb32s middle = 1 << (lastBit - 1);
  double squares = 0;
  for (int i = 0; i < size.width * size.height; ++i) {
    const Orb32s magnitude = samples[i] & INT32_MAX;
    const Orb32s error = magnitude > left ? (magnitude & left) - middle : magnitude;
    squares += static_cast<double>(error) * error;
  }
  return squares;
}

}  // namespace

BlockEncoder::BlockEncoder(OrbiSize largest, int style)
    : style_(style), buffer_(static_cast<size_t>(largest.width) * largest.height * 2 + 64) {
  OrbiEncodeState_JPEG2K* state;
  if (legacy90orbiEncodeInitAlloc_JPEG2K(&state, largest) != orbStsNoErr) throw std::bad_alloc();
  state_.reset(state);
}

EncodedBlock BlockEncoder::encode(const Orb32s* samples, OrbiSize size, int subband,
                                  int fractionBits, int lastPlane, double weight) {
  const int lastBit = fractionBits + lastPlane;
  const int style = libraryStyleOf(style_) | (lastBit == 0 ? kExactLastPlane : 0);
  const int termination = style_ & kPredictableTermination ? kPredictably : kShortest;
  Orb32s bits, passes, segments;
  legacy90orbiEncodeLoadCodeBlock_JPEG2K_32s_C1R(
      samples, size.width * static_cast<Orb32s>(sizeof(Orb32s)), size, state_.get(), subband,
      kMagnitudeBits - lastBit, termination, 0, style, &bits, &passes, &segments);
  EncodedBlock block;
  block.width = size.width;
  block.height = size.height;
  block.subband = subband;
  block.errorLeft = weight * squaredErrorOf(samples, size, lastBit) / std::pow(4.0, fractionBits);
  if (passes == 0) return block;
  block.bitPlanes = bits - fractionBits;
  store(block);

  const double unit = weight * std::pow(4.0, lastPlane);
  int32_t begin = 0;
  int32_t length = 0;
  for (int pass = 0; pass < passes; ++pass) {
    const bool isFirst = pass == 0 || (style_ & kTerminateEach) != 0 ||
                         isRaw(pass, style_) != isRaw(pass - 1, style_);
    const int segment = static_cast<int>(block.segments.size()) - (isFirst ? 0 : 1);
    if (isFirst) {
      block.segments.push_back({begin, pass});
      Orb32s segmentLength;
      legacy90orbiEncodeGetTermPassLen_JPEG2K(state_.get(), segment, &segmentLength);
      begin += segmentLength;
    }
    block.segments.back().passEnd = pass + 1;
    Orb32s rate;
    legacy90orbiEncodeGetRate_JPEG2K(state_.get(), pass, &rate);
    length = std::max(length, rate);
    Orb64f errorLess;
    legacy90orbiEncodeGetDist_JPEG2K(state_.get(), pass, &errorLess);
    block.passes.push_back({length, segment, errorLess * unit});
  }
  return block;
}

void BlockEncoder::store(EncodedBlock& block) {
  size_t stored = 0;
  for (Orb32s isNotFinished = 1; isNotFinished != 0;) {
    if (stored == buffer_.size()) buffer_.resize(2 * buffer_.size());
    Orb32s length = static_cast<Orb32s>(buffer_.size() - stored);
    legacy90orbiEncodeStoreBits_JPEG2K_1u(buffer_.data() + stored, &length, state_.get(),
                                          &isNotFinished);
    stored += static_cast<size_t>(length);
  }
  block.bytes.assign(buffer_.begin(), buffer_.begin() + static_cast<ptrdiff_t>(stored));
}

}  // namespace orbhost::j2k
