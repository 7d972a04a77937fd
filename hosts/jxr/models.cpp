#include "hosts/jxr/models.h"

#include <algorithm>
#include <array>

namespace orbhost::jxr {

namespace {

constexpr int kMostBits = 15;

// A weight of a count by its band: of luma, and of the other channels by their format.
struct BandWeights {
  int luma;
  int chroma420;
  int chroma422;
  std::array<int, kMostChannels> others;  // by how many channels there are, from 1 on
};
constexpr BandWeights kWeights[] = {
    {240, 120, 120, {0, 240, 120, 80}},
    {12, 37, 18, {0, 12, 6, 4}},
    {1, 2, 1, {0, 16, 8, 5}},
};

}  // namespace

void BitsModel::update(ColourFormat format, int channels, const int (&counts)[2]) {
  const BandWeights& weights = kWeights[band_];
  int weighted[2] = {counts[0] * weights.luma, 0};
  if (format == ColourFormat::k420) {
    weighted[1] = counts[1] * weights.chroma420;
  } else if (format == ColourFormat::k422) {
    weighted[1] = counts[1] * weights.chroma422;
  } else {
    weighted[1] = counts[1] * weights.others[channels - 1];
    if (band_ == kHighPass) weighted[1] >>= 4;
  }
  for (int i = 0; i < (format == ColourFormat::kGrey ? 1 : 2); ++i) {
    const int excess = (weighted[i] - 70) >> 2;
    if (excess <= -8) {
      state_[i] += std::max(excess + 4, -16);
      if (state_[i] < -8) {
        state_[i] = bits_[i] == 0 ? -8 : 0;
        bits_[i] = std::max(bits_[i] - 1, 0);
      }
    } else if (excess >= 8) {
      state_[i] += std::min(excess - 4, 15);
      if (state_[i] > 8) {
        state_[i] = bits_[i] == kMostBits ? 8 : 0;
        bits_[i] = std::min(bits_[i] + 1, kMostBits);
      }
    }
  }
}

void LowPassPatternModel::update(uint32_t pattern, uint32_t full) {
  const auto next = [](int count, bool met) { return std::clamp(count + 1 - 4 * met, -8, 7); };
  all = next(all, pattern == full);
  none = next(none, pattern == 0);
}

void PatternModel::update(uint32_t pattern, int blocks) {
  int ones = 0;
  for (; pattern != 0; pattern &= pattern - 1) ++ones;
  ones *= 16 / blocks;
  sparse_ = std::clamp(sparse_ + ones - 3, -16, 15);
  dense_ = std::clamp(dense_ + 13 - ones, -16, 15);
  if (sparse_ < 0) {
    mode_ = sparse_ < dense_ ? PatternMode::kAsItIs : PatternMode::kInverted;
  } else {
    mode_ = dense_ < 0 ? PatternMode::kInverted : PatternMode::kFromNeighbours;
  }
}

CoderState::CoderState() {
  int size = 0;
  legacy90orbiVLCGetStateSize_JPEGXR(&size);
  memory_.reset(new uint64_t[(static_cast<size_t>(size) + 7) / 8]);
  legacy90orbiVLCInit_JPEGXR(get());
  for (const int scan : {kScanVertical, kScanHorizontal, kScanLowPass}) {
    legacy90orbiVLCScanReset_JPEGXR(get(), scan);
  }
}

void Models::adaptDc() {
  for (AdaptiveCode& code : levelCode) code.adapt();
}

void Models::adaptLowPass() {
  legacy90orbiVLCAdapt_JPEGXR(coders.get(), kLowPassCoders);
  adaptDc();
}

void Models::adaptHighPass() {
  legacy90orbiVLCAdapt_JPEGXR(coders.get(), kHighPassCoders);
  quartersCode.adapt();
  patternCode.adapt();
}

}  // namespace orbhost::jxr
