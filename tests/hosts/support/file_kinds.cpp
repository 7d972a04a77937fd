#include "tests/hosts/support/file_kinds.h"

#include "hosts/jpeg/encode.h"
#include "tests/hosts/support/pictures.h"

namespace orbtest {

using orbhost::Bytes;
using orbhost::jpeg::encodeJpeg;
using orbhost::jpeg::EncodeOptions;

Bytes smallFile() {
  EncodeOptions options;
  options.restartInterval = 2;
  options.optimize = true;
  return encodeJpeg(draw(Motif::kScene, 50, 35, 3), options);
}

std::vector<FileKind> everyFileKind() {
  std::vector<FileKind> kinds = {{"baseline", smallFile()}};
  const auto add = [&](const char* name, int channels, int maximum, const EncodeOptions& options) {
    const int size = options.lossless ? 11 : 25;
    kinds.push_back(
        {name, encodeJpeg(draw(Motif::kScene, size + 6, size, channels, maximum), options)});
  };
  EncodeOptions options;
  options.progressive = true;
  add("progressive", 3, 255, options);
  options.restartInterval = 3;
  add("progressive with restarts", 3, 255, options);
  add("progressive grey", 1, 255, options);
  options = {};
  options.script = orbhost::jpeg::parseScript("0; 1 2;");
  add("sequential scans", 3, 255, options);
  options = {};
  add("YCCK", 4, 255, options);
  options.colours = orbhost::jpeg::ColourSpace::kCmyk;
  add("CMYK", 4, 255, options);
  for (const int predictor : {1, 7}) {
    options = {};
    options.lossless = orbhost::jpeg::LosslessOptions{predictor, 0, 0};
    add("lossless grey", 1, 65535, options);
    options.restartInterval = 2;
    options.restartInRows = true;
    options.lossless->pointTransform = 3;
    add("lossless RGB", 3, 255, options);
  }
  return kinds;
}

}  // namespace orbtest
