#include "hosts/jxr/orientation.h"

#include <algorithm>
#include <utility>

namespace orbhost::jxr {

Image turned(Image image, int orientation) {
  if (orientation == 0) return image;
  const bool isQuarter = (orientation & 4) != 0;
  const int channels = image.channels();
  Image result(isQuarter ? image.height() : image.width(),
               isQuarter ? image.width() : image.height(), channels, image.maximum());
  for (int y = 0; y < result.height(); ++y) {
    for (int x = 0; x < result.width(); ++x) {
      // Backwards: where the pixel was before the flips, and before the turn.
      const int flippedX = (orientation & 2) != 0 ? result.width() - 1 - x : x;
      const int flippedY = (orientation & 1) != 0 ? result.height() - 1 - y : y;
      const int fromX = isQuarter ? flippedY : flippedX;
      const int fromY = isQuarter ? image.height() - 1 - flippedX : flippedY;
      if (image.isWide()) {
        std::copy_n(image.wideRow(fromY) + fromX * channels, channels,
                    result.wideRow(y) + x * channels);
      } else {
        std::copy_n(image.row(fromY) + fromX * channels, channels, result.row(y) + x * channels);
      }
    }
  }
  return result;
}

}  // namespace orbhost::jxr
