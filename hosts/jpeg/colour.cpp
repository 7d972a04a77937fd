#include "hosts/jpeg/colour.h"

#include <algorithm>

namespace orbhost::jpeg {

namespace {

bool isSubsampled(const std::vector<FrameComponent>& components) {
  return std::any_of(components.begin(), components.end(), [&](const FrameComponent& one) {
    return one.h != components[0].h || one.v != components[0].v;
  });
}

}  // namespace

ColourSpace colourSpaceOf(const MarkerReader& markers) {
  const std::vector<FrameComponent>& components = markers.frame().components;
  const std::optional<int> transform = markers.adobeTransform();
  if (components.size() == 1) return ColourSpace::kGrey;
  if (components.size() == 4) {
    return transform.value_or(0) == 0 ? ColourSpace::kCmyk : ColourSpace::kYcck;
  }
  if (markers.hasJfif()) return ColourSpace::kYCbCr;
  if (transform) return *transform == 0 ? ColourSpace::kRgb : ColourSpace::kYCbCr;
  const bool named = components[0].id == 'R' && components[1].id == 'G' && components[2].id == 'B';
  return named || (markers.frame().isLossless() && !isSubsampled(components)) ? ColourSpace::kRgb
                                                                              : ColourSpace::kYCbCr;
}

}  // namespace orbhost::jpeg
