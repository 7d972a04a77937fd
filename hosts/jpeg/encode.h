// From pixels to a JPEG file in memory.
#ifndef ORB_HOSTS_JPEG_ENCODE_H
#define ORB_HOSTS_JPEG_ENCODE_H

#include <optional>

#include "hosts/bytes.h"
#include "hosts/image.h"
#include "hosts/jpeg/colour.h"
#include "hosts/jpeg/script.h"

namespace orbhost::jpeg {

enum class Sampling { k444, k422, k420, kGrey };

// Of a lossless file (T.81 annex H).
struct LosslessOptions {
  int predictor = 1;       // 1 to 7, as in T.81 table H.1
  int pointTransform = 0;  // lowest bits of a sample that are dropped
  int precision = 0;       // bits of a sample; 0: as many as the picture's maximum has
};

struct EncodeOptions {
  int quality = 85;                    // 1 to 100
  std::optional<Sampling> sampling;    // if not given, 420 where there is chroma
  std::optional<ColourSpace> colours;  // if not given, YCbCr or YCCK
  bool optimize = false;     // Huffman tables made for this picture, at the price of a second pass
  bool progressive = false;  // always with tables of its own for each scan
  Script script;             // the scans; if empty, one, or the usual ones of a progressive file
  int restartInterval = 0;   // in MCUs, or in rows of MCUs; 0 is none
  bool restartInRows = false;
  std::optional<LosslessOptions> lossless;  // in place of everything above but the restarts
};

// A file of a grey, RGB or CMYK picture: baseline with the tables of T.81 annex K, progressive, or
// lossless. A grey picture stays grey whatever the sampling. Grey and YCbCr make JFIF files; others
// have an Adobe segment, and inks are stored as light, as is usual in them. Throws an Error if the
// picture is too large for the format, or the options do not go together.
Bytes encodeJpeg(const Image& image, const EncodeOptions& options);

}  // namespace orbhost::jpeg

#endif
