#include "hosts/image_convert.h"

namespace orbhost {

Image withoutInks(Image image) {
  if (image.channels() != 4) return image;
  Image light(image.width(), image.height(), 3);
  const uint8_t* from = image.row(0);
  uint8_t* to = light.row(0);
  uint8_t* const end = to + light.size();
  for (; to != end; from += 4, to += 3) {
    const int black = 255 - from[3];
    for (int c = 0; c < 3; ++c) to[c] = static_cast<uint8_t>(((255 - from[c]) * black + 127) / 255);
  }
  return light;
}

}  // namespace orbhost
