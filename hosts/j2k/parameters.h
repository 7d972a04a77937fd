// What the marker segments of a codestream say (ITU-T T.800 annex A): the picture and its tiles,
// and how they are coded.
#ifndef ORB_HOSTS_J2K_PARAMETERS_H
#define ORB_HOSTS_J2K_PARAMETERS_H

#include <array>
#include <cstdint>
#include <vector>

namespace orbhost::j2k {

constexpr int kMaxLevels = 32;
constexpr int kMaxComponents = 16384;
constexpr int kMaxPrecision = 38;

// SIZ, a component (A.5.1).
struct ComponentSize {
  int precision = 8;  // bits of a sample, its sign among them
  bool isSigned = false;
  uint32_t dx = 1;  // XRsiz, YRsiz: columns and rows of the reference grid to a sample
  uint32_t dy = 1;
};

// SIZ (A.5.1). The picture is [x0, x1) x [y0, y1) of the reference grid.
struct PictureSize {
  int capabilities = 0;  // Rsiz
  uint32_t x1 = 0;       // Xsiz, Ysiz
  uint32_t y1 = 0;
  uint32_t x0 = 0;  // XOsiz, YOsiz
  uint32_t y0 = 0;
  uint32_t tileWidth = 0;  // XTsiz, YTsiz
  uint32_t tileHeight = 0;
  uint32_t tileX0 = 0;  // XTOsiz, YTOsiz
  uint32_t tileY0 = 0;
  std::vector<ComponentSize> components;

  int componentCount() const { return static_cast<int>(components.size()); }
};

// In the order of their codes (table A.16): the letters say what changes slowest to fastest, of
// layer, resolution, component and position.
enum class Progression : uint8_t { kLrcp, kRlcp, kRpcl, kPcrl, kCprl };

// COD, what concerns all components (A.6.1).
struct CodingStyle {
  bool mayHaveSop = false;
  bool hasEph = false;
  Progression progression = Progression::kLrcp;
  int layers = 1;
  bool transformsComponents = false;
};

// Bits of the code-block style (table A.19).
enum BlockStyle : int {
  kBypass = 1,
  kResetContexts = 2,
  kTerminateEach = 4,
  kVerticallyCausal = 8,
  kPredictableTermination = 16,
  kSegmentationSymbols = 32,
};

// The same style as the library's code-block functions take it; how the predictable termination is
// asked for depends on the function.
constexpr int libraryStyleOf(int blockStyle) {
  return ((blockStyle & kVerticallyCausal) != 0 ? 1 : 0) | ((blockStyle & kBypass) != 0 ? 2 : 0) |
         ((blockStyle & kTerminateEach) != 0 ? 4 : 0) |
         ((blockStyle & kResetContexts) != 0 ? 8 : 0) |
         ((blockStyle & kSegmentationSymbols) != 0 ? 16 : 0);
}

// Exponents of a precinct's size in samples of its resolution (table A.21).
struct PrecinctSize {
  int width = 15;
  int height = 15;
};

// COD and COC, what concerns one component (tables A.15, A.20).
struct ComponentStyle {
  int levels = 5;      // of decomposition
  int blockWidth = 6;  // exponents of a code-block's size
  int blockHeight = 6;
  int blockStyle = 0;                                       // a sum of BlockStyle
  bool isReversible = true;                                 // 5/3, or else 9/7
  std::array<PrecinctSize, kMaxLevels + 1> precincts = {};  // of each resolution
};

// QCD, QCC (A.6.4).
enum class QuantisationStyle : uint8_t { kNone, kDerived, kExpounded };

struct StepSize {
  int exponent = 0;
  int mantissa = 0;  // in units of 2^-11; none without quantisation
};

struct Quantisation {
  QuantisationStyle style = QuantisationStyle::kNone;
  int guardBits = 2;
  std::vector<StepSize> steps;  // by Band::index; only that of band 0 if the others are derived
};

// POC, one change (A.6.6). The ends are exclusive.
struct ProgressionChange {
  int firstResolution = 0;
  int firstComponent = 0;
  int endLayer = 0;
  int endResolution = 0;
  int endComponent = 0;
  Progression progression = Progression::kLrcp;
};

// All that a tile's coding depends on.
struct ComponentCoding {
  ComponentStyle style;
  Quantisation quantisation;
  int roiShift = 0;  // RGN (A.6.3): by how many bits the region of interest is shifted up
};

struct TileCoding {
  CodingStyle style;
  std::vector<ComponentCoding> components;
  std::vector<ProgressionChange> changes;  // if there are none, `style` has the only progression
};

}  // namespace orbhost::j2k

#endif
