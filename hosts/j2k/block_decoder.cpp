#include "hosts/j2k/block_decoder.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <string>

namespace orbhost::j2k {

namespace {

constexpr int kMagnitude = 0x7fffffff;
constexpr int kMostPlanes = 31;  // of the library's magnitudes

// Coefficients are taken to lie in the middle of what their missing bits leave open, and one more
// bit is kept so that this holds where none but the fraction is missing. It is what a reversible
// coefficient does not have.
constexpr int kFractionBits = 1;

inline Orb32s integerOf(Orb32s sample) {
  const Orb32s magnitude = (sample & kMagnitude) >> kFractionBits;
  return sample < 0 ? -magnitude : magnitude;
}

inline Orb32f floatOf(Orb32s sample, Orb32f step) {
  const Orb32f magnitude = static_cast<Orb32f>(sample & kMagnitude) * step;
  return sample < 0 ? -magnitude : magnitude;
}

}  // namespace

BlockDecoder::BlockDecoder(const ComponentCoding& coding, int precision,
                           const PacketReader& packets, Damage& damage)
    : coding_(coding), precision_(precision), packets_(packets), damage_(damage) {
  const int width = 1 << coding.style.blockWidth;
  const int height = 1 << coding.style.blockHeight;
  OrbiDecodeCBProgrState_JPEG2K* state = nullptr;
  if (legacy90orbiDecodeCBProgrInitAlloc_JPEG2K(&state, {width, height}) != orbStsNoErr) {
    throw std::bad_alloc();
  }
  state_.reset(state);
  samples_.resize(static_cast<size_t>(width) * height);
}

void BlockDecoder::decodeBand(const Resolution& resolution, size_t band, Plane<Orb32s>& to) {
  decodeBlocks(resolution, band, to, [](const Orb32s* from, Orb32s* row, int width) {
    for (int x = 0; x < width; ++x) row[x] = integerOf(from[x]);
  });
}

void BlockDecoder::decodeBand(const Resolution& resolution, size_t band, Plane<Orb32f>& to) {
  // E-3, E-6.
  const StepSize step = stepOf(coding_.quantisation, resolution.bands[band]);
  const int range = precision_ + gainOf(resolution.bands[band].orientation);
  const Orb32f scale = static_cast<Orb32f>(
      std::ldexp(1 + step.mantissa / 2048.0, range - step.exponent - kFractionBits));
  decodeBlocks(resolution, band, to, [scale](const Orb32s* from, Orb32f* row, int width) {
    for (int x = 0; x < width; ++x) row[x] = floatOf(from[x], scale);
  });
}

template <class T, class Put>
void BlockDecoder::decodeBlocks(const Resolution& resolution, size_t band, Plane<T>& to, Put put) {
  const Rect& all = resolution.bands[band].rect;
  for (uint32_t precinct = 0; precinct < resolution.precinctCount(); ++precinct) {
    const std::vector<PrecinctBand>& bands = packets_.bands(resolution, precinct);
    if (bands.empty()) continue;
    const BlockGrid& grid = bands[band].grid;
    const CodedBlock* block = bands[band].blocks.data();
    for (uint32_t row = 0; row < grid.rows; ++row) {
      for (uint32_t column = 0; column < grid.columns; ++column, ++block) {
        if (block->first == kNone) continue;
        const Rect rect = grid.block(column, row);
        const int width = static_cast<int>(rect.width());
        const int height = static_cast<int>(rect.height());
        if (!decodeBlock(*block, resolution.bands[band], width, height)) continue;
        for (int y = 0; y < height; ++y) {
          put(samples_.data() + static_cast<ptrdiff_t>(width) * y,
              to.row(static_cast<int>(rect.y0 - all.y0) + y) + (rect.x0 - all.x0), width);
        }
      }
    }
  }
}

// The segments from the contributions of all packets.
void BlockDecoder::gather(const CodedBlock& block) {
  segments_.clear();
  gathered_.clear();
  passes_ = 0;
  int left = 0;  // passes of the last segment
  for (uint32_t i = block.first; i != kNone; i = packets_.contribution(i).next) {
    const Contribution& part = packets_.contribution(i);
    if (left == 0) {
      left = segmentPassesFrom(passes_, coding_.style.blockStyle);
      segments_.push_back({part.bytes, part.length, false, 0});
    } else {
      extend(segments_.back(), part);
    }
    passes_ += static_cast<int>(part.passes);
    left -= static_cast<int>(part.passes);
  }
}

// What is of one packet stays where it is.
void BlockDecoder::extend(Segment& segment, const Contribution& part) {
  if (part.length == 0) return;
  if (segment.length == 0) {
    segment.bytes = part.bytes;
  } else {
    if (!segment.isGathered) {
      segment.isGathered = true;
      segment.gathered = gathered_.size();
      gathered_.insert(gathered_.end(), segment.bytes, segment.bytes + segment.length);
    }
    gathered_.insert(gathered_.end(), part.bytes, part.bytes + part.length);
  }
  segment.length += part.length;
}

// Decodes a block into `samples_`.
bool BlockDecoder::decodeBlock(const CodedBlock& block, const Band& band, int width, int height) {
  const int planes = bitPlanesOf(coding_.quantisation, band) + coding_.roiShift -
                     static_cast<int>(block.zeroPlanes) + kFractionBits;
  if (planes <= kFractionBits || planes > kMostPlanes) {
    damage_.note("a code-block of " + std::to_string(planes - kFractionBits) + " bit-planes");
    return false;
  }
  gather(block);
  const int blockStyle = coding_.style.blockStyle;
  legacy90orbiDecodeCBProgrAttach_JPEG2K_32s_C1R(samples_.data(), width * 4, {width, height},
                                                 state_.get(), static_cast<int>(band.orientation),
                                                 planes, libraryStyleOf(blockStyle));
  legacy90orbiDecodeCBProgrSetPassCounter_JPEG2K(passes_, state_.get());
  bool isDamaged = false;
  for (const Segment& segment : segments_) {
    static const uint8_t kNothing = 0;
    const uint8_t* const bytes = segment.length == 0  ? &kNothing
                                 : segment.isGathered ? gathered_.data() + segment.gathered
                                                      : segment.bytes;
    const int length = static_cast<int>(std::min<uint32_t>(segment.length, INT32_MAX));
    isDamaged |= legacy90orbiDecodeCBProgrStep_JPEG2K(bytes, length, state_.get()) != orbStsNoErr;
  }
  // Raw segments may end as their encoder liked, and that counts as damage for the library.
  if (isDamaged && (blockStyle & kBypass) == 0) damage_.note("a code-block is damaged");
  if (coding_.roiShift > 0) unshiftRegion(width * height);
  return true;
}

// Magnitudes that reach above the background are those of the region of interest (H.1).
void BlockDecoder::unshiftRegion(int count) {
  const int shift = coding_.roiShift;
  if (shift + kFractionBits >= kMostPlanes) return;
  for (int i = 0; i < count; ++i) {
    const Orb32s magnitude = samples_[i] & kMagnitude;
    if (magnitude >> (shift + kFractionBits) != 0) {
      samples_[i] = (samples_[i] & ~kMagnitude) | magnitude >> shift;
    }
  }
}

}  // namespace orbhost::j2k
