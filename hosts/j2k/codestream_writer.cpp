#include "hosts/j2k/codestream_writer.h"

#include "hosts/j2k/markers.h"

namespace orbhost::j2k {

namespace {

bool hasWholePrecincts(const ComponentStyle& style) {
  for (int r = 0; r <= style.levels; ++r) {
    if (style.precincts[r].width != 15 || style.precincts[r].height != 15) return false;
  }
  return true;
}

}  // namespace

void CodestreamWriter::mainHeader(const PictureSize& picture, const TileCoding& coding) {
  word(kSoc);
  size(picture);
  codingStyle(coding.style, coding.components[0].style);
  quantisation(coding.components[0].quantisation);
}

void CodestreamWriter::tilePart(int tile, size_t length) {
  segment(kSot, 8);
  word(static_cast<uint32_t>(tile));
  doubleWord(static_cast<uint32_t>(kTilePartHeaderLength + length));
  byte(0);  // the first part
  byte(1);  // of one
  word(kSod);
}

void CodestreamWriter::startOfPacket(uint32_t packet) {
  segment(kSop, 2);
  word(packet & 0xFFFF);
}

void CodestreamWriter::end() {
  word(kEoc);
}

void CodestreamWriter::size(const PictureSize& size) {
  segment(kSiz, 36 + 3 * size.components.size());
  word(static_cast<uint32_t>(size.capabilities));
  for (const uint32_t value : {size.x1, size.y1, size.x0, size.y0, size.tileWidth, size.tileHeight,
                               size.tileX0, size.tileY0}) {
    doubleWord(value);
  }
  word(static_cast<uint32_t>(size.components.size()));
  for (const ComponentSize& component : size.components) {
    byte((component.isSigned ? 0x80u : 0u) | static_cast<uint32_t>(component.precision - 1));
    byte(component.dx);
    byte(component.dy);
  }
}

void CodestreamWriter::codingStyle(const CodingStyle& style, const ComponentStyle& component) {
  const bool listsPrecincts = !hasWholePrecincts(component);
  segment(kCod, 10 + (listsPrecincts ? static_cast<size_t>(component.levels) + 1 : 0));
  byte((listsPrecincts ? 1u : 0u) | (style.mayHaveSop ? 2u : 0u) | (style.hasEph ? 4u : 0u));
  byte(static_cast<uint32_t>(style.progression));
  word(static_cast<uint32_t>(style.layers));
  byte(style.transformsComponents ? 1 : 0);
  byte(static_cast<uint32_t>(component.levels));
  byte(static_cast<uint32_t>(component.blockWidth - 2));
  byte(static_cast<uint32_t>(component.blockHeight - 2));
  byte(static_cast<uint32_t>(component.blockStyle));
  byte(component.isReversible ? 1 : 0);
  for (int r = 0; listsPrecincts && r <= component.levels; ++r) {
    const PrecinctSize& precinct = component.precincts[r];
    byte(static_cast<uint32_t>(precinct.height << 4 | precinct.width));
  }
}

void CodestreamWriter::quantisation(const Quantisation& quantisation) {
  const bool hasSteps = quantisation.style != QuantisationStyle::kNone;
  segment(kQcd, 1 + quantisation.steps.size() * (hasSteps ? 2 : 1));
  byte(static_cast<uint32_t>(quantisation.guardBits << 5) |
       static_cast<uint32_t>(quantisation.style));
  for (const StepSize& step : quantisation.steps) {
    if (hasSteps) {
      word(static_cast<uint32_t>(step.exponent << 11 | step.mantissa));
    } else {
      byte(static_cast<uint32_t>(step.exponent << 3));
    }
  }
}

void CodestreamWriter::word(uint32_t value) {
  byte(value >> 8);
  byte(value & 255);
}

void CodestreamWriter::doubleWord(uint32_t value) {
  word(value >> 16);
  word(value & 0xFFFF);
}

void CodestreamWriter::segment(int marker, size_t length) {
  word(static_cast<uint32_t>(marker));
  word(static_cast<uint32_t>(2 + length));
}

}  // namespace orbhost::j2k
