#include "hosts/jxr/plane_reader.h"

#include "hosts/jxr/damage.h"
#include "hosts/jxr/pattern.h"
#include "hosts/jxr/second_stage.h"
#include "hosts/jxr/stages.h"
#include "orb90legacy.h"

namespace orbhost::jxr {

namespace {

constexpr int kRunsOut = 16;  // what the library counts if a block has too many coefficients

// Products wrap, as a damaged file may have any levels.
int32_t multiply(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

// A level of the DC band, from 1 on.
uint32_t readLevel(AdaptiveCode& code, BitReader& from) {
  switch (code.read(from)) {
    case 0:
      return 1;
    case 1:
      return 2;
    case 2:
      return 3 + from.take(1);
    case 3:
      return 5 + from.take(2);
    case 4:
      return 9 + from.take(2);
    case 5:
      return 13 + from.take(2);
    default: {
      int bits = 4 + static_cast<int>(from.take(4));
      if (bits == 19) bits += static_cast<int>(from.take(2));
      if (bits == 22) bits += static_cast<int>(from.take(3));
      return (1u << bits) + 1 + from.take(bits);
    }
  }
}

// A level with the lowest bits of its coefficient.
int32_t refine(int32_t level, int bits, BitReader& from) {
  const int32_t low = static_cast<int32_t>(from.take(bits));
  if (level > 0) return (level << bits) + low;
  if (level < 0) return (level << bits) - low;
  return low != 0 && from.flag() ? -low : low;
}

}  // namespace

PlaneReader::PlaneReader(const ImageHeader& image, const PlaneHeader& header, const Tile& tile,
                         std::vector<Plane>& planes, Macroblocks& macroblocks)
    : image_(image),
      header_(header),
      tile_(tile),
      planes_(planes),
      macroblocks_(macroblocks),
      models_(header.format) {
  for (int band = kDc; band < kFlexbits; ++band) {
    if (header.quantiser[band]) quantisers_[band] = QuantiserSet(*header.quantiser[band]);
  }
}

void PlaneReader::readTileHeader(Band band, BitReader& from) {
  if (header_.quantiser[band]) return;
  QuantiserSet& set = quantisers_[band];
  if (band == kDc) {
    set = QuantiserSet(readQuantiser(header_.channels, from));
  } else if (from.flag()) {
    set.all = quantisers_[band - 1].all;
    set.numberBits = 0;
    highPassFollows_ = band == kHighPass;
  } else {
    set = readQuantiserSet(header_.channels, from);
  }
}

void PlaneReader::read(int x, int y, TileInput& input) {
  const Position position(tile_, x);
  const Neighbours neighbours = macroblocks_.around(tile_, x, y);
  Macroblock& block = macroblocks_.at(tile_.left + x, tile_.top + y);
  block = {};
  const auto readLowPassNumber = [&] {
    block.lowPassNumber =
        static_cast<uint8_t>(readQuantiserNumber(quantisers_[kLowPass], *input.of[kLowPass]));
  };
  const auto readHighPassNumber = [&] {
    block.highPassNumber = highPassFollows_ ? block.lowPassNumber
                                            : static_cast<uint8_t>(readQuantiserNumber(
                                                  quantisers_[kHighPass], *input.of[kHighPass]));
  };
  const bool hasLowPass = bandsOf(header_.bands) > kLowPass;
  const bool hasHighPass = bandsOf(header_.bands) > kHighPass;
  if (input.isSpatial) {
    if (hasLowPass) readLowPassNumber();
    if (hasHighPass) readHighPassNumber();
  }
  readDc(*input.of[kDc], block);
  if (!hasLowPass && position.adapts) models_.adaptDc();
  if (hasLowPass) {
    if (!input.isSpatial) readLowPassNumber();
    if (position.resets) models_.resetScan(kScanLowPass);
    readLowPass(*input.of[kLowPass], block);
    if (position.adapts) models_.adaptLowPass();
  }
  addPrediction(header_.format, header_.channels, neighbours, block);
  if (hasHighPass) {
    if (!input.isSpatial) readHighPassNumber();
    if (position.resets) {
      models_.resetScan(kScanVertical);
      models_.resetScan(kScanHorizontal);
    }
    readPatterns(header_.format, header_.channels, neighbours, models_, *input.of[kHighPass],
                 block);
    readHighPass(x, y, input, block);
    if (position.adapts) models_.adaptHighPass();
  }
  transform(x, y, block);
}

void PlaneReader::readDc(BitReader& from, Macroblock& block) {
  const bool together = hasChroma(header_.format);
  const uint32_t pattern =
      together ? static_cast<uint32_t>(kSignificanceCode.read(from)) : uint32_t{0};
  int counts[2] = {0, 0};
  for (int c = 0; c < header_.channels; ++c) {
    const bool isSignificant = together ? (pattern >> (2 - c) & 1) != 0 : from.flag();
    uint32_t level = 0;
    if (isSignificant) {
      level = readLevel(models_.levelCode[together ? classOf(c) : 0], from);
      ++counts[classOf(c)];
    }
    const int bits = models_.dcBits.bits(c);
    const uint32_t magnitude = level << bits | from.take(bits);
    const bool isNegative = magnitude != 0 && from.flag();
    block.levels[c][0] = static_cast<int32_t>(isNegative ? 0 - magnitude : magnitude);
  }
  models_.dcBits.update(header_.format, header_.channels, counts);
}

void PlaneReader::readLowPass(BitReader& from, Macroblock& block) {
  const int units = lowPassUnits(header_.format, header_.channels);
  const uint32_t full = (1u << units) - 1;
  uint32_t pattern = 0;
  if (!hasChroma(header_.format)) {
    for (int unit = 0; unit < units; ++unit) pattern |= from.take(1) << unit;
  } else {
    LowPassPatternModel& model = models_.lowPassPattern;
    if (model.none <= 0 || model.all < 0) {
      if (from.flag()) {
        const uint32_t rest = from.take(units - 1);
        pattern = rest == 0 ? 1 : rest << 1 | from.take(1);
      }
      if (model.all < model.none) pattern = full - pattern;
    } else {
      pattern = from.take(units);
    }
    model.update(pattern, full);
  }
  int counts[2] = {0, 0};
  for (int unit = 0; unit < units; ++unit) {
    if (pattern >> unit & 1) readLowPassUnit(unit, from, block, counts);
    const int bits = models_.lowPassBits.bits(unit);
    if (bits == 0) continue;
    const bool isPair = isHalvedAcross(header_.format, unit);
    for (int number = 1; number < lowPassNumbers(header_.format, unit); ++number) {
      for (int c = unit; c <= unit + (isPair ? 1 : 0); ++c) {
        block.levels[c][number] = refine(block.levels[c][number], bits, from);
      }
    }
  }
  models_.lowPassBits.update(header_.format, header_.channels, counts);
}

void PlaneReader::readLowPassUnit(int unit, BitReader& from, Macroblock& block, int (&counts)[2]) {
  OrbiVLCState_JPEGXR* const state = models_.coders.get();
  int count = kRunsOut;
  if (!isHalvedAcross(header_.format, unit)) {
    from.decode([&](auto... bits) {
      legacy90orbiVLCDecodeDC444_JPEGXR_1u32s(bits..., block.levels[unit], classOf(unit), &count,
                                              state);
    });
  } else {
    const ChromaList& list = chromaListOf(header_.format);
    int32_t values[kRunsOut] = {};
    from.decode([&](auto... bits) {
      if (header_.format == ColourFormat::k420) {
        legacy90orbiVLCDecodeDC420_JPEGXR_1u32s(bits..., values, &count, state);
      } else {
        legacy90orbiVLCDecodeDC422_JPEGXR_1u32s(bits..., values, &count, state);
      }
    });
    for (int i = 0; i < list.length; ++i) {
      block.levels[1 + i % 2][list.numbers[i / 2]] = values[i];
    }
  }
  if (count >= kRunsOut) failDamaged();
  counts[classOf(unit)] += count;
}

void PlaneReader::readHighPass(int x, int y, TileInput& input, Macroblock& block) {
  const Direction direction = highPassDirection(header_.format, block);
  legacy90orbiVLCScanSet_JPEGXR(models_.coders.get(),
                                direction == Direction::kTop ? kScanVertical : kScanHorizontal);
  int counts[2] = {0, 0};
  for (int c = 0; c < header_.channels; ++c) {
    const Rows<int32_t> samples = samplesOf(x, y, c);
    const int32_t step = stepFor(kHighPass, block.highPassNumber, c);
    for (int i = 0; i < blocksOf(header_.format, c); ++i) {
      const BlockPlace place = placeOf(header_.format, c, i);
      counts[classOf(c)] += readBlock(c, (block.pattern[c] >> i & 1) != 0, step, input,
                                      samples.from(4 * place.x, 4 * place.y));
    }
    addHighPass(direction, blocksWide(header_.format, c), blocksHigh(header_.format, c), samples);
  }
  models_.highPassBits.update(header_.format, header_.channels, counts);
}

// Returns how many coefficients the run-level code had. The library multiplies by a scale of 15
// bits; a larger one is multiplied by afterwards.
int PlaneReader::readBlock(int channel, bool isCoded, int32_t step, TileInput& input,
                           Rows<int32_t> to) {
  const int bits = models_.highPassBits.bits(channel);
  const bool fits = (int64_t{step} << bits) <= 0x7FFF;
  const auto multiplyBlock = [&](int32_t factor) {
    for (int i = 0; i < 16; ++i) to.at(i % 4, i / 4) = multiply(to.at(i % 4, i / 4), factor);
  };
  int count = 0;
  if (isCoded) {
    const Orb16s scale = static_cast<Orb16s>(fits ? step << bits : 1);
    input.of[kHighPass]->decode([&](auto... reader) {
      legacy90orbiVLCDecode4x4_JPEGXR_1u32s_C1R(reader..., scale, to.first, to.stepBytes(),
                                                classOf(channel), &count, models_.coders.get());
    });
    if (count >= kRunsOut) failDamaged();
    if (!fits) multiplyBlock(1 << bits);
  }
  const int flexbits = bits - input.trim;
  if (flexbits > 0 && input.of[kFlexbits] != nullptr) {
    const Orb16s scale = static_cast<Orb16s>((fits ? step : 1) << input.trim);
    input.of[kFlexbits]->decode([&](auto... reader) {
      legacy90orbiFLCDecode4x4_JPEGXR_1u32s_C1IR(reader..., to.first, to.stepBytes(),
                                                 static_cast<unsigned>(flexbits), scale,
                                                 isCoded ? 1 : 0);
    });
  }
  if (!fits) multiplyBlock(step);
  return count;
}

void PlaneReader::transform(int x, int y, const Macroblock& block) {
  for (int c = 0; c < header_.channels; ++c) {
    const int32_t dcStep = stepFor(kDc, 0, c);
    const int32_t lowPassStep = stepFor(kLowPass, block.lowPassNumber, c);
    int32_t coefficients[16];
    coefficients[0] = multiply(block.levels[c][0], dcStep);
    for (int i = 1; i < 16; ++i) coefficients[i] = multiply(block.levels[c][i], lowPassStep);
    const Rows<int32_t> samples = samplesOf(x, y, c);
    inverseSecondStage(header_.format, c, header_.scaled, coefficients, samples);
    if (goesByMacroblocks(image_)) inverseBlocks(header_.format, c, samples);
  }
}

Rows<int32_t> PlaneReader::samplesOf(int x, int y, int channel) {
  return planes_[channel].rows().from((tile_.left + x) * blocksWide(header_.format, channel) * 4,
                                      (tile_.top + y) * blocksHigh(header_.format, channel) * 4);
}

int32_t PlaneReader::stepFor(Band band, int number, int channel) const {
  return stepOf(quantisers_[band].all[number][channel], band, channel, header_.scaled);
}

}  // namespace orbhost::jxr
