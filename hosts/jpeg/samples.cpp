#include "hosts/jpeg/samples.h"

#include <algorithm>
#include <cstring>

#include "orb90legacy.h"

namespace orbhost::jpeg {

SampleStripe::SampleStripe(const Image& image, const Layout& layout, ColourSpace colourSpace)
    : image_(image), layout_(layout), colourSpace_(colourSpace) {
  for (const ComponentLayout& component : layout.components) {
    rows_.emplace_back(component.paddedBlocksWide * 8, component.v * 8);
  }
  if (colourSpace == ColourSpace::kYcck) light_.resize(image.rowBytes());
  if (layout.hMax > 1) {
    for (Rows& chroma : fullChroma_) chroma = Rows(rows_[0].width, layout.vMax);
  }
}

void SampleStripe::fill(int mcuRow) {
  for (int group = 0; group < 8; ++group) {
    const int y = (mcuRow * 8 + group) * layout_.vMax;
    if (y < image_.height()) {
      fillGroup(group, y);
    } else {
      repeatGroup(group);
    }
  }
}

// As many rows of the picture as give one row of chroma.
void SampleStripe::fillGroup(int group, int y) {
  const bool halved = layout_.hMax > 1;
  for (int k = 0; k < layout_.vMax; ++k) {
    uint8_t* to[4] = {};
    for (size_t c = 0; c < rows_.size(); ++c) {
      const bool isHalved = halved && (c == 1 || c == 2);
      to[c] = isHalved ? fullChroma_[c - 1].row(k) : rows_[c].row(group * layout_.vMax + k);
    }
    convertRow(image_.row(std::min(y + k, image_.height() - 1)), to);
    for (size_t c = 0; c < rows_.size(); ++c) repeatLastColumn(to[c]);
  }
  if (halved) {
    for (int c : {1, 2}) halve(fullChroma_[c - 1], rows_[c].row(group));
  }
}

void SampleStripe::convertRow(const uint8_t* from, uint8_t* const to[4]) {
  const OrbiSize row = {image_.width(), 1};
  const Orb32s fromStep = static_cast<Orb32s>(image_.rowBytes());
  const Orb32s toStep = rows_[0].width;
  switch (colourSpace_) {
    case ColourSpace::kGrey:
      if (image_.channels() == 3) {
        legacy90orbiRGBToY_JPEG_8u_C3C1R(from, fromStep, to[0], toStep, row);
      } else {
        std::memcpy(to[0], from, image_.rowBytes());
      }
      break;
    case ColourSpace::kYCbCr:
      legacy90orbiRGBToYCbCr_JPEG_8u_C3P3R(from, fromStep, to, toStep, row);
      break;
    case ColourSpace::kRgb:
      separate(from, 0, to);
      break;
    case ColourSpace::kCmyk:
      separate(from, 255, to);
      break;
    case ColourSpace::kYcck:
      for (size_t i = 0; i < light_.size(); ++i) light_[i] = static_cast<uint8_t>(255 - from[i]);
      legacy90orbiCMYKToYCCK_JPEG_8u_C4P4R(light_.data(), fromStep, to, toStep, row);
      break;
  }
}

// The channels as they are, or the light that inks leave.
void SampleStripe::separate(const uint8_t* from, int flip, uint8_t* const to[4]) const {
  for (int x = 0; x < image_.width(); ++x) {
    for (int c = 0; c < image_.channels(); ++c) to[c][x] = static_cast<uint8_t>(*from++ ^ flip);
  }
}

void SampleStripe::halve(const Rows& full, uint8_t* to) const {
  if (layout_.vMax > 1) {
    legacy90orbiSampleDownRowH2V2_Box_JPEG_8u_C1(full.row(0), full.row(1), full.width, to);
  } else {
    legacy90orbiSampleDownRowH2V1_Box_JPEG_8u_C1(full.row(0), full.width, to);
  }
}

void SampleStripe::repeatLastColumn(uint8_t* row) const {
  std::memset(row + image_.width(), row[image_.width() - 1], rows_[0].width - image_.width());
}

void SampleStripe::repeatGroup(int group) {
  for (size_t c = 0; c < rows_.size(); ++c) {
    const int v = layout_.components[c].v;
    const uint8_t* const last = rows_[c].row(group * v - 1);
    for (int k = 0; k < v; ++k) std::memcpy(rows_[c].row(group * v + k), last, rows_[c].width);
  }
}

}  // namespace orbhost::jpeg
