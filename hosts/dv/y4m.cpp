#include "hosts/dv/y4m.h"

#include <string>

namespace orbhost::dv {

namespace {

const char* chromaName(const Format& format) {
  switch (format.macroblocks) {
    case Macroblocks::k411:
      return "411";
    case Macroblocks::k420:
      return "420paldv";
    default:
      return "422";
  }
}

std::string text(Ratio ratio) {
  return std::to_string(ratio.numerator) + ":" + std::to_string(ratio.denominator);
}

Bytes bytesOf(const std::string& line) {
  return Bytes(line.begin(), line.end());
}

}  // namespace

Bytes y4mHeader(const Format& format) {
  // Of an interlaced frame the lower field is the earlier one.
  return bytesOf("YUV4MPEG2 W" + std::to_string(format.width) + " H" +
                 std::to_string(format.height) + " F" + text(format.rate) +
                 (format.isProgressive        ? " Ip"
                  : format.isHighDefinition() ? " It"
                                              : " Ib") +
                 " A" + text(format.pixelAspect) + " C" + chromaName(format) + "\n");
}

Bytes y4mFrameHeader() {
  return bytesOf("FRAME\n");
}

}  // namespace orbhost::dv
