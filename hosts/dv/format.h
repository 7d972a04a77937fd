// The kinds of raw DV streams, and which of them a frame is.
#ifndef ORB_HOSTS_DV_FORMAT_H
#define ORB_HOSTS_DV_FORMAT_H

#include <cstddef>
#include <string>
#include <vector>

#include "hosts/bytes.h"

namespace orbhost::dv {

// A frame is made of DIF sequences of 150 blocks: a header, two of subcode, three of VAUX, and nine
// times one of audio and 15 of video.
constexpr size_t kDifBytes = 80;
constexpr size_t kSequenceBytes = 150 * kDifBytes;
constexpr int kSegmentsOfSequence = 27;

// How the blocks of a macroblock make pixels.
enum class Macroblocks { k411, k420, k422, kDv100 };

// The part of a DIF block's identification that says what it is.
enum class Section { kHeader = 0, kSubcode = 1, kVaux = 2, kAudio = 3, kVideo = 4 };
inline Section sectionOf(const uint8_t* dif) {
  return static_cast<Section>(dif[0] >> 5);
}

struct Ratio {
  int numerator, denominator;
};

struct Format {
  const char* name;
  int width, height;
  bool is50;               // 50 fields or frames, in place of 60
  int streamType;          // STYPE of the VAUX source pack
  int application;         // APT of the header, or -1 where it makes no difference
  int channels;            // in a frame
  int sequences;           // of each channel
  int sequencesOfPicture;  // of them those with pictures, but that a 1080-line one of 50 Hz has one
                           // more in its first channel
  Macroblocks macroblocks;
  Ratio rate;
  Ratio pixelAspect;  // of a picture of 4:3, or of 16:9 in high definition
  bool isProgressive;

  size_t frameBytes() const { return kSequenceBytes * sequences * channels; }
  int blocksOfMacroblock() const { return macroblocks == Macroblocks::kDv100 ? 8 : 6; }
  bool isHighDefinition() const { return macroblocks == Macroblocks::kDv100; }
};

// All that are known.
const std::vector<Format>& formats();

// The longest frame of any format.
constexpr size_t kLongestFrame = 4 * 12 * kSequenceBytes;

// The format that most headers and VAUX packs of a stream's beginning speak for. An Error if none
// does.
const Format& detectFormat(ByteView beginning);

}  // namespace orbhost::dv

#endif
