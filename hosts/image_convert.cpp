#include "hosts/image_convert.h"

#include <type_traits>
#include <vector>

namespace orbhost {

Image withMaximum(const Image& image, int maximum) {
  std::vector<uint16_t> rescaled;
  for (int i = 0; i <= image.maximum(); ++i) {
    rescaled.push_back(static_cast<uint16_t>(rescale(i, image.maximum(), maximum)));
  }
  Image result(image.width(), image.height(), image.channels(), maximum);
  for (int y = 0; y < image.height(); ++y) {
    image.withRow(y, [&](const auto* from) {
      result.withRow(y, [&](auto* to) {
        using Sample = std::remove_reference_t<decltype(*to)>;
        for (size_t i = 0; i < image.rowSamples(); ++i) {
          to[i] = static_cast<Sample>(rescaled[from[i]]);
        }
      });
    });
  }
  return result;
}

Image withoutInks(const Image& image) {
  const int maximum = image.maximum();
  Image light(image.width(), image.height(), 3, maximum);
  for (int y = 0; y < image.height(); ++y) {
    image.withRow(y, [&](const auto* from) {
      light.withRow(y, [&](auto* to) {
        using Sample = std::remove_reference_t<decltype(*to)>;
        for (int x = 0; x < image.width(); ++x, from += 4, to += 3) {
          for (int c = 0; c < 3; ++c) {
            to[c] = static_cast<Sample>(rescale(maximum - from[c], maximum, maximum - from[3]));
          }
        }
      });
    });
  }
  return light;
}

}  // namespace orbhost
