#include "hosts/jpeg/picture.h"

#include <algorithm>
#include <cstring>

#include "hosts/jpeg/tables.h"

namespace orbhost::jpeg {

namespace {

// The mean of a block.
OrbStatus ORB_CALL inverseTo1x1(const Orb16s* block, Orb8u* to, Orb32s, const Orb16u* divisors) {
  *to = static_cast<Orb8u>(std::clamp(((block[0] * divisors[0] + 4) >> 3) + 128, 0, 255));
  return orbStsNoErr;
}

InverseTransform inverseTo(int size) {
  switch (size) {
    case 8:
      return legacy90orbiDCTQuantInv8x8LS_JPEG_16s8u_C1R;
    case 4:
      return legacy90orbiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R;
    case 2:
      return legacy90orbiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R;
    default:
      return inverseTo1x1;
  }
}

// One row from as many planes.
void interleave(const uint8_t* const planes[], int channels, int width, uint8_t* to) {
  for (int x = 0; x < width; ++x) {
    for (int c = 0; c < channels; ++c) *to++ = planes[c][x];
  }
}

}  // namespace

void makeInverseTable(const Divisors& divisors, Orb16u* table) {
  for (int k = 0; k < 64; ++k) {
    // A larger one would be read as negative. With either, the product leaves every range.
    table[kZigzag[k]] = std::min<Orb16u>(divisors[k], 32767);
  }
}

const uint8_t* PictureBuilder::Component::row(int y) {
  return windowRow(std::clamp(y, 0, height - 1) - firstRow + 1);
}

PictureBuilder::PictureBuilder(const MarkerReader& markers, const Layout& layout, int scale)
    : frame_(markers.frame()),
      colourSpace_(colourSpaceOf(markers)),
      storesLight_(storesLight(markers)),
      smallest_(8 / scale),
      rowsPerMcu_(layout.vMax * smallest_),
      image_(divideUp(frame_.width, scale), divideUp(frame_.height, scale),
             static_cast<int>(frame_.components.size())) {
  for (const ComponentLayout& component : layout.components) addComponent(layout, component);
}

void PictureBuilder::addComponent(const Layout& layout, const ComponentLayout& from) {
  Component component{};
  // A component with fewer samples than others need not lose as many at a reduced size: as long as
  // it has half the samples in both directions, its blocks are left twice as large.
  component.size = smallest_;
  while (component.size < 8 && layout.hMax * smallest_ % (from.h * component.size * 2) == 0 &&
         layout.vMax * smallest_ % (from.v * component.size * 2) == 0) {
    component.size *= 2;
  }
  component.width = divideUp(frame_.width * from.h * component.size, layout.hMax * 8);
  component.height = divideUp(frame_.height * from.v * component.size, layout.vMax * 8);
  component.v = from.v;
  component.rowsPerMcu = from.v * component.size;
  component.step = from.paddedBlocksWide * component.size;
  component.doubledAcross = from.h * component.size < layout.hMax * smallest_;
  component.doubledDown = component.rowsPerMcu < rowsPerMcu_;
  component.smooth = smallest_ > 1 && (component.width > 2 || !component.doubledAcross);
  component.inverse = inverseTo(component.size);
  component.window.resize(static_cast<size_t>(component.step) * (component.rowsPerMcu + 1));
  component.doubled.resize(static_cast<size_t>(component.step) * 2);
  if (component.doubledDown && component.smooth) looksAhead_ = true;
  components_.push_back(std::move(component));
}

void PictureBuilder::useDivisors(int component, const Divisors& divisors) {
  makeInverseTable(divisors, components_[component].divisors);
}

void PictureBuilder::beginMcuRow(int mcuRow) {
  for (Component& component : components_) {
    if (mcuRow > 0) {
      std::memcpy(component.windowRow(0), component.windowRow(component.rowsPerMcu),
                  component.step);
    }
    component.firstRow = mcuRow * component.rowsPerMcu;
  }
}

void PictureBuilder::put(int c, int column, int row, const Block& block) {
  Component& component = components_[c];
  uint8_t* const to =
      component.windowRow(1 + row % component.v * component.size) + column * component.size;
  component.inverse(block.values, to, component.step, component.divisors);
}

void PictureBuilder::endMcuRow(int mcuRow, bool isLast) {
  const int end = isLast ? image_.height() : (mcuRow + 1) * rowsPerMcu_ - (looksAhead_ ? 1 : 0);
  for (; nextRow_ < end; ++nextRow_) emitRow(nextRow_);
}

// A component's samples for a row of the picture.
const uint8_t* PictureBuilder::fullRow(Component& component, int y) {
  if (!component.doubledAcross && !component.doubledDown) return component.row(y);
  const int nearRow = component.doubledDown ? y >> 1 : y;
  const int farRow = y % 2 == 0 ? nearRow - 1 : nearRow + 1;
  const uint8_t* const from = component.row(nearRow);
  uint8_t* const to = component.doubled.data();
  if (!component.smooth) {
    if (!component.doubledAcross) return from;
    for (int i = 0; i < component.width; ++i) to[2 * i] = to[2 * i + 1] = from[i];
  } else if (!component.doubledDown) {
    legacy90orbiSampleUpRowH2V1_Triangle_JPEG_8u_C1(from, component.width, to);
  } else if (component.doubledAcross) {
    legacy90orbiSampleUpRowH2V2_Triangle_JPEG_8u_C1(from, component.row(farRow), component.width,
                                                    to);
  } else {
    const uint8_t* const other = component.row(farRow);
    const int bias = y % 2 == 0 ? 1 : 2;
    for (int i = 0; i < component.width; ++i) {
      to[i] = static_cast<uint8_t>((3 * from[i] + other[i] + bias) >> 2);
    }
  }
  return to;
}

void PictureBuilder::emitRow(int y) {
  const uint8_t* planes[4] = {};
  for (size_t c = 0; c < components_.size(); ++c) planes[c] = fullRow(components_[c], y);
  uint8_t* const to = image_.row(y);
  const int width = image_.width();
  const Orb32s step = components_[0].step;  // of rows of which there is one
  const Orb32s imageStep = static_cast<Orb32s>(image_.rowBytes());
  switch (colourSpace_) {
    case ColourSpace::kGrey:
      std::memcpy(to, planes[0], width);
      break;
    case ColourSpace::kYCbCr:
      legacy90orbiYCbCrToRGB_JPEG_8u_P3C3R(planes, step, to, imageStep, {width, 1});
      break;
    case ColourSpace::kRgb:
      interleave(planes, 3, width, to);
      break;
    case ColourSpace::kCmyk:
      interleave(planes, 4, width, to);
      break;
    case ColourSpace::kYcck:
      legacy90orbiYCCKToCMYK_JPEG_8u_P4C4R(planes, step, to, imageStep, {width, 1});
      break;
  }
  if (image_.channels() == 4 && storesLight_) {
    for (size_t i = 0; i < image_.rowBytes(); ++i) to[i] = static_cast<uint8_t>(255 - to[i]);
  }
}

}  // namespace orbhost::jpeg
