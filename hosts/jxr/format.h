// What a coded picture consists of (ITU-T T.832).
#ifndef ORB_HOSTS_JXR_FORMAT_H
#define ORB_HOSTS_JXR_FORMAT_H

namespace orbhost::jxr {

constexpr int kMacroblock = 16;  // samples of a macroblock, across and down
constexpr int kMostChannels = 4;
constexpr int kLuma = 0;  // the first channel

// How the channels of a plane are coded, as the plane's header numbers it.
enum class ColourFormat { kGrey = 0, k420 = 1, k422 = 2, k444 = 3, kCmyk = 4, kComponents = 6 };

// Formats whose channels 1 and 2 are chroma share codes among their channels.
inline bool hasChroma(ColourFormat format) {
  return format == ColourFormat::k420 || format == ColourFormat::k422 ||
         format == ColourFormat::k444;
}
inline bool isHalvedAcross(ColourFormat format, int channel) {
  return channel != kLuma && (format == ColourFormat::k420 || format == ColourFormat::k422);
}
inline bool isHalvedDown(ColourFormat format, int channel) {
  return channel != kLuma && format == ColourFormat::k420;
}
// Blocks of a macroblock.
inline int blocksWide(ColourFormat format, int channel) {
  return isHalvedAcross(format, channel) ? 2 : 4;
}
inline int blocksHigh(ColourFormat format, int channel) {
  return isHalvedDown(format, channel) ? 2 : 4;
}
inline int blocksOf(ColourFormat format, int channel) {
  return blocksWide(format, channel) * blocksHigh(format, channel);
}

// Luma has coders and models of its own; all other channels share theirs.
inline int classOf(int channel) {
  return channel == kLuma ? 0 : 1;
}

// The bands that a plane has: each value lacks one more.
enum class Bands { kAll = 0, kNoFlexbits = 1, kNoHighPass = 2, kDcOnly = 3 };

enum Band { kDc, kLowPass, kHighPass, kFlexbits, kBands };

inline int bandsOf(Bands bands) {
  return kBands - static_cast<int>(bands);
}

}  // namespace orbhost::jxr

#endif
