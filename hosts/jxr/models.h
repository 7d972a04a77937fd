// The statistics that codes adapt to within a tile, beside those of the library (ITU-T
// T.832).
#ifndef ORB_HOSTS_JXR_MODELS_H
#define ORB_HOSTS_JXR_MODELS_H

#include <cstdint>
#include <memory>

#include "hosts/jxr/format.h"
#include "hosts/jxr/symbol_code.h"
#include "orb90legacy.h"

namespace orbhost::jxr {

// How many of the lowest bits of a band's coefficients are coded apart.
class BitsModel {
 public:
  BitsModel(Band band, int bits) : band_(band), bits_{bits, bits} {}

  int bits(int channel) const { return bits_[classOf(channel)]; }
  // By how many coefficients of a macroblock were not 0, in each class, without those bits.
  void update(ColourFormat format, int channels, const int (&counts)[2]);

 private:
  Band band_;
  int bits_[2];
  int state_[2] = {0, 0};
};

// Whether macroblocks have rather all, or none, of the low-pass coefficients.
struct LowPassPatternModel {
  int all = 1;
  int none = 1;

  void update(uint32_t pattern, uint32_t full);
};

// How the pattern of a macroblock's coded blocks is foretold.
enum class PatternMode { kFromNeighbours, kAsItIs, kInverted };
class PatternModel {
 public:
  PatternMode mode() const { return mode_; }
  // By the pattern of a channel of so many blocks.
  void update(uint32_t pattern, int blocks);

 private:
  int sparse_ = -4;
  int dense_ = 4;
  PatternMode mode_ = PatternMode::kFromNeighbours;
};

// Adaptive scans and codes, as the library keeps them.
class CoderState {
 public:
  CoderState();

  OrbiVLCState_JPEGXR* get() { return reinterpret_cast<OrbiVLCState_JPEGXR*>(memory_.get()); }

 private:
  std::unique_ptr<uint64_t[]> memory_;
};

enum Scan { kScanVertical = 0, kScanHorizontal = 1, kScanLowPass = 2 };
enum CoderGroup { kLowPassCoders = 0, kHighPassCoders = 1 };

// All of a plane in a tile.
struct Models {
  explicit Models(ColourFormat format)
      : patternCode(hasChroma(format) ? kPatternCodes : kCountCodes) {}

  void resetScan(Scan scan) { legacy90orbiVLCScanReset_JPEGXR(coders.get(), scan); }
  void adaptDc();
  void adaptLowPass();
  void adaptHighPass();

  CoderState coders;
  AdaptiveCode levelCode[2] = {AdaptiveCode(kLevelCodes), AdaptiveCode(kLevelCodes)};
  AdaptiveCode quartersCode{kCountCodes};
  AdaptiveCode patternCode;
  BitsModel dcBits{kDc, 8};
  BitsModel lowPassBits{kLowPass, 4};
  BitsModel highPassBits{kHighPass, 0};
  LowPassPatternModel lowPassPattern;
  PatternModel pattern[2];  // of each class
};

}  // namespace orbhost::jxr

#endif
