// What reading and writing the macroblocks of a plane have in common.
#ifndef ORB_HOSTS_JXR_PLANE_CODING_H
#define ORB_HOSTS_JXR_PLANE_CODING_H

#include "hosts/jxr/headers.h"
#include "hosts/jxr/models.h"
#include "hosts/jxr/quantiser.h"

namespace orbhost::jxr {

// Macroblocks of a row after which scans start afresh and codes adapt.
constexpr int kResetInterval = 16;

// Low-pass coefficients of both channels of halved chroma are coded as one list, in turns.
struct ChromaList {
  int length;      // of the list
  int numbers[7];  // of the coefficients, for every second place
};
constexpr ChromaList kChromaList420 = {6, {1, 2, 3}};
constexpr ChromaList kChromaList422 = {14, {4, 1, 2, 3, 5, 6, 7}};
inline const ChromaList& chromaListOf(ColourFormat format) {
  return format == ColourFormat::k420 ? kChromaList420 : kChromaList422;
}

// The parts of a macroblock's low-pass band that have a bit in its pattern: channels, or luma and
// both channels of halved chroma.
inline int lowPassUnits(ColourFormat format, int channels) {
  return isHalvedAcross(format, 1) ? 2 : channels;
}
// How many numbers of coefficients a unit's channels have, with that of the DC.
inline int lowPassNumbers(ColourFormat format, int unit) {
  return blocksOf(format, unit);
}

// Where a plane's tile resets and adapts.
struct Position {
  Position(const Tile& tile, int x)
      : resets(x % kResetInterval == 0), adapts(resets || x == tile.width - 1) {}

  bool resets;
  bool adapts;
};

}  // namespace orbhost::jxr

#endif
