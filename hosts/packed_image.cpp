#include "hosts/packed_image.h"

#include "hosts/image_convert.h"

namespace orbhost {

PackedImage pack(const Image& image, PackedFormat format) {
  if (image.channels() == 4) return pack(withoutInks(image), format);
  if (image.maximum() != 255) return pack(withMaximum(image, 255), format);
  PackedImage packed(format, image.width(), image.height(), image.width(), image.height());
  const int green = image.channels() == 3 ? 1 : 0;
  const int blue = image.channels() == 3 ? 2 : 0;
  for (int y = 0; y < image.height(); ++y) {
    const uint8_t* from = image.row(y);
    uint16_t* to = packed.row(y);
    for (int x = 0; x < image.width(); ++x, from += image.channels()) {
      const int r = from[0] >> 3;
      const int b = from[blue] >> 3;
      *to++ = static_cast<uint16_t>(format == PackedFormat::kBgr555
                                        ? r << 10 | from[green] >> 3 << 5 | b
                                        : r << 11 | from[green] >> 2 << 5 | b);
    }
  }
  return packed;
}

}  // namespace orbhost
