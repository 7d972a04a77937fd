// JPEG coders that nobody here wrote: libjpeg-turbo as a library and as programs.
#ifndef ORB_TESTS_HOSTS_SUPPORT_JUDGES_H
#define ORB_TESTS_HOSTS_SUPPORT_JUDGES_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "hosts/bytes.h"
#include "hosts/image.h"

namespace orbtest {

// Decodes with the accurate integer transform and smooth or repeated chroma, to grey or RGB. A
// warning is a failure of the test.
enum class Chroma { kSmooth, kRepeated };
orbhost::Image judgeDecode(orbhost::ByteView file, int scale = 1, Chroma chroma = Chroma::kSmooth);

// The same for a file of four components, to inks. As in all files that have an Adobe segment, the
// file is to store the light that they leave.
orbhost::Image judgeDecodeInks(orbhost::ByteView file);

// The quantised coefficients of a file: for each component its blocks, row by row, each in raster
// order.
struct Coefficients {
  int blocksWide;
  int blocksHigh;
  std::vector<int16_t> values;
};
std::vector<Coefficients> judgeCoefficients(orbhost::ByteView file);

// A file of four channels, which are stored as they are, or as YCCK with halved chroma.
struct JudgeOptions {
  int quality = 90;
  bool ycck = false;
  bool adobeMarker = true;
};
orbhost::Bytes judgeEncodeCmyk(const orbhost::Image& inks, const JudgeOptions& options);

// The programs. Files go through a directory that is gone afterwards.
orbhost::Bytes cjpeg(const orbhost::Image& image, const std::vector<std::string>& options);
orbhost::Image djpeg(const orbhost::Bytes& file, const std::vector<std::string>& options = {});
orbhost::Bytes jpegtran(const orbhost::Bytes& file, const std::vector<std::string>& options);
orbhost::Bytes wrjpgcom(const orbhost::Bytes& file, const std::string& comment);

}  // namespace orbtest

#endif
